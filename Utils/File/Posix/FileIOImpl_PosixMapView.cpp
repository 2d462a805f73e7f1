#include "Utils/File/Posix/FileIOImpl_PosixMapView.h"

#include "Utils/Utility/GUtDebug.h"

#include <algorithm>
#include <cerrno>
#include <cstring>
#include <mutex>
#include <sys/mman.h>
#include <unistd.h>

namespace GLib::File
{

namespace
{
// Small views are filled in the mapping call: one page-table walk instead of a fault per
// page on the first read.
constexpr size_t POPULATE_LIMIT = 1024 * 1024;

struct CMapViewPool
{
    std::mutex mutex;
    std::list<CFileSectionImpl_PosixMapView*> views;

    static CMapViewPool& Get()
    {
        // Never destroyed: sections of packs that live until exit are destroyed after
        // every function-local static.
        static CMapViewPool* s_pPool = new CMapViewPool;
        return *s_pPool;
    }
};

uint64_t Granularity()
{
    static const uint64_t s_uGranularity = static_cast<uint64_t>(::sysconf(_SC_PAGESIZE));
    return s_uGranularity;
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
    _Unmap();
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
    return pool.views.size();
}

void CFileSectionImpl_PosixMapView::_RetrieveDataBuffer()
{
    CMapViewPool& pool = CMapViewPool::Get();
    GUT_ASSERT(m_pMapViewData == 0);
    GUT_ASSERT(m_nFileOffset < m_pFileIORef->uSize);
    if (pool.views.size() >= MAX_MAPPED_VIEWS)
    {
        auto it =
            std::find_if(pool.views.begin(), pool.views.end(),
                         [this](CFileSectionImpl_PosixMapView* p) { return p != this && p->m_iInUse == 0; });
        if (it != pool.views.end())
        {
            (*it)->_Unmap();
        }
    }
    const uint64_t uGranularity = Granularity();
    uint64_t uSize = std::min<uint64_t>(m_nSize, m_pFileIORef->uSize - m_nFileOffset);
    const uint64_t uMapOffset = m_nFileOffset / uGranularity * uGranularity;
    const uint64_t uDelta = m_nFileOffset - uMapOffset;
    uSize = std::max<uint64_t>(uSize + uDelta, 1);

    const int iProtection = m_pFileIORef->bWritable ? (PROT_READ | PROT_WRITE) : PROT_READ;
    const int iFlags = MAP_SHARED | (uSize <= POPULATE_LIMIT ? MAP_POPULATE : 0);
    void* pView =
        ::mmap(nullptr, uSize, iProtection, iFlags, m_pFileIORef->iHandle, static_cast<off_t>(uMapOffset));
    if (pView == MAP_FAILED)
    {
        GUtLog::Get().DisplayMsg(true, 1, "CMapReader::_RetrieveDataBuffer()",
                                 "MapViewOfFile fail!!(error code:%d)", errno);
        pView = nullptr;
    }
    m_pMapViewData = pView;
    GUT_ASSERT(m_pMapViewData);
    m_nMapViewSize = uSize;
    m_pData = static_cast<uint8_t*>(pView) + uDelta;
    m_poolEntry = pool.views.insert(pool.views.end(), this);
}

void CFileSectionImpl_PosixMapView::_Unmap()
{
    if (!m_pMapViewData)
    {
        return;
    }
    ::munmap(m_pMapViewData, m_nMapViewSize);
    m_pMapViewData = nullptr;
    m_pData = nullptr;
    m_nMapViewSize = 0;
    CMapViewPool::Get().views.erase(m_poolEntry);
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
