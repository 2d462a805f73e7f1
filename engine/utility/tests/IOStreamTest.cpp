#include "engine/utility/IOStream.h"

#include <gtest/gtest.h>

#include <cstdio>
#include <filesystem>
#include <vector>

using namespace Kestrin::Utility;

namespace
{
std::vector<uint8_t> Bytes(const CMemoryWriteStream& s)
{
    const uint8_t* p = s.GetData();
    return p ? std::vector<uint8_t>(p, p + s.GetSize()) : std::vector<uint8_t>{};
}

void WriteSample(CIOStream& s)
{
    s.WriteU8(0xA1);
    s.WriteBool(true);
    s.WriteU16(0x1234);
    s.WriteI16(-2);
    s.WriteU32(0x11223344);
    s.WriteI32(-1);
    s.WriteFloat(1.0f);
    s.WriteVec3({1.0f, 2.0f, -2.0f});
    s.WriteString("hi");
}

// The sample as little-endian bytes.
const std::vector<uint8_t> kNative = {0xA1, 0x01, 0x34, 0x12, 0xFE, 0xFF, 0x44, 0x33, 0x22, 0x11, 0xFF, 0xFF,
                                      0xFF, 0xFF, 0x00, 0x00, 0x80, 0x3F, 0x00, 0x00, 0x80, 0x3F, 0x00, 0x00,
                                      0x00, 0x40, 0x00, 0x00, 0x00, 0xC0, 0x02, 0x00, 0x00, 0x00, 'h',  'i'};
// The same values with every element reversed.
const std::vector<uint8_t> kSwapped = {0xA1, 0x01, 0x12, 0x34, 0xFF, 0xFE, 0x11, 0x22, 0x33, 0x44, 0xFF, 0xFF,
                                       0xFF, 0xFF, 0x3F, 0x80, 0x00, 0x00, 0x3F, 0x80, 0x00, 0x00, 0x40, 0x00,
                                       0x00, 0x00, 0xC0, 0x00, 0x00, 0x00, 0x00, 0x00, 0x00, 0x02, 'h',  'i'};
} // namespace

TEST(IOStream, TypedWritesInBothByteOrdersGiveExactBytes)
{
    CMemoryWriteStream native;
    WriteSample(native);
    EXPECT_EQ(Bytes(native), kNative);

    CMemoryWriteStream swapped;
    swapped.m_bSwapBytes = true;
    WriteSample(swapped);
    EXPECT_EQ(Bytes(swapped), kSwapped);
}

TEST(IOStream, TypedReadsRoundTripInBothByteOrders)
{
    for (bool bSwap : {false, true})
    {
        const std::vector<uint8_t>& bytes = bSwap ? kSwapped : kNative;
        CMemoryStream in(bytes.data(), static_cast<int32_t>(bytes.size()));
        in.m_bSwapBytes = bSwap;
        uint8_t u8 = 0;
        bool b = false;
        uint16_t u16 = 0;
        int16_t i16 = 0;
        uint32_t u32 = 0;
        int32_t i32 = 0;
        float f = 0;
        CVec3 v;
        std::string str;
        EXPECT_TRUE(in.ReadU8(u8) && in.ReadBool(b) && in.ReadU16(u16) && in.ReadI16(i16) &&
                    in.ReadU32(u32) && in.ReadI32(i32) && in.ReadFloat(f) && in.ReadVec3(v) &&
                    in.ReadString(str));
        EXPECT_EQ(u8, 0xA1);
        EXPECT_TRUE(b);
        EXPECT_EQ(u16, 0x1234);
        EXPECT_EQ(i16, -2);
        EXPECT_EQ(u32, 0x11223344u);
        EXPECT_EQ(i32, -1);
        EXPECT_EQ(f, 1.0f);
        EXPECT_EQ(v, (CVec3{1.0f, 2.0f, -2.0f}));
        EXPECT_EQ(str, "hi");
        EXPECT_EQ(in.GetReadRemaining(), 0);
    }
}

