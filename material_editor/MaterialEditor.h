// CMaterialEditor: the logic object of the Material Editor. It keeps its tool window's place
// in the section "MaterialEditor" of Editor.cfg and makes its window on the first Open.
#pragma once

#include "editor_common/EditorWindow.h"

class CEditorConfig;
class IEditorManager;
namespace Kestrin::Ext
{
class CBaseMaterial;
}

class CMaterialEditor
{
public:
    static constexpr const char* SECTION = "MaterialEditor";
    static constexpr const char* TITLE = "Material Editor";
    static constexpr SEditorRect DEFAULT_RECT{680, 40, 400, 600};

    // Reads the section "MaterialEditor" from the config (entering and leaving it once).
    CMaterialEditor(IEditorManager* pManager, CEditorConfig& config);
    virtual ~CMaterialEditor();
    CMaterialEditor(const CMaterialEditor&) = delete;
    CMaterialEditor& operator=(const CMaterialEditor&) = delete;

    // Makes the window if it is absent and opens the material (null: none).
    bool Open(Kestrin::Ext::CBaseMaterial* pMaterial);
    void Close();
    void SaveConfig(CEditorConfig& config);

    bool HasWindow() const { return m_pWindow && m_pWindow->IsOpen(); }
    Kestrin::Ext::CBaseMaterial* GetMaterial() const { return m_pMaterial; }
    const SEditorRect& GetWindowRect() const { return m_rect; }
    bool IsWindowTop() const { return m_bWindowTop; }
    IEditorManager* GetManager() const { return m_pManager; }

private:
    IEditorWindow* m_pWindow = nullptr;
    SEditorRect m_rect = DEFAULT_RECT;
    bool m_bWindowTop = false;
    IEditorManager* m_pManager;
    Kestrin::Ext::CBaseMaterial* m_pMaterial = nullptr;
};
