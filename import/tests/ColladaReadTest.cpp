// Reading: every step of the reader on small documents written for the case.
#include "import/ColladaFile.h"
#include "import/tests/ColladaTestDocs.h"

#include "engine/utility/tests/MathExpect.h"

#include <gtest/gtest.h>

#include <cstring>

using namespace Kestrin::Utility;
using MathExpect::ExpectNear;
using Semantic = CColladaFile::Semantic;

namespace
{
bool Load(CColladaFile& file, const char* pcText)
{
    return file.ReadMemory(pcText, strlen(pcText));
}

} // namespace

// ---------------------------------------------------------------------------------------
TEST(ColladaRead, UpAxisIsMatchedByContainsAndOtherwiseKeepsTheConstructorValue)
{
    CColladaFile file;
    EXPECT_EQ(file.upAxis, CColladaFile::Y_UP);
    ASSERT_TRUE(Load(file, "<COLLADA><asset><up_axis>X_UP</up_axis></asset></COLLADA>"));
    EXPECT_EQ(file.upAxis, 0);
    ASSERT_TRUE(Load(file, "<COLLADA><asset><up_axis>\n  Z_UP  \n</up_axis></asset></COLLADA>"));
    EXPECT_EQ(file.upAxis, 2);
    ASSERT_TRUE(Load(file, "<COLLADA><asset><up_axis>W_UP</up_axis></asset></COLLADA>"));
    EXPECT_EQ(file.upAxis, 1);
    ASSERT_TRUE(Load(file, "<COLLADA><asset/></COLLADA>"));
    EXPECT_EQ(file.upAxis, 1);
}

TEST(ColladaRead, MissingLibrariesAreEmpty)
{
    CColladaFile file;
    ASSERT_TRUE(Load(file, "<COLLADA version=\"1.4.1\"/>"));
    EXPECT_TRUE(file.Meshes().empty());
    EXPECT_TRUE(file.Materials().empty());
    EXPECT_TRUE(file.Nodes().empty());
    EXPECT_TRUE(file.Channels().empty());
    EXPECT_TRUE(file.GetWarnings().empty());
    EXPECT_EQ(file.m_fAnimStart, 0.0f);

    ASSERT_TRUE(file.ReadMemory(ColladaTestDocs::NODES, strlen(ColladaTestDocs::NODES)));
    file.Clear();
    EXPECT_EQ(file.upAxis, CColladaFile::Y_UP);
    EXPECT_TRUE(file.Nodes().empty());
    EXPECT_TRUE(file.Meshes().empty());
    EXPECT_EQ(file.FindNode("root"), nullptr);
}

// ---------------------------------------------------------------------------------------
TEST(ColladaRead, TrianglesWithSeveralInputsSharingAnOffset)
{
    CColladaFile file;
    ASSERT_TRUE(Load(file, ColladaTestDocs::PRIMITIVES)) << file.GetError();
    ASSERT_EQ(file.Meshes().size(), 2u);
    const CColladaFile::Mesh& mesh = file.Meshes()[0];
    EXPECT_EQ(mesh.id, "shape");
    EXPECT_EQ(mesh.name, "Shape");
    ASSERT_EQ(mesh.aSources.size(), 5u);
    ASSERT_EQ(mesh.aPrimitives.size(), 3u);
    const CColladaFile::Primitive& tris = mesh.aPrimitives[0];
    EXPECT_EQ(tris.eKind, CColladaFile::PrimitiveKind::Triangles);
    EXPECT_EQ(tris.strMaterial, "symA");
    EXPECT_EQ(tris.uCount, 2u);
    EXPECT_EQ(tris.uStride, 3u);
    EXPECT_EQ(tris.CornerCount(), 6u);
    EXPECT_EQ(tris.TriangleCount(), 2u);
    ASSERT_EQ(tris.aInputs.size(), 4u);
    EXPECT_EQ(tris.aInputs[0].eSemantic, Semantic::Position);
    EXPECT_TRUE(tris.aInputs[0].bFromVertices);
    EXPECT_EQ(tris.aInputs[0].uOffset, 0u);
    EXPECT_EQ(tris.aInputs[1].eSemantic, Semantic::Normal);
    EXPECT_EQ(tris.aInputs[1].uOffset, 1u);

    // Texture-coordinate sets are counted in order of `set`, not of the document.
    const CColladaFile::Input* pUv0 = tris.FindInput(Semantic::Texcoord, 0);
    const CColladaFile::Input* pUv1 = tris.FindInput(Semantic::Texcoord, 1);
    ASSERT_TRUE(pUv0 && pUv1);
    EXPECT_EQ(mesh.aSources[size_t(pUv0->iSource)].id, "shape-uv0");
    EXPECT_EQ(mesh.aSources[size_t(pUv1->iSource)].id, "shape-uv1");
    EXPECT_EQ(pUv1->iSet, 1);
    EXPECT_EQ(pUv0->uOffset, 2u);
    EXPECT_EQ(tris.FindInput(Semantic::Texcoord, 2), nullptr);
    EXPECT_EQ(tris.InputCount(Semantic::Texcoord), 2u);

    // Corner 4 is "2 1 2": position 2, normal 1, both sets element 2.
    EXPECT_EQ(tris.Index(4, *tris.FindInput(Semantic::Position)), 2u);
    EXPECT_EQ(tris.Index(4, *tris.FindInput(Semantic::Normal)), 1u);
    const CColladaFile::Source& uv1 = mesh.aSources[size_t(pUv1->iSource)];
    EXPECT_EQ(uv1.uStride, 3u);
    EXPECT_EQ(uv1.uCount, 4u);
    EXPECT_EQ(uv1.Element(tris.Index(4, *pUv1))[0], 0.25f);
    EXPECT_EQ(uv1.Element(tris.Index(4, *pUv1))[1], 0.25f);
}

