#pragma once
// C interface of the VQ family library (libDllVQFileAccess.so): files .obd (display) and
// .obe (event). Ticks are eighths of a second. See common.h for the conventions; sample
// positions as in vt.h. The header damage status is DllVQgetCrcStatus.
//
// The c-numbered integers are what the reference library puts there (named in each
// comment); a value the program does not use is kept as written and round-trips.
#include <cstdint>

#include "recorder/abi/common.h"

namespace qumbrel::abi {
inline constexpr int kVqDeviceCodeLen = 16;  // hexadecimal text, last digit 9 event, A display
inline constexpr int kVqFileMessageLen = 64;
inline constexpr int kVqDeviceTypeLen = 32;
inline constexpr int kVqSerialLen = 8;
inline constexpr int kVqGroupNameLen = 16;
inline constexpr int kVqUserLen = 20;
inline constexpr int kVqBatchHeaderLen = 64;  // application, supervisor, manager
inline constexpr int kVqBatchNameLen = 32;
inline constexpr int kVqCommentLen = 32;
inline constexpr int kVqMessageLen = 32;
inline constexpr int kVqUnitLen = 8;
inline constexpr int kVqTagLen = 16;
inline constexpr int kVqChannelLen = 6;
inline constexpr int kVqSigninTextLen = 8;  // c3 and c5 of DllVQgetEachSigninInf
inline constexpr int kVqSignNameLen = 20;
inline constexpr int kVqSignCommentLen = 32;
inline constexpr int kVqSignHostLen = 32;
inline constexpr int kVqOpeLogExtraLen = 13;
inline constexpr int kVqBatchComments = 3;
inline constexpr char kVqLibraryName[] = "DllVQFileAccess";
}  // namespace qumbrel::abi

