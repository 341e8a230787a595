#include "reports/hn_report.h"

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include "frame/errors.h"
#include "frame/text.h"
#include "recorder/hn_reader.h"
#include "reports/sheet_report.h"

namespace qumbrel {
namespace {

class HnReport final : public SheetReport {
  public:
    HnReport(Program& ctx, const std::string& source, const std::string& reportBase,
             bool interactive)
        : SheetReport(ctx, source, reportBase, interactive,
                      "fkt_HNconvertCSVXLS(" + source + " " + reportBase + ")") {
        file_.emplace(ctx, source);
    }

  private:
    int convert() override;
    void write_header_block();
    void read_channels();
    void write_alarms();
    void write_messages();
    void write_channel_rows();
    void write_samples();
    std::int32_t handle() const { return file_ ? file_->get() : 0; }

    std::optional<HNHandle> file_;
    HNInfo info_;
    std::vector<std::string> comment_;  // "Comment": the channel's text
    std::vector<HNChannelPlan> plans_;
};

int HnReport::convert() {
    if (!open_report()) return 1;
    write_head();

    set_step(3, "");
    HNGetInfo(ctx_, handle(), source_, info_);
    if (!interactive_ && info_.status > 0) return stop_damaged();
    write_header_block();
    read_channels();
    write_alarms();
    write_messages();

    set_step(9,
             " - Daten werden jetzt convertiert...(Messzeitpunkt aus dem Triggerpunkt bestimmen)");
    // One kind of file: a data file gets channel rows and values, any other the header.
    if (to_upper_ascii(trim_blanks(info_.fileType)) == "DATA") {
        plan_channels(true);
        write_channel_rows();
        if (is_set(ctx_.opt.measurementsinclusive)) write_samples();
    } else {
        find_highest();
    }
    file_.reset();  // the library lets go of the file before the report is closed
    return close_output();
}

void HnReport::write_header_block() {
    set_step(4, "");
    const HNInfo& i = info_;
    pair_row("Device", i.deviceType);
    pair_row("Serial No.", i.serialNo);
    pair_row("File Message",
             i.status > 0 ? i.fileMessage + " <File damaged [CRC Error]>" : i.fileMessage);
    pair_row("Start Time", i.startTime);
    pair_row("End Time", i.endTime);
    pair_row("Starting Cond.", i.startReason);
    pair_row("Dividing Cond.", i.stopReason);
    pair_row("Creator", i.creator);
    pair_row("Post", i.post);
    pair_row("Number of Mess-Channels", i.measChCount, 1);
    pair_row("Number of Data", i.dataCount, 0);  // type 0 in this family
    pair_row("Sample Rate", i.samplingInt);
    note_sample_rate(i.samplingInt);
    pair_row("Group Name", i.groupName);
    pair_row("File", i.fileType);
}

void HnReport::read_channels() {
    set_step(8, " - Daten werden jetzt convertiert...(Kanalheader definieren)");
    size_channels(std::int64_t{info_.measChCount} + 1, info_.measChCount);
    comment_.assign(static_cast<std::size_t>(channels_) + 1, std::string());
    comment_[0] = "Comment";
    plans_.assign(static_cast<std::size_t>(channels_), HNChannelPlan{});
    for (std::int32_t c = 1; c <= channels_; ++c) {
        HNChannelInfo ci;
        HNGetChDataInfo(ctx_, handle(), source_, c - 1, ci);
        const auto at = static_cast<std::size_t>(c);
        ch_.decimals[at] = ci.decimals;
        ch_.chNo[at] = ci.channelNo;
        ch_.number[at] = std::to_string(ci.channelNo);
        ch_.name[at] = ci.tag;
        ch_.unit[at] = ci.unit;
        ch_.scaleLow[at] = ci.scaleLow;
        ch_.scaleHigh[at] = ci.scaleHigh;
        ch_.dataType[at] = ci.dataType;
        comment_[at] = ci.text;
        plans_[at - 1] = HNChannelPlan{c - 1,    ci.fifoId,   ci.fifoType,   ci.dataType,
                                       ci.flags, ci.decimals, ch_.number[at]};
    }
}

void HnReport::write_alarms() {
    pair_row("Alarms", info_.alarmNum, 1);
    if (info_.alarmNum <= 0 || !is_set(ctx_.opt.alarminclusive)) return;
    set_step(5, " - Daten werden jetzt convertiert...(Alarme)");
    check_records(info_.alarmNum, "alarms");
    next_row();
    put(0, std::string(" "), true, 0);  // at col here, not at col + 3
    next_row();
    const char* const titles[] = {"Channel", "Level", "Typ", "Typ short", "On Value", "Off Value"};
    for (int k = 0; k < 6; ++k) put(k, std::string(titles[k]), k == 5, 0);
    for (std::int32_t a = 0; a < info_.alarmNum; ++a) {
        HNAlarmInfo al;
        HNGetAlarmInfo(ctx_, handle(), source_, info_.alarmNum, a, al);
        next_row();
        put(0, al.channel, false, 1);
        put(1, al.level, false, 1);
        put(2, al.text, false, 0);
        put(3, al.shortText, false, 0);
        // The library gives the time the alarm came on and no values.
        put(4, al.date + " " + al.time, false, 4);
        put(5, std::string(), true, 4);
    }
    next_row();
    put(0, std::string(" "), true, 0);
}

void HnReport::write_messages() {
    pair_row("Messages", info_.eventNum, 1);
    if (info_.eventNum <= 0 || !is_set(ctx_.opt.messageinclusive)) return;
    set_step(6, " - Daten werden jetzt convertiert...(Meldungen)");
    check_records(info_.eventNum, "messages");
    next_row();
    put(3, std::string(), true, 0);
    next_row();
    const char* const titles[] = {"Serial no.", "Date",  "Time", "Message No",
                                  "Message",    "Group", "Color"};
    for (int k = 0; k < 7; ++k) put(k, std::string(titles[k]), k == 6, 0);
    for (std::int32_t e = 0; e < info_.eventNum; ++e) {
        HNEventInfo ev;
        HNGetEventInfo(ctx_, handle(), source_, e, ev);
        next_row();
        put(0, ev.serial, false, 1);
        put(1, ev.date, false, 0);
        put(2, ev.time, false, 0);
        put(3, ev.markType, false, 1);
        put(4, ev.message, false, 0);
        put(5, ev.group, false, 0);
        put(6, ev.color, true, 48);  // left out in XLS
    }
    // No trigger row in this family.
    next_row();
    put(0, std::string(" "), true, 0);
}

void HnReport::write_channel_rows() {
    set_step(10, " - Daten werden jetzt convertiert...(KanalKopfDaten schreiben *.oae,*.ose)");
    const auto text = [](const std::vector<std::string>& a) {
        return [&a](std::int32_t c) { return CellValue(a[static_cast<std::size_t>(c)]); };
    };
    channel_row(ch_.number[0], true, 1, text(ch_.number));
    if (ctx_.opt.scaleinfoinclusive == 1) {
        const auto doubles = [](const std::vector<double>& a, const std::string& label) {
            return [&a, label](std::int32_t c) {
                return c == 0 ? CellValue(label) : CellValue(a[static_cast<std::size_t>(c)]);
            };
        };
        channel_row(ch_.scaleMin[0], true, 4, doubles(ch_.scaleLow, ch_.scaleMin[0]));
        channel_row(ch_.scaleMax[0], true, 4, doubles(ch_.scaleHigh, ch_.scaleMax[0]));
    }
    channel_row(ch_.name[0], false, 0, text(ch_.name));
    channel_row(comment_[0], false, 0, text(comment_));
    channel_row(ch_.unit[0], false, 0, text(ch_.unit));
}

void HnReport::write_samples() {
    write_value_titles(true);
    set_step(11, " - Daten werden jetzt convertiert...(Messwerte lesen/schreiben *.oge)");
    const std::int32_t count = info_.dataCount;
    auto cursor = HNOpenMeasData(ctx_, handle(), source_, plans_, count, info_.alarmFlag > 0,
                                 vu_time_base(ctx_, info_.startTime, info_.samplingInt),
                                 ctx_.state<SampleBlockSetting>().samples);
    // Numbers that carry the line end: no line stays open in this family.
    write_sample_rows(*cursor, count, true, 4, true);
}

}  // namespace

int fkt_HNconvertCSVXLS(Program& ctx, const std::string& source, const std::string& reportBase,
                        Flag interactive) {
    return HnReport(ctx, source, reportBase, is_set(interactive)).run();
}

}  // namespace qumbrel
