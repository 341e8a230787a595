// The VQ, VU, KL and HN libraries' C interfaces on files with known fields: every function
// of each table once, and each family's status of a damaged file.
#include <gtest/gtest.h>

#include "tests/reclib/libs.h"

namespace qumbrel::testing {
namespace {

using reclib::Kind;

reclib::RecorderFile vq_file() {
    auto f = scenario(reclib::Family::VQ, Kind::Display, 1, 1, 3, 1000,
                      "triggerNo=1|timeCorrected=2|userFlag=3|count0=4|count1=5|count2=6|"
                      "groupWidth=7|extChCount=8|basic.c9=9|unitCount=2|cnct.c1=101|cnct.c7=107|"
                      "startKind=3|stopKind=4|startUser=ann|stopUser=ben|batch.c1=1");
    f.list("alarm") = {rec(
        "channel=1|level=1|type=8|serial=2|occurSeconds=10|occurTicks=1|releaseSerial=3|"
        "releaseSeconds=11|releaseTicks=2|ackSerial=4|ackSeconds=12|ackTicks=3|ackLevel=2|c2=9")};
    f.list("message") = {rec("serial=1|seconds=20|ticks=5|messageNo=3|c1=8|source=4")};
    f.channels[0].values = {-5, 6, 7};
    f.channels[0].values2 = {15, 16, 17};
    f.channels[1].values = {-100000, 0, 100000};
    return f;
}

using VqCapi = Capi<VqApi>;

TEST_F(VqCapi, EveryFunctionAndTheCrcStatusOfADamagedFile) {
    Text gname(abi::kVqGroupNameLen), su(abi::kVqUserLen), pu(abi::kVqUserLen),
        app(abi::kVqBatchHeaderLen), sup(abi::kVqBatchHeaderLen), man(abi::kVqBatchHeaderLen),
        bname(abi::kVqBatchNameLen), comment(abi::kVqCommentLen), tag(abi::kVqTagLen),
        ch(abi::kVqChannelLen), sname(abi::kVqSignNameLen), scomment(abi::kVqSignCommentLen),
        host(abi::kVqSignHostLen);
    ASSERT_OK(api.DllVQopenReadFile(write(vq_file(), "a.obd").c_str(), &x[0], &h));
    ASSERT_OK(call(api.DllVQgetBasicInfo, h, any, any, out<7>(x), any, out<22>(x + 7), any,
                   out<3>(x + 29)));
    // meas, math, data, c1 triggerNo, c2 timeCorrected, ticks base, units, startKind,
    // c3 userFlag, stopKind, c4..c6 counts, alarms, c7 groupWidth, c8 ext, events, c9.
    EXPECT_EQ(ints(x, 21),
              std::vector<int>({1, 1, 3, 1, 2, 125, 2, 3, 3, 4, 4, 5, 6, 1, 7, 8, 1, 9, 0, 0, 2}));
    ASSERT_OK(call(api.DllVQgetCnctInfo, h, any, out<15>(x)));
    // c1, openStatus, startKind, unitCount, c7.
    EXPECT_EQ(std::vector({x[0], x[6], x[7], x[13], x[14]}), std::vector({101, 0, 3, 2, 107}));
    ASSERT_OK(api.DllVQgetOpeLogInf(h, &x[0]));
    EXPECT_EQ(x[0], 4);
    ASSERT_OK(api.DllVQgetGroupInfo(h, 0, gname, &x[0]));
    EXPECT_EQ(gname.str(), "Group 1");
    ASSERT_OK(
        api.DllVQgetBatchInfo(h, &x[0], su, &x[1], pu, &x[2], app, sup, man, bname, &x[3], &x[4]));
    EXPECT_EQ(su.str() + pu.str() + app.str() + sup.str() + man.str() + bname.str(),
              "annbenApplicationSupervisorManagerBatch A");
    ASSERT_OK(api.DllVQgetBatchComment(h, 0, any, &x[0], &x[1], comment));
    EXPECT_EQ(comment.str(), "Comment 1");
    ASSERT_OK(call(api.DllVQgetAlarmInfo, h, 0, out<11>(x), any, out<3>(x + 11)));
    EXPECT_EQ(ints(x, 14), std::vector<int>({1, 1, 8, 2, 10, 1, 3, 11, 2, 4, 12, 3, 2, 9}));
    ASSERT_OK(call(api.DllVQgetMessageInfo, h, 0, out<3>(x), any, out<3>(x + 3), any));
    EXPECT_EQ(ints(x, 6), std::vector<int>({1, 20, 5, 3, 8, 4}));
    ASSERT_OK(api.DllVQgetChDataInfo(h, 1, &x[0], &x[1], any, tag, ch, &x[2]));
    EXPECT_EQ(ch.str() + std::to_string(x[1]), "CH0311");  // type int32
    ASSERT_OK(call(api.DllVQgetChDataInfo2, h, 0, out<2>(x), any, tag, ch, out<2>(x + 2), &lo, &hi,
                   out<5>(x + 4)));
    EXPECT_EQ(ch.str() + tag.str(), "CH001Tag 1");
    std::int16_t s16[3];
    ASSERT_OK(api.DllVQgetMeasData(h, 1, 0, 3, &x[0], &x[1], s16, &x[2]));
    EXPECT_EQ(ints(s16, 3), std::vector<int>({15, 16, 17}));
    ASSERT_OK(api.DllVQgetMathData(h, 2, 0, 3, &x[0], &x[1], x + 3, &x[2]));
    EXPECT_EQ(x[3], -100000);
    ASSERT_OK(api.DllVQgetTimes(h, 0, 3, x, x + 3, &x[6]));
    EXPECT_EQ(x[1] - x[0], 1);
    ASSERT_OK(api.DllVQgetSigninInf(h, &x[0], &x[1]));
    EXPECT_EQ(x[0], 3);
    ASSERT_OK(api.DllVQgetEachSigninInf(h, 2, &x[1], &x[2], su, any, &x[4], any));
    EXPECT_EQ(su.str() + std::to_string(x[1]), "Signer 32");
    ASSERT_OK(api.DllVQgetSigninSts(h, &x[0]));
    EXPECT_EQ(x[0], 3);
    ASSERT_OK(api.DllVQgetEachSigninSts(h, 0, &x[0], sname, scomment, &x[1], &x[2], host));
    EXPECT_EQ(std::to_string(x[0]) + sname.str() + "/" + scomment.str() + "/" + host.str(),
              "-1Signer 1/Checked/HOST");  // -1: not signed
    ASSERT_OK(call(api.DllVQgetEachOpeLoginf, h, 1, out<7>(x), any, &x[7], any));
    EXPECT_EQ(std::vector({x[7], x[3]}), std::vector({499, 1}));
    expect_dates(api.DllVQtoDateTime);
    EXPECT_EQ(api.DllVQcloseReadFile(h), abi::kOk);
    EXPECT_EQ(api.DllVQgetCrcStatus(h), abi::kErrHandle);
    ASSERT_OK(api.DllVQopenReadFile(write(vq_file(), "d.obd", true).c_str(), &x[0], &h));
    EXPECT_GT(api.DllVQgetCrcStatus(h), 0);  // damaged
    api.DllVQcloseReadFile(h);
}

reclib::RecorderFile vu_file(Kind kind) {
    auto f = scenario(reclib::Family::VU, kind, 2, 1, 5, 250,
                      "triggerSeconds=7|triggerTicks=8|triggerNo=9|timeCorrected=1|status=0|"
                      "startKind=4|stopKind=20|userFlag=1|cnct.c11=11|startUser=alice|"
                      "stopUser=bob|batchName=Lot 9|batchNo=123|batchNames.c1=1|count0=30|"
                      "count3=33|extChCount=2|channelNum.c1=41|"
                      "fileMessage=Fifty bytes of message text fill exactly this field!");
    f.list("group") = {rec("name=G0|members=3|c2=4|inUse=0"), rec("name=G1")};
    f.list("alarm") = {rec("channel=2|levelMask=16|type=7|serial=5|seconds=100|ticks=999|state=2")};
    f.list("message") = {rec("type=4|messageNo=6|seconds=101|ticks=500|serial=1|c4=4")};
    f.channels[0].values = {1, -2, 3, -4, 5};
    f.channels[0].alarms = {0, 1, 0, 2, 0};
    f.channels[2].values = {70000, -70000, 1, 2, 3};
    if (kind == Kind::Display) f.channels[2].values2 = {80000, -60000, 2, 3, 4};
    return f;
}

using VuCapi = Capi<VuApi>;

// A damaged display file at the end: status above 0, and both series still there.
TEST_F(VuCapi, EveryFunctionAndADamagedDisplayFile) {
    Text su(abi::kVuUserLen), pu(abi::kVuUserLen), bname(abi::kVuBatchNameLen),
        label(abi::kVuBatchLabelLen), text(abi::kVuBatchTextLen), comment(abi::kVuCommentLen),
        message(abi::kVuFileMessageLen);
    ASSERT_OK(api.DllVUOpenReadFile(write(vu_file(Kind::Event), "a.ose").c_str(), &h));
    ASSERT_OK(call(api.DllVUGetCnctInfo, h, any, out<13>(x)));
    EXPECT_EQ(ints(x + 4, 9), std::vector({7, 8, 9, 1, 0, 4, 20, 1, 11}));
    ASSERT_OK(api.DllVUGetBatchInfo(h, &x[0], &x[1], su, pu, &x[2]));
    EXPECT_EQ(su.str() + pu.str(), "alicebob");
    ASSERT_OK(api.DllVUGetBatchNames(h, bname, &x[0], &x[1]));
    EXPECT_EQ(bname.str() + std::to_string(x[0]) + std::to_string(x[1]), "Lot 91231");
    ASSERT_OK(api.DllVUGetBatchDescription(h, 7, label, text));
    EXPECT_EQ(label.str() + "|" + text.str(), "Label 8|Text 8");
    ASSERT_OK(api.DllVUGetBatchComment(h, 2, &x[0], &x[1], su, comment));
    EXPECT_EQ(comment.str() + "/" + su.str(), "Comment 3/Operator");
    ASSERT_OK(call(api.DllVUGetCommonInfo, h, any, out<4>(x), message, &x[4], &x[5]));
    EXPECT_EQ(message.raw(), "Fifty bytes of message text fill exactly this fiel");
    ASSERT_OK(call(api.DllVUGetSampleDataInfo, h, out<8>(x)));
    EXPECT_EQ(ints(x, 8), std::vector({0, 250, 5, 1, 30, 0, 0, 33}));
    ASSERT_OK(api.DllVUGetGroupNumInfo(h, &x[0], &x[1]));
    EXPECT_EQ(x[0], 2);
    ASSERT_OK(call(api.DllVUGetGroupInfo, h, 0, any, out<3>(x)));
    EXPECT_EQ(ints(x, 3), std::vector({3, 4, 0}));
    ASSERT_OK(api.DllVUGetMessageNum(h, &x[0]));
    EXPECT_EQ(x[0], 1);
    ASSERT_OK(call(api.DllVUGetChannelNumInfo, h, out<4>(x)));
    EXPECT_EQ(ints(x, 4), std::vector({2, 1, 2, 41}));
    ASSERT_OK(call(api.DllVUGetChannelInfo, h, 2, out<2>(x), any, any, any, &x[2], &lo, &hi,
                   out<5>(x + 3)));
    EXPECT_EQ(std::vector({x[1], x[4]}), std::vector({1, 31}));  // int32, number 31
    ASSERT_OK(call(api.DllVUGetAlarmEventData, h, 0, out<7>(x)));
    EXPECT_EQ(ints(x, 7), std::vector({2, 16, 7, 5, 100, 999, 2}));
    ASSERT_OK(call(api.DllVUGetMessage, h, 0, &x[0], any, &x[1], any, out<6>(x + 2)));
    EXPECT_EQ(std::vector({x[0], x[1], x[2], x[3], x[4], x[7]}),
              std::vector({4, 6, 101, 500, 1, 4}));
    std::int16_t s16[5];
    std::int32_t s32[5];
    EXPECT_EQ(api.DllVUGetShortData(h, 0, 1, 0, 4, s16, &x[0], &x[1]), 4);
    EXPECT_EQ(ints(s16, 4), std::vector({-2, 3, -4, 5}));
    EXPECT_EQ(api.DllVUGetLongData(h, 2, 0, 0, 5, s32, &x[0], &x[1]), 5);
    EXPECT_EQ(s32[1], -70000);
    std::uint8_t flags[5];
    EXPECT_EQ(api.DllVUGetAlarmData(h, 0, 0, 5, flags), 5);
    EXPECT_EQ(ints(flags, 5), std::vector({0, 1, 0, 2, 0}));
    expect_dates(api.DllVUtoDateTime);
    EXPECT_EQ(api.DllVUCloseFile(&h), abi::kOk);
    EXPECT_EQ(h, 0);
    ASSERT_OK(api.DllVUOpenReadFile(write(vu_file(Kind::Display), "a.osd", true).c_str(), &h));
    EXPECT_EQ(api.DllVUGetLongData(h, 4, 0, 1, 5, s32, &x[0], &x[1]), 5);  // kind 1: maxima
    EXPECT_EQ(s32[0], 80000);
    EXPECT_EQ(api.DllVUGetLongData(h, 4, 0, 0, 5, s32, &x[0], &x[1]), 5);
    EXPECT_EQ(s32[0], 70000);
    call(api.DllVUGetCnctInfo, h, any, out<13>(x));
    EXPECT_GT(x[8], 0);  // c9: damaged
    EXPECT_EQ(api.DllVUCloseFile(&h), abi::kOk);
    EXPECT_EQ(api.DllVUCloseFile(&h), abi::kErrHandle);
}

reclib::RecorderFile kl_file() {
    auto f = scenario(
        reclib::Family::KL, Kind::Event, 2, 1, 4, 125,
        "extChCount=1|ctrlChCount=2|groupWidth=3|samplingSeconds=0|samplingTicks=1|triggerNo=4|"
        "triggerSeconds=5|triggerTicks=6|userFlag=1|timeCorrected=1|count0=7|count1=8|count2=9|"
        "basic.c1=11|startKind=5|stopKind=16|startSource=9|stopSource=2|batchNo=12|batch.c1=1");
    f.list("alarm") = {rec(
        "channel=0|level=3|type=14|serial=1|occurSeconds=2|occurTicks=3|releaseSerial=4|"
        "releaseSeconds=5|releaseTicks=6|ackSerial=7|ackSeconds=8|ackTicks=9|source=7|state=3")};
    f.list("message") = {rec("serial=1|seconds=2|ticks=3|messageNo=4|c1=5|source=4")};
    f.list("tpvEvent") = {
        rec("kind=1|no=2|channel=3|seconds=4|ticks=5|offSeconds=6|offTicks=7|type=8|value=-1234|"
            "decimals=2")};
    f.list("ctrlMode") = {
        rec("loop=2|kind=1|seconds=3|ticks=4|mode=128|localRemote=1|programReset=2|runState=3|"
            "holdState=4|waitState=5|advanceState=6|programState=7|operation=8|c1=9|c2=10|c3=11")};
    f.list("loop") = {rec("loop=1|tag=LOOP1"), rec("loop=2|c1=1|c2=2|tag=|unit=%")};
    f.channels[0].values = {1, 2, 3, 4};
    f.channels[0].alarms = {0, 3, 0, 1};
    f.channels[2].values = {-1, -2, -3, 123456};
    return f;
}

using KlCapi = Capi<KlApi>;

TEST_F(KlCapi, EveryFunctionOnAKnownFile) {
    Text gname(abi::kKlGroupNameLen), ch(abi::kKlChannelLen), ltag(abi::kKlLoopTagLen),
        lunit(abi::kKlLoopUnitLen);
    ASSERT_OK(api.DllKLopenReadFile(write(kl_file(), "a.kle").c_str(), &h));
    ASSERT_OK(call(api.DllKLgetCnctInfo, h, any, out<10>(x)));
    EXPECT_EQ(ints(x + 4, 6), std::vector<int>({5, 16, 5, 6, 4, 1}));
    ASSERT_OK(call(api.DllKLgetBasicInfo, h, any, any, out<7>(x), any, out<22>(x + 7), any,
                   out<3>(x + 29)));
    // meas, math, ext, ctrl, data, alarms, events | ctrlNum, pvNum, groups, width, sampling
    // s/t, trigger no/s/t, status, userFlag, timeCorrected, counts, alarm data, c1.
    EXPECT_EQ(ints(x, 23), std::vector<int>({2, 1, 1, 2, 4, 1, 1, 1, 1, 2, 3, 0,
                                             1, 4, 5, 6, 0, 1, 1, 7, 8, 9, 1}));
    ASSERT_OK(
        api.DllKLgetBatchInfo(h, &x[0], any, &x[1], any, &x[2], any, any, any, any, &x[3], &x[4]));
    EXPECT_EQ(ints(x, 5), std::vector({9, 2, 1, 12, 1}));
    ASSERT_OK(api.DllKLgetGroupInfo(h, 1, gname, &x[0]));
    EXPECT_EQ(gname.str(), "Group 2");
    ASSERT_OK(call(api.DllKLgetChDataInfo2, h, 2, out<2>(x), any, any, ch, &x[2], &lo, &hi,
                   out<5>(x + 3)));
    EXPECT_EQ(ch.str() + std::to_string(x[1]), "CH0311");  // type int32
    ASSERT_OK(call(api.DllKLgetAlarmInfo, h, 0, out<11>(x), any, out<3>(x + 11)));
    EXPECT_EQ(ints(x, 14), std::vector<int>({0, 3, 14, 1, 2, 3, 4, 5, 6, 7, 8, 9, 7, 3}));
    ASSERT_OK(call(api.DllKLgetMessageInfo, h, 0, out<3>(x), any, out<3>(x + 3), any));
    EXPECT_EQ(ints(x, 6), std::vector<int>({1, 2, 3, 4, 5, 4}));
    ASSERT_OK(call(api.DllKLgetTPVEventInfo, h, 0, out<10>(x)));
    EXPECT_EQ(ints(x, 10), std::vector<int>({1, 2, 3, 4, 5, 6, 7, 8, -1234, 2}));
    ASSERT_OK(call(api.DllKLgetCtrlModeInfo, h, 0, out<16>(x)));
    EXPECT_EQ(ints(x, 16), std::vector<int>({2, 1, 3, 4, 128, 1, 2, 3, 4, 5, 6, 7, 8, 9, 10, 11}));
    ASSERT_OK(api.DllKLgetLoopInfo(h, 2, &x[0], &x[1], ltag, lunit));  // by number
    EXPECT_EQ(ltag.str() + lunit.str() + std::to_string(x[1]), "%2");
    std::int16_t s16[4];
    ASSERT_OK(api.DllKLgetMeasData(h, 0, 0, 4, &x[0], &x[1], s16, &x[2]));
    EXPECT_EQ(ints(s16, 4), std::vector<int>({1, 2, 3, 4}));
    ASSERT_OK(api.DllKLgetMathData(h, 2, 3, 1, &x[0], &x[1], x + 3, &x[2]));
    EXPECT_EQ(std::vector({x[2], x[3]}), std::vector({1, 123456}));
    std::uint8_t flags[4];
    ASSERT_OK(api.DllKLgetAlarm(h, 0, 0, 4, flags, &x[0]));
    EXPECT_EQ(ints(flags, 4), std::vector<int>({0, 3, 0, 1}));
    ASSERT_OK(api.DllKLgetTimes(h, 0, 4, x, x + 4, &x[8]));
    EXPECT_EQ(ints(x + 4, 4), std::vector<int>({0, 1, 2, 3}));
    expect_dates(api.DllKLtoDateTime);
    EXPECT_EQ(api.DllKLcloseReadFile(h), abi::kOk);
}

// Channels int16, int32, float32.
reclib::RecorderFile hn_file() {
    auto f = scenario(reclib::Family::HN, Kind::Event, 3, 0, 3, 500,
                      "startReason=2|stopReason=8|header.c4=4|comment=First; second");
    f.list("group") = {rec("name=A group name of exactly 32 bytes!")};
    f.list("unit") = {rec("number=1|c2=2|c3=3|serial=" + std::to_string(0x00C0FFEE))};
    f.list("alarm") = {rec("level=2|type=3|seconds=77")};
    f.list("mark") = {rec("creator=2|seconds=9|ticks=999|text=Mark|type=" + std::to_string(0x104))};
    f.channels[0].values = {-5, 0, 5};
    f.channels[1].values = {100000, 2, 3};
    f.channels[2].fvalues = {1.25f, -2.5f, 3.0f};
    put(f.channels[2].info, "fifoId=2|flags=1|decimals=2");
    f.list("fifo").push_back(rec("fifoId=2|fifoType=0|intervalMs=10"));
    return f;
}

using HnCapi = Capi<HnApi>;

// A damaged file at the end reports its status and still gives its data.
TEST_F(HnCapi, EveryFunctionAndADamagedFile) {
    Text comment(13), gname(abi::kHnGroupNameLen), stext(abi::kHnSerialTextLen);
    ASSERT_OK(api.DllHNOpenReadFile(write(hn_file(), "a.hnd").c_str(), &h));
    std::int16_t state, post;
    ASSERT_OK(call(api.DllHNGetFileHeader, h, &state, &post, out<24>(x)));
    // Stop ms, reasons, units, groups, comment length, channels, data, marks, alarms, alarm
    // flag, interval, c4, c5.
    EXPECT_EQ(std::vector<int>(x + 7, x + 21),
              std::vector<int>({0, 2, 8, 1, 1, 13, 3, 3, 1, 1, 1, 500, 4, 0}));
    ASSERT_OK(api.DllHNGetFileComment(h, 13, comment));
    EXPECT_EQ(comment.raw(), "First; second");
    ASSERT_OK(api.DllHNGetFileGroupName(h, 0, gname));
    EXPECT_EQ(gname.raw(), "A group name of exactly 32 bytes");
    ASSERT_OK(api.DllHNGetFileUnitHeader(h, 0, &x[0], &x[1], &x[2], &x[3]));
    EXPECT_EQ(ints(x, 4), std::vector({1, 0x00C0FFEE, 2, 3}));
    ASSERT_OK(api.DllHNSerialToString(&x[1], stext));
    EXPECT_EQ(stext.str(), "00C0FFEE");
    // number, c1, tag, text, unit, fifo id and type, decimals, unit index, type, flags.
    ASSERT_OK(call(api.DllHNGetFileChannelInfo, h, 2, out<2>(x), any, any, any, out<6>(x + 2), &lo,
                   &hi, out<2>(x + 8)));
    EXPECT_EQ(std::vector({x[0], x[2], x[3], x[4], x[6], x[7]}),
              std::vector({3, 2, 0, 2, 4, 1 | abi::kHnFlagFloat}));
    ASSERT_OK(call(api.DllHNGetFileFifoHeader, h, 1, 0, out<10>(x)));
    EXPECT_EQ(std::vector({x[0], x[1], x[6]}), std::vector({500, 3, 2}));  // 2 channels
    ASSERT_OK(api.DllHNGetFileAlarmInfo(h, 1, 0, &x[0], &x[1], &x[2]));
    EXPECT_EQ(ints(x, 3), std::vector({2, 3, 77}));
    std::int16_t mtype, mcreator;
    ASSERT_OK(api.DllHNGetFileMarkData(h, 0, &mtype, &mcreator, &x[0], &x[1], any));
    EXPECT_EQ(std::vector<int>({mtype, mcreator, x[0], x[1]}),
              std::vector<int>({0x104, 2, 9, 999}));
    std::int16_t s16[3];
    std::int32_t s32[3], sec[3], ms[3], fl[3], al[3];
    float fl32[3];
    EXPECT_EQ(api.DllHNGetFileFifoShortData(h, 1, 0, 0, 3, 0, s16, sec, ms, fl, al), 3);
    EXPECT_EQ(ints(s16, 3), std::vector<int>({-5, 0, 5}));
    EXPECT_EQ(api.DllHNGetFileFifoLongData(h, 1, 0, 1, 2, 1, s32, sec, ms, fl, al), 2);
    EXPECT_EQ(s32[0], 2);
    EXPECT_EQ(api.DllHNGetFileFifoFloatData(h, 2, 0, 2, 3, 0, fl32, sec, ms, fl, al), 3);
    EXPECT_EQ(fl32[1], -2.5f);
    expect_dates(api.DllHNtoDateTime);
    EXPECT_EQ(api.DllHNCloseReadFile(&h), abi::kOk);
    EXPECT_EQ(h, 0);
    ASSERT_OK(api.DllHNOpenReadFile(write(hn_file(), "d.hnd", true).c_str(), &h));
    call(api.DllHNGetFileHeader, h, &state, &post, out<24>(x));
    EXPECT_GT(x[2], 0);  // c3: status
    std::int16_t d[3] = {};
    EXPECT_EQ(api.DllHNGetFileFifoShortData(h, 1, 0, 0, 3, 0, d, sec, ms, fl, al), 3);
    EXPECT_EQ(ints(d, 3), std::vector<int>({-5, 0, 5}));
    api.DllHNCloseReadFile(&h);
}

}  // namespace
}  // namespace qumbrel::testing
