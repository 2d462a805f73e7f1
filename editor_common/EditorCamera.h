// CEditorCamera: the viewport camera of the editors, with its perspective view and seven
// orthographic views, flight ("Free") and orbit ("Target") control.
//
// The application's frame calls Update(delta, controlState) once a frame; the camera eases
// the mouse and wheel, moves, and rebuilds its view and projection. Editors read the matrices,
// pick with ScreenRay, and switch views with SetView.
//
// The camera's matrix is its world transform: row 0 right, row 1 up, row 2 the view direction,
// row 3 the eye. Angles are in degrees: lowering `yaw` turns right, raising `pitch` looks down.
#pragma once

#include "editor_common/ControlState.h"
#include "engine/utility/Math.h"

#include <cstdint>

// The camera-shake state: a shake started at a point fades with time and with the distance of
// the listening position; its offset moves the camera in its own plane.
class CCameraShake
{
public:
    // fAmplitude world units at vOrigin, fading to 0 over fDuration seconds and, when fRadius
    // is above 0, to 0 at fRadius from vOrigin; fFrequency swings per second.
    void Start(const Kestrin::Utility::CVec3& vOrigin, float fAmplitude, float fFrequency, float fDuration,
               float fRadius);
    void Stop();
    void Update(float fDelta, const Kestrin::Utility::CVec3& vPosition);
    bool IsActive() const { return m_fTime < m_fDuration; }
    // A translation in the camera's own axes; the identity when no shake runs.
    const Kestrin::Utility::CMatrix44& GetOffset() const { return m_mOffset; }

private:
    Kestrin::Utility::CVec3 m_vOrigin;
    float m_fAmplitude = 0.0f;
    float m_fFrequency = 0.0f;
    float m_fDuration = 0.0f;
    float m_fRadius = 0.0f;
    float m_fTime = 0.0f;
    Kestrin::Utility::CMatrix44 m_mOffset;
};

class CEditorCamera
{
public:
    enum EView : int32_t
    {
        VIEW_PERSPECTIVE = 0,
        VIEW_ORTHO = 1,
        VIEW_TOP = 2,
        VIEW_BOTTOM = 3,
        VIEW_FRONT = 4,
        VIEW_BACK = 5,
        VIEW_LEFT = 6,
        VIEW_RIGHT = 7,
        VIEW_COUNT = 8,
    };
    enum EControl : int32_t
    {
        CONTROL_FREE = 0,   // flight
        CONTROL_TARGET = 1, // orbit around `target`
    };
    // "Perspective", "Ortho", "Top", ...; null out of range.
    static const char* GetViewName(int32_t iView);
    // "Free" or "Target"; null out of range.
    static const char* GetControlName(int32_t iControl);

    static constexpr float VIEW_DISTANCE = 100000.0f; // of the stored orthographic views
    static constexpr float HOLD_FOV = 65.0f;          // SetFovHold's target
    static constexpr float ORTHO_FAR = 200000.0f;
    // The control state's mouse units across the view's width.
    static constexpr float LOOK_WIDTH = 800.0f;

    CEditorCamera();
    virtual ~CEditorCamera() = default;

    // One frame: ease the input, move by the control mode, ease the field of view, rebuild
    // the matrices. fDelta in seconds.
    void Update(float fDelta, const CControlState& input);

    // Stores the present matrix and ortho size in the present view's slot and takes those of
    // iView. Out-of-range values are ignored.
    void SetView(int32_t iView);
    int32_t GetView() const { return m_iView; }
    bool IsPerspective() const { return m_iView == VIEW_PERSPECTIVE; }
    // Resets the eased motion; flight returns to the perspective view. Out of range: ignored.
    void SetControl(int32_t iControl);
    int32_t GetControl() const { return m_iControl; }

    // The picking ray through the pixel `mouse` of the viewport; outDir has unit length.
    void ScreenRay(const Kestrin::Utility::CVec2& mouse, Kestrin::Utility::CVec3& outStart,
                   Kestrin::Utility::CVec3& outDir) const;
    // Frames the box, keeping the rotation ("&Zoom"). An empty box does nothing.
    void Frame(const Kestrin::Utility::CBox3& box);
    // Turns to face the point, keeping the position; the point becomes the target.
    void LookAt(const Kestrin::Utility::CVec3& point);
    // Widens the field of view to HOLD_FOV: with bHold after fTime seconds, else at once.
    void SetFovHold(bool bHold, float fTime);

    // The viewport in pixels; sizes of 0 or less are ignored.
    void SetViewport(int32_t iWidth, int32_t iHeight);
    int32_t GetWidth() const { return m_iWidth; }
    int32_t GetHeight() const { return m_iHeight; }
    float GetAspect() const { return static_cast<float>(m_iWidth) / static_cast<float>(m_iHeight); }