TEST(IOStream, MatrixIsSixteenFloatsRowByRowAndTheSourceStaysUnchanged)
{
    CMatrix44 m = CMatrix44::Translation({1.0f, 2.0f, 3.0f});
    CMatrix44 copy = m;
    CMemoryWriteStream out;
    out.m_bSwapBytes = true;
    out.WriteMatrix(m);
    EXPECT_EQ(m, copy);
    std::vector<uint8_t> bytes = Bytes(out);
    ASSERT_EQ(bytes.size(), 64u);
    // m[0][0] = 1.0f big-endian; m[3][0] (offset 48) = 1.0f; m[3][1] = 2.0f.
    EXPECT_EQ(std::vector<uint8_t>(bytes.begin(), bytes.begin() + 4),
              (std::vector<uint8_t>{0x3F, 0x80, 0, 0}));
    EXPECT_EQ(std::vector<uint8_t>(bytes.begin() + 48, bytes.begin() + 56),
              (std::vector<uint8_t>{0x3F, 0x80, 0, 0, 0x40, 0, 0, 0}));

    CMemoryStream in(bytes.data(), 64);
    in.m_bSwapBytes = true;
    CMatrix44 back = CMatrix44::Zero();
    EXPECT_TRUE(in.ReadMatrix(back));
    EXPECT_EQ(back, m);
}

TEST(IOStream, ShortReadLeavesTheTargetUnchanged)
{
    const uint8_t bytes[] = {1, 2, 3};
    CMemoryStream in(bytes, 3);
    uint32_t u = 0xDEADBEEF;
    EXPECT_FALSE(in.ReadU32(u));
    EXPECT_EQ(u, 0xDEADBEEFu);
    CVec3 v{7, 8, 9};
    CMemoryStream in2(bytes, 3);
    EXPECT_FALSE(in2.ReadVec3(v));
    EXPECT_EQ(v, (CVec3{7, 8, 9}));
    std::string s = "keep";
    const uint8_t truncated[] = {5, 0, 0, 0, 'a', 'b'};
    CMemoryStream in3(truncated, 6);
    EXPECT_FALSE(in3.ReadString(s));
    EXPECT_EQ(s, "keep");
}

TEST(IOStream, EmptyAndNullStringsTakeFourBytes)
{
    CMemoryWriteStream a, b;
    a.WriteString(std::string());
    b.WriteString(static_cast<const char*>(nullptr));
    EXPECT_EQ(Bytes(a), (std::vector<uint8_t>{0, 0, 0, 0}));
    EXPECT_EQ(Bytes(a), Bytes(b));
    CMemoryStream in(a.GetData(), a.GetSize());
    std::string s = "x";
    EXPECT_TRUE(in.ReadString(s));
    EXPECT_EQ(s, "");
}

TEST(IOStream, MemoryStreamWindowsClampReadsAndWrites)
{
    uint8_t src[10] = {0, 1, 2, 3, 4, 5, 6, 7, 8, 9};
    CMemoryStream s(src, 10);
    uint8_t dst[10] = {};
    EXPECT_EQ(s.Read(dst, 6), 6);
    EXPECT_EQ(s.Read(dst, 10), 4);
    EXPECT_EQ(dst[3], 9);
    EXPECT_EQ(s.Read(dst, 10), 0);
    EXPECT_EQ(s.Read(dst, 0), 0);
    EXPECT_EQ(s.Read(dst, -3), 0);

    uint8_t window[4] = {};
    s.SetWriteWindow(window, 4);
    EXPECT_EQ(s.Write(src, 3), 3);
    EXPECT_EQ(s.Write(src + 3, 3), 1);
    EXPECT_EQ(s.Write(src, 1), 0);
    EXPECT_EQ(window[3], 3);
}

