// 2,000 load tasks through the asynchronous loader, driven by a simulated frame loop that
// calls Tick(3) once per frame, against running the same tasks synchronously, and against
// the two-thread ideal: the load stage alone, the busier of the two threads.
//
// A task reads 32 KiB from a file, then works 200 us on the load thread, 200 us on the
// preprocess thread and 20 us on the main thread to complete.
#include "Utils/Utility/GUtFile.h"
#include "engine/utility/AsyncLoader.h"

#include <benchmark/benchmark.h>

#include <algorithm>
#include <chrono>
#include <filesystem>
#include <fstream>
#include <string>
#include <thread>
#include <time.h>
#include <vector>

using namespace Kestrin::Utility;

namespace
{
using Clock = std::chrono::steady_clock;

constexpr int TASK_COUNT = 2000;
constexpr int32_t READ_BYTES = 32 * 1024;
constexpr auto LOAD_WORK = std::chrono::microseconds(200);
constexpr auto PREPROCESS_WORK = std::chrono::microseconds(200);
constexpr auto COMPLETE_WORK = std::chrono::microseconds(20);
constexpr int32_t TICK_BUDGET_MS = 3;

// CPU work of a given length.
void Spin(Clock::duration work)
{
    const Clock::time_point end = Clock::now() + work;
    while (Clock::now() < end)
    {
    }
}

const std::string& DataPath()
{
    static const std::string s_strPath = []
    {
        std::string strPath = (std::filesystem::temp_directory_path() / "bench_loader_32k.bin").string();
        std::ofstream out(strPath, std::ios::binary);
        std::string bytes(READ_BYTES, 'x');
        out << bytes;
        return strPath;
    }();
    return s_strPath;
}

class CBenchTask final : public CLoadTask
{
public:
    explicit CBenchTask(int* pCompleted) : CLoadTask("bench"), m_pCompleted(pCompleted) {}

