#pragma once
// Builds a plausible recorder file from a few numbers: what recsim's quick flags make and
// what tests start from before they set fields of their own. Deterministic: the same
// options give the same file on every machine (own PRNG, integer arithmetic only).
//
//   reclib::SimOptions o;
//   o.family = reclib::Family::VT;
//   o.channels = 3;
//   o.samples = 100;
//   std::string why = reclib::check(o);      // empty when the options are sensible
//   reclib::RecorderFile f = reclib::simulate(o);
#include <cstdint>
#include <string>

#include "reclib/model.h"

namespace qumbrel::reclib {

struct SimOptions {
    Family family = Family::VT;
    Kind kind = Kind::Event;
    std::int32_t channels = 4;      // measuring channels, numbered from 1
    std::int32_t mathChannels = 0;  // math channels, numbered from 31
    std::int64_t samples = 100;
    std::int32_t intervalMs = 1000;
    std::int64_t startSeconds = 1'700'000'000;  // 2023-11-14 22:13:20
    std::int32_t alarms = 0;
    std::int32_t messages = 0;
    bool batch = false;
    std::int32_t decimals = 1;
    std::uint64_t seed = 1;
};

// Limits recsim keeps; simulate() assumes check() passed.
inline constexpr std::int32_t kSimMaxMeasChannels = 30;  // VT, VQ, KL; 256 in VU, HN
inline constexpr std::int32_t kSimMaxChannelsWide = 256;
inline constexpr std::int32_t kSimMaxMathChannels = 30;
inline constexpr std::int64_t kSimMaxSamples = 20'000'000;
inline constexpr std::int64_t kSimMaxValues = 100'000'000;  // channels x samples
inline constexpr std::int32_t kSimMaxRecords = 1'000'000;   // alarms, messages

// Why the options cannot be simulated, or empty.
std::string check(const SimOptions& options);

RecorderFile simulate(const SimOptions& options);

// Seconds since 1970 of "YYYY-MM-DD HH:MM:SS"; false when the text is not such a time.
bool parse_time(std::string_view text, std::int64_t& seconds);

// A small deterministic generator (splitmix64).
class Prng {
  public:
    explicit Prng(std::uint64_t seed) : state_(seed) {}
    std::uint64_t next() {
        std::uint64_t z = (state_ += 0x9E3779B97F4A7C15ull);
        z = (z ^ (z >> 30)) * 0xBF58476D1CE4E5B9ull;
        z = (z ^ (z >> 27)) * 0x94D049BB133111EBull;
        return z ^ (z >> 31);
    }
    // Uniform in [lo, hi] (hi - lo below 2^32).
    std::int32_t range(std::int32_t lo, std::int32_t hi) {
        const auto span = static_cast<std::uint64_t>(static_cast<std::int64_t>(hi) - lo + 1);
        return static_cast<std::int32_t>(lo + static_cast<std::int64_t>(next() % span));
    }

  private:
    std::uint64_t state_;
};

}  // namespace qumbrel::reclib
