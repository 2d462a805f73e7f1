// The entities that show a mesh: static meshes, cloth and skinned characters. Their records
// share the render block (the mesh render object's settings) and, for static meshes and
// cloth, the collision shape list.
#pragma once

#include "scene/SceneEntity.h"

#include "engine/fx/FxPlayer.h"
#include "engine/physics/PhysicsWorld.h"
#include "engine/renderer/RenderWorld.h"

#include <cstdint>
#include <string>
#include <vector>

namespace Ovrel
{

// One shape of a collision file as the entity stores it: collision flags (the SHAPE_ bits of
// the physics layer) and material.
struct CCollisionShapeRecord
{
    uint32_t uFlags = 0;
    uint16_t uMaterial = 0;
    bool operator==(const CCollisionShapeRecord&) const = default;
};

// The render block of MESH, SKIN and CLOT records; uVisible is the entity's visible flag.
void TransferRenderBlock(CSceneRecordIO& io, uint8_t& uVisible, Kestrin::Ext::CMeshRenderSettings& settings);
// A u16 count and the shapes. bUpgradeAttack (MESH blocks below 107): a shape with the
// character bit also gets the attack bit, so old character collision keeps blocking attacks.
void TransferShapes(CSceneRecordIO& io, std::vector<CCollisionShapeRecord>& shapes, bool bUpgradeAttack);

// What static meshes and cloth share: the mesh render object, the physics actor built from
// the collision file, and the values that go with them.
class CSceneMeshParts
{
public:
    explicit CSceneMeshParts(CSceneContent* pScene) : m_pScene(pScene) {}
    ~CSceneMeshParts();
    CSceneMeshParts(const CSceneMeshParts&) = delete;
    CSceneMeshParts& operator=(const CSceneMeshParts&) = delete;

    // A new render object for the file in place of the old one; the file name is kept even
    // when no object can be built (no render world, a headless scene, a missing mesh).
    bool CreateRenderObject(const std::string& strFile, bool bAsync, const CMatrix44& mTransform,
                            uint8_t uVisible, int32_t iLayer);
    void DeleteRenderObject();
    // The actor from the collision file, resolved beside the mesh. Logs its outcome.
    bool CreatePhysics(const CMatrix44& mTransform);
    // Logs and deletes the actor; logs a failure when there is none.
    void DeletePhysics();
    // Deletes the actor without a word (destruction, reloading).
    void ReleasePhysics();
    // Load step 4: an empty collision name in editor mode builds the actor from the mesh's
    // own source (and asks for a resave); a set name loads it.
    void LoadCollision(const CMatrix44& mTransform);
    // Gives the shape records to the actor; reports a count that disagrees.
    void ApplyShapes();
    void SetTransform(const CMatrix44& mTransform);
    // The collision file's data path: the name beside the mesh, keeping the mesh's folder.
    std::string GetCollisionPath() const;

    // What the render object answers and takes: its box (empty without one), ray tests,
    // visibility and the layer's channel bit.
    CBox3 GetBoundingBox() const;
    bool HitTest(const CVec3& vStart, const CVec3& vDirection, bool bExact, float& fDistance) const;
    void SetVisible(bool bVisible);
    void SetLayer(int32_t iLayer);
    // Gives the render object the lightmap (or, bColor, the colour lightmap) of the table
    // entry when the entry is the entity's; the index kept, or -1 when it is not.
    int32_t ApplyLightMap(int32_t iIndex, int32_t iEntityId, bool bColor);

    Kestrin::Ext::CLodMeshRenderObject* m_pRenderObject = nullptr;
    Kestrin::Physics::CPhysicsObject* m_pPhysicsObject = nullptr;
    std::string m_strMeshFile;
    std::string m_strCollisionFile;
    std::vector<CCollisionShapeRecord> m_shapes;
    Kestrin::Ext::CMeshRenderSettings m_render;
    uint8_t m_uInShadow = 0;
    float m_fAmbientIntensity = 1.0f;
    uint16_t m_uMirrorLayer = 0;

private:
    CSceneContent* m_pScene;
};

class CStaticMeshSceneEntity final : public CSceneEntity
{
public:
    explicit CStaticMeshSceneEntity(CSceneContent* pScene);
    ~CStaticMeshSceneEntity() override;

    uint32_t GetType() const override { return ENTITY_STATIC_MESH; }
    bool Save(CIOStream& stream) override;
    // A wrong MESH tag or a newer version stops reading the record: the entity stays empty
    // and Load still succeeds, as the format has it.
    bool Load(CIOStream& stream, bool bAsync) override;
    bool IsLoading() const override;
    void OnLoaded() override;
    void CollectAssets(IAssetCollector& helper) override;
    void SetTransform(const CMatrix44& mTransform) override;
    void GetTransform(CMatrix44& mTransform) const override { mTransform = m_mTransform; }
    void GetBoundingBox(CBox3& box) const override;
    bool HitTest(const CVec3& vStart, const CVec3& vDirection, float& fDistance) override;
    bool HitTestExact(const CVec3& vStart, const CVec3& vDirection, float& fDistance) override;
    void SetVisible(bool bVisible) override;
    void SetLayer(int32_t iLayer) override;
    void SetResourceName(const std::string& strName) override;
    std::string GetResourceName() const override { return m_parts.m_strMeshFile; }

