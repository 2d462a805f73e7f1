// The render world as the scene sees it: it makes the engine objects that stand for scene
// entities (mesh instances, lights, occluders, portals, zones). Each kind takes its settings
// as one record, so an entity keeps the record itself and hands it over whole.
//
// A system without a renderer uses CNullRenderWorld, which makes nothing; entities then keep
// their values and save them unchanged.
#pragma once

#include "engine/renderer/RenderObject.h"
#include "engine/renderer/TextureManager.h"
#include "engine/utility/Math.h"

#include <cstdint>
#include <string>
#include <vector>

namespace Kestrin::Ext
{

using Kestrin::Utility::CMatrix44;
using Kestrin::Utility::CVec2;
using Kestrin::Utility::CVec3;

// The render settings of a mesh instance: what a scene stores in its render block.
struct CMeshRenderSettings
{
    uint8_t uLightMap = 0;      // "Shadow" has LightMap
    uint8_t uDynamicShadow = 0; // "Shadow" has Dynamic
    uint8_t uRenderFlagD = 0;   // carried, no control
    uint8_t uRenderFlagE = 0;   // carried, no control
    uint16_t uSkyLayer = 0;
    uint16_t uDecalLayer = 0;
    uint16_t uRenderOrderC = 0; // carried, no control
    int16_t iBlendLayer = 0;
    int32_t iInOutDoor = 0; // 0 "Default", 1 "Both", 2 "Outdoor"
    CVec3 vTint{1.0f, 1.0f, 1.0f};
    float fResolution = 1.0f;
    float fLightMapParamA = 0.0f;
    float fLightMapParamB = 0.0f;
};

// The editable settings of a mesh resource, shared by all its instances (the `.prop` file).
struct CLodMeshSettings
{
    float fLodRange = 50.0f;
    float fVisibleDistance = 0.0f;
    float fDynamicShadowDistance = 50.0f;
    float fAlwaysVisibleDistance = 0.0f;
    uint8_t uInvisibleCastShadow = 0;
    uint8_t uLightMapCastShadow = 1;
    std::vector<float> lodDistances;
};

// One instance of a `.mesh` model in the world.
class CLodMeshRenderObject : public Kestrin::Renderer::CRenderObject
{
public:
    // The mesh resource's name as its manager keys it.
    virtual const std::string& GetMeshName() const = 0;
    // True while the mesh or its materials still load.
    virtual bool IsLoading() const = 0;
    virtual void SetRenderSettings(const CMeshRenderSettings& settings) = 0;
    // The lightmap rectangle: a null texture takes the lightmap away.
    virtual void SetLightMap(Kestrin::Renderer::CTexture* pTexture, const CVec2& vOffset,
                             const CVec2& vScale) = 0;
    virtual void SetColorLightMap(Kestrin::Renderer::CTexture* pTexture, const CVec2& vOffset,
                                  const CVec2& vScale) = 0;
    // Fade near the camera: the distance factor and its mode.
    virtual void SetNearFade(float fNearFade, int32_t iMode) = 0;
    // The mesh resource's settings; a change holds for every instance of the mesh.
    virtual CLodMeshSettings GetMeshSettings() const = 0;
    virtual void SetMeshSettings(const CLodMeshSettings& settings) = 0;
};

// A light as a scene stores it.
struct CRenderLightSettings
{
    uint8_t uVisible = 1;
    uint8_t uShadow = 0;
    uint8_t uLightMapFlag = 1; // takes part in lightmap baking
    uint8_t uKindFlagA = 0;
    uint8_t uKindFlagB = 0;
    float fBias = 0.0f;
    float fRange = 500.0f;
    float fConeInner = 30.0f;
    float fConeOuter = 30.0f;
    float fIntensity = 1.0f;
    uint16_t uLightMapChannel = 0xFFFF; // "None"
    uint16_t uZoneLayer = 0;
    int32_t iLightType = 0; // 0 "Point", 1 "Spot", 2 "Directional"
    int32_t iBlend = 0;     // 0 "None", 1 "Alpha", 2 "Additive", 3 "Multiply", 4 "AddMultiply"
    CVec2 vSize{200.0f, 200.0f};
    CVec3 vColor{1.0f, 1.0f, 1.0f};
    CVec3 vLightMapColor{1.0f, 1.0f, 1.0f};
    int32_t iLightGroup = 3;
    int32_t iPassPortal = 0;
    uint8_t uLightShaft = 0;
    float fOccludeDepthRange = 0.0f;
    float fLuminanceBias = 0.0f;
    float fSampleDecay = 0.0f;
    float fSampleDensity = 0.0f;
    float fOccludeMask = 0.0f;
    float fSampleCount = 0.0f;
    float fBloomRadius = 0.0f;
    float fBloomDeviation = 0.0f;
    float fExposure = 0.0f;
    float fPriority = 0.0f;
    uint8_t uSssTransparent = 0;
};

class CBaseRenderLight
{
public:
    CBaseRenderLight(const CBaseRenderLight&) = delete;
    CBaseRenderLight& operator=(const CBaseRenderLight&) = delete;