TEST(ColladaRead, PolylistUsesVcountAndPolygonsOnePPerFace)
{
    CColladaFile file;
    ASSERT_TRUE(Load(file, ColladaTestDocs::PRIMITIVES));
    const CColladaFile::Mesh& mesh = file.Meshes()[0];
    const CColladaFile::Primitive& list = mesh.aPrimitives[1];
    EXPECT_EQ(list.eKind, CColladaFile::PrimitiveKind::Polylist);
    EXPECT_EQ(list.strMaterial, "symB");
    EXPECT_EQ(list.uStride, 3u); // offsets 0, 2, 1
    EXPECT_EQ(list.aVCount, (std::vector<uint32_t>{4, 3}));
    EXPECT_EQ(list.TriangleCount(), 3u);
    std::vector<uint32_t> aCorners;
    list.Triangulate(aCorners);
    EXPECT_EQ(aCorners, (std::vector<uint32_t>{0, 1, 2, 0, 2, 3, 4, 5, 6}));
    // Corner 2 is "5 1 2": position 5, colour 1, uv 2.
    EXPECT_EQ(list.Index(2, *list.FindInput(Semantic::Position)), 5u);
    EXPECT_EQ(list.Index(2, *list.FindInput(Semantic::Color)), 1u);
    EXPECT_EQ(list.Index(2, *list.FindInput(Semantic::Texcoord)), 2u);

    const CColladaFile::Primitive& polygons = mesh.aPrimitives[2];
    EXPECT_EQ(polygons.eKind, CColladaFile::PrimitiveKind::Polygons);
    EXPECT_EQ(polygons.uCount, 3u);
    EXPECT_EQ(polygons.uStride, 2u);
    // The quad, the outer triangle of the <ph> (its hole left out), the pentagon.
    EXPECT_EQ(polygons.aVCount, (std::vector<uint32_t>{4, 3, 5}));
    EXPECT_EQ(polygons.TriangleCount(), 6u);
    EXPECT_EQ(polygons.Index(7, *polygons.FindInput(Semantic::Position)), 0u);
    EXPECT_EQ(mesh.TriangleCount(), 11u);
}

TEST(ColladaRead, VerticesInputsAreFoldedAtTheVertexOffset)
{
    CColladaFile file;
    ASSERT_TRUE(Load(file, ColladaTestDocs::PRIMITIVES));
    const CColladaFile::Mesh& mesh = file.Meshes()[1];
    ASSERT_EQ(mesh.aPrimitives.size(), 1u); // the tristrips are not read
    const CColladaFile::Primitive& tris = mesh.aPrimitives[0];
    EXPECT_EQ(tris.uStride, 2u);
    const CColladaFile::Input* pNormal = tris.FindInput(Semantic::Normal);
    ASSERT_NE(pNormal, nullptr);
    EXPECT_TRUE(pNormal->bFromVertices);
    EXPECT_EQ(pNormal->uOffset, 0u);
    EXPECT_EQ(mesh.aSources[size_t(pNormal->iSource)].id, "maya-nrm");
    EXPECT_EQ(file.GetWarnings(),
              (std::vector<std::string>{"geometry 'maya': <tristrips> primitives are not read",
                                        "geometry 'spline' is not a mesh; left out"}));
}

