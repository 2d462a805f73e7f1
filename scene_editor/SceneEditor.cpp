#include "scene_editor/SceneEditor.h"

#include "editor_common/EditorConfig.h"

void SSceneEditorPaths::Read(const CEditorConfig& config)
{
    config.ReadString("ShaderPath", strShaderPath);
    if (strShaderPath.IsEmpty())
    {
        strShaderPath = DEFAULT_SHADER_PATH;
    }
    config.ReadString("AudioPath", strAudioPath);
    config.ReadString("CharacterFxPath", strCharacterFxPath);
    config.ReadString("SceneFxPath", strSceneFxPath);
    config.ReadString("SceneCharacterPath", strSceneCharacterPath);
    config.ReadString("SceneModelPath", strSceneModelPath);
    config.ReadString("ScriptPath", strScriptPath);
    config.ReadString("TablePath", strTablePath);
    config.ReadString("RootPath", strRootPath);
}

void SSceneEditorPaths::Write(CEditorConfig& config) const
{
    config.WriteString("ShaderPath", strShaderPath);
    config.WriteString("AudioPath", strAudioPath);
    config.WriteString("CharacterFxPath", strCharacterFxPath);
    config.WriteString("SceneFxPath", strSceneFxPath);
    config.WriteString("SceneCharacterPath", strSceneCharacterPath);
    config.WriteString("SceneModelPath", strSceneModelPath);
    config.WriteString("ScriptPath", strScriptPath);
    config.WriteString("TablePath", strTablePath);
    config.WriteString("RootPath", strRootPath);
}

CSceneEditor::CSceneEditor(IEditorManager* pManager, CEditorConfig& config) : m_pManager(pManager)
{
    config.EnterSection(SECTION);
    ReadToolWindowPlace(config, "Window", m_rect, &m_bWindowTop);
    m_paths.Read(config);
    config.ReadBool("LumLight", m_bAdjustLumLight);
    config.LeaveSection();
}

CSceneEditor::~CSceneEditor()
{
    Close();
}

bool CSceneEditor::Open(Ovrel::CScene* pScene, CEditorCamera* pCamera)
{
    OpenToolWindow(m_pWindow, TITLE, m_rect, m_bWindowTop);
    m_pScene = pScene;
    m_pCamera = pCamera;
    return true;
}

void CSceneEditor::Close()
{
    CloseToolWindow(m_pWindow, m_rect);
    m_pCurrentEntity = nullptr;
}

void CSceneEditor::SaveConfig(CEditorConfig& config)
{
    RememberToolWindowRect(m_pWindow, m_rect);
    config.CreateSection(SECTION);
    WriteToolWindowPlace(config, "Window", m_rect, &m_bWindowTop);
    m_paths.Write(config);
    config.WriteBool("LumLight", m_bAdjustLumLight);
    config.LeaveSection();
}

bool CSceneEditor::HasWindow() const
{
    return m_pWindow && m_pWindow->IsOpen();
}

void CSceneEditor::SetCurrentEntity(Ovrel::CSceneEntity* pEntity)
{
    if (HasWindow())
    {
        m_pCurrentEntity = pEntity;
    }
}

void CSceneEditor::OnEntityRemoved(Ovrel::CSceneEntity* pEntity)
{
    if (pEntity && pEntity == m_pCurrentEntity)
    {
        m_pCurrentEntity = nullptr;
    }
}

int64_t CSceneEditor::OnWindowMessage(uint32_t uMessage, uint64_t wParam, int64_t lParam, bool& bHandled)
{
    // The window's mouse, key and drop handling works on its selection and tools; until the
    // window exists the application handles every message.
    (void)uMessage;
    (void)wParam;
    (void)lParam;
    bHandled = false;
    return 0;
}
