// CSceneRecordIO: one description of a record, three uses. An entity describes its record
// once, field by field in file order; the same code reads it (checking tags, versions and
// counts), writes it (always at the writer's version), or reports each field by name to a
// visitor (the JSON dump of `edtool scene`). So reader and writer cannot drift apart.
//
// Failure is sticky: after the first short read, failed write or bad count every further
// field is skipped and keeps its value, and Ok() stays false.
#pragma once

#include "engine/renderer/RenderWorld.h"
#include "engine/utility/IOStream.h"
#include "engine/utility/Math.h"

#include <cstdint>
#include <string>
#include <vector>

namespace Ovrel
{

using Kestrin::Utility::CBox3;
using Kestrin::Utility::CIOStream;
using Kestrin::Utility::CMatrix44;
using Kestrin::Utility::CVec2;
using Kestrin::Utility::CVec3;
using Kestrin::Utility::CVec4;

// Receives the fields of a record in file order. Names are null for the items of a list.
class ISceneFieldVisitor
{
public:
    virtual ~ISceneFieldVisitor() = default;
    ISceneFieldVisitor(const ISceneFieldVisitor&) = delete;
    ISceneFieldVisitor& operator=(const ISceneFieldVisitor&) = delete;

    // A block begins, with its tag and the version that is described.
    virtual void OnBlock(uint32_t uTag, int32_t iVersion) = 0;
    virtual void OnInt(const char* pcName, int64_t iValue) = 0;
    // One float (iCount 1) or a vector or matrix of iCount floats.
    virtual void OnFloats(const char* pcName, const float* pfValues, int32_t iCount) = 0;
    virtual void OnString(const char* pcName, const std::string& strValue) = 0;
    virtual void OnBytes(const char* pcName, const uint8_t* pValues, int32_t iCount) = 0;
    // A list of values, or of items (BeginItem/EndItem around each item's named fields).
    virtual void BeginList(const char* pcName) = 0;
    virtual void EndList() = 0;
    virtual void BeginItem() = 0;
    virtual void EndItem() = 0;

protected:
    ISceneFieldVisitor() = default;
};

enum class ESceneBlock
{
    OK,
    WRONG_TAG,
    TOO_NEW,
    SHORT, // the stream ended inside the block header
};

class CSceneRecordIO
{
public:
    // Reads (bReading) or writes through the stream, with its byte order.
    CSceneRecordIO(CIOStream& stream, bool bReading);
    // Reports every field to the visitor, as a writer would write it.
    explicit CSceneRecordIO(ISceneFieldVisitor& visitor);
    CSceneRecordIO(const CSceneRecordIO&) = delete;
    CSceneRecordIO& operator=(const CSceneRecordIO&) = delete;

    bool IsReading() const { return m_eMode == MODE_READ; }
    bool IsWriting() const { return m_eMode == MODE_WRITE; }
    bool IsDescribing() const { return m_eMode == MODE_DESCRIBE; }
    bool Ok() const { return !m_bFailed; }
    void Fail() { m_bFailed = true; }

    // The block header: tag and version. Reading compares the tag and refuses a version above
    // iVersion (neither sets the failure; the caller decides), and from then on Since()
    // answers for the version read. Writing and describing use iVersion.
    ESceneBlock Block(uint32_t uTag, int32_t iVersion);
    int32_t Version() const { return m_iVersion; }
    // The field appeared in version iVersion of the current block.
    bool Since(int32_t iVersion) const { return m_iVersion >= iVersion; }

    void U8(const char* pcName, uint8_t& uValue);
    // A u8 on disk, sign-extended on reading; written as its low byte.
    void U8Signed(const char* pcName, int32_t& iValue);
    void U16(const char* pcName, uint16_t& uValue);
    void I16(const char* pcName, int16_t& iValue);
    void I32(const char* pcName, int32_t& iValue);
    void U32(const char* pcName, uint32_t& uValue);
    void F32(const char* pcName, float& fValue);
    void Vec2(const char* pcName, CVec2& vValue);
    void Vec3(const char* pcName, CVec3& vValue);
    void Vec4(const char* pcName, CVec4& vValue);
    void Matrix(const char* pcName, CMatrix44& mValue);
    void String(const char* pcName, std::string& strValue);
    // A fixed number of raw bytes.
    void Bytes(const char* pcName, uint8_t* pValues, int32_t iCount);

    // Lists with an int32 count. Reading grows the list only as the data arrives, so a count
    // past the end of the stream costs no more memory than the stream holds; a negative
    // count fails.
    void Vec3List(const char* pcName, std::vector<CVec3>& values);
    void U16List(const char* pcName, std::vector<uint16_t>& values);
    void I32List(const char* pcName, std::vector<int32_t>& values);
    void F32List(const char* pcName, std::vector<float>& values);
    void EdgeList(const char* pcName, std::vector<Kestrin::Ext::CRenderEdge>& values);

    // Structure for the visitor only; no bytes move.
    void BeginList(const char* pcName);
    void EndList();
    void BeginItem();
    void EndItem();

private:
    enum EMode
    {
        MODE_READ,
        MODE_WRITE,
        MODE_DESCRIBE,
    };

    bool ReadCount(int32_t& iCount);

    CIOStream* m_pStream = nullptr;
    ISceneFieldVisitor* m_pVisitor = nullptr;
    EMode m_eMode;
    int32_t m_iVersion = 0;
    bool m_bFailed = false;
};

} // namespace Ovrel
