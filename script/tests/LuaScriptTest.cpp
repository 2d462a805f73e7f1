#include "script/LuaScript.h"

#include <gtest/gtest.h>

#include <cstdio>
#include <filesystem>
#include <fstream>
#include <string>
#include <thread>
#include <unistd.h>
#include <vector>
#include <zlib.h>

extern "C"
{
#include <lauxlib.h>
}

using namespace GLib::Script;

namespace
{
// ---------------------------------------------------------------------------------------
// Recorders for bound functions and hooks: both are plain function pointers.

struct SHookCall
{
    std::string strWho;
    CLuaScript* pScript;
    int iCode;
    std::string strText;
};
std::vector<SHookCall> g_hookCalls;

void InstanceHook(CLuaScript* pScript, int iCode, const char* pcText)
{
    g_hookCalls.push_back({"instance", pScript, iCode, pcText});
}

void GlobalHook(CLuaScript* pScript, int iCode, const char* pcText)
{
    g_hookCalls.push_back({"global", pScript, iCode, pcText});
}

// Installs both hooks on a script for the length of a test.
class CHookedScript : public ::testing::Test
{
protected:
    void SetUp() override
    {
        g_hookCalls.clear();
        m_script.SetErrorHook(InstanceHook);
        CLuaScript::SetGlobalErrorHook(GlobalHook);
    }
    void TearDown() override { CLuaScript::SetGlobalErrorHook(nullptr); }

    // Both hooks saw exactly this error, instance first.
    void ExpectHooked(int iCode, const std::string& strText)
    {
        ASSERT_EQ(g_hookCalls.size(), 2u);
        EXPECT_EQ(g_hookCalls[0].strWho, "instance");
        EXPECT_EQ(g_hookCalls[1].strWho, "global");
        for (const SHookCall& call : g_hookCalls)
        {
            EXPECT_EQ(call.pScript, &m_script);
            EXPECT_EQ(call.iCode, iCode);
            EXPECT_EQ(call.strText, strText);
        }
        EXPECT_EQ(lua_gettop(m_script.GetState()), 0);
        g_hookCalls.clear();
    }

    CLuaScript m_script;
};

struct SProbe
{
    int iCount = 0;
    std::vector<int> types, ints;
    std::vector<float> floats;
    std::vector<std::string> strings, texts;
    std::vector<bool> bools;
};
SProbe g_probe;

// Records every argument through each accessor.
int Probe(lua_State* pState)
{
    CLuaCall call(pState);
    g_probe = SProbe();
    g_probe.iCount = call.ArgCount();
    for (int i = 0; i < g_probe.iCount; ++i)
    {
        g_probe.types.push_back(call.ArgType(i));
        g_probe.ints.push_back(call.ArgInt(i));
        g_probe.floats.push_back(call.ArgFloat(i));
        g_probe.bools.push_back(call.ArgBool(i));
        g_probe.texts.push_back(call.ArgText(i).ToStd());
    }
    // After ArgText, as ArgString turns a number argument into a string in place.
    for (int i = 0; i < g_probe.iCount; ++i)
    {
        g_probe.strings.push_back(call.ArgString(i));
    }
    return 0;
}

int NeedSix(lua_State* pState)
{
    CLuaCall call(pState);
    if (call.ArgCount() < 6)
    {
        return call.Error("Error ! need 6 arguments.");
    }
    return 0;
}

int Results(lua_State* pState)
{
    CLuaCall call(pState);
    call.PushInt(7);
    call.PushFloat(0.1f);
    call.PushString("seven");
    return 3;
}

int LightUserData(lua_State* pState)
{
    lua_pushlightuserdata(pState, reinterpret_cast<void*>(0x1234));
    return 1;
}

std::filesystem::path TempFolder(const char* pcName)
{
    std::filesystem::path folder =
        std::filesystem::temp_directory_path() / (std::string(pcName) + "_" + std::to_string(getpid()));
    std::filesystem::remove_all(folder);
    std::filesystem::create_directories(folder);
    return folder;
}

void WriteFile(const std::filesystem::path& path, const std::string& strBytes)
{
    std::filesystem::create_directories(path.parent_path());
    std::ofstream out(path, std::ios::binary);
    out.write(strBytes.data(), static_cast<std::streamsize>(strBytes.size()));
}

std::vector<std::string> KeyTexts(const CScriptTable& table)
{
    std::vector<std::string> keys;
    for (const CScriptTable::Pair& pair : table)
    {
        switch (pair.first.Type())
        {
            case CScriptValue::TYPE_BOOLEAN:
                keys.push_back(pair.first.GetBool() ? "true" : "false");
                break;
            case CScriptValue::TYPE_USERDATA:
                keys.push_back("userdata");
                break;
            case CScriptValue::TYPE_NUMBER:
            {
                char acText[32];
                snprintf(acText, sizeof(acText), "%g", pair.first.GetNumber());
                keys.push_back(acText);
                break;
            }
            default:
                keys.push_back("'" + std::string(pair.first.GetStringView()) + "'");
                break;
        }
    }
    return keys;
}
} // namespace

