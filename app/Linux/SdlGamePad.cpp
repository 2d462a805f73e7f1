#include "app/Linux/SdlGamePad.h"

#include <SDL2/SDL.h>

#include <algorithm>

namespace Ovrel
{

namespace
{
int32_t StickToRaw(int16_t iValue)
{
    return std::clamp(static_cast<int32_t>(iValue) + 32767, 0, 65535);
}

uint8_t ButtonToRaw(bool bDown)
{
    return bDown ? 0x80 : 0;
}

uint8_t TriggerToRaw(int16_t iValue)
{
    return static_cast<uint8_t>(std::clamp(static_cast<int32_t>(iValue), 0, 32767) * 0x80 / 32767);
}

uint32_t DpadToPov(const SSdlPadSample& sample)
{
    const int iX = (sample.bDpadRight ? 1 : 0) - (sample.bDpadLeft ? 1 : 0);
    const int iY = (sample.bDpadDown ? 1 : 0) - (sample.bDpadUp ? 1 : 0);
    // Clockwise from up, in hundredths of a degree.
    static const uint32_t s_aPov[3][3] = {
        {31500, 0, 4500},     // up-left, up, up-right
        {27000, 0, 9000},     // left, (centre), right
        {22500, 18000, 13500} // down-left, down, down-right
    };
    if (iX == 0 && iY == 0)
    {
        return SRawPadState::POV_CENTRED;
    }
    return s_aPov[iY + 1][iX + 1];
}

class CSdlGamePad final : public IGamePad
{
public:
    explicit CSdlGamePad(SDL_GameController* pController) : m_pController(pController) {}
    ~CSdlGamePad() override { SDL_GameControllerClose(m_pController); }

    bool Acquire() override { return SDL_GameControllerGetAttached(m_pController) == SDL_TRUE; }
    bool Poll() override
    {
        SDL_GameControllerUpdate();
        return SDL_GameControllerGetAttached(m_pController) == SDL_TRUE;
    }
    bool GetState(SRawPadState& out) override
    {
        if (SDL_GameControllerGetAttached(m_pController) != SDL_TRUE)
        {
            return false;
        }
        out = SdlSampleToRaw(Sample());
        return true;
    }

private:
    SSdlPadSample Sample() const
    {
        SSdlPadSample sample;
        sample.aLeftStick[0] = SDL_GameControllerGetAxis(m_pController, SDL_CONTROLLER_AXIS_LEFTX);
        sample.aLeftStick[1] = SDL_GameControllerGetAxis(m_pController, SDL_CONTROLLER_AXIS_LEFTY);
        sample.aRightStick[0] = SDL_GameControllerGetAxis(m_pController, SDL_CONTROLLER_AXIS_RIGHTX);
        sample.aRightStick[1] = SDL_GameControllerGetAxis(m_pController, SDL_CONTROLLER_AXIS_RIGHTY);
        sample.aTriggers[0] = SDL_GameControllerGetAxis(m_pController, SDL_CONTROLLER_AXIS_TRIGGERLEFT);
        sample.aTriggers[1] = SDL_GameControllerGetAxis(m_pController, SDL_CONTROLLER_AXIS_TRIGGERRIGHT);
        sample.bA = Button(SDL_CONTROLLER_BUTTON_A);
        sample.bB = Button(SDL_CONTROLLER_BUTTON_B);
        sample.bX = Button(SDL_CONTROLLER_BUTTON_X);
        sample.bY = Button(SDL_CONTROLLER_BUTTON_Y);
        sample.bLeftShoulder = Button(SDL_CONTROLLER_BUTTON_LEFTSHOULDER);
        sample.bRightShoulder = Button(SDL_CONTROLLER_BUTTON_RIGHTSHOULDER);
        sample.bBack = Button(SDL_CONTROLLER_BUTTON_BACK);
        sample.bStart = Button(SDL_CONTROLLER_BUTTON_START);
        sample.bLeftStick = Button(SDL_CONTROLLER_BUTTON_LEFTSTICK);
        sample.bRightStick = Button(SDL_CONTROLLER_BUTTON_RIGHTSTICK);
        sample.bDpadUp = Button(SDL_CONTROLLER_BUTTON_DPAD_UP);
        sample.bDpadDown = Button(SDL_CONTROLLER_BUTTON_DPAD_DOWN);
        sample.bDpadLeft = Button(SDL_CONTROLLER_BUTTON_DPAD_LEFT);
        sample.bDpadRight = Button(SDL_CONTROLLER_BUTTON_DPAD_RIGHT);
        return sample;
    }
    bool Button(SDL_GameControllerButton eButton) const
    {
        return SDL_GameControllerGetButton(m_pController, eButton) != 0;
    }

    SDL_GameController* m_pController;
};
} // namespace

SRawPadState SdlSampleToRaw(const SSdlPadSample& sample)
{
    SRawPadState raw;
    raw.lX = StickToRaw(sample.aLeftStick[0]);
    raw.lY = StickToRaw(sample.aLeftStick[1]);
    raw.lZ = StickToRaw(sample.aRightStick[0]);
    raw.lRz = StickToRaw(sample.aRightStick[1]);
    raw.rgbButtons[0] = ButtonToRaw(sample.bX);
    raw.rgbButtons[1] = ButtonToRaw(sample.bA);
    raw.rgbButtons[2] = ButtonToRaw(sample.bB);
    raw.rgbButtons[3] = ButtonToRaw(sample.bY);
    raw.rgbButtons[4] = ButtonToRaw(sample.bLeftShoulder);
    raw.rgbButtons[5] = ButtonToRaw(sample.bRightShoulder);
    raw.rgbButtons[6] = TriggerToRaw(sample.aTriggers[0]);
    raw.rgbButtons[7] = TriggerToRaw(sample.aTriggers[1]);
    raw.rgbButtons[8] = ButtonToRaw(sample.bBack);
    raw.rgbButtons[9] = ButtonToRaw(sample.bStart);
    raw.rgbButtons[10] = ButtonToRaw(sample.bLeftStick);
    raw.rgbButtons[11] = ButtonToRaw(sample.bRightStick);
    raw.rgdwPOV[0] = DpadToPov(sample);
    return raw;
}

CSdlGamePadService::~CSdlGamePadService()
{
    Stop();
}

bool CSdlGamePadService::Start()
{
    if (!m_bStarted)
    {
        // SDL would catch SIGINT and SIGTERM for its own quit event; the process keeps them.
        SDL_SetHint(SDL_HINT_NO_SIGNAL_HANDLERS, "1");
        m_bStarted = SDL_InitSubSystem(SDL_INIT_GAMECONTROLLER) == 0;
    }
    return m_bStarted;
}

IGamePad* CSdlGamePadService::OpenFirstPad()
{
    if (!m_bStarted)
    {
        return nullptr;
    }
    for (int i = 0; i < SDL_NumJoysticks(); ++i)
    {
        if (SDL_IsGameController(i))
        {
            SDL_GameController* pController = SDL_GameControllerOpen(i);
            if (pController)
            {
                return new CSdlGamePad(pController);
            }
        }
    }
    return nullptr;
}

void CSdlGamePadService::Stop()
{
    if (m_bStarted)
    {
        SDL_QuitSubSystem(SDL_INIT_GAMECONTROLLER);
        m_bStarted = false;
    }
}

} // namespace Ovrel
