#include "import/ColladaText.h"

#include <charconv>
#include <limits>

namespace Kestrin::Utility::ColladaText
{

namespace
{
const char* SkipSpace(const char* p, const char* pEnd)
{
    while (p < pEnd && IsSpace(*p))
    {
        ++p;
    }
    return p;
}

// from_chars takes no leading '+', which some exporters write.
const char* SkipPlus(const char* p, const char* pEnd)
{
    return (p + 1 < pEnd && *p == '+' && p[1] != '-') ? p + 1 : p;
}


// One number from p: the end of its token, or null when the token is not a number. A token
// with a decimal comma ("0,5", written by exporters that used the process locale) is read as
// with a point.
const char* ParseOneFloat(const char* p, const char* pEnd, float& f)
{
    const char* pToken = SkipPlus(p, pEnd);
    std::from_chars_result r = std::from_chars(pToken, pEnd, f);
    if (r.ptr < pEnd && *r.ptr == ',')
    {
        char ac[64];
        size_t uLength = 0;
        while (pToken + uLength < pEnd && !IsSpace(pToken[uLength]) && uLength < sizeof(ac))
        {
            ac[uLength] = pToken[uLength] == ',' ? '.' : pToken[uLength];
            ++uLength;
        }
        r = std::from_chars(ac, ac + uLength, f);
        r.ptr = pToken + (r.ptr - ac);
    }
    if (r.ec == std::errc::result_out_of_range)
    {
        // from_chars leaves f as it was: overflow reads as infinity, underflow as zero.
        bool bTiny = false;
        for (const char* q = pToken; q < r.ptr; ++q)
        {
            bTiny = bTiny || ((*q == 'e' || *q == 'E') && q + 1 < r.ptr && q[1] == '-');
        }
        f = bTiny ? 0.0f : std::numeric_limits<float>::infinity();
        f = *pToken == '-' ? -f : f;
    }
    else if (r.ec != std::errc())
    {
        return nullptr;
    }
    return (r.ptr < pEnd && !IsSpace(*r.ptr)) ? nullptr : r.ptr;
}
} // namespace

bool ParseFloats(std::string_view text, std::vector<float>& aOut, const char** ppBad)
{
    const char* p = text.data();
    const char* pEnd = p + text.size();
    while (true)
    {
        p = SkipSpace(p, pEnd);
        if (p == pEnd)
        {
            return true;
        }
        float f = 0.0f;
        const char* pNext = ParseOneFloat(p, pEnd, f);
        if (!pNext)
        {
            if (ppBad)
            {
                *ppBad = p;
            }
            return false;
        }
        aOut.push_back(f);
        p = pNext;
    }
}

bool ParseUInts(std::string_view text, std::vector<uint32_t>& aOut, const char** ppBad)
{
    const char* p = text.data();
    const char* pEnd = p + text.size();
    while (true)
    {
        p = SkipSpace(p, pEnd);
        if (p == pEnd)
        {
            return true;
        }
        const char* pStart = p;
        uint64_t u = 0;
        while (p < pEnd && uint8_t(*p - '0') < 10 && u <= 0xffffffffu)
        {
            u = u * 10 + uint64_t(*p - '0');
            ++p;
        }
        if (p == pStart || u > 0xffffffffu || (p < pEnd && !IsSpace(*p)))
        {
            if (ppBad)
            {
                *ppBad = pStart;
            }
            return false;
        }
        aOut.push_back(uint32_t(u));
    }
}

bool ParseInts(std::string_view text, std::vector<int32_t>& aOut, const char** ppBad)
{
    const char* p = text.data();
    const char* pEnd = p + text.size();
    while (true)
    {
        p = SkipSpace(p, pEnd);
        if (p == pEnd)
        {
            return true;
        }
        int32_t i = 0;
        std::from_chars_result r = std::from_chars(SkipPlus(p, pEnd), pEnd, i);
        if (r.ec != std::errc() || (r.ptr < pEnd && !IsSpace(*r.ptr)))
        {
            if (ppBad)
            {
                *ppBad = p;
            }
            return false;
        }
        aOut.push_back(i);
        p = r.ptr;
    }
}

std::string_view Trim(std::string_view text)
{
    size_t uStart = 0;
    while (uStart < text.size() && IsSpace(text[uStart]))
    {
        ++uStart;
    }
    size_t uEnd = text.size();
    while (uEnd > uStart && IsSpace(text[uEnd - 1]))
    {
        --uEnd;
    }
    return text.substr(uStart, uEnd - uStart);
}

bool ParseFloat(std::string_view text, float& fOut)
{
    text = Trim(text);
    float f = 0.0f;
    if (text.empty() || ParseOneFloat(text.data(), text.data() + text.size(), f) != text.data() + text.size())
    {
        return false;
    }
    fOut = f;
    return true;
}

bool ParseInt(std::string_view text, int64_t& iOut)
{
    text = Trim(text);
    const char* pEnd = text.data() + text.size();
    int64_t i = 0;
    std::from_chars_result r = std::from_chars(SkipPlus(text.data(), pEnd), pEnd, i);
    if (text.empty() || r.ec != std::errc() || r.ptr != pEnd)
    {
        return false;
    }
    iOut = i;
    return true;
}

void ParseWords(std::string_view text, std::vector<std::string>& aOut)
{
    const char* p = text.data();
    const char* pEnd = p + text.size();
    while (true)
    {
        p = SkipSpace(p, pEnd);
        if (p == pEnd)
        {
            return;
        }
        const char* pStart = p;
        while (p < pEnd && !IsSpace(*p))
        {
            ++p;
        }
        aOut.emplace_back(pStart, size_t(p - pStart));
    }
}

void AppendFloat(std::string& strOut, float f)
{
    char ac[32];
    std::to_chars_result r = std::to_chars(ac, ac + sizeof(ac), f);
    strOut.append(ac, size_t(r.ptr - ac));
}

void AppendInt(std::string& strOut, int64_t i)
{
    char ac[24];
    std::to_chars_result r = std::to_chars(ac, ac + sizeof(ac), i);
    strOut.append(ac, size_t(r.ptr - ac));
}

std::string FloatText(float f)
{
    std::string str;
    AppendFloat(str, f);
    return str;
}

std::string IntText(int64_t i)
{
    std::string str;
    AppendInt(str, i);
    return str;
}

void AppendFloatList(std::string& strOut, const float* pf, size_t uCount)
{
    strOut.reserve(strOut.size() + uCount * 10);
    char ac[32];
    for (size_t i = 0; i < uCount; ++i)
    {
        std::to_chars_result r = std::to_chars(ac, ac + sizeof(ac) - 1, pf[i]);
        *r.ptr = ' ';
        strOut.append(ac, size_t(r.ptr - ac) + 1);
    }
}

void AppendUIntList(std::string& strOut, const uint32_t* pu, size_t uCount)
{
    strOut.reserve(strOut.size() + uCount * 6);
    char ac[16];
    for (size_t i = 0; i < uCount; ++i)
    {
        std::to_chars_result r = std::to_chars(ac, ac + sizeof(ac) - 1, pu[i]);
        *r.ptr = ' ';
        strOut.append(ac, size_t(r.ptr - ac) + 1);
    }
}

} // namespace Kestrin::Utility::ColladaText
