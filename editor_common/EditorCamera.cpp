#include "editor_common/EditorCamera.h"

#include "Utils/Utility/GUtDebug.h"
#include "engine/utility/Geometry.h"

#include <algorithm>
#include <cmath>

using namespace Kestrin::Utility;

namespace
{
const char* const VIEW_NAMES[CEditorCamera::VIEW_COUNT] = {"Perspective", "Ortho", "Top",  "Bottom",
                                                           "Front",       "Back",  "Left", "Right"};
const char* const CONTROL_NAMES[2] = {"Free", "Target"};

// The orthographic views: position, direction of view and up.
struct CViewDefault
{
    CVec3 vPosition, vLook, vUp;
};
constexpr float D = CEditorCamera::VIEW_DISTANCE;
const CViewDefault VIEW_DEFAULTS[6] = {
    {{0, 0, D}, {0, 0, -1}, {0, 1, 0}},  // "Top"
    {{0, 0, -D}, {0, 0, 1}, {0, -1, 0}}, // "Bottom"
    {{0, -D, 0}, {0, 1, 0}, {0, 0, 1}},  // "Front"
    {{0, D, 0}, {0, -1, 0}, {0, 0, 1}},  // "Back"
    {{-D, 0, 0}, {1, 0, 0}, {0, 0, 1}},  // "Left"
    {{D, 0, 0}, {-1, 0, 0}, {0, 0, 1}},  // "Right"
};
const CVec3 START_POSITION{100.0f, 100.0f, 50.0f};
constexpr float START_ORTHO_SIZE = 300.0f;

// At zero angles the camera looks along +x with +z up, so its right is +y.
const CMatrix44 ZERO_ANGLE_FRAME = []
{
    CMatrix44 m;
    m.SetRow(0, {0, 1, 0});
    m.SetRow(1, {0, 0, 1});
    m.SetRow(2, {1, 0, 0});
    return m;
}();

constexpr float MOUSE_EASE_RATE = 30.0f;
constexpr float WHEEL_EASE_RATE = 20.0f;
constexpr float EASE_REST = 1e-5f;          // eased values below this come to rest at 0
constexpr float FLIGHT_MOUSE_RATE = 0.5f;   // degrees per mouse unit
constexpr float FLIGHT_STICK_RATE = 100.0f; // degrees per second at full stick
constexpr float ORBIT_RATE = 0.01f;         // radians per mouse unit
constexpr float DOLLY_WHEEL_RATE = 0.2f;    // share of the distance per notch
constexpr float DOLLY_MOUSE_RATE = -0.01f;  // share of the distance per mouse unit
constexpr float SHAKE_LISTENER_DROP = 30.0f;

// A camera frame at vEye looking along vLook; vUp only needs to be off the line of sight.
CMatrix44 MakeFrame(const CVec3& vEye, const CVec3& vLook, const CVec3& vUp)
{
    CVec3 vForward = Normalize(vLook);
    CVec3 vRight = Normalize(Cross(vUp, vForward));
    CMatrix44 m;
    m.SetRow(0, vRight);
    m.SetRow(1, Cross(vForward, vRight));
    m.SetRow(2, vForward);
    m.SetTranslation(vEye);
    return m;
}

// Into [0, 360).
float WrapDegrees(float f)
{
    f = std::fmod(f, 360.0f);
    if (f < 0.0f)
    {
        f += 360.0f;
    }
    return f >= 360.0f ? 0.0f : f;
}

bool Pressed(uint8_t bNow, uint8_t bBefore)
{
    return bNow && !bBefore;
}
} // namespace

// ---------------------------------------------------------------------------------------
// CCameraShake

void CCameraShake::Start(const CVec3& vOrigin, float fAmplitude, float fFrequency, float fDuration,
                         float fRadius)
{
    m_vOrigin = vOrigin;
    m_fAmplitude = fAmplitude;
    m_fFrequency = fFrequency;
    m_fDuration = std::max(fDuration, 0.0f);
    m_fRadius = fRadius;
    m_fTime = 0.0f;
    m_mOffset = CMatrix44::Identity();
}

void CCameraShake::Stop()
{
    m_fTime = m_fDuration;
    m_mOffset = CMatrix44::Identity();
}

