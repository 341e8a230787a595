#pragma once
// The run with windows: chosen when a display is there and the start wants the main
// window. Nothing of Qt is touched before; a headless run never loads a platform plugin.
#include "frame/context.h"

namespace qumbrel {

// A display to show windows on: DISPLAY, WAYLAND_DISPLAY or QT_QPA_PLATFORM set.
bool display_available();

// The main window over the options of `headless` (its run flags and program folder), until
// the user ends the program; the exit code.
int run_main_window(Program& headless, int argc, char** argv);

// The automatic mode with its tray form (an icon where the desktop has a tray); its menu
// can open the main window. 2 when the source folder is missing.
int run_tray(Program& headless, int argc, char** argv);

}  // namespace qumbrel
