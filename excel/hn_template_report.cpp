// The HN family's template reports: data files only ("DATA"; a file of another type gets
// the header alone), the HN header keywords, no batch block and no decades, alarm marks
// beside the values when the file carries alarm codes, and the HN alarm and mark lists.
#include <array>

#include "excel/template_report.h"
#include "excel/template_reports.h"
#include "frame/vbformat.h"
#include "recorder/hn_reader.h"
#include "recorder/vu_reader.h"

namespace qumbrel {
namespace {

// The library's alarm record has no values: alarmonvalue and alarmoffvalue stay unwritten.
constexpr std::array<const char*, 16> kAlarmKeys = {"alchannelno",
                                                    "",
                                                    "altype",
                                                    "altypeshort",
                                                    "",
                                                    "",
                                                    "",
                                                    "",
                                                    "",
                                                    "",
                                                    "",
                                                    "",
                                                    "",
                                                    "",
                                                    "alarmonvalue",
                                                    "alarmoffvalue"};
constexpr std::array<const char*, 9> kMessageKeys = {"", "",       "",        "",       "evmessage",
                                                     "", "evtype", "evgroup", "evcolor"};

class HnTemplate final : public TemplateFamily {
  public:
    std::string name() const override { return "HN"; }

    void read(Program& ctx, const std::string& source, TemplateFile& file, bool main) override {
        HNInfo i;
        HNGetInfo(ctx, 0, source, i);
        file.status = i.status;
        file.fileType = i.fileType;
        file.dataCount = i.dataCount;
        file.alarmCount = i.alarmNum;
        file.messageCount = i.eventNum;
        channelCount_ = i.measChCount;
        alarmTexts_ = i.alarmFlag > 0;
        startTime_ = i.startTime;
        samplingInt_ = i.samplingInt;
        // What the family's header has of Table 1, then its own.
        file.header = {{"recordertype", i.deviceType},
                       {"serialno", i.serialNo},
                       {"filemessage", damaged_message(i.fileMessage, i.status)},
                       {"starttime", i.startTime},
                       {"endtime", i.endTime},
                       {"timechange", i.timeCorrect},
                       {"startedby", i.startReason},
                       {"stoppedby", i.stopReason},
                       {"measchannelcount", number(i.measChCount)},
                       {"validdatacount", number(i.dataCount)},
                       {"samplerate", i.samplingInt},
                       {"groupname", i.groupName},
                       {"filetype", i.fileType},
                       {"alarmcount", number(i.alarmNum)},
                       {"filestatus", i.fileState},
                       {"post", i.post},
                       {"creator", i.creator},
                       {"unitnum", number(i.unitNum)}};
        if (main) file.header.emplace_back("eventcount", number(i.eventNum));
    }

    std::vector<TemplateChannel> channels(Program& ctx, const std::string& source,
                                          const TemplateFile&) override {
        std::vector<TemplateChannel> out;
        plans_.clear();
        for (std::int32_t c = 0; c < std::min(channelCount_, 1000); ++c) {
            HNChannelInfo ci;
            HNGetChDataInfo(ctx, 0, source, c, ci);
            TemplateChannel t;
            t.chNo = ci.channelNo;
            t.number = vb::Format(static_cast<double>(ci.channelNo), "##0", ctx.regional.profile());
            t.name = ci.tag;
            t.unit = ci.unit;
            t.scaleLow = ci.scaleLow;
            t.scaleHigh = ci.scaleHigh;
            t.scaleMin = vb::CStr(ci.scaleLow, ctx.regional.profile());
            t.scaleMax = vb::CStr(ci.scaleHigh, ctx.regional.profile());
            t.dataType = ci.dataType;
            t.decimals = ci.decimals;
            out.push_back(t);
            plans_.push_back(HNChannelPlan{c, ci.fifoId, ci.fifoType, ci.dataType, ci.flags,
                                           ci.decimals, std::to_string(ci.channelNo)});
        }
        return out;
    }

    // One kind of data file: its values are single, as in an event file.
    int kind(const std::string& fileType) const override { return fileType == "DATA" ? 1 : 0; }
    bool alarm_marks() const override { return true; }
    bool log_keywords() const override { return false; }

    std::unique_ptr<SampleCursor> open(Program& ctx, const std::string& source,
                                       const std::vector<TemplateChannel>&,
                                       const TemplateFile& file, bool) override {
        return HNOpenMeasData(ctx, 0, source, plans_, file.dataCount, alarmTexts_,
                              vu_time_base(ctx, startTime_, samplingInt_),
                              ctx.state<SampleBlockSetting>().samples);
    }

    void lists(Program& ctx, const std::string& source, const TemplateFile& file) override {
        fkt_HNconvertXLSALML(ctx, source, file.alarmCount, file.messageCount);
    }

    int separate_attempts() const override { return 1; }

  private:
    std::int32_t channelCount_ = 0;
    bool alarmTexts_ = false;
    std::string startTime_, samplingInt_;
    std::vector<HNChannelPlan> plans_;
};

}  // namespace

void fkt_HNconvertXLSALML(Program& ctx, const std::string& source, std::int32_t alarmCount,
                          std::int32_t messageCount) {
    TemplateLists lists;
    lists.alarmKeys = kAlarmKeys;
    lists.alarm = [&](std::int32_t a, std::vector<ExcelValue>& v) {
        HNAlarmInfo al;
        HNGetAlarmInfo(ctx, 0, source, alarmCount, a, al);
        v[0] = number(al.channel + 1);  // plus one, as in every family (kept so)
        v[2] = al.text;
        v[3] = al.shortText;
    };
    lists.messageKeys = kMessageKeys;
    lists.message = [&](std::int32_t e, std::vector<ExcelValue>& v) {
        HNEventInfo ev;
        HNGetEventInfo(ctx, 0, source, e, ev);
        v[4] = ev.message;
        v[6] = number(ev.markType);
        v[7] = ev.group;
        v[8] = ev.color;
    };
    run_template_lists(ctx, "HN", source, alarmCount, messageCount, lists);
}

int fkt_HNconvertXLSTPL(Program& ctx, const std::string& source, const std::string& targetBase,
                        Flag acceptDamaged) {
    return template_report<HnTemplate>(ctx, source, targetBase, acceptDamaged);
}

int fkt_HNconvertXLSTPLALML(Program& ctx, const std::string& source, const std::string& targetBase,
                            Flag acceptDamaged) {
    return separate_workbook<HnTemplate>(ctx, source, targetBase, acceptDamaged);
}

}  // namespace qumbrel
