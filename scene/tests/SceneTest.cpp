// CScene: opening and saving files, ids, the environment in force, picking, look-up,
// creation and removal, pending activation and the per-frame update.
#include "scene/Scene.h"
#include "scene/SceneEnvironmentEntity.h"
#include "scene/SceneFxSoundEntities.h"
#include "scene/SceneGroupEntity.h"
#include "scene/SceneLightEntity.h"
#include "scene/SceneManager.h"
#include "scene/SceneMarkerEntities.h"
#include "scene/SceneMeshEntities.h"
#include "scene/SceneVolumeEntities.h"
#include "scene/tests/SceneFakes.h"
#include "scene/tests/SceneRecords.h"
#include "scene/tests/SceneTestUtil.h"

#include "Utils/Utility/GUtDebug.h"
#include "script/LuaScript.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <filesystem>

using namespace Ovrel;
using namespace SceneTest;

namespace
{
CSceneEntity* Locator(CScene& scene, const char* pcName, CVec3 vAt, int32_t iId = 0)
{
    CSceneEntity* pEntity = scene.CreateEntity(ENTITY_LOCATOR, iId);
    pEntity->SetName(pcName);
    pEntity->SetTransform(CMatrix44::Translation(vAt));
    return pEntity;
}

std::vector<std::string> Names(const CScene& scene)
{
    std::vector<std::string> names;
    for (CSceneEntity* pEntity : scene.GetEntities())
    {
        names.push_back(pEntity->GetName());
    }
    return names;
}

// Two environments in one file: "Day" and a second one of the given name.
std::vector<uint8_t> TwoEnvironments(const std::string& strSecond)
{
    CSceneBytes b(false);
    WriteHeader(b, 102, {}, {});
    b.RawI32(2);
    b.RawU32(ENTITY_ENVIRONMENT);
    WriteBase(b, "Day", 1, 0, 0);
    WriteEnvironment(b, 110);
    b.RawU32(ENTITY_ENVIRONMENT);
    WriteBase(b, strSecond, 2, 0, 0);
    WriteEnvironment(b, 110);
    return b.data;
}

// Records what the scene asks of the resource managers and the asset writers.
class CRecordingResources final : public ISceneResourceScopes, public IAssetStore
{
public:
    void BeginScopes(const CSceneFolders& folders) override
    {
        calls.push_back("begin " + folders.strFolder + " " + folders.strFxFolder + " " +
                        folders.strAssetFolder + " " + folders.strModelFolder + " " +
                        std::to_string(folders.uReload));
    }
    void EndScopes() override { calls.push_back("end"); }
    void SetReloadExisting(bool b) override { calls.push_back(b ? "reload on" : "reload off"); }
    bool SaveAsset(int32_t iKind, const std::string& strName, const std::string& strFolder) override
    {
        calls.push_back("save " + std::to_string(iKind) + " " + strName + " in " + strFolder);
        return true;
    }
    void CollectDependencies(int32_t iKind, const std::string& strName, IAssetCollector& collector) override
    {
        if (iKind == ASSET_MESH)
        {
            static_cast<CAssetHelper&>(collector).AddMaterial(strName + ".mal");
        }
    }
    std::vector<std::string> calls;
};
} // namespace

// ---------------------------------------------------------------------------------------
// opening and saving

TEST(Scene, OpenThenSaveGivesTheSameBytesInBothByteOrders)
{
    CTempFolder temp;
    for (bool bBig : {false, true})
    {
        CFullScene full = BuildFullScene(bBig);
        std::string strIn = temp / (bBig ? "big.scene" : "little.scene");
        WriteBytes(strIn, full.bytes);
        CScene scene;
        Headless(scene);
        ASSERT_TRUE(scene.Open(strIn, false));
        EXPECT_EQ(scene.GetName(), bBig ? "big" : "little");
        EXPECT_EQ(scene.GetFolder(), temp.Path());
        EXPECT_EQ(scene.GetFilePath(), strIn);
        EXPECT_FALSE(scene.IsLoading());
        ASSERT_EQ(scene.GetEntityCount(), 16);
        // The group's members point at it again.
        EXPECT_EQ(scene.FindById(2)->GetGroupId(), 16);
        std::string strOut = temp / "out.scene";
        ASSERT_TRUE(scene.Save(strOut));
        EXPECT_EQ(ReadBytes(strOut), full.bytes);
        EXPECT_EQ(scene.GetName(), "out");
        EXPECT_FALSE(std::filesystem::exists(strOut + ".tmp"));
    }
}

TEST(Scene, OpenFailuresLogTheirStepAndLeaveTheSceneEmpty)
{
    CTempFolder temp;
    CScene scene;
    Headless(scene);
    Locator(scene, "Before", {0, 0, 0});
    {
        CLogLines log;
        EXPECT_FALSE(scene.Open(temp / "missing.scene", false));
        EXPECT_TRUE(log.Has("Load scene \"missing\" fail.\n"));
    }
    EXPECT_EQ(scene.GetEntityCount(), 0);
    EXPECT_EQ(scene.GetNextEntityId(), 0);

    std::vector<uint8_t> bytes = BuildFullScene(false).bytes;
    bytes.resize(bytes.size() / 2);
    WriteBytes(temp / "cut.scene", bytes);
    CLogLines log;
    EXPECT_FALSE(scene.Open(temp / "cut.scene", false));
    // The parse step's text deliberately has no full stop.
    EXPECT_TRUE(log.Has("Load scene \"cut\" fail\n"));
    EXPECT_EQ(scene.GetEntityCount(), 0);
    EXPECT_EQ(scene.GetEnvironment(), nullptr);
}

