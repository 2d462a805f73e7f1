// CEnvironmentAnimator: its script functions and the reading of "EnvironmentAnimation.lua".
#include "scene/EnvironmentAnimator.h"

#include "Utils/Utility/GUtDebug.h"
#include "script/LuaScript.h"

extern "C"
{
#include <lua.h>
}

namespace Ovrel
{

namespace
{
// Each function carries its animator as its one upvalue.
CEnvironmentAnimator* Bound(lua_State* pState)
{
    return static_cast<CEnvironmentAnimator*>(lua_touserdata(pState, lua_upvalueindex(1)));
}

void Register(lua_State* pState, const char* pcName, lua_CFunction pFunction, CEnvironmentAnimator* pAnimator)
{
    lua_pushlightuserdata(pState, pAnimator);
    lua_pushcclosure(pState, pFunction, 1);
    lua_setglobal(pState, pcName);
}
} // namespace

int CEnvironmentAnimator::LuaEnvironmentAnimation(lua_State* pState)
{
    GLib::Script::CLuaCall call(pState);
    if (call.ArgCount() != 4)
    {
        // The script goes on: one bad line leaves the others standing.
        GUtLog::Get().DisplayMsg(LogError, "EnvironmentAnimation",
                                 "EnvironmentAnimation error ! need 4 arguments.");
        return 0;
    }
    Bound(pState)->Add(call.ArgString(0), call.ArgFloat(1), call.ArgFloat(2), call.ArgString(3));
    return 0;
}

int CEnvironmentAnimator::LuaActiveEnvAnim(lua_State* pState)
{
    GLib::Script::CLuaCall call(pState);
    if (call.ArgCount() != 1)
    {
        return call.Error("ActiveEnvAnim error ! need 1 arguments.");
    }
    Bound(pState)->ActiveEnvAnim(call.ArgString(0));
    return 0;
}

void CEnvironmentAnimator::RegisterFunctions(lua_State* pState)
{
    Register(pState, "EnvironmentAnimation", &LuaEnvironmentAnimation, this);
    Register(pState, "ActiveEnvAnim", &LuaActiveEnvAnim, this);
}

bool CEnvironmentAnimator::Load(const char* pcPath)
{
    GLib::Script::CLuaScript script;
    RegisterFunctions(script.GetState());
    return script.RunFile(pcPath);
}

} // namespace Ovrel