void CCameraShake::Update(float fDelta, const CVec3& vPosition)
{
    if (!IsActive())
    {
        m_mOffset = CMatrix44::Identity();
        return;
    }
    m_fTime = std::min(m_fTime + std::max(fDelta, 0.0f), m_fDuration);
    float fFade = 1.0f - m_fTime / m_fDuration;
    if (m_fRadius > 0.0f)
    {
        fFade *= std::max(0.0f, 1.0f - Length(vPosition - m_vOrigin) / m_fRadius);
    }
    float fPhase = 2.0f * PI * m_fFrequency * m_fTime;
    float a = m_fAmplitude * fFade;
    // Sideways at a different rate than up and down, so the shake does not move on a line.
    m_mOffset = CMatrix44::Translation({a * 0.5f * std::sin(fPhase * 1.3f), a * std::sin(fPhase), 0.0f});
}

// ---------------------------------------------------------------------------------------
// CEditorCamera

const char* CEditorCamera::GetViewName(int32_t iView)
{
    return iView >= 0 && iView < VIEW_COUNT ? VIEW_NAMES[iView] : nullptr;
}

const char* CEditorCamera::GetControlName(int32_t iControl)
{
    return iControl == CONTROL_FREE || iControl == CONTROL_TARGET ? CONTROL_NAMES[iControl] : nullptr;
}

CEditorCamera::CEditorCamera()
{
    m_amViewMatrices[VIEW_PERSPECTIVE] = MakeFrame(START_POSITION, -START_POSITION, {0, 0, 1});
    m_amViewMatrices[VIEW_ORTHO] = m_amViewMatrices[VIEW_PERSPECTIVE];
    for (int i = 0; i < 6; ++i)
    {
        const CViewDefault& view = VIEW_DEFAULTS[i];
        m_amViewMatrices[VIEW_TOP + i] = MakeFrame(view.vPosition, view.vLook, view.vUp);
    }
    for (float& fSize : m_afViewOrthoSizes)
    {
        fSize = START_ORTHO_SIZE;
    }
    m_mMatrix = m_amViewMatrices[VIEW_PERSPECTIVE];
    m_vTarget = {};
    SyncAngles();
    RebuildMatrices();
}

const CMatrix44& CEditorCamera::GetStoredMatrix(int32_t iView) const
{
    GUT_ASSERT(iView >= 0 && iView < VIEW_COUNT);
    return iView == m_iView ? m_mMatrix : m_amViewMatrices[iView];
}

float CEditorCamera::GetStoredOrthoSize(int32_t iView) const
{
    GUT_ASSERT(iView >= 0 && iView < VIEW_COUNT);
    return iView == m_iView ? m_fOrthoSize : m_afViewOrthoSizes[iView];
}

void CEditorCamera::Update(float fDelta, const CControlState& input)
{
    fDelta = std::max(fDelta, 0.0f);
    // 1. Ease the mouse and the wheel toward the input.
    m_fFrameDelta = fDelta;
    float a = std::min(fDelta * MOUSE_EASE_RATE, 1.0f);
    m_vMouse = m_vMouse + (input.look - m_vMouse) * a;
    float b = std::min(fDelta * WHEEL_EASE_RATE, 1.0f);
    m_fEasedWheel += (input.wheel - m_fEasedWheel) * b;
    m_vMouse.x = std::fabs(m_vMouse.x) < EASE_REST ? 0.0f : m_vMouse.x;
    m_vMouse.y = std::fabs(m_vMouse.y) < EASE_REST ? 0.0f : m_vMouse.y;
    m_fEasedWheel = std::fabs(m_fEasedWheel) < EASE_REST ? 0.0f : m_fEasedWheel;

    // 2. Take the buttons; a press starts without a jump.
    bool bPress = Pressed(input.leftButton, m_abButtons[0]) || Pressed(input.rightButton, m_abButtons[1]) ||
                  Pressed(input.middleButton, m_abButtons[2]);
    m_fWheel = input.wheel;
    m_abButtons[0] = input.leftButton;
    m_abButtons[1] = input.rightButton;
    m_abButtons[2] = input.middleButton;
    m_abModifiers[0] = input.control;
    m_abModifiers[1] = input.shift;
    m_abModifiers[2] = input.alt;
    if (bPress)
    {
        m_vMouse = {};
    }

    // 3. Move.
    if (m_iControl == CONTROL_FREE)
    {
        FlightStep(input);
    }
    else
    {
        OrbitStep();
    }

    // 4. The shake listens a little below the target.
    m_effect.Update(fDelta, m_vTarget - CVec3{0.0f, 0.0f, SHAKE_LISTENER_DROP});

    // 5. and 6.
    EaseFov(fDelta);
    RebuildMatrices();
}

