// The parts of a pack's tree: CSubFileInfo (one entry), CSubDir (one folder), CSubFile (an
// open entry, read through a section of the pack's file), and the replacement sources that
// stand in for an entry's bytes until the pack is saved.
//
// A pack's tree belongs to the pack: infos and folders live until the pack is closed,
// saved or loaded again, and an open CSubFile must not outlive them. Packs found by the
// pack search are read-only and live until the process ends.
#pragma once

#include "Utils/File/FileIO.h"
#include "Utils/Utility/GUtString.h"

#include <cstdint>
#include <memory>
#include <string_view>
#include <vector>

namespace GLib::File
{

class CPackFile;
class CSubDir;

// Bytes that replace an entry's: an edited entry, or a file added to a pack being built.
class ISubFileSource
{
public:
    virtual ~ISubFileSource() = default;
    // The size in bytes.
    virtual uint32_t Size() const = 0;
    // Copies up to uCount bytes from uOffset into pBuffer. Returns the bytes copied: fewer at
    // the end, 0 past it or when the bytes can't be reached.
    virtual uint32_t Read(void* pBuffer, uint32_t uOffset, uint32_t uCount) = 0;
    // Writes uCount bytes at uOffset, growing the source. Returns the bytes written; 0 when
    // the source can't be written.
    virtual uint32_t Write(const void* pBuffer, uint32_t uOffset, uint32_t uCount) = 0;
    // Lets go of anything held open for reading; the next Read opens it again.
    virtual void Release() {}

protected:
    ISubFileSource() = default;
    ISubFileSource(const ISubFileSource&) = delete;
    ISubFileSource& operator=(const ISubFileSource&) = delete;
};

// Bytes in memory.
class CMemorySubFileSource final : public ISubFileSource
{
public:
    CMemorySubFileSource() = default;
    CMemorySubFileSource(const void* pData, uint32_t uSize);
    uint32_t Size() const override { return static_cast<uint32_t>(m_data.size()); }
    uint32_t Read(void* pBuffer, uint32_t uOffset, uint32_t uCount) override;
    uint32_t Write(const void* pBuffer, uint32_t uOffset, uint32_t uCount) override;

private:
    std::vector<uint8_t> m_data;
};

// A file on disk, read when the pack is saved. Its size is taken when the source is made;
// Exists() tells whether the file could be opened then.
class CDiskSubFileSource final : public ISubFileSource
{
public:
    explicit CDiskSubFileSource(const char* pcPath);
    ~CDiskSubFileSource() override;
    bool Exists() const { return m_bExists; }
    uint32_t Size() const override { return m_uSize; }
    uint32_t Read(void* pBuffer, uint32_t uOffset, uint32_t uCount) override;
    // Disk sources are read-only.
    uint32_t Write(const void*, uint32_t, uint32_t) override { return 0; }
    void Release() override;

private:
    GUtString m_strPath;
    uint32_t m_uSize = 0;
    bool m_bExists = false;
    int m_iHandle = -1;
};

class CSubFileInfo
{
public:
    CSubFileInfo() = default;
    CSubFileInfo(const CSubFileInfo&) = delete;
    CSubFileInfo& operator=(const CSubFileInfo&) = delete;

    // The full path from the pack's root, '/' separated, no leading '/': "tex/a.dds".
    std::string_view GetFullName() const { return m_fullName; }
    // The last part of the full path: "a.dds".
    std::string_view GetName() const { return m_fullName.substr(m_uNameStart); }
    CSubDir* GetParentDir() const { return m_pParent; }
    // Where the entry's bytes start in the pack's file.
    uint64_t GetOffset() const { return m_uOffset; }
    // The entry's size: the replacement's when it has one.
    uint32_t GetSize() const { return m_pReplacement ? m_pReplacement->Size() : m_uSize; }
    // The entry's place in the data area, given while saving.
    uint32_t GetDataPos() const { return m_uDataPos; }
    ISubFileSource* GetReplacement() const { return m_pReplacement.get(); }

private:
    friend class CPackFile;
    friend class CDirReader;
    friend class CSubFile;

    void SetFullName(std::string_view fullName);

    std::string_view m_fullName;
    uint32_t m_uNameStart = 0;
    GUtString m_strOwnedName; // for added and renamed entries; others point into the pack's names
    CSubDir* m_pParent = nullptr;
    uint64_t m_uOffset = 0;
    uint32_t m_uSize = 0;
    uint32_t m_uDataPos = 0;
    std::unique_ptr<ISubFileSource> m_pReplacement;
};

class CSubDir
{
public:
    CSubDir(CPackFile* pPack, CSubDir* pParent, std::string_view name);
    CSubDir(const CSubDir&) = delete;
    CSubDir& operator=(const CSubDir&) = delete;

    // The folder's own name; the root's is empty.
    std::string_view GetName() const { return m_name; }
    CSubDir* GetParent() const { return m_pParent; }
    CPackFile* GetParentPackFile() const { return m_pPack; }
    const std::vector<CSubDir*>& GetSubDirs() const { return m_subDirs; }
    const std::vector<CSubFileInfo*>& GetFiles() const { return m_files; }
    // The child folder of that name, compared regardless of case; null when there is none.
    CSubDir* FindSubDir(std::string_view name) const;
    // "tex/hd" for a folder two levels down, "" for the root.
    std::string GetFullPath() const;

private:
    friend class CPackFile;
    friend class CDirReader;

    std::string_view m_name;
    GUtString m_strOwnedName;
    CPackFile* m_pPack;
    CSubDir* m_pParent;
    std::vector<CSubDir*> m_subDirs;
    std::vector<CSubFileInfo*> m_files;
};

// An open entry. Reads are cut at the entry's end; with access recording on, each read is
// noted in the pack's access list. Writes go to the entry's replacement (made from the
// entry's bytes on the first write) and only on a writable pack.
class CSubFile
{
public:
    CSubFile(const char* pcPath, CPackFile* pPack, CSubFileInfo* pInfo, uint64_t uOffset, uint32_t uSize,
             bool bFlag);
    virtual ~CSubFile();
    CSubFile(const CSubFile&) = delete;
    CSubFile& operator=(const CSubFile&) = delete;

    // Creates the section over the entry's bytes. False when the pack has no open file and
    // the entry no replacement.
    bool Open();
    // Returns the bytes read from the current position: fewer at the end, 0 past it.
    uint32_t Read(void* pBuffer, uint32_t uCount);
    // Returns the bytes written at the current position; 0 on a read-only pack.
    uint32_t Write(const void* pBuffer, uint32_t uCount);
    // Positions are relative to the entry's start; a position past the end is allowed
    // (reads there give 0). False only for a negative position.
    bool Seek(int64_t iPosition);
    uint32_t Tell() const { return m_uPosition; }
    uint32_t Size() const;
    bool IsEof() const { return m_uPosition >= Size(); }
    const GUtString& GetPath() const { return m_strPath; }
    CPackFile* GetPackFile() const { return m_pPack; }
    CSubFileInfo* GetInfo() const { return m_pInfo; }
    bool GetFlag() const { return m_bFlag; }

private:
    uint32_t _Read(void* pBuffer, uint32_t uCount);

    GUtString m_strPath;
    CPackFile* m_pPack;
    CSubFileInfo* m_pInfo;
    uint64_t m_uStart;
    uint32_t m_uSize;
    uint32_t m_uPosition = 0;
    bool m_bFlag;
    std::unique_ptr<IFileSection> m_pSection;
};

} // namespace GLib::File
