#include "app/EditorApp.h"
#include "app/AppOutput.h"
#include "app/AppServices.h"
#include "app/GameTables.h"
#include "app/NullEngine.h"
#include "app/WinInputDevice.h"
#include "editor_common/ControlState.h"
#include "engine/audio/AudioDevice.h"
#include "engine/ext/Console.h"
#include "engine/physics/PhysicsWorld.h"
#include "engine/render_device/NullRenderDevice.h"
#include "engine/utility/SystemOutput.h"
#include "scene/EnvironmentAnimator.h"
#include "scene/Scene.h"
#include "scene_editor/SceneEditor.h"

#include "Utils/Utility/GUtDebug.h"
#include "Utils/Utility/GUtTimer.h"
#include "app/tests/StartedAppTest.h"

#include <gtest/gtest.h>

#include <filesystem>
#include <fstream>
#include <sstream>
#include <string>
#include <vector>

using namespace Ovrel;
namespace RD = Kestrin::RenderDevice;
namespace WM = Kestrin::RenderDevice::WindowMessage;

namespace
{
CThreadSafeManualClock* g_pClock = nullptr;

void AdvanceClock(int iMilliseconds)
{
    g_pClock->Advance(iMilliseconds);
}

class CRecordingTrace final : public IEditorAppTrace
{
public:
    void Step(const char* pcStep) override { steps.push_back(pcStep); }
    std::vector<std::string> steps;

    // The steps that start with a prefix.
    std::vector<std::string> With(const std::string& strPrefix) const
    {
        std::vector<std::string> found;
        for (const std::string& strStep : steps)
        {
            if (strStep.rfind(strPrefix, 0) == 0)
            {
                found.push_back(strStep);
            }
        }
        return found;
    }
};

// A sound device that writes down what start-up tells it.
class CRecordingAudioDevice final : public Kestrin::Audio::IAudioDevice
{
public:
    bool Init(const std::string& strSettings, const std::vector<std::pair<std::string, float>>& rpcs) override
    {
        std::string strCall = "Init " + strSettings;
        for (const auto& rpc : rpcs)
        {
            strCall += " " + rpc.first + "=" + std::to_string(static_cast<int>(rpc.second));
        }
        calls.push_back(strCall);
        return true;
    }
    bool LoadWaveBank(const std::string& strFile, int32_t iFlags, int32_t iIndex) override
    {
        calls.push_back("LoadWaveBank " + strFile + " " + std::to_string(iFlags) + " " +
                        std::to_string(iIndex));
        return true;
    }
    bool LoadSoundBank(const std::string& strFile, int32_t iIndex) override
    {
        calls.push_back("LoadSoundBank " + strFile + " " + std::to_string(iIndex));
        return true;
    }
    void SetRpcs(const std::vector<std::pair<int32_t, std::vector<float>>>& rpcs) override
    {
        std::string strCall = "SetRpcs";
        for (const auto& rpc : rpcs)
        {
            strCall += " " + std::to_string(rpc.first) + ":" + std::to_string(rpc.second.size());
        }
        calls.push_back(strCall);
    }
    void SetCategoryVolume(const std::string& strCategory, float fVolume) override
    {
        calls.push_back("SetCategoryVolume " + strCategory + " " +
                        std::to_string(static_cast<int>(fVolume * 10)));
    }
    void Update(const Kestrin::Audio::CAudioListener&, float fTimeStep) override { fTime += fTimeStep; }
    Kestrin::Audio::IAudio* CreateAudio() override { return nullptr; }
    void DestroyAudio(Kestrin::Audio::IAudio*) override {}

