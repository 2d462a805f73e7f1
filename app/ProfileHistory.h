// The profile history: after each frame the frame profiler's regions with their total times,
// longest first, at most 300 frames, and the graph drawn from it (bars per frame, the last
// frame's timeline and a legend). A click on the legend hides or shows a region, applied at
// the next step of the history.
#pragma once

#include "engine/utility/FrameProfiler.h"

#include <cstdint>
#include <deque>
#include <set>
#include <string>
#include <vector>

namespace Kestrin::Plotter
{
class CPlotter2D;
}

namespace Ovrel
{

class CProfileHistory
{
public:
    static constexpr int MAX_FRAMES = 300;
    static constexpr float GRAPH_LEFT = 50.0f;   // first column
    static constexpr float GRAPH_BOTTOM = 50.0f; // above the bottom edge
    static constexpr float BAR_SCALE = 10.0f;    // pixels a millisecond
    static constexpr float BAR_MINIMUM = 0.1f;   // milliseconds
    static constexpr float TIMELINE_LEFT = 400.0f;
    static constexpr float TIMELINE_SCALE = 20.0f; // pixels a millisecond
    static constexpr float TIMELINE_MINIMUM = 0.05f;
    static constexpr float LEGEND_TOP = 100.0f;
    static constexpr float LEGEND_ROW = 15.0f;
    static constexpr int COLOUR_COUNT = 17;

    struct SSample
    {
        int32_t iRegion;
        float fMilliseconds;
    };
    using Frame = std::vector<SSample>;

    // Sorts the frame longest first (hidden regions left out) and keeps it; the oldest frame
    // leaves beyond 300.
    void Push(Frame frame);
    // After a frame: the profiler's region totals become a frame of the history, its sections
    // the timeline; then the profiler starts the next frame.
    void Record(Kestrin::Utility::CFrameProfiler& profiler);
    const std::deque<Frame>& GetFrames() const { return m_frames; }
    // A legend click: hides (or shows again) a region from the next step on; -1 is none.
    void SetPendingRegion(int32_t iRegion, bool bHidden);
    bool IsHidden(int32_t iRegion) const { return m_hidden.count(iRegion) != 0; }
    // The region of the legend row at a client point; -1 when the point is on no row.
    int32_t RegionAtLegend(float fX, float fY) const;

    // The graph over a client area iClientH pixels high.
    void Draw(Kestrin::Plotter::CPlotter2D& plotter, int32_t iClientH) const;
    static uint32_t RegionColour(int32_t iRegion);

private:
    // The legend's rows: the last frame's regions, longest first, then the hidden ones.
    std::vector<int32_t> _LegendRows() const;

    std::deque<Frame> m_frames;
    std::set<int32_t> m_hidden;
    int32_t m_iPendingRegionIndex = -1;
    bool m_bPendingRegionHidden = false;
    std::vector<std::string> m_regionNames;
    std::vector<int32_t> m_regionCounts;
    std::vector<Kestrin::Utility::CProfileSection> m_lastSections;
};

} // namespace Ovrel
