#include "editor_common/EditorConfig.h"
#include "editor_common/EditorWindow.h"

#include <gtest/gtest.h>

#include <cstdio>
#include <filesystem>
#include <fstream>
#include <sstream>

namespace
{
std::string ReadFile(const std::string& path)
{
    std::ifstream in(path, std::ios::binary);
    std::ostringstream s;
    s << in.rdbuf();
    return s.str();
}

void WriteFile(const std::string& path, const std::string& text)
{
    std::ofstream out(path, std::ios::binary);
    out << text;
}

class EditorConfigTest : public ::testing::Test
{
protected:
    void SetUp() override
    {
        m_dir = std::filesystem::temp_directory_path() /
                ("editorcfg_" + std::to_string(::testing::UnitTest::GetInstance()->random_seed()) + "_" +
                 ::testing::UnitTest::GetInstance()->current_test_info()->name());
        std::filesystem::create_directories(m_dir);
    }
    void TearDown() override { std::filesystem::remove_all(m_dir); }
    std::string Path(const char* pcName) const { return (m_dir / pcName).string(); }

    std::filesystem::path m_dir;
};

// The document written at shut-down: sections in the fixed order, each by its owner.
void WriteShutDownDocument(CEditorConfig& config)
{
    config.CreateSection("MainWindow");
    config.WriteInt("X", 30);
    config.WriteInt("Y", -40);
    config.WriteInt("W", 640);
    config.WriteInt("H", 480);
    config.LeaveSection();
    for (const char* pcSection : {"CharacterEditor", "MaterialEditor", "SceneEditor", "FxEditor"})
    {
        config.CreateSection(pcSection);
        config.WriteInt("WindowX", 670);
        config.WriteBool("WindowTop", true);
        config.LeaveSection();
    }
    config.EnterSection("SceneEditor"); // the cursor is back at the document
    config.WriteString("ShaderPath", "..\\shader\\");
    config.WriteString("AudioPath", "");
    config.LeaveSection();
}
} // namespace

TEST_F(EditorConfigTest, SaveWritesSectionsInOrderAndRoundTripsByteForByte)
{
    CEditorConfig config;
    WriteShutDownDocument(config);
    ASSERT_TRUE(config.Save(Path("Editor.cfg").c_str()));
    const std::string first = ReadFile(Path("Editor.cfg"));
    EXPECT_EQ(first, "<MainWindow>\n"
                     "    <X>30</X>\n"
                     "    <Y>-40</Y>\n"
                     "    <W>640</W>\n"
                     "    <H>480</H>\n"
                     "</MainWindow>\n"
                     "<CharacterEditor>\n"
                     "    <WindowX>670</WindowX>\n"
                     "    <WindowTop>1</WindowTop>\n"
                     "</CharacterEditor>\n"
                     "<MaterialEditor>\n"
                     "    <WindowX>670</WindowX>\n"
                     "    <WindowTop>1</WindowTop>\n"
                     "</MaterialEditor>\n"
                     "<SceneEditor>\n"
                     "    <WindowX>670</WindowX>\n"
                     "    <WindowTop>1</WindowTop>\n"
                     "    <ShaderPath>..\\shader\\</ShaderPath>\n"
                     "    <AudioPath />\n"
                     "</SceneEditor>\n"
                     "<FxEditor>\n"
                     "    <WindowX>670</WindowX>\n"
                     "    <WindowTop>1</WindowTop>\n"
                     "</FxEditor>\n");
    EXPECT_FALSE(std::filesystem::exists(Path("Editor.cfg.tmp")));

    // Read back every value, then write the same document again: the same bytes.
    CEditorConfig loaded;
    ASSERT_TRUE(loaded.Load(Path("Editor.cfg").c_str()));
    int iX = 0, iY = 0, iW = 0, iH = 0;
    loaded.EnterSection("MainWindow");
    EXPECT_TRUE(loaded.ReadInt("X", iX) && loaded.ReadInt("Y", iY) && loaded.ReadInt("W", iW) &&
                loaded.ReadInt("H", iH));
    loaded.LeaveSection();
    EXPECT_EQ(iX, 30);
    EXPECT_EQ(iY, -40);
    EXPECT_EQ(iW, 640);
    EXPECT_EQ(iH, 480);
    loaded.EnterSection("SceneEditor");
    GUtString strShader, strAudio("unchanged");
    bool bTop = false;
    EXPECT_TRUE(loaded.ReadString("ShaderPath", strShader));
    EXPECT_TRUE(loaded.ReadString("AudioPath", strAudio));
    EXPECT_TRUE(loaded.ReadBool("WindowTop", bTop));
    loaded.LeaveSection();
    EXPECT_STREQ(strShader.c_str(), "..\\shader\\");
    EXPECT_STREQ(strAudio.c_str(), ""); // a key with no text gives the empty string
    EXPECT_TRUE(bTop);

    CEditorConfig again;
    WriteShutDownDocument(again);
    ASSERT_TRUE(again.Save(Path("Again.cfg").c_str()));
    EXPECT_EQ(ReadFile(Path("Again.cfg")), first);
    EXPECT_STREQ(again.ToText().c_str(), first.c_str());
}

