// The reading steps of CColladaFile, one per library. Private to import/.
//
// A reader fills a fresh CColladaFile from the element COLLADA of a parsed document. Each
// step walks its library by element names; a missing library is empty. Broken data ends the
// read through Fail(); a reference that does not resolve between libraries goes to Warn().
#pragma once

#include "import/ColladaFile.h"

#include <string_view>
#include <unordered_map>

namespace Kestrin::Utility
{

class CColladaReader
{
public:
    explicit CColladaReader(CColladaFile& file) : m_file(file) {}
    CColladaReader(const CColladaReader&) = delete;
    CColladaReader& operator=(const CColladaReader&) = delete;

    // False with Error() set when the document is broken.
    bool Read(pugi::xml_node collada);
    const std::string& Error() const { return m_strError; }

    // Shared helpers of the steps.
    using IdMap = std::unordered_map<std::string_view, int32_t>;
    // The id of a local url "#id"; an external url ("file.dae#id") gives an empty id, text
    // with no '#' is taken as an id.
    static std::string_view UrlId(std::string_view strUrl);
    static std::string_view Text(pugi::xml_node node);
    // The same, NUL-terminated, for the list parsers (no length is taken first).
    static const char* CText(pugi::xml_node node) { return node.child_value(); }
    // An unsigned attribute: uDefault when absent, false when not a number in 0..uMax.
    bool AttrUInt(pugi::xml_node node, const char* pcName, uint32_t& uOut, uint32_t uDefault,
                  uint32_t uMax = 0xffffffffu);
    // Text of node (or of its `float` / `param` child) as one float; false when absent or bad.
    static bool ReadFloat(pugi::xml_node node, float& fOut);
    static bool ReadFloatChild(pugi::xml_node parent, const char* pcName, float& fOut);
    // A `float_array` (or `int_array`) source cut to its accessor.
    bool ReadFloatSource(pugi::xml_node source, CColladaFile::Source& out);
    // Numbers of an element's text, which must be exactly uCount of them.
    bool ReadFloatList(pugi::xml_node node, float* pfOut, uint32_t uCount, const char* pcWhat);

    bool Fail(const char* pcFormat, ...) __attribute__((format(printf, 2, 3)));
    void Warn(const char* pcFormat, ...) __attribute__((format(printf, 2, 3)));

private:
    // Steps, in the order they run.
    void ReadAsset(pugi::xml_node asset);
    void ReadImages(pugi::xml_node library);
    bool ReadEffects(pugi::xml_node library);
    void ReadMaterials(pugi::xml_node library);
    bool ReadGeometries(pugi::xml_node library);
    bool ReadControllers(pugi::xml_node library);
    bool ReadLights(pugi::xml_node library);
    void ReadCameras(pugi::xml_node library);
    bool ReadScene(pugi::xml_node collada);
    bool ReadAnimations(pugi::xml_node library);
    void ReadAnimationClips(pugi::xml_node library);

    // Geometry.
    bool ReadMesh(pugi::xml_node geometry, pugi::xml_node mesh, CColladaFile::Mesh& out);
    bool ReadPrimitive(pugi::xml_node element, CColladaFile::PrimitiveKind eKind, CColladaFile::Mesh& mesh,
                       const std::vector<CColladaFile::Input>& aVertexInputs, std::string_view strVerticesId);
    bool ReadPrimitiveIndices(pugi::xml_node element, CColladaFile::Primitive& prim, const char* pcMesh);
    bool CheckPrimitiveIndices(const CColladaFile::Primitive& prim, const CColladaFile::Mesh& mesh);

    // Effects.
    bool ReadEffect(pugi::xml_node element, CColladaFile::Effect& out);
    bool ReadColorOrTexture(pugi::xml_node channel, pugi::xml_node effect, CColladaFile::ColorOrTexture& out);
    void ReadTexture(pugi::xml_node texture, pugi::xml_node effect, CColladaFile::Texture& out);
    void ReadEffectExtras(pugi::xml_node effect, pugi::xml_node technique, CColladaFile::Effect& out);

    // Skins.
    bool ReadSkin(pugi::xml_node controller, pugi::xml_node skin, CColladaFile::Skin& out);
    bool ReadSkinJoints(pugi::xml_node skin, CColladaFile::Skin& out);
    bool ReadSkinWeights(pugi::xml_node skin, CColladaFile::Skin& out);

    // Lights and cameras.
    bool ReadLight(pugi::xml_node element, CColladaFile::Light& out);
    void ReadLightExtras(pugi::xml_node element, CColladaFile::Light& out);

    // Nodes.
    bool ReadNodes(pugi::xml_node parent, CColladaFile::Node* pParent,
                   std::vector<std::unique_ptr<CColladaFile::Node>>& aOut, uint32_t uDepth);
    bool ReadNode(pugi::xml_node element, CColladaFile::Node& node, uint32_t uDepth);
    bool ReadTransform(pugi::xml_node element, CColladaFile::Node& node);
    void ReadInstance(pugi::xml_node element, CColladaFile::InstanceKind eKind, CColladaFile::Node& node);
    void ReadBindMaterial(pugi::xml_node instance, CColladaFile::Instance& out);
    void IndexNodes(const std::vector<std::unique_ptr<CColladaFile::Node>>& aNodes);
    bool ResolveInstances(const std::vector<std::unique_ptr<CColladaFile::Node>>& aNodes);
    bool CheckInstanceCycles();

    // Animation.
    bool ReadAnimation(pugi::xml_node element, int32_t iAnimation, CColladaFile::Animation& out,
                       uint32_t uDepth);
    bool ReadChannel(pugi::xml_node animation, pugi::xml_node channel, int32_t iAnimation,
                     CColladaFile::Channel& out);
    void ParseTarget(CColladaFile::Channel& channel);

    CColladaFile& m_file;
    std::string m_strError;
    IdMap m_mapImages, m_mapEffects, m_mapMaterials, m_mapMeshes, m_mapSkins, m_mapLights, m_mapCameras;
    std::unordered_map<std::string_view, CColladaFile::Node*> m_mapNodes;
    std::unordered_map<std::string_view, int32_t> m_mapAnimations;
};

} // namespace Kestrin::Utility
