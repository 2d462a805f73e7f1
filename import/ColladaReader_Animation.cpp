// Reading library_animations (channels, samplers and key sources, nested animations) and
// library_animation_clips. Channels are gathered under the node they target.
#include "import/ColladaReader.h"

#include "import/ColladaText.h"

#include <cstring>

namespace Kestrin::Utility
{

using namespace ColladaText;
using TargetKind = CColladaFile::TargetKind;

namespace
{
constexpr uint32_t MAX_ANIMATION_DEPTH = 64;

// A child of that name and id in the animation or, for samplers and sources kept by an
// outer animation, in the enclosing ones.
pugi::xml_node FindById(pugi::xml_node animation, const char* pcName, std::string_view id)
{
    for (pugi::xml_node scope = animation; !strcmp(scope.name(), "animation"); scope = scope.parent())
    {
        for (pugi::xml_node child : scope.children(pcName))
        {
            if (id == child.attribute("id").value())
            {
                return child;
            }
        }
    }
    return {};
}

// The number of values per key a target form needs; 0 when any will do.
uint32_t StrideOf(TargetKind eKind)
{
    switch (eKind)
    {
        case TargetKind::Transform:
            return 16;
        case TargetKind::Translation:
        case TargetKind::Translate:
        case TargetKind::Scale:
            return 3;
        case TargetKind::Other:
            return 0;
        default:
            return 1;
    }
}
} // namespace

bool CColladaReader::ReadAnimations(pugi::xml_node library)
{
    for (pugi::xml_node element : library.children("animation"))
    {
        int32_t iAnimation = int32_t(m_file.m_aAnimations.size());
        CColladaFile::Animation animation;
        animation.id = element.attribute("id").value();
        animation.name = element.attribute("name").value();
        if (!ReadAnimation(element, iAnimation, animation, 0))
        {
            return false;
        }
        if (*element.attribute("id").value())
        {
            m_mapAnimations[element.attribute("id").value()] = iAnimation;
        }
        m_file.m_aAnimations.push_back(std::move(animation));
    }
    // The channel list no longer moves: hand each node its channels.
    for (uint32_t i = 0; i < m_file.m_aChannels.size(); ++i)
    {
        if (CColladaFile::Node* pNode = m_file.m_aChannels[i].pNode)
        {
            pNode->aChannels.push_back(i);
        }
    }
    return true;
}

bool CColladaReader::ReadAnimation(pugi::xml_node element, int32_t iAnimation, CColladaFile::Animation& out,
                                   uint32_t uDepth)
{
    if (uDepth >= MAX_ANIMATION_DEPTH)
    {
        return Fail("animations are nested deeper than %u", MAX_ANIMATION_DEPTH);
    }
    for (pugi::xml_node channel : element.children("channel"))
    {
        CColladaFile::Channel read;
        if (!ReadChannel(element, channel, iAnimation, read))
        {
            return false;
        }
        out.aChannels.push_back(uint32_t(m_file.m_aChannels.size()));
        m_file.m_aChannels.push_back(std::move(read));
    }
    for (pugi::xml_node nested : element.children("animation"))
    {
        if (!ReadAnimation(nested, iAnimation, out, uDepth + 1))
        {
            return false;
        }
    }
    return true;
}

bool CColladaReader::ReadChannel(pugi::xml_node animation, pugi::xml_node channel, int32_t iAnimation,
                                 CColladaFile::Channel& out)
{
    out.strTarget = channel.attribute("target").value();
    out.iAnimation = iAnimation;
    const char* pcSource = channel.attribute("source").value();
    pugi::xml_node sampler = FindById(animation, "sampler", UrlId(pcSource));
    if (!sampler)
    {
        return Fail("channel '%s': sampler '%s' not found", out.strTarget.c_str(), pcSource);
    }
    CColladaFile::Source times, values;
    for (pugi::xml_node input : sampler.children("input"))
    {
        const char* pcSemantic = input.attribute("semantic").value();
        bool bInput = !strcmp(pcSemantic, "INPUT");
        if (!bInput && strcmp(pcSemantic, "OUTPUT"))
        {
            continue;
        }
        pugi::xml_node source = FindById(animation, "source", UrlId(input.attribute("source").value()));
        if (!source)
        {
            return Fail("channel '%s': %s source '%s' not found", out.strTarget.c_str(), pcSemantic,
                        input.attribute("source").value());
        }
        if (!ReadFloatSource(source, bInput ? times : values))
        {
            return false;
        }
    }
    if (times.uCount != values.uCount)
    {
        return Fail("channel '%s': %u key times but %u values", out.strTarget.c_str(), times.uCount,
                    values.uCount);
    }
    out.uStride = values.uStride;
    out.afValues = std::move(values.afValues);
    out.afTimes.reserve(times.uCount);
    for (uint32_t i = 0; i < times.uCount; ++i)
    {
        out.afTimes.push_back(times.Element(i)[0] - m_file.m_fAnimStart);
    }
    ParseTarget(out);
    uint32_t uNeeded = StrideOf(out.eKind);
    if (uNeeded && out.uStride != uNeeded && !out.afTimes.empty())
    {
        return Fail("channel '%s' needs %u values a key, its output has %u", out.strTarget.c_str(), uNeeded,
                    out.uStride);
    }
    return true;
}

// "<node id>/<sid>.<member>" or "<node id>/<sid>(i)(j)": the node, the form, and the
// transform element with its member.
void CColladaReader::ParseTarget(CColladaFile::Channel& channel)
{
    std::string_view target = channel.strTarget;
    size_t uSlash = target.find('/');
    if (uSlash == std::string_view::npos)
    {
        return; // not a node's transform (morph weights, material values)
    }
    std::string_view nodeId = target.substr(0, uSlash);
    std::string_view rest = target.substr(uSlash + 1);
    // A sid path ("joint/rotate/ANGLE" is not used, "a/b.X" is): the last step names the element.
    size_t uLast = rest.rfind('/');
    if (uLast != std::string_view::npos)
    {
        rest = rest.substr(uLast + 1);
    }
    channel.eKind = CColladaFile::ParseTargetKind(rest);
    size_t uMember = rest.find_first_of(".(");
    channel.strSid = rest.substr(0, uMember);
    if (uMember != std::string_view::npos)
    {
        channel.strMember = rest.substr(rest[uMember] == '.' ? uMember + 1 : uMember);
    }
    auto it = m_mapNodes.find(nodeId);
    if (it == m_mapNodes.end())
    {
        Warn("channel '%s': node '%.*s' not found", channel.strTarget.c_str(), int(nodeId.size()),
             nodeId.data());
        return;
    }
    channel.pNode = it->second;
}

void CColladaReader::ReadAnimationClips(pugi::xml_node library)
{
    for (pugi::xml_node element : library.children("animation_clip"))
    {
        CColladaFile::AnimationClip clip;
        clip.id = element.attribute("id").value();
        clip.name = element.attribute("name").value();
        ParseFloat(element.attribute("start").value(), clip.fStart);
        ParseFloat(element.attribute("end").value(), clip.fEnd);
        clip.fStart -= m_file.m_fAnimStart;
        clip.fEnd -= m_file.m_fAnimStart;
        for (pugi::xml_node instance : element.children("instance_animation"))
        {
            auto it = m_mapAnimations.find(UrlId(instance.attribute("url").value()));
            clip.aAnimations.push_back(it == m_mapAnimations.end() ? -1 : it->second);
            if (it == m_mapAnimations.end())
            {
                Warn("clip '%s': animation '%s' not found", clip.id.c_str(),
                     instance.attribute("url").value());
            }
        }
        m_file.m_aClips.push_back(std::move(clip));
    }
}

} // namespace Kestrin::Utility
