// Writing: the fixed shape with its ids, full float precision in any locale, and documents
// that read back to the same meshes, matrices and lights.
#include "import/ColladaFile.h"
#include "import/tests/ColladaTestDocs.h"

#include <gtest/gtest.h>

#include <clocale>
#include <cstring>
#include <filesystem>
#include <locale>
#include <string>

using namespace Kestrin::Utility;
using Semantic = CColladaFile::Semantic;

namespace
{
bool Load(CColladaFile& file, const std::string& strText)
{
    return file.ReadMemory(strText.data(), strText.size());
}

CColladaFile::Source MakeSource(const char* pcId, uint32_t uStride, std::vector<float> afValues)
{
    CColladaFile::Source source;
    source.id = pcId;
    source.uStride = uStride;
    source.uCount = uint32_t(afValues.size() / uStride);
    source.afValues = std::move(afValues);
    return source;
}

CColladaFile::Input MakeInput(Semantic eSemantic, int32_t iSource, uint32_t uOffset, int32_t iSet = -1)
{
    CColladaFile::Input input;
    input.eSemantic = eSemantic;
    input.strSemantic = CColladaFile::SemanticName(eSemantic);
    input.iSource = iSource;
    input.uOffset = uOffset;
    input.iSet = iSet;
    return input;
}

// What a lightmap export hands the writer: a textured wall with two map channels, and a lamp.
void BuildScene(CColladaFile& file)
{
    file.upAxis = CColladaFile::Z_UP;
    file.Images().push_back({"wall-tex", "", "maps/wall.tga"});
    CColladaFile::Effect effect;
    effect.id = "wall-effect";
    effect.diffuse.bTexture = true;
    effect.diffuse.texture.iImage = 0;
    effect.specular.bColor = true;
    effect.specular.vColor = {0.5f, 0.5f, 0.5f, 1.0f};
    effect.fShininess = 10.0f;
    effect.bDoubleSided = true;
    file.Effects().push_back(effect);
    file.Materials().push_back({"wall", "Wall", "#wall-effect", 0});

    CColladaFile::Mesh mesh;
    mesh.id = "wall-mesh";
    mesh.name = "wall-mesh";
    mesh.aSources.push_back(MakeSource("p", 3, {0, 0, 0, 1, 0, 0, 1, 0, 1, 0, 0, 1}));
    mesh.aSources.push_back(MakeSource("n", 3, {0, -1, 0}));
    mesh.aSources.push_back(MakeSource("t0", 2, {0, 0, 1, 0, 1, 1, 0, 1}));
    mesh.aSources.push_back(MakeSource("t1", 2, {0.125f, 0.25f}));
    CColladaFile::Primitive quad;
    quad.eKind = CColladaFile::PrimitiveKind::Polylist;
    quad.strMaterial = "wall";
    quad.uCount = 1;
    quad.uStride = 2;
    quad.aInputs = {MakeInput(Semantic::Position, 0, 0), MakeInput(Semantic::Texcoord, 2, 0, 0),
                    MakeInput(Semantic::Normal, 1, 1), MakeInput(Semantic::Texcoord, 3, 1, 1)};
    quad.aVCount = {4};
    quad.aIndices = {0, 0, 1, 0, 2, 0, 3, 0};
    mesh.aPrimitives.push_back(quad);
    file.Meshes().push_back(mesh);

    CColladaFile::Light light;
    light.id = "lamp-light";
    light.name = "lamp";
    light.eType = CColladaFile::LightType::Spot;
    light.vColor = {1.0f, 0.5f, 0.25f};
    light.fFalloffAngle = 30.0f;
    light.fIntensity = 2.0f;
    light.fFarAttenuationEnd = 300.0f;
    light.fOuterCone = 45.0f;
    light.fAspectRatio = 1.0f;
    light.bOvershoot = false;
    file.Lights().push_back(light);

    auto wall = std::make_unique<CColladaFile::Node>();
    wall->id = "wall";
    wall->name = "wall-node";
    wall->mTransform = CMatrix44::RotationZ(PI / 2) * CMatrix44::Translation({10, 20, 30});
    CColladaFile::Instance geometry;
    geometry.eKind = CColladaFile::InstanceKind::Geometry;
    geometry.iIndex = 0;
    wall->aInstances.push_back(geometry);
    auto lamp = std::make_unique<CColladaFile::Node>();
    lamp->id = "lamp";
    lamp->name = "lamp-node";
    lamp->mTransform = CMatrix44::Translation({0, 0, 5});
    lamp->pParent = wall.get();
    CColladaFile::Instance instanceLight;
    instanceLight.eKind = CColladaFile::InstanceKind::Light;
    instanceLight.iIndex = 0;
    lamp->aInstances.push_back(instanceLight);
    wall->aChildren.push_back(std::move(lamp));
    file.Nodes().push_back(std::move(wall));
}

std::string Attr(pugi::xml_node node, const char* pcName)
{
    return node.attribute(pcName).value();
}

// Each triangle corner of each primitive with positions, as values: position, normal, sets.
std::vector<float> Corners(const CColladaFile::Mesh& mesh)
{
    std::vector<float> af;
    for (const CColladaFile::Primitive& prim : mesh.aPrimitives)
    {
        std::vector<uint32_t> aCorners;
        prim.Triangulate(aCorners);
        for (uint32_t uCorner : aCorners)
        {
            for (Semantic e : {Semantic::Position, Semantic::Normal, Semantic::Texcoord, Semantic::Color})
            {
                for (uint32_t uNth = 0; const CColladaFile::Input* pInput = prim.FindInput(e, uNth); ++uNth)
                {
                    const CColladaFile::Source& source = mesh.aSources[size_t(pInput->iSource)];
                    const float* pf = source.Element(prim.Index(uCorner, *pInput));
                    af.insert(af.end(), pf, pf + std::min<uint32_t>(source.uStride, 3));
                }
            }
        }
    }
    return af;
}

struct CommaNumpunct : std::numpunct<char>
{
    char do_decimal_point() const override { return ','; }
    char do_thousands_sep() const override { return '.'; }
    std::string do_grouping() const override { return "\3"; }
};
} // namespace

