// The window messages and key codes the logic sees. They are the numbers of the Win32 window
// procedure, so that handlers read exactly as designed; each platform window translates its
// own events into them (on Linux: app/Linux/QtKeyTable.cpp).
#pragma once

#include <cstdint>

namespace Kestrin::RenderDevice
{

namespace WindowMessage
{
constexpr uint32_t DESTROY = 0x0002;
constexpr uint32_t MOVE = 0x0003;     // lParam: client x, y (16 bits each)
constexpr uint32_t SIZE = 0x0005;     // wParam: SIZE_*; lParam: client w, h
constexpr uint32_t ACTIVATE = 0x0006; // wParam: 0 inactive, 1 active
constexpr uint32_t CLOSE = 0x0010;
constexpr uint32_t QUIT = 0x0012;        // wParam: exit code
constexpr uint32_t ACTIVATEAPP = 0x001C; // wParam: 1 when the application becomes active
constexpr uint32_t SETCURSOR = 0x0020;
constexpr uint32_t KEYDOWN = 0x0100; // wParam: virtual key; lParam: repeat count 1
constexpr uint32_t KEYUP = 0x0101;
constexpr uint32_t CHAR = 0x0102;      // wParam: the character code (UTF-16 unit)
constexpr uint32_t MOUSEMOVE = 0x0200; // wParam: MK_* buttons; lParam: client x, y
constexpr uint32_t LBUTTONDOWN = 0x0201;
constexpr uint32_t LBUTTONUP = 0x0202;
constexpr uint32_t LBUTTONDBLCLK = 0x0203;
constexpr uint32_t RBUTTONDOWN = 0x0204;
constexpr uint32_t RBUTTONUP = 0x0205;
constexpr uint32_t RBUTTONDBLCLK = 0x0206;
constexpr uint32_t MBUTTONDOWN = 0x0207;
constexpr uint32_t MBUTTONUP = 0x0208;
constexpr uint32_t MBUTTONDBLCLK = 0x0209;
constexpr uint32_t MOUSEWHEEL = 0x020A; // wParam high word: signed wheel delta, 120 a notch
constexpr uint32_t DROPFILES = 0x0233;  // wParam: const SDropFiles* for the length of the call
} // namespace WindowMessage

// wParam of SIZE
constexpr uint64_t SIZE_RESTORED = 0;
constexpr uint64_t SIZE_MINIMIZED = 1;
constexpr uint64_t SIZE_MAXIMIZED = 2;

// wParam bits of mouse messages
constexpr uint64_t MK_LBUTTON = 0x0001;
constexpr uint64_t MK_RBUTTON = 0x0002;
constexpr uint64_t MK_SHIFT = 0x0004;
constexpr uint64_t MK_CONTROL = 0x0008;
constexpr uint64_t MK_MBUTTON = 0x0010;

// Virtual key codes (letters and digits are their upper-case ASCII codes).
namespace VirtualKey
{
constexpr uint8_t LBUTTON = 0x01;
constexpr uint8_t RBUTTON = 0x02;
constexpr uint8_t MBUTTON = 0x04;
constexpr uint8_t BACK = 0x08;
constexpr uint8_t TAB = 0x09;
constexpr uint8_t RETURN = 0x0D;
constexpr uint8_t SHIFT = 0x10;
constexpr uint8_t CONTROL = 0x11;
constexpr uint8_t MENU = 0x12; // alt
constexpr uint8_t PAUSE = 0x13;
constexpr uint8_t CAPITAL = 0x14;
constexpr uint8_t ESCAPE = 0x1B;
constexpr uint8_t SPACE = 0x20;
constexpr uint8_t PRIOR = 0x21; // page up
constexpr uint8_t NEXT = 0x22;  // page down
constexpr uint8_t END = 0x23;
constexpr uint8_t HOME = 0x24;
constexpr uint8_t LEFT = 0x25;
constexpr uint8_t UP = 0x26;
constexpr uint8_t RIGHT = 0x27;
constexpr uint8_t DOWN = 0x28;
constexpr uint8_t SNAPSHOT = 0x2C;
constexpr uint8_t INSERT = 0x2D;
constexpr uint8_t DELETE_KEY = 0x2E;
constexpr uint8_t NUMPAD0 = 0x60;
constexpr uint8_t MULTIPLY = 0x6A;
constexpr uint8_t ADD = 0x6B;
constexpr uint8_t SUBTRACT = 0x6D;
constexpr uint8_t DECIMAL = 0x6E;
constexpr uint8_t DIVIDE = 0x6F;
constexpr uint8_t F1 = 0x70;
constexpr uint8_t NUMLOCK = 0x90;
constexpr uint8_t SCROLL = 0x91;
constexpr uint8_t OEM_1 = 0xBA;      // ;:
constexpr uint8_t OEM_PLUS = 0xBB;   // =+
constexpr uint8_t OEM_COMMA = 0xBC;  // ,<
constexpr uint8_t OEM_MINUS = 0xBD;  // -_
constexpr uint8_t OEM_PERIOD = 0xBE; // .>
constexpr uint8_t OEM_2 = 0xBF;      // /?
constexpr uint8_t OEM_3 = 0xC0;      // `~
constexpr uint8_t OEM_4 = 0xDB;      // [{
constexpr uint8_t OEM_5 = 0xDC;      // \|
constexpr uint8_t OEM_6 = 0xDD;      // ]}
constexpr uint8_t OEM_7 = 0xDE;      // '"
} // namespace VirtualKey

// Two signed 16-bit halves in one lParam, low first.
constexpr int64_t MakeLParam(int iLow, int iHigh)
{
    return static_cast<int64_t>((static_cast<uint32_t>(iLow) & 0xFFFFu) |
                                ((static_cast<uint32_t>(iHigh) & 0xFFFFu) << 16));
}
constexpr int LowWord(int64_t lParam)
{
    return static_cast<int16_t>(static_cast<uint16_t>(lParam & 0xFFFF));
}
constexpr int HighWord(int64_t lParam)
{
    return static_cast<int16_t>(static_cast<uint16_t>((lParam >> 16) & 0xFFFF));
}

} // namespace Kestrin::RenderDevice
