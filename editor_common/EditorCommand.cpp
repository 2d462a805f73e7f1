#include "editor_common/EditorCommand.h"

// ---------------------------------------------------------------------------------------
// CEditorCommand

bool CEditorCommand::Execute(bool /*bRedo*/)
{
    return true;
}

bool CEditorCommand::Undo()
{
    return true;
}

GUtString CEditorCommand::GetName() const
{
    return GUtString();
}

// ---------------------------------------------------------------------------------------
// CEditorCommandManager

CEditorCommandManager::~CEditorCommandManager()
{
    _Clear(m_undoList);
    _Clear(m_redoList);
}

void CEditorCommandManager::_Clear(std::vector<CEditorCommand*>& list)
{
    // From the top down, as the commands were pushed in the other order.
    while (!list.empty())
    {
        CEditorCommand* pCommand = list.back();
        list.pop_back();
        delete pCommand;
    }
}

bool CEditorCommandManager::Execute(CEditorCommand* pCommand)
{
    if (!pCommand)
    {
        return false;
    }
    if (!pCommand->Execute(false))
    {
        delete pCommand;
        return false;
    }
    Push(pCommand);
    return true;
}

void CEditorCommandManager::Push(CEditorCommand* pCommand)
{
    if (!pCommand)
    {
        return;
    }
    m_undoList.push_back(pCommand);
    ClearRedo();
}

bool CEditorCommandManager::Undo()
{
    if (m_undoList.empty())
    {
        return false;
    }
    CEditorCommand* pCommand = m_undoList.back();
    m_undoList.pop_back();
    if (pCommand->Undo())
    {
        m_redoList.push_back(pCommand);
    }
    else
    {
        delete pCommand;
    }
    return true;
}

bool CEditorCommandManager::Redo()
{
    if (m_redoList.empty())
    {
        return false;
    }
    CEditorCommand* pCommand = m_redoList.back();
    m_redoList.pop_back();
    if (pCommand->Execute(true))
    {
        m_undoList.push_back(pCommand);
    }
    else
    {
        delete pCommand;
    }
    return true;
}

void CEditorCommandManager::ClearUndo()
{
    _Clear(m_undoList);
}

void CEditorCommandManager::ClearRedo()
{
    _Clear(m_redoList);
}

GUtString CEditorCommandManager::UndoName() const
{
    return m_undoList.empty() ? GUtString() : m_undoList.back()->GetName();
}

GUtString CEditorCommandManager::RedoName() const
{
    return m_redoList.empty() ? GUtString() : m_redoList.back()->GetName();
}

// ---------------------------------------------------------------------------------------
// Menu texts

namespace EditorMenuText
{

GUtString SceneUndo(const CEditorCommandManager& history)
{
    if (history.UndoCount() > 0)
    {
        return GUtString("&Undo ") + history.UndoName() + "\tCtrl+Z";
    }
    return GUtString("&Undo \tCtrl+Z");
}

GUtString SceneRedo(const CEditorCommandManager& history)
{
    if (history.RedoCount() > 0)
    {
        return GUtString("&Redo ") + history.RedoName() + "\tCtrl+Y";
    }
    return GUtString("&Redo\tCtrl+Y");
}

} // namespace EditorMenuText
