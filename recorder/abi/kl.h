#pragma once
// C interface of the KL family library (libDllKLFileAccess.so): files .kld (display),
// .kle (event) and TLOG files. Ticks are eighths of a second. See common.h for the
// conventions; sample positions as in vt.h.
//
// The c-numbered integers are what the reference library puts there (named in each
// comment); a value the program does not use is kept as written and round-trips.
#include <cstdint>

#include "recorder/abi/common.h"

namespace qumbrel::abi {
inline constexpr int kKlCnctTextLen = 16;    // the device code as in DllKLgetBasicInfo
inline constexpr int kKlDeviceCodeLen = 16;  // hexadecimal text, e.g. "51"; last digit 3 TLOG
inline constexpr int kKlFileMessageLen = 64;
inline constexpr int kKlDeviceTypeLen = 32;
inline constexpr int kKlSerialLen = 8;
inline constexpr int kKlUserLen = 16;
inline constexpr int kKlBatchTextLen = 16;  // batchName, level1..level3
inline constexpr int kKlGroupNameLen = 16;
inline constexpr int kKlUnitLen = 8;
inline constexpr int kKlTagLen = 16;
inline constexpr int kKlChannelLen = 6;
inline constexpr int kKlMessageLen = 16;
inline constexpr int kKlLoopTagLen = 8;
inline constexpr int kKlLoopUnitLen = 8;
inline constexpr char kKlLibraryName[] = "DllKLFileAccess";
}  // namespace qumbrel::abi

