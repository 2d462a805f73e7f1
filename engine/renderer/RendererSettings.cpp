#include "engine/renderer/RendererSettings.h"

namespace Kestrin::Renderer
{

CRenderEnvironment::CRenderEnvironment()
{
    for (auto& avPair : avAmbient)
    {
        avPair[0] = CVec3{};
        avPair[1] = CVec3{};
    }
    for (int i = 0; i < 256; ++i)
    {
        acCurve[0][i] = acCurve[1][i] = acCurve[2][i] = static_cast<uint8_t>(i);
    }
}

} // namespace Kestrin::Renderer
