// The HN readers of single records: channels, alarms and marks.
#include <string>

#include "frame/errors.h"
#include "frame/log.h"
#include "recorder/code_texts.h"
#include "recorder/filters.h"
#include "recorder/hn_file.h"
#include "recorder/hn_reader.h"
#include "recorder/reader_util.h"
#include "recorder/text_field.h"
#include "recorder/time_text.h"

namespace qumbrel {

void HNGetChDataInfo(Program& ctx, std::int32_t handle, const std::string& path,
                     std::int32_t channelIndex, HNChannelInfo& out) {
    int step = 1;
    try {
        HnFile file(ctx, handle, path);
        TextField<abi::kHnTagLen> tag;
        TextField<abi::kHnChannelTextLen> text;
        TextField<abi::kHnUnitLen> unit;
        std::int32_t c1 = 0, c4 = 0, c5 = 0;
        file.lib().DllHNGetFileChannelInfo(
            file.get(), channelIndex, &out.channelNo, &c1, tag.data(), text.data(), unit.data(),
            &out.fifoId, &out.fifoType, &out.decimals, &out.unitIndex, &out.dataType, &out.flags,
            &out.scaleLow, &out.scaleHigh, &c4, &c5);
        step = 2;
        out.tag = filter_field(ctx, tag.data(), tag.size(), kDisplayFilter, true);
        out.text = filter_field(ctx, text.data(), text.size(), kDisplayFilter, true);
        out.unit = filter_field(ctx, unit.data(), unit.size(), kDisplayFilter, true);
    } catch (...) {
        report_trapped(ctx, "HNGetChDataInfo()", step);
    }
}

void HNGetAlarmInfo(Program& ctx, std::int32_t handle, const std::string& path,
                    std::int32_t alarmCount, std::int32_t index, HNAlarmInfo& out) {
    int step = 1;
    try {
        HnFile file(ctx, handle, path);
        std::int32_t level = 0, type = 0, seconds = 0;
        file.lib().DllHNGetFileAlarmInfo(file.get(), alarmCount, index, &level, &type, &seconds);
        step = 2;
        out.level = plus_one(level);
        out.text = alarm_type_text(type);
        out.shortText = alarm_type_short(type);
        DateTimeTexts t;
        HNGetDateTime(ctx, seconds, 0, t);
        out.date = t.date;
        out.time = t.timeWithMs;
    } catch (...) {
        report_trapped(ctx, "HNGetAlarmInfo()", step);
    }
}

void HNGetEventInfo(Program& ctx, std::int32_t handle, const std::string& path, std::int32_t index,
                    HNEventInfo& out) {
    int step = 1;
    try {
        HnFile file(ctx, handle, path);
        std::int16_t type = 0, creator = 0;
        std::int32_t seconds = 0, ticks = 0;
        TextField<abi::kHnMarkTextLen> text;
        file.lib().DllHNGetFileMarkData(file.get(), index, &type, &creator, &seconds, &ticks,
                                        text.data());
        step = 2;
        out.serial = plus_one(index);
        out.markType = type;
        out.message = filter_field(ctx, text.data(), text.size(), kDisplayFilter, true);
        out.group = hn_mark_creator(creator);
        out.color = hn_mark_type(type);
        DateTimeTexts t;
        HNGetDateTime(ctx, seconds, ticks, t);
        out.date = t.date;
        out.time = t.timeWithMs;
    } catch (...) {
        report_trapped(ctx, "HNGetEventInfo()", step);
    }
}

}  // namespace qumbrel
