// CEditorApp::Initialize: the start-up, one step after the other, in the fixed order.
#include "app/EditorApp.h"

#include "Utils/Utility/GUtDebug.h"
#include "app/AppOutput.h"
#include "app/AppServices.h"
#include "app/AppThreadRenderer.h"
#include "app/EditorManager.h"
#include "app/InputDevice.h"
#include "app/NullEngine.h"
#include "app/Revision.h"
#include "character_editor/CharacterEditor.h"
#include "editor_common/ControlState.h"
#include "editor_common/EditorCamera.h"
#include "editor_common/EditorConfig.h"
#include "engine/audio/AudioDevice.h"
#include "engine/ext/Console.h"
#include "engine/ext/Plotter2D.h"
#include "engine/fx/FxPlayer.h"
#include "engine/physics/PhysicsWorld.h"
#include "engine/render_device/RenderDevice.h"
#include "engine/renderer/RenderWorld.h"
#include "engine/utility/SystemOutput.h"
#include "fx_editor/FxEditor.h"
#include "material_editor/MaterialEditor.h"
#include "scene/Scene.h"
#include "scene/SceneClassDesc.h"
#include "scene/SceneManager.h"
#include "scene_editor/SceneEditor.h"

#include <algorithm>
#include <cstdio>

namespace Ovrel
{

namespace RD = Kestrin::RenderDevice;

namespace
{
// Shows a material's compile error; installed into the material manager at start-up.
void ShowMaterialError(const char* pcMaterial, const char* pcText)
{
    char acText[1024];
    snprintf(acText, sizeof(acText), "Material \"%s\" error:\n%s", pcMaterial, pcText);
    GUtShowMessageBox("", acText);
}
} // namespace

bool CEditorApp::_Fail()
{
    ShutDown();
    m_iExitCode = 1;
    return false;
}

bool CEditorApp::Initialize(int iArgc, char** ppArgv)
{
    (void)iArgc, (void)ppArgv; // no argument has any effect
    if (!m_pFactory)
    {
        m_pOwnFactory = new CEditorAppFactory();
        m_pFactory = m_pOwnFactory;
    }
    m_bShutDown = false;

    CEditorConfig config; // lives for this call only
    _ReadConfig(config);  // 1
    _Trace("2 link class descriptions");
    CSceneClassRegistry::Link();
    if (!_CreateDevice()) // 3, 4
    {
        return _Fail();
    }
    _SetUpWindow();         // 5, 6, 7
    _InitializeAudio();     // 8
    _CreateManagers();      // 9 to 19
    _CreateRendering();     // 20 to 28
    if (!_CreateServices()) // 29 to 31
    {
        return _Fail();
    }
    _CreateEditors(config); // 32
    _CreateWorld();         // 33 to 36
    _CreateScripting();     // 37
    Resize(m_iClientW, m_iClientH);
    _Trace("37 ready");
    return true;
}

// ---------------------------------------------------------------------------------------
// 1: Editor.cfg

void CEditorApp::_ReadConfig(CEditorConfig& config)
{
    _Trace("1 load %s", CONFIG_FILE);
    config.Load(CONFIG_FILE);
    config.EnterSection("MainWindow");
    config.ReadInt("X", m_iWindowX);
    config.ReadInt("Y", m_iWindowY);
    config.ReadInt("W", m_iWindowW);
    config.ReadInt("H", m_iWindowH);
    config.LeaveSection();
    config.EnterSection(CSceneEditor::SECTION);
    SSceneEditorPaths paths;
    paths.Read(config); // an empty shader path becomes the default
    config.LeaveSection();
    m_strShaderPath = paths.strShaderPath;
    m_strAudioPath = paths.strAudioPath;
    m_strCharacterFxPath = paths.strCharacterFxPath;
    m_strSceneFxPath = paths.strSceneFxPath;
    m_strSceneCharacterPath = paths.strSceneCharacterPath;
    m_strSceneModelPath = paths.strSceneModelPath;
    m_strScriptPath = paths.strScriptPath;
    m_strTablePath = paths.strTablePath;
    m_strRootPath = paths.strRootPath;
}

// ---------------------------------------------------------------------------------------
// 3 to 7: the device and its window

bool CEditorApp::_CreateDevice()
{
    _Trace("3 device parameters");
    RD::SDeviceParameters params;
    params.iWidth = 640;
    params.iHeight = 480;
    params.bFullscreen = false;
    params.pfnMessageProc = &CEditorApp::_WindowProc;
    params.pMessageUser = this;
    m_iClientW = 640;
    m_iClientH = 480;

    const int iKind = m_bNullDevices ? 0 : 1;
    _Trace("4 create render device %d", iKind);
    m_pRenderDevice = m_pFactory->CreateRenderDevice(iKind);
    if (!m_pRenderDevice)
    {
        return false;
    }
    RD::SDeviceCaps caps;
    m_pRenderDevice->GetCaps(caps);
    if (!m_pRenderDevice->Initialize(params))
    {
        _Trace("message Initialize graphic device fail.");
        GUtShowMessageBox("", "Initialize graphic device fail.");
        return false;
    }
    m_bShowCursor = true;
    return true;
}

void CEditorApp::_SetUpWindow()
{
    _Trace("5 register device");
    RD::SetRenderDevice(m_pRenderDevice);
    m_pWindow = m_pRenderDevice->GetWindow();
    if (m_pWindow)
    {
        m_pWindow->GetClientSize(m_iClientW, m_iClientH);
        m_pWindow->SetResizable(true);
    }

    _Trace("6 title and place");
    char acTitle[128];
    snprintf(acTitle, sizeof(acTitle), "Editor (Build %s, %s, %s)", __DATE__, __TIME__,
             CRevision::Get().c_str());
    if (m_pWindow)
    {
        m_pWindow->SetTitle(acTitle);
        m_pWindow->Move(m_iWindowX, m_iWindowY, m_iWindowW, m_iWindowH);
        m_pWindow->AcceptFileDrops(true);
        m_pWindow->GetClientSize(m_iClientW, m_iClientH);
    }

    _Trace("7 CWinInputDevice");
    m_pInputDevice = m_pFactory->CreateInputDevice();
    m_pInputDevice->Initialize(m_pWindow);
}

// ---------------------------------------------------------------------------------------
// 8: audio

void CEditorApp::_InitializeAudio()
{
    _Trace("8 audio");
    m_pAudioDevice = m_pFactory->CreateAudioDevice(m_bNullDevices ? 0 : 1);
    if (m_pAudioDevice && _ReadAudioScript(*m_pAudioDevice))
    {
        return;
    }
    _Trace("message Initialize audio fail.");
    GUtShowMessageBox("", "Initialize audio fail.");
    delete m_pAudioDevice;
    m_pAudioDevice = new Kestrin::Audio::CNullAudioDevice();
}

// ---------------------------------------------------------------------------------------
// 9 to 19: managers

void CEditorApp::_CreateManagers()
{
    _Trace("9 CTextureManager");
    m_pTextureManager = new CNullTextureManager(m_pRenderDevice);
    _Trace("10 CMaterialManager");
    m_pMaterialManager = new CNullMaterialManager();

    _Trace("11 effect folders");
    const std::string strRoot = m_strRootPath.ToStd();
    const std::string strMaterialTarget = strRoot + "material\\effect_material\\";
    const std::string strTextureTarget = strRoot + "tex\\effect_tex\\";
    m_pMaterialManager->AddRedirection(m_strCharacterFxPath.ToStd(), strMaterialTarget);
    m_pMaterialManager->AddRedirection(m_strSceneFxPath.ToStd(), strMaterialTarget);
    m_pTextureManager->AddRedirection(m_strCharacterFxPath.ToStd(), strTextureTarget);
    m_pTextureManager->AddRedirection(m_strSceneFxPath.ToStd(), strTextureTarget);
    m_pTextureManager->AddRedirection(strMaterialTarget, strTextureTarget);

    _Trace("12 CLodMeshManager");
    m_pLodMeshManager = new CNullResourceManager("CLodMeshManager");
    _Trace("13 CDynamicBufferManager");
    m_pDynamicBufferManager = new CNullResourceManager("CDynamicBufferManager");
    _Trace("14 CCollisionShapeManager");
    m_pCollisionShapeManager = new CNullResourceManager("CCollisionShapeManager");
    _Trace("15 CFxManager");
    m_pFxManager = new CNullFxManager();
    m_pFxManager->SetFolder(m_strCharacterFxPath.ToStd());
    _Trace("16 CResourceManager");
    m_pCharacterResourceManager = new CNullResourceManager("CResourceManager");
    _Trace("17 CFxCharacterManager");
    m_pFxCharacterManager = new Kestrin::Fx::CNullFxCharacterManager();
    _Trace("18 CSceneManager");
    m_pSceneManager = new CSceneManager();

    _Trace("19 shader folder and %s", SHADER_CACHE);
    m_pShaderCompiler = new CNullShaderCompiler();
    m_pShaderCompiler->SetFolder(m_strShaderPath.ToStd());
    m_pShaderCompiler->LoadCache(SHADER_CACHE); // a missing cache: shaders are built on demand
}

// ---------------------------------------------------------------------------------------
// 20 to 28: plotters, font, renderer, preview, console, system output

void CEditorApp::_CreateRendering()
{
    _Trace("20 CPlotter3D CBufferedPlotter3D");
    m_pPlotter3D = new CNullPlotter3D();
    m_pPlotter3D->Initialize(m_pRenderDevice);
    m_pBufferedPlotter3D = new CNullPlotter3D();
    m_pBufferedPlotter3D->Initialize(m_pRenderDevice);

    _Trace("21 CTextureFont FontMingLiu15");
    m_pFont = new Kestrin::Plotter::CTextureFont();
    m_pFont->Initialize("FontMingLiu15");

    _Trace("22 CPlotter2D");
    m_pPlotter2D = new Kestrin::Plotter::CPlotter2D();
    m_pPlotter2D->Initialize(m_pRenderDevice);
    m_pPlotter2D->SetViewport(0, 0, m_iClientW, m_iClientH);
    m_pPlotter2D->SetFont(m_pFont);
    m_pPlotter2D->SetFontHeight(15.0f);

    _Trace("23 shader model");
    RD::SDeviceCaps caps;
    m_pRenderDevice->GetCaps(caps);
    m_pShaderCompiler->SetShaderModel(
        static_cast<int>(std::min(caps.uVertexShaderVersion, caps.uPixelShaderVersion)));

    _Trace("24 CRenderer");
    m_pRenderer = new CNullRenderer();
    m_pRenderer->SetRenderMode(1);
    m_pRenderer->ApplySettings();
    m_pRenderer->ClearStartupFlag();

    _Trace("25 material preview");
    m_pMaterialPreview = new CNullMaterialPreview();
    m_pMaterialPreview->LoadShapes(*m_pLodMeshManager); // a failed shape leaves it empty
    m_pShaderCompiler->SetShaderModel(3);

    _Trace("26 CAppConsoleCallback CConsole");
    m_pConsoleCallback = new CAppConsoleCallback(this);
    m_pConsole = new Kestrin::Ext::CConsole();
    m_pConsole->SetCallback(m_pConsoleCallback);

    _Trace("27 material error callback");
    m_pMaterialManager->SetErrorCallback(&ShowMaterialError);

    _Trace("28 CAppSystemOutput");
    m_pSystemOutput = new CAppSystemOutput(this);
    Kestrin::Utility::SetSystemOutput(m_pSystemOutput);
}

// ---------------------------------------------------------------------------------------
// 29 to 31: physics, loader, render thread

bool CEditorApp::_CreateServices()
{
    _Trace("29 CPhysicsSdk");
    m_pPhysicsSdk = m_pFactory->CreatePhysicsSdk();
    if (!m_pPhysicsSdk || !m_pPhysicsSdk->Initialize())
    {
        _Trace("message Please install PhysX.");
        GUtShowMessageBox("", "Please install PhysX.");
        return false;
    }
    _Trace("30 CAsyncLoader");
    _CreateLoader();
    _Trace("31 CAppThreadRenderer");
    m_pThreadRenderer = new CAppThreadRenderer(this, m_pRenderDevice);
    m_pThreadRenderer->Start();
    return true;
}

// ---------------------------------------------------------------------------------------
// 32: the editors

void CEditorApp::_CreateEditors(CEditorConfig& config)
{
    _Trace("32 CEditorManager and editors");
    m_pEditorManager = new CEditorManager(this);
    m_pMaterialEditor = new CMaterialEditor(m_pEditorManager, config);
    m_pSceneEditor = new CSceneEditor(m_pEditorManager, config);
    m_pFxEditor = new CFxEditor(m_pEditorManager, config);
    m_pCharacterEditor = new CCharacterEditor(m_pEditorManager, config);
}

// ---------------------------------------------------------------------------------------
// 33 to 36: the world

void CEditorApp::_CreateWorld()
{
    _Trace("33 CRenderWorld CPhysicsWorld CPhysicsWorld");
    m_pRenderWorld = new Kestrin::Ext::CNullRenderWorld();
    m_pRenderWorld->InitGrid({-20000.0f, -20000.0f, 0.0f}, {21000.0f, 21000.0f, 0.0f},
                             {1000.0f, 1000.0f, 0.0f});
    for (Kestrin::Physics::CPhysicsWorld*& pWorld : m_apPhysicsWorlds)
    {
        pWorld = new Kestrin::Physics::CNullPhysicsWorld();
        pWorld->Initialize(m_pPhysicsSdk);
    }

    _Trace("34 CFxPlayer");
    m_pFxPlayer = new Kestrin::Fx::CNullFxPlayer();
    m_pFxPlayer->Initialize(m_pRenderWorld, m_apPhysicsWorlds[0], m_pAudioDevice);
    m_pFxPlayer->SetUpdateGroupCount(4);
    if (m_pTextureManager)
    {
        RD::STextureDesc desc;
        desc.iWidth = 1024;
        desc.iHeight = 1024;
        desc.uUsage = 1;
        m_uUiEffectTexture = m_pTextureManager->CreateTexture(desc, "uieffect");
        m_pFxEditor->SetPreviewTexture(m_uUiEffectTexture);
    }

    _Trace("35 CScene CScene");
    for (CScene*& pScene : m_apScenes)
    {
        pScene = new CScene();
        pScene->SetServices(m_pRenderWorld, m_apPhysicsWorlds[0], m_pAudioDevice, m_pFxPlayer,
                            m_pFxCharacterManager, false);
        // No texture manager while textures cannot be read: the lightmap tables then keep
        // their maps by name, and a save writes them back whole.
        pScene->SetPaths(m_strSceneFxPath.ToStd(), m_strSceneCharacterPath.ToStd(),
                         m_strSceneModelPath.ToStd());
    }
    // The game layer's scenes take the same engine.
    m_pSceneManager->SetServices(m_pRenderWorld, m_apPhysicsWorlds[0], m_pAudioDevice, m_pFxPlayer,
                                 m_pFxCharacterManager, false);

    _Trace("36 CEditorCamera control state lens flare");
    m_pEditorCamera = new CEditorCamera();
    m_pEditorCamera->SetViewport(m_iClientW, m_iClientH);
    m_pControlState = new CControlState();
    m_pLensFlare = new CNullLensFlare(m_strSceneFxPath.ToStd());
}

} // namespace Ovrel
