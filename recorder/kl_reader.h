#pragma once
// The KL family reader (.kld display files, .kle event files, TLOG files that are
// recognised and not converted) over the KL library: recorders with control loops, so
// beside the VT shape there are per-sample alarm flags, control-mode events of the loops
// and PV/time events.
//
// Handle rule, traps and out-parameter structs as in the VU reader (vu_reader.h): a
// handle of 0 makes the reader open and close the file itself.
//
//   KLHandle file(ctx, path);
//   KLInfo info;
//   KLGetInfo(ctx, file.get(), path, info);
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
struct KlLibrary;
}

// A KL library handle held for a run (get() 0 when the file or the library is missing).
class KLHandle {
  public:
    KLHandle(Program& ctx, const std::string& path);
    ~KLHandle();
    KLHandle(const KLHandle&) = delete;
    KLHandle& operator=(const KLHandle&) = delete;
    std::int32_t get() const { return handle_; }

  private:
    const recorder::KlLibrary* lib_ = nullptr;
    std::int32_t handle_ = 0;
};

// Out-parameters of KLGetInfo: those of VTGetInfo's header part, with the control
// channels and the control and PV event counts.
struct KLInfo {
    std::int32_t status = 0;
    std::string fileType;    // "Event File", "Display File", "TLOG File"
    std::string deviceType;  // from the device code
    std::string serialNo;
    std::string fileMessage;
    std::int32_t measChCount = 0;
    std::int32_t mathChCount = 0;
    std::int32_t extChCount = 0;
    std::int32_t ctrlChCount = 0;
    std::int32_t dataCount = 0;
    std::string startTime;
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
    std::int32_t ctrlNum = 0;
    std::int32_t pvEventNum = 0;
    std::int32_t count0 = 0;
    std::int32_t count1 = 0;
    std::int32_t count2 = 0;
    std::int32_t alarmDataFlag = 0;
};

// Out-parameters of KLGetBatchInfo.
struct KLBatchInfo {
    std::int32_t batchFlag = 0;
    std::string batchName;
    std::int32_t batchNo = 0;
    std::string level1, level2, level3;
    std::string startedBy;
    std::string startUser;
    std::string stoppedBy;
    std::string stopUser;
};

// Out-parameters of KLGetChDataInfo (those of VUGetChDataInfo).
struct KLChannelInfo {
    std::int16_t chNo = 0;
    std::string channel;
    std::string tag;
    std::string unit;
    std::int32_t kind = 0;
    std::int32_t decimals = 0;
    std::int32_t number1 = 0;
    double scaleLow = 0;
    double scaleHigh = 0;
    std::int32_t number2 = 0;
    std::int32_t number3 = 0;
    std::int32_t number4 = 0;
    std::int32_t number5 = 0;
    std::int32_t dataType = 0;
};

// Out-parameters of KLGetAlarmInfo.
struct KLAlarmInfo {
    std::int32_t channel = 0;  // from 1
    std::int32_t level = 0;    // from 1
    std::string text;
    std::string shortText;
    std::string date;
    std::string time;
    std::int32_t serial = 0;
    std::string releaseDate;
    std::string releaseTime;
    std::int32_t releaseSerial = 0;
    std::string stateText;  // the report's "Action"
    std::int32_t ackSerial = 0;
    std::string ackDate;
    std::string ackTime;
    std::string sourceText;  // the report's "Ackn. Action"
    std::string user;
};

// Out-parameters of KLGetEventInfo: those of VTGetEventInfo and the message's group.
struct KLEventInfo : VTEventInfo {
    std::int32_t group = 0;
};

// Out-parameters of KLGetCtrlModeInfo: one control-mode event of a loop.
struct KLCtrlModeInfo {
    std::int32_t no = 0;  // from 1
    std::string date;
    std::string time;
    std::int32_t loop = 0;
    std::string name;      // the loop's tag, "Program" when it has none
    std::string comment;   // the loop's unit
    std::string runStop;   // "RUN", "STOP"
    std::string status;    // the mode field: "PROGRAM", "HOLD", ...
    std::string setPoint;  // "OFF", "AUTO", "MAN", "CAS"
    std::string programRunReset;
    std::string programHold;
    std::string programWait;
    std::string changeMode;  // "LOCAL", "REMOTE", "PROGRAM"
    std::string advance;
    std::string program;
};

// Out-parameters of KLGetTPVEventInfo: one PV or time event, on and off.
struct KLTPVEventInfo {
    std::string name;  // "PV event", "Time event", "unknown"
    std::int32_t level = 0;
    std::string type;
    std::int32_t noOn = 0;
    std::string dateOn;
    std::string timeOn;
    std::int32_t noOff = 0;  // 0 and empty texts while the event is on
    std::string dateOff;
    std::string timeOff;
    double value = 0;  // after the number step with the event's decimals
};

std::shared_ptr<void> KLHoldOpen(Program& ctx, const std::string& path);
std::string KLTypeCheck(Program& ctx, const std::string& path);

void KLGetInfo(Program& ctx, std::int32_t handle, const std::string& path, KLInfo& out);
void KLGetBatchInfo(Program& ctx, std::int32_t handle, const std::string& path, KLBatchInfo& out);
void KLGetChDataInfo(Program& ctx, std::int32_t handle, const std::string& path,
                     std::int32_t channelIndex, KLChannelInfo& out);
void KLGetAlarmInfo(Program& ctx, std::int32_t handle, const std::string& path, std::int32_t index,
                    KLAlarmInfo& out);
void KLGetEventInfo(Program& ctx, std::int32_t handle, const std::string& path, std::int32_t index,
                    KLEventInfo& out);
void KLGetCtrlModeInfo(Program& ctx, std::int32_t handle, const std::string& path,
                       std::int32_t index, KLCtrlModeInfo& out);
void KLGetTPVEventInfo(Program& ctx, std::int32_t handle, const std::string& path,
                       std::int32_t index, KLTPVEventInfo& out);

// The samples a block at a time, with every channel's alarm flags.
std::unique_ptr<SampleCursor> KLOpenMeasData(Program& ctx, std::int32_t handle,
                                             const std::string& path,
                                             std::span<const std::string> channels,
                                             std::int32_t dataCount,
                                             std::span<const std::int32_t> decimals,
                                             Flag singleValue,
                                             std::size_t blockSize = kDefaultSampleBlock);

void fkt_ReadKLFileInfo(Program& ctx, FileInfoList& list, const std::string& path);

// Texts of the family's code tables.
std::string kl_starting_cond(std::int32_t code);
std::string kl_dividing_cond(std::int32_t code);
std::string kl_started_by(std::int32_t code);
std::string kl_alarm_text(std::int32_t type);
std::string kl_alarm_short(std::int32_t type);
std::string kl_alarm_state(std::int32_t state);
std::string kl_alarm_source(std::int32_t source);
std::string kl_tpv_kind(std::int32_t kind);
std::string kl_tpv_type(std::int32_t type);
std::string kl_ctrl_mode(std::int32_t mode);

}  // namespace qumbrel
