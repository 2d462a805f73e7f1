#include "app/AppServices.h"

#include "app/Linux/SdlGamePad.h"
#include "app/WinInputDevice.h"
#include "engine/audio/AudioDevice.h"
#include "engine/physics/PhysicsWorld.h"
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

Kestrin::Audio::IAudioDevice* CEditorAppFactory::CreateAudioDevice(int iKind)
{
    (void)iKind; // there is no sound back end on Linux yet: both kinds are the null device
    return new Kestrin::Audio::CNullAudioDevice();
}

Kestrin::Physics::CPhysicsSdk* CEditorAppFactory::CreatePhysicsSdk()
{
    return new Kestrin::Physics::CNullPhysicsSdk();
}

CInputDevice* CEditorAppFactory::CreateInputDevice()
{
    return new CWinInputDevice(&g_gamePads);
}

} // namespace Ovrel
