#include "scene/SceneEntity.h"

#include "scene/SceneContent.h"
#include "scene/SceneGeometry.h"
#include "scene/SceneGroupEntity.h"

namespace Ovrel
{

CSceneEntity::CSceneEntity(CSceneContent* pScene) : m_pScene(pScene) {}

CSceneEntity::~CSceneEntity() = default;

uint32_t CSceneEntity::GetType() const
{
    return ENTITY_PLAIN;
}

bool CSceneEntity::Save(CIOStream& stream)
{
    return SaveRecord(*this, stream);
}

bool CSceneEntity::Load(CIOStream& stream, bool)
{
    return LoadRecord(*this, stream, [] {});
}

bool CSceneEntity::IsLoading() const
{
    return false;
}

void CSceneEntity::OnLoaded() {}

void CSceneEntity::CollectAssets(IAssetCollector&) {}

void CSceneEntity::SetTransform(const CMatrix44&) {}

void CSceneEntity::GetTransform(CMatrix44& mTransform) const
{
    mTransform = CMatrix44::Identity();
}

void CSceneEntity::GetBoundingBox(CBox3& box) const
{
    box = SceneEmptyBox();
}

bool CSceneEntity::HitTest(const CVec3&, const CVec3&, float&)
{
    return false;
}

bool CSceneEntity::HitTestExact(const CVec3&, const CVec3&, float&)
{
    return false;
}

void CSceneEntity::Update(float, float) {}

void CSceneEntity::DrawEditor(Kestrin::Plotter::IPlotter3D*, Kestrin::Plotter::IPlotter2D*) {}

void CSceneEntity::SetVisible(bool bVisible)
{
    m_uVisible = bVisible ? 1 : 0;
}

bool CSceneEntity::IsVisible() const
{
    return m_uVisible != 0;
}

void CSceneEntity::SetLayer(int32_t iLayer)
{
    m_iLayer = iLayer;
}

void CSceneEntity::SetResourceName(const std::string&) {}

std::string CSceneEntity::GetResourceName() const
{
    return std::string();
}

void CSceneEntity::GetHitNormal(CVec3&) const {}

void CSceneEntity::SetId(int32_t iId)
{
    m_iId = iId;
    if (m_pScene)
    {
        m_pScene->OnEntityIdsChanged();
    }
}

CGroupSceneEntity* CSceneEntity::FindParentGroup() const
{
    if (m_iGroupId == 0 || !m_pScene)
    {
        return nullptr;
    }
    CSceneEntity* pEntity = m_pScene->FindById(m_iGroupId);
    if (!pEntity || pEntity->GetType() != ENTITY_GROUP)
    {
        return nullptr;
    }
    return static_cast<CGroupSceneEntity*>(pEntity);
}

void CSceneEntity::SetParentGroup(const CGroupSceneEntity* pGroup)
{
    m_iGroupId = pGroup ? pGroup->GetId() : 0;
}

bool CSceneEntity::IsBoundsKnown() const
{
    if (!m_bBoundsFromEngine)
    {
        return true;
    }
    CBox3 box;
    GetBoundingBox(box);
    return !box.IsEmpty();
}

bool CSceneEntity::TransferRecord(CSceneRecordIO& io)
{
    return TransferBase(io);
}

bool CSceneEntity::TransferBase(CSceneRecordIO& io)
{
    if (io.Block(TAG_BASE, BASE_VERSION) != ESceneBlock::OK)
    {
        io.Fail();
        return false;
    }
    io.String("name", m_strName);
    io.I32("id", m_iId);
    if (io.IsReading() && m_pScene)
    {
        m_pScene->OnEntityIdsChanged();
    }
    if (io.Since(101))
    {
        io.I32("groupId", m_iGroupId);
    }
    if (io.Since(102))
    {
        io.I32("layer", m_iLayer);
    }
    return io.Ok();
}

void CSceneEntity::FinishLoad()
{
    CMatrix44 mTransform;
    GetTransform(mTransform);
    SetTransform(mTransform);
    SetLayer(m_iLayer);
}

} // namespace Ovrel
