#pragma once
// The HN family reader (.hnd, .hns) over the HN library: files of data acquisition units,
// whose channels belong to units and to FIFOs (sampling streams) and hold 16-bit, 32-bit
// or float values. One kind of file: one value a sample.
//
// Handle rule, traps and out-parameter structs as in the VU reader (vu_reader.h).
//
//   HNHandle file(ctx, path);
//   HNInfo info;
//   HNGetInfo(ctx, file.get(), path, info);
#include <cstdint>
#include <memory>
#include <span>
#include <string>

#include "frame/context.h"
#include "recorder/sample_cursor.h"
#include "recorder/vt_reader.h"
#include "recorder/vu_reader.h"

namespace qumbrel {

namespace recorder {
struct HnLibrary;
}

class HNHandle {
  public:
    HNHandle(Program& ctx, const std::string& path);
    ~HNHandle();
    HNHandle(const HNHandle&) = delete;
    HNHandle& operator=(const HNHandle&) = delete;
    std::int32_t get() const { return handle_; }

  private:
    const recorder::HnLibrary* lib_ = nullptr;
    std::int32_t handle_ = 0;
};

// Out-parameters of HNGetInfo, in order (the reserved c0 to c5 left out).
struct HNInfo {
    std::int32_t status = 0;
    std::string fileType;    // "DATA" for a data file, "UNKNOWN" otherwise
    std::string deviceType;  // the creator's text
    std::string serialNo;    // the first unit's serial, eight hexadecimal digits
    std::string fileState;
    std::string post;
    std::string fileMessage;  // the file's comments joined by "; "
    std::int32_t measChCount = 0;
    std::int32_t dataCount = 0;
    std::string startTime;
    std::string endTime;
    std::string samplingInt;
    std::string startReason;
    std::string stopReason;
    std::string creator;
    std::string groupName;
    std::int32_t eventNum = 0;
    std::int32_t unitNum = 0;
    std::string timeCorrect;
    std::int32_t alarmNum = 0;
    std::int32_t alarmFlag = 0;  // > 0: the samples carry alarm codes
};

// Out-parameters of HNGetChDataInfo.
struct HNChannelInfo {
    std::int32_t channelNo = 0;
    std::string tag;
    std::string text;
    std::string unit;
    std::int32_t fifoId = 0;
    std::int32_t fifoType = 0;
    std::int32_t decimals = 0;
    std::int32_t unitIndex = 0;
    std::int32_t dataType = 0;  // 2 short, 4 long (float with flag 256)
    std::int32_t flags = 0;
    double scaleLow = 0;
    double scaleHigh = 0;
};
inline constexpr std::int32_t kHnFloatFlag = 256;

// Out-parameters of HNGetAlarmInfo. The library's alarm record names no channel and no
// values: `channel` stays 0 and the time of occurrence is all there is.
struct HNAlarmInfo {
    std::int32_t channel = 0;
    std::int32_t level = 0;  // from 1
    std::string text;
    std::string shortText;
    std::string date;
    std::string time;
};

// Out-parameters of HNGetEventInfo: one mark.
struct HNEventInfo {
    std::int32_t serial = 0;  // from 1
    std::string date;
    std::string time;
    std::int32_t markType = 0;  // the type bits of the mark
    std::string message;
    std::string group;  // who set the mark: "Monitor", "Math", ..., "Unit"
    std::string color;  // what the mark is: "Left", "None", "Trigger", ...
};

std::shared_ptr<void> HNHoldOpen(Program& ctx, const std::string& path);
std::string HNTypeCheck(Program& ctx, const std::string& path);

void HNGetInfo(Program& ctx, std::int32_t handle, const std::string& path, HNInfo& out);
void HNGetChDataInfo(Program& ctx, std::int32_t handle, const std::string& path,
                     std::int32_t channelIndex, HNChannelInfo& out);
void HNGetFileElements(Program& ctx, std::int32_t handle, const std::string& path);
void HNGetAlarmInfo(Program& ctx, std::int32_t handle, const std::string& path,
                    std::int32_t alarmCount, std::int32_t index, HNAlarmInfo& out);
void HNGetEventInfo(Program& ctx, std::int32_t handle, const std::string& path, std::int32_t index,
                    HNEventInfo& out);

// The channel values HNOpenMeasData needs, by channel position.
struct HNChannelPlan {
    std::int32_t channelIndex = 0;  // in the file
    std::int32_t fifoId = 0;
    std::int32_t fifoType = 0;
    std::int32_t dataType = 0;
    std::int32_t flags = 0;
    std::int32_t decimals = 0;
    std::string number;  // the channel number as text, for row 0
};

// The samples a block at a time (matrix firstValues; secondValues holds row 0 only). With
// `alarmTexts` the blocks carry the alarm code of every sample and channel, shown as the
// short text of the alarm table. Times as in the VU reader, rebuilt from `timeBase` when
// the first and the last sample lie in the same second.
std::unique_ptr<SampleCursor> HNOpenMeasData(Program& ctx, std::int32_t handle,
                                             const std::string& path,
                                             std::span<const HNChannelPlan> channels,
                                             std::int32_t dataCount, bool alarmTexts,
                                             const VUTimeBase& timeBase,
                                             std::size_t blockSize = kDefaultSampleBlock);

void fkt_ReadHNFileInfo(Program& ctx, FileInfoList& list, const std::string& path);

std::string hn_file_state(std::int32_t code);
std::string hn_post(std::int32_t code);
std::string hn_creator(std::int32_t code);
std::string hn_start_reason(std::int32_t code);
std::string hn_stop_reason(std::int32_t code);
std::string hn_mark_type(std::int32_t type);
std::string hn_mark_creator(std::int32_t creator);

}  // namespace qumbrel
