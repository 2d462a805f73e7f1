// GUtPath: where the game's data paths meet the Linux file system. Data paths were written
// on a system where '\' separates and case doesn't matter; here both '\' and '/' separate,
// and each name is found regardless of case, so a data tree copied from another system
// opens unchanged: "Data\TEX\A.dds" finds "data/tex/a.dds".
//
// Each folder's listing is cached; a name that isn't in the cached listing makes the
// folder be read again when it changed since, so files created after the listing are
// found. Every data path of the suite goes through here (GUtFile, the pack search, the
// pack files). Thread-safe: one lock guards the cache.
#pragma once

#include <string>
#include <string_view>

class GUtPath
{
public:
    // '\' turned into '/', runs of '/' collapsed into one. The case is kept.
    static std::string ToSlashes(std::string_view path);

    // Finds an existing file or folder whatever the case of its names. True with the path
    // as it is on disk in out; false when some level has no match (out then holds the
    // slash form of the path).
    static bool ResolveExisting(std::string_view path, std::string& out);
    static bool Exists(std::string_view path);

    // The path to create or replace a file at: each existing folder level takes its
    // spelling on disk, levels that don't exist keep the caller's. A file name that matches
    // an existing file regardless of case takes that file's spelling, so the file is
    // replaced rather than doubled; otherwise the caller's name is kept.
    static std::string ResolveForWrite(std::string_view path);

    // The folder part of a slash path ("a/b" of "a/b/c.txt"), empty when there is none.
    static std::string FolderOf(std::string_view path);

    // Forgets every cached listing, for changes made behind the process's back in the same
    // instant as the listing was taken.
    static void ForgetListings();
};
