// The environment's record and defaults.
#include "scene/SceneEnvironmentEntity.h"

namespace Ovrel
{

namespace
{
const CVec3 AMBIENT_FIRST{0.3f, 0.3f, 0.3f};
const CVec3 AMBIENT_SECOND{0.05f, 0.05f, 0.05f};
} // namespace

CEnvironmentValues::CEnvironmentValues()
    : vMesh1(AMBIENT_FIRST), vMesh2(AMBIENT_SECOND), vChar1(AMBIENT_FIRST), vChar2(AMBIENT_SECOND),
      vFx1(AMBIENT_FIRST), vFx2(AMBIENT_SECOND)
{
    // The identity curve in each channel.
    for (int i = 0; i < 256; ++i)
    {
        acCurve[i] = acCurve[256 + i] = acCurve[512 + i] = static_cast<uint8_t>(i);
    }
}

void CEnvironmentSceneEntity::InitNew()
{
    m_values.vMesh1 = m_values.vChar1 = m_values.vFx1 = AMBIENT_FIRST;
    m_values.vMesh2 = m_values.vChar2 = m_values.vFx2 = AMBIENT_SECOND;
}

bool CEnvironmentSceneEntity::TransferRecord(CSceneRecordIO& io)
{
    if (!TransferBase(io))
    {
        return false;
    }
    if (io.Block(TAG_ENVIRONMENT, ENVIRONMENT_VERSION) != ESceneBlock::OK)
    {
        io.Fail();
        return false;
    }
    CEnvironmentValues& v = m_values;
    io.Vec3("Mesh1", v.vMesh1);
    io.Vec3("Mesh2", v.vMesh2);
    if (io.Since(108))
    {
        io.Vec3("Char1", v.vChar1);
        io.Vec3("Char2", v.vChar2);
        io.Vec3("Fx1", v.vFx1);
        io.Vec3("Fx2", v.vFx2);
    }
    else if (io.IsReading())
    {
        v.vChar1 = v.vFx1 = v.vMesh1;
        v.vChar2 = v.vFx2 = v.vMesh2;
    }
    io.Vec3("LMColor", v.vLMColor);
    io.I32("LightMapChannel", v.iLightMapChannel);
    io.U8("fogOn", v.uFogOn);
    io.Vec3("fogColor1", v.vFogColor1);
    io.Vec3("fogColor2", v.vFogColor2);
    io.Vec3("fogDirection", v.vFogDirection);
    io.F32("fogDensity1", v.fFogDensity1);
    io.F32("fogDensity2", v.fFogDensity2);
    io.F32("fogStart", v.fFogStart);
    io.F32("fogEnd", v.fFogEnd);
    if (io.Since(102))
    {
        io.F32("fogAlpha1", v.fFogAlpha1);
        io.F32("fogAlpha2", v.fFogAlpha2);
    }
    io.U8("dofOn", v.uDofOn);
    io.F32("dofFocus", v.fDofFocus);
    io.F32("dofNear", v.fDofNear);
    io.F32("dofFar", v.fDofFar);
    io.F32("dofBlurRadius", v.fDofBlurRadius);
    if (io.Since(103))
    {
        io.F32("dofBlurDeviation", v.fDofBlurDeviation);
    }
    io.U8("bloomOn", v.uBloomOn);
    io.F32("bloomScale", v.fBloomScale);
    io.F32("bloomThreshold", v.fBloomThreshold);
    io.F32("bloomBlurRadius", v.fBloomBlurRadius);
    if (io.Since(103))
    {
        io.F32("bloomBlurDeviation", v.fBloomBlurDeviation);
    }
    io.U8("toneMappingOn", v.uToneMappingOn);
    io.F32("MiddleGray", v.fMiddleGray);
    io.F32("Range", v.fRange);
    io.F32("LightenSpeed", v.fLightenSpeed);
    io.F32("DarkenSpeed", v.fDarkenSpeed);
    io.F32("MinWhite", v.fMinWhite);
    io.F32("BurnOutRatio", v.fBurnOutRatio);
    io.F32("skyDistance1", v.fSkyDistance1);
    if (io.Since(109))
    {
        io.F32("skyDistance2", v.fSkyDistance2);
        io.F32("skyPower", v.fSkyPower);
    }
    else if (io.IsReading())
    {
        v.fSkyDistance2 = v.fSkyDistance1;
        v.fSkyPower = 1.0f;
    }
    if (io.Since(101))
    {
        io.Vec3("BackgroundColor", v.vBackgroundColor);
    }
    io.F32("Saturation", v.fSaturation);
    io.U8("curveOn", v.uCurveOn);
    io.String("curveFile", v.strCurveFile);
    io.Bytes("curve", v.acCurve, 768);
    if (io.Since(104))
    {
        io.Vec4("ScaleOffset", v.vScaleOffset);
    }
    if (io.Since(105))
    {
        io.U8("lightShaftOn", v.uLightShaftOn);
    }
    if (io.Since(106))
    {
        io.F32("LumBiasPercent", v.fLumBiasPercent);
        io.U8("lenseFlareOn", v.uLenseFlareOn);
        io.Vec3("position", v.vFlarePosition);
        io.Vec3("offsetposition", v.vFlareOffsetPosition);
        io.F32("occludesize", v.fFlareOccludeSize);
        io.F32("scale", v.fFlareScale);
    }
    if (io.Since(107))
    {
        io.I32("kind", v.iFlareKind);
    }
    if (io.Since(110))
    {
        io.Vec3("waterN", v.vWaterN);
        io.F32("waterD", v.fWaterD);
    }
    return io.Ok();
}

bool CEnvironmentSceneEntity::Save(CIOStream& stream)
{
    return SaveRecord(*this, stream);
}

bool CEnvironmentSceneEntity::Load(CIOStream& stream, bool)
{
    return LoadRecord(*this, stream, [] {});
}

} // namespace Ovrel
