// Ovrel::CSceneEntity: everything placed in a scene. The class is a thin shell: it holds what
// the scene file stores, in its own members, and forwards to an engine object (render object,
// light, fx, character, sound) that exists only while there is a world. A scene without
// engine services, or a headless one, still loads and saves every entity exactly.
//
// The virtual operations stand in a fixed slot order (0 destructor to 19 GetHitNormal); the
// kinds derive straight from this class and add no virtual slot of their own except the fx
// entity's IsLooping (20).
#pragma once

#include "scene/SceneRecordIO.h"
#include "scene/SceneTypes.h"

#include "engine/renderer/Plotter.h"
#include "engine/utility/IOStream.h"
#include "engine/utility/Math.h"

#include <cstdint>
#include <string>

namespace Ovrel
{

class CSceneContent;
class CGroupSceneEntity;

// What CollectAssets reports: the files an entity needs beside the scene.
class IAssetCollector
{
public:
    virtual ~IAssetCollector() = default;
    IAssetCollector(const IAssetCollector&) = delete;
    IAssetCollector& operator=(const IAssetCollector&) = delete;

    // A `.mesh` file by the name its manager keys it.
    virtual void AddMesh(const std::string& strName) = 0;
    // A `.col` collision shape file.
    virtual void AddCollisionShape(const std::string& strName) = 0;
    // A character's `.cconfig` file.
    virtual void AddCharacter(const std::string& strName) = 0;

protected:
    IAssetCollector() = default;
};

class CSceneEntity
{
public:
    explicit CSceneEntity(CSceneContent* pScene);
    CSceneEntity(const CSceneEntity&) = delete;
    CSceneEntity& operator=(const CSceneEntity&) = delete;

    // --- slots 0 to 19
    virtual ~CSceneEntity();
    // The type code: a single bit (SceneTypes.h).
    virtual uint32_t GetType() const;
    // Writes the entity's record (BASE block, then the class's block). False when the stream
    // took less than it was given.
    virtual bool Save(CIOStream& stream);
    // Reads the record. False on a short read, a wrong tag or a newer version than this
    // reader's (the static and skinned meshes keep going on their own block: see there).
    virtual bool Load(CIOStream& stream, bool bAsync);
    // True while an engine resource of the entity still loads.
    virtual bool IsLoading() const;
    // Called once the entity's resources arrived.
    virtual void OnLoaded();
    virtual void CollectAssets(IAssetCollector& helper);
    virtual void SetTransform(const CMatrix44& mTransform);
    virtual void GetTransform(CMatrix44& mTransform) const;
    // The world box; empty (minimum 1e10, maximum -1e10) when the entity has none.
    virtual void GetBoundingBox(CBox3& box) const;
    // Ray tests with a unit direction; true and the distance along the ray on a hit.
    virtual bool HitTest(const CVec3& vStart, const CVec3& vDirection, float& fDistance);
    virtual bool HitTestExact(const CVec3& vStart, const CVec3& vDirection, float& fDistance);
    virtual void Update(float fTime, float fDelta);
    virtual void DrawEditor(Kestrin::Plotter::IPlotter3D* pPlotter3D,
                            Kestrin::Plotter::IPlotter2D* pPlotter2D);
    virtual void SetVisible(bool bVisible);
    virtual bool IsVisible() const;
    // Layers 0 to 63; an entity on another layer passes no layer mask.
    virtual void SetLayer(int32_t iLayer);
    virtual void SetResourceName(const std::string& strName);
    virtual std::string GetResourceName() const;
    virtual void GetHitNormal(CVec3& vNormal) const;

    // --- plain operations
    const std::string& GetName() const { return m_strName; }
    void SetName(const std::string& strName) { m_strName = strName; }
    int32_t GetId() const { return m_iId; }
    // Changes the id; the scene's look-up follows.
    void SetId(int32_t iId);
    int32_t GetGroupId() const { return m_iGroupId; }
    void SetGroupId(int32_t iGroupId) { m_iGroupId = iGroupId; }
    int32_t GetLayer() const { return m_iLayer; }
    CSceneContent* GetScene() const { return m_pScene; }

    // The parent group, looked up by groupId in the scene; null for 0 or a missing id.
    CGroupSceneEntity* FindParentGroup() const;
    // Stores the group's id, or 0 for null.
    void SetParentGroup(const CGroupSceneEntity* pGroup);
    // False when the box comes from an engine object that does not exist or has not loaded:
    // a scene then keeps the box it read instead of rebuilding it.
    bool IsBoundsKnown() const;

    // The record through one description: Save and Load use it, and the class description
    // reaches each kind's own (they hide this one) for the JSON dump. Not a virtual slot.
    bool TransferRecord(CSceneRecordIO& io);

protected:
    // The BASE block. False on a short read, a wrong tag or a newer version.
    bool TransferBase(CSceneRecordIO& io);
    // What the reader does after each entity block: SetTransform with the stored matrix and
    // SetLayer with the BASE value, so engine objects follow.
    void FinishLoad();
    // Save and Load through a kind's own TransferRecord. LoadRecord reads the record into the
    // kind's members, then fnRebuild makes its engine object from them, then FinishLoad; a
    // failed read rebuilds nothing.
    template <class TEntity>
    static bool SaveRecord(TEntity& entity, CIOStream& stream)
    {
        CSceneRecordIO io(stream, false);
        return entity.TransferRecord(io);
    }
    template <class TEntity, class FRebuild>
    static bool LoadRecord(TEntity& entity, CIOStream& stream, FRebuild fnRebuild)
    {
        CSceneRecordIO io(stream, true);
        if (!entity.TransferRecord(io))
        {
            return false;
        }
        fnRebuild();
        entity.FinishLoad();
        return true;
    }

    std::string m_strName;
    int32_t m_iId = 0;
    int32_t m_iGroupId = 0;
    int32_t m_iLayer = 0;
    uint8_t m_uVisible = 1;
    CSceneContent* m_pScene = nullptr;
    // Set by kinds whose box comes from their engine object.
    bool m_bBoundsFromEngine = false;
};

} // namespace Ovrel
