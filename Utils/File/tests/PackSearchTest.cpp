// The pack search, seen directly and through GUtFile.
#include "Utils/File/PackSearch.h"
#include "Utils/File/tests/PackTestUtil.h"
#include "Utils/Utility/GUtFile.h"
#include "Utils/Utility/GUtTimeCountInfo.h"

#include <gtest/gtest.h>

#include <atomic>
#include <thread>

using namespace GLib::File;
using namespace PackTest;

namespace
{
void SavePack(const std::string& path, const std::vector<std::pair<std::string, std::string>>& entries)
{
    CPackFile pack;
    for (const auto& [name, bytes] : entries)
    {
        ASSERT_TRUE(pack.AddFile(name.c_str(), std::make_unique<CMemorySubFileSource>(
                                                   bytes.data(), static_cast<uint32_t>(bytes.size()))));
    }
    ASSERT_TRUE(pack.SaveFile(path.c_str()));
}

std::string ReadWhole(const std::string& path,
                      uint32_t uMode = GUtFile::MODE_ALWAYS | GUtFile::MODE_BINARY | GUtFile::MODE_READ)
{
    GUtFile file;
    if (!file.Open(path.c_str(), uMode, true))
    {
        return "<not opened>";
    }
    std::string bytes(static_cast<size_t>(file.Size()), '\0');
    file.ReadRaw(bytes.data(), static_cast<int32_t>(bytes.size()));
    return bytes;
}

class PackSearch : public ::testing::Test
{
protected:
    void SetUp() override { ResetPackSearch(); }
    void TearDown() override { ResetPackSearch(); }
    CScratch m_scratch;
};
} // namespace

TEST_F(PackSearch, FindsTheDeepestPackFirstAndGivesTheRest)
{
    SavePack(m_scratch / "data.PAK", {{"tex/a.dds", "from data"}, {"mesh/m.mesh", "mesh"}});
    GUtString rest;
    CPackFile* pPack = FindPackFile((m_scratch / "data/tex/a.dds").c_str(), rest, false);
    ASSERT_NE(pPack, nullptr);
    EXPECT_EQ(rest, GUtString("/tex/a.dds"));
    EXPECT_TRUE(pPack->IsReadOnly());
    EXPECT_EQ(ReadWhole(m_scratch / "Data\\TEX\\A.dds"), "from data");

    // A deeper pack, once known, is tried before data.PAK.
    ResetPackSearch();
    SavePack(m_scratch / "data/tex.PAK", {{"a.dds", "from tex"}});
    CPackFile* pDeeper = FindPackFile((m_scratch / "data/tex/a.dds").c_str(), rest, false);
    ASSERT_NE(pDeeper, nullptr);
    EXPECT_EQ(rest, GUtString("/a.dds"));
    EXPECT_EQ(ReadWhole(m_scratch / "data/tex/a.dds"), "from tex");
    EXPECT_EQ(ReadWhole(m_scratch / "data/mesh/m.mesh"), "mesh");
    // The same pack serves every later lookup.
    EXPECT_EQ(FindPackFile((m_scratch / "DATA/TEX/other.dds").c_str(), rest, false), pDeeper);
}

TEST_F(PackSearch, AFolderWithoutAPackIsTestedOncePerRun)
{
    WriteFile(m_scratch / "loose/a.txt", std::string("loose"));
    GUtString rest;
    EXPECT_EQ(FindPackFile((m_scratch / "loose/a.txt").c_str(), rest, false), nullptr);
    EXPECT_EQ(ReadWhole(m_scratch / "loose/a.txt"), "loose");
    // A pack appearing later isn't seen until the search forgets.
    SavePack(m_scratch / "loose.PAK", {{"a.txt", "packed"}});
    EXPECT_EQ(FindPackFile((m_scratch / "loose/a.txt").c_str(), rest, false), nullptr);
    EXPECT_EQ(ReadWhole(m_scratch / "loose/a.txt"), "loose");
    ResetPackSearch();
    EXPECT_NE(FindPackFile((m_scratch / "loose/a.txt").c_str(), rest, false), nullptr);
    EXPECT_EQ(ReadWhole(m_scratch / "loose/a.txt"), "packed");
}

