// CEditorApp::ShutDown: everything destroyed in the fixed order; each step is skipped when
// its object is null, so a failed start-up shuts down what it made.
#include "app/EditorApp.h"

#include "app/AppOutput.h"
#include "app/AppServices.h"
#include "app/AppThreadRenderer.h"
#include "app/EditorManager.h"
#include "app/InputDevice.h"
#include "app/NullEngine.h"
#include "character_editor/CharacterEditor.h"
#include "editor_common/ControlState.h"
#include "editor_common/EditorCamera.h"
#include "editor_common/EditorConfig.h"
#include "engine/audio/AudioDevice.h"
#include "engine/ext/Console.h"
#include "engine/ext/Plotter2D.h"
#include "engine/fx/FxPlayer.h"
#include "engine/physics/PhysicsWorld.h"
#include "engine/render_device/RenderDevice.h"
#include "engine/renderer/RenderWorld.h"
#include "engine/utility/SystemOutput.h"
#include "fx_editor/FxEditor.h"
#include "material_editor/MaterialEditor.h"
#include "scene/EnvironmentAnimator.h"
#include "scene/Scene.h"
#include "scene/SceneManager.h"
#include "scene_editor/SceneEditor.h"

namespace Ovrel
{

namespace
{
// Destroys an owned object and nulls its pointer; tells the trace when there was one.
template <typename T>
bool Destroy(T*& pObject)
{
    if (!pObject)
    {
        return false;
    }
    delete pObject;
    pObject = nullptr;
    return true;
}
} // namespace

void CEditorApp::ShutDown()
{
    if (m_bShutDown)
    {
        return;
    }
    m_bShutDown = true;

    if (!m_windowSwapChains.empty()) // 1
    {
        _Trace("shutdown 1 swap chains");
        for (const auto& chain : m_windowSwapChains)
        {
            m_pRenderDevice->ReleaseTexture(chain.second);
        }
        m_windowSwapChains.clear();
    }
    if (m_pThreadRenderer) // 2
    {
        _Trace("shutdown 2 CAppThreadRenderer");
        m_pThreadRenderer->Stop();
        Destroy(m_pThreadRenderer);
    }
    if (m_pRenderDevice) // 3: locked until the device is released
    {
        m_pRenderDevice->Lock();
    }
    _DestroyScript();
    if (Destroy(m_pControlState))
    {
        _Trace("shutdown 3 control state");
    }
    _SaveAndDestroyEditors(); // 4
    _DestroyWorld();          // 5, 6
    if (m_pMaterialManager)   // 7
    {
        m_pMaterialManager->SetErrorCallback(nullptr);
    }
    if (m_pSystemOutput)
    {
        _Trace("shutdown 7 system output");
        Kestrin::Utility::SetSystemOutput(nullptr);
        Destroy(m_pSystemOutput);
    }
    if (m_pConsoleCallback) // 8
    {
        _Trace("shutdown 8 CAppConsoleCallback");
        Destroy(m_pConsoleCallback);
        if (m_pConsole)
        {
            m_pConsole->SetCallback(nullptr);
        }
    }
    if (Destroy(m_pConsole))
    {
        _Trace("shutdown 8 CConsole");
    }
    _DestroyRendering();                 // 9 to 11
    _DestroyManagers();                  // 12, 13
    if (Destroy(m_pEnvironmentAnimator)) // 14
    {
        _Trace("shutdown 14 environment animator");
    }
    m_pWindow = nullptr;
}

void CEditorApp::_SaveAndDestroyEditors()
{
    // A start-up that never reached the editors leaves Editor.cfg as it was: its sections
    // would be lost otherwise.
    if (!m_pEditorManager)
    {
        return;
    }
    _Trace("shutdown 4 MainWindow");
    CEditorConfig config;
    config.CreateSection("MainWindow");
    config.WriteInt("X", m_iWindowX);
    config.WriteInt("Y", m_iWindowY);
    config.WriteInt("W", m_iWindowW);
    config.WriteInt("H", m_iWindowH);
    config.LeaveSection();
    if (m_pCharacterEditor)
    {
        _Trace("shutdown 4 CCharacterEditor");
        m_pCharacterEditor->Close();
        m_pCharacterEditor->SaveConfig(config);
        Destroy(m_pCharacterEditor);
    }
    if (m_pMaterialEditor)
    {
        _Trace("shutdown 4 CMaterialEditor");
        m_pMaterialEditor->Close();
        m_pMaterialEditor->SaveConfig(config);
        Destroy(m_pMaterialEditor);
    }
    if (Destroy(m_pLensFlare))
    {
        _Trace("shutdown 4 lens flare");
    }
    if (m_pSceneEditor)
    {
        _Trace("shutdown 4 CSceneEditor");
        m_pSceneEditor->Close();
        m_pSceneEditor->SaveConfig(config);
        Destroy(m_pSceneEditor);
    }
    if (m_pFxEditor)
    {
        _Trace("shutdown 4 CFxEditor");
        m_pFxEditor->Close();
        m_pFxEditor->SaveConfig(config);
        Destroy(m_pFxEditor);
    }
    Destroy(m_pEditorManager);
    _Trace("shutdown 4 save %s", CONFIG_FILE);
    config.Save(CONFIG_FILE); // a failed save reports nothing
}

void CEditorApp::_DestroyWorld()
{
    if (Destroy(m_pEditorCamera))
    {
        _Trace("shutdown 5 CEditorCamera");
    }
    if (Destroy(m_apScenes[0]))
    {
        _Trace("shutdown 5 scene 0");
    }
    if (Destroy(m_apScenes[1]))
    {
        _Trace("shutdown 5 scene 1");
    }
    if (m_pSceneManager)
    {
        // Its scenes hold objects of the worlds below and tasks of the loader: they go now,
        // the manager itself at its own step.
        m_pSceneManager->UnloadAll();
    }
    if (Destroy(m_pFxPlayer))
    {
        _Trace("shutdown 5 CFxPlayer");
    }
    if (Destroy(m_apPhysicsWorlds[0]))
    {
        _Trace("shutdown 5 physics world 0");
    }
    if (Destroy(m_apPhysicsWorlds[1]))
    {
        _Trace("shutdown 5 physics world 1");
    }
    if (Destroy(m_pRenderWorld))
    {
        _Trace("shutdown 5 CRenderWorld");
    }
    if (_DestroyLoader())
    {
        _Trace("shutdown 6 CAsyncLoader");
    }
    if (m_pPhysicsSdk)
    {
        _Trace("shutdown 6 CPhysicsSdk");
        m_pPhysicsSdk->Shutdown();
        Destroy(m_pPhysicsSdk);
    }
}

void CEditorApp::_DestroyRendering()
{
    if (Destroy(m_pPlotter3D)) // 9
    {
        _Trace("shutdown 9 CPlotter3D");
    }
    if (Destroy(m_pBufferedPlotter3D))
    {
        _Trace("shutdown 9 CBufferedPlotter3D");
    }
    if (Destroy(m_pPlotter2D))
    {
        _Trace("shutdown 9 CPlotter2D");
    }
    if (Destroy(m_pFont))
    {
        _Trace("shutdown 9 CTextureFont");
    }
    if (Destroy(m_pRenderer))
    {
        _Trace("shutdown 9 CRenderer");
    }
    if (Destroy(m_pScriptedLightAnimator)) // 10
    {
        _Trace("shutdown 10 scripted light animator");
    }
    if (Destroy(m_pSceneManager))
    {
        _Trace("shutdown 10 CSceneManager");
    }
    if (Destroy(m_pFxCharacterManager))
    {
        _Trace("shutdown 10 CFxCharacterManager");
    }
    if (Destroy(m_pCharacterResourceManager))
    {
        _Trace("shutdown 10 CResourceManager");
    }
    if (Destroy(m_pFxManager))
    {
        _Trace("shutdown 10 CFxManager");
    }
    if (Destroy(m_pMaterialPreview)) // 11
    {
        _Trace("shutdown 11 material preview");
    }
}

void CEditorApp::_DestroyManagers()
{
    if (Destroy(m_pLodMeshManager)) // 12
    {
        _Trace("shutdown 12 CLodMeshManager");
    }
    if (Destroy(m_pDynamicBufferManager))
    {
        _Trace("shutdown 12 CDynamicBufferManager");
    }
    if (Destroy(m_pMaterialManager))
    {
        _Trace("shutdown 12 CMaterialManager");
    }
    if (m_pTextureManager)
    {
        m_pTextureManager->ReleaseTexture(m_uUiEffectTexture);
        m_uUiEffectTexture = 0;
        for (uint32_t& uFace : m_auCubemapFaces)
        {
            m_pTextureManager->ReleaseTexture(uFace);
            uFace = 0;
        }
        _Trace("shutdown 12 CTextureManager");
        Destroy(m_pTextureManager);
    }
    if (Destroy(m_pCollisionShapeManager))
    {
        _Trace("shutdown 12 CCollisionShapeManager");
    }
    if (m_pInputDevice)
    {
        _Trace("shutdown 12 input device");
        m_pInputDevice->Shutdown();
        Destroy(m_pInputDevice);
    }
    if (m_pAudioDevice)
    {
        _Trace("shutdown 12 audio device");
        m_pAudioDevice->DestroyAudio(m_pConsoleSound);
        m_pConsoleSound = nullptr;
        Destroy(m_pAudioDevice);
    }
    if (m_pShaderCompiler) // 13
    {
        _Trace("shutdown 13 save %s", SHADER_CACHE);
        m_pShaderCompiler->SaveCache(SHADER_CACHE);
        m_pShaderCompiler->Release();
        Destroy(m_pShaderCompiler);
    }
    if (m_pRenderDevice)
    {
        _Trace("shutdown 13 render device");
        m_pRenderDevice->Unlock();
        Kestrin::RenderDevice::SetRenderDevice(nullptr); // the accessor falls back to the null device
        m_pFactory->DestroyRenderDevice(m_pRenderDevice);
        m_pRenderDevice = nullptr;
    }
}

} // namespace Ovrel
