#include "script/ScriptValue.h"

#include "Utils/Utility/GUtDebug.h"

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
    m_iType = TYPE_STRING;
    m_payload.pString = _NewString(text);
}

CScriptValue::CScriptValue(void* pPointer)
{
    m_iType = TYPE_USERDATA;
    m_payload.pPointer = pPointer;
}

CScriptValue::CScriptValue(const CScriptTable& table)
{
    m_iType = TYPE_TABLE;
    m_payload.pTable = new CScriptTable(table);
}

CScriptValue::CScriptValue(CScriptTable&& table)
{
    m_iType = TYPE_TABLE;
    m_payload.pTable = new CScriptTable(std::move(table));
}

CScriptValue::CScriptValue(const CScriptValue& other)
{
    _CopyFrom(other);
}

CScriptValue::CScriptValue(CScriptValue&& other) noexcept : m_iType(other.m_iType), m_payload(other.m_payload)
{
    other.m_iType = TYPE_NIL;
    other.m_payload.dNumber = 0.0;
}

CScriptValue::~CScriptValue()
{
    _Release();
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

CScriptValue& CScriptValue::operator=(CScriptValue&& other) noexcept
{
    if (this != &other)
    {
        _Release();
        m_iType = other.m_iType;
        m_payload = other.m_payload;
        other.m_iType = TYPE_NIL;
        other.m_payload.dNumber = 0.0;
    }
    return *this;
}

CScriptValue::SString* CScriptValue::_NewString(std::string_view text)
{
    void* pBlock = std::malloc(offsetof(SString, acText) + text.size() + 1);
    if (!pBlock)
    {
        throw std::bad_alloc();
    }
    SString* pString = static_cast<SString*>(pBlock);
    pString->uLength = static_cast<uint32_t>(text.size());
    if (!text.empty())
    {
        std::memcpy(pString->acText, text.data(), text.size());
    }
    pString->acText[text.size()] = '\0';
    return pString;
}

void CScriptValue::_Release()
{
    if (m_iType == TYPE_STRING)
    {
        std::free(m_payload.pString);
    }
    else if (m_iType == TYPE_TABLE)
    {
        delete m_payload.pTable;
    }
    m_iType = TYPE_NIL;
    m_payload.dNumber = 0.0;
}

void CScriptValue::_CopyFrom(const CScriptValue& other)
{
    m_iType = other.m_iType;
    if (m_iType == TYPE_STRING)
    {
        m_payload.pString = _NewString(other.GetStringView());
    }
    else if (m_iType == TYPE_TABLE)
    {
        m_payload.pTable = new CScriptTable(*other.m_payload.pTable);
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
    return m_iType == TYPE_STRING ? m_payload.pString->acText : "";
}

int32_t CScriptValue::GetStringLength() const
{
    return m_iType == TYPE_STRING ? static_cast<int32_t>(m_payload.pString->uLength) : 0;
}

std::string_view CScriptValue::GetStringView() const
{
    if (m_iType != TYPE_STRING)
    {
        return std::string_view();
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
    *this = CScriptValue(bValue);
}

void CScriptValue::SetNumber(double dValue)
{
    *this = CScriptValue(dValue);
}

void CScriptValue::SetPointer(void* pPointer)
{
    *this = CScriptValue(pPointer);
}

void CScriptValue::SetString(std::string_view text)
{
    *this = CScriptValue(text);
}

CScriptTable& CScriptValue::SetTable()
{
    if (m_iType != TYPE_TABLE)
    {
        *this = CScriptValue(CScriptTable());
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
            int iOrder = a.GetStringView().compare(b.GetStringView());
            return iOrder < 0 ? -1 : (iOrder > 0 ? 1 : 0);
        }
        default:
            return 0;
    }
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

const CScriptTable& CScriptTable::Empty()
{
    static const CScriptTable s_empty;
    return s_empty;
}

size_t CScriptTable::_LowerBound(const CScriptValue& key) const
{
    GUT_ASSERT(m_bSorted);
    auto it = std::lower_bound(m_pairs.begin(), m_pairs.end(), key,
                               [](const Pair& pair, const CScriptValue& k)
                               { return CScriptValue::Compare(pair.first, k) < 0; });
    return static_cast<size_t>(it - m_pairs.begin());
}

const CScriptValue* CScriptTable::Find(const CScriptValue& key) const
{
    size_t uIndex = _LowerBound(key);
    if (uIndex < m_pairs.size() && CScriptValue::Compare(m_pairs[uIndex].first, key) == 0)
    {
        return &m_pairs[uIndex].second;
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
    size_t uIndex = _LowerBound(key);
    if (uIndex < m_pairs.size() && CScriptValue::Compare(m_pairs[uIndex].first, key) == 0)
    {
        m_pairs[uIndex].second = std::move(value);
        return;
    }
    m_pairs.emplace(m_pairs.begin() + static_cast<ptrdiff_t>(uIndex), std::move(key), std::move(value));
}

void CScriptTable::Append(CScriptValue&& key, CScriptValue&& value)
{
    if (m_bSorted && !m_pairs.empty() && CScriptValue::Compare(m_pairs.back().first, key) >= 0)
    {
        m_bSorted = false;
    }
    m_pairs.emplace_back(std::move(key), std::move(value));
}

void CScriptTable::Finish()
{
    if (m_bSorted)
    {
        return;
    }
    std::stable_sort(m_pairs.begin(), m_pairs.end(),
                     [](const Pair& a, const Pair& b)
                     { return CScriptValue::Compare(a.first, b.first) < 0; });
    // Of a run of equal keys the last appended wins, as a later store overwrites.
    size_t uOut = 0;
    for (size_t i = 0; i < m_pairs.size(); ++i)
    {
        bool bLastOfRun =
            i + 1 == m_pairs.size() || CScriptValue::Compare(m_pairs[i].first, m_pairs[i + 1].first) != 0;
        if (bLastOfRun)
        {
            if (uOut != i)
            {
                m_pairs[uOut] = std::move(m_pairs[i]);
            }
            ++uOut;
        }
    }
    m_pairs.resize(uOut);
    m_bSorted = true;
}

bool CScriptTable::Equals(const CScriptTable& other) const
{
    if (m_pairs.size() != other.m_pairs.size())
    {
        return false;
    }
    for (size_t i = 0; i < m_pairs.size(); ++i)
    {
        if (!m_pairs[i].first.Equals(other.m_pairs[i].first) ||
            !m_pairs[i].second.Equals(other.m_pairs[i].second))
        {
            return false;
        }
    }
    return true;
}

} // namespace GLib::Script
