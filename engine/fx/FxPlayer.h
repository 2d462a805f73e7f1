// The fx and character seams the scene uses: `CFxPlayer` starts effects by file name, and
// `IFxCharacterManager` makes characters from `.cconfig` files. The runtimes come later;
// CNullFxPlayer and CNullFxCharacterManager stand in and make nothing.
#pragma once

#include "engine/audio/AudioDevice.h"
#include "engine/physics/PhysicsWorld.h"
#include "engine/renderer/RenderObject.h"
#include "engine/renderer/RenderWorld.h"
#include "engine/utility/Math.h"

#include <cstdint>
#include <string>

namespace Kestrin::Fx
{

using Kestrin::Utility::CMatrix44;
using Kestrin::Utility::CVec3;

// One playing effect.
class CFx
{
public:
    CFx(const CFx&) = delete;
    CFx& operator=(const CFx&) = delete;

    virtual void SetWorldTransform(const CMatrix44& mWorld) = 0;
    virtual void SetVisible(bool bVisible) = 0;
    // The 64-bit layer mask given to the effect's render objects.
    virtual void SetChannelMask(uint64_t uMask) = 0;
    // Clipped effects are skipped outside the view.
    virtual void SetShouldClip(bool bClip) = 0;
    // The resource loops by itself.
    virtual bool IsLooping() const = 0;
    // Time no longer advances.
    virtual bool IsFinished() const = 0;
    // Starts again from time 0.
    virtual void Restart() = 0;

protected:
    CFx() = default;
    virtual ~CFx() = default;
};

class CFxPlayer
{
public:
    virtual ~CFxPlayer() = default;
    CFxPlayer(const CFxPlayer&) = delete;
    CFxPlayer& operator=(const CFxPlayer&) = delete;

    // Binds the player to its world: render objects, physics and sound. False when the
    // render world is missing.
    virtual bool Initialize(Kestrin::Ext::CRenderWorld* pRenderWorld,
                            Kestrin::Physics::CPhysicsWorld* pPhysics,
                            Kestrin::Audio::IAudioDevice* pAudio) = 0;
    // Running effects are spread over this many groups, one group updated a frame.
    virtual void SetUpdateGroupCount(int32_t iCount) = 0;
    // The level of detail; running effects are told at once.
    virtual void SetLod(int32_t iLod) = 0;
    // The camera the effects play for: its world transform and position.
    virtual void SetCamera(const CMatrix44& mCamera, const CVec3& vPosition) = 0;
    // Advances every running effect by the scaled step (seconds).
    virtual void Update(float fTimeStep) = 0;

    // Loads the `.eff` file and starts it; null when it cannot be had.
    virtual CFx* CreateFx(const std::string& strFxFile) = 0;
    // Marks the effect dying; the player destroys it at its next update. Null does nothing.
    virtual void Stop(CFx* pFx) = 0;

protected:
    CFxPlayer() = default;
};

class CNullFxPlayer final : public CFxPlayer
{
public:
    CNullFxPlayer() = default;

    bool Initialize(Kestrin::Ext::CRenderWorld* pRenderWorld, Kestrin::Physics::CPhysicsWorld*,
                    Kestrin::Audio::IAudioDevice*) override
    {
        return pRenderWorld != nullptr;
    }
    void SetUpdateGroupCount(int32_t iCount) override { m_iUpdateGroups = iCount; }
    void SetLod(int32_t iLod) override { m_iLod = iLod; }
    void SetCamera(const CMatrix44&, const CVec3&) override {}
    void Update(float fTimeStep) override { m_fTime += fTimeStep; }
    int32_t GetUpdateGroupCount() const { return m_iUpdateGroups; }
    int32_t GetLod() const { return m_iLod; }
    float GetTime() const { return m_fTime; }

    CFx* CreateFx(const std::string&) override { return nullptr; }
    void Stop(CFx*) override {}

private:
    int32_t m_iUpdateGroups = 0;
    int32_t m_iLod = 0;
    float m_fTime = 0.0f;
};

// A character driven by its configuration: equipment, actions, attached effects.
class IFxCharacter
{
public:
    IFxCharacter(const IFxCharacter&) = delete;
    IFxCharacter& operator=(const IFxCharacter&) = delete;

    // The character's render object; never null.
    virtual Kestrin::Renderer::CRenderObject* GetRenderObject() = 0;
    // Advances animation by fDelta seconds.
    virtual void Update(float fDelta) = 0;
    virtual void SetWorldTransform(const CMatrix44& mWorld) = 0;
    // Plays the named action; false when the character has none of that name.
    virtual bool Play(const std::string& strName) = 0;

protected:
    IFxCharacter() = default;
    virtual ~IFxCharacter() = default;
};

class IFxCharacterManager
{
public:
    virtual ~IFxCharacterManager() = default;
    IFxCharacterManager(const IFxCharacterManager&) = delete;
    IFxCharacterManager& operator=(const IFxCharacterManager&) = delete;

    // A character from a `.cconfig` file, playing its default action; null on failure.
    virtual IFxCharacter* CreateCharacter(const std::string& strConfigName, uint32_t uFlags) = 0;
    // Destroys a character of this manager; null does nothing.
    virtual void DestroyCharacter(IFxCharacter* pCharacter) = 0;

protected:
    IFxCharacterManager() = default;
};

class CNullFxCharacterManager final : public IFxCharacterManager
{
public:
    CNullFxCharacterManager() = default;

    IFxCharacter* CreateCharacter(const std::string&, uint32_t) override { return nullptr; }
    void DestroyCharacter(IFxCharacter*) override {}
};

} // namespace Kestrin::Fx
