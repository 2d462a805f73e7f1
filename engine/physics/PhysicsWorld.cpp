// The physics seam is header-only until the SDK layer arrives; this unit gives the library
// a body and checks that the header stands alone.
#include "engine/physics/PhysicsWorld.h"