TEST(IOStream, MemoryWriteStreamGrowsClearsAndNeverReads)
{
    CMemoryWriteStream s;
    EXPECT_EQ(s.GetData(), nullptr);
    EXPECT_EQ(s.Write("abc", 0), 0);
    std::vector<uint8_t> big(100000, 7);
    EXPECT_EQ(s.Write(big.data(), 100000), 100000);
    EXPECT_EQ(s.GetSize(), 100000);
    uint8_t b;
    EXPECT_EQ(s.Read(&b, 1), 0);
    s.Clear();
    EXPECT_EQ(s.GetData(), nullptr);
    EXPECT_EQ(s.GetSize(), 0);
}

TEST(IOStream, CheckMagicFlipsTheSwapFlagOnReversedMagic)
{
    const uint32_t kMagic = 0x454E4353; // 'SCNE'
    const uint8_t little[] = {0x53, 0x43, 0x4E, 0x45};
    const uint8_t big[] = {0x45, 0x4E, 0x43, 0x53};
    const uint8_t wrong[] = {1, 2, 3, 4};

    CMemoryStream a(little, 4);
    EXPECT_TRUE(a.CheckMagic(kMagic));
    EXPECT_FALSE(a.m_bSwapBytes);

    CMemoryStream b(big, 4);
    EXPECT_TRUE(b.CheckMagic(kMagic));
    EXPECT_TRUE(b.m_bSwapBytes);

    CMemoryStream c(wrong, 4);
    EXPECT_FALSE(c.CheckMagic(kMagic));
    EXPECT_FALSE(c.m_bSwapBytes);
}

TEST(IOStream, ArrayPathsSwapEachElement)
{
    const uint16_t shorts[3] = {0x0102, 0x0304, 0x0506};
    CMemoryWriteStream out;
    out.m_bSwapBytes = true;
    out.WriteU16Array(shorts, 3);
    EXPECT_EQ(Bytes(out), (std::vector<uint8_t>{1, 2, 3, 4, 5, 6}));
    EXPECT_EQ(shorts[0], 0x0102);

    std::vector<float> floats(1000);
    for (size_t i = 0; i < floats.size(); ++i)
    {
        floats[i] = static_cast<float>(i) * 0.5f;
    }
    CMemoryWriteStream big;
    big.m_bSwapBytes = true;
    big.WriteFloatArray(floats.data(), 1000);
    CMemoryStream in(big.GetData(), big.GetSize());
    in.m_bSwapBytes = true;
    std::vector<float> back(1000);
    EXPECT_TRUE(in.ReadFloatArray(back.data(), 1000));
    EXPECT_EQ(back, floats);
}

TEST(IOStream, FileStreamReportsOnlyFailedOpens)
{
    CFileStream s;
    uint8_t b = 0;
    EXPECT_EQ(s.Read(&b, 1), 0);
    EXPECT_EQ(s.Write(&b, 1), 0);
    EXPECT_FALSE(s.OpenRead("/nonexistent/folder/file.bin"));

    std::filesystem::path path = std::filesystem::temp_directory_path() / "iostream_test.bin";
    ASSERT_TRUE(s.OpenWrite(path.c_str()));
    s.WriteU32(0xAABBCCDD);
    ASSERT_TRUE(s.OpenRead(path.c_str())); // closes (and flushes) the written file first
    uint32_t u = 0;
    EXPECT_TRUE(s.ReadU32(u));
    EXPECT_EQ(u, 0xAABBCCDDu);
    s.Close();
    std::filesystem::remove(path);
}

namespace
{
// The floats 1 to 16 as IEEE bit patterns, written out by hand.
const uint32_t kOneToSixteen[16] = {0x3F800000, 0x40000000, 0x40400000, 0x40800000, 0x40A00000, 0x40C00000,
                                    0x40E00000, 0x41000000, 0x41100000, 0x41200000, 0x41300000, 0x41400000,
                                    0x41500000, 0x41600000, 0x41700000, 0x41800000};

std::vector<uint8_t> PatternBytes(bool bBigEndian)
{
    std::vector<uint8_t> bytes;
    for (uint32_t u : kOneToSixteen)
    {
        for (int i = 0; i < 4; ++i)
        {
            int iShift = bBigEndian ? 24 - 8 * i : 8 * i;
            bytes.push_back(static_cast<uint8_t>(u >> iShift));
        }
    }
    return bytes;
}

CMatrix44 OneToSixteen()
{
    CMatrix44 m;
    for (int r = 0; r < 4; ++r)
    {
        for (int c = 0; c < 4; ++c)
        {
            m.m[r][c] = static_cast<float>(r * 4 + c + 1);
        }
    }
    return m;
}
} // namespace

