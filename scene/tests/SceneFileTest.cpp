// The `.scene` file: files built byte by byte from the format's tables, in both byte orders
// and every accepted version, read with the right values and written back byte for byte.
#include "scene/SceneEnvironmentEntity.h"
#include "scene/SceneGroupEntity.h"
#include "scene/SceneLightEntity.h"
#include "scene/SceneMeshEntities.h"
#include "scene/tests/SceneRecords.h"
#include "scene/tests/SceneTestUtil.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cstring>
#include <filesystem>
#include <memory>

using namespace Ovrel;
using namespace SceneTest;

namespace
{
CSceneContent* NewHeadlessScene()
{
    CSceneContent* pScene = new CSceneContent;
    pScene->SetServices(nullptr, nullptr, nullptr, nullptr, nullptr, true);
    return pScene;
}
} // namespace

TEST(SceneFile, FullSceneLoadsEveryFieldOfEveryKindInBothByteOrders)
{
    for (bool bBig : {false, true})
    {
        SCOPED_TRACE(bBig ? "big-endian" : "little-endian");
        CFullScene full = BuildFullScene(bBig);
        KeepTestFile(bBig ? "full_big" : "full_little", full.bytes, true);
        CSceneContent scene;
        CSceneReadError error;
        ASSERT_TRUE(ReadScene(full.bytes, scene, &error)) << error.strText;
        EXPECT_EQ(scene.GetSwapBytes(), bBig);
        EXPECT_EQ(scene.GetFileVersion(), 102);
        ASSERT_EQ(scene.GetEntityCount(), 16);
        for (int32_t i = 0; i < 16; ++i)
        {
            CSceneEntity* pEntity = scene.GetEntity(i);
            EXPECT_EQ(pEntity->GetType(), full.types[static_cast<size_t>(i)]);
            EXPECT_EQ(CompareFields(full.entities[static_cast<size_t>(i)], Describe(*pEntity)), "")
                << "entity " << i;
        }
        EXPECT_EQ(scene.GetBoundingBox().vMin, (CVec3{-1000.0f, -2000.0f, -300.0f}));
        EXPECT_EQ(scene.GetBoundingBox().vMax, (CVec3{4000.0f, 5000.0f, 600.0f}));
        const CAtlasTable& lightMaps = scene.GetLightMaps();
        ASSERT_EQ(lightMaps.maps.size(), 2u);
        EXPECT_EQ(lightMaps.maps[1].strName, "lightmap\\lm_001.dds");
        ASSERT_EQ(lightMaps.entries.size(), 2u);
        EXPECT_EQ(lightMaps.entries[1].iEntityId, 3);
        EXPECT_EQ(lightMaps.entries[1].iMapIndex, 1);
        EXPECT_EQ(lightMaps.entries[1].vOffset, (CVec2{0.25f, 0.5f}));
        EXPECT_EQ(lightMaps.entries[1].vScale, (CVec2{0.25f, 0.5f}));
        ASSERT_EQ(scene.GetColorLightMaps().maps.size(), 1u);
        EXPECT_EQ(scene.GetColorLightMaps().maps[0].strName, "clm_000.dds");
        EXPECT_EQ(scene.GetEnvironment(), scene.GetEntity(7));
        EXPECT_EQ(scene.GetNextEntityId(), 17);
    }
}

TEST(SceneFile, FullSceneResavesByteForByteInBothByteOrders)
{
    for (bool bBig : {false, true})
    {
        CFullScene full = BuildFullScene(bBig);
        CSceneContent scene;
        ASSERT_TRUE(ReadScene(full.bytes, scene));
        EXPECT_EQ(WriteScene(scene), full.bytes) << (bBig ? "big" : "little");
    }
}

TEST(SceneFile, TheMagicSpellsSCENInTheFilesOwnOrder)
{
    CFullScene little = BuildFullScene(false);
    CFullScene big = BuildFullScene(true);
    EXPECT_EQ(memcmp(little.bytes.data(), "NECS", 4), 0);
    EXPECT_EQ(memcmp(big.bytes.data(), "SCEN", 4), 0);
    // BASE in a little-endian file is "ESAB".
    const char* pcBase = "ESAB";
    EXPECT_NE(std::search(little.bytes.begin(), little.bytes.end(), pcBase, pcBase + 4), little.bytes.end());
}

