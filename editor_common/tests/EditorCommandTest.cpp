#include "editor_common/EditorCommand.h"

#include <gtest/gtest.h>

#include <string>
#include <vector>

namespace
{
using Lines = std::vector<std::string>;

// Journals "Execute X", "Redo X", "Undo X" and "~X"; each step answers as planned.
class CRecordingCommand final : public CSceneEditorCommand
{
public:
    CRecordingCommand(Lines& journal, const char* pcName, bool bExecute = true, bool bUndo = true,
                      bool bRedo = true)
        : CSceneEditorCommand(nullptr), m_journal(journal), m_strName(pcName), m_bExecute(bExecute),
          m_bUndo(bUndo), m_bRedo(bRedo)
    {
    }
    ~CRecordingCommand() override { m_journal.push_back("~" + m_strName); }

    bool Execute(bool bRedo) override
    {
        m_journal.push_back((bRedo ? "Redo " : "Execute ") + m_strName);
        return bRedo ? m_bRedo : m_bExecute;
    }
    bool Undo() override
    {
        m_journal.push_back("Undo " + m_strName);
        return m_bUndo;
    }
    GUtString GetName() const override { return GUtString(m_strName.c_str()); }

private:
    Lines& m_journal;
    std::string m_strName;
    bool m_bExecute;
    bool m_bUndo;
    bool m_bRedo;
};

class CCharacterProbe final : public CCharacterEditorCommand
{
public:
    explicit CCharacterProbe(CCharacterEditor* pEditor) : CCharacterEditorCommand(pEditor) {}
    CCharacterEditor* Editor() const { return m_pEditor; }
};
} // namespace

TEST(EditorCommand, BaseDefaultsSucceedWithNoName)
{
    CEditorCommand command;
    EXPECT_TRUE(command.Execute(false));
    EXPECT_TRUE(command.Execute(true));
    EXPECT_TRUE(command.Undo());
    EXPECT_TRUE(command.GetName().IsEmpty());

    CCharacterEditor* pEditor = reinterpret_cast<CCharacterEditor*>(0x10);
    CCharacterProbe probe(pEditor);
    EXPECT_EQ(probe.Editor(), pEditor);
    EXPECT_TRUE(probe.Execute(false));
}

TEST(EditorCommandManager, ExecuteUndoRedoMoveCommandsBetweenTheLists)
{
    Lines journal;
    CEditorCommandManager history;
    EXPECT_FALSE(history.Execute(nullptr));
    EXPECT_TRUE(history.Execute(new CRecordingCommand(journal, "Create")));
    EXPECT_TRUE(history.Execute(new CRecordingCommand(journal, "Modify")));
    EXPECT_EQ(history.UndoCount(), 2);
    EXPECT_EQ(history.UndoName().ToStd(), "Modify");
    EXPECT_TRUE(history.RedoName().IsEmpty());

    EXPECT_TRUE(history.Undo());
    EXPECT_EQ(history.UndoName().ToStd(), "Create");
    EXPECT_EQ(history.RedoName().ToStd(), "Modify");
    EXPECT_TRUE(history.Undo());
    EXPECT_FALSE(history.Undo()); // nothing left
    EXPECT_EQ(history.RedoCount(), 2);
    EXPECT_TRUE(history.UndoName().IsEmpty());

    EXPECT_TRUE(history.Redo());
    EXPECT_TRUE(history.Redo());
    EXPECT_FALSE(history.Redo());
    EXPECT_EQ(history.UndoCount(), 2);
    EXPECT_EQ(journal, (Lines{"Execute Create", "Execute Modify", "Undo Modify", "Undo Create", "Redo Create",
                              "Redo Modify"}));
}

TEST(EditorCommandManager, PushAfterTwoUndosDestroysBothRedoableCommands)
{
    Lines journal;
    CEditorCommandManager history;
    history.Execute(new CRecordingCommand(journal, "A"));
    history.Execute(new CRecordingCommand(journal, "B"));
    history.Undo();
    history.Undo();
    journal.clear();
    history.Push(nullptr); // does nothing, not even clearing
    EXPECT_EQ(history.RedoCount(), 2);

    CRecordingCommand* pApplied = new CRecordingCommand(journal, "C");
    history.Push(pApplied);
    // Push runs nothing; the redo list goes from its top (A, undone last) down.
    EXPECT_EQ(journal, (Lines{"~A", "~B"}));
    EXPECT_EQ(history.RedoCount(), 0);
    EXPECT_EQ(history.UndoName().ToStd(), "C");
}

