// Undo and redo. A change to a document is a command: the editor constructs it and hands it
// to its history (CEditorCommandManager), which runs it and keeps it. A command owns what it
// needs to reverse itself, such as a copy of the old state. The history has no limit and
// merges nothing: two drags are two commands.
#pragma once

#include "Utils/Utility/GUtString.h"

#include <vector>

class CSceneEditor;
class CFxEditor;
class CMaterialEditor;
class CCharacterEditor;

class CEditorCommand
{
public:
    CEditorCommand() = default;
    virtual ~CEditorCommand() = default;
    CEditorCommand(const CEditorCommand&) = delete;
    CEditorCommand& operator=(const CEditorCommand&) = delete;

    // Applies the change; bRedo is true when the history applies it again after an undo.
    // False means the command did nothing and must not be kept.
    virtual bool Execute(bool bRedo);
    // Reverses the change. False means it could not, and the command is dropped.
    virtual bool Undo();
    // The text for the menu ("Create", "Delete"); empty by default.
    virtual GUtString GetName() const;
};

// The bases of each editor's commands: they add the editor the command works on.
class CSceneEditorCommand : public CEditorCommand
{
public:
    explicit CSceneEditorCommand(CSceneEditor* pEditor) : m_pEditor(pEditor) {}
    ~CSceneEditorCommand() override = default;

protected:
    CSceneEditor* m_pEditor;
};

class CFxEditorCommand : public CEditorCommand
{
public:
    explicit CFxEditorCommand(CFxEditor* pEditor) : m_pEditor(pEditor) {}
    ~CFxEditorCommand() override = default;

protected:
    CFxEditor* m_pEditor;
};

class CMaterialEditorCommand : public CEditorCommand
{
public:
    explicit CMaterialEditorCommand(CMaterialEditor* pEditor) : m_pEditor(pEditor) {}
    ~CMaterialEditorCommand() override = default;

protected:
    CMaterialEditor* m_pEditor;
};

class CCharacterEditorCommand : public CEditorCommand
{
public:
    explicit CCharacterEditorCommand(CCharacterEditor* pEditor) : m_pEditor(pEditor) {}
    ~CCharacterEditorCommand() override = default;

protected:
    CCharacterEditor* m_pEditor;
};

// The names the Scene Editor's commands give for the menu. The Fx, Material and Character
// editors' modify commands have none.
namespace EditorCommandNames
{
inline constexpr const char* MODIFY_ENTITY = "Modify";
inline constexpr const char* CREATE_ENTITY = "Create";
inline constexpr const char* DELETE_ENTITY = "Delete";
inline constexpr const char* CLONE_ENTITY = "Clone";
inline constexpr const char* PASTE_ENTITY = "Paste";
inline constexpr const char* GROUP = "Group";
inline constexpr const char* UNGROUP = "Ungroup";
inline constexpr const char* ADD_TO_GROUP = "Add to Group";
inline constexpr const char* REMOVE_FROM_GROUP = "Remove from Group";
inline constexpr const char* OPEN_GROUP = "Open Group";
inline constexpr const char* CLOSE_GROUP = "Close Group";
inline constexpr const char* IMPORT = "Import";
inline constexpr const char* MODIFY_MESH_DATA = "BrushMeshData";
} // namespace EditorCommandNames

// One editor's history. Both lists own their commands; the last element is the top.
class CEditorCommandManager
{
public:
    CEditorCommandManager() = default;
    // Destroys the undo list, then the redo list, each from its top down.
    virtual ~CEditorCommandManager();
    CEditorCommandManager(const CEditorCommandManager&) = delete;
    CEditorCommandManager& operator=(const CEditorCommandManager&) = delete;

    // Runs a new command and keeps it (clearing the redo list). A command that reports false
    // is destroyed, the redo list stays as it was, and the result is false; null gives false.
    bool Execute(CEditorCommand* pCommand);
    // Keeps a command that has already been applied and clears the redo list; null does nothing.
    void Push(CEditorCommand* pCommand);
    // Undoes the top command and moves it to the redo list; one that fails to undo is
    // destroyed instead. False only when there is nothing to undo.
    bool Undo();
    // Applies the top redo command again and moves it back; one that fails is destroyed
    // instead. False only when there is nothing to redo.
    bool Redo();
    void ClearUndo();
    void ClearRedo();

    int UndoCount() const { return static_cast<int>(m_undoList.size()); }
    int RedoCount() const { return static_cast<int>(m_redoList.size()); }
    // The top command's name, or empty when the list is empty.
    GUtString UndoName() const;
    GUtString RedoName() const;

private:
    static void _Clear(std::vector<CEditorCommand*>& list);

    std::vector<CEditorCommand*> m_undoList;
    std::vector<CEditorCommand*> m_redoList;
};

// The Edit menu's texts. The Scene Editor names the command to undo or redo; the other
// editors show fixed items. An item is enabled while its count is above 0.
namespace EditorMenuText
{
inline constexpr const char* CLEAR_UNDO = "&Clear Undo";
inline constexpr const char* FIXED_UNDO = "&Undo\tCtrl+Z";
inline constexpr const char* FIXED_REDO = "&Redo\tCtrl+Y";

// "&Undo <name>\tCtrl+Z", or "&Undo \tCtrl+Z" when there is nothing to undo.
GUtString SceneUndo(const CEditorCommandManager& history);
// "&Redo <name>\tCtrl+Y", or "&Redo\tCtrl+Y" when there is nothing to redo.
GUtString SceneRedo(const CEditorCommandManager& history);
} // namespace EditorMenuText
