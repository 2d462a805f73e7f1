// Occluders, portals and zones: polygon volumes that visibility uses. Each keeps its shape
// (vertices, triangle indices, outline edges) and hands it to its engine object.
#pragma once

#include "scene/SceneEntity.h"

#include "engine/renderer/RenderWorld.h"

#include <cstdint>

namespace Ovrel
{

// The geometry part of OCC, PORT and ZONE records.
void TransferVolumeGeometry(CSceneRecordIO& io, Kestrin::Ext::CRenderVolumeGeometry& geometry);
// The world box of the geometry's vertices; empty without vertices.
CBox3 VolumeBounds(const Kestrin::Ext::CRenderVolumeGeometry& geometry, const CMatrix44& mTransform);

// What the three kinds share: the transform, the shape, and the engine object (the world's
// occluder, portal or zone) made from them.
template <class TObject>
class CSceneVolumeParts
{
public:
    CSceneVolumeParts() = default;
    ~CSceneVolumeParts() { Delete(); }
    CSceneVolumeParts(const CSceneVolumeParts&) = delete;
    CSceneVolumeParts& operator=(const CSceneVolumeParts&) = delete;

    // A new engine object from the world's factory with the shape, transform and activity, in
    // place of the old one; none without a world or a shape.
    TObject* Create(Kestrin::Ext::CRenderWorld* pWorld, TObject* (Kestrin::Ext::CRenderWorld::*fnCreate)(),
                    bool bActive)
    {
        Delete();
        if (pWorld && uHasShape)
        {
            pObject = (pWorld->*fnCreate)();
        }
        if (pObject)
        {
            pObject->SetGeometry(geometry);
            pObject->SetWorldTransform(mTransform);
            pObject->SetActive(bActive);
        }
        return pObject;
    }
    void Delete()
    {
        if (pObject)
        {
            pObject->Release();
            pObject = nullptr;
        }
    }
    void SetTransform(const CMatrix44& mNewTransform)
    {
        mTransform = mNewTransform;
        if (pObject)
        {
            pObject->SetWorldTransform(mNewTransform);
        }
    }
    // The record's transform, shape flag and, with a shape, extra fields (fnBeforeGeometry)
    // then the geometry.
    template <class FFields>
    void Transfer(CSceneRecordIO& io, FFields fnBeforeGeometry)
    {
        io.Matrix("transform", mTransform);
        io.U8("hasShape", uHasShape);
        if (uHasShape)
        {
            fnBeforeGeometry();
            TransferVolumeGeometry(io, geometry);
        }
    }

    CMatrix44 mTransform;
    TObject* pObject = nullptr;
    uint8_t uHasShape = 0;
    Kestrin::Ext::CRenderVolumeGeometry geometry;
};

class COccluderSceneEntity final : public CSceneEntity
{
public:
    explicit COccluderSceneEntity(CSceneContent* pScene) : CSceneEntity(pScene) {}
    ~COccluderSceneEntity() override = default;

    uint32_t GetType() const override { return ENTITY_OCCLUDER; }
    bool Save(CIOStream& stream) override;
    bool Load(CIOStream& stream, bool bAsync) override;
    void SetTransform(const CMatrix44& mTransform) override { m_volume.SetTransform(mTransform); }
    void GetTransform(CMatrix44& mTransform) const override { mTransform = m_volume.mTransform; }
    void GetBoundingBox(CBox3& box) const override
    {
        box = VolumeBounds(m_volume.geometry, m_volume.mTransform);
    }

    bool TransferRecord(CSceneRecordIO& io);

    // Gives the entity its shape (and an engine occluder when a render world exists).
    void SetGeometry(const Kestrin::Ext::CRenderVolumeGeometry& geometry);
    bool HasShape() const { return m_volume.uHasShape != 0; }
    const Kestrin::Ext::CRenderVolumeGeometry& GetGeometry() const { return m_volume.geometry; }
    uint8_t GetActive() const { return m_uActive; }
    void SetActive(bool bActive);
    Kestrin::Ext::CBaseRenderOccluder* GetOccluder() const { return m_volume.pObject; }

private:
    void CreateOccluder();

    CSceneVolumeParts<Kestrin::Ext::CBaseRenderOccluder> m_volume;
    uint8_t m_uActive = 1;
};

class CPortalSceneEntity final : public CSceneEntity
{
public:
    explicit CPortalSceneEntity(CSceneContent* pScene) : CSceneEntity(pScene) {}
    ~CPortalSceneEntity() override = default;

    uint32_t GetType() const override { return ENTITY_PORTAL; }
    bool Save(CIOStream& stream) override;
    bool Load(CIOStream& stream, bool bAsync) override;
    void SetTransform(const CMatrix44& mTransform) override { m_volume.SetTransform(mTransform); }
    void GetTransform(CMatrix44& mTransform) const override { mTransform = m_volume.mTransform; }
    void GetBoundingBox(CBox3& box) const override
    {
        box = VolumeBounds(m_volume.geometry, m_volume.mTransform);
    }

    bool TransferRecord(CSceneRecordIO& io);

    void SetGeometry(const Kestrin::Ext::CRenderVolumeGeometry& geometry);
    bool HasShape() const { return m_volume.uHasShape != 0; }
    const Kestrin::Ext::CRenderVolumeGeometry& GetGeometry() const { return m_volume.geometry; }
    uint8_t GetActive() const { return m_uActive; }
    void SetActive(bool bActive);
    uint8_t GetPassLight() const { return m_uPassLight; }
    void SetPassLight(bool bPassLight);
    Kestrin::Ext::CBaseRenderPortal* GetPortal() const { return m_volume.pObject; }

private:
    void CreatePortal();

    CSceneVolumeParts<Kestrin::Ext::CBaseRenderPortal> m_volume;
    uint8_t m_uActive = 1;
    uint8_t m_uPassLight = 0;
};

class CZoneSceneEntity final : public CSceneEntity
{
public:
    explicit CZoneSceneEntity(CSceneContent* pScene);
    ~CZoneSceneEntity() override = default;

    uint32_t GetType() const override { return ENTITY_ZONE; }
    bool Save(CIOStream& stream) override;
    bool Load(CIOStream& stream, bool bAsync) override;
    void SetTransform(const CMatrix44& mTransform) override { m_volume.SetTransform(mTransform); }
    void GetTransform(CMatrix44& mTransform) const override { mTransform = m_volume.mTransform; }
    void GetBoundingBox(CBox3& box) const override
    {
        box = VolumeBounds(m_volume.geometry, m_volume.mTransform);
    }

    bool TransferRecord(CSceneRecordIO& io);

    void SetGeometry(const Kestrin::Ext::CRenderVolumeGeometry& geometry);
    bool HasShape() const { return m_volume.uHasShape != 0; }
    const Kestrin::Ext::CRenderVolumeGeometry& GetGeometry() const { return m_volume.geometry; }
    // "Color1" to "Color6": three pairs of ambient colours.
    const CVec3& GetColor(int32_t iIndex) const { return m_avColors[iIndex]; }
    void SetColor(int32_t iIndex, const CVec3& vColor);
    Kestrin::Ext::CBaseRenderZone* GetZone() const { return m_volume.pObject; }

private:
    void CreateZone();

    CSceneVolumeParts<Kestrin::Ext::CBaseRenderZone> m_volume;
    CVec3 m_avColors[6];
};

} // namespace Ovrel
