// The render seam: the null render world's grid; the unit also checks that the headers stand
// alone.
#include "engine/renderer/RenderWorld.h"
#include "engine/renderer/RenderObject.h"
#include "engine/renderer/TextureManager.h"

#include <cmath>

namespace Kestrin::Ext
{

bool CNullRenderWorld::InitGrid(const CVec3& vMin, const CVec3& vMax, const CVec3& vCell)
{
    if (vCell.x <= 0.0f || vCell.y <= 0.0f || vMax.x <= vMin.x || vMax.y <= vMin.y)
    {
        return false;
    }
    m_iCellsX = static_cast<int32_t>(std::ceil((vMax.x - vMin.x) / vCell.x));
    m_iCellsY = static_cast<int32_t>(std::ceil((vMax.y - vMin.y) / vCell.y));
    return true;
}

} // namespace Kestrin::Ext
