// The tool window of an editor, as its logic object sees it: made on the first Open,
// closed by the user at any time, made again by the next Open. The platform supplies the
// windows through a process-wide factory; until one is installed (and in a run with no
// display) the windows are null windows that exist until they are closed.
#pragma once

#include <cstdint>

struct SEditorRect
{
    int32_t iX = 0;
    int32_t iY = 0;
    int32_t iW = 0;
    int32_t iH = 0;
};

class IEditorWindow
{
public:
    virtual ~IEditorWindow() = default;
    // False once the window was closed, by the user or by Close.
    virtual bool IsOpen() const = 0;
    // Sends the window a close message; the object stays until its owner destroys it.
    virtual void Close() = 0;
    // Shows the window on top of the others.
    virtual void Raise() = 0;
    // The outer rectangle now; false when the window can't tell (then out is unchanged).
    virtual bool GetRect(SEditorRect& out) const = 0;
    // Keeps the window above the others or not.
    virtual void SetTopMost(bool bTop) = 0;
    virtual void SetTitle(const char* pcTitle) = 0;

protected:
    IEditorWindow() = default;
    IEditorWindow(const IEditorWindow&) = delete;
    IEditorWindow& operator=(const IEditorWindow&) = delete;
};

class IEditorWindowFactory
{
public:
    virtual ~IEditorWindowFactory() = default;
    // A new tool window with that title and outer rectangle, shown. Never null.
    virtual IEditorWindow* CreateToolWindow(const char* pcTitle, const SEditorRect& rect, bool bTop) = 0;

protected:
    IEditorWindowFactory() = default;
    IEditorWindowFactory(const IEditorWindowFactory&) = delete;
    IEditorWindowFactory& operator=(const IEditorWindowFactory&) = delete;
};

// A window with no display: keeps its rectangle and flags.
class CNullEditorWindow final : public IEditorWindow
{
public:
    CNullEditorWindow(const SEditorRect& rect, bool bTop) : m_rect(rect), m_bTop(bTop) {}
    bool IsOpen() const override { return m_bOpen; }
    void Close() override { m_bOpen = false; }
    void Raise() override {}
    bool GetRect(SEditorRect& out) const override
    {
        out = m_rect;
        return true;
    }
    void SetTopMost(bool bTop) override { m_bTop = bTop; }
    void SetTitle(const char* pcTitle) override { (void)pcTitle; }
    bool IsTopMost() const { return m_bTop; }

private:
    SEditorRect m_rect;
    bool m_bTop;
    bool m_bOpen = true;
};

class CNullEditorWindowFactory final : public IEditorWindowFactory
{
public:
    IEditorWindow* CreateToolWindow(const char* pcTitle, const SEditorRect& rect, bool bTop) override
    {
        (void)pcTitle;
        return new CNullEditorWindow(rect, bTop);
    }
};

// The factory in use; never null (the null factory until one is installed).
IEditorWindowFactory* GetEditorWindowFactory();
// Installs pFactory (not owned); null restores the null factory.
void SetEditorWindowFactory(IEditorWindowFactory* pFactory);

class CEditorConfig;

// Helpers the four editors share for their tool windows (they have no common base).
//
// Makes the window when pWindow is null or was closed by the user (a closed window is
// remembered by its rectangle and destroyed first), then raises it.
void OpenToolWindow(IEditorWindow*& pWindow, const char* pcTitle, SEditorRect& rect, bool bTop);
// Remembers the window's rectangle, sends it the close message and destroys it.
void CloseToolWindow(IEditorWindow*& pWindow, SEditorRect& rect);
// Takes the rectangle of a live window into rect; does nothing without one.
void RememberToolWindowRect(const IEditorWindow* pWindow, SEditorRect& rect);
// Keys pcPrefix + "X", "Y", "W", "H" and, when pbTop is given, pcPrefix + "Top", under the
// cursor. A missing key leaves its default.
void ReadToolWindowPlace(const CEditorConfig& config, const char* pcPrefix, SEditorRect& rect, bool* pbTop);
void WriteToolWindowPlace(CEditorConfig& config, const char* pcPrefix, const SEditorRect& rect,
                          const bool* pbTop);
