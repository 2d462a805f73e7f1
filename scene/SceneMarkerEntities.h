// Entities that mark a place for the game: locators, triggers, cameras and game objects.
// None needs an engine object to be picked: each is a box of its own size.
#pragma once

#include "scene/SceneEntity.h"

#include "engine/renderer/RenderWorld.h"

#include <cstdint>
#include <string>

namespace Ovrel
{

class CLocatorSceneEntity final : public CSceneEntity
{
public:
    explicit CLocatorSceneEntity(CSceneContent* pScene) : CSceneEntity(pScene) {}

    uint32_t GetType() const override { return ENTITY_LOCATOR; }
    bool Save(CIOStream& stream) override;
    bool Load(CIOStream& stream, bool bAsync) override;
    void SetTransform(const CMatrix44& mTransform) override { m_mTransform = mTransform; }
    void GetTransform(CMatrix44& mTransform) const override { mTransform = m_mTransform; }
    // A box of half the size at the transform.
    void GetBoundingBox(CBox3& box) const override;
    bool HitTest(const CVec3& vStart, const CVec3& vDirection, float& fDistance) override;
    bool HitTestExact(const CVec3& vStart, const CVec3& vDirection, float& fDistance) override;

    bool TransferRecord(CSceneRecordIO& io);

    const CVec3& GetSize() const { return m_vSize; }
    void SetSize(const CVec3& v) { m_vSize = v; }
    const CVec3& GetColor() const { return m_vColor; }
    void SetColor(const CVec3& v) { m_vColor = v; }

private:
    CMatrix44 m_mTransform;
    CVec3 m_vSize{5.0f, 5.0f, 40.0f};
    CVec3 m_vColor{1.0f, 1.0f, 1.0f};
};

class CTriggerSceneEntity final : public CSceneEntity
{
public:
    explicit CTriggerSceneEntity(CSceneContent* pScene) : CSceneEntity(pScene) {}

    uint32_t GetType() const override { return ENTITY_TRIGGER; }
    bool Save(CIOStream& stream) override;
    bool Load(CIOStream& stream, bool bAsync) override;
    void SetTransform(const CMatrix44& mTransform) override { m_mTransform = mTransform; }
    void GetTransform(CMatrix44& mTransform) const override { mTransform = m_mTransform; }
    void GetBoundingBox(CBox3& box) const override;
    bool HitTest(const CVec3& vStart, const CVec3& vDirection, float& fDistance) override;
    bool HitTestExact(const CVec3& vStart, const CVec3& vDirection, float& fDistance) override;

    bool TransferRecord(CSceneRecordIO& io);

    const CVec3& GetSize() const { return m_vSize; }
    void SetSize(const CVec3& v) { m_vSize = v; }
    const CVec3& GetColor() const { return m_vColor; }
    void SetColor(const CVec3& v) { m_vColor = v; }

private:
    CMatrix44 m_mTransform;
    CVec3 m_vSize{20.0f, 20.0f, 20.0f};
    CVec3 m_vColor{1.0f, 1.0f, 1.0f};
};

class CCameraSceneEntity final : public CSceneEntity
{
public:
    explicit CCameraSceneEntity(CSceneContent* pScene) : CSceneEntity(pScene) {}

    uint32_t GetType() const override { return ENTITY_CAMERA; }
    bool Save(CIOStream& stream) override;
    bool Load(CIOStream& stream, bool bAsync) override;
    void SetTransform(const CMatrix44& mTransform) override { m_mTransform = mTransform; }
    void GetTransform(CMatrix44& mTransform) const override { mTransform = m_mTransform; }
    // A box of half size (10, 10, 15) around the transform.
    void GetBoundingBox(CBox3& box) const override;
    // A ray starting inside the box does not hit, so the camera one looks through is never
    // picked.
    bool HitTest(const CVec3& vStart, const CVec3& vDirection, float& fDistance) override;
    bool HitTestExact(const CVec3& vStart, const CVec3& vDirection, float& fDistance) override;

    bool TransferRecord(CSceneRecordIO& io);

    // A new camera at the editor camera's pose, with its lens.
    void InitFromView(const CMatrix44& mPose, float fFov, float fNear, float fFar);
    float GetFov() const { return m_fFov; }
    float GetNear() const { return m_fNear; }
    float GetFar() const { return m_fFar; }
    void SetLens(float fFov, float fNear, float fFar);

private:
    float m_fFov = 50.0f;
    float m_fNear = 2.0f;
    float m_fFar = 500000.0f;
    CMatrix44 m_mTransform;
};

class CGameObjectSceneEntity final : public CSceneEntity
{
public:
    explicit CGameObjectSceneEntity(CSceneContent* pScene) : CSceneEntity(pScene) {}
    ~CGameObjectSceneEntity() override;

    uint32_t GetType() const override { return ENTITY_GAME_OBJECT; }
    bool Save(CIOStream& stream) override;
    bool Load(CIOStream& stream, bool bAsync) override;
    void CollectAssets(IAssetCollector& helper) override;
    void SetTransform(const CMatrix44& mTransform) override;
    void GetTransform(CMatrix44& mTransform) const override { mTransform = m_mTransform; }
    // The mesh's box when it has one, else a box of half the size.
    void GetBoundingBox(CBox3& box) const override;
    bool HitTest(const CVec3& vStart, const CVec3& vDirection, float& fDistance) override;
    bool HitTestExact(const CVec3& vStart, const CVec3& vDirection, float& fDistance) override;
    void SetVisible(bool bVisible) override;
    void SetLayer(int32_t iLayer) override;
    void SetResourceName(const std::string& strName) override { m_strGameObjectFile = strName; }
    std::string GetResourceName() const override { return m_strGameObjectFile; }

    bool TransferRecord(CSceneRecordIO& io);

    // The mesh that shows the object; the entity owns it from here on. The game's tables name
    // it through the object file.
    void SetRenderObject(Kestrin::Ext::CLodMeshRenderObject* pObject);
    Kestrin::Ext::CLodMeshRenderObject* GetRenderObject() const { return m_pRenderObject; }
    const CVec3& GetSize() const { return m_vSize; }
    void SetSize(const CVec3& v) { m_vSize = v; }
    const CVec3& GetColor() const { return m_vColor; }
    void SetColor(const CVec3& v) { m_vColor = v; }
    float GetAnimSpeed() const { return m_fAnimSpeed; }
    uint8_t GetSpawn() const { return m_uSpawn; }
    void SetSpawn(uint8_t u) { m_uSpawn = u; }
    uint8_t GetInShadow() const { return m_uInShadow; }
    void SetInShadow(uint8_t u) { m_uInShadow = u; }
    const std::string& GetGameObjectFile() const { return m_strGameObjectFile; }

private:
    CMatrix44 m_mTransform;
    Kestrin::Ext::CLodMeshRenderObject* m_pRenderObject = nullptr;
    CVec3 m_vSize{40.0f, 40.0f, 40.0f};
    CVec3 m_vColor{1.0f, 1.0f, 1.0f};
    float m_fAnimSpeed = 1.0f / 60.0f;
    uint8_t m_uSpawn = 1;
    uint8_t m_uInShadow = 0;
    std::string m_strGameObjectFile;
};

} // namespace Ovrel
