// The reader's order of steps, its shared helpers, and the small libraries: asset, images,
// materials, lights and cameras.
#include "import/ColladaReader.h"

#include "import/ColladaText.h"

#include <cstdarg>
#include <cstdio>
#include <cstring>

namespace Kestrin::Utility
{

using namespace ColladaText;

namespace
{
constexpr size_t MAX_WARNINGS = 200;
// Counts in a document only reserve memory up to this; longer lists grow as they are read.
constexpr size_t MAX_RESERVE = size_t(1) << 22;

// The numbers one element of an accessor takes by its params, for accessors that leave out
// `stride` (a single float4x4 param is a whole matrix).
uint32_t ParamWidth(pugi::xml_node accessor)
{
    uint32_t uWidth = 0;
    for (pugi::xml_node param : accessor.children("param"))
    {
        std::string_view type = param.attribute("type").value();
        uWidth += type == "float4x4"   ? 16
                  : type == "float3x3" ? 9
                  : type == "float4"   ? 4
                  : type == "float3"   ? 3
                  : type == "float2"   ? 2
                                       : 1;
    }
    return uWidth ? uWidth : 1;
}

std::string FormatV(const char* pcFormat, va_list args)
{
    char ac[1024];
    vsnprintf(ac, sizeof(ac), pcFormat, args);
    return ac;
}
} // namespace

bool CColladaReader::Fail(const char* pcFormat, ...)
{
    if (m_strError.empty())
    {
        va_list args;
        va_start(args, pcFormat);
        m_strError = FormatV(pcFormat, args);
        va_end(args);
    }
    return false;
}

void CColladaReader::Warn(const char* pcFormat, ...)
{
    if (m_file.m_aWarnings.size() >= MAX_WARNINGS)
    {
        return;
    }
    va_list args;
    va_start(args, pcFormat);
    m_file.m_aWarnings.push_back(FormatV(pcFormat, args));
    va_end(args);
    if (m_file.m_aWarnings.size() == MAX_WARNINGS)
    {
        m_file.m_aWarnings.back() = "(further warnings left out)";
    }
}

// ---------------------------------------------------------------------------------------
// Helpers

std::string_view CColladaReader::UrlId(std::string_view strUrl)
{
    strUrl = Trim(strUrl);
    size_t uHash = strUrl.find('#');
    if (uHash == std::string_view::npos)
    {
        return strUrl;
    }
    return uHash == 0 ? strUrl.substr(1) : std::string_view();
}

std::string_view CColladaReader::Text(pugi::xml_node node)
{
    return node.child_value();
}

bool CColladaReader::AttrUInt(pugi::xml_node node, const char* pcName, uint32_t& uOut, uint32_t uDefault,
                              uint32_t uMax)
{
    pugi::xml_attribute attr = node.attribute(pcName);
    if (!attr)
    {
        uOut = uDefault;
        return true;
    }
    int64_t i = 0;
    if (!ParseInt(attr.value(), i) || i < 0 || uint64_t(i) > uMax)
    {
        return Fail("<%s> has %s=\"%s\", not a number from 0 to %u", node.name(), pcName, attr.value(), uMax);
    }
    uOut = uint32_t(i);
    return true;
}

bool CColladaReader::ReadFloat(pugi::xml_node node, float& fOut)
{
    if (!node)
    {
        return false;
    }
    if (pugi::xml_node inner = node.child("float"))
    {
        node = inner;
    }
    return ParseFloat(Text(node), fOut);
}

bool CColladaReader::ReadFloatChild(pugi::xml_node parent, const char* pcName, float& fOut)
{
    return ReadFloat(parent.child(pcName), fOut);
}

bool CColladaReader::ReadFloatList(pugi::xml_node node, float* pfOut, uint32_t uCount, const char* pcWhat)
{
    std::vector<float> af;
    if (!ParseFloats(CText(node), af) || af.size() != uCount)
    {
        return Fail("%s: <%s> needs %u numbers", pcWhat, node.name(), uCount);
    }
    std::copy(af.begin(), af.end(), pfOut);
    return true;
}

bool CColladaReader::ReadFloatSource(pugi::xml_node source, CColladaFile::Source& out)
{
    out.id = source.attribute("id").value();
    pugi::xml_node array = source.child("float_array");
    if (!array)
    {
        array = source.child("int_array");
    }
    std::vector<float> af;
    if (array)
    {
        uint32_t uDeclared = 0;
        if (!AttrUInt(array, "count", uDeclared, 0))
        {
            return false;
        }
        // The declared count is only a hint for the reservation.
        af.reserve(std::min<size_t>(uDeclared, MAX_RESERVE));
        const char* pBad = nullptr;
        if (!ParseFloats(CText(array), af, &pBad))
        {
            return Fail("source '%s': <%s> holds \"%.20s\", not a number", out.id.c_str(), array.name(),
                        pBad);
        }
        if (array.attribute("count") && af.size() != uDeclared)
        {
            return Fail("source '%s': <%s> count %u disagrees with its %zu numbers", out.id.c_str(),
                        array.name(), uDeclared, af.size());
        }
    }
    pugi::xml_node accessor = source.child("technique_common").child("accessor");
    uint32_t uCount = uint32_t(af.size()), uStride = 1, uOffset = 0;
    if (accessor && (!AttrUInt(accessor, "count", uCount, 0) ||
                     !AttrUInt(accessor, "stride", uStride, ParamWidth(accessor)) ||
                     !AttrUInt(accessor, "offset", uOffset, 0)))
    {
        return false;
    }
    if (uStride == 0 || uint64_t(uOffset) + uint64_t(uCount) * uStride > af.size())
    {
        return Fail("source '%s': accessor of %u elements of stride %u reads past its %zu numbers",
                    out.id.c_str(), uCount, uStride, af.size());
    }
    out.uCount = uCount;
    out.uStride = uStride;
    if (uOffset == 0 && size_t(uCount) * uStride == af.size())
    {
        out.afValues = std::move(af);
    }
    else
    {
        out.afValues.assign(af.begin() + uOffset, af.begin() + uOffset + size_t(uCount) * uStride);
    }
    return true;
}

// ---------------------------------------------------------------------------------------
// Order of steps

bool CColladaReader::Read(pugi::xml_node collada)
{
    ReadAsset(collada.child("asset"));
    ReadImages(collada.child("library_images"));
    if (!ReadEffects(collada.child("library_effects")))
    {
        return false;
    }
    ReadMaterials(collada.child("library_materials"));
    if (!ReadGeometries(collada.child("library_geometries")) ||
        !ReadControllers(collada.child("library_controllers")) ||
        !ReadLights(collada.child("library_lights")))
    {
        return false;
    }
    ReadCameras(collada.child("library_cameras"));
    if (!ReadScene(collada) || !ReadAnimations(collada.child("library_animations")))
    {
        return false;
    }
    ReadAnimationClips(collada.child("library_animation_clips"));
    return true;
}

void CColladaReader::ReadAsset(pugi::xml_node asset)
{
    std::string_view axis = Text(asset.child("up_axis"));
    if (axis.find("X_UP") != std::string_view::npos)
    {
        m_file.upAxis = CColladaFile::X_UP;
    }
    else if (axis.find("Y_UP") != std::string_view::npos)
    {
        m_file.upAxis = CColladaFile::Y_UP;
    }
    else if (axis.find("Z_UP") != std::string_view::npos)
    {
        m_file.upAxis = CColladaFile::Z_UP;
    }
    if (pugi::xml_node unit = asset.child("unit"))
    {
        float fMeter = 0.0f;
        if (ParseFloat(unit.attribute("meter").value(), fMeter) && fMeter > 0.0f)
        {
            m_file.m_fUnitMeter = fMeter;
        }
        if (*unit.attribute("name").value())
        {
            m_file.m_strUnitName = unit.attribute("name").value();
        }
    }
    m_file.m_strCreated = Trim(Text(asset.child("created")));
    m_file.m_strModified = Trim(Text(asset.child("modified")));
    // "AnimStart=<seconds>" in the exporter's comments: the time of the first frame.
    for (pugi::xml_node contributor : asset.children("contributor"))
    {
        std::string_view comments = Text(contributor.child("comments"));
        size_t uAt = comments.find("AnimStart=");
        if (uAt == std::string_view::npos)
        {
            continue;
        }
        std::string_view number = comments.substr(uAt + 10);
        size_t uEnd = number.find_first_of("; \t\r\n");
        float fStart = 0.0f;
        if (ParseFloat(number.substr(0, uEnd), fStart))
        {
            m_file.m_fAnimStart = fStart;
        }
        break;
    }
}

void CColladaReader::ReadImages(pugi::xml_node library)
{
    for (pugi::xml_node element : library.children("image"))
    {
        CColladaFile::Image image;
        image.id = element.attribute("id").value();
        image.name = element.attribute("name").value();
        pugi::xml_node from = element.child("init_from");
        // 1.5 documents wrap the file in <ref>.
        image.strFile = Trim(Text(from.child("ref") ? from.child("ref") : from));
        m_mapImages[element.attribute("id").value()] = int32_t(m_file.m_aImages.size());
        m_file.m_aImages.push_back(std::move(image));
    }
}

void CColladaReader::ReadMaterials(pugi::xml_node library)
{
    for (pugi::xml_node element : library.children("material"))
    {
        CColladaFile::Material material;
        material.id = element.attribute("id").value();
        material.name = element.attribute("name").value();
        material.strEffectUrl = element.child("instance_effect").attribute("url").value();
        auto it = m_mapEffects.find(UrlId(material.strEffectUrl));
        if (it != m_mapEffects.end())
        {
            material.iEffect = it->second;
        }
        else
        {
            Warn("material '%s': effect '%s' not found", material.id.c_str(), material.strEffectUrl.c_str());
        }
        m_mapMaterials[element.attribute("id").value()] = int32_t(m_file.m_aMaterials.size());
        m_file.m_aMaterials.push_back(std::move(material));
    }
}

// ---------------------------------------------------------------------------------------
// Lights

bool CColladaReader::ReadLights(pugi::xml_node library)
{
    for (pugi::xml_node element : library.children("light"))
    {
        CColladaFile::Light light;
        if (!ReadLight(element, light))
        {
            return false;
        }
        m_mapLights[element.attribute("id").value()] = int32_t(m_file.m_aLights.size());
        m_file.m_aLights.push_back(std::move(light));
    }
    return true;
}

bool CColladaReader::ReadLight(pugi::xml_node element, CColladaFile::Light& out)
{
    out.id = element.attribute("id").value();
    out.name = element.attribute("name").value();
    static const struct
    {
        const char* pcName;
        CColladaFile::LightType eType;
    } s_aTypes[] = {
        {"point", CColladaFile::LightType::Point},
        {"directional", CColladaFile::LightType::Directional},
        {"spot", CColladaFile::LightType::Spot},
        {"ambient", CColladaFile::LightType::Ambient},
    };
    pugi::xml_node common = element.child("technique_common");
    for (const auto& type : s_aTypes)
    {
        pugi::xml_node kind = common.child(type.pcName);
        if (!kind)
        {
            continue;
        }
        out.eType = type.eType;
        if (pugi::xml_node color = kind.child("color"))
        {
            std::vector<float> af;
            if (!ParseFloats(CText(color), af) || af.size() < 3)
            {
                return Fail("light '%s': <color> needs 3 numbers", out.id.c_str());
            }
            out.vColor = {af[0], af[1], af[2]};
        }
        ReadFloatChild(kind, "constant_attenuation", out.fConstantAttenuation);
        ReadFloatChild(kind, "linear_attenuation", out.fLinearAttenuation);
        ReadFloatChild(kind, "quadratic_attenuation", out.fQuadraticAttenuation);
        ReadFloatChild(kind, "falloff_angle", out.fFalloffAngle);
        ReadFloatChild(kind, "falloff_exponent", out.fFalloffExponent);
        break;
    }
    ReadLightExtras(element, out);
    return true;
}

// Exporter values sit in extra/technique (1.4.1) or in a technique of the light (1.4.0), one
// technique per profile; the first technique that has a value gives it.
void CColladaReader::ReadLightExtras(pugi::xml_node element, CColladaFile::Light& out)
{
    std::vector<pugi::xml_node> aTechniques;
    for (pugi::xml_node extra : element.children("extra"))
    {
        for (pugi::xml_node technique : extra.children("technique"))
        {
            aTechniques.push_back(technique);
        }
    }
    for (pugi::xml_node technique : element.children("technique"))
    {
        aTechniques.push_back(technique);
    }
    auto read = [&](const char* pcName, std::optional<float>& fOut)
    {
        for (pugi::xml_node technique : aTechniques)
        {
            float f = 0.0f;
            if (ReadFloatChild(technique, pcName, f))
            {
                fOut = f;
                return;
            }
        }
    };
    read("intensity", out.fIntensity);
    read("outer_cone", out.fOuterCone);
    read("aspect_ratio", out.fAspectRatio);
    read("far_attenuation_start", out.fFarAttenuationStart);
    read("far_attenuation_end", out.fFarAttenuationEnd);
    for (pugi::xml_node technique : aTechniques)
    {
        if (pugi::xml_node overshoot = technique.child("overshoot"))
        {
            std::string_view text = Trim(Text(overshoot));
            out.bOvershoot = text == "1" || text == "true" || text == "TRUE";
            break;
        }
    }
    // A light whose falloff only the exporter's technique carries (directional lights).
    if (out.eType != CColladaFile::LightType::Spot)
    {
        for (pugi::xml_node technique : aTechniques)
        {
            if (ReadFloatChild(technique, "falloff_angle", out.fFalloffAngle))
            {
                break;
            }
        }
    }
}

// ---------------------------------------------------------------------------------------
// Cameras

void CColladaReader::ReadCameras(pugi::xml_node library)
{
    for (pugi::xml_node element : library.children("camera"))
    {
        CColladaFile::Camera camera;
        camera.id = element.attribute("id").value();
        camera.name = element.attribute("name").value();
        pugi::xml_node common = element.child("optics").child("technique_common");
        pugi::xml_node projection = common.child("perspective");
        if (!projection)
        {
            projection = common.child("orthographic");
            camera.bOrthographic = bool(projection);
        }
        ReadFloatChild(projection, "xfov", camera.fXFov);
        ReadFloatChild(projection, "yfov", camera.fYFov);
        ReadFloatChild(projection, "xmag", camera.fXMag);
        ReadFloatChild(projection, "ymag", camera.fYMag);
        ReadFloatChild(projection, "aspect_ratio", camera.fAspectRatio);
        ReadFloatChild(projection, "znear", camera.fZNear);
        ReadFloatChild(projection, "zfar", camera.fZFar);
        m_mapCameras[element.attribute("id").value()] = int32_t(m_file.m_aCameras.size());
        m_file.m_aCameras.push_back(std::move(camera));
    }
}

} // namespace Kestrin::Utility
