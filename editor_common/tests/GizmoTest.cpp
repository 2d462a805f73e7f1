#include "editor_common/Gizmo.h"
#include "editor_common/EditorCamera.h"

#include "engine/utility/tests/MathExpect.h"

#include <gtest/gtest.h>

#include <cmath>
#include <string>

using namespace Kestrin::Utility;
using Kestrin::Plotter::CRecordingPlotter2D;
using Kestrin::Plotter::CRecordingPlotter3D;
using MathExpect::ExpectNear;

namespace
{
// The gizmo's positions and planes are compared at this tolerance.
constexpr float TOLERANCE = 1e-4f;

struct CView
{
    CMatrix44 view, proj;
    CVec2 size;
};

CView Perspective(const CVec3& eye, const CVec3& at, const CVec3& up, float fFovDegrees, float w, float h)
{
    return {CMatrix44::LookAtLH(eye, at, up),
            CMatrix44::PerspectiveFovLH(ToRadians(fFovDegrees), w / h, 1.0f, 1e5f),
            {w, h}};
}

CView Ortho(const CVec3& eye, const CVec3& at, const CVec3& up, float fHeight, float w, float h)
{
    return {
        CMatrix44::LookAtLH(eye, at, up), CMatrix44::OrthoLH(fHeight * w / h, fHeight, 0.0f, 2e5f), {w, h}};
}

// The view of an editor camera in one of its stored views, 800 by 600 pixels.
CView CameraView(int32_t iView, float fOrthoSize = 300.0f)
{
    CEditorCamera camera;
    camera.SetView(iView);
    camera.SetOrthoSize(fOrthoSize);
    return {camera.GetViewMatrix(), camera.GetProjMatrix(), {800.0f, 600.0f}};
}

CVec2 ToPixel(const CView& v, const CVec3& p)
{
    CVec3 ndc = TransformCoord(p, v.view * v.proj);
    return {(ndc.x + 1.0f) * 0.5f * v.size.x, (1.0f - ndc.y) * 0.5f * v.size.y};
}

void Apply(CGizmo& gizmo, const CView& v)
{
    gizmo.SetView(v.view, v.proj, v.size);
}

// A move from the start that goes along the camera's right by dx pixels and down by dy.
CVec2 Offset(const CVec2& p, float dx, float dy)
{
    return {p.x + dx, p.y + dy};
}
} // namespace

TEST(Gizmo, Defaults)
{
    CGizmo gizmo;
    EXPECT_TRUE(gizmo.IsEnabled());
    EXPECT_FALSE(gizmo.IsDragging());
    EXPECT_EQ(gizmo.GetMode(), CGizmo::MODE_SELECT);
    EXPECT_EQ(gizmo.GetSpace(), CGizmo::SPACE_LOCAL);
    EXPECT_EQ(gizmo.GetHoverAxis(), CGizmo::AXIS_NONE);
    EXPECT_EQ(gizmo.GetSize(), 0.0f);
    EXPECT_TRUE(gizmo.IsPerspective());
    EXPECT_EQ(gizmo.GetFov(), 60.0f);
    EXPECT_EQ(gizmo.GetOrthoHeight(), 100.0f);
    EXPECT_EQ(gizmo.GetScale(), (CVec3{1, 1, 1}));
    EXPECT_EQ(gizmo.GetMoveSnap(), 0.0f);
    EXPECT_EQ(gizmo.GetRotateSnap(), 0.0f);
    EXPECT_STREQ(gizmo.GetReadout(), "");
    gizmo.SetMode(7);
    gizmo.SetSpace(-1);
    EXPECT_EQ(gizmo.GetMode(), CGizmo::MODE_SELECT);
    EXPECT_EQ(gizmo.GetSpace(), CGizmo::SPACE_LOCAL);
}

