// The `.prop` side file.
#include "scene/SceneContent.h"
#include "scene/SceneMeshEntities.h"
#include "scene/ScenePropFile.h"
#include "scene/tests/SceneFakes.h"
#include "scene/tests/SceneRecords.h"
#include "scene/tests/SceneTestUtil.h"

#include <gtest/gtest.h>

using namespace Ovrel;
using namespace SceneTest;

namespace
{
bool ReadProps(const std::vector<uint8_t>& bytes, CScenePropFile& props)
{
    Kestrin::Utility::CMemoryStream stream(bytes.data(), static_cast<int32_t>(bytes.size()));
    return props.Read(stream);
}

std::vector<uint8_t> WriteProps(const CScenePropFile& props)
{
    Kestrin::Utility::CMemoryWriteStream out;
    EXPECT_TRUE(props.Write(out));
    return std::vector<uint8_t>(out.GetData(), out.GetData() + out.GetSize());
}
} // namespace

TEST(ScenePropFile, ReadsAndResavesByteForByteInBothByteOrders)
{
    for (bool bBig : {false, true})
    {
        std::vector<uint8_t> bytes = BuildPropFile(bBig);
        KeepTestFile(bBig ? "props_big" : "props_little", bytes, true, ".prop");
        CScenePropFile props;
        ASSERT_TRUE(ReadProps(bytes, props));
        EXPECT_EQ(props.m_bSwapBytes, bBig);
        ASSERT_EQ(props.meshes.size(), 2u);
        EXPECT_EQ(props.meshes[1].strMeshName, "model\\tree");
        EXPECT_EQ(props.meshes[1].settings.fLodRange, 51.0f);
        EXPECT_EQ(props.meshes[1].settings.fVisibleDistance, 1000.0f);
        EXPECT_EQ(props.meshes[1].settings.fDynamicShadowDistance, 60.0f);
        EXPECT_EQ(props.meshes[1].settings.fAlwaysVisibleDistance, 5.0f);
        EXPECT_EQ(props.meshes[1].settings.uInvisibleCastShadow, 1);
        EXPECT_EQ(props.meshes[1].settings.uLightMapCastShadow, 1);
        EXPECT_EQ(props.meshes[1].settings.lodDistances, (std::vector<float>{0.0f, 0.25f, 0.5f}));
        EXPECT_EQ(WriteProps(props), bytes);
    }
}

TEST(ScenePropFile, BadFilesFailAndKeepTheRecords)
{
    std::vector<uint8_t> good = BuildPropFile(false);
    CScenePropFile props;
    ASSERT_TRUE(ReadProps(good, props));
    std::vector<uint8_t> wrongMagic = good;
    wrongMagic[0] = 'X';
    std::vector<uint8_t> newer = good;
    newer[4] = 101;
    std::vector<uint8_t> wrongTag = good;
    wrongTag[12] = 'X';
    std::vector<uint8_t> newerMesh = good;
    newerMesh[16] = 101;
    std::vector<uint8_t> hugeCount = good;
    hugeCount[8] = 0xFF;
    hugeCount[9] = 0xFF;
    hugeCount[10] = 0xFF;
    hugeCount[11] = 0x7F;
    for (const std::vector<uint8_t>& bad : {wrongMagic, newer, wrongTag, newerMesh, hugeCount})
    {
        EXPECT_FALSE(ReadProps(bad, props));
        EXPECT_EQ(props.meshes.size(), 2u);
    }
    for (size_t iCut = 0; iCut < good.size(); ++iCut)
    {
        std::vector<uint8_t> cut(good.begin(), good.begin() + static_cast<std::ptrdiff_t>(iCut));
        EXPECT_FALSE(ReadProps(cut, props)) << iCut;
    }
    EXPECT_EQ(WriteProps(props), good);
}

TEST(ScenePropFile, CollectsOneRecordPerDistinctMeshAndAppliesThem)
{
    CFakeRenderWorld world;
    CSceneContent scene;
    scene.SetServices(&world, nullptr, nullptr, nullptr, nullptr, false);
    for (const char* pcMesh : {"rock", "tree", "rock"})
    {
        auto* pMesh = static_cast<CStaticMeshSceneEntity*>(scene.CreateEntity(ENTITY_STATIC_MESH, 0));
        pMesh->CreateRenderObject(pcMesh, false);
    }
    world.meshes[1]->mesh.fLodRange = 80.0f;
    CScenePropFile props;
    props.meshes.push_back({"gone", {}});
    props.Collect(scene);
    ASSERT_EQ(props.meshes.size(), 2u);
    EXPECT_EQ(props.meshes[0].strMeshName, "rock");
    EXPECT_EQ(props.meshes[1].settings.fLodRange, 80.0f);
    props.meshes[0].settings.fVisibleDistance = 1234.0f;
    props.Apply(scene);
    EXPECT_EQ(world.meshes[0]->mesh.fVisibleDistance, 1234.0f);
    EXPECT_EQ(world.meshes[2]->mesh.fVisibleDistance, 1234.0f);
    // Without objects nothing tells which records are used: they all stay.
    CSceneContent headless;
    headless.SetServices(nullptr, nullptr, nullptr, nullptr, nullptr, true);
    headless.CreateEntity(ENTITY_STATIC_MESH, 0);
    props.Collect(headless);
    EXPECT_EQ(props.meshes.size(), 2u);
}
