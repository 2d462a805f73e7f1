#include "engine/utility/FrameProfiler.h"

#include "Utils/Utility/GUtTimer.h"

#include <cstring>
#include <unistd.h>

namespace Kestrin::Utility
{

CFrameProfiler& CFrameProfiler::Get()
{
    // Never destroyed: threads may still leave sections while statics are torn down.
    static CFrameProfiler* s_pProfiler = new CFrameProfiler();
    return *s_pProfiler;
}

CFrameProfiler::CFrameProfiler()
{
    memset(m_auDepth, 0, sizeof(m_auDepth));
}

uint16_t CFrameProfiler::RegisterRegion(const char* pcName)
{
    GUtCriticalSectionLock lock(m_lock);
    CProfileRegion region;
    region.pcName = pcName ? pcName : "";
    m_regions.push_back(region);
    return static_cast<uint16_t>(m_regions.size() - 1);
}

int32_t CFrameProfiler::Enter(uint16_t uRegion)
{
    if (!m_bRecording.load(std::memory_order_relaxed))
    {
        return 0;
    }
    CProfileSection section;
    section.uThreadId = static_cast<uint32_t>(gettid());
    section.uRegion = uRegion;
    GUtCriticalSectionLock lock(m_lock);
    uint16_t& uDepth = m_auDepth[section.uThreadId & 0xFF];
    section.uDepth = uDepth++;
    section.dStartMs = GUtGetClock().NowMilliseconds();
    m_sections.push_back(section);
    return static_cast<int32_t>(m_sections.size() - 1);
}

void CFrameProfiler::Leave(int32_t iSection)
{
    if (!m_bRecording.load(std::memory_order_relaxed))
    {
        return;
    }
    GUtCriticalSectionLock lock(m_lock);
    if (iSection < 0 || iSection >= static_cast<int32_t>(m_sections.size()))
    {
        return;
    }
    CProfileSection& section = m_sections[static_cast<size_t>(iSection)];
    if (section.dEndMs >= 0.0 || section.uRegion >= m_regions.size())
    {
        return;
    }
    section.dEndMs = GUtGetClock().NowMilliseconds();
    CProfileRegion& region = m_regions[section.uRegion];
    region.dTotalMs += section.dEndMs - section.dStartMs;
    ++region.iCount;
    if (region.iFirstSection < 0)
    {
        region.iFirstSection = iSection;
    }
    region.iLastSection = iSection;
    uint16_t& uDepth = m_auDepth[section.uThreadId & 0xFF];
    if (uDepth > 0)
    {
        --uDepth;
    }
}

void CFrameProfiler::ResetFrame()
{
    GUtCriticalSectionLock lock(m_lock);
    m_bRecording.store(true, std::memory_order_relaxed);
    m_sections.clear();
    memset(m_auDepth, 0, sizeof(m_auDepth));
    for (CProfileRegion& region : m_regions)
    {
        region.dTotalMs = 0.0;
        region.iCount = 0;
        region.iFirstSection = -1;
        region.iLastSection = -1;
    }
}

void CFrameProfiler::StopRecording()
{
    m_bRecording.store(false, std::memory_order_relaxed);
}

void CFrameProfiler::SetRegionFlags(uint16_t uRegion, uint32_t uFlags)
{
    GUtCriticalSectionLock lock(m_lock);
    if (uRegion < m_regions.size())
    {
        m_regions[uRegion].uFlags = uFlags;
    }
}

std::vector<CProfileRegion> CFrameProfiler::GetRegions() const
{
    GUtCriticalSectionLock lock(m_lock);
    return m_regions;
}

std::vector<CProfileSection> CFrameProfiler::GetSections() const
{
    GUtCriticalSectionLock lock(m_lock);
    return m_sections;
}

} // namespace Kestrin::Utility
