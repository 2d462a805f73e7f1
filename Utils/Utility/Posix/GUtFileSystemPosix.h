// GUtFileSystemPosix: the back end of a GUtFile opened on an entry of a pack. It drives the
// CSubFile the pack search opened; writes go to the entry's replacement data (and so only
// on a writable pack).
#pragma once

#include "Utils/Utility/GUtIFile.h"

namespace GLib::File
{
class CSubFile;
}

class GUtFileSystemPosix final : public GUtIFile
{
public:
    // pSubFile must not be null (asserted); bOwned makes the back end delete it.
    GUtFileSystemPosix(GLib::File::CSubFile* pSubFile, bool bOwned);
    ~GUtFileSystemPosix() override;

    bool IsOpen() const override { return m_bOpen; }
    bool IsAsync() const override { return false; }
    bool IsEof() const override;
    int64_t Size() const override;
    // The entry is already open; this marks the back end open. Always true.
    bool Open(const char* pcPath) override;
    int32_t Read(void* pBuffer, int32_t iCount, GUtAsyncContext* pContext) override;
    int32_t Write(const void* pBuffer, int32_t iCount, GUtAsyncContext* pContext) override;
    bool Seek(int64_t iPosition) override;
    bool SeekCurrent(int64_t iDelta) override;
    bool SeekEnd(int64_t iDelta) override;
    void Close(bool bFlush) override;
    bool Flush() override { return m_bOpen; }
    int64_t Tell() const override;

private:
    GLib::File::CSubFile* m_pSubFile;
    bool m_bOwned;
    bool m_bOpen = false;
};
