#include "Utils/File/SubFile.h"

#include "Utils/File/PackFile.h"
#include "Utils/File/PathMap.h"
#include "Utils/Utility/GUtPath.h"
#include "Utils/Utility/GUtTimeCountInfo.h"

#include <algorithm>
#include <cerrno>
#include <cstring>
#include <fcntl.h>
#include <string>
#include <sys/stat.h>
#include <unistd.h>

namespace GLib::File
{

// ---------------------------------------------------------------------------------------
// Replacement sources

CMemorySubFileSource::CMemorySubFileSource(const void* pData, uint32_t uSize)
    : m_data(static_cast<const uint8_t*>(pData), static_cast<const uint8_t*>(pData) + uSize)
{
}

uint32_t CMemorySubFileSource::Read(void* pBuffer, uint32_t uOffset, uint32_t uCount)
{
    if (uOffset >= m_data.size())
    {
        return 0;
    }
    const uint32_t uRead = std::min<uint32_t>(uCount, static_cast<uint32_t>(m_data.size()) - uOffset);
    memcpy(pBuffer, m_data.data() + uOffset, uRead);
    return uRead;
}

uint32_t CMemorySubFileSource::Write(const void* pBuffer, uint32_t uOffset, uint32_t uCount)
{
    const uint64_t uEnd = static_cast<uint64_t>(uOffset) + uCount;
    if (uEnd > UINT32_MAX)
    {
        return 0;
    }
    if (uEnd > m_data.size())
    {
        m_data.resize(uEnd);
    }
    memcpy(m_data.data() + uOffset, pBuffer, uCount);
    return uCount;
}

CDiskSubFileSource::CDiskSubFileSource(const char* pcPath)
{
    std::string path;
    m_bExists = GUtPath::ResolveExisting(pcPath ? pcPath : "", path);
    m_strPath = path.c_str();
    struct stat st;
    if (m_bExists && (::stat(path.c_str(), &st) != 0 || !S_ISREG(st.st_mode) || st.st_size > UINT32_MAX))
    {
        m_bExists = false;
    }
    m_uSize = m_bExists ? static_cast<uint32_t>(st.st_size) : 0;
}

CDiskSubFileSource::~CDiskSubFileSource()
{
    Release();
}

uint32_t CDiskSubFileSource::Read(void* pBuffer, uint32_t uOffset, uint32_t uCount)
{
    if (!m_bExists || uOffset >= m_uSize)
    {
        return 0;
    }
    if (m_iHandle < 0)
    {
        m_iHandle = ::open(m_strPath.c_str(), O_RDONLY | O_CLOEXEC);
        if (m_iHandle < 0)
        {
            return 0;
        }
    }
    uCount = std::min(uCount, m_uSize - uOffset);
    uint32_t uDone = 0;
    while (uDone < uCount)
    {
        ssize_t n = ::pread(m_iHandle, static_cast<char*>(pBuffer) + uDone, uCount - uDone, uOffset + uDone);
        if (n < 0 && errno == EINTR)
        {
            continue;
        }
        if (n <= 0)
        {
            break;
        }
        uDone += static_cast<uint32_t>(n);
    }
    return uDone;
}

void CDiskSubFileSource::Release()
{
    if (m_iHandle >= 0)
    {
        ::close(m_iHandle);
        m_iHandle = -1;
    }
}

// ---------------------------------------------------------------------------------------
// CSubFileInfo, CSubDir

void CSubFileInfo::SetFullName(std::string_view fullName)
{
    m_strOwnedName = GUtString(fullName);
    m_fullName = m_strOwnedName.View();
    const size_t uSlash = m_fullName.rfind('/');
    m_uNameStart = uSlash == std::string_view::npos ? 0 : static_cast<uint32_t>(uSlash + 1);
}

CSubDir::CSubDir(CPackFile* pPack, CSubDir* pParent, std::string_view name)
    : m_strOwnedName(name), m_pPack(pPack), m_pParent(pParent)
{
    m_name = m_strOwnedName.View();
}

CSubDir* CSubDir::FindSubDir(std::string_view name) const
{
    for (CSubDir* pDir : m_subDirs)
    {
        if (CPathMap::EqualNoCase(pDir->m_name, name))
        {
            return pDir;
        }
    }
    return nullptr;
}

std::string CSubDir::GetFullPath() const
{
    std::string path;
    for (const CSubDir* pDir = this; pDir && pDir->m_pParent; pDir = pDir->m_pParent)
    {
        path.insert(0, pDir->m_name);
        if (pDir->m_pParent->m_pParent)
        {
            path.insert(0, "/");
        }
    }
    return path;
}

// ---------------------------------------------------------------------------------------
// CSubFile

CSubFile::CSubFile(const char* pcPath, CPackFile* pPack, CSubFileInfo* pInfo, uint64_t uOffset,
                   uint32_t uSize, bool bFlag)
    : m_strPath(pcPath), m_pPack(pPack), m_pInfo(pInfo), m_uStart(uOffset), m_uSize(uSize), m_bFlag(bFlag)
{
}

CSubFile::~CSubFile() = default;

bool CSubFile::Open()
{
    if (m_pInfo && m_pInfo->GetReplacement())
    {
        return true;
    }
    IFileIO* pFileIO = m_pPack ? m_pPack->GetFileIO() : nullptr;
    if (!pFileIO)
    {
        return false;
    }
    m_pSection.reset(pFileIO->CreateSection(m_uStart, m_uSize));
    return m_pSection != nullptr;
}

uint32_t CSubFile::Size() const
{
    return (m_pInfo && m_pInfo->GetReplacement()) ? m_pInfo->GetReplacement()->Size() : m_uSize;
}

bool CSubFile::Seek(int64_t iPosition)
{
    if (iPosition < 0 || iPosition > UINT32_MAX)
    {
        return false;
    }
    m_uPosition = static_cast<uint32_t>(iPosition);
    return true;
}

uint32_t CSubFile::Read(void* pBuffer, uint32_t uCount)
{
    static GUtTimeCountId s_timeCountId{GUtTimeCountBase::ID_NEW};
    GUtTimeCountEnter(s_timeCountId, "SubFile_Read");
    const uint32_t uRead = _Read(pBuffer, uCount);
    GUtTimeCountLeave(s_timeCountId);
    return uRead;
}

uint32_t CSubFile::_Read(void* pBuffer, uint32_t uCount)
{
    if (m_pPack && m_pPack->IsRecordingAccess())
    {
        m_pPack->RecordAccess(m_pInfo ? m_pInfo->GetFullName() : m_strPath.View(), m_uPosition, uCount);
    }
    const uint32_t uSize = Size();
    if (!pBuffer || m_uPosition >= uSize || uCount == 0)
    {
        return 0;
    }
    uCount = std::min(uCount, uSize - m_uPosition);
    uint32_t uRead = 0;
    if (ISubFileSource* pSource = m_pInfo ? m_pInfo->GetReplacement() : nullptr)
    {
        uRead = pSource->Read(pBuffer, m_uPosition, uCount);
    }
    else if (m_pSection)
    {
        uRead = m_pSection->Read(pBuffer, uCount, m_uPosition, uCount);
    }
    m_uPosition += uRead;
    return uRead;
}

uint32_t CSubFile::Write(const void* pBuffer, uint32_t uCount)
{
    if (!pBuffer || uCount == 0 || !m_pPack || m_pPack->IsReadOnly() || !m_pInfo)
    {
        return 0;
    }
    if (!m_pInfo->m_pReplacement)
    {
        // The first write copies the entry into memory; the pack keeps the edit until saved.
        std::vector<uint8_t> bytes(m_uSize);
        const uint32_t uRead = m_pSection ? m_pSection->Read(bytes.data(), m_uSize, 0, m_uSize) : 0;
        m_pInfo->m_pReplacement = std::make_unique<CMemorySubFileSource>(bytes.data(), uRead);
    }
    const uint32_t uWritten = m_pInfo->m_pReplacement->Write(pBuffer, m_uPosition, uCount);
    m_uPosition += uWritten;
    return uWritten;
}

} // namespace GLib::File
