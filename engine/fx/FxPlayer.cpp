// The fx seam is header-only until the fx runtime arrives; this unit gives the library a
// body and checks that the header stands alone.
#include "engine/fx/FxPlayer.h"
