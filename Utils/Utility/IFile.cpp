#include "Utils/Utility/IFile.h"

#include "Utils/Utility/BlockStore.h"
#include "Utils/Utility/GUtBytes.h"
#include "Utils/Utility/GUtPath.h"

#include <algorithm>
#include <cerrno>
#include <cstring>
#include <fcntl.h>
#include <openssl/evp.h>
#include <sys/stat.h>
#include <unistd.h>
#include <zlib.h>

namespace GLib::File
{

namespace
{
// The text copied into a zeroed 32-byte buffer; the cipher takes its first 128 bits.
void BuildKey(uint8_t acKey[32])
{
    memset(acKey, 0, 32);
    memcpy(acKey, "Greet,earth.", 12);
}

bool RunCipher(uint8_t* pData, size_t uSize, bool bEncrypt)
{
    if (uSize % 16 != 0 || uSize > INT32_MAX)
    {
        return false;
    }
    if (uSize == 0)
    {
        return true;
    }
    uint8_t acKey[32];
    BuildKey(acKey);
    EVP_CIPHER_CTX* pContext = EVP_CIPHER_CTX_new();
    if (!pContext)
    {
        return false;
    }
    int iOut = 0;
    int iFinal = 0;
    bool bOk =
        EVP_CipherInit_ex(pContext, EVP_aes_128_ecb(), nullptr, acKey, nullptr, bEncrypt ? 1 : 0) == 1 &&
        EVP_CIPHER_CTX_set_padding(pContext, 0) == 1 &&
        EVP_CipherUpdate(pContext, pData, &iOut, pData, static_cast<int>(uSize)) == 1 &&
        EVP_CipherFinal_ex(pContext, pData + iOut, &iFinal) == 1;
    EVP_CIPHER_CTX_free(pContext);
    return bOk && static_cast<size_t>(iOut + iFinal) == uSize;
}

uint32_t PaddedSize(uint32_t uLength)
{
    return static_cast<uint32_t>((uint64_t(uLength) + 23) / 16 * 16);
}
} // namespace

// ---------------------------------------------------------------------------------------
// DiskFile

DiskFile::~DiskFile()
{
    Close();
}

bool DiskFile::Open(const char* pcPath, int iMode)
{
    Close();
    if (!pcPath || !*pcPath)
    {
        return false;
    }
    std::string path;
    int iFlags = O_RDONLY;
    switch (iMode)
    {
        case OPEN_READ_ONLY:
            GUtPath::ResolveExisting(pcPath, path);
            break;
        case OPEN_READ_WRITE:
            GUtPath::ResolveExisting(pcPath, path);
            iFlags = O_RDWR;
            break;
        case OPEN_CREATE:
            path = GUtPath::ResolveForWrite(pcPath);
            iFlags = O_RDWR | O_CREAT | O_TRUNC;
            break;
        case OPEN_OPEN_OR_CREATE:
            path = GUtPath::ResolveForWrite(pcPath);
            iFlags = O_RDWR | O_CREAT;
            break;
        default:
            return false;
    }
    m_iHandle = ::open(path.c_str(), iFlags | O_CLOEXEC, 0644);
    m_iPosition = 0;
    return m_iHandle >= 0;
}

void DiskFile::Close()
{
    if (m_iHandle >= 0)
    {
        ::close(m_iHandle);
        m_iHandle = -1;
    }
    m_iPosition = 0;
}

uint32_t DiskFile::Read(void* pBuffer, uint32_t uCount)
{
    uint32_t uDone = 0;
    while (m_iHandle >= 0 && uDone < uCount)
    {
        ssize_t n =
            ::pread(m_iHandle, static_cast<char*>(pBuffer) + uDone, uCount - uDone, m_iPosition + uDone);
        if (n < 0 && errno == EINTR)
        {
            continue;
        }
        if (n <= 0)
        {
            break;
        }
        uDone += static_cast<uint32_t>(n);
    }
    m_iPosition += uDone;
    return uDone;
}

uint32_t DiskFile::Write(const void* pBuffer, uint32_t uCount)
{
    uint32_t uDone = 0;
    while (m_iHandle >= 0 && uDone < uCount)
    {
        ssize_t n = ::pwrite(m_iHandle, static_cast<const char*>(pBuffer) + uDone, uCount - uDone,
                             m_iPosition + uDone);
        if (n < 0 && errno == EINTR)
        {
            continue;
        }
        if (n <= 0)
        {
            break;
        }
        uDone += static_cast<uint32_t>(n);
    }
    m_iPosition += uDone;
    return uDone;
}

int64_t DiskFile::Seek(int64_t iOffset, int iOrigin)
{
    if (m_iHandle < 0)
    {
        return -1;
    }
    int64_t iBase = 0;
    switch (iOrigin)
    {
        case SEEK_FROM_CURRENT:
            iBase = m_iPosition;
            break;
        case SEEK_FROM_END:
            iBase = static_cast<int64_t>(Size());
            break;
        case SEEK_FROM_START:
            break;
        default:
            return -1;
    }
    if (iBase + iOffset < 0)
    {
        return -1;
    }
    m_iPosition = iBase + iOffset;
    return m_iPosition;
}

uint64_t DiskFile::Size()
{
    struct stat st;
    if (m_iHandle < 0 || ::fstat(m_iHandle, &st) != 0)
    {
        return 0;
    }
    return static_cast<uint64_t>(st.st_size);
}

bool DiskFile::SetSize(uint64_t uSize)
{
    return m_iHandle >= 0 && ::ftruncate(m_iHandle, static_cast<off_t>(uSize)) == 0;
}

// ---------------------------------------------------------------------------------------
// PackedFile

PackedFile::PackedFile(std::unique_ptr<IFile> pSource, uint32_t uUncompressedSize)
    : m_pSource(std::move(pSource)), m_uUncompressedSize(uUncompressedSize),
      m_pStream(std::make_unique<z_stream>())
{
    *m_pStream = z_stream{};
    m_bStreamOk = m_pSource && inflateInit(m_pStream.get()) == Z_OK;
}

PackedFile::~PackedFile()
{
    if (m_bStreamOk)
    {
        inflateEnd(m_pStream.get());
    }
}

uint32_t PackedFile::Read(void* pBuffer, uint32_t uCount)
{
    if (!m_bStreamOk || !pBuffer || uCount == 0)
    {
        return 0;
    }
    z_stream& stream = *m_pStream;
    stream.next_out = static_cast<Bytef*>(pBuffer);
    stream.avail_out = uCount;
    for (;;)
    {
        if (stream.avail_in == 0)
        {
            const uint32_t uRead = m_pSource->Read(m_acInput, INPUT_BUFFER_SIZE);
            if (uRead == 0)
            {
                break;
            }
            stream.next_in = m_acInput;
            stream.avail_in = uRead;
        }
        if (inflate(&stream, Z_NO_FLUSH) != Z_OK || stream.avail_out == 0)
        {
            break;
        }
    }
    return uCount - stream.avail_out;
}

// ---------------------------------------------------------------------------------------
// EncryptedFile

bool EncryptedFile::EncryptBlocks(uint8_t* pData, size_t uSize)
{
    return RunCipher(pData, uSize, true);
}

bool EncryptedFile::DecryptBlocks(uint8_t* pData, size_t uSize)
{
    return RunCipher(pData, uSize, false);
}

EncryptedFile::EncryptedFile(std::unique_ptr<IFile> pSource) : m_pSource(std::move(pSource))
{
    if (!m_pSource || m_pSource->Size() < 5)
    {
        return;
    }
    uint8_t acLength[4];
    m_pSource->Seek(0, SEEK_FROM_START);
    if (m_pSource->Read(acLength, 4) != 4)
    {
        return;
    }
    const uint32_t uCipherLength = GUtGetU32LE(acLength);
    // The smallest sound cipher text holds the CRC and the length: one block.
    if (uCipherLength < 16 || uCipherLength % 16 != 0 || uCipherLength > m_pSource->Size() - 4)
    {
        return;
    }
    std::vector<uint8_t> plain(uCipherLength);
    if (m_pSource->Read(plain.data(), uCipherLength) != uCipherLength ||
        !DecryptBlocks(plain.data(), plain.size()))
    {
        return;
    }
    const uint32_t uLength = GUtGetU32LE(plain.data() + uCipherLength - 4);
    if (uLength > uCipherLength - 8)
    {
        return;
    }
    m_uStoredCrc = GUtGetU32LE(plain.data() + uCipherLength - 8);
    plain.resize(uLength);
    m_content.swap(plain);
    m_uLength = uLength;
}

EncryptedFile::~EncryptedFile() = default;

uint32_t EncryptedFile::Read(void* pBuffer, uint32_t uCount)
{
    if (!pBuffer || m_uPosition >= m_uLength)
    {
        return 0;
    }
    const uint32_t uRead = std::min(uCount, m_uLength - m_uPosition);
    memcpy(pBuffer, m_content.data() + m_uPosition, uRead);
    m_uPosition += uRead;
    return uRead;
}

uint32_t EncryptedFile::Write(const void* pBuffer, uint32_t uCount)
{
    const uint64_t uEnd = uint64_t(m_uPosition) + uCount;
    if (!m_pSource || !pBuffer || uCount == 0 || uEnd > UINT32_MAX - 32)
    {
        return 0;
    }
    if (uEnd > m_content.size())
    {
        m_content.resize(uEnd);
    }
    memcpy(m_content.data() + m_uPosition, pBuffer, uCount);
    m_uPosition = static_cast<uint32_t>(uEnd);
    m_uLength = std::max(m_uLength, m_uPosition);
    return _Rewrite() ? uCount : 0;
}

bool EncryptedFile::SetSize(uint64_t uSize)
{
    if (!m_pSource || uSize > UINT32_MAX - 32)
    {
        return false;
    }
    m_content.resize(uSize);
    m_uLength = static_cast<uint32_t>(uSize);
    m_uPosition = std::min(m_uPosition, m_uLength);
    return _Rewrite();
}

int64_t EncryptedFile::Seek(int64_t iOffset, int iOrigin)
{
    int64_t iBase = 0;
    if (iOrigin == SEEK_FROM_CURRENT)
    {
        iBase = m_uPosition;
    }
    else if (iOrigin == SEEK_FROM_END)
    {
        iBase = m_uLength;
    }
    else if (iOrigin != SEEK_FROM_START)
    {
        return -1;
    }
    m_uPosition = static_cast<uint32_t>(std::clamp<int64_t>(iBase + iOffset, 0, m_uLength));
    return m_uPosition;
}

bool EncryptedFile::_Rewrite()
{
    const uint32_t uPadded = PaddedSize(m_uLength);
    std::vector<uint8_t> block(4 + uPadded, 0);
    uint8_t* pPlain = block.data() + 4;
    memcpy(pPlain, m_content.data(), m_uLength);
    const uint32_t uCrc = static_cast<uint32_t>(crc32(0L, m_content.data(), m_uLength));
    GUtPutU32LE(pPlain + uPadded - 8, uCrc);
    GUtPutU32LE(pPlain + uPadded - 4, m_uLength);
    m_uStoredCrc = uCrc;
    GUtPutU32LE(block.data(), uPadded);
    if (!EncryptBlocks(pPlain, uPadded))
    {
        return false;
    }
    m_pSource->Seek(0, SEEK_FROM_START);
    const bool bOk = m_pSource->Write(block.data(), static_cast<uint32_t>(block.size())) == block.size();
    if (bOk && m_pSource->Size() > block.size())
    {
        m_pSource->SetSize(block.size());
    }
    return bOk;
}

// ---------------------------------------------------------------------------------------
// Paths and OpenFile

std::string NormalisePath(std::string_view path)
{
    std::string out(path);
    for (char& c : out)
    {
        if (c >= 'A' && c <= 'Z')
        {
            c = static_cast<char>(c - 'A' + 'a');
        }
        else if (c == '\\')
        {
            c = '/';
        }
    }
    const size_t uUp = out.find("../");
    if (uUp != std::string::npos)
    {
        out.erase(uUp, 3);
    }
    for (size_t uDouble = out.find("//"); uDouble != std::string::npos; uDouble = out.find("//", uDouble))
    {
        out.erase(uDouble, 1);
    }
    return out;
}

} // namespace GLib::File
