#pragma once
// The VT family reader (.ogd display files, .oge event files) over the VT library.
//
// Every reader opens the file by path and closes it again; the measured values come
// through a cursor that holds its handle while it lives. Paths go to the library as
// they are (the system's code page is UTF-8 here); texts come back decoded from
// Windows-1252 after the filters. Each reader has an error trap: a run-time error (a
// missing library included) goes to the error log under the reader's name and the reader
// returns; out-parameters keep what they had, as far as the steps before the failure did
// not set them.
//
// Out-parameters are one plain struct per reader, fields in the order of the reader's
// parameter list. A generator keeps one struct per record and passes it in; fields are
// written in place step by step, which is what by-reference parameters did, and the names
// cannot be mixed up the way 43 positional references can. Example:
//
//   VTInfo info;
//   VTGetInfo(ctx, path, info);
//   if (info.status > 0) { /* damaged */ }
#include <cstdint>
#include <memory>
#include <span>
#include <string>
#include <vector>

#include "frame/context.h"
#include "frame/flag.h"
#include "recorder/sample_cursor.h"
#include "recorder/sample_matrix.h"

namespace qumbrel {

// Out-parameters of VTGetInfo, in order. Counters and flags are numbers, the rest text.
struct VTInfo {
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
    std::string triggerTime;  // the time with milliseconds
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
    std::int32_t batchFlag = 0;
    std::string application;
    std::string supervisor;
    std::string manager;
    std::string batchName;
    std::int32_t batchNo = 0;  // never written by VTGetInfo (kept so)
    std::string commentUser;
    std::string commentTime;
    std::string comment1;
    std::string comment2;
    std::string comment3;
};

// Out-parameters of GetStartStopReason, in order.
struct StartStopReason {
    std::string startedBy;
    std::string stoppedBy;
    std::string startingCond;
    std::string dividingCond;
};

// Out-parameters of VTGetAlarmInfo, in order.
struct VTAlarmInfo {
    std::int32_t channel = 0;  // from 1
    std::int32_t serial = 0;
    std::string date;
    std::string time;  // with milliseconds
    std::int32_t releaseSerial = 0;
    std::string releaseDate;
    std::string releaseTime;
    std::string text;
    std::int32_t level = 0;  // from 1
};

// Out-parameters of VTGetEventInfo, in order.
struct VTEventInfo {
    std::int32_t serial = 0;
    std::string date;
    std::string time;  // with milliseconds
    std::string sourceText;
    std::int32_t messageNo = 0;  // from 1
    std::int32_t source = 0;
    std::string message;
    std::string user;
};

// Out-parameters of VTGetChDataInfo, in order.
struct VTChannelInfo {
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
};

// Out-parameters of VTGetMeasData, in order. Texts have dataCount + 1 rows (the last one
// for a sample that does not exist, from a zero time). The value matrices have rows 0 to
// dataCount + 1 and columns 1 to n by channel position; row 0 holds the channel numbers.
// For an event file (singleValue) secondValues holds row 0 only.
struct VTMeasData {
    TextColumn dates;
    TextColumn timesWithMs;
    TextColumn times;
    TextColumn msTexts;
    SampleMatrix firstValues;   // minimum, or the value of an event file
    SampleMatrix secondValues;  // maximum
};

// The file information list of the run page: its lines and the back colour.
struct FileInfoList {
    std::vector<std::string> lines;
    std::int32_t backColor = 16777215;
};
inline constexpr std::int32_t kInfoColorDamaged = 255;
inline constexpr std::int32_t kInfoColorNormal = 16777215;

// The text of a VT type code ("Event file", ..., "NOT TARNWICK FILE").
std::string vt_type_text(std::int32_t code);

std::string VTgetTypeFile(Program& ctx, const std::string& path);

// Holds a library handle on the file until the result is released (nothing when the file
// cannot be opened), so the readers' opens by path share one parse of it.
std::shared_ptr<void> VTHoldOpen(Program& ctx, const std::string& path);

void VTGetInfo(Program& ctx, const std::string& path, VTInfo& out);

void GetStartStopReason(std::int32_t startCode, std::int32_t stopCode, std::int32_t startKind,
                        std::int32_t stopKind, StartStopReason& out);

// The group's name after the display filter; the only VT reader on an open handle.
// No trap of its own: errors go to the calling reader's trap.
std::string VTGetGroupName(Program& ctx, std::int32_t handle, std::int32_t groupIndex,
                           std::int32_t& members);

// Blanks the file elements and fills them from the file.
void VTGetFileElements(Program& ctx, const std::string& path);

void VTGetAlarmInfo(Program& ctx, const std::string& path, std::int32_t index, VTAlarmInfo& out);

void VTGetEventInfo(Program& ctx, const std::string& path, std::int32_t index, VTEventInfo& out);

void VTGetChDataInfo(Program& ctx, const std::string& path, std::int32_t channelIndex,
                     VTChannelInfo& out);

// `channels` are the decimal texts of the channel numbers of positions 1..n (element 0 is
// position 1); `decimals` the matching decimals. Channels above 30 are math channels.
// The samples a block at a time; the cursor holds its library handle until destroyed.
std::unique_ptr<SampleCursor> VTOpenMeasData(Program& ctx, const std::string& path,
                                             std::span<const std::string> channels,
                                             std::int32_t dataCount,
                                             std::span<const std::int32_t> decimals,
                                             Flag singleValue,
                                             std::size_t blockSize = kDefaultSampleBlock);
// All samples at once, through the cursor.
void VTGetMeasData(Program& ctx, const std::string& path, std::span<const std::string> channels,
                   std::int32_t dataCount, std::span<const std::int32_t> decimals, VTMeasData& out,
                   Flag singleValue);

void fkt_ReadVTFileInfo(Program& ctx, FileInfoList& list, const std::string& path);

// frm_data: start and stop of the recording. The times as "Short Date", a blank, "Long
// Time", "." and the milliseconds.
void VtGetStartStop(Program& ctx, const std::string& path, std::int32_t& startSeconds,
                    std::string& startText, std::string& stopText);
void DisplayTime(Program& ctx, std::int32_t seconds, std::int32_t ticks, std::string& text);

}  // namespace qumbrel
