// The sound seam: `IAudioDevice` makes `IAudio` instances that play one cue each. The XACT
// back end comes later; `CNullAudioDevice` stands in where it is absent and makes nothing.
#pragma once

#include "engine/utility/Math.h"

#include <string>

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

class IAudioDevice
{
public:
    virtual ~IAudioDevice() = default;
    IAudioDevice(const IAudioDevice&) = delete;
    IAudioDevice& operator=(const IAudioDevice&) = delete;

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

    IAudio* CreateAudio() override { return nullptr; }
    void DestroyAudio(IAudio*) override {}
};

} // namespace Kestrin::Audio
