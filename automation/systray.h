#pragma once
// The automatic mode's form without its windows: the schedule read at load, the two
// timers with their own guards, and the cycle that scans the source folder and converts
// what it finds. The caller drives the timers through tick() at the clock's times, so a
// test moves a ManualClock and a real run sleeps until next_due_ms().
#include <cstdint>
#include <functional>
#include <string>
#include <string_view>
#include <vector>

#include "automation/scanner.h"
#include "automation/schedule.h"
#include "frame/context.h"

namespace qumbrel {

// What the tray shows while the cycle runs; the GUI implements it, a headless run has
// nothing to show.
class TrayView {
  public:
    virtual ~TrayView() = default;
    virtual void show_time(const DateTime&) {}
    virtual void set_animation(bool) {}
    virtual void set_tip(std::string_view) {}
    // Back to the form's own icon, and the program's title as tip.
    virtual void reset_icon() {}
};

struct CycleTotals {
    long cycles = 0;
    long conversions = 0;
    long failures = 0;  // conversions that failed, and entries that could not be converted
};

class frm_systray {
  public:
    explicit frm_systray(Program& ctx, TrayView* view = nullptr);

    // Form load: "Qumbrel started." to the event log, the source folder check (false
    // and the timers stay off when it is missing), then sub_formLoad unless the caller
    // runs one cycle by itself (withSchedule false).
    bool form_load(bool withSchedule = true);
    // The schedule from the options, tm_scanminute's interval, the platform timer.
    void sub_formLoad();
    // One tick of either timer: the schedule test and, when it fires, one cycle.
    void sub_timeraction();
    // The firing branch of sub_timeraction: scan, then convert entry after entry.
    void run_cycle();

    // Runs every timer tick that is due at ctx.clock.steady_ms().
    void tick();
    // Steady time of the next due tick; INT64_MAX when no timer runs.
    std::int64_t next_due_ms() const;
    // The timers stop (tray exit, hand-over to the main window).
    void stop_timers();

    // Asked before each file of a cycle; true ends the cycle after the file in hand.
    std::function<bool()> stopRequested;
    // The scan of a cycle: fills the list, true when it holds anything.
    std::function<bool(Program&, std::vector<std::string>&)> scan = fkt_scansourcefolder;

    std::vector<std::string> lst_files;  // the scan's result
    const Schedule& schedule() const { return schedule_; }
    const CycleTotals& totals() const { return totals_; }
    bool platform_timer_running() const { return platformRunning_; }

  private:
    void tm_scanminute_Timer();
    void platform_timer_callback();

    Program& ctx_;
    TrayView defaultView_;
    TrayView& view_;
    Schedule schedule_;
    CycleTotals totals_;

    bool scanMinuteEnabled_ = false;
    std::int64_t scanMinuteDue_ = 0;
    bool platformRunning_ = false;
    bool platformBusy_ = false;
    std::int64_t platformDue_ = 0;
};

}  // namespace qumbrel
