#include "engine/utility/Geometry.h"

#include "engine/utility/tests/MathExpect.h"

#include <gtest/gtest.h>

#include <random>

using namespace Kestrin::Utility;
using MathExpect::ExpectNear;

namespace
{
void ExpectOrthonormal(const CMatrix44& m)
{
    for (int i = 0; i < 3; ++i)
    {
        EXPECT_NEAR(Length(m.Row(i)), 1.0f, 1e-5f);
        EXPECT_NEAR(Dot(m.Row(i), m.Row((i + 1) % 3)), 0.0f, 1e-5f);
    }
    EXPECT_NEAR(Determinant(m), 1.0f, 1e-5f);
}
} // namespace

TEST(Geometry, RayPlaneHitsInFrontOnly)
{
    CPlane ground = PlaneFromPointNormal({0, 0, 5}, {0, 0, 1});
    float t = -1.0f;
    ASSERT_TRUE(IntersectRayPlane({{1, 2, 10}, {0, 0, -2}}, ground, t));
    EXPECT_FLOAT_EQ(t, 2.5f); // in units of the direction's length
    // Either face of the plane.
    ASSERT_TRUE(IntersectRayPlane({{1, 2, 0}, {0, 0, 1}}, ground, t));
    EXPECT_FLOAT_EQ(t, 5.0f);
    EXPECT_FALSE(IntersectRayPlane({{1, 2, 10}, {0, 0, 1}}, ground, t)); // behind
    EXPECT_FALSE(IntersectRayPlane({{1, 2, 10}, {1, 0, 0}}, ground, t)); // parallel
    ASSERT_TRUE(IntersectRayPlane({{1, 2, 5}, {1, 0, -1}}, ground, t));  // starts on it
    EXPECT_FLOAT_EQ(t, 0.0f);
}

TEST(Geometry, RayAxisAlignedBox)
{
    CBox3 box{{-1, -1, -1}, {1, 2, 3}};
    float t = -1.0f, fNear = 0.0f, fFar = 0.0f;
    ASSERT_TRUE(IntersectRayBox({{-5, 0, 0}, {1, 0, 0}}, box, t));
    EXPECT_FLOAT_EQ(t, 4.0f);
    ASSERT_TRUE(IntersectRayBoxInterval({{-5, 0, 0}, {1, 0, 0}}, box, fNear, fFar));
    EXPECT_FLOAT_EQ(fNear, 4.0f);
    EXPECT_FLOAT_EQ(fFar, 6.0f);
    // From inside: the first hit is at the start, and the interval shows where it came from.
    ASSERT_TRUE(IntersectRayBox({{0, 0, 0}, {0, 0, 1}}, box, t));
    EXPECT_FLOAT_EQ(t, 0.0f);
    ASSERT_TRUE(IntersectRayBoxInterval({{0, 0, 0}, {0, 0, 1}}, box, fNear, fFar));
    EXPECT_FLOAT_EQ(fNear, -1.0f);
    EXPECT_FLOAT_EQ(fFar, 3.0f);
    // Misses: beside, behind, parallel outside a slab.
    EXPECT_FALSE(IntersectRayBox({{-5, 5, 0}, {1, 0, 0}}, box, t));
    EXPECT_FALSE(IntersectRayBox({{5, 0, 0}, {1, 0, 0}}, box, t));
    EXPECT_FALSE(IntersectRayBox({{-5, 2.5f, 0}, {1, 0, 0}}, box, t));
    // Along a face counts as a hit; an empty box never hits.
    EXPECT_TRUE(IntersectRayBox({{-5, 2, 0}, {1, 0, 0}}, box, t));
    EXPECT_FALSE(IntersectRayBox({{-5, 0, 0}, {1, 0, 0}}, CBox3{}, t));
    // Diagonal entry through a corner region.
    ASSERT_TRUE(IntersectRayBox({{-3, -3, 0}, {1, 1, 0}}, box, t));
    EXPECT_FLOAT_EQ(t, 2.0f);
}

