// The utility library's diagnostics: GUtOut (the console stream), GUtLog (the levelled
// log with its files, channels and hooks), message boxes, the debug output and the
// assertion that stays on in every build.
//
// Levels: 0 critical, 1 error, 2 warning, 3 notice, 4 normal, 5 debug. A smaller level is
// more severe; a message goes out where its level is at or below a limit.
#pragma once

#include "Utils/Utility/GUtLock.h"
#include "Utils/Utility/GUtString.h"
#include "Utils/Utility/GUtTimer.h"

#include <atomic>
#include <cstdarg>
#include <cstdint>
#include <functional>
#include <memory>

class GUtFile;

// ---------------------------------------------------------------------------------------
// Message boxes. The application installs a handler that shows a modal box owned by the
// active window; until then (and in a build with no display) a box is a line on standard
// error. The caption may be empty.
//
// Before every box the active-window poster, when one is installed, gets the message
// GUT_WM_ACTIVATEAPP with both arguments 0, so that the frame loop's limit for inactive
// windows does not keep the box behind.
using GUtMessageBoxHandler = void (*)(const char* pcCaption, const char* pcText);
using GUtWindowMessagePoster = void (*)(uint32_t uMessage, uint64_t uWParam, int64_t iLParam);
constexpr uint32_t GUT_WM_ACTIVATEAPP = 28;

void GUtSetMessageBoxHandler(GUtMessageBoxHandler pHandler);   // null restores the default
void GUtSetActiveWindowPoster(GUtWindowMessagePoster pPoster); // null: none
void GUtShowMessageBox(const char* pcCaption, const char* pcText);

// ---------------------------------------------------------------------------------------
// The debug output (a debugger's output window elsewhere): standard error here. The
// printer log's DbgViewPrinter and COutputDebugerPC write to it.
using GUtDebugOutputFunction = void (*)(const char* pcText);
void GUtSetDebugOutputFunction(GUtDebugOutputFunction pFunction); // null restores stderr
void GUtOutputDebugString(const char* pcText);

// ---------------------------------------------------------------------------------------
// GUtOut: the console stream. DisplayMsg and the operators share one 256-byte buffer under
// a lock of their own.
class GUtOut
{
public:
    static constexpr int BUFFER_LENGTH = 256;
    using SinkHook = std::function<void(const char* pcText)>;
    using PrintFunction = void (*)(const char* pcText);
    // Console attributes: bit 4 red, 2 green, 1 blue; 7 is white, the normal colour.
    using AttributeFunction = void (*)(int iAttribute);

    GUtOut();
    virtual ~GUtOut() = default;
    GUtOut(const GUtOut&) = delete;
    GUtOut& operator=(const GUtOut&) = delete;

    // Formats into the 256-byte buffer; shows a box when bMessageBox; gives "title:text" to
    // the sink hook; prints "title text\n" and flushes. A null title or format is reported.
    void DisplayMsg(bool bMessageBox, const char* pcTitle, const char* pcFormat, ...)
        __attribute__((format(printf, 4, 5)));
    GUtOut& operator<<(int iValue);         // "%i"
    GUtOut& operator<<(const char* pcText); // null prints "(NULL)"

    void SetSinkHook(SinkHook hook);
    // The process-wide print function; starts as "print %s to standard output".
    static void SetPrintFunction(PrintFunction pFunction); // null restores the default
    static void Print(const char* pcText);
    // The process-wide console colour. The default sends ANSI colours, and only while
    // standard output is a terminal and the default print function is in use.
    static void SetAttributeFunction(AttributeFunction pFunction); // null restores the default
    static void SetConsoleAttribute(int iAttribute);

private:
    GUtCriticalSection m_lock;
    char m_acBuffer[BUFFER_LENGTH];
    SinkHook m_sinkHook;
};

// ---------------------------------------------------------------------------------------
// A channel: a level with its own limits. The six global channels are below.
struct GUtLogChannel
{
    int32_t iScope = 0;
    int32_t iFileLevel = 4;
    int32_t iHookLevel = 3;
    int32_t bMessageBox = 0;
    int32_t iLevel = 4;
    int32_t bAppendNewline = 1;
    std::unique_ptr<GUtLogChannel> pNext;
};