TEST_F(PackSearch, EntriesMissingFromAPackAndWritesGoToDisk)
{
    SavePack(m_scratch / "data.PAK", {{"a.txt", "packed"}});
    WriteFile(m_scratch / "data/b.txt", std::string("loose"));
    EXPECT_EQ(ReadWhole(m_scratch / "data/b.txt"), "loose");
    EXPECT_EQ(OpenPackEntry((m_scratch / "data/b.txt").c_str(), true), nullptr);
    // A pack found by the search is read-only: a writable entry isn't given.
    EXPECT_EQ(OpenPackEntry((m_scratch / "data/a.txt").c_str(), false), nullptr);
    std::unique_ptr<CSubFile> pEntry(OpenPackEntry((m_scratch / "data/a.txt").c_str(), true));
    ASSERT_TRUE(pEntry);
    EXPECT_EQ(pEntry->Size(), 6u);

    // Writing a path the pack holds writes a file on disk; reading still finds the pack.
    {
        GUtFile file;
        ASSERT_TRUE(
            file.Open((m_scratch / "data/a.txt").c_str(), GUtFile::MODE_ALWAYS | GUtFile::MODE_BINARY |
                                                              GUtFile::MODE_READ | GUtFile::MODE_WRITE));
        file.WriteRaw("disk", 4);
    }
    EXPECT_EQ(ReadFile(m_scratch / "data/a.txt"), std::vector<uint8_t>({'d', 'i', 's', 'k'}));
    EXPECT_EQ(ReadWhole(m_scratch / "data/a.txt"), "packed");
}

TEST_F(PackSearch, ABrokenPackIsTreatedAsAbsent)
{
    WriteFile(m_scratch / "data.PAK", std::string("not a pack at all"));
    WriteFile(m_scratch / "data/a.txt", std::string("loose"));
    CLogCapture log;
    GUtString rest;
    EXPECT_EQ(FindPackFile((m_scratch / "data/a.txt").c_str(), rest, false), nullptr);
    EXPECT_TRUE(log.Contains("Load pack file's header fail("));
    EXPECT_EQ(ReadWhole(m_scratch / "data/a.txt"), "loose");
}

TEST_F(PackSearch, MemoryAndCompressedModesReadPackEntries)
{
    // A compressed GUtFile stored in a pack reads back through the pack entry back end.
    const std::string loose = m_scratch / "src/c.bin";
    {
        GUtFile file(loose.c_str(), GUtFile::MODE_ALWAYS | GUtFile::MODE_BINARY | GUtFile::MODE_READ |
                                        GUtFile::MODE_WRITE | GUtFile::MODE_MEMORY |
                                        GUtFile::MODE_COMPRESSED);
        ASSERT_TRUE(file.IsOpen());
        for (int32_t i = 0; i < 1000; ++i)
        {
            file.WriteI32s(&i, 4);
        }
    }
    const std::vector<uint8_t> block = ReadFile(loose);
    SavePack(m_scratch / "data.PAK",
             {{"c.bin", std::string(block.begin(), block.end())}, {"m.txt", "memory"}});
    GUtFile file((m_scratch / "data/c.bin").c_str(), GUtFile::MODE_ALWAYS | GUtFile::MODE_BINARY |
                                                         GUtFile::MODE_READ | GUtFile::MODE_MEMORY |
                                                         GUtFile::MODE_COMPRESSED);
    ASSERT_TRUE(file.IsOpen());
    EXPECT_EQ(file.Size(), 4000);
    for (int32_t i = 0; i < 1000; ++i)
    {
        int32_t iValue = -1;
        ASSERT_EQ(file.ReadI32s(&iValue, 4), 4);
        ASSERT_EQ(iValue, i);
    }
    EXPECT_EQ(
        ReadWhole(m_scratch / "data/m.txt", GUtFile::MODE_ALWAYS | GUtFile::MODE_READ | GUtFile::MODE_MEMORY),
        "memory");
}

TEST_F(PackSearch, ThreadsOpenEntriesAtOnce)
{
    std::vector<std::pair<std::string, std::string>> entries;
    for (int i = 0; i < 50; ++i)
    {
        entries.emplace_back("dir" + std::to_string(i % 5) + "/f" + std::to_string(i),
                             std::string(100 + i, 'a' + i % 26));
    }
    SavePack(m_scratch / "data.PAK", entries);
    std::atomic<int> iErrors{0};
    std::vector<std::thread> threads;
    for (int t = 0; t < 4; ++t)
    {
        threads.emplace_back(
            [&, t]
            {
                for (int n = 0; n < 200; ++n)
                {
                    const auto& [name, bytes] = entries[static_cast<size_t>(n * 3 + t) % entries.size()];
                    if (ReadWhole(m_scratch / ("data/" + name)) != bytes)
                    {
                        ++iErrors;
                    }
                }
            });
    }
    for (std::thread& thread : threads)
    {
        thread.join();
    }
    EXPECT_EQ(iErrors.load(), 0);
}

TEST_F(PackSearch, TheSearchAndEntryReadsAreTimedWhenTheProfilerIsOn)
{
    SavePack(m_scratch / "data.PAK", {{"a.txt", "packed"}});
    GUtTimeCountManager::SetEnabled(true);
    EXPECT_EQ(ReadWhole(m_scratch / "data/a.txt"), "packed");
    GUtTimeCountManager::SetEnabled(false);
    const GUtString dump = GUtTimeCountManager::Get().CurrentSection().Dump();
    EXPECT_NE(dump.View().find("FIND_PACK"), std::string_view::npos) << dump.c_str();
    EXPECT_NE(dump.View().find("SubFile_Read"), std::string_view::npos) << dump.c_str();
}
