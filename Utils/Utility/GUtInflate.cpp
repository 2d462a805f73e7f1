#include "Utils/Utility/GUtInflate.h"

#include <algorithm>
#include <climits>
#include <zlib.h>

EGUtInflate GUtInflateExact(const uint8_t* pSource, size_t uSourceSize, size_t uDeclaredSize,
                            std::vector<uint8_t>& out)
{
    out.clear();
    if (uSourceSize > UINT_MAX)
    {
        return EGUtInflate::CORRUPT;
    }
    z_stream stream{};
    if (inflateInit(&stream) != Z_OK)
    {
        return EGUtInflate::CORRUPT;
    }
    stream.next_in = const_cast<Bytef*>(pSource);
    stream.avail_in = static_cast<uInt>(uSourceSize);
    // One byte past the declared size tells a longer stream from an exact one.
    const size_t uLimit = uDeclaredSize + 1;
    out.resize(std::min(uLimit, std::max<size_t>(65536, uSourceSize * 4)));
    size_t uProduced = 0;
    int iResult = Z_OK;
    while (iResult == Z_OK)
    {
        if (uProduced == out.size())
        {
            if (out.size() == uLimit)
            {
                break;
            }
            out.resize(std::min(uLimit, out.size() * 2));
        }
        const size_t uRoom = std::min<size_t>(out.size() - uProduced, UINT_MAX);
        stream.next_out = out.data() + uProduced;
        stream.avail_out = static_cast<uInt>(uRoom);
        iResult = inflate(&stream, Z_NO_FLUSH);
        uProduced += uRoom - stream.avail_out;
        if (iResult == Z_BUF_ERROR && stream.avail_out != 0)
        {
            break; // input used up before the stream's end
        }
        if (iResult == Z_BUF_ERROR)
        {
            iResult = Z_OK;
        }
    }
    inflateEnd(&stream);
    out.resize(std::min(uProduced, uDeclaredSize));
    if (iResult != Z_STREAM_END)
    {
        return uProduced > uDeclaredSize ? EGUtInflate::SIZE_MISMATCH : EGUtInflate::CORRUPT;
    }
    return uProduced == uDeclaredSize ? EGUtInflate::OK : EGUtInflate::SIZE_MISMATCH;
}
