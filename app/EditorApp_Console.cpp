// CEditorApp: the console's Lua state, the audio script, the game tables, and the console's
// commands.
#include "app/EditorApp.h"

#include "app/NullEngine.h"
#include "engine/audio/AudioDevice.h"
#include "engine/ext/Console.h"
#include "engine/utility/SystemOutput.h"

namespace Ovrel
{

bool CEditorApp::_ReadAudioScript(Kestrin::Audio::IAudioDevice& device)
{
    if (!device.Init(std::string(), {}))
    {
        return false;
    }
    for (const char* pcCategory : {"Global", "Default", "Speech", "Music"})
    {
        device.SetCategoryVolume(pcCategory, 0.5f);
    }
    return true;
}

void CEditorApp::_CreateLoader() {}

void CEditorApp::_DestroyScript() {}

bool CEditorApp::_DestroyLoader()
{
    return false;
}

void CEditorApp::_CreateScripting()
{
    _Trace("37 CLuaScript tables animators");
    _LoadGameTables();
    m_pEnvironmentAnimator = new CNullAnimator("CEnvironmentAnimator");
    m_pScriptedLightAnimator = new CNullAnimator("CScriptedLightAnimator");
}

void CEditorApp::_LoadGameTables() {}

bool CEditorApp::_RunLua(const char* pcLine)
{
    Kestrin::Utility::Printf("%s: no Lua state\n", pcLine);
    return false;
}

} // namespace Ovrel
