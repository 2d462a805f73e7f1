// Critical sections, the scoped lock and events. A critical section is re-entrant, as the
// code built on it re-enters its own locks (the device lock, a GUtFile reporting through
// the log while it holds its own section).
#pragma once

#include <condition_variable>
#include <mutex>

class GUtCriticalSection
{
public:
    GUtCriticalSection() = default;
    virtual ~GUtCriticalSection() = default;
    GUtCriticalSection(const GUtCriticalSection&) = delete;
    GUtCriticalSection& operator=(const GUtCriticalSection&) = delete;

    void Enter() { m_mutex.lock(); }
    void Leave() { m_mutex.unlock(); }
    bool TryEnter() { return m_mutex.try_lock(); }

private:
    std::recursive_mutex m_mutex;
};

// Enters the section on construction and leaves it on destruction; a null section is
// allowed and does nothing.
class GUtCriticalSectionLock
{
public:
    explicit GUtCriticalSectionLock(GUtCriticalSection* pSection) : m_pSection(pSection)
    {
        if (m_pSection)
        {
            m_pSection->Enter();
        }
    }
    explicit GUtCriticalSectionLock(GUtCriticalSection& section) : GUtCriticalSectionLock(&section) {}
    virtual ~GUtCriticalSectionLock()
    {
        if (m_pSection)
        {
            m_pSection->Leave();
        }
    }
    GUtCriticalSectionLock(const GUtCriticalSectionLock&) = delete;
    GUtCriticalSectionLock& operator=(const GUtCriticalSectionLock&) = delete;

private:
    GUtCriticalSection* m_pSection;
};

// An event in the Win32 sense: auto-reset events release one waiter per Set and clear
// themselves; manual-reset events stay set until Reset.
class GUtEvent
{
public:
    static constexpr int INFINITE_WAIT = -1;

    explicit GUtEvent(bool bManualReset = false, bool bInitiallySet = false)
        : m_bManualReset(bManualReset), m_bSet(bInitiallySet)
    {
    }
    virtual ~GUtEvent() = default;
    GUtEvent(const GUtEvent&) = delete;
    GUtEvent& operator=(const GUtEvent&) = delete;

    void Set();
    void Reset();
    // Waits until the event is set or iMilliseconds pass (INFINITE_WAIT: no limit). Returns
    // true when the event was set; an auto-reset event is cleared by the wait it releases.
    bool Wait(int iMilliseconds = INFINITE_WAIT);
    bool IsSet();

private:
    std::mutex m_mutex;
    std::condition_variable m_cond;
    bool m_bManualReset;
    bool m_bSet;
};
