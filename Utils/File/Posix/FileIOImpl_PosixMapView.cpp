#include "Utils/File/Posix/FileIOImpl_PosixMapView.h"

#include "Utils/Utility/GUtDebug.h"

#include <algorithm>
#include <cerrno>
#include <cstring>
#include <map>
#include <mutex>
#include <sys/mman.h>
#include <unistd.h>
#include <utility>

namespace GLib::File
{

// A mapped range of a file: a shared window, or the own view of a section that crosses a
// window boundary.
struct CMapView
{
    uint64_t uFileId = 0;
    uint64_t uStart = 0;
    size_t uSize = 0;
    uint8_t* pBase = nullptr;
    int iSections = 0; // sections attached
    bool bShared = false;
    std::list<CMapView*>::iterator idleEntry; // valid while shared and unused
};

namespace
{
// Views no larger than this are filled in the mapping call: one page-table walk instead
// of a fault per run of pages on the first reads.
constexpr size_t POPULATE_LIMIT = 4 * 1024 * 1024;

struct CMapViewPool
{
    std::mutex mutex;
    std::list<CFileSectionImpl_PosixMapView*> sections; // attached, oldest first
    std::map<std::pair<uint64_t, uint64_t>, CMapView*> windows;
    std::list<CMapView*> idle; // shared windows no section uses, least recently used first
    size_t uViews = 0;

    static CMapViewPool& Get()
    {
        // Never destroyed: sections of packs that live until exit are destroyed after
        // every function-local static.
        static CMapViewPool* s_pPool = new CMapViewPool;
        return *s_pPool;
    }

    void Unmap(CMapView* pView)
    {
        ::munmap(pView->pBase, pView->uSize);
        if (pView->bShared)
        {
            windows.erase({pView->uFileId, pView->uStart});
        }
        --uViews;
        delete pView;
    }

