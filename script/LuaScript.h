// The layer over Lua 5.1: a state and its argument accessors (CLuaState), the helper that
// bound C functions build around the state they are given (CLuaCall), the reading and
// writing of script values (CLuaParamHelper), and the owner of a state that runs chunks and
// files (CLuaScript).
//
// Argument indexes start at 0: argument 0 is Lua's stack index 1. A state belongs to one
// thread; data files loaded on the loader's threads each use a state of their own.
#pragma once

#include "Utils/Utility/GUtString.h"
#include "script/ScriptValue.h"

#include <cstdint>

extern "C"
{
#include <lua.h>
}

namespace GLib::Script
{

// A bound C function: reads its arguments through a CLuaCall, pushes its results by hand and
// returns their count.
using LuaFunction = int (*)(lua_State* pState);

class CLuaState
{
public:
    explicit CLuaState(lua_State* pState = nullptr) : m_pState(pState) {}
    virtual ~CLuaState() = default;
    CLuaState(const CLuaState&) = delete;
    CLuaState& operator=(const CLuaState&) = delete;

    lua_State* GetState() const { return m_pState; }

    int ArgCount() const;
    // Lua's type code of the argument; LUA_TNONE (-1) past the last one.
    int ArgType(int iIndex) const;
    bool ArgBool(int iIndex) const;
    // The number truncated toward zero; out of the 32-bit range it is clamped, NaN gives 0.
    int32_t ArgInt(int iIndex) const;
    float ArgFloat(int iIndex) const;
    // The argument as a string (a number is converted in place, as lua_tolstring does); a
    // value with no string form gives "", never null. Valid while the argument is on the stack.
    const char* ArgString(int iIndex) const;
    // Any value as text: "nil", "true", "false", "userdata: %p", "table: %p",
    // "function: %p", "thread: %p", or the number ("%.14g") or string itself.
    GUtString ArgText(int iIndex) const;

    // Raises a Lua error with this text and does not return: it unwinds to the lua_pcall
    // that ran the chunk. Call it only with no local objects that need destruction.
    int Error(const char* pcText) const;

    void PushInt(int32_t iValue) const;
    void PushFloat(float fValue) const;
    void PushString(const char* pcText) const;

    void RegisterFunction(const char* pcName, LuaFunction pFunction) const;
    void SetGlobal(const char* pcName, int32_t iValue) const;

protected:
    lua_State* m_pState;
};

// Built on the stack at the top of each bound C function, around the state it is given. It
// does nothing at destruction, so Error may leave it behind.
class CLuaCall : public CLuaState
{
public:
    explicit CLuaCall(lua_State* pState) : CLuaState(pState) {}
    ~CLuaCall() override = default;
};

// Adds the reading and writing of script values.
class CLuaParamHelper : public CLuaState
{
public:
    // Tables nested deeper than this read as nil, as does a table met again inside itself.
    static constexpr int MAX_TABLE_DEPTH = 200;

    explicit CLuaParamHelper(lua_State* pState = nullptr) : CLuaState(pState) {}
    ~CLuaParamHelper() override = default;

    // Pushes a value; tables are pushed with PushTable.
    void PushValue(const CScriptValue& value) const;
    // Creates a Lua table and stores each pair in key order; nested tables recurse. Pairs whose
    // key Lua cannot hold (nil, NaN) are passed over.
    void PushTable(const CScriptTable& table) const;

    // Reads the value on the top of the stack and pops it. Functions, threads and other
    // values Lua cannot copy read as nil.
    void ReadValue(CScriptValue& out) const;
    // Reads the table on the top of the stack into out (its old pairs are dropped) and pops it.
    // Keys of type boolean, user data, number and string are kept; others are passed over.
    void ReadTable(CScriptTable& out) const;

    // True if the global is a string (a number does not count); out is untouched otherwise.
    bool GetGlobalString(const char* pcName, GUtString& out) const;
    // True if the global is a table, read into out; out is untouched otherwise.
    bool GetGlobalTable(const char* pcName, CScriptValue& out) const;

private:
    struct SReadPath;
    // Copies a boolean, user data, number or string at iIndex (of Lua type iType) into out,
    // placing a long string in the arena when one is given; false for any other type.
    static bool _ReadScalar(lua_State* pState, int iIndex, int iType, CScriptValue& out,
                            CScriptArena* pArena);
    void _ReadValue(CScriptValue& out, SReadPath& path) const;
    // Makes out a table inside the tree's arena, holding the pairs of the range in key order.
    static void _FillInnerTable(CScriptValue& out, CScriptTable::Pair* pFirst, CScriptTable::Pair* pLast,
                                SReadPath& path);
    // Reads the pairs of the table on the top of the stack onto the path's scratch stack, in
    // Lua's order, and pops the table.
    void _ReadPairs(SReadPath& path) const;
    void _PushTable(const CScriptTable& table, int iDepth) const;
    void _PushValue(const CScriptValue& value, int iDepth) const;
};

class CLuaScript;
// (script, Lua's status code, error text). The global hook may be called from any thread.
using LuaErrorHook = void (*)(CLuaScript* pScript, int iCode, const char* pcText);

// Owns a state opened with luaL_newstate and the standard libraries, closed at destruction.
class CLuaScript : public CLuaParamHelper
{
public:
    CLuaScript();
    ~CLuaScript() override;

    // Reads the whole file through GUtFile (so packs and case-mismatched paths are found)
    // and runs it. A file that does not open, does not compile or fails while running gives
    // false, after the instance hook and then the global hook saw the error.
    bool RunFile(const char* pcPath);
    // Compiles and runs a chunk; the text is also the chunk's name. False on error, after
    // the hooks.
    bool RunString(const char* pcText);

    void SetErrorHook(LuaErrorHook pHook) { m_pErrorHook = pHook; }
    LuaErrorHook GetErrorHook() const { return m_pErrorHook; }
    // The process-wide hook; null removes it.
    static void SetGlobalErrorHook(LuaErrorHook pHook);
    static LuaErrorHook GetGlobalErrorHook();

private:
    bool _LoadAndRun(const char* pcBuffer, size_t uLength, const char* pcChunkName);
    bool _Report(int iCode);

    LuaErrorHook m_pErrorHook = nullptr;
    [[maybe_unused]] uint32_t m_uReserved = 0;
};

} // namespace GLib::Script
