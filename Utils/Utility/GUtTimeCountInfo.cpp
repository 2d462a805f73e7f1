#include "Utils/Utility/GUtTimeCountInfo.h"

#include "Utils/Utility/GUtDebug.h"

#include <algorithm>
#include <cmath>
#include <unistd.h>

std::atomic<int32_t> GUtTimeCountManager::m_iRegisterIDCounter{0};

namespace
{
std::atomic<bool> g_bEnabled{false};
std::atomic<bool> g_bTolerant{true};
std::atomic<bool> g_bHighResolution{true};
// Guards the step from "new" to an identifier, which two threads may take at once.
GUtCriticalSection g_registerLock;
} // namespace

// ---------------------------------------------------------------------------------------
// GUtTimeCountSection

GUtTimeCountSection::GUtTimeCountSection()
{
    m_stack.push_back(GUtTimeCountBase::ID_NEW);
}

void GUtTimeCountSection::Disable(const char* pcName)
{
    GUtCriticalSectionLock lock(m_lock);
    m_disabled.emplace_back(pcName ? pcName : "");
}

void GUtTimeCountSection::ResetAll()
{
    GUtCriticalSectionLock lock(m_lock);
    for (GUtTimeCountRecord& record : m_records)
    {
        record.m_bResetPending = true;
    }
}

double GUtTimeCountSection::_ElapsedMs(const GUtTimeCountRecord& record) const
{
    if (record.m_pHighResTimer)
    {
        return record.m_pHighResTimer->Elapsed();
    }
    return record.m_pLowResTimer ? std::floor(record.m_pLowResTimer->Elapsed()) : 0.0;
}

const char* GUtTimeCountSection::_Name(int32_t iID) const
{
    if (iID >= 0 && iID < static_cast<int32_t>(m_records.size()))
    {
        return m_records[static_cast<size_t>(iID)].m_strName.c_str();
    }
    return "";
}

void GUtTimeCountSection::_Register(int32_t iID, const char* pcName)
{
    if (static_cast<int32_t>(m_records.size()) <= iID)
    {
        m_records.resize(static_cast<size_t>(iID) + 1);
    }
    GUtTimeCountRecord& record = m_records[static_cast<size_t>(iID)];
    if (record.m_strName.IsEmpty())
    {
        record.m_strName = pcName ? pcName : "";
    }
    if (!record.m_pLowResTimer && !record.m_pHighResTimer)
    {
        (GUtTimeCountManager::IsHighResolution() ? record.m_pHighResTimer : record.m_pLowResTimer) =
            std::make_unique<GUtTimer>(GUtTimer::UNIT_MILLISECONDS);
    }
    const int32_t iTop = m_stack.back();
    GUtTimeCountTreeNode* pParent = iTop < 0 ? &m_root : m_records[static_cast<size_t>(iTop)].m_pTreeNode;
    auto pNode = std::make_unique<GUtTimeCountTreeNode>();
    pNode->m_iDataIdx = iID;
    pNode->m_pParent = pParent;
    record.m_pTreeNode = pNode.get();
    pParent->m_children.push_back(std::move(pNode));
    m_stack.push_back(iID);
    ++m_iNodeCount;
}

void GUtTimeCountSection::Enter(GUtTimeCountId& riID, const char* pcName)
{
    GUtCriticalSectionLock lock(m_lock);
    int32_t iID = riID.load(std::memory_order_acquire);
    if (iID == GUtTimeCountBase::ID_DISABLED)
    {
        return;
    }
    if (iID < 0)
    {
        const char* pcKey = pcName ? pcName : "";
        if (std::find(m_disabled.begin(), m_disabled.end(), GUtString(pcKey)) != m_disabled.end())
        {
            riID.store(GUtTimeCountBase::ID_DISABLED, std::memory_order_release);
            return;
        }
        iID = GUtTimeCountManager::TakeId(riID);
        _Register(iID, pcName);
    }
    else if (iID >= static_cast<int32_t>(m_records.size()) ||
             !m_records[static_cast<size_t>(iID)].m_pTreeNode)
    {
        // Registered by another thread: new to this one.
        _Register(iID, pcName);
    }
    else
    {
        m_stack.push_back(iID);
    }
    GUtTimeCountRecord& record = m_records[static_cast<size_t>(iID)];
    if (record.m_iDepth == 0)
    {
        (record.m_pHighResTimer ? record.m_pHighResTimer : record.m_pLowResTimer)->Start();
        if (record.m_bResetPending)
        {
            record.m_dTotal = record.m_dLongest = record.m_dGrandTotal = 0.0;
            record.m_iCount = 1;
            record.m_bResetPending = false;
        }
        else
        {
            ++record.m_iCount;
        }
    }
    else
    {
        ++record.m_iCount;
    }
    ++record.m_iDepth;
    record.m_iDeepest = std::max(record.m_iDeepest, record.m_iDepth);
}

