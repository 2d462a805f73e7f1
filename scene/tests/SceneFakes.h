// Recording engine objects: they keep what the entities push into them, so tests can see
// that an entity hands its values on when an engine exists.
#pragma once

#include "engine/audio/AudioDevice.h"
#include "engine/fx/FxPlayer.h"
#include "engine/physics/PhysicsWorld.h"
#include "engine/renderer/RenderWorld.h"

#include <memory>
#include <string>
#include <vector>

namespace SceneTest
{

using namespace Kestrin;
using Kestrin::Utility::CBox3;
using Kestrin::Utility::CMatrix44;
using Kestrin::Utility::CVec2;
using Kestrin::Utility::CVec3;

class CFakeRenderObject : public Ext::CLodMeshRenderObject
{
public:
    explicit CFakeRenderObject(std::string strMesh) : m_strMesh(std::move(strMesh)) {}
    ~CFakeRenderObject() override = default;

    void SetWorldTransform(const CMatrix44& m) override { mWorld = m; }
    CBox3 GetBoundingBox() const override
    {
        return Utility::TransformBox(CBox3{{-1, -1, -1}, {1, 1, 1}}, mWorld);
    }
    void SetVisible(bool b) override { bVisible = b; }
    void SetChannelMask(uint64_t u) override { uMask = u; }
    bool HitTest(const CVec3&, const CVec3&, bool bExact, float& f) const override
    {
        f = bExact ? 2.0f : 1.0f;
        return true;
    }
    void Release() override { bReleased = true; }
    const std::string& GetMeshName() const override { return m_strMesh; }
    bool IsLoading() const override { return bLoading; }
    void SetRenderSettings(const Ext::CMeshRenderSettings& s) override { render = s; }
    void SetLightMap(Renderer::CTexture* p, const CVec2& o, const CVec2& s) override
    {
        pLightMap = p;
        vOffset = o;
        vScale = s;
        ++iLightMapCalls;
    }
    void SetColorLightMap(Renderer::CTexture* p, const CVec2&, const CVec2&) override { pColorLightMap = p; }
    void SetNearFade(float f, int32_t i) override
    {
        fNearFade = f;
        iFadeMode = i;
    }
    Ext::CLodMeshSettings GetMeshSettings() const override { return mesh; }
    void SetMeshSettings(const Ext::CLodMeshSettings& s) override { mesh = s; }

    CMatrix44 mWorld;
    bool bVisible = false;
    uint64_t uMask = ~uint64_t{0};
    bool bReleased = false;
    bool bLoading = false;
    Ext::CMeshRenderSettings render;
    Renderer::CTexture* pLightMap = nullptr;
    Renderer::CTexture* pColorLightMap = nullptr;
    CVec2 vOffset, vScale;
    int iLightMapCalls = 0;
    float fNearFade = 0.0f;
    int32_t iFadeMode = 0;
    Ext::CLodMeshSettings mesh;

private:
    std::string m_strMesh;
};

class CFakeLight final : public Ext::CBaseRenderLight
{
public:
    ~CFakeLight() override = default;
    void SetWorldTransform(const CMatrix44& m) override { mWorld = m; }
    void SetSettings(const Ext::CRenderLightSettings& s) override { settings = s; }
    void SetMaterial(const std::string& s) override { strMaterial = s; }
    void SetLayerMask(uint64_t u) override { uMask = u; }
    void Release() override { bReleased = true; }

    CMatrix44 mWorld;
    Ext::CRenderLightSettings settings;
    std::string strMaterial;
    uint64_t uMask = 0;
    bool bReleased = false;
};

class CFakeZone final : public Ext::CBaseRenderZone
{
public:
    ~CFakeZone() override = default;
    void SetWorldTransform(const CMatrix44& m) override { mWorld = m; }
    void SetGeometry(const Ext::CRenderVolumeGeometry& g) override
    {
        iVertices = static_cast<int>(g.vertices.size());
    }
    void SetActive(bool b) override { bActive = b; }
    void Release() override { bReleased = true; }
    void SetColors(const CVec3 (&a)[6]) override { vColor6 = a[5]; }

    CMatrix44 mWorld;
    int iVertices = 0;
    bool bActive = false;
    bool bReleased = false;
    CVec3 vColor6;
};

// Keeps every object it makes, so tests can look at them after the entity let go.
class CFakeRenderWorld final : public Ext::CRenderWorld
{
public:
    bool InitGrid(const CVec3&, const CVec3&, const CVec3&) override { return true; }
    void Tick() override {}
    Ext::CLodMeshRenderObject* CreateLodMeshObject(const std::string& strFile, bool) override
    {
        if (strFile.find("missing") != std::string::npos)
        {
            return nullptr;
        }
        meshes.push_back(std::make_unique<CFakeRenderObject>(strFile));
        meshes.back()->bLoading = bNewMeshesLoading;
        return meshes.back().get();
    }
    Ext::CBaseRenderLight* CreateLight() override
    {
        lights.push_back(std::make_unique<CFakeLight>());
        return lights.back().get();
    }
    Ext::CBaseRenderOccluder* CreateOccluder() override { return nullptr; }
    Ext::CBaseRenderPortal* CreatePortal() override { return nullptr; }
    Ext::CBaseRenderZone* CreateZone() override
    {
        zones.push_back(std::make_unique<CFakeZone>());
        return zones.back().get();
    }