TEST(SceneFile, AFailedReadLeavesTheSceneAsItWas)
{
    CFullScene full = BuildFullScene(false);
    CSceneContent scene;
    ASSERT_TRUE(ReadScene(full.bytes, scene));
    std::vector<std::vector<uint8_t>> bad;
    bad.push_back({'X', 'E', 'C', 'S', 102, 0, 0, 0});
    std::vector<uint8_t> newer = full.bytes;
    newer[4] = 103;
    bad.push_back(newer);
    bad.push_back({});
    for (const std::vector<uint8_t>& bytes : bad)
    {
        CSceneReadError error;
        EXPECT_FALSE(ReadScene(bytes, scene, &error));
        EXPECT_FALSE(error.strText.empty());
        EXPECT_EQ(scene.GetEntityCount(), 16);
        EXPECT_EQ(WriteScene(scene), full.bytes);
    }
}

TEST(SceneFile, EveryCutOfTheFileFailsAndChangesNothing)
{
    for (bool bBig : {false, true})
    {
        CFullScene full = BuildFullScene(bBig);
        CSceneBytes small(false);
        WriteHeader(small, 102, {}, {}, true);
        small.RawI32(0);
        CSceneContent scene;
        ASSERT_TRUE(ReadScene(small.data, scene));
        for (size_t iCut = 0; iCut < full.bytes.size(); ++iCut)
        {
            std::vector<uint8_t> cut(full.bytes.begin(),
                                     full.bytes.begin() + static_cast<std::ptrdiff_t>(iCut));
            ASSERT_FALSE(ReadScene(cut, scene)) << "cut at " << iCut;
        }
        EXPECT_EQ(scene.GetEntityCount(), 0);
        EXPECT_EQ(WriteScene(scene), small.data);
    }
}

TEST(SceneFile, HeaderVersionsBelow102ReadWithoutTheLaterTables)
{
    for (int32_t iVersion : {100, 101})
    {
        CSceneBytes b(false);
        WriteHeader(b, iVersion, {"lm.dds"}, {"clm.dds"});
        b.RawI32(1).RawU32(ENTITY_STATIC_MESH);
        WriteBase(b, "Rock", 4, 0, 0);
        WriteMesh(b, 108, "rock.mesh");
        KeepTestFile("header_" + std::to_string(iVersion), b.data, false);
        CSceneContent scene;
        ASSERT_TRUE(ReadScene(b.data, scene));
        EXPECT_EQ(scene.GetFileVersion(), iVersion);
        EXPECT_EQ(scene.GetLightMaps().maps.size(), iVersion >= 101 ? 1u : 0u);
        EXPECT_TRUE(scene.GetColorLightMaps().IsEmpty());
        // A save writes version 102, and saving that again changes nothing.
        std::vector<uint8_t> saved = WriteScene(scene);
        EXPECT_EQ(saved[4], 102);
        CSceneContent again;
        ASSERT_TRUE(ReadScene(saved, again));
        EXPECT_EQ(WriteScene(again), saved);
    }
}

TEST(SceneFile, AnEmptySceneKeepsItsBoxAndTables)
{
    CSceneBytes b(true);
    WriteHeader(b, 102, {"a.dds", "b.dds"}, {"c.dds"}, true);
    b.RawI32(0);
    KeepTestFile("empty_big", b.data, true);
    CSceneContent scene;
    ASSERT_TRUE(ReadScene(b.data, scene));
    EXPECT_EQ(scene.GetEntityCount(), 0);
    EXPECT_EQ(scene.GetLightMaps().maps.size(), 2u);
    EXPECT_EQ(scene.GetColorLightMaps().entries.size(), 1u);
    EXPECT_TRUE(scene.GetBoundingBox().IsEmpty());
    EXPECT_EQ(WriteScene(scene), b.data);
}

namespace
{
struct CBlockCase
{
    uint32_t uType;
    const char* pcTag;
    int32_t iRejected;
    bool bKeepsGoing; // MESH and SKIN: the entity stays empty and the read goes on
};

const CBlockCase g_aBlockCases[] = {
    {ENTITY_STATIC_MESH, "MESH", 109, true},  {ENTITY_SKINNED_MESH, "SKIN", 106, true},
    {ENTITY_CLOTH, "CLOT", 101, false},       {ENTITY_LIGHT, "LIT ", 104, false},
    {ENTITY_FX, "FX  ", 104, false},          {ENTITY_SOUND, "SND ", 102, false},
    {ENTITY_ENVIRONMENT, "ENVI", 111, false}, {ENTITY_OCCLUDER, "OCC ", 101, false},
    {ENTITY_PORTAL, "PORT", 101, false},      {ENTITY_ZONE, "ZONE", 102, false},
    {ENTITY_LOCATOR, "LOCA", 103, false},     {ENTITY_TRIGGER, "TRIG", 102, false},
    {ENTITY_CAMERA, "CAME", 101, false},      {ENTITY_GAME_OBJECT, "GAME", 103, false},
    {ENTITY_GROUP, "GROU", 102, false},
};

std::vector<uint8_t> RecordWithBlockHeader(const char* pcTag, int32_t iVersion, int32_t iBaseVersion = 102)
{
    CSceneBytes b(false);
    WriteBase(b, "Bad", 7, 0, 0, iBaseVersion);
    b.Tag(pcTag).RawI32(iVersion);
    return b.data;
}
} // namespace

