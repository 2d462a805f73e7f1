// The shared math records: vectors of 32-bit floats, plane, quaternion, bounding box and the
// 4 by 4 matrix.
//
// Matrices are stored row by row and used with row vectors: a point is multiplied from the
// left (p' = p * M) and the translation stands in the fourth row (m[3][0..2]). So A * B
// applies A first, then B. Quaternions are x, y, z, w, and Multiply(a, b) likewise rotates
// by a first, then by b. Coordinates are left-handed, as the renderer's projections are.
#pragma once

#include <cmath>
#include <cstdint>

namespace Kestrin::Utility
{

constexpr float PI = 3.14159265358979323846f;

struct CVec2
{
    float x = 0.0f, y = 0.0f;

    CVec2 operator+(const CVec2& o) const { return {x + o.x, y + o.y}; }
    CVec2 operator-(const CVec2& o) const { return {x - o.x, y - o.y}; }
    CVec2 operator*(float s) const { return {x * s, y * s}; }
    bool operator==(const CVec2&) const = default;
};

struct CVec3
{
    float x = 0.0f, y = 0.0f, z = 0.0f;

    CVec3 operator+(const CVec3& o) const { return {x + o.x, y + o.y, z + o.z}; }
    CVec3 operator-(const CVec3& o) const { return {x - o.x, y - o.y, z - o.z}; }
    CVec3 operator-() const { return {-x, -y, -z}; }
    CVec3 operator*(float s) const { return {x * s, y * s, z * s}; }
    CVec3 operator/(float s) const { return {x / s, y / s, z / s}; }
    CVec3& operator+=(const CVec3& o)
    {
        x += o.x;
        y += o.y;
        z += o.z;
        return *this;
    }
    CVec3& operator-=(const CVec3& o)
    {
        x -= o.x;
        y -= o.y;
        z -= o.z;
        return *this;
    }
    CVec3& operator*=(float s)
    {
        x *= s;
        y *= s;
        z *= s;
        return *this;
    }
    float operator[](int i) const { return i == 0 ? x : (i == 1 ? y : z); }
    float& operator[](int i) { return i == 0 ? x : (i == 1 ? y : z); }
    bool operator==(const CVec3&) const = default;
};

struct CVec4
{
    float x = 0.0f, y = 0.0f, z = 0.0f, w = 0.0f;

    CVec4 operator+(const CVec4& o) const { return {x + o.x, y + o.y, z + o.z, w + o.w}; }
    CVec4 operator-(const CVec4& o) const { return {x - o.x, y - o.y, z - o.z, w - o.w}; }
    CVec4 operator*(float s) const { return {x * s, y * s, z * s, w * s}; }
    bool operator==(const CVec4&) const = default;
};

// The plane a*x + b*y + c*z + d = 0: normal (a, b, c), distance d.
struct CPlane
{
    float a = 0.0f, b = 0.0f, c = 0.0f, d = 0.0f;

    CVec3 Normal() const { return {a, b, c}; }
    bool operator==(const CPlane&) const = default;
};

struct CQuat
{
    float x = 0.0f, y = 0.0f, z = 0.0f, w = 1.0f;

    bool operator==(const CQuat&) const = default;
};

// Axis-aligned box: minimum and maximum corner. An empty box has min above max.
struct CBox3
{
    CVec3 vMin{1e30f, 1e30f, 1e30f};
    CVec3 vMax{-1e30f, -1e30f, -1e30f};

    bool IsEmpty() const { return vMin.x > vMax.x || vMin.y > vMax.y || vMin.z > vMax.z; }
    CVec3 Center() const { return (vMin + vMax) * 0.5f; }
    CVec3 Extent() const { return vMax - vMin; }
    void Add(const CVec3& p);
    void Add(const CBox3& box);
    bool Contains(const CVec3& p) const;
    bool operator==(const CBox3&) const = default;
};

struct CMatrix44
{
    float m[4][4] = {{1, 0, 0, 0}, {0, 1, 0, 0}, {0, 0, 1, 0}, {0, 0, 0, 1}};

    static CMatrix44 Identity() { return CMatrix44(); }
    static CMatrix44 Zero();
    static CMatrix44 Translation(const CVec3& t);
    static CMatrix44 Scaling(const CVec3& s);
    static CMatrix44 RotationX(float fRadians);
    static CMatrix44 RotationY(float fRadians);
    static CMatrix44 RotationZ(float fRadians);
    static CMatrix44 RotationAxis(const CVec3& axis, float fRadians);
    static CMatrix44 FromQuat(const CQuat& q);
    // Scale, then rotate, then translate.
    static CMatrix44 Compose(const CVec3& scale, const CQuat& rotation, const CVec3& translation);
    // Left-handed camera and projections, depth 0 to 1.
    static CMatrix44 LookAtLH(const CVec3& eye, const CVec3& at, const CVec3& up);
    static CMatrix44 PerspectiveFovLH(float fFovY, float fAspect, float fNear, float fFar);
    static CMatrix44 OrthoLH(float fWidth, float fHeight, float fNear, float fFar);