TEST(Scene, OpenOpensPathScopesOnTheSceneFolderAndTheOverrides)
{
    CTempFolder temp;
    WriteBytes(temp / "a.scene", BuildFullScene(false).bytes);
    CRecordingResources resources;
    CScene scene;
    Headless(scene);
    scene.SetResourceScopes(&resources);
    scene.SetFxFolderOverride("fx/");
    scene.SetTextureFolderOverride("assets/");
    scene.SetReloadFlag(1);
    ASSERT_TRUE(scene.Open(temp / "a.scene", false));
    ASSERT_EQ(resources.calls.size(), 2u);
    EXPECT_EQ(resources.calls[0], "begin " + temp.Path() + " fx/ assets/ " + temp.Path() + " 1");
    resources.calls.clear();
    scene.SetModelFolderOverride("models/");
    ASSERT_TRUE(scene.Open(temp / "a.scene", false));
    EXPECT_EQ(resources.calls[0], "begin " + temp.Path() + " fx/ assets/ models/ 1");
    EXPECT_EQ(resources.calls[1], "end");
}

TEST(Scene, IdsComeFromTheFileAndTheNextNewIdFollowsTheLargest)
{
    CTempFolder temp;
    {
        CScene scene;
        Headless(scene);
        Locator(scene, "A", {0, 0, 0}, 5);
        Locator(scene, "B", {0, 0, 0}, 9);
        ASSERT_TRUE(scene.Save(temp / "ids.scene"));
    }
    CScene scene;
    Headless(scene);
    ASSERT_TRUE(scene.Open(temp / "ids.scene", false));
    EXPECT_EQ(scene.FindById(5)->GetName(), "A");
    EXPECT_EQ(scene.FindById(9)->GetName(), "B");
    EXPECT_EQ(scene.GetNextEntityId(), 10);
    EXPECT_EQ(scene.CreateEntity(ENTITY_LOCATOR, 0)->GetId(), 11);
    // Id 0 is never found, even on an entity that has it.
    scene.CreateEntity(ENTITY_LOCATOR, 0)->SetId(0);
    EXPECT_EQ(scene.FindById(0), nullptr);
    scene.Clear();
    EXPECT_EQ(scene.GetNextEntityId(), 0);
    EXPECT_EQ(scene.CreateEntity(ENTITY_PLAIN, 0)->GetId(), 1);
}

TEST(Scene, SavingTwiceGivesTheSameFileWhateverTheOrderOfCreation)
{
    CTempFolder temp;
    auto Build = [&](bool bReversed, const std::string& strPath)
    {
        CScene scene;
        Headless(scene);
        std::vector<int> order = {0, 1, 2, 3, 4};
        if (bReversed)
        {
            std::reverse(order.begin(), order.end());
        }
        for (int i : order)
        {
            switch (i)
            {
                case 0:
                    Locator(scene, "b", {1, 0, 0}, 3);
                    break;
                case 1:
                    Locator(scene, "B", {2, 0, 0}, 4);
                    break;
                case 2:
                    scene.CreateEntity(ENTITY_CAMERA, 1)->SetName("a");
                    break;
                case 3:
                    Locator(scene, "b", {3, 0, 0}, 2);
                    break;
                default:
                    scene.CreateEntity(ENTITY_LIGHT, 5)->SetName("z");
                    break;
            }
        }
        EXPECT_TRUE(scene.Save(strPath));
        EXPECT_TRUE(scene.Save(strPath + "2"));
        // The list itself is left sorted: type, name in byte order, id.
        EXPECT_EQ(Names(scene), (std::vector<std::string>{"z", "B", "b", "b", "a"}));
        EXPECT_EQ(scene.GetEntity(2)->GetId(), 2);
        EXPECT_EQ(scene.FindById(3)->GetName(), "b");
    };
    Build(false, temp / "one.scene");
    Build(true, temp / "two.scene");
    EXPECT_EQ(ReadBytes(temp / "one.scene"), ReadBytes(temp / "two.scene"));
    EXPECT_EQ(ReadBytes(temp / "one.scene"), ReadBytes(temp / "one.scene2"));
}

TEST(Scene, SaveToAFolderThatCannotBeWrittenFailsAndKeepsNoTemporary)
{
    CTempFolder temp;
    CScene scene;
    Headless(scene);
    Locator(scene, "A", {0, 0, 0});
    EXPECT_FALSE(scene.Save(temp / "no/such/folder/x.scene"));
    EXPECT_FALSE(scene.Save(""));
    WriteText(temp / "old.scene", "old");
    std::filesystem::create_directory(temp / "old.scene.tmp");
    // The temporary cannot be made (a folder stands in its place): the old file stays.
    EXPECT_FALSE(scene.Save(temp / "old.scene"));
    EXPECT_EQ(ReadText(temp / "old.scene"), "old");
}

