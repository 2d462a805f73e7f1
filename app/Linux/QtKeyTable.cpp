#include "app/Linux/QtKeyTable.h"

#include "engine/render_device/WindowMessages.h"

#include <Qt>

namespace Ovrel
{

namespace VK = Kestrin::RenderDevice::VirtualKey;

namespace
{
struct SKeyEntry
{
    int iQtKey;
    uint8_t uVirtualKey;
};

// Keys whose codes are not their characters. Letters, digits and F1 to F24 are ranges below.
const SKeyEntry s_aKeys[] = {
    {Qt::Key_Backspace, VK::BACK},
    {Qt::Key_Tab, VK::TAB},
    {Qt::Key_Backtab, VK::TAB},
    {Qt::Key_Return, VK::RETURN},
    {Qt::Key_Enter, VK::RETURN},
    {Qt::Key_Shift, VK::SHIFT},
    {Qt::Key_Control, VK::CONTROL},
    {Qt::Key_Alt, VK::MENU},
    {Qt::Key_AltGr, VK::MENU},
    {Qt::Key_Pause, VK::PAUSE},
    {Qt::Key_CapsLock, VK::CAPITAL},
    {Qt::Key_Escape, VK::ESCAPE},
    {Qt::Key_Space, VK::SPACE},
    {Qt::Key_PageUp, VK::PRIOR},
    {Qt::Key_PageDown, VK::NEXT},
    {Qt::Key_End, VK::END},
    {Qt::Key_Home, VK::HOME},
    {Qt::Key_Left, VK::LEFT},
    {Qt::Key_Up, VK::UP},
    {Qt::Key_Right, VK::RIGHT},
    {Qt::Key_Down, VK::DOWN},
    {Qt::Key_Print, VK::SNAPSHOT},
    {Qt::Key_Insert, VK::INSERT},
    {Qt::Key_Delete, VK::DELETE_KEY},
    {Qt::Key_NumLock, VK::NUMLOCK},
    {Qt::Key_ScrollLock, VK::SCROLL},
    {Qt::Key_Asterisk, VK::MULTIPLY},
    {Qt::Key_Plus, VK::OEM_PLUS},
    {Qt::Key_Equal, VK::OEM_PLUS},
    {Qt::Key_Minus, VK::OEM_MINUS},
    {Qt::Key_Underscore, VK::OEM_MINUS},
    {Qt::Key_Comma, VK::OEM_COMMA},
    {Qt::Key_Less, VK::OEM_COMMA},
    {Qt::Key_Period, VK::OEM_PERIOD},
    {Qt::Key_Greater, VK::OEM_PERIOD},
    {Qt::Key_Slash, VK::OEM_2},
    {Qt::Key_Question, VK::OEM_2},
    {Qt::Key_Semicolon, VK::OEM_1},
    {Qt::Key_Colon, VK::OEM_1},
    {Qt::Key_QuoteLeft, VK::OEM_3},
    {Qt::Key_AsciiTilde, VK::OEM_3},
    {Qt::Key_BracketLeft, VK::OEM_4},
    {Qt::Key_BraceLeft, VK::OEM_4},
    {Qt::Key_Backslash, VK::OEM_5},
    {Qt::Key_Bar, VK::OEM_5},
    {Qt::Key_BracketRight, VK::OEM_6},
    {Qt::Key_BraceRight, VK::OEM_6},
    {Qt::Key_Apostrophe, VK::OEM_7},
    {Qt::Key_QuoteDbl, VK::OEM_7},
    {Qt::Key_Exclam, '1'},
    {Qt::Key_At, '2'},
    {Qt::Key_NumberSign, '3'},
    {Qt::Key_Dollar, '4'},
    {Qt::Key_Percent, '5'},
    {Qt::Key_AsciiCircum, '6'},
    {Qt::Key_Ampersand, '7'},
    {Qt::Key_ParenLeft, '9'},
    {Qt::Key_ParenRight, '0'},
};
} // namespace

uint8_t QtKeyToVirtualKey(int iQtKey)
{
    if ((iQtKey >= Qt::Key_A && iQtKey <= Qt::Key_Z) || (iQtKey >= Qt::Key_0 && iQtKey <= Qt::Key_9))
    {
        return static_cast<uint8_t>(iQtKey); // Qt's codes are the upper-case ASCII, as are the virtual keys
    }
    if (iQtKey >= Qt::Key_F1 && iQtKey <= Qt::Key_F24)
    {
        return static_cast<uint8_t>(VK::F1 + (iQtKey - Qt::Key_F1));
    }
    for (const SKeyEntry& entry : s_aKeys)
    {
        if (entry.iQtKey == iQtKey)
        {
            return entry.uVirtualKey;
        }
    }
    return 0;
}

} // namespace Ovrel