    // The property window's values.
    void SetPosition(const Kestrin::Utility::CVec3& vPosition);
    Kestrin::Utility::CVec3 GetPosition() const { return m_mMatrix.GetTranslation(); }
    void SetAngles(float fYaw, float fPitch, float fRoll);
    float GetYaw() const { return m_fYaw; }
    float GetPitch() const { return m_fPitch; }
    float GetRoll() const { return m_fRoll; }
    void SetSpeed(float fSpeed) { m_fSpeed = fSpeed; }
    float GetSpeed() const { return m_fSpeed; }
    // Sets the field of view and its target, in degrees.
    void SetFov(float fFov);
    float GetFov() const { return m_fFov; }
    float GetTargetFov() const { return m_fTargetFov; }
    float GetFovHoldTime() const { return m_fFovHoldTime; }
    void SetNearFar(float fNear, float fFar);
    float GetNear() const { return m_fNear; }
    float GetFar() const { return m_fFar; }
    void SetOrthoSize(float fSize);
    float GetOrthoSize() const { return m_fOrthoSize; }
    // Replaces the world transform (rows right, up, view direction, eye); it is made orthonormal.
    void SetMatrix(const Kestrin::Utility::CMatrix44& m);

    const Kestrin::Utility::CMatrix44& GetMatrix() const { return m_mMatrix; }
    const Kestrin::Utility::CMatrix44& GetViewMatrix() const { return m_mViewMatrix; }
    const Kestrin::Utility::CMatrix44& GetProjMatrix() const { return m_mProjMatrix; }
    const Kestrin::Utility::CMatrix44& GetViewProj() const { return m_mViewProj; }
    const Kestrin::Utility::CVec3& GetTarget() const { return m_vTarget; }
    // The matrix and ortho size stored for a view (the present view's are the live ones).
    const Kestrin::Utility::CMatrix44& GetStoredMatrix(int32_t iView) const;
    float GetStoredOrthoSize(int32_t iView) const;
    float GetFrameDelta() const { return m_fFrameDelta; }
    const Kestrin::Utility::CVec2& GetEasedMouse() const { return m_vMouse; }
    float GetEasedWheel() const { return m_fEasedWheel; }
    // This frame's wheel as it came in, in notches.
    float GetWheel() const { return m_fWheel; }
    CCameraShake& GetShake() { return m_effect; }

private:
    void FlightStep(const CControlState& input);
    void OrbitStep();
    void Orbit(const Kestrin::Utility::CVec2& mouse);
    void Pan(const Kestrin::Utility::CVec2& mouse);
    // Moves toward the target by the share v of its distance (perspective) or shrinks the
    // ortho size by it; a negative v moves away.
    void Dolly(float v);
    void EaseFov(float fDelta);
    void RebuildRotation();
    void SyncAngles();
    void RebuildMatrices();
    // The target put back on the line of sight, at least one unit ahead.
    void RetargetOnAxis();
    Kestrin::Utility::CVec3 Right() const { return m_mMatrix.Row(0); }
    Kestrin::Utility::CVec3 Up() const { return m_mMatrix.Row(1); }
    Kestrin::Utility::CVec3 Forward() const { return m_mMatrix.Row(2); }

    float m_fFov = 50.0f;
    float m_fNear = 2.0f;
    float m_fFar = 500000.0f;
    float m_fYaw = 0.0f;
    float m_fPitch = 0.0f;
    float m_fRoll = 0.0f;
    float m_fSpeed = 200.0f;
    float m_fOrthoSize = 300.0f;
    float m_fTargetFov = 50.0f;
    int32_t m_iWidth = 800;
    int32_t m_iHeight = 600;
    Kestrin::Utility::CMatrix44 m_mMatrix;
    Kestrin::Utility::CMatrix44 m_mViewMatrix;
    Kestrin::Utility::CMatrix44 m_mProjMatrix;
    Kestrin::Utility::CMatrix44 m_mViewProj;
    int32_t m_iView = VIEW_PERSPECTIVE;
    Kestrin::Utility::CMatrix44 m_amViewMatrices[VIEW_COUNT];
    float m_afViewOrthoSizes[VIEW_COUNT];
    int32_t m_iControl = CONTROL_TARGET;
    float m_fFrameDelta = 1.0f / 60.0f;
    // Input snapshot: eased mouse, raw and eased wheel, buttons (left, right, middle) and
    // modifiers (control, shift, alt).
    Kestrin::Utility::CVec2 m_vMouse;
    float m_fWheel = 0.0f;
    float m_fEasedWheel = 0.0f;
    uint8_t m_abButtons[3] = {};
    uint8_t m_abModifiers[3] = {};
    CCameraShake m_effect;
    float m_fFovHoldTime = 0.0f;
    Kestrin::Utility::CVec3 m_vTarget;
};