TEST(Gizmo, TransformAndScaleRoundTrip)
{
    CGizmo gizmo;
    CQuat q = QuatFromAxisAngle({1, 2, 3}, 0.8f);
    CMatrix44 m = CMatrix44::Compose({2, 3, 4}, q, {10, -20, 30});
    gizmo.SetTransform(m);
    ExpectNear(gizmo.GetScale(), {2, 3, 4}, 1e-5f);
    const CMatrix44& axes = gizmo.GetRotationMatrix();
    for (int i = 0; i < 3; ++i)
    {
        EXPECT_NEAR(Length(axes.Row(i)), 1.0f, 1e-6f);
    }
    ExpectNear(axes, CMatrix44::Compose({1, 1, 1}, q, {10, -20, 30}), 1e-5f);
    CMatrix44 back;
    gizmo.GetMatrix(back);
    ExpectNear(back, m, 1e-5f);

    // A mirror stays a mirror: the x scale carries the sign, the axes stay a rotation.
    CMatrix44 mirror = CMatrix44::Scaling({-2, 1, 1}) * CMatrix44::Translation({1, 2, 3});
    gizmo.SetTransform(mirror);
    ExpectNear(gizmo.GetScale(), {-2, 1, 1}, 1e-6f);
    EXPECT_NEAR(Determinant(gizmo.GetRotationMatrix()), 1.0f, 1e-6f);
    gizmo.GetMatrix(back);
    ExpectNear(back, mirror, 1e-6f);
}

TEST(Gizmo, HandleSizeInPerspective)
{
    CGizmo gizmo;
    // 100 units before the eye, 60 degrees high: 12% of the view's height there.
    Apply(gizmo, Perspective({0, -100, 0}, {0, 0, 0}, {0, 0, 1}, 60.0f, 800, 600));
    gizmo.SetTransform(CMatrix44::Identity());
    EXPECT_TRUE(gizmo.IsPerspective());
    EXPECT_NEAR(gizmo.GetFov(), 60.0f, 1e-3f);
    EXPECT_NEAR(gizmo.GetSize(), std::tan(ToRadians(30.0f)) * 100.0f * 2.0f * 0.12f, 1e-3f);

    // Twice as far, twice as big: the size follows the object.
    gizmo.SetTransform(CMatrix44::Translation({0, 100, 0}));
    EXPECT_NEAR(gizmo.GetSize(), std::tan(ToRadians(30.0f)) * 200.0f * 0.24f, 1e-3f);

    // A portrait view takes the width's angle.
    Apply(gizmo, Perspective({0, -100, 0}, {0, 0, 0}, {0, 0, 1}, 60.0f, 600, 800));
    gizmo.SetTransform(CMatrix44::Identity());
    float h = std::atan(std::tan(ToRadians(30.0f)) * 0.75f);
    EXPECT_NEAR(gizmo.GetSize(), std::tan(h) * 100.0f * 0.24f, 1e-3f);

    // At or behind the eye, w counts as 1.
    gizmo.SetTransform(CMatrix44::Translation({0, -100.5f, 0}));
    EXPECT_NEAR(gizmo.GetSize(), std::tan(h) * 1.0f * 0.24f, 1e-5f);
}

TEST(Gizmo, HandleSizeInOrthographic)
{
    CGizmo gizmo;
    gizmo.SetTransform(CMatrix44::Translation({50, 60, 70}));
    Apply(gizmo, Ortho({0, 0, 1000}, {0, 0, 0}, {0, 1, 0}, 300.0f, 800, 600));
    EXPECT_FALSE(gizmo.IsPerspective());
    EXPECT_NEAR(gizmo.GetOrthoHeight(), 300.0f, 1e-3f);
    EXPECT_NEAR(gizmo.GetSize(), 36.0f, 1e-3f); // the same wherever the object stands
    Apply(gizmo, Ortho({0, 0, 1000}, {0, 0, 0}, {0, 1, 0}, 300.0f, 600, 800));
    EXPECT_NEAR(gizmo.GetSize(), 36.0f * 0.75f, 1e-3f);
    // The camera's own views give the same numbers.
    Apply(gizmo, CameraView(CEditorCamera::VIEW_TOP, 500.0f));
    EXPECT_FALSE(gizmo.IsPerspective());
    EXPECT_NEAR(gizmo.GetSize(), 60.0f, 1e-3f);
    Apply(gizmo, CameraView(CEditorCamera::VIEW_PERSPECTIVE));
    EXPECT_TRUE(gizmo.IsPerspective());
    EXPECT_NEAR(gizmo.GetFov(), 50.0f, 1e-3f);
}

