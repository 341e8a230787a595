// The VQ family's template reports: VT's with the operation log count, the VQ batch block,
// alarms with their acknowledgement, and behind the messages the operation log and the
// signature. The family's records live in the program context (VQRecords), as the
// library's did in module globals.
#include <array>

#include "excel/cell_operations.h"
#include "excel/template_report.h"
#include "excel/template_reports.h"
#include "excel/template_steps.h"
#include "excel/vt_shaped_template.h"
#include "frame/language.h"
#include "recorder/vq_reader.h"

namespace qumbrel {
namespace {

constexpr std::array<const char*, 14> kAlarmKeys = {
    "alchannelno", "allevel",   "altype",    "altypeshort", "alstartdate",
    "alstarttime", "alstartno", "alenddate", "alendtime",   "alendno",
    "alackdate",   "alacktime", "alackno",   "alackuser"};
constexpr std::array<const char*, 7> kMessageKeys = {"evscanno",  "evdate", "evtime", "evmessageno",
                                                     "evmessage", "evuser", "evtype"};
// The operation log's slots; the library gives no configuration serial and no user of its
// own (the user is part of the input type's text), so slots 3 and 10 stay unwritten.
constexpr std::array<const char*, 10> kOpeLogKeys = {
    "opelogno", "opelognoserial", "opeconfigserial", "opedatano",      "opedate",
    "opetime",  "opeinputtype",   "opeaction",       "opeactionshort", "opeusername"};

class VqTemplate final : public TemplateFamily {
  public:
    std::string name() const override { return "VQ"; }

    void read(Program& ctx, const std::string& source, TemplateFile& file, bool main) override {
        VQClearRecords(ctx);
        VQInfo& i = ctx.state<VQRecords>().info;
        VQGetInfo(ctx, 0, source, i);
        file.status = i.status;
        file.fileType = i.fileType;
        file.dataCount = i.dataCount;
        file.alarmCount = i.alarmNum;
        file.messageCount = i.eventNum;
        channelCount_ = i.measChCount + i.mathChCount;
        file.header = vt_shaped_header(i);
        file.header.emplace_back("operatinglogcount", number(i.opeLogNum));
        if (!main) return;
        // The main report writes `eventcount`; the lists function of this family does not.
        file.header.emplace_back("eventcount", number(i.eventNum));
        VQBatchInfo& b = ctx.state<VQRecords>().batch;
        VQGetBatchInfo(ctx, 0, source, b);
        if (b.batchFlag <= 0) return;
        file.batch = {{"batchname", b.batchName}, {"batchno", number(b.batchNo)}};
        for (std::size_t k = 0; k < kVqComments; ++k) {
            const std::string n = std::to_string(k + 1);
            file.batch.emplace_back("batchcommentuser" + n, b.commentUser[k]);
            file.batch.emplace_back("batchcommenttime" + n, b.commentTime[k]);
            file.batch.emplace_back("batchcomment" + n, b.comment[k]);
        }
        file.batch.emplace_back("batchapplication", b.header[0]);
        file.batch.emplace_back("batchsupervisor", b.header[1]);
        file.batch.emplace_back("batchmanager", b.header[2]);
    }

    std::vector<TemplateChannel> channels(Program& ctx, const std::string& source,
                                          const TemplateFile&) override {
        return read_vt_shaped_channels<VQChannelInfo>(
            ctx, channelCount_,
            [&](std::int32_t c, VQChannelInfo& ci) { VQGetChDataInfo(ctx, 0, source, c, ci); });
    }

    int kind(const std::string& fileType) const override { return upper_case_kind(fileType); }

    std::unique_ptr<SampleCursor> open(Program& ctx, const std::string& source,
                                       const std::vector<TemplateChannel>& channels,
                                       const TemplateFile& file, bool eventFile) override {
        const CursorChannels cc = cursor_channels(channels);
        return VQOpenMeasData(ctx, 0, source, cc.numbers, file.dataCount, cc.decimals,
                              to_flag(eventFile), ctx.state<SampleBlockSetting>().samples);
    }

