// Skinned characters placed in a scene: a `.cconfig` character playing an action.
#include "scene/SceneContent.h"
#include "scene/SceneGeometry.h"
#include "scene/SceneMeshEntities.h"

namespace Ovrel
{

CSkinnedMeshSceneEntity::CSkinnedMeshSceneEntity(CSceneContent* pScene) : CSceneEntity(pScene)
{
    m_bBoundsFromEngine = true;
}

CSkinnedMeshSceneEntity::~CSkinnedMeshSceneEntity()
{
    DeleteCharacter();
}

void CSkinnedMeshSceneEntity::DeleteCharacter()
{
    if (!m_pCharacter)
    {
        return;
    }
    Kestrin::Fx::IFxCharacterManager* pManager = m_pScene ? m_pScene->GetCharacterManager() : nullptr;
    if (pManager)
    {
        pManager->DestroyCharacter(m_pCharacter);
    }
    m_pCharacter = nullptr;
}

bool CSkinnedMeshSceneEntity::TransferRecord(CSceneRecordIO& io)
{
    if (!TransferBase(io))
    {
        return false;
    }
    ESceneBlock eBlock = io.Block(TAG_SKIN, SKIN_VERSION);
    if (eBlock != ESceneBlock::OK)
    {
        return eBlock != ESceneBlock::SHORT;
    }
    io.Matrix("transform", m_mTransform);
    io.String("configFile", m_strConfigFile);
    io.String("stakeFile", m_strStakeFile);
    // The fields after the strings stand only behind a configuration, for reader and writer
    // alike, so a character whose `.cconfig` is missing still saves a readable record.
    if (m_strConfigFile.empty())
    {
        return io.Ok();
    }
    TransferRenderBlock(io, m_uVisible, m_render);
    if (io.Since(101))
    {
        io.F32("ambientIntensity", m_fAmbientIntensity);
    }
    if (io.Since(102))
    {
        io.U8("inShadow", m_uInShadow);
        io.F32("startTimeMin", m_fStartTimeMin);
        io.F32("startTimeMax", m_fStartTimeMax);
    }
    if (io.Since(103))
    {
        io.F32("visibleDistance", m_fVisibleDistance);
    }
    if (io.Since(104))
    {
        io.I32("level", m_iLevel);
    }
    if (io.Since(105))
    {
        io.U16("waterRef", m_uWaterRef);
        io.F32("refPower", m_fRefPower);
    }
    return io.Ok();
}

bool CSkinnedMeshSceneEntity::Save(CIOStream& stream)
{
    return SaveRecord(*this, stream);
}

bool CSkinnedMeshSceneEntity::Load(CIOStream& stream, bool)
{
    DeleteCharacter();
    return LoadRecord(*this, stream,
                      [&]
                      {
                          if (!m_strConfigFile.empty())
                          {
                              CreateCharacter(m_strConfigFile);
                          }
                      });
}

bool CSkinnedMeshSceneEntity::CreateCharacter(const std::string& strConfigFile)
{
    DeleteCharacter();
    m_strConfigFile = strConfigFile;
    Kestrin::Fx::IFxCharacterManager* pManager = m_pScene ? m_pScene->GetCharacterManager() : nullptr;
    if (!pManager || strConfigFile.empty())
    {
        return false;
    }
    m_pCharacter = pManager->CreateCharacter(strConfigFile, 0);
    if (!m_pCharacter)
    {
        return false;
    }
    if (!m_strStakeFile.empty())
    {
        m_pCharacter->Play(m_strStakeFile);
    }
    // Characters of one scene should not move in step: each starts at its own time.
    float fOffset = m_fStartTimeMin + m_pScene->NextRandom() * (m_fStartTimeMax - m_fStartTimeMin);
    m_pCharacter->Update(fOffset);
    m_pCharacter->SetWorldTransform(m_mTransform);
    m_pCharacter->GetRenderObject()->SetChannelMask(LayerBit(m_iLayer));
    RefreshVisibility();
    return true;
}

void CSkinnedMeshSceneEntity::RefreshVisibility()
{
    if (m_pCharacter)
    {
        bool bShow = m_uVisible != 0 && m_pScene && m_pScene->GetCharacterQuality() >= m_iLevel;
        m_pCharacter->GetRenderObject()->SetVisible(bShow);
    }
}

void CSkinnedMeshSceneEntity::SetTransform(const CMatrix44& mTransform)
{
    m_mTransform = mTransform;
    if (m_pCharacter)
    {
        m_pCharacter->SetWorldTransform(mTransform);
    }
}

void CSkinnedMeshSceneEntity::GetBoundingBox(CBox3& box) const
{
    box = m_pCharacter ? m_pCharacter->GetRenderObject()->GetBoundingBox() : SceneEmptyBox();
}

bool CSkinnedMeshSceneEntity::HitTest(const CVec3& vStart, const CVec3& vDirection, float& fDistance)
{
    CBox3 box;
    GetBoundingBox(box);
    if (box.IsEmpty())
    {
        return false;
    }
    CMatrix44 mCentre = CMatrix44::Translation(box.Center());
    return RayHitsOrientedBox(mCentre, box.Extent() * 0.5f, vStart, vDirection, true, fDistance);
}

bool CSkinnedMeshSceneEntity::HitTestExact(const CVec3& vStart, const CVec3& vDirection, float& fDistance)
{
    return HitTest(vStart, vDirection, fDistance);
}

void CSkinnedMeshSceneEntity::Update(float, float fDelta)
{
    if (m_pCharacter)
    {
        m_pCharacter->Update(fDelta);
    }
}

void CSkinnedMeshSceneEntity::SetVisible(bool bVisible)
{
    CSceneEntity::SetVisible(bVisible);
    RefreshVisibility();
}

void CSkinnedMeshSceneEntity::SetLayer(int32_t iLayer)
{
    CSceneEntity::SetLayer(iLayer);
    if (m_pCharacter)
    {
        m_pCharacter->GetRenderObject()->SetChannelMask(LayerBit(iLayer));
    }
}

void CSkinnedMeshSceneEntity::SetResourceName(const std::string& strName)
{
    CreateCharacter(strName);
}

void CSkinnedMeshSceneEntity::SetStakeFile(const std::string& strStake)
{
    m_strStakeFile = strStake;
    if (m_pCharacter && !strStake.empty())
    {
        m_pCharacter->Play(strStake);
    }
}

void CSkinnedMeshSceneEntity::SetLevel(int32_t iLevel)
{
    m_iLevel = iLevel;
    RefreshVisibility();
}

void CSkinnedMeshSceneEntity::SetStartTime(float fMin, float fMax)
{
    m_fStartTimeMin = fMin;
    m_fStartTimeMax = fMax;
}

} // namespace Ovrel