// ---------------------------------------------------------------------------------------
TEST(ColladaRead, TextureChainLeadsFromTheSamplerToTheImageFile)
{
    CColladaFile file;
    ASSERT_TRUE(Load(file, ColladaTestDocs::MATERIALS)) << file.GetError();
    ASSERT_EQ(file.Images().size(), 3u);
    EXPECT_EQ(file.Images()[0].strFile, "textures/wood.tga");
    EXPECT_EQ(file.Images()[0].name, "Wood");
    EXPECT_EQ(file.Images()[1].strFile, "stone.dds");
    ASSERT_EQ(file.Materials().size(), 5u);
    const CColladaFile::Material& wood = file.Materials()[0];
    EXPECT_EQ(wood.name, "WoodMat");
    ASSERT_EQ(wood.iEffect, 0);
    const CColladaFile::Effect& fx = file.Effects()[0];
    EXPECT_EQ(fx.eShading, CColladaFile::Shading::Phong);
    EXPECT_TRUE(fx.diffuse.bTexture);
    EXPECT_FALSE(fx.diffuse.bColor);
    EXPECT_EQ(fx.diffuse.texture.strTexture, "wood-sampler");
    EXPECT_EQ(fx.diffuse.texture.strTexcoord, "UVSET0");
    EXPECT_EQ(fx.diffuse.texture.iImage, 0);
    EXPECT_EQ(fx.emission.vColor, (CVec4{0.1f, 0.2f, 0.3f, 1.0f}));
    EXPECT_EQ(fx.ambient.vColor, (CVec4{0.5f, 0.5f, 0.5f, 1.0f}));
    EXPECT_TRUE(fx.specular.bColor);
    EXPECT_EQ(fx.fShininess, 12.5f);
    EXPECT_EQ(fx.fTransparency, 0.25f);
    EXPECT_TRUE(fx.transparent.bColor);
    EXPECT_TRUE(fx.bDoubleSided);
    EXPECT_TRUE(fx.bBump);
    EXPECT_EQ(fx.bump.iImage, 2); // named directly by the image id
    EXPECT_EQ(fx.bump.strTexcoord, "UVSET1");

    // 1.5 instance_image; an image named directly; a chain that ends nowhere.
    EXPECT_EQ(file.Effects()[1].eShading, CColladaFile::Shading::Lambert);
    EXPECT_EQ(file.Effects()[1].diffuse.texture.iImage, 1);
    EXPECT_FALSE(file.Effects()[1].bDoubleSided);
    EXPECT_EQ(file.Effects()[2].eShading, CColladaFile::Shading::Blinn);
    EXPECT_EQ(file.Effects()[2].diffuse.texture.iImage, 2);
    EXPECT_EQ(file.Effects()[3].eShading, CColladaFile::Shading::Constant);
    EXPECT_TRUE(file.Effects()[3].emission.bTexture);
    EXPECT_EQ(file.Effects()[3].emission.texture.iImage, -1);
    EXPECT_FALSE(file.Effects()[3].fShininess.has_value());
    EXPECT_EQ(file.Materials()[4].iEffect, -1);
    EXPECT_EQ(file.Materials()[4].strEffectUrl, "#missing-fx");
    EXPECT_EQ(file.GetWarnings(),
              (std::vector<std::string>{"effect 'lost-fx': texture 'lost-sampler' leads to no image",
                                        "material 'nowhere': effect '#missing-fx' not found"}));
}

