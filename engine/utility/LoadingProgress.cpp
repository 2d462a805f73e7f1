#include "engine/utility/LoadingProgress.h"

#include <atomic>

namespace Kestrin::Utility
{

namespace
{
std::atomic<ILoadingProgress*> g_pLoadingProgress{nullptr};
} // namespace

ILoadingProgress* GetLoadingProgress()
{
    return g_pLoadingProgress.load();
}

void SetLoadingProgress(ILoadingProgress* pProgress)
{
    g_pLoadingProgress.store(pProgress);
}

void CLoadingProgress::AddExpected(uint64_t uWeight)
{
    GUtCriticalSectionLock lock(m_lock);
    m_uExpected += uWeight;
}

void CLoadingProgress::Report(const char* pcCategory, uint64_t uWeight)
{
    GUtCriticalSectionLock lock(m_lock);
    m_strLastCategory = pcCategory ? pcCategory : "";
    m_doneByCategory[m_strLastCategory] += uWeight;
    m_uDone += uWeight;
}

float CLoadingProgress::GetFraction()
{
    GUtCriticalSectionLock lock(m_lock);
    if (m_uExpected == 0 || m_uDone >= m_uExpected)
    {
        return 1.0f;
    }
    return static_cast<float>(static_cast<double>(m_uDone) / static_cast<double>(m_uExpected));
}

GUtString CLoadingProgress::GetLastCategory()
{
    GUtCriticalSectionLock lock(m_lock);
    return GUtString(m_strLastCategory);
}

void CLoadingProgress::Reset()
{
    GUtCriticalSectionLock lock(m_lock);
    m_uExpected = 0;
    m_uDone = 0;
    m_doneByCategory.clear();
    m_strLastCategory.clear();
}

uint64_t CLoadingProgress::GetExpected()
{
    GUtCriticalSectionLock lock(m_lock);
    return m_uExpected;
}

uint64_t CLoadingProgress::GetDone()
{
    GUtCriticalSectionLock lock(m_lock);
    return m_uDone;
}

uint64_t CLoadingProgress::GetDone(const char* pcCategory)
{
    GUtCriticalSectionLock lock(m_lock);
    auto it = m_doneByCategory.find(pcCategory ? pcCategory : "");
    return it == m_doneByCategory.end() ? 0 : it->second;
}

} // namespace Kestrin::Utility
