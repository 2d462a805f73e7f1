// The profile history: after each frame the profiler's regions with their total times,
// longest first, at most 300 frames. A click on the graph's legend hides or shows a region,
// applied at the next step of the history.
#pragma once

#include <cstdint>
#include <deque>
#include <set>
#include <vector>

namespace Ovrel
{

class CProfileHistory
{
public:
    static constexpr int MAX_FRAMES = 300;

    struct SSample
    {
        int32_t iRegion;
        float fMilliseconds;
    };
    using Frame = std::vector<SSample>;

    // Sorts the frame longest first (hidden regions left out) and keeps it; the oldest frame
    // leaves beyond 300.
    void Push(Frame frame);
    const std::deque<Frame>& GetFrames() const { return m_frames; }
    // A legend click: hides (or shows again) a region from the next step on; -1 is none.
    void SetPendingRegion(int32_t iRegion, bool bHidden);
    bool IsHidden(int32_t iRegion) const { return m_hidden.count(iRegion) != 0; }

private:
    std::deque<Frame> m_frames;
    std::set<int32_t> m_hidden;
    int32_t m_iPendingRegionIndex = -1;
    bool m_bPendingRegionHidden = false;
};

} // namespace Ovrel