// ---------------------------------------------------------------------------------------
TEST(ColladaRead, SkinsWithJointsBindMatricesAndWeights)
{
    CColladaFile file;
    ASSERT_TRUE(Load(file, ColladaTestDocs::SKINS)) << file.GetError();
    ASSERT_EQ(file.Skins().size(), 2u);
    const CColladaFile::Skin& skin = file.Skins()[0];
    EXPECT_EQ(skin.id, "body-skin");
    EXPECT_EQ(skin.name, "BodySkin");
    EXPECT_EQ(skin.iMesh, 0);
    EXPECT_EQ(skin.mBindShape.GetTranslation(), (CVec3{5, 6, 7}));
    EXPECT_EQ(skin.aJoints, (std::vector<std::string>{"hip", "knee"}));
    EXPECT_FALSE(skin.bJointIds);
    ASSERT_EQ(skin.aInverseBind.size(), 2u);
    EXPECT_EQ(skin.aInverseBind[0].GetTranslation(), (CVec3{-1, -2, -3}));
    EXPECT_EQ(skin.aInverseBind[1].GetTranslation(), (CVec3{0, 0, -4}));
    EXPECT_EQ(skin.VertexCount(), 3u);
    EXPECT_EQ(skin.aFirst, (std::vector<uint32_t>{0, 1, 3, 5}));
    EXPECT_EQ(skin.aJoint, (std::vector<int32_t>{0, 0, 1, 1, -1}));
    EXPECT_EQ(skin.aWeight, (std::vector<float>{1.0f, 0.75f, 0.25f, 0.5f, 0.5f}));

    const CColladaFile::Skin& ids = file.Skins()[1];
    EXPECT_TRUE(ids.bJointIds);
    EXPECT_EQ(ids.aJoints, (std::vector<std::string>{"hip-node"}));
    ASSERT_EQ(ids.aInverseBind.size(), 1u); // float4x4 param, no stride written
    EXPECT_EQ(ids.aInverseBind[0], CMatrix44());
    EXPECT_EQ(ids.aWeight, (std::vector<float>{1, 1, 1}));
    EXPECT_EQ(file.GetWarnings(), (std::vector<std::string>{"controller 'morph' is not a skin; left out"}));
}

// ---------------------------------------------------------------------------------------
TEST(ColladaRead, TheFourLightKindsAndTheirExporterValues)
{
    CColladaFile file;
    ASSERT_TRUE(Load(file, ColladaTestDocs::LIGHTS)) << file.GetError();
    ASSERT_EQ(file.Lights().size(), 4u);
    const CColladaFile::Light& amb = file.Lights()[0];
    EXPECT_EQ(amb.eType, CColladaFile::LightType::Ambient);
    EXPECT_EQ(amb.name, "Ambient");
    EXPECT_EQ(amb.vColor, (CVec3{0.1f, 0.2f, 0.3f}));
    EXPECT_FALSE(amb.fIntensity.has_value());

    const CColladaFile::Light& sun = file.Lights()[1];
    EXPECT_EQ(sun.eType, CColladaFile::LightType::Directional);
    EXPECT_EQ(sun.vColor, (CVec3{1.0f, 0.9f, 0.8f}));
    EXPECT_EQ(sun.fIntensity, -2.0f);
    EXPECT_EQ(sun.fOuterCone, 6.0f);
    EXPECT_EQ(sun.fAspectRatio, 1.5f);
    EXPECT_EQ(sun.fFalloffAngle, 0.5f);
    EXPECT_EQ(sun.bOvershoot, true);
    EXPECT_EQ(sun.fFarAttenuationStart, 10.0f);
    EXPECT_EQ(sun.fFarAttenuationEnd, 80.0f);

    const CColladaFile::Light& bulb = file.Lights()[2];
    EXPECT_EQ(bulb.eType, CColladaFile::LightType::Point);
    EXPECT_EQ(bulb.fConstantAttenuation, 0.5f);
    EXPECT_EQ(bulb.fLinearAttenuation, 0.25f);
    EXPECT_EQ(bulb.fQuadraticAttenuation, 0.125f);
    EXPECT_EQ(bulb.fIntensity, 3.0f);
    EXPECT_EQ(bulb.fFarAttenuationEnd, 300.0f);
    EXPECT_FALSE(bulb.fOuterCone.has_value());
    EXPECT_FALSE(bulb.bOvershoot.has_value());
    EXPECT_EQ(bulb.fFalloffAngle, 180.0f);

    const CColladaFile::Light& spot = file.Lights()[3];
    EXPECT_EQ(spot.eType, CColladaFile::LightType::Spot);
    EXPECT_EQ(spot.fFalloffAngle, 40.0f);
    EXPECT_EQ(spot.fFalloffExponent, 2.0f);
    EXPECT_EQ(spot.fIntensity, 0.75f); // the first technique that has it
    EXPECT_EQ(spot.fOuterCone, 50.0f);
    EXPECT_EQ(spot.bOvershoot, false);
}

