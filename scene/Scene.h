// Ovrel::CScene: the container of everything placed in a level, used by the Scene Editor and
// as the run-time level of the game layer. It adds to the content (entities, tables, the
// file format, CSceneContent) the operations of the level: opening (at once or through the
// background loader), saving in its several forms, importing, creation and look-up,
// picking, and the per-frame update that activates entities whose resources arrived.
//
// Threads: everything here runs on the main thread; only the read step of a load task runs
// on the loader's thread, and it touches nothing but the task's own buffer.
#pragma once

#include "scene/AssetHelper.h"
#include "scene/SceneContent.h"
#include "scene/ScenePropFile.h"
#include "scene/SceneResources.h"

#include "engine/renderer/Plotter.h"

#include <cstdint>
#include <string>
#include <vector>

namespace Kestrin::Renderer
{
class IRendererSettings;
}
namespace GLib::Script
{
class CScriptValue;
}

namespace Ovrel
{

class CSceneLoadTask;
class CSceneManager;
class CGroupSceneEntity;
class CStaticMeshSceneEntity;

class CScene : public CSceneContent
{
public:
    // The scene's mode value; nothing reads it beyond its default.
    static constexpr int32_t DEFAULT_MODE = 2;

    explicit CScene(const std::string& strOpenName = std::string());
    // Clears, then cancels a running load task.
    ~CScene() override;

    // --- paths and flags
    // The base name of the scene file, without folder or extension.
    const std::string& GetName() const { return m_strName; }
    // The file last loaded or saved.
    const std::string& GetFilePath() const { return m_strFilePath; }
    // The folder of the scene file, ending in its separator (or empty).
    const std::string& GetFolder() const { return m_strFolder; }
    const std::string& GetOpenName() const { return m_strOpenName; }
    const std::string& GetDisplayName() const { return m_strDisplayName; }
    void SetDisplayName(const std::string& strName) { m_strDisplayName = strName; }
    // Search folders in place of the scene's own folder, for the asset helper's paths, for
    // effects and for game-object meshes; empty means the scene's folder.
    void SetTextureFolderOverride(const std::string& s) { m_strTextureFolderOverride = s; }
    void SetFxFolderOverride(const std::string& s) { m_strFxFolderOverride = s; }
    void SetModelFolderOverride(const std::string& s) { m_strModelFolderOverride = s; }
    // The application's data folders for scenes: effects and models become the fx and model
    // overrides; characters placed in scenes are looked for in the character folder.
    void SetPaths(const std::string& strFxFolder, const std::string& strCharacterFolder,
                  const std::string& strModelFolder);
    const std::string& GetCharacterFolder() const { return m_strCharacterFolder; }
    // The game's EntityProperty table, which game objects look their kinds up in (not owned;
    // null: none).
    void SetEntityProperties(const GLib::Script::CScriptValue* pTable) { m_pEntityProperties = pTable; }
    const GLib::Script::CScriptValue* GetEntityProperties() const { return m_pEntityProperties; }
    // The folders a read resolves resource names against: textures, materials, meshes and
    // collision shapes on the scene's folder, the others on their overrides where set.
    CSceneFolders GetFolders() const;
    // Passed to every path scope as its force flag.
    void SetReloadFlag(uint8_t uReload) { m_uReloadFlag = uReload; }
    bool GetShowEditorLines() const { return m_bShowEditorLines; }
    void SetShowEditorLines(bool b) { m_bShowEditorLines = b; }
    // One bit per layer, all set at first: what the console's VisibleGroups("%lld") shows.
    uint64_t GetVisibleGroups() const { return m_uVisibleGroups; }
    void SetVisibleGroups(uint64_t uMask) { m_uVisibleGroups = uMask; }
    int32_t GetMode() const { return m_iMode; }
    void SetManager(CSceneManager* pManager, int32_t iSceneId);
    CSceneManager* GetManager() const { return m_pManager; }
    int32_t GetSceneId() const { return m_iSceneId; }

    // --- services the scene passes on
    void SetResourceScopes(ISceneResourceScopes* pScopes) { m_pScopes = pScopes; }
    void SetAssetStore(IAssetStore* pStore) { m_pAssetStore = pStore; }
    IAssetStore* GetAssetStore() const { return m_pAssetStore; }

