#include "engine/utility/SystemOutput.h"

#include "Utils/Utility/GUtDebug.h"

#include <gtest/gtest.h>

#include <cwchar>
#include <string>
#include <vector>

using namespace Kestrin::Utility;

namespace
{
class CRecordingOutput final : public ISystemOutput
{
public:
    void Print(int iLevel, const char* pcText) override
    {
        m_lines.push_back(std::to_string(iLevel) + ":" + pcText);
    }
    std::vector<std::string> m_lines;
};
} // namespace

TEST(SystemOutput, HelpersFormatIntoTheInstalledOutput)
{
    CRecordingOutput output;
    SetSystemOutput(&output);
    EXPECT_EQ(GetSystemOutput(), &output);
    Printf("mesh %s loaded in %d ms", "a.mesh", 12);
    Warn("Load mesh \"%s\" fail.\n", "b.mesh");
    Printf("%s", std::string(2000, 'x').c_str()); // cut at 1023 characters
    Printf("%lc", static_cast<wint_t>(0xD800));   // a format error prints nothing
    SetSystemOutput(nullptr);
    ASSERT_EQ(output.m_lines.size(), 3u);
    EXPECT_EQ(output.m_lines[0], "0:mesh a.mesh loaded in 12 ms");
    EXPECT_EQ(output.m_lines[1], "1:Load mesh \"b.mesh\" fail.\n");
    EXPECT_EQ(output.m_lines[2], "0:" + std::string(1023, 'x'));
    EXPECT_NE(GetSystemOutput(), &output);
}

TEST(SystemOutputDeathTest, TheDefaultOutputEndsTheProcessAtLevelTwo)
{
    GTEST_FLAG_SET(death_test_style, "threadsafe");
    EXPECT_DEATH(GetSystemOutput()->Print(2, "fatal: out of video memory"), "fatal: out of video memory");
}