TEST(SceneFile, EveryBlockRefusesTheVersionAboveItsOwn)
{
    for (const CBlockCase& c : g_aBlockCases)
    {
        SCOPED_TRACE(c.pcTag);
        std::vector<uint8_t> file =
            SingleRecordFile(false, c.uType, RecordWithBlockHeader(c.pcTag, c.iRejected));
        CSceneContent scene;
        bool bRead = ReadScene(file, scene);
        EXPECT_EQ(bRead, c.bKeepsGoing);
        if (bRead)
        {
            ASSERT_EQ(scene.GetEntityCount(), 1);
            EXPECT_EQ(scene.GetEntity(0)->GetName(), "Bad");
            EXPECT_EQ(scene.GetEntity(0)->GetResourceName(), "");
        }
        // One below is accepted as far as the header goes (the record is then cut short).
        std::vector<uint8_t> accepted =
            SingleRecordFile(false, c.uType, RecordWithBlockHeader(c.pcTag, c.iRejected - 1));
        CSceneContent other;
        EXPECT_FALSE(ReadScene(accepted, other));
    }
    std::vector<uint8_t> newBase =
        SingleRecordFile(false, ENTITY_PLAIN, RecordWithBlockHeader("LOCA", 100, 103));
    CSceneContent scene;
    EXPECT_FALSE(ReadScene(newBase, scene));
}

TEST(SceneFile, EveryBlockRefusesAWrongTag)
{
    for (const CBlockCase& c : g_aBlockCases)
    {
        SCOPED_TRACE(c.pcTag);
        std::vector<uint8_t> file = SingleRecordFile(false, c.uType, RecordWithBlockHeader("XXXX", 100));
        CSceneContent scene;
        EXPECT_EQ(ReadScene(file, scene), c.bKeepsGoing);
    }
    CSceneBytes b(false);
    b.Tag("BASX").RawI32(102);
    CSceneContent scene;
    EXPECT_FALSE(ReadScene(SingleRecordFile(false, ENTITY_PLAIN, b.data), scene));
}

TEST(SceneFile, AnUnknownTypeCodeFailsTheRead)
{
    CSceneBytes b(false);
    WriteBase(b, "Odd", 1, 0, 0);
    CSceneContent scene;
    CSceneReadError error;
    EXPECT_FALSE(ReadScene(SingleRecordFile(false, 3, b.data), scene, &error));
    EXPECT_EQ(error.iEntityIndex, 0);
    EXPECT_EQ(error.uType, 3u);
}

namespace
{
// Reads a single record of the given version; returns what it describes as, and checks that
// a save of the upgraded record reads back the same.
Expected ReadOldRecord(bool bBig, uint32_t uType, CSceneBytes& b, const std::string& strName)
{
    Expected expected = b.TakeExpected();
    std::vector<uint8_t> file = SingleRecordFile(bBig, uType, b.data);
    KeepTestFile(strName, file, false);
    CSceneContent scene;
    CSceneReadError error;
    EXPECT_TRUE(ReadScene(file, scene, &error)) << strName << ": " << error.strText;
    if (scene.GetEntityCount() != 1)
    {
        return {};
    }
    Expected actual = Describe(*scene.GetEntity(0));
    EXPECT_EQ(CompareFields(expected, actual), "") << strName;
    CSceneContent again;
    EXPECT_TRUE(ReadScene(WriteScene(scene), again)) << strName;
    EXPECT_EQ(again.GetEntityCount(), 1);
    if (again.GetEntityCount() == 1)
    {
        EXPECT_EQ(Describe(*again.GetEntity(0)), actual) << strName;
    }
    return actual;
}
} // namespace

