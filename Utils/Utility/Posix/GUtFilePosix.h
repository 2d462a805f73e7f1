// GUtFilePosix: the disk back end of GUtFile, on open/pread/pwrite with its own position.
#pragma once

#include "Utils/Utility/GUtIFile.h"

#include <cstdint>

class GUtFilePosix final : public GUtIFile
{
public:
    // Positions must stay below this; a larger one is a programming error.
    static constexpr int64_t MAX_ALLOW_FILESIZE = 1000000000;

    enum EAccess : uint32_t
    {
        ACCESS_READ = 1,
        ACCESS_WRITE = 2,
    };
    enum EDisposition : uint32_t
    {
        OPEN_EXISTING = 0, // fail when missing
        CREATE_ALWAYS = 1, // create or truncate
        OPEN_ALWAYS = 2,   // open or create, keep the contents
    };

    GUtFilePosix(uint32_t uAccess, uint32_t uDisposition, bool bAsync);
    ~GUtFilePosix() override;

    bool IsOpen() const override { return m_iHandle >= 0; }
    bool IsAsync() const override { return m_bAsync; }
    bool IsEof() const override;
    int64_t Size() const override;
    bool Open(const char* pcPath) override;
    int32_t Read(void* pBuffer, int32_t iCount, GUtAsyncContext* pContext) override;
    int32_t Write(const void* pBuffer, int32_t iCount, GUtAsyncContext* pContext) override;
    bool Seek(int64_t iPosition) override;
    bool SeekCurrent(int64_t iDelta) override;
    bool SeekEnd(int64_t iDelta) override;
    void Close(bool bFlush) override;
    bool Flush() override;
    int64_t Tell() const override { return m_lFileCurrentPos; }

private:
    int m_iHandle = -1;
    int64_t m_lFileCurrentPos = 0;
    bool m_bAsync;
    GUtAsyncContext* m_pWaitContext = nullptr;
    bool m_bCloseOnDestroy = true;
    uint32_t m_uDesiredAccess;
    uint32_t m_uCreationDisposition;
};
