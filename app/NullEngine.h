// Null stand-ins for the engine objects of Parts not built yet. Each is named after the
// class its Part names, with the prefix CNull, and does what a system without that part
// does: it keeps what it is told (so the start-up and the console can be checked) and draws,
// loads and plays nothing. The application creates and destroys each at its own step of the
// start-up and shut-down orders; the issue that builds a Part replaces its stand-in here.
#pragma once

#include "engine/render_device/RenderDevice.h"
#include "engine/renderer/RendererSettings.h"
#include "engine/renderer/TextureManager.h"

#include <cstdint>
#include <string>
#include <utility>
#include <vector>

namespace Ovrel
{

// Kestrin::Renderer::CTextureManager: named textures by handle, folder redirections, the
// mip levels skipped from now on.
class CNullTextureManager final : public Kestrin::Renderer::CTextureManager
{
public:
    explicit CNullTextureManager(Kestrin::RenderDevice::IRenderDevice* pDevice) : m_pDevice(pDevice) {}
    // No image can be read yet: null for every name.
    Kestrin::Renderer::CTexture* Load(const std::string& strName, bool bAsync) override;
    void Release(Kestrin::Renderer::CTexture* pTexture) override;
    // A texture made on the device: 0 when the device can't make it.
    uint32_t CreateTexture(const Kestrin::RenderDevice::STextureDesc& desc, const char* pcName);
    void ReleaseTexture(uint32_t uHandle);
    void AddRedirection(const std::string& strFrom, const std::string& strTo);
    const std::vector<std::pair<std::string, std::string>>& GetRedirections() const { return m_redirections; }
    void SetSkipMip(int iLevels) { m_iSkipMip = iLevels < 0 ? 0 : iLevels; }
    int GetSkipMip() const { return m_iSkipMip; }
    void Tick() { ++m_iTicks; }
    int GetTicks() const { return m_iTicks; }

private:
    Kestrin::RenderDevice::IRenderDevice* m_pDevice;
    std::vector<std::pair<std::string, std::string>> m_redirections;
    int m_iSkipMip = 0;
    int m_iTicks = 0;
};

// Kestrin::Renderer::CMaterialManager: folder redirections and the per-frame tick.
class CNullMaterialManager
{
public:
    using ErrorCallback = void (*)(const char* pcMaterial, const char* pcText);
    virtual ~CNullMaterialManager() = default;
    // Shown when a material's shader fails to build; null removes it.
    void SetErrorCallback(ErrorCallback pCallback) { m_pErrorCallback = pCallback; }
    ErrorCallback GetErrorCallback() const { return m_pErrorCallback; }
    void AddRedirection(const std::string& strFrom, const std::string& strTo);
    const std::vector<std::pair<std::string, std::string>>& GetRedirections() const { return m_redirections; }
    void Tick() { ++m_iTicks; }

private:
    std::vector<std::pair<std::string, std::string>> m_redirections;
    int m_iTicks = 0;
    ErrorCallback m_pErrorCallback = nullptr;
};

// A manager with only a per-frame tick so far: CLodMeshManager, CDynamicBufferManager,
// CCollisionShapeManager, Kestrin::Character::CResourceManager, CFxCharacterManager,
// CSceneManager. Loading a resource through one gives nothing.
class CNullResourceManager
{
public:
    explicit CNullResourceManager(const char* pcClassName) : m_strClassName(pcClassName) {}
    virtual ~CNullResourceManager() = default;
    const std::string& GetClassName() const { return m_strClassName; }
    // Null: no resource can be loaded without the Part.
    void* Load(const std::string& strName) const;
    void Tick() { ++m_iTicks; }
    int GetTicks() const { return m_iTicks; }

private:
    std::string m_strClassName;
    int m_iTicks = 0;
};

// Kestrin::Fx::CFxManager: the effect folder of characters and the tick.
class CNullFxManager
{
public:
    virtual ~CNullFxManager() = default;
    void SetFolder(const std::string& strFolder) { m_strFolder = strFolder; }
    const std::string& GetFolder() const { return m_strFolder; }
    void Tick() { ++m_iTicks; }

private:
    std::string m_strFolder;
    int m_iTicks = 0;
};

// The shader compiler: its source folder, the shader model (clamped to 2 to 5, with the
// SHADER_VERSION define made again), the preview flag, the cache file.
class CNullShaderCompiler
{
public:
    virtual ~CNullShaderCompiler() = default;
    void SetFolder(const std::string& strFolder) { m_strFolder = strFolder; }
    const std::string& GetFolder() const { return m_strFolder; }
    void SetShaderModel(int iModel);
    int GetShaderModel() const { return m_iShaderModel; }
    const std::string& GetVersionDefine() const { return m_strVersionDefine; }
    void SetPreviewFlag(bool bPreview) { m_bPreview = bPreview; }
    bool GetPreviewFlag() const { return m_bPreview; }
    // False when the cache file is missing: shaders are then built on demand.
    bool LoadCache(const char* pcFile);
    // Writes nothing while no shader was compiled.
    bool SaveCache(const char* pcFile);
    void Release() { m_strLoadedCache.clear(); }

private:
    std::string m_strFolder;
    int m_iShaderModel = 3;
    std::string m_strVersionDefine = "SHADER_VERSION=3";
    bool m_bPreview = true;
    std::string m_strLoadedCache;
};

// Kestrin::Renderer::CRenderer: render mode 0 to 2 (a new value marks the pipeline for
// rebuilding), the settings table (it knows no word yet), the two render buffers, and the
// environment's settings of the frame (kept, drawn with nothing).
class CNullRenderer final : public Kestrin::Renderer::IRendererSettings
{
public:
    CNullRenderer() = default;
    ~CNullRenderer() override = default;
    void SetEnvironment(const Kestrin::Renderer::CRenderEnvironment& environment) override
    {
        m_environment = environment;
        ++m_iEnvironmentPushes;
    }
    const Kestrin::Renderer::CRenderEnvironment& GetEnvironment() const { return m_environment; }
    int GetEnvironmentPushes() const { return m_iEnvironmentPushes; }
    void SetRenderMode(int iMode);
    int GetRenderMode() const { return m_iRenderMode; }
    bool IsPipelineDirty() const { return m_bPipelineDirty; }
    void ApplySettings() { m_bPipelineDirty = false; }
    void ClearStartupFlag() { m_bStartup = false; }
    bool IsStartup() const { return m_bStartup; }
    void SetTime(float fTime) { m_fTime = fTime; }
    // The bare "word value" settings form; false: the word is not a setting.
    bool ExecuteCommand(const char* pcLine) const;
    // Gathers a view of the given size into the back render buffer.
    void GatherView(int32_t iWidth, int32_t iHeight, float fLodFactor, uint32_t uVisibleLow,
                    uint32_t uVisibleHigh);
    void SwapRenderBuffers() { std::swap(m_iFrontBuffer, m_iBackBuffer); }
    void DrawRenderBuffer() { ++m_iDraws; }
    bool DrawsToOwnTargets() const { return false; }
    int GetDraws() const { return m_iDraws; }
    int GetGathered() const { return m_iGathered; }

private:
    int m_iRenderMode = 0;
    bool m_bPipelineDirty = true;
    bool m_bStartup = true;
    float m_fTime = 0.0f;
    int m_iFrontBuffer = 0;
    int m_iBackBuffer = 1;
    int m_iGathered = 0;
    int m_iDraws = 0;
    Kestrin::Renderer::CRenderEnvironment m_environment;
    int m_iEnvironmentPushes = 0;
};

// The 3D plotters (immediate and buffered): lines queued and flushed once a frame.
class CNullPlotter3D
{
public:
    virtual ~CNullPlotter3D() = default;
    bool Initialize(Kestrin::RenderDevice::IRenderDevice* pDevice) { return pDevice != nullptr; }
    void Flush() { ++m_iFlushes; }
    int GetFlushes() const { return m_iFlushes; }

private:
    int m_iFlushes = 0;
};

// The lens flare: six sprite names, the fx folder; drawn from the camera transform.
class CNullLensFlare
{
public:
    CNullLensFlare(const std::string& strFxPath);
    virtual ~CNullLensFlare() = default;
    const std::vector<std::string>& GetSpriteNames() const { return m_spriteNames; }
    void Update() { ++m_iUpdates; }

private:
    std::string m_strFxPath;
    std::vector<std::string> m_spriteNames;
    int m_iUpdates = 0;
};

// The material preview's two shapes, "../data/model/default/Box" and
// "../data/model/default/qiu"; the shape index starts at 1. Without a mesh manager neither
// loads, and the preview stays empty.
class CNullMaterialPreview
{
public:
    static constexpr const char* BOX = "../data/model/default/Box";
    static constexpr const char* SPHERE = "../data/model/default/qiu";
    virtual ~CNullMaterialPreview() = default;
    bool LoadShapes(const CNullResourceManager& meshes);
    bool IsEmpty() const { return !m_bLoaded; }
    int GetShapeIndex() const { return m_iShapeIndex; }

private:
    bool m_bLoaded = false;
    int m_iShapeIndex = 1;
};

// The animators of the environment ("EnvironmentAnimation.lua") and of scripted lights
// ("%s_la_%d.lua"), and the game tables: they read their files when those Parts are built.
class CNullAnimator
{
public:
    explicit CNullAnimator(const char* pcClassName) : m_strClassName(pcClassName) {}
    virtual ~CNullAnimator() = default;
    void Update(float fTimeStep) { m_fTime += fTimeStep; }
    // Starts an animation by name; false: unknown.
    bool Activate(const std::string& strName) const;
    void SetCurrent(int iIndex) { m_iCurrent = iIndex; }
    int GetCurrent() const { return m_iCurrent; }

private:
    std::string m_strClassName;
    float m_fTime = 0.0f;
    int m_iCurrent = 0;
};

} // namespace Ovrel
