#include "Utils/Utility/GUtPrinterLog.h"

#include "Utils/Utility/GUtDebug.h"
#include "Utils/Utility/GUtTimer.h"

#include <csignal>
#include <cstdio>
#include <cstring>
#include <fcntl.h>
#include <mutex>
#include <new>
#include <random>
#include <syslog.h>
#include <unistd.h>

namespace
{
// The running executable, as /proc tells it.
GUtString ExecutablePath()
{
    char acPath[4096];
    ssize_t iLength = readlink("/proc/self/exe", acPath, sizeof(acPath) - 1);
    if (iLength <= 0)
    {
        return GUtString("editor");
    }
    return GUtString(acPath, static_cast<int>(iLength));
}

// Splits "<folder>/<base>.<ext>" into folder (with its last "/", or "") and base.
void SplitPath(const GUtString& path, GUtString& folder, GUtString& base)
{
    int iSlash = path.ReverseFind('/');
    folder = path.Left(iSlash + 1);
    base = path.Mid(iSlash + 1);
    int iDot = base.ReverseFind('.');
    if (iDot > 0)
    {
        base = base.Left(iDot);
    }
}

// While a file printer reports its own failure, a second failure stays silent.
thread_local bool t_bReportingFileFailure = false;
} // namespace

// ---------------------------------------------------------------------------------------
// Printers

void DbgViewPrinter::Print(const char* pcText)
{
    GUtOutputDebugString(pcText);
}

void ConcolePrinter::Print(const char* pcText)
{
    printf("%s", pcText);
    fflush(stdout);
}

void FilePrinter::Print(const char* pcText)
{
    size_t iLength = strlen(pcText);
    ssize_t iWritten = m_iFileHandle >= 0 ? write(m_iFileHandle, pcText, iLength) : -1;
    if (iWritten == static_cast<ssize_t>(iLength) || t_bReportingFileFailure)
    {
        return;
    }
    t_bReportingFileFailure = true;
    m_log.Print(GUtPrinterLog::LEVEL_ERROR, "%s", "Failed to write log file.\n");
    t_bReportingFileFailure = false;
}

SysLogPrinter::SysLogPrinter(const char* pcIdent)
{
    // openlog keeps the pointer: the name lives as long as the process.
    static char s_acIdent[256];
    static std::once_flag s_once;
    std::call_once(s_once,
                   [pcIdent]
                   {
                       snprintf(s_acIdent, sizeof(s_acIdent), "%s", pcIdent);
                       openlog(s_acIdent, 0, LOG_USER);
                   });
}

void SysLogPrinter::Print(const char* pcText)
{
    // syslog(3) reports no failure, so "Failed to write syslog.\n" has no occasion here.
    syslog(LOG_INFO, "%s", pcText);
}

void MsgBoxPrinter::Print(const char* pcText)
{
    GUtShowMessageBox("", pcText);
}

// ---------------------------------------------------------------------------------------
// The logger

GUtPrinterLog& GUtPrinterLog::Get()
{
    static std::atomic<GUtPrinterLog*> s_pLog{nullptr};
    static std::mutex s_mutex;
    GUtPrinterLog* pLog = s_pLog.load(std::memory_order_acquire);
    if (!pLog)
    {
        std::lock_guard<std::mutex> lock(s_mutex);
        pLog = s_pLog.load(std::memory_order_relaxed);
        if (!pLog)
        {
            // Never destroyed, so that it serves static destructors too.
            pLog = new GUtPrinterLog();
            s_pLog.store(pLog, std::memory_order_release);
        }
    }
    return *pLog;
}

GUtPrinterLog::GUtPrinterLog(const char* pcExecutablePath)
    : m_strExecutablePath(pcExecutablePath ? GUtString(pcExecutablePath) : ExecutablePath())
{
    SetPrinters(LEVEL_DEBUG, PRINTER_DEBUG_OUTPUT | PRINTER_CONSOLE);
    SetPrinters(LEVEL_TRACE, PRINTER_DEBUG_OUTPUT | PRINTER_CONSOLE);
    SetPrinters(LEVEL_LOG, PRINTER_DEBUG_OUTPUT | PRINTER_CONSOLE | PRINTER_FILE);
    SetPrinters(LEVEL_ERROR, PRINTER_FILE | PRINTER_MESSAGE_BOX);
}

GUtPrinterLog::~GUtPrinterLog()
{
    for (auto& printers : m_aPrinters)
    {
        printers.clear();
    }
    if (m_iFileHandle >= 0)
    {
        close(m_iFileHandle);
    }
}

const char* GUtPrinterLog::LevelName(int iLevel)
{
    static const char* const s_apcNames[LEVEL_COUNT] = {"DEBUG", "TRACE", "LOG", "ERROR"};
    return iLevel >= 0 && iLevel < LEVEL_COUNT ? s_apcNames[iLevel] : "";
}

GUtString GUtPrinterLog::SysLogIdent(const char* pcExecutablePath)
{
    GUtString folder, base;
    SplitPath(GUtString(pcExecutablePath ? pcExecutablePath : ""), folder, base);
    GUtString ident;
    ident.Format("%s[%d]", base.c_str(), static_cast<int>(getpid()));
    return ident;
}

bool GUtPrinterLog::IsDebuggerAttached()
{
    FILE* pStatus = fopen("/proc/self/status", "r");
    if (!pStatus)
    {
        return false;
    }
    char acLine[256];
    int iTracer = 0;
    while (fgets(acLine, sizeof(acLine), pStatus))
    {
        if (sscanf(acLine, "TracerPid: %d", &iTracer) == 1)
        {
            break;
        }
    }
    fclose(pStatus);
    return iTracer != 0;
}

