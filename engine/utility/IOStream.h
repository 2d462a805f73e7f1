// CIOStream: the serialisation channel of every binary format. Two virtual operations move
// bytes; the typed operations above them apply the byte order.
//
// swapBytes is a public flag: a format's reader sets or flips it after looking at the file's
// magic (CheckMagic), and it stays for the rest of the stream, writes included.
//
// A typed read of a value (up to 64 bytes) is all or nothing: a short read leaves the target
// as it was and returns false. Formats guard themselves by tags, versions and counts; the
// bool lets a reader stop at the first short read instead of going on with stale values.
//
// The memory streams expose their bytes as direct windows, so typed operations on them are
// inline copies with no virtual call; long swapped arrays use vector instructions.
#pragma once

#include "engine/utility/Math.h"

#include <cstdint>
#include <cstdio>
#include <cstring>
#include <string>

#if defined(__SSE2__)
#include <emmintrin.h>
#if defined(__SSSE3__)
#include <tmmintrin.h>
#endif
#endif

namespace Kestrin::Utility
{

class CIOStream
{
public:
    virtual ~CIOStream() = default;

    // Moves up to iSize bytes; returns the count moved (0 when none or iSize < 1).
    virtual int32_t Read(void* pBuffer, int32_t iSize) = 0;
    virtual int32_t Write(const void* pBuffer, int32_t iSize) = 0;

    bool m_bSwapBytes = false;

    // --- reads: true when every byte came; otherwise the target is unchanged.
    bool ReadU8(uint8_t& v) { return ReadBytes(&v, 1); }
    bool ReadI8(int8_t& v) { return ReadBytes(&v, 1); }
    bool ReadBool(bool& v);
    bool ReadU16(uint16_t& v);
    bool ReadI16(int16_t& v);
    bool ReadU32(uint32_t& v);
    bool ReadI32(int32_t& v);
    bool ReadFloat(float& v);
    bool ReadVec2(CVec2& v) { return ReadFloatArray(&v.x, 2); }
    bool ReadVec3(CVec3& v) { return ReadFloatArray(&v.x, 3); }
    bool ReadVec4(CVec4& v) { return ReadFloatArray(&v.x, 4); }
    bool ReadQuat(CQuat& v) { return ReadFloatArray(&v.x, 4); }
    bool ReadPlane(CPlane& v) { return ReadFloatArray(&v.a, 4); }
    bool ReadMatrix(CMatrix44& v) { return ReadFloatArray(&v.m[0][0], 16); }
    // A u32 byte count, then the bytes, no terminator. 0 empties the string.
    bool ReadString(std::string& v);

    // Array paths: iCount elements in one read, each element swapped when swapBytes is set.
    // Up to 64 bytes they are all or nothing, like the single reads; a longer array read
    // straight into place has unspecified contents after a short read.
    bool ReadU8Array(uint8_t* p, int32_t iCount) { return ReadBytes(p, iCount); }
    bool ReadU16Array(uint16_t* p, int32_t iCount) { return Read16(p, iCount); }
    bool ReadU32Array(uint32_t* p, int32_t iCount) { return Read32(p, iCount); }
    bool ReadI32Array(int32_t* p, int32_t iCount) { return Read32(p, iCount); }
    bool ReadFloatArray(float* p, int32_t iCount) { return Read32(p, iCount); }
    bool ReadVec3Array(CVec3* p, int32_t iCount) { return Read32(p, Elements(iCount, 3)); }
    bool ReadMatrixArray(CMatrix44* p, int32_t iCount) { return Read32(p, Elements(iCount, 16)); }

    // --- writes: true when every byte went. The caller's data is never changed.
    bool WriteU8(uint8_t v) { return WriteBytes(&v, 1); }
    bool WriteI8(int8_t v) { return WriteBytes(&v, 1); }
    bool WriteBool(bool v);
    bool WriteU16(uint16_t v) { return Write16(&v, 1); }
    bool WriteI16(int16_t v) { return Write16(&v, 1); }
    bool WriteU32(uint32_t v);
    bool WriteI32(int32_t v) { return WriteU32(static_cast<uint32_t>(v)); }
    bool WriteFloat(float v);
    bool WriteVec2(const CVec2& v) { return WriteFloatArray(&v.x, 2); }
    bool WriteVec3(const CVec3& v) { return WriteFloatArray(&v.x, 3); }
    bool WriteVec4(const CVec4& v) { return WriteFloatArray(&v.x, 4); }
    bool WriteQuat(const CQuat& v) { return WriteFloatArray(&v.x, 4); }
    bool WritePlane(const CPlane& v) { return WriteFloatArray(&v.a, 4); }
    bool WriteMatrix(const CMatrix44& v) { return WriteFloatArray(&v.m[0][0], 16); }
    bool WriteString(const std::string& v);
    // A null pointer writes a count of 0, as an empty string does.
    bool WriteString(const char* pcText);

