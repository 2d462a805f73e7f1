#include "editor_common/EditorCamera.h"

#include "engine/utility/tests/MathExpect.h"

#include <gtest/gtest.h>

#include <cmath>

using namespace Kestrin::Utility;
using MathExpect::ExpectNear;

namespace
{
// 40 ms: the longest frame, where the mouse easing takes the input at once.
constexpr float LONG_FRAME = 0.04f;

CControlState Buttons(bool bLeft, bool bRight, bool bMiddle, bool bAlt)
{
    CControlState s;
    s.leftButton = bLeft;
    s.rightButton = bRight;
    s.middleButton = bMiddle;
    s.alt = bAlt;
    return s;
}

// Presses the buttons in one frame (a press starts still), then moves the mouse in the next.
void DragFrames(CEditorCamera& camera, CControlState state, const CVec2& look)
{
    state.look = {};
    camera.Update(LONG_FRAME, state);
    state.look = look;
    camera.Update(LONG_FRAME, state);
}

// Frames without input, until the eased wheel has come to rest.
void Settle(CEditorCamera& camera)
{
    for (int i = 0; i < 20; ++i)
    {
        camera.Update(LONG_FRAME, CControlState{});
    }
    ASSERT_EQ(camera.GetEasedWheel(), 0.0f);
}

float Distance(const CEditorCamera& camera)
{
    return Length(camera.GetTarget() - camera.GetPosition());
}
} // namespace

TEST(EditorCamera, Defaults)
{
    CEditorCamera camera;
    EXPECT_EQ(camera.GetFov(), 50.0f);
    EXPECT_EQ(camera.GetTargetFov(), 50.0f);
    EXPECT_EQ(camera.GetNear(), 2.0f);
    EXPECT_EQ(camera.GetFar(), 500000.0f);
    EXPECT_EQ(camera.GetSpeed(), 200.0f);
    EXPECT_EQ(camera.GetOrthoSize(), 300.0f);
    EXPECT_EQ(camera.GetWidth(), 800);
    EXPECT_EQ(camera.GetHeight(), 600);
    EXPECT_EQ(camera.GetView(), CEditorCamera::VIEW_PERSPECTIVE);
    EXPECT_EQ(camera.GetControl(), CEditorCamera::CONTROL_TARGET);
    EXPECT_FLOAT_EQ(camera.GetFrameDelta(), 1.0f / 60.0f);
    ExpectNear(camera.GetPosition(), {100, 100, 50}, 0.0f);
    ExpectNear(camera.GetTarget(), {0, 0, 0}, 0.0f);
    // Looking at the origin from above: 19.47 degrees down, heading 135.
    EXPECT_NEAR(camera.GetPitch(), ToDegrees(std::asin(50.0f / 150.0f)), 1e-3f);
    EXPECT_NEAR(camera.GetYaw(), 135.0f, 1e-3f);
    EXPECT_NEAR(camera.GetRoll(), 0.0f, 1e-3f);
    ExpectNear(camera.GetMatrix().Row(2), Normalize(CVec3{-100, -100, -50}), 1e-6f);
    ExpectNear(camera.GetViewMatrix(), CMatrix44::LookAtLH({100, 100, 50}, {0, 0, 0}, {0, 0, 1}), 1e-4f);
    ExpectNear(camera.GetProjMatrix(),
               CMatrix44::PerspectiveFovLH(ToRadians(50.0f), 800.0f / 600.0f, 2.0f, 500000.0f), 1e-6f);
    ExpectNear(camera.GetViewProj(), camera.GetViewMatrix() * camera.GetProjMatrix(), 1e-6f);
    EXPECT_EQ(camera.GetStoredMatrix(CEditorCamera::VIEW_ORTHO), camera.GetMatrix());
    for (int32_t i = 0; i < CEditorCamera::VIEW_COUNT; ++i)
    {
        EXPECT_EQ(camera.GetStoredOrthoSize(i), 300.0f);
    }
}

