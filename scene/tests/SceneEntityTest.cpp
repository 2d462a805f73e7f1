// Scene entities: type codes and folders, the class registry, defaults, groups, hit tests,
// layers, lights, and what each kind hands to its engine object.
#include "scene/SceneClassDesc.h"
#include "scene/SceneContent.h"
#include "scene/SceneEnvironmentEntity.h"
#include "scene/SceneFxSoundEntities.h"
#include "scene/SceneGroupEntity.h"
#include "scene/SceneLightEntity.h"
#include "scene/SceneMarkerEntities.h"
#include "scene/SceneMeshEntities.h"
#include "scene/SceneVolumeEntities.h"
#include "scene/tests/SceneFakes.h"
#include "scene/tests/SceneRecords.h"
#include "scene/tests/SceneTestUtil.h"

#include "Utils/Utility/GUtDebug.h"

#include <gtest/gtest.h>

#include <cmath>

using namespace Ovrel;
using namespace SceneTest;

namespace
{
template <typename T>
T* Make(CSceneContent& scene, uint32_t uType, int32_t iId = 0)
{
    return static_cast<T*>(scene.CreateEntity(uType, iId));
}

// Catches the log lines the entities write.
class CLogCapture
{
public:
    CLogCapture()
    {
        GUtLog::Get().SetPreHook([this](bool, int, const char*, const char*, const char* pcText)
                                 { lines.push_back(pcText); });
    }
    ~CLogCapture() { GUtLog::Get().SetPreHook(nullptr); }
    std::vector<std::string> lines;
};

CMatrix44 At(float x, float y, float z)
{
    return CMatrix44::Translation({x, y, z});
}
} // namespace

TEST(SceneTypes, TypeCodesFoldersAndFilters)
{
    const uint32_t aTypes[] = {ENTITY_PLAIN,    ENTITY_STATIC_MESH, ENTITY_SKINNED_MESH, ENTITY_CLOTH,
                               ENTITY_LIGHT,    ENTITY_FX,          ENTITY_SOUND,        ENTITY_ENVIRONMENT,
                               ENTITY_OCCLUDER, ENTITY_PORTAL,      ENTITY_ZONE,         ENTITY_LOCATOR,
                               ENTITY_TRIGGER,  ENTITY_CAMERA,      ENTITY_GAME_OBJECT,  ENTITY_GROUP};
    const uint32_t aCodes[] = {1,         2,         4,          8,         1024,     8192,
                               16384,     32768,     0x200000,   0x400000,  0x800000, 0x2000000,
                               0x4000000, 0x8000000, 0x10000000, 0x40000000};
    const char* apcFolders[] = {
        nullptr,    "Mesh",        "Character",   "Cloth",   "Light",   "Fx",     "Sound",  "Environment",
        "Occluder", "Zone/Portal", "Zone/Portal", "Locator", "Trigger", "Camera", "Entity", "Group"};
    CSceneContent scene;
    for (int i = 0; i < 16; ++i)
    {
        EXPECT_EQ(aTypes[i], aCodes[i]);
        CSceneEntity* pEntity = scene.CreateEntity(aCodes[i], 0);
        ASSERT_NE(pEntity, nullptr);
        EXPECT_EQ(pEntity->GetType(), aCodes[i]);
        EXPECT_EQ(pEntity->GetId(), i + 1);
        const char* pcFolder = GetSceneTreeFolder(aCodes[i]);
        if (apcFolders[i])
        {
            EXPECT_STREQ(pcFolder, apcFolders[i]);
        }
        else
        {
            EXPECT_EQ(pcFolder, nullptr);
        }
    }
    const char* apcTree[] = {"Mesh",   "Cloth",    "Character",   "Light",       "Fx",
                             "Sound",  "Occluder", "Zone/Portal", "Environment", "Group",
                             "Camera", "Locator",  "Trigger",     "Entity",      "Water"};
    for (int i = 0; i < SCENE_TREE_FOLDER_COUNT; ++i)
    {
        EXPECT_STREQ(g_apcSceneTreeFolders[i], apcTree[i]);
    }
    char acLabel[64];
    FormatSceneTreeFolderLabel(acLabel, sizeof(acLabel), "Mesh", 12);
    EXPECT_STREQ(acLabel, "Mesh(12)");
    EXPECT_STREQ(g_aSceneFilters[7].pcLabel, "Occluder/Zone/Portal");
    EXPECT_EQ(g_aSceneFilters[7].uMask, 0xe00000u);
    EXPECT_EQ(g_aSceneFilters[8].uMask, 0x16000000u);
    EXPECT_EQ(g_aSceneFilters[0].uMask, 0xFFFFFFFFu);
    EXPECT_EQ(LayerBit(0), 1u);
    EXPECT_EQ(LayerBit(63), uint64_t{1} << 63);
    EXPECT_EQ(LayerBit(64), 0u);
    EXPECT_EQ(LayerBit(-1), 0u);
}

