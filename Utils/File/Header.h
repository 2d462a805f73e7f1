// CHeader: the 256-byte header of a ".PAK" pack file. All integers little-endian.
//
//   version 106           version 100-105 (with "PAK\0")   without magic (100-105)
//   0  "PAK\0"            0  "PAK\0"                       -
//   4  version            4  version                       0  version
//   8  flag (u8)          8  flag                          4  flag
//   9  reserved (u32)     9  reserved (u32, widened)       5  reserved
//   13 reserved (u64)     -                                -
//   21 headerSize         13 headerSize                    9  headerSize
//   25 dirOffset          17 dirOffset                     13 dirOffset
//   29 dirSize            21 dirSize                       17 dirSize
//   33 dirPackedSize      -  (directory stored as is)      -
//   37 dataOffset         25 dataOffset                    21 dataOffset
//   41 dataSize           29 dataSize                      25 dataSize
//   45 fileSize           33 fileSize                      29 fileSize
//   49..255 zeros
//
// Saving always writes version 106.
#pragma once

#include "Utils/File/FileIO.h"

#include <cstddef>
#include <cstdint>

namespace GLib::File
{

class CHeader
{
public:
    static constexpr uint32_t CURRENT_VERSION = 106;
    static constexpr uint32_t OLDEST_VERSION = 100;
    static constexpr uint32_t HEADER_SIZE = 256;

    CHeader() = default;
    virtual ~CHeader() = default;

    // Reads the header from the start of the section. False when the bytes are too few or
    // aren't a pack header (no magic and a version outside 100-105, or a magic with a
    // version below 100). A version above 106 loads; the pack refuses it.
    bool Load(IFileSection* pFileSection);
    // Writes the 256 bytes of a version 106 header at the start of the section.
    bool Save(IFileSection* pFileSection) const;

    // The same on bytes: Parse reads up to uSize bytes, Write fills 256.
    bool Parse(const uint8_t* pData, size_t uSize);
    void Write(uint8_t* pData) const;

    void Clear() { *this = CHeader(); }

    uint32_t Version() const { return m_uVersion; }
    bool HasMagic() const { return m_bHasMagic; }
    uint32_t HeaderSize() const { return m_uHeaderSize; }
    uint32_t DirOffset() const { return m_uDirOffset; }
    // The directory's size after decompression.
    uint32_t DirSegSize() const { return m_uDirSize; }
    // The stored directory's size; the same as DirSegSize below version 106.
    uint32_t DirPackedSize() const { return m_uDirPackedSize; }
    uint32_t DataOffset() const { return m_uDataOffset; }
    uint32_t DataSize() const { return m_uDataSize; }
    uint32_t FileSize() const { return m_uFileSize; }
    uint8_t Flag() const { return m_uFlag; }
    uint32_t Reserved() const { return m_uReserved; }
    uint64_t Reserved64() const { return m_uReserved64; }

    // Filled by the pack as it saves; the version becomes 106.
    void SetLayout(uint32_t uDirSize, uint32_t uDirPackedSize, uint32_t uDataSize);

private:
    uint32_t m_uVersion = CURRENT_VERSION;
    bool m_bHasMagic = true;
    uint8_t m_uFlag = 0;
    uint32_t m_uReserved = 0;
    uint64_t m_uReserved64 = 0;
    uint32_t m_uHeaderSize = HEADER_SIZE;
    uint32_t m_uDirOffset = HEADER_SIZE;
    uint32_t m_uDirSize = 0;
    uint32_t m_uDirPackedSize = 0;
    uint32_t m_uDataOffset = HEADER_SIZE;
    uint32_t m_uDataSize = 0;
    uint32_t m_uFileSize = HEADER_SIZE;
};

} // namespace GLib::File
