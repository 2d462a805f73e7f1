// The block store: many entries in one file, each a circular chain of fixed-size blocks.
//
//   header (16 bytes): u32 block size, u32 first free block (0xFFFFFFFF: none),
//                      u32 block count, u32 reserved
//   block i at 16 + i * blockSize: u32 next, u32 prev (of its circular chain), then payload
//
// An entry's chain carries a stream that begins with (u32 reserved, u32 entry size), then
// the entry's bytes. The directory is the entry whose chain starts at block 0: records of
// 284 bytes, name (256, NUL-padded), u32 first block, u32 kind (0 plain, 1 deflated,
// 2 encrypted), 16 reserved bytes, u32 uncompressed size. Free blocks are linked through
// their "next" word. All integers little-endian.
//
// Nothing in the suite mounts a store; reading one that is mounted works as laid out.
// A store is safe to share between threads: one lock covers its file.
#pragma once

#include "Utils/Utility/IFile.h"

#include <memory>
#include <mutex>
#include <string>
#include <string_view>
#include <vector>

namespace GLib::File
{

class CBlockStore : public std::enable_shared_from_this<CBlockStore>
{
public:
    static constexpr uint32_t HEADER_SIZE = 16;
    static constexpr uint32_t LINK_SIZE = 8;
    static constexpr uint32_t STREAM_HEADER_SIZE = 8;
    static constexpr uint32_t RECORD_SIZE = 284;
    static constexpr uint32_t NAME_SIZE = 256;
    static constexpr uint32_t NO_BLOCK = 0xFFFFFFFF;
    static constexpr uint32_t DIRECTORY_BLOCK = 0;

    enum EKind : uint32_t
    {
        KIND_PLAIN = 0,
        KIND_DEFLATED = 1,
        KIND_ENCRYPTED = 2,
    };

    struct CEntry
    {
        std::string name; // normalised
        uint32_t uFirstBlock = 0;
        uint32_t uKind = KIND_PLAIN;
        uint32_t uUncompressedSize = 0;
    };

    // Stores are shared by the files opened in them: make them with std::make_shared.
    CBlockStore() = default;
    virtual ~CBlockStore();
    CBlockStore(const CBlockStore&) = delete;
    CBlockStore& operator=(const CBlockStore&) = delete;

    // Opens an existing store. False when its header or directory isn't sound.
    bool Open(const char* pcPath, bool bWritable);
    // Creates an empty store with blocks of uBlockSize bytes (at least 16).
    bool Create(const char* pcPath, uint32_t uBlockSize);
    // The entry of that name (compared after NormalisePath); null when there is none.
    const CEntry* FindEntry(std::string_view name) const;
    // The entry opened with the decorators of its kind; null when there is none. The caller
    // owns the result.
    IFile* OpenEntry(std::string_view name);
    // Adds an entry (writable stores). False when the name is taken, too long, or the store
    // can't be written.
    bool AddEntry(const char* pcName, const void* pData, uint32_t uSize, EKind eKind);
    const std::vector<CEntry>& Entries() const { return m_entries; }

    // Block access for UnpackedFile; each takes the store's lock.
    uint32_t BlockSize() const { return m_uBlockSize; }
    uint32_t PayloadSize() const { return m_uBlockSize - LINK_SIZE; }
    uint32_t BlockCount();
    bool ReadLinks(uint32_t uBlock, uint32_t& uNext, uint32_t& uPrev);
    uint32_t ReadPayload(uint32_t uBlock, uint32_t uOffset, void* pBuffer, uint32_t uCount);
    uint32_t WritePayload(uint32_t uBlock, uint32_t uOffset, const void* pBuffer, uint32_t uCount);
    // A new block (from the free list, or added to the file) spliced into a chain right
    // behind uBlock. NO_BLOCK when the store can't grow.
    uint32_t SpliceBlockBehind(uint32_t uBlock);
    // A new chain of one block. NO_BLOCK when the store can't grow.
    uint32_t NewChain();
    bool IsWritable() const { return m_bWritable; }

private:
    bool _WriteHeader();
    bool _WriteLinks(uint32_t uBlock, uint32_t uNext, uint32_t uPrev);
    uint32_t _TakeBlock();
    bool _ReadDirectory();
    uint64_t _BlockOffset(uint32_t uBlock) const { return HEADER_SIZE + uint64_t(uBlock) * m_uBlockSize; }

    std::mutex m_mutex;
    DiskFile m_file;
    bool m_bWritable = false;
    uint32_t m_uBlockSize = 0;
    uint32_t m_uFirstFree = NO_BLOCK;
    uint32_t m_uBlockCount = 0;
    std::vector<CEntry> m_entries;
};

class UnpackedFile final : public IFile
{
public:
    // The entry whose chain starts at uFirstBlock. A broken chain gives an empty entry.
    UnpackedFile(std::shared_ptr<CBlockStore> pStore, uint32_t uFirstBlock);

    uint32_t Read(void* pBuffer, uint32_t uCount) override;
    // Grows the chain as needed; 0 on a read-only store.
    uint32_t Write(const void* pBuffer, uint32_t uCount) override;
    int64_t Seek(int64_t iOffset, int iOrigin) override;
    uint64_t Size() override { return m_uSize; }
    bool SetSize(uint64_t uSize) override;

private:
    // The block holding stream byte uStreamOffset and the offset in its payload; grows the
    // chain when bGrow. False past the chain's end (or on a broken chain).
    bool _Locate(uint64_t uStreamOffset, bool bGrow, uint32_t& uBlock, uint32_t& uOffset);
    uint32_t _Transfer(uint64_t uStreamOffset, void* pRead, const void* pWrite, uint32_t uCount);
    bool _StoreSize();

    std::shared_ptr<CBlockStore> m_pStore;
    uint32_t m_uFirstBlock;
    uint32_t m_uSize = 0;
    uint32_t m_uPosition = 0;
    // The last block reached, to walk on from it rather than from the first.
    uint32_t m_uCursorBlock;
    uint64_t m_uCursorIndex = 0;
};

// Adds a store to those OpenFile searches. False when it can't be opened.
bool MountBlockStore(const char* pcPath);
// Forgets every mounted store.
void UnmountBlockStores();

} // namespace GLib::File
