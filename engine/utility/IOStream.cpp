#include "engine/utility/IOStream.h"

#include <algorithm>
#include <cstdlib>
#include <cstring>

#if defined(__x86_64__)
#include <immintrin.h>
#endif

namespace Kestrin::Utility
{

namespace
{
// Elements up to this many bytes are read through a temporary, so that a short read leaves
// the target as it was.
constexpr int SMALL_LIMIT = 64;

} // namespace

// ---------------------------------------------------------------------------------------
// Byte order of long arrays

namespace
{
using CopySwapFunction = void (*)(uint8_t* pDst, const uint8_t* pSrc, size_t iBytes, int iWidth);

// Reverses the elements of the tail that no vector block covered.
void CopySwapScalar(uint8_t* pDst, const uint8_t* pSrc, size_t iBytes, int iWidth)
{
    for (size_t i = 0; i < iBytes; i += static_cast<size_t>(iWidth))
    {
        if (iWidth == 4)
        {
            uint32_t u;
            memcpy(&u, pSrc + i, 4);
            u = __builtin_bswap32(u);
            memcpy(pDst + i, &u, 4);
        }
        else
        {
            uint16_t u;
            memcpy(&u, pSrc + i, 2);
            u = __builtin_bswap16(u);
            memcpy(pDst + i, &u, 2);
        }
    }
}

#if defined(__x86_64__)
__attribute__((target("avx2"))) void CopySwapAvx2(uint8_t* pDst, const uint8_t* pSrc, size_t iBytes,
                                                  int iWidth)
{
    const __m256i mask = iWidth == 4 ? _mm256_setr_epi8(3, 2, 1, 0, 7, 6, 5, 4, 11, 10, 9, 8, 15, 14, 13, 12,
                                                        3, 2, 1, 0, 7, 6, 5, 4, 11, 10, 9, 8, 15, 14, 13, 12)
                                     : _mm256_setr_epi8(1, 0, 3, 2, 5, 4, 7, 6, 9, 8, 11, 10, 13, 12, 15, 14,
                                                        1, 0, 3, 2, 5, 4, 7, 6, 9, 8, 11, 10, 13, 12, 15, 14);
    size_t i = 0;
    for (; i + 64 <= iBytes; i += 64)
    {
        __m256i a = _mm256_loadu_si256(reinterpret_cast<const __m256i*>(pSrc + i));
        __m256i b = _mm256_loadu_si256(reinterpret_cast<const __m256i*>(pSrc + i + 32));
        _mm256_storeu_si256(reinterpret_cast<__m256i*>(pDst + i), _mm256_shuffle_epi8(a, mask));
        _mm256_storeu_si256(reinterpret_cast<__m256i*>(pDst + i + 32), _mm256_shuffle_epi8(b, mask));
    }
    CopySwapScalar(pDst + i, pSrc + i, iBytes - i, iWidth);
}
#endif

#if defined(__SSE2__)
void CopySwapSse2(uint8_t* pDst, const uint8_t* pSrc, size_t iBytes, int iWidth)
{
    size_t i = 0;
    for (; i + 16 <= iBytes; i += 16)
    {
        // Bytes swapped within each 16-bit half, then (for 4-byte elements) the halves.
        __m128i v = _mm_loadu_si128(reinterpret_cast<const __m128i*>(pSrc + i));
        v = _mm_or_si128(_mm_slli_epi16(v, 8), _mm_srli_epi16(v, 8));
        if (iWidth == 4)
        {
            v = _mm_shufflehi_epi16(_mm_shufflelo_epi16(v, 0xB1), 0xB1);
        }
        _mm_storeu_si128(reinterpret_cast<__m128i*>(pDst + i), v);
    }
    CopySwapScalar(pDst + i, pSrc + i, iBytes - i, iWidth);
}
#endif

CopySwapFunction ChooseCopySwap()
{
#if defined(__x86_64__)
    if (__builtin_cpu_supports("avx2"))
    {
        return &CopySwapAvx2;
    }
#endif
#if defined(__SSE2__)
    return &CopySwapSse2;
#else
    return &CopySwapScalar;
#endif
}

const CopySwapFunction g_pCopySwap = ChooseCopySwap();
} // namespace

void CIOStream::CopySwap32(void* pDst, const void* pSrc, int32_t iElements)
{
    if (iElements > 0)
    {
        g_pCopySwap(static_cast<uint8_t*>(pDst), static_cast<const uint8_t*>(pSrc),
                    static_cast<size_t>(iElements) * 4, 4);
    }
}

void CIOStream::CopySwap16(void* pDst, const void* pSrc, int32_t iElements)
{
    if (iElements > 0)
    {
        g_pCopySwap(static_cast<uint8_t*>(pDst), static_cast<const uint8_t*>(pSrc),
                    static_cast<size_t>(iElements) * 2, 2);
    }
}

// ---------------------------------------------------------------------------------------
// The paths through Read and Write

bool CIOStream::ReadBytesSlow(void* p, int32_t iSize)
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

bool CIOStream::WriteBytesSlow(const void* p, int32_t iSize)
{
    if (iSize <= 0)
    {
        return iSize == 0;
    }
    return Write(p, iSize) == iSize;
}

bool CIOStream::ReadArraySlow(void* p, int32_t iElements, int iWidth)
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
    uint8_t acTemp[SMALL_LIMIT];
    // Small reads land in the temporary first; long ones straight in place.
    uint8_t* pRaw = iSize <= SMALL_LIMIT ? acTemp : static_cast<uint8_t*>(p);
    if (Read(pRaw, iSize) != iSize)
    {
        return false;
    }
    if (m_bSwapBytes)
    {
        if (iWidth == 4)
        {
            CopySwap32(p, pRaw, iElements);
        }
        else
        {
            CopySwap16(p, pRaw, iElements);
        }
    }
    else if (pRaw != p)
    {
        memcpy(p, pRaw, static_cast<size_t>(iSize));
    }
    return true;
}

