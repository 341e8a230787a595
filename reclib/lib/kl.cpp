// The KL family library over the reference format (recorder/abi/kl.h).
#include "recorder/abi/kl.h"

#include <algorithm>

#include "reclib/capi.h"

using namespace qumbrel::reclib;
using namespace qumbrel::reclib::capi;
namespace abi = qumbrel::abi;

namespace {

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

bool has_alarm_data(const ParsedFile& p) {
    return std::any_of(p.channels.begin(), p.channels.end(),
                       [](const ChannelView& c) { return c.alarmCount > 0; });
}

}  // namespace

extern "C" {

int32_t DllKLopenReadFile(const char* path, int32_t* handle) {
    return guarded([&] {
        const std::int32_t h = handles().open(path, Family::KL);
        put(handle, h > 0 ? h : 0);
        return h > 0 ? abi::kOk : h;
    });
}

int32_t DllKLcloseReadFile(int32_t handle) {
    return handles().close(handle) ? abi::kOk : abi::kErrHandle;
}

int32_t DllKLgetCnctInfo(int32_t handle, char* text, int32_t* startSeconds, int32_t* startTicks,
                         int32_t* stopSeconds, int32_t* stopTicks, int32_t* startKind,
                         int32_t* stopKind, int32_t* triggerSeconds, int32_t* triggerTicks,
                         int32_t* triggerNo, int32_t* timeCorrected) {
    return guarded([&] {
        const Handle h = lookup(handle);
        const ParsedFile& p = h.p();
        const Fields& f = p.header;
        put(text, abi::kKlCnctTextLen, f.s("deviceCode"));
        put(startSeconds, start_seconds(p));
        put(startTicks, start_ticks(p));
        put(stopSeconds, stop_seconds(p));
        put(stopTicks, stop_ticks(p));
        put(startKind, f.i("startKind"));
        put(stopKind, f.i("stopKind"));
        put(triggerSeconds, f.i("triggerSeconds"));
        put(triggerTicks, f.i("triggerTicks"));
        put(triggerNo, f.i("triggerNo"));
        put(timeCorrected, f.i("timeCorrected"));
        return h.status();
    });
}

int32_t DllKLgetBasicInfo(int32_t handle, char* deviceCode, char* fileMessage, int32_t* measChCount,
                          int32_t* mathChCount, int32_t* extChCount, int32_t* ctrlChCount,
                          int32_t* dataCount, int32_t* alarmNum, int32_t* eventNum,
                          char* deviceType, int32_t* ctrlNum, int32_t* pvEventNum,
                          int32_t* groupCount, int32_t* groupWidth, int32_t* samplingSeconds,
                          int32_t* samplingTicks, int32_t* triggerNo, int32_t* triggerSeconds,
                          int32_t* triggerTicks, int32_t* status, int32_t* userFlag,
                          int32_t* timeCorrected, int32_t* count0, int32_t* count1, int32_t* count2,
                          int32_t* alarmDataFlag, int32_t* c1, int32_t* c2, int32_t* c3,
                          int32_t* c4, int32_t* c5, int32_t* c6, char* serial, int32_t* c7,
                          int32_t* c8, int32_t* c9) {
    return guarded([&] {
        const Handle h = lookup(handle);
        const ParsedFile& p = h.p();
        const Fields& f = p.header;
        put(deviceCode, abi::kKlDeviceCodeLen, f.s("deviceCode"));
        put(fileMessage, abi::kKlFileMessageLen, f.s("fileMessage"));
        put(measChCount, meas_count(p));
        put(mathChCount, math_count(p));
        put(extChCount, f.i("extChCount"));
        put(ctrlChCount, f.i("ctrlChCount"));
        put(dataCount, sample_count(p));
        put(alarmNum, list_count(p, "alarm"));
        put(eventNum, list_count(p, "message"));
        put(deviceType, abi::kKlDeviceTypeLen, f.s("deviceType"));
        put(ctrlNum, list_count(p, "ctrlMode"));
        put(pvEventNum, list_count(p, "tpvEvent"));
        put(groupCount, list_count(p, "group"));
        put(groupWidth, f.i("groupWidth"));
        put(samplingSeconds, f.i("samplingSeconds"));
        put(samplingTicks, f.i("samplingTicks"));
        put(triggerNo, f.i("triggerNo"));
        put(triggerSeconds, f.i("triggerSeconds"));
        put(triggerTicks, f.i("triggerTicks"));
        put(status, h.file ? p.status() : 0);
        put(userFlag, f.i("userFlag"));
        put(timeCorrected, f.i("timeCorrected"));
        put(count0, f.i("count0"));
        put(count1, f.i("count1"));
        put(count2, f.i("count2"));
        put(alarmDataFlag, has_alarm_data(p) ? 1 : 0);
        put(c1, f.i("basic.c1"));
        put(c2, f.i("basic.c2"));
        put(c3, f.i("basic.c3"));
        put(c4, f.i("basic.c4"));
        put(c5, f.i("basic.c5"));
        put(c6, f.i("basic.c6"));
        put(serial, abi::kKlSerialLen, f.s("serial"));
        put(c7, f.i("basic.c7"));
        put(c8, f.i("basic.c8"));
        put(c9, f.i("basic.c9"));
        return h.status();
    });
}

int32_t DllKLgetBatchInfo(int32_t handle, int32_t* startSource, char* startUser,
                          int32_t* stopSource, char* stopUser, int32_t* batchFlag, char* batchName,
                          char* level1, char* level2, char* level3, int32_t* batchNo, int32_t* c1) {
    return guarded([&] {
        const Handle h = lookup(handle);
        const Fields& f = h.p().header;
        put(startSource, f.i("startSource"));
        put(startUser, abi::kKlUserLen, f.s("startUser"));
        put(stopSource, f.i("stopSource"));
        put(stopUser, abi::kKlUserLen, f.s("stopUser"));
        put(batchFlag, f.i("batchFlag"));
        put(batchName, abi::kKlBatchTextLen, f.s("batchName"));
        put(level1, abi::kKlBatchTextLen, f.s("level1"));
        put(level2, abi::kKlBatchTextLen, f.s("level2"));
        put(level3, abi::kKlBatchTextLen, f.s("level3"));
        put(batchNo, f.i("batchNo"));
        put(c1, f.i("batch.c1"));
        return h.status();
    });
}

int32_t DllKLgetGroupInfo(int32_t handle, int32_t groupIndex, char* name, int32_t* members) {
    return guarded([&] {
        const Handle h = lookup(handle);
        bool found = false;
        const Fields& r = record(h.p(), "group", groupIndex, &found);
        put(name, abi::kKlGroupNameLen, r.s("name"));
        put(members, r.i("members"));
        return h.status(found);
    });
}

int32_t DllKLgetChDataInfo2(int32_t handle, int32_t channelIndex, int32_t* kind, int32_t* c1,
                            char* unit, char* tag, char* channel, int32_t* decimals,
                            double* scaleLow, double* scaleHigh, int32_t* number1, int32_t* number2,
                            int32_t* number3, int32_t* number4, int32_t* number5) {
    return guarded([&] {
        const Handle h = lookup(handle);
        bool found = false;
        const ChannelView& c = channel_at(h.p(), channelIndex, &found);
        const Fields& f = c.info;
        put(kind, f.i("kind"));
        put(c1, found ? static_cast<std::int32_t>(c.type) : 0);
        put(unit, abi::kKlUnitLen, f.s("unit"));
        put(tag, abi::kKlTagLen, f.s("tag"));
        put(channel, abi::kKlChannelLen, f.s("channel"));
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

int32_t DllKLgetAlarmInfo(int32_t handle, int32_t index, int32_t* channel, int32_t* level,
                          int32_t* type, int32_t* serial, int32_t* occurSeconds,
                          int32_t* occurTicks, int32_t* releaseSerial, int32_t* releaseSeconds,
                          int32_t* releaseTicks, int32_t* ackSerial, int32_t* ackSeconds,
                          char* user, int32_t* ackTicks, int32_t* source, int32_t* state) {
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
        put(user, abi::kKlUserLen, r.s("user"));
        put(ackTicks, r.i("ackTicks"));
        put(source, r.i("source"));
        put(state, r.i("state"));
        return h.status(found);
    });
}

int32_t DllKLgetMessageInfo(int32_t handle, int32_t index, int32_t* serial, int32_t* seconds,
                            int32_t* ticks, char* message, int32_t* messageNo, int32_t* c1,
                            int32_t* source, char* user) {
    return guarded([&] {
        const Handle h = lookup(handle);
        bool found = false;
        const Fields& r = record(h.p(), "message", index, &found);
        put(serial, r.i("serial"));
        put(seconds, r.i("seconds"));
        put(ticks, r.i("ticks"));
        put(message, abi::kKlMessageLen, r.s("message"));
        put(messageNo, r.i("messageNo"));
        put(c1, r.i("c1"));
        put(source, r.i("source"));
        put(user, abi::kKlUserLen, r.s("user"));
        return h.status(found);
    });
}

int32_t DllKLgetTPVEventInfo(int32_t handle, int32_t index, int32_t* kind, int32_t* no,
                             int32_t* channel, int32_t* seconds, int32_t* ticks, int32_t* c1,
                             int32_t* c2, int32_t* type, int32_t* value, int32_t* decimals) {
    return guarded([&] {
        const Handle h = lookup(handle);
        bool found = false;
        const Fields& r = record(h.p(), "tpvEvent", index, &found);
        put(kind, r.i("kind"));
        put(no, r.i("no"));
        put(channel, r.i("channel"));
        put(seconds, r.i("seconds"));
        put(ticks, r.i("ticks"));
        put(c1, r.i("offSeconds"));
        put(c2, r.i("offTicks"));
        put(type, r.i("type"));
        put(value, r.i("value"));
        put(decimals, r.i("decimals"));
        return h.status(found);
    });
}

int32_t DllKLgetCtrlModeInfo(int32_t handle, int32_t index, int32_t* loop, int32_t* kind,
                             int32_t* seconds, int32_t* ticks, int32_t* mode, int32_t* localRemote,
                             int32_t* programReset, int32_t* runState, int32_t* holdState,
                             int32_t* waitState, int32_t* advanceState, int32_t* programState,
                             int32_t* operation, int32_t* c1, int32_t* c2, int32_t* c3) {
    return guarded([&] {
        const Handle h = lookup(handle);
        bool found = false;
        const Fields& r = record(h.p(), "ctrlMode", index, &found);
        put(loop, r.i("loop"));
        put(kind, r.i("kind"));
        put(seconds, r.i("seconds"));
        put(ticks, r.i("ticks"));
        put(mode, r.i("mode"));
        put(localRemote, r.i("localRemote"));
        put(programReset, r.i("programReset"));
        put(runState, r.i("runState"));
        put(holdState, r.i("holdState"));
        put(waitState, r.i("waitState"));
        put(advanceState, r.i("advanceState"));
        put(programState, r.i("programState"));
        put(operation, r.i("operation"));
        put(c1, r.i("c1"));
        put(c2, r.i("c2"));
        put(c3, r.i("c3"));
        return h.status(found);
    });
}

int32_t DllKLgetLoopInfo(int32_t handle, int32_t loop, int32_t* c1, int32_t* c2, char* tag,
                         char* unit) {
    return guarded([&] {
        const Handle h = lookup(handle);
        static const Fields kNone;
        const Fields* r = &kNone;
        for (const Fields& f : h.p().list("loop")) {
            if (f.i("loop") == loop) {
                r = &f;
                break;
            }
        }
        put(c1, r->i("c1"));
        put(c2, r->i("c2"));
        put(tag, abi::kKlLoopTagLen, r->s("tag"));
        put(unit, abi::kKlLoopUnitLen, r->s("unit"));
        return h.status(r != &kNone);
    });
}

int32_t DllKLgetMeasData(int32_t handle, int32_t position, int32_t start, int32_t count,
                         int32_t* unused1, int32_t* unused2, int16_t* samples, int32_t* received) {
    return guarded(
        [&] { return data(handle, position, start, count, unused1, unused2, samples, received); });
}

int32_t DllKLgetMathData(int32_t handle, int32_t position, int32_t start, int32_t count,
                         int32_t* unused1, int32_t* unused2, int32_t* samples, int32_t* received) {
    return guarded(
        [&] { return data(handle, position, start, count, unused1, unused2, samples, received); });
}

int32_t DllKLgetAlarm(int32_t handle, int32_t position, int32_t start, int32_t count,
                      uint8_t* flags, int32_t* received) {
    return guarded([&] {
        const Handle h = lookup(handle);
        const Position at = resolve(h.p(), position);
        put(received, at.channel ? copy_bytes(*at.channel, at, start, count, flags) : 0);
        if (!h.file) return abi::kErrHandle;
        return at.channel ? abi::kOk : abi::kErrIndex;
    });
}

int32_t DllKLgetTimes(int32_t handle, int32_t start, int32_t count, int32_t* seconds,
                      int32_t* ticks, int32_t* received) {
    return guarded([&] {
        const Handle h = lookup(handle);
        put(received, copy_times(h.p(), start, count, seconds, ticks));
        return h.status();
    });
}

int32_t DllKLtoDateTime(int32_t seconds, int32_t* year, int32_t* month, int32_t* day, int32_t* hour,
                        int32_t* minute, int32_t* second) {
    return to_date_time(seconds, year, month, day, hour, minute, second);
}

}  // extern "C"