// ---------------------------------------------------------------------------------------
TEST(ColladaWrite, DocumentShapeAndIds)
{
    CColladaFile file;
    BuildScene(file);
    std::string strText;
    file.WriteMemory(strText);
    pugi::xml_document doc;
    ASSERT_TRUE(doc.load_string(strText.c_str()));
    pugi::xml_node collada = doc.child("COLLADA");
    EXPECT_EQ(Attr(collada, "version"), "1.4.1");
    EXPECT_STREQ(collada.child("asset").child_value("up_axis"), "Z_UP");

    pugi::xml_node image = collada.child("library_images").child("image");
    EXPECT_EQ(Attr(image, "id"), "wall-image");
    EXPECT_STREQ(image.child_value("init_from"), "maps/wall.tga");
    pugi::xml_node material = collada.child("library_materials").child("material");
    EXPECT_EQ(Attr(material, "id"), "wall");
    EXPECT_EQ(Attr(material, "name"), "Wall");
    EXPECT_EQ(Attr(material.child("instance_effect"), "url"), "#wall-fx");
    pugi::xml_node effect = collada.child("library_effects").child("effect");
    EXPECT_EQ(Attr(effect, "id"), "wall-fx");
    EXPECT_EQ(Attr(effect, "name"), "Wall");
    pugi::xml_node surface = effect.child("profile_COMMON").child("newparam");
    EXPECT_EQ(Attr(surface, "sid"), "wall-surface");
    EXPECT_EQ(Attr(surface.child("surface"), "type"), "2D");
    EXPECT_STREQ(surface.child("surface").child_value("init_from"), "wall-image");
    pugi::xml_node sampler = surface.next_sibling("newparam");
    EXPECT_EQ(Attr(sampler, "sid"), "wall-sampler");
    EXPECT_STREQ(sampler.child("sampler2D").child_value("source"), "wall-surface");
    pugi::xml_node technique = effect.child("profile_COMMON").child("technique");
    EXPECT_EQ(Attr(technique, "sid"), "common");
    pugi::xml_node texture = technique.child("blinn").child("diffuse").child("texture");
    EXPECT_EQ(Attr(texture, "texture"), "wall-sampler");
    EXPECT_EQ(Attr(texture, "texcoord"), "CHANNEL1");
    EXPECT_STREQ(technique.child("blinn").child("specular").child_value("color"), "0.5 0.5 0.5 1 ");

    pugi::xml_node light = collada.child("library_lights").child("light");
    EXPECT_EQ(Attr(light, "id"), "lamp-light");
    EXPECT_STREQ(light.child("technique_common").child("spot").child_value("color"), "1 0.5 0.25 ");
    pugi::xml_node extra = light.child("extra").child("technique");
    EXPECT_EQ(Attr(extra, "profile"), "MAX3D");
    std::string strExtras;
    for (pugi::xml_node value : extra.children())
    {
        strExtras += std::string(value.name()) + "=" + value.child_value() + " ";
    }
    EXPECT_EQ(strExtras, "intensity=2 far_attenuation_end=300 outer_cone=45 aspect_ratio=1 overshoot=0 "
                         "falloff_angle=30 ");

    pugi::xml_node mesh = collada.child("library_geometries").child("geometry").child("mesh");
    std::vector<std::string> aIds;
    for (pugi::xml_node source : mesh.children("source"))
    {
        aIds.push_back(Attr(source, "id") + " " + Attr(source.child("float_array"), "id") + " " +
                       Attr(source.child("float_array"), "count") + " " +
                       Attr(source.child("technique_common").child("accessor"), "stride"));
    }
    EXPECT_EQ(aIds, (std::vector<std::string>{"wall-mesh-positions wall-mesh-positions-array 12 3",
                                              "wall-mesh-normals wall-mesh-normals-array 3 3",
                                              "wall-mesh-map-channel1 wall-mesh-map-channel1-array 8 2",
                                              "wall-mesh-map-channel2 wall-mesh-map-channel2-array 2 2"}));
    EXPECT_STREQ(mesh.child("source").child_value("float_array"), "0 0 0 1 0 0 1 0 1 0 0 1 ");
    EXPECT_EQ(Attr(mesh.child("vertices"), "id"), "wall-mesh-vertices");
    EXPECT_EQ(Attr(mesh.child("vertices").child("input"), "source"), "#wall-mesh-positions");
    pugi::xml_node triangles = mesh.child("triangles");
    EXPECT_EQ(Attr(triangles, "material"), "wall");
    EXPECT_EQ(Attr(triangles, "count"), "2");
    std::string strInputs;
    for (pugi::xml_node input : triangles.children("input"))
    {
        strInputs += Attr(input, "semantic") + " " + Attr(input, "source") + " " + Attr(input, "offset") +
                     " " + Attr(input, "set") + "|";
    }
    EXPECT_EQ(strInputs, "VERTEX #wall-mesh-vertices 0 |NORMAL #wall-mesh-normals 1 |"
                         "TEXCOORD #wall-mesh-map-channel1 2 1|TEXCOORD #wall-mesh-map-channel2 3 2|");
    EXPECT_STREQ(triangles.child_value("p"), "0 0 0 0 1 0 1 0 2 0 2 0 0 0 0 0 2 0 2 0 3 0 3 0 ");

    pugi::xml_node scene = collada.child("library_visual_scenes").child("visual_scene");
    EXPECT_EQ(Attr(scene, "id"), "scene1");
    pugi::xml_node wall = scene.child("node");
    EXPECT_EQ(Attr(wall, "id"), "wall");
    EXPECT_EQ(Attr(wall, "name"), "wall-node");
    EXPECT_EQ(Attr(wall, "type"), "NODE");
    EXPECT_STREQ(wall.child_value("matrix"), "-4.371139e-08 -1 0 10 1 -4.371139e-08 0 20 0 0 1 30 0 0 0 1 ");
    pugi::xml_node geometry = wall.child("instance_geometry");
    EXPECT_EQ(Attr(geometry, "url"), "#wall-mesh");
    pugi::xml_node bound =
        geometry.child("bind_material").child("technique_common").child("instance_material");
    EXPECT_EQ(Attr(bound, "symbol"), "wall");
    EXPECT_EQ(Attr(bound, "target"), "#wall");
    pugi::xml_node bind = bound.child("bind_vertex_input");
    EXPECT_EQ(Attr(bind, "semantic") + Attr(bind, "input_semantic") + Attr(bind, "input_set"),
              "CHANNEL1TEXCOORD1");
    bind = bind.next_sibling("bind_vertex_input");
    EXPECT_EQ(Attr(bind, "semantic") + Attr(bind, "input_semantic") + Attr(bind, "input_set"),
              "CHANNEL2TEXCOORD2");
    EXPECT_EQ(Attr(wall.child("node").child("instance_light"), "url"), "#lamp-light");
    EXPECT_EQ(Attr(collada.child("scene").child("instance_visual_scene"), "url"), "#scene1");
}

