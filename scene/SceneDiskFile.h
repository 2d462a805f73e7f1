// The scene layer's one door to the disk: whole-file reads through the file layer, and
// writes that go to a temporary file beside the target, made durable and then renamed into
// place, so neither a failed save nor a process killed in the middle of one leaves a
// half-written file where the old one was.
//
// Data paths may use '\' (the game's separator) and any case; they reach the disk through
// the path layer of Utils/ (GUtPath), here and in GUtFile.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

namespace Ovrel
{

// The whole file in one read. False when it cannot be opened or read, or is over 2 GiB.
bool ReadWholeFile(const char* pcPath, std::vector<uint8_t>& bytes);
// Writes the bytes to "<path>.tmp", flushes them to the disk, renames the temporary over the
// path and flushes the folder. False (and no temporary left behind) when any step fails; the
// old file is then untouched.
bool ReplaceFile(const char* pcPath, const uint8_t* pData, int32_t iSize);
// Creates the folder and its missing parents. False when it does not exist afterwards.
bool MakeFolder(const char* pcPath);

// Splits a path at its last separator ('/' or '\') and the last dot of the file name: the
// folder keeps its separator, the extension its dot ("X/Y/foo.scene": "X/Y/", "foo",
// ".scene").
void SplitPath(const std::string& strPath, std::string& strFolder, std::string& strBase,
               std::string& strExtension);
// The extension compared without regard to case, dot included.
bool HasExtension(const std::string& strPath, const char* pcExtension);
// A sub-folder: strFolder, strName and a separator, the folder's own kind of separator
// ('/' when it has none).
std::string JoinFolder(const std::string& strFolder, const std::string& strName);

// Test hook: called by ReplaceFile after each piece written to the temporary file, with the
// bytes written so far and the total, while the old file is still in place. Null removes it.
using ReplaceFileHook = void (*)(const char* pcTempPath, int64_t iWritten, int64_t iTotal);
void SetReplaceFileHook(ReplaceFileHook pHook);

} // namespace Ovrel
