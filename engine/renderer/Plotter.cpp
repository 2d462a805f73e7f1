#include "engine/renderer/Plotter.h"

namespace Kestrin::Plotter
{

void CRecordingPlotter3D::DrawLine(const Utility::CVec3& a, const Utility::CVec3& b, uint32_t uColor)
{
    m_lines.push_back({a, b, uColor});
}

void CRecordingPlotter3D::DrawTriangle(const Utility::CVec3& a, const Utility::CVec3& b,
                                       const Utility::CVec3& c, uint32_t uColor)
{
    m_triangles.push_back({a, b, c, uColor});
}

size_t CRecordingPlotter3D::CountColor(uint32_t uColor) const
{
    size_t nCount = 0;
    for (const CLine& line : m_lines)
    {
        nCount += line.uColor == uColor ? 1 : 0;
    }
    for (const CTriangle& tri : m_triangles)
    {
        nCount += tri.uColor == uColor ? 1 : 0;
    }
    return nCount;
}

void CRecordingPlotter3D::Clear()
{
    m_lines.clear();
    m_triangles.clear();
}

void CRecordingPlotter2D::DrawText(float x, float y, const char* pcText, uint32_t uColor)
{
    if (pcText)
    {
        m_texts.push_back({x, y, pcText, uColor});
    }
}

void CRecordingPlotter2D::DrawRect(float x, float y, float w, float h, uint32_t uColor)
{
    if (w > 0.0f && h > 0.0f)
    {
        m_rects.push_back({x, y, w, h, uColor});
    }
}

void CRecordingPlotter2D::Clear()
{
    m_texts.clear();
    m_rects.clear();
}

} // namespace Kestrin::Plotter
