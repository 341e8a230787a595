#include "reclib/capi.h"

#include <fcntl.h>
#include <sys/mman.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>

namespace qumbrel::reclib::capi {

MappedFile::~MappedFile() {
    if (data_) ::munmap(const_cast<std::uint8_t*>(data_), size_);
}

bool MappedFile::open(const char* path) {
    const int fd = ::open(path, O_RDONLY | O_CLOEXEC);
    if (fd < 0) return false;
    struct stat st {};
    bool ok = ::fstat(fd, &st) == 0 && S_ISREG(st.st_mode);
    if (ok && st.st_size > 0) {
        void* p =
            ::mmap(nullptr, static_cast<std::size_t>(st.st_size), PROT_READ, MAP_PRIVATE, fd, 0);
        if (p == MAP_FAILED) {
            ok = false;
        } else {
            data_ = static_cast<const std::uint8_t*>(p);
            size_ = static_cast<std::size_t>(st.st_size);
        }
    }
    ::close(fd);
    return ok;
}

std::int32_t HandleTable::open(const char* path, Family family) {
    if (!path) return abi::kErrArgument;
    auto file = std::make_shared<OpenFile>();
    if (!file->map.open(path)) return abi::kErrOpen;
    const ParseStatus st = parse(file->map.bytes(), file->parsed);
    if (st == ParseStatus::NotRecorderFile || st == ParseStatus::UnsupportedVersion ||
        file->parsed.family != family) {
        return abi::kErrFormat;
    }
    std::lock_guard lock(mutex_);
    if (files_.size() >= static_cast<std::size_t>(abi::kMaxOpenHandles)) {
        auto oldest = std::min_element(files_.begin(), files_.end(), [](auto& a, auto& b) {
            return a.second.lastUse < b.second.lastUse;
        });
        files_.erase(oldest);
    }
    std::int32_t h = next_;
    while (h <= 0 || files_.contains(h)) h = h <= 0 ? 1 : h + 1;
    next_ = h == INT32_MAX ? 1 : h + 1;
    files_.emplace(h, Entry{std::move(file), ++clock_});
    return h;
}

std::shared_ptr<const OpenFile> HandleTable::get(std::int32_t handle) const {
    std::lock_guard lock(mutex_);
    auto it = files_.find(handle);
    if (it == files_.end()) return nullptr;
    it->second.lastUse = ++clock_;
    return it->second.file;
}

bool HandleTable::close(std::int32_t handle) {
    std::lock_guard lock(mutex_);
    return files_.erase(handle) > 0;
}

HandleTable& handles() {
    static HandleTable table;
    return table;
}

const ParsedFile& no_file() {
    static const ParsedFile empty;
    return empty;
}

const Fields& record(const ParsedFile& p, std::string_view list, std::int32_t index, bool* found) {
    static const Fields kEmpty;
    const auto& records = p.list(list);
    const bool ok = index >= 0 && static_cast<std::size_t>(index) < records.size();
    if (found) *found = ok;
    return ok ? records[static_cast<std::size_t>(index)] : kEmpty;
}

const ChannelView& channel_at(const ParsedFile& p, std::int32_t index, bool* found) {
    static const ChannelView kNone;
    const bool ok = index >= 0 && static_cast<std::size_t>(index) < p.channels.size();
    if (found) *found = ok;
    return ok ? p.channels[static_cast<std::size_t>(index)] : kNone;
}

std::int32_t start_seconds(const ParsedFile& p) {
    return p.header.i("startSeconds", p.second_at(0));
}
std::int32_t start_ticks(const ParsedFile& p) {
    return p.header.i("startTicks", p.tick_at(0));
}
std::int32_t stop_seconds(const ParsedFile& p) {
    return p.header.i("stopSeconds", p.timeCount ? p.second_at(p.timeCount - 1) : 0);
}
std::int32_t stop_ticks(const ParsedFile& p) {
    return p.header.i("stopTicks", p.timeCount ? p.tick_at(p.timeCount - 1) : 0);
}

std::int32_t meas_count(const ParsedFile& p) {
    return static_cast<std::int32_t>(
        std::count_if(p.channels.begin(), p.channels.end(), [](auto& c) { return !c.math; }));
}
std::int32_t math_count(const ParsedFile& p) {
    return static_cast<std::int32_t>(p.channels.size()) - meas_count(p);
}
std::int32_t list_count(const ParsedFile& p, std::string_view list) {
    return static_cast<std::int32_t>(p.list(list).size());
}
std::int32_t sample_count(const ParsedFile& p) {
    return static_cast<std::int32_t>(std::min<std::uint32_t>(p.timeCount, INT32_MAX));
}

Position resolve(const ParsedFile& p, std::int32_t position, bool maxSeries) {
    if (position < 0) return {};
    const bool display = p.kind == Kind::Display;
    const auto index = static_cast<std::size_t>(display ? position / 2 : position);
    if (index >= p.channels.size()) return {};
    const int series = maxSeries || (display && position % 2 == 1) ? 1 : 0;
    const ChannelView& ch = p.channels[index];
    if (series >= ch.series) return {};
    return channel_position(p, ch, series);
}

Position channel_position(const ParsedFile& p, const ChannelView& channel, int series) {
    return {&channel, series, std::min(channel.count, p.timeCount)};
}

namespace {

// The range [start, start + n) that exists of `size` elements; n 0 when none.
std::uint32_t span_of(std::uint32_t size, std::int32_t start, std::int32_t count) {
    if (start < 0 || count <= 0 || static_cast<std::uint32_t>(start) >= size) return 0;
    return std::min<std::uint32_t>(static_cast<std::uint32_t>(count),
                                   size - static_cast<std::uint32_t>(start));
}

template <class T, class Get>
std::int32_t copy_with(const Position& at, std::int32_t start, std::int32_t count, T* out,
                       Get get) {
    if (!at.channel || !out) return 0;
    const std::uint32_t n = span_of(at.limit, start, count);
    const auto first = static_cast<std::uint32_t>(start);
    for (std::uint32_t k = 0; k < n; ++k) out[k] = get(*at.channel, at.series, first + k);
    return static_cast<std::int32_t>(n);
}

}  // namespace

std::int32_t copy_samples(const Position& at, std::int32_t start, std::int32_t count,
                          std::int16_t* out) {
    return copy_with(at, start, count, out, [](const ChannelView& c, int s, std::uint32_t i) {
        const std::int32_t v = c.sample(s, i);
        return static_cast<std::int16_t>(v < -32768 ? -32768 : (v > 32767 ? 32767 : v));
    });
}
std::int32_t copy_samples(const Position& at, std::int32_t start, std::int32_t count,
                          std::int32_t* out) {
    return copy_with(at, start, count, out,
                     [](const ChannelView& c, int s, std::uint32_t i) { return c.sample(s, i); });
}
std::int32_t copy_samples(const Position& at, std::int32_t start, std::int32_t count, float* out) {
    return copy_with(at, start, count, out,
                     [](const ChannelView& c, int s, std::uint32_t i) { return c.fsample(s, i); });
}

std::int32_t copy_bytes(const std::uint8_t* data, std::uint32_t size, const Position& at,
                        std::int32_t start, std::int32_t count, std::uint8_t* out) {
    if (!data || !out) return 0;
    const std::uint32_t n = span_of(std::min(size, at.limit), start, count);
    if (n == 0) return 0;
    std::memcpy(out, data + start, n);
    return static_cast<std::int32_t>(n);
}

std::int32_t copy_times(const ParsedFile& p, std::int32_t start, std::int32_t count,
                        std::int32_t* seconds, std::int32_t* ticks) {
    const std::uint32_t n = span_of(p.timeCount, start, count);
    const auto first = static_cast<std::uint32_t>(start);
    for (std::uint32_t k = 0; k < n; ++k) {
        if (seconds) seconds[k] = p.second_at(first + k);
        if (ticks) ticks[k] = p.tick_at(first + k);
    }
    return static_cast<std::int32_t>(n);
}

std::int32_t to_date_time(std::int32_t seconds, std::int32_t* year, std::int32_t* month,
                          std::int32_t* day, std::int32_t* hour, std::int32_t* minute,
                          std::int32_t* second) {
    const CivilTime t = to_civil(seconds);
    put(year, t.year);
    put(month, t.month);
    put(day, t.day);
    put(hour, t.hour);
    put(minute, t.minute);
    put(second, t.second);
    return abi::kOk;
}

}  // namespace qumbrel::reclib::capi
