// Typed reads of arbitrary bytes through CMemoryStream, in both byte orders, written back
// through CMemoryWriteStream: every read that succeeds must write back exactly the bytes it
// consumed, and nothing may read or write outside the buffers.
//
// Input: byte 0 holds the swap flag (bit 0) and the number of operation bytes (bits 1-7);
// the operation bytes follow, then the payload the stream reads.
#include "engine/utility/IOStream.h"

#include <cstring>
#include <string>
#include <vector>

using namespace Kestrin::Utility;

namespace
{
void Check(bool bCondition)
{
    if (!bCondition)
    {
        __builtin_trap();
    }
}

// One typed read and its write back; false when the read came up short.
bool Step(uint8_t uOp, uint8_t uArg, CMemoryStream& in, CMemoryWriteStream& out)
{
    switch (uOp % 12)
    {
        case 0:
        {
            uint8_t v;
            return in.ReadU8(v) && out.WriteU8(v);
        }
        case 1:
        {
            uint16_t v;
            return in.ReadU16(v) && out.WriteU16(v);
        }
        case 2:
        {
            uint32_t v;
            return in.ReadU32(v) && out.WriteU32(v);
        }
        case 3:
        {
            float v;
            return in.ReadFloat(v) && out.WriteFloat(v);
        }
        case 4:
        {
            CVec3 v;
            return in.ReadVec3(v) && out.WriteVec3(v);
        }
        case 5:
        {
            CQuat v;
            return in.ReadQuat(v) && out.WriteQuat(v);
        }
        case 6:
        {
            CMatrix44 v;
            return in.ReadMatrix(v) && out.WriteMatrix(v);
        }
        case 7:
        {
            std::string v;
            return in.ReadString(v) && out.WriteString(v);
        }
        case 8:
        {
            std::vector<uint32_t> v(uArg % 40);
            return in.ReadU32Array(v.data(), static_cast<int32_t>(v.size())) &&
                   out.WriteU32Array(v.data(), static_cast<int32_t>(v.size()));
        }
        case 9:
        {
            std::vector<uint16_t> v(uArg % 40);
            return in.ReadU16Array(v.data(), static_cast<int32_t>(v.size())) &&
                   out.WriteU16Array(v.data(), static_cast<int32_t>(v.size()));
        }
        case 10:
        {
            std::vector<CMatrix44> v(uArg % 4);
            return in.ReadMatrixArray(v.data(), static_cast<int32_t>(v.size())) &&
                   out.WriteMatrixArray(v.data(), static_cast<int32_t>(v.size()));
        }
        default:
        {
            // A magic check may flip the order for the rest of the stream, writes included;
            // the caller writes its four bytes back as they were.
            const int32_t iBefore = in.GetReadPosition();
            in.CheckMagic(0x454E4353u);
            return in.GetReadPosition() - iBefore == 4;
        }
    }
}
} // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* pData, size_t iSize)
{
    if (iSize < 1)
    {
        return 0;
    }
    const bool bSwap = (pData[0] & 1) != 0;
    const size_t iOps = std::min<size_t>(pData[0] >> 1, iSize - 1);
    const uint8_t* pOps = pData + 1;
    const uint8_t* pPayload = pOps + iOps;
    const int32_t iPayload = static_cast<int32_t>(iSize - 1 - iOps);

    CMemoryStream in(pPayload, iPayload);
    CMemoryWriteStream out;
    in.m_bSwapBytes = out.m_bSwapBytes = bSwap;
    std::vector<uint8_t> expected;
    for (size_t i = 0; i < iOps; ++i)
    {
        const int32_t iBefore = in.GetReadPosition();
        const int32_t iWritten = out.GetSize();
        const uint8_t uArg = i + 1 < iOps ? pOps[i + 1] : 0;
        const bool bOk = Step(pOps[i], uArg, in, out);
        const int32_t iAfter = in.GetReadPosition();
        Check(iAfter >= iBefore && iAfter <= iPayload);
        if (!bOk)
        {
            break;
        }
        if (pOps[i] % 12 == 11)
        {
            // The magic's bytes go back as they were read.
            out.WriteU8Array(pPayload + iBefore, 4);
            out.m_bSwapBytes = in.m_bSwapBytes;
        }
        Check(out.GetSize() - iWritten == iAfter - iBefore);
        expected.insert(expected.end(), pPayload + iBefore, pPayload + iAfter);
    }
    Check(out.GetSize() == static_cast<int32_t>(expected.size()));
    Check(expected.empty() || memcmp(out.GetData(), expected.data(), expected.size()) == 0);
    return 0;
}
