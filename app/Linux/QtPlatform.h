// The desktop on Linux through Qt 6 Widgets: the window system that makes the main window,
// the editors' tool windows, the clipboard, message boxes (with an empty caption) and the
// screen grab that ./run uses. Install() puts all of them in place; Uninstall() takes them out.
#pragma once

#include "editor_common/EditorWindow.h"
#include "engine/ext/Clipboard.h"
#include "engine/render_device/Window.h"

namespace Ovrel
{

class CQtMainWindow;

class CQtWindowSystem final : public Kestrin::RenderDevice::IWindowSystem
{
public:
    bool HasDisplay() const override { return true; }
    Kestrin::RenderDevice::IWindow* CreateMainWindow(int32_t iClientW, int32_t iClientH) override;
};

class CQtEditorWindowFactory final : public IEditorWindowFactory
{
public:
    IEditorWindow* CreateToolWindow(const char* pcTitle, const SEditorRect& rect, bool bTop) override;
};

class CQtClipboard final : public Kestrin::Ext::IClipboard
{
public:
    void SetText(const std::string& strText) override;
    std::string GetText() override;
};

class CQtPlatform
{
public:
    // Installs the window system, the tool-window factory, the clipboard and the message box.
    // A QApplication must exist.
    static void Install();
    static void Uninstall();
    // Grabs the whole screen into a PNG file. False on failure.
    static bool SaveScreenshot(const char* pcPath);
    // True when a display can be reached (DISPLAY or WAYLAND_DISPLAY is set).
    static bool DisplayAvailable();
};

} // namespace Ovrel
