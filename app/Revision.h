// The build's revision, for the title and the dump names: "rev" and the number of the
// attribute "revision" of info/entry in ../server_config/SVNInfo.xml, or "" when the file
// or the attribute is missing. Read once per process.
#pragma once

#include <string>

namespace Ovrel
{

class CRevision
{
public:
    static constexpr const char* FILE_NAME = "../server_config/SVNInfo.xml";

    // The process-wide text, read on first use.
    static const std::string& Get();
    // Reads one file: "rev%d" or "".
    static std::string Read(const char* pcPath);
};

} // namespace Ovrel
