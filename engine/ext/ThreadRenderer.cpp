#include "engine/ext/ThreadRenderer.h"

#include "engine/render_device/RenderDevice.h"

namespace Kestrin::Ext
{

void CRenderThread::Run()
{
    m_pOwner->_RenderThreadBody();
}

CThreadRenderer::CThreadRenderer(RenderDevice::IRenderDevice* pDevice) : m_thread(this), m_pDevice(pDevice) {}

CThreadRenderer::~CThreadRenderer()
{
    Stop();
}

RenderDevice::IRenderDevice* CThreadRenderer::_Device() const
{
    return m_pDevice ? m_pDevice : RenderDevice::GetRenderDevice();
}

// ---------------------------------------------------------------------------------------
// Start and stop

void CThreadRenderer::Start()
{
    if (m_thread.IsStarted())
    {
        return;
    }
    m_bQuit = false;
    _Device()->EnableLocking(true);
    m_thread.Start();
    m_drawDone.Set();
}

void CThreadRenderer::Stop()
{
    if (!m_thread.IsStarted())
    {
        return;
    }
    m_bQuit = true;
    m_frameReady.Set();
    m_drawStarted.Set();
    m_thread.Join();
    RenderDevice::IRenderDevice* pDevice = _Device();
    pDevice->Lock();
    _EndOpenScene(pDevice);
    pDevice->Unlock();
    pDevice->EnableLocking(false);
    m_bDrawPending = false;
}

void CThreadRenderer::_RenderThreadBody()
{
    RenderDevice::IRenderDevice* pDevice = _Device();
    m_frameReady.Wait();
    while (!m_bQuit)
    {
        pDevice->Lock();
        m_drawStarted.Set();
        if (m_bSceneOpen)
        {
            DrawPreviews();
            DrawRenderBuffer();
        }
        pDevice->Unlock();
        m_drawDone.Set();
        m_frameReady.Wait();
    }
    m_drawDone.Set();
    m_drawStarted.Set();
}

// ---------------------------------------------------------------------------------------
// Scene helpers (device locked)

void CThreadRenderer::_EndOpenScene(RenderDevice::IRenderDevice* pDevice)
{
    if (m_bSceneOpen)
    {
        pDevice->EndScene();
        m_bSceneOpen = false;
    }
}

bool CThreadRenderer::_BeginScene(RenderDevice::IRenderDevice* pDevice)
{
    if (!pDevice->BeginScene())
    {
        return false;
    }
    m_bSceneOpen = true;
    BeginSceneHook();
    return true;
}

void CThreadRenderer::_CheckDevice(RenderDevice::IRenderDevice* pDevice)
{
    bool bDropScene = false;
    if (pDevice->IsLost())
    {
        bDropScene = true;
    }
    else if (pDevice->GetResetCount() != m_uDeviceGeneration)
    {
        m_uDeviceGeneration = pDevice->GetResetCount();
        OnDeviceReset();
        bDropScene = true;
    }
    if (bDropScene)
    {
        // A reset or a loss ends every scene of the device; ours is gone with it.
        if (m_bSceneOpen && pDevice->IsInScene())
        {
            pDevice->EndScene();
        }
        m_bSceneOpen = false;
    }
}

// ---------------------------------------------------------------------------------------
// The frame

void CThreadRenderer::BuildFrame()
{
    if (m_bThreaded && m_thread.IsStarted())
    {
        _BuildThreaded();
    }
    else
    {
        _BuildSingle();
    }
}

void CThreadRenderer::_BuildThreaded()
{
    BuildRenderBuffer();
    PostBuild();
    m_drawDone.Wait();
    m_bDrawPending = false;
    RenderDevice::IRenderDevice* pDevice = _Device();
    pDevice->Lock();
    SwapRenderBuffer();
    _CheckDevice(pDevice);
    if (m_bSceneOpen)
    {
        if (!m_bSkipPresent)
        {
            DrawOverlay();
        }
        pDevice->EndScene();
        m_bSceneOpen = false;
    }
    pDevice->Unlock();
}

void CThreadRenderer::_BuildSingle()
{
    BuildRenderBuffer();
    if (m_bDrawPending)
    {
        // The render thread may still draw the frame handed over before the switch: let it
        // finish, and leave drawDone set for a later switch back.
        m_drawDone.Wait();
        m_drawDone.Set();
        m_bDrawPending = false;
    }
    SwapRenderBuffer();
    RenderDevice::IRenderDevice* pDevice = _Device();
    pDevice->Lock();
    _CheckDevice(pDevice);
    _EndOpenScene(pDevice);
    if (_BeginScene(pDevice))
    {
        DrawRenderBuffer();
        DrawOverlay();
        pDevice->EndScene();
        m_bSceneOpen = false;
    }
    pDevice->Unlock();
}

void CThreadRenderer::FinishFrame()
{
    RenderDevice::IRenderDevice* pDevice = _Device();
    if (!m_bSkipPresent)
    {
        pDevice->Lock();
        _EndOpenScene(pDevice);
        SwapDeviceBuffers();
        pDevice->Unlock();
    }
    else
    {
        m_bSkipPresent = false;
    }
    if (m_bThreaded && m_thread.IsStarted())
    {
        pDevice->Lock();
        _EndOpenScene(pDevice);
        _BeginScene(pDevice);
        pDevice->Unlock();
        m_frameReady.Set();
        m_drawStarted.Wait();
        m_bDrawPending = true;
    }
}

} // namespace Kestrin::Ext
