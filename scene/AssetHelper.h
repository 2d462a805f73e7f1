// Ovrel::CAssetHelper: gathers the asset files that a save carries beside a scene (textures,
// materials, meshes, collision shapes, characters) and has them written into one folder by
// the managers that hold them, through IAssetStore.
#pragma once

#include "scene/SceneEntity.h"

#include <cstdint>
#include <string>
#include <vector>

namespace Ovrel
{

// The asset kinds, as the "Save Assets Option" flags name them.
enum : int32_t
{
    ASSET_TEXTURE = 1,    // "Texture (*.dds)"
    ASSET_MATERIAL = 2,   // "Material (*.mal)"
    ASSET_MESH = 4,       // "Mesh (*.mesh)"
    ASSET_COLLISION = 8,  // "Collision (*.col)"
    ASSET_CHARACTER = 16, // no check box: only the all-kinds call saves it
    ASSET_ALL = -1,
};

// The managers that hold assets in memory and can write them out. The application provides
// one over its texture, material, mesh, collision and character managers; a scene without
// one (the batch tools, headless tests) writes its scene files alone.
class IAssetStore
{
public:
    virtual ~IAssetStore() = default;
    IAssetStore(const IAssetStore&) = delete;
    IAssetStore& operator=(const IAssetStore&) = delete;

    // Writes the asset of that kind, named by its data path, under strFolder (empty: in
    // place, where it was loaded from). False when the asset is not held or the write failed.
    virtual bool SaveAsset(int32_t iKind, const std::string& strName, const std::string& strFolder) = 0;
    // Reports what the asset needs in turn (a mesh its materials, a material its textures)
    // to the collector. Unknown assets report nothing.
    virtual void CollectDependencies(int32_t iKind, const std::string& strName,
                                     IAssetCollector& collector) = 0;

protected:
    IAssetStore() = default;
};

class CAssetHelper final : public IAssetCollector
{
public:
    // Assets are written under strFolder by pStore; a null store writes nothing.
    CAssetHelper(const std::string& strFolder, IAssetStore* pStore);

    void AddMesh(const std::string& strName) override { Add(ASSET_MESH, strName); }
    void AddCollisionShape(const std::string& strName) override { Add(ASSET_COLLISION, strName); }
    void AddCharacter(const std::string& strName) override { Add(ASSET_CHARACTER, strName); }
    void AddTexture(const std::string& strName) { Add(ASSET_TEXTURE, strName); }
    void AddMaterial(const std::string& strName) { Add(ASSET_MATERIAL, strName); }
    // Once per name and kind, names compared without regard to case (data paths are
    // case-insensitive); empty names are ignored.
    void Add(int32_t iKind, const std::string& strName);

    // Completes the list with what each asset needs, then writes every asset whose kind is
    // in iFlags (ASSET_ALL: every kind), kinds in flag order, names in the order added. True
    // when every write succeeded; every asset is tried either way.
    bool Save(int32_t iFlags);

    struct CAsset
    {
        int32_t iKind;
        std::string strName;
    };
    const std::vector<CAsset>& GetAssets() const { return m_assets; }
    const std::string& GetFolder() const { return m_strFolder; }

private:
    bool Contains(int32_t iKind, const std::string& strName) const;

    std::string m_strFolder;
    IAssetStore* m_pStore;
    std::vector<CAsset> m_assets;
};

} // namespace Ovrel