TEST(ColladaWrite, AWrittenDocumentReadsBackToTheSameScene)
{
    CColladaFile file;
    BuildScene(file);
    std::string strText;
    file.WriteMemory(strText);
    CColladaFile again;
    ASSERT_TRUE(Load(again, strText)) << again.GetError();
    EXPECT_EQ(again.upAxis, CColladaFile::Z_UP);
    EXPECT_EQ(again.SceneId(), "scene1");
    EXPECT_TRUE(again.GetWarnings().empty());
    ASSERT_EQ(again.Meshes().size(), 1u);
    EXPECT_EQ(Corners(again.Meshes()[0]), Corners(file.Meshes()[0]));
    const CColladaFile::Node* pWall = again.FindNode("wall");
    ASSERT_NE(pWall, nullptr);
    EXPECT_EQ(pWall->mTransform, file.Nodes()[0]->mTransform);
    EXPECT_EQ(pWall->aChildren[0]->WorldMatrix(), file.Nodes()[0]->aChildren[0]->WorldMatrix());
    EXPECT_EQ(pWall->aInstances[0].MaterialFor("wall"), 0);
    ASSERT_EQ(again.Lights().size(), 1u);
    const CColladaFile::Light& a = file.Lights()[0];
    const CColladaFile::Light& b = again.Lights()[0];
    EXPECT_EQ(b.eType, a.eType);
    EXPECT_EQ(b.vColor, a.vColor);
    EXPECT_EQ(b.fFalloffAngle, a.fFalloffAngle);
    EXPECT_EQ(b.fIntensity, a.fIntensity);
    EXPECT_EQ(b.fFarAttenuationEnd, a.fFarAttenuationEnd);
    EXPECT_EQ(b.fOuterCone, a.fOuterCone);
    EXPECT_EQ(b.fAspectRatio, a.fAspectRatio);
    EXPECT_EQ(b.bOvershoot, a.bOvershoot);
    const CColladaFile::Effect& effect = again.Effects()[size_t(again.Materials()[0].iEffect)];
    EXPECT_EQ(again.Images()[size_t(effect.diffuse.texture.iImage)].strFile, "maps/wall.tga");
    EXPECT_TRUE(effect.bDoubleSided);
    EXPECT_EQ(effect.fShininess, 10.0f);
}