TEST_F(EditorConfigTest, MissingKeysLeaveDefaultsAndEmptyKeysGiveZero)
{
    WriteFile(Path("Editor.cfg"), "<MainWindow><X>12</X><Y/><W>abc</W><Top>2</Top><Off>0</Off></MainWindow>");
    CEditorConfig config;
    ASSERT_TRUE(config.Load(Path("Editor.cfg").c_str()));
    config.EnterSection("MainWindow");
    int iX = 7, iY = 7, iW = 7, iH = 7;
    EXPECT_TRUE(config.ReadInt("X", iX));
    EXPECT_TRUE(config.ReadInt("Y", iY));
    EXPECT_TRUE(config.ReadInt("W", iW));
    EXPECT_FALSE(config.ReadInt("H", iH));
    EXPECT_EQ(iX, 12);
    EXPECT_EQ(iY, 0);
    EXPECT_EQ(iW, 0);
    EXPECT_EQ(iH, 7);
    bool bTop = false, bOff = true, bMissing = true;
    EXPECT_TRUE(config.ReadBool("Top", bTop));
    EXPECT_TRUE(config.ReadBool("Off", bOff));
    EXPECT_FALSE(config.ReadBool("Missing", bMissing));
    EXPECT_TRUE(bTop);
    EXPECT_FALSE(bOff);
    EXPECT_TRUE(bMissing);
}

TEST_F(EditorConfigTest, MissingSectionLeavesNoCursorSoLaterSectionsCannotBeRead)
{
    WriteFile(Path("Editor.cfg"),
              "<MainWindow><X>1</X></MainWindow><SceneEditor><WindowX>5</WindowX></SceneEditor>");
    CEditorConfig config;
    ASSERT_TRUE(config.Load(Path("Editor.cfg").c_str()));
    config.EnterSection("MaterialEditor"); // missing
    EXPECT_FALSE(config.HasCursor());
    int iValue = -3;
    EXPECT_FALSE(config.ReadInt("WindowX", iValue));
    config.LeaveSection(); // does nothing: there is no cursor to move
    config.EnterSection("SceneEditor");
    EXPECT_FALSE(config.ReadInt("WindowX", iValue));
    EXPECT_EQ(iValue, -3);
    config.CreateSection("New"); // with no cursor nothing is added
    config.WriteInt("K", 1);
    EXPECT_EQ(config.ToText().View().find("New"), std::string_view::npos);

    // Loading again puts the cursor back at the document.
    ASSERT_TRUE(config.Load(Path("Editor.cfg").c_str()));
    config.EnterSection("SceneEditor");
    EXPECT_TRUE(config.ReadInt("WindowX", iValue));
    EXPECT_EQ(iValue, 5);
}