    bool Load() override
    {
        GUtFile file(DataPath().c_str(), GUtFile::MODE_ALWAYS | GUtFile::MODE_BINARY | GUtFile::MODE_READ);
        m_data.resize(READ_BYTES);
        if (file.ReadRaw(m_data.data(), READ_BYTES) != READ_BYTES)
        {
            return false;
        }
        Spin(LOAD_WORK);
        m_uSize = READ_BYTES;
        return true;
    }
    bool Preprocess() override
    {
        Spin(PREPROCESS_WORK);
        return true;
    }
    bool Complete() override
    {
        Spin(COMPLETE_WORK);
        ++*m_pCompleted;
        return true;
    }

private:
    int* m_pCompleted; // main thread only
    std::vector<char> m_data;
};

struct SFrameRun
{
    double dSeconds = 0.0;
    double dWorstOverrunUs = 0.0;    // wall time of a Tick past its budget
    double dWorstCpuOverrunUs = 0.0; // the main thread's own time in a Tick past its budget
    int iFrames = 0;
};

// The calling thread's processor time, in microseconds: unlike the wall clock it does not
// grow while the thread waits for a core that the two loader threads keep busy.
double ThreadCpuUs()
{
    timespec time{};
    clock_gettime(CLOCK_THREAD_CPUTIME_ID, &time);
    return static_cast<double>(time.tv_sec) * 1e6 + static_cast<double>(time.tv_nsec) * 1e-3;
}

// Submits every task, then runs frames of iFrameUs: Tick(3) at the start of each, and the
// rest of the frame spent elsewhere (the render thread, the present), until all completed.
SFrameRun RunFrameLoop(int iFrameUs)
{
    SFrameRun run;
    int iCompleted = 0;
    CAsyncLoader loader;
    loader.Start(true);
    const Clock::time_point start = Clock::now();
    for (int i = 0; i < TASK_COUNT; ++i)
    {
        loader.Submit(new CBenchTask(&iCompleted));
    }
    while (iCompleted < TASK_COUNT)
    {
        const Clock::time_point frame = Clock::now();
        const double dCpuStart = ThreadCpuUs();
        loader.Tick(TICK_BUDGET_MS);
        const double dCpuUs = ThreadCpuUs() - dCpuStart;
        const double dTickUs = std::chrono::duration<double, std::micro>(Clock::now() - frame).count();
        run.dWorstOverrunUs = std::max(run.dWorstOverrunUs, dTickUs - TICK_BUDGET_MS * 1000.0);
        run.dWorstCpuOverrunUs = std::max(run.dWorstCpuOverrunUs, dCpuUs - TICK_BUDGET_MS * 1000.0);
        ++run.iFrames;
        std::this_thread::sleep_until(frame + std::chrono::microseconds(iFrameUs));
    }
    run.dSeconds = std::chrono::duration<double>(Clock::now() - start).count();
    loader.Stop();
    return run;
}

void BM_LoaderFrameLoop(benchmark::State& state)
{
    DataPath();
    double dWorst = 0.0;
    double dWorstCpu = 0.0;
    int iFrames = 0;
    for (auto _ : state)
    {
        SFrameRun run = RunFrameLoop(static_cast<int>(state.range(0)));
        state.SetIterationTime(run.dSeconds);
        dWorst = std::max(dWorst, run.dWorstOverrunUs);
        dWorstCpu = std::max(dWorstCpu, run.dWorstCpuOverrunUs);
        iFrames = run.iFrames;
    }
    state.counters["worst_tick_overrun_us"] = dWorst;
    state.counters["worst_tick_cpu_overrun_us"] = dWorstCpu;
    state.counters["frames"] = iFrames;
}
// Frames of 10 ms (100 fps) and of 16.7 ms (60 fps).
BENCHMARK(BM_LoaderFrameLoop)->Arg(10000)->Arg(16667)->UseManualTime()->Unit(benchmark::kMillisecond);

// The worst Tick of one frame-loop run past its 3 ms budget, as the "time": the main thread's
// own processor time, which a preemption on a busy machine does not inflate; the wall-clock
// figure is a counter beside it.
void BM_LoaderWorstTickOverrun(benchmark::State& state)
{
    DataPath();
    double dWorstWall = 0.0;
    for (auto _ : state)
    {
        SFrameRun run = RunFrameLoop(10000);
        state.SetIterationTime(std::max(run.dWorstCpuOverrunUs, 0.0) * 1e-6);
        dWorstWall = std::max(dWorstWall, run.dWorstOverrunUs);
    }
    state.counters["worst_tick_overrun_us"] = dWorstWall;
}
BENCHMARK(BM_LoaderWorstTickOverrun)->UseManualTime()->Iterations(1)->Unit(benchmark::kMicrosecond);

// Every task's stages one after another on the calling thread (a loader not enabled).
void BM_LoaderSynchronous(benchmark::State& state)
{
    DataPath();
    for (auto _ : state)
    {
        int iCompleted = 0;
        CAsyncLoader loader;
        loader.Start(false);
        for (int i = 0; i < TASK_COUNT; ++i)
        {
            loader.Submit(new CBenchTask(&iCompleted));
        }
        benchmark::DoNotOptimize(iCompleted);
    }
}
BENCHMARK(BM_LoaderSynchronous)->Unit(benchmark::kMillisecond);

// The two-thread ideal: the load stage of every task on one thread, the busier stage.
void BM_LoaderTwoThreadIdeal(benchmark::State& state)
{
    DataPath();
    for (auto _ : state)
    {
        int iCompleted = 0;
        for (int i = 0; i < TASK_COUNT; ++i)
        {
            CBenchTask task(&iCompleted);
            benchmark::DoNotOptimize(task.Load());
        }
    }
}
BENCHMARK(BM_LoaderTwoThreadIdeal)->Unit(benchmark::kMillisecond);
} // namespace

BENCHMARK_MAIN();
