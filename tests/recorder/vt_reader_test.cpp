// The VT reader over the reference library: files made with the writer, read back through
// every reader, compared with the scenario that made them.
#include <gtest/gtest.h>

#include <cstdlib>
#include <string>
#include <vector>

#include "reclib/format.h"
#include "reclib/model.h"
#include "reclib/writer.h"
#include "recorder/damage.h"
#include "recorder/file_elements.h"
#include "recorder/time_text.h"
#include "recorder/vt_reader.h"
#include "tests/support/test_support.h"

namespace qumbrel {
namespace {

using testing::TestProgram;

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

std::string joined(const std::vector<std::string>& lines) {
    std::string text;
    for (const auto& line : lines) text += line + "\n";
    return text;
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
    put(h, "count0", 10, "count1", 11, "count2", 12, "groupWidth", 5);
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
    c1.info = fields("channel", "CH001", "tag", "Temp \260C", "unit", "\260C", "decimals", 2,
                     "kind", 1, "scaleLow", -10.5, "scaleHigh", 150.0, "number1", 1, "number2", 2,
                     "number3", 3, "number4", 4, "number5", 5);
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

    TestProgram p{"de-DE"};
    Program& ctx = *p;
};

// The list test below shows most fields; these are the ones it does not.
TEST_F(VtReaderTest, InfoAndChannelsOfAnEventFile) {
    const std::string path = write(scenario(reclib::Kind::Event), "run1.oge");
    VTInfo info;
    info.batchNo = -77;
    VTGetInfo(ctx, path, info);
    EXPECT_EQ(info.status, 0);
    EXPECT_EQ(info.fileType, "Event file");
    EXPECT_EQ(info.extChCount, 0);
    EXPECT_EQ(info.dataCount, 4);
    EXPECT_EQ(info.triggerDate, "09.03.2007");
    EXPECT_EQ(info.triggerTime, "12:05:04.500");
    EXPECT_EQ(info.groupCount, 2);
    EXPECT_EQ(info.groupWidth, 5);
    EXPECT_EQ((std::vector{info.count0, info.count1, info.count2}), (std::vector{10, 11, 12}));
    EXPECT_EQ(info.batchNo, -77);  // never written (kept so)

    VTChannelInfo c;
    VTGetChDataInfo(ctx, path, 0, c);
    EXPECT_EQ(c.chNo, 1);
    EXPECT_EQ(c.channel, "CH001");
    EXPECT_EQ(c.tag, "Temp \u00B0C");
    EXPECT_EQ(c.unit, "\u00B0C");
    EXPECT_EQ(c.kind, 1);
    EXPECT_EQ(c.decimals, 2);
    EXPECT_EQ(c.scaleLow, -10.5);
    EXPECT_EQ(c.scaleHigh, 150.0);
    EXPECT_EQ((std::vector{c.number1, c.number2, c.number3, c.number4, c.number5}),
              (std::vector{1, 2, 3, 4, 5}));
    VTGetChDataInfo(ctx, path, 2, c);
    EXPECT_EQ(c.chNo, 31);
    EXPECT_EQ(c.tag, "Sum");
    EXPECT_EQ(c.decimals, 1);
    EXPECT_EQ(error_log(), "");
}

TEST(StartStopReason, StopCodeZeroFollowsTheStopKindAndUnknownCodesAreShown) {
    struct Row {
        std::int32_t startCode, stopCode, startKind, stopKind;
        std::string texts;
    };
    const Row rows[] = {
        {-1, -1, 0, 0, "[None] [None] Manual Manual"},
        {2, 0, 1, 2, "[Remote In] [Running] Restart after Black Out Auto"},
        {3, 0, 3, 7, "[Comm. In] [Key In] Triggered Restart -7-"},
        {9, 2, -4, 1, "[9] [Remote In] --4- Restart after Black Out"},
    };
    for (const auto& r : rows) {
        StartStopReason s;
        GetStartStopReason(r.startCode, r.stopCode, r.startKind, r.stopKind, s);
        EXPECT_EQ(s.startedBy + " " + s.stoppedBy + " " + s.startingCond + " " + s.dividingCond,
                  r.texts);
    }
}

TEST_F(VtReaderTest, FileInfoListLines) {
    auto f = scenario(reclib::Kind::Display);
    f.header.set("extChCount", 2);
    const std::string path = write(f, "run2.ogd");
    FileInfoList list;
    list.lines = {"old"};
    fkt_ReadVTFileInfo(ctx, list, path);
    // One line each; "Ext. Cahnnel" spelled so and without a tab.
    EXPECT_EQ(joined(list.lines),
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
}

TEST_F(VtReaderTest, FileInfoWithoutUsersBatchOrExternalChannels) {
    auto f = scenario(reclib::Kind::Event);
    f.header.set("userFlag", 0).set("batchFlag", 0).set("extChCount", -3);
    FileInfoList list;
    fkt_ReadVTFileInfo(ctx, list, write(f, "plain.oge"));
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

TEST_F(VtReaderTest, AlarmsAndMessages) {
    const std::string path = write(scenario(reclib::Kind::Event), "al.oge");
    VTAlarmInfo a;
    VTGetAlarmInfo(ctx, path, 0, a);
    EXPECT_EQ(a.channel, 1);
    EXPECT_EQ(a.level, 2);
    EXPECT_EQ(a.serial, 5);
    EXPECT_EQ(a.date + " " + a.time, "09.03.2007 12:05:03.250");
    EXPECT_EQ(a.releaseSerial, 6);
    EXPECT_EQ(a.releaseDate + " " + a.releaseTime, "09.03.2007 12:05:05.00");
    EXPECT_EQ(a.text, "Absolute value High");

    // Not released: release texts emptied, the serial left as it was.
    VTGetAlarmInfo(ctx, path, 1, a);
    EXPECT_EQ(a.channel, 3);
    EXPECT_EQ(a.releaseSerial, 6);
    EXPECT_EQ(a.releaseDate + a.releaseTime, "");

    VTEventInfo e;
    VTGetEventInfo(ctx, path, 0, e);
    EXPECT_EQ(e.serial, 9);
    EXPECT_EQ(e.date + " " + e.time, "09.03.2007 12:05:06.875");
    EXPECT_EQ(e.sourceText, "Remote entry");
    EXPECT_EQ(e.messageNo, 1);
    EXPECT_EQ(e.message, "Start 1");
    EXPECT_EQ(e.user, "anna");
    EXPECT_EQ(error_log(), "");
}

TEST_F(VtReaderTest, AlarmAndSourceTextsAtTheEdgesOfTheirTables) {
    auto f = scenario(reclib::Kind::Event);
    const std::pair<int, std::string> alarms[] = {{0, "OFF"}, {8, "Delay Low"}, {9, ""}, {-1, ""}};
    const std::pair<int, std::string> sources[] = {
        {1, "Key entry"}, {3, "Communication entry"}, {4, "unknown"}, {-1, "unknown"}};
    f.list("alarm").clear();
    for (const auto& a : alarms)
        f.list("alarm").push_back(fields("type", a.first, "occurSeconds", k20070309_120503));
    f.list("message").clear();
    for (const auto& s : sources)
        f.list("message").push_back(fields("source", s.first, "message", "m"));
    const std::string path = write(f, "texts.oge");

    for (std::int32_t i = 0; i < 4; ++i) {
        VTAlarmInfo a;
        a.text = "stale";
        VTGetAlarmInfo(ctx, path, i, a);
        EXPECT_EQ(a.text, alarms[i].second) << "alarm type " << alarms[i].first;
        VTEventInfo e;
        VTGetEventInfo(ctx, path, i, e);
        EXPECT_EQ(e.sourceText, sources[i].second) << "source " << sources[i].first;
    }
    EXPECT_EQ(error_log(), "");
}

TEST_F(VtReaderTest, FileElementsWithRawComments) {
    const std::string path = write(scenario(reclib::Kind::Event), "el.oge");
    auto& e = ctx.state<FileElements>();
    e.ti_O = "previous";
    VTGetFileElements(ctx, path);
    EXPECT_EQ(error_log(), "");
    EXPECT_EQ(e.ti_O, "");  // the composer sets O and C afterwards
    EXPECT_EQ(e.ti_F, "Line7C");
    EXPECT_EQ(e.ti_S, "S-1234");
    EXPECT_EQ(e.group(1) + "|" + e.group(2) + "|" + e.group(3), "Grp A|Grp-B|");
    EXPECT_EQ(e.ti_YYYY + e.ti_MM + e.ti_DD + e.ti_HH + e.ti_mm + e.ti_SS, "20070309120503");
    EXPECT_EQ(e.ti_B, "Batch7a");
    EXPECT_EQ(e.ti_LLLL, "0042");
    // Raw fields: every byte of the 32-byte field, the library's zero padding included.
    EXPECT_EQ(e.ti_C1, "  first  " + std::string(23, '\0'));
    EXPECT_EQ(e.ti_C3, std::string(32, '\0'));

    auto f = scenario(reclib::Kind::Event);
    f.header.set("batchFlag", 0);
    VTGetFileElements(ctx, write(f, "nobatch.oge"));
    EXPECT_EQ(e.ti_B + e.ti_C1, "");
    EXPECT_EQ(e.ti_LL, "00");
}

TEST_F(VtReaderTest, MeasDataOfAnEventFile) {
    const std::string path = write(scenario(reclib::Kind::Event), "md.oge");
    VTMeasData d;
    VTGetMeasData(ctx, path, Names{"1", "2", "31"}, 4, Decimals{2, 0, 1}, d, kTrue);
    EXPECT_EQ(error_log(), "");
    const auto& v = d.firstValues;
    ASSERT_EQ(v.rows(), 6u);
    ASSERT_EQ(v.cols(), 4u);
    // Row 0: the channel numbers.
    EXPECT_EQ(v.at(0, 1).kind, SampleKind::Double);
    EXPECT_EQ(v.value(0, 3), 31.0);
    EXPECT_EQ(d.secondValues.rows(), 1u);
    EXPECT_EQ(d.secondValues.value(0, 2), 2.0);
    // Decimals placed: -5 with 2 decimals is -0.05.
    EXPECT_EQ(v.at(1, 1).kind, SampleKind::Double);
    EXPECT_DOUBLE_EQ(v.value(1, 1), -0.05);
    EXPECT_DOUBLE_EQ(v.value(4, 1), 327.67);
    // No decimals: the 16-bit integer stays.
    EXPECT_EQ(v.at(3, 2).kind, SampleKind::Int16);
    EXPECT_EQ(v.value(3, 2), 3.0);
    // The math channel.
    EXPECT_DOUBLE_EQ(v.value(1, 3), 10000.0);
    EXPECT_DOUBLE_EQ(v.value(2, 3), -0.1);
    EXPECT_DOUBLE_EQ(v.value(4, 3), 214748364.7);
    // The extra row: nothing read; with decimals the empty cell becomes 0.
    EXPECT_EQ(v.at(5, 2).kind, SampleKind::Empty);
    EXPECT_EQ(v.at(5, 1).kind, SampleKind::Double);
    EXPECT_EQ(v.value(5, 1), 0.0);
    // Times: dataCount + 1 rows, the last one from a zero entry.
    ASSERT_EQ(d.dates.size(), 5u);
    EXPECT_EQ(d.dates[0], "09.03.2007");
    EXPECT_EQ(d.times[0], "12:05:03");
    EXPECT_EQ(d.timesWithMs[1], "12:05:04.125");
    EXPECT_EQ(d.msTexts[2], "250");
    EXPECT_EQ(d.timesWithMs[3], "12:05:05.875");
    EXPECT_EQ(d.dates[4], "01.01.1970");
    EXPECT_EQ(d.times[4], "00:00:00");
}

TEST_F(VtReaderTest, MeasDataOfADisplayFileTakesTwoPositions) {
    const std::string path = write(scenario(reclib::Kind::Display), "md.ogd");
    VTMeasData d;
    VTGetMeasData(ctx, path, Names{"1", "2", "31"}, 4, Decimals{2, 0, 0}, d, kFalse);
    EXPECT_EQ(error_log(), "");
    const auto& lo = d.firstValues;
    const auto& hi = d.secondValues;
    ASSERT_EQ(hi.rows(), 6u);
    EXPECT_EQ(hi.value(0, 3), 31.0);
    EXPECT_DOUBLE_EQ(lo.value(1, 1), -0.05);
    EXPECT_DOUBLE_EQ(hi.value(1, 1), -0.04);
    EXPECT_DOUBLE_EQ(hi.value(4, 1), -327.68);
    EXPECT_EQ(lo.value(2, 2), 2.0);
    EXPECT_EQ(hi.value(2, 2), 12.0);
    EXPECT_EQ(hi.at(4, 3).kind, SampleKind::Int32);
    EXPECT_EQ(hi.value(4, 3), -2147483647.0);
    EXPECT_EQ(lo.value(1, 3), 100000.0);
}

TEST_F(VtReaderTest, ChannelAboveThirtyReadsTheMathFunctionAtItsListPlace) {
    const std::string path = write(scenario(reclib::Kind::Event), "pos.oge");
    // "31" stands first in the list: position 0, which is the file's first channel.
    VTMeasData d;
    VTGetMeasData(ctx, path, Names{"31", "2"}, 4, Decimals{0, 0}, d, kTrue);
    EXPECT_EQ(d.firstValues.at(1, 1).kind, SampleKind::Int32);
    EXPECT_EQ(d.firstValues.value(1, 1), -5.0);
    EXPECT_EQ(d.firstValues.value(3, 1), 12345.0);
    EXPECT_EQ(d.firstValues.at(1, 2).kind, SampleKind::Int16);
    EXPECT_EQ(d.firstValues.value(1, 2), 1.0);
}

TEST_F(VtReaderTest, TypeCodesAsText) {
    auto f = scenario(reclib::Kind::Event);
    f.header.set("typeCode", 65);
    EXPECT_EQ(VTgetTypeFile(ctx, write(f, "t.oge")), "Display file extended");
    f.header.set("typeCode", 99);
    EXPECT_EQ(VTgetTypeFile(ctx, write(f, "t2.oge")), "NOT TARNWICK FILE");
    testing::write_file(p.dir.file("text.oge"), "just text");
    EXPECT_EQ(VTgetTypeFile(ctx, p.dir.file("text.oge")), "NOT TARNWICK FILE");
    EXPECT_EQ(vt_type_text(32), "TARNWICK PELLOMAR file");
}

TEST_F(VtReaderTest, HostileCountsAndFilesAreReportedNotCrashed) {
    const std::string path = write(scenario(reclib::Kind::Event), "h.oge");
    VTMeasData d;
    VTGetMeasData(ctx, path, Names{"1"}, 2000000000, Decimals{2}, d, kTrue);
    EXPECT_EQ(d.firstValues.rows(), 0u);
    EXPECT_NE(error_log().find("VTGetMeasData() ; Errorsource"), std::string::npos);
    EXPECT_NE(error_log().find("Errornumber: 7;"), std::string::npos);
    VTGetMeasData(ctx, path, Names{"1"}, -1, Decimals{2}, d, kTrue);
    EXPECT_NE(error_log().find("Errornumber: 9;"), std::string::npos);

    // Truncated and garbage files: zero counts, no crash.
    const std::string good = testing::read_file(path);
    testing::write_file(p.dir.file("cut.oge"), good.substr(0, good.size() / 2));
    testing::write_file(p.dir.file("junk.oge"), std::string(4096, '\x7f'));
    for (const char* name : {"cut.oge", "junk.oge", "missing.oge"}) {
        VTInfo info;
        VTGetInfo(ctx, p.dir.file(name), info);
        EXPECT_EQ(info.dataCount + info.measChCount, 0) << name;
        FileInfoList list;
        fkt_ReadVTFileInfo(ctx, list, p.dir.file(name));
        EXPECT_FALSE(list.lines.empty());
    }
}

TEST_F(VtReaderTest, TrapKeepsWhatTheStepsBeforeDidNotSet) {
    auto f = scenario(reclib::Kind::Event);
    f.channels[0].info.set("channel", "CHxAB").set("tag", "New");
    VTChannelInfo c;
    c.tag = "old";
    c.decimals = -9;
    VTGetChDataInfo(ctx, write(f, "trap.oge"), 0, c);
    EXPECT_EQ(c.channel, "CHxAB");  // step 2 got that far
    EXPECT_EQ(c.tag, "old");
    EXPECT_EQ(c.decimals, -9);
    const std::string log = error_log();
    EXPECT_NE(log.find("VTGetChDataInfo() ; Errorsource"), std::string::npos) << log;
    EXPECT_NE(log.find("Errornumber: 13; Errorline: 2;"), std::string::npos) << log;
}

// Every reader over damaged copies of one file: a byte flipped at a time all along it.
// A flip in the body either breaks the parse (zero counts) or fails the check sum
// (status above 0); a header that still parses may claim anything. Nothing may crash,
// and a measured-data read that stops short says so in the error log.
TEST_F(VtReaderTest, FlippedBytesGiveZeroCountsOrADamagedStatus) {
    auto f = scenario(reclib::Kind::Display);
    f.header.set("extChCount", 1);
    const std::string good = testing::read_file(write(f, "good.ogd"));
    const std::string path = p.dir.file("flip.ogd");
    int damaged = 0;
    for (std::size_t at = 0; at < good.size(); at += std::max<std::size_t>(1, good.size() / 120)) {
        std::string bytes = good;
        bytes[at] = static_cast<char>(bytes[at] ^ 0x5A);
        testing::write_file(path, bytes);

        VTInfo info;
        VTGetInfo(ctx, path, info);
        if (at >= reclib::format::kHeaderSize) {
            EXPECT_TRUE(file_damaged(info.status) || info.dataCount == 0) << "flip at " << at;
        }
        damaged += file_damaged(info.status) ? 1 : 0;
        FileInfoList list;
        fkt_ReadVTFileInfo(ctx, list, path);
        VTGetFileElements(ctx, path);
        VTAlarmInfo alarm;
        VTGetAlarmInfo(ctx, path, 0, alarm);
        VTEventInfo event;
        VTGetEventInfo(ctx, path, 0, event);
        std::vector<std::string> channels;
        std::vector<std::int32_t> decimals;
        for (std::int32_t i = 0; i < std::min(info.measChCount + info.mathChCount, 8); ++i) {
            VTChannelInfo c;
            VTGetChDataInfo(ctx, path, i, c);
            channels.push_back(std::to_string(c.chNo));
            decimals.push_back(c.decimals);
        }
        VTMeasData d;
        const std::size_t logged = error_log().size();
        VTGetMeasData(ctx, path, channels, info.dataCount, decimals, d, kFalse);
        if (d.dates.size() != static_cast<std::size_t>(std::max(info.dataCount, -1) + 1)) {
            EXPECT_NE(error_log().find("VTGetMeasData()", logged), std::string::npos)
                << "a short read must be reported; flip at " << at;
        }
    }
    EXPECT_GT(damaged, 0);
}

// VT, KL and VQ count eighths of a second, VU and HN milliseconds.
TEST_F(VtReaderTest, FiveFamiliesSplitTicksTheirOwnWay) {
    using Split = void (*)(Program&, std::int32_t, std::int32_t, DateTimeTexts&);
    const std::tuple<const char*, Split, std::int32_t, const char*> rows[] = {
        {"VT", VTGetDateTime, 4, "09.03.2007 12:05:03.500"},
        {"KL", KLGetDateTime, 4, "09.03.2007 12:05:03.500"},
        {"VQ", VQGetDateTime, 4, "09.03.2007 12:05:03.500"},
        {"VU", VUGetDateTime, 4, "09.03.2007 12:05:03.004"},
        {"HN", HNGetDateTime, 999, "09.03.2007 12:05:03.999"},
    };
    for (const auto& [family, split, ticks, expected] : rows) {
        DateTimeTexts t;
        split(ctx, k20070309_120503, ticks, t);
        EXPECT_EQ(t.dateTime, expected) << family;
    }
    EXPECT_EQ(error_log(), "");
}

}  // namespace
}  // namespace qumbrel
