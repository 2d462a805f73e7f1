#include "Utils/Utility/GUtLock.h"
#include "Utils/Utility/GUtTimer.h"

#include <gtest/gtest.h>

#include <atomic>
#include <thread>
#include <vector>

TEST(GUtLock, CriticalSectionIsReentrantAndExcludesOtherThreads)
{
    GUtCriticalSection section;
    int iCounter = 0;
    std::vector<std::thread> threads;
    for (int t = 0; t < 4; ++t)
    {
        threads.emplace_back(
            [&]
            {
                for (int i = 0; i < 10000; ++i)
                {
                    GUtCriticalSectionLock outer(section);
                    GUtCriticalSectionLock inner(&section);
                    ++iCounter;
                }
            });
    }
    for (auto& t : threads)
    {
        t.join();
    }
    EXPECT_EQ(iCounter, 40000);
    GUtCriticalSectionLock none(nullptr);
}

TEST(GUtLock, AutoResetEventReleasesOneWaitPerSet)
{
    GUtEvent event;
    EXPECT_FALSE(event.Wait(0));
    event.Set();
    EXPECT_TRUE(event.IsSet());
    EXPECT_TRUE(event.Wait(0));
    EXPECT_FALSE(event.Wait(0));

    std::atomic<int> iWoken{0};
    std::thread waiter(
        [&]
        {
            event.Wait();
            ++iWoken;
        });
    event.Set();
    waiter.join();
    EXPECT_EQ(iWoken, 1);
}

TEST(GUtLock, ManualResetEventStaysSetUntilReset)
{
    GUtEvent event(true, true);
    EXPECT_TRUE(event.Wait(0));
    EXPECT_TRUE(event.Wait(0));
    event.Reset();
    EXPECT_FALSE(event.Wait(1));
}

TEST(GUtTimer, ReadsTheReplaceableClock)
{
    GUtManualClock clock;
    GUtSetClock(&clock);
    GUtTimer seconds;
    GUtTimer millis(GUtTimer::UNIT_MILLISECONDS);
    clock.Advance(1500.0);
    EXPECT_DOUBLE_EQ(seconds.Elapsed(), 1.5);
    EXPECT_DOUBLE_EQ(millis.Elapsed(), 1500.0);
    seconds.Start();
    EXPECT_DOUBLE_EQ(seconds.Elapsed(), 0.0);
    GUtSetClock(nullptr);
    EXPECT_NE(&GUtGetClock(), &clock);
}
