#include "reports/vq_report.h"

#include <cstdint>
#include <string>
#include <vector>

#include "frame/errors.h"
#include "frame/vbformat.h"
#include "recorder/vq_reader.h"
#include "reports/sheet_report.h"

namespace qumbrel {
namespace {

class VqReport final : public SheetReport {
  public:
    VqReport(Program& ctx, const std::string& source, const std::string& reportBase,
             bool interactive)
        : SheetReport(ctx, source, reportBase, interactive,
                      "fkt_VQconvertCSVXLS(" + source + " " + reportBase + ")"),
          file_(ctx, source) {}

  private:
    int convert() override;
    void write_header_block();
    void write_alarms();
    void write_batch();
    void read_channels();
    void write_samples(bool eventFile);
    VQRecords& records() { return ctx_.state<VQRecords>(); }

    VQHandle file_;
};

int VqReport::convert() {
    VQClearRecords(ctx_);
    if (!open_report()) return 1;
    write_head();

    set_step(3, "");
    VQInfo& info = records().info;
    VQGetInfo(ctx_, file_.get(), source_, info);
    VQGetBatchInfo(ctx_, file_.get(), source_, records().batch);
    if (!interactive_ && info.status > 0) return stop_damaged();
    write_header_block();
    if (info.alarmNum > 0 && is_set(ctx_.opt.alarminclusive)) write_alarms();
    write_message_block(
        info.eventNum,
        [this](std::int32_t e, VTEventInfo& ev) {
            VQGetEventInfo(ctx_, file_.get(), source_, e, ev);
        },
        info.triggerNo, info.triggerDate, info.triggerTime);
    if (records().batch.batchFlag > 0) write_batch();
    read_channels();

    write_channel_part(info.fileType, false,
                       " - Daten werden jetzt convertiert...(KanalKopfDaten schreiben *.oge)",
                       " - Daten werden jetzt convertiert...(KanalKopfDaten schreiben *.ogd)",
                       [this](bool eventFile) { write_samples(eventFile); });
    return close_output();
}

void VqReport::write_header_block() {
    const VQInfo& i = records().info;
    write_header_rows(header_rows(i));
    // Only the count: the entries are not reported in CSV or XLS.
    pair_row("Operating Log Count", i.opeLogNum, 1);
    if (is_set(ctx_.opt.signatureinclusive)) {
        for (std::int32_t s = 0; s < kVqSignatures; ++s) {
            VQSignInfo& g = records().sign;
            VQGetSignData(ctx_, file_.get(), source_, s, g);
            pair_row("Signature " + std::to_string(s + 1), g.date + " " + g.time + " / " + g.name +
                                                               " / " + g.statusText + " / " +
                                                               g.comment + " / " + g.host);
        }
    }
    pair_row("Alarms", i.alarmNum, 1);
}

void VqReport::write_alarms() {
    const VQInfo& info = records().info;
    set_step(5, " - Daten werden jetzt convertiert...(Alarme)");
    check_records(info.alarmNum, "alarms");
    next_row();
    put(3, std::string(" "), true, 0);

    next_row();
    const char* const titles[] = {"Channel",        "Level",          "Type",
                                  "Date occurence", "Time occurence", "Serial no. occurence",
                                  "Date release",   "Time release"};
    for (int k = 0; k < 8; ++k) put(k, std::string(titles[k]), k == 7, 0);
    put(8, std::string("Serial no. release"), true, 0);
    // No line end on these five: in CSV they wait in the field array and open the next
    // line (kept so).
    const char* const ack[] = {"Serial no. ackn.", "Date ackn.", "Time ackn.", "User ackn.",
                               "User flag ackn."};
    for (int k = 0; k < 5; ++k) put(9 + k, std::string(ack[k]), false, 0);

    for (std::int32_t a = 0; a < info.alarmNum; ++a) {
        VQAlarmInfo& al = records().alarm;
        VQGetAlarmInfo(ctx_, file_.get(), source_, a, al);
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
        put(9, std::to_string(al.ackSerial), false, 0);
        put(10, al.ackDate, false, 0);
        put(11, al.ackTime, false, 0);
        put(12, al.user, false, 0);
        put(13, std::to_string(al.ackLevel), false, 0);
    }
    next_row();
    put(0, std::string(" "), true, 0);
}

void VqReport::write_batch() {
    set_step(7, " - Daten werden jetzt convertiert...(Batchdaten)");
    const VQBatchInfo& b = records().batch;
    pair_row("Batchname", b.batchName);
    pair_row("Batchno", b.batchNo, 1);
    for (std::size_t k = 0; k < b.comment.size(); ++k) {
        const std::string n = std::to_string(k + 1);
        pair_row("Batch Comment User " + n, b.commentUser[k]);
        pair_row("Batch Comment Time " + n, b.commentTime[k]);
        pair_row("Batch Comment " + n, b.comment[k]);
    }
    for (std::size_t k = 0; k < b.header.size(); ++k)
        pair_row("Header " + std::to_string(k + 1), b.header[k]);
}

void VqReport::read_channels() {
    set_step(8, " - Daten werden jetzt convertiert...(Kanalheader definieren)");
    const VQInfo& info = records().info;
    size_channels(std::int64_t{info.measChCount} + info.mathChCount + info.extChCount + 1,
                  std::int64_t{info.measChCount} + info.mathChCount);
    const auto& r = ctx_.regional.profile();
    for (std::int32_t c = 1; c <= channels_; ++c) {
        VQChannelInfo& ci = records().channel;
        VQGetChDataInfo(ctx_, file_.get(), source_, c - 1, ci);
        const auto at = static_cast<std::size_t>(c);
        store_channel(at, ci);
        ch_.number[at] = vb::Format(ci.chNo, "##0", r);
        // Filled in this family, so these rows are not empty.
        ch_.scaleMin[at] = vb::CStr(ci.scaleLow, r);
        ch_.scaleMax[at] = vb::CStr(ci.scaleHigh, r);
    }
}

void VqReport::write_samples(bool eventFile) {
    write_value_titles(eventFile);
    set_step(11, eventFile
                     ? " - Daten werden jetzt convertiert...(Messwerte lesen/schreiben *.oge)"
                     : " - Daten werden jetzt convertiert...(Messwerte lesen/schreiben *.ogd)");
    const std::int32_t count = records().info.dataCount;
    std::vector<std::string> numbers(ch_.number.begin() + 1, ch_.number.begin() + 1 + channels_);
    std::vector<std::int32_t> decimals(ch_.decimals.begin() + 1,
                                       ch_.decimals.begin() + 1 + channels_);
    auto cursor = VQOpenMeasData(ctx_, file_.get(), source_, numbers, count, decimals,
                                 to_flag(eventFile), ctx_.state<SampleBlockSetting>().samples);
    // Text cells without a line end in an event file: the open line of the VT report.
    write_sample_rows(*cursor, count, eventFile, 0, false);
}

}  // namespace

int fkt_VQconvertCSVXLS(Program& ctx, const std::string& source, const std::string& reportBase,
                        Flag interactive) {
    return VqReport(ctx, source, reportBase, is_set(interactive)).run();
}

}  // namespace qumbrel
