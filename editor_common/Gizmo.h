// CGizmo: the three-axis handle by which a selected object is moved, rotated and scaled.
//
// The gizmo keeps the object's transform split into an orthonormal matrix and a scale, and
// the view it is seen in. An editor drives it from its mouse messages:
//   left button down -> Begin(mouse), or BeginAt(mouse, hitPoint) after picking an object;
//   mouse move       -> Drag(mouse): hover test when idle, a drag step while dragging;
//   left button up   -> End().
// After a Drag that returned true, GetMatrix gives the object's new transform. SetView is
// called every frame with the camera's matrices; Draw paints the handles through the plotters.
//
// Each drag step is measured from the start of the drag, so snapping applies to the total.
#pragma once

#include "engine/renderer/Plotter.h"
#include "engine/utility/Geometry.h"

#include <cstdint>

class CGizmo
{
public:
    enum EMode : int32_t
    {
        MODE_SELECT = 0,
        MODE_MOVE = 1,
        MODE_ROTATE = 2,
        MODE_SCALE = 3,
    };
    enum ESpace : int32_t
    {
        SPACE_LOCAL = 0, // "Local": the object's axes
        SPACE_WORLD = 1, // "World": the world's axes
    };
    enum EAxis : int32_t
    {
        AXIS_NONE = -1,
        AXIS_CENTER = 0,
        AXIS_X = 1,
        AXIS_Y = 2,
        AXIS_Z = 3,
    };
    static constexpr int READOUT_LENGTH = 64;
    // The handle is this share of the view's height.
    static constexpr float HANDLE_SHARE = 0.12f;
    // Scale never goes below this in any component.
    static constexpr float MIN_SCALE = 0.01f;

    static constexpr uint32_t COLOR_X = 0xffff0000;
    static constexpr uint32_t COLOR_Y = 0xff00ff00;
    static constexpr uint32_t COLOR_Z = 0xff0000ff;
    static constexpr uint32_t COLOR_ACTIVE = 0xffffff00;
    static constexpr uint32_t COLOR_CENTER = 0xffffffff;

    CGizmo();
    virtual ~CGizmo() = default;

    void SetEnabled(bool bEnabled) { m_bEnabled = bEnabled ? 1 : 0; }
    bool IsEnabled() const { return m_bEnabled != 0; }
    // Out-of-range values are ignored.
    void SetMode(int32_t iMode);
    int32_t GetMode() const { return m_iMode; }
    void SetSpace(int32_t iSpace);
    int32_t GetSpace() const { return m_iSpace; }
    // Snap steps; 0 turns snapping off.
    void SetMoveSnap(float fStep) { m_fMoveSnap = fStep; }
    float GetMoveSnap() const { return m_fMoveSnap; }
    void SetRotateSnap(float fStepDegrees) { m_fRotateSnap = fStepDegrees; }
    float GetRotateSnap() const { return m_fRotateSnap; }

    // Takes the object's transform: the scale is split off the axes, which are made
    // orthonormal. A mirrored transform keeps its mirror as a negative x scale.
    void SetTransform(const Kestrin::Utility::CMatrix44& m);
    // The transform with the scale put back on the axes.
    void GetMatrix(Kestrin::Utility::CMatrix44& out) const;
    const Kestrin::Utility::CMatrix44& GetRotationMatrix() const { return m_mMatrix; }
    const Kestrin::Utility::CVec3& GetScale() const { return m_vScale; }

    // The camera's view and projection and the viewport in pixels; cheap when nothing changed.
    void SetView(const Kestrin::Utility::CMatrix44& view, const Kestrin::Utility::CMatrix44& proj,
                 const Kestrin::Utility::CVec2& viewSize);

    // Tests the handles under the mouse; true when one is taken and a drag has begun.
    bool Begin(const Kestrin::Utility::CVec2& mouse);
    // Starts a drag on the centre handle from a picked world point, with the drag plane
    // through it. False in mode Select or when disabled.
    bool BeginAt(const Kestrin::Utility::CVec2& mouse, const Kestrin::Utility::CVec3& point);
    // Idle: hover test, true when a handle is under the mouse or the hovered handle changed.
    // Dragging: one drag step, true when the transform changed.
    bool Drag(const Kestrin::Utility::CVec2& mouse);
    // The handle under the mouse (AXIS_CENTER to AXIS_Z), or AXIS_NONE; stored as hover.
    int32_t HoverAxis(const Kestrin::Utility::CVec2& mouse);
    void End();

