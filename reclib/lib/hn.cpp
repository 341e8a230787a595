// The HN family library over the reference format (recorder/abi/hn.h).
#include "recorder/abi/hn.h"

#include <algorithm>
#include <cstdio>

#include "reclib/capi.h"

using namespace qumbrel::reclib;
using namespace qumbrel::reclib::capi;
namespace abi = qumbrel::abi;

namespace {

bool has_alarm_data(const ParsedFile& p) {
    return std::any_of(p.channels.begin(), p.channels.end(),
                       [](const ChannelView& c) { return c.alarmCount > 0; });
}

// The stored type, unless the channel names a type code of its own (a code the program
// does not know, say).
std::int32_t channel_data_type(const ChannelView& c) {
    if (c.info.find("dataType")) return c.info.i("dataType");
    return c.type == DataType::Int16 ? abi::kHnDataTypeShort : abi::kHnDataTypeLong;
}

std::int32_t channel_flags(const ChannelView& c) {
    const std::int32_t f = c.info.i("flags");
    return c.type == DataType::Float32 ? (f | abi::kHnFlagFloat) : (f & ~abi::kHnFlagFloat);
}

const Fields* find_fifo(const ParsedFile& p, std::int32_t fifoId, std::int32_t fifoType) {
    for (const Fields& f : p.list("fifo")) {
        if (f.i("fifoId") == fifoId && f.i("fifoType") == fifoType) return &f;
    }
    return nullptr;
}

template <class T>
std::int32_t fifo_data(std::int32_t handle, std::int32_t fifoId, std::int32_t fifoType,
                       std::int32_t channel, std::int32_t count, std::int32_t start, T* samples,
                       std::int32_t* seconds, std::int32_t* ticks, std::int32_t* flags,
                       std::int32_t* alarms) {
    const Handle h = lookup(handle);
    if (!h.file) return abi::kErrHandle;
    bool found = false;
    const ChannelView& c = channel_at(h.p(), channel, &found);
    if (!found || c.info.i("fifoId") != fifoId || c.info.i("fifoType") != fifoType) {
        return abi::kErrIndex;
    }
    const std::int32_t n = copy_samples(channel_position(h.p(), c, 0), start, count, samples);
    if (n <= 0) return n;
    const auto first = static_cast<std::uint32_t>(start);
    const auto count32 = static_cast<std::uint32_t>(n);
    h.p().times(first, count32, seconds, ticks);
    for (std::uint32_t k = 0; k < count32; ++k) {
        if (flags) flags[k] = c.flag_at(first + k);
        if (alarms) alarms[k] = c.alarm_at(first + k);
    }
    return n;
}

}  // namespace

