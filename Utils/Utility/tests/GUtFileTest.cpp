// GUtFile: opening modes, memory mode and compressed mode.
#include "Utils/Utility/GUtFile.h"
#include "Utils/File/tests/PackTestUtil.h"

#include <gtest/gtest.h>

#include <sys/stat.h>
#include <zlib.h>

using namespace PackTest;

namespace
{
constexpr uint32_t READ = GUtFile::MODE_ALWAYS | GUtFile::MODE_BINARY | GUtFile::MODE_READ;
constexpr uint32_t WRITE = READ | GUtFile::MODE_WRITE;
constexpr uint32_t APPEND = WRITE | GUtFile::MODE_APPEND;
constexpr uint32_t MEMORY = GUtFile::MODE_MEMORY;
constexpr uint32_t COMPRESSED = GUtFile::MODE_MEMORY | GUtFile::MODE_COMPRESSED;

std::string Text(const std::vector<uint8_t>& bytes)
{
    return std::string(bytes.begin(), bytes.end());
}

bool Exists(const std::string& path)
{
    struct stat st;
    return ::stat(path.c_str(), &st) == 0;
}

// A compressed block as laid out on disk.
std::vector<uint8_t> Block(const std::string& content, int iLevel = Z_DEFAULT_COMPRESSION)
{
    uLongf uPacked = compressBound(static_cast<uLong>(content.size()));
    std::vector<uint8_t> packed(uPacked);
    compress2(packed.data(), &uPacked, reinterpret_cast<const Bytef*>(content.data()),
              static_cast<uLong>(content.size()), iLevel);
    CBytes block;
    block.U32(static_cast<uint32_t>(uPacked)).Raw(std::string(packed.begin(), packed.begin() + uPacked));
    block.U32(static_cast<uint32_t>(content.size()));
    return block.Data();
}
} // namespace

TEST(GUtFileOpen, ModesDecideAccess)
{
    CScratch scratch;
    const std::string path = scratch / "f.bin";
    GUtFile file;
    EXPECT_FALSE(file.Open("", READ));
    EXPECT_FALSE(file.Open(nullptr, READ));

    // 8 alone opens nothing for writing: a missing file stays missing...
    CLogCapture log;
    EXPECT_FALSE(file.Open(path.c_str(), GUtFile::MODE_ALWAYS | GUtFile::MODE_WRITE, true));
    EXPECT_FALSE(Exists(path));
    EXPECT_TRUE(log.Messages().empty()); // quiet
    // ...and an existing one can't be written.
    WriteFile(path, std::string("keep"));
    ASSERT_TRUE(file.Open(path.c_str(), GUtFile::MODE_ALWAYS | GUtFile::MODE_WRITE));
    EXPECT_EQ(file.WriteRaw("xx", 2), 0);
    file.Close();
    EXPECT_EQ(Text(ReadFile(path)), "keep");

    // 12 truncates.
    ASSERT_TRUE(file.Open(path.c_str(), WRITE));
    EXPECT_EQ(file.Size(), 0);
    EXPECT_EQ(file.WriteRaw("abc", 3), 3);
    file.Close();
    EXPECT_EQ(Text(ReadFile(path)), "abc");
    // 28 opens (or creates) and appends.
    ASSERT_TRUE(file.Open(path.c_str(), APPEND));
    EXPECT_EQ(file.Tell(), 3);
    file.WriteRaw("de", 2);
    file.Close();
    EXPECT_EQ(Text(ReadFile(path)), "abcde");
    ASSERT_TRUE(file.Open((scratch / "new.log").c_str(), APPEND));
    file.WriteRaw("x", 1);
    file.Close();
    EXPECT_EQ(Text(ReadFile(scratch / "new.log")), "x");
    // 4 reads, and the path layer finds any case and either separator.
    ASSERT_TRUE(file.Open((scratch / "F.BIN").c_str(), READ));
    char acBuffer[8] = {};
    EXPECT_EQ(file.ReadRaw(acBuffer, 8), 5);
    EXPECT_EQ(file.WriteRaw("z", 1), 0);
    EXPECT_TRUE(file.IsOpen());
    file.Close();
    EXPECT_FALSE(file.IsOpen());
}

