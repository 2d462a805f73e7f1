#include "engine/ext/Console.h"
#include "engine/ext/Clipboard.h"
#include "engine/ext/Plotter2D.h"

#include <gtest/gtest.h>

#include <string>
#include <vector>

using Kestrin::Ext::CConsole;
using Kestrin::Ext::GetClipboard;
using Kestrin::Ext::IConsoleCallback;

namespace
{
class CRecordingCallback final : public IConsoleCallback
{
public:
    explicit CRecordingCallback(CConsole* pConsole) : m_pConsole(pConsole) {}
    void OnCommand(const char* pcLine) override
    {
        commands.push_back(pcLine);
        // Commands run outside the console's lock: printing from one must work.
        m_pConsole->Printf("ran %s\n", pcLine);
    }
    void OnPrint(const char* pcText) override { prints.push_back(pcText); }

    std::vector<std::string> commands;
    std::vector<std::string> prints;

private:
    CConsole* m_pConsole;
};

void Type(CConsole& console, const std::string& text)
{
    for (char c : text)
    {
        console.OnChar(static_cast<unsigned char>(c));
    }
}

void Enter(CConsole& console, const std::string& text)
{
    Type(console, text);
    console.OnChar(13);
}

void Open(CConsole& console)
{
    console.OnChar('\\');
}

std::vector<std::string> Texts(const std::vector<CConsole::SLine>& lines)
{
    std::vector<std::string> texts;
    for (const CConsole::SLine& line : lines)
    {
        texts.push_back(line.strText);
    }
    return texts;
}

constexpr uint32_t PRIOR = 33, NEXT = 34, END = 35, HOME = 36, LEFT = 37, UP = 38, RIGHT = 39, DOWN = 40,
                   DEL = 46;
} // namespace

TEST(Console, BackslashCyclesTheStatesAndIsNeverTyped)
{
    CConsole console;
    EXPECT_EQ(console.GetState(), 0);
    Type(console, "ab"); // hidden: nothing is typed
    EXPECT_EQ(console.GetInput(), "");
    console.OnChar('\\');
    EXPECT_EQ(console.GetState(), 1);
    Type(console, "a\\");
    EXPECT_EQ(console.GetState(), 2);
    Type(console, "b");
    console.OnChar('\\');
    EXPECT_EQ(console.GetState(), 0);
    console.OnChar('\\');
    EXPECT_EQ(console.GetInput(), "a");
    console.Tick(0.5f);
    EXPECT_FLOAT_EQ(console.GetIdleTime(), 0.5f);
    console.OnChar('\\'); // clears the idle time in every state
    EXPECT_FLOAT_EQ(console.GetIdleTime(), 0.0f);
}

TEST(Console, EditingKeysMoveTheCursorAndEditAtIt)
{
    CConsole console;
    Open(console);
    Type(console, "Scne(1)");
    EXPECT_EQ(console.GetCursor(), 7);
    EXPECT_TRUE(console.OnKeyDown(HOME));
    EXPECT_EQ(console.GetCursor(), 0);
    console.OnKeyDown(LEFT); // stays at 0
    EXPECT_EQ(console.GetCursor(), 0);
    console.OnKeyDown(RIGHT);
    console.OnKeyDown(RIGHT);
    Type(console, "e");
    EXPECT_EQ(console.GetInput(), "Scene(1)");
    EXPECT_EQ(console.GetCursor(), 3);
    console.OnKeyDown(DEL); // removes the character at the cursor
    EXPECT_EQ(console.GetInput(), "Scee(1)");
    console.OnChar(8); // backspace removes the one before it
    EXPECT_EQ(console.GetInput(), "Sce(1)");
    EXPECT_EQ(console.GetCursor(), 2);
    console.OnKeyDown(END);
    EXPECT_EQ(console.GetCursor(), 6);
    console.OnKeyDown(RIGHT); // stays at the end
    console.OnKeyDown(DEL);   // nothing at the end
    EXPECT_EQ(console.GetCursor(), 6);
    EXPECT_EQ(console.GetInput(), "Sce(1)");
    console.OnChar(10); // line feed: ignored
    console.OnChar(0);  // other control characters and non-ASCII are not typed
    console.OnChar(27);
    console.OnChar(0x4E2D);
    EXPECT_EQ(console.GetInput(), "Sce(1)");
    EXPECT_EQ(console.GetCursor(), 6);
    console.OnKeyDown(HOME);
    console.OnChar(8); // nothing before the cursor
    EXPECT_EQ(console.GetInput(), "Sce(1)");
}

TEST(Console, KeysBelongToTheConsoleOnlyWhileItIsOpenForInput)
{
    CConsole console;
    EXPECT_FALSE(console.OnKeyDown(HOME));
    EXPECT_FALSE(console.OnKeyDown(0));
    console.OnChar('\\');
    EXPECT_TRUE(console.OnKeyDown(0));
    EXPECT_TRUE(console.OnKeyDown(65)); // any other key is taken and does nothing
    console.OnChar('\\');
    EXPECT_EQ(console.GetState(), 2);
    EXPECT_FALSE(console.OnKeyDown(HOME));
}

