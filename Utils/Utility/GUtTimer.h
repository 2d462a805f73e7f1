// Time for the whole system: the process clock (monotonic milliseconds and the local
// calendar time), replaceable so that tests drive time by hand, and GUtTimer on top of it.
#pragma once

#include <cstdint>

struct GUtLocalTime
{
    int iYear = 1970;
    int iMonth = 1; // 1 to 12
    int iDay = 1;   // 1 to 31
    int iHour = 0;
    int iMinute = 0;
    int iSecond = 0;
};

class IGUtClock
{
public:
    virtual ~IGUtClock() = default;
    // Monotonic milliseconds since an arbitrary start; never goes back.
    virtual double NowMilliseconds() = 0;
    // The local calendar time now. Returns false when the system can't tell it.
    virtual bool LocalTime(GUtLocalTime& out) = 0;

protected:
    IGUtClock() = default;
    IGUtClock(const IGUtClock&) = delete;
    IGUtClock& operator=(const IGUtClock&) = delete;
};

// The steady clock of the machine and localtime_r.
class GUtSystemClock final : public IGUtClock
{
public:
    double NowMilliseconds() override;
    bool LocalTime(GUtLocalTime& out) override;
};

// A clock that moves only when told to; for tests of time-dependent behaviour.
class GUtManualClock final : public IGUtClock
{
public:
    double NowMilliseconds() override { return m_dMilliseconds; }
    bool LocalTime(GUtLocalTime& out) override
    {
        out = m_localTime;
        return m_bLocalTimeKnown;
    }
    void SetMilliseconds(double dMilliseconds) { m_dMilliseconds = dMilliseconds; }
    void Advance(double dMilliseconds) { m_dMilliseconds += dMilliseconds; }
    void SetLocalTime(const GUtLocalTime& time, bool bKnown = true)
    {
        m_localTime = time;
        m_bLocalTimeKnown = bKnown;
    }

private:
    double m_dMilliseconds = 0.0;
    GUtLocalTime m_localTime;
    bool m_bLocalTimeKnown = true;
};

// The process clock. Starts as a GUtSystemClock.
IGUtClock& GUtGetClock();
// Replaces the process clock; null restores the system clock. The caller keeps ownership
// and must restore the clock before destroying its own.
void GUtSetClock(IGUtClock* pClock);

// Elapsed time since the last Start, in seconds or milliseconds, read from the process
// clock (or from the clock given at construction).
class GUtTimer
{
public:
    enum EUnit
    {
        UNIT_SECONDS,
        UNIT_MILLISECONDS,
    };

    explicit GUtTimer(EUnit eUnit = UNIT_SECONDS, IGUtClock* pClock = nullptr);
    virtual ~GUtTimer() = default;

    void Start();
    double Elapsed() const;
    EUnit Unit() const { return m_eUnit; }

private:
    double Now() const;

    EUnit m_eUnit;
    IGUtClock* m_pClock;
    double m_dStartMs = 0.0;
};
