#include "reports/vu_report.h"

#include <cstdint>
#include <string>
#include <vector>

#include "frame/errors.h"
#include "recorder/vu_reader.h"
#include "reports/sheet_report.h"

namespace qumbrel {
namespace {

class VuReport final : public SheetReport {
  public:
    VuReport(Program& ctx, const std::string& source, const std::string& reportBase,
             bool interactive)
        : SheetReport(ctx, source, reportBase, interactive,
                      "fkt_VUconvertCSVXLS(" + source + " " + reportBase + ")"),
          file_(ctx, source) {}

  private:
    int convert() override;
    void write_header_block();
    void read_channels();
    void write_alarms();
    void write_messages();
    void write_batch();
    void write_samples(bool eventFile);

    // The file stays open in the library for the whole run; the readers share it.
    VUHandle file_;
    VUInfo info_;
    VUBatchInfo batch_;
};

int VuReport::convert() {
    if (!open_report()) return 1;
    write_head();

    set_step(3, "");
    VUGetInfo(ctx_, file_.get(), source_, info_);
    VUGetBatchInfo(ctx_, file_.get(), source_, batch_);
    if (!interactive_ && info_.status > 0) return stop_damaged();
    write_header_block();
    read_channels();
    pair_row("Alarms", info_.alarmNum, 1);
    if (info_.alarmNum > 0 && is_set(ctx_.opt.alarminclusive)) write_alarms();
    write_messages();
    if (batch_.batchFlag > 0) write_batch();

    write_channel_part(info_.fileType, true,
                       " - Daten werden jetzt convertiert...(KanalKopfDaten schreiben *.oae)",
                       " - Daten werden jetzt convertiert...(KanalKopfDaten schreiben *.oad)",
                       [this](bool eventFile) { write_samples(eventFile); });
    return close_output();
}

void VuReport::write_header_block() {
    HeaderRows h = header_rows(info_);
    h.extChCount = info_.extChCount;
    h.fileLast = true;
    write_header_rows(h);
}

// Read ahead of the blocks in this family.
void VuReport::read_channels() {
    read_channel_records<VUChannelInfo>(info_.measChCount, info_.mathChCount, info_.extChCount,
                                        true, [this](std::int32_t i, VUChannelInfo& ci) {
                                            VUGetChDataInfo(ctx_, file_.get(), source_, i, ci);
                                        });
}

void VuReport::write_alarms() {
    set_step(5, " - Daten werden jetzt convertiert...(Alarme)");
    check_records(info_.alarmNum, "alarms");
    next_row();
    put(3, std::string(" "), true, 0);

    // The header has no line end: in CSV the first alarm follows on its line.
    next_row();
    const char* const titles[] = {"Channel",   "Status", "Level", "Typ",
                                  "Typ short", "Date",   "Time",  "Serial no. occurence"};
    for (int k = 0; k < 8; ++k) put(k, std::string(titles[k]), false, 0);

    for (std::int32_t a = 0; a < info_.alarmNum; ++a) {
        VUAlarmInfo al;
        VUGetAlarmInfo(ctx_, file_.get(), source_, a, al);
        next_row();
        put(0, al.channel, false, 1);
        put(1, al.stateText, false, 0);
        put(2, al.level, false, 1);
        put(3, al.text, false, 0);
        put(4, al.shortText, false, 0);
        put(5, al.date, false, 0);
        put(6, al.time, false, 0);
        put(7, al.levelNo, true, 1);
    }
    next_row();
    put(0, std::string(" "), true, 0);
}

void VuReport::write_messages() {
    write_message_block(
        info_.eventNum,
        [this](std::int32_t e, VUEventInfo& ev) {
            VUGetEventInfo(ctx_, file_.get(), source_, e, ev);
        },
        info_.triggerNo, info_.triggerDate, info_.triggerTime);
}

void VuReport::write_batch() {
    set_step(7, " - Daten werden jetzt convertiert...(Batchdaten)");
    const VUBatchInfo& b = batch_;
    pair_row("Batchname", b.batchName);
    pair_row("Batchno", b.batchNo, 1);
    pair_row("Application", b.application);
    pair_row("Batch start action", b.startAction);
    pair_row("Batch start user", b.startUser);
    pair_row("Batch stop action", b.stopAction);
    pair_row("Batch stop user", b.stopUser);
    for (std::size_t k = 0; k < kVuBatchCommentCount; ++k) {
        const std::string n = std::to_string(k + 1);
        pair_row("Batch Comment User " + n, b.commentUser[k]);
        pair_row("Batch Comment Time " + n, b.commentTime[k]);
        pair_row("Batch Comment " + n, b.comment[k]);
    }
    for (std::size_t k = 0; k < kVuBatchTexts; ++k)
        pair_row("Text " + std::to_string(k + 1), vu_batch_text(b.label[k], b.text[k]));
}

void VuReport::write_samples(bool eventFile) {
    write_value_titles(eventFile);
    set_step(11, eventFile
                     ? " - Daten werden jetzt convertiert...(Messwerte lesen/schreiben *.oge)"
                     : " - Daten werden jetzt convertiert...(Messwerte lesen/schreiben *.ogd)");
    const std::int32_t count = info_.dataCount;
    const auto first = ch_.number.begin() + 1;
    std::vector<std::string> numbers(first, first + channels_);
    std::vector<std::int32_t> decimals(ch_.decimals.begin() + 1,
                                       ch_.decimals.begin() + 1 + channels_);
    std::vector<std::int32_t> types(ch_.dataType.begin() + 1, ch_.dataType.begin() + 1 + channels_);
    auto cursor = VUOpenMeasData(ctx_, file_.get(), source_, numbers, count, decimals, types,
                                 vu_time_base(ctx_, info_.startTime, info_.samplingInt),
                                 to_flag(eventFile), ctx_.state<SampleBlockSetting>().samples);
    // Every value is a text cell; an event file's value carries the line end.
    write_sample_rows(*cursor, count, eventFile, 0, true);
}

}  // namespace

int fkt_VUconvertCSVXLS(Program& ctx, const std::string& source, const std::string& reportBase,
                        Flag interactive) {
    return VuReport(ctx, source, reportBase, is_set(interactive)).run();
}

}  // namespace qumbrel
