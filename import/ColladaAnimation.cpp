// Animation targets: the forms exporters write, and sampling a node's channels into keys of
// its local matrix.
#include "import/ColladaFile.h"

#include <algorithm>
#include <cmath>
#include <iterator>
#include <strings.h>

namespace Kestrin::Utility
{

namespace
{
using TargetKind = CColladaFile::TargetKind;
using TransformKind = CColladaFile::TransformKind;

const struct
{
    const char* pcText;
    TargetKind eKind;
} s_aTargetForms[] = {
    {"transform", TargetKind::Transform},
    {"transform(3)(0)", TargetKind::TransformRow0},
    {"transform(3)(1)", TargetKind::TransformRow1},
    {"transform(3)(2)", TargetKind::TransformRow2},
    {"translate.X", TargetKind::TranslateX},
    {"translate.Y", TargetKind::TranslateY},
    {"translate.Z", TargetKind::TranslateZ},
    {"trans.X", TargetKind::TransX},
    {"trans.Y", TargetKind::TransY},
    {"trans.Z", TargetKind::TransZ},
    {"RotX.ANGLE", TargetKind::RotX},
    {"RotY.ANGLE", TargetKind::RotY},
    {"RotZ.ANGLE", TargetKind::RotZ},
    {"rotateX.ANGLE", TargetKind::RotateX},
    {"rotateY.ANGLE", TargetKind::RotateY},
    {"rotateZ.ANGLE", TargetKind::RotateZ},
    {"translation", TargetKind::Translation},
    {"translate", TargetKind::Translate},
    {"scale", TargetKind::Scale},
};

bool EqualNoCase(std::string_view a, std::string_view b)
{
    return a.size() == b.size() && strncasecmp(a.data(), b.data(), a.size()) == 0;
}

// The element a channel writes: by sid, then by the kind its form implies (the first matrix,
// translate or scale; the rotate about the form's axis).
CColladaFile::Transform* FindTransform(std::vector<CColladaFile::Transform>& aTransforms,
                                       const CColladaFile::Channel& channel)
{
    for (CColladaFile::Transform& transform : aTransforms)
    {
        if (!channel.strSid.empty() && transform.sid == channel.strSid)
        {
            return &transform;
        }
    }
    for (CColladaFile::Transform& transform : aTransforms)
    {
        if (!channel.strSid.empty() && EqualNoCase(transform.sid, channel.strSid))
        {
            return &transform;
        }
    }
    TransformKind eKind = TransformKind::Matrix;
    int iAxis = -1;
    switch (channel.eKind)
    {
        case TargetKind::Transform:
        case TargetKind::TransformRow0:
        case TargetKind::TransformRow1:
        case TargetKind::TransformRow2:
            break;
        case TargetKind::RotX:
        case TargetKind::RotateX:
        case TargetKind::RotY:
        case TargetKind::RotateY:
        case TargetKind::RotZ:
        case TargetKind::RotateZ:
            eKind = TransformKind::Rotate;
            iAxis = (channel.eKind == TargetKind::RotX || channel.eKind == TargetKind::RotateX)   ? 0
                    : (channel.eKind == TargetKind::RotY || channel.eKind == TargetKind::RotateY) ? 1
                                                                                                  : 2;
            break;
        case TargetKind::Scale:
            eKind = TransformKind::Scale;
            break;
        case TargetKind::Other:
            return nullptr;
        default:
            eKind = TransformKind::Translate;
            break;
    }
    for (CColladaFile::Transform& transform : aTransforms)
    {
        if (transform.eKind == eKind &&
            (iAxis < 0 || (transform.afValues[iAxis] != 0.0f && transform.afValues[(iAxis + 1) % 3] == 0.0f &&
                           transform.afValues[(iAxis + 2) % 3] == 0.0f)))
        {
            return &transform;
        }
    }
    return nullptr;
}

// The first value a member writes: "X", "Y", "Z", "ANGLE", or "(a)(b)" (element b * 4 + a of
// a matrix: "(3)(0)" is the translation x); -1 for the whole element.
int MemberIndex(const CColladaFile::Transform& transform, std::string_view member)
{
    if (member.empty())
    {
        return -1;
    }
    if (member[0] == '(')
    {
        int aiIndex[2] = {-1, -1};
        int iCount = 0;
        for (size_t i = 0; i < member.size() && iCount < 2; ++i)
        {
            if (member[i] >= '0' && member[i] <= '9')
            {
                aiIndex[iCount++] = member[i] - '0';
                while (i + 1 < member.size() && member[i + 1] >= '0' && member[i + 1] <= '9')
                {
                    ++i;
                }
            }
        }
        int iIndex = iCount == 2 ? aiIndex[1] * 4 + aiIndex[0] : aiIndex[0];
        return iIndex >= 0 && iIndex < int(transform.ValueCount()) ? iIndex : -2;
    }
    if (EqualNoCase(member, "ANGLE"))
    {
        return transform.eKind == TransformKind::Rotate ? 3 : -2;
    }
    if (member.size() == 1)
    {
        char c = char(member[0] & ~0x20);
        return c == 'X' ? 0 : c == 'Y' ? 1 : c == 'Z' ? 2 : -2;
    }
    return -2;
}

float Sample(const CColladaFile::Channel& channel, float fTime, uint32_t uComponent)
{
    const std::vector<float>& afTimes = channel.afTimes;
    auto value = [&](size_t uKey) { return channel.afValues[uKey * channel.uStride + uComponent]; };
    size_t uNext = size_t(std::upper_bound(afTimes.begin(), afTimes.end(), fTime) - afTimes.begin());
    if (uNext == 0)
    {
        return value(0);
    }
    if (uNext == afTimes.size())
    {
        return value(afTimes.size() - 1);
    }
    float fSpan = afTimes[uNext] - afTimes[uNext - 1];
    float fT = fSpan > 0.0f ? (fTime - afTimes[uNext - 1]) / fSpan : 1.0f;
    return value(uNext - 1) + (value(uNext) - value(uNext - 1)) * fT;
}

// Writes the channel's value at fTime into the element it names. A whole-matrix channel with
// no matrix element to write replaces every element.
void ApplyChannel(std::vector<CColladaFile::Transform>& aTransforms, const CColladaFile::Channel& channel,
                  float fTime)
{
    if (channel.afTimes.empty() || channel.uStride == 0)
    {
        return;
    }
    CColladaFile::Transform* pTransform = FindTransform(aTransforms, channel);
    if (!pTransform)
    {
        if (channel.eKind == TargetKind::Transform && channel.uStride == 16)
        {
            aTransforms.assign(1, CColladaFile::Transform());
            pTransform = &aTransforms[0];
        }
        else
        {
            return;
        }
    }
    int iIndex = MemberIndex(*pTransform, channel.strMember);
    if (iIndex == -2)
    {
        return;
    }
    uint32_t uFirst = iIndex < 0 ? 0 : uint32_t(iIndex);
    uint32_t uCount = iIndex < 0 ? std::min(channel.uStride, pTransform->ValueCount()) : 1;
    for (uint32_t i = 0; i < uCount && uFirst + i < 16; ++i)
    {
        pTransform->afValues[uFirst + i] = Sample(channel, fTime, i);
    }
}
} // namespace

CColladaFile::TargetKind CColladaFile::ParseTargetKind(std::string_view strText)
{
    for (const auto& form : s_aTargetForms)
    {
        if (EqualNoCase(strText, form.pcText))
        {
            return form.eKind;
        }
    }
    return TargetKind::Other;
}

const char* CColladaFile::TargetKindName(TargetKind eKind)
{
    for (const auto& form : s_aTargetForms)
    {
        if (form.eKind == eKind)
        {
            return form.pcText;
        }
    }
    return "other";
}

void CColladaFile::GetNodeKeys(const Node& node, std::vector<NodeKey>& aKeys, int32_t iClip) const
{
    aKeys.clear();
    std::vector<const Channel*> apChannels;
    for (uint32_t uChannel : node.aChannels)
    {
        const Channel& channel = m_aChannels[uChannel];
        if (iClip < 0 || (size_t(iClip) < m_aClips.size() &&
                          std::count(m_aClips[size_t(iClip)].aAnimations.begin(),
                                     m_aClips[size_t(iClip)].aAnimations.end(), channel.iAnimation) > 0))
        {
            apChannels.push_back(&channel);
        }
    }
    // A time that is not a number has no place in the order (and would break the sort).
    std::vector<float> afTimes;
    for (const Channel* pChannel : apChannels)
    {
        std::copy_if(pChannel->afTimes.begin(), pChannel->afTimes.end(), std::back_inserter(afTimes),
                     [](float f) { return !std::isnan(f); });
    }
    std::sort(afTimes.begin(), afTimes.end());
    afTimes.erase(std::unique(afTimes.begin(), afTimes.end()), afTimes.end());
    aKeys.reserve(afTimes.size());
    std::vector<Transform> aTransforms;
    for (float fTime : afTimes)
    {
        aTransforms = node.aTransforms;
        for (const Channel* pChannel : apChannels)
        {
            ApplyChannel(aTransforms, *pChannel, fTime);
        }
        aKeys.push_back({fTime, ComposeTransforms(aTransforms)});
    }
}

} // namespace Kestrin::Utility
