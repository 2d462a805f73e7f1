#include "app/AppServices.h"
#include "app/AppThreadRenderer.h"
#include "app/EditorApp.h"
#include "app/NullEngine.h"
#include "app/WinInputDevice.h"
#include "app/tests/StartedAppTest.h"
#include "engine/ext/Console.h"
#include "engine/fx/FxPlayer.h"
#include "engine/utility/AsyncLoader.h"
#include "scene/Scene.h"

#include "Utils/Utility/GUtDebug.h"

#include <gtest/gtest.h>

#include <filesystem>
#include <string>
#include <unistd.h>
#include <vector>

using namespace Ovrel;

namespace
{
// A started application whose console lines are typed and run by the next frame.
class ConsoleCommandsTest : public CStartedAppTest
{
protected:
    void SetUp() override
    {
        CStartedAppTest::SetUp();
        if (HasFatalFailure())
        {
            return;
        }
        m_pApp->StartLoop();
        m_pConsole = m_pApp->GetConsole();
        m_pConsole->OnChar('\\'); // open for input
    }

    // Types the line, presses enter and runs one frame.
    void Run(const std::string& strLine)
    {
        for (char c : strLine)
        {
            m_pConsole->OnChar(static_cast<unsigned char>(c));
        }
        m_pConsole->OnChar(13);
        m_pApp->RunFrame();
    }
    // The console's lines that are not empty.
    std::vector<std::string> Lines() const
    {
        std::vector<std::string> lines;
        for (const auto& line : m_pConsole->GetLines())
        {
            if (!line.strText.empty())
            {
                lines.push_back(line.strText);
            }
        }
        return lines;
    }
    // True when the last line ends with the text (Lua puts the chunk and line in front).
    bool LastLineEndsWith(const std::string& strText) const
    {
        const std::string strLast = LastLine();
        return strLast.size() >= strText.size() &&
               strLast.compare(strLast.size() - strText.size(), strText.size(), strText) == 0;
    }
    std::string LastLine() const
    {
        const std::vector<std::string> lines = Lines();
        return lines.empty() ? std::string() : lines.back();
    }

    Kestrin::Ext::CConsole* m_pConsole = nullptr;
};
} // namespace

TEST_F(ConsoleCommandsTest, SettersReachTheirTargets)
{
    Run("TimeScale(0.5)");
    EXPECT_FLOAT_EQ(m_pApp->GetTimeScale(), 0.5f);
    Run("Fps(30)");
    EXPECT_FLOAT_EQ(m_pApp->GetFpsLimit(), 30.0f);
    Run("SmoothTimer(1)");
    EXPECT_TRUE(m_pApp->GetSmoothTimer());
    Run("LodFactor(2.5)");
    EXPECT_FLOAT_EQ(m_pApp->GetLodFactor(), 2.5f);
    Run("VisibleGroups(\"4294967301\")"); // 2^32 + 5
    EXPECT_EQ(m_pApp->GetVisibleGroupsLow(), 5u);
    EXPECT_EQ(m_pApp->GetVisibleGroupsHigh(), 1u);
    Run("ShowFps(0) Profile(1)");
    EXPECT_EQ(m_pApp->GetOverlayFlags(), CEditorApp::OVERLAY_PROFILE);
    Run("ConsoleLines(4)");
    EXPECT_EQ(m_pConsole->GetVisibleLines(), 4);
    Run("SkipMip(2)");
    EXPECT_EQ(m_pApp->GetTextureManager()->GetSkipMip(), 2);
    Run("FxLod(3)");
    EXPECT_EQ(static_cast<Kestrin::Fx::CNullFxPlayer*>(m_pApp->GetFxPlayer())->GetLod(), 3);
    Run("CharacterLod(1)");
    EXPECT_EQ(m_pApp->GetMainScene()->GetCharacterQuality(), 1);
    Run("RenderThread(0)");
    EXPECT_FALSE(m_pApp->GetThreadRenderer()->IsThreaded());
    Run("RenderThread(1)");
    EXPECT_TRUE(m_pApp->GetThreadRenderer()->IsThreaded());
    EXPECT_FALSE(m_pApp->IsQuitRequested());
    Run("Quit()");
    EXPECT_TRUE(m_pApp->IsQuitRequested());
    EXPECT_EQ(m_pApp->GetExitCode(), 0);
    EXPECT_TRUE(g_boxes.empty());
}

TEST_F(ConsoleCommandsTest, PrintJoinsItsArgumentsWithTabsOnTheSystemOutput)
{
    Run("print(\"a\", 1, nil, true, 2.5)");
    EXPECT_EQ(LastLine(), "a\t1\tnil\ttrue\t2.5");
    Run("print(string.rep(\"x\", 300))"); // at most 256 bytes with the terminator
    const std::vector<std::string> lines = Lines();
    ASSERT_GE(lines.size(), 4u);
    EXPECT_EQ(lines[lines.size() - 4].size() + lines[lines.size() - 3].size() +
                  lines[lines.size() - 2].size() + lines.back().size(),
              255u); // 79 + 79 + 79 + 18
    EXPECT_EQ(lines[lines.size() - 5], "print(string.rep(\"x\", 300))");
}

