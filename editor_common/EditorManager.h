// IEditorManager: the one way an editor reaches another editor or the application, so that
// no editor holds a pointer to another. The application's manager (Ovrel::CEditorManager)
// forwards to the four editors; this base does nothing and returns 0 everywhere.
#pragma once

namespace Kestrin::Ext
{
class CBaseMaterial;
}
namespace Kestrin::Fx
{
class CFxResource;
}
namespace Ovrel
{
class CSceneEntity;
class CVestral;
} // namespace Ovrel

class IEditorManager
{
public:
    virtual ~IEditorManager() = default;

    // Opens the Scene Editor on the edited scene, with the secondary scene beside it.
    // False when there is nothing to open it on.
    virtual bool EditScene() { return false; }
    // Opens the Material Editor on the material (null opens it empty). False: not opened.
    virtual bool EditMaterial(Kestrin::Ext::CBaseMaterial* pMaterial)
    {
        (void)pMaterial;
        return false;
    }
    // Opens the Fx Editor on the effect (null opens it empty). False: not opened.
    virtual bool EditFx(Kestrin::Fx::CFxResource* pFx)
    {
        (void)pFx;
        return false;
    }
    // Opens the Character Editor on the character (null opens it empty). False: not opened.
    virtual bool EditCharacter(Ovrel::CVestral* pCharacter)
    {
        (void)pCharacter;
        return false;
    }
    // Tells the editors other than pEditor (the object that removed it) that the entity is
    // gone. A null entity tells nobody. Returns 0.
    virtual int OnEntityRemoved(Ovrel::CSceneEntity* pEntity, const void* pEditor)
    {
        (void)pEntity;
        (void)pEditor;
        return 0;
    }
    // Runs one console line. False when nothing took it (no console, or it failed).
    virtual bool ExecuteCommand(const char* pcLine)
    {
        (void)pcLine;
        return false;
    }
    // Makes the entity the Scene Editor's current entity, when its window exists. Returns 0.
    virtual int SelectEntity(Ovrel::CSceneEntity* pEntity)
    {
        (void)pEntity;
        return 0;
    }
    // The Scene Editor's current entity; null when its window does not exist.
    virtual Ovrel::CSceneEntity* GetSelectedEntity() { return nullptr; }

protected:
    IEditorManager() = default;
    IEditorManager(const IEditorManager&) = delete;
    IEditorManager& operator=(const IEditorManager&) = delete;
};