    std::vector<std::string> calls;
    float fTime = 0.0f;
};

// Steers the devices: failures on request, no game pads.
class CTestFactory final : public CEditorAppFactory
{
public:
    RD::IRenderDevice* CreateRenderDevice(int iKind) override
    {
        iRenderKind = iKind;
        if (bNoDevice)
        {
            return nullptr;
        }
        if (bDeviceFails)
        {
            return new RD::CNullRenderDevice(true); // needs a display: there is none
        }
        return CEditorAppFactory::CreateRenderDevice(iKind);
    }
    Kestrin::Audio::IAudioDevice* CreateAudioDevice(int iKind) override
    {
        iAudioKind = iKind;
        if (bAudioFails)
        {
            return nullptr;
        }
        pAudio = new CRecordingAudioDevice();
        return pAudio;
    }
    Kestrin::Physics::CPhysicsSdk* CreatePhysicsSdk() override
    {
        class CFailingSdk final : public Kestrin::Physics::CPhysicsSdk
        {
        public:
            bool Initialize() override { return false; }
            void Shutdown() override {}
        };
        return bPhysicsFails ? new CFailingSdk() : CEditorAppFactory::CreatePhysicsSdk();
    }
    CInputDevice* CreateInputDevice() override { return new CWinInputDevice(nullptr); }

    bool bNoDevice = false;
    bool bDeviceFails = false;
    bool bAudioFails = false;
    bool bPhysicsFails = false;
    int iRenderKind = -1;
    int iAudioKind = -1;
    CRecordingAudioDevice* pAudio = nullptr; // the last made; owned by the application
};

std::string ReadFile(const std::filesystem::path& path)
{
    std::ifstream in(path, std::ios::binary);
    std::ostringstream s;
    s << in.rdbuf();
    return s.str();
}

class EditorAppTest : public CAppFolderTest
{
protected:
    void SetUp() override
    {
        CAppFolderTest::SetUp();
        m_clock.SetMilliseconds(1000.0);
        g_pClock = &m_clock;
    }

    // An application on the null devices, with the test's factory, trace and clock.
    void Prepare(CEditorApp& app)
    {
        app.SetNullDevices(true);
        app.SetFactory(&m_factory);
        app.SetTrace(&m_trace);
        app.SetSleepFunction(&AdvanceClock);
    }

    CTestFactory m_factory;
    CRecordingTrace m_trace;
};

const std::vector<std::string> START_UP = {
    "1 load Editor.cfg",
    "2 link class descriptions",
    "3 device parameters",
    "4 create render device 0",
    "5 register device",
    "6 title and place",
    "7 CWinInputDevice",
    "8 audio",
    "9 CTextureManager",
    "10 CMaterialManager",
    "11 effect folders",
    "12 CLodMeshManager",
    "13 CDynamicBufferManager",
    "14 CCollisionShapeManager",
    "15 CFxManager",
    "16 CResourceManager",
    "17 CFxCharacterManager",
    "18 CSceneManager",
    "19 shader folder and Shader.cache1",
    "20 CPlotter3D CBufferedPlotter3D",
    "21 CTextureFont FontMingLiu15",
    "22 CPlotter2D",
    "23 shader model",
    "24 CRenderer",
    "25 material preview",
    "26 CAppConsoleCallback CConsole",
    "27 material error callback",
    "28 CAppSystemOutput",
    "29 CPhysicsSdk",
    "30 CAsyncLoader",
    "31 CAppThreadRenderer",
    "32 CEditorManager and editors",
    "33 CRenderWorld CPhysicsWorld CPhysicsWorld",
    "34 CFxPlayer",
    "35 CScene CScene",
    "36 CEditorCamera control state lens flare",
    "37 CLuaScript tables animators",
    "37 ready",
};

const std::vector<std::string> SHUT_DOWN = {
    "shutdown 2 CAppThreadRenderer",
    "shutdown 3 CLuaScript",
    "shutdown 3 control state",
    "shutdown 4 MainWindow",
    "shutdown 4 CCharacterEditor",
    "shutdown 4 CMaterialEditor",
    "shutdown 4 lens flare",
    "shutdown 4 CSceneEditor",
    "shutdown 4 CFxEditor",
    "shutdown 4 save Editor.cfg",
    "shutdown 5 CEditorCamera",
    "shutdown 5 scene 0",
    "shutdown 5 scene 1",
    "shutdown 5 CFxPlayer",
    "shutdown 5 physics world 0",
    "shutdown 5 physics world 1",
    "shutdown 5 CRenderWorld",
    "shutdown 6 CAsyncLoader",
    "shutdown 6 CPhysicsSdk",
    "shutdown 7 system output",
    "shutdown 8 CAppConsoleCallback",
    "shutdown 8 CConsole",
    "shutdown 9 CPlotter3D",
    "shutdown 9 CBufferedPlotter3D",
    "shutdown 9 CPlotter2D",
    "shutdown 9 CTextureFont",
    "shutdown 9 CRenderer",
    "shutdown 10 scripted light animator",
    "shutdown 10 CSceneManager",
    "shutdown 10 CFxCharacterManager",
    "shutdown 10 CResourceManager",
    "shutdown 10 CFxManager",
    "shutdown 11 material preview",
    "shutdown 12 CLodMeshManager",
    "shutdown 12 CDynamicBufferManager",
    "shutdown 12 CMaterialManager",
    "shutdown 12 CTextureManager",
    "shutdown 12 CCollisionShapeManager",
    "shutdown 12 input device",
    "shutdown 12 audio device",
    "shutdown 13 save Shader.cache1",
    "shutdown 13 render device",
    "shutdown 14 environment animator",
};
} // namespace

