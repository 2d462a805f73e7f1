// CIOStream: the serialisation channel of every binary format. Two virtual operations move
// bytes; the typed operations above them apply the byte order.
//
// swapBytes is a public flag: a format's reader sets or flips it after looking at the file's
// magic (CheckMagic), and it stays for the rest of the stream, writes included.
//
// Typed reads go through a temporary: a short read leaves the target as it was and returns
// false. Formats guard themselves by tags, versions and counts; the bool lets a reader stop at
// the first short read instead of going on with stale values.
#pragma once

#include "engine/utility/Math.h"

#include <cstdint>
#include <cstdio>
#include <string>

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
    bool ReadU8(uint8_t& v) { return ReadRaw(&v, 1); }
    bool ReadI8(int8_t& v) { return ReadRaw(&v, 1); }
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
    bool ReadU8Array(uint8_t* p, int32_t iCount) { return ReadRaw(p, iCount); }
    bool ReadU16Array(uint16_t* p, int32_t iCount) { return ReadArray(p, iCount, 2); }
    bool ReadU32Array(uint32_t* p, int32_t iCount) { return ReadArray(p, iCount, 4); }
    bool ReadI32Array(int32_t* p, int32_t iCount) { return ReadArray(p, iCount, 4); }
    bool ReadFloatArray(float* p, int32_t iCount) { return ReadArray(p, iCount, 4); }
    bool ReadVec3Array(CVec3* p, int32_t iCount) { return ReadArray(p, iCount * 3, 4); }
    bool ReadMatrixArray(CMatrix44* p, int32_t iCount) { return ReadArray(p, iCount * 16, 4); }

    // --- writes: true when every byte went. The caller's data is never changed.
    bool WriteU8(uint8_t v) { return WriteRaw(&v, 1); }
    bool WriteI8(int8_t v) { return WriteRaw(&v, 1); }
    bool WriteBool(bool v);
    bool WriteU16(uint16_t v);
    bool WriteI16(int16_t v);
    bool WriteU32(uint32_t v);
    bool WriteI32(int32_t v);
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

    bool WriteU8Array(const uint8_t* p, int32_t iCount) { return WriteRaw(p, iCount); }
    bool WriteU16Array(const uint16_t* p, int32_t iCount) { return WriteArray(p, iCount, 2); }
    bool WriteU32Array(const uint32_t* p, int32_t iCount) { return WriteArray(p, iCount, 4); }
    bool WriteI32Array(const int32_t* p, int32_t iCount) { return WriteArray(p, iCount, 4); }
    bool WriteFloatArray(const float* p, int32_t iCount) { return WriteArray(p, iCount, 4); }
    bool WriteVec3Array(const CVec3* p, int32_t iCount) { return WriteArray(p, iCount * 3, 4); }
    bool WriteMatrixArray(const CMatrix44* p, int32_t iCount) { return WriteArray(p, iCount * 16, 4); }

    // Reads a u32 and compares it with uMagic; on a mismatch compares its byte-reversed value
    // and, when that matches, flips swapBytes. False when neither matches (the flag is then
    // left alone) or the stream is exhausted.
    bool CheckMagic(uint32_t uMagic);

protected:
    CIOStream() = default;
    CIOStream(const CIOStream&) = delete;
    CIOStream& operator=(const CIOStream&) = delete;

private:
    bool ReadRaw(void* p, int32_t iSize);
    bool WriteRaw(const void* p, int32_t iSize);
    bool ReadArray(void* p, int32_t iElements, int iWidth);
    bool WriteArray(const void* p, int32_t iElements, int iWidth);
};

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
// the write window. Neither grows: a write past the end is cut short.
class CMemoryStream final : public CIOStream
{
public:
    CMemoryStream() = default;
    CMemoryStream(const void* pReadBase, int32_t iReadSize) { SetReadWindow(pReadBase, iReadSize); }

    void SetReadWindow(const void* pBase, int32_t iSize)
    {
        m_pReadBase = static_cast<const uint8_t*>(pBase);
        m_iReadSize = iSize;
        m_iReadPos = 0;
    }
    void SetWriteWindow(void* pBase, int32_t iSize)
    {
        m_pWriteBase = static_cast<uint8_t*>(pBase);
        m_iWriteSize = iSize;
        m_iWritePos = 0;
    }
    int32_t GetReadPosition() const { return m_iReadPos; }
    int32_t GetReadSize() const { return m_iReadSize; }
    int32_t GetReadRemaining() const { return m_iReadSize - m_iReadPos; }
    // Moves the read position, clamped to the window.
    void SeekRead(int32_t iPosition);
    int32_t GetWritePosition() const { return m_iWritePos; }

    int32_t Read(void* pBuffer, int32_t iSize) override;
    int32_t Write(const void* pBuffer, int32_t iSize) override;

private:
    const uint8_t* m_pReadBase = nullptr;
    int32_t m_iReadSize = 0;
    int32_t m_iReadPos = 0;
    uint8_t* m_pWriteBase = nullptr;
    int32_t m_iWriteSize = 0;
    int32_t m_iWritePos = 0;
};

// A growing byte array it owns. Read always returns 0.
class CMemoryWriteStream final : public CIOStream
{
public:
    CMemoryWriteStream() = default;
    ~CMemoryWriteStream() override;

    int32_t Read(void* pBuffer, int32_t iSize) override;
    int32_t Write(const void* pBuffer, int32_t iSize) override;

    // Empties the array and keeps the block.
    void Clear() { m_pEnd = m_pBegin; }
    // The block, or null while the array is empty.
    const uint8_t* GetData() const { return m_pEnd == m_pBegin ? nullptr : m_pBegin; }
    int32_t GetSize() const { return static_cast<int32_t>(m_pEnd - m_pBegin); }
    void Reserve(int32_t iCapacity);

private:
    uint8_t* m_pBegin = nullptr;
    uint8_t* m_pEnd = nullptr;
    uint8_t* m_pCapacity = nullptr;
};

} // namespace Kestrin::Utility
