#include "app/InputDevice.h"

#include <cmath>
#include <cstring>

namespace Ovrel
{

void ConvertPadAxes(const SRawPadState& raw, SInputPad& pad)
{
    const int32_t aRaw[4] = {raw.lX, raw.lY, raw.lZ, raw.lRz};
    for (int i = 0; i < 4; ++i)
    {
        pad.axes[i] = static_cast<float>(aRaw[i] - 32767) / 32767.0f;
    }
}

void ConvertPadButtons(const SRawPadState& raw, SInputPad& pad)
{
    for (int i = 0; i < 12; ++i)
    {
        pad.buttons[i] = static_cast<float>(raw.rgbButtons[PAD_BUTTON_MAP[i]]) * 0.0078125f;
    }
}

void ConvertPadPov(uint32_t uRawPov, SInputPad& pad)
{
    static const float s_afDirections[8][2] = {{0, -1}, {1, -1}, {1, 0},  {1, 1},
                                               {0, 1},  {-1, 1}, {-1, 0}, {-1, -1}};
    if (uRawPov % 4500 != 0 || uRawPov / 4500 > 7)
    {
        return;
    }
    pad.pov[0] = s_afDirections[uRawPov / 4500][0];
    pad.pov[1] = s_afDirections[uRawPov / 4500][1];
}

void ApplyDeadZone(SInputPad& pad)
{
    for (float& fAxis : pad.axes)
    {
        const float fMagnitude = std::fabs(fAxis);
        if (fMagnitude <= pad.deadZone)
        {
            fAxis = 0.0f;
        }
        else if (fMagnitude >= pad.saturation)
        {
            fAxis = fAxis > 0.0f ? 1.0f : -1.0f;
        }
    }
}

void CInputDevice::Clear()
{
    memset(m_aKeys, 0, sizeof(m_aKeys));
    m_uControl = m_uShift = m_uAlt = 0;
    m_uLeftButton = m_uRightButton = m_uMiddleButton = 0;
    m_afMouseDelta[0] = m_afMouseDelta[1] = 0.0f;
    m_afMousePosition[0] = m_afMousePosition[1] = 0.0f;
    m_fWheel = 0.0f;
    for (SInputPad& pad : m_aPads)
    {
        const float fDeadZone = pad.deadZone;
        const float fSaturation = pad.saturation;
        pad = SInputPad();
        pad.deadZone = fDeadZone;
        pad.saturation = fSaturation;
    }
}

int CInputDevice::Initialize(Kestrin::RenderDevice::IWindow* pWindow)
{
    (void)pWindow;
    return 0;
}

void CInputDevice::Update(float fTimeStep)
{
    (void)fTimeStep; // the base reads no devices
}

} // namespace Ovrel
