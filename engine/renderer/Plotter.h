// The plotters' drawing surface: what editor overlays (gizmo, grid, entity markers) draw
// through. The 3D plotter takes lines and triangles in world space, the 2D plotter text and
// rectangles in window pixels; the renderer's plotters implement these and flush once a frame.
//
// Colours are 32-bit 0xAARRGGBB.
#pragma once

#include "engine/utility/Math.h"

#include <cstdint>
#include <string>
#include <vector>

namespace Kestrin::Plotter
{

class IPlotter3D
{
public:
    virtual ~IPlotter3D() = default;
    IPlotter3D(const IPlotter3D&) = delete;
    IPlotter3D& operator=(const IPlotter3D&) = delete;

    // Queues a line from a to b; it is drawn at the next flush.
    virtual void DrawLine(const Utility::CVec3& a, const Utility::CVec3& b, uint32_t uColor) = 0;
    // Queues a filled triangle, both faces visible.
    virtual void DrawTriangle(const Utility::CVec3& a, const Utility::CVec3& b, const Utility::CVec3& c,
                              uint32_t uColor) = 0;

protected:
    IPlotter3D() = default;
};

class IPlotter2D
{
public:
    virtual ~IPlotter2D() = default;
    IPlotter2D(const IPlotter2D&) = delete;
    IPlotter2D& operator=(const IPlotter2D&) = delete;

    // Queues pcText with its top-left corner at (x, y) pixels in the current font and height.
    // A null text draws nothing.
    virtual void DrawText(float x, float y, const char* pcText, uint32_t uColor) = 0;
    // Queues a filled rectangle of w by h pixels at (x, y); an empty one draws nothing.
    virtual void DrawRect(float x, float y, float w, float h, uint32_t uColor) = 0;

protected:
    IPlotter2D() = default;
};

// Draws nothing: for runs without a render device.
class CNullPlotter3D final : public IPlotter3D
{
public:
    void DrawLine(const Utility::CVec3&, const Utility::CVec3&, uint32_t) override {}
    void DrawTriangle(const Utility::CVec3&, const Utility::CVec3&, const Utility::CVec3&, uint32_t) override
    {
    }
};

class CNullPlotter2D final : public IPlotter2D
{
public:
    void DrawText(float, float, const char*, uint32_t) override {}
    void DrawRect(float, float, float, float, uint32_t) override {}
};

// Keeps every primitive in call order, so that headless checks can see what was drawn.
class CRecordingPlotter3D final : public IPlotter3D
{
public:
    struct CLine
    {
        Utility::CVec3 a, b;
        uint32_t uColor = 0;
    };
    struct CTriangle
    {
        Utility::CVec3 a, b, c;
        uint32_t uColor = 0;
    };

    void DrawLine(const Utility::CVec3& a, const Utility::CVec3& b, uint32_t uColor) override;
    void DrawTriangle(const Utility::CVec3& a, const Utility::CVec3& b, const Utility::CVec3& c,
                      uint32_t uColor) override;

    const std::vector<CLine>& GetLines() const { return m_lines; }
    const std::vector<CTriangle>& GetTriangles() const { return m_triangles; }
    // How many lines and triangles were drawn in uColor.
    size_t CountColor(uint32_t uColor) const;
    void Clear();

private:
    std::vector<CLine> m_lines;
    std::vector<CTriangle> m_triangles;
};

class CRecordingPlotter2D final : public IPlotter2D
{
public:
    struct CText
    {
        float x = 0.0f, y = 0.0f;
        std::string strText;
        uint32_t uColor = 0;
    };
    struct CRect
    {
        float x = 0.0f, y = 0.0f, w = 0.0f, h = 0.0f;
        uint32_t uColor = 0;
    };

    void DrawText(float x, float y, const char* pcText, uint32_t uColor) override;
    void DrawRect(float x, float y, float w, float h, uint32_t uColor) override;

    const std::vector<CText>& GetTexts() const { return m_texts; }
    const std::vector<CRect>& GetRects() const { return m_rects; }
    void Clear();

private:
    std::vector<CText> m_texts;
    std::vector<CRect> m_rects;
};

} // namespace Kestrin::Plotter
