#include "Utils/Utility/GUtDebug.h"
#include "Utils/Utility/tests/DiagTestSupport.h"

#include <gtest/gtest.h>

#include <csignal>
#include <memory>
#include <thread>
#include <unistd.h>

using namespace DiagTest;

namespace
{
// The process-wide log writes below the working folder (the build folder) while these tests
// run, into a folder of its own.
class CLogEnvironment final : public ::testing::Environment
{
public:
    void SetUp() override { GUtLog::Get().SetBaseName("test_logs/debug_out"); }
    void TearDown() override { GUtLog::Get().CloseFiles(); }
};

::testing::Environment* const g_pLogEnvironment = ::testing::AddGlobalTestEnvironment(new CLogEnvironment);

const char kStamp[] = "TimeStamp - 2024-3-5 7:8:9 - \n";

class GUtLogTest : public ::testing::Test
{
protected:
    void SetUp() override { m_pLog = std::make_unique<GUtLog>(Base().c_str()); }
    void TearDown() override { m_pLog.reset(); }

    std::string Base() const { return m_dir / "debug_out"; }
    std::string File(const char* pcName) const { return ReadFile(m_dir / pcName); }
    GUtLog& Log() { return *m_pLog; }

    CTempDir m_dir;
    CCapture m_capture;
    CClockScope m_clock;
    std::unique_ptr<GUtLog> m_pLog;
};
} // namespace

// ---------------------------------------------------------------------------------------
// Main file, time stamps and roll-over

TEST_F(GUtLogTest, FirstLineOfARunIsPrecededByATimeStamp)
{
    Log().DisplayMsg(false, 4, "Title", "value %d", 5);
    EXPECT_EQ(File("debug_out.log"), std::string(kStamp) + "Title value 5\n");
    EXPECT_EQ(CCapture::Console(), "Title value 5\n");
    EXPECT_EQ(m_dir.Files(), (std::vector<std::string>{"debug_out.log"}));
}

TEST_F(GUtLogTest, TimeStampEvery26LinesAndAfterMoreThanFiveMinutes)
{
    std::string expected;
    for (int i = 0; i < 60; ++i)
    {
        Log().DisplayMsg(false, "L", "%d", i);
        expected += (i % 26 == 0 ? kStamp : "") + std::string("L ") + std::to_string(i) + "\n";
    }
    EXPECT_EQ(File("debug_out.log"), expected);

    // Exactly 300 seconds since the last stamp: none yet.
    m_clock.Clock().Advance(300000.0);
    Log().DisplayMsg(false, "L", "at 300 s");
    expected += "L at 300 s\n";
    EXPECT_EQ(File("debug_out.log"), expected);

    GUtLocalTime later;
    later.iYear = 2024;
    later.iMonth = 12;
    later.iDay = 31;
    later.iHour = 23;
    later.iMinute = 59;
    later.iSecond = 58;
    m_clock.Clock().SetLocalTime(later);
    m_clock.Clock().Advance(1.0);
    Log().DisplayMsg(false, "L", "past 300 s");
    Log().DisplayMsg(false, "L", "next");
    expected += "TimeStamp - 2024-12-31 23:59:58 - \nL past 300 s\nL next\n";
    EXPECT_EQ(File("debug_out.log"), expected);
}

TEST_F(GUtLogTest, MainLogMovesToNumberedFileOnceItHoldsMoreThan100000Bytes)
{
    // Four lines that, with the first stamp (30 bytes), fill the file to exactly 100000 bytes.
    const int aiLengths[4] = {24990, 24990, 24989, 24989};
    for (int iLength : aiLengths)
    {
        Log().DisplayMsg(false, "T", "%s", std::string(static_cast<size_t>(iLength), 'x').c_str());
    }
    ASSERT_EQ(File("debug_out.log").size(), 100000u);
    Log().DisplayMsg(false, "T", "a"); // 100000 is not past the limit
    EXPECT_EQ(File("debug_out.log").size(), 100004u);
    EXPECT_EQ(m_dir.Files(), (std::vector<std::string>{"debug_out.log"}));
    Log().DisplayMsg(false, "T", "b");
    EXPECT_EQ(File("debug_out.log").size(), 100004u);
    EXPECT_EQ(File("debug_out_000.log"), "T b\n");
}

