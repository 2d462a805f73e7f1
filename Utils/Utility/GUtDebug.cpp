#include "Utils/Utility/GUtDebug.h"

#include "Utils/Utility/GUtFile.h"

#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <unistd.h>

// ---------------------------------------------------------------------------------------
// Message boxes, debug output, console print and colour

namespace
{
void DefaultMessageBox(const char* pcCaption, const char* pcText)
{
    fprintf(stderr, "[message box] %s%s%s\n", pcCaption ? pcCaption : "",
            (pcCaption && *pcCaption) ? ": " : "", pcText ? pcText : "");
    fflush(stderr);
}

void DefaultDebugOutput(const char* pcText)
{
    fputs(pcText, stderr);
    fflush(stderr);
}

void DefaultPrint(const char* pcText)
{
    fputs(pcText, stdout);
}

void DefaultAttribute(int iAttribute);

std::atomic<GUtMessageBoxHandler> g_pMessageBox{&DefaultMessageBox};
std::atomic<GUtWindowMessagePoster> g_pPoster{nullptr};
std::atomic<GUtDebugOutputFunction> g_pDebugOutput{&DefaultDebugOutput};
std::atomic<GUtOut::PrintFunction> g_pPrint{&DefaultPrint};
std::atomic<GUtOut::AttributeFunction> g_pAttribute{&DefaultAttribute};
std::atomic<int> g_iAssertionFailures{0};

// Console attribute bits (4 red, 2 green, 1 blue) as ANSI colours; 7, white, is the
// terminal's own colour.
void DefaultAttribute(int iAttribute)
{
    if (g_pPrint.load() != &DefaultPrint || !isatty(STDOUT_FILENO))
    {
        return;
    }
    int iColour = iAttribute & 7;
    if (iColour == 7)
    {
        fputs("\033[0m", stdout);
        return;
    }
    int iAnsi = ((iColour & 4) ? 1 : 0) | ((iColour & 2) ? 2 : 0) | ((iColour & 1) ? 4 : 0);
    fprintf(stdout, "\033[%dm", 30 + iAnsi);
}
} // namespace

void GUtSetMessageBoxHandler(GUtMessageBoxHandler pHandler)
{
    g_pMessageBox.store(pHandler ? pHandler : &DefaultMessageBox);
}

void GUtSetActiveWindowPoster(GUtWindowMessagePoster pPoster)
{
    g_pPoster.store(pPoster);
}

void GUtShowMessageBox(const char* pcCaption, const char* pcText)
{
    if (GUtWindowMessagePoster pPoster = g_pPoster.load())
    {
        pPoster(GUT_WM_ACTIVATEAPP, 0, 0);
    }
    g_pMessageBox.load()(pcCaption ? pcCaption : "", pcText ? pcText : "");
}

void GUtSetDebugOutputFunction(GUtDebugOutputFunction pFunction)
{
    g_pDebugOutput.store(pFunction ? pFunction : &DefaultDebugOutput);
}