// ---------------------------------------------------------------------------------------
// Arguments and results

TEST(LuaScript, ArgumentAccessorsConvertAsLuaDoes)
{
    CLuaScript script;
    script.RegisterFunction("Probe", Probe);
    ASSERT_TRUE(script.RunString("Probe(2.9, -2.9, nil, 'abc', true, false, '12', 1e15, 3, 1e10, -1e10)"));
    ASSERT_EQ(g_probe.iCount, 11);
    EXPECT_EQ(g_probe.types,
              (std::vector<int>{LUA_TNUMBER, LUA_TNUMBER, LUA_TNIL, LUA_TSTRING, LUA_TBOOLEAN, LUA_TBOOLEAN,
                                LUA_TSTRING, LUA_TNUMBER, LUA_TNUMBER, LUA_TNUMBER, LUA_TNUMBER}));
    // Truncation toward zero; strings convert; out of range clamps.
    EXPECT_EQ(g_probe.ints, (std::vector<int>{2, -2, 0, 0, 0, 0, 12, INT32_MAX, 3, INT32_MAX, INT32_MIN}));
    EXPECT_FLOAT_EQ(g_probe.floats[0], 2.9f);
    EXPECT_FLOAT_EQ(g_probe.floats[6], 12.0f);
    EXPECT_EQ(g_probe.bools,
              (std::vector<bool>{true, true, false, true, true, false, true, true, true, true, true}));
    EXPECT_EQ(g_probe.strings, (std::vector<std::string>{"2.9", "-2.9", "", "abc", "", "", "12", "1e+15", "3",
                                                         "10000000000", "-10000000000"}));
    EXPECT_EQ(g_probe.texts, (std::vector<std::string>{"2.9", "-2.9", "nil", "abc", "true", "false", "12",
                                                       "1e+15", "3", "10000000000", "-10000000000"}));
}

