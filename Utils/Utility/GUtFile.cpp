// GUtFile: opening, closing, positions, the byte path and the typed operations. Memory and
// compressed modes are in GUtFile_Memory.cpp, the text forms in GUtFile_Text.cpp.
#include "Utils/Utility/GUtFile.h"

#include "Utils/File/PackSearch.h"
#include "Utils/Utility/GUtDebug.h"
#include "Utils/Utility/GUtPath.h"
#include "Utils/Utility/Posix/GUtFilePosix.h"
#include "Utils/Utility/Posix/GUtFileSystemPosix.h"

#include <algorithm>
#include <atomic>
#include <cerrno>
#include <cstring>
#include <string>
#include <sys/stat.h>

namespace
{
std::atomic<bool> g_bReportOpenFailureToLog{false};

// Reverses each iWidth-byte element of p in place.
void SwapElements(uint8_t* p, int32_t iBytes, int iWidth)
{
    for (int32_t i = 0; i + iWidth <= iBytes; i += iWidth)
    {
        std::reverse(p + i, p + i + iWidth);
    }
}
} // namespace

bool GUtCreateFolderChain(const char* pcFolder)
{
    std::string path(pcFolder ? pcFolder : "");
    for (size_t i = 1; i <= path.size(); ++i)
    {
        if (i != path.size() && path[i] != '/')
        {
            continue;
        }
        std::string level = path.substr(0, i);
        if (::mkdir(level.c_str(), 0755) != 0 && errno != EEXIST)
        {
            int iError = errno;
            GUtOut& out = GUtLog::Get().Out();
            out << "GUtCreateFile:: Error, error code: " << iError << " error msg: " << strerror(iError)
                << "\n";
            return false;
        }
    }
    return true;
}

GUtFile::GUtFile() = default;

GUtFile::GUtFile(const char* pcPath, uint32_t uMode, bool bQuiet, bool bAsync, int32_t iByteOrder)
{
    Open(pcPath, uMode, bQuiet, bAsync, iByteOrder);
}

GUtFile::~GUtFile()
{
    Close(true);
    _FreeBuffers();
    delete m_pWaitContext;
    delete m_pBackend;
}

void GUtFile::SetReportOpenFailureToLog(bool bToLog)
{
    g_bReportOpenFailureToLog = bToLog;
}

bool GUtFile::IsOpen()
{
    GUtCriticalSectionLock lock(m_lock);
    return m_pBackend && m_pBackend->IsOpen();
}

bool GUtFile::_IsWriting() const
{
    const uint32_t uOpenMode = m_uMode & (MODE_READ | MODE_WRITE | MODE_APPEND);
    return uOpenMode == (MODE_READ | MODE_WRITE) || uOpenMode == (MODE_READ | MODE_WRITE | MODE_APPEND);
}

bool GUtFile::Open(const char* pcPath, uint32_t uMode, bool bQuiet, bool bAsync, int32_t iByteOrder)
{
    GUtCriticalSectionLock lock(m_lock);
    Close(true);
    if (!pcPath || !*pcPath)
    {
        return false;
    }
    m_strPath = pcPath;
    m_uMode = uMode;
    m_iByteOrder = iByteOrder;
    m_uFlags = 0x0100 | 0x0001;
    const bool bAppend =
        (uMode & (MODE_READ | MODE_WRITE | MODE_APPEND)) == (MODE_READ | MODE_WRITE | MODE_APPEND);
    if (bAppend)
    {
        m_uFlags &= 0xFF00;
    }
    if (!_OpenBackend(pcPath, bAsync))
    {
        if (!bQuiet)
        {
            _ReportOpenFailure(pcPath);
        }
        m_uMode &= ~(MODE_MEMORY | MODE_COMPRESSED);
        return false;
    }
    if (bAppend)
    {
        m_pBackend->SeekEnd(0);
    }

    bool bOK = true;
    if ((m_uMode & (MODE_MEMORY | MODE_COMPRESSED)) == (MODE_MEMORY | MODE_COMPRESSED))
    {
        m_uMode &= ~(MODE_MEMORY | MODE_COMPRESSED);
        if (!(m_uMode & MODE_BINARY))
        {
            // Choosing compressed text is a programming error, not a fault of the file.
            GUtLog::Get().DisplayMsg(false, 1, "GUtFile::_InitCompressData() error !",
                                     "Compress mode must with binary mode !");
            bOK = false;
            GUT_ASSERT(bOK);
        }
        bOK = _InitCompressData();
    }
    else if (m_uMode & MODE_MEMORY)
    {
        m_uMode &= ~MODE_MEMORY;
        bOK = _InitMemoryData();
    }
    if (!bOK)
    {
        // A corrupt compressed file: reported, and the file isn't open.
        Close(false);
        return false;
    }
    return true;
}

