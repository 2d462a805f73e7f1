// Geometric queries and frame conversions on the shared math records: rays against planes,
// boxes and triangles, orthonormal frames, and Euler angles.
//
// Conventions follow Math.h: row vectors, left-handed rotations (a positive turn about z takes
// x to y), angles in radians.
#pragma once

#include "engine/utility/Math.h"

namespace Kestrin::Utility
{

// A half-line: the points vStart + vDir * t for t >= 0. vDir need not be of unit length; the
// distances the queries return are in units of its length.
struct CRay
{
    CVec3 vStart;
    CVec3 vDir;

    CVec3 At(float t) const { return vStart + vDir * t; }
};

// A box with its own axes: vAxis holds three orthonormal directions, vHalf the half extents
// along each.
struct COrientedBox
{
    CVec3 vCenter;
    CVec3 vAxis[3] = {{1, 0, 0}, {0, 1, 0}, {0, 0, 1}};
    CVec3 vHalf;
};

// The ray's hit with the plane: false when the ray runs parallel to it or the plane lies
// behind the start (t < 0); otherwise outT is the distance.
bool IntersectRayPlane(const CRay& ray, const CPlane& plane, float& outT);

// The parameters where the ray's line enters and leaves the box. False when the line misses the
// box or the box lies wholly behind the start; outNear is negative when the start is inside.
bool IntersectRayBoxInterval(const CRay& ray, const CBox3& box, float& outNear, float& outFar);
bool IntersectRayBoxInterval(const CRay& ray, const COrientedBox& box, float& outNear, float& outFar);

// The first hit at t >= 0: a ray that starts inside hits at 0. False on a miss.
bool IntersectRayBox(const CRay& ray, const CBox3& box, float& outT);
bool IntersectRayBox(const CRay& ray, const COrientedBox& box, float& outT);

// Both faces of triangle a, b, c. False on a miss, behind the start, or a degenerate triangle;
// otherwise outT is the distance.
bool IntersectRayTriangle(const CRay& ray, const CVec3& a, const CVec3& b, const CVec3& c, float& outT);

// Makes x, y, z an orthonormal frame with z = Cross(x, y): x keeps its direction, y is made
// perpendicular to it. A degenerate axis is replaced by a perpendicular of the others.
void Orthonormalize(CVec3& x, CVec3& y, CVec3& z);
// The same on the first three rows of an affine matrix; the translation stays.
CMatrix44 Orthonormalize(const CMatrix44& m);

// Euler angles (x, y, z) in radians, applied about the fixed world axes x first, then y, then z:
// the matrix is RotationX(x) * RotationY(y) * RotationZ(z).
CMatrix44 MatrixFromEuler(const CVec3& angles);
CQuat QuatFromEuler(const CVec3& angles);
// The angles of the rotation part of an orthonormal matrix: y in [-pi/2, pi/2], x and z in
// [-pi, pi]. At y = +-pi/2 (gimbal lock) x is 0 and z carries the whole turn.
CVec3 EulerFromMatrix(const CMatrix44& m);
CVec3 EulerFromQuat(const CQuat& q);

} // namespace Kestrin::Utility
