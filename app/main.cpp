// Editor: the content-editing suite. The process entry: the crash path first, then the GUI
// library when a display is there, then the application's main function.
#include "app/CrashHandler.h"
#include "app/EditorMain.h"
#include "app/Linux/QtPlatform.h"

#include <QApplication>

#include <memory>

int main(int argc, char** argv)
{
    Ovrel::InstallCrashHandlers(argv[0]);
    std::unique_ptr<QApplication> pGui;
    // Qt sees only the program's name: command-line arguments have no effect.
    static int s_iGuiArgc = 1;
    static char* s_apGuiArgv[] = {argv[0], nullptr};
    if (Ovrel::CQtPlatform::DisplayAvailable())
    {
        pGui = std::make_unique<QApplication>(s_iGuiArgc, s_apGuiArgv);
        Ovrel::CQtPlatform::Install();
    }
    const int iExitCode = Ovrel::EditorMain(argc, argv);
    if (pGui)
    {
        Ovrel::CQtPlatform::Uninstall();
        pGui.reset();
    }
    return iExitCode;
}