TEST(SceneFile, OlderMeshVersionsReadTheirFieldsAndUpgradeCharacterShapes)
{
    for (int32_t iVersion = 100; iVersion <= 108; ++iVersion)
    {
        for (bool bBig : {false, true})
        {
            CSceneBytes b(bBig);
            WriteBase(b, "Rock", 3, 0, 1);
            WriteMesh(b, iVersion, "rock.mesh", {{0x1, 2}, {0x21, 3}, {0x40, 4}});
            std::string strName = "mesh_" + std::to_string(iVersion) + (bBig ? "_big" : "");
            Expected actual = ReadOldRecord(bBig, ENTITY_STATIC_MESH, b, strName);
            if (iVersion < 101)
            {
                EXPECT_EQ(actual["lightMapIndex"], "-1");
                EXPECT_EQ(actual["inShadow"], "0");
            }
            if (iVersion < 106)
            {
                EXPECT_EQ(actual["colorLightMapIndex"], "-1");
            }
            if (iVersion >= 102)
            {
                // Below 107 the character bit brings the attack bit along.
                EXPECT_EQ(actual["shapes[0].flags"], iVersion < 107 ? "257" : "1");
                EXPECT_EQ(actual["shapes[1].flags"], iVersion < 107 ? "289" : "33");
                EXPECT_EQ(actual["shapes[2].flags"], "64");
            }
            else
            {
                EXPECT_EQ(actual["shapeCount"], "0");
            }
            if (iVersion < 105)
            {
                EXPECT_EQ(actual["dColor.0"], "1");
            }
        }
    }
}

TEST(SceneFile, AMeshWithoutMeshFileHasNoRenderBlockButKeepsItsCollision)
{
    CSceneBytes b(false);
    WriteBase(b, "Blocker", 2, 0, 0);
    WriteMesh(b, 108, "", {{0x23, 1}});
    Expected expected = b.TakeExpected();
    EXPECT_EQ(expected.count("visible"), 0u);
    std::vector<uint8_t> file = SingleRecordFile(false, ENTITY_STATIC_MESH, b.data);
    CSceneContent scene;
    ASSERT_TRUE(ReadScene(file, scene));
    auto* pMesh = static_cast<CStaticMeshSceneEntity*>(scene.GetEntity(0));
    EXPECT_EQ(CompareFields(expected, Describe(*pMesh)), "");
    EXPECT_EQ(pMesh->GetCollisionFile(), "rock.col");
    ASSERT_EQ(pMesh->GetShapes().size(), 1u);
    EXPECT_EQ(pMesh->GetShapes()[0].uFlags, 0x23u);
    // The scene cannot tell the box of a mesh it did not load, so it keeps the file's.
    KeepTestFile("mesh_no_file", file, true);
    EXPECT_EQ(WriteScene(scene), file);
}

TEST(SceneFile, OlderEnvironmentsCopyTheirAmbientAndSkyValues)
{
    for (int32_t iVersion = 100; iVersion <= 110; ++iVersion)
    {
        CSceneBytes b(false);
        WriteBase(b, "Env", 1, 0, 0);
        WriteEnvironment(b, iVersion);
        Expected actual = ReadOldRecord(false, ENTITY_ENVIRONMENT, b, "envi_" + std::to_string(iVersion));
        if (iVersion < 108)
        {
            for (int i = 0; i < 3; ++i)
            {
                std::string c = "." + std::to_string(i);
                EXPECT_EQ(actual["Char1" + c], actual["Mesh1" + c]);
                EXPECT_EQ(actual["Fx1" + c], actual["Mesh1" + c]);
                EXPECT_EQ(actual["Char2" + c], actual["Mesh2" + c]);
                EXPECT_EQ(actual["Fx2" + c], actual["Mesh2" + c]);
            }
        }
        if (iVersion < 109)
        {
            EXPECT_EQ(actual["skyDistance2"], actual["skyDistance1"]);
            EXPECT_EQ(actual["skyPower"], "1");
        }
    }
}

