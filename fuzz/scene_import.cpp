// The import reader on any bytes: a scene that holds a group of two locators either takes
// the file in (fresh ids, unique and never 0) or stays exactly as it was, bytes and next id
// alike. The same bytes also go through the environment's curve reader, as a `.raw` and as
// an image.
#include "scene/Scene.h"
#include "scene/SceneEnvironmentEntity.h"
#include "scene/SceneGroupEntity.h"

#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <string>
#include <unordered_set>
#include <vector>

namespace
{
std::vector<uint8_t> Bytes(const Ovrel::CScene& scene)
{
    Kestrin::Utility::CMemoryWriteStream out;
    if (!scene.Write(out))
    {
        abort();
    }
    const uint8_t* p = out.GetData();
    return p ? std::vector<uint8_t>(p, p + out.GetSize()) : std::vector<uint8_t>();
}
} // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* pData, size_t uSize)
{
    if (uSize > (1u << 20))
    {
        return 0;
    }
    Ovrel::CScene scene;
    scene.SetServices(nullptr, nullptr, nullptr, nullptr, nullptr, true);
    auto* pGroup = static_cast<Ovrel::CGroupSceneEntity*>(scene.CreateEntity(Ovrel::ENTITY_GROUP, 0));
    for (int i = 0; i < 2; ++i)
    {
        pGroup->Add(scene.CreateEntity(Ovrel::ENTITY_LOCATOR, 0));
    }
    const std::vector<uint8_t> before = Bytes(scene);
    const int32_t iNextBefore = scene.GetNextEntityId();
    std::vector<Ovrel::CSceneEntity*> imported;
    Kestrin::Utility::CMemoryStream stream(pData, static_cast<int32_t>(uSize));
    if (!scene.ReadImport(stream, imported))
    {
        if (Bytes(scene) != before || scene.GetNextEntityId() != iNextBefore || scene.GetEntityCount() != 3)
        {
            abort();
        }
    }
    else
    {
        std::unordered_set<int32_t> ids;
        for (Ovrel::CSceneEntity* pEntity : scene.GetEntities())
        {
            if (pEntity->GetId() == 0 || !ids.insert(pEntity->GetId()).second)
            {
                abort();
            }
        }
        scene.RelinkGroups();
        Bytes(scene);
    }
    std::vector<uint8_t> bytes(pData, pData + uSize);
    uint8_t acCurve[768];
    std::string strError;
    Ovrel::ReadCurveFile("curve.raw", bytes, acCurve, strError);
    Ovrel::ReadCurveFile("curve.tga", bytes, acCurve, strError);
    return 0;
}