TEST(SceneClassRegistry, LinksEveryClassToItsParentUpToCBaseClass)
{
    ASSERT_TRUE(CSceneClassRegistry::Link());
    ASSERT_TRUE(CSceneClassRegistry::Link());
    EXPECT_TRUE(CSceneClassRegistry::IsLinked());
    EXPECT_EQ(CSceneClassRegistry::GetCount(), 17);
    const CSceneClassDesc& root = CSceneClassRegistry::Get(0);
    EXPECT_STREQ(root.pcName, "CBaseClass");
    EXPECT_EQ(root.pParent, nullptr);
    for (int32_t i = 1; i < CSceneClassRegistry::GetCount(); ++i)
    {
        const CSceneClassDesc& desc = CSceneClassRegistry::Get(i);
        ASSERT_NE(desc.pParent, nullptr) << desc.pcName;
        EXPECT_TRUE(CSceneClassRegistry::IsKindOf(&desc, "CBaseClass"));
        EXPECT_TRUE(CSceneClassRegistry::IsKindOf(&desc, "CSceneEntity"));
        EXPECT_EQ(CSceneClassRegistry::FindByType(desc.uType), &desc);
        EXPECT_EQ(CSceneClassRegistry::FindByName(desc.pcName), &desc);
    }
    EXPECT_STREQ(CSceneClassRegistry::FindByType(ENTITY_LIGHT)->pcName, "CLightSceneEntity");
    EXPECT_FALSE(
        CSceneClassRegistry::IsKindOf(CSceneClassRegistry::FindByType(ENTITY_LIGHT), "CFxSceneEntity"));
    EXPECT_EQ(CSceneClassRegistry::FindByType(16), nullptr);
    EXPECT_EQ(CSceneClassRegistry::Create(0, nullptr), nullptr);
}

TEST(SceneEntity, ThePlainEntityHasNoBoxNoHitAndTheIdentity)
{
    CSceneContent scene;
    CSceneEntity* pEntity = scene.CreateEntity(ENTITY_PLAIN, 0);
    CBox3 box;
    pEntity->GetBoundingBox(box);
    EXPECT_EQ(box.vMin, (CVec3{1e10f, 1e10f, 1e10f}));
    EXPECT_EQ(box.vMax, (CVec3{-1e10f, -1e10f, -1e10f}));
    float fDistance = -1.0f;
    EXPECT_FALSE(pEntity->HitTest({0, 0, 0}, {1, 0, 0}, fDistance));
    EXPECT_FALSE(pEntity->HitTestExact({0, 0, 0}, {1, 0, 0}, fDistance));
    CMatrix44 m = At(1, 2, 3);
    pEntity->GetTransform(m);
    EXPECT_EQ(m, CMatrix44::Identity());
    EXPECT_TRUE(pEntity->IsVisible());
    EXPECT_EQ(pEntity->GetLayer(), 0);
    EXPECT_EQ(pEntity->GetResourceName(), "");
    pEntity->SetVisible(false);
    EXPECT_FALSE(pEntity->IsVisible());
    // The scene box ignores it.
    EXPECT_TRUE(scene.ComputeBoundingBox(scene.GetEntities()).IsEmpty());
}

TEST(SceneEntity, EveryKindStartsWithItsDefaults)
{
    CSceneContent scene;
    auto* pMesh = Make<CStaticMeshSceneEntity>(scene, ENTITY_STATIC_MESH);
    EXPECT_EQ(pMesh->GetLightMapIndex(), -1);
    EXPECT_EQ(pMesh->GetColorLightMapIndex(), -1);
    auto* pCloth = Make<CClothSceneEntity>(scene, ENTITY_CLOTH);
    EXPECT_EQ(pCloth->GetParameters().fBending, 0.0f);
    EXPECT_EQ(pCloth->GetParameters().fStretching, 1.0f);
    EXPECT_EQ(pCloth->GetParameters().fFriction, 0.0f);
    EXPECT_EQ(pCloth->GetParameters().vWind, (CVec3{}));
    EXPECT_EQ(pCloth->GetParameters().fDamping, 0.0001f);
    auto* pSkin = Make<CSkinnedMeshSceneEntity>(scene, ENTITY_SKINNED_MESH);
    EXPECT_EQ(pSkin->GetLevel(), 0);
    EXPECT_EQ(pSkin->GetStartTimeMin(), 0.0f);
    EXPECT_EQ(pSkin->GetStartTimeMax(), 0.0f);
    auto* pFx = Make<CFxSceneEntity>(scene, ENTITY_FX);
    EXPECT_EQ(pFx->GetShouldClip(), 0);
    EXPECT_FALSE(pFx->IsLooping());
    auto* pSound = Make<CSoundSceneEntity>(scene, ENTITY_SOUND);
    EXPECT_EQ(pSound->GetLooped(), 1);
    auto* pLocator = Make<CLocatorSceneEntity>(scene, ENTITY_LOCATOR);
    EXPECT_EQ(pLocator->GetSize(), (CVec3{5, 5, 40}));
    EXPECT_EQ(pLocator->GetColor(), (CVec3{1, 1, 1}));
    auto* pTrigger = Make<CTriggerSceneEntity>(scene, ENTITY_TRIGGER);
    EXPECT_EQ(pTrigger->GetSize(), (CVec3{20, 20, 20}));
    EXPECT_EQ(pTrigger->GetColor(), (CVec3{1, 1, 1}));
    auto* pCamera = Make<CCameraSceneEntity>(scene, ENTITY_CAMERA);
    EXPECT_EQ(pCamera->GetNear(), 2.0f);
    EXPECT_EQ(pCamera->GetFar(), 500000.0f);
    auto* pGame = Make<CGameObjectSceneEntity>(scene, ENTITY_GAME_OBJECT);
    EXPECT_EQ(pGame->GetSize(), (CVec3{40, 40, 40}));
    EXPECT_EQ(pGame->GetColor(), (CVec3{1, 1, 1}));
    EXPECT_EQ(pGame->GetAnimSpeed(), 1.0f / 60.0f);
    EXPECT_EQ(pGame->GetSpawn(), 1);
    EXPECT_EQ(pGame->GetInShadow(), 0);
    auto* pGroup = Make<CGroupSceneEntity>(scene, ENTITY_GROUP);
    EXPECT_FALSE(pGroup->IsOpen());
    EXPECT_TRUE(pGroup->GetMembers().empty());
    auto* pLight = Make<CLightSceneEntity>(scene, ENTITY_LIGHT);
    EXPECT_EQ(pLight->GetSettings().iLightGroup, 3);
    auto* pOccluder = Make<COccluderSceneEntity>(scene, ENTITY_OCCLUDER);
    EXPECT_FALSE(pOccluder->HasShape());
}