TEST(Scene, SaveByTypeKeepsListOrderAndWritesNoTables)
{
    CTempFolder temp;
    CFullScene full = BuildFullScene(false);
    WriteBytes(temp / "full.scene", full.bytes);
    CScene scene;
    Headless(scene);
    ASSERT_TRUE(scene.Open(temp / "full.scene", false));
    CSceneEntity* pLate = Locator(scene, "Aaa", {0, 0, 0});
    // "Save GameObject..." takes the locators with the game objects, on purpose.
    ASSERT_TRUE(scene.SaveByType(temp / "objects.scene", ENTITY_LOCATOR | ENTITY_GAME_OBJECT));
    EXPECT_EQ(scene.GetName(), "objects");
    EXPECT_EQ(scene.GetEntities().back(), pLate);
    CScene read;
    Headless(read);
    ASSERT_TRUE(read.Open(temp / "objects.scene", false));
    EXPECT_EQ(Names(read), (std::vector<std::string>{"Spawn", "Npc", "Aaa"}));
    EXPECT_TRUE(read.GetLightMaps().IsEmpty());
    EXPECT_TRUE(read.GetColorLightMaps().IsEmpty());
    ASSERT_TRUE(scene.SaveByType(temp / "locators.scene", ENTITY_LOCATOR));
    ASSERT_TRUE(read.Open(temp / "locators.scene", false));
    EXPECT_EQ(Names(read), (std::vector<std::string>{"Spawn", "Aaa"}));
}

TEST(Scene, SaveEntitiesSortsTheChosenOnesAndSavesTheirMeshAssets)
{
    CTempFolder temp;
    CFakeRenderWorld world;
    CRecordingResources resources;
    CScene scene;
    scene.SetServices(&world, nullptr, nullptr, nullptr, nullptr, false);
    scene.SetAssetStore(&resources);
    CSceneEntity* pMesh = scene.CreateMesh("model\\rock.mesh");
    ASSERT_NE(pMesh, nullptr);
    static_cast<CStaticMeshSceneEntity*>(pMesh)->SetCollisionFile("rock.col");
    CSceneEntity* pLocator = Locator(scene, "Zed", {0, 0, 0});
    Locator(scene, "NotChosen", {0, 0, 0});
    ASSERT_TRUE(scene.SaveEntities({pLocator, pMesh}, temp / "chosen.scene"));
    // The scene's own order and paths are untouched.
    EXPECT_EQ(scene.GetEntity(0), pMesh);
    EXPECT_EQ(scene.GetName(), "");
    EXPECT_EQ(resources.calls, (std::vector<std::string>{"save 2 model\\rock.mesh.mal in " + temp.Path(),
                                                         "save 4 model\\rock.mesh in " + temp.Path(),
                                                         "save 8 model\\rock.col in " + temp.Path()}));
    CScene read;
    Headless(read);
    ASSERT_TRUE(read.Open(temp / "chosen.scene", false));
    EXPECT_EQ(Names(read), (std::vector<std::string>{"rock", "Zed"}));
}

TEST(Scene, ExportWritesIntoItsOwnFolderWithAssets)
{
    CTempFolder temp;
    WriteBytes(temp / "level.scene", BuildFullScene(false).bytes);
    CRecordingResources resources;
    CScene scene;
    Headless(scene);
    scene.SetAssetStore(&resources);
    ASSERT_TRUE(scene.Open(temp / "level.scene", false));
    std::string strTarget = temp / "data/";
    std::vector<CSceneEntity*> chosen = {scene.FindById(12), scene.FindById(2)};
    ASSERT_TRUE(scene.Export(chosen, strTarget));
    std::string strFile = strTarget + "scene/level/level.scene";
    ASSERT_TRUE(std::filesystem::exists(strFile));
    CScene read;
    Headless(read);
    ASSERT_TRUE(read.Open(strFile, false));
    EXPECT_EQ(Names(read), (std::vector<std::string>{"Rock", "Spawn"}));
    // The export carries the lightmap tables, and their textures go with the assets.
    EXPECT_EQ(read.GetLightMaps().maps.size(), 2u);
    std::vector<std::string> want = {
        "save 1 lightmap\\lm_000.dds in " + strTarget, "save 1 lightmap\\lm_001.dds in " + strTarget,
        "save 1 colorlightmap\\clm_000.dds in " + strTarget, "save 8 model\\rock.col in " + strTarget};
    EXPECT_EQ(resources.calls, want);
}

TEST(Scene, SaveAllWritesCollisionPropAndLightmapsAndClearsTheResaveMark)
{
    CTempFolder temp;
    WriteBytes(temp / "level.scene", BuildFullScene(false).bytes);
    CRecordingResources resources;
    CScene scene;
    Headless(scene);
    scene.SetEditorMode(true);
    scene.SetAssetStore(&resources);
    ASSERT_TRUE(scene.Open(temp / "level.scene", false));
    scene.SetNeedsResave(true);
    ASSERT_TRUE(scene.SaveAll(temp / "level.scene"));
    EXPECT_FALSE(scene.NeedsResave());
    EXPECT_TRUE(std::filesystem::exists(temp / "level.prop"));
    EXPECT_EQ(resources.calls, (std::vector<std::string>{"save 8 model\\rock.col in ",
                                                         "save 1 lightmap\\lm_000.dds in " + temp.Path(),
                                                         "save 1 lightmap\\lm_001.dds in " + temp.Path()}));
    EXPECT_EQ(ReadBytes(temp / "level.scene"), BuildFullScene(false).bytes);
}

