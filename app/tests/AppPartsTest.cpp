#include "app/AppOutput.h"
#include "app/AppServices.h"
#include "app/EditorApp.h"
#include "app/EditorManager.h"
#include "app/NullEngine.h"
#include "app/ProfileHistory.h"
#include "app/WinInputDevice.h"
#include "character_editor/CharacterEditor.h"
#include "editor_common/EditorCamera.h"
#include "engine/ext/Console.h"
#include "engine/ext/Plotter2D.h"
#include "engine/render_device/NullRenderDevice.h"
#include "fx_editor/FxEditor.h"
#include "scene_editor/SceneEditor.h"

#include "Utils/Utility/GUtDebug.h"
#include "Utils/Utility/GUtTimer.h"
#include "app/tests/StartedAppTest.h"

#include <gtest/gtest.h>

#include <filesystem>
#include <string>
#include <unistd.h>
#include <vector>

using namespace Ovrel;
namespace RD = Kestrin::RenderDevice;

namespace
{
// A started application on the null devices in a folder of its own.
class AppPartsTest : public CStartedAppTest
{
};
} // namespace

TEST_F(AppPartsTest, SystemOutputPrintsInTheLevelsColoursAndShowsABoxFromLevelOne)
{
    CAppSystemOutput output(m_pApp);
    output.Print(0, "normal\n");
    output.Print(1, "warning\n");
    const std::vector<Kestrin::Ext::CConsole::SLine> lines = m_pApp->GetConsole()->GetLines();
    ASSERT_GE(lines.size(), 3u);
    EXPECT_EQ(lines[lines.size() - 3].strText, "normal");
    EXPECT_EQ(lines[lines.size() - 3].uColour, 0xffffffu);
    EXPECT_EQ(lines[lines.size() - 2].strText, "warning");
    EXPECT_EQ(lines[lines.size() - 2].uColour, 0xffff00u);
    EXPECT_EQ(g_boxes, (std::vector<std::string>{"[] warning\n"}));
}

TEST(AppSystemOutput, LevelTwoEndsTheProcess)
{
    // Without an application (and its threads): the fork of the death test stays simple.
    CAppSystemOutput output(nullptr);
    EXPECT_DEATH(output.Print(2, "fatal text\n"), "fatal text");
}

TEST_F(AppPartsTest, TheManagerTellsTheOtherEditorsOfARemovedEntityAndSelectsOnlyWithAWindow)
{
    CEditorManager* pManager = m_pApp->GetEditorManager();
    auto* pEntity = reinterpret_cast<Ovrel::CSceneEntity*>(0x1234);
    EXPECT_EQ(pManager->GetSelectedEntity(), nullptr); // no window yet
    pManager->SelectEntity(pEntity);
    EXPECT_EQ(pManager->GetSelectedEntity(), nullptr);
    ASSERT_TRUE(pManager->EditScene());
    EXPECT_TRUE(m_pApp->GetSceneEditor()->HasWindow());
    EXPECT_EQ(m_pApp->GetSceneEditor()->GetScene(), m_pApp->GetMainScene());
    EXPECT_EQ(m_pApp->GetSceneEditor()->GetSecondaryScene(), m_pApp->GetSecondaryScene());
    ASSERT_NE(m_pApp->GetMainScene(), nullptr);
    pManager->SelectEntity(pEntity);
    EXPECT_EQ(pManager->GetSelectedEntity(), pEntity);

    pManager->OnEntityRemoved(pEntity, m_pApp->GetSceneEditor()); // the scene editor removed it
    EXPECT_EQ(pManager->GetSelectedEntity(), pEntity);            // so it is not told
    EXPECT_EQ(m_pApp->GetCharacterEditor()->GetLastRemovedEntity(), pEntity);
    EXPECT_EQ(m_pApp->GetFxEditor()->GetLastRemovedEntity(), pEntity);
    pManager->OnEntityRemoved(nullptr, nullptr); // a null entity tells nobody
    EXPECT_EQ(m_pApp->GetCharacterEditor()->GetLastRemovedEntity(), pEntity);
    pManager->OnEntityRemoved(pEntity, m_pApp->GetFxEditor());
    EXPECT_EQ(pManager->GetSelectedEntity(), nullptr);

    m_pApp->GetSceneEditor()->Close();
    EXPECT_EQ(pManager->GetSelectedEntity(), nullptr);
}