TEST(ColladaWrite, ReadDocumentsWriteBackTheirMeshesMatricesAndLights)
{
    for (const char* pcDoc : {ColladaTestDocs::PRIMITIVES, ColladaTestDocs::NODES, ColladaTestDocs::LIGHTS})
    {
        CColladaFile file;
        ASSERT_TRUE(Load(file, pcDoc));
        std::string strFirst, strSecond;
        file.WriteMemory(strFirst);
        CColladaFile again;
        ASSERT_TRUE(Load(again, strFirst)) << again.GetError();
        ASSERT_EQ(again.Meshes().size(), file.Meshes().size());
        for (size_t i = 0; i < file.Meshes().size(); ++i)
        {
            EXPECT_EQ(again.Meshes()[i].TriangleCount(), file.Meshes()[i].TriangleCount());
            EXPECT_EQ(Corners(again.Meshes()[i]), Corners(file.Meshes()[i]));
        }
        if (file.upAxis == CColladaFile::Z_UP)
        {
            file.ForEachNode(
                [&](const CColladaFile::Node& node)
                {
                    const CColladaFile::Node* pAgain = again.FindNode(node.id);
                    ASSERT_NE(pAgain, nullptr) << node.id;
                    EXPECT_EQ(pAgain->mTransform, node.mTransform) << node.id;
                });
        }
        ASSERT_EQ(again.Lights().size(), file.Lights().size());
        for (size_t i = 0; i < file.Lights().size(); ++i)
        {
            EXPECT_EQ(again.Lights()[i].vColor, file.Lights()[i].vColor);
            EXPECT_EQ(again.Lights()[i].eType, file.Lights()[i].eType);
            EXPECT_EQ(again.Lights()[i].fIntensity, file.Lights()[i].fIntensity);
            EXPECT_EQ(again.Lights()[i].fFalloffAngle, file.Lights()[i].fFalloffAngle);
            EXPECT_EQ(again.Lights()[i].fConstantAttenuation, file.Lights()[i].fConstantAttenuation);
        }
        // Writing what was read back gives the same bytes.
        again.WriteMemory(strSecond);
        EXPECT_EQ(strSecond, strFirst);
    }
}

