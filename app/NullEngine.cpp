#include "app/NullEngine.h"

#include <algorithm>
#include <cmath>
#include <cstdio>

namespace Ovrel
{

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

bool CNullAudioDevice::Initialize(const std::string& strSettingsFile,
                                  const std::vector<std::pair<std::string, float>>& rpcs)
{
    m_calls.push_back("Initialize " + strSettingsFile + " " + std::to_string(rpcs.size()));
    return true;
}

bool CNullAudioDevice::LoadWaveBank(const std::string& strPath, int iFlags, int iIndex)
{
    m_calls.push_back("LoadWaveBank " + strPath + " " + std::to_string(iFlags) + " " +
                      std::to_string(iIndex));
    return true;
}

bool CNullAudioDevice::LoadSoundBank(const std::string& strPath, int iIndex)
{
    m_calls.push_back("LoadSoundBank " + strPath + " " + std::to_string(iIndex));
    return true;
}

void CNullAudioDevice::SetCategoryVolume(const std::string& strCategory, float fVolume)
{
    char acVolume[32];
    snprintf(acVolume, sizeof(acVolume), "%.2f", fVolume);
    m_calls.push_back("SetCategoryVolume " + strCategory + " " + acVolume);
}

void CNullAudioDevice::SetListener(float fX, float fY, float fZ, float fDirX, float fDirY, float fDirZ)
{
    (void)fX, (void)fY, (void)fZ, (void)fDirX, (void)fDirY, (void)fDirZ;
}

bool CNullAudioDevice::PlayCue(const std::string& strCue, bool bPlaced, float fX, float fY, float fZ)
{
    (void)strCue, (void)bPlaced, (void)fX, (void)fY, (void)fZ;
    return false; // no sound banks: every cue is unknown
}

void CNullRenderWorld::InitGrid(float fMinX, float fMinY, float fMaxX, float fMaxY, float fCellX,
                                float fCellY)
{
    m_iCellsX = fCellX > 0.0f ? static_cast<int>(std::ceil((fMaxX - fMinX) / fCellX)) : 0;
    m_iCellsY = fCellY > 0.0f ? static_cast<int>(std::ceil((fMaxY - fMinY) / fCellY)) : 0;
}

void CNullScene::SetPaths(const std::string& strFx, const std::string& strCharacter,
                          const std::string& strModel)
{
    m_strFxPath = strFx;
    m_strCharacterPath = strCharacter;
    m_strModelPath = strModel;
}

} // namespace Ovrel