TEST(Geometry, RayOrientedBoxTurnsWithItsAxes)
{
    // A long thin box turned 45 degrees about z: a ray that would cross its unturned self misses.
    COrientedBox box;
    box.vCenter = {10, 0, 0};
    box.vHalf = {5, 0.5f, 0.5f};
    CMatrix44 turn = CMatrix44::RotationZ(PI / 4);
    for (int i = 0; i < 3; ++i)
    {
        box.vAxis[i] = turn.Row(i);
    }
    float t = 0.0f;
    EXPECT_FALSE(IntersectRayBox({{14, -10, 0}, {0, 1, 0}}, box, t));
    // Along its own long axis it is hit at the centre minus the half length.
    CVec3 vLong = box.vAxis[0];
    ASSERT_TRUE(IntersectRayBox({box.vCenter - vLong * 20.0f, vLong}, box, t));
    EXPECT_NEAR(t, 15.0f, 1e-4f);
    // Straight down onto its centre: the top face at z = 0.5.
    ASSERT_TRUE(IntersectRayBox({{10, 0, 10}, {0, 0, -1}}, box, t));
    EXPECT_NEAR(t, 9.5f, 1e-5f);
}

TEST(Geometry, RayTouchingACornerHits)
{
    // The line's nearest point to the centre is the corner (1, 1, 1): the box's enclosing
    // sphere is only touched, and the quick rejection must still let it through.
    CRay ray{{11, -9, 1}, {-1, 1, 0}};
    COrientedBox box;
    box.vHalf = {1, 1, 1};
    float t = 0.0f;
    ASSERT_TRUE(IntersectRayBox(ray, box, t));
    EXPECT_FLOAT_EQ(t, 10.0f);
    ASSERT_TRUE(IntersectRayBox(ray, CBox3{{-1, -1, -1}, {1, 1, 1}}, t));
    EXPECT_FLOAT_EQ(t, 10.0f);
    // Moving away from a box it has passed.
    EXPECT_FALSE(IntersectRayBox({{11, -9, 1}, {1, -1, 0}}, box, t));
}

TEST(Geometry, RayOrientedBoxAgreesWithTheBoxInItsOwnFrame)
{
    std::mt19937 rng(7);
    std::uniform_real_distribution<float> u(-1.0f, 1.0f);
    int nHits = 0;
    for (int i = 0; i < 2000; ++i)
    {
        CMatrix44 frame = MatrixFromEuler({u(rng) * PI, u(rng) * 1.5f, u(rng) * PI});
        frame.SetTranslation({u(rng) * 10, u(rng) * 10, u(rng) * 10});
        COrientedBox box;
        box.vCenter = frame.GetTranslation();
        box.vHalf = {1.0f + u(rng), 1.5f + u(rng), 1.2f + u(rng)};
        for (int a = 0; a < 3; ++a)
        {
            box.vAxis[a] = frame.Row(a);
        }
        // Aimed near the box, so that about half of the rays hit.
        CVec3 vStart{u(rng) * 20, u(rng) * 20, u(rng) * 20};
        CVec3 vAim = box.vCenter + CVec3{u(rng), u(rng), u(rng)} * 3.0f;
        CRay ray{vStart, Normalize(vAim - vStart)};
        // The same query in the box's frame, where it is axis-aligned about the origin.
        CMatrix44 toLocal = Inverse(frame);
        CRay local{TransformPoint(ray.vStart, toLocal), TransformDirection(ray.vDir, toLocal)};
        CBox3 aabb{-box.vHalf, box.vHalf};
        float t0 = 0.0f, t1 = 0.0f;
        bool bOriented = IntersectRayBox(ray, box, t0);
        bool bAligned = IntersectRayBox(local, aabb, t1);
        ASSERT_EQ(bOriented, bAligned) << "case " << i;
        if (bOriented)
        {
            EXPECT_NEAR(t0, t1, 1e-3f);
            ++nHits;
        }
    }
    EXPECT_GT(nHits, 500); // the sample does exercise hits and misses
    EXPECT_LT(nHits, 1800);
}

