#include "reports/kl_report.h"

#include <cstdint>
#include <string>
#include <vector>

#include "frame/errors.h"
#include "frame/log.h"
#include "frame/text.h"
#include "recorder/kl_reader.h"
#include "recorder/vu_reader.h"
#include "reports/sheet_report.h"

namespace qumbrel {
namespace {

constexpr const char* kTlogText = "TLOG-Files are not jet implemented";

class KlReport final : public SheetReport {
  public:
    KlReport(Program& ctx, const std::string& source, const std::string& reportBase,
             bool interactive)
        : SheetReport(ctx, source, reportBase, interactive,
                      "fkt_KLconvertCSVXLS(" + source + " " + reportBase + ")"),
          file_(ctx, source) {}

  private:
    int convert() override;
    void write_header_block();
    void read_channels();
    void write_alarms();
    void write_messages();
    void write_ctrl_events();
    void write_pv_events();
    void write_batch();
    void write_samples(bool eventFile);
    // A row of " " at col that closes a block.
    void close_block() {
        next_row();
        put(0, std::string(" "), true, 0);
    }
    void titles(std::initializer_list<const char*> names) {
        next_row();
        std::int64_t k = 0;
        for (const char* name : names) {
            put(k, std::string(name), k + 1 == static_cast<std::int64_t>(names.size()), 0);
            ++k;
        }
    }

