#include "automation/automatic_run.h"

#include <algorithm>
#include <limits>

#include "automation/stop_signals.h"
#include "automation/systray.h"
#include "frame/log.h"

namespace qumbrel {

bool run_timer_loop(Program& ctx, frm_systray& form, StopSignals& signals) {
    for (;;) {
        if (signals.pending()) return true;
        form.tick();
        if (signals.pending()) return true;
        const std::int64_t due = form.next_due_ms();
        if (due == std::numeric_limits<std::int64_t>::max()) return false;
        const std::int64_t wait = due - ctx.clock.steady_ms();
        if (wait > 0 &&
            signals.wait(static_cast<int>(std::min<std::int64_t>(wait, 60 * 60 * 1000))))
            return true;
    }
}

int run_automatic(Program& ctx, bool once) {
    StopSignals signals;
    frm_systray form(ctx);
    form.stopRequested = [&signals] { return signals.pending(); };
    if (!form.form_load(!once)) return 2;
    if (once) {
        form.run_cycle();
        return form.totals().failures > 0 ? 1 : 0;
    }
    run_timer_loop(ctx, form, signals);
    form.stop_timers();
    if (is_set(ctx.run.bStartsFromService)) {
        fkt_logevent(ctx, "Qumbrel Service stopped via operating system {Unload}", kFalse, 2);
        fkt_logevent(ctx, "Qumbrel Service stopped via operating system {Terminate}", kFalse, 2);
    }
    return 0;
}

}  // namespace qumbrel
