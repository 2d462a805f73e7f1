// The audio seam is header-only until the XACT layer arrives; this unit gives the library a
// body and checks that the header stands alone.
#include "engine/audio/AudioDevice.h"
