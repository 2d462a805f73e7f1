// CScene::Import: a `.scene` or `.dae` file comes in as one group; anything that fails leaves
// the scene as it was.
#include "scene/Scene.h"
#include "scene/SceneEnvironmentEntity.h"
#include "scene/SceneGroupEntity.h"
#include "scene/SceneLightEntity.h"
#include "scene/SceneMarkerEntities.h"
#include "scene/SceneMeshEntities.h"
#include "scene/tests/SceneRecords.h"
#include "scene/tests/SceneTestUtil.h"

#include <gtest/gtest.h>

#include <filesystem>

using namespace Ovrel;
using namespace SceneTest;

namespace
{
// Two locators that were in the scene before.
void Prepare(CScene& scene)
{
    Headless(scene);
    scene.CreateEntity(ENTITY_LOCATOR, 0)->SetName("Old1");
    scene.CreateEntity(ENTITY_LOCATOR, 0)->SetName("Old2");
}

std::vector<std::string> MemberNames(const CScene& scene, const CGroupSceneEntity& group)
{
    std::vector<std::string> names;
    for (int32_t iId : group.GetMembers())
    {
        CSceneEntity* pMember = scene.FindById(iId);
        names.push_back(pMember ? pMember->GetName() : "?");
        EXPECT_TRUE(pMember && pMember->GetGroupId() == group.GetId());
    }
    return names;
}

class CReloadLog final : public ISceneResourceScopes
{
public:
    void BeginScopes(const CSceneFolders&) override { calls.push_back("begin"); }
    void EndScopes() override { calls.push_back("end"); }
    void SetReloadExisting(bool b) override { calls.push_back(b ? "reload on" : "reload off"); }
    std::vector<std::string> calls;
};

const char* const PROPS_DAE = R"(<?xml version="1.0"?>
<COLLADA xmlns="http://www.collada.org/2005/11/COLLADASchema" version="1.4.1">
  <asset><up_axis>Z_UP</up_axis></asset>
  <library_lights>
    <light id="lamp-light"><technique_common><spot><color>1 0.5 0.25</color>
      <falloff_angle>35</falloff_angle></spot></technique_common>
      <extra><technique profile="MAX3D"><intensity>-2</intensity><outer_cone>50</outer_cone>
      <far_attenuation_end>800</far_attenuation_end></technique></extra></light>
    <light id="sky-light"><technique_common><ambient><color>1 1 1</color></ambient></technique_common></light>
  </library_lights>
  <library_cameras><camera id="cam-camera"><optics><technique_common><perspective>
    <yfov>40</yfov><znear>1</znear><zfar>9000</zfar></perspective></technique_common></optics></camera>
  </library_cameras>
  <library_geometries><geometry id="quad"><mesh>
    <source id="p"><float_array id="pa" count="12">0 0 0 10 0 0 10 0 5 0 0 5</float_array>
      <technique_common><accessor source="#pa" count="4" stride="3"/></technique_common></source>
    <vertices id="v"><input semantic="POSITION" source="#p"/></vertices>
    <triangles count="2"><input semantic="VERTEX" source="#v" offset="0"/><p>0 1 2 0 2 3</p></triangles>
  </mesh></geometry></library_geometries>
  <library_visual_scenes><visual_scene id="s">
    <node id="Tree" name="Tree"><instance_geometry url="#quad"/></node>
    <node id="Rock--LOD1" name="Rock--LOD1"><translate>5 0 0</translate><instance_geometry url="#quad"/></node>
    <node id="Rock--LOD0" name="Rock--LOD0"><translate>1 2 3</translate><instance_geometry url="#quad"/></node>
    <node id="Rock--col" name="Rock--col"><instance_geometry url="#quad"/></node>
    <node id="Lamp" name="Lamp"><translate>0 0 100</translate><instance_light url="#lamp-light"/></node>
    <node id="Sky" name="Sky"><instance_light url="#sky-light"/></node>
    <node id="Cam" name="Cam"><instance_camera url="#cam-camera"/></node>
    <node id="Bone" name="Bone" type="JOINT"><instance_geometry url="#quad"/></node>
  </visual_scene></library_visual_scenes>
  <scene><instance_visual_scene url="#s"/></scene>
</COLLADA>)";
} // namespace