TEST(EditorCamera, ViewTable)
{
    const char* aNames[] = {"Perspective", "Ortho", "Top", "Bottom", "Front", "Back", "Left", "Right"};
    for (int32_t i = 0; i < CEditorCamera::VIEW_COUNT; ++i)
    {
        EXPECT_STREQ(CEditorCamera::GetViewName(i), aNames[i]);
    }
    EXPECT_EQ(CEditorCamera::GetViewName(8), nullptr);
    EXPECT_EQ(CEditorCamera::GetViewName(-1), nullptr);
    EXPECT_STREQ(CEditorCamera::GetControlName(0), "Free");
    EXPECT_STREQ(CEditorCamera::GetControlName(1), "Target");
    EXPECT_EQ(CEditorCamera::GetControlName(2), nullptr);

    struct
    {
        int32_t iView;
        CVec3 vPosition, vLook, vUp;
    } aTable[] = {
        {2, {0, 0, 100000}, {0, 0, -1}, {0, 1, 0}}, {3, {0, 0, -100000}, {0, 0, 1}, {0, -1, 0}},
        {4, {0, -100000, 0}, {0, 1, 0}, {0, 0, 1}}, {5, {0, 100000, 0}, {0, -1, 0}, {0, 0, 1}},
        {6, {-100000, 0, 0}, {1, 0, 0}, {0, 0, 1}}, {7, {100000, 0, 0}, {-1, 0, 0}, {0, 0, 1}},
    };
    CEditorCamera camera;
    for (const auto& row : aTable)
    {
        const CMatrix44& m = camera.GetStoredMatrix(row.iView);
        EXPECT_EQ(m.GetTranslation(), row.vPosition) << row.iView;
        EXPECT_EQ(m.Row(2), row.vLook) << row.iView;
        EXPECT_EQ(m.Row(1), row.vUp) << row.iView;
        EXPECT_EQ(m.Row(0), Cross(row.vUp, row.vLook)) << row.iView; // a pure rotation
        EXPECT_EQ(Determinant(m), 1.0f) << row.iView;

        camera.SetView(row.iView);
        EXPECT_EQ(camera.GetView(), row.iView);
        EXPECT_EQ(camera.GetMatrix(), m);
        EXPECT_FALSE(camera.IsPerspective());
        ExpectNear(camera.GetProjMatrix(), CMatrix44::OrthoLH(300.0f * 800 / 600, 300.0f, 0.0f, 200000.0f),
                   1e-9f);
        ExpectNear(camera.GetViewMatrix(), Inverse(m), 1e-6f);
    }
    // "Ortho" is orthographic too.
    camera.SetView(CEditorCamera::VIEW_ORTHO);
    EXPECT_EQ(camera.GetProjMatrix().m[3][3], 1.0f);
    camera.SetView(9);
    EXPECT_EQ(camera.GetView(), CEditorCamera::VIEW_ORTHO);
}

TEST(EditorCamera, EachViewKeepsItsMatrixAndOrthoSize)
{
    CEditorCamera camera;
    camera.SetView(CEditorCamera::VIEW_TOP);
    camera.SetOrthoSize(123.0f);
    camera.SetPosition({10, 20, 100000});
    camera.SetView(CEditorCamera::VIEW_FRONT);
    EXPECT_EQ(camera.GetOrthoSize(), 300.0f);
    EXPECT_EQ(camera.GetStoredOrthoSize(CEditorCamera::VIEW_TOP), 123.0f);
    camera.SetView(CEditorCamera::VIEW_TOP);
    EXPECT_EQ(camera.GetOrthoSize(), 123.0f);
    EXPECT_EQ(camera.GetPosition(), (CVec3{10, 20, 100000}));
    camera.SetView(CEditorCamera::VIEW_PERSPECTIVE);
    ExpectNear(camera.GetPosition(), {100, 100, 50}, 0.0f);
    // The target comes back onto the line of sight, so an orbit turns about the view's centre.
    ExpectNear(Normalize(camera.GetTarget() - camera.GetPosition()), camera.GetMatrix().Row(2), 1e-5f);
}

