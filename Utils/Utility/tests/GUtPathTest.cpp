// The path layer: separators, case, cached listings and their refresh.
#include "Utils/Utility/GUtPath.h"
#include "Utils/File/tests/PackTestUtil.h"

#include <gtest/gtest.h>

#include <atomic>
#include <cstdio>
#include <thread>

using namespace PackTest;

TEST(GUtPath, SlashesAndFolders)
{
    EXPECT_EQ(GUtPath::ToSlashes("Data\\\\TEX//a.dds"), "Data/TEX/a.dds");
    EXPECT_EQ(GUtPath::ToSlashes("\\abs\\x"), "/abs/x");
    EXPECT_EQ(GUtPath::FolderOf("a/b/c.txt"), "a/b");
    EXPECT_EQ(GUtPath::FolderOf("c.txt"), "");
    EXPECT_EQ(GUtPath::FolderOf("/c.txt"), "/");
}

TEST(GUtPath, FindsNamesWhateverTheirCaseAndSeparator)
{
    CScratch scratch;
    WriteFile(scratch / "data/tex/a.dds", std::string("a"));
    std::string resolved;
    ASSERT_TRUE(GUtPath::ResolveExisting(scratch.Path() + "\\Data\\TEX\\A.dds", resolved));
    EXPECT_EQ(resolved, scratch / "data/tex/a.dds");
    ASSERT_TRUE(GUtPath::ResolveExisting(scratch / "DATA/tex", resolved));
    EXPECT_EQ(resolved, scratch / "data/tex");
    EXPECT_TRUE(GUtPath::Exists(scratch / "data/TEX/../tex/A.DDS"));
    EXPECT_FALSE(GUtPath::ResolveExisting(scratch / "data/tex/b.dds", resolved));
    EXPECT_EQ(resolved, scratch / "data/tex/b.dds");
    EXPECT_FALSE(GUtPath::Exists(scratch / "data/tex/a.dds/x")); // a file isn't a folder
}

TEST(GUtPath, TheExactSpellingWinsOverOtherCases)
{
    CScratch scratch;
    WriteFile(scratch / "Same.txt", std::string("upper"));
    WriteFile(scratch / "same.txt", std::string("lower"));
    std::string resolved;
    ASSERT_TRUE(GUtPath::ResolveExisting(scratch / "same.txt", resolved));
    EXPECT_EQ(resolved, scratch / "same.txt");
    ASSERT_TRUE(GUtPath::ResolveExisting(scratch / "SAME.TXT", resolved));
    EXPECT_EQ(resolved, scratch / "Same.txt"); // first in byte order
}

TEST(GUtPath, ListingsAreReadAgainWhenANameIsMissing)
{
    CScratch scratch;
    WriteFile(scratch / "data/old.txt", std::string("x"));
    std::string resolved;
    ASSERT_TRUE(GUtPath::ResolveExisting(scratch / "DATA/OLD.TXT", resolved));
    EXPECT_FALSE(GUtPath::Exists(scratch / "DATA/NEW.TXT"));
    WriteFile(scratch / "data/New.txt", std::string("y"));
    ASSERT_TRUE(GUtPath::ResolveExisting(scratch / "DATA/NEW.TXT", resolved));
    EXPECT_EQ(resolved, scratch / "data/New.txt");
    // A name that went away is missed, and its folder read again.
    ASSERT_EQ(std::rename((scratch / "data/old.txt").c_str(), (scratch / "data/Older.txt").c_str()), 0);
    EXPECT_FALSE(GUtPath::Exists(scratch / "DATA/OLD.TXT"));
    EXPECT_TRUE(GUtPath::Exists(scratch / "DATA/OLDER.TXT"));
    // So is a folder renamed under a cached path.
    ASSERT_EQ(std::rename((scratch / "data").c_str(), (scratch / "Data2").c_str()), 0);
    EXPECT_FALSE(GUtPath::Exists(scratch / "DATA/NEW.TXT"));
    EXPECT_TRUE(GUtPath::Exists(scratch / "DATA2/NEW.TXT"));
}

TEST(GUtPath, WritePathsKeepExistingSpellings)
{
    CScratch scratch;
    WriteFile(scratch / "data/tex/a.dds", std::string("a"));
    EXPECT_EQ(GUtPath::ResolveForWrite(scratch / "Data/TEX/new.dds"), scratch / "data/tex/new.dds");
    EXPECT_EQ(GUtPath::ResolveForWrite(scratch / "Data/NewDir/Sub/x.txt"), scratch / "data/NewDir/Sub/x.txt");
    EXPECT_EQ(GUtPath::ResolveForWrite(scratch / "DATA\\TEX\\A.DDS"), scratch / "data/tex/a.dds");
    EXPECT_EQ(GUtPath::ResolveForWrite("relative/Name.txt"), "relative/Name.txt");
}

TEST(GUtPath, ThreadsResolveWhileFilesAppear)
{
    CScratch scratch;
    WriteFile(scratch / "data/base.txt", std::string("b"));
    std::atomic<bool> bStop{false};
    std::atomic<int> iErrors{0};
    std::thread writer(
        [&]
        {
            for (int i = 0; i < 100; ++i)
            {
                WriteFile(scratch / ("data/f" + std::to_string(i) + ".txt"), std::string("x"));
            }
            bStop = true;
        });
    std::vector<std::thread> readers;
    for (int t = 0; t < 3; ++t)
    {
        readers.emplace_back(
            [&]
            {
                while (!bStop)
                {
                    if (!GUtPath::Exists(scratch / "DATA/BASE.TXT"))
                    {
                        ++iErrors;
                    }
                    GUtPath::Exists(scratch / "Data/F50.txt");
                }
            });
    }
    writer.join();
    for (std::thread& reader : readers)
    {
        reader.join();
    }
    EXPECT_EQ(iErrors.load(), 0);
    EXPECT_TRUE(GUtPath::Exists(scratch / "DATA/F99.TXT"));
}
