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

// The scenario both VT kinds share: two measuring channels, one math channel (31), four
// samples, two alarms, one message, batch data, two groups.
reclib::RecorderFile scenario(reclib::Kind kind) {
    reclib::RecorderFile f;
    f.family = reclib::Family::VT;
    f.kind = kind;
    auto& h = f.header;
    h.set("deviceType", "VT210")
        .set("serialNo", " S-123 4 ")
        .set("fileMessage",
             "Line 7 \xB0"
             "C");
    h.set("samplingSeconds", 1).set("samplingTicks", 1);
    h.set("triggerNo", 3).set("triggerSeconds", k20070309_120503 + 1).set("triggerTicks", 4);
    h.set("count0", 10).set("count1", 11).set("count2", 12).set("groupWidth", 5);
    h.set("timeCorrected", 0).set("startKind", 2).set("stopKind", 3);
    h.set("startCode", 0).set("stopCode", 0);
    h.set("userFlag", 1).set("startUser", "anna").set("stopUser", "bob;");
    h.set("batchFlag", 1).set("application", "Dryer").set("supervisor", "Sue");
    h.set("manager", "Max").set("batchName", "Batch 7/a").set("batchNo", 42);
    h.set("commentUser", "carl").set("commentSeconds", k20070308_100000).set("commentTicks", 2);
    h.set("comment1", "  first  ").set("comment2", "second").set("comment3", "");
    f.list("group").push_back(reclib::Fields{}.set("name", "Grp A").set("members", 2));
    f.list("group").push_back(reclib::Fields{}.set("name", "Grp-B").set("members", 1));
    f.list("alarm").push_back(reclib::Fields{}
                                  .set("channel", 0)
                                  .set("level", 1)
                                  .set("type", 1)
                                  .set("serial", 5)
                                  .set("occurSeconds", k20070309_120503)
                                  .set("occurTicks", 2)
                                  .set("releaseSerial", 6)
                                  .set("releaseSeconds", k20070309_120503 + 2)
                                  .set("releaseTicks", 0));
    f.list("alarm").push_back(reclib::Fields{}
                                  .set("channel", 2)
                                  .set("level", 0)
                                  .set("type", 9)
                                  .set("serial", 7)
                                  .set("occurSeconds", k20070309_120503)
                                  .set("releaseSerial", 8)
                                  .set("releaseSeconds", 0));
    f.list("message").push_back(reclib::Fields{}
                                    .set("serial", 9)
                                    .set("seconds", k20070309_120503 + 3)
                                    .set("ticks", 7)
                                    .set("message", " Start #1 ")
                                    .set("messageNo", 0)
                                    .set("source", 2)
                                    .set("user", "anna"));

    const bool display = kind == reclib::Kind::Display;
    auto& c1 = f.channels.emplace_back();
    c1.info.set("channel", "CH001")
        .set("tag",
             "Temp \xB0"
             "C")
        .set("unit",
             "\xB0"
             "C");
    c1.info.set("decimals", 2).set("kind", 1).set("scaleLow", -10.5).set("scaleHigh", 150.0);
    c1.info.set("number1", 1).set("number2", 2).set("number3", 3).set("number4", 4);
    c1.info.set("number5", 5);
    c1.values = {-5, 0, 12345, 32767};
    if (display) c1.values2 = {-4, 1, 12346, -32768};
    auto& c2 = f.channels.emplace_back();
    c2.info.set("channel", "CH002").set("tag", "").set("unit", "bar").set("decimals", 0);
    c2.values = {1, 2, 3, 4};
    if (display) c2.values2 = {11, 12, 13, 14};
    auto& m = f.channels.emplace_back();
    m.math = true;
    m.type = reclib::DataType::Int32;
    m.info.set("channel", "CH031").set("tag", "Sum").set("decimals", 1);
    m.values = {100000, -1, 0, 2147483647};
    if (display) m.values2 = {100001, 0, 1, -2147483647};
    f.seconds = {k20070309_120503, k20070309_120503 + 1, k20070309_120503 + 1,
                 k20070309_120503 + 2};
    f.ticks = {0, 1, 2, 7};
    return f;
}

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

