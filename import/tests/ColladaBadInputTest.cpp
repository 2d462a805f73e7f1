// Bad input: every broken document fails with its message and leaves the object as it was.
#include "import/ColladaFile.h"
#include "import/tests/ColladaTestDocs.h"

#include <gtest/gtest.h>

#include <cstring>
#include <filesystem>
#include <fstream>
#include <string>
#include <unistd.h>

using namespace Kestrin::Utility;

namespace
{
// A mesh of three positions around the given primitive text.
std::string Mesh(const std::string& strPrimitive, const char* pcPositions = "0 0 0 1 0 0 0 1 0",
                 const char* pcArrayCount = "9", const char* pcAccessorCount = "3")
{
    return std::string("<COLLADA><library_geometries><geometry id=\"g\"><mesh>"
                       "<source id=\"g-pos\"><float_array id=\"g-pos-a\" count=\"") +
           pcArrayCount + "\">" + pcPositions +
           "</float_array><technique_common><accessor source=\"#g-pos-a\" count=\"" + pcAccessorCount +
           "\" stride=\"3\"/></technique_common></source>"
           "<source id=\"g-uv\"><float_array id=\"g-uv-a\" count=\"2\">0 1</float_array>"
           "<technique_common><accessor source=\"#g-uv-a\" count=\"1\" "
           "stride=\"2\"/></technique_common></source>"
           "<vertices id=\"g-v\"><input semantic=\"POSITION\" source=\"#g-pos\"/></vertices>" +
           strPrimitive + "</mesh></geometry></library_geometries></COLLADA>";
}

const char* const VERTEX = "<input semantic=\"VERTEX\" source=\"#g-v\" offset=\"0\"/>";

// strText with its first strFrom replaced.
std::string Replaced(std::string strText, const std::string& strFrom, const std::string& strTo)
{
    size_t uAt = strText.find(strFrom);
    EXPECT_NE(uAt, std::string::npos) << strFrom;
    return uAt == std::string::npos ? strText : strText.replace(uAt, strFrom.size(), strTo);
}

std::string ReadError(const std::string& strText)
{
    CColladaFile file;
    EXPECT_FALSE(file.ReadMemory(strText.data(), strText.size())) << strText;
    return file.GetError();
}
} // namespace

TEST(ColladaBadInput, TheTestMeshItselfReads)
{
    CColladaFile file;
    std::string strText = Mesh(std::string("<triangles count=\"1\">") + VERTEX + "<p>0 1 2</p></triangles>");
    ASSERT_TRUE(file.ReadMemory(strText.data(), strText.size())) << file.GetError();
    EXPECT_EQ(file.Meshes()[0].TriangleCount(), 1u);
}

TEST(ColladaBadInput, IndicesPastTheEndOfASource)
{
    EXPECT_EQ(
        ReadError(Mesh(std::string("<triangles count=\"1\">") + VERTEX + "<p>0 1 3</p></triangles>")),
        "geometry 'g': triangles input POSITION index 3 is past the end of source 'g-pos' (3 elements)");
    EXPECT_EQ(ReadError(Mesh(std::string("<polylist count=\"1\">") + VERTEX +
                             "<input semantic=\"TEXCOORD\" source=\"#g-uv\" offset=\"1\" set=\"0\"/>"
                             "<vcount>3</vcount><p>0 0 1 0 2 1</p></polylist>")),
              "geometry 'g': polylist input TEXCOORD index 1 is past the end of source 'g-uv' (1 elements)");
    EXPECT_EQ(ReadError(Mesh(std::string("<triangles count=\"1\">") + VERTEX +
                             "<p>0 1 4294967296</p></triangles>")),
              "geometry 'g': triangles <p> holds \"4294967296\", not an index");
    EXPECT_EQ(ReadError(Mesh(std::string("<triangles count=\"1\">") + VERTEX + "<p>0 1 -2</p></triangles>")),
              "geometry 'g': triangles <p> holds \"-2\", not an index");
}