TEST(SceneImport, ASceneFileComesInAsOneGroupWithFreshIds)
{
    CTempFolder temp;
    WriteBytes(temp / "full.scene", BuildFullScene(false).bytes);
    CScene scene;
    Prepare(scene);
    CGroupSceneEntity* pGroup = scene.Import(temp / "full.scene", ENTITY_ALL, false);
    ASSERT_NE(pGroup, nullptr);
    EXPECT_EQ(pGroup->GetName(), "fullGroup");
    // Sixteen records took ids 3 to 18; the file's own group is dissolved into the new one.
    EXPECT_EQ(pGroup->GetId(), 19);
    EXPECT_EQ(scene.GetNextEntityId(), 19);
    EXPECT_EQ(scene.GetEntityCount(), 2 + 15 + 1);
    EXPECT_EQ(MemberNames(scene, *pGroup),
              (std::vector<std::string>{"Plain", "Rock", "Guard", "Flag", "PointLight01", "Torch", "Wind",
                                        "Env", "Wall", "Door", "Hall", "Spawn", "Gate", "Intro", "Npc"}));
    EXPECT_EQ(scene.FindByName("Rock", ENTITY_ALL)->GetId(), 4);
    EXPECT_EQ(scene.FindByName("Set", ENTITY_ALL), nullptr);
    // Lightmaps belong to the scene imported into.
    EXPECT_TRUE(scene.GetLightMaps().IsEmpty());
    ASSERT_NE(scene.GetEnvironment(), nullptr);
    EXPECT_EQ(scene.GetEnvironment()->GetName(), "Env");
    EXPECT_EQ(scene.GetUpdateList().size(), 3u);
}

TEST(SceneImport, TheMaskChoosesWhatStaysAndTheEnvironmentInForceIsKept)
{
    CTempFolder temp;
    WriteBytes(temp / "full.scene", BuildFullScene(false).bytes);
    CScene scene;
    Prepare(scene);
    CSceneEntity* pOwn = scene.CreateEnvironment("Own");
    CGroupSceneEntity* pGroup =
        scene.Import(temp / "full.scene", ENTITY_LOCATOR | ENTITY_ENVIRONMENT | ENTITY_GROUP, false);
    ASSERT_NE(pGroup, nullptr);
    EXPECT_EQ(MemberNames(scene, *pGroup), (std::vector<std::string>{"Env", "Spawn"}));
    EXPECT_EQ(scene.GetEntityCount(), 3 + 2 + 1);
    EXPECT_EQ(scene.GetEnvironment(), pOwn);
    EXPECT_TRUE(scene.GetUpdateList().empty());
}

TEST(SceneImport, AFailedImportLeavesTheSceneAsItWas)
{
    CTempFolder temp;
    std::vector<uint8_t> bytes = BuildFullScene(false).bytes;
    WriteBytes(temp / "full.scene", bytes);
    bytes.resize(bytes.size() - 40);
    WriteBytes(temp / "cut.scene", bytes);
    WriteText(temp / "broken.dae", "<COLLADA><library_geometries>");
    WriteText(temp / "notes.txt", "hello");
    CScene scene;
    Prepare(scene);
    for (const char* pcFile : {"cut.scene", "missing.scene", "broken.dae", "notes.txt", "full.SCENE2"})
    {
        EXPECT_EQ(scene.Import(temp / pcFile, ENTITY_ALL, false), nullptr) << pcFile;
        EXPECT_EQ(scene.GetEntityCount(), 2) << pcFile;
        EXPECT_EQ(scene.GetNextEntityId(), 2) << pcFile;
        EXPECT_EQ(scene.GetEnvironment(), nullptr) << pcFile;
    }
    // Nothing of the mask in the file: nothing comes in.
    EXPECT_EQ(scene.Import(temp / "full.scene", 0x20000000u, false), nullptr);
    EXPECT_EQ(scene.GetEntityCount(), 2);
    EXPECT_EQ(scene.GetNextEntityId(), 2);
    EXPECT_TRUE(scene.GetPending().empty());
    EXPECT_TRUE(scene.GetUpdateList().empty());
    // The extension is not case-sensitive.
    EXPECT_NE(scene.Import(temp / "full.scene", ENTITY_ALL, false), nullptr);
    std::filesystem::rename(temp / "full.scene", temp / "FULL.Scene");
    EXPECT_NE(scene.Import(temp / "FULL.Scene", ENTITY_ALL, false), nullptr);
}

