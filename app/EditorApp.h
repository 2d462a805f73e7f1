// Ovrel::CEditorApp: the process. It owns every engine object, the four editors, the
// console's Lua state and the two scenes; creates them in one fixed order (Initialize), runs
// the frame loop (Run), and destroys them in a second fixed order (ShutDown). One global
// accessor, set by the constructor, reaches it from everywhere.
//
// Thread contract: everything runs on the main thread, except what the render thread draws
// through CAppThreadRenderer (DrawRenderBuffer, DrawPreviews) under the device lock.
#pragma once

#include "Utils/Utility/GUtString.h"
#include "app/FrameTiming.h"
#include "app/ProfileHistory.h"
#include "editor_common/EditorWindow.h"

#include <cstdint>
#include <functional>
#include <map>
#include <string>

struct CControlState;
class CEditorConfig;
class CSceneEditor;
class CMaterialEditor;
class CFxEditor;
class CCharacterEditor;

namespace Kestrin::RenderDevice
{
class IRenderDevice;
class IWindow;
} // namespace Kestrin::RenderDevice
namespace Kestrin::Plotter
{
class CPlotter2D;
class CTextureFont;
} // namespace Kestrin::Plotter
namespace Kestrin::Ext
{
class CConsole;
}
namespace Kestrin::Utility
{
class CAsyncLoader;
}
namespace Kestrin::Audio
{
class IAudio;
class IAudioDevice;
} // namespace Kestrin::Audio
namespace Kestrin::Physics
{
class CPhysicsSdk;
class CPhysicsWorld;
} // namespace Kestrin::Physics
namespace Kestrin::Fx
{
class CFxPlayer;
class IFxCharacterManager;
} // namespace Kestrin::Fx
namespace Kestrin::Ext
{
class CRenderWorld;
}
namespace GLib::Script
{
class CLuaScript;
}
class CEditorCamera;

namespace Ovrel
{

class CAppConsoleCallback;
class CAppSystemOutput;
class CAppThreadRenderer;
class CEditorAppFactory;
class CEditorManager;
class CInputDevice;
class IEditorAppTrace;
class CNullRenderer;
class CNullPlotter3D;
class CNullTextureManager;
class CNullMaterialManager;
class CNullResourceManager;
class CNullFxManager;
class CNullShaderCompiler;
class CScene;
class CSceneManager;
class CEnvironmentAnimator;
class CNullLensFlare;
class CNullMaterialPreview;
class CNullAnimator;

class CEditorApp
{
public:
    static constexpr const char* CONFIG_FILE = "Editor.cfg";
    static constexpr const char* SHADER_CACHE = "Shader.cache1";
    static constexpr const char* ENVIRONMENT_ANIMATION_FILE = "EnvironmentAnimation.lua";
    static constexpr int PUMP_LIMIT_MS = 30;
    static constexpr uint32_t OVERLAY_FPS = 1;
    static constexpr uint32_t OVERLAY_PROFILE = 2;
    static constexpr uint32_t OVERLAY_LIGHTS = 4;

    // Sets every default and the global accessor.
    CEditorApp();
    // Runs ShutDown.
    virtual ~CEditorApp();
    CEditorApp(const CEditorApp&) = delete;
    CEditorApp& operator=(const CEditorApp&) = delete;

    // The global accessor: the application constructed last and not yet destroyed, or null.
    static CEditorApp* Get();

    // -- Before Initialize
    // The null render and audio devices instead of the platform's (EDITOR_NULL_DEVICES=1).
    void SetNullDevices(bool bNull) { m_bNullDevices = bNull; }
    // Steers the creation of devices (not owned; null: the platform's factory).
    void SetFactory(CEditorAppFactory* pFactory);
    // Hears every step (not owned; null: none).
    void SetTrace(IEditorAppTrace* pTrace) { m_pTrace = pTrace; }
    // How the frame-rate limit sleeps (null: the thread sleeps); tests advance a clock instead.
    void SetSleepFunction(void (*pfnSleep)(int iMilliseconds)) { m_pfnSleep = pfnSleep; }
    // Runs at the end of every frame (the process's screenshot and test hooks).
    void SetFrameHook(std::function<void(CEditorApp&)> hook) { m_frameHook = std::move(hook); }

