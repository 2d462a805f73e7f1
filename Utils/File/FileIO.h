// IFileIO and IFileSection: how a pack file reaches its bytes. A file IO is one open file;
// a section is a window of it (an entry of a pack) read and written at offsets relative to
// the window. Two implementations: plain reads (CFileIOImpl_Posix) and lazily mapped views
// with a process-wide pool of at most 100 (CFileIOImpl_PosixMapView), which packs use.
//
// A section keeps the file it was made from open on its own: closing or destroying the file
// IO leaves existing sections readable.
#pragma once

#include <cstdint>

namespace GLib::File
{

class IFileSection
{
public:
    virtual ~IFileSection() = default;
    // Copies up to uCount bytes (and at most uCapacity) from uOffset of the section into
    // pBuffer. Returns the bytes copied: fewer at the section's end, 0 at or past it.
    virtual uint32_t Read(void* pBuffer, uint32_t uCapacity, uint32_t uOffset, uint32_t uCount) = 0;
    // Copies uCount bytes (at most uCapacity) to uOffset of the section; the range must lie
    // inside the section (asserted) and the file must be writable. Returns the bytes written,
    // 0 when the file isn't writable.
    virtual uint32_t Write(const void* pBuffer, uint32_t uCapacity, uint32_t uOffset, uint32_t uCount) = 0;
    // The section's size, already cut at the end of the file.
    virtual uint32_t Size() const = 0;

protected:
    IFileSection() = default;
    IFileSection(const IFileSection&) = delete;
    IFileSection& operator=(const IFileSection&) = delete;
};

class IFileIO
{
public:
    virtual ~IFileIO() = default;
    // Opens an existing file, read-only unless bWritable; bAsync hints sequential access.
    // False when the file can't be opened; any file open before is closed first.
    virtual bool OpenFile(const char* pcPath, bool bWritable, bool bAsync) = 0;
    // Creates (or truncates) a file of uSize bytes, open for reading and writing. False when
    // it can't be created or sized.
    virtual bool CreateFile(const char* pcPath, uint64_t uSize) = 0;
    virtual void CloseFile() = 0;
    // A section of uSize bytes at uOffset, cut where it would pass the end of the file.
    // Nothing is read yet. Null when no file is open. The caller owns the section.
    virtual IFileSection* CreateSection(uint64_t uOffset, uint32_t uSize) = 0;
    // The file's size when it was opened or created; 0 when none is open.
    virtual uint64_t FileSize() const = 0;
    virtual bool IsOpen() const = 0;
    // Reads up to uCount bytes (at most uCapacity) at uOffset of the file. Returns the bytes
    // read: short at the end of the file, 0 on failure.
    virtual uint32_t Read(void* pBuffer, uint32_t uCapacity, uint64_t uOffset, uint32_t uCount) = 0;
    // Writes uCount bytes (at most uCapacity) at uOffset. Returns the bytes written; 0 on
    // failure or a read-only file.
    virtual uint32_t Write(const void* pBuffer, uint32_t uCapacity, uint64_t uOffset, uint32_t uCount) = 0;

protected:
    IFileIO() = default;
    IFileIO(const IFileIO&) = delete;
    IFileIO& operator=(const IFileIO&) = delete;
};

} // namespace GLib::File
