// The main window as the engine sees it: the 3D view. The render device makes it at start-up
// through the process-wide window system, which the platform installs (Qt on Linux); with no
// display the null window system makes a null window that exists until it is destroyed.
//
// Thread contract: every operation runs on the main thread, except PostMessage, which any
// thread may call.
#pragma once

#include "Utils/Utility/GUtLock.h"
#include "engine/render_device/WindowMessages.h"

#include <cstdint>
#include <deque>
#include <string>
#include <vector>

namespace Kestrin::RenderDevice
{

// The window procedure: the arguments of a Win32 window procedure and a "handled" flag. The
// returned value is the message's result.
using WindowMessageProc = int64_t (*)(void* pUser, uint32_t uMessage, uint64_t wParam, int64_t lParam,
                                      bool& bHandled);

// What WindowMessage::DROPFILES points to: the files and the client point of the drop.
struct SDropFiles
{
    int32_t iX = 0;
    int32_t iY = 0;
    std::vector<std::string> files;
};

struct SWindowRect
{
    int32_t iX = 0;
    int32_t iY = 0;
    int32_t iW = 0;
    int32_t iH = 0;
};

// A relative mouse as DirectInput reports it: movement and wheel since the last read (the
// wheel in raw units, 120 a notch) and button bytes, non-zero while held.
struct SMouseDeviceState
{
    int32_t lX = 0;
    int32_t lY = 0;
    int32_t lZ = 0;
    uint8_t rgbButtons[4] = {0, 0, 0, 0};
};

// One frame of 2D overlay, for windows whose device can't draw it itself: rectangles, lines
// and text in client pixels, in the order drawn. Colours are 0xAARRGGBB (alpha 0 is opaque).
struct SOverlayItem
{
    enum EKind : uint8_t
    {
        KIND_RECT,
        KIND_FILLED_RECT,
        KIND_LINE,
        KIND_TEXT,
    };
    EKind eKind = KIND_RECT;
    float fX = 0.0f; // rect: corner; line: start; text: top left
    float fY = 0.0f;
    float fX2 = 0.0f;     // rect: width; line: end
    float fY2 = 0.0f;     // rect: height; line: end
    float fHeight = 0.0f; // text height in pixels
    uint32_t uColour = 0xffffff;
    std::string strText;
};

struct SOverlayFrame
{
    int32_t iWidth = 0;
    int32_t iHeight = 0;
    std::vector<SOverlayItem> items;
};

class IWindow
{
public:
    virtual ~IWindow() = default;

    // Where messages go; null drops them.
    virtual void SetMessageProc(WindowMessageProc pProc, void* pUser) = 0;
    // False once the window was destroyed; the frame loop ends then.
    virtual bool Exists() const = 0;
    virtual void Destroy() = 0;
    virtual void SetTitle(const char* pcTitle) = 0;
    virtual std::string GetTitle() const = 0;
    // The outer rectangle, frame included.
    virtual void Move(int32_t iX, int32_t iY, int32_t iW, int32_t iH) = 0;
    virtual SWindowRect GetOuterRect() const = 0;
    // The client area's size; 0 by 0 while minimised.
    virtual void GetClientSize(int32_t& iW, int32_t& iH) const = 0;
    // The sizing frame and the maximise box (WS_THICKFRAME | WS_MAXIMIZEBOX).
    virtual void SetResizable(bool bResizable) = 0;
    virtual void AcceptFileDrops(bool bAccept) = 0;
    virtual bool IsMinimised() const = 0;
    virtual bool IsMaximised() const = 0;
    // The active window of this process, and the foreground window of the desktop.
    virtual bool IsActive() const = 0;
    virtual bool IsForeground() const = 0;
    virtual void SetForeground() = 0;
    virtual void SetCapture() = 0;
    virtual void ReleaseCapture() = 0;
    virtual void SetArrowCursor() = 0;

    // Takes pending messages and gives them to the procedure without waiting, checking the
    // time after each; stops once dLimitMs passed. A negative limit empties the queue.
    virtual void PumpMessages(double dLimitMs) = 0;
    // Queues a message for the next pump; safe from any thread.
    virtual void PostMessage(uint32_t uMessage, uint64_t wParam, int64_t lParam) = 0;

    // The keyboard as 256 bytes by virtual key, the high bit set while a key is down
    // (the mouse buttons are keys 1, 2 and 4). False when the window can't tell.
    virtual bool GetKeyboardState(uint8_t aKeys[256]) const = 0;
    // The cursor in client coordinates. False when the window can't tell.
    virtual bool GetCursorClientPos(int32_t& iX, int32_t& iY) const = 0;
    // Reads and resets the relative mouse. False when the window has no mouse device, and
    // callers then work from the cursor position.
    virtual bool ReadMouseDevice(SMouseDeviceState& out) = 0;

