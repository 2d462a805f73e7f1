// GUtFile: memory mode and compressed mode. Both keep the file's bytes in m_memBuffer; the
// back end sees one raw read or write per file (or per block), with the key blanked.
#include "Utils/Utility/GUtDebug.h"

#include "Utils/Utility/GUtBytes.h"
#include "Utils/Utility/GUtFile.h"
#include "Utils/Utility/GUtInflate.h"

#include <algorithm>
#include <cstring>
#include <zlib.h>

namespace
{
constexpr uint32_t COMPRESS_INITIAL_BUFFER = 2048;
constexpr uint32_t COMPRESS_KEEP_BUFFER = 32768;
constexpr uint32_t MAX_COMPRESSED_BLOCK = 100000000;

const char* const INIT_TITLE = "GUtFile::_InitCompressData() error !";
const char* const UNCOMPRESS_TITLE = "GUtFile::_UnCompress() error !";
const char* const DEINIT_TITLE = "GUtFile::_DeInitCompressData() error !";

int ZlibLevel(int32_t iSelector)
{
    switch (iSelector)
    {
        case 0:
            return 0;
        case 1:
            return 1;
        case 2:
            return 9;
        case 3:
            return Z_DEFAULT_COMPRESSION;
        default:
            GUT_ASSERT(iSelector >= 0 && iSelector <= 3 && "unknown compression level selector");
            return Z_DEFAULT_COMPRESSION;
    }
}
} // namespace

uint64_t GUtFileGrowBuffer(uint64_t uSize, uint64_t uNeeded)
{
    const uint64_t uStep = std::min(2 * uSize, uSize + 32768);
    const uint64_t uRounded = (uNeeded / 2048 + 1) * 2048;
    return std::max(uStep, uRounded);
}

void GUtFile::_FreeBuffers()
{
    std::vector<uint8_t>().swap(m_memBuffer);
    std::vector<uint8_t>().swap(m_packedBuffer);
    m_ulMemBufIdx = 0;
    m_ulMemBufSize = 0;
    m_ulMemBufEnd = 0;
    m_ulDataForDecompressSize = 0;
}

// ---------------------------------------------------------------------------------------
// Memory mode

bool GUtFile::_InitMemoryData()
{
    _FreeBuffers();
    const bool bTruncated = (m_uMode & (MODE_READ | MODE_WRITE | MODE_APPEND)) == (MODE_READ | MODE_WRITE);
    if (!bTruncated)
    {
        // Reading, or appending: the whole file comes in with one read.
        const int64_t iFileSize = m_pBackend->Size();
        if (iFileSize > INT32_MAX)
        {
            return false;
        }
        m_ulMemBufIdx = static_cast<uint32_t>(iFileSize);
        m_ulMemBufSize = static_cast<uint32_t>(iFileSize);
        m_memBuffer.resize(m_ulMemBufSize);
        m_pBackend->Seek(0);
        const int32_t iReadSize =
            m_ulMemBufSize
                ? m_pBackend->Read(m_memBuffer.data(), static_cast<int32_t>(m_ulMemBufSize), nullptr)
                : 0;
        GUT_ASSERT(iReadSize == static_cast<int>(m_ulMemBufIdx));
        GUT_ASSERT(iReadSize == static_cast<int>(m_ulMemBufSize));
        m_ulMemBufEnd = m_ulMemBufSize;
        const bool bAppend = _IsWriting();
        m_ulMemBufIdx = bAppend ? m_ulMemBufEnd : 0;
    }
    m_uMode |= MODE_MEMORY;
    return true;
}

bool GUtFile::_WriteOutMemory()
{
    m_uMode &= ~MODE_MEMORY;
    m_pBackend->Seek(0);
    // A raw write of keyed bytes: the key is blanked for it.
    const int32_t iWriteSize =
        m_ulMemBufEnd ? m_pBackend->Write(m_memBuffer.data(), static_cast<int32_t>(m_ulMemBufEnd), nullptr)
                      : 0;
    GUT_ASSERT(iWriteSize == static_cast<int>(m_ulMemBufEnd));
    _FreeBuffers();
    return true;
}