    bool WriteU8Array(const uint8_t* p, int32_t iCount) { return WriteBytes(p, iCount); }
    bool WriteU16Array(const uint16_t* p, int32_t iCount) { return Write16(p, iCount); }
    bool WriteU32Array(const uint32_t* p, int32_t iCount) { return Write32(p, iCount); }
    bool WriteI32Array(const int32_t* p, int32_t iCount) { return Write32(p, iCount); }
    bool WriteFloatArray(const float* p, int32_t iCount) { return Write32(p, iCount); }
    bool WriteVec3Array(const CVec3* p, int32_t iCount) { return Write32(p, Elements(iCount, 3)); }
    bool WriteMatrixArray(const CMatrix44* p, int32_t iCount) { return Write32(p, Elements(iCount, 16)); }

    // Reads a u32 and compares it with uMagic; on a mismatch compares its byte-reversed value
    // and, when that matches, flips swapBytes. False when neither matches (the flag is then
    // left alone) or the stream is exhausted.
    bool CheckMagic(uint32_t uMagic);

protected:
    CIOStream() = default;
    CIOStream(const CIOStream&) = delete;
    CIOStream& operator=(const CIOStream&) = delete;

    // Direct windows. A stream whose bytes lie in memory points these at them (cursor: the
    // next byte, limit: one past the last); the typed operations then move bytes without a
    // virtual call while the window holds enough, and call Read or Write otherwise. Streams
    // that leave them null always go through Read and Write. Read and Write of such a
    // stream must advance the cursor themselves.
    const uint8_t* m_pReadCursor = nullptr;
    const uint8_t* m_pReadLimit = nullptr;
    uint8_t* m_pWriteCursor = nullptr;
    uint8_t* m_pWriteLimit = nullptr;

private:
    // -1 (refused by the array paths) when the element count overflows.
    static int32_t Elements(int32_t iCount, int32_t iPer)
    {
        int64_t iTotal = static_cast<int64_t>(iCount) * iPer;
        return iTotal > INT32_MAX ? -1 : static_cast<int32_t>(iTotal);
    }
    bool CanRead(int64_t iBytes) const { return m_pReadLimit - m_pReadCursor >= iBytes; }
    bool CanWrite(int64_t iBytes) const { return m_pWriteLimit - m_pWriteCursor >= iBytes; }

    bool ReadBytes(void* p, int32_t iSize);
    bool WriteBytes(const void* p, int32_t iSize);
    bool Read16(void* p, int32_t iElements);
    bool Write16(const void* p, int32_t iElements);
    bool Read32(void* p, int32_t iElements);
    bool Write32(const void* p, int32_t iElements);

