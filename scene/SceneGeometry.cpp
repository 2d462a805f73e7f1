#include "scene/SceneGeometry.h"

#include <cmath>
#include <cstring>
#include <limits>

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
    CMatrix44 mInverse;
    if (!Inverse(mWorld, mInverse))
    {
        return false;
    }
    // The map to box space is affine, so the ray parameter is the same on both sides.
    CVec3 vOrigin = TransformPoint(vStart, mInverse);
    CVec3 vDir = TransformDirection(vDirection, mInverse);
    float fNear = -std::numeric_limits<float>::infinity();
    float fFar = std::numeric_limits<float>::infinity();
    for (int i = 0; i < 3; ++i)
    {
        if (std::fabs(vDir[i]) < 1e-12f)
        {
            if (vOrigin[i] < -vHalf[i] || vOrigin[i] > vHalf[i])
            {
                return false;
            }
            continue;
        }
        float t1 = (-vHalf[i] - vOrigin[i]) / vDir[i];
        float t2 = (vHalf[i] - vOrigin[i]) / vDir[i];
        fNear = std::fmax(fNear, std::fmin(t1, t2));
        fFar = std::fmin(fFar, std::fmax(t1, t2));
    }
    if (fFar < fNear || fFar < 0.0f)
    {
        return false;
    }
    if (fNear < 0.0f)
    {
        if (!bInsideHits)
        {
            return false;
        }
        fDistance = 0.0f;
        return true;
    }
    fDistance = fNear;
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
