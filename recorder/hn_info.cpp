// HNGetInfo, HNGetFileElements, the family's code tables and the handle helpers.
#include <algorithm>
#include <array>
#include <cstring>
#include <string>
#include <vector>

#include "frame/errors.h"
#include "frame/log.h"
#include "frame/vbformat.h"
#include "recorder/file_elements.h"
#include "recorder/filters.h"
#include "recorder/hn_file.h"
#include "recorder/hn_reader.h"
#include "recorder/text_field.h"
#include "recorder/time_text.h"

namespace qumbrel {

namespace {

constexpr std::int32_t kMaxGroupNames = 256;
// A comment longer than this is a damaged header; the rest is not read.
constexpr std::int32_t kMaxComment = 1 << 16;
constexpr std::int32_t kDataHeader = 1;

std::string dashed(std::int32_t code) {
    return "-" + std::to_string(code) + "-";
}

template <std::size_t N>
std::string from_table(const std::array<const char*, N>& texts, std::int32_t code) {
    if (code >= 0 && static_cast<std::size_t>(code) < N)
        return texts[static_cast<std::size_t>(code)];
    return dashed(code);
}

// The header's values the readers use, by their names.
struct Header {
    std::int16_t fileState = 0, post = 0;
    std::int32_t headerType = 0, timeCorrected = 0, status = 0, creator = 0;
    std::int32_t startSeconds = 0, startTicks = 0, stopSeconds = 0, stopTicks = 0;
    std::int32_t startReason = 0, stopReason = 0, unitCount = 0, groupCount = 0;
    std::int32_t commentLength = 0, channelCount = 0, dataCount = 0, eventNum = 0;
    std::int32_t alarmCount = 0, alarmFlag = 0, samplingMs = 0;
};

Header read_header(const recorder::HnLibrary& lib, std::int32_t h) {
    Header x;
    std::array<std::int32_t, 5> c{};
    lib.DllHNGetFileHeader(
        h, &x.fileState, &x.post, &x.headerType, &x.timeCorrected, &x.status, &x.creator,
        &x.startSeconds, &x.startTicks, &x.stopSeconds, &x.stopTicks, &x.startReason, &x.stopReason,
        &x.unitCount, &x.groupCount, &x.commentLength, &x.channelCount, &x.dataCount, &x.eventNum,
        &x.alarmCount, &x.alarmFlag, &x.samplingMs, &c[0], &c[1], &c[2], &c[3], &c[4]);
    return x;
}

// The comments of the file, zero-separated in its comment block, joined by "; ".
std::string comments(Program& ctx, const recorder::HnLibrary& lib, std::int32_t h,
                     std::int32_t length) {
    const std::int32_t n = std::clamp(length, 0, kMaxComment);
    std::vector<char> buffer(static_cast<std::size_t>(n) + 1, '\0');
    lib.DllHNGetFileComment(h, n, buffer.data());
    std::string joined;
    std::size_t at = 0;
    while (at < static_cast<std::size_t>(n)) {
        const std::size_t end =
            std::find(buffer.begin() + static_cast<std::ptrdiff_t>(at), buffer.end() - 1, '\0') -
            buffer.begin();
        if (end > at) {
            std::string part(buffer.data() + at, end - at);
            part = filter_field(ctx, part.data(), part.size(), kDisplayFilter, true);
            if (!part.empty()) joined += joined.empty() ? part : "; " + part;
        }
        at = end + 1;
    }
    return joined;
}

std::string group_name(Program& ctx, const recorder::HnLibrary& lib, std::int32_t h, std::int32_t g,
                       std::string_view filter) {
    TextField<abi::kHnGroupNameLen> name;
    lib.DllHNGetFileGroupName(h, g, name.data());
    return filter_field(ctx, name.data(), name.size(), filter, false);
}

std::string first_serial(const recorder::HnLibrary& lib, std::int32_t h, std::int32_t units) {
    if (units <= 0) return {};
    std::int32_t c1 = 0, serial = 0, c2 = 0, c3 = 0;
    lib.DllHNGetFileUnitHeader(h, 0, &c1, &serial, &c2, &c3);
    TextField<abi::kHnSerialTextLen + 1> text;
    lib.DllHNSerialToString(&serial, text.data());
    return std::string(text.data(), strnlen(text.data(), abi::kHnSerialTextLen));
}

}  // namespace

std::string hn_file_state(std::int32_t code) {
    static constexpr std::array<const char*, 3> texts = {"Normal", "Recovered", "Loss"};
    return from_table(texts, code);
}

std::string hn_post(std::int32_t code) {
    static constexpr std::array<const char*, 3> texts = {"None", "Synchronized ", "Combined"};
    return from_table(texts, code);
}

std::string hn_creator(std::int32_t code) {
    static constexpr std::array<const char*, 7> texts = {
        "Unknown", "HN110", "HN110 Standard", "HNLOGGER", "File Composer", "Data Viewer", "HW110"};
    return from_table(texts, code);
}

std::string hn_start_reason(std::int32_t code) {
    static constexpr std::array<const char*, 3> texts = {"Unknown", "first start", "Continue"};
    return from_table(texts, code);
}

std::string hn_stop_reason(std::int32_t code) {
    switch (code) {
        case 0:
            return "Unknown";
        case 1:
            return "completely stopped";
        case 2:
            return "Continue";
        case 4:
            return "Incomplete";
        case 8:
            return "Error";
        default:
            return dashed(code);
    }
}

std::string hn_mark_type(std::int32_t type) {
    constexpr std::int32_t kTypeMask = 0x3F;
    static constexpr std::array<const char*, 6> texts = {"Left",  "None", "Trigger",
                                                         "Right", "Flag", "Center"};
    const std::int32_t bits = type & kTypeMask;
    for (std::size_t b = 0; b < texts.size(); ++b)
        if (bits & (1 << b)) return texts[b];
    return "unknown";
}

std::string hn_mark_creator(std::int32_t creator) {
    constexpr std::int32_t kCreatorMask = 0x1F;
    static constexpr std::array<const char*, 5> texts = {"Monitor", "Math", "DispTime", "Viewer",
                                                         "unknown"};
    const std::int32_t bits = creator & kCreatorMask;
    if (bits == 0) return "Unit";  // a mark the unit set itself
    for (std::size_t b = 0; b < texts.size(); ++b)
        if (bits & (1 << b)) return texts[b];
    return "unknown";
}

HNHandle::HNHandle(Program& ctx, const std::string& path) {
    try {
        lib_ = &recorder::hn_library(ctx);
        lib_->DllHNOpenReadFile(path.c_str(), &handle_);
        if (handle_ < 0) handle_ = 0;
    } catch (...) {
        handle_ = 0;  // no library: the readers report it themselves
    }
}

HNHandle::~HNHandle() {
    if (lib_ && handle_ > 0) lib_->DllHNCloseReadFile(&handle_);
}

std::shared_ptr<void> HNHoldOpen(Program& ctx, const std::string& path) {
    auto held = std::make_shared<HNHandle>(ctx, path);
    if (held->get() == 0) return nullptr;
    return held;
}

std::string HNTypeCheck(Program& ctx, const std::string& path) {
    try {
        const auto& lib = recorder::hn_library(ctx);
        std::int32_t handle = 0;
        const std::int32_t rc = lib.DllHNOpenReadFile(path.c_str(), &handle);
        if (rc != 0 || handle <= 0) return "no HN file header";
        lib.DllHNCloseReadFile(&handle);
        return {};
    } catch (...) {
        report_trapped(ctx, "HNTypeCheck()", 0);
        return "the HN library is not available";
    }
}

void HNGetInfo(Program& ctx, std::int32_t handle, const std::string& path, HNInfo& out) {
    int step = 1;
    try {
        HnFile file(ctx, handle, path);
        const auto& lib = file.lib();
        const std::int32_t h = file.get();
        const Header x = read_header(lib, h);

        step = 2;
        out.status = x.status;
        out.fileType = x.headerType == kDataHeader ? "DATA" : "UNKNOWN";
        out.creator = hn_creator(x.creator);
        out.deviceType = out.creator;
        out.fileState = hn_file_state(x.fileState);
        out.post = hn_post(x.post);
        out.measChCount = x.channelCount;
        out.dataCount = x.dataCount;
        out.eventNum = x.eventNum;
        out.unitNum = x.unitCount;
        out.alarmNum = x.alarmCount;
        out.alarmFlag = x.alarmFlag;
        out.timeCorrect = x.timeCorrected == 0 ? "None" : "YES";
        out.startReason = hn_start_reason(x.startReason);
        out.stopReason = hn_stop_reason(x.stopReason);

        step = 3;
        out.fileMessage = comments(ctx, lib, h, x.commentLength);
        out.serialNo = first_serial(lib, h, x.unitCount);

        step = 4;
        DateTimeTexts t;
        HNGetDateTime(ctx, x.startSeconds, x.startTicks, t);
        out.startTime = t.dateTime;
        HNGetDateTime(ctx, x.stopSeconds, x.stopTicks, t);
        out.endTime = t.dateTime;
        // Three-digit milliseconds: without its separator the text reads as milliseconds.
        out.samplingInt = std::to_string(x.samplingMs / 1000) + ctx.opt.decseparator +
                          vb::Format(x.samplingMs % 1000, "000", ctx.regional.profile()) + " sec";

        step = 5;
        std::string names;
        const std::int32_t groups = std::min(x.groupCount, kMaxGroupNames);
        for (std::int32_t g = 0; g < groups; ++g) {
            const std::string n = group_name(ctx, lib, h, g, kDisplayFilter);
            names += g == 0 ? n : " - " + n;
        }
        out.groupName = names;
    } catch (...) {
        report_trapped(ctx, "HNGetInfo()", step);
    }
}

void HNGetFileElements(Program& ctx, std::int32_t handle, const std::string& path) {
    int step = 0;
    try {
        fkt_ClearFileElements(ctx);
        FileElements& e = ctx.state<FileElements>();
        step = 1;
        HnFile file(ctx, handle, path);
        const auto& lib = file.lib();
        const std::int32_t h = file.get();
        const Header x = read_header(lib, h);
        std::string message = comments(ctx, lib, h, x.commentLength);
        e.ti_F = filter_field(ctx, message.data(), message.size(), kFileNameFilter, true);
        std::string serial = first_serial(lib, h, x.unitCount);
        e.ti_S = filter_field(ctx, serial.data(), serial.size(), kFileNameFilter, true);

        step = 2;
        for (std::int32_t g = 0; g < 6 && g < x.groupCount; ++g)
            e.group(g + 1) = group_name(ctx, lib, h, g, kFileNameFilter);

        step = 3;
        std::int32_t f[6] = {};
        lib.DllHNtoDateTime(x.startSeconds, &f[0], &f[1], &f[2], &f[3], &f[4], &f[5]);
        set_date_elements(ctx, e, f[0], f[1], f[2], f[3], f[4], f[5]);
        set_no_batch_elements(e);  // the family has no batch block
    } catch (...) {
        report_trapped(ctx, "HNGetFileElements()", step);
    }
}

}  // namespace qumbrel
