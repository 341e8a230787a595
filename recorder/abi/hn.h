#pragma once
// C interface of the HN family library (libDllHNFileAccess.so): files .hnd and .hns of data
// acquisition units. Ticks are milliseconds. See common.h for the conventions.
//
// Channels belong to units and to FIFOs (sampling streams, named by fifoId and fifoType).
// The FIFO data functions read one channel of one FIFO: `channel` is the channel's index
// in the file (as in DllHNGetFileChannelInfo) and must belong to that FIFO.
#include <cstdint>

#include "recorder/abi/common.h"

namespace qumbrel::abi {
inline constexpr int kHnGroupNameLen = 32;
inline constexpr int kHnSerialTextLen = 10;
inline constexpr int kHnTagLen = 16;
inline constexpr int kHnChannelTextLen = 32;
inline constexpr int kHnUnitLen = 8;
inline constexpr int kHnMarkTextLen = 16;
// Channel flag: a 32-bit channel (dataType 4) holds float32 values.
inline constexpr int32_t kHnFlagFloat = 256;
inline constexpr int32_t kHnDataTypeShort = 2;
inline constexpr int32_t kHnDataTypeLong = 4;
inline constexpr char kHnLibraryName[] = "DllHNFileAccess";
}  // namespace qumbrel::abi

extern "C" {

QUMBREL_RECLIB_API int32_t DllHNOpenReadFile(const char* path, int32_t* handle);
// Closes and sets *handle to 0.
QUMBREL_RECLIB_API int32_t DllHNCloseReadFile(int32_t* handle);

// 27 arguments. c1 headerType (1 data file), c2 timeCorrected, c3 status (> 0 damaged),
// then creator and the named values. alarmFlag > 0: the FIFO data carry alarm codes.
// c4..c8 reserved.
QUMBREL_RECLIB_API int32_t DllHNGetFileHeader(
    int32_t handle, int16_t* fileState, int16_t* post, int32_t* c1, int32_t* c2, int32_t* c3,
    int32_t* creator, int32_t* startSeconds, int32_t* startTicks, int32_t* stopSeconds,
    int32_t* stopTicks, int32_t* startReason, int32_t* stopReason, int32_t* unitCount,
    int32_t* groupCount, int32_t* commentLength, int32_t* channelCount, int32_t* dataCount,
    int32_t* eventNum, int32_t* alarmCount, int32_t* alarmFlag, int32_t* samplingMs, int32_t* c4,
    int32_t* c5, int32_t* c6, int32_t* c7, int32_t* c8);

// Fills `comment` with up to commentLength bytes of the file comment, zero padded.
QUMBREL_RECLIB_API int32_t DllHNGetFileComment(int32_t handle, int32_t commentLength,
                                               char* comment);

QUMBREL_RECLIB_API int32_t DllHNGetFileGroupName(int32_t handle, int32_t groupIndex, char* name);

// c1 unit number, c2 and c3 reserved.
QUMBREL_RECLIB_API int32_t DllHNGetFileUnitHeader(int32_t handle, int32_t unitIndex, int32_t* c1,
                                                  int32_t* serial, int32_t* c2, int32_t* c3);

// The serial as text: eight hexadecimal digits, upper case (kHnSerialTextLen bytes).
QUMBREL_RECLIB_API int32_t DllHNSerialToString(int32_t* serial, char* text);

// tag kHnTagLen, text kHnChannelTextLen, unit kHnUnitLen. c2 decimals, c3 unit index,
// c4, c5 reserved. dataType 2 short, 4 long (float with flag kHnFlagFloat).
QUMBREL_RECLIB_API int32_t DllHNGetFileChannelInfo(
    int32_t handle, int32_t channelIndex, int32_t* channelNo, int32_t* c1, char* tag, char* text,
    char* unit, int32_t* fifoId, int32_t* fifoType, int32_t* c2, int32_t* c3, int32_t* dataType,
    int32_t* flags, double* scaleLow, double* scaleHigh, int32_t* c4, int32_t* c5);

// 13 arguments: intervalMs, dataCount, start and stop seconds and milliseconds,
// channelCount, c1..c3 reserved.
QUMBREL_RECLIB_API int32_t DllHNGetFileFifoHeader(int32_t handle, int32_t fifoId, int32_t fifoType,
                                                  int32_t* intervalMs, int32_t* dataCount,
                                                  int32_t* startSeconds, int32_t* startTicks,
                                                  int32_t* stopSeconds, int32_t* stopTicks,
                                                  int32_t* channelCount, int32_t* c1, int32_t* c2,
                                                  int32_t* c3);

// Alarm `index` of `alarmCount` (the header's): a level (from 0), b type, c seconds.
QUMBREL_RECLIB_API int32_t DllHNGetFileAlarmInfo(int32_t handle, int32_t alarmCount, int32_t index,
                                                 int32_t* a, int32_t* b, int32_t* c);

// text kHnMarkTextLen.
QUMBREL_RECLIB_API int32_t DllHNGetFileMarkData(int32_t handle, int32_t index, int16_t* type,
                                                int16_t* creator, int32_t* seconds, int32_t* ticks,
                                                char* text);

// count samples from `start`; per sample also its seconds, milliseconds, flags and alarm
// code (0 to 8). Each array holds count elements. Returns the number written.
QUMBREL_RECLIB_API int32_t DllHNGetFileFifoShortData(int32_t handle, int32_t fifoId,
                                                     int32_t fifoType, int32_t channel,
                                                     int32_t count, int32_t start, int16_t* samples,
                                                     int32_t* seconds, int32_t* ticks,
                                                     int32_t* flags, int32_t* alarms);
QUMBREL_RECLIB_API int32_t DllHNGetFileFifoLongData(int32_t handle, int32_t fifoId,
                                                    int32_t fifoType, int32_t channel,
                                                    int32_t count, int32_t start, int32_t* samples,
                                                    int32_t* seconds, int32_t* ticks,
                                                    int32_t* flags, int32_t* alarms);
QUMBREL_RECLIB_API int32_t DllHNGetFileFifoFloatData(int32_t handle, int32_t fifoId,
                                                     int32_t fifoType, int32_t channel,
                                                     int32_t count, int32_t start, float* samples,
                                                     int32_t* seconds, int32_t* ticks,
                                                     int32_t* flags, int32_t* alarms);

QUMBREL_RECLIB_API int32_t DllHNtoDateTime(int32_t seconds, int32_t* year, int32_t* month,
                                           int32_t* day, int32_t* hour, int32_t* minute,
                                           int32_t* second);

}  // extern "C"

#define QUMBREL_HN_FUNCTIONS(X)  \
    X(DllHNOpenReadFile)         \
    X(DllHNCloseReadFile)        \
    X(DllHNGetFileHeader)        \
    X(DllHNGetFileComment)       \
    X(DllHNGetFileGroupName)     \
    X(DllHNGetFileUnitHeader)    \
    X(DllHNSerialToString)       \
    X(DllHNGetFileChannelInfo)   \
    X(DllHNGetFileFifoHeader)    \
    X(DllHNGetFileAlarmInfo)     \
    X(DllHNGetFileMarkData)      \
    X(DllHNGetFileFifoShortData) \
    X(DllHNGetFileFifoLongData)  \
    X(DllHNGetFileFifoFloatData) \
    X(DllHNtoDateTime)

QUMBREL_HN_FUNCTIONS(QUMBREL_ABI_FN_TYPE)
