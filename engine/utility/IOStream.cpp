#include "engine/utility/IOStream.h"

#include <algorithm>
#include <cstdlib>
#include <cstring>

namespace Kestrin::Utility
{

namespace
{
inline void Swap2(uint8_t* p)
{
    std::swap(p[0], p[1]);
}

inline void Swap4(uint8_t* p)
{
    uint32_t v;
    memcpy(&v, p, 4);
    v = __builtin_bswap32(v);
    memcpy(p, &v, 4);
}

void SwapElements(uint8_t* p, int32_t iElements, int iWidth)
{
    if (iWidth == 4)
    {
        for (int32_t i = 0; i < iElements; ++i)
        {
            Swap4(p + i * 4);
        }
    }
    else if (iWidth == 2)
    {
        for (int32_t i = 0; i < iElements; ++i)
        {
            Swap2(p + i * 2);
        }
    }
}

constexpr int SMALL_LIMIT = 64;
} // namespace

// ---------------------------------------------------------------------------------------
// Typed operations

bool CIOStream::ReadRaw(void* p, int32_t iSize)
{
    if (iSize <= 0)
    {
        return iSize == 0;
    }
    if (iSize <= SMALL_LIMIT)
    {
        uint8_t acTemp[SMALL_LIMIT];
        if (Read(acTemp, iSize) != iSize)
        {
            return false;
        }
        memcpy(p, acTemp, static_cast<size_t>(iSize));
        return true;
    }
    return Read(p, iSize) == iSize;
}

bool CIOStream::WriteRaw(const void* p, int32_t iSize)
{
    if (iSize <= 0)
    {
        return iSize == 0;
    }
    return Write(p, iSize) == iSize;
}

bool CIOStream::ReadArray(void* p, int32_t iElements, int iWidth)
{
    if (iElements <= 0)
    {
        return iElements == 0;
    }
    int64_t iBytes = static_cast<int64_t>(iElements) * iWidth;
    if (iBytes > INT32_MAX)
    {
        return false;
    }
    int32_t iSize = static_cast<int32_t>(iBytes);
    if (iSize <= SMALL_LIMIT)
    {
        uint8_t acTemp[SMALL_LIMIT];
        if (Read(acTemp, iSize) != iSize)
        {
            return false;
        }
        if (m_bSwapBytes)
        {
            SwapElements(acTemp, iElements, iWidth);
        }
        memcpy(p, acTemp, static_cast<size_t>(iSize));
        return true;
    }
    if (Read(p, iSize) != iSize)
    {
        return false;
    }
    if (m_bSwapBytes)
    {
        SwapElements(static_cast<uint8_t*>(p), iElements, iWidth);
    }
    return true;
}

bool CIOStream::WriteArray(const void* p, int32_t iElements, int iWidth)
{
    if (iElements <= 0)
    {
        return iElements == 0;
    }
    int64_t iBytes = static_cast<int64_t>(iElements) * iWidth;
    if (iBytes > INT32_MAX)
    {
        return false;
    }
    int32_t iSize = static_cast<int32_t>(iBytes);
    if (!m_bSwapBytes)
    {
        return Write(p, iSize) == iSize;
    }
    // Swap on a copy, in blocks, so the caller's data stays as it was.
    uint8_t acBlock[4096];
    const uint8_t* pSrc = static_cast<const uint8_t*>(p);
    int32_t iDone = 0;
    while (iDone < iSize)
    {
        int32_t iChunk = std::min<int32_t>(iSize - iDone, sizeof(acBlock));
        memcpy(acBlock, pSrc + iDone, static_cast<size_t>(iChunk));
        SwapElements(acBlock, iChunk / iWidth, iWidth);
        if (Write(acBlock, iChunk) != iChunk)
        {
            return false;
        }
        iDone += iChunk;
    }
    return true;
}

bool CIOStream::ReadBool(bool& v)
{
    uint8_t b;
    if (!ReadRaw(&b, 1))
    {
        return false;
    }
    v = b != 0;
    return true;
}

bool CIOStream::ReadU16(uint16_t& v)
{
    return ReadArray(&v, 1, 2);
}

bool CIOStream::ReadI16(int16_t& v)
{
    return ReadArray(&v, 1, 2);
}

bool CIOStream::ReadU32(uint32_t& v)
{
    uint32_t t;
    if (Read(&t, 4) != 4)
    {
        return false;
    }
    v = m_bSwapBytes ? __builtin_bswap32(t) : t;
    return true;
}

bool CIOStream::ReadI32(int32_t& v)
{
    uint32_t t;
    if (!ReadU32(t))
    {
        return false;
    }
    v = static_cast<int32_t>(t);
    return true;
}

bool CIOStream::ReadFloat(float& v)
{
    uint32_t t;
    if (!ReadU32(t))
    {
        return false;
    }
    memcpy(&v, &t, 4);
    return true;
}

bool CIOStream::ReadString(std::string& v)
{
    uint32_t uCount;
    if (!ReadU32(uCount))
    {
        return false;
    }
    if (uCount == 0)
    {
        v.clear();
        return true;
    }
    // Read in pieces so that a corrupt count costs no more memory than the data holds.
    std::string text;
    char acPiece[4096];
    uint32_t uLeft = uCount;
    while (uLeft > 0)
    {
        int32_t iChunk = static_cast<int32_t>(std::min<uint32_t>(uLeft, sizeof(acPiece)));
        if (Read(acPiece, iChunk) != iChunk)
        {
            return false;
        }
        text.append(acPiece, static_cast<size_t>(iChunk));
        uLeft -= static_cast<uint32_t>(iChunk);
    }
    v = std::move(text);
    return true;
}

bool CIOStream::WriteBool(bool v)
{
    uint8_t b = v ? 1 : 0;
    return WriteRaw(&b, 1);
}

bool CIOStream::WriteU16(uint16_t v)
{
    return WriteArray(&v, 1, 2);
}

bool CIOStream::WriteI16(int16_t v)
{
    return WriteArray(&v, 1, 2);
}

bool CIOStream::WriteU32(uint32_t v)
{
    uint32_t t = m_bSwapBytes ? __builtin_bswap32(v) : v;
    return Write(&t, 4) == 4;
}

bool CIOStream::WriteI32(int32_t v)
{
    return WriteU32(static_cast<uint32_t>(v));
}

bool CIOStream::WriteFloat(float v)
{
    uint32_t t;
    memcpy(&t, &v, 4);
    return WriteU32(t);
}

bool CIOStream::WriteString(const std::string& v)
{
    if (!WriteU32(static_cast<uint32_t>(v.size())))
    {
        return false;
    }
    return v.empty() || WriteRaw(v.data(), static_cast<int32_t>(v.size()));
}

bool CIOStream::WriteString(const char* pcText)
{
    uint32_t uCount = pcText ? static_cast<uint32_t>(strlen(pcText)) : 0;
    if (!WriteU32(uCount))
    {
        return false;
    }
    return uCount == 0 || WriteRaw(pcText, static_cast<int32_t>(uCount));
}

bool CIOStream::CheckMagic(uint32_t uMagic)
{
    uint32_t uRaw;
    if (Read(&uRaw, 4) != 4)
    {
        return false;
    }
    uint32_t uValue = m_bSwapBytes ? __builtin_bswap32(uRaw) : uRaw;
    if (uValue == uMagic)
    {
        return true;
    }
    if (__builtin_bswap32(uValue) == uMagic)
    {
        m_bSwapBytes = !m_bSwapBytes;
        return true;
    }
    return false;
}

// ---------------------------------------------------------------------------------------
// CFileStream

CFileStream::~CFileStream()
{
    Close();
}

void CFileStream::Close()
{
    if (m_pFile)
    {
        fclose(m_pFile);
        m_pFile = nullptr;
    }
}

bool CFileStream::OpenRead(const char* pcPath)
{
    Close();
    m_pFile = pcPath ? fopen(pcPath, "rb") : nullptr;
    return m_pFile != nullptr;
}

bool CFileStream::OpenWrite(const char* pcPath)
{
    Close();
    m_pFile = pcPath ? fopen(pcPath, "wb") : nullptr;
    return m_pFile != nullptr;
}

int32_t CFileStream::Read(void* pBuffer, int32_t iSize)
{
    if (!m_pFile || iSize < 1)
    {
        return 0;
    }
    return static_cast<int32_t>(fread(pBuffer, 1, static_cast<size_t>(iSize), m_pFile));
}

int32_t CFileStream::Write(const void* pBuffer, int32_t iSize)
{
    if (!m_pFile || iSize < 1)
    {
        return 0;
    }
    return static_cast<int32_t>(fwrite(pBuffer, 1, static_cast<size_t>(iSize), m_pFile));
}

// ---------------------------------------------------------------------------------------
// CMemoryStream

void CMemoryStream::SeekRead(int32_t iPosition)
{
    m_iReadPos = std::clamp(iPosition, 0, m_iReadSize);
}

int32_t CMemoryStream::Read(void* pBuffer, int32_t iSize)
{
    if (iSize < 1)
    {
        return 0;
    }
    int32_t iCount = std::min(iSize, m_iReadSize - m_iReadPos);
    if (iCount <= 0)
    {
        return 0;
    }
    memcpy(pBuffer, m_pReadBase + m_iReadPos, static_cast<size_t>(iCount));
    m_iReadPos += iCount;
    return iCount;
}

int32_t CMemoryStream::Write(const void* pBuffer, int32_t iSize)
{
    if (iSize < 1)
    {
        return 0;
    }
    int32_t iCount = std::min(iSize, m_iWriteSize - m_iWritePos);
    if (iCount <= 0)
    {
        return 0;
    }
    memcpy(m_pWriteBase + m_iWritePos, pBuffer, static_cast<size_t>(iCount));
    m_iWritePos += iCount;
    return iCount;
}

// ---------------------------------------------------------------------------------------
// CMemoryWriteStream

CMemoryWriteStream::~CMemoryWriteStream()
{
    free(m_pBegin);
}

void CMemoryWriteStream::Reserve(int32_t iCapacity)
{
    if (iCapacity <= m_pCapacity - m_pBegin)
    {
        return;
    }
    int32_t iSize = GetSize();
    uint8_t* pNew = static_cast<uint8_t*>(realloc(m_pBegin, static_cast<size_t>(iCapacity)));
    if (!pNew)
    {
        return;
    }
    m_pBegin = pNew;
    m_pEnd = pNew + iSize;
    m_pCapacity = pNew + iCapacity;
}

int32_t CMemoryWriteStream::Read(void*, int32_t)
{
    return 0;
}

int32_t CMemoryWriteStream::Write(const void* pBuffer, int32_t iSize)
{
    if (iSize < 1)
    {
        return 0;
    }
    if (m_pCapacity - m_pEnd < iSize)
    {
        int64_t iNeed = static_cast<int64_t>(GetSize()) + iSize;
        int64_t iGrow = std::max<int64_t>(iNeed, static_cast<int64_t>(m_pCapacity - m_pBegin) * 2);
        iGrow = std::max<int64_t>(iGrow, 256);
        if (iGrow > INT32_MAX)
        {
            iGrow = INT32_MAX;
        }
        if (iGrow < iNeed)
        {
            return 0;
        }
        Reserve(static_cast<int32_t>(iGrow));
        if (m_pCapacity - m_pEnd < iSize)
        {
            return 0;
        }
    }
    memcpy(m_pEnd, pBuffer, static_cast<size_t>(iSize));
    m_pEnd += iSize;
    return iSize;
}

} // namespace Kestrin::Utility
