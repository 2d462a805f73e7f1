#include "engine/ext/Console.h"

#include "engine/ext/Clipboard.h"
#include "engine/ext/Plotter2D.h"

#include <algorithm>
#include <cctype>
#include <cstdarg>
#include <cstdio>
#include <cstring>

namespace Kestrin::Ext
{

namespace
{
// Key codes of OnKeyDown (virtual keys).
constexpr uint32_t KEY_PRIOR = 33;
constexpr uint32_t KEY_NEXT = 34;
constexpr uint32_t KEY_END = 35;
constexpr uint32_t KEY_HOME = 36;
constexpr uint32_t KEY_LEFT = 37;
constexpr uint32_t KEY_UP = 38;
constexpr uint32_t KEY_RIGHT = 39;
constexpr uint32_t KEY_DOWN = 40;
constexpr uint32_t KEY_DELETE = 46;

// Character codes of OnChar.
constexpr uint32_t CHAR_COPY = 3;
constexpr uint32_t CHAR_BACKSPACE = 8;
constexpr uint32_t CHAR_TAB = 9;
constexpr uint32_t CHAR_LINE_FEED = 10;
constexpr uint32_t CHAR_ENTER = 13;
constexpr uint32_t CHAR_PASTE = 22;
constexpr uint32_t CHAR_STATE = '\\';

// Overlay layout in pixels.
constexpr float MARGIN = 8.0f;
constexpr uint32_t BACKGROUND = 0x80000000; // black, half transparent
constexpr const char* PROMPT = "> ";

std::string Lower(std::string_view text)
{
    std::string strLower(text);
    for (char& c : strLower)
    {
        c = static_cast<char>(tolower(static_cast<unsigned char>(c)));
    }
    return strLower;
}
} // namespace

CConsole::CConsole() = default;

// ---------------------------------------------------------------------------------------
// Output

void CConsole::Print(uint32_t uColour, const char* pcText)
{
    if (!pcText)
    {
        return;
    }
    GUtCriticalSectionLock lock(m_lock);
    if (m_pCallback)
    {
        m_pCallback->OnPrint(pcText);
    }
    _AppendToBuffer(uColour, pcText);
}

void CConsole::Printf(const char* pcFormat, ...)
{
    char acText[PRINTF_LENGTH];
    va_list args;
    va_start(args, pcFormat);
    const int iLength = vsnprintf(acText, sizeof(acText), pcFormat, args);
    va_end(args);
    if (iLength >= 0)
    {
        Print(WHITE, acText);
    }
}

void CConsole::_NewLine(uint32_t uColour)
{
    m_buffer.push_back({std::string(), uColour});
    while (static_cast<int>(m_buffer.size()) > m_iMaxLines)
    {
        m_buffer.pop_front();
    }
}

void CConsole::_AppendToBuffer(uint32_t uColour, const char* pcText)
{
    if (m_buffer.empty())
    {
        _NewLine(uColour);
    }
    for (const char* pc = pcText; *pc; ++pc)
    {
        if (*pc == '\n')
        {
            _NewLine(uColour);
            continue;
        }
        if (static_cast<int>(m_buffer.back().strText.size()) >= LINE_WIDTH)
        {
            _NewLine(uColour);
        }
        SLine& line = m_buffer.back();
        if (line.strText.empty())
        {
            line.uColour = uColour; // an empty line takes the colour of the text that starts it
        }
        line.strText += *pc;
    }
}

// ---------------------------------------------------------------------------------------
// Input

void CConsole::OnChar(uint32_t uCode)
{
    GUtCriticalSectionLock lock(m_lock);
    if (uCode == CHAR_STATE)
    {
        m_iState = (m_iState + 1) % 3;
        m_fIdleTime = 0.0f;
        return;
    }
    if (m_iState != STATE_INPUT)
    {
        return;
    }
    m_fIdleTime = 0.0f;
    switch (uCode)
    {
        case CHAR_COPY:
        {
            std::string strText;
            for (const SLine& line : GetVisibleBufferLines())
            {
                strText += line.strText + "\r\n";
            }
            GetClipboard()->SetText(strText);
            break;
        }
        case CHAR_BACKSPACE:
            if (m_iCursor > 0)
            {
                std::string strInput = m_strInput.ToStd();
                strInput.erase(static_cast<size_t>(m_iCursor - 1), 1);
                m_strInput = strInput.c_str();
                --m_iCursor;
            }
            break;
        case CHAR_TAB:
            _CompleteFromHistory();
            break;
        case CHAR_LINE_FEED:
            break;
        case CHAR_ENTER:
            _Enter();
            break;
        case CHAR_PASTE:
            Paste(GetClipboard()->GetText().c_str());
            break;
        default:
            if (uCode >= 32 && uCode < 128) // the input line holds printable ASCII
            {
                const char c = static_cast<char>(uCode);
                _Insert(&c, 1);
            }
            break;
    }
}

void CConsole::_Insert(const char* pcText, int iLength)
{
    std::string strInput = m_strInput.ToStd();
    for (int i = 0; i < iLength && static_cast<int>(strInput.size()) < INPUT_LIMIT; ++i)
    {
        strInput.insert(strInput.begin() + m_iCursor, pcText[i]);
        ++m_iCursor;
    }
    m_strInput = strInput.c_str();
}

void CConsole::Paste(const char* pcText)
{
    if (!pcText)
    {
        return;
    }
    std::string strText(pcText);
    std::replace(strText.begin(), strText.end(), '\r', ' ');
    std::replace(strText.begin(), strText.end(), '\n', ' ');
    GUtCriticalSectionLock lock(m_lock);
    _Insert(strText.data(), static_cast<int>(strText.size()));
}

void CConsole::_Enter()
{
    const std::string strLine = m_strInput.ToStd();
    Print(WHITE, (strLine + "\n").c_str());
    m_pending.push_back(strLine);
    m_history.push_front(strLine);
    if (static_cast<int>(m_history.size()) > MAX_HISTORY)
    {
        m_history.pop_back();
    }
    m_iHistoryIndex = -1;
    m_iCursor = 0;
    m_strInput.Clear();
    m_iScrollOffset = 0;
}

void CConsole::_CompleteFromHistory()
{
    const std::string strInput = Lower(m_strInput.View());
    for (const std::string& strEntry : m_history)
    {
        if (strEntry.size() >= strInput.size() && Lower(strEntry.substr(0, strInput.size())) == strInput)
        {
            m_strInput = strEntry.c_str();
            m_iCursor = m_strInput.Length();
            return;
        }
    }
}

void CConsole::_ShowHistoryEntry()
{
    m_strInput = m_history[static_cast<size_t>(m_iHistoryIndex)].c_str();
    m_iCursor = m_strInput.Length();
}

bool CConsole::OnKeyDown(uint32_t uKey)
{
    GUtCriticalSectionLock lock(m_lock);
    if (m_iState != STATE_INPUT)
    {
        return false;
    }
    if (uKey == 0)
    {
        return true;
    }
    m_fIdleTime = 0.0f;
    const int iLines = static_cast<int>(m_buffer.size());
    const int iHistory = static_cast<int>(m_history.size());
    switch (uKey)
    {
        case KEY_PRIOR:
            m_iScrollOffset =
                std::max(0, std::min(m_iScrollOffset + m_iVisibleLines, iLines - m_iVisibleLines));
            break;
        case KEY_NEXT:
            m_iScrollOffset = std::max(0, m_iScrollOffset - m_iVisibleLines);
            break;
        case KEY_END:
            m_iCursor = m_strInput.Length();
            break;
        case KEY_HOME:
            m_iCursor = 0;
            break;
        case KEY_LEFT:
            m_iCursor = std::max(0, m_iCursor - 1);
            break;
        case KEY_RIGHT:
            m_iCursor = std::min(m_strInput.Length(), m_iCursor + 1);
            break;
        case KEY_UP:
            if (iHistory > 0) // an empty history has nothing to show
            {
                m_iHistoryIndex = m_iHistoryIndex + 1 >= iHistory ? 0 : m_iHistoryIndex + 1;
                _ShowHistoryEntry();
            }
            break;
        case KEY_DOWN:
            if (iHistory > 0)
            {
                m_iHistoryIndex = m_iHistoryIndex - 1 < 0 ? iHistory - 1 : m_iHistoryIndex - 1;
                _ShowHistoryEntry();
            }
            break;
        case KEY_DELETE:
            if (m_iCursor < m_strInput.Length())
            {
                std::string strInput = m_strInput.ToStd();
                strInput.erase(static_cast<size_t>(m_iCursor), 1);
                m_strInput = strInput.c_str();
            }
            break;
        default:
            break;
    }
    return true;
}

// ---------------------------------------------------------------------------------------
// Frame

void CConsole::Tick(float fTimeStep)
{
    std::vector<std::string> lines;
    IConsoleCallback* pCallback = nullptr;
    {
        GUtCriticalSectionLock lock(m_lock);
        lines.swap(m_pending);
        pCallback = m_pCallback;
        m_fIdleTime += fTimeStep;
    }
    for (const std::string& strLine : lines)
    {
        if (pCallback)
        {
            pCallback->OnCommand(strLine.c_str());
        }
    }
}

void CConsole::Draw(Plotter::CPlotter2D& plotter)
{
    GUtCriticalSectionLock lock(m_lock);
    if (m_iState == STATE_HIDDEN)
    {
        return;
    }
    const float fLineHeight = m_fFontHeight;
    const int iRows = m_iVisibleLines + (m_iState == STATE_INPUT ? 1 : 0);
    const float fWidth = static_cast<float>(std::max(plotter.Pending().iWidth, 1));
    plotter.DrawRect(0.0f, 0.0f, fWidth, MARGIN * 2.0f + fLineHeight * static_cast<float>(iRows), BACKGROUND,
                     true);
    float fY = MARGIN;
    for (const SLine& line : GetVisibleBufferLines())
    {
        plotter.DrawText(MARGIN, fY, line.strText.c_str(), line.uColour);
        fY += fLineHeight;
    }
    if (m_iState != STATE_INPUT)
    {
        return;
    }
    fY = MARGIN + fLineHeight * static_cast<float>(m_iVisibleLines);
    const std::string strShown = std::string(PROMPT) + m_strInput.ToStd();
    plotter.DrawText(MARGIN, fY, strShown.c_str(), WHITE);
    const std::string strBeforeCursor = strShown.substr(0, strlen(PROMPT) + static_cast<size_t>(m_iCursor));
    const float fCursorX = MARGIN + plotter.TextWidth(strBeforeCursor.c_str());
    plotter.DrawLine(fCursorX, fY + fLineHeight - 1.0f, fCursorX + plotter.TextWidth("_"),
                     fY + fLineHeight - 1.0f, WHITE);
}

// ---------------------------------------------------------------------------------------
// Settings and copies

void CConsole::SetVisibleLines(int iLines)
{
    GUtCriticalSectionLock lock(m_lock);
    m_iVisibleLines = std::max(1, iLines);
}

int CConsole::GetState() const
{
    GUtCriticalSectionLock lock(m_lock);
    return m_iState;
}

void CConsole::SetState(int iState)
{
    GUtCriticalSectionLock lock(m_lock);
    m_iState = std::clamp(iState, 0, 2);
}

void CConsole::SetCallback(IConsoleCallback* pCallback)
{
    GUtCriticalSectionLock lock(m_lock);
    m_pCallback = pCallback;
}

std::string CConsole::GetInput() const
{
    GUtCriticalSectionLock lock(m_lock);
    return m_strInput.ToStd();
}

int CConsole::GetCursor() const
{
    GUtCriticalSectionLock lock(m_lock);
    return m_iCursor;
}

std::vector<CConsole::SLine> CConsole::GetLines() const
{
    GUtCriticalSectionLock lock(m_lock);
    return std::vector<SLine>(m_buffer.begin(), m_buffer.end());
}

std::vector<std::string> CConsole::GetHistory() const
{
    GUtCriticalSectionLock lock(m_lock);
    return std::vector<std::string>(m_history.begin(), m_history.end());
}

int CConsole::GetHistoryIndex() const
{
    GUtCriticalSectionLock lock(m_lock);
    return m_iHistoryIndex;
}

int CConsole::GetScrollOffset() const
{
    GUtCriticalSectionLock lock(m_lock);
    return m_iScrollOffset;
}

float CConsole::GetIdleTime() const
{
    GUtCriticalSectionLock lock(m_lock);
    return m_fIdleTime;
}

std::vector<CConsole::SLine> CConsole::GetVisibleBufferLines() const
{
    GUtCriticalSectionLock lock(m_lock);
    const int iLines = static_cast<int>(m_buffer.size());
    const int iEnd = std::max(0, iLines - m_iScrollOffset);
    const int iBegin = std::max(0, iEnd - m_iVisibleLines);
    return std::vector<SLine>(m_buffer.begin() + iBegin, m_buffer.begin() + iEnd);
}

} // namespace Kestrin::Ext
