#include "Utils/Utility/BlockStore.h"

#include "Utils/Utility/GUtBytes.h"
#include "Utils/Utility/GUtPath.h"

#include <algorithm>
#include <cstring>
#include <sys/stat.h>
#include <zlib.h>

namespace GLib::File
{

namespace
{
// Blocks beyond this are taken for a corrupt header.
constexpr uint32_t MAX_BLOCK_SIZE = 16 * 1024 * 1024;

struct CMountedStores
{
    std::mutex mutex;
    std::vector<std::shared_ptr<CBlockStore>> stores;

    static CMountedStores& Get()
    {
        static CMountedStores* s_pStores = new CMountedStores;
        return *s_pStores;
    }
};
} // namespace

// ---------------------------------------------------------------------------------------
// CBlockStore

CBlockStore::~CBlockStore() = default;

bool CBlockStore::Create(const char* pcPath, uint32_t uBlockSize)
{
    if (uBlockSize < 16 || uBlockSize > MAX_BLOCK_SIZE || !m_file.Open(pcPath, DiskFile::OPEN_CREATE))
    {
        return false;
    }
    m_bWritable = true;
    m_uBlockSize = uBlockSize;
    m_uFirstFree = NO_BLOCK;
    m_uBlockCount = 1;
    m_entries.clear();
    // Block 0 is the directory: a chain of itself with an empty stream.
    std::vector<uint8_t> block(uBlockSize, 0);
    GUtPutU32LE(block.data(), DIRECTORY_BLOCK);
    GUtPutU32LE(block.data() + 4, DIRECTORY_BLOCK);
    m_file.Seek(HEADER_SIZE, IFile::SEEK_FROM_START);
    return _WriteHeader() && m_file.Seek(HEADER_SIZE, IFile::SEEK_FROM_START) >= 0 &&
           m_file.Write(block.data(), uBlockSize) == uBlockSize;
}

bool CBlockStore::Open(const char* pcPath, bool bWritable)
{
    if (!m_file.Open(pcPath, bWritable ? DiskFile::OPEN_READ_WRITE : DiskFile::OPEN_READ_ONLY))
    {
        return false;
    }
    m_bWritable = bWritable;
    uint8_t acHeader[HEADER_SIZE];
    if (m_file.Seek(0, IFile::SEEK_FROM_START) != 0 || m_file.Read(acHeader, HEADER_SIZE) != HEADER_SIZE)
    {
        return false;
    }
    m_uBlockSize = GUtGetU32LE(acHeader);
    m_uFirstFree = GUtGetU32LE(acHeader + 4);
    m_uBlockCount = GUtGetU32LE(acHeader + 8);
    const uint64_t uNeeded = HEADER_SIZE + uint64_t(m_uBlockSize) * m_uBlockCount;
    if (m_uBlockSize < 16 || m_uBlockSize > MAX_BLOCK_SIZE || m_uBlockCount == 0 || uNeeded > m_file.Size() ||
        (m_uFirstFree != NO_BLOCK && m_uFirstFree >= m_uBlockCount))
    {
        return false;
    }
    return _ReadDirectory();
}

bool CBlockStore::_ReadDirectory()
{
    UnpackedFile directory(shared_from_this(), DIRECTORY_BLOCK);
    const uint64_t uSize = directory.Size();
    if (uSize % RECORD_SIZE != 0)
    {
        return false;
    }
    m_entries.clear();
    uint8_t acRecord[RECORD_SIZE];
    for (uint64_t i = 0; i < uSize / RECORD_SIZE; ++i)
    {
        if (directory.Read(acRecord, RECORD_SIZE) != RECORD_SIZE)
        {
            return false;
        }
        CEntry entry;
        entry.name =
            NormalisePath(std::string_view(reinterpret_cast<const char*>(acRecord),
                                           strnlen(reinterpret_cast<const char*>(acRecord), NAME_SIZE)));
        entry.uFirstBlock = GUtGetU32LE(acRecord + 256);
        entry.uKind = GUtGetU32LE(acRecord + 260);
        entry.uUncompressedSize = GUtGetU32LE(acRecord + 280);
        if (entry.uFirstBlock >= m_uBlockCount || entry.uKind > KIND_ENCRYPTED)
        {
            return false;
        }
        m_entries.push_back(std::move(entry));
    }
    return true;
}

bool CBlockStore::_WriteHeader()
{
    uint8_t acHeader[HEADER_SIZE] = {};
    GUtPutU32LE(acHeader, m_uBlockSize);
    GUtPutU32LE(acHeader + 4, m_uFirstFree);
    GUtPutU32LE(acHeader + 8, m_uBlockCount);
    return m_file.Seek(0, IFile::SEEK_FROM_START) == 0 && m_file.Write(acHeader, HEADER_SIZE) == HEADER_SIZE;
}

uint32_t CBlockStore::BlockCount()
{
    std::lock_guard<std::mutex> lock(m_mutex);
    return m_uBlockCount;
}

bool CBlockStore::ReadLinks(uint32_t uBlock, uint32_t& uNext, uint32_t& uPrev)
{
    std::lock_guard<std::mutex> lock(m_mutex);
    uint8_t acLinks[LINK_SIZE];
    if (uBlock >= m_uBlockCount ||
        m_file.Seek(static_cast<int64_t>(_BlockOffset(uBlock)), IFile::SEEK_FROM_START) < 0 ||
        m_file.Read(acLinks, LINK_SIZE) != LINK_SIZE)
    {
        return false;
    }
    uNext = GUtGetU32LE(acLinks);
    uPrev = GUtGetU32LE(acLinks + 4);
    return uNext < m_uBlockCount && uPrev < m_uBlockCount;
}

bool CBlockStore::_WriteLinks(uint32_t uBlock, uint32_t uNext, uint32_t uPrev)
{
    uint8_t acLinks[LINK_SIZE];
    GUtPutU32LE(acLinks, uNext);
    GUtPutU32LE(acLinks + 4, uPrev);
    return m_file.Seek(static_cast<int64_t>(_BlockOffset(uBlock)), IFile::SEEK_FROM_START) >= 0 &&
           m_file.Write(acLinks, LINK_SIZE) == LINK_SIZE;
}

uint32_t CBlockStore::ReadPayload(uint32_t uBlock, uint32_t uOffset, void* pBuffer, uint32_t uCount)
{
    std::lock_guard<std::mutex> lock(m_mutex);
    if (uBlock >= m_uBlockCount || uOffset >= PayloadSize())
    {
        return 0;
    }
    uCount = std::min(uCount, PayloadSize() - uOffset);
    m_file.Seek(static_cast<int64_t>(_BlockOffset(uBlock) + LINK_SIZE + uOffset), IFile::SEEK_FROM_START);
    return m_file.Read(pBuffer, uCount);
}

uint32_t CBlockStore::WritePayload(uint32_t uBlock, uint32_t uOffset, const void* pBuffer, uint32_t uCount)
{
    std::lock_guard<std::mutex> lock(m_mutex);
    if (!m_bWritable || uBlock >= m_uBlockCount || uOffset >= PayloadSize())
    {
        return 0;
    }
    uCount = std::min(uCount, PayloadSize() - uOffset);
    m_file.Seek(static_cast<int64_t>(_BlockOffset(uBlock) + LINK_SIZE + uOffset), IFile::SEEK_FROM_START);
    return m_file.Write(pBuffer, uCount);
}

uint32_t CBlockStore::_TakeBlock()
{
    if (!m_bWritable)
    {
        return NO_BLOCK;
    }
    if (m_uFirstFree != NO_BLOCK)
    {
        uint8_t acLinks[LINK_SIZE];
        const uint32_t uBlock = m_uFirstFree;
        m_file.Seek(static_cast<int64_t>(_BlockOffset(uBlock)), IFile::SEEK_FROM_START);
        if (m_file.Read(acLinks, LINK_SIZE) != LINK_SIZE)
        {
            return NO_BLOCK;
        }
        const uint32_t uNextFree = GUtGetU32LE(acLinks);
        m_uFirstFree = uNextFree < m_uBlockCount ? uNextFree : NO_BLOCK;
        return _WriteHeader() ? uBlock : NO_BLOCK;
    }
    if (m_uBlockCount == NO_BLOCK - 1)
    {
        return NO_BLOCK;
    }
    const uint32_t uBlock = m_uBlockCount++;
    std::vector<uint8_t> zeros(m_uBlockSize, 0);
    m_file.Seek(static_cast<int64_t>(_BlockOffset(uBlock)), IFile::SEEK_FROM_START);
    if (m_file.Write(zeros.data(), m_uBlockSize) != m_uBlockSize || !_WriteHeader())
    {
        --m_uBlockCount;
        return NO_BLOCK;
    }
    return uBlock;
}

uint32_t CBlockStore::NewChain()
{
    std::lock_guard<std::mutex> lock(m_mutex);
    const uint32_t uBlock = _TakeBlock();
    if (uBlock == NO_BLOCK || !_WriteLinks(uBlock, uBlock, uBlock))
    {
        return NO_BLOCK;
    }
    // An empty stream: reserved word and size 0.
    const uint8_t acStream[STREAM_HEADER_SIZE] = {};
    m_file.Seek(static_cast<int64_t>(_BlockOffset(uBlock) + LINK_SIZE), IFile::SEEK_FROM_START);
    return m_file.Write(acStream, STREAM_HEADER_SIZE) == STREAM_HEADER_SIZE ? uBlock : NO_BLOCK;
}

uint32_t CBlockStore::SpliceBlockBehind(uint32_t uBlock)
{
    std::lock_guard<std::mutex> lock(m_mutex);
    uint8_t acLinks[LINK_SIZE];
    if (uBlock >= m_uBlockCount ||
        m_file.Seek(static_cast<int64_t>(_BlockOffset(uBlock)), IFile::SEEK_FROM_START) < 0 ||
        m_file.Read(acLinks, LINK_SIZE) != LINK_SIZE)
    {
        return NO_BLOCK;
    }
    const uint32_t uNext = GUtGetU32LE(acLinks);
    const uint32_t uPrev = GUtGetU32LE(acLinks + 4);
    const uint32_t uNew = _TakeBlock();
    if (uNew == NO_BLOCK || uNext >= m_uBlockCount)
    {
        return NO_BLOCK;
    }
    uint8_t acNextLinks[LINK_SIZE];
    m_file.Seek(static_cast<int64_t>(_BlockOffset(uNext)), IFile::SEEK_FROM_START);
    if (m_file.Read(acNextLinks, LINK_SIZE) != LINK_SIZE)
    {
        return NO_BLOCK;
    }
    // uBlock -> uNew -> uNext; a one-block chain has uNext == uBlock.
    const bool bOk = _WriteLinks(uNew, uNext, uBlock) &&
                     _WriteLinks(uBlock, uNew, uNext == uBlock ? uNew : uPrev) &&
                     (uNext == uBlock || _WriteLinks(uNext, GUtGetU32LE(acNextLinks), uNew));
    return bOk ? uNew : NO_BLOCK;
}

const CBlockStore::CEntry* CBlockStore::FindEntry(std::string_view name) const
{
    const std::string normalised = NormalisePath(name);
    for (const CEntry& entry : m_entries)
    {
        if (entry.name == normalised)
        {
            return &entry;
        }
    }
    return nullptr;
}

IFile* CBlockStore::OpenEntry(std::string_view name)
{
    const CEntry* pEntry = FindEntry(name);
    if (!pEntry)
    {
        return nullptr;
    }
    auto pChain = std::make_unique<UnpackedFile>(shared_from_this(), pEntry->uFirstBlock);
    switch (pEntry->uKind)
    {
        case KIND_DEFLATED:
            return new PackedFile(std::move(pChain), pEntry->uUncompressedSize);
        case KIND_ENCRYPTED:
            return new EncryptedFile(std::move(pChain));
        default:
            return pChain.release();
    }
}

bool CBlockStore::AddEntry(const char* pcName, const void* pData, uint32_t uSize, EKind eKind)
{
    const std::string name = NormalisePath(pcName ? pcName : "");
    if (!m_bWritable || name.empty() || name.size() >= NAME_SIZE || FindEntry(name))
    {
        return false;
    }
    const uint32_t uFirst = NewChain();
    if (uFirst == NO_BLOCK)
    {
        return false;
    }
    bool bOk = false;
    if (eKind == KIND_DEFLATED)
    {
        uLongf uPacked = compressBound(uSize);
        std::vector<uint8_t> packed(uPacked);
        bOk = compress(packed.data(), &uPacked, static_cast<const Bytef*>(pData), uSize) == Z_OK;
        UnpackedFile chain(shared_from_this(), uFirst);
        bOk = bOk && chain.Write(packed.data(), static_cast<uint32_t>(uPacked)) == uPacked;
    }
    else if (eKind == KIND_ENCRYPTED)
    {
        EncryptedFile encrypted(std::make_unique<UnpackedFile>(shared_from_this(), uFirst));
        bOk = uSize == 0 || encrypted.Write(pData, uSize) == uSize;
    }
    else
    {
        UnpackedFile chain(shared_from_this(), uFirst);
        bOk = uSize == 0 || chain.Write(pData, uSize) == uSize;
    }
    uint8_t acRecord[RECORD_SIZE] = {};
    memcpy(acRecord, name.data(), name.size());
    GUtPutU32LE(acRecord + 256, uFirst);
    GUtPutU32LE(acRecord + 260, eKind);
    GUtPutU32LE(acRecord + 280, uSize);
    UnpackedFile directory(shared_from_this(), DIRECTORY_BLOCK);
    directory.Seek(0, IFile::SEEK_FROM_END);
    bOk = bOk && directory.Write(acRecord, RECORD_SIZE) == RECORD_SIZE;
    if (bOk)
    {
        m_entries.push_back(CEntry{name, uFirst, eKind, uSize});
    }
    return bOk;
}

// ---------------------------------------------------------------------------------------
// UnpackedFile

UnpackedFile::UnpackedFile(std::shared_ptr<CBlockStore> pStore, uint32_t uFirstBlock)
    : m_pStore(std::move(pStore)), m_uFirstBlock(uFirstBlock), m_uCursorBlock(uFirstBlock)
{
    uint8_t acStream[CBlockStore::STREAM_HEADER_SIZE];
    if (_Transfer(0, acStream, nullptr, sizeof(acStream)) == sizeof(acStream))
    {
        m_uSize = GUtGetU32LE(acStream + 4);
    }
}

bool UnpackedFile::_Locate(uint64_t uStreamOffset, bool bGrow, uint32_t& uBlock, uint32_t& uOffset)
{
    const uint32_t uPayload = m_pStore->PayloadSize();
    const uint64_t uIndex = uStreamOffset / uPayload;
    if (uIndex < m_uCursorIndex)
    {
        m_uCursorBlock = m_uFirstBlock;
        m_uCursorIndex = 0;
    }
    // A sound chain is at most as long as the store; a longer walk is a loop.
    const uint64_t uLimit = m_pStore->BlockCount();
    while (m_uCursorIndex < uIndex)
    {
        uint32_t uNext = 0, uPrev = 0;
        if (!m_pStore->ReadLinks(m_uCursorBlock, uNext, uPrev) || m_uCursorIndex >= uLimit)
        {
            return false;
        }
        if (uNext == m_uFirstBlock)
        {
            if (!bGrow)
            {
                return false;
            }
            uNext = m_pStore->SpliceBlockBehind(m_uCursorBlock);
            if (uNext == CBlockStore::NO_BLOCK)
            {
                return false;
            }
        }
        m_uCursorBlock = uNext;
        ++m_uCursorIndex;
    }
    uBlock = m_uCursorBlock;
    uOffset = static_cast<uint32_t>(uStreamOffset % uPayload);
    return true;
}

uint32_t UnpackedFile::_Transfer(uint64_t uStreamOffset, void* pRead, const void* pWrite, uint32_t uCount)
{
    uint32_t uDone = 0;
    while (uDone < uCount)
    {
        uint32_t uBlock = 0, uOffset = 0;
        if (!_Locate(uStreamOffset + uDone, pWrite != nullptr, uBlock, uOffset))
        {
            break;
        }
        const uint32_t uStep = std::min(uCount - uDone, m_pStore->PayloadSize() - uOffset);
        const uint32_t uMoved =
            pWrite
                ? m_pStore->WritePayload(uBlock, uOffset, static_cast<const uint8_t*>(pWrite) + uDone, uStep)
                : m_pStore->ReadPayload(uBlock, uOffset, static_cast<uint8_t*>(pRead) + uDone, uStep);
        uDone += uMoved;
        if (uMoved != uStep)
        {
            break;
        }
    }
    return uDone;
}

uint32_t UnpackedFile::Read(void* pBuffer, uint32_t uCount)
{
    if (!pBuffer || m_uPosition >= m_uSize)
    {
        return 0;
    }
    uCount = std::min(uCount, m_uSize - m_uPosition);
    const uint32_t uRead =
        _Transfer(uint64_t(CBlockStore::STREAM_HEADER_SIZE) + m_uPosition, pBuffer, nullptr, uCount);
    m_uPosition += uRead;
    return uRead;
}

uint32_t UnpackedFile::Write(const void* pBuffer, uint32_t uCount)
{
    if (!pBuffer || uCount == 0 || !m_pStore->IsWritable() || uint64_t(m_uPosition) + uCount > UINT32_MAX)
    {
        return 0;
    }
    const uint32_t uWritten =
        _Transfer(uint64_t(CBlockStore::STREAM_HEADER_SIZE) + m_uPosition, nullptr, pBuffer, uCount);
    m_uPosition += uWritten;
    if (m_uPosition > m_uSize)
    {
        m_uSize = m_uPosition;
        if (!_StoreSize())
        {
            return 0;
        }
    }
    return uWritten;
}

bool UnpackedFile::_StoreSize()
{
    uint8_t acSize[4];
    GUtPutU32LE(acSize, m_uSize);
    return _Transfer(4, nullptr, acSize, 4) == 4;
}

int64_t UnpackedFile::Seek(int64_t iOffset, int iOrigin)
{
    int64_t iBase = 0;
    if (iOrigin == SEEK_FROM_CURRENT)
    {
        iBase = m_uPosition;
    }
    else if (iOrigin == SEEK_FROM_END)
    {
        iBase = m_uSize;
    }
    else if (iOrigin != SEEK_FROM_START)
    {
        return -1;
    }
    if (iBase + iOffset < 0 || iBase + iOffset > UINT32_MAX)
    {
        return -1;
    }
    m_uPosition = static_cast<uint32_t>(iBase + iOffset);
    return m_uPosition;
}

bool UnpackedFile::SetSize(uint64_t uSize)
{
    if (!m_pStore->IsWritable() || uSize > UINT32_MAX)
    {
        return false;
    }
    // Growing makes sure the chain holds the new end; shrinking keeps the blocks.
    uint32_t uBlock = 0, uOffset = 0;
    if (uSize > 0 && !_Locate(CBlockStore::STREAM_HEADER_SIZE + uSize - 1, true, uBlock, uOffset))
    {
        return false;
    }
    m_uSize = static_cast<uint32_t>(uSize);
    return _StoreSize();
}

// ---------------------------------------------------------------------------------------
// Mounting and OpenFile

bool MountBlockStore(const char* pcPath)
{
    auto pStore = std::make_shared<CBlockStore>();
    if (!pStore->Open(pcPath, false))
    {
        return false;
    }
    CMountedStores& mounted = CMountedStores::Get();
    std::lock_guard<std::mutex> lock(mounted.mutex);
    mounted.stores.push_back(std::move(pStore));
    return true;
}

void UnmountBlockStores()
{
    CMountedStores& mounted = CMountedStores::Get();
    std::lock_guard<std::mutex> lock(mounted.mutex);
    mounted.stores.clear();
}

IFile* OpenFile(const char* pcPath)
{
    if (!pcPath || !*pcPath)
    {
        return nullptr;
    }
    const std::string name = NormalisePath(pcPath);
    {
        CMountedStores& mounted = CMountedStores::Get();
        std::lock_guard<std::mutex> lock(mounted.mutex);
        for (const std::shared_ptr<CBlockStore>& pStore : mounted.stores)
        {
            if (IFile* pFile = pStore->OpenEntry(name))
            {
                return pFile;
            }
        }
    }
    // The disk is reached with the caller's path: normalising drops a "../" that matters there.
    std::string path;
    struct stat st;
    if (!GUtPath::ResolveExisting(pcPath, path) || ::stat(path.c_str(), &st) != 0 || !S_ISREG(st.st_mode))
    {
        return nullptr;
    }
    auto pDisk = std::make_unique<DiskFile>();
    return pDisk->Open(path.c_str(), DiskFile::OPEN_READ_ONLY) ? pDisk.release() : nullptr;
}

} // namespace GLib::File
