#include "script/LuaScript.h"

#include "Utils/Utility/GUtDebug.h"
#include "Utils/Utility/GUtFile.h"

#include <atomic>
#include <cmath>
#include <cstring>
#include <string>
#include <vector>

extern "C"
{
#include <lauxlib.h>
#include <lualib.h>
}

namespace GLib::Script
{

namespace
{
std::atomic<LuaErrorHook> g_globalErrorHook{nullptr};
} // namespace

// ---------------------------------------------------------------------------------------
// CLuaState: arguments and results of bound functions

int CLuaState::ArgCount() const
{
    return lua_gettop(m_pState);
}

int CLuaState::ArgType(int iIndex) const
{
    return lua_type(m_pState, iIndex + 1);
}

bool CLuaState::ArgBool(int iIndex) const
{
    return lua_toboolean(m_pState, iIndex + 1) != 0;
}

int32_t CLuaState::ArgInt(int iIndex) const
{
    double d = lua_tonumber(m_pState, iIndex + 1);
    if (std::isnan(d))
    {
        return 0;
    }
    if (d >= 2147483647.0)
    {
        return INT32_MAX;
    }
    if (d <= -2147483648.0)
    {
        return INT32_MIN;
    }
    return static_cast<int32_t>(d);
}

float CLuaState::ArgFloat(int iIndex) const
{
    return static_cast<float>(lua_tonumber(m_pState, iIndex + 1));
}

const char* CLuaState::ArgString(int iIndex) const
{
    const char* pcText = lua_tolstring(m_pState, iIndex + 1, nullptr);
    return pcText ? pcText : "";
}

GUtString CLuaState::ArgText(int iIndex) const
{
    const int iLua = iIndex + 1;
    GUtString text;
    switch (lua_type(m_pState, iLua))
    {
        case LUA_TBOOLEAN:
            text = lua_toboolean(m_pState, iLua) ? "true" : "false";
            break;
        case LUA_TLIGHTUSERDATA:
        case LUA_TUSERDATA:
            text.Format("userdata: %p", lua_topointer(m_pState, iLua));
            break;
        case LUA_TTABLE:
            text.Format("table: %p", lua_topointer(m_pState, iLua));
            break;
        case LUA_TFUNCTION:
            text.Format("function: %p", lua_topointer(m_pState, iLua));
            break;
        case LUA_TTHREAD:
            text.Format("thread: %p", lua_topointer(m_pState, iLua));
            break;
        case LUA_TNUMBER:
            text.Format(LUA_NUMBER_FMT, lua_tonumber(m_pState, iLua));
            break;
        case LUA_TSTRING:
        {
            size_t uLength = 0;
            const char* pcText = lua_tolstring(m_pState, iLua, &uLength);
            text.Assign(pcText, static_cast<int>(uLength));
            break;
        }
        default:
            text = "nil";
            break;
    }
    return text;
}

int CLuaState::Error(const char* pcText) const
{
    return luaL_error(m_pState, "%s", pcText ? pcText : "");
}

void CLuaState::PushInt(int32_t iValue) const
{
    lua_pushnumber(m_pState, static_cast<lua_Number>(iValue));
}

void CLuaState::PushFloat(float fValue) const
{
    lua_pushnumber(m_pState, static_cast<lua_Number>(fValue));
}

void CLuaState::PushString(const char* pcText) const
{
    lua_pushstring(m_pState, pcText ? pcText : "");
}

void CLuaState::RegisterFunction(const char* pcName, LuaFunction pFunction) const
{
    lua_pushcclosure(m_pState, pFunction, 0);
    lua_setfield(m_pState, LUA_GLOBALSINDEX, pcName);
}

void CLuaState::SetGlobal(const char* pcName, int32_t iValue) const
{
    lua_pushnumber(m_pState, static_cast<lua_Number>(iValue));
    lua_setfield(m_pState, LUA_GLOBALSINDEX, pcName);
}

// ---------------------------------------------------------------------------------------
// CLuaParamHelper: script values in and out

// The state of one read of a tree of tables:
// - the tables being read, outermost first: a table met again inside itself is a cycle;
// - the pairs of every table being read wait on one scratch stack, so that each table's own
//   array is allocated once, at its exact size; the stack stays with the thread between
//   reads, unless a very wide table grew it;
// - everything inside the outermost table is placed in one arena, handed to that table at the
//   end: a tree costs a few large allocations instead of one per table and string;
// - records of one kind (the entries of an item list) have the same keys: the order that one
//   record's sort found is remembered per nesting level and size, checked against the next
//   record's keys, and used without sorting again.
namespace
{
thread_local std::vector<CScriptTable::Pair> t_scratch;
constexpr size_t MAX_KEPT_SCRATCH = 0x40000 / sizeof(CScriptTable::Pair);
} // namespace

struct CLuaParamHelper::SReadPath
{
    struct SShape
    {
        const CScriptTable* pTable = nullptr; // the last table of this shape, in key order
        uint8_t auOrder[CScriptTable::SMALL_SORT];
    };
    static constexpr int SHAPE_SLOTS = 64;

