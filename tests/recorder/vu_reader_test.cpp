// The VU reader over the reference library: the code tables that are easy to get wrong
// (group slip, level mask, device code), the time rebuild across midnight, the block
// cursor's values and alarm flags, and the information list.
#include <gtest/gtest.h>

#include <cstdlib>
#include <string>
#include <vector>

#include "reclib/model.h"
#include "reclib/writer.h"
#include "recorder/file_elements.h"
#include "recorder/vu_reader.h"
#include "tests/support/test_support.h"

namespace qumbrel {
namespace {

constexpr std::int32_t k20240305_235958 = 1709683198;  // seconds since 1970, UTC

reclib::Fields fields(std::initializer_list<std::pair<const char*, reclib::Value>> items) {
    reclib::Fields f;
    for (const auto& [name, value] : items) f.put(name, value);
    return f;
}

// Two int16 channels and one int32 math channel, four samples a second apart.
reclib::RecorderFile scenario(reclib::Kind kind) {
    constexpr std::int32_t t0 = k20240305_235958;
    reclib::RecorderFile f;
    f.family = reclib::Family::VU;
    f.kind = kind;
    auto& h = f.header;
    h.set("deviceCode", kind == reclib::Kind::Display ? "b2" : "A1").set("serialNo", " U-77 ");
    h.set("fileMessage", "Oven 3").set("samplingSeconds", 1).set("samplingTicks", 0);
    h.set("startKind", 20).set("stopKind", 3).set("startSource", 9).set("stopSource", 5);
    h.set("extChCount", 2).set("batchFlag", 1).set("batchName", "Lot/9").set("batchNo", 7);
    h.set("userFlag", 1).set("startUser", "ann").set("stopUser", "bob");
    f.list("batchDescription") = {fields({{"label", "Line"}, {"text", "L2"}}),
                                  fields({{"label", ""}, {"text", "free"}})};
    f.list("batchComment") = {
        fields({{"seconds", t0}, {"ticks", 250}, {"user", "carl"}, {"comment", " hot "}})};
    f.list("alarm") = {};
    for (const std::int32_t mask : {1, 2, 3, 4, 8, 16}) {
        f.list("alarm").push_back(fields({{"channel", 1},
                                          {"levelMask", mask},
                                          {"type", mask == 16 ? 9 : 5},
                                          {"serial", 100 + mask},
                                          {"seconds", t0},
                                          {"ticks", 7},
                                          {"state", mask % 4}}));
    }
    f.list("message") = {fields({{"type", 4},
                                 {"user", "ann"},
                                 {"messageNo", 2},
                                 {"message", "Door"},
                                 {"seconds", t0 + 1},
                                 {"ticks", 5},
                                 {"serial", 12}})};
    const bool display = kind == reclib::Kind::Display;
    auto& a = f.channels.emplace_back();
    a.info = fields({{"channel", "T1C05"}, {"tag", "Temp"}, {"unit", "C"}, {"decimals", 1}});
    a.values = {-5, 0, 123, 32767};
    if (display) a.values2 = {5, 1, 124, -32768};
    a.alarms = {0, 1, 0, 8};
    auto& b = f.channels.emplace_back();
    b.info = fields({{"channel", "P2"}, {"decimals", 0}, {"number3", 3}});
    b.values = {1, 2, 3, 4};
    if (display) b.values2 = {11, 12, 13, 14};
    b.alarms = {2, 0, 0, 0};
    auto& m = f.channels.emplace_back();
    m.math = true;
    m.type = reclib::DataType::Int32;
    m.info = fields({{"channel", "CH031"}, {"decimals", 2}});
    m.values = {100000, -1, 0, 2147483647};
    if (display) m.values2 = {100001, 0, 1, -2147483647};
    m.alarms = {0, 0, 0, 0};
    f.seconds = {t0, t0 + 1, t0 + 2, t0 + 3};
    f.ticks = {0, 0, 500, 999};
    return f;
}

class VuReaderTest : public ::testing::Test {
  protected:
    VuReaderTest() {
        ::setenv("QUMBREL_RECLIB_PATH", QUMBREL_BIN_DIR, 1);
        p->opt.decseparator = ".";
    }

