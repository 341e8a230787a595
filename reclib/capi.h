#pragma once
// What the five C libraries share: the table of open handles, the mapped file behind a
// handle, and the helpers that fill the caller's variables. Internal to the libraries.
#include <cstdint>
#include <cstring>
#include <memory>
#include <mutex>
#include <span>
#include <string>
#include <string_view>
#include <unordered_map>

#include "reclib/civil.h"
#include "reclib/parser.h"
#include "recorder/abi/common.h"

namespace qumbrel::reclib::capi {

// A parsed file; its samples are read from the open file when asked for.
struct OpenFile {
    ParsedFile parsed;
    // What names the file on disk, so a second open of the same, unchanged file shares it.
    std::string path;
    std::uint64_t device = 0, inode = 0, size = 0;
    std::int64_t mtimeNs = 0;
};

// The open handles of one library: at most abi::kMaxOpenHandles, numbered from 1, never 0.
// When the table is full, an open closes the handle used longest ago. A file stays open
// while a call that looked it up still runs. A file is parsed once while any handle holds
// it: an open of the same path, unchanged (device, inode, size, modification time), shares
// the parsed file, so record calls that open by path do not parse again.
class HandleTable {
  public:
    // Opens, parses and registers a file of `family`; the handle or a negative status.
    std::int32_t open(const char* path, Family family);
    std::shared_ptr<const OpenFile> get(std::int32_t handle) const;
    bool close(std::int32_t handle);

  private:
    struct Entry {
        std::shared_ptr<const OpenFile> file;
        std::uint64_t lastUse = 0;
    };
    mutable std::mutex mutex_;
    mutable std::unordered_map<std::int32_t, Entry> files_;
    std::unordered_map<std::string, std::weak_ptr<const OpenFile>> byPath_;
    mutable std::uint64_t clock_ = 0;
    std::int32_t next_ = 1;
};

// The table of the library this is linked into.
HandleTable& handles();

// An empty file: what a call on a bad handle reads, so every output becomes 0 or blank.
const ParsedFile& no_file();

// What a call holds of its handle: the file, or the empty file for a bad handle.
struct Handle {
    std::shared_ptr<const OpenFile> file;
    const ParsedFile& p() const { return file ? file->parsed : no_file(); }
    std::int32_t status() const { return file ? abi::kOk : abi::kErrHandle; }
    std::int32_t status(bool found) const {
        return file ? (found ? abi::kOk : abi::kErrIndex) : abi::kErrHandle;
    }
};
inline Handle lookup(std::int32_t handle) {
    return {handles().get(handle)};
}

// Channel `index`, or an empty channel (and *found false).
const ChannelView& channel_at(const ParsedFile& p, std::int32_t index, bool* found);

// Fills the caller's variables; a null pointer is skipped.
inline void put(std::int32_t* p, std::int32_t v) {
    if (p) *p = v;
}
inline void put(std::int16_t* p, std::int32_t v) {
    if (p) *p = static_cast<std::int16_t>(v < -32768 ? -32768 : (v > 32767 ? 32767 : v));
}
inline void put(double* p, double v) {
    if (p) *p = v;
}
// A fixed-width field: the text's bytes, cut to `width`, zero padded, no terminator.
inline void put(char* p, int width, std::string_view v) {
    if (!p || width <= 0) return;
    const std::size_t n = v.size() < static_cast<std::size_t>(width) ? v.size() : width;
    if (n > 0) std::memcpy(p, v.data(), n);
    std::memset(p + n, 0, static_cast<std::size_t>(width) - n);
}

// Record `index` of a list, or an empty record (and *found false) when out of range.
const Fields& record(const ParsedFile& p, std::string_view list, std::int32_t index, bool* found);

// Header value with a fallback when the file does not hold it.
std::int32_t start_seconds(const ParsedFile& p);
std::int32_t start_ticks(const ParsedFile& p);
std::int32_t stop_seconds(const ParsedFile& p);
std::int32_t stop_ticks(const ParsedFile& p);
std::int32_t meas_count(const ParsedFile& p);
std::int32_t math_count(const ParsedFile& p);
std::int32_t list_count(const ParsedFile& p, std::string_view list);
std::int32_t sample_count(const ParsedFile& p);

// The channel and series a sample position names: in an event file position p is
// channel p; in a display file channel p / 2, series p % 2. `maxSeries` forces series 1.
// Samples beyond the file's sample count (its TIME section) are never served, so a damaged
// file cannot give a caller more samples than the count it reported.
struct Position {
    const ChannelView* channel = nullptr;
    int series = 0;
    std::uint32_t limit = 0;  // samples that may be read
};
Position channel_position(const ParsedFile& p, const ChannelView& channel, int series);
Position resolve(const ParsedFile& p, std::int32_t position, bool maxSeries = false);

// Copies samples start.. of a position into `out` (int16 saturates); the count copied.
std::int32_t copy_samples(const Position& at, std::int32_t start, std::int32_t count,
                          std::int16_t* out);
std::int32_t copy_samples(const Position& at, std::int32_t start, std::int32_t count,
                          std::int32_t* out);
std::int32_t copy_samples(const Position& at, std::int32_t start, std::int32_t count, float* out);
// Per-sample bytes (alarms or flags) of a channel, within the position's limit.
std::int32_t copy_bytes(const ChannelView& channel, const Position& at, std::int32_t start,
                        std::int32_t count, std::uint8_t* out);
// Sample times start.. into the two arrays; the count copied.
std::int32_t copy_times(const ParsedFile& p, std::int32_t start, std::int32_t count,
                        std::int32_t* seconds, std::int32_t* ticks);

// The to-date-time function of every family.
std::int32_t to_date_time(std::int32_t seconds, std::int32_t* year, std::int32_t* month,
                          std::int32_t* day, std::int32_t* hour, std::int32_t* minute,
                          std::int32_t* second);

// Runs a C entry point's body; an exception becomes kErrArgument instead of crossing the
// C boundary.
template <class F>
std::int32_t guarded(F&& body) noexcept {
    try {
        return body();
    } catch (...) {
        return abi::kErrArgument;
    }
}

}  // namespace qumbrel::reclib::capi