TEST_F(GUtLogTest, RollOverNumbersWrapAfter099AndOverwriteTheOldFile)
{
    Log().SetMaxFileSize(1); // every line after the first moves on
    for (int i = 0; i < 102; ++i)
    {
        Log().DisplayMsg(false, "L", "%d", i);
    }
    std::vector<std::string> expected = {"debug_out.log"};
    for (int i = 0; i < 100; ++i)
    {
        char acName[32];
        snprintf(acName, sizeof(acName), "debug_out_%03d.log", i);
        expected.push_back(acName);
    }
    std::sort(expected.begin(), expected.end());
    EXPECT_EQ(m_dir.Files(), expected);
    EXPECT_EQ(File("debug_out.log"), std::string(kStamp) + "L 0\n");
    EXPECT_EQ(File("debug_out_000.log"), "L 101\n"); // truncated and written again
    EXPECT_EQ(File("debug_out_099.log"), "L 100\n");
    EXPECT_EQ(File("debug_out_025.log"), std::string(kStamp) + "L 26\n");
}

TEST_F(GUtLogTest, MaxIndexAndMaxFileSizeAreSettings)
{
    Log().SetMaxFileSize(1);
    Log().SetMaxIndex(2);
    for (int i = 0; i < 6; ++i)
    {
        Log().DisplayMsg(false, "L", "%d", i);
    }
    EXPECT_EQ(m_dir.Files(), (std::vector<std::string>{"debug_out.log", "debug_out_000.log",
                                                       "debug_out_001.log", "debug_out_002.log"}));
    EXPECT_EQ(File("debug_out_000.log"), "L 4\n");
    EXPECT_EQ(File("debug_out_001.log"), "L 5\n");

    // 0 switches roll-over off.
    GUtLog other((m_dir / "other").c_str());
    other.SetMaxFileSize(0);
    for (int i = 0; i < 3; ++i)
    {
        other.DisplayMsg(false, "L", "%d", i);
    }
    EXPECT_EQ(File("other.log"), std::string(kStamp) + "L 0\nL 1\nL 2\n");
}

// ---------------------------------------------------------------------------------------
// Level files

TEST_F(GUtLogTest, LevelsZeroToTwoAlsoGoToTheirOwnFiles)
{
    Log().DisplayMsg(false, 1, "E", "bad %s", "thing");
    Log().DisplayMsg(false, 0, "C", "dead");
    Log().DisplayMsg(false, 2, "W", "hmm");
    Log().DisplayMsg(false, 3, "N", "note");
    EXPECT_EQ(m_dir.Files(), (std::vector<std::string>{"debug_out.log", "debug_outEr0.log",
                                                       "debug_outSd0.log", "debug_outWr0.log"}));
    EXPECT_EQ(File("debug_outEr0.log"), "2024-3-5 7:8:9 : E bad thing\n");
    EXPECT_EQ(File("debug_outSd0.log"), "2024-3-5 7:8:9 : C dead\n");
    EXPECT_EQ(File("debug_outWr0.log"), "2024-3-5 7:8:9 : W hmm\n");
    EXPECT_EQ(File("debug_out.log"), std::string(kStamp) + "E bad thing\nC dead\nW hmm\nN note\n");
}

TEST_F(GUtLogTest, LevelFilesRollOverWithUnpaddedNumbersAndWrap)
{
    Log().SetMaxFileSize(10);
    Log().SetMaxIndex(2);
    Log().EnableMainFile(false);
    for (int i = 0; i < 4; ++i)
    {
        Log().DisplayMsg(false, 1, "E", "%d", i);
    }
    EXPECT_EQ(m_dir.Files(),
              (std::vector<std::string>{"debug_outEr0.log", "debug_outEr1.log", "debug_outEr2.log"}));
    EXPECT_EQ(File("debug_outEr0.log"), "2024-3-5 7:8:9 : E 3\n");
    EXPECT_EQ(File("debug_outEr2.log"), "2024-3-5 7:8:9 : E 2\n");
}

TEST_F(GUtLogTest, SwitchesKeepConsoleAndFilesQuiet)
{
    Log().EnableConsole(false);
    Log().EnableErrorFile(false);
    Log().DisplayMsg(false, 1, "E", "x");
    EXPECT_EQ(CCapture::Console(), "");
    EXPECT_EQ(m_dir.Files(), (std::vector<std::string>{"debug_out.log"}));
}

// ---------------------------------------------------------------------------------------
// Thresholds and channels

