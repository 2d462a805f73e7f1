#include "Utils/Utility/GUtOutputDebuger.h"

#include "Utils/Utility/GUtDebug.h"

#include <string>

COutputDebugerPC& COutputDebugerPC::Get()
{
    // Never destroyed, so that static destructors may still print.
    static COutputDebugerPC* s_pOutput = new COutputDebugerPC();
    return *s_pOutput;
}

void COutputDebugerPC::Print(const char* pcText)
{
    std::string line(pcText ? pcText : "");
    line += '\n';
    GUtCriticalSectionLock lock(m_lock);
    GUtOutputDebugString(line.c_str());
    if (m_pStream)
    {
        fputs(line.c_str(), m_pStream);
        fflush(m_pStream);
    }
}

void COutputDebugerPC::SetStream(FILE* pStream)
{
    GUtCriticalSectionLock lock(m_lock);
    m_pStream = pStream;
}
