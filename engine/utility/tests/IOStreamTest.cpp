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