TEST_F(VtReaderTest, InfoOfAnEventFile) {
    const std::string path = write(scenario(reclib::Kind::Event), "run1.oge");
    VTInfo info;
    info.batchNo = -77;
    VTGetInfo(ctx, path, info);
    EXPECT_EQ(error_log(), "");
    EXPECT_EQ(info.status, 0);
    EXPECT_EQ(info.fileType, "Event file");
    EXPECT_EQ(info.deviceType, "VT210");
    EXPECT_EQ(info.serialNo, "S-123 4");
    EXPECT_EQ(info.fileMessage, "Line 7 \u00B0C");
    EXPECT_EQ(info.measChCount, 2);
    EXPECT_EQ(info.mathChCount, 1);
    EXPECT_EQ(info.extChCount, 0);
    EXPECT_EQ(info.dataCount, 4);
    EXPECT_EQ(info.startTime, "09.03.2007 12:05:03.00");
    EXPECT_EQ(info.endTime, "09.03.2007 12:05:05.875");
    EXPECT_EQ(info.samplingInt, "1,125 sec");
    EXPECT_EQ(info.timeCorrect, "None");
    EXPECT_EQ(info.triggerDateTime, "09.03.2007 12:05:04.500");
    EXPECT_EQ(info.triggerDate, "09.03.2007");
    EXPECT_EQ(info.triggerTime, "12:05:04.500");
    EXPECT_EQ(info.triggerNo, 3);
    EXPECT_EQ(info.userFlag, 1);
    EXPECT_EQ(info.startUser, "anna");
    EXPECT_EQ(info.stopUser, "bob");
    EXPECT_EQ(info.startedBy, "[Key In]");
    EXPECT_EQ(info.stoppedBy, "[Data Count]");
    EXPECT_EQ(info.startingCond, "Auto");
    EXPECT_EQ(info.dividingCond, "Data Count");
    EXPECT_EQ(info.groupCount, 2);
    EXPECT_EQ(info.groupWidth, 5);
    EXPECT_EQ(info.groupName, "Grp A - Grp-B");
    EXPECT_EQ(info.alarmNum, 2);
    EXPECT_EQ(info.eventNum, 1);
    EXPECT_EQ(info.count0, 10);
    EXPECT_EQ(info.count1, 11);
    EXPECT_EQ(info.count2, 12);
    EXPECT_EQ(info.batchFlag, 1);
    EXPECT_EQ(info.application, "Dryer");
    EXPECT_EQ(info.supervisor, "Sue");
    EXPECT_EQ(info.manager, "Max");
    EXPECT_EQ(info.batchName, "Batch 7/a");
    EXPECT_EQ(info.batchNo, -77);  // never written (kept so)
    EXPECT_EQ(info.commentUser, "carl");
    EXPECT_EQ(info.commentTime, "08.03.2007 10:00:00.250");
    EXPECT_EQ(info.comment1, "first");
    EXPECT_EQ(info.comment2, "second");
    EXPECT_EQ(info.comment3, "");
}

TEST_F(VtReaderTest, StartStopReasonTable) {
    StartStopReason r;
    GetStartStopReason(-1, -1, 0, 0, r);
    EXPECT_EQ(r.startedBy, "[None]");
    EXPECT_EQ(r.stoppedBy, "[None]");
    EXPECT_EQ(r.startingCond, "Manual");
    EXPECT_EQ(r.dividingCond, "Manual");
    GetStartStopReason(2, 0, 1, 2, r);
    EXPECT_EQ(r.startedBy, "[Remote In]");
    EXPECT_EQ(r.stoppedBy, "[Running]");
    EXPECT_EQ(r.startingCond, "Restart after Black Out");
    EXPECT_EQ(r.dividingCond, "Auto");
    GetStartStopReason(3, 0, 3, 7, r);
    EXPECT_EQ(r.startedBy, "[Comm. In]");
    EXPECT_EQ(r.stoppedBy, "[Key In]");
    EXPECT_EQ(r.startingCond, "Triggered Restart");
    EXPECT_EQ(r.dividingCond, "-7-");
    GetStartStopReason(1, 3, -4, 1, r);
    EXPECT_EQ(r.startedBy, "[1]");
    EXPECT_EQ(r.stoppedBy, "[Comm. In]");
    EXPECT_EQ(r.startingCond, "--4-");
    EXPECT_EQ(r.dividingCond, "Restart after Black Out");
    GetStartStopReason(9, 2, 0, 3, r);
    EXPECT_EQ(r.startedBy, "[9]");
    EXPECT_EQ(r.stoppedBy, "[Remote In]");
    GetStartStopReason(0, 5, 0, 3, r);
    EXPECT_EQ(r.stoppedBy, "[5]");
}

