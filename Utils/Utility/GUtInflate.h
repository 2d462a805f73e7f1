// Inflating a zlib stream whose size is declared by the file it came from. The output grows
// with what the stream really produces, so a corrupt size costs no more memory than the
// data holds, and a stream that would pass the declared size stops there.
#pragma once

#include <cstddef>
#include <cstdint>
#include <vector>

enum class EGUtInflate
{
    OK,            // the stream ended at exactly the declared size
    CORRUPT,       // not a zlib stream, or cut short
    SIZE_MISMATCH, // a sound stream of another size
};

EGUtInflate GUtInflateExact(const uint8_t* pSource, size_t uSourceSize, size_t uDeclaredSize,
                            std::vector<uint8_t>& out);
