// The crash path. A fatal signal (SIGSEGV, SIGABRT, which a failed GUT_ASSERT raises, SIGFPE,
// SIGBUS, SIGILL) or std::terminate writes a text dump to the working folder, named
// "%s_%s_%02d%02d_%02d%02d.dmp" from the executable's name, the revision, month, day, hour
// and minute ("%s_%s.dmp" when the local time is unknown), at most 128 bytes. The dump holds
// the signal, the stack trace and the registers. The handler then restores the system's
// action and raises the signal again, so the process ends non-zero.
#pragma once

#include "Utils/Utility/GUtTimer.h"

#include <cstddef>

namespace Ovrel
{

constexpr size_t DUMP_NAME_LENGTH = 128;

// The executable's file name without folder and extension.
void DumpBaseName(const char* pcExecutablePath, char* pcOut, size_t uOutSize);
// The dump's name; pTime null means the local time is unknown.
void FormatDumpName(const char* pcBaseName, const char* pcRevision, const GUtLocalTime* pTime, char* pcOut,
                    size_t uOutSize);
// Installs the signal handlers and the terminate handler. Reads the revision now, as a
// handler may not read files. The executable path names the dump.
void InstallCrashHandlers(const char* pcExecutablePath);

} // namespace Ovrel
