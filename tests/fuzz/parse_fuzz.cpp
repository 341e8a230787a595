// libFuzzer target for the reference format parser: any bytes must parse without a crash,
// a read outside the input or an allocation out of proportion, and everything the parser
// hands out must be readable. Inputs whose first byte is 'F' go to the field-list parser
// alone (records of many fields must also parse in linear time).
#include <cstddef>
#include <cstdint>
#include <span>

#include "reclib/parser.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    using namespace qumbrel::reclib;
    if (size > 0 && data[0] == 'F') {
        Fields f;
        parse_fields(std::span<const std::uint8_t>(data + 1, size - 1), f);
        volatile std::int64_t sum = 0;
        for (const auto& [name, value] : f.items()) sum = sum + f.i(name) + f.s(name).size();
        return 0;
    }
    ParsedFile p;
    parse(std::span<const std::uint8_t>(data, size), p);
    volatile std::int64_t sink = p.status();
    for (const auto& ch : p.channels) {
        for (int s = 0; s < ch.series; ++s) {
            for (std::uint32_t i = 0; i < ch.count; ++i) sink = sink + ch.sample(s, i);
        }
        for (std::uint32_t i = 0; i < ch.alarmCount; ++i) sink = sink + ch.alarm_at(i);
        for (std::uint32_t i = 0; i < ch.flagCount; ++i) sink = sink + ch.flag_at(i);
    }
    for (std::uint32_t i = 0; i < p.timeCount; ++i) sink = sink + p.second_at(i) + p.tick_at(i);
    for (const auto& [name, records] : p.lists) {
        for (const auto& r : records) sink = sink + r.i("channel") + r.s("name").size();
    }
    const RecorderFile model = to_model(p);
    sink = sink + static_cast<std::int64_t>(model.channels.size());
    return 0;
}