    // The paths through Read and Write, for streams without a window or a short one.
    bool ReadBytesSlow(void* p, int32_t iSize);
    bool WriteBytesSlow(const void* p, int32_t iSize);
    bool ReadArraySlow(void* p, int32_t iElements, int iWidth);
    bool WriteArraySlow(const void* p, int32_t iElements, int iWidth);
    // Copies iElements 4-byte (2-byte) elements from pSrc to pDst, reversing each. pDst may
    // equal pSrc. Uses the widest vector instructions the processor has.
    static void CopySwap32(void* pDst, const void* pSrc, int32_t iElements);
    static void CopySwap16(void* pDst, const void* pSrc, int32_t iElements);
    // The same for 1 to 16 elements (a value, a vector, a matrix), as straight-line code
    // where the count is a constant.
    static void CopySwapSmall32(uint8_t* pDst, const uint8_t* pSrc, int32_t iElements);
};

// ---------------------------------------------------------------------------------------
// The typed operations' fast paths, inline so that a reader of small values pays no call.

inline void CIOStream::CopySwapSmall32(uint8_t* pDst, const uint8_t* pSrc, int32_t iElements)
{
    int32_t i = 0;
#if defined(__SSSE3__)
    // One byte shuffle reverses the four bytes of each of four elements.
    const __m128i mask = _mm_setr_epi8(3, 2, 1, 0, 7, 6, 5, 4, 11, 10, 9, 8, 15, 14, 13, 12);
#pragma GCC unroll 4
    for (; i + 4 <= iElements; i += 4)
    {
        __m128i v = _mm_loadu_si128(reinterpret_cast<const __m128i*>(pSrc + i * 4));
        _mm_storeu_si128(reinterpret_cast<__m128i*>(pDst + i * 4), _mm_shuffle_epi8(v, mask));
    }
#elif defined(__SSE2__)
#pragma GCC unroll 4
    for (; i + 4 <= iElements; i += 4)
    {
        __m128i v = _mm_loadu_si128(reinterpret_cast<const __m128i*>(pSrc + i * 4));
        v = _mm_or_si128(_mm_slli_epi16(v, 8), _mm_srli_epi16(v, 8));
        v = _mm_shufflehi_epi16(_mm_shufflelo_epi16(v, 0xB1), 0xB1);
        _mm_storeu_si128(reinterpret_cast<__m128i*>(pDst + i * 4), v);
    }
#endif
#pragma GCC unroll 4
    for (; i < iElements; ++i)
    {
        uint32_t u;
        memcpy(&u, pSrc + i * 4, 4);
        u = __builtin_bswap32(u);
        memcpy(pDst + i * 4, &u, 4);
    }
}

inline bool CIOStream::ReadBytes(void* p, int32_t iSize)
{
    if (iSize > 0 && CanRead(iSize))
    {
        memcpy(p, m_pReadCursor, static_cast<size_t>(iSize));
        m_pReadCursor += iSize;
        return true;
    }
    return ReadBytesSlow(p, iSize);
}

inline bool CIOStream::WriteBytes(const void* p, int32_t iSize)
{
    if (iSize > 0 && CanWrite(iSize))
    {
        memcpy(m_pWriteCursor, p, static_cast<size_t>(iSize));
        m_pWriteCursor += iSize;
        return true;
    }
    return WriteBytesSlow(p, iSize);
}

inline bool CIOStream::Read32(void* p, int32_t iElements)
{
    const int64_t iBytes = static_cast<int64_t>(iElements) * 4;
    if (iElements <= 0 || !CanRead(iBytes))
    {
        return ReadArraySlow(p, iElements, 4);
    }
    if (!m_bSwapBytes)
    {
        memcpy(p, m_pReadCursor, static_cast<size_t>(iBytes));
    }
    else if (iElements <= 16)
    {
        CopySwapSmall32(static_cast<uint8_t*>(p), m_pReadCursor, iElements);
    }
    else
    {
        CopySwap32(p, m_pReadCursor, iElements);
    }
    m_pReadCursor += iBytes;
    return true;
}

inline bool CIOStream::Write32(const void* p, int32_t iElements)
{
    const int64_t iBytes = static_cast<int64_t>(iElements) * 4;
    if (iElements <= 0 || !CanWrite(iBytes))
    {
        return WriteArraySlow(p, iElements, 4);
    }
    if (!m_bSwapBytes)
    {
        memcpy(m_pWriteCursor, p, static_cast<size_t>(iBytes));
    }
    else if (iElements <= 16)
    {
        CopySwapSmall32(m_pWriteCursor, static_cast<const uint8_t*>(p), iElements);
    }
    else
    {
        CopySwap32(m_pWriteCursor, p, iElements);
    }
    m_pWriteCursor += iBytes;
    return true;
}

inline bool CIOStream::Read16(void* p, int32_t iElements)
{
    const int64_t iBytes = static_cast<int64_t>(iElements) * 2;
    if (iElements <= 0 || !CanRead(iBytes))
    {
        return ReadArraySlow(p, iElements, 2);
    }
    if (!m_bSwapBytes)
    {
        memcpy(p, m_pReadCursor, static_cast<size_t>(iBytes));
    }
    else
    {
        CopySwap16(p, m_pReadCursor, iElements);
    }
    m_pReadCursor += iBytes;
    return true;
}

inline bool CIOStream::Write16(const void* p, int32_t iElements)
{
    const int64_t iBytes = static_cast<int64_t>(iElements) * 2;
    if (iElements <= 0 || !CanWrite(iBytes))
    {
        return WriteArraySlow(p, iElements, 2);
    }
    if (!m_bSwapBytes)
    {
        memcpy(m_pWriteCursor, p, static_cast<size_t>(iBytes));
    }
    else
    {
        CopySwap16(m_pWriteCursor, p, iElements);
    }
    m_pWriteCursor += iBytes;
    return true;
}

inline bool CIOStream::ReadU16(uint16_t& v)
{
    return Read16(&v, 1);
}

inline bool CIOStream::ReadI16(int16_t& v)
{
    return Read16(&v, 1);
}

inline bool CIOStream::ReadU32(uint32_t& v)
{
    return Read32(&v, 1);
}

inline bool CIOStream::ReadI32(int32_t& v)
{
    return Read32(&v, 1);
}

inline bool CIOStream::ReadFloat(float& v)
{
    return Read32(&v, 1);
}

inline bool CIOStream::WriteU32(uint32_t v)
{
    return Write32(&v, 1);
}

inline bool CIOStream::WriteFloat(float v)
{
    return Write32(&v, 1);
}

// A C runtime file. The name passes through no search: pack files are not consulted.
class CFileStream final : public CIOStream
{
public:
    CFileStream() = default;
    ~CFileStream() override;