bool CIOStream::WriteArraySlow(const void* p, int32_t iElements, int iWidth)
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
        if (iWidth == 4)
        {
            CopySwap32(acBlock, pSrc + iDone, iChunk / 4);
        }
        else
        {
            CopySwap16(acBlock, pSrc + iDone, iChunk / 2);
        }
        if (Write(acBlock, iChunk) != iChunk)
        {
            return false;
        }
        iDone += iChunk;
    }
    return true;
}

// ---------------------------------------------------------------------------------------
// Typed operations

bool CIOStream::ReadBool(bool& v)
{
    uint8_t b;
    if (!ReadBytes(&b, 1))
    {
        return false;
    }
    v = b != 0;
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
    return WriteBytes(&b, 1);
}

bool CIOStream::WriteString(const std::string& v)
{
    if (!WriteU32(static_cast<uint32_t>(v.size())))
    {
        return false;
    }
    return v.empty() || WriteBytes(v.data(), static_cast<int32_t>(v.size()));
}

bool CIOStream::WriteString(const char* pcText)
{
    uint32_t uCount = pcText ? static_cast<uint32_t>(strlen(pcText)) : 0;
    if (!WriteU32(uCount))
    {
        return false;
    }
    return uCount == 0 || WriteBytes(pcText, static_cast<int32_t>(uCount));
}

bool CIOStream::CheckMagic(uint32_t uMagic)
{
    uint32_t uValue;
    if (!ReadU32(uValue))
    {
        return false;
    }
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

void CMemoryStream::SetReadWindow(const void* pBase, int32_t iSize)
{
    if (!pBase || iSize < 0)
    {
        pBase = nullptr;
        iSize = 0;
    }
    m_pReadBase = static_cast<const uint8_t*>(pBase);
    m_iReadSize = iSize;
    m_pReadCursor = m_pReadBase;
    m_pReadLimit = m_pReadBase ? m_pReadBase + iSize : nullptr;
}

void CMemoryStream::SetWriteWindow(void* pBase, int32_t iSize)
{
    if (!pBase || iSize < 0)
    {
        pBase = nullptr;
        iSize = 0;
    }
    m_pWriteBase = static_cast<uint8_t*>(pBase);
    m_iWriteSize = iSize;
    m_pWriteCursor = m_pWriteBase;
    m_pWriteLimit = m_pWriteBase ? m_pWriteBase + iSize : nullptr;
}

void CMemoryStream::SeekRead(int32_t iPosition)
{
    if (m_pReadBase)
    {
        m_pReadCursor = m_pReadBase + std::clamp(iPosition, 0, m_iReadSize);
    }
}

int32_t CMemoryStream::Read(void* pBuffer, int32_t iSize)
{
    if (iSize < 1)
    {
        return 0;
    }
    int32_t iCount = static_cast<int32_t>(std::min<int64_t>(iSize, m_pReadLimit - m_pReadCursor));
    if (iCount <= 0)
    {
        return 0;
    }
    memcpy(pBuffer, m_pReadCursor, static_cast<size_t>(iCount));
    m_pReadCursor += iCount;
    return iCount;
}

int32_t CMemoryStream::Write(const void* pBuffer, int32_t iSize)
{
    if (iSize < 1)
    {
        return 0;
    }
    int32_t iCount = static_cast<int32_t>(std::min<int64_t>(iSize, m_pWriteLimit - m_pWriteCursor));
    if (iCount <= 0)
    {
        return 0;
    }
    memcpy(m_pWriteCursor, pBuffer, static_cast<size_t>(iCount));
    m_pWriteCursor += iCount;
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
    if (iCapacity <= m_pWriteLimit - m_pBegin)
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
    m_pWriteCursor = pNew + iSize;
    m_pWriteLimit = pNew + iCapacity;
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
    if (m_pWriteLimit - m_pWriteCursor < iSize)
    {
        int64_t iNeed = static_cast<int64_t>(GetSize()) + iSize;
        int64_t iGrow = std::max<int64_t>(iNeed, static_cast<int64_t>(m_pWriteLimit - m_pBegin) * 2);
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
        if (m_pWriteLimit - m_pWriteCursor < iSize)
        {
            return 0;
        }
    }
    memcpy(m_pWriteCursor, pBuffer, static_cast<size_t>(iSize));
    m_pWriteCursor += iSize;
    return iSize;
}

} // namespace Kestrin::Utility
