#include "scene/SceneDiskFile.h"

#include "Utils/Utility/GUtFile.h"
#include "Utils/Utility/GUtPath.h"

#include <algorithm>
#include <atomic>
#include <cerrno>
#include <climits>
#include <filesystem>
#include <string>

#include <fcntl.h>
#include <strings.h>
#include <unistd.h>

namespace Ovrel
{

namespace
{
std::atomic<ReplaceFileHook> g_pReplaceHook{nullptr};

// Pieces of a save: small enough that the hook sees a large file in the middle.
constexpr int64_t WRITE_PIECE = 256 * 1024;

bool WriteAll(int iFd, const char* pcTempPath, const uint8_t* pData, int64_t iSize)
{
    int64_t iDone = 0;
    while (iDone < iSize)
    {
        int64_t iPiece = std::min(WRITE_PIECE, iSize - iDone);
        int64_t iInPiece = 0;
        while (iInPiece < iPiece)
        {
            ssize_t iWritten = write(iFd, pData + iDone + iInPiece, static_cast<size_t>(iPiece - iInPiece));
            if (iWritten < 0 && errno == EINTR)
            {
                continue;
            }
            if (iWritten <= 0)
            {
                return false;
            }
            iInPiece += iWritten;
        }
        iDone += iPiece;
        ReplaceFileHook pHook = g_pReplaceHook.load();
        if (pHook && iDone < iSize)
        {
            pHook(pcTempPath, iDone, iSize);
        }
    }
    return true;
}

// A rename is durable once the folder that holds the name is.
void SyncFolderOf(const std::string& strPath)
{
    std::filesystem::path folder = std::filesystem::path(strPath).parent_path();
    if (folder.empty())
    {
        folder = ".";
    }
    int iFd = open(folder.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC);
    if (iFd >= 0)
    {
        fsync(iFd);
        close(iFd);
    }
}
} // namespace

void SplitPath(const std::string& strPath, std::string& strFolder, std::string& strBase,
               std::string& strExtension)
{
    size_t iSlash = strPath.find_last_of("/\\");
    size_t iNameStart = iSlash == std::string::npos ? 0 : iSlash + 1;
    strFolder = strPath.substr(0, iNameStart);
    std::string strFile = strPath.substr(iNameStart);
    size_t iDot = strFile.find_last_of('.');
    if (iDot == std::string::npos)
    {
        strBase = strFile;
        strExtension.clear();
        return;
    }
    strBase = strFile.substr(0, iDot);
    strExtension = strFile.substr(iDot);
}

bool HasExtension(const std::string& strPath, const char* pcExtension)
{
    std::string strFolder, strBase, strExtension;
    SplitPath(strPath, strFolder, strBase, strExtension);
    return strcasecmp(strExtension.c_str(), pcExtension) == 0;
}

std::string JoinFolder(const std::string& strFolder, const std::string& strName)
{
    size_t iSlash = strFolder.find_last_of("/\\");
    char cSeparator = iSlash == std::string::npos ? '/' : strFolder[iSlash];
    std::string strOut = strFolder;
    if (!strOut.empty() && strOut.back() != '/' && strOut.back() != '\\')
    {
        strOut += cSeparator;
    }
    return strOut + strName + cSeparator;
}

void SetReplaceFileHook(ReplaceFileHook pHook)
{
    g_pReplaceHook.store(pHook);
}

bool ReadWholeFile(const char* pcPath, std::vector<uint8_t>& bytes)
{
    GUtFile file;
    if (!pcPath || !*pcPath ||
        !file.Open(pcPath, GUtFile::MODE_ALWAYS | GUtFile::MODE_BINARY | GUtFile::MODE_READ, true))
    {
        return false;
    }
    int64_t iSize = file.Size();
    if (iSize < 0 || iSize > INT32_MAX)
    {
        return false;
    }
    bytes.resize(static_cast<size_t>(iSize));
    return iSize == 0 || file.ReadRaw(bytes.data(), static_cast<int32_t>(iSize)) == iSize;
}

bool ReplaceFile(const char* pcPath, const uint8_t* pData, int32_t iSize)
{
    if (!pcPath || !*pcPath || iSize < 0 || (iSize > 0 && !pData))
    {
        return false;
    }
    // An existing file is replaced under its own spelling, whatever the case asked for.
    std::string strPath = GUtPath::ResolveForWrite(pcPath);
    std::string strTemp = strPath + ".tmp";
    int iFd = open(strTemp.c_str(), O_WRONLY | O_CREAT | O_TRUNC | O_CLOEXEC, 0644);
    if (iFd < 0)
    {
        return false;
    }
    bool bOk = WriteAll(iFd, strTemp.c_str(), pData, iSize);
    // The bytes must be on the disk before the name points at them.
    bOk = (fsync(iFd) == 0) && bOk;
    bOk = (close(iFd) == 0) && bOk;
    bOk = bOk && rename(strTemp.c_str(), strPath.c_str()) == 0;
    if (!bOk)
    {
        unlink(strTemp.c_str());
        return false;
    }
    SyncFolderOf(strPath);
    return true;
}

bool MakeFolder(const char* pcPath)
{
    if (!pcPath || !*pcPath)
    {
        return false;
    }
    std::string strPath = GUtPath::ResolveForWrite(pcPath);
    std::error_code error;
    std::filesystem::create_directories(strPath, error);
    return std::filesystem::is_directory(strPath, error);
}

} // namespace Ovrel