TEST(GUtFileOpen, WritingMakesMissingFoldersAndFailuresAreReported)
{
    CScratch scratch;
    GUtFile file;
    ASSERT_TRUE(file.Open((scratch / "a/b/c.txt").c_str(), WRITE));
    file.WriteRaw("c", 1);
    file.Close();
    EXPECT_EQ(Text(ReadFile(scratch / "a/b/c.txt")), "c");
    // A folder spelt in another case is the existing one.
    ASSERT_TRUE(file.Open((scratch / "A\\B\\d.txt").c_str(), WRITE));
    file.Close();
    EXPECT_TRUE(Exists(scratch / "a/b/d.txt"));

    CLogCapture log;
    const std::string missing = scratch / "missing.txt";
    EXPECT_FALSE(file.Open(missing.c_str(), READ));
    ASSERT_EQ(log.Messages().size(), 1u);
    EXPECT_EQ(log.Messages()[0].text, "GUtFile::GUtFile():open file " + missing + " Fail!");
    // A folder that can't be made: the chain's error, then the open's.
    log.Clear();
    WriteFile(scratch / "plain", std::string("x"));
    EXPECT_FALSE(file.Open((scratch / "plain/sub/f.txt").c_str(), WRITE));
    EXPECT_TRUE(log.Contains("open file " + (scratch / "plain/sub/f.txt") + " Fail!"));
}

TEST(GUtFileMemory, GrowthRule)
{
    EXPECT_EQ(GUtFileGrowBuffer(0, 1), 2048u);
    EXPECT_EQ(GUtFileGrowBuffer(0, 2048), 4096u); // a multiple gets a whole 2048 more
    EXPECT_EQ(GUtFileGrowBuffer(2048, 2049), 4096u);
    EXPECT_EQ(GUtFileGrowBuffer(2048, 4096), 6144u);
    EXPECT_EQ(GUtFileGrowBuffer(4096, 4097), 8192u);      // 2 * size
    EXPECT_EQ(GUtFileGrowBuffer(65536, 65537), 98304u);   // size + 32768
    EXPECT_EQ(GUtFileGrowBuffer(65536, 200000), 200704u); // the need, rounded
}

TEST(GUtFileMemory, WritesCollectAndGoOutAtOnce)
{
    CScratch scratch;
    const std::string path = scratch / "m.bin";
    GUtFile file;
    ASSERT_TRUE(file.Open(path.c_str(), WRITE | MEMORY));
    EXPECT_EQ(file.GetMode() & MEMORY, MEMORY);
    std::string content;
    for (int i = 0; i < 5000; ++i)
    {
        const std::string piece = std::to_string(i) + ",";
        ASSERT_EQ(file.WriteChars(piece.data(), static_cast<int32_t>(piece.size())),
                  static_cast<int32_t>(piece.size()));
        content += piece;
    }
    EXPECT_TRUE(ReadFile(path).empty()); // nothing on disk yet
    EXPECT_EQ(file.Size(), static_cast<int64_t>(content.size()));
    // Seeking back to patch keeps what follows.
    ASSERT_TRUE(file.Seek(0));
    file.WriteChars("X", 1);
    content[0] = 'X';
    file.Close();
    EXPECT_EQ(Text(ReadFile(path)), content);

    // Flush writes out and leaves memory mode; later writes go to disk directly.
    ASSERT_TRUE(file.Open(path.c_str(), WRITE | MEMORY));
    file.WriteChars("one", 3);
    ASSERT_TRUE(file.Flush());
    EXPECT_EQ(file.GetMode() & MEMORY, 0u);
    EXPECT_EQ(Text(ReadFile(path)), "one");
    file.WriteChars("two", 3);
    file.Close();
    EXPECT_EQ(Text(ReadFile(path)), "onetwo");

    // Closing without flush drops the buffer.
    ASSERT_TRUE(file.Open(path.c_str(), WRITE | MEMORY));
    file.WriteChars("lost", 4);
    file.Close(false);
    EXPECT_TRUE(ReadFile(path).empty());
}