TEST(SceneGroup, MembershipFollowsTheRules)
{
    CSceneContent scene;
    auto* pGroupA = Make<CGroupSceneEntity>(scene, ENTITY_GROUP);
    auto* pGroupB = Make<CGroupSceneEntity>(scene, ENTITY_GROUP);
    CSceneEntity* pRock = scene.CreateEntity(ENTITY_STATIC_MESH, 0);
    CSceneEntity* pLamp = scene.CreateEntity(ENTITY_LIGHT, 0);
    EXPECT_FALSE(pGroupA->Add(pGroupB));
    EXPECT_FALSE(pGroupA->Add(pGroupA));
    EXPECT_FALSE(pGroupA->Add(nullptr));
    EXPECT_EQ(pGroupB->GetGroupId(), 0);
    EXPECT_TRUE(pGroupA->GetMembers().empty());

    ASSERT_TRUE(pGroupA->Add(pRock));
    ASSERT_TRUE(pGroupA->Add(pLamp));
    EXPECT_EQ(pGroupA->GetMembers(), (std::vector<int32_t>{pRock->GetId(), pLamp->GetId()}));
    EXPECT_EQ(pRock->FindParentGroup(), pGroupA);
    // Joining another group leaves the former one.
    ASSERT_TRUE(pGroupB->Add(pRock));
    EXPECT_EQ(pGroupA->GetMembers(), (std::vector<int32_t>{pLamp->GetId()}));
    EXPECT_EQ(pRock->GetGroupId(), pGroupB->GetId());
    // Remove clears groupId only when it points at that group.
    pGroupA->Remove(pRock);
    EXPECT_EQ(pRock->GetGroupId(), pGroupB->GetId());
    pGroupB->Remove(pRock);
    EXPECT_EQ(pRock->GetGroupId(), 0);
    EXPECT_EQ(pRock->FindParentGroup(), nullptr);
    pRock->SetParentGroup(pGroupB);
    EXPECT_EQ(pRock->GetGroupId(), pGroupB->GetId());
    pRock->SetParentGroup(nullptr);
    EXPECT_EQ(pRock->GetGroupId(), 0);

    // Deleting a group leaves its members in the scene, ungrouped.
    ASSERT_TRUE(scene.RemoveEntity(pGroupA));
    EXPECT_EQ(scene.GetEntityCount(), 3);
    EXPECT_EQ(pLamp->GetGroupId(), 0);
    // Removing a member takes it out of its group.
    pGroupB->Add(pLamp);
    ASSERT_TRUE(scene.RemoveEntity(pLamp));
    EXPECT_TRUE(pGroupB->GetMembers().empty());
    EXPECT_FALSE(scene.RemoveEntity(pLamp));
}

