#include "Utils/File/Posix/PosixFile.h"

#include "Utils/File/Posix/FileIOImpl_PosixMapView.h"

#include "Utils/Utility/GUtPath.h"

#include <algorithm>
#include <atomic>
#include <cerrno>
#include <fcntl.h>
#include <string>
#include <sys/stat.h>
#include <unistd.h>

namespace GLib::File
{

namespace
{
std::atomic<uint64_t> g_uNextFileId{1};
} // namespace

CPosixFile::CPosixFile() : uId(g_uNextFileId++) {}

CPosixFile::~CPosixFile()
{
    CFileSectionImpl_PosixMapView::ForgetFile(uId);
    if (iHandle >= 0)
    {
        ::close(iHandle);
    }
}

uint32_t CPosixFile::ReadAt(void* pBuffer, uint64_t uOffset, uint32_t uCount) const
{
    uint32_t uDone = 0;
    while (uDone < uCount)
    {
        ssize_t n = ::pread(iHandle, static_cast<char*>(pBuffer) + uDone, uCount - uDone,
                            static_cast<off_t>(uOffset + uDone));
        if (n < 0 && errno == EINTR)
        {
            continue;
        }
        if (n <= 0)
        {
            break;
        }
        uDone += static_cast<uint32_t>(n);
    }
    return uDone;
}

uint32_t CPosixFile::WriteAt(const void* pBuffer, uint64_t uOffset, uint32_t uCount) const
{
    uint32_t uDone = 0;
    while (uDone < uCount)
    {
        ssize_t n = ::pwrite(iHandle, static_cast<const char*>(pBuffer) + uDone, uCount - uDone,
                             static_cast<off_t>(uOffset + uDone));
        if (n < 0 && errno == EINTR)
        {
            continue;
        }
        if (n <= 0)
        {
            break;
        }
        uDone += static_cast<uint32_t>(n);
    }
    return uDone;
}

bool CFileIOPosixBase::OpenFile(const char* pcPath, bool bWritable, bool bAsync)
{
    CloseFile();
    std::string path;
    if (!pcPath || !GUtPath::ResolveExisting(pcPath, path))
    {
        return false;
    }
    auto pFile = std::make_shared<CPosixFile>();
    pFile->iHandle = ::open(path.c_str(), (bWritable ? O_RDWR : O_RDONLY) | O_CLOEXEC);
    struct stat st;
    if (pFile->iHandle < 0 || ::fstat(pFile->iHandle, &st) != 0 || !S_ISREG(st.st_mode))
    {
        return false;
    }
    if (bAsync)
    {
        ::posix_fadvise(pFile->iHandle, 0, 0, POSIX_FADV_SEQUENTIAL);
    }
    pFile->uSize = static_cast<uint64_t>(st.st_size);
    pFile->bWritable = bWritable;
    m_pFile = std::move(pFile);
    return true;
}

bool CFileIOPosixBase::CreateFile(const char* pcPath, uint64_t uSize)
{
    CloseFile();
    if (!pcPath || !*pcPath)
    {
        return false;
    }
    std::string path = GUtPath::ResolveForWrite(pcPath);
    auto pFile = std::make_shared<CPosixFile>();
    pFile->iHandle = ::open(path.c_str(), O_RDWR | O_CREAT | O_TRUNC | O_CLOEXEC, 0644);
    if (pFile->iHandle < 0 || ::ftruncate(pFile->iHandle, static_cast<off_t>(uSize)) != 0)
    {
        return false;
    }
    pFile->uSize = uSize;
    pFile->bWritable = true;
    m_pFile = std::move(pFile);
    return true;
}

void CFileIOPosixBase::CloseFile()
{
    m_pFile.reset();
}

uint32_t CFileIOPosixBase::Read(void* pBuffer, uint32_t uCapacity, uint64_t uOffset, uint32_t uCount)
{
    if (!m_pFile || !pBuffer)
    {
        return 0;
    }
    return m_pFile->ReadAt(pBuffer, uOffset, std::min(uCapacity, uCount));
}

uint32_t CFileIOPosixBase::Write(const void* pBuffer, uint32_t uCapacity, uint64_t uOffset, uint32_t uCount)
{
    if (!m_pFile || !m_pFile->bWritable || !pBuffer)
    {
        return 0;
    }
    return m_pFile->WriteAt(pBuffer, uOffset, std::min(uCapacity, uCount));
}

uint32_t CFileIOPosixBase::CutToFile(uint64_t uOffset, uint32_t uSize) const
{
    const uint64_t uFileSize = FileSize();
    if (uOffset >= uFileSize)
    {
        return 0;
    }
    return static_cast<uint32_t>(std::min<uint64_t>(uSize, uFileSize - uOffset));
}

} // namespace GLib::File
