#include "engine/render_device/NullRenderDevice.h"

#include "Utils/Utility/GUtTimer.h"

#include <gtest/gtest.h>

#include <vector>

using namespace Kestrin::RenderDevice;

namespace
{
struct SSeen
{
    std::vector<uint32_t> messages;
    GUtManualClock* pClock = nullptr;
};

int64_t Record(void* pUser, uint32_t uMessage, uint64_t wParam, int64_t lParam, bool& bHandled)
{
    (void)wParam, (void)lParam;
    SSeen* pSeen = static_cast<SSeen*>(pUser);
    pSeen->messages.push_back(uMessage);
    if (pSeen->pClock)
    {
        pSeen->pClock->Advance(10.0); // every message takes 10 ms
    }
    bHandled = true;
    return 0;
}
} // namespace

TEST(NullRenderDevice, HandlesCarryTypeGenerationAndIndexAndStaleOnesAreIgnored)
{
    EXPECT_EQ(MakeHandle(1, 1, 0), (1u << 27) | (1u << 15));
    EXPECT_EQ(HandleType(MakeHandle(11, 4095, 32767)), 11u);
    EXPECT_EQ(HandleGeneration(MakeHandle(11, 4095, 32767)), 4095u);
    EXPECT_EQ(HandleIndex(MakeHandle(11, 4095, 32767)), 32767u);

    CNullRenderDevice device;
    STextureDesc desc;
    desc.iWidth = desc.iHeight = 1024;
    desc.uUsage = 1;
    const uint32_t uFirst = device.CreateTexture(desc, "uieffect");
    ASSERT_NE(uFirst, 0u);
    EXPECT_EQ(HandleType(uFirst), RESOURCE_TEXTURE_2D);
    EXPECT_EQ(HandleIndex(uFirst), 0u);
    device.ReleaseTexture(uFirst);
    const uint32_t uSecond = device.CreateTexture(desc, "again"); // same slot, new generation
    EXPECT_EQ(HandleIndex(uSecond), 0u);
    EXPECT_NE(uSecond, uFirst);
    device.ReleaseTexture(uFirst); // stale: ignored
    device.ReleaseTexture(0);
    EXPECT_EQ(device.LiveTextures(), 1);
    device.ReleaseTexture(uSecond);
    EXPECT_EQ(device.LiveTextures(), 0);
}

TEST(NullRenderDevice, ScenesDoNotNestAndAResizedWindowCountsAsAReset)
{
    CNullRenderDevice device;
    SDeviceParameters params;
    ASSERT_TRUE(device.Initialize(params));
    ASSERT_NE(device.GetWindow(), nullptr);
    EXPECT_TRUE(device.BeginScene());
    EXPECT_FALSE(device.BeginScene());
    device.EndScene();
    EXPECT_FALSE(device.IsInScene());

    EXPECT_FALSE(device.IsLost());
    EXPECT_EQ(device.GetResetCount(), 0u);
    device.GetWindow()->Move(0, 0, 800, 600);
    EXPECT_FALSE(device.IsLost());
    EXPECT_EQ(device.GetResetCount(), 1u);
    int32_t iW = 0, iH = 0;
    device.GetBackBufferSize(iW, iH);
    EXPECT_EQ(iW, 800);
    EXPECT_EQ(iH, 600);
    static_cast<CNullWindow*>(device.GetWindow())->SetMinimised(true);
    EXPECT_FALSE(device.IsLost());
    EXPECT_EQ(device.GetResetCount(), 1u); // a minimised window keeps the back buffer
}

TEST(NullRenderDevice, TheHardwareStandInNeedsADisplayAndOtherKindsShareTheNullDevice)
{
    IRenderDevice* pHardware = CreateRenderDevice(1);
    ASSERT_NE(pHardware, nullptr);
    EXPECT_FALSE(IsSharedNullDevice(pHardware));
    EXPECT_FALSE(pHardware->Initialize(SDeviceParameters())); // the null window system has no display
    DestroyRenderDevice(pHardware);

    IRenderDevice* pNull = CreateRenderDevice(0);
    EXPECT_TRUE(IsSharedNullDevice(pNull));
    EXPECT_EQ(CreateRenderDevice(7), pNull);
    EXPECT_EQ(GetRenderDevice(), pNull); // nothing registered: the shared null device
    ASSERT_TRUE(pNull->Initialize(SDeviceParameters()));
    SetRenderDevice(pNull);
    EXPECT_EQ(GetRenderDevice(), pNull);
    SetRenderDevice(nullptr);
    DestroyRenderDevice(pNull); // only shut down
    EXPECT_EQ(pNull->GetWindow(), nullptr);
}

TEST(NullWindow, PumpDeliversPostedMessagesWithinItsTimeLimitAndQuitEndsTheWindow)
{
    GUtManualClock clock;
    GUtSetClock(&clock);
    CNullWindow window(640, 480);
    SSeen seen;
    seen.pClock = &clock;
    window.SetMessageProc(&Record, &seen);
    for (int i = 0; i < 5; ++i)
    {
        window.PostMessage(WindowMessage::KEYDOWN, 'W', 1);
    }
    window.PumpMessages(30.0); // 10 ms each: stops after the third
    EXPECT_EQ(seen.messages.size(), 3u);
    window.PostMessage(WindowMessage::QUIT, 0, 0);
    window.PostMessage(WindowMessage::CHAR, 'x', 1);
    window.PumpMessages(-1.0);
    EXPECT_EQ(seen.messages.size(), 6u); // two keys and the quit; nothing after the quit
    EXPECT_EQ(seen.messages.back(), WindowMessage::QUIT);
    EXPECT_FALSE(window.Exists());
    GUtSetClock(nullptr);
}

TEST(WindowMessages, LParamHalvesAreSigned)
{
    const int64_t lParam = MakeLParam(-5, 300);
    EXPECT_EQ(LowWord(lParam), -5);
    EXPECT_EQ(HighWord(lParam), 300);
}
