// Loading packs: version 106 and older layouts built byte by byte, lookups, and bad input.
#include "Utils/File/PackFile.h"
#include "Utils/File/tests/PackTestUtil.h"

#include <gtest/gtest.h>

#include <memory>

using namespace GLib::File;
using namespace PackTest;

namespace
{
const std::string DATA = "AAAAABBBRRRR"; // tex/a.dds, tex/b.dds, readme.txt

// root { tex { a.dds, b.dds }, readme.txt }, offsets relative to the data area.
std::vector<uint8_t> Dir106()
{
    CBytes dir;
    dir.U32(1).U32(1).Name("");
    dir.U32(0).U32(2).Name("tex");
    dir.U32(0).U32(5).Name("a.dds");
    dir.U32(5).U32(3).Name("b.dds");
    dir.U32(8).U32(4).Name("readme.txt");
    return dir.Data();
}

// The same tree in an older layout: a third word before each folder's counts, absolute offsets.
std::vector<uint8_t> DirOld()
{
    const size_t uSize = 4 + 4 + 4 + 1 + 4 + 4 + 4 + 4 + 4 + 4 + 6 + 4 + 4 + 6 + 4 + 4 + 11;
    const uint32_t uBase = DataStartOld(uSize);
    CBytes dir;
    dir.U32(0xDEAD).U32(1).U32(1).Name("");
    dir.U32(0xBEEF).U32(0).U32(2).Name("tex");
    dir.U32(uBase + 0).U32(5).Name("a.dds");
    dir.U32(uBase + 5).U32(3).Name("b.dds");
    dir.U32(uBase + 8).U32(4).Name("readme.txt");
    EXPECT_EQ(dir.Size(), uSize);
    return dir.Data();
}

std::string ReadEntry(CPackFile& pack, const char* pcPath)
{
    std::unique_ptr<CSubFile> pFile(pack.OpenSubFile(pcPath, true));
    if (!pFile)
    {
        return "<missing>";
    }
    std::string bytes(pFile->Size(), '\0');
    EXPECT_EQ(pFile->Read(bytes.data(), static_cast<uint32_t>(bytes.size()) + 10), bytes.size());
    EXPECT_EQ(pFile->Read(bytes.data(), 1), 0u);
    return bytes;
}

void ExpectTree(CPackFile& pack)
{
    ASSERT_EQ(pack.GetFileCount(), 3u);
    EXPECT_EQ(ReadEntry(pack, "tex/a.dds"), "AAAAA");
    EXPECT_EQ(ReadEntry(pack, "tex/b.dds"), "BBB");
    EXPECT_EQ(ReadEntry(pack, "readme.txt"), "RRRR");
    ASSERT_EQ(pack.GetRootDir()->GetSubDirs().size(), 1u);
    EXPECT_EQ(pack.GetRootDir()->GetSubDirs()[0]->GetName(), "tex");
    EXPECT_EQ(pack.GetRootDir()->GetFiles()[0]->GetFullName(), "readme.txt");
}
} // namespace

TEST(PackLoad, Version106BuiltByteByByte)
{
    CScratch scratch;
    CHeaderFields fields;
    fields.uFlag = 7;
    fields.uReserved = 0x11223344;
    fields.uReserved64 = 0x5566778899AABBCCull;
    const std::vector<uint8_t> bytes = MakePack106(Dir106(), DATA, fields);
    WriteFile(scratch / "data.PAK", bytes);

    for (CPackFile::EFileIOKind eKind : {CPackFile::FILE_IO_MAP_VIEW, CPackFile::FILE_IO_READ})
    {
        CPackFile pack(eKind);
        CLogCapture log;
        ASSERT_TRUE(pack.LoadFile((scratch / "data.PAK").c_str(), true, false, false));
        EXPECT_TRUE(log.Messages().empty());
        const CHeader& header = pack.GetHeader();
        EXPECT_EQ(header.Version(), 106u);
        EXPECT_EQ(header.Flag(), 7);
        EXPECT_EQ(header.Reserved(), 0x11223344u);
        EXPECT_EQ(header.Reserved64(), 0x5566778899AABBCCull);
        EXPECT_EQ(header.DirSegSize(), Dir106().size());
        EXPECT_EQ(header.DataOffset(), 256 + header.DirPackedSize());
        EXPECT_EQ(header.FileSize(), bytes.size());
        ExpectTree(pack);
        // Offsets in the file are relative to the data area; in memory they are absolute.
        EXPECT_EQ(pack.FindFile("tex/b.dds")->GetOffset(), header.DataOffset() + 5);
    }
}

