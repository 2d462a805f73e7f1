// Ovrel::CEditorManager: the application's editor manager. It forwards each request of one
// editor to another editor or to the application, so that no editor points at another.
#pragma once

#include "editor_common/EditorManager.h"

namespace Ovrel
{

class CEditorApp;

class CEditorManager final : public IEditorManager
{
public:
    explicit CEditorManager(CEditorApp* pApp) : m_pApp(pApp) {}

    bool EditScene() override;
    bool EditMaterial(Kestrin::Ext::CBaseMaterial* pMaterial) override;
    bool EditFx(Kestrin::Fx::CFxResource* pFx) override;
    bool EditCharacter(Ovrel::CVestral* pCharacter) override;
    int OnEntityRemoved(Ovrel::CSceneEntity* pEntity, const void* pEditor) override;
    bool ExecuteCommand(const char* pcLine) override;
    int SelectEntity(Ovrel::CSceneEntity* pEntity) override;
    Ovrel::CSceneEntity* GetSelectedEntity() override;

private:
    CEditorApp* m_pApp; // not owned
};

} // namespace Ovrel
