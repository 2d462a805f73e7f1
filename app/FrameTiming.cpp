#include "app/FrameTiming.h"

#include "app/InputDevice.h"
#include "editor_common/ControlState.h"

#include <algorithm>

namespace Ovrel
{

void SFrameTiming::Start(double dNowMs)
{
    dLastTimeMs = dNowMs;
    dFpsMarkMs = dNowMs;
}

float SFrameTiming::Step(double dNowMs, bool bSmooth)
{
    float fStep = static_cast<float>((dNowMs - dLastTimeMs) * 0.001);
    fStep = std::clamp(fStep, MIN_STEP, MAX_STEP);
    dLastTimeMs = dNowMs;

    afFrameTimes[0] = afFrameTimes[1];
    afFrameTimes[1] = afFrameTimes[2];
    afFrameTimes[2] = fStep;
    if (bSmooth)
    {
        float afSorted[3] = {afFrameTimes[0], afFrameTimes[1], afFrameTimes[2]};
        std::sort(afSorted, afSorted + 3);
        fStep = afSorted[1];
    }

    fGameTime += fStep;
    if (fGameTime > GAME_TIME_WRAP)
    {
        fGameTime -= GAME_TIME_WRAP;
    }

    ++iFramesSinceMark;
    const double dElapsed = dNowMs - dFpsMarkMs;
    if (dElapsed >= FPS_INTERVAL_MS)
    {
        fMeasuredFps = static_cast<float>(iFramesSinceMark * 1000.0 / dElapsed);
        dFpsMarkMs = dNowMs;
        iFramesSinceMark = 0;
    }
    return fStep;
}

int FrameSleepMilliseconds(float fFpsLimit, bool bMinimised, bool bAppActive, bool bActiveAndForeground,
                           double dFrameStartMs, double dNowMs)
{
    float fLimit = fFpsLimit <= 0.0f ? 1000.0f : fFpsLimit;
    if (bMinimised)
    {
        fLimit = std::min(fLimit, 1.0f);
    }
    else if (!bAppActive)
    {
        fLimit = std::min(fLimit, 10.0f);
    }
    else if (!bActiveAndForeground)
    {
        fLimit = std::min(fLimit, 60.0f);
    }
    const int iSleep = static_cast<int>(1000.0 / fLimit - (dNowMs - dFrameStartMs));
    return std::max(iSleep, 1);
}

bool FillControlState(const CInputDevice& input, int32_t iClientW, int32_t iClientH, bool bConsoleOpen,
                      CControlState& state)
{
    state = CControlState();
    if (bConsoleOpen)
    {
        return false; // keys belong to the console
    }
    if (iClientW > 0 && iClientH > 0)
    {
        const float fW = static_cast<float>(iClientW);
        const float fH = static_cast<float>(iClientH);
        state.look.x = input.GetMouseDeltaX() / fW * 800.0f;
        state.look.y = input.GetMouseDeltaY() / fH * (800.0f / (fW / fH));
    }
    state.leftButton = input.GetLeftButton();
    state.rightButton = input.GetRightButton();
    state.middleButton = input.GetMiddleButton();
    state.wheel = input.GetWheel();
    state.control = input.GetControl();
    state.shift = input.GetShift();
    state.alt = input.GetAlt();
    const SInputPad& pad = input.GetPad(0);
    state.move.x = pad.axes[0];
    state.move.y = pad.axes[1];
    state.stick2.x = pad.axes[2];
    state.stick2.y = pad.axes[3];
    if (state.move.x == 0.0f && state.move.y == 0.0f)
    {
        state.move.y = (input.IsKeyDown('S') ? 1.0f : 0.0f) - (input.IsKeyDown('W') ? 1.0f : 0.0f);
        state.move.x = (input.IsKeyDown('D') ? 1.0f : 0.0f) - (input.IsKeyDown('A') ? 1.0f : 0.0f);
    }
    return pad.buttons[7] > PAD_BUTTON_HELD && pad.buttons[4] > PAD_BUTTON_HELD &&
           pad.buttons[5] > PAD_BUTTON_HELD;
}

} // namespace Ovrel
