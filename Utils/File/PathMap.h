// CPathMap: a pack's map from full entry path to its CSubFileInfo. Paths compare as their
// upper-cased bytes (ASCII letters only), so "TEX/A.DDS" finds "tex/a.dds". Open addressing
// over one array: loading a pack of tens of thousands of entries makes no allocation per
// entry, and a lookup touches no disk and, mostly, one cache line.
#pragma once

#include <cstddef>
#include <cstdint>
#include <string_view>
#include <vector>

namespace GLib::File
{

class CSubFileInfo;

class CPathMap
{
public:
    CPathMap() = default;
    virtual ~CPathMap() = default;

    void Clear();
    // Makes room for uCount entries without growing again.
    void Reserve(size_t uCount);
    // Adds the info under its full name. False, changing nothing, when a path equal to it
    // regardless of case is there already.
    bool Insert(CSubFileInfo* pInfo);
    // Null when no entry has that path.
    CSubFileInfo* Find(std::string_view path) const;
    // False when no entry has that path.
    bool Erase(std::string_view path);
    size_t Size() const { return m_uCount; }

    // Exposed for tests and the pack's sorting: byte order of the upper-cased names.
    static uint64_t Hash(std::string_view path);
    static bool EqualNoCase(std::string_view a, std::string_view b);
    static int CompareUpper(std::string_view a, std::string_view b);

private:
    // The name is kept in the slot so that a lookup compares without touching the info.
    struct Slot
    {
        uint64_t uHash = 0;
        const char* pcName = nullptr;
        size_t uLength = 0;
        CSubFileInfo* pInfo = nullptr;
    };
    void _Grow(size_t uCapacity);
    size_t _FindSlot(std::string_view path, uint64_t uHash) const;

    std::vector<Slot> m_slots;
    size_t m_uCount = 0;
};

} // namespace GLib::File