    // Makes room for one more view by unmapping the least recently used idle window.
    void MakeRoom()
    {
        while (uViews >= CFileSectionImpl_PosixMapView::MAX_MAPPED_VIEWS && !idle.empty())
        {
            CMapView* pView = idle.front();
            idle.pop_front();
            Unmap(pView);
        }
    }
};

uint64_t Granularity()
{
    static const uint64_t s_uGranularity = static_cast<uint64_t>(::sysconf(_SC_PAGESIZE));
    return s_uGranularity;
}

CMapView* MapRange(const CPosixFile& file, uint64_t uStart, size_t uSize, bool bShared)
{
    const int iProtection = file.bWritable ? (PROT_READ | PROT_WRITE) : PROT_READ;
    const int iFlags = MAP_SHARED | (uSize <= POPULATE_LIMIT ? MAP_POPULATE : 0);
    void* pBase = ::mmap(nullptr, uSize, iProtection, iFlags, file.iHandle, static_cast<off_t>(uStart));
    if (pBase == MAP_FAILED)
    {
        GUtLog::Get().DisplayMsg(true, 1, "CMapReader::_RetrieveDataBuffer()",
                                 "MapViewOfFile fail!!(error code:%d)", errno);
        return nullptr;
    }
    CMapView* pView = new CMapView;
    pView->uFileId = file.uId;
    pView->uStart = uStart;
    pView->uSize = uSize;
    pView->pBase = static_cast<uint8_t*>(pBase);
    pView->bShared = bShared;
    return pView;
}
} // namespace

CFileSectionImpl_PosixMapView::CFileSectionImpl_PosixMapView(std::shared_ptr<CPosixFile> pFile,
                                                             uint64_t uOffset, uint32_t uSize)
    : m_pFileIORef(std::move(pFile)), m_nFileOffset(uOffset), m_nSize(uSize)
{
}

CFileSectionImpl_PosixMapView::~CFileSectionImpl_PosixMapView()
{
    CMapViewPool& pool = CMapViewPool::Get();
    std::lock_guard<std::mutex> lock(pool.mutex);
    _Detach();
}

bool CFileSectionImpl_PosixMapView::IsMapped() const
{
    CMapViewPool& pool = CMapViewPool::Get();
    std::lock_guard<std::mutex> lock(pool.mutex);
    return m_pMapViewData != nullptr;
}

size_t CFileSectionImpl_PosixMapView::MappedViewCount()
{
    CMapViewPool& pool = CMapViewPool::Get();
    std::lock_guard<std::mutex> lock(pool.mutex);
    return pool.sections.size();
}

size_t CFileSectionImpl_PosixMapView::MappedWindowCount()
{
    CMapViewPool& pool = CMapViewPool::Get();
    std::lock_guard<std::mutex> lock(pool.mutex);
    return pool.uViews;
}

void CFileSectionImpl_PosixMapView::ForgetFile(uint64_t uFileId)
{
    CMapViewPool& pool = CMapViewPool::Get();
    std::lock_guard<std::mutex> lock(pool.mutex);
    for (auto it = pool.idle.begin(); it != pool.idle.end();)
    {
        CMapView* pView = *it;
        if (pView->uFileId == uFileId)
        {
            it = pool.idle.erase(it);
            pool.Unmap(pView);
        }
        else
        {
            ++it;
        }
    }
}

void CFileSectionImpl_PosixMapView::_RetrieveDataBuffer()
{
    CMapViewPool& pool = CMapViewPool::Get();
    GUT_ASSERT(m_pMapViewData == 0);
    GUT_ASSERT(m_nFileOffset < m_pFileIORef->uSize);
    if (pool.sections.size() >= MAX_MAPPED_VIEWS)
    {
        auto it =
            std::find_if(pool.sections.begin(), pool.sections.end(),
                         [this](CFileSectionImpl_PosixMapView* p) { return p != this && p->m_iInUse == 0; });
        if (it != pool.sections.end())
        {
            (*it)->_Detach();
        }
    }
    const CPosixFile& file = *m_pFileIORef;
    const uint64_t uEnd = m_nFileOffset + std::min<uint64_t>(m_nSize, file.uSize - m_nFileOffset);
    const uint64_t uWindow = Granularity() * WINDOW_PAGES;
    const uint64_t uWindowStart = m_nFileOffset / uWindow * uWindow;
    CMapView* pView = nullptr;
    if (uEnd <= uWindowStart + uWindow)
    {
        auto it = pool.windows.find({file.uId, uWindowStart});
        if (it != pool.windows.end())
        {
            pView = it->second;
            if (pView->iSections == 0)
            {
                pool.idle.erase(pView->idleEntry);
            }
        }
        else
        {
            pool.MakeRoom();
            pView = MapRange(file, uWindowStart, std::min(uWindow, file.uSize - uWindowStart), true);
            if (pView)
            {
                pool.windows[{file.uId, uWindowStart}] = pView;
                ++pool.uViews;
            }
        }
    }
    else
    {
        // Across a window boundary: a view of its own, from the page its offset lies in.
        const uint64_t uMapOffset = m_nFileOffset / Granularity() * Granularity();
        pool.MakeRoom();
        pView = MapRange(file, uMapOffset, std::max<uint64_t>(uEnd - uMapOffset, 1), false);
        if (pView)
        {
            ++pool.uViews;
        }
    }
    m_pMapViewData = pView;
    GUT_ASSERT(m_pMapViewData);
    ++pView->iSections;
    m_pData = pView->pBase + (m_nFileOffset - pView->uStart);
    m_poolEntry = pool.sections.insert(pool.sections.end(), this);
}

void CFileSectionImpl_PosixMapView::_Detach()
{
    CMapView* pView = m_pMapViewData;
    if (!pView)
    {
        return;
    }
    CMapViewPool& pool = CMapViewPool::Get();
    pool.sections.erase(m_poolEntry);
    m_pMapViewData = nullptr;
    m_pData = nullptr;
    if (--pView->iSections > 0)
    {
        return;
    }
    if (pView->bShared)
    {
        // Kept for the next section in the window, until the room is needed.
        pView->idleEntry = pool.idle.insert(pool.idle.end(), pView);
    }
    else
    {
        pool.Unmap(pView);
    }
}

uint8_t* CFileSectionImpl_PosixMapView::_Acquire()
{
    CMapViewPool& pool = CMapViewPool::Get();
    std::lock_guard<std::mutex> lock(pool.mutex);
    if (!m_pMapViewData)
    {
        _RetrieveDataBuffer();
    }
    ++m_iInUse;
    return m_pData;
}

void CFileSectionImpl_PosixMapView::_Release()
{
    CMapViewPool& pool = CMapViewPool::Get();
    std::lock_guard<std::mutex> lock(pool.mutex);
    --m_iInUse;
}

uint32_t CFileSectionImpl_PosixMapView::Read(void* pBuffer, uint32_t uCapacity, uint32_t uOffset,
                                             uint32_t uCount)
{
    uint8_t* pData = _Acquire();
    GUT_ASSERT(m_pData);
    uint32_t uRead = 0;
    if (pBuffer && uOffset < m_nSize)
    {
        uRead = std::min({uCapacity, uCount, m_nSize - uOffset});
        memcpy(pBuffer, pData + uOffset, uRead);
    }
    _Release();
    return uRead;
}

uint32_t CFileSectionImpl_PosixMapView::Write(const void* pBuffer, uint32_t uCapacity, uint32_t uOffset,
                                              uint32_t uCount)
{
    const uint32_t nWriteSize = std::min(uCapacity, uCount);
    GUT_ASSERT(static_cast<uint64_t>(uOffset) + nWriteSize <= m_nSize);
    if (!pBuffer || !m_pFileIORef->bWritable)
    {
        return 0;
    }
    uint8_t* pData = _Acquire();
    GUT_ASSERT(m_pData);
    memcpy(pData + uOffset, pBuffer, nWriteSize);
    _Release();
    return nWriteSize;
}

IFileSection* CFileIOImpl_PosixMapView::CreateSection(uint64_t uOffset, uint32_t uSize)
{
    if (!m_pFile)
    {
        return nullptr;
    }
    return new CFileSectionImpl_PosixMapView(m_pFile, uOffset, CutToFile(uOffset, uSize));
}

} // namespace GLib::File
