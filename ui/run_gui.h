#pragma once
// The run with windows: chosen when a display is there and the start wants the main
// window. Nothing of Qt is touched before; a headless run never loads a platform plugin.
#include <functional>
#include <string>

#include "frame/context.h"

namespace qumbrel {

// A display to show windows on: DISPLAY, WAYLAND_DISPLAY or QT_QPA_PLATFORM set.
bool display_available();

// The main window over the options of `headless` (its run flags and program folder), until
// the user ends the program; the exit code.
// `note` (a path on the command line that does not exist) is shown in the status list.
int run_main_window(Program& headless, int argc, char** argv, const std::string& note = {});

// The automatic mode with its tray form (an icon where the desktop has a tray); its menu
// can open the main window. 2 when the source folder is missing.
int run_tray(Program& headless, int argc, char** argv);

// The one-shot form: `convert` runs the file of the command line with a tray icon shown;
// its exit status, or the main window's when the user opened it meanwhile.
int run_one_shot_form(Program& headless, int argc, char** argv,
                      const std::function<int(Program&)>& convert);

}  // namespace qumbrel