    bool bNewMeshesLoading = false;
    std::vector<std::unique_ptr<CFakeRenderObject>> meshes;
    std::vector<std::unique_ptr<CFakeLight>> lights;
    std::vector<std::unique_ptr<CFakeZone>> zones;
};

class CFakePhysicsObject final : public Physics::CPhysicsObject
{
public:
    explicit CFakePhysicsObject(int32_t iShapes) : iShapeCount(iShapes) {}
    ~CFakePhysicsObject() override = default;
    void SetPose(const CMatrix44& m) override { mPose = m; }
    void SetScale(const CVec3& v) override { vScale = v; }
    void SetActive(bool) override {}
    int32_t GetShapeCount() const override { return iShapeCount; }
    bool SetShapeAttribute(int32_t i, uint32_t uFlags, uint16_t uMaterial) override
    {
        attributes.push_back({i, uFlags, uMaterial});
        return i < iShapeCount;
    }
    void Delete() override { bDeleted = true; }

    struct CAttribute
    {
        int32_t iIndex;
        uint32_t uFlags;
        uint16_t uMaterial;
    };
    int32_t iShapeCount;
    CMatrix44 mPose;
    CVec3 vScale;
    std::vector<CAttribute> attributes;
    bool bDeleted = false;
};

class CFakePhysicsWorld final : public Physics::CPhysicsWorld
{
public:
    bool Initialize(Physics::CPhysicsSdk*) override { return true; }
    void Step(float) override {}
    void Fetch() override {}
    Physics::CPhysicsObject* CreateObject(const std::string& strFile, bool) override
    {
        requested.push_back(strFile);
        if (strFile.find("missing") != std::string::npos)
        {
            return nullptr;
        }
        objects.push_back(std::make_unique<CFakePhysicsObject>(iShapes));
        return objects.back().get();
    }
    Physics::CPhysicsObject* CreateObjectFromMesh(const std::string& strMesh) override
    {
        requested.push_back("from mesh " + strMesh);
        objects.push_back(std::make_unique<CFakePhysicsObject>(iShapes));
        return objects.back().get();
    }
    Physics::CClothObject* CreateCloth(const std::string&) override { return nullptr; }
    bool RayCast(const CVec3&, const CVec3&, Physics::CRayHit&, uint32_t) override { return false; }

    int32_t iShapes = 2;
    std::vector<std::string> requested;
    std::vector<std::unique_ptr<CFakePhysicsObject>> objects;
};

class CFakeAudio final : public Audio::IAudio
{
public:
    ~CFakeAudio() override = default;
    bool Play(const std::string& s) override
    {
        strPlaying = s;
        return true;
    }
    void Stop() override {}
    void SetPosition(const CVec3& v) override { vPosition = v; }
    void SetLoop(bool b) override { bLoop = b; }

    std::string strPlaying;
    CVec3 vPosition;
    bool bLoop = false;
};

class CFakeAudioDevice final : public Audio::IAudioDevice
{
public:
    bool Init(const std::string&, const std::vector<std::pair<std::string, float>>&) override { return true; }
    bool LoadWaveBank(const std::string&, int32_t, int32_t) override { return true; }
    bool LoadSoundBank(const std::string&, int32_t) override { return true; }
    void SetRpcs(const std::vector<std::pair<int32_t, std::vector<float>>>&) override {}
    void SetCategoryVolume(const std::string&, float) override {}
    void Update(const Audio::CAudioListener&, float) override {}
    Audio::IAudio* CreateAudio() override
    {
        sounds.push_back(std::make_unique<CFakeAudio>());
        return sounds.back().get();
    }
    void DestroyAudio(Audio::IAudio* p) override { destroyed += p ? 1 : 0; }

    std::vector<std::unique_ptr<CFakeAudio>> sounds;
    int destroyed = 0;
};

class CFakeCharacter final : public Fx::IFxCharacter
{
public:
    ~CFakeCharacter() override = default;
    Renderer::CRenderObject* GetRenderObject() override { return &object; }
    void Update(float f) override { fTime += f; }
    void SetWorldTransform(const CMatrix44& m) override { object.SetWorldTransform(m); }
    bool Play(const std::string& s) override
    {
        strAction = s;
        return true;
    }

    CFakeRenderObject object{"character"};
    float fTime = 0.0f;
    std::string strAction;
};

class CFakeCharacters final : public Fx::IFxCharacterManager
{
public:
    Fx::IFxCharacter* CreateCharacter(const std::string& strConfig, uint32_t) override
    {
        configs.push_back(strConfig);
        characters.push_back(std::make_unique<CFakeCharacter>());
        return characters.back().get();
    }
    void DestroyCharacter(Fx::IFxCharacter* p) override { destroyed += p ? 1 : 0; }

    std::vector<std::string> configs;
    std::vector<std::unique_ptr<CFakeCharacter>> characters;
    int destroyed = 0;
};

} // namespace SceneTest
