// CPackFile: a ".PAK" pack file: a whole folder tree of game data in one file, made of a
// 256-byte header (CHeader), one zlib-compressed directory, then the raw bytes of each
// entry. The tree is held in memory, so a lookup touches no disk; entries are read through
// sections of the pack's file.
//
// Directory segment, a recursive folder record, the root first:
//   u32 numSubDirs, u32 numFiles, name\0 (the root's is empty),
//   numSubDirs folder records, then numFiles file records: u32 offset, u32 size, name\0.
// In version 106 a file's offset is relative to dataOffset; below 106 every folder record
// has a third u32 before the counts, offsets are absolute and the directory is stored as is.
// Saving sorts each folder's folders and files by their upper-cased names.
//
// A writable pack can be edited (add, replace, remove, rename) and saved; a read-only one
// never changes, so it may be read from several threads at once. The pack takes no lock of
// its own apart from the one around its access list.
#pragma once

#include "Utils/File/FileIO.h"
#include "Utils/File/Header.h"
#include "Utils/File/PathMap.h"
#include "Utils/File/SubFile.h"
#include "Utils/Utility/GUtString.h"

#include <memory>
#include <mutex>
#include <string_view>
#include <vector>

namespace GLib::File
{

class CPackFile
{
public:
    enum EFileIOKind
    {
        FILE_IO_MAP_VIEW, // mapped views from the shared pool of 100 (the default)
        FILE_IO_READ,     // one pread per read
    };

    explicit CPackFile(EFileIOKind eKind = FILE_IO_MAP_VIEW);
    // Writes the access list when recording, then closes.
    virtual ~CPackFile();
    CPackFile(const CPackFile&) = delete;
    CPackFile& operator=(const CPackFile&) = delete;

    // Makes the folder at pcPath the current one ("/" the root, ".." the parent, "." the
    // current, else relative to the current folder). False, changing nothing, when there is
    // no such folder.
    virtual bool ChangeDir(const char* pcPath);
    // Writes the pack: to pcPath, or through the temporary "<name>__" over the pack's own
    // file when pcPath is empty or the pack's own name (then the pack is loaded again). Only
    // for writable packs (asserted). False, with a report, when the file can't be written;
    // the pack and its file are then as they were.
    virtual bool SaveFile(const char* pcPath);
    // Closes, then loads the pack at pcPath. False when the name is empty, the file doesn't
    // exist, or the file isn't a sound pack (reported; bQuiet keeps message boxes away).
    // A failed load leaves the pack closed.
    virtual bool LoadFile(const char* pcPath, bool bReadOnly, bool bAsync, bool bQuiet);
    // Empties the pack: file closed, tree and map emptied, header cleared, name forgotten.
    virtual void Close();

    // The entry at pcPath (see ChangeDir for where the path starts), found regardless of
    // case and with either separator; null when there is none.
    CSubFileInfo* FindFile(const char* pcPath) const;
    // Opens the entry at pcPath; null when there is none. The caller owns the result.
    CSubFile* OpenSubFile(const char* pcPath, bool bFlag);

    // Edits of a writable pack, seen by lookups at once and written by SaveFile. Paths are
    // full paths from the root. False on a read-only pack or a bad path.
    // Adds an entry with the source's bytes, making its folders; replaces the bytes of an
    // entry that exists.
    bool AddFile(const char* pcPath, std::unique_ptr<ISubFileSource> pSource);
    // Makes a folder chain (kept even when it holds no file).
    bool AddDir(const char* pcPath);
    // False when there is no such entry.
    bool RemoveFile(const char* pcPath);
    // Moves an entry to a new full path; false when there is no such entry or the new path
    // names another entry.
    bool RenameFile(const char* pcOldPath, const char* pcNewPath);

    bool IsOpen() const { return m_pFileIO != nullptr; }
    bool IsReadOnly() const { return m_bReadOnly; }
    const GUtString& GetFileName() const { return m_strFileName; }
    const CHeader& GetHeader() const { return m_Header; }
    CSubDir* GetRootDir() const { return m_pRootDir; }
    CSubDir* GetCurrentDir() const { return m_pCurrentDir; }
    size_t GetFileCount() const { return m_map.Size(); }
    IFileIO* GetFileIO() const { return m_pFileIO.get(); }

    // Access recording: every read of a sub file is noted (path, position, size) and, when
    // the pack is destroyed, written to "<name>.FAL", one "path position size" line each.
    void SetRecordAccess(bool bRecord) { m_bRecordAccess = bRecord; }
    bool IsRecordingAccess() const { return m_bRecordAccess; }
    void RecordAccess(std::string_view path, uint32_t uPosition, uint32_t uSize);
    // Writes the access list now; false (reported) when the file can't be written.
    bool SaveAccessList();
    // "data/tex.PAK" -> "data/tex.FAL".
    static GUtString AccessListName(const char* pcPackName);

private:
    friend class CDirReader;

    struct CAccess
    {
        std::string path;
        uint32_t uPosition;
        uint32_t uSize;
    };

    bool _LoadHeaderSegment(bool bQuiet);
    bool _LoadSubDirSegment();
    bool _ReadDirBytes(std::vector<uint8_t>& dir);
    void _ResetTree();
    CSubDir* _NewDir(CSubDir* pParent, std::string_view name);
    // The folder a path starts at and the rest of the path; see ChangeDir.
    const CSubDir* _StartDir(std::string_view& path) const;
    // Makes each missing folder of a '/' path from the root; null on a bad name.
    CSubDir* _MakeDirs(std::string_view folderPath);
    static std::string _CleanFullPath(const char* pcPath);

    // Saving (PackFile_Save.cpp).
    uint64_t _AssignDataPositions();
    void _SortTree(CSubDir* pDir);
    size_t _DirSegSize(const CSubDir* pDir) const;
    void _WriteDir(const CSubDir* pDir, std::vector<uint8_t>& out) const;
    // Writes the whole pack to pcTemporary; messages name pcTarget.
    bool _WritePack(const char* pcTemporary, const char* pcTarget);
    bool _CopyEntry(IFileIO& target, uint64_t uDataOffset, CSubFileInfo& info, const char* pcTarget);

    CPathMap m_map;
    std::vector<CSubFileInfo*> m_orderedInfos; // writable packs: data order
    CHeader m_Header;
    GUtString m_strFileName;
    CSubDir* m_pRootDir = nullptr;
    CSubDir* m_pCurrentDir = nullptr;
    std::unique_ptr<IFileIO> m_pFileIO;
    std::vector<CAccess> m_accessList;
    std::mutex m_accessMutex;
    bool m_bReadOnly = false;
    bool m_bAsync = false;
    bool m_bRecordAccess = false;
    EFileIOKind m_eFileIOKind;

    // Storage of the tree: loaded entries in one array, their names in one block.
    std::unique_ptr<CSubFileInfo[]> m_pLoadedInfos;
    std::vector<std::unique_ptr<CSubFileInfo>> m_addedInfos;
    std::unique_ptr<char[]> m_pNames;
    std::vector<std::unique_ptr<CSubDir>> m_dirs;
};

} // namespace GLib::File
