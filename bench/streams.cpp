// Typed reads and writes through the memory streams against memcpy of the same bytes.
//
// Reads go through CMemoryStream (the loader's blocks), writes through CMemoryWriteStream (the
// savers and the undo images). Per-value benchmarks move COUNT values with one typed call
// each, through a CIOStream reference as the format readers do; array benchmarks move the
// same COUNT values with one array call. Each runs in the native and the swapped byte order.
// The baseline is memcpy of the same number of bytes.
#include "engine/utility/IOStream.h"

#include <benchmark/benchmark.h>

#include <cstring>
#include <vector>

using namespace Kestrin::Utility;

namespace
{
constexpr int COUNT = 1024;

enum EKind
{
    KIND_U32,
    KIND_FLOAT,
    KIND_VEC3,
    KIND_MATRIX,
};

int32_t SizeOf(EKind eKind)
{
    switch (eKind)
    {
        case KIND_U32:
        case KIND_FLOAT:
            return 4;
        case KIND_VEC3:
            return 12;
        case KIND_MATRIX:
            return 64;
    }
    return 0;
}

std::vector<uint8_t> Source(EKind eKind)
{
    std::vector<uint8_t> bytes(static_cast<size_t>(SizeOf(eKind)) * COUNT);
    for (size_t i = 0; i < bytes.size(); ++i)
    {
        bytes[i] = static_cast<uint8_t>(i * 7 + 3);
    }
    return bytes;
}

// Reads COUNT values one typed call at a time. Marked noinline so that the stream is seen as
// a CIOStream, as a format's reader sees it.
__attribute__((noinline)) void ReadValues(CIOStream& s, EKind eKind, void* pOut)
{
    switch (eKind)
    {
        case KIND_U32:
        {
            uint32_t* p = static_cast<uint32_t*>(pOut);
            for (int i = 0; i < COUNT; ++i)
            {
                s.ReadU32(p[i]);
            }
            break;
        }
        case KIND_FLOAT:
        {
            float* p = static_cast<float*>(pOut);
            for (int i = 0; i < COUNT; ++i)
            {
                s.ReadFloat(p[i]);
            }
            break;
        }
        case KIND_VEC3:
        {
            CVec3* p = static_cast<CVec3*>(pOut);
            for (int i = 0; i < COUNT; ++i)
            {
                s.ReadVec3(p[i]);
            }
            break;
        }
        case KIND_MATRIX:
        {
            CMatrix44* p = static_cast<CMatrix44*>(pOut);
            for (int i = 0; i < COUNT; ++i)
            {
                s.ReadMatrix(p[i]);
            }
            break;
        }
    }
}

__attribute__((noinline)) void WriteValues(CIOStream& s, EKind eKind, const void* pIn)
{
    switch (eKind)
    {
        case KIND_U32:
        {
            const uint32_t* p = static_cast<const uint32_t*>(pIn);
            for (int i = 0; i < COUNT; ++i)
            {
                s.WriteU32(p[i]);
            }
            break;
        }
        case KIND_FLOAT:
        {
            const float* p = static_cast<const float*>(pIn);
            for (int i = 0; i < COUNT; ++i)
            {
                s.WriteFloat(p[i]);
            }
            break;
        }
        case KIND_VEC3:
        {
            const CVec3* p = static_cast<const CVec3*>(pIn);
            for (int i = 0; i < COUNT; ++i)
            {
                s.WriteVec3(p[i]);
            }
            break;
        }
        case KIND_MATRIX:
        {
            const CMatrix44* p = static_cast<const CMatrix44*>(pIn);
            for (int i = 0; i < COUNT; ++i)
            {
                s.WriteMatrix(p[i]);
            }
            break;
        }
    }
}

__attribute__((noinline)) void ReadArray(CIOStream& s, EKind eKind, void* pOut)
{
    switch (eKind)
    {
        case KIND_U32:
            s.ReadU32Array(static_cast<uint32_t*>(pOut), COUNT);
            break;
        case KIND_FLOAT:
            s.ReadFloatArray(static_cast<float*>(pOut), COUNT);
            break;
        case KIND_VEC3:
            s.ReadVec3Array(static_cast<CVec3*>(pOut), COUNT);
            break;
        case KIND_MATRIX:
            s.ReadMatrixArray(static_cast<CMatrix44*>(pOut), COUNT);
            break;
    }
}

__attribute__((noinline)) void WriteArray(CIOStream& s, EKind eKind, const void* pIn)
{
    switch (eKind)
    {
        case KIND_U32:
            s.WriteU32Array(static_cast<const uint32_t*>(pIn), COUNT);
            break;
        case KIND_FLOAT:
            s.WriteFloatArray(static_cast<const float*>(pIn), COUNT);
            break;
        case KIND_VEC3:
            s.WriteVec3Array(static_cast<const CVec3*>(pIn), COUNT);
            break;
        case KIND_MATRIX:
            s.WriteMatrixArray(static_cast<const CMatrix44*>(pIn), COUNT);
            break;
    }
}

void BM_Read(benchmark::State& state, EKind eKind, bool bSwap, bool bArray)
{
    std::vector<uint8_t> src = Source(eKind);
    std::vector<uint8_t> dst(src.size());
    CMemoryStream stream;
    stream.m_bSwapBytes = bSwap;
    for (auto _ : state)
    {
        stream.SetReadWindow(src.data(), static_cast<int32_t>(src.size()));
        if (bArray)
        {
            ReadArray(stream, eKind, dst.data());
        }
        else
        {
            ReadValues(stream, eKind, dst.data());
        }
        benchmark::DoNotOptimize(dst.data());
        benchmark::ClobberMemory();
    }
    state.SetBytesProcessed(static_cast<int64_t>(state.iterations()) * static_cast<int64_t>(src.size()));
}

void BM_WriteGrowing(benchmark::State& state, EKind eKind, bool bSwap, bool bArray)
{
    std::vector<uint8_t> src = Source(eKind);
    CMemoryWriteStream stream;
    stream.m_bSwapBytes = bSwap;
    stream.Reserve(static_cast<int32_t>(src.size()));
    for (auto _ : state)
    {
        stream.Clear();
        if (bArray)
        {
            WriteArray(stream, eKind, src.data());
        }
        else
        {
            WriteValues(stream, eKind, src.data());
        }
        benchmark::DoNotOptimize(stream.GetData());
        benchmark::ClobberMemory();
    }
    state.SetBytesProcessed(static_cast<int64_t>(state.iterations()) * static_cast<int64_t>(src.size()));
}

// The baseline: one memcpy of the bytes COUNT values take.
void BM_Memcpy(benchmark::State& state, EKind eKind)
{
    std::vector<uint8_t> src = Source(eKind);
    std::vector<uint8_t> dst(src.size());
    for (auto _ : state)
    {
        benchmark::DoNotOptimize(src.data());
        memcpy(dst.data(), src.data(), src.size());
        benchmark::DoNotOptimize(dst.data());
        benchmark::ClobberMemory();
    }
    state.SetBytesProcessed(static_cast<int64_t>(state.iterations()) * static_cast<int64_t>(src.size()));
}
} // namespace