extern "C" {

// openStatus 0 when the file opened.
QUMBREL_RECLIB_API int32_t DllVQopenReadFile(const char* path, int32_t* openStatus,
                                             int32_t* handle);
QUMBREL_RECLIB_API int32_t DllVQcloseReadFile(int32_t handle);

// 37 arguments. c1 triggerNo, c2 timeCorrected, c3 userFlag, c4 count0, c5 count1,
// c6 count2, c7 groupWidth, c8 extChCount, c9..c18 reserved.
QUMBREL_RECLIB_API int32_t DllVQgetBasicInfo(
    int32_t handle, char* deviceCode, char* fileMessage, int32_t* measChCount, int32_t* mathChCount,
    int32_t* dataCount, int32_t* c1, int32_t* c2, int32_t* samplingTicksBase, int32_t* unitCount,
    char* deviceType, int32_t* startKind, int32_t* c3, int32_t* stopKind, int32_t* c4, int32_t* c5,
    int32_t* c6, int32_t* alarmNum, int32_t* c7, int32_t* c8, int32_t* eventNum, int32_t* c9,
    int32_t* c10, int32_t* c11, int32_t* groupCount, int32_t* c12, int32_t* c13, int32_t* c14,
    int32_t* c15, int32_t* c16, int32_t* c17, int32_t* samplingSeconds, int32_t* samplingTicks,
    char* serial, int32_t* triggerSeconds, int32_t* triggerTicks, int32_t* c18);

// 17 arguments. c1..c7 reserved.
QUMBREL_RECLIB_API int32_t DllVQgetCnctInfo(int32_t handle, char* deviceCode, int32_t* c1,
                                            int32_t* startSeconds, int32_t* c2, int32_t* startTicks,
                                            int32_t* stopSeconds, int32_t* stopTicks,
                                            int32_t* openStatus, int32_t* startKind, int32_t* c3,
                                            int32_t* stopKind, int32_t* c4, int32_t* c5,
                                            int32_t* c6, int32_t* unitCount, int32_t* c7);

// Returns the damage status: greater than 0 when the file failed its check sum; a
// negative code for a bad handle.
QUMBREL_RECLIB_API int32_t DllVQgetCrcStatus(int32_t handle);

QUMBREL_RECLIB_API int32_t DllVQgetOpeLogInf(int32_t handle, int32_t* opeLogNum);

QUMBREL_RECLIB_API int32_t DllVQgetGroupInfo(int32_t handle, int32_t groupIndex, char* name,
                                             int32_t* members);

// users kVqUserLen, headers kVqBatchHeaderLen, batchName kVqBatchNameLen; c1 reserved.
QUMBREL_RECLIB_API int32_t DllVQgetBatchInfo(int32_t handle, int32_t* startSource, char* startUser,
                                             int32_t* stopSource, char* stopUser,
                                             int32_t* batchFlag, char* application,
                                             char* supervisor, char* manager, char* batchName,
                                             int32_t* batchNo, int32_t* c1);

// index 0 to 2; user kVqUserLen, comment kVqCommentLen.
QUMBREL_RECLIB_API int32_t DllVQgetBatchComment(int32_t handle, int32_t index, char* user,
                                                int32_t* seconds, int32_t* ticks, char* comment);

// channel, level from 0; c1 ackLevel (from 0), c2 reserved. user kVqUserLen.
QUMBREL_RECLIB_API int32_t DllVQgetAlarmInfo(int32_t handle, int32_t index, int32_t* channel,
                                             int32_t* level, int32_t* type, int32_t* serial,
                                             int32_t* occurSeconds, int32_t* occurTicks,
                                             int32_t* releaseSerial, int32_t* releaseSeconds,
                                             int32_t* releaseTicks, int32_t* ackSerial,
                                             int32_t* ackSeconds, char* user, int32_t* ackTicks,
                                             int32_t* c1, int32_t* c2);

// message kVqMessageLen, user kVqUserLen; c1 reserved.
QUMBREL_RECLIB_API int32_t DllVQgetMessageInfo(int32_t handle, int32_t index, int32_t* serial,
                                               int32_t* seconds, int32_t* ticks, char* message,
                                               int32_t* messageNo, int32_t* c1, int32_t* source,
                                               char* user);

// c1 is the channel's data type (0 int16, 1 int32, 2 float32).
QUMBREL_RECLIB_API int32_t DllVQgetChDataInfo(int32_t handle, int32_t channelIndex, int32_t* kind,
                                              int32_t* c1, char* unit, char* tag, char* channel,
                                              int32_t* decimals);
// c2 reserved.
QUMBREL_RECLIB_API int32_t DllVQgetChDataInfo2(int32_t handle, int32_t channelIndex, int32_t* kind,
                                               int32_t* c1, char* unit, char* tag, char* channel,
                                               int32_t* decimals, int32_t* number1,
                                               double* scaleLow, double* scaleHigh,
                                               int32_t* number2, int32_t* number3, int32_t* number4,
                                               int32_t* number5, int32_t* c2);

// As DllVTgetMeasDataFile: c1 data type, c2 the file's sample count.
QUMBREL_RECLIB_API int32_t DllVQgetMeasData(int32_t handle, int32_t position, int32_t start,
                                            int32_t count, int32_t* c1, int32_t* c2,
                                            int16_t* samples, int32_t* received);
QUMBREL_RECLIB_API int32_t DllVQgetMathData(int32_t handle, int32_t position, int32_t start,
                                            int32_t count, int32_t* c1, int32_t* c2,
                                            int32_t* samples, int32_t* received);
QUMBREL_RECLIB_API int32_t DllVQgetTimes(int32_t handle, int32_t start, int32_t count,
                                         int32_t* seconds, int32_t* ticks, int32_t* received);

// count of sign-in definitions; c1 reserved.
QUMBREL_RECLIB_API int32_t DllVQgetSigninInf(int32_t handle, int32_t* count, int32_t* c1);
// user kVqUserLen, c3 and c5 kVqSigninTextLen; c1, c2, c4 reserved.
QUMBREL_RECLIB_API int32_t DllVQgetEachSigninInf(int32_t handle, int32_t index, int32_t* c1,
                                                 int32_t* c2, char* user, char* c3, int32_t* c4,
                                                 char* c5);
QUMBREL_RECLIB_API int32_t DllVQgetSigninSts(int32_t handle, int32_t* signCount);
// result -1 unsigned, 0 pass, 1 fail. name kVqSignNameLen, comment kVqSignCommentLen,
// host kVqSignHostLen.
QUMBREL_RECLIB_API int32_t DllVQgetEachSigninSts(int32_t handle, int32_t index, int32_t* result,
                                                 char* name, char* comment, int32_t* seconds,
                                                 int32_t* ticks, char* host);

// user kVqUserLen, extra kVqOpeLogExtraLen.
QUMBREL_RECLIB_API int32_t DllVQgetEachOpeLoginf(int32_t handle, int32_t index, int32_t* seconds,
                                                 int32_t* ticks, int32_t* time2, int32_t* message,
                                                 int32_t* serial, int32_t* source, int32_t* value,
                                                 char* user, int32_t* errorCode, char* extra);

// The file elements split the start with this one; the times of the other readers go through
// DllVUtoDateTime of the VU library. Both split alike.
QUMBREL_RECLIB_API int32_t DllVQtoDateTime(int32_t seconds, int32_t* year, int32_t* month,
                                           int32_t* day, int32_t* hour, int32_t* minute,
                                           int32_t* second);

}  // extern "C"

#define QUMBREL_VQ_FUNCTIONS(X) \
    X(DllVQopenReadFile)        \
    X(DllVQcloseReadFile)       \
    X(DllVQgetBasicInfo)        \
    X(DllVQgetCnctInfo)         \
    X(DllVQgetCrcStatus)        \
    X(DllVQgetOpeLogInf)        \
    X(DllVQgetGroupInfo)        \
    X(DllVQgetBatchInfo)        \
    X(DllVQgetBatchComment)     \
    X(DllVQgetAlarmInfo)        \
    X(DllVQgetMessageInfo)      \
    X(DllVQgetChDataInfo)       \
    X(DllVQgetChDataInfo2)      \
    X(DllVQgetMeasData)         \
    X(DllVQgetMathData)         \
    X(DllVQgetTimes)            \
    X(DllVQgetSigninInf)        \
    X(DllVQgetEachSigninInf)    \
    X(DllVQgetSigninSts)        \
    X(DllVQgetEachSigninSts)    \
    X(DllVQgetEachOpeLoginf)    \
    X(DllVQtoDateTime)

QUMBREL_VQ_FUNCTIONS(QUMBREL_ABI_FN_TYPE)
