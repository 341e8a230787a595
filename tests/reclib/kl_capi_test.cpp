// The KL library's C interface on a file with known fields, every function once.
#include <gtest/gtest.h>

#include "reclib/simulate.h"
#include "tests/reclib/libs.h"

namespace qumbrel::testing {
namespace {

reclib::RecorderFile kl_file() {
    auto f = reclib::simulate({.family = reclib::Family::KL,
                               .channels = 2,
                               .mathChannels = 1,
                               .samples = 4,
                               .intervalMs = 125,
                               .batch = true});
    put(f.header,
        "extChCount=1|ctrlChCount=2|groupWidth=3|samplingSeconds=0|samplingTicks=1|triggerNo=4|"
        "triggerSeconds=5|triggerTicks=6|userFlag=1|timeCorrected=1|count0=7|count1=8|count2=9|"
        "basic.c1=11|basic.c9=19|startKind=5|stopKind=16|startSource=9|stopSource=2|"
        "batchNo=12|batch.c1=1");
    f.list("alarm") = {
        rec("channel=0|level=3|type=14|serial=1|occurSeconds=2|occurTicks=3|"
            "releaseSerial=4|releaseSeconds=5|releaseTicks=6|ackSerial=7|"
            "ackSeconds=8|user=fay|ackTicks=9|source=7|state=3")};
    f.list("message") = {
        rec("serial=1|seconds=2|ticks=3|message=Msg|messageNo=4|c1=5|source=4|user=gil")};
    f.list("tpvEvent") = {
        rec("kind=1|no=2|channel=3|seconds=4|ticks=5|c1=6|c2=7|type=8|"
            "value=-1234|decimals=2")};
    f.list("ctrlMode") = {
        rec("loop=2|kind=1|seconds=3|ticks=4|mode=128|localRemote=1|"
            "programReset=2|runState=3|holdState=4|waitState=5|"
            "advanceState=6|programState=7|operation=8|c1=9|c2=10|c3=11")};
    f.list("loop") = {rec("loop=1|tag=LOOP1"), rec("loop=2|c1=1|c2=2|tag=|unit=%")};
    f.channels[0].values = {1, 2, 3, 4};
    f.channels[0].alarms = {0, 3, 0, 1};
    f.channels[2].values = {-1, -2, -3, 123456};
    return f;
}

using KlCapi = Capi<KlApi>;

TEST_F(KlCapi, EveryFunctionOnAKnownFile) {
    std::int32_t h = 0;
    ASSERT_EQ(api.DllKLopenReadFile(files.write(kl_file(), "a.kle").c_str(), &h), abi::kOk);

    Text<abi::kKlCnctTextLen> text;
    std::int32_t c[10];
    ASSERT_EQ(call(api.DllKLgetCnctInfo, h, text, out<10>(c)), abi::kOk);
    EXPECT_EQ(text.str(), "51");
    EXPECT_EQ(c[3], 3);  // stop ticks: 3 x 125 ms = 3 eighths
    EXPECT_EQ(std::vector<int>(c + 4, c + 10), std::vector<int>({5, 16, 5, 6, 4, 1}));

    Text<abi::kKlDeviceCodeLen> code;
    Text<abi::kKlFileMessageLen> message;
    Text<abi::kKlDeviceTypeLen> device;
    Text<abi::kKlSerialLen> serial;
    std::int32_t v[33];
    ASSERT_EQ(call(api.DllKLgetBasicInfo, h, code, message, out<7>(v), device, out<22>(v + 7),
                   serial, out<3>(v + 29)),
              abi::kOk);
    EXPECT_EQ(code.str() + "/" + device.str() + "/" + serial.raw(), "51/KL1100/K1234567");
    // meas, math, ext, ctrl, data, alarms, events | ctrlNum, pvNum, groups, width, sampling
    // s/t, trigger no/s/t, status, userFlag, timeCorrected, counts, alarm data, c1.
    EXPECT_EQ(ints(v, 23), std::vector<int>({2, 1, 1, 2, 4, 1, 1, 1, 1, 2, 3, 0,
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
    ASSERT_EQ(
        call(api.DllKLgetChDataInfo2, h, 2, &kind, &type, unit, tag, ch, &dec, &lo, &hi, out<5>(n)),
        abi::kOk);
    EXPECT_EQ(ch.str() + std::to_string(type), "CH0311");
    EXPECT_EQ(hi, 100.0);

    std::int32_t a[15];
    Text<abi::kKlUserLen> user;
    ASSERT_EQ(call(api.DllKLgetAlarmInfo, h, 0, out<11>(a), user, out<3>(a + 11)), abi::kOk);
    EXPECT_EQ(ints(a, 14), std::vector<int>({0, 3, 14, 1, 2, 3, 4, 5, 6, 7, 8, 9, 7, 3}));
    EXPECT_EQ(user.str(), "fay");

    std::int32_t m[6];
    Text<abi::kKlMessageLen> mtext;
    ASSERT_EQ(call(api.DllKLgetMessageInfo, h, 0, out<3>(m), mtext, out<3>(m + 3), user), abi::kOk);
    EXPECT_EQ(ints(m, 6), std::vector<int>({1, 2, 3, 4, 5, 4}));

    std::int32_t t[10];
    ASSERT_EQ(call(api.DllKLgetTPVEventInfo, h, 0, out<10>(t)), abi::kOk);
    EXPECT_EQ(ints(t, 10), std::vector<int>({1, 2, 3, 4, 5, 6, 7, 8, -1234, 2}));

    std::int32_t k[16];
    ASSERT_EQ(call(api.DllKLgetCtrlModeInfo, h, 0, out<16>(k)), abi::kOk);
    EXPECT_EQ(ints(k, 16), std::vector<int>({2, 1, 3, 4, 128, 1, 2, 3, 4, 5, 6, 7, 8, 9, 10, 11}));

    std::int32_t lc1, lc2;
    Text<abi::kKlLoopTagLen> ltag;
    Text<abi::kKlLoopUnitLen> lunit;
    ASSERT_EQ(api.DllKLgetLoopInfo(h, 2, &lc1, &lc2, ltag, lunit), abi::kOk);  // by number
    EXPECT_EQ(ltag.str() + lunit.str() + std::to_string(lc2), "%2");
    EXPECT_EQ(api.DllKLgetLoopInfo(h, 3, &lc1, &lc2, ltag, lunit), abi::kErrIndex);

    std::int16_t s16[4];
    std::int32_t s32[4], u1, u2, received;
    ASSERT_EQ(api.DllKLgetMeasData(h, 0, 0, 4, &u1, &u2, s16, &received), abi::kOk);
    EXPECT_EQ(ints(s16, 4), std::vector<int>({1, 2, 3, 4}));
    ASSERT_EQ(api.DllKLgetMathData(h, 2, 3, 1, &u1, &u2, s32, &received), abi::kOk);
    EXPECT_EQ(std::vector({received, s32[0]}), std::vector({1, 123456}));
    std::uint8_t flags[4];
    ASSERT_EQ(api.DllKLgetAlarm(h, 0, 0, 4, flags, &received), abi::kOk);
    EXPECT_EQ(ints(flags, 4), std::vector<int>({0, 3, 0, 1}));
    std::int32_t sec[4], tick[4];
    ASSERT_EQ(api.DllKLgetTimes(h, 0, 4, sec, tick, &received), abi::kOk);
    EXPECT_EQ(ints(tick, 4), std::vector<int>({0, 1, 2, 3}));
    expect_dates(api.DllKLtoDateTime);
    EXPECT_EQ(api.DllKLcloseReadFile(h), abi::kOk);
}

TEST_F(KlCapi, TlogDeviceCodeAndDamage) {
    const auto tlog =
        reclib::simulate({.family = reclib::Family::KL, .kind = reclib::Kind::Tlog, .samples = 2});
    std::int32_t h = 0;
    ASSERT_EQ(api.DllKLopenReadFile(files.write(tlog, "t.kld", true).c_str(), &h), abi::kOk);
    Text<16> code;
    Text<64> message;
    Text<32> device;
    Text<8> serial;
    std::int32_t v[33];
    call(api.DllKLgetBasicInfo, h, code, message, out<7>(v), device, out<22>(v + 7), serial,
         out<3>(v + 29));
    EXPECT_EQ(code.str(), "53");
    EXPECT_GT(v[16], 0);  // status
    EXPECT_EQ(v[4], 2);   // the data are still there
    api.DllKLcloseReadFile(h);
}

}  // namespace
}  // namespace qumbrel::testing
