// Ovrel::CAppThreadRenderer: the application's frame scheduler. Each override forwards to
// the method of CEditorApp of the same purpose.
#pragma once

#include "engine/ext/ThreadRenderer.h"

namespace Ovrel
{

class CEditorApp;

class CAppThreadRenderer final : public Kestrin::Ext::CThreadRenderer
{
public:
    CAppThreadRenderer(CEditorApp* pApp, Kestrin::RenderDevice::IRenderDevice* pDevice)
        : CThreadRenderer(pDevice), m_pApp(pApp)
    {
    }
    ~CAppThreadRenderer() override { Stop(); }

    void BuildRenderBuffer() override;
    void SwapRenderBuffer() override;
    void DrawRenderBuffer() override;
    void BeginSceneHook() override {}
    void DrawOverlay() override;
    void SwapDeviceBuffers() override;
    void OnDeviceReset() override;
    void DrawPreviews() override;
    void PostBuild() override;

private:
    CEditorApp* m_pApp; // not owned
};

} // namespace Ovrel
