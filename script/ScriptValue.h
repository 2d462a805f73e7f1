// Script values: Lua's plain values as records, so that tables read from a data file live on
// after its state is closed. A value is a 32-bit type code (Lua's own) and a 64-bit payload;
// strings and tables are owned, and copies are deep.
#pragma once

#include "Utils/Utility/GUtString.h"

#include <cstddef>
#include <cstdint>
#include <string_view>
#include <utility>

namespace GLib::Script
{

class CScriptTable;

// Memory for the strings and tables inside one tree read from Lua: placed one after another
// in large chunks, and freed at once with the tree's root table. Nothing inside such a tree
// can be reached other than read-only, so its parts never outlive the root; copies taken out
// of it are ordinary owned values.
class CScriptArena final
{
public:
    CScriptArena() = default;
    ~CScriptArena();
    CScriptArena(const CScriptArena&) = delete;
    CScriptArena& operator=(const CScriptArena&) = delete;

    // 8-byte aligned room for uBytes.
    void* Allocate(size_t uBytes);

private:
    struct SChunk
    {
        SChunk* pNext;
        size_t uSize;
    };
    static SChunk* _NewChunk(size_t uSize);
    static void _FreeChunk(SChunk* pChunk);

    SChunk* m_pChunks = nullptr;
    char* m_pcNext = nullptr;
    char* m_pcEnd = nullptr;
    size_t m_uNextChunk = 4096;
};

// A record of 16 bytes, held by the hundred thousand in a data table: final, with no virtual
// table.
class CScriptValue final
{
public:
    // Lua's type codes; full user data (Lua's 7) is stored as light user data.
    enum : int32_t
    {
        TYPE_NIL = 0,
        TYPE_BOOLEAN = 1,
        TYPE_USERDATA = 2,
        TYPE_NUMBER = 3,
        TYPE_STRING = 4,
        TYPE_TABLE = 5,
    };

    CScriptValue() { m_payload.dNumber = 0.0; }
    explicit CScriptValue(bool bValue);
    explicit CScriptValue(double dValue);
    explicit CScriptValue(int iValue) : CScriptValue(static_cast<double>(iValue)) {}
    explicit CScriptValue(const char* pcText);
    explicit CScriptValue(std::string_view text);
    explicit CScriptValue(void* pPointer);
    explicit CScriptValue(const CScriptTable& table);
    explicit CScriptValue(CScriptTable&& table);
    CScriptValue(const CScriptValue& other);
    CScriptValue(CScriptValue&& other) noexcept
        : m_iType(other.m_iType), m_uShortLength(other.m_uShortLength), m_uInArena(other.m_uInArena),
          m_payload(other.m_payload)
    {
        other._Forget();
    }
    ~CScriptValue() { _Release(); }
    CScriptValue& operator=(const CScriptValue& other);
    CScriptValue& operator=(CScriptValue&& other) noexcept
    {
        if (this != &other)
        {
            _Release();
            m_iType = other.m_iType;
            m_uShortLength = other.m_uShortLength;
            m_uInArena = other.m_uInArena;
            m_payload = other.m_payload;
            other._Forget();
        }
        return *this;
    }

    int32_t Type() const { return m_iType; }
    bool IsNil() const { return m_iType == TYPE_NIL; }
    bool IsTable() const { return m_iType == TYPE_TABLE; }

    // Typed reads. A value of another type reads as that type's empty value: false, 0, a
    // null pointer, "" or the shared empty table.
    bool GetBool() const;
    double GetNumber() const;
    int32_t GetInt() const; // truncated toward zero, clamped to the 32-bit range
    float GetFloat() const { return static_cast<float>(GetNumber()); }
    void* GetPointer() const;
    const char* GetString() const; // never null
    int32_t GetStringLength() const;
    std::string_view GetStringView() const;
    GUtString GetGUtString() const { return GUtString(GetStringView()); }
    const CScriptTable& GetTable() const;

    // Typed writes: each replaces the value and its type.
    void SetNil();
    void SetBool(bool bValue);
    void SetNumber(double dValue);
    void SetPointer(void* pPointer);
    void SetString(std::string_view text);
    // Makes the value an empty table (or keeps the table it is) and gives it for filling;
    // a new table has room for uCapacity pairs.
    CScriptTable& SetTable(uint32_t uCapacity = 0);

    // The order of table keys: by type code first; then numbers and booleans by value,
    // strings by bytes, pointers by address. Nil and tables compare equal among themselves.
    static int Compare(const CScriptValue& a, const CScriptValue& b);
    bool operator<(const CScriptValue& other) const { return Compare(*this, other) < 0; }
    // Deep equality: same type and, for tables, the same pairs in the same order.
    bool Equals(const CScriptValue& other) const;

private:
    friend class CLuaParamHelper;

    // Keys that compare equal, told quickly for short strings.
    static bool _SameKey(const CScriptValue& a, const CScriptValue& b);
    // For the table reader: a string or a table placed in the arena of the tree being read.
    void _SetStringIn(CScriptArena& arena, std::string_view text);
    CScriptTable& _SetTableIn(CScriptArena& arena, uint32_t uCapacity);

