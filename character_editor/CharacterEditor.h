// CCharacterEditor: the logic object of the Character Editor. It keeps its tool window's
// place (default 670, 40, 350, 650) in the section "CharacterEditor" of Editor.cfg and makes
// its window on the first Open.
#pragma once

#include "editor_common/EditorWindow.h"

class CEditorConfig;
class IEditorManager;
namespace Ovrel
{
class CScene;
class CSceneEntity;
class CVestral;
} // namespace Ovrel

class CCharacterEditor
{
public:
    static constexpr const char* SECTION = "CharacterEditor";
    static constexpr const char* TITLE = "Character Editor";
    static constexpr SEditorRect DEFAULT_RECT{670, 40, 350, 650};

    // Reads the section "CharacterEditor" from the config (entering and leaving it once).
    CCharacterEditor(IEditorManager* pManager, CEditorConfig& config);
    virtual ~CCharacterEditor();
    CCharacterEditor(const CCharacterEditor&) = delete;
    CCharacterEditor& operator=(const CCharacterEditor&) = delete;

    // Makes the window if it is absent, gives it the scene and opens the character (null:
    // none).
    bool Open(Ovrel::CVestral* pCharacter, Ovrel::CScene* pScene);
    void Close();
    void SaveConfig(CEditorConfig& config);
    // Another editor removed an entity of the shared scene.
    void OnEntityRemoved(Ovrel::CSceneEntity* pEntity);
    Ovrel::CSceneEntity* GetLastRemovedEntity() const { return m_pLastRemoved; }

    bool HasWindow() const { return m_pWindow && m_pWindow->IsOpen(); }
    Ovrel::CVestral* GetCharacter() const { return m_pCharacter; }
    Ovrel::CScene* GetScene() const { return m_pScene; }
    const SEditorRect& GetWindowRect() const { return m_rect; }
    bool IsWindowTop() const { return m_bWindowTop; }
    IEditorManager* GetManager() const { return m_pManager; }

private:
    IEditorWindow* m_pWindow = nullptr;
    SEditorRect m_rect = DEFAULT_RECT;
    bool m_bWindowTop = false;
    IEditorManager* m_pManager;
    Ovrel::CVestral* m_pCharacter = nullptr;
    Ovrel::CScene* m_pScene = nullptr;
    Ovrel::CSceneEntity* m_pLastRemoved = nullptr;
};