TEST(SceneFile, OlderVersionsOfEveryOtherBlockRead)
{
    struct CCase
    {
        uint32_t uType;
        const char* pcName;
        int32_t iFirst, iLast;
        void (*pfnWrite)(CSceneBytes&, int32_t);
    };
    const CCase aCases[] = {
        {ENTITY_SKINNED_MESH, "skin", 100, 105,
         [](CSceneBytes& b, int32_t v) { WriteSkin(b, v, "guard.cconfig"); }},
        {ENTITY_LIGHT, "light", 100, 103, [](CSceneBytes& b, int32_t v) { WriteLight(b, v, true); }},
        {ENTITY_FX, "fx", 100, 103, [](CSceneBytes& b, int32_t v) { WriteFx(b, v); }},
        {ENTITY_SOUND, "sound", 100, 101, [](CSceneBytes& b, int32_t v) { WriteSound(b, v); }},
        {ENTITY_ZONE, "zone", 100, 101, [](CSceneBytes& b, int32_t v) { WriteZone(b, v, true); }},
        {ENTITY_LOCATOR, "locator", 100, 102, [](CSceneBytes& b, int32_t v) { WriteLocator(b, v); }},
        {ENTITY_TRIGGER, "trigger", 100, 101, [](CSceneBytes& b, int32_t v) { WriteTrigger(b, v); }},
        {ENTITY_GAME_OBJECT, "game", 100, 102, [](CSceneBytes& b, int32_t v) { WriteGameObject(b, v); }},
        {ENTITY_GROUP, "group", 100, 101,
         [](CSceneBytes& b, int32_t v) {
             WriteGroup(b, v, {8, 9});
         }},
    };
    for (const CCase& c : aCases)
    {
        for (int32_t iVersion = c.iFirst; iVersion <= c.iLast; ++iVersion)
        {
            for (int32_t iBase = 100; iBase <= 102; ++iBase)
            {
                CSceneBytes b(iBase == 101);
                WriteBase(b, c.pcName, 5, 0, 3, iBase);
                c.pfnWrite(b, iVersion);
                std::string strName =
                    std::string(c.pcName) + "_" + std::to_string(iVersion) + "_base" + std::to_string(iBase);
                Expected actual = ReadOldRecord(iBase == 101, c.uType, b, strName);
                if (iBase < 102)
                {
                    EXPECT_EQ(actual["layer"], "0") << strName;
                }
            }
        }
    }
    // Values a record of a lower version lacks stay as constructed.
    CSceneBytes b(false);
    WriteBase(b, "Old", 5, 0, 0);
    WriteGameObject(b, 100);
    Expected actual = ReadOldRecord(false, ENTITY_GAME_OBJECT, b, "game_100_defaults");
    EXPECT_EQ(actual["size.0"], "40");
    EXPECT_EQ(actual["color.2"], "1");
    EXPECT_EQ(actual["inShadow"], "0");
}

TEST(SceneFile, LightStoresLuminanceBiasTwiceAndTheLastOneWins)
{
    CSceneBytes b(false);
    WriteBase(b, "Lamp", 5, 0, 0);
    WriteLight(b, 103, true, {1.5f, 2.5f});
    std::vector<uint8_t> file = SingleRecordFile(false, ENTITY_LIGHT, b.data);
    CSceneContent scene;
    ASSERT_TRUE(ReadScene(file, scene));
    auto* pLight = static_cast<CLightSceneEntity*>(scene.GetEntity(0));
    EXPECT_EQ(pLight->GetSettings().fLuminanceBias, 2.5f);
    EXPECT_EQ(pLight->GetSettings().iLightType, -1); // 0xFF, sign-extended
    EXPECT_EQ(pLight->GetSettings().iBlend, 4);
    // The writer stores the value in both places. (The header's box becomes the light's
    // empty box: a light has none.)
    std::vector<uint8_t> saved = WriteScene(scene);
    ASSERT_EQ(saved.size(), file.size());
    size_t iDiffer = 0;
    for (size_t i = 32; i < saved.size(); ++i)
    {
        iDiffer += saved[i] != file[i];
    }
    EXPECT_GT(iDiffer, 0u);
    EXPECT_LE(iDiffer, 4u);
}