    // The start-up sequence. False after any failure, once ShutDown has run.
    bool Initialize(int iArgc, char** ppArgv);
    // The frame loop; returns when it ends.
    void Run();
    // Before the first frame: opens the Scene Editor on the main scene, starts the clock.
    void StartLoop();
    // One frame of the loop; false when the loop ends. Run calls it until then.
    bool RunFrame();
    // Destroys everything in the shut-down order; each step is skipped when its object is null.
    void ShutDown();
    void RequestQuit(int iExitCode);
    // Under the device lock: stores the client size and tells the camera, the 2D plotter and
    // the device.
    void Resize(int32_t iWidth, int32_t iHeight);

    // -- Accessors
    CScene* GetMainScene() const { return m_apScenes[0]; }
    CScene* GetSecondaryScene() const { return m_apScenes[1]; }
    CSceneManager* GetSceneManager() const { return m_pSceneManager; }
    CEditorCamera* GetEditorCamera() const { return m_pEditorCamera; }
    Kestrin::Ext::CConsole* GetConsole() const { return m_pConsole; }
    CEditorManager* GetEditorManager() const { return m_pEditorManager; }
    CEnvironmentAnimator* GetEnvironmentAnimator() const { return m_pEnvironmentAnimator; }
    CSceneEditor* GetSceneEditor() const { return m_pSceneEditor; }
    CMaterialEditor* GetMaterialEditor() const { return m_pMaterialEditor; }
    CFxEditor* GetFxEditor() const { return m_pFxEditor; }
    CCharacterEditor* GetCharacterEditor() const { return m_pCharacterEditor; }
    Kestrin::Fx::CFxPlayer* GetFxPlayer() const { return m_pFxPlayer; }
    CNullTextureManager* GetTextureManager() const { return m_pTextureManager; }
    Kestrin::Audio::IAudioDevice* GetAudioDevice() const { return m_pAudioDevice; }
    CNullAnimator* GetScriptedLightAnimator() const { return m_pScriptedLightAnimator; }
    Kestrin::RenderDevice::IRenderDevice* GetRenderDevice() const { return m_pRenderDevice; }
    Kestrin::RenderDevice::IWindow* GetWindow() const { return m_pWindow; }
    CAppThreadRenderer* GetThreadRenderer() const { return m_pThreadRenderer; }
    CNullRenderer* GetRenderer() const { return m_pRenderer; }
    CNullShaderCompiler* GetShaderCompiler() const { return m_pShaderCompiler; }
    const CControlState* GetControlState() const { return m_pControlState; }
    const SFrameTiming& GetTiming() const { return m_timing; }
    const CProfileHistory& GetProfileHistory() const { return m_profileHistory; }
    bool IsQuitRequested() const { return m_bQuitRequested; }
    int GetExitCode() const { return m_iExitCode; }
    int32_t GetClientWidth() const { return m_iClientW; }
    int32_t GetClientHeight() const { return m_iClientH; }
    float GetTimeScale() const { return m_fTimeScale; }
    float GetFpsLimit() const { return m_fFpsLimit; }
    bool GetSmoothTimer() const { return m_bSmoothTimer; }
    float GetLodFactor() const { return m_fLodFactor; }
    uint32_t GetOverlayFlags() const { return m_uOverlayFlags; }
    void SetOverlayFlag(uint32_t uFlag, bool bOn);
    uint32_t GetVisibleGroupsLow() const { return m_auVisibleGroups[0]; }
    uint32_t GetVisibleGroupsHigh() const { return m_auVisibleGroups[1]; }
    const GUtString& GetShaderPath() const { return m_strShaderPath; }
    const GUtString& GetScriptPath() const { return m_strScriptPath; }
    const GUtString& GetTablePath() const { return m_strTablePath; }
    const GUtString& GetSceneFxPath() const { return m_strSceneFxPath; }
    int GetFrameNumber() const { return m_iFrame; }
    bool IsAppActive() const { return m_bAppActive; }

