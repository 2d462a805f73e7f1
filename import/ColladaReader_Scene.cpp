// Reading the visual scene: the node tree, transform elements, instances and their material
// bindings, library_nodes, and the check that instance_node never loops.
#include "import/ColladaReader.h"

#include "import/ColladaText.h"

#include <algorithm>
#include <cstring>

namespace Kestrin::Utility
{

using namespace ColladaText;
using Node = CColladaFile::Node;

namespace
{
// Deeper trees are taken as broken data; real exporters stay far below (a chain of 65 has
// been seen).
constexpr uint32_t MAX_NODE_DEPTH = 512;
} // namespace

bool CColladaReader::ReadScene(pugi::xml_node collada)
{
    for (pugi::xml_node library : collada.children("library_nodes"))
    {
        if (!ReadNodes(library, nullptr, m_file.m_aLibraryNodes, 0))
        {
            return false;
        }
    }
    pugi::xml_node scenes = collada.child("library_visual_scenes");
    std::string_view sceneUrl =
        collada.child("scene").child("instance_visual_scene").attribute("url").value();
    std::string_view sceneId = UrlId(sceneUrl);
    pugi::xml_node scene;
    for (pugi::xml_node candidate : scenes.children("visual_scene"))
    {
        if (sceneId.empty() || sceneId == candidate.attribute("id").value())
        {
            scene = candidate;
            break;
        }
    }
    if (!scene && scenes.child("visual_scene"))
    {
        Warn("visual scene '%.*s' not found; the first one is read", int(sceneUrl.size()), sceneUrl.data());
        scene = scenes.child("visual_scene");
    }
    m_file.m_strSceneId = scene.attribute("id").value();
    if (!ReadNodes(scene, nullptr, m_file.m_aNodes, 0))
    {
        return false;
    }
    // Scene nodes win over library nodes of the same id.
    IndexNodes(m_file.m_aLibraryNodes);
    IndexNodes(m_file.m_aNodes);
    return ResolveInstances(m_file.m_aLibraryNodes) && ResolveInstances(m_file.m_aNodes) &&
           CheckInstanceCycles();
}

bool CColladaReader::ReadNodes(pugi::xml_node parent, Node* pParent, std::vector<std::unique_ptr<Node>>& aOut,
                               uint32_t uDepth)
{
    for (pugi::xml_node element : parent.children("node"))
    {
        std::unique_ptr<Node> pNode = std::make_unique<Node>();
        pNode->pParent = pParent;
        if (!ReadNode(element, *pNode, uDepth))
        {
            return false;
        }
        aOut.push_back(std::move(pNode));
    }
    return true;
}

bool CColladaReader::ReadNode(pugi::xml_node element, Node& node, uint32_t uDepth)
{
    if (uDepth >= MAX_NODE_DEPTH)
    {
        return Fail("nodes are nested deeper than %u", MAX_NODE_DEPTH);
    }
    node.id = element.attribute("id").value();
    node.sid = element.attribute("sid").value();
    node.name = element.attribute("name").value();
    if (pugi::xml_attribute type = element.attribute("type"))
    {
        node.type = type.value();
    }
    static const struct
    {
        const char* pcName;
        CColladaFile::InstanceKind eKind;
    } s_aInstances[] = {
        {"instance_geometry", CColladaFile::InstanceKind::Geometry},
        {"instance_controller", CColladaFile::InstanceKind::Controller},
        {"instance_light", CColladaFile::InstanceKind::Light},
        {"instance_camera", CColladaFile::InstanceKind::Camera},
        {"instance_node", CColladaFile::InstanceKind::Node},
    };
    for (pugi::xml_node child : element.children())
    {
        const char* pcName = child.name();
        if (!strcmp(pcName, "node"))
        {
            continue;
        }
        if (!strcmp(pcName, "extra"))
        {
            for (pugi::xml_node technique : child.children("technique"))
            {
                if (node.strUserProperties.empty())
                {
                    node.strUserProperties = Trim(Text(technique.child("user_properties")));
                }
            }
            continue;
        }
        for (const auto& instance : s_aInstances)
        {
            if (!strcmp(pcName, instance.pcName))
            {
                ReadInstance(child, instance.eKind, node);
            }
        }
        if (!ReadTransform(child, node))
        {
            return false;
        }
    }
    node.mTransform = CColladaFile::ComposeTransforms(node.aTransforms);
    return ReadNodes(element, &node, node.aChildren, uDepth + 1);
}

// A transform element in document order; any other element is left alone.
bool CColladaReader::ReadTransform(pugi::xml_node element, Node& node)
{
    static const struct
    {
        const char* pcName;
        CColladaFile::TransformKind eKind;
    } s_aKinds[] = {
        {"matrix", CColladaFile::TransformKind::Matrix},
        {"translate", CColladaFile::TransformKind::Translate},
        {"rotate", CColladaFile::TransformKind::Rotate},
        {"scale", CColladaFile::TransformKind::Scale},
        {"lookat", CColladaFile::TransformKind::LookAt},
    };
    const char* pcName = element.name();
    for (const auto& kind : s_aKinds)
    {
        if (strcmp(pcName, kind.pcName))
        {
            continue;
        }
        CColladaFile::Transform transform;
        transform.eKind = kind.eKind;
        transform.sid = element.attribute("sid").value();
        std::string strWhat = "node '" + node.id + "'";
        if (!ReadFloatList(element, transform.afValues, transform.ValueCount(), strWhat.c_str()))
        {
            return false;
        }
        node.aTransforms.push_back(std::move(transform));
        return true;
    }
    if (!strcmp(pcName, "skew"))
    {
        Warn("node '%s': <skew> is not read", node.id.c_str());
    }
    return true;
}

void CColladaReader::ReadInstance(pugi::xml_node element, CColladaFile::InstanceKind eKind, Node& node)
{
    CColladaFile::Instance instance;
    instance.eKind = eKind;
    instance.strUrl = element.attribute("url").value();
    const IdMap* pMap = nullptr;
    const char* pcWhat = "";
    switch (eKind)
    {
        case CColladaFile::InstanceKind::Geometry:
            pMap = &m_mapMeshes;
            pcWhat = "geometry";
            break;
        case CColladaFile::InstanceKind::Controller:
            pMap = &m_mapSkins;
            pcWhat = "controller";
            break;
        case CColladaFile::InstanceKind::Light:
            pMap = &m_mapLights;
            pcWhat = "light";
            break;
        case CColladaFile::InstanceKind::Camera:
            pMap = &m_mapCameras;
            pcWhat = "camera";
            break;
        case CColladaFile::InstanceKind::Node:
            break; // resolved once every node is read
    }
    if (pMap)
    {
        auto it = pMap->find(UrlId(instance.strUrl));
        if (it != pMap->end())
        {
            instance.iIndex = it->second;
        }
        else
        {
            Warn("node '%s': %s '%s' not found", node.id.c_str(), pcWhat, instance.strUrl.c_str());
        }
    }
    for (pugi::xml_node skeleton : element.children("skeleton"))
    {
        instance.aSkeletons.emplace_back(Trim(Text(skeleton)));
    }
    ReadBindMaterial(element, instance);
    node.aInstances.push_back(std::move(instance));
}

void CColladaReader::ReadBindMaterial(pugi::xml_node instance, CColladaFile::Instance& out)
{
    pugi::xml_node common = instance.child("bind_material").child("technique_common");
    for (pugi::xml_node element : common.children("instance_material"))
    {
        CColladaFile::MaterialBinding binding;
        binding.strSymbol = element.attribute("symbol").value();
        binding.strTarget = element.attribute("target").value();
        auto it = m_mapMaterials.find(UrlId(binding.strTarget));
        if (it != m_mapMaterials.end())
        {
            binding.iMaterial = it->second;
        }
        else
        {
            Warn("material '%s' bound to '%s' not found", binding.strTarget.c_str(),
                 binding.strSymbol.c_str());
        }
        for (pugi::xml_node input : element.children("bind_vertex_input"))
        {
            CColladaFile::VertexInputBinding bind;
            bind.strSemantic = input.attribute("semantic").value();
            bind.strInputSemantic = input.attribute("input_semantic").value();
            int64_t iSet = 0;
            ParseInt(input.attribute("input_set").value(), iSet);
            bind.iInputSet = int32_t(std::clamp<int64_t>(iSet, -1, 0x7fffffff));
            binding.aVertexInputs.push_back(std::move(bind));
        }
        out.aMaterials.push_back(std::move(binding));
    }
}

void CColladaReader::IndexNodes(const std::vector<std::unique_ptr<Node>>& aNodes)
{
    for (const std::unique_ptr<Node>& pNode : aNodes)
    {
        if (!pNode->id.empty())
        {
            m_mapNodes[pNode->id] = pNode.get();
        }
        IndexNodes(pNode->aChildren);
    }
}

bool CColladaReader::ResolveInstances(const std::vector<std::unique_ptr<Node>>& aNodes)
{
    for (const std::unique_ptr<Node>& pNode : aNodes)
    {
        for (CColladaFile::Instance& instance : pNode->aInstances)
        {
            if (instance.eKind != CColladaFile::InstanceKind::Node)
            {
                continue;
            }
            auto it = m_mapNodes.find(UrlId(instance.strUrl));
            if (it == m_mapNodes.end())
            {
                Warn("node '%s': instance_node '%s' not found", pNode->id.c_str(), instance.strUrl.c_str());
                continue;
            }
            instance.pNode = it->second;
        }
        if (!ResolveInstances(pNode->aChildren))
        {
            return false;
        }
    }
    return true;
}

// A depth-first walk over children and instance_node links, with an explicit stack: a node
// met again while it is still open closes a loop.
bool CColladaReader::CheckInstanceCycles()
{
    enum : uint8_t
    {
        OPEN = 1,
        DONE = 2,
    };
    std::unordered_map<const Node*, uint8_t> mapState;
    struct Frame
    {
        const Node* pNode;
        size_t uNext;
    };
    std::vector<Frame> aStack;
    auto edge = [](const Node& node, size_t i) -> const Node*
    {
        if (i < node.aChildren.size())
        {
            return node.aChildren[i].get();
        }
        const CColladaFile::Instance& instance = node.aInstances[i - node.aChildren.size()];
        return instance.eKind == CColladaFile::InstanceKind::Node ? instance.pNode : nullptr;
    };
    for (const auto* pRoots : {&m_file.m_aLibraryNodes, &m_file.m_aNodes})
    {
        for (const std::unique_ptr<Node>& pRoot : *pRoots)
        {
            if (mapState[pRoot.get()] == DONE)
            {
                continue;
            }
            mapState[pRoot.get()] = OPEN;
            aStack.push_back({pRoot.get(), 0});
            while (!aStack.empty())
            {
                Frame& frame = aStack.back();
                if (frame.uNext == frame.pNode->aChildren.size() + frame.pNode->aInstances.size())
                {
                    mapState[frame.pNode] = DONE;
                    aStack.pop_back();
                    continue;
                }
                const Node* pNext = edge(*frame.pNode, frame.uNext++);
                if (!pNext)
                {
                    continue;
                }
                uint8_t& uState = mapState[pNext];
                if (uState == OPEN)
                {
                    return Fail("node '%s' instances itself through instance_node", pNext->id.c_str());
                }
                if (uState == 0)
                {
                    uState = OPEN;
                    aStack.push_back({pNext, 0});
                }
            }
        }
    }
    return true;
}

} // namespace Kestrin::Utility
