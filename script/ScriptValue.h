// Script values: Lua's plain values as records, so that tables read from a data file live on
// after its state is closed. A value is a 32-bit type code (Lua's own) and a 64-bit payload;
// strings and tables are owned, and copies are deep.
#pragma once

#include "Utils/Utility/GUtString.h"

#include <cstddef>
#include <cstdint>
#include <string_view>
#include <utility>
#include <vector>

namespace GLib::Script
{

class CScriptTable;

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
    CScriptValue(CScriptValue&& other) noexcept;
    ~CScriptValue();
    CScriptValue& operator=(const CScriptValue& other);
    CScriptValue& operator=(CScriptValue&& other) noexcept;

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
    // Makes the value an empty table (or keeps the table it is) and gives it for filling.
    CScriptTable& SetTable();

    // The order of table keys: by type code first; then numbers and booleans by value,
    // strings by bytes, pointers by address. Nil and tables compare equal among themselves.
    static int Compare(const CScriptValue& a, const CScriptValue& b);
    bool operator<(const CScriptValue& other) const { return Compare(*this, other) < 0; }
    // Deep equality: same type and, for tables, the same pairs in the same order.
    bool Equals(const CScriptValue& other) const;

private:
    // A string's single block: the length, then the bytes and a terminator.
    struct SString
    {
        uint32_t uLength;
        char acText[1];
    };
    static SString* _NewString(std::string_view text);
    void _Release();
    void _CopyFrom(const CScriptValue& other);

    int32_t m_iType = TYPE_NIL;
    union
    {
        double dNumber;
        void* pPointer;
        SString* pString;
        CScriptTable* pTable;
    } m_payload;
};

// An owned map from script value to script value, ordered by CScriptValue::Compare. Kept as a
// sorted array of pairs: tables are read once and walked often.
class CScriptTable final
{
public:
    using Pair = std::pair<CScriptValue, CScriptValue>;

    CScriptTable() = default;
    CScriptTable(const CScriptTable&) = default;
    CScriptTable(CScriptTable&&) noexcept = default;
    CScriptTable& operator=(const CScriptTable&) = default;
    CScriptTable& operator=(CScriptTable&&) noexcept = default;
    ~CScriptTable() = default;

    // The shared empty table that typed reads give for a value that is not a table.
    static const CScriptTable& Empty();

    int32_t Count() const { return static_cast<int32_t>(m_pairs.size()); }
    bool IsEmpty() const { return m_pairs.empty(); }
    const Pair& At(int32_t iIndex) const { return m_pairs[static_cast<size_t>(iIndex)]; }
    std::vector<Pair>::const_iterator begin() const { return m_pairs.begin(); }
    std::vector<Pair>::const_iterator end() const { return m_pairs.end(); }

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
    void Clear() { m_pairs.clear(); }

    // Bulk filling: append pairs in any order, then Finish sorts them once; of equal keys the
    // last appended stays. Find and Set are valid only after Finish.
    void Reserve(size_t uCount) { m_pairs.reserve(uCount); }
    void Append(CScriptValue&& key, CScriptValue&& value);
    void Finish();

    bool Equals(const CScriptTable& other) const;

private:
    size_t _LowerBound(const CScriptValue& key) const;

    std::vector<Pair> m_pairs;
    bool m_bSorted = true;
};

} // namespace GLib::Script
