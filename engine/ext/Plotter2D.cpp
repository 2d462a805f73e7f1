#include "engine/ext/Plotter2D.h"

#include <cstring>

namespace Kestrin::Plotter
{

bool CTextureFont::Initialize(const char* pcName)
{
    if (!pcName || !*pcName)
    {
        return false;
    }
    m_strName = pcName;
    return true;
}

bool CPlotter2D::Initialize(RenderDevice::IRenderDevice* pDevice)
{
    m_pDevice = pDevice;
    return pDevice != nullptr;
}

void CPlotter2D::SetViewport(int32_t iX, int32_t iY, int32_t iW, int32_t iH)
{
    (void)iX, (void)iY; // items are kept in client pixels; the origin is the client's
    m_frame.iWidth = iW;
    m_frame.iHeight = iH;
}

void CPlotter2D::DrawText(float fX, float fY, const char* pcText)
{
    DrawText(fX, fY, pcText, m_uColour);
}

void CPlotter2D::DrawText(float fX, float fY, const char* pcText, uint32_t uColour)
{
    if (!pcText || !*pcText)
    {
        return;
    }
    RenderDevice::SOverlayItem item;
    item.eKind = RenderDevice::SOverlayItem::KIND_TEXT;
    item.fX = fX;
    item.fY = fY;
    item.fHeight = m_fFontHeight;
    item.uColour = uColour;
    item.strText = pcText;
    m_frame.items.push_back(std::move(item));
}

void CPlotter2D::DrawRect(float fX, float fY, float fW, float fH, uint32_t uColour, bool bFilled)
{
    RenderDevice::SOverlayItem item;
    item.eKind =
        bFilled ? RenderDevice::SOverlayItem::KIND_FILLED_RECT : RenderDevice::SOverlayItem::KIND_RECT;
    item.fX = fX;
    item.fY = fY;
    item.fX2 = fW;
    item.fY2 = fH;
    item.uColour = uColour;
    m_frame.items.push_back(std::move(item));
}

void CPlotter2D::DrawLine(float fX1, float fY1, float fX2, float fY2, uint32_t uColour)
{
    RenderDevice::SOverlayItem item;
    item.eKind = RenderDevice::SOverlayItem::KIND_LINE;
    item.fX = fX1;
    item.fY = fY1;
    item.fX2 = fX2;
    item.fY2 = fY2;
    item.uColour = uColour;
    m_frame.items.push_back(std::move(item));
}

float CPlotter2D::TextWidth(const char* pcText) const
{
    const float fAdvance =
        m_pFont ? m_pFont->CharAdvance(m_fFontHeight) : CTextureFont::CHAR_ADVANCE * m_fFontHeight / 15.0f;
    return pcText ? fAdvance * static_cast<float>(strlen(pcText)) : 0.0f;
}

void CPlotter2D::Flush()
{
    if (m_pDevice)
    {
        m_pDevice->PresentOverlay(m_frame);
    }
    m_frame.items.clear();
}

} // namespace Kestrin::Plotter
