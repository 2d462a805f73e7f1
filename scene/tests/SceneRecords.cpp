#include "scene/tests/SceneRecords.h"

#include "scene/SceneTypes.h"

namespace SceneTest
{

namespace
{
std::string Item(const char* pcList, size_t i, const char* pcField = nullptr)
{
    std::string s = std::string(pcList) + "[" + std::to_string(i) + "]";
    return pcField ? s + "." + pcField : s;
}
} // namespace

void WriteBase(CSceneBytes& b, const std::string& strName, int32_t iId, int32_t iGroupId, int32_t iLayer,
               int32_t iVersion)
{
    b.Block("BASE", iVersion, 102).String("name", strName).I32("id", iId);
    if (iVersion >= 101)
    {
        b.I32("groupId", iGroupId);
    }
    if (iVersion >= 102)
    {
        b.I32("layer", iLayer);
    }
}

void WriteRenderBlock(CSceneBytes& b)
{
    b.U8("visible", 1).U8("lightMap", 1).U8("dynamicShadow", 0).U8("renderFlagD", 1).U8("renderFlagE", 0);
    b.U16("skyLayer", 2).U16("decalLayer", 3).U16("renderOrderC", 4).I16("blendLayer", 0xFFFE);
    b.S8("inOutDoor", 2).Vec("tint", 3).F32("resolution").F32("lightMapParamA").F32("lightMapParamB");
}

void WriteShapes(CSceneBytes& b, const std::vector<CShape>& shapes, bool bUpgrade)
{
    b.U16("shapeCount", static_cast<uint16_t>(shapes.size()));
    for (size_t i = 0; i < shapes.size(); ++i)
    {
        uint32_t uFlags = shapes[i].uFlags;
        b.RawU32(uFlags);
        if (bUpgrade && (uFlags & 1))
        {
            uFlags |= 0x100;
        }
        b.expected[Item("shapes", i, "flags")] = std::to_string(uFlags);
        b.U16(Item("shapes", i, "material"), shapes[i].uMaterial);
    }
}

void WriteGeometry(CSceneBytes& b, int32_t iVertices, int32_t iIndices, int32_t iEdges)
{
    b.RawI32(iVertices);
    for (int32_t i = 0; i < iVertices; ++i)
    {
        b.Vec(Item("vertices", static_cast<size_t>(i)), 3);
    }
    b.RawI32(iIndices);
    for (int32_t i = 0; i < iIndices; ++i)
    {
        b.U16(Item("indices", static_cast<size_t>(i)), static_cast<uint16_t>(i % iVertices));
    }
    b.RawI32(iEdges);
    for (int32_t i = 0; i < iEdges; ++i)
    {
        b.U16(Item("edges", static_cast<size_t>(i), "a"), static_cast<uint16_t>(i));
        b.U16(Item("edges", static_cast<size_t>(i), "b"), static_cast<uint16_t>(i + 1));
    }
}

void WriteMesh(CSceneBytes& b, int32_t iVersion, const std::string& strMeshFile,
               const std::vector<CShape>& shapes)
{
    b.Block("MESH", iVersion, 108).Matrix("transform");
    if (iVersion >= 101)
    {
        b.I32("lightMapIndex", 0);
    }
    if (iVersion >= 106)
    {
        b.I32("colorLightMapIndex", 0);
    }
    b.String("meshFile", strMeshFile);
    if (!strMeshFile.empty())
    {
        WriteRenderBlock(b);
        if (iVersion >= 101)
        {
            b.U8("inShadow", 1);
        }
        if (iVersion >= 103)
        {
            b.F32("ambientIntensity");
        }
        if (iVersion >= 108)
        {
            b.U8("waterRef", 1).F32("refPower");
        }
    }
    b.String("collisionFile", "rock.col");
    if (iVersion >= 102)
    {
        WriteShapes(b, shapes, iVersion < 107);
    }
    if (iVersion >= 104)
    {
        b.U16("mirrorLayer", 5);
    }
    if (iVersion >= 105)
    {
        b.Vec("dColor", 3).Vec("sColor", 3);
    }
}

void WriteSkin(CSceneBytes& b, int32_t iVersion, const std::string& strConfigFile)
{
    b.Block("SKIN", iVersion, 105).Matrix("transform");
    b.String("configFile", strConfigFile).String("stakeFile", "idle_01");
    if (strConfigFile.empty())
    {
        return;
    }
    WriteRenderBlock(b);
    if (iVersion >= 101)
    {
        b.F32("ambientIntensity");
    }
    if (iVersion >= 102)
    {
        b.U8("inShadow", 1).F32("startTimeMin").F32("startTimeMax");
    }
    if (iVersion >= 103)
    {
        b.F32("visibleDistance");
    }
    if (iVersion >= 104)
    {
        b.I32("level", 2);
    }
    if (iVersion >= 105)
    {
        b.U16("waterRef", 1).F32("refPower");
    }
}

void WriteCloth(CSceneBytes& b, const std::string& strMeshFile)
{
    b.Block("CLOT", 100, 100).Matrix("transform").I32("lightMapIndex", -1).String("meshFile", strMeshFile);
    if (!strMeshFile.empty())
    {
        WriteRenderBlock(b);
        b.U8("inShadow", 0).F32("ambientIntensity");
    }
    b.String("collisionFile", "flag.col");
    b.F32("bending").F32("stretching").F32("friction").F32("thickness").Vec("wind", 3).F32("damping");
    WriteShapes(b, {{0x40, 1}}, false);
    b.U16("mirrorLayer", 9);
}

void WriteLight(CSceneBytes& b, int32_t iVersion, bool bHasLight, std::pair<float, float> luminanceBias)
{
    b.Block("LIT ", iVersion, 103).Matrix("transform").String("materialFile", "light\\gobo.mal");
    b.U8("hasLight", bHasLight ? 1 : 0);
    if (!bHasLight)
    {
        return;
    }
    b.U8("visible", 1).U8("shadow", 1).U8("lightMapFlag", 0).U8("kindFlagA", 1).U8("kindFlagB", 0);
    b.F32("bias").F32("range").F32("coneInner").F32("coneOuter").F32("intensity");
    b.U16("lightMapChannel", 2).U16("zoneLayer", 6).S8("lightType", 0xFF).S8("blend", 4);
    b.Vec("size", 2).Vec("color", 3).Vec("lightMapColor", 3).I32("lightGroup", 0x103);
    if (iVersion >= 101)
    {
        b.I32("passPortal", 1);
    }
    if (iVersion >= 102)
    {
        b.U8("lightShaft", 1).F32("occludeDepthRange");
        b.RawF32(luminanceBias.first);
        b.F32("sampleDecay").F32("sampleDensity").F32("occludeMask").F32("sampleCount");
        b.F32("bloomRadius").F32("bloomDeviation").F32("exposure").F32("priority");
        b.RawF32(luminanceBias.second);
        b.expected["luminanceBias"] = b.expected["luminanceBiasAgain"] = FormatFloat(luminanceBias.second);
    }
    if (iVersion >= 103)
    {
        b.U8("sssTransparent", 1);
    }
}

void WriteFx(CSceneBytes& b, int32_t iVersion)
{
    b.Block("FX  ", iVersion, 103).Matrix("transform").String("fxFile", "fire\\torch.eff");
    if (iVersion >= 101)
    {
        b.F32("loopDelayMin").F32("loopDelayMax");
    }
    if (iVersion >= 102)
    {
        b.U8("visible", 0);
    }
    if (iVersion >= 103)
    {
        b.U8("shouldClip", 1);
    }
}

void WriteSound(CSceneBytes& b, int32_t iVersion)
{
    b.Block("SND ", iVersion, 101).Matrix("transform").String("cueName", "wind_loop");
    if (iVersion >= 101)
    {
        b.U8("looped", 0);
    }
}

void WriteEnvironment(CSceneBytes& b, int32_t iVersion)
{
    b.Block("ENVI", iVersion, 110).Vec("Mesh1", 3).Vec("Mesh2", 3);
    if (iVersion >= 108)
    {
        b.Vec("Char1", 3).Vec("Char2", 3).Vec("Fx1", 3).Vec("Fx2", 3);
    }
    b.Vec("LMColor", 3).I32("LightMapChannel", 2).U8("fogOn", 1);
    b.Vec("fogColor1", 3).Vec("fogColor2", 3).Vec("fogDirection", 3);
    b.F32("fogDensity1").F32("fogDensity2").F32("fogStart").F32("fogEnd");
    if (iVersion >= 102)
    {
        b.F32("fogAlpha1").F32("fogAlpha2");
    }
    b.U8("dofOn", 1).F32("dofFocus").F32("dofNear").F32("dofFar").F32("dofBlurRadius");
    if (iVersion >= 103)
    {
        b.F32("dofBlurDeviation");
    }
    b.U8("bloomOn", 0).F32("bloomScale").F32("bloomThreshold").F32("bloomBlurRadius");
    if (iVersion >= 103)
    {
        b.F32("bloomBlurDeviation");
    }
    b.U8("toneMappingOn", 1).F32("MiddleGray").F32("Range").F32("LightenSpeed").F32("DarkenSpeed");
    b.F32("MinWhite").F32("BurnOutRatio").F32("skyDistance1");
    if (iVersion >= 109)
    {
        b.F32("skyDistance2").F32("skyPower");
    }
    if (iVersion >= 101)
    {
        b.Vec("BackgroundColor", 3);
    }
    b.F32("Saturation").U8("curveOn", 1).String("curveFile", "env\\curve.raw");
    for (int i = 0; i < 768; ++i)
    {
        b.U8("curve[" + std::to_string(i) + "]", static_cast<uint8_t>(255 - i % 256));
    }
    if (iVersion >= 104)
    {
        b.Vec("ScaleOffset", 4);
    }
    if (iVersion >= 105)
    {
        b.U8("lightShaftOn", 1);
    }
    if (iVersion >= 106)
    {
        b.F32("LumBiasPercent").U8("lenseFlareOn", 1).Vec("position", 3).Vec("offsetposition", 3);
        b.F32("occludesize").F32("scale");
    }
    if (iVersion >= 107)
    {
        b.I32("kind", 3);
    }
    if (iVersion >= 110)
    {
        b.Vec("waterN", 3).F32("waterD");
    }
}

void WriteOccluder(CSceneBytes& b, bool bHasShape)
{
    b.Block("OCC ", 100, 100).Matrix("transform").U8("hasShape", bHasShape ? 1 : 0);
    if (bHasShape)
    {
        b.U8("active", 0);
        WriteGeometry(b, 4, 6, 4);
    }
}

void WritePortal(CSceneBytes& b, bool bHasShape)
{
    b.Block("PORT", 100, 100).Matrix("transform").U8("hasShape", bHasShape ? 1 : 0);
    if (bHasShape)
    {
        b.U8("active", 1).U8("passLight", 1);
        WriteGeometry(b, 3, 3, 3);
    }
}

void WriteZone(CSceneBytes& b, int32_t iVersion, bool bHasShape)
{
    b.Block("ZONE", iVersion, 101).Matrix("transform").U8("hasShape", bHasShape ? 1 : 0);
    if (!bHasShape)
    {
        return;
    }
    b.Vec("color1", 3).Vec("color2", 3);
    if (iVersion >= 101)
    {
        b.Vec("color3", 3).Vec("color4", 3).Vec("color5", 3).Vec("color6", 3);
    }
    WriteGeometry(b, 8, 12, 0);
}

void WriteLocator(CSceneBytes& b, int32_t iVersion)
{
    b.Block("LOCA", iVersion, 102).Matrix("transform").Vec("size", 3);
    if (iVersion >= 102)
    {
        b.Vec("color", 3);
    }
}

void WriteTrigger(CSceneBytes& b, int32_t iVersion)
{
    b.Block("TRIG", iVersion, 101).Matrix("transform").Vec("size", 3);
    if (iVersion >= 101)
    {
        b.Vec("color", 3);
    }
}

void WriteCamera(CSceneBytes& b)
{
    b.Block("CAME", 100, 100).Matrix("transform").F32("fov").F32("near").F32("far");
}

void WriteGameObject(CSceneBytes& b, int32_t iVersion)
{
    b.Block("GAME", iVersion, 102).Matrix("transform");
    if (iVersion >= 101)
    {
        b.Vec("size", 3).Vec("color", 3);
    }
    b.U8("spawn", 0);
    if (iVersion >= 102)
    {
        b.U8("inShadow", 1);
    }
    b.String("gameObjectFile", "npc\\guard.lua");
}

void WriteGroup(CSceneBytes& b, int32_t iVersion, const std::vector<int32_t>& members)
{
    b.Block("GROU", iVersion, 101).Matrix("transform");
    if (iVersion >= 101)
    {
        b.U8("isOpen", 1);
    }
    b.RawI32(static_cast<int32_t>(members.size()));
    for (size_t i = 0; i < members.size(); ++i)
    {
        b.I32(Item("members", i), members[i]);
    }
}

namespace
{
void WriteTable(CSceneBytes& b, const std::vector<std::string>& maps, int32_t iFirstEntity)
{
    b.RawI32(static_cast<int32_t>(maps.size()));
    for (const std::string& strMap : maps)
    {
        b.RawString(strMap);
    }
    b.RawI32(static_cast<int32_t>(maps.size()));
    for (size_t i = 0; i < maps.size(); ++i)
    {
        b.RawI32(iFirstEntity + static_cast<int32_t>(i)).RawI32(static_cast<int32_t>(i));
        b.RawF32(0.25f * static_cast<float>(i)).RawF32(0.5f).RawF32(0.25f).RawF32(0.5f);
    }
}
} // namespace

void WriteHeader(CSceneBytes& b, int32_t iVersion, const std::vector<std::string>& lightMaps,
                 const std::vector<std::string>& colorLightMaps, bool bEmptyBox)
{
    b.Tag("SCEN").RawI32(iVersion);
    if (bEmptyBox)
    {
        b.RawF32(1e10f).RawF32(1e10f).RawF32(1e10f).RawF32(-1e10f).RawF32(-1e10f).RawF32(-1e10f);
    }
    else
    {
        b.RawF32(-1000.0f).RawF32(-2000.0f).RawF32(-300.0f).RawF32(4000.0f).RawF32(5000.0f).RawF32(600.0f);
    }
    if (iVersion >= 101)
    {
        WriteTable(b, lightMaps, 2);
    }
    if (iVersion >= 102)
    {
        WriteTable(b, colorLightMaps, 2);
    }
}

CFullScene BuildFullScene(bool bBigEndian)
{
    CFullScene scene;
    CSceneBytes b(bBigEndian);
    WriteHeader(b, 102, {"lightmap\\lm_000.dds", "lightmap\\lm_001.dds"}, {"clm_000.dds"});
    b.RawI32(16);
    b.TakeExpected();
    auto Entity = [&](uint32_t uType, const char* pcName, int32_t iId, int32_t iGroup, auto&& fnBlock)
    {
        b.RawU32(uType);
        WriteBase(b, pcName, iId, iGroup, iId % 64);
        fnBlock();
        scene.types.push_back(uType);
        scene.entities.push_back(b.TakeExpected());
    };
    using namespace Ovrel;
    Entity(ENTITY_PLAIN, "Plain", 1, 0, [] {});
    Entity(ENTITY_STATIC_MESH, "Rock", 2, 16, [&] { WriteMesh(b, 108, "model\\rock.mesh"); });
    Entity(ENTITY_SKINNED_MESH, "Guard", 3, 0, [&] { WriteSkin(b, 105, "character\\guard.cconfig"); });
    Entity(ENTITY_CLOTH, "Flag", 4, 0, [&] { WriteCloth(b, "model\\flag.mesh"); });
    Entity(ENTITY_LIGHT, "PointLight01", 5, 0, [&] { WriteLight(b, 103, true); });
    Entity(ENTITY_FX, "Torch", 6, 0, [&] { WriteFx(b, 103); });
    Entity(ENTITY_SOUND, "Wind", 7, 0, [&] { WriteSound(b, 101); });
    Entity(ENTITY_ENVIRONMENT, "Env", 8, 0, [&] { WriteEnvironment(b, 110); });
    Entity(ENTITY_OCCLUDER, "Wall", 9, 0, [&] { WriteOccluder(b, true); });
    Entity(ENTITY_PORTAL, "Door", 10, 0, [&] { WritePortal(b, true); });
    Entity(ENTITY_ZONE, "Hall", 11, 0, [&] { WriteZone(b, 101, true); });
    Entity(ENTITY_LOCATOR, "Spawn", 12, 16, [&] { WriteLocator(b, 102); });
    Entity(ENTITY_TRIGGER, "Gate", 13, 0, [&] { WriteTrigger(b, 101); });
    Entity(ENTITY_CAMERA, "Intro", 14, 0, [&] { WriteCamera(b); });
    Entity(ENTITY_GAME_OBJECT, "Npc", 15, 0, [&] { WriteGameObject(b, 102); });
    Entity(ENTITY_GROUP, "Set", 16, 0, [&] { WriteGroup(b, 101, {2, 12}); });
    scene.bytes = b.data;
    return scene;
}

std::vector<uint8_t> BuildPropFile(bool bBigEndian)
{
    CSceneBytes b(bBigEndian);
    b.Tag("PROP").RawI32(100).RawI32(2);
    const char* apcNames[] = {"model\\rock", "model\\tree"};
    for (int i = 0; i < 2; ++i)
    {
        b.Tag("MESH").RawI32(100).RawString(apcNames[i]);
        b.RawF32(50.0f + i).RawF32(1000.0f).RawF32(60.0f).RawF32(5.0f);
        b.RawU8(static_cast<uint8_t>(i)).RawU8(1);
        b.RawI32(2 + i);
        for (int j = 0; j < 2 + i; ++j)
        {
            b.RawF32(0.25f * static_cast<float>(j));
        }
    }
    return b.data;
}

} // namespace SceneTest
