#include "engine/ext/ThreadRenderer.h"
#include "engine/render_device/RenderDevice.h"

#include <gtest/gtest.h>

#include <atomic>
#include <mutex>
#include <string>
#include <thread>
#include <vector>

using namespace Kestrin;
using RenderDevice::IRenderDevice;

namespace
{
// A device that counts what the handshake asks of it and refuses nested scenes.
class CCountingDevice final : public IRenderDevice
{
public:
    bool GetCaps(RenderDevice::SDeviceCaps& out) override
    {
        out = RenderDevice::SDeviceCaps();
        return true;
    }
    bool Initialize(const RenderDevice::SDeviceParameters&) override { return true; }
    RenderDevice::IWindow* GetWindow() override { return nullptr; }
    int GetDeviceKind() const override { return 0; }
    void Lock() override
    {
        if (bLocking)
        {
            lock.Enter();
            ++iLockDepth;
        }
    }
    void Unlock() override
    {
        if (bLocking)
        {
            --iLockDepth;
            lock.Leave();
        }
    }
    void EnableLocking(bool bEnable) override { bLocking = bEnable; }
    bool IsLockingEnabled() const override { return bLocking; }
    bool BeginScene() override
    {
        if (bLost)
        {
            return false;
        }
        if (bInScene)
        {
            ++iNestedBegins;
            return false;
        }
        bInScene = true;
        ++iBegins;
        return true;
    }
    void EndScene() override
    {
        if (bInScene)
        {
            ++iEnds;
        }
        bInScene = false;
    }
    bool IsInScene() const override { return bInScene; }
    void Present() override {}
    bool IsLost() override { return bLost; }
    uint32_t GetResetCount() const override { return uResets; }
    void SetTime(float) override {}
    void SetViewport(int32_t, int32_t, int32_t, int32_t) override {}
    void Clear(uint32_t, uint32_t, float, uint32_t) override {}
    void GetBackBufferSize(int32_t& iW, int32_t& iH) const override { iW = 640, iH = 480; }
    uint32_t CreateTexture(const RenderDevice::STextureDesc&, const char*) override { return 0; }
    void ReleaseTexture(uint32_t) override {}
    void PresentOverlay(const RenderDevice::SOverlayFrame&) override {}

    GUtCriticalSection lock;
    std::atomic<bool> bLocking{false};
    std::atomic<int> iLockDepth{0};
    std::atomic<bool> bInScene{false};
    std::atomic<bool> bLost{false};
    std::atomic<uint32_t> uResets{0};
    std::atomic<int> iBegins{0};
    std::atomic<int> iEnds{0};
    std::atomic<int> iNestedBegins{0};
};

// Records every call with the thread it ran on; checks that draws and swaps never overlap.
class CRecordingRenderer final : public Ext::CThreadRenderer
{
public:
    explicit CRecordingRenderer(CCountingDevice* pDevice) : CThreadRenderer(pDevice), m_pDevice(pDevice) {}
    ~CRecordingRenderer() override { Stop(); }

    void BuildRenderBuffer() override { Log("build"); }
    void SwapRenderBuffer() override
    {
        EXPECT_FALSE(bDrawing.load()) << "buffers swapped under a draw";
        ++iSwaps;
        Log("swap");
    }
    void DrawRenderBuffer() override
    {
        bDrawing = true;
        EXPECT_TRUE(m_pDevice->bInScene.load());
        if (m_pDevice->bLocking)
        {
            EXPECT_GT(m_pDevice->iLockDepth.load(), 0) << "drawn without the device lock";
        }
        ++iDraws;
        Log(std::this_thread::get_id() == mainThread ? "draw main" : "draw thread");
        std::this_thread::yield();
        bDrawing = false;
    }
    void BeginSceneHook() override { ++iBeginHooks; }
    void DrawOverlay() override
    {
        EXPECT_TRUE(m_pDevice->bInScene.load());
        ++iOverlays;
        Log("overlay");
    }
    void SwapDeviceBuffers() override
    {
        ++iPresents;
        Log("present");
    }
    void OnDeviceReset() override { ++iResets; }
    void DrawPreviews() override { ++iPreviews; }
    void PostBuild() override { ++iPostBuilds; }

    std::vector<std::string> TakeLog()
    {
        std::lock_guard<std::mutex> guard(m_logMutex);
        std::vector<std::string> log;
        log.swap(m_log);
        return log;
    }

    const std::thread::id mainThread = std::this_thread::get_id();
    std::atomic<bool> bDrawing{false};
    std::atomic<int> iSwaps{0}, iDraws{0}, iBeginHooks{0}, iOverlays{0}, iPresents{0}, iResets{0},
        iPreviews{0}, iPostBuilds{0};

private:
    void Log(const std::string& strEntry)
    {
        std::lock_guard<std::mutex> guard(m_logMutex);
        m_log.push_back(strEntry);
    }

    CCountingDevice* m_pDevice;
    std::mutex m_logMutex;
    std::vector<std::string> m_log;
};

void RunFrames(Ext::CThreadRenderer& renderer, int iFrames)
{
    for (int i = 0; i < iFrames; ++i)
    {
        renderer.BuildFrame();
        renderer.FinishFrame();
    }
}
} // namespace

