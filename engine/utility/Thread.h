// CThread: a thread that runs the virtual Run once.
//
// A derived class must call Join() in its own destructor (or earlier) when Run touches its
// members: the base destructor also waits, but by then the derived part is gone.
#pragma once

#include "Utils/Utility/GUtLock.h"

#include <thread>

namespace Kestrin::Utility
{

class CThread
{
public:
    CThread() = default;
    virtual ~CThread();
    CThread(const CThread&) = delete;
    CThread& operator=(const CThread&) = delete;

    // The thread's work; runs once on the new thread.
    virtual void Run() = 0;

    // Creates the thread; does nothing when it already exists. A suspended thread waits for
    // Resume before it calls Run.
    void Start(bool bSuspended = false);
    void Resume();
    // Waits for Run to return. Safe to call more than once, and on a thread never started.
    void Join();
    bool IsStarted() const { return m_thread.joinable(); }

private:
    std::thread m_thread;
    GUtEvent m_resume{true, false};
};

} // namespace Kestrin::Utility
