#include "reclib/parser.h"

#include <zlib.h>

#include <algorithm>
#include <cmath>
#include <cstring>

#include "reclib/format.h"

namespace qumbrel::reclib {

namespace {

// Caps on what one file may declare, on top of the bytes actually present.
constexpr std::uint32_t kMaxRecordsPerList = 1'000'000;
constexpr std::size_t kMaxChannels = 4096;
constexpr std::size_t kMaxLists = 256;

// A read position in a byte range; every read is checked against the end.
class Cursor {
  public:
    Cursor(const std::uint8_t* p, std::size_t n) : p_(p), end_(p + n) {}
    std::size_t left() const { return static_cast<std::size_t>(end_ - p_); }
    bool ok() const { return ok_; }
    const std::uint8_t* here() const { return p_; }

    bool skip(std::size_t n) {
        if (!ok_ || n > left()) return ok_ = false;
        p_ += n;
        return true;
    }
    template <class T>
    T get() {
        T v{};
        if (!ok_ || sizeof(T) > left()) {
            ok_ = false;
            return v;
        }
        std::memcpy(&v, p_, sizeof(T));
        p_ += sizeof(T);
        return v;
    }
    std::string text(std::size_t n) {
        if (!ok_ || n > left()) {
            ok_ = false;
            return {};
        }
        std::string s(reinterpret_cast<const char*>(p_), n);
        p_ += n;
        return s;
    }

