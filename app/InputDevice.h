// CInputDevice: the input state the frame loop reads (keys, mouse and game pads as plain
// numbers), and the conversions every platform shares: a game pad's raw state, in the ranges
// DirectInput reports (axes 0 to 65535, buttons 0 or 0x80, the hat in hundredths of a degree),
// becomes axes of -1 to +1, buttons of 0 to about 1 and a hat direction.
#pragma once

#include <cstdint>

namespace Kestrin::RenderDevice
{
class IWindow;
}

namespace Ovrel
{

// One game pad as the frame loop sees it.
struct SInputPad
{
    float axes[4] = {};     // x, y, z, z-rotation: -1 to +1
    float pov[2] = {};      // the hat: -1, 0 or +1 on each axis; +y is down
    float buttons[12] = {}; // 0 to about 1
    uint8_t keys[256] = {};
    float deadZone = 0.15f;
    float saturation = 0.85f;
};

// A game pad's state in the ranges DirectInput reports them.
struct SRawPadState
{
    static constexpr uint32_t POV_CENTRED = 0xFFFFFFFFu;

    int32_t lX = 32767;
    int32_t lY = 32767;
    int32_t lZ = 32767;
    int32_t lRz = 32767;
    uint32_t rgdwPOV[4] = {POV_CENTRED, POV_CENTRED, POV_CENTRED, POV_CENTRED};
    uint8_t rgbButtons[32] = {};
};

// The raw button behind each of the twelve pad buttons.
constexpr int PAD_BUTTON_MAP[12] = {2, 1, 3, 0, 6, 7, 9, 10, 8, 11, 4, 5};
// A button counts as held above this value (the three-button quit).
constexpr float PAD_BUTTON_HELD = 0.5f;

// axes[0..3] = (raw - 32767) / 32767 for x, y, z and z-rotation.
void ConvertPadAxes(const SRawPadState& raw, SInputPad& pad);
// buttons[i] = raw[PAD_BUTTON_MAP[i]] / 128.
void ConvertPadButtons(const SRawPadState& raw, SInputPad& pad);
// The first hat: a multiple of 4500 from 0 to 31500 gives one of eight directions; any
// other value (a centred hat) leaves pov as it was.
void ConvertPadPov(uint32_t uRawPov, SInputPad& pad);
// Magnitude at most deadZone gives 0, at saturation or beyond +1 or -1; between, unchanged.
void ApplyDeadZone(SInputPad& pad);

class CInputDevice
{
public:
    static constexpr int PAD_COUNT = 4;

    CInputDevice() = default;
    virtual ~CInputDevice() = default;
    CInputDevice(const CInputDevice&) = delete;
    CInputDevice& operator=(const CInputDevice&) = delete;

    // Sets every value to 0, except each pad's dead zone and saturation.
    virtual void Clear();
    // Takes the window input comes from. Returns 0 (the base has no devices).
    virtual int Initialize(Kestrin::RenderDevice::IWindow* pWindow);
    // Releases the platform's devices.
    virtual void Shutdown() {}
    // Reads this frame's input.
    virtual void Update(float fTimeStep);

    bool IsKeyDown(int iKey) const { return iKey >= 0 && iKey < 256 && m_aKeys[iKey] != 0; }
    uint8_t GetControl() const { return m_uControl; }
    uint8_t GetShift() const { return m_uShift; }
    uint8_t GetAlt() const { return m_uAlt; }
    uint8_t GetLeftButton() const { return m_uLeftButton; }
    uint8_t GetRightButton() const { return m_uRightButton; }
    uint8_t GetMiddleButton() const { return m_uMiddleButton; }
    float GetMouseDeltaX() const { return m_afMouseDelta[0]; }
    float GetMouseDeltaY() const { return m_afMouseDelta[1]; }
    float GetMouseX() const { return m_afMousePosition[0]; }
    float GetMouseY() const { return m_afMousePosition[1]; }
    float GetWheel() const { return m_fWheel; }
    const SInputPad& GetPad(int iIndex) const { return m_aPads[iIndex]; }

protected:
    uint8_t m_aKeys[256] = {};
    uint8_t m_uControl = 0;
    uint8_t m_uShift = 0;
    uint8_t m_uAlt = 0;
    uint8_t m_uLeftButton = 0;
    uint8_t m_uRightButton = 0;
    uint8_t m_uMiddleButton = 0;
    float m_afMouseDelta[2] = {};
    float m_afMousePosition[2] = {};
    float m_fWheel = 0.0f; // notches: the raw value over 120
    SInputPad m_aPads[PAD_COUNT];
};

} // namespace Ovrel
