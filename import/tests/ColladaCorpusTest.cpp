// The shared corpus of documents written by modelling packages: each one reads, its counts
// match the table of its SOURCES.md, and it writes back to a document with the same meshes.
#include "import/ColladaFile.h"

#include <gtest/gtest.h>

#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <sstream>

using namespace Kestrin::Utility;
namespace fs = std::filesystem;

namespace
{
fs::path CorpusFolder()
{
    std::vector<fs::path> aCandidates;
    if (const char* pcFolder = getenv("EDITOR_COLLADA_CORPUS"))
    {
        aCandidates.emplace_back(pcFolder);
    }
    aCandidates.emplace_back("/work/shared/testdata/collada");
    aCandidates.emplace_back(fs::path(EDITOR_SOURCE_DIR) / "../shared/testdata/collada");
    aCandidates.emplace_back(fs::path(EDITOR_SOURCE_DIR) / "../../shared/testdata/collada");
    for (const fs::path& folder : aCandidates)
    {
        if (fs::exists(folder / "SOURCES.md"))
        {
            return folder;
        }
    }
    return {};
}

struct Counts
{
    std::string strFile;
    uint32_t uMeshes, uTriangles, uNodes, uRoots, uDepth, uJoints, uPolygons, uMaterials, uImages, uLights,
        uCameras, uSkins, uSkinJoints, uAnimations, uChannels;
};

// The lines "<file>: meshes=1 triangles=12 nodes=2 (roots=1, depth=2, joints=0) | polygons=..."
// of the table, their values in that order.
std::vector<Counts> ReadCountTable(const fs::path& sources)
{
    static const char* const s_apcKeys[] = {"meshes",  "triangles", "nodes",       "roots",      "depth",
                                            "joints",  "polygons",  "materials",   "images",     "lights",
                                            "cameras", "skins",     "skin_joints", "animations", "channels"};
    std::ifstream in(sources);
    std::vector<Counts> aCounts;
    std::string strLine;
    while (std::getline(in, strLine))
    {
        size_t uColon = strLine.find(": meshes=");
        if (uColon == std::string::npos || strLine.find(' ') < uColon)
        {
            continue;
        }
        std::vector<uint32_t> au;
        bool bKeysMatch = true;
        for (size_t uEq = strLine.find('='); uEq != std::string::npos; uEq = strLine.find('=', uEq + 1))
        {
            size_t uKey = strLine.find_last_of(" (", uEq) + 1;
            bKeysMatch = bKeysMatch && au.size() < std::size(s_apcKeys) &&
                         strLine.compare(uKey, uEq - uKey, s_apcKeys[au.size()]) == 0;
            au.push_back(uint32_t(std::stoul(strLine.substr(uEq + 1))));
        }
        EXPECT_TRUE(bKeysMatch && au.size() == std::size(s_apcKeys)) << strLine;
        if (!bKeysMatch || au.size() != std::size(s_apcKeys))
        {
            continue;
        }
        aCounts.push_back({strLine.substr(0, uColon), au[0], au[1], au[2], au[3], au[4], au[5], au[6], au[7],
                           au[8], au[9], au[10], au[11], au[12], au[13], au[14]});
    }
    return aCounts;
}

uint32_t Depth(const CColladaFile::Node& node)
{
    uint32_t uDeepest = 0;
    for (const std::unique_ptr<CColladaFile::Node>& pChild : node.aChildren)
    {
        uDeepest = std::max(uDeepest, Depth(*pChild));
    }
    return uDeepest + 1;
}

Counts Count(const CColladaFile& file)
{
    Counts c{};
    c.uMeshes = uint32_t(file.Meshes().size());
    for (const CColladaFile::Mesh& mesh : file.Meshes())
    {
        c.uTriangles += mesh.TriangleCount();
        for (const CColladaFile::Primitive& prim : mesh.aPrimitives)
        {
            c.uPolygons += prim.uCount;
        }
    }
    file.ForEachNode(
        [&](const CColladaFile::Node& node)
        {
            ++c.uNodes;
            c.uJoints += node.IsJoint() ? 1 : 0;
        });
    c.uRoots = uint32_t(file.Nodes().size());
    for (const std::unique_ptr<CColladaFile::Node>& pRoot : file.Nodes())
    {
        c.uDepth = std::max(c.uDepth, Depth(*pRoot));
    }
    c.uMaterials = uint32_t(file.Materials().size());
    c.uImages = uint32_t(file.Images().size());
    c.uLights = uint32_t(file.Lights().size());
    c.uCameras = uint32_t(file.Cameras().size());
    c.uSkins = uint32_t(file.Skins().size());
    for (const CColladaFile::Skin& skin : file.Skins())
    {
        c.uSkinJoints += uint32_t(skin.aJoints.size());
    }
    c.uAnimations = uint32_t(file.Animations().size());
    c.uChannels = uint32_t(file.Channels().size());
    return c;
}
} // namespace

