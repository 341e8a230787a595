// The VQ library's C interface on a file with known fields, every function once.
#include <gtest/gtest.h>

#include "reclib/simulate.h"
#include "tests/reclib/libs.h"

namespace qumbrel::testing {
namespace {

reclib::RecorderFile vq_file() {
    auto f = reclib::simulate({.family = reclib::Family::VQ,
                               .kind = reclib::Kind::Display,
                               .channels = 1,
                               .mathChannels = 1,
                               .samples = 3,
                               .batch = true});
    put(f.header,
        "triggerNo=1|timeCorrected=2|userFlag=3|count0=4|count1=5|count2=6|groupWidth=7|"
        "extChCount=8|basic.c9=9|basic.c18=18|unitCount=2|cnct.c1=101|cnct.c7=107|startKind=3|"
        "stopKind=4|samplingSeconds=2|samplingTicks=4|triggerSeconds=50|triggerTicks=6|"
        "fileMessage=VQ message|startSource=1|startUser=ann|stopSource=4|stopUser=ben|"
        "batch.c1=1|batchNo=5");
    f.list("alarm") = {
        rec("channel=1|level=1|type=8|serial=2|occurSeconds=10|occurTicks=1|"
            "releaseSerial=3|releaseSeconds=11|releaseTicks=2|ackSerial=4|"
            "ackSeconds=12|user=cat|ackTicks=3|ackLevel=2|c2=9")};
    f.list("message") = {
        rec("serial=1|seconds=20|ticks=5|message=Hello|messageNo=3|c1=8|source=4|user=dan")};
    f.channels[0].values = {-5, 6, 7};
    f.channels[0].values2 = {15, 16, 17};
    f.channels[1].values = {-100000, 0, 100000};
    f.channels[1].values2 = {1, 2, 3};
    return f;
}

using VqCapi = Capi<VqApi>;

TEST_F(VqCapi, EveryFunctionOnAKnownFile) {
    const auto path = files.write(vq_file(), "a.obd");
    std::int32_t h = 0, openStatus = -9;
    ASSERT_EQ(api.DllVQopenReadFile(path.c_str(), &openStatus, &h), abi::kOk);
    EXPECT_EQ(openStatus, 0);
    EXPECT_EQ(api.DllVQgetCrcStatus(h), 0);

    Text<abi::kVqDeviceCodeLen> code;
    Text<abi::kVqFileMessageLen> message;
    Text<abi::kVqDeviceTypeLen> device;
    Text<abi::kVqSerialLen> serial;
    std::int32_t v[34];
    ASSERT_EQ(call(api.DllVQgetBasicInfo, h, code, message, out<7>(v), device, out<22>(v + 7),
                   serial, out<3>(v + 29)),
              abi::kOk);
    EXPECT_EQ(code.str() + "/" + message.str() + "/" + device.str() + "/" + serial.raw(),
              "7A/VQ message/VQ110/Q1234567");
    // meas, math, data, c1 triggerNo, c2 timeCorrected, ticks base, units, startKind,
    // c3 userFlag, stopKind, c4..c6 counts, alarms, c7 groupWidth, c8 ext, events, c9.
    EXPECT_EQ(ints(v, 21),
              std::vector<int>({1, 1, 3, 1, 2, 125, 2, 3, 3, 4, 4, 5, 6, 1, 7, 8, 1, 9, 0, 0, 2}));
    EXPECT_EQ(ints(v + 27, 5), std::vector<int>({2, 4, 50, 6, 18}));

    std::int32_t k[16];
    ASSERT_EQ(call(api.DllVQgetCnctInfo, h, code, out<15>(k)), abi::kOk);
    // c1, openStatus, startKind, unitCount, c7.
    EXPECT_EQ(std::vector({k[0], k[6], k[7], k[13], k[14]}), std::vector({101, 0, 3, 2, 107}));

    std::int32_t logs, members;
    ASSERT_EQ(api.DllVQgetOpeLogInf(h, &logs), abi::kOk);
    EXPECT_EQ(logs, 4);
    Text<abi::kVqGroupNameLen> gname;
    ASSERT_EQ(api.DllVQgetGroupInfo(h, 0, gname, &members), abi::kOk);
    EXPECT_EQ(gname.str(), "Group 1");

    std::int32_t ss, ps, bf, bn, b1;
    Text<abi::kVqUserLen> su, pu;
    Text<abi::kVqBatchHeaderLen> app, sup, man;
    Text<abi::kVqBatchNameLen> bname;
    ASSERT_EQ(api.DllVQgetBatchInfo(h, &ss, su, &ps, pu, &bf, app, sup, man, bname, &bn, &b1),
              abi::kOk);
    EXPECT_EQ(std::vector({ss, ps, bf, bn, b1}), std::vector({1, 4, 1, 5, 1}));
    EXPECT_EQ(su.str() + pu.str() + app.str() + sup.str() + man.str() + bname.str(),
              "annbenApplicationSupervisorManagerBatch A");
    std::int32_t cs, ct;
    Text<abi::kVqCommentLen> comment;
    ASSERT_EQ(api.DllVQgetBatchComment(h, 0, su, &cs, &ct, comment), abi::kOk);
    EXPECT_EQ(comment.str(), "Comment 1");

    std::int32_t a[15];
    Text<abi::kVqUserLen> user;
    ASSERT_EQ(call(api.DllVQgetAlarmInfo, h, 0, out<11>(a), user, out<3>(a + 11)), abi::kOk);
    EXPECT_EQ(ints(a, 14), std::vector<int>({1, 1, 8, 2, 10, 1, 3, 11, 2, 4, 12, 3, 2, 9}));
    EXPECT_EQ(user.str(), "cat");

    std::int32_t m[6];
    Text<abi::kVqMessageLen> mtext;
    ASSERT_EQ(call(api.DllVQgetMessageInfo, h, 0, out<3>(m), mtext, out<3>(m + 3), user), abi::kOk);
    EXPECT_EQ(ints(m, 6), std::vector<int>({1, 20, 5, 3, 8, 4}));
    EXPECT_EQ(mtext.str() + user.str(), "Hellodan");

    std::int32_t kind, type, dec, n[6];
    double lo, hi;
    Text<abi::kVqUnitLen> unit;
    Text<abi::kVqTagLen> tag;
    Text<abi::kVqChannelLen> ch;
    ASSERT_EQ(api.DllVQgetChDataInfo(h, 1, &kind, &type, unit, tag, ch, &dec), abi::kOk);
    EXPECT_EQ(ch.str(), "CH031");
    EXPECT_EQ(type, 1);
    ASSERT_EQ(call(api.DllVQgetChDataInfo2, h, 0, &kind, &type, unit, tag, ch, &dec, &n[0], &lo,
                   &hi, out<5>(n + 1)),
              abi::kOk);
    EXPECT_EQ(ch.str() + tag.str(), "CH001Tag 1");
    EXPECT_EQ(std::vector({lo, double(n[1])}), std::vector({-100.0, 1.0}));

    std::int16_t s16[3];
    std::int32_t s32[3], c1, c2, received;
    ASSERT_EQ(api.DllVQgetMeasData(h, 1, 0, 3, &c1, &c2, s16, &received), abi::kOk);
    EXPECT_EQ(ints(s16, 3), std::vector<int>({15, 16, 17}));
    ASSERT_EQ(api.DllVQgetMathData(h, 2, 0, 3, &c1, &c2, s32, &received), abi::kOk);
    EXPECT_EQ(s32[0], -100000);
    std::int32_t sec[3], tick[3];
    ASSERT_EQ(api.DllVQgetTimes(h, 0, 3, sec, tick, &received), abi::kOk);
    EXPECT_EQ(sec[1] - sec[0], 1);

    std::int32_t count, x1, x2, x4;
    Text<abi::kVqSigninTextLen> t3, t5;
    ASSERT_EQ(api.DllVQgetSigninInf(h, &count, &x1), abi::kOk);
    EXPECT_EQ(count, 3);
    ASSERT_EQ(api.DllVQgetEachSigninInf(h, 2, &x1, &x2, user, t3, &x4, t5), abi::kOk);
    EXPECT_EQ(user.str() + std::to_string(x1), "Signer 32");
    ASSERT_EQ(api.DllVQgetSigninSts(h, &count), abi::kOk);
    EXPECT_EQ(count, 3);
    std::int32_t result, ssec, stick;
    Text<abi::kVqSignNameLen> sname;
    Text<abi::kVqSignCommentLen> scomment;
    Text<abi::kVqSignHostLen> host;
    ASSERT_EQ(api.DllVQgetEachSigninSts(h, 0, &result, sname, scomment, &ssec, &stick, host),
              abi::kOk);
    EXPECT_EQ(result, -1);
    EXPECT_EQ(sname.str() + "/" + scomment.str() + "/" + host.str(), "Signer 1/Checked/HOST");

    std::int32_t o[9];
    Text<abi::kVqOpeLogExtraLen> extra;
    ASSERT_EQ(call(api.DllVQgetEachOpeLoginf, h, 1, out<7>(o), user, &o[7], extra), abi::kOk);
    EXPECT_EQ(std::vector({o[7], o[3]}), std::vector({499, 1}));
    EXPECT_EQ(user.str(), "Operator");
    EXPECT_EQ(call(api.DllVQgetEachOpeLoginf, h, 4, out<7>(o), user, &o[7], extra), abi::kErrIndex);
    expect_dates(api.DllVQtoDateTime);
    EXPECT_EQ(api.DllVQcloseReadFile(h), abi::kOk);
}

TEST_F(VqCapi, CrcStatusOfADamagedFile) {
    std::int32_t h = 0, st = 0;
    ASSERT_EQ(api.DllVQopenReadFile(files.write(vq_file(), "d.obd", true).c_str(), &st, &h),
              abi::kOk);
    EXPECT_GT(api.DllVQgetCrcStatus(h), 0);
    std::int16_t s16[3];
    std::int32_t c1, c2, received;
    api.DllVQgetMeasData(h, 0, 0, 3, &c1, &c2, s16, &received);
    EXPECT_EQ(std::vector({received, int{s16[0]}}), std::vector({3, -5}));
    api.DllVQcloseReadFile(h);
    EXPECT_EQ(api.DllVQgetCrcStatus(h), abi::kErrHandle);
}

}  // namespace
}  // namespace qumbrel::testing