    // Shows a frame of 2D overlay drawn in software (for devices that draw nothing).
    virtual void PresentOverlay(const SOverlayFrame& frame) = 0;

protected:
    IWindow() = default;
    IWindow(const IWindow&) = delete;
    IWindow& operator=(const IWindow&) = delete;
};

class IWindowSystem
{
public:
    virtual ~IWindowSystem() = default;
    // True when windows appear on a display.
    virtual bool HasDisplay() const = 0;
    // A new main window of that client size, shown. Null when it can't be made. The caller
    // owns it.
    virtual IWindow* CreateMainWindow(int32_t iClientW, int32_t iClientH) = 0;

protected:
    IWindowSystem() = default;
    IWindowSystem(const IWindowSystem&) = delete;
    IWindowSystem& operator=(const IWindowSystem&) = delete;
};

// A window with no display. It keeps every value it is given, delivers posted messages on
// the pump, is active and in the foreground, and exists until destroyed (a QUIT message
// destroys it once delivered). Tests set its keys and cursor.
class CNullWindow final : public IWindow
{
public:
    CNullWindow(int32_t iClientW, int32_t iClientH);

    void SetMessageProc(WindowMessageProc pProc, void* pUser) override;
    bool Exists() const override { return m_bExists; }
    void Destroy() override { m_bExists = false; }
    void SetTitle(const char* pcTitle) override { m_strTitle = pcTitle ? pcTitle : ""; }
    std::string GetTitle() const override { return m_strTitle; }
    void Move(int32_t iX, int32_t iY, int32_t iW, int32_t iH) override;
    SWindowRect GetOuterRect() const override { return m_outer; }
    void GetClientSize(int32_t& iW, int32_t& iH) const override;
    void SetResizable(bool bResizable) override { m_bResizable = bResizable; }
    void AcceptFileDrops(bool bAccept) override { m_bAcceptDrops = bAccept; }
    bool IsMinimised() const override { return m_bMinimised; }
    bool IsMaximised() const override { return false; }
    bool IsActive() const override { return m_bActive; }
    bool IsForeground() const override { return m_bActive; }
    void SetForeground() override {}
    void SetCapture() override { m_bCaptured = true; }
    void ReleaseCapture() override { m_bCaptured = false; }
    void SetArrowCursor() override {}
    void PumpMessages(double dLimitMs) override;
    void PostMessage(uint32_t uMessage, uint64_t wParam, int64_t lParam) override;
    bool GetKeyboardState(uint8_t aKeys[256]) const override;
    bool GetCursorClientPos(int32_t& iX, int32_t& iY) const override;
    bool ReadMouseDevice(SMouseDeviceState& out) override;
    void PresentOverlay(const SOverlayFrame& frame) override;

    // For tests and headless runs.
    void SetKey(uint8_t uKey, bool bDown) { m_aKeys[uKey] = bDown ? 0x80 : 0; }
    void SetCursor(int32_t iX, int32_t iY) { m_iCursorX = iX, m_iCursorY = iY; }
    void SetActive(bool bActive) { m_bActive = bActive; }
    void SetMinimised(bool bMinimised) { m_bMinimised = bMinimised; }
    bool IsResizable() const { return m_bResizable; }
    bool AcceptsFileDrops() const { return m_bAcceptDrops; }
    bool IsCaptured() const { return m_bCaptured; }
    int PresentedOverlays() const { return m_iOverlays; }
    const SOverlayFrame& LastOverlay() const { return m_lastOverlay; }

private:
    struct SMessage
    {
        uint32_t uMessage;
        uint64_t wParam;
        int64_t lParam;
    };

    WindowMessageProc m_pProc = nullptr;
    void* m_pUser = nullptr;
    bool m_bExists = true;
    std::string m_strTitle;
    SWindowRect m_outer;
    int32_t m_iClientW;
    int32_t m_iClientH;
    bool m_bResizable = false;
    bool m_bAcceptDrops = false;
    bool m_bMinimised = false;
    bool m_bActive = true;
    bool m_bCaptured = false;
    uint8_t m_aKeys[256] = {};
    int32_t m_iCursorX = 0;
    int32_t m_iCursorY = 0;
    GUtCriticalSection m_queueLock;
    std::deque<SMessage> m_queue;
    int m_iOverlays = 0;
    SOverlayFrame m_lastOverlay;
};

class CNullWindowSystem final : public IWindowSystem
{
public:
    bool HasDisplay() const override { return false; }
    IWindow* CreateMainWindow(int32_t iClientW, int32_t iClientH) override
    {
        return new CNullWindow(iClientW, iClientH);
    }
};

// The window system in use; never null (the null one until the platform installs its own).
IWindowSystem* GetWindowSystem();
// Installs pSystem (not owned); null restores the null window system.
void SetWindowSystem(IWindowSystem* pSystem);

} // namespace Kestrin::RenderDevice