TEST_F(VtReaderTest, FileInfoListLines) {
    auto f = scenario(reclib::Kind::Display);
    f.header.set("extChCount", 2);
    const std::string path = write(f, "run2.ogd");
    FileInfoList list;
    list.lines = {"old"};
    fkt_ReadVTFileInfo(ctx, list, path);
    const std::vector<std::string> expected = {
        "File Type: \tDisplay File",
        "Device Type: \tVT210",
        "Serial No: \tS-123 4",
        "File Message: \tLine 7 \u00B0C",
        "Meas. Ch. Count: \t2",
        "Math. Ch. Count: \t1",
        "Data Count: \t4",
        "Start Time: \t09.03.2007 12:05:03.00",
        "End Time: \t09.03.2007 12:05:05.875",
        "Ext. Cahnnel: 2",
        "Alarm Num.: \t2",
        "Event Num.: \t1",
        "Sampling Int.: \t1,125 sec",
        "Time Correct.: \tNone",
        "Trigger Time: \t09.03.2007 12:05:04.500",
        "Trigger No: \t3",
        "Start User: \tanna",
        "Stop User: \tbob",
        "Started by: \t[Key In]",
        "Stopped by: \t[Data Count]",
        "Starting Cond.: \tAuto",
        "Dividing Cond.: \tData Count",
        "Group Name: \tGrp A - Grp-B",
        "",
        "Application : \tDryer",
        "Supervisor : \tSue",
        "Manager : \tMax",
        "Batch Name: \tBatch 7/a",
        "Batch No: \t\t0",
        "Comment User: \tcarl",
        "Comment Time: \t08.03.2007 10:00:00.250",
        "Comment 1: \tfirst",
        "Comment 2: \tsecond",
        "Comment 3: \t",
        "",
    };
    EXPECT_EQ(list.lines, expected);
    EXPECT_EQ(list.backColor, kInfoColorNormal);
}

TEST_F(VtReaderTest, FileInfoWithoutUsersBatchOrExternalChannels) {
    auto f = scenario(reclib::Kind::Event);
    f.header.set("userFlag", 0).set("batchFlag", 0).set("extChCount", -3);
    const std::string path = write(f, "plain.oge");
    FileInfoList list;
    fkt_ReadVTFileInfo(ctx, list, path);
    ASSERT_FALSE(list.lines.empty());
    for (const auto& line : list.lines) {
        EXPECT_EQ(line.rfind("Start User: ", 0), std::string::npos) << line;
        EXPECT_EQ(line.rfind("Ext. Cahnnel: ", 0), std::string::npos) << line;
        EXPECT_EQ(line.rfind("Application : ", 0), std::string::npos) << line;
        EXPECT_NE(line, "");
    }
    EXPECT_EQ(list.lines.back(), "Group Name: \tGrp A - Grp-B");
}

TEST_F(VtReaderTest, DamagedFileIsMarkedAndStillGivesItsData) {
    const std::string path = write(scenario(reclib::Kind::Event), "bad.oge", {.damaged = true});
    FileInfoList list;
    fkt_ReadVTFileInfo(ctx, list, path);
    ASSERT_FALSE(list.lines.empty());
    EXPECT_EQ(list.lines.front(), "File damaged!\t");
    EXPECT_EQ(list.lines[1], "File Type: \tEvent file");
    EXPECT_EQ(list.backColor, kInfoColorDamaged);

    VTInfo info;
    VTGetInfo(ctx, path, info);
    EXPECT_GT(info.status, 0);
    EXPECT_EQ(info.dataCount, 4);
    VTMeasData data;
    const std::vector<std::string> channels = {"1"};
    const std::vector<std::int32_t> decimals = {2};
    VTGetMeasData(ctx, path, channels, info.dataCount, decimals, data, kTrue);
    EXPECT_DOUBLE_EQ(data.firstValues.value(3, 1), 123.45);
}

TEST_F(VtReaderTest, ChannelInfo) {
    const std::string path = write(scenario(reclib::Kind::Event), "ch.oge");
    VTChannelInfo c;
    VTGetChDataInfo(ctx, path, 0, c);
    EXPECT_EQ(c.chNo, 1);
    EXPECT_EQ(c.channel, "CH001");
    EXPECT_EQ(c.tag, "Temp \u00B0C");
    EXPECT_EQ(c.unit, "\u00B0C");
    EXPECT_EQ(c.kind, 1);
    EXPECT_EQ(c.decimals, 2);
    EXPECT_EQ(c.number1, 1);
    EXPECT_EQ(c.scaleLow, -10.5);
    EXPECT_EQ(c.scaleHigh, 150.0);
    EXPECT_EQ(c.number2, 2);
    EXPECT_EQ(c.number5, 5);
    VTGetChDataInfo(ctx, path, 2, c);
    EXPECT_EQ(c.chNo, 31);
    EXPECT_EQ(c.tag, "Sum");
    EXPECT_EQ(c.decimals, 1);
    EXPECT_EQ(error_log(), "");
}

