// Saving packs: exact layout, round trips, edits, replacement sources, the access list.
#include "Utils/File/PackFile.h"
#include "Utils/File/tests/PackTestUtil.h"

#include <gtest/gtest.h>

#include <sys/stat.h>
#include <unistd.h>
#include <zlib.h>

using namespace GLib::File;
using namespace PackTest;

namespace
{
std::unique_ptr<ISubFileSource> Bytes(const std::string& text)
{
    return std::make_unique<CMemorySubFileSource>(text.data(), static_cast<uint32_t>(text.size()));
}

std::string ReadEntry(CPackFile& pack, const char* pcPath)
{
    std::unique_ptr<CSubFile> pFile(pack.OpenSubFile(pcPath, true));
    if (!pFile)
    {
        return "<missing>";
    }
    std::string bytes(pFile->Size(), '\0');
    pFile->Read(bytes.data(), static_cast<uint32_t>(bytes.size()));
    return bytes;
}

ino_t Inode(const std::string& path)
{
    struct stat st;
    return ::stat(path.c_str(), &st) == 0 ? st.st_ino : 0;
}
} // namespace

TEST(PackSave, WritesTheLayoutExactlyAndSortsByUpperCasedNames)
{
    CScratch scratch;
    CPackFile pack;
    ASSERT_TRUE(pack.AddFile("b.txt", Bytes("bb")));
    ASSERT_TRUE(pack.AddFile("_x.txt", Bytes("x")));
    ASSERT_TRUE(pack.AddFile("A.txt", Bytes("aaa")));
    ASSERT_TRUE(pack.AddFile("sub\\z.txt", Bytes("zz")));
    ASSERT_TRUE(pack.AddDir("empty"));
    const std::string path = scratch / "out.PAK";
    ASSERT_TRUE(pack.SaveFile(path.c_str()));

    // Directory: folders "EMPTY" < "SUB"; files "A.TXT" < "B.TXT" < "_X.TXT" (0x5F after
    // the letters); offsets in the order the entries were added: b, _x, A, sub/z.
    CBytes dir;
    dir.U32(2).U32(3).Name("");
    dir.U32(0).U32(0).Name("empty");
    dir.U32(0).U32(1).Name("sub").U32(6).U32(2).Name("z.txt");
    dir.U32(3).U32(3).Name("A.txt").U32(0).U32(2).Name("b.txt").U32(2).U32(1).Name("_x.txt");
    uLongf uPacked = compressBound(static_cast<uLong>(dir.Size()));
    std::vector<uint8_t> packed(uPacked);
    ASSERT_EQ(compress(packed.data(), &uPacked, dir.Data().data(), static_cast<uLong>(dir.Size())), Z_OK);
    packed.resize(uPacked);

    CBytes expected;
    expected.Raw(std::string("PAK\0", 4)).U32(106).U8(0).U32(0).U64(0);
    const uint32_t uDataOffset = 256 + static_cast<uint32_t>(uPacked);
    expected.U32(256).U32(256).U32(static_cast<uint32_t>(dir.Size())).U32(static_cast<uint32_t>(uPacked));
    expected.U32(uDataOffset).U32(8).U32(uDataOffset + 8).Zeros(256 - 49);
    expected.Data().insert(expected.Data().end(), packed.begin(), packed.end());
    expected.Raw("bbxaaazz");
    EXPECT_EQ(ReadFile(path), expected.Data());
    EXPECT_FALSE(CPackFile().LoadFile((path + "__").c_str(), true, false, true)); // no temporary left
}