TEST(SceneFile, RecordsWithoutTheirOptionalPartResaveExactly)
{
    struct CCase
    {
        uint32_t uType;
        const char* pcName;
        void (*pfnWrite)(CSceneBytes&);
    };
    const CCase aCases[] = {
        {ENTITY_LIGHT, "light_nolight", [](CSceneBytes& b) { WriteLight(b, 103, false); }},
        {ENTITY_OCCLUDER, "occluder_noshape", [](CSceneBytes& b) { WriteOccluder(b, false); }},
        {ENTITY_PORTAL, "portal_noshape", [](CSceneBytes& b) { WritePortal(b, false); }},
        {ENTITY_ZONE, "zone_noshape", [](CSceneBytes& b) { WriteZone(b, 101, false); }},
        {ENTITY_SKINNED_MESH, "skin_noconfig", [](CSceneBytes& b) { WriteSkin(b, 105, ""); }},
        {ENTITY_CLOTH, "cloth_nomesh", [](CSceneBytes& b) { WriteCloth(b, ""); }},
    };
    for (const CCase& c : aCases)
    {
        for (bool bBig : {false, true})
        {
            CSceneBytes b(bBig);
            // A mesh first, so the scene keeps the file's box.
            b.RawU32(ENTITY_STATIC_MESH);
            WriteBase(b, "Rock", 1, 0, 0);
            WriteMesh(b, 108, "rock.mesh");
            b.TakeExpected();
            b.RawU32(c.uType);
            WriteBase(b, c.pcName, 2, 0, 0);
            c.pfnWrite(b);
            Expected expected = b.TakeExpected();
            CSceneBytes file(bBig);
            WriteHeader(file, 102, {}, {});
            file.RawI32(2);
            file.Append(b);
            KeepTestFile(std::string(c.pcName) + (bBig ? "_big" : ""), file.data, true);
            CSceneContent scene;
            ASSERT_TRUE(ReadScene(file.data, scene)) << c.pcName;
            EXPECT_EQ(CompareFields(expected, Describe(*scene.GetEntity(1))), "") << c.pcName;
            EXPECT_EQ(WriteScene(scene), file.data) << c.pcName;
        }
    }
}

TEST(SceneFile, CountsPastTheEndFailWithoutReadingOrAllocatingThem)
{
    auto Fails = [](const std::vector<uint8_t>& file)
    {
        CSceneContent scene;
        return !ReadScene(file, scene);
    };
    CSceneBytes entities(false);
    WriteHeader(entities, 102, {}, {});
    entities.RawI32(0x7FFFFFFF);
    EXPECT_TRUE(Fails(entities.data));
    for (int32_t iCount : {0x7FFFFFFF, -1})
    {
        CSceneBytes maps(false);
        maps.Tag("SCEN").RawI32(102).RawF32(0).RawF32(0).RawF32(0).RawF32(0).RawF32(0).RawF32(0).RawI32(
            iCount);
        EXPECT_TRUE(Fails(maps.data));
        CSceneBytes entries(false);
        entries.Tag("SCEN").RawI32(102).RawF32(0).RawF32(0).RawF32(0).RawF32(0).RawF32(0).RawF32(0);
        entries.RawI32(0).RawI32(iCount);
        EXPECT_TRUE(Fails(entries.data));
        CSceneBytes volume(false);
        WriteBase(volume, "Wall", 1, 0, 0);
        volume.Tag("OCC ").RawI32(100).Matrix("transform").RawU8(1).RawU8(1).RawI32(iCount);
        EXPECT_TRUE(Fails(SingleRecordFile(false, ENTITY_OCCLUDER, volume.data)));
        CSceneBytes group(false);
        WriteBase(group, "Set", 1, 0, 0);
        group.Tag("GROU").RawI32(101).Matrix("transform").RawU8(0).RawI32(iCount);
        EXPECT_TRUE(Fails(SingleRecordFile(false, ENTITY_GROUP, group.data)));
        CSceneBytes name(false);
        name.Tag("BASE").RawI32(102).RawI32(iCount);
        EXPECT_TRUE(Fails(SingleRecordFile(false, ENTITY_PLAIN, name.data)));
    }
}

TEST(SceneFile, IdsOfTheFileRaiseNextEntityId)
{
    CSceneBytes b(false);
    WriteHeader(b, 102, {}, {});
    b.RawI32(2);
    for (int32_t iId : {5, 9})
    {
        b.RawU32(ENTITY_LOCATOR);
        WriteBase(b, "L", iId, 0, 0);
        WriteLocator(b, 102);
    }
    CSceneContent scene;
    ASSERT_TRUE(ReadScene(b.data, scene));
    EXPECT_EQ(scene.GetNextEntityId(), 10);
    CSceneEntity* pNew = scene.CreateEntity(ENTITY_CAMERA, 0);
    ASSERT_NE(pNew, nullptr);
    EXPECT_EQ(pNew->GetId(), 11);
    EXPECT_EQ(scene.FindById(9), scene.GetEntity(1));
    EXPECT_EQ(scene.FindById(0), nullptr);
    EXPECT_EQ(scene.CreateEntity(0x80000000u, 0), nullptr);

    // The largest id wraps the counter; allocation starts again at 1.
    CSceneBytes last(false);
    WriteHeader(last, 102, {}, {});
    last.RawI32(1).RawU32(ENTITY_LOCATOR);
    WriteBase(last, "L", INT32_MAX, 0, 0);
    WriteLocator(last, 102);
    ASSERT_TRUE(ReadScene(last.data, scene));
    EXPECT_EQ(scene.GetNextEntityId(), INT32_MIN);
    EXPECT_EQ(scene.AllocateId(), 1);
}

