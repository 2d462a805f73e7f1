// The game's tables read at start-up: "Attack.lua", "AttackInfo.xml", "Mapping.lua",
// "Camera.lua", "EntityProperty.lua", "SessionNPC.xml" and "SNPCConfig.xml". Each is a
// singleton with a file-name setter and a load call; a missing file leaves it empty, with a
// log line. What the tables hold is the game's business: they are kept as read (Lua: the
// script's globals; XML: the document) for the parts that use them.
#pragma once

#include "script/ScriptValue.h"

#include <pugixml.hpp>

#include <memory>
#include <string>

namespace Ovrel
{

class CGameTable
{
public:
    explicit CGameTable(const char* pcName) : m_strName(pcName) {}
    virtual ~CGameTable() = default;
    CGameTable(const CGameTable&) = delete;
    CGameTable& operator=(const CGameTable&) = delete;

    const std::string& GetName() const { return m_strName; }
    void SetFileName(const std::string& strFile) { m_strFile = strFile; }
    const std::string& GetFileName() const { return m_strFile; }
    // Reads the file (a data path). False, with a log line, when it is missing or broken;
    // the table is empty then.
    bool Load();
    bool IsLoaded() const { return m_bLoaded; }
    // Empty again, with no file.
    void Reset();
    // A Lua table's global of that name (nil when absent or not loaded).
    const GLib::Script::CScriptValue& GetGlobal() const { return m_global; }
    // An XML table's document (empty when not loaded).
    const pugi::xml_document& GetDocument() const { return m_document; }

private:
    bool _LoadLua(const std::string& strPath);
    bool _LoadXml(const std::string& strPath);

    std::string m_strName; // the file name without folder, e.g. "Attack.lua"
    std::string m_strFile;
    bool m_bLoaded = false;
    GLib::Script::CScriptValue m_global;
    pugi::xml_document m_document;
};

// The seven tables, each reached by name.
class CGameTables
{
public:
    static CGameTables& Get();

    CGameTable attack{"Attack.lua"};
    CGameTable attackInfo{"AttackInfo.xml"};
    CGameTable mapping{"Mapping.lua"};
    CGameTable camera{"Camera.lua"};
    CGameTable entityProperty{"EntityProperty.lua"};
    CGameTable sessionNpc{"SessionNPC.xml"};
    CGameTable snpcConfig{"SNPCConfig.xml"};

    // The start-up's order: with a script folder the first five (AttackInfo.xml from the
    // table folder); with a table folder the last two, then the cross-references of
    // EntityProperty. Returns how many tables loaded.
    int LoadAll(const std::string& strScriptPath, const std::string& strTablePath);
    // Every table empty again.
    void Clear();
    bool AreCrossReferencesResolved() const { return m_bResolved; }

private:
    bool m_bResolved = false;
};

} // namespace Ovrel
