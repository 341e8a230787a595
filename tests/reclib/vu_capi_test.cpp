// The VU library's C interface on a file with known fields, every function once.
#include <gtest/gtest.h>

#include "reclib/simulate.h"
#include "tests/reclib/libs.h"

namespace qumbrel::testing {
namespace {

using reclib::Kind;

reclib::RecorderFile vu_file(Kind kind) {
    auto f = reclib::simulate({.family = reclib::Family::VU,
                               .kind = kind,
                               .channels = 2,
                               .mathChannels = 1,
                               .samples = 5,
                               .intervalMs = 250,
                               .batch = true});
    put(f.header,
        "deviceCode=B2|triggerSeconds=7|triggerTicks=8|triggerNo=9|timeCorrected=1|status=0|"
        "startKind=4|stopKind=20|userFlag=1|cnct.c11=11|startSource=3|stopSource=5|"
        "startUser=alice|stopUser=bob|batchName=Lot 9|batchNo=123|batchNames.c1=1|"
        "serialNo=VU-77|common.c1=21|common.c6=26|count0=30|count3=33|extChCount=2|"
        "channelNum.c1=41|fileMessage=Fifty bytes of message text fill exactly this field!");
    f.list("group") = {rec("name=G0|members=3|c2=4|inUse=0"), rec("name=G1")};
    f.list("alarm") = {rec("channel=2|levelMask=16|type=7|serial=5|seconds=100|ticks=999|state=2")};
    f.list("message") = {
        rec("type=4|user=eve|messageNo=6|message=Pump|seconds=101|ticks=500|c1=1|c4=4")};
    f.channels[0].values = {1, -2, 3, -4, 5};
    f.channels[0].alarms = {0, 1, 0, 2, 0};
    f.channels[2].values = {70000, -70000, 1, 2, 3};
    if (kind == Kind::Display) {
        f.channels[0].values2 = {11, 12, 13, 14, 15};
        f.channels[2].values2 = {80000, -60000, 2, 3, 4};
    }
    return f;
}

using VuCapi = Capi<VuApi>;

TEST_F(VuCapi, EveryFunctionOnAKnownFile) {
    std::int32_t h = 0;
    ASSERT_EQ(api.DllVUOpenReadFile(files.write(vu_file(Kind::Event), "a.ose").c_str(), &h),
              abi::kOk);

    Text<abi::kVuDeviceCodeLen> code;
    std::int32_t c[13];
    ASSERT_EQ(call(api.DllVUGetCnctInfo, h, code, out<13>(c)), abi::kOk);
    EXPECT_EQ(code.str(), "B2");
    // Start and stop 4 x 250 ms = 1 s apart, both at 0 ms.
    EXPECT_EQ(std::vector({c[2] - c[0], c[3], c[1]}), std::vector({1, 0, 0}));
    EXPECT_EQ(ints(c + 4, 9), std::vector({7, 8, 9, 1, 0, 4, 20, 1, 11}));

    std::int32_t ss, ps, bf, bn, b1;
    Text<abi::kVuUserLen> su, pu;
    ASSERT_EQ(api.DllVUGetBatchInfo(h, &ss, &ps, su, pu, &bf), abi::kOk);
    EXPECT_EQ(std::vector({ss, ps, bf}), std::vector({3, 5, 1}));
    EXPECT_EQ(su.str() + pu.str(), "alicebob");
    Text<abi::kVuBatchNameLen> bname;
    ASSERT_EQ(api.DllVUGetBatchNames(h, bname, &bn, &b1), abi::kOk);
    EXPECT_EQ(bname.str() + std::to_string(bn) + std::to_string(b1), "Lot 91231");
    Text<abi::kVuBatchLabelLen> label;
    Text<abi::kVuBatchTextLen> text;
    ASSERT_EQ(api.DllVUGetBatchDescription(h, 7, label, text), abi::kOk);
    EXPECT_EQ(label.str() + "|" + text.str(), "Label 8|Text 8");
    EXPECT_EQ(api.DllVUGetBatchDescription(h, 8, label, text), abi::kErrIndex);
    std::int32_t cs, ct;
    Text<abi::kVuCommentLen> comment;
    ASSERT_EQ(api.DllVUGetBatchComment(h, 2, &cs, &ct, su, comment), abi::kOk);
    EXPECT_EQ(comment.str() + "/" + su.str(), "Comment 3/Operator");

    Text<abi::kVuSerialNoLen> serial;
    Text<abi::kVuFileMessageLen> message;
    std::int32_t k[6];
    ASSERT_EQ(call(api.DllVUGetCommonInfo, h, serial, out<4>(k), message, &k[4], &k[5]), abi::kOk);
    EXPECT_EQ(serial.str(), "VU-77");
    EXPECT_EQ(message.raw(), "Fifty bytes of message text fill exactly this fiel");
    EXPECT_EQ(std::vector({k[0], k[5]}), std::vector({21, 26}));

    std::int32_t s[8];
    ASSERT_EQ(call(api.DllVUGetSampleDataInfo, h, out<8>(s)), abi::kOk);
    EXPECT_EQ(ints(s, 8), std::vector({0, 250, 5, 1, 30, 0, 0, 33}));

    std::int32_t groups, width, g[3];
    ASSERT_EQ(api.DllVUGetGroupNumInfo(h, &groups, &width), abi::kOk);
    EXPECT_EQ(groups, 2);
    Text<abi::kVuGroupNameLen> gname;
    ASSERT_EQ(call(api.DllVUGetGroupInfo, h, 0, gname, out<3>(g)), abi::kOk);
    EXPECT_EQ(ints(g, 3), std::vector({3, 4, 0}));
    ASSERT_EQ(call(api.DllVUGetGroupInfo, h, 1, gname, out<3>(g)), abi::kOk);
    EXPECT_EQ(gname.str(), "G1");
    EXPECT_EQ(g[2], 1);  // in use unless the file says otherwise

    std::int32_t events, n[4];
    ASSERT_EQ(api.DllVUGetMessageNum(h, &events), abi::kOk);
    EXPECT_EQ(events, 1);
    ASSERT_EQ(call(api.DllVUGetChannelNumInfo, h, out<4>(n)), abi::kOk);
    EXPECT_EQ(ints(n, 4), std::vector({2, 1, 2, 41}));

    std::int32_t kind, type, dec, num[5];
    double lo, hi;
    Text<abi::kVuChannelLen> chname;
    Text<abi::kVuTagLen> tag;
    Text<abi::kVuUnitLen> unit;
    ASSERT_EQ(call(api.DllVUGetChannelInfo, h, 2, &kind, &type, chname, tag, unit, &dec, &lo, &hi,
                   out<5>(num)),
              abi::kOk);
    EXPECT_EQ(chname.str() + "/" + unit.str(),
              "CH031/\xB0"
              "C");
    EXPECT_EQ(std::vector({type, num[1]}), std::vector({1, 31}));

    std::int32_t a[7];
    ASSERT_EQ(call(api.DllVUGetAlarmEventData, h, 0, out<7>(a)), abi::kOk);
    EXPECT_EQ(ints(a, 7), std::vector({2, 16, 7, 5, 100, 999, 2}));

    std::int32_t m[8];
    Text<abi::kVuMessageLen> mtext;
    ASSERT_EQ(call(api.DllVUGetMessage, h, 0, &m[0], su, &m[1], mtext, out<6>(m + 2)), abi::kOk);
    EXPECT_EQ(std::vector({m[0], m[1], m[2], m[3], m[4], m[7]}),
              std::vector({4, 6, 101, 500, 1, 4}));
    EXPECT_EQ(mtext.str() + su.str(), "Pumpeve");

    std::int16_t s16[5];
    std::int32_t s32[5], sec, tick;
    EXPECT_EQ(api.DllVUGetShortData(h, 0, 1, 0, 4, s16, &sec, &tick), 4);
    EXPECT_EQ(ints(s16, 4), std::vector({-2, 3, -4, 5}));
    EXPECT_EQ(tick, 250);  // time of sample 1
    EXPECT_EQ(api.DllVUGetLongData(h, 2, 0, 0, 5, s32, &sec, &tick), 5);
    EXPECT_EQ(s32[1], -70000);
    std::uint8_t flags[5];
    EXPECT_EQ(api.DllVUGetAlarmData(h, 0, 0, 5, flags), 5);
    EXPECT_EQ(ints(flags, 5), std::vector({0, 1, 0, 2, 0}));
    expect_dates(api.DllVUtoDateTime);
    EXPECT_EQ(api.DllVUCloseFile(&h), abi::kOk);
    EXPECT_EQ(h, 0);
}

TEST_F(VuCapi, DisplayMaximaByKindAndDamage) {
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
    call(api.DllVUGetCnctInfo, h, code, out<13>(c));
    EXPECT_GT(c[8], 0);  // c9: damaged
    EXPECT_EQ(api.DllVUCloseFile(&h), abi::kOk);
    EXPECT_EQ(api.DllVUCloseFile(&h), abi::kErrHandle);
}

}  // namespace
}  // namespace qumbrel::testing