TEST(SceneFile, TheFirstEnvironmentRulesUnlessItsVtlTwinShowsInTheGame)
{
    CSceneBytes b(false);
    WriteHeader(b, 102, {}, {});
    b.RawI32(2);
    const char* apcNames[] = {"Day", "Day_VTL"};
    for (int i = 0; i < 2; ++i)
    {
        b.RawU32(ENTITY_ENVIRONMENT);
        WriteBase(b, apcNames[i], i + 1, 0, 0);
        WriteEnvironment(b, 110);
    }
    Kestrin::Ext::CNullRenderWorld world;
    struct CMode
    {
        bool bHeadless, bEditor;
        const char* pcExpected;
    };
    for (CMode mode : {CMode{true, false, "Day"}, CMode{false, true, "Day"}, CMode{false, false, "Day_VTL"}})
    {
        CSceneContent scene;
        scene.SetServices(&world, nullptr, nullptr, nullptr, nullptr, mode.bHeadless);
        scene.SetEditorMode(mode.bEditor);
        ASSERT_TRUE(ReadScene(b.data, scene));
        ASSERT_NE(scene.GetEnvironment(), nullptr);
        EXPECT_EQ(scene.GetEnvironment()->GetName(), mode.pcExpected);
    }
}

TEST(SceneFile, PartialSavesWriteZeroCountTables)
{
    CFullScene full = BuildFullScene(false);
    CSceneContent scene;
    ASSERT_TRUE(ReadScene(full.bytes, scene));
    Kestrin::Utility::CMemoryWriteStream out;
    std::vector<CSceneEntity*> chosen = {scene.GetEntity(11), scene.GetEntity(12)};
    ASSERT_TRUE(scene.WriteEntities(out, chosen, false));
    const uint8_t* p = out.GetData();
    // After magic, version and box: four zero counts, then the entity count.
    const uint8_t aExpected[] = {0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 2, 0, 0, 0};
    EXPECT_EQ(memcmp(p + 32, aExpected, sizeof(aExpected)), 0);
    CSceneContent partial;
    std::vector<uint8_t> bytes(p, p + out.GetSize());
    ASSERT_TRUE(ReadScene(bytes, partial));
    EXPECT_EQ(partial.GetEntityCount(), 2);
    EXPECT_EQ(partial.GetEntity(0)->GetName(), "Spawn");
    // Locators and triggers know their boxes: the header holds their union.
    CBox3 box0, box1;
    scene.GetEntity(11)->GetBoundingBox(box0);
    scene.GetEntity(12)->GetBoundingBox(box1);
    box0.Add(box1);
    EXPECT_EQ(partial.GetBoundingBox(), box0);
}

namespace
{
class CFakeTexture final : public Kestrin::Renderer::CTexture
{
public:
    explicit CFakeTexture(bool bLoaded) : m_bLoaded(bLoaded) {}
    bool IsLoading() const override { return false; }
    bool IsLoaded() const override { return m_bLoaded; }

private:
    bool m_bLoaded;
};

// Hands out textures; names starting "missing" never load.
class CFakeTextures final : public Kestrin::Renderer::CTextureManager
{
public:
    ~CFakeTextures() override
    {
        for (CFakeTexture* p : m_textures)
        {
            delete p;
        }
    }
    Kestrin::Renderer::CTexture* Load(const std::string& strName, bool) override
    {
        requested.push_back(strName);
        m_textures.push_back(new CFakeTexture(strName.find("missing") == std::string::npos));
        return m_textures.back();
    }
    void Release(Kestrin::Renderer::CTexture* p) override { released += p ? 1 : 0; }

    std::vector<std::string> requested;
    int released = 0;

private:
    std::vector<CFakeTexture*> m_textures;
};
} // namespace

