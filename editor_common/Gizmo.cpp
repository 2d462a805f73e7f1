#include "editor_common/Gizmo.h"

#include <algorithm>
#include <cmath>
#include <cstdio>

using namespace Kestrin::Utility;
using Kestrin::Plotter::IPlotter2D;
using Kestrin::Plotter::IPlotter3D;

namespace
{
// The nearest multiple of fStep; a step of 0 leaves the value.
float Snap(float fValue, float fStep)
{
    return fStep == 0.0f ? fValue : std::round(fValue / fStep) * fStep;
}

// Radians snapped in degrees: the rotate snap is a step in degrees.
float SnapRadians(float fRadians, float fStepDegrees)
{
    return ToRadians(Snap(ToDegrees(fRadians), fStepDegrees));
}

// Rotation by r about the point p: translate p to the origin, rotate, translate back.
CMatrix44 AboutPoint(const CMatrix44& r, const CVec3& p)
{
    return CMatrix44::Translation(-p) * r * CMatrix44::Translation(p);
}

// The angle of a rotation matrix in degrees.
float RotationAngleDegrees(const CMatrix44& r)
{
    float fCos = (r.m[0][0] + r.m[1][1] + r.m[2][2] - 1.0f) * 0.5f;
    return ToDegrees(std::acos(std::clamp(fCos, -1.0f, 1.0f)));
}

constexpr float ROTATE_RATE = 0.05f;   // radians per world unit of drag
constexpr float SCALE_RATE = 0.3f;     // scale per handle size of drag
constexpr float ROTATE_PLANE = 100.0f; // distance of the rotate drag plane before the eye
} // namespace

CGizmo::CGizmo() = default;

void CGizmo::SetMode(int32_t iMode)
{
    if (iMode >= MODE_SELECT && iMode <= MODE_SCALE)
    {
        m_iMode = iMode;
    }
}

void CGizmo::SetSpace(int32_t iSpace)
{
    if (iSpace == SPACE_LOCAL || iSpace == SPACE_WORLD)
    {
        m_iSpace = iSpace;
    }
}

void CGizmo::SetTransform(const CMatrix44& m)
{
    CVec3 vScale{Length(m.Row(0)), Length(m.Row(1)), Length(m.Row(2))};
    CMatrix44 mAxes = m;
    if (Determinant(m) < 0.0f)
    {
        vScale.x = -vScale.x;
        mAxes.SetRow(0, -m.Row(0));
    }
    m_vScale = vScale;
    m_mMatrix = Orthonormalize(mAxes);
    UpdateSize();
}

void CGizmo::GetMatrix(CMatrix44& out) const
{
    out = m_mMatrix;
    for (int i = 0; i < 3; ++i)
    {
        out.SetRow(i, m_mMatrix.Row(i) * m_vScale[i]);
    }
}

void CGizmo::SetView(const CMatrix44& view, const CMatrix44& proj, const CVec2& viewSize)
{
    if (view == m_mViewMatrix && proj == m_mProjectionMatrix && viewSize == m_vViewSize)
    {
        return;
    }
    m_mViewMatrix = view;
    m_mProjectionMatrix = proj;
    m_vViewSize = viewSize;
    m_mViewInverse = Inverse(view);
    // An orthographic projection keeps w = 1: its fourth column is (0, 0, 0, 1).
    bool bOrtho =
        proj.m[0][3] == 0.0f && proj.m[1][3] == 0.0f && proj.m[2][3] == 0.0f && proj.m[3][3] == 1.0f;
    m_bPerspective = bOrtho ? 0 : 1;
    if (proj.m[1][1] != 0.0f)
    {
        if (m_bPerspective)
        {
            m_fFov = ToDegrees(2.0f * std::atan(1.0f / proj.m[1][1]));
        }
        else
        {
            m_fOrthoHeight = 2.0f / proj.m[1][1];
        }
    }
    UpdateSize();
}

void CGizmo::UpdateSize()
{
    float fAspect = m_vViewSize.y > 0.0f ? m_vViewSize.x / m_vViewSize.y : 1.0f;
    if (m_bPerspective)
    {
        CVec3 vOrigin = m_mMatrix.GetTranslation();
        CVec4 vClip =
            Transform(CVec4{vOrigin.x, vOrigin.y, vOrigin.z, 1.0f}, m_mViewMatrix * m_mProjectionMatrix);
        float w = std::max(vClip.w, 1.0f);
        float h = ToRadians(m_fFov) * 0.5f;
        if (fAspect < 1.0f)
        {
            h = std::atan(std::tan(h) * fAspect);
        }
        m_fSize = std::tan(h) * w * 2.0f * HANDLE_SHARE;
    }
    else
    {
        m_fSize = m_fOrthoHeight * HANDLE_SHARE * (fAspect < 1.0f ? fAspect : 1.0f);
    }
}

