// The reference format on its own: round trip, damage, hostile input, calendar, simulator.
#include <gtest/gtest.h>

#include <unistd.h>

#include <cstdlib>
#include <cstring>
#include <vector>

#include "reclib/civil.h"
#include "reclib/format.h"
#include "reclib/parser.h"
#include "reclib/simulate.h"
#include "reclib/writer.h"

namespace qumbrel::reclib {
namespace {

RecorderFile sample_file(Family family, Kind kind) {
    return simulate({.family = family,
                     .kind = kind,
                     .channels = 3,
                     .mathChannels = family == Family::HN ? 0 : 2,
                     .samples = 40,
                     .alarms = 3,
                     .messages = 2,
                     .batch = true});
}

TEST(Format, EveryFamilyAndKindRoundTrips) {
    for (Family family : {Family::VT, Family::VU, Family::VQ, Family::KL, Family::HN}) {
        for (Kind kind : {Kind::Event, Kind::Display}) {
            const RecorderFile f = sample_file(family, kind);
            const auto bytes = encode(f);
            ParsedFile p;
            ASSERT_EQ(parse(bytes, p), ParseStatus::Ok) << family_name(family);
            EXPECT_EQ(p.status(), 0);
            EXPECT_EQ(to_model(p), f) << family_name(family);
        }
    }
}

TEST(Format, DamageComesFromTheChecksumOrTheHeaderField) {
    RecorderFile f = sample_file(Family::VT, Kind::Event);
    ParsedFile p;
    EXPECT_EQ(parse(encode(f, {.damaged = true}), p), ParseStatus::Damaged);
    EXPECT_EQ(p.status(), 1);
    EXPECT_EQ(p.channels.size(), 5u);  // still read
    f.header.set("status", 3);
    EXPECT_EQ(parse(encode(f), p), ParseStatus::Ok);
    EXPECT_EQ(p.status(), 3);
    // One flipped bit in a sample is found by the check sum alone.
    auto bytes = encode(sample_file(Family::VT, Kind::Event));
    bytes[bytes.size() - 3] ^= 0x10;
    EXPECT_EQ(parse(bytes, p), ParseStatus::Damaged);
    EXPECT_EQ(p.status(), 1);
}

TEST(Format, ForeignAndNewerFilesAreRefused) {
    ParsedFile p;
    const std::vector<std::uint8_t> empty, text(100, 'x');
    EXPECT_EQ(parse(empty, p), ParseStatus::NotRecorderFile);
    EXPECT_EQ(parse(text, p), ParseStatus::NotRecorderFile);
    auto bytes = encode(sample_file(Family::VU, Kind::Event));
    bytes[8] = 2;  // major version 2
    EXPECT_EQ(parse(bytes, p), ParseStatus::UnsupportedVersion);
    EXPECT_TRUE(p.channels.empty());
    bytes[8] = 1;
    bytes[12] = 9;  // no such family
    EXPECT_EQ(parse(bytes, p), ParseStatus::NotRecorderFile);
}

TEST(Format, UnknownSectionsOfANewerMinorAreSkipped) {
    const RecorderFile f = sample_file(Family::VQ, Kind::Event);
    auto body = encode(f);
    // Append a section "XTRA" of 3 bytes and fix length and check sum.
    const std::uint8_t extra[] = {'X', 'T', 'R', 'A', 3, 0, 0, 0, 1, 2, 3};
    body.insert(body.end(), std::begin(extra), std::end(extra));
    const std::uint64_t length = body.size() - format::kHeaderSize;
    std::memcpy(body.data() + 16, &length, 8);
    ParsedFile p;
    EXPECT_EQ(parse(body, p), ParseStatus::Damaged);  // check sum no longer fits
    EXPECT_EQ(to_model(p), f);                        // but everything known is there
}

// Truncations at every length and bit flips all over: never a crash, counts never above
// the intact file's, nothing read outside the buffer (the sanitizer run checks that).
TEST(Format, TruncatedAndBitFlippedCorpus) {
    for (Family family : {Family::VT, Family::VU, Family::VQ, Family::KL, Family::HN}) {
        const auto good = encode(sample_file(family, Kind::Display));
        ParsedFile intact;
        ASSERT_EQ(parse(good, intact), ParseStatus::Ok);
        for (std::size_t n = 0; n < good.size(); n += (n < 400 ? 1 : 37)) {
            std::vector<std::uint8_t> cut(good.begin(), good.begin() + static_cast<long>(n));
            ParsedFile p;
            const ParseStatus st = parse(cut, p);
            ASSERT_NE(st, ParseStatus::Ok) << n;
            EXPECT_LE(p.channels.size(), intact.channels.size());
            EXPECT_LE(p.timeCount, intact.timeCount);
            for (const auto& [name, records] : p.lists) {
                EXPECT_LE(records.size(), intact.list(name).size()) << name;
            }
            if (st != ParseStatus::NotRecorderFile) {
                EXPECT_GT(p.status(), 0);
            }
        }
        Prng rng(7);
        for (int k = 0; k < 3000; ++k) {
            auto bad = good;
            for (int f = rng.range(1, 4); f > 0; --f) {
                const auto at = static_cast<std::size_t>(rng.next() % bad.size());
                bad[at] ^= static_cast<std::uint8_t>(1u << rng.range(0, 7));
            }
            ParsedFile p;
            const ParseStatus st = parse(bad, p);
            if (st == ParseStatus::Ok) {
                // Only possible when the flip hit the unused reserved header bytes.
                EXPECT_EQ(to_model(p), to_model(intact));
            }
            for (const auto& ch : p.channels) {
                EXPECT_LE(std::size_t{ch.count} * ch.series * 2, bad.size());
            }
        }
    }
}

TEST(Format, HostileCountsAllocateNothingBeyondTheBytes) {
    // A list "a" that claims 999,999,999 records, a time section that claims 2^32-1 samples.
    const std::vector<std::uint8_t> body = {
        'L', 'I', 'S', 'T', 10,  0, 0, 0, 1, 'a',  0xFF, 0xC9, 0x9A, 0x3B, 0, 0, 0,
        0,   'T', 'I', 'M', 'E', 8, 0, 0, 0, 0xFF, 0xFF, 0xFF, 0xFF, 0,    0, 0, 0};
    std::vector<std::uint8_t> file(format::kHeaderSize);
    std::memcpy(file.data(), format::kMagic, 8);
    file[8] = 1;
    file[12] = 1;
    file[13] = 1;
    file[14] = static_cast<std::uint8_t>(format::kHeaderSize);
    const std::uint64_t length = body.size();
    std::memcpy(file.data() + 16, &length, 8);
    file.insert(file.end(), body.begin(), body.end());
    ParsedFile p;
    EXPECT_EQ(parse(file, p), ParseStatus::Damaged);
    EXPECT_LE(p.list("a").size(), 2u);
    EXPECT_EQ(p.timeCount, 0u);
}

TEST(Format, WriterRefusesWhatTheFormatCannotHold) {
    RecorderFile f;
    f.header.set(std::string(256, 'n'), 1);
    EXPECT_THROW(encode(f), std::invalid_argument);
    RecorderFile g;
    g.channels.emplace_back().values = {1, 2};
    g.channels.back().values2 = {1};
    EXPECT_THROW(encode(g), std::invalid_argument);
    std::string error;
    EXPECT_FALSE(write_file(g, "/nonexistent-dir/x.oge", {}, &error));
    EXPECT_FALSE(error.empty());
}

TEST(Format, Int16ChannelsSaturateOnWrite) {
    RecorderFile f;
    f.channels.emplace_back().values = {40000, -40000, 7};
    const auto bytes = encode(f);  // the parsed views point into it
    ParsedFile p;
    ASSERT_EQ(parse(bytes, p), ParseStatus::Ok);
    ASSERT_EQ(p.channels.size(), 1u);
    EXPECT_EQ(std::vector({p.channels[0].sample(0, 0), p.channels[0].sample(0, 1),
                           p.channels[0].sample(0, 2)}),
              std::vector<std::int32_t>({32767, -32768, 7}));
}

// A file that shrinks after it was parsed (another program truncates it): samples past the
// new end read as zeros and the file counts as damaged; nothing faults, as a mapping would.
TEST(Format, AFileThatShrinksWhileReadGivesZerosAndDamage) {
    const RecorderFile f = sample_file(Family::VT, Kind::Event);
    const auto bytes = encode(f);
    char path[] = "/tmp/reclib-shrink-XXXXXX";
    const int fd = ::mkstemp(path);
    ASSERT_GE(fd, 0);
    ASSERT_EQ(::write(fd, bytes.data(), bytes.size()), static_cast<ssize_t>(bytes.size()));
    ParsedFile p;
    ASSERT_EQ(parse(file_source(fd, bytes.size()), p), ParseStatus::Ok);
    EXPECT_EQ(p.status(), 0);
    const ChannelView& last = p.channels.back();
    std::vector<std::int32_t> before(last.count);
    last.samples(0, 0, last.count, before.data());
    ASSERT_EQ(::truncate(path, 64), 0);
    std::vector<std::int32_t> after(last.count, 7);
    last.samples(0, 0, last.count, after.data());
    EXPECT_EQ(after, std::vector<std::int32_t>(last.count, 0));
    EXPECT_NE(before, after);
    EXPECT_GT(p.status(), 0);
    EXPECT_EQ(p.second_at(p.timeCount - 1), 0);
    ::unlink(path);
}

TEST(Civil, EpochLeapYearsAndTheEndOf32Bits) {
    const std::pair<std::int64_t, CivilTime> cases[] = {
        {0, {1970, 1, 1, 0, 0, 0}},
        {68169600, {1972, 2, 29, 0, 0, 0}},
        {951868800, {2000, 3, 1, 0, 0, 0}},
        {4107542400, {2100, 3, 1, 0, 0, 0}},  // 2100 is no leap year
        {-86400, {1969, 12, 31, 0, 0, 0}},
        {2147483647, {2038, 1, 19, 3, 14, 7}},
    };
    auto fields = [](const CivilTime& t) {
        return std::vector({t.year, t.month, t.day, t.hour, t.minute, t.second});
    };
    for (const auto& [s, t] : cases) {
        EXPECT_EQ(fields(to_civil(s)), fields(t)) << s;
        EXPECT_EQ(from_civil(t), s);
    }
}

// recsim's tests show the refusals; these are the sizes that only some families allow.
TEST(Simulate, CheckAllowsWhatTheFamilyHolds) {
    EXPECT_EQ(check({.family = Family::VU, .channels = 31}), "");  // VU has room for more
    EXPECT_NE(check({.family = Family::VU, .channels = 31, .samples = kSimMaxSamples + 1}), "");
    EXPECT_NE(check({.intervalMs = 0}), "");
    EXPECT_EQ(check({.family = Family::KL, .kind = Kind::Tlog}), "");
}

TEST(Simulate, ParseTime) {
    std::int64_t s = -1;
    EXPECT_TRUE(parse_time("2024-02-29 12:30:15", s));
    EXPECT_EQ(s, 1709209815);
    for (const char* bad : {"2023-02-29 12:30:15", "2024-01-01 24:00:00", "2024-01-01 10:00:00x",
                            "2024-01-01", "1969-12-31 23:59:59"}) {
        EXPECT_FALSE(parse_time(bad, s)) << bad;
    }
}

}  // namespace
}  // namespace qumbrel::reclib
