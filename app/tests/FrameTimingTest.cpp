#include "app/FrameTiming.h"

#include <gtest/gtest.h>

using Ovrel::FrameSleepMilliseconds;
using Ovrel::SFrameTiming;

TEST(FrameTiming, TheStepIsClampedToOneToFortyMilliseconds)
{
    SFrameTiming timing;
    timing.Start(1000.0);
    EXPECT_FLOAT_EQ(timing.Step(1016.0, false), 0.016f);
    EXPECT_FLOAT_EQ(timing.Step(1016.2, false), 0.001f); // lower clamp
    EXPECT_FLOAT_EQ(timing.Step(3000.0, false), 0.04f);  // a long stall moves 40 ms only
    EXPECT_DOUBLE_EQ(timing.dLastTimeMs, 3000.0);
    EXPECT_FLOAT_EQ(timing.afFrameTimes[0], 0.016f);
    EXPECT_FLOAT_EQ(timing.afFrameTimes[1], 0.001f);
    EXPECT_FLOAT_EQ(timing.afFrameTimes[2], 0.04f);
}

TEST(FrameTiming, TheSmoothTimerTakesTheMedianSoOneSlowFrameChangesNothing)
{
    SFrameTiming timing;
    timing.Start(0.0);
    EXPECT_FLOAT_EQ(timing.Step(20.0, true), 1.0f / 60.0f); // (1/60, 1/60, 0.02): median 1/60
    EXPECT_FLOAT_EQ(timing.Step(40.0, true), 0.02f);        // (1/60, 0.02, 0.02)
    EXPECT_FLOAT_EQ(timing.Step(80.0, true), 0.02f);        // one slow frame of 40 ms
    EXPECT_FLOAT_EQ(timing.Step(90.0, true), 0.02f);        // (0.02, 0.04, 0.01)
    EXPECT_FLOAT_EQ(timing.Step(100.0, false), 0.01f);      // unsmoothed
}

TEST(FrameTiming, GameTimeWrapsBySubtractingEightHours)
{
    SFrameTiming timing;
    timing.Start(0.0);
    timing.fGameTime = 28799.99f;
    timing.Step(40.0, false);
    EXPECT_NEAR(timing.fGameTime, 0.03f, 0.002f); // continues, not 0
    timing.fGameTime = 28799.95f;
    timing.Step(80.0, false);
    EXPECT_NEAR(timing.fGameTime, 28799.99f, 0.002f); // not past the wrap yet
}

TEST(FrameTiming, TheRateIsMeasuredEveryHalfSecond)
{
    SFrameTiming timing;
    timing.Start(0.0);
    EXPECT_FLOAT_EQ(timing.fMeasuredFps, 1.0f / 60.0f);
    for (int i = 1; i <= 24; ++i)
    {
        timing.Step(i * 20.0, false); // 480 ms: no measurement yet
    }
    EXPECT_FLOAT_EQ(timing.fMeasuredFps, 1.0f / 60.0f);
    timing.Step(500.0, false);
    EXPECT_FLOAT_EQ(timing.fMeasuredFps, 50.0f);
    EXPECT_EQ(timing.iFramesSinceMark, 0);
    EXPECT_DOUBLE_EQ(timing.dFpsMarkMs, 500.0);
}

TEST(FrameTiming, TheFrameRateLimitDependsOnTheWindowsState)
{
    // No limit (0 or less) is 1000 per second: 1 ms, and never less than 1.
    EXPECT_EQ(FrameSleepMilliseconds(0.0f, false, true, true, 0.0, 0.0), 1);
    EXPECT_EQ(FrameSleepMilliseconds(-3.0f, false, true, true, 0.0, 5.0), 1);
    EXPECT_EQ(FrameSleepMilliseconds(30.0f, false, true, true, 100.0, 110.0), 23);  // 33.3 - 10, truncated
    EXPECT_EQ(FrameSleepMilliseconds(0.0f, false, true, false, 100.0, 110.0), 6);   // not in front: 60
    EXPECT_EQ(FrameSleepMilliseconds(0.0f, false, false, true, 100.0, 110.0), 90);  // inactive: 10
    EXPECT_EQ(FrameSleepMilliseconds(0.0f, true, false, false, 100.0, 110.0), 990); // minimised: 1
    EXPECT_EQ(FrameSleepMilliseconds(5.0f, false, true, true, 0.0, 0.0), 200);      // a limit of 5 holds
    EXPECT_EQ(FrameSleepMilliseconds(5.0f, true, true, true, 0.0, 0.0), 1000);      // minimised gives 1
    EXPECT_EQ(FrameSleepMilliseconds(30.0f, false, true, true, 0.0, 500.0), 1); // a late frame still sleeps
}
