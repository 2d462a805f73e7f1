#include "app/ProfileHistory.h"

#include <algorithm>

namespace Ovrel
{

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

} // namespace Ovrel