TEST_F(EditorAppTest, StartUpAndShutDownRunEveryStepInOrder)
{
    {
        CEditorApp app;
        EXPECT_EQ(CEditorApp::Get(), &app);
        Prepare(app);
        ASSERT_TRUE(app.Initialize(0, nullptr));
        EXPECT_EQ(m_trace.steps, START_UP);
        EXPECT_TRUE(g_boxes.empty());
        EXPECT_EQ(m_factory.iRenderKind, 0);
        EXPECT_EQ(m_factory.iAudioKind, 0);
        EXPECT_EQ(RD::GetRenderDevice(), app.GetRenderDevice());
        EXPECT_NE(Kestrin::Utility::GetSystemOutput(), nullptr);
        m_trace.steps.clear();
    } // the destructor runs ShutDown
    EXPECT_EQ(m_trace.steps, SHUT_DOWN);
    EXPECT_EQ(CEditorApp::Get(), nullptr);
    EXPECT_TRUE(RD::IsSharedNullDevice(RD::GetRenderDevice())); // the accessor falls back
    EXPECT_EQ(RD::GetRenderDevice()->GetWindow(), nullptr);
}

TEST_F(EditorAppTest, ADeviceThatFailsToInitialiseShowsItsMessageAndShutsDownWhatWasMade)
{
    std::ofstream("Editor.cfg") << "<MainWindow><X>7</X></MainWindow>";
    m_factory.bDeviceFails = true;
    CEditorApp app;
    Prepare(app);
    EXPECT_FALSE(app.Initialize(0, nullptr));
    EXPECT_EQ(g_boxes, (std::vector<std::string>{"[] Initialize graphic device fail."}));
    EXPECT_EQ(m_trace.With("shutdown"), (std::vector<std::string>{"shutdown 13 render device"}));
    EXPECT_EQ(m_trace.With("5"), std::vector<std::string>{});
    EXPECT_EQ(app.GetExitCode(), 1);
    // A start that never reached the editors leaves Editor.cfg as it was.
    EXPECT_EQ(ReadFile("Editor.cfg"), "<MainWindow><X>7</X></MainWindow>");
}

TEST_F(EditorAppTest, NoDeviceAtAllEndsTheStartUpWithoutAMessage)
{
    m_factory.bNoDevice = true;
    CEditorApp app;
    Prepare(app);
    EXPECT_FALSE(app.Initialize(0, nullptr));
    EXPECT_TRUE(g_boxes.empty());
    EXPECT_EQ(m_trace.steps.back(), "4 create render device 0");
    EXPECT_FALSE(std::filesystem::exists("Editor.cfg"));
}

TEST_F(EditorAppTest, TheHardwareDeviceNeedsADisplay)
{
    CEditorApp app;
    app.SetFactory(&m_factory);
    app.SetTrace(&m_trace);
    EXPECT_FALSE(app.Initialize(0, nullptr)); // no window system with a display in tests
    EXPECT_EQ(m_factory.iRenderKind, 1);
    EXPECT_EQ(g_boxes, (std::vector<std::string>{"[] Initialize graphic device fail."}));
}