CGizmo::CViewFrame CGizmo::GetViewFrame() const
{
    return {m_mViewInverse.GetTranslation(), Normalize(m_mViewInverse.Row(0)),
            Normalize(m_mViewInverse.Row(1)), Normalize(m_mViewInverse.Row(2))};
}

void CGizmo::GetBasis(CVec3 (&aAxes)[3]) const
{
    for (int i = 0; i < 3; ++i)
    {
        aAxes[i] = m_iSpace == SPACE_LOCAL ? m_mMatrix.Row(i) : CMatrix44::Identity().Row(i);
    }
}

CRay CGizmo::ScreenRay(const CVec2& mouse) const
{
    CViewFrame frame = GetViewFrame();
    float fW = m_vViewSize.x > 0.0f ? m_vViewSize.x : 1.0f;
    float fH = m_vViewSize.y > 0.0f ? m_vViewSize.y : 1.0f;
    if (m_bPerspective)
    {
        // Through the pixel: undo the projection's scales on the view's axes.
        float fX = (2.0f * mouse.x / fW - 1.0f) / m_mProjectionMatrix.m[0][0];
        float fY = (1.0f - 2.0f * mouse.y / fH) / m_mProjectionMatrix.m[1][1];
        return {frame.vEye, Normalize(frame.vForward + frame.vRight * fX + frame.vUp * fY)};
    }
    float fAspect = fW / fH;
    CVec3 vStart = frame.vEye + frame.vRight * ((mouse.x / fW - 0.5f) * m_fOrthoHeight * fAspect) -
                   frame.vUp * ((mouse.y / fH - 0.5f) * m_fOrthoHeight);
    return {vStart, frame.vForward};
}

COrientedBox CGizmo::GetHandleBox(int32_t iHandle) const
{
    float s = m_fSize;
    float t = s * 0.06f;
    COrientedBox box;
    GetBasis(box.vAxis);
    box.vCenter = m_mMatrix.GetTranslation();
    switch (iHandle)
    {
        case AXIS_CENTER:
            // The Move centre is a flat plate in the x-y plane, so a drag on it stays level.
            box.vHalf = m_iMode == MODE_MOVE ? CVec3{0.4f * s, 0.4f * s, 0.1f * t}
                                             : CVec3{0.4f * s, 0.4f * s, 0.4f * s};
            break;
        case AXIS_X:
            box.vCenter += box.vAxis[0] * s;
            box.vHalf = {s, t, t};
            break;
        case AXIS_Y:
            box.vCenter += box.vAxis[1] * s;
            box.vHalf = {t, s, t};
            break;
        default:
            box.vCenter += box.vAxis[2] * s;
            box.vHalf = {t, t, s};
            break;
    }
    return box;
}

int32_t CGizmo::Pick(const CRay& ray, float& outDistance) const
{
    if (m_fSize <= 0.0f)
    {
        return AXIS_NONE;
    }
    for (int32_t iHandle = AXIS_CENTER; iHandle <= AXIS_Z; ++iHandle)
    {
        if (IntersectRayBox(ray, GetHandleBox(iHandle), outDistance))
        {
            return iHandle;
        }
    }
    return AXIS_NONE;
}

bool CGizmo::Begin(const CVec2& mouse)
{
    if (!m_bEnabled || m_iMode == MODE_SELECT)
    {
        return false;
    }
    CRay ray = ScreenRay(mouse);
    float fDistance = 0.0f;
    int32_t iHandle = Pick(ray, fDistance);
    if (iHandle == AXIS_NONE)
    {
        return false;
    }
    m_iAxis = iHandle;
    StartDrag(mouse, ray.At(fDistance));
    return true;
}

bool CGizmo::BeginAt(const CVec2& mouse, const CVec3& point)
{
    if (!m_bEnabled || m_iMode == MODE_SELECT)
    {
        return false;
    }
    m_iAxis = AXIS_CENTER;
    StartDrag(mouse, point);
    return true;
}

