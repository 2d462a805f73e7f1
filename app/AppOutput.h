// The application's system output and console callback.
//
// CAppSystemOutput prints to the console (white for level 0, yellow for 1, red for 2) when
// it exists; level 1 or above also shows a message box, level 2 or above ends the process.
// CAppConsoleCallback runs a console line through the application and leaves OnPrint empty.
#pragma once

#include "engine/ext/Console.h"
#include "engine/utility/SystemOutput.h"

namespace Ovrel
{

class CEditorApp;

class CAppSystemOutput final : public Kestrin::Utility::ISystemOutput
{
public:
    static constexpr uint32_t COLOUR_NORMAL = 0xffffff;
    static constexpr uint32_t COLOUR_WARNING = 0xffff00;
    static constexpr uint32_t COLOUR_FATAL = 0xff0000;

    explicit CAppSystemOutput(CEditorApp* pApp) : m_pApp(pApp) {}
    void Print(int iLevel, const char* pcText) override;

private:
    CEditorApp* m_pApp; // not owned
};

class CAppConsoleCallback final : public Kestrin::Ext::IConsoleCallback
{
public:
    explicit CAppConsoleCallback(CEditorApp* pApp) : m_pApp(pApp) {}
    void OnCommand(const char* pcLine) override;
    void OnPrint(const char* pcText) override { (void)pcText; }

private:
    CEditorApp* m_pApp; // not owned
};

} // namespace Ovrel
