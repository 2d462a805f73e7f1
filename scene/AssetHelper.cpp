#include "scene/AssetHelper.h"

#include <strings.h>

namespace Ovrel
{

CAssetHelper::CAssetHelper(const std::string& strFolder, IAssetStore* pStore)
    : m_strFolder(strFolder), m_pStore(pStore)
{
}

bool CAssetHelper::Contains(int32_t iKind, const std::string& strName) const
{
    for (const CAsset& asset : m_assets)
    {
        if (asset.iKind == iKind && strcasecmp(asset.strName.c_str(), strName.c_str()) == 0)
        {
            return true;
        }
    }
    return false;
}

void CAssetHelper::Add(int32_t iKind, const std::string& strName)
{
    if (!strName.empty() && !Contains(iKind, strName))
    {
        m_assets.push_back({iKind, strName});
    }
}

bool CAssetHelper::Save(int32_t iFlags)
{
    if (!m_pStore)
    {
        return true;
    }
    // The list grows while it is walked: dependencies of dependencies are met in turn.
    for (size_t i = 0; i < m_assets.size(); ++i)
    {
        CAsset asset = m_assets[i];
        m_pStore->CollectDependencies(asset.iKind, asset.strName, *this);
    }
    bool bOk = true;
    for (int32_t iKind : {ASSET_TEXTURE, ASSET_MATERIAL, ASSET_MESH, ASSET_COLLISION, ASSET_CHARACTER})
    {
        bool bWanted = iFlags == ASSET_ALL || (iKind != ASSET_CHARACTER && (iFlags & iKind) != 0);
        if (!bWanted)
        {
            continue;
        }
        for (const CAsset& asset : m_assets)
        {
            if (asset.iKind == iKind)
            {
                bOk = m_pStore->SaveAsset(iKind, asset.strName, m_strFolder) && bOk;
            }
        }
    }
    return bOk;
}

} // namespace Ovrel
