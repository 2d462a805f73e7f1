// What drives the editor camera in one frame. The application's input step clears it and fills
// it from the input device each frame; the camera only reads it.
#pragma once

#include "engine/utility/Math.h"

#include <cstdint>

struct CControlState
{
    // Mouse movement, scaled so that the client width is 800 units; +x right, +y down.
    Kestrin::Utility::CVec2 look;
    // Left stick, or the keys: W gives y = -1 and S +1, A gives x = -1 and D +1.
    Kestrin::Utility::CVec2 move;
    // Right stick; +y is the stick pulled back.
    Kestrin::Utility::CVec2 stick2;
    uint8_t leftButton = 0;
    uint8_t rightButton = 0;
    uint8_t middleButton = 0;
    // Mouse wheel in notches; positive away from the user.
    float wheel = 0.0f;
    uint8_t control = 0;
    uint8_t shift = 0;
    uint8_t alt = 0;
};