TEST(SceneGroup, MovingTheGroupMovesItsMembersAndTheBoxIsTheirUnion)
{
    CSceneContent scene;
    auto* pGroup = Make<CGroupSceneEntity>(scene, ENTITY_GROUP);
    auto* pLocator = Make<CLocatorSceneEntity>(scene, ENTITY_LOCATOR);
    auto* pTrigger = Make<CTriggerSceneEntity>(scene, ENTITY_TRIGGER);
    pLocator->SetTransform(At(10, 0, 0));
    pTrigger->SetTransform(At(0, 20, 0));
    pGroup->Add(pLocator);
    pGroup->Add(pTrigger);

    CBox3 box;
    pGroup->GetBoundingBox(box);
    EXPECT_EQ(box.vMin, (CVec3{-10, -2.5f, -20}));
    EXPECT_EQ(box.vMax, (CVec3{12.5f, 30, 20}));
    float fDistance;
    EXPECT_FALSE(pGroup->HitTest({0, 0, 100}, {0, 0, -1}, fDistance));

    // The same matrix again moves nothing, not even by rounding.
    pGroup->SetTransform(CMatrix44::Identity());
    CMatrix44 m;
    pLocator->GetTransform(m);
    EXPECT_EQ(m, At(10, 0, 0));

    // Member x inverse(old) x new.
    pGroup->SetTransform(At(5, 5, 5));
    pLocator->GetTransform(m);
    EXPECT_EQ(m.GetTranslation(), (CVec3{15, 5, 5}));
    pGroup->SetTransform(CMatrix44::RotationZ(Kestrin::Utility::PI / 2) * At(5, 5, 5));
    pLocator->GetTransform(m);
    EXPECT_NEAR(m.GetTranslation().x, 5.0f, 1e-4f);
    EXPECT_NEAR(m.GetTranslation().y, 15.0f, 1e-4f);
    EXPECT_NEAR(m.GetTranslation().z, 5.0f, 1e-4f);

    // A group keeps a uniform scale: its first axis's length.
    pGroup->SetTransform(CMatrix44::Scaling({2, 3, 4}));
    pGroup->GetTransform(m);
    EXPECT_NEAR(Length(m.Row(1)), 2.0f, 1e-5f);
    EXPECT_NEAR(Length(m.Row(2)), 2.0f, 1e-5f);
    // Locators cannot hold scale: their axes stay of unit length.
    pLocator->GetTransform(m);
    EXPECT_NEAR(Length(m.Row(0)), 1.0f, 1e-5f);
    // Meshes can.
    auto* pMesh = Make<CStaticMeshSceneEntity>(scene, ENTITY_STATIC_MESH);
    pGroup->Add(pMesh);
    pGroup->SetTransform(CMatrix44::Scaling({4, 4, 4}));
    pMesh->GetTransform(m);
    EXPECT_NEAR(Length(m.Row(0)), 2.0f, 1e-5f);
}

TEST(SceneGroup, GroupsListedAsMembersByAFileStayPut)
{
    CSceneContent scene;
    auto* pGroupA = Make<CGroupSceneEntity>(scene, ENTITY_GROUP);
    auto* pGroupB = Make<CGroupSceneEntity>(scene, ENTITY_GROUP);
    auto* pLocator = Make<CLocatorSceneEntity>(scene, ENTITY_LOCATOR);
    // Groups do not nest, but a file may say they do, even in a circle.
    pGroupA->SetMembers({pGroupA->GetId(), pGroupB->GetId(), pLocator->GetId()});
    pGroupB->SetMembers({pGroupA->GetId()});
    CBox3 box;
    pGroupA->GetBoundingBox(box);
    CBox3 locatorBox;
    pLocator->GetBoundingBox(locatorBox);
    EXPECT_EQ(box, locatorBox);
    pGroupA->SetTransform(At(1, 0, 0));
    pGroupB->SetTransform(At(0, 1, 0));
    CMatrix44 m;
    pLocator->GetTransform(m);
    EXPECT_EQ(m.GetTranslation(), (CVec3{1, 0, 0}));
    pGroupB->GetTransform(m);
    EXPECT_EQ(m.GetTranslation(), (CVec3{0, 1, 0}));
}

TEST(SceneEntity, HitBoxesOfCamerasFxAndMarkers)
{
    CSceneContent scene;
    auto* pCamera = Make<CCameraSceneEntity>(scene, ENTITY_CAMERA);
    pCamera->SetTransform(At(100, 0, 0));
    float fDistance = 0.0f;
    ASSERT_TRUE(pCamera->HitTest({0, 0, 0}, {1, 0, 0}, fDistance));
    EXPECT_FLOAT_EQ(fDistance, 90.0f);
    ASSERT_TRUE(pCamera->HitTest({100, 0, 100}, {0, 0, -1}, fDistance));
    EXPECT_FLOAT_EQ(fDistance, 85.0f);
    // The camera one looks through is never picked.
    EXPECT_FALSE(pCamera->HitTest({100, 0, 0}, {1, 0, 0}, fDistance));
    EXPECT_FALSE(pCamera->HitTest({0, 50, 0}, {1, 0, 0}, fDistance));

    auto* pFx = Make<CFxSceneEntity>(scene, ENTITY_FX);
    pFx->SetTransform(At(0, 100, 0));
    ASSERT_TRUE(pFx->HitTest({0, 0, 0}, {0, 1, 0}, fDistance));
    EXPECT_FLOAT_EQ(fDistance, 90.0f);

    auto* pLocator = Make<CLocatorSceneEntity>(scene, ENTITY_LOCATOR);
    ASSERT_TRUE(pLocator->HitTest({0, 0, 100}, {0, 0, -1}, fDistance));
    EXPECT_FLOAT_EQ(fDistance, 80.0f);
    auto* pTrigger = Make<CTriggerSceneEntity>(scene, ENTITY_TRIGGER);
    ASSERT_TRUE(pTrigger->HitTestExact({100, 0, 0}, {-1, 0, 0}, fDistance));
    EXPECT_FLOAT_EQ(fDistance, 90.0f);
    auto* pGame = Make<CGameObjectSceneEntity>(scene, ENTITY_GAME_OBJECT);
    pGame->SetTransform(CMatrix44::Scaling({2, 2, 2}));
    ASSERT_TRUE(pGame->HitTest({100, 0, 0}, {-1, 0, 0}, fDistance));
    EXPECT_FLOAT_EQ(fDistance, 60.0f);
    // Entities that need an engine object to be hit are not hit without one.
    auto* pMesh = Make<CStaticMeshSceneEntity>(scene, ENTITY_STATIC_MESH);
    EXPECT_FALSE(pMesh->HitTest({0, 0, 0}, {1, 0, 0}, fDistance));
    CBox3 box;
    pMesh->GetBoundingBox(box);
    EXPECT_TRUE(box.IsEmpty());
    EXPECT_FALSE(pMesh->IsBoundsKnown());
    EXPECT_TRUE(pLocator->IsBoundsKnown());
}