TEST(Scene, CameraAnimationIsOneLinePerCameraAtTimeZero)
{
    CTempFolder temp;
    CScene scene;
    Headless(scene);
    CSceneEntity* pFirst = scene.CreateCamera("First");
    pFirst->SetTransform(CMatrix44::Translation({1.5f, -2.0f, 300.0f}));
    Locator(scene, "NotACamera", {9, 9, 9});
    CSceneEntity* pSecond = scene.CreateCamera();
    CMatrix44 mTurned = CMatrix44::RotationZ(3.14159265f / 2.0f);
    mTurned.SetTranslation({0.0f, 10.0f, 0.25f});
    pSecond->SetTransform(mTurned);
    ASSERT_TRUE(scene.ExportCameraAnimation(temp / "cameras.lua"));
    EXPECT_EQ(
        ReadText(temp / "cameras.lua"),
        "CameraFrame(0.000000, 1.500000, -2.000000, 300.000000, 0.000000, 0.000000, 0.000000, 1.000000)\n"
        "CameraFrame(0.000000, 0.000000, 10.000000, 0.250000, 0.000000, 0.000000, 0.707107, 0.707107)\n");
    scene.RemoveEntity(pFirst);
    scene.RemoveEntity(pSecond);
    ASSERT_TRUE(scene.ExportCameraAnimation(temp / "cameras.lua"));
    EXPECT_EQ(ReadText(temp / "cameras.lua"), "");
}

// ---------------------------------------------------------------------------------------
// the environment in force

TEST(Scene, AVtlEnvironmentTakesOverOnlyInTheGameWithARenderer)
{
    CTempFolder temp;
    WriteBytes(temp / "vtl.scene", TwoEnvironments("Day_VTL"));
    WriteBytes(temp / "other.scene", TwoEnvironments("Night_VTL"));
    CFakeRenderWorld world;
    struct
    {
        bool bEditor;
        bool bHeadless;
        const char* pcFile;
        const char* pcWanted;
    } aCases[] = {
        {true, false, "vtl.scene", "Day"},      {false, true, "vtl.scene", "Day"},
        {false, false, "vtl.scene", "Day_VTL"}, {false, false, "other.scene", "Day"},
        {true, true, "vtl.scene", "Day"},
    };
    for (const auto& c : aCases)
    {
        CScene scene;
        scene.SetServices(&world, nullptr, nullptr, nullptr, nullptr, c.bHeadless);
        scene.SetEditorMode(c.bEditor);
        ASSERT_TRUE(scene.Open(temp / c.pcFile, false));
        ASSERT_NE(scene.GetEnvironment(), nullptr);
        EXPECT_EQ(scene.GetEnvironment()->GetName(), c.pcWanted)
            << "editor " << c.bEditor << " headless " << c.bHeadless << " " << c.pcFile;
    }
}

// ---------------------------------------------------------------------------------------
// picking

TEST(Scene, PickTakesTheNearestAndTheFirstOfEqualDistances)
{
    CScene scene;
    Headless(scene);
    CSceneEntity* pFar = Locator(scene, "Far", {300, 0, 0});
    CSceneEntity* pNear = Locator(scene, "Near", {100, 0, 0});
    CSceneEntity* pTwin = Locator(scene, "Twin", {100, 0, 0});
    float fDistance = 0.0f;
    EXPECT_EQ(scene.Pick({0, 0, 0}, {1, 0, 0}, fDistance, ENTITY_ALL, ~0u, ~0u), pNear);
    EXPECT_FLOAT_EQ(fDistance, 97.5f);
    scene.RemoveEntity(pNear);
    EXPECT_EQ(scene.Pick({0, 0, 0}, {1, 0, 0}, fDistance, ENTITY_ALL, ~0u, ~0u), pTwin);
    pTwin->SetVisible(false);
    EXPECT_EQ(scene.Pick({0, 0, 0}, {1, 0, 0}, fDistance, ENTITY_ALL, ~0u, ~0u), pFar);
    EXPECT_FLOAT_EQ(fDistance, 297.5f);
    EXPECT_EQ(scene.Pick({0, 0, 0}, {0, 1, 0}, fDistance, ENTITY_ALL, ~0u, ~0u), nullptr);
    EXPECT_FLOAT_EQ(fDistance, 1e10f);
}

