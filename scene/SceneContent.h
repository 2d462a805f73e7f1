// Ovrel::CSceneContent: what a scene holds and what its file stores: the entities (owned),
// the two lightmap atlas tables, the bounding box, the engine services the entities build
// their engine objects with, and the `.scene` reader and writer.
//
// Ovrel::CScene (Scene.h) derives from it and adds opening, saving, importing, picking and
// the per-frame update; here is only what the file and the entities need.
#pragma once

#include "scene/AtlasTable.h"
#include "scene/SceneEntity.h"

#include "engine/audio/AudioDevice.h"
#include "engine/fx/FxPlayer.h"
#include "engine/physics/PhysicsWorld.h"
#include "engine/renderer/RenderWorld.h"
#include "engine/renderer/TextureManager.h"

#include <cstdint>
#include <string>
#include <unordered_map>
#include <vector>

namespace Ovrel
{

class CEnvironmentSceneEntity;

// Where a read stopped and why.
struct CSceneReadError
{
    int32_t iEntityIndex = -1; // -1: in the header or the tables
    uint32_t uType = 0;        // the type code of that entity
    std::string strText;
};

class CSceneContent
{
public:
    CSceneContent();
    virtual ~CSceneContent();
    CSceneContent(const CSceneContent&) = delete;
    CSceneContent& operator=(const CSceneContent&) = delete;

    // --- engine services: any may be null. Headless scenes make no render objects and no
    // sound instances.
    void SetServices(Kestrin::Ext::CRenderWorld* pRenderWorld, Kestrin::Physics::CPhysicsWorld* pPhysicsWorld,
                     Kestrin::Audio::IAudioDevice* pAudioDevice, Kestrin::Fx::CFxPlayer* pFxPlayer,
                     Kestrin::Fx::IFxCharacterManager* pCharacters, bool bHeadless);
    void SetTextureManager(Kestrin::Renderer::CTextureManager* pTextures) { m_pTextures = pTextures; }
    // The render world to build in: null when there is none or the scene is headless.
    Kestrin::Ext::CRenderWorld* GetRenderWorld() const { return m_bHeadless ? nullptr : m_pRenderWorld; }
    Kestrin::Physics::CPhysicsWorld* GetPhysicsWorld() const { return m_pPhysicsWorld; }
    // The audio device to make sounds with: null when there is none or the scene is headless.
    Kestrin::Audio::IAudioDevice* GetAudioDevice() const { return m_bHeadless ? nullptr : m_pAudioDevice; }
    // Fx and characters draw: null in a headless scene.
    Kestrin::Fx::CFxPlayer* GetFxPlayer() const { return m_bHeadless ? nullptr : m_pFxPlayer; }
    Kestrin::Fx::IFxCharacterManager* GetCharacterManager() const
    {
        return m_bHeadless ? nullptr : m_pCharacters;
    }
    Kestrin::Renderer::CTextureManager* GetTextureManager() const { return m_pTextures; }
    bool IsHeadless() const { return m_bHeadless; }

    bool IsEditorMode() const { return m_bEditorMode; }
    void SetEditorMode(bool b) { m_bEditorMode = b; }
    bool NeedsResave() const { return m_bNeedsResave; }
    void SetNeedsResave(bool b) { m_bNeedsResave = b; }
    // Characters show at or above their level; 0 "Low" to 3 "Very High".
    int32_t GetCharacterQuality() const { return m_iCharacterQuality; }
    void SetCharacterQuality(int32_t iQuality);
    // The scene's generator, for start-time offsets: a value in [0, 1).
    float NextRandom();

    // --- entities
    // An empty entity of the type code, listed, with the id (0 allocates one); null for an
    // unknown code.
    CSceneEntity* CreateEntity(uint32_t uType, int32_t iId);
    // Ungroups a group's members first; unlinks the entity from its group; destroys it.
    // False when it was not listed.
    bool RemoveEntity(CSceneEntity* pEntity);
    // Destroys every entity, releases the tables, resets the counters.
    void Clear();
    // Null for id 0 and ids nobody has; the first in list order wins.
    CSceneEntity* FindById(int32_t iId) const;
    int32_t GetEntityCount() const { return static_cast<int32_t>(m_entities.size()); }
    CSceneEntity* GetEntity(int32_t iIndex) const;
    const std::vector<CSceneEntity*>& GetEntities() const { return m_entities; }
    // Increments nextEntityId (at least 1) and returns it.
    int32_t AllocateId();
    int32_t GetNextEntityId() const { return m_iNextEntityId; }
    CEnvironmentSceneEntity* GetEnvironment() const { return m_pEnvironment; }
    // Entities still loading their resources after a read.
    const std::vector<CSceneEntity*>& GetPending() const { return m_pending; }
    // The entities that take a per-frame Update: exactly the characters, cloth and fx.
    const std::vector<CSceneEntity*>& GetUpdateList() const { return m_updateList; }
    // While set, a read leaves every entity on the pending list, even when its resources
    // arrived. Nothing in the editors sets it.
    bool GetHoldActivation() const { return m_bHoldActivation; }
    void SetHoldActivation(bool b) { m_bHoldActivation = b; }
    // The environment in force; the editor makes a selected one current.
    void SetEnvironment(CEnvironmentSceneEntity* pEnvironment) { m_pEnvironment = pEnvironment; }
    // An entity's id changed: the look-up is rebuilt on its next use.
    void OnEntityIdsChanged() { m_bIndexDirty = true; }