TEST(ColladaRead, PerspectiveAndOrthographicCameras)
{
    CColladaFile file;
    ASSERT_TRUE(Load(file, ColladaTestDocs::LIGHTS));
    ASSERT_EQ(file.Cameras().size(), 2u);
    const CColladaFile::Camera& persp = file.Cameras()[0];
    EXPECT_FALSE(persp.bOrthographic);
    EXPECT_EQ(persp.name, "Persp");
    EXPECT_EQ(persp.fXFov, 49.1f);
    EXPECT_EQ(persp.fYFov, 37.8f);
    EXPECT_EQ(persp.fAspectRatio, 1.3f);
    EXPECT_EQ(persp.fZNear, 0.1f);
    EXPECT_EQ(persp.fZFar, 1000.0f);
    const CColladaFile::Camera& ortho = file.Cameras()[1];
    EXPECT_TRUE(ortho.bOrthographic);
    EXPECT_EQ(ortho.fXMag, 3.0f);
    EXPECT_EQ(ortho.fYMag, 2.0f);
    EXPECT_EQ(ortho.fXFov, 0.0f);
    EXPECT_EQ(ortho.fZFar, 50.0f);
}

// ---------------------------------------------------------------------------------------
TEST(ColladaRead, NodeTreeOfTheInstancedVisualScene)
{
    CColladaFile file;
    ASSERT_TRUE(Load(file, ColladaTestDocs::NODES)) << file.GetError();
    EXPECT_EQ(file.SceneId(), "main");
    ASSERT_EQ(file.Nodes().size(), 3u);
    const CColladaFile::Node& root = *file.Nodes()[0];
    EXPECT_EQ(root.id, "root");
    EXPECT_EQ(root.sid, "r");
    EXPECT_EQ(root.name, "Root");
    EXPECT_EQ(root.type, "NODE");
    EXPECT_EQ(root.pParent, nullptr);
    EXPECT_EQ(root.strUserProperties, "lod=1\ntag");
    ASSERT_EQ(root.aTransforms.size(), 2u);
    EXPECT_EQ(root.aTransforms[1].eKind, CColladaFile::TransformKind::Rotate);
    EXPECT_EQ(root.aTransforms[1].sid, "rotateZ");
    ASSERT_EQ(root.aChildren.size(), 2u);
    const CColladaFile::Node& bone = *root.aChildren[1];
    EXPECT_TRUE(bone.IsJoint());
    EXPECT_EQ(bone.sid, "b1");
    EXPECT_EQ(bone.pParent, &root);
    EXPECT_EQ(file.FindNode("ignored"), nullptr);
    EXPECT_EQ(file.FindNode("bone"), &bone);
    ASSERT_EQ(file.LibraryNodes().size(), 1u);
    EXPECT_EQ(file.FindNode("prop"), file.LibraryNodes()[0].get());
    size_t uCount = 0;
    file.ForEachNode([&](const CColladaFile::Node&) { ++uCount; });
    EXPECT_EQ(uCount, 5u);
}

// Collada writes column-vector matrices; the engine's have the translation in the fourth row.
TEST(ColladaRead, TranslatedRotatedNodeInTheEngineConvention)
{
    CColladaFile file;
    ASSERT_TRUE(Load(file, ColladaTestDocs::NODES));
    const CColladaFile::Node& root = *file.Nodes()[0];
    // translate 1 2 3 then rotate 90 about Z: a point is rotated first, then moved.
    ExpectNear(TransformPoint({1, 0, 0}, root.mTransform), {1, 3, 3});
    EXPECT_EQ(root.mTransform.GetTranslation(), (CVec3{1, 2, 3}));
    EXPECT_NEAR(root.mTransform.m[0][1], 1.0f, 1e-6f); // x turns into +y
    EXPECT_NEAR(root.mTransform.m[1][0], -1.0f, 1e-6f);

    // The same transform baked into a <matrix>.
    const CColladaFile::Node& baked = *file.Nodes()[1];
    EXPECT_EQ(baked.aTransforms[0].sid, "transform");
    ExpectNear(baked.mTransform, root.mTransform);
    float af[16];
    CColladaFile::MatrixToCollada(baked.mTransform, af);
    EXPECT_EQ(af[3], 1.0f);
    EXPECT_EQ(af[7], 2.0f);
    EXPECT_EQ(af[11], 3.0f);
    EXPECT_EQ(af[1], -1.0f);

    // The child scales after its translate: (0 0 0) -> (10 0 0) -> (20 0 0), then the root.
    const CColladaFile::Node& child = *root.aChildren[0];
    ExpectNear(TransformPoint({0, 0, 0}, child.mTransform), {20, 0, 0});
    ExpectNear(TransformPoint({0, 0, 0}, child.WorldMatrix()), {1, 22, 3});

    // lookat: at the eye, looking down -Z at the origin with Y up.
    const CColladaFile::Node& looker = *file.Nodes()[2];
    ExpectNear(looker.mTransform, CMatrix44::Translation({0, 0, 10}));
}