TEST(IOStream, MatrixBytesInBothOrdersRoundTripAndWriteAgainIdentically)
{
    for (bool bSwap : {false, true})
    {
        const CMatrix44 m = OneToSixteen();
        CMemoryWriteStream out;
        out.m_bSwapBytes = bSwap;
        ASSERT_TRUE(out.WriteMatrix(m));
        EXPECT_EQ(Bytes(out), PatternBytes(bSwap)) << "swap " << bSwap;

        CMemoryStream in(out.GetData(), out.GetSize());
        in.m_bSwapBytes = bSwap;
        CMatrix44 back = CMatrix44::Zero();
        ASSERT_TRUE(in.ReadMatrix(back));
        EXPECT_EQ(back, m);

        CMemoryWriteStream again;
        again.m_bSwapBytes = bSwap;
        again.WriteMatrix(back);
        EXPECT_EQ(Bytes(again), Bytes(out));
    }
}

TEST(IOStream, ArrayPathsAgreeWithSingleValuesForEveryLengthAndBothOrders)
{
    // Lengths around the vector block sizes, so every tail is covered.
    for (bool bSwap : {false, true})
    {
        for (int32_t iCount : {0, 1, 3, 4, 7, 8, 15, 16, 17, 31, 33, 100})
        {
            std::vector<uint32_t> values(static_cast<size_t>(iCount));
            std::vector<uint16_t> shorts(static_cast<size_t>(iCount));
            for (int32_t i = 0; i < iCount; ++i)
            {
                values[static_cast<size_t>(i)] = 0x01020304u * static_cast<uint32_t>(i + 1);
                shorts[static_cast<size_t>(i)] = static_cast<uint16_t>(0x0102 * (i + 1));
            }
            CMemoryWriteStream one, many;
            one.m_bSwapBytes = many.m_bSwapBytes = bSwap;
            for (int32_t i = 0; i < iCount; ++i)
            {
                one.WriteU32(values[static_cast<size_t>(i)]);
            }
            for (int32_t i = 0; i < iCount; ++i)
            {
                one.WriteU16(shorts[static_cast<size_t>(i)]);
            }
            EXPECT_TRUE(many.WriteU32Array(values.data(), iCount));
            EXPECT_TRUE(many.WriteU16Array(shorts.data(), iCount));
            ASSERT_EQ(Bytes(one), Bytes(many)) << iCount;
            if (iCount > 0)
            {
                uint8_t b0 = bSwap ? 0x01 : 0x04; // first byte of 0x01020304
                EXPECT_EQ(Bytes(many)[0], b0);
            }

            CMemoryStream in(many.GetData(), many.GetSize());
            in.m_bSwapBytes = bSwap;
            std::vector<uint32_t> backValues(static_cast<size_t>(iCount));
            std::vector<uint16_t> backShorts(static_cast<size_t>(iCount));
            EXPECT_TRUE(in.ReadU32Array(backValues.data(), iCount));
            EXPECT_TRUE(in.ReadU16Array(backShorts.data(), iCount));
            EXPECT_EQ(backValues, values);
            EXPECT_EQ(backShorts, shorts);
            EXPECT_EQ(in.GetReadRemaining(), 0);
        }
    }
}

