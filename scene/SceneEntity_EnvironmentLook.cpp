// The environment's look: its values as renderer settings, and the curve files of its
// "Curve" control.
#include "scene/SceneDiskFile.h"
#include "scene/SceneEnvironmentEntity.h"

#include "Utils/Utility/GUtDebug.h"

#include <stb_image.h>

#include <cstring>

namespace Ovrel
{

using Kestrin::Renderer::CRenderEnvironment;

namespace
{
constexpr const char* CURVE_SIZE_MESSAGE = "Width 256 pixels, height 1 pixel image file is required.";
constexpr size_t CURVE_RAW_SIZE = 768;
} // namespace

CRenderEnvironment ToRenderEnvironment(const CEnvironmentValues& v)
{
    using namespace Kestrin::Renderer;
    CRenderEnvironment r;
    r.avAmbient[AMBIENT_MESH][0] = v.vMesh1;
    r.avAmbient[AMBIENT_MESH][1] = v.vMesh2;
    r.avAmbient[AMBIENT_CHARACTER][0] = v.vChar1;
    r.avAmbient[AMBIENT_CHARACTER][1] = v.vChar2;
    r.avAmbient[AMBIENT_FX][0] = v.vFx1;
    r.avAmbient[AMBIENT_FX][1] = v.vFx2;
    r.iAmbientLightMapChannel = v.iLightMapChannel;
    r.vAmbientLightMapColor = v.vLMColor;
    r.vEffectLumAdjust = v.vScaleOffset;
    r.fog = {v.uFogOn != 0,  v.vFogColor1, v.vFogColor2, v.vFogDirection, v.fFogDensity1,
             v.fFogDensity2, v.fFogStart,  v.fFogEnd,    v.fFogAlpha1,    v.fFogAlpha2};
    r.dof = {v.uDofOn != 0, v.fDofFocus, v.fDofNear, v.fDofFar, v.fDofBlurRadius, v.fDofBlurDeviation};
    r.bloom = {v.uBloomOn != 0, v.fBloomScale, v.fBloomThreshold, v.fBloomBlurRadius, v.fBloomBlurDeviation};
    r.toneMapping = {v.uToneMappingOn != 0, v.fMiddleGray, v.fRange,       v.fLightenSpeed,
                     v.fDarkenSpeed,        v.fMinWhite,   v.fBurnOutRatio};
    r.fSkyDistance1 = v.fSkyDistance1;
    r.fSkyDistance2 = v.fSkyDistance2;
    r.fSkyPower = v.fSkyPower;
    r.vBackground = v.vBackgroundColor;
    r.fSaturation = v.fSaturation;
    r.bGammaCurve = v.uCurveOn != 0;
    memcpy(r.acCurve, v.acCurve, sizeof(r.acCurve));
    r.bLightShaft = v.uLightShaftOn != 0;
    r.fLumBiasPercent = v.fLumBiasPercent;
    r.lenseFlare = {v.uLenseFlareOn != 0, v.vFlarePosition, v.vFlareOffsetPosition,
                    v.fFlareOccludeSize,  v.fFlareScale,    v.iFlareKind};
    r.vWaterNormal = v.vWaterN;
    r.fWaterDistance = v.fWaterD;
    return r;
}

void CEnvironmentSceneEntity::SetBlend(const CEnvironmentValues& values)
{
    if (m_pBlend)
    {
        *m_pBlend = values;
    }
    else
    {
        m_pBlend = std::make_unique<CEnvironmentValues>(values);
    }
}

void CEnvironmentSceneEntity::ApplyTo(Kestrin::Renderer::IRendererSettings& settings) const
{
    settings.SetEnvironment(ToRenderEnvironment(GetShownValues()));
}

bool ReadCurveFile(const std::string& strPath, const std::vector<uint8_t>& bytes, uint8_t (&acCurve)[768],
                   std::string& strError)
{
    if (HasExtension(strPath, ".raw"))
    {
        if (bytes.size() != CURVE_RAW_SIZE)
        {
            strError = "A .raw curve file holds 768 bytes: 256 red, green, blue triples.";
            return false;
        }
        for (size_t i = 0; i < 256; ++i)
        {
            acCurve[i] = bytes[3 * i];
            acCurve[256 + i] = bytes[3 * i + 1];
            acCurve[512 + i] = bytes[3 * i + 2];
        }
        return true;
    }
    int iWidth = 0, iHeight = 0, iChannels = 0;
    // The size is known from the header alone; only a 256 by 1 image is decoded.
    if (bytes.empty() || bytes.size() > INT32_MAX ||
        !stbi_info_from_memory(bytes.data(), static_cast<int>(bytes.size()), &iWidth, &iHeight, &iChannels))
    {
        strError = "The curve file is no image that can be read.";
        return false;
    }
    if (iWidth != 256 || iHeight != 1)
    {
        strError = CURVE_SIZE_MESSAGE;
        return false;
    }
    uint8_t* pPixels =
        stbi_load_from_memory(bytes.data(), static_cast<int>(bytes.size()), &iWidth, &iHeight, &iChannels, 3);
    if (!pPixels || iWidth != 256 || iHeight != 1)
    {
        stbi_image_free(pPixels);
        strError = "The curve file is no image that can be read.";
        return false;
    }
    for (size_t i = 0; i < 256; ++i)
    {
        acCurve[i] = pPixels[3 * i];
        acCurve[256 + i] = pPixels[3 * i + 1];
        acCurve[512 + i] = pPixels[3 * i + 2];
    }
    stbi_image_free(pPixels);
    return true;
}

bool CEnvironmentSceneEntity::LoadCurveFile(const std::string& strPath)
{
    std::vector<uint8_t> bytes;
    std::string strError;
    uint8_t acCurve[768];
    if (!ReadWholeFile(strPath.c_str(), bytes))
    {
        strError = "The curve file cannot be read.";
    }
    else if (ReadCurveFile(strPath, bytes, acCurve, strError))
    {
        memcpy(m_values.acCurve, acCurve, sizeof(acCurve));
        m_values.strCurveFile = strPath;
        return true;
    }
    GUtLog::Get().DisplayMsg(true, "Curve", "%s", strError.c_str());
    return false;
}

} // namespace Ovrel
