#include "automation/systray.h"

#include <filesystem>
#include <limits>

#include "frame/language.h"
#include "frame/log.h"
#include "pipeline/convertmain.h"

namespace qumbrel {

namespace {

constexpr const char* kMissingSource =
    "Quellordner ist nicht vorhanden. Das Scannen nach Dateien wird abgebrochen!!\r\n"
    "Bitte \xC3\x84ndern Sie die Konfiguration.";

bool folder_exists(const std::string& p) {
    std::error_code ec;
    return !p.empty() && std::filesystem::exists(p, ec);
}

}  // namespace

frm_systray::frm_systray(Program& ctx, TrayView* view)
    : ctx_(ctx), view_(view ? *view : defaultView_) {}

bool frm_systray::form_load(bool withSchedule) {
    translate_headless_form(ctx_, "frm_systray");
    fkt_logevent(ctx_, "Qumbrel started.", kFalse, 2);
    if (!folder_exists(ctx_.opt.sourcepath)) {
        report_plain(ctx_, kMissingSource);
        return false;
    }
    ctx_.host.pump_events();
    if (withSchedule) sub_formLoad();
    return true;
}

void frm_systray::sub_formLoad() {
    const std::int64_t now = ctx_.clock.steady_ms();
    // tm_scanminute runs from the load; a new interval restarts its count.
    scanMinuteEnabled_ = true;
    scanMinuteDue_ = now + kScanMinuteMs;
    try {
        schedule_ = compute_schedule(ctx_, &schedule_);
        if (!platformRunning_) {
            platformRunning_ = true;
            platformDue_ = now + schedule_.platformIntervalMs;
        }
    } catch (...) {
        report_trapped(ctx_, "sub_formLoad of Formular frm_systray", 1);
    }
}

void frm_systray::sub_timeraction() {
    const DateTime now = ctx_.clock.now();
    view_.show_time(now);
    if (schedule_fires(schedule_, now)) run_cycle();
    ctx_.host.pump_events();
}

void frm_systray::run_cycle() {
    ++totals_.cycles;
    view_.set_animation(true);
    fkt_logevent(ctx_, "Qumbrel scan folder", kFalse, 2);
    if (scan(ctx_, lst_files)) {
        // The count is taken once; a nested cycle may refill the list meanwhile.
        const std::size_t count = lst_files.size();
        for (std::size_t i = 0; i < count; ++i) {
            if (stopRequested && stopRequested()) break;
            if (i >= lst_files.size()) break;
            const std::string entry = lst_files[i];
            view_.set_tip(entry);
            ctx_.host.pump_events();
            std::string subfolder;
            try {
                subfolder = fkt_getsubfolder(ctx_, entry);
            } catch (...) {
                // A source folder stored with a closing separator; this file is left.
                report_trapped(ctx_, "sub_timeraction of Formular frm_systray", 3, entry);
                ++totals_.failures;
                continue;
            }
            const ConvertOutcome outcome = fkt_convertmain(ctx_, entry, subfolder, "", kFalse);
            ++totals_.conversions;
            if (outcome.failed()) ++totals_.failures;
        }
    }
    view_.set_animation(false);
    view_.reset_icon();
}

void frm_systray::tm_scanminute_Timer() {
    scanMinuteEnabled_ = false;
    sub_timeraction();
    scanMinuteEnabled_ = true;
    scanMinuteDue_ = ctx_.clock.steady_ms() + kScanMinuteMs;
}

void frm_systray::platform_timer_callback() {
    if (platformBusy_) return;
    platformBusy_ = true;
    sub_timeraction();
    platformBusy_ = false;
}

void frm_systray::tick() {
    const std::int64_t now = ctx_.clock.steady_ms();
    if (scanMinuteEnabled_ && now >= scanMinuteDue_) tm_scanminute_Timer();
    if (platformRunning_ && now >= platformDue_) {
        // A periodic timer: the tick that comes during a long cycle is not queued twice.
        platformDue_ += schedule_.platformIntervalMs;
        platform_timer_callback();
        const std::int64_t after = ctx_.clock.steady_ms();
        if (platformDue_ < after) platformDue_ = after;
    }
}

std::int64_t frm_systray::next_due_ms() const {
    std::int64_t due = std::numeric_limits<std::int64_t>::max();
    if (scanMinuteEnabled_) due = std::min(due, scanMinuteDue_);
    if (platformRunning_) due = std::min(due, platformDue_);
    return due;
}

void frm_systray::stop_timers() {
    scanMinuteEnabled_ = false;
    platformRunning_ = false;
}

}  // namespace qumbrel
