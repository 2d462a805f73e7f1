// Effects and sounds placed in a scene.
#pragma once

#include "scene/SceneEntity.h"

#include "engine/audio/AudioDevice.h"
#include "engine/fx/FxPlayer.h"

#include <cstdint>
#include <string>

namespace Ovrel
{

class CFxSceneEntity final : public CSceneEntity
{
public:
    explicit CFxSceneEntity(CSceneContent* pScene);
    ~CFxSceneEntity() override;

    uint32_t GetType() const override { return ENTITY_FX; }
    bool Save(CIOStream& stream) override;
    bool Load(CIOStream& stream, bool bAsync) override;
    void SetTransform(const CMatrix44& mTransform) override;
    void GetTransform(CMatrix44& mTransform) const override { mTransform = m_mTransform; }
    // A box of half size (10, 10, 10) at the transform.
    void GetBoundingBox(CBox3& box) const override;
    bool HitTest(const CVec3& vStart, const CVec3& vDirection, float& fDistance) override;
    bool HitTestExact(const CVec3& vStart, const CVec3& vDirection, float& fDistance) override;
    // A finished effect that does not loop by itself starts again after a delay drawn from
    // the loop delay range.
    void Update(float fTime, float fDelta) override;
    void SetVisible(bool bVisible) override;
    void SetLayer(int32_t iLayer) override;
    void SetResourceName(const std::string& strName) override { CreateFx(strName); }
    std::string GetResourceName() const override { return m_strFxFile; }
    // --- slot 20: the effect loops by itself.
    virtual bool IsLooping() const;

    bool TransferRecord(CSceneRecordIO& io);

    // A new effect from the `.eff` file in place of the old one; the name is kept either way.
    bool CreateFx(const std::string& strFxFile);
    Kestrin::Fx::CFx* GetFx() const { return m_pFx; }
    const std::string& GetFxFile() const { return m_strFxFile; }
    float GetLoopDelayMin() const { return m_fLoopDelayMin; }
    float GetLoopDelayMax() const { return m_fLoopDelayMax; }
    void SetLoopDelay(float fMin, float fMax);
    uint8_t GetShouldClip() const { return m_uShouldClip; }
    void SetShouldClip(bool bClip);

private:
    void DeleteFx();

    CMatrix44 m_mTransform;
    float m_fLoopDelayMin = 0.0f;
    float m_fLoopDelayMax = 0.0f;
    Kestrin::Fx::CFx* m_pFx = nullptr;
    uint8_t m_uShouldClip = 0;
    std::string m_strFxFile;
    float m_fWait = -1.0f; // seconds left before a restart; negative while playing
};

class CSoundSceneEntity final : public CSceneEntity
{
public:
    explicit CSoundSceneEntity(CSceneContent* pScene);
    ~CSoundSceneEntity() override;

    uint32_t GetType() const override { return ENTITY_SOUND; }
    bool Save(CIOStream& stream) override;
    bool Load(CIOStream& stream, bool bAsync) override;
    void SetTransform(const CMatrix44& mTransform) override;
    void GetTransform(CMatrix44& mTransform) const override { mTransform = m_mTransform; }
    void SetResourceName(const std::string& strName) override { SetCue(strName); }
    std::string GetResourceName() const override { return m_strCueName; }

    bool TransferRecord(CSceneRecordIO& io);

    // A new sound: named "Sound", with an empty cue.
    void InitNew();
    // Makes the audio instance when there is none and the scene is not headless, sets it
    // looped as the entity is, stores the name and gives it to the instance.
    void SetCue(const std::string& strCueName);
    const std::string& GetCueName() const { return m_strCueName; }
    uint8_t GetLooped() const { return m_uLooped; }
    void SetLooped(bool bLooped);
    Kestrin::Audio::IAudio* GetSound() const { return m_pSound; }

private:
    void DeleteSound();

    uint8_t m_uLooped = 1;
    CMatrix44 m_mTransform;
    std::string m_strCueName;
    Kestrin::Audio::IAudio* m_pSound = nullptr;
};

} // namespace Ovrel
