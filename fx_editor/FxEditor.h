// CFxEditor: the logic object of the Fx Editor. It keeps two window places (the editor and
// its time line) in the section "FxEditor" of Editor.cfg, makes its window on the first Open,
// and is ticked every frame so that the open effect plays in the shared world.
#pragma once

#include "editor_common/EditorWindow.h"

#include <cstdint>

class CEditorConfig;
class IEditorManager;
namespace Ovrel
{
class CSceneEntity;
}
namespace Kestrin::Fx
{
class CFxResource;
class CFxPlayer;
} // namespace Kestrin::Fx

class CFxEditor
{
public:
    static constexpr const char* SECTION = "FxEditor";
    static constexpr const char* TITLE = "Fx Editor";
    static constexpr SEditorRect DEFAULT_RECT{680, 40, 400, 600};
    static constexpr SEditorRect DEFAULT_TIME_RECT{30, 530, 640, 200};

    // Reads the section "FxEditor" from the config (entering and leaving it once).
    CFxEditor(IEditorManager* pManager, CEditorConfig& config);
    virtual ~CFxEditor();
    CFxEditor(const CFxEditor&) = delete;
    CFxEditor& operator=(const CFxEditor&) = delete;

    // Makes the window if it is absent, sets the fx player and opens the effect (null: none).
    bool Open(Kestrin::Fx::CFxResource* pFx, Kestrin::Fx::CFxPlayer* pPlayer);
    void Close();
    void SaveConfig(CEditorConfig& config);
    // Advances the open effect's time by the frame's scaled step while it plays.
    void Tick(float fTimeStep);
    // Another editor removed an entity of the shared scene.
    void OnEntityRemoved(Ovrel::CSceneEntity* pEntity) { m_pLastRemoved = pEntity; }
    Ovrel::CSceneEntity* GetLastRemovedEntity() const { return m_pLastRemoved; }
    // The texture the editor previews into (a device handle, 0 none).
    void SetPreviewTexture(uint32_t uTexture) { m_uPreviewTexture = uTexture; }

    bool HasWindow() const { return m_pWindow && m_pWindow->IsOpen(); }
    Kestrin::Fx::CFxResource* GetFx() const { return m_pFx; }
    Kestrin::Fx::CFxPlayer* GetPlayer() const { return m_pPlayer; }
    uint32_t GetPreviewTexture() const { return m_uPreviewTexture; }
    float GetTime() const { return m_fTime; }
    const SEditorRect& GetWindowRect() const { return m_rect; }
    const SEditorRect& GetTimeWindowRect() const { return m_timeRect; }
    bool IsWindowTop() const { return m_bWindowTop; }
    IEditorManager* GetManager() const { return m_pManager; }

private:
    IEditorWindow* m_pWindow = nullptr;
    SEditorRect m_rect = DEFAULT_RECT;
    bool m_bWindowTop = false;
    IEditorManager* m_pManager;
    SEditorRect m_timeRect = DEFAULT_TIME_RECT;
    Kestrin::Fx::CFxResource* m_pFx = nullptr;
    Kestrin::Fx::CFxPlayer* m_pPlayer = nullptr;
    uint32_t m_uPreviewTexture = 0;
    float m_fTime = 0.0f;
    Ovrel::CSceneEntity* m_pLastRemoved = nullptr;
};
