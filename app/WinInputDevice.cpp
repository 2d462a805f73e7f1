#include "app/WinInputDevice.h"

#include "engine/render_device/Window.h"

namespace Ovrel
{

using Kestrin::RenderDevice::SMouseDeviceState;
namespace VirtualKey = Kestrin::RenderDevice::VirtualKey;

CWinInputDevice::CWinInputDevice(IGamePadService* pService) : m_pService(pService) {}

CWinInputDevice::~CWinInputDevice()
{
    Shutdown();
}

int CWinInputDevice::Initialize(Kestrin::RenderDevice::IWindow* pWindow)
{
    m_pWindow = pWindow;
    SMouseDeviceState state;
    m_bMouseDevice = pWindow && pWindow->ReadMouseDevice(state);
    m_bServiceStarted = m_pService && m_pService->Start();
    if (m_bServiceStarted)
    {
        m_pGamePad = m_pService->OpenFirstPad();
    }
    return 0;
}

void CWinInputDevice::Shutdown()
{
    m_bMouseDevice = false;
    delete m_pGamePad;
    m_pGamePad = nullptr;
    if (m_bServiceStarted)
    {
        m_pService->Stop();
        m_bServiceStarted = false;
    }
}

void CWinInputDevice::Update(float fTimeStep)
{
    (void)fTimeStep;
    if (!m_pWindow || !m_pWindow->IsActive())
    {
        Clear();
        return;
    }
    _ReadKeyboard();
    _ReadMouse();
    if (_ReadGamePad())
    {
        ApplyDeadZone(m_aPads[0]);
    }
}

void CWinInputDevice::_ReadKeyboard()
{
    uint8_t aState[256] = {};
    m_pWindow->GetKeyboardState(aState);
    for (int i = 0; i < 256; ++i)
    {
        m_aKeys[i] = (aState[i] & 0x80) ? 1 : 0;
    }
    m_uControl = m_aKeys[VirtualKey::CONTROL];
    m_uShift = m_aKeys[VirtualKey::SHIFT];
    m_uAlt = m_aKeys[VirtualKey::MENU];
}

void CWinInputDevice::_ReadMouse()
{
    int32_t iX = 0, iY = 0;
    if (m_pWindow->GetCursorClientPos(iX, iY))
    {
        m_afMousePosition[0] = static_cast<float>(iX);
        m_afMousePosition[1] = static_cast<float>(iY);
    }
    if (m_bMouseDevice)
    {
        SMouseDeviceState state;
        if (!m_pWindow->ReadMouseDevice(state))
        {
            return; // keeps last frame's values
        }
        m_afMouseDelta[0] = static_cast<float>(state.lX);
        m_afMouseDelta[1] = static_cast<float>(state.lY);
        m_fWheel = static_cast<float>(state.lZ) / 120.0f;
        m_uLeftButton = state.rgbButtons[0] != 0;
        m_uRightButton = state.rgbButtons[1] != 0;
        m_uMiddleButton = state.rgbButtons[2] != 0;
        return;
    }
    if (m_afLastPosition[0] == -1.0f && m_afLastPosition[1] == -1.0f)
    {
        m_afMouseDelta[0] = m_afMouseDelta[1] = 0.0f;
    }
    else
    {
        m_afMouseDelta[0] = m_afMousePosition[0] - m_afLastPosition[0];
        m_afMouseDelta[1] = m_afMousePosition[1] - m_afLastPosition[1];
    }
    m_afLastPosition[0] = m_afMousePosition[0];
    m_afLastPosition[1] = m_afMousePosition[1];
    m_fWheel = 0.0f;
    m_uLeftButton = m_aKeys[VirtualKey::LBUTTON];
    m_uRightButton = m_aKeys[VirtualKey::RBUTTON];
    m_uMiddleButton = m_aKeys[VirtualKey::MBUTTON];
}

bool CWinInputDevice::_ReadGamePad()
{
    if (!m_pGamePad)
    {
        return true;
    }
    if (!m_pGamePad->Poll())
    {
        m_pGamePad->Acquire();
        return false; // ends the update
    }
    SRawPadState raw;
    if (!m_pGamePad->GetState(raw))
    {
        m_pGamePad->Acquire();
        return true;
    }
    SInputPad& pad = m_aPads[0];
    ConvertPadAxes(raw, pad);
    ConvertPadButtons(raw, pad);
    ConvertPadPov(raw.rgdwPOV[0], pad);
    return true;
}

} // namespace Ovrel