    bool TransferRecord(CSceneRecordIO& io);

    bool CreateRenderObject(const std::string& strFile, bool bAsync);
    bool CreatePhysics() { return m_parts.CreatePhysics(m_mTransform); }
    void DeletePhysics() { m_parts.DeletePhysics(); }
    // Stores the index and gives the render object the atlas rectangle when the entry at
    // that index belongs to this entity; otherwise takes the lightmap away and stores -1.
    void ApplyLightMap(int32_t iIndex);
    void ApplyColorLightMap(int32_t iIndex);

    Kestrin::Ext::CLodMeshRenderObject* GetRenderObject() const { return m_parts.m_pRenderObject; }
    Kestrin::Physics::CPhysicsObject* GetPhysicsObject() const { return m_parts.m_pPhysicsObject; }
    int32_t GetLightMapIndex() const { return m_iLightMapIndex; }
    int32_t GetColorLightMapIndex() const { return m_iColorLightMapIndex; }
    const std::string& GetMeshFile() const { return m_parts.m_strMeshFile; }
    const std::string& GetCollisionFile() const { return m_parts.m_strCollisionFile; }
    void SetCollisionFile(const std::string& strFile) { m_parts.m_strCollisionFile = strFile; }
    // The collision file's data path: the name beside the mesh; empty without a name.
    std::string GetCollisionPath() const
    {
        return m_parts.m_strCollisionFile.empty() ? std::string() : m_parts.GetCollisionPath();
    }
    const std::vector<CCollisionShapeRecord>& GetShapes() const { return m_parts.m_shapes; }
    void SetShapes(const std::vector<CCollisionShapeRecord>& shapes);
    // The collision flags of one shape; false when the index is out of range.
    bool SetCollisionGroup(int32_t iShape, uint32_t uFlags);
    uint32_t GetCollisionGroup(int32_t iShape) const;

    const Kestrin::Ext::CMeshRenderSettings& GetRenderSettings() const { return m_parts.m_render; }
    void SetRenderSettings(const Kestrin::Ext::CMeshRenderSettings& settings);
    // "Shadow": LightMap, Dynamic, both or none.
    void SetShadow(bool bLightMap, bool bDynamic);
    void SetShadowResolution(float fResolution);
    uint8_t GetInShadow() const { return m_parts.m_uInShadow; }
    void SetInShadow(uint8_t uInShadow) { m_parts.m_uInShadow = uInShadow; }
    float GetAmbientIntensity() const { return m_parts.m_fAmbientIntensity; }
    void SetAmbientIntensity(float f) { m_parts.m_fAmbientIntensity = f; }
    uint8_t GetWaterRef() const { return m_uWaterRef; }
    float GetRefPower() const { return m_fRefPower; }
    void SetWaterRef(uint8_t uWaterRef, float fRefPower);
    uint16_t GetMirrorLayer() const { return m_parts.m_uMirrorLayer; }
    void SetMirrorLayer(uint16_t uLayer) { m_parts.m_uMirrorLayer = uLayer; }
    const CVec3& GetDColor() const { return m_vDColor; }
    const CVec3& GetSColor() const { return m_vSColor; }
    void SetDColor(const CVec3& v) { m_vDColor = v; }
    void SetSColor(const CVec3& v) { m_vSColor = v; }

private:
    CMatrix44 m_mTransform;
    int32_t m_iLightMapIndex = -1;
    int32_t m_iColorLightMapIndex = -1;
    CSceneMeshParts m_parts;
    uint8_t m_uWaterRef = 0;
    float m_fRefPower = 0.0f;
    CVec3 m_vDColor{1.0f, 1.0f, 1.0f};
    CVec3 m_vSColor{1.0f, 1.0f, 1.0f};
};

class CClothSceneEntity final : public CSceneEntity
{
public:
    explicit CClothSceneEntity(CSceneContent* pScene);
    ~CClothSceneEntity() override;

    uint32_t GetType() const override { return ENTITY_CLOTH; }
    bool Save(CIOStream& stream) override;
    bool Load(CIOStream& stream, bool bAsync) override;
    bool IsLoading() const override;
    void OnLoaded() override;
    void SetTransform(const CMatrix44& mTransform) override;
    void GetTransform(CMatrix44& mTransform) const override { mTransform = m_mTransform; }
    void GetBoundingBox(CBox3& box) const override;
    bool HitTest(const CVec3& vStart, const CVec3& vDirection, float& fDistance) override;
    bool HitTestExact(const CVec3& vStart, const CVec3& vDirection, float& fDistance) override;
    // Cloth updates every frame.
    void Update(float fTime, float fDelta) override;
    void SetVisible(bool bVisible) override;
    void SetLayer(int32_t iLayer) override;
    void SetResourceName(const std::string& strName) override;
    std::string GetResourceName() const override { return m_parts.m_strMeshFile; }

