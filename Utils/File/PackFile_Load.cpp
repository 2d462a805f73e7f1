// CPackFile: loading the header and the directory. Every count, name and range read from
// the file is checked against the bytes that are really there before anything is built, so
// a corrupt pack is refused with its message and never read outside the file.
#include "Utils/File/PackFile.h"
#include "Utils/File/Posix/FileIOImpl_Posix.h"
#include "Utils/File/Posix/FileIOImpl_PosixMapView.h"
#include "Utils/Utility/GUtDebug.h"
#include "Utils/Utility/GUtInflate.h"
#include "Utils/Utility/GUtPath.h"

#include <algorithm>
#include <cstring>

namespace GLib::File
{

namespace
{
// Deeper folder chains are taken for corruption: no data tree nests this far.
constexpr int MAX_DIR_DEPTH = 128;
constexpr size_t FILE_RECORD_MIN = 9; // offset, size, an empty name's NUL

const char* const LOAD_TITLE = "CPackFile::LoadFile()!";
const char* const HEADER_ERROR_TITLE = "CPackFile::_LoadHeaderSegment error!";
const char* const DIR_ERROR_TITLE = "CPackFile::_LoadSubDirSegment error!";

bool IsPlainName(std::string_view name)
{
    return !name.empty() && name != "." && name != ".." && name.find('/') == std::string_view::npos &&
           name.find('\\') == std::string_view::npos;
}
} // namespace

// Reads a directory segment twice: Scan checks it and counts what it holds, Build then
// makes the tree in storage sized by the scan.
class CDirReader
{
public:
    CDirReader(const std::vector<uint8_t>& dir, bool bOld, uint64_t uOffsetBase, uint64_t uFileSize)
        : m_dir(dir), m_bOld(bOld), m_uOffsetBase(uOffsetBase), m_uFileSize(uFileSize)
    {
    }

    bool Scan()
    {
        m_pPack = nullptr;
        m_uPos = 0;
        return _Folder(0, nullptr) && m_uPos == m_dir.size();
    }

    bool Build(CPackFile& pack)
    {
        m_pPack = &pack;
        m_uPos = 0;
        pack.m_pLoadedInfos.reset(new CSubFileInfo[m_uFiles]);
        pack.m_pNames.reset(new char[m_uNameBytes + 1]);
        pack.m_map.Reserve(m_uFiles);
        if (!pack.m_bReadOnly)
        {
            pack.m_orderedInfos.reserve(m_uFiles);
        }
        m_uNextInfo = 0;
        m_uNameUsed = 0;
        return _Folder(0, pack.m_pRootDir);
    }

private:
    bool _U32(uint32_t& u)
    {
        if (m_dir.size() - m_uPos < 4)
        {
            return false;
        }
        const uint8_t* p = m_dir.data() + m_uPos;
        u = static_cast<uint32_t>(p[0]) | static_cast<uint32_t>(p[1]) << 8 |
            static_cast<uint32_t>(p[2]) << 16 | static_cast<uint32_t>(p[3]) << 24;
        m_uPos += 4;
        return true;
    }

    bool _Name(std::string_view& name)
    {
        const uint8_t* pStart = m_dir.data() + m_uPos;
        const void* pEnd = memchr(pStart, 0, m_dir.size() - m_uPos);
        if (!pEnd)
        {
            return false;
        }
        name = std::string_view(reinterpret_cast<const char*>(pStart),
                                static_cast<const uint8_t*>(pEnd) - pStart);
        m_uPos += name.size() + 1;
        return true;
    }

    // pDir is the folder being read when building, null when scanning.
    bool _Folder(int iDepth, CSubDir* pDir)
    {
        uint32_t uUnused = 0, uNumSubDirs = 0, uNumFiles = 0;
        std::string_view name;
        if (iDepth > MAX_DIR_DEPTH || (m_bOld && !_U32(uUnused)) || !_U32(uNumSubDirs) || !_U32(uNumFiles) ||
            !_Name(name))
        {
            return false;
        }
        const size_t uFolderMin = m_bOld ? 13 : 9;
        const uint64_t uNeeded = uint64_t(uNumSubDirs) * uFolderMin + uint64_t(uNumFiles) * FILE_RECORD_MIN;
        if ((iDepth > 0 && !IsPlainName(name)) || uNeeded > m_dir.size() - m_uPos)
        {
            return false;
        }
        const size_t uPathLength = m_path.size();
        if (iDepth > 0)
        {
            m_path += m_path.empty() ? "" : "/";
            m_path += name;
        }
        if (pDir)
        {
            pDir->m_subDirs.reserve(uNumSubDirs);
            pDir->m_files.reserve(uNumFiles);
        }
        for (uint32_t i = 0; i < uNumSubDirs; ++i)
        {
            if (!_SubFolder(iDepth, pDir))
            {
                return false;
            }
        }
        for (uint32_t i = 0; i < uNumFiles; ++i)
        {
            if (!_File(pDir))
            {
                return false;
            }
        }
        m_path.resize(uPathLength);
        return true;
    }

