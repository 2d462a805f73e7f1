#include "Utils/Utility/Posix/GUtFilePosix.h"

#include "Utils/Utility/GUtDebug.h"

#include <cerrno>
#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

GUtFilePosix::GUtFilePosix(uint32_t uAccess, uint32_t uDisposition, bool bAsync)
    : m_bAsync(bAsync), m_uDesiredAccess(uAccess), m_uCreationDisposition(uDisposition)
{
}

GUtFilePosix::~GUtFilePosix()
{
    if (m_bCloseOnDestroy)
    {
        Close(true);
    }
}

bool GUtFilePosix::Open(const char* pcPath)
{
    Close(false);
    int iFlags = (m_uDesiredAccess & ACCESS_WRITE) ? O_RDWR : O_RDONLY;
    if (m_uCreationDisposition == CREATE_ALWAYS)
    {
        iFlags |= O_CREAT | O_TRUNC;
    }
    else if (m_uCreationDisposition == OPEN_ALWAYS)
    {
        iFlags |= O_CREAT;
    }
    m_iHandle = ::open(pcPath, iFlags | O_CLOEXEC, 0644);
    m_lFileCurrentPos = 0;
    return m_iHandle >= 0;
}

bool GUtFilePosix::IsEof() const
{
    return m_lFileCurrentPos >= Size();
}

int64_t GUtFilePosix::Size() const
{
    struct stat st;
    if (m_iHandle < 0 || fstat(m_iHandle, &st) != 0)
    {
        return 0;
    }
    return st.st_size;
}

int32_t GUtFilePosix::Read(void* pBuffer, int32_t iCount, GUtAsyncContext* pContext)
{
    if (m_iHandle < 0 || iCount <= 0)
    {
        return 0;
    }
    int32_t iDone = 0;
    while (iDone < iCount)
    {
        ssize_t n = ::pread(m_iHandle, static_cast<char*>(pBuffer) + iDone,
                            static_cast<size_t>(iCount - iDone), m_lFileCurrentPos + iDone);
        if (n < 0 && errno == EINTR)
        {
            continue;
        }
        if (n <= 0)
        {
            break;
        }
        iDone += static_cast<int32_t>(n);
    }
    m_lFileCurrentPos += iDone;
    GUT_ASSERT(m_lFileCurrentPos < MAX_ALLOW_FILESIZE);
    if (pContext)
    {
        pContext->iLastCount = iDone;
    }
    return iDone;
}

int32_t GUtFilePosix::Write(const void* pBuffer, int32_t iCount, GUtAsyncContext* pContext)
{
    if (m_iHandle < 0 || iCount <= 0)
    {
        return 0;
    }
    int32_t iDone = 0;
    while (iDone < iCount)
    {
        ssize_t n = ::pwrite(m_iHandle, static_cast<const char*>(pBuffer) + iDone,
                             static_cast<size_t>(iCount - iDone), m_lFileCurrentPos + iDone);
        if (n < 0 && errno == EINTR)
        {
            continue;
        }
        if (n <= 0)
        {
            break;
        }
        iDone += static_cast<int32_t>(n);
    }
    m_lFileCurrentPos += iDone;
    GUT_ASSERT(m_lFileCurrentPos < MAX_ALLOW_FILESIZE);
    if (pContext)
    {
        pContext->iLastCount = iDone;
    }
    return iDone;
}

bool GUtFilePosix::Seek(int64_t iPosition)
{
    if (m_iHandle < 0 || iPosition < 0)
    {
        return false;
    }
    m_lFileCurrentPos = iPosition;
    GUT_ASSERT(m_lFileCurrentPos < MAX_ALLOW_FILESIZE);
    return true;
}

bool GUtFilePosix::SeekCurrent(int64_t iDelta)
{
    return Seek(m_lFileCurrentPos + iDelta);
}

bool GUtFilePosix::SeekEnd(int64_t iDelta)
{
    return Seek(Size() + iDelta);
}

void GUtFilePosix::Close(bool bFlush)
{
    if (m_iHandle >= 0)
    {
        if (bFlush)
        {
            Flush();
        }
        ::close(m_iHandle);
        m_iHandle = -1;
    }
    m_lFileCurrentPos = 0;
}

bool GUtFilePosix::Flush()
{
    // Writes go straight to the kernel; there is nothing buffered here.
    return m_iHandle >= 0;
}
