#include "Utils/Utility/GUtTimeCountInfo.h"
#include "Utils/Utility/tests/DiagTestSupport.h"

#include <gtest/gtest.h>

#include <csignal>
#include <thread>

using namespace DiagTest;

namespace
{
class GUtTimeCountTest : public ::testing::Test
{
protected:
    void Advance(double dMs) { m_clock.Clock().Advance(dMs); }
    GUtTimeCountStats Stats(const GUtTimeCountId& id)
    {
        GUtTimeCountStats stats;
        EXPECT_TRUE(m_section.GetStats(id.load(), stats));
        return stats;
    }

    CCapture m_capture;
    CClockScope m_clock;
    GUtTimeCountSection m_section;
};
} // namespace

TEST_F(GUtTimeCountTest, NestedSectionsFormATreeAndTakeTheClocksTime)
{
    GUtTimeCountId outer{-1}, inner{-1};
    m_section.Enter(outer, "Outer");
    Advance(5);
    m_section.Enter(inner, "Inner");
    EXPECT_EQ(m_section.GetStackSize(), 2);
    Advance(2);
    m_section.Leave(inner);
    Advance(1);
    m_section.Leave(outer);
    EXPECT_EQ(m_section.GetStackSize(), 0);
    EXPECT_GE(outer.load(), 0);
    EXPECT_EQ(inner.load(), outer.load() + 1);

    GUtTimeCountStats o = Stats(outer), i = Stats(inner);
    EXPECT_STREQ(o.strName.c_str(), "Outer");
    EXPECT_DOUBLE_EQ(o.dTotal, 8.0);
    EXPECT_DOUBLE_EQ(i.dTotal, 2.0);
    EXPECT_EQ(o.iCount, 1);
    EXPECT_EQ(o.iParentId, -1);
    EXPECT_EQ(i.iParentId, outer.load());
    EXPECT_EQ(m_section.GetNodeCount(), 2);
    EXPECT_EQ(m_section.Dump(), GUtString("Outer: total 8.000 ms, calls 1, longest 8.000 ms\n"
                                          "  Inner: total 2.000 ms, calls 1, longest 2.000 ms\n"));
}

TEST_F(GUtTimeCountTest, RepeatedCallsCountKeepTheLongestAndResetOnRequest)
{
    GUtTimeCountId id{-1};
    for (double dMs : {3.0, 7.0, 4.0})
    {
        m_section.Enter(id, "Repeat");
        Advance(dMs);
        m_section.Leave(id);
    }
    GUtTimeCountStats stats = Stats(id);
    EXPECT_EQ(stats.iCount, 3);
    EXPECT_DOUBLE_EQ(stats.dTotal, 14.0);
    EXPECT_DOUBLE_EQ(stats.dGrandTotal, 14.0);
    EXPECT_DOUBLE_EQ(stats.dLongest, 7.0);
    EXPECT_EQ(m_section.GetNodeCount(), 1); // registered once

    m_section.ResetAll();
    EXPECT_EQ(Stats(id).iCount, 3); // applies at the next Enter
    m_section.Enter(id, "Repeat");
    Advance(1);
    m_section.Leave(id);
    stats = Stats(id);
    EXPECT_EQ(stats.iCount, 1);
    EXPECT_DOUBLE_EQ(stats.dTotal, 1.0);
    EXPECT_DOUBLE_EQ(stats.dLongest, 1.0);
}

TEST_F(GUtTimeCountTest, RecursionCountsTheOutermostTimeSpreadOverTheDepth)
{
    GUtTimeCountId id{-1};
    m_section.Enter(id, "Recursive");
    m_section.Enter(id, "Recursive");
    Advance(6);
    m_section.Leave(id);
    EXPECT_DOUBLE_EQ(Stats(id).dTotal, 0.0); // still inside
    m_section.Leave(id);
    GUtTimeCountStats stats = Stats(id);
    EXPECT_EQ(stats.iDepth, 0);
    EXPECT_EQ(stats.iDeepest, 2);
    EXPECT_EQ(stats.iCount, 2);
    EXPECT_DOUBLE_EQ(stats.dTotal, 6.0);
    EXPECT_DOUBLE_EQ(stats.dLongest, 3.0);
    EXPECT_EQ(m_section.GetStackSize(), 0);
}

TEST_F(GUtTimeCountTest, LeaveOfAPlaceThatNeverEnteredDoesNothing)
{
    GUtTimeCountId never{-1}, off{-2};
    GUtTimeCountId open{-1};
    m_section.Enter(open, "Open");
    m_section.Leave(never);
    m_section.Leave(off);
    EXPECT_EQ(m_section.GetStackSize(), 1);
    EXPECT_TRUE(CCapture::Take().empty());
    m_section.Leave(open);
    m_section.Leave(open); // one too many: nothing to pop, nothing reported
    EXPECT_EQ(m_section.GetStackSize(), 0);
    EXPECT_TRUE(CCapture::Take().empty());
}

TEST_F(GUtTimeCountTest, DisabledNamesSwitchTheirPlaceOff)
{
    m_section.Disable("Quiet");
    GUtTimeCountId id{-1};
    m_section.Enter(id, "Quiet");
    EXPECT_EQ(id.load(), GUtTimeCountBase::ID_DISABLED);
    EXPECT_EQ(m_section.GetStackSize(), 0);
    m_section.Leave(id);
    EXPECT_EQ(m_section.GetNodeCount(), 0);
}

