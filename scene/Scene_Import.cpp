// CScene: import of a `.scene` or `.dae` file as one group.
#include "scene/Scene.h"

#include "scene/SceneDiskFile.h"
#include "scene/SceneEnvironmentEntity.h"
#include "scene/SceneGroupEntity.h"
#include "scene/SceneLightEntity.h"
#include "scene/SceneMarkerEntities.h"
#include "scene/SceneMeshEntities.h"

#include "Utils/Utility/GUtDebug.h"
#include "import/ColladaFile.h"

#include <algorithm>
#include <cctype>
#include <cstdlib>
#include <map>

namespace Ovrel
{

using Kestrin::Utility::CColladaFile;

namespace
{
// A mesh node's name split at "--": the text after it (lower-cased) marks a level of detail
// ("lod<n>", iLod n) or a collision shape ("col...", bCollision); anything else is part of
// the name.
struct CNodeName
{
    std::string strBase;
    int32_t iLod = 0;
    bool bCollision = false;
};

CNodeName SplitNodeName(const std::string& strName)
{
    CNodeName name;
    name.strBase = strName;
    size_t iMark = strName.rfind("--");
    if (iMark == std::string::npos)
    {
        return name;
    }
    std::string strTail = strName.substr(iMark + 2);
    for (char& c : strTail)
    {
        c = static_cast<char>(std::tolower(static_cast<unsigned char>(c)));
    }
    if (strTail.compare(0, 3, "col") == 0)
    {
        name.bCollision = true;
        name.strBase = strName.substr(0, iMark);
    }
    else if (strTail.compare(0, 3, "lod") == 0 && strTail.size() > 3 &&
             std::all_of(strTail.begin() + 3, strTail.end(), [](char c) { return c >= '0' && c <= '9'; }))
    {
        name.iLod = std::atoi(strTail.c_str() + 3);
        name.strBase = strName.substr(0, iMark);
    }
    return name;
}

CImportedLight ToImportedLight(const CColladaFile::Light& light)
{
    CImportedLight out;
    out.iKind = light.eType == CColladaFile::LightType::Spot          ? 1
                : light.eType == CColladaFile::LightType::Directional ? 2
                                                                      : 0;
    out.vColor = light.vColor;
    out.fIntensity = light.fIntensity.value_or(1.0f);
    out.fRange = light.fFarAttenuationEnd.value_or(300.0f);
    out.bInfinite = light.bOvershoot.value_or(false);
    out.fConeInner = light.fFalloffAngle;
    out.fConeOuter = light.fOuterCone.value_or(light.fFalloffAngle);
    out.fMagnification = light.fOuterCone.value_or(100.0f);
    out.fAspect = light.fAspectRatio.value_or(1.0f);
    if (out.fAspect == 0.0f)
    {
        out.fAspect = 1.0f;
    }
    return out;
}

std::string NodeName(const CColladaFile::Node& node)
{
    return node.name.empty() ? node.id : node.name;
}

// Walks the visual scene and turns its nodes into entities of the scene.
class CColladaImport
{
public:
    CColladaImport(CScene& scene, const std::string& strPath, std::vector<CSceneEntity*>& imported)
        : m_scene(scene), m_strPath(strPath), m_imported(imported)
    {
    }

    void Run(const CColladaFile& dae)
    {
        for (const auto& pNode : dae.Nodes())
        {
            Walk(dae, *pNode);
        }
        // One static mesh per model: its most detailed level stands for all of them.
        for (const auto& [strBase, level] : m_meshes)
        {
            auto* pMesh = static_cast<CStaticMeshSceneEntity*>(m_scene.CreateEntity(ENTITY_STATIC_MESH, 0));
            pMesh->SetName(strBase);
            pMesh->SetTransform(level.second->WorldMatrix());
            pMesh->CreateRenderObject(m_strPath + "#" + strBase, false);
            m_imported.push_back(pMesh);
        }
    }

private:
    void Walk(const CColladaFile& dae, const CColladaFile::Node& node)
    {
        // Bones belong to characters, which a scene takes from `.cconfig` files.
        if (node.IsJoint())
        {
            return;
        }
        for (const CColladaFile::Instance& instance : node.aInstances)
        {
            switch (instance.eKind)
            {
                case CColladaFile::InstanceKind::Geometry:
                    AddMesh(node);
                    break;
                case CColladaFile::InstanceKind::Light:
                    if (instance.iIndex >= 0)
                    {
                        AddLight(node, dae.Lights()[static_cast<size_t>(instance.iIndex)]);
                    }
                    break;
                case CColladaFile::InstanceKind::Camera:
                    if (instance.iIndex >= 0)
                    {
                        AddCamera(node, dae.Cameras()[static_cast<size_t>(instance.iIndex)]);
                    }
                    break;
                default:
                    break;
            }
        }
        for (const auto& pChild : node.aChildren)
        {
            Walk(dae, *pChild);
        }
    }

    void AddMesh(const CColladaFile::Node& node)
    {
        CNodeName name = SplitNodeName(NodeName(node));
        if (name.bCollision)
        {
            return;
        }
        auto it = m_meshes.find(name.strBase);
        if (it == m_meshes.end() || name.iLod < it->second.first)
        {
            m_meshes[name.strBase] = {name.iLod, &node};
        }
    }

