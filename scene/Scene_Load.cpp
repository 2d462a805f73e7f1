// CScene: opening a scene file, at once or through the background loader.
#include "scene/Scene.h"

#include "scene/SceneDiskFile.h"
#include "scene/SceneLoadTask.h"
#include "scene/ScenePropFile.h"

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
    (void)pTask;
    return false;
}

void CScene::CancelLoadTask(CSceneLoadTask* pTask)
{
    delete pTask;
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