    virtual void SetWorldTransform(const CMatrix44& mWorld) = 0;
    virtual void SetSettings(const CRenderLightSettings& settings) = 0;
    // The projector material (`.mal`); empty for none.
    virtual void SetMaterial(const std::string& strMaterialFile) = 0;
    // The 64-bit layer mask of the objects the light touches.
    virtual void SetLayerMask(uint64_t uMask) = 0;
    // Takes the light out of its world; the caller must not use it afterwards.
    virtual void Release() = 0;

protected:
    CBaseRenderLight() = default;
    virtual ~CBaseRenderLight() = default;
};

// An indexed polygon mesh with its outline edges: the shape of occluders, portals and zones.
struct CRenderEdge
{
    uint16_t uA = 0;
    uint16_t uB = 0;
    bool operator==(const CRenderEdge&) const = default;
};

struct CRenderVolumeGeometry
{
    std::vector<CVec3> vertices;
    std::vector<uint16_t> indices;
    std::vector<CRenderEdge> edges;
};

// The shared part of occluders, portals and zones.
class CRenderVolume
{
public:
    CRenderVolume(const CRenderVolume&) = delete;
    CRenderVolume& operator=(const CRenderVolume&) = delete;

    virtual void SetWorldTransform(const CMatrix44& mWorld) = 0;
    virtual void SetGeometry(const CRenderVolumeGeometry& geometry) = 0;
    // An inactive volume is ignored by visibility.
    virtual void SetActive(bool bActive) = 0;
    // Takes the volume out of its world; the caller must not use it afterwards.
    virtual void Release() = 0;

protected:
    CRenderVolume() = default;
    virtual ~CRenderVolume() = default;
};

class CBaseRenderOccluder : public CRenderVolume
{
};

class CBaseRenderPortal : public CRenderVolume
{
public:
    // Lights may shine through the portal into the other zone.
    virtual void SetPassLight(bool bPassLight) = 0;
};

class CBaseRenderZone : public CRenderVolume
{
public:
    // The zone's six ambient colours, "Color1" to "Color6".
    virtual void SetColors(const CVec3 (&avColors)[6]) = 0;
};

class CRenderWorld
{
public:
    virtual ~CRenderWorld() = default;
    CRenderWorld(const CRenderWorld&) = delete;
    CRenderWorld& operator=(const CRenderWorld&) = delete;

    // Lays the grid of cells that visibility walks: lower and upper corners and the cell
    // size (z unused). False for an empty grid or a cell size of 0 or less.
    virtual bool InitGrid(const CVec3& vMin, const CVec3& vMax, const CVec3& vCell) = 0;
    // Once a frame, on the main thread under the device lock.
    virtual void Tick() = 0;

    // An instance of the model in a `.mesh` file, added to the world; its mesh may still
    // load when bAsync. Null when the mesh cannot be had.
    virtual CLodMeshRenderObject* CreateLodMeshObject(const std::string& strMeshFile, bool bAsync) = 0;
    // New engine objects in the world, at their defaults. Null when the world cannot hold one.
    virtual CBaseRenderLight* CreateLight() = 0;
    virtual CBaseRenderOccluder* CreateOccluder() = 0;
    virtual CBaseRenderPortal* CreatePortal() = 0;
    virtual CBaseRenderZone* CreateZone() = 0;

protected:
    CRenderWorld() = default;
};

// The world of a system without a renderer: it makes nothing.
class CNullRenderWorld final : public CRenderWorld
{
public:
    CNullRenderWorld() = default;

    bool InitGrid(const CVec3& vMin, const CVec3& vMax, const CVec3& vCell) override;
    void Tick() override {}
    int32_t GetCellsX() const { return m_iCellsX; }
    int32_t GetCellsY() const { return m_iCellsY; }

    CLodMeshRenderObject* CreateLodMeshObject(const std::string&, bool) override { return nullptr; }
    CBaseRenderLight* CreateLight() override { return nullptr; }
    CBaseRenderOccluder* CreateOccluder() override { return nullptr; }
    CBaseRenderPortal* CreatePortal() override { return nullptr; }
    CBaseRenderZone* CreateZone() override { return nullptr; }

private:
    int32_t m_iCellsX = 0;
    int32_t m_iCellsY = 0;
};

} // namespace Kestrin::Ext
