// The VQ readers of single records: alarms, messages, channels, signatures, and the
// operation log with its message catalogue.
#include <algorithm>
#include <array>
#include <filesystem>
#include <string>

#include "frame/errors.h"
#include "frame/language.h"
#include "frame/log.h"
#include "frame/vbformat.h"
#include "recorder/code_texts.h"
#include "recorder/filters.h"
#include "recorder/reader_util.h"
#include "recorder/text_field.h"
#include "recorder/time_text.h"
#include "recorder/vq_file.h"
#include "recorder/vq_reader.h"

namespace qumbrel {

namespace {

// A log longer than this is a damaged header; the rows stop there.
constexpr std::int32_t kMaxOpeLogRows = 1'000'000;

void date_and_time(Program& ctx, std::int32_t seconds, std::int32_t ticks, std::string& date,
                   std::string& time) {
    DateTimeTexts t;
    VQGetDateTime(ctx, seconds, ticks, t);
    date = t.date;
    time = t.timeWithMs;
}

}  // namespace

std::string vq_sign_status(std::int32_t result) {
    switch (result) {
        case -1:
            return "unsignin";
        case 0:
            return "PASS";
        case 1:
            return "FAIL";
        default:
            return "unknown";
    }
}

std::string vq_error_prefix(std::int32_t errorCode) {
    if (errorCode > 0 && errorCode < 500) return "Error: ";
    if (errorCode >= 500 && errorCode < 600) return "Message: ";
    if (errorCode >= 600) return "Warning: ";
    return {};
}

std::string vq_source_text(std::int32_t source, const std::string& user) {
    switch (source) {
        case 0:
            return user.empty() ? "Key operation" : user;
        case 1:
            return "Remote control";
        case 2:
            return user.empty() ? "User key" : user;
        case 3:
            return "Comm. entry";
        case 11:
            return "Auto";
        default:
            return "unknown -" + std::to_string(source);
    }
}

std::string vq_message_name(std::int32_t messageNo) {
    static constexpr std::array<const char*, 59> names = {
        "Login",      "Logout",     "UserLocked", "MemStart",   "MemStop",   "AlarmACK",
        "Message",    "Manual",     "Trigger",    "MathStart",  "MathStop",  "MathReset",
        "MathACK",    "Snapshot",   "MailStart",  "MailStop",   "DispSave",  "EventSave",
        "DispLoad",   "EventLoad",  "ConfChng",   "NewTime",    "TimeChg",   "TimeAdj",
        "BlackOut",   "Recover",    "LdOpInf",    "Clear1",     "Clear2",    "Clear3",
        "LoginLoad",  "PowerOff",   "PowerOn",    "BatchNoSet", "LotNoSet",  nullptr,
        "EngLoad",    "SysLoad",    "EngSet",     "SysSet",     "LoginSet",  "Log&SysSet",
        "Eng&SysSet", "Log&EngSet", "AllSet",     "CCSet##",    nullptr,     "EngSave",
        "SysSave",    "ErrorXXX",   "WarningXXX", "UsrLockACK", "ChgPasswd", "ConctClose",
        "FileGet",    "FilePut",    "MemorySave", "A/DCalDisp", "A/DCalExec"};
    if (messageNo >= 0 && static_cast<std::size_t>(messageNo) < names.size() &&
        names[static_cast<std::size_t>(messageNo)])
        return names[static_cast<std::size_t>(messageNo)];
    return "unknown-" + std::to_string(messageNo);
}

std::string vq_catalogue_path(const Program& ctx) {
    std::filesystem::path own = ctx.opt.language;
    if (!own.empty()) {
        own.replace_extension(".bin");
        std::error_code ec;
        if (std::filesystem::is_regular_file(own, ec)) return own.string();
    }
    return ctx.program_file("english.bin");
}

void VQGetAlarmInfo(Program& ctx, std::int32_t handle, const std::string& path, std::int32_t index,
                    VQAlarmInfo& out) {
    int step = 1;
    try {
        VqFile file(ctx, handle, path);
        std::int32_t channel = 0, level = 0, type = 0, serial = 0, occurSeconds = 0, occurTicks = 0,
                     releaseSerial = 0, releaseSeconds = 0, releaseTicks = 0, ackSerial = 0,
                     ackSeconds = 0, ackTicks = 0, ackLevel = 0, reserved = 0;
        TextField<abi::kVqUserLen> user;
        file.lib().DllVQgetAlarmInfo(file.get(), index, &channel, &level, &type, &serial,
                                     &occurSeconds, &occurTicks, &releaseSerial, &releaseSeconds,
                                     &releaseTicks, &ackSerial, &ackSeconds, user.data(), &ackTicks,
                                     &ackLevel, &reserved);
        step = 2;
        out.channel = plus_one(channel);
        out.level = plus_one(level);
        out.ackLevel = plus_one(ackLevel);
        out.serial = serial;
        date_and_time(ctx, occurSeconds, occurTicks, out.date, out.time);
        step = 3;
        out.releaseDate.clear();
        out.releaseTime.clear();
        if (releaseSeconds > 0) {
            out.releaseSerial = releaseSerial;
            date_and_time(ctx, releaseSeconds, releaseTicks, out.releaseDate, out.releaseTime);
        }
        out.ackSerial = ackSerial;
        out.ackDate.clear();
        out.ackTime.clear();
        if (ackSeconds > 0) date_and_time(ctx, ackSeconds, ackTicks, out.ackDate, out.ackTime);
        out.text = alarm_type_text(type);
        out.shortText = alarm_type_short(type);
        out.user = filter_field(ctx, user.data(), user.size(), kDisplayFilter, true);
    } catch (...) {
        report_trapped(ctx, "VQGetAlarmInfo()", step);
    }
}

void VQGetEventInfo(Program& ctx, std::int32_t handle, const std::string& path, std::int32_t index,
                    VQEventInfo& out) {
    int step = 1;
    try {
        VqFile file(ctx, handle, path);
        std::int32_t serial = 0, seconds = 0, ticks = 0, messageNo = 0, reserved = 0, source = 0;
        TextField<abi::kVqMessageLen> message;
        TextField<abi::kVqUserLen> user;
        file.lib().DllVQgetMessageInfo(file.get(), index, &serial, &seconds, &ticks, message.data(),
                                       &messageNo, &reserved, &source, user.data());
        step = 2;
        out.serial = serial;
        out.messageNo = plus_one(messageNo);
        out.message = filter_field(ctx, message.data(), message.size(), kDisplayFilter, true);
        out.user = filter_field(ctx, user.data(), user.size(), kDisplayFilter, true);
        out.source = source;
        out.sourceText = message_source_text(source, true);
        date_and_time(ctx, seconds, ticks, out.date, out.time);
    } catch (...) {
        report_trapped(ctx, "VQGetEventInfo()", step);
    }
}

void VQGetChDataInfo(Program& ctx, std::int32_t handle, const std::string& path,
                     std::int32_t channelIndex, VQChannelInfo& out) {
    int step = 1;
    try {
        VqFile file(ctx, handle, path);
        const auto& lib = file.lib();
        TextField<abi::kVqUnitLen> unit;
        TextField<abi::kVqTagLen> tag;
        TextField<abi::kVqChannelLen> channel;
        std::int32_t dataType = 0;
        lib.DllVQgetChDataInfo(file.get(), channelIndex, &out.kind, &dataType, unit.data(),
                               tag.data(), channel.data(), &out.decimals);
        step = 2;
        out.channel = filter_field(ctx, channel.data(), channel.size(), kDisplayFilter, false);
        const std::string& c = out.channel;
        const auto v = vb::CDbl(c.size() > 2 ? std::string_view(c).substr(c.size() - 2) : c,
                                ctx.regional.profile());
        if (!v) throw VbError(errnum::kTypeMismatch, "Type mismatch");
        out.chNo = vb::CInt(*v);
        out.tag = filter_field(ctx, tag.data(), tag.size(), kDisplayFilter, false);
        out.unit = filter_field(ctx, unit.data(), unit.size(), kDisplayFilter, false);

        step = 3;
        // The second call only adds the scale values and the five numbers.
        TextField<abi::kVqUnitLen> unit2;
        TextField<abi::kVqTagLen> tag2;
        TextField<abi::kVqChannelLen> channel2;
        std::int32_t kind2 = 0, decimals2 = 0, reserved = 0;
        lib.DllVQgetChDataInfo2(file.get(), channelIndex, &kind2, &dataType, unit2.data(),
                                tag2.data(), channel2.data(), &decimals2, &out.number1,
                                &out.scaleLow, &out.scaleHigh, &out.number2, &out.number3,
                                &out.number4, &out.number5, &reserved);
    } catch (...) {
        report_trapped(ctx, "VQGetChDataInfo()", step);
    }
}

void VQGetSignData(Program& ctx, std::int32_t handle, const std::string& path,
                   std::int32_t signIndex, VQSignInfo& out) {
    int step = 1;
    try {
        VqFile file(ctx, handle, path);
        const auto& lib = file.lib();
        const std::int32_t h = file.get();
        std::int32_t count = 0, c1 = 0, c2 = 0, c4 = 0, signCount = 0;
        lib.DllVQgetSigninInf(h, &count, &c1);
        TextField<abi::kVqUserLen> user;
        TextField<abi::kVqSigninTextLen> c3, c5;
        lib.DllVQgetEachSigninInf(h, signIndex, &c1, &c2, user.data(), c3.data(), &c4, c5.data());
        lib.DllVQgetSigninSts(h, &signCount);
        step = 2;
        std::int32_t result = 0, seconds = 0, ticks = 0;
        TextField<abi::kVqSignNameLen> name;
        TextField<abi::kVqSignCommentLen> comment;
        TextField<abi::kVqSignHostLen> host;
        lib.DllVQgetEachSigninSts(h, signIndex, &result, name.data(), comment.data(), &seconds,
                                  &ticks, host.data());
        step = 3;
        out.statusText = vq_sign_status(result);
        out.name = filter_field(ctx, name.data(), name.size(), kDisplayFilter, true);
        out.comment = filter_field(ctx, comment.data(), comment.size(), kDisplayFilter, true);
        out.host = filter_field(ctx, host.data(), host.size(), kDisplayFilter, true);
        DateTimeTexts t;
        VQGetDateTime(ctx, seconds, ticks, t);
        out.date = t.date;
        out.time = t.timeWithMs;
    } catch (...) {
        report_trapped(ctx, "VQGetSignData()", step);
    }
}

void VQGetOpeLog(Program& ctx, std::int32_t handle, const std::string& path, std::int32_t count,
                 VQOpeLog& out) {
    int step = 1;
    try {
        const std::string catalogue = vq_catalogue_path(ctx);
        VqFile file(ctx, handle, path);
        const auto& lib = file.lib();
        const std::int32_t rows = std::clamp(count, 0, kMaxOpeLogRows);
        out = VQOpeLog{};
        for (std::int32_t i = 0; i < rows; ++i) {
            step = 2;
            std::int32_t seconds = 0, ticks = 0, time2 = 0, message = 0, serial = 0, source = 0,
                         value = 0, errorCode = 0;
            TextField<abi::kVqUserLen> user;
            TextField<abi::kVqOpeLogExtraLen> extra;
            lib.DllVQgetEachOpeLoginf(file.get(), i, &seconds, &ticks, &time2, &message, &serial,
                                      &source, &value, user.data(), &errorCode, extra.data());
            step = 3;
            out.serials.push_back(serial);
            std::string date, time;
            date_and_time(ctx, seconds, ticks, date, time);
            out.dates.push_back(date);
            out.times.push_back(time);
            out.messageNos.push_back(message);
            const std::string who =
                filter_field(ctx, user.data(), user.size(), kDisplayFilter, true);
            out.sources.push_back(vq_error_prefix(errorCode) + vq_source_text(source, who));
            step = 4;
            if (errorCode > 0) {
                out.texts.push_back(fkt_readlanguage(catalogue, "VQErrorWarning",
                                                     std::to_string(errorCode), kCatalogueMissing));
                out.names.push_back("Code" + std::to_string(errorCode));
            } else {
                out.texts.push_back(fkt_readlanguage(catalogue, "VQMessages",
                                                     std::to_string(message), kCatalogueMissing));
                out.names.push_back(vq_message_name(message));
            }
        }
    } catch (...) {
        report_trapped(ctx, "VQGetOperatingLogInf()", step);
    }
}

}  // namespace qumbrel
