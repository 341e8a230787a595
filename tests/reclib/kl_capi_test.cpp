// The KL library's C interface on a file with known fields, every function once.
#include <gtest/gtest.h>

#include "reclib/simulate.h"
#include "tests/reclib/libs.h"

namespace qumbrel::testing {
namespace {

using reclib::Fields;

reclib::RecorderFile kl_file() {
    reclib::SimOptions o;
    o.family = reclib::Family::KL;
    o.channels = 2;
    o.mathChannels = 1;
    o.samples = 4;
    o.intervalMs = 125;
    o.batch = true;
    auto f = reclib::simulate(o);
    f.header.set("extChCount", 1)
        .set("ctrlChCount", 2)
        .set("groupWidth", 3)
        .set("samplingSeconds", 0)
        .set("samplingTicks", 1)
        .set("triggerNo", 4)
        .set("triggerSeconds", 5)
        .set("triggerTicks", 6)
        .set("userFlag", 1)
        .set("timeCorrected", 1)
        .set("count0", 7)
        .set("count1", 8)
        .set("count2", 9)
        .set("basic.c1", 11)
        .set("basic.c9", 19)
        .set("startKind", 5)
        .set("stopKind", 16)
        .set("startSource", 9)
        .set("stopSource", 2)
        .set("batchNo", 12)
        .set("batch.c1", 1);
    f.list("alarm") = {Fields{}
                           .set("channel", 0)
                           .set("level", 3)
                           .set("type", 14)
                           .set("serial", 1)
                           .set("occurSeconds", 2)
                           .set("occurTicks", 3)
                           .set("releaseSerial", 4)
                           .set("releaseSeconds", 5)
                           .set("releaseTicks", 6)
                           .set("ackSerial", 7)
                           .set("ackSeconds", 8)
                           .set("user", "fay")
                           .set("ackTicks", 9)
                           .set("source", 7)
                           .set("state", 3)};
    f.list("message") = {Fields{}
                             .set("serial", 1)
                             .set("seconds", 2)
                             .set("ticks", 3)
                             .set("message", "Msg")
                             .set("messageNo", 4)
                             .set("c1", 5)
                             .set("source", 4)
                             .set("user", "gil")};
    f.list("tpvEvent") = {Fields{}
                              .set("kind", 1)
                              .set("no", 2)
                              .set("channel", 3)
                              .set("seconds", 4)
                              .set("ticks", 5)
                              .set("c1", 6)
                              .set("c2", 7)
                              .set("type", 8)
                              .set("value", -1234)
                              .set("decimals", 2)};
    f.list("ctrlMode") = {Fields{}
                              .set("loop", 2)
                              .set("kind", 1)
                              .set("seconds", 3)
                              .set("ticks", 4)
                              .set("mode", 128)
                              .set("localRemote", 1)
                              .set("programReset", 2)
                              .set("runState", 3)
                              .set("holdState", 4)
                              .set("waitState", 5)
                              .set("advanceState", 6)
                              .set("programState", 7)
                              .set("operation", 8)
                              .set("c1", 9)
                              .set("c2", 10)
                              .set("c3", 11)};
    f.list("loop") = {
        Fields{}.set("loop", 1).set("tag", "LOOP1"),
        Fields{}.set("loop", 2).set("c1", 1).set("c2", 2).set("tag", "").set("unit", "%")};
    f.channels[0].values = {1, 2, 3, 4};
    f.channels[0].alarms = {0, 3, 0, 1};
    f.channels[2].values = {-1, -2, -3, 123456};
    return f;
}

TEST(KlCapi, EveryFunctionOnAKnownFile) {
    KlApi api;
    RecFiles files;
    std::int32_t h = 0;
    ASSERT_EQ(api.DllKLopenReadFile(files.write(kl_file(), "a.kle").c_str(), &h), abi::kOk);

    Text<abi::kKlCnctTextLen> text;
    std::int32_t c[10];
    ASSERT_EQ(api.DllKLgetCnctInfo(h, text, &c[0], &c[1], &c[2], &c[3], &c[4], &c[5], &c[6], &c[7],
                                   &c[8], &c[9]),
              abi::kOk);
    EXPECT_EQ(text.str(), "51");
    EXPECT_EQ(c[3], 3);  // stop ticks: 3 x 125 ms = 3 eighths
    EXPECT_EQ(std::vector<int>(c + 4, c + 10), std::vector<int>({5, 16, 5, 6, 4, 1}));

    Text<abi::kKlDeviceCodeLen> code;
    Text<abi::kKlFileMessageLen> message;
    Text<abi::kKlDeviceTypeLen> device;
    Text<abi::kKlSerialLen> serial;
    std::int32_t v[33];
    ASSERT_EQ(api.DllKLgetBasicInfo(h, code, message, &v[0], &v[1], &v[2], &v[3], &v[4], &v[5],
                                    &v[6], device, &v[7], &v[8], &v[9], &v[10], &v[11], &v[12],
                                    &v[13], &v[14], &v[15], &v[16], &v[17], &v[18], &v[19], &v[20],
                                    &v[21], &v[22], &v[23], &v[24], &v[25], &v[26], &v[27], &v[28],
                                    serial, &v[29], &v[30], &v[31]),
              abi::kOk);
    EXPECT_EQ(code.str() + "/" + device.str() + "/" + serial.raw(), "51/KL1100/K1234567");
    // meas, math, ext, ctrl, data, alarms, events | ctrlNum, pvNum, groups, width, sampling
    // s/t, trigger no/s/t, status, userFlag, timeCorrected, counts, alarm data, c1.
    EXPECT_EQ(std::vector<int>(v, v + 23), std::vector<int>({2, 1, 1, 2, 4, 1, 1, 1, 1, 2, 3, 0,
                                                             1, 4, 5, 6, 0, 1, 1, 7, 8, 9, 1}));
    EXPECT_EQ(v[31], 19);

    std::int32_t ss, ps, bf, bn, b1;
    Text<abi::kKlUserLen> su, pu;
    Text<abi::kKlBatchTextLen> bname, l1, l2, l3;
    ASSERT_EQ(api.DllKLgetBatchInfo(h, &ss, su, &ps, pu, &bf, bname, l1, l2, l3, &bn, &b1),
              abi::kOk);
    EXPECT_EQ(std::vector({ss, ps, bf, bn, b1}), std::vector({9, 2, 1, 12, 1}));
    EXPECT_EQ(l1.str() + l2.str() + l3.str(), "Level 1Level 2Level 3");

    std::int32_t members;
    Text<abi::kKlGroupNameLen> gname;
    ASSERT_EQ(api.DllKLgetGroupInfo(h, 1, gname, &members), abi::kOk);
    EXPECT_EQ(gname.str(), "Group 2");

    std::int32_t kind, type, dec, n[5];
    double lo, hi;
    Text<abi::kKlUnitLen> unit;
    Text<abi::kKlTagLen> tag;
    Text<abi::kKlChannelLen> ch;
    ASSERT_EQ(api.DllKLgetChDataInfo2(h, 2, &kind, &type, unit, tag, ch, &dec, &lo, &hi, &n[0],
                                      &n[1], &n[2], &n[3], &n[4]),
              abi::kOk);
    EXPECT_EQ(ch.str(), "CH031");
    EXPECT_EQ(type, 1);
    EXPECT_EQ(hi, 100.0);

    std::int32_t a[15];
    Text<abi::kKlUserLen> user;
    ASSERT_EQ(api.DllKLgetAlarmInfo(h, 0, &a[0], &a[1], &a[2], &a[3], &a[4], &a[5], &a[6], &a[7],
                                    &a[8], &a[9], &a[10], user, &a[11], &a[12], &a[13]),
              abi::kOk);
    EXPECT_EQ(std::vector<int>(a, a + 14),
              std::vector<int>({0, 3, 14, 1, 2, 3, 4, 5, 6, 7, 8, 9, 7, 3}));
    EXPECT_EQ(user.str(), "fay");

    std::int32_t m[6];
    Text<abi::kKlMessageLen> mtext;
    ASSERT_EQ(api.DllKLgetMessageInfo(h, 0, &m[0], &m[1], &m[2], mtext, &m[3], &m[4], &m[5], user),
              abi::kOk);
    EXPECT_EQ(std::vector<int>(m, m + 6), std::vector<int>({1, 2, 3, 4, 5, 4}));

    std::int32_t t[10];
    ASSERT_EQ(api.DllKLgetTPVEventInfo(h, 0, &t[0], &t[1], &t[2], &t[3], &t[4], &t[5], &t[6], &t[7],
                                       &t[8], &t[9]),
              abi::kOk);
    EXPECT_EQ(std::vector<int>(t, t + 10), std::vector<int>({1, 2, 3, 4, 5, 6, 7, 8, -1234, 2}));

    std::int32_t k[16];
    ASSERT_EQ(
        api.DllKLgetCtrlModeInfo(h, 0, &k[0], &k[1], &k[2], &k[3], &k[4], &k[5], &k[6], &k[7],
                                 &k[8], &k[9], &k[10], &k[11], &k[12], &k[13], &k[14], &k[15]),
        abi::kOk);
    EXPECT_EQ(std::vector<int>(k, k + 16),
              std::vector<int>({2, 1, 3, 4, 128, 1, 2, 3, 4, 5, 6, 7, 8, 9, 10, 11}));

    std::int32_t lc1, lc2;
    Text<abi::kKlLoopTagLen> ltag;
    Text<abi::kKlLoopUnitLen> lunit;
    ASSERT_EQ(api.DllKLgetLoopInfo(h, 2, &lc1, &lc2, ltag, lunit), abi::kOk);  // by number
    EXPECT_EQ(ltag.str(), "");
    EXPECT_EQ(lunit.str(), "%");
    EXPECT_EQ(lc2, 2);
    EXPECT_EQ(api.DllKLgetLoopInfo(h, 3, &lc1, &lc2, ltag, lunit), abi::kErrIndex);

    std::int16_t s16[4];
    std::int32_t s32[4], u1, u2, received;
    ASSERT_EQ(api.DllKLgetMeasData(h, 0, 0, 4, &u1, &u2, s16, &received), abi::kOk);
    EXPECT_EQ(std::vector<int>(s16, s16 + 4), std::vector<int>({1, 2, 3, 4}));
    ASSERT_EQ(api.DllKLgetMathData(h, 2, 3, 1, &u1, &u2, s32, &received), abi::kOk);
    EXPECT_EQ(received, 1);
    EXPECT_EQ(s32[0], 123456);
    std::uint8_t flags[4];
    ASSERT_EQ(api.DllKLgetAlarm(h, 0, 0, 4, flags, &received), abi::kOk);
    EXPECT_EQ(std::vector<int>(flags, flags + 4), std::vector<int>({0, 3, 0, 1}));
    std::int32_t sec[4], tick[4];
    ASSERT_EQ(api.DllKLgetTimes(h, 0, 4, sec, tick, &received), abi::kOk);
    EXPECT_EQ(std::vector<int>(tick, tick + 4), std::vector<int>({0, 1, 2, 3}));
    std::int32_t y, mo, d, hh, mi, se;
    api.DllKLtoDateTime(1'700'000'000, &y, &mo, &d, &hh, &mi, &se);
    EXPECT_EQ(std::vector({y, mo, d, hh, mi, se}), std::vector({2023, 11, 14, 22, 13, 20}));
    EXPECT_EQ(api.DllKLcloseReadFile(h), abi::kOk);
}

TEST(KlCapi, TlogDeviceCodeAndDamage) {
    KlApi api;
    RecFiles files;
    reclib::SimOptions o;
    o.family = reclib::Family::KL;
    o.kind = reclib::Kind::Tlog;
    o.samples = 2;
    std::int32_t h = 0;
    ASSERT_EQ(api.DllKLopenReadFile(files.write(reclib::simulate(o), "t.kld", true).c_str(), &h),
              abi::kOk);
    Text<16> code;
    Text<64> message;
    Text<32> device;
    Text<8> serial;
    std::int32_t v[33];
    api.DllKLgetBasicInfo(h, code, message, &v[0], &v[1], &v[2], &v[3], &v[4], &v[5], &v[6], device,
                          &v[7], &v[8], &v[9], &v[10], &v[11], &v[12], &v[13], &v[14], &v[15],
                          &v[16], &v[17], &v[18], &v[19], &v[20], &v[21], &v[22], &v[23], &v[24],
                          &v[25], &v[26], &v[27], &v[28], serial, &v[29], &v[30], &v[31]);
    EXPECT_EQ(code.str(), "53");
    EXPECT_GT(v[16], 0);  // status
    EXPECT_EQ(v[4], 2);   // the data are still there
    api.DllKLcloseReadFile(h);
}

}  // namespace
}  // namespace qumbrel::testing
