// The VQ family library over the reference format (recorder/abi/vq.h).
#include "recorder/abi/vq.h"

#include "reclib/capi.h"

using namespace qumbrel::reclib;
using namespace qumbrel::reclib::capi;
namespace abi = qumbrel::abi;

namespace {

template <class T>
std::int32_t data(std::int32_t handle, std::int32_t position, std::int32_t start,
                  std::int32_t count, std::int32_t* c1, std::int32_t* c2, T* samples,
                  std::int32_t* received) {
    const Handle h = lookup(handle);
    const Position at = resolve(h.p(), position);
    put(c1, at.channel ? static_cast<std::int32_t>(at.channel->type) : 0);
    put(c2, sample_count(h.p()));
    put(received, copy_samples(at, start, count, samples));
    if (!h.file) return abi::kErrHandle;
    return at.channel ? abi::kOk : abi::kErrIndex;
}

}  // namespace

extern "C" {

int32_t DllVQopenReadFile(const char* path, int32_t* openStatus, int32_t* handle) {
    return guarded([&] {
        const std::int32_t h = handles().open(path, Family::VQ);
        put(handle, h > 0 ? h : 0);
        put(openStatus, h > 0 ? abi::kOk : h);
        return h > 0 ? abi::kOk : h;
    });
}

int32_t DllVQcloseReadFile(int32_t handle) {
    return handles().close(handle) ? abi::kOk : abi::kErrHandle;
}

int32_t DllVQgetBasicInfo(int32_t handle, char* deviceCode, char* fileMessage, int32_t* measChCount,
                          int32_t* mathChCount, int32_t* dataCount, int32_t* c1, int32_t* c2,
                          int32_t* samplingTicksBase, int32_t* unitCount, char* deviceType,
                          int32_t* startKind, int32_t* c3, int32_t* stopKind, int32_t* c4,
                          int32_t* c5, int32_t* c6, int32_t* alarmNum, int32_t* c7, int32_t* c8,
                          int32_t* eventNum, int32_t* c9, int32_t* c10, int32_t* c11,
                          int32_t* groupCount, int32_t* c12, int32_t* c13, int32_t* c14,
                          int32_t* c15, int32_t* c16, int32_t* c17, int32_t* samplingSeconds,
                          int32_t* samplingTicks, char* serial, int32_t* triggerSeconds,
                          int32_t* triggerTicks, int32_t* c18) {
    return guarded([&] {
        const Handle h = lookup(handle);
        const ParsedFile& p = h.p();
        const Fields& f = p.header;
        put(deviceCode, abi::kVqDeviceCodeLen, f.s("deviceCode"));
        put(fileMessage, abi::kVqFileMessageLen, f.s("fileMessage"));
        put(measChCount, meas_count(p));
        put(mathChCount, math_count(p));
        put(dataCount, sample_count(p));
        put(c1, f.i("triggerNo"));
        put(c2, f.i("timeCorrected"));
        put(samplingTicksBase, f.i("samplingTicksBase", 125));
        put(unitCount, f.i("unitCount"));
        put(deviceType, abi::kVqDeviceTypeLen, f.s("deviceType"));
        put(startKind, f.i("startKind"));
        put(c3, f.i("userFlag"));
        put(stopKind, f.i("stopKind"));
        put(c4, f.i("count0"));
        put(c5, f.i("count1"));
        put(c6, f.i("count2"));
        put(alarmNum, list_count(p, "alarm"));
        put(c7, f.i("groupWidth"));
        put(c8, f.i("extChCount"));
        put(eventNum, list_count(p, "message"));
        put(c9, f.i("basic.c9"));
        put(c10, f.i("basic.c10"));
        put(c11, f.i("basic.c11"));
        put(groupCount, list_count(p, "group"));
        put(c12, f.i("basic.c12"));
        put(c13, f.i("basic.c13"));
        put(c14, f.i("basic.c14"));
        put(c15, f.i("basic.c15"));
        put(c16, f.i("basic.c16"));
        put(c17, f.i("basic.c17"));
        put(samplingSeconds, f.i("samplingSeconds"));
        put(samplingTicks, f.i("samplingTicks"));
        put(serial, abi::kVqSerialLen, f.s("serial"));
        put(triggerSeconds, f.i("triggerSeconds"));
        put(triggerTicks, f.i("triggerTicks"));
        put(c18, f.i("basic.c18"));
        return h.status();
    });
}

int32_t DllVQgetCnctInfo(int32_t handle, char* deviceCode, int32_t* c1, int32_t* startSeconds,
                         int32_t* c2, int32_t* startTicks, int32_t* stopSeconds, int32_t* stopTicks,
                         int32_t* openStatus, int32_t* startKind, int32_t* c3, int32_t* stopKind,
                         int32_t* c4, int32_t* c5, int32_t* c6, int32_t* unitCount, int32_t* c7) {
    return guarded([&] {
        const Handle h = lookup(handle);
        const ParsedFile& p = h.p();
        const Fields& f = p.header;
        put(deviceCode, abi::kVqDeviceCodeLen, f.s("deviceCode"));
        put(c1, f.i("cnct.c1"));
        put(startSeconds, start_seconds(p));
        put(c2, f.i("cnct.c2"));
        put(startTicks, start_ticks(p));
        put(stopSeconds, stop_seconds(p));
        put(stopTicks, stop_ticks(p));
        put(openStatus, h.file ? abi::kOk : abi::kErrHandle);
        put(startKind, f.i("startKind"));
        put(c3, f.i("cnct.c3"));
        put(stopKind, f.i("stopKind"));
        put(c4, f.i("cnct.c4"));
        put(c5, f.i("cnct.c5"));
        put(c6, f.i("cnct.c6"));
        put(unitCount, f.i("unitCount"));
        put(c7, f.i("cnct.c7"));
        return h.status();
    });
}

int32_t DllVQgetCrcStatus(int32_t handle) {
    return guarded([&] {
        const Handle h = lookup(handle);
        return h.file ? h.p().status() : abi::kErrHandle;
    });
}

int32_t DllVQgetOpeLogInf(int32_t handle, int32_t* opeLogNum) {
    return guarded([&] {
        const Handle h = lookup(handle);
        put(opeLogNum, list_count(h.p(), "opeLog"));
        return h.status();
    });
}

int32_t DllVQgetGroupInfo(int32_t handle, int32_t groupIndex, char* name, int32_t* members) {
    return guarded([&] {
        const Handle h = lookup(handle);
        bool found = false;
        const Fields& r = record(h.p(), "group", groupIndex, &found);
        put(name, abi::kVqGroupNameLen, r.s("name"));
        put(members, r.i("members"));
        return h.status(found);
    });
}

int32_t DllVQgetBatchInfo(int32_t handle, int32_t* startSource, char* startUser,
                          int32_t* stopSource, char* stopUser, int32_t* batchFlag,
                          char* application, char* supervisor, char* manager, char* batchName,
                          int32_t* batchNo, int32_t* c1) {
    return guarded([&] {
        const Handle h = lookup(handle);
        const Fields& f = h.p().header;
        put(startSource, f.i("startSource"));
        put(startUser, abi::kVqUserLen, f.s("startUser"));
        put(stopSource, f.i("stopSource"));
        put(stopUser, abi::kVqUserLen, f.s("stopUser"));
        put(batchFlag, f.i("batchFlag"));
        put(application, abi::kVqBatchHeaderLen, f.s("application"));
        put(supervisor, abi::kVqBatchHeaderLen, f.s("supervisor"));
        put(manager, abi::kVqBatchHeaderLen, f.s("manager"));
        put(batchName, abi::kVqBatchNameLen, f.s("batchName"));
        put(batchNo, f.i("batchNo"));
        put(c1, f.i("batch.c1"));
        return h.status();
    });
}

int32_t DllVQgetBatchComment(int32_t handle, int32_t index, char* user, int32_t* seconds,
                             int32_t* ticks, char* comment) {
    return guarded([&] {
        const Handle h = lookup(handle);
        bool found = false;
        const Fields& r = record(h.p(), "batchComment", index, &found);
        put(user, abi::kVqUserLen, r.s("user"));
        put(seconds, r.i("seconds"));
        put(ticks, r.i("ticks"));
        put(comment, abi::kVqCommentLen, r.s("comment"));
        return h.status(found);
    });
}

int32_t DllVQgetAlarmInfo(int32_t handle, int32_t index, int32_t* channel, int32_t* level,
                          int32_t* type, int32_t* serial, int32_t* occurSeconds,
                          int32_t* occurTicks, int32_t* releaseSerial, int32_t* releaseSeconds,
                          int32_t* releaseTicks, int32_t* ackSerial, int32_t* ackSeconds,
                          char* user, int32_t* ackTicks, int32_t* c1, int32_t* c2) {
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
        put(ackSerial, r.i("ackSerial"));
        put(ackSeconds, r.i("ackSeconds"));
        put(user, abi::kVqUserLen, r.s("user"));
        put(ackTicks, r.i("ackTicks"));
        put(c1, r.i("ackLevel"));
        put(c2, r.i("c2"));
        return h.status(found);
    });
}

