#pragma once
// The in-memory model of a recorder file in the open reference format: what the writer
// takes and recsim builds. Every value a family library hands out is either a named field
// (of the header or of a record in a list) or a sample series; counts (channels, alarms,
// groups, samples ...) are never stored, they are the number of records actually present.
// docs/recorder-format.md lists the field and list names each library reads.
//
//   reclib::RecorderFile f;
//   f.family = reclib::Family::VT;
//   f.kind = reclib::Kind::Event;
//   f.header.set("serialNo", "S123");
//   f.list("alarm").push_back(reclib::Fields{}.set("channel", 0).set("type", 1));
//   auto& ch = f.channels.emplace_back();
//   ch.info.set("channel", "CH001").set("decimals", 2);
//   ch.values = {-5, 0, 12345};
//   f.seconds = {0, 1, 2};
//   f.ticks = {0, 0, 0};
//   reclib::write_file(f, "a.oge");  // writer.h
#include <cstdint>
#include <map>
#include <string>
#include <string_view>
#include <unordered_map>
#include <utility>
#include <variant>
#include <vector>

namespace qumbrel::reclib {

enum class Family : std::uint8_t { VT = 1, VU = 2, VQ = 3, KL = 4, HN = 5 };
enum class Kind : std::uint8_t { Event = 1, Display = 2, Tlog = 3 };
enum class DataType : std::uint8_t { Int16 = 0, Int32 = 1, Float32 = 2 };

// Text values are bytes in Windows-1252, as the libraries hand them out.
using Value = std::variant<std::int32_t, double, std::string>;

// Named values in the order they were first set; a name is unique.
class Fields {
  public:
    Fields& set(std::string_view name, std::int32_t v) { return put(name, Value{v}); }
    Fields& set(std::string_view name, double v) { return put(name, Value{v}); }
    Fields& set(std::string_view name, std::string v) { return put(name, Value{std::move(v)}); }
    Fields& set(std::string_view name, const char* v) { return put(name, Value{std::string(v)}); }
    Fields& put(std::string_view name, Value v);

    const Value* find(std::string_view name) const;
    // Typed reads with a default; an int read of a double truncates, a double read of an
    // int widens, a text field reads as 0.
    std::int32_t i(std::string_view name, std::int32_t def = 0) const;
    double d(std::string_view name, double def = 0.0) const;
    std::string_view s(std::string_view name) const;  // empty when absent or numeric

    const std::vector<std::pair<std::string, Value>>& items() const { return items_; }
    bool empty() const { return items_.empty(); }
    bool operator==(const Fields& other) const { return items_ == other.items_; }

  private:
    // Past a few fields, names are found through an index, so a record of thousands of
    // fields (hostile or not) is read in linear time.
    static constexpr std::size_t kIndexFrom = 16;
    std::vector<std::pair<std::string, Value>> items_;
    std::unordered_map<std::string, std::size_t> index_;
};

struct Channel {
    Fields info;  // channel, tag, unit, decimals, scaleLow, ... (family tables)
    DataType type = DataType::Int16;
    bool math = false;  // a math channel (number above 30 in VT, VQ, KL)
    // Raw samples. Integer channels use values/values2, float channels fvalues/fvalues2;
    // the second series holds the maxima of a display file and is empty in event files.
    std::vector<std::int32_t> values, values2;
    std::vector<float> fvalues, fvalues2;
    std::vector<std::uint8_t> alarms;  // per-sample alarm flags or codes (VU, KL, HN)
    std::vector<std::uint8_t> flags;   // per-sample flags (HN)

    bool operator==(const Channel&) const = default;
};

struct RecorderFile {
    Family family = Family::VT;
    Kind kind = Kind::Event;
    Fields header;
    // Record lists by name: "group", "alarm", "message", ... (docs/recorder-format.md).
    std::map<std::string, std::vector<Fields>, std::less<>> lists;
    std::vector<Channel> channels;
    // Time of each sample: seconds since 1970-01-01 and ticks (eighths of a second in VT,
    // KL, VQ; milliseconds in VU, HN).
    std::vector<std::int32_t> seconds, ticks;

    std::vector<Fields>& list(std::string_view name);
    const std::vector<Fields>* find_list(std::string_view name) const;
    bool operator==(const RecorderFile&) const = default;
};

// Ticks per second of a family: 8 or 1000.
std::int32_t ticks_per_second(Family family);
// "VT", "VU", ... and back (upper or lower case); false when unknown.
std::string_view family_name(Family family);
bool parse_family(std::string_view text, Family& out);
// The file extension of a family and kind, with the dot (".oge", ".hns", ...). VU uses
// .ose/.osd; .oae/.oad are the same family under other names.
std::string_view default_extension(Family family, Kind kind);

}  // namespace qumbrel::reclib
