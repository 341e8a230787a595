// VQGetInfo, VQGetBatchInfo, VQGetFileElements, the family's code tables, its records and
// the handle helpers.
#include <algorithm>
#include <array>
#include <string>

#include "frame/errors.h"
#include "frame/log.h"
#include "recorder/file_elements.h"
#include "recorder/filters.h"
#include "recorder/text_field.h"
#include "recorder/time_text.h"
#include "recorder/vq_file.h"
#include "recorder/vq_reader.h"

namespace qumbrel {

namespace {

constexpr std::int32_t kMaxGroupNames = 256;

std::string dashed(std::int32_t code) {
    return "-" + std::to_string(code) + "-";
}

// The values of the two header calls the readers use.
struct Header {
    std::string deviceCode, fileMessage, deviceType, serial;
    std::int32_t measChCount = 0, mathChCount = 0, dataCount = 0, triggerNo = 0;
    std::int32_t timeCorrected = 0, userFlag = 0, startKind = 0, stopKind = 0, alarmNum = 0;
    std::int32_t eventNum = 0, groupCount = 0, groupWidth = 0, extChCount = 0;
    std::int32_t count0 = 0, count1 = 0, count2 = 0;
    std::int32_t samplingSeconds = 0, samplingTicks = 0, triggerSeconds = 0, triggerTicks = 0;
    std::int32_t startSeconds = 0, startTicks = 0, stopSeconds = 0, stopTicks = 0;
};

Header read_header(Program& ctx, const recorder::VqLibrary& lib, std::int32_t h) {
    Header x;
    TextField<abi::kVqDeviceCodeLen> code;
    TextField<abi::kVqFileMessageLen> message;
    TextField<abi::kVqDeviceTypeLen> type;
    TextField<abi::kVqSerialLen> serial;
    std::array<std::int32_t, 18> u{};
    std::int32_t ticksBase = 0, units = 0;
    lib.DllVQgetBasicInfo(h, code.data(), message.data(), &x.measChCount, &x.mathChCount,
                          &x.dataCount, &x.triggerNo, &x.timeCorrected, &ticksBase, &units,
                          type.data(), &x.startKind, &x.userFlag, &x.stopKind, &x.count0, &x.count1,
                          &x.count2, &x.alarmNum, &x.groupWidth, &x.extChCount, &x.eventNum, &u[0],
                          &u[1], &u[2], &x.groupCount, &u[3], &u[4], &u[5], &u[6], &u[7], &u[8],
                          &x.samplingSeconds, &x.samplingTicks, serial.data(), &x.triggerSeconds,
                          &x.triggerTicks, &u[9]);
    TextField<abi::kVqDeviceCodeLen> code2;
    std::int32_t openStatus = 0, startKind = 0, stopKind = 0;
    lib.DllVQgetCnctInfo(h, code2.data(), &u[10], &x.startSeconds, &u[11], &x.startTicks,
                         &x.stopSeconds, &x.stopTicks, &openStatus, &startKind, &u[12], &stopKind,
                         &u[13], &u[14], &u[15], &units, &u[16]);
    x.deviceCode = filter_field(ctx, code.data(), code.size(), kDisplayFilter, true);
    x.fileMessage = filter_field(ctx, message.data(), message.size(), kDisplayFilter, false);
    x.deviceType = filter_field(ctx, type.data(), type.size(), kDisplayFilter, false);
    x.serial = filter_field(ctx, serial.data(), serial.size(), kDisplayFilter, true);
    return x;
}

std::string group_name(Program& ctx, const recorder::VqLibrary& lib, std::int32_t h, std::int32_t g,
                       std::string_view filter) {
    TextField<abi::kVqGroupNameLen> name;
    std::int32_t members = 0;
    lib.DllVQgetGroupInfo(h, g, name.data(), &members);
    return filter_field(ctx, name.data(), name.size(), filter, false);
}

// The batch call's sources and users.
struct BatchSources {
    std::int32_t startSource = 0, stopSource = 0;
    std::string startUser, stopUser;
};

}  // namespace

std::string vq_starting_cond(std::int32_t code) {
    static constexpr std::array<const char*, 4> texts = {"Manual", "Restart after Black Out",
                                                         "Auto", "Triggered Restart"};
    if (code >= 0 && code < 4) return texts[static_cast<std::size_t>(code)];
    return dashed(code);
}

std::string vq_dividing_cond(std::int32_t code) {
    static constexpr std::array<const char*, 5> texts = {"Manual", "Restart after Black Out",
                                                         "Auto", "Triggered Stopped", "Sampling"};
    if (code >= 0 && code < 5) return texts[static_cast<std::size_t>(code)];
    return dashed(code);
}

std::string vq_started_by(std::int32_t code, const std::string& user, bool batchForm) {
    switch (code) {
        case 0:
            return "[KEY]";
        case 1:
            return (batchForm ? "[KEY-" : "[KEY - ") + user + "]";
        case 2:
            return "[REMOTE]";
        case 3:
            return "[COMMUNICATION]";
        case 4:
            return "[EVENT]";
        default:
            return "[UNKNOWN-" + std::to_string(code) + "]";
    }
}

void VQClearRecords(Program& ctx) {
    ctx.state<VQRecords>() = VQRecords{};
}

VQHandle::VQHandle(Program& ctx, const std::string& path) {
    try {
        lib_ = &recorder::vq_library(ctx);
        std::int32_t openStatus = 0;
        lib_->DllVQopenReadFile(path.c_str(), &openStatus, &handle_);
        if (handle_ < 0) handle_ = 0;
    } catch (...) {
        handle_ = 0;  // no library: the readers report it themselves
    }
}

VQHandle::~VQHandle() {
    if (lib_ && handle_ > 0) lib_->DllVQcloseReadFile(handle_);
}

std::shared_ptr<void> VQHoldOpen(Program& ctx, const std::string& path) {
    auto held = std::make_shared<VQHandle>(ctx, path);
    if (held->get() == 0) return nullptr;
    return held;
}

std::string VQTypeCheck(Program& ctx, const std::string& path) {
    try {
        const auto& lib = recorder::vq_library(ctx);
        std::int32_t openStatus = 0, handle = 0;
        lib.DllVQopenReadFile(path.c_str(), &openStatus, &handle);
        if (openStatus != 0 || handle <= 0) return "no VQ file header";
        lib.DllVQcloseReadFile(handle);
        return {};
    } catch (...) {
        report_trapped(ctx, "VQTypeCheck()", 0);
        return "the VQ library is not available";
    }
}

namespace {

BatchSources read_batch(Program& ctx, const recorder::VqLibrary& lib, std::int32_t h,
                        VQBatchInfo& out) {
    BatchSources s;
    TextField<abi::kVqUserLen> startUser, stopUser;
    TextField<abi::kVqBatchHeaderLen> application, supervisor, manager;
    TextField<abi::kVqBatchNameLen> batchName;
    std::int32_t reserved = 0;
    lib.DllVQgetBatchInfo(h, &s.startSource, startUser.data(), &s.stopSource, stopUser.data(),
                          &out.batchFlag, application.data(), supervisor.data(), manager.data(),
                          batchName.data(), &out.batchNo, &reserved);
    s.startUser = filter_field(ctx, startUser.data(), startUser.size(), kDisplayFilter, true);
    s.stopUser = filter_field(ctx, stopUser.data(), stopUser.size(), kDisplayFilter, true);
    out.batchName = filter_field(ctx, batchName.data(), batchName.size(), kDisplayFilter, false);
    out.application =
        filter_field(ctx, application.data(), application.size(), kDisplayFilter, false);
    out.header[0] = out.application;
    out.header[1] = filter_field(ctx, supervisor.data(), supervisor.size(), kDisplayFilter, false);
    out.header[2] = filter_field(ctx, manager.data(), manager.size(), kDisplayFilter, false);
    return s;
}

}  // namespace

void VQGetInfo(Program& ctx, std::int32_t handle, const std::string& path, VQInfo& out) {
    int step = 1;
    try {
        VqFile file(ctx, handle, path);
        const auto& lib = file.lib();
        const std::int32_t h = file.get();
        const Header x = read_header(ctx, lib, h);

        step = 2;
        const char kind = x.deviceCode.empty() ? ' ' : x.deviceCode.back();
        out.fileType = kind == '9'                    ? "Event File"
                       : (kind == 'A' || kind == 'a') ? "Display File"
                                                      : "?";
        out.status = lib.DllVQgetCrcStatus(h);
        out.deviceType = x.deviceType;
        out.serialNo = x.serial;
        out.fileMessage = x.fileMessage;
        out.measChCount = x.measChCount;
        out.mathChCount = x.mathChCount;
        out.extChCount = std::max(x.extChCount, 0);
        out.dataCount = x.dataCount;
        out.samplingInt = std::to_string(x.samplingSeconds) + ctx.opt.decseparator +
                          std::to_string(eighths_to_millis(x.samplingTicks)) + " sec";
        out.timeCorrect = x.timeCorrected == 0 ? "None" : "YES";

        step = 3;
        DateTimeTexts t;
        VQGetDateTime(ctx, x.startSeconds, x.startTicks, t);
        out.startTime = t.date + " " + t.time;
        VQGetDateTime(ctx, x.stopSeconds, x.stopTicks, t);
        out.endTime = t.date + " " + t.time;
        VQGetDateTime(ctx, x.triggerSeconds, x.triggerTicks, t);
        out.triggerDateTime = t.dateTime;
        out.triggerDate = t.date;
        out.triggerTime = t.timeWithMs;
        out.triggerNo = x.triggerNo;
        out.userFlag = x.userFlag;
        out.startingCond = vq_starting_cond(x.startKind);
        out.dividingCond = vq_dividing_cond(x.stopKind);
        out.groupCount = x.groupCount;
        out.groupWidth = x.groupWidth;
        out.alarmNum = x.alarmNum;
        out.eventNum = x.eventNum;
        out.count0 = x.count0;
        out.count1 = x.count1;
        out.count2 = x.count2;

        step = 4;
        std::string names;
        const std::int32_t groups = std::min(x.groupCount, kMaxGroupNames);
        for (std::int32_t g = 0; g < groups; ++g) {
            const std::string n = group_name(ctx, lib, h, g, kDisplayFilter);
            names += g == 0 ? n : " - " + n;
        }
        out.groupName = names;
        lib.DllVQgetOpeLogInf(h, &out.opeLogNum);

        step = 5;
        VQBatchInfo batch;
        const BatchSources s = read_batch(ctx, lib, h, batch);
        out.startUser = s.startUser;
        out.stopUser = s.stopUser;
        out.startedBy = vq_started_by(s.startSource, s.startUser, false);
        out.stoppedBy = vq_started_by(s.stopSource, s.stopUser, false);
    } catch (...) {
        report_trapped(ctx, "VQGetInfo()", step);
    }
}

void VQGetBatchInfo(Program& ctx, std::int32_t handle, const std::string& path, VQBatchInfo& out) {
    int step = 1;
    try {
        VqFile file(ctx, handle, path);
        const auto& lib = file.lib();
        const BatchSources s = read_batch(ctx, lib, file.get(), out);
        out.startedBy = vq_started_by(s.startSource, s.startUser, true);
        out.stoppedBy = vq_started_by(s.stopSource, s.stopUser, true);

        step = 2;
        for (std::int32_t i = 0; i < kVqComments; ++i) {
            TextField<abi::kVqUserLen> user;
            TextField<abi::kVqCommentLen> comment;
            std::int32_t seconds = 0, ticks = 0;
            lib.DllVQgetBatchComment(file.get(), i, user.data(), &seconds, &ticks, comment.data());
            const auto k = static_cast<std::size_t>(i);
            out.comment[k] =
                filter_field(ctx, comment.data(), comment.size(), kDisplayFilter, true);
            out.commentUser[k] = filter_field(ctx, user.data(), user.size(), kDisplayFilter, true);
            DateTimeTexts t;
            VQGetDateTime(ctx, seconds, ticks, t);
            out.commentTime[k] = t.dateTime;
        }
    } catch (...) {
        report_trapped(ctx, "VQGetBatchInfo()", step);
    }
}

void VQGetFileElements(Program& ctx, std::int32_t handle, const std::string& path) {
    int step = 0;
    try {
        fkt_ClearFileElements(ctx);
        FileElements& e = ctx.state<FileElements>();
        step = 1;
        VqFile file(ctx, handle, path);
        const auto& lib = file.lib();
        const std::int32_t h = file.get();
        Header x = read_header(ctx, lib, h);
        e.ti_F =
            filter_field(ctx, x.fileMessage.data(), x.fileMessage.size(), kFileNameFilter, true);
        e.ti_S = filter_field(ctx, x.serial.data(), x.serial.size(), kFileNameFilter, true);

        step = 2;
        for (std::int32_t g = 0; g < 6 && g < x.groupCount; ++g)
            e.group(g + 1) = group_name(ctx, lib, h, g, kFileNameFilter);

        step = 3;
        std::int32_t f[6] = {};
        lib.DllVQtoDateTime(x.startSeconds, &f[0], &f[1], &f[2], &f[3], &f[4], &f[5]);
        set_date_elements(ctx, e, f[0], f[1], f[2], f[3], f[4], f[5]);

        step = 4;
        VQBatchInfo batch;
        VQGetBatchInfo(ctx, h, path, batch);
        if (batch.batchFlag > 0) {
            e.ti_B = filter_field(ctx, batch.batchName.data(), batch.batchName.size(),
                                  kFileNameFilter, false);
            set_batch_number_elements(ctx, e, batch.batchNo);
            // The comments as the batch reader gives them: display filter, trimmed.
            e.ti_C1 = batch.comment[0];
            e.ti_C2 = batch.comment[1];
            e.ti_C3 = batch.comment[2];
        } else {
            set_no_batch_elements(e);
        }
    } catch (...) {
        report_trapped(ctx, "VQGetFileElements()", step);
    }
}

}  // namespace qumbrel