TEST(Geometry, RayTriangleBothFacesInsideOnly)
{
    CVec3 a{0, 0, 0}, b{4, 0, 0}, c{0, 4, 0};
    float t = 0.0f;
    ASSERT_TRUE(IntersectRayTriangle({{1, 1, 5}, {0, 0, -1}}, a, b, c, t));
    EXPECT_FLOAT_EQ(t, 5.0f);
    ASSERT_TRUE(IntersectRayTriangle({{1, 1, -2}, {0, 0, 1}}, a, b, c, t)); // back face
    EXPECT_FLOAT_EQ(t, 2.0f);
    EXPECT_FALSE(IntersectRayTriangle({{3, 3, 5}, {0, 0, -1}}, a, b, c, t)); // beyond the long edge
    EXPECT_FALSE(IntersectRayTriangle({{-1, 1, 5}, {0, 0, -1}}, a, b, c, t));
    EXPECT_FALSE(IntersectRayTriangle({{1, 1, 5}, {0, 0, 1}}, a, b, c, t));         // behind
    EXPECT_FALSE(IntersectRayTriangle({{1, 1, 5}, {1, 0, 0}}, a, b, c, t));         // in its plane
    EXPECT_FALSE(IntersectRayTriangle({{1, 1, 5}, {0, 0, -1}}, a, b, b * 2.0f, t)); // degenerate
}

TEST(Geometry, OrthonormalizeKeepsXAndTranslation)
{
    CMatrix44 skew;
    skew.SetRow(0, {2, 0, 0});
    skew.SetRow(1, {1, 3, 0});
    skew.SetRow(2, {0.2f, 0.1f, 5});
    skew.SetTranslation({7, 8, 9});
    CMatrix44 m = Orthonormalize(skew);
    ExpectOrthonormal(m);
    ExpectNear(m.Row(0), {1, 0, 0});
    ExpectNear(m.Row(1), {0, 1, 0});
    ExpectNear(m.GetTranslation(), {7, 8, 9});

    // A slightly drifted rotation comes back to (nearly) itself.
    CMatrix44 r = MatrixFromEuler({0.3f, -0.7f, 1.1f});
    CMatrix44 drift = r;
    drift.m[0][1] += 1e-3f;
    drift.m[2][0] -= 1e-3f;
    ExpectNear(Orthonormalize(drift), r, 2e-3f);
    ExpectOrthonormal(Orthonormalize(drift));

    // Degenerate rows are rebuilt from the others.
    CVec3 x{0, 0, 0}, y{0, 1, 0}, z{0, 0, 1};
    Orthonormalize(x, y, z);
    ExpectNear(x, {1, 0, 0});
    CVec3 x2{1, 0, 0}, y2{2, 0, 0}, z2{0, 0, 1};
    Orthonormalize(x2, y2, z2);
    ExpectNear(y2, {0, 1, 0});
    ExpectNear(z2, {0, 0, 1});
    CVec3 x3{0, 0, 0}, y3{0, 0, 0}, z3{0, 0, 0};
    Orthonormalize(x3, y3, z3);
    EXPECT_NEAR(Dot(x3, y3), 0.0f, 1e-6f);
    EXPECT_NEAR(Length(z3), 1.0f, 1e-6f);
}

TEST(Geometry, EulerAnglesRoundTrip)
{
    // The order is x, then y, then z about the world axes.
    ExpectNear(TransformDirection({1, 0, 0}, MatrixFromEuler({0, 0, PI / 2})), {0, 1, 0});
    CMatrix44 xy = MatrixFromEuler({PI / 2, PI / 2, 0});
    ExpectNear(xy, CMatrix44::RotationX(PI / 2) * CMatrix44::RotationY(PI / 2));

    for (float a : {-2.9f, -1.0f, 0.0f, 0.4f, 2.2f})
    {
        for (float b : {-1.4f, -0.5f, 0.0f, 0.9f, 1.5f})
        {
            for (float c : {-3.0f, -0.2f, 0.0f, 1.3f, 3.1f})
            {
                CVec3 vAngles{a, b, c};
                CMatrix44 m = MatrixFromEuler(vAngles);
                ExpectNear(EulerFromMatrix(m), vAngles, 2e-4f);
                ExpectNear(CMatrix44::FromQuat(QuatFromEuler(vAngles)), m);
                ExpectNear(EulerFromQuat(QuatFromEuler(vAngles)), vAngles, 2e-4f);
            }
        }
    }
}

TEST(Geometry, EulerGimbalLockGivesTheSameRotation)
{
    for (float b : {PI / 2, -PI / 2})
    {
        CMatrix44 m = MatrixFromEuler({0.7f, b, -0.4f});
        CVec3 vAngles = EulerFromMatrix(m);
        EXPECT_FLOAT_EQ(vAngles.x, 0.0f);
        EXPECT_NEAR(vAngles.y, b, 1e-3f);
        ExpectNear(MatrixFromEuler(vAngles), m, 1e-5f);
    }
}
