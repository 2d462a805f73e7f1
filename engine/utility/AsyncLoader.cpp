#include "engine/utility/AsyncLoader.h"

#include "Utils/Utility/GUtDebug.h"

#include <algorithm>
#include <vector>

namespace Kestrin::Utility
{

namespace
{
std::atomic<CAsyncLoader*> g_pAsyncLoader{nullptr};
} // namespace

CAsyncLoader* GetAsyncLoader()
{
    return g_pAsyncLoader.load();
}

void SetAsyncLoader(CAsyncLoader* pLoader)
{
    g_pAsyncLoader.store(pLoader);
}

void CLoadThread::Run()
{
    while (m_uQuit.load() == 0)
    {
        m_pLoader->_LoadOne();
    }
}

void CPreprocessThread::Run()
{
    while (m_uQuit.load() == 0)
    {
        m_pLoader->_PreprocessOne();
    }
}

// ---------------------------------------------------------------------------------------
// Life

CAsyncLoader::CAsyncLoader(IGUtClock* pClock) : m_pClock(pClock) {}

CAsyncLoader::~CAsyncLoader()
{
    Stop();
}

void CAsyncLoader::Start(bool bEnabled)
{
    {
        GUtCriticalSectionLock lock(m_lock);
        m_uEnabled = bEnabled ? 1 : 0;
    }
    if (bEnabled)
    {
        m_loadThread.m_uQuit.store(0);
        m_preprocessThread.m_uQuit.store(0);
        m_loadThread.Start();
        m_preprocessThread.Start();
    }
}

void CAsyncLoader::Stop()
{
    {
        GUtCriticalSectionLock lock(m_lock);
        m_uEnabled = 0;
    }
    m_loadThread.m_uQuit.store(1);
    m_preprocessThread.m_uQuit.store(1);
    m_loadWake.Set();
    m_preprocessWake.Set();
    m_loadThread.Join();
    m_preprocessThread.Join();

    // With both threads gone every task left sits in a queue.
    std::vector<std::pair<CLoadTask*, bool>> left; // task, whether it gets Fail
    {
        GUtCriticalSectionLock lock(m_lock);
        for (TaskQueue* pQueue : {&m_aLoadQueues[0], &m_aLoadQueues[1], &m_aLoadQueues[2], &m_preprocessQueue,
                                  &m_completionQueue, &m_failureQueue})
        {
            for (CLoadTask* pTask : *pQueue)
            {
                left.emplace_back(pTask, m_states[pTask].eState != STATE_CANCELLED);
            }
            pQueue->clear();
        }
        m_states.clear();
        m_uBytesInFlight = 0;
    }
    for (auto& [pTask, bFail] : left)
    {
        if (bFail)
        {
            pTask->Fail();
        }
        delete pTask;
    }
}

bool CAsyncLoader::IsEnabled()
{
    GUtCriticalSectionLock lock(m_lock);
    return m_uEnabled != 0;
}

CAsyncLoader::ETaskState CAsyncLoader::GetState(const CLoadTask* pTask)
{
    GUtCriticalSectionLock lock(m_lock);
    auto it = m_states.find(pTask);
    return it == m_states.end() ? STATE_NONE : it->second.eState;
}

uint64_t CAsyncLoader::GetBytesInFlight()
{
    GUtCriticalSectionLock lock(m_lock);
    return m_uBytesInFlight;
}

// ---------------------------------------------------------------------------------------
// Submission, from any thread

CAsyncLoader::TaskQueue& CAsyncLoader::_LoadQueueFor(int32_t iPriority)
{
    // Priority 1 loads last and 2 (the default) in the middle; anything else goes first.
    return m_aLoadQueues[iPriority == 1 ? 2 : (iPriority == 2 ? 1 : 0)];
}

bool CAsyncLoader::_Remove(TaskQueue& queue, CLoadTask* pTask)
{
    auto it = std::find(queue.begin(), queue.end(), pTask);
    if (it == queue.end())
    {
        return false;
    }
    queue.erase(it);
    return true;
}

void CAsyncLoader::_RunNow(CLoadTask* pTask)
{
    if (!(pTask->Load() && pTask->Preprocess() && pTask->Complete()))
    {
        pTask->Fail();
    }
    delete pTask;
}

void CAsyncLoader::Submit(CLoadTask* pTask)
{
    if (!pTask)
    {
        return;
    }
    {
        GUtCriticalSectionLock lock(m_lock);
        GUT_ASSERT(m_states.find(pTask) == m_states.end());
        pTask->m_pLoader = this;
        if (pTask->m_iPriority != 0 && m_uEnabled)
        {
            m_states[pTask] = STaskEntry{STATE_LOAD_QUEUE, 0};
            _LoadQueueFor(pTask->m_iPriority).push_back(pTask);
            m_loadWake.Set();
            return;
        }
    }
    _RunNow(pTask);
}

void CAsyncLoader::Cancel(CLoadTask* pTask)
{
    GUtCriticalSectionLock lock(m_lock);
    auto it = m_states.find(pTask);
    if (it != m_states.end())
    {
        it->second.eState = STATE_CANCELLED;
    }
}

bool CAsyncLoader::IsPending(CLoadTask* pTask)
{
    GUtCriticalSectionLock lock(m_lock);
    return m_states.find(pTask) != m_states.end();
}

bool CAsyncLoader::ChangePriority(CLoadTask* pTask, int32_t iPriority)
{
    if (!pTask)
    {
        return false;
    }
    {
        GUtCriticalSectionLock lock(m_lock);
        auto it = m_states.find(pTask);
        if (it == m_states.end() || it->second.eState != STATE_LOAD_QUEUE || pTask->m_iPriority == iPriority)
        {
            return false;
        }
        const bool bRemoved = _Remove(_LoadQueueFor(pTask->m_iPriority), pTask);
        GUT_ASSERT(bRemoved);
        pTask->m_iPriority = iPriority;
        if (iPriority != 0)
        {
            _LoadQueueFor(iPriority).push_back(pTask);
            m_loadWake.Set();
            return true;
        }
        // Out of every queue and the map, no other thread can reach it: its stages run here
        // without the lock, which is never held during a stage.
        m_states.erase(it);
    }
    _RunNow(pTask);
    m_mainWake.Set();
    return true;
}

// ---------------------------------------------------------------------------------------
// The two threads

void CAsyncLoader::_Idle(EIdle eReason, GUtEvent& wake)
{
    if (m_idleHook)
    {
        m_idleHook(eReason);
    }
    wake.Wait(m_iIdleMilliseconds.load());
}

void CAsyncLoader::_Forget(CLoadTask* pTask)
{
    auto it = m_states.find(pTask);
    GUT_ASSERT(it != m_states.end());
    GUT_ASSERT(m_uBytesInFlight >= it->second.uCountedBytes);
    m_uBytesInFlight -= it->second.uCountedBytes;
    m_states.erase(it);
}

bool CAsyncLoader::_LoadOne()
{
    CLoadTask* pTask = nullptr;
    bool bDrop = false;
    EIdle eIdle = IDLE_LOAD_EMPTY;
    {
        GUtCriticalSectionLock lock(m_lock);
        // Tested before taking a task, so one task larger than the limit still loads.
        TaskQueue* pQueue = nullptr;
        for (TaskQueue& queue : m_aLoadQueues)
        {
            if (!queue.empty())
            {
                pQueue = &queue;
                break;
            }
        }
        if (m_uBytesInFlight >= m_uMaxBytesInFlight)
        {
            eIdle = IDLE_LOAD_FULL;
        }
        else if (pQueue)
        {
            pTask = pQueue->front();
            pQueue->pop_front();
            bDrop = !_Advance(pTask, STATE_LOAD_QUEUE, STATE_LOADING);
        }
    }
    if (!pTask)
    {
        _Idle(eIdle, m_loadWake);
        return false;
    }
    if (!bDrop)
    {
        const bool bLoaded = pTask->Load();
        GUtCriticalSectionLock lock(m_lock);
        STaskEntry& entry = m_states[pTask];
        bDrop = entry.eState != STATE_LOADING;
        if (bDrop)
        {
            _Forget(pTask);
        }
        else if (bLoaded)
        {
            entry.uCountedBytes = pTask->m_uSize;
            m_uBytesInFlight += pTask->m_uSize;
            entry.eState = STATE_PREPROCESS_QUEUE;
            m_preprocessQueue.push_back(pTask);
            m_preprocessWake.Set();
        }
        else
        {
            entry.eState = STATE_FAILURE_QUEUE;
            m_failureQueue.push_back(pTask);
            m_mainWake.Set();
        }
    }
    if (bDrop)
    {
        _Destroy(pTask);
    }
    return true;
}

bool CAsyncLoader::_PreprocessOne()
{
    CLoadTask* pTask = nullptr;
    bool bDrop = false;
    {
        GUtCriticalSectionLock lock(m_lock);
        if (!m_preprocessQueue.empty())
        {
            pTask = m_preprocessQueue.front();
            m_preprocessQueue.pop_front();
            bDrop = !_Advance(pTask, STATE_PREPROCESS_QUEUE, STATE_PREPROCESSING);
        }
    }
    if (!pTask)
    {
        _Idle(IDLE_PREPROCESS_EMPTY, m_preprocessWake);
        return false;
    }
    if (!bDrop)
    {
        const bool bPrepared = pTask->Preprocess();
        GUtCriticalSectionLock lock(m_lock);
        STaskEntry& entry = m_states[pTask];
        bDrop = entry.eState != STATE_PREPROCESSING;
        if (bDrop)
        {
            _Forget(pTask);
        }
        else if (bPrepared)
        {
            entry.eState = STATE_COMPLETION_QUEUE;
            m_completionQueue.push_back(pTask);
            m_mainWake.Set();
        }
        else
        {
            // A failed task holds no prepared data: its bytes stop counting now, and only once.
            m_uBytesInFlight -= entry.uCountedBytes;
            entry.uCountedBytes = 0;
            entry.eState = STATE_FAILURE_QUEUE;
            m_failureQueue.push_back(pTask);
            m_loadWake.Set();
            m_mainWake.Set();
        }
    }
    if (bDrop)
    {
        _Destroy(pTask);
    }
    return true;
}

bool CAsyncLoader::_Advance(CLoadTask* pTask, ETaskState eFrom, ETaskState eTo)
{
    STaskEntry& entry = m_states[pTask];
    if (entry.eState != eFrom)
    {
        _Forget(pTask);
        return false;
    }
    entry.eState = eTo;
    return true;
}

void CAsyncLoader::_Destroy(CLoadTask* pTask)
{
    // Outside the lock: a task's destructor may release resources that take other locks
    // (the device lock), and those are taken before this one elsewhere.
    delete pTask;
    m_loadWake.Set();
    m_mainWake.Set();
}

// ---------------------------------------------------------------------------------------
// The main thread

bool CAsyncLoader::_FinishOne(TaskQueue& queue, bool bComplete)
{
    const ETaskState eQueued = bComplete ? STATE_COMPLETION_QUEUE : STATE_FAILURE_QUEUE;
    const ETaskState eRunning = bComplete ? STATE_COMPLETING : STATE_FAILING;
    CLoadTask* pTask = nullptr;
    bool bRun = false;
    {
        GUtCriticalSectionLock lock(m_lock);
        if (queue.empty())
        {
            return false;
        }
        pTask = queue.front();
        queue.pop_front();
        STaskEntry& entry = m_states[pTask];
        bRun = entry.eState == eQueued;
        if (bRun)
        {
            entry.eState = eRunning;
        }
    }
    if (bRun && bComplete)
    {
        // A Complete that fails routes to Fail, as in the synchronous path, unless the task
        // was cancelled meanwhile.
        if (!pTask->Complete() && GetState(pTask) == STATE_COMPLETING)
        {
            pTask->Fail();
        }
    }
    else if (bRun)
    {
        pTask->Fail();
    }
    {
        GUtCriticalSectionLock lock(m_lock);
        _Forget(pTask);
    }
    _Destroy(pTask);
    return true;
}

void CAsyncLoader::Tick(int32_t iMaxMilliseconds)
{
    IGUtClock& clock = m_pClock ? *m_pClock : GUtGetClock();
    const double dStart = clock.NowMilliseconds();
    // The front is taken before the budget is tested: each queue moves on every tick.
    while (_FinishOne(m_completionQueue, true))
    {
        if (clock.NowMilliseconds() - dStart >= iMaxMilliseconds)
        {
            break;
        }
    }
    while (_FinishOne(m_failureQueue, false))
    {
        if (clock.NowMilliseconds() - dStart >= iMaxMilliseconds)
        {
            break;
        }
    }
}

void CAsyncLoader::WaitForAll()
{
    for (;;)
    {
        bool bFinished = false;
        {
            GUtCriticalSectionLock lock(m_lock);
            if (m_states.empty())
            {
                return;
            }
            bFinished = !m_completionQueue.empty() || !m_failureQueue.empty();
        }
        if (bFinished)
        {
            Tick(100);
        }
        else
        {
            m_mainWake.Wait(m_iIdleMilliseconds.load());
        }
    }
}

} // namespace Kestrin::Utility