TEST(EditorCamera, EasedInputAndPresses)
{
    CEditorCamera camera;
    CControlState s;
    s.look = {10, -20};
    s.wheel = 1.0f;
    camera.Update(1.0f / 60.0f, s); // a = 0.5, b = 1/3
    EXPECT_FLOAT_EQ(camera.GetEasedMouse().x, 5.0f);
    EXPECT_FLOAT_EQ(camera.GetEasedMouse().y, -10.0f);
    EXPECT_FLOAT_EQ(camera.GetEasedWheel(), 1.0f / 3.0f);
    EXPECT_EQ(camera.GetWheel(), 1.0f);
    camera.Update(1.0f / 60.0f, s);
    EXPECT_FLOAT_EQ(camera.GetEasedMouse().x, 7.5f);
    // A press starts from rest.
    s.middleButton = 1;
    camera.Update(1.0f / 60.0f, s);
    EXPECT_EQ(camera.GetEasedMouse().x, 0.0f);
    EXPECT_EQ(camera.GetEasedMouse().y, 0.0f);
    // A held button is no press.
    camera.Update(1.0f / 60.0f, s);
    EXPECT_FLOAT_EQ(camera.GetEasedMouse().x, 5.0f);
    // The long frame takes the input whole; a still mouse comes to rest at 0.
    camera.Update(LONG_FRAME, s);
    EXPECT_FLOAT_EQ(camera.GetEasedMouse().x, 10.0f);
    s.look = {};
    s.wheel = 0.0f;
    for (int i = 0; i < 200; ++i)
    {
        camera.Update(1.0f / 60.0f, s);
    }
    EXPECT_EQ(camera.GetEasedMouse().x, 0.0f);
    EXPECT_EQ(camera.GetEasedWheel(), 0.0f);
    // SetControl resets the motion.
    s.look = {10, 10};
    camera.Update(LONG_FRAME, s);
    camera.SetControl(CEditorCamera::CONTROL_TARGET);
    EXPECT_EQ(camera.GetEasedMouse().x, 0.0f);
}

TEST(EditorCamera, FlightAnglesWrapAndPitchStopsShortOfStraightUpOrDown)
{
    CEditorCamera camera;
    camera.SetControl(CEditorCamera::CONTROL_FREE);
    CControlState look = Buttons(false, true, false, false);

    // Mouse right turns right: yaw goes down, through 0 to 350.
    camera.SetAngles(10.0f, 0.0f, 0.0f);
    CVec3 vRightBefore = camera.GetMatrix().Row(0);
    DragFrames(camera, look, {40, 0});
    EXPECT_NEAR(camera.GetYaw(), 350.0f, 1e-3f);
    EXPECT_GT(Dot(camera.GetMatrix().Row(2), vRightBefore), 0.1f);
    // Mouse down looks down.
    camera.SetAngles(0.0f, 0.0f, 0.0f);
    DragFrames(camera, look, {0, 20});
    EXPECT_NEAR(camera.GetPitch(), 10.0f, 1e-3f);
    EXPECT_LT(camera.GetMatrix().Row(2).z, -0.1f);

    struct
    {
        float fStart, fMouse, fExpected;
    } aPitch[] = {{80, 40, 89},     {60, 57.9f, 88.95f}, {300, -40, 280}, {300, -80, 271},
                  {280, -200, 271}, {10, -40, 350},      {350, 30, 5},    {80, 196, 89}};
    for (const auto& c : aPitch)
    {
        camera.SetAngles(0.0f, c.fStart, 0.0f);
        DragFrames(camera, look, {0, c.fMouse});
        EXPECT_NEAR(camera.GetPitch(), c.fExpected, 1e-3f) << c.fStart << " + " << c.fMouse * 0.5f;
    }
    // 89 is as far down as it goes: the view is 1 degree off straight down.
    camera.SetAngles(0.0f, 80.0f, 0.0f);
    DragFrames(camera, look, {0, 100});
    EXPECT_NEAR(camera.GetMatrix().Row(2).z, -std::sin(ToRadians(89.0f)), 1e-5f);

    // The right stick turns without the mouse button, by 100 degrees a second.
    CControlState stick;
    stick.stick2 = {1, 0};
    camera.SetAngles(2.0f, 0.0f, 0.0f);
    camera.Update(LONG_FRAME, stick);
    EXPECT_NEAR(camera.GetYaw(), 358.0f, 1e-3f);
}

