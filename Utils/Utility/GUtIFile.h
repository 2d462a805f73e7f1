// GUtIFile: the back end a GUtFile drives. One implementation reads and writes a file on
// disk (GUtFilePosix); one reads an entry of a pack file (GUtFileSystemPosix, in Utils/File).
#pragma once

#include <cstdint>

// An asynchronous wait context. On Linux every read completes before it returns, so the
// context only carries the outcome of the last operation.
struct GUtAsyncContext
{
    int32_t iLastCount = 0;
};

class GUtIFile
{
public:
    virtual ~GUtIFile() = default;
    virtual bool IsOpen() const = 0;
    virtual bool IsAsync() const = 0;
    // True when the position is at or past the end.
    virtual bool IsEof() const = 0;
    virtual int64_t Size() const = 0;
    // Opens pcPath (a path on disk, or the entry the back end was made for). False on failure.
    virtual bool Open(const char* pcPath) = 0;
    // Returns the bytes read; short at the end of the file, 0 on failure.
    virtual int32_t Read(void* pBuffer, int32_t iCount, GUtAsyncContext* pContext) = 0;
    // Returns the bytes written; 0 on failure.
    virtual int32_t Write(const void* pBuffer, int32_t iCount, GUtAsyncContext* pContext) = 0;
    // Absolute, relative to the current position, and relative to the end. False on failure.
    virtual bool Seek(int64_t iPosition) = 0;
    virtual bool SeekCurrent(int64_t iDelta) = 0;
    virtual bool SeekEnd(int64_t iDelta) = 0;
    virtual void Close(bool bFlush) = 0;
    virtual bool Flush() = 0;
    virtual int64_t Tell() const = 0;

protected:
    GUtIFile() = default;
    GUtIFile(const GUtIFile&) = delete;
    GUtIFile& operator=(const GUtIFile&) = delete;
};
