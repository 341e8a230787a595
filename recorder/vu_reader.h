#pragma once
// The VU family reader (.osd/.oad display files, .ose/.oae event files) over the VU
// library.
//
// Every reader takes a handle first: 0 makes the reader open the file by path and close
// it when done; any other value is a handle the caller holds open for the whole file, and
// the reader neither opens nor closes it. Traps, filters and out-parameter structs as in
// the VT reader (vt_reader.h); the error names are the family's own, but for VUGetInfo
// and VUGetBatchInfo, which log as "VTGetInfo()" and "VTGetBatchInfo()".
//
//   VUHandle file(ctx, path);                 // held for a report run
//   VUInfo info;
//   VUGetInfo(ctx, file.get(), path, info);
#include <array>
#include <cstdint>
#include <memory>
#include <span>
#include <string>

#include "frame/context.h"
#include "frame/flag.h"
#include "recorder/sample_cursor.h"
#include "recorder/vt_reader.h"

namespace qumbrel {

namespace recorder {
struct VuLibrary;
}

// A VU library handle: opened on construction, closed on destruction (nothing when the
// file could not be opened or the library is missing: get() is then 0).
class VUHandle {
  public:
    VUHandle(Program& ctx, const std::string& path);
    ~VUHandle();
    VUHandle(const VUHandle&) = delete;
    VUHandle& operator=(const VUHandle&) = delete;
    std::int32_t get() const { return handle_; }

  private:
    const recorder::VuLibrary* lib_ = nullptr;
    std::int32_t handle_ = 0;
};

// Out-parameters of VUGetInfo, in order.
struct VUInfo {
    std::int32_t status = 0;  // > 0: the file failed its check sum
    std::string fileType;
    std::string deviceType;
    std::string serialNo;
    std::string fileMessage;
    std::int32_t measChCount = 0;
    std::int32_t mathChCount = 0;
    std::int32_t extChCount = 0;
    std::int32_t dataCount = 0;
    std::string startTime;
    std::string endTime;
    std::string samplingInt;
    std::string timeCorrect;
    std::string triggerDateTime;
    std::string triggerDate;
    std::string triggerTime;  // with milliseconds
    std::int32_t triggerNo = 0;
    std::int32_t userFlag = 0;
    std::string startUser;
    std::string stopUser;
    std::string startedBy;
    std::string stoppedBy;
    std::string startingCond;
    std::string dividingCond;
    std::int32_t groupCount = 0;
    std::int32_t groupWidth = 0;
    std::string groupName;
    std::int32_t alarmNum = 0;
    std::int32_t eventNum = 0;
    std::int32_t count0 = 0;
    std::int32_t count1 = 0;
    std::int32_t count2 = 0;
    std::int32_t count3 = 0;
};

inline constexpr int kVuBatchTexts = 8;
inline constexpr int kVuBatchCommentCount = 3;

// Out-parameters of VUGetBatchInfo, in order.
struct VUBatchInfo {
    std::int32_t batchFlag = 0;
    std::string batchName;
    std::int32_t batchNo = 0;
    std::string application;  // the VU library has no such text: stays empty
    std::string startAction;  // "[KEY]", "[REMOTE]", ...
    std::string startUser;
    std::string stopAction;
    std::string stopUser;
    std::array<std::string, kVuBatchCommentCount> commentUser;
    std::array<std::string, kVuBatchCommentCount> commentTime;
    std::array<std::string, kVuBatchCommentCount> comment;
    std::array<std::string, kVuBatchTexts> label;  // the label and text pairs
    std::array<std::string, kVuBatchTexts> text;
};

// A batch description as one text: the label, ": " and the text (the text alone when the
// label is empty).
std::string vu_batch_text(const std::string& label, const std::string& text);

// Out-parameters of VUGetChDataInfo, in order.
struct VUChannelInfo {
    std::int16_t chNo = 0;
    std::string channel;
    std::string tag;
    std::string unit;
    std::int32_t kind = 0;
    std::int32_t decimals = 0;
    std::int32_t number1 = 0;  // colour
    double scaleLow = 0;
    double scaleHigh = 0;
    std::int32_t number2 = 0;
    std::int32_t number3 = 0;   // scale kind: 3 logarithmic
    std::int32_t number4 = 0;   // decade at the scale's low end
    std::int32_t number5 = 0;   // decade at the scale's high end
    std::int32_t dataType = 0;  // 0 int16, otherwise int32
};
inline constexpr std::int32_t kLogarithmicScale = 3;

// Out-parameters of VUGetAlarmInfo, in order.
struct VUAlarmInfo {
    std::int32_t channel = 0;  // from 1
    std::int32_t level = 0;    // 1 to 4, 1234 for all levels, 0 for any other mask
    std::string date;
    std::string time;          // with milliseconds
    std::int32_t levelNo = 0;  // the alarm's serial number
    std::string text;
    std::string shortText;
    std::string stateText;
};

// Out-parameters of VUGetEventInfo, in order (those of VTGetEventInfo).
using VUEventInfo = VTEventInfo;

// The start of the time rebuild (VUGetMeasData step 1): the report's start as
// milliseconds since midnight, its date, and the sampling interval in milliseconds.
struct VUTimeBase {
    std::int32_t startMsec = 0;
    std::string startDate;
    std::string intervalText;  // the interval without its decimal separator
};

std::shared_ptr<void> VUHoldOpen(Program& ctx, const std::string& path);

// Why the file is no VU file ("" when it is one).
std::string VUTypeCheck(Program& ctx, const std::string& path);

void VUGetInfo(Program& ctx, std::int32_t handle, const std::string& path, VUInfo& out);
void VUGetBatchInfo(Program& ctx, std::int32_t handle, const std::string& path, VUBatchInfo& out);
void VUGetChDataInfo(Program& ctx, std::int32_t handle, const std::string& path,
                     std::int32_t channelIndex, VUChannelInfo& out);
void VUGetFileElements(Program& ctx, std::int32_t handle, const std::string& path);
void VUGetAlarmInfo(Program& ctx, std::int32_t handle, const std::string& path, std::int32_t index,
                    VUAlarmInfo& out);
void VUGetEventInfo(Program& ctx, std::int32_t handle, const std::string& path, std::int32_t index,
                    VUEventInfo& out);

// The samples a block at a time. `channels` are the decimal texts of the channel numbers
// of positions 1..n, `decimals` and `dataTypes` the matching channel values. The blocks
// carry the alarm flags of every channel. A cursor on a handle of 0 opens the file and
// closes it when destroyed.
std::unique_ptr<SampleCursor> VUOpenMeasData(
    Program& ctx, std::int32_t handle, const std::string& path,
    std::span<const std::string> channels, std::int32_t dataCount,
    std::span<const std::int32_t> decimals, std::span<const std::int32_t> dataTypes,
    const VUTimeBase& timeBase, Flag singleValue, std::size_t blockSize = kDefaultSampleBlock);

// The time base a generator passes: the start time text ("date time.ms" as VUGetInfo
// gives it) and the sampling interval text.
VUTimeBase vu_time_base(Program& ctx, const std::string& startTime, const std::string& samplingInt);

void fkt_ReadVUFileInfo(Program& ctx, FileInfoList& list, const std::string& path);

// Texts of the family's code tables.
std::string vu_starting_cond(std::int32_t code);
std::string vu_dividing_cond(std::int32_t code);
std::string vu_started_by(std::int32_t code);
std::string vu_stopped_by(std::int32_t code);
std::string vu_batch_action(std::int32_t code);
std::int32_t vu_level(std::int32_t levelMask);
std::string vu_state_text(std::int32_t state);

}  // namespace qumbrel
