// Loading and saving a 20,000-entity scene of mixed kinds, headless, from and to memory,
// against memcpy of the same bytes.
#include "scene/SceneClassDesc.h"
#include "scene/SceneContent.h"
#include "scene/SceneFxSoundEntities.h"
#include "scene/SceneGroupEntity.h"
#include "scene/SceneLightEntity.h"
#include "scene/SceneMarkerEntities.h"
#include "scene/SceneMeshEntities.h"
#include "scene/SceneVolumeEntities.h"

#include <benchmark/benchmark.h>

#include <cstdio>
#include <cstring>
#include <vector>

using namespace Ovrel;
using Kestrin::Utility::CMatrix44;

namespace
{
constexpr int ENTITY_COUNT = 20000;

// A level's mix: mostly meshes, then lights, markers, effects, sounds, characters, groups.
uint32_t KindOf(int i)
{
    static const uint32_t aMix[20] = {
        ENTITY_STATIC_MESH, ENTITY_STATIC_MESH,  ENTITY_STATIC_MESH, ENTITY_STATIC_MESH, ENTITY_STATIC_MESH,
        ENTITY_STATIC_MESH, ENTITY_STATIC_MESH,  ENTITY_STATIC_MESH, ENTITY_STATIC_MESH, ENTITY_STATIC_MESH,
        ENTITY_LIGHT,       ENTITY_LIGHT,        ENTITY_LOCATOR,     ENTITY_TRIGGER,     ENTITY_FX,
        ENTITY_SOUND,       ENTITY_SKINNED_MESH, ENTITY_GAME_OBJECT, ENTITY_OCCLUDER,    ENTITY_CAMERA,
    };
    return aMix[i % 20];
}

void Fill(CSceneEntity* pEntity, int i)
{
    char acName[32];
    snprintf(acName, sizeof(acName), "Entity%05d", i);
    pEntity->SetName(acName);
    pEntity->SetLayer(i % 8);
    pEntity->SetTransform(CMatrix44::Translation({float(i % 100) * 10.0f, float(i / 100) * 10.0f, 0.0f}));
    switch (pEntity->GetType())
    {
        case ENTITY_STATIC_MESH:
        {
            auto* pMesh = static_cast<CStaticMeshSceneEntity*>(pEntity);
            snprintf(acName, sizeof(acName), "model\\rock_%03d.mesh", i % 300);
            pMesh->SetResourceName(acName);
            pMesh->SetCollisionFile("rock.col");
            pMesh->SetShapes({{0x21, 1}, {0x2, 2}});
            break;
        }
        case ENTITY_LIGHT:
            static_cast<CLightSceneEntity*>(pEntity)->InitByMenuName(i % 3 ? "Point" : "Spot");
            break;
        case ENTITY_FX:
            pEntity->SetResourceName("fire\\torch.eff");
            break;
        case ENTITY_SOUND:
            pEntity->SetResourceName("wind_loop");
            break;
        case ENTITY_SKINNED_MESH:
            pEntity->SetResourceName("character\\guard.cconfig");
            break;
        case ENTITY_OCCLUDER:
        {
            Kestrin::Ext::CRenderVolumeGeometry geometry;
            geometry.vertices = {{0, 0, 0}, {10, 0, 0}, {10, 0, 10}, {0, 0, 10}};
            geometry.indices = {0, 1, 2, 0, 2, 3};
            geometry.edges = {{0, 1}, {1, 2}, {2, 3}, {3, 0}};
            static_cast<COccluderSceneEntity*>(pEntity)->SetGeometry(geometry);
            break;
        }
        default:
            break;
    }
}

// The scene's bytes, built once through the scene code.
const std::vector<uint8_t>& SceneBytes()
{
    static std::vector<uint8_t> s_bytes = []
    {
        CSceneClassRegistry::Link();
        CSceneContent scene;
        scene.SetServices(nullptr, nullptr, nullptr, nullptr, nullptr, true);
        std::vector<CSceneEntity*> groupless;
        for (int i = 0; i < ENTITY_COUNT - ENTITY_COUNT / 100; ++i)
        {
            CSceneEntity* pEntity = scene.CreateEntity(KindOf(i), 0);
            Fill(pEntity, i);
        }
        // One group per 100 entities, holding ten of them.
        for (int g = 0; g < ENTITY_COUNT / 100; ++g)
        {
            auto* pGroup = static_cast<CGroupSceneEntity*>(scene.CreateEntity(ENTITY_GROUP, 0));
            pGroup->SetName("Group" + std::to_string(g));
            for (int j = 0; j < 10; ++j)
            {
                pGroup->Add(scene.GetEntity(g * 99 + j));
            }
        }
        Kestrin::Utility::CMemoryWriteStream out;
        scene.Write(out);
        return std::vector<uint8_t>(out.GetData(), out.GetData() + out.GetSize());
    }();
    return s_bytes;
}

void BM_SceneLoad(benchmark::State& state)
{
    const std::vector<uint8_t>& bytes = SceneBytes();
    for (auto _ : state)
    {
        CSceneContent scene;
        scene.SetServices(nullptr, nullptr, nullptr, nullptr, nullptr, true);
        Kestrin::Utility::CMemoryStream stream(bytes.data(), static_cast<int32_t>(bytes.size()));
        bool bRead = scene.Read(stream);
        benchmark::DoNotOptimize(bRead);
        if (!bRead || scene.GetEntityCount() != ENTITY_COUNT)
        {
            state.SkipWithError("the scene did not read");
        }
    }
    state.SetBytesProcessed(static_cast<int64_t>(state.iterations()) * static_cast<int64_t>(bytes.size()));
}

void BM_SceneSave(benchmark::State& state)
{
    const std::vector<uint8_t>& bytes = SceneBytes();
    CSceneContent scene;
    scene.SetServices(nullptr, nullptr, nullptr, nullptr, nullptr, true);
    Kestrin::Utility::CMemoryStream stream(bytes.data(), static_cast<int32_t>(bytes.size()));
    scene.Read(stream);
    Kestrin::Utility::CMemoryWriteStream out;
    for (auto _ : state)
    {
        out.Clear();
        bool bWritten = scene.Write(out);
        benchmark::DoNotOptimize(bWritten);
        benchmark::DoNotOptimize(out.GetData());
    }
    if (out.GetSize() != static_cast<int32_t>(bytes.size()) ||
        memcmp(out.GetData(), bytes.data(), bytes.size()) != 0)
    {
        state.SkipWithError("the saved scene differs from the loaded one");
    }
    state.SetBytesProcessed(static_cast<int64_t>(state.iterations()) * static_cast<int64_t>(bytes.size()));
}

// The baseline: the same bytes, copied.
void BM_SceneMemcpy(benchmark::State& state)
{
    const std::vector<uint8_t>& bytes = SceneBytes();
    std::vector<uint8_t> copy(bytes.size());
    for (auto _ : state)
    {
        memcpy(copy.data(), bytes.data(), bytes.size());
        benchmark::DoNotOptimize(copy.data());
        benchmark::ClobberMemory();
    }
    state.SetBytesProcessed(static_cast<int64_t>(state.iterations()) * static_cast<int64_t>(bytes.size()));
}
} // namespace

BENCHMARK(BM_SceneLoad)->Unit(benchmark::kMillisecond);
BENCHMARK(BM_SceneSave)->Unit(benchmark::kMillisecond);
BENCHMARK(BM_SceneMemcpy)->Unit(benchmark::kMillisecond);
BENCHMARK_MAIN();
