// GUtFile: the key, byte order, text forms, and sharing one file between threads.
#include "Utils/File/tests/PackTestUtil.h"
#include "Utils/Utility/GUtFile.h"

#include <gtest/gtest.h>

#include <thread>
#include <zlib.h>

using namespace PackTest;

namespace
{
constexpr uint32_t READ = GUtFile::MODE_ALWAYS | GUtFile::MODE_BINARY | GUtFile::MODE_READ;
constexpr uint32_t WRITE = READ | GUtFile::MODE_WRITE;
constexpr uint32_t TEXT_WRITE = GUtFile::MODE_ALWAYS | GUtFile::MODE_READ | GUtFile::MODE_WRITE;
constexpr uint32_t TEXT_READ = GUtFile::MODE_ALWAYS | GUtFile::MODE_READ;

std::vector<uint8_t> Xor(const std::string& text, const std::string& key)
{
    std::vector<uint8_t> out(text.begin(), text.end());
    for (size_t i = 0; i < out.size(); ++i)
    {
        out[i] ^= static_cast<uint8_t>(key[i % key.size()]);
    }
    return out;
}

void WriteKeyed(const std::string& path, uint32_t uMode, const std::string& key, const std::string& content)
{
    GUtFile file;
    ASSERT_TRUE(file.Open(path.c_str(), uMode));
    file.SetKey(key.c_str());
    // Two writes: the key index carries across calls.
    const std::string first = content.substr(0, 5);
    const std::string rest = content.substr(5);
    file.WriteChars(first.data(), static_cast<int32_t>(first.size()));
    file.WriteChars(rest.data(), static_cast<int32_t>(rest.size()));
    EXPECT_EQ(first, content.substr(0, 5)); // the caller's bytes are untouched
}

std::string ReadKeyed(const std::string& path, uint32_t uMode, const std::string& key, size_t uSize)
{
    GUtFile file;
    EXPECT_TRUE(file.Open(path.c_str(), uMode));
    file.SetKey(key.c_str());
    std::string back(uSize, '\0');
    file.ReadChars(back.data(), 3);
    file.ReadChars(back.data() + 3, static_cast<int32_t>(uSize - 3));
    return back;
}
} // namespace

TEST(GUtFileKey, AppliesOnceInEveryModeAndCompressedBytesStayPlain)
{
    CScratch scratch;
    const std::string key = "k3y!";
    const std::string content = "The key is applied to the caller's bytes, once.";

    WriteKeyed(scratch / "raw.bin", WRITE, key, content);
    EXPECT_EQ(ReadFile(scratch / "raw.bin"), Xor(content, key));
    EXPECT_EQ(ReadKeyed(scratch / "raw.bin", READ, key, content.size()), content);

    // Memory mode writes the same bytes as the raw path: the key is blanked for the write-out.
    WriteKeyed(scratch / "mem.bin", WRITE | GUtFile::MODE_MEMORY, key, content);
    EXPECT_EQ(ReadFile(scratch / "mem.bin"), Xor(content, key));
    EXPECT_EQ(ReadKeyed(scratch / "mem.bin", READ | GUtFile::MODE_MEMORY, key, content.size()), content);

    // The compressed block itself is never XORed: it is a sound zlib stream of keyed bytes.
    const uint32_t uCompressed = GUtFile::MODE_MEMORY | GUtFile::MODE_COMPRESSED;
    WriteKeyed(scratch / "zip.bin", WRITE | uCompressed, key, content);
    const std::vector<uint8_t> block = ReadFile(scratch / "zip.bin");
    const uint32_t uPacked = GetU32(block, 0);
    ASSERT_EQ(block.size(), uPacked + 8u);
    EXPECT_EQ(GetU32(block, 4 + uPacked), content.size());
    std::vector<uint8_t> inflated(content.size());
    uLongf uLength = static_cast<uLongf>(inflated.size());
    ASSERT_EQ(uncompress(inflated.data(), &uLength, block.data() + 4, uPacked), Z_OK);
    EXPECT_EQ(inflated, Xor(content, key));
    EXPECT_EQ(ReadKeyed(scratch / "zip.bin", READ | uCompressed, key, content.size()), content);
}

TEST(GUtFileByteOrder, SwapsEachElementOnACopy)
{
    CScratch scratch;
    const std::string path = scratch / "o.bin";
    const uint32_t auValues[2] = {0x11223344, 0xAABBCCDD};
    const uint16_t auShorts[2] = {0x0102, 0x0304};
    const double dValue = 1.5;
    {
        GUtFile file(path.c_str(), WRITE, false, false, GUtFile::BYTE_ORDER_SWAP);
        file.WriteU32s(auValues, 8);
        file.WriteU16s(auShorts, 4);
        file.WriteDoubles(&dValue, 8);
        file.WriteU32s(auValues, 2); // less than an element: as it is
    }
    EXPECT_EQ(auValues[0], 0x11223344u);
    CBytes expected;
    expected.Raw("\x11\x22\x33\x44\xAA\xBB\xCC\xDD").Raw("\x01\x02\x03\x04");
    uint8_t acDouble[8];
    memcpy(acDouble, &dValue, 8);
    for (int i = 7; i >= 0; --i)
    {
        expected.U8(acDouble[i]);
    }
    expected.Raw("\x44\x33");
    EXPECT_EQ(ReadFile(path), expected.Data());

    GUtFile file(path.c_str(), READ, false, false, GUtFile::BYTE_ORDER_SWAP);
    uint32_t auBack[2] = {};
    uint16_t auShortsBack[2] = {};
    double dBack = 0;
    EXPECT_EQ(file.ReadU32s(auBack, 8), 8);
    EXPECT_EQ(file.ReadU16s(auShortsBack, 4), 4);
    EXPECT_EQ(file.ReadDoubles(&dBack, 8), 8);
    EXPECT_EQ(auBack[1], 0xAABBCCDDu);
    EXPECT_EQ(auShortsBack[1], 0x0304);
    EXPECT_EQ(dBack, 1.5);
    // Any other order value stores bytes as they are.
    GUtFile native((scratch / "n.bin").c_str(), WRITE, false, false, GUtFile::BYTE_ORDER_NATIVE);
    native.WriteU32s(auValues, 4);
    native.Close();
    EXPECT_EQ(ReadFile(scratch / "n.bin"), std::vector<uint8_t>({0x44, 0x33, 0x22, 0x11}));
}

