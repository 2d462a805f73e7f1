// CScene: the save family. Every file is written whole into memory first and then through a
// temporary file renamed into place, so the previous file survives any failure.
#include "scene/Scene.h"

#include "scene/SceneDiskFile.h"
#include "scene/SceneGeometry.h"
#include "scene/SceneMarkerEntities.h"
#include "scene/SceneMeshEntities.h"

#include <algorithm>
#include <cstdio>
#include <cstring>

namespace Ovrel
{

void CScene::SortForSave(std::vector<CSceneEntity*>& entities)
{
    // The id settles entities of one kind and name, so that the order never depends on
    // the order of creation.
    std::sort(entities.begin(), entities.end(),
              [](const CSceneEntity* a, const CSceneEntity* b)
              {
                  if (a->GetType() != b->GetType())
                  {
                      return a->GetType() < b->GetType();
                  }
                  int iName = a->GetName().compare(b->GetName());
                  if (iName != 0)
                  {
                      return iName < 0;
                  }
                  return a->GetId() < b->GetId();
              });
}

bool CScene::WriteSceneFile(const std::string& strPath, const std::vector<CSceneEntity*>& entities,
                            bool bWithTables) const
{
    Kestrin::Utility::CMemoryWriteStream memory;
    return WriteEntities(memory, entities, bWithTables) &&
           ReplaceFile(strPath.c_str(), memory.GetData(), memory.GetSize());
}

bool CScene::Save(const std::string& strPath)
{
    if (strPath.empty())
    {
        return false;
    }
    TakePath(strPath);
    RebuildBoundingBox();
    SortForSave(m_entities);
    return WriteSceneFile(strPath, m_entities, true);
}

bool CScene::SaveAll(const std::string& strPath)
{
    if (!Save(strPath))
    {
        return false;
    }
    if (m_pAssetStore)
    {
        for (CSceneEntity* pEntity : m_entities)
        {
            if (pEntity->GetType() != ENTITY_STATIC_MESH)
            {
                continue;
            }
            // The shape goes back beside the mesh it belongs to.
            std::string strShape = static_cast<CStaticMeshSceneEntity*>(pEntity)->GetCollisionPath();
            if (!strShape.empty())
            {
                m_pAssetStore->SaveAsset(ASSET_COLLISION, strShape, std::string());
            }
        }
    }
    if (m_bEditorMode)
    {
        SavePropFile();
    }
    if (!m_lightMaps.maps.empty())
    {
        CAssetHelper helper(m_strFolder, m_pAssetStore);
        for (const CAtlasMap& map : m_lightMaps.maps)
        {
            helper.AddTexture(map.strName);
        }
        helper.Save(ASSET_TEXTURE);
    }
    m_bNeedsResave = false;
    return true;
}

bool CScene::SaveStaticMeshAssets(const std::vector<CSceneEntity*>& entities, const std::string& strFolder,
                                  int32_t iFlags) const
{
    CAssetHelper helper(strFolder, m_pAssetStore);
    for (CSceneEntity* pEntity : entities)
    {
        if (pEntity->GetType() == ENTITY_STATIC_MESH)
        {
            pEntity->CollectAssets(helper);
        }
    }
    return helper.Save(iFlags);
}

bool CScene::SaveEntities(std::vector<CSceneEntity*> entities, const std::string& strPath)
{
    SortForSave(entities);
    if (strPath.empty() || !WriteSceneFile(strPath, entities, false))
    {
        return false;
    }
    std::string strFolder, strBase, strExtension;
    SplitPath(strPath, strFolder, strBase, strExtension);
    return SaveStaticMeshAssets(entities, strFolder, ASSET_ALL);
}

bool CScene::SaveByType(const std::string& strPath, uint32_t uTypeMask)
{
    if (strPath.empty())
    {
        return false;
    }
    TakePath(strPath);
    std::vector<CSceneEntity*> chosen;
    for (CSceneEntity* pEntity : m_entities)
    {
        if ((pEntity->GetType() & uTypeMask) != 0)
        {
            chosen.push_back(pEntity);
        }
    }
    return WriteSceneFile(strPath, chosen, false);
}

bool CScene::Export(std::vector<CSceneEntity*> entities, const std::string& strTargetFolder)
{
    if (m_strName.empty())
    {
        return false;
    }
    std::string strSceneFolder = JoinFolder(strTargetFolder, "scene");
    std::string strOwnFolder = JoinFolder(strSceneFolder, m_strName);
    if (!MakeFolder(strSceneFolder.c_str()) || !MakeFolder(strOwnFolder.c_str()))
    {
        return false;
    }
    SortForSave(entities);
    if (!WriteSceneFile(strOwnFolder + m_strName + ".scene", entities, true))
    {
        return false;
    }
    CAssetHelper helper(strTargetFolder, m_pAssetStore);
    for (CSceneEntity* pEntity : entities)
    {
        pEntity->CollectAssets(helper);
    }
    for (const CAtlasMap& map : m_lightMaps.maps)
    {
        helper.AddTexture(map.strName);
    }
    for (const CAtlasMap& map : m_colorLightMaps.maps)
    {
        helper.AddTexture(map.strName.empty() ? map.strName : ColorLightMapPath(map.strName));
    }
    return helper.Save(ASSET_ALL);
}

bool CScene::SaveMeshAssets(const std::string& strPath, int32_t iAssetFlags)
{
    std::string strFolder, strBase, strExtension;
    SplitPath(strPath, strFolder, strBase, strExtension);
    return SaveStaticMeshAssets(m_entities, strFolder, iAssetFlags);
}

std::string CScene::FormatCameraAnimation() const
{
    std::string strText;
    for (CSceneEntity* pEntity : m_entities)
    {
        if (pEntity->GetType() != ENTITY_CAMERA)
        {
            continue;
        }
        CMatrix44 mTransform;
        pEntity->GetTransform(mTransform);
        CVec3 vScale;
        CMatrix44 mRotation = NormalizeAxes(mTransform, vScale);
        Kestrin::Utility::CQuat q = Kestrin::Utility::QuatFromMatrix(mRotation);
        CVec3 vPosition = mTransform.GetTranslation();
        char acLine[512];
        snprintf(acLine, sizeof(acLine), "CameraFrame(%f, %f, %f, %f, %f, %f, %f, %f)\n", 0.0,
                 static_cast<double>(vPosition.x), static_cast<double>(vPosition.y),
                 static_cast<double>(vPosition.z), static_cast<double>(q.x), static_cast<double>(q.y),
                 static_cast<double>(q.z), static_cast<double>(q.w));
        strText += acLine;
    }
    return strText;
}

bool CScene::ExportCameraAnimation(const std::string& strPath)
{
    if (strPath.empty())
    {
        return false;
    }
    std::string strText = FormatCameraAnimation();
    return ReplaceFile(strPath.c_str(), reinterpret_cast<const uint8_t*>(strText.data()),
                       static_cast<int32_t>(strText.size()));
}

} // namespace Ovrel