int32_t DllVQgetMessageInfo(int32_t handle, int32_t index, int32_t* serial, int32_t* seconds,
                            int32_t* ticks, char* message, int32_t* messageNo, int32_t* c1,
                            int32_t* source, char* user) {
    return guarded([&] {
        const Handle h = lookup(handle);
        bool found = false;
        const Fields& r = record(h.p(), "message", index, &found);
        put(serial, r.i("serial"));
        put(seconds, r.i("seconds"));
        put(ticks, r.i("ticks"));
        put(message, abi::kVqMessageLen, r.s("message"));
        put(messageNo, r.i("messageNo"));
        put(c1, r.i("c1"));
        put(source, r.i("source"));
        put(user, abi::kVqUserLen, r.s("user"));
        return h.status(found);
    });
}

int32_t DllVQgetChDataInfo2(int32_t handle, int32_t channelIndex, int32_t* kind, int32_t* c1,
                            char* unit, char* tag, char* channel, int32_t* decimals,
                            int32_t* number1, double* scaleLow, double* scaleHigh, int32_t* number2,
                            int32_t* number3, int32_t* number4, int32_t* number5, int32_t* c2) {
    return guarded([&] {
        const Handle h = lookup(handle);
        bool found = false;
        const ChannelView& c = channel_at(h.p(), channelIndex, &found);
        const Fields& f = c.info;
        put(kind, f.i("kind"));
        put(c1, found ? static_cast<std::int32_t>(c.type) : 0);
        put(unit, abi::kVqUnitLen, f.s("unit"));
        put(tag, abi::kVqTagLen, f.s("tag"));
        put(channel, abi::kVqChannelLen, f.s("channel"));
        put(decimals, f.i("decimals"));
        put(number1, f.i("number1"));
        put(scaleLow, f.d("scaleLow"));
        put(scaleHigh, f.d("scaleHigh"));
        put(number2, f.i("number2"));
        put(number3, f.i("number3"));
        put(number4, f.i("number4"));
        put(number5, f.i("number5"));
        put(c2, f.i("c2"));
        return h.status(found);
    });
}

