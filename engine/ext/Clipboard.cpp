#include "engine/ext/Clipboard.h"

#include <atomic>

namespace Kestrin::Ext
{

namespace
{
CMemoryClipboard& MemoryClipboard()
{
    static CMemoryClipboard* s_pClipboard = new CMemoryClipboard();
    return *s_pClipboard;
}
std::atomic<IClipboard*> g_pClipboard{nullptr};
} // namespace

void CMemoryClipboard::SetText(const std::string& strText)
{
    GUtCriticalSectionLock lock(m_lock);
    m_strText = strText;
}

std::string CMemoryClipboard::GetText()
{
    GUtCriticalSectionLock lock(m_lock);
    return m_strText;
}

IClipboard* GetClipboard()
{
    IClipboard* pClipboard = g_pClipboard.load();
    return pClipboard ? pClipboard : &MemoryClipboard();
}

void SetClipboard(IClipboard* pClipboard)
{
    g_pClipboard.store(pClipboard);
}

} // namespace Kestrin::Ext