void CEditorCamera::FlightStep(const CControlState& input)
{
    if (m_abButtons[1])
    {
        // Mouse look on the right button.
        m_fYaw -= m_vMouse.x * FLIGHT_MOUSE_RATE;
        m_fPitch += m_vMouse.y * FLIGHT_MOUSE_RATE;
    }
    else
    {
        m_fYaw -= input.stick2.x * m_fFrameDelta * FLIGHT_STICK_RATE;
        m_fPitch += input.stick2.y * m_fFrameDelta * FLIGHT_STICK_RATE;
    }
    m_fYaw = WrapDegrees(m_fYaw);
    m_fPitch = WrapDegrees(m_fPitch);
    m_fRoll = WrapDegrees(m_fRoll);
    // Never past straight up or down.
    if (m_fPitch >= 89.0f && m_fPitch < 180.0f)
    {
        m_fPitch = 89.0f;
    }
    else if (m_fPitch >= 180.0f && m_fPitch < 271.0f)
    {
        m_fPitch = 271.0f;
    }
    float fTargetDistance = std::max(Length(m_vTarget - GetPosition()), 1.0f);
    RebuildRotation();

    CVec2 vMove = input.move;
    float fLength = Length(vMove);
    if (fLength > 1.0f)
    {
        vMove = vMove * (1.0f / fLength);
    }
    // The stick's -y (key W) is forward.
    float fStep = m_fFrameDelta * m_fSpeed;
    CVec3 vEye = GetPosition() + Forward() * (-vMove.y * fStep) + Right() * (vMove.x * fStep);
    m_mMatrix.SetTranslation(vEye);
    m_vTarget = vEye + Forward() * fTargetDistance;
}

void CEditorCamera::OrbitStep()
{
    // One action from the buttons (Alt selects the alternatives); the wheel always dollies.
    bool bLeft = m_abButtons[0], bRight = m_abButtons[1], bMiddle = m_abButtons[2];
    bool bAlt = m_abModifiers[2];
    if ((bAlt && (bLeft || bMiddle)) || (!bAlt && bRight))
    {
        Orbit(m_vMouse);
    }
    else if (!bAlt && bMiddle)
    {
        Pan(m_vMouse);
    }
    else if (bAlt && bRight)
    {
        Dolly(m_vMouse.y * DOLLY_MOUSE_RATE);
    }
    if (m_fEasedWheel != 0.0f)
    {
        Dolly(m_fEasedWheel * DOLLY_WHEEL_RATE);
    }
}

void CEditorCamera::Orbit(const CVec2& mouse)
{
    if (mouse.x == 0.0f && mouse.y == 0.0f)
    {
        return;
    }
    if (m_iView != VIEW_PERSPECTIVE && m_iView != VIEW_ORTHO)
    {
        // Leave the axis view as it was and go on turning in "Ortho".
        m_amViewMatrices[m_iView] = m_mMatrix;
        m_afViewOrthoSizes[m_iView] = m_fOrthoSize;
        m_iView = VIEW_ORTHO;
    }
    // The scene follows the mouse: right spins it right, down tips its top toward the viewer.
    CMatrix44 mTurn =
        CMatrix44::RotationAxis(Right(), mouse.y * ORBIT_RATE) * CMatrix44::RotationZ(mouse.x * ORBIT_RATE);
    CMatrix44 mAbout = CMatrix44::Translation(-m_vTarget) * mTurn * CMatrix44::Translation(m_vTarget);
    m_mMatrix = Orthonormalize(m_mMatrix * mAbout);
    SyncAngles();
}

void CEditorCamera::Pan(const CVec2& mouse)
{
    // The mouse comes in units of LOOK_WIDTH across the view; the scene stays under it.
    float fAspect = GetAspect();
    float fHeight = m_fOrthoSize;
    if (m_iView == VIEW_PERSPECTIVE)
    {
        float d = std::fabs(Dot(Forward(), GetPosition() - m_vTarget));
        fHeight = d * std::tan(ToRadians(m_fFov) * 0.5f) * 2.0f;
    }
    float fDx = -(mouse.x / LOOK_WIDTH * fHeight * fAspect);
    float fDy = mouse.y / (LOOK_WIDTH / fAspect) * fHeight;
    CVec3 vShift = Right() * fDx + Up() * fDy;
    m_mMatrix.SetTranslation(GetPosition() + vShift);
    m_vTarget += vShift;
}