TEST(EditorCamera, FlightMovesAlongTheView)
{
    CEditorCamera camera;
    camera.SetControl(CEditorCamera::CONTROL_FREE);
    camera.SetAngles(90.0f, 0.0f, 0.0f); // looking along -y
    ExpectNear(camera.GetMatrix().Row(2), {0, -1, 0}, 1e-6f);
    CVec3 vStart = camera.GetPosition();
    CControlState s;
    s.move = {0, -1}; // the key W
    camera.Update(LONG_FRAME, s);
    ExpectNear(camera.GetPosition(), vStart + CVec3{0, -8, 0}, 1e-3f); // 0.04 s at 200 per second
    // The pair's length is held to 1.
    vStart = camera.GetPosition();
    s.move = {3, 4};
    camera.Update(LONG_FRAME, s);
    CVec3 vRight = camera.GetMatrix().Row(0);
    ExpectNear(camera.GetPosition(), vStart + vRight * (0.6f * 8) + CVec3{0, 0.8f * 8, 0}, 1e-3f);
    camera.SetSpeed(50.0f);
    vStart = camera.GetPosition();
    s.move = {0, 1};
    camera.Update(LONG_FRAME, s);
    ExpectNear(camera.GetPosition(), vStart + CVec3{0, 2, 0}, 1e-3f);
}

TEST(EditorCamera, FreeControlReturnsToPerspective)
{
    CEditorCamera camera;
    camera.SetView(CEditorCamera::VIEW_LEFT);
    camera.SetControl(CEditorCamera::CONTROL_FREE);
    EXPECT_EQ(camera.GetControl(), CEditorCamera::CONTROL_FREE);
    EXPECT_EQ(camera.GetView(), CEditorCamera::VIEW_PERSPECTIVE);
    ExpectNear(camera.GetPosition(), {100, 100, 50}, 0.0f);
    camera.SetControl(5);
    EXPECT_EQ(camera.GetControl(), CEditorCamera::CONTROL_FREE);
    // Flying does not jump: the angles were taken from the view.
    CMatrix44 before = camera.GetMatrix();
    camera.Update(LONG_FRAME, CControlState{});
    ExpectNear(camera.GetMatrix(), before, 1e-4f);
}

TEST(EditorCamera, OrbitInTopSwitchesToOrthoAndTopComesBack)
{
    CEditorCamera camera;
    camera.SetView(CEditorCamera::VIEW_TOP);
    camera.SetOrthoSize(250.0f);
    CMatrix44 top = camera.GetMatrix();
    DragFrames(camera, Buttons(true, false, false, true), {30, 20});
    EXPECT_EQ(camera.GetView(), CEditorCamera::VIEW_ORTHO);
    EXPECT_FALSE(camera.IsPerspective());
    EXPECT_EQ(camera.GetOrthoSize(), 250.0f); // the turn goes on from where the view was
    EXPECT_GT(Length(camera.GetMatrix().Row(2) - top.Row(2)), 0.1f);
    EXPECT_EQ(camera.GetStoredMatrix(CEditorCamera::VIEW_TOP), top);
    // The key T: "Top" as it was, and "Ortho" keeps the turned view.
    CMatrix44 turned = camera.GetMatrix();
    camera.SetView(CEditorCamera::VIEW_TOP);
    EXPECT_EQ(camera.GetMatrix(), top);
    EXPECT_EQ(camera.GetOrthoSize(), 250.0f);
    EXPECT_EQ(camera.GetStoredMatrix(CEditorCamera::VIEW_ORTHO), turned);
}

