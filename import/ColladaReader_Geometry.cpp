// Reading library_geometries (meshes and their primitives) and library_controllers (skins).
#include "import/ColladaReader.h"

#include "import/ColladaText.h"

#include <algorithm>
#include <cstring>

namespace Kestrin::Utility
{

using namespace ColladaText;
using Semantic = CColladaFile::Semantic;

namespace
{
// Offsets beyond this are taken as broken data rather than as a corner of 65 indices.
constexpr uint32_t MAX_OFFSET = 64;
// Counts in a document only reserve memory up to this; longer lists grow as they are read.
constexpr size_t MAX_RESERVE = size_t(1) << 22;

Semantic SemanticOf(std::string_view str)
{
    if (str == "POSITION")
    {
        return Semantic::Position;
    }
    if (str == "NORMAL")
    {
        return Semantic::Normal;
    }
    if (str == "COLOR")
    {
        return Semantic::Color;
    }
    if (str == "TEXCOORD")
    {
        return Semantic::Texcoord;
    }
    if (str == "TEXTANGENT")
    {
        return Semantic::Textangent;
    }
    if (str == "TEXBINORMAL")
    {
        return Semantic::Texbinormal;
    }
    return Semantic::Other;
}

const char* PrimitiveName(CColladaFile::PrimitiveKind eKind)
{
    switch (eKind)
    {
        case CColladaFile::PrimitiveKind::Triangles:
            return "triangles";
        case CColladaFile::PrimitiveKind::Polylist:
            return "polylist";
        case CColladaFile::PrimitiveKind::Polygons:
            return "polygons";
    }
    return "?";
}
} // namespace

// ---------------------------------------------------------------------------------------
// Geometry

bool CColladaReader::ReadGeometries(pugi::xml_node library)
{
    for (pugi::xml_node geometry : library.children("geometry"))
    {
        pugi::xml_node mesh = geometry.child("mesh");
        if (!mesh)
        {
            Warn("geometry '%s' is not a mesh; left out", geometry.attribute("id").value());
            continue;
        }
        CColladaFile::Mesh out;
        if (!ReadMesh(geometry, mesh, out))
        {
            return false;
        }
        m_mapMeshes[geometry.attribute("id").value()] = int32_t(m_file.m_aMeshes.size());
        m_file.m_aMeshes.push_back(std::move(out));
    }
    return true;
}

bool CColladaReader::ReadMesh(pugi::xml_node geometry, pugi::xml_node mesh, CColladaFile::Mesh& out)
{
    out.id = geometry.attribute("id").value();
    out.name = geometry.attribute("name").value();
    for (pugi::xml_node source : mesh.children("source"))
    {
        out.aSources.emplace_back();
        if (!ReadFloatSource(source, out.aSources.back()))
        {
            std::string strInner;
            strInner.swap(m_strError);
            return Fail("geometry '%s': %s", out.id.c_str(), strInner.c_str());
        }
    }
    // The `vertices` inputs, folded into each primitive at its VERTEX offset.
    pugi::xml_node vertices = mesh.child("vertices");
    std::vector<CColladaFile::Input> aVertexInputs;
    for (pugi::xml_node input : vertices.children("input"))
    {
        CColladaFile::Input in;
        in.strSemantic = input.attribute("semantic").value();
        in.eSemantic = SemanticOf(in.strSemantic);
        in.iSource = out.FindSource(UrlId(input.attribute("source").value()));
        in.bFromVertices = true;
        if (in.iSource < 0)
        {
            return Fail("geometry '%s': vertices input %s names source '%s', which the mesh lacks",
                        out.id.c_str(), in.strSemantic.c_str(), input.attribute("source").value());
        }
        aVertexInputs.push_back(std::move(in));
    }
    static const struct
    {
        const char* pcName;
        CColladaFile::PrimitiveKind eKind;
    } s_aKinds[] = {
        {"triangles", CColladaFile::PrimitiveKind::Triangles},
        {"polylist", CColladaFile::PrimitiveKind::Polylist},
        {"polygons", CColladaFile::PrimitiveKind::Polygons},
    };
    for (pugi::xml_node element : mesh.children())
    {
        const char* pcName = element.name();
        if (!strcmp(pcName, "source") || !strcmp(pcName, "vertices") || !strcmp(pcName, "extra"))
        {
            continue;
        }
        bool bKnown = false;
        for (const auto& kind : s_aKinds)
        {
            if (!strcmp(pcName, kind.pcName))
            {
                bKnown = true;
                if (!ReadPrimitive(element, kind.eKind, out, aVertexInputs, vertices.attribute("id").value()))
                {
                    return false;
                }
            }
        }
        if (!bKnown && element.type() == pugi::node_element)
        {
            Warn("geometry '%s': <%s> primitives are not read", out.id.c_str(), pcName);
        }
    }
    return true;
}

bool CColladaReader::ReadPrimitive(pugi::xml_node element, CColladaFile::PrimitiveKind eKind,
                                   CColladaFile::Mesh& mesh,
                                   const std::vector<CColladaFile::Input>& aVertexInputs,
                                   std::string_view strVerticesId)
{
    CColladaFile::Primitive prim;
    prim.eKind = eKind;
    prim.strMaterial = element.attribute("material").value();
    if (!AttrUInt(element, "count", prim.uCount, 0))
    {
        return false;
    }
    uint32_t uMaxOffset = 0;
    for (pugi::xml_node input : element.children("input"))
    {
        CColladaFile::Input in;
        in.strSemantic = input.attribute("semantic").value();
        int64_t iSet = -1;
        if (!AttrUInt(input, "offset", in.uOffset, 0, MAX_OFFSET) ||
            (input.attribute("set") && !ParseInt(input.attribute("set").value(), iSet)))
        {
            return Fail("geometry '%s': %s input %s has a bad offset or set", mesh.id.c_str(),
                        PrimitiveName(eKind), in.strSemantic.c_str());
        }
        in.iSet = int32_t(std::clamp<int64_t>(iSet, -1, 0x7fffffff));
        uMaxOffset = std::max(uMaxOffset, in.uOffset);
        std::string_view sourceId = UrlId(input.attribute("source").value());
        if (in.strSemantic == "VERTEX")
        {
            if (sourceId != strVerticesId)
            {
                return Fail("geometry '%s': VERTEX input names '%s', not the mesh's vertices",
                            mesh.id.c_str(), input.attribute("source").value());
            }
            for (const CColladaFile::Input& vertexInput : aVertexInputs)
            {
                CColladaFile::Input folded = vertexInput;
                folded.uOffset = in.uOffset;
                folded.iSet = vertexInput.iSet >= 0 ? vertexInput.iSet : in.iSet;
                prim.aInputs.push_back(std::move(folded));
            }
            continue;
        }
        in.eSemantic = SemanticOf(in.strSemantic);
        in.iSource = mesh.FindSource(sourceId);
        if (in.iSource < 0)
        {
            return Fail("geometry '%s': %s input %s names source '%s', which the mesh lacks", mesh.id.c_str(),
                        PrimitiveName(eKind), in.strSemantic.c_str(), input.attribute("source").value());
        }
        prim.aInputs.push_back(std::move(in));
    }
    prim.uStride = uMaxOffset + 1;
    if (!ReadPrimitiveIndices(element, prim, mesh.id.c_str()) || !CheckPrimitiveIndices(prim, mesh))
    {
        return false;
    }
    mesh.aPrimitives.push_back(std::move(prim));
    return true;
}

// Indices and face sizes: `triangles` has one <p> of three corners a face, `polylist` one
// <p> with a `vcount` per face, `polygons` one <p> per face (and per <ph>, holes left out).
bool CColladaReader::ReadPrimitiveIndices(pugi::xml_node element, CColladaFile::Primitive& prim,
                                          const char* pcMesh)
{
    const char* pcKind = PrimitiveName(prim.eKind);
    const char* pBad = nullptr;
    if (prim.eKind == CColladaFile::PrimitiveKind::Polygons)
    {
        for (pugi::xml_node child : element.children())
        {
            bool bHole = !strcmp(child.name(), "ph");
            pugi::xml_node p = bHole ? child.child("p") : child;
            if (strcmp(p.name(), "p"))
            {
                continue;
            }
            size_t uBefore = prim.aIndices.size();
            if (!ParseUInts(CText(p), prim.aIndices, &pBad))
            {
                return Fail("geometry '%s': polygons <p> holds \"%.20s\", not an index", pcMesh, pBad);
            }
            size_t uLength = prim.aIndices.size() - uBefore;
            if (uLength % prim.uStride != 0 || uLength / prim.uStride > 0xffffffffu)
            {
                return Fail("geometry '%s': polygons <p> of %zu indices is not whole corners of %u", pcMesh,
                            uLength, prim.uStride);
            }
            prim.aVCount.push_back(uint32_t(uLength / prim.uStride));
        }
        if (prim.aVCount.size() != prim.uCount)
        {
            return Fail("geometry '%s': polygons count %u disagrees with its %zu faces", pcMesh, prim.uCount,
                        prim.aVCount.size());
        }
        return true;
    }
    // The declared count only reserves memory, and only so much.
    prim.aIndices.reserve(std::min<size_t>(MAX_RESERVE, size_t(prim.uCount) * 3 * prim.uStride));
    if (!ParseUInts(CText(element.child("p")), prim.aIndices, &pBad))
    {
        return Fail("geometry '%s': %s <p> holds \"%.20s\", not an index", pcMesh, pcKind, pBad);
    }
    uint64_t uCorners = uint64_t(prim.uCount) * 3;
    if (prim.eKind == CColladaFile::PrimitiveKind::Polylist)
    {
        if (!ParseUInts(CText(element.child("vcount")), prim.aVCount, &pBad))
        {
            return Fail("geometry '%s': polylist <vcount> holds \"%.20s\", not a number", pcMesh, pBad);
        }
        if (prim.aVCount.size() != prim.uCount)
        {
            return Fail("geometry '%s': polylist count %u disagrees with its %zu vcount entries", pcMesh,
                        prim.uCount, prim.aVCount.size());
        }
        uCorners = 0;
        for (uint32_t u : prim.aVCount)
        {
            uCorners += u;
        }
    }
    if (uCorners * prim.uStride != prim.aIndices.size())
    {
        return Fail("geometry '%s': %s of %u faces needs %llu indices, <p> has %zu", pcMesh, pcKind,
                    prim.uCount, (unsigned long long)(uCorners * prim.uStride), prim.aIndices.size());
    }
    return true;
}

bool CColladaReader::CheckPrimitiveIndices(const CColladaFile::Primitive& prim,
                                           const CColladaFile::Mesh& mesh)
{
    if (prim.aInputs.empty() && !prim.aIndices.empty())
    {
        return Fail("geometry '%s': %s has indices but no inputs", mesh.id.c_str(),
                    PrimitiveName(prim.eKind));
    }
    if (prim.aIndices.empty())
    {
        return true;
    }
    // The largest index at each offset, in one pass.
    uint32_t auMax[MAX_OFFSET + 1] = {};
    const uint32_t* pIndex = prim.aIndices.data();
    for (size_t uCorner = 0, uCorners = prim.CornerCount(); uCorner < uCorners;
         ++uCorner, pIndex += prim.uStride)
    {
        for (uint32_t uOffset = 0; uOffset < prim.uStride; ++uOffset)
        {
            auMax[uOffset] = std::max(auMax[uOffset], pIndex[uOffset]);
        }
    }
    for (const CColladaFile::Input& input : prim.aInputs)
    {
        const CColladaFile::Source& source = mesh.aSources[size_t(input.iSource)];
        if (auMax[input.uOffset] >= source.uCount)
        {
            return Fail("geometry '%s': %s input %s index %u is past the end of source '%s' (%u elements)",
                        mesh.id.c_str(), PrimitiveName(prim.eKind), input.strSemantic.c_str(),
                        auMax[input.uOffset], source.id.c_str(), source.uCount);
        }
    }
    return true;
}

// ---------------------------------------------------------------------------------------
// Skins

bool CColladaReader::ReadControllers(pugi::xml_node library)
{
    for (pugi::xml_node controller : library.children("controller"))
    {
        pugi::xml_node skin = controller.child("skin");
        if (!skin)
        {
            Warn("controller '%s' is not a skin; left out", controller.attribute("id").value());
            continue;
        }
        CColladaFile::Skin out;
        if (!ReadSkin(controller, skin, out))
        {
            return false;
        }
        m_mapSkins[controller.attribute("id").value()] = int32_t(m_file.m_aSkins.size());
        m_file.m_aSkins.push_back(std::move(out));
    }
    return true;
}

bool CColladaReader::ReadSkin(pugi::xml_node controller, pugi::xml_node skin, CColladaFile::Skin& out)
{
    out.id = controller.attribute("id").value();
    out.name = controller.attribute("name").value();
    out.strSourceUrl = skin.attribute("source").value();
    auto it = m_mapMeshes.find(UrlId(out.strSourceUrl));
    if (it != m_mapMeshes.end())
    {
        out.iMesh = it->second;
    }
    else
    {
        Warn("skin '%s': geometry '%s' not found", out.id.c_str(), out.strSourceUrl.c_str());
    }
    if (pugi::xml_node bindShape = skin.child("bind_shape_matrix"))
    {
        float af[16];
        if (!ReadFloatList(bindShape, af, 16, out.id.c_str()))
        {
            return false;
        }
        out.mBindShape = CColladaFile::MatrixFromCollada(af);
    }
    return ReadSkinJoints(skin, out) && ReadSkinWeights(skin, out);
}

namespace
{
pugi::xml_node FindSource(pugi::xml_node skin, std::string_view id)
{
    for (pugi::xml_node source : skin.children("source"))
    {
        if (id == source.attribute("id").value())
        {
            return source;
        }
    }
    return {};
}

pugi::xml_node FindInput(pugi::xml_node parent, const char* pcSemantic)
{
    for (pugi::xml_node input : parent.children("input"))
    {
        if (!strcmp(input.attribute("semantic").value(), pcSemantic))
        {
            return input;
        }
    }
    return {};
}
} // namespace

bool CColladaReader::ReadSkinJoints(pugi::xml_node skin, CColladaFile::Skin& out)
{
    pugi::xml_node joints = skin.child("joints");
    pugi::xml_node jointSource =
        FindSource(skin, UrlId(FindInput(joints, "JOINT").attribute("source").value()));
    pugi::xml_node names = jointSource.child("Name_array");
    if (!names)
    {
        names = jointSource.child("IDREF_array");
        out.bJointIds = bool(names);
    }
    if (!names)
    {
        return Fail("skin '%s': the JOINT input names no source with a Name_array or IDREF_array",
                    out.id.c_str());
    }
    ParseWords(Text(names), out.aJoints);
    uint32_t uDeclared = 0;
    if (!AttrUInt(names, "count", uDeclared, uint32_t(out.aJoints.size())))
    {
        return false;
    }
    if (uDeclared != out.aJoints.size())
    {
        return Fail("skin '%s': joint count %u disagrees with its %zu names", out.id.c_str(), uDeclared,
                    out.aJoints.size());
    }
    pugi::xml_node inputBind = FindInput(joints, "INV_BIND_MATRIX");
    if (!inputBind)
    {
        return true;
    }
    CColladaFile::Source matrices;
    pugi::xml_node bindSource = FindSource(skin, UrlId(inputBind.attribute("source").value()));
    if (!bindSource)
    {
        return Fail("skin '%s': INV_BIND_MATRIX source '%s' not found", out.id.c_str(),
                    inputBind.attribute("source").value());
    }
    if (!ReadFloatSource(bindSource, matrices))
    {
        return false;
    }
    if (matrices.uStride != 16 || matrices.uCount != out.aJoints.size())
    {
        return Fail("skin '%s': %u inverse bind matrices of stride %u for %zu joints", out.id.c_str(),
                    matrices.uCount, matrices.uStride, out.aJoints.size());
    }
    for (uint32_t i = 0; i < matrices.uCount; ++i)
    {
        out.aInverseBind.push_back(CColladaFile::MatrixFromCollada(matrices.Element(i)));
    }
    return true;
}

bool CColladaReader::ReadSkinWeights(pugi::xml_node skin, CColladaFile::Skin& out)
{
    pugi::xml_node weights = skin.child("vertex_weights");
    uint32_t uVertices = 0, uStride = 1, uJointOffset = 0, uWeightOffset = 0;
    pugi::xml_node jointInput = FindInput(weights, "JOINT");
    pugi::xml_node weightInput = FindInput(weights, "WEIGHT");
    for (pugi::xml_node input : weights.children("input"))
    {
        uint32_t uOffset = 0;
        if (!AttrUInt(input, "offset", uOffset, 0, MAX_OFFSET))
        {
            return false;
        }
        uStride = std::max(uStride, uOffset + 1);
    }
    if (!AttrUInt(weights, "count", uVertices, 0) || !AttrUInt(jointInput, "offset", uJointOffset, 0) ||
        !AttrUInt(weightInput, "offset", uWeightOffset, 0))
    {
        return false;
    }
    CColladaFile::Source weightValues;
    if (weightInput)
    {
        pugi::xml_node source = FindSource(skin, UrlId(weightInput.attribute("source").value()));
        if (!source)
        {
            return Fail("skin '%s': WEIGHT source '%s' not found", out.id.c_str(),
                        weightInput.attribute("source").value());
        }
        if (!ReadFloatSource(source, weightValues))
        {
            return false;
        }
    }
    std::vector<uint32_t> aVCount;
    aVCount.reserve(std::min<size_t>(uVertices, MAX_RESERVE));
    if (!ParseUInts(CText(weights.child("vcount")), aVCount))
    {
        return Fail("skin '%s': <vcount> holds something other than counts", out.id.c_str());
    }
    if (aVCount.size() != uVertices)
    {
        return Fail("skin '%s': vertex_weights count %u disagrees with its %zu vcount entries",
                    out.id.c_str(), uVertices, aVCount.size());
    }
    out.aFirst.resize(aVCount.size() + 1);
    out.aFirst[0] = 0;
    uint64_t uTotal = 0;
    for (size_t v = 0; v < aVCount.size(); ++v)
    {
        uTotal += aVCount[v];
        out.aFirst[v + 1] = uint32_t(std::min<uint64_t>(uTotal, 0xffffffffu));
    }
    if (uTotal > 0xffffffffu)
    {
        return Fail("skin '%s': vcount adds up to more influences than a skin can hold", out.id.c_str());
    }
    std::vector<int32_t> aV;
    aV.reserve(std::min<uint64_t>(uTotal * uStride, MAX_RESERVE));
    if (!ParseInts(CText(weights.child("v")), aV))
    {
        return Fail("skin '%s': <v> holds something other than indices", out.id.c_str());
    }
    if (uTotal * uStride != aV.size())
    {
        return Fail("skin '%s': %llu influences need %llu numbers in <v>, it has %zu", out.id.c_str(),
                    (unsigned long long)uTotal, (unsigned long long)(uTotal * uStride), aV.size());
    }
    out.aJoint.resize(size_t(uTotal));
    out.aWeight.resize(size_t(uTotal));
    const int32_t iJoints = int32_t(out.aJoints.size());
    for (size_t i = 0, k = 0; k < uTotal; ++k, i += uStride)
    {
        int32_t iJoint = jointInput ? aV[i + uJointOffset] : -1;
        int32_t iWeight = weightInput ? aV[i + uWeightOffset] : -1;
        if (iJoint < -1 || iJoint >= iJoints ||
            (weightInput && (iWeight < 0 || uint32_t(iWeight) >= weightValues.uCount)))
        {
            return Fail("skin '%s': influence %zu has joint %d of %d or weight %d of %u", out.id.c_str(), k,
                        iJoint, iJoints, iWeight, weightValues.uCount);
        }
        out.aJoint[k] = iJoint;
        out.aWeight[k] = weightInput ? weightValues.afValues[size_t(iWeight) * weightValues.uStride] : 1.0f;
    }
    return true;
}

} // namespace Kestrin::Utility
