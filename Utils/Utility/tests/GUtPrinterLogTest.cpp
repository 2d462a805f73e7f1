#include "Utils/Utility/GUtPrinterLog.h"
#include "Utils/Utility/GUtOutputDebuger.h"
#include "Utils/Utility/tests/DiagTestSupport.h"

#include <gtest/gtest.h>

#include <fcntl.h>
#include <set>
#include <thread>
#include <unistd.h>

using namespace DiagTest;

namespace
{
class CRecordingPrinter final : public IPrinter
{
public:
    explicit CRecordingPrinter(std::vector<std::string>& lines) : m_lines(lines) {}
    void Print(const char* pcText) override { m_lines.push_back(pcText); }

private:
    std::vector<std::string>& m_lines;
};

class GUtPrinterLogTest : public ::testing::Test
{
protected:
    // A program "<dir>/Editor.bin" with a "log" folder beside it.
    std::string Program() { return m_dir / "Editor.bin"; }
    void MakeLogFolder() { std::filesystem::create_directory(m_dir / "log"); }

    CTempDir m_dir;
    CCapture m_capture;
    CClockScope m_clock;
};

const char kPrefix[] = "[2024-03-05 07:08:09]";
} // namespace

TEST_F(GUtPrinterLogTest, DefaultPrintersPerLevelAndTheFileName)
{
    {
        GUtPrinterLog noFolder(Program().c_str()); // no "log" folder: no file printers
        EXPECT_EQ(noFolder.GetFileHandle(), -1);
        const int aiCounts[4] = {2, 2, 2, 1};
        for (int i = 0; i < 4; ++i)
        {
            EXPECT_EQ(noFolder.GetPrinterCount(i), aiCounts[i]) << i;
        }
        EXPECT_EQ(noFolder.GetMinLevel(), 1);
        EXPECT_STREQ(noFolder.GetTag(), "sys");
    }
    MakeLogFolder();
    GUtPrinterLog log(Program().c_str());
    const int aiCounts[4] = {2, 2, 3, 2};
    for (int i = 0; i < 4; ++i)
    {
        EXPECT_EQ(log.GetPrinterCount(i), aiCounts[i]) << i;
    }
    EXPECT_GE(log.GetFileHandle(), 0);
    std::string path = log.GetFilePath();
    // "<folder>/log/<base>_<date>_<hour>-<minute>_<second>_<random below 100>.log"
    const std::string prefix = m_dir.Path() + "/log/Editor_2024-03-05_07-08_09_";
    ASSERT_EQ(path.rfind(prefix, 0), 0u) << path;
    std::string random = path.substr(prefix.size());
    ASSERT_GE(random.size(), 5u) << path;
    EXPECT_EQ(random.substr(random.size() - 4), ".log");
    random.resize(random.size() - 4);
    EXPECT_TRUE(random.size() <= 2 && random.find_first_not_of("0123456789") == std::string::npos) << path;
    EXPECT_STREQ(GUtPrinterLog::LevelName(0), "DEBUG");
    EXPECT_STREQ(GUtPrinterLog::LevelName(3), "ERROR");
    EXPECT_STREQ(GUtPrinterLog::LevelName(4), "");
}

TEST_F(GUtPrinterLogTest, LinesGoToEachPrinterOfTheirLevelInCreationOrder)
{
    MakeLogFolder();
    GUtPrinterLog log(Program().c_str());
    testing::internal::CaptureStdout();
    log.Print(GUtPrinterLog::LEVEL_DEBUG, "dropped below minLevel");
    log.Print(GUtPrinterLog::LEVEL_TRACE, "trace %d", 5);
    log.Log("loaded %s", "table");
    log.Error("broken %s", "file");
    log.Print(GUtPrinterLog::LEVEL_LOG, "%s", ""); // empty: dropped
    log.Print(7, "out of range");
    EXPECT_EQ(testing::internal::GetCapturedStdout(),
              std::string(kPrefix) + "[TRACE][sys]trace 5\n" + kPrefix + "[LOG][sys]loaded table\n");
    EXPECT_EQ(
        CCapture::Take(),
        (std::vector<std::string>{"debug|" + std::string(kPrefix) + "[TRACE][sys]trace 5\n",
                                  "debug|" + std::string(kPrefix) + "[LOG][sys]loaded table\n", "post|28|0|0",
                                  "box||" + std::string(kPrefix) + "[ERROR][sys]broken file\n"}));
    EXPECT_EQ(ReadFile(log.GetFilePath()),
              std::string(kPrefix) + "[LOG][sys]loaded table\n" + kPrefix + "[ERROR][sys]broken file\n");

    log.SetMinLevel(0);
    log.SetTag("phys");
    log.SetPrinters(GUtPrinterLog::LEVEL_DEBUG, GUtPrinterLog::PRINTER_DEBUG_OUTPUT);
    log.Print(GUtPrinterLog::LEVEL_DEBUG, "now %s", "shown");
    EXPECT_EQ(CCapture::Take(),
              (std::vector<std::string>{"debug|" + std::string(kPrefix) + "[DEBUG][phys]now shown\n"}));
}

TEST_F(GUtPrinterLogTest, SetPrintersReplacesAndAddsInFlagOrder)
{
    MakeLogFolder();
    GUtPrinterLog log(Program().c_str());
    log.SetPrinters(GUtPrinterLog::LEVEL_TRACE, 16 | 4 | 1);
    EXPECT_EQ(log.GetPrinterCount(GUtPrinterLog::LEVEL_TRACE), 3);
    log.Print(GUtPrinterLog::LEVEL_TRACE, "t");
    const std::string line = std::string(kPrefix) + "[TRACE][sys]t\n";
    EXPECT_EQ(CCapture::Take(), (std::vector<std::string>{"debug|" + line, "post|28|0|0", "box||" + line}));
    EXPECT_EQ(ReadFile(log.GetFilePath()), line);
    log.SetPrinters(GUtPrinterLog::LEVEL_TRACE, 0);
    log.Print(GUtPrinterLog::LEVEL_TRACE, "t");
    EXPECT_TRUE(CCapture::Take().empty());
}