void GUtOutputDebugString(const char* pcText)
{
    g_pDebugOutput.load()(pcText ? pcText : "");
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

void GUtOut::SetAttributeFunction(AttributeFunction pFunction)
{
    g_pAttribute.store(pFunction ? pFunction : &DefaultAttribute);
}

void GUtOut::SetConsoleAttribute(int iAttribute)
{
    g_pAttribute.load()(iAttribute);
}

void GUtOut::SetSinkHook(SinkHook hook)
{
    GUtCriticalSectionLock lock(m_lock);
    m_sinkHook = std::move(hook);
}

void GUtOut::DisplayMsg(bool bMessageBox, const char* pcTitle, const char* pcFormat, ...)
{
    if (!pcTitle || !pcFormat)
    {
        DisplayMsg(true, "GUtOut::DisplayMsg() error !", "%s",
                   "argument 'title' or 'describe' can't be NULL !!");
        return;
    }
    GUtCriticalSectionLock lock(m_lock);
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
    GUtCriticalSectionLock lock(m_lock);
    snprintf(m_acBuffer, sizeof(m_acBuffer), "%i", iValue);
    GUT_ASSERT(strlen(m_acBuffer) < BUFFER_LENGTH);
    Print(m_acBuffer);
    return *this;
}

GUtOut& GUtOut::operator<<(const char* pcText)
{
    GUtCriticalSectionLock lock(m_lock);
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
// GUtLog: set-up and settings

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
    m_acLine[0] = '\0';
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
    m_iFileThreshold.store(iLevel, std::memory_order_relaxed);
}

void GUtLog::SetHookThreshold(int iLevel)
{
    GUtCriticalSectionLock lock(m_lock);
    m_iHookThreshold.store(iLevel, std::memory_order_relaxed);
}

void GUtLog::SetDefaultLevel(int iLevel)
{
    m_iDefaultLevel.store(iLevel, std::memory_order_relaxed);
}

void GUtLog::SetSpareLevel(int iLevel)
{
    GUtCriticalSectionLock lock(m_lock);
    m_iSpareLevel = iLevel;
}

int GUtLog::GetSpareLevel() const
{
    return m_iSpareLevel;
}

void GUtLog::SetMaxFileSize(int iBytes)
{
    GUtCriticalSectionLock lock(m_lock);
    m_iMaxFileSize = iBytes;
}

void GUtLog::SetMaxIndex(int iIndex)
{
    GUtCriticalSectionLock lock(m_lock);
    m_iMaxIndex = iIndex;
}

void GUtLog::SetBaseName(const char* pcBaseName)
{
    GUtCriticalSectionLock lock(m_lock);
    CloseFiles();
    m_strBaseName = pcBaseName;
}

GUtString GUtLog::GetBaseName()
{
    GUtCriticalSectionLock lock(m_lock);
    return m_strBaseName;
}

void GUtLog::EnableConsole(bool b)
{
    GUtCriticalSectionLock lock(m_lock);
    m_bConsoleEnabled = b;
}

void GUtLog::EnableMainFile(bool b)
{
    GUtCriticalSectionLock lock(m_lock);
    m_bMainFileEnabled = b;
}

void GUtLog::EnableWarningFile(bool b)
{
    GUtCriticalSectionLock lock(m_lock);
    m_bWarningFileEnabled = b;
}

void GUtLog::EnableErrorFile(bool b)
{
    GUtCriticalSectionLock lock(m_lock);
    m_bErrorFileEnabled = b;
}

void GUtLog::EnableCriticalFile(bool b)
{
    GUtCriticalSectionLock lock(m_lock);
    m_bCriticalFileEnabled = b;
}

void GUtLog::EnableMessageBox(bool b)
{
    GUtCriticalSectionLock lock(m_lock);
    m_bMessageBoxEnabled = b;
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

void GUtLog::CloseFiles()
{
    GUtCriticalSectionLock lock(m_lock);
    for (GUtFile** ppFile : {&m_pMainFile, &m_pErrorFile, &m_pWarningFile, &m_pCriticalFile})
    {
        delete *ppFile;
        *ppFile = nullptr;
    }
}

// ---------------------------------------------------------------------------------------
// GUtLog: the three forms

void GUtLog::_ReportNullArgument()
{
    DisplayMsg(true, "GUtLog::DisplayMsg() error !", "%s", "argument 'title' or 'describe' can't be NULL !!");
}

void GUtLog::DisplayMsg(bool bMessageBox, const char* pcTitle, const char* pcFormat, ...)
{
    if (!pcTitle || !pcFormat)
    {
        _ReportNullArgument();
        return;
    }
    const int iLevel = GetDefaultLevel();
    if (GetFileThreshold() < iLevel && GetHookThreshold() < iLevel)
    {
        return;
    }
    GUtCriticalSectionLock lock(m_lock);
    va_list args;
    va_start(args, pcFormat);
    vsnprintf(m_acText, sizeof(m_acText), pcFormat, args);
    va_end(args);
    GUtLogChannel channel{0, GetFileThreshold(), GetHookThreshold(), bMessageBox ? 1 : 0, iLevel, 1, nullptr};
    _Emit(channel, pcTitle);
}

void GUtLog::DisplayMsg(bool bMessageBox, int iLevel, const char* pcTitle, const char* pcFormat, ...)
{
    va_list args;
    va_start(args, pcFormat);
    DisplayMsgV(bMessageBox, iLevel, pcTitle, pcFormat, args);
    va_end(args);
}

void GUtLog::DisplayMsgV(bool bMessageBox, int iLevel, const char* pcTitle, const char* pcFormat,
                         va_list args)
{
    if (!pcTitle || !pcFormat)
    {
        _ReportNullArgument();
        return;
    }
    if (GetFileThreshold() < iLevel && GetHookThreshold() < iLevel)
    {
        return;
    }
    GUtCriticalSectionLock lock(m_lock);
    vsnprintf(m_acText, sizeof(m_acText), pcFormat, args);
    GUtLogChannel channel{0, GetFileThreshold(), GetHookThreshold(), bMessageBox ? 1 : 0, iLevel, 1, nullptr};
    // Levels 0 and 1 red, 2 yellow, the rest white; white again afterwards.
    GUtOut::SetConsoleAttribute(iLevel <= 1 ? 4 : (iLevel == 2 ? 6 : 7));
    _Emit(channel, pcTitle);
    GUtOut::SetConsoleAttribute(7);
}

void GUtLog::DisplayMsg(const GUtLogChannel& channel, const char* pcTitle, const char* pcFormat, ...)
{
    if (!pcTitle || !pcFormat)
    {
        _ReportNullArgument();
        return;
    }
    // The channel's own limits decide here, as they hold for the rest of the call.
    if (channel.iFileLevel < channel.iLevel && channel.iHookLevel < channel.iLevel)
    {
        return;
    }
    GUtCriticalSectionLock lock(m_lock);
    va_list args;
    va_start(args, pcFormat);
    vsnprintf(m_acText, sizeof(m_acText), pcFormat, args);
    va_end(args);
    const int32_t iOldFile = GetFileThreshold();
    const int32_t iOldHook = GetHookThreshold();
    m_iFileThreshold.store(channel.iFileLevel, std::memory_order_relaxed);
    m_iHookThreshold.store(channel.iHookLevel, std::memory_order_relaxed);
    _Emit(channel, pcTitle);
    m_iFileThreshold.store(iOldFile, std::memory_order_relaxed);
    m_iHookThreshold.store(iOldHook, std::memory_order_relaxed);
}

// ---------------------------------------------------------------------------------------
// GUtLog: emitting a message (under the lock)

namespace
{
// Appends to a fixed buffer, cutting what does not fit.
struct CLineWriter
{
    char* pcBuffer;
    size_t iCapacity;
    size_t iLength = 0;

    void Append(const char* pcText, size_t iCount)
    {
        size_t iRoom = iCapacity - 1 - iLength;
        iCount = iCount < iRoom ? iCount : iRoom;
        memcpy(pcBuffer + iLength, pcText, iCount);
        iLength += iCount;
        pcBuffer[iLength] = '\0';
    }
    void Append(const char* pcText) { Append(pcText, strlen(pcText)); }
};
} // namespace

void GUtLog::_BuildLine(const char* pcFormat, const char* pcTitle, bool bNewline)
{
    CLineWriter line{m_acLine, sizeof(m_acLine)};
    line.pcBuffer[0] = '\0';
    if (!pcFormat)
    {
        line.Append(pcTitle);
        line.Append(" ");
        line.Append(m_acText);
    }
    else
    {
        for (const char* pc = pcFormat; *pc; ++pc)
        {
            if (pc[0] == '%' && (pc[1] == '1' || pc[1] == '2'))
            {
                line.Append(pc[1] == '1' ? pcTitle : m_acText);
                ++pc;
            }
            else
            {
                line.Append(pc, 1);
            }
        }
    }
    if (bNewline)
    {
        line.Append("\n");
    }
}

void GUtLog::_Emit(const GUtLogChannel& channel, const char* pcTitle)
{
    const int iLevel = channel.iLevel;
    const bool bMessageBox = channel.bMessageBox != 0;
    if (m_preHook)
    {
        m_preHook(bMessageBox, iLevel, m_strStamp.c_str(), pcTitle, m_acText);
    }
    if (m_bMessageBoxEnabled && bMessageBox)
    {
        GUtShowMessageBox(pcTitle, m_acText);
    }
    GUtString format;
    const bool bFormatted = m_formatHook && m_formatHook(iLevel, channel.iScope, format);
    _BuildLine(bFormatted ? format.c_str() : nullptr, pcTitle, channel.bAppendNewline == 1);
    if (iLevel <= channel.iFileLevel)
    {
        _WriteConsoleAndMainFile(iLevel, m_acLine);
    }
    if (iLevel <= channel.iHookLevel && m_outputHook)
    {
        if (bFormatted)
        {
            m_outputHook(iLevel, channel.iScope, m_acLine, nullptr);
        }
        else
        {
            m_outputHook(iLevel, channel.iScope, pcTitle, m_acText);
        }
    }
    if (iLevel <= channel.iFileLevel)
    {
        _WriteLevelFile(iLevel, m_acLine);
    }
}

void GUtLog::_RefreshStamp()
{
    GUtLocalTime now;
    if (GUtGetClock().LocalTime(now))
    {
        m_strStamp.Format("%d-%d-%d %d:%d:%d", now.iYear, now.iMonth, now.iDay, now.iHour, now.iMinute,
                          now.iSecond);
    }
}

bool GUtLog::_OpenLogFile(GUtFile*& pFile, const char* pcPath)
{
    if (!pFile)
    {
        pFile = new GUtFile();
    }
    // Quiet, and reported here on the console stream: a report through the log would come
    // back to this very file.
    if (!pFile->Open(pcPath, GUtFile::MODE_LOG, true))
    {
        m_out.DisplayMsg(false, "GUtFile::GUtFile()", "open file %s Fail!", pcPath);
        return false;
    }
    return true;
}

bool GUtLog::_OpenMainFile()
{
    if (!m_pMainFile || !m_pMainFile->IsOpen())
    {
        GUtString path = m_strBaseName + ".log";
        if (!_OpenLogFile(m_pMainFile, path.c_str()))
        {
            return false;
        }
    }
    if (m_iMaxFileSize > 0 && m_pMainFile->Size() > m_iMaxFileSize)
    {
        GUtString path;
        path.Format("%s_%03d.log", m_strBaseName.c_str(), m_iMainIndex);
        m_iMainIndex = m_iMainIndex >= m_iMaxIndex ? 0 : m_iMainIndex + 1;
        m_pMainFile->Close();
        if (!_OpenLogFile(m_pMainFile, path.c_str()))
        {
            return false;
        }
    }
    return true;
}

void GUtLog::_WriteConsoleAndMainFile(int iLevel, const char* pcLine)
{
    if (iLevel > GetFileThreshold())
    {
        return;
    }
    GUtCriticalSectionLock lock(m_lock);
    _RefreshStamp();
    if (m_bConsoleEnabled)
    {
        GUtOut::Print(pcLine);
    }
    if (!m_bMainFileEnabled || !_OpenMainFile())
    {
        return;
    }
    // The counter starts at 25, so the first line of a run gets a stamp.
    if (++m_iLinesSinceStamp >= 26 || m_stampTimer.Elapsed() > 300.0)
    {
        m_iLinesSinceStamp = 0;
        m_stampTimer.Start();
        m_pMainFile->WriteRaw("TimeStamp - ", 12);
        m_pMainFile->WriteRaw(m_strStamp.c_str(), m_strStamp.Length());
        m_pMainFile->WriteRaw(" - \n", 4);
    }
    m_pMainFile->WriteRaw(pcLine, static_cast<int32_t>(strlen(pcLine)));
}

void GUtLog::_WriteLevelFile(int iLevel, const char* pcLine)
{
    GUtFile** ppFile = nullptr;
    const GUtString* pSuffix = nullptr;
    int32_t* pIndex = nullptr;
    bool bEnabled = false;
    switch (iLevel)
    {
        case 0:
            ppFile = &m_pCriticalFile;
            pSuffix = &m_strSuffixCritical;
            pIndex = &m_iCriticalIndex;
            bEnabled = m_bCriticalFileEnabled;
            break;
        case 1:
            ppFile = &m_pErrorFile;
            pSuffix = &m_strSuffixError;
            pIndex = &m_iErrorIndex;
            bEnabled = m_bErrorFileEnabled;
            break;
        case 2:
            ppFile = &m_pWarningFile;
            pSuffix = &m_strSuffixWarning;
            pIndex = &m_iWarningIndex;
            bEnabled = m_bWarningFileEnabled;
            break;
        default:
            return;
    }
    if (!bEnabled)
    {
        return;
    }
    GUtFile*& pFile = *ppFile;
    const bool bFull = m_iMaxFileSize > 0 && pFile && pFile->Size() > m_iMaxFileSize;
    if (!pFile || !pFile->IsOpen() || bFull)
    {
        GUtString path;
        path.Format("%s%s%d.log", m_strBaseName.c_str(), pSuffix->c_str(), *pIndex);
        if (pFile)
        {
            pFile->Close();
        }
        *pIndex = *pIndex + 1 > m_iMaxIndex ? 0 : *pIndex + 1;
        if (!_OpenLogFile(pFile, path.c_str()))
        {
            return;
        }
    }
    pFile->WriteRaw(m_strStamp.c_str(), m_strStamp.Length());
    pFile->WriteRaw(" : ", 3);
    pFile->WriteRaw(pcLine, static_cast<int32_t>(strlen(pcLine)));
}

// ---------------------------------------------------------------------------------------
// Threshold scope and assertions

GUtLogThresholdScope::GUtLogThresholdScope(int iFileLevel, int iHookLevel, GUtLog& log) : m_log(log)
{
    m_iOldFileLevel = m_log.GetFileThreshold();
    m_iOldHookLevel = m_log.GetHookThreshold();
    if (iFileLevel >= 0)
    {
        m_log.SetFileThreshold(iFileLevel);
    }
    if (iHookLevel >= 0)
    {
        m_log.SetHookThreshold(iHookLevel);
    }
}

GUtLogThresholdScope::~GUtLogThresholdScope()
{
    m_log.SetFileThreshold(m_iOldFileLevel);
    m_log.SetHookThreshold(m_iOldHookLevel);
}

void GUtAssertFail(const char* pcExpression, const char* pcFile, int iLine)
{
    // One report at a time; the first failure ends the process, so this is never left.
    static GUtCriticalSection s_section;
    s_section.Enter();
    static char s_acText[4096];
    snprintf(s_acText, sizeof(s_acText), "Assertion failed, exp: \"%s\" in %s at line %d\n", pcExpression,
             pcFile, iLine);
    {
        GUtLogThresholdScope hold(5, 5);
        GUtLog::Get().DisplayMsg(LogCritical, "", "%s", s_acText);
    }
    ++g_iAssertionFailures;
    fflush(nullptr);
    abort();
}
