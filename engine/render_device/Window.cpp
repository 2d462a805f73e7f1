#include "engine/render_device/Window.h"

#include "Utils/Utility/GUtTimer.h"

#include <atomic>
#include <cstring>

namespace Kestrin::RenderDevice
{

namespace
{
CNullWindowSystem g_nullWindowSystem;
std::atomic<IWindowSystem*> g_pWindowSystem{&g_nullWindowSystem};
} // namespace

IWindowSystem* GetWindowSystem()
{
    return g_pWindowSystem.load();
}

void SetWindowSystem(IWindowSystem* pSystem)
{
    g_pWindowSystem.store(pSystem ? pSystem : &g_nullWindowSystem);
}

CNullWindow::CNullWindow(int32_t iClientW, int32_t iClientH) : m_iClientW(iClientW), m_iClientH(iClientH)
{
    m_outer = {0, 0, iClientW, iClientH}; // no frame without a desktop
}

void CNullWindow::SetMessageProc(WindowMessageProc pProc, void* pUser)
{
    m_pProc = pProc;
    m_pUser = pUser;
}

void CNullWindow::Move(int32_t iX, int32_t iY, int32_t iW, int32_t iH)
{
    m_outer = {iX, iY, iW, iH};
    m_iClientW = iW;
    m_iClientH = iH;
}

void CNullWindow::GetClientSize(int32_t& iW, int32_t& iH) const
{
    iW = m_bMinimised ? 0 : m_iClientW;
    iH = m_bMinimised ? 0 : m_iClientH;
}

void CNullWindow::PostMessage(uint32_t uMessage, uint64_t wParam, int64_t lParam)
{
    GUtCriticalSectionLock lock(m_queueLock);
    m_queue.push_back({uMessage, wParam, lParam});
}

void CNullWindow::PumpMessages(double dLimitMs)
{
    const double dStart = GUtGetClock().NowMilliseconds();
    while (m_bExists)
    {
        SMessage message;
        {
            GUtCriticalSectionLock lock(m_queueLock);
            if (m_queue.empty())
            {
                return;
            }
            message = m_queue.front();
            m_queue.pop_front();
        }
        bool bHandled = false;
        if (m_pProc)
        {
            m_pProc(m_pUser, message.uMessage, message.wParam, message.lParam, bHandled);
        }
        if (message.uMessage == WindowMessage::QUIT)
        {
            m_bExists = false;
        }
        if (dLimitMs >= 0.0 && GUtGetClock().NowMilliseconds() - dStart >= dLimitMs)
        {
            return;
        }
    }
}

bool CNullWindow::GetKeyboardState(uint8_t aKeys[256]) const
{
    memcpy(aKeys, m_aKeys, sizeof(m_aKeys));
    return true;
}

bool CNullWindow::GetCursorClientPos(int32_t& iX, int32_t& iY) const
{
    iX = m_iCursorX;
    iY = m_iCursorY;
    return true;
}

bool CNullWindow::ReadMouseDevice(SMouseDeviceState& out)
{
    (void)out;
    return false; // no relative mouse without a display
}

void CNullWindow::PresentOverlay(const SOverlayFrame& frame)
{
    ++m_iOverlays;
    m_lastOverlay = frame;
}

} // namespace Kestrin::RenderDevice