TEST(ThreadRenderer, SingleThreadFramesDrawOnTheMainThreadAndTheFirstPresentsNothing)
{
    CCountingDevice device;
    CRecordingRenderer renderer(&device);
    renderer.SetThreaded(false);
    RunFrames(renderer, 1);
    EXPECT_EQ(renderer.TakeLog(), (std::vector<std::string>{"build", "swap", "draw main", "overlay"}));
    EXPECT_EQ(renderer.iPresents.load(), 0);
    RunFrames(renderer, 3);
    EXPECT_EQ(renderer.iPresents.load(), 3);
    EXPECT_EQ(renderer.iDraws.load(), 4);
    EXPECT_EQ(renderer.iOverlays.load(), 4);
    EXPECT_EQ(renderer.iPostBuilds.load(), 0); // only the threaded path runs it
    EXPECT_EQ(device.iBegins.load(), 4);
    EXPECT_EQ(device.iEnds.load(), 4);
    EXPECT_EQ(device.iNestedBegins.load(), 0);
    EXPECT_FALSE(device.bLocking.load());
}

TEST(ThreadRenderer, ThreadedFramesOverlapTheDrawOfFrameNWithTheBuildOfFrameNPlusOne)
{
    CCountingDevice device;
    CRecordingRenderer renderer(&device);
    renderer.Start();
    EXPECT_TRUE(device.bLocking.load()); // the device lock works while the thread exists
    RunFrames(renderer, 1);
    EXPECT_EQ(renderer.iPresents.load(), 0); // the first frame presents nothing
    EXPECT_EQ(renderer.iOverlays.load(), 0);
    RunFrames(renderer, 49);
    renderer.Stop();
    EXPECT_FALSE(device.bLocking.load());
    EXPECT_EQ(renderer.iPresents.load(), 49);
    EXPECT_EQ(renderer.iOverlays.load(), 49);
    EXPECT_EQ(renderer.iDraws.load(), 50);
    EXPECT_EQ(renderer.iPreviews.load(), 50);
    EXPECT_EQ(renderer.iPostBuilds.load(), 50);
    EXPECT_EQ(renderer.iSwaps.load(), 50);
    EXPECT_EQ(device.iNestedBegins.load(), 0);
    EXPECT_EQ(device.iBegins.load(), device.iEnds.load());
    EXPECT_FALSE(device.bInScene.load());

    // Frame k is swapped in after frame k-1 was drawn on the render thread.
    const std::vector<std::string> log = renderer.TakeLog();
    int iSwapsSeen = 0, iDrawsSeen = 0;
    for (const std::string& strEntry : log)
    {
        if (strEntry == "swap")
        {
            EXPECT_EQ(iDrawsSeen, iSwapsSeen) << "a swap before the previous frame was drawn";
            ++iSwapsSeen;
        }
        else if (strEntry == "draw thread")
        {
            ++iDrawsSeen;
        }
        EXPECT_NE(strEntry, "draw main");
    }
}

TEST(ThreadRenderer, StopWhileTheRenderThreadWaitsEndsCleanly)
{
    CCountingDevice device;
    {
        CRecordingRenderer renderer(&device);
        renderer.Start();
        renderer.Stop(); // the thread waits for frameReady: stop wakes it
        EXPECT_FALSE(renderer.IsRunning());
        EXPECT_EQ(renderer.iDraws.load(), 0);
        renderer.Stop(); // twice is harmless
    }
    {
        // Stop right after a frame was handed over: the open scene is ended.
        CRecordingRenderer renderer(&device);
        renderer.Start();
        RunFrames(renderer, 3);
        EXPECT_TRUE(renderer.IsSceneOpen());
        renderer.Stop();
        EXPECT_FALSE(renderer.IsSceneOpen());
        EXPECT_FALSE(device.bInScene.load());
    }
    {
        // The destructor stops a running thread.
        CRecordingRenderer renderer(&device);
        renderer.Start();
        RunFrames(renderer, 2);
    }
    EXPECT_EQ(device.iBegins.load(), device.iEnds.load());
}

TEST(ThreadRenderer, SwitchingModesInConsecutiveFramesKeepsScenesConsistent)
{
    CCountingDevice device;
    CRecordingRenderer renderer(&device);
    renderer.Start();
    for (int i = 0; i < 40; ++i)
    {
        renderer.SetThreaded(i % 2 == 0); // RenderThread(1), RenderThread(0), ...
        RunFrames(renderer, 1);
    }
    renderer.SetThreaded(false);
    RunFrames(renderer, 3);
    renderer.SetThreaded(true);
    RunFrames(renderer, 3);
    renderer.Stop();
    EXPECT_EQ(device.iNestedBegins.load(), 0);
    EXPECT_EQ(device.iBegins.load(), device.iEnds.load());
    EXPECT_EQ(renderer.iPresents.load(), 45); // every frame but the first
}

TEST(ThreadRenderer, AResetCallsOnDeviceResetAndALostDeviceSkipsDrawing)
{
    CCountingDevice device;
    CRecordingRenderer renderer(&device);
    renderer.SetThreaded(false);
    RunFrames(renderer, 2);
    device.uResets = 1;
    RunFrames(renderer, 1);
    EXPECT_EQ(renderer.iResets.load(), 1);
    RunFrames(renderer, 1);
    EXPECT_EQ(renderer.iResets.load(), 1); // told once per change
    const int iDraws = renderer.iDraws.load();
    device.bLost = true;
    RunFrames(renderer, 3);
    EXPECT_EQ(renderer.iDraws.load(), iDraws);
    device.bLost = false;
    RunFrames(renderer, 1);
    EXPECT_EQ(renderer.iDraws.load(), iDraws + 1);

    // Threaded: a reset while the render thread's scene is open drops that scene.
    CCountingDevice threadedDevice;
    CRecordingRenderer threaded(&threadedDevice);
    threaded.Start();
    RunFrames(threaded, 3);
    threadedDevice.uResets = 5;
    RunFrames(threaded, 3);
    threaded.Stop();
    EXPECT_EQ(threaded.iResets.load(), 1);
    EXPECT_EQ(threadedDevice.iNestedBegins.load(), 0);
    EXPECT_EQ(threadedDevice.iBegins.load(), threadedDevice.iEnds.load());
}
