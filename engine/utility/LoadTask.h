// CLoadTask: one resource on its way through the asynchronous loader. Its stages run strictly
// in order, each on its own thread: Load on the load thread (file reading), Preprocess on the
// preprocess thread (CPU work), then Complete on the main thread, where device objects may be
// touched. Fail runs on the main thread after any stage gave false.
//
// The stages never overlap, and the loader hands the task from one thread to the next under
// its lock, so a task's own members need no lock as long as the submitter leaves them alone
// after Submit.
#pragma once

#include "Utils/Utility/GUtString.h"

#include <cstdint>

namespace Kestrin::Utility
{

class IAsyncLoader;

class CLoadTask
{
public:
    // 0 runs the task at once on the submitting thread; 1 loads last, 2 is the default, any
    // other value loads first.
    static constexpr int32_t DEFAULT_PRIORITY = 2;

    CLoadTask() = default;
    explicit CLoadTask(const char* pcName, int32_t iPriority = DEFAULT_PRIORITY)
        : m_strName(pcName), m_iPriority(iPriority)
    {
    }
    virtual ~CLoadTask() = default;
    CLoadTask(const CLoadTask&) = delete;
    CLoadTask& operator=(const CLoadTask&) = delete;

    // Reads the resource's file, on the load thread, and sets m_uSize to the bytes the task
    // now holds. False routes the task to Fail.
    virtual bool Load() { return true; }
    // CPU preparation, on the preprocess thread. False routes the task to Fail.
    virtual bool Preprocess() { return true; }
    // Finishes the resource on the main thread. False routes the task to Fail.
    virtual bool Complete() { return true; }
    // On the main thread, after a stage gave false, or when the loader stops with the task
    // still queued. Never called for a cancelled task.
    virtual void Fail() {}

    const GUtString& GetName() const { return m_strName; }
    uint32_t GetSize() const { return m_uSize; }
    int32_t GetPriority() const { return m_iPriority; }
    // Before Submit only; afterwards use IAsyncLoader::ChangePriority.
    void SetPriority(int32_t iPriority) { m_iPriority = iPriority; }
    // The loader it was submitted to; null before.
    IAsyncLoader* GetLoader() const { return m_pLoader; }

protected:
    GUtString m_strName;
    // The bytes this task holds in memory from load to completion; set by Load.
    uint32_t m_uSize = 0;
    int32_t m_iPriority = DEFAULT_PRIORITY;
    IAsyncLoader* m_pLoader = nullptr;

private:
    friend class CAsyncLoader;
};

} // namespace Kestrin::Utility
