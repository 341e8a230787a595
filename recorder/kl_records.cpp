// The KL readers of single records: channels, alarms, messages, control-mode events of
// the loops, PV and time events.
#include <array>
#include <string>

#include "frame/errors.h"
#include "frame/log.h"
#include "frame/vbformat.h"
#include "recorder/code_texts.h"
#include "recorder/filters.h"
#include "recorder/kl_file.h"
#include "recorder/kl_reader.h"
#include "recorder/reader_util.h"
#include "recorder/sample_number.h"
#include "recorder/text_field.h"
#include "recorder/time_text.h"

namespace qumbrel {

namespace {

// The state codes of a control-mode row, as the recorder stores them.
std::string code_text(std::int32_t code, std::initializer_list<const char*> texts) {
    if (code >= 0 && static_cast<std::size_t>(code) < texts.size()) return *(texts.begin() + code);
    return "UNKNOWN";
}

void date_and_time(Program& ctx, std::int32_t seconds, std::int32_t ticks, std::string& date,
                   std::string& time) {
    DateTimeTexts t;
    KLGetDateTime(ctx, seconds, ticks, t);
    date = t.date;
    time = t.timeWithMs;
}

}  // namespace

void KLGetChDataInfo(Program& ctx, std::int32_t handle, const std::string& path,
                     std::int32_t channelIndex, KLChannelInfo& out) {
    int step = 1;
    try {
        KlFile file(ctx, handle, path);
        TextField<abi::kKlUnitLen> unit;
        TextField<abi::kKlTagLen> tag;
        TextField<abi::kKlChannelLen> channel;
        file.lib().DllKLgetChDataInfo2(file.get(), channelIndex, &out.kind, &out.dataType,
                                       unit.data(), tag.data(), channel.data(), &out.decimals,
                                       &out.scaleLow, &out.scaleHigh, &out.number1, &out.number2,
                                       &out.number3, &out.number4, &out.number5);
        step = 2;
        out.channel = filter_field(ctx, channel.data(), channel.size(), kDisplayFilter, false);
        // The number is the last two characters of the name, as in VT.
        const std::string& c = out.channel;
        const auto v = vb::CDbl(c.size() > 2 ? std::string_view(c).substr(c.size() - 2) : c,
                                ctx.regional.profile());
        if (!v) throw VbError(errnum::kTypeMismatch, "Type mismatch");
        out.chNo = vb::CInt(*v);
        out.tag = filter_field(ctx, tag.data(), tag.size(), kDisplayFilter, false);
        out.unit = filter_field(ctx, unit.data(), unit.size(), kDisplayFilter, false);
    } catch (...) {
        report_trapped(ctx, "KLGetChDataInfo()", step);
    }
}

void KLGetAlarmInfo(Program& ctx, std::int32_t handle, const std::string& path, std::int32_t index,
                    KLAlarmInfo& out) {
    int step = 1;
    try {
        KlFile file(ctx, handle, path);
        std::int32_t channel = 0, level = 0, type = 0, serial = 0, occurSeconds = 0, occurTicks = 0,
                     releaseSerial = 0, releaseSeconds = 0, releaseTicks = 0, ackSerial = 0,
                     ackSeconds = 0, ackTicks = 0, source = 0, state = 0;
        TextField<abi::kKlUserLen> user;
        file.lib().DllKLgetAlarmInfo(file.get(), index, &channel, &level, &type, &serial,
                                     &occurSeconds, &occurTicks, &releaseSerial, &releaseSeconds,
                                     &releaseTicks, &ackSerial, &ackSeconds, user.data(), &ackTicks,
                                     &source, &state);
        step = 2;
        out.channel = plus_one(channel);
        out.level = plus_one(level);
        out.serial = serial;
        out.text = kl_alarm_text(type);
        out.shortText = kl_alarm_short(type);
        date_and_time(ctx, occurSeconds, occurTicks, out.date, out.time);
        out.releaseDate.clear();
        out.releaseTime.clear();
        if (releaseSeconds > 0) {
            out.releaseSerial = releaseSerial;
            date_and_time(ctx, releaseSeconds, releaseTicks, out.releaseDate, out.releaseTime);
        }
        step = 3;
        out.ackDate.clear();
        out.ackTime.clear();
        if (ackSeconds > 0) {
            out.ackSerial = ackSerial;
            date_and_time(ctx, ackSeconds, ackTicks, out.ackDate, out.ackTime);
        }
        out.stateText = kl_alarm_state(state);
        out.sourceText = kl_alarm_source(source);
        out.user = filter_field(ctx, user.data(), user.size(), kDisplayFilter, true);
    } catch (...) {
        report_trapped(ctx, "KLGetAlarmInfo()", step);
    }
}

void KLGetEventInfo(Program& ctx, std::int32_t handle, const std::string& path, std::int32_t index,
                    KLEventInfo& out) {
    int step = 1;
    try {
        KlFile file(ctx, handle, path);
        std::int32_t serial = 0, seconds = 0, ticks = 0, messageNo = 0, group = 0, source = 0;
        TextField<abi::kKlMessageLen> message;
        TextField<abi::kKlUserLen> user;
        file.lib().DllKLgetMessageInfo(file.get(), index, &serial, &seconds, &ticks, message.data(),
                                       &messageNo, &group, &source, user.data());
        step = 2;
        out.serial = serial;
        out.messageNo = plus_one(messageNo);
        out.message = filter_field(ctx, message.data(), message.size(), kDisplayFilter, true);
        out.user = filter_field(ctx, user.data(), user.size(), kDisplayFilter, true);
        out.source = source;
        out.sourceText = message_source_text(source, true);
        out.group = group;
        step = 3;
        date_and_time(ctx, seconds, ticks, out.date, out.time);
    } catch (...) {
        report_trapped(ctx, "KLGetEventInfo()", step);
    }
}

void KLGetCtrlModeInfo(Program& ctx, std::int32_t handle, const std::string& path,
                       std::int32_t index, KLCtrlModeInfo& out) {
    int step = 1;
    try {
        KlFile file(ctx, handle, path);
        const auto& lib = file.lib();
        std::int32_t loop = 0, kind = 0, seconds = 0, ticks = 0, mode = 0, localRemote = 0,
                     programReset = 0, runState = 0, holdState = 0, waitState = 0, advanceState = 0,
                     programState = 0, operation = 0, c1 = 0, c2 = 0, c3 = 0;
        lib.DllKLgetCtrlModeInfo(file.get(), index, &loop, &kind, &seconds, &ticks, &mode,
                                 &localRemote, &programReset, &runState, &holdState, &waitState,
                                 &advanceState, &programState, &operation, &c1, &c2, &c3);
        step = 2;
        TextField<abi::kKlLoopTagLen> tag;
        TextField<abi::kKlLoopUnitLen> unit;
        std::int32_t l1 = 0, l2 = 0;
        lib.DllKLgetLoopInfo(file.get(), loop, &l1, &l2, tag.data(), unit.data());
        // The tag through the display filter, then kept to file-name characters.
        const std::string shown = filter_field(ctx, tag.data(), tag.size(), kDisplayFilter, true);
        const std::string name = fkt_StrFilter(ctx, shown, kFileNameFilter, kTrue, kTextCompare);
        out.name = name.empty() ? "Program" : name;
        out.comment = filter_field(ctx, unit.data(), unit.size(), kDisplayFilter, true);

        step = 3;
        out.no = plus_one(index);
        out.loop = loop;
        date_and_time(ctx, seconds, ticks, out.date, out.time);
        out.status = kl_ctrl_mode(mode);
        out.changeMode = code_text(localRemote, {"LOCAL", "REMOTE", "PROGRAM"});
        out.programRunReset = code_text(programReset, {"RESET", "RUN"});
        out.runStop = code_text(runState, {"STOP", "RUN"});
        out.programHold = code_text(holdState, {"HOLD INVALID", "HOLD OFF", "HOLD ON"});
        out.programWait = code_text(waitState, {"WAIT INVALID", "WAIT OFF", "WAIT ON"});
        out.advance = code_text(advanceState, {"ADVANCE OFF", "ADVANCE ON"});
        out.program = code_text(programState, {"PROGRAM OFF", "PROGRAM ON"});
        out.setPoint = code_text(operation, {"OFF", "AUTO", "MAN", "CAS"});
    } catch (...) {
        report_trapped(ctx, "KLGetCtrlModeInfo of Modul DllKLFileAccess", step);
    }
}

void KLGetTPVEventInfo(Program& ctx, std::int32_t handle, const std::string& path,
                       std::int32_t index, KLTPVEventInfo& out) {
    int step = 1;
    try {
        KlFile file(ctx, handle, path);
        std::int32_t kind = 0, no = 0, channel = 0, seconds = 0, ticks = 0, offSeconds = 0,
                     offTicks = 0, type = 0, value = 0, decimals = 0;
        file.lib().DllKLgetTPVEventInfo(file.get(), index, &kind, &no, &channel, &seconds, &ticks,
                                        &offSeconds, &offTicks, &type, &value, &decimals);
        step = 2;
        out.name = kl_tpv_kind(kind);
        out.level = plus_one(channel);
        out.type = kl_tpv_type(type);
        out.noOn = no;
        date_and_time(ctx, seconds, ticks, out.dateOn, out.timeOn);
        out.noOff = 0;
        out.dateOff.clear();
        out.timeOff.clear();
        if (offSeconds > 0) {
            out.noOff = no;
            date_and_time(ctx, offSeconds, offTicks, out.dateOff, out.timeOff);
        }
        step = 3;
        out.value = decimals > 0
                        ? sample_text_to_number(ctx, std::to_string(value), decimals, kZeroRow27)
                        : value;
    } catch (...) {
        report_trapped(ctx, "KLGetTPVEventInfo of Modul DllKLFileAccess", step);
    }
}

}  // namespace qumbrel
