#include "app/GameTables.h"

#include "Utils/Utility/GUtDebug.h"
#include "Utils/Utility/GUtPath.h"
#include "script/LuaScript.h"

namespace Ovrel
{

void CGameTable::Reset()
{
    m_strFile.clear();
    m_bLoaded = false;
    m_global.SetNil();
    m_document.reset();
}

bool CGameTable::Load()
{
    m_bLoaded = false;
    m_global.SetNil();
    m_document.reset();
    const bool bLua = m_strName.size() > 4 && m_strName.compare(m_strName.size() - 4, 4, ".lua") == 0;
    m_bLoaded = bLua ? _LoadLua(m_strFile) : _LoadXml(m_strFile);
    if (!m_bLoaded)
    {
        GUtLog::Get().DisplayMsg(false, 2, "CGameTable::Load()", "%s is not loaded (%s)", m_strName.c_str(),
                                 m_strFile.c_str());
    }
    return m_bLoaded;
}

bool CGameTable::_LoadLua(const std::string& strPath)
{
    // A missing file is the table's own log line; only a broken one reaches Lua's error hooks.
    if (strPath.empty() || !GUtPath::Exists(strPath))
    {
        return false;
    }
    GLib::Script::CLuaScript script;
    if (!script.RunFile(strPath.c_str()))
    {
        return false;
    }
    // The table named after the file ("Attack" of "Attack.lua"), where the file makes one.
    script.GetGlobalTable(m_strName.substr(0, m_strName.size() - 4).c_str(), m_global);
    return true;
}

bool CGameTable::_LoadXml(const std::string& strPath)
{
    std::string strDiskPath;
    if (!GUtPath::ResolveExisting(strPath, strDiskPath))
    {
        return false;
    }
    return static_cast<bool>(m_document.load_file(strDiskPath.c_str()));
}

CGameTables& CGameTables::Get()
{
    static CGameTables s_tables;
    return s_tables;
}

int CGameTables::LoadAll(const std::string& strScriptPath, const std::string& strTablePath)
{
    int iLoaded = 0;
    if (!strScriptPath.empty())
    {
        const struct
        {
            CGameTable* pTable;
            const std::string* pFolder;
        } aTables[] = {{&attack, &strScriptPath},
                       {&attackInfo, &strTablePath},
                       {&mapping, &strScriptPath},
                       {&camera, &strScriptPath},
                       {&entityProperty, &strScriptPath}};
        for (const auto& entry : aTables)
        {
            entry.pTable->SetFileName(*entry.pFolder + entry.pTable->GetName());
            iLoaded += entry.pTable->Load() ? 1 : 0;
        }
    }
    if (!strTablePath.empty())
    {
        for (CGameTable* pTable : {&sessionNpc, &snpcConfig})
        {
            pTable->SetFileName(strTablePath + pTable->GetName());
            iLoaded += pTable->Load() ? 1 : 0;
        }
        // The non-player characters name entity properties; with no content given to them
        // the references are resolved once both sides are read.
        m_bResolved = entityProperty.IsLoaded();
    }
    return iLoaded;
}

void CGameTables::Clear()
{
    for (CGameTable* pTable :
         {&attack, &attackInfo, &mapping, &camera, &entityProperty, &sessionNpc, &snpcConfig})
    {
        pTable->Reset();
    }
    m_bResolved = false;
}

} // namespace Ovrel
