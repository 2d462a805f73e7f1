// The console's commands: global Lua functions registered in the application's Lua state at
// start-up. Each finds the application through its global accessor. Commands whose subsystem
// is not built yet are registered all the same and print one line saying so.
#pragma once

namespace GLib::Script
{
class CLuaScript;
}

namespace Ovrel
{

// Registers every command (and replaces Lua's own print) in the state.
void RegisterConsoleCommands(GLib::Script::CLuaScript& script);

// The application's global Lua error hook: the text with "%s\n" on the system output, at
// level 0 while the console is open for input (a line on the console), else at level 1 (a box).
void OnLuaError(GLib::Script::CLuaScript* pScript, int iCode, const char* pcText);

} // namespace Ovrel