TEST(Scene, PickHonoursTypeAndLayerMasksAndNeverPicksLayersPast63)
{
    CScene scene;
    Headless(scene);
    CSceneEntity* pLow = Locator(scene, "Low", {100, 0, 0});
    pLow->SetLayer(3);
    CSceneEntity* pHigh = scene.CreateEntity(ENTITY_TRIGGER, 0);
    pHigh->SetTransform(CMatrix44::Translation({200, 0, 0}));
    pHigh->SetLayer(40);
    CSceneEntity* pOut = Locator(scene, "Out", {50, 0, 0});
    pOut->SetLayer(70);
    CSceneEntity* pNegative = Locator(scene, "Negative", {60, 0, 0});
    pNegative->SetLayer(-1);
    float fDistance = 0.0f;
    const CVec3 vStart{0, 0, 0}, vDir{1, 0, 0};
    EXPECT_EQ(scene.Pick(vStart, vDir, fDistance, ENTITY_ALL, ~0u, ~0u), pLow);
    EXPECT_EQ(scene.Pick(vStart, vDir, fDistance, ENTITY_TRIGGER, ~0u, ~0u), pHigh);
    EXPECT_EQ(scene.Pick(vStart, vDir, fDistance, ENTITY_ALL, ~0u & ~8u, ~0u), pHigh);
    // Layer 40 is bit 8 of the high word.
    EXPECT_EQ(scene.Pick(vStart, vDir, fDistance, ENTITY_ALL, ~0u & ~8u, ~0u & ~(1u << 8)), nullptr);
    EXPECT_EQ(scene.Pick(vStart, vDir, fDistance, ENTITY_ALL, 0x7fffffffu, 0), pLow);
    // A camera one looks through is not in its own way.
    CSceneEntity* pCamera = scene.CreateCamera();
    EXPECT_EQ(scene.Pick(vStart, vDir, fDistance, ENTITY_ALL, ~0u, ~0u), pLow);
    pCamera->SetTransform(CMatrix44::Translation({20, 0, 0}));
    EXPECT_EQ(scene.Pick(vStart, vDir, fDistance, ENTITY_ALL, ~0u, ~0u), pCamera);
    EXPECT_FLOAT_EQ(fDistance, 10.0f);
}

// ---------------------------------------------------------------------------------------
// creation, look-up and removal

TEST(Scene, CreateEntityListsKindsAndTheUpdatedOnes)
{
    CScene scene;
    Headless(scene);
    EXPECT_EQ(scene.CreateEntity(3, 0), nullptr);
    EXPECT_EQ(scene.CreateEntity(0x80000000u, 0), nullptr);
    EXPECT_EQ(scene.GetNextEntityId(), 0);
    const uint32_t aTypes[] = {ENTITY_PLAIN,    ENTITY_STATIC_MESH, ENTITY_SKINNED_MESH, ENTITY_CLOTH,
                               ENTITY_LIGHT,    ENTITY_FX,          ENTITY_SOUND,        ENTITY_ENVIRONMENT,
                               ENTITY_OCCLUDER, ENTITY_PORTAL,      ENTITY_ZONE,         ENTITY_LOCATOR,
                               ENTITY_TRIGGER,  ENTITY_CAMERA,      ENTITY_GAME_OBJECT,  ENTITY_GROUP};
    for (uint32_t uType : aTypes)
    {
        CSceneEntity* pEntity = scene.CreateEntity(uType, 0);
        ASSERT_NE(pEntity, nullptr);
        EXPECT_EQ(pEntity->GetType(), uType);
        EXPECT_EQ(pEntity->GetScene(), &scene);
    }
    EXPECT_EQ(scene.GetEntityCount(), 16);
    std::vector<uint32_t> updated;
    for (CSceneEntity* pEntity : scene.GetUpdateList())
    {
        updated.push_back(pEntity->GetType());
    }
    EXPECT_EQ(updated, (std::vector<uint32_t>{ENTITY_SKINNED_MESH, ENTITY_CLOTH, ENTITY_FX}));
    EXPECT_EQ(scene.CreateEntity(ENTITY_LOCATOR, 40)->GetId(), 40);
    EXPECT_EQ(scene.GetEntity(-1), nullptr);
    EXPECT_EQ(scene.GetEntity(17), nullptr);
    EXPECT_EQ(scene.GetEntity(16)->GetId(), 40);
}

