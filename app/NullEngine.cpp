#include "app/NullEngine.h"

#include <algorithm>
#include <cstdio>

namespace Ovrel
{

Kestrin::Renderer::CTexture* CNullTextureManager::Load(const std::string& strName, bool bAsync)
{
    (void)strName, (void)bAsync;
    return nullptr;
}

void CNullTextureManager::Release(Kestrin::Renderer::CTexture* pTexture)
{
    (void)pTexture;
}

uint32_t CNullTextureManager::CreateTexture(const Kestrin::RenderDevice::STextureDesc& desc,
                                            const char* pcName)
{
    return m_pDevice ? m_pDevice->CreateTexture(desc, pcName) : 0;
}

void CNullTextureManager::ReleaseTexture(uint32_t uHandle)
{
    if (m_pDevice)
    {
        m_pDevice->ReleaseTexture(uHandle);
    }
}

void CNullTextureManager::AddRedirection(const std::string& strFrom, const std::string& strTo)
{
    m_redirections.emplace_back(strFrom, strTo);
}

void CNullMaterialManager::AddRedirection(const std::string& strFrom, const std::string& strTo)
{
    m_redirections.emplace_back(strFrom, strTo);
}

void* CNullResourceManager::Load(const std::string& strName) const
{
    (void)strName;
    return nullptr;
}

void CNullShaderCompiler::SetShaderModel(int iModel)
{
    m_iShaderModel = std::clamp(iModel, 2, 5);
    m_strVersionDefine = "SHADER_VERSION=" + std::to_string(m_iShaderModel);
}

bool CNullShaderCompiler::LoadCache(const char* pcFile)
{
    FILE* pFile = fopen(pcFile, "rb");
    if (!pFile)
    {
        return false;
    }
    fclose(pFile);
    m_strLoadedCache = pcFile;
    return true;
}

bool CNullShaderCompiler::SaveCache(const char* pcFile)
{
    (void)pcFile; // no shader was compiled, so the file on disk stays as it is
    return true;
}

void CNullRenderer::SetRenderMode(int iMode)
{
    if (iMode < 0 || iMode > 2)
    {
        return;
    }
    if (iMode != m_iRenderMode)
    {
        m_iRenderMode = iMode;
        m_bPipelineDirty = true;
    }
}

bool CNullRenderer::ExecuteCommand(const char* pcLine) const
{
    (void)pcLine;
    return false;
}

void CNullRenderer::GatherView(int32_t iWidth, int32_t iHeight, float fLodFactor, uint32_t uVisibleLow,
                               uint32_t uVisibleHigh)
{
    (void)iWidth, (void)iHeight, (void)fLodFactor, (void)uVisibleLow, (void)uVisibleHigh;
    ++m_iGathered;
}

CNullLensFlare::CNullLensFlare(const std::string& strFxPath) : m_strFxPath(strFxPath)
{
    for (int i = 0; i < 6; ++i)
    {
        m_spriteNames.push_back("fx_lenseflare" + std::to_string(i));
    }
}

bool CNullMaterialPreview::LoadShapes(const CNullResourceManager& meshes)
{
    m_bLoaded = meshes.Load(BOX) != nullptr && meshes.Load(SPHERE) != nullptr;
    return m_bLoaded;
}

bool CNullAnimator::Activate(const std::string& strName) const
{
    (void)strName;
    return false;
}

} // namespace Ovrel
