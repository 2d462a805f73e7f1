// Ovrel::CSceneManager: the scenes the game layer has open, by name. It opens them through
// CScene::Open with its engine services, steps them each frame, and once a scene has
// finished loading tells the game's scripts by running `OnSceneLoad("<name>")` in its Lua
// state.
//
// Threads: main thread only.
#pragma once

#include "scene/Scene.h"

#include <map>
#include <memory>
#include <string>
#include <vector>

namespace GLib::Script
{
class CLuaScript;
}

namespace Ovrel
{

class CSceneManager
{
public:
    CSceneManager();
    // Destroys its scenes (each cancels its running load).
    virtual ~CSceneManager();
    CSceneManager(const CSceneManager&) = delete;
    CSceneManager& operator=(const CSceneManager&) = delete;

    // The services every scene it makes is given; headless scenes make no engine objects.
    void SetServices(Kestrin::Ext::CRenderWorld* pRenderWorld, Kestrin::Physics::CPhysicsWorld* pPhysicsWorld,
                     Kestrin::Audio::IAudioDevice* pAudioDevice, Kestrin::Fx::CFxPlayer* pFxPlayer,
                     Kestrin::Fx::IFxCharacterManager* pCharacters, bool bHeadless);
    // The script state OnSceneLoad runs in; null runs nothing.
    void SetScript(GLib::Script::CLuaScript* pScript) { m_pScript = pScript; }

    // The scene the game starts in: its base name and folder (ending in a separator).
    void SetStartScene(const std::string& strName, const std::string& strFolder);
    const std::string& GetStartSceneName() const { return m_strSceneName; }
    const std::string& GetStartSceneFolder() const { return m_strFolder; }
    // Opens the start scene; null when it has no name or the open failed.
    CScene* LoadStartScene(bool bAsynchronous);
    // Opens `<folder><name>.scene` into the scene kept under that name, made when new.
    // At once: OnSceneLoad runs before this returns, and a failed open gives null (the
    // scene stays, empty). Through the loader: the scene is returned while it loads, and
    // Update runs OnSceneLoad once it is ready; a load that fails runs nothing.
    CScene* LoadScene(const std::string& strName, const std::string& strFolder, bool bAsynchronous);
    // Null for a name it does not hold.
    CScene* FindScene(const std::string& strName) const;
    // Destroys the scene of that name; false when there is none.
    bool UnloadScene(const std::string& strName);
    // Destroys every scene it holds.
    void UnloadAll();
    int32_t GetSceneCount() const { return static_cast<int32_t>(m_scenes.size()); }

    // Each scene's Update (which activates what arrived); a scene whose load finished since
    // gets its OnSceneLoad.
    void Update(float fTime, float fDelta);
    // The text handed to the script for a loaded scene: `OnSceneLoad("<name>")`, with a quote
    // or backslash in the name escaped.
    static std::string OnSceneLoadText(const std::string& strName);

private:
    void NotifyLoaded(const std::string& strName);

    std::string m_strSceneName;
    std::string m_strFolder;
    Kestrin::Ext::CRenderWorld* m_pRenderWorld = nullptr;
    Kestrin::Physics::CPhysicsWorld* m_pPhysicsWorld = nullptr;
    Kestrin::Audio::IAudioDevice* m_pAudioDevice = nullptr;
    Kestrin::Fx::CFxPlayer* m_pFxPlayer = nullptr;
    Kestrin::Fx::IFxCharacterManager* m_pCharacters = nullptr;
    bool m_bHeadless = false;
    GLib::Script::CLuaScript* m_pScript = nullptr;
    std::map<std::string, std::unique_ptr<CScene>> m_scenes;
    // Scenes opened through the loader whose OnSceneLoad is still to come.
    std::vector<std::string> m_loading;
    int32_t m_iNextSceneId = 1;
};

} // namespace Ovrel