TEST(Console, TypingStopsSilentlyAtOneHundredCharacters)
{
    CConsole console;
    Open(console);
    Type(console, std::string(120, 'x'));
    EXPECT_EQ(console.GetInput().size(), 100u);
    console.OnKeyDown(HOME);
    Type(console, "y");
    EXPECT_EQ(console.GetInput()[0], 'x');
    // A paste stops at the same limit; line breaks become blanks, and '\' may enter this way.
    CConsole pasted;
    Open(pasted);
    GetClipboard()->SetText("print(\"a\\b\")\r\nx");
    pasted.OnChar(22);
    EXPECT_EQ(pasted.GetInput(), "print(\"a\\b\")  x");
    pasted.Paste(std::string(200, 'z').c_str());
    EXPECT_EQ(pasted.GetInput().size(), 100u);
}

TEST(Console, EnterPrintsQueuesAndRunsTheLineOnTheNextTick)
{
    CConsole console;
    Open(console);
    CRecordingCallback callback(&console);
    console.SetCallback(&callback);
    for (int i = 0; i < 25; ++i)
    {
        console.Print(0xffff00, "filler\n");
    }
    console.OnKeyDown(PRIOR);
    EXPECT_EQ(console.GetScrollOffset(), 10);
    Enter(console, "Fps(30)");
    EXPECT_EQ(console.GetInput(), "");
    EXPECT_EQ(console.GetCursor(), 0);
    EXPECT_EQ(console.GetScrollOffset(), 0);
    EXPECT_EQ(console.GetHistoryIndex(), -1);
    EXPECT_TRUE(callback.commands.empty()); // nothing runs before the tick
    EXPECT_EQ(callback.prints.back(), "Fps(30)\n");
    console.Tick(0.016f);
    ASSERT_EQ(callback.commands.size(), 1u);
    EXPECT_EQ(callback.commands[0], "Fps(30)");
    const std::vector<CConsole::SLine> lines = console.GetLines();
    ASSERT_GE(lines.size(), 3u);
    EXPECT_EQ(lines[lines.size() - 3].strText, "Fps(30)");
    EXPECT_EQ(lines[lines.size() - 3].uColour, 0xffffffu);
    EXPECT_EQ(lines[lines.size() - 2].strText, "ran Fps(30)");
    EXPECT_EQ(lines.back().strText, ""); // the line the next text continues
    console.Tick(0.016f);
    EXPECT_EQ(callback.commands.size(), 1u); // the queue was emptied
}

TEST(Console, HistoryKeepsThirtyNewestFirstAndUpDownWrap)
{
    CConsole console;
    Open(console);
    console.OnKeyDown(UP); // empty history: nothing happens
    console.OnKeyDown(DOWN);
    EXPECT_EQ(console.GetInput(), "");
    EXPECT_EQ(console.GetHistoryIndex(), -1);
    for (int i = 1; i <= 31; ++i)
    {
        Enter(console, "line" + std::to_string(i));
    }
    const std::vector<std::string> history = console.GetHistory();
    ASSERT_EQ(history.size(), 30u);
    EXPECT_EQ(history.front(), "line31");
    EXPECT_EQ(history.back(), "line2"); // the 31st entry pushed the oldest out

    console.OnKeyDown(UP); // from rest: the newest
    EXPECT_EQ(console.GetInput(), "line31");
    EXPECT_EQ(console.GetCursor(), 6);
    console.OnKeyDown(UP);
    EXPECT_EQ(console.GetInput(), "line30");
    console.OnKeyDown(DOWN);
    console.OnKeyDown(DOWN); // below the newest wraps to the oldest
    EXPECT_EQ(console.GetInput(), "line2");
    console.OnKeyDown(UP); // past the oldest wraps to the newest
    EXPECT_EQ(console.GetInput(), "line31");

    CConsole fresh;
    Open(fresh);
    Enter(fresh, "a");
    Enter(fresh, "b");
    fresh.OnKeyDown(DOWN); // from rest, down shows the oldest
    EXPECT_EQ(fresh.GetInput(), "a");
}

TEST(Console, TabCompletesFromTheNewestMatchingHistoryLineIgnoringCase)
{
    CConsole console;
    Open(console);
    Enter(console, "ShowFps(1)");
    Enter(console, "Scene(\"a\")");
    Enter(console, "showfps(0)");
    Type(console, "SHOW");
    console.OnChar(9);
    EXPECT_EQ(console.GetInput(), "showfps(0)");
    EXPECT_EQ(console.GetCursor(), 10);
    console.OnKeyDown(HOME);
    for (int i = 0; i < 10; ++i)
    {
        console.OnKeyDown(DEL);
    }
    Type(console, "sc");
    console.OnChar(9);
    EXPECT_EQ(console.GetInput(), "Scene(\"a\")");
    Type(console, "zz");
    console.OnChar(9); // no match: the input stays
    EXPECT_EQ(console.GetInput(), "Scene(\"a\")zz");
}

