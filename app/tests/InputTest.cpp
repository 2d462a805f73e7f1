#include "app/FrameTiming.h"
#include "app/InputDevice.h"
#include "app/Linux/SdlGamePad.h"
#include "app/WinInputDevice.h"
#include "editor_common/ControlState.h"
#include "engine/render_device/Window.h"

#include <gtest/gtest.h>

using namespace Ovrel;
using Kestrin::RenderDevice::CNullWindow;

namespace
{
// A pad whose answers the test sets.
class CFakePad final : public IGamePad
{
public:
    bool Acquire() override
    {
        ++iAcquires;
        return true;
    }
    bool Poll() override { return bPollOk; }
    bool GetState(SRawPadState& out) override
    {
        if (!bStateOk)
        {
            return false;
        }
        out = state;
        return true;
    }

    SRawPadState state;
    bool bPollOk = true;
    bool bStateOk = true;
    int iAcquires = 0;
};

class CFakePadService final : public IGamePadService
{
public:
    bool Start() override { return true; }
    IGamePad* OpenFirstPad() override
    {
        pPad = new CFakePad();
        return pPad;
    }
    void Stop() override { bStopped = true; }

    CFakePad* pPad = nullptr;
    bool bStopped = false;
};

// An input device whose values the test sets directly.
class CScriptedInput final : public CInputDevice
{
public:
    void SetKey(int iKey) { m_aKeys[iKey] = 1; }
    void SetMouse(float fDx, float fDy) { m_afMouseDelta[0] = fDx, m_afMouseDelta[1] = fDy; }
    void SetButtons(uint8_t uL, uint8_t uR, uint8_t uM)
    {
        m_uLeftButton = uL, m_uRightButton = uR, m_uMiddleButton = uM;
    }
    void SetModifiers(uint8_t uC, uint8_t uS, uint8_t uA) { m_uControl = uC, m_uShift = uS, m_uAlt = uA; }
    void SetWheel(float fWheel) { m_fWheel = fWheel; }
    SInputPad& Pad() { return m_aPads[0]; }
};
} // namespace

TEST(InputConversion, AxesMapTheRawRangeAndTheDeadZoneCutsWithoutRescaling)
{
    SRawPadState raw;
    raw.lX = 0;
    raw.lY = 65535;
    raw.lZ = 32767;
    raw.lRz = 32767 + 16384;
    SInputPad pad;
    ConvertPadAxes(raw, pad);
    EXPECT_FLOAT_EQ(pad.axes[0], -1.0f);
    EXPECT_NEAR(pad.axes[1], 1.00003f, 1e-5f);
    EXPECT_FLOAT_EQ(pad.axes[2], 0.0f);
    EXPECT_NEAR(pad.axes[3], 0.50002f, 1e-5f);

    pad.axes[0] = 0.15f;  // at the dead zone: 0
    pad.axes[1] = -0.16f; // just past it: kept
    pad.axes[2] = 0.5f;   // between: passed on as it is
    pad.axes[3] = -0.85f; // at saturation: -1
    ApplyDeadZone(pad);
    EXPECT_FLOAT_EQ(pad.axes[0], 0.0f);
    EXPECT_FLOAT_EQ(pad.axes[1], -0.16f);
    EXPECT_FLOAT_EQ(pad.axes[2], 0.5f);
    EXPECT_FLOAT_EQ(pad.axes[3], -1.0f);
    pad.axes[1] = 1.00003f;
    ApplyDeadZone(pad);
    EXPECT_FLOAT_EQ(pad.axes[1], 1.0f);
}

TEST(InputConversion, ButtonsFollowTheMapAndScaleByOneOver128)
{
    SRawPadState raw;
    for (int i = 0; i < 12; ++i)
    {
        raw.rgbButtons[i] = static_cast<uint8_t>(i + 1);
    }
    SInputPad pad;
    ConvertPadButtons(raw, pad);
    const int aExpected[12] = {2, 1, 3, 0, 6, 7, 9, 10, 8, 11, 4, 5};
    for (int i = 0; i < 12; ++i)
    {
        EXPECT_FLOAT_EQ(pad.buttons[i], static_cast<float>(aExpected[i] + 1) / 128.0f) << i;
    }
    raw.rgbButtons[2] = 0x80;
    ConvertPadButtons(raw, pad);
    EXPECT_FLOAT_EQ(pad.buttons[0], 1.0f);
}

