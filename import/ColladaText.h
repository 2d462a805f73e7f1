// Number lists of Collada text: parsed and printed in the C locale, whatever the process
// locale, with std::from_chars and std::to_chars.
#pragma once

#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

namespace Kestrin::Utility::ColladaText
{

inline bool IsSpace(char c)
{
    return c == ' ' || c == '\n' || c == '\r' || c == '\t';
}

// Whitespace-separated numbers of a NUL-terminated text (null reads as empty) appended to
// aOut. False at the first token that is not a number (or, for the unsigned form, not a
// 32-bit unsigned integer); *ppBad then points at it. A decimal comma reads as a point.
bool ParseFloats(const char* pcText, std::vector<float>& aOut, const char** ppBad = nullptr);
bool ParseUInts(const char* pcText, std::vector<uint32_t>& aOut, const char** ppBad = nullptr);
bool ParseInts(const char* pcText, std::vector<int32_t>& aOut, const char** ppBad = nullptr);
// Exactly one number, surrounded by optional whitespace.
bool ParseFloat(std::string_view text, float& fOut);
bool ParseInt(std::string_view text, int64_t& iOut);
// Whitespace-separated words (Name_array, IDREF_array).
void ParseWords(std::string_view text, std::vector<std::string>& aOut);
// Text without leading and trailing whitespace.
std::string_view Trim(std::string_view text);

// The shortest text that reads back to the same float ("0.1", "1e+30").
void AppendFloat(std::string& strOut, float f);
void AppendInt(std::string& strOut, int64_t i);
std::string FloatText(float f);
std::string IntText(int64_t i);
// Each value followed by one space, the "%g " shape.
void AppendFloatList(std::string& strOut, const float* pf, size_t uCount);
void AppendUIntList(std::string& strOut, const uint32_t* pu, size_t uCount);

} // namespace Kestrin::Utility::ColladaText