    CMatrix44 operator*(const CMatrix44& o) const;
    CMatrix44& operator*=(const CMatrix44& o) { return *this = *this * o; }
    bool operator==(const CMatrix44&) const = default;

    CVec3 GetTranslation() const { return {m[3][0], m[3][1], m[3][2]}; }
    void SetTranslation(const CVec3& t)
    {
        m[3][0] = t.x;
        m[3][1] = t.y;
        m[3][2] = t.z;
    }
    CVec3 Row(int i) const { return {m[i][0], m[i][1], m[i][2]}; }
    void SetRow(int i, const CVec3& v)
    {
        m[i][0] = v.x;
        m[i][1] = v.y;
        m[i][2] = v.z;
    }
};

// --- vectors
inline float Dot(const CVec3& a, const CVec3& b)
{
    return a.x * b.x + a.y * b.y + a.z * b.z;
}
inline float Dot(const CVec4& a, const CVec4& b)
{
    return a.x * b.x + a.y * b.y + a.z * b.z + a.w * b.w;
}
inline CVec3 Cross(const CVec3& a, const CVec3& b)
{
    return {a.y * b.z - a.z * b.y, a.z * b.x - a.x * b.z, a.x * b.y - a.y * b.x};
}
inline float Length(const CVec3& v)
{
    return std::sqrt(Dot(v, v));
}
inline float LengthSq(const CVec3& v)
{
    return Dot(v, v);
}
inline float Length(const CVec2& v)
{
    return std::sqrt(v.x * v.x + v.y * v.y);
}
// Unit vector along v; the zero vector stays zero.
CVec3 Normalize(const CVec3& v);
inline CVec3 Lerp(const CVec3& a, const CVec3& b, float t)
{
    return a + (b - a) * t;
}
inline CVec3 Min(const CVec3& a, const CVec3& b)
{
    return {std::fmin(a.x, b.x), std::fmin(a.y, b.y), std::fmin(a.z, b.z)};
}
inline CVec3 Max(const CVec3& a, const CVec3& b)
{
    return {std::fmax(a.x, b.x), std::fmax(a.y, b.y), std::fmax(a.z, b.z)};
}

// --- matrices
CMatrix44 Transpose(const CMatrix44& m);
// General inverse. Returns false (and the identity) for a singular matrix.
bool Inverse(const CMatrix44& m, CMatrix44& out);
CMatrix44 Inverse(const CMatrix44& m);
float Determinant(const CMatrix44& m);
// p * M with w = 1, no division by w: for affine matrices.
CVec3 TransformPoint(const CVec3& p, const CMatrix44& m);
// p * M with w = 1, divided by the resulting w: for projections.
CVec3 TransformCoord(const CVec3& p, const CMatrix44& m);
// d * M with w = 0: directions and normals under rigid transforms.
CVec3 TransformDirection(const CVec3& d, const CMatrix44& m);
CVec4 Transform(const CVec4& v, const CMatrix44& m);
// The box of the eight transformed corners.
CBox3 TransformBox(const CBox3& box, const CMatrix44& m);
// Splits an affine matrix into scale, rotation and translation. Returns false when a scale
// is zero (the rotation is then the identity).
bool Decompose(const CMatrix44& m, CVec3& scale, CQuat& rotation, CVec3& translation);

// --- quaternions
CQuat Multiply(const CQuat& a, const CQuat& b);
CQuat Normalize(const CQuat& q);
CQuat Conjugate(const CQuat& q);
CQuat QuatFromAxisAngle(const CVec3& axis, float fRadians);
// The rotation part of a matrix whose three rows are orthonormal.
CQuat QuatFromMatrix(const CMatrix44& m);
CQuat Slerp(const CQuat& a, const CQuat& b, float t);
CVec3 Rotate(const CVec3& v, const CQuat& q);

// --- planes
CPlane PlaneFromPointNormal(const CVec3& p, const CVec3& n);
CPlane PlaneFromPoints(const CVec3& a, const CVec3& b, const CVec3& c);
inline float PlaneDot(const CPlane& pl, const CVec3& p)
{
    return pl.a * p.x + pl.b * p.y + pl.c * p.z + pl.d;
}
CPlane NormalizePlane(const CPlane& pl);

inline float ToRadians(float fDegrees)
{
    return fDegrees * (PI / 180.0f);
}
inline float ToDegrees(float fRadians)
{
    return fRadians * (180.0f / PI);
}

} // namespace Kestrin::Utility
