#pragma once
// C interface of the VT family library (libDllVTFileAccess32.so): files .ogd (display)
// and .oge (event). Ticks are eighths of a second. See common.h for the conventions.
//
// Sample positions: in an event file position p is the p-th channel of the file (measuring
// and math channels in file order); in a display file channel p / 2, the minimum for an
// even and the maximum for an odd position. Either data function serves any channel: the
// 16-bit one saturates wider values, the 32-bit one widens.
#include <cstdint>

#include "recorder/abi/common.h"

namespace qumbrel::abi {
inline constexpr int kVtDeviceTypeLen = 32;
inline constexpr int kVtSerialNoLen = 16;
inline constexpr int kVtFileMessageLen = 32;
inline constexpr int kVtUserLen = 16;       // startUser, stopUser, commentUser, event user
inline constexpr int kVtBatchTextLen = 16;  // application, supervisor, manager, batchName
inline constexpr int kVtCommentLen = 32;
inline constexpr int kVtGroupNameLen = 16;
inline constexpr int kVtMessageLen = 16;
inline constexpr int kVtChannelLen = 6;
inline constexpr int kVtTagLen = 16;
inline constexpr int kVtReservedTextLen = 8;
inline constexpr int kVtUnitLen = 8;
inline constexpr char kVtLibraryName[] = "DllVTFileAccess32";
}  // namespace qumbrel::abi

