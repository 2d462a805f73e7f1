// The renderer's settings as the scene's environment sets them: ambient light, fog, depth of
// field, bloom, tone mapping, sky, background, the colour curve and saturation, light shaft,
// lense flare and the water plane. The environment in force hands them over once a frame,
// whole, before the frame is built (the application's BuildRenderBuffer step).
//
// A system without a renderer uses CNullRendererSettings; tests use the recording one.
#pragma once

#include "engine/utility/Math.h"

#include <cstdint>

namespace Kestrin::Renderer
{

using Kestrin::Utility::CVec3;
using Kestrin::Utility::CVec4;

// What an ambient pair lights, as the "ambient" setting's channel argument counts them.
enum : int32_t
{
    AMBIENT_MESH = 0,
    AMBIENT_CHARACTER = 1,
    AMBIENT_FX = 2,
    AMBIENT_CHANNEL_COUNT = 3,
};

struct CRenderFog
{
    bool bOn = false;
    CVec3 vColor1{1.0f, 1.0f, 1.0f};
    CVec3 vColor2{1.0f, 1.0f, 1.0f};
    CVec3 vDirection{0.0f, 0.0f, 1.0f};
    float fDensity1 = 1.0f, fDensity2 = 1.0f;
    float fStart = 100.0f, fEnd = 3000.0f;
    float fAlpha1 = 1.0f, fAlpha2 = 1.0f;
    bool operator==(const CRenderFog&) const = default;
};

struct CRenderDof
{
    bool bOn = false;
    float fFocus = 1000.0f, fNear = 1000.0f, fFar = 3000.0f;
    float fBlurRadius = 3.0f, fBlurDeviation = 3.0f;
    bool operator==(const CRenderDof&) const = default;
};

struct CRenderBloom
{
    bool bOn = false;
    float fScale = 1.5f, fThreshold = 0.8f;
    float fBlurRadius = 7.0f, fBlurDeviation = 3.0f;
    bool operator==(const CRenderBloom&) const = default;
};

struct CRenderToneMapping
{
    bool bOn = false;
    float fMiddleGray = 0.18f, fRange = 1.0f;
    float fLightenSpeed = 1.0f, fDarkenSpeed = 1.0f;
    float fMinWhite = 1.0f, fBurnOutRatio = 1.0f;
    bool operator==(const CRenderToneMapping&) const = default;
};

struct CRenderLenseFlare
{
    bool bOn = false;
    CVec3 vPosition, vOffsetPosition;
    float fOccludeSize = 0.0f, fScale = 1.0f;
    int32_t iKind = 0;
    bool operator==(const CRenderLenseFlare&) const = default;
};

// One environment's worth of settings.
struct CRenderEnvironment
{
    CRenderEnvironment();

    // Two colours per channel: the first and second ambient term.
    CVec3 avAmbient[AMBIENT_CHANNEL_COUNT][2];
    int32_t iAmbientLightMapChannel = -1; // -1 none, else 0 red to 3 alpha
    CVec3 vAmbientLightMapColor;
    CVec4 vEffectLumAdjust{1.0f, 0.0f, 1.0f, 0.0f}; // scale and offset
    CRenderFog fog;
    CRenderDof dof;
    CRenderBloom bloom;
    CRenderToneMapping toneMapping;
    float fSkyDistance1 = 10000.0f, fSkyDistance2 = 10000.0f, fSkyPower = 1.0f;
    CVec3 vBackground{0.5f, 0.5f, 0.5f};
    float fSaturation = 1.0f;
    bool bGammaCurve = false;
    uint8_t acCurve[3][256]; // red, green, blue; identity by default
    bool bLightShaft = false;
    float fLumBiasPercent = 0.0f;
    CRenderLenseFlare lenseFlare;
    CVec3 vWaterNormal{0.0f, 0.0f, 1.0f};
    float fWaterDistance = 0.0f;

    bool operator==(const CRenderEnvironment&) const = default;
};

class IRendererSettings
{
public:
    virtual ~IRendererSettings() = default;
    IRendererSettings(const IRendererSettings&) = delete;
    IRendererSettings& operator=(const IRendererSettings&) = delete;

    // The environment for the frames to come; the renderer keeps a copy. Main thread only.
    virtual void SetEnvironment(const CRenderEnvironment& environment) = 0;

protected:
    IRendererSettings() = default;
};

// A system without a renderer: the settings go nowhere.
class CNullRendererSettings final : public IRendererSettings
{
public:
    CNullRendererSettings() = default;
    void SetEnvironment(const CRenderEnvironment&) override {}
};

// Keeps the last environment and counts the calls, for headless checks.
class CRecordingRendererSettings final : public IRendererSettings
{
public:
    CRecordingRendererSettings() = default;
    void SetEnvironment(const CRenderEnvironment& environment) override
    {
        m_last = environment;
        ++m_iCalls;
    }
    const CRenderEnvironment& GetLast() const { return m_last; }
    int32_t GetCalls() const { return m_iCalls; }

private:
    CRenderEnvironment m_last;
    int32_t m_iCalls = 0;
};

} // namespace Kestrin::Renderer
