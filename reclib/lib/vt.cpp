// The VT family library over the reference format (recorder/abi/vt.h).
#include "recorder/abi/vt.h"

#include "reclib/capi.h"

using namespace qumbrel::reclib;
using namespace qumbrel::reclib::capi;
namespace abi = qumbrel::abi;

namespace {

std::int32_t type_code(const ParsedFile& p) {
    return p.header.i("typeCode", p.kind == Kind::Display ? 49 : 48);
}

template <class T>
std::int32_t data(std::int32_t handle, std::int32_t position, std::int32_t start,
                  std::int32_t count, std::int32_t* unused1, std::int32_t* unused2, T* samples,
                  std::int32_t* received) {
    const Handle h = lookup(handle);
    const Position at = resolve(h.p(), position);
    put(unused1, at.channel ? static_cast<std::int32_t>(at.channel->type) : 0);
    put(unused2, sample_count(h.p()));
    put(received, copy_samples(at, start, count, samples));
    if (!h.file) return abi::kErrHandle;
    return at.channel ? abi::kOk : abi::kErrIndex;
}

}  // namespace

extern "C" {

int32_t DllVTopenReadFile(const char* path, int32_t* handle) {
    return guarded([&] {
        const std::int32_t h = handles().open(path, Family::VT);
        put(handle, h > 0 ? h : 0);
        return h > 0 ? abi::kOk : h;
    });
}

int32_t DllVTcloseReadFile(int32_t handle) {
    return handles().close(handle) ? abi::kOk : abi::kErrHandle;
}

int32_t DllVTgetTypeFile(char* path) {
    return guarded([&] {
        const std::int32_t h = handles().open(path, Family::VT);
        if (h <= 0) return 0;
        const std::int32_t code = type_code(handles().get(h)->parsed);
        handles().close(h);
        return code;
    });
}

int32_t DllVTtoDateTime(int32_t seconds, int32_t* year, int32_t* month, int32_t* day, int32_t* hour,
                        int32_t* minute, int32_t* second) {
    return to_date_time(seconds, year, month, day, hour, minute, second);
}

int32_t DllVTgetFileCnctInfoHandle(int32_t handle, int32_t* unused1, int32_t* unused2,
                                   int32_t* unused3, int32_t* startSeconds, int32_t* startTicks,
                                   int32_t* stopSeconds, int32_t* stopTicks, int32_t* unused4,
                                   int32_t* unused5, int32_t* unused6) {
    return guarded([&] {
        const Handle h = lookup(handle);
        const ParsedFile& p = h.p();
        const Fields& f = p.header;
        put(unused1, f.i("unitCount"));
        put(unused2, h.file ? (p.kind == Kind::Display ? 2 : 1) : 0);
        put(unused3, f.i("triggerNo"));
        put(startSeconds, start_seconds(p));
        put(startTicks, start_ticks(p));
        put(stopSeconds, stop_seconds(p));
        put(stopTicks, stop_ticks(p));
        put(unused4, f.i("cnct.unused4"));
        put(unused5, f.i("cnct.unused5"));
        put(unused6, f.i("cnct.unused6"));
        return h.status();
    });
}

int32_t DllVTgetInfoFile(int32_t handle, int32_t* measChCount, int32_t* mathChCount,
                         int32_t* dataCount, int32_t* unused7, int32_t* samplingSeconds,
                         int32_t* samplingTicks, int32_t* triggerNo, int32_t* triggerSeconds,
                         int32_t* triggerTicks, int32_t* count1, int32_t* count2, int32_t* eventNum,
                         char* deviceType, int32_t* status, int32_t* alarmNum,
                         int32_t* extChCount) {
    return guarded([&] {
        const Handle h = lookup(handle);
        const ParsedFile& p = h.p();
        const Fields& f = p.header;
        put(measChCount, meas_count(p));
        put(mathChCount, math_count(p));
        put(dataCount, sample_count(p));
        put(unused7, f.i("count0"));
        put(samplingSeconds, f.i("samplingSeconds"));
        put(samplingTicks, f.i("samplingTicks"));
        put(triggerNo, f.i("triggerNo"));
        put(triggerSeconds, f.i("triggerSeconds"));
        put(triggerTicks, f.i("triggerTicks"));
        put(count1, f.i("count1"));
        put(count2, f.i("count2"));
        put(eventNum, list_count(p, "message"));
        put(deviceType, abi::kVtDeviceTypeLen, f.s("deviceType"));
        put(status, h.file ? p.status() : 0);
        put(alarmNum, list_count(p, "alarm"));
        put(extChCount, f.i("extChCount"));
        return h.status();
    });
}

int32_t DllVTgetInfo2File(int32_t handle, int32_t* unusedA, char* serialNo, int32_t* unusedB,
                          int32_t* unusedC, int32_t* unusedD, int32_t* unusedE, char* fileMessage,
                          int32_t* timeCorrected, int32_t* startKind, int32_t* stopKind,
                          int32_t* userFlag, int32_t* startCode, char* startUser, int32_t* stopCode,
                          char* stopUser, int32_t* batchFlag, char* application, char* supervisor,
                          char* manager, char* batchName, int32_t* batchNo, char* commentUser,
                          int32_t* commentSeconds, int32_t* commentTicks, char* comment1,
                          char* comment2, char* comment3, int32_t* unusedF, int32_t* unusedG,
                          int32_t* unusedH, int32_t* unusedI) {
    return guarded([&] {
        const Handle h = lookup(handle);
        const Fields& f = h.p().header;
        put(unusedA, f.i("info2.unusedA"));
        put(serialNo, abi::kVtSerialNoLen, f.s("serialNo"));
        put(unusedB, f.i("info2.unusedB"));
        put(unusedC, f.i("info2.unusedC"));
        put(unusedD, f.i("info2.unusedD"));
        put(unusedE, f.i("info2.unusedE"));
        put(fileMessage, abi::kVtFileMessageLen, f.s("fileMessage"));
        put(timeCorrected, f.i("timeCorrected"));
        put(startKind, f.i("startKind"));
        put(stopKind, f.i("stopKind"));
        put(userFlag, f.i("userFlag"));
        put(startCode, f.i("startCode"));
        put(startUser, abi::kVtUserLen, f.s("startUser"));
        put(stopCode, f.i("stopCode"));
        put(stopUser, abi::kVtUserLen, f.s("stopUser"));
        put(batchFlag, f.i("batchFlag"));
        put(application, abi::kVtBatchTextLen, f.s("application"));
        put(supervisor, abi::kVtBatchTextLen, f.s("supervisor"));
        put(manager, abi::kVtBatchTextLen, f.s("manager"));
        put(batchName, abi::kVtBatchTextLen, f.s("batchName"));
        put(batchNo, f.i("batchNo"));
        put(commentUser, abi::kVtUserLen, f.s("commentUser"));
        put(commentSeconds, f.i("commentSeconds"));
        put(commentTicks, f.i("commentTicks"));
        put(comment1, abi::kVtCommentLen, f.s("comment1"));
        put(comment2, abi::kVtCommentLen, f.s("comment2"));
        put(comment3, abi::kVtCommentLen, f.s("comment3"));
        put(unusedF, f.i("info2.unusedF"));
        put(unusedG, f.i("info2.unusedG"));
        put(unusedH, f.i("info2.unusedH"));
        put(unusedI, f.i("info2.unusedI"));
        return h.status();
    });
}

int32_t DllVTgetGroupNumFile(int32_t handle, int32_t* groupCount, int32_t* groupWidth) {
    return guarded([&] {
        const Handle h = lookup(handle);
        put(groupCount, list_count(h.p(), "group"));
        put(groupWidth, h.p().header.i("groupWidth"));
        return h.status();
    });
}

int32_t DllVTgetGroupInfoFile(int32_t handle, int32_t groupIndex, char* name, int32_t* members) {
    return guarded([&] {
        const Handle h = lookup(handle);
        bool found = false;
        const Fields& r = record(h.p(), "group", groupIndex, &found);
        put(name, abi::kVtGroupNameLen, r.s("name"));
        put(members, r.i("members"));
        return h.status(found);
    });
}

int32_t DllVTgetAlarmInfoFile(int32_t handle, int32_t index, int32_t* channel, int32_t* level,
                              int32_t* type, int32_t* serial, int32_t* occurSeconds,
                              int32_t* occurTicks, int32_t* releaseSerial, int32_t* releaseSeconds,
                              int32_t* releaseTicks) {
    return guarded([&] {
        const Handle h = lookup(handle);
        bool found = false;
        const Fields& r = record(h.p(), "alarm", index, &found);
        put(channel, r.i("channel"));
        put(level, r.i("level"));
        put(type, r.i("type"));
        put(serial, r.i("serial"));
        put(occurSeconds, r.i("occurSeconds"));
        put(occurTicks, r.i("occurTicks"));
        put(releaseSerial, r.i("releaseSerial"));
        put(releaseSeconds, r.i("releaseSeconds"));
        put(releaseTicks, r.i("releaseTicks"));
        return h.status(found);
    });
}

int32_t DllVTgetEventInfoFile(int32_t handle, int32_t index, int32_t* serial, int32_t* seconds,
                              int32_t* ticks, char* message, int32_t* messageNo, int32_t* source,
                              char* user) {
    return guarded([&] {
        const Handle h = lookup(handle);
        bool found = false;
        const Fields& r = record(h.p(), "message", index, &found);
        put(serial, r.i("serial"));
        put(seconds, r.i("seconds"));
        put(ticks, r.i("ticks"));
        put(message, abi::kVtMessageLen, r.s("message"));
        put(messageNo, r.i("messageNo"));
        put(source, r.i("source"));
        put(user, abi::kVtUserLen, r.s("user"));
        return h.status(found);
    });
}

int32_t DllVTgetChDataInfo2File(int32_t handle, int32_t channelIndex, int32_t* kind,
                                int32_t* unused, char* channel, char* tag, char* reserved,
                                char* unit, int32_t* decimals, double* scaleLow, double* scaleHigh,
                                int32_t* number1, int32_t* number2, int32_t* number3,
                                int32_t* number4, int32_t* number5) {
    return guarded([&] {
        const Handle h = lookup(handle);
        bool found = false;
        const ChannelView& c = channel_at(h.p(), channelIndex, &found);
        const Fields& f = c.info;
        put(kind, f.i("kind"));
        put(unused, found ? static_cast<std::int32_t>(c.type) : 0);
        put(channel, abi::kVtChannelLen, f.s("channel"));
        put(tag, abi::kVtTagLen, f.s("tag"));
        put(reserved, abi::kVtReservedTextLen, f.s("reserved"));
        put(unit, abi::kVtUnitLen, f.s("unit"));
        put(decimals, f.i("decimals"));
        put(scaleLow, f.d("scaleLow"));
        put(scaleHigh, f.d("scaleHigh"));
        put(number1, f.i("number1"));
        put(number2, f.i("number2"));
        put(number3, f.i("number3"));
        put(number4, f.i("number4"));
        put(number5, f.i("number5"));
        return h.status(found);
    });
}

int32_t DllVTgetChDataInfoFile(int32_t handle, int32_t channelIndex, int32_t* kind, int32_t* unused,
                               char* channel, char* tag, char* reserved, char* unit,
                               int32_t* decimals) {
    return DllVTgetChDataInfo2File(handle, channelIndex, kind, unused, channel, tag, reserved, unit,
                                   decimals, nullptr, nullptr, nullptr, nullptr, nullptr, nullptr,
                                   nullptr);
}

int32_t DllVTgetMeasDataFile(int32_t handle, int32_t position, int32_t start, int32_t count,
                             int32_t* unused1, int32_t* unused2, int16_t* samples,
                             int32_t* received) {
    return guarded(
        [&] { return data(handle, position, start, count, unused1, unused2, samples, received); });
}

int32_t DllVTgetMathDataFile(int32_t handle, int32_t position, int32_t start, int32_t count,
                             int32_t* unused1, int32_t* unused2, int32_t* samples,
                             int32_t* received) {
    return guarded(
        [&] { return data(handle, position, start, count, unused1, unused2, samples, received); });
}

int32_t DllVTgetTimesFile(int32_t handle, int32_t start, int32_t count, int32_t* seconds,
                          int32_t* ticks, int32_t* received) {
    return guarded([&] {
        const Handle h = lookup(handle);
        put(received, copy_times(h.p(), start, count, seconds, ticks));
        return h.status();
    });
}

}  // extern "C"
