// edtool dae: looks into Collada documents and writes them back.
//   edtool dae info FILE        the node tree, meshes, materials, lights, cameras, skins, animations
//   edtool dae resave IN OUT    reads IN and writes OUT in the writer's shape
#include "tools/edtool/Commands.h"

#include "import/ColladaFile.h"

#include <cstdio>
#include <cstring>
#include <string>

using Kestrin::Utility::CColladaFile;

namespace
{
const char* AxisName(int32_t iAxis)
{
    return iAxis == CColladaFile::X_UP ? "X_UP" : iAxis == CColladaFile::Y_UP ? "Y_UP" : "Z_UP";
}

const char* PrimitiveName(CColladaFile::PrimitiveKind eKind)
{
    return eKind == CColladaFile::PrimitiveKind::Triangles  ? "triangles"
           : eKind == CColladaFile::PrimitiveKind::Polylist ? "polylist"
                                                            : "polygons";
}

const char* LightName(CColladaFile::LightType eType)
{
    static const char* const s_apc[] = {"ambient", "directional", "point", "spot"};
    return s_apc[int(eType) & 3];
}

const char* ShadingName(CColladaFile::Shading eShading)
{
    static const char* const s_apc[] = {"constant", "lambert", "phong", "blinn"};
    return s_apc[int(eShading) & 3];
}

void PrintMaterials(const CColladaFile& file)
{
    printf("images: %zu\n", file.Images().size());
    for (const CColladaFile::Image& image : file.Images())
    {
        printf("  %s \"%s\"\n", image.id.c_str(), image.strFile.c_str());
    }
    printf("materials: %zu\n", file.Materials().size());
    for (const CColladaFile::Material& material : file.Materials())
    {
        printf("  %s \"%s\"", material.id.c_str(), material.name.c_str());
        if (material.iEffect < 0)
        {
            printf(" effect %s (not found)\n", material.strEffectUrl.c_str());
            continue;
        }
        const CColladaFile::Effect& effect = file.Effects()[size_t(material.iEffect)];
        printf(" effect %s %s", effect.id.c_str(), ShadingName(effect.eShading));
        if (effect.diffuse.bTexture)
        {
            const CColladaFile::Texture& texture = effect.diffuse.texture;
            printf(" diffuse texture %s", texture.iImage >= 0
                                              ? file.Images()[size_t(texture.iImage)].strFile.c_str()
                                              : "(unresolved)");
            printf(" texcoord %s", texture.strTexcoord.c_str());
        }
        else if (effect.diffuse.bColor)
        {
            const Kestrin::Utility::CVec4& v = effect.diffuse.vColor;
            printf(" diffuse %g %g %g %g", v.x, v.y, v.z, v.w);
        }
        printf("%s%s\n", effect.bDoubleSided ? " double-sided" : "", effect.bBump ? " bump" : "");
    }
}

void PrintMeshes(const CColladaFile& file)
{
    printf("meshes: %zu\n", file.Meshes().size());
    for (const CColladaFile::Mesh& mesh : file.Meshes())
    {
        uint32_t uVertices = 0;
        for (const CColladaFile::Primitive& prim : mesh.aPrimitives)
        {
            if (const CColladaFile::Input* pInput = prim.FindInput(CColladaFile::Semantic::Position))
            {
                uVertices = std::max(uVertices, mesh.aSources[size_t(pInput->iSource)].uCount);
            }
        }
        printf("  %s \"%s\": %u vertices, %u triangles\n", mesh.id.c_str(), mesh.name.c_str(), uVertices,
               mesh.TriangleCount());
        for (const CColladaFile::Primitive& prim : mesh.aPrimitives)
        {
            printf("    %s material \"%s\": %u faces, %u triangles, inputs", PrimitiveName(prim.eKind),
                   prim.strMaterial.c_str(), prim.uCount, prim.TriangleCount());
            for (const CColladaFile::Input& input : prim.aInputs)
            {
                printf(" %s", input.strSemantic.c_str());
                if (input.iSet >= 0)
                {
                    printf("/%d", input.iSet);
                }
                printf("@%u", input.uOffset);
            }
            printf("\n");
        }
    }
}

void PrintSkinsLightsCameras(const CColladaFile& file)
{
    printf("skins: %zu\n", file.Skins().size());
    for (const CColladaFile::Skin& skin : file.Skins())
    {
        uint32_t uMost = 0;
        for (uint32_t v = 0; v < skin.VertexCount(); ++v)
        {
            uMost = std::max(uMost, skin.aFirst[v + 1] - skin.aFirst[v]);
        }
        printf("  %s mesh %s: %zu joints, %u vertices, up to %u influences\n", skin.id.c_str(),
               skin.iMesh >= 0 ? file.Meshes()[size_t(skin.iMesh)].id.c_str() : "(not found)",
               skin.aJoints.size(), skin.VertexCount(), uMost);
    }
    printf("lights: %zu\n", file.Lights().size());
    for (const CColladaFile::Light& light : file.Lights())
    {
        printf("  %s %s color %g %g %g", light.id.c_str(), LightName(light.eType), light.vColor.x,
               light.vColor.y, light.vColor.z);
        if (light.eType == CColladaFile::LightType::Spot)
        {
            printf(" falloff %g", light.fFalloffAngle);
        }
        if (light.fIntensity)
        {
            printf(" intensity %g", *light.fIntensity);
        }
        if (light.fOuterCone)
        {
            printf(" outer_cone %g", *light.fOuterCone);
        }
        if (light.fFarAttenuationEnd)
        {
            printf(" far_attenuation_end %g", *light.fFarAttenuationEnd);
        }
        printf("\n");
    }
    printf("cameras: %zu\n", file.Cameras().size());
    for (const CColladaFile::Camera& camera : file.Cameras())
    {
        if (camera.bOrthographic)
        {
            printf("  %s orthographic xmag %g ymag %g", camera.id.c_str(), camera.fXMag, camera.fYMag);
        }
        else
        {
            printf("  %s perspective xfov %g yfov %g", camera.id.c_str(), camera.fXFov, camera.fYFov);
        }
        printf(" znear %g zfar %g\n", camera.fZNear, camera.fZFar);
    }
}

void PrintNode(const CColladaFile& file, const CColladaFile::Node& node, int iDepth)
{
    Kestrin::Utility::CVec3 t = node.mTransform.GetTranslation();
    printf("  %*s%s \"%s\"%s at %g %g %g", iDepth * 2, "", node.id.c_str(), node.name.c_str(),
           node.IsJoint() ? " JOINT" : "", t.x, t.y, t.z);
    static const char* const s_apcKinds[] = {"geometry", "controller", "light", "camera", "node"};
    for (const CColladaFile::Instance& instance : node.aInstances)
    {
        printf(" %s %s%s", s_apcKinds[int(instance.eKind) % 5], instance.strUrl.c_str(),
               (instance.iIndex < 0 && !instance.pNode) ? " (not found)" : "");
    }
    if (!node.aChannels.empty())
    {
        printf(" (%zu channels)", node.aChannels.size());
    }
    printf("\n");
    for (const std::unique_ptr<CColladaFile::Node>& pChild : node.aChildren)
    {
        PrintNode(file, *pChild, iDepth + 1);
    }
}

void PrintAnimations(const CColladaFile& file)
{
    printf("animations: %zu, channels: %zu, clips: %zu\n", file.Animations().size(), file.Channels().size(),
           file.AnimationClips().size());
    for (const CColladaFile::Channel& channel : file.Channels())
    {
        printf("  %s (%s): %zu keys of %u", channel.strTarget.c_str(),
               CColladaFile::TargetKindName(channel.eKind), channel.afTimes.size(), channel.uStride);
        if (!channel.afTimes.empty())
        {
            printf(", %g to %g s", channel.afTimes.front(), channel.afTimes.back());
        }
        printf("%s\n", channel.pNode ? "" : ", no node");
    }
}

int Info(const char* pcPath)
{
    CColladaFile file;
    if (!file.Read(pcPath))
    {
        fprintf(stderr, "edtool dae: %s: %s\n", pcPath, file.GetError().c_str());
        return 1;
    }
    printf("file: %s\nup axis: %s, unit: %s (%g m), anim start: %g\n", pcPath, AxisName(file.upAxis),
           file.m_strUnitName.c_str(), file.m_fUnitMeter, file.m_fAnimStart);
    size_t uNodes = 0;
    file.ForEachNode([&](const CColladaFile::Node&) { ++uNodes; });
    printf("nodes: %zu in scene '%s'\n", uNodes, file.SceneId().c_str());
    for (const std::unique_ptr<CColladaFile::Node>& pNode : file.Nodes())
    {
        PrintNode(file, *pNode, 0);
    }
    PrintMeshes(file);
    PrintMaterials(file);
    PrintSkinsLightsCameras(file);
    PrintAnimations(file);
    printf("warnings: %zu\n", file.GetWarnings().size());
    for (const std::string& strWarning : file.GetWarnings())
    {
        printf("  %s\n", strWarning.c_str());
    }
    return 0;
}

int Resave(const char* pcIn, const char* pcOut)
{
    CColladaFile file;
    if (!file.Read(pcIn))
    {
        fprintf(stderr, "edtool dae: %s: %s\n", pcIn, file.GetError().c_str());
        return 1;
    }
    if (!file.Write(pcOut))
    {
        fprintf(stderr, "edtool dae: cannot write %s\n", pcOut);
        return 1;
    }
    printf("wrote %s: %zu meshes, %zu materials, %zu lights\n", pcOut, file.Meshes().size(),
           file.Materials().size(), file.Lights().size());
    if (!file.Skins().empty() || !file.Channels().empty() || !file.Cameras().empty())
    {
        printf("not written (the writer's shape has no place for them): %zu skins, %zu animation channels, "
               "%zu cameras\n",
               file.Skins().size(), file.Channels().size(), file.Cameras().size());
    }
    return 0;
}
} // namespace

int DaeMain(int argc, char** argv)
{
    if (argc == 3 && !strcmp(argv[1], "info"))
    {
        return Info(argv[2]);
    }
    if (argc == 4 && !strcmp(argv[1], "resave"))
    {
        return Resave(argv[2], argv[3]);
    }
    fprintf(stderr, "usage: edtool dae info FILE | edtool dae resave IN OUT\n");
    return 2;
}
