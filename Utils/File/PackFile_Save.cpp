// CPackFile: saving. A pack is always written whole to "<target>__" and renamed into place,
// so a failed save leaves the old file as it was.
#include "Utils/File/FileUtility.h"
#include "Utils/File/PackFile.h"
#include "Utils/File/Posix/FileIOImpl_Posix.h"
#include "Utils/Utility/GUtDebug.h"
#include "Utils/Utility/GUtPath.h"

#include <algorithm>
#include <cstdio>
#include <unistd.h>
#include <zlib.h>

namespace GLib::File
{

namespace
{
const char* const SAVE_TITLE = "CPackFile::SaveFile()!";
constexpr uint32_t COPY_BLOCK = 4096;

void PutU32(std::vector<uint8_t>& out, uint32_t u)
{
    const uint8_t a[4] = {static_cast<uint8_t>(u), static_cast<uint8_t>(u >> 8),
                          static_cast<uint8_t>(u >> 16), static_cast<uint8_t>(u >> 24)};
    out.insert(out.end(), a, a + 4);
}

void PutName(std::vector<uint8_t>& out, std::string_view name)
{
    out.insert(out.end(), name.begin(), name.end());
    out.push_back(0);
}
} // namespace

bool CPackFile::SaveFile(const char* pcPath)
{
    GUT_ASSERT(m_bReadOnly == false && "Read only mode should not call SaveFile()");
    const std::string path = GUtPath::ToSlashes(pcPath ? pcPath : "");
    const std::string target =
        path.empty() ? std::string(m_strFileName.View()) : GUtPath::ResolveForWrite(path);
    const bool bOwnFile = !m_strFileName.IsEmpty() && target == m_strFileName.View();
    if (target.empty())
    {
        return false;
    }
    const std::string temporary = target + "__";
    const std::string folder = GUtPath::FolderOf(target);
    if (!folder.empty())
    {
        CFileUtility::MakeFolders(folder.c_str());
    }
    if (!_WritePack(temporary.c_str(), target.c_str()))
    {
        ::unlink(temporary.c_str());
        return false;
    }
    if (!bOwnFile)
    {
        if (std::rename(temporary.c_str(), target.c_str()) != 0)
        {
            GUtLog::Get().DisplayMsg(false, 1, SAVE_TITLE, "Create file - %s fail", target.c_str());
            ::unlink(temporary.c_str());
            return false;
        }
        return true;
    }
    // Replace our own file, then read it back: offsets and sources now come from the new file.
    const GUtString name = m_strFileName;
    const bool bAsync = m_bAsync;
    Close();
    if (std::rename(temporary.c_str(), name.c_str()) != 0)
    {
        GUtLog::Get().DisplayMsg(false, 1, SAVE_TITLE,
                                 "Remove file fail, maybe someone are accessing this file - %s",
                                 name.c_str());
        LoadFile(name.c_str(), false, bAsync, true);
        return false;
    }
    return LoadFile(name.c_str(), false, bAsync, true);
}

uint64_t CPackFile::_AssignDataPositions()
{
    uint64_t uPosition = 0;
    for (CSubFileInfo* pInfo : m_orderedInfos)
    {
        pInfo->m_uDataPos = static_cast<uint32_t>(std::min<uint64_t>(uPosition, UINT32_MAX));
        uPosition += pInfo->GetSize();
    }
    return uPosition;
}

void CPackFile::_SortTree(CSubDir* pDir)
{
    std::sort(pDir->m_subDirs.begin(), pDir->m_subDirs.end(),
              [](const CSubDir* a, const CSubDir* b)
              { return CPathMap::CompareUpper(a->GetName(), b->GetName()) < 0; });
    std::sort(pDir->m_files.begin(), pDir->m_files.end(),
              [](const CSubFileInfo* a, const CSubFileInfo* b)
              { return CPathMap::CompareUpper(a->GetName(), b->GetName()) < 0; });
    for (CSubDir* pChild : pDir->m_subDirs)
    {
        _SortTree(pChild);
    }
}

size_t CPackFile::_DirSegSize(const CSubDir* pDir) const
{
    size_t uSize = 8 + pDir->GetName().size() + 1;
    for (const CSubDir* pChild : pDir->m_subDirs)
    {
        uSize += _DirSegSize(pChild);
    }
    for (const CSubFileInfo* pInfo : pDir->m_files)
    {
        uSize += 8 + pInfo->GetName().size() + 1;
    }
    return uSize;
}

void CPackFile::_WriteDir(const CSubDir* pDir, std::vector<uint8_t>& out) const
{
    PutU32(out, static_cast<uint32_t>(pDir->m_subDirs.size()));
    PutU32(out, static_cast<uint32_t>(pDir->m_files.size()));
    PutName(out, pDir->GetName());
    for (const CSubDir* pChild : pDir->m_subDirs)
    {
        _WriteDir(pChild, out);
    }
    for (const CSubFileInfo* pInfo : pDir->m_files)
    {
        PutU32(out, pInfo->m_uDataPos);
        PutU32(out, pInfo->GetSize());
        PutName(out, pInfo->GetName());
    }
}

bool CPackFile::_WritePack(const char* pcTemporary, const char* pcTarget)
{
    const uint64_t uDataSize = _AssignDataPositions();
    _SortTree(m_pRootDir);

    CHeader header = m_Header;
    const size_t nDirSize = _DirSegSize(m_pRootDir);
    header.SetLayout(static_cast<uint32_t>(nDirSize), 0, 0);
    std::vector<uint8_t> dir;
    dir.reserve(nDirSize);
    _WriteDir(m_pRootDir, dir);
    GUT_ASSERT(dir.size() == header.DirSegSize());

    // A directory that doesn't shrink still fits: the buffer is zlib's bound, not its size.
    uLongf uPackedSize = compressBound(static_cast<uLong>(dir.size()));
    std::vector<uint8_t> packed(uPackedSize);
    const bool bCompressed =
        compress(packed.data(), &uPackedSize, dir.data(), static_cast<uLong>(dir.size())) == Z_OK;
    const uint64_t uTotal = CHeader::HEADER_SIZE + uint64_t(uPackedSize) + uDataSize;
    CFileIOImpl_Posix out;
    if (!bCompressed || uTotal > UINT32_MAX || !out.CreateFile(pcTemporary, uTotal))
    {
        GUtLog::Get().DisplayMsg(false, 1, SAVE_TITLE, "Create file - %s fail", pcTarget);
        return false;
    }
    header.SetLayout(static_cast<uint32_t>(dir.size()), static_cast<uint32_t>(uPackedSize),
                     static_cast<uint32_t>(uDataSize));
    std::unique_ptr<IFileSection> pHeaderSection(out.CreateSection(0, CHeader::HEADER_SIZE));
    bool bOk = header.Save(pHeaderSection.get()) &&
               out.Write(packed.data(), static_cast<uint32_t>(uPackedSize), header.DirOffset(),
                         static_cast<uint32_t>(uPackedSize)) == uPackedSize;
    if (!bOk)
    {
        GUtLog::Get().DisplayMsg(false, 1, SAVE_TITLE, "Create file - %s fail", pcTarget);
        return false;
    }
    for (CSubFileInfo* pInfo : m_orderedInfos)
    {
        if (!_CopyEntry(out, header.DataOffset(), *pInfo, pcTarget))
        {
            return false;
        }
    }
    return true;
}

bool CPackFile::_CopyEntry(IFileIO& target, uint64_t uDataOffset, CSubFileInfo& info, const char* pcTarget)
{
    uint8_t acBuffer[COPY_BLOCK];
    const uint32_t uSize = info.GetSize();
    ISubFileSource* pSource = info.GetReplacement();
    bool bOk = true;
    for (uint32_t uDone = 0; uDone < uSize;)
    {
        const uint32_t nReadSize = std::min(COPY_BLOCK, uSize - uDone);
        uint32_t nSizeRead = 0;
        if (pSource)
        {
            // A replacement is outside the pack (a file on disk may have gone): a failure,
            // not a fault.
            nSizeRead = pSource->Read(acBuffer, uDone, nReadSize);
            if (nSizeRead != nReadSize)
            {
                GUtLog::Get().DisplayMsg(false, 1, SAVE_TITLE, "Read file - %.*s fail",
                                         static_cast<int>(info.GetFullName().size()),
                                         info.GetFullName().data());
                bOk = false;
                break;
            }
        }
        else
        {
            nSizeRead = m_pFileIO->Read(acBuffer, COPY_BLOCK, info.m_uOffset + uDone, nReadSize);
            GUT_ASSERT(nSizeRead == nReadSize);
        }
        if (target.Write(acBuffer, COPY_BLOCK, uDataOffset + info.m_uDataPos + uDone, nSizeRead) != nSizeRead)
        {
            GUtLog::Get().DisplayMsg(false, 1, SAVE_TITLE, "Create file - %s fail", pcTarget);
            bOk = false;
            break;
        }
        uDone += nSizeRead;
    }
    if (pSource)
    {
        pSource->Release();
    }
    return bOk;
}

} // namespace GLib::File
