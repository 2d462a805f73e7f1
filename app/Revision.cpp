#include "app/Revision.h"

#include "Utils/Utility/GUtPath.h"

#include <pugixml.hpp>

#include <mutex>

namespace Ovrel
{

const std::string& CRevision::Get()
{
    static std::once_flag s_once;
    static std::string s_strRevision;
    std::call_once(s_once, [] { s_strRevision = Read(FILE_NAME); });
    return s_strRevision;
}

std::string CRevision::Read(const char* pcPath)
{
    std::string strPath;
    if (!GUtPath::ResolveExisting(pcPath, strPath)) // a data path: any case, either slash
    {
        return std::string();
    }
    pugi::xml_document document;
    if (!document.load_file(strPath.c_str()))
    {
        return std::string();
    }
    const pugi::xml_attribute revision = document.child("info").child("entry").attribute("revision");
    if (!revision)
    {
        return std::string();
    }
    return "rev" + std::to_string(revision.as_int());
}

} // namespace Ovrel
