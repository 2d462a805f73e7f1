// Loading a 1 MiB Lua table file into script values, against Lua's own load and run of the
// same text: what the copy into value trees costs on top of parsing and running the chunk.
#include "script/LuaScript.h"

#include <benchmark/benchmark.h>

#include <cstdio>
#include <filesystem>
#include <fstream>
#include <string>

extern "C"
{
#include <lauxlib.h>
#include <lualib.h>
}

using namespace GLib::Script;

namespace
{
// A game-like item table: each entry has numbers, strings, a boolean and three small tables.
struct SDataFile
{
    std::string strText;
    std::string strPath;
    int64_t iValues = 0; // pairs in the tree, the root included

    SDataFile()
    {
        static const char* const s_apTags[] = {"melee", "iron", "rare", "magic", "quest", "heavy"};
        strText = "Items = {\n";
        iValues = 1;
        for (int i = 1; strText.size() < 0x100000 - 200; ++i)
        {
            char acEntry[256];
            snprintf(acEntry, sizeof(acEntry),
                     "  { id = %d, name = \"item_%d\", price = %d.5, weight = %g, stack = %s,"
                     " tags = { \"%s\", \"%s\" }, stats = { %d, %d, %d, %d }, drop = { rate = %g, level = %d "
                     "} },\n",
                     i, i, i % 997, (i % 13) * 0.25, i % 2 ? "true" : "false", s_apTags[i % 6],
                     s_apTags[(i + 3) % 6], i % 50, i % 70, i % 90, i % 110, (i % 20) * 0.005, i % 60);
            strText += acEntry;
            iValues += 1 + 8 + 2 + 4 + 2; // the entry, its 8 fields, and the three tables' items
        }
        strText += "}\n";
        strPath = (std::filesystem::temp_directory_path() / "bench_script_items.lua").string();
        std::ofstream out(strPath, std::ios::binary);
        out << strText;
    }
};

const SDataFile& DataFile()
{
    static const SDataFile s_file;
    return s_file;
}

void BM_LuaLoadBufferAndPcall(benchmark::State& state)
{
    const SDataFile& file = DataFile();
    for (auto _ : state)
    {
        lua_State* pState = luaL_newstate();
        luaL_openlibs(pState);
        std::string text;
        {
            std::ifstream in(file.strPath, std::ios::binary);
            text.assign(std::istreambuf_iterator<char>(in), std::istreambuf_iterator<char>());
        }
        int iCode = luaL_loadbuffer(pState, text.data(), text.size(), file.strPath.c_str());
        iCode = iCode ? iCode : lua_pcall(pState, 0, LUA_MULTRET, 0);
        benchmark::DoNotOptimize(iCode);
        lua_close(pState);
    }
    state.SetBytesProcessed(state.iterations() * static_cast<int64_t>(file.strText.size()));
}
BENCHMARK(BM_LuaLoadBufferAndPcall)->Unit(benchmark::kMillisecond);

void BM_LuaTableToScriptValues(benchmark::State& state)
{
    const SDataFile& file = DataFile();
    for (auto _ : state)
    {
        CLuaScript script;
        bool bOk = script.RunFile(file.strPath.c_str());
        CScriptValue items;
        bOk = bOk && script.GetGlobalTable("Items", items);
        benchmark::DoNotOptimize(bOk);
        benchmark::DoNotOptimize(items);
    }
    state.SetBytesProcessed(state.iterations() * static_cast<int64_t>(file.strText.size()));
}
BENCHMARK(BM_LuaTableToScriptValues)->Unit(benchmark::kMillisecond);

// The copy alone: the global table read into values and destroyed again.
void BM_ScriptValueCopyOnly(benchmark::State& state)
{
    const SDataFile& file = DataFile();
    CLuaScript script;
    if (!script.RunFile(file.strPath.c_str()))
    {
        state.SkipWithError("the data file did not run");
        return;
    }
    int64_t iRead = 0;
    for (auto _ : state)
    {
        CScriptValue items;
        script.GetGlobalTable("Items", items);
        iRead = items.GetTable().Count();
        benchmark::DoNotOptimize(items);
    }
    state.counters["values"] = static_cast<double>(file.iValues);
    state.counters["entries"] = static_cast<double>(iRead);
    state.counters["per_value"] =
        benchmark::Counter(static_cast<double>(file.iValues),
                           benchmark::Counter::kIsIterationInvariantRate | benchmark::Counter::kInvert);
}
BENCHMARK(BM_ScriptValueCopyOnly)->Unit(benchmark::kMillisecond);
} // namespace

BENCHMARK_MAIN();
