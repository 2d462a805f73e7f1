// Picking: one ray against 100,000 oriented boxes, against the same loop over axis-aligned
// boxes. The baseline for later picking work (scene picks, gizmo handles).
#include "engine/utility/Geometry.h"

#include <benchmark/benchmark.h>

#include <random>
#include <vector>

using namespace Kestrin::Utility;

namespace
{
constexpr int BOX_COUNT = 100000;

struct CScene
{
    std::vector<COrientedBox> oriented;
    std::vector<CBox3> aligned;
    std::vector<CRay> rays;
};

// Boxes spread over a 2 km square, a few metres each; the same centres and sizes in both sets.
const CScene& GetScene()
{
    static const CScene scene = []
    {
        CScene s;
        std::mt19937 rng(1234);
        std::uniform_real_distribution<float> pos(-1000.0f, 1000.0f), size(0.5f, 5.0f), angle(-PI, PI);
        for (int i = 0; i < BOX_COUNT; ++i)
        {
            COrientedBox box;
            box.vCenter = {pos(rng), pos(rng), pos(rng) * 0.05f};
            box.vHalf = {size(rng), size(rng), size(rng)};
            CMatrix44 m = MatrixFromEuler({angle(rng) * 0.1f, angle(rng) * 0.1f, angle(rng)});
            for (int a = 0; a < 3; ++a)
            {
                box.vAxis[a] = m.Row(a);
            }
            s.oriented.push_back(box);
            s.aligned.push_back({box.vCenter - box.vHalf, box.vCenter + box.vHalf});
        }
        for (int i = 0; i < 16; ++i)
        {
            CVec3 vStart{pos(rng), pos(rng), 200.0f};
            CVec3 vAim{pos(rng), pos(rng), 0.0f};
            s.rays.push_back({vStart, Normalize(vAim - vStart)});
        }
        return s;
    }();
    return scene;
}

template <typename TBox>
void RayAgainst(benchmark::State& state, const std::vector<TBox>& boxes)
{
    const CScene& scene = GetScene();
    size_t iRay = 0;
    for (auto _ : state)
    {
        const CRay& ray = scene.rays[iRay++ % scene.rays.size()];
        float fNearest = 1e30f;
        int iNearest = -1;
        for (int i = 0; i < BOX_COUNT; ++i)
        {
            float t = 0.0f;
            if (IntersectRayBox(ray, boxes[i], t) && t < fNearest)
            {
                fNearest = t;
                iNearest = i;
            }
        }
        benchmark::DoNotOptimize(iNearest);
    }
    state.SetItemsProcessed(state.iterations() * BOX_COUNT);
}

void BM_RayOrientedBoxes(benchmark::State& state)
{
    RayAgainst(state, GetScene().oriented);
}
BENCHMARK(BM_RayOrientedBoxes);

void BM_RayAxisAlignedBoxes(benchmark::State& state)
{
    RayAgainst(state, GetScene().aligned);
}
BENCHMARK(BM_RayAxisAlignedBoxes);
} // namespace

BENCHMARK_MAIN();
