// Truncated and bit-flipped files through the libraries themselves: every call stays in
// bounds, counts never exceed the intact file's, and cut headers read as zero counts.
#include <gtest/gtest.h>

#include <fstream>

#include "reclib/simulate.h"
#include "tests/reclib/libs.h"

namespace qumbrel::testing {
namespace {

struct VtCounts {
    std::int32_t meas = 0, math = 0, data = 0, events = 0, status = 0, alarms = 0, groups = 0;
};

// Reads everything a VT reader would and returns the counts the file claimed.
VtCounts read_all(const VtApi& api, std::int32_t h) {
    VtCounts c;
    std::int32_t v[12], w;
    Text<32> device;
    call(api.DllVTgetInfoFile, h, &c.meas, &c.math, &c.data, out<8>(v), &c.events, device,
         &c.status, &c.alarms, &v[8]);
    api.DllVTgetGroupNumFile(h, &c.groups, &w);
    Text<16> t16;
    Text<32> t32;
    Text<8> t8;
    Text<6> t6;
    std::int32_t x[32];
    for (std::int32_t g = 0; g < c.groups; ++g) api.DllVTgetGroupInfoFile(h, g, t16, &x[0]);
    for (std::int32_t a = 0; a < c.alarms; ++a) {
        call(api.DllVTgetAlarmInfoFile, h, a, out<9>(x));
    }
    for (std::int32_t e = 0; e < c.events; ++e) {
        call(api.DllVTgetEventInfoFile, h, e, out<3>(x), t16, &x[3], &x[4], t16);
    }
    double lo, hi;
    const std::int32_t channels = c.meas + c.math;
    for (std::int32_t i = 0; i < channels; ++i) {
        call(api.DllVTgetChDataInfo2File, h, i, &x[0], &x[1], t6, t16, t8, t8, &x[2], &lo, &hi,
             out<5>(x + 3));
    }
    std::vector<std::int16_t> s16(static_cast<std::size_t>(c.data) + 1);
    std::vector<std::int32_t> s32(s16.size()), ticks(s16.size());
    std::int32_t u1, u2, received;
    for (std::int32_t p = 0; p < 2 * channels + 1; ++p) {
        api.DllVTgetMeasDataFile(h, p, 0, c.data + 1, &u1, &u2, s16.data(), &received);
        EXPECT_LE(received, c.data);
        api.DllVTgetMathDataFile(h, p, 0, c.data + 1, &u1, &u2, s32.data(), &received);
        EXPECT_LE(received, c.data);
    }
    api.DllVTgetTimesFile(h, 0, c.data + 1, s32.data(), ticks.data(), &received);
    EXPECT_EQ(received, c.data);
    call(api.DllVTgetFileCnctInfoHandle, h, out<10>(x));
    call(api.DllVTgetInfo2File, h, &x[0], t16, out<4>(x + 1), t32, out<5>(x + 5), t16, &x[10], t16,
         &x[11], t16, t16, t16, t16, &x[12], t16, &x[13], &x[14], t32, t32, t32, out<4>(x + 15));
    return c;
}

TEST(LibraryCorpus, TruncatedAndFlippedVtFiles) {
    VtApi api;
    RecFiles files;
    const auto bytes = reclib::encode(reclib::simulate({.kind = reclib::Kind::Display,
                                                        .channels = 3,
                                                        .mathChannels = 2,
                                                        .samples = 50,
                                                        .alarms = 4,
                                                        .messages = 3,
                                                        .batch = true}));
    const std::string path = (files.dir() / "c.ogd").string();
    auto put = [&](const std::vector<std::uint8_t>& b) {
        std::ofstream(path, std::ios::binary | std::ios::trunc)
            .write(reinterpret_cast<const char*>(b.data()), static_cast<std::streamsize>(b.size()));
    };
    put(bytes);
    std::int32_t h = 0;
    ASSERT_EQ(api.DllVTopenReadFile(path.c_str(), &h), abi::kOk);
    const VtCounts intact = read_all(api, h);
    api.DllVTcloseReadFile(h);
    EXPECT_EQ(intact.status, 0);
    EXPECT_EQ(intact.data, 50);

    reclib::Prng rng(11);
    for (int k = 0; k < 400; ++k) {
        std::vector<std::uint8_t> bad = bytes;
        if (k % 2 == 0) {
            bad.resize(static_cast<std::size_t>(rng.next() % bytes.size()));
        } else {
            for (int f = rng.range(1, 6); f > 0; --f) {
                bad[rng.next() % bad.size()] ^= static_cast<std::uint8_t>(1u << rng.range(0, 7));
            }
        }
        put(bad);
        h = 0;
        const std::int32_t st = api.DllVTopenReadFile(path.c_str(), &h);
        const VtCounts c = read_all(api, h);  // h 0 when the open failed: all zeros
        if (st != abi::kOk) {
            EXPECT_EQ(h, 0);
            EXPECT_EQ(c.meas + c.math + c.data + c.alarms + c.events + c.groups, 0);
            continue;
        }
        EXPECT_LE(c.meas + c.math, intact.meas + intact.math);
        EXPECT_LE(c.alarms, intact.alarms);
        if (k % 2 == 0) {
            EXPECT_GT(c.status, 0) << "cut at " << bad.size();
            EXPECT_LE(c.data, intact.data);
        }
        api.DllVTcloseReadFile(h);
    }
}

}  // namespace
}  // namespace qumbrel::testing