void CGizmo::StartDrag(const CVec2& mouse, const CVec3& point)
{
    m_bDragging = 1;
    m_vMousePos = mouse;
    m_vStartPoint = point;
    m_mStartMatrix = m_mMatrix;
    m_vStartScale = m_vScale;
    m_acReadout[0] = '\0';
    CViewFrame frame = GetViewFrame();
    if (m_iMode == MODE_ROTATE)
    {
        // A plane facing the camera a fixed way in front of it: drags turn by screen motion.
        m_plDragPlane = PlaneFromPointNormal(frame.vEye + frame.vForward * ROTATE_PLANE, frame.vForward);
        float t = 0.0f;
        CRay ray = ScreenRay(mouse);
        if (IntersectRayPlane(ray, m_plDragPlane, t))
        {
            m_vStartPoint = ray.At(t);
        }
        return;
    }
    CVec3 aBasis[3];
    GetBasis(aBasis);
    CVec3 vNormal;
    if (m_iAxis == AXIS_CENTER)
    {
        vNormal = m_iMode == MODE_MOVE ? aBasis[2] : frame.vForward;
    }
    else
    {
        // The plane holding the axis that faces the camera the most.
        const CVec3& vAxis = aBasis[m_iAxis - 1];
        vNormal = Normalize(Cross(vAxis, Cross(vAxis, frame.vForward)));
        if (LengthSq(vNormal) < 0.5f)
        {
            // The axis points into the view; any plane holding it is edge-on.
            vNormal = Normalize(Cross(vAxis, Cross(vAxis, frame.vUp)));
        }
    }
    m_plDragPlane = PlaneFromPointNormal(point, vNormal);
}

int32_t CGizmo::HoverAxis(const CVec2& mouse)
{
    float fDistance = 0.0f;
    m_iHoverAxis = (m_bEnabled && m_iMode != MODE_SELECT) ? Pick(ScreenRay(mouse), fDistance) : AXIS_NONE;
    return m_iHoverAxis;
}

bool CGizmo::Drag(const CVec2& mouse)
{
    if (m_iMode == MODE_SELECT || !m_bEnabled)
    {
        m_acReadout[0] = '\0';
        m_iHoverAxis = AXIS_NONE;
        return false;
    }
    if (!m_bDragging)
    {
        int32_t iOld = m_iHoverAxis;
        int32_t iNew = HoverAxis(mouse);
        return iNew != AXIS_NONE || iNew != iOld;
    }
    return DragStep(mouse);
}

void CGizmo::End()
{
    m_bDragging = 0;
    m_acReadout[0] = '\0';
}

bool CGizmo::DragStep(const CVec2& mouse)
{
    m_vMousePos = mouse;
    CRay ray = ScreenRay(mouse);
    float t = 0.0f;
    if (!IntersectRayPlane(ray, m_plDragPlane, t))
    {
        return false;
    }
    CVec3 vMove = ray.At(t) - m_vStartPoint;
    CMatrix44 mOld = m_mMatrix;
    CVec3 vOldScale = m_vScale;
    if (Length(vMove) == 0.0f)
    {
        // Back on the start point: the drag's total is nothing.
        m_mMatrix = m_mStartMatrix;
        m_vScale = m_vStartScale;
        m_acReadout[0] = '\0';
    }
    else
    {
        StepMode(vMove);
    }
    if (m_mMatrix == mOld && m_vScale == vOldScale)
    {
        return false;
    }
    if (!(m_mMatrix.GetTranslation() == mOld.GetTranslation()))
    {
        UpdateSize();
    }
    return true;
}

void CGizmo::StepMode(const CVec3& vMove)
{
    switch (m_iMode)
    {
        case MODE_MOVE:
            StepMove(vMove);
            break;
        case MODE_ROTATE:
            StepRotate(vMove);
            break;
        default:
            StepScale(vMove);
            break;
    }
}

void CGizmo::StepMove(const CVec3& vMove)
{
    CVec3 vDisplacement;
    if (m_iAxis == AXIS_CENTER)
    {
        vDisplacement = {Snap(vMove.x, m_fMoveSnap), Snap(vMove.y, m_fMoveSnap), Snap(vMove.z, m_fMoveSnap)};
    }
    else
    {
        CVec3 aBasis[3];
        GetBasis(aBasis);
        const CVec3& vAxis = aBasis[m_iAxis - 1];
        vDisplacement = vAxis * Snap(Dot(vMove, vAxis), m_fMoveSnap);
    }
    m_mMatrix = m_mStartMatrix;
    m_mMatrix.SetTranslation(m_mStartMatrix.GetTranslation() + vDisplacement);
    snprintf(m_acReadout, sizeof(m_acReadout), "(%.2f, %.2f, %.2f)", vDisplacement.x, vDisplacement.y,
             vDisplacement.z);
}