TEST(Console, PrintBreaksAtLineFeedsAndAfterSeventyNineCharacters)
{
    CConsole console;
    console.Print(0xff0000, (std::string(79, 'a') + std::string(81, 'b') + "\ncd").c_str());
    std::vector<std::string> texts = Texts(console.GetLines());
    ASSERT_EQ(texts.size(), 4u);
    EXPECT_EQ(texts[0], std::string(79, 'a'));
    EXPECT_EQ(texts[1], std::string(79, 'b'));
    EXPECT_EQ(texts[2], "bb");
    EXPECT_EQ(texts[3], "cd");
    console.Print(0x00ff00, "ef"); // continues the current line, which keeps its colour
    std::vector<CConsole::SLine> lines = console.GetLines();
    EXPECT_EQ(lines.back().strText, "cdef");
    EXPECT_EQ(lines.back().uColour, 0xff0000u);
    console.Print(0xffff00, "\n");
    console.Print(0xffffff, "white"); // an empty line takes the colour of the text that starts it
    lines = console.GetLines();
    EXPECT_EQ(lines.back().strText, "white");
    EXPECT_EQ(lines.back().uColour, 0xffffffu);

    CConsole printf;
    printf.Printf("%s", std::string(600, 'p').c_str()); // formatted into 512 bytes
    int iTotal = 0;
    for (const std::string& strText : Texts(printf.GetLines()))
    {
        iTotal += static_cast<int>(strText.size());
    }
    EXPECT_EQ(iTotal, 511);
}

TEST(Console, TheBufferKeepsTwoHundredLinesAndScrollingIsClamped)
{
    CConsole console;
    Open(console);
    for (int i = 0; i < 250; ++i)
    {
        console.Print(0xffffff, ("l" + std::to_string(i) + "\n").c_str());
    }
    std::vector<std::string> texts = Texts(console.GetLines());
    ASSERT_EQ(texts.size(), 200u);
    EXPECT_EQ(texts.front(), "l51");
    EXPECT_EQ(texts[198], "l249");
    for (int i = 0; i < 30; ++i)
    {
        console.OnKeyDown(PRIOR);
    }
    EXPECT_EQ(console.GetScrollOffset(), 190); // line count minus visible lines
    console.OnKeyDown(NEXT);
    EXPECT_EQ(console.GetScrollOffset(), 180);
    std::vector<std::string> visible = Texts(console.GetVisibleBufferLines());
    ASSERT_EQ(visible.size(), 10u);
    EXPECT_EQ(visible.front(), "l61");
    for (int i = 0; i < 30; ++i)
    {
        console.OnKeyDown(NEXT);
    }
    EXPECT_EQ(console.GetScrollOffset(), 0);

    CConsole few;
    Open(few);
    few.Print(0xffffff, "one\n");
    few.OnKeyDown(PRIOR); // fewer lines than the window: stays at 0
    EXPECT_EQ(few.GetScrollOffset(), 0);
}

TEST(Console, ControlCCopiesTheVisibleLinesJoinedWithCarriageReturnLineFeed)
{
    CConsole console;
    Open(console);
    console.SetVisibleLines(3);
    console.Print(0xffffff, "a\nb\nc\nd");
    console.OnChar(3);
    EXPECT_EQ(GetClipboard()->GetText(), "b\r\nc\r\nd\r\n");
    EXPECT_EQ(console.GetInput(), "");
}

TEST(Console, DrawShowsLinesInTheirColoursAndTheInputLineOnlyWhenOpenForInput)
{
    Kestrin::Plotter::CPlotter2D plotter;
    plotter.SetViewport(0, 0, 640, 480);
    CConsole console;
    console.SetVisibleLines(2);
    console.Print(0xff0000, "red\n");
    console.Print(0x00ff00, "green");
    console.Draw(plotter);
    EXPECT_TRUE(plotter.Pending().items.empty()); // hidden
    console.OnChar('\\');
    Type(console, "ab");
    console.OnKeyDown(LEFT);
    console.Draw(plotter);
    const auto& items = plotter.Pending().items;
    ASSERT_EQ(items.size(), 5u); // background, two lines, input, cursor
    EXPECT_EQ(items[1].strText, "red");
    EXPECT_EQ(items[1].uColour, 0xff0000u);
    EXPECT_EQ(items[2].strText, "green");
    EXPECT_EQ(items[3].strText, "> ab");
    EXPECT_FLOAT_EQ(items[4].fX, 8.0f + 8.0f * 3); // under the 'b'
    plotter.Flush();
    console.OnChar('\\'); // output only: no input line
    console.Draw(plotter);
    EXPECT_EQ(plotter.Pending().items.size(), 3u);
}
