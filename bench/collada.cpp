// Collada reading: CColladaFile against Assimp (no post-processing), both from the same bytes
// in memory, on two generated documents:
//   static:  100,000 triangles with normals and two texture-coordinate sets, 200 meshes under
//            200 nodes (groups of ten);
//   skinned: a character of 60 joints, 20,000 triangles with four influences a vertex, and two
//            takes (animation clips) of 30 matrix keys a joint.
#include "import/ColladaFile.h"

#include "Utils/Utility/GUtDebug.h"

#include <assimp/Importer.hpp>
#include <assimp/scene.h>
#include <benchmark/benchmark.h>

#include <cmath>
#include <cstdio>
#include <string>

using Kestrin::Utility::CColladaFile;

namespace
{
// Numbers as exporters print them: six significant digits.
void Num(std::string& str, double d)
{
    char ac[32];
    snprintf(ac, sizeof(ac), "%g ", d);
    str += ac;
}

void Int(std::string& str, uint32_t u)
{
    str += std::to_string(u);
    str += ' ';
}

void Source(std::string& str, const std::string& strId, const std::vector<double>& ad, uint32_t uStride)
{
    str += "<source id=\"" + strId + "\"><float_array id=\"" + strId + "-array\" count=\"" +
           std::to_string(ad.size()) + "\">";
    for (double d : ad)
    {
        Num(str, d);
    }
    str += "</float_array><technique_common><accessor source=\"#" + strId + "-array\" count=\"" +
           std::to_string(ad.size() / uStride) + "\" stride=\"" + std::to_string(uStride) + "\">";
    static const char* const s_apcNames[] = {"X", "Y", "Z", "W"};
    for (uint32_t i = 0; i < uStride && uStride <= 4; ++i)
    {
        str += std::string("<param name=\"") + s_apcNames[i] + "\" type=\"float\"/>";
    }
    if (uStride == 16)
    {
        str += "<param name=\"TRANSFORM\" type=\"float4x4\"/>";
    }
    str += "</accessor></technique_common></source>\n";
}

// A strip of two rows: uColumns + 1 vertices a row, two triangles a column.
void StripMesh(std::string& str, const std::string& strId, uint32_t uColumns, bool bTwoSets, double dOffset)
{
    std::vector<double> adPos, adNrm, adUv0, adUv1;
    for (uint32_t r = 0; r < 2; ++r)
    {
        for (uint32_t c = 0; c <= uColumns; ++c)
        {
            double a = c * 0.05 + dOffset;
            adPos.insert(adPos.end(), {std::cos(a) * 10.0, std::sin(a) * 10.0, r * 25.0 + dOffset});
            adNrm.insert(adNrm.end(), {std::cos(a), std::sin(a), 0.0});
            adUv0.insert(adUv0.end(), {double(c) / uColumns, double(r)});
            adUv1.insert(adUv1.end(), {0.5 * c / uColumns + 0.25, 0.5 * r + 0.25});
        }
    }
    str += "<geometry id=\"" + strId + "\" name=\"" + strId + "\"><mesh>\n";
    Source(str, strId + "-pos", adPos, 3);
    Source(str, strId + "-nrm", adNrm, 3);
    Source(str, strId + "-uv0", adUv0, 2);
    if (bTwoSets)
    {
        Source(str, strId + "-uv1", adUv1, 2);
    }
    str += "<vertices id=\"" + strId + "-vtx\"><input semantic=\"POSITION\" source=\"#" + strId +
           "-pos\"/></vertices>\n";
    str += "<triangles material=\"mat\" count=\"" + std::to_string(uColumns * 2) + "\">";
    str += "<input semantic=\"VERTEX\" source=\"#" + strId + "-vtx\" offset=\"0\"/>";
    str += "<input semantic=\"NORMAL\" source=\"#" + strId + "-nrm\" offset=\"1\"/>";
    str += "<input semantic=\"TEXCOORD\" source=\"#" + strId + "-uv0\" offset=\"2\" set=\"0\"/>";
    if (bTwoSets)
    {
        str += "<input semantic=\"TEXCOORD\" source=\"#" + strId + "-uv1\" offset=\"3\" set=\"1\"/>";
    }
    str += "<p>";
    uint32_t uInputs = bTwoSets ? 4 : 3;
    for (uint32_t c = 0; c < uColumns; ++c)
    {
        uint32_t a = c, b = c + 1, d = c + uColumns + 1, e = c + uColumns + 2;
        for (uint32_t v : {a, b, e, a, e, d})
        {
            for (uint32_t i = 0; i < uInputs; ++i)
            {
                Int(str, v);
            }
        }
    }
    str += "</p></triangles>\n</mesh></geometry>\n";
}

const char* const HEADER =
    "<?xml version=\"1.0\" encoding=\"utf-8\"?>\n"
    "<COLLADA xmlns=\"http://www.collada.org/2005/11/COLLADASchema\" version=\"1.4.1\">\n"
    "<asset><unit name=\"meter\" meter=\"1\"/><up_axis>Z_UP</up_axis></asset>\n"
    "<library_images><image id=\"img\"><init_from>wall.tga</init_from></image></library_images>\n"
    "<library_effects><effect id=\"mat-fx\"><profile_COMMON>"
    "<newparam sid=\"s\"><surface type=\"2D\"><init_from>img</init_from></surface></newparam>"
    "<newparam sid=\"t\"><sampler2D><source>s</source></sampler2D></newparam>"
    "<technique sid=\"common\"><phong><diffuse><texture texture=\"t\" texcoord=\"UV0\"/>"
    "</diffuse></phong></technique></profile_COMMON></effect></library_effects>\n"
    "<library_materials><material id=\"mat\"><instance_effect url=\"#mat-fx\"/></material>"
    "</library_materials>\n";

const char* const BIND = "<bind_material><technique_common><instance_material symbol=\"mat\" target=\"#mat\">"
                         "<bind_vertex_input semantic=\"UV0\" input_semantic=\"TEXCOORD\" input_set=\"0\"/>"
                         "</instance_material></technique_common></bind_material>";

std::string StaticScene()
{
    std::string str = HEADER;
    str += "<library_geometries>\n";
    for (uint32_t m = 0; m < 200; ++m)
    {
        StripMesh(str, "mesh" + std::to_string(m), 250, true, m * 0.01);
    }
    str += "</library_geometries>\n<library_visual_scenes><visual_scene id=\"scene\">\n";
    for (uint32_t g = 0; g < 20; ++g)
    {
        str += "<node id=\"group" + std::to_string(g) + "\"><translate>" + std::to_string(g * 30) +
               " 0 0</translate>";
        str += "<rotate>0 0 1 " + std::to_string(g * 7) + "</rotate>\n";
        for (uint32_t i = 0; i < 10; ++i)
        {
            uint32_t m = g * 10 + i;
            str += "<node id=\"node" + std::to_string(m) + "\"><translate>0 " + std::to_string(i * 30) +
                   " 0</translate><instance_geometry url=\"#mesh" + std::to_string(m) + "\">" + BIND +
                   "</instance_geometry></node>\n";
        }
        str += "</node>\n";
    }
    str += "</visual_scene></library_visual_scenes>\n<scene><instance_visual_scene "
           "url=\"#scene\"/></scene>\n</COLLADA>\n";
    return str;
}

void Matrix(std::string& str, double dX, double dY, double dZ, double dAngle)
{
    double c = std::cos(dAngle), s = std::sin(dAngle);
    for (double d : {c, -s, 0.0, dX, s, c, 0.0, dY, 0.0, 0.0, 1.0, dZ, 0.0, 0.0, 0.0, 1.0})
    {
        Num(str, d);
    }
}

std::string SkinnedCharacter()
{
    constexpr uint32_t JOINTS = 60, COLUMNS = 10000, KEYS = 30;
    std::string str = HEADER;
    str += "<library_geometries>\n";
    StripMesh(str, "body", COLUMNS, false, 0.0);
    str += "</library_geometries>\n<library_controllers><controller id=\"body-skin\"><skin source=\"#body\">"
           "<bind_shape_matrix>1 0 0 0 0 1 0 0 0 0 1 0 0 0 0 1</bind_shape_matrix>\n";
    str += "<source id=\"joints\"><Name_array id=\"joints-array\" count=\"" + std::to_string(JOINTS) + "\">";
    for (uint32_t j = 0; j < JOINTS; ++j)
    {
        str += "joint" + std::to_string(j) + " ";
    }
    str += "</Name_array><technique_common><accessor source=\"#joints-array\" count=\"" +
           std::to_string(JOINTS) +
           "\"><param name=\"JOINT\" type=\"name\"/></accessor></technique_common></source>\n";
    std::vector<double> adBind;
    for (uint32_t j = 0; j < JOINTS; ++j)
    {
        adBind.insert(adBind.end(), {1, 0, 0, 0, 0, 1, 0, 0, 0, 0, 1, -double(j), 0, 0, 0, 1});
    }
    Source(str, "bind", adBind, 16);
    Source(str, "weights", {0.4, 0.3, 0.2, 0.1}, 1);
    str += "<joints><input semantic=\"JOINT\" source=\"#joints\"/><input semantic=\"INV_BIND_MATRIX\" "
           "source=\"#bind\"/></joints>\n";
    uint32_t uVertices = (COLUMNS + 1) * 2;
    str += "<vertex_weights count=\"" + std::to_string(uVertices) +
           "\"><input semantic=\"JOINT\" "
           "source=\"#joints\" offset=\"0\"/><input semantic=\"WEIGHT\" source=\"#weights\" "
           "offset=\"1\"/><vcount>";
    for (uint32_t v = 0; v < uVertices; ++v)
    {
        str += "4 ";
    }
    str += "</vcount><v>";
    for (uint32_t v = 0; v < uVertices; ++v)
    {
        for (uint32_t i = 0; i < 4; ++i)
        {
            Int(str, (v / 700 + i) % JOINTS);
            Int(str, i);
        }
    }
    str += "</v></vertex_weights></skin></controller></library_controllers>\n";

    // Two takes: keys 0..29 and 30..59 of every joint's matrix, one clip each.
    str += "<library_animations>\n";
    for (uint32_t t = 0; t < 2; ++t)
    {
        for (uint32_t j = 0; j < JOINTS; ++j)
        {
            std::string strId = "take" + std::to_string(t) + "-joint" + std::to_string(j);
            str += "<animation id=\"" + strId + "\">";
            std::vector<double> adTimes;
            for (uint32_t k = 0; k < KEYS; ++k)
            {
                adTimes.push_back((t * KEYS + k) / 30.0);
            }
            Source(str, strId + "-time", adTimes, 1);
            str += "<source id=\"" + strId + "-out\"><float_array id=\"" + strId + "-out-array\" count=\"" +
                   std::to_string(KEYS * 16) + "\">";
            for (uint32_t k = 0; k < KEYS; ++k)
            {
                Matrix(str, 0, 0, 1, 0.01 * k * (t + 1));
            }
            str += "</float_array><technique_common><accessor source=\"#" + strId + "-out-array\" count=\"" +
                   std::to_string(KEYS) +
                   "\" stride=\"16\"><param name=\"TRANSFORM\" type=\"float4x4\"/>"
                   "</accessor></technique_common></source>";
            str += "<source id=\"" + strId + "-interp\"><Name_array id=\"" + strId +
                   "-interp-array\" count=\"" + std::to_string(KEYS) + "\">";
            for (uint32_t k = 0; k < KEYS; ++k)
            {
                str += "LINEAR ";
            }
            str += "</Name_array><technique_common><accessor source=\"#" + strId +
                   "-interp-array\" count=\"" + std::to_string(KEYS) +
                   "\"><param name=\"INTERPOLATION\" type=\"name\"/></accessor>"
                   "</technique_common></source>";
            str += "<sampler id=\"" + strId + "-sampler\"><input semantic=\"INPUT\" source=\"#" + strId +
                   "-time\"/><input semantic=\"OUTPUT\" source=\"#" + strId +
                   "-out\"/><input "
                   "semantic=\"INTERPOLATION\" source=\"#" +
                   strId + "-interp\"/></sampler>";
            str += "<channel source=\"#" + strId + "-sampler\" target=\"joint" + std::to_string(j) +
                   "/transform\"/></animation>\n";
        }
    }
    str += "</library_animations>\n<library_animation_clips>\n";
    for (uint32_t t = 0; t < 2; ++t)
    {
        str += "<animation_clip id=\"take" + std::to_string(t) + "\" start=\"" + std::to_string(t) +
               "\" end=\"" + std::to_string(t + 1) + "\">";
        for (uint32_t j = 0; j < JOINTS; ++j)
        {
            str +=
                "<instance_animation url=\"#take" + std::to_string(t) + "-joint" + std::to_string(j) + "\"/>";
        }
        str += "</animation_clip>\n";
    }
    str += "</library_animation_clips>\n<library_visual_scenes><visual_scene id=\"scene\">\n";
    // A spine of 20 joints with two arms of 20 hanging off its tenth joint.
    auto open = [&](uint32_t j)
    {
        str += "<node id=\"joint" + std::to_string(j) + "\" sid=\"joint" + std::to_string(j) +
               "\" name=\"joint" + std::to_string(j) + "\" type=\"JOINT\"><matrix sid=\"transform\">";
        Matrix(str, 0, 0, 1, 0.0);
        str += "</matrix>\n";
    };
    auto chain = [&](uint32_t uFirst, uint32_t uCount)
    {
        for (uint32_t j = uFirst; j < uFirst + uCount; ++j)
        {
            open(j);
        }
        for (uint32_t j = 0; j < uCount; ++j)
        {
            str += "</node>";
        }
        str += "\n";
    };
    for (uint32_t j = 0; j < 10; ++j)
    {
        open(j);
    }
    chain(20, 20);
    chain(40, 20);
    chain(10, 10);
    for (uint32_t j = 0; j < 10; ++j)
    {
        str += "</node>";
    }
    str += "<node id=\"body-node\"><instance_controller url=\"#body-skin\"><skeleton>#joint0</skeleton>" +
           std::string(BIND) + "</instance_controller></node>\n";
    str += "</visual_scene></library_visual_scenes>\n<scene><instance_visual_scene url=\"#scene\"/></scene>\n"
           "</COLLADA>\n";
    return str;
}

const std::string& Document(int iWhich)
{
    static const std::string s_strStatic = StaticScene();
    static const std::string s_strSkinned = SkinnedCharacter();
    return iWhich == 0 ? s_strStatic : s_strSkinned;
}

void ReadOurs(benchmark::State& state, int iWhich)
{
    const std::string& strText = Document(iWhich);
    size_t uTriangles = 0;
    for (auto _ : state)
    {
        CColladaFile file;
        if (!file.ReadMemory(strText.data(), strText.size()))
        {
            state.SkipWithError(file.GetError().c_str());
            return;
        }
        uTriangles = 0;
        for (const CColladaFile::Mesh& mesh : file.Meshes())
        {
            uTriangles += mesh.TriangleCount();
        }
        benchmark::DoNotOptimize(uTriangles);
    }
    state.counters["triangles"] = double(uTriangles);
    state.counters["MB"] = double(strText.size()) / 1e6;
}

void ReadAssimp(benchmark::State& state, int iWhich)
{
    const std::string& strText = Document(iWhich);
    Assimp::Importer importer;
    size_t uTriangles = 0;
    for (auto _ : state)
    {
        const aiScene* pScene = importer.ReadFileFromMemory(strText.data(), strText.size(), 0, "dae");
        if (!pScene)
        {
            state.SkipWithError(importer.GetErrorString());
            return;
        }
        uTriangles = 0;
        for (unsigned i = 0; i < pScene->mNumMeshes; ++i)
        {
            uTriangles += pScene->mMeshes[i]->mNumFaces;
        }
        benchmark::DoNotOptimize(uTriangles);
        importer.FreeScene();
    }
    state.counters["triangles"] = double(uTriangles);
}

void BM_ColladaStatic_Ours(benchmark::State& state)
{
    ReadOurs(state, 0);
}
void BM_ColladaStatic_Assimp(benchmark::State& state)
{
    ReadAssimp(state, 0);
}
void BM_ColladaSkinned_Ours(benchmark::State& state)
{
    ReadOurs(state, 1);
}
void BM_ColladaSkinned_Assimp(benchmark::State& state)
{
    ReadAssimp(state, 1);
}
} // namespace

BENCHMARK(BM_ColladaStatic_Ours)->Unit(benchmark::kMillisecond);
BENCHMARK(BM_ColladaStatic_Assimp)->Unit(benchmark::kMillisecond);
BENCHMARK(BM_ColladaSkinned_Ours)->Unit(benchmark::kMillisecond);
BENCHMARK(BM_ColladaSkinned_Assimp)->Unit(benchmark::kMillisecond);

BENCHMARK_MAIN();
