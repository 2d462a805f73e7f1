// The command groups of edtool. Each group is a function taking the arguments after its
// name (argv[0] is the group name) and returning the process exit status.
#pragma once

struct EdToolCommand
{
    const char* pcName;
    const char* pcUsage; // one or more lines, each "edtool <name> ..."
    int (*pMain)(int argc, char** argv);
};

// edtool pak (PakCommand.cpp).
inline constexpr const char* PAK_USAGE = "edtool pak list FILE.PAK\nedtool pak extract FILE.PAK DIR\n"
                                         "edtool pak create FILE.PAK DIR\nedtool pak check FILE.PAK";
int PakMain(int argc, char** argv);
