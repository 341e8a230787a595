#include "reclib/parser.h"

#include <unistd.h>
#include <zlib.h>

#include <algorithm>
#include <array>
#include <cerrno>
#include <cmath>
#include <cstring>
#include <mutex>
#include <vector>

#include "reclib/format.h"

namespace qumbrel::reclib {

namespace {

// Caps on what one file may declare, on top of the bytes actually present.
constexpr std::uint32_t kMaxRecordsPerList = 1'000'000;
constexpr std::size_t kMaxChannels = 4096;
constexpr std::size_t kMaxLists = 256;
// A channel's fields must fit in this much of its section; the samples follow them.
constexpr std::size_t kMaxChannelHead = 1 << 20;
// Reads of the check sum pass.
constexpr std::size_t kChunk = 1 << 20;

class MemorySource final : public ByteSource {
  public:
    explicit MemorySource(std::span<const std::uint8_t> b) : bytes_(b) {}
    std::uint64_t size() const override { return bytes_.size(); }

  protected:
    std::size_t read_some(std::uint64_t offset, void* dst, std::size_t n) const override {
        if (offset >= bytes_.size()) return 0;
        const std::size_t got =
            static_cast<std::size_t>(std::min<std::uint64_t>(n, bytes_.size() - offset));
        std::memcpy(dst, bytes_.data() + offset, got);
        return got;
    }

  private:
    std::span<const std::uint8_t> bytes_;
};

class FileSource final : public ByteSource {
  public:
    FileSource(int fd, std::uint64_t size) : fd_(fd), size_(size) {}
    ~FileSource() override { ::close(fd_); }
    FileSource(const FileSource&) = delete;
    FileSource& operator=(const FileSource&) = delete;
    std::uint64_t size() const override { return size_; }

  protected:
    std::size_t read_some(std::uint64_t offset, void* dst, std::size_t n) const override {
        if (n > kSmallRead) return read_direct(offset, dst, n);
        // Small reads (one sample, one time) come in runs along a few places of the file:
        // each place is served from a window read ahead, not a system call each.
        std::lock_guard lock(windowMutex_);
        Window* hit = nullptr;
        for (auto& w : windows_) {
            if (offset >= w.start && offset + n <= w.start + w.bytes) hit = &w;
        }
        if (!hit) {
            hit = &windows_[nextWindow_];
            nextWindow_ = (nextWindow_ + 1) % windows_.size();
            hit->data.resize(kWindow);
            hit->start = offset;
            hit->bytes = read_direct(offset, hit->data.data(), kWindow);
        }
        const std::uint64_t end = hit->start + hit->bytes;
        const std::size_t got =
            offset >= end ? 0 : static_cast<std::size_t>(std::min<std::uint64_t>(n, end - offset));
        std::memcpy(dst, hit->data.data() + (offset - hit->start), got);
        return got;
    }

  public:
    void forget_read_ahead() const override {
        std::lock_guard lock(windowMutex_);
        for (auto& w : windows_) w.bytes = 0;
    }

  private:
    static constexpr std::size_t kSmallRead = 64;
    static constexpr std::size_t kWindow = 16 * 1024;
    struct Window {
        std::vector<char> data;
        std::uint64_t start = 0;
        std::size_t bytes = 0;
    };

    std::size_t read_direct(std::uint64_t offset, void* dst, std::size_t n) const {
        std::size_t got = 0;
        auto* out = static_cast<char*>(dst);
        while (got < n) {
            const ssize_t r = ::pread(fd_, out + got, n - got, static_cast<off_t>(offset + got));
            if (r < 0 && errno == EINTR) continue;
            if (r <= 0) break;
            got += static_cast<std::size_t>(r);
        }
        return got;
    }

