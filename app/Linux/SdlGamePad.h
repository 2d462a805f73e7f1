// The game pad on Linux: SDL2's game-controller service stands where DirectInput stood.
// SDL's values are normalised to DirectInput's ranges before the shared conversion: sticks
// to 0..65535 (left stick x, y; right stick as z and z-rotation), buttons to 0 or 0x80
// (triggers in proportion) in the raw order of a DirectInput pad, the d-pad to a hat angle.
#pragma once

#include "app/WinInputDevice.h"

#include <cstdint>

namespace Ovrel
{

// One reading of an SDL game controller, in SDL's own ranges.
struct SSdlPadSample
{
    int16_t aLeftStick[2] = {0, 0}; // -32768 to 32767, +y down
    int16_t aRightStick[2] = {0, 0};
    int16_t aTriggers[2] = {0, 0}; // left, right: 0 to 32767
    bool bA = false, bB = false, bX = false, bY = false;
    bool bLeftShoulder = false, bRightShoulder = false;
    bool bBack = false, bStart = false;
    bool bLeftStick = false, bRightStick = false;
    bool bDpadUp = false, bDpadDown = false, bDpadLeft = false, bDpadRight = false;
};

// SDL's reading in DirectInput's ranges. Raw buttons: 0 X, 1 A, 2 B, 3 Y, 4 left shoulder,
// 5 right shoulder, 6 left trigger, 7 right trigger, 8 back, 9 start, 10 left stick,
// 11 right stick.
SRawPadState SdlSampleToRaw(const SSdlPadSample& sample);

class CSdlGamePadService final : public IGamePadService
{
public:
    CSdlGamePadService() = default;
    ~CSdlGamePadService() override;

    bool Start() override;
    IGamePad* OpenFirstPad() override;
    void Stop() override;

private:
    bool m_bStarted = false;
};

} // namespace Ovrel