    KLHandle file_;
    KLInfo info_;
    KLBatchInfo batch_;
};

int KlReport::convert() {
    if (!open_report()) return 1;
    write_head();

    set_step(3, "");
    KLGetInfo(ctx_, file_.get(), source_, info_);
    KLGetBatchInfo(ctx_, file_.get(), source_, batch_);
    if (!interactive_ && info_.status > 0) return stop_damaged();
    if (to_upper_ascii(trim_blanks(info_.fileType)) == "TLOG FILE") {
        // Recognised, not converted: the report says so and counts as failed, so the
        // source is kept.
        report_plain(ctx_, step_ + " - " + kTlogText);
        put(0, std::string(kTlogText), true, 0);
        close_quietly();
        return 1;
    }
    write_header_block();
    read_channels();
    pair_row("Alarms", info_.alarmNum, 1);
    if (info_.alarmNum > 0 && is_set(ctx_.opt.alarminclusive)) write_alarms();
    write_messages();
    write_ctrl_events();
    write_pv_events();
    if (batch_.batchFlag > 0) write_batch();

    write_channel_part(info_.fileType, true,
                       " - Daten werden jetzt convertiert...(KanalKopfDaten schreiben *.oae)",
                       " - Daten werden jetzt convertiert...(KanalKopfDaten schreiben *.oad)",
                       [this](bool eventFile) { write_samples(eventFile); });
    return close_output();
}

void KlReport::write_header_block() {
    HeaderRows h = header_rows(info_);
    h.extChCount = info_.extChCount;
    h.ctrlChCount = info_.ctrlChCount;
    h.fileLast = true;
    write_header_rows(h);
}

void KlReport::read_channels() {
    read_channel_records<KLChannelInfo>(info_.measChCount, info_.mathChCount, info_.extChCount,
                                        true, [this](std::int32_t i, KLChannelInfo& ci) {
                                            KLGetChDataInfo(ctx_, file_.get(), source_, i, ci);
                                        });
}

void KlReport::write_alarms() {
    set_step(5, " - Daten werden jetzt convertiert...(Alarme)");
    check_records(info_.alarmNum, "alarms");
    next_row();
    put(3, std::string(" "), true, 0);
    titles({"Channel", "Level", "Type", "Date occurence", "Time occurence", "Serial no. occurence",
            "Date release", "Time release", "Serial no. release", "Action", "Serial no. ackn",
            "Date ackn.", "Time ackn.", "Ackn. Action", "User flag ackn."});
    for (std::int32_t a = 0; a < info_.alarmNum; ++a) {
        KLAlarmInfo al;
        KLGetAlarmInfo(ctx_, file_.get(), source_, a, al);
        next_row();
        put(0, al.channel, false, 1);
        put(1, al.level, false, 1);
        put(2, al.text, false, 0);
        put(3, al.date, false, 0);
        put(4, al.time, false, 0);
        if (a > 0) put(5, al.serial, false, 1);  // not for the first alarm (kept so)
        put(6, al.releaseDate, false, 0);
        put(7, al.releaseTime, false, 0);
        put(8, al.releaseSerial, false, 1);
        put(9, al.stateText, false, 0);
        put(10, al.ackSerial, false, 0);
        put(11, al.ackDate, false, 0);
        put(12, al.ackTime, false, 0);
        put(13, al.sourceText, false, 0);
        put(14, al.user, true, 0);
    }
    close_block();
}

void KlReport::write_messages() {
    KLEventInfo ev;
    write_message_block(
        info_.eventNum,
        [this, &ev](std::int32_t e, VTEventInfo& out) {
            KLGetEventInfo(ctx_, file_.get(), source_, e, ev);
            out = ev;
        },
        info_.triggerNo, info_.triggerDate, info_.triggerTime, [&ev] { return ev.group; });
}

void KlReport::write_ctrl_events() {
    pair_row("Ctrl.Messages", info_.ctrlNum, 1);
    if (info_.ctrlNum <= 0 || !is_set(ctx_.opt.ctrleventinclusive)) return;
    set_step(6, " - Daten werden jetzt convertiert...(Meldungen)");
    check_records(info_.ctrlNum, "control events");
    next_row();
    put(3, std::string(), true, 0);
    titles({"No", "Date", "Time", "Loop", "Name", "Comment", "Control Run/Stop", "Control Status",
            "Control SP", "Program Run/Reset", "Program Hold", "Progam Wait", "Change Mode"});
    for (std::int32_t e = 0; e < info_.ctrlNum; ++e) {
        KLCtrlModeInfo c;
        KLGetCtrlModeInfo(ctx_, file_.get(), source_, e, c);
        next_row();
        put(0, c.no, false, 0);
        put(1, c.date, false, 1);
        put(2, c.time, false, 0);
        put(3, c.loop, false, 1);
        const std::string* const texts[] = {&c.name,        &c.comment,     &c.runStop,
                                            &c.status,      &c.setPoint,    &c.programRunReset,
                                            &c.programHold, &c.programWait, &c.changeMode};
        std::int64_t k = 4;
        for (const std::string* t : texts) {
            put(k, *t, k == 12, 0);
            ++k;
        }
    }
    close_block();
}

void KlReport::write_pv_events() {
    pair_row("PV.Messages", info_.pvEventNum, 1);
    if (info_.pvEventNum <= 0 || !is_set(ctx_.opt.pveventinclusive)) return;
    check_records(info_.pvEventNum, "PV events");
    next_row();
    put(3, std::string(), true, 0);
    titles({"Name", "Level", "Type", "No(ON)", "Date(ON)", "Time(ON)", "No(OFF)", "Date(OFF)",
            "Time(OFF)"});
    for (std::int32_t e = 0; e < info_.pvEventNum; ++e) {
        KLTPVEventInfo pv;
        KLGetTPVEventInfo(ctx_, file_.get(), source_, e, pv);
        next_row();
        put(0, pv.name, false, 0);
        put(1, pv.level, false, 1);
        put(2, pv.type, false, 0);
        put(3, pv.noOn, false, 1);
        put(4, pv.dateOn, false, 0);
        put(5, pv.timeOn, false, 0);
        put(6, pv.noOff, false, 1);
        put(7, pv.dateOff, false, 0);
        put(8, pv.timeOff, true, 0);
    }
    close_block();
}

void KlReport::write_batch() {
    set_step(7, " - Daten werden jetzt convertiert...(Batchdaten)");
    const KLBatchInfo& b = batch_;
    // The KL library keeps no batch comments; its three level texts stand where the VT
    // file has application, supervisor and manager.
    pair_row("Batchname", b.batchName);
    pair_row("Batchno", b.batchNo, 1);
    pair_row("Batch Comment User", std::string());
    pair_row("Batch Comment Time", std::string());
    pair_row("Batch Comment 1", std::string());
    pair_row("Batch Comment 2", std::string());
    pair_row("Batch Comment 3", std::string());
    pair_row("Application", b.level1);
    pair_row("Supervisor", b.level2);
    pair_row("Manager", b.level3);
}

void KlReport::write_samples(bool eventFile) {
    write_value_titles(eventFile);
    set_step(11, eventFile
                     ? " - Daten werden jetzt convertiert...(Messwerte lesen/schreiben *.oge)"
                     : " - Daten werden jetzt convertiert...(Messwerte lesen/schreiben *.ogd)");
    const std::int32_t count = info_.dataCount;
    std::vector<std::string> numbers(ch_.number.begin() + 1, ch_.number.begin() + 1 + channels_);
    std::vector<std::int32_t> decimals(ch_.decimals.begin() + 1,
                                       ch_.decimals.begin() + 1 + channels_);
    auto cursor = KLOpenMeasData(ctx_, file_.get(), source_, numbers, count, decimals,
                                 to_flag(eventFile), ctx_.state<SampleBlockSetting>().samples);
    // The value treatment of the VU report: text cells, the line end with the value.
    write_sample_rows(*cursor, count, eventFile, 0, true);
}

}  // namespace

int fkt_KLconvertCSVXLS(Program& ctx, const std::string& source, const std::string& reportBase,
                        Flag interactive) {
    return KlReport(ctx, source, reportBase, is_set(interactive)).run();
}

}  // namespace qumbrel
