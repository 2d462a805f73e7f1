// The `.scene` writer: header, tables (or the zero counts of a partial save) and records.
#include "scene/SceneContent.h"
#include "scene/SceneDiskFile.h"

namespace Ovrel
{

bool CSceneContent::Write(CIOStream& stream) const
{
    return WriteEntities(stream, m_entities, true);
}

bool CSceneContent::WriteEntities(CIOStream& stream, const std::vector<CSceneEntity*>& entities,
                                  bool bWithTables) const
{
    stream.m_bSwapBytes = m_bSwapBytes;
    CBox3 box = ComputeBoundingBox(entities);
    bool bOk = stream.WriteU32(TAG_SCENE) && stream.WriteI32(SCENE_FILE_VERSION) &&
               stream.WriteVec3(box.vMin) && stream.WriteVec3(box.vMax);
    CSceneRecordIO io(stream, false);
    if (bWithTables)
    {
        bool bHaveTextures = m_pTextures != nullptr;
        bOk = bOk && m_lightMaps.Write(io, bHaveTextures) && m_colorLightMaps.Write(io, bHaveTextures);
    }
    else
    {
        bOk = bOk && CAtlasTable::WriteEmpty(io) && CAtlasTable::WriteEmpty(io);
    }
    bOk = bOk && stream.WriteI32(static_cast<int32_t>(entities.size()));
    for (CSceneEntity* pEntity : entities)
    {
        bOk = bOk && stream.WriteU32(pEntity->GetType()) && pEntity->Save(stream);
    }
    return bOk;
}

bool CSceneContent::WriteFile(const char* pcPath) const
{
    Kestrin::Utility::CMemoryWriteStream memory;
    return Write(memory) && ReplaceFile(pcPath, memory.GetData(), memory.GetSize());
}

} // namespace Ovrel
