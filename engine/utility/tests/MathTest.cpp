#include "engine/utility/Math.h"

#include "engine/utility/tests/MathExpect.h"

#include <gtest/gtest.h>

using namespace Kestrin::Utility;
using MathExpect::ExpectNear;

namespace
{
} // namespace

TEST(Math, RowVectorsTranslationInFourthRow)
{
    CMatrix44 t = CMatrix44::Translation({1, 2, 3});
    EXPECT_EQ(t.m[3][0], 1.0f);
    EXPECT_EQ(t.m[3][2], 3.0f);
    ExpectNear(TransformPoint({1, 1, 1}, t), {2, 3, 4});
    ExpectNear(TransformDirection({1, 1, 1}, t), {1, 1, 1});
    // Scale first, then translate: A * B applies A first.
    CMatrix44 m = CMatrix44::Scaling({2, 2, 2}) * t;
    ExpectNear(TransformPoint({1, 0, 0}, m), {3, 2, 3});
}

TEST(Math, RotationsAreLeftHandedAboutTheirAxes)
{
    // A quarter turn about y takes +z to +x in the left-handed convention.
    ExpectNear(TransformDirection({0, 0, 1}, CMatrix44::RotationY(PI / 2)), {1, 0, 0});
    ExpectNear(TransformDirection({1, 0, 0}, CMatrix44::RotationZ(PI / 2)), {0, 1, 0});
    ExpectNear(TransformDirection({0, 1, 0}, CMatrix44::RotationX(PI / 2)), {0, 0, 1});
}

TEST(Math, QuaternionAndMatrixAgree)
{
    for (const CVec3& axis : {CVec3{0, 1, 0}, CVec3{1, 0, 0}, CVec3{0, 0, 1}, CVec3{1, 2, 3}})
    {
        for (float a : {0.3f, 1.7f, -2.5f, 3.1f})
        {
            CQuat q = QuatFromAxisAngle(axis, a);
            CMatrix44 m = CMatrix44::FromQuat(q);
            ExpectNear(m, CMatrix44::RotationAxis(axis, a));
            ExpectNear(Rotate({0.5f, -1, 2}, q), TransformDirection({0.5f, -1, 2}, m));
            CQuat back = QuatFromMatrix(m);
            ExpectNear(CMatrix44::FromQuat(back), m);
        }
    }
    ExpectNear(CMatrix44::FromQuat(QuatFromAxisAngle({0, 1, 0}, 0.7f)), CMatrix44::RotationY(0.7f));
}

TEST(Math, QuaternionMultiplyMatchesMatrixOrder)
{
    CQuat a = QuatFromAxisAngle({1, 0, 0}, 0.4f);
    CQuat b = QuatFromAxisAngle({0, 1, 0}, 1.1f);
    ExpectNear(CMatrix44::FromQuat(Multiply(a, b)), CMatrix44::FromQuat(a) * CMatrix44::FromQuat(b));
}

TEST(Math, InverseAndTranspose)
{
    CMatrix44 m = CMatrix44::Compose({1, 2, 3}, QuatFromAxisAngle({1, 1, 0}, 0.8f), {4, -5, 6});
    ExpectNear(m * Inverse(m), CMatrix44::Identity());
    CMatrix44 out;
    EXPECT_FALSE(Inverse(CMatrix44::Zero(), out));
    EXPECT_EQ(out, CMatrix44::Identity());
    CMatrix44 t = Transpose(m);
    EXPECT_EQ(t.m[1][3], m.m[3][1]);
    EXPECT_EQ(Transpose(t), m);
}

TEST(Math, DecomposeGivesBackComposeParts)
{
    CQuat q = QuatFromAxisAngle({0.2f, 1, 0.5f}, 2.0f);
    CMatrix44 m = CMatrix44::Compose({2, 3, 4}, q, {7, 8, 9});
    CVec3 s, t;
    CQuat r;
    ASSERT_TRUE(Decompose(m, s, r, t));
    ExpectNear(s, {2, 3, 4}, 1e-4f);
    ExpectNear(t, {7, 8, 9});
    ExpectNear(CMatrix44::FromQuat(r), CMatrix44::FromQuat(q));
}

TEST(Math, ProjectionMapsNearAndFarToZeroAndOne)
{
    CMatrix44 p = CMatrix44::PerspectiveFovLH(PI / 4, 4.0f / 3.0f, 1.0f, 100.0f);
    EXPECT_NEAR(TransformCoord({0, 0, 1}, p).z, 0.0f, 1e-6f);
    EXPECT_NEAR(TransformCoord({0, 0, 100}, p).z, 1.0f, 1e-5f);
    CMatrix44 o = CMatrix44::OrthoLH(10, 10, 1, 11);
    EXPECT_NEAR(TransformCoord({5, -5, 11}, o).x, 1.0f, 1e-6f);
    EXPECT_NEAR(TransformCoord({5, -5, 11}, o).z, 1.0f, 1e-6f);
    CMatrix44 v = CMatrix44::LookAtLH({0, 0, -10}, {0, 0, 0}, {0, 1, 0});
    ExpectNear(TransformPoint({0, 0, 0}, v), {0, 0, 10});
}

TEST(Math, BoxesAndPlanes)
{
    CBox3 box;
    EXPECT_TRUE(box.IsEmpty());
    box.Add(CVec3{-1, -1, -1});
    box.Add(CVec3{1, 1, 1});
    EXPECT_TRUE(box.Contains({0, 0, 0}));
    CBox3 moved = TransformBox(box, CMatrix44::RotationZ(PI / 4) * CMatrix44::Translation({10, 0, 0}));
    EXPECT_NEAR(moved.vMax.x, 10 + std::sqrt(2.0f), 1e-5f);
    EXPECT_NEAR(moved.vMin.z, -1, 1e-6f);
    CPlane pl = PlaneFromPoints({0, 0, 0}, {0, 0, 1}, {1, 0, 0});
    ExpectNear(pl.Normal(), {0, 1, 0});
    EXPECT_NEAR(PlaneDot(pl, {3, 2, 1}), 2.0f, 1e-6f);
}