TEST(PackLoad, LookupIgnoresCaseAndSeparatorAndFollowsTheCurrentFolder)
{
    CScratch scratch;
    WriteFile(scratch / "data.PAK", MakePack106(Dir106(), DATA));
    CPackFile pack;
    ASSERT_TRUE(pack.LoadFile((scratch / "DATA.pak").c_str(), true, false, true));
    CSubFileInfo* pA = pack.FindFile("tex/a.dds");
    ASSERT_NE(pA, nullptr);
    EXPECT_EQ(pack.FindFile("TEX/A.DDS"), pA);
    EXPECT_EQ(pack.FindFile("/Tex/a.DDS"), pA);
    EXPECT_EQ(pack.FindFile("tex\\a.dds"), pA);
    EXPECT_EQ(pack.FindFile("TEX\\\\A.dds"), pA);
    EXPECT_EQ(pack.FindFile("tex/c.dds"), nullptr);
    EXPECT_EQ(pack.FindFile("a.dds"), nullptr);

    ASSERT_TRUE(pack.ChangeDir("TEX"));
    EXPECT_EQ(pack.FindFile("a.dds"), pA);
    EXPECT_EQ(pack.FindFile("./A.dds"), pA);
    EXPECT_EQ(pack.FindFile("../readme.txt"), pack.FindFile("/readme.txt"));
    EXPECT_EQ(pack.FindFile("/tex/a.dds"), pA);
    EXPECT_FALSE(pack.ChangeDir("nowhere"));
    EXPECT_EQ(pack.GetCurrentDir()->GetName(), "tex");
    ASSERT_TRUE(pack.ChangeDir(".."));
    EXPECT_EQ(pack.GetCurrentDir(), pack.GetRootDir());
}

TEST(PackLoad, OlderVersionsKeepAbsoluteOffsetsAndWarn)
{
    CScratch scratch;
    for (bool bMagic : {true, false})
    {
        const std::vector<uint8_t> bytes = MakePackOld(104, bMagic, DirOld(), DATA);
        WriteFile(scratch / "old.PAK", bytes);
        CPackFile pack;
        CLogCapture log;
        ASSERT_TRUE(pack.LoadFile((scratch / "old.PAK").c_str(), true, false, false)) << bMagic;
        EXPECT_EQ(pack.GetHeader().Version(), 104u);
        EXPECT_EQ(pack.GetHeader().HasMagic(), bMagic);
        ExpectTree(pack);
        EXPECT_EQ(pack.FindFile("tex/a.dds")->GetOffset(), DataStartOld(DirOld().size()));
        const std::vector<CMessage> messages = log.Messages();
        ASSERT_EQ(messages.size(), 1u);
        EXPECT_EQ(messages[0].iLevel, 2);
        EXPECT_FALSE(messages[0].bMessageBox);
        EXPECT_EQ(messages[0].title, "CPackFile::_LoadHeaderSegment warning!");
        EXPECT_EQ(messages[0].text, "The pack file(" + (scratch / "old.PAK") +
                                        ") is an old version(file: 104, current:106), you should repack it");
    }
}

TEST(PackLoad, RefusesNewerVersionsAndForeignFiles)
{
    CScratch scratch;
    const std::string path = scratch / "new.PAK";
    WriteFile(path, MakePack106(Dir106(), DATA, CHeaderFields(), 107));
    CPackFile pack;
    CLogCapture log;
    EXPECT_FALSE(pack.LoadFile(path.c_str(), true, false, true));
    ASSERT_EQ(log.Messages().size(), 1u);
    EXPECT_EQ(log.Messages()[0].title, "CPackFile::_LoadHeaderSegment error!");
    EXPECT_EQ(log.Messages()[0].text,
              "The pack file(" + path + ")'s format is incorrect, the file can not be loaded");
    EXPECT_FALSE(log.Messages()[0].bMessageBox); // quiet
    EXPECT_FALSE(pack.IsOpen());
    EXPECT_EQ(pack.GetFileCount(), 0u);

    // No magic and a version outside 100-105: not a pack.
    log.Clear();
    WriteFile(path, MakePackOld(106, false, DirOld(), DATA));
    EXPECT_FALSE(pack.LoadFile(path.c_str(), true, false, false));
    ASSERT_EQ(log.Messages().size(), 1u);
    EXPECT_EQ(log.Messages()[0].text, "Load pack file's header fail(" + path + ")");
    EXPECT_TRUE(log.Messages()[0].bMessageBox);

    // A missing file or an empty name does nothing.
    log.Clear();
    EXPECT_FALSE(pack.LoadFile((scratch / "absent.PAK").c_str(), true, false, false));
    EXPECT_FALSE(pack.LoadFile("", true, false, false));
    EXPECT_TRUE(log.Messages().empty());
}

