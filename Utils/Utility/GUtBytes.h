// Little-endian 32-bit values in byte buffers: the fixed layouts of the utility library's
// file formats (pack headers, compressed blocks, block stores, encrypted files).
#pragma once

#include <cstdint>

inline uint32_t GUtGetU32LE(const uint8_t* p)
{
    return static_cast<uint32_t>(p[0]) | static_cast<uint32_t>(p[1]) << 8 |
           static_cast<uint32_t>(p[2]) << 16 | static_cast<uint32_t>(p[3]) << 24;
}

inline void GUtPutU32LE(uint8_t* p, uint32_t u)
{
    p[0] = static_cast<uint8_t>(u);
    p[1] = static_cast<uint8_t>(u >> 8);
    p[2] = static_cast<uint8_t>(u >> 16);
    p[3] = static_cast<uint8_t>(u >> 24);
}
