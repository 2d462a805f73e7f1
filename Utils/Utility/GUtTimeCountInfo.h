// GUtTimeCount: a named-section timer. Code marks a section with
//   TIME_COUNT_SECTION_BEGIN(FIND_PACK);
//   ...
//   TIME_COUNT_SECTION_END(FIND_PACK);
// Each place gets a static identifier (-1 until its first Enter, -2 when its name is
// disabled). Every thread has a section of its own: records indexed by identifier, a call
// stack and a tree of call layers, so that nested sections show who called whom.
//
// Threads: each section has its own lock; identifiers come from one process-wide counter.
// Switch the profiler on or off between frames, not inside a section.
#pragma once

#include "Utils/Utility/GUtLock.h"
#include "Utils/Utility/GUtString.h"
#include "Utils/Utility/GUtTimer.h"

#include <atomic>
#include <cstdint>
#include <deque>
#include <map>
#include <memory>
#include <vector>

// A map that owns its values.
template <class TKey, class TValue>
using GUtSTLPtrMap = std::map<TKey, std::unique_ptr<TValue>>;

// The identifier a place keeps in a static.
using GUtTimeCountId = std::atomic<int32_t>;

class GUtTimeCountBase
{
public:
    static constexpr int32_t TIMECOUNTID_MAXSIZE = 1000;
    static constexpr int32_t ID_NEW = -1;
    static constexpr int32_t ID_DISABLED = -2;
};

// One layer of the call tree: the record it stands for and the layers called from it.
struct GUtTimeCountTreeNode
{
    int32_t m_iDataIdx = GUtTimeCountBase::ID_NEW; // the root has none
    GUtTimeCountTreeNode* m_pParent = nullptr;
    std::vector<std::unique_ptr<GUtTimeCountTreeNode>> m_children;
};

// What a section knows of one identifier. Times are in milliseconds.
struct GUtTimeCountRecord
{
    // One of the two exists, by GUtTimeCountManager::SetHighResolution at registration.
    // The low-resolution one counts whole milliseconds.
    std::unique_ptr<GUtTimer> m_pLowResTimer;
    std::unique_ptr<GUtTimer> m_pHighResTimer;
    GUtString m_strName;
    GUtTimeCountTreeNode* m_pTreeNode = nullptr;
    double m_dTotal = 0.0;
    double m_dLongest = 0.0;
    double m_dGrandTotal = 0.0;
    int32_t m_iCount = 0;
    int32_t m_iDepth = 0;
    int32_t m_iDeepest = 0;
    bool m_bResetPending = false;
};

// A copy of a record's figures.
struct GUtTimeCountStats
{
    GUtString strName;
    double dTotal = 0.0;
    double dLongest = 0.0;
    double dGrandTotal = 0.0;
    int32_t iCount = 0;
    int32_t iDepth = 0;
    int32_t iDeepest = 0;
    int32_t iParentId = GUtTimeCountBase::ID_NEW; // the layer it was first entered from
};

class GUtTimeCountSection
{
public:
    GUtTimeCountSection();
    virtual ~GUtTimeCountSection() = default;
    GUtTimeCountSection(const GUtTimeCountSection&) = delete;
    GUtTimeCountSection& operator=(const GUtTimeCountSection&) = delete;

    // Starts timing riID (registering it on first use, under pcName).
    void Enter(GUtTimeCountId& riID, const char* pcName);
    // Stops timing riID. A Leave that doesn't match the top of the stack is reported; in
    // tolerant mode the stack is unwound down to riID, else the process asserts.
    void Leave(const GUtTimeCountId& riID);

    // Places whose name is on the list get the identifier -2 on their first Enter.
    void Disable(const char* pcName);
    // Every record starts afresh on its next outermost Enter.
    void ResetAll();

    // False when riID has no record here.
    bool GetStats(int32_t iID, GUtTimeCountStats& out);
    // Entries on the call stack above its root.
    int32_t GetStackSize();
    int32_t GetNodeCount();
    // The call tree, one line per layer: indent, name, total, calls, longest.
    GUtString Dump();

private:
    void _Register(int32_t iID, const char* pcName);
    void _Close(GUtTimeCountRecord& record);
    double _ElapsedMs(const GUtTimeCountRecord& record) const;
    const char* _Name(int32_t iID) const;
    void _DumpNode(const GUtTimeCountTreeNode& node, int iIndent, GUtString& out);

    GUtCriticalSection m_lock;
    std::vector<GUtTimeCountRecord> m_records;
    std::deque<int32_t> m_stack; // bottom: the root layer's -1
    GUtTimeCountTreeNode m_root;
    int32_t m_iNodeCount = 0;
    std::vector<GUtString> m_disabled;
};

class GUtTimeCountManager
{
public:
    // The next identifier; below TIMECOUNTID_MAXSIZE.
    static std::atomic<int32_t> m_iRegisterIDCounter;

    static GUtTimeCountManager& Get();

    // The calling thread's section, created on first use.
    GUtTimeCountSection& CurrentSection();
    // Disables a name in every section, present and future.
    void DisableName(const char* pcName);
    void ResetAll();
    // Every section's tree, through the log at level 4.
    void Report();

    // Whether the macros time anything (off at start).
    static void SetEnabled(bool bEnabled);
    static bool IsEnabled();
    // Whether a mismatched Leave unwinds the stack (on at start) or asserts.
    static void SetTolerant(bool bTolerant);
    static bool IsTolerant();
    // Which timer new records get: high resolution (on at start) or whole milliseconds.
    static void SetHighResolution(bool bHigh);
    static bool IsHighResolution();
    // Gives riID the next identifier unless another thread already did; returns it.
    static int32_t TakeId(GUtTimeCountId& riID);

private:
    GUtCriticalSection m_lock;
    GUtSTLPtrMap<uint64_t, GUtTimeCountSection> m_sections;
    std::vector<GUtString> m_disabled;
};

inline void GUtTimeCountEnter(GUtTimeCountId& riID, const char* pcName)
{
    if (GUtTimeCountManager::IsEnabled())
    {
        GUtTimeCountManager::Get().CurrentSection().Enter(riID, pcName);
    }
}

inline void GUtTimeCountLeave(const GUtTimeCountId& riID)
{
    if (GUtTimeCountManager::IsEnabled())
    {
        GUtTimeCountManager::Get().CurrentSection().Leave(riID);
    }
}

#define TIME_COUNT_SECTION_BEGIN(NAME)                                                                       \
    static GUtTimeCountId s_timeCountId_##NAME{GUtTimeCountBase::ID_NEW};                                    \
    GUtTimeCountEnter(s_timeCountId_##NAME, #NAME)
#define TIME_COUNT_SECTION_END(NAME) GUtTimeCountLeave(s_timeCountId_##NAME)