    void lists(Program& ctx, const std::string& source, const TemplateFile& file) override {
        fkt_VQconvertXLSALML(ctx, source, file.alarmCount, file.messageCount);
    }

  private:
    std::int32_t channelCount_ = 0;
};

void write_operation_log(Program& ctx, const std::string& source) {
    const std::int32_t count = ctx.state<VQRecords>().info.opeLogNum;
    if (!is_set(ctx.opt.operatinloginclusive) || count <= 0) return;
    template_status(ctx, fkt_translate(ctx, "insertoperationlogs"));
    VQOpeLog& log = ctx.state<VQRecords>().opeLog;
    VQGetOpeLog(ctx, 0, source, count, log);
    write_template_list(ctx, kOpeLogKeys, count, [&](std::int32_t e, std::vector<ExcelValue>& v) {
        const auto at = static_cast<std::size_t>(e);
        v[0] = number(e + 1);
        if (at < log.serials.size()) v[1] = number(log.serials[at]);
        if (at < log.messageNos.size()) v[3] = number(log.messageNos[at]);
        if (at < log.dates.size()) v[4] = log.dates[at];
        if (at < log.times.size()) v[5] = log.times[at];
        if (at < log.sources.size()) v[6] = log.sources[at];
        if (at < log.texts.size()) v[7] = log.texts[at];
        if (at < log.names.size()) v[8] = log.names[at];
    });
}

void write_signature(Program& ctx, const std::string& source) {
    if (!is_set(ctx.opt.signatureinclusive)) return;
    VQSignInfo& g = ctx.state<VQRecords>().sign;
    VQGetSignData(ctx, 0, source, 0, g);
    for (const auto& [keyword, value] :
         {std::pair<const char*, const std::string*>{"signname", &g.name},
          {"signdate", &g.date},
          {"signtime", &g.time},
          {"signcomment", &g.comment},
          {"signhardw", &g.host},
          {"signsts", &g.statusText}})
        fkt_excelinsertname(ctx, keyword, *value, 0, 0);
}

}  // namespace

void fkt_VQconvertXLSALML(Program& ctx, const std::string& source, std::int32_t alarmCount,
                          std::int32_t messageCount) {
    TemplateLists lists;
    lists.alarmKeys = kAlarmKeys;
    lists.alarm = [&](std::int32_t a, std::vector<ExcelValue>& v) {
        VQAlarmInfo& al = ctx.state<VQRecords>().alarm;
        VQGetAlarmInfo(ctx, 0, source, a, al);
        v = {number(al.channel + 1),  // plus one again, as in every family (kept so)
             number(al.level + 1),
             al.text,
             al.shortText,
             al.date,
             al.time,
             number(al.serial),
             al.releaseDate,
             al.releaseTime,
             number(al.releaseSerial),
             al.ackDate,
             al.ackTime,
             number(al.ackSerial),
             al.user};
    };
    lists.messageKeys = kMessageKeys;
    lists.message = [&](std::int32_t e, std::vector<ExcelValue>& v) {
        VQEventInfo& ev = ctx.state<VQRecords>().event;
        VQGetEventInfo(ctx, 0, source, e, ev);
        v = {number(ev.serial), ev.date, ev.time,      number(ev.messageNo),
             ev.message,        ev.user, ev.sourceText};
    };
    lists.eventCount = false;
    lists.more = [&] {
        write_operation_log(ctx, source);
        write_signature(ctx, source);
    };
    run_template_lists(ctx, "VQ", source, alarmCount, messageCount, lists);
}

int fkt_VQconvertXLSTPL(Program& ctx, const std::string& source, const std::string& targetBase,
                        Flag acceptDamaged) {
    return template_report<VqTemplate>(ctx, source, targetBase, acceptDamaged);
}

int fkt_VQconvertXLSTPLALML(Program& ctx, const std::string& source, const std::string& targetBase,
                            Flag acceptDamaged) {
    return separate_workbook<VqTemplate>(ctx, source, targetBase, acceptDamaged);
}

}  // namespace qumbrel