TEST(Gizmo, PickingTriesCentreFirstThenXYZ)
{
    CGizmo gizmo;
    gizmo.SetMode(CGizmo::MODE_MOVE);
    // Looking down the x axis: the ray meets the x handle before the centre plate, and the
    // centre still wins.
    CView side = Perspective({500, 0, 0}, {0, 0, 0}, {0, 0, 1}, 60.0f, 800, 600);
    Apply(gizmo, side);
    gizmo.SetTransform(CMatrix44::Identity());
    CVec2 centre = ToPixel(side, {0, 0, 0});
    EXPECT_EQ(gizmo.HoverAxis(centre), CGizmo::AXIS_CENTER);
    EXPECT_EQ(gizmo.GetHoverAxis(), CGizmo::AXIS_CENTER);

    // From the front, each arm alone.
    CView front = Ortho({0, -1000, 0}, {0, 0, 0}, {0, 0, 1}, 600.0f, 800, 600);
    Apply(gizmo, front);
    float s = gizmo.GetSize();
    ASSERT_NEAR(s, 72.0f, 1e-3f);
    EXPECT_EQ(gizmo.HoverAxis(ToPixel(front, {1.5f * s, 0, 0})), CGizmo::AXIS_X);
    EXPECT_EQ(gizmo.HoverAxis(ToPixel(front, {0, 0, 1.5f * s})), CGizmo::AXIS_Z);
    EXPECT_EQ(gizmo.HoverAxis(ToPixel(front, {2.5f * s, 0, 0})), CGizmo::AXIS_NONE);
    // Where the x and z arms cross the plate is edge-on and thin, so x comes before z.
    EXPECT_EQ(gizmo.HoverAxis(ToPixel(front, {0.01f * s, 0, 0.03f * s})), CGizmo::AXIS_X);
    // The y arm points away from this view: its end is all of it that shows.
    EXPECT_EQ(gizmo.HoverAxis(ToPixel(front, {-0.03f * s, 0, -0.03f * s})), CGizmo::AXIS_Y);
    // The Move plate is thin; the Scale centre is a cube and covers the same pixel.
    CVec2 abovePlate = ToPixel(front, {-0.2f * s, 0, 0.2f * s});
    EXPECT_EQ(gizmo.HoverAxis(abovePlate), CGizmo::AXIS_NONE);
    gizmo.SetMode(CGizmo::MODE_SCALE);
    EXPECT_EQ(gizmo.HoverAxis(abovePlate), CGizmo::AXIS_CENTER);

    // Select has no live handle; neither has a disabled gizmo.
    gizmo.SetMode(CGizmo::MODE_SELECT);
    EXPECT_EQ(gizmo.HoverAxis(abovePlate), CGizmo::AXIS_NONE);
    EXPECT_FALSE(gizmo.Begin(abovePlate));
    EXPECT_FALSE(gizmo.Drag(abovePlate));
    EXPECT_FALSE(gizmo.BeginAt(abovePlate, {0, 0, 0}));
    gizmo.SetMode(CGizmo::MODE_SCALE);
    gizmo.SetEnabled(false);
    EXPECT_FALSE(gizmo.Begin(abovePlate));
    gizmo.SetEnabled(true);
    EXPECT_TRUE(gizmo.Begin(abovePlate));
    EXPECT_EQ(gizmo.GetAxis(), CGizmo::AXIS_CENTER);
}

TEST(Gizmo, HandlesFollowTheSpace)
{
    CGizmo gizmo;
    gizmo.SetMode(CGizmo::MODE_MOVE);
    CView top = Ortho({0, 0, 1000}, {0, 0, 0}, {0, 1, 0}, 600.0f, 800, 600);
    Apply(gizmo, top);
    // The object is turned a quarter about z: its x axis is the world's y.
    gizmo.SetTransform(CMatrix44::RotationZ(PI / 2));
    float s = gizmo.GetSize();
    EXPECT_EQ(gizmo.HoverAxis(ToPixel(top, {0, 1.5f * s, 0})), CGizmo::AXIS_X);
    gizmo.SetSpace(CGizmo::SPACE_WORLD);
    EXPECT_EQ(gizmo.HoverAxis(ToPixel(top, {0, 1.5f * s, 0})), CGizmo::AXIS_Y);
    COrientedBox box = gizmo.GetHandleBox(CGizmo::AXIS_X);
    ExpectNear(box.vCenter, {s, 0, 0}, TOLERANCE);
    ExpectNear(box.vHalf, {s, 0.06f * s, 0.06f * s}, TOLERANCE);
}

