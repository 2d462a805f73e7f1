#include "scene/SceneDiskFile.h"

#include "Utils/Utility/GUtFile.h"
#include "engine/utility/IOStream.h"

#include <climits>
#include <filesystem>
#include <string>

namespace Ovrel
{

bool ReadWholeFile(const char* pcPath, std::vector<uint8_t>& bytes)
{
    GUtFile file;
    if (!file.Open(pcPath, GUtFile::MODE_ALWAYS | GUtFile::MODE_BINARY | GUtFile::MODE_READ, true))
    {
        return false;
    }
    int64_t iSize = file.Size();
    if (iSize < 0 || iSize > INT32_MAX)
    {
        return false;
    }
    bytes.resize(static_cast<size_t>(iSize));
    return iSize == 0 || file.ReadRaw(bytes.data(), static_cast<int32_t>(iSize)) == iSize;
}

bool ReplaceFile(const char* pcPath, const uint8_t* pData, int32_t iSize)
{
    std::string strTemp = std::string(pcPath) + ".tmp";
    Kestrin::Utility::CFileStream file;
    if (!file.OpenWrite(strTemp.c_str()))
    {
        return false;
    }
    bool bOk = iSize == 0 || file.Write(pData, iSize) == iSize;
    file.Close();
    std::error_code error;
    if (bOk)
    {
        std::filesystem::rename(strTemp, pcPath, error);
        bOk = !error;
    }
    if (!bOk)
    {
        std::filesystem::remove(strTemp, error);
    }
    return bOk;
}

} // namespace Ovrel
