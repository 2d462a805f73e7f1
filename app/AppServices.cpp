#include "app/AppServices.h"

#include "app/Linux/SdlGamePad.h"
#include "app/NullEngine.h"
#include "app/WinInputDevice.h"
#include "engine/render_device/RenderDevice.h"

namespace Ovrel
{

namespace
{
// The game-pad service lives for the process: the input device only borrows it.
CSdlGamePadService g_gamePads;
} // namespace

Kestrin::RenderDevice::IRenderDevice* CEditorAppFactory::CreateRenderDevice(int iKind)
{
    return Kestrin::RenderDevice::CreateRenderDevice(iKind);
}

void CEditorAppFactory::DestroyRenderDevice(Kestrin::RenderDevice::IRenderDevice* pDevice)
{
    Kestrin::RenderDevice::DestroyRenderDevice(pDevice);
}

CNullAudioDevice* CEditorAppFactory::CreateAudioDevice(int iKind)
{
    (void)iKind; // there is no sound back end on Linux yet: both kinds are the null device
    return new CNullAudioDevice();
}

CNullPhysicsSdk* CEditorAppFactory::CreatePhysicsSdk()
{
    return new CNullPhysicsSdk();
}

CInputDevice* CEditorAppFactory::CreateInputDevice()
{
    return new CWinInputDevice(&g_gamePads);
}

} // namespace Ovrel
