// The 2D plotter: screen text and rectangles, gathered through a frame and flushed once.
// CTextureFont is the built-in fixed-height screen font ("FontMingLiu15", 15 pixels high,
// fixed advance). The device draws a flushed frame; a device that draws nothing hands it to
// its window, which shows it in software.
//
// Thread contract: the main thread draws and flushes (in the overlay step of the frame).
#pragma once

#include "engine/render_device/RenderDevice.h"

#include <string>

namespace Kestrin::Plotter
{

class CTextureFont
{
public:
    static constexpr float DEFAULT_HEIGHT = 15.0f;
    static constexpr float CHAR_ADVANCE = 8.0f; // pixels at the default height

    CTextureFont() = default;
    virtual ~CTextureFont() = default;
    CTextureFont(const CTextureFont&) = delete;
    CTextureFont& operator=(const CTextureFont&) = delete;

    // Takes the built-in glyph table under that name. False for an empty name.
    bool Initialize(const char* pcName);
    const std::string& GetName() const { return m_strName; }
    // The advance of one character at a height.
    float CharAdvance(float fHeight) const { return CHAR_ADVANCE * fHeight / DEFAULT_HEIGHT; }

private:
    std::string m_strName;
};

class CPlotter2D
{
public:
    CPlotter2D() = default;
    virtual ~CPlotter2D() = default;
    CPlotter2D(const CPlotter2D&) = delete;
    CPlotter2D& operator=(const CPlotter2D&) = delete;

    // Takes the device the frames are flushed to (not owned).
    bool Initialize(RenderDevice::IRenderDevice* pDevice);
    void SetViewport(int32_t iX, int32_t iY, int32_t iW, int32_t iH);
    void SetFont(CTextureFont* pFont) { m_pFont = pFont; }
    CTextureFont* GetFont() const { return m_pFont; }
    void SetFontHeight(float fHeight) { m_fFontHeight = fHeight; }
    float GetFontHeight() const { return m_fFontHeight; }
    void SetColour(uint32_t uColour) { m_uColour = uColour; }

    // Text at a point (its top left), in the current colour or the one given.
    void DrawText(float fX, float fY, const char* pcText);
    void DrawText(float fX, float fY, const char* pcText, uint32_t uColour);
    void DrawRect(float fX, float fY, float fW, float fH, uint32_t uColour, bool bFilled);
    void DrawLine(float fX1, float fY1, float fX2, float fY2, uint32_t uColour);
    // The width of a text in the current font and height.
    float TextWidth(const char* pcText) const;

    // Hands the gathered frame to the device and starts a new one.
    void Flush();
    // The frame gathered so far (for tests).
    const RenderDevice::SOverlayFrame& Pending() const { return m_frame; }

private:
    RenderDevice::IRenderDevice* m_pDevice = nullptr;
    RenderDevice::SOverlayFrame m_frame;
    CTextureFont* m_pFont = nullptr;
    float m_fFontHeight = CTextureFont::DEFAULT_HEIGHT;
    uint32_t m_uColour = 0xffffff;
};

} // namespace Kestrin::Plotter
