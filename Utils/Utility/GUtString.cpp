#include "Utils/Utility/GUtString.h"

#include "Utils/Utility/GUtDebug.h"

#include <algorithm>
#include <cctype>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <strings.h>

GUtString::GUtString() = default;

GUtString::GUtString(const char* pcText)
{
    if (pcText)
    {
        Assign(pcText, static_cast<int>(strlen(pcText)));
    }
}

GUtString::GUtString(const char* pcText, int iLength)
{
    Assign(pcText, iLength);
}

GUtString::GUtString(std::string_view text)
{
    Assign(text.data(), static_cast<int>(text.size()));
}

GUtString::GUtString(const GUtString& other)
{
    Assign(other.c_str(), other.m_iLength);
}

GUtString::GUtString(GUtString&& other) noexcept
    : m_pcData(other.m_pcData), m_iLength(other.m_iLength), m_iCapacity(other.m_iCapacity)
{
    other.m_pcData = nullptr;
    other.m_iLength = 0;
    other.m_iCapacity = 0;
}

GUtString::~GUtString()
{
    free(m_pcData);
}

GUtString& GUtString::operator=(const GUtString& other)
{
    if (this != &other)
    {
        Assign(other.c_str(), other.m_iLength);
    }
    return *this;
}

GUtString& GUtString::operator=(GUtString&& other) noexcept
{
    if (this != &other)
    {
        free(m_pcData);
        m_pcData = other.m_pcData;
        m_iLength = other.m_iLength;
        m_iCapacity = other.m_iCapacity;
        other.m_pcData = nullptr;
        other.m_iLength = 0;
        other.m_iCapacity = 0;
    }
    return *this;
}

GUtString& GUtString::operator=(const char* pcText)
{
    if (!pcText)
    {
        Clear();
    }
    else
    {
        Assign(pcText, static_cast<int>(strlen(pcText)));
    }
    return *this;
}

bool GUtString::_AllocMemory(int iCapacity)
{
    if (iCapacity <= m_iCapacity && m_pcData)
    {
        return true;
    }
    // Grow geometrically so that appending in a loop stays linear.
    int iNew = std::max(iCapacity, m_iCapacity + m_iCapacity / 2);
    iNew = std::max(iNew, 15);
    char* pcNew = static_cast<char*>(realloc(m_pcData, static_cast<size_t>(iNew) + 1));
    if (!pcNew)
    {
        GUtLog::Get().DisplayMsg(true, 1, "GUtString::_AllocMemory() error !", "%s",
                                 "can't allocate memory any more !");
        return false;
    }
    if (!m_pcData)
    {
        pcNew[0] = '\0';
    }
    m_pcData = pcNew;
    m_iCapacity = iNew;
    return true;
}

void GUtString::Clear()
{
    m_iLength = 0;
    if (m_pcData)
    {
        m_pcData[0] = '\0';
    }
}

void GUtString::Reserve(int iCapacity)
{
    _AllocMemory(iCapacity);
}

void GUtString::Assign(const char* pcText, int iLength)
{
    if (!pcText || iLength <= 0)
    {
        Clear();
        return;
    }
    if (m_pcData && pcText >= m_pcData && pcText <= m_pcData + m_iLength)
    {
        // Assigning a piece of ourselves: the buffer is already big enough.
        memmove(m_pcData, pcText, static_cast<size_t>(iLength));
    }
    else
    {
        if (!_AllocMemory(iLength))
        {
            return;
        }
        memcpy(m_pcData, pcText, static_cast<size_t>(iLength));
    }
    m_iLength = iLength;
    m_pcData[m_iLength] = '\0';
}

void GUtString::Append(const char* pcText, int iLength)
{
    if (!pcText || iLength <= 0)
    {
        return;
    }
    if (m_pcData && pcText >= m_pcData && pcText <= m_pcData + m_iLength)
    {
        GUtString copy(pcText, iLength);
        Append(copy.c_str(), copy.Length());
        return;
    }
    if (!_AllocMemory(m_iLength + iLength))
    {
        return;
    }
    memcpy(m_pcData + m_iLength, pcText, static_cast<size_t>(iLength));
    m_iLength += iLength;
    m_pcData[m_iLength] = '\0';
}

