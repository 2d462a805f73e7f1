// Runs any text as a Lua chunk in a bounded state (memory, instructions, no io or os), then
// reads every global table into script values, pushes it back and reads it again: the second
// read must be the first without its nil values, and nothing may crash on cycles, deep
// nesting or odd keys.
#include "script/LuaScript.h"

#include <cstdint>
#include <cstdlib>

extern "C"
{
#include <lauxlib.h>
#include <lualib.h>
}

using namespace GLib::Script;

namespace
{
constexpr size_t MEMORY_LIMIT = 64u << 20;

struct SBudget
{
    size_t uUsed = 0;
};

void* BoundedAlloc(void* pUser, void* pBlock, size_t uOld, size_t uNew)
{
    SBudget* pBudget = static_cast<SBudget*>(pUser);
    if (uNew == 0)
    {
        std::free(pBlock);
        pBudget->uUsed -= uOld;
        return nullptr;
    }
    if (uNew > uOld && pBudget->uUsed + (uNew - uOld) > MEMORY_LIMIT)
    {
        return nullptr;
    }
    void* pResized = std::realloc(pBlock, uNew);
    if (pResized)
    {
        pBudget->uUsed = pBudget->uUsed - uOld + uNew;
    }
    return pResized;
}

void StopLongRuns(lua_State* pState, lua_Debug*)
{
    luaL_error(pState, "instruction budget spent");
}

// What Lua keeps of a tree: a pair whose value is nil does not exist in a Lua table.
CScriptValue WithoutNilValues(const CScriptValue& value)
{
    if (!value.IsTable())
    {
        return value;
    }
    CScriptValue out;
    CScriptTable& table = out.SetTable();
    for (const CScriptTable::Pair& pair : value.GetTable())
    {
        if (!pair.second.IsNil())
        {
            table.Set(pair.first, WithoutNilValues(pair.second));
        }
    }
    return out;
}

// In protected mode, so that a memory error while pushing unwinds instead of ending the process.
int RoundTripGlobals(lua_State* pState)
{
    CLuaParamHelper helper(pState);
    lua_sethook(pState, nullptr, 0, 0);
    lua_pushnil(pState);
    while (lua_next(pState, LUA_GLOBALSINDEX) != 0)
    {
        if (lua_type(pState, -1) != LUA_TTABLE)
        {
            lua_pop(pState, 1);
            continue;
        }
        CScriptValue first;
        helper.ReadValue(first);
        helper.PushValue(first);
        CScriptValue second;
        helper.ReadValue(second);
        if (!WithoutNilValues(first).Equals(second))
        {
            std::abort();
        }
    }
    return 0;
}

void OpenSafeLibraries(lua_State* pState)
{
    const lua_CFunction apOpen[] = {luaopen_base, luaopen_table, luaopen_string, luaopen_math};
    for (lua_CFunction pOpen : apOpen)
    {
        lua_pushcfunction(pState, pOpen);
        lua_call(pState, 0, 0);
    }
}
} // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* pData, size_t uSize)
{
    SBudget budget;
    lua_State* pState = lua_newstate(BoundedAlloc, &budget);
    if (!pState)
    {
        return 0;
    }
    OpenSafeLibraries(pState);
    lua_sethook(pState, StopLongRuns, LUA_MASKCOUNT, 200000);
    if (luaL_loadbuffer(pState, reinterpret_cast<const char*>(pData), uSize, "fuzz") == 0 &&
        lua_pcall(pState, 0, 0, 0) == 0)
    {
        lua_cpcall(pState, RoundTripGlobals, nullptr);
    }
    lua_close(pState);
    return 0;
}
