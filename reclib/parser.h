#pragma once
// Bounds-checked reading of the reference format. Whatever the input (truncated, garbage,
// hostile), parse() never reads outside the given bytes, never crashes and allocates only
// in proportion to the bytes present: every count is capped by what actually follows.
// Sample data are not copied: the views point into the caller's bytes, which must outlive
// the ParsedFile.
#include <cstdint>
#include <map>
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

struct ChannelView {
    Fields info;
    DataType type = DataType::Int16;
    bool math = false;
    std::uint8_t series = 1;  // 2: minimum then maximum series (display files)
    std::uint32_t count = 0;  // samples per series
    const std::uint8_t* data = nullptr;
    const std::uint8_t* alarms = nullptr;
    std::uint32_t alarmCount = 0;
    const std::uint8_t* flags = nullptr;
    std::uint32_t flagCount = 0;

    // Sample i of series s (0 or 1) as an integer (floats rounded and saturated) or as a
    // float. Callers check i < count and s < series.
    std::int32_t sample(int s, std::uint32_t i) const;
    float fsample(int s, std::uint32_t i) const;
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
    const std::uint8_t* seconds = nullptr;  // int32 little-endian, timeCount of each
    const std::uint8_t* ticks = nullptr;

    std::int32_t second_at(std::uint32_t i) const;
    std::int32_t tick_at(std::uint32_t i) const;
    // Records of a list; an empty list when absent.
    const std::vector<Fields>& list(std::string_view name) const;
    // The damage status the libraries report: 0 intact, above 0 damaged (the stored
    // header field "status" when it is larger).
    std::int32_t status() const;
};

ParseStatus parse(std::span<const std::uint8_t> bytes, ParsedFile& out);

// Copies a parsed file into the model (tests, tools).
RecorderFile to_model(const ParsedFile& parsed);

}  // namespace qumbrel::reclib