TEST_F(GUtLogTest, ThresholdsFilterConsoleFilesAndHook)
{
    std::vector<std::string> hooked;
    Log().SetOutputHook([&](int iLevel, int, const char* pcTitle, const char* pcText)
                        { hooked.push_back(std::to_string(iLevel) + pcTitle + pcText); });

    Log().DisplayMsg(false, 5, "D", "dropped");
    Log().DisplayMsg(false, 4, "N", "normal"); // file yes, hook no
    Log().DisplayMsg(false, 3, "O", "notice"); // both
    EXPECT_EQ(CCapture::Console(), "N normal\nO notice\n");
    EXPECT_EQ(hooked, (std::vector<std::string>{"3Onotice"}));

    Log().SetFileThreshold(2);
    CCapture::Take();
    Log().DisplayMsg(false, 3, "O", "hook only");
    Log().DisplayMsg(false, 4, "N", "nowhere");
    EXPECT_EQ(CCapture::Console(), "");
    EXPECT_EQ(hooked.back(), "3Ohook only");
    EXPECT_EQ(hooked.size(), 2u);

    {
        GUtLogThresholdScope scope(5, -1, Log());
        EXPECT_EQ(Log().GetFileThreshold(), 5);
        EXPECT_EQ(Log().GetHookThreshold(), 3);
        Log().DisplayMsg(false, 5, "D", "in scope");
    }
    EXPECT_EQ(Log().GetFileThreshold(), 2);
    EXPECT_EQ(CCapture::Console(), "D in scope\n");
    EXPECT_EQ(hooked.size(), 2u);

    // The default level follows the setting.
    Log().SetDefaultLevel(1);
    Log().DisplayMsg(false, "E", "default");
    EXPECT_EQ(hooked.back(), "1Edefault");
    EXPECT_EQ(File("debug_outEr0.log"), "2024-3-5 7:8:9 : E default\n");
}

TEST_F(GUtLogTest, LogDebugPassesOnlyThroughTheChannelForm)
{
    std::vector<std::string> hooked;
    Log().SetOutputHook(
        [&](int iLevel, int iScope, const char* pcTitle, const char* pcText)
        { hooked.push_back(std::to_string(iLevel) + "/" + std::to_string(iScope) + pcTitle + pcText); });
    Log().DisplayMsg(false, 5, "D", "level form");
    Log().DisplayMsg(LogDebug, "D", "channel %d", 5);
    EXPECT_EQ(CCapture::Console(), "D channel 5\n");
    EXPECT_EQ(hooked, (std::vector<std::string>{"5/0Dchannel 5"}));
    EXPECT_EQ(File("debug_out.log"), std::string(kStamp) + "D channel 5\n");
    // The channel's limits held only for the call.
    EXPECT_EQ(Log().GetFileThreshold(), 4);
    EXPECT_EQ(Log().GetHookThreshold(), 3);

    // A channel of the caller's: its scope reaches the hook, its newline switch the line.
    GUtLogChannel custom{7, 4, 4, 0, 4, 0, nullptr};
    Log().DisplayMsg(custom, "X", "no newline");
    EXPECT_EQ(hooked.back(), "4/7Xno newline");
    EXPECT_EQ(CCapture::Console(), "D channel 5\nX no newline");
}

TEST_F(GUtLogTest, ChannelTableMatchesTheLevels)
{
    const GUtLogChannel* apChannels[6] = {&LogCritical, &LogError,  &LogWarning,
                                          &LogNotice,   &LogNormal, &LogDebug};
    for (int i = 0; i < 6; ++i)
    {
        EXPECT_EQ(apChannels[i]->iLevel, i);
        EXPECT_EQ(apChannels[i]->iFileLevel, i == 5 ? 5 : 4);
        EXPECT_EQ(apChannels[i]->iHookLevel, i == 5 ? 5 : 3);
        EXPECT_EQ(apChannels[i]->bMessageBox, i == 0 ? 1 : 0);
        EXPECT_EQ(apChannels[i]->bAppendNewline, 1);
        EXPECT_EQ(apChannels[i]->pNext, nullptr);
    }
}

TEST_F(GUtLogTest, CriticalShowsABoxEvenWithEveryFileSwitchedOff)
{
    Log().EnableConsole(false);
    Log().EnableMainFile(false);
    Log().EnableCriticalFile(false);
    Log().DisplayMsg(LogCritical, "Cap", "boom %d", 1);
    EXPECT_EQ(CCapture::Take(), (std::vector<std::string>{"post|28|0|0", "box|Cap|boom 1"}));
    EXPECT_TRUE(m_dir.Files().empty());

    Log().EnableMessageBox(false);
    Log().DisplayMsg(LogCritical, "Cap", "quiet");
    EXPECT_TRUE(CCapture::Take().empty());
}

