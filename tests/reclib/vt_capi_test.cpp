// The VT library's C interface on a file with known fields, every function once.
#include <gtest/gtest.h>

#include <filesystem>

#include "reclib/writer.h"
#include "tests/reclib/libs.h"

namespace qumbrel::testing {
namespace {

using reclib::Channel;
using reclib::DataType;
using reclib::Fields;
using reclib::Kind;
using reclib::RecorderFile;

RecorderFile vt_file(Kind kind) {
    RecorderFile f;
    f.family = reclib::Family::VT;
    f.kind = kind;
    f.header.set("deviceType", "VT210")
        .set("typeCode", kind == Kind::Display ? 49 : 48)
        .set("serialNo", "SN-0042")
        .set("fileMessage",
             "Line 3 \xB0"
             "C")
        .set("count0", 10)
        .set("count1", 11)
        .set("count2", 12)
        .set("samplingSeconds", 1)
        .set("samplingTicks", 1)
        .set("triggerNo", 3)
        .set("triggerSeconds", 999)
        .set("triggerTicks", 2)
        .set("extChCount", 4)
        .set("unitCount", 1)
        .set("groupWidth", 6)
        .set("startSeconds", 1000)
        .set("startTicks", 0)
        .set("stopSeconds", 1002)
        .set("stopTicks", 7)
        .set("timeCorrected", 1)
        .set("startKind", 2)
        .set("stopKind", 3)
        .set("userFlag", 1)
        .set("startCode", 0)
        .set("startUser", "alice")
        .set("stopCode", 2)
        .set("stopUser", "bob")
        .set("batchFlag", 1)
        .set("application", "App")
        .set("supervisor", "Sup")
        .set("manager", "Man")
        .set("batchName", "Batch-7")
        .set("batchNo", 77)
        .set("commentUser", "carol")
        .set("commentSeconds", 1001)
        .set("commentTicks", 3)
        .set("comment1", "c1")
        .set("comment2", "c2")
        .set("comment3", "a comment far longer than thirty-two bytes")
        .set("info2.unusedA", 5)
        .set("info2.unusedI", 9)
        .set("cnct.unused4", 44);
    f.list("group") = {Fields{}.set("name", "Boiler").set("members", 2),
                       Fields{}.set("name", "Stack").set("members", 1)};
    f.list("alarm") = {Fields{}
                           .set("channel", 1)
                           .set("level", 2)
                           .set("type", 5)
                           .set("serial", 17)
                           .set("occurSeconds", 1001)
                           .set("occurTicks", 4)
                           .set("releaseSerial", 18)
                           .set("releaseSeconds", 1002)
                           .set("releaseTicks", 6)};
    f.list("message") = {Fields{}
                             .set("serial", 3)
                             .set("seconds", 1002)
                             .set("ticks", 1)
                             .set("message", "Door open")
                             .set("messageNo", 4)
                             .set("source", 2)
                             .set("user", "dave")};
    auto add = [&](const char* name, DataType type, bool math, int decimals,
                   std::vector<std::int32_t> lo, std::vector<std::int32_t> hi) {
        Channel ch;
        ch.type = type;
        ch.math = math;
        ch.info.set("kind", math ? 2 : 1)
            .set("channel", name)
            .set("tag", std::string("T") + name)
            .set("reserved", "r")
            .set("unit", "bar")
            .set("decimals", decimals)
            .set("scaleLow", -1.5)
            .set("scaleHigh", 2.5)
            .set("number1", 1)
            .set("number2", 2)
            .set("number3", 3)
            .set("number4", 4)
            .set("number5", 5);
        ch.values = std::move(lo);
        if (kind == Kind::Display) ch.values2 = std::move(hi);
        f.channels.push_back(std::move(ch));
    };
    add("CH001", DataType::Int16, false, 2, {-5, 0, 32767}, {5, 10, 32767});
    add("CH002", DataType::Int16, false, 0, {12345, -32768, 7}, {12346, -32767, 8});
    add("CH031", DataType::Int32, true, 1, {100000, -100000, 70000}, {100001, -99999, 70001});
    f.seconds = {1000, 1001, 1002};
    f.ticks = {0, 4, 7};
    return f;
}

class VtCapi : public ::testing::Test {
  protected:
    void SetUp() override {
        dir = std::filesystem::temp_directory_path() / ("reclib_vt_" + std::to_string(::getpid()));
        std::filesystem::create_directories(dir);
    }
    void TearDown() override { std::filesystem::remove_all(dir); }
    std::string write(const RecorderFile& f, const char* name, bool damaged = false) {
        const auto path = (dir / name).string();
        std::string error;
        EXPECT_TRUE(reclib::write_file(f, path, {.damaged = damaged}, &error)) << error;
        return path;
    }
    std::int32_t open(const std::string& path) {
        std::int32_t h = 0;
        EXPECT_EQ(api.DllVTopenReadFile(path.c_str(), &h), abi::kOk);
        EXPECT_GT(h, 0);
        return h;
    }
    std::filesystem::path dir;
    VtApi api;
};

TEST_F(VtCapi, HeaderBlocksGiveEveryField) {
    const auto path = write(vt_file(Kind::Event), "a.oge");
    std::string mutablePath = path;
    EXPECT_EQ(api.DllVTgetTypeFile(mutablePath.data()), 48);
    const std::int32_t h = open(path);

    std::int32_t u1, u2, u3, ss, st, es, et, u4, u5, u6;
    ASSERT_EQ(api.DllVTgetFileCnctInfoHandle(h, &u1, &u2, &u3, &ss, &st, &es, &et, &u4, &u5, &u6),
              abi::kOk);
    EXPECT_EQ(std::vector({u1, u2, u3, ss, st, es, et, u4}),
              std::vector({1, 1, 3, 1000, 0, 1002, 7, 44}));

    std::int32_t meas, math, data, c0, sS, sT, tNo, tS, tT, c1, c2, ev, status, al, ext;
    Text<abi::kVtDeviceTypeLen> device;
    ASSERT_EQ(api.DllVTgetInfoFile(h, &meas, &math, &data, &c0, &sS, &sT, &tNo, &tS, &tT, &c1, &c2,
                                   &ev, device, &status, &al, &ext),
              abi::kOk);
    EXPECT_EQ(std::vector({meas, math, data, c0, sS, sT, tNo, tS, tT, c1, c2, ev, status, al, ext}),
              std::vector({2, 1, 3, 10, 1, 1, 3, 999, 2, 11, 12, 1, 0, 1, 4}));
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
    EXPECT_EQ(serial.str(), "SN-0042");
    EXPECT_EQ(msg.str(),
              "Line 3 \xB0"
              "C");  // code page bytes pass through
    EXPECT_EQ(su.str() + pu.str() + cu.str(), "alicebobcarol");
    EXPECT_EQ(app.str() + sup.str() + man.str() + bname.str(), "AppSupManBatch-7");
    EXPECT_EQ(k1.str() + k2.str(), "c1c2");
    EXPECT_EQ(k3.raw(), "a comment far longer than thirty");  // cut to the field, no terminator

    std::int32_t groups, width, members;
    ASSERT_EQ(api.DllVTgetGroupNumFile(h, &groups, &width), abi::kOk);
    EXPECT_EQ(groups, 2);
    EXPECT_EQ(width, 6);
    Text<abi::kVtGroupNameLen> gname;
    ASSERT_EQ(api.DllVTgetGroupInfoFile(h, 1, gname, &members), abi::kOk);
    EXPECT_EQ(gname.str(), "Stack");
    EXPECT_EQ(members, 1);
    EXPECT_EQ(api.DllVTgetGroupInfoFile(h, 2, gname, &members), abi::kErrIndex);
    EXPECT_EQ(gname.raw(), std::string(16, '\0'));
    EXPECT_EQ(members, 0);
    EXPECT_EQ(api.DllVTcloseReadFile(h), abi::kOk);
    EXPECT_EQ(api.DllVTcloseReadFile(h), abi::kErrHandle);
}

TEST_F(VtCapi, RecordsAndChannelBlocks) {
    const std::int32_t h = open(write(vt_file(Kind::Event), "a.oge"));
    std::int32_t ch, lv, ty, se, os, ot, rs, rsec, rt;
    ASSERT_EQ(api.DllVTgetAlarmInfoFile(h, 0, &ch, &lv, &ty, &se, &os, &ot, &rs, &rsec, &rt),
              abi::kOk);
    EXPECT_EQ(std::vector({ch, lv, ty, se, os, ot, rs, rsec, rt}),
              std::vector({1, 2, 5, 17, 1001, 4, 18, 1002, 6}));
    EXPECT_EQ(api.DllVTgetAlarmInfoFile(h, 1, &ch, &lv, &ty, &se, &os, &ot, &rs, &rsec, &rt),
              abi::kErrIndex);
    EXPECT_EQ(rsec, 0);

    std::int32_t serial, sec, tick, no, src;
    Text<abi::kVtMessageLen> message;
    Text<abi::kVtUserLen> user;
    ASSERT_EQ(api.DllVTgetEventInfoFile(h, 0, &serial, &sec, &tick, message, &no, &src, user),
              abi::kOk);
    EXPECT_EQ(std::vector({serial, sec, tick, no, src}), std::vector({3, 1002, 1, 4, 2}));
    EXPECT_EQ(message.str(), "Door open");
    EXPECT_EQ(user.str(), "dave");

    std::int32_t kind, type, dec, n1, n2, n3, n4, n5;
    double lo, hi;
    Text<abi::kVtChannelLen> name;
    Text<abi::kVtTagLen> tag;
    Text<abi::kVtReservedTextLen> reserved;
    Text<abi::kVtUnitLen> unit;
    ASSERT_EQ(api.DllVTgetChDataInfoFile(h, 2, &kind, &type, name, tag, reserved, unit, &dec),
              abi::kOk);
    EXPECT_EQ(std::vector({kind, type, dec}), std::vector({2, 1, 1}));
    EXPECT_EQ(name.str() + tag.str() + reserved.str() + unit.str(), "CH031TCH031rbar");
    ASSERT_EQ(api.DllVTgetChDataInfo2File(h, 0, &kind, &type, name, tag, reserved, unit, &dec, &lo,
                                          &hi, &n1, &n2, &n3, &n4, &n5),
              abi::kOk);
    EXPECT_EQ(std::vector({kind, type, dec, n1, n2, n3, n4, n5}),
              std::vector({1, 0, 2, 1, 2, 3, 4, 5}));
    EXPECT_EQ(lo, -1.5);
    EXPECT_EQ(hi, 2.5);
    EXPECT_EQ(api.DllVTgetChDataInfo2File(h, 3, &kind, &type, name, tag, reserved, unit, &dec, &lo,
                                          &hi, &n1, &n2, &n3, &n4, &n5),
              abi::kErrIndex);
    api.DllVTcloseReadFile(h);
}

TEST_F(VtCapi, EventSamplesTimesAndMathChannel) {
    const std::int32_t h = open(write(vt_file(Kind::Event), "a.oge"));
    std::int16_t s16[4] = {9, 9, 9, 9};
    std::int32_t s32[4] = {9, 9, 9, 9};
    std::int32_t type, count, received;
    ASSERT_EQ(api.DllVTgetMeasDataFile(h, 0, 0, 4, &type, &count, s16, &received), abi::kOk);
    EXPECT_EQ(received, 3);
    EXPECT_EQ(count, 3);
    EXPECT_EQ(std::vector<int>(s16, s16 + 4), std::vector<int>({-5, 0, 32767, 9}));
    // Position 2 is the math channel, by its place and not by its number.
    ASSERT_EQ(api.DllVTgetMathDataFile(h, 2, 1, 5, &type, &count, s32, &received), abi::kOk);
    EXPECT_EQ(type, 1);
    EXPECT_EQ(received, 2);
    EXPECT_EQ(s32[0], -100000);
    EXPECT_EQ(s32[1], 70000);
    // A 32-bit channel read through the 16-bit function saturates.
    ASSERT_EQ(api.DllVTgetMeasDataFile(h, 2, 0, 2, &type, &count, s16, &received), abi::kOk);
    EXPECT_EQ(s16[0], 32767);
    EXPECT_EQ(s16[1], -32768);
    EXPECT_EQ(api.DllVTgetMeasDataFile(h, 3, 0, 2, &type, &count, s16, &received), abi::kErrIndex);
    EXPECT_EQ(received, 0);

    std::int32_t sec[3], tick[3];
    ASSERT_EQ(api.DllVTgetTimesFile(h, 0, 3, sec, tick, &received), abi::kOk);
    EXPECT_EQ(received, 3);
    EXPECT_EQ(std::vector<int>(sec, sec + 3), std::vector<int>({1000, 1001, 1002}));
    EXPECT_EQ(std::vector<int>(tick, tick + 3), std::vector<int>({0, 4, 7}));
    ASSERT_EQ(api.DllVTgetTimesFile(h, -1, 3, sec, tick, &received), abi::kOk);
    EXPECT_EQ(received, 0);
    api.DllVTcloseReadFile(h);
}

TEST_F(VtCapi, DisplayFileHasTwoPositionsPerChannel) {
    auto f = vt_file(Kind::Display);
    const auto path = write(f, "a.ogd");
    std::string p = path;
    EXPECT_EQ(api.DllVTgetTypeFile(p.data()), 49);
    const std::int32_t h = open(path);
    std::int16_t s16[3];
    std::int32_t s32[3], type, count, received;
    ASSERT_EQ(api.DllVTgetMeasDataFile(h, 3, 0, 3, &type, &count, s16, &received), abi::kOk);
    EXPECT_EQ(std::vector<int>(s16, s16 + 3), std::vector<int>({12346, -32767, 8}));  // max of ch 2
    ASSERT_EQ(api.DllVTgetMathDataFile(h, 4, 0, 3, &type, &count, s32, &received), abi::kOk);
    EXPECT_EQ(s32[1], -100000);  // min of the math channel
    ASSERT_EQ(api.DllVTgetMathDataFile(h, 5, 0, 3, &type, &count, s32, &received), abi::kOk);
    EXPECT_EQ(s32[1], -99999);
    EXPECT_EQ(api.DllVTgetMathDataFile(h, 6, 0, 3, &type, &count, s32, &received), abi::kErrIndex);
    api.DllVTcloseReadFile(h);
}

TEST_F(VtCapi, DamagedFileReportsStatusAndStillGivesData) {
    const std::int32_t h = open(write(vt_file(Kind::Event), "bad.oge", true));
    std::int32_t v[15];
    Text<32> device;
    ASSERT_EQ(api.DllVTgetInfoFile(h, &v[0], &v[1], &v[2], &v[3], &v[4], &v[5], &v[6], &v[7], &v[8],
                                   &v[9], &v[10], &v[11], device, &v[12], &v[13], &v[14]),
              abi::kOk);
    EXPECT_GT(v[12], 0);
    EXPECT_EQ(v[0], 2);
    std::int16_t s[3];
    std::int32_t type, count, received;
    api.DllVTgetMeasDataFile(h, 0, 0, 3, &type, &count, s, &received);
    EXPECT_EQ(received, 3);
    EXPECT_EQ(s[0], -5);
    api.DllVTcloseReadFile(h);
}

TEST_F(VtCapi, BadHandlesAndFilesGiveZerosNotCrashes) {
    std::int32_t h = 77;
    EXPECT_EQ(api.DllVTopenReadFile((dir / "missing.oge").c_str(), &h), abi::kErrOpen);
    EXPECT_EQ(h, 0);
    const auto garbage = (dir / "garbage.oge").string();
    {
        std::FILE* f = std::fopen(garbage.c_str(), "wb");
        std::fputs("not a recorder file", f);
        std::fclose(f);
    }
    EXPECT_EQ(api.DllVTopenReadFile(garbage.c_str(), &h), abi::kErrFormat);
    std::string g = garbage;
    EXPECT_EQ(api.DllVTgetTypeFile(g.data()), 0);
    // A file of another family is no VT file.
    auto vu = vt_file(Kind::Event);
    vu.family = reclib::Family::VU;
    EXPECT_EQ(api.DllVTopenReadFile(write(vu, "vu.ose").c_str(), &h), abi::kErrFormat);

    std::int32_t v[15];
    std::fill(v, v + 15, 5);
    Text<32> device;
    EXPECT_EQ(api.DllVTgetInfoFile(12345, &v[0], &v[1], &v[2], &v[3], &v[4], &v[5], &v[6], &v[7],
                                   &v[8], &v[9], &v[10], &v[11], device, &v[12], &v[13], &v[14]),
              abi::kErrHandle);
    EXPECT_EQ(std::vector<int>(v, v + 15), std::vector<int>(15, 0));
    EXPECT_EQ(device.raw(), std::string(32, '\0'));
    // Null out-pointers are skipped.
    EXPECT_EQ(api.DllVTgetGroupNumFile(12345, nullptr, nullptr), abi::kErrHandle);
}

TEST_F(VtCapi, ToDateTimeSplitsSecondsFromTheEpoch) {
    std::int32_t y, mo, d, hh, mi, s;
    api.DllVTtoDateTime(0, &y, &mo, &d, &hh, &mi, &s);
    EXPECT_EQ(std::vector({y, mo, d, hh, mi, s}), std::vector({1970, 1, 1, 0, 0, 0}));
    api.DllVTtoDateTime(951868799, &y, &mo, &d, &hh, &mi, &s);  // the leap day of 2000
    EXPECT_EQ(std::vector({y, mo, d, hh, mi, s}), std::vector({2000, 2, 29, 23, 59, 59}));
    api.DllVTtoDateTime(-1, &y, &mo, &d, &hh, &mi, &s);
    EXPECT_EQ(std::vector({y, mo, d, hh, mi, s}), std::vector({1969, 12, 31, 23, 59, 59}));
    api.DllVTtoDateTime(INT32_MAX, &y, &mo, &d, &hh, &mi, &s);
    EXPECT_EQ(std::vector({y, mo, d, hh, mi, s}), std::vector({2038, 1, 19, 3, 14, 7}));
}

TEST_F(VtCapi, FullHandleTableClosesTheHandleUsedLongestAgo) {
    const auto path = write(vt_file(Kind::Event), "a.oge");
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