TEST(ColladaBadInput, CountsThatDisagreeWithTheirArrays)
{
    EXPECT_EQ(ReadError(Mesh("", "0 0 0 1 0 0 0 1 0", "10")),
              "geometry 'g': source 'g-pos': <float_array> count 10 disagrees with its 9 numbers");
    EXPECT_EQ(ReadError(Mesh("", "0 0 0 1 0 0 0 1 0", "9", "4")),
              "geometry 'g': source 'g-pos': accessor of 4 elements of stride 3 reads past its 9 numbers");
    EXPECT_EQ(ReadError(Mesh(std::string("<triangles count=\"2\">") + VERTEX + "<p>0 1 2</p></triangles>")),
              "geometry 'g': triangles of 2 faces needs 6 indices, <p> has 3");
    EXPECT_EQ(ReadError(Mesh(std::string("<polylist count=\"2\">") + VERTEX +
                             "<vcount>3</vcount><p>0 1 2</p></polylist>")),
              "geometry 'g': polylist count 2 disagrees with its 1 vcount entries");
    EXPECT_EQ(ReadError(Mesh(std::string("<polylist count=\"1\">") + VERTEX +
                             "<vcount>4</vcount><p>0 1 2</p></polylist>")),
              "geometry 'g': polylist of 1 faces needs 4 indices, <p> has 3");
    EXPECT_EQ(ReadError(Mesh(std::string("<polygons count=\"2\">") + VERTEX + "<p>0 1 2</p></polygons>")),
              "geometry 'g': polygons count 2 disagrees with its 1 faces");
    EXPECT_EQ(ReadError(Mesh(
                  std::string("<polygons count=\"1\">") + VERTEX +
                  "<input semantic=\"TEXCOORD\" source=\"#g-uv\" offset=\"1\"/><p>0 0 1 0 2</p></polygons>")),
              "geometry 'g': polygons <p> of 5 indices is not whole corners of 2");
    EXPECT_EQ(ReadError(Mesh("<triangles count=\"1\"><p>0 1 2</p></triangles>")),
              "geometry 'g': triangles has indices but no inputs");
    EXPECT_EQ(ReadError(Mesh("", "0 0 0 1 0 0 0 1 zero")),
              "geometry 'g': source 'g-pos': <float_array> holds \"zero\", not a number");
    EXPECT_EQ(ReadError(Mesh("<triangles count=\"-1\"/>")),
              "<triangles> has count=\"-1\", not a number from 0 to 4294967295");
    EXPECT_EQ(
        ReadError(Mesh("<triangles count=\"0\"><input semantic=\"VERTEX\" source=\"#g-v\" offset=\"65\"/>"
                       "</triangles>")),
        "<input> has offset=\"65\", not a number from 0 to 64");
}

TEST(ColladaBadInput, MissingReferencesInsideAMesh)
{
    EXPECT_EQ(ReadError(Mesh(std::string("<triangles count=\"1\">") + VERTEX +
                             "<input semantic=\"NORMAL\" source=\"#nothing\" offset=\"1\"/>"
                             "<p>0 0 1 0 2 0</p></triangles>")),
              "geometry 'g': triangles input NORMAL names source '#nothing', which the mesh lacks");
    EXPECT_EQ(ReadError(Mesh(
                  "<triangles count=\"0\"><input semantic=\"VERTEX\" source=\"#elsewhere\" offset=\"0\"/>"
                  "</triangles>")),
              "geometry 'g': VERTEX input names '#elsewhere', not the mesh's vertices");
    EXPECT_EQ(ReadError(Replaced(Mesh(""), "#g-pos\"/></vertices>", "#g-po\"/></vertices>")),
              "geometry 'g': vertices input POSITION names source '#g-po', which the mesh lacks");
}

TEST(ColladaBadInput, SkinsWithBrokenInfluences)
{
    std::string strSkins = ColladaTestDocs::SKINS;
    std::string strText = Replaced(strSkins, "1 3 -1 3", "1 3 -1 4");
    EXPECT_EQ(ReadError(strText), "skin 'body-skin': influence 4 has joint -1 of 2 or weight 4 of 4");
    strText = Replaced(strSkins, "1 3 -1 3", "1 3 2 3");
    EXPECT_EQ(ReadError(strText), "skin 'body-skin': influence 4 has joint 2 of 2 or weight 3 of 4");
    strText = Replaced(strSkins, "<vcount>1 2 2</vcount>", "<vcount>1 2 3</vcount>");
    EXPECT_EQ(ReadError(strText), "skin 'body-skin': 6 influences need 12 numbers in <v>, it has 10");
    strText = Replaced(strSkins, "count=\"2\">hip knee", "count=\"3\">hip knee");
    EXPECT_EQ(ReadError(strText), "skin 'body-skin': joint count 3 disagrees with its 2 names");
    strText = Replaced(strSkins, "count=\"2\" stride=\"16\"", "count=\"1\" stride=\"16\"");
    EXPECT_EQ(ReadError(strText), "skin 'body-skin': 1 inverse bind matrices of stride 16 for 2 joints");
    strText = Replaced(strSkins, "#body-joints\"/>", "#no-joints\"/>");
    EXPECT_EQ(ReadError(strText),
              "skin 'body-skin': the JOINT input names no source with a Name_array or IDREF_array");
}

TEST(ColladaBadInput, BrokenAnimations)
{
    std::string strAnimations = ColladaTestDocs::ANIMATIONS;
    std::string strText = Replaced(strAnimations, "source=\"#ms\" target=\"max/Trans.X\"",
                                   "source=\"#mz\" target=\"max/Trans.X\"");
    EXPECT_EQ(ReadError(strText), "channel 'max/Trans.X': sampler '#mz' not found");
    strText = Replaced(strAnimations, "count=\"2\">0 4", "count=\"3\">0 4 8");
    EXPECT_EQ(ReadError(strText), "channel 'max/Trans.X': 2 key times but 3 values");
    strText = Replaced(strAnimations, "source=\"#mv\"", "source=\"#mw\"");
    EXPECT_EQ(ReadError(strText), "channel 'max/Trans.X': OUTPUT source '#mw' not found");
    strText = Replaced(strAnimations, "target=\"mat/transform\"", "target=\"mat/transform(3)(0)\"");
    EXPECT_EQ(ReadError(strText), "channel 'mat/transform(3)(0)' needs 1 values a key, its output has 16");
}

