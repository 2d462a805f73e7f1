// CFileIOImpl_Posix: the plain IFileIO. Each section read is one pread at the section's
// offset; nothing is mapped or cached.
#pragma once

#include "Utils/File/Posix/PosixFile.h"

namespace GLib::File
{

class CFileSectionImpl_Posix final : public IFileSection
{
public:
    CFileSectionImpl_Posix(std::shared_ptr<CPosixFile> pFile, uint64_t uOffset, uint32_t uSize);
    uint32_t Read(void* pBuffer, uint32_t uCapacity, uint32_t uOffset, uint32_t uCount) override;
    uint32_t Write(const void* pBuffer, uint32_t uCapacity, uint32_t uOffset, uint32_t uCount) override;
    uint32_t Size() const override { return m_nSize; }

private:
    std::shared_ptr<CPosixFile> m_pFile;
    uint64_t m_nFileOffset;
    uint32_t m_nSize;
};

class CFileIOImpl_Posix final : public CFileIOPosixBase
{
public:
    CFileIOImpl_Posix() = default;
    IFileSection* CreateSection(uint64_t uOffset, uint32_t uSize) override;
};

} // namespace GLib::File