int32_t DllVQgetChDataInfo(int32_t handle, int32_t channelIndex, int32_t* kind, int32_t* c1,
                           char* unit, char* tag, char* channel, int32_t* decimals) {
    return DllVQgetChDataInfo2(handle, channelIndex, kind, c1, unit, tag, channel, decimals,
                               nullptr, nullptr, nullptr, nullptr, nullptr, nullptr, nullptr,
                               nullptr);
}

int32_t DllVQgetMeasData(int32_t handle, int32_t position, int32_t start, int32_t count,
                         int32_t* c1, int32_t* c2, int16_t* samples, int32_t* received) {
    return guarded([&] { return data(handle, position, start, count, c1, c2, samples, received); });
}

int32_t DllVQgetMathData(int32_t handle, int32_t position, int32_t start, int32_t count,
                         int32_t* c1, int32_t* c2, int32_t* samples, int32_t* received) {
    return guarded([&] { return data(handle, position, start, count, c1, c2, samples, received); });
}

int32_t DllVQgetTimes(int32_t handle, int32_t start, int32_t count, int32_t* seconds,
                      int32_t* ticks, int32_t* received) {
    return guarded([&] {
        const Handle h = lookup(handle);
        put(received, copy_times(h.p(), start, count, seconds, ticks));
        return h.status();
    });
}