TEST(GUtFileText, NumbersAreDecimalOutsideBinaryAndWideFormsAreUtf16)
{
    CScratch scratch;
    {
        GUtFile file((scratch / "t.txt").c_str(), TEXT_WRITE);
        file << int32_t(42) << " " << int32_t(-7) << " " << uint32_t(4000000000u) << " "
             << int64_t(-5000000000) << " " << 0.25 << "\n";
    }
    EXPECT_EQ(ReadFile(scratch / "t.txt"),
              std::vector<uint8_t>({'4', '2', ' ', '-', '7', ' ', '4', '0', '0', '0', '0', '0',
                                    '0', '0', '0', '0', ' ', '-', '5', '0', '0', '0', '0', '0',
                                    '0', '0', '0', '0', ' ', '0', '.', '2', '5', '\n'}));
    {
        GUtFile file((scratch / "t.txt").c_str(), TEXT_READ);
        int32_t a = 0, b = 0;
        uint32_t c = 0;
        int64_t d = 0;
        double e = 0;
        file >> a >> b >> c >> d >> e;
        EXPECT_EQ(a, 42);
        EXPECT_EQ(b, -7);
        EXPECT_EQ(c, 4000000000u);
        EXPECT_EQ(d, -5000000000);
        EXPECT_EQ(e, 0.25);
    }
    {
        GUtFile file((scratch / "b.bin").c_str(), WRITE);
        file << int32_t(1) << "ab";
    }
    EXPECT_EQ(ReadFile(scratch / "b.bin"), std::vector<uint8_t>({1, 0, 0, 0, 'a', 'b'}));
    {
        GUtFile file((scratch / "w.txt").c_str(), TEXT_WRITE | GUtFile::MODE_WIDE);
        file << int32_t(12) << " \xC3\xA9" << u"\u4E2D";
    }
    EXPECT_EQ(ReadFile(scratch / "w.txt"),
              std::vector<uint8_t>({'1', 0, '2', 0, ' ', 0, 0xE9, 0, 0x2D, 0x4E}));
    {
        GUtFile file((scratch / "w.txt").c_str(), TEXT_WRITE | GUtFile::MODE_WIDE2, false, false,
                     GUtFile::BYTE_ORDER_SWAP);
        file << int32_t(7);
    }
    EXPECT_EQ(ReadFile(scratch / "w.txt"), std::vector<uint8_t>({0, '7'}));
    {
        GUtFile file((scratch / "w.txt").c_str(), TEXT_READ | GUtFile::MODE_WIDE2, false, false,
                     GUtFile::BYTE_ORDER_SWAP);
        int32_t iValue = 0;
        file >> iValue;
        EXPECT_EQ(iValue, 7);
    }
}

TEST(GUtFileText, AWordOfTheWrongTypeIsReported)
{
    CScratch scratch;
    WriteFile(scratch / "t.txt", std::string("  abc 12x 99999999999 -3 7"));
    GUtFile file((scratch / "t.txt").c_str(), TEXT_READ);
    CLogCapture log;
    int32_t iValue = 5;
    uint32_t uValue = 5;
    file >> iValue;
    EXPECT_EQ(iValue, 5);
    file >> iValue;
    EXPECT_EQ(iValue, 5);
    file >> iValue; // out of range
    EXPECT_EQ(iValue, 5);
    file >> uValue; // negative
    EXPECT_EQ(uValue, 5u);
    file >> iValue;
    EXPECT_EQ(iValue, 7);
    const std::vector<CMessage> messages = log.Messages();
    ASSERT_EQ(messages.size(), 4u);
    EXPECT_EQ(messages[0].text, "abc : Data Type Error");
    EXPECT_EQ(messages[1].text, "12x : Data Type Error");
    EXPECT_EQ(messages[3].text, "-3 : Data Type Error");
}

TEST(GUtFileThreads, OneFileSharedByThreads)
{
    CScratch scratch;
    const std::string path = scratch / "shared.bin";
    for (uint32_t uMode : {WRITE, WRITE | GUtFile::MODE_MEMORY})
    {
        GUtFile file(path.c_str(), uMode);
        std::vector<std::thread> threads;
        for (uint32_t t = 0; t < 4; ++t)
        {
            threads.emplace_back(
                [&file, t]
                {
                    for (uint32_t i = 0; i < 500; ++i)
                    {
                        const uint32_t auRecord[2] = {t, i};
                        file.WriteU32s(auRecord, 8);
                    }
                });
        }
        for (std::thread& thread : threads)
        {
            thread.join();
        }
        file.Close();
        const std::vector<uint8_t> bytes = ReadFile(path);
        ASSERT_EQ(bytes.size(), 4u * 500u * 8u);
        std::vector<uint32_t> next(4, 0);
        for (size_t i = 0; i < bytes.size(); i += 8)
        {
            const uint32_t t = GetU32(bytes, i);
            ASSERT_LT(t, 4u);
            EXPECT_EQ(GetU32(bytes, i + 4), next[t]++); // records never interleave
        }
    }
}
