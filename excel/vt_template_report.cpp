#include "excel/vt_template_report.h"

#include <array>
#include <vector>

#include "excel/cell_operations.h"
#include "excel/session.h"
#include "excel/template_steps.h"
#include "frame/language.h"
#include "frame/log.h"
#include "frame/timecompare.h"
#include "frame/vbformat.h"
#include "recorder/file_elements.h"
#include "recorder/vt_reader.h"
#include "reports/valuesink.h"

namespace qumbrel {
namespace {

constexpr const char* kDamagedSuffix = " <File damaged [CRC Error]>";

// A failing step of a report: its running state goes to the failure path.
struct StepFailed {};

double number(std::int32_t v) {
    return static_cast<double>(v);
}

// Table 1 from `recordertype` to `alarmcount`, and `eventcount` when asked.
void write_info_keywords(Program& ctx, const VTInfo& i, bool withEventCount) {
    const auto text = [&ctx](const char* k, const std::string& v) {
        fkt_excelinsertname(ctx, k, v, 0, 0);
    };
    const auto num = [&ctx](const char* k, std::int32_t v) {
        fkt_excelinsertname(ctx, k, number(v), 0, 0);
    };
    text("recordertype", i.deviceType);
    text("serialno", i.serialNo);
    text("filemessage", i.status > 0 ? i.fileMessage + kDamagedSuffix : i.fileMessage);
    text("starttime", i.startTime);
    text("endtime", i.endTime);
    text("timechange", i.timeCorrect);
    text("startedby", i.startedBy);
    text("stoppedby", i.stoppedBy);
    text("startingcond", i.startingCond);
    text("dividingcond", i.dividingCond);
    num("measchannelcount", i.measChCount);
    num("mathchannelcount", i.mathChCount);
    num("validdatacount", i.dataCount);
    text("samplerate", i.samplingInt);
    text("triggertime", i.triggerDateTime);
    num("triggerpoint", i.triggerNo);
    text("groupname", i.groupName);
    text("filetype", i.fileType);
    num("alarmcount", i.alarmNum);
    if (withEventCount) num("eventcount", i.eventNum);
}

void write_batch_keywords(Program& ctx, const VTInfo& i) {
    const auto text = [&ctx](const char* k, const std::string& v) {
        fkt_excelinsertname(ctx, k, v, 0, 0);
    };
    text("batchname", i.batchName);
    fkt_excelinsertname(ctx, "batchno", number(i.batchNo), 0, 0);
    text("batchcommentuser", i.commentUser);
    text("batchcommenttime", i.commentTime);
    text("batchcomment1", i.comment1);
    text("batchcomment2", i.comment2);
    text("batchcomment3", i.comment3);
    text("batchapplication", i.application);
    text("batchsupervisor", i.supervisor);
    text("batchmanager", i.manager);
}

// One row of the channel tables.
struct ChannelRow {
    std::string number, name, unit, scaleMin, scaleMax, zoneMin, zoneMax, color;
    std::int32_t scaleFlag = 0, logMin = 0, logMax = 0, dataType = 0, decimals = 0;
};

class VtTemplateReport {
  public:
    VtTemplateReport(Program& ctx, const std::string& source, const std::string& targetBase,
                     bool acceptDamaged)
        : ctx_(ctx),
          source_(source),
          target_(targetBase),
          acceptDamaged_(acceptDamaged),
          runName_("fkt_VTconvertXLSTPL(" + source + " " + targetBase + ")") {}

    int run();

  private:
    void stage(std::string_view words) { state_ = runName_ + std::string(words); }
    void read_channels();
    void write_channel_keywords(bool eventFile);
    void write_samples(bool eventFile);

