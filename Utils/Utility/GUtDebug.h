// The utility library's diagnostics: GUtOut (the console stream), GUtLog (the levelled
// log with its files, channels and hooks) and the assertion that stays on in every build.
//
// Levels: 0 critical, 1 error, 2 warning, 3 notice, 4 normal, 5 debug. A smaller level is
// more severe; a message goes out where its level is at or below a limit.
#pragma once

#include "Utils/Utility/GUtLock.h"
#include "Utils/Utility/GUtString.h"
#include "Utils/Utility/GUtTimer.h"

#include <cstdint>
#include <functional>
#include <memory>

class GUtFile;

[[noreturn]] void GUtAssertFail(const char* pcExpression, const char* pcFile, int iLine);

// ---------------------------------------------------------------------------------------
// Message boxes. The application installs a handler that shows a modal box owned by the
// active window; until then (and in a build with no display) a box is a line on standard
// error. The caption may be empty.
using GUtMessageBoxHandler = void (*)(const char* pcCaption, const char* pcText);
void GUtSetMessageBoxHandler(GUtMessageBoxHandler pHandler); // null restores the default
void GUtShowMessageBox(const char* pcCaption, const char* pcText);

// ---------------------------------------------------------------------------------------
class GUtOut
{
public:
    static constexpr int BUFFER_LENGTH = 256;
    using SinkHook = std::function<void(const char* pcText)>;
    using PrintFunction = void (*)(const char* pcText);

    GUtOut();
    virtual ~GUtOut() = default;

    // Formats into the 256-byte buffer; shows a box when bMessageBox; gives "title:text" to
    // the sink hook; prints "title text\n" and flushes. A null title or format is reported.
    void DisplayMsg(bool bMessageBox, const char* pcTitle, const char* pcFormat, ...)
        __attribute__((format(printf, 4, 5)));
    GUtOut& operator<<(int iValue);         // "%i"
    GUtOut& operator<<(const char* pcText); // null prints "(NULL)"

    void SetSinkHook(SinkHook hook) { m_sinkHook = std::move(hook); }
    // The process-wide print function; starts as "print %s to standard output".
    static void SetPrintFunction(PrintFunction pFunction);
    static void Print(const char* pcText);

private:
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

class GUtLog
{
public:
    static constexpr int TEXT_LENGTH = 32768;

    // (level, scope, line or title, extra or text)
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
    // Through a channel: its limits hold for the length of the call.
    void DisplayMsg(const GUtLogChannel& channel, const char* pcTitle, const char* pcFormat, ...)
        __attribute__((format(printf, 4, 5)));

    // Thresholds: the highest level written to console and files, and given to the hook.
    void SetFileThreshold(int iLevel);
    void SetHookThreshold(int iLevel);
    int GetFileThreshold() const { return m_iFileThreshold; }
    int GetHookThreshold() const { return m_iHookThreshold; }
    void SetDefaultLevel(int iLevel) { m_iDefaultLevel = iLevel; }

    void SetMaxFileSize(int iBytes) { m_iMaxFileSize = iBytes; }
    void SetMaxIndex(int iIndex) { m_iMaxIndex = iIndex; }
    void SetBaseName(const char* pcBaseName);
    const GUtString& GetBaseName() const { return m_strBaseName; }

    void EnableConsole(bool b) { m_bConsoleEnabled = b; }
    void EnableMainFile(bool b) { m_bMainFileEnabled = b; }
    void EnableWarningFile(bool b) { m_bWarningFileEnabled = b; }
    void EnableErrorFile(bool b) { m_bErrorFileEnabled = b; }
    void EnableCriticalFile(bool b) { m_bCriticalFileEnabled = b; }
    void EnableMessageBox(bool b) { m_bMessageBoxEnabled = b; }

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

    struct Emit;
    void _Emit(const GUtLogChannel& channel, bool bMessageBox, const char* pcTitle);
    void _WriteConsoleAndMainFile(int iLevel, const char* pcLine);
    void _WriteLevelFile(int iLevel, const char* pcLine);
    void _RefreshStamp();

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
    int32_t m_iFileThreshold = 4;
    int32_t m_iHookThreshold = 3;
    int32_t m_iDefaultLevel = 4;
    int32_t m_iSpareLevel = 4;
    char m_acText[TEXT_LENGTH];
    PreHook m_preHook;
    bool m_bConsoleEnabled = true;
    bool m_bMainFileEnabled = true;
    bool m_bWarningFileEnabled = true;
    bool m_bErrorFileEnabled = true;
    bool m_bCriticalFileEnabled = true;
    GUtTimer m_stampTimer;
    int32_t m_iLinesSinceStamp = 25;
    GUtString m_strStamp;
    bool m_bMessageBoxEnabled = true;
};

// Overrides the log's thresholds for a scope: negative arguments keep the current value.
// Not per thread.
class GUtLogThresholdScope
{
public:
    GUtLogThresholdScope(int iFileLevel, int iHookLevel);
    virtual ~GUtLogThresholdScope();

private:
    int m_iOldFileLevel;
    int m_iOldHookLevel;
};

// ---------------------------------------------------------------------------------------
// Assertions stay on in every build. A failure logs
//   Assertion failed, exp: "<expression>" in <file> at line <line>
// to LogCritical and ends the process through the crash path (SIGABRT, which the
// application's crash handler turns into a dump).
[[noreturn]] void GUtAssertFail(const char* pcExpression, const char* pcFile, int iLine);

#define GUT_ASSERT(expr) ((expr) ? static_cast<void>(0) : GUtAssertFail(#expr, __FILE__, __LINE__))
