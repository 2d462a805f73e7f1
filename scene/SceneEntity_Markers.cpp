// Locators, triggers, cameras and game objects.
#include "scene/SceneContent.h"
#include "scene/SceneGeometry.h"
#include "scene/SceneMarkerEntities.h"

namespace Ovrel
{

namespace
{
const CVec3 CAMERA_HALF_SIZE{10.0f, 10.0f, 15.0f};

} // namespace

// ---------------------------------------------------------------------------------------
// CLocatorSceneEntity

bool CLocatorSceneEntity::TransferRecord(CSceneRecordIO& io)
{
    if (!TransferBase(io))
    {
        return false;
    }
    if (io.Block(TAG_LOCATOR, LOCATOR_VERSION) != ESceneBlock::OK)
    {
        io.Fail();
        return false;
    }
    io.Matrix("transform", m_mTransform);
    io.Vec3("size", m_vSize);
    if (io.Since(102))
    {
        io.Vec3("color", m_vColor);
    }
    return io.Ok();
}

bool CLocatorSceneEntity::Save(CIOStream& stream)
{
    return SaveRecord(*this, stream);
}

bool CLocatorSceneEntity::Load(CIOStream& stream, bool)
{
    return LoadRecord(*this, stream, [] {});
}

void CLocatorSceneEntity::GetBoundingBox(CBox3& box) const
{
    box = OrientedBoxBounds(m_mTransform, m_vSize * 0.5f);
}

bool CLocatorSceneEntity::HitTest(const CVec3& vStart, const CVec3& vDirection, float& fDistance)
{
    return RayHitsOrientedBox(m_mTransform, m_vSize * 0.5f, vStart, vDirection, true, fDistance);
}

bool CLocatorSceneEntity::HitTestExact(const CVec3& vStart, const CVec3& vDirection, float& fDistance)
{
    return HitTest(vStart, vDirection, fDistance);
}

// ---------------------------------------------------------------------------------------
// CTriggerSceneEntity

bool CTriggerSceneEntity::TransferRecord(CSceneRecordIO& io)
{
    if (!TransferBase(io))
    {
        return false;
    }
    if (io.Block(TAG_TRIGGER, TRIGGER_VERSION) != ESceneBlock::OK)
    {
        io.Fail();
        return false;
    }
    io.Matrix("transform", m_mTransform);
    io.Vec3("size", m_vSize);
    if (io.Since(101))
    {
        io.Vec3("color", m_vColor);
    }
    return io.Ok();
}

bool CTriggerSceneEntity::Save(CIOStream& stream)
{
    return SaveRecord(*this, stream);
}

bool CTriggerSceneEntity::Load(CIOStream& stream, bool)
{
    return LoadRecord(*this, stream, [] {});
}

void CTriggerSceneEntity::GetBoundingBox(CBox3& box) const
{
    box = OrientedBoxBounds(m_mTransform, m_vSize * 0.5f);
}

bool CTriggerSceneEntity::HitTest(const CVec3& vStart, const CVec3& vDirection, float& fDistance)
{
    return RayHitsOrientedBox(m_mTransform, m_vSize * 0.5f, vStart, vDirection, true, fDistance);
}

bool CTriggerSceneEntity::HitTestExact(const CVec3& vStart, const CVec3& vDirection, float& fDistance)
{
    return HitTest(vStart, vDirection, fDistance);
}

// ---------------------------------------------------------------------------------------
// CCameraSceneEntity

bool CCameraSceneEntity::TransferRecord(CSceneRecordIO& io)
{
    if (!TransferBase(io))
    {
        return false;
    }
    if (io.Block(TAG_CAMERA, CAMERA_VERSION) != ESceneBlock::OK)
    {
        io.Fail();
        return false;
    }
    io.Matrix("transform", m_mTransform);
    io.F32("fov", m_fFov);
    io.F32("near", m_fNear);
    io.F32("far", m_fFar);
    return io.Ok();
}

bool CCameraSceneEntity::Save(CIOStream& stream)
{
    return SaveRecord(*this, stream);
}

bool CCameraSceneEntity::Load(CIOStream& stream, bool)
{
    return LoadRecord(*this, stream, [] {});
}

void CCameraSceneEntity::GetBoundingBox(CBox3& box) const
{
    box = OrientedBoxBounds(m_mTransform, CAMERA_HALF_SIZE);
}

bool CCameraSceneEntity::HitTest(const CVec3& vStart, const CVec3& vDirection, float& fDistance)
{
    return RayHitsOrientedBox(m_mTransform, CAMERA_HALF_SIZE, vStart, vDirection, false, fDistance);
}

bool CCameraSceneEntity::HitTestExact(const CVec3& vStart, const CVec3& vDirection, float& fDistance)
{
    return HitTest(vStart, vDirection, fDistance);
}

void CCameraSceneEntity::InitFromView(const CMatrix44& mPose, float fFov, float fNear, float fFar)
{
    SetTransform(mPose);
    SetLens(fFov, fNear, fFar);
}

void CCameraSceneEntity::SetLens(float fFov, float fNear, float fFar)
{
    m_fFov = fFov;
    m_fNear = fNear;
    m_fFar = fFar;
}

// ---------------------------------------------------------------------------------------
// CGameObjectSceneEntity

CGameObjectSceneEntity::~CGameObjectSceneEntity()
{
    SetRenderObject(nullptr);
}

bool CGameObjectSceneEntity::TransferRecord(CSceneRecordIO& io)
{
    if (!TransferBase(io))
    {
        return false;
    }
    if (io.Block(TAG_GAME_OBJECT, GAME_OBJECT_VERSION) != ESceneBlock::OK)
    {
        io.Fail();
        return false;
    }
    io.Matrix("transform", m_mTransform);
    if (io.Since(101))
    {
        io.Vec3("size", m_vSize);
        io.Vec3("color", m_vColor);
    }
    io.U8("spawn", m_uSpawn);
    if (io.Since(102))
    {
        io.U8("inShadow", m_uInShadow);
    }
    io.String("gameObjectFile", m_strGameObjectFile);
    return io.Ok();
}

bool CGameObjectSceneEntity::Save(CIOStream& stream)
{
    return SaveRecord(*this, stream);
}

bool CGameObjectSceneEntity::Load(CIOStream& stream, bool)
{
    return LoadRecord(*this, stream, [] {});
}

void CGameObjectSceneEntity::SetRenderObject(Kestrin::Ext::CLodMeshRenderObject* pObject)
{
    if (m_pRenderObject)
    {
        m_pRenderObject->Release();
    }
    m_pRenderObject = pObject;
    if (m_pRenderObject)
    {
        m_pRenderObject->SetWorldTransform(m_mTransform);
        m_pRenderObject->SetVisible(m_uVisible != 0);
        m_pRenderObject->SetChannelMask(LayerBit(m_iLayer));
    }
}

void CGameObjectSceneEntity::CollectAssets(IAssetCollector& helper)
{
    if (m_pRenderObject)
    {
        helper.AddMesh(m_pRenderObject->GetMeshName());
    }
}

void CGameObjectSceneEntity::SetTransform(const CMatrix44& mTransform)
{
    m_mTransform = mTransform;
    if (m_pRenderObject)
    {
        m_pRenderObject->SetWorldTransform(mTransform);
    }
}

void CGameObjectSceneEntity::GetBoundingBox(CBox3& box) const
{
    box =
        m_pRenderObject ? m_pRenderObject->GetBoundingBox() : OrientedBoxBounds(m_mTransform, m_vSize * 0.5f);
}

bool CGameObjectSceneEntity::HitTest(const CVec3& vStart, const CVec3& vDirection, float& fDistance)
{
    if (m_pRenderObject)
    {
        return m_pRenderObject->HitTest(vStart, vDirection, false, fDistance);
    }
    return RayHitsOrientedBox(m_mTransform, m_vSize * 0.5f, vStart, vDirection, true, fDistance);
}

bool CGameObjectSceneEntity::HitTestExact(const CVec3& vStart, const CVec3& vDirection, float& fDistance)
{
    if (m_pRenderObject)
    {
        return m_pRenderObject->HitTest(vStart, vDirection, true, fDistance);
    }
    return HitTest(vStart, vDirection, fDistance);
}

void CGameObjectSceneEntity::SetVisible(bool bVisible)
{
    CSceneEntity::SetVisible(bVisible);
    if (m_pRenderObject)
    {
        m_pRenderObject->SetVisible(bVisible);
    }
}

void CGameObjectSceneEntity::SetLayer(int32_t iLayer)
{
    CSceneEntity::SetLayer(iLayer);
    if (m_pRenderObject)
    {
        m_pRenderObject->SetChannelMask(LayerBit(iLayer));
    }
}

} // namespace Ovrel