  private:
    const std::uint8_t* p_;
    const std::uint8_t* end_;
    bool ok_ = true;
};

std::int32_t load_i32(const std::uint8_t* p) {
    std::int32_t v;
    std::memcpy(&v, p, 4);
    return v;
}

bool read_fields(Cursor& c, Fields& out) {
    const auto n = c.get<std::uint16_t>();
    for (std::uint32_t k = 0; k < n && c.ok(); ++k) {
        const auto nameLen = c.get<std::uint8_t>();
        std::string name = c.text(nameLen);
        const auto type = c.get<std::uint8_t>();
        if (!c.ok() || name.empty()) return false;
        switch (type) {
            case format::kInt32:
                out.put(name, Value{c.get<std::int32_t>()});
                break;
            case format::kFloat64:
                out.put(name, Value{c.get<double>()});
                break;
            case format::kText: {
                const auto len = c.get<std::uint16_t>();
                out.put(name, Value{c.text(len)});
                break;
            }
            default:
                return false;
        }
    }
    return c.ok();
}

bool read_list(Cursor& c, ParsedFile& out) {
    const auto nameLen = c.get<std::uint8_t>();
    std::string name = c.text(nameLen);
    const auto count = c.get<std::uint32_t>();
    if (!c.ok() || name.empty() || count > kMaxRecordsPerList) return false;
    if (out.lists.size() >= kMaxLists && !out.lists.contains(name)) return false;
    auto& records = out.lists[name];
    records.clear();
    // Each record takes at least its 2-byte field count: no reservation beyond the bytes.
    records.reserve(std::min<std::size_t>(count, c.left() / 2));
    for (std::uint32_t k = 0; k < count; ++k) {
        Fields f;
        if (!read_fields(c, f)) return false;
        records.push_back(std::move(f));
    }
    return true;
}

bool read_time(Cursor& c, ParsedFile& out) {
    const auto count = c.get<std::uint32_t>();
    if (!c.ok() || count > c.left() / 8) return false;
    out.timeCount = count;
    out.seconds = c.here();
    out.ticks = c.here() + std::size_t{count} * 4;
    return c.skip(std::size_t{count} * 8);
}

bool read_channel(Cursor& c, ParsedFile& out) {
    ChannelView ch;
    c.get<std::uint32_t>();  // index: channels are kept in file order
    const auto flags = c.get<std::uint8_t>();
    const auto type = c.get<std::uint8_t>();
    ch.series = c.get<std::uint8_t>();
    if (!c.ok() || type > 2 || ch.series < 1 || ch.series > 2) return false;
    if (out.channels.size() >= kMaxChannels) return false;
    ch.math = (flags & format::kChannelMath) != 0;
    ch.type = static_cast<DataType>(type);
    if (!read_fields(c, ch.info)) return false;
    const auto count = c.get<std::uint32_t>();
    const std::size_t width = ch.type == DataType::Int16 ? 2 : 4;
    if (!c.ok() || count > c.left() / (width * ch.series)) return false;
    ch.count = count;
    ch.data = c.here();
    if (!c.skip(std::size_t{count} * width * ch.series)) return false;
    out.channels.push_back(std::move(ch));
    return true;
}

bool read_bytes(Cursor& c, ParsedFile& out) {
    const auto index = c.get<std::uint32_t>();
    const auto what = c.get<std::uint8_t>();
    const auto count = c.get<std::uint32_t>();
    if (!c.ok() || index >= out.channels.size() || count > c.left()) return false;
    auto& ch = out.channels[index];
    if (what == format::kBytesAlarms) {
        ch.alarms = c.here();
        ch.alarmCount = count;
    } else if (what == format::kBytesFlags) {
        ch.flags = c.here();
        ch.flagCount = count;
    } else {
        return false;
    }
    return c.skip(count);
}

}  // namespace

std::int32_t ChannelView::sample(int s, std::uint32_t i) const {
    const std::size_t at = std::size_t{static_cast<std::uint32_t>(s)} * count + i;
    switch (type) {
        case DataType::Int16: {
            std::int16_t v;
            std::memcpy(&v, data + at * 2, 2);
            return v;
        }
        case DataType::Int32:
            return load_i32(data + at * 4);
        case DataType::Float32: {
            const float f = fsample(s, i);
            if (!(f > -2147483648.0f)) return f != f ? 0 : INT32_MIN;
            if (!(f < 2147483647.0f)) return INT32_MAX;
            return static_cast<std::int32_t>(std::lround(f));
        }
    }
    return 0;
}

float ChannelView::fsample(int s, std::uint32_t i) const {
    const std::size_t at = std::size_t{static_cast<std::uint32_t>(s)} * count + i;
    if (type != DataType::Float32) return static_cast<float>(sample(s, i));
    float f;
    std::memcpy(&f, data + at * 4, 4);
    return f;
}

std::int32_t ParsedFile::second_at(std::uint32_t i) const {
    return i < timeCount ? load_i32(seconds + std::size_t{i} * 4) : 0;
}

std::int32_t ParsedFile::tick_at(std::uint32_t i) const {
    return i < timeCount ? load_i32(ticks + std::size_t{i} * 4) : 0;
}

const std::vector<Fields>& ParsedFile::list(std::string_view name) const {
    static const std::vector<Fields> kNone;
    auto it = lists.find(name);
    return it == lists.end() ? kNone : it->second;
}

std::int32_t ParsedFile::status() const {
    return std::max(checksumOk ? 0 : 1, header.i("status"));
}

ParseStatus parse(std::span<const std::uint8_t> bytes, ParsedFile& out) {
    out = ParsedFile{};
    if (bytes.size() < format::kHeaderSize ||
        std::memcmp(bytes.data(), format::kMagic, sizeof format::kMagic) != 0) {
        return ParseStatus::NotRecorderFile;
    }
    Cursor h(bytes.data() + sizeof format::kMagic, format::kHeaderSize - sizeof format::kMagic);
    const auto major = h.get<std::uint16_t>();
    out.minorVersion = h.get<std::uint16_t>();
    const auto family = h.get<std::uint8_t>();
    const auto kind = h.get<std::uint8_t>();
    const auto headerSize = h.get<std::uint16_t>();
    const auto bodyLength = h.get<std::uint64_t>();
    const auto crc = h.get<std::uint32_t>();
    if (major != format::kVersionMajor) return ParseStatus::UnsupportedVersion;
    if (family < 1 || family > 5 || kind < 1 || kind > 3 || headerSize < format::kHeaderSize ||
        headerSize > bytes.size()) {
        return ParseStatus::NotRecorderFile;
    }
    out.family = static_cast<Family>(family);
    out.kind = static_cast<Kind>(kind);

    const std::size_t available = bytes.size() - headerSize;
    const std::size_t length =
        static_cast<std::size_t>(std::min<std::uint64_t>(bodyLength, available));
    const std::uint8_t* body = bytes.data() + headerSize;
    const uLong bodyCrc = ::crc32_z(::crc32_z(0L, Z_NULL, 0), body, length);
    out.checksumOk =
        bodyLength == length &&
        ::crc32_z(bodyCrc, bytes.data() + format::kCrcHeaderFrom, format::kCrcHeaderLength) == crc;

    bool sound = true;
    Cursor c(body, length);
    while (c.left() >= format::kSectionHeaderSize) {
        const auto tag = c.get<std::uint32_t>();
        const auto size = c.get<std::uint32_t>();
        if (size > c.left()) {
            sound = false;  // truncated: the rest is lost
            break;
        }
        Cursor s(c.here(), size);
        c.skip(size);
        bool ok = true;
        switch (tag) {
            case format::kTagHead:
                ok = read_fields(s, out.header);
                break;
            case format::kTagList:
                ok = read_list(s, out);
                break;
            case format::kTagTime:
                ok = read_time(s, out);
                break;
            case format::kTagChannel:
                ok = read_channel(s, out);
                break;
            case format::kTagBytes:
                ok = read_bytes(s, out);
                break;
            default:
                break;  // a section of a newer minor version
        }
        sound = sound && ok;
    }
    if (c.left() != 0) sound = false;
    if (!sound) out.checksumOk = false;
    return out.checksumOk ? ParseStatus::Ok : ParseStatus::Damaged;
}

RecorderFile to_model(const ParsedFile& p) {
    RecorderFile f;
    f.family = p.family;
    f.kind = p.kind;
    f.header = p.header;
    for (const auto& [name, records] : p.lists) f.lists[name] = records;
    for (std::uint32_t i = 0; i < p.timeCount; ++i) {
        f.seconds.push_back(p.second_at(i));
        f.ticks.push_back(p.tick_at(i));
    }
    for (const auto& v : p.channels) {
        Channel ch;
        ch.info = v.info;
        ch.type = v.type;
        ch.math = v.math;
        for (int s = 0; s < v.series; ++s) {
            auto& ints = s == 0 ? ch.values : ch.values2;
            auto& floats = s == 0 ? ch.fvalues : ch.fvalues2;
            for (std::uint32_t i = 0; i < v.count; ++i) {
                if (v.type == DataType::Float32) {
                    floats.push_back(v.fsample(s, i));
                } else {
                    ints.push_back(v.sample(s, i));
                }
            }
        }
        ch.alarms.assign(v.alarms, v.alarms + v.alarmCount);
        ch.flags.assign(v.flags, v.flags + v.flagCount);
        f.channels.push_back(std::move(ch));
    }
    return f;
}

}  // namespace qumbrel::reclib
