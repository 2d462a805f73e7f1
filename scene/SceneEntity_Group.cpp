// Groups: membership, moving members along, bounds.
#include "scene/SceneContent.h"
#include "scene/SceneGeometry.h"
#include "scene/SceneGroupEntity.h"

#include <algorithm>

namespace Ovrel
{

namespace
{
// Only these kinds can hold scale; others keep unit axes when a group moves them.
bool CanHoldScale(uint32_t uType)
{
    return uType == ENTITY_STATIC_MESH || uType == ENTITY_SKINNED_MESH || uType == ENTITY_OCCLUDER ||
           uType == ENTITY_ZONE || uType == ENTITY_PORTAL;
}
} // namespace

bool CGroupSceneEntity::TransferRecord(CSceneRecordIO& io)
{
    if (!TransferBase(io))
    {
        return false;
    }
    if (io.Block(TAG_GROUP, GROUP_VERSION) != ESceneBlock::OK)
    {
        io.Fail();
        return false;
    }
    io.Matrix("transform", m_mTransform);
    if (io.Since(101))
    {
        io.U8("isOpen", m_uIsOpen);
    }
    io.I32List("members", m_members);
    return io.Ok();
}

bool CGroupSceneEntity::Save(CIOStream& stream)
{
    return SaveRecord(*this, stream);
}

bool CGroupSceneEntity::Load(CIOStream& stream, bool)
{
    return LoadRecord(*this, stream, [] {});
}

void CGroupSceneEntity::SetTransform(const CMatrix44& mTransform)
{
    // The reader sets every entity's stored matrix again; for a group that must not move
    // the members by a rounding error.
    if (SameBits(mTransform, m_mTransform))
    {
        return;
    }
    CMatrix44 mInverseOld;
    if (!Inverse(m_mTransform, mInverseOld))
    {
        mInverseOld = CMatrix44::Identity();
    }
    CVec3 vScale;
    CMatrix44 mNew = NormalizeAxes(mTransform, vScale);
    for (int i = 0; i < 3; ++i)
    {
        mNew.SetRow(i, mNew.Row(i) * vScale.x);
    }
    CMatrix44 mDelta = mInverseOld * mNew;
    for (int32_t iId : m_members)
    {
        // A file may list a group among the members; groups do not nest, so it stays put.
        CSceneEntity* pMember = m_pScene ? m_pScene->FindById(iId) : nullptr;
        if (!pMember || pMember->GetType() == ENTITY_GROUP)
        {
            continue;
        }
        CMatrix44 mMember;
        pMember->GetTransform(mMember);
        mMember = mMember * mDelta;
        if (!CanHoldScale(pMember->GetType()))
        {
            CVec3 vMemberScale;
            mMember = NormalizeAxes(mMember, vMemberScale);
        }
        pMember->SetTransform(mMember);
    }
    m_mTransform = mNew;
}

void CGroupSceneEntity::GetBoundingBox(CBox3& box) const
{
    box = SceneEmptyBox();
    for (int32_t iId : m_members)
    {
        CSceneEntity* pMember = m_pScene ? m_pScene->FindById(iId) : nullptr;
        if (!pMember || pMember->GetType() == ENTITY_GROUP)
        {
            continue;
        }
        CBox3 memberBox;
        pMember->GetBoundingBox(memberBox);
        if (!memberBox.IsEmpty())
        {
            box.Add(memberBox);
        }
    }
}

bool CGroupSceneEntity::Add(CSceneEntity* pEntity)
{
    if (!pEntity || pEntity == this || pEntity->GetType() == ENTITY_GROUP)
    {
        return false;
    }
    CGroupSceneEntity* pFormer = pEntity->FindParentGroup();
    if (pFormer)
    {
        pFormer->Remove(pEntity);
    }
    if (!Contains(pEntity->GetId()))
    {
        m_members.push_back(pEntity->GetId());
    }
    pEntity->SetGroupId(m_iId);
    return true;
}

void CGroupSceneEntity::Remove(CSceneEntity* pEntity)
{
    if (!pEntity)
    {
        return;
    }
    m_members.erase(std::remove(m_members.begin(), m_members.end(), pEntity->GetId()), m_members.end());
    if (pEntity->GetGroupId() == m_iId)
    {
        pEntity->SetGroupId(0);
    }
}

void CGroupSceneEntity::ReleaseAll()
{
    for (int32_t iId : m_members)
    {
        CSceneEntity* pMember = m_pScene ? m_pScene->FindById(iId) : nullptr;
        if (pMember && pMember->GetGroupId() == m_iId)
        {
            pMember->SetGroupId(0);
        }
    }
    m_members.clear();
}

bool CGroupSceneEntity::Contains(int32_t iId) const
{
    return std::find(m_members.begin(), m_members.end(), iId) != m_members.end();
}

} // namespace Ovrel
