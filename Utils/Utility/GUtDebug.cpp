#include "Utils/Utility/GUtDebug.h"

#include <atomic>
#include <cstdio>
#include <cstdlib>
#include <cstring>

// ---------------------------------------------------------------------------------------
// Message boxes

namespace
{
void DefaultMessageBox(const char* pcCaption, const char* pcText)
{
    fprintf(stderr, "[message box] %s%s%s\n", pcCaption ? pcCaption : "",
            (pcCaption && *pcCaption) ? ": " : "", pcText ? pcText : "");
    fflush(stderr);
}

std::atomic<GUtMessageBoxHandler> g_pMessageBox{&DefaultMessageBox};

void DefaultPrint(const char* pcText)
{
    printf("%s", pcText);
}

std::atomic<GUtOut::PrintFunction> g_pPrint{&DefaultPrint};
std::atomic<int> g_iAssertionFailures{0};
} // namespace

void GUtSetMessageBoxHandler(GUtMessageBoxHandler pHandler)
{
    g_pMessageBox.store(pHandler ? pHandler : &DefaultMessageBox);
}

void GUtShowMessageBox(const char* pcCaption, const char* pcText)
{
    g_pMessageBox.load()(pcCaption, pcText);
}

// ---------------------------------------------------------------------------------------
// GUtOut

GUtOut::GUtOut()
{
    m_acBuffer[0] = '\0';
}

void GUtOut::SetPrintFunction(PrintFunction pFunction)
{
    g_pPrint.store(pFunction ? pFunction : &DefaultPrint);
}

void GUtOut::Print(const char* pcText)
{
    g_pPrint.load()(pcText);
}

void GUtOut::DisplayMsg(bool bMessageBox, const char* pcTitle, const char* pcFormat, ...)
{
    if (!pcTitle || !pcFormat)
    {
        DisplayMsg(true, "GUtOut::DisplayMsg() error !", "%s",
                   "argument 'title' or 'describe' can't be NULL !!");
        return;
    }
    va_list args;
    va_start(args, pcFormat);
    vsnprintf(m_acBuffer, sizeof(m_acBuffer), pcFormat, args);
    va_end(args);
    if (bMessageBox)
    {
        GUtShowMessageBox(pcTitle, m_acBuffer);
    }
    if (m_sinkHook)
    {
        GUtString sink;
        sink.Format("%s:%s", pcTitle, m_acBuffer);
        m_sinkHook(sink.c_str());
    }
    GUtString line(pcTitle);
    line += " ";
    line += m_acBuffer;
    line += "\n";
    Print(line.c_str());
    fflush(stdout);
}

GUtOut& GUtOut::operator<<(int iValue)
{
    snprintf(m_acBuffer, sizeof(m_acBuffer), "%i", iValue);
    GUT_ASSERT(strlen(m_acBuffer) < BUFFER_LENGTH);
    Print(m_acBuffer);
    return *this;
}

GUtOut& GUtOut::operator<<(const char* pcText)
{
    snprintf(m_acBuffer, sizeof(m_acBuffer), "%s", pcText ? pcText : "(NULL)");
    GUT_ASSERT(strlen(m_acBuffer) < BUFFER_LENGTH);
    Print(m_acBuffer);
    return *this;
}

// ---------------------------------------------------------------------------------------
// Channels

GUtLogChannel LogCritical{0, 4, 3, 1, 0, 1, nullptr};
GUtLogChannel LogError{0, 4, 3, 0, 1, 1, nullptr};
GUtLogChannel LogWarning{0, 4, 3, 0, 2, 1, nullptr};
GUtLogChannel LogNotice{0, 4, 3, 0, 3, 1, nullptr};
GUtLogChannel LogNormal{0, 4, 3, 0, 4, 1, nullptr};
GUtLogChannel LogDebug{0, 5, 5, 0, 5, 1, nullptr};

// ---------------------------------------------------------------------------------------
// GUtLog

GUtLog& GUtLog::Get()
{
    // Constructed on first use so that it exists for other static constructors, and never
    // destroyed so that it outlives them.
    static GUtLog* s_pLog = new GUtLog("debug_out");
    return *s_pLog;
}

GUtLog::GUtLog(const char* pcBaseName) : m_strBaseName(pcBaseName)
{
    m_acText[0] = '\0';
}

GUtLog::~GUtLog()
{
    CloseFiles();
}

int GUtLog::AssertionFailures()
{
    return g_iAssertionFailures.load();
}

void GUtLog::SetFileThreshold(int iLevel)
{
    GUtCriticalSectionLock lock(m_lock);
    m_iFileThreshold = iLevel;
}

void GUtLog::SetHookThreshold(int iLevel)
{
    GUtCriticalSectionLock lock(m_lock);
    m_iHookThreshold = iLevel;
}

void GUtLog::SetBaseName(const char* pcBaseName)
{
    GUtCriticalSectionLock lock(m_lock);
    CloseFiles();
    m_strBaseName = pcBaseName;
}

void GUtLog::SetOutputHook(OutputHook hook)
{
    GUtCriticalSectionLock lock(m_lock);
    m_outputHook = std::move(hook);
}

void GUtLog::SetFormatHook(FormatHook hook)
{
    GUtCriticalSectionLock lock(m_lock);
    m_formatHook = std::move(hook);
}

void GUtLog::SetPreHook(PreHook hook)
{
    GUtCriticalSectionLock lock(m_lock);
    m_preHook = std::move(hook);
}

void GUtLog::CloseFiles() {}

