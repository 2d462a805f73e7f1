#include "app/AppOutput.h"

#include "Utils/Utility/GUtDebug.h"
#include "app/EditorApp.h"

#include <cstdio>
#include <cstdlib>

namespace Ovrel
{

void CAppSystemOutput::Print(int iLevel, const char* pcText)
{
    if (!pcText)
    {
        return;
    }
    // Standard output stands where the debugger's output window stood.
    fputs(pcText, iLevel >= 1 ? stderr : stdout);
    Kestrin::Ext::CConsole* pConsole = m_pApp ? m_pApp->GetConsole() : nullptr;
    if (pConsole)
    {
        pConsole->Print(iLevel <= 0 ? COLOUR_NORMAL : iLevel == 1 ? COLOUR_WARNING : COLOUR_FATAL, pcText);
    }
    if (iLevel >= 1)
    {
        GUtShowMessageBox("", pcText);
    }
    if (iLevel >= 2)
    {
        fflush(nullptr);
        abort(); // the crash path keeps a dump of the state that led here
    }
}

void CAppConsoleCallback::OnCommand(const char* pcLine)
{
    if (m_pApp)
    {
        m_pApp->ExecuteConsoleLine(pcLine);
    }
}

} // namespace Ovrel
