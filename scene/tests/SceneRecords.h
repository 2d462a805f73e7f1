// Test helper: every record of the `.scene` and `.prop` formats, written field by field from
// the format's tables, in any version a reader accepts. Each writer records what the fields
// should read as (see CSceneBytes).
#pragma once

#include "scene/tests/SceneBytes.h"

#include <cstdint>
#include <string>
#include <utility>
#include <vector>

namespace SceneTest
{

struct CShape
{
    uint32_t uFlags;
    uint16_t uMaterial;
};

void WriteBase(CSceneBytes& b, const std::string& strName, int32_t iId, int32_t iGroupId, int32_t iLayer,
               int32_t iVersion = 102);
void WriteRenderBlock(CSceneBytes& b);
void WriteShapes(CSceneBytes& b, const std::vector<CShape>& shapes, bool bUpgrade);
void WriteGeometry(CSceneBytes& b, int32_t iVertices, int32_t iIndices, int32_t iEdges);

void WriteMesh(CSceneBytes& b, int32_t iVersion, const std::string& strMeshFile,
               const std::vector<CShape>& shapes = {{0x21, 3}, {0x1, 4}});
void WriteSkin(CSceneBytes& b, int32_t iVersion, const std::string& strConfigFile);
void WriteCloth(CSceneBytes& b, const std::string& strMeshFile);
// Luminance Bias is stored twice; the pair gives both values.
void WriteLight(CSceneBytes& b, int32_t iVersion, bool bHasLight,
                std::pair<float, float> luminanceBias = {7.5f, 7.5f});
void WriteFx(CSceneBytes& b, int32_t iVersion);
void WriteSound(CSceneBytes& b, int32_t iVersion);
void WriteEnvironment(CSceneBytes& b, int32_t iVersion);
void WriteOccluder(CSceneBytes& b, bool bHasShape);
void WritePortal(CSceneBytes& b, bool bHasShape);
void WriteZone(CSceneBytes& b, int32_t iVersion, bool bHasShape);
void WriteLocator(CSceneBytes& b, int32_t iVersion);
void WriteTrigger(CSceneBytes& b, int32_t iVersion);
void WriteCamera(CSceneBytes& b);
void WriteGameObject(CSceneBytes& b, int32_t iVersion);
void WriteGroup(CSceneBytes& b, int32_t iVersion, const std::vector<int32_t>& members);

// The file header up to the entity count, with lightmap tables as the version has them.
// The box defaults to one that no entity's box explains, so a resave keeps it only where
// the scene cannot tell its boxes (meshes without engine).
void WriteHeader(CSceneBytes& b, int32_t iVersion, const std::vector<std::string>& lightMaps,
                 const std::vector<std::string>& colorLightMaps, bool bEmptyBox = false);

// A whole version-102 file with one record of every kind, and what each entity should read
// as, in file order. Entity ids are 1 to 16; the group (16) holds the mesh (2) and the
// locator (12).
struct CFullScene
{
    std::vector<uint8_t> bytes;
    std::vector<uint32_t> types;
    std::vector<Expected> entities;
};
CFullScene BuildFullScene(bool bBigEndian);

// A `.prop` file with two meshes.
std::vector<uint8_t> BuildPropFile(bool bBigEndian);

} // namespace SceneTest