void GUtLog::DisplayMsg(bool bMessageBox, const char* pcTitle, const char* pcFormat, ...)
{
    if (!pcTitle || !pcFormat)
    {
        DisplayMsg(true, m_iDefaultLevel, "GUtLog::DisplayMsg() error !", "%s",
                   "argument 'title' or 'describe' can't be NULL !!");
        return;
    }
    int iLevel = m_iDefaultLevel;
    if (m_iFileThreshold < iLevel && m_iHookThreshold < iLevel)
    {
        return;
    }
    GUtCriticalSectionLock lock(m_lock);
    va_list args;
    va_start(args, pcFormat);
    vsnprintf(m_acText, sizeof(m_acText), pcFormat, args);
    va_end(args);
    GUtLogChannel channel{0, m_iFileThreshold, m_iHookThreshold, bMessageBox ? 1 : 0, iLevel, 1, nullptr};
    _Emit(channel, bMessageBox, pcTitle);
}

void GUtLog::DisplayMsg(bool bMessageBox, int iLevel, const char* pcTitle, const char* pcFormat, ...)
{
    if (!pcTitle || !pcFormat)
    {
        DisplayMsg(true, m_iDefaultLevel, "GUtLog::DisplayMsg() error !", "%s",
                   "argument 'title' or 'describe' can't be NULL !!");
        return;
    }
    if (m_iFileThreshold < iLevel && m_iHookThreshold < iLevel)
    {
        return;
    }
    GUtCriticalSectionLock lock(m_lock);
    va_list args;
    va_start(args, pcFormat);
    vsnprintf(m_acText, sizeof(m_acText), pcFormat, args);
    va_end(args);
    GUtLogChannel channel{0, m_iFileThreshold, m_iHookThreshold, bMessageBox ? 1 : 0, iLevel, 1, nullptr};
    _Emit(channel, bMessageBox, pcTitle);
}

void GUtLog::DisplayMsg(const GUtLogChannel& channel, const char* pcTitle, const char* pcFormat, ...)
{
    if (!pcTitle || !pcFormat)
    {
        DisplayMsg(true, m_iDefaultLevel, "GUtLog::DisplayMsg() error !", "%s",
                   "argument 'title' or 'describe' can't be NULL !!");
        return;
    }
    if (channel.iFileLevel < channel.iLevel && channel.iHookLevel < channel.iLevel)
    {
        return;
    }
    GUtCriticalSectionLock lock(m_lock);
    va_list args;
    va_start(args, pcFormat);
    vsnprintf(m_acText, sizeof(m_acText), pcFormat, args);
    va_end(args);
    int iOldFile = m_iFileThreshold;
    int iOldHook = m_iHookThreshold;
    m_iFileThreshold = channel.iFileLevel;
    m_iHookThreshold = channel.iHookLevel;
    _Emit(channel, channel.bMessageBox != 0, pcTitle);
    m_iFileThreshold = iOldFile;
    m_iHookThreshold = iOldHook;
}

void GUtLog::_Emit(const GUtLogChannel& channel, bool bMessageBox, const char* pcTitle)
{
    int iLevel = channel.iLevel;
    if (m_preHook)
    {
        m_preHook(bMessageBox, iLevel, m_strStamp.c_str(), pcTitle, m_acText);
    }
    if (m_bMessageBoxEnabled && bMessageBox)
    {
        GUtShowMessageBox(pcTitle, m_acText);
    }
    GUtString line(pcTitle);
    line += " ";
    line += m_acText;
    if (channel.bAppendNewline == 1)
    {
        line += "\n";
    }
    if (iLevel <= channel.iFileLevel)
    {
        _WriteConsoleAndMainFile(iLevel, line.c_str());
    }
    if (iLevel <= channel.iHookLevel && m_outputHook)
    {
        m_outputHook(iLevel, channel.iScope, pcTitle, m_acText);
    }
}

void GUtLog::_WriteConsoleAndMainFile(int iLevel, const char* pcLine)
{
    if (iLevel > m_iFileThreshold)
    {
        return;
    }
    if (m_bConsoleEnabled)
    {
        GUtOut::Print(pcLine);
    }
}

void GUtLog::_WriteLevelFile(int, const char*) {}

void GUtLog::_RefreshStamp() {}

// ---------------------------------------------------------------------------------------

GUtLogThresholdScope::GUtLogThresholdScope(int iFileLevel, int iHookLevel)
{
    GUtLog& log = GUtLog::Get();
    m_iOldFileLevel = log.GetFileThreshold();
    m_iOldHookLevel = log.GetHookThreshold();
    if (iFileLevel >= 0)
    {
        log.SetFileThreshold(iFileLevel);
    }
    if (iHookLevel >= 0)
    {
        log.SetHookThreshold(iHookLevel);
    }
}

GUtLogThresholdScope::~GUtLogThresholdScope()
{
    GUtLog& log = GUtLog::Get();
    log.SetFileThreshold(m_iOldFileLevel);
    log.SetHookThreshold(m_iOldHookLevel);
}

void GUtAssertFail(const char* pcExpression, const char* pcFile, int iLine)
{
    static char s_acText[4096];
    snprintf(s_acText, sizeof(s_acText), "Assertion failed, exp: \"%s\" in %s at line %d\n", pcExpression,
             pcFile, iLine);
    {
        GUtLogThresholdScope hold(5, 5);
        GUtLog::Get().DisplayMsg(LogCritical, "", "%s", s_acText);
    }
    ++g_iAssertionFailures;
    fflush(stdout);
    abort();
}