void CEditorCamera::Dolly(float v)
{
    if (m_iView != VIEW_PERSPECTIVE)
    {
        m_fOrthoSize *= 1.0f - std::min(0.99f, v);
        return;
    }
    float d = std::fabs(Dot(Forward(), GetPosition() - m_vTarget));
    if (v < 0.0f)
    {
        // Away from a target the eye sits on, there is still some way to go.
        d = std::max(d, 1.0f);
    }
    m_mMatrix.SetTranslation(GetPosition() + Forward() * (d * v));
}

void CEditorCamera::EaseFov(float fDelta)
{
    if (m_fFovHoldTime > 0.0f)
    {
        m_fFovHoldTime -= fDelta;
    }
    if (m_fFov > m_fTargetFov)
    {
        m_fFov = std::max(m_fFov - (m_fFov - m_fTargetFov) * fDelta * 2.5f, m_fTargetFov);
    }
    else if (m_fFov < m_fTargetFov && m_fFovHoldTime <= 0.0f)
    {
        float fRate = m_fTargetFov - m_fFov > 13.0f ? 2.0f : 40.0f;
        m_fFov = std::min(m_fFov + fDelta * fRate, m_fTargetFov);
    }
}

void CEditorCamera::RebuildRotation()
{
    // Roll about the view direction, pitch about the right, yaw about world z.
    CVec3 vAngles{ToRadians(m_fRoll), ToRadians(m_fPitch), -ToRadians(m_fYaw)};
    CMatrix44 m = ZERO_ANGLE_FRAME * MatrixFromEuler(vAngles);
    m.SetTranslation(GetPosition());
    m_mMatrix = m;
}

void CEditorCamera::SyncAngles()
{
    CVec3 vAngles = EulerFromMatrix(Transpose(ZERO_ANGLE_FRAME) * m_mMatrix);
    m_fRoll = WrapDegrees(ToDegrees(vAngles.x));
    m_fPitch = WrapDegrees(ToDegrees(vAngles.y));
    m_fYaw = WrapDegrees(-ToDegrees(vAngles.z));
}

void CEditorCamera::RebuildMatrices()
{
    Inverse(m_effect.GetOffset() * m_mMatrix, m_mViewMatrix);
    float fAspect = GetAspect();
    if (m_iView == VIEW_PERSPECTIVE)
    {
        m_mProjMatrix = CMatrix44::PerspectiveFovLH(ToRadians(m_fFov), fAspect, m_fNear, m_fFar);
    }
    else
    {
        m_mProjMatrix = CMatrix44::OrthoLH(m_fOrthoSize * fAspect, m_fOrthoSize, 0.0f, ORTHO_FAR);
    }
    m_mViewProj = m_mViewMatrix * m_mProjMatrix;
}

void CEditorCamera::RetargetOnAxis()
{
    CVec3 vEye = GetPosition();
    float fDepth = std::max(Dot(m_vTarget - vEye, Forward()), 1.0f);
    m_vTarget = vEye + Forward() * fDepth;
}

void CEditorCamera::SetView(int32_t iView)
{
    if (iView < 0 || iView >= VIEW_COUNT)
    {
        return;
    }
    m_amViewMatrices[m_iView] = m_mMatrix;
    m_afViewOrthoSizes[m_iView] = m_fOrthoSize;
    m_iView = iView;
    m_mMatrix = m_amViewMatrices[iView];
    m_fOrthoSize = m_afViewOrthoSizes[iView];
    RetargetOnAxis();
    SyncAngles();
    RebuildMatrices();
}

void CEditorCamera::SetControl(int32_t iControl)
{
    if (iControl != CONTROL_FREE && iControl != CONTROL_TARGET)
    {
        return;
    }
    m_iControl = iControl;
    m_vMouse = {};
    m_fEasedWheel = 0.0f;
    if (iControl == CONTROL_FREE && m_iView != VIEW_PERSPECTIVE)
    {
        SetView(VIEW_PERSPECTIVE);
    }
    SyncAngles();
}

