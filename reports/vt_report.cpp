#include "reports/vt_report.h"

#include <cstdint>
#include <string>
#include <vector>

#include "frame/errors.h"
#include "recorder/vt_reader.h"
#include "reports/sheet_report.h"

namespace qumbrel {
namespace {

class VtReport final : public SheetReport {
  public:
    VtReport(Program& ctx, const std::string& source, const std::string& reportBase,
             bool interactive)
        : SheetReport(ctx, source, reportBase, interactive,
                      "fkt_VTconvertCSVXLS(" + source + " " + reportBase + ")") {}

  private:
    int convert() override;
    void write_header_block();
    void write_alarms();
    void write_messages();
    void write_batch();
    void read_channels();
    void write_samples(bool eventFile);

    VTInfo info_;
};

int VtReport::convert() {
    if (!open_report()) return 1;
    write_head();

    set_step(3, "");
    VTGetInfo(ctx_, source_, info_);
    if (!interactive_ && info_.status > 0) return stop_damaged();
    write_header_block();
    if (info_.alarmNum > 0 && is_set(ctx_.opt.alarminclusive)) write_alarms();
    write_messages();
    if (info_.batchFlag > 0) write_batch();
    read_channels();

    write_channel_part(info_.fileType, false,
                       " - Daten werden jetzt convertiert...(KanalKopfDaten schreiben *.oge)",
                       " - Daten werden jetzt convertiert...(KanalKopfDaten schreiben *.ogd)",
                       [this](bool eventFile) { write_samples(eventFile); });
    return close_output();
}

void VtReport::write_header_block() {
    write_header_rows(header_rows(info_));
    pair_row("Alarms", info_.alarmNum, 1);
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
    write_message_block(
        info_.eventNum,
        [this](std::int32_t e, VTEventInfo& ev) { VTGetEventInfo(ctx_, source_, e, ev); },
        info_.triggerNo, info_.triggerDate, info_.triggerTime);
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
    read_channel_records<VTChannelInfo>(
        info_.measChCount, info_.mathChCount, info_.extChCount, false,
        [this](std::int32_t i, VTChannelInfo& ci) { VTGetChDataInfo(ctx_, source_, i, ci); });
}

void VtReport::write_samples(bool eventFile) {
    write_value_titles(eventFile);
    set_step(11, eventFile
                     ? " - Daten werden jetzt convertiert...(Messwerte lesen/schreiben *.oge)"
                     : " - Daten werden jetzt convertiert...(Messwerte lesen/schreiben *.ogd)");
    const std::int32_t count = info_.dataCount;
    std::vector<std::string> numbers(ch_.number.begin() + 1, ch_.number.begin() + 1 + channels_);
    std::vector<std::int32_t> decimals(ch_.decimals.begin() + 1,
                                       ch_.decimals.begin() + 1 + channels_);
    auto cursor = VTOpenMeasData(ctx_, source_, numbers, count, decimals, to_flag(eventFile),
                                 ctx_.state<SampleBlockSetting>().samples);
    // Event-file values are numbers and never end the line (kept so).
    write_sample_rows(*cursor, count, eventFile, 4, false);
}

}  // namespace

int fkt_VTconvertCSVXLS(Program& ctx, const std::string& source, const std::string& reportBase,
                        Flag interactive) {
    return VtReport(ctx, source, reportBase, is_set(interactive)).run();
}

}  // namespace qumbrel
