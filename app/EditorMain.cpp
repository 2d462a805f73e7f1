#include "app/EditorMain.h"

#include "Utils/Utility/GUtDebug.h"
#include "Utils/Utility/GUtTimer.h"
#include "app/EditorApp.h"
#include "app/Linux/QtPlatform.h"
#include "scene/Scene.h"

#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <filesystem>
#include <string>

namespace Ovrel
{

namespace
{
const char* Env(const char* pcName)
{
    const char* pcValue = getenv(pcName);
    return (pcValue && *pcValue) ? pcValue : nullptr;
}

// The process's hooks at the end of each frame: the screen grab of ./run and the failed
// assertion that checks the crash path.
void InstallFrameHooks(CEditorApp& app)
{
    const char* pcShot = Env("EDITOR_SCREENSHOT");
    const char* pcAfter = Env("EDITOR_SCREENSHOT_AFTER_MS");
    const char* pcAssertFrame = Env("EDITOR_TEST_ASSERT_FRAME");
    if (!pcShot && !pcAssertFrame)
    {
        return;
    }
    const std::string strShot = pcShot ? pcShot : "";
    const double dShotAt = GUtGetClock().NowMilliseconds() + (pcAfter ? atof(pcAfter) : 3000.0);
    const int iAssertFrame = pcAssertFrame ? atoi(pcAssertFrame) : -1;
    app.SetFrameHook(
        [strShot, dShotAt, iAssertFrame](CEditorApp& running)
        {
            GUT_ASSERT(running.GetFrameNumber() != iAssertFrame);
            if (!strShot.empty() && GUtGetClock().NowMilliseconds() >= dShotAt && !running.IsQuitRequested())
            {
                if (CQtPlatform::SaveScreenshot(strShot.c_str()))
                {
                    printf("%s\n", std::filesystem::absolute(strShot).c_str());
                }
                else
                {
                    fprintf(stderr, "Editor: no screenshot could be taken\n");
                }
                fflush(stdout);
                running.RequestQuit(0);
            }
        });
}
} // namespace

int EditorMain(int iArgc, char** ppArgv)
{
    CEditorApp app;
    app.SetNullDevices(Env("EDITOR_NULL_DEVICES") && strcmp(Env("EDITOR_NULL_DEVICES"), "1") == 0);
    app.SetStartupLines(Env("EDITOR_CONSOLE_LINES"));
    InstallFrameHooks(app);
    bool bSaved = true;
    if (app.Initialize(iArgc, ppArgv))
    {
        app.Run();
        // The test of a scene's round trip through the running application.
        if (const char* pcSave = Env("EDITOR_TEST_SAVE_SCENE"))
        {
            bSaved = app.GetMainScene()->Save(pcSave);
            if (!bSaved)
            {
                fprintf(stderr, "Editor: the main scene could not be saved to %s\n", pcSave);
            }
        }
    }
    app.ShutDown();
    return bSaved ? app.GetExitCode() : 1;
}

} // namespace Ovrel