TEST(LuaScript, ArgTextOfReferenceTypesMatchesLuaTostring)
{
    CLuaScript script;
    script.RegisterFunction("Probe", Probe);
    script.RegisterFunction("LightUserData", LightUserData);
    ASSERT_TRUE(
        script.RunString("local t, f, c, u = {}, print, coroutine.create(function() end), newproxy()\n"
                         "Probe(t, f, c, u, LightUserData(), tostring(t), tostring(f), tostring(c),"
                         " tostring(u))"));
    ASSERT_EQ(g_probe.iCount, 9);
    EXPECT_EQ(g_probe.texts[0].rfind("table: ", 0), 0u);
    EXPECT_EQ(g_probe.texts[0], g_probe.texts[5]);
    EXPECT_EQ(g_probe.texts[1].rfind("function: ", 0), 0u);
    EXPECT_EQ(g_probe.texts[1], g_probe.texts[6]);
    EXPECT_EQ(g_probe.texts[2].rfind("thread: ", 0), 0u);
    EXPECT_EQ(g_probe.texts[2], g_probe.texts[7]);
    EXPECT_EQ(g_probe.texts[3].rfind("userdata: ", 0), 0u);
    EXPECT_EQ(g_probe.texts[3], g_probe.texts[8]);
    EXPECT_EQ(g_probe.texts[4], "userdata: 0x1234");
    EXPECT_EQ(g_probe.types[4], LUA_TLIGHTUSERDATA);
    // None of them has a string form or a number.
    for (int i = 0; i < 5; ++i)
    {
        EXPECT_EQ(g_probe.strings[i], "") << i;
        EXPECT_EQ(g_probe.ints[i], 0) << i;
    }
    // Past the last argument.
    lua_settop(script.GetState(), 0);
    CLuaCall call(script.GetState());
    EXPECT_EQ(call.ArgType(0), LUA_TNONE);
    EXPECT_EQ(call.ArgText(0).ToStd(), "nil");
    EXPECT_STREQ(call.ArgString(0), "");
}

TEST(LuaScript, PushedResultsAreDoubles)
{
    CLuaScript script;
    script.RegisterFunction("Results", Results);
    script.SetGlobal("Count", 42);
    ASSERT_TRUE(script.RunString("a, b, c = Results()\n"
                                 "assert(type(a) == 'number' and a == 7)\n"
                                 "assert(b == 0.10000000149011612 and c == 'seven')\n"
                                 "assert(Count == 42 and type(Count) == 'number')"));
    GUtString text;
    EXPECT_TRUE(script.GetGlobalString("c", text));
    EXPECT_EQ(text.ToStd(), "seven");
}

TEST(LuaScript, GlobalReadsOfTheWrongTypeLeaveOutAlone)
{
    CLuaScript script;
    ASSERT_TRUE(script.RunString("n = 5 s = 'x' t = { 1 }"));
    GUtString text("kept");
    EXPECT_FALSE(script.GetGlobalString("n", text)); // a number has a string form, but isn't one
    EXPECT_FALSE(script.GetGlobalString("t", text));
    EXPECT_FALSE(script.GetGlobalString("missing", text));
    EXPECT_EQ(text.ToStd(), "kept");

    CScriptValue table("kept");
    EXPECT_FALSE(script.GetGlobalTable("s", table));
    EXPECT_FALSE(script.GetGlobalTable("missing", table));
    EXPECT_STREQ(table.GetString(), "kept");
    EXPECT_TRUE(script.GetGlobalTable("t", table));
    EXPECT_EQ(table.GetTable().Get(1).GetNumber(), 1.0);
    EXPECT_EQ(lua_gettop(script.GetState()), 0);
}

// ---------------------------------------------------------------------------------------
// Errors and hooks

TEST_F(CHookedScript, SyntaxAndRunTimeErrorsReachBothHooksInOrder)
{
    EXPECT_FALSE(m_script.RunString("x = = 1"));
    ExpectHooked(LUA_ERRSYNTAX, "[string \"x = = 1\"]:1: unexpected symbol near '='");

    EXPECT_FALSE(m_script.RunString("error('boom')"));
    ExpectHooked(LUA_ERRRUN, "[string \"error('boom')\"]:1: boom");

    EXPECT_FALSE(m_script.RunString("error({})"));
    ExpectHooked(LUA_ERRRUN, "(error object is not a string)");

    // Results of a chunk are dropped; the stack stays flat.
    EXPECT_TRUE(m_script.RunString("return 1, 2, 3"));
    EXPECT_EQ(lua_gettop(m_script.GetState()), 0);
    EXPECT_TRUE(g_hookCalls.empty());

    // Without hooks an error is only a false.
    m_script.SetErrorHook(nullptr);
    CLuaScript::SetGlobalErrorHook(nullptr);
    EXPECT_FALSE(m_script.RunString("error('quiet')"));
    EXPECT_TRUE(g_hookCalls.empty());
}

