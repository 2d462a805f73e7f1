// Effects and sounds.
#include "scene/SceneContent.h"
#include "scene/SceneFxSoundEntities.h"
#include "scene/SceneGeometry.h"

namespace Ovrel
{

namespace
{
const CVec3 FX_HALF_SIZE{10.0f, 10.0f, 10.0f};
} // namespace

// ---------------------------------------------------------------------------------------
// CFxSceneEntity

CFxSceneEntity::CFxSceneEntity(CSceneContent* pScene) : CSceneEntity(pScene) {}

CFxSceneEntity::~CFxSceneEntity()
{
    DeleteFx();
}

void CFxSceneEntity::DeleteFx()
{
    if (!m_pFx)
    {
        return;
    }
    Kestrin::Fx::CFxPlayer* pPlayer = m_pScene ? m_pScene->GetFxPlayer() : nullptr;
    if (pPlayer)
    {
        pPlayer->Stop(m_pFx);
    }
    m_pFx = nullptr;
}

bool CFxSceneEntity::TransferRecord(CSceneRecordIO& io)
{
    if (!TransferBase(io))
    {
        return false;
    }
    if (io.Block(TAG_FX, FX_VERSION) != ESceneBlock::OK)
    {
        io.Fail();
        return false;
    }
    io.Matrix("transform", m_mTransform);
    io.String("fxFile", m_strFxFile);
    if (io.Since(101))
    {
        io.F32("loopDelayMin", m_fLoopDelayMin);
        io.F32("loopDelayMax", m_fLoopDelayMax);
    }
    if (io.Since(102))
    {
        io.U8("visible", m_uVisible);
    }
    if (io.Since(103))
    {
        io.U8("shouldClip", m_uShouldClip);
    }
    return io.Ok();
}

bool CFxSceneEntity::Save(CIOStream& stream)
{
    return SaveRecord(*this, stream);
}

bool CFxSceneEntity::Load(CIOStream& stream, bool)
{
    DeleteFx();
    return LoadRecord(*this, stream, [&] { CreateFx(m_strFxFile); });
}

bool CFxSceneEntity::CreateFx(const std::string& strFxFile)
{
    DeleteFx();
    m_strFxFile = strFxFile;
    m_fWait = -1.0f;
    Kestrin::Fx::CFxPlayer* pPlayer = m_pScene ? m_pScene->GetFxPlayer() : nullptr;
    if (!pPlayer || strFxFile.empty())
    {
        return false;
    }
    m_pFx = pPlayer->CreateFx(strFxFile);
    if (!m_pFx)
    {
        return false;
    }
    m_pFx->SetWorldTransform(m_mTransform);
    m_pFx->SetVisible(m_uVisible != 0);
    m_pFx->SetChannelMask(LayerBit(m_iLayer));
    m_pFx->SetShouldClip(m_uShouldClip != 0);
    return true;
}

void CFxSceneEntity::SetTransform(const CMatrix44& mTransform)
{
    m_mTransform = mTransform;
    if (m_pFx)
    {
        m_pFx->SetWorldTransform(mTransform);
    }
}

void CFxSceneEntity::GetBoundingBox(CBox3& box) const
{
    box = OrientedBoxBounds(m_mTransform, FX_HALF_SIZE);
}

bool CFxSceneEntity::HitTest(const CVec3& vStart, const CVec3& vDirection, float& fDistance)
{
    return RayHitsOrientedBox(m_mTransform, FX_HALF_SIZE, vStart, vDirection, true, fDistance);
}

bool CFxSceneEntity::HitTestExact(const CVec3& vStart, const CVec3& vDirection, float& fDistance)
{
    return HitTest(vStart, vDirection, fDistance);
}

void CFxSceneEntity::Update(float, float fDelta)
{
    if (!m_pFx || m_pFx->IsLooping() || !m_pFx->IsFinished())
    {
        return;
    }
    if (m_fWait < 0.0f)
    {
        float fRandom = m_pScene ? m_pScene->NextRandom() : 0.0f;
        m_fWait = m_fLoopDelayMin + fRandom * (m_fLoopDelayMax - m_fLoopDelayMin);
    }
    m_fWait -= fDelta;
    if (m_fWait <= 0.0f)
    {
        m_fWait = -1.0f;
        m_pFx->Restart();
    }
}

void CFxSceneEntity::SetVisible(bool bVisible)
{
    CSceneEntity::SetVisible(bVisible);
    if (m_pFx)
    {
        m_pFx->SetVisible(bVisible);
    }
}

void CFxSceneEntity::SetLayer(int32_t iLayer)
{
    CSceneEntity::SetLayer(iLayer);
    if (m_pFx)
    {
        m_pFx->SetChannelMask(LayerBit(iLayer));
    }
}

bool CFxSceneEntity::IsLooping() const
{
    return m_pFx && m_pFx->IsLooping();
}

void CFxSceneEntity::SetLoopDelay(float fMin, float fMax)
{
    m_fLoopDelayMin = fMin;
    m_fLoopDelayMax = fMax;
}

void CFxSceneEntity::SetShouldClip(bool bClip)
{
    m_uShouldClip = bClip ? 1 : 0;
    if (m_pFx)
    {
        m_pFx->SetShouldClip(bClip);
    }
}

// ---------------------------------------------------------------------------------------
// CSoundSceneEntity

CSoundSceneEntity::CSoundSceneEntity(CSceneContent* pScene) : CSceneEntity(pScene) {}

CSoundSceneEntity::~CSoundSceneEntity()
{
    DeleteSound();
}

void CSoundSceneEntity::DeleteSound()
{
    if (!m_pSound)
    {
        return;
    }
    Kestrin::Audio::IAudioDevice* pDevice = m_pScene ? m_pScene->GetAudioDevice() : nullptr;
    if (pDevice)
    {
        pDevice->DestroyAudio(m_pSound);
    }
    m_pSound = nullptr;
}

bool CSoundSceneEntity::TransferRecord(CSceneRecordIO& io)
{
    if (!TransferBase(io))
    {
        return false;
    }
    if (io.Block(TAG_SOUND, SOUND_VERSION) != ESceneBlock::OK)
    {
        io.Fail();
        return false;
    }
    io.Matrix("transform", m_mTransform);
    io.String("cueName", m_strCueName);
    if (io.Since(101))
    {
        io.U8("looped", m_uLooped);
    }
    return io.Ok();
}

bool CSoundSceneEntity::Save(CIOStream& stream)
{
    return SaveRecord(*this, stream);
}

bool CSoundSceneEntity::Load(CIOStream& stream, bool)
{
    DeleteSound();
    return LoadRecord(*this, stream,
                      [&]
                      {
                          if (!m_strCueName.empty())
                          {
                              SetCue(m_strCueName);
                          }
                      });
}

void CSoundSceneEntity::InitNew()
{
    m_strName = "Sound";
    SetCue(std::string());
}

void CSoundSceneEntity::SetCue(const std::string& strCueName)
{
    Kestrin::Audio::IAudioDevice* pDevice = m_pScene ? m_pScene->GetAudioDevice() : nullptr;
    if (!m_pSound && pDevice)
    {
        m_pSound = pDevice->CreateAudio();
    }
    m_strCueName = strCueName;
    if (m_pSound)
    {
        m_pSound->SetLoop(m_uLooped != 0);
        m_pSound->SetPosition(m_mTransform.GetTranslation());
        if (!strCueName.empty())
        {
            m_pSound->Play(strCueName);
        }
    }
}

void CSoundSceneEntity::SetLooped(bool bLooped)
{
    m_uLooped = bLooped ? 1 : 0;
    if (m_pSound)
    {
        m_pSound->SetLoop(bLooped);
    }
}

void CSoundSceneEntity::SetTransform(const CMatrix44& mTransform)
{
    m_mTransform = mTransform;
    if (m_pSound)
    {
        m_pSound->SetPosition(mTransform.GetTranslation());
    }
}

} // namespace Ovrel
