// The writer: one fixed document shape, Z up, ids with fixed suffixes ("-image", "-fx",
// "-surface", "-sampler", "-positions", "-normals", "-map-channel<n>", "-vertices"), the
// visual scene "scene1". Meshes are written as triangles with one index per input.
#include "import/ColladaFile.h"

#include "import/ColladaText.h"

#include "Utils/Utility/GUtDebug.h"
#include "Utils/Utility/GUtFile.h"

#include <algorithm>
#include <cstdio>
#include <string>

namespace Kestrin::Utility
{

using namespace ColladaText;

class CColladaWriter
{
public:
    explicit CColladaWriter(const CColladaFile& file) : m_file(file) {}
    void Write(pugi::xml_document& doc);

private:
    // Mesh streams: one per semantic and set, gathering every source the primitives use.
    struct Stream
    {
        CColladaFile::Semantic eSemantic = CColladaFile::Semantic::Position;
        uint32_t uNth = 0; // set order among the semantic's inputs
        std::string strId;
        uint32_t uStride = 0;
        std::vector<int64_t> aiBase; // per mesh source: its first element in afValues, -1 when unused
        std::vector<float> afValues;
    };

    void WriteAsset(pugi::xml_node collada);
    void WriteMaterials(pugi::xml_node collada);
    void WriteEffect(pugi::xml_node library, const CColladaFile::Material& material);
    void WriteLights(pugi::xml_node collada);
    void WriteGeometries(pugi::xml_node collada);
    void WriteMesh(pugi::xml_node library, const CColladaFile::Mesh& mesh);
    void GatherStreams(const CColladaFile::Mesh& mesh, std::vector<Stream>& aStreams);
    void WriteStream(pugi::xml_node mesh, const Stream& stream);
    void WritePrimitive(pugi::xml_node mesh, const CColladaFile::Mesh& source,
                        const CColladaFile::Primitive& prim, const std::vector<Stream>& aStreams);
    void WriteNode(pugi::xml_node parent, const CColladaFile::Node& node, const CMatrix44& mUpAxis);
    void WriteGeometryInstance(pugi::xml_node node, const CColladaFile::Instance& instance, int32_t iMesh);

    static pugi::xml_node Element(pugi::xml_node parent, const char* pcName);
    static pugi::xml_node TextElement(pugi::xml_node parent, const char* pcName, const std::string& strText);
    static void SetText(pugi::xml_node node, const std::string& strText);
    static void FloatElement(pugi::xml_node parent, const char* pcName, float f);