TEST_F(CHookedScript, TooFewArgumentsRaiseTheFunctionsMessageAndTheStateLivesOn)
{
    m_script.RegisterFunction("NeedSix", NeedSix);
    EXPECT_FALSE(m_script.RunString("NeedSix(1, 2)"));
    // luaL_error puts the calling chunk's position ahead of the function's own text.
    ExpectHooked(LUA_ERRRUN, "[string \"NeedSix(1, 2)\"]:1: Error ! need 6 arguments.");
    EXPECT_TRUE(m_script.RunString("NeedSix(1, 2, 3, 4, 5, 6) done = 1"));
    EXPECT_TRUE(g_hookCalls.empty());
    // Called straight from pcall (a C function) there is no position to add.
    EXPECT_TRUE(m_script.RunString("ok, text = pcall(NeedSix)"));
    GUtString text;
    EXPECT_TRUE(m_script.GetGlobalString("text", text));
    EXPECT_EQ(text.ToStd(), "Error ! need 6 arguments.");
}

TEST_F(CHookedScript, RunFileReportsMissingAndMalformedFilesUnderTheirPath)
{
    std::filesystem::path folder = TempFolder("lua_runfile_test");
    std::string strMissing = (folder / "missing.lua").string();
    EXPECT_FALSE(m_script.RunFile(strMissing.c_str()));
    ExpectHooked(LUA_ERRFILE, "cannot open " + strMissing);

    std::string strBad = (folder / "bad.lua").string();
    WriteFile(strBad, "-- a table\nx = {\n  1,, 2 }\n");
    EXPECT_FALSE(m_script.RunFile(strBad.c_str()));
    ExpectHooked(LUA_ERRSYNTAX, strBad + ":3: unexpected symbol near ','");

    std::string strThrows = (folder / "throws.lua").string();
    WriteFile(strThrows, "#!/usr/bin/lua\nlocal t = nil\nreturn t.x\n");
    EXPECT_FALSE(m_script.RunFile(strThrows.c_str()));
    ExpectHooked(LUA_ERRRUN, strThrows + ":3: attempt to index local 't' (a nil value)");

    std::string strGood = (folder / "good.lua").string();
    WriteFile(strGood, "#!/usr/bin/lua\nConfig = { name = 'hero', [1] = true }\n");
    EXPECT_TRUE(m_script.RunFile(strGood.c_str()));
    CScriptValue config;
    ASSERT_TRUE(m_script.GetGlobalTable("Config", config));
    EXPECT_STREQ(config.GetTable().Get("name").GetString(), "hero");
    EXPECT_TRUE(config.GetTable().Get(1).GetBool());

    EXPECT_FALSE(m_script.RunFile(""));
    ExpectHooked(LUA_ERRFILE, "cannot open ");
    std::filesystem::remove_all(folder);
}

// ---------------------------------------------------------------------------------------
// Tables

