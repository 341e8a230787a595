// The VQ library's C interface on a file with known fields, every function once.
#include <gtest/gtest.h>

#include "reclib/simulate.h"
#include "tests/reclib/libs.h"

namespace qumbrel::testing {
namespace {

using reclib::Fields;

reclib::RecorderFile vq_file() {
    reclib::SimOptions o;
    o.family = reclib::Family::VQ;
    o.kind = reclib::Kind::Display;
    o.channels = 1;
    o.mathChannels = 1;
    o.samples = 3;
    o.batch = true;
    auto f = reclib::simulate(o);
    f.header.set("triggerNo", 1)
        .set("timeCorrected", 2)
        .set("userFlag", 3)
        .set("count0", 4)
        .set("count1", 5)
        .set("count2", 6)
        .set("groupWidth", 7)
        .set("extChCount", 8)
        .set("basic.c9", 9)
        .set("basic.c18", 18)
        .set("unitCount", 2)
        .set("cnct.c1", 101)
        .set("cnct.c7", 107)
        .set("startKind", 3)
        .set("stopKind", 4)
        .set("samplingSeconds", 2)
        .set("samplingTicks", 4)
        .set("triggerSeconds", 50)
        .set("triggerTicks", 6)
        .set("fileMessage", "VQ message")
        .set("startSource", 1)
        .set("startUser", "ann")
        .set("stopSource", 4)
        .set("stopUser", "ben")
        .set("batch.c1", 1)
        .set("batchNo", 5);
    f.list("alarm") = {Fields{}
                           .set("channel", 1)
                           .set("level", 1)
                           .set("type", 8)
                           .set("serial", 2)
                           .set("occurSeconds", 10)
                           .set("occurTicks", 1)
                           .set("releaseSerial", 3)
                           .set("releaseSeconds", 11)
                           .set("releaseTicks", 2)
                           .set("ackSerial", 4)
                           .set("ackSeconds", 12)
                           .set("user", "cat")
                           .set("ackTicks", 3)
                           .set("ackLevel", 2)
                           .set("c2", 9)};
    f.list("message") = {Fields{}
                             .set("serial", 1)
                             .set("seconds", 20)
                             .set("ticks", 5)
                             .set("message", "Hello")
                             .set("messageNo", 3)
                             .set("c1", 8)
                             .set("source", 4)
                             .set("user", "dan")};
    f.channels[0].values = {-5, 6, 7};
    f.channels[0].values2 = {15, 16, 17};
    f.channels[1].values = {-100000, 0, 100000};
    f.channels[1].values2 = {1, 2, 3};
    return f;
}

TEST(VqCapi, EveryFunctionOnAKnownFile) {
    VqApi api;
    RecFiles files;
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
    ASSERT_EQ(api.DllVQgetBasicInfo(h, code, message, &v[0], &v[1], &v[2], &v[3], &v[4], &v[5],
                                    &v[6], device, &v[7], &v[8], &v[9], &v[10], &v[11], &v[12],
                                    &v[13], &v[14], &v[15], &v[16], &v[17], &v[18], &v[19], &v[20],
                                    &v[21], &v[22], &v[23], &v[24], &v[25], &v[26], &v[27], &v[28],
                                    serial, &v[29], &v[30], &v[31]),
              abi::kOk);
    EXPECT_EQ(code.str(), "7A");
    EXPECT_EQ(message.str(), "VQ message");
    EXPECT_EQ(device.str(), "VQ110");
    EXPECT_EQ(serial.raw(), "Q1234567");
    // meas, math, data, c1 triggerNo, c2 timeCorrected, ticks base, units, startKind,
    // c3 userFlag, stopKind, c4..c6 counts, alarms, c7 groupWidth, c8 ext, events, c9.
    EXPECT_EQ(std::vector<int>(v, v + 21),
              std::vector<int>({1, 1, 3, 1, 2, 125, 2, 3, 3, 4, 4, 5, 6, 1, 7, 8, 1, 9, 0, 0, 2}));
    EXPECT_EQ(std::vector<int>(v + 27, v + 32), std::vector<int>({2, 4, 50, 6, 18}));

    std::int32_t k[16];
    ASSERT_EQ(api.DllVQgetCnctInfo(h, code, &k[0], &k[1], &k[2], &k[3], &k[4], &k[5], &k[6], &k[7],
                                   &k[8], &k[9], &k[10], &k[11], &k[12], &k[13], &k[14]),
              abi::kOk);
    EXPECT_EQ(k[0], 101);
    EXPECT_EQ(k[6], 0);  // openStatus
    EXPECT_EQ(k[7], 3);
    EXPECT_EQ(k[13], 2);
    EXPECT_EQ(k[14], 107);

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
    ASSERT_EQ(api.DllVQgetAlarmInfo(h, 0, &a[0], &a[1], &a[2], &a[3], &a[4], &a[5], &a[6], &a[7],
                                    &a[8], &a[9], &a[10], user, &a[11], &a[12], &a[13]),
              abi::kOk);
    EXPECT_EQ(std::vector<int>(a, a + 14),
              std::vector<int>({1, 1, 8, 2, 10, 1, 3, 11, 2, 4, 12, 3, 2, 9}));
    EXPECT_EQ(user.str(), "cat");

    std::int32_t m[6];
    Text<abi::kVqMessageLen> mtext;
    ASSERT_EQ(api.DllVQgetMessageInfo(h, 0, &m[0], &m[1], &m[2], mtext, &m[3], &m[4], &m[5], user),
              abi::kOk);
    EXPECT_EQ(std::vector<int>(m, m + 6), std::vector<int>({1, 20, 5, 3, 8, 4}));
    EXPECT_EQ(mtext.str() + user.str(), "Hellodan");

    std::int32_t kind, type, dec, n[6];
    double lo, hi;
    Text<abi::kVqUnitLen> unit;
    Text<abi::kVqTagLen> tag;
    Text<abi::kVqChannelLen> ch;
    ASSERT_EQ(api.DllVQgetChDataInfo(h, 1, &kind, &type, unit, tag, ch, &dec), abi::kOk);
    EXPECT_EQ(ch.str(), "CH031");
    EXPECT_EQ(type, 1);
    ASSERT_EQ(api.DllVQgetChDataInfo2(h, 0, &kind, &type, unit, tag, ch, &dec, &n[0], &lo, &hi,
                                      &n[1], &n[2], &n[3], &n[4], &n[5]),
              abi::kOk);
    EXPECT_EQ(ch.str() + tag.str(), "CH001Tag 1");
    EXPECT_EQ(lo, -100.0);
    EXPECT_EQ(n[1], 1);

    std::int16_t s16[3];
    std::int32_t s32[3], c1, c2, received;
    ASSERT_EQ(api.DllVQgetMeasData(h, 1, 0, 3, &c1, &c2, s16, &received), abi::kOk);
    EXPECT_EQ(std::vector<int>(s16, s16 + 3), std::vector<int>({15, 16, 17}));
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
    EXPECT_EQ(user.str(), "Signer 3");
    EXPECT_EQ(x1, 2);
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
    ASSERT_EQ(api.DllVQgetEachOpeLoginf(h, 1, &o[0], &o[1], &o[2], &o[3], &o[4], &o[5], &o[6], user,
                                        &o[7], extra),
              abi::kOk);
    EXPECT_EQ(o[7], 499);
    EXPECT_EQ(o[3], 1);
    EXPECT_EQ(user.str(), "Operator");
    EXPECT_EQ(api.DllVQgetEachOpeLoginf(h, 4, &o[0], &o[1], &o[2], &o[3], &o[4], &o[5], &o[6], user,
                                        &o[7], extra),
              abi::kErrIndex);
    EXPECT_EQ(api.DllVQcloseReadFile(h), abi::kOk);
}

TEST(VqCapi, CrcStatusOfADamagedFile) {
    VqApi api;
    RecFiles files;
    std::int32_t h = 0, st = 0;
    ASSERT_EQ(api.DllVQopenReadFile(files.write(vq_file(), "d.obd", true).c_str(), &st, &h),
              abi::kOk);
    EXPECT_GT(api.DllVQgetCrcStatus(h), 0);
    std::int16_t s16[3];
    std::int32_t c1, c2, received;
    api.DllVQgetMeasData(h, 0, 0, 3, &c1, &c2, s16, &received);
    EXPECT_EQ(received, 3);
    EXPECT_EQ(s16[0], -5);
    api.DllVQcloseReadFile(h);
    EXPECT_EQ(api.DllVQgetCrcStatus(h), abi::kErrHandle);
}

}  // namespace
}  // namespace qumbrel::testing
