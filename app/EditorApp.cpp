// CEditorApp: construction, accessors and setters, quit and resize, the window messages and
// the console's line handler. The start-up is in EditorApp_Init.cpp, the shut-down in
// EditorApp_ShutDown.cpp, the frame in EditorApp_Frame.cpp.
#include "app/EditorApp.h"

#include "app/AppServices.h"
#include "app/AppThreadRenderer.h"
#include "app/NullEngine.h"
#include "editor_common/EditorCamera.h"
#include "engine/audio/AudioDevice.h"
#include "engine/ext/Console.h"
#include "engine/ext/Plotter2D.h"
#include "engine/fx/FxPlayer.h"
#include "engine/render_device/RenderDevice.h"
#include "scene/Scene.h"
#include "scene_editor/SceneEditor.h"

#include <atomic>
#include <cctype>
#include <cstdarg>
#include <cstdlib>

namespace Ovrel
{

namespace RD = Kestrin::RenderDevice;
namespace WM = Kestrin::RenderDevice::WindowMessage;

namespace
{
std::atomic<CEditorApp*> g_pApp{nullptr};
} // namespace

CEditorApp::CEditorApp()
{
    g_pApp.store(this);
}

CEditorApp::~CEditorApp()
{
    ShutDown();
    delete m_pOwnFactory;
    CEditorApp* pSelf = this;
    g_pApp.compare_exchange_strong(pSelf, nullptr);
}

CEditorApp* CEditorApp::Get()
{
    return g_pApp.load();
}

void CEditorApp::SetFactory(CEditorAppFactory* pFactory)
{
    m_pFactory = pFactory;
}

void CEditorApp::_Trace(const char* pcFormat, ...)
{
    if (!m_pTrace)
    {
        return;
    }
    va_list args;
    va_start(args, pcFormat);
    GUtString strStep;
    strStep.FormatV(pcFormat, args);
    va_end(args);
    m_pTrace->Step(strStep.c_str());
}

// ---------------------------------------------------------------------------------------
// Quit, resize, setters

void CEditorApp::RequestQuit(int iExitCode)
{
    m_bQuitRequested = true;
    m_iExitCode = iExitCode;
}

void CEditorApp::Resize(int32_t iWidth, int32_t iHeight)
{
    if (!m_pRenderDevice)
    {
        return;
    }
    m_pRenderDevice->Lock();
    m_iClientW = iWidth;
    m_iClientH = iHeight;
    if (m_pEditorCamera)
    {
        m_pEditorCamera->SetViewport(iWidth, iHeight);
    }
    if (m_pPlotter2D)
    {
        m_pPlotter2D->SetViewport(0, 0, iWidth, iHeight);
    }
    m_pRenderDevice->SetViewport(0, 0, iWidth, iHeight);
    m_pRenderDevice->Unlock();
}

void CEditorApp::SetOverlayFlag(uint32_t uFlag, bool bOn)
{
    m_uOverlayFlags = bOn ? (m_uOverlayFlags | uFlag) : (m_uOverlayFlags & ~uFlag);
}

void CEditorApp::SetCharacterLod(int iLod)
{
    if (m_apScenes[0])
    {
        m_apScenes[0]->SetCharacterQuality(iLod);
    }
}

void CEditorApp::SetFxLod(int iLod)
{
    if (m_pFxPlayer)
    {
        m_pFxPlayer->SetLod(iLod);
    }
}

bool CEditorApp::PlayConsoleSound(const char* pcCue, bool bPlaced, float fX, float fY, float fZ)
{
    if (!m_pAudioDevice)
    {
        return false;
    }
    if (!m_pConsoleSound)
    {
        m_pConsoleSound = m_pAudioDevice->CreateAudio();
    }
    if (!m_pConsoleSound)
    {
        return false; // the null device makes no sounds
    }
    if (bPlaced)
    {
        m_pConsoleSound->SetPosition({fX, fY, fZ});
    }
    return m_pConsoleSound->Play(pcCue ? pcCue : "");
}

void CEditorApp::SetVisibleGroups(uint32_t uLow, uint32_t uHigh)
{
    m_auVisibleGroups[0] = uLow;
    m_auVisibleGroups[1] = uHigh;
}

void CEditorApp::SetRenderThreaded(bool bThreaded)
{
    if (m_pThreadRenderer)
    {
        m_pThreadRenderer->SetThreaded(bThreaded);
    }
}

// ---------------------------------------------------------------------------------------
// Window messages

int64_t CEditorApp::_WindowProc(void* pUser, uint32_t uMessage, uint64_t wParam, int64_t lParam,
                                bool& bHandled)
{
    return static_cast<CEditorApp*>(pUser)->OnWindowMessage(uMessage, wParam, lParam, bHandled);
}

int64_t CEditorApp::OnWindowMessage(uint32_t uMessage, uint64_t wParam, int64_t lParam, bool& bHandled)
{
    const bool bConsoleOpen = m_pConsole && m_pConsole->GetState() == Kestrin::Ext::CConsole::STATE_INPUT;
    if (m_pSceneEditor && !bConsoleOpen)
    {
        const int64_t iResult = m_pSceneEditor->OnWindowMessage(uMessage, wParam, lParam, bHandled);
        if (bHandled)
        {
            return iResult;
        }
    }
    switch (uMessage)
    {
        case WM::LBUTTONDOWN:
        case WM::LBUTTONDBLCLK:
            m_iMouseDownX = RD::LowWord(lParam);
            m_iMouseDownY = RD::HighWord(lParam);
            if (m_uOverlayFlags & OVERLAY_PROFILE)
            {
                const int32_t iRegion = m_profileHistory.RegionAtLegend(static_cast<float>(m_iMouseDownX),
                                                                        static_cast<float>(m_iMouseDownY));
                if (iRegion >= 0)
                {
                    m_profileHistory.SetPendingRegion(iRegion, !m_profileHistory.IsHidden(iRegion));
                }
            }
            if (m_pWindow)
            {
                m_pWindow->SetCapture();
            }
            break;
        case WM::RBUTTONDOWN:
        case WM::MBUTTONDOWN:
            if (m_pWindow)
            {
                m_pWindow->SetCapture();
            }
            break;
        case WM::LBUTTONUP:
        case WM::RBUTTONUP:
        case WM::MBUTTONUP:
            if (m_pWindow)
            {
                m_pWindow->ReleaseCapture();
            }
            break;
        case WM::SETCURSOR:
            if (m_pWindow)
            {
                m_pWindow->SetArrowCursor();
            }
            break;
        case WM::KEYDOWN:
            if (m_pConsole)
            {
                m_pConsole->OnKeyDown(static_cast<uint32_t>(wParam));
            }
            break;
        case WM::CHAR:
            if (m_pConsole)
            {
                m_pConsole->OnChar(static_cast<uint32_t>(wParam));
            }
            break;
        case WM::ACTIVATEAPP:
            m_bAppActive = wParam != 0;
            if (m_bAppActive && m_pWindow)
            {
                m_pWindow->SetForeground();
            }
            break;
        case WM::MOVE:
        case WM::SIZE:
            if (m_pWindow && !m_pWindow->IsMinimised() && !m_pWindow->IsMaximised())
            {
                const RD::SWindowRect rect = m_pWindow->GetOuterRect();
                m_iWindowX = rect.iX;
                m_iWindowY = rect.iY;
                m_iWindowW = rect.iW;
                m_iWindowH = rect.iH;
            }
            break;
        case WM::QUIT:
            RequestQuit(0);
            break;
        default:
            break;
    }
    return 0;
}

// ---------------------------------------------------------------------------------------
// Console lines

bool CEditorApp::ExecuteConsoleLine(const char* pcLine)
{
    if (!pcLine || !m_pRenderDevice)
    {
        return false;
    }
    m_pRenderDevice->Lock();
    bool bTaken = m_pRenderer && m_pRenderer->ExecuteCommand(pcLine);
    if (!bTaken)
    {
        bTaken = _RunLua(pcLine);
    }
    m_pRenderDevice->Unlock();
    return bTaken;
}

void CEditorApp::SetStartupLines(const char* pcSpec)
{
    m_startupLines.clear();
    if (!pcSpec)
    {
        return;
    }
    // "@<frame> <line>" entries; an entry ends where the next "@<digits> " starts a word.
    const std::string strSpec(pcSpec);
    size_t uPos = 0;
    int32_t iFrame = -1;
    std::string strLine;
    auto flush = [&]()
    {
        while (!strLine.empty() && isspace(static_cast<unsigned char>(strLine.back())))
        {
            strLine.pop_back();
        }
        if (iFrame >= 0 && !strLine.empty())
        {
            m_startupLines.emplace(iFrame, strLine);
        }
        strLine.clear();
    };
    while (uPos < strSpec.size())
    {
        const bool bWordStart = uPos == 0 || isspace(static_cast<unsigned char>(strSpec[uPos - 1]));
        if (bWordStart && strSpec[uPos] == '@' && uPos + 1 < strSpec.size() &&
            isdigit(static_cast<unsigned char>(strSpec[uPos + 1])))
        {
            size_t uEnd = uPos + 1;
            while (uEnd < strSpec.size() && isdigit(static_cast<unsigned char>(strSpec[uEnd])))
            {
                ++uEnd;
            }
            if (uEnd == strSpec.size() || isspace(static_cast<unsigned char>(strSpec[uEnd])))
            {
                flush();
                iFrame = atoi(strSpec.substr(uPos + 1, uEnd - uPos - 1).c_str());
                uPos = uEnd;
                while (uPos < strSpec.size() && isspace(static_cast<unsigned char>(strSpec[uPos])))
                {
                    ++uPos;
                }
                continue;
            }
        }
        strLine += strSpec[uPos++];
    }
    flush();
}

} // namespace Ovrel