TEST(IOStream, TypedWritesStayExactAcrossGrowthOfTheWriteStream)
{
    // Many small writes force the block to grow while typed values go through the fast path.
    CMemoryWriteStream out;
    out.m_bSwapBytes = true;
    for (uint32_t i = 0; i < 1000; ++i)
    {
        out.WriteU8(0xEE);
        out.WriteU32(i);
        out.WriteVec3({1.0f, 2.0f, 3.0f});
    }
    ASSERT_EQ(out.GetSize(), 1000 * 17);
    const std::vector<uint8_t> bytes = Bytes(out);
    const uint8_t kRecord17[17] = {0xEE, 0, 0, 0x01, 0x2C, 0x3F, 0x80, 0, 0, 0x40, 0, 0, 0, 0x40, 0x40, 0, 0};
    EXPECT_TRUE(std::equal(kRecord17, kRecord17 + 17, bytes.begin() + 17 * 300)); // i = 300 = 0x12C
}

TEST(IOStream, ShortReadsAtTheWindowEndLeaveTargetsAndPositionAlone)
{
    const uint8_t bytes[] = {1, 2, 3, 4, 5, 6};
    CMemoryStream in(bytes, 6);
    uint32_t u = 0;
    ASSERT_TRUE(in.ReadU32(u));
    EXPECT_EQ(u, 0x04030201u);
    CMatrix44 m = OneToSixteen();
    uint16_t s = 0;
    float f = 7.0f;
    EXPECT_FALSE(in.ReadFloat(f)); // 2 left: the short read consumes them
    EXPECT_EQ(f, 7.0f);
    EXPECT_FALSE(in.ReadU16(s));
    EXPECT_FALSE(in.ReadMatrix(m));
    EXPECT_EQ(m, OneToSixteen());

    CMemoryStream empty;
    EXPECT_EQ(empty.Read(&u, 4), 0);
    EXPECT_FALSE(empty.ReadU32(u));
    empty.SetReadWindow(nullptr, 10); // a null base is an empty window
    EXPECT_EQ(empty.GetReadRemaining(), 0);
    uint8_t b = 9;
    EXPECT_FALSE(empty.ReadU8(b));
    EXPECT_EQ(b, 9);
    EXPECT_FALSE(empty.WriteU32(1));

    CMemoryStream seek(bytes, 6);
    seek.SeekRead(4);
    EXPECT_TRUE(seek.ReadU16(s));
    EXPECT_EQ(s, 0x0605);
    seek.SeekRead(99);
    EXPECT_EQ(seek.GetReadPosition(), 6);
    seek.SeekRead(-1);
    EXPECT_EQ(seek.GetReadPosition(), 0);
}

TEST(IOStream, CheckMagicFlipsRatherThanSets)
{
    const uint32_t kMagic = 0x454E4353;
    const uint8_t little[] = {0x53, 0x43, 0x4E, 0x45};
    CMemoryStream s(little, 4);
    s.m_bSwapBytes = true; // the stream thought the data was swapped; the magic says otherwise
    EXPECT_TRUE(s.CheckMagic(kMagic));
    EXPECT_FALSE(s.m_bSwapBytes);
    EXPECT_FALSE(s.CheckMagic(kMagic)); // exhausted
}

TEST(IOStream, FileStreamRoundTripsTypedValuesInBothOrders)
{
    std::filesystem::path path = std::filesystem::temp_directory_path() / "iostream_file_orders.bin";
    for (bool bSwap : {false, true})
    {
        CFileStream out;
        ASSERT_TRUE(out.OpenWrite(path.c_str()));
        out.m_bSwapBytes = bSwap;
        WriteSample(out);
        out.WriteMatrix(OneToSixteen());
        out.Close();

        std::vector<uint8_t> expected = bSwap ? kSwapped : kNative;
        std::vector<uint8_t> matrix = PatternBytes(bSwap);
        expected.insert(expected.end(), matrix.begin(), matrix.end());
        CFileStream in;
        ASSERT_TRUE(in.OpenRead(path.c_str()));
        std::vector<uint8_t> disk(expected.size() + 1);
        EXPECT_EQ(in.Read(disk.data(), static_cast<int32_t>(disk.size())),
                  static_cast<int32_t>(expected.size()));
        disk.pop_back();
        EXPECT_EQ(disk, expected);
    }
    std::filesystem::remove(path);
}