// ---------------------------------------------------------------------------------------
// Hooks, colours, null arguments

TEST_F(GUtLogTest, HooksSeeTheMessageInOrderWithTheirArguments)
{
    Log().SetPreHook(
        [](bool bBox, int iLevel, const char* pcStamp, const char* pcTitle, const char* pcText)
        {
            Events().Add("pre|" + std::to_string(bBox) + "|" + std::to_string(iLevel) + "|" + pcStamp + "|" +
                         pcTitle + "|" + pcText);
        });
    Log().SetOutputHook(
        [](int iLevel, int iScope, const char* pcA, const char* pcB)
        {
            Events().Add("out|" + std::to_string(iLevel) + "|" + std::to_string(iScope) + "|" + pcA + "|" +
                         (pcB ? pcB : "null"));
        });
    Log().DisplayMsg(true, 2, "T", "msg");
    EXPECT_EQ(CCapture::Take(),
              (std::vector<std::string>{"colour|6", "pre|1|2||T|msg", "post|28|0|0", "box|T|msg",
                                        "print|T msg\n", "out|2|0|T|msg", "colour|7"}));

    // A format hook shapes the line; the output hook then gets the line alone.
    int iAsked = 0;
    Log().SetFormatHook(
        [&](int iLevel, int iScope, GUtString& format)
        {
            ++iAsked;
            format = "<%1> %2 (%2) 100%";
            return iLevel == 2 && iScope == 0;
        });
    Log().DisplayMsg(false, 2, "T", "again");
    EXPECT_EQ(CCapture::Take(),
              (std::vector<std::string>{"colour|6", "pre|0|2|2024-3-5 7:8:9|T|again",
                                        "print|<T> again (again) 100%\n",
                                        "out|2|0|<T> again (again) 100%\n|null", "colour|7"}));
    EXPECT_EQ(iAsked, 1);
    EXPECT_EQ(File("debug_outWr0.log"), "2024-3-5 7:8:9 : T msg\n2024-3-5 7:8:9 : <T> again (again) 100%\n");

    // A format hook that declines leaves the plain line; an empty pre-hook is the forwarder.
    Log().SetFormatHook([](int, int, GUtString&) { return false; });
    Log().SetPreHook(nullptr);
    Log().DisplayMsg(false, 2, "T", "plain");
    EXPECT_EQ(CCapture::Take(),
              (std::vector<std::string>{"colour|6", "print|T plain\n", "out|2|0|T|plain", "colour|7"}));
}

TEST_F(GUtLogTest, OnlyTheLevelFormColoursTheConsole)
{
    const int aiExpected[5] = {4, 4, 6, 7, 7};
    for (int iLevel = 0; iLevel <= 5; ++iLevel)
    {
        Log().DisplayMsg(false, iLevel, "T", "x");
        std::vector<std::string> events = CCapture::Take();
        if (iLevel == 5)
        {
            EXPECT_TRUE(events.empty()); // dropped before anything happens
            continue;
        }
        ASSERT_GE(events.size(), 2u);
        EXPECT_EQ(events.front(), "colour|" + std::to_string(aiExpected[iLevel])) << iLevel;
        EXPECT_EQ(events.back(), "colour|7");
    }
    Log().DisplayMsg(false, "T", "default form");
    Log().DisplayMsg(LogError, "T", "channel form");
    for (const std::string& event : CCapture::Take())
    {
        EXPECT_EQ(event.find("colour|"), std::string::npos) << event;
    }
}

TEST_F(GUtLogTest, NullTitleOrFormatIsReportedThroughTheLogItself)
{
    const std::vector<std::string> kReport = {
        "post|28|0|0", "box|GUtLog::DisplayMsg() error !|argument 'title' or 'describe' can't be NULL !!",
        "print|GUtLog::DisplayMsg() error ! argument 'title' or 'describe' can't be NULL !!\n"};
    Log().DisplayMsg(false, 1, nullptr, "x");
    EXPECT_EQ(CCapture::Take(), kReport);
    Log().DisplayMsg(false, "title", nullptr);
    EXPECT_EQ(CCapture::Take(), kReport);
    Log().DisplayMsg(LogError, nullptr, "x");
    EXPECT_EQ(CCapture::Take(), kReport);
}

