#include "Utils/Utility/GUtFile.h"

#include "Utils/Utility/GUtDebug.h"
#include "Utils/Utility/Posix/GUtFilePosix.h"

#include <algorithm>
#include <cerrno>
#include <cstring>
#include <sys/stat.h>
#include <vector>

namespace
{
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
    delete[] m_pMemBuffer;
    delete[] m_pPackedBuffer;
    delete m_pWaitContext;
    delete m_pBackend;
}

bool GUtFile::IsOpen()
{
    GUtCriticalSectionLock lock(m_lock);
    return m_pBackend && m_pBackend->IsOpen();
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

    uint32_t uAccess = GUtFilePosix::ACCESS_READ;
    uint32_t uDisposition = GUtFilePosix::OPEN_EXISTING;
    const uint32_t uOpenMode = uMode & (MODE_READ | MODE_WRITE | MODE_APPEND);
    bool bWrite = false;
    if (uOpenMode == (MODE_READ | MODE_WRITE))
    {
        uAccess |= GUtFilePosix::ACCESS_WRITE;
        uDisposition = GUtFilePosix::CREATE_ALWAYS;
        bWrite = true;
    }
    else if (uOpenMode == (MODE_READ | MODE_WRITE | MODE_APPEND))
    {
        uAccess |= GUtFilePosix::ACCESS_WRITE;
        uDisposition = GUtFilePosix::OPEN_ALWAYS;
        m_uFlags &= 0xFF00;
        bWrite = true;
    }

    delete m_pBackend;
    m_pBackend = new GUtFilePosix(uAccess, uDisposition, bAsync);
    bool bOk = m_pBackend->Open(pcPath);
    if (!bOk && bWrite)
    {
        GUtString folder(pcPath);
        int iSlash = folder.ReverseFind('/');
        if (iSlash > 0 && GUtCreateFolderChain(folder.Left(iSlash).c_str()))
        {
            bOk = m_pBackend->Open(pcPath);
        }
    }
    if (!bOk)
    {
        if (!bQuiet)
        {
            GUtLog::Get().Out().DisplayMsg(false, "GUtFile::GUtFile()", "open file %s Fail!", pcPath);
        }
        m_uMode &= ~(MODE_MEMORY | MODE_COMPRESSED);
        return false;
    }
    if (uOpenMode == (MODE_READ | MODE_WRITE | MODE_APPEND))
    {
        m_pBackend->SeekEnd(0);
    }
    return true;
}

void GUtFile::Close(bool bFlush)
{
    GUtCriticalSectionLock lock(m_lock);
    if (m_pBackend)
    {
        m_pBackend->Close(bFlush);
    }
}

bool GUtFile::Flush()
{
    GUtCriticalSectionLock lock(m_lock);
    return m_pBackend && m_pBackend->Flush();
}

bool GUtFile::Seek(int64_t iPosition)
{
    GUtCriticalSectionLock lock(m_lock);
    return m_pBackend && m_pBackend->Seek(iPosition);
}

bool GUtFile::SeekForward(int64_t iDelta)
{
    GUtCriticalSectionLock lock(m_lock);
    return m_pBackend && m_pBackend->SeekCurrent(iDelta);
}

bool GUtFile::SeekBackward(int64_t iDelta)
{
    GUtCriticalSectionLock lock(m_lock);
    return m_pBackend && m_pBackend->SeekCurrent(-iDelta);
}

int64_t GUtFile::Tell()
{
    GUtCriticalSectionLock lock(m_lock);
    return m_pBackend ? m_pBackend->Tell() : 0;
}

int64_t GUtFile::Size()
{
    GUtCriticalSectionLock lock(m_lock);
    return m_pBackend ? m_pBackend->Size() : 0;
}

void GUtFile::SetKey(const char* pcKey)
{
    GUtCriticalSectionLock lock(m_lock);
    m_strKey = pcKey;
    m_iKeyIndex = 0;
}

// ---------------------------------------------------------------------------------------
// The byte path

int32_t GUtFile::ReadBytes(void* pBuffer, int32_t iCount, GUtAsyncContext* pContext)
{
    GUtCriticalSectionLock lock(m_lock);
    if (!m_pBackend || iCount <= 0)
    {
        return 0;
    }
    int32_t iRead = m_pBackend->Read(pBuffer, iCount, pContext);
    if (!m_strKey.IsEmpty())
    {
        uint8_t* p = static_cast<uint8_t*>(pBuffer);
        for (int32_t i = 0; i < iRead; ++i)
        {
            p[i] ^= static_cast<uint8_t>(m_strKey[m_iKeyIndex]);
            m_iKeyIndex = (m_iKeyIndex + 1) % m_strKey.Length();
        }
    }
    return iRead;
}

int32_t GUtFile::WriteBytes(const void* pBuffer, int32_t iCount, GUtAsyncContext* pContext)
{
    GUtCriticalSectionLock lock(m_lock);
    if (!m_pBackend || iCount <= 0)
    {
        return 0;
    }
    if (m_strKey.IsEmpty())
    {
        return m_pBackend->Write(pBuffer, iCount, pContext);
    }
    // Through a copy, so that the caller's buffer isn't changed.
    std::vector<uint8_t> copy(static_cast<const uint8_t*>(pBuffer),
                              static_cast<const uint8_t*>(pBuffer) + iCount);
    for (uint8_t& b : copy)
    {
        b ^= static_cast<uint8_t>(m_strKey[m_iKeyIndex]);
        m_iKeyIndex = (m_iKeyIndex + 1) % m_strKey.Length();
    }
    return m_pBackend->Write(copy.data(), iCount, pContext);
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