    Program& ctx_;
    std::string source_, target_;
    bool acceptDamaged_;
    std::string runName_, state_;
    VTInfo info_;
    std::vector<ChannelRow> channels_;
    std::vector<std::int32_t> chNo_;
};

int VtTemplateReport::run() {
    fkt_ClearFileElements(ctx_);
    state_ = runName_;
    ctx_.opt.listseparator = ";";  // until the next option load
    ExcelSession& s = ctx_.state<ExcelSession>();
    if (!excel_session_open(ctx_, target_ + s.extension, runName_, state_)) return 0;
    int result = 0;
    try {
        write_head_keywords(ctx_, source_);
        VTGetInfo(ctx_, source_, info_);
        if (info_.status > 0 && !acceptDamaged_) {
            stage(" - CRC Error: Check file");
            result = 1;
        } else {
            write_info_keywords(ctx_, info_, true);
            if (info_.batchFlag > 0) {
                stage(" - Daten werden jetzt convertiert...(Batchdaten)");
                write_batch_keywords(ctx_, info_);
            }
            stage(" - Daten werden jetzt convertiert...(Kanalheader definieren)");
            read_channels();
            const bool eventFile = info_.fileType == "Event file";
            if (eventFile || info_.fileType == "Display File") {
                write_channel_keywords(eventFile);
                if (is_set(ctx_.opt.measurementsinclusive)) write_samples(eventFile);
            }
            if (vb::Val(ctx_.opt.excelsourcefilealarmseparate) == 0) {
                fkt_VTconvertXLSALML(ctx_, source_, info_.alarmNum, info_.eventNum);
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

void VtTemplateReport::read_channels() {
    const std::int32_t count = info_.measChCount + info_.mathChCount;
    if (count < 0 || count > 1000) throw StepFailed{};  // no VT file has that many
    channels_.assign(static_cast<std::size_t>(count), {});
    chNo_.assign(static_cast<std::size_t>(count), 0);
    for (std::int32_t c = 0; c < count; ++c) {
        VTChannelInfo ci;
        VTGetChDataInfo(ctx_, source_, c, ci);
        ChannelRow& r = channels_[static_cast<std::size_t>(c)];
        chNo_[static_cast<std::size_t>(c)] = ci.chNo;
        r.number = vb::Format(static_cast<double>(ci.chNo), "##0", ctx_.regional.profile());
        r.name = ci.tag.empty() ? ci.channel : ci.tag;
        r.unit = ci.unit;
        r.scaleMin = vb::CStr(ci.scaleLow, ctx_.regional.profile());
        r.scaleMax = vb::CStr(ci.scaleHigh, ctx_.regional.profile());
        r.color = std::to_string(ci.number1);
        r.scaleFlag = ci.number3;
        r.logMin = ci.number4;
        r.logMax = ci.number5;
        r.dataType = ci.kind;
        r.decimals = ci.decimals;
    }
}

void VtTemplateReport::write_channel_keywords(bool eventFile) {
    for (const ChannelRow& r : channels_) {
        const std::string ch = "ch" + r.number;
        fkt_excelinsertname(ctx_, ch + "no", "CH" + r.number, 0, 0);
        fkt_excelinsertname(ctx_, ch + "name", r.name, 0, 0);
        fkt_excelinsertname(ctx_, ch + "unit", r.unit, 0, 0);
    }
    // Compared with 1: an option loaded from the file holds -1, so this block comes only
    // from a value set in memory (kept so).
    if (ctx_.opt.scaleinfoinclusive != 1) return;
    for (std::size_t c = 0; c < channels_.size(); ++c) {
        const ChannelRow& r = channels_[c];
        if (!eventFile && !fkt_showchannel(ctx_, chNo_[c])) continue;
        const std::string ch = "ch" + r.number;
        fkt_excelinsertname(ctx_, ch + "color", r.color, 0, 0);
        fkt_excelinsertname(ctx_, ch + "scaleflag", number(r.scaleFlag), 0, 0);
        fkt_excelinsertname(ctx_, ch + "scalemin", r.scaleMin, 0, 0);
        fkt_excelinsertname(ctx_, ch + "scalemax", r.scaleMax, 0, 0);
        fkt_excelinsertname(ctx_, ch + "zonemin", r.zoneMin, 0, 0);
        fkt_excelinsertname(ctx_, ch + "zonemax", r.zoneMax, 0, 0);
        fkt_excelinsertname(ctx_, ch + "logmin", number(r.logMin), 0, 0);
        fkt_excelinsertname(ctx_, ch + "logmax", number(r.logMax), 0, 0);
    }
}

void VtTemplateReport::write_samples(bool eventFile) {
    // Positions found once: the five time keywords, then each channel by its number.
    std::array<KeywordPosition, 5> times;
    const char* const timeKeys[] = {"measdate", "meastime", "meastimeeasy", "meastimemsec",
                                    "measdatetime"};
    for (std::size_t k = 0; k < times.size(); ++k) times[k] = find_keyword(ctx_, timeKeys[k]);
    std::vector<KeywordPosition> data(channels_.size());
    for (std::size_t c = 0; c < channels_.size(); ++c)
        data[c] = find_keyword(ctx_, "ch" + channels_[c].number + "data");
    std::vector<bool> shown(channels_.size(), true);
    if (!eventFile)
        for (std::size_t c = 0; c < channels_.size(); ++c)
            shown[c] = fkt_showchannel(ctx_, chNo_[c]);

    const std::string progress = fkt_translate(ctx_, "insertvalue");
    const std::int32_t count = info_.dataCount;
    if (count <= 0) return;
    const std::string total = "/" + std::to_string(count);
    bool timeSelect = false;
    if (const auto ts = vb::CDbl(ctx_.opt.TimeSelect, ctx_.regional.profile()))
        timeSelect = *ts == 1;

    std::vector<std::string> numbers;
    std::vector<std::int32_t> decimals;
    for (std::size_t c = 0; c < channels_.size(); ++c) {
        numbers.push_back(std::to_string(chNo_[c]));
        decimals.push_back(channels_[c].decimals);
    }
    auto cursor = VTOpenMeasData(ctx_, source_, numbers, count, decimals, to_flag(eventFile),
                                 ctx_.state<SampleBlockSetting>().samples);
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
            for (std::size_t c = 0; c < channels_.size(); ++c) {
                ctx_.host.pump_events();
                if (!shown[c]) continue;
                const std::size_t pos = c + 1;
                write_at(ctx_, data[c], sample_cell_value(block.firstValues.at(r + 1, pos)), row);
                if (!eventFile)
                    write_at(ctx_, data[c], sample_cell_value(block.secondValues.at(r + 1, pos)),
                             row, 1);
            }
        }
    }
    if (cursor->failed()) throw StepFailed{};
}

// Table 1 and 2 of the lists: slot keywords in slot order.
constexpr std::array<const char*, 9> kAlarmKeys = {
    "alchannelno", "allevel",   "altype",    "",         "alstartdate",
    "alstarttime", "alstartno", "alenddate", "alendtime"};
constexpr const char* kAlarmEndNo = "alendno";
constexpr std::array<const char*, 7> kMessageKeys = {"evscanno",  "evdate", "evtime", "evmessageno",
                                                     "evmessage", "evuser", "evtype"};

}  // namespace

void fkt_VTconvertXLSALML(Program& ctx, const std::string& source, std::int32_t alarmCount,
                          std::int32_t messageCount) {
    const std::string state = "fkt_VTconvertXLSALML(" + source + ")";
    std::int32_t messagesDone = 0;
    try {
        if (is_set(ctx.opt.alarminclusive) && alarmCount > 0) {
            template_status(ctx, fkt_translate(ctx, "insertalarm"));
            ctx.host.pump_events();
            std::array<KeywordPosition, 10> at;
            for (std::size_t k = 0; k < kAlarmKeys.size(); ++k)
                if (*kAlarmKeys[k]) at[k] = find_keyword(ctx, kAlarmKeys[k]);
            at[9] = find_keyword(ctx, kAlarmEndNo);
            for (std::int32_t a = 0; a < alarmCount; ++a) {
                VTAlarmInfo al;
                VTGetAlarmInfo(ctx, source, a, al);
                const std::int32_t row = a + 1;
                // The reader counts from 1 already; the lists add 1 again (kept so).
                write_at(ctx, at[0], number(al.channel + 1), row);
                write_at(ctx, at[1], number(al.level + 1), row);
                write_at(ctx, at[2], al.text, row);
                write_at(ctx, at[4], al.date, row);
                write_at(ctx, at[5], al.time, row);
                fkt_excelinsertsheets(ctx, "alstartno", number(al.serial), row, 0);
                write_at(ctx, at[6], number(al.serial), row);
                write_at(ctx, at[7], al.releaseDate, row);
                write_at(ctx, at[8], al.releaseTime, row);
                write_at(ctx, at[9], number(al.releaseSerial), row);
            }
        }
        fkt_excelinsertname(ctx, "eventcount", number(messageCount), 0, 0);
        std::array<KeywordPosition, kMessageKeys.size()> at;
        for (std::size_t k = 0; k < kMessageKeys.size(); ++k)
            at[k] = find_keyword(ctx, kMessageKeys[k]);
        if (messageCount > 0 && is_set(ctx.opt.messageinclusive)) {
            template_status(ctx, fkt_translate(ctx, "insertmessage"));
            ctx.host.pump_events();
            for (std::int32_t e = 0; e < messageCount; ++e) {
                ++messagesDone;
                VTEventInfo ev;
                VTGetEventInfo(ctx, source, e, ev);
                const std::int32_t row = e + 1;
                write_at(ctx, at[0], number(ev.serial), row);
                write_at(ctx, at[1], ev.date, row);
                write_at(ctx, at[2], ev.time, row);
                write_at(ctx, at[3], number(ev.messageNo), row);
                write_at(ctx, at[4], ev.message, row);
                write_at(ctx, at[5], ev.user, row);
                write_at(ctx, at[6], ev.sourceText, row);
            }
        }
    } catch (...) {
        // The caller goes on with the macro and the closing.
        report_plain(ctx, state + " - Daten werden jetzt convertiert...(Meldungen) " +
                              std::to_string(messagesDone));
    }
}

int fkt_VTconvertXLSTPLALML(Program& ctx, const std::string& source, const std::string& targetBase,
                            Flag acceptDamaged) {
    fkt_ClearFileElements(ctx);
    ExcelSession& s = ctx.state<ExcelSession>();
    s.alive = false;
    std::string state = "fkt_VTconvertXLSTPLALML(" + source + " " + targetBase + ")";
    const std::string runName = state;
    ctx.opt.listseparator = ";";
    // One try only, unlike the main report.
    if (!excel_session_open(ctx, targetBase + s.extension, runName, state, 1)) return 0;
    try {
        template_status(ctx, fkt_translate(ctx, "insertvalue"));
        ctx.host.pump_events();
        write_head_keywords(ctx, source);
        VTInfo info;
        VTGetInfo(ctx, source, info);
        if (info.status > 0 && !is_set(acceptDamaged)) {
            state = runName + " - CRC Error: Check file";
            excel_session_close(ctx);
            return 1;
        }
        write_info_keywords(ctx, info, false);
        fkt_VTconvertXLSALML(ctx, source, info.alarmNum, info.eventNum);
        excel_session_print(ctx, targetBase + s.extension);
        excel_session_close(ctx);
    } catch (...) {
        excel_session_fail(ctx, state);
    }
    return 0;
}

int fkt_VTconvertXLSTPL(Program& ctx, const std::string& source, const std::string& targetBase,
                        Flag acceptDamaged) {
    return VtTemplateReport(ctx, source, targetBase, is_set(acceptDamaged)).run();
}

}  // namespace qumbrel