TEST_F(GUtPrinterLogTest, AnErrorLongerThan1024BytesReachesAllPrinters)
{
    MakeLogFolder();
    GUtPrinterLog log(Program().c_str());
    std::vector<std::string> lines;
    log.AddPrinter(GUtPrinterLog::LEVEL_ERROR, std::make_unique<CRecordingPrinter>(lines));
    const std::string text(5000, 'q');
    log.Error("%s!", text.c_str());
    const std::string line = std::string(kPrefix) + "[ERROR][sys]" + text + "!\n";
    EXPECT_EQ(lines, (std::vector<std::string>{line}));
    EXPECT_EQ(CCapture::Take(), (std::vector<std::string>{"post|28|0|0", "box||" + line}));
    EXPECT_EQ(ReadFile(log.GetFilePath()), line);

    // Exactly at the edge of the stack buffer.
    lines.clear();
    log.Error("%s", std::string(1023, 'e').c_str());
    log.Error("%s", std::string(1024, 'f').c_str());
    ASSERT_EQ(lines.size(), 2u);
    EXPECT_EQ(lines[0], std::string(kPrefix) + "[ERROR][sys]" + std::string(1023, 'e') + "\n");
    EXPECT_EQ(lines[1], std::string(kPrefix) + "[ERROR][sys]" + std::string(1024, 'f') + "\n");
}

TEST_F(GUtPrinterLogTest, AFailedFileWriteIsReportedAtErrorOnce)
{
    GUtPrinterLog log(Program().c_str()); // no file of its own
    int iReadOnly = open("/dev/null", O_RDONLY);
    ASSERT_GE(iReadOnly, 0);
    std::vector<std::string> errors;
    log.SetPrinters(GUtPrinterLog::LEVEL_ERROR, 0);
    log.AddPrinter(GUtPrinterLog::LEVEL_ERROR, std::make_unique<CRecordingPrinter>(errors));
    log.SetPrinters(GUtPrinterLog::LEVEL_LOG, 0);
    log.AddPrinter(GUtPrinterLog::LEVEL_LOG, std::make_unique<FilePrinter>(log, iReadOnly));
    log.Log("lost");
    EXPECT_EQ(errors,
              (std::vector<std::string>{std::string(kPrefix) + "[ERROR][sys]Failed to write log file.\n\n"}));

    // A failing file printer at ERROR itself reports once, not for ever.
    errors.clear();
    log.AddPrinter(GUtPrinterLog::LEVEL_ERROR, std::make_unique<FilePrinter>(log, iReadOnly));
    log.Error("first");
    EXPECT_EQ(errors,
              (std::vector<std::string>{std::string(kPrefix) + "[ERROR][sys]first\n",
                                        std::string(kPrefix) + "[ERROR][sys]Failed to write log file.\n\n"}));
    close(iReadOnly);
}

TEST_F(GUtPrinterLogTest, SysLogNameAndPrinter)
{
    EXPECT_EQ(GUtPrinterLog::SysLogIdent("/opt/editor/Editor.bin"),
              GUtString(("Editor[" + std::to_string(getpid()) + "]").c_str()));
    EXPECT_EQ(GUtPrinterLog::SysLogIdent("tool"),
              GUtString(("tool[" + std::to_string(getpid()) + "]").c_str()));
    GUtPrinterLog log(Program().c_str());
    log.SetPrinters(GUtPrinterLog::LEVEL_LOG, GUtPrinterLog::PRINTER_SYSLOG);
    EXPECT_EQ(log.GetPrinterCount(GUtPrinterLog::LEVEL_LOG), 1);
    log.Log("syslog line from the printer log test");
    EXPECT_FALSE(GUtPrinterLog::IsDebuggerAttached());
}

TEST(GUtPrinterLogSingleton, EveryThreadGetsTheSameLog)
{
    std::vector<GUtPrinterLog*> seen(8, nullptr);
    std::vector<std::thread> threads;
    for (size_t i = 0; i < seen.size(); ++i)
    {
        threads.emplace_back([&seen, i] { seen[i] = &GUtPrinterLog::Get(); });
    }
    for (std::thread& thread : threads)
    {
        thread.join();
    }
    EXPECT_EQ(std::set<GUtPrinterLog*>(seen.begin(), seen.end()).size(), 1u);
    EXPECT_EQ(seen[0], &GUtPrinterLog::Get());
}

TEST(COutputDebugerPC, PrintsLinesToTheDebugOutputAndTheStream)
{
    CCapture capture;
    COutputDebuger& output = COutputDebugerPC::Get();
    output.Print("first");
    FILE* pStream = tmpfile();
    ASSERT_NE(pStream, nullptr);
    output.SetStream(pStream);
    output.Print("second");
    output.SetStream(nullptr);
    output.Print("third");
    EXPECT_EQ(CCapture::Take(),
              (std::vector<std::string>{"debug|first\n", "debug|second\n", "debug|third\n"}));
    rewind(pStream);
    char acLine[64] = {};
    ASSERT_NE(fgets(acLine, sizeof(acLine), pStream), nullptr);
    EXPECT_STREQ(acLine, "second\n");
    EXPECT_EQ(fgets(acLine, sizeof(acLine), pStream), nullptr);
    fclose(pStream);
}