bool GUtFile::_OpenBackend(const char* pcPath, bool bAsync)
{
    const bool bWrite = _IsWriting();
    // Packs from the search are read-only: only reading looks in them.
    GLib::File::CSubFile* pSubFile = bWrite ? nullptr : GLib::File::OpenPackEntry(pcPath, true);
    std::string path;
    if (pSubFile)
    {
        m_pBackend = new GUtFileSystemPosix(pSubFile, true);
        path = pcPath;
    }
    else
    {
        uint32_t uAccess = GUtFilePosix::ACCESS_READ;
        uint32_t uDisposition = GUtFilePosix::OPEN_EXISTING;
        if (bWrite)
        {
            const bool bAppend = (m_uMode & MODE_APPEND) != 0;
            uAccess |= GUtFilePosix::ACCESS_WRITE;
            uDisposition = bAppend ? GUtFilePosix::OPEN_ALWAYS : GUtFilePosix::CREATE_ALWAYS;
            path = GUtPath::ResolveForWrite(pcPath);
        }
        else
        {
            GUtPath::ResolveExisting(pcPath, path);
        }
        if (bAsync && !m_pWaitContext)
        {
            m_pWaitContext = new GUtAsyncContext;
        }
        m_pBackend = new GUtFilePosix(uAccess, uDisposition, bAsync);
    }
    bool bOk = m_pBackend->Open(path.c_str());
    if (!bOk && bWrite)
    {
        const std::string folder = GUtPath::FolderOf(path);
        if (!folder.empty() && GUtCreateFolderChain(folder.c_str()))
        {
            bOk = m_pBackend->Open(path.c_str());
        }
    }
    if (!bOk)
    {
        delete m_pBackend;
        m_pBackend = nullptr;
    }
    return bOk;
}

void GUtFile::_ReportOpenFailure(const char* pcPath)
{
    if (g_bReportOpenFailureToLog)
    {
        GUtLog::Get().DisplayMsg(false, "GUtFile::GUtFile()", "open file %s Fail!", pcPath);
    }
    else
    {
        GUtLog::Get().Out().DisplayMsg(false, "GUtFile::GUtFile()", "open file %s Fail!", pcPath);
    }
}

void GUtFile::Close(bool bFlush)
{
    GUtCriticalSectionLock lock(m_lock);
    if (!m_pBackend)
    {
        return;
    }
    const bool bWriting = _IsWriting();
    if ((m_uMode & (MODE_MEMORY | MODE_COMPRESSED)) == (MODE_MEMORY | MODE_COMPRESSED))
    {
        if (bFlush && bWriting)
        {
            _DeInitCompressData(true);
        }
    }
    else if ((m_uMode & MODE_MEMORY) && bFlush && bWriting)
    {
        _WriteOutMemory();
    }
    m_uMode &= ~(MODE_MEMORY | MODE_COMPRESSED);
    _FreeBuffers();
    m_pBackend->Close(bFlush);
    delete m_pBackend;
    m_pBackend = nullptr;
}

bool GUtFile::Flush()
{
    GUtCriticalSectionLock lock(m_lock);
    if (!m_pBackend)
    {
        return false;
    }
    bool bOk = true;
    if ((m_uMode & (MODE_MEMORY | MODE_COMPRESSED)) == (MODE_MEMORY | MODE_COMPRESSED))
    {
        bOk = !_IsWriting() || _DeInitCompressData(false);
    }
    else if ((m_uMode & MODE_MEMORY) && _IsWriting())
    {
        bOk = _WriteOutMemory();
    }
    return m_pBackend->Flush() && bOk;
}

bool GUtFile::Seek(int64_t iPosition)
{
    GUtCriticalSectionLock lock(m_lock);
    if (!m_pBackend || iPosition < 0)
    {
        return false;
    }
    if (m_uMode & MODE_MEMORY)
    {
        return _SeekMemory(iPosition);
    }
    return m_pBackend->Seek(iPosition);
}