TEST(LuaScript, TableKeysComeOutByTypeCodeThenValue)
{
    CLuaScript script;
    ASSERT_TRUE(
        script.RunString("A = { 10, 20, x = 1 }\n"
                         "B = { [true] = 1, [1] = 2 }\n"
                         "C = { b = 1, a = 2, [3] = 0, [-1] = 0, [0.5] = 0, [false] = 0, [true] = 0,\n"
                         "      ['10'] = 0, ['9'] = 0, [newproxy()] = 0, [print] = 0, [{}] = 0,\n"
                         "      f = print, co = coroutine.create(function() end) }"));
    CScriptValue a, b, c;
    ASSERT_TRUE(script.GetGlobalTable("A", a));
    ASSERT_TRUE(script.GetGlobalTable("B", b));
    ASSERT_TRUE(script.GetGlobalTable("C", c));
    EXPECT_EQ(KeyTexts(a.GetTable()), (std::vector<std::string>{"1", "2", "'x'"}));
    EXPECT_EQ(a.GetTable().Get(2).GetNumber(), 20.0);
    EXPECT_EQ(KeyTexts(b.GetTable()), (std::vector<std::string>{"true", "1"}));
    EXPECT_EQ(b.GetTable().At(0).second.GetNumber(), 1.0);
    // Function and table keys are passed over; values Lua cannot copy are kept as nil.
    EXPECT_EQ(KeyTexts(c.GetTable()), (std::vector<std::string>{"false", "true", "userdata", "-1", "0.5", "3",
                                                                "'10'", "'9'", "'a'", "'b'", "'co'", "'f'"}));
    EXPECT_TRUE(c.GetTable().Get("f").IsNil());
    ASSERT_NE(c.GetTable().Find("co"), nullptr);
    EXPECT_TRUE(c.GetTable().Get("co").IsNil());
}

TEST(LuaScript, RecordListsReadEachRecordInKeyOrder)
{
    // Records of one shape, others of the same size with other keys, and long strings, at
    // several levels: each table must come out sorted with its own values.
    CLuaScript script;
    ASSERT_TRUE(script.RunString(
        "List = {}\n"
        "for i = 1, 60 do\n"
        "  local r\n"
        "  if i % 3 == 0 then r = { zeta = i, alpha = -i, [2] = 'two', mid = { b = i, a = 0 } }\n"
        "  else r = { name = 'a rather long name ' .. i, id = i, tag = 'x', [true] = i }\n"
        "  end\n"
        "  List[i] = r\n"
        "end"));
    CScriptValue list;
    ASSERT_TRUE(script.GetGlobalTable("List", list));
    ASSERT_EQ(list.GetTable().Count(), 60);
    for (int i = 1; i <= 60; ++i)
    {
        const CScriptTable& record = list.GetTable().Get(i).GetTable();
        if (i % 3 == 0)
        {
            ASSERT_EQ(KeyTexts(record), (std::vector<std::string>{"2", "'alpha'", "'mid'", "'zeta'"})) << i;
            EXPECT_EQ(record.Get("zeta").GetNumber(), i);
            EXPECT_EQ(record.Get("alpha").GetNumber(), -i);
            EXPECT_EQ(KeyTexts(record.Get("mid").GetTable()), (std::vector<std::string>{"'a'", "'b'"}));
            EXPECT_EQ(record.Get("mid").GetTable().Get("b").GetNumber(), i);
        }
        else
        {
            ASSERT_EQ(KeyTexts(record), (std::vector<std::string>{"true", "'id'", "'name'", "'tag'"})) << i;
            EXPECT_EQ(record.Get("name").GetStringView(), "a rather long name " + std::to_string(i));
            EXPECT_EQ(record.Get("id").GetNumber(), i);
            EXPECT_EQ(record.At(0).second.GetNumber(), i);
        }
    }
    // A copy taken out of the tree outlives it.
    CScriptValue copy = list.GetTable().Get(2);
    list.SetNil();
    EXPECT_EQ(copy.GetTable().Get("name").GetStringView(), "a rather long name 2");
}