extern "C" {

QUMBREL_RECLIB_API int32_t DllKLopenReadFile(const char* path, int32_t* handle);
QUMBREL_RECLIB_API int32_t DllKLcloseReadFile(int32_t handle);

// 12 arguments. text: kKlCnctTextLen bytes, the device code.
QUMBREL_RECLIB_API int32_t DllKLgetCnctInfo(int32_t handle, char* text, int32_t* startSeconds,
                                            int32_t* startTicks, int32_t* stopSeconds,
                                            int32_t* stopTicks, int32_t* startKind,
                                            int32_t* stopKind, int32_t* triggerSeconds,
                                            int32_t* triggerTicks, int32_t* triggerNo,
                                            int32_t* timeCorrected);

// 37 arguments, laid out as DllVQgetBasicInfo: the seven counters, the device type, 22
// further values, the serial and three more. status > 0 means damaged. alarmDataFlag > 0:
// the file holds per-sample alarm flags. c1..c9 reserved.
QUMBREL_RECLIB_API int32_t DllKLgetBasicInfo(
    int32_t handle, char* deviceCode, char* fileMessage, int32_t* measChCount, int32_t* mathChCount,
    int32_t* extChCount, int32_t* ctrlChCount, int32_t* dataCount, int32_t* alarmNum,
    int32_t* eventNum, char* deviceType, int32_t* ctrlNum, int32_t* pvEventNum, int32_t* groupCount,
    int32_t* groupWidth, int32_t* samplingSeconds, int32_t* samplingTicks, int32_t* triggerNo,
    int32_t* triggerSeconds, int32_t* triggerTicks, int32_t* status, int32_t* userFlag,
    int32_t* timeCorrected, int32_t* count0, int32_t* count1, int32_t* count2,
    int32_t* alarmDataFlag, int32_t* c1, int32_t* c2, int32_t* c3, int32_t* c4, int32_t* c5,
    int32_t* c6, char* serial, int32_t* c7, int32_t* c8, int32_t* c9);

// users kKlUserLen, batchName and levels kKlBatchTextLen; c1 reserved.
QUMBREL_RECLIB_API int32_t DllKLgetBatchInfo(int32_t handle, int32_t* startSource, char* startUser,
                                             int32_t* stopSource, char* stopUser,
                                             int32_t* batchFlag, char* batchName, char* level1,
                                             char* level2, char* level3, int32_t* batchNo,
                                             int32_t* c1);

QUMBREL_RECLIB_API int32_t DllKLgetGroupInfo(int32_t handle, int32_t groupIndex, char* name,
                                             int32_t* members);

// c1 is the channel's data type (0 int16, 1 int32, 2 float32).
QUMBREL_RECLIB_API int32_t DllKLgetChDataInfo2(int32_t handle, int32_t channelIndex, int32_t* kind,
                                               int32_t* c1, char* unit, char* tag, char* channel,
                                               int32_t* decimals, double* scaleLow,
                                               double* scaleHigh, int32_t* number1,
                                               int32_t* number2, int32_t* number3, int32_t* number4,
                                               int32_t* number5);

// channel, level from 0; user kKlUserLen.
QUMBREL_RECLIB_API int32_t DllKLgetAlarmInfo(int32_t handle, int32_t index, int32_t* channel,
                                             int32_t* level, int32_t* type, int32_t* serial,
                                             int32_t* occurSeconds, int32_t* occurTicks,
                                             int32_t* releaseSerial, int32_t* releaseSeconds,
                                             int32_t* releaseTicks, int32_t* ackSerial,
                                             int32_t* ackSeconds, char* user, int32_t* ackTicks,
                                             int32_t* source, int32_t* state);

// message kKlMessageLen, user kKlUserLen; c1 reserved.
QUMBREL_RECLIB_API int32_t DllKLgetMessageInfo(int32_t handle, int32_t index, int32_t* serial,
                                               int32_t* seconds, int32_t* ticks, char* message,
                                               int32_t* messageNo, int32_t* c1, int32_t* source,
                                               char* user);

// kind 0 PV event, 1 time event; seconds/ticks when it came on, c1/c2 (offSeconds,
// offTicks) when it went off, 0 while it is on.
QUMBREL_RECLIB_API int32_t DllKLgetTPVEventInfo(int32_t handle, int32_t index, int32_t* kind,
                                                int32_t* no, int32_t* channel, int32_t* seconds,
                                                int32_t* ticks, int32_t* c1, int32_t* c2,
                                                int32_t* type, int32_t* value, int32_t* decimals);

// 18 arguments. mode is one of the flag values 1, 2, 4, 32, 64, 128; the eight state
// codes after it are given to the reader's code-to-text pass as stored; c1..c3 reserved.
QUMBREL_RECLIB_API int32_t DllKLgetCtrlModeInfo(
    int32_t handle, int32_t index, int32_t* loop, int32_t* kind, int32_t* seconds, int32_t* ticks,
    int32_t* mode, int32_t* localRemote, int32_t* programReset, int32_t* runState,
    int32_t* holdState, int32_t* waitState, int32_t* advanceState, int32_t* programState,
    int32_t* operation, int32_t* c1, int32_t* c2, int32_t* c3);

// tag kKlLoopTagLen, unit kKlLoopUnitLen; c1, c2 reserved. loop is the loop's number.
QUMBREL_RECLIB_API int32_t DllKLgetLoopInfo(int32_t handle, int32_t loop, int32_t* c1, int32_t* c2,
                                            char* tag, char* unit);

QUMBREL_RECLIB_API int32_t DllKLgetMeasData(int32_t handle, int32_t position, int32_t start,
                                            int32_t count, int32_t* unused1, int32_t* unused2,
                                            int16_t* samples, int32_t* received);
QUMBREL_RECLIB_API int32_t DllKLgetMathData(int32_t handle, int32_t position, int32_t start,
                                            int32_t count, int32_t* unused1, int32_t* unused2,
                                            int32_t* samples, int32_t* received);

// Per-sample alarm flags of the channel at `position`, one byte a sample.
QUMBREL_RECLIB_API int32_t DllKLgetAlarm(int32_t handle, int32_t position, int32_t start,
                                         int32_t count, uint8_t* flags, int32_t* received);

QUMBREL_RECLIB_API int32_t DllKLgetTimes(int32_t handle, int32_t start, int32_t count,
                                         int32_t* seconds, int32_t* ticks, int32_t* received);

QUMBREL_RECLIB_API int32_t DllKLtoDateTime(int32_t seconds, int32_t* year, int32_t* month,
                                           int32_t* day, int32_t* hour, int32_t* minute,
                                           int32_t* second);

}  // extern "C"

#define QUMBREL_KL_FUNCTIONS(X) \
    X(DllKLopenReadFile)        \
    X(DllKLcloseReadFile)       \
    X(DllKLgetCnctInfo)         \
    X(DllKLgetBasicInfo)        \
    X(DllKLgetBatchInfo)        \
    X(DllKLgetGroupInfo)        \
    X(DllKLgetChDataInfo2)      \
    X(DllKLgetAlarmInfo)        \
    X(DllKLgetMessageInfo)      \
    X(DllKLgetTPVEventInfo)     \
    X(DllKLgetCtrlModeInfo)     \
    X(DllKLgetLoopInfo)         \
    X(DllKLgetMeasData)         \
    X(DllKLgetMathData)         \
    X(DllKLgetAlarm)            \
    X(DllKLgetTimes)            \
    X(DllKLtoDateTime)

QUMBREL_KL_FUNCTIONS(QUMBREL_ABI_FN_TYPE)