    const void* apTables[MAX_TABLE_DEPTH];
    int iDepth = 0;
    SShape aShapes[SHAPE_SLOTS];
    std::vector<CScriptTable::Pair>& scratch;
    const size_t uScratchBase;
    CScriptArena* pArena = nullptr;

    SReadPath() : scratch(t_scratch), uScratchBase(t_scratch.size()) {}
    SReadPath(const SReadPath&) = delete;
    SReadPath& operator=(const SReadPath&) = delete;
    ~SReadPath()
    {
        scratch.resize(uScratchBase);
        delete pArena;
        if (uScratchBase == 0 && scratch.capacity() > MAX_KEPT_SCRATCH)
        {
            std::vector<CScriptTable::Pair>().swap(scratch);
        }
    }

    CScriptArena& Arena()
    {
        if (!pArena)
        {
            pArena = new CScriptArena();
        }
        return *pArena;
    }
    CScriptArena* TakeArena()
    {
        CScriptArena* pTaken = pArena;
        pArena = nullptr;
        return pTaken;
    }

    bool CanEnter(const void* pTable) const
    {
        if (iDepth >= MAX_TABLE_DEPTH)
        {
            return false;
        }
        for (int i = 0; i < iDepth; ++i)
        {
            if (apTables[i] == pTable)
            {
                return false;
            }
        }
        return true;
    }
};

void CLuaParamHelper::PushValue(const CScriptValue& value) const
{
    _PushValue(value, 0);
}

void CLuaParamHelper::PushTable(const CScriptTable& table) const
{
    _PushTable(table, 0);
}

void CLuaParamHelper::_PushValue(const CScriptValue& value, int iDepth) const
{
    switch (value.Type())
    {
        case CScriptValue::TYPE_BOOLEAN:
            lua_pushboolean(m_pState, value.GetBool() ? 1 : 0);
            break;
        case CScriptValue::TYPE_USERDATA:
            lua_pushlightuserdata(m_pState, value.GetPointer());
            break;
        case CScriptValue::TYPE_NUMBER:
            lua_pushnumber(m_pState, value.GetNumber());
            break;
        case CScriptValue::TYPE_STRING:
            lua_pushlstring(m_pState, value.GetString(), static_cast<size_t>(value.GetStringLength()));
            break;
        case CScriptValue::TYPE_TABLE:
            _PushTable(value.GetTable(), iDepth);
            break;
        default:
            lua_pushnil(m_pState);
            break;
    }
}

void CLuaParamHelper::_PushTable(const CScriptTable& table, int iDepth) const
{
    // Each level holds the table, a key and a value on the stack.
    if (iDepth >= MAX_TABLE_DEPTH || !lua_checkstack(m_pState, 3))
    {
        lua_pushnil(m_pState);
        return;
    }
    int iArray = 0;
    for (const CScriptTable::Pair& pair : table)
    {
        iArray += pair.first.Type() == CScriptValue::TYPE_NUMBER ? 1 : 0;
    }
    lua_createtable(m_pState, iArray, table.Count() - iArray);
    for (const CScriptTable::Pair& pair : table)
    {
        const CScriptValue& key = pair.first;
        if (key.IsNil() || (key.Type() == CScriptValue::TYPE_NUMBER && std::isnan(key.GetNumber())))
        {
            continue;
        }
        _PushValue(key, iDepth + 1);
        _PushValue(pair.second, iDepth + 1);
        lua_settable(m_pState, -3);
    }
}

void CLuaParamHelper::ReadValue(CScriptValue& out) const
{
    SReadPath path;
    _ReadValue(out, path);
}

void CLuaParamHelper::ReadTable(CScriptTable& out) const
{
    SReadPath path;
    out.Clear();
    if (lua_type(m_pState, -1) != LUA_TTABLE)
    {
        lua_pop(m_pState, 1);
        return;
    }
    const size_t uBase = path.scratch.size();
    _ReadPairs(path);
    out._AssignMovedIn(path.Arena(), path.scratch.data() + uBase, path.scratch.data() + path.scratch.size());
    out._AdoptArena(path.TakeArena());
}

bool CLuaParamHelper::_ReadScalar(lua_State* pState, int iIndex, int iType, CScriptValue& out,
                                  CScriptArena* pArena)
{
    switch (iType)
    {
        case LUA_TBOOLEAN:
            out.SetBool(lua_toboolean(pState, iIndex) != 0);
            return true;
        case LUA_TLIGHTUSERDATA:
        case LUA_TUSERDATA:
            out.SetPointer(lua_touserdata(pState, iIndex));
            return true;
        case LUA_TNUMBER:
            out.SetNumber(static_cast<double>(lua_tonumber(pState, iIndex)));
            return true;
        case LUA_TSTRING:
        {
            size_t uLength = 0;
            const char* pcText = lua_tolstring(pState, iIndex, &uLength);
            if (pArena)
            {
                out._SetStringIn(*pArena, std::string_view(pcText, uLength));
            }
            else
            {
                out.SetString(std::string_view(pcText, uLength));
            }
            return true;
        }
        default:
            return false;
    }
}

void CLuaParamHelper::_ReadValue(CScriptValue& out, SReadPath& path) const
{
    const int iType = lua_type(m_pState, -1);
    if (iType == LUA_TTABLE && path.CanEnter(lua_topointer(m_pState, -1)))
    {
        // The outermost table is the caller's, on the heap; the tables inside go to the arena.
        const bool bOutermost = path.iDepth == 0;
        const size_t uBase = path.scratch.size();
        _ReadPairs(path); // pops the table
        CScriptTable::Pair* pFirst = path.scratch.data() + uBase;
        CScriptTable::Pair* pLast = path.scratch.data() + path.scratch.size();
        if (bOutermost)
        {
            CScriptTable& table = out.SetTable();
            table._AssignMovedIn(path.Arena(), pFirst, pLast);
            table._AdoptArena(path.TakeArena());
        }
        else
        {
            _FillInnerTable(out, pFirst, pLast, path);
        }
        path.scratch.resize(uBase);
        return;
    }
    if (!_ReadScalar(m_pState, -1, iType, out, nullptr))
    {
        out.SetNil(); // functions, threads, cycles and tables too deep
    }
    lua_pop(m_pState, 1);
}

void CLuaParamHelper::_FillInnerTable(CScriptValue& out, CScriptTable::Pair* pFirst,
                                      CScriptTable::Pair* pLast, SReadPath& path)
{
    const uint32_t uCount = static_cast<uint32_t>(pLast - pFirst);
    CScriptTable& table = out._SetTableIn(path.Arena(), uCount);
    if (uCount < 2 || uCount > CScriptTable::SMALL_SORT)
    {
        table.AssignMoved(pFirst, pLast);
        return;
    }
    SReadPath::SShape& shape =
        path.aShapes[(path.iDepth * 17 + static_cast<int>(uCount)) % SReadPath::SHAPE_SLOTS];
    if (shape.pTable && shape.pTable->m_uCount == uCount)
    {
        bool bSame = true;
        for (uint32_t i = 0; i < uCount && bSame; ++i)
        {
            bSame = CScriptValue::_SameKey(pFirst[shape.auOrder[i]].first, shape.pTable->m_pPairs[i].first);
        }
        if (bSame)
        {
            table._PlaceInOrder(pFirst, shape.auOrder, uCount);
            shape.pTable = &table;
            return;
        }
    }
    uint8_t auOrder[CScriptTable::SMALL_SORT];
    if (CScriptTable::_SortOrder(pFirst, uCount, auOrder))
    {
        table.AssignMoved(pFirst, pLast); // repeated keys: the general path drops them
        return;
    }
    table._PlaceInOrder(pFirst, auOrder, uCount);
    shape.pTable = &table;
    std::memcpy(shape.auOrder, auOrder, uCount);
}

void CLuaParamHelper::_ReadPairs(SReadPath& path) const
{
    // The table, a key, a value and one spare for the values' own reads.
    if (!lua_checkstack(m_pState, 4))
    {
        lua_pop(m_pState, 1);
        return;
    }
    path.apTables[path.iDepth++] = lua_topointer(m_pState, -1);
    const int iTable = lua_gettop(m_pState);
    lua_pushnil(m_pState);
    while (lua_next(m_pState, iTable) != 0)
    {
        // The pair is built in place on the scratch stack; a nested table grows the stack, so
        // it is found again by index.
        const size_t uPair = path.scratch.size();
        if (!_ReadScalar(m_pState, -2, lua_type(m_pState, -2), path.scratch.emplace_back().first,
                         &path.Arena()))
        {
            path.scratch.pop_back();
            lua_pop(m_pState, 1); // keys of other types are passed over
            continue;
        }
        const int iValueType = lua_type(m_pState, -1);
        if (iValueType == LUA_TTABLE)
        {
            CScriptValue value;
            _ReadValue(value, path);
            path.scratch[uPair].second = std::move(value);
        }
        else
        {
            _ReadScalar(m_pState, -1, iValueType, path.scratch[uPair].second, &path.Arena());
            lua_pop(m_pState, 1);
        }
    }
    --path.iDepth;
    lua_pop(m_pState, 1);
}

bool CLuaParamHelper::GetGlobalString(const char* pcName, GUtString& out) const
{
    lua_getfield(m_pState, LUA_GLOBALSINDEX, pcName);
    bool bString = lua_type(m_pState, -1) == LUA_TSTRING;
    if (bString)
    {
        size_t uLength = 0;
        const char* pcText = lua_tolstring(m_pState, -1, &uLength);
        out.Assign(pcText, static_cast<int>(uLength));
    }
    lua_pop(m_pState, 1);
    return bString;
}

bool CLuaParamHelper::GetGlobalTable(const char* pcName, CScriptValue& out) const
{
    lua_getfield(m_pState, LUA_GLOBALSINDEX, pcName);
    if (lua_type(m_pState, -1) != LUA_TTABLE)
    {
        lua_pop(m_pState, 1);
        return false;
    }
    CScriptValue value;
    SReadPath path;
    _ReadValue(value, path);
    out = std::move(value);
    return true;
}

// ---------------------------------------------------------------------------------------
// CLuaScript

CLuaScript::CLuaScript() : CLuaParamHelper(luaL_newstate())
{
    GUT_ASSERT(m_pState);
    luaL_openlibs(m_pState);
}

CLuaScript::~CLuaScript()
{
    lua_close(m_pState);
}

void CLuaScript::SetGlobalErrorHook(LuaErrorHook pHook)
{
    g_globalErrorHook.store(pHook);
}

LuaErrorHook CLuaScript::GetGlobalErrorHook()
{
    return g_globalErrorHook.load();
}

bool CLuaScript::RunString(const char* pcText)
{
    if (!pcText)
    {
        pcText = "";
    }
    return _LoadAndRun(pcText, strlen(pcText), pcText);
}

bool CLuaScript::RunFile(const char* pcPath)
{
    const char* pcName = pcPath ? pcPath : "";
    GUtFile file;
    if (!*pcName ||
        !file.Open(pcName, GUtFile::MODE_ALWAYS | GUtFile::MODE_BINARY | GUtFile::MODE_READ, true))
    {
        lua_pushfstring(m_pState, "cannot open %s", pcName);
        return _Report(LUA_ERRFILE);
    }
    const int64_t iSize = file.Size();
    std::string text;
    if (iSize < 0 || iSize > INT32_MAX)
    {
        lua_pushfstring(m_pState, "cannot read %s", pcName);
        return _Report(LUA_ERRFILE);
    }
    text.resize(static_cast<size_t>(iSize));
    if (iSize > 0 && file.ReadRaw(text.data(), static_cast<int32_t>(iSize)) != iSize)
    {
        lua_pushfstring(m_pState, "cannot read %s", pcName);
        return _Report(LUA_ERRFILE);
    }
    // As luaL_loadfile does, a first line starting with '#' is skipped; its newline stays so
    // that line numbers in messages hold.
    size_t uStart = 0;
    if (!text.empty() && text[0] == '#')
    {
        uStart = text.find('\n');
        uStart = uStart == std::string::npos ? text.size() : uStart;
    }
    // "@" marks a file name: messages read "path:line: text", as from luaL_loadfile.
    std::string chunkName = std::string("@") + pcName;
    return _LoadAndRun(text.data() + uStart, text.size() - uStart, chunkName.c_str());
}

bool CLuaScript::_LoadAndRun(const char* pcBuffer, size_t uLength, const char* pcChunkName)
{
    const int iTop = lua_gettop(m_pState);
    int iCode = luaL_loadbuffer(m_pState, pcBuffer, uLength, pcChunkName);
    if (iCode == 0)
    {
        iCode = lua_pcall(m_pState, 0, LUA_MULTRET, 0);
    }
    if (iCode != 0)
    {
        return _Report(iCode);
    }
    // A chunk's results are of no use here; dropping them keeps a long-lived state's stack flat.
    lua_settop(m_pState, iTop);
    return true;
}

bool CLuaScript::_Report(int iCode)
{
    // The hooks may use the state; the error stays at this index until they are done.
    const int iError = lua_gettop(m_pState);
    const char* pcText = lua_tostring(m_pState, iError);
    if (!pcText)
    {
        pcText = "(error object is not a string)";
    }
    if (m_pErrorHook)
    {
        m_pErrorHook(this, iCode, pcText);
    }
    if (LuaErrorHook pGlobal = g_globalErrorHook.load())
    {
        pGlobal(this, iCode, pcText);
    }
    lua_settop(m_pState, iError - 1);
    return false;
}

} // namespace GLib::Script