TEST_F(VtReaderTest, AlarmsAndMessages) {
    const std::string path = write(scenario(reclib::Kind::Event), "al.oge");
    VTAlarmInfo a;
    VTGetAlarmInfo(ctx, path, 0, a);
    EXPECT_EQ(a.channel, 1);
    EXPECT_EQ(a.level, 2);
    EXPECT_EQ(a.serial, 5);
    EXPECT_EQ(a.date, "09.03.2007");
    EXPECT_EQ(a.time, "12:05:03.250");
    EXPECT_EQ(a.releaseSerial, 6);
    EXPECT_EQ(a.releaseDate, "09.03.2007");
    EXPECT_EQ(a.releaseTime, "12:05:05.00");
    EXPECT_EQ(a.text, "Absolute value High");

    // Not released: release texts emptied, the serial left as it was; unknown type: no text.
    VTGetAlarmInfo(ctx, path, 1, a);
    EXPECT_EQ(a.channel, 3);
    EXPECT_EQ(a.level, 1);
    EXPECT_EQ(a.releaseSerial, 6);
    EXPECT_EQ(a.releaseDate, "");
    EXPECT_EQ(a.releaseTime, "");
    EXPECT_EQ(a.text, "");

    VTEventInfo e;
    VTGetEventInfo(ctx, path, 0, e);
    EXPECT_EQ(e.serial, 9);
    EXPECT_EQ(e.date, "09.03.2007");
    EXPECT_EQ(e.time, "12:05:06.875");
    EXPECT_EQ(e.sourceText, "Remote entry");
    EXPECT_EQ(e.messageNo, 1);
    EXPECT_EQ(e.source, 2);
    EXPECT_EQ(e.message, "Start 1");
    EXPECT_EQ(e.user, "anna");
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
    EXPECT_EQ(e.group(1), "Grp A");
    EXPECT_EQ(e.group(2), "Grp-B");
    EXPECT_EQ(e.group(3), "");
    EXPECT_EQ(e.ti_DD, "09");
    EXPECT_EQ(e.ti_MM, "03");
    EXPECT_EQ(e.ti_YY, "07");
    EXPECT_EQ(e.ti_YYYY, "2007");
    EXPECT_EQ(e.ti_HH, "12");
    EXPECT_EQ(e.ti_mm, "05");
    EXPECT_EQ(e.ti_SS, "03");
    EXPECT_EQ(e.ti_B, "Batch7a");
    EXPECT_EQ(e.ti_L, "42");
    EXPECT_EQ(e.ti_LLLL, "0042");
    // Raw fields: every byte of the 32-byte field, the library's zero padding included.
    EXPECT_EQ(e.ti_C1, "  first  " + std::string(23, '\0'));
    EXPECT_EQ(e.ti_C3, std::string(32, '\0'));

    auto f = scenario(reclib::Kind::Event);
    f.header.set("batchFlag", 0);
    VTGetFileElements(ctx, write(f, "nobatch.oge"));
    EXPECT_EQ(e.ti_B, "");
    EXPECT_EQ(e.ti_C1, "");
    EXPECT_EQ(e.ti_LL, "00");
    EXPECT_EQ(e.ti_LLL, "000");
}

TEST_F(VtReaderTest, MeasDataOfAnEventFile) {
    const std::string path = write(scenario(reclib::Kind::Event), "md.oge");
    const std::vector<std::string> channels = {"1", "2", "31"};
    const std::vector<std::int32_t> decimals = {2, 0, 1};
    VTMeasData d;
    VTGetMeasData(ctx, path, channels, 4, decimals, d, kTrue);
    EXPECT_EQ(error_log(), "");
    const auto& v = d.firstValues;
    ASSERT_EQ(v.rows(), 6u);
    ASSERT_EQ(v.cols(), 4u);
    // Row 0: the channel numbers.
    EXPECT_EQ(v.at(0, 1).kind, SampleKind::Double);
    EXPECT_EQ(v.value(0, 1), 1.0);
    EXPECT_EQ(v.value(0, 3), 31.0);
    EXPECT_EQ(d.secondValues.rows(), 1u);
    EXPECT_EQ(d.secondValues.value(0, 2), 2.0);
    // Decimals placed: -5 with 2 decimals is -0.05.
    EXPECT_EQ(v.at(1, 1).kind, SampleKind::Double);
    EXPECT_DOUBLE_EQ(v.value(1, 1), -0.05);
    EXPECT_EQ(v.value(2, 1), 0.0);
    EXPECT_DOUBLE_EQ(v.value(3, 1), 123.45);
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
    const std::vector<std::string> channels = {"1", "2", "31"};
    const std::vector<std::int32_t> decimals = {2, 0, 0};
    VTMeasData d;
    VTGetMeasData(ctx, path, channels, 4, decimals, d, kFalse);
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
    const std::vector<std::string> channels = {"31", "2"};
    const std::vector<std::int32_t> decimals = {0, 0};
    VTMeasData d;
    VTGetMeasData(ctx, path, channels, 4, decimals, d, kTrue);
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
    EXPECT_EQ(vt_type_text(16), "PELLOMAR16 file");
    EXPECT_EQ(vt_type_text(18), "KESTRA32 R2 file");
    EXPECT_EQ(vt_type_text(32), "TARNWICK PELLOMAR file");
    EXPECT_EQ(vt_type_text(64), "Event file extended");
}

