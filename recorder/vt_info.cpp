// VTGetInfo and the helpers it shares with the other VT readers: type text, start/stop
// reasons, group names and the frm_data start/stop times.
#include <algorithm>
#include <string>

#include "frame/errors.h"
#include "frame/log.h"
#include "recorder/filters.h"
#include "recorder/library_loader.h"
#include "recorder/text_field.h"
#include "recorder/time_text.h"
#include "recorder/vt_reader.h"

namespace qumbrel {

namespace {

// A header that claims more groups than this is damaged; the name list stops there.
constexpr std::int32_t kMaxGroupNames = 256;

std::string code_text(std::int32_t n) {
    return std::to_string(n);
}

}  // namespace

std::string vt_type_text(std::int32_t code) {
    switch (code) {
        case 16:
            return "PELLOMAR16 file";
        case 17:
            return "PELLOMAR32 file";
        case 18:
            return "KESTRA32 R2 file";
        case 32:
            return "TARNWICK PELLOMAR file";
        case 48:
            return "Event file";
        case 49:
            return "Display File";
        case 64:
            return "Event file extended";
        case 65:
            return "Display file extended";
        default:
            return "NOT TARNWICK FILE";
    }
}

std::string VTgetTypeFile(Program& ctx, const std::string& path) {
    try {
        const auto& lib = recorder::vt_library(ctx);
        // The library may rewrite the path it is given: it gets a copy.
        std::string scratch = path;
        return vt_type_text(lib.DllVTgetTypeFile(scratch.data()));
    } catch (...) {
        report_trapped(ctx, "VTgetTypeFile()", 0);
    }
    return {};
}

std::shared_ptr<void> VTHoldOpen(Program& ctx, const std::string& path) {
    try {
        const auto& lib = recorder::vt_library(ctx);
        std::int32_t handle = 0;
        lib.DllVTopenReadFile(path.c_str(), &handle);
        if (handle <= 0) return nullptr;
        return std::shared_ptr<void>(nullptr,
                                     [&lib, handle](void*) { lib.DllVTcloseReadFile(handle); });
    } catch (...) {
        return nullptr;  // no library: the readers report it themselves
    }
}

void GetStartStopReason(std::int32_t startCode, std::int32_t stopCode, std::int32_t startKind,
                        std::int32_t stopKind, StartStopReason& out) {
    switch (startCode) {
        case -1:
            out.startedBy = "[None]";
            break;
        case 0:
            out.startedBy = "[Key In]";
            break;
        case 2:
            out.startedBy = "[Remote In]";
            break;
        case 3:
            out.startedBy = "[Comm. In]";
            break;
        default:
            out.startedBy = "[" + code_text(startCode) + "]";
    }
    switch (stopCode) {
        case -1:
            out.stoppedBy = "[None]";
            break;
        case 0:
            out.stoppedBy = stopKind == 2   ? "[Running]"
                            : stopKind == 3 ? "[Data Count]"
                                            : "[Key In]";
            break;
        case 2:
            out.stoppedBy = "[Remote In]";
            break;
        case 3:
            out.stoppedBy = "[Comm. In]";
            break;
        default:
            out.stoppedBy = "[" + code_text(stopCode) + "]";
    }
    switch (startKind) {
        case 0:
            out.startingCond = "Manual";
            break;
        case 1:
            out.startingCond = "Restart after Black Out";
            break;
        case 2:
            out.startingCond = "Auto";
            break;
        case 3:
            out.startingCond = "Triggered Restart";
            break;
        default:
            out.startingCond = "-" + code_text(startKind) + "-";
    }
    switch (stopKind) {
        case 0:
            out.dividingCond = "Manual";
            break;
        case 1:
            out.dividingCond = "Restart after Black Out";
            break;
        case 2:
            out.dividingCond = "Auto";
            break;
        case 3:
            out.dividingCond = "Data Count";
            break;
        default:
            out.dividingCond = "-" + code_text(stopKind) + "-";
    }
}

std::string VTGetGroupName(Program& ctx, std::int32_t handle, std::int32_t groupIndex,
                           std::int32_t& members) {
    const auto& lib = recorder::vt_library(ctx);
    TextField<abi::kVtGroupNameLen> name;
    lib.DllVTgetGroupInfoFile(handle, groupIndex, name.data(), &members);
    return filter_field(ctx, name.data(), name.size(), kDisplayFilter, false);
}

void DisplayTime(Program& ctx, std::int32_t seconds, std::int32_t ticks, std::string& text) {
    DateTimeTexts t;
    VTGetDateTime(ctx, seconds, ticks, t);
    text = t.dateTime;
}

void VtGetStartStop(Program& ctx, const std::string& path, std::int32_t& startSeconds,
                    std::string& startText, std::string& stopText) {
    const auto& lib = recorder::vt_library(ctx);
    std::int32_t handle = 0;
    lib.DllVTopenReadFile(path.c_str(), &handle);
    // The handle waits in a text while the library runs, as the form's hidden control
    // held it.
    const std::string heldHandle = std::to_string(handle);
    std::int32_t u1 = 0, u2 = 0, u3 = 0, u4 = 0, u5 = 0, u6 = 0;
    std::int32_t start = 0, startTicks = 0, stop = 0, stopTicks = 0;
    lib.DllVTgetFileCnctInfoHandle(handle, &u1, &u2, &u3, &start, &startTicks, &stop, &stopTicks,
                                   &u4, &u5, &u6);
    ctx.host.pump_events();
    startSeconds = start;
    DisplayTime(ctx, start, startTicks, startText);
    DisplayTime(ctx, stop, stopTicks, stopText);
    lib.DllVTcloseReadFile(std::stoi(heldHandle));
}

void VTGetInfo(Program& ctx, const std::string& path, VTInfo& out) {
    int step = 1;
    try {
        std::int32_t startSeconds = 0;
        VtGetStartStop(ctx, path, startSeconds, out.startTime, out.endTime);

        step = 2;
        const auto& lib = recorder::vt_library(ctx);
        std::int32_t handle = 0;
        lib.DllVTopenReadFile(path.c_str(), &handle);
        std::int32_t samplingSeconds = 0, samplingTicks = 0, triggerSeconds = 0, triggerTicks = 0;
        TextField<abi::kVtDeviceTypeLen> deviceType;
        lib.DllVTgetInfoFile(handle, &out.measChCount, &out.mathChCount, &out.dataCount,
                             &out.count0, &samplingSeconds, &samplingTicks, &out.triggerNo,
                             &triggerSeconds, &triggerTicks, &out.count1, &out.count2,
                             &out.eventNum, deviceType.data(), &out.status, &out.alarmNum,
                             &out.extChCount);
        if (out.extChCount < 0) out.extChCount = 0;

        step = 3;
        std::int32_t uA = 0, uB = 0, uC = 0, uD = 0, uE = 0, uF = 0, uG = 0, uH = 0, uI = 0;
        std::int32_t timeCorrected = 0, startKind = 0, stopKind = 0, startCode = 0, stopCode = 0;
        std::int32_t batchNo = 0, commentSeconds = 0, commentTicks = 0;
        TextField<abi::kVtSerialNoLen> serialNo;
        TextField<abi::kVtFileMessageLen> fileMessage;
        TextField<abi::kVtUserLen> startUser, stopUser, commentUser;
        TextField<abi::kVtBatchTextLen> application, supervisor, manager, batchName;
        TextField<abi::kVtCommentLen> comment1, comment2, comment3;
        lib.DllVTgetInfo2File(
            handle, &uA, serialNo.data(), &uB, &uC, &uD, &uE, fileMessage.data(), &timeCorrected,
            &startKind, &stopKind, &out.userFlag, &startCode, startUser.data(), &stopCode,
            stopUser.data(), &out.batchFlag, application.data(), supervisor.data(), manager.data(),
            batchName.data(), &batchNo, commentUser.data(), &commentSeconds, &commentTicks,
            comment1.data(), comment2.data(), comment3.data(), &uF, &uG, &uH, &uI);
        lib.DllVTgetGroupNumFile(handle, &out.groupCount, &out.groupWidth);

        step = 4;  // out.status came with the first header block

        step = 5;
        out.fileType = VTgetTypeFile(ctx, path);
        out.deviceType =
            filter_field(ctx, deviceType.data(), deviceType.size(), kDisplayFilter, false);
        out.serialNo = filter_field(ctx, serialNo.data(), serialNo.size(), kDisplayFilter, true);
        out.fileMessage =
            filter_field(ctx, fileMessage.data(), fileMessage.size(), kDisplayFilter, false);

        step = 6;
        out.samplingInt = std::to_string(samplingSeconds) + ctx.opt.decseparator +
                          std::to_string(eighths_to_millis(samplingTicks)) + " sec";

        step = 7;
        out.timeCorrect = timeCorrected == 0 ? "None" : "YES";

        step = 8;
        DateTimeTexts trigger;
        VTGetDateTime(ctx, triggerSeconds, triggerTicks, trigger);
        out.triggerDateTime = trigger.dateTime;
        out.triggerDate = trigger.date;
        out.triggerTime = trigger.timeWithMs;

        step = 9;
        out.startUser =
            filter_field(ctx, startUser.data(), startUser.size(), kDisplayFilter, false);
        out.stopUser = filter_field(ctx, stopUser.data(), stopUser.size(), kDisplayFilter, false);
        StartStopReason reason;
        GetStartStopReason(startCode, stopCode, startKind, stopKind, reason);
        out.startedBy = reason.startedBy;
        out.stoppedBy = reason.stoppedBy;
        out.startingCond = reason.startingCond;
        out.dividingCond = reason.dividingCond;

        step = 10;
        std::int32_t members = 0;
        std::string names = VTGetGroupName(ctx, handle, 0, members);
        const std::int32_t groups = std::min(out.groupCount, kMaxGroupNames);
        for (std::int32_t g = 1; g < groups; ++g)
            names += " - " + VTGetGroupName(ctx, handle, g, members);
        out.groupName = names;

        step = 11;
        out.application =
            filter_field(ctx, application.data(), application.size(), kDisplayFilter, false);
        out.supervisor =
            filter_field(ctx, supervisor.data(), supervisor.size(), kDisplayFilter, false);
        out.manager = filter_field(ctx, manager.data(), manager.size(), kDisplayFilter, false);
        out.batchName =
            filter_field(ctx, batchName.data(), batchName.size(), kDisplayFilter, false);
        out.commentUser =
            filter_field(ctx, commentUser.data(), commentUser.size(), kDisplayFilter, false);
        DateTimeTexts comment;
        VTGetDateTime(ctx, commentSeconds, commentTicks, comment);
        out.commentTime = comment.dateTime;
        out.comment1 = filter_field(ctx, comment1.data(), comment1.size(), kDisplayFilter, true);
        out.comment2 = filter_field(ctx, comment2.data(), comment2.size(), kDisplayFilter, true);
        out.comment3 = filter_field(ctx, comment3.data(), comment3.size(), kDisplayFilter, true);

        step = 12;
        lib.DllVTcloseReadFile(handle);
    } catch (...) {
        report_trapped(ctx, "VTGetInfo()", step);
    }
}

}  // namespace qumbrel
