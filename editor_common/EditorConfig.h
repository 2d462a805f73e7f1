// CEditorConfig: the XML document Editor.cfg, which keeps window places and data folders.
//
// The document has no root element: its top-level elements are sections, and each key is an
// element whose text is the value. Numbers are decimal, booleans 0 or 1. A cursor walks the
// sections: EnterSection moves it to a child, LeaveSection back to the parent. A section that
// is entered but missing leaves no cursor at all, so every read fails and LeaveSection does
// nothing until the document is loaded again; readers enter each section only once.
#pragma once

#include "Utils/Utility/GUtString.h"

#include <pugixml.hpp>

class CEditorConfig
{
public:
    // An empty document, the cursor at the document node.
    CEditorConfig();
    virtual ~CEditorConfig() = default;
    CEditorConfig(const CEditorConfig&) = delete;
    CEditorConfig& operator=(const CEditorConfig&) = delete;

    // Reads the file. A missing or broken file leaves the document empty (every read then
    // returns false) and gives false. The cursor goes back to the document node.
    bool Load(const char* pcPath);
    // Writes the document through a temporary file beside the target, renamed into place.
    // Returns false on failure and reports nothing.
    bool Save(const char* pcPath) const;
    // The document as text, exactly as Save writes it.
    GUtString ToText() const;

    void EnterSection(const char* pcName);
    void LeaveSection();
    // Adds a section under the cursor and enters it; with no cursor does nothing.
    void CreateSection(const char* pcName);
    bool HasCursor() const { return static_cast<bool>(m_cursor); }

    // Look up the first key of that name under the cursor. Missing (or no cursor): false, and
    // the out value stays as it was. A key with no text gives 0, false or "".
    bool ReadInt(const char* pcKey, int& iOut) const;
    bool ReadBool(const char* pcKey, bool& bOut) const;
    bool ReadString(const char* pcKey, GUtString& strOut) const;

    // Add a key under the cursor; with no cursor they do nothing.
    void WriteString(const char* pcKey, const char* pcText);
    void WriteInt(const char* pcKey, int iValue);
    void WriteBool(const char* pcKey, bool bValue);

private:
    const char* _Text(const char* pcKey) const; // null when the key is missing

    pugi::xml_document m_document;
    pugi::xml_node m_cursor;
};
