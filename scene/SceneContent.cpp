// CSceneContent: services, the entity list and its look-up, the bounding box.
#include "scene/SceneContent.h"

#include "scene/SceneClassDesc.h"
#include "scene/SceneEnvironmentEntity.h"
#include "scene/SceneGeometry.h"
#include "scene/SceneGroupEntity.h"
#include "scene/SceneMeshEntities.h"

#include <algorithm>

namespace Ovrel
{

CSceneContent::CSceneContent() : m_boxBounds(SceneEmptyBox()) {}

CSceneContent::~CSceneContent()
{
    Clear();
}

void CSceneContent::SetServices(Kestrin::Ext::CRenderWorld* pRenderWorld,
                                Kestrin::Physics::CPhysicsWorld* pPhysicsWorld,
                                Kestrin::Audio::IAudioDevice* pAudioDevice, Kestrin::Fx::CFxPlayer* pFxPlayer,
                                Kestrin::Fx::IFxCharacterManager* pCharacters, bool bHeadless)
{
    m_pRenderWorld = pRenderWorld;
    m_pPhysicsWorld = pPhysicsWorld;
    m_pAudioDevice = pAudioDevice;
    m_pFxPlayer = pFxPlayer;
    m_pCharacters = pCharacters;
    m_bHeadless = bHeadless;
}

void CSceneContent::SetCharacterQuality(int32_t iQuality)
{
    m_iCharacterQuality = iQuality;
    for (CSceneEntity* pEntity : m_entities)
    {
        if (pEntity->GetType() == ENTITY_SKINNED_MESH)
        {
            static_cast<CSkinnedMeshSceneEntity*>(pEntity)->RefreshVisibility();
        }
    }
}

float CSceneContent::NextRandom()
{
    m_uRandom = m_uRandom * 0x343FDu + 0x269EC3u;
    return static_cast<float>((m_uRandom >> 16) & 0x7FFF) / 32768.0f;
}

CSceneEntity* CSceneContent::CreateEntity(uint32_t uType, int32_t iId)
{
    CSceneEntity* pEntity = CSceneClassRegistry::Create(uType, this);
    if (!pEntity)
    {
        return nullptr;
    }
    pEntity->SetId(iId != 0 ? iId : AllocateId());
    m_entities.push_back(pEntity);
    if (IsUpdated(uType))
    {
        m_updateList.push_back(pEntity);
    }
    m_bIndexDirty = true;
    return pEntity;
}

int32_t CSceneContent::AllocateId()
{
    m_iNextEntityId = std::max(FollowingEntityId(m_iNextEntityId), 1);
    return m_iNextEntityId;
}

void CSceneContent::Unlist(CSceneEntity* pEntity)
{
    m_entities.erase(std::remove(m_entities.begin(), m_entities.end(), pEntity), m_entities.end());
    m_updateList.erase(std::remove(m_updateList.begin(), m_updateList.end(), pEntity), m_updateList.end());
    m_pending.erase(std::remove(m_pending.begin(), m_pending.end(), pEntity), m_pending.end());
    if (pEntity == m_pEnvironment)
    {
        m_pEnvironment = nullptr;
    }
    m_bIndexDirty = true;
}

bool CSceneContent::RemoveEntity(CSceneEntity* pEntity)
{
    if (!pEntity || std::find(m_entities.begin(), m_entities.end(), pEntity) == m_entities.end())
    {
        return false;
    }
    if (pEntity->GetType() == ENTITY_GROUP)
    {
        static_cast<CGroupSceneEntity*>(pEntity)->ReleaseAll();
    }
    CGroupSceneEntity* pGroup = pEntity->FindParentGroup();
    if (pGroup)
    {
        pGroup->Remove(pEntity);
    }
    Unlist(pEntity);
    delete pEntity;
    return true;
}

void CSceneContent::Clear()
{
    // Engine objects go before the tables whose textures they may show.
    std::vector<CSceneEntity*> entities;
    entities.swap(m_entities);
    for (CSceneEntity* pEntity : entities)
    {
        delete pEntity;
    }
    m_updateList.clear();
    m_pending.clear();
    m_index.clear();
    m_bIndexDirty = true;
    m_iNextEntityId = 0;
    m_pEnvironment = nullptr;
    m_bNeedsResave = false;
    m_lightMaps.Release(m_pTextures);
    m_colorLightMaps.Release(m_pTextures);
    m_boxBounds = SceneEmptyBox();
    m_bSwapBytes = false;
    m_iFileVersion = 0;
}

void CSceneContent::RebuildIndex() const
{
    m_index.clear();
    m_index.reserve(m_entities.size());
    for (CSceneEntity* pEntity : m_entities)
    {
        // emplace keeps the first: the first in list order wins, as a scan would find it.
        m_index.emplace(pEntity->GetId(), pEntity);
    }
    m_bIndexDirty = false;
}

CSceneEntity* CSceneContent::FindById(int32_t iId) const
{
    if (iId == 0)
    {
        return nullptr;
    }
    if (m_bIndexDirty)
    {
        RebuildIndex();
    }
    auto it = m_index.find(iId);
    if (it != m_index.end() && it->second->GetId() != iId)
    {
        // An id changed behind the index's back: look again over a fresh index.
        RebuildIndex();
        it = m_index.find(iId);
    }
    return it == m_index.end() ? nullptr : it->second;
}

CSceneEntity* CSceneContent::GetEntity(int32_t iIndex) const
{
    if (iIndex < 0 || iIndex >= static_cast<int32_t>(m_entities.size()))
    {
        return nullptr;
    }
    return m_entities[static_cast<size_t>(iIndex)];
}

CBox3 CSceneContent::ComputeBoundingBox(const std::vector<CSceneEntity*>& entities) const
{
    CBox3 box = SceneEmptyBox();
    for (CSceneEntity* pEntity : entities)
    {
        if (!pEntity->IsBoundsKnown())
        {
            return m_boxBounds;
        }
        CBox3 entityBox;
        pEntity->GetBoundingBox(entityBox);
        box.Add(entityBox);
    }
    return box;
}

} // namespace Ovrel
