// CColladaFile: a Collada (.dae) document read into meshes, skins, materials, lights,
// cameras, a node tree and animations, and written back in one fixed shape.
//
// Reading is a walk over the XML element tree by names: the first child of a name, then
// its siblings of the same name. A missing library is an empty list. Broken data (an index
// past a source's end, a count that disagrees with its array, a missing source, a cyclic
// node instance, XML that does not parse, a document that is not Collada) fails the read
// with a message and leaves the object as it was. A reference from one library to another
// that does not resolve (a node's geometry, a material's effect) is kept as an unresolved
// index (-1) and listed in GetWarnings(): real exporters write such files.
//
// Matrices: Collada writes column-vector matrices row by row; the engine uses row vectors
// with the translation in the fourth row. Every CMatrix44 here is in the engine's form;
// Transform::afValues keeps the document's numbers as written.
//
// Numbers are parsed and printed in the C locale whatever the process locale, and the
// writer prints the shortest text that reads back to the same float.
#pragma once

#include "engine/utility/Math.h"

#include <pugixml.hpp>

#include <cstddef>
#include <cstdint>
#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace Kestrin::Utility
{

class CColladaFile
{
public:
    // Values of upAxis.
    enum : int32_t
    {
        X_UP = 0,
        Y_UP = 1,
        Z_UP = 2,
    };

    // ------------------------------------------------------------------ geometry
    enum class Semantic : uint8_t
    {
        Position,
        Normal,
        Color,
        Texcoord,
        Textangent,
        Texbinormal,
        Other, // kept with its name, not interpreted
    };

    // A `source` of numbers, already cut to its accessor: uCount elements of uStride floats.
    struct Source
    {
        std::string id;
        std::vector<float> afValues;
        uint32_t uStride = 1;
        uint32_t uCount = 0;

        const float* Element(uint32_t uIndex) const { return afValues.data() + size_t(uIndex) * uStride; }
    };

    // An input of a primitive. The inputs of `vertices` are folded in: a VERTEX input
    // becomes one input per `vertices` input (POSITION, NORMAL, ...) at the VERTEX offset,
    // marked bFromVertices.
    struct Input
    {
        Semantic eSemantic = Semantic::Other;
        std::string strSemantic; // as written
        int32_t iSource = -1;    // into Mesh::aSources
        uint32_t uOffset = 0;
        int32_t iSet = -1; // `set`, -1 when absent
        bool bFromVertices = false;
    };

    enum class PrimitiveKind : uint8_t
    {
        Triangles,
        Polylist,
        Polygons,
    };

    // `triangles`, `polylist` or `polygons`. Every face is stored as a polygon of aVCount[f]
    // corners (three each for triangles, aVCount then empty); a corner holds uStride indices,
    // one per offset.
    struct Primitive
    {
        PrimitiveKind eKind = PrimitiveKind::Triangles;
        std::string strMaterial; // the symbol that the node's bind_material maps
        uint32_t uCount = 0;     // faces
        uint32_t uStride = 1;
        std::vector<Input> aInputs;
        std::vector<uint32_t> aVCount;
        std::vector<uint32_t> aIndices;

        uint32_t CornerCount() const { return uStride ? uint32_t(aIndices.size() / uStride) : 0; }
        uint32_t FaceCorners(uint32_t uFace) const { return aVCount.empty() ? 3 : aVCount[uFace]; }
        uint32_t Index(uint32_t uCorner, const Input& input) const
        {
            return aIndices[size_t(uCorner) * uStride + input.uOffset];
        }
        // Triangles after a fan split of each face (a face of n corners gives n - 2).
        uint32_t TriangleCount() const;
        // Appends three corner numbers per triangle, fan order: (0, i, i + 1).
        void Triangulate(std::vector<uint32_t>& aCorners) const;
        // The uNth input of a semantic, counted in order of `set` (then document order); null
        // when there are fewer. Texture-coordinate set 1 of Part users is FindInput(Texcoord, 1).
        const Input* FindInput(Semantic eSemantic, uint32_t uNth = 0) const;
        uint32_t InputCount(Semantic eSemantic) const;
    };

    struct Mesh
    {
        std::string id, name;
        std::vector<Source> aSources;
        std::vector<Primitive> aPrimitives;

        uint32_t TriangleCount() const;
        int32_t FindSource(std::string_view strId) const; // -1 when absent
    };

    // ------------------------------------------------------------------ materials
    struct Image
    {
        std::string id, name;
        std::string strFile; // init_from, as written
    };

    // A `texture` reference and where its chain ended: sampler2D newparam, surface
    // newparam, image.
    struct Texture
    {
        std::string strTexture;  // the `texture` attribute: a sampler's sid (or an image id)
        std::string strTexcoord; // the `texcoord` attribute, bound by bind_vertex_input
        int32_t iImage = -1;     // into Images(); -1 when the chain does not resolve
    };

    struct ColorOrTexture
    {
        bool bColor = false;
        CVec4 vColor{0, 0, 0, 1};
        bool bTexture = false;
        Texture texture;
    };

    enum class Shading : uint8_t
    {
        Constant,
        Lambert,
        Phong,
        Blinn,
    };

    struct Effect
    {
        std::string id, name;
        Shading eShading = Shading::Blinn;
        ColorOrTexture emission, ambient, diffuse, specular, transparent;
        std::optional<float> fShininess, fTransparency;
        // From extra/technique of any profile.
        bool bDoubleSided = false;
        bool bBump = false;
        Texture bump;
    };

    struct Material
    {
        std::string id, name;
        std::string strEffectUrl;
        int32_t iEffect = -1; // into Effects()
    };

    // ------------------------------------------------------------------ skins
    struct Skin
    {
        std::string id, name; // of the controller
        std::string strSourceUrl;
        int32_t iMesh = -1; // into Meshes()
        CMatrix44 mBindShape;
        std::vector<std::string> aJoints; // Name_array names or IDREF_array ids
        bool bJointIds = false;           // true for IDREF_array
        std::vector<CMatrix44> aInverseBind;
        // Influences of vertex v: entries aFirst[v] .. aFirst[v + 1] - 1 of aJoint / aWeight.
        // A joint of -1 stands for the bind shape itself.
        std::vector<uint32_t> aFirst;
        std::vector<int32_t> aJoint;
        std::vector<float> aWeight;

        uint32_t VertexCount() const { return aFirst.empty() ? 0 : uint32_t(aFirst.size() - 1); }
    };

    // ------------------------------------------------------------------ lights, cameras
    enum class LightType : uint8_t
    {
        Ambient,
        Directional,
        Point,
        Spot,
    };

    struct Light
    {
        std::string id, name;
        LightType eType = LightType::Point;
        CVec3 vColor{1, 1, 1};
        float fConstantAttenuation = 1.0f;
        float fLinearAttenuation = 0.0f;
        float fQuadraticAttenuation = 0.0f;
        float fFalloffAngle = 180.0f; // degrees
        float fFalloffExponent = 0.0f;
        // Exporter values from extra/technique (or a technique of the light), absent when not
        // written.
        std::optional<float> fIntensity, fOuterCone, fAspectRatio, fFarAttenuationStart, fFarAttenuationEnd;
        std::optional<bool> bOvershoot;
    };

    struct Camera
    {
        std::string id, name;
        bool bOrthographic = false;
        // Perspective: xfov / yfov in degrees; orthographic: xmag / ymag. Absent ones are 0.
        float fXFov = 0.0f, fYFov = 0.0f, fXMag = 0.0f, fYMag = 0.0f;
        float fAspectRatio = 0.0f, fZNear = 0.0f, fZFar = 0.0f;
    };

    // ------------------------------------------------------------------ nodes
    enum class TransformKind : uint8_t
    {
        Matrix,    // 16 numbers, column-vector matrix written row by row
        Translate, // x y z
        Rotate,    // axis x y z, angle in degrees
        Scale,     // x y z
        LookAt,    // eye, interest, up
    };

    struct Transform
    {
        TransformKind eKind = TransformKind::Matrix;
        std::string sid;
        float afValues[16] = {};

        uint32_t ValueCount() const;
        // The engine form of this one element.
        CMatrix44 ToMatrix() const;
    };

    enum class InstanceKind : uint8_t
    {
        Geometry,
        Controller,
        Light,
        Camera,
        Node,
    };

    struct VertexInputBinding
    {
        std::string strSemantic;      // the texture's `texcoord` symbol
        std::string strInputSemantic; // TEXCOORD
        int32_t iInputSet = 0;
    };

    struct MaterialBinding
    {
        std::string strSymbol; // Primitive::strMaterial
        std::string strTarget; // "#material-id"
        int32_t iMaterial = -1;
        std::vector<VertexInputBinding> aVertexInputs;
    };

    class Node;

    struct Instance
    {
        InstanceKind eKind = InstanceKind::Geometry;
        std::string strUrl;
        // Into Meshes(), Skins(), Lights() or Cameras(); -1 when the url does not resolve.
        int32_t iIndex = -1;
        const Node* pNode = nullptr; // for instance_node
        std::vector<MaterialBinding> aMaterials;
        std::vector<std::string> aSkeletons; // instance_controller `skeleton` urls

        // The material bound to a primitive's symbol; -1 when none is.
        int32_t MaterialFor(std::string_view strSymbol) const;
    };

    class Node
    {
    public:
        Node() = default;
        virtual ~Node() = default;
        Node(const Node&) = delete;
        Node& operator=(const Node&) = delete;

        bool IsJoint() const { return type == "JOINT"; }
        // The local transform times the parents' (engine order: local first).
        CMatrix44 WorldMatrix() const;

        std::string id, sid, name, type = "NODE";
        std::string strUserProperties;      // extra/technique/user_properties
        std::vector<Transform> aTransforms; // in document order
        CMatrix44 mTransform;               // aTransforms composed; what the writer writes
        Node* pParent = nullptr;
        std::vector<std::unique_ptr<Node>> aChildren;
        std::vector<Instance> aInstances;
        std::vector<uint32_t> aChannels; // animation channels that target this node
    };

    // ------------------------------------------------------------------ animation
    // The target forms exporters write after "<node id>/".
    enum class TargetKind : uint8_t
    {
        Transform,     // "transform": the whole matrix
        TransformRow0, // "transform(3)(0)": translation x of the matrix
        TransformRow1, // "transform(3)(1)"
        TransformRow2, // "transform(3)(2)"
        TranslateX,    // "translate.X"
        TranslateY,    // "translate.Y"
        TranslateZ,    // "translate.Z"
        TransX,        // "trans.X"
        TransY,        // "trans.Y"
        TransZ,        // "trans.Z"
        RotX,          // "RotX.ANGLE"
        RotY,          // "RotY.ANGLE"
        RotZ,          // "RotZ.ANGLE"
        RotateX,       // "rotateX.ANGLE"
        RotateY,       // "rotateY.ANGLE"
        RotateZ,       // "rotateZ.ANGLE"
        Translation,   // "translation": x y z
        Translate,     // "translate": x y z
        Scale,         // "scale": x y z
        Other,         // any other text; still applied by sid and member where it names one
    };

    struct Channel
    {
        std::string strTarget; // as written
        TargetKind eKind = TargetKind::Other;
        std::string strSid;          // the transform element the target names
        std::string strMember;       // "X", "ANGLE", "(3)(0)", or empty for the whole element
        Node* pNode = nullptr;       // null when the target is not a node of the scene
        int32_t iAnimation = -1;     // the top-level animation it was read under
        std::vector<float> afTimes;  // seconds, "AnimStart=" already subtracted
        std::vector<float> afValues; // afTimes.size() * uStride
        uint32_t uStride = 1;
    };

    struct Animation
    {
        std::string id, name;
        std::vector<uint32_t> aChannels; // its own and its nested animations'
    };

    struct AnimationClip
    {
        std::string id, name;
        float fStart = 0.0f, fEnd = 0.0f;
        std::vector<int32_t> aAnimations; // -1 for an instance_animation that does not resolve
    };

    struct NodeKey
    {
        float fTime = 0.0f;
        CMatrix44 mTransform; // local
    };

    // ------------------------------------------------------------------ the document
    CColladaFile();
    virtual ~CColladaFile();
    CColladaFile(const CColladaFile&) = delete;
    CColladaFile& operator=(const CColladaFile&) = delete;

    // Reads a file through GUtFile. False (and logged, GetError()) when the file cannot be
    // read or the document is broken; the object then holds what it held before.
    bool Read(const char* pcPath);
    // The same from bytes in memory (UTF-8, or UTF-16/32 with a byte order mark).
    bool ReadMemory(const void* pData, size_t uSize);
    // Writes the fixed shape to a temporary file beside pcPath, then renames it into place.
    // False (and logged) when the file cannot be written.
    bool Write(const char* pcPath) const;
    // The fixed shape as UTF-8 text.
    void WriteMemory(std::string& strOut) const;
    // Empties every list and restores the defaults.
    void Clear();

    const std::string& GetError() const { return m_strError; }
    const std::vector<std::string>& GetWarnings() const { return m_aWarnings; }
    // The parsed document of the last successful Read, for values no list carries.
    const pugi::xml_document& GetDocument() const { return m_document; }

    int32_t upAxis = Y_UP;
    float m_fUnitMeter = 1.0f;
    std::string m_strUnitName = "meter";
    std::string m_strCreated, m_strModified; // asset dates, written back as held
    float m_fAnimStart = 0.0f;               // from "AnimStart=" in a contributor's comments

    std::vector<Image>& Images() { return m_aImages; }
    const std::vector<Image>& Images() const { return m_aImages; }
    std::vector<Effect>& Effects() { return m_aEffects; }
    const std::vector<Effect>& Effects() const { return m_aEffects; }
    std::vector<Material>& Materials() { return m_aMaterials; }
    const std::vector<Material>& Materials() const { return m_aMaterials; }
    std::vector<Mesh>& Meshes() { return m_aMeshes; }
    const std::vector<Mesh>& Meshes() const { return m_aMeshes; }
    std::vector<Skin>& Skins() { return m_aSkins; }
    const std::vector<Skin>& Skins() const { return m_aSkins; }
    std::vector<Light>& Lights() { return m_aLights; }
    const std::vector<Light>& Lights() const { return m_aLights; }
    std::vector<Camera>& Cameras() { return m_aCameras; }
    const std::vector<Camera>& Cameras() const { return m_aCameras; }
    // The roots of the visual scene, and of library_nodes (reached through instance_node).
    std::vector<std::unique_ptr<Node>>& Nodes() { return m_aNodes; }
    const std::vector<std::unique_ptr<Node>>& Nodes() const { return m_aNodes; }
    const std::vector<std::unique_ptr<Node>>& LibraryNodes() const { return m_aLibraryNodes; }
    std::vector<Channel>& Channels() { return m_aChannels; }
    const std::vector<Channel>& Channels() const { return m_aChannels; }
    const std::vector<Animation>& Animations() const { return m_aAnimations; }
    const std::vector<AnimationClip>& AnimationClips() const { return m_aClips; }
    const std::string& SceneId() const { return m_strSceneId; }

    // Index of the element with that id, -1 when there is none.
    int32_t FindMesh(std::string_view strId) const;
    int32_t FindMaterial(std::string_view strId) const;
    int32_t FindLight(std::string_view strId) const;
    // A node of the scene or of library_nodes by id; null when none has it.
    const Node* FindNode(std::string_view strId) const;
    Node* FindNode(std::string_view strId);
    // Calls fn for every node of the scene, parents before children.
    void ForEachNode(const std::function<void(const Node&)>& fn) const;

    // The node's local matrix at every key time of every channel that targets it, merged
    // and sorted. Each channel is sampled at each time (linear between keys, held at the
    // ends) and written into the transform element it names, then the elements are composed.
    // An empty list when no channel targets the node. With iClip, only the channels of that
    // clip's animations count (a take of a file with several).
    void GetNodeKeys(const Node& node, std::vector<NodeKey>& aKeys, int32_t iClip = -1) const;

    // Matrix conversion between Collada's 16 numbers and the engine's form.
    static CMatrix44 MatrixFromCollada(const float* pfValues);
    static void MatrixToCollada(const CMatrix44& m, float* pfValues);
    // The composition of transform elements in document order.
    static CMatrix44 ComposeTransforms(const std::vector<Transform>& aTransforms);
    // The form of the text after "<node id>/"; compared without regard to case.
    static TargetKind ParseTargetKind(std::string_view strText);
    // The name of a target form, e.g. "RotX.ANGLE".
    static const char* TargetKindName(TargetKind eKind);
    static const char* SemanticName(Semantic eSemantic);

private:
    friend class CColladaReader;
    friend class CColladaWriter;

    bool _ReadDocument(const char* pcName);
    void _Swap(CColladaFile& other);

    pugi::xml_document m_document;
    std::string m_strError;
    std::vector<std::string> m_aWarnings;
    std::vector<Image> m_aImages;
    std::vector<Effect> m_aEffects;
    std::vector<Material> m_aMaterials;
    std::vector<Mesh> m_aMeshes;
    std::vector<Skin> m_aSkins;
    std::vector<Light> m_aLights;
    std::vector<Camera> m_aCameras;
    std::vector<std::unique_ptr<Node>> m_aNodes;
    std::vector<std::unique_ptr<Node>> m_aLibraryNodes;
    std::vector<Channel> m_aChannels;
    std::vector<Animation> m_aAnimations;
    std::vector<AnimationClip> m_aClips;
    std::string m_strSceneId;
};

} // namespace Kestrin::Utility
