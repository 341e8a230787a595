// The VU library's C interface on a file with known fields, every function once.
#include <gtest/gtest.h>

#include "reclib/simulate.h"
#include "tests/reclib/libs.h"

namespace qumbrel::testing {
namespace {

using reclib::Fields;
using reclib::Kind;

reclib::RecorderFile vu_file(Kind kind) {
    reclib::SimOptions o;
    o.family = reclib::Family::VU;
    o.kind = kind;
    o.channels = 2;
    o.mathChannels = 1;
    o.samples = 5;
    o.intervalMs = 250;
    o.batch = true;
    auto f = reclib::simulate(o);
    f.header.set("deviceCode", "B2")
        .set("triggerSeconds", 7)
        .set("triggerTicks", 8)
        .set("triggerNo", 9)
        .set("timeCorrected", 1)
        .set("status", 0)
        .set("startKind", 4)
        .set("stopKind", 20)
        .set("userFlag", 1)
        .set("cnct.c11", 11)
        .set("startSource", 3)
        .set("stopSource", 5)
        .set("startUser", "alice")
        .set("stopUser", "bob")
        .set("batchName", "Lot 9")
        .set("batchNo", 123)
        .set("batchNames.c1", 1)
        .set("serialNo", "VU-77")
        .set("common.c1", 21)
        .set("common.c6", 26)
        .set("fileMessage", "Fifty bytes of message text fill exactly this field!")
        .set("count0", 30)
        .set("count3", 33)
        .set("extChCount", 2)
        .set("channelNum.c1", 41);
    f.list("group") = {Fields{}.set("name", "G0").set("members", 3).set("c2", 4).set("inUse", 0),
                       Fields{}.set("name", "G1")};
    f.list("alarm") = {Fields{}
                           .set("channel", 2)
                           .set("levelMask", 16)
                           .set("type", 7)
                           .set("serial", 5)
                           .set("seconds", 100)
                           .set("ticks", 999)
                           .set("state", 2)};
    f.list("message") = {Fields{}
                             .set("type", 4)
                             .set("user", "eve")
                             .set("messageNo", 6)
                             .set("message", "Pump")
                             .set("seconds", 101)
                             .set("ticks", 500)
                             .set("c1", 1)
                             .set("c4", 4)};
    f.channels[0].values = {1, -2, 3, -4, 5};
    f.channels[0].alarms = {0, 1, 0, 2, 0};
    f.channels[2].values = {70000, -70000, 1, 2, 3};
    if (kind == Kind::Display) {
        f.channels[0].values2 = {11, 12, 13, 14, 15};
        f.channels[2].values2 = {80000, -60000, 2, 3, 4};
    }
    return f;
}

TEST(VuCapi, EveryFunctionOnAKnownFile) {
    VuApi api;
    RecFiles files;
    const auto path = files.write(vu_file(Kind::Event), "a.ose");
    std::int32_t h = 0;
    ASSERT_EQ(api.DllVUOpenReadFile(path.c_str(), &h), abi::kOk);

    Text<abi::kVuDeviceCodeLen> code;
    std::int32_t c[11], sk, pk;
    ASSERT_EQ(api.DllVUGetCnctInfo(h, code, &c[0], &c[1], &c[2], &c[3], &c[4], &c[5], &c[6], &c[7],
                                   &c[8], &sk, &pk, &c[9], &c[10]),
              abi::kOk);
    EXPECT_EQ(code.str(), "B2");
    EXPECT_EQ(c[3] - c[1], 0);  // start ticks 0 ms, stop ticks 0 ms: 4 x 250 ms = 1 s
    EXPECT_EQ(c[2] - c[0], 1);
    EXPECT_EQ(std::vector<int>(c + 4, c + 11), std::vector<int>({7, 8, 9, 1, 0, 1, 11}));
    EXPECT_EQ(sk, 4);
    EXPECT_EQ(pk, 20);

    std::int32_t ss, ps, bf, bn, b1;
    Text<abi::kVuUserLen> su, pu;
    ASSERT_EQ(api.DllVUGetBatchInfo(h, &ss, &ps, su, pu, &bf), abi::kOk);
    EXPECT_EQ(std::vector({ss, ps, bf}), std::vector({3, 5, 1}));
    EXPECT_EQ(su.str() + pu.str(), "alicebob");
    Text<abi::kVuBatchNameLen> bname;
    ASSERT_EQ(api.DllVUGetBatchNames(h, bname, &bn, &b1), abi::kOk);
    EXPECT_EQ(bname.str(), "Lot 9");
    EXPECT_EQ(bn, 123);
    EXPECT_EQ(b1, 1);
    Text<abi::kVuBatchLabelLen> label;
    Text<abi::kVuBatchTextLen> text;
    ASSERT_EQ(api.DllVUGetBatchDescription(h, 7, label, text), abi::kOk);
    EXPECT_EQ(label.str() + "|" + text.str(), "Label 8|Text 8");
    EXPECT_EQ(api.DllVUGetBatchDescription(h, 8, label, text), abi::kErrIndex);
    std::int32_t cs, ct;
    Text<abi::kVuCommentLen> comment;
    ASSERT_EQ(api.DllVUGetBatchComment(h, 2, &cs, &ct, su, comment), abi::kOk);
    EXPECT_EQ(comment.str(), "Comment 3");
    EXPECT_EQ(su.str(), "Operator");

    Text<abi::kVuSerialNoLen> serial;
    Text<abi::kVuFileMessageLen> message;
    std::int32_t k[6];
    ASSERT_EQ(api.DllVUGetCommonInfo(h, serial, &k[0], &k[1], &k[2], &k[3], message, &k[4], &k[5]),
              abi::kOk);
    EXPECT_EQ(serial.str(), "VU-77");
    EXPECT_EQ(message.raw(), "Fifty bytes of message text fill exactly this fiel");
    EXPECT_EQ(k[0], 21);
    EXPECT_EQ(k[5], 26);

    std::int32_t s[8];
    ASSERT_EQ(api.DllVUGetSampleDataInfo(h, &s[0], &s[1], &s[2], &s[3], &s[4], &s[5], &s[6], &s[7]),
              abi::kOk);
    EXPECT_EQ(std::vector<int>(s, s + 8), std::vector<int>({0, 250, 5, 1, 30, 0, 0, 33}));

    std::int32_t groups, width, members, g2, inUse;
    ASSERT_EQ(api.DllVUGetGroupNumInfo(h, &groups, &width), abi::kOk);
    EXPECT_EQ(groups, 2);
    Text<abi::kVuGroupNameLen> gname;
    ASSERT_EQ(api.DllVUGetGroupInfo(h, 0, gname, &members, &g2, &inUse), abi::kOk);
    EXPECT_EQ(std::vector({members, g2, inUse}), std::vector({3, 4, 0}));
    ASSERT_EQ(api.DllVUGetGroupInfo(h, 1, gname, &members, &g2, &inUse), abi::kOk);
    EXPECT_EQ(gname.str(), "G1");
    EXPECT_EQ(inUse, 1);  // in use unless the file says otherwise

    std::int32_t events, meas, math, ext, n1;
    ASSERT_EQ(api.DllVUGetMessageNum(h, &events), abi::kOk);
    EXPECT_EQ(events, 1);
    ASSERT_EQ(api.DllVUGetChannelNumInfo(h, &meas, &math, &ext, &n1), abi::kOk);
    EXPECT_EQ(std::vector({meas, math, ext, n1}), std::vector({2, 1, 2, 41}));

    std::int32_t kind, type, dec, num[5];
    double lo, hi;
    Text<abi::kVuChannelLen> chname;
    Text<abi::kVuTagLen> tag;
    Text<abi::kVuUnitLen> unit;
    ASSERT_EQ(api.DllVUGetChannelInfo(h, 2, &kind, &type, chname, tag, unit, &dec, &lo, &hi,
                                      &num[0], &num[1], &num[2], &num[3], &num[4]),
              abi::kOk);
    EXPECT_EQ(chname.str(), "CH031");
    EXPECT_EQ(type, 1);
    EXPECT_EQ(unit.str(),
              "\xB0"
              "C");
    EXPECT_EQ(num[1], 31);

    std::int32_t ach, mask, aty, ase, asec, atick, ast;
    ASSERT_EQ(api.DllVUGetAlarmEventData(h, 0, &ach, &mask, &aty, &ase, &asec, &atick, &ast),
              abi::kOk);
    EXPECT_EQ(std::vector({ach, mask, aty, ase, asec, atick, ast}),
              std::vector({2, 16, 7, 5, 100, 999, 2}));

    std::int32_t mt, mno, msec, mtick, m1, m2, m3, m4;
    Text<abi::kVuMessageLen> mtext;
    ASSERT_EQ(api.DllVUGetMessage(h, 0, &mt, su, &mno, mtext, &msec, &mtick, &m1, &m2, &m3, &m4),
              abi::kOk);
    EXPECT_EQ(std::vector({mt, mno, msec, mtick, m1, m4}), std::vector({4, 6, 101, 500, 1, 4}));
    EXPECT_EQ(mtext.str() + su.str(), "Pumpeve");

    std::int16_t s16[5];
    std::int32_t s32[5], sec, tick;
    EXPECT_EQ(api.DllVUGetShortData(h, 0, 1, 0, 4, s16, &sec, &tick), 4);
    EXPECT_EQ(std::vector<int>(s16, s16 + 4), std::vector<int>({-2, 3, -4, 5}));
    EXPECT_EQ(tick, 250);  // time of sample 1
    EXPECT_EQ(api.DllVUGetLongData(h, 2, 0, 0, 5, s32, &sec, &tick), 5);
    EXPECT_EQ(s32[1], -70000);
    std::uint8_t flags[5];
    EXPECT_EQ(api.DllVUGetAlarmData(h, 0, 0, 5, flags), 5);
    EXPECT_EQ(std::vector<int>(flags, flags + 5), std::vector<int>({0, 1, 0, 2, 0}));

    std::int32_t y, mo, d, hh, mi, se;
    api.DllVUtoDateTime(86400 * 365, &y, &mo, &d, &hh, &mi, &se);
    EXPECT_EQ(std::vector({y, mo, d}), std::vector({1971, 1, 1}));

    EXPECT_EQ(api.DllVUCloseFile(&h), abi::kOk);
    EXPECT_EQ(h, 0);
}

TEST(VuCapi, DisplayMaximaByKindAndDamage) {
    VuApi api;
    RecFiles files;
    std::int32_t h = 0;
    ASSERT_EQ(api.DllVUOpenReadFile(files.write(vu_file(Kind::Display), "a.osd", true).c_str(), &h),
              abi::kOk);
    std::int16_t s16[5];
    std::int32_t s32[5], sec, tick;
    EXPECT_EQ(api.DllVUGetShortData(h, 1, 0, 1, 5, s16, &sec, &tick), 5);
    EXPECT_EQ(s16[4], 15);
    EXPECT_EQ(api.DllVUGetLongData(h, 4, 0, 0, 5, s32, &sec, &tick), 5);
    EXPECT_EQ(s32[0], 70000);
    EXPECT_EQ(api.DllVUGetLongData(h, 4, 0, 1, 5, s32, &sec, &tick), 5);  // kind 1: maxima
    EXPECT_EQ(s32[0], 80000);
    Text<16> code;
    std::int32_t c[13];
    api.DllVUGetCnctInfo(h, code, &c[0], &c[1], &c[2], &c[3], &c[4], &c[5], &c[6], &c[7], &c[8],
                         &c[9], &c[10], &c[11], &c[12]);
    EXPECT_GT(c[8], 0);  // c9: damaged
    EXPECT_EQ(api.DllVUCloseFile(&h), abi::kOk);
    EXPECT_EQ(api.DllVUCloseFile(&h), abi::kErrHandle);
}

}  // namespace
}  // namespace qumbrel::testing
