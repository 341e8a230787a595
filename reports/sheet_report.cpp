#include "reports/sheet_report.h"

#include <cmath>
#include <filesystem>
#include <limits>

#include "frame/errors.h"
#include "frame/ini.h"
#include "frame/language.h"
#include "frame/log.h"
#include "frame/text.h"
#include "frame/timecompare.h"
#include "frame/vbformat.h"
#include "recorder/sample_number.h"
#include "reports/plain_time.h"
#include "reports/printer.h"
#include "reports/valuesink.h"

namespace qumbrel {
namespace {

// More channels than this in one header is no recorder file; sizing arrays by it is
// refused.
constexpr std::int64_t kMaxChannels = 4096;

// "ALL" in the Channels list stands for this channel number in the end-of-line test.
constexpr std::int32_t kAllChannels = 60;

std::int32_t checked(std::int64_t v) {
    if (v < std::numeric_limits<std::int32_t>::min() ||
        v > std::numeric_limits<std::int32_t>::max())
        throw VbError(errnum::kOverflow, "Overflow");
    return static_cast<std::int32_t>(v);
}

// A text option read as a number and stored in a 32-bit integer (rounded half to even).
std::int32_t option_number(const std::string& text) {
    const double v = vb::Val(text);
    if (!(v >= std::numeric_limits<std::int32_t>::min() - 0.5 &&
          v <= std::numeric_limits<std::int32_t>::max() + 0.5))
        throw VbError(errnum::kOverflow, "Overflow");
    return checked(static_cast<std::int64_t>(std::nearbyint(v)));
}

std::string behind_last_separator(const std::string& path) {
    const auto at = path.find_last_of("\\/");
    return at == std::string::npos ? path : path.substr(at + 1);
}

CellValue sample_value(const SampleCell& c) {
    switch (c.kind) {
        case SampleKind::Int16:
        case SampleKind::Int32:
            return static_cast<std::int32_t>(c.value);
        case SampleKind::Double:
            return c.value;
        case SampleKind::Empty:
            break;
    }
    return EmptyValue{};
}

}  // namespace

void ChannelArrays::size(std::size_t n) {
    for (auto* a : {&number, &name, &unit, &scaleMin, &scaleMax, &zoneMin, &zoneMax, &color})
        a->assign(n, std::string());
    for (auto* a : {&decimals, &number2, &number3, &number4, &number5, &chNo, &dataType})
        a->assign(n, 0);
    scaleLow.assign(n, 0.0);
    scaleHigh.assign(n, 0.0);
    number[0] = "Channel No";
    name[0] = "Name";
    unit[0] = "Unit";
    scaleMin[0] = "Scale min";
    scaleMax[0] = "Scale max";
    zoneMin[0] = "Zone min";
    zoneMax[0] = "Zone max";
    color[0] = "Color";
}

SheetReport::SheetReport(Program& ctx, const std::string& source, const std::string& reportBase,
                         bool interactive, std::string runName)
    : ctx_(ctx),
      source_(source),
      base_(reportBase),
      interactive_(interactive),
      runName_(std::move(runName)) {}

int SheetReport::run() {
    try {
        return convert();
    } catch (const ReaderFailed&) {
        close_quietly();
        return 1;
    } catch (...) {
        report_trapped(ctx_, step_, stepNo_);
        close_quietly();
        return 1;
    }
}

void SheetReport::set_step(int no, std::string_view words) {
    stepNo_ = no;
    step_ = runName_;
    step_ += words;
}

void SheetReport::status(std::string_view text) {
    fkt_lststatus(ctx_, text);
}

void SheetReport::check_records(std::int32_t count, const char* what) const {
    std::error_code ec;
    const auto bytes = std::filesystem::file_size(source_, ec);
    if (!ec && static_cast<std::uintmax_t>(count) > bytes)
        throw VbError(errnum::kSubscriptOutOfRange, std::string("Subscript out of range: ") + what);
}

std::int32_t SheetReport::sheet_row() const {
    return checked(std::int64_t{row_} + userRows_ + index_);
}

std::int32_t SheetReport::column(std::int64_t offset) const {
    return checked(col_ + offset);
}

void SheetReport::put(std::int64_t offset, const CellValue& v, bool end, std::int32_t type) {
    fkt_convertsetvalue(ctx_, fmt_, column(offset), sheet_row(), v, end, type);
}

void SheetReport::put_at(std::int32_t col, const CellValue& v, bool end, std::int32_t type) {
    fkt_convertsetvalue(ctx_, fmt_, col, sheet_row(), v, end, type);
}

void SheetReport::end_line() {
    fkt_convertsetvalue(ctx_, fmt_, 0, 0, EmptyValue{}, true, 0);
}

void SheetReport::next_row() {
    index_ = checked(std::int64_t{index_} + 1);
}

void SheetReport::pair_row(const std::string& label, const CellValue& value, std::int32_t type) {
    next_row();
    put(0, label, false, 0);
    put(1, value, true, type);
}

bool SheetReport::open_report() {
    set_step(1, "");
    const std::int32_t format = ctx_.opt.targetformat;
    status(fkt_translate(ctx_, "createfile"));
    if (format != 0 && format != 1) {
        report_plain(ctx_, step_ + " - Datei öffnen fehlgeschlagen");
        return false;
    }
    fmt_ = static_cast<std::int16_t>(format);
    if (fmt_ == 1) {
        ExcelFile& xls = excel_file(ctx_);
        const CellValue rc = xls.CreateFile(base_ + ".xls");
        opened_ = true;
        if (const auto* n = std::get_if<std::int32_t>(&rc); n && *n != 0)
            throw VbError(*n, "CreateFile " + base_ + ".xls");
        xls.SetFont("Arial", 10, 0);
    } else {
        if (const auto rc = open_csv_report(ctx_, base_ + ".tmp"); rc != 0)
            throw VbError(rc, "Open " + base_ + ".tmp");
        opened_ = true;
    }
    set_step(2, " - Datei erstellen abgeschlossen/Daten werden jetzt convertiert...");
    status(fkt_translate(ctx_, "startconverting"));
    index_ = 0;
    row_ = option_number(ctx_.opt.row);
    col_ = option_number(ctx_.opt.col);
    // A field array left over from an earlier report must not reach this one.
    reset_field_array(ctx_);
    return true;
}

std::string read_userdef(Program& ctx, int k) {
    std::string* const fromOptions[] = {&ctx.opt.userdef1, &ctx.opt.userdef2, &ctx.opt.userdef3,
                                        &ctx.opt.userdef4};
    std::string& text = *fromOptions[k - 1];
    if (!ctx.run.strOptionFile.empty())
        text = clsINI(ctx.run.strOptionFile)
                   .GetKeyValue("file", "userdef" + std::to_string(k), {}, std::string());
    return text;
}

void SheetReport::write_head() {
    put(0, std::string("Filename"), false, 0);
    put(1, behind_last_separator(source_), true, 0);

    // The free texts come from the option file on every run. In CSV they carry no line
    // end, so each lands ahead of the one before in the line of "Software".
    for (int k = 1; k <= 4; ++k) {
        const std::string text = read_userdef(ctx_, k);
        if (text.empty()) continue;
        fkt_convertsetvalue(ctx_, fmt_, column(0), checked(std::int64_t{row_} + k), text, false, 0);
        userRows_ = k;
    }
    pair_row("Software", ctx_.info.program_name());
}

void SheetReport::write_header_rows(const HeaderRows& h) {
    set_step(4, "");
    pair_row("Recorder", h.deviceType);
    pair_row("Serial No.", h.serialNo);
    pair_row("File Message",
             h.status > 0 ? h.fileMessage + " <File damaged [CRC Error]>" : h.fileMessage);
    if (!h.fileLast) pair_row("File", h.fileType);
    pair_row("Start Time", h.startTime);
    pair_row("End Time", h.endTime);
    pair_row("Time Change", h.timeCorrect);
    pair_row("Started by", h.startedBy);
    pair_row("Stopped by", h.stoppedBy);
    pair_row("Starting Cond.", h.startingCond);
    pair_row("Dividing Cond.", h.dividingCond);
    pair_row("Number of Mess-Channels", h.measChCount, 1);
    pair_row("Number of Math-Channels", h.mathChCount, 1);
    if (h.extChCount) pair_row("Number of Ext-Channels", *h.extChCount, 1);
    if (h.ctrlChCount) pair_row("Number of Ctrl-Channels", *h.ctrlChCount, 1);
    pair_row("Number of Data", h.dataCount, 1);
    pair_row("Sample Rate", h.samplingInt);
    note_sample_rate(h.samplingInt);
    pair_row("Trigger Time", h.triggerDateTime);
    pair_row("Trigger Point", h.triggerNo, 1);
    pair_row("Group Name", h.groupName);
    if (h.fileLast) pair_row("File", h.fileType);
}

int SheetReport::stop_damaged() {
    put(0, std::string("File damaged [CRC Error]"), true, 0);
    close_quietly();
    return 1;
}

void SheetReport::note_sample_rate(const std::string& samplingInt) {
    std::string reduced;
    for (const char c : samplingInt) {
        if ((c >= '0' && c <= '9') || c == '-' || c == '+' || c == '.' || c == ',')
            reduced.push_back(c);
    }
    const auto parsed = vb::CDbl(reduced, ctx_.regional.profile());
    const double rate = parsed ? *parsed : vb::Val(reduced);
    if (std::isfinite(rate) && rate == std::trunc(rate))
        ctx_.state<PlainTimeState>().plainTime = true;
}

void SheetReport::size_channels(std::int64_t all, std::int64_t read) {
    if (all < 1 || all > kMaxChannels || read < 0 || read > all - 1)
        throw VbError(errnum::kSubscriptOutOfRange, "Subscript out of range: channel count");
    ch_.size(static_cast<std::size_t>(all));
    channels_ = static_cast<std::int32_t>(read);
}

bool SheetReport::plan(const std::string& fileType, bool& eventFile) {
    const std::string type = to_upper_ascii(trim_blanks(fileType));
    eventFile = type == "EVENT FILE";
    if (!eventFile && type != "DISPLAY FILE") {
        find_highest();
        return false;
    }
    plan_channels(eventFile);
    return true;
}

void SheetReport::find_highest() {
    highest_ = 0;
    for (const auto& entry : ctx_.opt.vChannelList) {
        if (to_upper_ascii(entry) == "ALL") {
            highest_ = kAllChannels;
            break;
        }
        const double v = vb::Val(entry);
        // Channel numbers are 16-bit: anything beyond only needs to stay beyond.
        if (v > highest_)
            highest_ = v > 1e6 ? 1000000 : static_cast<std::int32_t>(std::nearbyint(v));
    }
    reset_field_array(ctx_);
}

void SheetReport::plan_channels(bool eventFile) {
    find_highest();
    // Selection and column of every channel, worked out once per report: both depend on
    // the Channels option only. The column lies behind date and time: one a channel in an
    // event file, two (minimum, maximum) in a display file.
    shown_.assign(static_cast<std::size_t>(channels_) + 1, false);
    columns_.assign(static_cast<std::size_t>(channels_) + 1, 0);
    for (std::int32_t c = 1; c <= channels_; ++c) {
        const auto at = static_cast<std::size_t>(c);
        shown_[at] = fkt_showchannel(ctx_, ch_.chNo[at]);
        const std::int64_t pos = fkt_colpos(ctx_, ch_.chNo[at], c);
        columns_[at] = column(eventFile ? pos + 1 : 2 * pos);
    }
}

void SheetReport::write_channel_header(bool eventFile, bool scaleValues,
                                       std::string_view stepText) {
    set_step(10, stepText);
    const auto text = [](const std::vector<std::string>& a) {
        return [&a](std::int32_t c) { return CellValue(a[static_cast<std::size_t>(c)]); };
    };
    channel_row(ch_.number[0], true, 1, text(ch_.number));
    // Compared with 1: an option loaded from the file holds -1, so these rows come only
    // from a value set in memory.
    if (ctx_.opt.scaleinfoinclusive != 1) {
        channel_row(ch_.name[0], false, 0, text(ch_.name));
        channel_row(ch_.unit[0], false, 0, text(ch_.unit));
        return;
    }
    channel_row(ch_.color[0], true, eventFile ? 1 : 48, text(ch_.color));
    channel_row(std::int32_t{0}, true, 4, [this](std::int32_t c) {
        return CellValue(ch_.number3[static_cast<std::size_t>(c)]);
    });
    if (scaleValues) {
        const auto doubles = [](const std::vector<double>& a) {
            return [&a](std::int32_t c) {
                return c == 0 ? CellValue(std::int32_t{0})
                              : CellValue(a[static_cast<std::size_t>(c)]);
            };
        };
        channel_row(std::int32_t{0}, true, 4, doubles(ch_.scaleLow));
        channel_row(std::int32_t{0}, true, 4, doubles(ch_.scaleHigh));
    } else {
        // Texts: empty in the VT family, the scale values in VQ.
        channel_row(ch_.scaleMin[0], true, 4, text(ch_.scaleMin));
        channel_row(ch_.scaleMax[0], true, 4, text(ch_.scaleMax));
    }
    channel_row(ch_.name[0], false, 0, text(ch_.name));
    channel_row(ch_.unit[0], false, 0, text(ch_.unit));
}

void SheetReport::write_channel_part(const std::string& fileType, bool scaleValues,
                                     std::string_view eventStep, std::string_view displayStep,
                                     const std::function<void(bool)>& samples) {
    set_step(9,
             " - Daten werden jetzt convertiert...(Messzeitpunkt aus dem Triggerpunkt bestimmen)");
    bool eventFile = false;
    if (!plan(fileType, eventFile)) return;
    write_channel_header(eventFile, scaleValues, eventFile ? eventStep : displayStep);
    if (is_set(ctx_.opt.measurementsinclusive)) samples(eventFile);
}

void SheetReport::write_value_titles(bool eventFile) {
    next_row();
    put(0, std::string("date"), false, 0);
    put(1, std::string("time"), false, 0);
    bool endOfLine = false;
    for (std::int32_t c = 1; c <= channels_; ++c) {
        const auto at = static_cast<std::size_t>(c);
        if (ch_.chNo[at] == highest_) endOfLine = true;
        if (shown_[at]) {
            if (eventFile) {
                put_at(columns_[at], std::string("value"), endOfLine, 0);
            } else {
                put_at(columns_[at], std::string("min"), false, 0);
                put_at(checked(std::int64_t{columns_[at]} + 1), std::string("max"), endOfLine, 0);
            }
        }
        if (endOfLine) break;
    }
    if (!endOfLine) end_line();
}

void SheetReport::write_sample_rows(SampleCursor& cursor, std::int32_t count, bool eventFile,
                                    std::int32_t eventType, bool eventLineEnd) {
    if (count <= 0) return;
    stepNo_ = 12;
    bool timeSelect = false;
    if (const auto ts = vb::CDbl(ctx_.opt.TimeSelect, ctx_.regional.profile()))
        timeSelect = *ts == 1;
    const std::string progress = fkt_translate(ctx_, "insertvalue");
    const std::string total = "/" + std::to_string(count);
    const bool plain = ctx_.state<PlainTimeState>().plainTime;
    const auto value = [this](const SampleCell& cell, std::size_t c) -> CellValue {
        if (c < logScale_.size() && logScale_[c] && cell.kind != SampleKind::Empty)
            return fkt_logvalue(ctx_, cell.value, ch_.number5[c], ch_.number4[c], ch_.scaleLow[c],
                                ch_.scaleHigh[c]);
        return sample_value(cell);
    };

    SampleBlock data;
    std::int32_t s = 0;
    while (s < count && cursor.next(data)) {
        const TextColumn& timeColumn = plain ? data.times : data.timesWithMs;
        for (std::size_t at = 0; at < data.count && s < count; ++at) {
            ++s;
            bool endOfLine = false;
            Flag selected = kTrue;
            if (timeSelect) {
                const std::string_view t = data.times[at];
                fkt_timeinwindow(t.substr(0, 8), ctx_.opt.TimeStart, ctx_.opt.TimeStop, selected);
            }
            if (is_set(selected)) {
                if (s % 10 == 0) status(progress + std::to_string(s) + total);
                next_row();
                put(0, std::string(data.dates[at]), false, 0);
                put(1, std::string(timeColumn[at]), false, 0);
                const auto sample = at + 1;
                for (std::int32_t c = 1; c <= channels_; ++c) {
                    const auto pos = static_cast<std::size_t>(c);
                    if (ch_.chNo[pos] == highest_) endOfLine = true;
                    if (shown_[pos]) {
                        const std::int32_t col = columns_[pos];
                        if (eventFile) {
                            put_at(col, value(data.firstValues.at(sample, pos), pos),
                                   eventLineEnd && endOfLine, eventType);
                        } else {
                            put_at(col, value(data.firstValues.at(sample, pos), pos), false, 0);
                            put_at(checked(std::int64_t{col} + 1),
                                   value(data.secondValues.at(sample, pos), pos), endOfLine, 0);
                        }
                    }
                    if (endOfLine) break;
                }
            }
            if (!endOfLine) end_line();
        }
    }
    // The reader has logged why under its own name; the report ends there, marked failed.
    if (cursor.failed()) throw ReaderFailed{};
}

void SheetReport::write_message_block(std::int32_t count,
                                      const std::function<void(std::int32_t, VTEventInfo&)>& event,
                                      std::int32_t triggerNo, const std::string& triggerDate,
                                      const std::string& triggerTime,
                                      const std::function<std::int32_t()>& group) {
    pair_row("Messages", count, 1);
    if (count <= 0 || !is_set(ctx_.opt.messageinclusive)) return;
    set_step(6, " - Daten werden jetzt convertiert...(Meldungen)");
    check_records(count, "messages");
    next_row();
    put(3, std::string(), true, 0);

    next_row();
    const char* const titles[] = {"Serial no.", "Date", "Time", "Message No",
                                  "Message",    "User", "Type", "Group"};
    const int columns = group ? 8 : 7;
    for (int k = 0; k < columns; ++k) put(k, std::string(titles[k]), k == columns - 1, 0);

    for (std::int32_t e = 0; e < count; ++e) {
        next_row();
        VTEventInfo ev;
        event(e, ev);
        put(0, ev.serial, false, 1);
        put(1, ev.date, false, 0);
        put(2, ev.time, false, 0);
        put(3, ev.messageNo, false, 1);
        put(4, ev.message, false, 0);
        put(5, ev.user, false, 0);
        put(6, ev.sourceText, !group, 0);
        if (group) put(7, group(), true, 1);
    }
    next_row();
    put(0, triggerNo, false, 1);
    put(1, triggerDate, false, 0);
    put(2, triggerTime, false, 0);
    put(3, std::int32_t{0}, false, 1);
    put(4, std::string("Trigger"), false, 0);
    put(5, std::string(), false, 0);
    put(6, std::string("None"), true, 0);

    next_row();
    put(0, std::string(" "), true, 0);
}

int SheetReport::close_output() {
    set_step(13, "");
    status(fkt_translate(ctx_, "closefile"));
    ctx_.host.pump_events();
    opened_ = false;
    if (fmt_ == 1) {
        if (const auto rc = excel_file(ctx_).CloseFile(); rc != 0)
            throw VbError(rc, "CloseFile " + base_ + ".xls");
    } else {
        if (const auto rc = close_csv_report(ctx_); rc != 0)
            throw VbError(rc, "Close " + base_ + ".tmp");
    }
    status(fkt_translate(ctx_, "finished"));
    print_report(ctx_, base_, base_ + ".tmp", fmt_ == 1);
    return 0;
}

void SheetReport::close_quietly() {
    if (!opened_) return;
    opened_ = false;
    if (fmt_ == 1) {
        excel_file(ctx_).CloseFile();
    } else {
        close_csv_report(ctx_);
    }
}

}  // namespace qumbrel
