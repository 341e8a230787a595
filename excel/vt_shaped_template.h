#pragma once
// The channel tables and header keywords of the families whose records have the VT shape
// (VT, VU, VQ, KL).
#include <algorithm>
#include <cctype>
#include <string>
#include <vector>

#include "excel/template_report.h"
#include "frame/context.h"
#include "frame/vbformat.h"

namespace qumbrel {

// The channel tables of the VT-shaped families (VT, VU, VQ, KL).
template <class Channel>
inline TemplateChannel vt_shaped_channel(Program& ctx, const Channel& ci) {
    TemplateChannel c;
    c.chNo = ci.chNo;
    c.number = vb::Format(static_cast<double>(ci.chNo), "##0", ctx.regional.profile());
    c.name = ci.tag.empty() ? ci.channel : ci.tag;
    c.unit = ci.unit;
    c.scaleLow = ci.scaleLow;
    c.scaleHigh = ci.scaleHigh;
    c.scaleMin = vb::CStr(ci.scaleLow, ctx.regional.profile());
    c.scaleMax = vb::CStr(ci.scaleHigh, ctx.regional.profile());
    c.color = std::to_string(ci.number1);
    c.scaleFlag = ci.number3;
    c.logMin = ci.number4;
    c.logMax = ci.number5;
    if constexpr (requires { ci.dataType; })
        c.dataType = ci.dataType;
    else
        c.dataType = ci.kind;
    c.decimals = ci.decimals;
    return c;
}

// Table 1 from `recordertype` on.
template <class Info>
inline Keywords vt_shaped_header(const Info& i) {
    return {{"recordertype", i.deviceType},
            {"serialno", i.serialNo},
            {"filemessage", damaged_message(i.fileMessage, i.status)},
            {"starttime", i.startTime},
            {"endtime", i.endTime},
            {"timechange", i.timeCorrect},
            {"startedby", i.startedBy},
            {"stoppedby", i.stoppedBy},
            {"startingcond", i.startingCond},
            {"dividingcond", i.dividingCond},
            {"measchannelcount", number(i.measChCount)},
            {"mathchannelcount", number(i.mathChCount)},
            {"validdatacount", number(i.dataCount)},
            {"samplerate", i.samplingInt},
            {"triggertime", i.triggerDateTime},
            {"triggerpoint", number(i.triggerNo)},
            {"groupname", i.groupName},
            {"filetype", i.fileType},
            {"alarmcount", number(i.alarmNum)}};
}

// The channel tables of `count` channels, each read by `read(index from 0, record)`.
template <class Channel, class Read>
std::vector<TemplateChannel> read_vt_shaped_channels(Program& ctx, std::int32_t count, Read read) {
    std::vector<TemplateChannel> out;
    for (std::int32_t c = 0; c < std::min(count, 1000); ++c) {
        Channel ci;
        read(c, ci);
        out.push_back(vt_shaped_channel(ctx, ci));
    }
    return out;
}

// What a family's cursor takes of the channels, by position.
struct CursorChannels {
    std::vector<std::string> numbers;  // decimal texts of the channel numbers
    std::vector<std::int32_t> decimals, dataTypes;
};

inline CursorChannels cursor_channels(const std::vector<TemplateChannel>& channels) {
    CursorChannels out;
    for (const TemplateChannel& c : channels) {
        out.numbers.push_back(std::to_string(c.chNo));
        out.decimals.push_back(c.decimals);
        out.dataTypes.push_back(c.dataType);
    }
    return out;
}

// 1 for "EVENT FILE", 2 for "DISPLAY FILE" in any case (VU, VQ, KL), else 0.
inline int upper_case_kind(const std::string& fileType) {
    std::string u(fileType);
    for (char& ch : u) ch = static_cast<char>(std::toupper(static_cast<unsigned char>(ch)));
    return u == "EVENT FILE" ? 1 : u == "DISPLAY FILE" ? 2 : 0;
}

// Puts `entry` behind the keyword `after` (at the end when there is none).
inline void insert_after(Keywords& keywords, const std::string& after, Keywords::value_type entry) {
    const auto it = std::find_if(keywords.begin(), keywords.end(),
                                 [&](const auto& k) { return k.first == after; });
    keywords.insert(it == keywords.end() ? it : it + 1, std::move(entry));
}

}  // namespace qumbrel