TEST(InputConversion, TheHatGivesEightDirectionsAndOtherValuesKeepThePov)
{
    const float aExpected[8][2] = {{0, -1}, {1, -1}, {1, 0}, {1, 1}, {0, 1}, {-1, 1}, {-1, 0}, {-1, -1}};
    SInputPad pad;
    for (uint32_t i = 0; i < 8; ++i)
    {
        ConvertPadPov(i * 4500, pad);
        EXPECT_FLOAT_EQ(pad.pov[0], aExpected[i][0]) << i;
        EXPECT_FLOAT_EQ(pad.pov[1], aExpected[i][1]) << i;
    }
    ConvertPadPov(SRawPadState::POV_CENTRED, pad); // a centred hat: pov stays
    EXPECT_FLOAT_EQ(pad.pov[0], -1.0f);
    EXPECT_FLOAT_EQ(pad.pov[1], -1.0f);
    ConvertPadPov(4600, pad);  // no multiple of 4500
    ConvertPadPov(36000, pad); // past the eighth direction
    EXPECT_FLOAT_EQ(pad.pov[0], -1.0f);
}

TEST(InputConversion, SdlReadingsAreNormalisedToDirectInputRanges)
{
    SSdlPadSample sample;
    sample.aLeftStick[0] = -32768;
    sample.aLeftStick[1] = 32767;
    sample.aRightStick[0] = 0;
    sample.aRightStick[1] = 16384;
    sample.aTriggers[1] = 32767;
    sample.aTriggers[0] = 16384;
    sample.bB = true;
    sample.bLeftStick = true;
    sample.bDpadUp = true;
    sample.bDpadRight = true;
    const SRawPadState raw = SdlSampleToRaw(sample);
    EXPECT_EQ(raw.lX, 0);
    EXPECT_EQ(raw.lY, 65534);
    EXPECT_EQ(raw.lZ, 32767);
    EXPECT_EQ(raw.lRz, 49151);
    EXPECT_EQ(raw.rgbButtons[2], 0x80);  // B
    EXPECT_EQ(raw.rgbButtons[10], 0x80); // left stick
    EXPECT_EQ(raw.rgbButtons[7], 0x80);  // right trigger, fully
    EXPECT_EQ(raw.rgbButtons[6], 0x40);  // left trigger, half
    EXPECT_EQ(raw.rgbButtons[0], 0);
    EXPECT_EQ(raw.rgdwPOV[0], 4500u); // up-right
    EXPECT_EQ(SdlSampleToRaw(SSdlPadSample()).rgdwPOV[0], SRawPadState::POV_CENTRED);

    // Through the shared conversion: the pad's button 0 is B, button 7 the left stick.
    SInputPad pad;
    ConvertPadButtons(raw, pad);
    EXPECT_FLOAT_EQ(pad.buttons[0], 1.0f);
    EXPECT_FLOAT_EQ(pad.buttons[7], 1.0f);
    EXPECT_FLOAT_EQ(pad.buttons[5], 1.0f); // right trigger
}

TEST(WinInputDevice, LosingTheFocusClearsEverythingInTheSameFrame)
{
    CNullWindow window(640, 480);
    CFakePadService service;
    CWinInputDevice input(&service);
    input.Initialize(&window);
    ASSERT_TRUE(input.HasGamePad());
    EXPECT_FALSE(input.HasMouseDevice()); // the null window has no relative mouse
    window.SetKey('W', true);
    window.SetKey(17, true);
    service.pPad->state.lX = 0;
    input.Update(0.016f);
    EXPECT_TRUE(input.IsKeyDown('W'));
    EXPECT_EQ(input.GetControl(), 1);
    EXPECT_FLOAT_EQ(input.GetPad(0).axes[0], -1.0f);
    window.SetActive(false);
    input.Update(0.016f);
    EXPECT_FALSE(input.IsKeyDown('W'));
    EXPECT_EQ(input.GetControl(), 0);
    EXPECT_FLOAT_EQ(input.GetPad(0).axes[0], 0.0f);
    EXPECT_FLOAT_EQ(input.GetPad(0).deadZone, 0.15f); // kept by Clear
    EXPECT_FLOAT_EQ(input.GetPad(0).saturation, 0.85f);
    input.Shutdown();
    EXPECT_TRUE(service.bStopped);
}

