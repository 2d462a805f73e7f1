// CEditorApp: the frame loop and the parts of a frame that CAppThreadRenderer runs.
#include "app/EditorApp.h"

#include "Utils/Utility/GUtTimer.h"
#include "app/AppThreadRenderer.h"
#include "app/EditorManager.h"
#include "app/FrameTiming.h"
#include "app/InputDevice.h"
#include "app/NullEngine.h"
#include "editor_common/ControlState.h"
#include "editor_common/EditorCamera.h"
#include "engine/audio/AudioDevice.h"
#include "engine/ext/Console.h"
#include "engine/ext/Plotter2D.h"
#include "engine/fx/FxPlayer.h"
#include "engine/physics/PhysicsWorld.h"
#include "engine/render_device/RenderDevice.h"
#include "engine/renderer/RenderWorld.h"
#include "engine/utility/AsyncLoader.h"
#include "engine/utility/FrameProfiler.h"
#include "fx_editor/FxEditor.h"
#include "scene/EnvironmentAnimator.h"
#include "scene/Scene.h"
#include "scene/SceneManager.h"
#include "scene_editor/SceneEditor.h"

#include <chrono>
#include <cstdio>
#include <thread>

namespace Ovrel
{

namespace
{
void SleepMilliseconds(int iMilliseconds)
{
    std::this_thread::sleep_for(std::chrono::milliseconds(iMilliseconds));
}

} // namespace

// ---------------------------------------------------------------------------------------
// The loop

void CEditorApp::StartLoop()
{
    if (m_pEditorManager)
    {
        m_pEditorManager->EditScene();
    }
    m_timing.Start(GUtGetClock().NowMilliseconds());
    Kestrin::Utility::CFrameProfiler::Get().ResetFrame();
}

void CEditorApp::Run()
{
    StartLoop();
    while (!m_bQuitRequested)
    {
        if (!RunFrame())
        {
            break;
        }
    }
    if (m_pWindow)
    {
        m_pWindow->PumpMessages(-1.0); // once more, until the queue is empty
    }
}

bool CEditorApp::RunFrame()
{
    if (!m_pThreadRenderer) // not started, or shut down already
    {
        return false;
    }
    const double dNow = GUtGetClock().NowMilliseconds();
    const float fStep = m_timing.Step(dNow, m_bSmoothTimer); // 1 to 4
    ++m_iFrame;
    if (m_pWindow) // 5
    {
        m_pWindow->PumpMessages(PUMP_LIMIT_MS);
    }
    if (m_bQuitRequested || !m_pWindow || !m_pWindow->Exists()) // 6
    {
        return false;
    }
    const float fScaled = m_fTimeScale * fStep; // 7
    _UpdateInput(fScaled);                      // 8
    _UpdateWorld(fScaled);                      // 9
    if (m_pAudioDevice)                         // 10
    {
        Kestrin::Audio::CAudioListener listener;
        listener.vPosition = m_pEditorCamera->GetPosition();
        listener.vForward = m_pEditorCamera->GetMatrix().Row(2);
        m_pAudioDevice->Update(listener, fStep);
    }
    m_pThreadRenderer->BuildFrame(); // 11
    m_pRenderDevice->Lock();         // 12
    m_pRenderWorld->Tick();
    m_pTextureManager->Tick();
    m_pMaterialManager->Tick();
    m_pLodMeshManager->Tick();
    m_pFxManager->Tick();
    if (m_pAsyncLoader)
    {
        m_pAsyncLoader->Tick(3);
    }
    m_pRenderDevice->Unlock();
    _RecordProfile();                 // 13
    m_pThreadRenderer->FinishFrame(); // 14
    _LimitFrameRate(dNow);            // 15
    if (m_frameHook)
    {
        m_frameHook(*this);
    }
    return !m_bQuitRequested;
}

void CEditorApp::_UpdateInput(float fScaled)
{
    m_pInputDevice->Update(fScaled);
    const bool bConsoleOpen = m_pConsole && m_pConsole->GetState() == Kestrin::Ext::CConsole::STATE_INPUT;
    if (FillControlState(*m_pInputDevice, m_iClientW, m_iClientH, bConsoleOpen, *m_pControlState))
    {
        RequestQuit(0); // game-pad buttons 7, 4 and 5 together
    }
}

void CEditorApp::_UpdateWorld(float fScaled)
{
    KESTRIN_PROFILE_SCOPE("Update");
    m_pFxEditor->Tick(fScaled);
    m_apPhysicsWorlds[0]->Step(fScaled);
    m_apPhysicsWorlds[0]->Fetch();
    m_apPhysicsWorlds[1]->Step(fScaled);
    m_pEnvironmentAnimator->Update(fScaled);
    static const uint16_t s_uSceneRegion = Kestrin::Utility::CFrameProfiler::Get().RegisterRegion("Scene");
    for (CScene* pScene : m_apScenes) // both scenes count in the one region "Scene"
    {
        Kestrin::Utility::CProfileScope scope(s_uSceneRegion);
        pScene->Update(m_timing.fGameTime, fScaled);
    }
    m_pSceneManager->Update(m_timing.fGameTime, fScaled);
    m_pEditorCamera->Update(fScaled, *m_pControlState);
    m_pLensFlare->Update();
    {
        KESTRIN_PROFILE_SCOPE("Fx");
        m_pFxPlayer->SetCamera(m_pEditorCamera->GetMatrix(), m_pEditorCamera->GetPosition());
        m_pFxPlayer->Update(fScaled);
    }
    _RunStartupLines();
    m_pConsole->Tick(fScaled);
}

void CEditorApp::_RunStartupLines()
{
    const auto range = m_startupLines.equal_range(m_iFrame);
    for (auto it = range.first; it != range.second; ++it)
    {
        m_pConsole->Print(Kestrin::Ext::CConsole::WHITE, (it->second + "\n").c_str());
        ExecuteConsoleLine(it->second.c_str());
    }
}

void CEditorApp::_LimitFrameRate(double dFrameStartMs)
{
    const bool bMinimised = m_pWindow->IsMinimised();
    const bool bInFront = m_pWindow->IsActive() && m_pWindow->IsForeground();
    const int iSleep = FrameSleepMilliseconds(m_fFpsLimit, bMinimised, m_bAppActive, bInFront, dFrameStartMs,
                                              GUtGetClock().NowMilliseconds());
    (m_pfnSleep ? m_pfnSleep : &SleepMilliseconds)(iSleep);
}

void CEditorApp::_RecordProfile()
{
    m_profileHistory.Record(Kestrin::Utility::CFrameProfiler::Get());
}

// ---------------------------------------------------------------------------------------
// The parts of a frame (CAppThreadRenderer)

void CEditorApp::BuildRenderBuffer()
{
    KESTRIN_PROFILE_SCOPE("BuildRenderBuffer");
    m_pRenderDevice->SetTime(m_timing.fGameTime);
    if (!m_pRenderer)
    {
        return;
    }
    m_pRenderer->SetTime(m_timing.fGameTime);
    m_pShaderCompiler->SetPreviewFlag(!m_pSceneEditor || !m_pSceneEditor->HasWindow());
    if (!m_apScenes[0]->ApplyEnvironment(*m_pRenderer))
    {
        m_apScenes[1]->ApplyEnvironment(*m_pRenderer);
    }
    m_pRenderer->GatherView(m_iClientW, m_iClientH, m_fLodFactor, m_auVisibleGroups[0], m_auVisibleGroups[1]);
}

void CEditorApp::SwapRenderBuffer()
{
    KESTRIN_PROFILE_SCOPE("SwapRenderBuffer");
    if (m_pRenderer)
    {
        m_pRenderer->SwapRenderBuffers();
    }
}

void CEditorApp::DrawRenderBuffer()
{
    KESTRIN_PROFILE_SCOPE("DrawRenderBuffer");
    if (!m_pRenderer->DrawsToOwnTargets())
    {
        m_pRenderDevice->Clear(Kestrin::RenderDevice::CLEAR_TARGET | Kestrin::RenderDevice::CLEAR_DEPTH |
                                   Kestrin::RenderDevice::CLEAR_STENCIL,
                               0, 0.0f, 0);
    }
    m_pRenderer->DrawRenderBuffer();
    if (m_pPlotter3D && m_pBufferedPlotter3D)
    {
        m_pBufferedPlotter3D->Flush();
        m_pPlotter3D->Flush();
    }
}

void CEditorApp::DrawOverlay()
{
    if (m_uOverlayFlags != 0)
    {
        m_pPlotter2D->SetFont(m_pFont);
        m_pPlotter2D->SetFontHeight(15.0f);
        m_pPlotter2D->SetColour(0xffffff);
        if (m_uOverlayFlags & OVERLAY_FPS)
        {
            char acText[64];
            snprintf(acText, sizeof(acText), "Fps %.1f", m_timing.fMeasuredFps);
            m_pPlotter2D->DrawText(100.0f, 70.0f, acText);
        }
        if (m_uOverlayFlags & OVERLAY_PROFILE)
        {
            m_profileHistory.Draw(*m_pPlotter2D, m_iClientH);
        }
    }
    m_pConsole->Draw(*m_pPlotter2D);
    m_pPlotter3D->Flush();
    m_pPlotter2D->Flush();
}

void CEditorApp::SwapDeviceBuffers()
{
    KESTRIN_PROFILE_SCOPE("SwapDeviceBuffers");
    m_pRenderDevice->Present();
}

void CEditorApp::OnDeviceReset()
{
    int32_t iW = 0, iH = 0;
    m_pRenderDevice->GetBackBufferSize(iW, iH);
    Resize(iW, iH);
}

void CEditorApp::DrawPreviews()
{
    // The Material Editor's sphere and the Texture Window draw into their swap chains once
    // those windows exist; none is open yet.
}

void CEditorApp::PostBuild()
{
    if (m_apPhysicsWorlds[1])
    {
        m_apPhysicsWorlds[1]->Fetch();
    }
}

} // namespace Ovrel