TEST(GUtFileMemory, ReadsTheWholeFileAtOpen)
{
    CScratch scratch;
    const std::string path = scratch / "r.bin";
    WriteFile(path, std::string("0123456789"));
    GUtFile file;
    ASSERT_TRUE(file.Open(path.c_str(), READ | MEMORY));
    WriteFile(path, std::string("changed after open"));
    char acBuffer[16] = {};
    EXPECT_EQ(file.ReadRaw(acBuffer, 4), 4);
    EXPECT_EQ(std::string(acBuffer, 4), "0123");
    ASSERT_TRUE(file.SeekForward(2));
    EXPECT_EQ(file.Tell(), 6);
    EXPECT_EQ(file.ReadRaw(acBuffer, 16), 4); // a read across the end gives what is left
    EXPECT_EQ(std::string(acBuffer, 4), "6789");
    EXPECT_EQ(file.ReadRaw(acBuffer, 1), 0); // past the end: nothing, and no move
    EXPECT_EQ(file.Tell(), 10);
    ASSERT_TRUE(file.SeekBackward(10));
    EXPECT_EQ(file.ReadRaw(acBuffer, 1), 1);
    EXPECT_EQ(file.WriteRaw("x", 1), 0); // read-only
    // Appending in memory mode reads the file in and writes it out whole.
    file.Close();
    WriteFile(path, std::string("head"));
    ASSERT_TRUE(file.Open(path.c_str(), APPEND | MEMORY));
    EXPECT_EQ(file.Tell(), 4);
    file.WriteRaw("+tail", 5);
    file.Close();
    EXPECT_EQ(Text(ReadFile(path)), "head+tail");
}

TEST(GUtFileMemoryDeathTest, SeekingPastTheBufferAsserts)
{
    GTEST_FLAG_SET(death_test_style, "threadsafe");
    CScratch scratch;
    WriteFile(scratch / "r.bin", std::string("0123"));
    EXPECT_DEATH(
        {
            GUtFile file((scratch / "r.bin").c_str(), READ | MEMORY);
            file.Seek(5);
        },
        "iPosition <= static_cast<int64_t>\\(m_ulMemBufSize\\)");
}

TEST(GUtFileCompressed, BlocksAreLaidOutAsSpecifiedAndReadBack)
{
    CScratch scratch;
    const std::string path = scratch / "c.bin";
    std::string content;
    for (int i = 0; i < 3000; ++i)
    {
        content += "line " + std::to_string(i % 17) + "\n";
    }
    for (int32_t iSelector : {0, 1, 2, 3})
    {
        const int aiLevels[] = {0, 1, 9, Z_DEFAULT_COMPRESSION};
        GUtFile file;
        file.SetCompressLevel(iSelector);
        ASSERT_TRUE(file.Open(path.c_str(), WRITE | COMPRESSED));
        EXPECT_EQ(file.GetMode() & COMPRESSED, COMPRESSED);
        file.WriteChars(content.data(), static_cast<int32_t>(content.size()));
        file.Close();
        EXPECT_EQ(ReadFile(path), Block(content, aiLevels[iSelector])) << iSelector;

        ASSERT_TRUE(file.Open(path.c_str(), READ | COMPRESSED));
        EXPECT_EQ(file.Size(), static_cast<int64_t>(content.size()));
        std::string back(content.size(), '\0');
        EXPECT_EQ(file.ReadChars(back.data(), static_cast<int32_t>(back.size())),
                  static_cast<int32_t>(back.size()));
        EXPECT_EQ(back, content);
    }
}

