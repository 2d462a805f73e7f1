#include "Utils/Utility/Posix/GUtFileSystemPosix.h"

#include "Utils/File/SubFile.h"
#include "Utils/Utility/GUtDebug.h"

GUtFileSystemPosix::GUtFileSystemPosix(GLib::File::CSubFile* pSubFile, bool bOwned)
    : m_pSubFile(pSubFile), m_bOwned(bOwned)
{
    GUT_ASSERT(pSubFile);
}

GUtFileSystemPosix::~GUtFileSystemPosix()
{
    if (m_bOwned)
    {
        delete m_pSubFile;
    }
}

bool GUtFileSystemPosix::IsEof() const
{
    return m_pSubFile->IsEof();
}

int64_t GUtFileSystemPosix::Size() const
{
    return m_pSubFile->Size();
}

bool GUtFileSystemPosix::Open(const char*)
{
    m_bOpen = true;
    return true;
}

int32_t GUtFileSystemPosix::Read(void* pBuffer, int32_t iCount, GUtAsyncContext* pContext)
{
    if (!m_bOpen || iCount <= 0)
    {
        return 0;
    }
    const int32_t iRead = static_cast<int32_t>(m_pSubFile->Read(pBuffer, static_cast<uint32_t>(iCount)));
    if (pContext)
    {
        pContext->iLastCount = iRead;
    }
    return iRead;
}

int32_t GUtFileSystemPosix::Write(const void* pBuffer, int32_t iCount, GUtAsyncContext* pContext)
{
    if (!m_bOpen || iCount <= 0)
    {
        return 0;
    }
    const int32_t iWritten = static_cast<int32_t>(m_pSubFile->Write(pBuffer, static_cast<uint32_t>(iCount)));
    if (pContext)
    {
        pContext->iLastCount = iWritten;
    }
    return iWritten;
}

bool GUtFileSystemPosix::Seek(int64_t iPosition)
{
    return m_bOpen && m_pSubFile->Seek(iPosition);
}

bool GUtFileSystemPosix::SeekCurrent(int64_t iDelta)
{
    return Seek(static_cast<int64_t>(m_pSubFile->Tell()) + iDelta);
}

bool GUtFileSystemPosix::SeekEnd(int64_t iDelta)
{
    return Seek(static_cast<int64_t>(m_pSubFile->Size()) + iDelta);
}

void GUtFileSystemPosix::Close(bool)
{
    m_bOpen = false;
}

int64_t GUtFileSystemPosix::Tell() const
{
    return m_pSubFile->Tell();
}
