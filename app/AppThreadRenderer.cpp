#include "app/AppThreadRenderer.h"

#include "app/EditorApp.h"

namespace Ovrel
{

void CAppThreadRenderer::BuildRenderBuffer()
{
    m_pApp->BuildRenderBuffer();
}

void CAppThreadRenderer::SwapRenderBuffer()
{
    m_pApp->SwapRenderBuffer();
}

void CAppThreadRenderer::DrawRenderBuffer()
{
    m_pApp->DrawRenderBuffer();
}

void CAppThreadRenderer::DrawOverlay()
{
    m_pApp->DrawOverlay();
}

void CAppThreadRenderer::SwapDeviceBuffers()
{
    m_pApp->SwapDeviceBuffers();
}

void CAppThreadRenderer::OnDeviceReset()
{
    m_pApp->OnDeviceReset();
}

void CAppThreadRenderer::DrawPreviews()
{
    m_pApp->DrawPreviews();
}

void CAppThreadRenderer::PostBuild()
{
    m_pApp->PostBuild();
}

} // namespace Ovrel