TEST(GUtFileCompressed, EachFlushWritesABlockAndReadingTakesThemInTurn)
{
    CScratch scratch;
    const std::string path = scratch / "c.bin";
    GUtFile file;
    ASSERT_TRUE(file.Open(path.c_str(), WRITE | COMPRESSED));
    file.WriteChars("first,", 6);
    ASSERT_TRUE(file.Flush());
    ASSERT_TRUE(file.Flush()); // nothing new: no empty block
    file.WriteChars("second", 6);
    file.Close();
    std::vector<uint8_t> expected = Block("first,");
    const std::vector<uint8_t> second = Block("second");
    expected.insert(expected.end(), second.begin(), second.end());
    EXPECT_EQ(ReadFile(path), expected);

    ASSERT_TRUE(file.Open(path.c_str(), READ | COMPRESSED));
    char acBuffer[32] = {};
    EXPECT_EQ(file.ReadChars(acBuffer, 32), 12);
    EXPECT_EQ(std::string(acBuffer, 12), "first,second");

    // A broken block after a sound one ends the file there, however often it is read.
    std::vector<uint8_t> broken = Block("sound,");
    CBytes tail;
    tail.U32(5000).U32(0xFFFFFFFF).U32(0xFFFFFFFF);
    broken.insert(broken.end(), tail.Data().begin(), tail.Data().end());
    WriteFile(path, broken);
    {
        CLogCapture log;
        ASSERT_TRUE(file.Open(path.c_str(), READ | COMPRESSED));
        EXPECT_EQ(file.ReadChars(acBuffer, 32), 6);
        EXPECT_EQ(file.ReadChars(acBuffer, 32), 0);
        EXPECT_EQ(file.ReadChars(acBuffer, 32), 0);
        ASSERT_EQ(log.Messages().size(), 1u);
        EXPECT_EQ(log.Messages()[0].text, "read src. buffer fail !");
    }

    // An empty file opens with nothing in it; closing with nothing written writes no block.
    ASSERT_TRUE(file.Open(path.c_str(), WRITE | COMPRESSED));
    file.Close();
    EXPECT_TRUE(ReadFile(path).empty());
    ASSERT_TRUE(file.Open(path.c_str(), READ | COMPRESSED));
    EXPECT_EQ(file.ReadChars(acBuffer, 1), 0);
}

TEST(GUtFileCompressed, CorruptBlocksAreRefusedWithTheirMessages)
{
    CScratch scratch;
    const std::string path = scratch / "bad.bin";
    auto ExpectRefused = [&](const std::vector<uint8_t>& bytes, const std::string& message)
    {
        WriteFile(path, bytes);
        CLogCapture log;
        GUtFile file;
        EXPECT_FALSE(file.Open(path.c_str(), READ | COMPRESSED)) << message;
        EXPECT_FALSE(file.IsOpen());
        EXPECT_TRUE(log.Contains(message)) << message;
    };
    const std::vector<uint8_t> good = Block("some content, some content, some content");
    std::vector<uint8_t> bytes(good.begin(), good.end() - 4);
    ExpectRefused(bytes, "Read Compress Data size fail");
    bytes = good;
    bytes[bytes.size() - 4] += 1;
    ExpectRefused(bytes, "Uncompress Data inconsistent !!");
    bytes = good;
    bytes[6] ^= 0x55;
    ExpectRefused(bytes, "Uncompress Data fail !");
    ExpectRefused({1, 2}, "read src. buffer fail !");
    // 99999999 declared bytes are accepted: the file just doesn't hold them.
    CBytes declared;
    declared.U32(99999999).Raw("tiny");
    ExpectRefused(declared.Data(), "read src. buffer fail !");
    // A huge declared original size costs no more than the stream produces.
    bytes = good;
    bytes[bytes.size() - 1] = 0x7F;
    ExpectRefused(bytes, "Uncompress Data inconsistent !!");
}

TEST(GUtFileCompressedDeathTest, ADeclaredSizeOf100000000Asserts)
{
    GTEST_FLAG_SET(death_test_style, "threadsafe");
    CScratch scratch;
    CBytes declared;
    declared.U32(100000000).Raw("tiny");
    WriteFile(scratch / "huge.bin", declared.Data());
    EXPECT_DEATH({ GUtFile file((scratch / "huge.bin").c_str(), READ | COMPRESSED); },
                 "m_ulDataForDecompressSize < 100000000");
    // Compressed mode must be binary: choosing it for text is a programming error.
    EXPECT_DEATH({ GUtFile file((scratch / "text.bin").c_str(), GUtFile::MODE_LOG | COMPRESSED); }, "bOK");
    EXPECT_DEATH(
        {
            GUtFile file((scratch / "level.bin").c_str(), WRITE | COMPRESSED);
            file.SetCompressLevel(4);
            file.WriteChars("x", 1);
            file.Close();
        },
        "unknown compression level selector");
}
