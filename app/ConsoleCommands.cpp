#include "app/ConsoleCommands.h"

#include "Utils/Utility/GUtPath.h"
#include "app/EditorApp.h"
#include "app/EditorManager.h"
#include "app/NullEngine.h"
#include "editor_common/EditorCamera.h"
#include "engine/ext/Console.h"
#include "engine/utility/SystemOutput.h"
#include "scene/EnvironmentAnimator.h"
#include "scene/Scene.h"
#include "script/LuaScript.h"

#include <cstdlib>
#include <string>

namespace Ovrel
{

using GLib::Script::CLuaCall;

namespace
{
CEditorApp* App()
{
    return CEditorApp::Get();
}

// The one line a command prints while its subsystem is not built yet.
void PrintNotLoaded(const char* pcCommand, const char* pcSubsystem)
{
    Kestrin::Utility::Printf("%s: %s is not loaded.\n", pcCommand, pcSubsystem);
}

// print: each argument as text, separated by tabs, at most 256 bytes, on the system output.
int LuaPrint(lua_State* pState)
{
    CLuaCall call(pState);
    std::string strText;
    for (int i = 0; i < call.ArgCount(); ++i)
    {
        if (i > 0)
        {
            strText += '\t';
        }
        strText += call.ArgText(i).c_str();
    }
    if (strText.size() > 255)
    {
        strText.resize(255);
    }
    Kestrin::Utility::Printf("%s\n", strText.c_str());
    return 0;
}

int LuaQuit(lua_State* pState)
{
    (void)pState;
    App()->RequestQuit(0);
    return 0;
}

int LuaRenderThread(lua_State* pState)
{
    CLuaCall call(pState);
    App()->SetRenderThreaded(call.ArgInt(0) != 0);
    return 0;
}

int LuaSkipMip(lua_State* pState)
{
    CLuaCall call(pState);
    if (App()->GetTextureManager())
    {
        App()->GetTextureManager()->SetSkipMip(call.ArgInt(0));
    }
    return 0;
}

int LuaTimeScale(lua_State* pState)
{
    CLuaCall call(pState);
    App()->SetTimeScale(call.ArgFloat(0));
    return 0;
}

int LuaFps(lua_State* pState)
{
    CLuaCall call(pState);
    App()->SetFpsLimit(call.ArgFloat(0));
    return 0;
}

int LuaSmoothTimer(lua_State* pState)
{
    CLuaCall call(pState);
    App()->SetSmoothTimer(call.ArgInt(0) != 0);
    return 0;
}

int LuaCharacterLod(lua_State* pState)
{
    CLuaCall call(pState);
    App()->SetCharacterLod(call.ArgInt(0));
    return 0;
}

int LuaLodFactor(lua_State* pState)
{
    CLuaCall call(pState);
    App()->SetLodFactor(call.ArgFloat(0));
    return 0;
}

int LuaFxLod(lua_State* pState)
{
    CLuaCall call(pState);
    App()->SetFxLod(call.ArgInt(0));
    return 0;
}

// The text as a 64-bit decimal number: its low and high words.
int LuaVisibleGroups(lua_State* pState)
{
    CLuaCall call(pState);
    const unsigned long long uMask = strtoull(call.ArgString(0), nullptr, 10);
    App()->SetVisibleGroups(static_cast<uint32_t>(uMask & 0xFFFFFFFFull), static_cast<uint32_t>(uMask >> 32));
    return 0;
}

int LuaShowFps(lua_State* pState)
{
    CLuaCall call(pState);
    App()->SetOverlayFlag(CEditorApp::OVERLAY_FPS, call.ArgInt(0) != 0);
    return 0;
}

int LuaProfile(lua_State* pState)
{
    CLuaCall call(pState);
    App()->SetOverlayFlag(CEditorApp::OVERLAY_PROFILE, call.ArgInt(0) != 0);
    return 0;
}

// Scene(name): the main scene opens "Scene\<name>\<name>" through the background loader; a
// file that does not load says so in the log when the loader gets to it.
int LuaScene(lua_State* pState)
{
    CLuaCall call(pState);
    CScene* pScene = App()->GetMainScene();
    if (pScene)
    {
        const std::string strName = call.ArgString(0);
        pScene->Open(GUtPath::ToSlashes("Scene\\" + strName + "\\" + strName), true);
    }
    return 0;
}

int LuaEditScene(lua_State* pState)
{
    (void)pState;
    if (App()->GetEditorManager())
    {
        App()->GetEditorManager()->EditScene();
    }
    return 0;
}

int LuaAudio(lua_State* pState)
{
    CLuaCall call(pState);
    App()->PlayConsoleSound(call.ArgString(0), call.ArgCount() > 1, call.ArgFloat(1), call.ArgFloat(2),
                            call.ArgFloat(3));
    return 0;
}

int LuaConsoleLines(lua_State* pState)
{
    CLuaCall call(pState);
    if (App()->GetConsole())
    {
        App()->GetConsole()->SetVisibleLines(call.ArgInt(0));
    }
    return 0;
}

int LuaAddFoldingBones(lua_State* pState)
{
    (void)pState;
    PrintNotLoaded("AddFoldingBones", "the character editor");
    return 0;
}

int LuaShowTake(lua_State* pState)
{
    (void)pState;
    PrintNotLoaded("ShowTake", "the character editor");
    return 0;
}

int LuaActiveScriptedAnim(lua_State* pState)
{
    (void)pState;
    PrintNotLoaded("ActiveScriptedAnim", "the scripted light animation");
    return 0;
}

int LuaSetLightAnim(lua_State* pState)
{
    (void)pState;
    PrintNotLoaded("SetLightAnim", "the scripted light animation");
    return 0;
}

int LuaActiveEnvAnim(lua_State* pState)
{
    CLuaCall call(pState);
    if (call.ArgCount() < 1)
    {
        return call.Error("ActiveEnvAnim error ! need 1 arguments.");
    }
    CEnvironmentAnimator* pAnimator = App()->GetEnvironmentAnimator();
    const char* pcName = call.ArgString(0);
    if (pAnimator)
    {
        pAnimator->ActiveEnvAnim(pcName); // prints the failure itself
    }
    else
    {
        Kestrin::Utility::Printf("ActiveEnvAnim env: \"%s\" not founded.\n", pcName);
    }
    return 0;
}

int LuaFovEff(lua_State* pState)
{
    CLuaCall call(pState);
    if (App()->GetEditorCamera())
    {
        App()->GetEditorCamera()->SetFovHold(call.ArgFloat(0) > 0.5f, call.ArgFloat(1));
    }
    return 0;
}

int LuaActiveEffect(lua_State* pState)
{
    CLuaCall call(pState);
    if (call.ArgCount() < 2)
    {
        return call.Error("ActiveEffect error ! need 1 arguments.");
    }
    PrintNotLoaded("ActiveEffect", "the fx runtime");
    return 0;
}

int LuaDeActiveEffect(lua_State* pState)
{
    CLuaCall call(pState);
    if (call.ArgCount() < 2)
    {
        return call.Error("ActiveEffect error ! need 1 arguments.");
    }
    PrintNotLoaded("DeActiveEffect", "the fx runtime");
    return 0;
}
} // namespace

void RegisterConsoleCommands(GLib::Script::CLuaScript& script)
{
    static const struct
    {
        const char* pcName;
        GLib::Script::LuaFunction pFunction;
    } s_aCommands[] = {
        {"print", &LuaPrint},
        {"Exit", &LuaQuit},
        {"Quit", &LuaQuit},
        {"RenderThread", &LuaRenderThread},
        {"SkipMip", &LuaSkipMip},
        {"TimeScale", &LuaTimeScale},
        {"Fps", &LuaFps},
        {"SmoothTimer", &LuaSmoothTimer},
        {"CharacterLod", &LuaCharacterLod},
        {"LodFactor", &LuaLodFactor},
        {"FxLod", &LuaFxLod},
        {"VisibleGroups", &LuaVisibleGroups},
        {"ShowFps", &LuaShowFps},
        {"Profile", &LuaProfile},
        {"Scene", &LuaScene},
        {"EditScene", &LuaEditScene},
        {"Audio", &LuaAudio},
        {"ConsoleLines", &LuaConsoleLines},
        {"AddFoldingBones", &LuaAddFoldingBones},
        {"ShowTake", &LuaShowTake},
        {"ActiveScriptedAnim", &LuaActiveScriptedAnim},
        {"SetLightAnim", &LuaSetLightAnim},
        {"ActiveEnvAnim", &LuaActiveEnvAnim},
        {"FovEff", &LuaFovEff},
        {"ActiveEffect", &LuaActiveEffect},
        {"DeActiveEffect", &LuaDeActiveEffect},
    };
    for (const auto& command : s_aCommands)
    {
        script.RegisterFunction(command.pcName, command.pFunction);
    }
}

void OnLuaError(GLib::Script::CLuaScript* pScript, int iCode, const char* pcText)
{
    (void)pScript, (void)iCode;
    CEditorApp* pApp = App();
    const bool bConsoleOpen =
        pApp && pApp->GetConsole() && pApp->GetConsole()->GetState() == Kestrin::Ext::CConsole::STATE_INPUT;
    Kestrin::Utility::GetSystemOutput()->Print(bConsoleOpen ? 0 : 1, (std::string(pcText) + "\n").c_str());
}

} // namespace Ovrel
