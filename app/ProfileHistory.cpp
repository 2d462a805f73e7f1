#include "app/ProfileHistory.h"

#include "engine/ext/Plotter2D.h"

#include <algorithm>
#include <cstdio>

namespace Ovrel
{

namespace
{
constexpr uint32_t COLOURS[CProfileHistory::COLOUR_COUNT] = {
    0xff0000, 0x00ff00, 0x0000ff, 0xffff00, 0xff00ff, 0x00ffff, 0xff8000, 0x80ff00, 0x0080ff,
    0xff0080, 0x8000ff, 0x00ff80, 0x808080, 0xffffff, 0x804000, 0x408000, 0x004080};
} // namespace

uint32_t CProfileHistory::RegionColour(int32_t iRegion)
{
    return COLOURS[(iRegion < 0 ? -iRegion : iRegion) % COLOUR_COUNT];
}

void CProfileHistory::SetPendingRegion(int32_t iRegion, bool bHidden)
{
    m_iPendingRegionIndex = iRegion;
    m_bPendingRegionHidden = bHidden;
}

void CProfileHistory::Push(Frame frame)
{
    if (m_iPendingRegionIndex >= 0)
    {
        if (m_bPendingRegionHidden)
        {
            m_hidden.insert(m_iPendingRegionIndex);
        }
        else
        {
            m_hidden.erase(m_iPendingRegionIndex);
        }
        m_iPendingRegionIndex = -1;
    }
    frame.erase(
        std::remove_if(frame.begin(), frame.end(), [this](const SSample& s) { return IsHidden(s.iRegion); }),
        frame.end());
    std::stable_sort(frame.begin(), frame.end(),
                     [](const SSample& a, const SSample& b) { return a.fMilliseconds > b.fMilliseconds; });
    m_frames.push_back(std::move(frame));
    while (static_cast<int>(m_frames.size()) > MAX_FRAMES)
    {
        m_frames.pop_front();
    }
}

void CProfileHistory::Record(Kestrin::Utility::CFrameProfiler& profiler)
{
    const std::vector<Kestrin::Utility::CProfileRegion> regions = profiler.GetRegions();
    Frame frame;
    m_regionNames.resize(regions.size());
    m_regionCounts.resize(regions.size());
    for (size_t i = 0; i < regions.size(); ++i)
    {
        m_regionNames[i] = regions[i].pcName;
        m_regionCounts[i] = regions[i].iCount;
        if (regions[i].iCount > 0)
        {
            frame.push_back({static_cast<int32_t>(i), static_cast<float>(regions[i].dTotalMs)});
        }
    }
    m_lastSections = profiler.GetSections();
    Push(std::move(frame));
    profiler.ResetFrame();
}

std::vector<int32_t> CProfileHistory::_LegendRows() const
{
    std::vector<int32_t> rows;
    if (!m_frames.empty())
    {
        for (const SSample& sample : m_frames.back())
        {
            rows.push_back(sample.iRegion);
        }
    }
    rows.insert(rows.end(), m_hidden.begin(), m_hidden.end());
    return rows;
}

int32_t CProfileHistory::RegionAtLegend(float fX, float fY) const
{
    if (fX < GRAPH_LEFT || fX > TIMELINE_LEFT || fY < LEGEND_TOP)
    {
        return -1;
    }
    const size_t uRow = static_cast<size_t>((fY - LEGEND_TOP) / LEGEND_ROW);
    const std::vector<int32_t> rows = _LegendRows();
    return uRow < rows.size() ? rows[uRow] : -1;
}

void CProfileHistory::Draw(Kestrin::Plotter::CPlotter2D& plotter, int32_t iClientH) const
{
    // The bars: one column per frame, the regions stacked upward from the base line.
    const float fBase = static_cast<float>(iClientH) - GRAPH_BOTTOM;
    float fX = GRAPH_LEFT;
    for (const Frame& frame : m_frames)
    {
        float fY = fBase;
        for (const SSample& sample : frame)
        {
            if (sample.fMilliseconds >= BAR_MINIMUM)
            {
                const float fHeight = sample.fMilliseconds * BAR_SCALE;
                plotter.DrawLine(fX, fY, fX, fY - fHeight, RegionColour(sample.iRegion));
                fY -= fHeight;
            }
        }
        fX += 1.0f;
    }
    if (m_frames.empty())
    {
        return;
    }

    // The legend of the last frame: name, time, share, count; hidden regions below, in grey.
    const Frame& last = m_frames.back();
    float fTotal = 0.0f;
    for (const SSample& sample : last)
    {
        fTotal += sample.fMilliseconds;
    }
    float fY = LEGEND_TOP;
    for (const SSample& sample : last)
    {
        const size_t uRegion = static_cast<size_t>(sample.iRegion);
        char acLine[160];
        snprintf(acLine, sizeof(acLine), "%-20s %4.1f %4.1f%% %3d",
                 uRegion < m_regionNames.size() ? m_regionNames[uRegion].c_str() : "", sample.fMilliseconds,
                 fTotal > 0.0f ? sample.fMilliseconds * 100.0f / fTotal : 0.0f,
                 uRegion < m_regionCounts.size() ? m_regionCounts[uRegion] : 0);
        plotter.DrawText(GRAPH_LEFT, fY, acLine, RegionColour(sample.iRegion));
        fY += LEGEND_ROW;
    }
    for (int32_t iRegion : m_hidden)
    {
        const size_t uRegion = static_cast<size_t>(iRegion);
        plotter.DrawText(GRAPH_LEFT, fY,
                         uRegion < m_regionNames.size() ? m_regionNames[uRegion].c_str() : "?", 0x808080);
        fY += LEGEND_ROW;
    }

    // The timeline of the last frame: each section a line, each entry 2 pixels lower.
    double dStart = 0.0;
    bool bStarted = false;
    for (const Kestrin::Utility::CProfileSection& section : m_lastSections)
    {
        if (!bStarted || section.dStartMs < dStart)
        {
            dStart = section.dStartMs;
            bStarted = true;
        }
    }
    fY = LEGEND_TOP;
    for (const Kestrin::Utility::CProfileSection& section : m_lastSections)
    {
        const double dLength = section.dEndMs - section.dStartMs;
        if (section.dEndMs < 0.0 || dLength < TIMELINE_MINIMUM)
        {
            continue;
        }
        const float fLeft = TIMELINE_LEFT + static_cast<float>((section.dStartMs - dStart) * TIMELINE_SCALE);
        plotter.DrawLine(fLeft, fY, fLeft + static_cast<float>(dLength * TIMELINE_SCALE), fY,
                         RegionColour(section.uRegion));
        fY += 2.0f;
    }
}

} // namespace Ovrel