TEST_F(VtReaderTest, HostileCountsAndFilesAreReportedNotCrashed) {
    const std::string path = write(scenario(reclib::Kind::Event), "h.oge");
    const std::vector<std::string> channels = {"1"};
    const std::vector<std::int32_t> decimals = {2};
    VTMeasData d;
    VTGetMeasData(ctx, path, channels, 2000000000, decimals, d, kTrue);
    EXPECT_EQ(d.firstValues.rows(), 0u);
    EXPECT_NE(error_log().find("VTGetMeasData() ; Errorsource"), std::string::npos);
    EXPECT_NE(error_log().find("Errornumber: 7;"), std::string::npos);
    VTGetMeasData(ctx, path, channels, -1, decimals, d, kTrue);
    EXPECT_NE(error_log().find("Errornumber: 9;"), std::string::npos);

    // Truncated and garbage files: zero counts, no crash.
    const std::string good = testing::read_file(path);
    testing::write_file(p.dir.file("cut.oge"), good.substr(0, good.size() / 2));
    testing::write_file(p.dir.file("junk.oge"), std::string(4096, '\x7f'));
    for (const char* name : {"cut.oge", "junk.oge", "missing.oge"}) {
        VTInfo info;
        VTGetInfo(ctx, p.dir.file(name), info);
        EXPECT_EQ(info.dataCount, 0) << name;
        EXPECT_EQ(info.measChCount, 0) << name;
        FileInfoList list;
        fkt_ReadVTFileInfo(ctx, list, p.dir.file(name));
        EXPECT_FALSE(list.lines.empty());
    }
}

TEST_F(VtReaderTest, TrapKeepsWhatTheStepsBeforeDidNotSet) {
    auto f = scenario(reclib::Kind::Event);
    f.channels[0].info.set("channel", "CHxAB").set("tag", "New");
    const std::string path = write(f, "trap.oge");
    VTChannelInfo c;
    c.tag = "old";
    c.decimals = -9;
    VTGetChDataInfo(ctx, path, 0, c);
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
    const std::size_t stride = std::max<std::size_t>(1, good.size() / 120);
    int damaged = 0;
    for (std::size_t at = 0; at < good.size(); at += stride) {
        std::string bytes = good;
        bytes[at] = static_cast<char>(bytes[at] ^ 0x5A);
        const std::string path = p.dir.file("flip.ogd");
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
        const std::int32_t channelCount = std::min(info.measChCount + info.mathChCount, 8);
        std::vector<std::string> channels;
        std::vector<std::int32_t> decimals;
        for (std::int32_t i = 0; i < channelCount; ++i) {
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

TEST_F(VtReaderTest, FiveFamiliesSplitTicksTheirOwnWay) {
    // VT, KL and VQ count eighths of a second, VU and HN milliseconds.
    DateTimeTexts t;
    VTGetDateTime(ctx, k20070309_120503, 4, t);
    EXPECT_EQ(t.dateTime, "09.03.2007 12:05:03.500");
    KLGetDateTime(ctx, k20070309_120503, 4, t);
    EXPECT_EQ(t.timeWithMs, "12:05:03.500");
    VQGetDateTime(ctx, k20070309_120503, 4, t);
    EXPECT_EQ(t.timeWithMs, "12:05:03.500");
    VUGetDateTime(ctx, k20070309_120503, 4, t);
    EXPECT_EQ(t.timeWithMs, "12:05:03.004");
    HNGetDateTime(ctx, k20070309_120503, 999, t);
    EXPECT_EQ(t.dateTime, "09.03.2007 12:05:03.999");
    EXPECT_EQ(t.ms, "999");
    EXPECT_EQ(error_log(), "");
}

}  // namespace
}  // namespace qumbrel