bool GUtFile::_SeekMemory(int64_t iPosition)
{
    GUT_ASSERT(iPosition >= 0 && iPosition <= static_cast<int64_t>(m_ulMemBufSize));
    m_ulMemBufIdx = static_cast<uint32_t>(iPosition);
    GUT_ASSERT(m_ulMemBufIdx <= m_ulMemBufSize);
    return true;
}

int32_t GUtFile::_WriteMemory(const uint8_t* p, int32_t iCount)
{
    const uint64_t uNeeded = static_cast<uint64_t>(m_ulMemBufIdx) + static_cast<uint64_t>(iCount);
    if (uNeeded > m_ulMemBufSize)
    {
        const uint64_t uNewSize = GUtFileGrowBuffer(m_ulMemBufSize, uNeeded);
        if (uNewSize > INT32_MAX)
        {
            return 0;
        }
        m_ulMemBufSize = static_cast<uint32_t>(uNewSize);
        m_memBuffer.resize(m_ulMemBufSize);
    }
    memcpy(m_memBuffer.data() + m_ulMemBufIdx, p, static_cast<size_t>(iCount));
    m_ulMemBufIdx += static_cast<uint32_t>(iCount);
    m_ulMemBufEnd = std::max(m_ulMemBufEnd, m_ulMemBufIdx);
    return iCount;
}

int32_t GUtFile::_ReadMemory(uint8_t* p, int32_t iCount)
{
    int32_t iRead = 0;
    while (iRead < iCount)
    {
        if (m_ulMemBufIdx >= m_ulMemBufEnd)
        {
            // A compressed file holds one block per flush: go on with the next one.
            const bool bNextBlock = (m_uMode & MODE_COMPRESSED) && !_IsWriting() && !m_pBackend->IsEof();
            if (!bNextBlock)
            {
                break;
            }
            if (!_InitCompressData())
            {
                // A broken block ends the file: what follows it can't be told apart.
                m_pBackend->SeekEnd(0);
                break;
            }
            continue;
        }
        const uint32_t uTake =
            std::min<uint32_t>(static_cast<uint32_t>(iCount - iRead), m_ulMemBufEnd - m_ulMemBufIdx);
        memcpy(p + iRead, m_memBuffer.data() + m_ulMemBufIdx, uTake);
        m_ulMemBufIdx += uTake;
        iRead += static_cast<int32_t>(uTake);
    }
    return iRead;
}

// ---------------------------------------------------------------------------------------
// Compressed mode

bool GUtFile::_InitCompressData()
{
    _FreeBuffers();
    if (_IsWriting())
    {
        m_ulMemBufSize = COMPRESS_INITIAL_BUFFER;
        m_memBuffer.resize(m_ulMemBufSize);
        m_uMode |= MODE_MEMORY | MODE_COMPRESSED;
        return true;
    }
    if (m_pBackend->IsEof())
    {
        // An empty file: compressed mode with nothing in it (closing with nothing written
        // writes no block).
        m_uMode |= MODE_MEMORY | MODE_COMPRESSED;
        return true;
    }
    uint8_t acSize[4];
    if (m_pBackend->Read(acSize, 4, nullptr) != 4)
    {
        GUtLog::Get().DisplayMsg(false, 1, INIT_TITLE, "read src. buffer fail !");
        return false;
    }
    m_ulDataForDecompressSize = GUtGetU32LE(acSize);
    if (m_ulDataForDecompressSize >= MAX_COMPRESSED_BLOCK)
    {
        GUtLog::Get().DisplayMsg(true, 1, "Assertion Info.",
                                 "\"data too huge!! perhaps the data is wrong !!\"");
        GUT_ASSERT(m_ulDataForDecompressSize < 100000000);
    }
    // A size the file can't hold is a short read: known before anything is allocated.
    const int64_t iLeft = m_pBackend->Size() - m_pBackend->Tell();
    bool bRead = static_cast<int64_t>(m_ulDataForDecompressSize) <= iLeft;
    if (bRead)
    {
        m_packedBuffer.resize(m_ulDataForDecompressSize);
        const int32_t iCount = static_cast<int32_t>(m_ulDataForDecompressSize);
        bRead = iCount == 0 || m_pBackend->Read(m_packedBuffer.data(), iCount, nullptr) == iCount;
    }
    if (!bRead)
    {
        GUtLog::Get().DisplayMsg(false, 1, INIT_TITLE, "read src. buffer fail !");
        return false;
    }
    return _UnCompress();
}

