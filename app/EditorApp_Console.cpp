// CEditorApp: the console's Lua state, the audio script, the game tables, the loader.
#include "app/EditorApp.h"

#include "Utils/Utility/GUtFile.h"
#include "app/ConsoleCommands.h"
#include "app/GameTables.h"
#include "app/NullEngine.h"
#include "engine/audio/AudioDevice.h"
#include "engine/ext/Console.h"
#include "engine/utility/AsyncLoader.h"
#include "engine/utility/SystemOutput.h"
#include "scene/EnvironmentAnimator.h"
#include "scene/Scene.h"
#include "scene/SceneManager.h"
#include "scene_editor/SceneEditor.h"
#include "script/LuaScript.h"

#include <string>
#include <utility>
#include <vector>

namespace Ovrel
{

using GLib::Script::CLuaScript;
using GLib::Script::CScriptTable;
using GLib::Script::CScriptValue;

namespace
{
// The entries of a global list table ({ "a", "b" }), in key order.
std::vector<std::string> ReadList(const CLuaScript& script, const char* pcName)
{
    std::vector<std::string> list;
    CScriptValue value;
    if (script.GetGlobalTable(pcName, value))
    {
        for (const CScriptTable::Pair& pair : value.GetTable())
        {
            list.emplace_back(pair.second.GetStringView());
        }
    }
    return list;
}
} // namespace

// ---------------------------------------------------------------------------------------
// 8: the audio script

bool CEditorApp::_ReadAudioScript(Kestrin::Audio::IAudioDevice& device)
{
    const std::string strFolder = m_strAudioPath.ToStd();
    CLuaScript script;
    script.RunFile((strFolder + "audio.lua").c_str()); // a missing script leaves every table empty
    GUtString strSettings;
    script.GetGlobalString("GlobalSettings", strSettings);
    std::vector<std::pair<std::string, float>> soundRpcs;
    CScriptValue rpcs;
    if (script.GetGlobalTable("SoundRPCs", rpcs))
    {
        for (const CScriptTable::Pair& pair : rpcs.GetTable())
        {
            soundRpcs.emplace_back(std::string(pair.first.GetStringView()), pair.second.GetFloat());
        }
    }
    if (!device.Init(strSettings.IsEmpty() ? std::string() : strFolder + strSettings.c_str(), soundRpcs))
    {
        return false;
    }
    int iIndex = 0;
    for (const std::string& strBank : ReadList(script, "MemoryWaveBanks"))
    {
        device.LoadWaveBank(strFolder + strBank, 0, iIndex++);
    }
    for (const std::string& strBank : ReadList(script, "StreamWaveBanks"))
    {
        device.LoadWaveBank(strFolder + strBank, 16, iIndex++);
    }
    int iSoundBank = 0;
    for (const std::string& strBank : ReadList(script, "SoundBanks"))
    {
        device.LoadSoundBank(strFolder + strBank, iSoundBank++);
    }
    std::vector<std::pair<int, std::vector<float>>> table;
    CScriptValue rpcTable;
    if (script.GetGlobalTable("RPCs", rpcTable))
    {
        for (const CScriptTable::Pair& pair : rpcTable.GetTable())
        {
            std::vector<float> values;
            for (const CScriptTable::Pair& value : pair.second.GetTable())
            {
                values.push_back(value.second.GetFloat());
            }
            table.emplace_back(pair.first.GetInt(), std::move(values));
        }
    }
    device.SetRpcs(table);
    for (const char* pcCategory : {"Global", "Default", "Speech", "Music"})
    {
        device.SetCategoryVolume(pcCategory, 0.5f);
    }
    return true;
}

// ---------------------------------------------------------------------------------------
// 30: the loader

void CEditorApp::_CreateLoader()
{
    m_pAsyncLoader = new Kestrin::Utility::CAsyncLoader();
    m_pAsyncLoader->Start(true);
    Kestrin::Utility::SetAsyncLoader(m_pAsyncLoader);
}

bool CEditorApp::_DestroyLoader()
{
    if (!m_pAsyncLoader)
    {
        return false;
    }
    m_pAsyncLoader->Stop();
    Kestrin::Utility::SetAsyncLoader(nullptr);
    delete m_pAsyncLoader;
    m_pAsyncLoader = nullptr;
    return true;
}

// ---------------------------------------------------------------------------------------
// 37: the console's Lua state, the tables, the animators

void CEditorApp::_CreateScripting()
{
    _Trace("37 CLuaScript tables animators");
    m_pLuaScript = new CLuaScript();
    CLuaScript::SetGlobalErrorHook(&OnLuaError);
    m_pSceneEditor->SetScript(m_pLuaScript);
    RegisterConsoleCommands(*m_pLuaScript);
    _LoadGameTables();
    for (CScene* pScene : m_apScenes)
    {
        pScene->SetEntityProperties(&CGameTables::Get().entityProperty.GetGlobal());
    }
    m_pSceneManager->SetScript(m_pLuaScript);
    m_pEnvironmentAnimator = new CEnvironmentAnimator(m_apScenes[0]);
    _LoadEnvironmentAnimations();
    m_pScriptedLightAnimator = new CNullAnimator("CScriptedLightAnimator");
}

void CEditorApp::_DestroyScript()
{
    if (!m_pLuaScript)
    {
        return;
    }
    _Trace("shutdown 3 CLuaScript");
    if (m_pSceneEditor)
    {
        m_pSceneEditor->SetScript(nullptr);
    }
    if (m_pSceneManager)
    {
        m_pSceneManager->SetScript(nullptr);
    }
    delete m_pLuaScript;
    m_pLuaScript = nullptr;
    CLuaScript::SetGlobalErrorHook(nullptr);
}

void CEditorApp::_LoadGameTables()
{
    CGameTables::Get().LoadAll(m_strScriptPath.ToStd(), m_strTablePath.ToStd());
}

void CEditorApp::_LoadEnvironmentAnimations()
{
    if (m_strScriptPath.IsEmpty())
    {
        return;
    }
    // An optional file: a game without environment animations has none, and says nothing.
    const std::string strPath = m_strScriptPath.ToStd() + ENVIRONMENT_ANIMATION_FILE;
    GUtFile file;
    if (file.Open(strPath.c_str(), GUtFile::MODE_ALWAYS | GUtFile::MODE_BINARY | GUtFile::MODE_READ, true))
    {
        file.Close();
        m_pEnvironmentAnimator->Load(strPath.c_str());
    }
}

bool CEditorApp::_RunLua(const char* pcLine)
{
    return m_pLuaScript && m_pLuaScript->RunString(pcLine);
}

} // namespace Ovrel
