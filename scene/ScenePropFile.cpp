#include "scene/ScenePropFile.h"

#include "scene/SceneContent.h"
#include "scene/SceneDiskFile.h"
#include "scene/SceneMeshEntities.h"

#include <algorithm>
#include <unordered_set>

namespace Ovrel
{

namespace
{
bool TransferMeshProp(CSceneRecordIO& io, CMeshProp& prop)
{
    if (io.Block(TAG_MESH, PROP_MESH_VERSION) != ESceneBlock::OK)
    {
        io.Fail();
        return false;
    }
    Kestrin::Ext::CLodMeshSettings& s = prop.settings;
    io.String("meshName", prop.strMeshName);
    io.F32("lodRange", s.fLodRange);
    io.F32("visibleDistance", s.fVisibleDistance);
    io.F32("dynamicShadowDistance", s.fDynamicShadowDistance);
    io.F32("alwaysVisibleDistance", s.fAlwaysVisibleDistance);
    io.U8("invisibleCastShadow", s.uInvisibleCastShadow);
    io.U8("lightMapCastShadow", s.uLightMapCastShadow);
    io.F32List("lodDistances", s.lodDistances);
    return io.Ok();
}
} // namespace

bool CScenePropFile::Transfer(CSceneRecordIO& io, std::vector<CMeshProp>& records) const
{
    if (io.Block(TAG_PROP, PROP_FILE_VERSION) != ESceneBlock::OK)
    {
        io.Fail();
        return false;
    }
    int32_t iCount = static_cast<int32_t>(records.size());
    io.I32("meshCount", iCount);
    if (!io.Ok() || iCount < 0)
    {
        io.Fail();
        return false;
    }
    io.BeginList("meshes");
    for (CMeshProp& prop : records)
    {
        io.BeginItem();
        TransferMeshProp(io, prop);
        io.EndItem();
    }
    io.EndList();
    return io.Ok();
}

bool CScenePropFile::Read(CIOStream& stream)
{
    // The magic is the file block's tag; CheckMagic settles the byte order first.
    bool bSwap = stream.m_bSwapBytes;
    if (!stream.CheckMagic(TAG_PROP))
    {
        return false;
    }
    int32_t iVersion = 0;
    if (!stream.ReadI32(iVersion) || iVersion > PROP_FILE_VERSION)
    {
        stream.m_bSwapBytes = bSwap;
        return false;
    }
    int32_t iCount = 0;
    if (!stream.ReadI32(iCount) || iCount < 0)
    {
        stream.m_bSwapBytes = bSwap;
        return false;
    }
    std::vector<CMeshProp> records;
    CSceneRecordIO io(stream, true);
    for (int32_t i = 0; i < iCount; ++i)
    {
        CMeshProp prop;
        if (!TransferMeshProp(io, prop))
        {
            stream.m_bSwapBytes = bSwap;
            return false;
        }
        records.push_back(std::move(prop));
    }
    meshes.swap(records);
    m_bSwapBytes = stream.m_bSwapBytes;
    return true;
}

bool CScenePropFile::Write(CIOStream& stream) const
{
    stream.m_bSwapBytes = m_bSwapBytes;
    CSceneRecordIO io(stream, false);
    std::vector<CMeshProp> records = meshes;
    return Transfer(io, records);
}

void CScenePropFile::Describe(ISceneFieldVisitor& visitor) const
{
    CSceneRecordIO io(visitor);
    std::vector<CMeshProp> records = meshes;
    Transfer(io, records);
}

bool CScenePropFile::ReadFile(const char* pcPath)
{
    std::vector<uint8_t> bytes;
    if (!ReadWholeFile(pcPath, bytes))
    {
        return false;
    }
    Kestrin::Utility::CMemoryStream stream(bytes.data(), static_cast<int32_t>(bytes.size()));
    return Read(stream);
}

bool CScenePropFile::WriteFile(const char* pcPath) const
{
    Kestrin::Utility::CMemoryWriteStream memory;
    return Write(memory) && ReplaceFile(pcPath, memory.GetData(), memory.GetSize());
}

const CMeshProp* CScenePropFile::Find(const std::string& strMeshName) const
{
    for (const CMeshProp& prop : meshes)
    {
        if (prop.strMeshName == strMeshName)
        {
            return &prop;
        }
    }
    return nullptr;
}

void CScenePropFile::Apply(const CSceneContent& scene) const
{
    for (CSceneEntity* pEntity : scene.GetEntities())
    {
        if (pEntity->GetType() != ENTITY_STATIC_MESH)
        {
            continue;
        }
        Kestrin::Ext::CLodMeshRenderObject* pObject =
            static_cast<CStaticMeshSceneEntity*>(pEntity)->GetRenderObject();
        const CMeshProp* pProp = pObject ? Find(pObject->GetMeshName()) : nullptr;
        if (pProp)
        {
            pObject->SetMeshSettings(pProp->settings);
        }
    }
}

void CScenePropFile::Collect(const CSceneContent& scene)
{
    std::unordered_set<std::string> shown;
    bool bAllKnown = true;
    for (CSceneEntity* pEntity : scene.GetEntities())
    {
        if (pEntity->GetType() != ENTITY_STATIC_MESH)
        {
            continue;
        }
        Kestrin::Ext::CLodMeshRenderObject* pObject =
            static_cast<CStaticMeshSceneEntity*>(pEntity)->GetRenderObject();
        if (!pObject)
        {
            bAllKnown = false;
            continue;
        }
        const std::string& strName = pObject->GetMeshName();
        if (!shown.insert(strName).second)
        {
            continue;
        }
        auto it = std::find_if(meshes.begin(), meshes.end(),
                               [&](const CMeshProp& prop) { return prop.strMeshName == strName; });
        if (it != meshes.end())
        {
            it->settings = pObject->GetMeshSettings();
        }
        else
        {
            meshes.push_back({strName, pObject->GetMeshSettings()});
        }
    }
    if (bAllKnown)
    {
        meshes.erase(std::remove_if(meshes.begin(), meshes.end(),
                                    [&](const CMeshProp& prop)
                                    { return shown.count(prop.strMeshName) == 0; }),
                     meshes.end());
    }
}

} // namespace Ovrel
