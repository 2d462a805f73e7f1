// Pack files against a stored zip (libzip): 20,000 entries of 4 KiB on average, written once
// as a ".PAK" by CPackFile::SaveFile and as a zip by libzip, then read from a warm page cache.
//   open          CPackFile::LoadFile            / zip_open and the listing of every name
//   lookup        CPackFile::FindFile, every name / zip_name_locate
//   random read   open, read, close every entry in shuffled order, through the pool of
//                 100 mapped views (and through pread, the floor) / zip_fopen, zip_fread
//   large entry   one 64 MiB entry read whole    / fread of the same bytes from a file
#include "Utils/File/PackFile.h"
#include "Utils/Utility/GUtDebug.h"

#include <benchmark/benchmark.h>
#include <zip.h>

#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <memory>
#include <random>
#include <string>
#include <unistd.h>
#include <vector>

using namespace GLib::File;

namespace
{
constexpr int ENTRY_COUNT = 20000;
constexpr uint32_t MAX_ENTRY = 8191; // sizes uniform in 1..8191: mean 4 KiB
constexpr size_t LARGE_SIZE = 64u << 20;

void NoPrint(const char*) {}

struct CFixture
{
    std::string folder;
    std::string pak;
    std::string zip;
    std::string largePak;
    std::string largeRaw;
    std::vector<std::string> names; // shuffled
    std::vector<uint8_t> pool;      // the bytes every entry is cut from

    CFixture()
    {
        GUtOut::SetPrintFunction(&NoPrint);
        GUtLog::Get().EnableConsole(false);
        GUtLog::Get().EnableMainFile(false);
        folder = "/tmp/edbench_pack_" + std::to_string(::getpid());
        std::filesystem::create_directories(folder);
        pak = folder + "/bench.PAK";
        zip = folder + "/bench.zip";
        largePak = folder + "/large.PAK";
        largeRaw = folder + "/large.raw";

        std::mt19937 random(12345);
        pool.resize(LARGE_SIZE);
        for (uint8_t& b : pool)
        {
            b = static_cast<uint8_t>(random());
        }
        std::vector<uint32_t> sizes;
        for (int i = 0; i < ENTRY_COUNT; ++i)
        {
            names.push_back("models" + std::to_string(i % 20) + "/set" + std::to_string(i % 7) + "/entry_" +
                            std::to_string(i) + ".mesh");
            sizes.push_back(1 + static_cast<uint32_t>(random() % MAX_ENTRY));
        }
        WritePak(sizes);
        WriteZip(sizes);
        WriteLarge();
        std::shuffle(names.begin(), names.end(), random);
        for (const std::string& path : {pak, zip, largePak, largeRaw})
        {
            Warm(path);
        }
    }

    ~CFixture()
    {
        std::error_code error;
        std::filesystem::remove_all(folder, error);
    }

    const uint8_t* Slice(int i) const
    {
        return pool.data() + (static_cast<size_t>(i) * 4099) % (pool.size() - MAX_ENTRY);
    }

    void WritePak(const std::vector<uint32_t>& sizes) const
    {
        CPackFile pack;
        for (int i = 0; i < ENTRY_COUNT; ++i)
        {
            pack.AddFile(names[i].c_str(), std::make_unique<CMemorySubFileSource>(Slice(i), sizes[i]));
        }
        if (!pack.SaveFile(pak.c_str()))
        {
            abort();
        }
    }

    void WriteZip(const std::vector<uint32_t>& sizes) const
    {
        int iError = 0;
        zip_t* pZip = zip_open(zip.c_str(), ZIP_CREATE | ZIP_TRUNCATE, &iError);
        for (int i = 0; pZip && i < ENTRY_COUNT; ++i)
        {
            zip_source_t* pSource = zip_source_buffer(pZip, Slice(i), sizes[i], 0);
            const zip_int64_t iIndex = zip_file_add(pZip, names[i].c_str(), pSource, ZIP_FL_ENC_UTF_8);
            zip_set_file_compression(pZip, static_cast<zip_uint64_t>(iIndex), ZIP_CM_STORE, 0);
        }
        if (!pZip || zip_close(pZip) != 0)
        {
            abort();
        }
    }

    void WriteLarge() const
    {
        CPackFile pack;
        pack.AddFile("big.bin",
                     std::make_unique<CMemorySubFileSource>(pool.data(), static_cast<uint32_t>(LARGE_SIZE)));
        FILE* pFile = fopen(largeRaw.c_str(), "wb");
        if (!pack.SaveFile(largePak.c_str()) || !pFile ||
            fwrite(pool.data(), 1, LARGE_SIZE, pFile) != LARGE_SIZE)
        {
            abort();
        }
        fclose(pFile);
    }