bool GUtFile::SeekForward(int64_t iDelta)
{
    GUtCriticalSectionLock lock(m_lock);
    if (!m_pBackend)
    {
        return false;
    }
    if (m_uMode & MODE_MEMORY)
    {
        return _SeekMemory(static_cast<int64_t>(m_ulMemBufIdx) + iDelta);
    }
    return m_pBackend->SeekCurrent(iDelta);
}

bool GUtFile::SeekBackward(int64_t iDelta)
{
    return SeekForward(-iDelta);
}

int64_t GUtFile::Tell()
{
    GUtCriticalSectionLock lock(m_lock);
    if (!m_pBackend)
    {
        return 0;
    }
    return (m_uMode & MODE_MEMORY) ? static_cast<int64_t>(m_ulMemBufIdx) : m_pBackend->Tell();
}

int64_t GUtFile::Size()
{
    GUtCriticalSectionLock lock(m_lock);
    if (!m_pBackend)
    {
        return 0;
    }
    return (m_uMode & MODE_MEMORY) ? static_cast<int64_t>(m_ulMemBufEnd) : m_pBackend->Size();
}

void GUtFile::SetKey(const char* pcKey)
{
    GUtCriticalSectionLock lock(m_lock);
    m_strKey = pcKey;
    m_iKeyIndex = 0;
}

// ---------------------------------------------------------------------------------------
// The byte path

void GUtFile::_ApplyKey(uint8_t* p, int32_t iCount)
{
    if (m_strKey.IsEmpty())
    {
        return;
    }
    const int iLength = m_strKey.Length();
    for (int32_t i = 0; i < iCount; ++i)
    {
        p[i] ^= static_cast<uint8_t>(m_strKey[m_iKeyIndex]);
        m_iKeyIndex = (m_iKeyIndex + 1) % iLength;
    }
}

int32_t GUtFile::ReadBytes(void* pBuffer, int32_t iCount, GUtAsyncContext* pContext)
{
    GUtCriticalSectionLock lock(m_lock);
    if (!m_pBackend || !pBuffer || iCount <= 0)
    {
        return 0;
    }
    uint8_t* p = static_cast<uint8_t*>(pBuffer);
    int32_t iRead = 0;
    if (m_uMode & MODE_MEMORY)
    {
        iRead = _ReadMemory(p, iCount);
    }
    else
    {
        iRead = m_pBackend->Read(p, iCount, pContext ? pContext : m_pWaitContext);
    }
    _ApplyKey(p, iRead);
    return iRead;
}

int32_t GUtFile::WriteBytes(const void* pBuffer, int32_t iCount, GUtAsyncContext* pContext)
{
    GUtCriticalSectionLock lock(m_lock);
    if (!m_pBackend || !pBuffer || iCount <= 0)
    {
        return 0;
    }
    const bool bMemory = (m_uMode & MODE_MEMORY) != 0;
    if (bMemory && !_IsWriting())
    {
        return 0;
    }
    const uint8_t* p = static_cast<const uint8_t*>(pBuffer);
    std::vector<uint8_t> keyed;
    if (!m_strKey.IsEmpty())
    {
        // Through a copy, so that the caller's buffer isn't changed.
        keyed.assign(p, p + iCount);
        _ApplyKey(keyed.data(), iCount);
        p = keyed.data();
    }
    return bMemory ? _WriteMemory(p, iCount)
                   : m_pBackend->Write(p, iCount, pContext ? pContext : m_pWaitContext);
}

// ---------------------------------------------------------------------------------------
// Typed operations

namespace
{
int32_t WriteTyped(GUtFile& file, int32_t iByteOrder, const void* p, int32_t iBytes, int iWidth)
{
    if (iByteOrder != GUtFile::BYTE_ORDER_SWAP || iBytes < iWidth)
    {
        return file.WriteBytes(p, iBytes, nullptr);
    }
    std::vector<uint8_t> copy(static_cast<const uint8_t*>(p), static_cast<const uint8_t*>(p) + iBytes);
    SwapElements(copy.data(), iBytes, iWidth);
    return file.WriteBytes(copy.data(), iBytes, nullptr);
}

int32_t ReadTyped(GUtFile& file, int32_t iByteOrder, void* p, int32_t iBytes, int iWidth)
{
    int32_t iRead = file.ReadBytes(p, iBytes, nullptr);
    if (iByteOrder == GUtFile::BYTE_ORDER_SWAP && iBytes >= iWidth)
    {
        SwapElements(static_cast<uint8_t*>(p), iRead, iWidth);
    }
    return iRead;
}
} // namespace