TEST(SceneLight, NewLightsByMenuName)
{
    CSceneContent scene;
    auto* pSpot = Make<CLightSceneEntity>(scene, ENTITY_LIGHT);
    pSpot->InitByMenuName("Spot &Light");
    EXPECT_EQ(pSpot->GetName(), "SpotLight01");
    EXPECT_EQ(pSpot->GetSettings().iLightType, 1);
    EXPECT_EQ(pSpot->GetSettings().fRange, 300.0f);
    EXPECT_EQ(pSpot->GetSettings().fConeInner, 30.0f);
    EXPECT_EQ(pSpot->GetSettings().fConeOuter, 45.0f);
    EXPECT_EQ(pSpot->GetSettings().iLightGroup, 3);
    auto* pSun = Make<CLightSceneEntity>(scene, ENTITY_LIGHT);
    pSun->InitByMenuName("Directional &Light");
    EXPECT_EQ(pSun->GetName(), "DirectionalLight01");
    EXPECT_EQ(pSun->GetSettings().iLightType, 2);
    EXPECT_EQ(pSun->GetSettings().fRange, 0.0f);
    EXPECT_EQ(pSun->GetSettings().vSize, (CVec2{200, 200}));
    EXPECT_EQ(pSun->GetSettings().iLightGroup, 7);
    auto* pPoint = Make<CLightSceneEntity>(scene, ENTITY_LIGHT);
    pPoint->InitByMenuName("Point &Light");
    EXPECT_EQ(pPoint->GetName(), "PointLight01");
    EXPECT_EQ(pPoint->GetSettings().iLightType, 0);
    EXPECT_EQ(pPoint->GetSettings().fRange, 300.0f);
    EXPECT_EQ(pPoint->GetSettings().iLightGroup, 3);
    EXPECT_TRUE(pPoint->HasLight());
}

TEST(SceneLight, LightsFromColladaTakeWhatTheirKindHas)
{
    CSceneContent scene;
    auto* pLight = Make<CLightSceneEntity>(scene, ENTITY_LIGHT);
    CImportedLight point;
    point.vColor = {1, 0.5f, 0.25f};
    point.fIntensity = -2.0f;
    point.fRange = 750.0f;
    point.fConeInner = 10.0f;
    pLight->InitFromImport(point);
    EXPECT_EQ(pLight->GetSettings().vColor, (CVec3{1, 0.5f, 0.25f}));
    EXPECT_EQ(pLight->GetSettings().fIntensity, 2.0f);
    EXPECT_EQ(pLight->GetSettings().fRange, 750.0f);
    EXPECT_EQ(pLight->GetSettings().fConeInner, 40.0f);
    EXPECT_EQ(pLight->GetSettings().fConeOuter, 50.0f);
    EXPECT_EQ(pLight->GetSettings().vSize, (CVec2{200, 200}));
    CImportedLight spot = point;
    spot.iKind = 1;
    spot.fConeOuter = 20.0f;
    pLight->InitFromImport(spot);
    EXPECT_EQ(pLight->GetSettings().fConeInner, 10.0f);
    EXPECT_EQ(pLight->GetSettings().fConeOuter, 20.0f);
    CImportedLight sun;
    sun.iKind = 2;
    sun.fMagnification = 150.0f;
    sun.fAspect = 1.5f;
    sun.fRange = 900.0f;
    pLight->InitFromImport(sun);
    EXPECT_EQ(pLight->GetSettings().vSize, (CVec2{300, 200}));
    EXPECT_EQ(pLight->GetSettings().fRange, 900.0f);
    sun.bInfinite = true;
    pLight->InitFromImport(sun);
    EXPECT_EQ(pLight->GetSettings().fRange, 0.0f);
    EXPECT_EQ(pLight->GetSettings().iLightType, 2);
}

TEST(SceneEntity, NewEnvironmentsSoundsAndCameras)
{
    CSceneContent scene;
    auto* pEnvironment = Make<CEnvironmentSceneEntity>(scene, ENTITY_ENVIRONMENT);
    pEnvironment->InitNew();
    const CEnvironmentValues& v = pEnvironment->GetValues();
    for (const CVec3* p : {&v.vMesh1, &v.vChar1, &v.vFx1})
    {
        EXPECT_EQ(*p, (CVec3{0.3f, 0.3f, 0.3f}));
    }
    for (const CVec3* p : {&v.vMesh2, &v.vChar2, &v.vFx2})
    {
        EXPECT_EQ(*p, (CVec3{0.05f, 0.05f, 0.05f}));
    }
    auto* pSound = Make<CSoundSceneEntity>(scene, ENTITY_SOUND);
    pSound->InitNew();
    EXPECT_EQ(pSound->GetName(), "Sound");
    EXPECT_EQ(pSound->GetCueName(), "");
    auto* pCamera = Make<CCameraSceneEntity>(scene, ENTITY_CAMERA);
    pCamera->InitFromView(At(1, 2, 3), 65.0f, 5.0f, 1000.0f);
    CMatrix44 m;
    pCamera->GetTransform(m);
    EXPECT_EQ(m, At(1, 2, 3));
    EXPECT_EQ(pCamera->GetFov(), 65.0f);
    EXPECT_EQ(pCamera->GetNear(), 5.0f);
    EXPECT_EQ(pCamera->GetFar(), 1000.0f);
}