TEST_F(GUtTimeCountTest, AMismatchedLeaveIsReportedAndUnwoundWhenTolerant)
{
    ASSERT_TRUE(GUtTimeCountManager::IsTolerant());
    GUtLog::Get().EnableMainFile(false);
    GUtLog::Get().EnableErrorFile(false);
    GUtTimeCountId a{-1}, b{-1};
    m_section.Enter(a, "A");
    m_section.Enter(b, "B");
    Advance(4);
    m_section.Leave(a); // B is still open
    std::vector<std::string> events = CCapture::Take();
    const std::string kTitle = "GUtTimeCountSection::Leave() error!";
    const std::string kText = "Leave point(A) is not match to the current stack(B), maybe caused by "
                              "TIME_COUNT_SECTION_BEGIN() / TIME_COUNT_SECTION_END not match";
    EXPECT_EQ(events, (std::vector<std::string>{"colour|4", "post|28|0|0", "box|" + kTitle + "|" + kText,
                                                "print|" + kTitle + " " + kText + "\n", "colour|7"}));
    EXPECT_EQ(m_section.GetStackSize(), 0);
    EXPECT_EQ(Stats(b).iDepth, 0);
    EXPECT_DOUBLE_EQ(Stats(b).dTotal, 4.0);
    EXPECT_DOUBLE_EQ(Stats(a).dTotal, 4.0);
    GUtLog::Get().EnableMainFile(true);
    GUtLog::Get().EnableErrorFile(true);
}

TEST_F(GUtTimeCountTest, LowResolutionTimersCountWholeMilliseconds)
{
    GUtTimeCountManager::SetHighResolution(false);
    GUtTimeCountId id{-1};
    m_section.Enter(id, "Coarse");
    Advance(2.7);
    m_section.Leave(id);
    GUtTimeCountManager::SetHighResolution(true);
    EXPECT_DOUBLE_EQ(Stats(id).dTotal, 2.0);
}

TEST(GUtTimeCountDeathTest, AMismatchAssertsWhenNotTolerant)
{
    GTEST_FLAG_SET(death_test_style, "threadsafe");
    EXPECT_DEATH(
        {
            GUtLog::Get().EnableMainFile(false);
            GUtLog::Get().EnableErrorFile(false);
            GUtLog::Get().EnableCriticalFile(false);
            GUtTimeCountManager::SetTolerant(false);
            GUtTimeCountSection section;
            GUtTimeCountId a{-1};
            GUtTimeCountId b{-1};
            section.Enter(a, "A");
            section.Enter(b, "B");
            section.Leave(a);
        },
        R"(Assertion failed, exp: "iID == pCurLayerTreeNode->m_iDataIdx")");
}

TEST(GUtTimeCountDeathTest, TheThousandAndFirstPlaceAsserts)
{
    GTEST_FLAG_SET(death_test_style, "threadsafe");
    EXPECT_DEATH(
        {
            GUtLog::Get().EnableMainFile(false);
            GUtLog::Get().EnableCriticalFile(false);
            GUtTimeCountSection section;
            const int32_t iFirst = GUtTimeCountManager::m_iRegisterIDCounter.load();
            std::unique_ptr<GUtTimeCountId[]> ids(
                new GUtTimeCountId[GUtTimeCountBase::TIMECOUNTID_MAXSIZE + 1]);
            for (int32_t i = iFirst; i <= GUtTimeCountBase::TIMECOUNTID_MAXSIZE; ++i)
            {
                ids[static_cast<size_t>(i)].store(-1);
                if (i == GUtTimeCountBase::TIMECOUNTID_MAXSIZE)
                {
                    fprintf(stderr, "ids up to %d taken\n", ids[static_cast<size_t>(i) - 1].load());
                }
                section.Enter(ids[static_cast<size_t>(i)], "Place");
                section.Leave(ids[static_cast<size_t>(i)]);
            }
        },
        R"(ids up to 999 taken.*Assertion failed, exp: "GUtTimeCountManager::m_iRegisterIDCounter < GUtTimeCountBase::TIMECOUNTID_MAXSIZE")");
}

TEST(GUtTimeCountMacros, TimeOnlyWhileSwitchedOnAndPerThread)
{
    CClockScope clock;
    auto place = [](GUtManualClock& rClock)
    {
        TIME_COUNT_SECTION_BEGIN(MacroPlace);
        rClock.Advance(1.0);
        TIME_COUNT_SECTION_END(MacroPlace);
        return s_timeCountId_MacroPlace.load();
    };
    GUtTimeCountManager::SetEnabled(false);
    EXPECT_EQ(place(clock.Clock()), -1); // off: never registered
    GUtTimeCountManager::SetEnabled(true);
    const int32_t iID = place(clock.Clock());
    EXPECT_GE(iID, 0);

    // Other threads share the place's identifier and keep sections of their own.
    std::vector<std::thread> threads;
    std::vector<int> counts(4, 0);
    for (size_t t = 0; t < counts.size(); ++t)
    {
        threads.emplace_back(
            [&, t]
            {
                int32_t iPlace = -1;
                for (int i = 0; i < 50; ++i)
                {
                    TIME_COUNT_SECTION_BEGIN(ThreadPlace);
                    TIME_COUNT_SECTION_END(ThreadPlace);
                    iPlace = s_timeCountId_ThreadPlace.load();
                }
                GUtTimeCountStats stats;
                GUtTimeCountManager::Get().CurrentSection().GetStats(iPlace, stats);
                counts[t] = stats.iCount;
            });
    }
    for (std::thread& thread : threads)
    {
        thread.join();
    }
    GUtTimeCountManager::SetEnabled(false);
    EXPECT_EQ(counts, (std::vector<int>{50, 50, 50, 50}));
    GUtTimeCountStats stats;
    ASSERT_TRUE(GUtTimeCountManager::Get().CurrentSection().GetStats(iID, stats));
    EXPECT_EQ(stats.iCount, 1);
    EXPECT_DOUBLE_EQ(stats.dTotal, 1.0);
}
