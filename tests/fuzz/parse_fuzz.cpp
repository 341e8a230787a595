// libFuzzer target for the reference format parser: any bytes must parse without a crash,
// a read outside the input or an allocation out of proportion, and everything the parser
// hands out must be readable.
#include <cstddef>
#include <cstdint>
#include <span>

#include "reclib/parser.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    using namespace qumbrel::reclib;
    ParsedFile p;
    parse(std::span<const std::uint8_t>(data, size), p);
    volatile std::int64_t sink = p.status();
    for (const auto& ch : p.channels) {
        for (int s = 0; s < ch.series; ++s) {
            for (std::uint32_t i = 0; i < ch.count; ++i) sink = sink + ch.sample(s, i);
        }
        for (std::uint32_t i = 0; i < ch.alarmCount; ++i) sink = sink + ch.alarms[i];
        for (std::uint32_t i = 0; i < ch.flagCount; ++i) sink = sink + ch.flags[i];
    }
    for (std::uint32_t i = 0; i < p.timeCount; ++i) sink = sink + p.second_at(i) + p.tick_at(i);
    for (const auto& [name, records] : p.lists) {
        for (const auto& r : records) sink = sink + r.i("channel") + r.s("name").size();
    }
    const RecorderFile model = to_model(p);
    sink = sink + static_cast<std::int64_t>(model.channels.size());
    return 0;
}
