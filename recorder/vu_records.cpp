// The VU readers of single records: file elements, alarms, messages, channels.
#include <string>

#include "frame/errors.h"
#include "frame/log.h"
#include "frame/vbformat.h"
#include "recorder/code_texts.h"
#include "recorder/file_elements.h"
#include "recorder/filters.h"
#include "recorder/reader_util.h"
#include "recorder/text_field.h"
#include "recorder/time_text.h"
#include "recorder/vu_file.h"
#include "recorder/vu_reader.h"

namespace qumbrel {

namespace {

// Groups read for the file elements: 36 elements, and a 37th group read and dropped.
constexpr std::int32_t kGroupsRead = 37;
constexpr std::int32_t kGroupElements = 36;
// The group of this index lands on the element of index 10 (kept so).
constexpr std::int32_t kSlippedGroup = 18;
constexpr std::int32_t kSlipTarget = 10;

std::string file_stem(const std::string& path) {
    const auto slash = path.find_last_of('/');
    std::string name = slash == std::string::npos ? path : path.substr(slash + 1);
    const auto dot = name.find_last_of('.');
    if (dot != std::string::npos) name.erase(dot);
    return name;
}

}  // namespace

std::string vu_batch_text(const std::string& label, const std::string& text) {
    return label.empty() ? text : label + ": " + text;
}

void VUGetFileElements(Program& ctx, std::int32_t handle, const std::string& path) {
    int step = 0;
    try {
        fkt_ClearFileElements(ctx);
        FileElements& e = ctx.state<FileElements>();
        const std::string stem = file_stem(path);
        e.ti_C = stem.empty() ? std::string() : stem.substr(stem.size() - 1);

        step = 1;
        VuFile file(ctx, handle, path);
        const auto& lib = file.lib();
        const std::int32_t h = file.get();
        TextField<abi::kVuSerialNoLen> serialNo;
        TextField<abi::kVuFileMessageLen> fileMessage;
        std::int32_t c[6] = {};
        lib.DllVUGetCommonInfo(h, serialNo.data(), &c[0], &c[1], &c[2], &c[3], fileMessage.data(),
                               &c[4], &c[5]);
        e.ti_F = filter_field(ctx, fileMessage.data(), fileMessage.size(), kFileNameFilter, true);
        e.ti_S = filter_field(ctx, serialNo.data(), serialNo.size(), kFileNameFilter, true);

        step = 2;
        std::int32_t groupCount = 0, width = 0;
        lib.DllVUGetGroupNumInfo(h, &groupCount, &width);
        for (std::int32_t g = 0; g < groupCount && g < kGroupsRead; ++g) {
            TextField<abi::kVuGroupNameLen> name;
            std::int32_t members = 0, c2 = 0, inUse = 0;
            lib.DllVUGetGroupInfo(h, g, name.data(), &members, &c2, &inUse);
            if (inUse == 0) continue;
            const std::string text =
                filter_field(ctx, name.data(), name.size(), kFileNameFilter, false);
            if (g >= kGroupElements) continue;  // read and dropped
            const std::int32_t element = g == kSlippedGroup ? kSlipTarget : g;
            e.group(element + 1) = text;
        }

        step = 3;
        TextField<abi::kVuDeviceCodeLen> deviceCode;
        std::int32_t v[13] = {};
        lib.DllVUGetCnctInfo(h, deviceCode.data(), &v[0], &v[1], &v[2], &v[3], &v[4], &v[5], &v[6],
                             &v[7], &v[8], &v[9], &v[10], &v[11], &v[12]);
        std::int32_t f[6] = {};
        lib.DllVUtoDateTime(v[0], &f[0], &f[1], &f[2], &f[3], &f[4], &f[5]);
        set_date_elements(ctx, e, f[0], f[1], f[2], f[3], f[4], f[5]);

        step = 4;
        std::int32_t startSource = 0, stopSource = 0, batchFlag = 0, batchNo = 0, reserved = 0;
        TextField<abi::kVuUserLen> startUser, stopUser;
        lib.DllVUGetBatchInfo(h, &startSource, &stopSource, startUser.data(), stopUser.data(),
                              &batchFlag);
        if (batchFlag > 0) {
            TextField<abi::kVuBatchNameLen> batchName;
            lib.DllVUGetBatchNames(h, batchName.data(), &batchNo, &reserved);
            e.ti_B = filter_field(ctx, batchName.data(), batchName.size(), kFileNameFilter, false);
            set_batch_number_elements(ctx, e, batchNo);
            std::string* const comments[] = {&e.ti_C1, &e.ti_C2, &e.ti_C3};
            for (std::int32_t i = 0; i < 3; ++i) {
                std::int32_t seconds = 0, ticks = 0;
                TextField<abi::kVuUserLen> user;
                TextField<abi::kVuCommentLen> comment;
                lib.DllVUGetBatchComment(h, i, &seconds, &ticks, user.data(), comment.data());
                *comments[i] =
                    filter_field(ctx, comment.data(), comment.size(), kFileNameFilter, true);
            }
        } else {
            set_no_batch_elements(e);
        }
    } catch (...) {
        report_trapped(ctx, "VUGetFileElements()", step);
    }
}

void VUGetAlarmInfo(Program& ctx, std::int32_t handle, const std::string& path, std::int32_t index,
                    VUAlarmInfo& out) {
    int step = 1;
    try {
        VuFile file(ctx, handle, path);
        std::int32_t channel = 0, levelMask = 0, type = 0, serial = 0, seconds = 0, ticks = 0,
                     state = 0;
        file.lib().DllVUGetAlarmEventData(file.get(), index, &channel, &levelMask, &type, &serial,
                                          &seconds, &ticks, &state);

        step = 2;
        out.channel = plus_one(channel);
        out.level = vu_level(levelMask);
        out.levelNo = serial;
        DateTimeTexts t;
        VUGetDateTime(ctx, seconds, ticks, t);
        out.date = t.date;
        out.time = t.timeWithMs;

        step = 3;
        out.text = alarm_type_text(type);
        out.shortText = alarm_type_short(type);
        out.stateText = vu_state_text(state);
    } catch (...) {
        report_trapped(ctx, "VUGetAlarmInfo()", step);
    }
}

void VUGetEventInfo(Program& ctx, std::int32_t handle, const std::string& path, std::int32_t index,
                    VUEventInfo& out) {
    int step = 1;
    try {
        VuFile file(ctx, handle, path);
        std::int32_t type = 0, messageNo = 0, seconds = 0, ticks = 0, serial = 0, c[3] = {};
        TextField<abi::kVuUserLen> user;
        TextField<abi::kVuMessageLen> message;
        file.lib().DllVUGetMessage(file.get(), index, &type, user.data(), &messageNo,
                                   message.data(), &seconds, &ticks, &serial, &c[0], &c[1], &c[2]);

        step = 2;
        out.serial = serial;
        out.messageNo = plus_one(messageNo);
        out.message = filter_field(ctx, message.data(), message.size(), kDisplayFilter, true);
        out.user = filter_field(ctx, user.data(), user.size(), kDisplayFilter, true);
        out.source = type;
        out.sourceText = message_source_text(type, true);

        step = 3;
        DateTimeTexts t;
        VUGetDateTime(ctx, seconds, ticks, t);
        out.date = t.date;
        out.time = t.timeWithMs;
    } catch (...) {
        report_trapped(ctx, "VUGetEventInfo()", step);
    }
}

void VUGetChDataInfo(Program& ctx, std::int32_t handle, const std::string& path,
                     std::int32_t channelIndex, VUChannelInfo& out) {
    int step = 1;
    try {
        VuFile file(ctx, handle, path);
        TextField<abi::kVuChannelLen> channel;
        TextField<abi::kVuTagLen> tag;
        TextField<abi::kVuUnitLen> unit;
        file.lib().DllVUGetChannelInfo(file.get(), channelIndex, &out.kind, &out.dataType,
                                       channel.data(), tag.data(), unit.data(), &out.decimals,
                                       &out.scaleLow, &out.scaleHigh, &out.number1, &out.number2,
                                       &out.number3, &out.number4, &out.number5);

        step = 2;
        out.channel = filter_field(ctx, channel.data(), channel.size(), kDisplayFilter, false);
        // The digits of the name, wherever they stand, make the number.
        const std::string digits =
            fkt_StrFilter(ctx, out.channel, "0123456789", kTrue, kTextCompare);
        out.chNo = vb::CInt(vb::Val(digits));
        out.tag = filter_field(ctx, tag.data(), tag.size(), kDisplayFilter, false);
        out.unit = filter_field(ctx, unit.data(), unit.size(), kDisplayFilter, false);
    } catch (...) {
        report_trapped(ctx, "VUGetChDataInfo()", step);
    }
}

}  // namespace qumbrel