    // Nothing when disabled, in mode Select, or before the handle has a size.
    void Draw(Kestrin::Plotter::IPlotter3D* pPlotter3D, Kestrin::Plotter::IPlotter2D* pPlotter2D) const;

    // The picking ray through a pixel of the view; the direction has unit length.
    Kestrin::Utility::CRay ScreenRay(const Kestrin::Utility::CVec2& mouse) const;
    // The handle's pick box; iHandle is AXIS_CENTER to AXIS_Z.
    Kestrin::Utility::COrientedBox GetHandleBox(int32_t iHandle) const;

    bool IsDragging() const { return m_bDragging != 0; }
    int32_t GetAxis() const { return m_iAxis; }
    int32_t GetHoverAxis() const { return m_iHoverAxis; }
    float GetSize() const { return m_fSize; }
    bool IsPerspective() const { return m_bPerspective != 0; }
    float GetFov() const { return m_fFov; }
    float GetOrthoHeight() const { return m_fOrthoHeight; }
    const Kestrin::Utility::CPlane& GetDragPlane() const { return m_plDragPlane; }
    const Kestrin::Utility::CVec3& GetStartPoint() const { return m_vStartPoint; }
    const char* GetReadout() const { return m_acReadout; }

private:
    struct CViewFrame
    {
        Kestrin::Utility::CVec3 vEye, vRight, vUp, vForward;
    };

    CViewFrame GetViewFrame() const;
    // The gizmo's axes: the object's in "Local", the world's in "World".
    void GetBasis(Kestrin::Utility::CVec3 (&aAxes)[3]) const;
    void UpdateSize();
    // The first handle the ray hits in the order 0, 1, 2, 3, or AXIS_NONE.
    int32_t Pick(const Kestrin::Utility::CRay& ray, float& outDistance) const;
    void StartDrag(const Kestrin::Utility::CVec2& mouse, const Kestrin::Utility::CVec3& point);
    bool DragStep(const Kestrin::Utility::CVec2& mouse);
    void StepMode(const Kestrin::Utility::CVec3& vMove);
    void StepMove(const Kestrin::Utility::CVec3& vMove);
    void StepRotate(const Kestrin::Utility::CVec3& vMove);
    void StepScale(const Kestrin::Utility::CVec3& vMove);
    uint32_t HandleColor(int32_t iHandle) const;
    void DrawAxis(Kestrin::Plotter::IPlotter3D* pPlotter, int32_t iHandle) const;
    void DrawCenter(Kestrin::Plotter::IPlotter3D* pPlotter) const;

    uint8_t m_bEnabled = 1;
    uint8_t m_bDragging = 0;
    int32_t m_iMode = MODE_SELECT;
    int32_t m_iSpace = SPACE_LOCAL;
    int32_t m_iAxis = AXIS_CENTER;
    int32_t m_iHoverAxis = AXIS_NONE;
    float m_fSize = 0.0f;
    Kestrin::Utility::CMatrix44 m_mMatrix;
    Kestrin::Utility::CVec3 m_vScale{1.0f, 1.0f, 1.0f};
    Kestrin::Utility::CMatrix44 m_mViewMatrix;
    Kestrin::Utility::CMatrix44 m_mProjectionMatrix;
    Kestrin::Utility::CMatrix44 m_mViewInverse;
    Kestrin::Utility::CVec2 m_vViewSize{800.0f, 600.0f};
    Kestrin::Utility::CVec3 m_vStartPoint;
    Kestrin::Utility::CPlane m_plDragPlane;
    Kestrin::Utility::CMatrix44 m_mStartMatrix;
    Kestrin::Utility::CVec3 m_vStartScale{1.0f, 1.0f, 1.0f};
    uint8_t m_bPerspective = 1;
    float m_fFov = 60.0f;
    float m_fOrthoHeight = 100.0f;
    char m_acReadout[READOUT_LENGTH] = {};
    Kestrin::Utility::CVec2 m_vMousePos;
    float m_fMoveSnap = 0.0f;
    float m_fRotateSnap = 0.0f;
};