TEST_F(EditorAppTest, AFailedAudioStartShowsItsMessageAndGoesOnWithTheNullDevice)
{
    m_factory.bAudioFails = true;
    CEditorApp app;
    Prepare(app);
    ASSERT_TRUE(app.Initialize(0, nullptr));
    EXPECT_EQ(g_boxes, (std::vector<std::string>{"[] Initialize audio fail."}));
    ASSERT_NE(app.GetAudioDevice(), nullptr);
    EXPECT_EQ(m_trace.steps,
              []
              {
                  std::vector<std::string> expected = START_UP;
                  expected.insert(expected.begin() + 8, "message Initialize audio fail.");
                  return expected;
              }());
}

TEST_F(EditorAppTest, FailedPhysicsShowsItsMessageAndShutsDownEverythingMadeBefore)
{
    m_factory.bPhysicsFails = true;
    CEditorApp app;
    Prepare(app);
    EXPECT_FALSE(app.Initialize(0, nullptr));
    EXPECT_EQ(g_boxes, (std::vector<std::string>{"[] Please install PhysX."}));
    EXPECT_EQ(m_trace.With("shutdown"), (std::vector<std::string>{"shutdown 6 CPhysicsSdk",
                                                                  "shutdown 7 system output",
                                                                  "shutdown 8 CAppConsoleCallback",
                                                                  "shutdown 8 CConsole",
                                                                  "shutdown 9 CPlotter3D",
                                                                  "shutdown 9 CBufferedPlotter3D",
                                                                  "shutdown 9 CPlotter2D",
                                                                  "shutdown 9 CTextureFont",
                                                                  "shutdown 9 CRenderer",
                                                                  "shutdown 10 CSceneManager",
                                                                  "shutdown 10 CFxCharacterManager",
                                                                  "shutdown 10 CResourceManager",
                                                                  "shutdown 10 CFxManager",
                                                                  "shutdown 11 material preview",
                                                                  "shutdown 12 CLodMeshManager",
                                                                  "shutdown 12 CDynamicBufferManager",
                                                                  "shutdown 12 CMaterialManager",
                                                                  "shutdown 12 CTextureManager",
                                                                  "shutdown 12 CCollisionShapeManager",
                                                                  "shutdown 12 input device",
                                                                  "shutdown 12 audio device",
                                                                  "shutdown 13 save Shader.cache1",
                                                                  "shutdown 13 render device"}));
    EXPECT_EQ(dynamic_cast<CAppSystemOutput*>(Kestrin::Utility::GetSystemOutput()), nullptr); // default again
    EXPECT_FALSE(std::filesystem::exists("Editor.cfg"));
}

TEST_F(EditorAppTest, EditorCfgRoundTripsThroughAStartAndAShutDown)
{
    // Every section is there: one that is missing would leave those after it unread.
    std::ofstream("Editor.cfg")
        << "<MainWindow><X>11</X><Y>12</Y><W>800</W><H>600</H></MainWindow><MaterialEditor/>"
           "<SceneEditor><WindowX>5</WindowX><WindowTop>1</WindowTop>"
           "<ShaderPath></ShaderPath><ScriptPath>..\\script\\</ScriptPath>"
           "<RootPath>..\\data\\</RootPath><Unknown>9</Unknown></SceneEditor>"
           "<FxEditor/><CharacterEditor><WindowW>300</WindowW></CharacterEditor>";
    {
        CEditorApp app;
        Prepare(app);
        ASSERT_TRUE(app.Initialize(0, nullptr));
        EXPECT_STREQ(app.GetShaderPath().c_str(), "..\\shader\\"); // empty becomes the default
        EXPECT_STREQ(app.GetScriptPath().c_str(), "..\\script\\");
        EXPECT_EQ(app.GetSceneEditor()->GetWindowRect().iX, 5);
        EXPECT_TRUE(app.GetSceneEditor()->IsWindowTop());
        EXPECT_EQ(app.GetClientWidth(), 800); // the null window has no frame
    }
    const std::string strSaved = ReadFile("Editor.cfg");
    const size_t uMain = strSaved.find("<MainWindow>");
    const size_t uCharacter = strSaved.find("<CharacterEditor>");
    const size_t uMaterial = strSaved.find("<MaterialEditor>");
    const size_t uScene = strSaved.find("<SceneEditor>");
    const size_t uFx = strSaved.find("<FxEditor>");
    EXPECT_EQ(uMain, 0u);
    EXPECT_LT(uMain, uCharacter);
    EXPECT_LT(uCharacter, uMaterial);
    EXPECT_LT(uMaterial, uScene);
    EXPECT_LT(uScene, uFx);
    EXPECT_NE(strSaved.find("<X>11</X>"), std::string::npos);
    EXPECT_NE(strSaved.find("<WindowW>300</WindowW>"), std::string::npos);
    EXPECT_NE(strSaved.find("<ScriptPath>..\\script\\</ScriptPath>"), std::string::npos);
    EXPECT_NE(strSaved.find("<RootPath>..\\data\\</RootPath>"), std::string::npos);
    EXPECT_EQ(strSaved.find("Unknown"), std::string::npos); // no unknown key survives

    // The same start and shut-down again writes the same bytes.
    {
        CEditorApp app;
        Prepare(app);
        ASSERT_TRUE(app.Initialize(0, nullptr));
    }
    EXPECT_EQ(ReadFile("Editor.cfg"), strSaved);
}

