#pragma once
// The automatic mode without windows: the tray form's load, then its timers in a plain
// wait loop until SIGTERM or SIGINT; or, with `once`, one cycle right away.
#include "frame/context.h"

namespace qumbrel {

class frm_systray;
class StopSignals;

// The wait loop around frm_systray::tick: sleeps until the next due tick or a stop
// signal. Returns when a stop signal came (true) or no timer runs any more (false).
bool run_timer_loop(Program& ctx, frm_systray& form, StopSignals& signals);

// Exit code: 2 when the source folder is missing; with `once` 0 when every conversion
// succeeded and 1 when one failed; without it 0 after a stop signal.
int run_automatic(Program& ctx, bool once);

}  // namespace qumbrel