TEST_F(EditorConfigTest, MissingOrBrokenFileLeavesAnEmptyDocument)
{
    CEditorConfig config;
    EXPECT_FALSE(config.Load(Path("Nothing.cfg").c_str()));
    config.EnterSection("MainWindow");
    int iX = 30;
    EXPECT_FALSE(config.ReadInt("X", iX));
    EXPECT_EQ(iX, 30);

    WriteFile(Path("Broken.cfg"), "<MainWindow><X>5</X></Main");
    CEditorConfig broken;
    EXPECT_FALSE(broken.Load(Path("Broken.cfg").c_str()));
    broken.EnterSection("MainWindow");
    EXPECT_FALSE(broken.ReadInt("X", iX));
    EXPECT_EQ(iX, 30);
    EXPECT_STREQ(broken.ToText().c_str(), "");
}

TEST_F(EditorConfigTest, SaveIntoAMissingFolderFailsAndLeavesNoFile)
{
    CEditorConfig config;
    config.CreateSection("MainWindow");
    EXPECT_FALSE(config.Save(Path("no/such/folder/Editor.cfg").c_str()));
    EXPECT_FALSE(std::filesystem::exists(Path("no")));
}

TEST_F(EditorConfigTest, ToolWindowPlaceReadsPrefixedKeysAndKeepsDefaults)
{
    WriteFile(Path("Editor.cfg"), "<FxEditor><WindowX>1</WindowX><WindowTop>1</WindowTop>"
                                  "<TimeWindowX>9</TimeWindowX><TimeWindowH>8</TimeWindowH></FxEditor>");
    CEditorConfig config;
    ASSERT_TRUE(config.Load(Path("Editor.cfg").c_str()));
    config.EnterSection("FxEditor");
    SEditorRect rect{10, 20, 30, 40}, time{50, 60, 70, 80};
    bool bTop = false;
    ReadToolWindowPlace(config, "Window", rect, &bTop);
    ReadToolWindowPlace(config, "TimeWindow", time, nullptr);
    EXPECT_EQ(rect.iX, 1);
    EXPECT_EQ(rect.iY, 20);
    EXPECT_TRUE(bTop);
    EXPECT_EQ(time.iX, 9);
    EXPECT_EQ(time.iW, 70);
    EXPECT_EQ(time.iH, 8);

    CEditorConfig out;
    out.CreateSection("FxEditor");
    WriteToolWindowPlace(out, "Window", rect, &bTop);
    WriteToolWindowPlace(out, "TimeWindow", time, nullptr);
    EXPECT_STREQ(out.ToText().c_str(),
                 "<FxEditor>\n    <WindowX>1</WindowX>\n    <WindowY>20</WindowY>\n"
                 "    <WindowW>30</WindowW>\n    <WindowH>40</WindowH>\n"
                 "    <WindowTop>1</WindowTop>\n    <TimeWindowX>9</TimeWindowX>\n"
                 "    <TimeWindowY>60</TimeWindowY>\n    <TimeWindowW>70</TimeWindowW>\n"
                 "    <TimeWindowH>8</TimeWindowH>\n</FxEditor>\n");
}

TEST(ToolWindow, ClosedByTheUserIsMadeAgainAtItsLastPlace)
{
    SEditorRect rect{1, 2, 3, 4};
    IEditorWindow* pWindow = nullptr;
    OpenToolWindow(pWindow, "T", rect, false);
    ASSERT_NE(pWindow, nullptr);
    IEditorWindow* pFirst = pWindow;
    OpenToolWindow(pWindow, "T", rect, false); // open: kept
    EXPECT_EQ(pWindow, pFirst);
    pWindow->Close(); // the user closes it
    OpenToolWindow(pWindow, "T", rect, false);
    ASSERT_NE(pWindow, nullptr);
    EXPECT_TRUE(pWindow->IsOpen());
    CloseToolWindow(pWindow, rect);
    EXPECT_EQ(pWindow, nullptr);
    EXPECT_EQ(rect.iW, 3);
}
