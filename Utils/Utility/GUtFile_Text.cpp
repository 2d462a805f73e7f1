// GUtFile: the text forms. Outside binary mode numbers are decimal text; the wide bits make
// every text UTF-16 code units (char16_t, in the file's byte order), never wchar_t.
#include "Utils/Utility/GUtDebug.h"
#include "Utils/Utility/GUtFile.h"

#include <cerrno>
#include <cinttypes>
#include <cstdio>
#include <cstdlib>
#include <limits>
#include <string>

namespace
{
const char* const READ_TITLE = "GUtFile::operator>>()";

bool IsSpace(uint32_t c)
{
    return c == ' ' || c == '\t' || c == '\n' || c == '\r' || c == '\v' || c == '\f';
}

// UTF-8 to UTF-16; a malformed byte becomes U+FFFD.
std::u16string ToUtf16(const char* pcText, size_t uLength)
{
    std::u16string out;
    out.reserve(uLength);
    const unsigned char* p = reinterpret_cast<const unsigned char*>(pcText);
    size_t i = 0;
    while (i < uLength)
    {
        uint32_t c = p[i];
        size_t uExtra = c < 0x80 ? 0 : (c >> 5) == 6 ? 1 : (c >> 4) == 14 ? 2 : (c >> 3) == 30 ? 3 : 4;
        if (uExtra == 4 || i + uExtra >= uLength + (uExtra ? 0 : 1))
        {
            out += u'\xFFFD';
            ++i;
            continue;
        }
        c &= uExtra == 0 ? 0x7F : (0x3F >> uExtra);
        bool bValid = true;
        for (size_t k = 1; k <= uExtra; ++k)
        {
            bValid = bValid && (p[i + k] & 0xC0) == 0x80;
            c = (c << 6) | (p[i + k] & 0x3F);
        }
        if (!bValid || c > 0x10FFFF)
        {
            out += u'\xFFFD';
            ++i;
            continue;
        }
        i += uExtra + 1;
        if (c >= 0x10000)
        {
            c -= 0x10000;
            out += static_cast<char16_t>(0xD800 + (c >> 10));
            out += static_cast<char16_t>(0xDC00 + (c & 0x3FF));
        }
        else
        {
            out += static_cast<char16_t>(c);
        }
    }
    return out;
}

void AppendUtf8(std::string& out, uint32_t c)
{
    if (c < 0x80)
    {
        out += static_cast<char>(c);
    }
    else if (c < 0x800)
    {
        out += static_cast<char>(0xC0 | (c >> 6));
        out += static_cast<char>(0x80 | (c & 0x3F));
    }
    else if (c < 0x10000)
    {
        out += static_cast<char>(0xE0 | (c >> 12));
        out += static_cast<char>(0x80 | ((c >> 6) & 0x3F));
        out += static_cast<char>(0x80 | (c & 0x3F));
    }
    else
    {
        out += static_cast<char>(0xF0 | (c >> 18));
        out += static_cast<char>(0x80 | ((c >> 12) & 0x3F));
        out += static_cast<char>(0x80 | ((c >> 6) & 0x3F));
        out += static_cast<char>(0x80 | (c & 0x3F));
    }
}

std::string ToUtf8(const std::u16string& text)
{
    std::string out;
    for (size_t i = 0; i < text.size(); ++i)
    {
        uint32_t c = text[i];
        if (c >= 0xD800 && c < 0xDC00 && i + 1 < text.size() && text[i + 1] >= 0xDC00 && text[i + 1] < 0xE000)
        {
            c = 0x10000 + ((c - 0xD800) << 10) + (text[i + 1] - 0xDC00);
            ++i;
        }
        AppendUtf8(out, c);
    }
    return out;
}

// Parses a whole word as a number of the wanted kind; false on anything left over.
bool ParseSigned(const char* pcWord, int64_t iMin, int64_t iMax, int64_t& iValue)
{
    char* pcEnd = nullptr;
    errno = 0;
    const long long iParsed = std::strtoll(pcWord, &pcEnd, 10);
    if (pcEnd == pcWord || *pcEnd || errno || iParsed < iMin || iParsed > iMax)
    {
        return false;
    }
    iValue = iParsed;
    return true;
}

bool ParseUnsigned(const char* pcWord, uint64_t uMax, uint64_t& uValue)
{
    char* pcEnd = nullptr;
    errno = 0;
    const unsigned long long uParsed = std::strtoull(pcWord, &pcEnd, 10);
    if (pcEnd == pcWord || *pcEnd || errno || pcWord[0] == '-' || uParsed > uMax)
    {
        return false;
    }
    uValue = uParsed;
    return true;
}

bool ParseDouble(const char* pcWord, double& dValue)
{
    char* pcEnd = nullptr;
    errno = 0;
    const double dParsed = std::strtod(pcWord, &pcEnd);
    if (pcEnd == pcWord || *pcEnd || errno == ERANGE)
    {
        return false;
    }
    dValue = dParsed;
    return true;
}

void ReportTypeError(const GUtString& word)
{
    GUtLog::Get().DisplayMsg(false, 1, READ_TITLE, "%s : Data Type Error", word.c_str());
}
} // namespace