TEST(SceneEntity, AMeshHandsEveryValueToItsRenderObject)
{
    CFakeRenderWorld world;
    CSceneContent scene;
    scene.SetServices(&world, nullptr, nullptr, nullptr, nullptr, false);
    CFullScene full = BuildFullScene(false);
    ASSERT_TRUE(ReadScene(full.bytes, scene));
    auto* pMesh = static_cast<CStaticMeshSceneEntity*>(scene.GetEntity(1));
    ASSERT_EQ(world.meshes.size(), 2u); // the mesh and the cloth
    CFakeRenderObject& object = *world.meshes[0];
    EXPECT_EQ(pMesh->GetRenderObject(), &object);
    EXPECT_EQ(object.GetMeshName(), "model\\rock.mesh");
    EXPECT_EQ(object.fNearFade, 0.2f);
    EXPECT_EQ(object.iFadeMode, 1);
    EXPECT_EQ(object.render.uSkyLayer, 2);
    EXPECT_EQ(object.render.iBlendLayer, -2);
    EXPECT_EQ(object.render.iInOutDoor, 2);
    EXPECT_TRUE(object.bVisible);
    EXPECT_EQ(object.uMask, LayerBit(2));
    CMatrix44 m;
    pMesh->GetTransform(m);
    EXPECT_EQ(object.mWorld, m);
    // The box now comes from the object, and the file's box gives way to the union.
    EXPECT_TRUE(pMesh->IsBoundsKnown());
    pMesh->SetLayer(70);
    EXPECT_EQ(object.uMask, 0u);
    pMesh->SetLayer(5);
    EXPECT_EQ(object.uMask, uint64_t{1} << 5);
    pMesh->SetVisible(false);
    EXPECT_FALSE(object.bVisible);
    pMesh->SetShadow(false, true);
    EXPECT_EQ(object.render.uDynamicShadow, 1);
    EXPECT_EQ(object.render.uLightMap, 0);
    float fDistance = 0.0f;
    EXPECT_TRUE(pMesh->HitTestExact({0, 0, 0}, {1, 0, 0}, fDistance));
    EXPECT_EQ(fDistance, 2.0f);
    // Saving writes the entity's own values, whatever the engine holds.
    scene.RemoveEntity(pMesh);
    EXPECT_TRUE(object.bReleased);
}

TEST(SceneEntity, LoadedMeshesTakeTheirLightMapsAndLoadingOnesWait)
{
    CFullScene full = BuildFullScene(false);
    for (bool bLoading : {false, true})
    {
        CFakeRenderWorld world;
        world.bNewMeshesLoading = bLoading;
        CSceneContent scene;
        scene.SetServices(&world, nullptr, nullptr, nullptr, nullptr, false);
        Kestrin::Utility::CMemoryStream stream(full.bytes.data(), static_cast<int32_t>(full.bytes.size()));
        ASSERT_TRUE(scene.Read(stream, nullptr, bLoading));
        CFakeRenderObject& rock = *world.meshes[0];
        auto* pRock = static_cast<CStaticMeshSceneEntity*>(scene.GetEntity(1));
        if (bLoading)
        {
            EXPECT_EQ(scene.GetPending().size(), 2u);
            EXPECT_EQ(rock.iLightMapCalls, 0);
        }
        else
        {
            EXPECT_TRUE(scene.GetPending().empty());
            EXPECT_EQ(rock.iLightMapCalls, 1);
            EXPECT_EQ(rock.vScale, (CVec2{0.25f, 0.5f}));
        }
        EXPECT_EQ(pRock->GetLightMapIndex(), 0);
        EXPECT_EQ(pRock->GetColorLightMapIndex(), 0);
    }
}

