#include "Utils/Utility/GUtPath.h"

#include <algorithm>
#include <dirent.h>
#include <mutex>
#include <sys/stat.h>
#include <time.h>
#include <unordered_map>
#include <vector>

namespace
{
// A listing taken less than this long after the folder last changed may miss a change made
// in the same clock tick, so a miss in it always reads the folder again.
constexpr int64_t SETTLED_NANOSECONDS = 2000000000;
// A runaway cache is simply dropped; the next lookups read the folders again.
constexpr size_t MAX_CACHED_FOLDERS = 8192;

int64_t ToNanoseconds(const timespec& ts)
{
    return static_cast<int64_t>(ts.tv_sec) * 1000000000 + ts.tv_nsec;
}

std::string FoldCase(std::string_view name)
{
    std::string folded(name);
    for (char& c : folded)
    {
        if (c >= 'A' && c <= 'Z')
        {
            c = static_cast<char>(c - 'A' + 'a');
        }
    }
    return folded;
}

struct CFolderListing
{
    // Folded name -> the names on disk that fold to it, sorted.
    std::unordered_map<std::string, std::vector<std::string>> names;
    int64_t iModified = 0;
    bool bSettled = false;
};

enum class ELookup
{
    FOUND,
    MISSING,
    FOLDER_GONE, // the folder itself can't be read: a cached parent listing is stale
};

class CPathCache
{
public:
    static CPathCache& Get()
    {
        // Never destroyed: paths may be resolved from static destructors.
        static CPathCache* s_pCache = new CPathCache;
        return *s_pCache;
    }

    bool ResolveExisting(const std::string& path, std::string& out)
    {
        std::lock_guard<std::mutex> lock(m_mutex);
        for (int iTry = 0; iTry < 2; ++iTry)
        {
            ELookup eResult = Walk(path, out, false);
            struct stat st;
            if (eResult == ELookup::FOUND && ::stat(out.c_str(), &st) == 0)
            {
                return true;
            }
            if (eResult == ELookup::MISSING)
            {
                break;
            }
            // A cached listing named something that is gone: read everything afresh.
            m_listings.clear();
        }
        out = path;
        return false;
    }

    std::string ResolveForWrite(const std::string& path)
    {
        std::lock_guard<std::mutex> lock(m_mutex);
        std::string out;
        if (Walk(path, out, true) == ELookup::FOLDER_GONE)
        {
            m_listings.clear();
            Walk(path, out, true);
        }
        return out;
    }

    void Forget()
    {
        std::lock_guard<std::mutex> lock(m_mutex);
        m_listings.clear();
    }

private:
    static void AppendName(std::string& out, std::string_view name)
    {
        if (!out.empty() && out.back() != '/')
        {
            out += '/';
        }
        out += name;
    }

    // Walks the levels of a slash path. For writing, the first level that doesn't exist
    // and every level after it keep the caller's spelling.
    ELookup Walk(const std::string& path, std::string& out, bool bForWrite)
    {
        out.assign(path[0] == '/' ? 1 : 0, '/');
        bool bMissing = false;
        size_t iStart = 0;
        while (iStart <= path.size())
        {
            size_t iEnd = path.find('/', iStart);
            if (iEnd == std::string::npos)
            {
                iEnd = path.size();
            }
            std::string_view name(path.data() + iStart, iEnd - iStart);
            iStart = iEnd + 1;
            if (name.empty())
            {
                continue;
            }
            if (bMissing || name == "." || name == "..")
            {
                AppendName(out, name);
                continue;
            }
            const std::string folder = out.empty() ? std::string(".") : out;
            const std::string* pFound = nullptr;
            ELookup eResult = FindName(folder, name, pFound);
            if (eResult == ELookup::FOUND)
            {
                AppendName(out, *pFound);
                continue;
            }
            if (eResult == ELookup::FOLDER_GONE && !out.empty())
            {
                return ELookup::FOLDER_GONE;
            }
            if (!bForWrite)
            {
                return ELookup::MISSING;
            }
            bMissing = true;
            AppendName(out, name);
        }
        return ELookup::FOUND;
    }