    std::string write(const reclib::RecorderFile& f, std::string_view name) {
        const std::string path = p.dir.file(name);
        std::string error;
        if (!reclib::write_file(f, path, {}, &error)) ADD_FAILURE() << error;
        return path;
    }
    std::string error_log() { return testing::read_file(p->program_file("error.log")); }

    // Every sample of the cursor: dates, times with ms, first values of position `c`.
    struct Read {
        std::vector<std::string> dates, times;
        std::vector<double> first, second;
        std::vector<std::string> alarms;
    };
    Read read_all(const std::string& path, const VUTimeBase& base, bool single, std::size_t c,
                  std::size_t block, std::int32_t count = 4) {
        const std::vector<std::string> numbers = {"105", "2", "31"};
        const std::vector<std::int32_t> decimals = {1, 0, 2}, types = {0, 0, 1};
        auto cursor = VUOpenMeasData(ctx, 0, path, numbers, count, decimals, types, base,
                                     to_flag(single), block);
        Read r;
        SampleBlock b;
        while (cursor->next(b)) {
            EXPECT_EQ(b.firstValues.value(0, c), std::stod(numbers[c - 1]));
            for (std::size_t i = 0; i < b.count; ++i) {
                r.dates.emplace_back(b.dates[i]);
                r.times.emplace_back(b.timesWithMs[i]);
                r.first.push_back(b.firstValues.value(i + 1, c));
                if (!single) r.second.push_back(b.secondValues.value(i + 1, c));
                r.alarms.push_back(b.alarm_text(i, c));
            }
        }
        EXPECT_FALSE(cursor->failed()) << error_log();
        return r;
    }

