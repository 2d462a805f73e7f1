#include "character_editor/CharacterEditor.h"

#include "editor_common/EditorConfig.h"

CCharacterEditor::CCharacterEditor(IEditorManager* pManager, CEditorConfig& config) : m_pManager(pManager)
{
    config.EnterSection(SECTION);
    ReadToolWindowPlace(config, "Window", m_rect, &m_bWindowTop);
    config.LeaveSection();
}

CCharacterEditor::~CCharacterEditor()
{
    Close();
}

bool CCharacterEditor::Open(Ovrel::CVestral* pCharacter, Ovrel::CScene* pScene)
{
    OpenToolWindow(m_pWindow, TITLE, m_rect, m_bWindowTop);
    m_pScene = pScene;
    m_pCharacter = pCharacter;
    return true;
}

void CCharacterEditor::Close()
{
    CloseToolWindow(m_pWindow, m_rect);
}

void CCharacterEditor::SaveConfig(CEditorConfig& config)
{
    RememberToolWindowRect(m_pWindow, m_rect);
    config.CreateSection(SECTION);
    WriteToolWindowPlace(config, "Window", m_rect, &m_bWindowTop);
    config.LeaveSection();
}

void CCharacterEditor::OnEntityRemoved(Ovrel::CSceneEntity* pEntity)
{
    // Remembered so that the window, once it shows entities of the shared scene, drops its
    // references to this one before it draws again.
    m_pLastRemoved = pEntity;
}
