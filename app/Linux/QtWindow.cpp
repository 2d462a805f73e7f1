#include "app/Linux/QtWindow.h"

#include "app/Linux/QtKeyTable.h"

#include "Utils/Utility/GUtTimer.h"

#include <QApplication>
#include <QCloseEvent>
#include <QDropEvent>
#include <QKeyEvent>
#include <QMimeData>
#include <QMouseEvent>
#include <QPainter>
#include <QUrl>
#include <QWheelEvent>
#include <QWindowStateChangeEvent>

#include <cstring>

namespace Ovrel
{

namespace RD = Kestrin::RenderDevice;
namespace WM = Kestrin::RenderDevice::WindowMessage;
namespace VK = Kestrin::RenderDevice::VirtualKey;

namespace
{
// The 3D view's colour while nothing draws into it.
const QColor VIEW_BACKGROUND(48, 48, 56);

QColor OverlayColour(uint32_t uColour)
{
    const int iAlpha = static_cast<int>((uColour >> 24) & 0xFF);
    return QColor(static_cast<int>((uColour >> 16) & 0xFF), static_cast<int>((uColour >> 8) & 0xFF),
                  static_cast<int>(uColour & 0xFF), iAlpha == 0 ? 255 : iAlpha);
}

int64_t PointLParam(const QPointF& point)
{
    return RD::MakeLParam(static_cast<int>(point.x()), static_cast<int>(point.y()));
}
} // namespace

// ---------------------------------------------------------------------------------------
// The widget

CQtViewWidget::CQtViewWidget(CQtMainWindow* pOwner) : m_pOwner(pOwner)
{
    setAttribute(Qt::WA_OpaquePaintEvent);
    setFocusPolicy(Qt::StrongFocus);
    setMouseTracking(true);
}

bool CQtViewWidget::event(QEvent* pEvent)
{
    if (m_pOwner->TranslateEvent(pEvent))
    {
        return true;
    }
    return QWidget::event(pEvent);
}

void CQtViewWidget::paintEvent(QPaintEvent* pEvent)
{
    (void)pEvent;
    m_pOwner->Paint();
}

void CQtViewWidget::closeEvent(QCloseEvent* pEvent)
{
    if (m_pOwner->OnClose())
    {
        pEvent->accept();
    }
    else
    {
        pEvent->ignore();
    }
}

// ---------------------------------------------------------------------------------------
// The window

CQtMainWindow::CQtMainWindow(int32_t iClientW, int32_t iClientH) : m_pWidget(new CQtViewWidget(this))
{
    m_pWidget->resize(iClientW, iClientH);
    // A fixed size until the start-up adds the sizing frame.
    m_pWidget->setFixedSize(iClientW, iClientH);
    m_pWidget->show();
    m_pWidget->activateWindow();
}

CQtMainWindow::~CQtMainWindow()
{
    delete m_pWidget;
}

void CQtMainWindow::SetMessageProc(RD::WindowMessageProc pProc, void* pUser)
{
    m_pProc = pProc;
    m_pUser = pUser;
}

void CQtMainWindow::Destroy()
{
    if (m_bExists)
    {
        m_bExists = false;
        m_pWidget->hide();
    }
}

void CQtMainWindow::SetTitle(const char* pcTitle)
{
    m_pWidget->setWindowTitle(QString::fromUtf8(pcTitle ? pcTitle : ""));
}

std::string CQtMainWindow::GetTitle() const
{
    return m_pWidget->windowTitle().toStdString();
}

void CQtMainWindow::Move(int32_t iX, int32_t iY, int32_t iW, int32_t iH)
{
    // The rectangle is the outer one: the frame takes what the desktop adds around the client.
    const QSize frameExtra = m_pWidget->frameGeometry().size() - m_pWidget->size();
    const int iClientW = std::max(1, iW - frameExtra.width());
    const int iClientH = std::max(1, iH - frameExtra.height());
    if (m_pWidget->minimumSize() == m_pWidget->maximumSize())
    {
        m_pWidget->setFixedSize(iClientW, iClientH);
    }
    m_pWidget->resize(iClientW, iClientH);
    m_pWidget->move(iX, iY);
}

RD::SWindowRect CQtMainWindow::GetOuterRect() const
{
    const QRect frame = m_pWidget->frameGeometry();
    return {frame.x(), frame.y(), frame.width(), frame.height()};
}

void CQtMainWindow::GetClientSize(int32_t& iW, int32_t& iH) const
{
    if (m_pWidget->isMinimized())
    {
        iW = iH = 0;
        return;
    }
    iW = m_pWidget->width();
    iH = m_pWidget->height();
}

void CQtMainWindow::SetResizable(bool bResizable)
{
    if (bResizable)
    {
        m_pWidget->setMinimumSize(1, 1);
        m_pWidget->setMaximumSize(QWIDGETSIZE_MAX, QWIDGETSIZE_MAX);
        m_pWidget->setWindowFlag(Qt::WindowMaximizeButtonHint, true);
        m_pWidget->show(); // changing the flags hides a window
    }
    else
    {
        m_pWidget->setFixedSize(m_pWidget->size());
    }
}

void CQtMainWindow::AcceptFileDrops(bool bAccept)
{
    m_bAcceptDrops = bAccept;
    m_pWidget->setAcceptDrops(bAccept);
}

bool CQtMainWindow::IsMinimised() const
{
    return m_pWidget->isMinimized();
}

bool CQtMainWindow::IsMaximised() const
{
    return m_pWidget->isMaximized();
}

bool CQtMainWindow::IsActive() const
{
    return m_bExists && m_pWidget->isActiveWindow();
}

bool CQtMainWindow::IsForeground() const
{
    // The desktop's foreground window is the active window of the application in front.
    return IsActive() && QApplication::applicationState() == Qt::ApplicationActive;
}

void CQtMainWindow::SetForeground()
{
    m_pWidget->raise();
    m_pWidget->activateWindow();
}

void CQtMainWindow::SetCapture()
{
    m_pWidget->grabMouse();
}

void CQtMainWindow::ReleaseCapture()
{
    m_pWidget->releaseMouse();
}

void CQtMainWindow::SetArrowCursor()
{
    m_pWidget->setCursor(Qt::ArrowCursor);
}

// ---------------------------------------------------------------------------------------
// Messages

int64_t CQtMainWindow::_Send(uint32_t uMessage, uint64_t wParam, int64_t lParam)
{
    bool bHandled = false;
    return m_pProc ? m_pProc(m_pUser, uMessage, wParam, lParam, bHandled) : 0;
}

void CQtMainWindow::PostMessage(uint32_t uMessage, uint64_t wParam, int64_t lParam)
{
    GUtCriticalSectionLock lock(m_queueLock);
    m_posted.push_back({static_cast<int64_t>(uMessage), static_cast<int64_t>(wParam), lParam});
}

void CQtMainWindow::_DispatchPosted()
{
    for (;;)
    {
        std::array<int64_t, 3> message;
        {
            GUtCriticalSectionLock lock(m_queueLock);
            if (m_posted.empty())
            {
                return;
            }
            message = m_posted.front();
            m_posted.pop_front();
        }
        _Send(static_cast<uint32_t>(message[0]), static_cast<uint64_t>(message[1]), message[2]);
        if (message[0] == WM::QUIT)
        {
            Destroy();
        }
    }
}

void CQtMainWindow::PumpMessages(double dLimitMs)
{
    if (dLimitMs < 0.0)
    {
        QApplication::sendPostedEvents();
        QApplication::processEvents(QEventLoop::AllEvents);
    }
    else
    {
        // Qt checks the time between events and stops once the limit passed.
        QApplication::processEvents(QEventLoop::AllEvents, std::max(1, static_cast<int>(dLimitMs)));
    }
    _DispatchPosted();
}

void CQtMainWindow::_SetModifierKeys(Qt::KeyboardModifiers modifiers)
{
    m_aKeys[VK::SHIFT] = (modifiers & Qt::ShiftModifier) ? 0x80 : 0;
    m_aKeys[VK::CONTROL] = (modifiers & Qt::ControlModifier) ? 0x80 : 0;
    m_aKeys[VK::MENU] = (modifiers & Qt::AltModifier) ? 0x80 : 0;
}

void CQtMainWindow::_SetButtonKeys(Qt::MouseButtons buttons)
{
    m_aKeys[VK::LBUTTON] = (buttons & Qt::LeftButton) ? 0x80 : 0;
    m_aKeys[VK::RBUTTON] = (buttons & Qt::RightButton) ? 0x80 : 0;
    m_aKeys[VK::MBUTTON] = (buttons & Qt::MiddleButton) ? 0x80 : 0;
    m_mouse.rgbButtons[0] = m_aKeys[VK::LBUTTON];
    m_mouse.rgbButtons[1] = m_aKeys[VK::RBUTTON];
    m_mouse.rgbButtons[2] = m_aKeys[VK::MBUTTON];
}

uint64_t CQtMainWindow::_MouseKeyFlags() const
{
    uint64_t uFlags = 0;
    uFlags |= m_aKeys[VK::LBUTTON] ? RD::MK_LBUTTON : 0;
    uFlags |= m_aKeys[VK::RBUTTON] ? RD::MK_RBUTTON : 0;
    uFlags |= m_aKeys[VK::MBUTTON] ? RD::MK_MBUTTON : 0;
    uFlags |= m_aKeys[VK::SHIFT] ? RD::MK_SHIFT : 0;
    uFlags |= m_aKeys[VK::CONTROL] ? RD::MK_CONTROL : 0;
    return uFlags;
}

bool CQtMainWindow::_TranslateKey(QEvent* pEvent)
{
    QKeyEvent* pKey = static_cast<QKeyEvent*>(pEvent);
    const uint8_t uVirtualKey = QtKeyToVirtualKey(pKey->key());
    _SetModifierKeys(pKey->modifiers());
    if (pEvent->type() == QEvent::KeyRelease)
    {
        if (pKey->isAutoRepeat())
        {
            return true; // a held key stays down
        }
        if (uVirtualKey != 0)
        {
            m_aKeys[uVirtualKey] = 0;
            _Send(WM::KEYUP, uVirtualKey, 1);
        }
        return true;
    }
    if (uVirtualKey != 0)
    {
        m_aKeys[uVirtualKey] = 0x80;
        _Send(WM::KEYDOWN, uVirtualKey, 1);
    }
    const QString strText = pKey->text();
    for (QChar c : strText)
    {
        _Send(WM::CHAR, c.unicode(), 1);
    }
    return true;
}

bool CQtMainWindow::_TranslateMouse(QEvent* pEvent)
{
    QMouseEvent* pMouse = static_cast<QMouseEvent*>(pEvent);
    const QPointF point = pMouse->position();
    _SetModifierKeys(pMouse->modifiers());
    _SetButtonKeys(pMouse->buttons());
    const int64_t lParam = PointLParam(point);
    const Qt::MouseButton button = pMouse->button();
    switch (pEvent->type())
    {
        case QEvent::MouseMove:
        {
            const QPoint current = point.toPoint();
            if (m_bHaveLastMouse)
            {
                m_mouse.lX += current.x() - m_lastMouse.x();
                m_mouse.lY += current.y() - m_lastMouse.y();
            }
            m_lastMouse = current;
            m_bHaveLastMouse = true;
            _Send(WM::SETCURSOR, 0, 0);
            _Send(WM::MOUSEMOVE, _MouseKeyFlags(), lParam);
            return true;
        }
        case QEvent::MouseButtonPress:
            _Send(button == Qt::LeftButton    ? WM::LBUTTONDOWN
                  : button == Qt::RightButton ? WM::RBUTTONDOWN
                                              : WM::MBUTTONDOWN,
                  _MouseKeyFlags(), lParam);
            return true;
        case QEvent::MouseButtonDblClick:
            _Send(button == Qt::LeftButton    ? WM::LBUTTONDBLCLK
                  : button == Qt::RightButton ? WM::RBUTTONDBLCLK
                                              : WM::MBUTTONDBLCLK,
                  _MouseKeyFlags(), lParam);
            return true;
        case QEvent::MouseButtonRelease:
            _Send(button == Qt::LeftButton    ? WM::LBUTTONUP
                  : button == Qt::RightButton ? WM::RBUTTONUP
                                              : WM::MBUTTONUP,
                  _MouseKeyFlags(), lParam);
            return true;
        default:
            return false;
    }
}

bool CQtMainWindow::TranslateEvent(QEvent* pEvent)
{
    switch (pEvent->type())
    {
        case QEvent::KeyPress:
        case QEvent::KeyRelease:
            return _TranslateKey(pEvent);
        case QEvent::MouseMove:
        case QEvent::MouseButtonPress:
        case QEvent::MouseButtonDblClick:
        case QEvent::MouseButtonRelease:
            return _TranslateMouse(pEvent);
        case QEvent::Wheel:
        {
            QWheelEvent* pWheel = static_cast<QWheelEvent*>(pEvent);
            const int iDelta = pWheel->angleDelta().y(); // 120 a notch, as the message has it
            m_mouse.lZ += iDelta;
            const uint64_t wParam =
                (static_cast<uint64_t>(static_cast<uint16_t>(iDelta)) << 16) | _MouseKeyFlags();
            _Send(WM::MOUSEWHEEL, wParam, PointLParam(pWheel->globalPosition()));
            return true;
        }
        case QEvent::ActivationChange:
        {
            const bool bActive = m_pWidget->isActiveWindow();
            if (!bActive)
            {
                memset(m_aKeys, 0, sizeof(m_aKeys)); // keys released elsewhere never come back up
                m_mouse = RD::SMouseDeviceState();
            }
            _Send(WM::ACTIVATE, bActive ? 1 : 0, 0);
            _Send(WM::ACTIVATEAPP, bActive ? 1 : 0, 0);
            return false;
        }
        case QEvent::Move:
            _Send(WM::MOVE, 0, RD::MakeLParam(m_pWidget->x(), m_pWidget->y()));
            return false;
        case QEvent::Resize:
        case QEvent::WindowStateChange:
        {
            const uint64_t wParam = m_pWidget->isMinimized()   ? RD::SIZE_MINIMIZED
                                    : m_pWidget->isMaximized() ? RD::SIZE_MAXIMIZED
                                                               : RD::SIZE_RESTORED;
            _Send(WM::SIZE, wParam, RD::MakeLParam(m_pWidget->width(), m_pWidget->height()));
            return false;
        }
        case QEvent::DragEnter:
        {
            QDragEnterEvent* pDrag = static_cast<QDragEnterEvent*>(pEvent);
            if (m_bAcceptDrops && pDrag->mimeData()->hasUrls())
            {
                pDrag->acceptProposedAction();
            }
            return true;
        }
        case QEvent::Drop:
        {
            QDropEvent* pDrop = static_cast<QDropEvent*>(pEvent);
            RD::SDropFiles drop;
            drop.iX = static_cast<int32_t>(pDrop->position().x());
            drop.iY = static_cast<int32_t>(pDrop->position().y());
            for (const QUrl& url : pDrop->mimeData()->urls())
            {
                if (url.isLocalFile())
                {
                    drop.files.push_back(url.toLocalFile().toStdString());
                }
            }
            if (m_bAcceptDrops && !drop.files.empty())
            {
                pDrop->acceptProposedAction();
                _Send(WM::DROPFILES, reinterpret_cast<uint64_t>(&drop), 0);
            }
            return true;
        }
        default:
            return false;
    }
}

bool CQtMainWindow::OnClose()
{
    bool bHandled = false;
    if (m_pProc)
    {
        m_pProc(m_pUser, WM::CLOSE, 0, 0, bHandled);
    }
    if (bHandled)
    {
        return false; // the application keeps the window
    }
    _Send(WM::DESTROY, 0, 0);
    m_bExists = false;
    PostMessage(WM::QUIT, 0, 0);
    return true;
}

// ---------------------------------------------------------------------------------------
// State the input device reads

bool CQtMainWindow::GetKeyboardState(uint8_t aKeys[256]) const
{
    memcpy(aKeys, m_aKeys, sizeof(m_aKeys));
    return true;
}

bool CQtMainWindow::GetCursorClientPos(int32_t& iX, int32_t& iY) const
{
    const QPoint point = m_pWidget->mapFromGlobal(QCursor::pos());
    iX = point.x();
    iY = point.y();
    return true;
}

bool CQtMainWindow::ReadMouseDevice(RD::SMouseDeviceState& out)
{
    out = m_mouse;
    m_mouse.lX = m_mouse.lY = m_mouse.lZ = 0;
    return true;
}

// ---------------------------------------------------------------------------------------
// The software overlay

void CQtMainWindow::PresentOverlay(const RD::SOverlayFrame& frame)
{
    m_overlay = frame;
    m_pWidget->update();
}

void CQtMainWindow::Paint()
{
    QPainter painter(m_pWidget);
    painter.fillRect(m_pWidget->rect(), VIEW_BACKGROUND);
    QFont font("Monospace");
    font.setStyleHint(QFont::TypeWriter);
    for (const RD::SOverlayItem& item : m_overlay.items)
    {
        const QColor colour = OverlayColour(item.uColour);
        switch (item.eKind)
        {
            case RD::SOverlayItem::KIND_FILLED_RECT:
                painter.fillRect(QRectF(item.fX, item.fY, item.fX2, item.fY2), colour);
                break;
            case RD::SOverlayItem::KIND_RECT:
                painter.setPen(colour);
                painter.drawRect(QRectF(item.fX, item.fY, item.fX2, item.fY2));
                break;
            case RD::SOverlayItem::KIND_LINE:
                painter.setPen(colour);
                painter.drawLine(QPointF(item.fX, item.fY), QPointF(item.fX2, item.fY2));
                break;
            case RD::SOverlayItem::KIND_TEXT:
                font.setPixelSize(std::max(1, static_cast<int>(item.fHeight) - 2));
                painter.setFont(font);
                painter.setPen(colour);
                painter.drawText(QRectF(item.fX, item.fY, 4096.0, item.fHeight),
                                 Qt::AlignLeft | Qt::AlignVCenter, QString::fromUtf8(item.strText.c_str()));
                break;
        }
    }
}

} // namespace Ovrel