TEST(PackLoad, EveryTruncationIsRefusedWithoutReadingOutside)
{
    CScratch scratch;
    const std::vector<uint8_t> bytes = MakePack106(Dir106(), DATA);
    const std::string path = scratch / "cut.PAK";
    CLogCapture log;
    for (size_t uLength = 0; uLength < bytes.size(); ++uLength)
    {
        WriteFile(path, std::vector<uint8_t>(bytes.begin(), bytes.begin() + uLength));
        CPackFile pack;
        EXPECT_FALSE(pack.LoadFile(path.c_str(), true, false, true)) << uLength;
    }
    EXPECT_TRUE(log.Contains("Load pack file's header fail(" + path + ")"));
    EXPECT_TRUE(log.Contains("Load Dir segment error in pack file(" + path + ")"));
}

TEST(PackLoad, CorruptDirectoriesAreRefused)
{
    CScratch scratch;
    const std::string path = scratch / "bad.PAK";
    auto ExpectDirError = [&](const std::vector<uint8_t>& bytes, const char* pcWhy)
    {
        WriteFile(path, bytes);
        CPackFile pack;
        CLogCapture log;
        EXPECT_FALSE(pack.LoadFile(path.c_str(), true, false, true)) << pcWhy;
        EXPECT_TRUE(log.Contains("Load Dir segment error in pack file(" + path + ")")) << pcWhy;
        EXPECT_EQ(pack.GetFileCount(), 0u) << pcWhy;
    };
    // dirSize one more than the directory holds: bytes consumed differ.
    std::vector<uint8_t> bytes = MakePack106(Dir106(), DATA);
    bytes[29] += 1;
    ExpectDirError(bytes, "dirSize too large");
    // A directory with a byte left over.
    std::vector<uint8_t> dir = Dir106();
    dir.push_back(0);
    ExpectDirError(MakePack106(dir, DATA), "trailing byte");
    // A broken zlib stream.
    bytes = MakePack106(Dir106(), DATA);
    bytes[256 + 5] ^= 0xFF;
    ExpectDirError(bytes, "corrupt stream");
    // An entry reaching past the end of the file.
    CBytes far;
    far.U32(0).U32(1).Name("").U32(0).U32(100).Name("x");
    ExpectDirError(MakePack106(far.Data(), "abc"), "entry past the end");
    // A count far beyond what the directory holds.
    CBytes many;
    many.U32(0xFFFFFFFF).U32(0).Name("");
    ExpectDirError(MakePack106(many.Data(), ""), "huge count");
    // Names that could climb out of a folder when extracted.
    CBytes climb;
    climb.U32(0).U32(1).Name("").U32(0).U32(1).Name("../x");
    ExpectDirError(MakePack106(climb.Data(), "a"), "name with a separator");
    CBytes dots;
    dots.U32(1).U32(0).Name("").U32(0).U32(0).Name("..");
    ExpectDirError(MakePack106(dots.Data(), ""), "folder named ..");
    // Folders nested beyond any data tree.
    CBytes deep;
    for (int i = 0; i < 200; ++i)
    {
        deep.U32(1).U32(0).Name(i == 0 ? "" : "d");
    }
    deep.U32(0).U32(0).Name("d");
    ExpectDirError(MakePack106(deep.Data(), ""), "too deep");
}

TEST(PackLoadDeathTest, TwoEntriesWithOnePathAssert)
{
    GTEST_FLAG_SET(death_test_style, "threadsafe");
    CScratch scratch;
    CBytes dir;
    dir.U32(1).U32(0).Name("").U32(0).U32(2).Name("tex").U32(0).U32(1).Name("a.dds").U32(1).U32(1).Name(
        "A.DDS");
    WriteFile(scratch / "dup.PAK", MakePack106(dir.Data(), "xy"));
    EXPECT_DEATH(
        {
            CPackFile pack;
            pack.LoadFile((scratch / "dup.PAK").c_str(), true, false, true);
        },
        "bInserted");
}

TEST(PackLoad, WritablePacksListEntriesInDataOrder)
{
    CScratch scratch;
    CBytes dir;
    dir.U32(0).U32(3).Name("").U32(4).U32(1).Name("first").U32(0).U32(2).Name("second").U32(2).U32(2).Name(
        "third");
    WriteFile(scratch / "order.PAK", MakePack106(dir.Data(), "bbccd"));
    CPackFile pack;
    ASSERT_TRUE(pack.LoadFile((scratch / "order.PAK").c_str(), false, false, true));
    // Saving writes the data in that order: "second", "third", "first".
    ASSERT_TRUE(pack.SaveFile((scratch / "copy.PAK").c_str()));
    const std::vector<uint8_t> copy = ReadFile(scratch / "copy.PAK");
    EXPECT_EQ(std::string(copy.end() - 5, copy.end()), "bbccd");
}