TEST(SceneEntity, ApplyLightMapChecksThatTheEntryIsTheEntitys)
{
    CFakeRenderWorld world;
    CSceneContent scene;
    scene.SetServices(&world, nullptr, nullptr, nullptr, nullptr, false);
    CAtlasEntry own;
    own.iEntityId = 7;
    own.iMapIndex = 0;
    own.vOffset = {0.5f, 0.25f};
    own.vScale = {0.25f, 0.125f};
    CAtlasEntry other = own;
    other.iEntityId = 8;
    scene.GetLightMaps().entries = {own, other};
    auto* pMesh = Make<CStaticMeshSceneEntity>(scene, ENTITY_STATIC_MESH, 7);
    ASSERT_TRUE(pMesh->CreateRenderObject("rock.mesh", false));
    CFakeRenderObject& object = *world.meshes[0];
    pMesh->ApplyLightMap(0);
    EXPECT_EQ(pMesh->GetLightMapIndex(), 0);
    EXPECT_EQ(object.vOffset, (CVec2{0.5f, 0.25f}));
    EXPECT_EQ(object.vScale, (CVec2{0.25f, 0.125f}));
    pMesh->ApplyLightMap(1);
    EXPECT_EQ(pMesh->GetLightMapIndex(), -1);
    EXPECT_EQ(object.pLightMap, nullptr);
    pMesh->ApplyLightMap(-1);
    EXPECT_EQ(pMesh->GetLightMapIndex(), -1);
    EXPECT_EQ(object.pLightMap, nullptr);
    EXPECT_EQ(object.iLightMapCalls, 3);
    pMesh->ApplyColorLightMap(5);
    EXPECT_EQ(pMesh->GetColorLightMapIndex(), -1);
    // A mesh that cannot be had leaves the entity without render object, its name kept.
    EXPECT_FALSE(pMesh->CreateRenderObject("missing.mesh", false));
    EXPECT_EQ(pMesh->GetRenderObject(), nullptr);
    EXPECT_EQ(pMesh->GetMeshFile(), "missing.mesh");
    EXPECT_TRUE(object.bReleased);
}

TEST(SceneEntity, MeshPhysicsLogsWhatItDoes)
{
    CFakePhysicsWorld physics;
    CSceneContent scene;
    scene.SetServices(nullptr, &physics, nullptr, nullptr, nullptr, true);
    CLogCapture log;
    CFullScene full = BuildFullScene(false);
    ASSERT_TRUE(ReadScene(full.bytes, scene));
    // The collision file is resolved beside the mesh.
    ASSERT_FALSE(physics.requested.empty());
    EXPECT_EQ(physics.requested[0], "model\\rock.col");
    auto* pMesh = static_cast<CStaticMeshSceneEntity*>(scene.GetEntity(1));
    ASSERT_NE(pMesh->GetPhysicsObject(), nullptr);
    CFakePhysicsObject& actor = *physics.objects[0];
    ASSERT_EQ(actor.attributes.size(), 2u);
    EXPECT_EQ(actor.attributes[0].uFlags, 0x21u);
    EXPECT_EQ(actor.attributes[1].uMaterial, 4u);
    EXPECT_NE(
        std::find(log.lines.begin(), log.lines.end(), "LoadPhysicsObject success filename:model\\rock.col\n"),
        log.lines.end());
    // The actor takes the pose unscaled and the scale apart.
    pMesh->SetTransform(CMatrix44::Scaling({2, 3, 4}) * At(1, 2, 3));
    EXPECT_EQ(actor.vScale, (CVec3{2, 3, 4}));
    EXPECT_EQ(actor.mPose, At(1, 2, 3));
    EXPECT_TRUE(pMesh->SetCollisionGroup(1, 0x180));
    EXPECT_EQ(actor.attributes.back().uFlags, 0x180u);
    EXPECT_FALSE(pMesh->SetCollisionGroup(2, 1));
    pMesh->DeletePhysics();
    EXPECT_TRUE(actor.bDeleted);
    EXPECT_EQ(log.lines.back(),
              "DeletePhysicsObject: rock.col\n, CStaticMeshSceneEntity::DeletePhysicsObject()");
    pMesh->DeletePhysics();
    EXPECT_EQ(log.lines.back(), "DeletePhysicsObject fail: No CollisionShape");
    // A shape count that disagrees with the actor is reported.
    physics.iShapes = 3;
    ASSERT_TRUE(pMesh->CreatePhysics());
    EXPECT_NE(
        std::find(log.lines.begin(), log.lines.end(), "Error NxActor Shape Num: ColShape Name  rock.col"),
        log.lines.end());
    pMesh->SetCollisionFile("missing.col");
    EXPECT_FALSE(pMesh->CreatePhysics());
    EXPECT_EQ(log.lines.back(), "LoadPhysicsObject fail: fname: model\\missing.col\n");
    pMesh->SetCollisionFile("");
    EXPECT_FALSE(pMesh->CreatePhysics());
    EXPECT_EQ(log.lines.back(), "LoadPhysicsObject fail: error fileName\n");
}

TEST(SceneEntity, InEditorModeAMeshWithoutCollisionBuildsItFromTheMesh)
{
    CFakePhysicsWorld physics;
    CSceneContent scene;
    scene.SetServices(nullptr, &physics, nullptr, nullptr, nullptr, true);
    CSceneBytes b(false);
    WriteBase(b, "Rock", 1, 0, 0);
    b.Tag("MESH").RawI32(108).Matrix("transform").RawI32(-1).RawI32(-1).RawString("");
    b.RawString("").RawU16(0).RawU16(0).Vec("dColor", 3).Vec("sColor", 3);
    std::vector<uint8_t> noMesh = SingleRecordFile(false, ENTITY_STATIC_MESH, b.data);
    scene.SetEditorMode(true);
    ASSERT_TRUE(ReadScene(noMesh, scene));
    EXPECT_TRUE(physics.requested.empty());
    EXPECT_FALSE(scene.NeedsResave());

    CSceneBytes m(false);
    WriteBase(m, "Rock", 1, 0, 0);
    m.Tag("MESH").RawI32(108).Matrix("transform").RawI32(-1).RawI32(-1).RawString("model\\rock.mesh");
    WriteRenderBlock(m);
    m.RawU8(0)
        .RawF32(1)
        .RawU8(0)
        .RawF32(0)
        .RawString("")
        .RawU16(0)
        .RawU16(0)
        .Vec("dColor", 3)
        .Vec("sColor", 3);
    std::vector<uint8_t> file = SingleRecordFile(false, ENTITY_STATIC_MESH, m.data);
    scene.SetEditorMode(false);
    ASSERT_TRUE(ReadScene(file, scene));
    EXPECT_TRUE(physics.requested.empty());
    scene.SetEditorMode(true);
    ASSERT_TRUE(ReadScene(file, scene));
    ASSERT_EQ(physics.requested.size(), 1u);
    EXPECT_EQ(physics.requested[0], "from mesh model\\rock.mesh");
    EXPECT_TRUE(scene.NeedsResave());
    auto* pMesh = static_cast<CStaticMeshSceneEntity*>(scene.GetEntity(0));
    EXPECT_EQ(pMesh->GetCollisionFile(), "rock.col");
    EXPECT_EQ(pMesh->GetShapes().size(), 2u);
}

