// CFileUtility: whole-file operations on disk that the pack code and the pack tool share.
// Every path goes through the path layer (GUtPath), so '\' separates and case doesn't matter
// for names that exist.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

namespace GLib::File
{

class CFileUtility
{
public:
    // True for an existing regular file.
    static bool FileExists(const char* pcPath);
    // True for an existing folder.
    static bool FolderExists(const char* pcPath);
    // The size of an existing regular file; false when there is none.
    static bool GetFileSize(const char* pcPath, uint64_t& uSize);
    static bool RemoveFile(const char* pcPath);
    // Renames over an existing target in one step.
    static bool RenameFile(const char* pcFrom, const char* pcTo);
    // Makes each missing folder of pcFolder.
    static bool MakeFolders(const char* pcFolder);
    // Reads a whole file; false when it can't be read.
    static bool ReadWholeFile(const char* pcPath, std::vector<uint8_t>& bytes);
    // Writes a whole file through "<path>__" renamed into place, making its folders.
    static bool WriteWholeFile(const char* pcPath, const void* pData, size_t uSize);
    // Every regular file and folder under pcFolder, as '/' paths relative to it, sorted by
    // byte order, folders before their contents. Links and special files are left out.
    // False when pcFolder can't be read.
    static bool ListTree(const char* pcFolder, std::vector<std::string>& files,
                         std::vector<std::string>& folders);
};

} // namespace GLib::File
