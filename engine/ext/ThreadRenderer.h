// CThreadRenderer: the two-thread frame scheduler. The main thread builds frame N+1 while the
// render thread draws frame N; three auto-reset events hand the frame over and the render
// buffers are double buffered. SwapRenderBuffer is the one place where the two sides change
// over, and it runs only after drawDone was seen, so no lock guards the buffers themselves.
//
// Thread contract: BuildFrame, FinishFrame, Start, Stop and SetThreaded run on the main
// thread. The render thread runs DrawPreviews and DrawRenderBuffer, under the device lock.
// The device lock is enabled while the render thread exists. With threaded cleared the
// thread stays alive and idle, and the main thread draws.
#pragma once

#include "Utils/Utility/GUtLock.h"
#include "engine/utility/Thread.h"

#include <atomic>
#include <cstdint>

namespace Kestrin::RenderDevice
{
class IRenderDevice;
}

namespace Kestrin::Ext
{

class CThreadRenderer;

class CRenderThread final : public Utility::CThread
{
public:
    explicit CRenderThread(CThreadRenderer* pOwner) : m_pOwner(pOwner) {}
    ~CRenderThread() override { Join(); }
    void Run() override;

private:
    CThreadRenderer* m_pOwner;
};

class CThreadRenderer
{
public:
    // Works on the device given (not owned); null means the registered device.
    explicit CThreadRenderer(RenderDevice::IRenderDevice* pDevice = nullptr);
    virtual ~CThreadRenderer();
    CThreadRenderer(const CThreadRenderer&) = delete;
    CThreadRenderer& operator=(const CThreadRenderer&) = delete;

    // Fills the back render buffer for the next frame (main thread).
    virtual void BuildRenderBuffer() {}
    // Exchanges the render buffers (main thread, after the last draw finished).
    virtual void SwapRenderBuffer() {}
    // Draws the front render buffer (render thread, or main thread when not threaded).
    virtual void DrawRenderBuffer() {}
    // Called right after a device scene was begun.
    virtual void BeginSceneHook() {}
    // Draws the overlay into the open scene (main thread).
    virtual void DrawOverlay() {}
    // Presents the back buffer (main thread).
    virtual void SwapDeviceBuffers() {}
    // The device was reset: the back buffer may have a new size (main thread).
    virtual void OnDeviceReset() {}
    // Draws the tool windows' previews (render thread, or main thread when not threaded).
    virtual void DrawPreviews() {}
    // Runs after BuildRenderBuffer on the threaded path only (main thread).
    virtual void PostBuild() {}

    // Clears quit, starts the thread, enables the device lock and sets drawDone once so that
    // the first BuildFrame does not block.
    void Start();
    // Sets quit, wakes both sides, joins, and ends an open device scene under the lock.
    void Stop();
    void BuildFrame();
    void FinishFrame();
    // Nonzero draws on the render thread, zero on the main thread.
    void SetThreaded(bool bThreaded) { m_bThreaded = bThreaded; }
    bool IsThreaded() const { return m_bThreaded; }
    bool IsSceneOpen() const { return m_bSceneOpen; }
    bool IsPresentSkipped() const { return m_bSkipPresent; }
    bool IsRunning() const { return m_thread.IsStarted(); }

private:
    friend class CRenderThread;

    RenderDevice::IRenderDevice* _Device() const;
    void _RenderThreadBody();
    // The lost and generation checks; both clear sceneOpen (and end the device's scene).
    void _CheckDevice(RenderDevice::IRenderDevice* pDevice);
    void _EndOpenScene(RenderDevice::IRenderDevice* pDevice);
    bool _BeginScene(RenderDevice::IRenderDevice* pDevice);
    void _BuildThreaded();
    void _BuildSingle();

    GUtEvent m_frameReady;
    GUtEvent m_drawDone;
    GUtEvent m_drawStarted;
    CRenderThread m_thread;
    std::atomic<bool> m_bThreaded{true};
    std::atomic<bool> m_bSkipPresent{true};
    std::atomic<bool> m_bQuit{false};
    std::atomic<bool> m_bSceneOpen{false};
    uint32_t m_uDeviceGeneration = 0;

    RenderDevice::IRenderDevice* m_pDevice;
    // Main thread only: a frame was handed to the render thread and its drawDone not yet
    // taken. A switch to single-thread drawing waits for it once, so the buffers are never
    // swapped under a draw.
    bool m_bDrawPending = false;
};

} // namespace Kestrin::Ext
