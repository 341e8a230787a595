#pragma once
// The VQ family reader (.obd display files, .obe event files) over the VQ library: the VT
// reader with a handle parameter, a check-sum status, electronic signatures and an
// operation log whose texts come from a message catalogue beside the language files.
//
// The family's records live in the program context (VQRecords), as the module's globals
// did: a reader call overwrites what the last one left, and VQClearRecords blanks them at
// the start of a file. Handle rule and traps as in the VU reader (vu_reader.h).
//
//   VQHandle file(ctx, path);
//   VQClearRecords(ctx);
//   VQInfo& info = ctx.state<VQRecords>().info;
//   VQGetInfo(ctx, file.get(), path, info);
#include <array>
#include <cstdint>
#include <memory>
#include <span>
#include <string>
#include <vector>

#include "frame/context.h"
#include "frame/flag.h"
#include "recorder/sample_cursor.h"
#include "recorder/vt_reader.h"

namespace qumbrel {

namespace recorder {
struct VqLibrary;
}

class VQHandle {
  public:
    VQHandle(Program& ctx, const std::string& path);
    ~VQHandle();
    VQHandle(const VQHandle&) = delete;
    VQHandle& operator=(const VQHandle&) = delete;
    std::int32_t get() const { return handle_; }

  private:
    const recorder::VqLibrary* lib_ = nullptr;
    std::int32_t handle_ = 0;
};

// Out-parameters of VQGetInfo, in order.
struct VQInfo {
    std::int32_t status = 0;  // DllVQgetCrcStatus: > 0 damaged
    std::string fileType;     // "Event File", "Display File", "?"
    std::string deviceType;
    std::string serialNo;
    std::string fileMessage;
    std::int32_t measChCount = 0;
    std::int32_t mathChCount = 0;
    std::int32_t dataCount = 0;
    std::string startTime;  // date, a blank, time
    std::string endTime;
    std::string samplingInt;
    std::string timeCorrect;
    std::string triggerDateTime;
    std::string triggerDate;
    std::string triggerTime;
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
    std::int32_t opeLogNum = 0;
    std::int32_t extChCount = 0;
};

inline constexpr int kVqComments = 3;

// Out-parameters of VQGetBatchInfo.
struct VQBatchInfo {
    std::int32_t batchFlag = 0;
    std::string batchName;
    std::int32_t batchNo = 0;
    std::string application;
    std::array<std::string, 3> header;  // application, supervisor, manager
    std::array<std::string, kVqComments> comment;
    std::array<std::string, kVqComments> commentUser;
    std::array<std::string, kVqComments> commentTime;
    std::string startedBy;
    std::string stoppedBy;
};

// Out-parameters of VQGetAlarmInfo, in order.
struct VQAlarmInfo {
    std::int32_t channel = 0;  // from 1
    std::int32_t level = 0;    // from 1
    std::string date;
    std::string time;
    std::int32_t serial = 0;
    std::int32_t releaseSerial = 0;
    std::string releaseDate;
    std::string releaseTime;
    std::string text;
    std::string shortText;
    std::int32_t ackLevel = 0;  // from 1: the report's "User flag ackn."
    std::int32_t ackSerial = 0;
    std::string ackDate;
    std::string ackTime;
    std::string user;
};

using VQEventInfo = VTEventInfo;

// Out-parameters of VQGetChDataInfo.
struct VQChannelInfo {
    std::int16_t chNo = 0;
    std::string unit;
    std::string tag;
    std::string channel;
    std::int32_t kind = 0;
    std::int32_t decimals = 0;
    std::int32_t number1 = 0;
    double scaleLow = 0;
    double scaleHigh = 0;
    std::int32_t number2 = 0;
    std::int32_t number3 = 0;
    std::int32_t number4 = 0;
    std::int32_t number5 = 0;
};

// Out-parameters of VQGetSignData.
struct VQSignInfo {
    std::string name;
    std::string statusText;  // "unsignin", "PASS", "FAIL", "unknown"
    std::string comment;
    std::string date;
    std::string time;
    std::string host;
};
inline constexpr int kVqSignatures = 3;

// The operation log, one element a row.
struct VQOpeLog {
    std::vector<std::int32_t> serials;
    std::vector<std::string> dates;
    std::vector<std::string> times;
    std::vector<std::int32_t> messageNos;
    std::vector<std::string> sources;  // with the "Error: "/"Message: "/"Warning: " prefix
    std::vector<std::string> texts;    // from the message catalogue
    std::vector<std::string> names;    // "Login", ..., or "Code" and the error code
};

// The family's records of the file in hand.
struct VQRecords {
    VQInfo info;
    VQBatchInfo batch;
    VQAlarmInfo alarm;
    VQEventInfo event;
    VQChannelInfo channel;
    VQSignInfo sign;
    VQOpeLog opeLog;
};

// Blanks every record: texts empty, numbers 0.
void VQClearRecords(Program& ctx);

std::shared_ptr<void> VQHoldOpen(Program& ctx, const std::string& path);
std::string VQTypeCheck(Program& ctx, const std::string& path);

void VQGetInfo(Program& ctx, std::int32_t handle, const std::string& path, VQInfo& out);
void VQGetBatchInfo(Program& ctx, std::int32_t handle, const std::string& path, VQBatchInfo& out);
void VQGetFileElements(Program& ctx, std::int32_t handle, const std::string& path);
void VQGetAlarmInfo(Program& ctx, std::int32_t handle, const std::string& path, std::int32_t index,
                    VQAlarmInfo& out);
void VQGetEventInfo(Program& ctx, std::int32_t handle, const std::string& path, std::int32_t index,
                    VQEventInfo& out);
void VQGetChDataInfo(Program& ctx, std::int32_t handle, const std::string& path,
                     std::int32_t channelIndex, VQChannelInfo& out);
void VQGetSignData(Program& ctx, std::int32_t handle, const std::string& path,
                   std::int32_t signIndex, VQSignInfo& out);
void VQGetOpeLog(Program& ctx, std::int32_t handle, const std::string& path, std::int32_t count,
                 VQOpeLog& out);

std::unique_ptr<SampleCursor> VQOpenMeasData(Program& ctx, std::int32_t handle,
                                             const std::string& path,
                                             std::span<const std::string> channels,
                                             std::int32_t dataCount,
                                             std::span<const std::int32_t> decimals,
                                             Flag singleValue,
                                             std::size_t blockSize = kDefaultSampleBlock);

void fkt_ReadVQFileInfo(Program& ctx, FileInfoList& list, const std::string& path);

// The message catalogue of the operation log: the current language file with ".bin" for
// its extension, else english.bin in the program folder.
std::string vq_catalogue_path(const Program& ctx);
inline constexpr std::string_view kCatalogueMissing = "ERROR IN FILE";

std::string vq_starting_cond(std::int32_t code);
std::string vq_dividing_cond(std::int32_t code);
// "[KEY - user]" in the header's text; the batch reader's has "[KEY-user]".
std::string vq_started_by(std::int32_t code, const std::string& user, bool batchForm);
std::string vq_sign_status(std::int32_t result);
std::string vq_error_prefix(std::int32_t errorCode);
std::string vq_source_text(std::int32_t source, const std::string& user);
std::string vq_message_name(std::int32_t messageNo);

}  // namespace qumbrel
