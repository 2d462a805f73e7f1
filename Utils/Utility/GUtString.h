// GUtString: the utility library's string. A pointer, a length and a capacity; the
// buffer is always NUL-terminated. Formatting helpers format at most 1023 bytes, so a
// message never allocates more than one kilobyte while it is being built.
#pragma once

#include <cstdarg>
#include <cstddef>
#include <string>
#include <string_view>

class GUtString
{
public:
    static constexpr int FORMAT_LIMIT = 1023;

    GUtString();
    GUtString(const char* pcText);
    GUtString(const char* pcText, int iLength);
    GUtString(std::string_view text);
    GUtString(const GUtString& other);
    GUtString(GUtString&& other) noexcept;
    virtual ~GUtString();

    GUtString& operator=(const GUtString& other);
    GUtString& operator=(GUtString&& other) noexcept;
    GUtString& operator=(const char* pcText);

    // Text, never null: an empty string gives "".
    const char* c_str() const { return m_pcData ? m_pcData : ""; }
    operator const char*() const { return c_str(); }
    std::string_view View() const { return std::string_view(c_str(), static_cast<size_t>(m_iLength)); }
    std::string ToStd() const { return std::string(View()); }

    int Length() const { return m_iLength; }
    int Capacity() const { return m_iCapacity; }
    bool IsEmpty() const { return m_iLength == 0; }
    char operator[](int iIndex) const { return c_str()[iIndex]; }

    void Clear();
    // Makes room for at least iCapacity characters plus the terminator; keeps the text.
    void Reserve(int iCapacity);
    void Assign(const char* pcText, int iLength);
    void Append(const char* pcText, int iLength);
    GUtString& operator+=(const char* pcText);
    GUtString& operator+=(const GUtString& other);
    GUtString& operator+=(char c);

    // Replaces the text with the formatted result, cut at FORMAT_LIMIT bytes. Returns the
    // length stored; a format error leaves the string empty and returns -1.
    int Format(const char* pcFormat, ...) __attribute__((format(printf, 2, 3)));
    int FormatV(const char* pcFormat, va_list args);
    // Appends the formatted result, cut at FORMAT_LIMIT bytes.
    int AppendFormat(const char* pcFormat, ...) __attribute__((format(printf, 2, 3)));

    void ToLower();
    void ToUpper();
    // Replaces every cFrom by cTo.
    void Replace(char cFrom, char cTo);
    int Find(char c, int iStart = 0) const;
    int ReverseFind(char c) const;
    GUtString Left(int iCount) const;
    GUtString Mid(int iStart, int iCount = -1) const;

    // Byte order compare (negative, zero, positive) and its case-insensitive twin.
    int Compare(const char* pcText) const;
    int CompareNoCase(const char* pcText) const;
    bool EndsWithNoCase(const char* pcSuffix) const;

    bool operator==(const char* pcText) const { return Compare(pcText) == 0; }
    bool operator==(const GUtString& other) const { return View() == other.View(); }
    bool operator<(const GUtString& other) const { return View() < other.View(); }

private:
    // Grows the buffer to hold iCapacity characters and a terminator. On exhausted memory
    // it reports through the log and leaves the string as it was; returns false then.
    bool _AllocMemory(int iCapacity);

    char* m_pcData = nullptr;
    int m_iLength = 0;
    int m_iCapacity = 0;
};

GUtString operator+(const GUtString& a, const char* b);
GUtString operator+(const GUtString& a, const GUtString& b);