TEST(Gizmo, PlateDragInTopMovesOnlyInXAndY)
{
    CGizmo gizmo;
    gizmo.SetMode(CGizmo::MODE_MOVE);
    CView top = CameraView(CEditorCamera::VIEW_TOP);
    Apply(gizmo, top);
    gizmo.SetTransform(CMatrix44::Translation({10, 20, 30}));
    CVec2 start = ToPixel(top, {10, 20, 30});
    ASSERT_TRUE(gizmo.Begin(start));
    EXPECT_EQ(gizmo.GetAxis(), CGizmo::AXIS_CENTER);
    ExpectNear(gizmo.GetDragPlane().Normal(), {0, 0, 1}, TOLERANCE);
    ASSERT_TRUE(gizmo.Drag(Offset(start, 37, -53)));
    CMatrix44 m;
    gizmo.GetMatrix(m);
    CVec3 p = m.GetTranslation();
    EXPECT_EQ(p.z, 30.0f);
    EXPECT_GT(std::fabs(p.x - 10.0f), 1.0f);
    EXPECT_GT(std::fabs(p.y - 20.0f), 1.0f);
    // Top shows 300 units on 600 pixels; the drag lands where the mouse is.
    ExpectNear(TransformCoord(p, top.view * top.proj),
               TransformCoord(CVec3{10, 20, 30}, top.view * top.proj) + CVec3{37.0f / 400, 53.0f / 300, 0},
               1e-4f);
    gizmo.End();
    EXPECT_FALSE(gizmo.IsDragging());
}

TEST(Gizmo, DragPlanesPerView)
{
    CGizmo gizmo;
    gizmo.SetMode(CGizmo::MODE_MOVE);
    gizmo.SetTransform(CMatrix44::Identity());

    // In "Front" the plate is edge-on: every ray runs beside its plane and the state stays.
    CView front = CameraView(CEditorCamera::VIEW_FRONT, 600.0f);
    Apply(gizmo, front);
    CVec2 centre = ToPixel(front, {0, 0, 0});
    ASSERT_TRUE(gizmo.BeginAt(centre, {0, 0, 0}));
    EXPECT_FALSE(gizmo.Drag(Offset(centre, 30, 30)));
    CMatrix44 m;
    gizmo.GetMatrix(m);
    EXPECT_EQ(m, CMatrix44::Identity());
    gizmo.End();

    // An arm drags in the plane that holds it and faces the camera: in "Front", y = const.
    float s = gizmo.GetSize();
    CVec2 onX = ToPixel(front, {1.5f * s, 0, 0});
    ASSERT_TRUE(gizmo.Begin(onX));
    ASSERT_EQ(gizmo.GetAxis(), CGizmo::AXIS_X);
    ExpectNear(gizmo.GetDragPlane().Normal(), {0, -1, 0}, TOLERANCE);
    ASSERT_TRUE(gizmo.Drag(Offset(onX, -40, 25)));
    gizmo.GetMatrix(m);
    ExpectNear(m.GetTranslation(), {40, 0, 0}, TOLERANCE); // right is -x in "Front"; up and down is ignored
    EXPECT_STREQ(gizmo.GetReadout(), "(40.00, 0.00, 0.00)");
    gizmo.End();

    // In perspective, an arm's plane faces the eye as much as it can, and the move stays on it.
    CView persp = CameraView(CEditorCamera::VIEW_PERSPECTIVE);
    Apply(gizmo, persp);
    gizmo.SetTransform(CMatrix44::Identity());
    s = gizmo.GetSize();
    CVec2 onZ = ToPixel(persp, {0, 0, 1.5f * s});
    ASSERT_TRUE(gizmo.Begin(onZ));
    ASSERT_EQ(gizmo.GetAxis(), CGizmo::AXIS_Z);
    CVec3 vForward = Normalize(CVec3{-100, -100, -50});
    CVec3 vExpected = Normalize(Cross({0, 0, 1}, Cross({0, 0, 1}, vForward)));
    ExpectNear(gizmo.GetDragPlane().Normal(), vExpected, TOLERANCE);
    ASSERT_TRUE(gizmo.Drag(Offset(onZ, 15, -30)));
    gizmo.GetMatrix(m);
    EXPECT_EQ(m.GetTranslation().x, 0.0f);
    EXPECT_EQ(m.GetTranslation().y, 0.0f);
    EXPECT_GT(m.GetTranslation().z, 1.0f);
}