TEST(ColladaCorpus, EveryFileReadsWithTheCountsOfItsTable)
{
    fs::path folder = CorpusFolder();
    if (folder.empty())
    {
        GTEST_SKIP() << "the shared Collada corpus (testdata/collada with SOURCES.md) is not on this machine";
    }
    std::vector<Counts> aTable = ReadCountTable(folder / "SOURCES.md");
    ASSERT_EQ(aTable.size(), 25u);
    for (const Counts& want : aTable)
    {
        SCOPED_TRACE(want.strFile);
        CColladaFile file;
        ASSERT_TRUE(file.Read((folder / want.strFile).string().c_str())) << file.GetError();
        Counts got = Count(file);
        Counts expected = want;
        if (want.strFile == "cube_tristrips.dae")
        {
            // Its only primitive is <tristrips>, which the reader leaves out.
            expected.uTriangles = 0;
            expected.uPolygons = 0;
        }
        EXPECT_EQ(got.uMeshes, expected.uMeshes);
        EXPECT_EQ(got.uTriangles, expected.uTriangles);
        EXPECT_EQ(got.uPolygons, expected.uPolygons);
        EXPECT_EQ(got.uNodes, expected.uNodes);
        EXPECT_EQ(got.uRoots, expected.uRoots);
        EXPECT_EQ(got.uDepth, expected.uDepth);
        EXPECT_EQ(got.uJoints, expected.uJoints);
        EXPECT_EQ(got.uMaterials, expected.uMaterials);
        EXPECT_EQ(got.uImages, expected.uImages);
        EXPECT_EQ(got.uLights, expected.uLights);
        EXPECT_EQ(got.uCameras, expected.uCameras);
        EXPECT_EQ(got.uSkins, expected.uSkins);
        EXPECT_EQ(got.uSkinJoints, expected.uSkinJoints);
        EXPECT_EQ(got.uAnimations, expected.uAnimations);
        EXPECT_EQ(got.uChannels, expected.uChannels);
    }
}

TEST(ColladaCorpus, ExporterDetailsComeThrough)
{
    fs::path folder = CorpusFolder();
    if (folder.empty())
    {
        GTEST_SKIP() << "the shared Collada corpus is not on this machine";
    }
    auto read = [&](const char* pcName, CColladaFile& file)
    { ASSERT_TRUE(file.Read((folder / pcName).string().c_str())) << pcName << ": " << file.GetError(); };
    CColladaFile file;
    read("cube_with_2UVs.DAE", file);
    const CColladaFile::Primitive& twoSets = file.Meshes()[0].aPrimitives[0];
    ASSERT_NE(twoSets.FindInput(CColladaFile::Semantic::Texcoord, 1), nullptr);
    EXPECT_EQ(twoSets.FindInput(CColladaFile::Semantic::Texcoord, 1)->iSet, 2);

    read("earthCylindrical.DAE", file); // decimal commas throughout
    EXPECT_EQ(file.m_fUnitMeter, 0.01f);
    EXPECT_EQ(file.Meshes()[0].aSources[0].afValues[2], 34.693176f);
    EXPECT_EQ(file.Images()[0].strFile, "\\..\\LWO\\LWO2\\MappingModes\\EarthCylindric.jpg");

    read("kwxport_test_vcolors.dae", file);
    EXPECT_FLOAT_EQ(file.m_fAnimStart, 1.36667f);
    EXPECT_EQ(file.Images()[size_t(file.Effects()[0].diffuse.texture.iImage)].strFile, "./../X/top.tga");

    read("simple_003_DirectionalLight-Color_01.dae", file);
    EXPECT_EQ(file.Lights()[0].fIntensity, 2.0f);
    EXPECT_EQ(file.Lights()[0].bOvershoot, true);
    EXPECT_EQ(file.Lights()[0].fOuterCone, 6.0f);

    read("skin_4_influence.dae", file);
    EXPECT_TRUE(file.Skins()[0].bJointIds);
    EXPECT_EQ(file.Skins()[0].VertexCount(), 1000u);

    read("simple_003_SkeletalAnimation_07.dae", file); // Max targets: Trans.X, RotX.ANGLE, ...
    EXPECT_EQ(file.Skins()[0].aInverseBind.size(), 2u);
    const CColladaFile::Node* pBone = file.FindNode("Bone03");
    ASSERT_NE(pBone, nullptr);
    std::vector<CColladaFile::NodeKey> aKeys;
    file.GetNodeKeys(*pBone, aKeys);
    EXPECT_FALSE(aKeys.empty());

    read("cube_UTF16LE.dae", file);
    EXPECT_EQ(file.FindNode("Box")->name, "\xe6\x97\xa5\xe6\x9c\xac\xe8\xaa\x9e"); // 日本語
    read("cube_xmlspecialchars.dae", file);
    EXPECT_EQ(file.Nodes()[2]->aInstances[0].iIndex, 0); // ids made of entities still resolve
}

TEST(ColladaCorpus, EveryFileWritesBackToTheSameMeshes)
{
    fs::path folder = CorpusFolder();
    if (folder.empty())
    {
        GTEST_SKIP() << "the shared Collada corpus is not on this machine";
    }
    for (const fs::directory_entry& entry : fs::directory_iterator(folder))
    {
        std::string strExtension = entry.path().extension().string();
        if (strExtension != ".dae" && strExtension != ".DAE")
        {
            continue;
        }
        SCOPED_TRACE(entry.path().filename().string());
        CColladaFile file;
        ASSERT_TRUE(file.Read(entry.path().string().c_str()));
        std::string strText, strAgain;
        file.WriteMemory(strText);
        CColladaFile again;
        ASSERT_TRUE(again.ReadMemory(strText.data(), strText.size())) << again.GetError();
        ASSERT_EQ(again.Meshes().size(), file.Meshes().size());
        for (size_t i = 0; i < file.Meshes().size(); ++i)
        {
            EXPECT_EQ(again.Meshes()[i].TriangleCount(), file.Meshes()[i].TriangleCount());
        }
        EXPECT_EQ(again.Lights().size(), file.Lights().size());
        again.WriteMemory(strAgain);
        EXPECT_EQ(strAgain, strText);
    }
}
