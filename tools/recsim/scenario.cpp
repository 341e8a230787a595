#include "tools/recsim/scenario.h"

#include <cmath>
#include <stdexcept>

namespace qumbrel::recsim {

using nlohmann::json;
using reclib::Channel;
using reclib::DataType;
using reclib::Fields;

namespace {

// Caps on what one scenario may hold, beside the simulator's own.
constexpr std::size_t kMaxArray = 20'000'000;

[[noreturn]] void fail(const std::string& where, const std::string& what) {
    throw std::runtime_error("scenario: " + where + ": " + what);
}

std::int32_t to_int32(const json& v, const std::string& where) {
    if (v.is_number_integer()) {
        const auto x = v.get<std::int64_t>();
        if (x < INT32_MIN || x > INT32_MAX) fail(where, "outside 32-bit range");
        return static_cast<std::int32_t>(x);
    }
    if (v.is_number_unsigned()) {
        const auto x = v.get<std::uint64_t>();
        if (x > INT32_MAX) fail(where, "outside 32-bit range");
        return static_cast<std::int32_t>(x);
    }
    if (v.is_boolean()) return v.get<bool>() ? 1 : 0;
    fail(where, "an integer is needed");
}

std::int64_t to_int64(const json& v, const std::string& where) {
    if (!v.is_number_integer()) fail(where, "an integer is needed");
    return v.get<std::int64_t>();
}

void set_fields(const json& obj, Fields& out, const std::string& where) {
    if (!obj.is_object()) fail(where, "an object of fields is needed");
    for (const auto& [name, v] : obj.items()) {
        const std::string at = where + "." + name;
        if (name.empty() || name.size() > 255) fail(at, "a field name has 1 to 255 bytes");
        if (v.is_string()) {
            std::string text = to_cp1252(v.get<std::string>());
            if (text.size() > 65535) fail(at, "text over 65535 bytes");
            out.set(name, std::move(text));
        } else if (v.is_number_float()) {
            out.set(name, v.get<double>());
        } else {
            out.set(name, to_int32(v, at));
        }
    }
}

template <class T>
std::vector<T> numbers(const json& arr, const std::string& where) {
    if (!arr.is_array()) fail(where, "an array is needed");
    if (arr.size() > kMaxArray) fail(where, "more than " + std::to_string(kMaxArray) + " values");
    std::vector<T> out;
    out.reserve(arr.size());
    for (std::size_t i = 0; i < arr.size(); ++i) {
        const std::string at = where + "[" + std::to_string(i) + "]";
        if constexpr (std::is_same_v<T, float>) {
            if (!arr[i].is_number()) fail(at, "a number is needed");
            out.push_back(arr[i].get<float>());
        } else if constexpr (std::is_same_v<T, std::uint8_t>) {
            const std::int32_t v = to_int32(arr[i], at);
            if (v < 0 || v > 255) fail(at, "a byte (0 to 255) is needed");
            out.push_back(static_cast<std::uint8_t>(v));
        } else {
            out.push_back(to_int32(arr[i], at));
        }
    }
    return out;
}

DataType data_type(const json& v, const std::string& where) {
    const std::string t = v.is_string() ? v.get<std::string>() : "";
    if (t == "int16") return DataType::Int16;
    if (t == "int32") return DataType::Int32;
    if (t == "float32") return DataType::Float32;
    fail(where, "type is int16, int32 or float32");
}

void apply_channel(const json& c, Channel& ch, const std::string& where) {
    if (!c.is_object()) fail(where, "a channel object is needed");
    if (c.contains("type")) ch.type = data_type(c["type"], where + ".type");
    if (c.contains("math")) ch.math = to_int32(c["math"], where + ".math") != 0;
    if (c.contains("info")) set_fields(c["info"], ch.info, where + ".info");
    const bool isFloat = ch.type == DataType::Float32;
    if (c.contains("values")) {
        if (isFloat) {
            ch.fvalues = numbers<float>(c["values"], where + ".values");
            ch.values.clear();
        } else {
            ch.values = numbers<std::int32_t>(c["values"], where + ".values");
            ch.fvalues.clear();
        }
    }
    if (c.contains("max")) {
        if (isFloat) {
            ch.fvalues2 = numbers<float>(c["max"], where + ".max");
            ch.values2.clear();
        } else {
            ch.values2 = numbers<std::int32_t>(c["max"], where + ".max");
            ch.fvalues2.clear();
        }
    }
    if (c.contains("alarms")) ch.alarms = numbers<std::uint8_t>(c["alarms"], where + ".alarms");
    if (c.contains("flags")) ch.flags = numbers<std::uint8_t>(c["flags"], where + ".flags");
    // A simulated channel whose type changed keeps no samples of the other type.
    if (isFloat && !ch.values.empty()) {
        ch.values.clear();
        ch.values2.clear();
    }
    if (!isFloat && !ch.fvalues.empty()) {
        ch.fvalues.clear();
        ch.fvalues2.clear();
    }
}

}  // namespace

std::string to_cp1252(std::string_view s) {
    // Code points 0x80-0x9F of Windows-1252 and the characters they show.
    static constexpr char32_t kHigh[32] = {
        0x20AC, 0,      0x201A, 0x0192, 0x201E, 0x2026, 0x2020, 0x2021, 0x02C6, 0x2030, 0x0160,
        0x2039, 0x0152, 0,      0x017D, 0,      0,      0x2018, 0x2019, 0x201C, 0x201D, 0x2022,
        0x2013, 0x2014, 0x02DC, 0x2122, 0x0161, 0x203A, 0x0153, 0,      0x017E, 0x0178};
    std::string out;
    for (std::size_t i = 0; i < s.size();) {
        const auto c = static_cast<unsigned char>(s[i]);
        char32_t cp = 0;
        std::size_t len = 1;
        if (c < 0x80) {
            cp = c;
        } else if ((c >> 5) == 6 && i + 1 < s.size()) {
            cp = (c & 0x1F) << 6 | (static_cast<unsigned char>(s[i + 1]) & 0x3F);
            len = 2;
        } else if ((c >> 4) == 14 && i + 2 < s.size()) {
            cp = (c & 0x0F) << 12 | (static_cast<unsigned char>(s[i + 1]) & 0x3F) << 6 |
                 (static_cast<unsigned char>(s[i + 2]) & 0x3F);
            len = 3;
        } else {
            cp = 0xFFFD;
            len = (c >> 3) == 30 ? 4 : 1;
        }
        i += len;
        if (cp < 0x80 || (cp >= 0xA0 && cp <= 0xFF)) {
            out += static_cast<char>(cp);
            continue;
        }
        char mapped = '?';
        for (int k = 0; k < 32; ++k) {
            if (kHigh[k] && kHigh[k] == cp) mapped = static_cast<char>(0x80 + k);
        }
        out += mapped;
    }
    return out;
}

void read_sim_options(const json& sc, reclib::SimOptions& o) {
    if (!sc.is_object()) fail("top level", "a JSON object is needed");
    if (sc.contains("family")) {
        const auto& f = sc["family"];
        if (!f.is_string() || !reclib::parse_family(f.get<std::string>(), o.family)) {
            fail("family", "VT, VU, VQ, KL or HN");
        }
    }
    if (sc.contains("kind")) {
        const std::string k = sc["kind"].is_string() ? sc["kind"].get<std::string>() : "";
        if (k == "event") {
            o.kind = reclib::Kind::Event;
        } else if (k == "display") {
            o.kind = reclib::Kind::Display;
        } else if (k == "tlog") {
            o.kind = reclib::Kind::Tlog;
        } else {
            fail("kind", "event, display or tlog");
        }
    }
    if (sc.contains("seed")) o.seed = static_cast<std::uint64_t>(to_int64(sc["seed"], "seed"));
    if (!sc.contains("simulate")) return;
    const json& s = sc["simulate"];
    if (!s.is_object()) fail("simulate", "an object is needed");
    for (const auto& [key, v] : s.items()) {
        const std::string at = "simulate." + key;
        if (key == "channels") {
            o.channels = to_int32(v, at);
        } else if (key == "mathChannels") {
            o.mathChannels = to_int32(v, at);
        } else if (key == "samples") {
            o.samples = to_int64(v, at);
        } else if (key == "intervalMs") {
            o.intervalMs = to_int32(v, at);
        } else if (key == "start") {
            if (!v.is_string() || !reclib::parse_time(v.get<std::string>(), o.startSeconds)) {
                fail(at, "\"YYYY-MM-DD HH:MM:SS\" is needed");
            }
        } else if (key == "alarms") {
            o.alarms = to_int32(v, at);
        } else if (key == "messages") {
            o.messages = to_int32(v, at);
        } else if (key == "batch") {
            o.batch = to_int32(v, at) != 0;
        } else if (key == "decimals") {
            o.decimals = to_int32(v, at);
        } else {
            fail(at, "unknown key");
        }
    }
}

void apply_scenario(const json& sc, reclib::RecorderFile& file) {
    if (sc.contains("header")) set_fields(sc["header"], file.header, "header");
    if (sc.contains("lists")) {
        const json& lists = sc["lists"];
        if (!lists.is_object()) fail("lists", "an object of record arrays is needed");
        for (const auto& [name, records] : lists.items()) {
            const std::string at = "lists." + name;
            if (name.empty() || name.size() > 255) fail(at, "a list name has 1 to 255 bytes");
            if (!records.is_array()) fail(at, "an array of records is needed");
            if (records.size() > kMaxArray) fail(at, "too many records");
            auto& out = file.list(name);
            out.clear();
            for (std::size_t i = 0; i < records.size(); ++i) {
                Fields f;
                set_fields(records[i], f, at + "[" + std::to_string(i) + "]");
                out.push_back(std::move(f));
            }
        }
    }
    if (sc.contains("channels")) {
        const json& chans = sc["channels"];
        if (!chans.is_array()) fail("channels", "an array is needed");
        if (chans.size() > 4096) fail("channels", "more than 4096 channels");
        file.channels.resize(chans.size());
        for (std::size_t i = 0; i < chans.size(); ++i) {
            apply_channel(chans[i], file.channels[i], "channels[" + std::to_string(i) + "]");
        }
    }
    if (sc.contains("times")) {
        const json& t = sc["times"];
        if (!t.is_object() || !t.contains("seconds")) fail("times", "{\"seconds\": [...]} needed");
        file.seconds = numbers<std::int32_t>(t["seconds"], "times.seconds");
        file.ticks = t.contains("ticks") ? numbers<std::int32_t>(t["ticks"], "times.ticks")
                                         : std::vector<std::int32_t>(file.seconds.size(), 0);
        if (file.ticks.size() != file.seconds.size()) {
            fail("times", "seconds and ticks differ in length");
        }
    }
}

}  // namespace qumbrel::recsim
