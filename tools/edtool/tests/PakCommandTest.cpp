// edtool pak, run as the built tool: create, then list and extract give the folder back.
#include "Utils/File/tests/PackTestUtil.h"

#include <gtest/gtest.h>

#include <cstdio>
#include <filesystem>
#include <sys/wait.h>

using namespace PackTest;

namespace
{
struct CRun
{
    int iStatus;
    std::string out;
    std::string err;
};

CRun RunTool(const std::string& arguments, const CScratch& scratch)
{
    const std::string errPath = scratch / "stderr.txt";
    const std::string command = std::string(EDTOOL_PATH) + " " + arguments + " 2>" + errPath;
    CRun run{-1, "", ""};
    FILE* pPipe = popen(command.c_str(), "r");
    char acBuffer[4096];
    size_t n = 0;
    while ((n = fread(acBuffer, 1, sizeof(acBuffer), pPipe)) > 0)
    {
        run.out.append(acBuffer, n);
    }
    const int iWait = pclose(pPipe);
    run.iStatus = WIFEXITED(iWait) ? WEXITSTATUS(iWait) : -1;
    const std::vector<uint8_t> err = ReadFile(errPath);
    run.err.assign(err.begin(), err.end());
    return run;
}

std::string Bytes(size_t uSize, int iSeed)
{
    std::string bytes(uSize, '\0');
    for (size_t i = 0; i < uSize; ++i)
    {
        bytes[i] = static_cast<char>((i * 2654435761u + static_cast<size_t>(iSeed)) >> 13);
    }
    return bytes;
}
} // namespace

TEST(EdtoolPak, CreateListExtractGiveTheFolderBack)
{
    CScratch scratch;
    const std::string src = scratch / "src";
    WriteFile(src + "/Data/TEX/A.dds", Bytes(10000, 1));
    WriteFile(src + "/Data/tex2/b.dds", Bytes(5000, 2));
    WriteFile(src + "/readme.txt", std::string("hello\n"));
    WriteFile(src + "/zero.bin", std::string());
    WriteFile(src + "/_last.bin", Bytes(70000, 3));
    std::filesystem::create_directories(src + "/empty/inner");

    CRun run = RunTool("pak create " + (scratch / "out.PAK") + " " + src, scratch);
    ASSERT_EQ(run.iStatus, 0) << run.err;
    run = RunTool("pak list " + (scratch / "out.PAK"), scratch);
    ASSERT_EQ(run.iStatus, 0) << run.err;
    // Directory order: each folder's folders (by upper-cased name), then its files.
    EXPECT_EQ(run.out, "10000 Data/TEX/A.dds\n"
                       "5000 Data/tex2/b.dds\n"
                       "6 readme.txt\n"
                       "0 zero.bin\n"
                       "70000 _last.bin\n");
    run = RunTool("pak extract " + (scratch / "out.PAK") + " " + (scratch / "back"), scratch);
    ASSERT_EQ(run.iStatus, 0) << run.err;
    size_t uCompared = 0;
    for (const auto& entry : std::filesystem::recursive_directory_iterator(src))
    {
        const std::string relative = std::filesystem::relative(entry.path(), src).string();
        const std::string copy = (scratch / "back/") + relative;
        if (entry.is_directory())
        {
            EXPECT_TRUE(std::filesystem::is_directory(copy)) << relative;
            continue;
        }
        EXPECT_EQ(ReadFile(entry.path().string()), ReadFile(copy)) << relative;
        ++uCompared;
    }
    EXPECT_EQ(uCompared, 5u);
    run = RunTool("pak check " + (scratch / "out.PAK"), scratch);
    EXPECT_EQ(run.iStatus, 0) << run.err;
    EXPECT_EQ(run.out, "ok: 5 files, 85006 bytes\n");
}

TEST(EdtoolPak, ErrorsGoToStandardErrorWithTheirMessages)
{
    CScratch scratch;
    WriteFile(scratch / "bad.PAK", std::string("not a pack"));
    CRun run = RunTool("pak list " + (scratch / "bad.PAK"), scratch);
    EXPECT_NE(run.iStatus, 0);
    EXPECT_TRUE(run.out.empty());
    EXPECT_NE(run.err.find("Load pack file's header fail(" + (scratch / "bad.PAK") + ")"), std::string::npos)
        << run.err;

    run = RunTool("pak check " + (scratch / "absent.PAK"), scratch);
    EXPECT_NE(run.iStatus, 0);
    EXPECT_NE(run.err.find("absent.PAK: no such file"), std::string::npos);

    // A pack cut short fails its check.
    WriteFile(scratch / "src/a.bin", Bytes(3000, 4));
    ASSERT_EQ(RunTool("pak create " + (scratch / "good.PAK") + " " + (scratch / "src"), scratch).iStatus, 0);
    std::vector<uint8_t> bytes = ReadFile(scratch / "good.PAK");
    bytes.resize(bytes.size() - 1);
    WriteFile(scratch / "cut.PAK", bytes);
    run = RunTool("pak check " + (scratch / "cut.PAK"), scratch);
    EXPECT_NE(run.iStatus, 0);
    EXPECT_NE(run.err.find("Load Dir segment error in pack file("), std::string::npos) << run.err;

    // Two names that differ only in case can't both go in a pack.
    WriteFile(scratch / "twins/a.txt", std::string("a"));
    WriteFile(scratch / "twins/A.txt", std::string("A"));
    run = RunTool("pak create " + (scratch / "twins.PAK") + " " + (scratch / "twins"), scratch);
    EXPECT_NE(run.iStatus, 0);
    EXPECT_NE(run.err.find("differ only in case"), std::string::npos) << run.err;
    EXPECT_FALSE(std::filesystem::exists(scratch / "twins.PAK"));

    run = RunTool("pak frobnicate x", scratch);
    EXPECT_EQ(run.iStatus, 2);
    EXPECT_NE(run.err.find("edtool pak list FILE.PAK"), std::string::npos);
}
