// The VT family's template reports.
#include <array>

#include "excel/template_report.h"
#include "excel/template_reports.h"
#include "excel/vt_shaped_template.h"
#include "recorder/vt_reader.h"

namespace qumbrel {
namespace {

constexpr std::array<const char*, 10> kAlarmKeys = {
    "alchannelno", "allevel",   "altype",    "",          "alstartdate",
    "alstarttime", "alstartno", "alenddate", "alendtime", "alendno"};
constexpr std::array<const char*, 7> kMessageKeys = {"evscanno",  "evdate", "evtime", "evmessageno",
                                                     "evmessage", "evuser", "evtype"};

class VtTemplate final : public TemplateFamily {
  public:
    std::string name() const override { return "VT"; }

    void read(Program& ctx, const std::string& source, TemplateFile& file, bool main) override {
        VTInfo i;
        VTGetInfo(ctx, source, i);
        file.status = i.status;
        file.fileType = i.fileType;
        file.dataCount = i.dataCount;
        file.alarmCount = i.alarmNum;
        file.messageCount = i.eventNum;
        measCount_ = i.measChCount + i.mathChCount;
        file.header = vt_shaped_header(i);
        // The separate workbook leaves `eventcount` to the lists function.
        if (main) file.header.emplace_back("eventcount", number(i.eventNum));
        if (!main || i.batchFlag <= 0) return;
        file.batch = {{"batchname", i.batchName},          {"batchno", number(i.batchNo)},
                      {"batchcommentuser", i.commentUser}, {"batchcommenttime", i.commentTime},
                      {"batchcomment1", i.comment1},       {"batchcomment2", i.comment2},
                      {"batchcomment3", i.comment3},       {"batchapplication", i.application},
                      {"batchsupervisor", i.supervisor},   {"batchmanager", i.manager}};
    }

    std::vector<TemplateChannel> channels(Program& ctx, const std::string& source,
                                          const TemplateFile&) override {
        return read_vt_shaped_channels<VTChannelInfo>(
            ctx, measCount_,
            [&](std::int32_t c, VTChannelInfo& ci) { VTGetChDataInfo(ctx, source, c, ci); });
    }

    int kind(const std::string& fileType) const override {
        return fileType == "Event file" ? 1 : fileType == "Display File" ? 2 : 0;
    }

    std::unique_ptr<SampleCursor> open(Program& ctx, const std::string& source,
                                       const std::vector<TemplateChannel>& channels,
                                       const TemplateFile& file, bool eventFile) override {
        const CursorChannels cc = cursor_channels(channels);
        return VTOpenMeasData(ctx, source, cc.numbers, file.dataCount, cc.decimals,
                              to_flag(eventFile), ctx.state<SampleBlockSetting>().samples);
    }

    void lists(Program& ctx, const std::string& source, const TemplateFile& file) override {
        fkt_VTconvertXLSALML(ctx, source, file.alarmCount, file.messageCount);
    }

    int separate_attempts() const override { return 1; }

  private:
    std::int32_t measCount_ = 0;
};

}  // namespace

void fkt_VTconvertXLSALML(Program& ctx, const std::string& source, std::int32_t alarmCount,
                          std::int32_t messageCount) {
    TemplateLists lists;
    lists.alarmKeys = kAlarmKeys;
    lists.alarm = [&](std::int32_t a, std::vector<ExcelValue>& v) {
        VTAlarmInfo al;
        VTGetAlarmInfo(ctx, source, a, al);
        // The reader counts from 1 already; the lists add 1 again (kept so).
        v = {number(al.channel + 1),
             number(al.level + 1),
             al.text,
             {},
             al.date,
             al.time,
             number(al.serial),
             al.releaseDate,
             al.releaseTime,
             number(al.releaseSerial)};
    };
    lists.messageKeys = kMessageKeys;
    lists.message = [&](std::int32_t e, std::vector<ExcelValue>& v) {
        VTEventInfo ev;
        VTGetEventInfo(ctx, source, e, ev);
        v = {number(ev.serial), ev.date, ev.time,      number(ev.messageNo),
             ev.message,        ev.user, ev.sourceText};
    };
    run_template_lists(ctx, "VT", source, alarmCount, messageCount, lists);
}

int fkt_VTconvertXLSTPL(Program& ctx, const std::string& source, const std::string& targetBase,
                        Flag acceptDamaged) {
    return template_report<VtTemplate>(ctx, source, targetBase, acceptDamaged);
}

int fkt_VTconvertXLSTPLALML(Program& ctx, const std::string& source, const std::string& targetBase,
                            Flag acceptDamaged) {
    return separate_workbook<VtTemplate>(ctx, source, targetBase, acceptDamaged);
}

}  // namespace qumbrel
