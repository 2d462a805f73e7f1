// CFileIOImpl_PosixMapView: the IFileIO packs use. A section maps nothing when it is made;
// its first read maps its range (rounded down to the page size, so a section may start at
// any offset). All sections of all files share one process-wide pool of at most 100 mapped
// views: mapping one more unmaps the oldest, and an unmapped section maps itself again when
// it is next read. A view in use by a read on another thread is never unmapped under it.
#pragma once

#include "Utils/File/Posix/PosixFile.h"

#include <cstddef>
#include <list>

namespace GLib::File
{

class CFileSectionImpl_PosixMapView final : public IFileSection
{
public:
    // The most views mapped at once across the process.
    static constexpr size_t MAX_MAPPED_VIEWS = 100;

    CFileSectionImpl_PosixMapView(std::shared_ptr<CPosixFile> pFile, uint64_t uOffset, uint32_t uSize);
    ~CFileSectionImpl_PosixMapView() override;

    uint32_t Read(void* pBuffer, uint32_t uCapacity, uint32_t uOffset, uint32_t uCount) override;
    uint32_t Write(const void* pBuffer, uint32_t uCapacity, uint32_t uOffset, uint32_t uCount) override;
    uint32_t Size() const override { return m_nSize; }

    // Whether this section holds a view now.
    bool IsMapped() const;
    // How many views the pool holds now.
    static size_t MappedViewCount();

private:
    // Maps the section (evicting the oldest view when the pool is full) unless it is mapped,
    // and marks it in use. Returns the section's first byte.
    uint8_t* _Acquire();
    void _Release();
    // Both run under the pool's lock.
    void _RetrieveDataBuffer();
    void _Unmap();

    std::shared_ptr<CPosixFile> m_pFileIORef;
    uint64_t m_nFileOffset;
    uint32_t m_nSize;
    void* m_pMapViewData = nullptr;
    size_t m_nMapViewSize = 0;
    uint8_t* m_pData = nullptr;
    int m_iInUse = 0;
    std::list<CFileSectionImpl_PosixMapView*>::iterator m_poolEntry;
};

class CFileIOImpl_PosixMapView final : public CFileIOPosixBase
{
public:
    CFileIOImpl_PosixMapView() = default;
    IFileSection* CreateSection(uint64_t uOffset, uint32_t uSize) override;
};

} // namespace GLib::File
