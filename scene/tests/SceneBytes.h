// Test helper: builds scene files byte by byte, in either byte order, and remembers what
// each named field should read as. Field names follow the scene code's record descriptions
// ("transform.3", "shapes[0].flags"), so a loaded entity can be compared field by field.
#pragma once

#include "scene/SceneRecordIO.h"

#include <cstdint>
#include <cstring>
#include <map>
#include <string>
#include <vector>

namespace SceneTest
{

using Expected = std::map<std::string, std::string>;

std::string FormatFloat(float f);

class CSceneBytes
{
public:
    explicit CSceneBytes(bool bBigEndian) : m_bBig(bBigEndian) {}

    std::vector<uint8_t> data;
    // What the fields written since the last Take() should read as.
    Expected expected;

    // --- raw values
    CSceneBytes& RawU8(uint8_t v)
    {
        data.push_back(v);
        return *this;
    }
    CSceneBytes& RawU16(uint16_t v) { return Bytes(&v, 2); }
    CSceneBytes& RawU32(uint32_t v) { return Bytes(&v, 4); }
    CSceneBytes& RawI32(int32_t v) { return Bytes(&v, 4); }
    CSceneBytes& RawF32(float v) { return Bytes(&v, 4); }
    CSceneBytes& RawString(const std::string& s)
    {
        RawU32(static_cast<uint32_t>(s.size()));
        data.insert(data.end(), s.begin(), s.end());
        return *this;
    }
    // A tag spells its letters from the top byte down.
    CSceneBytes& Tag(const char* pcFour)
    {
        uint32_t v = (uint32_t(uint8_t(pcFour[0])) << 24) | (uint32_t(uint8_t(pcFour[1])) << 16) |
                     (uint32_t(uint8_t(pcFour[2])) << 8) | uint32_t(uint8_t(pcFour[3]));
        return RawU32(v);
    }
    // A block header; the expectation is the version a writer writes.
    CSceneBytes& Block(const char* pcFour, int32_t iVersion, int32_t iWriterVersion)
    {
        Tag(pcFour).RawI32(iVersion);
        std::string strTag(pcFour, 4);
        while (!strTag.empty() && strTag.back() == ' ')
        {
            strTag.pop_back();
        }
        expected["@" + strTag] = std::to_string(iWriterVersion);
        return *this;
    }

    // --- named fields
    CSceneBytes& U8(const std::string& strName, uint8_t v)
    {
        expected[strName] = std::to_string(v);
        return RawU8(v);
    }
    // A u8 that reads sign-extended.
    CSceneBytes& S8(const std::string& strName, uint8_t v)
    {
        expected[strName] = std::to_string(static_cast<int8_t>(v));
        return RawU8(v);
    }
    CSceneBytes& U16(const std::string& strName, uint16_t v)
    {
        expected[strName] = std::to_string(v);
        return RawU16(v);
    }
    CSceneBytes& I16(const std::string& strName, uint16_t v)
    {
        expected[strName] = std::to_string(static_cast<int16_t>(v));
        return RawU16(v);
    }
    CSceneBytes& I32(const std::string& strName, int32_t v)
    {
        expected[strName] = std::to_string(v);
        return RawI32(v);
    }
    CSceneBytes& U32(const std::string& strName, uint32_t v)
    {
        expected[strName] = std::to_string(v);
        return RawU32(v);
    }
    // A float with a value of its own: each call gives the next one of a series.
    CSceneBytes& F32(const std::string& strName) { return F32(strName, NextFloat()); }
    CSceneBytes& F32(const std::string& strName, float v)
    {
        expected[strName] = FormatFloat(v);
        return RawF32(v);
    }
    CSceneBytes& Vec(const std::string& strName, int iCount)
    {
        for (int i = 0; i < iCount; ++i)
        {
            F32(strName + "." + std::to_string(i));
        }
        return *this;
    }
    CSceneBytes& Vec(const std::string& strName, std::initializer_list<float> values)
    {
        int i = 0;
        for (float v : values)
        {
            F32(strName + "." + std::to_string(i++), v);
        }
        return *this;
    }
    CSceneBytes& Matrix(const std::string& strName) { return Vec(strName, 16); }
    CSceneBytes& Matrix(const std::string& strName, const Kestrin::Utility::CMatrix44& m)
    {
        for (int i = 0; i < 16; ++i)
        {
            F32(strName + "." + std::to_string(i), (&m.m[0][0])[i]);
        }
        return *this;
    }
    CSceneBytes& String(const std::string& strName, const std::string& v)
    {
        expected[strName] = v;
        return RawString(v);
    }

    // The bytes and expectations gathered so far; both start again empty.
    Expected TakeExpected()
    {
        Expected out;
        out.swap(expected);
        return out;
    }
    void Append(const CSceneBytes& other) { data.insert(data.end(), other.data.begin(), other.data.end()); }
    bool IsBigEndian() const { return m_bBig; }
    float NextFloat()
    {
        m_fSeries += 1.25f;
        return m_fSeries;
    }

private:
    CSceneBytes& Bytes(const void* p, size_t n)
    {
        uint8_t a[8];
        memcpy(a, p, n);
        if (m_bBig)
        {
            for (size_t i = 0; i < n / 2; ++i)
            {
                std::swap(a[i], a[n - 1 - i]);
            }
        }
        data.insert(data.end(), a, a + n);
        return *this;
    }

    bool m_bBig;
    float m_fSeries = 0.0f;
};

// Collects what a record description reports, under the same names the builder uses.
class CCollectVisitor final : public Ovrel::ISceneFieldVisitor
{
public:
    Expected values;

    void OnBlock(uint32_t uTag, int32_t iVersion) override;
    void OnInt(const char* pcName, int64_t iValue) override { values[Key(pcName)] = std::to_string(iValue); }
    void OnFloats(const char* pcName, const float* pf, int32_t iCount) override;
    void OnString(const char* pcName, const std::string& s) override { values[Key(pcName)] = s; }
    void OnBytes(const char* pcName, const uint8_t* p, int32_t iCount) override;
    void BeginList(const char* pcName) override;
    void EndList() override { m_lists.pop_back(); }
    void BeginItem() override;
    void EndItem() override { m_bInItem = false; }

private:
    struct CList
    {
        std::string strName;
        int iIndex = -1;
    };
    std::string Key(const char* pcName);

    std::vector<CList> m_lists;
    bool m_bInItem = false;
};

// Every expected field, compared with the collected ones; lists what differs.
std::string CompareFields(const Expected& expected, const Expected& actual);

} // namespace SceneTest