TEST(Gizmo, MoveSnapsTheTotal)
{
    CGizmo gizmo;
    gizmo.SetMode(CGizmo::MODE_MOVE);
    gizmo.SetMoveSnap(5.0f);
    // "Front" with 600 units on 600 pixels: one pixel is one unit.
    CView front = CameraView(CEditorCamera::VIEW_FRONT, 600.0f);
    Apply(gizmo, front);
    gizmo.SetTransform(CMatrix44::Identity());
    float s = gizmo.GetSize();
    CVec2 onZ = ToPixel(front, {0, 0, 1.5f * s});
    ASSERT_TRUE(gizmo.Begin(onZ));
    CMatrix44 m;
    struct
    {
        float fPixels, fExpected;
        bool bChange;
    } aSteps[] = {{-7.4f, 5.0f, true},
                  {-7.6f, 10.0f, true},
                  {-9.9f, 10.0f, false},
                  {7.4f, -5.0f, true},
                  {-2.4f, 0.0f, true}};
    for (const auto& step : aSteps)
    {
        EXPECT_EQ(gizmo.Drag(Offset(onZ, 0, step.fPixels)), step.bChange) << step.fPixels;
        gizmo.GetMatrix(m);
        EXPECT_NEAR(m.GetTranslation().z, step.fExpected, 1e-4f) << step.fPixels;
        EXPECT_EQ(m.GetTranslation().x, 0.0f);
    }
    // Without a snap the move is exact.
    gizmo.End();
    gizmo.SetMoveSnap(0.0f);
    ASSERT_TRUE(gizmo.Begin(onZ));
    gizmo.Drag(Offset(onZ, 0, -7.4f));
    gizmo.GetMatrix(m);
    EXPECT_NEAR(m.GetTranslation().z, 7.4f, 1e-3f);
    // Back to the start, and the same place again is no change.
    EXPECT_TRUE(gizmo.Drag(onZ));
    EXPECT_FALSE(gizmo.Drag(onZ));
}

TEST(Gizmo, RotateSnapsInDegrees)
{
    CGizmo gizmo;
    gizmo.SetMode(CGizmo::MODE_ROTATE);
    CView front = CameraView(CEditorCamera::VIEW_FRONT, 600.0f);
    Apply(gizmo, front);
    gizmo.SetTransform(CMatrix44::Translation({0, 0, 0}));
    float s = gizmo.GetSize();
    CVec2 onZ = ToPixel(front, {0, 0, 1.5f * s});
    ASSERT_TRUE(gizmo.Begin(onZ));
    ASSERT_EQ(gizmo.GetAxis(), CGizmo::AXIS_Z);
    // The rotate plane faces the camera 100 units before it.
    ExpectNear(gizmo.GetDragPlane().Normal(), {0, 1, 0}, TOLERANCE);
    EXPECT_NEAR(gizmo.GetStartPoint().y, -CEditorCamera::VIEW_DISTANCE + 100.0f, 1e-2f);
    // Seven pixels up is 0.35 radians, 20.05 degrees.
    ASSERT_TRUE(gizmo.Drag(Offset(onZ, 0, -7)));
    CMatrix44 m;
    gizmo.GetMatrix(m);
    ExpectNear(m, CMatrix44::RotationZ(0.35f), 1e-5f);
    EXPECT_STREQ(gizmo.GetReadout(), "(20.05)");
    gizmo.End();

    gizmo.SetRotateSnap(15.0f);
    gizmo.SetTransform(CMatrix44::Identity());
    ASSERT_TRUE(gizmo.Begin(onZ));
    ASSERT_TRUE(gizmo.Drag(Offset(onZ, 0, -7)));
    gizmo.GetMatrix(m);
    ExpectNear(m, CMatrix44::RotationZ(ToRadians(15.0f)), 1e-5f);
    EXPECT_STREQ(gizmo.GetReadout(), "(15.00)");
    // Below half a step it snaps back to no turn.
    ASSERT_TRUE(gizmo.Drag(Offset(onZ, 0, -2)));
    gizmo.GetMatrix(m);
    ExpectNear(m, CMatrix44::Identity(), 1e-6f);
}