    void AddLight(const CColladaFile::Node& node, const CColladaFile::Light& light)
    {
        // An ambient light has no kind of its own here: the environment holds the ambient.
        if (light.eType == CColladaFile::LightType::Ambient)
        {
            return;
        }
        auto* pLight = static_cast<CLightSceneEntity*>(m_scene.CreateEntity(ENTITY_LIGHT, 0));
        pLight->InitFromImport(ToImportedLight(light));
        pLight->SetName(NodeName(node));
        pLight->SetTransform(node.WorldMatrix());
        pLight->CreateLight();
        m_imported.push_back(pLight);
    }

    void AddCamera(const CColladaFile::Node& node, const CColladaFile::Camera& camera)
    {
        auto* pCamera = static_cast<CCameraSceneEntity*>(m_scene.CreateEntity(ENTITY_CAMERA, 0));
        pCamera->SetName(NodeName(node));
        float fFov =
            camera.fYFov != 0.0f ? camera.fYFov : (camera.fXFov != 0.0f ? camera.fXFov : pCamera->GetFov());
        pCamera->SetLens(fFov, camera.fZNear > 0.0f ? camera.fZNear : pCamera->GetNear(),
                         camera.fZFar > 0.0f ? camera.fZFar : pCamera->GetFar());
        pCamera->SetTransform(node.WorldMatrix());
        m_imported.push_back(pCamera);
    }

    CScene& m_scene;
    std::string m_strPath;
    std::vector<CSceneEntity*>& m_imported;
    // Base name to (level, node), ordered by name so the entities do not depend on the
    // order of the document.
    std::map<std::string, std::pair<int32_t, const CColladaFile::Node*>> m_meshes;
};
} // namespace

bool CScene::ReadImportScene(const std::string& strPath, std::vector<CSceneEntity*>& imported)
{
    std::vector<uint8_t> bytes;
    if (!ReadWholeFile(strPath.c_str(), bytes))
    {
        GUtLog::Get().DisplayMsg(LogError, "Scene", "Import scene \"%s\": the file cannot be read",
                                 strPath.c_str());
        return false;
    }
    Kestrin::Utility::CMemoryStream stream(bytes.data(), static_cast<int32_t>(bytes.size()));
    CSceneReadError error;
    if (!ReadImport(stream, imported, &error))
    {
        GUtLog::Get().DisplayMsg(LogError, "Scene", "Import scene \"%s\": %s", strPath.c_str(),
                                 error.strText.c_str());
        return false;
    }
    return true;
}

bool CScene::ReadImportCollada(const std::string& strPath, std::vector<CSceneEntity*>& imported)
{
    CColladaFile dae;
    if (!dae.Read(strPath.c_str()))
    {
        return false;
    }
    CColladaImport(*this, strPath, imported).Run(dae);
    for (CSceneEntity* pEntity : imported)
    {
        if (m_bHoldActivation || pEntity->IsLoading())
        {
            m_pending.push_back(pEntity);
        }
        else
        {
            pEntity->OnLoaded();
        }
    }
    return true;
}

CGroupSceneEntity* CScene::Import(const std::string& strPath, uint32_t uTypeMask, bool bForceReload)
{
    bool bDae = HasExtension(strPath, ".dae");
    if (!bDae && !HasExtension(strPath, ".scene"))
    {
        return nullptr;
    }
    int32_t iNextId = m_iNextEntityId;
    if (bForceReload && m_pScopes)
    {
        m_pScopes->SetReloadExisting(true);
    }
    std::vector<CSceneEntity*> imported;
    bool bRead = bDae ? ReadImportCollada(strPath, imported) : ReadImportScene(strPath, imported);
    if (bForceReload && m_pScopes)
    {
        m_pScopes->SetReloadExisting(false);
    }
    if (!bRead)
    {
        return nullptr;
    }
    // The file's groups are dissolved: their members join the import's group, which holds
    // everything that came in, and groups cannot nest.
    std::vector<CSceneEntity*> kept;
    for (CSceneEntity* pEntity : imported)
    {
        if (pEntity->GetType() == ENTITY_GROUP)
        {
            RemoveEntity(pEntity);
        }
        else if ((pEntity->GetType() & uTypeMask) != 0)
        {
            kept.push_back(pEntity);
        }
        else
        {
            RemoveEntity(pEntity);
        }
    }
    if (kept.empty())
    {
        m_iNextEntityId = iNextId;
        return nullptr;
    }
    std::string strFolder, strBase, strExtension;
    SplitPath(strPath, strFolder, strBase, strExtension);
    auto* pGroup = static_cast<CGroupSceneEntity*>(CreateEntity(ENTITY_GROUP, 0));
    pGroup->SetName(strBase + "Group");
    for (CSceneEntity* pEntity : kept)
    {
        pGroup->Add(pEntity);
        if (pEntity->GetType() == ENTITY_ENVIRONMENT && !m_pEnvironment)
        {
            m_pEnvironment = static_cast<CEnvironmentSceneEntity*>(pEntity);
        }
    }
    pGroup->OnLoaded();
    return pGroup;
}

} // namespace Ovrel
