// The VT readers of single records: file elements, alarms, messages, channels.
#include <limits>
#include <string>

#include "frame/errors.h"
#include "frame/log.h"
#include "frame/vbformat.h"
#include "recorder/code_texts.h"
#include "recorder/file_elements.h"
#include "recorder/filters.h"
#include "recorder/library_loader.h"
#include "recorder/reader_util.h"
#include "recorder/text_field.h"
#include "recorder/time_text.h"
#include "recorder/vt_reader.h"

namespace qumbrel {

namespace {

// A text assigned to a 16-bit integer: read under the regional rules, rounded as CInt.
std::int16_t text_to_int16(Program& ctx, std::string_view text) {
    const auto v = vb::CDbl(text, ctx.regional.profile());
    if (!v) throw VbError(errnum::kTypeMismatch, "Type mismatch");
    return vb::CInt(*v);
}

}  // namespace

void VTGetFileElements(Program& ctx, const std::string& path) {
    int step = 0;
    try {
        fkt_ClearFileElements(ctx);
        FileElements& e = ctx.state<FileElements>();

        step = 1;
        std::int32_t startSeconds = 0;
        std::string startText, stopText;
        VtGetStartStop(ctx, path, startSeconds, startText, stopText);

        step = 2;
        const auto& lib = recorder::vt_library(ctx);
        std::int32_t handle = 0;
        lib.DllVTopenReadFile(path.c_str(), &handle);
        std::int32_t i[16] = {};
        TextField<abi::kVtDeviceTypeLen> deviceType;
        lib.DllVTgetInfoFile(handle, &i[0], &i[1], &i[2], &i[3], &i[4], &i[5], &i[6], &i[7], &i[8],
                             &i[9], &i[10], &i[11], deviceType.data(), &i[12], &i[13], &i[14]);
        std::int32_t u[20] = {};
        std::int32_t batchFlag = 0, batchNo = 0;
        TextField<abi::kVtSerialNoLen> serialNo;
        TextField<abi::kVtFileMessageLen> fileMessage;
        TextField<abi::kVtUserLen> startUser, stopUser, commentUser;
        TextField<abi::kVtBatchTextLen> application, supervisor, manager, batchName;
        TextField<abi::kVtCommentLen> comment1, comment2, comment3;
        lib.DllVTgetInfo2File(
            handle, &u[0], serialNo.data(), &u[1], &u[2], &u[3], &u[4], fileMessage.data(), &u[5],
            &u[6], &u[7], &u[8], &u[9], startUser.data(), &u[10], stopUser.data(), &batchFlag,
            application.data(), supervisor.data(), manager.data(), batchName.data(), &batchNo,
            commentUser.data(), &u[11], &u[12], comment1.data(), comment2.data(), comment3.data(),
            &u[13], &u[14], &u[15], &u[16]);

        step = 3;
        e.ti_F = filter_field(ctx, fileMessage.data(), fileMessage.size(), kFileNameFilter, true);
        e.ti_S = filter_field(ctx, serialNo.data(), serialNo.size(), kFileNameFilter, true);

        step = 4;
        for (std::int32_t g = 0; g < 4; ++g) {
            std::int32_t members = 0;
            e.group(g + 1) = VTGetGroupName(ctx, handle, g, members);
        }

        step = 5;
        std::int32_t f[6] = {};
        lib.DllVTtoDateTime(startSeconds, &f[0], &f[1], &f[2], &f[3], &f[4], &f[5]);
        set_date_elements(ctx, e, f[0], f[1], f[2], f[3], f[4], f[5]);

        step = 6;
        if (batchFlag > 0) {
            e.ti_B = filter_field(ctx, batchName.data(), batchName.size(), kFileNameFilter, false);
            set_batch_number_elements(ctx, e, batchNo);
            // The raw fields, neither filtered nor trimmed (kept so in this family).
            e.ti_C1 = raw_field(comment1.data(), comment1.size());
            e.ti_C2 = raw_field(comment2.data(), comment2.size());
            e.ti_C3 = raw_field(comment3.data(), comment3.size());
        } else {
            set_no_batch_elements(e);
        }

        step = 7;
        lib.DllVTcloseReadFile(handle);
    } catch (...) {
        report_trapped(ctx, "VTGetFileElements()", step);
    }
}

void VTGetAlarmInfo(Program& ctx, const std::string& path, std::int32_t index, VTAlarmInfo& out) {
    int step = 1;
    try {
        const auto& lib = recorder::vt_library(ctx);
        std::int32_t handle = 0;
        lib.DllVTopenReadFile(path.c_str(), &handle);
        std::int32_t channel = 0, level = 0, type = 0, serial = 0, occurSeconds = 0, occurTicks = 0,
                     releaseSerial = 0, releaseSeconds = 0, releaseTicks = 0;
        lib.DllVTgetAlarmInfoFile(handle, index, &channel, &level, &type, &serial, &occurSeconds,
                                  &occurTicks, &releaseSerial, &releaseSeconds, &releaseTicks);
        lib.DllVTcloseReadFile(handle);

        step = 2;
        out.channel = plus_one(channel);
        out.level = plus_one(level);
        out.serial = serial;
        DateTimeTexts occur;
        VTGetDateTime(ctx, occurSeconds, occurTicks, occur);
        out.date = occur.date;
        out.time = occur.timeWithMs;

        step = 3;
        out.releaseDate.clear();
        out.releaseTime.clear();
        out.text.clear();
        out.text = alarm_type_text(type);
        if (releaseSeconds > 0) {
            out.releaseSerial = releaseSerial;
            DateTimeTexts release;
            VTGetDateTime(ctx, releaseSeconds, releaseTicks, release);
            out.releaseDate = release.date;
            out.releaseTime = release.timeWithMs;
        }
    } catch (...) {
        report_trapped(ctx, "VTGetAlarmInfo()", step);
    }
}

void VTGetEventInfo(Program& ctx, const std::string& path, std::int32_t index, VTEventInfo& out) {
    int step = 1;
    try {
        const auto& lib = recorder::vt_library(ctx);
        std::int32_t handle = 0;
        lib.DllVTopenReadFile(path.c_str(), &handle);
        std::int32_t serial = 0, seconds = 0, ticks = 0, messageNo = 0, source = 0;
        TextField<abi::kVtMessageLen> message;
        TextField<abi::kVtUserLen> user;
        lib.DllVTgetEventInfoFile(handle, index, &serial, &seconds, &ticks, message.data(),
                                  &messageNo, &source, user.data());

        step = 2;
        out.serial = serial;
        out.messageNo = plus_one(messageNo);
        out.message = filter_field(ctx, message.data(), message.size(), kDisplayFilter, true);
        out.user = filter_field(ctx, user.data(), user.size(), kDisplayFilter, true);
        out.source = source;
        out.sourceText = message_source_text(source, false);

        step = 3;
        DateTimeTexts t;
        VTGetDateTime(ctx, seconds, ticks, t);
        out.date = t.date;
        out.time = t.timeWithMs;

        step = 4;
        lib.DllVTcloseReadFile(handle);
    } catch (...) {
        report_trapped(ctx, "VTGetEventInfo()", step);
    }
}

void VTGetChDataInfo(Program& ctx, const std::string& path, std::int32_t channelIndex,
                     VTChannelInfo& out) {
    int step = 1;
    try {
        const auto& lib = recorder::vt_library(ctx);
        std::int32_t handle = 0;
        lib.DllVTopenReadFile(path.c_str(), &handle);
        std::int32_t kind = 0, unused = 0, decimals = 0;
        TextField<abi::kVtChannelLen> channel;
        TextField<abi::kVtTagLen> tag;
        TextField<abi::kVtReservedTextLen> reserved;
        TextField<abi::kVtUnitLen> unit;
        lib.DllVTgetChDataInfoFile(handle, channelIndex, &kind, &unused, channel.data(), tag.data(),
                                   reserved.data(), unit.data(), &decimals);

        step = 2;
        out.channel = filter_field(ctx, channel.data(), channel.size(), kDisplayFilter, false);
        const std::string& c = out.channel;
        out.chNo = text_to_int16(
            ctx, c.size() > 2 ? std::string_view(c).substr(c.size() - 2) : std::string_view(c));
        out.tag = filter_field(ctx, tag.data(), tag.size(), kDisplayFilter, false);
        out.unit = filter_field(ctx, unit.data(), unit.size(), kDisplayFilter, false);
        out.kind = kind;
        out.decimals = decimals;

        step = 3;
        TextField<abi::kVtChannelLen> channel2;
        TextField<abi::kVtTagLen> tag2;
        TextField<abi::kVtReservedTextLen> reserved2;
        TextField<abi::kVtUnitLen> unit2;
        std::int32_t kind2 = 0, unused2 = 0, decimals2 = 0;
        lib.DllVTgetChDataInfo2File(handle, channelIndex, &kind2, &unused2, channel2.data(),
                                    tag2.data(), reserved2.data(), unit2.data(), &decimals2,
                                    &out.scaleLow, &out.scaleHigh, &out.number1, &out.number2,
                                    &out.number3, &out.number4, &out.number5);
        lib.DllVTcloseReadFile(handle);
    } catch (...) {
        report_trapped(ctx, "VTGetChDataInfo()", step);
    }
}

}  // namespace qumbrel