TEST_F(EditorAppTest, AMissingMainWindowSectionLeavesEveryLaterSectionUnread)
{
    std::ofstream("Editor.cfg")
        << "<SceneEditor><ScriptPath>x</ScriptPath><WindowX>5</WindowX></SceneEditor>";
    CEditorApp app;
    Prepare(app);
    ASSERT_TRUE(app.Initialize(0, nullptr));
    EXPECT_STREQ(app.GetScriptPath().c_str(), ""); // the cursor was lost at "MainWindow"
    EXPECT_EQ(app.GetSceneEditor()->GetWindowRect().iX, CSceneEditor::DEFAULT_RECT.iX);
}

TEST_F(EditorAppTest, TheFirstFramePresentsNothingAndAQuitMessageEndsTheLoop)
{
    CEditorApp app;
    Prepare(app);
    ASSERT_TRUE(app.Initialize(0, nullptr));
    app.StartLoop();
    auto* pDevice = static_cast<RD::CNullRenderDevice*>(app.GetRenderDevice());
    const int iPresents = pDevice->Presents();
    EXPECT_TRUE(app.RunFrame());
    EXPECT_EQ(pDevice->Presents(), iPresents);
    EXPECT_TRUE(app.RunFrame());
    EXPECT_TRUE(app.RunFrame());
    EXPECT_EQ(pDevice->Presents(), iPresents + 2);
    app.GetWindow()->PostMessage(WM::QUIT, 0, 0);
    EXPECT_FALSE(app.RunFrame());
    EXPECT_TRUE(app.IsQuitRequested());
    EXPECT_EQ(app.GetExitCode(), 0);
}

TEST_F(EditorAppTest, TimeScaleZeroFreezesTheWorldWhileTheFrameGoesOn)
{
    CEditorApp app;
    Prepare(app);
    ASSERT_TRUE(app.Initialize(0, nullptr));
    // An environment animation of scene 0 shows how far the world moved: the renderer gets
    // its blend each frame.
    CScene* pScene = app.GetMainScene();
    pScene->CreateEnvironment("Day");
    auto* pNight = static_cast<CEnvironmentSceneEntity*>(pScene->CreateEnvironment("Night"));
    CEnvironmentValues night = pNight->GetValues();
    night.fSaturation = 0.0f;
    pNight->SetValues(night);
    ASSERT_TRUE(app.GetEnvironmentAnimator()->Add("Dusk", 0.0f, 0.1f, "Night"));
    ASSERT_TRUE(app.GetEnvironmentAnimator()->Activate("Dusk"));
    app.SetFpsLimit(50.0f); // 20 ms a frame, slept on the test's clock
    app.SetTimeScale(0.0f);
    app.StartLoop();
    for (int i = 0; i < 5; ++i)
    {
        ASSERT_TRUE(app.RunFrame());
    }
    EXPECT_FLOAT_EQ(app.GetRenderer()->GetEnvironment().fSaturation, 1.0f);
    EXPECT_EQ(app.GetRenderer()->GetEnvironmentPushes(), 5);
    EXPECT_NEAR(app.GetTiming().fGameTime, 0.081f, 0.002f); // the first step is 1 ms, then 20 ms each
    app.SetTimeScale(2.0f);
    ASSERT_TRUE(app.RunFrame());
    // 40 ms of a 100 ms blend.
    EXPECT_NEAR(app.GetRenderer()->GetEnvironment().fSaturation, 0.6f, 1e-4f);
}

