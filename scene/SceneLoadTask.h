// Ovrel::CSceneLoadTask: one scene file on its way in, as a task of the background loader.
// The read step (Load, on the load thread) reads `<folder><name>.scene` whole into the
// task's buffer; the process step (Complete, on the main thread) parses it into the scene
// with the resource managers' path scopes open. Preprocess has nothing to do. Open runs the
// steps at once when it is not asynchronous or there is no loader.
//
// Threads: the read step touches only the task's own members, which the submitter leaves
// alone after Submit; the scene is only touched by the process step and Fail, both on the
// main thread.
#pragma once

#include "scene/SceneResources.h"

#include "engine/utility/LoadTask.h"

#include <cstdint>
#include <string>
#include <vector>

namespace Ovrel
{

class CScene;

class CSceneLoadTask final : public Kestrin::Utility::CLoadTask
{
public:
    CSceneLoadTask(CScene* pScene, const std::string& strName, const CSceneFolders& folders);
    ~CSceneLoadTask() override;

    // The read step: the whole file in one read; its size is the task's cost. False (and
    // `Load scene "%s" fail.` logged with the name) when the file cannot be read.
    bool Load() override;
    // The process step: parses the bytes into the scene, relinks its groups, and leaves the
    // scene's task and path behind. False (and `Load scene "%s" fail` logged, deliberately
    // without the full stop) when the parse failed; the scene is then empty.
    bool Complete() override;
    // After a failed step: the scene forgets the task.
    void Fail() override;

    const std::string& GetSceneName() const { return m_strName; }
    const std::string& GetFilePath() const { return m_strFilePath; }
    const CSceneFolders& GetFolders() const { return m_folders; }

    // The scene drops its task (it is being cleared or destroyed): a step still to come
    // leaves the scene alone.
    void Detach() { m_pScene = nullptr; }

private:
    CScene* m_pScene;
    std::string m_strName;
    std::string m_strFilePath;
    CSceneFolders m_folders;
    std::vector<uint8_t> m_bytes;
};

} // namespace Ovrel