void CGizmo::StepRotate(const CVec3& vMove)
{
    CViewFrame frame = GetViewFrame();
    float fRight = SnapRadians(Dot(vMove, frame.vRight) * ROTATE_RATE, m_fRotateSnap);
    float fUp = SnapRadians(Dot(vMove, frame.vUp) * ROTATE_RATE, m_fRotateSnap);
    CVec3 vPosition = m_mStartMatrix.GetTranslation();
    CMatrix44 mRotation;
    if (m_iAxis == AXIS_CENTER)
    {
        // A trackball: sideways turns about the view's up, up and down about its right.
        mRotation = CMatrix44::RotationAxis(frame.vUp, fRight) * CMatrix44::RotationAxis(frame.vRight, -fUp);
        m_mMatrix = m_mStartMatrix * AboutPoint(mRotation, vPosition);
    }
    else
    {
        mRotation = m_iAxis == AXIS_X   ? CMatrix44::RotationX(fUp)
                    : m_iAxis == AXIS_Y ? CMatrix44::RotationY(fUp)
                                        : CMatrix44::RotationZ(fUp);
        // On the left a turn is about the object's own axis; on the right about the world's.
        m_mMatrix = m_iSpace == SPACE_LOCAL ? mRotation * m_mStartMatrix
                                            : m_mStartMatrix * AboutPoint(mRotation, vPosition);
    }
    m_mMatrix = Orthonormalize(m_mMatrix);
    snprintf(m_acReadout, sizeof(m_acReadout), "(%.2f)", RotationAngleDegrees(mRotation));
}

void CGizmo::StepScale(const CVec3& vMove)
{
    CViewFrame frame = GetViewFrame();
    float k = SCALE_RATE / m_fSize;
    if (m_iSpace == SPACE_WORLD || m_iAxis == AXIS_CENTER)
    {
        m_vScale = m_vStartScale * (k * Dot(vMove, frame.vUp) + 1.0f);
    }
    else
    {
        CVec3 aBasis[3];
        GetBasis(aBasis);
        int i = m_iAxis - 1;
        m_vScale = m_vStartScale;
        m_vScale[i] = (k * Dot(vMove, aBasis[i]) + 1.0f) * m_vStartScale[i];
    }
    for (int i = 0; i < 3; ++i)
    {
        m_vScale[i] = std::max(m_vScale[i], MIN_SCALE);
    }
    snprintf(m_acReadout, sizeof(m_acReadout), "(%.2f, %.2f, %.2f)", m_vScale.x, m_vScale.y, m_vScale.z);
}

// ---------------------------------------------------------------------------------------
// Drawing

uint32_t CGizmo::HandleColor(int32_t iHandle) const
{
    if ((m_bDragging && m_iAxis == iHandle) || (!m_bDragging && m_iHoverAxis == iHandle))
    {
        return COLOR_ACTIVE;
    }
    static constexpr uint32_t aColors[] = {COLOR_CENTER, COLOR_X, COLOR_Y, COLOR_Z};
    return aColors[iHandle];
}

namespace
{
constexpr int CIRCLE_SEGMENTS = 32;
constexpr int CONE_SEGMENTS = 8;

void DrawCircle(IPlotter3D* pPlotter, const CVec3& c, const CVec3& u, const CVec3& v, float r, int nSegments,
                uint32_t uColor)
{
    CVec3 vPrev = c + u * r;
    for (int i = 1; i <= nSegments; ++i)
    {
        float a = 2.0f * PI * static_cast<float>(i) / static_cast<float>(nSegments);
        CVec3 vNext = c + u * (r * std::cos(a)) + v * (r * std::sin(a));
        pPlotter->DrawLine(vPrev, vNext, uColor);
        vPrev = vNext;
    }
}

// The twelve edges of a box with centre c and half axes a[0..2].
void DrawBoxEdges(IPlotter3D* pPlotter, const CVec3& c, const CVec3 (&a)[3], uint32_t uColor)
{
    for (int i = 0; i < 3; ++i)
    {
        const CVec3& e = a[i];
        const CVec3& u = a[(i + 1) % 3];
        const CVec3& v = a[(i + 2) % 3];
        for (float su : {-1.0f, 1.0f})
        {
            for (float sv : {-1.0f, 1.0f})
            {
                CVec3 p = c + u * su + v * sv;
                pPlotter->DrawLine(p - e, p + e, uColor);
            }
        }
    }
}
} // namespace