    bool _SubFolder(int iDepth, CSubDir* pDir)
    {
        CSubDir* pChild = nullptr;
        if (pDir)
        {
            // The child's name is read again by _Folder; peek at it here to name the folder.
            size_t uNameAt = m_uPos + (m_bOld ? 12 : 8);
            std::string_view name(reinterpret_cast<const char*>(m_dir.data() + uNameAt));
            pChild = m_pPack->_NewDir(pDir, name);
        }
        else
        {
            ++m_uDirs;
        }
        return _Folder(iDepth + 1, pChild);
    }

    bool _File(CSubDir* pDir)
    {
        uint32_t uOffset = 0, uSize = 0;
        std::string_view name;
        if (!_U32(uOffset) || !_U32(uSize) || !_Name(name) || !IsPlainName(name))
        {
            return false;
        }
        const uint64_t uStart = m_uOffsetBase + uOffset;
        if (uStart > m_uFileSize || uSize > m_uFileSize - uStart)
        {
            return false;
        }
        const size_t uFullLength = m_path.size() + (m_path.empty() ? 0 : 1) + name.size();
        if (!pDir)
        {
            ++m_uFiles;
            m_uNameBytes += uFullLength + 1;
            return true;
        }
        char* pcName = m_pPack->m_pNames.get() + m_uNameUsed;
        memcpy(pcName, m_path.data(), m_path.size());
        char* pcLeaf = pcName + m_path.size() + (m_path.empty() ? 0 : 1);
        if (!m_path.empty())
        {
            pcLeaf[-1] = '/';
        }
        memcpy(pcLeaf, name.data(), name.size());
        pcName[uFullLength] = 0;
        m_uNameUsed += uFullLength + 1;

        CSubFileInfo* pInfo = &m_pPack->m_pLoadedInfos[m_uNextInfo++];
        pInfo->m_fullName = std::string_view(pcName, uFullLength);
        pInfo->m_uNameStart = static_cast<uint32_t>(pcLeaf - pcName);
        pInfo->m_pParent = pDir;
        pInfo->m_uOffset = uStart;
        pInfo->m_uSize = uSize;
        pDir->m_files.push_back(pInfo);
        const bool bInserted = m_pPack->m_map.Insert(pInfo);
#ifdef FUZZING_BUILD_MODE_UNSAFE_FOR_PRODUCTION
        // Fuzzing explores past the duplicate-path assertion instead of stopping at it.
        if (!bInserted)
        {
            return false;
        }
#endif
        GUT_ASSERT(bInserted);
        if (!m_pPack->m_bReadOnly)
        {
            m_pPack->m_orderedInfos.push_back(pInfo);
        }
        return true;
    }