bool GUtFile::_UnCompress()
{
    uint8_t acSize[4];
    if (m_pBackend->Read(acSize, 4, nullptr) != 4)
    {
        GUtLog::Get().DisplayMsg(false, 1, UNCOMPRESS_TITLE, "Read Compress Data size fail");
        return false;
    }
    const uint32_t uOriginalSize = GUtGetU32LE(acSize);
    if (uOriginalSize > INT32_MAX)
    {
        GUtLog::Get().DisplayMsg(false, 1, UNCOMPRESS_TITLE, "Uncompress Data fail !");
        return false;
    }
    const EGUtInflate eResult =
        GUtInflateExact(m_packedBuffer.data(), m_packedBuffer.size(), uOriginalSize, m_memBuffer);
    if (eResult == EGUtInflate::CORRUPT)
    {
        GUtLog::Get().DisplayMsg(false, 1, UNCOMPRESS_TITLE, "Uncompress Data fail !");
        return false;
    }
    if (eResult == EGUtInflate::SIZE_MISMATCH)
    {
        GUtLog::Get().DisplayMsg(false, 1, INIT_TITLE, "Uncompress Data inconsistent !!");
        return false;
    }
    m_uMode |= MODE_MEMORY | MODE_COMPRESSED;
    std::vector<uint8_t>().swap(m_packedBuffer);
    m_ulMemBufSize = uOriginalSize;
    m_ulMemBufEnd = uOriginalSize;
    m_ulMemBufIdx = 0;
    return true;
}

bool GUtFile::_DeInitCompressData(bool bFinal)
{
    if (!_IsWriting() || m_ulMemBufEnd == 0)
    {
        if (bFinal)
        {
            m_uMode &= ~(MODE_MEMORY | MODE_COMPRESSED);
            _FreeBuffers();
        }
        return true;
    }
    const int iLevel = ZlibLevel(m_iCompressLevel);
    const uLong uSourceLen = m_ulMemBufEnd;
    uLongf ulDestLen = std::max<uLong>(20 + uSourceLen + uSourceLen / 10 + 1, compressBound(uSourceLen));
    std::vector<uint8_t> packed(ulDestLen);
    if (compress2(packed.data(), &ulDestLen, m_memBuffer.data(), uSourceLen, iLevel) != Z_OK)
    {
        GUtLog::Get().DisplayMsg(false, 1, DEINIT_TITLE, "Compress Data fail !");
        return false;
    }
    // The block's bytes go out as they are: the key was applied as they came in.
    uint8_t acSize[4];
    GUtPutU32LE(acSize, static_cast<uint32_t>(ulDestLen));
    int32_t iNumBytesWritten = m_pBackend->Write(acSize, 4, nullptr);
    GUT_ASSERT(iNumBytesWritten == sizeof(uint32_t));
    iNumBytesWritten = m_pBackend->Write(packed.data(), static_cast<int32_t>(ulDestLen), nullptr);
    GUT_ASSERT(iNumBytesWritten == static_cast<int32_t>(ulDestLen) && "GUtFile: Compress Data fail !");
    GUtPutU32LE(acSize, static_cast<uint32_t>(uSourceLen));
    iNumBytesWritten = m_pBackend->Write(acSize, 4, nullptr);
    GUT_ASSERT(iNumBytesWritten == sizeof(uint32_t));

    m_ulMemBufIdx = 0;
    m_ulMemBufEnd = 0;
    if (bFinal)
    {
        m_uMode &= ~(MODE_MEMORY | MODE_COMPRESSED);
        _FreeBuffers();
    }
    else if (m_ulMemBufSize > COMPRESS_KEEP_BUFFER)
    {
        m_ulMemBufSize = COMPRESS_INITIAL_BUFFER;
        std::vector<uint8_t>(m_ulMemBufSize).swap(m_memBuffer);
    }
    return true;
}