TEST(PackSave, RoundTripsAndRewritesIdentically)
{
    CScratch scratch;
    CPackFile pack;
    std::string big(100000, '\0');
    for (size_t i = 0; i < big.size(); ++i)
    {
        big[i] = static_cast<char>(i * 7 + i / 251);
    }
    ASSERT_TRUE(pack.AddFile("models/hero/hero.mesh", Bytes(big)));
    ASSERT_TRUE(pack.AddFile("models/hero/Hero.skel", Bytes("skeleton")));
    ASSERT_TRUE(pack.AddFile("empty.txt", Bytes("")));
    const std::string first = scratch / "first.PAK";
    const std::string second = scratch / "second.PAK";
    ASSERT_TRUE(pack.SaveFile(first.c_str()));

    CPackFile loaded;
    ASSERT_TRUE(loaded.LoadFile(first.c_str(), false, false, true));
    EXPECT_EQ(loaded.GetFileCount(), 3u);
    EXPECT_EQ(ReadEntry(loaded, "MODELS/HERO/HERO.MESH"), big);
    EXPECT_EQ(ReadEntry(loaded, "models/hero/hero.skel"), "skeleton");
    EXPECT_EQ(ReadEntry(loaded, "empty.txt"), "");
    ASSERT_TRUE(loaded.SaveFile(second.c_str()));
    EXPECT_EQ(ReadFile(first), ReadFile(second));
}

TEST(PackSave, EmptyPathRewritesTheOwnFileThroughATemporary)
{
    CScratch scratch;
    const std::string path = scratch / "data.PAK";
    {
        CPackFile pack;
        ASSERT_TRUE(pack.AddFile("keep.txt", Bytes("keep")));
        ASSERT_TRUE(pack.AddFile("drop.txt", Bytes("drop")));
        ASSERT_TRUE(pack.AddFile("old/name.txt", Bytes("moved")));
        ASSERT_TRUE(pack.AddFile("edit.txt", Bytes("0123456789")));
        ASSERT_TRUE(pack.SaveFile(path.c_str()));
    }
    const ino_t uBefore = Inode(path);
    CPackFile pack;
    ASSERT_TRUE(pack.LoadFile(path.c_str(), false, false, true));
    ASSERT_TRUE(pack.RemoveFile("DROP.TXT"));
    EXPECT_FALSE(pack.RemoveFile("drop.txt"));
    ASSERT_TRUE(pack.RenameFile("old/name.txt", "new/place/name.txt"));
    EXPECT_FALSE(pack.RenameFile("keep.txt", "EDIT.txt")); // taken
    ASSERT_TRUE(pack.AddFile("added.txt", Bytes("added")));
    {
        std::unique_ptr<CSubFile> pEdit(pack.OpenSubFile("edit.txt", false));
        ASSERT_TRUE(pEdit);
        ASSERT_TRUE(pEdit->Seek(8));
        EXPECT_EQ(pEdit->Write("XYZ", 3), 3u);
    }
    EXPECT_EQ(ReadEntry(pack, "edit.txt"), "01234567XYZ");
    ASSERT_TRUE(pack.SaveFile(""));

    EXPECT_NE(Inode(path), uBefore); // replaced by rename, not rewritten in place
    EXPECT_EQ(Inode(path + "__"), 0u);
    EXPECT_TRUE(pack.IsOpen());
    EXPECT_EQ(pack.GetFileCount(), 4u);
    EXPECT_EQ(ReadEntry(pack, "keep.txt"), "keep");
    EXPECT_EQ(ReadEntry(pack, "drop.txt"), "<missing>");
    EXPECT_EQ(ReadEntry(pack, "new/place/name.txt"), "moved");
    EXPECT_EQ(ReadEntry(pack, "old/name.txt"), "<missing>");
    EXPECT_EQ(ReadEntry(pack, "added.txt"), "added");
    EXPECT_EQ(ReadEntry(pack, "edit.txt"), "01234567XYZ");
    // The pack's own name, spelt differently, is the same file.
    ASSERT_TRUE(pack.SaveFile((scratch / "DATA.pak").c_str()));
    EXPECT_EQ(Inode(scratch / "DATA.pak"), 0u);
}

