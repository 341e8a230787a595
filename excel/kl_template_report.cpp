// The KL family's template reports: VT's with the extra, control and event counts, the KL
// batch block, alarm marks beside the values, logarithmic channels as decades, alarms with
// their acknowledgement and actions, messages with their group. The workbook is always
// sought as the target with ".xls" (a trait of this family): with another report
// extension the opening fails, which is reported, and the source stays.
#include <array>

#include "excel/template_report.h"
#include "excel/template_reports.h"
#include "excel/vt_shaped_template.h"
#include "frame/log.h"
#include "recorder/kl_reader.h"

namespace qumbrel {
namespace {

constexpr std::array<const char*, 15> kAlarmKeys = {
    "alchannelno", "allevel",   "altype",    "altypeshort", "alstartdate",
    "alstarttime", "alstartno", "alenddate", "alendtime",   "alendno",
    "alackdate",   "alacktime", "alackno",   "alackaction", "alaction"};
constexpr std::array<const char*, 8> kMessageKeys = {"evscanno",  "evdate", "evtime", "evmessageno",
                                                     "evmessage", "evuser", "evtype", "evgroupno"};

// A TLOG file is recognised and not converted: the report takes its failure path.
struct TlogFile {};

class KlTemplate final : public TemplateFamily {
  public:
    std::string name() const override { return "KL"; }

    std::string workbook(const std::string& targetBase, const std::string&) const override {
        return targetBase + ".xls";
    }

    void read(Program& ctx, const std::string& source, TemplateFile& file, bool main) override {
        KLInfo i;
        KLGetInfo(ctx, 0, source, i);
        file.status = i.status;
        file.fileType = i.fileType;
        file.dataCount = i.dataCount;
        file.alarmCount = i.alarmNum;
        file.messageCount = i.eventNum;
        channelCount_ = i.measChCount + i.mathChCount;
        std::string type = i.fileType;
        for (char& ch : type) ch = static_cast<char>(std::toupper(static_cast<unsigned char>(ch)));
        if (type.find("TLOG") != std::string::npos) {
            report_plain(
                ctx, "fkt_KLconvertXLSTPL(" + source + ") - TLOG-Files are not jet implemented");
            throw TlogFile{};
        }
        file.header = vt_shaped_header(i);
        insert_after(file.header, "mathchannelcount", {"extchannelcount", number(i.extChCount)});
        insert_after(file.header, "extchannelcount", {"ctrlchannelcount", number(i.ctrlChCount)});
        file.header.emplace_back("ctrleventcount", number(i.ctrlNum));
        file.header.emplace_back("pveventcount", number(i.pvEventNum));
        if (main) file.header.emplace_back("eventcount", number(i.eventNum));
        if (!main) return;
        KLBatchInfo b;
        KLGetBatchInfo(ctx, 0, source, b);
        if (b.batchFlag <= 0) return;
        // The library has no batch comments: their keywords are emptied.
        file.batch = {{"batchstartuser", b.startUser},  {"batchstopuser", b.stopUser},
                      {"batchname", b.batchName},       {"batchno", number(b.batchNo)},
                      {"batchcomment1", std::string()}, {"batchcomment2", std::string()},
                      {"batchcomment3", std::string()}, {"batchapplication", b.level1},
                      {"batchsupervisor", b.level2},    {"batchmanager", b.level3}};
    }

    std::vector<TemplateChannel> channels(Program& ctx, const std::string& source,
                                          const TemplateFile&) override {
        return read_vt_shaped_channels<KLChannelInfo>(
            ctx, channelCount_,
            [&](std::int32_t c, KLChannelInfo& ci) { KLGetChDataInfo(ctx, 0, source, c, ci); });
    }

    int kind(const std::string& fileType) const override { return upper_case_kind(fileType); }
    bool alarm_marks() const override { return true; }
    bool logarithmic() const override { return true; }

    std::unique_ptr<SampleCursor> open(Program& ctx, const std::string& source,
                                       const std::vector<TemplateChannel>& channels,
                                       const TemplateFile& file, bool eventFile) override {
        const CursorChannels cc = cursor_channels(channels);
        return KLOpenMeasData(ctx, 0, source, cc.numbers, file.dataCount, cc.decimals,
                              to_flag(eventFile), ctx.state<SampleBlockSetting>().samples);
    }

    void lists(Program& ctx, const std::string& source, const TemplateFile& file) override {
        fkt_KLconvertXLSALML(ctx, source, file.alarmCount, file.messageCount);
    }

  private:
    std::int32_t channelCount_ = 0;
};

}  // namespace

void fkt_KLconvertXLSALML(Program& ctx, const std::string& source, std::int32_t alarmCount,
                          std::int32_t messageCount) {
    TemplateLists lists;
    lists.alarmKeys = kAlarmKeys;
    lists.alarm = [&](std::int32_t a, std::vector<ExcelValue>& v) {
        KLAlarmInfo al;
        KLGetAlarmInfo(ctx, 0, source, a, al);
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
             al.sourceText,
             al.stateText};
    };
    lists.messageKeys = kMessageKeys;
    lists.message = [&](std::int32_t e, std::vector<ExcelValue>& v) {
        KLEventInfo ev;
        KLGetEventInfo(ctx, 0, source, e, ev);
        v = {number(ev.serial), ev.date, ev.time,       number(ev.messageNo),
             ev.message,        ev.user, ev.sourceText, number(ev.group)};
    };
    run_template_lists(ctx, "KL", source, alarmCount, messageCount, lists);
}

int fkt_KLconvertXLSTPL(Program& ctx, const std::string& source, const std::string& targetBase,
                        Flag acceptDamaged) {
    return template_report<KlTemplate>(ctx, source, targetBase, acceptDamaged);
}

int fkt_KLconvertXLSTPLALML(Program& ctx, const std::string& source, const std::string& targetBase,
                            Flag acceptDamaged) {
    return separate_workbook<KlTemplate>(ctx, source, targetBase, acceptDamaged);
}

}  // namespace qumbrel
