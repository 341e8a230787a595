#include "reclib/capi.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>

namespace qumbrel::reclib::capi {

std::int32_t HandleTable::open(const char* path, Family family) {
    if (!path) return abi::kErrArgument;
    const int fd = ::open(path, O_RDONLY | O_CLOEXEC | O_NONBLOCK);
    if (fd < 0) return abi::kErrOpen;
    struct stat st {};
    if (::fstat(fd, &st) != 0 || !S_ISREG(st.st_mode)) {
        ::close(fd);
        return abi::kErrOpen;
    }
    const auto same = [&](const OpenFile& f) {
        return f.device == static_cast<std::uint64_t>(st.st_dev) &&
               f.inode == static_cast<std::uint64_t>(st.st_ino) &&
               f.size == static_cast<std::uint64_t>(st.st_size) &&
               f.mtimeNs == st.st_mtim.tv_sec * 1'000'000'000LL + st.st_mtim.tv_nsec;
    };
    std::shared_ptr<const OpenFile> shared;
    {
        std::lock_guard lock(mutex_);
        if (auto it = byPath_.find(path); it != byPath_.end()) {
            shared = it->second.lock();
            if (!shared || !same(*shared)) {
                shared.reset();
                byPath_.erase(it);
            }
        }
    }
    if (shared) {
        ::close(fd);
    } else {
        auto file = std::make_shared<OpenFile>();
        file->path = path;
        file->device = static_cast<std::uint64_t>(st.st_dev);
        file->inode = static_cast<std::uint64_t>(st.st_ino);
        file->size = static_cast<std::uint64_t>(st.st_size);
        file->mtimeNs = st.st_mtim.tv_sec * 1'000'000'000LL + st.st_mtim.tv_nsec;
        const ParseStatus status =
            parse(file_source(fd, static_cast<std::uint64_t>(st.st_size)), file->parsed);
        if (status == ParseStatus::NotRecorderFile || status == ParseStatus::UnsupportedVersion)
            return abi::kErrFormat;
        shared = std::move(file);
        std::lock_guard lock(mutex_);
        byPath_[path] = shared;
        if (byPath_.size() > 256)
            std::erase_if(byPath_, [](const auto& e) { return e.second.expired(); });
    }
    if (shared->parsed.family != family) return abi::kErrFormat;
    auto file = shared;
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

}  // namespace

std::int32_t copy_samples(const Position& at, std::int32_t start, std::int32_t count,
                          std::int16_t* out) {
    if (!at.channel || !out) return 0;
    const std::uint32_t n = span_of(at.limit, start, count);
    std::int32_t wide[4096];
    for (std::uint32_t done = 0; done < n;) {
        const std::uint32_t k = std::min<std::uint32_t>(n - done, 4096);
        at.channel->samples(at.series, static_cast<std::uint32_t>(start) + done, k, wide);
        for (std::uint32_t j = 0; j < k; ++j) {
            const std::int32_t v = wide[j];
            out[done + j] =
                static_cast<std::int16_t>(v < -32768 ? -32768 : (v > 32767 ? 32767 : v));
        }
        done += k;
    }
    return static_cast<std::int32_t>(n);
}
std::int32_t copy_samples(const Position& at, std::int32_t start, std::int32_t count,
                          std::int32_t* out) {
    if (!at.channel || !out) return 0;
    const std::uint32_t n = span_of(at.limit, start, count);
    if (n > 0) at.channel->samples(at.series, static_cast<std::uint32_t>(start), n, out);
    return static_cast<std::int32_t>(n);
}
std::int32_t copy_samples(const Position& at, std::int32_t start, std::int32_t count, float* out) {
    if (!at.channel || !out) return 0;
    const std::uint32_t n = span_of(at.limit, start, count);
    if (n > 0) at.channel->fsamples(at.series, static_cast<std::uint32_t>(start), n, out);
    return static_cast<std::int32_t>(n);
}

std::int32_t copy_bytes(const ChannelView& channel, const Position& at, std::int32_t start,
                        std::int32_t count, std::uint8_t* out) {
    if (!out) return 0;
    const std::uint32_t n = span_of(std::min(channel.alarmCount, at.limit), start, count);
    if (n == 0) return 0;
    channel.alarm_bytes(static_cast<std::uint32_t>(start), n, out);
    return static_cast<std::int32_t>(n);
}

std::int32_t copy_times(const ParsedFile& p, std::int32_t start, std::int32_t count,
                        std::int32_t* seconds, std::int32_t* ticks) {
    const std::uint32_t n = span_of(p.timeCount, start, count);
    if (n > 0) p.times(static_cast<std::uint32_t>(start), n, seconds, ticks);
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
