#include "fx_editor/FxEditor.h"

#include "editor_common/EditorConfig.h"

CFxEditor::CFxEditor(IEditorManager* pManager, CEditorConfig& config) : m_pManager(pManager)
{
    config.EnterSection(SECTION);
    ReadToolWindowPlace(config, "Window", m_rect, &m_bWindowTop);
    ReadToolWindowPlace(config, "TimeWindow", m_timeRect, nullptr);
    config.LeaveSection();
}

CFxEditor::~CFxEditor()
{
    Close();
}

bool CFxEditor::Open(Kestrin::Fx::CFxResource* pFx, Kestrin::Fx::CFxPlayer* pPlayer)
{
    OpenToolWindow(m_pWindow, TITLE, m_rect, m_bWindowTop);
    m_pPlayer = pPlayer;
    m_pFx = pFx;
    m_fTime = 0.0f;
    return true;
}

void CFxEditor::Close()
{
    CloseToolWindow(m_pWindow, m_rect);
}

void CFxEditor::SaveConfig(CEditorConfig& config)
{
    RememberToolWindowRect(m_pWindow, m_rect);
    config.CreateSection(SECTION);
    WriteToolWindowPlace(config, "Window", m_rect, &m_bWindowTop);
    WriteToolWindowPlace(config, "TimeWindow", m_timeRect, nullptr);
    config.LeaveSection();
}

void CFxEditor::Tick(float fTimeStep)
{
    if (m_pFx && HasWindow())
    {
        m_fTime += fTimeStep;
    }
}
