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

class COccluderSceneEntity final : public CSceneEntity
{
public:
    explicit COccluderSceneEntity(CSceneContent* pScene) : CSceneEntity(pScene) {}
    ~COccluderSceneEntity() override;

    uint32_t GetType() const override { return ENTITY_OCCLUDER; }
    bool Save(CIOStream& stream) override;
    bool Load(CIOStream& stream, bool bAsync) override;
    void SetTransform(const CMatrix44& mTransform) override;
    void GetTransform(CMatrix44& mTransform) const override { mTransform = m_mTransform; }
    void GetBoundingBox(CBox3& box) const override { box = VolumeBounds(m_geometry, m_mTransform); }

    bool TransferRecord(CSceneRecordIO& io);

    // Gives the entity its shape (and an engine occluder when a render world exists).
    void SetGeometry(const Kestrin::Ext::CRenderVolumeGeometry& geometry);
    bool HasShape() const { return m_uHasShape != 0; }
    const Kestrin::Ext::CRenderVolumeGeometry& GetGeometry() const { return m_geometry; }
    uint8_t GetActive() const { return m_uActive; }
    void SetActive(bool bActive);
    Kestrin::Ext::CBaseRenderOccluder* GetOccluder() const { return m_pOccluder; }

private:
    void CreateOccluder();
    void DeleteOccluder();

    CMatrix44 m_mTransform;
    Kestrin::Ext::CBaseRenderOccluder* m_pOccluder = nullptr;
    uint8_t m_uHasShape = 0;
    uint8_t m_uActive = 1;
    Kestrin::Ext::CRenderVolumeGeometry m_geometry;
};

class CPortalSceneEntity final : public CSceneEntity
{
public:
    explicit CPortalSceneEntity(CSceneContent* pScene) : CSceneEntity(pScene) {}
    ~CPortalSceneEntity() override;

    uint32_t GetType() const override { return ENTITY_PORTAL; }
    bool Save(CIOStream& stream) override;
    bool Load(CIOStream& stream, bool bAsync) override;
    void SetTransform(const CMatrix44& mTransform) override;
    void GetTransform(CMatrix44& mTransform) const override { mTransform = m_mTransform; }
    void GetBoundingBox(CBox3& box) const override { box = VolumeBounds(m_geometry, m_mTransform); }

    bool TransferRecord(CSceneRecordIO& io);

    void SetGeometry(const Kestrin::Ext::CRenderVolumeGeometry& geometry);
    bool HasShape() const { return m_uHasShape != 0; }
    const Kestrin::Ext::CRenderVolumeGeometry& GetGeometry() const { return m_geometry; }
    uint8_t GetActive() const { return m_uActive; }
    void SetActive(bool bActive);
    uint8_t GetPassLight() const { return m_uPassLight; }
    void SetPassLight(bool bPassLight);
    Kestrin::Ext::CBaseRenderPortal* GetPortal() const { return m_pPortal; }

private:
    void CreatePortal();
    void DeletePortal();

    CMatrix44 m_mTransform;
    Kestrin::Ext::CBaseRenderPortal* m_pPortal = nullptr;
    uint8_t m_uHasShape = 0;
    uint8_t m_uActive = 1;
    uint8_t m_uPassLight = 0;
    Kestrin::Ext::CRenderVolumeGeometry m_geometry;
};

class CZoneSceneEntity final : public CSceneEntity
{
public:
    explicit CZoneSceneEntity(CSceneContent* pScene);
    ~CZoneSceneEntity() override;

    uint32_t GetType() const override { return ENTITY_ZONE; }
    bool Save(CIOStream& stream) override;
    bool Load(CIOStream& stream, bool bAsync) override;
    void SetTransform(const CMatrix44& mTransform) override;
    void GetTransform(CMatrix44& mTransform) const override { mTransform = m_mTransform; }
    void GetBoundingBox(CBox3& box) const override { box = VolumeBounds(m_geometry, m_mTransform); }

    bool TransferRecord(CSceneRecordIO& io);

    void SetGeometry(const Kestrin::Ext::CRenderVolumeGeometry& geometry);
    bool HasShape() const { return m_uHasShape != 0; }
    const Kestrin::Ext::CRenderVolumeGeometry& GetGeometry() const { return m_geometry; }
    // "Color1" to "Color6": three pairs of ambient colours.
    const CVec3& GetColor(int32_t iIndex) const { return m_avColors[iIndex]; }
    void SetColor(int32_t iIndex, const CVec3& vColor);
    Kestrin::Ext::CBaseRenderZone* GetZone() const { return m_pZone; }

private:
    void CreateZone();
    void DeleteZone();

    CMatrix44 m_mTransform;
    Kestrin::Ext::CBaseRenderZone* m_pZone = nullptr;
    uint8_t m_uHasShape = 0;
    CVec3 m_avColors[6];
    Kestrin::Ext::CRenderVolumeGeometry m_geometry;
};

} // namespace Ovrel