    // Strings up to this length live in the payload itself: most keys of a data table do.
    static constexpr size_t SHORT_STRING = 7;
    // A longer string's single block: the length, then the bytes and a terminator.
    struct SString
    {
        uint32_t uLength;
        char acText[1];
    };
    static size_t _StringBlockSize(size_t uLength) { return offsetof(SString, acText) + uLength + 1; }
    void _SetString(std::string_view text, CScriptArena* pArena);
    // Frees what the value owns, if anything, and makes it nil. Inline: most values own nothing.
    void _Release()
    {
        if (m_iType >= TYPE_STRING && !m_uInArena)
        {
            _FreeOwned();
        }
        _Forget();
    }
    void _FreeOwned();
    // Makes the value nil without freeing: what it held has moved elsewhere.
    void _Forget()
    {
        m_iType = TYPE_NIL;
        m_uShortLength = 0;
        m_uInArena = 0;
        m_payload.dNumber = 0.0;
    }
    void _CopyFrom(const CScriptValue& other);

    int32_t m_iType = TYPE_NIL;
    uint16_t m_uShortLength = 0; // a string held in the payload: its length + 1; else 0
    uint16_t m_uInArena = 0;     // the string or table lies in a tree's arena
    union
    {
        double dNumber;
        void* pPointer;
        SString* pString;
        CScriptTable* pTable;
        char acShort[SHORT_STRING + 1];
    } m_payload;
};

// An owned map from script value to script value, ordered by CScriptValue::Compare. Kept as a
// sorted array of pairs: tables are read once and walked often. A table held by a value keeps
// its pairs in the same block as itself when their number was known at creation, so a table
// costs one allocation; the root of a tree read from Lua also owns the tree's arena.
class CScriptTable final
{
public:
    using Pair = std::pair<CScriptValue, CScriptValue>;

    CScriptTable() = default;
    CScriptTable(const CScriptTable& other);
    CScriptTable(CScriptTable&& other) noexcept;
    CScriptTable& operator=(const CScriptTable& other);
    CScriptTable& operator=(CScriptTable&& other) noexcept;
    ~CScriptTable();

    // The shared empty table that typed reads give for a value that is not a table.
    static const CScriptTable& Empty();

    int32_t Count() const { return static_cast<int32_t>(m_uCount); }
    bool IsEmpty() const { return m_uCount == 0; }
    const Pair& At(int32_t iIndex) const { return m_pPairs[iIndex]; }
    const Pair* begin() const { return m_pPairs; }
    const Pair* end() const { return m_pPairs + m_uCount; }

    // The value under a key, or null.
    const CScriptValue* Find(const CScriptValue& key) const;
    const CScriptValue* Find(const char* pcKey) const;
    const CScriptValue* Find(double dKey) const;
    // The value under a key, or a nil value when the key is absent.
    const CScriptValue& Get(const char* pcKey) const;
    const CScriptValue& Get(double dKey) const;

    // Stores a pair; a key that compares equal to one held replaces its value.
    void Set(const CScriptValue& key, const CScriptValue& value);
    void Set(CScriptValue&& key, CScriptValue&& value);
    void Clear();

    // Replaces the pairs by those of a range, moved in any order and sorted once; of equal
    // keys the last in the range stays.
    void AssignMoved(Pair* pFirst, Pair* pLast);

    bool Equals(const CScriptTable& other) const;

private:
    friend class CScriptValue;
    friend class CLuaParamHelper;

    // A table on the heap with room for uCapacity pairs in its own block; freed by _Delete.
    static CScriptTable* _New(uint32_t uCapacity);
    static void _Delete(CScriptTable* pTable);
    // The same inside an arena; freed with the arena.
    static CScriptTable* _NewIn(CScriptArena& arena, uint32_t uCapacity);
    // Takes ownership of the arena that the pairs' contents lie in.
    void _AdoptArena(CScriptArena* pArena);
    // AssignMoved with the pairs' array placed in an arena (the one the table adopts next).
    void _AssignMovedIn(CScriptArena& arena, Pair* pFirst, Pair* pLast);
    // Destroys the pairs, then the arena they may have used.
    void _DropContents();
    // Makes room for uCapacity pairs; the pairs held move along.
    void _Reserve(uint32_t uCapacity);
    // Tables up to this size are sorted by index, before their pairs move in.
    static constexpr uint32_t SMALL_SORT = 16;
    // Fills pOrder with the source index of each place, in key order; true when keys repeat.
    static bool _SortOrder(const Pair* pPairs, uint32_t uCount, uint8_t* pOrder);
    // Replaces the pairs by the range's, moving source pOrder[i] to place i.
    void _PlaceInOrder(Pair* pFirst, const uint8_t* pOrder, uint32_t uCount);
    void _SortAndDropRepeats();
    void _DropRepeats();
    uint32_t _LowerBound(const CScriptValue& key) const;

    Pair* m_pPairs = nullptr;
    uint32_t m_uCount = 0;
    uint32_t m_uCapacity = 0;
    bool m_bInBlock = false; // m_pPairs lies in the table's own block or an arena: not freed alone
    CScriptArena* m_pArena = nullptr;
};

} // namespace GLib::Script