    // -- Setters of the console
    void SetTimeScale(float fScale) { m_fTimeScale = fScale; }
    void SetFpsLimit(float fLimit) { m_fFpsLimit = fLimit; }
    void SetSmoothTimer(bool bSmooth) { m_bSmoothTimer = bSmooth; }
    void SetCharacterLod(int iLod);
    void SetFxLod(int iLod);
    void SetLodFactor(float fFactor) { m_fLodFactor = fFactor; }
    void SetVisibleGroups(uint32_t uLow, uint32_t uHigh);
    void SetRenderThreaded(bool bThreaded);
    // The console's sound: set to the cue, placed when bPlaced, played. False: no sound.
    bool PlayConsoleSound(const char* pcCue, bool bPlaced, float fX, float fY, float fZ);

    // -- The console's line handler (also IEditorManager::ExecuteCommand): under the device
    // lock, the renderer's settings first, then Lua. False when nothing took the line.
    bool ExecuteConsoleLine(const char* pcLine);
    // Lines given to the process to run after start-up: "@<frame> <line>" entries, each run
    // in the world update of that frame (see EDITOR_CONSOLE_LINES in the README).
    void SetStartupLines(const char* pcSpec);
    const std::multimap<int32_t, std::string>& GetStartupLines() const { return m_startupLines; }

    // -- Window messages: the callback of the device's window.
    int64_t OnWindowMessage(uint32_t uMessage, uint64_t wParam, int64_t lParam, bool& bHandled);

    // -- The frame's parts, run by CAppThreadRenderer.
    void BuildRenderBuffer();
    void SwapRenderBuffer();
    void DrawRenderBuffer();
    void DrawOverlay();
    void SwapDeviceBuffers();
    void OnDeviceReset();
    void DrawPreviews();
    void PostBuild();

private:
    // Initialize, in the order of its steps (EditorApp_Init.cpp).
    void _Trace(const char* pcFormat, ...) __attribute__((format(printf, 2, 3)));
    void _ReadConfig(CEditorConfig& config);
    bool _CreateDevice();
    void _SetUpWindow();
    void _InitializeAudio();
    bool _ReadAudioScript(Kestrin::Audio::IAudioDevice& device);
    void _CreateManagers();
    void _CreateRendering();
    bool _CreateServices();
    void _CreateEditors(CEditorConfig& config);
    void _CreateWorld();
    void _CreateScripting();
    void _LoadGameTables();
    // "EnvironmentAnimation.lua" from the script folder, when it is there.
    void _LoadEnvironmentAnimations();
    void _CreateLoader();
    // Destroy what the helpers above made; true when there was something.
    void _DestroyScript();
    bool _DestroyLoader();
    bool _Fail();

    // ShutDown's groups (EditorApp_ShutDown.cpp).
    void _SaveAndDestroyEditors();
    void _DestroyWorld();
    void _DestroyRendering();
    void _DestroyManagers();

    // The frame (EditorApp_Frame.cpp).
    void _UpdateInput(float fScaled);
    void _UpdateWorld(float fScaled);
    void _RunStartupLines();
    void _LimitFrameRate(double dFrameStartMs);
    void _RecordProfile();

    // Console (EditorApp_Console.cpp).
    bool _RunLua(const char* pcLine);

    static int64_t _WindowProc(void* pUser, uint32_t uMessage, uint64_t wParam, int64_t lParam,
                               bool& bHandled);

