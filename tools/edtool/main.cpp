// edtool: the batch operations of the suite, one command group per file format.
#include "tools/edtool/Commands.h"

#include <cstdio>
#include <cstring>

namespace
{
const EdToolCommand g_aCommands[] = {
    {"scene", SCENE_USAGE, &SceneMain},
    {"dae", DAE_USAGE, &DaeMain},
    {"pak", PAK_USAGE, &PakMain},
    {nullptr, nullptr, nullptr},
};

int Usage()
{
    fprintf(stderr, "usage:\n");
    for (const EdToolCommand& cmd : g_aCommands)
    {
        if (cmd.pcName)
        {
            fprintf(stderr, "%s\n", cmd.pcUsage);
        }
    }
    return 2;
}
} // namespace

int main(int argc, char** argv)
{
    if (argc < 2)
    {
        return Usage();
    }
    for (const EdToolCommand& cmd : g_aCommands)
    {
        if (cmd.pcName && strcmp(cmd.pcName, argv[1]) == 0)
        {
            return cmd.pMain(argc - 1, argv + 1);
        }
    }
    fprintf(stderr, "edtool: unknown command \"%s\"\n", argv[1]);
    return Usage();
}