TEST_F(EditorAppTest, AMinimisedWindowDropsTheLoopToOneFramePerSecond)
{
    CEditorApp app;
    Prepare(app);
    ASSERT_TRUE(app.Initialize(0, nullptr));
    static_cast<RD::CNullWindow*>(app.GetWindow())->SetMinimised(true);
    const double dStart = m_clock.NowMilliseconds();
    ASSERT_TRUE(app.RunFrame());
    EXPECT_NEAR(m_clock.NowMilliseconds() - dStart, 1000.0, 1.0);
    static_cast<RD::CNullWindow*>(app.GetWindow())->SetMinimised(false);
    app.SetFpsLimit(5.0f);
    ASSERT_TRUE(app.RunFrame());
    EXPECT_NEAR(m_clock.NowMilliseconds() - dStart, 1200.0, 1.0);
}

TEST_F(EditorAppTest, WindowMessagesReachTheConsoleAndTheWindowPlace)
{
    CEditorApp app;
    Prepare(app);
    ASSERT_TRUE(app.Initialize(0, nullptr));
    bool bHandled = false;
    app.OnWindowMessage(WM::CHAR, '\\', 1, bHandled);
    EXPECT_EQ(app.GetConsole()->GetState(), 1);
    app.OnWindowMessage(WM::CHAR, 'x', 1, bHandled);
    app.OnWindowMessage(WM::KEYDOWN, 36, 1, bHandled); // home
    app.OnWindowMessage(WM::CHAR, 'y', 1, bHandled);
    EXPECT_EQ(app.GetConsole()->GetInput(), "yx");
    app.OnWindowMessage(WM::ACTIVATEAPP, 0, 0, bHandled);
    EXPECT_FALSE(app.IsAppActive());
    app.OnWindowMessage(WM::ACTIVATEAPP, 1, 0, bHandled);
    EXPECT_TRUE(app.IsAppActive());
    app.GetWindow()->Move(100, 120, 700, 500);
    app.OnWindowMessage(WM::MOVE, 0, 0, bHandled);
    app.OnWindowMessage(WM::QUIT, 0, 0, bHandled);
    EXPECT_TRUE(app.IsQuitRequested());
}

TEST_F(EditorAppTest, AudioLuaGivesTheDeviceItsSettingsBanksAndCategories)
{
    std::filesystem::create_directories("Audio");
    std::ofstream("Audio/audio.lua") << "GlobalSettings = \"global.xgs\"\n"
                                        "SoundRPCs = { Volume = 1, Pitch = 2 }\n"
                                        "MemoryWaveBanks = { \"m0.xwb\", \"m1.xwb\" }\n"
                                        "StreamWaveBanks = { \"s0.xwb\" }\n"
                                        "SoundBanks = { \"a.xsb\", \"b.xsb\" }\n"
                                        "RPCs = { [3] = { 1, 2, 3 }, [1] = { 5 } }\n";
    // The folder as the data tree writes it: a backslash, and another case than on disk.
    std::ofstream("Editor.cfg") << "<MainWindow/><MaterialEditor/><SceneEditor><AudioPath>audio\\</AudioPath>"
                                   "</SceneEditor>";
    CEditorApp app;
    Prepare(app);
    ASSERT_TRUE(app.Initialize(0, nullptr));
    ASSERT_NE(m_factory.pAudio, nullptr);
    EXPECT_EQ(m_factory.pAudio->calls,
              (std::vector<std::string>{"Init audio\\global.xgs Pitch=2 Volume=1",
                                        "LoadWaveBank audio\\m0.xwb 0 0", "LoadWaveBank audio\\m1.xwb 0 1",
                                        "LoadWaveBank audio\\s0.xwb 16 2", "LoadSoundBank audio\\a.xsb 0",
                                        "LoadSoundBank audio\\b.xsb 1", "SetRpcs 1:1 3:3",
                                        "SetCategoryVolume Global 5", "SetCategoryVolume Default 5",
                                        "SetCategoryVolume Speech 5", "SetCategoryVolume Music 5"}));
    EXPECT_TRUE(g_boxes.empty());
}