    // --- opening
    // Clear (cancelling a running load), then load the file. Synchronously: true when the
    // file was read and parsed (and, in editor mode, the `.prop` side file then read when
    // present). Asynchronously: the task goes to the background loader and true is returned;
    // IsLoading stays true until the task and every pending entity are done. A failure logs
    // `Load scene "%s" fail.` (read) or `Load scene "%s" fail` (parse) and leaves the
    // scene empty.
    bool Open(const std::string& strPath, bool bAsynchronous);
    // Destroys every entity, releases the lightmaps, resets names and counters. A running
    // load task goes on (Open and destruction cancel it).
    void Clear();
    // True while the load task runs or some pending entity still loads. Resolves lightmap
    // entries whose textures arrived and activates (OnLoaded) the pending entities that are
    // done, in list order, unless activation is held.
    bool IsLoading();
    // True once an Open succeeded (its parse, for a load through the loader), until Clear.
    bool HasLoaded() const { return m_bLoaded; }
    // IsLoading; once nothing loads, and unless headless, Update on each entity of the
    // update list that is not loading.
    void Update(float fTime, float fDelta);
    // DrawEditor on each visible entity whose type meets uTypeMask and whose layer bit is in
    // uLayerMask; nothing while editor lines are off.
    void DrawEditorLines(Kestrin::Plotter::IPlotter3D* pPlotter3D, Kestrin::Plotter::IPlotter2D* pPlotter2D,
                         uint32_t uTypeMask, uint64_t uLayerMask);
    // The environment in force pushes its values to the renderer; false when there is none.
    bool ApplyEnvironment(Kestrin::Renderer::IRendererSettings& settings) const;

    // --- saving. Every file goes to a temporary beside it and is renamed into place.
    // Takes name and path from strPath, rebuilds the box, sorts the entities in place (type
    // code, then name in byte order, then id) and writes them with the lightmap tables.
    bool Save(const std::string& strPath);
    // Save; then each static mesh's collision shape, the `.prop` file in editor mode, and
    // the lightmap textures when there are any; clears needsResave.
    bool SaveAll(const std::string& strPath);
    // The given entities, sorted, without lightmap tables; then the static meshes' assets
    // beside the file. The scene's own list and paths are untouched.
    bool SaveEntities(std::vector<CSceneEntity*> entities, const std::string& strPath);
    // Takes name and path from strPath and writes the entities whose type meets the mask,
    // in list order, without lightmap tables. No assets.
    bool SaveByType(const std::string& strPath, uint32_t uTypeMask);
    // Writes `<target>scene/<name>/<name>.scene` (sorted, with the lightmap tables), then the
    // assets of the entities and the lightmap textures under the target. Stops at the first
    // step that fails.
    bool Export(std::vector<CSceneEntity*> entities, const std::string& strTargetFolder);
    // The assets (kinds in iAssetFlags) of every static mesh, under the folder of strPath.
    bool SaveMeshAssets(const std::string& strPath, int32_t iAssetFlags);
    // One `CameraFrame(...)` line per camera in list order: time 0, position, rotation.
    bool ExportCameraAnimation(const std::string& strPath);
    // The text ExportCameraAnimation writes.
    std::string FormatCameraAnimation() const;

    // --- import
    // Reads a `.scene` (lightmaps left out) or `.dae` file into a new group named
    // `<base name>Group`: entities whose type meets uTypeMask join it, the others are removed
    // again; groups of a `.scene` are dissolved into it. Null for another extension, a file
    // that does not read, or nothing that meets the mask; the scene is then unchanged.
    CGroupSceneEntity* Import(const std::string& strPath, uint32_t uTypeMask, bool bForceReload);

    // --- creation
    // New entities with an id, listed, OnLoaded called. A light's kind and name follow the
    // menu word in strName ("Spot", "Directional", else point).
    CSceneEntity* CreateCamera(const std::string& strName = std::string());
    CSceneEntity* CreateLight(const std::string& strName = std::string());
    CSceneEntity* CreateSound();
    CSceneEntity* CreateEnvironment(const std::string& strName = std::string());
    // New entities from a file, named by its base name; null on failure (an empty name, or
    // an engine that could not build the file's object). Meshes and cloth also take `.dae`.
    // Occluders, portals and zones take their shape from the first mesh of a `.dae`.
    CSceneEntity* CreateMesh(const std::string& strFile);
    CSceneEntity* CreateCloth(const std::string& strFile);
    CSceneEntity* CreateCharacter(const std::string& strFile);
    CSceneEntity* CreateFx(const std::string& strFile);
    CSceneEntity* CreateGameObject(const std::string& strFile);
    CSceneEntity* CreateOccluder(const std::string& strFile);
    CSceneEntity* CreatePortal(const std::string& strFile);
    CSceneEntity* CreateZone(const std::string& strFile);
    CSceneEntity* CreateLocator(const std::string& strFile);
    CSceneEntity* CreateTrigger(const std::string& strFile);

