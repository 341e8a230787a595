// The HN reader over the reference library: the header tables, the data type deciding
// the FIFO function, alarm codes with and without the header's flag, marks, the time
// rebuild, file elements and the information list.
#include <gtest/gtest.h>

#include <algorithm>
#include <cstdlib>
#include <string>
#include <vector>

#include "reclib/model.h"
#include "reclib/writer.h"
#include "recorder/file_elements.h"
#include "recorder/hn_reader.h"
#include "tests/support/test_support.h"

namespace qumbrel {
namespace {

constexpr std::int32_t t0 = 1709683198;  // 2024-03-05 23:59:58 UTC

reclib::Fields fields(std::initializer_list<std::pair<const char*, reclib::Value>> items) {
    reclib::Fields f;
    for (const auto& [name, value] : items) f.put(name, value);
    return f;
}

// Four channels: int16 (1 decimal), int32, float32 (flag 256), and one of an unknown type.
reclib::RecorderFile scenario() {
    reclib::RecorderFile f;
    f.family = reclib::Family::HN;
    f.kind = reclib::Kind::Event;
    auto& h = f.header;
    h.set("fileState", 1).set("post", 1).set("creator", 7).set("headerType", 1);
    h.set("startReason", 2).set("stopReason", 8).set("samplingMs", 1500).set("timeCorrected", 1);
    h.set("comment", std::string("first\0second", 12));
    f.list("unit") = {fields({{"number", 1}, {"serial", 0x00C0FFEE}})};
    f.list("fifo") = {fields({{"fifoId", 1}, {"fifoType", 0}, {"intervalMs", 1500}})};
    f.list("group") = {fields({{"name", "Line/1"}}), fields({{"name", "Line 2"}})};
    f.list("alarm") = {fields({{"level", 0}, {"type", 4}, {"seconds", t0}}),
                       fields({{"level", 3}, {"type", 9}, {"seconds", t0 + 1}})};
    f.list("mark") = {fields({{"type", 4}, {"creator", 2}, {"seconds", t0}, {"text", "Go"}}),
                      fields({{"type", 0}, {"creator", 0}, {"seconds", t0}, {"text", "Unit"}})};
    const auto channel = [&f](int no, reclib::DataType type, int decimals) -> reclib::Channel& {
        auto& c = f.channels.emplace_back();
        c.type = type;
        c.info = fields({{"channelNo", no},
                         {"tag", "T" + std::to_string(no)},
                         {"text", "Text " + std::to_string(no)},
                         {"fifoId", 1},
                         {"fifoType", 0},
                         {"decimals", decimals}});
        return c;
    };
    auto& a = channel(1, reclib::DataType::Int16, 1);
    a.values = {-5, 0, 123};
    a.alarms = {0, 4, 9};
    a.flags = {0, 0, 0};
    auto& b = channel(2, reclib::DataType::Int32, 0);
    b.values = {70000, -1, 2};
    b.alarms = {1, 0, 0};
    b.flags = {0, 0, 0};
    auto& c = channel(3, reclib::DataType::Float32, 2);
    c.fvalues = {12.3f, -0.5f, 1e6f};
    c.alarms = {0, 0, 0};
    c.flags = {0, 0, 0};
    auto& d = channel(4, reclib::DataType::Int32, 0);
    d.info.set("dataType", 8);
    d.values = {5, 6, 7};
    d.alarms = {0, 0, 0};
    d.flags = {0, 0, 0};
    f.seconds = {t0, t0 + 1, t0 + 3};
    f.ticks = {0, 500, 0};
    return f;
}

class HnReaderTest : public ::testing::Test {
  protected:
    HnReaderTest() {
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

    std::vector<HNChannelPlan> plans(const std::string& path) {
        std::vector<HNChannelPlan> out;
        for (std::int32_t i = 0; i < 4; ++i) {
            HNChannelInfo c;
            HNGetChDataInfo(ctx, 0, path, i, c);
            out.push_back({i, c.fifoId, c.fifoType, c.dataType, c.flags, c.decimals,
                           std::to_string(c.channelNo)});
        }
        return out;
    }

    struct Read {
        std::vector<std::vector<double>> values{5};  // by channel position 1..4
        std::vector<std::string> times, dates, alarms;
        std::vector<SampleKind> kinds;  // of channel 4
    };
    Read read_all(const std::string& path, bool alarmTexts, const VUTimeBase& base,
                  std::size_t block) {
        const auto plan = plans(path);
        auto cursor = HNOpenMeasData(ctx, 0, path, plan, 3, alarmTexts, base, block);
        Read r;
        SampleBlock b;
        while (cursor->next(b)) {
            for (std::size_t i = 0; i < b.count; ++i) {
                for (std::size_t c = 1; c <= 4; ++c)
                    r.values[c].push_back(b.firstValues.value(i + 1, c));
                r.times.emplace_back(b.timesWithMs[i]);
                r.dates.emplace_back(b.dates[i]);
                r.alarms.push_back(b.alarm_text(i, 1));
                r.kinds.push_back(b.firstValues.kind(i + 1, 4));
            }
        }
        EXPECT_FALSE(cursor->failed()) << error_log();
        return r;
    }

    testing::TestProgram p{"en-US"};
    Program& ctx = *p;
};

TEST_F(HnReaderTest, HeaderTablesAndRecords) {
    const std::string path = write(scenario(), "a.hnd");
    HNHandle held(ctx, path);
    HNInfo info;
    HNGetInfo(ctx, held.get(), path, info);
    EXPECT_EQ(info.fileType, "DATA");
    EXPECT_EQ(info.fileState, "Recovered");
    EXPECT_EQ(info.post, "Synchronized ");  // with its blank
    EXPECT_EQ(info.creator, "-7-");
    EXPECT_EQ(info.startReason, "Continue");
    EXPECT_EQ(info.stopReason, "Error");
    EXPECT_EQ(info.fileMessage, "first; second");
    EXPECT_EQ(info.serialNo, "00C0FFEE");
    EXPECT_EQ(info.samplingInt, "1.500 sec");
    EXPECT_EQ(info.timeCorrect, "YES");
    EXPECT_EQ(info.groupName, "Line/1 - Line 2");
    EXPECT_EQ(std::vector({info.measChCount, info.dataCount, info.eventNum, info.unitNum}),
              std::vector({4, 3, 2, 1}));
    EXPECT_EQ(hn_stop_reason(3), "-3-");
    EXPECT_EQ(hn_file_state(5), "-5-");

    HNAlarmInfo al;
    HNGetAlarmInfo(ctx, held.get(), path, info.alarmNum, 0, al);
    EXPECT_EQ(al.level, 1);
    EXPECT_EQ(al.text, "Difference Low");
    EXPECT_EQ(al.shortText, "dL");
    EXPECT_EQ(al.time, "11:59:58 PM.00");
    HNGetAlarmInfo(ctx, held.get(), path, info.alarmNum, 1, al);
    EXPECT_EQ(al.text, "");  // type 9 is outside the table

    HNEventInfo ev;
    HNGetEventInfo(ctx, held.get(), path, 0, ev);
    EXPECT_EQ(ev.color, "Trigger");
    EXPECT_EQ(ev.group, "Math");
    EXPECT_EQ(ev.serial, 1);
    HNGetEventInfo(ctx, held.get(), path, 1, ev);
    EXPECT_EQ(ev.color, "unknown");
    EXPECT_EQ(ev.group, "Unit");

    HNChannelInfo ch;
    HNGetChDataInfo(ctx, held.get(), path, 2, ch);
    EXPECT_EQ(ch.dataType, 4);
    EXPECT_EQ(ch.flags & kHnFloatFlag, kHnFloatFlag);
    HNGetChDataInfo(ctx, held.get(), path, 1, ch);
    EXPECT_EQ(ch.flags & kHnFloatFlag, 0);
    EXPECT_EQ(error_log(), "");
}

TEST_F(HnReaderTest, DataTypeDecidesTheReaderAndAlarmCodesNeedTheFlag) {
    const std::string path = write(scenario(), "d.hnd");
    VUTimeBase base;
    for (const std::size_t block : {1u, 2u, 4096u}) {
        const Read r = read_all(path, true, base, block);
        EXPECT_EQ(r.values[1], (std::vector<double>{-0.5, 0, 12.3, 0}));
        EXPECT_EQ(r.values[2], (std::vector<double>{70000, -1, 2, 0}));
        // The float reader: the values as they were stored, the decimals not applied.
        EXPECT_EQ(r.values[3], (std::vector<double>{12.3, -0.5, 1e6, 0}));
        // An unknown type reads nothing.
        EXPECT_EQ(r.kinds[0], SampleKind::Empty);
        EXPECT_EQ(r.alarms, (std::vector<std::string>{"OFF", "dL", "", ""}));
        EXPECT_EQ(r.times[1], "11:59:59 PM.500");
        EXPECT_EQ(r.dates[2], "3/6/2024");
    }
    // Without the header's flag the blocks carry no alarm texts.
    const Read off = read_all(path, false, base, 4096);
    EXPECT_EQ(off.alarms, (std::vector<std::string>{"", "", "", ""}));
}

TEST_F(HnReaderTest, TimesInOneSecondAreRebuilt) {
    auto f = scenario();
    f.seconds.assign(3, t0 + 1);
    f.ticks.assign(3, 0);
    const std::string path = write(f, "same.hnd");
    HNInfo info;
    HNGetInfo(ctx, 0, path, info);
    const Read r = read_all(path, false, vu_time_base(ctx, info.startTime, info.samplingInt), 2);
    EXPECT_EQ(r.times, (std::vector<std::string>{"11:59:59 PM.00", "12:00:00 AM.500",
                                                 "12:00:02 AM.00", ""}));
    EXPECT_EQ(r.dates[1], "3/6/2024");
}

TEST_F(HnReaderTest, ElementsInfoListAndOtherFiles) {
    auto f = scenario();
    const std::string path = write(f, "e.hnd");
    HNGetFileElements(ctx, 0, path);
    auto& e = ctx.state<FileElements>();
    EXPECT_EQ(e.ti_S, "00C0FFEE");
    EXPECT_EQ(e.group(1), "Line1");
    EXPECT_EQ(e.group(2), "Line2");
    EXPECT_EQ(e.ti_LLL, "000");
    EXPECT_EQ(e.ti_C1, "");
    EXPECT_EQ(e.ti_HH, "23");

    FileInfoList list;
    fkt_ReadHNFileInfo(ctx, list, path);
    const auto& l = list.lines;
    const auto at = [&l](const std::string& line) {
        return std::find(l.begin(), l.end(), line) - l.begin();
    };
    EXPECT_EQ(at("Post: \tSynchronized "), at("File Message: \tfirst; second") + 1);
    EXPECT_EQ(at("Creator:        \t-7-"), at("Stop Reason: \tError") + 1);
    EXPECT_EQ(l.back(), "Group Name: \tLine/1 - Line 2");

    f.header.set("headerType", 2);
    HNInfo info;
    HNGetInfo(ctx, 0, write(f, "other.hnd"), info);
    EXPECT_EQ(info.fileType, "UNKNOWN");
    EXPECT_EQ(HNTypeCheck(ctx, p.dir.file("missing.hnd")), "no HN file header");
    EXPECT_EQ(error_log(), "");
}

}  // namespace
}  // namespace qumbrel
