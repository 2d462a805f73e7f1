#include "Utils/Utility/GUtString.h"

#include <gtest/gtest.h>

#include <string>

TEST(GUtString, HoldsTextLengthAndCapacity)
{
    GUtString s;
    EXPECT_STREQ(s.c_str(), "");
    EXPECT_TRUE(s.IsEmpty());
    s = "abc";
    EXPECT_EQ(s.Length(), 3);
    EXPECT_GE(s.Capacity(), 3);
    s += "def";
    s += 'g';
    EXPECT_STREQ(s.c_str(), "abcdefg");
    s = nullptr;
    EXPECT_STREQ(s.c_str(), "");
}

TEST(GUtString, FormatIsCappedAt1023Bytes)
{
    GUtString s;
    std::string big(5000, 'x');
    EXPECT_EQ(s.Format("%s", big.c_str()), 1023);
    EXPECT_EQ(s.Length(), 1023);
    EXPECT_EQ(s.AppendFormat("%d-%s", 7, "z"), 3);
    EXPECT_EQ(s.Length(), 1026);
    EXPECT_EQ(s.Mid(1023).ToStd(), "7-z");
}

TEST(GUtString, SelfAppendAndAssignAreSafe)
{
    GUtString s("abcdef");
    s.Append(s.c_str() + 2, 3);
    EXPECT_STREQ(s.c_str(), "abcdefcde");
    s.Assign(s.c_str() + 6, 3);
    EXPECT_STREQ(s.c_str(), "cde");
}

TEST(GUtString, CaseAndSearchHelpers)
{
    GUtString s("Data\\TEX\\A.dds");
    s.Replace('\\', '/');
    EXPECT_STREQ(s.c_str(), "Data/TEX/A.dds");
    EXPECT_EQ(s.Find('/'), 4);
    EXPECT_EQ(s.ReverseFind('/'), 8);
    EXPECT_EQ(s.CompareNoCase("data/tex/a.DDS"), 0);
    EXPECT_NE(s.Compare("data/tex/a.DDS"), 0);
    EXPECT_TRUE(s.EndsWithNoCase(".DDS"));
    EXPECT_FALSE(s.EndsWithNoCase("much longer than the string"));
    s.ToLower();
    EXPECT_STREQ(s.c_str(), "data/tex/a.dds");
    EXPECT_STREQ(s.Left(4).c_str(), "data");
    EXPECT_STREQ(s.Left(400).c_str(), "data/tex/a.dds");
    EXPECT_STREQ((s.Left(4) + "/x").c_str(), "data/x");
}

TEST(GUtString, CopyAndMoveKeepText)
{
    GUtString a("hello");
    GUtString b(a);
    GUtString c(std::move(a));
    EXPECT_STREQ(b.c_str(), "hello");
    EXPECT_STREQ(c.c_str(), "hello");
    EXPECT_TRUE(a.IsEmpty()); // NOLINT(bugprone-use-after-move): moved-from is empty by contract
    b = c;
    EXPECT_TRUE(b == c);
}