    ELookup FindName(const std::string& folder, std::string_view name, const std::string*& pFound)
    {
        auto it = m_listings.find(folder);
        if (it == m_listings.end())
        {
            ELookup eRead = Read(folder);
            if (eRead != ELookup::FOUND)
            {
                return eRead;
            }
            it = m_listings.find(folder);
        }
        if (Pick(it->second, name, pFound))
        {
            return ELookup::FOUND;
        }
        // A miss: read the folder again unless it provably hasn't changed.
        struct stat st;
        if (::stat(folder.c_str(), &st) != 0)
        {
            m_listings.erase(it);
            return ELookup::FOLDER_GONE;
        }
        if (it->second.bSettled && ToNanoseconds(st.st_mtim) == it->second.iModified)
        {
            return ELookup::MISSING;
        }
        ELookup eRead = Read(folder);
        if (eRead != ELookup::FOUND)
        {
            return eRead;
        }
        it = m_listings.find(folder);
        return Pick(it->second, name, pFound) ? ELookup::FOUND : ELookup::MISSING;
    }

    // The exact spelling wins where two names differ only in case; otherwise the first in
    // byte order, so the choice doesn't depend on the order of the folder.
    static bool Pick(const CFolderListing& listing, std::string_view name, const std::string*& pFound)
    {
        auto it = listing.names.find(FoldCase(name));
        if (it == listing.names.end())
        {
            return false;
        }
        pFound = &it->second.front();
        for (const std::string& candidate : it->second)
        {
            if (candidate == name)
            {
                pFound = &candidate;
            }
        }
        return true;
    }

    // FOUND when the folder was read; MISSING when the name is a file, not a folder.
    ELookup Read(const std::string& folder)
    {
        m_listings.erase(folder);
        struct stat st;
        if (::stat(folder.c_str(), &st) != 0)
        {
            return ELookup::FOLDER_GONE;
        }
        if (!S_ISDIR(st.st_mode))
        {
            return ELookup::MISSING;
        }
        DIR* pDir = ::opendir(folder.c_str());
        if (!pDir)
        {
            return ELookup::MISSING;
        }
        if (m_listings.size() >= MAX_CACHED_FOLDERS)
        {
            m_listings.clear();
        }
        timespec now;
        clock_gettime(CLOCK_REALTIME, &now);
        CFolderListing listing;
        listing.iModified = ToNanoseconds(st.st_mtim);
        listing.bSettled = ToNanoseconds(now) - listing.iModified >= SETTLED_NANOSECONDS;
        while (dirent* pEntry = ::readdir(pDir))
        {
            std::string_view name(pEntry->d_name);
            if (name != "." && name != "..")
            {
                listing.names[FoldCase(name)].emplace_back(name);
            }
        }
        ::closedir(pDir);
        for (auto& entry : listing.names)
        {
            std::sort(entry.second.begin(), entry.second.end());
        }
        m_listings[folder] = std::move(listing);
        return ELookup::FOUND;
    }

    std::mutex m_mutex;
    std::unordered_map<std::string, CFolderListing> m_listings;
};
} // namespace

std::string GUtPath::ToSlashes(std::string_view path)
{
    std::string out;
    out.reserve(path.size());
    for (char c : path)
    {
        if (c == '\\')
        {
            c = '/';
        }
        if (c == '/' && !out.empty() && out.back() == '/')
        {
            continue;
        }
        out += c;
    }
    return out;
}

bool GUtPath::ResolveExisting(std::string_view path, std::string& out)
{
    std::string slashes = ToSlashes(path);
    struct stat st;
    if (slashes.empty() || ::stat(slashes.c_str(), &st) == 0)
    {
        // The common case: the path is spelt as on disk.
        out = std::move(slashes);
        return !out.empty();
    }
    return CPathCache::Get().ResolveExisting(slashes, out);
}

bool GUtPath::Exists(std::string_view path)
{
    std::string resolved;
    return ResolveExisting(path, resolved);
}

std::string GUtPath::ResolveForWrite(std::string_view path)
{
    std::string slashes = ToSlashes(path);
    struct stat st;
    if (slashes.empty() || ::stat(slashes.c_str(), &st) == 0)
    {
        return slashes;
    }
    return CPathCache::Get().ResolveForWrite(slashes);
}

std::string GUtPath::FolderOf(std::string_view path)
{
    size_t iSlash = path.rfind('/');
    if (iSlash == std::string_view::npos)
    {
        return std::string();
    }
    if (iSlash == 0)
    {
        return "/";
    }
    return std::string(path.substr(0, iSlash));
}

void GUtPath::ForgetListings()
{
    CPathCache::Get().Forget();
}