    // Close any open file, then open with "rb" / "wb". False when the open failed.
    bool OpenRead(const char* pcPath);
    bool OpenWrite(const char* pcPath);
    void Close();
    bool IsOpen() const { return m_pFile != nullptr; }

    // 0 when no file is open, else what the runtime moved.
    int32_t Read(void* pBuffer, int32_t iSize) override;
    int32_t Write(const void* pBuffer, int32_t iSize) override;

private:
    FILE* m_pFile = nullptr;
};

// Two windows over blocks the owner provides: reads come from the read window, writes go to
// the write window. Neither grows: a write past the end is cut short. The windows are the
// direct windows of CIOStream, so typed operations on them make no virtual call.
class CMemoryStream final : public CIOStream
{
public:
    CMemoryStream() = default;
    CMemoryStream(const void* pReadBase, int32_t iReadSize) { SetReadWindow(pReadBase, iReadSize); }

    // A null base or a negative size gives an empty window.
    void SetReadWindow(const void* pBase, int32_t iSize);
    void SetWriteWindow(void* pBase, int32_t iSize);
    int32_t GetReadPosition() const { return static_cast<int32_t>(m_pReadCursor - m_pReadBase); }
    int32_t GetReadSize() const { return m_iReadSize; }
    int32_t GetReadRemaining() const { return static_cast<int32_t>(m_pReadLimit - m_pReadCursor); }
    // Moves the read position, clamped to the window.
    void SeekRead(int32_t iPosition);
    int32_t GetWritePosition() const { return static_cast<int32_t>(m_pWriteCursor - m_pWriteBase); }

    int32_t Read(void* pBuffer, int32_t iSize) override;
    int32_t Write(const void* pBuffer, int32_t iSize) override;

private:
    // The positions are the cursors of the direct windows.
    const uint8_t* m_pReadBase = nullptr;
    int32_t m_iReadSize = 0;
    uint8_t* m_pWriteBase = nullptr;
    int32_t m_iWriteSize = 0;
};

// A growing byte array it owns. Read always returns 0. The free room behind the end is the
// direct write window: begin, end (the cursor) and capacity (the limit).
class CMemoryWriteStream final : public CIOStream
{
public:
    CMemoryWriteStream() = default;
    ~CMemoryWriteStream() override;

    int32_t Read(void* pBuffer, int32_t iSize) override;
    int32_t Write(const void* pBuffer, int32_t iSize) override;

    // Empties the array and keeps the block.
    void Clear() { m_pWriteCursor = m_pBegin; }
    // The block, or null while the array is empty.
    const uint8_t* GetData() const { return m_pWriteCursor == m_pBegin ? nullptr : m_pBegin; }
    int32_t GetSize() const { return static_cast<int32_t>(m_pWriteCursor - m_pBegin); }
    void Reserve(int32_t iCapacity);

private:
    uint8_t* m_pBegin = nullptr;
};

} // namespace Kestrin::Utility