TEST_F(GUtLogTest, AFileThatCannotBeOpenedIsReportedOnTheConsoleAndSkipped)
{
    // A plain file where the log's folder should be.
    {
        std::ofstream(m_dir / "blocker") << "x";
    }
    GUtLog log((m_dir / "blocker/debug_out").c_str());
    log.DisplayMsg(false, 4, "T", "still on the console");
    std::string console = CCapture::Console();
    EXPECT_NE(console.find("T still on the console\n"), std::string::npos);
    EXPECT_NE(console.find("GUtFile::GUtFile() open file " + (m_dir / "blocker/debug_out.log") + " Fail!\n"),
              std::string::npos);
    EXPECT_EQ(m_dir.Files(), (std::vector<std::string>{"blocker"}));
}

TEST_F(GUtLogTest, TheDefaultBaseNameWritesIntoTheWorkingFolder)
{
    char acOld[4096];
    ASSERT_NE(getcwd(acOld, sizeof(acOld)), nullptr);
    ASSERT_EQ(chdir(m_dir.Path().c_str()), 0);
    {
        GUtLog log("debug_out");
        EXPECT_EQ(log.GetBaseName(), "debug_out");
        log.DisplayMsg(false, 1, "E", "here");
    }
    ASSERT_EQ(chdir(acOld), 0);
    EXPECT_EQ(m_dir.Files(), (std::vector<std::string>{"debug_out.log", "debug_outEr0.log"}));
}

TEST_F(GUtLogTest, SetBaseNameStartsNewFiles)
{
    Log().DisplayMsg(false, "A", "first");
    Log().SetBaseName((m_dir / "second").c_str());
    Log().DisplayMsg(false, "B", "second");
    EXPECT_EQ(File("debug_out.log"), std::string(kStamp) + "A first\n");
    EXPECT_EQ(File("second.log"), "B second\n");
}

TEST_F(GUtLogTest, LongTextIsCutAt32KilobytesWithoutHarm)
{
    std::string huge(40000, 'y');
    Log().DisplayMsg(false, "T", "%s", huge.c_str());
    std::string file = File("debug_out.log");
    EXPECT_EQ(file.size(), strlen(kStamp) + 2 + (GUtLog::TEXT_LENGTH - 1) + 1);
}

TEST_F(GUtLogTest, ALevelFiveMessageReturnsWhileAnotherThreadHoldsTheLog)
{
    GUtEvent inside(true), release(true), done(true);
    Log().SetOutputHook(
        [&](int, int, const char*, const char*)
        {
            inside.Set();
            release.Wait(10000);
        });
    std::thread holder([&] { Log().DisplayMsg(false, 1, "E", "holding"); });
    ASSERT_TRUE(inside.Wait(10000));
    std::thread skipper(
        [&]
        {
            Log().DisplayMsg(false, 5, "D", "skipped");
            done.Set();
        });
    EXPECT_TRUE(done.Wait(10000)); // would time out if level 5 took the lock
    release.Set();
    holder.join();
    skipper.join();
}

TEST_F(GUtLogTest, ManyThreadsWriteWholeLines)
{
    Log().EnableConsole(false);
    std::vector<std::thread> threads;
    for (int t = 0; t < 4; ++t)
    {
        threads.emplace_back(
            [&, t]
            {
                for (int i = 0; i < 200; ++i)
                {
                    Log().DisplayMsg(false, i % 3, "T", "thread %d line %d", t, i);
                }
            });
    }
    for (std::thread& thread : threads)
    {
        thread.join();
    }
    std::istringstream lines(File("debug_out.log"));
    std::string line;
    int iLines = 0;
    while (std::getline(lines, line))
    {
        if (line.rfind("TimeStamp - ", 0) == 0)
        {
            continue;
        }
        EXPECT_EQ(line.rfind("T thread ", 0), 0u) << line;
        ++iLines;
    }
    EXPECT_EQ(iLines, 800);
}

// ---------------------------------------------------------------------------------------
// GUtOut and message boxes

