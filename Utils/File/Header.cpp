#include "Utils/File/Header.h"

#include "Utils/Utility/GUtBytes.h"
#include "Utils/Utility/GUtDebug.h"

#include <cstring>

namespace GLib::File
{

namespace
{
// The bytes each layout needs.
constexpr size_t CURRENT_LAYOUT_SIZE = 49;
constexpr size_t OLD_LAYOUT_SIZE = 37;
} // namespace

bool CHeader::Parse(const uint8_t* pData, size_t uSize)
{
    Clear();
    if (uSize < 4)
    {
        return false;
    }
    const bool bMagic = pData[0] == 'P' && pData[1] == 'A' && pData[2] == 'K';
    // Without the magic every field stands 4 bytes earlier than its offset below.
    const size_t uShift = bMagic ? 0 : 4;
    auto Field = [&](size_t uOffset) { return GUtGetU32LE(pData + uOffset - uShift); };
    if (uSize + uShift < 8)
    {
        return false;
    }
    const uint32_t uVersion = Field(4);
    if (bMagic ? uVersion < OLDEST_VERSION : (uVersion < OLDEST_VERSION || uVersion >= CURRENT_VERSION))
    {
        return false;
    }
    const bool bCurrent = uVersion >= CURRENT_VERSION;
    if (uSize + uShift < (bCurrent ? CURRENT_LAYOUT_SIZE : OLD_LAYOUT_SIZE))
    {
        return false;
    }
    m_uVersion = uVersion;
    m_bHasMagic = bMagic;
    m_uFlag = pData[8 - uShift];
    m_uReserved = Field(9);
    if (bCurrent)
    {
        m_uReserved64 = static_cast<uint64_t>(Field(13)) | static_cast<uint64_t>(Field(17)) << 32;
        m_uHeaderSize = Field(21);
        m_uDirOffset = Field(25);
        m_uDirSize = Field(29);
        m_uDirPackedSize = Field(33);
        m_uDataOffset = Field(37);
        m_uDataSize = Field(41);
        m_uFileSize = Field(45);
    }
    else
    {
        m_uReserved64 = 0;
        m_uHeaderSize = Field(13);
        m_uDirOffset = Field(17);
        m_uDirSize = Field(21);
        m_uDirPackedSize = m_uDirSize;
        m_uDataOffset = Field(25);
        m_uDataSize = Field(29);
        m_uFileSize = Field(33);
    }
    return true;
}

void CHeader::Write(uint8_t* pData) const
{
    memset(pData, 0, HEADER_SIZE);
    memcpy(pData, "PAK", 4);
    GUtPutU32LE(pData + 4, CURRENT_VERSION);
    pData[8] = m_uFlag;
    GUtPutU32LE(pData + 9, m_uReserved);
    GUtPutU32LE(pData + 13, static_cast<uint32_t>(m_uReserved64));
    GUtPutU32LE(pData + 17, static_cast<uint32_t>(m_uReserved64 >> 32));
    GUtPutU32LE(pData + 21, m_uHeaderSize);
    GUtPutU32LE(pData + 25, m_uDirOffset);
    GUtPutU32LE(pData + 29, m_uDirSize);
    GUtPutU32LE(pData + 33, m_uDirPackedSize);
    GUtPutU32LE(pData + 37, m_uDataOffset);
    GUtPutU32LE(pData + 41, m_uDataSize);
    GUtPutU32LE(pData + 45, m_uFileSize);
}

bool CHeader::Load(IFileSection* pFileSection)
{
    GUT_ASSERT(pFileSection);
    uint8_t acBytes[HEADER_SIZE];
    uint32_t uRead = pFileSection->Read(acBytes, HEADER_SIZE, 0, HEADER_SIZE);
    return Parse(acBytes, uRead);
}

bool CHeader::Save(IFileSection* pFileSection) const
{
    GUT_ASSERT(pFileSection);
    uint8_t acBytes[HEADER_SIZE];
    Write(acBytes);
    return pFileSection->Write(acBytes, HEADER_SIZE, 0, HEADER_SIZE) == HEADER_SIZE;
}

void CHeader::SetLayout(uint32_t uDirSize, uint32_t uDirPackedSize, uint32_t uDataSize)
{
    m_uVersion = CURRENT_VERSION;
    m_bHasMagic = true;
    m_uHeaderSize = HEADER_SIZE;
    m_uDirOffset = HEADER_SIZE;
    m_uDirSize = uDirSize;
    m_uDirPackedSize = uDirPackedSize;
    m_uDataOffset = HEADER_SIZE + uDirPackedSize;
    m_uDataSize = uDataSize;
    m_uFileSize = m_uDataOffset + uDataSize;
}

} // namespace GLib::File
