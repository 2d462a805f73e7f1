#include "app/Revision.h"

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
    pugi::xml_document document;
    if (!document.load_file(pcPath))
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