    const std::vector<uint8_t>& m_dir;
    bool m_bOld;
    uint64_t m_uOffsetBase;
    uint64_t m_uFileSize;
    CPackFile* m_pPack = nullptr;
    size_t m_uPos = 0;
    std::string m_path;
    size_t m_uDirs = 0;
    size_t m_uFiles = 0;
    size_t m_uNameBytes = 0;
    size_t m_uNextInfo = 0;
    size_t m_uNameUsed = 0;
};

bool CPackFile::LoadFile(const char* pcPath, bool bReadOnly, bool bAsync, bool bQuiet)
{
    Close();
    std::string path;
    if (!pcPath || !*pcPath || !GUtPath::ResolveExisting(pcPath, path))
    {
        return false;
    }
    m_bReadOnly = bReadOnly;
    m_bAsync = bAsync;
    m_strFileName = path.c_str();
    if (m_eFileIOKind == FILE_IO_READ)
    {
        m_pFileIO = std::make_unique<CFileIOImpl_Posix>();
    }
    else
    {
        m_pFileIO = std::make_unique<CFileIOImpl_PosixMapView>();
    }
    if (!m_pFileIO->OpenFile(path.c_str(), false, bAsync))
    {
        GUtLog::Get().DisplayMsg(!bQuiet, 1, LOAD_TITLE, "Open file - %s fail", path.c_str());
        Close();
        return false;
    }
    if (!_LoadHeaderSegment(bQuiet) || !_LoadSubDirSegment())
    {
        Close();
        return false;
    }
    ChangeDir("/");
    if (!m_bReadOnly)
    {
        std::sort(m_orderedInfos.begin(), m_orderedInfos.end(),
                  [](const CSubFileInfo* a, const CSubFileInfo* b) {
                      return a->m_uOffset != b->m_uOffset ? a->m_uOffset < b->m_uOffset
                                                          : a->m_fullName < b->m_fullName;
                  });
    }
    return true;
}

bool CPackFile::_LoadHeaderSegment(bool bQuiet)
{
    std::unique_ptr<IFileSection> pSection(m_pFileIO->CreateSection(0, CHeader::HEADER_SIZE));
    if (!pSection || pSection->Size() == 0 || !m_Header.Load(pSection.get()))
    {
        GUtLog::Get().DisplayMsg(!bQuiet, 1, HEADER_ERROR_TITLE, "Load pack file's header fail(%s)",
                                 m_strFileName.c_str());
        return false;
    }
    if (m_Header.Version() > CHeader::CURRENT_VERSION)
    {
        GUtLog::Get().DisplayMsg(!bQuiet, 1, HEADER_ERROR_TITLE,
                                 "The pack file(%s)'s format is incorrect, the file can not be loaded",
                                 m_strFileName.c_str());
        return false;
    }
    if (m_Header.Version() < CHeader::CURRENT_VERSION)
    {
        GUtLog::Get().DisplayMsg(
            false, 2, "CPackFile::_LoadHeaderSegment warning!",
            "The pack file(%s) is an old version(file: %d, current:%d), you should repack it",
            m_strFileName.c_str(), static_cast<int>(m_Header.Version()),
            static_cast<int>(CHeader::CURRENT_VERSION));
    }
    const uint64_t uFileSize = m_pFileIO->FileSize();
    const bool bDirInside = uint64_t(m_Header.DirOffset()) + m_Header.DirPackedSize() <= uFileSize;
    const bool bDataInside =
        m_Header.Version() < CHeader::CURRENT_VERSION || m_Header.DataOffset() <= uFileSize;
    if (!bDirInside || !bDataInside)
    {
        GUtLog::Get().DisplayMsg(!bQuiet, 1, HEADER_ERROR_TITLE, "Load pack file's header fail(%s)",
                                 m_strFileName.c_str());
        return false;
    }
    return true;
}

bool CPackFile::_ReadDirBytes(std::vector<uint8_t>& dir)
{
    const uint32_t uStored = m_Header.DirPackedSize();
    if (uStored == 0)
    {
        return false;
    }
    std::unique_ptr<IFileSection> pSection(m_pFileIO->CreateSection(m_Header.DirOffset(), uStored));
    std::vector<uint8_t> stored(uStored);
    if (!pSection || pSection->Read(stored.data(), uStored, 0, uStored) != uStored)
    {
        return false;
    }
    if (m_Header.Version() < CHeader::CURRENT_VERSION)
    {
        dir.swap(stored);
        return true;
    }
    return GUtInflateExact(stored.data(), stored.size(), m_Header.DirSegSize(), dir) == EGUtInflate::OK;
}

bool CPackFile::_LoadSubDirSegment()
{
    std::vector<uint8_t> dir;
    const bool bOld = m_Header.Version() < CHeader::CURRENT_VERSION;
    CDirReader reader(dir, bOld, bOld ? 0 : m_Header.DataOffset(), m_pFileIO->FileSize());
    if (!_ReadDirBytes(dir) || !reader.Scan() || !reader.Build(*this))
    {
        GUtLog::Get().DisplayMsg(false, 1, DIR_ERROR_TITLE, "Load Dir segment error in pack file(%s)",
                                 m_strFileName.c_str());
        return false;
    }
    return true;
}

} // namespace GLib::File
