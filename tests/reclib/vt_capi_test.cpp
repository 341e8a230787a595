// The VT library's C interface on a file with known fields, every function once.
#include <gtest/gtest.h>

#include <fstream>

#include "reclib/writer.h"
#include "tests/reclib/libs.h"

namespace qumbrel::testing {
namespace {

using reclib::DataType;
using reclib::Kind;

reclib::RecorderFile vt_file(Kind kind) {
    reclib::RecorderFile f;
    f.family = reclib::Family::VT;
    f.kind = kind;
    put(f.header, kind == Kind::Display ? "typeCode=49" : "typeCode=48");
    put(f.header,
        "deviceType=VT210|serialNo=SN-0042|fileMessage=Line 3 \xB0"
        "C|count0=10|count1=11|count2=12|samplingSeconds=1|samplingTicks=1|triggerNo=3|"
        "triggerSeconds=999|triggerTicks=2|extChCount=4|unitCount=1|groupWidth=6|"
        "startSeconds=1000|startTicks=0|stopSeconds=1002|stopTicks=7|timeCorrected=1|"
        "startKind=2|stopKind=3|userFlag=1|startCode=0|startUser=alice|stopCode=2|stopUser=bob|"
        "batchFlag=1|application=App|supervisor=Sup|manager=Man|batchName=Batch-7|batchNo=77|"
        "commentUser=carol|commentSeconds=1001|commentTicks=3|comment1=c1|comment2=c2|"
        "comment3=a comment far longer than thirty-two bytes|info2.unusedA=5|info2.unusedI=9|"
        "cnct.unused4=44");
    f.list("group") = {rec("name=Boiler|members=2"), rec("name=Stack|members=1")};
    f.list("alarm") = {
        rec("channel=1|level=2|type=5|serial=17|occurSeconds=1001|occurTicks=4|"
            "releaseSerial=18|releaseSeconds=1002|releaseTicks=6")};
    f.list("message") = {
        rec("serial=3|seconds=1002|ticks=1|message=Door open|messageNo=4|"
            "source=2|user=dave")};
    auto add = [&](std::string name, DataType type, bool math, int decimals,
                   std::vector<std::int32_t> lo, std::vector<std::int32_t> hi) {
        auto& ch = f.channels.emplace_back();
        ch.type = type;
        ch.math = math;
        put(ch.info, "channel=" + name + "|tag=T" + name + "|kind=" + (math ? "2" : "1") +
                         "|decimals=" + std::to_string(decimals) +
                         "|reserved=r|unit=bar|scaleLow=-1.5|scaleHigh=2.5|number1=1|number2=2|"
                         "number3=3|number4=4|number5=5");
        ch.values = std::move(lo);
        if (kind == Kind::Display) ch.values2 = std::move(hi);
    };
    add("CH001", DataType::Int16, false, 2, {-5, 0, 32767}, {5, 10, 32767});
    add("CH002", DataType::Int16, false, 0, {12345, -32768, 7}, {12346, -32767, 8});
    add("CH031", DataType::Int32, true, 1, {100000, -100000, 70000}, {100001, -99999, 70001});
    f.seconds = {1000, 1001, 1002};
    f.ticks = {0, 4, 7};
    return f;
}

class VtCapi : public Capi<VtApi> {
  protected:
    std::int32_t open(const std::string& path) {
        std::int32_t h = 0;
        EXPECT_EQ(api.DllVTopenReadFile(path.c_str(), &h), abi::kOk);
        EXPECT_GT(h, 0);
        return h;
    }
};

TEST_F(VtCapi, EveryFunctionOnAnEventFile) {
    std::string path = files.write(vt_file(Kind::Event), "a.oge");
    EXPECT_EQ(api.DllVTgetTypeFile(path.data()), 48);
    const std::int32_t h = open(path);

    std::int32_t u[10];
    ASSERT_EQ(call(api.DllVTgetFileCnctInfoHandle, h, out<10>(u)), abi::kOk);
    EXPECT_EQ(ints(u, 8), std::vector({1, 1, 3, 1000, 0, 1002, 7, 44}));

    std::int32_t v[15];
    Text<abi::kVtDeviceTypeLen> device;
    ASSERT_EQ(call(api.DllVTgetInfoFile, h, out<12>(v), device, out<3>(v + 12)), abi::kOk);
    EXPECT_EQ(ints(v, 15), std::vector({2, 1, 3, 10, 1, 1, 3, 999, 2, 11, 12, 1, 0, 1, 4}));
    EXPECT_EQ(device.str(), "VT210");

    std::int32_t a, b, c, d, e, tc, sk, pk, uf, sc, pc, bf, bn, cs, ct, f, g, hh, i;
    Text<16> serial, su, pu, app, sup, man, bname, cu;
    Text<32> msg, k1, k2, k3;
    ASSERT_EQ(api.DllVTgetInfo2File(h, &a, serial, &b, &c, &d, &e, msg, &tc, &sk, &pk, &uf, &sc, su,
                                    &pc, pu, &bf, app, sup, man, bname, &bn, cu, &cs, &ct, k1, k2,
                                    k3, &f, &g, &hh, &i),
              abi::kOk);
    EXPECT_EQ(std::vector({a, tc, sk, pk, uf, sc, pc, bf, bn, cs, ct, i}),
              std::vector({5, 1, 2, 3, 1, 0, 2, 1, 77, 1001, 3, 9}));
    EXPECT_EQ(serial.str() + msg.str(),
              "SN-0042Line 3 \xB0"
              "C");  // code page bytes pass
    EXPECT_EQ(su.str() + pu.str() + cu.str() + app.str() + sup.str() + man.str() + bname.str(),
              "alicebobcarolAppSupManBatch-7");
    EXPECT_EQ(k1.str() + k2.str(), "c1c2");
    EXPECT_EQ(k3.raw(), "a comment far longer than thirty");  // cut to the field, no terminator

    std::int32_t groups, width, members;
    ASSERT_EQ(api.DllVTgetGroupNumFile(h, &groups, &width), abi::kOk);
    EXPECT_EQ(std::vector({groups, width}), std::vector({2, 6}));
    Text<abi::kVtGroupNameLen> gname;
    ASSERT_EQ(api.DllVTgetGroupInfoFile(h, 1, gname, &members), abi::kOk);
    EXPECT_EQ(gname.str() + std::to_string(members), "Stack1");
    EXPECT_EQ(api.DllVTgetGroupInfoFile(h, 2, gname, &members), abi::kErrIndex);
    EXPECT_EQ(gname.raw() + std::to_string(members), std::string(16, '\0') + "0");

    ASSERT_EQ(call(api.DllVTgetAlarmInfoFile, h, 0, out<9>(u)), abi::kOk);
    EXPECT_EQ(ints(u, 9), std::vector({1, 2, 5, 17, 1001, 4, 18, 1002, 6}));
    EXPECT_EQ(call(api.DllVTgetAlarmInfoFile, h, 1, out<9>(u)), abi::kErrIndex);
    EXPECT_EQ(u[7], 0);

    Text<abi::kVtMessageLen> message;
    Text<abi::kVtUserLen> user;
    ASSERT_EQ(call(api.DllVTgetEventInfoFile, h, 0, out<3>(u), message, &u[3], &u[4], user),
              abi::kOk);
    EXPECT_EQ(ints(u, 5), std::vector({3, 1002, 1, 4, 2}));
    EXPECT_EQ(message.str() + user.str(), "Door opendave");

    double lo, hi;
    Text<abi::kVtChannelLen> name;
    Text<abi::kVtTagLen> tag;
    Text<abi::kVtReservedTextLen> reserved;
    Text<abi::kVtUnitLen> unit;
    ASSERT_EQ(api.DllVTgetChDataInfoFile(h, 2, &u[0], &u[1], name, tag, reserved, unit, &u[2]),
              abi::kOk);
    EXPECT_EQ(ints(u, 3), std::vector({2, 1, 1}));
    EXPECT_EQ(name.str() + tag.str() + reserved.str() + unit.str(), "CH031TCH031rbar");
    ASSERT_EQ(call(api.DllVTgetChDataInfo2File, h, 0, &u[0], &u[1], name, tag, reserved, unit,
                   &u[2], &lo, &hi, out<5>(u + 3)),
              abi::kOk);
    EXPECT_EQ(ints(u, 8), std::vector({1, 0, 2, 1, 2, 3, 4, 5}));
    EXPECT_EQ(std::vector({lo, hi}), std::vector({-1.5, 2.5}));
    EXPECT_EQ(call(api.DllVTgetChDataInfo2File, h, 3, &u[0], &u[1], name, tag, reserved, unit,
                   &u[2], &lo, &hi, out<5>(u + 3)),
              abi::kErrIndex);

    std::int16_t s16[4] = {9, 9, 9, 9};
    std::int32_t s32[4], type, count, received;
    ASSERT_EQ(api.DllVTgetMeasDataFile(h, 0, 0, 4, &type, &count, s16, &received), abi::kOk);
    EXPECT_EQ(std::vector({received, count}), std::vector({3, 3}));
    EXPECT_EQ(ints(s16, 4), std::vector({-5, 0, 32767, 9}));
    // Position 2 is the math channel, by its place and not by its number.
    ASSERT_EQ(api.DllVTgetMathDataFile(h, 2, 1, 5, &type, &count, s32, &received), abi::kOk);
    EXPECT_EQ(std::vector({type, received, s32[0], s32[1]}), std::vector({1, 2, -100000, 70000}));
    // A 32-bit channel read through the 16-bit function saturates.
    ASSERT_EQ(api.DllVTgetMeasDataFile(h, 2, 0, 2, &type, &count, s16, &received), abi::kOk);
    EXPECT_EQ(ints(s16, 2), std::vector({32767, -32768}));
    EXPECT_EQ(api.DllVTgetMeasDataFile(h, 3, 0, 2, &type, &count, s16, &received), abi::kErrIndex);
    EXPECT_EQ(received, 0);

    std::int32_t tick[3];
    ASSERT_EQ(api.DllVTgetTimesFile(h, 0, 3, s32, tick, &received), abi::kOk);
    EXPECT_EQ(ints(s32, 3), std::vector({1000, 1001, 1002}));
    EXPECT_EQ(ints(tick, 3), std::vector({0, 4, 7}));
    ASSERT_EQ(api.DllVTgetTimesFile(h, -1, 3, s32, tick, &received), abi::kOk);
    EXPECT_EQ(received, 0);
    expect_dates(api.DllVTtoDateTime);
    EXPECT_EQ(api.DllVTcloseReadFile(h), abi::kOk);
    EXPECT_EQ(api.DllVTcloseReadFile(h), abi::kErrHandle);
}

TEST_F(VtCapi, DisplayFileHasTwoPositionsPerChannel) {
    std::string path = files.write(vt_file(Kind::Display), "a.ogd");
    EXPECT_EQ(api.DllVTgetTypeFile(path.data()), 49);
    const std::int32_t h = open(path);
    std::int16_t s16[3];
    std::int32_t s32[3], type, count, received;
    ASSERT_EQ(api.DllVTgetMeasDataFile(h, 3, 0, 3, &type, &count, s16, &received), abi::kOk);
    EXPECT_EQ(ints(s16, 3), std::vector({12346, -32767, 8}));  // max of channel 2
    ASSERT_EQ(api.DllVTgetMathDataFile(h, 4, 0, 3, &type, &count, s32, &received), abi::kOk);
    EXPECT_EQ(s32[1], -100000);  // min of the math channel
    ASSERT_EQ(api.DllVTgetMathDataFile(h, 5, 0, 3, &type, &count, s32, &received), abi::kOk);
    EXPECT_EQ(s32[1], -99999);
    EXPECT_EQ(api.DllVTgetMathDataFile(h, 6, 0, 3, &type, &count, s32, &received), abi::kErrIndex);
    api.DllVTcloseReadFile(h);
}

TEST_F(VtCapi, BadHandlesAndFilesGiveZerosNotCrashes) {
    std::int32_t h = 77;
    EXPECT_EQ(api.DllVTopenReadFile((files.dir() / "missing.oge").c_str(), &h), abi::kErrOpen);
    EXPECT_EQ(h, 0);
    std::string garbage = (files.dir() / "garbage.oge").string();
    std::ofstream(garbage) << "not a recorder file";
    EXPECT_EQ(api.DllVTopenReadFile(garbage.c_str(), &h), abi::kErrFormat);
    EXPECT_EQ(api.DllVTgetTypeFile(garbage.data()), 0);
    auto vu = vt_file(Kind::Event);  // a file of another family is no VT file
    vu.family = reclib::Family::VU;
    EXPECT_EQ(api.DllVTopenReadFile(files.write(vu, "vu.ose").c_str(), &h), abi::kErrFormat);

    std::int32_t v[15];
    std::fill(v, v + 15, 5);
    Text<32> device;
    EXPECT_EQ(call(api.DllVTgetInfoFile, 12345, out<12>(v), device, out<3>(v + 12)),
              abi::kErrHandle);
    EXPECT_EQ(ints(v, 15), std::vector<int>(15, 0));
    EXPECT_EQ(device.raw(), std::string(32, '\0'));
    EXPECT_EQ(api.DllVTgetGroupNumFile(12345, nullptr, nullptr), abi::kErrHandle);  // nulls skipped
}

TEST_F(VtCapi, FullHandleTableClosesTheHandleUsedLongestAgo) {
    const auto path = files.write(vt_file(Kind::Event), "a.oge");
    std::vector<std::int32_t> handles;
    for (int i = 0; i < abi::kMaxOpenHandles; ++i) handles.push_back(open(path));
    std::int32_t groups = 0, width = 0;
    // Touch the first handle: the second is now the one used longest ago.
    EXPECT_EQ(api.DllVTgetGroupNumFile(handles[0], &groups, &width), abi::kOk);
    const std::int32_t extra = open(path);
    EXPECT_EQ(api.DllVTgetGroupNumFile(handles[1], &groups, &width), abi::kErrHandle);
    EXPECT_EQ(groups, 0);
    EXPECT_EQ(api.DllVTgetGroupNumFile(handles[0], &groups, &width), abi::kOk);
    EXPECT_EQ(api.DllVTgetGroupNumFile(extra, &groups, &width), abi::kOk);
    EXPECT_EQ(groups, 2);
    for (std::int32_t h : handles) api.DllVTcloseReadFile(h);
    EXPECT_EQ(api.DllVTcloseReadFile(extra), abi::kOk);
}

}  // namespace
}  // namespace qumbrel::testing