extern GUtLogChannel LogCritical; // level 0, box
extern GUtLogChannel LogError;    // level 1
extern GUtLogChannel LogWarning;  // level 2
extern GUtLogChannel LogNotice;   // level 3
extern GUtLogChannel LogNormal;   // level 4
extern GUtLogChannel LogDebug;    // level 5, limits 5 and 5

// ---------------------------------------------------------------------------------------
// GUtLog: the levelled log. A message goes, in this order, to the pre-hook, a message box
// (channel's choice), the console and the main file "<base>.log" (rolled over to
// "<base>_NNN.log" past maxFileSize), the output hook, and for levels 0 to 2 a level file
// "<base>Sd<n>.log", "<base>Er<n>.log" or "<base>Wr<n>.log". Files open on their first
// line, truncated.
//
// Threads: one lock guards the text buffer, the files and the settings and is held over a
// whole message, so hooks run under it and must not call into the log from another thread
// while they wait. The level test runs before the lock.
class GUtLog
{
public:
    static constexpr int TEXT_LENGTH = 32768;

    // (level, scope, line or title, null or text)
    using OutputHook = std::function<void(int iLevel, int iScope, const char* pcLine, const char* pcExtra)>;
    // (level, scope, format out): true when it supplied a format with "%1" (title) and "%2" (text)
    using FormatHook = std::function<bool(int iLevel, int iScope, GUtString& format)>;
    // (messageBox, level, stamp, title, text): sees every message first
    using PreHook = std::function<void(bool bMessageBox, int iLevel, const char* pcStamp, const char* pcTitle,
                                       const char* pcText)>;

    // The process-wide log, base name "debug_out"; exists before main.
    static GUtLog& Get();

    explicit GUtLog(const char* pcBaseName);
    virtual ~GUtLog();
    GUtLog(const GUtLog&) = delete;
    GUtLog& operator=(const GUtLog&) = delete;

    // At defaultLevel.
    void DisplayMsg(bool bMessageBox, const char* pcTitle, const char* pcFormat, ...)
        __attribute__((format(printf, 4, 5)));
    // At the given level; the console text is coloured by level.
    void DisplayMsg(bool bMessageBox, int iLevel, const char* pcTitle, const char* pcFormat, ...)
        __attribute__((format(printf, 5, 6)));
    void DisplayMsgV(bool bMessageBox, int iLevel, const char* pcTitle, const char* pcFormat, va_list args);
    // Through a channel: its limits hold for the length of the call.
    void DisplayMsg(const GUtLogChannel& channel, const char* pcTitle, const char* pcFormat, ...)
        __attribute__((format(printf, 4, 5)));

    // Thresholds: the highest level written to console and files, and given to the hook.
    void SetFileThreshold(int iLevel);
    void SetHookThreshold(int iLevel);
    int GetFileThreshold() const { return m_iFileThreshold.load(std::memory_order_relaxed); }
    int GetHookThreshold() const { return m_iHookThreshold.load(std::memory_order_relaxed); }
    void SetDefaultLevel(int iLevel);
    int GetDefaultLevel() const { return m_iDefaultLevel.load(std::memory_order_relaxed); }
    void SetSpareLevel(int iLevel);
    int GetSpareLevel() const;

    // Bytes; a file grown past this is rolled over. 0 or less: never.
    void SetMaxFileSize(int iBytes);
    // Roll-over numbers run from 0 to this, then start again at 0.
    void SetMaxIndex(int iIndex);
    // Closes the files; the next line opens "<base>.log" afresh.
    void SetBaseName(const char* pcBaseName);
    GUtString GetBaseName();

    void EnableConsole(bool b);
    void EnableMainFile(bool b);
    void EnableWarningFile(bool b);
    void EnableErrorFile(bool b);
    void EnableCriticalFile(bool b);
    void EnableMessageBox(bool b);