TEST(SceneFile, TablesRequestTheirMapsAndCountOnlyPresentOnes)
{
    CFakeTextures textures;
    CSceneBytes b(false);
    WriteHeader(b, 102, {"lm_0.dds", "missing_1.dds"}, {"clm_0.dds"});
    b.RawI32(0);
    {
        CSceneContent scene;
        scene.SetTextureManager(&textures);
        ASSERT_TRUE(ReadScene(b.data, scene));
        EXPECT_EQ(textures.requested,
                  (std::vector<std::string>{"lm_0.dds", "missing_1.dds", "colorlightmap\\clm_0.dds"}));
        // Read at once: entries of loaded maps have their texture.
        EXPECT_NE(scene.GetLightMaps().entries[0].pTexture, nullptr);
        EXPECT_EQ(scene.GetLightMaps().entries[1].pTexture, nullptr);
        // A map that did not load is not counted, though its name is written.
        std::vector<uint8_t> saved = WriteScene(scene);
        EXPECT_EQ(saved[32], 1);
        EXPECT_EQ(CAtlasTable().CountPresentMaps(true), 0);
    }
    EXPECT_EQ(textures.released, 3);
    // Without a texture manager every named map counts; with none, entries are dropped.
    CAtlasTable table;
    table.maps = {{"a.dds", nullptr}, {"", nullptr}, {"c.dds", nullptr}};
    EXPECT_EQ(table.CountPresentMaps(false), 2);
    CAtlasTable unnamed;
    unnamed.maps = {{"", nullptr}};
    unnamed.entries.resize(3);
    Kestrin::Utility::CMemoryWriteStream out;
    CSceneRecordIO io(out, false);
    ASSERT_TRUE(unnamed.Write(io, false));
    const uint8_t aExpected[] = {0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0};
    ASSERT_EQ(out.GetSize(), 12);
    EXPECT_EQ(memcmp(out.GetData(), aExpected, 12), 0);
}

TEST(SceneFile, ImportGivesFreshIdsAndKeepsGroupsThroughThem)
{
    std::unique_ptr<CSceneContent> pScene(NewHeadlessScene());
    pScene->CreateEntity(ENTITY_LOCATOR, 0);
    pScene->CreateEntity(ENTITY_LOCATOR, 0);
    CFullScene full = BuildFullScene(true);
    Kestrin::Utility::CMemoryStream stream(full.bytes.data(), static_cast<int32_t>(full.bytes.size()));
    std::vector<CSceneEntity*> imported;
    ASSERT_TRUE(pScene->ReadImport(stream, imported));
    ASSERT_EQ(imported.size(), 16u);
    EXPECT_EQ(pScene->GetEntityCount(), 18);
    EXPECT_TRUE(pScene->GetLightMaps().IsEmpty());
    EXPECT_EQ(imported[0]->GetId(), 3);
    EXPECT_EQ(imported[15]->GetId(), 18);
    auto* pGroup = static_cast<CGroupSceneEntity*>(imported[15]);
    EXPECT_EQ(pGroup->GetMembers(), (std::vector<int32_t>{4, 14}));
    EXPECT_EQ(imported[1]->GetGroupId(), 18);
    EXPECT_EQ(imported[11]->GetGroupId(), 18);
    EXPECT_EQ(imported[2]->GetGroupId(), 0);
    EXPECT_EQ(pScene->GetNextEntityId(), 18);
    // A failed import adds nothing and gives the ids back.
    std::vector<uint8_t> cut(full.bytes.begin(), full.bytes.end() - 3);
    Kestrin::Utility::CMemoryStream cutStream(cut.data(), static_cast<int32_t>(cut.size()));
    std::vector<CSceneEntity*> none;
    EXPECT_FALSE(pScene->ReadImport(cutStream, none));
    EXPECT_TRUE(none.empty());
    EXPECT_EQ(pScene->GetEntityCount(), 18);
    EXPECT_EQ(pScene->GetNextEntityId(), 18);
}

TEST(SceneFile, WriteFileReplacesTheFileWholeAndReadFileReadsIt)
{
    CFullScene full = BuildFullScene(true);
    CSceneContent scene;
    ASSERT_TRUE(ReadScene(full.bytes, scene));
    std::string strPath = "scene_test_files/write_file.scene";
    std::filesystem::create_directories("scene_test_files");
    ASSERT_TRUE(scene.WriteFile(strPath.c_str()));
    EXPECT_FALSE(std::filesystem::exists(strPath + ".tmp"));
    CSceneContent again;
    ASSERT_TRUE(again.ReadFile(strPath.c_str()));
    EXPECT_EQ(WriteScene(again), full.bytes);
    CSceneReadError error;
    EXPECT_FALSE(again.ReadFile("scene_test_files/no_such.scene", &error));
    EXPECT_EQ(again.GetEntityCount(), 16);
    EXPECT_FALSE(scene.WriteFile("scene_test_files/no_such_folder/x.scene"));
}
