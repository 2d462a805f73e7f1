// CScene: opening a scene file, at once or through the background loader.
#include "scene/Scene.h"

#include "scene/SceneDiskFile.h"
#include "scene/SceneLoadTask.h"
#include "scene/ScenePropFile.h"

#include "engine/utility/AsyncLoader.h"

namespace Ovrel
{

void CScene::TakePath(const std::string& strPath)
{
    std::string strExtension;
    SplitPath(strPath, m_strFolder, m_strName, strExtension);
    m_strFilePath = strPath;
}

bool CScene::Open(const std::string& strPath, bool bAsynchronous)
{
    Clear();
    CancelLoad();
    std::string strExtension;
    SplitPath(strPath, m_strFolder, m_strName, strExtension);
    auto* pTask = new CSceneLoadTask(this, m_strName, GetFolders());
    if (bAsynchronous && SubmitLoadTask(pTask))
    {
        return true;
    }
    bool bOk = pTask->Load() && pTask->Complete();
    if (!bOk)
    {
        pTask->Fail();
    }
    delete pTask;
    return bOk;
}

bool CScene::SubmitLoadTask(CSceneLoadTask* pTask)
{
    Kestrin::Utility::CAsyncLoader* pLoader = Kestrin::Utility::GetAsyncLoader();
    if (!pLoader)
    {
        return false;
    }
    // Set before Submit: a loader that is not enabled runs the task to its end inside it.
    m_pLoadTask = pTask;
    pLoader->Submit(pTask);
    return true;
}

void CScene::CancelLoadTask(CSceneLoadTask* pTask)
{
    // The task is still in the loader it went to (it leaves the scene's hands only through
    // Complete or Fail), which destroys it.
    Kestrin::Utility::IAsyncLoader* pLoader = pTask->GetLoader();
    if (pLoader)
    {
        pLoader->Cancel(pTask);
    }
}

bool CScene::LoadPropFile()
{
    m_props.meshes.clear();
    m_props.m_bSwapBytes = m_bSwapBytes;
    std::vector<uint8_t> bytes;
    std::string strPath = m_strFolder + m_strName + ".prop";
    if (!ReadWholeFile(strPath.c_str(), bytes))
    {
        // The side file is optional: a scene without one keeps its meshes' own settings.
        return false;
    }
    Kestrin::Utility::CMemoryStream stream(bytes.data(), static_cast<int32_t>(bytes.size()));
    if (!m_props.Read(stream))
    {
        return false;
    }
    m_props.Apply(*this);
    return true;
}

bool CScene::SavePropFile()
{
    m_props.Collect(*this);
    return m_props.WriteFile((m_strFolder + m_strName + ".prop").c_str());
}

} // namespace Ovrel
