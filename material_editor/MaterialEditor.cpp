#include "material_editor/MaterialEditor.h"

#include "editor_common/EditorConfig.h"

CMaterialEditor::CMaterialEditor(IEditorManager* pManager, CEditorConfig& config) : m_pManager(pManager)
{
    config.EnterSection(SECTION);
    ReadToolWindowPlace(config, "Window", m_rect, &m_bWindowTop);
    config.LeaveSection();
}

CMaterialEditor::~CMaterialEditor()
{
    Close();
}

bool CMaterialEditor::Open(Kestrin::Ext::CBaseMaterial* pMaterial)
{
    OpenToolWindow(m_pWindow, TITLE, m_rect, m_bWindowTop);
    m_pMaterial = pMaterial;
    return true;
}

void CMaterialEditor::Close()
{
    CloseToolWindow(m_pWindow, m_rect);
}

void CMaterialEditor::SaveConfig(CEditorConfig& config)
{
    RememberToolWindowRect(m_pWindow, m_rect);
    config.CreateSection(SECTION);
    WriteToolWindowPlace(config, "Window", m_rect, &m_bWindowTop);
    config.LeaveSection();
}
