// The asynchronous loader: moves resource loading off the main thread. A load thread reads
// files, a preprocess thread does CPU preparation, and the main thread finishes tasks in Tick,
// within a time budget per frame.
//
// Threads: Submit, Cancel, IsPending and ChangePriority may be called from any thread; Tick,
// WaitForAll, Start and Stop belong to the main thread. One lock guards the queues, the state
// map and the byte count; it is never held while a stage runs. A task's life ends in exactly
// one place: the thread that sees it last destroys it.
#pragma once

#include "Utils/Utility/GUtLock.h"
#include "Utils/Utility/GUtTimer.h"
#include "engine/utility/LoadTask.h"
#include "engine/utility/Thread.h"

#include <atomic>
#include <cstdint>
#include <deque>
#include <functional>
#include <unordered_map>

namespace Kestrin::Utility
{

class IAsyncLoader
{
public:
    virtual ~IAsyncLoader() = default;

    // Takes ownership of the task. Priority 0, or a loader that is not enabled, runs Load,
    // Preprocess and Complete (Fail after a false) on the calling thread and destroys the
    // task before returning; otherwise the task is queued by its priority. Null does nothing.
    virtual void Submit(CLoadTask* pTask) = 0;
    // Marks a submitted task cancelled: it gets neither Complete nor Fail, and is destroyed
    // by the thread that next meets it. A stage running now runs to its end. Unknown tasks
    // are ignored.
    virtual void Cancel(CLoadTask* pTask) = 0;
    // True while the task is in the loader (queued, in a stage, or cancelled and not yet
    // met again). Compares the pointer only; a loader thread may still be running the
    // destructor of a task that is no longer pending.
    virtual bool IsPending(CLoadTask* pTask) = 0;
    // Moves a task still waiting in a load queue to the queue of a new priority; priority 0
    // runs it at once, as Submit does, and destroys it. False if the task is null, already
    // has this priority, or is no longer waiting to load.
    virtual bool ChangePriority(CLoadTask* pTask, int32_t iPriority) = 0;
    // Main thread: completes finished tasks, then fails failed ones, until iMaxMilliseconds
    // have passed since the call began. At least one task of each queue is handled per call
    // when there are any, so the budget can be overrun by one task's stage.
    virtual void Tick(int32_t iMaxMilliseconds) = 0;
    // Main thread: returns once every submitted task has left the loader, ticking as tasks
    // finish.
    virtual void WaitForAll() = 0;

protected:
    IAsyncLoader() = default;
    IAsyncLoader(const IAsyncLoader&) = delete;
    IAsyncLoader& operator=(const IAsyncLoader&) = delete;
};

class CAsyncLoader;

// The thread that reads: runs the loader's load loop until told to quit.
class CLoadThread final : public CThread
{
public:
    explicit CLoadThread(CAsyncLoader* pLoader) : m_pLoader(pLoader) {}
    ~CLoadThread() override { Join(); }
    void Run() override;

    CAsyncLoader* m_pLoader;
    std::atomic<uint8_t> m_uQuit{0};
};

// The thread that prepares: runs the loader's preprocess loop until told to quit.
class CPreprocessThread final : public CThread
{
public:
    explicit CPreprocessThread(CAsyncLoader* pLoader) : m_pLoader(pLoader) {}
    ~CPreprocessThread() override { Join(); }
    void Run() override;

    CAsyncLoader* m_pLoader;
    std::atomic<uint8_t> m_uQuit{0};
};

class CAsyncLoader final : public IAsyncLoader
{
public:
    // Where a task stands; the values are those of the loader's state map.
    enum ETaskState : int32_t
    {
        STATE_NONE = 0, // not in the loader
        STATE_CANCELLED = 1,
        STATE_LOAD_QUEUE = 2,
        STATE_LOADING = 3,
        STATE_PREPROCESS_QUEUE = 4,
        STATE_PREPROCESSING = 5,
        STATE_COMPLETION_QUEUE = 6,
        STATE_COMPLETING = 7,
        STATE_FAILURE_QUEUE = 8,
        STATE_FAILING = 9,
    };
    // Why a thread goes idle.
    enum EIdle
    {
        IDLE_LOAD_FULL,  // bytes in flight have reached the limit
        IDLE_LOAD_EMPTY, // no task waits to load
        IDLE_PREPROCESS_EMPTY,
    };
    using IdleHook = std::function<void(EIdle eReason)>;

