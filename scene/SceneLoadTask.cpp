#include "scene/SceneLoadTask.h"

#include "scene/Scene.h"
#include "scene/SceneDiskFile.h"

#include "Utils/Utility/GUtDebug.h"
#include "engine/utility/IOStream.h"

namespace Ovrel
{

namespace
{
// The load messages carry their own line end.
GUtLogChannel g_loadLog{0, 4, 3, 0, 1, 0, nullptr};
} // namespace

CSceneLoadTask::CSceneLoadTask(CScene* pScene, const std::string& strName, const CSceneFolders& folders)
    : Kestrin::Utility::CLoadTask(("scene " + strName).c_str(), DEFAULT_PRIORITY), m_pScene(pScene),
      m_strName(strName), m_folders(folders)
{
    m_strFilePath = pScene->GetFolder() + strName + ".scene";
}

CSceneLoadTask::~CSceneLoadTask() = default;

bool CSceneLoadTask::Load()
{
    if (!ReadWholeFile(m_strFilePath.c_str(), m_bytes))
    {
        m_bytes.clear();
        GUtLog::Get().DisplayMsg(g_loadLog, "Scene", "Load scene \"%s\" fail.\n", m_strName.c_str());
        return false;
    }
    m_uSize = static_cast<uint32_t>(m_bytes.size());
    return true;
}

bool CSceneLoadTask::Complete()
{
    CScene* pScene = m_pScene;
    if (!pScene)
    {
        return true;
    }
    ISceneResourceScopes* pScopes = pScene->m_pScopes;
    if (pScopes)
    {
        pScopes->BeginScopes(m_folders);
    }
    Kestrin::Utility::CMemoryStream stream(m_bytes.data(), static_cast<int32_t>(m_bytes.size()));
    // A task that goes through the loader lets textures and meshes arrive later.
    bool bRead = pScene->Read(stream, nullptr, pScene->m_pLoadTask == this);
    if (pScopes)
    {
        pScopes->EndScopes();
    }
    if (pScene->m_pLoadTask == this)
    {
        pScene->m_pLoadTask = nullptr;
    }
    m_pScene = nullptr;
    pScene->m_strFilePath = m_strFilePath;
    m_bytes.clear();
    m_bytes.shrink_to_fit();
    if (!bRead)
    {
        GUtLog::Get().DisplayMsg(g_loadLog, "Scene", "Load scene \"%s\" fail\n", m_strName.c_str());
        return false;
    }
    pScene->RelinkGroups();
    pScene->m_bLoaded = true;
    if (pScene->IsEditorMode())
    {
        pScene->LoadPropFile();
    }
    return true;
}

void CSceneLoadTask::Fail()
{
    if (m_pScene && m_pScene->m_pLoadTask == this)
    {
        m_pScene->m_pLoadTask = nullptr;
    }
    m_pScene = nullptr;
}

} // namespace Ovrel