TEST(ColladaRead, InstancesAndMaterialBindings)
{
    CColladaFile file;
    ASSERT_TRUE(Load(file, ColladaTestDocs::NODES));
    const CColladaFile::Node& child = *file.Nodes()[0]->aChildren[0];
    ASSERT_EQ(child.aInstances.size(), 1u);
    const CColladaFile::Instance& geometry = child.aInstances[0];
    EXPECT_EQ(geometry.eKind, CColladaFile::InstanceKind::Geometry);
    EXPECT_EQ(geometry.iIndex, 0);
    ASSERT_EQ(geometry.aMaterials.size(), 2u);
    EXPECT_EQ(geometry.aMaterials[0].strSymbol, "boxSG");
    EXPECT_EQ(geometry.aMaterials[0].strTarget, "#red");
    ASSERT_EQ(geometry.aMaterials[0].aVertexInputs.size(), 1u);
    EXPECT_EQ(geometry.aMaterials[0].aVertexInputs[0].strSemantic, "UVSET0");
    EXPECT_EQ(geometry.aMaterials[0].aVertexInputs[0].strInputSemantic, "TEXCOORD");
    EXPECT_EQ(geometry.aMaterials[0].aVertexInputs[0].iInputSet, 1);
    EXPECT_EQ(geometry.MaterialFor("boxSG"), 0);
    EXPECT_EQ(geometry.MaterialFor("gone"), -1);
    EXPECT_EQ(geometry.MaterialFor("other"), -1);

    const CColladaFile::Node& baked = *file.Nodes()[1];
    ASSERT_EQ(baked.aInstances.size(), 4u);
    EXPECT_EQ(baked.aInstances[0].eKind, CColladaFile::InstanceKind::Light);
    EXPECT_EQ(baked.aInstances[0].iIndex, 0);
    EXPECT_EQ(baked.aInstances[1].eKind, CColladaFile::InstanceKind::Camera);
    EXPECT_EQ(baked.aInstances[1].iIndex, 0);
    EXPECT_EQ(baked.aInstances[2].eKind, CColladaFile::InstanceKind::Controller);
    EXPECT_EQ(baked.aInstances[2].iIndex, -1);
    EXPECT_EQ(baked.aInstances[2].aSkeletons, (std::vector<std::string>{"#bone"}));
    EXPECT_EQ(baked.aInstances[3].eKind, CColladaFile::InstanceKind::Node);
    EXPECT_EQ(baked.aInstances[3].pNode, file.FindNode("prop"));
    EXPECT_EQ(file.GetWarnings(), (std::vector<std::string>{"material '#nothing' bound to 'gone' not found",
                                                            "node 'baked': controller '#skin' not found"}));
}