TEST(Scene, FactoriesNameActivateAndFailWhereTheEngineBuildsNothing)
{
    CTempFolder temp;
    CFakeRenderWorld world;
    CScene scene;
    scene.SetServices(&world, nullptr, nullptr, nullptr, nullptr, false);
    EXPECT_EQ(scene.CreateLight("Spot &Light")->GetName(), "SpotLight01");
    EXPECT_EQ(world.lights.size(), 1u);
    CSceneEntity* pSound = scene.CreateSound();
    EXPECT_EQ(pSound->GetName(), "Sound");
    EXPECT_EQ(pSound->GetType(), ENTITY_SOUND);
    auto* pEnvironment = static_cast<CEnvironmentSceneEntity*>(scene.CreateEnvironment());
    EXPECT_EQ(scene.GetEnvironment(), pEnvironment);
    EXPECT_EQ(pEnvironment->GetValues().vChar1, (CVec3{0.3f, 0.3f, 0.3f}));
    EXPECT_EQ(pEnvironment->GetValues().vFx2, (CVec3{0.05f, 0.05f, 0.05f}));
    EXPECT_NE(scene.CreateEnvironment("Second"), nullptr);
    EXPECT_EQ(scene.GetEnvironment(), pEnvironment);

    CSceneEntity* pMesh = scene.CreateMesh("model\\tree_03.mesh");
    ASSERT_NE(pMesh, nullptr);
    EXPECT_EQ(pMesh->GetName(), "tree_03");
    EXPECT_EQ(world.meshes.back()->GetMeshName(), "model\\tree_03.mesh");
    int32_t iCount = scene.GetEntityCount();
    int32_t iNext = scene.GetNextEntityId();
    EXPECT_EQ(scene.CreateMesh("model\\missing.mesh"), nullptr);
    EXPECT_EQ(scene.CreateMesh(""), nullptr);
    EXPECT_EQ(scene.CreateCloth("model\\missing.mesh"), nullptr);
    EXPECT_EQ(scene.GetEntityCount(), iCount);
    EXPECT_GT(scene.GetNextEntityId(), iNext);
    EXPECT_EQ(scene.CreateGameObject("npc\\guard.lua")->GetResourceName(), "npc\\guard.lua");
    EXPECT_EQ(scene.CreateLocator("marks/Spawn.loc")->GetName(), "Spawn");

    // Without an engine the file's name is kept and the entity stays.
    CScene headless;
    Headless(headless);
    EXPECT_EQ(headless.CreateMesh("model\\missing.mesh")->GetResourceName(), "model\\missing.mesh");
    EXPECT_EQ(headless.CreateCharacter("character\\guard.cconfig")->GetName(), "guard");
    EXPECT_EQ(headless.CreateFx("fx\\fire.eff")->GetResourceName(), "fx\\fire.eff");
}

TEST(Scene, VolumesTakeTheirShapeFromAColladaMesh)
{
    CTempFolder temp;
    WriteText(temp / "wall.dae", R"(<?xml version="1.0"?>
<COLLADA xmlns="http://www.collada.org/2005/11/COLLADASchema" version="1.4.1">
  <library_geometries><geometry id="quad"><mesh>
    <source id="p"><float_array id="pa" count="12">0 0 0 10 0 0 10 0 5 0 0 5</float_array>
      <technique_common><accessor source="#pa" count="4" stride="3"/></technique_common></source>
    <vertices id="v"><input semantic="POSITION" source="#p"/></vertices>
    <triangles count="2"><input semantic="VERTEX" source="#v" offset="0"/><p>0 1 2 0 2 3</p></triangles>
  </mesh></geometry></library_geometries>
</COLLADA>)");
    CScene scene;
    Headless(scene);
    auto* pOccluder = static_cast<COccluderSceneEntity*>(scene.CreateOccluder(temp / "wall.dae"));
    ASSERT_NE(pOccluder, nullptr);
    EXPECT_EQ(pOccluder->GetName(), "wall");
    EXPECT_TRUE(pOccluder->HasShape());
    EXPECT_EQ(pOccluder->GetGeometry().vertices.size(), 4u);
    EXPECT_EQ(pOccluder->GetGeometry().indices, (std::vector<uint16_t>{0, 1, 2, 0, 2, 3}));
    // The shared diagonal is no outline edge.
    EXPECT_EQ(pOccluder->GetGeometry().edges.size(), 4u);
    EXPECT_NE(scene.CreatePortal(temp / "wall.dae"), nullptr);
    EXPECT_NE(scene.CreateZone(temp / "wall.dae"), nullptr);
    EXPECT_EQ(scene.CreateZone(temp / "none.dae"), nullptr);
    EXPECT_EQ(scene.GetEntityCount(), 3);
}

TEST(Scene, FindByNameAndFindMatchingIgnoreCase)
{
    CScene scene;
    Headless(scene);
    CSceneEntity* pA = Locator(scene, "Tower_Gate", {0, 0, 0});
    CSceneEntity* pCamera = scene.CreateCamera("tower_gate");
    CSceneEntity* pB = Locator(scene, "TOWER_gate", {0, 0, 0});
    Locator(scene, "Wall", {0, 0, 0});
    EXPECT_EQ(scene.FindByName("tower_GATE", ENTITY_ALL), pA);
    EXPECT_EQ(scene.FindByName("tower_gate", ENTITY_CAMERA), pCamera);
    EXPECT_EQ(scene.FindByName("Tower", ENTITY_ALL), nullptr);
    EXPECT_EQ(scene.FindByName("Wall", ENTITY_CAMERA), nullptr);
    std::vector<CSceneEntity*> found = {pCamera};
    EXPECT_EQ(scene.FindMatching("WER_g", found, ENTITY_LOCATOR), 2);
    EXPECT_EQ(found, (std::vector<CSceneEntity*>{pCamera, pA, pB}));
    found.clear();
    EXPECT_EQ(scene.FindMatching("", found, ENTITY_ALL), 4);
}

