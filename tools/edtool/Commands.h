// The command groups of edtool. Each group is a function taking the arguments after its
// name (argv[0] is the group name) and returning the process exit status.
#pragma once

struct EdToolCommand
{
    const char* pcName;
    const char* pcUsage; // one or more lines, each "edtool <name> ..."
    int (*pMain)(int argc, char** argv);
};