TEST_F(AppPartsTest, ResizeReachesTheCameraThePlotterAndTheDevice)
{
    m_pApp->Resize(1024, 700);
    EXPECT_EQ(m_pApp->GetClientWidth(), 1024);
    EXPECT_EQ(m_pApp->GetEditorCamera()->GetWidth(), 1024);
    EXPECT_EQ(m_pApp->GetEditorCamera()->GetHeight(), 700);
    auto* pDevice = static_cast<RD::CNullRenderDevice*>(m_pApp->GetRenderDevice());
    EXPECT_EQ(pDevice->GetViewport().iW, 1024);
    EXPECT_EQ(pDevice->GetViewport().iH, 700);

    // A window that changes size resets the device, and the next frame resizes the views.
    m_pApp->StartLoop();
    m_pApp->GetWindow()->Move(0, 0, 800, 500);
    ASSERT_TRUE(m_pApp->RunFrame());
    EXPECT_EQ(m_pApp->GetClientWidth(), 800);
    EXPECT_EQ(m_pApp->GetEditorCamera()->GetHeight(), 500);
}

TEST_F(AppPartsTest, TheOverlayShowsTheFrameRateAndTheConsole)
{
    auto* pWindow = static_cast<RD::CNullWindow*>(m_pApp->GetWindow());
    m_pApp->StartLoop();
    for (int i = 0; i < 3; ++i)
    {
        ASSERT_TRUE(m_pApp->RunFrame());
    }
    ASSERT_GT(pWindow->PresentedOverlays(), 0);
    const auto& items = pWindow->LastOverlay().items;
    ASSERT_FALSE(items.empty());
    EXPECT_EQ(items[0].strText.rfind("Fps ", 0), 0u);
    EXPECT_FLOAT_EQ(items[0].fX, 100.0f);
    EXPECT_FLOAT_EQ(items[0].fY, 70.0f);
    m_pApp->SetOverlayFlag(CEditorApp::OVERLAY_FPS, false);
    m_pApp->GetConsole()->OnChar('\\');
    m_pApp->GetConsole()->Print(0xffffff, "hello\n");
    ASSERT_TRUE(m_pApp->RunFrame());
    ASSERT_TRUE(m_pApp->RunFrame());
    bool bHello = false;
    for (const auto& item : pWindow->LastOverlay().items)
    {
        EXPECT_EQ(item.strText.rfind("Fps ", 0), std::string::npos);
        bHello = bHello || item.strText == "hello";
    }
    EXPECT_TRUE(bHello);
}

TEST_F(AppPartsTest, StartupLinesAreGroupedByTheirFrame)
{
    m_pApp->SetStartupLines("@10 ShowFps(1)  @3 print(\"a @5 b\")\n@10 Quit() junk @x @60");
    const auto& lines = m_pApp->GetStartupLines();
    std::vector<std::pair<int, std::string>> got(lines.begin(), lines.end());
    EXPECT_EQ(got, (std::vector<std::pair<int, std::string>>{
                       {3, "print(\"a"}, {5, "b\")"}, {10, "ShowFps(1)"}, {10, "Quit() junk @x"}}));
    m_pApp->SetStartupLines(nullptr);
    EXPECT_TRUE(m_pApp->GetStartupLines().empty());
}