TEST(Gizmo, RotateLocalTurnsAboutOwnAxisWorldAboutTheWorlds)
{
    CGizmo gizmo;
    gizmo.SetMode(CGizmo::MODE_ROTATE);
    // "Top" with one unit per pixel: dragging up is +y, the view's up.
    CView top = CameraView(CEditorCamera::VIEW_TOP, 600.0f);
    Apply(gizmo, top);
    // Turned a quarter about z, standing at (5, 0, 0).
    CMatrix44 start = CMatrix44::RotationZ(PI / 2) * CMatrix44::Translation({5, 0, 0});
    float fAngle = 20 * 0.05f;

    gizmo.SetTransform(start);
    float s = gizmo.GetSize();
    // Its x arm points along the world's y.
    CVec2 onX = ToPixel(top, {5, 1.5f * s, 0});
    ASSERT_TRUE(gizmo.Begin(onX));
    ASSERT_EQ(gizmo.GetAxis(), CGizmo::AXIS_X);
    ASSERT_TRUE(gizmo.Drag(Offset(onX, 0, -20)));
    CMatrix44 m;
    gizmo.GetMatrix(m);
    ExpectNear(m, CMatrix44::RotationX(fAngle) * start, 1e-5f);
    ExpectNear(m.Row(0), {0, 1, 0}, 1e-5f); // its own x stays
    ExpectNear(m.GetTranslation(), {5, 0, 0}, 1e-5f);
    gizmo.End();

    gizmo.SetSpace(CGizmo::SPACE_WORLD);
    gizmo.SetTransform(start);
    CVec2 onWorldX = ToPixel(top, {5 + 1.5f * s, 0, 0});
    ASSERT_TRUE(gizmo.Begin(onWorldX));
    ASSERT_EQ(gizmo.GetAxis(), CGizmo::AXIS_X);
    ASSERT_TRUE(gizmo.Drag(Offset(onWorldX, 0, -20)));
    gizmo.GetMatrix(m);
    CMatrix44 expected = CMatrix44::RotationZ(PI / 2) * CMatrix44::RotationX(fAngle);
    expected.SetTranslation({5, 0, 0});
    ExpectNear(m, expected, 1e-5f);
    EXPECT_NEAR(Determinant(m), 1.0f, 1e-5f);
    gizmo.End();

    // The centre turns like a trackball: sideways about the view's up, here the world's y.
    gizmo.SetTransform(CMatrix44::Identity());
    CVec2 centre = ToPixel(top, {0, 0, 0});
    ASSERT_TRUE(gizmo.Begin(centre));
    ASSERT_EQ(gizmo.GetAxis(), CGizmo::AXIS_CENTER);
    ASSERT_TRUE(gizmo.Drag(Offset(centre, 10, 0)));
    gizmo.GetMatrix(m);
    ExpectNear(m, CMatrix44::RotationAxis({0, 1, 0}, 10 * 0.05f), 1e-4f);
    EXPECT_STREQ(gizmo.GetReadout(), "(28.65)");
}