// ---------------------------------------------------------------------------------------
TEST(ColladaRead, EveryTargetFormIsToldApartAndGatheredForItsNode)
{
    CColladaFile file;
    ASSERT_TRUE(Load(file, ColladaTestDocs::ANIMATIONS)) << file.GetError();
    using K = CColladaFile::TargetKind;
    const struct
    {
        const char* pcTarget;
        K eKind;
        const char* pcSid;
        const char* pcMember;
    } aExpected[] = {
        {"mat/transform", K::Transform, "transform", ""},
        {"mat/transform(3)(0)", K::TransformRow0, "transform", "(3)(0)"},
        {"mat/transform(3)(1)", K::TransformRow1, "transform", "(3)(1)"},
        {"mat/transform(3)(2)", K::TransformRow2, "transform", "(3)(2)"},
        {"maya/translate.X", K::TranslateX, "translate", "X"},
        {"maya/translate.Y", K::TranslateY, "translate", "Y"},
        {"maya/translate.Z", K::TranslateZ, "translate", "Z"},
        {"max/Trans.X", K::TransX, "Trans", "X"},
        {"max/Trans.Y", K::TransY, "Trans", "Y"},
        {"max/Trans.Z", K::TransZ, "Trans", "Z"},
        {"max/RotX.ANGLE", K::RotX, "RotX", "ANGLE"},
        {"max/RotY.ANGLE", K::RotY, "RotY", "ANGLE"},
        {"max/RotZ.ANGLE", K::RotZ, "RotZ", "ANGLE"},
        {"maya/rotateX.ANGLE", K::RotateX, "rotateX", "ANGLE"},
        {"maya/rotateY.ANGLE", K::RotateY, "rotateY", "ANGLE"},
        {"maya/rotateZ.ANGLE", K::RotateZ, "rotateZ", "ANGLE"},
        {"blend/translation", K::Translation, "translation", ""},
        {"maya/translate", K::Translate, "translate", ""},
        {"maya/scale", K::Scale, "scale", ""},
        {"morph-weights(0)", K::Other, "", ""},
    };
    ASSERT_EQ(file.Channels().size(), std::size(aExpected));
    for (size_t i = 0; i < std::size(aExpected); ++i)
    {
        const CColladaFile::Channel& channel = file.Channels()[i];
        SCOPED_TRACE(channel.strTarget);
        EXPECT_EQ(channel.strTarget, aExpected[i].pcTarget);
        EXPECT_EQ(channel.eKind, aExpected[i].eKind);
        EXPECT_EQ(channel.strSid, aExpected[i].pcSid);
        EXPECT_EQ(channel.strMember, aExpected[i].pcMember);
        std::string strNode(channel.strTarget.substr(0, channel.strTarget.find('/')));
        EXPECT_EQ(channel.pNode, aExpected[i].eKind == K::Other ? nullptr : file.FindNode(strNode));
    }
    EXPECT_EQ(CColladaFile::ParseTargetKind("TRANS.x"), K::TransX);
    EXPECT_EQ(CColladaFile::ParseTargetKind("transform(3)(3)"), K::Other);
    EXPECT_EQ(CColladaFile::TargetKindName(K::RotZ), std::string("RotZ.ANGLE"));

    // Three top-level animations; nested channels belong to their outer one.
    ASSERT_EQ(file.Animations().size(), 3u);
    EXPECT_EQ(file.Animations()[0].aChannels.size(), 7u);
    EXPECT_EQ(file.Animations()[1].aChannels.size(), 6u);
    EXPECT_EQ(file.Animations()[2].aChannels.size(), 7u);
    EXPECT_EQ(file.Channels()[6].iAnimation, 0);
    EXPECT_EQ(file.FindNode("mat")->aChannels, (std::vector<uint32_t>{0, 1, 2, 3}));
    EXPECT_EQ(file.FindNode("maya")->aChannels.size(), 8u);
    EXPECT_EQ(file.FindNode("max")->aChannels.size(), 6u);
}

TEST(ColladaRead, AnimStartShiftsEveryKeyAndClip)
{
    CColladaFile file;
    ASSERT_TRUE(Load(file, ColladaTestDocs::ANIMATIONS));
    EXPECT_EQ(file.m_fAnimStart, 2.0f);
    EXPECT_EQ(file.Channels()[0].afTimes, (std::vector<float>{0.0f, 1.0f}));
    EXPECT_EQ(file.Channels()[0].uStride, 16u);
    EXPECT_EQ(file.Channels()[13].afTimes, (std::vector<float>{0.0f, 0.5f, 2.0f}));
    EXPECT_EQ(file.Channels()[13].afValues, (std::vector<float>{0, 90, 180}));
    ASSERT_EQ(file.AnimationClips().size(), 1u);
    const CColladaFile::AnimationClip& clip = file.AnimationClips()[0];
    EXPECT_EQ(clip.name, "Walk");
    EXPECT_EQ(clip.fStart, 0.0f);
    EXPECT_EQ(clip.fEnd, 1.5f);
    EXPECT_EQ(clip.aAnimations, (std::vector<int32_t>{0, 2, -1}));

    CColladaFile plain;
    ASSERT_TRUE(Load(plain, "<COLLADA><asset><contributor><comments>AnimStart=0.5;AnimEnd=1</comments>"
                            "</contributor></asset></COLLADA>"));
    EXPECT_EQ(plain.m_fAnimStart, 0.5f);
}

