// The pack search: decides for every path whether it lives in a pack. No caller names a
// pack: "data/tex/a.dds" is looked for in "data/tex.PAK", then in "data.PAK" (as
// "/tex/a.dds"), deepest folder first. A folder with no pack is tested only once per run,
// and a pack, once loaded, stays loaded (read-only) until the process ends.
//
// One process-wide lock guards the loaded packs and the set of absent ones.
#pragma once

#include "Utils/File/PackFile.h"
#include "Utils/Utility/GUtString.h"

namespace GLib::File
{

// The pack that holds pcPath, with the rest of the path from its "/" on in subPath
// ("/tex/a.dds"). Null when no folder of the path has a pack, or when the first pack found
// fails to load (the path is then treated as being on disk). bLoadFlag is the loaded pack's
// sequential-access hint.
CPackFile* FindPackFile(const char* pcPath, GUtString& subPath, bool bLoadFlag);

// The entry for pcPath, opened. Null when no pack holds the path, the pack lacks the entry,
// or the pack's read-only state differs from bReadOnly. The caller owns the result.
CSubFile* OpenPackEntry(const char* pcPath, bool bReadOnly);

// The process-wide recording switch: packs the search loads afterwards record every read
// and write their ".FAL" access list when the process ends. Set it before packs are loaded.
void SetPackAccessRecording(bool bRecord);
bool IsPackAccessRecording();

// Forgets every loaded pack (destroying it) and every absent name. For tests.
void ResetPackSearch();

} // namespace GLib::File
