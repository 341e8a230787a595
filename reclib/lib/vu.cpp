// The VU family library over the reference format (recorder/abi/vu.h).
#include "recorder/abi/vu.h"

#include "reclib/capi.h"

using namespace qumbrel::reclib;
using namespace qumbrel::reclib::capi;
namespace abi = qumbrel::abi;

namespace {

template <class T>
std::int32_t data(std::int32_t handle, std::int32_t position, std::int32_t start, std::int32_t kind,
                  std::int32_t count, T* samples, std::int32_t* seconds, std::int32_t* ticks) {
    const Handle h = lookup(handle);
    const ParsedFile& p = h.p();
    const Position at = resolve(p, position, kind == 1 && p.kind == Kind::Display);
    const bool inRange = start >= 0 && static_cast<std::uint32_t>(start) < p.timeCount;
    put(seconds, inRange ? p.second_at(static_cast<std::uint32_t>(start)) : 0);
    put(ticks, inRange ? p.tick_at(static_cast<std::uint32_t>(start)) : 0);
    const std::int32_t n = copy_samples(at, start, count, samples);
    if (!h.file) return abi::kErrHandle;
    return at.channel ? n : abi::kErrIndex;
}

}  // namespace

extern "C" {

int32_t DllVUOpenReadFile(const char* path, int32_t* handle) {
    return guarded([&] {
        const std::int32_t h = handles().open(path, Family::VU);
        put(handle, h > 0 ? h : 0);
        return h > 0 ? abi::kOk : h;
    });
}

int32_t DllVUCloseFile(int32_t* handle) {
    if (!handle) return abi::kErrArgument;
    const bool closed = handles().close(*handle);
    *handle = 0;
    return closed ? abi::kOk : abi::kErrHandle;
}

int32_t DllVUGetCnctInfo(int32_t handle, char* deviceCode, int32_t* c1, int32_t* c2, int32_t* c3,
                         int32_t* c4, int32_t* c5, int32_t* c6, int32_t* c7, int32_t* c8,
                         int32_t* c9, int32_t* startKind, int32_t* stopKind, int32_t* c10,
                         int32_t* c11) {
    return guarded([&] {
        const Handle h = lookup(handle);
        const ParsedFile& p = h.p();
        const Fields& f = p.header;
        put(deviceCode, abi::kVuDeviceCodeLen, f.s("deviceCode"));
        put(c1, start_seconds(p));
        put(c2, start_ticks(p));
        put(c3, stop_seconds(p));
        put(c4, stop_ticks(p));
        put(c5, f.i("triggerSeconds"));
        put(c6, f.i("triggerTicks"));
        put(c7, f.i("triggerNo"));
        put(c8, f.i("timeCorrected"));
        put(c9, h.file ? p.status() : 0);
        put(startKind, f.i("startKind"));
        put(stopKind, f.i("stopKind"));
        put(c10, f.i("userFlag"));
        put(c11, f.i("cnct.c11"));
        return h.status();
    });
}

int32_t DllVUGetBatchInfo(int32_t handle, int32_t* startSource, int32_t* stopSource,
                          char* startUser, char* stopUser, int32_t* batchFlag) {
    return guarded([&] {
        const Handle h = lookup(handle);
        const Fields& f = h.p().header;
        put(startSource, f.i("startSource"));
        put(stopSource, f.i("stopSource"));
        put(startUser, abi::kVuUserLen, f.s("startUser"));
        put(stopUser, abi::kVuUserLen, f.s("stopUser"));
        put(batchFlag, f.i("batchFlag"));
        return h.status();
    });
}

int32_t DllVUGetBatchNames(int32_t handle, char* batchName, int32_t* batchNo, int32_t* c1) {
    return guarded([&] {
        const Handle h = lookup(handle);
        const Fields& f = h.p().header;
        put(batchName, abi::kVuBatchNameLen, f.s("batchName"));
        put(batchNo, f.i("batchNo"));
        put(c1, f.i("batchNames.c1"));
        return h.status();
    });
}

int32_t DllVUGetBatchDescription(int32_t handle, int32_t index, char* label, char* text) {
    return guarded([&] {
        const Handle h = lookup(handle);
        bool found = false;
        const Fields& r = record(h.p(), "batchDescription", index, &found);
        put(label, abi::kVuBatchLabelLen, r.s("label"));
        put(text, abi::kVuBatchTextLen, r.s("text"));
        return h.status(found);
    });
}

int32_t DllVUGetBatchComment(int32_t handle, int32_t index, int32_t* seconds, int32_t* ticks,
                             char* user, char* comment) {
    return guarded([&] {
        const Handle h = lookup(handle);
        bool found = false;
        const Fields& r = record(h.p(), "batchComment", index, &found);
        put(seconds, r.i("seconds"));
        put(ticks, r.i("ticks"));
        put(user, abi::kVuUserLen, r.s("user"));
        put(comment, abi::kVuCommentLen, r.s("comment"));
        return h.status(found);
    });
}

int32_t DllVUGetCommonInfo(int32_t handle, char* serialNo, int32_t* c1, int32_t* c2, int32_t* c3,
                           int32_t* c4, char* fileMessage, int32_t* c5, int32_t* c6) {
    return guarded([&] {
        const Handle h = lookup(handle);
        const Fields& f = h.p().header;
        put(serialNo, abi::kVuSerialNoLen, f.s("serialNo"));
        put(c1, f.i("common.c1"));
        put(c2, f.i("common.c2"));
        put(c3, f.i("common.c3"));
        put(c4, f.i("common.c4"));
        put(fileMessage, abi::kVuFileMessageLen, f.s("fileMessage"));
        put(c5, f.i("common.c5"));
        put(c6, f.i("common.c6"));
        return h.status();
    });
}

int32_t DllVUGetSampleDataInfo(int32_t handle, int32_t* samplingSeconds, int32_t* samplingTicks,
                               int32_t* dataCount, int32_t* alarmNum, int32_t* count0,
                               int32_t* count1, int32_t* count2, int32_t* count3) {
    return guarded([&] {
        const Handle h = lookup(handle);
        const ParsedFile& p = h.p();
        const Fields& f = p.header;
        put(samplingSeconds, f.i("samplingSeconds"));
        put(samplingTicks, f.i("samplingTicks"));
        put(dataCount, sample_count(p));
        put(alarmNum, list_count(p, "alarm"));
        put(count0, f.i("count0"));
        put(count1, f.i("count1"));
        put(count2, f.i("count2"));
        put(count3, f.i("count3"));
        return h.status();
    });
}

int32_t DllVUGetGroupNumInfo(int32_t handle, int32_t* groupCount, int32_t* c1) {
    return guarded([&] {
        const Handle h = lookup(handle);
        put(groupCount, list_count(h.p(), "group"));
        put(c1, h.p().header.i("groupWidth"));
        return h.status();
    });
}

int32_t DllVUGetGroupInfo(int32_t handle, int32_t groupIndex, char* name, int32_t* c1, int32_t* c2,
                          int32_t* inUse) {
    return guarded([&] {
        const Handle h = lookup(handle);
        bool found = false;
        const Fields& r = record(h.p(), "group", groupIndex, &found);
        put(name, abi::kVuGroupNameLen, r.s("name"));
        put(c1, r.i("members"));
        put(c2, r.i("c2"));
        put(inUse, found ? r.i("inUse", 1) : 0);
        return h.status(found);
    });
}

int32_t DllVUGetMessageNum(int32_t handle, int32_t* eventNum) {
    return guarded([&] {
        const Handle h = lookup(handle);
        put(eventNum, list_count(h.p(), "message"));
        return h.status();
    });
}

int32_t DllVUGetChannelNumInfo(int32_t handle, int32_t* measChCount, int32_t* mathChCount,
                               int32_t* extChCount, int32_t* c1) {
    return guarded([&] {
        const Handle h = lookup(handle);
        const ParsedFile& p = h.p();
        put(measChCount, meas_count(p));
        put(mathChCount, math_count(p));
        put(extChCount, p.header.i("extChCount"));
        put(c1, p.header.i("channelNum.c1"));
        return h.status();
    });
}

int32_t DllVUGetChannelInfo(int32_t handle, int32_t channelIndex, int32_t* kind, int32_t* dataType,
                            char* channel, char* tag, char* unit, int32_t* decimals,
                            double* scaleLow, double* scaleHigh, int32_t* number1, int32_t* number2,
                            int32_t* number3, int32_t* number4, int32_t* number5) {
    return guarded([&] {
        const Handle h = lookup(handle);
        bool found = false;
        const ChannelView& c = channel_at(h.p(), channelIndex, &found);
        const Fields& f = c.info;
        put(kind, f.i("kind"));
        put(dataType, found ? static_cast<std::int32_t>(c.type) : 0);
        put(channel, abi::kVuChannelLen, f.s("channel"));
        put(tag, abi::kVuTagLen, f.s("tag"));
        put(unit, abi::kVuUnitLen, f.s("unit"));
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

int32_t DllVUGetAlarmEventData(int32_t handle, int32_t index, int32_t* channel, int32_t* levelMask,
                               int32_t* type, int32_t* serial, int32_t* seconds, int32_t* ticks,
                               int32_t* state) {
    return guarded([&] {
        const Handle h = lookup(handle);
        bool found = false;
        const Fields& r = record(h.p(), "alarm", index, &found);
        put(channel, r.i("channel"));
        put(levelMask, r.i("levelMask"));
        put(type, r.i("type"));
        put(serial, r.i("serial"));
        put(seconds, r.i("seconds"));
        put(ticks, r.i("ticks"));
        put(state, r.i("state"));
        return h.status(found);
    });
}

int32_t DllVUGetMessage(int32_t handle, int32_t index, int32_t* type, char* user,
                        int32_t* messageNo, char* message, int32_t* seconds, int32_t* ticks,
                        int32_t* c1, int32_t* c2, int32_t* c3, int32_t* c4) {
    return guarded([&] {
        const Handle h = lookup(handle);
        bool found = false;
        const Fields& r = record(h.p(), "message", index, &found);
        put(type, r.i("type"));
        put(user, abi::kVuUserLen, r.s("user"));
        put(messageNo, r.i("messageNo"));
        put(message, abi::kVuMessageLen, r.s("message"));
        put(seconds, r.i("seconds"));
        put(ticks, r.i("ticks"));
        put(c1, r.i("serial"));
        put(c2, r.i("c2"));
        put(c3, r.i("c3"));
        put(c4, r.i("c4"));
        return h.status(found);
    });
}

int32_t DllVUGetShortData(int32_t handle, int32_t position, int32_t start, int32_t kind,
                          int32_t count, int16_t* samples, int32_t* seconds, int32_t* ticks) {
    return guarded(
        [&] { return data(handle, position, start, kind, count, samples, seconds, ticks); });
}

int32_t DllVUGetLongData(int32_t handle, int32_t position, int32_t start, int32_t kind,
                         int32_t count, int32_t* samples, int32_t* seconds, int32_t* ticks) {
    return guarded(
        [&] { return data(handle, position, start, kind, count, samples, seconds, ticks); });
}

int32_t DllVUGetAlarmData(int32_t handle, int32_t position, int32_t start, int32_t count,
                          uint8_t* flags) {
    return guarded([&] {
        const Handle h = lookup(handle);
        const Position at = resolve(h.p(), position);
        if (!h.file) return abi::kErrHandle;
        if (!at.channel) return abi::kErrIndex;
        return copy_bytes(*at.channel, at, start, count, flags);
    });
}

int32_t DllVUtoDateTime(int32_t seconds, int32_t* year, int32_t* month, int32_t* day, int32_t* hour,
                        int32_t* minute, int32_t* second) {
    return to_date_time(seconds, year, month, day, hour, minute, second);
}

}  // extern "C"
