#include "engine/utility/Geometry.h"

#include <algorithm>

namespace Kestrin::Utility
{

bool IntersectRayPlane(const CRay& ray, const CPlane& plane, float& outT)
{
    float fDenom = Dot(plane.Normal(), ray.vDir);
    if (fDenom == 0.0f)
    {
        return false;
    }
    float t = -PlaneDot(plane, ray.vStart) / fDenom;
    if (!(t >= 0.0f) || !std::isfinite(t))
    {
        return false;
    }
    outT = t;
    return true;
}

namespace
{
// Narrows [tNear, tFar] by one slab: the start lies at fOrigin along the slab's axis, the ray
// moves by fDir per unit t, and the slab spans fMin..fMax.
inline bool ClipSlab(float fOrigin, float fDir, float fMin, float fMax, float& tNear, float& tFar)
{
    if (fDir == 0.0f)
    {
        return fOrigin >= fMin && fOrigin <= fMax;
    }
    float fInv = 1.0f / fDir;
    float t0 = (fMin - fOrigin) * fInv;
    float t1 = (fMax - fOrigin) * fInv;
    if (t0 > t1)
    {
        std::swap(t0, t1);
    }
    tNear = std::max(tNear, t0);
    tFar = std::min(tFar, t1);
    return tNear <= tFar;
}

bool FirstHit(bool bHit, float fNear, float fFar, float& outT)
{
    if (!bHit || fFar < 0.0f)
    {
        return false;
    }
    outT = std::max(fNear, 0.0f);
    return true;
}
} // namespace

bool IntersectRayBoxInterval(const CRay& ray, const CBox3& box, float& outNear, float& outFar)
{
    if (box.IsEmpty())
    {
        return false;
    }
    float tNear = -1e30f, tFar = 1e30f;
    for (int i = 0; i < 3; ++i)
    {
        if (!ClipSlab(ray.vStart[i], ray.vDir[i], box.vMin[i], box.vMax[i], tNear, tFar))
        {
            return false;
        }
    }
    if (tFar < 0.0f)
    {
        return false;
    }
    outNear = tNear;
    outFar = tFar;
    return true;
}

bool IntersectRayBoxInterval(const CRay& ray, const COrientedBox& box, float& outNear, float& outFar)
{
    CVec3 vRel = ray.vStart - box.vCenter;
    // Most rays miss most boxes: reject on the enclosing sphere before turning into the box's
    // frame. The sphere is grown a little so that rounding never rejects a grazing hit.
    float fRadiusSq = LengthSq(box.vHalf) * 1.0001f + 1e-12f;
    float b = Dot(vRel, ray.vDir);
    float c = Dot(vRel, vRel) - fRadiusSq;
    if (c > 0.0f && (b > 0.0f || b * b < LengthSq(ray.vDir) * c))
    {
        return false;
    }
    float tNear = -1e30f, tFar = 1e30f;
    for (int i = 0; i < 3; ++i)
    {
        float fHalf = box.vHalf[i];
        if (!ClipSlab(Dot(box.vAxis[i], vRel), Dot(box.vAxis[i], ray.vDir), -fHalf, fHalf, tNear, tFar))
        {
            return false;
        }
    }
    if (tFar < 0.0f)
    {
        return false;
    }
    outNear = tNear;
    outFar = tFar;
    return true;
}

bool IntersectRayBox(const CRay& ray, const CBox3& box, float& outT)
{
    float fNear = 0.0f, fFar = 0.0f;
    bool bHit = IntersectRayBoxInterval(ray, box, fNear, fFar);
    return FirstHit(bHit, fNear, fFar, outT);
}

bool IntersectRayBox(const CRay& ray, const COrientedBox& box, float& outT)
{
    float fNear = 0.0f, fFar = 0.0f;
    bool bHit = IntersectRayBoxInterval(ray, box, fNear, fFar);
    return FirstHit(bHit, fNear, fFar, outT);
}

bool IntersectRayTriangle(const CRay& ray, const CVec3& a, const CVec3& b, const CVec3& c, float& outT)
{
    // Moller-Trumbore, both faces.
    CVec3 vEdge1 = b - a;
    CVec3 vEdge2 = c - a;
    CVec3 p = Cross(ray.vDir, vEdge2);
    float fDet = Dot(vEdge1, p);
    if (fDet == 0.0f || !std::isfinite(fDet))
    {
        return false;
    }
    float fInv = 1.0f / fDet;
    CVec3 s = ray.vStart - a;
    float u = Dot(s, p) * fInv;
    if (u < 0.0f || u > 1.0f)
    {
        return false;
    }
    CVec3 q = Cross(s, vEdge1);
    float v = Dot(ray.vDir, q) * fInv;
    if (v < 0.0f || u + v > 1.0f)
    {
        return false;
    }
    float t = Dot(vEdge2, q) * fInv;
    if (t < 0.0f)
    {
        return false;
    }
    outT = t;
    return true;
}

namespace
{
// Some unit vector perpendicular to v (v of unit length or zero).
CVec3 AnyPerpendicular(const CVec3& v)
{
    CVec3 vOther = std::fabs(v.x) < 0.9f ? CVec3{1, 0, 0} : CVec3{0, 1, 0};
    return Normalize(Cross(v, vOther));
}

constexpr float DEGENERATE_SQ = 1e-12f;
} // namespace

void Orthonormalize(CVec3& x, CVec3& y, CVec3& z)
{
    // Fall back on the other axes where x or y has no direction of its own.
    CVec3 vX = Normalize(x);
    if (LengthSq(vX) < 0.5f)
    {
        vX = Normalize(Cross(y, z));
        if (LengthSq(vX) < 0.5f)
        {
            vX = {1, 0, 0};
        }
    }
    CVec3 vY = y - vX * Dot(vX, y);
    if (LengthSq(vY) < DEGENERATE_SQ)
    {
        vY = Cross(z, vX);
        if (LengthSq(vY) < DEGENERATE_SQ)
        {
            vY = AnyPerpendicular(vX);
        }
    }
    vY = Normalize(vY);
    x = vX;
    y = vY;
    z = Cross(vX, vY);
}

CMatrix44 Orthonormalize(const CMatrix44& m)
{
    CVec3 x = m.Row(0), y = m.Row(1), z = m.Row(2);
    Orthonormalize(x, y, z);
    CMatrix44 r = m;
    r.SetRow(0, x);
    r.SetRow(1, y);
    r.SetRow(2, z);
    r.m[0][3] = r.m[1][3] = r.m[2][3] = 0.0f;
    r.m[3][3] = 1.0f;
    return r;
}

CMatrix44 MatrixFromEuler(const CVec3& angles)
{
    return CMatrix44::RotationX(angles.x) * CMatrix44::RotationY(angles.y) * CMatrix44::RotationZ(angles.z);
}

CQuat QuatFromEuler(const CVec3& angles)
{
    CQuat qx = QuatFromAxisAngle({1, 0, 0}, angles.x);
    CQuat qy = QuatFromAxisAngle({0, 1, 0}, angles.y);
    CQuat qz = QuatFromAxisAngle({0, 0, 1}, angles.z);
    return Multiply(Multiply(qx, qy), qz);
}

CVec3 EulerFromMatrix(const CMatrix44& m)
{
    // Rx(a) Ry(b) Rz(c) has m02 = -sin b, m12 = sin a cos b, m22 = cos a cos b,
    // m01 = cos b sin c, m00 = cos b cos c.
    float fSinB = std::clamp(-m.m[0][2], -1.0f, 1.0f);
    float b = std::asin(fSinB);
    if (std::fabs(fSinB) > 0.99999f)
    {
        // cos b = 0: only a - c (or a + c) is defined; put it all in c with a = 0, where the
        // matrix is Ry(b) Rz(c) and row 1 is (-sin c, cos c, 0).
        return {0.0f, b, std::atan2(-m.m[1][0], m.m[1][1])};
    }
    return {std::atan2(m.m[1][2], m.m[2][2]), b, std::atan2(m.m[0][1], m.m[0][0])};
}

CVec3 EulerFromQuat(const CQuat& q)
{
    return EulerFromMatrix(CMatrix44::FromQuat(Normalize(q)));
}

} // namespace Kestrin::Utility
