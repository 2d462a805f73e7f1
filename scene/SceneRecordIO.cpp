#include "scene/SceneRecordIO.h"

#include <algorithm>

namespace Ovrel
{

namespace
{
// Lists are read in pieces of this many elements.
constexpr int32_t LIST_PIECE = 4096;
} // namespace

CSceneRecordIO::CSceneRecordIO(CIOStream& stream, bool bReading)
    : m_pStream(&stream), m_eMode(bReading ? MODE_READ : MODE_WRITE)
{
}

CSceneRecordIO::CSceneRecordIO(ISceneFieldVisitor& visitor) : m_pVisitor(&visitor), m_eMode(MODE_DESCRIBE) {}

ESceneBlock CSceneRecordIO::Block(uint32_t uTag, int32_t iVersion)
{
    if (m_bFailed)
    {
        return ESceneBlock::SHORT;
    }
    if (m_eMode == MODE_DESCRIBE)
    {
        m_pVisitor->OnBlock(uTag, iVersion);
        m_iVersion = iVersion;
        return ESceneBlock::OK;
    }
    if (m_eMode == MODE_WRITE)
    {
        if (!m_pStream->WriteU32(uTag) || !m_pStream->WriteI32(iVersion))
        {
            m_bFailed = true;
            return ESceneBlock::SHORT;
        }
        m_iVersion = iVersion;
        return ESceneBlock::OK;
    }
    uint32_t uRead = 0;
    if (!m_pStream->ReadU32(uRead))
    {
        m_bFailed = true;
        return ESceneBlock::SHORT;
    }
    if (uRead != uTag)
    {
        return ESceneBlock::WRONG_TAG;
    }
    int32_t iRead = 0;
    if (!m_pStream->ReadI32(iRead))
    {
        m_bFailed = true;
        return ESceneBlock::SHORT;
    }
    if (iRead > iVersion)
    {
        return ESceneBlock::TOO_NEW;
    }
    m_iVersion = iRead;
    return ESceneBlock::OK;
}

// One body for the scalar kinds: read into the target, write from it, or report it.
#define SCENE_IO_SCALAR(READ, WRITE, DESCRIBE)                                                               \
    if (m_bFailed)                                                                                           \
    {                                                                                                        \
        return;                                                                                              \
    }                                                                                                        \
    switch (m_eMode)                                                                                         \
    {                                                                                                        \
        case MODE_READ:                                                                                      \
            m_bFailed = !(READ);                                                                             \
            break;                                                                                           \
        case MODE_WRITE:                                                                                     \
            m_bFailed = !(WRITE);                                                                            \
            break;                                                                                           \
        case MODE_DESCRIBE:                                                                                  \
            DESCRIBE;                                                                                        \
            break;                                                                                           \
    }

void CSceneRecordIO::U8(const char* pcName, uint8_t& uValue)
{
    SCENE_IO_SCALAR(m_pStream->ReadU8(uValue), m_pStream->WriteU8(uValue), m_pVisitor->OnInt(pcName, uValue))
}

void CSceneRecordIO::U8Signed(const char* pcName, int32_t& iValue)
{
    int8_t iByte = static_cast<int8_t>(iValue);
    SCENE_IO_SCALAR(m_pStream->ReadI8(iByte), m_pStream->WriteI8(iByte), m_pVisitor->OnInt(pcName, iValue))
    if (m_eMode == MODE_READ && !m_bFailed)
    {
        iValue = iByte;
    }
}

void CSceneRecordIO::U16(const char* pcName, uint16_t& uValue)
{
    SCENE_IO_SCALAR(m_pStream->ReadU16(uValue), m_pStream->WriteU16(uValue),
                    m_pVisitor->OnInt(pcName, uValue))
}

void CSceneRecordIO::I16(const char* pcName, int16_t& iValue)
{
    SCENE_IO_SCALAR(m_pStream->ReadI16(iValue), m_pStream->WriteI16(iValue),
                    m_pVisitor->OnInt(pcName, iValue))
}

void CSceneRecordIO::I32(const char* pcName, int32_t& iValue)
{
    SCENE_IO_SCALAR(m_pStream->ReadI32(iValue), m_pStream->WriteI32(iValue),
                    m_pVisitor->OnInt(pcName, iValue))
}

void CSceneRecordIO::U32(const char* pcName, uint32_t& uValue)
{
    SCENE_IO_SCALAR(m_pStream->ReadU32(uValue), m_pStream->WriteU32(uValue),
                    m_pVisitor->OnInt(pcName, uValue))
}

void CSceneRecordIO::F32(const char* pcName, float& fValue)
{
    SCENE_IO_SCALAR(m_pStream->ReadFloat(fValue), m_pStream->WriteFloat(fValue),
                    m_pVisitor->OnFloats(pcName, &fValue, 1))
}

void CSceneRecordIO::Vec2(const char* pcName, CVec2& vValue)
{
    SCENE_IO_SCALAR(m_pStream->ReadVec2(vValue), m_pStream->WriteVec2(vValue),
                    m_pVisitor->OnFloats(pcName, &vValue.x, 2))
}

void CSceneRecordIO::Vec3(const char* pcName, CVec3& vValue)
{
    SCENE_IO_SCALAR(m_pStream->ReadVec3(vValue), m_pStream->WriteVec3(vValue),
                    m_pVisitor->OnFloats(pcName, &vValue.x, 3))
}

void CSceneRecordIO::Vec4(const char* pcName, CVec4& vValue)
{
    SCENE_IO_SCALAR(m_pStream->ReadVec4(vValue), m_pStream->WriteVec4(vValue),
                    m_pVisitor->OnFloats(pcName, &vValue.x, 4))
}

void CSceneRecordIO::Matrix(const char* pcName, CMatrix44& mValue)
{
    SCENE_IO_SCALAR(m_pStream->ReadMatrix(mValue), m_pStream->WriteMatrix(mValue),
                    m_pVisitor->OnFloats(pcName, &mValue.m[0][0], 16))
}

void CSceneRecordIO::String(const char* pcName, std::string& strValue)
{
    SCENE_IO_SCALAR(m_pStream->ReadString(strValue), m_pStream->WriteString(strValue),
                    m_pVisitor->OnString(pcName, strValue))
}

void CSceneRecordIO::Bytes(const char* pcName, uint8_t* pValues, int32_t iCount)
{
    SCENE_IO_SCALAR(m_pStream->ReadU8Array(pValues, iCount), m_pStream->WriteU8Array(pValues, iCount),
                    m_pVisitor->OnBytes(pcName, pValues, iCount))
}

#undef SCENE_IO_SCALAR

bool CSceneRecordIO::ReadCount(int32_t& iCount)
{
    if (!m_pStream->ReadI32(iCount) || iCount < 0)
    {
        m_bFailed = true;
        return false;
    }
    return true;
}

// The list bodies differ only in the element type and the stream's array call.
#define SCENE_IO_LIST(TYPE, VALUES, READ_ARRAY, WRITE_ARRAY, DESCRIBE_ONE)                                   \
    if (m_bFailed)                                                                                           \
    {                                                                                                        \
        return;                                                                                              \
    }                                                                                                        \
    if (m_eMode == MODE_DESCRIBE)                                                                            \
    {                                                                                                        \
        m_pVisitor->BeginList(pcName);                                                                       \
        for (TYPE & item : VALUES)                                                                           \
        {                                                                                                    \
            DESCRIBE_ONE;                                                                                    \
        }                                                                                                    \
        m_pVisitor->EndList();                                                                               \
        return;                                                                                              \
    }                                                                                                        \
    if (m_eMode == MODE_WRITE)                                                                               \
    {                                                                                                        \
        int32_t iCount = static_cast<int32_t>(VALUES.size());                                                \
        m_bFailed = !m_pStream->WriteI32(iCount) || !(WRITE_ARRAY);                                          \
        return;                                                                                              \
    }                                                                                                        \
    int32_t iCount = 0;                                                                                      \
    if (!ReadCount(iCount))                                                                                  \
    {                                                                                                        \
        return;                                                                                              \
    }                                                                                                        \
    std::vector<TYPE> read;                                                                                  \
    for (int32_t iDone = 0; iDone < iCount;)                                                                 \
    {                                                                                                        \
        int32_t iPiece = std::min(iCount - iDone, LIST_PIECE);                                               \
        read.resize(static_cast<size_t>(iDone + iPiece));                                                    \
        TYPE* pAt = read.data() + iDone;                                                                     \
        if (!(READ_ARRAY))                                                                                   \
        {                                                                                                    \
            m_bFailed = true;                                                                                \
            return;                                                                                          \
        }                                                                                                    \
        iDone += iPiece;                                                                                     \
    }                                                                                                        \
    VALUES.swap(read);

void CSceneRecordIO::Vec3List(const char* pcName, std::vector<CVec3>& values)
{
    SCENE_IO_LIST(CVec3, values, m_pStream->ReadVec3Array(pAt, iPiece),
                  m_pStream->WriteVec3Array(values.data(), iCount), m_pVisitor->OnFloats(nullptr, &item.x, 3))
}

void CSceneRecordIO::U16List(const char* pcName, std::vector<uint16_t>& values)
{
    SCENE_IO_LIST(uint16_t, values, m_pStream->ReadU16Array(pAt, iPiece),
                  m_pStream->WriteU16Array(values.data(), iCount), m_pVisitor->OnInt(nullptr, item))
}

void CSceneRecordIO::I32List(const char* pcName, std::vector<int32_t>& values)
{
    SCENE_IO_LIST(int32_t, values, m_pStream->ReadI32Array(pAt, iPiece),
                  m_pStream->WriteI32Array(values.data(), iCount), m_pVisitor->OnInt(nullptr, item))
}

void CSceneRecordIO::F32List(const char* pcName, std::vector<float>& values)
{
    SCENE_IO_LIST(float, values, m_pStream->ReadFloatArray(pAt, iPiece),
                  m_pStream->WriteFloatArray(values.data(), iCount), m_pVisitor->OnFloats(nullptr, &item, 1))
}

void CSceneRecordIO::EdgeList(const char* pcName, std::vector<Kestrin::Ext::CRenderEdge>& values)
{
    static_assert(sizeof(Kestrin::Ext::CRenderEdge) == 4, "an edge is two u16 on disk and in memory");
    SCENE_IO_LIST(Kestrin::Ext::CRenderEdge, values,
                  m_pStream->ReadU16Array(reinterpret_cast<uint16_t*>(pAt), iPiece * 2),
                  m_pStream->WriteU16Array(reinterpret_cast<const uint16_t*>(values.data()), iCount * 2), {
                      m_pVisitor->BeginItem();
                      m_pVisitor->OnInt("a", item.uA);
                      m_pVisitor->OnInt("b", item.uB);
                      m_pVisitor->EndItem();
                  })
}

#undef SCENE_IO_LIST

void CSceneRecordIO::BeginList(const char* pcName)
{
    if (m_eMode == MODE_DESCRIBE && !m_bFailed)
    {
        m_pVisitor->BeginList(pcName);
    }
}

void CSceneRecordIO::EndList()
{
    if (m_eMode == MODE_DESCRIBE && !m_bFailed)
    {
        m_pVisitor->EndList();
    }
}

void CSceneRecordIO::BeginItem()
{
    if (m_eMode == MODE_DESCRIBE && !m_bFailed)
    {
        m_pVisitor->BeginItem();
    }
}

void CSceneRecordIO::EndItem()
{
    if (m_eMode == MODE_DESCRIBE && !m_bFailed)
    {
        m_pVisitor->EndItem();
    }
}

} // namespace Ovrel