TEST(LuaScript, NestedTablesRoundTrip)
{
    CScriptValue root;
    CScriptTable& table = root.SetTable();
    table.Set(CScriptValue("name"), CScriptValue(std::string_view("a\0b", 3)));
    table.Set(CScriptValue("flag"), CScriptValue(false));
    table.Set(CScriptValue("ptr"), CScriptValue(reinterpret_cast<void*>(0x5678)));
    CScriptTable list;
    for (int i = 1; i <= 5; ++i)
    {
        list.Set(CScriptValue(i), CScriptValue(i * 1.5));
    }
    CScriptTable inner;
    inner.Set(CScriptValue("list"), CScriptValue(list));
    inner.Set(CScriptValue(true), CScriptValue("yes"));
    inner.Set(CScriptValue(-0.25), CScriptValue(CScriptTable()));
    table.Set(CScriptValue("inner"), CScriptValue(inner));

    CLuaScript first;
    first.PushTable(root.GetTable());
    lua_setfield(first.GetState(), LUA_GLOBALSINDEX, "T");
    ASSERT_TRUE(first.RunString("assert(T.inner.list[4] == 6 and #T.inner.list == 5)\n"
                                "assert(T.name == 'a\\0b' and T.flag == false and T.inner[true] == 'yes')\n"
                                "assert(type(T.ptr) == 'userdata' and next(T.inner[-0.25]) == nil)\n"
                                "T.inner.list[6] = 'six'"));
    CScriptValue back;
    ASSERT_TRUE(first.GetGlobalTable("T", back));
    EXPECT_FALSE(back.Equals(root));
    EXPECT_STREQ(back.GetTable().Get("inner").GetTable().Get("list").GetTable().Get(6).GetString(), "six");

    // Through a second state: what was read is pushed and read again unchanged.
    CLuaScript second;
    second.PushValue(back);
    lua_setfield(second.GetState(), LUA_GLOBALSINDEX, "T");
    CScriptValue again;
    ASSERT_TRUE(second.GetGlobalTable("T", again));
    EXPECT_TRUE(again.Equals(back));
    EXPECT_EQ(again.GetTable().Get("ptr").GetPointer(), reinterpret_cast<void*>(0x5678));
    EXPECT_EQ(lua_gettop(second.GetState()), 0);
}

TEST(LuaScript, CyclesAndVeryDeepTablesReadAsNil)
{
    CLuaScript script;
    ASSERT_TRUE(script.RunString("Loop = { x = 1 } Loop.self = Loop Loop.child = { up = Loop, y = 2 }\n"
                                 "Deep = {} local t = Deep for i = 1, 5000 do t.next = {} t = t.next end"));
    CScriptValue loop;
    ASSERT_TRUE(script.GetGlobalTable("Loop", loop));
    EXPECT_EQ(KeyTexts(loop.GetTable()), (std::vector<std::string>{"'child'", "'self'", "'x'"}));
    EXPECT_TRUE(loop.GetTable().Get("self").IsNil());
    EXPECT_TRUE(loop.GetTable().Get("child").GetTable().Get("up").IsNil());
    EXPECT_EQ(loop.GetTable().Get("child").GetTable().Get("y").GetNumber(), 2.0);

    CScriptValue deep;
    ASSERT_TRUE(script.GetGlobalTable("Deep", deep));
    int iDepth = 0;
    for (const CScriptValue* p = &deep; p->IsTable(); p = &p->GetTable().Get("next"))
    {
        ++iDepth;
    }
    EXPECT_EQ(iDepth, CLuaParamHelper::MAX_TABLE_DEPTH);
    EXPECT_EQ(lua_gettop(script.GetState()), 0);
}

// ---------------------------------------------------------------------------------------
// Files through the file layer: packs and case-insensitive paths

