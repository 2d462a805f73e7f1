// Occluders, portals and zones.
#include "scene/SceneContent.h"
#include "scene/SceneGeometry.h"
#include "scene/SceneVolumeEntities.h"

namespace Ovrel
{

using Kestrin::Ext::CRenderVolumeGeometry;

void TransferVolumeGeometry(CSceneRecordIO& io, CRenderVolumeGeometry& geometry)
{
    io.Vec3List("vertices", geometry.vertices);
    io.U16List("indices", geometry.indices);
    io.EdgeList("edges", geometry.edges);
}

CBox3 VolumeBounds(const CRenderVolumeGeometry& geometry, const CMatrix44& mTransform)
{
    if (geometry.vertices.empty())
    {
        return SceneEmptyBox();
    }
    CBox3 local = SceneEmptyBox();
    for (const CVec3& v : geometry.vertices)
    {
        local.Add(v);
    }
    return TransformBox(local, mTransform);
}

// ---------------------------------------------------------------------------------------
// COccluderSceneEntity

bool COccluderSceneEntity::TransferRecord(CSceneRecordIO& io)
{
    if (!TransferBase(io))
    {
        return false;
    }
    if (io.Block(TAG_OCCLUDER, OCCLUDER_VERSION) != ESceneBlock::OK)
    {
        io.Fail();
        return false;
    }
    m_volume.Transfer(io, [&] { io.U8("active", m_uActive); });
    return io.Ok();
}

bool COccluderSceneEntity::Save(CIOStream& stream)
{
    return SaveRecord(*this, stream);
}

bool COccluderSceneEntity::Load(CIOStream& stream, bool)
{
    m_volume.Delete();
    return LoadRecord(*this, stream, [this] { CreateOccluder(); });
}

void COccluderSceneEntity::CreateOccluder()
{
    m_volume.Create(m_pScene ? m_pScene->GetRenderWorld() : nullptr,
                    &Kestrin::Ext::CRenderWorld::CreateOccluder, m_uActive != 0);
}

void COccluderSceneEntity::SetGeometry(const CRenderVolumeGeometry& geometry)
{
    m_volume.geometry = geometry;
    m_volume.uHasShape = 1;
    CreateOccluder();
}

void COccluderSceneEntity::SetActive(bool bActive)
{
    m_uActive = bActive ? 1 : 0;
    if (m_volume.pObject)
    {
        m_volume.pObject->SetActive(bActive);
    }
}

// ---------------------------------------------------------------------------------------
// CPortalSceneEntity

bool CPortalSceneEntity::TransferRecord(CSceneRecordIO& io)
{
    if (!TransferBase(io))
    {
        return false;
    }
    if (io.Block(TAG_PORTAL, PORTAL_VERSION) != ESceneBlock::OK)
    {
        io.Fail();
        return false;
    }
    m_volume.Transfer(io,
                      [&]
                      {
                          io.U8("active", m_uActive);
                          io.U8("passLight", m_uPassLight);
                      });
    return io.Ok();
}

bool CPortalSceneEntity::Save(CIOStream& stream)
{
    return SaveRecord(*this, stream);
}

bool CPortalSceneEntity::Load(CIOStream& stream, bool)
{
    m_volume.Delete();
    return LoadRecord(*this, stream, [this] { CreatePortal(); });
}

void CPortalSceneEntity::CreatePortal()
{
    if (m_volume.Create(m_pScene ? m_pScene->GetRenderWorld() : nullptr,
                        &Kestrin::Ext::CRenderWorld::CreatePortal, m_uActive != 0))
    {
        m_volume.pObject->SetPassLight(m_uPassLight != 0);
    }
}

void CPortalSceneEntity::SetGeometry(const CRenderVolumeGeometry& geometry)
{
    m_volume.geometry = geometry;
    m_volume.uHasShape = 1;
    CreatePortal();
}

void CPortalSceneEntity::SetActive(bool bActive)
{
    m_uActive = bActive ? 1 : 0;
    if (m_volume.pObject)
    {
        m_volume.pObject->SetActive(bActive);
    }
}

void CPortalSceneEntity::SetPassLight(bool bPassLight)
{
    m_uPassLight = bPassLight ? 1 : 0;
    if (m_volume.pObject)
    {
        m_volume.pObject->SetPassLight(bPassLight);
    }
}

// ---------------------------------------------------------------------------------------
// CZoneSceneEntity

CZoneSceneEntity::CZoneSceneEntity(CSceneContent* pScene) : CSceneEntity(pScene)
{
    // The ambient pairs start as a new environment's do.
    for (int i = 0; i < 6; i += 2)
    {
        m_avColors[i] = {0.3f, 0.3f, 0.3f};
        m_avColors[i + 1] = {0.05f, 0.05f, 0.05f};
    }
}

bool CZoneSceneEntity::TransferRecord(CSceneRecordIO& io)
{
    if (!TransferBase(io))
    {
        return false;
    }
    if (io.Block(TAG_ZONE, ZONE_VERSION) != ESceneBlock::OK)
    {
        io.Fail();
        return false;
    }
    m_volume.Transfer(io,
                      [&]
                      {
                          io.Vec3("color1", m_avColors[0]);
                          io.Vec3("color2", m_avColors[1]);
                          if (io.Since(101))
                          {
                              io.Vec3("color3", m_avColors[2]);
                              io.Vec3("color4", m_avColors[3]);
                              io.Vec3("color5", m_avColors[4]);
                              io.Vec3("color6", m_avColors[5]);
                          }
                      });
    return io.Ok();
}

bool CZoneSceneEntity::Save(CIOStream& stream)
{
    return SaveRecord(*this, stream);
}

bool CZoneSceneEntity::Load(CIOStream& stream, bool)
{
    m_volume.Delete();
    return LoadRecord(*this, stream, [this] { CreateZone(); });
}

void CZoneSceneEntity::CreateZone()
{
    if (m_volume.Create(m_pScene ? m_pScene->GetRenderWorld() : nullptr,
                        &Kestrin::Ext::CRenderWorld::CreateZone, true))
    {
        m_volume.pObject->SetColors(m_avColors);
    }
}

void CZoneSceneEntity::SetGeometry(const CRenderVolumeGeometry& geometry)
{
    m_volume.geometry = geometry;
    m_volume.uHasShape = 1;
    CreateZone();
}

void CZoneSceneEntity::SetColor(int32_t iIndex, const CVec3& vColor)
{
    if (iIndex < 0 || iIndex >= 6)
    {
        return;
    }
    m_avColors[iIndex] = vColor;
    if (m_volume.pObject)
    {
        m_volume.pObject->SetColors(m_avColors);
    }
}

} // namespace Ovrel
