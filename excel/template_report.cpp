#include "excel/template_report.h"

#include <array>
#include <cmath>

#include "excel/cell_operations.h"
#include "excel/session.h"
#include "excel/template_steps.h"
#include "frame/language.h"
#include "frame/log.h"
#include "frame/timecompare.h"
#include "frame/vbformat.h"
#include "recorder/file_elements.h"
#include "reports/valuesink.h"

namespace qumbrel {
namespace {

// A failing step: its running state goes to the failure path.
struct StepFailed {};

void write_keywords(Program& ctx, const Keywords& keywords) {
    for (const auto& [keyword, value] : keywords) fkt_excelinsertname(ctx, keyword, value, 0, 0);
}

class TemplateRun {
  public:
    TemplateRun(Program& ctx, TemplateFamily& family, const std::string& source,
                const std::string& targetBase, bool acceptDamaged)
        : ctx_(ctx),
          family_(family),
          source_(source),
          target_(targetBase),
          acceptDamaged_(acceptDamaged),
          runName_("fkt_" + family.name() + "convertXLSTPL(" + source + " " + targetBase + ")") {}

    int run();

  private:
    void stage(std::string_view words) { state_ = runName_ + std::string(words); }
    void write_channel_keywords(bool eventFile);
    void write_samples(bool eventFile);
    ExcelValue value(const SampleCell& cell, std::size_t c) const;