TEST(SceneEntity, LightsZonesSoundsAndCharactersFollowTheirEntity)
{
    CFakeRenderWorld world;
    CFakeAudioDevice audio;
    CFakeCharacters characters;
    CSceneContent scene;
    scene.SetServices(&world, nullptr, &audio, nullptr, &characters, false);
    CFullScene full = BuildFullScene(true);
    ASSERT_TRUE(ReadScene(full.bytes, scene));
    // Saving gives the records back as they were; only the header's box is now the union of
    // the boxes the engine objects know.
    std::vector<uint8_t> saved = WriteScene(scene);
    ASSERT_EQ(saved.size(), full.bytes.size());
    EXPECT_TRUE(std::equal(saved.begin() + 32, saved.end(), full.bytes.begin() + 32));
    EXPECT_FALSE(std::equal(saved.begin() + 8, saved.begin() + 32, full.bytes.begin() + 8));

    ASSERT_EQ(world.lights.size(), 1u);
    CFakeLight& light = *world.lights[0];
    EXPECT_EQ(light.strMaterial, "light\\gobo.mal");
    EXPECT_EQ(light.settings.iLightGroup, 0x103);
    EXPECT_EQ(light.uMask, LayerBit(5));
    scene.GetEntity(4)->SetVisible(false);
    EXPECT_EQ(light.settings.uVisible, 0);

    ASSERT_EQ(world.zones.size(), 1u);
    EXPECT_EQ(world.zones[0]->iVertices, 8);
    EXPECT_TRUE(world.zones[0]->bActive);

    ASSERT_EQ(audio.sounds.size(), 1u);
    EXPECT_EQ(audio.sounds[0]->strPlaying, "wind_loop");
    EXPECT_FALSE(audio.sounds[0]->bLoop);
    auto* pSound = static_cast<CSoundSceneEntity*>(scene.GetEntity(6));
    pSound->SetTransform(At(4, 5, 6));
    EXPECT_EQ(audio.sounds[0]->vPosition, (CVec3{4, 5, 6}));

    ASSERT_EQ(characters.configs, (std::vector<std::string>{"character\\guard.cconfig"}));
    CFakeCharacter& character = *characters.characters[0];
    EXPECT_EQ(character.strAction, "idle_01");
    // The start offset lies in the record's range.
    auto* pSkin = static_cast<CSkinnedMeshSceneEntity*>(scene.GetEntity(2));
    EXPECT_GE(character.fTime, pSkin->GetStartTimeMin());
    EXPECT_LE(character.fTime, pSkin->GetStartTimeMax());
    // Level 2: shown at quality 2 and above only.
    EXPECT_EQ(pSkin->GetLevel(), 2);
    EXPECT_TRUE(character.object.bVisible);
    scene.SetCharacterQuality(1);
    EXPECT_FALSE(character.object.bVisible);
    scene.SetCharacterQuality(2);
    EXPECT_TRUE(character.object.bVisible);
    pSkin->SetVisible(false);
    EXPECT_FALSE(character.object.bVisible);

    scene.Clear();
    EXPECT_TRUE(light.bReleased);
    EXPECT_EQ(audio.destroyed, 1);
    EXPECT_EQ(characters.destroyed, 1);
}

TEST(SceneEntity, AHeadlessSceneMakesNoEngineObjects)
{
    CFakeRenderWorld world;
    CFakeAudioDevice audio;
    CFakeCharacters characters;
    CSceneContent scene;
    scene.SetServices(&world, nullptr, &audio, nullptr, &characters, true);
    CFullScene full = BuildFullScene(false);
    ASSERT_TRUE(ReadScene(full.bytes, scene));
    EXPECT_TRUE(world.meshes.empty());
    EXPECT_TRUE(world.lights.empty());
    EXPECT_TRUE(audio.sounds.empty());
    EXPECT_TRUE(characters.configs.empty());
    auto* pSound = static_cast<CSoundSceneEntity*>(scene.GetEntity(6));
    pSound->SetCue("rain");
    EXPECT_EQ(pSound->GetSound(), nullptr);
    EXPECT_EQ(pSound->GetCueName(), "rain");
}