    testing::TestProgram p{"en-US"};
    Program& ctx = *p;
};

TEST_F(VuReaderTest, HeaderTablesAndRecords) {
    const std::string path = write(scenario(reclib::Kind::Display), "a.osd");
    VUHandle held(ctx, path);
    ASSERT_GT(held.get(), 0);
    VUInfo info;
    VUGetInfo(ctx, held.get(), path, info);
    EXPECT_EQ(info.deviceType, "VT2100 ");  // lower-case hex digits too, trailing blank kept
    EXPECT_EQ(info.fileType, "Display File");
    EXPECT_EQ(info.serialNo, "U-77");
    EXPECT_EQ(info.startingCond, "RESERVED");
    EXPECT_EQ(info.dividingCond, "Black Out");
    EXPECT_EQ(info.startedBy, "[UNKNOWN-9]");
    EXPECT_EQ(info.stoppedBy, "[SYSTEM IN]");
    EXPECT_EQ(info.samplingInt, "1.000 sec");
    EXPECT_EQ(std::vector({info.measChCount, info.mathChCount, info.extChCount, info.dataCount}),
              std::vector({2, 1, 2, 4}));
    EXPECT_EQ(info.startTime, "3/5/2024 11:59:58 PM.00");

    VUBatchInfo batch;
    VUGetBatchInfo(ctx, held.get(), path, batch);
    EXPECT_EQ(batch.batchName, "Lot/9");
    EXPECT_EQ(batch.startAction, "[UNKNOWN-9]");  // the batch table stops at 4
    EXPECT_EQ(batch.stopAction, "[UNKNOWN-5]");
    EXPECT_EQ(batch.comment[0], "hot");
    EXPECT_EQ(batch.commentTime[0], "3/5/2024 11:59:58 PM.250");
    EXPECT_EQ(vu_batch_text(batch.label[0], batch.text[0]), "Line: L2");
    EXPECT_EQ(vu_batch_text(batch.label[1], batch.text[1]), "free");

    // Level from the mask: one bit each, 16 for all, anything else 0.
    const std::vector<std::int32_t> levels = {1, 2, 0, 3, 4, 1234};
    for (std::int32_t i = 0; i < 6; ++i) {
        VUAlarmInfo al;
        VUGetAlarmInfo(ctx, held.get(), path, i, al);
        EXPECT_EQ(al.level, levels[static_cast<std::size_t>(i)]) << i;
        EXPECT_EQ(al.channel, 2);
    }
    VUAlarmInfo last;
    VUGetAlarmInfo(ctx, 0, path, 5, last);  // by path alone, too
    EXPECT_EQ(last.levelNo, 116);
    EXPECT_EQ(last.text, "");  // type 9 is outside the table
    EXPECT_EQ(last.shortText, "");
    EXPECT_EQ(last.stateText, "OFF");
    EXPECT_EQ(last.time, "11:59:58 PM.007");
    VUAlarmInfo first;
    VUGetAlarmInfo(ctx, held.get(), path, 0, first);
    EXPECT_EQ(first.text, "Rate of change High");
    EXPECT_EQ(first.shortText, "rH");
    EXPECT_EQ(first.stateText, "ON");

    VUEventInfo ev;
    VUGetEventInfo(ctx, held.get(), path, 0, ev);
    EXPECT_EQ(ev.sourceText, "Event entry");
    EXPECT_EQ(ev.messageNo, 3);
    EXPECT_EQ(ev.serial, 12);
    EXPECT_EQ(ev.date, "3/5/2024");

    VUChannelInfo ch;
    VUGetChDataInfo(ctx, held.get(), path, 0, ch);
    EXPECT_EQ(ch.chNo, 105);  // every digit of the name, wherever it stands
    VUGetChDataInfo(ctx, held.get(), path, 2, ch);
    EXPECT_EQ(ch.chNo, 31);
    EXPECT_EQ(ch.dataType, 1);
    EXPECT_EQ(error_log(), "");
}

TEST_F(VuReaderTest, GroupNamesSlipAtIndex18AndDropThe37th) {
    auto f = scenario(reclib::Kind::Event);
    auto& groups = f.list("group");
    for (int g = 0; g < 40; ++g)
        groups.push_back(fields({{"name", "G" + std::to_string(g)}, {"inUse", g == 3 ? 0 : 1}}));
    const std::string path = write(f, "groups.ose");
    VUGetFileElements(ctx, 0, path);
    auto& e = ctx.state<FileElements>();
    EXPECT_EQ(e.group(1), "G0");
    EXPECT_EQ(e.group(4), "");      // not in use
    EXPECT_EQ(e.group(11), "G18");  // index 18 lands on ti_11 ...
    EXPECT_EQ(e.group(19), "");     // ... and leaves ti_19 empty
    EXPECT_EQ(e.group(36), "G35");
    EXPECT_EQ(e.ti_B, "Lot9");
    EXPECT_EQ(e.ti_LLL, "007");
    EXPECT_EQ(e.ti_C1, "hot");
    EXPECT_EQ(e.ti_S, "U-77");
    EXPECT_EQ(e.ti_YYYY, "2024");
    EXPECT_EQ(e.ti_HH, "23");
    EXPECT_EQ(error_log(), "");
}

TEST_F(VuReaderTest, CursorGivesValuesFlagsAndTimesAcrossBlocks) {
    const std::string path = write(scenario(reclib::Kind::Display), "d.osd");
    VUInfo info;
    VUGetInfo(ctx, 0, path, info);
    const VUTimeBase base = vu_time_base(ctx, info.startTime, info.samplingInt);
    EXPECT_EQ(base.startMsec, 86398000);
    EXPECT_EQ(base.intervalText, "1000 sec");
    for (const std::size_t block : {1u, 3u, 4096u}) {
        const Read ch1 = read_all(path, base, false, 1, block);
        EXPECT_EQ(ch1.first, (std::vector<double>{-0.5, 0, 12.3, 3276.7, 0}));
        EXPECT_EQ(ch1.second, (std::vector<double>{0.5, 0.1, 12.4, -3276.8, 0}));
        EXPECT_EQ(ch1.alarms, (std::vector<std::string>{"0", "1", "0", "8", ""}));
        // The file's own times, midnight crossed by the library's seconds.
        EXPECT_EQ(ch1.times, (std::vector<std::string>{"11:59:58 PM.00", "11:59:59 PM.00",
                                                       "12:00:00 AM.500", "12:00:01 AM.999", ""}));
        EXPECT_EQ(ch1.dates[2], "3/6/2024");
        const Read math = read_all(path, base, false, 3, block);
        EXPECT_EQ(math.first, (std::vector<double>{1000, -0.01, 0, 21474836.47, 0}));
    }
}

TEST_F(VuReaderTest, TimesInOneSecondAreRebuiltFromTheIntervalAcrossMidnight) {
    auto f = scenario(reclib::Kind::Event);
    f.seconds.assign(4, k20240305_235958);  // a library that gives no real times
    f.ticks.assign(4, 0);
    const std::string path = write(f, "same.ose");
    VUInfo info;
    VUGetInfo(ctx, 0, path, info);
    const VUTimeBase base = vu_time_base(ctx, info.startTime, info.samplingInt);
    for (const std::size_t block : {1u, 2u, 4096u}) {
        const Read r = read_all(path, base, true, 2, block);
        EXPECT_EQ(r.times, (std::vector<std::string>{"11:59:58 PM.00", "11:59:59 PM.00",
                                                     "12:00:00 AM.00", "12:00:01 AM.00", ""}));
        EXPECT_EQ(r.dates[1], "3/5/2024");
        EXPECT_EQ(r.dates[2], "3/6/2024");
        EXPECT_EQ(r.dates[3], "3/6/2024");
        EXPECT_EQ(r.first, (std::vector<double>{1, 2, 3, 4, 0}));
    }
    // Half-second steps in the same second keep their milliseconds.
    VUTimeBase half = base;
    half.intervalText = "0500 sec";
    const Read r = read_all(path, half, true, 2, 4096);
    EXPECT_EQ(r.times[1], "11:59:58 PM.500");
    EXPECT_EQ(r.times[3], "11:59:59 PM.500");
    EXPECT_EQ(error_log(), "");
}

TEST_F(VuReaderTest, FileInfoListLines) {
    const std::string path = write(scenario(reclib::Kind::Event), "i.ose");
    FileInfoList list;
    fkt_ReadVUFileInfo(ctx, list, path);
    const auto& l = list.lines;
    const auto at = [&l](const std::string& line) {
        return std::find(l.begin(), l.end(), line) - l.begin();
    };
    ASSERT_LT(at("Math. Ch. Count: \t1"), static_cast<long>(l.size()));
    EXPECT_EQ(at("Ext. Ch. Count: \t2"), at("Math. Ch. Count: \t1") + 1);
    EXPECT_EQ(at("Ext. Cahnnel: 2"), at("End Time: \t3/6/2024 12:00:01 AM.999") + 1);
    EXPECT_EQ(at("Start User: \tann") + 1, at("Stop User: \tbob"));
    EXPECT_EQ(at("Application : \t") + 1, at("Batch Name: \tLot/9"));
    EXPECT_EQ(at("Batch No: \t\t7") + 1, at("Comment 1: \thot"));
    EXPECT_EQ(at("Comment 3: \t") + 1, at("Text 1: \tLine: L2"));
    EXPECT_EQ(at("Text 8: \t") + 1, static_cast<long>(l.size()) - 1);
    EXPECT_EQ(list.backColor, kInfoColorNormal);
    EXPECT_EQ(error_log(), "");
}

TEST_F(VuReaderTest, NotAVuFileAndAMissingFileAreReportedNotCrashed) {
    const std::string junk = p.dir.file("junk.ose");
    testing::write_file(junk, std::string(300, 'x'));
    EXPECT_EQ(VUTypeCheck(ctx, junk), "no VU file header");
    EXPECT_EQ(VUTypeCheck(ctx, write(scenario(reclib::Kind::Event), "ok.ose")), "");
    VUInfo info;
    VUGetInfo(ctx, 0, p.dir.file("missing.ose"), info);
    EXPECT_EQ(info.dataCount, 0);
    // A count beyond what the file can hold ends the cursor in its trap.
    const std::vector<std::string> numbers = {"1"};
    const std::vector<std::int32_t> zero = {0};
    auto cursor = VUOpenMeasData(ctx, 0, junk, numbers, 1 << 30, zero, zero, {}, kTrue);
    SampleBlock b;
    EXPECT_FALSE(cursor->next(b));
    EXPECT_TRUE(cursor->failed());
    EXPECT_NE(error_log().find("VUGetMeasData of Modul DllVUFileAccess"), std::string::npos);
}

}  // namespace
}  // namespace qumbrel