void GUtTimeCountSection::_Close(GUtTimeCountRecord& record)
{
    if (record.m_iDepth <= 0)
    {
        return;
    }
    if (--record.m_iDepth > 0)
    {
        return;
    }
    double dTime = _ElapsedMs(record);
    record.m_dTotal += dTime;
    record.m_dGrandTotal += dTime;
    // A recursive section's outermost time spreads over its depth.
    if (record.m_iDeepest > 1)
    {
        dTime /= record.m_iDeepest;
    }
    record.m_dLongest = std::max(record.m_dLongest, dTime);
}

void GUtTimeCountSection::Leave(const GUtTimeCountId& riID)
{
    const int32_t iID = riID.load(std::memory_order_acquire);
    if (iID < 0)
    {
        return;
    }
    GUtCriticalSectionLock lock(m_lock);
    if (iID >= static_cast<int32_t>(m_records.size()))
    {
        return;
    }
    _Close(m_records[static_cast<size_t>(iID)]);
    if (m_stack.size() < 2)
    {
        return;
    }
    if (m_stack.back() == iID)
    {
        m_stack.pop_back();
        return;
    }
    GUtLog::Get().DisplayMsg(true, 1, "GUtTimeCountSection::Leave() error!",
                             "Leave point(%s) is not match to the current stack(%s), maybe caused by "
                             "TIME_COUNT_SECTION_BEGIN() / TIME_COUNT_SECTION_END not match",
                             _Name(iID), _Name(m_stack.back()));
    if (GUtTimeCountManager::IsTolerant())
    {
        while (m_stack.size() > 1 && m_stack.back() != iID)
        {
            _Close(m_records[static_cast<size_t>(m_stack.back())]);
            m_stack.pop_back();
        }
    }
    else
    {
        const GUtTimeCountTreeNode* pCurLayerTreeNode =
            m_records[static_cast<size_t>(m_stack.back())].m_pTreeNode;
        GUT_ASSERT(iID == pCurLayerTreeNode->m_iDataIdx);
    }
    if (m_stack.size() > 1)
    {
        m_stack.pop_back();
    }
}

bool GUtTimeCountSection::GetStats(int32_t iID, GUtTimeCountStats& out)
{
    GUtCriticalSectionLock lock(m_lock);
    if (iID < 0 || iID >= static_cast<int32_t>(m_records.size()) ||
        !m_records[static_cast<size_t>(iID)].m_pTreeNode)
    {
        return false;
    }
    const GUtTimeCountRecord& record = m_records[static_cast<size_t>(iID)];
    out.strName = record.m_strName;
    out.dTotal = record.m_dTotal;
    out.dLongest = record.m_dLongest;
    out.dGrandTotal = record.m_dGrandTotal;
    out.iCount = record.m_iCount;
    out.iDepth = record.m_iDepth;
    out.iDeepest = record.m_iDeepest;
    out.iParentId = record.m_pTreeNode->m_pParent->m_iDataIdx;
    return true;
}

int32_t GUtTimeCountSection::GetStackSize()
{
    GUtCriticalSectionLock lock(m_lock);
    return static_cast<int32_t>(m_stack.size()) - 1;
}

