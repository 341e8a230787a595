#include "reclib/simulate.h"

#include <algorithm>
#include <cstdio>

#include "reclib/civil.h"

namespace qumbrel::reclib {

namespace {

bool wide(Family f) {
    return f == Family::VU || f == Family::HN;
}

std::string numbered(const char* prefix, std::int32_t n, int digits) {
    char buf[32];
    std::snprintf(buf, sizeof buf, "%s%0*d", prefix, digits, static_cast<int>(n));
    return buf;
}

std::int32_t power10(std::int32_t decimals) {
    std::int32_t p = 1;
    for (std::int32_t i = 0; i < decimals && i < 6; ++i) p *= 10;
    return p;
}

// Sample times: start plus i intervals, as seconds and family ticks.
void make_times(RecorderFile& f, const SimOptions& o) {
    const std::int32_t tps = ticks_per_second(o.family);
    f.seconds.resize(static_cast<std::size_t>(o.samples));
    f.ticks.resize(static_cast<std::size_t>(o.samples));
    for (std::int64_t i = 0; i < o.samples; ++i) {
        const std::int64_t ms = i * o.intervalMs;
        f.seconds[static_cast<std::size_t>(i)] =
            static_cast<std::int32_t>(o.startSeconds + ms / 1000);
        f.ticks[static_cast<std::size_t>(i)] = static_cast<std::int32_t>(ms % 1000 * tps / 1000);
    }
}

DataType channel_type(const SimOptions& o, std::int32_t index, bool math) {
    if (o.family == Family::HN) {
        return index % 3 == 2 ? DataType::Float32
                              : (index % 3 == 1 ? DataType::Int32 : DataType::Int16);
    }
    return math ? DataType::Int32 : DataType::Int16;
}

// A bounded random walk per channel; display files get a spread around it.
void make_samples(Channel& ch, const SimOptions& o, Prng& rng) {
    const auto n = static_cast<std::size_t>(o.samples);
    // HN files have one series whatever their kind.
    const bool display = o.kind == Kind::Display && o.family != Family::HN;
    const std::int32_t limit = ch.type == DataType::Int16 ? 30000 : 2'000'000;
    std::int32_t v = rng.range(-limit / 10, limit / 10);
    std::vector<std::int32_t> lo(n), hi(display ? n : 0);
    for (std::size_t i = 0; i < n; ++i) {
        v = std::clamp(v + rng.range(-100, 100), -limit, limit);
        lo[i] = v;
        if (display) {
            const std::int32_t spread = rng.range(0, 50);
            lo[i] = v - spread;
            hi[i] = v + spread;
        }
    }
    if (ch.type == DataType::Float32) {
        const float scale = static_cast<float>(power10(o.decimals));
        ch.fvalues.resize(n);
        for (std::size_t i = 0; i < n; ++i) ch.fvalues[i] = static_cast<float>(lo[i]) / scale;
        ch.fvalues2.resize(hi.size());
        for (std::size_t i = 0; i < hi.size(); ++i)
            ch.fvalues2[i] = static_cast<float>(hi[i]) / scale;
    } else {
        ch.values = std::move(lo);
        ch.values2 = std::move(hi);
    }
    if (o.family == Family::VU || o.family == Family::KL || o.family == Family::HN) {
        ch.alarms.assign(n, 0);
        for (std::size_t i = 0; i < n; ++i) {
            if (rng.next() % 50 == 0) ch.alarms[i] = static_cast<std::uint8_t>(rng.range(1, 8));
        }
    }
    if (o.family == Family::HN) ch.flags.assign(n, 0);
}

Channel make_channel(const SimOptions& o, std::int32_t index, bool math, Prng& rng) {
    Channel ch;
    ch.math = math;
    ch.type = channel_type(o, index, math);
    const std::int32_t number = math ? 31 + (index - o.channels) : index + 1;
    Fields& f = ch.info;
    if (o.family == Family::HN) {
        f.set("channelNo", number)
            .set("tag", numbered("TAG", number, 3))
            .set("text", numbered("Channel ", number, 1))
            .set("unit",
                 "\xB0"
                 "C")
            .set("fifoId", 1)
            .set("fifoType", 0)
            .set("decimals", o.decimals)
            .set("unitIndex", 0)
            .set("flags", 0)
            .set("scaleLow", 0.0)
            .set("scaleHigh", 100.0);
    } else {
        f.set("kind", math ? 2 : 1)
            .set("channel", numbered("CH", number, 3))
            .set("tag", numbered("Tag ", number, 1))
            .set("unit",
                 "\xB0"
                 "C")
            .set("decimals", o.decimals)
            .set("scaleLow", -100.0)
            .set("scaleHigh", 100.0)
            .set("number1", 0)
            .set("number2", number)
            .set("number3", 0)
            .set("number4", 0)
            .set("number5", 0);
    }
    make_samples(ch, o, rng);
    return ch;
}

void make_header(RecorderFile& f, const SimOptions& o) {
    Fields& h = f.header;
    const bool display = o.kind == Kind::Display;
    const std::int32_t tps = ticks_per_second(o.family);
    const std::int32_t last = static_cast<std::int32_t>(o.samples ? o.samples - 1 : 0);
    h.set("serialNo", "S12345678")
        .set("fileMessage", "Simulated recording")
        .set("samplingSeconds", o.intervalMs / 1000)
        .set("samplingTicks", o.intervalMs % 1000 * tps / 1000)
        .set("startSeconds",
             f.seconds.empty() ? static_cast<std::int32_t>(o.startSeconds) : f.seconds.front())
        .set("startTicks", f.ticks.empty() ? 0 : f.ticks.front())
        .set("stopSeconds", f.seconds.empty() ? static_cast<std::int32_t>(o.startSeconds)
                                              : f.seconds[static_cast<std::size_t>(last)])
        .set("stopTicks", f.ticks.empty() ? 0 : f.ticks[static_cast<std::size_t>(last)])
        .set("triggerNo", 0)
        .set("timeCorrected", 0)
        .set("startKind", 0)
        .set("stopKind", 0)
        .set("userFlag", 0)
        .set("extChCount", 0)
        .set("groupWidth", 6);
    switch (o.family) {
        case Family::VT:
            h.set("deviceType", display ? "VT210" : "VT110").set("typeCode", display ? 49 : 48);
            h.set("startCode", 0).set("stopCode", 0);
            break;
        case Family::VU:
            h.set("deviceCode", display ? "A2" : "A1");
            break;
        case Family::VQ:
            h.set("deviceCode", display ? "7A" : "79")
                .set("deviceType", "VQ110")
                .set("serial", "Q1234567");
            break;
        case Family::KL:
            h.set("deviceCode", o.kind == Kind::Tlog ? "53" : (display ? "52" : "51"))
                .set("deviceType", "KL1100")
                .set("serial", "K1234567")
                .set("ctrlChCount", 1);
            break;
        case Family::HN:
            h.set("fileState", 0).set("post", 0).set("creator", 1).set("headerType", 1);
            h.set("startReason", 1).set("stopReason", 1).set("samplingMs", o.intervalMs);
            h.set("comment", "Simulated recording");
            break;
    }
    if (o.batch) {
        h.set("batchFlag", 1)
            .set("batchName", "Batch A")
            .set("batchNo", 42)
            .set("application", "Application")
            .set("supervisor", "Supervisor")
            .set("manager", "Manager")
            .set("commentUser", "Operator")
            .set("commentSeconds", static_cast<std::int32_t>(o.startSeconds))
            .set("comment1", "Comment 1")
            .set("comment2", "Comment 2")
            .set("comment3", "Comment 3")
            .set("level1", "Level 1")
            .set("level2", "Level 2")
            .set("level3", "Level 3")
            .set("startUser", "Operator")
            .set("stopUser", "Operator");
        auto& comments = f.list("batchComment");
        for (int i = 0; i < 3; ++i) {
            comments.push_back(Fields{}
                                   .set("seconds", static_cast<std::int32_t>(o.startSeconds))
                                   .set("ticks", 0)
                                   .set("user", "Operator")
                                   .set("comment", numbered("Comment ", i + 1, 1)));
        }
        if (o.family == Family::VU) {
            auto& desc = f.list("batchDescription");
            for (int i = 0; i < 8; ++i) {
                desc.push_back(Fields{}
                                   .set("label", numbered("Label ", i + 1, 1))
                                   .set("text", numbered("Text ", i + 1, 1)));
            }
        }
    } else {
        h.set("batchFlag", 0);
    }
}

// The time of a random sample, for alarms and messages.
std::pair<std::int32_t, std::int32_t> some_time(const RecorderFile& f, const SimOptions& o,
                                                Prng& rng) {
    if (f.seconds.empty()) return {static_cast<std::int32_t>(o.startSeconds), 0};
    const auto i = static_cast<std::size_t>(rng.next() % f.seconds.size());
    return {f.seconds[i], f.ticks[i]};
}

void make_records(RecorderFile& f, const SimOptions& o, Prng& rng) {
    const std::int32_t nch = o.channels + o.mathChannels;
    auto& groups = f.list("group");
    for (int g = 0; g < 2; ++g) {
        groups.push_back(Fields{}.set("name", numbered("Group ", g + 1, 1)).set("members", nch));
    }
    auto& alarms = f.list("alarm");
    for (std::int32_t i = 0; i < o.alarms; ++i) {
        auto [s, t] = some_time(f, o, rng);
        const std::int32_t released = rng.range(0, 1);
        Fields a;
        a.set("channel", nch ? rng.range(0, nch - 1) : 0)
            .set("level", rng.range(0, 3))
            .set("type", rng.range(1, 8))
            .set("serial", i + 1);
        if (o.family == Family::VU) {
            a.set("levelMask", 1 << rng.range(0, 3))
                .set("seconds", s)
                .set("ticks", t)
                .set("state", rng.range(0, 2));
        } else if (o.family == Family::HN) {
            a.set("seconds", s);
        } else {
            a.set("occurSeconds", s).set("occurTicks", t);
            a.set("releaseSerial", released ? i + 1 : 0)
                .set("releaseSeconds", released ? s + 10 : 0)
                .set("releaseTicks", 0);
            if (o.family == Family::VQ || o.family == Family::KL) {
                a.set("ackSerial", i + 1)
                    .set("ackSeconds", s + 5)
                    .set("ackTicks", 0)
                    .set("user", "Operator")
                    .set("ackLevel", 0);
                a.set("source", rng.range(0, 9)).set("state", rng.range(0, 3));
            }
        }
        alarms.push_back(std::move(a));
    }
    auto& messages = f.list(o.family == Family::HN ? "mark" : "message");
    for (std::int32_t i = 0; i < o.messages; ++i) {
        auto [s, t] = some_time(f, o, rng);
        Fields m;
        if (o.family == Family::HN) {
            m.set("type", 1 << rng.range(0, 5))
                .set("creator", 0)
                .set("seconds", s)
                .set("ticks", t)
                .set("text", numbered("Mark ", i + 1, 1));
        } else {
            m.set("serial", i + 1)
                .set("seconds", s)
                .set("ticks", t)
                .set("message", numbered("Message ", i + 1, 1))
                .set("messageNo", i % 100)
                .set("source", rng.range(0, 4))
                .set("user", "Operator");
            if (o.family == Family::VU) m.set("type", rng.range(0, 4));
        }
        messages.push_back(std::move(m));
    }
    const std::int32_t start = static_cast<std::int32_t>(o.startSeconds);
    switch (o.family) {
        case Family::VQ: {
            auto& sts = f.list("signinSts");
            auto& inf = f.list("signinInf");
            for (int i = 0; i < 3; ++i) {
                sts.push_back(Fields{}
                                  .set("result", i - 1)
                                  .set("name", numbered("Signer ", i + 1, 1))
                                  .set("comment", "Checked")
                                  .set("seconds", start)
                                  .set("ticks", 0)
                                  .set("host", "HOST"));
                inf.push_back(Fields{}
                                  .set("c1", i)
                                  .set("c2", 0)
                                  .set("user", numbered("Signer ", i + 1, 1))
                                  .set("c3", "")
                                  .set("c4", 0)
                                  .set("c5", ""));
            }
            auto& log = f.list("opeLog");
            const std::int32_t codes[] = {0, 499, 500, 600};
            for (int i = 0; i < 4; ++i) {
                log.push_back(Fields{}
                                  .set("seconds", start + i)
                                  .set("ticks", 0)
                                  .set("time2", 0)
                                  .set("message", i)
                                  .set("serial", i + 1)
                                  .set("source", i)
                                  .set("value", 0)
                                  .set("user", i % 2 ? "Operator" : "")
                                  .set("errorCode", codes[i])
                                  .set("extra", ""));
            }
            break;
        }
        case Family::KL: {
            f.list("loop").push_back(Fields{}
                                         .set("loop", 1)
                                         .set("tag", "LOOP1")
                                         .set("unit",
                                              "\xB0"
                                              "C"));
            f.list("ctrlMode")
                .push_back(Fields{}
                               .set("loop", 1)
                               .set("kind", 0)
                               .set("seconds", start)
                               .set("ticks", 0)
                               .set("mode", 32)
                               .set("operation", 1));
            f.list("tpvEvent")
                .push_back(Fields{}
                               .set("kind", 0)
                               .set("no", 1)
                               .set("channel", 0)
                               .set("seconds", start)
                               .set("ticks", 0)
                               .set("type", 2)
                               .set("value", 1234)
                               .set("decimals", o.decimals));
            break;
        }
        case Family::HN: {
            f.list("unit").push_back(Fields{}.set("number", 1).set("serial", 0x12AB34CD));
            f.list("fifo").push_back(
                Fields{}.set("fifoId", 1).set("fifoType", 0).set("intervalMs", o.intervalMs));
            break;
        }
        default:
            break;
    }
}

}  // namespace

std::string check(const SimOptions& o) {
    const std::int32_t maxMeas = wide(o.family) ? kSimMaxChannelsWide : kSimMaxMeasChannels;
    if (o.channels < 0 || o.channels > maxMeas) {
        return "--channels must lie between 0 and " + std::to_string(maxMeas) + " for " +
               std::string(family_name(o.family));
    }
    if (o.mathChannels < 0 || o.mathChannels > kSimMaxMathChannels) {
        return "--math-channels must lie between 0 and " + std::to_string(kSimMaxMathChannels);
    }
    if (o.samples < 0 || o.samples > kSimMaxSamples) {
        return "--samples must lie between 0 and " + std::to_string(kSimMaxSamples);
    }
    if (o.samples * (o.channels + o.mathChannels) > kSimMaxValues) {
        return "channels times samples must not exceed " + std::to_string(kSimMaxValues);
    }
    if (o.intervalMs <= 0 || o.intervalMs > 86'400'000)
        return "--interval-ms must lie between 1 and 86400000";
    const std::int64_t end = o.startSeconds + o.samples * std::int64_t{o.intervalMs} / 1000 + 1;
    if (o.startSeconds < 0 || end > INT32_MAX)
        return "the recording must lie between 1970 and 2038";
    if (o.alarms < 0 || o.alarms > kSimMaxRecords || o.messages < 0 ||
        o.messages > kSimMaxRecords) {
        return "--alarms and --messages must lie between 0 and " + std::to_string(kSimMaxRecords);
    }
    if (o.decimals < 0 || o.decimals > 6) return "--decimals must lie between 0 and 6";
    if (o.kind == Kind::Tlog && o.family != Family::KL) return "only KL has TLOG files";
    return {};
}

RecorderFile simulate(const SimOptions& o) {
    RecorderFile f;
    f.family = o.family;
    f.kind = o.kind;
    Prng rng(o.seed);
    make_times(f, o);
    make_header(f, o);
    for (std::int32_t i = 0; i < o.channels + o.mathChannels; ++i) {
        f.channels.push_back(make_channel(o, i, i >= o.channels, rng));
    }
    make_records(f, o, rng);
    return f;
}

bool parse_time(std::string_view text, std::int64_t& seconds) {
    int y, mo, d, h, mi, s;
    char tail;
    const std::string t(text);
    if (std::sscanf(t.c_str(), "%4d-%2d-%2d %2d:%2d:%2d%c", &y, &mo, &d, &h, &mi, &s, &tail) != 6) {
        return false;
    }
    if (y < 1970 || y > 2037 || mo < 1 || mo > 12 || d < 1 || d > 31 || h > 23 || mi > 59 ||
        s > 59 || h < 0 || mi < 0 || s < 0) {
        return false;
    }
    const CivilTime ct{y, mo, d, h, mi, s};
    seconds = from_civil(ct);
    return to_civil(seconds).day == d;  // 31 February is no date
}

}  // namespace qumbrel::reclib
