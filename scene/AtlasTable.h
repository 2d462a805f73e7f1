// The lightmap atlas tables of a scene: texture maps by file name, and one entry per mesh
// that says where its rectangle lies in which map.
#pragma once

#include "scene/SceneRecordIO.h"

#include "engine/renderer/TextureManager.h"

#include <cstdint>
#include <string>
#include <vector>

namespace Ovrel
{

// 24 bytes on disk; the resolved texture lives only in memory.
struct CAtlasEntry
{
    int32_t iEntityId = -1;
    int32_t iMapIndex = -1;
    Kestrin::Renderer::CTexture* pTexture = nullptr;
    CVec2 vOffset{0.0f, 0.0f};
    CVec2 vScale{1.0f, 1.0f};
};

struct CAtlasMap
{
    std::string strName;
    Kestrin::Renderer::CTexture* pTexture = nullptr;
};

class CAtlasTable
{
public:
    CAtlasTable() = default;
    CAtlasTable(const CAtlasTable&) = delete;
    CAtlasTable& operator=(const CAtlasTable&) = delete;
    CAtlasTable(CAtlasTable&& other) noexcept;
    CAtlasTable& operator=(CAtlasTable&& other) noexcept;
    // The textures must have been released (Release) before.
    ~CAtlasTable() = default;

    // Reads the table. With a texture manager each map is requested after its name (a colour
    // table under "colorlightmap\"); without bAsync the entries' textures are filled at once.
    // False on a short read or a negative count; the table then holds what was read and
    // must be released.
    bool Read(CSceneRecordIO& io, Kestrin::Renderer::CTextureManager* pTextures, bool bColor, bool bAsync);
    // Writes the table as the format has it: the count of present maps, then every slot's
    // name, then the entries (none when no map is present). A slot is present when its
    // texture loaded, or, in a scene without texture manager, when it has a name.
    bool Write(CSceneRecordIO& io, bool bHaveTextures) const;
    // Two zero counts: what a partial save writes.
    static bool WriteEmpty(CSceneRecordIO& io);
    // Fills each entry's texture from its map where the map's texture is loaded. True when
    // a texture is still loading.
    bool ResolveEntries();
    int32_t CountPresentMaps(bool bHaveTextures) const;
    // The entry at an index, or null out of range.
    const CAtlasEntry* GetEntry(int32_t iIndex) const;
    // Gives every texture back to the manager and empties the table.
    void Release(Kestrin::Renderer::CTextureManager* pTextures);
    bool IsEmpty() const { return maps.empty() && entries.empty(); }

    std::vector<CAtlasMap> maps;
    std::vector<CAtlasEntry> entries;
};

// The data path of a colour lightmap map.
std::string ColorLightMapPath(const std::string& strName);

} // namespace Ovrel