    static constexpr uint64_t MAX_BYTES_IN_FLIGHT = 0x200000;
    static constexpr int32_t IDLE_MILLISECONDS = 50;

    // pClock null reads the process clock (GUtGetClock) in Tick.
    explicit CAsyncLoader(IGUtClock* pClock = nullptr);
    ~CAsyncLoader() override;

    // Stores the flag; when true starts both threads.
    void Start(bool bEnabled);
    // Clears the flag, stops and joins both threads, then gives every task still queued its
    // Fail (cancelled ones excepted) and destroys it. Submit runs synchronously afterwards.
    void Stop();

    void Submit(CLoadTask* pTask) override;
    void Cancel(CLoadTask* pTask) override;
    bool IsPending(CLoadTask* pTask) override;
    bool ChangePriority(CLoadTask* pTask, int32_t iPriority) override;
    void Tick(int32_t iMaxMilliseconds) override;
    void WaitForAll() override;

    bool IsEnabled();
    ETaskState GetState(const CLoadTask* pTask);
    uint64_t GetBytesInFlight();
    // Idle threads and WaitForAll wait up to this long for work before looking again;
    // new work wakes them at once.
    void SetIdleMilliseconds(int32_t iMilliseconds) { m_iIdleMilliseconds = iMilliseconds; }
    // Called on a loader thread each time it goes idle; set before Start.
    void SetIdleHook(IdleHook hook) { m_idleHook = std::move(hook); }

private:
    friend class CLoadThread;
    friend class CPreprocessThread;

    struct STaskEntry
    {
        ETaskState eState = STATE_NONE;
        uint32_t uCountedBytes = 0; // added to bytesInFlight and not yet taken off
    };
    using TaskQueue = std::deque<CLoadTask*>;

    // One pass of each thread's loop; false when it found nothing to do.
    bool _LoadOne();
    bool _PreprocessOne();
    void _Idle(EIdle eReason, GUtEvent& wake);
    // Pops the front of a main-thread queue and runs its stage; false when it was empty.
    bool _FinishOne(TaskQueue& queue, bool bComplete);
    // Under the lock: forgets a task and takes its counted bytes off. The caller destroys it.
    void _Forget(CLoadTask* pTask);
    // Under the lock: moves a task popped from a queue on to its stage; a task whose state
    // changed meanwhile (cancelled) is forgotten instead, and false tells to destroy it.
    bool _Advance(CLoadTask* pTask, ETaskState eFrom, ETaskState eTo);
    // Outside the lock: destroys a forgotten task and wakes whoever waits for room or an end.
    void _Destroy(CLoadTask* pTask);
    static void _RunNow(CLoadTask* pTask);
    TaskQueue& _LoadQueueFor(int32_t iPriority);
    static bool _Remove(TaskQueue& queue, CLoadTask* pTask);

    GUtCriticalSection m_lock;
    CLoadThread m_loadThread{this};
    CPreprocessThread m_preprocessThread{this};
    TaskQueue m_aLoadQueues[3]; // popped from 0 first
    TaskQueue m_preprocessQueue;
    TaskQueue m_completionQueue;
    TaskQueue m_failureQueue;
    std::unordered_map<const CLoadTask*, STaskEntry> m_states;
    uint64_t m_uBytesInFlight = 0;
    uint64_t m_uMaxBytesInFlight = MAX_BYTES_IN_FLIGHT;
    uint8_t m_uEnabled = 0;

    IGUtClock* m_pClock;
    std::atomic<int32_t> m_iIdleMilliseconds{IDLE_MILLISECONDS};
    IdleHook m_idleHook;
    // Wakes: the load thread (new task, bytes freed), the preprocess thread (task loaded),
    // and WaitForAll (a task reached a main-thread queue or was destroyed).
    GUtEvent m_loadWake;
    GUtEvent m_preprocessWake;
    GUtEvent m_mainWake;
};

// The one loader of the process; null when none is installed.
CAsyncLoader* GetAsyncLoader();
void SetAsyncLoader(CAsyncLoader* pLoader);

} // namespace Kestrin::Utility
