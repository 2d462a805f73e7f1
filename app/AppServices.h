// What the application's start-up creates through, so that tests can watch and steer it:
// the trace sink that hears every step of Initialize, Run and ShutDown, and the factory of
// the devices and services whose creation can fail.
#pragma once

namespace Kestrin::RenderDevice
{
class IRenderDevice;
}
namespace Kestrin::Audio
{
class IAudioDevice;
}
namespace Kestrin::Physics
{
class CPhysicsSdk;
}

namespace Ovrel
{

class CInputDevice;

class IEditorAppTrace
{
public:
    virtual ~IEditorAppTrace() = default;
    // One step, as "<step number> <what>" in start-up and "shutdown <step> <what>" at the end.
    virtual void Step(const char* pcStep) = 0;

protected:
    IEditorAppTrace() = default;
    IEditorAppTrace(const IEditorAppTrace&) = delete;
    IEditorAppTrace& operator=(const IEditorAppTrace&) = delete;
};

class CEditorAppFactory
{
public:
    CEditorAppFactory() = default;
    virtual ~CEditorAppFactory() = default;
    CEditorAppFactory(const CEditorAppFactory&) = delete;
    CEditorAppFactory& operator=(const CEditorAppFactory&) = delete;

    // Kind 1 is the platform's hardware device; any other kind the shared null device. Null
    // when the kind can't be made.
    virtual Kestrin::RenderDevice::IRenderDevice* CreateRenderDevice(int iKind);
    virtual void DestroyRenderDevice(Kestrin::RenderDevice::IRenderDevice* pDevice);
    // Kind 1 is the platform's sound device, 0 the null device. Null means failure.
    virtual Kestrin::Audio::IAudioDevice* CreateAudioDevice(int iKind);
    // The physics SDK; its Initialize may fail.
    virtual Kestrin::Physics::CPhysicsSdk* CreatePhysicsSdk();
    // The input device of the platform (the window's keyboard and mouse, the game pad).
    virtual CInputDevice* CreateInputDevice();
};

} // namespace Ovrel
