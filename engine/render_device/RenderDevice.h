// IRenderDevice: the only door to the graphics hardware. This header holds the operations the
// application shell and the frame handshake use: start-up and the window, the device lock,
// the frame (scenes, present, loss and reset), viewport and clear, textures by handle, and
// the information the start-up reads. The renderer's bands (states, samplers, buffers,
// shaders, declarations, queries, draws) join it with the renderer.
//
// Thread contract: the device lock is re-entrant and guards every use of the device while a
// render thread exists (locking enabled); with locking disabled Lock and Unlock do nothing.
#pragma once

#include "engine/render_device/Window.h"

#include <cstdint>

namespace Kestrin::RenderDevice
{

struct SDeviceParameters
{
    int32_t iWidth = 640;
    int32_t iHeight = 480;
    bool bFullscreen = false;
    WindowMessageProc pfnMessageProc = nullptr; // the window-message callback
    void* pMessageUser = nullptr;
    uint32_t uBackBufferFormat = 1; // A8R8G8B8
    uint32_t uDepthFormat = 15;     // D24S8
    int32_t iMultiSample = 0;
    bool bVSync = false;
};

struct SDeviceCaps
{
    uint32_t uVertexShaderVersion = 3; // major version
    uint32_t uPixelShaderVersion = 3;
    int32_t iMaxTextureSize = 4096;
};

// Resource types of a handle (bits 27 to 30).
constexpr uint32_t RESOURCE_TEXTURE_2D = 1;

struct STextureDesc
{
    uint32_t uType = RESOURCE_TEXTURE_2D;
    int32_t iWidth = 0;
    int32_t iHeight = 0;
    int32_t iDepth = 1;
    int32_t iMipLevels = 1;
    uint32_t uFormat = 1; // A8R8G8B8
    uint32_t uUsage = 0;  // 1: render target
};

// A handle: ((type << 12) + generation) << 15 + index; 0 is none.
constexpr uint32_t MakeHandle(uint32_t uType, uint32_t uGeneration, uint32_t uIndex)
{
    return (((uType << 12) + uGeneration) << 15) + uIndex;
}
constexpr uint32_t HandleType(uint32_t uHandle)
{
    return (uHandle >> 27) & 0xF;
}
constexpr uint32_t HandleGeneration(uint32_t uHandle)
{
    return (uHandle >> 15) & 0xFFF;
}
constexpr uint32_t HandleIndex(uint32_t uHandle)
{
    return uHandle & 0x7FFF;
}

// Clear flags
constexpr uint32_t CLEAR_TARGET = 1;
constexpr uint32_t CLEAR_DEPTH = 2;
constexpr uint32_t CLEAR_STENCIL = 4;

class IRenderDevice
{
public:
    virtual ~IRenderDevice() = default;

    // -- Life
    // The capabilities of the hardware; false when they can't be read (then out is unchanged).
    virtual bool GetCaps(SDeviceCaps& out) = 0;
    // Makes the window and the device. False: no device (the caller reports and shuts down).
    virtual bool Initialize(const SDeviceParameters& params) = 0;
    // The device's window; null before Initialize or when it failed. Not owned by the caller.
    virtual IWindow* GetWindow() = 0;
    // The kind: 0 null, 1 the platform's hardware device.
    virtual int GetDeviceKind() const = 0;

    // -- Device lock
    virtual void Lock() = 0;
    virtual void Unlock() = 0;
    virtual void EnableLocking(bool bEnable) = 0;
    virtual bool IsLockingEnabled() const = 0;

    // -- Frame
    // Opens a scene; false when the device can't draw now (lost). Nesting is refused.
    virtual bool BeginScene() = 0;
    virtual void EndScene() = 0;
    virtual bool IsInScene() const = 0;
    // Shows the back buffer.
    virtual void Present() = 0;
    // True while the device is lost; frames are skipped until it returns.
    virtual bool IsLost() = 0;
    // Rises by one each time the device is reset; a change means new back-buffer sizes.
    virtual uint32_t GetResetCount() const = 0;
    // The time the shaders see, in seconds.
    virtual void SetTime(float fSeconds) = 0;

    // -- Viewport and clear
    virtual void SetViewport(int32_t iX, int32_t iY, int32_t iW, int32_t iH) = 0;
    virtual void Clear(uint32_t uFlags, uint32_t uColour, float fDepth, uint32_t uStencil) = 0;
    virtual void GetBackBufferSize(int32_t& iW, int32_t& iH) const = 0;

    // -- Textures
    // A new texture; 0 when it can't be made. The name may be empty.
    virtual uint32_t CreateTexture(const STextureDesc& desc, const char* pcName) = 0;
    // Lowers the count; a stale or 0 handle is ignored.
    virtual void ReleaseTexture(uint32_t uHandle) = 0;

    // -- 2D overlay drawn in software, for a device that draws nothing itself.
    virtual void PresentOverlay(const SOverlayFrame& frame) = 0;

protected:
    IRenderDevice() = default;
    IRenderDevice(const IRenderDevice&) = delete;
    IRenderDevice& operator=(const IRenderDevice&) = delete;
};

// The registered device; the shared null device when none is registered. Never null.
IRenderDevice* GetRenderDevice();
// Registers pDevice (not owned); null falls back to the shared null device.
void SetRenderDevice(IRenderDevice* pDevice);
// The process-wide null device that kinds other than 1 yield.
IRenderDevice* GetSharedNullDevice();
// Creates the device of a kind. Kind 1 is the platform's hardware device (owned by the
// caller); any other kind gives the shared null device (never destroy it: see
// IsSharedNullDevice). Null when the kind can't be made.
IRenderDevice* CreateRenderDevice(int iKind);
bool IsSharedNullDevice(const IRenderDevice* pDevice);
// Destroys a device made by CreateRenderDevice; the shared null device is only reset.
void DestroyRenderDevice(IRenderDevice* pDevice);

} // namespace Kestrin::RenderDevice