TEST(Scene, RemovingAGroupKeepsItsMembersAndTheEnvironmentIsForgotten)
{
    CScene scene;
    Headless(scene);
    CSceneEntity* pA = Locator(scene, "A", {0, 0, 0});
    CSceneEntity* pB = Locator(scene, "B", {0, 0, 0});
    auto* pGroup = static_cast<CGroupSceneEntity*>(scene.CreateEntity(ENTITY_GROUP, 0));
    pGroup->Add(pA);
    pGroup->Add(pB);
    EXPECT_TRUE(scene.RemoveEntity(pA));
    EXPECT_EQ(pGroup->GetMembers(), (std::vector<int32_t>{pB->GetId()}));
    EXPECT_TRUE(scene.RemoveEntity(pGroup));
    EXPECT_EQ(pB->GetGroupId(), 0);
    EXPECT_EQ(scene.GetEntityCount(), 1);
    EXPECT_FALSE(scene.RemoveEntity(pGroup));
    EXPECT_FALSE(scene.RemoveEntity(nullptr));
    CSceneEntity* pEnvironment = scene.CreateEnvironment();
    CSceneEntity* pFx = scene.CreateEntity(ENTITY_FX, 0);
    EXPECT_TRUE(scene.RemoveEntity(pEnvironment));
    EXPECT_EQ(scene.GetEnvironment(), nullptr);
    EXPECT_TRUE(scene.RemoveEntity(pFx));
    EXPECT_TRUE(scene.GetUpdateList().empty());
}

TEST(Scene, RelinkGroupsAndCollisionSettingsOfTheSameShape)
{
    CScene scene;
    Headless(scene);
    CSceneEntity* pA = Locator(scene, "A", {0, 0, 0});
    auto* pGroup = static_cast<CGroupSceneEntity*>(scene.CreateEntity(ENTITY_GROUP, 0));
    auto* pOther = static_cast<CGroupSceneEntity*>(scene.CreateEntity(ENTITY_GROUP, 0));
    pGroup->SetMembers({pA->GetId(), pOther->GetId(), 999});
    scene.RelinkGroups();
    EXPECT_EQ(pA->GetGroupId(), pGroup->GetId());
    EXPECT_EQ(pOther->GetGroupId(), 0);

    auto MakeMesh = [&](const char* pcMesh, const char* pcCollision)
    {
        auto* pMesh = static_cast<CStaticMeshSceneEntity*>(scene.CreateMesh(pcMesh));
        pMesh->SetCollisionFile(pcCollision);
        pMesh->SetShapes({{0x20, 1}});
        return pMesh;
    };
    CStaticMeshSceneEntity* pSource = MakeMesh("model\\rock.mesh", "rock.col");
    CStaticMeshSceneEntity* pSame = MakeMesh("MODEL/rock.mesh", "Rock.col");
    CStaticMeshSceneEntity* pElsewhere = MakeMesh("other\\rock.mesh", "rock.col");
    CStaticMeshSceneEntity* pNone = MakeMesh("model\\rock.mesh", "");
    pSource->SetShapes({{0x21, 7}, {0x40, 2}});
    EXPECT_EQ(scene.ApplyCollisionToSameMesh(pSource), 1);
    EXPECT_EQ(pSame->GetShapes(), pSource->GetShapes());
    EXPECT_EQ(pElsewhere->GetShapes().size(), 1u);
    EXPECT_EQ(pNone->GetShapes().size(), 1u);
    EXPECT_EQ(scene.ApplyCollisionToSameMesh(pNone), 0);
    EXPECT_EQ(scene.ApplyCollisionToSameMesh(nullptr), 0);
}

// ---------------------------------------------------------------------------------------
// pending activation and the per-frame step

TEST(Scene, EntitiesStillLoadingWaitUntilTheirResourcesArrive)
{
    CTempFolder temp;
    {
        CScene scene;
        Headless(scene);
        scene.CreateMesh("model\\rock.mesh");
        static_cast<CFxSceneEntity*>(scene.CreateEntity(ENTITY_FX, 0))->SetLoopDelay(0.0f, 0.0f);
        ASSERT_TRUE(scene.Save(temp / "a.scene"));
    }
    CFakeRenderWorld world;
    world.bNewMeshesLoading = true;
    CScene scene;
    scene.SetServices(&world, nullptr, nullptr, nullptr, nullptr, false);
    ASSERT_TRUE(scene.Open(temp / "a.scene", false));
    ASSERT_EQ(scene.GetPending().size(), 1u);
    EXPECT_TRUE(scene.IsLoading());
    ASSERT_EQ(world.meshes.size(), 1u);
    CFakeRenderObject* pObject = world.meshes[0].get();
    EXPECT_EQ(pObject->iLightMapCalls, 0);
    pObject->bLoading = false;
    scene.SetHoldActivation(true);
    EXPECT_FALSE(scene.IsLoading());
    EXPECT_EQ(scene.GetPending().size(), 1u);
    scene.SetHoldActivation(false);
    EXPECT_FALSE(scene.IsLoading());
    EXPECT_TRUE(scene.GetPending().empty());
    // OnLoaded gave the mesh its (absent) lightmap.
    EXPECT_EQ(pObject->iLightMapCalls, 1);
}

