// Lights: record, engine light, and the defaults of lights made by menu or import.
#include "scene/SceneContent.h"
#include "scene/SceneLightEntity.h"

#include <cmath>

namespace Ovrel
{

using Kestrin::Ext::CRenderLightSettings;

CLightSceneEntity::CLightSceneEntity(CSceneContent* pScene) : CSceneEntity(pScene) {}

CLightSceneEntity::~CLightSceneEntity()
{
    DeleteLight();
}

bool CLightSceneEntity::TransferRecord(CSceneRecordIO& io)
{
    if (!TransferBase(io))
    {
        return false;
    }
    if (io.Block(TAG_LIGHT, LIGHT_VERSION) != ESceneBlock::OK)
    {
        io.Fail();
        return false;
    }
    CRenderLightSettings& s = m_settings;
    io.Matrix("transform", m_mTransform);
    io.String("materialFile", m_strMaterialFile);
    io.U8("hasLight", m_uHasLight);
    if (!m_uHasLight)
    {
        return io.Ok();
    }
    io.U8("visible", m_uVisible);
    io.U8("shadow", s.uShadow);
    io.U8("lightMapFlag", s.uLightMapFlag);
    io.U8("kindFlagA", s.uKindFlagA);
    io.U8("kindFlagB", s.uKindFlagB);
    io.F32("bias", s.fBias);
    io.F32("range", s.fRange);
    io.F32("coneInner", s.fConeInner);
    io.F32("coneOuter", s.fConeOuter);
    io.F32("intensity", s.fIntensity);
    io.U16("lightMapChannel", s.uLightMapChannel);
    io.U16("zoneLayer", s.uZoneLayer);
    io.U8Signed("lightType", s.iLightType);
    io.U8Signed("blend", s.iBlend);
    io.Vec2("size", s.vSize);
    io.Vec3("color", s.vColor);
    io.Vec3("lightMapColor", s.vLightMapColor);
    io.I32("lightGroup", s.iLightGroup);
    if (io.Since(101))
    {
        io.I32("passPortal", s.iPassPortal);
    }
    if (io.Since(102))
    {
        io.U8("lightShaft", s.uLightShaft);
        io.F32("occludeDepthRange", s.fOccludeDepthRange);
        io.F32("luminanceBias", s.fLuminanceBias);
        io.F32("sampleDecay", s.fSampleDecay);
        io.F32("sampleDensity", s.fSampleDensity);
        io.F32("occludeMask", s.fOccludeMask);
        io.F32("sampleCount", s.fSampleCount);
        io.F32("bloomRadius", s.fBloomRadius);
        io.F32("bloomDeviation", s.fBloomDeviation);
        io.F32("exposure", s.fExposure);
        io.F32("priority", s.fPriority);
        // The format stores Luminance Bias a second time; on reading the last one wins.
        io.F32("luminanceBiasAgain", s.fLuminanceBias);
    }
    if (io.Since(103))
    {
        io.U8("sssTransparent", s.uSssTransparent);
    }
    return io.Ok();
}

bool CLightSceneEntity::Save(CIOStream& stream)
{
    return SaveRecord(*this, stream);
}

bool CLightSceneEntity::Load(CIOStream& stream, bool)
{
    DeleteLight();
    return LoadRecord(*this, stream,
                      [&]
                      {
                          if (m_uHasLight)
                          {
                              CreateLight();
                          }
                      });
}

bool CLightSceneEntity::CreateLight()
{
    DeleteLight();
    Kestrin::Ext::CRenderWorld* pWorld = m_pScene ? m_pScene->GetRenderWorld() : nullptr;
    m_pLight = pWorld ? pWorld->CreateLight() : nullptr;
    if (!m_pLight)
    {
        return false;
    }
    m_uHasLight = 1;
    PushSettings();
    m_pLight->SetMaterial(m_strMaterialFile);
    m_pLight->SetWorldTransform(m_mTransform);
    m_pLight->SetLayerMask(LayerBit(m_iLayer));
    return true;
}

void CLightSceneEntity::DeleteLight()
{
    if (m_pLight)
    {
        m_pLight->Release();
        m_pLight = nullptr;
    }
}

void CLightSceneEntity::PushSettings()
{
    if (m_pLight)
    {
        CRenderLightSettings settings = m_settings;
        settings.uVisible = m_uVisible;
        m_pLight->SetSettings(settings);
    }
}

void CLightSceneEntity::SetSettings(const CRenderLightSettings& settings)
{
    m_settings = settings;
    m_uVisible = settings.uVisible;
    m_uHasLight = 1;
    PushSettings();
}

void CLightSceneEntity::SetMaterialFile(const std::string& strFile)
{
    m_strMaterialFile = strFile;
    if (m_pLight)
    {
        m_pLight->SetMaterial(strFile);
    }
}

void CLightSceneEntity::SetTransform(const CMatrix44& mTransform)
{
    m_mTransform = mTransform;
    if (m_pLight)
    {
        m_pLight->SetWorldTransform(mTransform);
    }
}

void CLightSceneEntity::SetVisible(bool bVisible)
{
    CSceneEntity::SetVisible(bVisible);
    m_settings.uVisible = m_uVisible;
    PushSettings();
}

void CLightSceneEntity::SetLayer(int32_t iLayer)
{
    CSceneEntity::SetLayer(iLayer);
    if (m_pLight)
    {
        m_pLight->SetLayerMask(LayerBit(iLayer));
    }
}

void CLightSceneEntity::InitByMenuName(const std::string& strMenuName)
{
    CRenderLightSettings s = m_settings;
    s.iLightGroup = LIGHT_GROUP_MESH | LIGHT_GROUP_CHARACTER;
    if (strMenuName.find("Spot") != std::string::npos)
    {
        m_strName = "SpotLight01";
        s.iLightType = 1;
        s.fRange = 300.0f;
        s.fConeInner = 30.0f;
        s.fConeOuter = 45.0f;
    }
    else if (strMenuName.find("Directional") != std::string::npos)
    {
        m_strName = "DirectionalLight01";
        s.iLightType = 2;
        s.fRange = 0.0f;
        s.vSize = {200.0f, 200.0f};
        s.iLightGroup = LIGHT_GROUP_MESH | LIGHT_GROUP_CHARACTER | LIGHT_GROUP_THIRD;
    }
    else
    {
        m_strName = "PointLight01";
        s.iLightType = 0;
        s.fRange = 300.0f;
    }
    SetSettings(s);
}

void CLightSceneEntity::InitFromImport(const CImportedLight& light)
{
    CRenderLightSettings s = m_settings;
    s.vColor = light.vColor;
    s.fIntensity = std::fabs(light.fIntensity);
    s.fRange = 300.0f;
    s.fConeInner = 40.0f;
    s.fConeOuter = 50.0f;
    s.vSize = {200.0f, 200.0f};
    s.iLightType = light.iKind;
    switch (light.iKind)
    {
        case 0:
            s.fRange = light.fRange;
            break;
        case 1:
            s.fRange = light.fRange;
            s.fConeInner = light.fConeInner;
            s.fConeOuter = light.fConeOuter;
            break;
        case 2:
            s.vSize.x = 2.0f * light.fMagnification;
            s.vSize.y = s.vSize.x / light.fAspect;
            s.fRange = light.bInfinite ? 0.0f : light.fRange;
            break;
        default:
            break;
    }
    SetSettings(s);
}

} // namespace Ovrel
