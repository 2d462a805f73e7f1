#include "Utils/File/PathMap.h"

#include "Utils/File/SubFile.h"

#include <algorithm>
#include <bit>
#include <cstring>

namespace GLib::File
{

namespace
{
constexpr uint64_t ONES = 0x0101010101010101ull;
constexpr uint64_t HIGHS = 0x8080808080808080ull;

// Upper-cases the ASCII letters of eight bytes at once.
inline uint64_t FoldUpper8(uint64_t x)
{
    const uint64_t uLow7 = x & ~HIGHS;
    const uint64_t uFromA = uLow7 + ONES * (0x80 - 'a');     // high bit: byte >= 'a'
    const uint64_t uPastZ = uLow7 + ONES * (0x80 - 'z' - 1); // high bit: byte > 'z'
    const uint64_t uLower = uFromA & ~uPastZ & ~x & HIGHS;
    return x ^ (uLower >> 2);
}

inline uint64_t Load8(const char* p)
{
    uint64_t x;
    memcpy(&x, p, 8);
    return x;
}

// The last 1 to 7 bytes, zero-filled.
inline uint64_t LoadTail(const char* p, size_t uCount)
{
    uint64_t x = 0;
    memcpy(&x, p, uCount);
    return x;
}

inline uint64_t Mix(uint64_t h, uint64_t x)
{
    h = (h ^ x) * 0x9E3779B97F4A7C15ull;
    return h ^ (h >> 29);
}

inline char UpperChar(char c)
{
    return (c >= 'a' && c <= 'z') ? static_cast<char>(c - 'a' + 'A') : c;
}
} // namespace

uint64_t CPathMap::Hash(std::string_view path)
{
    uint64_t h = path.size() * 0xC2B2AE3D27D4EB4Full;
    size_t i = 0;
    for (; i + 8 <= path.size(); i += 8)
    {
        h = Mix(h, FoldUpper8(Load8(path.data() + i)));
    }
    if (i < path.size())
    {
        h = Mix(h, FoldUpper8(LoadTail(path.data() + i, path.size() - i)));
    }
    return h | 1; // 0 marks an empty slot
}

bool CPathMap::EqualNoCase(std::string_view a, std::string_view b)
{
    if (a.size() != b.size())
    {
        return false;
    }
    size_t i = 0;
    for (; i + 8 <= a.size(); i += 8)
    {
        if (FoldUpper8(Load8(a.data() + i)) != FoldUpper8(Load8(b.data() + i)))
        {
            return false;
        }
    }
    if (i < a.size())
    {
        return FoldUpper8(LoadTail(a.data() + i, a.size() - i)) ==
               FoldUpper8(LoadTail(b.data() + i, b.size() - i));
    }
    return true;
}

int CPathMap::CompareUpper(std::string_view a, std::string_view b)
{
    const size_t uCount = std::min(a.size(), b.size());
    for (size_t i = 0; i < uCount; ++i)
    {
        const unsigned char ca = static_cast<unsigned char>(UpperChar(a[i]));
        const unsigned char cb = static_cast<unsigned char>(UpperChar(b[i]));
        if (ca != cb)
        {
            return ca < cb ? -1 : 1;
        }
    }
    return a.size() == b.size() ? 0 : (a.size() < b.size() ? -1 : 1);
}

void CPathMap::Clear()
{
    m_slots.clear();
    m_slots.shrink_to_fit();
    m_uCount = 0;
}

void CPathMap::Reserve(size_t uCount)
{
    const size_t uWanted = std::bit_ceil(std::max<size_t>(16, uCount * 2));
    if (uWanted > m_slots.size())
    {
        _Grow(uWanted);
    }
}

void CPathMap::_Grow(size_t uCapacity)
{
    std::vector<Slot> old;
    old.swap(m_slots);
    m_slots.assign(uCapacity, Slot());
    const size_t uMask = uCapacity - 1;
    for (const Slot& slot : old)
    {
        if (slot.uHash)
        {
            size_t i = slot.uHash & uMask;
            while (m_slots[i].uHash)
            {
                i = (i + 1) & uMask;
            }
            m_slots[i] = slot;
        }
    }
}

size_t CPathMap::_FindSlot(std::string_view path, uint64_t uHash) const
{
    const size_t uMask = m_slots.size() - 1;
    size_t i = uHash & uMask;
    while (m_slots[i].uHash)
    {
        const Slot& slot = m_slots[i];
        if (slot.uHash == uHash && EqualNoCase(std::string_view(slot.pcName, slot.uLength), path))
        {
            return i;
        }
        i = (i + 1) & uMask;
    }
    return i;
}

bool CPathMap::Insert(CSubFileInfo* pInfo)
{
    if ((m_uCount + 1) * 2 > m_slots.size())
    {
        _Grow(std::max<size_t>(16, m_slots.size() * 2));
    }
    const std::string_view name = pInfo->GetFullName();
    const uint64_t uHash = Hash(name);
    const size_t i = _FindSlot(name, uHash);
    if (m_slots[i].uHash)
    {
        return false;
    }
    m_slots[i] = Slot{uHash, name.data(), name.size(), pInfo};
    ++m_uCount;
    return true;
}

CSubFileInfo* CPathMap::Find(std::string_view path) const
{
    if (m_slots.empty())
    {
        return nullptr;
    }
    const size_t i = _FindSlot(path, Hash(path));
    return m_slots[i].pInfo;
}

bool CPathMap::Erase(std::string_view path)
{
    if (m_slots.empty())
    {
        return false;
    }
    const size_t uMask = m_slots.size() - 1;
    size_t i = _FindSlot(path, Hash(path));
    if (!m_slots[i].uHash)
    {
        return false;
    }
    // Backward-shift deletion keeps every probe chain unbroken without tombstones.
    size_t j = i;
    for (;;)
    {
        j = (j + 1) & uMask;
        if (!m_slots[j].uHash)
        {
            break;
        }
        const size_t uHome = m_slots[j].uHash & uMask;
        // Move j into the hole at i unless its home lies cyclically in (i, j].
        const bool bStays = (i <= j) ? (i < uHome && uHome <= j) : (i < uHome || uHome <= j);
        if (!bStays)
        {
            m_slots[i] = m_slots[j];
            i = j;
        }
    }
    m_slots[i] = Slot();
    --m_uCount;
    return true;
}

} // namespace GLib::File
