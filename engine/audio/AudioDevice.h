// The sound seam: `IAudioDevice` makes `IAudio` instances that play one cue each. The XACT
// back end comes later; `CNullAudioDevice` stands in where it is absent and makes nothing.
#pragma once

#include "engine/utility/Math.h"

#include <cstdint>
#include <string>
#include <utility>
#include <vector>

namespace Kestrin::Audio
{

class IAudio
{
public:
    IAudio(const IAudio&) = delete;
    IAudio& operator=(const IAudio&) = delete;

    // Starts the named cue; false when the sound banks do not know it.
    virtual bool Play(const std::string& strCueName) = 0;
    virtual void Stop() = 0;
    virtual void SetPosition(const Kestrin::Utility::CVec3& vPosition) = 0;
    // A looped instance starts its cue again when it ends.
    virtual void SetLoop(bool bLoop) = 0;

protected:
    IAudio() = default;
    virtual ~IAudio() = default;
};

// Where the sound is heard from: the editor camera's position and forward direction.
struct CAudioListener
{
    Kestrin::Utility::CVec3 vPosition;
    Kestrin::Utility::CVec3 vForward{0.0f, 0.0f, 1.0f};
};

class IAudioDevice
{
public:
    virtual ~IAudioDevice() = default;
    IAudioDevice(const IAudioDevice&) = delete;
    IAudioDevice& operator=(const IAudioDevice&) = delete;

    // Starts the device with the global settings file (a path; empty: none) and the sound
    // RPCs of "audio.lua" (name and value). False: the device can't play, and the caller
    // falls back to the null device.
    virtual bool Init(const std::string& strSettingsFile,
                      const std::vector<std::pair<std::string, float>>& soundRpcs) = 0;
    // Loads a wave bank into slot iIndex; iFlags 0 keeps it in memory, 16 streams it. False
    // when the bank can't be read.
    virtual bool LoadWaveBank(const std::string& strFile, int32_t iFlags, int32_t iIndex) = 0;
    // Loads a sound bank into slot iIndex. False when the bank can't be read.
    virtual bool LoadSoundBank(const std::string& strFile, int32_t iIndex) = 0;
    // The RPC curves: each control key with its list of values, in one call.
    virtual void SetRpcs(const std::vector<std::pair<int32_t, std::vector<float>>>& rpcs) = 0;
    virtual void SetCategoryVolume(const std::string& strCategory, float fVolume) = 0;
    // Once a frame: the listener and the real (unscaled) time step in seconds.
    virtual void Update(const CAudioListener& listener, float fTimeStep) = 0;

    // A new, silent instance owned by the caller until DestroyAudio; null when the device
    // cannot play.
    virtual IAudio* CreateAudio() = 0;
    // Stops and destroys an instance of this device; null does nothing.
    virtual void DestroyAudio(IAudio* pAudio) = 0;

protected:
    IAudioDevice() = default;
};

// The device of a system without sound: it makes no instances.
class CNullAudioDevice final : public IAudioDevice
{
public:
    CNullAudioDevice() = default;

    bool Init(const std::string&, const std::vector<std::pair<std::string, float>>&) override { return true; }
    bool LoadWaveBank(const std::string&, int32_t, int32_t) override { return true; }
    bool LoadSoundBank(const std::string&, int32_t) override { return true; }
    void SetRpcs(const std::vector<std::pair<int32_t, std::vector<float>>>&) override {}
    void SetCategoryVolume(const std::string&, float) override {}
    void Update(const CAudioListener&, float) override {}
    IAudio* CreateAudio() override { return nullptr; }
    void DestroyAudio(IAudio*) override {}
};

} // namespace Kestrin::Audio