int32_t GUtTimeCountSection::GetNodeCount()
{
    GUtCriticalSectionLock lock(m_lock);
    return m_iNodeCount;
}

void GUtTimeCountSection::_DumpNode(const GUtTimeCountTreeNode& node, int iIndent, GUtString& out)
{
    for (const std::unique_ptr<GUtTimeCountTreeNode>& pChild : node.m_children)
    {
        const GUtTimeCountRecord& record = m_records[static_cast<size_t>(pChild->m_iDataIdx)];
        for (int i = 0; i < iIndent; ++i)
        {
            out += "  ";
        }
        out.AppendFormat("%s: total %.3f ms, calls %d, longest %.3f ms\n", record.m_strName.c_str(),
                         record.m_dTotal, record.m_iCount, record.m_dLongest);
        _DumpNode(*pChild, iIndent + 1, out);
    }
}

GUtString GUtTimeCountSection::Dump()
{
    GUtCriticalSectionLock lock(m_lock);
    GUtString out;
    _DumpNode(m_root, 0, out);
    return out;
}

// ---------------------------------------------------------------------------------------
// GUtTimeCountManager

GUtTimeCountManager& GUtTimeCountManager::Get()
{
    // Never destroyed: threads keep pointers to their sections.
    static GUtTimeCountManager* s_pManager = new GUtTimeCountManager();
    return *s_pManager;
}

GUtTimeCountSection& GUtTimeCountManager::CurrentSection()
{
    thread_local GUtTimeCountSection* t_pSection = nullptr;
    if (!t_pSection)
    {
        GUtCriticalSectionLock lock(m_lock);
        std::unique_ptr<GUtTimeCountSection>& pSection = m_sections[static_cast<uint64_t>(gettid())];
        if (!pSection)
        {
            pSection = std::make_unique<GUtTimeCountSection>();
            for (const GUtString& name : m_disabled)
            {
                pSection->Disable(name.c_str());
            }
        }
        t_pSection = pSection.get();
    }
    return *t_pSection;
}

void GUtTimeCountManager::DisableName(const char* pcName)
{
    GUtCriticalSectionLock lock(m_lock);
    m_disabled.emplace_back(pcName ? pcName : "");
    for (auto& entry : m_sections)
    {
        entry.second->Disable(pcName);
    }
}

void GUtTimeCountManager::ResetAll()
{
    GUtCriticalSectionLock lock(m_lock);
    for (auto& entry : m_sections)
    {
        entry.second->ResetAll();
    }
}

void GUtTimeCountManager::Report()
{
    GUtCriticalSectionLock lock(m_lock);
    for (auto& entry : m_sections)
    {
        GUtString tree = entry.second->Dump();
        GUtLog::Get().DisplayMsg(false, 4, "GUtTimeCount", "thread %llu\n%s",
                                 static_cast<unsigned long long>(entry.first), tree.c_str());
    }
}

void GUtTimeCountManager::SetEnabled(bool bEnabled)
{
    g_bEnabled.store(bEnabled);
}

bool GUtTimeCountManager::IsEnabled()
{
    return g_bEnabled.load(std::memory_order_relaxed);
}

void GUtTimeCountManager::SetTolerant(bool bTolerant)
{
    g_bTolerant.store(bTolerant);
}

bool GUtTimeCountManager::IsTolerant()
{
    return g_bTolerant.load();
}

void GUtTimeCountManager::SetHighResolution(bool bHigh)
{
    g_bHighResolution.store(bHigh);
}

bool GUtTimeCountManager::IsHighResolution()
{
    return g_bHighResolution.load();
}

int32_t GUtTimeCountManager::TakeId(GUtTimeCountId& riID)
{
    GUtCriticalSectionLock lock(g_registerLock);
    int32_t iID = riID.load(std::memory_order_acquire);
    if (iID >= 0)
    {
        return iID;
    }
    GUT_ASSERT(GUtTimeCountManager::m_iRegisterIDCounter < GUtTimeCountBase::TIMECOUNTID_MAXSIZE);
    iID = m_iRegisterIDCounter++;
    riID.store(iID, std::memory_order_release);
    return iID;
}