bool GUtPrinterLog::_OpenFile()
{
    if (m_iFileHandle >= 0)
    {
        return true;
    }
    GUtString folder, base;
    SplitPath(m_strExecutablePath, folder, base);
    GUtLocalTime now;
    GUtGetClock().LocalTime(now);
    std::random_device random;
    GUtString path;
    path.Format("%slog/%s_%d-%02d-%02d_%02d-%02d_%02d_%d.log", folder.c_str(), base.c_str(), now.iYear,
                now.iMonth, now.iDay, now.iHour, now.iMinute, now.iSecond, static_cast<int>(random() % 100));
    // The folder is not created: without a "log" folder beside the program there is no file.
    m_iFileHandle = open(path.c_str(), O_WRONLY | O_CREAT | O_APPEND | O_CLOEXEC, 0644);
    if (m_iFileHandle < 0)
    {
        return false;
    }
    m_strFilePath = path;
    return true;
}

void GUtPrinterLog::SetPrinters(int iLevel, uint32_t uFlags)
{
    if (iLevel < 0 || iLevel >= LEVEL_COUNT)
    {
        return;
    }
    std::vector<std::unique_ptr<IPrinter>>& printers = m_aPrinters[iLevel];
    printers.clear();
    if (uFlags & PRINTER_DEBUG_OUTPUT)
    {
        printers.push_back(std::make_unique<DbgViewPrinter>());
    }
    if (uFlags & PRINTER_CONSOLE)
    {
        printers.push_back(std::make_unique<ConcolePrinter>());
    }
    if ((uFlags & PRINTER_FILE) && _OpenFile())
    {
        printers.push_back(std::make_unique<FilePrinter>(*this, m_iFileHandle));
    }
    if (uFlags & PRINTER_SYSLOG)
    {
        printers.push_back(std::make_unique<SysLogPrinter>(SysLogIdent(m_strExecutablePath.c_str()).c_str()));
    }
    if (uFlags & PRINTER_MESSAGE_BOX)
    {
        printers.push_back(std::make_unique<MsgBoxPrinter>());
    }
}

void GUtPrinterLog::AddPrinter(int iLevel, std::unique_ptr<IPrinter> pPrinter)
{
    if (iLevel >= 0 && iLevel < LEVEL_COUNT && pPrinter)
    {
        m_aPrinters[iLevel].push_back(std::move(pPrinter));
    }
}

int GUtPrinterLog::GetPrinterCount(int iLevel) const
{
    return iLevel >= 0 && iLevel < LEVEL_COUNT ? static_cast<int>(m_aPrinters[iLevel].size()) : 0;
}

void GUtPrinterLog::_Dispatch(int iLevel, const char* pcLine)
{
    for (const std::unique_ptr<IPrinter>& pPrinter : m_aPrinters[iLevel])
    {
        pPrinter->Print(pcLine);
    }
}

void GUtPrinterLog::PrintV(int iLevel, const char* pcFormat, va_list args)
{
    if (iLevel < m_iMinLevel || iLevel < 0 || iLevel >= LEVEL_COUNT || !pcFormat)
    {
        return;
    }
    char acText[STACK_TEXT];
    va_list copy;
    va_copy(copy, args);
    int iLength = vsnprintf(acText, sizeof(acText), pcFormat, copy);
    va_end(copy);
    if (iLength <= 0)
    {
        return;
    }
    GUtLocalTime now;
    GUtGetClock().LocalTime(now);
    static const char* const kLineFormat = "[%d-%02d-%02d %02d:%02d:%02d][%s][%s]%s\n";
    if (iLength < STACK_TEXT)
    {
        char acLine[STACK_LINE];
        snprintf(acLine, sizeof(acLine), kLineFormat, now.iYear, now.iMonth, now.iDay, now.iHour, now.iMinute,
                 now.iSecond, LevelName(iLevel), m_strTag.c_str(), acText);
        _Dispatch(iLevel, acLine);
        return;
    }
    // Too long for the stack: both buffers on the heap, or nothing.
    size_t iLineSize = static_cast<size_t>(iLength) + 257 + static_cast<size_t>(m_strTag.Length());
    std::unique_ptr<char[]> pText(new (std::nothrow) char[static_cast<size_t>(iLength) + 1]);
    std::unique_ptr<char[]> pLine(new (std::nothrow) char[iLineSize]);
    if (!pText || !pLine)
    {
        return;
    }
    vsnprintf(pText.get(), static_cast<size_t>(iLength) + 1, pcFormat, args);
    snprintf(pLine.get(), iLineSize, kLineFormat, now.iYear, now.iMonth, now.iDay, now.iHour, now.iMinute,
             now.iSecond, LevelName(iLevel), m_strTag.c_str(), pText.get());
    _Dispatch(iLevel, pLine.get());
}

void GUtPrinterLog::Print(int iLevel, const char* pcFormat, ...)
{
    va_list args;
    va_start(args, pcFormat);
    PrintV(iLevel, pcFormat, args);
    va_end(args);
}

void GUtPrinterLog::Log(const char* pcFormat, ...)
{
    va_list args;
    va_start(args, pcFormat);
    PrintV(LEVEL_LOG, pcFormat, args);
    va_end(args);
}

void GUtPrinterLog::Error(const char* pcFormat, ...)
{
    va_list args;
    va_start(args, pcFormat);
    PrintV(LEVEL_ERROR, pcFormat, args);
    va_end(args);
    // Without a debugger the trap would end the process, so it is raised only under one.
    if (IsDebuggerAttached())
    {
        raise(SIGTRAP);
    }
}
