#include "engine/utility/SystemOutput.h"

#include "Utils/Utility/GUtDebug.h"

#include <atomic>
#include <cstdarg>
#include <cstdio>
#include <cstdlib>

namespace Kestrin::Utility
{

namespace
{
CDefaultSystemOutput g_defaultOutput;
std::atomic<ISystemOutput*> g_pOutput{&g_defaultOutput};

void PrintV(int iLevel, const char* pcFormat, va_list args)
{
    char acText[1024];
    if (vsnprintf(acText, sizeof(acText), pcFormat, args) < 0)
    {
        return;
    }
    GetSystemOutput()->Print(iLevel, acText);
}
} // namespace

void CDefaultSystemOutput::Print(int iLevel, const char* pcText)
{
    fputs(pcText, iLevel >= 1 ? stderr : stdout);
    if (iLevel >= 1)
    {
        GUtShowMessageBox("", pcText);
    }
    if (iLevel >= 2)
    {
        fflush(nullptr);
        abort();
    }
}

ISystemOutput* GetSystemOutput()
{
    return g_pOutput.load(std::memory_order_acquire);
}

void SetSystemOutput(ISystemOutput* pOutput)
{
    g_pOutput.store(pOutput ? pOutput : &g_defaultOutput, std::memory_order_release);
}

void Printf(const char* pcFormat, ...)
{
    va_list args;
    va_start(args, pcFormat);
    PrintV(0, pcFormat, args);
    va_end(args);
}

void Warn(const char* pcFormat, ...)
{
    va_list args;
    va_start(args, pcFormat);
    PrintV(1, pcFormat, args);
    va_end(args);
}

} // namespace Kestrin::Utility
