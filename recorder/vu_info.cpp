// VUGetInfo, VUGetBatchInfo, the family's code tables and the handle helpers.
#include <algorithm>
#include <string>

#include "frame/errors.h"
#include "frame/log.h"
#include "frame/vbformat.h"
#include "recorder/families.h"
#include "recorder/filters.h"
#include "recorder/library_loader.h"
#include "recorder/text_field.h"
#include "recorder/time_text.h"
#include "recorder/vu_file.h"
#include "recorder/vu_reader.h"

namespace qumbrel {

namespace {

// A header that claims more groups than this is damaged; the name list stops there.
constexpr std::int32_t kMaxGroupNames = 256;

std::string bracket_unknown(std::int32_t code) {
    return "[UNKNOWN-" + std::to_string(code) + "]";
}

std::string condition(std::int32_t code, const char* const (&texts)[5]) {
    if (code >= 1 && code <= 5) return texts[code - 1];
    return code == 20 ? "RESERVED" : "UNKNOWN";
}

std::string by_source(std::int32_t code, const char* const (&texts)[6]) {
    if (code >= 0 && code <= 5) return texts[code];
    return bracket_unknown(code);
}

}  // namespace

std::string vu_starting_cond(std::int32_t code) {
    static const char* const texts[5] = {"Manual", "Auto", "Restart after Black Out", "TRIGGER",
                                         "INSAMPLE"};
    return condition(code, texts);
}

std::string vu_dividing_cond(std::int32_t code) {
    static const char* const texts[5] = {"Manual", "Auto", "Black Out", "TRIGGER", "INSAMPLE"};
    return condition(code, texts);
}

std::string vu_started_by(std::int32_t code) {
    static const char* const texts[6] = {"[USER]",          "[KEY IN]", "[REMOTE]",
                                         "[COMMUNICATION]", "[EVENT]",  "[SYSTEM IN]"};
    return by_source(code, texts);
}

std::string vu_stopped_by(std::int32_t code) {
    static const char* const texts[6] = {"[AUTO]",          "[KEY IN]", "[REMOTE]",
                                         "[COMMUNICATION]", "[EVENT]",  "[SYSTEM IN]"};
    return by_source(code, texts);
}

std::string vu_batch_action(std::int32_t code) {
    static const char* const texts[5] = {"[KEY]", "[REMOTE]", "[COMMUNICATION]", "[EVENT]",
                                         "[SYSTEM IN]"};
    if (code >= 0 && code <= 4) return texts[code];
    return bracket_unknown(code);
}

std::int32_t vu_level(std::int32_t levelMask) {
    switch (levelMask) {
        case 1:
            return 1;
        case 2:
            return 2;
        case 4:
            return 3;
        case 8:
            return 4;
        case 16:
            return 1234;
        default:
            return 0;
    }
}

std::string vu_state_text(std::int32_t state) {
    switch (state) {
        case 0:
            return "OFF";
        case 1:
            return "ON";
        case 2:
            return "ACK";
        default:
            return "UNKNOWN";
    }
}

VUHandle::VUHandle(Program& ctx, const std::string& path) {
    try {
        lib_ = &recorder::vu_library(ctx);
        lib_->DllVUOpenReadFile(path.c_str(), &handle_);
        if (handle_ < 0) handle_ = 0;
    } catch (...) {
        handle_ = 0;  // no library: the readers report it themselves
    }
}

VUHandle::~VUHandle() {
    if (lib_ && handle_ > 0) lib_->DllVUCloseFile(&handle_);
}

std::shared_ptr<void> VUHoldOpen(Program& ctx, const std::string& path) {
    auto held = std::make_shared<VUHandle>(ctx, path);
    if (held->get() == 0) return nullptr;
    return held;
}

std::string VUTypeCheck(Program& ctx, const std::string& path) {
    try {
        const auto& lib = recorder::vu_library(ctx);
        std::int32_t handle = 0;
        const std::int32_t rc = lib.DllVUOpenReadFile(path.c_str(), &handle);
        if (rc != 0 || handle <= 0) return "no VU file header";
        lib.DllVUCloseFile(&handle);
        return {};
    } catch (...) {
        report_trapped(ctx, "VUTypeCheck()", 0);
        return "the VU library is not available";
    }
}

VUTimeBase vu_time_base(Program& ctx, const std::string& startTime,
                        const std::string& samplingInt) {
    VUTimeBase base;
    const auto blank = startTime.find(' ');
    base.startDate = blank == std::string::npos ? startTime : startTime.substr(0, blank);
    const std::string clock =
        blank == std::string::npos ? std::string() : startTime.substr(blank + 1);
    base.startMsec = fkt_DateTimeToMsec(ctx, clock, "");
    // Without its separator the interval reads as whole milliseconds.
    std::string interval = samplingInt;
    const std::string& sep = ctx.opt.decseparator;
    if (!sep.empty()) {
        for (auto at = interval.find(sep); at != std::string::npos; at = interval.find(sep, at))
            interval.erase(at, sep.size());
    }
    base.intervalText = interval;
    return base;
}

void VUGetInfo(Program& ctx, std::int32_t handle, const std::string& path, VUInfo& out) {
    int step = 1;
    try {
        VuFile file(ctx, handle, path);
        const auto& lib = file.lib();
        const std::int32_t h = file.get();

        step = 2;
        TextField<abi::kVuDeviceCodeLen> deviceCode;
        std::int32_t startSeconds = 0, startTicks = 0, stopSeconds = 0, stopTicks = 0;
        std::int32_t triggerSeconds = 0, triggerTicks = 0, timeCorrected = 0;
        std::int32_t startKind = 0, stopKind = 0, reserved = 0;
        lib.DllVUGetCnctInfo(h, deviceCode.data(), &startSeconds, &startTicks, &stopSeconds,
                             &stopTicks, &triggerSeconds, &triggerTicks, &out.triggerNo,
                             &timeCorrected, &out.status, &startKind, &stopKind, &out.userFlag,
                             &reserved);

        step = 3;
        std::int32_t startSource = 0, stopSource = 0, batchFlag = 0;
        TextField<abi::kVuUserLen> startUser, stopUser;
        lib.DllVUGetBatchInfo(h, &startSource, &stopSource, startUser.data(), stopUser.data(),
                              &batchFlag);
        TextField<abi::kVuSerialNoLen> serialNo;
        TextField<abi::kVuFileMessageLen> fileMessage;
        std::int32_t c[6] = {};
        lib.DllVUGetCommonInfo(h, serialNo.data(), &c[0], &c[1], &c[2], &c[3], fileMessage.data(),
                               &c[4], &c[5]);
        std::int32_t samplingSeconds = 0, samplingTicks = 0;
        lib.DllVUGetSampleDataInfo(h, &samplingSeconds, &samplingTicks, &out.dataCount,
                                   &out.alarmNum, &out.count0, &out.count1, &out.count2,
                                   &out.count3);
        lib.DllVUGetChannelNumInfo(h, &out.measChCount, &out.mathChCount, &out.extChCount,
                                   &reserved);
        if (out.extChCount < 0) out.extChCount = 0;
        lib.DllVUGetMessageNum(h, &out.eventNum);
        lib.DllVUGetGroupNumInfo(h, &out.groupCount, &out.groupWidth);

        step = 4;
        // The device code is hexadecimal text: first digit the model, last the file kind.
        const std::string code =
            filter_field(ctx, deviceCode.data(), deviceCode.size(), kDisplayFilter, true);
        out.deviceType =
            code.empty() ? std::string() : device_model(RecorderFamily::VU, code.front());
        out.fileType =
            code.empty() ? std::string() : device_file_kind(RecorderFamily::VU, code.back());
        out.serialNo = filter_field(ctx, serialNo.data(), serialNo.size(), kDisplayFilter, true);
        out.fileMessage =
            filter_field(ctx, fileMessage.data(), fileMessage.size(), kDisplayFilter, false);

        step = 5;
        DateTimeTexts t;
        VUGetDateTime(ctx, startSeconds, startTicks, t);
        out.startTime = t.dateTime;
        VUGetDateTime(ctx, stopSeconds, stopTicks, t);
        out.endTime = t.dateTime;

        step = 6;
        // Milliseconds with three digits, so that the text without its separator reads
        // as whole milliseconds.
        out.samplingInt = std::to_string(samplingSeconds) + ctx.opt.decseparator +
                          vb::Format(samplingTicks, "000", ctx.regional.profile()) + " sec";
        out.timeCorrect = timeCorrected == 0 ? "None" : "YES";

        step = 7;
        VUGetDateTime(ctx, triggerSeconds, triggerTicks, t);
        out.triggerDateTime = t.dateTime;
        out.triggerDate = t.date;
        out.triggerTime = t.timeWithMs;

        step = 8;
        out.startUser =
            filter_field(ctx, startUser.data(), startUser.size(), kDisplayFilter, false);
        out.stopUser = filter_field(ctx, stopUser.data(), stopUser.size(), kDisplayFilter, false);
        out.startedBy = vu_started_by(startSource);
        out.stoppedBy = vu_stopped_by(stopSource);
        out.startingCond = vu_starting_cond(startKind);
        out.dividingCond = vu_dividing_cond(stopKind);

        step = 9;
        std::string names;
        const std::int32_t groups = std::min(out.groupCount, kMaxGroupNames);
        for (std::int32_t g = 0; g < groups; ++g) {
            TextField<abi::kVuGroupNameLen> name;
            std::int32_t members = 0, c2 = 0, inUse = 0;
            lib.DllVUGetGroupInfo(h, g, name.data(), &members, &c2, &inUse);
            const std::string text =
                filter_field(ctx, name.data(), name.size(), kDisplayFilter, false);
            names += g == 0 ? text : " - " + text;
        }
        out.groupName = names;
    } catch (...) {
        report_trapped(ctx, "VTGetInfo()", step);
    }
}

void VUGetBatchInfo(Program& ctx, std::int32_t handle, const std::string& path, VUBatchInfo& out) {
    int step = 1;
    try {
        VuFile file(ctx, handle, path);
        const auto& lib = file.lib();
        const std::int32_t h = file.get();
        std::int32_t startSource = 0, stopSource = 0, reserved = 0;
        TextField<abi::kVuUserLen> startUser, stopUser;
        lib.DllVUGetBatchInfo(h, &startSource, &stopSource, startUser.data(), stopUser.data(),
                              &out.batchFlag);
        TextField<abi::kVuBatchNameLen> batchName;
        lib.DllVUGetBatchNames(h, batchName.data(), &out.batchNo, &reserved);

        step = 2;
        out.batchName =
            filter_field(ctx, batchName.data(), batchName.size(), kDisplayFilter, false);
        out.startAction = vu_batch_action(startSource);
        out.stopAction = vu_batch_action(stopSource);
        out.startUser =
            filter_field(ctx, startUser.data(), startUser.size(), kDisplayFilter, false);
        out.stopUser = filter_field(ctx, stopUser.data(), stopUser.size(), kDisplayFilter, false);

        step = 3;
        for (std::int32_t i = 0; i < kVuBatchCommentCount; ++i) {
            std::int32_t seconds = 0, ticks = 0;
            TextField<abi::kVuUserLen> user;
            TextField<abi::kVuCommentLen> comment;
            lib.DllVUGetBatchComment(h, i, &seconds, &ticks, user.data(), comment.data());
            const auto k = static_cast<std::size_t>(i);
            out.commentUser[k] = filter_field(ctx, user.data(), user.size(), kDisplayFilter, true);
            DateTimeTexts t;
            VUGetDateTime(ctx, seconds, ticks, t);
            out.commentTime[k] = t.dateTime;
            out.comment[k] =
                filter_field(ctx, comment.data(), comment.size(), kDisplayFilter, true);
        }

        step = 4;
        for (std::int32_t i = 0; i < kVuBatchTexts; ++i) {
            TextField<abi::kVuBatchLabelLen> label;
            TextField<abi::kVuBatchTextLen> text;
            lib.DllVUGetBatchDescription(h, i, label.data(), text.data());
            const auto k = static_cast<std::size_t>(i);
            out.label[k] = filter_field(ctx, label.data(), label.size(), kDisplayFilter, true);
            out.text[k] = filter_field(ctx, text.data(), text.size(), kDisplayFilter, true);
        }
    } catch (...) {
        report_trapped(ctx, "VTGetBatchInfo()", step);
    }
}

}  // namespace qumbrel
