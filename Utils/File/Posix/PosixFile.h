// The open file under both IFileIO implementations: a descriptor shared by the file IO and
// its sections, closed when the last of them lets go.
#pragma once

#include "Utils/File/FileIO.h"

#include <cstdint>
#include <memory>

namespace GLib::File
{

struct CPosixFile
{
    int iHandle = -1;
    uint64_t uSize = 0;
    bool bWritable = false;
    uint64_t uId; // unique in the process, naming the file's mapped views

    CPosixFile();
    ~CPosixFile();
    CPosixFile(const CPosixFile&) = delete;
    CPosixFile& operator=(const CPosixFile&) = delete;

    // Whole-count pread and pwrite, retried on interruption; the bytes moved.
    uint32_t ReadAt(void* pBuffer, uint64_t uOffset, uint32_t uCount) const;
    uint32_t WriteAt(const void* pBuffer, uint64_t uOffset, uint32_t uCount) const;
};

// What the two implementations share: opening, creating, and reads and writes at offsets.
// They differ in the sections they make.
class CFileIOPosixBase : public IFileIO
{
public:
    bool OpenFile(const char* pcPath, bool bWritable, bool bAsync) override;
    bool CreateFile(const char* pcPath, uint64_t uSize) override;
    void CloseFile() override;
    uint64_t FileSize() const override { return m_pFile ? m_pFile->uSize : 0; }
    bool IsOpen() const override { return m_pFile != nullptr; }
    uint32_t Read(void* pBuffer, uint32_t uCapacity, uint64_t uOffset, uint32_t uCount) override;
    uint32_t Write(const void* pBuffer, uint32_t uCapacity, uint64_t uOffset, uint32_t uCount) override;

protected:
    CFileIOPosixBase() = default;
    // The section's size cut at the end of the file.
    uint32_t CutToFile(uint64_t uOffset, uint32_t uSize) const;

    std::shared_ptr<CPosixFile> m_pFile;
};

} // namespace GLib::File
