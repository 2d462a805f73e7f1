// CFileIOImpl_PosixMapView: the IFileIO packs use. A section maps nothing when it is made;
// its first read maps it: it attaches to a mapped view of the file that covers it. At most
// 100 sections are attached across the process: attaching one more detaches the oldest,
// and a detached section attaches again when it is next read.
//
// Views are windows of 1 MiB (256 pages, aligned to the window) shared by every section
// that falls inside one, so reading many small entries costs no mapping call once their
// windows are mapped; a section that crosses a window boundary gets a view of its own,
// rounded down to the page size. The pool holds at most 100 views; a window no section
// uses stays mapped until the room is needed. A view in use by a read on another thread
// is never unmapped under it. One process-wide lock guards the pool.
#pragma once

#include "Utils/File/Posix/PosixFile.h"

#include <cstddef>
#include <list>

namespace GLib::File
{

struct CMapView;

class CFileSectionImpl_PosixMapView final : public IFileSection
{
public:
    // The most sections attached, and the most views mapped, at once across the process.
    static constexpr size_t MAX_MAPPED_VIEWS = 100;
    // The size of a shared window, in pages.
    static constexpr size_t WINDOW_PAGES = 256;

    CFileSectionImpl_PosixMapView(std::shared_ptr<CPosixFile> pFile, uint64_t uOffset, uint32_t uSize);
    ~CFileSectionImpl_PosixMapView() override;

    uint32_t Read(void* pBuffer, uint32_t uCapacity, uint32_t uOffset, uint32_t uCount) override;
    uint32_t Write(const void* pBuffer, uint32_t uCapacity, uint32_t uOffset, uint32_t uCount) override;
    uint32_t Size() const override { return m_nSize; }

    // Whether this section is attached to a view now.
    bool IsMapped() const;
    // How many sections are attached now.
    static size_t MappedViewCount();
    // How many views are mapped now (attached to or kept for later).
    static size_t MappedWindowCount();
    // Unmaps the kept views of a file that is going away.
    static void ForgetFile(uint64_t uFileId);

private:
    // Attaches the section unless it is attached, and marks it in use. Returns the
    // section's first byte.
    uint8_t* _Acquire();
    void _Release();
    // Both run under the pool's lock.
    void _RetrieveDataBuffer();
    void _Detach();

    std::shared_ptr<CPosixFile> m_pFileIORef;
    uint64_t m_nFileOffset;
    uint32_t m_nSize;
    CMapView* m_pMapViewData = nullptr;
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