void CEditorCamera::ScreenRay(const CVec2& mouse, CVec3& outStart, CVec3& outDir) const
{
    float fW = static_cast<float>(m_iWidth), fH = static_cast<float>(m_iHeight);
    float fAspect = fW / fH;
    if (m_iView == VIEW_PERSPECTIVE)
    {
        float fTan = std::tan(ToRadians(m_fFov) * 0.5f);
        float x = (2.0f * mouse.x / fW - 1.0f) * fTan * fAspect;
        float y = (1.0f - 2.0f * mouse.y / fH) * fTan;
        outStart = GetPosition();
        outDir = Normalize(Forward() + Right() * x + Up() * y);
        return;
    }
    outStart = GetPosition() + Right() * ((mouse.x / fW - 0.5f) * m_fOrthoSize * fAspect) -
               Up() * ((mouse.y / fH - 0.5f) * m_fOrthoSize);
    outDir = Forward();
}

void CEditorCamera::Frame(const CBox3& box)
{
    if (box.IsEmpty())
    {
        return;
    }
    CVec3 c = box.Center();
    // A box without extent is framed as a unit sphere.
    float r = std::max(Length(box.Extent()) * 0.5f, 1.0f);
    float fAspect = GetAspect();
    CVec3 vEye = GetPosition();
    if (m_iView == VIEW_PERSPECTIVE)
    {
        float h = ToRadians(m_fFov) * 0.5f;
        if (fAspect < 1.0f)
        {
            h = std::atan(std::tan(h) * fAspect);
        }
        vEye = c - Forward() * (r / std::sin(h));
    }
    else
    {
        m_fOrthoSize = fAspect < 1.0f ? 2.0f * r / fAspect : 2.0f * r;
        // Centred on the box at the same depth, and never inside it.
        float fDepth = std::max(Dot(c - vEye, Forward()), r);
        vEye = c - Forward() * fDepth;
    }
    m_mMatrix.SetTranslation(vEye);
    m_vTarget = c;
    RebuildMatrices();
}

void CEditorCamera::LookAt(const CVec3& point)
{
    CVec3 vEye = GetPosition();
    CVec3 vLook = point - vEye;
    if (LengthSq(vLook) == 0.0f)
    {
        return;
    }
    // World up where it can be; straight up or down, the present up, or else the present
    // view direction, which is then the new up on screen.
    CVec3 vForward = Normalize(vLook);
    CVec3 vUp{0, 0, 1};
    for (const CVec3& vCandidate : {Up(), Forward()})
    {
        if (LengthSq(Cross(vUp, vForward)) >= 1e-6f)
        {
            break;
        }
        vUp = vCandidate;
    }
    m_mMatrix = MakeFrame(vEye, vLook, vUp);
    m_vTarget = point;
    SyncAngles();
    RebuildMatrices();
}

void CEditorCamera::SetFovHold(bool bHold, float fTime)
{
    m_fTargetFov = HOLD_FOV;
    m_fFovHoldTime = bHold ? fTime : -1.0f;
}

void CEditorCamera::SetViewport(int32_t iWidth, int32_t iHeight)
{
    if (iWidth <= 0 || iHeight <= 0)
    {
        return;
    }
    m_iWidth = iWidth;
    m_iHeight = iHeight;
    RebuildMatrices();
}

void CEditorCamera::SetPosition(const CVec3& vPosition)
{
    m_vTarget += vPosition - GetPosition();
    m_mMatrix.SetTranslation(vPosition);
    RebuildMatrices();
}

void CEditorCamera::SetAngles(float fYaw, float fPitch, float fRoll)
{
    float fTargetDistance = std::max(Length(m_vTarget - GetPosition()), 1.0f);
    m_fYaw = WrapDegrees(fYaw);
    m_fPitch = WrapDegrees(fPitch);
    m_fRoll = WrapDegrees(fRoll);
    RebuildRotation();
    m_vTarget = GetPosition() + Forward() * fTargetDistance;
    RebuildMatrices();
}

void CEditorCamera::SetFov(float fFov)
{
    m_fFov = fFov;
    m_fTargetFov = fFov;
    RebuildMatrices();
}

void CEditorCamera::SetNearFar(float fNear, float fFar)
{
    m_fNear = fNear;
    m_fFar = fFar;
    RebuildMatrices();
}

void CEditorCamera::SetOrthoSize(float fSize)
{
    if (fSize > 0.0f)
    {
        m_fOrthoSize = fSize;
        RebuildMatrices();
    }
}

void CEditorCamera::SetMatrix(const CMatrix44& m)
{
    m_mMatrix = Orthonormalize(m);
    RetargetOnAxis();
    SyncAngles();
    RebuildMatrices();
}
