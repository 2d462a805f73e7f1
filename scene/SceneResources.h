// What a scene tells the resource managers while it reads: the folders its resource names
// resolve against, and whether items already held are read again. The application gives a
// scene an implementation over its managers; a scene without one (tools, tests) passes names
// on as they are.
#pragma once

#include <cstdint>
#include <string>

namespace Ovrel
{

// The folders of one scene read. Each ends in a separator or is empty.
struct CSceneFolders
{
    std::string strFolder;      // textures, materials, meshes, collision shapes
    std::string strFxFolder;    // effects
    std::string strAssetFolder; // the asset helper's paths
    std::string strModelFolder; // game-object meshes
    uint8_t uReload = 0;        // the force flag of every scope
};

class ISceneResourceScopes
{
public:
    virtual ~ISceneResourceScopes() = default;
    ISceneResourceScopes(const ISceneResourceScopes&) = delete;
    ISceneResourceScopes& operator=(const ISceneResourceScopes&) = delete;

    // Opens one path scope per manager: until EndScopes, relative names of textures,
    // materials, meshes and collision shapes resolve against strFolder, effects against
    // strFxFolder, the asset helper against strAssetFolder; uReload forces them to be read
    // again. Scopes do not nest.
    virtual void BeginScopes(const CSceneFolders& folders) = 0;
    virtual void EndScopes() = 0;
    // The texture, mesh and collision caches read items they already hold again while set
    // (an import with its force-reload flag), and keep them otherwise.
    virtual void SetReloadExisting(bool bReload) = 0;

protected:
    ISceneResourceScopes() = default;
};

} // namespace Ovrel