TEST(ProfileHistory, KeepsThreeHundredFramesLongestFirstAndHidesOnTheNextStep)
{
    CProfileHistory history;
    for (int i = 0; i < 305; ++i)
    {
        history.Push({{0, 1.0f}, {1, static_cast<float>(i)}, {2, 2.0f}});
    }
    ASSERT_EQ(history.GetFrames().size(), 300u);
    const CProfileHistory::Frame& oldest = history.GetFrames().front();
    EXPECT_EQ(oldest[0].iRegion, 1); // frame 5: 5 ms, then 2, then 1
    EXPECT_FLOAT_EQ(oldest[0].fMilliseconds, 5.0f);
    EXPECT_EQ(oldest[1].iRegion, 2);
    EXPECT_EQ(oldest[2].iRegion, 0);

    history.SetPendingRegion(2, true); // a legend click: applied at the next step
    EXPECT_FALSE(history.IsHidden(2));
    history.Push({{2, 9.0f}, {0, 1.0f}});
    EXPECT_TRUE(history.IsHidden(2));
    ASSERT_EQ(history.GetFrames().back().size(), 1u);
    history.SetPendingRegion(2, false);
    history.Push({{2, 9.0f}});
    EXPECT_EQ(history.GetFrames().back().size(), 1u);
    EXPECT_FALSE(history.IsHidden(2));
}

TEST(ProfileHistory, RecordsTheProfilersRegionsAndTheLegendTogglesThem)
{
    GUtManualClock clock;
    GUtSetClock(&clock);
    Kestrin::Utility::CFrameProfiler profiler;
    const uint16_t uUpdate = profiler.RegisterRegion("Update");
    const uint16_t uScene = profiler.RegisterRegion("Scene");
    profiler.ResetFrame();
    const int32_t iUpdate = profiler.Enter(uUpdate);
    clock.Advance(1.0);
    const int32_t iScene = profiler.Enter(uScene);
    clock.Advance(3.0);
    profiler.Leave(iScene);
    profiler.Leave(iUpdate);

    CProfileHistory history;
    history.Record(profiler);
    ASSERT_EQ(history.GetFrames().size(), 1u);
    const CProfileHistory::Frame& frame = history.GetFrames().back();
    ASSERT_EQ(frame.size(), 2u);
    EXPECT_EQ(frame[0].iRegion, uUpdate); // 4 ms, then 3
    EXPECT_FLOAT_EQ(frame[0].fMilliseconds, 4.0f);
    EXPECT_EQ(frame[1].iRegion, uScene);
    EXPECT_TRUE(profiler.GetSections().empty()); // the next frame has begun

    Kestrin::Plotter::CPlotter2D plotter;
    history.Draw(plotter, 480);
    const auto& items = plotter.Pending().items;
    // Two bar segments (4 ms = 40 px from y 430), two legend rows, two timeline lines.
    ASSERT_EQ(items.size(), 6u);
    EXPECT_FLOAT_EQ(items[0].fX, 50.0f);
    EXPECT_FLOAT_EQ(items[0].fY, 430.0f);
    EXPECT_FLOAT_EQ(items[0].fY2, 390.0f);
    EXPECT_EQ(items[0].uColour, CProfileHistory::RegionColour(uUpdate));
    EXPECT_EQ(items[2].strText, "Update                4.0 57.1%   1");
    EXPECT_FLOAT_EQ(items[4].fX, 400.0f);              // the timeline starts at x 400
    EXPECT_FLOAT_EQ(items[4].fX2, 400.0f + 4 * 20.0f); // 20 pixels a millisecond
    EXPECT_FLOAT_EQ(items[5].fX, 420.0f);
    EXPECT_FLOAT_EQ(items[5].fY, items[4].fY + 2.0f); // each entry 2 pixels lower

    EXPECT_EQ(history.RegionAtLegend(60.0f, 117.0f), uScene); // the second row
    EXPECT_EQ(history.RegionAtLegend(60.0f, 150.0f), -1);
    history.SetPendingRegion(uScene, true);
    history.Record(profiler);
    EXPECT_TRUE(history.IsHidden(uScene));
    EXPECT_EQ(history.RegionAtLegend(60.0f, 102.0f), uScene); // hidden rows stay clickable
    GUtSetClock(nullptr);
}