void CGizmo::DrawAxis(IPlotter3D* pPlotter, int32_t iHandle) const
{
    CVec3 aBasis[3];
    GetBasis(aBasis);
    float s = m_fSize;
    uint32_t uColor = HandleColor(iHandle);
    CVec3 vOrigin = m_mMatrix.GetTranslation();
    const CVec3& vAxis = aBasis[iHandle - 1];
    const CVec3& u = aBasis[iHandle % 3];
    const CVec3& v = aBasis[(iHandle + 1) % 3];
    CVec3 vTip = vOrigin + vAxis * s;
    pPlotter->DrawLine(vOrigin, vTip, uColor);
    if (m_iMode == MODE_MOVE)
    {
        // A cone from the tip, as a fan of triangles.
        CVec3 vApex = vTip + vAxis * (0.25f * s);
        float r = 0.08f * s;
        for (int i = 0; i < CONE_SEGMENTS; ++i)
        {
            float a0 = 2.0f * PI * static_cast<float>(i) / CONE_SEGMENTS;
            float a1 = 2.0f * PI * static_cast<float>(i + 1) / CONE_SEGMENTS;
            CVec3 p0 = vTip + u * (r * std::cos(a0)) + v * (r * std::sin(a0));
            CVec3 p1 = vTip + u * (r * std::cos(a1)) + v * (r * std::sin(a1));
            pPlotter->DrawTriangle(p0, p1, vApex, uColor);
        }
    }
    else if (m_iMode == MODE_ROTATE)
    {
        DrawCircle(pPlotter, vOrigin, u, v, s, CIRCLE_SEGMENTS, uColor);
    }
    else
    {
        float h = 0.06f * s;
        CVec3 aHalf[3] = {aBasis[0] * h, aBasis[1] * h, aBasis[2] * h};
        DrawBoxEdges(pPlotter, vTip, aHalf, uColor);
    }
}

void CGizmo::DrawCenter(IPlotter3D* pPlotter) const
{
    COrientedBox box = GetHandleBox(AXIS_CENTER);
    uint32_t uColor = HandleColor(AXIS_CENTER);
    if (m_iMode == MODE_MOVE)
    {
        // The plate: a square in the gizmo's x-y plane.
        CVec3 x = box.vAxis[0] * box.vHalf.x, y = box.vAxis[1] * box.vHalf.y;
        CVec3 aCorners[4] = {box.vCenter - x - y, box.vCenter + x - y, box.vCenter + x + y,
                             box.vCenter - x + y};
        for (int i = 0; i < 4; ++i)
        {
            pPlotter->DrawLine(aCorners[i], aCorners[(i + 1) % 4], uColor);
        }
    }
    else if (m_iMode == MODE_ROTATE)
    {
        // The trackball: a circle facing the camera.
        CViewFrame frame = GetViewFrame();
        DrawCircle(pPlotter, box.vCenter, frame.vRight, frame.vUp, box.vHalf.x, CIRCLE_SEGMENTS, uColor);
    }
    else
    {
        CVec3 aHalf[3] = {box.vAxis[0] * box.vHalf.x, box.vAxis[1] * box.vHalf.y, box.vAxis[2] * box.vHalf.z};
        DrawBoxEdges(pPlotter, box.vCenter, aHalf, uColor);
    }
}

void CGizmo::Draw(IPlotter3D* pPlotter3D, IPlotter2D* pPlotter2D) const
{
    if (!m_bEnabled || m_iMode == MODE_SELECT || m_fSize <= 0.0f)
    {
        return;
    }
    if (pPlotter3D)
    {
        DrawCenter(pPlotter3D);
        for (int32_t iHandle = AXIS_X; iHandle <= AXIS_Z; ++iHandle)
        {
            DrawAxis(pPlotter3D, iHandle);
        }
    }
    if (pPlotter2D && m_bDragging && m_acReadout[0])
    {
        pPlotter2D->DrawText(m_vMousePos.x + 15.0f, m_vMousePos.y + 10.0f, m_acReadout, COLOR_CENTER);
    }
}