TEST(PackSave, AFailedSaveLeavesTheOldFile)
{
    CScratch scratch;
    const std::string path = scratch / "data.PAK";
    const std::string source = scratch / "loose.bin";
    WriteFile(source, std::string(5000, 'L'));
    CPackFile pack;
    ASSERT_TRUE(pack.AddFile("a.txt", Bytes("a")));
    ASSERT_TRUE(pack.SaveFile(path.c_str()));
    const std::vector<uint8_t> before = ReadFile(path);

    ASSERT_TRUE(pack.LoadFile(path.c_str(), false, false, true));
    auto pDisk = std::make_unique<CDiskSubFileSource>(source.c_str());
    ASSERT_TRUE(pDisk->Exists());
    EXPECT_EQ(pDisk->Size(), 5000u);
    ASSERT_TRUE(pack.AddFile("loose.bin", std::move(pDisk)));
    ::unlink(source.c_str());
    CLogCapture log;
    EXPECT_FALSE(pack.SaveFile(""));
    EXPECT_TRUE(log.Contains("Read file - loose.bin fail"));
    EXPECT_EQ(ReadFile(path), before);
    EXPECT_EQ(Inode(path + "__"), 0u);

    log.Clear();
    WriteFile(scratch / "plain.txt", std::string("a file, not a folder"));
    EXPECT_FALSE(pack.SaveFile((scratch / "plain.txt/x.PAK").c_str()));
    EXPECT_TRUE(log.Contains("Create file - "));
}

TEST(PackSave, ReadOnlyPacksRefuseEdits)
{
    CScratch scratch;
    const std::string path = scratch / "ro.PAK";
    {
        CPackFile pack;
        ASSERT_TRUE(pack.AddFile("a.txt", Bytes("a")));
        ASSERT_TRUE(pack.SaveFile(path.c_str()));
    }
    CPackFile pack;
    ASSERT_TRUE(pack.LoadFile(path.c_str(), true, false, true));
    EXPECT_FALSE(pack.AddFile("b.txt", Bytes("b")));
    EXPECT_FALSE(pack.RemoveFile("a.txt"));
    EXPECT_FALSE(pack.RenameFile("a.txt", "c.txt"));
    std::unique_ptr<CSubFile> pFile(pack.OpenSubFile("a.txt", true));
    ASSERT_TRUE(pFile);
    EXPECT_EQ(pFile->Write("x", 1), 0u);
    EXPECT_EQ(ReadEntry(pack, "a.txt"), "a");
    // Bad names are refused on writable packs too.
    CPackFile fresh;
    EXPECT_FALSE(fresh.AddFile("../x", Bytes("x")));
    EXPECT_FALSE(fresh.AddFile("a/./b", Bytes("x")));
    EXPECT_FALSE(fresh.AddFile("", Bytes("x")));
}

TEST(PackSaveDeathTest, ReadOnlyPackAssertsOnSave)
{
    GTEST_FLAG_SET(death_test_style, "threadsafe");
    CScratch scratch;
    const std::string path = scratch / "ro.PAK";
    {
        CPackFile pack;
        ASSERT_TRUE(pack.AddFile("a.txt", Bytes("a")));
        ASSERT_TRUE(pack.SaveFile(path.c_str()));
    }
    EXPECT_DEATH(
        {
            CPackFile pack;
            pack.LoadFile(path.c_str(), true, false, true);
            pack.SaveFile("");
        },
        "Read only mode should not call SaveFile\\(\\)");
}

TEST(PackSave, AccessListIsWrittenAtDestruction)
{
    CScratch scratch;
    const std::string path = scratch / "rec.PAK";
    {
        CPackFile pack;
        ASSERT_TRUE(pack.AddFile("tex/a.dds", Bytes("0123456789")));
        ASSERT_TRUE(pack.SaveFile(path.c_str()));
    }
    EXPECT_EQ(CPackFile::AccessListName("data/tex.PAK"), GUtString("data/tex.FAL"));
    EXPECT_EQ(CPackFile::AccessListName("a.b/pack"), GUtString("a.b/pack.FAL"));
    {
        CPackFile pack;
        pack.SetRecordAccess(true);
        ASSERT_TRUE(pack.LoadFile(path.c_str(), true, false, true));
        std::unique_ptr<CSubFile> pFile(pack.OpenSubFile("TEX/A.DDS", true));
        char acBuffer[16];
        EXPECT_EQ(pFile->Read(acBuffer, 4), 4u);
        EXPECT_EQ(pFile->Read(acBuffer, 16), 6u);
    }
    const std::vector<uint8_t> fal = ReadFile(scratch / "rec.FAL");
    EXPECT_EQ(std::string(fal.begin(), fal.end()), "tex/a.dds 0 4\ntex/a.dds 4 16\n");
}
