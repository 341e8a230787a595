// KLGetInfo, KLGetBatchInfo, the family's code tables and the handle helpers.
#include <algorithm>
#include <array>
#include <string>

#include "frame/errors.h"
#include "frame/log.h"
#include "recorder/families.h"
#include "recorder/filters.h"
#include "recorder/kl_file.h"
#include "recorder/kl_reader.h"
#include "recorder/text_field.h"
#include "recorder/time_text.h"

namespace qumbrel {

namespace {

constexpr std::int32_t kMaxGroupNames = 256;

template <std::size_t N>
std::string from_table(const std::array<const char*, N>& texts, std::int32_t code,
                       std::string other) {
    if (code >= 0 && static_cast<std::size_t>(code) < N)
        return texts[static_cast<std::size_t>(code)];
    return other;
}

}  // namespace

std::string kl_starting_cond(std::int32_t code) {
    switch (code) {
        case 0:
            return "Manual";
        case 1:
            return "Restart after Black Out";
        case 2:
            return "Auto";
        case 3:
            return "TRIGGER";
        case 5:
            return "[Over]";
        case 16:
            return "[Power]";
        default:
            return "UNKNOWN";
    }
}

std::string kl_dividing_cond(std::int32_t code) {
    static constexpr std::array<const char*, 5> texts = {"Manual", "Black out", "Auto", "TRIGGER",
                                                         "Sampling"};
    return code == 16 ? "Power" : from_table(texts, code, "[UNKNOWN]");
}

std::string kl_started_by(std::int32_t code) {
    static constexpr std::array<const char*, 10> texts = {
        "[UNKNOWN]", "[KEY]", "[USER]", "[REMOTE]", "[COMMUNICATION]",
        "[-]",       "[-]",   "[-]",    "[-]",      "[SERIAL COMMUNICATION]"};
    return from_table(texts, code, "[UNKNOWN-" + std::to_string(code) + "]");
}

namespace {
struct KlAlarmType {
    const char* text;
    const char* shortText;
};
constexpr std::array<KlAlarmType, 20> kKlAlarmTypes = {{
    {"OFF", "OFF"},
    {"Absolute value High", "H"},
    {"Absolute value Low", "L"},
    {"Difference High", "dH"},
    {"Difference Low", "dL"},
    {"Rate of change High", "rH"},
    {"Rate of change Low", "rL"},
    {"Delay High", "tH"},
    {"Delay Low", "tL"},
    {"PV high-limit", "PVH"},
    {"PV low-limit", "PVL"},
    {"deviation high-limit", "DH"},
    {"deviation low-limit", "DL"},
    {"deviation high & low limit", "DHL"},
    {"deviation within high & low limits", "DwHL"},
    {"SP high-limit", "SPH"},
    {"SP low-limit", "SPL"},
    {"output high-limit", "MVH"},
    {"output low-limit", "MVL"},
    {"other", "other"},
}};
}  // namespace

std::string kl_alarm_text(std::int32_t type) {
    if (type < 0 || type >= static_cast<std::int32_t>(kKlAlarmTypes.size())) return {};
    return kKlAlarmTypes[static_cast<std::size_t>(type)].text;
}

std::string kl_alarm_short(std::int32_t type) {
    if (type < 0 || type >= static_cast<std::int32_t>(kKlAlarmTypes.size())) return {};
    return kKlAlarmTypes[static_cast<std::size_t>(type)].shortText;
}

std::string kl_alarm_state(std::int32_t state) {
    static constexpr std::array<const char*, 4> texts = {"OFF", "ON", "onCom", "onKey"};
    return from_table(texts, state, "UNKNOWN");
}

std::string kl_alarm_source(std::int32_t source) {
    static constexpr std::array<const char*, 10> texts = {"Unknown",       "Key in",
                                                          "Key in user",   "Remote",
                                                          "Communication", "Communication Monitor",
                                                          "FTPserver",     "Diag.Setting",
                                                          "Diag.Monitor",  "Serial Communication"};
    return from_table(texts, source, "UNKNOWN");
}

std::string kl_tpv_kind(std::int32_t kind) {
    static constexpr std::array<const char*, 2> texts = {"PV event", "Time event"};
    return from_table(texts, kind, "unknown");
}

std::string kl_tpv_type(std::int32_t type) {
    static constexpr std::array<const char*, 12> texts = {"Off",
                                                          "time",
                                                          "PV high-limit",
                                                          "PV low-limit",
                                                          "deviation high-limit",
                                                          "deviation low-limit",
                                                          "deviation high & low limit",
                                                          "deviation within high & low limits",
                                                          "SP high-limit",
                                                          "SP low-limit",
                                                          "output high-limit",
                                                          "output low-limit"};
    return from_table(texts, type, "unknown");
}

std::string kl_ctrl_mode(std::int32_t mode) {
    switch (mode) {
        case 1:
            return "PROGRAM";
        case 2:
            return "HOLD";
        case 4:
            return "WAIT";
        case 32:
            return "CONTROL";
        case 64:
            return "REMOTE";
        case 128:
            return "RUN";
        default:
            return "UNKNOWN";
    }
}

KLHandle::KLHandle(Program& ctx, const std::string& path) {
    try {
        lib_ = &recorder::kl_library(ctx);
        lib_->DllKLopenReadFile(path.c_str(), &handle_);
        if (handle_ < 0) handle_ = 0;
    } catch (...) {
        handle_ = 0;  // no library: the readers report it themselves
    }
}

KLHandle::~KLHandle() {
    if (lib_ && handle_ > 0) lib_->DllKLcloseReadFile(handle_);
}

std::shared_ptr<void> KLHoldOpen(Program& ctx, const std::string& path) {
    auto held = std::make_shared<KLHandle>(ctx, path);
    if (held->get() == 0) return nullptr;
    return held;
}

std::string KLTypeCheck(Program& ctx, const std::string& path) {
    try {
        const auto& lib = recorder::kl_library(ctx);
        std::int32_t handle = 0;
        const std::int32_t rc = lib.DllKLopenReadFile(path.c_str(), &handle);
        if (rc != 0 || handle <= 0) return "no KL file header";
        lib.DllKLcloseReadFile(handle);
        return {};
    } catch (...) {
        report_trapped(ctx, "KLTypeCheck()", 0);
        return "the KL library is not available";
    }
}

void KLGetInfo(Program& ctx, std::int32_t handle, const std::string& path, KLInfo& out) {
    int step = 1;
    try {
        KlFile file(ctx, handle, path);
        const auto& lib = file.lib();
        const std::int32_t h = file.get();
        TextField<abi::kKlCnctTextLen> text;
        std::int32_t startSeconds = 0, startTicks = 0, stopSeconds = 0, stopTicks = 0;
        std::int32_t startKind = 0, stopKind = 0, tSec = 0, tTicks = 0, tNo = 0, tCorr = 0;
        lib.DllKLgetCnctInfo(h, text.data(), &startSeconds, &startTicks, &stopSeconds, &stopTicks,
                             &startKind, &stopKind, &tSec, &tTicks, &tNo, &tCorr);

        step = 2;
        TextField<abi::kKlDeviceCodeLen> deviceCode;
        TextField<abi::kKlFileMessageLen> fileMessage;
        TextField<abi::kKlDeviceTypeLen> deviceType;
        TextField<abi::kKlSerialLen> serial;
        std::int32_t samplingSeconds = 0, samplingTicks = 0, triggerSeconds = 0, triggerTicks = 0,
                     timeCorrected = 0;
        std::array<std::int32_t, 9> c{};
        lib.DllKLgetBasicInfo(h, deviceCode.data(), fileMessage.data(), &out.measChCount,
                              &out.mathChCount, &out.extChCount, &out.ctrlChCount, &out.dataCount,
                              &out.alarmNum, &out.eventNum, deviceType.data(), &out.ctrlNum,
                              &out.pvEventNum, &out.groupCount, &out.groupWidth, &samplingSeconds,
                              &samplingTicks, &out.triggerNo, &triggerSeconds, &triggerTicks,
                              &out.status, &out.userFlag, &timeCorrected, &out.count0, &out.count1,
                              &out.count2, &out.alarmDataFlag, &c[0], &c[1], &c[2], &c[3], &c[4],
                              &c[5], serial.data(), &c[6], &c[7], &c[8]);
        if (out.extChCount < 0) out.extChCount = 0;

        step = 3;
        // The device code is hexadecimal text: first digit the model, last the file kind.
        const std::string code =
            filter_field(ctx, deviceCode.data(), deviceCode.size(), kDisplayFilter, true);
        out.deviceType =
            code.empty() ? std::string() : device_model(RecorderFamily::KL, code.front());
        out.fileType =
            code.empty() ? std::string() : device_file_kind(RecorderFamily::KL, code.back());
        out.serialNo = filter_field(ctx, serial.data(), serial.size(), kDisplayFilter, true);
        out.fileMessage =
            filter_field(ctx, fileMessage.data(), fileMessage.size(), kDisplayFilter, false);

        step = 4;
        DateTimeTexts t;
        KLGetDateTime(ctx, startSeconds, startTicks, t);
        out.startTime = t.dateTime;
        KLGetDateTime(ctx, stopSeconds, stopTicks, t);
        out.endTime = t.dateTime;
        // A fixed point here, whatever decseparator says (kept so).
        out.samplingInt = std::to_string(samplingSeconds) + "." +
                          std::to_string(eighths_to_millis(samplingTicks)) + " sec";
        out.timeCorrect = timeCorrected == 0 ? "None" : "YES";
        KLGetDateTime(ctx, triggerSeconds, triggerTicks, t);
        out.triggerDateTime = t.dateTime;
        out.triggerDate = t.date;
        out.triggerTime = t.timeWithMs;
        out.startingCond = kl_starting_cond(startKind);
        out.dividingCond = kl_dividing_cond(stopKind);

        step = 5;
        std::string names;
        const std::int32_t groups = std::min(out.groupCount, kMaxGroupNames);
        for (std::int32_t g = 0; g < groups; ++g) {
            TextField<abi::kKlGroupNameLen> name;
            std::int32_t members = 0;
            lib.DllKLgetGroupInfo(h, g, name.data(), &members);
            const std::string n =
                filter_field(ctx, name.data(), name.size(), kDisplayFilter, false);
            names += g == 0 ? n : " - " + n;
        }
        out.groupName = names;

        step = 6;
        KLBatchInfo batch;
        KLGetBatchInfo(ctx, h, path, batch);
        out.startedBy = batch.startedBy;
        out.stoppedBy = batch.stoppedBy;
        out.startUser = batch.startUser;
        out.stopUser = batch.stopUser;
    } catch (...) {
        report_trapped(ctx, "KLGetInfo()", step);
    }
}

void KLGetBatchInfo(Program& ctx, std::int32_t handle, const std::string& path, KLBatchInfo& out) {
    int step = 1;
    try {
        KlFile file(ctx, handle, path);
        std::int32_t startSource = 0, stopSource = 0, reserved = 0;
        TextField<abi::kKlUserLen> startUser, stopUser;
        TextField<abi::kKlBatchTextLen> batchName, level1, level2, level3;
        file.lib().DllKLgetBatchInfo(file.get(), &startSource, startUser.data(), &stopSource,
                                     stopUser.data(), &out.batchFlag, batchName.data(),
                                     level1.data(), level2.data(), level3.data(), &out.batchNo,
                                     &reserved);
        step = 2;
        out.startedBy = kl_started_by(startSource);
        out.stoppedBy = kl_started_by(stopSource);
        out.startUser = filter_field(ctx, startUser.data(), startUser.size(), kDisplayFilter, true);
        out.stopUser = filter_field(ctx, stopUser.data(), stopUser.size(), kDisplayFilter, true);
        out.batchName =
            filter_field(ctx, batchName.data(), batchName.size(), kDisplayFilter, false);
        out.level1 = filter_field(ctx, level1.data(), level1.size(), kDisplayFilter, true);
        out.level2 = filter_field(ctx, level2.data(), level2.size(), kDisplayFilter, true);
        out.level3 = filter_field(ctx, level3.data(), level3.size(), kDisplayFilter, true);
    } catch (...) {
        report_trapped(ctx, "KLGetBatchInfo()", step);
    }
}

}  // namespace qumbrel
