#include "app/CrashHandler.h"

#include "app/Revision.h"

#include <cerrno>
#include <csignal>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <ctime>
#include <exception>
#include <execinfo.h>
#include <fcntl.h>
#include <ucontext.h>
#include <unistd.h>

namespace Ovrel
{

namespace
{
constexpr int FATAL_SIGNALS[] = {SIGSEGV, SIGABRT, SIGFPE, SIGBUS, SIGILL};
constexpr size_t ALT_STACK_SIZE = 64 * 1024;

// Filled at installation: a handler reads no files and allocates nothing.
char g_acBaseName[DUMP_NAME_LENGTH] = "Editor";
char g_acRevision[64] = "";
const char* volatile g_pcReason = nullptr;
volatile sig_atomic_t g_iHandling = 0;

const char* SignalName(int iSignal)
{
    switch (iSignal)
    {
        case SIGSEGV:
            return "SIGSEGV";
        case SIGABRT:
            return "SIGABRT";
        case SIGFPE:
            return "SIGFPE";
        case SIGBUS:
            return "SIGBUS";
        case SIGILL:
            return "SIGILL";
        default:
            return "signal";
    }
}

void WriteText(int iFile, const char* pcText)
{
    size_t uLeft = strlen(pcText);
    while (uLeft > 0)
    {
        const ssize_t iWritten = write(iFile, pcText, uLeft);
        if (iWritten <= 0)
        {
            if (iWritten < 0 && errno == EINTR)
            {
                continue;
            }
            return;
        }
        pcText += iWritten;
        uLeft -= static_cast<size_t>(iWritten);
    }
}

void WriteRegisters(int iFile, const void* pContext)
{
    char acLine[128];
#if defined(__x86_64__)
    const ucontext_t* pUc = static_cast<const ucontext_t*>(pContext);
    static const struct
    {
        const char* pcName;
        int iIndex;
    } s_aRegisters[] = {{"rip", REG_RIP}, {"rsp", REG_RSP}, {"rbp", REG_RBP}, {"rax", REG_RAX},
                        {"rbx", REG_RBX}, {"rcx", REG_RCX}, {"rdx", REG_RDX}, {"rsi", REG_RSI},
                        {"rdi", REG_RDI}, {"r8", REG_R8},   {"r9", REG_R9},   {"r10", REG_R10},
                        {"r11", REG_R11}, {"r12", REG_R12}, {"r13", REG_R13}, {"r14", REG_R14},
                        {"r15", REG_R15}, {"efl", REG_EFL}};
    for (const auto& reg : s_aRegisters)
    {
        snprintf(acLine, sizeof(acLine), "%s 0x%016llx\n", reg.pcName,
                 static_cast<unsigned long long>(pUc->uc_mcontext.gregs[reg.iIndex]));
        WriteText(iFile, acLine);
    }
#elif defined(__aarch64__)
    const ucontext_t* pUc = static_cast<const ucontext_t*>(pContext);
    for (int i = 0; i < 31; ++i)
    {
        snprintf(acLine, sizeof(acLine), "x%d 0x%016llx\n", i,
                 static_cast<unsigned long long>(pUc->uc_mcontext.regs[i]));
        WriteText(iFile, acLine);
    }
    snprintf(acLine, sizeof(acLine), "sp 0x%016llx\npc 0x%016llx\n",
             static_cast<unsigned long long>(pUc->uc_mcontext.sp),
             static_cast<unsigned long long>(pUc->uc_mcontext.pc));
    WriteText(iFile, acLine);
#else
    (void)pContext;
    WriteText(iFile, "(registers not read on this processor)\n");
#endif
}

void WriteDump(int iSignal, const siginfo_t* pInfo, const void* pContext)
{
    char acName[DUMP_NAME_LENGTH];
    GUtLocalTime now;
    const time_t tNow = time(nullptr);
    struct tm local;
    const bool bKnown = localtime_r(&tNow, &local) != nullptr;
    if (bKnown)
    {
        now.iYear = local.tm_year + 1900;
        now.iMonth = local.tm_mon + 1;
        now.iDay = local.tm_mday;
        now.iHour = local.tm_hour;
        now.iMinute = local.tm_min;
        now.iSecond = local.tm_sec;
    }
    FormatDumpName(g_acBaseName, g_acRevision, bKnown ? &now : nullptr, acName, sizeof(acName));
    const int iFile = open(acName, O_WRONLY | O_CREAT | O_TRUNC, 0644);
    if (iFile < 0)
    {
        return;
    }
    char acLine[256];
    snprintf(acLine, sizeof(acLine), "%s crashed\nsignal %d (%s) code %d address %p\n", g_acBaseName, iSignal,
             SignalName(iSignal), pInfo ? pInfo->si_code : 0, pInfo ? pInfo->si_addr : nullptr);
    WriteText(iFile, acLine);
    if (g_pcReason)
    {
        WriteText(iFile, "reason ");
        WriteText(iFile, g_pcReason);
        WriteText(iFile, "\n");
    }
    snprintf(acLine, sizeof(acLine), "revision %s\n\nstack\n", g_acRevision[0] ? g_acRevision : "(none)");
    WriteText(iFile, acLine);
    void* apFrames[64];
    const int iFrames = backtrace(apFrames, 64);
    backtrace_symbols_fd(apFrames, iFrames, iFile);
    WriteText(iFile, "\nregisters\n");
    if (pContext)
    {
        WriteRegisters(iFile, pContext);
    }
    close(iFile);
}

void OnFatalSignal(int iSignal, siginfo_t* pInfo, void* pContext)
{
    if (g_iHandling == 0)
    {
        g_iHandling = 1;
        WriteDump(iSignal, pInfo, pContext);
        fprintf(stderr, "fatal %s: dump written\n", SignalName(iSignal));
    }
    // Let the system's action end the process with this signal.
    signal(iSignal, SIG_DFL);
    raise(iSignal);
}

void OnTerminate()
{
    g_pcReason = "std::terminate";
    abort(); // SIGABRT takes the crash path
}
} // namespace

void DumpBaseName(const char* pcExecutablePath, char* pcOut, size_t uOutSize)
{
    const char* pcStart = pcExecutablePath ? strrchr(pcExecutablePath, '/') : nullptr;
    pcStart = pcStart ? pcStart + 1 : (pcExecutablePath ? pcExecutablePath : "");
    const char* pcDot = strrchr(pcStart, '.');
    const size_t uLength = pcDot && pcDot != pcStart ? static_cast<size_t>(pcDot - pcStart) : strlen(pcStart);
    snprintf(pcOut, uOutSize, "%.*s", static_cast<int>(uLength), pcStart);
}

void FormatDumpName(const char* pcBaseName, const char* pcRevision, const GUtLocalTime* pTime, char* pcOut,
                    size_t uOutSize)
{
    const size_t uSize = uOutSize < DUMP_NAME_LENGTH ? uOutSize : DUMP_NAME_LENGTH;
    if (pTime)
    {
        snprintf(pcOut, uSize, "%s_%s_%02d%02d_%02d%02d.dmp", pcBaseName, pcRevision, pTime->iMonth,
                 pTime->iDay, pTime->iHour, pTime->iMinute);
    }
    else
    {
        snprintf(pcOut, uSize, "%s_%s.dmp", pcBaseName, pcRevision);
    }
}

void InstallCrashHandlers(const char* pcExecutablePath)
{
    DumpBaseName(pcExecutablePath, g_acBaseName, sizeof(g_acBaseName));
    // Read here rather than through the process-wide text: a handler installed again (in a test
    // process) sees the folder it runs in now.
    snprintf(g_acRevision, sizeof(g_acRevision), "%s", CRevision::Read(CRevision::FILE_NAME).c_str());
    std::set_terminate(&OnTerminate);
    void* pFrame = nullptr;
    backtrace(&pFrame, 1); // loads the unwinder now: the handler must not

    // A stack of its own, so that a stack overflow still writes its dump.
    static char* s_pcAltStack = static_cast<char*>(malloc(ALT_STACK_SIZE));
    if (s_pcAltStack)
    {
        stack_t stack = {};
        stack.ss_sp = s_pcAltStack;
        stack.ss_size = ALT_STACK_SIZE;
        sigaltstack(&stack, nullptr);
    }
    struct sigaction action = {};
    action.sa_sigaction = &OnFatalSignal;
    action.sa_flags = SA_SIGINFO | SA_ONSTACK;
    sigemptyset(&action.sa_mask);
    for (int iSignal : FATAL_SIGNALS)
    {
        sigaction(iSignal, &action, nullptr);
    }
}

} // namespace Ovrel