    static void Warm(const std::string& path)
    {
        std::vector<char> buffer(1 << 20);
        FILE* pFile = fopen(path.c_str(), "rb");
        while (pFile && fread(buffer.data(), 1, buffer.size(), pFile) > 0)
        {
        }
        if (pFile)
        {
            fclose(pFile);
        }
    }
};

CFixture& Fixture()
{
    static CFixture s_fixture;
    return s_fixture;
}

void BM_PakOpen(benchmark::State& state)
{
    CFixture& fixture = Fixture();
    for (auto _ : state)
    {
        CPackFile pack;
        if (!pack.LoadFile(fixture.pak.c_str(), true, false, true))
        {
            state.SkipWithError("load failed");
        }
        benchmark::DoNotOptimize(pack.GetFileCount());
    }
}

void BM_ZipOpen(benchmark::State& state)
{
    CFixture& fixture = Fixture();
    for (auto _ : state)
    {
        int iError = 0;
        zip_t* pZip = zip_open(fixture.zip.c_str(), ZIP_RDONLY, &iError);
        const zip_int64_t iCount = zip_get_num_entries(pZip, 0);
        for (zip_int64_t i = 0; i < iCount; ++i)
        {
            benchmark::DoNotOptimize(zip_get_name(pZip, static_cast<zip_uint64_t>(i), 0));
        }
        zip_discard(pZip);
    }
}

void BM_PakLookup(benchmark::State& state)
{
    CFixture& fixture = Fixture();
    CPackFile pack;
    pack.LoadFile(fixture.pak.c_str(), true, false, true);
    for (auto _ : state)
    {
        for (const std::string& name : fixture.names)
        {
            benchmark::DoNotOptimize(pack.FindFile(name.c_str()));
        }
    }
}

void BM_ZipLookup(benchmark::State& state)
{
    CFixture& fixture = Fixture();
    int iError = 0;
    zip_t* pZip = zip_open(fixture.zip.c_str(), ZIP_RDONLY, &iError);
    for (auto _ : state)
    {
        for (const std::string& name : fixture.names)
        {
            benchmark::DoNotOptimize(zip_name_locate(pZip, name.c_str(), 0));
        }
    }
    zip_discard(pZip);
}

void PakRandomRead(benchmark::State& state, CPackFile::EFileIOKind eKind)
{
    CFixture& fixture = Fixture();
    CPackFile pack(eKind);
    pack.LoadFile(fixture.pak.c_str(), true, false, true);
    std::vector<uint8_t> buffer(MAX_ENTRY);
    for (auto _ : state)
    {
        for (const std::string& name : fixture.names)
        {
            std::unique_ptr<CSubFile> pFile(pack.OpenSubFile(name.c_str(), true));
            benchmark::DoNotOptimize(pFile->Read(buffer.data(), MAX_ENTRY));
        }
    }
}

void BM_PakRandomRead(benchmark::State& state)
{
    PakRandomRead(state, CPackFile::FILE_IO_MAP_VIEW);
}

void BM_PakRandomReadPread(benchmark::State& state)
{
    PakRandomRead(state, CPackFile::FILE_IO_READ);
}

void BM_ZipRandomRead(benchmark::State& state)
{
    CFixture& fixture = Fixture();
    int iError = 0;
    zip_t* pZip = zip_open(fixture.zip.c_str(), ZIP_RDONLY, &iError);
    std::vector<uint8_t> buffer(MAX_ENTRY);
    for (auto _ : state)
    {
        for (const std::string& name : fixture.names)
        {
            zip_file_t* pFile = zip_fopen(pZip, name.c_str(), 0);
            benchmark::DoNotOptimize(zip_fread(pFile, buffer.data(), MAX_ENTRY));
            zip_fclose(pFile);
        }
    }
    zip_discard(pZip);
}

void BM_PakLargeEntry(benchmark::State& state)
{
    CFixture& fixture = Fixture();
    CPackFile pack;
    pack.LoadFile(fixture.largePak.c_str(), true, false, true);
    std::vector<uint8_t> buffer(LARGE_SIZE);
    for (auto _ : state)
    {
        std::unique_ptr<CSubFile> pFile(pack.OpenSubFile("big.bin", true));
        benchmark::DoNotOptimize(pFile->Read(buffer.data(), static_cast<uint32_t>(LARGE_SIZE)));
    }
    state.SetBytesProcessed(static_cast<int64_t>(state.iterations() * LARGE_SIZE));
}

void BM_FreadLarge(benchmark::State& state)
{
    CFixture& fixture = Fixture();
    std::vector<uint8_t> buffer(LARGE_SIZE);
    for (auto _ : state)
    {
        FILE* pFile = fopen(fixture.largeRaw.c_str(), "rb");
        benchmark::DoNotOptimize(fread(buffer.data(), 1, LARGE_SIZE, pFile));
        fclose(pFile);
    }
    state.SetBytesProcessed(static_cast<int64_t>(state.iterations() * LARGE_SIZE));
}
} // namespace

BENCHMARK(BM_PakOpen)->Unit(benchmark::kMillisecond);
BENCHMARK(BM_ZipOpen)->Unit(benchmark::kMillisecond);
BENCHMARK(BM_PakLookup)->Unit(benchmark::kMillisecond);
BENCHMARK(BM_ZipLookup)->Unit(benchmark::kMillisecond);
BENCHMARK(BM_PakRandomRead)->Unit(benchmark::kMillisecond);
BENCHMARK(BM_PakRandomReadPread)->Unit(benchmark::kMillisecond);
BENCHMARK(BM_ZipRandomRead)->Unit(benchmark::kMillisecond);
BENCHMARK(BM_PakLargeEntry)->Unit(benchmark::kMillisecond);
BENCHMARK(BM_FreadLarge)->Unit(benchmark::kMillisecond);
BENCHMARK_MAIN();