#define STREAM_BENCH(KIND, NAME)                                                                             \
    BENCHMARK_CAPTURE(BM_Read, NAME##_native, KIND, false, false);                                           \
    BENCHMARK_CAPTURE(BM_Read, NAME##_swapped, KIND, true, false);                                           \
    BENCHMARK_CAPTURE(BM_Read, NAME##Array_native, KIND, false, true);                                       \
    BENCHMARK_CAPTURE(BM_Read, NAME##Array_swapped, KIND, true, true);                                       \
    BENCHMARK_CAPTURE(BM_WriteGrowing, NAME##_native, KIND, false, false);                                   \
    BENCHMARK_CAPTURE(BM_WriteGrowing, NAME##_swapped, KIND, true, false);                                   \
    BENCHMARK_CAPTURE(BM_WriteGrowing, NAME##Array_native, KIND, false, true);                               \
    BENCHMARK_CAPTURE(BM_WriteGrowing, NAME##Array_swapped, KIND, true, true);                               \
    BENCHMARK_CAPTURE(BM_Memcpy, NAME, KIND)

STREAM_BENCH(KIND_U32, U32);
STREAM_BENCH(KIND_FLOAT, Float);
STREAM_BENCH(KIND_VEC3, Vec3);
STREAM_BENCH(KIND_MATRIX, Matrix);

BENCHMARK_MAIN();
