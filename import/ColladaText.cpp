#include "import/ColladaText.h"

#include <algorithm>
#include <charconv>
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <limits>

namespace Kestrin::Utility::ColladaText
{

// Lists are parsed straight from the document's NUL-terminated text, in one pass.

namespace
{
// The end of the token at p: the next whitespace or the terminator.
const char* TokenEnd(const char* p)
{
    while (*p && !IsSpace(*p))
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

// The exporters' everyday numbers ("-12.3456", "1e-05") without from_chars: the decimal
// mantissa and exponent give the double nearest the number with one rounding (Clinger's fast
// path); the float nearest that double is the float nearest the number unless the double sits
// exactly half-way between two floats, which is left to from_chars. Null when the token is not
// such a number.
const char* FastFloat(const char* p, float& f)
{
    static const double s_adPow10[] = {1e0,  1e1,  1e2,  1e3,  1e4,  1e5,  1e6,  1e7,  1e8,  1e9,  1e10, 1e11,
                                       1e12, 1e13, 1e14, 1e15, 1e16, 1e17, 1e18, 1e19, 1e20, 1e21, 1e22};
    bool bNegative = *p == '-';
    p += (*p == '-' || *p == '+') ? 1 : 0;
    uint64_t uMantissa = 0;
    const char* pDigits = p;
    for (; uint8_t(*p - '0') < 10; ++p)
    {
        uMantissa = uMantissa * 10 + uint64_t(*p - '0');
    }
    ptrdiff_t iCount = p - pDigits;
    int iExponent = 0;
    if (*p == '.')
    {
        const char* pFraction = ++p;
        for (; uint8_t(*p - '0') < 10; ++p)
        {
            uMantissa = uMantissa * 10 + uint64_t(*p - '0');
        }
        iExponent = -int(std::min<ptrdiff_t>(p - pFraction, 1000));
        iCount += p - pFraction;
    }
    // More than 19 digits may have overflowed the mantissa: from_chars reads those.
    if (iCount == 0 || iCount > 19)
    {
        return nullptr;
    }
    if (*p == 'e' || *p == 'E')
    {
        ++p;
        bool bNegativeExponent = *p == '-';
        p += (*p == '-' || *p == '+') ? 1 : 0;
        int iValue = 0, iExponentDigits = 0;
        for (; uint8_t(*p - '0') < 10 && iExponentDigits < 4; ++p, ++iExponentDigits)
        {
            iValue = iValue * 10 + (*p - '0');
        }
        if (iExponentDigits == 0 || iExponentDigits == 4)
        {
            return nullptr;
        }
        iExponent += bNegativeExponent ? -iValue : iValue;
    }
    if (*p && !IsSpace(*p))
    {
        return nullptr;
    }
    if (uMantissa == 0)
    {
        f = bNegative ? -0.0f : 0.0f;
        return p;
    }
    if (uMantissa > (uint64_t(1) << 53) || iExponent < -22 || iExponent > 22)
    {
        return nullptr;
    }
    double d = double(uMantissa);
    d = iExponent < 0 ? d / s_adPow10[-iExponent] : d * s_adPow10[iExponent];
    uint64_t uBits = 0;
    memcpy(&uBits, &d, sizeof(d));
    if ((uBits & 0x1fffffff) == 0x10000000 || d < double(std::numeric_limits<float>::min()) ||
        d > double(std::numeric_limits<float>::max()))
    {
        return nullptr;
    }
    f = bNegative ? -float(d) : float(d);
    return p;
}

// One number at p: the end of its token, or null when the token is not a number. A token
// with a decimal comma ("0,5", written by exporters that used the process locale) is read as
// with a point. Out of range reads as infinity or zero.
const char* ParseOneFloat(const char* p, float& f)
{
    if (const char* pFast = FastFloat(p, f))
    {
        return pFast;
    }
    const char* pEnd = TokenEnd(p);
    const char* pToken = SkipPlus(p, pEnd);
    char ac[64] = {};
    size_t uLength = size_t(pEnd - pToken);
    if (uLength >= sizeof(ac))
    {
        return nullptr;
    }
    for (size_t i = 0; i < uLength; ++i)
    {
        ac[i] = pToken[i] == ',' ? '.' : pToken[i];
    }
    std::from_chars_result r = std::from_chars(ac, ac + uLength, f);
    if (r.ec == std::errc::result_out_of_range)
    {
        // from_chars leaves f as it was.
        const char* pE = std::find_if(ac, ac + uLength, [](char c) { return c == 'e' || c == 'E'; });
        bool bTiny = pE + 1 < ac + uLength && pE[1] == '-';
        f = bTiny ? 0.0f : std::numeric_limits<float>::infinity();
        f = *pToken == '-' ? -f : f;
    }
    else if (r.ec != std::errc())
    {
        return nullptr;
    }
    return r.ptr == ac + uLength ? pEnd : nullptr;
}

const char* SkipSpace(const char* p)
{
    while (IsSpace(*p))
    {
        ++p;
    }
    return p;
}
} // namespace

bool ParseFloats(const char* pcText, std::vector<float>& aOut, const char** ppBad)
{
    for (const char* p = SkipSpace(pcText ? pcText : ""); *p; p = SkipSpace(p))
    {
        float f = 0.0f;
        const char* pNext = ParseOneFloat(p, f);
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
    return true;
}

bool ParseUInts(const char* pcText, std::vector<uint32_t>& aOut, const char** ppBad)
{
    for (const char* p = SkipSpace(pcText ? pcText : ""); *p; p = SkipSpace(p))
    {
        const char* pStart = p;
        uint64_t u = 0;
        for (; uint8_t(*p - '0') < 10; ++p)
        {
            u = u * 10 + uint64_t(*p - '0');
        }
        // More than ten digits do not fit (and may have wrapped).
        if (p == pStart || p - pStart > 10 || u > 0xffffffffu || (*p && !IsSpace(*p)))
        {
            if (ppBad)
            {
                *ppBad = pStart;
            }
            return false;
        }
        aOut.push_back(uint32_t(u));
    }
    return true;
}

bool ParseInts(const char* pcText, std::vector<int32_t>& aOut, const char** ppBad)
{
    for (const char* p = SkipSpace(pcText ? pcText : ""); *p; p = SkipSpace(p))
    {
        const char* pStart = p;
        bool bNegative = *p == '-';
        p += (*p == '-' || *p == '+') ? 1 : 0;
        const char* pDigits = p;
        int64_t i = 0;
        for (int n = 0; n < 11 && uint8_t(*p - '0') < 10; ++n, ++p)
        {
            i = i * 10 + (*p - '0');
        }
        i = bNegative ? -i : i;
        if (p == pDigits || i < INT32_MIN || i > INT32_MAX || (*p && !IsSpace(*p)))
        {
            if (ppBad)
            {
                *ppBad = pStart;
            }
            return false;
        }
        aOut.push_back(int32_t(i));
    }
    return true;
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
    char ac[64];
    if (text.empty() || text.size() >= sizeof(ac))
    {
        return false;
    }
    memcpy(ac, text.data(), text.size());
    ac[text.size()] = 0;
    float f = 0.0f;
    if (ParseOneFloat(ac, f) != ac + text.size())
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
        while (p < pEnd && IsSpace(*p))
        {
            ++p;
        }
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
