// Fuzzes the pack header and directory: every input is written as a ".PAK" and loaded. A
// pack that loads must keep its own promises: every entry is found under its name, reads
// back its size without leaving the file, and a writable copy saves and loads again alike.
#include "Utils/File/PackFile.h"
#include "fuzz/FuzzUtil.h"

#include <cstdlib>
#include <functional>
#include <memory>
#include <unistd.h>
#include <vector>

using namespace GLib::File;

namespace
{
void Check(bool bCondition)
{
    if (!bCondition)
    {
        abort();
    }
}

void ForEachFile(const CSubDir* pDir, const std::function<void(const CSubFileInfo*)>& visit)
{
    for (const CSubDir* pChild : pDir->GetSubDirs())
    {
        ForEachFile(pChild, visit);
    }
    for (const CSubFileInfo* pInfo : pDir->GetFiles())
    {
        visit(pInfo);
    }
}

size_t ReadEverything(CPackFile& pack)
{
    size_t uCount = 0;
    std::vector<uint8_t> buffer;
    ForEachFile(pack.GetRootDir(),
                [&](const CSubFileInfo* pInfo)
                {
                    ++uCount;
                    const std::string path = "/" + std::string(pInfo->GetFullName());
                    Check(pack.FindFile(path.c_str()) == pInfo);
                    std::unique_ptr<CSubFile> pFile(pack.OpenSubFile(path.c_str(), true));
                    Check(pFile != nullptr);
                    buffer.resize(pInfo->GetSize());
                    Check(pFile->Read(buffer.data(), pInfo->GetSize()) == pInfo->GetSize());
                });
    return uCount;
}
} // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* pData, size_t uSize)
{
    static const std::string s_input = FuzzUtil::ScratchPath("input.PAK");
    static const std::string s_copy = FuzzUtil::ScratchPath("copy.PAK");
    static bool s_bInit = (FuzzUtil::QuietLog(), true);
    (void)s_bInit;
    if (!FuzzUtil::WriteInput(s_input, pData, uSize))
    {
        return 0;
    }
    // Both file IOs, by the input's length.
    const bool bMapped = uSize % 2 == 0;
    CPackFile pack(bMapped ? CPackFile::FILE_IO_MAP_VIEW : CPackFile::FILE_IO_READ);
    if (!pack.LoadFile(s_input.c_str(), false, false, true))
    {
        Check(!pack.IsOpen() && pack.GetFileCount() == 0);
        return 0;
    }
    const size_t uCount = ReadEverything(pack);
    Check(uCount == pack.GetFileCount());
    Check(pack.SaveFile(s_copy.c_str()));
    CPackFile copy;
    Check(copy.LoadFile(s_copy.c_str(), true, false, true));
    Check(ReadEverything(copy) == uCount);
    ::unlink(s_copy.c_str());
    return 0;
}
