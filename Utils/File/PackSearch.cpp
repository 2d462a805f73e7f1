#include "Utils/File/PackSearch.h"

#include "Utils/Utility/GUtLock.h"
#include "Utils/Utility/GUtPath.h"
#include "Utils/Utility/GUtTimeCountInfo.h"

#include <atomic>
#include <memory>
#include <string>
#include <sys/stat.h>
#include <unordered_map>
#include <unordered_set>

namespace GLib::File
{

namespace
{
struct CPackSearch
{
    // Re-entrant: a pack that fails to load reports through the log while the lock is held.
    GUtCriticalSection lock;
    std::unordered_map<std::string, std::unique_ptr<CPackFile>> loaded;
    std::unordered_set<std::string> absent;
    std::atomic<bool> bRecordAccess{false};

    static CPackSearch& Get()
    {
        // Destroyed at exit, after the log (made before main), so packs can write their
        // access lists.
        static CPackSearch s_search;
        return s_search;
    }
};

// Times the search as "FIND_PACK" while the profiler is on.
class CFindPackTiming
{
public:
    CFindPackTiming() { GUtTimeCountEnter(s_id, "FIND_PACK"); }
    ~CFindPackTiming() { GUtTimeCountLeave(s_id); }

private:
    static inline GUtTimeCountId s_id{GUtTimeCountBase::ID_NEW};
};

bool EndsWithPak(const std::string& name)
{
    return name.size() >= 4 && name.compare(name.size() - 4, 4, ".pak") == 0;
}

bool IsRegularFile(const std::string& name, std::string& resolved)
{
    struct stat st;
    return GUtPath::ResolveExisting(name, resolved) && ::stat(resolved.c_str(), &st) == 0 &&
           S_ISREG(st.st_mode);
}
} // namespace

CPackFile* FindPackFile(const char* pcPath, GUtString& subPath, bool bLoadFlag)
{
    CFindPackTiming timing;
    std::string path = GUtPath::ToSlashes(pcPath ? pcPath : "");
    for (char& c : path)
    {
        if (c >= 'A' && c <= 'Z')
        {
            c = static_cast<char>(c - 'A' + 'a');
        }
    }
    CPackSearch& search = CPackSearch::Get();
    GUtCriticalSectionLock lock(search.lock);
    for (size_t uSlash = path.rfind('/'); uSlash != std::string::npos && uSlash > 0;
         uSlash = path.rfind('/', uSlash - 1))
    {
        std::string name = path.substr(0, uSlash);
        if (!EndsWithPak(name))
        {
            name += ".PAK";
        }
        if (search.absent.count(name))
        {
            continue;
        }
        auto it = search.loaded.find(name);
        if (it != search.loaded.end())
        {
            subPath = GUtString(std::string_view(path).substr(uSlash));
            return it->second.get();
        }
        std::string resolved;
        if (!IsRegularFile(name, resolved))
        {
            search.absent.insert(name);
            continue;
        }
        auto pPack = std::make_unique<CPackFile>();
        pPack->SetRecordAccess(search.bRecordAccess.load());
        if (!pPack->LoadFile(resolved.c_str(), true, bLoadFlag, false))
        {
            return nullptr;
        }
        subPath = GUtString(std::string_view(path).substr(uSlash));
        CPackFile* pFound = pPack.get();
        search.loaded.emplace(name, std::move(pPack));
        return pFound;
    }
    return nullptr;
}

CSubFile* OpenPackEntry(const char* pcPath, bool bReadOnly)
{
    GUtString subPath;
    CPackFile* pPack = FindPackFile(pcPath, subPath, false);
    if (!pPack || pPack->IsReadOnly() != bReadOnly)
    {
        return nullptr;
    }
    return pPack->OpenSubFile(subPath.c_str(), bReadOnly);
}

void SetPackAccessRecording(bool bRecord)
{
    CPackSearch::Get().bRecordAccess = bRecord;
}

bool IsPackAccessRecording()
{
    return CPackSearch::Get().bRecordAccess;
}

void ResetPackSearch()
{
    CPackSearch& search = CPackSearch::Get();
    GUtCriticalSectionLock lock(search.lock);
    search.loaded.clear();
    search.absent.clear();
}

} // namespace GLib::File