TEST(ColladaRead, NodeKeysMergeTheChannelsOfANode)
{
    CColladaFile file;
    ASSERT_TRUE(Load(file, ColladaTestDocs::ANIMATIONS));
    std::vector<CColladaFile::NodeKey> aKeys;

    // The whole matrix, then its translation overwritten member by member.
    file.GetNodeKeys(*file.FindNode("mat"), aKeys);
    ASSERT_EQ(aKeys.size(), 2u);
    EXPECT_EQ(aKeys[0].mTransform.GetTranslation(), (CVec3{0, 0, 0}));
    EXPECT_EQ(aKeys[1].fTime, 1.0f);
    EXPECT_EQ(aKeys[1].mTransform.GetTranslation(), (CVec3{10, 10, 10}));

    // 3ds Max style: translate by sid "Trans", rotations by sids "RotZ", "RotY", "RotX".
    file.GetNodeKeys(*file.FindNode("max"), aKeys);
    ASSERT_EQ(aKeys.size(), 2u);
    CMatrix44 mExpected = CMatrix44::RotationX(ToRadians(4)) * CMatrix44::RotationY(ToRadians(4)) *
                          CMatrix44::RotationZ(ToRadians(4)) * CMatrix44::Translation({4, 4, 4});
    ExpectNear(aKeys[1].mTransform, mExpected);

    // Times of every channel merged; values in between are interpolated, ends held.
    file.GetNodeKeys(*file.FindNode("maya"), aKeys);
    ASSERT_EQ(aKeys.size(), 4u);
    EXPECT_EQ(aKeys[0].fTime, 0.0f);
    EXPECT_EQ(aKeys[1].fTime, 0.5f);
    EXPECT_EQ(aKeys[2].fTime, 1.0f);
    EXPECT_EQ(aKeys[3].fTime, 2.0f);
    ExpectNear(aKeys[1].mTransform.GetTranslation(), {2, 2.5f, 3});
    float fAngle = ToRadians(120);
    mExpected = CMatrix44::Scaling({3, 3, 3}) * CMatrix44::RotationX(fAngle) * CMatrix44::RotationY(fAngle) *
                CMatrix44::RotationZ(fAngle) * CMatrix44::Translation({4, 5, 6});
    ExpectNear(aKeys[2].mTransform, mExpected, 1e-4f);
    ExpectNear(aKeys[3].mTransform.GetTranslation(), {4, 5, 6});

    file.GetNodeKeys(*file.FindNode("blend"), aKeys);
    ASSERT_EQ(aKeys.size(), 2u);
    EXPECT_EQ(aKeys[1].mTransform.GetTranslation(), (CVec3{4, 5, 6}));
    CColladaFile::Node still;
    file.GetNodeKeys(still, aKeys);
    EXPECT_TRUE(aKeys.empty());

    // Key times that are not numbers are left out of the merge.
    CColladaFile odd;
    std::string strOdd = ColladaTestDocs::ANIMATIONS;
    strOdd.replace(strOdd.find("2 2.5 4"), 7, "nan 2.5 nan");
    ASSERT_TRUE(odd.ReadMemory(strOdd.data(), strOdd.size())) << odd.GetError();
    odd.GetNodeKeys(*odd.FindNode("maya"), aKeys);
    ASSERT_EQ(aKeys.size(), 3u);
    EXPECT_EQ(aKeys[1].fTime, 0.5f);

    // Within the clip "walk" (animations "outer" and "rest"), "max" does not move.
    file.GetNodeKeys(*file.FindNode("max"), aKeys, 0);
    EXPECT_TRUE(aKeys.empty());
    file.GetNodeKeys(*file.FindNode("mat"), aKeys, 0);
    EXPECT_EQ(aKeys.size(), 2u);
    file.GetNodeKeys(*file.FindNode("mat"), aKeys, 1);
    EXPECT_TRUE(aKeys.empty());
}

// ---------------------------------------------------------------------------------------
TEST(ColladaRead, NumbersIgnoreTheProcessLocaleAndTakeDecimalCommas)
{
    CColladaFile file;
    ASSERT_TRUE(Load(file, "<COLLADA><asset><unit meter=\"0,01\" name=\"centimeter\"/></asset>"
                           "<library_lights><light id=\"l\"><technique_common><point>"
                           "<color>0,5 +0.25 1e-2</color></point></technique_common></light></library_lights>"
                           "</COLLADA>"));
    EXPECT_EQ(file.m_fUnitMeter, 0.01f);
    EXPECT_EQ(file.m_strUnitName, "centimeter");
    EXPECT_EQ(file.Lights()[0].vColor, (CVec3{0.5f, 0.25f, 0.01f}));
}