    // Members in the order of the design.
    Kestrin::RenderDevice::IRenderDevice* m_pRenderDevice = nullptr;
    Kestrin::Audio::IAudioDevice* m_pAudioDevice = nullptr;
    CNullRenderer* m_pRenderer = nullptr;
    CNullPlotter3D* m_pPlotter3D = nullptr;
    CNullPlotter3D* m_pBufferedPlotter3D = nullptr;
    Kestrin::Plotter::CPlotter2D* m_pPlotter2D = nullptr;
    Kestrin::Plotter::CTextureFont* m_pFont = nullptr;
    Kestrin::Utility::CAsyncLoader* m_pAsyncLoader = nullptr;
    Kestrin::Physics::CPhysicsSdk* m_pPhysicsSdk = nullptr;
    CNullTextureManager* m_pTextureManager = nullptr;
    CNullMaterialManager* m_pMaterialManager = nullptr;
    CNullResourceManager* m_pLodMeshManager = nullptr;
    CNullResourceManager* m_pDynamicBufferManager = nullptr;
    CNullResourceManager* m_pCollisionShapeManager = nullptr;
    CNullFxManager* m_pFxManager = nullptr;
    CNullResourceManager* m_pCharacterResourceManager = nullptr;
    Kestrin::Fx::IFxCharacterManager* m_pFxCharacterManager = nullptr;
    CSceneManager* m_pSceneManager = nullptr;
    Kestrin::Ext::CConsole* m_pConsole = nullptr;
    CAppConsoleCallback* m_pConsoleCallback = nullptr;
    CAppSystemOutput* m_pSystemOutput = nullptr;
    CAppThreadRenderer* m_pThreadRenderer = nullptr;
    GLib::Script::CLuaScript* m_pLuaScript = nullptr;
    CMaterialEditor* m_pMaterialEditor = nullptr;
    CSceneEditor* m_pSceneEditor = nullptr;
    CFxEditor* m_pFxEditor = nullptr;
    CCharacterEditor* m_pCharacterEditor = nullptr;
    CEditorManager* m_pEditorManager = nullptr;
    Kestrin::Ext::CRenderWorld* m_pRenderWorld = nullptr;
    Kestrin::Physics::CPhysicsWorld* m_apPhysicsWorlds[2] = {nullptr, nullptr};
    Kestrin::Fx::CFxPlayer* m_pFxPlayer = nullptr;
    CScene* m_apScenes[2] = {nullptr, nullptr};
    CEditorCamera* m_pEditorCamera = nullptr;
    CEnvironmentAnimator* m_pEnvironmentAnimator = nullptr;
    CNullAnimator* m_pScriptedLightAnimator = nullptr;
    CInputDevice* m_pInputDevice = nullptr;
    CControlState* m_pControlState = nullptr;
    int32_t m_iWindowX = 30;
    int32_t m_iWindowY = 40;
    int32_t m_iWindowW = 640;
    int32_t m_iWindowH = 480;
    GUtString m_strShaderPath;
    GUtString m_strAudioPath;
    GUtString m_strCharacterFxPath;
    GUtString m_strSceneFxPath;
    GUtString m_strSceneCharacterPath;
    GUtString m_strSceneModelPath;
    GUtString m_strScriptPath;
    GUtString m_strTablePath;
    GUtString m_strRootPath;
    Kestrin::RenderDevice::IWindow* m_pWindow = nullptr; // not owned
    int32_t m_iClientW = 640;
    int32_t m_iClientH = 480;
    bool m_bQuitRequested = false;
    bool m_bShowCursor = false;
    int32_t m_iExitCode = 0;
    bool m_bAppActive = true;
    SFrameTiming m_timing; // lastTimeMs, fpsMarkMs, framesSinceMark, frameTimes, gameTime, measuredFps
    float m_fTimeScale = 1.0f;
    float m_fFpsLimit = 0.0f;
    bool m_bSmoothTimer = false;
    float m_fLodFactor = 1.0f;
    uint32_t m_uOverlayFlags = OVERLAY_FPS;
    uint32_t m_auVisibleGroups[2] = {0xFFFFFFFFu, 0xFFFFFFFFu};
    uint32_t m_auCubemapFaces[6] = {};
    uint32_t m_uUiEffectTexture = 0;
    CNullLensFlare* m_pLensFlare = nullptr;
    CProfileHistory m_profileHistory;
    std::map<std::string, uint32_t> m_windowSwapChains;
    CNullMaterialPreview* m_pMaterialPreview = nullptr;

    // The process's own additions.
    CNullShaderCompiler* m_pShaderCompiler = nullptr;
    bool m_bNullDevices = false;
    CEditorAppFactory* m_pFactory = nullptr;
    CEditorAppFactory* m_pOwnFactory = nullptr;
    IEditorAppTrace* m_pTrace = nullptr;
    bool m_bShutDown = false;
    int32_t m_iFrame = 0;
    std::multimap<int32_t, std::string> m_startupLines;
    Kestrin::Audio::IAudio* m_pConsoleSound = nullptr; // the console's one sound, made on first use
    int32_t m_iMouseDownX = 0;                         // the last left-button press, in client pixels
    int32_t m_iMouseDownY = 0;
    void (*m_pfnSleep)(int iMilliseconds) = nullptr;
    std::function<void(CEditorApp&)> m_frameHook;
};

} // namespace Ovrel