namespace
{
void Put32(std::string& bytes, uint32_t u)
{
    for (int i = 0; i < 4; ++i)
    {
        bytes.push_back(static_cast<char>((u >> (8 * i)) & 0xFF));
    }
}

// A version 106 pack holding one entry, tables/items.lua, written from the file layout.
std::string BuildPack(const std::string& strEntry)
{
    std::string dir;
    Put32(dir, 1); // root: one folder, no files, empty name
    Put32(dir, 0);
    dir.push_back('\0');
    Put32(dir, 0); // "tables": no folders, one file
    Put32(dir, 1);
    dir += std::string("tables") + '\0';
    Put32(dir, 0); // offset, relative to the data
    Put32(dir, static_cast<uint32_t>(strEntry.size()));
    dir += std::string("items.lua") + '\0';

    std::vector<Bytef> packed(compressBound(dir.size()));
    uLongf uPacked = packed.size();
    compress(packed.data(), &uPacked, reinterpret_cast<const Bytef*>(dir.data()), dir.size());

    std::string pack("PAK", 4);
    Put32(pack, 106);
    pack.append(1 + 4 + 8, '\0');
    Put32(pack, 256);
    Put32(pack, 256);
    Put32(pack, static_cast<uint32_t>(dir.size()));
    Put32(pack, static_cast<uint32_t>(uPacked));
    Put32(pack, static_cast<uint32_t>(256 + uPacked));
    Put32(pack, static_cast<uint32_t>(strEntry.size()));
    Put32(pack, static_cast<uint32_t>(256 + uPacked + strEntry.size()));
    pack.resize(256, '\0');
    pack.append(reinterpret_cast<const char*>(packed.data()), uPacked);
    return pack + strEntry;
}
} // namespace

TEST_F(CHookedScript, LuaFileInsideAPackRunsByItsPath)
{
#ifndef EDITOR_HAVE_PACK_SEARCH
    GTEST_SKIP() << "the pack search behind GUtFile (Utils/File) is not in this tree yet";
#endif
    std::filesystem::path folder = TempFolder("lua_pack_test");
    WriteFile(folder / "data.PAK", BuildPack("Items = { sword = { price = 120 }, 'first' }\n"));
    std::string strPath = (folder / "data" / "tables" / "items.lua").string();
    ASSERT_TRUE(m_script.RunFile(strPath.c_str()));
    CScriptValue items;
    ASSERT_TRUE(m_script.GetGlobalTable("Items", items));
    EXPECT_EQ(items.GetTable().Get("sword").GetTable().Get("price").GetNumber(), 120.0);
    EXPECT_STREQ(items.GetTable().Get(1).GetString(), "first");

    // Game paths use back slashes and any case.
    std::string strGamePath = folder.string() + "\\Data\\TABLES\\Items.Lua";
    ASSERT_TRUE(m_script.RunFile(strGamePath.c_str()));
    EXPECT_TRUE(g_hookCalls.empty());
    std::filesystem::remove_all(folder);
}

TEST_F(CHookedScript, LuaFileOnDiskRunsByACaseMismatchedPath)
{
#ifndef EDITOR_HAVE_PACK_SEARCH
    GTEST_SKIP() << "the case-insensitive path layer behind GUtFile is not in this tree yet";
#endif
    std::filesystem::path folder = TempFolder("lua_case_test");
    WriteFile(folder / "Tables" / "Camera.lua", "Camera = { fov = 60 }\n");
    std::string strPath = folder.string() + "\\tables\\CAMERA.LUA";
    ASSERT_TRUE(m_script.RunFile(strPath.c_str()));
    CScriptValue camera;
    ASSERT_TRUE(m_script.GetGlobalTable("Camera", camera));
    EXPECT_EQ(camera.GetTable().Get("fov").GetNumber(), 60.0);
    std::filesystem::remove_all(folder);
}

TEST(LuaScript, LargeTreesReadOnAThreadLeaveNothingBehindWhenItEnds)
{
    // A tree big enough for full-size arena chunks, which the thread keeps for its next read
    // and frees when it ends (the address sanitizer's leak check sees the rest).
    int64_t iCount = 0;
    std::thread reader(
        [&iCount]
        {
            for (int iRound = 0; iRound < 2; ++iRound)
            {
                CLuaScript script;
                ASSERT_TRUE(script.RunString(
                    "Big = {} for i = 1, 40000 do Big[i] = { name = 'entry number ' .. i } end"));
                CScriptValue big;
                ASSERT_TRUE(script.GetGlobalTable("Big", big));
                iCount += big.GetTable().Count();
            }
        });
    reader.join();
    EXPECT_EQ(iCount, 80000);
}