    bool TransferRecord(CSceneRecordIO& io);

    bool CreateRenderObject(const std::string& strFile, bool bAsync);
    void ApplyLightMap(int32_t iIndex);

    Kestrin::Ext::CLodMeshRenderObject* GetRenderObject() const { return m_parts.m_pRenderObject; }
    Kestrin::Physics::CClothObject* GetClothObject() const { return m_pClothObject; }
    int32_t GetLightMapIndex() const { return m_iLightMapIndex; }
    const std::string& GetMeshFile() const { return m_parts.m_strMeshFile; }
    const std::string& GetCollisionFile() const { return m_parts.m_strCollisionFile; }
    const std::vector<CCollisionShapeRecord>& GetShapes() const { return m_parts.m_shapes; }
    const Kestrin::Physics::CClothParameters& GetParameters() const { return m_cloth; }
    void SetParameters(const Kestrin::Physics::CClothParameters& parameters);
    const Kestrin::Ext::CMeshRenderSettings& GetRenderSettings() const { return m_parts.m_render; }
    void SetRenderSettings(const Kestrin::Ext::CMeshRenderSettings& settings);

private:
    void DeleteClothObject();

    CMatrix44 m_mTransform;
    int32_t m_iLightMapIndex = -1;
    CSceneMeshParts m_parts;
    Kestrin::Physics::CClothObject* m_pClothObject = nullptr;
    Kestrin::Physics::CClothParameters m_cloth;
};

class CSkinnedMeshSceneEntity final : public CSceneEntity
{
public:
    explicit CSkinnedMeshSceneEntity(CSceneContent* pScene);
    ~CSkinnedMeshSceneEntity() override;

    uint32_t GetType() const override { return ENTITY_SKINNED_MESH; }
    bool Save(CIOStream& stream) override;
    // Like the static mesh: a wrong SKIN tag or a newer version leaves the entity empty and
    // Load still succeeds.
    bool Load(CIOStream& stream, bool bAsync) override;
    void SetTransform(const CMatrix44& mTransform) override;
    void GetTransform(CMatrix44& mTransform) const override { mTransform = m_mTransform; }
    void GetBoundingBox(CBox3& box) const override;
    bool HitTest(const CVec3& vStart, const CVec3& vDirection, float& fDistance) override;
    bool HitTestExact(const CVec3& vStart, const CVec3& vDirection, float& fDistance) override;
    void Update(float fTime, float fDelta) override;
    // Shows only when the flag is set and the scene's character quality is at least level.
    void SetVisible(bool bVisible) override;
    void SetLayer(int32_t iLayer) override;
    void SetResourceName(const std::string& strName) override;
    std::string GetResourceName() const override { return m_strConfigFile; }

    bool TransferRecord(CSceneRecordIO& io);

    // A new character from the `.cconfig` in place of the old one; the name is kept either way.
    bool CreateCharacter(const std::string& strConfigFile);
    // Shows or hides the character by the visible flag and the scene's character quality.
    void RefreshVisibility();

    Kestrin::Fx::IFxCharacter* GetCharacter() const { return m_pCharacter; }
    const std::string& GetConfigFile() const { return m_strConfigFile; }
    const std::string& GetStakeFile() const { return m_strStakeFile; }
    void SetStakeFile(const std::string& strStake);
    int32_t GetLevel() const { return m_iLevel; }
    void SetLevel(int32_t iLevel);
    float GetStartTimeMin() const { return m_fStartTimeMin; }
    float GetStartTimeMax() const { return m_fStartTimeMax; }
    void SetStartTime(float fMin, float fMax);
    const Kestrin::Ext::CMeshRenderSettings& GetRenderSettings() const { return m_render; }
    void SetRenderSettings(const Kestrin::Ext::CMeshRenderSettings& settings) { m_render = settings; }
    float GetAmbientIntensity() const { return m_fAmbientIntensity; }
    uint8_t GetInShadow() const { return m_uInShadow; }
    float GetVisibleDistance() const { return m_fVisibleDistance; }
    uint16_t GetWaterRef() const { return m_uWaterRef; }
    float GetRefPower() const { return m_fRefPower; }

private:
    void DeleteCharacter();

    int32_t m_iLevel = 0;
    float m_fStartTimeMin = 0.0f;
    float m_fStartTimeMax = 0.0f;
    std::string m_strConfigFile;
    std::string m_strStakeFile;
    CMatrix44 m_mTransform;
    Kestrin::Fx::IFxCharacter* m_pCharacter = nullptr;
    Kestrin::Ext::CMeshRenderSettings m_render;
    float m_fAmbientIntensity = 1.0f;
    uint8_t m_uInShadow = 0;
    float m_fVisibleDistance = 0.0f;
    uint16_t m_uWaterRef = 0;
    float m_fRefPower = 0.0f;
};

} // namespace Ovrel