extern "C" {

QUMBREL_RECLIB_API int32_t DllVTopenReadFile(const char* path, int32_t* handle);
QUMBREL_RECLIB_API int32_t DllVTcloseReadFile(int32_t handle);

// Returns the type code (16, 17, 18, 32, 48, 49, 64, 65; 0 for no recorder file).
// The library may rewrite the bytes of `path` in place; it never writes past its end.
QUMBREL_RECLIB_API int32_t DllVTgetTypeFile(char* path);

QUMBREL_RECLIB_API int32_t DllVTtoDateTime(int32_t seconds, int32_t* year, int32_t* month,
                                           int32_t* day, int32_t* hour, int32_t* minute,
                                           int32_t* second);

// unused1 unitCount, unused2 fileKind (1 event, 2 display), unused3 triggerNo,
// unused4..6 reserved.
QUMBREL_RECLIB_API int32_t DllVTgetFileCnctInfoHandle(int32_t handle, int32_t* unused1,
                                                      int32_t* unused2, int32_t* unused3,
                                                      int32_t* startSeconds, int32_t* startTicks,
                                                      int32_t* stopSeconds, int32_t* stopTicks,
                                                      int32_t* unused4, int32_t* unused5,
                                                      int32_t* unused6);

// unused7 is the first counter (count0). deviceType: kVtDeviceTypeLen bytes.
// status > 0: the file failed its check sum (or the header says so).
QUMBREL_RECLIB_API int32_t DllVTgetInfoFile(
    int32_t handle, int32_t* measChCount, int32_t* mathChCount, int32_t* dataCount,
    int32_t* unused7, int32_t* samplingSeconds, int32_t* samplingTicks, int32_t* triggerNo,
    int32_t* triggerSeconds, int32_t* triggerTicks, int32_t* count1, int32_t* count2,
    int32_t* eventNum, char* deviceType, int32_t* status, int32_t* alarmNum, int32_t* extChCount);

// 32 arguments. Texts: serialNo kVtSerialNoLen, fileMessage kVtFileMessageLen, users
// kVtUserLen, application/supervisor/manager/batchName kVtBatchTextLen, comments
// kVtCommentLen. The unnamed integers are reserved values that round-trip.
QUMBREL_RECLIB_API int32_t DllVTgetInfo2File(
    int32_t handle, int32_t* unusedA, char* serialNo, int32_t* unusedB, int32_t* unusedC,
    int32_t* unusedD, int32_t* unusedE, char* fileMessage, int32_t* timeCorrected,
    int32_t* startKind, int32_t* stopKind, int32_t* userFlag, int32_t* startCode, char* startUser,
    int32_t* stopCode, char* stopUser, int32_t* batchFlag, char* application, char* supervisor,
    char* manager, char* batchName, int32_t* batchNo, char* commentUser, int32_t* commentSeconds,
    int32_t* commentTicks, char* comment1, char* comment2, char* comment3, int32_t* unusedF,
    int32_t* unusedG, int32_t* unusedH, int32_t* unusedI);

QUMBREL_RECLIB_API int32_t DllVTgetGroupNumFile(int32_t handle, int32_t* groupCount,
                                                int32_t* groupWidth);

// name: kVtGroupNameLen bytes. groupIndex from 0.
QUMBREL_RECLIB_API int32_t DllVTgetGroupInfoFile(int32_t handle, int32_t groupIndex, char* name,
                                                 int32_t* members);

// channel and level from 0; releaseSeconds 0 or less: not released.
QUMBREL_RECLIB_API int32_t DllVTgetAlarmInfoFile(int32_t handle, int32_t index, int32_t* channel,
                                                 int32_t* level, int32_t* type, int32_t* serial,
                                                 int32_t* occurSeconds, int32_t* occurTicks,
                                                 int32_t* releaseSerial, int32_t* releaseSeconds,
                                                 int32_t* releaseTicks);

// message kVtMessageLen, user kVtUserLen; messageNo from 0.
QUMBREL_RECLIB_API int32_t DllVTgetEventInfoFile(int32_t handle, int32_t index, int32_t* serial,
                                                 int32_t* seconds, int32_t* ticks, char* message,
                                                 int32_t* messageNo, int32_t* source, char* user);

// channel kVtChannelLen (e.g. "CH001"), tag kVtTagLen, reserved kVtReservedTextLen,
// unit kVtUnitLen. `unused` is the channel's data type (0 int16, 1 int32, 2 float32).
QUMBREL_RECLIB_API int32_t DllVTgetChDataInfoFile(int32_t handle, int32_t channelIndex,
                                                  int32_t* kind, int32_t* unused, char* channel,
                                                  char* tag, char* reserved, char* unit,
                                                  int32_t* decimals);

QUMBREL_RECLIB_API int32_t DllVTgetChDataInfo2File(
    int32_t handle, int32_t channelIndex, int32_t* kind, int32_t* unused, char* channel, char* tag,
    char* reserved, char* unit, int32_t* decimals, double* scaleLow, double* scaleHigh,
    int32_t* number1, int32_t* number2, int32_t* number3, int32_t* number4, int32_t* number5);

// Samples start..start+count-1 of one position; `received` is how many were written.
// unused1 is the channel's data type, unused2 the file's sample count.
QUMBREL_RECLIB_API int32_t DllVTgetMeasDataFile(int32_t handle, int32_t position, int32_t start,
                                                int32_t count, int32_t* unused1, int32_t* unused2,
                                                int16_t* samples, int32_t* received);
QUMBREL_RECLIB_API int32_t DllVTgetMathDataFile(int32_t handle, int32_t position, int32_t start,
                                                int32_t count, int32_t* unused1, int32_t* unused2,
                                                int32_t* samples, int32_t* received);

QUMBREL_RECLIB_API int32_t DllVTgetTimesFile(int32_t handle, int32_t start, int32_t count,
                                             int32_t* seconds, int32_t* ticks, int32_t* received);

}  // extern "C"

// Every symbol of the family, for the loader.
#define QUMBREL_VT_FUNCTIONS(X)   \
    X(DllVTopenReadFile)          \
    X(DllVTcloseReadFile)         \
    X(DllVTgetTypeFile)           \
    X(DllVTtoDateTime)            \
    X(DllVTgetFileCnctInfoHandle) \
    X(DllVTgetInfoFile)           \
    X(DllVTgetInfo2File)          \
    X(DllVTgetGroupNumFile)       \
    X(DllVTgetGroupInfoFile)      \
    X(DllVTgetAlarmInfoFile)      \
    X(DllVTgetEventInfoFile)      \
    X(DllVTgetChDataInfoFile)     \
    X(DllVTgetChDataInfo2File)    \
    X(DllVTgetMeasDataFile)       \
    X(DllVTgetMathDataFile)       \
    X(DllVTgetTimesFile)

// Function-pointer types, one per symbol: DllVTopenReadFile_fn and so on.
QUMBREL_VT_FUNCTIONS(QUMBREL_ABI_FN_TYPE)
