// The environment: a scene's look (ambient colours, fog, depth of field, bloom, tone mapping,
// sky, gamma curve, light shaft, lense flare, water plane). Its values are the ENVI record;
// the renderer receives them each frame from the environment in force. While an environment
// animation runs, a second, derived set of values (the blend) is shown in place of its own.
#pragma once

#include "scene/SceneEntity.h"

#include "engine/renderer/RendererSettings.h"

#include <cstdint>
#include <memory>
#include <string>
#include <vector>

namespace Ovrel
{

// The ENVI record's values, named by the labels of the environment window.
struct CEnvironmentValues
{
    CEnvironmentValues();

    CVec3 vMesh1, vMesh2, vChar1, vChar2, vFx1, vFx2; // ambient pairs
    CVec3 vLMColor{1.0f, 1.0f, 1.0f};
    int32_t iLightMapChannel = -1; // "None", else 0 (Red) to 3 (Alpha)
    uint8_t uFogOn = 0;
    CVec3 vFogColor1{0.5f, 0.5f, 0.5f}, vFogColor2{0.5f, 0.5f, 0.5f}, vFogDirection{0.0f, 0.0f, 1.0f};
    float fFogDensity1 = 0.0f, fFogDensity2 = 0.0f, fFogStart = 0.0f, fFogEnd = 10000.0f;
    float fFogAlpha1 = 1.0f, fFogAlpha2 = 1.0f;
    uint8_t uDofOn = 0;
    float fDofFocus = 0.0f, fDofNear = 0.0f, fDofFar = 0.0f, fDofBlurRadius = 0.0f;
    float fDofBlurDeviation = 0.0f;
    uint8_t uBloomOn = 0;
    float fBloomScale = 1.0f, fBloomThreshold = 0.0f, fBloomBlurRadius = 0.0f;
    float fBloomBlurDeviation = 0.0f;
    uint8_t uToneMappingOn = 0;
    float fMiddleGray = 0.18f, fRange = 1.0f, fLightenSpeed = 1.0f, fDarkenSpeed = 1.0f, fMinWhite = 1.0f,
          fBurnOutRatio = 1.0f;
    float fSkyDistance1 = 0.0f;
    float fSkyDistance2 = 0.0f, fSkyPower = 1.0f;
    CVec3 vBackgroundColor;
    float fSaturation = 1.0f;
    uint8_t uCurveOn = 0;
    std::string strCurveFile;
    uint8_t acCurve[768]; // 256 red, then 256 green, then 256 blue
    CVec4 vScaleOffset{1.0f, 0.0f, 1.0f, 0.0f};
    uint8_t uLightShaftOn = 0;
    float fLumBiasPercent = 0.0f;
    uint8_t uLenseFlareOn = 0;
    CVec3 vFlarePosition, vFlareOffsetPosition;
    float fFlareOccludeSize = 0.0f, fFlareScale = 1.0f;
    int32_t iFlareKind = 0;
    CVec3 vWaterN{0.0f, 0.0f, 1.0f};
    float fWaterD = 0.0f;
};

class CEnvironmentSceneEntity final : public CSceneEntity
{
public:
    explicit CEnvironmentSceneEntity(CSceneContent* pScene) : CSceneEntity(pScene) {}

    uint32_t GetType() const override { return ENTITY_ENVIRONMENT; }
    bool Save(CIOStream& stream) override;
    bool Load(CIOStream& stream, bool bAsync) override;

    // Older blocks upgrade on reading: below 108 the character and fx colours copy Mesh1
    // and Mesh2; below 109 sky Distance2 is Distance1 and Power 1.
    bool TransferRecord(CSceneRecordIO& io);

    // A new environment: each ambient pair (0.3, 0.3, 0.3) and (0.05, 0.05, 0.05).
    void InitNew();
    const CEnvironmentValues& GetValues() const { return m_values; }
    void SetValues(const CEnvironmentValues& values) { m_values = values; }

    // --- what the renderer is shown
    // The blend of a running animation, or null.
    const CEnvironmentValues* GetBlend() const { return m_pBlend.get(); }
    void SetBlend(const CEnvironmentValues& values);
    void ClearBlend() { m_pBlend.reset(); }
    // The blend while there is one, else the entity's own values.
    const CEnvironmentValues& GetShownValues() const { return m_pBlend ? *m_pBlend : m_values; }
    // Hands the shown values to the renderer.
    void ApplyTo(Kestrin::Renderer::IRendererSettings& settings) const;

    // --- the "Curve" control
    // Reads a curve file into the three tables and keeps its path in curveFile. A `.raw`
    // file is 768 bytes of red, green, blue triples; any other is an image 256 pixels wide
    // and 1 high, whose pixels give red, green and blue. A file of another size or one that
    // does not read is refused with a message box, and nothing changes.
    bool LoadCurveFile(const std::string& strPath);

private:
    CEnvironmentValues m_values;
    std::unique_ptr<CEnvironmentValues> m_pBlend;
};

// The renderer's settings of a set of environment values.
Kestrin::Renderer::CRenderEnvironment ToRenderEnvironment(const CEnvironmentValues& values);
// The three curve tables from a curve file's bytes (see LoadCurveFile); the planar order of
// the ENVI record (256 red, 256 green, 256 blue). False with the message in strError.
bool ReadCurveFile(const std::string& strPath, const std::vector<uint8_t>& bytes, uint8_t (&acCurve)[768],
                   std::string& strError);

} // namespace Ovrel