int32_t GUtFile::WriteText(const char* pcText, int32_t iLength)
{
    if (!pcText || iLength <= 0)
    {
        return 0;
    }
    if (m_uMode & (MODE_WIDE | MODE_WIDE2))
    {
        const std::u16string wide = ToUtf16(pcText, static_cast<size_t>(iLength));
        return WriteWChars(wide.data(), static_cast<int32_t>(wide.size() * sizeof(char16_t)));
    }
    return WriteChars(pcText, iLength);
}

GUtFile& GUtFile::operator<<(int32_t iValue)
{
    if (m_uMode & MODE_BINARY)
    {
        WriteI32s(&iValue, sizeof(iValue));
        return *this;
    }
    char acText[32];
    WriteText(acText, snprintf(acText, sizeof(acText), "%" PRId32, iValue));
    return *this;
}

GUtFile& GUtFile::operator<<(uint32_t uValue)
{
    if (m_uMode & MODE_BINARY)
    {
        WriteU32s(&uValue, sizeof(uValue));
        return *this;
    }
    char acText[32];
    WriteText(acText, snprintf(acText, sizeof(acText), "%" PRIu32, uValue));
    return *this;
}

GUtFile& GUtFile::operator<<(int64_t iValue)
{
    if (m_uMode & MODE_BINARY)
    {
        WriteI64s(&iValue, sizeof(iValue));
        return *this;
    }
    char acText[32];
    WriteText(acText, snprintf(acText, sizeof(acText), "%" PRId64, iValue));
    return *this;
}

GUtFile& GUtFile::operator<<(uint64_t uValue)
{
    if (m_uMode & MODE_BINARY)
    {
        const int64_t iBits = static_cast<int64_t>(uValue);
        WriteI64s(&iBits, sizeof(iBits));
        return *this;
    }
    char acText[32];
    WriteText(acText, snprintf(acText, sizeof(acText), "%" PRIu64, uValue));
    return *this;
}

GUtFile& GUtFile::operator<<(float fValue)
{
    if (m_uMode & MODE_BINARY)
    {
        WriteFloats(&fValue, sizeof(fValue));
        return *this;
    }
    char acText[48];
    WriteText(acText, snprintf(acText, sizeof(acText), "%.9g", static_cast<double>(fValue)));
    return *this;
}

GUtFile& GUtFile::operator<<(double dValue)
{
    if (m_uMode & MODE_BINARY)
    {
        WriteDoubles(&dValue, sizeof(dValue));
        return *this;
    }
    char acText[48];
    WriteText(acText, snprintf(acText, sizeof(acText), "%.17g", dValue));
    return *this;
}

GUtFile& GUtFile::operator<<(const char* pcText)
{
    if (!pcText)
    {
        return *this;
    }
    const int32_t iLength = static_cast<int32_t>(std::char_traits<char>::length(pcText));
    if (m_uMode & MODE_BINARY)
    {
        WriteChars(pcText, iLength);
    }
    else
    {
        WriteText(pcText, iLength);
    }
    return *this;
}

GUtFile& GUtFile::operator<<(const GUtString& text)
{
    return *this << text.c_str();
}

GUtFile& GUtFile::operator<<(const char16_t* pText)
{
    if (!pText)
    {
        return *this;
    }
    const std::u16string text(pText);
    if (m_uMode & (MODE_WIDE | MODE_WIDE2))
    {
        WriteWChars(text.data(), static_cast<int32_t>(text.size() * sizeof(char16_t)));
        return *this;
    }
    const std::string narrow = ToUtf8(text);
    WriteChars(narrow.data(), static_cast<int32_t>(narrow.size()));
    return *this;
}

