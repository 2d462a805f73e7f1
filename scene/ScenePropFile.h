// The `.prop` side file of a scene: the editable settings of each mesh resource its static
// meshes use (LOD range, distances, shadow casting, LOD distances).
#pragma once

#include "scene/SceneRecordIO.h"

#include "engine/renderer/RenderWorld.h"

#include <string>
#include <vector>

namespace Ovrel
{

class CSceneContent;

struct CMeshProp
{
    std::string strMeshName;
    Kestrin::Ext::CLodMeshSettings settings;
};

class CScenePropFile
{
public:
    // Replaces the records with the file's. False on a wrong magic or tag, a version above
    // 100, a short read or a negative count; the records then stay as they were.
    bool Read(CIOStream& stream);
    // In the byte order of the file last read.
    bool Write(CIOStream& stream) const;
    bool ReadFile(const char* pcPath);
    // Written to "<path>.tmp" and renamed into place.
    bool WriteFile(const char* pcPath) const;
    // Reports the records to a visitor, as Write would write them.
    void Describe(ISceneFieldVisitor& visitor) const;

    // Gives each static mesh's mesh object the settings recorded for its mesh name.
    void Apply(const CSceneContent& scene) const;
    // Takes the settings of every distinct mesh object among the static meshes: a known name
    // is updated in place, a new one appended. Records of meshes that no object shows stay
    // while some static mesh has no object (nothing tells which mesh it uses), and go
    // otherwise.
    void Collect(const CSceneContent& scene);
    const CMeshProp* Find(const std::string& strMeshName) const;

    std::vector<CMeshProp> meshes;
    bool m_bSwapBytes = false;

private:
    // The file through a writing or describing record I/O.
    bool Transfer(CSceneRecordIO& io, std::vector<CMeshProp>& records) const;
};

} // namespace Ovrel
