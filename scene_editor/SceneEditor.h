// CSceneEditor: the logic object of the first editor, the one the editor manager knows. It
// lives from start-up to shut-down, keeps its tool window's place and the data folders in
// the section "SceneEditor" of Editor.cfg, and makes its window on the first Open.
#pragma once

#include "Utils/Utility/GUtString.h"
#include "editor_common/EditorWindow.h"

#include <cstdint>

class CEditorConfig;
class CEditorCamera;
class IEditorManager;
namespace GLib::Script
{
class CLuaScript;
}
namespace Ovrel
{
class CScene;
class CSceneEntity;
} // namespace Ovrel

// The data folders of the section "SceneEditor". The application reads its own copy; only
// the Scene Editor's copy is written back, so a folder changed in its option dialog takes
// effect at the next start.
struct SSceneEditorPaths
{
    static constexpr const char* DEFAULT_SHADER_PATH = "..\\shader\\";

    GUtString strShaderPath = DEFAULT_SHADER_PATH; // "ShaderPath": shader sources; empty becomes the default
    GUtString strAudioPath;                        // "AudioPath": folder of "audio.lua" and the banks
    GUtString strCharacterFxPath;                  // "CharacterFxPath": effects of characters
    GUtString strSceneFxPath;                      // "SceneFxPath": effects of scenes
    GUtString strSceneCharacterPath;               // "SceneCharacterPath": characters placed in scenes
    GUtString strSceneModelPath;                   // "SceneModelPath": models placed in scenes
    GUtString strScriptPath;                       // "ScriptPath": Lua tables
    GUtString strTablePath;                        // "TablePath": XML tables
    GUtString strRootPath;                         // "RootPath": data root

    // Reads the keys under the config's cursor; missing keys keep their values.
    void Read(const CEditorConfig& config);
    // Writes the keys in the order of the section.
    void Write(CEditorConfig& config) const;
};

class CSceneEditor
{
public:
    static constexpr const char* SECTION = "SceneEditor";
    static constexpr const char* TITLE = "Scene Editor";
    static constexpr SEditorRect DEFAULT_RECT{680, 40, 320, 600};

    // Reads the section "SceneEditor" from the config (entering and leaving it once).
    CSceneEditor(IEditorManager* pManager, CEditorConfig& config);
    virtual ~CSceneEditor();
    CSceneEditor(const CSceneEditor&) = delete;
    CSceneEditor& operator=(const CSceneEditor&) = delete;

    // Makes the window if it doesn't exist, then shows the scene with the camera in it.
    bool Open(Ovrel::CScene* pScene, CEditorCamera* pCamera);
    // A second scene shown but not edited (null: none).
    void SetSecondaryScene(Ovrel::CScene* pScene) { m_pSecondaryScene = pScene; }
    // The console's Lua state, handed to the window when it is made (not owned).
    void SetScript(GLib::Script::CLuaScript* pScript) { m_pScript = pScript; }
    // Sends the window a close message and forgets it; the editor stays.
    void Close();
    // Writes the section "SceneEditor" (window place, folders, display settings).
    void SaveConfig(CEditorConfig& config);

    // True while the window exists and was not closed by the user.
    bool HasWindow() const;
    // The entity the window works on; null without a window.
    Ovrel::CSceneEntity* GetCurrentEntity() const { return HasWindow() ? m_pCurrentEntity : nullptr; }
    // Makes the entity the current one; ignored without a window.
    void SetCurrentEntity(Ovrel::CSceneEntity* pEntity);
    // Forgets an entity that another editor removed.
    void OnEntityRemoved(Ovrel::CSceneEntity* pEntity);

    // The editor sees the main window's messages before the application. Sets bHandled when
    // it took the message. Without a window it takes none.
    int64_t OnWindowMessage(uint32_t uMessage, uint64_t wParam, int64_t lParam, bool& bHandled);

    const SSceneEditorPaths& GetPaths() const { return m_paths; }
    SSceneEditorPaths& GetPaths() { return m_paths; }
    const SEditorRect& GetWindowRect() const { return m_rect; }
    bool IsWindowTop() const { return m_bWindowTop; }
    bool GetAdjustLumLight() const { return m_bAdjustLumLight; }
    Ovrel::CScene* GetScene() const { return m_pScene; }
    Ovrel::CScene* GetSecondaryScene() const { return m_pSecondaryScene; }
    CEditorCamera* GetCamera() const { return m_pCamera; }
    GLib::Script::CLuaScript* GetScript() const { return m_pScript; }
    IEditorManager* GetManager() const { return m_pManager; }

private:
    IEditorWindow* m_pWindow = nullptr;
    SEditorRect m_rect = DEFAULT_RECT;
    bool m_bWindowTop = false;
    IEditorManager* m_pManager;
    SSceneEditorPaths m_paths;
    bool m_bAdjustLumLight = false; // "LumLight"
    Ovrel::CScene* m_pScene = nullptr;
    Ovrel::CScene* m_pSecondaryScene = nullptr;
    CEditorCamera* m_pCamera = nullptr;
    GLib::Script::CLuaScript* m_pScript = nullptr;
    Ovrel::CSceneEntity* m_pCurrentEntity = nullptr;
};
