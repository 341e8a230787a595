#include "reports/vt_report.h"

#include <cmath>
#include <cstdint>
#include <filesystem>
#include <limits>
#include <string>
#include <vector>

#include "frame/errors.h"
#include "frame/ini.h"
#include "frame/language.h"
#include "frame/log.h"
#include "frame/text.h"
#include "frame/timecompare.h"
#include "frame/vbformat.h"
#include "recorder/vt_reader.h"
#include "reports/plain_time.h"
#include "reports/printer.h"
#include "reports/valuesink.h"

namespace qumbrel {
namespace {

// More channels than this in one header is no VT file; sizing arrays by it is refused.
constexpr std::int64_t kMaxChannels = 4096;

// A reader that failed has reported it under its own name; the report only ends.
struct ReaderFailed {};

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

// The channel header arrays; element 0 of each holds the row's label.
struct ChannelArrays {
    std::vector<std::string> number, name, unit, scaleMin, scaleMax, zoneMin, zoneMax, color;
    std::vector<std::int32_t> decimals, scaleFlag, logMin, logMax;
    std::vector<std::int32_t> chNo;  // numeric channel numbers, element 0 = 0

    void size(std::size_t n) {
        for (auto* a : {&number, &name, &unit, &scaleMin, &scaleMax, &zoneMin, &zoneMax, &color})
            a->assign(n, std::string());
        for (auto* a : {&decimals, &scaleFlag, &logMin, &logMax, &chNo}) a->assign(n, 0);
        number[0] = "Channel No";
        name[0] = "Name";
        unit[0] = "Unit";
        scaleMin[0] = "Scale min";
        scaleMax[0] = "Scale max";
        zoneMin[0] = "Zone min";
        zoneMax[0] = "Zone max";
        color[0] = "Color";
    }
};

class VtReport {
  public:
    VtReport(Program& ctx, const std::string& source, const std::string& reportBase,
             bool interactive)
        : ctx_(ctx),
          source_(source),
          base_(reportBase),
          interactive_(interactive),
          runName_("fkt_VTconvertCSVXLS(" + source + " " + reportBase + ")") {}

