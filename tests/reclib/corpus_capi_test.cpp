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
    api.DllVTgetInfoFile(h, &c.meas, &c.math, &c.data, &v[0], &v[1], &v[2], &v[3], &v[4], &v[5],
                         &v[6], &v[7], &c.events, device, &c.status, &c.alarms, &v[8]);
    api.DllVTgetGroupNumFile(h, &c.groups, &w);
    Text<16> t16;
    Text<32> t32;
    Text<8> t8;
    Text<6> t6;
    std::int32_t x[32];
    for (std::int32_t g = 0; g < c.groups; ++g) api.DllVTgetGroupInfoFile(h, g, t16, &x[0]);
    for (std::int32_t a = 0; a < c.alarms; ++a) {
        api.DllVTgetAlarmInfoFile(h, a, &x[0], &x[1], &x[2], &x[3], &x[4], &x[5], &x[6], &x[7],
                                  &x[8]);
    }
    for (std::int32_t e = 0; e < c.events; ++e) {
        api.DllVTgetEventInfoFile(h, e, &x[0], &x[1], &x[2], t16, &x[3], &x[4], t16);
    }
    double lo, hi;
    const std::int32_t channels = c.meas + c.math;
    for (std::int32_t i = 0; i < channels; ++i) {
        api.DllVTgetChDataInfo2File(h, i, &x[0], &x[1], t6, t16, t8, t8, &x[2], &lo, &hi, &x[3],
                                    &x[4], &x[5], &x[6], &x[7]);
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
    api.DllVTgetFileCnctInfoHandle(h, &x[0], &x[1], &x[2], &x[3], &x[4], &x[5], &x[6], &x[7], &x[8],
                                   &x[9]);
    api.DllVTgetInfo2File(h, &x[0], t16, &x[1], &x[2], &x[3], &x[4], t32, &x[5], &x[6], &x[7],
                          &x[8], &x[9], t16, &x[10], t16, &x[11], t16, t16, t16, t16, &x[12], t16,
                          &x[13], &x[14], t32, t32, t32, &x[15], &x[16], &x[17], &x[18]);
    return c;
}

TEST(LibraryCorpus, TruncatedAndFlippedVtFiles) {
    VtApi api;
    RecFiles files;
    reclib::SimOptions o;
    o.kind = reclib::Kind::Display;
    o.channels = 3;
    o.mathChannels = 2;
    o.samples = 50;
    o.alarms = 4;
    o.messages = 3;
    o.batch = true;
    const auto bytes = reclib::encode(reclib::simulate(o));
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

TEST(LibraryCorpus, DamagedFilesOfEveryFamilyStillGiveData) {
    RecFiles files;
    reclib::SimOptions o;
    o.samples = 4;
    o.channels = 1;
    auto file = [&](reclib::Family f, const char* name) {
        o.family = f;
        return files.write(reclib::simulate(o), name, true);
    };
    {
        HnApi api;
        std::int32_t h = 0;
        ASSERT_EQ(api.DllHNOpenReadFile(file(reclib::Family::HN, "d.hns").c_str(), &h), abi::kOk);
        std::int16_t state, post;
        std::int32_t v[24];
        api.DllHNGetFileHeader(h, &state, &post, &v[0], &v[1], &v[2], &v[3], &v[4], &v[5], &v[6],
                               &v[7], &v[8], &v[9], &v[10], &v[11], &v[12], &v[13], &v[14], &v[15],
                               &v[16], &v[17], &v[18], &v[19], &v[20], &v[21], &v[22], &v[23]);
        EXPECT_GT(v[2], 0);   // c3: status
        EXPECT_EQ(v[14], 4);  // data count
        std::int16_t s[4];
        EXPECT_EQ(
            api.DllHNGetFileFifoShortData(h, 1, 0, 0, 4, 0, s, nullptr, nullptr, nullptr, nullptr),
            4);
        api.DllHNCloseReadFile(&h);
    }
}

}  // namespace
}  // namespace qumbrel::testing
