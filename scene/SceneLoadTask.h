// Ovrel::CSceneLoadTask: one scene file on its way in. The read step (the loader's Load, on
// the load thread) reads `<folder><name>.scene` whole into the task's buffer; the process
// step (Complete, on the main thread) parses it into the scene with the resource managers'
// path scopes open. Open runs both steps at once when it is not asynchronous.
//
// Threads: the read step touches only the task's own members, which the submitter leaves
// alone after Submit; the scene is only touched by the process step and Fail, both on the
// main thread.
#pragma once

#include "scene/SceneResources.h"

#include <cstdint>
#include <string>
#include <vector>

namespace Ovrel
{

class CScene;

class CSceneLoadTask
{
public:
    // The loader's default priority.
    static constexpr int32_t PRIORITY = 2;

    CSceneLoadTask(CScene* pScene, const std::string& strName, const CSceneFolders& folders);
    virtual ~CSceneLoadTask();
    CSceneLoadTask(const CSceneLoadTask&) = delete;
    CSceneLoadTask& operator=(const CSceneLoadTask&) = delete;

    // The read step: the whole file in one read; its size is the task's cost. False (and
    // `Load scene "%s" fail.` logged with the name) when the file cannot be read.
    virtual bool Load();
    // The process step: parses the bytes into the scene, relinks its groups, and leaves the
    // scene's task and path behind. False (and `Load scene "%s" fail` logged, deliberately
    // without the full stop) when the parse failed; the scene is then empty.
    virtual bool Complete();
    // After a failed step: the scene forgets the task.
    virtual void Fail();

    const std::string& GetName() const { return m_strName; }
    const std::string& GetFilePath() const { return m_strFilePath; }
    const CSceneFolders& GetFolders() const { return m_folders; }
    uint32_t GetSize() const { return m_uSize; }

    // The scene drops its task (it is being cleared or destroyed): a step still to come
    // leaves the scene alone.
    void Detach() { m_pScene = nullptr; }

private:
    CScene* m_pScene;
    std::string m_strName;
    std::string m_strFilePath;
    CSceneFolders m_folders;
    std::vector<uint8_t> m_bytes;
    uint32_t m_uSize = 0;
};

} // namespace Ovrel
