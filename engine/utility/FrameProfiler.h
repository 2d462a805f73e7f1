// The frame profiler behind the in-game graph. Code marks a region once per place:
//   KESTRIN_PROFILE_SCOPE("Update");
// and every pass through it during a frame becomes a section (start, end, thread, depth).
// The frame loop copies the regions' totals and the sections after each frame, then calls
// ResetFrame, which also starts the recording.
//
// Threads: one lock guards both arrays and is taken for each Enter and Leave; the
// recording flag is read without it. Depth is counted per thread, by the low 8 bits of the
// thread id.
#pragma once

#include "Utils/Utility/GUtLock.h"

#include <atomic>
#include <cstdint>
#include <vector>

namespace Kestrin::Utility
{

struct CProfileRegion
{
    const char* pcName = ""; // static text
    double dTotalMs = 0.0;
    int32_t iCount = 0;
    int32_t iFirstSection = -1; // of this frame; -1: none
    int32_t iLastSection = -1;
    uint32_t uFlags = 0; // display flags of the graph
};

struct CProfileSection
{
    double dStartMs = 0.0;
    double dEndMs = -1.0; // -1 while open
    uint32_t uThreadId = 0;
    uint16_t uDepth = 0;
    uint16_t uRegion = 0;
};

class CFrameProfiler
{
public:
    static constexpr int DEPTH_COUNTERS = 256;

    // The process-wide profiler.
    static CFrameProfiler& Get();

    CFrameProfiler();
    virtual ~CFrameProfiler() = default;
    CFrameProfiler(const CFrameProfiler&) = delete;
    CFrameProfiler& operator=(const CFrameProfiler&) = delete;

    // Adds a region; call once per place and keep the index (at most 65536 regions).
    uint16_t RegisterRegion(const char* pcName);
    // Opens a section of the region at the clock's time; returns its index, 0 while not
    // recording.
    int32_t Enter(uint16_t uRegion);
    // Closes a section and adds its time to its region. Ignored while not recording, and
    // for an index that is not an open section of this frame.
    void Leave(int32_t iSection);
    // Starts the recording and begins a new frame: no sections, depths 0, regions cleared
    // (their names and flags stay).
    void ResetFrame();
    void StopRecording();
    bool IsRecording() const { return m_bRecording.load(std::memory_order_relaxed); }
    void SetRegionFlags(uint16_t uRegion, uint32_t uFlags);

    // Copies of the arrays, taken under the lock.
    std::vector<CProfileRegion> GetRegions() const;
    std::vector<CProfileSection> GetSections() const;

private:
    mutable GUtCriticalSection m_lock;
    std::vector<CProfileRegion> m_regions;
    std::vector<CProfileSection> m_sections;
    uint16_t m_auDepth[DEPTH_COUNTERS];
    std::atomic<bool> m_bRecording{false};
};

// Enters a region for the length of a scope.
class CProfileScope
{
public:
    explicit CProfileScope(uint16_t uRegion, CFrameProfiler& profiler = CFrameProfiler::Get())
        : m_profiler(profiler), m_iSection(profiler.Enter(uRegion))
    {
    }
    ~CProfileScope() { m_profiler.Leave(m_iSection); }
    CProfileScope(const CProfileScope&) = delete;
    CProfileScope& operator=(const CProfileScope&) = delete;

private:
    CFrameProfiler& m_profiler;
    int32_t m_iSection;
};

} // namespace Kestrin::Utility

#define KESTRIN_PROFILE_JOIN2(a, b) a##b
#define KESTRIN_PROFILE_JOIN(a, b) KESTRIN_PROFILE_JOIN2(a, b)
// Profiles the rest of the enclosing scope under pcName (static text).
#define KESTRIN_PROFILE_SCOPE(pcName)                                                                        \
    static const uint16_t KESTRIN_PROFILE_JOIN(s_uProfileRegion, __LINE__) =                                 \
        ::Kestrin::Utility::CFrameProfiler::Get().RegisterRegion(pcName);                                    \
    ::Kestrin::Utility::CProfileScope KESTRIN_PROFILE_JOIN(profileScope, __LINE__)(                          \
        KESTRIN_PROFILE_JOIN(s_uProfileRegion, __LINE__))
