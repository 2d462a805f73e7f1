#include "Utils/Utility/GUtTimer.h"

#include <atomic>
#include <chrono>
#include <ctime>

double GUtSystemClock::NowMilliseconds()
{
    using namespace std::chrono;
    return duration<double, std::milli>(steady_clock::now().time_since_epoch()).count();
}

bool GUtSystemClock::LocalTime(GUtLocalTime& out)
{
    time_t now = time(nullptr);
    struct tm parts;
    if (!localtime_r(&now, &parts))
    {
        return false;
    }
    out.iYear = parts.tm_year + 1900;
    out.iMonth = parts.tm_mon + 1;
    out.iDay = parts.tm_mday;
    out.iHour = parts.tm_hour;
    out.iMinute = parts.tm_min;
    out.iSecond = parts.tm_sec;
    return true;
}

namespace
{
GUtSystemClock g_systemClock;
std::atomic<IGUtClock*> g_pClock{&g_systemClock};
} // namespace

IGUtClock& GUtGetClock()
{
    return *g_pClock.load(std::memory_order_acquire);
}

void GUtSetClock(IGUtClock* pClock)
{
    g_pClock.store(pClock ? pClock : &g_systemClock, std::memory_order_release);
}

GUtTimer::GUtTimer(EUnit eUnit, IGUtClock* pClock) : m_eUnit(eUnit), m_pClock(pClock)
{
    Start();
}

double GUtTimer::Now() const
{
    return m_pClock ? m_pClock->NowMilliseconds() : GUtGetClock().NowMilliseconds();
}

void GUtTimer::Start()
{
    m_dStartMs = Now();
}

double GUtTimer::Elapsed() const
{
    double dMs = Now() - m_dStartMs;
    return m_eUnit == UNIT_SECONDS ? dMs * 0.001 : dMs;
}