TEST(EditorCommandManager, FailingCommandsLeaveNoTraceOrDropOut)
{
    Lines journal;
    CEditorCommandManager history;
    history.Execute(new CRecordingCommand(journal, "A"));
    history.Execute(new CRecordingCommand(journal, "B"));
    history.Undo();
    journal.clear();

    // A command that did nothing is destroyed and the redo list is untouched.
    EXPECT_FALSE(history.Execute(new CRecordingCommand(journal, "Nothing", false)));
    EXPECT_EQ(journal, (Lines{"Execute Nothing", "~Nothing"}));
    EXPECT_EQ(history.RedoCount(), 1);
    EXPECT_EQ(history.UndoCount(), 1);

    // A command that cannot undo is dropped, and the one below stays reachable.
    journal.clear();
    history.Execute(new CRecordingCommand(journal, "Stuck", true, false));
    EXPECT_EQ(history.RedoCount(), 0);
    EXPECT_TRUE(history.Undo());
    EXPECT_EQ(journal, (Lines{"Execute Stuck", "~B", "Undo Stuck", "~Stuck"}));
    EXPECT_EQ(history.UndoName().ToStd(), "A");
    EXPECT_EQ(history.RedoCount(), 0);

    // A command that cannot redo is dropped; Redo still reports that it did something.
    journal.clear();
    history.Execute(new CRecordingCommand(journal, "Once", true, true, false));
    history.Undo();
    EXPECT_TRUE(history.Redo());
    EXPECT_EQ(journal, (Lines{"Execute Once", "Undo Once", "Redo Once", "~Once"}));
    EXPECT_EQ(history.UndoCount(), 1);
    EXPECT_EQ(history.RedoCount(), 0);
}

TEST(EditorCommandManager, ClearingAndDestructionGoUndoListFirstTopDown)
{
    Lines journal;
    {
        CEditorCommandManager history;
        for (const char* pcName : {"A", "B", "C", "D"})
        {
            history.Execute(new CRecordingCommand(journal, pcName));
        }
        history.Undo();
        history.Undo();
        journal.clear();
    }
    EXPECT_EQ(journal, (Lines{"~B", "~A", "~C", "~D"}));

    journal.clear();
    CEditorCommandManager history;
    history.Execute(new CRecordingCommand(journal, "A"));
    history.Execute(new CRecordingCommand(journal, "B"));
    history.Undo();
    journal.clear();
    history.ClearUndo();
    EXPECT_EQ(journal, (Lines{"~A"}));
    EXPECT_EQ(history.RedoCount(), 1);
    history.ClearRedo();
    EXPECT_EQ(journal, (Lines{"~A", "~B"}));
    EXPECT_EQ(history.UndoCount() + history.RedoCount(), 0);
}

TEST(EditorCommandManager, MenuTextsOfTheSceneEditorAndTheOthers)
{
    Lines journal;
    CEditorCommandManager history;
    EXPECT_EQ(EditorMenuText::SceneUndo(history).ToStd(), "&Undo \tCtrl+Z");
    EXPECT_EQ(EditorMenuText::SceneRedo(history).ToStd(), "&Redo\tCtrl+Y");

    history.Execute(new CRecordingCommand(journal, EditorCommandNames::ADD_TO_GROUP));
    history.Execute(new CRecordingCommand(journal, EditorCommandNames::MODIFY_MESH_DATA));
    history.Undo();
    EXPECT_EQ(EditorMenuText::SceneUndo(history).ToStd(), "&Undo Add to Group\tCtrl+Z");
    EXPECT_EQ(EditorMenuText::SceneRedo(history).ToStd(), "&Redo BrushMeshData\tCtrl+Y");

    // An unnamed command, as the other editors' modify commands are.
    history.Push(new CEditorCommand());
    EXPECT_EQ(EditorMenuText::SceneUndo(history).ToStd(), "&Undo \tCtrl+Z");
    EXPECT_EQ(history.UndoCount(), 2);

    EXPECT_STREQ(EditorMenuText::FIXED_UNDO, "&Undo\tCtrl+Z");
    EXPECT_STREQ(EditorMenuText::FIXED_REDO, "&Redo\tCtrl+Y");
    EXPECT_STREQ(EditorMenuText::CLEAR_UNDO, "&Clear Undo");
}

TEST(EditorCommandNames, SceneEditorNames)
{
    using namespace EditorCommandNames;
    const Lines names{MODIFY_ENTITY, CREATE_ENTITY, DELETE_ENTITY,   CLONE_ENTITY,      PASTE_ENTITY,
                      GROUP,         UNGROUP,       ADD_TO_GROUP,    REMOVE_FROM_GROUP, OPEN_GROUP,
                      CLOSE_GROUP,   IMPORT,        MODIFY_MESH_DATA};
    EXPECT_EQ(names,
              (Lines{"Modify", "Create", "Delete", "Clone", "Paste", "Group", "Ungroup", "Add to Group",
                     "Remove from Group", "Open Group", "Close Group", "Import", "BrushMeshData"}));
}
