#include "app/EditorManager.h"

#include "app/EditorApp.h"
#include "character_editor/CharacterEditor.h"
#include "fx_editor/FxEditor.h"
#include "material_editor/MaterialEditor.h"
#include "scene_editor/SceneEditor.h"

namespace Ovrel
{

bool CEditorManager::EditScene()
{
    CSceneEditor* pEditor = m_pApp->GetSceneEditor();
    if (!pEditor)
    {
        return false;
    }
    pEditor->Open(m_pApp->GetMainScene(), m_pApp->GetEditorCamera());
    pEditor->SetSecondaryScene(m_pApp->GetSecondaryScene());
    return true;
}

bool CEditorManager::EditMaterial(Kestrin::Ext::CBaseMaterial* pMaterial)
{
    CMaterialEditor* pEditor = m_pApp->GetMaterialEditor();
    return pEditor && pEditor->Open(pMaterial);
}

bool CEditorManager::EditFx(Kestrin::Fx::CFxResource* pFx)
{
    CFxEditor* pEditor = m_pApp->GetFxEditor();
    // The fx player is the fx Part's; until it exists the editor plays on none.
    return pEditor && pEditor->Open(pFx, nullptr);
}

bool CEditorManager::EditCharacter(Ovrel::CVestral* pCharacter)
{
    CCharacterEditor* pEditor = m_pApp->GetCharacterEditor();
    return pEditor && pEditor->Open(pCharacter, m_pApp->GetMainScene());
}

int CEditorManager::OnEntityRemoved(Ovrel::CSceneEntity* pEntity, const void* pEditor)
{
    if (!pEntity)
    {
        return 0;
    }
    CSceneEditor* pScene = m_pApp->GetSceneEditor();
    CCharacterEditor* pCharacter = m_pApp->GetCharacterEditor();
    CFxEditor* pFx = m_pApp->GetFxEditor();
    if (pScene && pScene != pEditor)
    {
        pScene->OnEntityRemoved(pEntity);
    }
    if (pCharacter && pCharacter != pEditor)
    {
        pCharacter->OnEntityRemoved(pEntity);
    }
    if (pFx && pFx != pEditor)
    {
        pFx->OnEntityRemoved(pEntity);
    }
    return 0;
}

bool CEditorManager::ExecuteCommand(const char* pcLine)
{
    return m_pApp->ExecuteConsoleLine(pcLine);
}

int CEditorManager::SelectEntity(Ovrel::CSceneEntity* pEntity)
{
    CSceneEditor* pEditor = m_pApp->GetSceneEditor();
    if (pEditor && pEditor->HasWindow())
    {
        pEditor->SetCurrentEntity(pEntity);
    }
    return 0;
}

Ovrel::CSceneEntity* CEditorManager::GetSelectedEntity()
{
    CSceneEditor* pEditor = m_pApp->GetSceneEditor();
    return pEditor ? pEditor->GetCurrentEntity() : nullptr;
}

} // namespace Ovrel
