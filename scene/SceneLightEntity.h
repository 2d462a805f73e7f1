// Lights placed in a scene: point, spot and directional, with their lightmap, shadow and
// light-shaft settings. The record's values live in the entity; the engine light, when a
// render world exists, receives them whole.
#pragma once

#include "scene/SceneEntity.h"

#include "engine/renderer/RenderWorld.h"

#include <cstdint>
#include <string>

namespace Ovrel
{

// A light as the Collada import hands it over.
struct CImportedLight
{
    int32_t iKind = 0; // 0 point, 1 spot, 2 directional
    CVec3 vColor{1.0f, 1.0f, 1.0f};
    float fIntensity = 1.0f;
    float fRange = 0.0f;
    bool bInfinite = false;
    float fConeInner = 0.0f;
    float fConeOuter = 0.0f;
    float fMagnification = 0.0f;
    float fAspect = 1.0f;
};

class CLightSceneEntity final : public CSceneEntity
{
public:
    explicit CLightSceneEntity(CSceneContent* pScene);
    ~CLightSceneEntity() override;

    uint32_t GetType() const override { return ENTITY_LIGHT; }
    bool Save(CIOStream& stream) override;
    bool Load(CIOStream& stream, bool bAsync) override;
    void SetTransform(const CMatrix44& mTransform) override;
    void GetTransform(CMatrix44& mTransform) const override { mTransform = m_mTransform; }
    void SetVisible(bool bVisible) override;
    void SetLayer(int32_t iLayer) override;
    // The projector material.
    void SetResourceName(const std::string& strName) override { SetMaterialFile(strName); }
    std::string GetResourceName() const override { return m_strMaterialFile; }

    bool TransferRecord(CSceneRecordIO& io);

    // A light made by the editor's menu: the word "Spot" or "Directional" in the menu name
    // picks the kind, its name and its defaults; anything else is a point light.
    void InitByMenuName(const std::string& strMenuName);
    // A light from a Collada file.
    void InitFromImport(const CImportedLight& light);

    // The engine light, in the render world; false when there is none to be had.
    bool CreateLight();
    void DeleteLight();
    Kestrin::Ext::CBaseRenderLight* GetLight() const { return m_pLight; }

    // A light without settings (hasLight 0 in its record) saves the material name only.
    bool HasLight() const { return m_uHasLight != 0; }
    const Kestrin::Ext::CRenderLightSettings& GetSettings() const { return m_settings; }
    void SetSettings(const Kestrin::Ext::CRenderLightSettings& settings);
    const std::string& GetMaterialFile() const { return m_strMaterialFile; }
    void SetMaterialFile(const std::string& strFile);

private:
    void PushSettings();

    CMatrix44 m_mTransform;
    Kestrin::Ext::CBaseRenderLight* m_pLight = nullptr;
    std::string m_strMaterialFile;
    uint8_t m_uHasLight = 1;
    Kestrin::Ext::CRenderLightSettings m_settings;
};

} // namespace Ovrel
