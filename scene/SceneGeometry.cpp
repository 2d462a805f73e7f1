#include "scene/SceneGeometry.h"

#include "engine/utility/Geometry.h"

#include <cstring>

namespace Ovrel
{

using namespace Kestrin::Utility;

CBox3 SceneEmptyBox()
{
    return CBox3{{1e10f, 1e10f, 1e10f}, {-1e10f, -1e10f, -1e10f}};
}

bool RayHitsOrientedBox(const CMatrix44& mWorld, const CVec3& vHalf, const CVec3& vStart,
                        const CVec3& vDirection, bool bInsideHits, float& fDistance)
{
    // The matrix's axes carry the box's scale: the box has unit axes and scaled half sizes.
    COrientedBox box;
    box.vCenter = mWorld.GetTranslation();
    for (int i = 0; i < 3; ++i)
    {
        CVec3 vAxis = mWorld.Row(i);
        float fLength = Length(vAxis);
        if (fLength <= 0.0f)
        {
            return false;
        }
        box.vAxis[i] = vAxis / fLength;
        box.vHalf[i] = vHalf[i] * fLength;
    }
    float fNear = 0.0f, fFar = 0.0f;
    if (!IntersectRayBoxInterval(CRay{vStart, vDirection}, box, fNear, fFar))
    {
        return false;
    }
    if (fNear < 0.0f && !bInsideHits)
    {
        return false;
    }
    fDistance = fNear < 0.0f ? 0.0f : fNear;
    return true;
}

CBox3 OrientedBoxBounds(const CMatrix44& mWorld, const CVec3& vHalf)
{
    return TransformBox(CBox3{-vHalf, vHalf}, mWorld);
}

CMatrix44 NormalizeAxes(const CMatrix44& mMatrix, CVec3& vScale)
{
    CMatrix44 mOut = mMatrix;
    for (int i = 0; i < 3; ++i)
    {
        CVec3 vAxis = mMatrix.Row(i);
        vScale[i] = Length(vAxis);
        mOut.SetRow(i, Normalize(vAxis));
    }
    return mOut;
}

bool SameBits(const CMatrix44& a, const CMatrix44& b)
{
    return memcmp(a.m, b.m, sizeof(a.m)) == 0;
}

} // namespace Ovrel