TEST(Scene, UpdateRunsTheUpdateListOnceNothingLoads)
{
    CTempFolder temp;
    {
        CScene scene;
        Headless(scene);
        scene.CreateCharacter("character\\guard.cconfig");
        scene.CreateMesh("model\\rock.mesh");
        ASSERT_TRUE(scene.Save(temp / "a.scene"));
    }
    CFakeRenderWorld world;
    world.bNewMeshesLoading = true;
    CFakeCharacters characters;
    CScene scene;
    scene.SetServices(&world, nullptr, nullptr, nullptr, &characters, false);
    ASSERT_TRUE(scene.Open(temp / "a.scene", false));
    ASSERT_EQ(characters.characters.size(), 1u);
    ASSERT_EQ(scene.GetUpdateList().size(), 1u);
    // A pending entity holds the whole update back.
    scene.Update(1.0f, 0.5f);
    EXPECT_FLOAT_EQ(characters.characters[0]->fTime, 0.0f);
    world.meshes.back()->bLoading = false;
    scene.Update(1.5f, 0.25f);
    EXPECT_FLOAT_EQ(characters.characters[0]->fTime, 0.25f);
    scene.Update(1.75f, 0.25f);
    EXPECT_FLOAT_EQ(characters.characters[0]->fTime, 0.5f);
    // A headless scene updates nothing.
    CScene headless;
    headless.SetServices(&world, nullptr, nullptr, nullptr, &characters, true);
    headless.CreateCharacter("character\\guard.cconfig");
    headless.Update(0.0f, 1.0f);
    EXPECT_EQ(characters.characters.size(), 1u);
}

TEST(Scene, ClearForgetsNamesEntitiesAndMarks)
{
    CTempFolder temp;
    WriteBytes(temp / "a.scene", BuildFullScene(false).bytes);
    CScene scene("Main");
    Headless(scene);
    ASSERT_TRUE(scene.Open(temp / "a.scene", false));
    scene.SetNeedsResave(true);
    scene.Clear();
    EXPECT_EQ(scene.GetName(), "");
    EXPECT_EQ(scene.GetFilePath(), "");
    EXPECT_EQ(scene.GetEntityCount(), 0);
    EXPECT_EQ(scene.GetEnvironment(), nullptr);
    EXPECT_FALSE(scene.NeedsResave());
    EXPECT_TRUE(scene.GetLightMaps().IsEmpty());
    EXPECT_EQ(scene.GetOpenName(), "Main");
    EXPECT_EQ(scene.GetMode(), 2);
    EXPECT_EQ(scene.GetVisibleGroups(), ~uint64_t{0});
}

TEST(Scene, PathsTakeEitherSeparatorAndAnyCase)
{
    CTempFolder temp;
    std::filesystem::create_directories(temp / "Data");
    WriteBytes(temp / "Data/Level.scene", BuildFullScene(false).bytes);
    CScene scene;
    Headless(scene);
    ASSERT_TRUE(scene.Open(temp / "data\\LEVEL.scene", false));
    EXPECT_EQ(scene.GetName(), "LEVEL");
    EXPECT_EQ(scene.GetFolder(), temp / "data\\");
    EXPECT_EQ(scene.GetEntityCount(), 16);
    // The file is replaced under its own spelling, not doubled.
    Locator(scene, "Added", {0, 0, 0});
    ASSERT_TRUE(scene.Save(temp / "DATA\\level.SCENE"));
    int iFiles = 0;
    for (const auto& entry : std::filesystem::directory_iterator(temp / "Data"))
    {
        (void)entry;
        ++iFiles;
    }
    EXPECT_EQ(iFiles, 1);
    ASSERT_TRUE(scene.Open(temp / "Data/Level.scene", false));
    EXPECT_EQ(scene.GetEntityCount(), 17);
}

TEST(Scene, TheManagerOpensScenesByNameAndTellsTheScript)
{
    CTempFolder temp;
    {
        CScene scene;
        Headless(scene);
        Locator(scene, "A", {0, 0, 0});
        ASSERT_TRUE(scene.Save(temp / "town.scene"));
    }
    GLib::Script::CLuaScript script;
    ASSERT_TRUE(script.RunString("calls = '' function OnSceneLoad(name) calls = calls .. name .. ';' end"));
    CSceneManager manager;
    manager.SetServices(nullptr, nullptr, nullptr, nullptr, nullptr, true);
    EXPECT_EQ(manager.LoadStartScene(false), nullptr);
    manager.SetStartScene("town", temp.Path());
    manager.SetScript(&script);
    CScene* pScene = manager.LoadStartScene(false);
    ASSERT_NE(pScene, nullptr);
    EXPECT_EQ(pScene->GetEntityCount(), 1);
    EXPECT_EQ(pScene->GetManager(), &manager);
    EXPECT_EQ(pScene->GetOpenName(), "town");
    GUtString calls;
    ASSERT_TRUE(script.GetGlobalString("calls", calls));
    EXPECT_STREQ(calls.c_str(), "town;");
    EXPECT_EQ(manager.LoadScene("nowhere", temp.Path(), false), nullptr);
    EXPECT_NE(manager.FindScene("nowhere"), nullptr);
    ASSERT_TRUE(script.GetGlobalString("calls", calls));
    EXPECT_STREQ(calls.c_str(), "town;");
    EXPECT_EQ(manager.GetSceneCount(), 2);
    EXPECT_TRUE(manager.UnloadScene("nowhere"));
    EXPECT_FALSE(manager.UnloadScene("nowhere"));
    EXPECT_EQ(CSceneManager::OnSceneLoadText("a\"b\\c"), "OnSceneLoad(\"a\\\"b\\\\c\")");
}