    // --- tables, box and byte order of the file
    CAtlasTable& GetLightMaps() { return m_lightMaps; }
    const CAtlasTable& GetLightMaps() const { return m_lightMaps; }
    CAtlasTable& GetColorLightMaps() { return m_colorLightMaps; }
    const CAtlasTable& GetColorLightMaps() const { return m_colorLightMaps; }
    const CBox3& GetBoundingBox() const { return m_boxBounds; }
    void SetBoundingBox(const CBox3& box) { m_boxBounds = box; }
    // The union of the non-empty boxes of the entities. When some entity cannot tell its box
    // (its engine object is absent or loading), the scene's box as read stands instead.
    CBox3 ComputeBoundingBox(const std::vector<CSceneEntity*>& entities) const;
    void RebuildBoundingBox() { m_boxBounds = ComputeBoundingBox(m_entities); }
    // The file's byte order: set by a read, used by every write.
    bool GetSwapBytes() const { return m_bSwapBytes; }
    void SetSwapBytes(bool b) { m_bSwapBytes = b; }
    // The header version of the last file read.
    int32_t GetFileVersion() const { return m_iFileVersion; }

    // --- the `.scene` file
    // Replaces the content with the file's. On failure (wrong magic, a version above 102, a
    // short read, an unknown type, a failed entity) returns false and leaves the content as
    // it was; pError says where. bAsync lets textures and meshes arrive later: entities that
    // still load wait in GetPending() instead of getting OnLoaded.
    bool Read(CIOStream& stream, CSceneReadError* pError = nullptr, bool bAsync = false);
    // Writes every entity in list order, with both tables, in the file's byte order.
    bool Write(CIOStream& stream) const;
    // Writes the given entities; without tables the two table slots hold zero counts.
    bool WriteEntities(CIOStream& stream, const std::vector<CSceneEntity*>& entities, bool bWithTables) const;
    // The import reader: skips the tables, gives every entity a fresh id and no parent group,
    // and maps the member ids of the file's groups to the fresh ids. The entities are listed
    // and returned; on failure nothing is added and nextEntityId is restored.
    bool ReadImport(CIOStream& stream, std::vector<CSceneEntity*>& imported,
                    CSceneReadError* pError = nullptr);
    // The whole file in one read, then Read; false when it cannot be opened or read.
    bool ReadFile(const char* pcPath, CSceneReadError* pError = nullptr);
    // Write into memory, then into "<path>.tmp", renamed into place.
    bool WriteFile(const char* pcPath) const;

protected:
    struct CParse;
    bool ParseHeader(CIOStream& stream, CParse& parse) const;
    bool ParseEntities(CIOStream& stream, CParse& parse) const;
    void Commit(CParse& parse);
    void RebuildIndex() const;
    // Takes the entity off every list; it stays alive.
    void Unlist(CSceneEntity* pEntity);
    // The kinds that take a per-frame Update.
    static bool IsUpdated(uint32_t uType)
    {
        return uType == ENTITY_SKINNED_MESH || uType == ENTITY_CLOTH || uType == ENTITY_FX;
    }

    Kestrin::Ext::CRenderWorld* m_pRenderWorld = nullptr;
    Kestrin::Physics::CPhysicsWorld* m_pPhysicsWorld = nullptr;
    Kestrin::Audio::IAudioDevice* m_pAudioDevice = nullptr;
    Kestrin::Fx::CFxPlayer* m_pFxPlayer = nullptr;
    Kestrin::Fx::IFxCharacterManager* m_pCharacters = nullptr;
    Kestrin::Renderer::CTextureManager* m_pTextures = nullptr;
    bool m_bHeadless = false;
    bool m_bEditorMode = false;
    bool m_bNeedsResave = false;
    bool m_bSwapBytes = false;
    int32_t m_iFileVersion = 0;
    int32_t m_iCharacterQuality = 3;
    uint32_t m_uRandom = 12345;

    CBox3 m_boxBounds;
    std::vector<CSceneEntity*> m_entities;
    std::vector<CSceneEntity*> m_updateList;
    std::vector<CSceneEntity*> m_pending;
    bool m_bHoldActivation = false;
    int32_t m_iNextEntityId = 0;
    CEnvironmentSceneEntity* m_pEnvironment = nullptr;
    CAtlasTable m_lightMaps;
    CAtlasTable m_colorLightMaps;

    mutable std::unordered_map<int32_t, CSceneEntity*> m_index;
    mutable bool m_bIndexDirty = true;
};

} // namespace Ovrel
