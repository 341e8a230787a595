#pragma once
// C interface of the VU family library (libDllVUFileAccess.so): files .osd/.oad (display)
// and .ose/.oae (event). Ticks are milliseconds. See common.h for the conventions.
//
// Sample positions as in vt.h. In the data functions `kind` 1 (or an odd position in a
// display file) selects the maximum series, 0 the minimum or only one.
#include <cstdint>

#include "recorder/abi/common.h"

namespace qumbrel::abi {
inline constexpr int kVuDeviceCodeLen = 16;  // hexadecimal text, e.g. "A1"
inline constexpr int kVuUserLen = 20;
inline constexpr int kVuBatchNameLen = 32;
inline constexpr int kVuBatchLabelLen = 20;
inline constexpr int kVuBatchTextLen = 30;
inline constexpr int kVuCommentLen = 50;
inline constexpr int kVuSerialNoLen = 16;
inline constexpr int kVuFileMessageLen = 50;
inline constexpr int kVuGroupNameLen = 16;
inline constexpr int kVuChannelLen = 32;
inline constexpr int kVuTagLen = 32;
inline constexpr int kVuUnitLen = 6;
inline constexpr int kVuMessageLen = 32;
inline constexpr int kVuBatchDescriptions = 8;
inline constexpr int kVuBatchComments = 3;
inline constexpr char kVuLibraryName[] = "DllVUFileAccess";
}  // namespace qumbrel::abi

