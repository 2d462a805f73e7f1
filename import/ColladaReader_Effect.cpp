// Reading library_effects: the common profile's shading, its colours and textures, the
// chain from a `texture` to its image file, and the exporters' extras.
#include "import/ColladaReader.h"

#include "import/ColladaText.h"

#include <cstring>

namespace Kestrin::Utility
{

using namespace ColladaText;

bool CColladaReader::ReadEffects(pugi::xml_node library)
{
    for (pugi::xml_node element : library.children("effect"))
    {
        CColladaFile::Effect effect;
        if (!ReadEffect(element, effect))
        {
            return false;
        }
        m_mapEffects[element.attribute("id").value()] = int32_t(m_file.m_aEffects.size());
        m_file.m_aEffects.push_back(std::move(effect));
    }
    return true;
}

bool CColladaReader::ReadEffect(pugi::xml_node element, CColladaFile::Effect& out)
{
    out.id = element.attribute("id").value();
    out.name = element.attribute("name").value();
    pugi::xml_node technique = element.child("profile_COMMON").child("technique");
    static const struct
    {
        const char* pcName;
        CColladaFile::Shading eShading;
    } s_aShadings[] = {
        {"phong", CColladaFile::Shading::Phong},
        {"lambert", CColladaFile::Shading::Lambert},
        {"blinn", CColladaFile::Shading::Blinn},
        {"constant", CColladaFile::Shading::Constant},
    };
    pugi::xml_node shading;
    for (const auto& kind : s_aShadings)
    {
        if ((shading = technique.child(kind.pcName)))
        {
            out.eShading = kind.eShading;
            break;
        }
    }
    if (!ReadColorOrTexture(shading.child("emission"), element, out.emission) ||
        !ReadColorOrTexture(shading.child("ambient"), element, out.ambient) ||
        !ReadColorOrTexture(shading.child("diffuse"), element, out.diffuse) ||
        !ReadColorOrTexture(shading.child("specular"), element, out.specular) ||
        !ReadColorOrTexture(shading.child("transparent"), element, out.transparent))
    {
        return false;
    }
    float f = 0.0f;
    if (ReadFloatChild(shading, "shininess", f))
    {
        out.fShininess = f;
    }
    if (ReadFloatChild(shading, "transparency", f))
    {
        out.fTransparency = f;
    }
    ReadEffectExtras(element, technique, out);
    return true;
}

bool CColladaReader::ReadColorOrTexture(pugi::xml_node channel, pugi::xml_node effect,
                                        CColladaFile::ColorOrTexture& out)
{
    if (pugi::xml_node color = channel.child("color"))
    {
        std::vector<float> af;
        if (!ParseFloats(CText(color), af) || af.size() < 3 || af.size() > 4)
        {
            return Fail("effect '%s': <%s><color> needs 3 or 4 numbers", effect.attribute("id").value(),
                        channel.name());
        }
        out.bColor = true;
        out.vColor = {af[0], af[1], af[2], af.size() == 4 ? af[3] : 1.0f};
    }
    if (pugi::xml_node texture = channel.child("texture"))
    {
        out.bTexture = true;
        ReadTexture(texture, effect, out.texture);
    }
    return true;
}

namespace
{
// A newparam by sid: in the common profile, then at the effect's level.
pugi::xml_node FindNewParam(pugi::xml_node effect, std::string_view sid)
{
    for (pugi::xml_node scope : {effect.child("profile_COMMON"), effect})
    {
        for (pugi::xml_node param : scope.children("newparam"))
        {
            if (sid == param.attribute("sid").value())
            {
                return param;
            }
        }
    }
    return {};
}

std::string_view SurfaceImage(pugi::xml_node surface)
{
    pugi::xml_node from = surface.child("init_from");
    return Trim(CColladaReader::Text(from.child("ref") ? from.child("ref") : from));
}
} // namespace

// texture -> sampler2D newparam (by sid) -> its source -> surface newparam -> init_from ->
// image. Exporters that skip the params name the image in `texture` itself.
void CColladaReader::ReadTexture(pugi::xml_node texture, pugi::xml_node effect, CColladaFile::Texture& out)
{
    out.strTexture = texture.attribute("texture").value();
    out.strTexcoord = texture.attribute("texcoord").value();
    std::string_view imageId = out.strTexture;
    pugi::xml_node param = FindNewParam(effect, out.strTexture);
    if (pugi::xml_node sampler = param.child("sampler2D"))
    {
        if (pugi::xml_node instanceImage = sampler.child("instance_image"))
        {
            imageId = UrlId(instanceImage.attribute("url").value());
        }
        else
        {
            std::string_view surfaceSid = Trim(Text(sampler.child("source")));
            pugi::xml_node surface = FindNewParam(effect, surfaceSid).child("surface");
            imageId = surface ? SurfaceImage(surface) : surfaceSid;
        }
    }
    else if (pugi::xml_node surface = param.child("surface"))
    {
        imageId = SurfaceImage(surface);
    }
    auto it = m_mapImages.find(imageId);
    if (it == m_mapImages.end())
    {
        Warn("effect '%s': texture '%s' leads to no image", effect.attribute("id").value(),
             out.strTexture.c_str());
        return;
    }
    out.iImage = it->second;
}

// double_sided and bump sit in an extra technique of any profile: of the common technique,
// of the common profile, or of the effect. The first one found counts.
void CColladaReader::ReadEffectExtras(pugi::xml_node effect, pugi::xml_node technique,
                                      CColladaFile::Effect& out)
{
    bool bDoubleSidedFound = false;
    for (pugi::xml_node scope : {technique, effect.child("profile_COMMON"), effect})
    {
        for (pugi::xml_node extra : scope.children("extra"))
        {
            for (pugi::xml_node profile : extra.children("technique"))
            {
                pugi::xml_node doubleSided = profile.child("double_sided");
                int64_t i = 0;
                if (!bDoubleSidedFound && doubleSided)
                {
                    std::string_view text = Trim(Text(doubleSided));
                    out.bDoubleSided = text == "true" || (ParseInt(text, i) && i != 0);
                    bDoubleSidedFound = true;
                }
                pugi::xml_node bump = profile.child("bump").child("texture");
                if (!out.bBump && bump)
                {
                    out.bBump = true;
                    ReadTexture(bump, effect, out.bump);
                }
            }
        }
    }
}

} // namespace Kestrin::Utility
