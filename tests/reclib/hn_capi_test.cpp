// The HN library's C interface on a file with known fields, every function once.
#include <gtest/gtest.h>

#include "reclib/simulate.h"
#include "tests/reclib/libs.h"

namespace qumbrel::testing {
namespace {

using reclib::Fields;

reclib::RecorderFile hn_file() {
    reclib::SimOptions o;
    o.family = reclib::Family::HN;
    o.channels = 3;  // int16, int32, float32
    o.samples = 3;
    o.intervalMs = 500;
    o.decimals = 2;
    auto f = reclib::simulate(o);
    f.header.set("fileState", 2)
        .set("post", 1)
        .set("headerType", 1)
        .set("timeCorrected", 1)
        .set("creator", 6)
        .set("startReason", 2)
        .set("stopReason", 8)
        .set("header.c4", 4)
        .set("header.c8", 8)
        .set("comment", "First; second");
    f.list("group") = {Fields{}.set("name", "A group name of exactly 32 bytes!")};
    f.list("unit") = {
        Fields{}.set("number", 1).set("serial", 0x00C0FFEE).set("c2", 2).set("c3", 3)};
    f.list("alarm") = {Fields{}.set("level", 2).set("type", 3).set("seconds", 77)};
    f.list("mark") = {Fields{}
                          .set("type", 0x104)
                          .set("creator", 2)
                          .set("seconds", 9)
                          .set("ticks", 999)
                          .set("text", "Mark")};
    f.channels[0].values = {-5, 0, 5};
    f.channels[0].flags = {1, 0, 2};
    f.channels[0].alarms = {0, 8, 0};
    f.channels[1].values = {100000, 2, 3};
    f.channels[2].fvalues = {1.25f, -2.5f, 3.0f};
    f.channels[2].info.set("fifoId", 2).set("flags", 1);
    f.list("fifo").push_back(Fields{}.set("fifoId", 2).set("fifoType", 0).set("intervalMs", 10));
    return f;
}

TEST(HnCapi, EveryFunctionOnAKnownFile) {
    HnApi api;
    RecFiles files;
    std::int32_t h = 0;
    ASSERT_EQ(api.DllHNOpenReadFile(files.write(hn_file(), "a.hnd").c_str(), &h), abi::kOk);

    std::int16_t state, post;
    std::int32_t v[24];
    ASSERT_EQ(
        api.DllHNGetFileHeader(h, &state, &post, &v[0], &v[1], &v[2], &v[3], &v[4], &v[5], &v[6],
                               &v[7], &v[8], &v[9], &v[10], &v[11], &v[12], &v[13], &v[14], &v[15],
                               &v[16], &v[17], &v[18], &v[19], &v[20], &v[21], &v[22], &v[23]),
        abi::kOk);
    EXPECT_EQ(state, 2);
    EXPECT_EQ(post, 1);
    // headerType, timeCorrected, status, creator, start s/ms, stop s/ms, reasons, units,
    // groups, comment length, channels, data, marks, alarms, alarm flag, interval, c4.
    EXPECT_EQ(std::vector<int>(v, v + 4), std::vector<int>({1, 1, 0, 6}));
    EXPECT_EQ(v[5], 0);
    EXPECT_EQ(v[6] - v[4], 1);
    EXPECT_EQ(std::vector<int>(v + 7, v + 21),
              std::vector<int>({0, 2, 8, 1, 1, 13, 3, 3, 1, 1, 1, 500, 4, 0}));
    EXPECT_EQ(v[23], 8);

    Text<13> comment;
    ASSERT_EQ(api.DllHNGetFileComment(h, 13, comment), abi::kOk);
    EXPECT_EQ(comment.raw(), "First; second");
    EXPECT_EQ(api.DllHNGetFileComment(h, -1, comment), abi::kErrArgument);

    Text<abi::kHnGroupNameLen> gname;
    ASSERT_EQ(api.DllHNGetFileGroupName(h, 0, gname), abi::kOk);
    EXPECT_EQ(gname.raw(), "A group name of exactly 32 bytes");

    std::int32_t u1, serial, u2, u3;
    ASSERT_EQ(api.DllHNGetFileUnitHeader(h, 0, &u1, &serial, &u2, &u3), abi::kOk);
    EXPECT_EQ(std::vector({u1, serial, u2, u3}), std::vector({1, 0x00C0FFEE, 2, 3}));
    Text<abi::kHnSerialTextLen> stext;
    ASSERT_EQ(api.DllHNSerialToString(&serial, stext), abi::kOk);
    EXPECT_EQ(stext.str(), "00C0FFEE");

    std::int32_t no, c1, fid, ftype, dec, uidx, dtype, flags, c4, c5;
    double lo, hi;
    Text<abi::kHnTagLen> tag;
    Text<abi::kHnChannelTextLen> text;
    Text<abi::kHnUnitLen> unit;
    ASSERT_EQ(api.DllHNGetFileChannelInfo(h, 2, &no, &c1, tag, text, unit, &fid, &ftype, &dec,
                                          &uidx, &dtype, &flags, &lo, &hi, &c4, &c5),
              abi::kOk);
    EXPECT_EQ(std::vector({no, fid, ftype, dec, dtype, flags}),
              std::vector({3, 2, 0, 2, 4, 1 | abi::kHnFlagFloat}));
    EXPECT_EQ(tag.str() + "/" + text.str(), "TAG003/Channel 3");
    ASSERT_EQ(api.DllHNGetFileChannelInfo(h, 1, &no, &c1, tag, text, unit, &fid, &ftype, &dec,
                                          &uidx, &dtype, &flags, &lo, &hi, &c4, &c5),
              abi::kOk);
    EXPECT_EQ(dtype, abi::kHnDataTypeLong);
    EXPECT_EQ(flags & abi::kHnFlagFloat, 0);

    std::int32_t f[10];
    ASSERT_EQ(api.DllHNGetFileFifoHeader(h, 1, 0, &f[0], &f[1], &f[2], &f[3], &f[4], &f[5], &f[6],
                                         &f[7], &f[8], &f[9]),
              abi::kOk);
    EXPECT_EQ(f[0], 500);
    EXPECT_EQ(f[1], 3);
    EXPECT_EQ(f[6], 2);  // channels of fifo 1
    EXPECT_EQ(api.DllHNGetFileFifoHeader(h, 9, 0, &f[0], &f[1], &f[2], &f[3], &f[4], &f[5], &f[6],
                                         &f[7], &f[8], &f[9]),
              abi::kErrIndex);

    std::int32_t a, b, c;
    ASSERT_EQ(api.DllHNGetFileAlarmInfo(h, 1, 0, &a, &b, &c), abi::kOk);
    EXPECT_EQ(std::vector({a, b, c}), std::vector({2, 3, 77}));
    EXPECT_EQ(api.DllHNGetFileAlarmInfo(h, 0, 0, &a, &b, &c), abi::kErrIndex);

    std::int16_t mtype, mcreator;
    std::int32_t msec, mtick;
    Text<abi::kHnMarkTextLen> mtext;
    ASSERT_EQ(api.DllHNGetFileMarkData(h, 0, &mtype, &mcreator, &msec, &mtick, mtext), abi::kOk);
    EXPECT_EQ(std::vector<int>({mtype, mcreator, msec, mtick}),
              std::vector<int>({0x104, 2, 9, 999}));
    EXPECT_EQ(mtext.str(), "Mark");

    std::int16_t s16[3];
    std::int32_t s32[3], sec[3], ms[3], fl[3], al[3];
    float fl32[3];
    EXPECT_EQ(api.DllHNGetFileFifoShortData(h, 1, 0, 0, 3, 0, s16, sec, ms, fl, al), 3);
    EXPECT_EQ(std::vector<int>(s16, s16 + 3), std::vector<int>({-5, 0, 5}));
    EXPECT_EQ(std::vector<int>(ms, ms + 3), std::vector<int>({0, 500, 0}));
    EXPECT_EQ(std::vector<int>(fl, fl + 3), std::vector<int>({1, 0, 2}));
    EXPECT_EQ(std::vector<int>(al, al + 3), std::vector<int>({0, 8, 0}));
    EXPECT_EQ(api.DllHNGetFileFifoLongData(h, 1, 0, 1, 2, 1, s32, sec, ms, fl, al), 2);
    EXPECT_EQ(s32[0], 2);
    EXPECT_EQ(api.DllHNGetFileFifoFloatData(h, 2, 0, 2, 3, 0, fl32, sec, ms, fl, al), 3);
    EXPECT_EQ(fl32[1], -2.5f);
    // A channel asked for under a FIFO it does not belong to gives nothing.
    EXPECT_EQ(api.DllHNGetFileFifoFloatData(h, 1, 0, 2, 3, 0, fl32, sec, ms, fl, al),
              abi::kErrIndex);

    std::int32_t y, mo, d, hh, mi, se;
    api.DllHNtoDateTime(0, &y, &mo, &d, &hh, &mi, &se);
    EXPECT_EQ(y, 1970);
    EXPECT_EQ(api.DllHNCloseReadFile(&h), abi::kOk);
    EXPECT_EQ(h, 0);
}

}  // namespace
}  // namespace qumbrel::testing
