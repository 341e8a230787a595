#pragma once
// Main: the start-up steps of the program, and the runs that follow them headless.
#include <string>
#include <vector>

#include "frame/context.h"

namespace qumbrel {

enum class StartMode { OneShot, Automatic, Interactive, Ended };

// Steps 2 to 13 of the start-up, in order, each under the error trap that reports and
// goes on. `tokens` are the command tokens (already cut). Says which top form would run.
StartMode Main(Program& ctx, const std::vector<std::string>& tokens);

// The one-shot form without its tray icon: one conversion, then the exit code
// (0 done, 1 the conversion failed, 2 no conversion took place).
int run_one_shot(Program& ctx);

// The whole program: arguments to exit code.
int qumbrel_main(int argc, char** argv);

}  // namespace qumbrel
