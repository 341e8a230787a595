// The VT reader over the reference library: files made with the writer, read back through
// every reader, compared with the scenario that made them.
#include <gtest/gtest.h>

#include <limits>

#include <cstdlib>
#include <string>
#include <vector>

#include "reclib/model.h"
#include "reclib/writer.h"
#include "recorder/file_elements.h"
#include "recorder/time_text.h"
#include "recorder/vt_reader.h"
#include "tests/support/test_support.h"

namespace qumbrel {
namespace {

constexpr std::int32_t k20070309_120503 = 1173441903;  // seconds since 1970
constexpr std::int32_t k20070308_100000 = 1173348000;

// fields("name", value, "name", value, ...)
void put(reclib::Fields&) {}
template <class V, class... Rest>
void put(reclib::Fields& f, std::string_view name, V value, Rest... rest) {
    f.set(name, value);
    put(f, rest...);
}
template <class... A>
reclib::Fields fields(A... a) {
    reclib::Fields f;
    put(f, a...);
    return f;
}

// The scenario both VT kinds share: two measuring channels, one math channel (31), four
// samples, two alarms, one message, batch data, two groups.
reclib::RecorderFile scenario(reclib::Kind kind) {
    constexpr std::int32_t t0 = k20070309_120503;
    reclib::RecorderFile f;
    f.family = reclib::Family::VT;
    f.kind = kind;
    auto& h = f.header;
    put(h, "deviceType", "VT210", "serialNo", " S-123 4 ", "fileMessage", "Line 7 \260C");
    put(h, "samplingSeconds", 1, "samplingTicks", 1, "timeCorrected", 0);
    put(h, "triggerNo", 3, "triggerSeconds", t0 + 1, "triggerTicks", 4);
    put(h, "startKind", 2, "stopKind", 3, "startCode", 0, "stopCode", 0);
    put(h, "userFlag", 1, "startUser", "anna", "stopUser", "bob;");
    put(h, "batchFlag", 1, "application", "Dryer", "supervisor", "Sue", "manager", "Max");
    put(h, "batchName", "Batch 7/a", "batchNo", 42, "commentUser", "carl");
    put(h, "commentSeconds", k20070308_100000, "commentTicks", 2);
    put(h, "comment1", "  first  ", "comment2", "second", "comment3", "");
    f.list("group") = {fields("name", "Grp A", "members", 2),
                       fields("name", "Grp-B", "members", 1)};
    f.list("alarm") = {fields("channel", 0, "level", 1, "type", 1, "serial", 5, "occurSeconds", t0,
                              "occurTicks", 2, "releaseSerial", 6, "releaseSeconds", t0 + 2),
                       fields("channel", 2, "level", 0, "type", 9, "serial", 7, "occurSeconds", t0,
                              "releaseSerial", 8, "releaseSeconds", 0)};
    f.list("message") = {fields("serial", 9, "seconds", t0 + 3, "ticks", 7, "message", " Start #1 ",
                                "messageNo", 0, "source", 2, "user", "anna")};

    const bool display = kind == reclib::Kind::Display;
    auto& c1 = f.channels.emplace_back();
    c1.info = fields("channel", "CH001", "tag", "Temp \260C", "unit", "\260C", "decimals", 2);
    c1.values = {-5, 0, 12345, 32767};
    if (display) c1.values2 = {-4, 1, 12346, -32768};
    auto& c2 = f.channels.emplace_back();
    c2.info = fields("channel", "CH002", "tag", "", "unit", "bar", "decimals", 0);
    c2.values = {1, 2, 3, 4};
    if (display) c2.values2 = {11, 12, 13, 14};
    auto& m = f.channels.emplace_back();
    m.math = true;
    m.type = reclib::DataType::Int32;
    m.info = fields("channel", "CH031", "tag", "Sum", "decimals", 1);
    m.values = {100000, -1, 0, 2147483647};
    if (display) m.values2 = {100001, 0, 1, -2147483647};
    f.seconds = {t0, t0 + 1, t0 + 1, t0 + 2};
    f.ticks = {0, 1, 2, 7};
    return f;
}

using Names = std::vector<std::string>;
using Decimals = std::vector<std::int32_t>;

class VtReaderTest : public ::testing::Test {
  protected:
    VtReaderTest() {
        ::setenv("QUMBREL_RECLIB_PATH", QUMBREL_BIN_DIR, 1);
        p->opt.decseparator = ",";
    }

