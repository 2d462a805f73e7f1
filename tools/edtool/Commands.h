// The command groups of edtool. Each group is a function taking the arguments after its
// name (argv[0] is the group name) and returning the process exit status.
#pragma once

struct EdToolCommand
{
    const char* pcName;
    const char* pcUsage; // one or more lines, each "edtool <name> ..."
    int (*pMain)(int argc, char** argv);
};

// edtool scene: .scene and .prop files (tools/edtool/Scene.cpp).
constexpr const char* SCENE_USAGE =
    "edtool scene dump FILE          print a .scene or .prop file as JSON\n"
    "edtool scene resave IN OUT      read and write again through the scene code\n"
    "edtool scene check FILE         report problems; non-zero on an unreadable file\n"
    "edtool scene open FILE          open through the scene, at once and through the loader: counts and "
    "times\n"
    "edtool scene import SCENE IN OUT  import IN (.dae or .scene) into SCENE as a group, save as OUT";
int SceneMain(int argc, char** argv);

// edtool dae: Collada documents (tools/edtool/Dae.cpp).
constexpr const char* DAE_USAGE =
    "edtool dae info FILE            print nodes, meshes, materials, lights, cameras, skins, animations\n"
    "edtool dae resave IN OUT        read and write again through the Collada code";
int DaeMain(int argc, char** argv);

// edtool pak (PakCommand.cpp).
inline constexpr const char* PAK_USAGE = "edtool pak list FILE.PAK\nedtool pak extract FILE.PAK DIR\n"
                                         "edtool pak create FILE.PAK DIR\nedtool pak check FILE.PAK";
int PakMain(int argc, char** argv);