TEST(ColladaWrite, YUpScenesAreTurnedAtTheirRoots)
{
    CColladaFile file;
    ASSERT_TRUE(Load(file,
                     "<COLLADA><asset><up_axis>Y_UP</up_axis></asset><library_visual_scenes><visual_scene>"
                     "<node id=\"a\"><translate>0 1 0</translate><node id=\"b\"><translate>0 2 0</translate>"
                     "</node></node></visual_scene></library_visual_scenes></COLLADA>"));
    std::string strText;
    file.WriteMemory(strText);
    CColladaFile again;
    ASSERT_TRUE(Load(again, strText));
    EXPECT_EQ(again.upAxis, CColladaFile::Z_UP);
    EXPECT_EQ(TransformPoint({0, 0, 0}, again.FindNode("a")->WorldMatrix()), (CVec3{0, 0, 1}));
    EXPECT_EQ(TransformPoint({0, 0, 0}, again.FindNode("b")->WorldMatrix()), (CVec3{0, 0, 3}));
    EXPECT_EQ(again.FindNode("b")->mTransform, file.FindNode("b")->mTransform);

    ASSERT_TRUE(Load(file,
                     "<COLLADA><asset><up_axis>X_UP</up_axis></asset><library_visual_scenes><visual_scene>"
                     "<node id=\"a\"><translate>1 2 3</translate></node></visual_scene>"
                     "</library_visual_scenes></COLLADA>"));
    file.WriteMemory(strText);
    ASSERT_TRUE(Load(again, strText));
    // Up +X becomes +Z, right -Y becomes +X.
    EXPECT_EQ(again.FindNode("a")->mTransform.GetTranslation(), (CVec3{-2, -3, 1}));
}

TEST(ColladaWrite, FloatsKeepFullPrecisionInAnyLocale)
{
    std::locale oldLocale = std::locale::global(std::locale(std::locale::classic(), new CommaNumpunct));
    std::string strOldC = setlocale(LC_ALL, nullptr);
    bool bCommaLocale = false;
    for (const char* pcName : {"de_DE.UTF-8", "de_DE.utf8", "fr_FR.UTF-8", "ru_RU.UTF-8"})
    {
        if (setlocale(LC_ALL, pcName))
        {
            bCommaLocale = true;
            break;
        }
    }
    const float afValues[] = {0.1f, 1.0f / 3.0f, 123456.789f, 1e-7f, -2.5e30f, 1e-40f, 16777217.0f, -0.0f};
    CColladaFile file;
    CColladaFile::Mesh mesh;
    mesh.id = "m";
    std::vector<float> afPositions(std::begin(afValues), std::end(afValues));
    afPositions.push_back(7.0f); // nine numbers: three positions
    mesh.aSources.push_back(MakeSource("p", 3, afPositions));
    CColladaFile::Primitive tri;
    tri.uCount = 1;
    tri.aInputs = {MakeInput(Semantic::Position, 0, 0)};
    tri.aIndices = {0, 1, 2};
    mesh.aPrimitives.push_back(tri);
    file.Meshes().push_back(mesh);
    std::string strText;
    file.WriteMemory(strText);
    CColladaFile again;
    bool bRead = Load(again, strText);

    setlocale(LC_ALL, strOldC.c_str());
    std::locale::global(oldLocale);
    ASSERT_TRUE(bRead) << again.GetError();
    EXPECT_NE(strText.find(">0.1 0.33333334 123456.79 1e-07 -2.5e+30 1e-40 16777216 -0 7 <"),
              std::string::npos)
        << strText;
    const std::vector<float>& afRead = again.Meshes()[0].aSources[0].afValues;
    ASSERT_EQ(afRead.size(), afPositions.size());
    EXPECT_EQ(memcmp(afRead.data(), afPositions.data(), afRead.size() * sizeof(float)), 0);
    if (!bCommaLocale)
    {
        GTEST_LOG_(INFO) << "no comma-decimal C locale installed; only the C++ global locale was changed";
    }
}

TEST(ColladaWrite, WriteGoesThroughATemporaryFileAndReadsBackFromDisk)
{
    std::filesystem::path folder =
        std::filesystem::temp_directory_path() / ("collada_write_" + std::to_string(getpid()));
    std::filesystem::create_directories(folder);
    std::string strPath = (folder / "scene.dae").string();
    CColladaFile file;
    BuildScene(file);
    ASSERT_TRUE(file.Write(strPath.c_str()));
    EXPECT_FALSE(std::filesystem::exists(strPath + ".tmp"));
    CColladaFile again;
    ASSERT_TRUE(again.Read(strPath.c_str())) << again.GetError();
    EXPECT_EQ(Corners(again.Meshes()[0]), Corners(file.Meshes()[0]));

    // A folder in the way: the write fails and leaves nothing behind.
    std::string strBlocked = (folder / "blocked.dae").string();
    std::filesystem::create_directories(strBlocked);
    EXPECT_FALSE(file.Write(strBlocked.c_str()));
    EXPECT_TRUE(std::filesystem::is_directory(strBlocked));
    EXPECT_FALSE(std::filesystem::exists(strBlocked + ".tmp"));
    std::filesystem::remove_all(folder);
}