TEST(ColladaBadInput, CyclicAndDeepNodes)
{
    EXPECT_EQ(ReadError("<COLLADA><library_visual_scenes><visual_scene id=\"s\">"
                        "<node id=\"a\"><node id=\"b\"><instance_node url=\"#a\"/></node></node>"
                        "</visual_scene></library_visual_scenes></COLLADA>"),
              "node 'a' instances itself through instance_node");
    EXPECT_EQ(ReadError("<COLLADA><library_nodes><node id=\"x\"><instance_node url=\"#y\"/></node>"
                        "<node id=\"y\"><instance_node url=\"#x\"/></node></library_nodes></COLLADA>"),
              "node 'x' instances itself through instance_node");
    std::string strDeep = "<COLLADA><library_visual_scenes><visual_scene>";
    for (int i = 0; i < 600; ++i)
    {
        strDeep += "<node>";
    }
    for (int i = 0; i < 600; ++i)
    {
        strDeep += "</node>";
    }
    strDeep += "</visual_scene></library_visual_scenes></COLLADA>";
    EXPECT_EQ(ReadError(strDeep), "nodes are nested deeper than 512");
    EXPECT_EQ(ReadError("<COLLADA><library_visual_scenes><visual_scene><node id=\"n\"><matrix>1 0 0</matrix>"
                        "</node></visual_scene></library_visual_scenes></COLLADA>"),
              "node 'n': <matrix> needs 16 numbers");
}

TEST(ColladaBadInput, DocumentsThatAreNotCollada)
{
    EXPECT_EQ(ReadError("<COLLADA><library_geometries><geometry>"),
              "not XML: Start-end tags mismatch at byte 38");
    EXPECT_EQ(ReadError(""), "not XML: No document element found at byte 0");
    EXPECT_EQ(ReadError(std::string("\x89PNG\r\n\x1a\n\0\0\0", 11)),
              "not XML: No document element found at byte 11");
    EXPECT_EQ(ReadError("<?xml version=\"1.0\"?><scene><node/></scene>"),
              "not a Collada document (its root element is <scene>)");
    CColladaFile file;
    EXPECT_FALSE(file.Read("/nonexistent/folder/model.dae"));
    EXPECT_EQ(file.GetError(), "cannot open the file");

    // The same from files: the buffer the document took over is freed on failure too.
    std::filesystem::path folder =
        std::filesystem::temp_directory_path() / ("collada_bad_" + std::to_string(getpid()));
    std::filesystem::create_directories(folder);
    const struct
    {
        const char* pcName;
        std::string strBytes;
        const char* pcError;
    } aFiles[] = {
        {"empty.dae", "", "not XML: No document element found at byte 0"},
        {"cut.dae", "<COLLADA><asset><up_axis>Z_UP</up", "not XML: Start-end tags mismatch at byte 31"},
        {"other.dae", "<xml/>", "not a Collada document (its root element is <xml>)"},
    };
    for (const auto& bad : aFiles)
    {
        std::string strPath = (folder / bad.pcName).string();
        std::ofstream(strPath, std::ios::binary) << bad.strBytes;
        EXPECT_FALSE(file.Read(strPath.c_str())) << bad.pcName;
        EXPECT_EQ(file.GetError(), bad.pcError);
    }
    std::filesystem::remove_all(folder);
}

TEST(ColladaBadInput, AFailedReadLeavesTheObjectAsItWas)
{
    CColladaFile file;
    ASSERT_TRUE(file.ReadMemory(ColladaTestDocs::NODES, strlen(ColladaTestDocs::NODES)));
    std::string strBad = Mesh(std::string("<triangles count=\"1\">") + VERTEX + "<p>0 1 9</p></triangles>");
    EXPECT_FALSE(file.ReadMemory(strBad.data(), strBad.size()));
    EXPECT_EQ(file.upAxis, CColladaFile::Z_UP);
    EXPECT_EQ(file.Nodes().size(), 3u);
    EXPECT_EQ(file.Meshes()[0].id, "box");
    EXPECT_NE(file.FindNode("child"), nullptr);
    EXPECT_FALSE(file.GetError().empty());
    EXPECT_STREQ(file.GetDocument().document_element().name(), "COLLADA");
}

TEST(ColladaBadInput, Utf16DocumentsAreDecoded)
{
    const char* pcText = "<COLLADA><asset><up_axis>Z_UP</up_axis></asset></COLLADA>";
    std::string strUtf16 = "\xff\xfe";
    for (const char* p = pcText; *p; ++p)
    {
        strUtf16 += *p;
        strUtf16 += '\0';
    }
    CColladaFile file;
    ASSERT_TRUE(file.ReadMemory(strUtf16.data(), strUtf16.size())) << file.GetError();
    EXPECT_EQ(file.upAxis, CColladaFile::Z_UP);
}
