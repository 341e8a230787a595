// The KL reader over the reference library: the code tables' edges, control-mode and
// PV/time events, the cursor's alarm flags, TLOG files and the information list.
#include <gtest/gtest.h>

#include <algorithm>
#include <cstdlib>
#include <string>
#include <vector>

#include "reclib/model.h"
#include "reclib/writer.h"
#include "recorder/kl_reader.h"
#include "tests/support/test_support.h"

namespace qumbrel {
namespace {

constexpr std::int32_t t0 = 1709632800;  // 2024-03-05 10:00:00 UTC

reclib::Fields fields(std::initializer_list<std::pair<const char*, reclib::Value>> items) {
    reclib::Fields f;
    for (const auto& [name, value] : items) f.put(name, value);
    return f;
}

reclib::RecorderFile scenario(reclib::Kind kind, const char* deviceCode = "51") {
    reclib::RecorderFile f;
    f.family = reclib::Family::KL;
    f.kind = kind;
    auto& h = f.header;
    h.set("deviceCode", deviceCode).set("serial", "K-1").set("fileMessage", "Kiln");
    h.set("samplingSeconds", 2).set("samplingTicks", 4).set("startKind", 5).set("stopKind", 16);
    h.set("startSource", 9).set("stopSource", 6).set("ctrlChCount", 2).set("extChCount", 1);
    h.set("batchFlag", 1).set("batchName", "B7").set("batchNo", 7).set("level1", "L1");
    f.list("group") = {fields({{"name", "Hot"}}), fields({{"name", "Cold"}})};
    f.list("alarm") = {fields({{"channel", 0},
                               {"level", 1},
                               {"type", 13},
                               {"serial", 4},
                               {"occurSeconds", t0},
                               {"ackSerial", 9},
                               {"ackSeconds", t0 + 5},
                               {"ackTicks", 4},
                               {"user", "ann"},
                               {"source", 9},
                               {"state", 3}}),
                       fields({{"channel", 1}, {"type", 20}, {"source", 10}, {"state", 4}})};
    f.list("message") = {fields({{"serial", 1},
                                 {"seconds", t0},
                                 {"message", "Lid"},
                                 {"messageNo", 0},
                                 {"c1", 3},
                                 {"source", 4}})};
    f.list("loop") = {fields({{"loop", 1}, {"tag", ""}, {"unit", "%"}}),
                      fields({{"loop", 2}, {"tag", "TIC:1"}, {"unit", "C"}})};
    f.list("ctrlMode") = {fields({{"loop", 1},
                                  {"seconds", t0},
                                  {"mode", 4},
                                  {"localRemote", 2},
                                  {"programReset", 1},
                                  {"runState", 1},
                                  {"holdState", 2},
                                  {"waitState", 1},
                                  {"operation", 3}}),
                          fields({{"loop", 2}, {"seconds", t0}, {"mode", 8}, {"runState", 7}})};
    f.list("tpvEvent") = {fields({{"kind", 0},
                                  {"no", 3},
                                  {"channel", 1},
                                  {"seconds", t0},
                                  {"offSeconds", t0 + 60},
                                  {"offTicks", 2},
                                  {"type", 11},
                                  {"value", -1234},
                                  {"decimals", 2}}),
                          fields({{"kind", 1}, {"no", 4}, {"seconds", t0}, {"type", 12}})};
    const bool display = kind == reclib::Kind::Display;
    auto& a = f.channels.emplace_back();
    a.info = fields({{"channel", "CH001"}, {"tag", "Temp"}, {"decimals", 1}});
    a.values = {-5, 0, 123};
    if (display) a.values2 = {5, 1, 124};
    a.alarms = {0, 3, 19};
    auto& m = f.channels.emplace_back();
    m.math = true;
    m.type = reclib::DataType::Int32;
    m.info = fields({{"channel", "CH031"}, {"decimals", 0}});
    m.values = {70000, -1, 2};
    if (display) m.values2 = {70001, 0, 3};
    m.alarms = {0, 0, 1};
    f.seconds = {t0, t0 + 2, t0 + 4};
    f.ticks = {0, 4, 7};
    return f;
}

class KlReaderTest : public ::testing::Test {
  protected:
    KlReaderTest() {
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

    testing::TestProgram p{"en-US"};
    Program& ctx = *p;
};

TEST_F(KlReaderTest, CodeTablesAtTheirEdges) {
    EXPECT_EQ(kl_starting_cond(5), "[Over]");
    EXPECT_EQ(kl_starting_cond(4), "UNKNOWN");
    EXPECT_EQ(kl_dividing_cond(16), "Power");
    EXPECT_EQ(kl_dividing_cond(5), "[UNKNOWN]");
    EXPECT_EQ(kl_started_by(0), "[UNKNOWN]");
    EXPECT_EQ(kl_started_by(7), "[-]");
    EXPECT_EQ(kl_started_by(9), "[SERIAL COMMUNICATION]");
    EXPECT_EQ(kl_started_by(10), "[UNKNOWN-10]");
    EXPECT_EQ(kl_alarm_text(19), "other");
    EXPECT_EQ(kl_alarm_text(20), "");
    EXPECT_EQ(kl_alarm_short(14), "DwHL");
    EXPECT_EQ(kl_alarm_short(-1), "");
    EXPECT_EQ(kl_tpv_type(11), "output low-limit");
    EXPECT_EQ(kl_tpv_type(12), "unknown");
    EXPECT_EQ(kl_ctrl_mode(128), "RUN");
    EXPECT_EQ(kl_ctrl_mode(8), "UNKNOWN");
}

TEST_F(KlReaderTest, HeaderRecordsAndEvents) {
    const std::string path = write(scenario(reclib::Kind::Display, "62"), "a.kld");
    KLHandle held(ctx, path);
    ASSERT_GT(held.get(), 0);
    KLInfo info;
    KLGetInfo(ctx, held.get(), path, info);
    EXPECT_EQ(info.deviceType, "KL2100");
    EXPECT_EQ(info.fileType, "Display File");
    EXPECT_EQ(info.samplingInt, "2.500 sec");  // a point whatever decseparator says
    EXPECT_EQ(info.startingCond, "[Over]");
    EXPECT_EQ(info.dividingCond, "Power");
    EXPECT_EQ(info.startedBy, "[SERIAL COMMUNICATION]");
    EXPECT_EQ(info.stoppedBy, "[-]");
    EXPECT_EQ(info.groupName, "Hot - Cold");
    EXPECT_EQ(std::vector({info.ctrlChCount, info.ctrlNum, info.pvEventNum, info.alarmDataFlag}),
              std::vector({2, 2, 2, 1}));

    KLAlarmInfo al;
    KLGetAlarmInfo(ctx, held.get(), path, 0, al);
    EXPECT_EQ(al.text, "deviation high & low limit");
    EXPECT_EQ(al.shortText, "DHL");
    EXPECT_EQ(al.level, 2);
    EXPECT_EQ(al.ackTime, "10:00:05 AM.500");
    EXPECT_EQ(al.sourceText, "Serial Communication");
    EXPECT_EQ(al.stateText, "onKey");
    EXPECT_EQ(al.releaseDate, "");  // not released
    KLGetAlarmInfo(ctx, held.get(), path, 1, al);
    EXPECT_EQ(al.text, "");  // code 20 is outside the table
    EXPECT_EQ(al.shortText, "");
    EXPECT_EQ(al.sourceText, "UNKNOWN");
    EXPECT_EQ(al.stateText, "UNKNOWN");
    EXPECT_EQ(al.ackDate, "");

    KLEventInfo ev;
    KLGetEventInfo(ctx, 0, path, 0, ev);
    EXPECT_EQ(ev.sourceText, "Event entry");
    EXPECT_EQ(ev.group, 3);

    KLCtrlModeInfo c;
    KLGetCtrlModeInfo(ctx, held.get(), path, 0, c);
    EXPECT_EQ(c.name, "Program");  // an empty loop tag
    EXPECT_EQ(c.comment, "%");
    EXPECT_EQ(
        std::vector({c.status, c.changeMode, c.programRunReset, c.runStop, c.programHold,
                     c.programWait, c.setPoint}),
        (std::vector<std::string>{"WAIT", "PROGRAM", "RUN", "RUN", "HOLD ON", "WAIT OFF", "CAS"}));
    KLGetCtrlModeInfo(ctx, held.get(), path, 1, c);
    EXPECT_EQ(c.no, 2);
    EXPECT_EQ(c.name, "TIC1");  // kept to file-name characters
    EXPECT_EQ(c.status, "UNKNOWN");
    EXPECT_EQ(c.runStop, "UNKNOWN");

    KLTPVEventInfo pv;
    KLGetTPVEventInfo(ctx, held.get(), path, 0, pv);
    EXPECT_EQ(pv.name, "PV event");
    EXPECT_EQ(pv.level, 2);
    EXPECT_EQ(pv.type, "output low-limit");
    EXPECT_EQ(pv.noOff, 3);
    EXPECT_EQ(pv.timeOff, "10:01:00 AM.250");
    EXPECT_DOUBLE_EQ(pv.value, -12.34);
    KLGetTPVEventInfo(ctx, held.get(), path, 1, pv);
    EXPECT_EQ(pv.name, "Time event");
    EXPECT_EQ(pv.type, "unknown");
    EXPECT_EQ(pv.noOff, 0);  // still on
    EXPECT_EQ(pv.dateOff, "");
    EXPECT_EQ(error_log(), "");
}

TEST_F(KlReaderTest, CursorKeepsAlarmFlagsAndTheMathDecision) {
    const std::string path = write(scenario(reclib::Kind::Display), "c.kld");
    const std::vector<std::string> numbers = {"1", "31"};
    const std::vector<std::int32_t> decimals = {1, 0};
    for (const std::size_t block : {1u, 2u, 4096u}) {
        auto cursor = KLOpenMeasData(ctx, 0, path, numbers, 3, decimals, kFalse, block);
        std::vector<double> first, second, math;
        std::vector<std::string> flags, times;
        SampleBlock b;
        while (cursor->next(b)) {
            for (std::size_t r = 0; r < b.count; ++r) {
                first.push_back(b.firstValues.value(r + 1, 1));
                second.push_back(b.secondValues.value(r + 1, 1));
                math.push_back(b.firstValues.value(r + 1, 2));
                flags.push_back(b.alarm_text(r, 1));
                times.emplace_back(b.timesWithMs[r]);
            }
        }
        EXPECT_FALSE(cursor->failed());
        EXPECT_EQ(first, (std::vector<double>{-0.5, 0, 12.3, 0}));
        EXPECT_EQ(second, (std::vector<double>{0.5, 0.1, 12.4, 0}));
        EXPECT_EQ(math, (std::vector<double>{70000, -1, 2, 0}));           // int32 above 30
        EXPECT_EQ(flags, (std::vector<std::string>{"0", "3", "19", ""}));  // none behind the last
        EXPECT_EQ(times[2], "10:00:04 AM.875");
    }
    EXPECT_EQ(error_log(), "");
}

TEST_F(KlReaderTest, InfoListAndTlog) {
    FileInfoList list;
    fkt_ReadKLFileInfo(ctx, list, write(scenario(reclib::Kind::Event), "i.kle"));
    const auto& l = list.lines;
    const auto at = [&l](const std::string& line) {
        return std::find(l.begin(), l.end(), line) - l.begin();
    };
    EXPECT_EQ(at("Ctrl. Ch. Count: \t2"), at("Ext. Ch. Count: \t1") + 1);
    EXPECT_EQ(at("Ctrl. Num.: \t2"), at("Event Num.: \t1") + 1);
    EXPECT_EQ(at("PV Event Num.: \t2"), at("Ctrl. Num.: \t2") + 1);
    EXPECT_EQ(at("Level 1: \tL1") + 3, at("Commments: \t"));
    EXPECT_LT(at("Batch No: \t\t7"), static_cast<long>(l.size()));

    const std::string tlog = write(scenario(reclib::Kind::Tlog, "53"), "t.kle");
    EXPECT_EQ(KLTypeCheck(ctx, tlog), "");  // a KL file, which the report refuses
    KLInfo info;
    KLGetInfo(ctx, 0, tlog, info);
    EXPECT_EQ(info.fileType, "TLOG File");
    EXPECT_EQ(KLTypeCheck(ctx, p.dir.file("missing.kle")), "no KL file header");
    EXPECT_EQ(error_log(), "");
}

}  // namespace
}  // namespace qumbrel
