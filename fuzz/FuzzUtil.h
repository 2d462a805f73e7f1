// What the fuzz targets share: a quiet log and a scratch file holding the input.
#pragma once

#include "Utils/Utility/GUtDebug.h"

#include <cstdint>
#include <cstdio>
#include <fcntl.h>
#include <string>
#include <unistd.h>

namespace FuzzUtil
{

inline void NoPrint(const char*) {}
inline void NoBox(const char*, const char*) {}

// Messages are expected by the thousand: keep them off the console, out of files and boxes.
inline void QuietLog()
{
    GUtOut::SetPrintFunction(&NoPrint);
    GUtSetMessageBoxHandler(&NoBox);
    GUtLog& log = GUtLog::Get();
    log.EnableConsole(false);
    log.EnableMainFile(false);
    log.EnableWarningFile(false);
    log.EnableErrorFile(false);
    log.EnableCriticalFile(false);
    log.EnableMessageBox(false);
}

// A file of this process's own under /tmp, rewritten with each input.
inline std::string ScratchPath(const char* pcName)
{
    return "/tmp/edfuzz_" + std::to_string(::getpid()) + "_" + pcName;
}

inline bool WriteInput(const std::string& path, const uint8_t* pData, size_t uSize)
{
    const int iHandle = ::open(path.c_str(), O_WRONLY | O_CREAT | O_TRUNC | O_CLOEXEC, 0600);
    if (iHandle < 0)
    {
        return false;
    }
    size_t uDone = 0;
    while (uDone < uSize)
    {
        const ssize_t n = ::write(iHandle, pData + uDone, uSize - uDone);
        if (n <= 0)
        {
            break;
        }
        uDone += static_cast<size_t>(n);
    }
    ::close(iHandle);
    return uDone == uSize;
}

} // namespace FuzzUtil