TEST_F(EditorAppTest, WithoutAudioLuaTheDeviceStartsWithNoSettings)
{
    CEditorApp app;
    Prepare(app);
    ASSERT_TRUE(app.Initialize(0, nullptr));
    ASSERT_NE(m_factory.pAudio, nullptr);
    EXPECT_EQ(m_factory.pAudio->calls.front(), "Init ");
    EXPECT_EQ(m_factory.pAudio->calls.size(), 6u); // Init, no banks, the RPC table, four categories
}

TEST_F(EditorAppTest, TheGameTablesLoadFromTheirFoldersAndMissingOnesStayEmpty)
{
    std::filesystem::create_directories("Script");
    std::filesystem::create_directories("table");
    std::ofstream("Script/attack.lua") << "Attack = { Slash = 10 }\n";
    std::ofstream("Script/Camera.lua") << "Camera = { Fov = 60 }\n";
    std::ofstream("Script/EntityProperty.lua") << "EntityProperty = { }\n";
    std::ofstream("table/SessionNPC.xml") << "<npcs><npc id=\"1\"/></npcs>";
    std::ofstream("table/SNPCConfig.xml") << "<config><broken";
    std::ofstream("Editor.cfg")
        << "<MainWindow/><MaterialEditor/><SceneEditor><ScriptPath>script\\</ScriptPath>"
           "<TablePath>table\\</TablePath></SceneEditor>";
    CEditorApp app;
    Prepare(app);
    ASSERT_TRUE(app.Initialize(0, nullptr));
    CGameTables& tables = CGameTables::Get();
    EXPECT_TRUE(tables.attack.IsLoaded()); // another case on disk: found through the path layer
    EXPECT_EQ(tables.attack.GetGlobal().GetTable().Count(), 1);
    EXPECT_FALSE(tables.attackInfo.IsLoaded());
    EXPECT_EQ(tables.attackInfo.GetFileName(), "table\\AttackInfo.xml");
    EXPECT_FALSE(tables.mapping.IsLoaded());
    EXPECT_TRUE(tables.camera.IsLoaded());
    EXPECT_TRUE(tables.entityProperty.IsLoaded());
    EXPECT_TRUE(tables.sessionNpc.IsLoaded());
    EXPECT_FALSE(tables.snpcConfig.IsLoaded()); // broken: empty
    EXPECT_TRUE(tables.AreCrossReferencesResolved());
    EXPECT_EQ(app.GetMainScene()->GetEntityProperties(), &tables.entityProperty.GetGlobal());
    EXPECT_EQ(app.GetSecondaryScene()->GetEntityProperties(), &tables.entityProperty.GetGlobal());
    EXPECT_TRUE(g_boxes.empty()); // missing tables are log lines, not boxes
    tables.Clear();
}

TEST_F(EditorAppTest, WithOnlyAMainWindowSectionNoTableLoads)
{
    std::ofstream("Editor.cfg") << "<MainWindow><X>1</X></MainWindow>";
    CGameTables::Get().Clear();
    CEditorApp app;
    Prepare(app);
    ASSERT_TRUE(app.Initialize(0, nullptr));
    EXPECT_STREQ(app.GetShaderPath().c_str(), "..\\shader\\");
    EXPECT_STREQ(app.GetScriptPath().c_str(), "");
    EXPECT_EQ(CGameTables::Get().attack.GetFileName(), ""); // not even tried
    EXPECT_EQ(CGameTables::Get().sessionNpc.GetFileName(), "");
}
