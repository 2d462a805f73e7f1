#include "engine/utility/FrameProfiler.h"

#include "Utils/Utility/GUtTimer.h"

#include <gtest/gtest.h>

#include <thread>
#include <vector>

using namespace Kestrin::Utility;

namespace
{
class FrameProfilerTest : public ::testing::Test
{
protected:
    void SetUp() override { GUtSetClock(&m_clock); }
    void TearDown() override { GUtSetClock(nullptr); }
    void At(double dMs) { m_clock.SetMilliseconds(dMs); }

    GUtManualClock m_clock;
    CFrameProfiler m_profiler;
};
} // namespace

TEST_F(FrameProfilerTest, NothingIsRecordedBeforeTheFirstReset)
{
    uint16_t uRegion = m_profiler.RegisterRegion("Update");
    EXPECT_FALSE(m_profiler.IsRecording());
    EXPECT_EQ(m_profiler.Enter(uRegion), 0);
    m_profiler.Leave(0);
    EXPECT_TRUE(m_profiler.GetSections().empty());
    EXPECT_EQ(m_profiler.GetRegions()[0].iCount, 0);
}

TEST_F(FrameProfilerTest, SectionsNestWithDepthAndAddUpPerRegion)
{
    uint16_t uUpdate = m_profiler.RegisterRegion("Update");
    uint16_t uScene = m_profiler.RegisterRegion("Scene");
    EXPECT_EQ(uUpdate, 0);
    EXPECT_EQ(uScene, 1);
    m_profiler.ResetFrame();
    ASSERT_TRUE(m_profiler.IsRecording());

    At(10);
    int32_t iUpdate = m_profiler.Enter(uUpdate);
    At(12);
    int32_t iScene0 = m_profiler.Enter(uScene);
    At(15);
    m_profiler.Leave(iScene0);
    int32_t iScene1 = m_profiler.Enter(uScene);
    At(16.5);
    m_profiler.Leave(iScene1);
    At(20);
    m_profiler.Leave(iUpdate);

    std::vector<CProfileSection> sections = m_profiler.GetSections();
    ASSERT_EQ(sections.size(), 3u);
    EXPECT_EQ(iUpdate, 0);
    EXPECT_EQ(iScene1, 2);
    EXPECT_DOUBLE_EQ(sections[0].dStartMs, 10.0);
    EXPECT_DOUBLE_EQ(sections[0].dEndMs, 20.0);
    EXPECT_EQ(sections[0].uDepth, 0);
    EXPECT_EQ(sections[1].uDepth, 1);
    EXPECT_EQ(sections[2].uDepth, 1);
    EXPECT_EQ(sections[1].uRegion, uScene);
    EXPECT_EQ(sections[1].uThreadId, sections[0].uThreadId);

    std::vector<CProfileRegion> regions = m_profiler.GetRegions();
    EXPECT_STREQ(regions[0].pcName, "Update");
    EXPECT_DOUBLE_EQ(regions[0].dTotalMs, 10.0);
    EXPECT_EQ(regions[0].iCount, 1);
    EXPECT_EQ(regions[0].iFirstSection, 0);
    EXPECT_EQ(regions[0].iLastSection, 0);
    EXPECT_DOUBLE_EQ(regions[1].dTotalMs, 4.5);
    EXPECT_EQ(regions[1].iCount, 2);
    EXPECT_EQ(regions[1].iFirstSection, 1);
    EXPECT_EQ(regions[1].iLastSection, 2);

    // A second Leave of the same section, or one out of range, changes nothing.
    m_profiler.Leave(iScene1);
    m_profiler.Leave(99);
    m_profiler.Leave(-1);
    EXPECT_EQ(m_profiler.GetRegions()[1].iCount, 2);

    // After the frame all depths are back to 0.
    At(30);
    int32_t iNext = m_profiler.Enter(uScene);
    EXPECT_EQ(m_profiler.GetSections()[static_cast<size_t>(iNext)].uDepth, 0);
}

TEST_F(FrameProfilerTest, ResetFrameClearsTheFrameButKeepsNamesAndFlags)
{
    uint16_t uRegion = m_profiler.RegisterRegion("Fx");
    m_profiler.SetRegionFlags(uRegion, 3);
    m_profiler.ResetFrame();
    m_profiler.Enter(uRegion); // left open: its depth must not leak into the next frame
    int32_t iSection = m_profiler.Enter(uRegion);
    At(4);
    m_profiler.Leave(iSection);
    m_profiler.ResetFrame();
    EXPECT_TRUE(m_profiler.GetSections().empty());
    CProfileRegion region = m_profiler.GetRegions()[0];
    EXPECT_STREQ(region.pcName, "Fx");
    EXPECT_EQ(region.uFlags, 3u);
    EXPECT_EQ(region.iCount, 0);
    EXPECT_DOUBLE_EQ(region.dTotalMs, 0.0);
    EXPECT_EQ(region.iFirstSection, -1);
    EXPECT_EQ(region.iLastSection, -1);
    EXPECT_EQ(m_profiler.GetSections().size(), 0u);
    m_profiler.Enter(uRegion);
    EXPECT_EQ(m_profiler.GetSections()[0].uDepth, 0);

    m_profiler.StopRecording();
    EXPECT_EQ(m_profiler.Enter(uRegion), 0);
    EXPECT_EQ(m_profiler.GetSections().size(), 1u);
}

TEST_F(FrameProfilerTest, ThreadsProfileTogether)
{
    uint16_t uRegion = m_profiler.RegisterRegion("Load");
    m_profiler.ResetFrame();
    std::vector<std::thread> threads;
    for (int t = 0; t < 4; ++t)
    {
        threads.emplace_back(
            [&]
            {
                for (int i = 0; i < 250; ++i)
                {
                    m_profiler.Leave(m_profiler.Enter(uRegion));
                }
            });
    }
    for (std::thread& thread : threads)
    {
        thread.join();
    }
    EXPECT_EQ(m_profiler.GetRegions()[0].iCount, 1000);
    for (const CProfileSection& section : m_profiler.GetSections())
    {
        EXPECT_GE(section.dEndMs, 0.0);
    }
}

TEST(FrameProfilerScope, APlaceRegistersItsRegionOnce)
{
    CFrameProfiler& profiler = CFrameProfiler::Get();
    const size_t iBefore = profiler.GetRegions().size();
    profiler.ResetFrame();
    for (int i = 0; i < 3; ++i)
    {
        KESTRIN_PROFILE_SCOPE("ScopeTest");
    }
    std::vector<CProfileRegion> regions = profiler.GetRegions();
    ASSERT_EQ(regions.size(), iBefore + 1);
    EXPECT_STREQ(regions.back().pcName, "ScopeTest");
    EXPECT_EQ(regions.back().iCount, 3);
    profiler.StopRecording();
}
