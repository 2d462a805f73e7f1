// The printer log: a small levelled logger of the engine's physics, the table readers and
// the game layer. Each of its four levels (DEBUG, TRACE, LOG, ERROR) holds printers; a
// message becomes one line
//   [<year>-<mm>-<dd> <hh>:<mm>:<ss>][<level>][<tag>]<text>\n
// that every printer of its level gets, in the order they were created.
//
// Threads: printing takes no lock (each printer writes a whole line at once); set up the
// printers before several threads print.
#pragma once

#include "Utils/Utility/GUtString.h"

#include <cstdarg>
#include <cstdint>
#include <memory>
#include <vector>

class GUtPrinterLog;

class IPrinter
{
public:
    virtual ~IPrinter() = default;
    // Writes one line as a whole. Failures are the printer's own business: it may report
    // them, but never to itself.
    virtual void Print(const char* pcText) = 0;

protected:
    IPrinter() = default;
    IPrinter(const IPrinter&) = delete;
    IPrinter& operator=(const IPrinter&) = delete;
};

// Flag 1: the debug output (standard error).
class DbgViewPrinter final : public IPrinter
{
public:
    void Print(const char* pcText) override;
};

// Flag 2: standard output.
class ConcolePrinter final : public IPrinter
{
public:
    void Print(const char* pcText) override;
};

// Flag 4: appends to the log's file. A failed write reports "Failed to write log file.\n" at
// the ERROR level (a failure while reporting is not reported again).
class FilePrinter final : public IPrinter
{
public:
    FilePrinter(GUtPrinterLog& log, int iFileHandle) : m_log(log), m_iFileHandle(iFileHandle) {}
    void Print(const char* pcText) override;

private:
    GUtPrinterLog& m_log;
    int m_iFileHandle;
};

// Flag 8: one information entry in the system log, under the name
// "<executable base name>[<process id>]".
class SysLogPrinter final : public IPrinter
{
public:
    explicit SysLogPrinter(const char* pcIdent);
    void Print(const char* pcText) override;
};

// Flag 16: a message box with the text and an empty caption.
class MsgBoxPrinter final : public IPrinter
{
public:
    void Print(const char* pcText) override;
};

class GUtPrinterLog
{
public:
    enum ELevel
    {
        LEVEL_DEBUG = 0,
        LEVEL_TRACE = 1,
        LEVEL_LOG = 2,
        LEVEL_ERROR = 3,
        LEVEL_COUNT = 4,
    };
    enum EPrinterFlag : uint32_t
    {
        PRINTER_DEBUG_OUTPUT = 1,
        PRINTER_CONSOLE = 2,
        PRINTER_FILE = 4,
        PRINTER_SYSLOG = 8,
        PRINTER_MESSAGE_BOX = 16,
    };
    // Messages up to this length are formatted on the stack, longer ones on the heap.
    static constexpr int STACK_TEXT = 1024;
    static constexpr int STACK_LINE = 1280;

    // The process-wide log, created on first use (double-checked under a lock of its own).
    static GUtPrinterLog& Get();

    // Sets up the default printers: DEBUG and TRACE debug output and console (3), LOG also
    // the file (7), ERROR the file and a message box (20). pcExecutablePath names the
    // program the file is named after; null: the running executable.
    explicit GUtPrinterLog(const char* pcExecutablePath = nullptr);
    virtual ~GUtPrinterLog();
    GUtPrinterLog(const GUtPrinterLog&) = delete;
    GUtPrinterLog& operator=(const GUtPrinterLog&) = delete;

    // At LOG.
    void Log(const char* pcFormat, ...) __attribute__((format(printf, 2, 3)));
    // At ERROR; then, when a debugger is attached, stops in it (SIGTRAP).
    void Error(const char* pcFormat, ...) __attribute__((format(printf, 2, 3)));
    // Dropped when the level is below minLevel or out of range, or the text is empty; a
    // long message whose memory cannot be had is dropped too.
    void Print(int iLevel, const char* pcFormat, ...) __attribute__((format(printf, 3, 4)));
    void PrintV(int iLevel, const char* pcFormat, va_list args);

    // Replaces the printers of a level by those the flags name, created in flag order. A
    // file printer needs the log file; it is created on the first request, and when it
    // can't be, no file printer is added.
    void SetPrinters(int iLevel, uint32_t uFlags);
    // Adds a printer of the caller's to a level, after the others.
    void AddPrinter(int iLevel, std::unique_ptr<IPrinter> pPrinter);
    int GetPrinterCount(int iLevel) const;

    void SetMinLevel(int iLevel) { m_iMinLevel = iLevel; }
    int GetMinLevel() const { return m_iMinLevel; }
    void SetTag(const char* pcTag) { m_strTag = pcTag; }
    const char* GetTag() const { return m_strTag.c_str(); }
    // The log file's descriptor and path; -1 and "" before it exists.
    int GetFileHandle() const { return m_iFileHandle; }
    const char* GetFilePath() const { return m_strFilePath.c_str(); }

    // "DEBUG", "TRACE", "LOG", "ERROR"; "" outside the range.
    static const char* LevelName(int iLevel);
    // The executable's base name and the process id as the system log's name: "Editor[1234]".
    static GUtString SysLogIdent(const char* pcExecutablePath);
    // True when a debugger traces the process.
    static bool IsDebuggerAttached();

private:
    bool _OpenFile();
    void _Dispatch(int iLevel, const char* pcLine);

    std::vector<std::unique_ptr<IPrinter>> m_aPrinters[LEVEL_COUNT];
    int32_t m_iMinLevel = 1;
    int m_iFileHandle = -1;
    GUtString m_strTag = "sys";
    GUtString m_strExecutablePath;
    GUtString m_strFilePath;
};
