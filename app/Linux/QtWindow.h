// The main window on Linux: a Qt widget that is the 3D view. Qt's events become the window
// messages of the Win32 window procedure (numbers, key codes and parameters), so the logic
// sees exactly the messages it was written for. The window keeps the keyboard state and a
// relative mouse from its own events, and paints the software overlay of a device that draws
// nothing.
//
// Thread contract: main thread only, except PostMessage.
#pragma once

#include "engine/render_device/Window.h"

#include <QWidget>

#include <array>
#include <deque>

namespace Ovrel
{

class CQtMainWindow;

// The widget itself; forwards every event to its window object.
class CQtViewWidget final : public QWidget
{
public:
    explicit CQtViewWidget(CQtMainWindow* pOwner);

protected:
    bool event(QEvent* pEvent) override;
    void paintEvent(QPaintEvent* pEvent) override;
    void closeEvent(QCloseEvent* pEvent) override;

private:
    CQtMainWindow* m_pOwner;
};

class CQtMainWindow final : public Kestrin::RenderDevice::IWindow
{
public:
    CQtMainWindow(int32_t iClientW, int32_t iClientH);
    ~CQtMainWindow() override;

    void SetMessageProc(Kestrin::RenderDevice::WindowMessageProc pProc, void* pUser) override;
    bool Exists() const override { return m_bExists; }
    void Destroy() override;
    void SetTitle(const char* pcTitle) override;
    std::string GetTitle() const override;
    void Move(int32_t iX, int32_t iY, int32_t iW, int32_t iH) override;
    Kestrin::RenderDevice::SWindowRect GetOuterRect() const override;
    void GetClientSize(int32_t& iW, int32_t& iH) const override;
    void SetResizable(bool bResizable) override;
    void AcceptFileDrops(bool bAccept) override;
    bool IsMinimised() const override;
    bool IsMaximised() const override;
    bool IsActive() const override;
    bool IsForeground() const override;
    void SetForeground() override;
    void SetCapture() override;
    void ReleaseCapture() override;
    void SetArrowCursor() override;
    void PumpMessages(double dLimitMs) override;
    void PostMessage(uint32_t uMessage, uint64_t wParam, int64_t lParam) override;
    bool GetKeyboardState(uint8_t aKeys[256]) const override;
    bool GetCursorClientPos(int32_t& iX, int32_t& iY) const override;
    bool ReadMouseDevice(Kestrin::RenderDevice::SMouseDeviceState& out) override;
    void PresentOverlay(const Kestrin::RenderDevice::SOverlayFrame& frame) override;

    QWidget* GetWidget() const { return m_pWidget; }

    // From the widget: Qt's events as window messages. True when the event was taken.
    bool TranslateEvent(QEvent* pEvent);
    void Paint();
    // The user closes the window: true when it may go.
    bool OnClose();

private:
    int64_t _Send(uint32_t uMessage, uint64_t wParam, int64_t lParam);
    void _DispatchPosted();
    bool _TranslateKey(QEvent* pEvent);
    bool _TranslateMouse(QEvent* pEvent);
    void _SetButtonKeys(Qt::MouseButtons buttons);
    void _SetModifierKeys(Qt::KeyboardModifiers modifiers);
    uint64_t _MouseKeyFlags() const;

    CQtViewWidget* m_pWidget;
    Kestrin::RenderDevice::WindowMessageProc m_pProc = nullptr;
    void* m_pUser = nullptr;
    bool m_bExists = true;
    bool m_bAcceptDrops = false;
    uint8_t m_aKeys[256] = {};
    Kestrin::RenderDevice::SMouseDeviceState m_mouse;
    QPoint m_lastMouse;
    bool m_bHaveLastMouse = false;
    GUtCriticalSection m_queueLock;
    std::deque<std::array<int64_t, 3>> m_posted;
    Kestrin::RenderDevice::SOverlayFrame m_overlay;
};

} // namespace Ovrel