extern "C" {

QUMBREL_RECLIB_API int32_t DllVUOpenReadFile(const char* path, int32_t* handle);
// Closes and sets *handle to 0.
QUMBREL_RECLIB_API int32_t DllVUCloseFile(int32_t* handle);

// c1 startSeconds, c2 startTicks, c3 stopSeconds, c4 stopTicks, c5 triggerSeconds,
// c6 triggerTicks, c7 triggerNo, c8 timeCorrected, c9 status (> 0 damaged), c10 userFlag,
// c11 reserved.
QUMBREL_RECLIB_API int32_t DllVUGetCnctInfo(int32_t handle, char* deviceCode, int32_t* c1,
                                            int32_t* c2, int32_t* c3, int32_t* c4, int32_t* c5,
                                            int32_t* c6, int32_t* c7, int32_t* c8, int32_t* c9,
                                            int32_t* startKind, int32_t* stopKind, int32_t* c10,
                                            int32_t* c11);

QUMBREL_RECLIB_API int32_t DllVUGetBatchInfo(int32_t handle, int32_t* startSource,
                                             int32_t* stopSource, char* startUser, char* stopUser,
                                             int32_t* batchFlag);

// c1 reserved.
QUMBREL_RECLIB_API int32_t DllVUGetBatchNames(int32_t handle, char* batchName, int32_t* batchNo,
                                              int32_t* c1);

// index 0 to 7; label kVuBatchLabelLen, text kVuBatchTextLen.
QUMBREL_RECLIB_API int32_t DllVUGetBatchDescription(int32_t handle, int32_t index, char* label,
                                                    char* text);

// index 0 to 2; user kVuUserLen, comment kVuCommentLen.
QUMBREL_RECLIB_API int32_t DllVUGetBatchComment(int32_t handle, int32_t index, int32_t* seconds,
                                                int32_t* ticks, char* user, char* comment);

// c1..c6 reserved values that round-trip. serialNo kVuSerialNoLen, fileMessage
// kVuFileMessageLen.
QUMBREL_RECLIB_API int32_t DllVUGetCommonInfo(int32_t handle, char* serialNo, int32_t* c1,
                                              int32_t* c2, int32_t* c3, int32_t* c4,
                                              char* fileMessage, int32_t* c5, int32_t* c6);

// samplingSeconds, samplingTicks (ms), dataCount, alarmNum, count0 to count3.
QUMBREL_RECLIB_API int32_t DllVUGetSampleDataInfo(int32_t handle, int32_t* samplingSeconds,
                                                  int32_t* samplingTicks, int32_t* dataCount,
                                                  int32_t* alarmNum, int32_t* count0,
                                                  int32_t* count1, int32_t* count2,
                                                  int32_t* count3);

// c1 groupWidth.
QUMBREL_RECLIB_API int32_t DllVUGetGroupNumInfo(int32_t handle, int32_t* groupCount, int32_t* c1);

// name kVuGroupNameLen; c1 members, c2 reserved; inUse 0 or not.
QUMBREL_RECLIB_API int32_t DllVUGetGroupInfo(int32_t handle, int32_t groupIndex, char* name,
                                             int32_t* c1, int32_t* c2, int32_t* inUse);

QUMBREL_RECLIB_API int32_t DllVUGetMessageNum(int32_t handle, int32_t* eventNum);

// c1 reserved.
QUMBREL_RECLIB_API int32_t DllVUGetChannelNumInfo(int32_t handle, int32_t* measChCount,
                                                  int32_t* mathChCount, int32_t* extChCount,
                                                  int32_t* c1);

// dataType 0 int16, 1 int32, 2 float32. channel kVuChannelLen, tag kVuTagLen, unit
// kVuUnitLen.
QUMBREL_RECLIB_API int32_t DllVUGetChannelInfo(int32_t handle, int32_t channelIndex, int32_t* kind,
                                               int32_t* dataType, char* channel, char* tag,
                                               char* unit, int32_t* decimals, double* scaleLow,
                                               double* scaleHigh, int32_t* number1,
                                               int32_t* number2, int32_t* number3, int32_t* number4,
                                               int32_t* number5);

// channel from 0; levelMask 1, 2, 4, 8 for one level, 16 for all.
QUMBREL_RECLIB_API int32_t DllVUGetAlarmEventData(int32_t handle, int32_t index, int32_t* channel,
                                                  int32_t* levelMask, int32_t* type,
                                                  int32_t* serial, int32_t* seconds, int32_t* ticks,
                                                  int32_t* state);

// user kVuUserLen, message kVuMessageLen. `type` is the source; c1 the serial number,
// c2..c4 reserved.
QUMBREL_RECLIB_API int32_t DllVUGetMessage(int32_t handle, int32_t index, int32_t* type, char* user,
                                           int32_t* messageNo, char* message, int32_t* seconds,
                                           int32_t* ticks, int32_t* c1, int32_t* c2, int32_t* c3,
                                           int32_t* c4);

// count samples from `start` into `samples`; seconds and ticks are the time of sample
// `start`. Returns the number of samples written.
QUMBREL_RECLIB_API int32_t DllVUGetShortData(int32_t handle, int32_t position, int32_t start,
                                             int32_t kind, int32_t count, int16_t* samples,
                                             int32_t* seconds, int32_t* ticks);
QUMBREL_RECLIB_API int32_t DllVUGetLongData(int32_t handle, int32_t position, int32_t start,
                                            int32_t kind, int32_t count, int32_t* samples,
                                            int32_t* seconds, int32_t* ticks);

// Alarm flags of the channel at `position` (one byte a sample). Returns the number written.
QUMBREL_RECLIB_API int32_t DllVUGetAlarmData(int32_t handle, int32_t position, int32_t start,
                                             int32_t count, uint8_t* flags);

QUMBREL_RECLIB_API int32_t DllVUtoDateTime(int32_t seconds, int32_t* year, int32_t* month,
                                           int32_t* day, int32_t* hour, int32_t* minute,
                                           int32_t* second);

}  // extern "C"

#define QUMBREL_VU_FUNCTIONS(X) \
    X(DllVUOpenReadFile)        \
    X(DllVUCloseFile)           \
    X(DllVUGetCnctInfo)         \
    X(DllVUGetBatchInfo)        \
    X(DllVUGetBatchNames)       \
    X(DllVUGetBatchDescription) \
    X(DllVUGetBatchComment)     \
    X(DllVUGetCommonInfo)       \
    X(DllVUGetSampleDataInfo)   \
    X(DllVUGetGroupNumInfo)     \
    X(DllVUGetGroupInfo)        \
    X(DllVUGetMessageNum)       \
    X(DllVUGetChannelNumInfo)   \
    X(DllVUGetChannelInfo)      \
    X(DllVUGetAlarmEventData)   \
    X(DllVUGetMessage)          \
    X(DllVUGetShortData)        \
    X(DllVUGetLongData)         \
    X(DllVUGetAlarmData)        \
    X(DllVUtoDateTime)

QUMBREL_VU_FUNCTIONS(QUMBREL_ABI_FN_TYPE)