int32_t GUtFile::WriteDoubles(const double* p, int32_t iBytes)
{
    return WriteTyped(*this, m_iByteOrder, p, iBytes, 8);
}
int32_t GUtFile::WriteI64s(const int64_t* p, int32_t iBytes)
{
    return WriteTyped(*this, m_iByteOrder, p, iBytes, 8);
}
int32_t GUtFile::WriteFloats(const float* p, int32_t iBytes)
{
    return WriteTyped(*this, m_iByteOrder, p, iBytes, 4);
}
int32_t GUtFile::WriteI32s(const int32_t* p, int32_t iBytes)
{
    return WriteTyped(*this, m_iByteOrder, p, iBytes, 4);
}
int32_t GUtFile::WriteU32s(const uint32_t* p, int32_t iBytes)
{
    return WriteTyped(*this, m_iByteOrder, p, iBytes, 4);
}
int32_t GUtFile::WriteLongs(const int32_t* p, int32_t iBytes)
{
    return WriteTyped(*this, m_iByteOrder, p, iBytes, 4);
}
int32_t GUtFile::WriteULongs(const uint32_t* p, int32_t iBytes)
{
    return WriteTyped(*this, m_iByteOrder, p, iBytes, 4);
}
int32_t GUtFile::WriteI16s(const int16_t* p, int32_t iBytes)
{
    return WriteTyped(*this, m_iByteOrder, p, iBytes, 2);
}
int32_t GUtFile::WriteU16s(const uint16_t* p, int32_t iBytes)
{
    return WriteTyped(*this, m_iByteOrder, p, iBytes, 2);
}
int32_t GUtFile::WriteWChars(const char16_t* p, int32_t iBytes)
{
    return WriteTyped(*this, m_iByteOrder, p, iBytes, 2);
}
int32_t GUtFile::WriteChars(const char* p, int32_t iBytes)
{
    return WriteBytes(p, iBytes, nullptr);
}
int32_t GUtFile::WriteUChars(const uint8_t* p, int32_t iBytes)
{
    return WriteBytes(p, iBytes, nullptr);
}
int32_t GUtFile::WriteRaw(const void* p, int32_t iBytes)
{
    return WriteBytes(p, iBytes, nullptr);
}

int32_t GUtFile::ReadDoubles(double* p, int32_t iBytes)
{
    return ReadTyped(*this, m_iByteOrder, p, iBytes, 8);
}
int32_t GUtFile::ReadI64s(int64_t* p, int32_t iBytes)
{
    return ReadTyped(*this, m_iByteOrder, p, iBytes, 8);
}
int32_t GUtFile::ReadFloats(float* p, int32_t iBytes)
{
    return ReadTyped(*this, m_iByteOrder, p, iBytes, 4);
}
int32_t GUtFile::ReadI32s(int32_t* p, int32_t iBytes)
{
    return ReadTyped(*this, m_iByteOrder, p, iBytes, 4);
}
int32_t GUtFile::ReadU32s(uint32_t* p, int32_t iBytes)
{
    return ReadTyped(*this, m_iByteOrder, p, iBytes, 4);
}
int32_t GUtFile::ReadLongs(int32_t* p, int32_t iBytes)
{
    return ReadTyped(*this, m_iByteOrder, p, iBytes, 4);
}
int32_t GUtFile::ReadULongs(uint32_t* p, int32_t iBytes)
{
    return ReadTyped(*this, m_iByteOrder, p, iBytes, 4);
}
int32_t GUtFile::ReadI16s(int16_t* p, int32_t iBytes)
{
    return ReadTyped(*this, m_iByteOrder, p, iBytes, 2);
}
int32_t GUtFile::ReadU16s(uint16_t* p, int32_t iBytes)
{
    return ReadTyped(*this, m_iByteOrder, p, iBytes, 2);
}
int32_t GUtFile::ReadWChars(char16_t* p, int32_t iBytes)
{
    return ReadTyped(*this, m_iByteOrder, p, iBytes, 2);
}
int32_t GUtFile::ReadChars(char* p, int32_t iBytes)
{
    return ReadBytes(p, iBytes, nullptr);
}
int32_t GUtFile::ReadUChars(uint8_t* p, int32_t iBytes)
{
    return ReadBytes(p, iBytes, nullptr);
}
int32_t GUtFile::ReadRaw(void* p, int32_t iBytes)
{
    return ReadBytes(p, iBytes, nullptr);
}
