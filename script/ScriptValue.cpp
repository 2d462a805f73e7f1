#include "script/ScriptValue.h"

#include <algorithm>
#include <cmath>
#include <cstdlib>
#include <cstring>
#include <new>

namespace GLib::Script
{

namespace
{
const CScriptValue& NilValue()
{
    static const CScriptValue s_nil;
    return s_nil;
}

int CompareDoubles(double a, double b)
{
    return a < b ? -1 : (b < a ? 1 : 0);
}
} // namespace

// ---------------------------------------------------------------------------------------
// CScriptArena

namespace
{
// Freed chunks of the largest size wait here for the next tree read on the same thread, so
// that reading file after file does not hand memory back and fault it in again each time.
// Plain thread-locals, valid to the thread's very end; the closer frees what waits when the
// thread ends, after which chunks are freed at once (a tree may die in a later destructor).
constexpr size_t LARGE_CHUNK = 0x40000;
constexpr uint32_t MAX_CACHED_CHUNKS = 16;

thread_local void* t_apCachedChunks[MAX_CACHED_CHUNKS];
thread_local uint32_t t_uCachedChunks = 0;
thread_local bool t_bCacheClosed = false;

struct SChunkCacheCloser
{
    ~SChunkCacheCloser()
    {
        while (t_uCachedChunks > 0)
        {
            std::free(t_apCachedChunks[--t_uCachedChunks]);
        }
        t_bCacheClosed = true;
    }
};
thread_local SChunkCacheCloser t_cacheCloser;
} // namespace

CScriptArena::SChunk* CScriptArena::_NewChunk(size_t uSize)
{
    void* pBlock = nullptr;
    if (uSize == LARGE_CHUNK && t_uCachedChunks > 0)
    {
        pBlock = t_apCachedChunks[--t_uCachedChunks];
    }
    else
    {
        pBlock = std::malloc(uSize);
        if (!pBlock)
        {
            throw std::bad_alloc();
        }
    }
    SChunk* pChunk = static_cast<SChunk*>(pBlock);
    pChunk->uSize = uSize;
    return pChunk;
}

void CScriptArena::_FreeChunk(SChunk* pChunk)
{
    if (pChunk->uSize == LARGE_CHUNK && !t_bCacheClosed && t_uCachedChunks < MAX_CACHED_CHUNKS)
    {
        static_cast<void>(&t_cacheCloser); // constructs the closer on this thread's first use
        t_apCachedChunks[t_uCachedChunks++] = pChunk;
        return;
    }
    std::free(pChunk);
}

CScriptArena::~CScriptArena()
{
    while (m_pChunks)
    {
        SChunk* pNext = m_pChunks->pNext;
        _FreeChunk(m_pChunks);
        m_pChunks = pNext;
    }
}

void* CScriptArena::Allocate(size_t uBytes)
{
    uBytes = (uBytes + 7) & ~static_cast<size_t>(7);
    if (static_cast<size_t>(m_pcEnd - m_pcNext) < uBytes)
    {
        // Chunks double up to LARGE_CHUNK, so a small tree stays small; a larger request gets
        // a chunk of its own size.
        const size_t uHeader = (sizeof(SChunk) + 7) & ~static_cast<size_t>(7);
        const size_t uSize = uBytes + uHeader > m_uNextChunk ? uBytes + uHeader : m_uNextChunk;
        m_uNextChunk = m_uNextChunk < LARGE_CHUNK ? m_uNextChunk * 2 : LARGE_CHUNK;
        SChunk* pChunk = _NewChunk(uSize);
        pChunk->pNext = m_pChunks;
        m_pChunks = pChunk;
        m_pcNext = reinterpret_cast<char*>(pChunk) + uHeader;
        m_pcEnd = reinterpret_cast<char*>(pChunk) + uSize;
    }
    void* pBlock = m_pcNext;
    m_pcNext += uBytes;
    return pBlock;
}

// ---------------------------------------------------------------------------------------
// CScriptValue

CScriptValue::CScriptValue(bool bValue)
{
    m_iType = TYPE_BOOLEAN;
    m_payload.dNumber = bValue ? 1.0 : 0.0;
}

CScriptValue::CScriptValue(double dValue)
{
    m_iType = TYPE_NUMBER;
    m_payload.dNumber = dValue;
}

CScriptValue::CScriptValue(const char* pcText) : CScriptValue(std::string_view(pcText ? pcText : "")) {}

CScriptValue::CScriptValue(std::string_view text)
{
    _SetString(text, nullptr);
}

CScriptValue::CScriptValue(void* pPointer)
{
    m_iType = TYPE_USERDATA;
    m_payload.pPointer = pPointer;
}

CScriptValue::CScriptValue(const CScriptTable& table)
{
    m_iType = TYPE_TABLE;
    m_payload.pTable = CScriptTable::_New(table.m_uCount);
    *m_payload.pTable = table;
}

CScriptValue::CScriptValue(CScriptTable&& table)
{
    m_iType = TYPE_TABLE;
    // A heap array is taken over as it is; pairs held in another table's block must move.
    m_payload.pTable = CScriptTable::_New(table.m_bInBlock ? table.m_uCount : 0);
    *m_payload.pTable = std::move(table);
}

CScriptValue::CScriptValue(const CScriptValue& other)
{
    _CopyFrom(other);
}

CScriptValue& CScriptValue::operator=(const CScriptValue& other)
{
    if (this != &other)
    {
        CScriptValue copy(other);
        *this = std::move(copy);
    }
    return *this;
}

void CScriptValue::_SetString(std::string_view text, CScriptArena* pArena)
{
    m_iType = TYPE_STRING;
    m_uInArena = 0;
    if (text.size() <= SHORT_STRING)
    {
        m_uShortLength = static_cast<uint16_t>(text.size() + 1);
        std::memset(m_payload.acShort, 0, sizeof(m_payload.acShort));
        std::memcpy(m_payload.acShort, text.data(), text.size());
        return;
    }
    void* pBlock =
        pArena ? pArena->Allocate(_StringBlockSize(text.size())) : std::malloc(_StringBlockSize(text.size()));
    if (!pBlock)
    {
        throw std::bad_alloc();
    }
    SString* pString = static_cast<SString*>(pBlock);
    pString->uLength = static_cast<uint32_t>(text.size());
    std::memcpy(pString->acText, text.data(), text.size());
    pString->acText[text.size()] = '\0';
    m_uShortLength = 0;
    m_uInArena = pArena ? 1 : 0;
    m_payload.pString = pString;
}

void CScriptValue::_SetStringIn(CScriptArena& arena, std::string_view text)
{
    _Release();
    _SetString(text, &arena);
}

CScriptTable& CScriptValue::_SetTableIn(CScriptArena& arena, uint32_t uCapacity)
{
    _Release();
    m_iType = TYPE_TABLE;
    m_uInArena = 1;
    m_payload.pTable = CScriptTable::_NewIn(arena, uCapacity);
    return *m_payload.pTable;
}

void CScriptValue::_FreeOwned()
{
    if (m_iType == TYPE_STRING && m_uShortLength == 0)
    {
        std::free(m_payload.pString);
    }
    else if (m_iType == TYPE_TABLE)
    {
        CScriptTable::_Delete(m_payload.pTable);
    }
}

void CScriptValue::_CopyFrom(const CScriptValue& other)
{
    // A copy owns all it holds, wherever the original lies.
    if (other.m_iType == TYPE_STRING && other.m_uShortLength == 0)
    {
        _SetString(other.GetStringView(), nullptr);
        return;
    }
    m_iType = other.m_iType;
    m_uShortLength = other.m_uShortLength;
    m_uInArena = 0;
    if (m_iType == TYPE_TABLE)
    {
        m_payload.pTable = CScriptTable::_New(other.m_payload.pTable->m_uCount);
        *m_payload.pTable = *other.m_payload.pTable;
    }
    else
    {
        m_payload = other.m_payload;
    }
}

bool CScriptValue::GetBool() const
{
    return m_iType == TYPE_BOOLEAN && m_payload.dNumber != 0.0;
}

double CScriptValue::GetNumber() const
{
    return m_iType == TYPE_NUMBER ? m_payload.dNumber : 0.0;
}

int32_t CScriptValue::GetInt() const
{
    double d = GetNumber();
    if (std::isnan(d))
    {
        return 0;
    }
    if (d >= 2147483647.0)
    {
        return INT32_MAX;
    }
    if (d <= -2147483648.0)
    {
        return INT32_MIN;
    }
    return static_cast<int32_t>(d);
}

void* CScriptValue::GetPointer() const
{
    return m_iType == TYPE_USERDATA ? m_payload.pPointer : nullptr;
}

const char* CScriptValue::GetString() const
{
    if (m_iType != TYPE_STRING)
    {
        return "";
    }
    return m_uShortLength ? m_payload.acShort : m_payload.pString->acText;
}

int32_t CScriptValue::GetStringLength() const
{
    return static_cast<int32_t>(GetStringView().size());
}

std::string_view CScriptValue::GetStringView() const
{
    if (m_iType != TYPE_STRING)
    {
        return std::string_view();
    }
    if (m_uShortLength)
    {
        return std::string_view(m_payload.acShort, m_uShortLength - 1);
    }
    return std::string_view(m_payload.pString->acText, m_payload.pString->uLength);
}

const CScriptTable& CScriptValue::GetTable() const
{
    return m_iType == TYPE_TABLE ? *m_payload.pTable : CScriptTable::Empty();
}

void CScriptValue::SetNil()
{
    _Release();
}

void CScriptValue::SetBool(bool bValue)
{
    _Release();
    m_iType = TYPE_BOOLEAN;
    m_payload.dNumber = bValue ? 1.0 : 0.0;
}

void CScriptValue::SetNumber(double dValue)
{
    _Release();
    m_iType = TYPE_NUMBER;
    m_payload.dNumber = dValue;
}

void CScriptValue::SetPointer(void* pPointer)
{
    _Release();
    m_iType = TYPE_USERDATA;
    m_payload.pPointer = pPointer;
}

void CScriptValue::SetString(std::string_view text)
{
    _Release();
    _SetString(text, nullptr);
}

CScriptTable& CScriptValue::SetTable(uint32_t uCapacity)
{
    if (m_iType != TYPE_TABLE)
    {
        _Release();
        m_iType = TYPE_TABLE;
        m_payload.pTable = CScriptTable::_New(uCapacity);
    }
    return *m_payload.pTable;
}

int CScriptValue::Compare(const CScriptValue& a, const CScriptValue& b)
{
    if (a.m_iType != b.m_iType)
    {
        return a.m_iType < b.m_iType ? -1 : 1;
    }
    switch (a.m_iType)
    {
        case TYPE_BOOLEAN:
        case TYPE_NUMBER:
            return CompareDoubles(a.m_payload.dNumber, b.m_payload.dNumber);
        case TYPE_USERDATA:
        {
            uintptr_t uA = reinterpret_cast<uintptr_t>(a.m_payload.pPointer);
            uintptr_t uB = reinterpret_cast<uintptr_t>(b.m_payload.pPointer);
            return uA < uB ? -1 : (uB < uA ? 1 : 0);
        }
        case TYPE_STRING:
        {
            if (a.m_uShortLength && b.m_uShortLength)
            {
                // Both held in the payload, zero-filled: the bytes compare as one big-endian
                // word, and a prefix comes first.
                uint64_t uA = 0;
                uint64_t uB = 0;
                std::memcpy(&uA, a.m_payload.acShort, sizeof(uA));
                std::memcpy(&uB, b.m_payload.acShort, sizeof(uB));
                uA = __builtin_bswap64(uA);
                uB = __builtin_bswap64(uB);
                if (uA != uB)
                {
                    return uA < uB ? -1 : 1;
                }
                return a.m_uShortLength < b.m_uShortLength ? -1
                                                           : (a.m_uShortLength > b.m_uShortLength ? 1 : 0);
            }
            int iOrder = a.GetStringView().compare(b.GetStringView());
            return iOrder < 0 ? -1 : (iOrder > 0 ? 1 : 0);
        }
        default:
            return 0;
    }
}

bool CScriptValue::_SameKey(const CScriptValue& a, const CScriptValue& b)
{
    if (a.m_iType != b.m_iType || a.m_uShortLength != b.m_uShortLength)
    {
        return false;
    }
    if (a.m_iType == TYPE_STRING && a.m_uShortLength)
    {
        return std::memcmp(a.m_payload.acShort, b.m_payload.acShort, sizeof(a.m_payload.acShort)) == 0;
    }
    return Compare(a, b) == 0;
}

bool CScriptValue::Equals(const CScriptValue& other) const
{
    if (m_iType != other.m_iType)
    {
        return false;
    }
    if (m_iType == TYPE_TABLE)
    {
        return m_payload.pTable->Equals(*other.m_payload.pTable);
    }
    if (m_iType == TYPE_NIL)
    {
        return true;
    }
    if (m_iType == TYPE_NUMBER || m_iType == TYPE_BOOLEAN)
    {
        // Bitwise, so that a NaN read from a file equals its copy.
        return std::memcmp(&m_payload.dNumber, &other.m_payload.dNumber, sizeof(double)) == 0;
    }
    return Compare(*this, other) == 0;
}

// ---------------------------------------------------------------------------------------
// CScriptTable

CScriptTable* CScriptTable::_New(uint32_t uCapacity)
{
    static_assert(sizeof(CScriptTable) % alignof(Pair) == 0, "pairs follow the table in its block");
    void* pBlock = std::malloc(sizeof(CScriptTable) + uCapacity * sizeof(Pair));
    if (!pBlock)
    {
        throw std::bad_alloc();
    }
    CScriptTable* pTable = new (pBlock) CScriptTable();
    if (uCapacity > 0)
    {
        pTable->m_pPairs = reinterpret_cast<Pair*>(static_cast<char*>(pBlock) + sizeof(CScriptTable));
        pTable->m_uCapacity = uCapacity;
        pTable->m_bInBlock = true;
    }
    return pTable;
}

void CScriptTable::_Delete(CScriptTable* pTable)
{
    pTable->~CScriptTable();
    std::free(pTable);
}

CScriptTable* CScriptTable::_NewIn(CScriptArena& arena, uint32_t uCapacity)
{
    char* pBlock = static_cast<char*>(arena.Allocate(sizeof(CScriptTable) + uCapacity * sizeof(Pair)));
    CScriptTable* pTable = new (pBlock) CScriptTable();
    pTable->m_pPairs = reinterpret_cast<Pair*>(pBlock + sizeof(CScriptTable));
    pTable->m_uCapacity = uCapacity;
    pTable->m_bInBlock = true;
    return pTable;
}

void CScriptTable::_AdoptArena(CScriptArena* pArena)
{
    delete m_pArena;
    m_pArena = pArena;
}

void CScriptTable::_DropContents()
{
    for (uint32_t i = 0; i < m_uCount; ++i)
    {
        m_pPairs[i].~Pair();
    }
    m_uCount = 0;
    delete m_pArena;
    m_pArena = nullptr;
}

CScriptTable::CScriptTable(const CScriptTable& other)
{
    *this = other;
}

CScriptTable::CScriptTable(CScriptTable&& other) noexcept
{
    *this = std::move(other);
}

CScriptTable::~CScriptTable()
{
    _DropContents();
    if (!m_bInBlock)
    {
        std::free(m_pPairs);
    }
}

CScriptTable& CScriptTable::operator=(const CScriptTable& other)
{
    if (this != &other)
    {
        _DropContents();
        _Reserve(other.m_uCount);
        for (uint32_t i = 0; i < other.m_uCount; ++i)
        {
            new (m_pPairs + i) Pair(other.m_pPairs[i]);
            m_uCount = i + 1;
        }
    }
    return *this;
}

CScriptTable& CScriptTable::operator=(CScriptTable&& other) noexcept
{
    if (this == &other)
    {
        return *this;
    }
    _DropContents();
    // The other's arena, if any, holds what its pairs point to: it comes along.
    m_pArena = other.m_pArena;
    other.m_pArena = nullptr;
    if (!other.m_bInBlock && other.m_uCapacity > m_uCapacity)
    {
        // Take the other's heap array.
        if (!m_bInBlock)
        {
            std::free(m_pPairs);
        }
        m_pPairs = other.m_pPairs;
        m_uCount = other.m_uCount;
        m_uCapacity = other.m_uCapacity;
        m_bInBlock = false;
        other.m_pPairs = nullptr;
        other.m_uCount = 0;
        other.m_uCapacity = 0;
        return *this;
    }
    _Reserve(other.m_uCount);
    for (uint32_t i = 0; i < other.m_uCount; ++i)
    {
        new (m_pPairs + i) Pair(std::move(other.m_pPairs[i]));
    }
    m_uCount = other.m_uCount;
    other._DropContents();
    return *this;
}

void CScriptTable::Clear()
{
    _DropContents();
}

void CScriptTable::_Reserve(uint32_t uCapacity)
{
    if (uCapacity <= m_uCapacity)
    {
        return;
    }
    Pair* pPairs = static_cast<Pair*>(std::malloc(uCapacity * sizeof(Pair)));
    if (!pPairs)
    {
        throw std::bad_alloc();
    }
    for (uint32_t i = 0; i < m_uCount; ++i)
    {
        new (pPairs + i) Pair(std::move(m_pPairs[i]));
        m_pPairs[i].~Pair();
    }
    if (!m_bInBlock)
    {
        std::free(m_pPairs);
    }
    m_pPairs = pPairs;
    m_uCapacity = uCapacity;
    m_bInBlock = false;
}

const CScriptTable& CScriptTable::Empty()
{
    static const CScriptTable s_empty;
    return s_empty;
}

uint32_t CScriptTable::_LowerBound(const CScriptValue& key) const
{
    const Pair* pFound = std::lower_bound(begin(), end(), key,
                                          [](const Pair& pair, const CScriptValue& k)
                                          { return CScriptValue::Compare(pair.first, k) < 0; });
    return static_cast<uint32_t>(pFound - begin());
}

const CScriptValue* CScriptTable::Find(const CScriptValue& key) const
{
    uint32_t uIndex = _LowerBound(key);
    if (uIndex < m_uCount && CScriptValue::Compare(m_pPairs[uIndex].first, key) == 0)
    {
        return &m_pPairs[uIndex].second;
    }
    return nullptr;
}

const CScriptValue* CScriptTable::Find(const char* pcKey) const
{
    return Find(CScriptValue(pcKey));
}

const CScriptValue* CScriptTable::Find(double dKey) const
{
    return Find(CScriptValue(dKey));
}

const CScriptValue& CScriptTable::Get(const char* pcKey) const
{
    const CScriptValue* pValue = Find(pcKey);
    return pValue ? *pValue : NilValue();
}

const CScriptValue& CScriptTable::Get(double dKey) const
{
    const CScriptValue* pValue = Find(dKey);
    return pValue ? *pValue : NilValue();
}

void CScriptTable::Set(const CScriptValue& key, const CScriptValue& value)
{
    Set(CScriptValue(key), CScriptValue(value));
}

void CScriptTable::Set(CScriptValue&& key, CScriptValue&& value)
{
    uint32_t uIndex = _LowerBound(key);
    if (uIndex < m_uCount && CScriptValue::Compare(m_pPairs[uIndex].first, key) == 0)
    {
        m_pPairs[uIndex].second = std::move(value);
        return;
    }
    if (m_uCount == m_uCapacity)
    {
        _Reserve(m_uCapacity < 4 ? 4 : m_uCapacity * 2);
    }
    new (m_pPairs + m_uCount) Pair();
    ++m_uCount;
    for (uint32_t i = m_uCount - 1; i > uIndex; --i)
    {
        m_pPairs[i] = std::move(m_pPairs[i - 1]);
    }
    m_pPairs[uIndex].first = std::move(key);
    m_pPairs[uIndex].second = std::move(value);
}

void CScriptTable::_AssignMovedIn(CScriptArena& arena, Pair* pFirst, Pair* pLast)
{
    _DropContents();
    const uint32_t uCount = static_cast<uint32_t>(pLast - pFirst);
    if (uCount > m_uCapacity)
    {
        if (!m_bInBlock)
        {
            std::free(m_pPairs);
        }
        m_pPairs = static_cast<Pair*>(arena.Allocate(uCount * sizeof(Pair)));
        m_uCapacity = uCount;
        m_bInBlock = true;
    }
    AssignMoved(pFirst, pLast);
}

bool CScriptTable::_SortOrder(const Pair* pPairs, uint32_t uCount, uint8_t* pOrder)
{
    // Insertion sort of indices: stable, adaptive, and cheap for the small tables most are.
    bool bRepeats = false;
    for (uint32_t i = 0; i < uCount; ++i)
    {
        uint32_t j = i;
        for (; j > 0; --j)
        {
            const int iOrder = CScriptValue::Compare(pPairs[pOrder[j - 1]].first, pPairs[i].first);
            if (iOrder <= 0)
            {
                bRepeats = bRepeats || iOrder == 0;
                break;
            }
            pOrder[j] = pOrder[j - 1];
        }
        pOrder[j] = static_cast<uint8_t>(i);
    }
    return bRepeats;
}

void CScriptTable::_PlaceInOrder(Pair* pFirst, const uint8_t* pOrder, uint32_t uCount)
{
    _DropContents();
    _Reserve(uCount);
    for (uint32_t i = 0; i < uCount; ++i)
    {
        new (m_pPairs + i) Pair(std::move(pFirst[pOrder[i]]));
    }
    m_uCount = uCount;
}

void CScriptTable::AssignMoved(Pair* pFirst, Pair* pLast)
{
    const uint32_t uCount = static_cast<uint32_t>(pLast - pFirst);
    if (uCount <= SMALL_SORT)
    {
        // Each pair moves once, straight to its place.
        uint8_t auOrder[SMALL_SORT];
        const bool bRepeats = _SortOrder(pFirst, uCount, auOrder);
        _PlaceInOrder(pFirst, auOrder, uCount);
        if (bRepeats)
        {
            _DropRepeats();
        }
        return;
    }
    _DropContents();
    _Reserve(uCount);
    for (Pair* p = pFirst; p != pLast; ++p)
    {
        new (m_pPairs + m_uCount) Pair(std::move(*p));
        ++m_uCount;
    }
    _SortAndDropRepeats();
}

void CScriptTable::_SortAndDropRepeats()
{
    // Lua gives an array's part in order: one pass tells whether sorting is needed at all.
    bool bSorted = true;
    for (uint32_t i = 1; i < m_uCount && bSorted; ++i)
    {
        bSorted = CScriptValue::Compare(m_pPairs[i - 1].first, m_pPairs[i].first) < 0;
    }
    if (bSorted)
    {
        return;
    }
    std::stable_sort(m_pPairs, m_pPairs + m_uCount,
                     [](const Pair& a, const Pair& b)
                     { return CScriptValue::Compare(a.first, b.first) < 0; });
    _DropRepeats();
}

void CScriptTable::_DropRepeats()
{
    // Of a run of equal keys the last wins, as a later store overwrites.
    uint32_t uOut = 0;
    for (uint32_t i = 0; i < m_uCount; ++i)
    {
        bool bLastOfRun =
            i + 1 == m_uCount || CScriptValue::Compare(m_pPairs[i].first, m_pPairs[i + 1].first) != 0;
        if (bLastOfRun)
        {
            if (uOut != i)
            {
                m_pPairs[uOut] = std::move(m_pPairs[i]);
            }
            ++uOut;
        }
    }
    for (uint32_t i = uOut; i < m_uCount; ++i)
    {
        m_pPairs[i].~Pair();
    }
    m_uCount = uOut;
}

bool CScriptTable::Equals(const CScriptTable& other) const
{
    if (m_uCount != other.m_uCount)
    {
        return false;
    }
    for (uint32_t i = 0; i < m_uCount; ++i)
    {
        if (!m_pPairs[i].first.Equals(other.m_pPairs[i].first) ||
            !m_pPairs[i].second.Equals(other.m_pPairs[i].second))
        {
            return false;
        }
    }
    return true;
}

} // namespace GLib::Script
