// The arithmetic of one frame of the loop, apart from the objects it drives: the time step
// with its clamps and median, the game time, the measured frame rate, the frame-rate limit,
// and the input step that fills the control state.
#pragma once

#include <cstdint>

struct CControlState;

namespace Ovrel
{

class CInputDevice;

struct SFrameTiming
{
    static constexpr float MIN_STEP = 0.001f; // seconds
    static constexpr float MAX_STEP = 0.04f;  // a long stall moves the world no further
    static constexpr float GAME_TIME_WRAP = 28800.0f;
    static constexpr double FPS_INTERVAL_MS = 500.0;

    double dLastTimeMs = 0.0;
    double dFpsMarkMs = 0.0;
    int32_t iFramesSinceMark = 0;
    float afFrameTimes[3] = {1.0f / 60.0f, 1.0f / 60.0f, 1.0f / 60.0f}; // the last three clamped steps
    float fGameTime = 0.0f;
    float fMeasuredFps = 1.0f / 60.0f;

    // Before the first frame: both marks at the clock.
    void Start(double dNowMs);
    // Steps 1 to 4 of a frame: the clamped step (the median of the last three with bSmooth),
    // the game time, the frame count and the measured rate. Returns the step in seconds.
    float Step(double dNowMs, bool bSmooth);
};

// Milliseconds to sleep at the end of a frame that started at dFrameStartMs. A limit of 0 or
// less means 1000; minimised limits to 1, an inactive application to 10, a window that is not
// both active and in the foreground to 60. At least 1.
int FrameSleepMilliseconds(float fFpsLimit, bool bMinimised, bool bAppActive, bool bActiveAndForeground,
                           double dFrameStartMs, double dNowMs);

// The input step after the device's update: clears the control state and, unless the console
// is open for input, fills it (mouse scaled so that the client width is 800 units, buttons,
// wheel, modifiers, sticks, and W/A/S/D while the left stick rests). Returns true when game-pad
// buttons 7, 4 and 5 are all held: the application quits.
bool FillControlState(const CInputDevice& input, int32_t iClientW, int32_t iClientH, bool bConsoleOpen,
                      CControlState& state);

} // namespace Ovrel