    int fd_;
    std::uint64_t size_;
    mutable std::mutex windowMutex_;
    mutable std::array<Window, 4> windows_;
    mutable std::size_t nextWindow_ = 0;
};

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

// The sections that hold data per sample are read from the source as far as their
// counts go; the samples themselves stay in the source.
bool read_time(const ByteSource& src, std::uint64_t at, std::uint64_t size, ParsedFile& out) {
    if (size < 4) return false;
    std::uint32_t count = 0;
    src.read(at, &count, 4);
    if (count > (size - 4) / 8) return false;
    out.timeCount = count;
    out.seconds = at + 4;
    out.ticks = at + 4 + std::uint64_t{count} * 4;
    return true;
}

bool read_channel(const ByteSource& src, std::uint64_t at, std::uint64_t size, ParsedFile& out) {
    std::vector<std::uint8_t> head(
        static_cast<std::size_t>(std::min<std::uint64_t>(size, kMaxChannelHead)));
    src.read(at, head.data(), head.size());
    Cursor c(head.data(), head.size());
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
    if (!c.ok()) return false;
    const std::uint64_t used = head.size() - c.left();
    const std::size_t width = ch.type == DataType::Int16 ? 2 : 4;
    if (count > (size - used) / (width * ch.series)) return false;
    ch.count = count;
    ch.source = out.source.get();
    ch.data = at + used;
    out.channels.push_back(std::move(ch));
    return true;
}

bool read_bytes(const ByteSource& src, std::uint64_t at, std::uint64_t size, ParsedFile& out) {
    if (size < 9) return false;
    std::uint8_t head[9];
    src.read(at, head, sizeof head);
    Cursor c(head, sizeof head);
    const auto index = c.get<std::uint32_t>();
    const auto what = c.get<std::uint8_t>();
    const auto count = c.get<std::uint32_t>();
    if (index >= out.channels.size() || count > size - 9) return false;
    auto& ch = out.channels[index];
    if (what == format::kBytesAlarms) {
        ch.alarms = at + 9;
        ch.alarmCount = count;
    } else if (what == format::kBytesFlags) {
        ch.flags = at + 9;
        ch.flagCount = count;
    } else {
        return false;
    }
    return true;
}

}  // namespace

void ByteSource::read(std::uint64_t offset, void* dst, std::size_t n) const {
    const std::size_t got = n == 0 ? 0 : read_some(offset, dst, n);
    if (got < n) {
        std::memset(static_cast<char*>(dst) + got, 0, n - got);
        short_.store(true, std::memory_order_relaxed);
    }
}

std::shared_ptr<const ByteSource> memory_source(std::span<const std::uint8_t> bytes) {
    return std::make_shared<MemorySource>(bytes);
}

std::shared_ptr<const ByteSource> file_source(int fd, std::uint64_t size) {
    return std::make_shared<FileSource>(fd, size);
}

namespace {

std::int32_t saturate(float f) {
    if (!(f > -2147483648.0f)) return f != f ? 0 : INT32_MIN;
    if (!(f < 2147483647.0f)) return INT32_MAX;
    return static_cast<std::int32_t>(std::lround(f));
}

// Reads of at most this many bytes at a time keep a bulk read's buffer small.
constexpr std::uint32_t kBulk = 16384;

}  // namespace

std::int32_t ChannelView::sample(int s, std::uint32_t i) const {
    std::int32_t v = 0;
    samples(s, i, 1, &v);
    return v;
}

float ChannelView::fsample(int s, std::uint32_t i) const {
    float f = 0;
    fsamples(s, i, 1, &f);
    return f;
}

void ChannelView::samples(int s, std::uint32_t first, std::uint32_t n, std::int32_t* out) const {
    if (!source) {
        std::fill(out, out + n, 0);
        return;
    }
    const std::size_t width = type == DataType::Int16 ? 2 : 4;
    const std::uint64_t base =
        data + (std::uint64_t{static_cast<std::uint32_t>(s)} * count + first) * width;
    std::uint8_t buf[kBulk * 4];
    for (std::uint32_t done = 0; done < n;) {
        const std::uint32_t k = std::min(n - done, kBulk);
        source->read(base + std::uint64_t{done} * width, buf, k * width);
        for (std::uint32_t j = 0; j < k; ++j) {
            const std::uint8_t* p = buf + std::size_t{j} * width;
            switch (type) {
                case DataType::Int16: {
                    std::int16_t v;
                    std::memcpy(&v, p, 2);
                    out[done + j] = v;
                    break;
                }
                case DataType::Int32:
                    out[done + j] = load_i32(p);
                    break;
                case DataType::Float32: {
                    float f;
                    std::memcpy(&f, p, 4);
                    out[done + j] = saturate(f);
                    break;
                }
            }
        }
        done += k;
    }
}

void ChannelView::fsamples(int s, std::uint32_t first, std::uint32_t n, float* out) const {
    if (type != DataType::Float32 || !source) {
        std::vector<std::int32_t> ints(std::min(n, kBulk));
        for (std::uint32_t done = 0; done < n;) {
            const std::uint32_t k = std::min(n - done, kBulk);
            samples(s, first + done, k, ints.data());
            for (std::uint32_t j = 0; j < k; ++j) out[done + j] = static_cast<float>(ints[j]);
            done += k;
        }
        return;
    }
    source->read(data + (std::uint64_t{static_cast<std::uint32_t>(s)} * count + first) * 4, out,
                 std::size_t{n} * 4);
}

std::uint8_t ChannelView::alarm_at(std::uint32_t i) const {
    std::uint8_t v = 0;
    if (source && i < alarmCount) source->read(alarms + i, &v, 1);
    return v;
}

std::uint8_t ChannelView::flag_at(std::uint32_t i) const {
    std::uint8_t v = 0;
    if (source && i < flagCount) source->read(flags + i, &v, 1);
    return v;
}

void ChannelView::alarm_bytes(std::uint32_t first, std::uint32_t n, std::uint8_t* out) const {
    std::uint32_t k = 0;
    if (source && first < alarmCount) {
        k = std::min(n, alarmCount - first);
        source->read(alarms + first, out, k);
    }
    std::fill(out + k, out + n, 0);
}

std::int32_t ParsedFile::second_at(std::uint32_t i) const {
    std::int32_t v = 0;
    if (i < timeCount) times(i, 1, &v, nullptr);
    return v;
}

std::int32_t ParsedFile::tick_at(std::uint32_t i) const {
    std::int32_t v = 0;
    if (i < timeCount) times(i, 1, nullptr, &v);
    return v;
}

void ParsedFile::times(std::uint32_t first, std::uint32_t n, std::int32_t* secs,
                       std::int32_t* tickOut) const {
    if (!source) return;
    if (secs) source->read(seconds + std::uint64_t{first} * 4, secs, std::size_t{n} * 4);
    if (tickOut) source->read(ticks + std::uint64_t{first} * 4, tickOut, std::size_t{n} * 4);
}

const std::vector<Fields>& ParsedFile::list(std::string_view name) const {
    static const std::vector<Fields> kNone;
    auto it = lists.find(name);
    return it == lists.end() ? kNone : it->second;
}

std::int32_t ParsedFile::status() const {
    const bool shrank = source && source->short_read();
    return std::max(checksumOk && !shrank ? 0 : 1, header.i("status"));
}

bool parse_fields(std::span<const std::uint8_t> bytes, Fields& out) {
    Cursor c(bytes.data(), bytes.size());
    return read_fields(c, out);
}

ParseStatus parse(std::span<const std::uint8_t> bytes, ParsedFile& out) {
    return parse(memory_source(bytes), out);
}

namespace {
ParseStatus parse_source(std::shared_ptr<const ByteSource> source, ParsedFile& out);
}  // namespace

ParseStatus parse(std::shared_ptr<const ByteSource> source, ParsedFile& out) {
    const ParseStatus status = parse_source(source, out);
    // What the parse read ahead is not kept: reads of the samples see the file as it is
    // then (a file cut short since gives zeros and counts as damaged).
    if (source) source->forget_read_ahead();
    return status;
}

namespace {

ParseStatus parse_source(std::shared_ptr<const ByteSource> source, ParsedFile& out) {
    out = ParsedFile{};
    if (!source) return ParseStatus::NotRecorderFile;
    const ByteSource& src = *source;
    out.source = std::move(source);
    const std::uint64_t fileSize = src.size();
    std::uint8_t header[format::kHeaderSize];
    if (fileSize < format::kHeaderSize) return ParseStatus::NotRecorderFile;
    src.read(0, header, sizeof header);
    if (std::memcmp(header, format::kMagic, sizeof format::kMagic) != 0)
        return ParseStatus::NotRecorderFile;
    Cursor h(header + sizeof format::kMagic, format::kHeaderSize - sizeof format::kMagic);
    const auto major = h.get<std::uint16_t>();
    out.minorVersion = h.get<std::uint16_t>();
    const auto family = h.get<std::uint8_t>();
    const auto kind = h.get<std::uint8_t>();
    const auto headerSize = h.get<std::uint16_t>();
    const auto bodyLength = h.get<std::uint64_t>();
    const auto crc = h.get<std::uint32_t>();
    if (major != format::kVersionMajor) return ParseStatus::UnsupportedVersion;
    if (family < 1 || family > 5 || kind < 1 || kind > 3 || headerSize < format::kHeaderSize ||
        headerSize > fileSize) {
        return ParseStatus::NotRecorderFile;
    }
    out.family = static_cast<Family>(family);
    out.kind = static_cast<Kind>(kind);

    const std::uint64_t available = fileSize - headerSize;
    const std::uint64_t length = std::min<std::uint64_t>(bodyLength, available);
    // The check sum over the body, read in chunks.
    {
        std::vector<std::uint8_t> chunk(
            static_cast<std::size_t>(std::min<std::uint64_t>(length, kChunk)));
        uLong bodyCrc = ::crc32_z(0L, Z_NULL, 0);
        for (std::uint64_t at = 0; at < length;) {
            const auto n = static_cast<std::size_t>(std::min<std::uint64_t>(length - at, kChunk));
            src.read(headerSize + at, chunk.data(), n);
            bodyCrc = ::crc32_z(bodyCrc, chunk.data(), n);
            at += n;
        }
        out.checksumOk = bodyLength == length && ::crc32_z(bodyCrc, header + format::kCrcHeaderFrom,
                                                           format::kCrcHeaderLength) == crc;
    }

    bool sound = true;
    std::uint64_t at = headerSize;
    const std::uint64_t end = headerSize + length;
    std::vector<std::uint8_t> section;
    while (end - at >= format::kSectionHeaderSize) {
        std::uint8_t sh[format::kSectionHeaderSize];
        src.read(at, sh, sizeof sh);
        Cursor hc(sh, sizeof sh);
        const auto tag = hc.get<std::uint32_t>();
        const auto size = hc.get<std::uint32_t>();
        at += format::kSectionHeaderSize;
        if (size > end - at) {
            sound = false;  // truncated: the rest is lost
            at = end;
            break;
        }
        bool ok = true;
        switch (tag) {
            case format::kTagHead:
            case format::kTagList: {
                section.resize(size);
                src.read(at, section.data(), size);
                Cursor s(section.data(), size);
                ok = tag == format::kTagHead ? read_fields(s, out.header) : read_list(s, out);
                break;
            }
            case format::kTagTime:
                ok = read_time(src, at, size, out);
                break;
            case format::kTagChannel:
                ok = read_channel(src, at, size, out);
                break;
            case format::kTagBytes:
                ok = read_bytes(src, at, size, out);
                break;
            default:
                break;  // a section of a newer minor version
        }
        at += size;
        sound = sound && ok;
    }
    if (at != end) sound = false;
    if (!sound || src.short_read()) out.checksumOk = false;
    return out.checksumOk ? ParseStatus::Ok : ParseStatus::Damaged;
}

}  // namespace

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
        for (std::uint32_t i = 0; i < v.alarmCount; ++i) ch.alarms.push_back(v.alarm_at(i));
        for (std::uint32_t i = 0; i < v.flagCount; ++i) ch.flags.push_back(v.flag_at(i));
        f.channels.push_back(std::move(ch));
    }
    return f;
}

}  // namespace qumbrel::reclib
