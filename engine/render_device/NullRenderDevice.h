// CNullRenderDevice: the device with no hardware. It makes its window through the window
// system, creates every resource logically (handles with generations), keeps the scene flag,
// and draws nothing; a 2D overlay frame goes to the window, which shows it in software.
//
// A window whose client area changed size counts as a device reset: the back buffer takes
// the new size and the reset count rises, so the frame handshake resizes the views.
#pragma once

#include "Utils/Utility/GUtLock.h"
#include "engine/render_device/RenderDevice.h"

#include <vector>

namespace Kestrin::RenderDevice
{

class CNullRenderDevice final : public IRenderDevice
{
public:
    // bNeedsDisplay: the device stands in for the hardware device, so Initialize fails where
    // windows can't be shown.
    explicit CNullRenderDevice(bool bNeedsDisplay = false);
    ~CNullRenderDevice() override;

    bool GetCaps(SDeviceCaps& out) override;
    bool Initialize(const SDeviceParameters& params) override;
    IWindow* GetWindow() override { return m_pWindow; }
    int GetDeviceKind() const override { return 0; }

    void Lock() override;
    void Unlock() override;
    void EnableLocking(bool bEnable) override { m_bLocking = bEnable; }
    bool IsLockingEnabled() const override { return m_bLocking; }

    bool BeginScene() override;
    void EndScene() override { m_bInScene = false; }
    bool IsInScene() const override { return m_bInScene; }
    void Present() override { ++m_iPresents; }
    bool IsLost() override;
    uint32_t GetResetCount() const override { return m_uResetCount; }
    void SetTime(float fSeconds) override { m_fTime = fSeconds; }

    void SetViewport(int32_t iX, int32_t iY, int32_t iW, int32_t iH) override;
    void Clear(uint32_t uFlags, uint32_t uColour, float fDepth, uint32_t uStencil) override;
    void GetBackBufferSize(int32_t& iW, int32_t& iH) const override;

    uint32_t CreateTexture(const STextureDesc& desc, const char* pcName) override;
    void ReleaseTexture(uint32_t uHandle) override;

    void PresentOverlay(const SOverlayFrame& frame) override;

    // Destroys the window and forgets every resource; the device can be initialised again.
    void Shutdown();

    int Presents() const { return m_iPresents; }
    int LiveTextures() const;
    float GetTime() const { return m_fTime; }
    SWindowRect GetViewport() const { return m_viewport; }

private:
    struct STextureSlot
    {
        uint32_t uHandle = 0; // 0 while free
        STextureDesc desc;
        int32_t iRefCount = 0;
    };

    bool m_bNeedsDisplay;
    IWindow* m_pWindow = nullptr;
    SDeviceParameters m_params;
    GUtCriticalSection m_lock;
    bool m_bLocking = false;
    bool m_bInScene = false;
    int m_iPresents = 0;
    uint32_t m_uResetCount = 0;
    int32_t m_iBackBufferW = 0;
    int32_t m_iBackBufferH = 0;
    SWindowRect m_viewport;
    float m_fTime = 0.0f;
    std::vector<STextureSlot> m_textures;
    uint32_t m_uTextureGeneration = 0;
};

} // namespace Kestrin::RenderDevice
