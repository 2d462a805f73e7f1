// CScene: construction, clearing, the per-frame step, look-up, picking and groups.
#include "scene/Scene.h"

#include "scene/SceneEnvironmentEntity.h"
#include "scene/SceneGroupEntity.h"
#include "scene/SceneLoadTask.h"
#include "scene/SceneMeshEntities.h"

#include <algorithm>
#include <cctype>
#include <strings.h>

namespace Ovrel
{

CScene::CScene(const std::string& strOpenName) : m_strOpenName(strOpenName) {}

CScene::~CScene()
{
    Clear();
    CancelLoad();
}

void CScene::SetManager(CSceneManager* pManager, int32_t iSceneId)
{
    m_pManager = pManager;
    m_iSceneId = iSceneId;
}

void CScene::SetPaths(const std::string& strFxFolder, const std::string& strCharacterFolder,
                      const std::string& strModelFolder)
{
    m_strFxFolderOverride = strFxFolder;
    m_strCharacterFolder = strCharacterFolder;
    m_strModelFolderOverride = strModelFolder;
}

CSceneFolders CScene::GetFolders() const
{
    CSceneFolders folders;
    folders.strFolder = m_strFolder;
    folders.strFxFolder = m_strFxFolderOverride.empty() ? m_strFolder : m_strFxFolderOverride;
    folders.strAssetFolder = m_strTextureFolderOverride.empty() ? m_strFolder : m_strTextureFolderOverride;
    folders.strModelFolder = m_strModelFolderOverride.empty() ? m_strFolder : m_strModelFolderOverride;
    folders.uReload = m_uReloadFlag;
    return folders;
}

void CScene::Clear()
{
    m_strName.clear();
    m_strFilePath.clear();
    m_props = CScenePropFile();
    m_bLoaded = false;
    // Engine objects and lightmap textures are released by the content; the render thread
    // that may hold them takes the device lock, which the renderer's release path holds.
    CSceneContent::Clear();
}

bool CScene::IsLoading()
{
    if (m_pLoadTask)
    {
        return true;
    }
    if (m_pending.empty())
    {
        return false;
    }
    if (m_lightMaps.ResolveEntries() || m_colorLightMaps.ResolveEntries())
    {
        return true;
    }
    for (size_t i = 0; i < m_pending.size();)
    {
        CSceneEntity* pEntity = m_pending[i];
        if (pEntity->IsLoading())
        {
            return true;
        }
        if (m_bHoldActivation)
        {
            ++i;
            continue;
        }
        m_pending.erase(m_pending.begin() + static_cast<std::ptrdiff_t>(i));
        pEntity->OnLoaded();
    }
    return false;
}

void CScene::Update(float fTime, float fDelta)
{
    if (IsLoading() || m_bHeadless)
    {
        return;
    }
    for (CSceneEntity* pEntity : m_updateList)
    {
        if (!pEntity->IsLoading())
        {
            pEntity->Update(fTime, fDelta);
        }
    }
}

void CScene::DrawEditorLines(Kestrin::Plotter::IPlotter3D* pPlotter3D,
                             Kestrin::Plotter::IPlotter2D* pPlotter2D, uint32_t uTypeMask,
                             uint64_t uLayerMask)
{
    if (!m_bShowEditorLines)
    {
        return;
    }
    for (CSceneEntity* pEntity : m_entities)
    {
        if ((pEntity->GetType() & uTypeMask) != 0 && (LayerBit(pEntity->GetLayer()) & uLayerMask) != 0 &&
            pEntity->IsVisible())
        {
            pEntity->DrawEditor(pPlotter3D, pPlotter2D);
        }
    }
}

bool CScene::ApplyEnvironment(Kestrin::Renderer::IRendererSettings& settings) const
{
    if (!m_pEnvironment)
    {
        return false;
    }
    m_pEnvironment->ApplyTo(settings);
    return true;
}

// ---------------------------------------------------------------------------------------
// look-up and picking

CSceneEntity* CScene::FindByName(const std::string& strName, uint32_t uTypeMask) const
{
    for (CSceneEntity* pEntity : m_entities)
    {
        if ((pEntity->GetType() & uTypeMask) != 0 &&
            strcasecmp(pEntity->GetName().c_str(), strName.c_str()) == 0)
        {
            return pEntity;
        }
    }
    return nullptr;
}

namespace
{
std::string Lower(const std::string& strText)
{
    std::string strOut = strText;
    for (char& c : strOut)
    {
        c = static_cast<char>(std::tolower(static_cast<unsigned char>(c)));
    }
    return strOut;
}
} // namespace

int32_t CScene::FindMatching(const std::string& strText, std::vector<CSceneEntity*>& out,
                             uint32_t uTypeMask) const
{
    std::string strWanted = Lower(strText);
    int32_t iFound = 0;
    for (CSceneEntity* pEntity : m_entities)
    {
        if ((pEntity->GetType() & uTypeMask) != 0 &&
            Lower(pEntity->GetName()).find(strWanted) != std::string::npos)
        {
            out.push_back(pEntity);
            ++iFound;
        }
    }
    return iFound;
}

CSceneEntity* CScene::Pick(const CVec3& vStart, const CVec3& vDirection, float& fDistance, uint32_t uTypeMask,
                           uint32_t uLayerLow, uint32_t uLayerHigh) const
{
    uint64_t uLayerMask = (static_cast<uint64_t>(uLayerHigh) << 32) | uLayerLow;
    fDistance = 1e10f;
    CSceneEntity* pNearest = nullptr;
    for (CSceneEntity* pEntity : m_entities)
    {
        if ((pEntity->GetType() & uTypeMask) == 0 || (LayerBit(pEntity->GetLayer()) & uLayerMask) == 0 ||
            !pEntity->IsVisible())
        {
            continue;
        }
        float fHit = 0.0f;
        if (pEntity->HitTest(vStart, vDirection, fHit) && fHit < fDistance)
        {
            fDistance = fHit;
            pNearest = pEntity;
        }
    }
    return pNearest;
}

// ---------------------------------------------------------------------------------------
// groups and collision

void CScene::RelinkGroups()
{
    for (CSceneEntity* pEntity : m_entities)
    {
        if (pEntity->GetType() != ENTITY_GROUP)
        {
            continue;
        }
        for (int32_t iMember : static_cast<CGroupSceneEntity*>(pEntity)->GetMembers())
        {
            CSceneEntity* pMember = FindById(iMember);
            // Groups cannot nest: a group listed as a member (a bad file) stays on its own.
            if (pMember && pMember->GetType() != ENTITY_GROUP)
            {
                pMember->SetGroupId(pEntity->GetId());
            }
        }
    }
}

int32_t CScene::ApplyCollisionToSameMesh(const CStaticMeshSceneEntity* pMesh)
{
    if (!pMesh || pMesh->GetCollisionPath().empty())
    {
        return 0;
    }
    std::string strShape = pMesh->GetCollisionPath();
    int32_t iApplied = 0;
    for (CSceneEntity* pEntity : m_entities)
    {
        if (pEntity == pMesh || pEntity->GetType() != ENTITY_STATIC_MESH)
        {
            continue;
        }
        auto* pOther = static_cast<CStaticMeshSceneEntity*>(pEntity);
        // Data paths are case-insensitive, and either separator may stand in them.
        std::string strOther = pOther->GetCollisionPath();
        std::replace(strOther.begin(), strOther.end(), '/', '\\');
        std::string strMine = strShape;
        std::replace(strMine.begin(), strMine.end(), '/', '\\');
        if (strcasecmp(strOther.c_str(), strMine.c_str()) == 0)
        {
            pOther->SetShapes(pMesh->GetShapes());
            ++iApplied;
        }
    }
    return iApplied;
}

void CScene::CancelLoad()
{
    if (!m_pLoadTask)
    {
        return;
    }
    CSceneLoadTask* pTask = m_pLoadTask;
    m_pLoadTask = nullptr;
    pTask->Detach();
    CancelLoadTask(pTask);
}

} // namespace Ovrel
