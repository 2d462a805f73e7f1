#include "engine/render_device/NullRenderDevice.h"

#include <atomic>

namespace Kestrin::RenderDevice
{

// ---------------------------------------------------------------------------------------
// The global accessor

namespace
{
CNullRenderDevice& SharedNullDevice()
{
    // Never destroyed: it outlives every static that may still reach the accessor.
    static CNullRenderDevice* s_pDevice = new CNullRenderDevice(false);
    return *s_pDevice;
}

std::atomic<IRenderDevice*> g_pDevice{nullptr};

constexpr uint32_t MAX_TEXTURE_SLOTS = 32767;
} // namespace

IRenderDevice* GetRenderDevice()
{
    IRenderDevice* pDevice = g_pDevice.load();
    return pDevice ? pDevice : &SharedNullDevice();
}

void SetRenderDevice(IRenderDevice* pDevice)
{
    g_pDevice.store(pDevice);
}

IRenderDevice* GetSharedNullDevice()
{
    return &SharedNullDevice();
}

bool IsSharedNullDevice(const IRenderDevice* pDevice)
{
    return pDevice == &SharedNullDevice();
}

IRenderDevice* CreateRenderDevice(int iKind)
{
    if (iKind == 1)
    {
        // The hardware device of this platform draws through the null device until the
        // OpenGL back end exists; it needs a display like the real one will.
        return new CNullRenderDevice(true);
    }
    return &SharedNullDevice();
}

void DestroyRenderDevice(IRenderDevice* pDevice)
{
    if (!pDevice)
    {
        return;
    }
    if (IsSharedNullDevice(pDevice))
    {
        SharedNullDevice().Shutdown();
        return;
    }
    delete pDevice;
}

// ---------------------------------------------------------------------------------------
// CNullRenderDevice

CNullRenderDevice::CNullRenderDevice(bool bNeedsDisplay) : m_bNeedsDisplay(bNeedsDisplay) {}

CNullRenderDevice::~CNullRenderDevice()
{
    Shutdown();
}

void CNullRenderDevice::Shutdown()
{
    delete m_pWindow;
    m_pWindow = nullptr;
    m_textures.clear();
    m_bInScene = false;
    m_bLocking = false;
    m_iBackBufferW = m_iBackBufferH = 0;
}

bool CNullRenderDevice::GetCaps(SDeviceCaps& out)
{
    out = SDeviceCaps();
    return true;
}

bool CNullRenderDevice::Initialize(const SDeviceParameters& params)
{
    IWindowSystem* pSystem = GetWindowSystem();
    if (m_bNeedsDisplay && !pSystem->HasDisplay())
    {
        return false;
    }
    Shutdown();
    m_params = params;
    m_pWindow = pSystem->CreateMainWindow(params.iWidth, params.iHeight);
    if (!m_pWindow)
    {
        return false;
    }
    m_pWindow->SetMessageProc(params.pfnMessageProc, params.pMessageUser);
    m_iBackBufferW = params.iWidth;
    m_iBackBufferH = params.iHeight;
    m_viewport = {0, 0, params.iWidth, params.iHeight};
    return true;
}

void CNullRenderDevice::Lock()
{
    if (m_bLocking)
    {
        m_lock.Enter();
    }
}

void CNullRenderDevice::Unlock()
{
    if (m_bLocking)
    {
        m_lock.Leave();
    }
}

bool CNullRenderDevice::BeginScene()
{
    if (m_bInScene)
    {
        return false;
    }
    m_bInScene = true;
    return true;
}

bool CNullRenderDevice::IsLost()
{
    if (!m_pWindow)
    {
        return false;
    }
    int32_t iW = 0, iH = 0;
    m_pWindow->GetClientSize(iW, iH);
    if (iW <= 0 || iH <= 0)
    {
        return false; // minimised: keep the old back buffer
    }
    if (iW != m_iBackBufferW || iH != m_iBackBufferH)
    {
        m_iBackBufferW = iW;
        m_iBackBufferH = iH;
        ++m_uResetCount;
    }
    return false;
}

void CNullRenderDevice::SetViewport(int32_t iX, int32_t iY, int32_t iW, int32_t iH)
{
    if (iW > 0 && iH > 0)
    {
        m_viewport = {iX, iY, iW, iH};
    }
}

void CNullRenderDevice::Clear(uint32_t uFlags, uint32_t uColour, float fDepth, uint32_t uStencil)
{
    (void)uFlags, (void)uColour, (void)fDepth, (void)uStencil; // nothing to clear
}

void CNullRenderDevice::GetBackBufferSize(int32_t& iW, int32_t& iH) const
{
    iW = m_iBackBufferW;
    iH = m_iBackBufferH;
}

uint32_t CNullRenderDevice::CreateTexture(const STextureDesc& desc, const char* pcName)
{
    (void)pcName;
    size_t uIndex = 0;
    while (uIndex < m_textures.size() && m_textures[uIndex].uHandle != 0)
    {
        ++uIndex;
    }
    if (uIndex >= MAX_TEXTURE_SLOTS)
    {
        return 0;
    }
    if (uIndex == m_textures.size())
    {
        m_textures.emplace_back();
    }
    m_uTextureGeneration = m_uTextureGeneration % 4095 + 1; // 1 to 4095, wrapping to 1
    STextureSlot& slot = m_textures[uIndex];
    slot.uHandle = MakeHandle(desc.uType, m_uTextureGeneration, static_cast<uint32_t>(uIndex));
    slot.desc = desc;
    slot.iRefCount = 1;
    return slot.uHandle;
}

void CNullRenderDevice::ReleaseTexture(uint32_t uHandle)
{
    const uint32_t uIndex = HandleIndex(uHandle);
    if (uHandle == 0 || uIndex >= m_textures.size() || m_textures[uIndex].uHandle != uHandle)
    {
        return;
    }
    if (--m_textures[uIndex].iRefCount <= 0)
    {
        m_textures[uIndex] = STextureSlot();
    }
}

int CNullRenderDevice::LiveTextures() const
{
    int iCount = 0;
    for (const STextureSlot& slot : m_textures)
    {
        iCount += slot.uHandle != 0 ? 1 : 0;
    }
    return iCount;
}

void CNullRenderDevice::PresentOverlay(const SOverlayFrame& frame)
{
    if (m_pWindow)
    {
        m_pWindow->PresentOverlay(frame);
    }
}

} // namespace Kestrin::RenderDevice
