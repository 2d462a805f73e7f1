// Number lists: the fast decimal path agrees with correctly rounded parsing, printed floats
// read back to the same bits, and malformed tokens are refused.
#include "import/ColladaText.h"

#include <gtest/gtest.h>

#include <charconv>
#include <cmath>
#include <cstring>
#include <random>

using namespace Kestrin::Utility;

namespace
{
float Parse(const std::string& str)
{
    std::vector<float> af;
    EXPECT_TRUE(ColladaText::ParseFloats(str.c_str(), af)) << str;
    EXPECT_EQ(af.size(), 1u) << str;
    return af.empty() ? NAN : af[0];
}

bool SameBits(float a, float b)
{
    return memcmp(&a, &b, sizeof(float)) == 0;
}
} // namespace

TEST(ColladaText, PrintedFloatsReadBackToTheSameBits)
{
    std::mt19937 rng(7);
    std::string strText;
    std::vector<float> afWritten;
    for (int i = 0; i < 200000; ++i)
    {
        uint32_t uBits = rng();
        float f;
        memcpy(&f, &uBits, sizeof(f));
        if (std::isnan(f))
        {
            continue;
        }
        afWritten.push_back(f);
    }
    ColladaText::AppendFloatList(strText, afWritten.data(), afWritten.size());
    std::vector<float> afRead;
    ASSERT_TRUE(ColladaText::ParseFloats(strText.c_str(), afRead));
    ASSERT_EQ(afRead.size(), afWritten.size());
    EXPECT_EQ(memcmp(afRead.data(), afWritten.data(), afRead.size() * sizeof(float)), 0);
}

// Exporters print six to nine significant digits; each must give the correctly rounded float.
TEST(ColladaText, DecimalTextIsCorrectlyRounded)
{
    std::mt19937 rng(11);
    std::uniform_real_distribution<double> exponent(-12.0, 12.0);
    char ac[64];
    for (int i = 0; i < 200000; ++i)
    {
        double d = std::pow(10.0, exponent(rng)) * ((rng() & 1) ? -1.0 : 1.0);
        snprintf(ac, sizeof(ac), i % 3 == 0 ? "%.6g" : i % 3 == 1 ? "%.9g" : "%.8f", d);
        float fExpected = 0.0f;
        std::from_chars(ac, ac + strlen(ac), fExpected);
        ASSERT_TRUE(SameBits(Parse(ac), fExpected)) << ac;
    }
    // Half-way between two floats: 1 + 2^-24 rounds to even (1), 1 + 3 * 2^-24 up.
    EXPECT_EQ(Parse("1.000000059604644775390625"), 1.0f);
    EXPECT_EQ(Parse("1.000000178813934326171875"), 1.0000002384185791f);
    EXPECT_EQ(Parse("16777217"), 16777216.0f);
}

TEST(ColladaText, ListsAndTheirMalformedTokens)
{
    std::vector<float> af;
    EXPECT_TRUE(ColladaText::ParseFloats(" \r\n\t1 +2 -3.5e1\t0,25 1E+2 inf -0 1e-50 1e50\n", af));
    ASSERT_EQ(af.size(), 9u);
    EXPECT_EQ(af[1], 2.0f);
    EXPECT_EQ(af[2], -35.0f);
    EXPECT_EQ(af[3], 0.25f);
    EXPECT_EQ(af[4], 100.0f);
    EXPECT_TRUE(std::isinf(af[5]));
    EXPECT_TRUE(std::signbit(af[6]));
    EXPECT_EQ(af[7], 0.0f);
    EXPECT_TRUE(std::isinf(af[8]));
    // Out of range through the slow path (too many digits for the fast one): sign and size kept.
    af.clear();
    EXPECT_TRUE(
        ColladaText::ParseFloats("-1234567890123456789012e30 1234567890123456789012e-80 9e99999", af));
    ASSERT_EQ(af.size(), 3u);
    EXPECT_TRUE(std::isinf(af[0]) && af[0] < 0);
    EXPECT_EQ(af[1], 0.0f);
    EXPECT_TRUE(std::isinf(af[2]) && af[2] > 0);
    EXPECT_TRUE(ColladaText::ParseFloats(nullptr, af));
    const char* pBad = nullptr;
    const char* pcText = "1 2 1.#QNAN 4";
    EXPECT_FALSE(ColladaText::ParseFloats(pcText, af, &pBad));
    EXPECT_EQ(pBad, pcText + 4);
    EXPECT_FALSE(ColladaText::ParseFloats("1x", af));
    EXPECT_FALSE(ColladaText::ParseFloats("-", af));
    EXPECT_FALSE(ColladaText::ParseFloats("1e", af));

    std::vector<uint32_t> au;
    EXPECT_TRUE(ColladaText::ParseUInts("0 4294967295 12", au));
    EXPECT_EQ(au, (std::vector<uint32_t>{0, 4294967295u, 12}));
    EXPECT_FALSE(ColladaText::ParseUInts("4294967296", au));
    EXPECT_FALSE(ColladaText::ParseUInts("123456789012345", au));
    EXPECT_FALSE(ColladaText::ParseUInts("1.5", au));
    std::vector<int32_t> ai;
    EXPECT_TRUE(ColladaText::ParseInts("-1 +2 3", ai));
    EXPECT_EQ(ai, (std::vector<int32_t>{-1, 2, 3}));
    EXPECT_FALSE(ColladaText::ParseInts("1 2147483648", ai));

    float f = 0.0f;
    EXPECT_TRUE(ColladaText::ParseFloat("  2.5\n", f));
    EXPECT_EQ(f, 2.5f);
    EXPECT_FALSE(ColladaText::ParseFloat("2.5 3", f));
    EXPECT_FALSE(ColladaText::ParseFloat("", f));
    std::vector<std::string> aWords;
    ColladaText::ParseWords(" hip\tknee\n foot ", aWords);
    EXPECT_EQ(aWords, (std::vector<std::string>{"hip", "knee", "foot"}));
    EXPECT_EQ(ColladaText::FloatText(0.1f), "0.1");
    EXPECT_EQ(ColladaText::IntText(-42), "-42");
}
