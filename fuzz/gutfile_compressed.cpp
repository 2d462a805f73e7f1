// Fuzzes GUtFile's compressed blocks: every input is read as a compressed file, block after
// block. A declared block of 100000000 bytes or more is a deliberate assertion, so such
// inputs are passed over.
#include "Utils/Utility/GUtFile.h"
#include "fuzz/FuzzUtil.h"

#include <cstring>

namespace
{
// Whether any block header in the chain declares the asserted size.
bool DeclaresHugeBlock(const uint8_t* pData, size_t uSize)
{
    size_t uAt = 0;
    while (uAt + 4 <= uSize)
    {
        uint32_t uBlock = 0;
        memcpy(&uBlock, pData + uAt, 4);
        if (uBlock >= 100000000)
        {
            return true;
        }
        uAt += 4 + static_cast<size_t>(uBlock) + 4;
    }
    return false;
}
} // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* pData, size_t uSize)
{
    static const std::string s_input = FuzzUtil::ScratchPath("input.bin");
    static bool s_bInit = (FuzzUtil::QuietLog(), true);
    (void)s_bInit;
    if (DeclaresHugeBlock(pData, uSize) || !FuzzUtil::WriteInput(s_input, pData, uSize))
    {
        return 0;
    }
    const uint32_t uMode = GUtFile::MODE_ALWAYS | GUtFile::MODE_BINARY | GUtFile::MODE_READ |
                           GUtFile::MODE_MEMORY | GUtFile::MODE_COMPRESSED;
    GUtFile file;
    if (uSize > 0 && pData[0] & 1)
    {
        file.SetKey("fuzz");
    }
    if (!file.Open(s_input.c_str(), uMode, true))
    {
        return 0;
    }
    uint8_t acBuffer[4096];
    while (file.ReadRaw(acBuffer, sizeof(acBuffer)) > 0)
    {
    }
    file.Close();
    return 0;
}
