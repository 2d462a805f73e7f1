// CConsole: the in-window text console of the 3D view. Typed lines are queued and handed to
// the callback on the main thread in Tick; printed text is broken into lines of at most 79
// characters and kept in a buffer of 200 lines. States: 0 hidden, 1 open for input, 2 output
// only; the key '\' cycles them and is never typed.
//
// Thread contract: the lock guards the queue, the input, the buffers and the state, as window
// messages (main thread), the render thread's overlay and Print from any thread reach them.
// The callback's OnCommand runs only on the main thread, in Tick, outside the lock.
#pragma once

#include "Utils/Utility/GUtLock.h"
#include "Utils/Utility/GUtString.h"

#include <cstdint>
#include <deque>
#include <string>
#include <vector>

namespace Kestrin::Plotter
{
class CPlotter2D;
}

namespace Kestrin::Ext
{

class IConsoleCallback
{
public:
    virtual ~IConsoleCallback() = default;
    // Runs one line the user entered; main thread, outside the console's lock.
    virtual void OnCommand(const char* pcLine) = 0;
    // Sees every printed text first; any thread, under the console's lock.
    virtual void OnPrint(const char* pcText) = 0;

protected:
    IConsoleCallback() = default;
    IConsoleCallback(const IConsoleCallback&) = delete;
    IConsoleCallback& operator=(const IConsoleCallback&) = delete;
};

class CConsole
{
public:
    static constexpr int STATE_HIDDEN = 0;
    static constexpr int STATE_INPUT = 1;
    static constexpr int STATE_OUTPUT = 2;
    static constexpr int LINE_WIDTH = 79;     // characters per buffer line
    static constexpr int INPUT_LIMIT = 100;   // characters of the input line
    static constexpr int MAX_HISTORY = 30;    // entered lines kept
    static constexpr int PRINTF_LENGTH = 512; // bytes Printf formats
    static constexpr uint32_t WHITE = 0xffffff;

    struct SLine
    {
        std::string strText;
        uint32_t uColour;
    };

    CConsole();
    virtual ~CConsole() = default;
    CConsole(const CConsole&) = delete;
    CConsole& operator=(const CConsole&) = delete;

    // Adds text to the buffer: a line feed or a 79th character starts a new line; the oldest
    // lines leave beyond maxLines.
    void Print(uint32_t uColour, const char* pcText);
    // Print in white, formatted into 512 bytes.
    void Printf(const char* pcFormat, ...) __attribute__((format(printf, 2, 3)));
    // A typed character (UTF-16 unit). '\' cycles the state; the rest edit the input in state 1.
    void OnChar(uint32_t uCode);
    // A key down (virtual key). False unless the console is open for input; true for key 0.
    bool OnKeyDown(uint32_t uKey);
    // Runs the queued lines through the callback and adds dt to the idle time.
    void Tick(float fTimeStep);
    // Draws the visible lines (states 1 and 2) and the input line with its cursor (state 1).
    void Draw(Plotter::CPlotter2D& plotter);
    // Inserts text at the cursor as if typed: up to the input limit, line breaks as blanks.
    void Paste(const char* pcText);

    void SetVisibleLines(int iLines);
    int GetVisibleLines() const { return m_iVisibleLines; }
    int GetState() const;
    void SetState(int iState);
    void SetCallback(IConsoleCallback* pCallback);
    IConsoleCallback* GetCallback() const { return m_pCallback; }
    void SetFontHeight(float fHeight) { m_fFontHeight = fHeight; }

    // Copies for tests and for the overlay.
    std::string GetInput() const;
    int GetCursor() const;
    std::vector<SLine> GetLines() const;
    std::vector<std::string> GetHistory() const;
    int GetHistoryIndex() const;
    int GetScrollOffset() const;
    float GetIdleTime() const;
    // The lines the overlay shows now, oldest first.
    std::vector<SLine> GetVisibleBufferLines() const;

private:
    void _Enter();
    void _CompleteFromHistory();
    void _ShowHistoryEntry();
    void _Insert(const char* pcText, int iLength);
    void _AppendToBuffer(uint32_t uColour, const char* pcText);
    void _NewLine(uint32_t uColour);

    mutable GUtCriticalSection m_lock;
    std::vector<std::string> m_pending;
    GUtString m_strInput;
    std::deque<SLine> m_buffer;
    std::deque<std::string> m_history; // newest first
    int32_t m_iHistoryIndex = -1;
    int32_t m_iState = STATE_HIDDEN;
    int32_t m_iVisibleLines = 10;
    int32_t m_iMaxLines = 200;
    int32_t m_iScrollOffset = 0;
    int32_t m_iCursor = 0;
    float m_fFontHeight = 15.0f;
    float m_fIdleTime = 0.0f;
    IConsoleCallback* m_pCallback = nullptr;
};

} // namespace Kestrin::Ext