    std::string write(const reclib::RecorderFile& f, std::string_view name,
                      reclib::WriteOptions options = {}) {
        const std::string path = p.dir.file(name);
        std::string error;
        if (!reclib::write_file(f, path, options, &error)) ADD_FAILURE() << error;
        return path;
    }
    std::string error_log() { return testing::read_file(p->program_file("error.log")); }

    testing::TestProgram p{"de-DE"};
    Program& ctx = *p;
};

// The info list below shows most of VTGetInfo; here the rest, and the per-record readers.
TEST_F(VtReaderTest, EventFileThroughTheRecordReaders) {
    auto f = scenario(reclib::Kind::Event);
    // The alarm and source text tables at their edges, behind the scenario's own records.
    const std::pair<int, std::string> alarms[] = {{0, "OFF"}, {8, "Delay Low"}, {9, ""}, {-1, ""}};
    const std::pair<int, std::string> sources[] = {
        {1, "Key entry"}, {3, "Communication entry"}, {4, "unknown"}, {-1, "unknown"}};
    for (const auto& [type, text] : alarms)
        f.list("alarm").push_back(fields("type", type, "occurSeconds", k20070309_120503));
    for (const auto& [source, text] : sources)
        f.list("message").push_back(fields("source", source, "message", "m"));
    const std::string path = write(f, "run1.oge");
    VTInfo info;
    info.batchNo = -77;
    VTGetInfo(ctx, path, info);
    EXPECT_EQ(info.batchNo, -77);  // never written (kept so)
    VTChannelInfo c;
    VTGetChDataInfo(ctx, path, 2, c);
    EXPECT_EQ(c.chNo, 31);
    VTAlarmInfo a;
    VTGetAlarmInfo(ctx, path, 0, a);
    EXPECT_EQ(a.channel, 1);
    EXPECT_EQ(a.releaseDate + " " + a.releaseTime, "09.03.2007 12:05:05.00");
    EXPECT_EQ(a.text, "Absolute value High");
    // Not released: release texts emptied, the serial left as it was.
    VTGetAlarmInfo(ctx, path, 1, a);
    EXPECT_EQ(a.releaseSerial, 6);
    EXPECT_EQ(a.releaseDate + a.releaseTime, "");
    VTEventInfo e;
    VTGetEventInfo(ctx, path, 0, e);
    EXPECT_EQ(e.sourceText, "Remote entry");
    EXPECT_EQ(e.messageNo, 1);
    EXPECT_EQ(e.message, "Start 1");
    for (std::int32_t i = 0; i < 4; ++i) {
        a.text = "stale";
        VTGetAlarmInfo(ctx, path, i + 2, a);
        EXPECT_EQ(a.text, alarms[i].second) << "alarm type " << alarms[i].first;
        VTGetEventInfo(ctx, path, i + 1, e);
        EXPECT_EQ(e.sourceText, sources[i].second) << "source " << sources[i].first;
    }
    EXPECT_EQ(error_log(), "");
    // Counts at the end of 32 bits overflow into the readers' traps, as a Long does.
    f.list("alarm").push_back(fields("level", std::numeric_limits<std::int32_t>::max()));
    f.list("message").push_back(fields("messageNo", std::numeric_limits<std::int32_t>::max()));
    const std::string edge = write(f, "edge.oge");
    VTGetAlarmInfo(ctx, edge, 6, a);
    VTGetEventInfo(ctx, edge, 5, e);
    EXPECT_NE(error_log().find("VTGetAlarmInfo"), std::string::npos) << error_log();
    EXPECT_NE(error_log().find("VTGetEventInfo"), std::string::npos) << error_log();
    EXPECT_NE(error_log().find("Errornumber: 6"), std::string::npos) << error_log();
}

TEST_F(VtReaderTest, FileInfoListLines) {
    auto f = scenario(reclib::Kind::Display);
    f.header.set("extChCount", 2);
    FileInfoList list;
    list.lines = {"old"};
    fkt_ReadVTFileInfo(ctx, list, write(f, "run2.ogd"));
    std::string text;
    for (const auto& line : list.lines) text += line + "\n";
    // One line each; "Ext. Cahnnel" spelled so and without a tab.
    EXPECT_EQ(text,
              "File Type: \tDisplay File\nDevice Type: \tVT210\nSerial No: \tS-123 4\n"
              "File Message: \tLine 7 \u00B0C\nMeas. Ch. Count: \t2\nMath. Ch. Count: \t1\n"
              "Data Count: \t4\nStart Time: \t09.03.2007 12:05:03.00\n"
              "End Time: \t09.03.2007 12:05:05.875\nExt. Cahnnel: 2\nAlarm Num.: \t2\n"
              "Event Num.: \t1\nSampling Int.: \t1,125 sec\nTime Correct.: \tNone\n"
              "Trigger Time: \t09.03.2007 12:05:04.500\nTrigger No: \t3\nStart User: \tanna\n"
              "Stop User: \tbob\nStarted by: \t[Key In]\nStopped by: \t[Data Count]\n"
              "Starting Cond.: \tAuto\nDividing Cond.: \tData Count\nGroup Name: \tGrp A - Grp-B\n"
              "\nApplication : \tDryer\nSupervisor : \tSue\nManager : \tMax\n"
              "Batch Name: \tBatch 7/a\nBatch No: \t\t0\nComment User: \tcarl\n"
              "Comment Time: \t08.03.2007 10:00:00.250\nComment 1: \tfirst\nComment 2: \tsecond\n"
              "Comment 3: \t\n\n");
    EXPECT_EQ(list.backColor, kInfoColorNormal);

    // Without users, batch or external channels those lines are left out.
    f.header.set("userFlag", 0).set("batchFlag", 0).set("extChCount", -3);
    fkt_ReadVTFileInfo(ctx, list, write(f, "plain.ogd"));
    ASSERT_FALSE(list.lines.empty());
    for (const auto& line : list.lines) {
        for (const char* absent : {"Start User: ", "Ext. Cahnnel: ", "Application : "})
            EXPECT_NE(line.rfind(absent, 0), 0u) << line;
        EXPECT_NE(line, "");
    }
    EXPECT_EQ(list.lines.back(), "Group Name: \tGrp A - Grp-B");
}

TEST_F(VtReaderTest, DamagedFileIsMarkedAndStillGivesItsData) {
    const std::string path = write(scenario(reclib::Kind::Event), "bad.oge", {.damaged = true});
    FileInfoList list;
    fkt_ReadVTFileInfo(ctx, list, path);
    ASSERT_GE(list.lines.size(), 2u);
    EXPECT_EQ(list.lines[0], "File damaged!\t");
    EXPECT_EQ(list.lines[1], "File Type: \tEvent file");
    EXPECT_EQ(list.backColor, kInfoColorDamaged);
    VTInfo info;
    VTGetInfo(ctx, path, info);
    EXPECT_GT(info.status, 0);
    EXPECT_EQ(info.dataCount, 4);
    VTMeasData data;
    VTGetMeasData(ctx, path, Names{"1"}, info.dataCount, Decimals{2}, data, kTrue);
    EXPECT_DOUBLE_EQ(data.firstValues.value(3, 1), 123.45);
}

TEST_F(VtReaderTest, FileElementsWithRawComments) {
    auto f = scenario(reclib::Kind::Event);
    auto& e = ctx.state<FileElements>();
    e.ti_O = "previous";
    VTGetFileElements(ctx, write(f, "el.oge"));
    EXPECT_EQ(e.ti_O, "");  // the composer sets O and C afterwards
    EXPECT_EQ(e.ti_F, "Line7C");
    EXPECT_EQ(e.group(1) + "|" + e.group(2) + "|" + e.group(3), "Grp A|Grp-B|");
    EXPECT_EQ(e.ti_B, "Batch7a");
    EXPECT_EQ(e.ti_LLLL, "0042");
    // Raw fields: unfiltered, blanks kept, but the library's zero padding ends the text.
    EXPECT_EQ(e.ti_C1, "  first  ");
    EXPECT_EQ(e.ti_C3, "");
    f.header.set("batchFlag", 0);
    VTGetFileElements(ctx, write(f, "nobatch.oge"));
    EXPECT_EQ(e.ti_B + e.ti_C1, "");
    EXPECT_EQ(e.ti_LL, "00");
}

TEST_F(VtReaderTest, MeasDataOfBothKinds) {
    const std::string path = write(scenario(reclib::Kind::Event), "md.oge");
    VTMeasData d;
    VTGetMeasData(ctx, path, Names{"1", "2", "31"}, 4, Decimals{2, 0, 1}, d, kTrue);
    const auto& v = d.firstValues;
    ASSERT_EQ(v.rows(), 6u);
    EXPECT_EQ(v.value(0, 3), 31.0);  // row 0: the channel numbers
    EXPECT_EQ(d.secondValues.rows(), 1u);
    // Decimals placed: -5 with 2 decimals is -0.05; without, the 16-bit integer stays.
    EXPECT_EQ(v.at(1, 1).kind, SampleKind::Double);
    EXPECT_DOUBLE_EQ(v.value(1, 1), -0.05);
    EXPECT_EQ(v.at(3, 2).kind, SampleKind::Int16);
    EXPECT_DOUBLE_EQ(v.value(2, 3), -0.1);  // the math channel
    EXPECT_DOUBLE_EQ(v.value(4, 3), 214748364.7);
    // The extra row: nothing read; with decimals the empty cell becomes 0.
    EXPECT_EQ(v.at(5, 2).kind, SampleKind::Empty);
    EXPECT_EQ(v.at(5, 1).kind, SampleKind::Double);
    // Times: dataCount + 1 rows, the last one from a zero entry.
    ASSERT_EQ(d.dates.size(), 5u);
    EXPECT_EQ(d.timesWithMs[1], "12:05:04.125");
    EXPECT_EQ(d.msTexts[2], "250");
    EXPECT_EQ(d.dates[4], "01.01.1970");
    EXPECT_EQ(d.times[4], "00:00:00");

    // "31" first in the list: position 0, which is the file's first channel.
    VTGetMeasData(ctx, path, Names{"31", "2"}, 4, Decimals{0, 0}, d, kTrue);
    EXPECT_EQ(d.firstValues.at(1, 1).kind, SampleKind::Int32);
    EXPECT_EQ(d.firstValues.value(3, 1), 12345.0);
    EXPECT_EQ(d.firstValues.at(1, 2).kind, SampleKind::Int16);

    // A display file: minimum and maximum, two positions per channel.
    VTGetMeasData(ctx, write(scenario(reclib::Kind::Display), "md.ogd"), Names{"1", "2", "31"}, 4,
                  Decimals{2, 0, 0}, d, kFalse);
    const auto& hi = d.secondValues;
    ASSERT_EQ(hi.rows(), 6u);
    EXPECT_DOUBLE_EQ(hi.value(1, 1), -0.04);
    EXPECT_DOUBLE_EQ(hi.value(4, 1), -327.68);
    EXPECT_EQ(hi.value(2, 2), 12.0);
    EXPECT_EQ(hi.at(4, 3).kind, SampleKind::Int32);
    EXPECT_EQ(hi.value(4, 3), -2147483647.0);
    EXPECT_EQ(error_log(), "");
}

// Flipped bytes are read through every library call in tests/reclib; here the readers.
TEST_F(VtReaderTest, HostileCountsFilesAndChannelNamesAreReportedNotCrashed) {
    auto f = scenario(reclib::Kind::Event);
    f.header.set("typeCode", 65);
    const std::string path = write(f, "h.oge");
    EXPECT_EQ(VTgetTypeFile(ctx, path), "Display file extended");
    VTMeasData d;
    VTGetMeasData(ctx, path, Names{"1"}, 2000000000, Decimals{2}, d, kTrue);
    EXPECT_EQ(d.firstValues.rows(), 0u);
    EXPECT_NE(error_log().find("VTGetMeasData() ; Errorsource"), std::string::npos);
    EXPECT_NE(error_log().find("Errornumber: 7;"), std::string::npos);
    VTGetMeasData(ctx, path, Names{"1"}, -1, Decimals{2}, d, kTrue);
    EXPECT_NE(error_log().find("Errornumber: 9;"), std::string::npos);

    // Truncated, garbage and unknown files: zero counts, no crash.
    const std::string good = testing::read_file(path);
    testing::write_file(p.dir.file("cut.oge"), good.substr(0, good.size() / 2));
    testing::write_file(p.dir.file("junk.oge"), std::string(4096, '\x7f'));
    EXPECT_EQ(VTgetTypeFile(ctx, p.dir.file("junk.oge")), "NOT TARNWICK FILE");
    f.header.set("typeCode", 99);
    EXPECT_EQ(VTgetTypeFile(ctx, write(f, "t99.oge")), "NOT TARNWICK FILE");
    for (const char* name : {"cut.oge", "junk.oge", "missing.oge"}) {
        VTInfo info;
        VTGetInfo(ctx, p.dir.file(name), info);
        EXPECT_EQ(info.dataCount + info.measChCount, 0) << name;
        FileInfoList list;
        fkt_ReadVTFileInfo(ctx, list, p.dir.file(name));
        EXPECT_FALSE(list.lines.empty());
    }

    // A channel name that is no number: the trap keeps what the steps before did not set.
    f.channels[0].info.set("channel", "CHxAB").set("tag", "New");
    VTChannelInfo c;
    c.tag = "old";
    c.decimals = -9;
    VTGetChDataInfo(ctx, write(f, "trap.oge"), 0, c);
    EXPECT_EQ(c.channel, "CHxAB");  // step 2 got that far
    EXPECT_EQ(c.tag, "old");
    EXPECT_EQ(c.decimals, -9);
    EXPECT_NE(error_log().find("VTGetChDataInfo() ; Errorsource"), std::string::npos);
    EXPECT_NE(error_log().find("Errornumber: 13; Errorline: 2;"), std::string::npos);
}

// VQ counts eighths of a second as VT and KL do (through the VU library), VU and HN
// milliseconds.
TEST_F(VtReaderTest, FamiliesSplitTicksTheirOwnWay) {
    DateTimeTexts t;
    VQGetDateTime(ctx, k20070309_120503, 1, t);
    EXPECT_EQ(t.dateTime, "09.03.2007 12:05:03.125");
    VUGetDateTime(ctx, k20070309_120503, 4, t);
    EXPECT_EQ(t.dateTime, "09.03.2007 12:05:03.004");
    HNGetDateTime(ctx, k20070309_120503, 999, t);
    EXPECT_EQ(t.dateTime, "09.03.2007 12:05:03.999");
}

}  // namespace
}  // namespace qumbrel
