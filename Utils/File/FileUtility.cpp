#include "Utils/File/FileUtility.h"

#include "Utils/Utility/GUtFile.h"
#include "Utils/Utility/GUtPath.h"

#include <algorithm>
#include <cerrno>
#include <cstdio>
#include <dirent.h>
#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

namespace GLib::File
{

namespace
{
bool StatResolved(const char* pcPath, struct stat& st, std::string& resolved)
{
    return pcPath && GUtPath::ResolveExisting(pcPath, resolved) && ::stat(resolved.c_str(), &st) == 0;
}

bool ListFolder(const std::string& root, const std::string& relative, std::vector<std::string>& files,
                std::vector<std::string>& folders, int iDepth)
{
    const std::string folder = relative.empty() ? root : root + "/" + relative;
    DIR* pDir = ::opendir(folder.c_str());
    if (!pDir || iDepth > 256)
    {
        if (pDir)
        {
            ::closedir(pDir);
        }
        return false;
    }
    std::vector<std::pair<std::string, bool>> entries;
    while (dirent* pEntry = ::readdir(pDir))
    {
        const std::string name = pEntry->d_name;
        struct stat st;
        if (name == "." || name == ".." || ::lstat((folder + "/" + name).c_str(), &st) != 0)
        {
            continue;
        }
        if (S_ISREG(st.st_mode) || S_ISDIR(st.st_mode))
        {
            entries.emplace_back(name, S_ISDIR(st.st_mode));
        }
    }
    ::closedir(pDir);
    std::sort(entries.begin(), entries.end());
    for (const auto& [name, bFolder] : entries)
    {
        const std::string path = relative.empty() ? name : relative + "/" + name;
        if (!bFolder)
        {
            files.push_back(path);
            continue;
        }
        folders.push_back(path);
        if (!ListFolder(root, path, files, folders, iDepth + 1))
        {
            return false;
        }
    }
    return true;
}
} // namespace

bool CFileUtility::FileExists(const char* pcPath)
{
    struct stat st;
    std::string resolved;
    return StatResolved(pcPath, st, resolved) && S_ISREG(st.st_mode);
}

bool CFileUtility::FolderExists(const char* pcPath)
{
    struct stat st;
    std::string resolved;
    return StatResolved(pcPath, st, resolved) && S_ISDIR(st.st_mode);
}

bool CFileUtility::GetFileSize(const char* pcPath, uint64_t& uSize)
{
    struct stat st;
    std::string resolved;
    if (!StatResolved(pcPath, st, resolved) || !S_ISREG(st.st_mode))
    {
        return false;
    }
    uSize = static_cast<uint64_t>(st.st_size);
    return true;
}

bool CFileUtility::RemoveFile(const char* pcPath)
{
    std::string resolved;
    return pcPath && GUtPath::ResolveExisting(pcPath, resolved) && ::unlink(resolved.c_str()) == 0;
}

bool CFileUtility::RenameFile(const char* pcFrom, const char* pcTo)
{
    std::string from;
    if (!pcFrom || !pcTo || !GUtPath::ResolveExisting(pcFrom, from))
    {
        return false;
    }
    return std::rename(from.c_str(), GUtPath::ResolveForWrite(pcTo).c_str()) == 0;
}

bool CFileUtility::MakeFolders(const char* pcFolder)
{
    if (!pcFolder || !*pcFolder)
    {
        return true;
    }
    return GUtCreateFolderChain(GUtPath::ResolveForWrite(pcFolder).c_str());
}

bool CFileUtility::ReadWholeFile(const char* pcPath, std::vector<uint8_t>& bytes)
{
    std::string resolved;
    if (!pcPath || !GUtPath::ResolveExisting(pcPath, resolved))
    {
        return false;
    }
    FILE* pFile = std::fopen(resolved.c_str(), "rb");
    if (!pFile)
    {
        return false;
    }
    bytes.clear();
    uint8_t acBuffer[65536];
    size_t n = 0;
    while ((n = std::fread(acBuffer, 1, sizeof(acBuffer), pFile)) > 0)
    {
        bytes.insert(bytes.end(), acBuffer, acBuffer + n);
    }
    const bool bOk = !std::ferror(pFile);
    std::fclose(pFile);
    return bOk;
}

bool CFileUtility::WriteWholeFile(const char* pcPath, const void* pData, size_t uSize)
{
    if (!pcPath || !*pcPath)
    {
        return false;
    }
    const std::string target = GUtPath::ResolveForWrite(pcPath);
    const std::string folder = GUtPath::FolderOf(target);
    if (!folder.empty() && !GUtCreateFolderChain(folder.c_str()))
    {
        return false;
    }
    const std::string temporary = target + "__";
    FILE* pFile = std::fopen(temporary.c_str(), "wb");
    if (!pFile)
    {
        return false;
    }
    bool bOk = uSize == 0 || std::fwrite(pData, 1, uSize, pFile) == uSize;
    bOk = (std::fclose(pFile) == 0) && bOk;
    if (!bOk || std::rename(temporary.c_str(), target.c_str()) != 0)
    {
        ::unlink(temporary.c_str());
        return false;
    }
    return true;
}

bool CFileUtility::ListTree(const char* pcFolder, std::vector<std::string>& files,
                            std::vector<std::string>& folders)
{
    std::string root;
    if (!pcFolder || !GUtPath::ResolveExisting(pcFolder, root))
    {
        return false;
    }
    files.clear();
    folders.clear();
    return ListFolder(root, std::string(), files, folders, 0);
}

} // namespace GLib::File
