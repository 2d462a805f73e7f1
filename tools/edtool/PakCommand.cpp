// edtool pak: list, extract, create and check ".PAK" pack files through CPackFile.
//   edtool pak list FILE.PAK           "<size> <path>" per entry, in directory order
//   edtool pak extract FILE.PAK DIR    every entry (and empty folder) under DIR
//   edtool pak create FILE.PAK DIR     a version 106 pack of DIR's files
//   edtool pak check FILE.PAK          reads every entry; 0 only for a sound pack
// The pack's own messages and the tool's errors go to standard error.
#include "tools/edtool/Commands.h"

#include "Utils/File/FileUtility.h"
#include "Utils/File/PackFile.h"
#include "Utils/Utility/GUtDebug.h"

#include <cinttypes>
#include <cstdio>
#include <cstring>
#include <functional>
#include <memory>
#include <string>
#include <vector>

using namespace GLib::File;

namespace
{
void PrintToStandardError(const char* pcText)
{
    fputs(pcText, stderr);
}

// Messages of the library go to standard error, and no log files are made.
void QuietLog()
{
    GUtOut::SetPrintFunction(&PrintToStandardError);
    GUtLog& log = GUtLog::Get();
    log.EnableMainFile(false);
    log.EnableWarningFile(false);
    log.EnableErrorFile(false);
    log.EnableCriticalFile(false);
    log.EnableMessageBox(false);
}

int Fail(const char* pcFormat, const std::string& a, const std::string& b = std::string())
{
    fputs("edtool pak: ", stderr);
    fprintf(stderr, pcFormat, a.c_str(), b.c_str());
    fputs("\n", stderr);
    return 1;
}

// Folders first, then files, as the directory holds them.
void Walk(const CSubDir* pDir, const std::function<void(const CSubDir*)>& onDir,
          const std::function<void(const CSubFileInfo*)>& onFile)
{
    for (const CSubDir* pChild : pDir->GetSubDirs())
    {
        onDir(pChild);
        Walk(pChild, onDir, onFile);
    }
    for (const CSubFileInfo* pInfo : pDir->GetFiles())
    {
        onFile(pInfo);
    }
}

bool ReadEntry(CPackFile& pack, const CSubFileInfo* pInfo, std::vector<uint8_t>& bytes)
{
    const std::string path(pInfo->GetFullName());
    std::unique_ptr<CSubFile> pFile(pack.OpenSubFile(("/" + path).c_str(), true));
    bytes.assign(pInfo->GetSize(), 0);
    return pFile && pFile->Read(bytes.data(), pInfo->GetSize()) == pInfo->GetSize();
}

// Loads read-only; the pack reports what is wrong with a file that is there.
bool Load(CPackFile& pack, const char* pcPack)
{
    if (!CFileUtility::FileExists(pcPack))
    {
        Fail("%s: no such file", pcPack);
        return false;
    }
    if (!pack.LoadFile(pcPack, true, true, true))
    {
        Fail("can't load %s", pcPack);
        return false;
    }
    return true;
}

int List(const char* pcPack)
{
    CPackFile pack;
    if (!Load(pack, pcPack))
    {
        return 1;
    }
    Walk(
        pack.GetRootDir(), [](const CSubDir*) {},
        [](const CSubFileInfo* pInfo)
        {
            printf("%" PRIu32 " %.*s\n", pInfo->GetSize(), static_cast<int>(pInfo->GetFullName().size()),
                   pInfo->GetFullName().data());
        });
    return 0;
}

int Extract(const char* pcPack, const char* pcFolder)
{
    CPackFile pack;
    if (!Load(pack, pcPack))
    {
        return 1;
    }
    const std::string root(pcFolder);
    int iStatus = 0;
    if (!CFileUtility::MakeFolders(root.c_str()))
    {
        return Fail("can't make folder %s", root);
    }
    std::vector<uint8_t> bytes;
    Walk(
        pack.GetRootDir(),
        [&](const CSubDir* pDir)
        {
            const std::string path = root + "/" + pDir->GetFullPath();
            if (iStatus == 0 && !CFileUtility::MakeFolders(path.c_str()))
            {
                iStatus = Fail("can't make folder %s", path);
            }
        },
        [&](const CSubFileInfo* pInfo)
        {
            const std::string path = root + "/" + std::string(pInfo->GetFullName());
            if (iStatus != 0)
            {
                return;
            }
            if (!ReadEntry(pack, pInfo, bytes))
            {
                iStatus = Fail("%s: can't read %s", pcPack, std::string(pInfo->GetFullName()));
            }
            else if (!CFileUtility::WriteWholeFile(path.c_str(), bytes.data(), bytes.size()))
            {
                iStatus = Fail("can't write %s", path);
            }
        });
    return iStatus;
}

int Create(const char* pcPack, const char* pcFolder)
{
    std::vector<std::string> files;
    std::vector<std::string> folders;
    if (!CFileUtility::FolderExists(pcFolder) || !CFileUtility::ListTree(pcFolder, files, folders))
    {
        return Fail("can't read folder %s", pcFolder);
    }
    CPackFile pack;
    for (const std::string& folder : folders)
    {
        if (!pack.AddDir(folder.c_str()))
        {
            return Fail("can't pack folder %s", folder);
        }
    }
    for (const std::string& file : files)
    {
        if (const CSubFileInfo* pTwin = pack.FindFile(("/" + file).c_str()))
        {
            // Names in a pack are found regardless of case: one of the two would be lost.
            return Fail("%s and %s differ only in case", std::string(pTwin->GetFullName()), file);
        }
        auto pSource = std::make_unique<CDiskSubFileSource>((std::string(pcFolder) + "/" + file).c_str());
        if (!pSource->Exists() || !pack.AddFile(file.c_str(), std::move(pSource)))
        {
            return Fail("can't pack %s", file);
        }
    }
    if (!pack.SaveFile(pcPack))
    {
        return Fail("can't write %s", pcPack);
    }
    return 0;
}

int Check(const char* pcPack)
{
    CPackFile pack;
    if (!Load(pack, pcPack))
    {
        return 1;
    }
    int iProblems = 0;
    uint64_t uFileSize = 0;
    CFileUtility::GetFileSize(pcPack, uFileSize);
    const CHeader& header = pack.GetHeader();
    if (header.FileSize() != uFileSize)
    {
        Fail("%s: the header gives the file size %s", pcPack,
             std::to_string(header.FileSize()) + ", the file has " + std::to_string(uFileSize) + " bytes");
        ++iProblems;
    }
    uint64_t uDataSize = 0;
    size_t uCount = 0;
    std::vector<uint8_t> bytes;
    Walk(
        pack.GetRootDir(), [](const CSubDir*) {},
        [&](const CSubFileInfo* pInfo)
        {
            ++uCount;
            uDataSize += pInfo->GetSize();
            if (!ReadEntry(pack, pInfo, bytes))
            {
                Fail("%s: can't read %s", pcPack, std::string(pInfo->GetFullName()));
                ++iProblems;
            }
        });
    if (header.Version() == CHeader::CURRENT_VERSION && header.DataSize() != uDataSize)
    {
        Fail("%s: the header gives the data size %s", pcPack,
             std::to_string(header.DataSize()) + ", the entries hold " + std::to_string(uDataSize) +
                 " bytes");
        ++iProblems;
    }
    if (iProblems)
    {
        return 1;
    }
    printf("ok: %zu files, %" PRIu64 " bytes\n", uCount, uDataSize);
    return 0;
}

int Usage()
{
    fprintf(stderr, "%s\n", PAK_USAGE);
    return 2;
}
} // namespace

int PakMain(int argc, char** argv)
{
    QuietLog();
    if (argc < 3)
    {
        return Usage();
    }
    const std::string verb = argv[1];
    if (verb == "list" && argc == 3)
    {
        return List(argv[2]);
    }
    if (verb == "check" && argc == 3)
    {
        return Check(argv[2]);
    }
    if (verb == "extract" && argc == 4)
    {
        return Extract(argv[2], argv[3]);
    }
    if (verb == "create" && argc == 4)
    {
        return Create(argv[2], argv[3]);
    }
    return Usage();
}