TEST(EditorCamera, OrbitTurnsAboutTheTargetAndTheSceneFollowsTheMouse)
{
    CEditorCamera camera;
    float fDistance = Distance(camera);
    CVec3 vEye = camera.GetPosition();
    CVec3 vRight = camera.GetMatrix().Row(0);
    // Right button alone orbits; dragging right carries the camera left around the target.
    DragFrames(camera, Buttons(false, true, false, false), {20, 0});
    EXPECT_EQ(camera.GetView(), CEditorCamera::VIEW_PERSPECTIVE);
    EXPECT_NEAR(Distance(camera), fDistance, 1e-2f);
    EXPECT_LT(Dot(camera.GetPosition() - vEye, vRight), -1.0f);
    EXPECT_NEAR(camera.GetPosition().z, vEye.z, 1e-3f); // a turn about z keeps the height
    ExpectNear(camera.GetMatrix().Row(2), Normalize(camera.GetTarget() - camera.GetPosition()), 1e-5f);
    // 0.01 radians per unit about z.
    float fBefore = std::atan2(vEye.y, vEye.x);
    float fAfter = std::atan2(camera.GetPosition().y, camera.GetPosition().x);
    EXPECT_NEAR(fAfter - fBefore, 0.2f, 1e-4f);

    // Dragging down lifts the camera: the top of the scene comes toward the viewer.
    vEye = camera.GetPosition();
    DragFrames(camera, Buttons(true, false, false, true), {0, 10});
    EXPECT_GT(camera.GetPosition().z, vEye.z + 1.0f);
    EXPECT_NEAR(Distance(camera), fDistance, 1e-2f);
    // Alt with the middle button orbits too.
    vEye = camera.GetPosition();
    DragFrames(camera, Buttons(false, false, true, true), {10, 0});
    EXPECT_GT(Length(camera.GetPosition() - vEye), 1.0f);
    // The left button alone belongs to the editor.
    vEye = camera.GetPosition();
    DragFrames(camera, Buttons(true, false, false, false), {10, 10});
    EXPECT_EQ(camera.GetPosition(), vEye);
}

TEST(EditorCamera, PanKeepsTheSceneUnderTheMouse)
{
    CEditorCamera camera;
    camera.SetView(CEditorCamera::VIEW_TOP);
    CMatrix44 before = camera.GetMatrix();
    // A tenth of the width to the right: 300 x 4/3 / 10 = 40 units, against the view's right.
    DragFrames(camera, Buttons(false, false, true, false), {80, 60});
    CVec3 vShift = camera.GetPosition() - before.GetTranslation();
    ExpectNear(vShift, before.Row(0) * -40.0f + before.Row(1) * 30.0f, 1e-2f);
    EXPECT_EQ(camera.GetView(), CEditorCamera::VIEW_TOP);
    for (int i = 0; i < 3; ++i)
    {
        EXPECT_EQ(camera.GetMatrix().Row(i), before.Row(i));
    }

    // In perspective the same share of the view's height at the target's depth.
    CEditorCamera persp;
    CVec3 vEye = persp.GetPosition(), vTarget = persp.GetTarget();
    float u = 150.0f * std::tan(ToRadians(25.0f)) * 2.0f;
    DragFrames(persp, Buttons(false, false, true, false), {-80, 0});
    CVec3 vRight = persp.GetMatrix().Row(0);
    ExpectNear(persp.GetPosition() - vEye, vRight * (0.1f * u * 800 / 600), 1e-2f);
    ExpectNear(persp.GetTarget() - vTarget, vRight * (0.1f * u * 800 / 600), 1e-2f);
}

TEST(EditorCamera, DollyByWheelAndByMouse)
{
    CEditorCamera camera;
    CControlState s;
    s.wheel = 1.0f;
    camera.Update(LONG_FRAME, s); // the eased wheel is 0.8: 16% of the way in
    EXPECT_NEAR(Distance(camera), 150.0f * (1.0f - 0.16f), 1e-2f);
    ExpectNear(camera.GetTarget(), {0, 0, 0}, 0.0f);

    // Alt with the right button: up moves in by 1% of the distance a unit.
    Settle(camera);
    float d = Distance(camera);
    DragFrames(camera, Buttons(false, true, false, true), {0, -10});
    EXPECT_NEAR(Distance(camera), d * 0.9f, 1e-2f);
    DragFrames(camera, Buttons(false, true, false, true), {0, 10});
    EXPECT_NEAR(Distance(camera), d * 0.9f * 1.1f, 1e-2f);

    // All the way in lands on the target; the way out is still open from there.
    DragFrames(camera, Buttons(false, true, false, true), {0, -100});
    EXPECT_NEAR(Distance(camera), 0.0f, 1e-3f);
    DragFrames(camera, Buttons(false, true, false, true), {0, 10});
    EXPECT_NEAR(Distance(camera), 0.1f, 1e-3f);

    // Orthographic: the size shrinks by the same share, never past 1%.
    CEditorCamera ortho;
    ortho.SetView(CEditorCamera::VIEW_FRONT);
    ortho.Update(LONG_FRAME, s);
    EXPECT_NEAR(ortho.GetOrthoSize(), 300.0f * 0.84f, 1e-3f);
    CEditorCamera ortho2;
    ortho2.SetView(CEditorCamera::VIEW_FRONT);
    s.wheel = 20.0f;
    ortho2.Update(LONG_FRAME, s);
    EXPECT_NEAR(ortho2.GetOrthoSize(), 3.0f, 1e-3f);
}

