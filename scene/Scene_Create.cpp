// CScene: the creation factories.
#include "scene/Scene.h"

#include "scene/SceneDiskFile.h"
#include "scene/SceneEnvironmentEntity.h"
#include "scene/SceneFxSoundEntities.h"
#include "scene/SceneLightEntity.h"
#include "scene/SceneMeshEntities.h"
#include "scene/SceneVolumeEntities.h"

#include "import/ColladaFile.h"

#include <map>
#include <utility>

namespace Ovrel
{

namespace
{
std::string BaseName(const std::string& strFile)
{
    std::string strFolder, strBase, strExtension;
    SplitPath(strFile, strFolder, strBase, strExtension);
    return strBase;
}

// The shape of a volume from the first mesh of a Collada file: its positions, its faces as
// triangles, and the outline (the edges that only one triangle has). False when the file
// does not read, has no triangles, or has more vertices than 16-bit indices reach.
bool ReadVolumeGeometry(const std::string& strFile, Kestrin::Ext::CRenderVolumeGeometry& geometry)
{
    using Kestrin::Utility::CColladaFile;
    CColladaFile dae;
    if (!dae.Read(strFile.c_str()))
    {
        return false;
    }
    for (const CColladaFile::Mesh& mesh : dae.Meshes())
    {
        for (const CColladaFile::Primitive& primitive : mesh.aPrimitives)
        {
            const CColladaFile::Input* pPosition = primitive.FindInput(CColladaFile::Semantic::Position);
            if (!pPosition || pPosition->iSource < 0 || primitive.TriangleCount() == 0)
            {
                continue;
            }
            const CColladaFile::Source& source = mesh.aSources[static_cast<size_t>(pPosition->iSource)];
            if (source.uStride < 3 || source.uCount > 0xFFFF)
            {
                return false;
            }
            geometry = Kestrin::Ext::CRenderVolumeGeometry();
            for (uint32_t i = 0; i < source.uCount; ++i)
            {
                const float* pf = source.Element(i);
                geometry.vertices.push_back({pf[0], pf[1], pf[2]});
            }
            std::vector<uint32_t> corners;
            primitive.Triangulate(corners);
            std::map<std::pair<uint16_t, uint16_t>, int> edgeUses;
            for (size_t i = 0; i < corners.size(); i += 3)
            {
                uint16_t aIndex[3];
                for (int k = 0; k < 3; ++k)
                {
                    uint32_t uVertex = primitive.Index(corners[i + static_cast<size_t>(k)], *pPosition);
                    if (uVertex >= source.uCount)
                    {
                        return false;
                    }
                    aIndex[k] = static_cast<uint16_t>(uVertex);
                    geometry.indices.push_back(aIndex[k]);
                }
                for (int k = 0; k < 3; ++k)
                {
                    uint16_t a = aIndex[k], b = aIndex[(k + 1) % 3];
                    ++edgeUses[{std::min(a, b), std::max(a, b)}];
                }
            }
            for (const auto& [edge, iUses] : edgeUses)
            {
                if (iUses == 1)
                {
                    geometry.edges.push_back({edge.first, edge.second});
                }
            }
            return true;
        }
    }
    return false;
}
} // namespace

CSceneEntity* CScene::Finish(CSceneEntity* pEntity, const std::string& strName)
{
    if (!strName.empty())
    {
        pEntity->SetName(strName);
    }
    pEntity->OnLoaded();
    return pEntity;
}

CSceneEntity* CScene::CreateCamera(const std::string& strName)
{
    return Finish(CreateEntity(ENTITY_CAMERA, 0), strName.empty() ? "Camera" : strName);
}

CSceneEntity* CScene::CreateLight(const std::string& strName)
{
    auto* pLight = static_cast<CLightSceneEntity*>(CreateEntity(ENTITY_LIGHT, 0));
    pLight->InitByMenuName(strName);
    pLight->CreateLight();
    return Finish(pLight, std::string());
}

CSceneEntity* CScene::CreateSound()
{
    auto* pSound = static_cast<CSoundSceneEntity*>(CreateEntity(ENTITY_SOUND, 0));
    pSound->InitNew();
    return Finish(pSound, std::string());
}

CSceneEntity* CScene::CreateEnvironment(const std::string& strName)
{
    auto* pEnvironment = static_cast<CEnvironmentSceneEntity*>(CreateEntity(ENTITY_ENVIRONMENT, 0));
    pEnvironment->InitNew();
    if (!m_pEnvironment)
    {
        m_pEnvironment = pEnvironment;
    }
    return Finish(pEnvironment, strName.empty() ? "Environment" : strName);
}

CSceneEntity* CScene::CreateFromFile(uint32_t uType, const std::string& strFile)
{
    if (strFile.empty())
    {
        return nullptr;
    }
    CSceneEntity* pEntity = CreateEntity(uType, 0);
    pEntity->SetName(BaseName(strFile));
    // Each kind builds its engine object from the file; where the engine exists and still
    // builds nothing, the file is no good. Without that engine the name alone is kept.
    bool bBuilt = true;
    switch (uType)
    {
        case ENTITY_STATIC_MESH:
            bBuilt = static_cast<CStaticMeshSceneEntity*>(pEntity)->CreateRenderObject(strFile, false) ||
                     !GetRenderWorld();
            break;
        case ENTITY_CLOTH:
            bBuilt = static_cast<CClothSceneEntity*>(pEntity)->CreateRenderObject(strFile, false) ||
                     !GetRenderWorld();
            break;
        case ENTITY_SKINNED_MESH:
            bBuilt = static_cast<CSkinnedMeshSceneEntity*>(pEntity)->CreateCharacter(strFile) ||
                     !GetCharacterManager();
            break;
        case ENTITY_FX:
            bBuilt = static_cast<CFxSceneEntity*>(pEntity)->CreateFx(strFile) || !GetFxPlayer();
            break;
        default:
            pEntity->SetResourceName(strFile);
            break;
    }
    if (!bBuilt)
    {
        RemoveEntity(pEntity);
        return nullptr;
    }
    return Finish(pEntity, std::string());
}

CSceneEntity* CScene::CreateVolume(uint32_t uType, const std::string& strFile)
{
    Kestrin::Ext::CRenderVolumeGeometry geometry;
    if (strFile.empty() || !ReadVolumeGeometry(strFile, geometry))
    {
        return nullptr;
    }
    CSceneEntity* pEntity = CreateEntity(uType, 0);
    pEntity->SetName(BaseName(strFile));
    switch (uType)
    {
        case ENTITY_OCCLUDER:
            static_cast<COccluderSceneEntity*>(pEntity)->SetGeometry(geometry);
            break;
        case ENTITY_PORTAL:
            static_cast<CPortalSceneEntity*>(pEntity)->SetGeometry(geometry);
            break;
        default:
            static_cast<CZoneSceneEntity*>(pEntity)->SetGeometry(geometry);
            break;
    }
    return Finish(pEntity, std::string());
}

CSceneEntity* CScene::CreateMesh(const std::string& strFile)
{
    return CreateFromFile(ENTITY_STATIC_MESH, strFile);
}

CSceneEntity* CScene::CreateCloth(const std::string& strFile)
{
    return CreateFromFile(ENTITY_CLOTH, strFile);
}

CSceneEntity* CScene::CreateCharacter(const std::string& strFile)
{
    return CreateFromFile(ENTITY_SKINNED_MESH, strFile);
}

CSceneEntity* CScene::CreateFx(const std::string& strFile)
{
    return CreateFromFile(ENTITY_FX, strFile);
}

CSceneEntity* CScene::CreateGameObject(const std::string& strFile)
{
    return CreateFromFile(ENTITY_GAME_OBJECT, strFile);
}

CSceneEntity* CScene::CreateLocator(const std::string& strFile)
{
    return CreateFromFile(ENTITY_LOCATOR, strFile);
}

CSceneEntity* CScene::CreateTrigger(const std::string& strFile)
{
    return CreateFromFile(ENTITY_TRIGGER, strFile);
}

CSceneEntity* CScene::CreateOccluder(const std::string& strFile)
{
    return CreateVolume(ENTITY_OCCLUDER, strFile);
}

CSceneEntity* CScene::CreatePortal(const std::string& strFile)
{
    return CreateVolume(ENTITY_PORTAL, strFile);
}

CSceneEntity* CScene::CreateZone(const std::string& strFile)
{
    return CreateVolume(ENTITY_ZONE, strFile);
}

} // namespace Ovrel
