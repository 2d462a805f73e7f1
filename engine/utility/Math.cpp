#include "engine/utility/Math.h"

#include <algorithm>

namespace Kestrin::Utility
{

void CBox3::Add(const CVec3& p)
{
    vMin = Min(vMin, p);
    vMax = Max(vMax, p);
}

void CBox3::Add(const CBox3& box)
{
    if (!box.IsEmpty())
    {
        Add(box.vMin);
        Add(box.vMax);
    }
}

bool CBox3::Contains(const CVec3& p) const
{
    return p.x >= vMin.x && p.x <= vMax.x && p.y >= vMin.y && p.y <= vMax.y && p.z >= vMin.z && p.z <= vMax.z;
}

CVec3 Normalize(const CVec3& v)
{
    float fLen = Length(v);
    return fLen > 0.0f ? v / fLen : CVec3{};
}

// ---------------------------------------------------------------------------------------
// Matrices

CMatrix44 CMatrix44::Zero()
{
    CMatrix44 r;
    for (auto& row : r.m)
    {
        for (float& f : row)
        {
            f = 0.0f;
        }
    }
    return r;
}

CMatrix44 CMatrix44::Translation(const CVec3& t)
{
    CMatrix44 r;
    r.SetTranslation(t);
    return r;
}

CMatrix44 CMatrix44::Scaling(const CVec3& s)
{
    CMatrix44 r;
    r.m[0][0] = s.x;
    r.m[1][1] = s.y;
    r.m[2][2] = s.z;
    return r;
}

CMatrix44 CMatrix44::RotationX(float fRadians)
{
    float c = std::cos(fRadians), s = std::sin(fRadians);
    CMatrix44 r;
    r.m[1][1] = c;
    r.m[1][2] = s;
    r.m[2][1] = -s;
    r.m[2][2] = c;
    return r;
}

CMatrix44 CMatrix44::RotationY(float fRadians)
{
    float c = std::cos(fRadians), s = std::sin(fRadians);
    CMatrix44 r;
    r.m[0][0] = c;
    r.m[0][2] = -s;
    r.m[2][0] = s;
    r.m[2][2] = c;
    return r;
}

CMatrix44 CMatrix44::RotationZ(float fRadians)
{
    float c = std::cos(fRadians), s = std::sin(fRadians);
    CMatrix44 r;
    r.m[0][0] = c;
    r.m[0][1] = s;
    r.m[1][0] = -s;
    r.m[1][1] = c;
    return r;
}

CMatrix44 CMatrix44::RotationAxis(const CVec3& axis, float fRadians)
{
    return FromQuat(QuatFromAxisAngle(axis, fRadians));
}

CMatrix44 CMatrix44::FromQuat(const CQuat& q)
{
    float xx = q.x * q.x, yy = q.y * q.y, zz = q.z * q.z;
    float xy = q.x * q.y, xz = q.x * q.z, yz = q.y * q.z;
    float wx = q.w * q.x, wy = q.w * q.y, wz = q.w * q.z;
    CMatrix44 r;
    r.m[0][0] = 1.0f - 2.0f * (yy + zz);
    r.m[0][1] = 2.0f * (xy + wz);
    r.m[0][2] = 2.0f * (xz - wy);
    r.m[1][0] = 2.0f * (xy - wz);
    r.m[1][1] = 1.0f - 2.0f * (xx + zz);
    r.m[1][2] = 2.0f * (yz + wx);
    r.m[2][0] = 2.0f * (xz + wy);
    r.m[2][1] = 2.0f * (yz - wx);
    r.m[2][2] = 1.0f - 2.0f * (xx + yy);
    return r;
}

CMatrix44 CMatrix44::Compose(const CVec3& scale, const CQuat& rotation, const CVec3& translation)
{
    CMatrix44 r = FromQuat(rotation);
    for (int i = 0; i < 3; ++i)
    {
        float s = scale[i];
        r.m[i][0] *= s;
        r.m[i][1] *= s;
        r.m[i][2] *= s;
    }
    r.SetTranslation(translation);
    return r;
}

CMatrix44 CMatrix44::LookAtLH(const CVec3& eye, const CVec3& at, const CVec3& up)
{
    CVec3 zAxis = Normalize(at - eye);
    CVec3 xAxis = Normalize(Cross(up, zAxis));
    CVec3 yAxis = Cross(zAxis, xAxis);
    CMatrix44 r;
    r.m[0][0] = xAxis.x;
    r.m[0][1] = yAxis.x;
    r.m[0][2] = zAxis.x;
    r.m[1][0] = xAxis.y;
    r.m[1][1] = yAxis.y;
    r.m[1][2] = zAxis.y;
    r.m[2][0] = xAxis.z;
    r.m[2][1] = yAxis.z;
    r.m[2][2] = zAxis.z;
    r.m[3][0] = -Dot(xAxis, eye);
    r.m[3][1] = -Dot(yAxis, eye);
    r.m[3][2] = -Dot(zAxis, eye);
    return r;
}

CMatrix44 CMatrix44::PerspectiveFovLH(float fFovY, float fAspect, float fNear, float fFar)
{
    float fYScale = 1.0f / std::tan(fFovY * 0.5f);
    float fXScale = fYScale / fAspect;
    CMatrix44 r = Zero();
    r.m[0][0] = fXScale;
    r.m[1][1] = fYScale;
    r.m[2][2] = fFar / (fFar - fNear);
    r.m[2][3] = 1.0f;
    r.m[3][2] = -fNear * fFar / (fFar - fNear);
    return r;
}

CMatrix44 CMatrix44::OrthoLH(float fWidth, float fHeight, float fNear, float fFar)
{
    CMatrix44 r;
    r.m[0][0] = 2.0f / fWidth;
    r.m[1][1] = 2.0f / fHeight;
    r.m[2][2] = 1.0f / (fFar - fNear);
    r.m[3][2] = fNear / (fNear - fFar);
    return r;
}

CMatrix44 CMatrix44::operator*(const CMatrix44& o) const
{
    CMatrix44 r;
    for (int i = 0; i < 4; ++i)
    {
        for (int j = 0; j < 4; ++j)
        {
            r.m[i][j] = m[i][0] * o.m[0][j] + m[i][1] * o.m[1][j] + m[i][2] * o.m[2][j] + m[i][3] * o.m[3][j];
        }
    }
    return r;
}

CMatrix44 Transpose(const CMatrix44& m)
{
    CMatrix44 r;
    for (int i = 0; i < 4; ++i)
    {
        for (int j = 0; j < 4; ++j)
        {
            r.m[i][j] = m.m[j][i];
        }
    }
    return r;
}

namespace
{
// Cofactor expansion on the flattened matrix; inv receives the adjugate.
float Adjugate(const float* a, float* inv)
{
    inv[0] = a[5] * a[10] * a[15] - a[5] * a[11] * a[14] - a[9] * a[6] * a[15] + a[9] * a[7] * a[14] +
             a[13] * a[6] * a[11] - a[13] * a[7] * a[10];
    inv[4] = -a[4] * a[10] * a[15] + a[4] * a[11] * a[14] + a[8] * a[6] * a[15] - a[8] * a[7] * a[14] -
             a[12] * a[6] * a[11] + a[12] * a[7] * a[10];
    inv[8] = a[4] * a[9] * a[15] - a[4] * a[11] * a[13] - a[8] * a[5] * a[15] + a[8] * a[7] * a[13] +
             a[12] * a[5] * a[11] - a[12] * a[7] * a[9];
    inv[12] = -a[4] * a[9] * a[14] + a[4] * a[10] * a[13] + a[8] * a[5] * a[14] - a[8] * a[6] * a[13] -
              a[12] * a[5] * a[10] + a[12] * a[6] * a[9];
    inv[1] = -a[1] * a[10] * a[15] + a[1] * a[11] * a[14] + a[9] * a[2] * a[15] - a[9] * a[3] * a[14] -
             a[13] * a[2] * a[11] + a[13] * a[3] * a[10];
    inv[5] = a[0] * a[10] * a[15] - a[0] * a[11] * a[14] - a[8] * a[2] * a[15] + a[8] * a[3] * a[14] +
             a[12] * a[2] * a[11] - a[12] * a[3] * a[10];
    inv[9] = -a[0] * a[9] * a[15] + a[0] * a[11] * a[13] + a[8] * a[1] * a[15] - a[8] * a[3] * a[13] -
             a[12] * a[1] * a[11] + a[12] * a[3] * a[9];
    inv[13] = a[0] * a[9] * a[14] - a[0] * a[10] * a[13] - a[8] * a[1] * a[14] + a[8] * a[2] * a[13] +
              a[12] * a[1] * a[10] - a[12] * a[2] * a[9];
    inv[2] = a[1] * a[6] * a[15] - a[1] * a[7] * a[14] - a[5] * a[2] * a[15] + a[5] * a[3] * a[14] +
             a[13] * a[2] * a[7] - a[13] * a[3] * a[6];
    inv[6] = -a[0] * a[6] * a[15] + a[0] * a[7] * a[14] + a[4] * a[2] * a[15] - a[4] * a[3] * a[14] -
             a[12] * a[2] * a[7] + a[12] * a[3] * a[6];
    inv[10] = a[0] * a[5] * a[15] - a[0] * a[7] * a[13] - a[4] * a[1] * a[15] + a[4] * a[3] * a[13] +
              a[12] * a[1] * a[7] - a[12] * a[3] * a[5];
    inv[14] = -a[0] * a[5] * a[14] + a[0] * a[6] * a[13] + a[4] * a[1] * a[14] - a[4] * a[2] * a[13] -
              a[12] * a[1] * a[6] + a[12] * a[2] * a[5];
    inv[3] = -a[1] * a[6] * a[11] + a[1] * a[7] * a[10] + a[5] * a[2] * a[11] - a[5] * a[3] * a[10] -
             a[9] * a[2] * a[7] + a[9] * a[3] * a[6];
    inv[7] = a[0] * a[6] * a[11] - a[0] * a[7] * a[10] - a[4] * a[2] * a[11] + a[4] * a[3] * a[10] +
             a[8] * a[2] * a[7] - a[8] * a[3] * a[6];
    inv[11] = -a[0] * a[5] * a[11] + a[0] * a[7] * a[9] + a[4] * a[1] * a[11] - a[4] * a[3] * a[9] -
              a[8] * a[1] * a[7] + a[8] * a[3] * a[5];
    inv[15] = a[0] * a[5] * a[10] - a[0] * a[6] * a[9] - a[4] * a[1] * a[10] + a[4] * a[2] * a[9] +
              a[8] * a[1] * a[6] - a[8] * a[2] * a[5];
    return a[0] * inv[0] + a[1] * inv[4] + a[2] * inv[8] + a[3] * inv[12];
}
} // namespace

float Determinant(const CMatrix44& m)
{
    float inv[16];
    return Adjugate(&m.m[0][0], inv);
}

bool Inverse(const CMatrix44& m, CMatrix44& out)
{
    float inv[16];
    float fDet = Adjugate(&m.m[0][0], inv);
    if (fDet == 0.0f || !std::isfinite(fDet))
    {
        out = CMatrix44::Identity();
        return false;
    }
    float fInvDet = 1.0f / fDet;
    float* pOut = &out.m[0][0];
    for (int i = 0; i < 16; ++i)
    {
        pOut[i] = inv[i] * fInvDet;
    }
    return true;
}

CMatrix44 Inverse(const CMatrix44& m)
{
    CMatrix44 r;
    Inverse(m, r);
    return r;
}

CVec3 TransformPoint(const CVec3& p, const CMatrix44& m)
{
    return {p.x * m.m[0][0] + p.y * m.m[1][0] + p.z * m.m[2][0] + m.m[3][0],
            p.x * m.m[0][1] + p.y * m.m[1][1] + p.z * m.m[2][1] + m.m[3][1],
            p.x * m.m[0][2] + p.y * m.m[1][2] + p.z * m.m[2][2] + m.m[3][2]};
}

CVec3 TransformCoord(const CVec3& p, const CMatrix44& m)
{
    CVec4 r = Transform(CVec4{p.x, p.y, p.z, 1.0f}, m);
    float fInvW = r.w != 0.0f ? 1.0f / r.w : 1.0f;
    return {r.x * fInvW, r.y * fInvW, r.z * fInvW};
}

CVec3 TransformDirection(const CVec3& d, const CMatrix44& m)
{
    return {d.x * m.m[0][0] + d.y * m.m[1][0] + d.z * m.m[2][0],
            d.x * m.m[0][1] + d.y * m.m[1][1] + d.z * m.m[2][1],
            d.x * m.m[0][2] + d.y * m.m[1][2] + d.z * m.m[2][2]};
}

CVec4 Transform(const CVec4& v, const CMatrix44& m)
{
    return {v.x * m.m[0][0] + v.y * m.m[1][0] + v.z * m.m[2][0] + v.w * m.m[3][0],
            v.x * m.m[0][1] + v.y * m.m[1][1] + v.z * m.m[2][1] + v.w * m.m[3][1],
            v.x * m.m[0][2] + v.y * m.m[1][2] + v.z * m.m[2][2] + v.w * m.m[3][2],
            v.x * m.m[0][3] + v.y * m.m[1][3] + v.z * m.m[2][3] + v.w * m.m[3][3]};
}

CBox3 TransformBox(const CBox3& box, const CMatrix44& m)
{
    if (box.IsEmpty())
    {
        return box;
    }
    // Each output axis takes the smaller and larger product per input axis (Arvo's method).
    CVec3 vMin = m.GetTranslation();
    CVec3 vMax = vMin;
    for (int j = 0; j < 3; ++j)
    {
        for (int i = 0; i < 3; ++i)
        {
            float a = m.m[i][j] * box.vMin[i];
            float b = m.m[i][j] * box.vMax[i];
            vMin[j] += std::min(a, b);
            vMax[j] += std::max(a, b);
        }
    }
    return CBox3{vMin, vMax};
}

bool Decompose(const CMatrix44& m, CVec3& scale, CQuat& rotation, CVec3& translation)
{
    translation = m.GetTranslation();
    scale = {Length(m.Row(0)), Length(m.Row(1)), Length(m.Row(2))};
    if (Determinant(m) < 0.0f)
    {
        scale.x = -scale.x;
    }
    if (scale.x == 0.0f || scale.y == 0.0f || scale.z == 0.0f)
    {
        rotation = CQuat{};
        return false;
    }
    CMatrix44 r;
    for (int i = 0; i < 3; ++i)
    {
        r.SetRow(i, m.Row(i) / scale[i]);
    }
    rotation = QuatFromMatrix(r);
    return true;
}

// ---------------------------------------------------------------------------------------
// Quaternions

namespace
{
// Hamilton product p q.
CQuat Hamilton(const CQuat& p, const CQuat& q)
{
    return {p.w * q.x + p.x * q.w + p.y * q.z - p.z * q.y, p.w * q.y - p.x * q.z + p.y * q.w + p.z * q.x,
            p.w * q.z + p.x * q.y - p.y * q.x + p.z * q.w, p.w * q.w - p.x * q.x - p.y * q.y - p.z * q.z};
}
} // namespace

CQuat Multiply(const CQuat& a, const CQuat& b)
{
    return Hamilton(b, a);
}

CQuat Normalize(const CQuat& q)
{
    float fLen = std::sqrt(q.x * q.x + q.y * q.y + q.z * q.z + q.w * q.w);
    if (fLen <= 0.0f)
    {
        return CQuat{};
    }
    float f = 1.0f / fLen;
    return {q.x * f, q.y * f, q.z * f, q.w * f};
}

CQuat Conjugate(const CQuat& q)
{
    return {-q.x, -q.y, -q.z, q.w};
}

CQuat QuatFromAxisAngle(const CVec3& axis, float fRadians)
{
    CVec3 n = Normalize(axis);
    float s = std::sin(fRadians * 0.5f);
    return {n.x * s, n.y * s, n.z * s, std::cos(fRadians * 0.5f)};
}

CQuat QuatFromMatrix(const CMatrix44& m)
{
    // The matrix is the transpose of the column-vector rotation R: R[i][j] = m[j][i].
    auto R = [&m](int i, int j) { return m.m[j][i]; };
    CQuat q;
    float fTrace = R(0, 0) + R(1, 1) + R(2, 2);
    if (fTrace > 0.0f)
    {
        float s = std::sqrt(fTrace + 1.0f) * 2.0f;
        q.w = 0.25f * s;
        q.x = (R(2, 1) - R(1, 2)) / s;
        q.y = (R(0, 2) - R(2, 0)) / s;
        q.z = (R(1, 0) - R(0, 1)) / s;
    }
    else if (R(0, 0) > R(1, 1) && R(0, 0) > R(2, 2))
    {
        float s = std::sqrt(1.0f + R(0, 0) - R(1, 1) - R(2, 2)) * 2.0f;
        q.w = (R(2, 1) - R(1, 2)) / s;
        q.x = 0.25f * s;
        q.y = (R(0, 1) + R(1, 0)) / s;
        q.z = (R(0, 2) + R(2, 0)) / s;
    }
    else if (R(1, 1) > R(2, 2))
    {
        float s = std::sqrt(1.0f + R(1, 1) - R(0, 0) - R(2, 2)) * 2.0f;
        q.w = (R(0, 2) - R(2, 0)) / s;
        q.x = (R(0, 1) + R(1, 0)) / s;
        q.y = 0.25f * s;
        q.z = (R(1, 2) + R(2, 1)) / s;
    }
    else
    {
        float s = std::sqrt(1.0f + R(2, 2) - R(0, 0) - R(1, 1)) * 2.0f;
        q.w = (R(1, 0) - R(0, 1)) / s;
        q.x = (R(0, 2) + R(2, 0)) / s;
        q.y = (R(1, 2) + R(2, 1)) / s;
        q.z = 0.25f * s;
    }
    return Normalize(q);
}

CQuat Slerp(const CQuat& a, const CQuat& b, float t)
{
    float fCos = a.x * b.x + a.y * b.y + a.z * b.z + a.w * b.w;
    CQuat e = b;
    if (fCos < 0.0f)
    {
        fCos = -fCos;
        e = {-b.x, -b.y, -b.z, -b.w};
    }
    float k0 = 1.0f - t, k1 = t;
    if (fCos < 0.9999f)
    {
        float fAngle = std::acos(fCos);
        float fInvSin = 1.0f / std::sin(fAngle);
        k0 = std::sin((1.0f - t) * fAngle) * fInvSin;
        k1 = std::sin(t * fAngle) * fInvSin;
    }
    return Normalize(
        CQuat{a.x * k0 + e.x * k1, a.y * k0 + e.y * k1, a.z * k0 + e.z * k1, a.w * k0 + e.w * k1});
}

CVec3 Rotate(const CVec3& v, const CQuat& q)
{
    CVec3 u{q.x, q.y, q.z};
    CVec3 t = Cross(u, v) * 2.0f;
    return v + t * q.w + Cross(u, t);
}

// ---------------------------------------------------------------------------------------
// Planes

CPlane PlaneFromPointNormal(const CVec3& p, const CVec3& n)
{
    return {n.x, n.y, n.z, -Dot(n, p)};
}

CPlane PlaneFromPoints(const CVec3& a, const CVec3& b, const CVec3& c)
{
    return PlaneFromPointNormal(a, Normalize(Cross(b - a, c - a)));
}

CPlane NormalizePlane(const CPlane& pl)
{
    float fLen = Length(pl.Normal());
    if (fLen <= 0.0f)
    {
        return pl;
    }
    float f = 1.0f / fLen;
    return {pl.a * f, pl.b * f, pl.c * f, pl.d * f};
}

} // namespace Kestrin::Utility
