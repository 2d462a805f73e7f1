// The render seam is header-only until the render world arrives; this unit gives the library
// a body and checks that the headers stand alone.
#include "engine/renderer/RenderWorld.h"
#include "engine/renderer/RenderObject.h"
#include "engine/renderer/TextureManager.h"
