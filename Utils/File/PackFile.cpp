// CPackFile: the tree, lookups, edits and the access list. Loading is in PackFile_Load.cpp,
// saving in PackFile_Save.cpp.
#include "Utils/File/PackFile.h"

#include "Utils/Utility/GUtDebug.h"
#include "Utils/Utility/GUtFile.h"
#include "Utils/Utility/GUtPath.h"

#include <algorithm>

namespace GLib::File
{

namespace
{
// A name of one level: not empty, no separator, not "." or "..".
bool IsPlainName(std::string_view name)
{
    return !name.empty() && name != "." && name != ".." && name.find('/') == std::string_view::npos &&
           name.find('\\') == std::string_view::npos;
}
} // namespace

CPackFile::CPackFile(EFileIOKind eKind) : m_eFileIOKind(eKind)
{
    _ResetTree();
}

CPackFile::~CPackFile()
{
    if (m_bRecordAccess)
    {
        SaveAccessList();
    }
    Close();
}

void CPackFile::Close()
{
    if (m_pFileIO)
    {
        m_pFileIO->CloseFile();
    }
    m_pFileIO.reset();
    _ResetTree();
    m_Header.Clear();
    m_strFileName.Clear();
}

void CPackFile::_ResetTree()
{
    m_map.Clear();
    m_orderedInfos.clear();
    m_dirs.clear();
    m_addedInfos.clear();
    m_pLoadedInfos.reset();
    m_pNames.reset();
    m_pRootDir = _NewDir(nullptr, std::string_view());
    m_pCurrentDir = m_pRootDir;
}

CSubDir* CPackFile::_NewDir(CSubDir* pParent, std::string_view name)
{
    m_dirs.push_back(std::make_unique<CSubDir>(this, pParent, name));
    CSubDir* pDir = m_dirs.back().get();
    if (pParent)
    {
        pParent->m_subDirs.push_back(pDir);
    }
    return pDir;
}

// ---------------------------------------------------------------------------------------
// Lookups

const CSubDir* CPackFile::_StartDir(std::string_view& path) const
{
    if (!path.empty() && path[0] == '/')
    {
        path.remove_prefix(path.find_first_not_of('/') == std::string_view::npos
                               ? path.size()
                               : path.find_first_not_of('/'));
        return m_pRootDir;
    }
    const CSubDir* pDir = m_pCurrentDir;
    if (path == ".." || path.starts_with("../"))
    {
        path.remove_prefix(std::min<size_t>(3, path.size()));
        return pDir->m_pParent ? pDir->m_pParent : pDir;
    }
    if (path == "." || path.starts_with("./"))
    {
        path.remove_prefix(std::min<size_t>(2, path.size()));
    }
    return pDir;
}

CSubFileInfo* CPackFile::FindFile(const char* pcPath) const
{
    if (!pcPath)
    {
        return nullptr;
    }
    std::string_view path(pcPath);
    const bool bPlain =
        path.find('\\') == std::string_view::npos && path.find("//") == std::string_view::npos;
    std::string slashes;
    if (!bPlain)
    {
        slashes = GUtPath::ToSlashes(path);
        path = slashes;
    }
    const CSubDir* pBeginSearchDir = _StartDir(path);
    GUT_ASSERT(pBeginSearchDir->GetParentPackFile() == this);
    if (pBeginSearchDir == m_pRootDir)
    {
        return m_map.Find(path);
    }
    std::string full = pBeginSearchDir->GetFullPath();
    full += '/';
    full += path;
    return m_map.Find(full);
}

bool CPackFile::ChangeDir(const char* pcPath)
{
    if (!pcPath)
    {
        return false;
    }
    std::string slashes = GUtPath::ToSlashes(pcPath);
    std::string_view path(slashes);
    const CSubDir* pDir = _StartDir(path);
    while (!path.empty())
    {
        const size_t uSlash = path.find('/');
        std::string_view name = path.substr(0, uSlash);
        path.remove_prefix(uSlash == std::string_view::npos ? path.size() : uSlash + 1);
        if (name.empty() || name == ".")
        {
            continue;
        }
        pDir = (name == "..") ? (pDir->m_pParent ? pDir->m_pParent : pDir) : pDir->FindSubDir(name);
        if (!pDir)
        {
            return false;
        }
    }
    m_pCurrentDir = const_cast<CSubDir*>(pDir);
    return true;
}

CSubFile* CPackFile::OpenSubFile(const char* pcPath, bool bFlag)
{
    CSubFileInfo* pInfo = FindFile(pcPath);
    if (!pInfo)
    {
        return nullptr;
    }
    auto pSubFile = std::make_unique<CSubFile>(pcPath, this, pInfo, pInfo->m_uOffset, pInfo->m_uSize, bFlag);
    if (!pSubFile->Open())
    {
        return nullptr;
    }
    return pSubFile.release();
}

// ---------------------------------------------------------------------------------------
// Edits

std::string CPackFile::_CleanFullPath(const char* pcPath)
{
    std::string path = GUtPath::ToSlashes(pcPath ? pcPath : "");
    const size_t uStart = path.find_first_not_of('/');
    path.erase(0, uStart == std::string::npos ? path.size() : uStart);
    while (!path.empty() && path.back() == '/')
    {
        path.pop_back();
    }
    return path;
}

CSubDir* CPackFile::_MakeDirs(std::string_view folderPath)
{
    CSubDir* pDir = m_pRootDir;
    while (!folderPath.empty())
    {
        const size_t uSlash = folderPath.find('/');
        std::string_view name = folderPath.substr(0, uSlash);
        folderPath.remove_prefix(uSlash == std::string_view::npos ? folderPath.size() : uSlash + 1);
        if (!IsPlainName(name))
        {
            return nullptr;
        }
        CSubDir* pChild = pDir->FindSubDir(name);
        pDir = pChild ? pChild : _NewDir(pDir, name);
    }
    return pDir;
}

bool CPackFile::AddDir(const char* pcPath)
{
    return !m_bReadOnly && _MakeDirs(_CleanFullPath(pcPath)) != nullptr;
}

bool CPackFile::AddFile(const char* pcPath, std::unique_ptr<ISubFileSource> pSource)
{
    const std::string path = _CleanFullPath(pcPath);
    const size_t uSlash = path.rfind('/');
    const std::string_view name =
        uSlash == std::string::npos ? std::string_view(path) : std::string_view(path).substr(uSlash + 1);
    if (m_bReadOnly || !pSource || !IsPlainName(name))
    {
        return false;
    }
    if (CSubFileInfo* pExisting = m_map.Find(path))
    {
        pExisting->m_pReplacement = std::move(pSource);
        return true;
    }
    CSubDir* pDir = _MakeDirs(uSlash == std::string::npos ? std::string_view()
                                                          : std::string_view(path).substr(0, uSlash));
    if (!pDir)
    {
        return false;
    }
    auto pInfo = std::make_unique<CSubFileInfo>();
    pInfo->SetFullName(path);
    pInfo->m_pParent = pDir;
    pInfo->m_pReplacement = std::move(pSource);
    pDir->m_files.push_back(pInfo.get());
    m_map.Insert(pInfo.get());
    m_orderedInfos.push_back(pInfo.get());
    m_addedInfos.push_back(std::move(pInfo));
    return true;
}

bool CPackFile::RemoveFile(const char* pcPath)
{
    const std::string path = _CleanFullPath(pcPath);
    CSubFileInfo* pInfo = m_bReadOnly ? nullptr : m_map.Find(path);
    if (!pInfo)
    {
        return false;
    }
    m_map.Erase(path);
    std::erase(pInfo->m_pParent->m_files, pInfo);
    std::erase(m_orderedInfos, pInfo);
    pInfo->m_pParent = nullptr;
    pInfo->m_pReplacement.reset();
    return true;
}

bool CPackFile::RenameFile(const char* pcOldPath, const char* pcNewPath)
{
    const std::string oldPath = _CleanFullPath(pcOldPath);
    const std::string newPath = _CleanFullPath(pcNewPath);
    CSubFileInfo* pInfo = m_bReadOnly ? nullptr : m_map.Find(oldPath);
    if (!pInfo)
    {
        return false;
    }
    CSubFileInfo* pOther = m_map.Find(newPath);
    const size_t uSlash = newPath.rfind('/');
    const std::string_view name = uSlash == std::string::npos ? std::string_view(newPath)
                                                              : std::string_view(newPath).substr(uSlash + 1);
    if ((pOther && pOther != pInfo) || !IsPlainName(name))
    {
        return false;
    }
    CSubDir* pDir = _MakeDirs(uSlash == std::string::npos ? std::string_view()
                                                          : std::string_view(newPath).substr(0, uSlash));
    if (!pDir)
    {
        return false;
    }
    m_map.Erase(oldPath);
    std::erase(pInfo->m_pParent->m_files, pInfo);
    pInfo->SetFullName(newPath);
    pInfo->m_pParent = pDir;
    pDir->m_files.push_back(pInfo);
    m_map.Insert(pInfo);
    return true;
}

// ---------------------------------------------------------------------------------------
// Access list

void CPackFile::RecordAccess(std::string_view path, uint32_t uPosition, uint32_t uSize)
{
    std::lock_guard<std::mutex> lock(m_accessMutex);
    m_accessList.push_back(CAccess{std::string(path), uPosition, uSize});
}

GUtString CPackFile::AccessListName(const char* pcPackName)
{
    GUtString name(pcPackName ? pcPackName : "");
    const int iDot = name.ReverseFind('.');
    const int iSlash = std::max(name.ReverseFind('/'), name.ReverseFind('\\'));
    if (iDot > iSlash)
    {
        name = name.Left(iDot);
    }
    name += ".FAL";
    return name;
}

bool CPackFile::SaveAccessList()
{
    std::lock_guard<std::mutex> lock(m_accessMutex);
    const GUtString name = AccessListName(m_strFileName.c_str());
    GUtFile file;
    if (m_strFileName.IsEmpty() ||
        !file.Open(name.c_str(), GUtFile::MODE_ALWAYS | GUtFile::MODE_READ | GUtFile::MODE_WRITE, true))
    {
        GUtLog::Get().DisplayMsg(false, 1, "Save file access data error!", "Save file access data error!(%s)",
                                 name.c_str());
        return false;
    }
    GUtString line;
    for (const CAccess& access : m_accessList)
    {
        line = GUtString(access.path);
        line.AppendFormat(" %u %u\n", access.uPosition, access.uSize);
        file.WriteChars(line.c_str(), line.Length());
    }
    file.Close(true);
    return true;
}

} // namespace GLib::File