TEST(GUtOut, StreamOperatorsAndDisplayMsg)
{
    CCapture capture;
    GUtOut out;
    out << 42 << " " << -7 << static_cast<const char*>(nullptr);
    EXPECT_EQ(CCapture::Console(), "42 -7(NULL)");
    CCapture::Take();

    std::string sink;
    out.SetSinkHook([&](const char* pcText) { sink = pcText; });
    out.DisplayMsg(true, "Ti", "v=%d", 3);
    EXPECT_EQ(sink, "Ti:v=3");
    EXPECT_EQ(CCapture::Take(), (std::vector<std::string>{"post|28|0|0", "box|Ti|v=3", "print|Ti v=3\n"}));

    out.DisplayMsg(false, "T", "%s", std::string(300, 'z').c_str()); // the buffer holds 255 characters
    EXPECT_EQ(CCapture::Console(), "T " + std::string(255, 'z') + "\n");
    CCapture::Take();

    out.DisplayMsg(false, nullptr, "x");
    EXPECT_EQ(
        CCapture::Take(),
        (std::vector<std::string>{
            "post|28|0|0", "box|GUtOut::DisplayMsg() error !|argument 'title' or 'describe' can't be NULL !!",
            "print|GUtOut::DisplayMsg() error ! argument 'title' or 'describe' can't be NULL !!\n"}));
}

TEST(GUtOut, DebugOutputAndBoxesFallBackToStandardErrorByDefault)
{
    testing::internal::CaptureStderr();
    GUtOutputDebugString("to the debugger\n");
    GUtShowMessageBox("Caption", "Body");
    GUtShowMessageBox("", "No caption");
    EXPECT_EQ(testing::internal::GetCapturedStderr(),
              "to the debugger\n[message box] Caption: Body\n[message box] No caption\n");
}

// ---------------------------------------------------------------------------------------
// Assertions

namespace
{
void ReportFailuresAndExit(int)
{
    char acText[64];
    int iLength = snprintf(acText, sizeof(acText), "failures %d\n", GUtLog::AssertionFailures());
    if (write(STDERR_FILENO, acText, static_cast<size_t>(iLength)) < 0)
    {
        _exit(8);
    }
    _exit(7);
}
} // namespace

TEST(GUtAssertDeathTest, AFailedAssertionShowsItsTextAndAborts)
{
    GTEST_FLAG_SET(death_test_style, "threadsafe");
    EXPECT_EXIT(
        {
            GUtLog::Get().EnableMainFile(false);
            GUtLog::Get().EnableCriticalFile(false);
            GUT_ASSERT(1 + 1 == 3 && "arithmetic still works");
        },
        testing::KilledBySignal(SIGABRT),
        R"(\[message box\] Assertion failed, exp: "1 \+ 1 == 3 && "arithmetic still works"" in [^ ]*GUtDebugTest\.cpp at line [0-9]+)");
}

TEST(GUtAssertDeathTest, AFailedAssertionIsCountedBeforeTheProcessEnds)
{
    GTEST_FLAG_SET(death_test_style, "threadsafe");
    EXPECT_EXIT(
        {
            GUtLog::Get().EnableMainFile(false);
            GUtLog::Get().EnableCriticalFile(false);
            signal(SIGABRT, &ReportFailuresAndExit);
            GUT_ASSERT(2 < 1);
        },
        testing::ExitedWithCode(7), "failures 1");
}

TEST(GUtAssertDeathTest, AnAssertionUnderLoweredThresholdsStillReachesTheFiles)
{
    // The fast style forks without running the test again, so the child writes into this
    // test's folder and clock.
    GTEST_FLAG_SET(death_test_style, "fast");
    CTempDir dir;
    CClockScope clock;
    EXPECT_EXIT(
        {
            GUtLog::Get().SetBaseName((dir / "debug_out").c_str());
            GUtLogThresholdScope lowered(0, 0);
            GUT_ASSERT(false);
        },
        testing::KilledBySignal(SIGABRT), "Assertion failed");
    GTEST_FLAG_SET(death_test_style, "threadsafe");
    const std::string head = " Assertion failed, exp: \"false\" in " + std::string(__FILE__) + " at line ";
    std::string main = ReadFile(dir / "debug_out.log");
    std::string critical = ReadFile(dir / "debug_outSd0.log");
    EXPECT_EQ(main.rfind(kStamp + head, 0), 0u) << main;
    EXPECT_EQ(critical.rfind("2024-3-5 7:8:9 : " + head, 0), 0u) << critical;
    EXPECT_EQ(main.substr(main.size() - 2), "\n\n");
    EXPECT_EQ(main.substr(strlen(kStamp)), critical.substr(strlen("2024-3-5 7:8:9 : ")));
}