    const CColladaFile& m_file;
};

pugi::xml_node CColladaWriter::Element(pugi::xml_node parent, const char* pcName)
{
    return parent.append_child(pcName);
}

void CColladaWriter::SetText(pugi::xml_node node, const std::string& strText)
{
    node.append_child(pugi::node_pcdata).set_value(strText.c_str());
}

pugi::xml_node CColladaWriter::TextElement(pugi::xml_node parent, const char* pcName,
                                           const std::string& strText)
{
    pugi::xml_node node = parent.append_child(pcName);
    SetText(node, strText);
    return node;
}

void CColladaWriter::FloatElement(pugi::xml_node parent, const char* pcName, float f)
{
    TextElement(parent, pcName, FloatText(f));
}

void CColladaWriter::Write(pugi::xml_document& doc)
{
    pugi::xml_node declaration = doc.append_child(pugi::node_declaration);
    declaration.append_attribute("version") = "1.0";
    declaration.append_attribute("encoding") = "utf-8";
    pugi::xml_node collada = Element(doc, "COLLADA");
    collada.append_attribute("xmlns") = "http://www.collada.org/2005/11/COLLADASchema";
    collada.append_attribute("version") = "1.4.1";
    WriteAsset(collada);
    WriteMaterials(collada);
    WriteLights(collada);
    WriteGeometries(collada);

    // The document is Z up: a Y-up or X-up scene is turned at its roots.
    CMatrix44 mUpAxis;
    if (m_file.upAxis == CColladaFile::Y_UP)
    {
        // (x, y, z) becomes (x, -z, y): up +Y to +Z.
        mUpAxis.m[1][1] = 0.0f;
        mUpAxis.m[1][2] = 1.0f;
        mUpAxis.m[2][1] = -1.0f;
        mUpAxis.m[2][2] = 0.0f;
    }
    else if (m_file.upAxis == CColladaFile::X_UP)
    {
        // (x, y, z) becomes (-y, -z, x): up +X to +Z, right -Y to +X.
        mUpAxis = CMatrix44::Zero();
        mUpAxis.m[0][2] = 1.0f;
        mUpAxis.m[1][0] = -1.0f;
        mUpAxis.m[2][1] = -1.0f;
        mUpAxis.m[3][3] = 1.0f;
    }
    pugi::xml_node scenes = Element(collada, "library_visual_scenes");
    pugi::xml_node scene = Element(scenes, "visual_scene");
    scene.append_attribute("id") = "scene1";
    scene.append_attribute("name") = "scene1";
    for (const std::unique_ptr<CColladaFile::Node>& pNode : m_file.m_aNodes)
    {
        WriteNode(scene, *pNode, mUpAxis);
    }
    Element(Element(collada, "scene"), "instance_visual_scene").append_attribute("url") = "#scene1";
}

void CColladaWriter::WriteAsset(pugi::xml_node collada)
{
    pugi::xml_node asset = Element(collada, "asset");
    TextElement(Element(asset, "contributor"), "authoring_tool", "Editor");
    if (!m_file.m_strCreated.empty())
    {
        TextElement(asset, "created", m_file.m_strCreated);
    }
    if (!m_file.m_strModified.empty())
    {
        TextElement(asset, "modified", m_file.m_strModified);
    }
    pugi::xml_node unit = Element(asset, "unit");
    unit.append_attribute("name") = m_file.m_strUnitName.c_str();
    unit.append_attribute("meter") = FloatText(m_file.m_fUnitMeter).c_str();
    TextElement(asset, "up_axis", "Z_UP");
}

// ---------------------------------------------------------------------------------------
// Images, materials, effects

namespace
{
const CColladaFile::Effect* EffectOf(const CColladaFile& file, const CColladaFile::Material& material)
{
    return material.iEffect >= 0 && size_t(material.iEffect) < file.Effects().size()
               ? &file.Effects()[size_t(material.iEffect)]
               : nullptr;
}

const CColladaFile::Image* DiffuseImage(const CColladaFile& file, const CColladaFile::Material& material)
{
    const CColladaFile::Effect* pEffect = EffectOf(file, material);
    if (!pEffect || !pEffect->diffuse.bTexture || pEffect->diffuse.texture.iImage < 0 ||
        size_t(pEffect->diffuse.texture.iImage) >= file.Images().size())
    {
        return nullptr;
    }
    return &file.Images()[size_t(pEffect->diffuse.texture.iImage)];
}

std::string ColorText(const CVec4& v)
{
    std::string str;
    AppendFloatList(str, &v.x, 4);
    return str;
}
} // namespace

void CColladaWriter::WriteMaterials(pugi::xml_node collada)
{
    if (m_file.m_aMaterials.empty())
    {
        return;
    }
    pugi::xml_node images;
    for (const CColladaFile::Material& material : m_file.m_aMaterials)
    {
        if (const CColladaFile::Image* pImage = DiffuseImage(m_file, material))
        {
            images = images ? images : Element(collada, "library_images");
            pugi::xml_node image = Element(images, "image");
            image.append_attribute("id") = (material.id + "-image").c_str();
            image.append_attribute("name") = (material.id + "-image").c_str();
            TextElement(image, "init_from", pImage->strFile);
        }
    }
    pugi::xml_node materials = Element(collada, "library_materials");
    for (const CColladaFile::Material& material : m_file.m_aMaterials)
    {
        pugi::xml_node element = Element(materials, "material");
        element.append_attribute("id") = material.id.c_str();
        element.append_attribute("name") = material.name.c_str();
        Element(element, "instance_effect").append_attribute("url") = ("#" + material.id + "-fx").c_str();
    }
    pugi::xml_node effects = Element(collada, "library_effects");
    for (const CColladaFile::Material& material : m_file.m_aMaterials)
    {
        WriteEffect(effects, material);
    }
}

void CColladaWriter::WriteEffect(pugi::xml_node library, const CColladaFile::Material& material)
{
    pugi::xml_node effect = Element(library, "effect");
    effect.append_attribute("id") = (material.id + "-fx").c_str();
    effect.append_attribute("name") = material.name.c_str();
    pugi::xml_node profile = Element(effect, "profile_COMMON");
    const CColladaFile::Effect* pEffect = EffectOf(m_file, material);
    CColladaFile::Effect defaults;
    const CColladaFile::Effect& source = pEffect ? *pEffect : defaults;
    bool bTexture = DiffuseImage(m_file, material) != nullptr;
    if (bTexture)
    {
        pugi::xml_node surfaceParam = Element(profile, "newparam");
        surfaceParam.append_attribute("sid") = (material.id + "-surface").c_str();
        pugi::xml_node surface = Element(surfaceParam, "surface");
        surface.append_attribute("type") = "2D";
        TextElement(surface, "init_from", material.id + "-image");
        pugi::xml_node samplerParam = Element(profile, "newparam");
        samplerParam.append_attribute("sid") = (material.id + "-sampler").c_str();
        TextElement(Element(samplerParam, "sampler2D"), "source", material.id + "-surface");
    }
    pugi::xml_node technique = Element(profile, "technique");
    technique.append_attribute("sid") = "common";
    pugi::xml_node blinn = Element(technique, "blinn");
    auto color = [&](const char* pcName, const CColladaFile::ColorOrTexture& channel)
    {
        if (channel.bColor)
        {
            TextElement(Element(blinn, pcName), "color", ColorText(channel.vColor));
        }
    };
    color("emission", source.emission);
    color("ambient", source.ambient);
    if (bTexture)
    {
        pugi::xml_node texture = Element(Element(blinn, "diffuse"), "texture");
        texture.append_attribute("texture") = (material.id + "-sampler").c_str();
        texture.append_attribute("texcoord") = "CHANNEL1";
    }
    else
    {
        color("diffuse", source.diffuse);
    }
    color("specular", source.specular);
    if (source.fShininess)
    {
        FloatElement(Element(blinn, "shininess"), "float", *source.fShininess);
    }
    color("transparent", source.transparent);
    if (source.fTransparency)
    {
        FloatElement(Element(blinn, "transparency"), "float", *source.fTransparency);
    }
    if (source.bDoubleSided)
    {
        pugi::xml_node extra = Element(Element(effect, "extra"), "technique");
        extra.append_attribute("profile") = "MAX3D";
        TextElement(extra, "double_sided", "1");
    }
}

// ---------------------------------------------------------------------------------------
// Lights

void CColladaWriter::WriteLights(pugi::xml_node collada)
{
    if (m_file.m_aLights.empty())
    {
        return;
    }
    pugi::xml_node library = Element(collada, "library_lights");
    for (const CColladaFile::Light& light : m_file.m_aLights)
    {
        pugi::xml_node element = Element(library, "light");
        element.append_attribute("id") = light.id.c_str();
        element.append_attribute("name") = light.name.c_str();
        static const char* const s_apcKinds[] = {"ambient", "directional", "point", "spot"};
        pugi::xml_node kind = Element(Element(element, "technique_common"), s_apcKinds[int(light.eType) & 3]);
        std::string strColor;
        AppendFloatList(strColor, &light.vColor.x, 3);
        TextElement(kind, "color", strColor);
        if (light.eType == CColladaFile::LightType::Point || light.eType == CColladaFile::LightType::Spot)
        {
            FloatElement(kind, "constant_attenuation", light.fConstantAttenuation);
            FloatElement(kind, "linear_attenuation", light.fLinearAttenuation);
            FloatElement(kind, "quadratic_attenuation", light.fQuadraticAttenuation);
        }
        if (light.eType == CColladaFile::LightType::Spot)
        {
            FloatElement(kind, "falloff_angle", light.fFalloffAngle);
            FloatElement(kind, "falloff_exponent", light.fFalloffExponent);
        }
        pugi::xml_node technique = Element(Element(element, "extra"), "technique");
        technique.append_attribute("profile") = "MAX3D";
        auto optional = [&](const char* pcName, const std::optional<float>& f)
        {
            if (f)
            {
                FloatElement(technique, pcName, *f);
            }
        };
        optional("intensity", light.fIntensity);
        optional("far_attenuation_start", light.fFarAttenuationStart);
        optional("far_attenuation_end", light.fFarAttenuationEnd);
        optional("outer_cone", light.fOuterCone);
        optional("aspect_ratio", light.fAspectRatio);
        if (light.bOvershoot)
        {
            TextElement(technique, "overshoot", *light.bOvershoot ? "1" : "0");
        }
        FloatElement(technique, "falloff_angle", light.fFalloffAngle);
    }
}

// ---------------------------------------------------------------------------------------
// Geometry

void CColladaWriter::WriteGeometries(pugi::xml_node collada)
{
    if (m_file.m_aMeshes.empty())
    {
        return;
    }
    pugi::xml_node library = Element(collada, "library_geometries");
    for (const CColladaFile::Mesh& mesh : m_file.m_aMeshes)
    {
        WriteMesh(library, mesh);
    }
}

void CColladaWriter::WriteMesh(pugi::xml_node library, const CColladaFile::Mesh& mesh)
{
    pugi::xml_node geometry = Element(library, "geometry");
    geometry.append_attribute("id") = mesh.id.c_str();
    geometry.append_attribute("name") = mesh.name.c_str();
    pugi::xml_node element = Element(geometry, "mesh");
    std::vector<Stream> aStreams;
    GatherStreams(mesh, aStreams);
    for (const Stream& stream : aStreams)
    {
        WriteStream(element, stream);
    }
    pugi::xml_node vertices = Element(element, "vertices");
    vertices.append_attribute("id") = (mesh.id + "-vertices").c_str();
    pugi::xml_node input = Element(vertices, "input");
    input.append_attribute("semantic") = "POSITION";
    input.append_attribute("source") = ("#" + aStreams[0].strId).c_str();
    // A primitive without positions carries no geometry the writer's shape can hold.
    for (const CColladaFile::Primitive& prim : mesh.aPrimitives)
    {
        if (prim.FindInput(CColladaFile::Semantic::Position))
        {
            WritePrimitive(element, mesh, prim, aStreams);
        }
    }
}

// Positions always (the vertices need them), then normals, texture-coordinate sets and
// colours where any primitive has them.
void CColladaWriter::GatherStreams(const CColladaFile::Mesh& mesh, std::vector<Stream>& aStreams)
{
    using Semantic = CColladaFile::Semantic;
    uint32_t uTexcoords = 0, uColors = 0;
    for (const CColladaFile::Primitive& prim : mesh.aPrimitives)
    {
        uTexcoords = std::max(uTexcoords, prim.InputCount(Semantic::Texcoord));
        uColors = std::max(uColors, prim.InputCount(Semantic::Color));
    }
    auto add = [&](Semantic eSemantic, uint32_t uNth, std::string strId)
    {
        Stream stream;
        stream.eSemantic = eSemantic;
        stream.uNth = uNth;
        stream.strId = std::move(strId);
        stream.aiBase.assign(mesh.aSources.size(), -1);
        for (const CColladaFile::Primitive& prim : mesh.aPrimitives)
        {
            if (const CColladaFile::Input* pInput = prim.FindInput(eSemantic, uNth))
            {
                stream.uStride = std::max(stream.uStride, mesh.aSources[size_t(pInput->iSource)].uStride);
            }
        }
        stream.uStride = std::max<uint32_t>(stream.uStride, eSemantic == Semantic::Position ? 3 : 1);
        for (const CColladaFile::Primitive& prim : mesh.aPrimitives)
        {
            const CColladaFile::Input* pInput = prim.FindInput(eSemantic, uNth);
            if (!pInput || stream.aiBase[size_t(pInput->iSource)] >= 0)
            {
                continue;
            }
            const CColladaFile::Source& source = mesh.aSources[size_t(pInput->iSource)];
            stream.aiBase[size_t(pInput->iSource)] = int64_t(stream.afValues.size() / stream.uStride);
            for (uint32_t i = 0; i < source.uCount; ++i)
            {
                const float* pf = source.Element(i);
                for (uint32_t c = 0; c < stream.uStride; ++c)
                {
                    stream.afValues.push_back(c < source.uStride ? pf[c] : 0.0f);
                }
            }
        }
        aStreams.push_back(std::move(stream));
    };
    add(Semantic::Position, 0, mesh.id + "-positions");
    bool bNormals = false;
    for (const CColladaFile::Primitive& prim : mesh.aPrimitives)
    {
        bNormals = bNormals || prim.FindInput(Semantic::Normal);
    }
    if (bNormals)
    {
        add(Semantic::Normal, 0, mesh.id + "-normals");
    }
    for (uint32_t i = 0; i < uTexcoords; ++i)
    {
        add(Semantic::Texcoord, i, mesh.id + "-map-channel" + std::to_string(i + 1));
    }
    for (uint32_t i = 0; i < uColors; ++i)
    {
        add(Semantic::Color, i, mesh.id + (i ? "-colors" + std::to_string(i + 1) : std::string("-colors")));
    }
}

void CColladaWriter::WriteStream(pugi::xml_node mesh, const Stream& stream)
{
    using Semantic = CColladaFile::Semantic;
    pugi::xml_node source = Element(mesh, "source");
    source.append_attribute("id") = stream.strId.c_str();
    pugi::xml_node array = Element(source, "float_array");
    // Positions and normals say so in the array's id; the other streams end in "-array".
    std::string strArray = stream.strId + "-array";
    array.append_attribute("id") = strArray.c_str();
    array.append_attribute("count") = IntText(int64_t(stream.afValues.size())).c_str();
    std::string strValues;
    AppendFloatList(strValues, stream.afValues.data(), stream.afValues.size());
    SetText(array, strValues);
    pugi::xml_node accessor = Element(Element(source, "technique_common"), "accessor");
    accessor.append_attribute("source") = ("#" + strArray).c_str();
    accessor.append_attribute("count") = IntText(int64_t(stream.afValues.size() / stream.uStride)).c_str();
    accessor.append_attribute("stride") = IntText(stream.uStride).c_str();
    const char* pcNames = stream.eSemantic == Semantic::Texcoord ? "STP?"
                          : stream.eSemantic == Semantic::Color  ? "RGBA"
                                                                 : "XYZ?";
    for (uint32_t i = 0; i < stream.uStride; ++i)
    {
        pugi::xml_node param = Element(accessor, "param");
        char acName[2] = {i < 4 ? pcNames[i] : '?', 0};
        param.append_attribute("name") = acName[0] == '?' ? "" : acName;
        param.append_attribute("type") = "float";
    }
}

void CColladaWriter::WritePrimitive(pugi::xml_node mesh, const CColladaFile::Mesh& source,
                                    const CColladaFile::Primitive& prim, const std::vector<Stream>& aStreams)
{
    using Semantic = CColladaFile::Semantic;
    pugi::xml_node triangles = Element(mesh, "triangles");
    if (!prim.strMaterial.empty())
    {
        triangles.append_attribute("material") = prim.strMaterial.c_str();
    }
    triangles.append_attribute("count") = IntText(prim.TriangleCount()).c_str();
    // The primitive's own inputs, one offset each, in stream order.
    std::vector<std::pair<const Stream*, const CColladaFile::Input*>> aUsed;
    for (const Stream& stream : aStreams)
    {
        if (const CColladaFile::Input* pInput = prim.FindInput(stream.eSemantic, stream.uNth))
        {
            pugi::xml_node input = Element(triangles, "input");
            const char* pcSemantic = stream.eSemantic == Semantic::Position
                                         ? "VERTEX"
                                         : CColladaFile::SemanticName(stream.eSemantic);
            input.append_attribute("semantic") = pcSemantic;
            std::string strSource =
                "#" + (stream.eSemantic == Semantic::Position ? source.id + "-vertices" : stream.strId);
            input.append_attribute("source") = strSource.c_str();
            input.append_attribute("offset") = IntText(int64_t(aUsed.size())).c_str();
            if (stream.eSemantic == Semantic::Texcoord || stream.eSemantic == Semantic::Color)
            {
                input.append_attribute("set") = IntText(stream.uNth + 1).c_str();
            }
            aUsed.push_back({&stream, pInput});
        }
    }
    std::vector<uint32_t> aCorners;
    prim.Triangulate(aCorners);
    std::vector<uint32_t> aIndices;
    aIndices.reserve(aCorners.size() * aUsed.size());
    for (uint32_t uCorner : aCorners)
    {
        for (const auto& used : aUsed)
        {
            int64_t iBase = used.first->aiBase[size_t(used.second->iSource)];
            aIndices.push_back(uint32_t(iBase + prim.Index(uCorner, *used.second)));
        }
    }
    std::string strIndices;
    AppendUIntList(strIndices, aIndices.data(), aIndices.size());
    TextElement(triangles, "p", strIndices);
}

// ---------------------------------------------------------------------------------------
// Nodes

void CColladaWriter::WriteNode(pugi::xml_node parent, const CColladaFile::Node& node,
                               const CMatrix44& mUpAxis)
{
    pugi::xml_node element = Element(parent, "node");
    element.append_attribute("id") = node.id.c_str();
    element.append_attribute("name") = node.name.c_str();
    if (!node.sid.empty())
    {
        element.append_attribute("sid") = node.sid.c_str();
    }
    // Joints are not written as such: the shape has no skins.
    element.append_attribute("type") = "NODE";
    float af[16];
    CColladaFile::MatrixToCollada(node.mTransform * mUpAxis, af);
    std::string strMatrix;
    AppendFloatList(strMatrix, af, 16);
    TextElement(element, "matrix", strMatrix);
    for (const CColladaFile::Instance& instance : node.aInstances)
    {
        if (instance.iIndex < 0)
        {
            continue;
        }
        if (instance.eKind == CColladaFile::InstanceKind::Light &&
            size_t(instance.iIndex) < m_file.m_aLights.size())
        {
            Element(element, "instance_light").append_attribute("url") =
                ("#" + m_file.m_aLights[size_t(instance.iIndex)].id).c_str();
        }
        else if (instance.eKind == CColladaFile::InstanceKind::Geometry)
        {
            WriteGeometryInstance(element, instance, instance.iIndex);
        }
        else if (instance.eKind == CColladaFile::InstanceKind::Controller &&
                 size_t(instance.iIndex) < m_file.m_aSkins.size())
        {
            // The skin is not written; its mesh stands in the bind pose.
            WriteGeometryInstance(element, instance, m_file.m_aSkins[size_t(instance.iIndex)].iMesh);
        }
    }
    if (!node.strUserProperties.empty())
    {
        pugi::xml_node technique = Element(Element(element, "extra"), "technique");
        technique.append_attribute("profile") = "FCOLLADA";
        TextElement(technique, "user_properties", node.strUserProperties);
    }
    CMatrix44 mIdentity;
    for (const std::unique_ptr<CColladaFile::Node>& pChild : node.aChildren)
    {
        WriteNode(element, *pChild, mIdentity);
    }
}

void CColladaWriter::WriteGeometryInstance(pugi::xml_node node, const CColladaFile::Instance& instance,
                                           int32_t iMesh)
{
    if (iMesh < 0 || size_t(iMesh) >= m_file.m_aMeshes.size())
    {
        return;
    }
    const CColladaFile::Mesh& mesh = m_file.m_aMeshes[size_t(iMesh)];
    pugi::xml_node element = Element(node, "instance_geometry");
    element.append_attribute("url") = ("#" + mesh.id).c_str();
    uint32_t uTexcoords = 0;
    std::vector<std::string_view> aSymbols;
    for (const CColladaFile::Primitive& prim : mesh.aPrimitives)
    {
        uTexcoords = std::max(uTexcoords, prim.InputCount(CColladaFile::Semantic::Texcoord));
        if (!prim.strMaterial.empty() &&
            std::find(aSymbols.begin(), aSymbols.end(), prim.strMaterial) == aSymbols.end())
        {
            aSymbols.push_back(prim.strMaterial);
        }
    }
    pugi::xml_node common;
    for (std::string_view symbol : aSymbols)
    {
        // The instance's binding, or a material whose id is the symbol itself.
        int32_t iMaterial = instance.MaterialFor(symbol);
        iMaterial = iMaterial >= 0 ? iMaterial : m_file.FindMaterial(symbol);
        if (iMaterial < 0)
        {
            continue;
        }
        common = common ? common : Element(Element(element, "bind_material"), "technique_common");
        pugi::xml_node bound = Element(common, "instance_material");
        bound.append_attribute("symbol") = std::string(symbol).c_str();
        bound.append_attribute("target") = ("#" + m_file.m_aMaterials[size_t(iMaterial)].id).c_str();
        for (uint32_t i = 1; i <= uTexcoords; ++i)
        {
            pugi::xml_node input = Element(bound, "bind_vertex_input");
            input.append_attribute("semantic") = ("CHANNEL" + std::to_string(i)).c_str();
            input.append_attribute("input_semantic") = "TEXCOORD";
            input.append_attribute("input_set") = IntText(i).c_str();
        }
    }
}

// ---------------------------------------------------------------------------------------
// CColladaFile entry points

namespace
{
struct StringWriter final : pugi::xml_writer
{
    std::string& strOut;
    explicit StringWriter(std::string& str) : strOut(str) {}
    void write(const void* pData, size_t uSize) override
    {
        strOut.append(static_cast<const char*>(pData), uSize);
    }
};
} // namespace

void CColladaFile::WriteMemory(std::string& strOut) const
{
    pugi::xml_document doc;
    CColladaWriter(*this).Write(doc);
    strOut.clear();
    StringWriter writer(strOut);
    doc.save(writer, "  ", pugi::format_indent, pugi::encoding_utf8);
}

bool CColladaFile::Write(const char* pcPath) const
{
    if (!pcPath || !*pcPath)
    {
        return false;
    }
    std::string strText;
    WriteMemory(strText);
    std::string strTemp = std::string(pcPath) + ".tmp";
    bool bWritten = false;
    {
        GUtFile file;
        if (file.Open(strTemp.c_str(),
                      GUtFile::MODE_ALWAYS | GUtFile::MODE_BINARY | GUtFile::MODE_READ | GUtFile::MODE_WRITE,
                      true))
        {
            size_t uDone = 0;
            while (uDone < strText.size())
            {
                int32_t iChunk = int32_t(std::min<size_t>(strText.size() - uDone, size_t(1) << 28));
                int32_t iPut = file.WriteRaw(strText.data() + uDone, iChunk);
                if (iPut <= 0)
                {
                    break;
                }
                uDone += size_t(iPut);
            }
            bWritten = uDone == strText.size() && file.Flush();
            file.Close(true);
        }
    }
    if (!bWritten || std::rename(strTemp.c_str(), pcPath) != 0)
    {
        std::remove(strTemp.c_str());
        GUtLog::Get().DisplayMsg(LogError, "CColladaFile", "%s: cannot write the file", pcPath);
        return false;
    }
    return true;
}

} // namespace Kestrin::Utility
