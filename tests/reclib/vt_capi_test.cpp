// The VT library's C interface: every function once, bad handles, the handle table, and
// truncated or bit-flipped files.
#include <gtest/gtest.h>

#include "tests/reclib/libs.h"

namespace qumbrel::testing {
namespace {

// Two 16-bit channels and a 32-bit math channel, three samples, one record per list.
reclib::RecorderFile vt_file() {
    auto f = reclib::simulate({.channels = 2, .mathChannels = 1, .samples = 3});
    put(f.header,
        "typeCode=48|deviceType=VT210|serialNo=SN-0042|fileMessage=Line 3 \xB0"
        "C|count0=10|count1=11|count2=12|samplingSeconds=1|samplingTicks=1|triggerNo=3|"
        "triggerSeconds=999|triggerTicks=2|extChCount=4|unitCount=1|groupWidth=6");
    f.list("group") = {rec("name=Boiler|members=2"), rec("name=Stack|members=1")};
    f.list("alarm") = {rec("channel=1|releaseSerial=18|releaseSeconds=1002")};
    f.list("message") = {rec("message=Door open|user=dave")};
    f.channels[0].values = {-5, 0, 32767};
    f.channels[1].values = {12345, -32768, 7};
    f.channels[2].values = {100000, -100000, 70000};
    f.seconds = {1000, 1001, 1002};
    f.ticks = {0, 4, 7};
    return f;
}

using VtCapi = Capi<VtApi>;

// The VT reader's tests check the fields through this library; here the interface's edges.
TEST_F(VtCapi, EveryFunctionOnAnEventFile) {
    std::string path = write(vt_file(), "a.oge");
    EXPECT_EQ(api.DllVTgetTypeFile(path.data()), 48);
    ASSERT_OK(api.DllVTopenReadFile(path.c_str(), &h));
    ASSERT_OK(call(api.DllVTgetFileCnctInfoHandle, h, out<10>(x)));
    ASSERT_OK(call(api.DllVTgetInfoFile, h, out<12>(x), any, out<3>(x + 12)));
    EXPECT_EQ(ints(x, 15), std::vector({2, 1, 3, 10, 1, 1, 3, 999, 2, 11, 12, 1, 0, 1, 4}));

    Text serial(16), msg(32), t16(16), t32(32);
    ASSERT_OK(call(api.DllVTgetInfo2File, h, &x[0], serial, out<4>(x + 1), msg, out<5>(x + 5), t16,
                   &x[10], t16, &x[11], t16, t16, t16, t16, &x[12], t16, &x[13], &x[14], t32, t32,
                   t32, out<4>(x + 15)));
    EXPECT_EQ(serial.str() + msg.str(),
              "SN-0042Line 3 \xB0"
              "C");  // code page bytes pass

    ASSERT_OK(api.DllVTgetGroupNumFile(h, &x[0], &x[1]));
    EXPECT_EQ(ints(x, 2), std::vector({2, 6}));
    Text gname(abi::kVtGroupNameLen);
    ASSERT_OK(api.DllVTgetGroupInfoFile(h, 1, gname, &x[0]));
    EXPECT_EQ(api.DllVTgetGroupInfoFile(h, 2, gname, &x[0]), abi::kErrIndex);
    EXPECT_EQ(gname.raw() + std::to_string(x[0]), std::string(16, '\0') + "0");
    ASSERT_OK(call(api.DllVTgetAlarmInfoFile, h, 0, out<9>(x)));
    EXPECT_EQ(x[7], 1002);
    Text message(abi::kVtMessageLen), user(abi::kVtUserLen);
    ASSERT_OK(call(api.DllVTgetEventInfoFile, h, 0, out<3>(x), message, &x[3], &x[4], user));
    EXPECT_EQ(message.str() + user.str(), "Door opendave");

    Text name(abi::kVtChannelLen), tag(abi::kVtTagLen), reserved(abi::kVtReservedTextLen),
        unit(abi::kVtUnitLen);
    ASSERT_OK(api.DllVTgetChDataInfoFile(h, 2, &x[0], &x[1], name, tag, reserved, unit, &x[2]));
    EXPECT_EQ(name.str(), "CH031");
    ASSERT_OK(call(api.DllVTgetChDataInfo2File, h, 0, out<2>(x), name, tag, reserved, unit, &x[2],
                   &lo, &hi, out<5>(x + 3)));

    std::int16_t s16[4] = {9, 9, 9, 9};
    std::int32_t s32[4], type, count, received;
    ASSERT_OK(api.DllVTgetMeasDataFile(h, 0, 0, 4, &type, &count, s16, &received));
    EXPECT_EQ(ints(s16, 4), std::vector({-5, 0, 32767, 9}));
    // Position 2 is the math channel, by its place and not by its number.
    ASSERT_OK(api.DllVTgetMathDataFile(h, 2, 1, 5, &type, &count, s32, &received));
    EXPECT_EQ(std::vector({type, received, s32[0], s32[1]}), std::vector({1, 2, -100000, 70000}));
    // A 32-bit channel read through the 16-bit function saturates.
    ASSERT_OK(api.DllVTgetMeasDataFile(h, 2, 0, 2, &type, &count, s16, &received));
    EXPECT_EQ(ints(s16, 2), std::vector({32767, -32768}));
    EXPECT_EQ(api.DllVTgetMeasDataFile(h, 3, 0, 2, &type, &count, s16, &received), abi::kErrIndex);
    EXPECT_EQ(received, 0);

    ASSERT_OK(api.DllVTgetTimesFile(h, 0, 3, s32, x, &received));
    EXPECT_EQ(ints(x, 3), std::vector({0, 4, 7}));
    ASSERT_OK(api.DllVTgetTimesFile(h, -1, 3, s32, x, &received));
    EXPECT_EQ(received, 0);
    expect_dates(api.DllVTtoDateTime);
    EXPECT_EQ(api.DllVTcloseReadFile(h), abi::kOk);
    EXPECT_EQ(api.DllVTcloseReadFile(h), abi::kErrHandle);
}

TEST_F(VtCapi, BadHandlesAndFilesGiveZerosNotCrashes) {
    std::int32_t h = 77;
    EXPECT_EQ(api.DllVTopenReadFile(dir.file("missing.oge").c_str(), &h), abi::kErrOpen);
    EXPECT_EQ(h, 0);
    std::string garbage = dir.file("garbage.oge");
    write_file(garbage, "not a recorder file");
    EXPECT_EQ(api.DllVTopenReadFile(garbage.c_str(), &h), abi::kErrFormat);
    EXPECT_EQ(api.DllVTgetTypeFile(garbage.data()), 0);
    auto vu = vt_file();  // a file of another family is no VT file
    vu.family = reclib::Family::VU;
    EXPECT_EQ(api.DllVTopenReadFile(write(vu, "vu.ose").c_str(), &h), abi::kErrFormat);

    std::fill(x, x + 15, 5);
    Text device(32);
    EXPECT_EQ(call(api.DllVTgetInfoFile, 12345, out<12>(x), device, out<3>(x + 12)),
              abi::kErrHandle);
    EXPECT_EQ(ints(x, 15), std::vector<int>(15, 0));
    EXPECT_EQ(device.raw(), std::string(32, '\0'));
    EXPECT_EQ(api.DllVTgetGroupNumFile(12345, nullptr, nullptr), abi::kErrHandle);  // nulls skipped
}

TEST_F(VtCapi, FullHandleTableClosesTheHandleUsedLongestAgo) {
    const auto path = write(vt_file(), "a.oge");
    auto open = [&] {
        EXPECT_EQ(api.DllVTopenReadFile(path.c_str(), &h), abi::kOk);
        EXPECT_GT(h, 0);
        return h;
    };
    std::vector<std::int32_t> handles;
    for (int i = 0; i < abi::kMaxOpenHandles; ++i) handles.push_back(open());
    std::int32_t groups = 0, width = 0;
    // Touch the first handle: the second is now the one used longest ago.
    EXPECT_EQ(api.DllVTgetGroupNumFile(handles[0], &groups, &width), abi::kOk);
    const std::int32_t extra = open();
    EXPECT_EQ(api.DllVTgetGroupNumFile(handles[1], &groups, &width), abi::kErrHandle);
    EXPECT_EQ(groups, 0);
    EXPECT_EQ(api.DllVTgetGroupNumFile(handles[0], &groups, &width), abi::kOk);
    EXPECT_EQ(api.DllVTgetGroupNumFile(extra, &groups, &width), abi::kOk);
    EXPECT_EQ(groups, 2);
    for (std::int32_t each : handles) api.DllVTcloseReadFile(each);
    EXPECT_EQ(api.DllVTcloseReadFile(extra), abi::kOk);
}

// Truncated and bit-flipped files through the library itself: no crash, a failed open
// leaves no handle, and no read hands out more samples than the file holds.
TEST_F(VtCapi, TruncatedAndFlippedFiles) {
    const auto bytes = reclib::encode(reclib::simulate(
        {.kind = reclib::Kind::Display, .channels = 3, .mathChannels = 2, .samples = 50}));
    const std::string path = dir.file("c.ogd");
    reclib::Prng rng(11);
    for (int k = 0; k < 400; ++k) {
        std::vector<std::uint8_t> bad = bytes;
        if (k % 2 == 0) bad.resize(static_cast<std::size_t>(rng.next() % bytes.size()));
        for (int f = k % 2 ? rng.range(1, 6) : 0; f > 0; --f) {
            bad[rng.next() % bad.size()] ^= static_cast<std::uint8_t>(1u << rng.range(0, 7));
        }
        write_file(path, std::string_view(reinterpret_cast<const char*>(bad.data()), bad.size()));
        std::int32_t received = 0;
        h = 0;
        if (api.DllVTopenReadFile(path.c_str(), &h) != abi::kOk) {
            EXPECT_EQ(h, 0);
            continue;
        }
        call(api.DllVTgetInfoFile, h, out<12>(x), any, out<3>(x + 12));
        const std::int32_t data = x[2];
        if (k % 2 == 0) {
            EXPECT_LE(data, 50) << "cut at " << bad.size();
        }
        std::vector<std::int16_t> s16(static_cast<std::size_t>(data) + 1);
        std::vector<std::int32_t> s32(s16.size()), ticks(s16.size());
        for (std::int32_t p = 0; p < 11; ++p) {  // 2 x 5 positions and one beyond
            api.DllVTgetMeasDataFile(h, p, 0, data + 1, &x[0], &x[1], s16.data(), &received);
            EXPECT_LE(received, data);
            api.DllVTgetMathDataFile(h, p, 0, data + 1, &x[0], &x[1], s32.data(), &received);
            EXPECT_LE(received, data);
        }
        api.DllVTgetTimesFile(h, 0, data + 1, s32.data(), ticks.data(), &received);
        EXPECT_EQ(received, data);
        api.DllVTcloseReadFile(h);
    }
}

}  // namespace
}  // namespace qumbrel::testing