extern "C" {

int32_t DllHNOpenReadFile(const char* path, int32_t* handle) {
    return guarded([&] {
        const std::int32_t h = handles().open(path, Family::HN);
        put(handle, h > 0 ? h : 0);
        return h > 0 ? abi::kOk : h;
    });
}

int32_t DllHNCloseReadFile(int32_t* handle) {
    if (!handle) return abi::kErrArgument;
    const bool closed = handles().close(*handle);
    *handle = 0;
    return closed ? abi::kOk : abi::kErrHandle;
}

int32_t DllHNGetFileHeader(int32_t handle, int16_t* fileState, int16_t* post, int32_t* c1,
                           int32_t* c2, int32_t* c3, int32_t* creator, int32_t* startSeconds,
                           int32_t* startTicks, int32_t* stopSeconds, int32_t* stopTicks,
                           int32_t* startReason, int32_t* stopReason, int32_t* unitCount,
                           int32_t* groupCount, int32_t* commentLength, int32_t* channelCount,
                           int32_t* dataCount, int32_t* eventNum, int32_t* alarmCount,
                           int32_t* alarmFlag, int32_t* samplingMs, int32_t* c4, int32_t* c5,
                           int32_t* c6, int32_t* c7, int32_t* c8) {
    return guarded([&] {
        const Handle h = lookup(handle);
        const ParsedFile& p = h.p();
        const Fields& f = p.header;
        put(fileState, f.i("fileState"));
        put(post, f.i("post"));
        put(c1, h.file ? f.i("headerType", 1) : 0);
        put(c2, f.i("timeCorrected"));
        put(c3, h.file ? p.status() : 0);
        put(creator, f.i("creator"));
        put(startSeconds, start_seconds(p));
        put(startTicks, start_ticks(p));
        put(stopSeconds, stop_seconds(p));
        put(stopTicks, stop_ticks(p));
        put(startReason, f.i("startReason"));
        put(stopReason, f.i("stopReason"));
        put(unitCount, list_count(p, "unit"));
        put(groupCount, list_count(p, "group"));
        put(commentLength, static_cast<std::int32_t>(f.s("comment").size()));
        put(channelCount, static_cast<std::int32_t>(p.channels.size()));
        put(dataCount, sample_count(p));
        put(eventNum, list_count(p, "mark"));
        put(alarmCount, list_count(p, "alarm"));
        put(alarmFlag, has_alarm_data(p) ? 1 : 0);
        put(samplingMs, f.i("samplingMs"));
        put(c4, f.i("header.c4"));
        put(c5, f.i("header.c5"));
        put(c6, f.i("header.c6"));
        put(c7, f.i("header.c7"));
        put(c8, f.i("header.c8"));
        return h.status();
    });
}

int32_t DllHNGetFileComment(int32_t handle, int32_t commentLength, char* comment) {
    return guarded([&] {
        if (commentLength < 0) return abi::kErrArgument;
        const Handle h = lookup(handle);
        put(comment, commentLength, h.p().header.s("comment"));
        return h.status();
    });
}

int32_t DllHNGetFileGroupName(int32_t handle, int32_t groupIndex, char* name) {
    return guarded([&] {
        const Handle h = lookup(handle);
        bool found = false;
        const Fields& r = record(h.p(), "group", groupIndex, &found);
        put(name, abi::kHnGroupNameLen, r.s("name"));
        return h.status(found);
    });
}

int32_t DllHNGetFileUnitHeader(int32_t handle, int32_t unitIndex, int32_t* c1, int32_t* serial,
                               int32_t* c2, int32_t* c3) {
    return guarded([&] {
        const Handle h = lookup(handle);
        bool found = false;
        const Fields& r = record(h.p(), "unit", unitIndex, &found);
        put(c1, r.i("number"));
        put(serial, r.i("serial"));
        put(c2, r.i("c2"));
        put(c3, r.i("c3"));
        return h.status(found);
    });
}

int32_t DllHNSerialToString(int32_t* serial, char* text) {
    if (!serial) return abi::kErrArgument;
    char buf[16];
    std::snprintf(buf, sizeof buf, "%08X", static_cast<unsigned>(*serial));
    put(text, abi::kHnSerialTextLen, buf);
    return abi::kOk;
}

int32_t DllHNGetFileChannelInfo(int32_t handle, int32_t channelIndex, int32_t* channelNo,
                                int32_t* c1, char* tag, char* text, char* unit, int32_t* fifoId,
                                int32_t* fifoType, int32_t* c2, int32_t* c3, int32_t* dataType,
                                int32_t* flags, double* scaleLow, double* scaleHigh, int32_t* c4,
                                int32_t* c5) {
    return guarded([&] {
        const Handle h = lookup(handle);
        bool found = false;
        const ChannelView& c = channel_at(h.p(), channelIndex, &found);
        const Fields& f = c.info;
        put(channelNo, f.i("channelNo"));
        put(c1, f.i("c1"));
        put(tag, abi::kHnTagLen, f.s("tag"));
        put(text, abi::kHnChannelTextLen, f.s("text"));
        put(unit, abi::kHnUnitLen, f.s("unit"));
        put(fifoId, f.i("fifoId"));
        put(fifoType, f.i("fifoType"));
        put(c2, f.i("decimals"));
        put(c3, f.i("unitIndex"));
        put(dataType, found ? channel_data_type(c) : 0);
        put(flags, found ? channel_flags(c) : 0);
        put(scaleLow, f.d("scaleLow"));
        put(scaleHigh, f.d("scaleHigh"));
        put(c4, f.i("c4"));
        put(c5, f.i("c5"));
        return h.status(found);
    });
}

int32_t DllHNGetFileFifoHeader(int32_t handle, int32_t fifoId, int32_t fifoType,
                               int32_t* intervalMs, int32_t* dataCount, int32_t* startSeconds,
                               int32_t* startTicks, int32_t* stopSeconds, int32_t* stopTicks,
                               int32_t* channelCount, int32_t* c1, int32_t* c2, int32_t* c3) {
    return guarded([&] {
        const Handle h = lookup(handle);
        const ParsedFile& p = h.p();
        static const Fields kNone;
        const Fields* fifo = find_fifo(p, fifoId, fifoType);
        const Fields& r = fifo ? *fifo : kNone;
        const bool found = fifo != nullptr;
        put(intervalMs, r.i("intervalMs"));
        put(dataCount, found ? sample_count(p) : 0);
        put(startSeconds, found ? start_seconds(p) : 0);
        put(startTicks, found ? start_ticks(p) : 0);
        put(stopSeconds, found ? stop_seconds(p) : 0);
        put(stopTicks, found ? stop_ticks(p) : 0);
        put(channelCount, found ? static_cast<std::int32_t>(
                                      std::count_if(p.channels.begin(), p.channels.end(),
                                                    [&](const ChannelView& c) {
                                                        return c.info.i("fifoId") == fifoId &&
                                                               c.info.i("fifoType") == fifoType;
                                                    }))
                                : 0);
        put(c1, r.i("c1"));
        put(c2, r.i("c2"));
        put(c3, r.i("c3"));
        return h.status(found);
    });
}

int32_t DllHNGetFileAlarmInfo(int32_t handle, int32_t alarmCount, int32_t index, int32_t* a,
                              int32_t* b, int32_t* c) {
    return guarded([&] {
        const Handle h = lookup(handle);
        bool found = false;
        const Fields& r = record(h.p(), "alarm", index < alarmCount ? index : -1, &found);
        put(a, r.i("level"));
        put(b, r.i("type"));
        put(c, r.i("seconds"));
        return h.status(found);
    });
}

int32_t DllHNGetFileMarkData(int32_t handle, int32_t index, int16_t* type, int16_t* creator,
                             int32_t* seconds, int32_t* ticks, char* text) {
    return guarded([&] {
        const Handle h = lookup(handle);
        bool found = false;
        const Fields& r = record(h.p(), "mark", index, &found);
        put(type, r.i("type"));
        put(creator, r.i("creator"));
        put(seconds, r.i("seconds"));
        put(ticks, r.i("ticks"));
        put(text, abi::kHnMarkTextLen, r.s("text"));
        return h.status(found);
    });
}

int32_t DllHNGetFileFifoShortData(int32_t handle, int32_t fifoId, int32_t fifoType, int32_t channel,
                                  int32_t count, int32_t start, int16_t* samples, int32_t* seconds,
                                  int32_t* ticks, int32_t* flags, int32_t* alarms) {
    return guarded([&] {
        return fifo_data(handle, fifoId, fifoType, channel, count, start, samples, seconds, ticks,
                         flags, alarms);
    });
}

int32_t DllHNGetFileFifoLongData(int32_t handle, int32_t fifoId, int32_t fifoType, int32_t channel,
                                 int32_t count, int32_t start, int32_t* samples, int32_t* seconds,
                                 int32_t* ticks, int32_t* flags, int32_t* alarms) {
    return guarded([&] {
        return fifo_data(handle, fifoId, fifoType, channel, count, start, samples, seconds, ticks,
                         flags, alarms);
    });
}

int32_t DllHNGetFileFifoFloatData(int32_t handle, int32_t fifoId, int32_t fifoType, int32_t channel,
                                  int32_t count, int32_t start, float* samples, int32_t* seconds,
                                  int32_t* ticks, int32_t* flags, int32_t* alarms) {
    return guarded([&] {
        return fifo_data(handle, fifoId, fifoType, channel, count, start, samples, seconds, ticks,
                         flags, alarms);
    });
}

int32_t DllHNtoDateTime(int32_t seconds, int32_t* year, int32_t* month, int32_t* day, int32_t* hour,
                        int32_t* minute, int32_t* second) {
    return to_date_time(seconds, year, month, day, hour, minute, second);
}

}  // extern "C"
