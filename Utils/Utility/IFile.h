// The IFile family: a plain read/write interface with decorators that chain over one
// another, and the block store they read from.
//
//   DiskFile       a file on disk
//   UnpackedFile   an entry's chain of blocks in a block store (BlockStore.h)
//   PackedFile     read-only zlib inflate over another IFile
//   EncryptedFile  whole-file AES-128-ECB over another IFile
//
// OpenFile finds a path in the mounted block stores, then on disk.
#pragma once

#include <cstdint>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

typedef struct z_stream_s z_stream;

namespace GLib::File
{

class IFile
{
public:
    // Seek origins: note the order, current first.
    enum ESeekOrigin
    {
        SEEK_FROM_CURRENT = 0,
        SEEK_FROM_END = 1,
        SEEK_FROM_START = 2,
    };

    virtual ~IFile() = default;
    // Reads up to uCount bytes at the position and moves past them. Returns the bytes read:
    // fewer at the end, 0 past it or on failure.
    virtual uint32_t Read(void* pBuffer, uint32_t uCount) = 0;
    // Writes uCount bytes at the position and moves past them. Returns the bytes written;
    // 0 when the file can't be written.
    virtual uint32_t Write(const void* pBuffer, uint32_t uCount) = 0;
    // Moves the position; returns the new position, or -1 (position unchanged) when the
    // result would be negative or the file can't seek.
    virtual int64_t Seek(int64_t iOffset, int iOrigin) = 0;
    virtual uint64_t Size() = 0;
    // Makes the file uSize bytes long. False when it can't be resized.
    virtual bool SetSize(uint64_t uSize) = 0;

protected:
    IFile() = default;
    IFile(const IFile&) = delete;
    IFile& operator=(const IFile&) = delete;
};

class DiskFile final : public IFile
{
public:
    enum EOpenMode
    {
        OPEN_READ_ONLY = 0,
        OPEN_READ_WRITE = 1,
        OPEN_CREATE = 2,         // create or truncate
        OPEN_OPEN_OR_CREATE = 3, // keep the contents
    };

    DiskFile() = default;
    ~DiskFile() override;
    // Opens through the path layer. False when the file can't be opened in that mode.
    bool Open(const char* pcPath, int iMode);
    bool IsOpen() const { return m_iHandle >= 0; }
    void Close();

    uint32_t Read(void* pBuffer, uint32_t uCount) override;
    uint32_t Write(const void* pBuffer, uint32_t uCount) override;
    int64_t Seek(int64_t iOffset, int iOrigin) override;
    uint64_t Size() override;
    bool SetSize(uint64_t uSize) override;

private:
    int m_iHandle = -1;
    int64_t m_iPosition = 0;
};

class PackedFile final : public IFile
{
public:
    static constexpr uint32_t INPUT_BUFFER_SIZE = 4096;

    // Inflates the zlib stream of pSource (owned) from its current position.
    PackedFile(std::unique_ptr<IFile> pSource, uint32_t uUncompressedSize);
    ~PackedFile() override;

    uint32_t Read(void* pBuffer, uint32_t uCount) override;
    // Read-only and forward-only: writes and seeks do nothing.
    uint32_t Write(const void*, uint32_t) override { return 0; }
    int64_t Seek(int64_t, int) override { return -1; }
    uint64_t Size() override { return m_uUncompressedSize; }
    bool SetSize(uint64_t) override { return false; }

private:
    std::unique_ptr<IFile> m_pSource;
    uint32_t m_uUncompressedSize;
    std::unique_ptr<z_stream> m_pStream;
    bool m_bStreamOk = false;
    uint8_t m_acInput[INPUT_BUFFER_SIZE];
};

// On the source: u32 cipher length, then the cipher text. The plain text is the content,
// zeros, the CRC-32 of the content and the u32 content length, filling
// ((n + 23) / 16) * 16 bytes. The key is "Greet,earth." padded with zeros to 16 bytes.
class EncryptedFile final : public IFile
{
public:
    // Reads and decrypts the whole source (owned). A source below 5 bytes, or one whose
    // lengths don't fit, gives an empty file.
    explicit EncryptedFile(std::unique_ptr<IFile> pSource);
    ~EncryptedFile() override;

    uint32_t Read(void* pBuffer, uint32_t uCount) override;
    // Writes into the content and rewrites the whole source at once.
    uint32_t Write(const void* pBuffer, uint32_t uCount) override;
    // Clamped to the content.
    int64_t Seek(int64_t iOffset, int iOrigin) override;
    uint64_t Size() override { return m_uLength; }
    bool SetSize(uint64_t uSize) override;

    // The stored CRC-32 of the content as decrypted (not checked on reading).
    uint32_t StoredCrc() const { return m_uStoredCrc; }

    // The cipher and its key, for tools and tests: whole 16-byte blocks in place.
    static bool EncryptBlocks(uint8_t* pData, size_t uSize);
    static bool DecryptBlocks(uint8_t* pData, size_t uSize);

private:
    bool _Rewrite();

    std::unique_ptr<IFile> m_pSource;
    std::vector<uint8_t> m_content;
    uint32_t m_uLength = 0;
    uint32_t m_uPosition = 0;
    uint32_t m_uStoredCrc = 0;
};

// Lower-cases, turns '\' into '/', removes the first "../" and collapses every "//":
// "../../Data\\X" -> "../data/x".
std::string NormalisePath(std::string_view path);

// The file at pcPath: the entry of that name in a mounted block store, else the file on
// disk opened read-only. Null when neither exists. The caller owns the result.
IFile* OpenFile(const char* pcPath);

} // namespace GLib::File