TEST(Gizmo, ScaleAlongAnArmAndItsFloor)
{
    CGizmo gizmo;
    gizmo.SetMode(CGizmo::MODE_SCALE);
    CView front = CameraView(CEditorCamera::VIEW_FRONT, 600.0f);
    Apply(gizmo, front);
    gizmo.SetTransform(CMatrix44::Scaling({2, 3, 4}));
    float s = gizmo.GetSize(); // 72
    CVec2 onX = ToPixel(front, {1.5f * s, 0, 0});
    ASSERT_TRUE(gizmo.Begin(onX));
    ASSERT_EQ(gizmo.GetAxis(), CGizmo::AXIS_X);
    // 36 units out along x (left on screen): 1 + 0.3 / 72 * 36 = 1.15.
    ASSERT_TRUE(gizmo.Drag(Offset(onX, -36, 0)));
    ExpectNear(gizmo.GetScale(), {2.3f, 3, 4}, 1e-5f);
    EXPECT_STREQ(gizmo.GetReadout(), "(2.30, 3.00, 4.00)");
    // Far back along x the factor turns negative: the floor holds.
    ASSERT_TRUE(gizmo.Drag(Offset(onX, 500, 0)));
    ExpectNear(gizmo.GetScale(), {0.01f, 3, 4}, 1e-6f);
    EXPECT_STREQ(gizmo.GetReadout(), "(0.01, 3.00, 4.00)");
    gizmo.End();
    CMatrix44 m;
    gizmo.GetMatrix(m);
    ExpectNear(m.Row(0), {0.01f, 0, 0}, 1e-6f);

    // In "World" an arm scales all three by the drag up or down.
    gizmo.SetSpace(CGizmo::SPACE_WORLD);
    gizmo.SetTransform(CMatrix44::Identity());
    ASSERT_TRUE(gizmo.Begin(onX));
    ASSERT_TRUE(gizmo.Drag(Offset(onX, 0, -24)));
    ExpectNear(gizmo.GetScale(), {1.1f, 1.1f, 1.1f}, 1e-5f);
    ASSERT_TRUE(gizmo.Drag(Offset(onX, 0, 1000)));
    ExpectNear(gizmo.GetScale(), {0.01f, 0.01f, 0.01f}, 1e-6f);
    gizmo.End();

    // The centre scales uniformly on a plane facing the camera.
    gizmo.SetSpace(CGizmo::SPACE_LOCAL);
    gizmo.SetTransform(CMatrix44::Scaling({1, 2, 1}));
    CVec2 centre = ToPixel(front, {0, 0, 0});
    ASSERT_TRUE(gizmo.Begin(centre));
    ASSERT_EQ(gizmo.GetAxis(), CGizmo::AXIS_CENTER);
    ExpectNear(gizmo.GetDragPlane().Normal(), {0, 1, 0}, TOLERANCE);
    ASSERT_TRUE(gizmo.Drag(Offset(centre, 50, -48)));
    ExpectNear(gizmo.GetScale(), {1.2f, 2.4f, 1.2f}, 1e-5f);
}

TEST(Gizmo, HoverReportsHitsAndChanges)
{
    CGizmo gizmo;
    gizmo.SetMode(CGizmo::MODE_MOVE);
    CView front = CameraView(CEditorCamera::VIEW_FRONT, 600.0f);
    Apply(gizmo, front);
    gizmo.SetTransform(CMatrix44::Identity());
    CVec2 onX = ToPixel(front, {100, 0, 0});
    CVec2 away = ToPixel(front, {250, 0, 250});
    EXPECT_TRUE(gizmo.Drag(onX));
    EXPECT_EQ(gizmo.GetHoverAxis(), CGizmo::AXIS_X);
    EXPECT_TRUE(gizmo.Drag(onX));  // still a hit
    EXPECT_TRUE(gizmo.Drag(away)); // the hover changed
    EXPECT_EQ(gizmo.GetHoverAxis(), CGizmo::AXIS_NONE);
    EXPECT_FALSE(gizmo.Drag(away));
    EXPECT_FALSE(gizmo.Begin(away));
    EXPECT_FALSE(gizmo.IsDragging());
}

TEST(Gizmo, BeginAtDragsTheCentreFromThePickedPoint)
{
    CGizmo gizmo;
    gizmo.SetMode(CGizmo::MODE_MOVE);
    CView persp = CameraView(CEditorCamera::VIEW_PERSPECTIVE);
    Apply(gizmo, persp);
    gizmo.SetTransform(CMatrix44::Translation({0, 0, 10}));
    // A point on the object's surface, away from the handles.
    CVec3 hit{40, -30, 25};
    CVec2 mouse = ToPixel(persp, hit);
    ASSERT_TRUE(gizmo.BeginAt(mouse, hit));
    EXPECT_EQ(gizmo.GetAxis(), CGizmo::AXIS_CENTER);
    EXPECT_TRUE(gizmo.IsDragging());
    ExpectNear(gizmo.GetStartPoint(), hit, TOLERANCE);
    ExpectNear(gizmo.GetDragPlane().Normal(), {0, 0, 1}, TOLERANCE);
    EXPECT_NEAR(PlaneDot(gizmo.GetDragPlane(), hit), 0.0f, 1e-4f);
    ASSERT_TRUE(gizmo.Drag(Offset(mouse, 20, 10)));
    CMatrix44 m;
    gizmo.GetMatrix(m);
    EXPECT_NEAR(m.GetTranslation().z, 10.0f, 1e-4f);
    // The object moved by as much as the picked point did, which stays under the mouse.
    CVec3 moved = hit + (m.GetTranslation() - CVec3{0, 0, 10});
    CVec2 back = ToPixel(persp, moved);
    EXPECT_NEAR(back.x, mouse.x + 20, 1e-2f);
    EXPECT_NEAR(back.y, mouse.y + 10, 1e-2f);
}

