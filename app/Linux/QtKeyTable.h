// The one table from Qt's keys to the virtual key codes the logic sees.
#pragma once

#include <cstdint>

namespace Ovrel
{

// The virtual key of a Qt key (Qt::Key); 0 for a key with no virtual code.
uint8_t QtKeyToVirtualKey(int iQtKey);

} // namespace Ovrel
