#include "scene/AtlasTable.h"

#include <utility>

namespace Ovrel
{

CAtlasTable::CAtlasTable(CAtlasTable&& other) noexcept
    : maps(std::move(other.maps)), entries(std::move(other.entries))
{
    other.maps.clear();
    other.entries.clear();
}

CAtlasTable& CAtlasTable::operator=(CAtlasTable&& other) noexcept
{
    maps = std::move(other.maps);
    entries = std::move(other.entries);
    other.maps.clear();
    other.entries.clear();
    return *this;
}

std::string ColorLightMapPath(const std::string& strName)
{
    return "colorlightmap\\" + strName;
}

namespace
{
void TransferEntry(CSceneRecordIO& io, CAtlasEntry& entry)
{
    io.BeginItem();
    io.I32("entityId", entry.iEntityId);
    io.I32("mapIndex", entry.iMapIndex);
    io.Vec2("offset", entry.vOffset);
    io.Vec2("scale", entry.vScale);
    io.EndItem();
}
} // namespace

bool CAtlasTable::Read(CSceneRecordIO& io, Kestrin::Renderer::CTextureManager* pTextures, bool bColor,
                       bool bAsync)
{
    int32_t iMapCount = 0;
    io.I32("mapCount", iMapCount);
    if (!io.Ok() || iMapCount < 0)
    {
        io.Fail();
        return false;
    }
    // The table grows as names arrive, so a count past the end costs nothing.
    for (int32_t i = 0; i < iMapCount && io.Ok(); ++i)
    {
        CAtlasMap map;
        io.String(nullptr, map.strName);
        if (!io.Ok())
        {
            break;
        }
        if (pTextures && !map.strName.empty())
        {
            map.pTexture = pTextures->Load(bColor ? ColorLightMapPath(map.strName) : map.strName, bAsync);
        }
        maps.push_back(std::move(map));
    }
    int32_t iEntryCount = 0;
    io.I32("entryCount", iEntryCount);
    if (!io.Ok() || iEntryCount < 0)
    {
        io.Fail();
        return false;
    }
    for (int32_t i = 0; i < iEntryCount && io.Ok(); ++i)
    {
        CAtlasEntry entry;
        TransferEntry(io, entry);
        if (io.Ok())
        {
            entries.push_back(entry);
        }
    }
    if (!io.Ok())
    {
        return false;
    }
    if (!bAsync)
    {
        ResolveEntries();
    }
    return true;
}

int32_t CAtlasTable::CountPresentMaps(bool bHaveTextures) const
{
    int32_t iCount = 0;
    for (const CAtlasMap& map : maps)
    {
        bool bPresent = bHaveTextures ? (map.pTexture && map.pTexture->IsLoaded()) : !map.strName.empty();
        iCount += bPresent ? 1 : 0;
    }
    return iCount;
}

bool CAtlasTable::Write(CSceneRecordIO& io, bool bHaveTextures) const
{
    int32_t iMapCount = CountPresentMaps(bHaveTextures);
    io.I32("mapCount", iMapCount);
    io.BeginList("maps");
    for (const CAtlasMap& map : maps)
    {
        std::string strName = map.strName;
        io.String(nullptr, strName);
    }
    io.EndList();
    int32_t iEntryCount = iMapCount > 0 ? static_cast<int32_t>(entries.size()) : 0;
    io.I32("entryCount", iEntryCount);
    io.BeginList("entries");
    for (int32_t i = 0; i < iEntryCount; ++i)
    {
        CAtlasEntry entry = entries[static_cast<size_t>(i)];
        TransferEntry(io, entry);
    }
    io.EndList();
    return io.Ok();
}

bool CAtlasTable::WriteEmpty(CSceneRecordIO& io)
{
    int32_t iZero = 0;
    io.I32("mapCount", iZero);
    io.I32("entryCount", iZero);
    return io.Ok();
}

bool CAtlasTable::ResolveEntries()
{
    for (CAtlasEntry& entry : entries)
    {
        if (entry.pTexture || entry.iMapIndex < 0 || entry.iMapIndex >= static_cast<int32_t>(maps.size()))
        {
            continue;
        }
        Kestrin::Renderer::CTexture* pTexture = maps[static_cast<size_t>(entry.iMapIndex)].pTexture;
        if (!pTexture)
        {
            continue;
        }
        if (pTexture->IsLoading())
        {
            return true;
        }
        if (pTexture->IsLoaded())
        {
            entry.pTexture = pTexture;
        }
    }
    return false;
}

const CAtlasEntry* CAtlasTable::GetEntry(int32_t iIndex) const
{
    if (iIndex < 0 || iIndex >= static_cast<int32_t>(entries.size()))
    {
        return nullptr;
    }
    return &entries[static_cast<size_t>(iIndex)];
}

void CAtlasTable::Release(Kestrin::Renderer::CTextureManager* pTextures)
{
    if (pTextures)
    {
        for (CAtlasMap& map : maps)
        {
            pTextures->Release(map.pTexture);
        }
    }
    maps.clear();
    entries.clear();
}

} // namespace Ovrel
