// Writes the fuzzer's seed corpus: a small file of each family and kind, one damaged.
#include <cstdint>
#include <cstdio>
#include <fstream>
#include <string>

#include "reclib/simulate.h"
#include "reclib/writer.h"

int main(int argc, char** argv) {
    using namespace qumbrel::reclib;
    if (argc != 2) {
        std::fprintf(stderr, "usage: reclib_fuzz_seeds DIR\n");
        return 2;
    }
    int n = 0;
    for (Family f : {Family::VT, Family::VU, Family::VQ, Family::KL, Family::HN}) {
        for (Kind k : {Kind::Event, Kind::Display}) {
            SimOptions o;
            o.family = f;
            o.kind = k;
            o.channels = 2;
            o.mathChannels = f == Family::HN ? 0 : 1;
            o.samples = 6;
            o.alarms = 2;
            o.messages = 2;
            o.batch = n % 2 == 0;
            const std::string path = std::string(argv[1]) + "/seed" + std::to_string(n++);
            if (!write_file(simulate(o), path, {.damaged = n == 3})) return 1;
        }
    }
    // A field list of many fields ('F' in front sends it to the field parser alone): two
    // bytes of count, then name length, name, type 1 (int32) and the value, each.
    std::string fields = "F";
    const std::uint16_t count = 400;
    fields.append(reinterpret_cast<const char*>(&count), 2);
    for (int k = 0; k < count; ++k) {
        const std::string name = "f" + std::to_string(k);
        fields.push_back(static_cast<char>(name.size()));
        fields += name;
        fields.push_back(1);
        const std::int32_t v = k;
        fields.append(reinterpret_cast<const char*>(&v), 4);
    }
    std::ofstream(std::string(argv[1]) + "/seed-fields", std::ios::binary) << fields;
    return 0;
}