TEST(WinInputDevice, WithoutAMouseDeviceTheFirstFrameMovesZeroThenTheCursorDifference)
{
    CNullWindow window(640, 480);
    CWinInputDevice input(nullptr);
    input.Initialize(&window);
    window.SetCursor(100, 50);
    window.SetKey(1, true); // left button as a key
    input.Update(0.016f);
    EXPECT_FLOAT_EQ(input.GetMouseDeltaX(), 0.0f);
    EXPECT_FLOAT_EQ(input.GetMouseDeltaY(), 0.0f);
    EXPECT_FLOAT_EQ(input.GetMouseX(), 100.0f);
    EXPECT_EQ(input.GetLeftButton(), 1);
    window.SetCursor(110, 45);
    input.Update(0.016f);
    EXPECT_FLOAT_EQ(input.GetMouseDeltaX(), 10.0f);
    EXPECT_FLOAT_EQ(input.GetMouseDeltaY(), -5.0f);
    EXPECT_FLOAT_EQ(input.GetWheel(), 0.0f);
}

TEST(WinInputDevice, AFailedPollEndsTheUpdateAndAFailedReadStillAppliesTheDeadZone)
{
    CNullWindow window(640, 480);
    CFakePadService service;
    CWinInputDevice input(&service);
    input.Initialize(&window);
    service.pPad->state.lX = 32767 + 3000; // about 0.09: inside the dead zone
    input.Update(0.0f);
    EXPECT_FLOAT_EQ(input.GetPad(0).axes[0], 0.0f);
    service.pPad->bPollOk = false;
    service.pPad->state.lX = 65535;
    input.Update(0.0f);
    EXPECT_EQ(service.pPad->iAcquires, 1);
    EXPECT_FLOAT_EQ(input.GetPad(0).axes[0], 0.0f); // last values stand
    service.pPad->bPollOk = true;
    service.pPad->bStateOk = false;
    input.Update(0.0f);
    EXPECT_EQ(service.pPad->iAcquires, 2);
}

TEST(InputStep, MouseIsScaledToEightHundredUnitsOfWidthAndKeysDriveMoveWhileTheStickRests)
{
    CScriptedInput input;
    input.SetMouse(64.0f, 48.0f);
    input.SetButtons(1, 0, 1);
    input.SetModifiers(0, 1, 0);
    input.SetWheel(-2.0f);
    input.SetKey('W');
    input.SetKey('D');
    CControlState state;
    EXPECT_FALSE(FillControlState(input, 640, 480, false, state));
    EXPECT_FLOAT_EQ(state.look.x, 80.0f);
    EXPECT_FLOAT_EQ(state.look.y, 60.0f); // 800 / 640 units a pixel, as x: float division of the aspect
    EXPECT_EQ(state.leftButton, 1);
    EXPECT_EQ(state.middleButton, 1);
    EXPECT_EQ(state.shift, 1);
    EXPECT_FLOAT_EQ(state.wheel, -2.0f);
    EXPECT_FLOAT_EQ(state.move.x, 1.0f);
    EXPECT_FLOAT_EQ(state.move.y, -1.0f);

    input.Pad().axes[0] = 0.5f; // the stick moves: keys are not read
    input.Pad().axes[2] = -0.25f;
    input.Pad().axes[3] = 1.0f;
    FillControlState(input, 640, 480, false, state);
    EXPECT_FLOAT_EQ(state.move.x, 0.5f);
    EXPECT_FLOAT_EQ(state.move.y, 0.0f);
    EXPECT_FLOAT_EQ(state.stick2.x, -0.25f);
    EXPECT_FLOAT_EQ(state.stick2.y, 1.0f);

    input.SetKey('S'); // W and S together cancel
    input.SetKey('A');
    input.Pad().axes[0] = 0.0f;
    FillControlState(input, 640, 480, false, state);
    EXPECT_FLOAT_EQ(state.move.x, 0.0f);
    EXPECT_FLOAT_EQ(state.move.y, 0.0f);

    FillControlState(input, 0, 0, false, state); // a minimised window divides by nothing
    EXPECT_FLOAT_EQ(state.look.x, 0.0f);
}

TEST(InputStep, AnOpenConsoleFreezesGameInputAndThreePadButtonsQuit)
{
    CScriptedInput input;
    input.SetMouse(10.0f, 10.0f);
    input.SetKey('W');
    input.Pad().buttons[7] = input.Pad().buttons[4] = input.Pad().buttons[5] = 1.0f;
    CControlState state;
    state.look.x = 5.0f;
    EXPECT_FALSE(FillControlState(input, 640, 480, true, state)); // cleared, nothing else
    EXPECT_FLOAT_EQ(state.look.x, 0.0f);
    EXPECT_FLOAT_EQ(state.move.y, 0.0f);
    EXPECT_TRUE(FillControlState(input, 640, 480, false, state));
    input.Pad().buttons[4] = 0.0f;
    EXPECT_FALSE(FillControlState(input, 640, 480, false, state));
}