    void SetOutputHook(OutputHook hook);
    void SetFormatHook(FormatHook hook);
    void SetPreHook(PreHook hook); // an empty hook restores the plain forwarder

    // Closes the log's files; they open again on the next line. For tests and shut-down.
    void CloseFiles();
    // How many assertions failed in this process.
    static int AssertionFailures();

    GUtOut& Out() { return m_out; }

private:
    friend class GUtLogThresholdScope;

    void _Emit(const GUtLogChannel& channel, const char* pcTitle);
    void _BuildLine(const char* pcFormat, const char* pcTitle, bool bNewline);
    void _WriteConsoleAndMainFile(int iLevel, const char* pcLine);
    bool _OpenMainFile();
    void _WriteLevelFile(int iLevel, const char* pcLine);
    bool _OpenLogFile(GUtFile*& pFile, const char* pcPath);
    void _RefreshStamp();
    void _ReportNullArgument();

    OutputHook m_outputHook;
    FormatHook m_formatHook;
    GUtCriticalSection m_lock;
    GUtOut m_out;
    GUtString m_strBaseName;
    GUtString m_strSuffixError = "Er";
    GUtString m_strSuffixWarning = "Wr";
    GUtString m_strSuffixCritical = "Sd";
    GUtFile* m_pErrorFile = nullptr;
    GUtFile* m_pWarningFile = nullptr;
    GUtFile* m_pMainFile = nullptr;
    GUtFile* m_pCriticalFile = nullptr;
    int32_t m_iMaxFileSize = 100000;
    int32_t m_iMainIndex = 0;
    int32_t m_iErrorIndex = 0;
    int32_t m_iWarningIndex = 0;
    int32_t m_iCriticalIndex = 0;
    int32_t m_iMaxIndex = 99;
    // Read before the lock, hence atomic.
    std::atomic<int32_t> m_iFileThreshold{4};
    std::atomic<int32_t> m_iHookThreshold{3};
    std::atomic<int32_t> m_iDefaultLevel{4};
    int32_t m_iSpareLevel = 4;
    char m_acText[TEXT_LENGTH];
    PreHook m_preHook;
    bool m_bConsoleEnabled = true;
    bool m_bMainFileEnabled = true;
    bool m_bWarningFileEnabled = true;
    bool m_bErrorFileEnabled = true;
    bool m_bCriticalFileEnabled = true;
    GUtTimer m_stampTimer{GUtTimer::UNIT_SECONDS};
    int32_t m_iLinesSinceStamp = 25;
    GUtString m_strStamp;
    bool m_bMessageBoxEnabled = true;
    // The line being written: title and text, or the format hook's result. Fixed, so that
    // a message allocates nothing.
    char m_acLine[TEXT_LENGTH + 1024];
};

// Overrides a log's thresholds for a scope: negative arguments keep the current value.
// Not per thread.
class GUtLogThresholdScope
{
public:
    GUtLogThresholdScope(int iFileLevel, int iHookLevel, GUtLog& log = GUtLog::Get());
    virtual ~GUtLogThresholdScope();
    GUtLogThresholdScope(const GUtLogThresholdScope&) = delete;
    GUtLogThresholdScope& operator=(const GUtLogThresholdScope&) = delete;

private:
    GUtLog& m_log;
    int m_iOldFileLevel;
    int m_iOldHookLevel;
};

// ---------------------------------------------------------------------------------------
// Assertions stay on in every build. A failure logs
//   Assertion failed, exp: "<expression>" in <file> at line <line>
// to LogCritical (thresholds held at 5 and 5, so it is shown whatever a scope lowered),
// counts it, and ends the process through the crash path: abort(), whose SIGABRT the
// application's crash handler turns into a dump.
[[noreturn]] void GUtAssertFail(const char* pcExpression, const char* pcFile, int iLine);

#define GUT_ASSERT(expr) ((expr) ? static_cast<void>(0) : GUtAssertFail(#expr, __FILE__, __LINE__))
