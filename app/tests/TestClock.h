// A clock the test moves by hand that threads may read while it moves (the render thread
// reads it through the frame profiler while the frame loop's sleep advances it).
#pragma once

#include "Utils/Utility/GUtTimer.h"

#include <atomic>

class CThreadSafeManualClock final : public IGUtClock
{
public:
    double NowMilliseconds() override { return m_dMilliseconds.load(); }
    bool LocalTime(GUtLocalTime& out) override
    {
        out = GUtLocalTime();
        return true;
    }
    void SetMilliseconds(double dMilliseconds) { m_dMilliseconds.store(dMilliseconds); }
    void Advance(double dMilliseconds)
    {
        double dOld = m_dMilliseconds.load();
        while (!m_dMilliseconds.compare_exchange_weak(dOld, dOld + dMilliseconds))
        {
        }
    }

private:
    std::atomic<double> m_dMilliseconds{0.0};
};
