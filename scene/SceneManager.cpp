#include "scene/SceneManager.h"

#include "script/LuaScript.h"

#include <algorithm>

namespace Ovrel
{

CSceneManager::CSceneManager() = default;

CSceneManager::~CSceneManager() = default;

void CSceneManager::SetServices(Kestrin::Ext::CRenderWorld* pRenderWorld,
                                Kestrin::Physics::CPhysicsWorld* pPhysicsWorld,
                                Kestrin::Audio::IAudioDevice* pAudioDevice, Kestrin::Fx::CFxPlayer* pFxPlayer,
                                Kestrin::Fx::IFxCharacterManager* pCharacters, bool bHeadless)
{
    m_pRenderWorld = pRenderWorld;
    m_pPhysicsWorld = pPhysicsWorld;
    m_pAudioDevice = pAudioDevice;
    m_pFxPlayer = pFxPlayer;
    m_pCharacters = pCharacters;
    m_bHeadless = bHeadless;
}

void CSceneManager::SetStartScene(const std::string& strName, const std::string& strFolder)
{
    m_strSceneName = strName;
    m_strFolder = strFolder;
}

CScene* CSceneManager::LoadStartScene(bool bAsynchronous)
{
    if (m_strSceneName.empty())
    {
        return nullptr;
    }
    return LoadScene(m_strSceneName, m_strFolder, bAsynchronous);
}

CScene* CSceneManager::LoadScene(const std::string& strName, const std::string& strFolder, bool bAsynchronous)
{
    std::unique_ptr<CScene>& pScene = m_scenes[strName];
    if (!pScene)
    {
        pScene = std::make_unique<CScene>(strName);
        pScene->SetManager(this, m_iNextSceneId++);
    }
    pScene->SetServices(m_pRenderWorld, m_pPhysicsWorld, m_pAudioDevice, m_pFxPlayer, m_pCharacters,
                        m_bHeadless);
    m_loading.erase(std::remove(m_loading.begin(), m_loading.end(), strName), m_loading.end());
    if (!pScene->Open(strFolder + strName + ".scene", bAsynchronous))
    {
        return nullptr;
    }
    if (bAsynchronous && pScene->IsLoading())
    {
        m_loading.push_back(strName);
    }
    else
    {
        NotifyLoaded(strName);
    }
    return pScene.get();
}

CScene* CSceneManager::FindScene(const std::string& strName) const
{
    auto it = m_scenes.find(strName);
    return it == m_scenes.end() ? nullptr : it->second.get();
}

bool CSceneManager::UnloadScene(const std::string& strName)
{
    m_loading.erase(std::remove(m_loading.begin(), m_loading.end(), strName), m_loading.end());
    return m_scenes.erase(strName) != 0;
}

void CSceneManager::UnloadAll()
{
    m_loading.clear();
    m_scenes.clear();
}

void CSceneManager::Update(float fTime, float fDelta)
{
    for (auto& [strName, pScene] : m_scenes)
    {
        pScene->Update(fTime, fDelta);
    }
    // A copy: a script run by NotifyLoaded may load another scene.
    std::vector<std::string> loading = m_loading;
    for (const std::string& strName : loading)
    {
        CScene* pScene = FindScene(strName);
        if (pScene && pScene->IsLoading())
        {
            continue;
        }
        m_loading.erase(std::remove(m_loading.begin(), m_loading.end(), strName), m_loading.end());
        if (pScene && pScene->HasLoaded())
        {
            NotifyLoaded(strName);
        }
    }
}

std::string CSceneManager::OnSceneLoadText(const std::string& strName)
{
    // A quote or backslash in a name must not end the Lua string early.
    std::string strQuoted;
    for (char c : strName)
    {
        if (c == '"' || c == '\\')
        {
            strQuoted += '\\';
        }
        strQuoted += c;
    }
    return "OnSceneLoad(\"" + strQuoted + "\")";
}

void CSceneManager::NotifyLoaded(const std::string& strName)
{
    if (m_pScript)
    {
        m_pScript->RunString(OnSceneLoadText(strName).c_str());
    }
}

} // namespace Ovrel
