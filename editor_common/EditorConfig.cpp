#include "editor_common/EditorConfig.h"

#include <cstdio>
#include <cstdlib>
#include <sstream>

namespace
{
// Four blanks per level, no declaration: the file stays readable and diff-friendly.
constexpr unsigned FORMAT_FLAGS = pugi::format_indent | pugi::format_no_declaration;
} // namespace

CEditorConfig::CEditorConfig() : m_cursor(m_document) {}

bool CEditorConfig::Load(const char* pcPath)
{
    m_document.reset();
    const pugi::xml_parse_result result = m_document.load_file(pcPath, pugi::parse_default);
    if (!result)
    {
        m_document.reset();
    }
    m_cursor = m_document;
    return static_cast<bool>(result);
}

bool CEditorConfig::Save(const char* pcPath) const
{
    GUtString strTemp(pcPath);
    strTemp += ".tmp";
    if (!m_document.save_file(strTemp.c_str(), "    ", FORMAT_FLAGS))
    {
        remove(strTemp.c_str());
        return false;
    }
    if (rename(strTemp.c_str(), pcPath) != 0)
    {
        remove(strTemp.c_str());
        return false;
    }
    return true;
}

GUtString CEditorConfig::ToText() const
{
    std::ostringstream stream;
    m_document.save(stream, "    ", FORMAT_FLAGS);
    return GUtString(stream.str());
}

void CEditorConfig::EnterSection(const char* pcName)
{
    if (m_cursor)
    {
        m_cursor = m_cursor.child(pcName);
    }
}

void CEditorConfig::LeaveSection()
{
    if (m_cursor)
    {
        m_cursor = m_cursor.parent();
    }
}

void CEditorConfig::CreateSection(const char* pcName)
{
    if (m_cursor)
    {
        m_cursor = m_cursor.append_child(pcName);
    }
}

const char* CEditorConfig::_Text(const char* pcKey) const
{
    if (!m_cursor)
    {
        return nullptr;
    }
    const pugi::xml_node key = m_cursor.child(pcKey);
    if (!key)
    {
        return nullptr;
    }
    return key.text().get(); // "" when the key holds no text
}

bool CEditorConfig::ReadInt(const char* pcKey, int& iOut) const
{
    const char* pcText = _Text(pcKey);
    if (!pcText)
    {
        return false;
    }
    iOut = atoi(pcText);
    return true;
}

bool CEditorConfig::ReadBool(const char* pcKey, bool& bOut) const
{
    const char* pcText = _Text(pcKey);
    if (!pcText)
    {
        return false;
    }
    bOut = atoi(pcText) != 0;
    return true;
}

bool CEditorConfig::ReadString(const char* pcKey, GUtString& strOut) const
{
    const char* pcText = _Text(pcKey);
    if (!pcText)
    {
        return false;
    }
    strOut = pcText;
    return true;
}

void CEditorConfig::WriteString(const char* pcKey, const char* pcText)
{
    if (!m_cursor)
    {
        return;
    }
    pugi::xml_node key = m_cursor.append_child(pcKey);
    if (pcText && *pcText) // an empty value is an empty element, "<Key />"
    {
        key.append_child(pugi::node_pcdata).set_value(pcText);
    }
}

void CEditorConfig::WriteInt(const char* pcKey, int iValue)
{
    char acText[16];
    snprintf(acText, sizeof(acText), "%d", iValue);
    WriteString(pcKey, acText);
}

void CEditorConfig::WriteBool(const char* pcKey, bool bValue)
{
    WriteString(pcKey, bValue ? "1" : "0");
}