GUtString& GUtString::operator+=(const char* pcText)
{
    if (pcText)
    {
        Append(pcText, static_cast<int>(strlen(pcText)));
    }
    return *this;
}

GUtString& GUtString::operator+=(const GUtString& other)
{
    Append(other.c_str(), other.m_iLength);
    return *this;
}

GUtString& GUtString::operator+=(char c)
{
    Append(&c, 1);
    return *this;
}

int GUtString::FormatV(const char* pcFormat, va_list args)
{
    char acBuffer[FORMAT_LIMIT + 1];
    int iLength = vsnprintf(acBuffer, sizeof(acBuffer), pcFormat ? pcFormat : "", args);
    if (iLength < 0)
    {
        Clear();
        return -1;
    }
    iLength = std::min(iLength, FORMAT_LIMIT);
    Assign(acBuffer, iLength);
    return iLength;
}

int GUtString::Format(const char* pcFormat, ...)
{
    va_list args;
    va_start(args, pcFormat);
    int iLength = FormatV(pcFormat, args);
    va_end(args);
    return iLength;
}

int GUtString::AppendFormat(const char* pcFormat, ...)
{
    GUtString piece;
    va_list args;
    va_start(args, pcFormat);
    int iLength = piece.FormatV(pcFormat, args);
    va_end(args);
    if (iLength > 0)
    {
        *this += piece;
    }
    return iLength;
}

void GUtString::ToLower()
{
    for (int i = 0; i < m_iLength; ++i)
    {
        m_pcData[i] = static_cast<char>(tolower(static_cast<unsigned char>(m_pcData[i])));
    }
}

void GUtString::ToUpper()
{
    for (int i = 0; i < m_iLength; ++i)
    {
        m_pcData[i] = static_cast<char>(toupper(static_cast<unsigned char>(m_pcData[i])));
    }
}

void GUtString::Replace(char cFrom, char cTo)
{
    for (int i = 0; i < m_iLength; ++i)
    {
        if (m_pcData[i] == cFrom)
        {
            m_pcData[i] = cTo;
        }
    }
}

int GUtString::Find(char c, int iStart) const
{
    for (int i = std::max(iStart, 0); i < m_iLength; ++i)
    {
        if (m_pcData[i] == c)
        {
            return i;
        }
    }
    return -1;
}

int GUtString::ReverseFind(char c) const
{
    for (int i = m_iLength - 1; i >= 0; --i)
    {
        if (m_pcData[i] == c)
        {
            return i;
        }
    }
    return -1;
}

GUtString GUtString::Left(int iCount) const
{
    return GUtString(c_str(), std::clamp(iCount, 0, m_iLength));
}

GUtString GUtString::Mid(int iStart, int iCount) const
{
    iStart = std::clamp(iStart, 0, m_iLength);
    int iLeft = m_iLength - iStart;
    if (iCount < 0 || iCount > iLeft)
    {
        iCount = iLeft;
    }
    return GUtString(c_str() + iStart, iCount);
}

int GUtString::Compare(const char* pcText) const
{
    return strcmp(c_str(), pcText ? pcText : "");
}

int GUtString::CompareNoCase(const char* pcText) const
{
    return strcasecmp(c_str(), pcText ? pcText : "");
}

bool GUtString::EndsWithNoCase(const char* pcSuffix) const
{
    int iSuffix = pcSuffix ? static_cast<int>(strlen(pcSuffix)) : 0;
    if (iSuffix > m_iLength)
    {
        return false;
    }
    return strncasecmp(c_str() + m_iLength - iSuffix, pcSuffix ? pcSuffix : "",
                       static_cast<size_t>(iSuffix)) == 0;
}

GUtString operator+(const GUtString& a, const char* b)
{
    GUtString result(a);
    result += b;
    return result;
}

GUtString operator+(const GUtString& a, const GUtString& b)
{
    GUtString result(a);
    result += b;
    return result;
}
