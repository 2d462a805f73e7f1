#include "scene/SceneClassDesc.h"

#include "scene/SceneEntity.h"
#include "scene/SceneEnvironmentEntity.h"
#include "scene/SceneFxSoundEntities.h"
#include "scene/SceneGroupEntity.h"
#include "scene/SceneLightEntity.h"
#include "scene/SceneMarkerEntities.h"
#include "scene/SceneMeshEntities.h"
#include "scene/SceneVolumeEntities.h"

#include "Utils/Utility/GUtDebug.h"

#include <cstring>

namespace Ovrel
{

namespace
{
// Factory and record description of one class, as the table needs them.
#define SCENE_CLASS_FUNCTIONS(CLASS)                                                                         \
    CSceneEntity* Create##CLASS(CSceneContent* pScene)                                                       \
    {                                                                                                        \
        return new CLASS(pScene);                                                                            \
    }                                                                                                        \
    bool Transfer##CLASS(CSceneEntity& entity, CSceneRecordIO& io)                                           \
    {                                                                                                        \
        return static_cast<CLASS&>(entity).TransferRecord(io);                                               \
    }

SCENE_CLASS_FUNCTIONS(CSceneEntity)
SCENE_CLASS_FUNCTIONS(CStaticMeshSceneEntity)
SCENE_CLASS_FUNCTIONS(CSkinnedMeshSceneEntity)
SCENE_CLASS_FUNCTIONS(CClothSceneEntity)
SCENE_CLASS_FUNCTIONS(CLightSceneEntity)
SCENE_CLASS_FUNCTIONS(CFxSceneEntity)
SCENE_CLASS_FUNCTIONS(CSoundSceneEntity)
SCENE_CLASS_FUNCTIONS(CEnvironmentSceneEntity)
SCENE_CLASS_FUNCTIONS(COccluderSceneEntity)
SCENE_CLASS_FUNCTIONS(CPortalSceneEntity)
SCENE_CLASS_FUNCTIONS(CZoneSceneEntity)
SCENE_CLASS_FUNCTIONS(CLocatorSceneEntity)
SCENE_CLASS_FUNCTIONS(CTriggerSceneEntity)
SCENE_CLASS_FUNCTIONS(CCameraSceneEntity)
SCENE_CLASS_FUNCTIONS(CGameObjectSceneEntity)
SCENE_CLASS_FUNCTIONS(CGroupSceneEntity)

#undef SCENE_CLASS_FUNCTIONS

#define SCENE_CLASS(CLASS, TYPE)                                                                             \
    {                                                                                                        \
#CLASS, "CSceneEntity", TYPE, &Create##CLASS, &Transfer##CLASS, nullptr                              \
    }

// The statically registered descriptions, root first.
CSceneClassDesc g_aDescs[] = {
    {"CBaseClass", nullptr, 0, nullptr, nullptr, nullptr},
    {"CSceneEntity", "CBaseClass", ENTITY_PLAIN, &CreateCSceneEntity, &TransferCSceneEntity, nullptr},
    SCENE_CLASS(CStaticMeshSceneEntity, ENTITY_STATIC_MESH),
    SCENE_CLASS(CSkinnedMeshSceneEntity, ENTITY_SKINNED_MESH),
    SCENE_CLASS(CClothSceneEntity, ENTITY_CLOTH),
    SCENE_CLASS(CLightSceneEntity, ENTITY_LIGHT),
    SCENE_CLASS(CFxSceneEntity, ENTITY_FX),
    SCENE_CLASS(CSoundSceneEntity, ENTITY_SOUND),
    SCENE_CLASS(CEnvironmentSceneEntity, ENTITY_ENVIRONMENT),
    SCENE_CLASS(COccluderSceneEntity, ENTITY_OCCLUDER),
    SCENE_CLASS(CPortalSceneEntity, ENTITY_PORTAL),
    SCENE_CLASS(CZoneSceneEntity, ENTITY_ZONE),
    SCENE_CLASS(CLocatorSceneEntity, ENTITY_LOCATOR),
    SCENE_CLASS(CTriggerSceneEntity, ENTITY_TRIGGER),
    SCENE_CLASS(CCameraSceneEntity, ENTITY_CAMERA),
    SCENE_CLASS(CGameObjectSceneEntity, ENTITY_GAME_OBJECT),
    SCENE_CLASS(CGroupSceneEntity, ENTITY_GROUP),
};

#undef SCENE_CLASS

constexpr int32_t DESC_COUNT = static_cast<int32_t>(sizeof(g_aDescs) / sizeof(g_aDescs[0]));
bool g_bLinked = false;
} // namespace

bool CSceneClassRegistry::Link()
{
    bool bAllFound = true;
    for (CSceneClassDesc& desc : g_aDescs)
    {
        if (!desc.pcParentName)
        {
            desc.pParent = nullptr;
            continue;
        }
        desc.pParent = FindByName(desc.pcParentName);
        if (!desc.pParent)
        {
            GUtLog::Get().DisplayMsg(false, "Scene", "Class %s: parent class %s not found", desc.pcName,
                                     desc.pcParentName);
            bAllFound = false;
        }
    }
    g_bLinked = bAllFound;
    return bAllFound;
}

bool CSceneClassRegistry::IsLinked()
{
    return g_bLinked;
}

int32_t CSceneClassRegistry::GetCount()
{
    return DESC_COUNT;
}

const CSceneClassDesc& CSceneClassRegistry::Get(int32_t iIndex)
{
    GUT_ASSERT(iIndex >= 0 && iIndex < DESC_COUNT);
    return g_aDescs[iIndex];
}

const CSceneClassDesc* CSceneClassRegistry::FindByName(const char* pcName)
{
    if (!pcName)
    {
        return nullptr;
    }
    for (const CSceneClassDesc& desc : g_aDescs)
    {
        if (strcmp(desc.pcName, pcName) == 0)
        {
            return &desc;
        }
    }
    return nullptr;
}

const CSceneClassDesc* CSceneClassRegistry::FindByType(uint32_t uType)
{
    if (uType == 0)
    {
        return nullptr;
    }
    for (const CSceneClassDesc& desc : g_aDescs)
    {
        if (desc.uType == uType)
        {
            return &desc;
        }
    }
    return nullptr;
}

bool CSceneClassRegistry::IsKindOf(const CSceneClassDesc* pDesc, const char* pcName)
{
    for (; pDesc; pDesc = pDesc->pParent)
    {
        if (strcmp(pDesc->pcName, pcName) == 0)
        {
            return true;
        }
    }
    return false;
}

CSceneEntity* CSceneClassRegistry::Create(uint32_t uType, CSceneContent* pScene)
{
    const CSceneClassDesc* pDesc = FindByType(uType);
    return (pDesc && pDesc->pfnCreate) ? pDesc->pfnCreate(pScene) : nullptr;
}

bool CSceneClassRegistry::Describe(CSceneEntity& entity, ISceneFieldVisitor& visitor)
{
    const CSceneClassDesc* pDesc = FindByType(entity.GetType());
    if (!pDesc || !pDesc->pfnTransfer)
    {
        return false;
    }
    CSceneRecordIO io(visitor);
    return pDesc->pfnTransfer(entity, io);
}

} // namespace Ovrel