TEST(Gizmo, DrawsHandlesInTheirColoursAndTheReadout)
{
    CGizmo gizmo;
    CRecordingPlotter3D plot3;
    CRecordingPlotter2D plot2;
    CView front = CameraView(CEditorCamera::VIEW_FRONT, 600.0f);
    Apply(gizmo, front);
    gizmo.SetTransform(CMatrix44::Identity());

    gizmo.Draw(&plot3, &plot2); // Select draws nothing
    EXPECT_TRUE(plot3.GetLines().empty());
    gizmo.SetMode(CGizmo::MODE_MOVE);
    gizmo.SetEnabled(false);
    gizmo.Draw(&plot3, &plot2);
    EXPECT_TRUE(plot3.GetLines().empty());
    gizmo.SetEnabled(true);
    CGizmo unsized;
    unsized.SetMode(CGizmo::MODE_MOVE);
    unsized.Draw(&plot3, &plot2);
    EXPECT_TRUE(plot3.GetLines().empty());

    for (int32_t iMode : {CGizmo::MODE_MOVE, CGizmo::MODE_ROTATE, CGizmo::MODE_SCALE})
    {
        plot3.Clear();
        gizmo.SetMode(iMode);
        gizmo.Draw(&plot3, nullptr);
        EXPECT_GT(plot3.CountColor(CGizmo::COLOR_X), 0u) << iMode;
        EXPECT_EQ(plot3.CountColor(CGizmo::COLOR_X), plot3.CountColor(CGizmo::COLOR_Y)) << iMode;
        EXPECT_EQ(plot3.CountColor(CGizmo::COLOR_X), plot3.CountColor(CGizmo::COLOR_Z)) << iMode;
        EXPECT_GT(plot3.CountColor(CGizmo::COLOR_CENTER), 0u) << iMode;
        EXPECT_EQ(plot3.CountColor(CGizmo::COLOR_ACTIVE), 0u) << iMode;
    }
    // Move: the arm and a cone of triangles; the arm runs from the origin along its axis.
    gizmo.SetMode(CGizmo::MODE_MOVE);
    plot3.Clear();
    gizmo.Draw(&plot3, nullptr);
    EXPECT_EQ(plot3.GetTriangles().size(), 24u);
    bool bArm = false;
    for (const auto& line : plot3.GetLines())
    {
        bArm = bArm || (line.uColor == CGizmo::COLOR_X && line.a == CVec3{} && line.b.x > 0.0f);
    }
    EXPECT_TRUE(bArm);

    // The hovered arm turns yellow; while dragging, the readout follows the mouse.
    CVec2 onX = ToPixel(front, {100, 0, 0});
    gizmo.Drag(onX);
    plot3.Clear();
    gizmo.Draw(&plot3, &plot2);
    EXPECT_EQ(plot3.CountColor(CGizmo::COLOR_X), 0u);
    EXPECT_GT(plot3.CountColor(CGizmo::COLOR_ACTIVE), 0u);
    EXPECT_TRUE(plot2.GetTexts().empty());
    ASSERT_TRUE(gizmo.Begin(onX));
    ASSERT_TRUE(gizmo.Drag(Offset(onX, -10, 0)));
    gizmo.Draw(&plot3, &plot2);
    ASSERT_EQ(plot2.GetTexts().size(), 1u);
    EXPECT_EQ(plot2.GetTexts()[0].strText, "(10.00, 0.00, 0.00)");
    EXPECT_EQ(plot2.GetTexts()[0].x, onX.x - 10 + 15);
    EXPECT_EQ(plot2.GetTexts()[0].y, onX.y + 10);
    gizmo.End();
    plot2.Clear();
    gizmo.Draw(&plot3, &plot2);
    EXPECT_TRUE(plot2.GetTexts().empty());
}
