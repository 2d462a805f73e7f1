// The start of the process: the crash path, the GUI library, the application's main
// function. The environment, not the command line, chooses what a run does:
//
//   EDITOR_NULL_DEVICES=1          the null render and audio devices; with no display (no
//                                  DISPLAY or WAYLAND_DISPLAY) no window at all
//   EDITOR_CONSOLE_LINES="@N line ..."  console lines to run at frame N after start-up
//   EDITOR_SCREENSHOT=FILE         grab the screen into FILE (PNG) after
//   EDITOR_SCREENSHOT_AFTER_MS=MS  milliseconds (default 3000), print its path and quit
//   EDITOR_TEST_ASSERT_FRAME=N     fail an assertion at frame N (checks the crash path)
#pragma once

namespace Ovrel
{

// Constructs the application, initialises it, runs it if that worked, destroys it and
// returns its exit code. Arguments are passed along and have no effect.
int EditorMain(int iArgc, char** ppArgv);

} // namespace Ovrel