    int run() {
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

  private:
    int convert();
    void open_output();
    void write_head();
    void write_header_block();
    void write_alarms();
    void write_messages();
    void write_batch();
    void read_channels();
    void write_channel_rows(bool eventFile);
    void write_samples(bool eventFile);
    int close_output();
    void close_quietly();

    void set_step(int no, std::string_view words) {
        stepNo_ = no;
        step_ = runName_;
        step_ += words;
    }
    void status(std::string_view text) { fkt_lststatus(ctx_, text); }

    // A record count from the header drives a loop of reader calls, each opening the
    // file: a count no file of this size can hold is a damaged header, not a long list.
    void check_records(std::int32_t count, const char* what) const {
        std::error_code ec;
        const auto bytes = std::filesystem::file_size(source_, ec);
        if (!ec && static_cast<std::uintmax_t>(count) > bytes)
            throw VbError(errnum::kSubscriptOutOfRange,
                          std::string("Subscript out of range: ") + what);
    }

    std::int32_t sheet_row() const { return checked(std::int64_t{row_} + userRows_ + index_); }
    std::int32_t column(std::int64_t offset) const { return checked(col_ + offset); }
    void put(std::int64_t offset, const CellValue& v, bool end, std::int32_t type) {
        fkt_convertsetvalue(ctx_, fmt_, column(offset), sheet_row(), v, end, type);
    }
    void put_at(std::int32_t col, const CellValue& v, bool end, std::int32_t type) {
        fkt_convertsetvalue(ctx_, fmt_, col, sheet_row(), v, end, type);
    }
    // Ends a line whose last column was not reached; places nothing.
    void end_line() { fkt_convertsetvalue(ctx_, fmt_, 0, 0, EmptyValue{}, true, 0); }
    void next_row() { index_ = checked(std::int64_t{index_} + 1); }
    void pair_row(const std::string& label, const CellValue& value, std::int32_t type = 0) {
        next_row();
        put(0, label, false, 0);
        put(1, value, true, type);
    }

    // Selection and column of every channel, worked out once per report: both depend on
    // the Channels option only, and the sample loop would otherwise ask for each value.
    // The column lies behind date and time: one a channel in an event file, two (minimum,
    // maximum) in a display file.
    void plan_columns(bool eventFile) {
        shown_.assign(static_cast<std::size_t>(channels_) + 1, false);
        columns_.assign(static_cast<std::size_t>(channels_) + 1, 0);
        for (std::int32_t c = 1; c <= channels_; ++c) {
            const std::int32_t chNo = ch_.chNo[static_cast<std::size_t>(c)];
            shown_[static_cast<std::size_t>(c)] = fkt_showchannel(ctx_, chNo);
            const std::int64_t pos = fkt_colpos(ctx_, chNo, c);
            columns_[static_cast<std::size_t>(c)] = column(eventFile ? pos + 1 : 2 * pos);
        }
    }

    template <class Element>
    void channel_row(const CellValue& label, bool labelTwice, std::int32_t type, Element element);

    Program& ctx_;
    std::string source_, base_;
    bool interactive_;
    std::string runName_;
    std::string step_;
    int stepNo_ = 0;

    std::int16_t fmt_ = 0;
    bool opened_ = false;
    std::int32_t row_ = 1, col_ = 1, index_ = 0, userRows_ = 0;
    std::int32_t highest_ = 0;  // highest selected channel

    VTInfo info_;
    ChannelArrays ch_;
    std::int32_t channels_ = 0;  // measuring + math
    std::vector<bool> shown_;
    std::vector<std::int32_t> columns_;
};

int VtReport::convert() {
    // Opening.
    set_step(1, "");
    const std::int32_t format = ctx_.opt.targetformat;
    status(fkt_translate(ctx_, "createfile"));
    if (format != 0 && format != 1) {
        report_plain(ctx_, step_ + " - Datei öffnen fehlgeschlagen");
        return 1;
    }
    fmt_ = static_cast<std::int16_t>(format);
    open_output();
    set_step(2, " - Datei erstellen abgeschlossen/Daten werden jetzt convertiert...");
    status(fkt_translate(ctx_, "startconverting"));
    index_ = 0;
    row_ = option_number(ctx_.opt.row);
    col_ = option_number(ctx_.opt.col);

    // Head; a field array left over from an earlier report must not reach this one.
    reset_field_array(ctx_);
    write_head();

    set_step(3, "");
    VTGetInfo(ctx_, source_, info_);
    if (!interactive_ && info_.status > 0) {
        put(0, std::string("File damaged [CRC Error]"), true, 0);
        close_quietly();
        return 1;
    }
    write_header_block();
    if (info_.alarmNum > 0 && is_set(ctx_.opt.alarminclusive)) write_alarms();
    write_messages();
    if (info_.batchFlag > 0) write_batch();
    read_channels();

    set_step(9,
             " - Daten werden jetzt convertiert...(Messzeitpunkt aus dem Triggerpunkt bestimmen)");
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
    const std::string type = to_upper_ascii(trim_blanks(info_.fileType));
    if (type == "EVENT FILE" || type == "DISPLAY FILE") {
        const bool eventFile = type == "EVENT FILE";
        plan_columns(eventFile);
        write_channel_rows(eventFile);
        if (is_set(ctx_.opt.measurementsinclusive)) write_samples(eventFile);
    }
    return close_output();
}

void VtReport::open_output() {
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
}

void VtReport::write_head() {
    put(0, std::string("Filename"), false, 0);
    put(1, behind_last_separator(source_), true, 0);

    // The free texts come from the option file on every run. In CSV they carry no line
    // end, so each lands ahead of the one before in the line of "Software".
    clsINI ini(ctx_.run.strOptionFile);
    std::string* const fromOptions[] = {&ctx_.opt.userdef1, &ctx_.opt.userdef2, &ctx_.opt.userdef3,
                                        &ctx_.opt.userdef4};
    for (int k = 1; k <= 4; ++k) {
        std::string text = *fromOptions[k - 1];
        if (!ctx_.run.strOptionFile.empty()) {
            text = ini.GetKeyValue("file", "userdef" + std::to_string(k), {}, std::string());
            *fromOptions[k - 1] = text;
        }
        if (text.empty()) continue;
        fkt_convertsetvalue(ctx_, fmt_, column(0), checked(std::int64_t{row_} + k), text, false, 0);
        userRows_ = k;
    }
    pair_row("Software", ctx_.info.program_name());
}

void VtReport::write_header_block() {
    set_step(4, "");
    const VTInfo& i = info_;
    pair_row("Recorder", i.deviceType);
    pair_row("Serial No.", i.serialNo);
    pair_row("File Message",
             i.status > 0 ? i.fileMessage + " <File damaged [CRC Error]>" : i.fileMessage);
    pair_row("File", i.fileType);
    pair_row("Start Time", i.startTime);
    pair_row("End Time", i.endTime);
    pair_row("Time Change", i.timeCorrect);
    pair_row("Started by", i.startedBy);
    pair_row("Stopped by", i.stoppedBy);
    pair_row("Starting Cond.", i.startingCond);
    pair_row("Dividing Cond.", i.dividingCond);
    pair_row("Number of Mess-Channels", i.measChCount, 1);
    pair_row("Number of Math-Channels", i.mathChCount, 1);
    pair_row("Number of Data", i.dataCount, 1);
    pair_row("Sample Rate", i.samplingInt);

    // A whole-second rate switches the time column to plain times for good.
    std::string reduced;
    for (const char c : i.samplingInt) {
        if ((c >= '0' && c <= '9') || c == '-' || c == '+' || c == '.' || c == ',')
            reduced.push_back(c);
    }
    const auto parsed = vb::CDbl(reduced, ctx_.regional.profile());
    const double rate = parsed ? *parsed : vb::Val(reduced);
    if (std::isfinite(rate) && rate == std::trunc(rate))
        ctx_.state<PlainTimeState>().plainTime = true;

    pair_row("Trigger Time", i.triggerDateTime);
    pair_row("Trigger Point", i.triggerNo, 1);
    pair_row("Group Name", i.groupName);
    pair_row("Alarms", i.alarmNum, 1);
}

void VtReport::write_alarms() {
    set_step(5, " - Daten werden jetzt convertiert...(Alarme)");
    check_records(info_.alarmNum, "alarms");
    next_row();
    put(3, std::string(" "), true, 0);

    next_row();
    const char* const titles[] = {"Channel",        "Level",          "Type",
                                  "Date occurence", "Time occurence", "Serial no. occurence",
                                  "Date release",   "Time release"};
    for (int k = 0; k < 8; ++k) put(k, std::string(titles[k]), k == 7, 0);
    // Its own CSV line, at its column.
    put(8, std::string("Serial no. release"), true, 0);

    for (std::int32_t a = 0; a < info_.alarmNum; ++a) {
        VTAlarmInfo al;
        VTGetAlarmInfo(ctx_, source_, a, al);
        next_row();
        put(0, al.channel, false, 1);
        put(1, al.level, false, 1);
        put(2, al.text, false, 0);
        put(3, al.date, false, 0);
        put(4, al.time, false, 0);
        if (a > 0) put(5, al.serial, false, 1);
        put(6, al.releaseDate, false, 0);
        put(7, al.releaseTime, true, 0);
        if (!al.releaseTime.empty()) put(8, al.releaseSerial, true, 1);
    }
    next_row();
    put(0, std::string(" "), true, 0);
}

void VtReport::write_messages() {
    pair_row("Messages", info_.eventNum, 1);
    if (info_.eventNum <= 0 || !is_set(ctx_.opt.messageinclusive)) return;
    set_step(6, " - Daten werden jetzt convertiert...(Meldungen)");
    check_records(info_.eventNum, "messages");
    next_row();
    put(3, std::string(), true, 0);

    next_row();
    const char* const titles[] = {"Serial no.", "Date", "Time", "Message No",
                                  "Message",    "User", "Type"};
    for (int k = 0; k < 7; ++k) put(k, std::string(titles[k]), k == 6, 0);

    for (std::int32_t e = 0; e < info_.eventNum; ++e) {
        next_row();
        VTEventInfo ev;
        VTGetEventInfo(ctx_, source_, e, ev);
        put(0, ev.serial, false, 1);
        put(1, ev.date, false, 0);
        put(2, ev.time, false, 0);
        put(3, ev.messageNo, false, 1);
        put(4, ev.message, false, 0);
        put(5, ev.user, false, 0);
        put(6, ev.sourceText, true, 0);
    }
    next_row();
    put(0, info_.triggerNo, false, 1);
    put(1, info_.triggerDate, false, 0);
    put(2, info_.triggerTime, false, 0);
    put(3, std::int32_t{0}, false, 1);
    put(4, std::string("Trigger"), false, 0);
    put(5, std::string(), false, 0);
    put(6, std::string("None"), true, 0);

    next_row();
    put(0, std::string(" "), true, 0);
}

void VtReport::write_batch() {
    set_step(7, " - Daten werden jetzt convertiert...(Batchdaten)");
    const VTInfo& i = info_;
    pair_row("Batchname", i.batchName);
    pair_row("Batchno", i.batchNo, 1);
    pair_row("Batch Comment User", i.commentUser);
    pair_row("Batch Comment Time", i.commentTime);
    pair_row("Batch Comment 1", i.comment1);
    pair_row("Batch Comment 2", i.comment2);
    pair_row("Batch Comment 3", i.comment3);
    pair_row("Application", i.application);
    pair_row("Supervisor", i.supervisor);
    pair_row("Manager", i.manager);
}

void VtReport::read_channels() {
    set_step(8, " - Daten werden jetzt convertiert...(Kanalheader definieren)");
    const std::int64_t all =
        std::int64_t{info_.measChCount} + info_.mathChCount + info_.extChCount + 1;
    const std::int64_t read = std::int64_t{info_.measChCount} + info_.mathChCount;
    if (all < 1 || all > kMaxChannels || read < 0 || read > all - 1)
        throw VbError(errnum::kSubscriptOutOfRange, "Subscript out of range: channel count");
    ch_.size(static_cast<std::size_t>(all));
    channels_ = static_cast<std::int32_t>(read);
    for (std::int32_t c = 1; c <= channels_; ++c) {
        VTChannelInfo ci;
        VTGetChDataInfo(ctx_, source_, c - 1, ci);
        ch_.decimals[c] = ci.decimals;
        ch_.color[c] = std::to_string(ci.number1);
        ch_.scaleFlag[c] = ci.number2;
        ch_.logMin[c] = ci.number3;
        ch_.logMax[c] = ci.number4;
        ch_.chNo[c] = ci.chNo;
        ch_.number[c] = std::to_string(ci.chNo);
        ch_.unit[c] = ci.unit;
        ch_.name[c] = ci.tag.empty() ? ci.channel : ci.tag;
    }
}

// One channel header row: the label at col (twice for the marked rows), then every
// selected channel at its column up to the highest selected channel.
template <class Element>
void VtReport::channel_row(const CellValue& label, bool labelTwice, std::int32_t type,
                           Element element) {
    next_row();
    put(0, label, false, 0);
    if (labelTwice) put(0, element(0), false, type);
    bool endOfLine = false;
    for (std::int32_t c = 1; c <= channels_; ++c) {
        const std::int32_t chNo = ch_.chNo[c];
        if (chNo == highest_) endOfLine = true;
        if (shown_[static_cast<std::size_t>(c)])
            put_at(columns_[static_cast<std::size_t>(c)], element(c), endOfLine, type);
        if (endOfLine) break;
    }
    if (!endOfLine) end_line();
}

void VtReport::write_channel_rows(bool eventFile) {
    set_step(10, eventFile
                     ? " - Daten werden jetzt convertiert...(KanalKopfDaten schreiben *.oge)"
                     : " - Daten werden jetzt convertiert...(KanalKopfDaten schreiben *.ogd)");
    const auto text = [](const std::vector<std::string>& a) {
        return [&a](std::int32_t c) { return CellValue(a[static_cast<std::size_t>(c)]); };
    };
    channel_row(ch_.number[0], true, 1, text(ch_.number));
    // Compared with 1: an option loaded from the file holds -1, so these rows come only
    // from a value set in memory.
    if (ctx_.opt.scaleinfoinclusive == 1) {
        channel_row(ch_.color[0], true, eventFile ? 1 : 48, text(ch_.color));
        channel_row(std::int32_t{0}, true, 4, [this](std::int32_t c) {
            return CellValue(ch_.logMin[static_cast<std::size_t>(c)]);
        });
        const auto empty = [this](const std::vector<std::string>& a) {
            return [&a](std::int32_t c) {
                return c == 0 ? CellValue(a[0]) : CellValue(std::string());
            };
        };
        channel_row(ch_.scaleMin[0], true, 4, empty(ch_.scaleMin));
        channel_row(ch_.scaleMax[0], true, 4, empty(ch_.scaleMax));
    }
    channel_row(ch_.name[0], false, 0, text(ch_.name));
    channel_row(ch_.unit[0], false, 0, text(ch_.unit));
}

void VtReport::write_samples(bool eventFile) {
    // Column titles.
    next_row();
    put(0, std::string("date"), false, 0);
    put(1, std::string("time"), false, 0);
    bool endOfLine = false;
    for (std::int32_t c = 1; c <= channels_; ++c) {
        const std::int32_t chNo = ch_.chNo[c];
        if (chNo == highest_) endOfLine = true;
        if (shown_[static_cast<std::size_t>(c)]) {
            const std::int32_t at = columns_[static_cast<std::size_t>(c)];
            if (eventFile) {
                put_at(at, std::string("value"), endOfLine, 0);
            } else {
                put_at(at, std::string("min"), false, 0);
                put_at(checked(std::int64_t{at} + 1), std::string("max"), endOfLine, 0);
            }
        }
        if (endOfLine) break;
    }
    if (!endOfLine) end_line();

    set_step(11, eventFile
                     ? " - Daten werden jetzt convertiert...(Messwerte lesen/schreiben *.oge)"
                     : " - Daten werden jetzt convertiert...(Messwerte lesen/schreiben *.ogd)");
    const std::int32_t count = info_.dataCount;
    std::vector<std::string> numbers(ch_.number.begin() + 1, ch_.number.begin() + 1 + channels_);
    std::vector<std::int32_t> decimals(ch_.decimals.begin() + 1,
                                       ch_.decimals.begin() + 1 + channels_);
    auto cursor = VTOpenMeasData(ctx_, source_, numbers, count, decimals, to_flag(eventFile),
                                 ctx_.state<SampleBlockSetting>().samples);
    if (count <= 0) return;

    stepNo_ = 12;
    bool timeSelect = false;
    if (const auto ts = vb::CDbl(ctx_.opt.TimeSelect, ctx_.regional.profile()))
        timeSelect = *ts == 1;
    const std::string progress = fkt_translate(ctx_, "insertvalue");
    const std::string total = "/" + std::to_string(count);
    const bool plain = ctx_.state<PlainTimeState>().plainTime;

    SampleBlock data;
    std::int32_t s = 0;
    while (s < count && cursor->next(data)) {
        const TextColumn& timeColumn = plain ? data.times : data.timesWithMs;
        for (std::size_t at = 0; at < data.count && s < count; ++at) {
            ++s;
            endOfLine = false;
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
                    const std::int32_t chNo = ch_.chNo[c];
                    if (chNo == highest_) endOfLine = true;
                    if (shown_[static_cast<std::size_t>(c)]) {
                        const std::int32_t col = columns_[static_cast<std::size_t>(c)];
                        const auto pos = static_cast<std::size_t>(c);
                        if (eventFile) {
                            // No line end here, whatever the flag says (kept so).
                            put_at(col, sample_value(data.firstValues.at(sample, pos)), false, 4);
                        } else {
                            put_at(col, sample_value(data.firstValues.at(sample, pos)), false, 0);
                            put_at(checked(std::int64_t{col} + 1),
                                   sample_value(data.secondValues.at(sample, pos)), endOfLine, 0);
                        }
                    }
                    if (endOfLine) break;
                }
            }
            if (!endOfLine) end_line();
        }
    }
    // The reader has logged why under its own name; the report ends there, marked failed.
    if (cursor->failed()) throw ReaderFailed{};
}

int VtReport::close_output() {
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

void VtReport::close_quietly() {
    if (!opened_) return;
    opened_ = false;
    if (fmt_ == 1) {
        excel_file(ctx_).CloseFile();
    } else {
        close_csv_report(ctx_);
    }
}

}  // namespace

int fkt_VTconvertCSVXLS(Program& ctx, const std::string& source, const std::string& reportBase,
                        Flag interactive) {
    return VtReport(ctx, source, reportBase, is_set(interactive)).run();
}

}  // namespace qumbrel
