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

namespace
{
// The shared steps of making a volume's engine object.
void PushVolume(Kestrin::Ext::CRenderVolume& volume, const CRenderVolumeGeometry& geometry,
                const CMatrix44& mTransform, uint8_t uActive)
{
    volume.SetGeometry(geometry);
    volume.SetWorldTransform(mTransform);
    volume.SetActive(uActive != 0);
}

} // namespace

// ---------------------------------------------------------------------------------------
// COccluderSceneEntity

COccluderSceneEntity::~COccluderSceneEntity()
{
    DeleteOccluder();
}

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
    io.Matrix("transform", m_mTransform);
    io.U8("hasShape", m_uHasShape);
    if (m_uHasShape)
    {
        io.U8("active", m_uActive);
        TransferVolumeGeometry(io, m_geometry);
    }
    return io.Ok();
}

bool COccluderSceneEntity::Save(CIOStream& stream)
{
    return SaveRecord(*this, stream);
}

bool COccluderSceneEntity::Load(CIOStream& stream, bool)
{
    DeleteOccluder();
    return LoadRecord(*this, stream, [&] { CreateOccluder(); });
}

void COccluderSceneEntity::CreateOccluder()
{
    DeleteOccluder();
    Kestrin::Ext::CRenderWorld* pWorld = m_pScene ? m_pScene->GetRenderWorld() : nullptr;
    if (!pWorld || !m_uHasShape)
    {
        return;
    }
    m_pOccluder = pWorld->CreateOccluder();
    if (m_pOccluder)
    {
        PushVolume(*m_pOccluder, m_geometry, m_mTransform, m_uActive);
    }
}

void COccluderSceneEntity::DeleteOccluder()
{
    if (m_pOccluder)
    {
        m_pOccluder->Release();
        m_pOccluder = nullptr;
    }
}

void COccluderSceneEntity::SetGeometry(const CRenderVolumeGeometry& geometry)
{
    m_geometry = geometry;
    m_uHasShape = 1;
    CreateOccluder();
}

void COccluderSceneEntity::SetActive(bool bActive)
{
    m_uActive = bActive ? 1 : 0;
    if (m_pOccluder)
    {
        m_pOccluder->SetActive(bActive);
    }
}

void COccluderSceneEntity::SetTransform(const CMatrix44& mTransform)
{
    m_mTransform = mTransform;
    if (m_pOccluder)
    {
        m_pOccluder->SetWorldTransform(mTransform);
    }
}

// ---------------------------------------------------------------------------------------
// CPortalSceneEntity

CPortalSceneEntity::~CPortalSceneEntity()
{
    DeletePortal();
}

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
    io.Matrix("transform", m_mTransform);
    io.U8("hasShape", m_uHasShape);
    if (m_uHasShape)
    {
        io.U8("active", m_uActive);
        io.U8("passLight", m_uPassLight);
        TransferVolumeGeometry(io, m_geometry);
    }
    return io.Ok();
}

bool CPortalSceneEntity::Save(CIOStream& stream)
{
    return SaveRecord(*this, stream);
}

bool CPortalSceneEntity::Load(CIOStream& stream, bool)
{
    DeletePortal();
    return LoadRecord(*this, stream, [&] { CreatePortal(); });
}

void CPortalSceneEntity::CreatePortal()
{
    DeletePortal();
    Kestrin::Ext::CRenderWorld* pWorld = m_pScene ? m_pScene->GetRenderWorld() : nullptr;
    if (!pWorld || !m_uHasShape)
    {
        return;
    }
    m_pPortal = pWorld->CreatePortal();
    if (m_pPortal)
    {
        PushVolume(*m_pPortal, m_geometry, m_mTransform, m_uActive);
        m_pPortal->SetPassLight(m_uPassLight != 0);
    }
}

void CPortalSceneEntity::DeletePortal()
{
    if (m_pPortal)
    {
        m_pPortal->Release();
        m_pPortal = nullptr;
    }
}

void CPortalSceneEntity::SetGeometry(const CRenderVolumeGeometry& geometry)
{
    m_geometry = geometry;
    m_uHasShape = 1;
    CreatePortal();
}

void CPortalSceneEntity::SetActive(bool bActive)
{
    m_uActive = bActive ? 1 : 0;
    if (m_pPortal)
    {
        m_pPortal->SetActive(bActive);
    }
}

void CPortalSceneEntity::SetPassLight(bool bPassLight)
{
    m_uPassLight = bPassLight ? 1 : 0;
    if (m_pPortal)
    {
        m_pPortal->SetPassLight(bPassLight);
    }
}

void CPortalSceneEntity::SetTransform(const CMatrix44& mTransform)
{
    m_mTransform = mTransform;
    if (m_pPortal)
    {
        m_pPortal->SetWorldTransform(mTransform);
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

CZoneSceneEntity::~CZoneSceneEntity()
{
    DeleteZone();
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
    io.Matrix("transform", m_mTransform);
    io.U8("hasShape", m_uHasShape);
    if (m_uHasShape)
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
        TransferVolumeGeometry(io, m_geometry);
    }
    return io.Ok();
}

bool CZoneSceneEntity::Save(CIOStream& stream)
{
    return SaveRecord(*this, stream);
}

bool CZoneSceneEntity::Load(CIOStream& stream, bool)
{
    DeleteZone();
    return LoadRecord(*this, stream, [&] { CreateZone(); });
}

void CZoneSceneEntity::CreateZone()
{
    DeleteZone();
    Kestrin::Ext::CRenderWorld* pWorld = m_pScene ? m_pScene->GetRenderWorld() : nullptr;
    if (!pWorld || !m_uHasShape)
    {
        return;
    }
    m_pZone = pWorld->CreateZone();
    if (m_pZone)
    {
        PushVolume(*m_pZone, m_geometry, m_mTransform, 1);
        m_pZone->SetColors(m_avColors);
    }
}

void CZoneSceneEntity::DeleteZone()
{
    if (m_pZone)
    {
        m_pZone->Release();
        m_pZone = nullptr;
    }
}

void CZoneSceneEntity::SetGeometry(const CRenderVolumeGeometry& geometry)
{
    m_geometry = geometry;
    m_uHasShape = 1;
    CreateZone();
}

void CZoneSceneEntity::SetColor(int32_t iIndex, const CVec3& vColor)
{
    if (iIndex < 0 || iIndex >= 6)
    {
        return;
    }
    m_avColors[iIndex] = vColor;
    if (m_pZone)
    {
        m_pZone->SetColors(m_avColors);
    }
}

void CZoneSceneEntity::SetTransform(const CMatrix44& mTransform)
{
    m_mTransform = mTransform;
    if (m_pZone)
    {
        m_pZone->SetWorldTransform(mTransform);
    }
}

} // namespace Ovrel