    Program& ctx_;
    TemplateFamily& family_;
    std::string source_, target_;
    bool acceptDamaged_;
    std::string runName_, state_;
    TemplateFile file_;
    std::vector<TemplateChannel> channels_;
};

int TemplateRun::run() {
    fkt_ClearFileElements(ctx_);
    state_ = runName_;
    ctx_.opt.listseparator = ";";  // until the next option load
    ExcelSession& s = ctx_.state<ExcelSession>();
    if (!excel_session_open(ctx_, family_.workbook(target_, s.extension), runName_, state_))
        return 0;
    int result = 0;
    try {
        write_head_keywords(ctx_, source_);
        family_.read(ctx_, source_, file_, true);
        if (file_.status > 0 && !acceptDamaged_) {
            stage(" - CRC Error: Check file");
            result = 1;
        } else {
            write_keywords(ctx_, file_.header);
            if (!file_.batch.empty()) {
                stage(" - Daten werden jetzt convertiert...(Batchdaten)");
                write_keywords(ctx_, file_.batch);
            }
            stage(" - Daten werden jetzt convertiert...(Kanalheader definieren)");
            channels_ = family_.channels(ctx_, source_, file_);
            if (const int kind = family_.kind(file_.fileType); kind != 0) {
                write_channel_keywords(kind == 1);
                if (is_set(ctx_.opt.measurementsinclusive)) write_samples(kind == 1);
            }
            if (vb::Val(ctx_.opt.excelsourcefilealarmseparate) == 0) {
                family_.lists(ctx_, source_, file_);
                if (s.alive && s.app) s.app->activate_sheet(1);
            }
        }
        run_template_macro(ctx_);
        excel_session_print(ctx_, target_ + s.extension);
        excel_session_close(ctx_);
    } catch (...) {
        excel_session_fail(ctx_, state_);
        return 0;
    }
    return result;
}

void TemplateRun::write_channel_keywords(bool eventFile) {
    for (const TemplateChannel& c : channels_) {
        const std::string ch = "ch" + c.number;
        fkt_excelinsertname(ctx_, ch + "no", "CH" + c.number, 0, 0);
        fkt_excelinsertname(ctx_, ch + "name", c.name, 0, 0);
        fkt_excelinsertname(ctx_, ch + "unit", c.unit, 0, 0);
    }
    // Compared with 1: an option loaded from the file holds -1, so this block comes only
    // from a value set in memory (kept so).
    if (ctx_.opt.scaleinfoinclusive != 1) return;
    for (const TemplateChannel& c : channels_) {
        if (!eventFile && !fkt_showchannel(ctx_, c.chNo)) continue;
        const std::string ch = "ch" + c.number;
        fkt_excelinsertname(ctx_, ch + "color", c.color, 0, 0);
        fkt_excelinsertname(ctx_, ch + "scaleflag", number(c.scaleFlag), 0, 0);
        fkt_excelinsertname(ctx_, ch + "scalemin", c.scaleMin, 0, 0);
        fkt_excelinsertname(ctx_, ch + "scalemax", c.scaleMax, 0, 0);
        // No family fills the zone: its texts stay empty.
        fkt_excelinsertname(ctx_, ch + "zonemin", std::string(), 0, 0);
        fkt_excelinsertname(ctx_, ch + "zonemax", std::string(), 0, 0);
        if (!family_.log_keywords()) continue;
        fkt_excelinsertname(ctx_, ch + "logmin", number(c.logMin), 0, 0);
        fkt_excelinsertname(ctx_, ch + "logmax", number(c.logMax), 0, 0);
    }
}

ExcelValue TemplateRun::value(const SampleCell& cell, std::size_t c) const {
    constexpr std::int32_t kLogarithmic = 3;
    if (cell.kind != SampleKind::Empty && family_.logarithmic() &&
        channels_[c].scaleFlag == kLogarithmic)
        return log_scale_value(cell.value, channels_[c]);
    return sample_cell_value(cell);
}

void TemplateRun::write_samples(bool eventFile) {
    // Positions found once: the five time keywords, then each channel by its number, its
    // alarm marks after it.
    std::array<KeywordPosition, 5> times;
    const char* const timeKeys[] = {"measdate", "meastime", "meastimeeasy", "meastimemsec",
                                    "measdatetime"};
    for (std::size_t k = 0; k < times.size(); ++k) times[k] = find_keyword(ctx_, timeKeys[k]);
    const std::size_t n = channels_.size();
    std::vector<KeywordPosition> data(n), marks(n);
    for (std::size_t c = 0; c < n; ++c) {
        data[c] = find_keyword(ctx_, "ch" + channels_[c].number + "data");
        if (family_.alarm_marks()) marks[c] = find_keyword(ctx_, "ch" + channels_[c].number + "al");
    }
    std::vector<bool> shown(n, true);
    if (!eventFile)
        for (std::size_t c = 0; c < n; ++c) shown[c] = fkt_showchannel(ctx_, channels_[c].chNo);

    const std::string progress = fkt_translate(ctx_, "insertvalue");
    const std::int32_t count = file_.dataCount;
    if (count <= 0 || n == 0) return;
    const std::string total = "/" + std::to_string(count);
    bool timeSelect = false;
    if (const auto ts = vb::CDbl(ctx_.opt.TimeSelect, ctx_.regional.profile()))
        timeSelect = *ts == 1;

    auto cursor = family_.open(ctx_, source_, channels_, file_, eventFile);
    if (!cursor) throw StepFailed{};
    ExcelSession& s = ctx_.state<ExcelSession>();
    SampleBlock block;
    std::int32_t i = 0, skipped = 0;
    while (i < count && cursor->next(block)) {
        for (std::size_t r = 0; r < block.count && i < count; ++r) {
            ++i;
            if (timeSelect) {
                Flag in = kFalse;
                fkt_timeinwindow(std::string_view(block.timesWithMs[r]).substr(0, 8),
                                 ctx_.opt.TimeStart, ctx_.opt.TimeStop, in);
                if (!is_set(in)) {
                    ++skipped;
                    continue;
                }
            }
            if (i % 10 == 0) template_status(ctx_, progress + std::to_string(i) + total);
            if (!s.alive) return;  // the engine has gone: nothing more can be written
            const std::int32_t row = i - skipped;
            const std::string date(block.dates[r]);
            write_at(ctx_, times[0], date, row);
            write_at(ctx_, times[1], std::string(block.timesWithMs[r]), row);
            write_at(ctx_, times[2], std::string(block.times[r]), row);
            write_at(ctx_, times[3], std::string(block.msTexts[r]), row);
            write_at(ctx_, times[4], date + " " + std::string(block.times[r]), row);
            for (std::size_t c = 0; c < n; ++c) {
                ctx_.host.pump_events();
                if (!shown[c]) continue;
                const std::size_t pos = c + 1;
                write_at(ctx_, data[c], value(block.firstValues.at(r + 1, pos), c), row);
                if (!eventFile)
                    write_at(ctx_, data[c], value(block.secondValues.at(r + 1, pos), c), row, 1);
                if (family_.alarm_marks()) write_at(ctx_, marks[c], block.alarm_text(r, pos), row);
            }
        }
    }
    if (cursor->failed()) throw StepFailed{};
}

}  // namespace

int run_template_report(Program& ctx, TemplateFamily& family, const std::string& source,
                        const std::string& targetBase, bool acceptDamaged) {
    return TemplateRun(ctx, family, source, targetBase, acceptDamaged).run();
}

int run_separate_workbook(Program& ctx, TemplateFamily& family, const std::string& source,
                          const std::string& targetBase, bool acceptDamaged) {
    fkt_ClearFileElements(ctx);
    ExcelSession& s = ctx.state<ExcelSession>();
    s.alive = false;
    const std::string runName =
        "fkt_" + family.name() + "convertXLSTPLALML(" + source + " " + targetBase + ")";
    std::string state = runName;
    ctx.opt.listseparator = ";";
    if (!excel_session_open(ctx, family.workbook(targetBase, s.extension), runName, state,
                            family.separate_attempts()))
        return 0;
    try {
        template_status(ctx, fkt_translate(ctx, "insertvalue"));
        ctx.host.pump_events();
        write_head_keywords(ctx, source);
        TemplateFile file;
        family.read(ctx, source, file, false);
        if (file.status > 0 && !acceptDamaged) {
            state = runName + " - CRC Error: Check file";
            excel_session_close(ctx);
            return 1;
        }
        write_keywords(ctx, file.header);
        family.lists(ctx, source, file);
        excel_session_print(ctx, targetBase + s.extension);
        excel_session_close(ctx);
    } catch (...) {
        excel_session_fail(ctx, state);
    }
    return 0;
}

void write_template_list(Program& ctx, std::span<const char* const> keys, std::int32_t count,
                         const std::function<void(std::int32_t, std::vector<ExcelValue>&)>& read) {
    std::vector<KeywordPosition> at(keys.size());
    for (std::size_t k = 0; k < keys.size(); ++k)
        if (*keys[k]) at[k] = find_keyword(ctx, keys[k]);
    std::vector<ExcelValue> values;
    for (std::int32_t e = 0; e < count; ++e) {
        values.assign(keys.size(), std::monostate{});
        read(e, values);
        const std::int32_t row = e + 1;
        for (std::size_t k = 0; k < keys.size(); ++k) {
            if (!*keys[k]) continue;
            if (std::string_view(keys[k]) == "alstartno")
                fkt_excelinsertsheets(ctx, "alstartno", values[k], row, 0);
            write_at(ctx, at[k], values[k], row);
        }
    }
}

void run_template_lists(Program& ctx, const std::string& family, const std::string& source,
                        std::int32_t alarmCount, std::int32_t messageCount,
                        const TemplateLists& lists) {
    const std::string state = "fkt_" + family + "convertXLSALML(" + source + ")";
    std::string stage;
    try {
        if (is_set(ctx.opt.alarminclusive) && alarmCount > 0) {
            template_status(ctx, fkt_translate(ctx, "insertalarm"));
            ctx.host.pump_events();
            write_template_list(ctx, lists.alarmKeys, alarmCount, lists.alarm);
        }
        if (lists.eventCount) fkt_excelinsertname(ctx, "eventcount", number(messageCount), 0, 0);
        const bool messages = messageCount > 0 && is_set(ctx.opt.messageinclusive);
        if (messages) {
            stage = " - Daten werden jetzt convertiert...(Meldungen)";
            template_status(ctx, fkt_translate(ctx, "insertmessage"));
            ctx.host.pump_events();
        }
        // The positions are sought whether or not messages follow.
        write_template_list(ctx, lists.messageKeys, messages ? messageCount : 0, lists.message);
        if (lists.more) lists.more();
    } catch (...) {
        report_plain(ctx, state + stage);
    }
}

std::string damaged_message(const std::string& message, std::int32_t status) {
    return status > 0 ? message + " <File damaged [CRC Error]>" : message;
}

ExcelValue log_scale_value(double value, const TemplateChannel& c) {
    const double span = c.scaleHigh - c.scaleLow;
    if (span == 0) return std::monostate{};  // the conversion fails; the report goes on
    const double v = std::pow(
        10.0, c.logMin + (value - c.scaleLow) * static_cast<double>(c.logMax - c.logMin) / span);
    if (!std::isfinite(v)) return std::monostate{};
    return v;
}

}  // namespace qumbrel
