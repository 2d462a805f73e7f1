// CWinInputDevice: fills CInputDevice each frame from the main window (keyboard, cursor and
// its relative mouse) and from the first game pad of the platform's game-pad service.
#pragma once

#include "app/InputDevice.h"

namespace Ovrel
{

// One opened game pad, in DirectInput's ranges.
class IGamePad
{
public:
    virtual ~IGamePad() = default;
    // Takes the pad again after a failure; false when it is gone.
    virtual bool Acquire() = 0;
    // Asks the pad for fresh values; false on failure.
    virtual bool Poll() = 0;
    // The pad's state; false on failure (out unchanged).
    virtual bool GetState(SRawPadState& out) = 0;

protected:
    IGamePad() = default;
    IGamePad(const IGamePad&) = delete;
    IGamePad& operator=(const IGamePad&) = delete;
};

// The platform's game-pad service.
class IGamePadService
{
public:
    virtual ~IGamePadService() = default;
    // Starts the service; false when it is not available.
    virtual bool Start() = 0;
    // The first attached game controller, acquired; null when none. The caller owns it.
    virtual IGamePad* OpenFirstPad() = 0;
    // Ends the service (after every pad was destroyed).
    virtual void Stop() = 0;

protected:
    IGamePadService() = default;
    IGamePadService(const IGamePadService&) = delete;
    IGamePadService& operator=(const IGamePadService&) = delete;
};

class CWinInputDevice final : public CInputDevice
{
public:
    // pService: the game-pad service (not owned); null means no game pads.
    explicit CWinInputDevice(IGamePadService* pService = nullptr);
    ~CWinInputDevice() override;

    // Stores the window, takes its relative mouse when it has one, starts the game-pad
    // service and opens the first pad. A device that can't be had stays absent. Returns 0.
    int Initialize(Kestrin::RenderDevice::IWindow* pWindow) override;
    // Releases the mouse, the game pad and the service, in this order.
    void Shutdown() override;
    void Update(float fTimeStep) override;

    bool HasMouseDevice() const { return m_bMouseDevice; }
    bool HasGamePad() const { return m_pGamePad != nullptr; }

private:
    void _ReadKeyboard();
    void _ReadMouse();
    // False when a failed poll ends the update before the dead zone.
    bool _ReadGamePad();

    IGamePadService* m_pService; // stands where DirectInput stood
    bool m_bServiceStarted = false;
    bool m_bMouseDevice = false;
    IGamePad* m_pGamePad = nullptr;
    Kestrin::RenderDevice::IWindow* m_pWindow = nullptr;
    float m_afLastPosition[2] = {-1.0f, -1.0f};
};

} // namespace Ovrel