bool GUtFile::_ReadWord(GUtString& word)
{
    GUtCriticalSectionLock lock(m_lock);
    word.Clear();
    if (m_uMode & (MODE_WIDE | MODE_WIDE2))
    {
        std::u16string wide;
        char16_t c = 0;
        while (ReadWChars(&c, sizeof(c)) == sizeof(c))
        {
            if (IsSpace(c))
            {
                if (wide.empty())
                {
                    continue;
                }
                break;
            }
            wide += c;
        }
        word = GUtString(ToUtf8(wide));
        return !word.IsEmpty();
    }
    std::string narrow;
    char c = 0;
    while (ReadChars(&c, 1) == 1)
    {
        if (IsSpace(static_cast<unsigned char>(c)) || c == 0)
        {
            if (narrow.empty())
            {
                continue;
            }
            break;
        }
        narrow += c;
    }
    word = GUtString(narrow);
    return !word.IsEmpty();
}

GUtFile& GUtFile::operator>>(int32_t& iValue)
{
    if (m_uMode & MODE_BINARY)
    {
        int32_t iRead = 0;
        if (ReadI32s(&iRead, sizeof(iRead)) == sizeof(iRead))
        {
            iValue = iRead;
        }
        return *this;
    }
    GUtString word;
    int64_t iParsed = 0;
    if (_ReadWord(word))
    {
        if (ParseSigned(word.c_str(), INT32_MIN, INT32_MAX, iParsed))
        {
            iValue = static_cast<int32_t>(iParsed);
        }
        else
        {
            ReportTypeError(word);
        }
    }
    return *this;
}

GUtFile& GUtFile::operator>>(uint32_t& uValue)
{
    if (m_uMode & MODE_BINARY)
    {
        uint32_t uRead = 0;
        if (ReadU32s(&uRead, sizeof(uRead)) == sizeof(uRead))
        {
            uValue = uRead;
        }
        return *this;
    }
    GUtString word;
    uint64_t uParsed = 0;
    if (_ReadWord(word))
    {
        if (ParseUnsigned(word.c_str(), UINT32_MAX, uParsed))
        {
            uValue = static_cast<uint32_t>(uParsed);
        }
        else
        {
            ReportTypeError(word);
        }
    }
    return *this;
}

GUtFile& GUtFile::operator>>(int64_t& iValue)
{
    if (m_uMode & MODE_BINARY)
    {
        int64_t iRead = 0;
        if (ReadI64s(&iRead, sizeof(iRead)) == sizeof(iRead))
        {
            iValue = iRead;
        }
        return *this;
    }
    GUtString word;
    int64_t iParsed = 0;
    if (_ReadWord(word))
    {
        if (ParseSigned(word.c_str(), INT64_MIN, INT64_MAX, iParsed))
        {
            iValue = iParsed;
        }
        else
        {
            ReportTypeError(word);
        }
    }
    return *this;
}

GUtFile& GUtFile::operator>>(uint64_t& uValue)
{
    if (m_uMode & MODE_BINARY)
    {
        int64_t iRead = 0;
        if (ReadI64s(&iRead, sizeof(iRead)) == sizeof(iRead))
        {
            uValue = static_cast<uint64_t>(iRead);
        }
        return *this;
    }
    GUtString word;
    uint64_t uParsed = 0;
    if (_ReadWord(word))
    {
        if (ParseUnsigned(word.c_str(), UINT64_MAX, uParsed))
        {
            uValue = uParsed;
        }
        else
        {
            ReportTypeError(word);
        }
    }
    return *this;
}

GUtFile& GUtFile::operator>>(float& fValue)
{
    if (m_uMode & MODE_BINARY)
    {
        float fRead = 0;
        if (ReadFloats(&fRead, sizeof(fRead)) == sizeof(fRead))
        {
            fValue = fRead;
        }
        return *this;
    }
    double dValue = fValue;
    *this >> dValue;
    fValue = static_cast<float>(dValue);
    return *this;
}

GUtFile& GUtFile::operator>>(double& dValue)
{
    if (m_uMode & MODE_BINARY)
    {
        double dRead = 0;
        if (ReadDoubles(&dRead, sizeof(dRead)) == sizeof(dRead))
        {
            dValue = dRead;
        }
        return *this;
    }
    GUtString word;
    double dParsed = 0;
    if (_ReadWord(word))
    {
        if (ParseDouble(word.c_str(), dParsed))
        {
            dValue = dParsed;
        }
        else
        {
            ReportTypeError(word);
        }
    }
    return *this;
}

GUtFile& GUtFile::operator>>(GUtString& word)
{
    _ReadWord(word);
    return *this;
}
