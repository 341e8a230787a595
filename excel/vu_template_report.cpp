// The VU family's template reports: VT's with the extra channels, the VU batch block with
// its eight texts, alarm marks beside the values, logarithmic channels as decades, and the
// alarm's short type and state.
#include <array>

#include "excel/template_report.h"
#include "excel/template_reports.h"
#include "excel/vt_shaped_template.h"
#include "recorder/vu_reader.h"

namespace qumbrel {
namespace {

constexpr std::array<const char*, 17> kAlarmKeys = {"alchannelno",
                                                    "allevel",
                                                    "altype",
                                                    "altypeshort",
                                                    "alstartdate",
                                                    "alstarttime",
                                                    "alstartno",
                                                    "",
                                                    "",
                                                    "",
                                                    "",
                                                    "",
                                                    "",
                                                    "",
                                                    "",
                                                    "",
                                                    "alstatus"};
constexpr std::array<const char*, 7> kMessageKeys = {"evscanno",  "evdate", "evtime", "evmessageno",
                                                     "evmessage", "evuser", "evtype"};

class VuTemplate final : public TemplateFamily {
  public:
    std::string name() const override { return "VU"; }

    void read(Program& ctx, const std::string& source, TemplateFile& file, bool main) override {
        VUInfo i;
        VUGetInfo(ctx, 0, source, i);
        file.status = i.status;
        file.fileType = i.fileType;
        file.dataCount = i.dataCount;
        file.alarmCount = i.alarmNum;
        file.messageCount = i.eventNum;
        channelCount_ = i.measChCount + i.mathChCount;
        startTime_ = i.startTime;
        samplingInt_ = i.samplingInt;
        file.header = vt_shaped_header(i);
        insert_after(file.header, "mathchannelcount", {"extchannelcount", number(i.extChCount)});
        if (main) file.header.emplace_back("eventcount", number(i.eventNum));
        if (!main) return;
        VUBatchInfo b;
        VUGetBatchInfo(ctx, 0, source, b);
        if (b.batchFlag <= 0) return;
        file.batch = {{"batchname", b.batchName},          {"batchno", number(b.batchNo)},
                      {"batchapplication", b.application}, {"batchstartaction", b.startAction},
                      {"batchstartuser", b.startUser},     {"batchstopaction", b.stopAction},
                      {"batchstopuser", b.stopUser}};
        for (std::size_t k = 0; k < kVuBatchCommentCount; ++k) {
            const std::string n = std::to_string(k + 1);
            file.batch.emplace_back("batchcommentuser" + n, b.commentUser[k]);
            file.batch.emplace_back("batchcommenttime" + n, b.commentTime[k]);
            file.batch.emplace_back("batchcomment" + n, b.comment[k]);
        }
        for (std::size_t k = 0; k < kVuBatchTexts; ++k)
            file.batch.emplace_back("batchtext" + std::to_string(k + 1),
                                    vu_batch_text(b.label[k], b.text[k]));
    }

    std::vector<TemplateChannel> channels(Program& ctx, const std::string& source,
                                          const TemplateFile&) override {
        return read_vt_shaped_channels<VUChannelInfo>(
            ctx, channelCount_,
            [&](std::int32_t c, VUChannelInfo& ci) { VUGetChDataInfo(ctx, 0, source, c, ci); });
    }

    int kind(const std::string& fileType) const override { return upper_case_kind(fileType); }
    bool alarm_marks() const override { return true; }
    bool logarithmic() const override { return true; }

    std::unique_ptr<SampleCursor> open(Program& ctx, const std::string& source,
                                       const std::vector<TemplateChannel>& channels,
                                       const TemplateFile& file, bool eventFile) override {
        const CursorChannels cc = cursor_channels(channels);
        return VUOpenMeasData(ctx, 0, source, cc.numbers, file.dataCount, cc.decimals, cc.dataTypes,
                              vu_time_base(ctx, startTime_, samplingInt_), to_flag(eventFile),
                              ctx.state<SampleBlockSetting>().samples);
    }

    void lists(Program& ctx, const std::string& source, const TemplateFile& file) override {
        fkt_VUconvertXLSALML(ctx, source, file.alarmCount, file.messageCount);
    }

  private:
    std::int32_t channelCount_ = 0;
    std::string startTime_, samplingInt_;
};

}  // namespace

void fkt_VUconvertXLSALML(Program& ctx, const std::string& source, std::int32_t alarmCount,
                          std::int32_t messageCount) {
    TemplateLists lists;
    lists.alarmKeys = kAlarmKeys;
    lists.alarm = [&](std::int32_t a, std::vector<ExcelValue>& v) {
        VUAlarmInfo al;
        VUGetAlarmInfo(ctx, 0, source, a, al);
        v[0] = number(al.channel + 1);  // plus one again, as in every family (kept so)
        v[1] = number(al.level + 1);
        v[2] = al.text;
        v[3] = al.shortText;
        v[4] = al.date;
        v[5] = al.time;
        v[6] = number(al.levelNo);
        v[16] = al.stateText;
    };
    lists.messageKeys = kMessageKeys;
    lists.message = [&](std::int32_t e, std::vector<ExcelValue>& v) {
        VUEventInfo ev;
        VUGetEventInfo(ctx, 0, source, e, ev);
        v = {number(ev.serial), ev.date, ev.time,      number(ev.messageNo),
             ev.message,        ev.user, ev.sourceText};
    };
    run_template_lists(ctx, "VU", source, alarmCount, messageCount, lists);
}

int fkt_VUconvertXLSTPL(Program& ctx, const std::string& source, const std::string& targetBase,
                        Flag acceptDamaged) {
    return template_report<VuTemplate>(ctx, source, targetBase, acceptDamaged);
}

int fkt_VUconvertXLSTPLALML(Program& ctx, const std::string& source, const std::string& targetBase,
                            Flag acceptDamaged) {
    return separate_workbook<VuTemplate>(ctx, source, targetBase, acceptDamaged);
}

}  // namespace qumbrel