TEST_F(ConsoleCommandsTest, ArgumentErrorsAndUnknownNamesGiveTheirTexts)
{
    Run("ActiveEnvAnim()");
    EXPECT_EQ(LastLine(), "[string \"ActiveEnvAnim()\"]:1: ActiveEnvAnim error ! need 1 arguments.");
    Run("ActiveEnvAnim(\"rain\")");
    EXPECT_EQ(LastLine(), "ActiveEnvAnim env: \"rain\" not founded.");
    Run("ActiveEffect(\"fire\")");
    EXPECT_TRUE(LastLineEndsWith(": ActiveEffect error ! need 1 arguments.")) << LastLine();
    Run("DeActiveEffect()");
    EXPECT_TRUE(LastLineEndsWith(": ActiveEffect error ! need 1 arguments.")) << LastLine();
    EXPECT_TRUE(g_boxes.empty()); // the console was open: lines, not boxes

    m_pConsole->SetState(Kestrin::Ext::CConsole::STATE_HIDDEN);
    m_pApp->ExecuteConsoleLine("ActiveEnvAnim()");
    EXPECT_EQ(g_boxes, (std::vector<std::string>{
                           "[] [string \"ActiveEnvAnim()\"]:1: ActiveEnvAnim error ! need 1 arguments.\n"}));
}

TEST_F(ConsoleCommandsTest, SceneOpensSceneNameNameThroughTheLoaderOverFrames)
{
    const std::filesystem::path folder = std::filesystem::path("Scene") / "console_scene";
    std::filesystem::create_directories(folder);
    {
        CScene saved;
        saved.SetServices(nullptr, nullptr, nullptr, nullptr, nullptr, true);
        saved.CreateEntity(ENTITY_LOCATOR, 0)->SetName("Spawn");
        saved.CreateEntity(ENTITY_CAMERA, 0)->SetName("Intro");
        ASSERT_TRUE(saved.Save((folder / "console_scene.scene").string()));
    }
    CScene* pScene = m_pApp->GetMainScene();
    Run("Scene(\"console_scene\")");
    EXPECT_EQ(pScene->GetName(), "console_scene");
    // The load thread may finish before the frame's Tick, which then completes the scene
    // within that frame; otherwise later frames do.
    for (int i = 0; i < 1000 && pScene->IsLoading(); ++i)
    {
        m_pApp->RunFrame();
    }
    EXPECT_FALSE(pScene->IsLoading());
    EXPECT_TRUE(pScene->HasLoaded());
    EXPECT_EQ(pScene->GetEntityCount(), 2);
    EXPECT_NE(pScene->FindByName("spawn", ENTITY_LOCATOR), nullptr);
    Run("Scene(\"no_such_scene\")");
    Kestrin::Utility::GetAsyncLoader()->WaitForAll();
    EXPECT_FALSE(pScene->HasLoaded());
    EXPECT_EQ(pScene->GetEntityCount(), 0);
    std::filesystem::remove_all("Scene/console_scene");
}

TEST_F(ConsoleCommandsTest, CommandsWhoseSubsystemIsNotBuiltSaySo)
{
    Run("ActiveEffect(\"fire\", 1)");
    EXPECT_EQ(LastLine(), "ActiveEffect: the fx runtime is not loaded.");
    Run("DeActiveEffect(\"fire\", 1)");
    EXPECT_EQ(LastLine(), "DeActiveEffect: the fx runtime is not loaded.");
    Run("AddFoldingBones(\"hair\")");
    EXPECT_EQ(LastLine(), "AddFoldingBones: the character editor is not loaded.");
    Run("ShowTake(1)");
    EXPECT_EQ(LastLine(), "ShowTake: the character editor is not loaded.");
    Run("ActiveScriptedAnim()");
    EXPECT_EQ(LastLine(), "ActiveScriptedAnim: the scripted light animation is not loaded.");
    Run("SetLightAnim(2)");
    EXPECT_EQ(LastLine(), "SetLightAnim: the scripted light animation is not loaded.");
}

TEST_F(ConsoleCommandsTest, ALineThatIsNotLuaPrintsLuasErrorAndTheConsoleLivesOn)
{
    Run("SkipMip 2");
    EXPECT_NE(LastLine().find("'=' expected"), std::string::npos) << LastLine();
    Run("EditScene()");
    EXPECT_TRUE(m_pApp->GetEditorManager() != nullptr);
    Run("print(1 + 1)");
    EXPECT_EQ(LastLine(), "2");
}