    // --- look-up
    // The first entity in list order whose type meets the mask and whose name equals,
    // without regard to case; null when none.
    CSceneEntity* FindByName(const std::string& strName, uint32_t uTypeMask) const;
    // Appends every entity of the mask whose lower-cased name contains the lower-cased text;
    // returns how many were appended.
    int32_t FindMatching(const std::string& strText, std::vector<CSceneEntity*>& out,
                         uint32_t uTypeMask) const;
    // The nearest entity hit by the ray among those whose type meets the mask, whose layer
    // bit is in the 64-bit mask (uLayerLow | uLayerHigh << 32) and that are visible; the
    // first of equal distances wins. Null (and 1e10) when nothing is hit.
    CSceneEntity* Pick(const CVec3& vStart, const CVec3& vDirection, float& fDistance, uint32_t uTypeMask,
                       uint32_t uLayerLow, uint32_t uLayerHigh) const;

    // --- groups and collision
    // Every group's members get their groupId from the group's member list.
    void RelinkGroups();
    // Copies the mesh's collision shape settings to every other static mesh with the same
    // collision shape; returns how many took them.
    int32_t ApplyCollisionToSameMesh(const CStaticMeshSceneEntity* pMesh);

    // The running load task, or null. The task clears it when it ends.
    CSceneLoadTask* GetLoadTask() const { return m_pLoadTask; }

private:
    friend class CSceneLoadTask;

    // Sets name, folder and path from a file path.
    void TakePath(const std::string& strPath);
    // Lists, names and activates a new entity made by a factory.
    CSceneEntity* Finish(CSceneEntity* pEntity, const std::string& strName);
    CSceneEntity* CreateFromFile(uint32_t uType, const std::string& strFile);
    CSceneEntity* CreateVolume(uint32_t uType, const std::string& strFile);
    // Cancels the running load task through the loader.
    void CancelLoad();
    // Gives the task to the background loader as the running one; false (the task still
    // the caller's) when there is no loader to take it.
    bool SubmitLoadTask(CSceneLoadTask* pTask);
    static void CancelLoadTask(CSceneLoadTask* pTask);
    // Sorts by type code, name in byte order, then id.
    static void SortForSave(std::vector<CSceneEntity*>& entities);
    bool WriteSceneFile(const std::string& strPath, const std::vector<CSceneEntity*>& entities,
                        bool bWithTables) const;
    bool SaveStaticMeshAssets(const std::vector<CSceneEntity*>& entities, const std::string& strFolder,
                              int32_t iFlags) const;
    bool ReadImportScene(const std::string& strPath, std::vector<CSceneEntity*>& imported);
    bool ReadImportCollada(const std::string& strPath, std::vector<CSceneEntity*>& imported);
    // The `.prop` side file beside the scene file: read and applied after an editor-mode
    // load (a missing one is no error), taken from the meshes and written by SaveAll.
    bool LoadPropFile();
    bool SavePropFile();

    std::string m_strName;
    std::string m_strFilePath;
    std::string m_strFolder;
    bool m_bShowEditorLines = true;
    std::string m_strTextureFolderOverride;
    std::string m_strFxFolderOverride;
    std::string m_strModelFolderOverride;
    uint8_t m_uReloadFlag = 0;
    CSceneManager* m_pManager = nullptr;
    int32_t m_iSceneId = 0;
    std::string m_strOpenName;
    CSceneLoadTask* m_pLoadTask = nullptr;
    std::string m_strDisplayName;
    int32_t m_iMode = DEFAULT_MODE;
    uint64_t m_uVisibleGroups = ~uint64_t{0};
    ISceneResourceScopes* m_pScopes = nullptr;
    IAssetStore* m_pAssetStore = nullptr;
    CScenePropFile m_props;
    bool m_bLoaded = false;
    std::string m_strCharacterFolder;
    const GLib::Script::CScriptValue* m_pEntityProperties = nullptr;
};

} // namespace Ovrel
