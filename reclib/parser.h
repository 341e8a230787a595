#pragma once
// Bounds-checked reading of the reference format. Whatever the input (truncated, garbage,
// hostile), parse() never reads outside the given bytes, never crashes and allocates only
// in proportion to the bytes present: every count is capped by what actually follows.
// Sample data, times and per-sample bytes are not copied: they are read from the source
// when asked for, a block at a time, so memory stays flat in the length of the file. A
// file source reads with pread: a file that shrinks while it is read gives zeros and
// marks the file damaged, never a fault.
#include <atomic>
#include <cstdint>
#include <map>
#include <memory>
#include <span>
#include <string>
#include <vector>

#include "reclib/model.h"

namespace qumbrel::reclib {

enum class ParseStatus {
    Ok,               // intact
    Damaged,          // check sum, length or a section is wrong; what was readable is kept
    NotRecorderFile,  // no file header of this format: nothing was read
    UnsupportedVersion,
};

// Where the bytes of a parsed file come from.
class ByteSource {
  public:
    virtual ~ByteSource() = default;
    virtual std::uint64_t size() const = 0;
    // Copies [offset, offset + n) to dst; what lies past the end reads as zeros, and
    // then (or on a read error) the source counts as short from then on.
    void read(std::uint64_t offset, void* dst, std::size_t n) const;
    bool short_read() const { return short_.load(std::memory_order_relaxed); }
    // Drops bytes read ahead, so the next reads see the file as it is now.
    virtual void forget_read_ahead() const {}

  protected:
    // Bytes actually copied (fewer at the end or on an error).
    virtual std::size_t read_some(std::uint64_t offset, void* dst, std::size_t n) const = 0;

  private:
    mutable std::atomic<bool> short_{false};
};

// The caller's bytes, which must outlive every ParsedFile that reads them.
std::shared_ptr<const ByteSource> memory_source(std::span<const std::uint8_t> bytes);
// An open file (the descriptor is owned and closed with the source) of the given size.
std::shared_ptr<const ByteSource> file_source(int fd, std::uint64_t size);

struct ChannelView {
    Fields info;
    DataType type = DataType::Int16;
    bool math = false;
    std::uint8_t series = 1;             // 2: minimum then maximum series (display files)
    std::uint32_t count = 0;             // samples per series
    const ByteSource* source = nullptr;  // the ParsedFile's
    std::uint64_t data = 0;              // offsets in the source
    std::uint64_t alarms = 0;
    std::uint32_t alarmCount = 0;
    std::uint64_t flags = 0;
    std::uint32_t flagCount = 0;

    // Sample i of series s (0 or 1) as an integer (floats rounded and saturated) or as a
    // float. Callers check i < count and s < series.
    std::int32_t sample(int s, std::uint32_t i) const;
    float fsample(int s, std::uint32_t i) const;
    // Samples first .. first + n - 1 of series s in one read. Callers check the range.
    void samples(int s, std::uint32_t first, std::uint32_t n, std::int32_t* out) const;
    void fsamples(int s, std::uint32_t first, std::uint32_t n, float* out) const;
    // Per-sample alarm and flag bytes; 0 past their counts.
    std::uint8_t alarm_at(std::uint32_t i) const;
    std::uint8_t flag_at(std::uint32_t i) const;
    void alarm_bytes(std::uint32_t first, std::uint32_t n, std::uint8_t* out) const;
};

struct ParsedFile {
    Family family = Family::VT;
    Kind kind = Kind::Event;
    std::uint16_t minorVersion = 0;
    bool checksumOk = false;
    Fields header;
    std::map<std::string, std::vector<Fields>, std::less<>> lists;
    std::vector<ChannelView> channels;
    std::uint32_t timeCount = 0;
    std::shared_ptr<const ByteSource> source;
    std::uint64_t seconds = 0;  // offsets of int32 little-endian arrays, timeCount of each
    std::uint64_t ticks = 0;

    std::int32_t second_at(std::uint32_t i) const;
    std::int32_t tick_at(std::uint32_t i) const;
    // Times first .. first + n - 1 in one read each; null outputs are skipped.
    void times(std::uint32_t first, std::uint32_t n, std::int32_t* secs, std::int32_t* ticks) const;
    // Records of a list; an empty list when absent.
    const std::vector<Fields>& list(std::string_view name) const;
    // The damage status the libraries report: 0 intact, above 0 damaged (the stored
    // header field "status" when it is larger, 1 when the file shrank while read).
    std::int32_t status() const;
};

ParseStatus parse(std::shared_ptr<const ByteSource> source, ParsedFile& out);
// One field list as it stands in a header or record; false when it is cut or malformed.
bool parse_fields(std::span<const std::uint8_t> bytes, Fields& out);
ParseStatus parse(std::span<const std::uint8_t> bytes, ParsedFile& out);

// Copies a parsed file into the model (tests, tools).
RecorderFile to_model(const ParsedFile& parsed);

}  // namespace qumbrel::reclib