int32_t DllVQgetSigninInf(int32_t handle, int32_t* count, int32_t* c1) {
    return guarded([&] {
        const Handle h = lookup(handle);
        put(count, list_count(h.p(), "signinInf"));
        put(c1, h.p().header.i("signinInf.c1"));
        return h.status();
    });
}

int32_t DllVQgetEachSigninInf(int32_t handle, int32_t index, int32_t* c1, int32_t* c2, char* user,
                              char* c3, int32_t* c4, char* c5) {
    return guarded([&] {
        const Handle h = lookup(handle);
        bool found = false;
        const Fields& r = record(h.p(), "signinInf", index, &found);
        put(c1, r.i("c1"));
        put(c2, r.i("c2"));
        put(user, abi::kVqUserLen, r.s("user"));
        put(c3, abi::kVqSigninTextLen, r.s("c3"));
        put(c4, r.i("c4"));
        put(c5, abi::kVqSigninTextLen, r.s("c5"));
        return h.status(found);
    });
}

int32_t DllVQgetSigninSts(int32_t handle, int32_t* signCount) {
    return guarded([&] {
        const Handle h = lookup(handle);
        put(signCount, list_count(h.p(), "signinSts"));
        return h.status();
    });
}

int32_t DllVQgetEachSigninSts(int32_t handle, int32_t index, int32_t* result, char* name,
                              char* comment, int32_t* seconds, int32_t* ticks, char* host) {
    return guarded([&] {
        const Handle h = lookup(handle);
        bool found = false;
        const Fields& r = record(h.p(), "signinSts", index, &found);
        put(result, found ? r.i("result", -1) : -1);  // no such signature: unsigned
        put(name, abi::kVqSignNameLen, r.s("name"));
        put(comment, abi::kVqSignCommentLen, r.s("comment"));
        put(seconds, r.i("seconds"));
        put(ticks, r.i("ticks"));
        put(host, abi::kVqSignHostLen, r.s("host"));
        return h.status(found);
    });
}

int32_t DllVQgetEachOpeLoginf(int32_t handle, int32_t index, int32_t* seconds, int32_t* ticks,
                              int32_t* time2, int32_t* message, int32_t* serial, int32_t* source,
                              int32_t* value, char* user, int32_t* errorCode, char* extra) {
    return guarded([&] {
        const Handle h = lookup(handle);
        bool found = false;
        const Fields& r = record(h.p(), "opeLog", index, &found);
        put(seconds, r.i("seconds"));
        put(ticks, r.i("ticks"));
        put(time2, r.i("time2"));
        put(message, r.i("message"));
        put(serial, r.i("serial"));
        put(source, r.i("source"));
        put(value, r.i("value"));
        put(user, abi::kVqUserLen, r.s("user"));
        put(errorCode, r.i("errorCode"));
        put(extra, abi::kVqOpeLogExtraLen, r.s("extra"));
        return h.status(found);
    });
}

int32_t DllVQtoDateTime(int32_t seconds, int32_t* year, int32_t* month, int32_t* day, int32_t* hour,
                        int32_t* minute, int32_t* second) {
    return to_date_time(seconds, year, month, day, hour, minute, second);
}

}  // extern "C"
