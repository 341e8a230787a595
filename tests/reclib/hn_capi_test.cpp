// The HN library's C interface on a file with known fields, every function once.
#include <gtest/gtest.h>

#include "reclib/simulate.h"
#include "tests/reclib/libs.h"

namespace qumbrel::testing {
namespace {

reclib::RecorderFile hn_file() {
    // Channels int16, int32, float32.
    auto f = reclib::simulate({.family = reclib::Family::HN,
                               .channels = 3,
                               .samples = 3,
                               .intervalMs = 500,
                               .decimals = 2});
    put(f.header,
        "fileState=2|post=1|headerType=1|timeCorrected=1|creator=6|startReason=2|stopReason=8|"
        "header.c4=4|header.c8=8|comment=First; second");
    f.list("group") = {rec("name=A group name of exactly 32 bytes!")};
    f.list("unit") = {rec("number=1|c2=2|c3=3|serial=" + std::to_string(0x00C0FFEE))};
    f.list("alarm") = {rec("level=2|type=3|seconds=77")};
    f.list("mark") = {rec("creator=2|seconds=9|ticks=999|text=Mark|type=" + std::to_string(0x104))};
    f.channels[0].values = {-5, 0, 5};
    f.channels[0].flags = {1, 0, 2};
    f.channels[0].alarms = {0, 8, 0};
    f.channels[1].values = {100000, 2, 3};
    f.channels[2].fvalues = {1.25f, -2.5f, 3.0f};
    put(f.channels[2].info, "fifoId=2|flags=1");
    f.list("fifo").push_back(rec("fifoId=2|fifoType=0|intervalMs=10"));
    return f;
}

using HnCapi = Capi<HnApi>;

TEST_F(HnCapi, EveryFunctionOnAKnownFile) {
    std::int32_t h = 0;
    ASSERT_EQ(api.DllHNOpenReadFile(files.write(hn_file(), "a.hnd").c_str(), &h), abi::kOk);

    std::int16_t state, post;
    std::int32_t v[24];
    ASSERT_EQ(call(api.DllHNGetFileHeader, h, &state, &post, out<24>(v)), abi::kOk);
    EXPECT_EQ(std::vector({int{state}, int{post}}), std::vector({2, 1}));
    // headerType, timeCorrected, status, creator, start s/ms, stop s/ms, reasons, units,
    // groups, comment length, channels, data, marks, alarms, alarm flag, interval, c4.
    EXPECT_EQ(std::vector({v[0], v[1], v[2], v[3], v[5], v[6] - v[4]}),
              std::vector({1, 1, 0, 6, 0, 1}));
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
    ASSERT_EQ(call(api.DllHNGetFileFifoHeader, h, 1, 0, out<10>(f)), abi::kOk);
    EXPECT_EQ(std::vector({f[0], f[1], f[6]}), std::vector({500, 3, 2}));  // 2 channels
    EXPECT_EQ(call(api.DllHNGetFileFifoHeader, h, 9, 0, out<10>(f)), abi::kErrIndex);

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
    EXPECT_EQ(ints(s16, 3), std::vector<int>({-5, 0, 5}));
    EXPECT_EQ(ints(ms, 3), std::vector<int>({0, 500, 0}));
    EXPECT_EQ(ints(fl, 3), std::vector<int>({1, 0, 2}));
    EXPECT_EQ(ints(al, 3), std::vector<int>({0, 8, 0}));
    EXPECT_EQ(api.DllHNGetFileFifoLongData(h, 1, 0, 1, 2, 1, s32, sec, ms, fl, al), 2);
    EXPECT_EQ(s32[0], 2);
    EXPECT_EQ(api.DllHNGetFileFifoFloatData(h, 2, 0, 2, 3, 0, fl32, sec, ms, fl, al), 3);
    EXPECT_EQ(fl32[1], -2.5f);
    // A channel asked for under a FIFO it does not belong to gives nothing.
    EXPECT_EQ(api.DllHNGetFileFifoFloatData(h, 1, 0, 2, 3, 0, fl32, sec, ms, fl, al),
              abi::kErrIndex);

    expect_dates(api.DllHNtoDateTime);
    EXPECT_EQ(api.DllHNCloseReadFile(&h), abi::kOk);
    EXPECT_EQ(h, 0);
}

TEST_F(HnCapi, DamagedFileReportsStatusAndStillGivesData) {
    std::int32_t h = 0;
    const auto file = reclib::simulate({.family = reclib::Family::HN, .channels = 1, .samples = 4});
    ASSERT_EQ(api.DllHNOpenReadFile(files.write(file, "d.hns", true).c_str(), &h), abi::kOk);
    std::int16_t state, post;
    std::int32_t v[24];
    call(api.DllHNGetFileHeader, h, &state, &post, out<24>(v));
    EXPECT_GT(v[2], 0);   // c3: status
    EXPECT_EQ(v[14], 4);  // data count
    std::int16_t s[4];
    EXPECT_EQ(
        api.DllHNGetFileFifoShortData(h, 1, 0, 0, 4, 0, s, nullptr, nullptr, nullptr, nullptr), 4);
    EXPECT_EQ(int{s[0]}, file.channels[0].values[0]);
    api.DllHNCloseReadFile(&h);
}

}  // namespace
}  // namespace qumbrel::testing
