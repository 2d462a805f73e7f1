#include "app/CrashHandler.h"
#include "app/Revision.h"

#include "Utils/Utility/GUtDebug.h"

#include <gtest/gtest.h>

#include <csignal>
#include <filesystem>
#include <fstream>
#include <sstream>
#include <unistd.h>

using namespace Ovrel;

namespace
{
// prefix, then MMDD_HHMM.dmp
bool IsDumpName(const std::string& strName, const std::string& strPrefix)
{
    if (strName.size() != strPrefix.size() + 13 || strName.compare(0, strPrefix.size(), strPrefix) != 0)
    {
        return false;
    }
    const std::string strRest = strName.substr(strPrefix.size());
    for (size_t i : {0u, 1u, 2u, 3u, 5u, 6u, 7u, 8u})
    {
        if (!isdigit(static_cast<unsigned char>(strRest[i])))
        {
            return false;
        }
    }
    return strRest[4] == '_' && strRest.substr(9) == ".dmp";
}

class CrashHandlerTest : public ::testing::Test
{
protected:
    void SetUp() override
    {
        m_root = std::filesystem::temp_directory_path() /
                 ("crash_" + std::to_string(getpid()) + "_" +
                  ::testing::UnitTest::GetInstance()->current_test_info()->name());
        std::filesystem::create_directories(m_root / "server_config");
        std::filesystem::create_directories(m_root / "run");
    }
    void TearDown() override { std::filesystem::remove_all(m_root); }

    void WriteRevision(const std::string& strXml)
    {
        std::ofstream(m_root / "server_config" / "SVNInfo.xml") << strXml;
    }

    // The one dump in the run folder, or "".
    std::string FindDump(std::string& strText) const
    {
        for (const auto& entry : std::filesystem::directory_iterator(m_root / "run"))
        {
            if (entry.path().extension() == ".dmp")
            {
                std::ifstream in(entry.path());
                std::ostringstream s;
                s << in.rdbuf();
                strText = s.str();
                return entry.path().filename().string();
            }
        }
        return std::string();
    }

    std::filesystem::path m_root;
};
} // namespace

TEST(DumpName, UsesTheExecutablesBaseNameTheRevisionAndTheLocalTime)
{
    char acBase[128];
    DumpBaseName("/opt/editor/bin/Editor.exe", acBase, sizeof(acBase));
    EXPECT_STREQ(acBase, "Editor");
    DumpBaseName("Editor", acBase, sizeof(acBase));
    EXPECT_STREQ(acBase, "Editor");
    DumpBaseName("./.hidden", acBase, sizeof(acBase));
    EXPECT_STREQ(acBase, ".hidden");

    GUtLocalTime time;
    time.iMonth = 3;
    time.iDay = 7;
    time.iHour = 9;
    time.iMinute = 5;
    char acName[128];
    FormatDumpName("Editor", "rev1234", &time, acName, sizeof(acName));
    EXPECT_STREQ(acName, "Editor_rev1234_0307_0905.dmp");
    FormatDumpName("Editor", "", nullptr, acName, sizeof(acName));
    EXPECT_STREQ(acName, "Editor_.dmp");
    char acLong[300];
    FormatDumpName(std::string(200, 'x').c_str(), "rev1", &time, acLong, sizeof(acLong));
    EXPECT_EQ(strlen(acLong), 127u); // at most 128 bytes with the terminator
}

TEST_F(CrashHandlerTest, TheRevisionIsReadFromInfoEntryRevision)
{
    WriteRevision("<info><entry revision=\"4321\" kind=\"dir\"/></info>");
    EXPECT_EQ(CRevision::Read((m_root / "server_config" / "SVNInfo.xml").c_str()), "rev4321");
    WriteRevision("<info><entry kind=\"dir\"/></info>");
    EXPECT_EQ(CRevision::Read((m_root / "server_config" / "SVNInfo.xml").c_str()), "");
    WriteRevision("<info><entry revision=\"1\"");
    EXPECT_EQ(CRevision::Read((m_root / "server_config" / "SVNInfo.xml").c_str()), "");
    EXPECT_EQ(CRevision::Read((m_root / "missing.xml").c_str()), "");
}

TEST_F(CrashHandlerTest, AFailedAssertionWritesTheDumpAndEndsTheProcessWithSIGABRT)
{
    WriteRevision("<info><entry revision=\"77\"/></info>");
    const std::filesystem::path run = m_root / "run";
    EXPECT_EXIT(
        {
            std::filesystem::current_path(run);
            InstallCrashHandlers("/somewhere/Editor");
            GUT_ASSERT(1 + 1 == 3);
        },
        ::testing::KilledBySignal(SIGABRT), "Assertion failed");
    std::string strText;
    const std::string strName = FindDump(strText);
    EXPECT_TRUE(IsDumpName(strName, "Editor_rev77_")) << strName;
    EXPECT_NE(strText.find("signal 6 (SIGABRT)"), std::string::npos) << strText;
    EXPECT_NE(strText.find("stack"), std::string::npos);
    EXPECT_NE(strText.find("registers"), std::string::npos);
}

TEST_F(CrashHandlerTest, ASegmentationFaultAndTerminateTakeTheSamePath)
{
    const std::filesystem::path run = m_root / "run";
    EXPECT_EXIT(
        {
            std::filesystem::current_path(run);
            InstallCrashHandlers("Editor");
            raise(SIGSEGV);
        },
        ::testing::KilledBySignal(SIGSEGV), "");
    std::string strText;
    std::string strName = FindDump(strText);
    EXPECT_TRUE(IsDumpName(strName, "Editor__")) << strName;
    EXPECT_NE(strText.find("SIGSEGV"), std::string::npos);
    std::filesystem::remove(run / strName);

    EXPECT_EXIT(
        {
            std::filesystem::current_path(run);
            InstallCrashHandlers("Editor");
            std::terminate();
        },
        ::testing::KilledBySignal(SIGABRT), "");
    strName = FindDump(strText);
    EXPECT_NE(strText.find("reason std::terminate"), std::string::npos) << strText;
}