TEST(EditorCamera, FovEasesTowardItsTarget)
{
    CEditorCamera camera;
    // Held: nothing moves while the hold lasts.
    camera.SetFovHold(true, 0.1f);
    EXPECT_EQ(camera.GetTargetFov(), 65.0f);
    camera.Update(0.04f, CControlState{});
    camera.Update(0.04f, CControlState{});
    EXPECT_EQ(camera.GetFov(), 50.0f);
    camera.Update(0.04f, CControlState{}); // the hold runs out in this frame
    // 15 below: slowly, 2 degrees a second, until within 13.
    EXPECT_NEAR(camera.GetFov(), 50.08f, 1e-4f);
    for (int i = 0; i < 10; ++i)
    {
        camera.Update(0.04f, CControlState{});
    }
    EXPECT_NEAR(camera.GetFov(), 50.88f, 1e-3f);
    // Then 40 a second, not past the target.
    for (int i = 0; i < 25; ++i)
    {
        camera.Update(0.04f, CControlState{});
    }
    EXPECT_EQ(camera.GetFov(), 65.0f);
    CEditorCamera near;
    near.SetFov(60.0f);
    near.SetFovHold(false, 0.0f);
    near.Update(0.04f, CControlState{});
    EXPECT_NEAR(near.GetFov(), 61.6f, 1e-4f);
    ExpectNear(camera.GetProjMatrix(), CMatrix44::PerspectiveFovLH(ToRadians(65.0f), 800.0f / 600, 2, 500000),
               1e-6f);

    // Without the hold flag it starts at once; above the target it falls by 2.5 x the gap a second.
    CEditorCamera wide;
    wide.SetFov(80.0f);
    wide.SetFovHold(false, 5.0f);
    EXPECT_EQ(wide.GetFovHoldTime(), -1.0f);
    wide.Update(0.04f, CControlState{});
    EXPECT_NEAR(wide.GetFov(), 80.0f - 15.0f * 0.1f, 1e-4f);
}

TEST(EditorCamera, FrameDistances)
{
    CEditorCamera camera;
    CBox3 box{{10, 20, 30}, {14, 23, 30}}; // half diagonal 2.5
    CVec3 vForward = camera.GetMatrix().Row(2);
    camera.Frame(box);
    float fDistance = 2.5f / std::sin(ToRadians(25.0f));
    ExpectNear(camera.GetPosition(), CVec3{12, 21.5f, 30} - vForward * fDistance, 1e-3f);
    ExpectNear(camera.GetMatrix().Row(2), vForward, 0.0f);
    ExpectNear(camera.GetTarget(), {12, 21.5f, 30}, 0.0f);

    // A tall viewport frames by its width.
    camera.SetViewport(600, 800);
    camera.Frame(box);
    float h = std::atan(std::tan(ToRadians(25.0f)) * 0.75f);
    EXPECT_NEAR(Distance(camera), 2.5f / std::sin(h), 1e-3f);

    // Orthographic: the size is the diagonal, over the aspect when tall; the view is centred.
    camera.SetView(CEditorCamera::VIEW_TOP);
    camera.Frame(box);
    EXPECT_NEAR(camera.GetOrthoSize(), 5.0f / 0.75f, 1e-4f);
    camera.SetViewport(800, 600);
    camera.Frame(box);
    EXPECT_NEAR(camera.GetOrthoSize(), 5.0f, 1e-4f);
    EXPECT_NEAR(camera.GetPosition().x, 12.0f, 1e-3f);
    EXPECT_NEAR(camera.GetPosition().y, 21.5f, 1e-3f);
    EXPECT_NEAR(camera.GetPosition().z, 100000.0f, 1e-1f);

    // An empty box changes nothing.
    CMatrix44 before = camera.GetMatrix();
    camera.Frame(CBox3{});
    EXPECT_EQ(camera.GetMatrix(), before);
    EXPECT_NEAR(camera.GetOrthoSize(), 5.0f, 1e-4f);
}