TEST(SceneImport, ForceReloadIsOnOnlyDuringTheRead)
{
    CTempFolder temp;
    WriteBytes(temp / "full.scene", BuildFullScene(false).bytes);
    CReloadLog reload;
    CScene scene;
    Prepare(scene);
    scene.SetResourceScopes(&reload);
    ASSERT_NE(scene.Import(temp / "full.scene", ENTITY_ALL, true), nullptr);
    ASSERT_NE(scene.Import(temp / "full.scene", ENTITY_ALL, false), nullptr);
    EXPECT_EQ(scene.Import(temp / "gone.scene", ENTITY_ALL, true), nullptr);
    EXPECT_EQ(reload.calls, (std::vector<std::string>{"reload on", "reload off", "reload on", "reload off"}));
}

TEST(SceneImport, AColladaFileGivesMeshesLightsAndCamerasAsAGroup)
{
    CTempFolder temp;
    WriteText(temp / "props.dae", PROPS_DAE);
    CScene scene;
    Prepare(scene);
    CGroupSceneEntity* pGroup = scene.Import(temp / "props.dae", ENTITY_ALL, false);
    ASSERT_NE(pGroup, nullptr);
    EXPECT_EQ(pGroup->GetName(), "propsGroup");
    // Lights and cameras in document order, then one mesh per model by name; levels of
    // detail stand for one model, collision shapes, ambient lights and bones bring nothing.
    EXPECT_EQ(MemberNames(scene, *pGroup), (std::vector<std::string>{"Lamp", "Cam", "Rock", "Tree"}));
    auto* pRock = static_cast<CStaticMeshSceneEntity*>(scene.FindByName("Rock", ENTITY_STATIC_MESH));
    ASSERT_NE(pRock, nullptr);
    EXPECT_EQ(pRock->GetMeshFile(), temp / "props.dae#Rock");
    CMatrix44 mTransform;
    pRock->GetTransform(mTransform);
    EXPECT_EQ(mTransform.GetTranslation(), (CVec3{1, 2, 3}));
    auto* pLamp = static_cast<CLightSceneEntity*>(scene.FindByName("Lamp", ENTITY_LIGHT));
    ASSERT_NE(pLamp, nullptr);
    const Kestrin::Ext::CRenderLightSettings& light = pLamp->GetSettings();
    EXPECT_EQ(light.iLightType, 1);
    EXPECT_FLOAT_EQ(light.fIntensity, 2.0f);
    EXPECT_FLOAT_EQ(light.fRange, 800.0f);
    EXPECT_FLOAT_EQ(light.fConeInner, 35.0f);
    EXPECT_FLOAT_EQ(light.fConeOuter, 50.0f);
    EXPECT_EQ(light.vColor, (CVec3{1.0f, 0.5f, 0.25f}));
    pLamp->GetTransform(mTransform);
    EXPECT_EQ(mTransform.GetTranslation(), (CVec3{0, 0, 100}));
    auto* pCam = static_cast<CCameraSceneEntity*>(scene.FindByName("Cam", ENTITY_CAMERA));
    ASSERT_NE(pCam, nullptr);
    EXPECT_FLOAT_EQ(pCam->GetFov(), 40.0f);
    EXPECT_FLOAT_EQ(pCam->GetNear(), 1.0f);
    EXPECT_FLOAT_EQ(pCam->GetFar(), 9000.0f);

    CScene meshesOnly;
    Prepare(meshesOnly);
    pGroup = meshesOnly.Import(temp / "props.dae", ENTITY_STATIC_MESH, false);
    ASSERT_NE(pGroup, nullptr);
    EXPECT_EQ(MemberNames(meshesOnly, *pGroup), (std::vector<std::string>{"Rock", "Tree"}));
    EXPECT_EQ(meshesOnly.GetEntityCount(), 2 + 2 + 1);
}
