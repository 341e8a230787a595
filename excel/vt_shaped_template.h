#pragma once
// The channel tables and header keywords of the families whose records have the VT shape
// (VT, VU, VQ, KL).
#include <string>

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

}  // namespace qumbrel