TEST(EditorCamera, ScreenRayMatchesTheProjection)
{
    const CVec2 aPixels[] = {{400, 300}, {0, 0}, {800, 0}, {0, 600}, {800, 600}, {123, 456}};
    const CVec2 aNdc[] = {{0, 0}, {-1, 1}, {1, 1}, {-1, -1}, {1, -1}, {123.0f / 400 - 1, 1 - 456.0f / 300}};
    for (int32_t iView : {0, 2, 4, 1})
    {
        CEditorCamera camera;
        camera.SetView(iView);
        camera.SetViewport(800, 600);
        for (int i = 0; i < 6; ++i)
        {
            CVec3 vStart, vDir;
            camera.ScreenRay(aPixels[i], vStart, vDir);
            EXPECT_NEAR(Length(vDir), 1.0f, 1e-5f);
            for (float t : {10.0f, 100.0f, 1000.0f})
            {
                CVec3 ndc = TransformCoord(vStart + vDir * t, camera.GetViewProj());
                EXPECT_NEAR(ndc.x, aNdc[i].x, 1e-4f) << iView << " pixel " << i;
                EXPECT_NEAR(ndc.y, aNdc[i].y, 1e-4f) << iView << " pixel " << i;
            }
        }
        CVec3 vStart, vDir;
        camera.ScreenRay({400, 300}, vStart, vDir);
        ExpectNear(vStart, camera.GetPosition(), 1e-2f);
        ExpectNear(vDir, camera.GetMatrix().Row(2), 1e-6f);
    }
}

TEST(EditorCamera, LookAtKeepsThePosition)
{
    CEditorCamera camera;
    camera.LookAt({100, 0, 50});
    ExpectNear(camera.GetPosition(), {100, 100, 50}, 0.0f);
    ExpectNear(camera.GetMatrix().Row(2), {0, -1, 0}, 1e-6f);
    ExpectNear(camera.GetMatrix().Row(1), {0, 0, 1}, 1e-6f);
    EXPECT_NEAR(camera.GetYaw(), 90.0f, 1e-3f);
    EXPECT_NEAR(camera.GetPitch(), 0.0f, 1e-3f);
    // Straight down has no heading of its own: the present up is kept.
    camera.LookAt({100, 100, 0});
    ExpectNear(camera.GetMatrix().Row(2), {0, 0, -1}, 1e-6f);
    EXPECT_NEAR(Determinant(camera.GetMatrix()), 1.0f, 1e-5f);
}

TEST(EditorCamera, ShakeOffsetsTheViewAndFades)
{
    CCameraShake shake;
    EXPECT_FALSE(shake.IsActive());
    EXPECT_EQ(shake.GetOffset(), CMatrix44::Identity());
    shake.Start({0, 0, 0}, 4.0f, 5.0f, 1.0f, 100.0f);
    EXPECT_TRUE(shake.IsActive());
    shake.Update(0.05f, {0, 0, 0}); // a quarter swing at 5 per second: the full amplitude, faded 5%
    EXPECT_NEAR(shake.GetOffset().GetTranslation().y, 4.0f * 0.95f, 1e-4f);
    shake.Update(0.0f, {0, 0, 50}); // half way to the radius: half as much
    EXPECT_NEAR(shake.GetOffset().GetTranslation().y, 4.0f * 0.95f * 0.5f, 1e-4f);
    shake.Update(0.0f, {0, 0, 150});
    EXPECT_EQ(shake.GetOffset().GetTranslation().y, 0.0f);
    shake.Update(2.0f, {0, 0, 0});
    EXPECT_FALSE(shake.IsActive());
    EXPECT_EQ(shake.GetOffset().GetTranslation(), (CVec3{0, 0, 0}));

    // The camera's view moves with it; its matrix and picking do not.
    CEditorCamera camera;
    CMatrix44 still = camera.GetViewMatrix();
    camera.GetShake().Start({0, 0, -30}, 4.0f, 5.0f, 1.0f, 0.0f);
    camera.Update(0.05f, CControlState{});
    EXPECT_GT(Length(TransformPoint({0, 0, 0}, camera.GetViewMatrix()) - TransformPoint({0, 0, 0}, still)),
              1.0f);
    ExpectNear(camera.GetPosition(), {100, 100, 50}, 0.0f);
}
