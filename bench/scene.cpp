// Loading and saving a 20,000-entity scene of mixed kinds, headless, from and to memory,
// against memcpy of the same bytes; and opening it from a file through CScene, at once and
// through the background loader with a simulated frame loop (Tick(3) and the scene's
// Update once a frame), against the open at once.
#include "scene/Scene.h"
#include "scene/SceneClassDesc.h"
#include "scene/SceneContent.h"
#include "scene/SceneFxSoundEntities.h"
#include "scene/SceneGroupEntity.h"
#include "scene/SceneLightEntity.h"
#include "scene/SceneMarkerEntities.h"
#include "scene/SceneMeshEntities.h"
#include "scene/SceneVolumeEntities.h"

#include "engine/utility/AsyncLoader.h"

#include <benchmark/benchmark.h>

#include <algorithm>
#include <chrono>
#include <cstdio>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <thread>
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
// The scene's bytes as a file, written once.
const std::string& SceneFile()
{
    static const std::string s_strPath = []
    {
        std::string strPath = (std::filesystem::temp_directory_path() / "bench_scene_20000.scene").string();
        const std::vector<uint8_t>& bytes = SceneBytes();
        std::ofstream out(strPath, std::ios::binary | std::ios::trunc);
        out.write(reinterpret_cast<const char*>(bytes.data()), static_cast<std::streamsize>(bytes.size()));
        return strPath;
    }();
    return s_strPath;
}

void BM_SceneOpen(benchmark::State& state)
{
    const std::string& strPath = SceneFile();
    for (auto _ : state)
    {
        CScene scene;
        scene.SetServices(nullptr, nullptr, nullptr, nullptr, nullptr, true);
        if (!scene.Open(strPath, false) || scene.GetEntityCount() != ENTITY_COUNT)
        {
            state.SkipWithError("the scene did not open");
        }
    }
}

using Clock = std::chrono::steady_clock;
constexpr int32_t TICK_BUDGET_MS = 3;

struct CFrameRun
{
    double dMilliseconds = 0.0;
    double dWorstTickMs = 0.0;
    int32_t iFrames = 0;
    bool bOk = false;
};

// One open through the loader: frames of iFrameUs (0: back to back), each starting with
// Tick(3) and the scene's Update, until nothing loads.
CFrameRun OpenThroughLoader(Kestrin::Utility::CAsyncLoader& loader, int iFrameUs)
{
    CFrameRun run;
    CScene scene;
    scene.SetServices(nullptr, nullptr, nullptr, nullptr, nullptr, true);
    const Clock::time_point start = Clock::now();
    bool bOpened = scene.Open(SceneFile(), true);
    while (bOpened && scene.IsLoading())
    {
        const Clock::time_point frame = Clock::now();
        loader.Tick(TICK_BUDGET_MS);
        run.dWorstTickMs = std::max(run.dWorstTickMs,
                                    std::chrono::duration<double, std::milli>(Clock::now() - frame).count());
        scene.Update(0.0f, 0.0f);
        ++run.iFrames;
        if (iFrameUs > 0 && scene.IsLoading())
        {
            std::this_thread::sleep_until(frame + std::chrono::microseconds(iFrameUs));
        }
    }
    run.dMilliseconds = std::chrono::duration<double, std::milli>(Clock::now() - start).count();
    run.bOk = bOpened && scene.HasLoaded() && scene.GetEntityCount() == ENTITY_COUNT;
    return run;
}

void BM_SceneOpenAsync(benchmark::State& state)
{
    SceneFile();
    Kestrin::Utility::CAsyncLoader loader;
    loader.Start(true);
    Kestrin::Utility::SetAsyncLoader(&loader);
    double dWorstTick = 0.0;
    double dFrames = 0.0;
    for (auto _ : state)
    {
        CFrameRun run = OpenThroughLoader(loader, static_cast<int>(state.range(0)));
        if (!run.bOk)
        {
            state.SkipWithError("the scene did not open through the loader");
            break;
        }
        state.SetIterationTime(run.dMilliseconds * 1e-3);
        dWorstTick = std::max(dWorstTick, run.dWorstTickMs);
        dFrames += run.iFrames;
    }
    Kestrin::Utility::SetAsyncLoader(nullptr);
    loader.Stop();
    // The one Tick that completes the scene task runs past the budget by that task; the
    // others wait on the load thread.
    state.counters["worst_tick_ms"] = dWorstTick;
    state.counters["frames"] = benchmark::Counter(dFrames, benchmark::Counter::kAvgIterations);
}
} // namespace

BENCHMARK(BM_SceneOpen)->Unit(benchmark::kMillisecond);
// Frames back to back, and frames of 16.7 ms (60 fps).
BENCHMARK(BM_SceneOpenAsync)->Arg(0)->Arg(16667)->UseManualTime()->Unit(benchmark::kMillisecond);
BENCHMARK(BM_SceneLoad)->Unit(benchmark::kMillisecond);
BENCHMARK(BM_SceneSave)->Unit(benchmark::kMillisecond);
BENCHMARK(BM_SceneMemcpy)->Unit(benchmark::kMillisecond);
BENCHMARK_MAIN();
