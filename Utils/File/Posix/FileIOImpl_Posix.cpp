#include "Utils/File/Posix/FileIOImpl_Posix.h"

#include "Utils/Utility/GUtDebug.h"

#include <algorithm>

namespace GLib::File
{

CFileSectionImpl_Posix::CFileSectionImpl_Posix(std::shared_ptr<CPosixFile> pFile, uint64_t uOffset,
                                               uint32_t uSize)
    : m_pFile(std::move(pFile)), m_nFileOffset(uOffset), m_nSize(uSize)
{
}

uint32_t CFileSectionImpl_Posix::Read(void* pBuffer, uint32_t uCapacity, uint32_t uOffset, uint32_t uCount)
{
    if (!pBuffer || uOffset >= m_nSize)
    {
        return 0;
    }
    uint32_t uWanted = std::min({uCapacity, uCount, m_nSize - uOffset});
    return m_pFile->ReadAt(pBuffer, m_nFileOffset + uOffset, uWanted);
}

uint32_t CFileSectionImpl_Posix::Write(const void* pBuffer, uint32_t uCapacity, uint32_t uOffset,
                                       uint32_t uCount)
{
    uint32_t uWriteSize = std::min(uCapacity, uCount);
    GUT_ASSERT(static_cast<uint64_t>(uOffset) + uWriteSize <= m_nSize);
    if (!pBuffer || !m_pFile->bWritable)
    {
        return 0;
    }
    return m_pFile->WriteAt(pBuffer, m_nFileOffset + uOffset, uWriteSize);
}

IFileSection* CFileIOImpl_Posix::CreateSection(uint64_t uOffset, uint32_t uSize)
{
    if (!m_pFile)
    {
        return nullptr;
    }
    return new CFileSectionImpl_Posix(m_pFile, uOffset, CutToFile(uOffset, uSize));
}

} // namespace GLib::File
