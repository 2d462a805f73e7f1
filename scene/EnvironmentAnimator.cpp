// CEnvironmentAnimator: the animation list, the blend and its per-frame step.
#include "scene/EnvironmentAnimator.h"

#include "scene/Scene.h"

#include "Utils/Utility/GUtDebug.h"
#include "engine/utility/SystemOutput.h"

#include <cmath>

namespace Ovrel
{

namespace
{
float Mix(float a, float b, float t)
{
    return a + (b - a) * t;
}

CVec3 Mix(const CVec3& a, const CVec3& b, float t)
{
    return {Mix(a.x, b.x, t), Mix(a.y, b.y, t), Mix(a.z, b.z, t)};
}

CVec4 Mix(const CVec4& a, const CVec4& b, float t)
{
    return {Mix(a.x, b.x, t), Mix(a.y, b.y, t), Mix(a.z, b.z, t), Mix(a.w, b.w, t)};
}

void BlendNumbers(CEnvironmentValues& o, const CEnvironmentValues& a, const CEnvironmentValues& b, float t)
{
    o.vMesh1 = Mix(a.vMesh1, b.vMesh1, t);
    o.vMesh2 = Mix(a.vMesh2, b.vMesh2, t);
    o.vChar1 = Mix(a.vChar1, b.vChar1, t);
    o.vChar2 = Mix(a.vChar2, b.vChar2, t);
    o.vFx1 = Mix(a.vFx1, b.vFx1, t);
    o.vFx2 = Mix(a.vFx2, b.vFx2, t);
    o.vLMColor = Mix(a.vLMColor, b.vLMColor, t);
    o.vFogColor1 = Mix(a.vFogColor1, b.vFogColor1, t);
    o.vFogColor2 = Mix(a.vFogColor2, b.vFogColor2, t);
    o.vFogDirection = Mix(a.vFogDirection, b.vFogDirection, t);
    o.fFogDensity1 = Mix(a.fFogDensity1, b.fFogDensity1, t);
    o.fFogDensity2 = Mix(a.fFogDensity2, b.fFogDensity2, t);
    o.fFogStart = Mix(a.fFogStart, b.fFogStart, t);
    o.fFogEnd = Mix(a.fFogEnd, b.fFogEnd, t);
    o.fFogAlpha1 = Mix(a.fFogAlpha1, b.fFogAlpha1, t);
    o.fFogAlpha2 = Mix(a.fFogAlpha2, b.fFogAlpha2, t);
    o.fDofFocus = Mix(a.fDofFocus, b.fDofFocus, t);
    o.fDofNear = Mix(a.fDofNear, b.fDofNear, t);
    o.fDofFar = Mix(a.fDofFar, b.fDofFar, t);
    o.fDofBlurRadius = Mix(a.fDofBlurRadius, b.fDofBlurRadius, t);
    o.fDofBlurDeviation = Mix(a.fDofBlurDeviation, b.fDofBlurDeviation, t);
    o.fBloomScale = Mix(a.fBloomScale, b.fBloomScale, t);
    o.fBloomThreshold = Mix(a.fBloomThreshold, b.fBloomThreshold, t);
    o.fBloomBlurRadius = Mix(a.fBloomBlurRadius, b.fBloomBlurRadius, t);
    o.fBloomBlurDeviation = Mix(a.fBloomBlurDeviation, b.fBloomBlurDeviation, t);
    o.fMiddleGray = Mix(a.fMiddleGray, b.fMiddleGray, t);
    o.fRange = Mix(a.fRange, b.fRange, t);
    o.fLightenSpeed = Mix(a.fLightenSpeed, b.fLightenSpeed, t);
    o.fDarkenSpeed = Mix(a.fDarkenSpeed, b.fDarkenSpeed, t);
    o.fMinWhite = Mix(a.fMinWhite, b.fMinWhite, t);
    o.fBurnOutRatio = Mix(a.fBurnOutRatio, b.fBurnOutRatio, t);
    o.fSkyDistance1 = Mix(a.fSkyDistance1, b.fSkyDistance1, t);
    o.fSkyDistance2 = Mix(a.fSkyDistance2, b.fSkyDistance2, t);
    o.fSkyPower = Mix(a.fSkyPower, b.fSkyPower, t);
    o.vBackgroundColor = Mix(a.vBackgroundColor, b.vBackgroundColor, t);
    o.fSaturation = Mix(a.fSaturation, b.fSaturation, t);
    o.vScaleOffset = Mix(a.vScaleOffset, b.vScaleOffset, t);
    o.fLumBiasPercent = Mix(a.fLumBiasPercent, b.fLumBiasPercent, t);
    o.vFlarePosition = Mix(a.vFlarePosition, b.vFlarePosition, t);
    o.vFlareOffsetPosition = Mix(a.vFlareOffsetPosition, b.vFlareOffsetPosition, t);
    o.fFlareOccludeSize = Mix(a.fFlareOccludeSize, b.fFlareOccludeSize, t);
    o.fFlareScale = Mix(a.fFlareScale, b.fFlareScale, t);
    o.vWaterN = Mix(a.vWaterN, b.vWaterN, t);
    o.fWaterD = Mix(a.fWaterD, b.fWaterD, t);
    for (size_t i = 0; i < sizeof(o.acCurve); ++i)
    {
        o.acCurve[i] = static_cast<uint8_t>(std::lround(Mix(a.acCurve[i], b.acCurve[i], t)));
    }
}
} // namespace

CEnvironmentValues BlendEnvironment(const CEnvironmentValues& a, const CEnvironmentValues& b, float t)
{
    // Switches and kinds cannot be halfway: they change at the middle of the blend.
    CEnvironmentValues o = t < 0.5f ? a : b;
    BlendNumbers(o, a, b, t);
    return o;
}

CEnvironmentAnimator::CEnvironmentAnimator(CScene* pScene) : m_pScene(pScene) {}

// The scene may be gone already (the application destroys the animator after its scenes);
// a blend left behind lives and dies with its entity.
CEnvironmentAnimator::~CEnvironmentAnimator() = default;

bool CEnvironmentAnimator::Add(const std::string& strName, float fStartTime, float fEndTime,
                               const std::string& strTarget)
{
    if (!(fEndTime > fStartTime))
    {
        GUtLog::Get().DisplayMsg(LogError, "EnvironmentAnimation",
                                 "EnvironmentAnimation error ! EndTime should bigger than StartTime .");
        return false;
    }
    for (const CAnimation& animation : m_animations)
    {
        if (animation.strName == strName)
        {
            GUtLog::Get().DisplayMsg(LogError, "EnvironmentAnimation",
                                     "EnvironmentAnimation error ! name exist. %s", strName.c_str());
            return false;
        }
    }
    m_animations.push_back({strName, fStartTime, fEndTime, strTarget});
    return true;
}

CEnvironmentSceneEntity* CEnvironmentAnimator::FindEnvironment(int32_t iId) const
{
    CSceneEntity* pEntity = m_pScene ? m_pScene->FindById(iId) : nullptr;
    return (pEntity && pEntity->GetType() == ENTITY_ENVIRONMENT)
               ? static_cast<CEnvironmentSceneEntity*>(pEntity)
               : nullptr;
}

bool CEnvironmentAnimator::Activate(const std::string& strName)
{
    for (size_t i = 0; i < m_animations.size(); ++i)
    {
        if (m_animations[i].strName != strName)
        {
            continue;
        }
        CEnvironmentSceneEntity* pShown = m_pScene ? m_pScene->GetEnvironment() : nullptr;
        CSceneEntity* pTarget =
            m_pScene ? m_pScene->FindByName(m_animations[i].strTarget, ENTITY_ENVIRONMENT) : nullptr;
        if (!pShown || !pTarget)
        {
            return false;
        }
        // The new animation starts from what is on screen, a running blend included.
        m_from = pShown->GetShownValues();
        Stop();
        m_iEnvironmentId = pShown->GetId();
        m_iTargetId = pTarget->GetId();
        m_iRunning = i;
        m_fElapsed = 0.0f;
        m_bRunning = true;
        pShown->SetBlend(m_from);
        return true;
    }
    return false;
}

bool CEnvironmentAnimator::ActiveEnvAnim(const std::string& strName)
{
    if (Activate(strName))
    {
        return true;
    }
    Kestrin::Utility::Printf("ActiveEnvAnim env: \"%s\" not founded.\n", strName.c_str());
    return false;
}

void CEnvironmentAnimator::Update(float fDelta)
{
    if (!m_bRunning)
    {
        return;
    }
    CEnvironmentSceneEntity* pShown = FindEnvironment(m_iEnvironmentId);
    CEnvironmentSceneEntity* pTarget = FindEnvironment(m_iTargetId);
    if (!pShown || !pTarget)
    {
        // The scene changed under the animation: nothing of it is left to show.
        m_bRunning = false;
        m_iEnvironmentId = m_iTargetId = 0;
        return;
    }
    const CAnimation& animation = m_animations[m_iRunning];
    m_fElapsed += fDelta;
    float t = (m_fElapsed - animation.fStartTime) / (animation.fEndTime - animation.fStartTime);
    t = std::fmin(std::fmax(t, 0.0f), 1.0f);
    pShown->SetBlend(BlendEnvironment(m_from, pTarget->GetValues(), t));
    if (t >= 1.0f)
    {
        // The target's look stays; the blend object keeps it.
        m_bRunning = false;
    }
}

void CEnvironmentAnimator::Stop()
{
    CEnvironmentSceneEntity* pShown = FindEnvironment(m_iEnvironmentId);
    if (pShown)
    {
        pShown->ClearBlend();
    }
    m_bRunning = false;
    m_iEnvironmentId = m_iTargetId = 0;
}

void CEnvironmentAnimator::Clear()
{
    Stop();
    m_animations.clear();
}

} // namespace Ovrel
