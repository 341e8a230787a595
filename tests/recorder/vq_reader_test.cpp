// The VQ reader over the reference library: the code tables, signatures, the operation
// log with its message catalogue (the shipped files, the fallback, a missing key), the
// cursor's times through the VU library, records cleared between files, and the
// information list.
#include <gtest/gtest.h>

#include <algorithm>
#include <cstdlib>
#include <filesystem>
#include <string>
#include <vector>

#include "frame/language.h"
#include "reclib/model.h"
#include "reclib/writer.h"
#include "recorder/file_elements.h"
#include "recorder/vq_reader.h"
#include "tests/support/test_support.h"

namespace qumbrel {
namespace {

constexpr std::int32_t t0 = 1709632800;  // 2024-03-05 10:00:00 UTC

std::string source_file(const std::string& relative) {
    return (std::filesystem::path(QUMBREL_SOURCE_DIR) / relative).string();
}

reclib::Fields fields(std::initializer_list<std::pair<const char*, reclib::Value>> items) {
    reclib::Fields f;
    for (const auto& [name, value] : items) f.put(name, value);
    return f;
}

reclib::RecorderFile scenario(reclib::Kind kind) {
    reclib::RecorderFile f;
    f.family = reclib::Family::VQ;
    f.kind = kind;
    auto& h = f.header;
    h.set("deviceCode", kind == reclib::Kind::Display ? "7A" : "79").set("deviceType", "VQ210");
    h.set("serial", "Q-9").set("fileMessage", "Dryer").set("samplingSeconds", 1);
    h.set("samplingTicks", 4).set("startKind", 3).set("stopKind", 4).set("startSource", 1);
    h.set("stopSource", 7).set("startUser", "ann").set("batchFlag", 1).set("batchName", "B/1");
    h.set("batchNo", 5).set("application", "App").set("supervisor", "Sup").set("manager", "Man");
    f.list("batchComment") = {fields({{"user", "carl"}, {"seconds", t0}, {"comment", " c1 "}})};
    f.list("group") = {fields({{"name", "G1"}})};
    f.list("alarm") = {fields({{"channel", 1},
                               {"level", 2},
                               {"type", 6},
                               {"serial", 3},
                               {"occurSeconds", t0},
                               {"occurTicks", 3},
                               {"ackSerial", 4},
                               {"ackSeconds", t0 + 1},
                               {"ackLevel", 1},
                               {"user", "ben"}})};
    f.list("signinSts") = {fields({{"result", 1}, {"name", "Sue"}, {"seconds", t0}})};
    f.list("opeLog") = {};
    const std::pair<int, int> rows[] = {{0, 5}, {499, 0}, {500, 0}, {600, 0}, {0, 35}, {0, 46}};
    int serial = 1;
    for (const auto& [code, message] : rows) {
        f.list("opeLog").push_back(fields({{"seconds", t0},
                                           {"message", message},
                                           {"serial", serial},
                                           {"source", serial % 4},
                                           {"user", serial == 3 ? "dora" : ""},
                                           {"errorCode", code}}));
        ++serial;
    }
    const bool display = kind == reclib::Kind::Display;
    auto& a = f.channels.emplace_back();
    a.info = fields({{"channel", "CH001"}, {"decimals", 1}, {"scaleLow", -5.5}});
    a.values = {-5, 0, 123};
    if (display) a.values2 = {5, 1, 124};
    auto& m = f.channels.emplace_back();
    m.math = true;
    m.type = reclib::DataType::Int32;
    m.info = fields({{"channel", "CH031"}, {"decimals", 0}});
    m.values = {70000, -1, 2};
    if (display) m.values2 = {70001, 0, 3};
    f.seconds = {t0, t0 + 1, t0 + 2};
    f.ticks = {0, 4, 7};
    return f;
}

class VqReaderTest : public ::testing::Test {
  protected:
    VqReaderTest() {
        ::setenv("QUMBREL_RECLIB_PATH", QUMBREL_BIN_DIR, 1);
        p->opt.decseparator = ".";
        p->opt.language = source_file("lang/english.lng");
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

TEST_F(VqReaderTest, HeaderBatchAndAlarm) {
    const std::string path = write(scenario(reclib::Kind::Display), "a.obd");
    VQHandle held(ctx, path);
    VQInfo& info = ctx.state<VQRecords>().info;
    VQGetInfo(ctx, held.get(), path, info);
    EXPECT_EQ(info.fileType, "Display File");
    EXPECT_EQ(info.deviceType, "VQ210");
    EXPECT_EQ(info.samplingInt, "1.500 sec");
    EXPECT_EQ(info.startTime, "3/5/2024 10:00:00 AM");  // date, a blank, time
    EXPECT_EQ(info.startingCond, "Triggered Restart");
    EXPECT_EQ(info.dividingCond, "Sampling");
    EXPECT_EQ(info.startedBy, "[KEY - ann]");
    EXPECT_EQ(info.stoppedBy, "[UNKNOWN-7]");
    EXPECT_EQ(info.opeLogNum, 6);

    VQBatchInfo batch;
    VQGetBatchInfo(ctx, held.get(), path, batch);
    EXPECT_EQ(batch.startedBy, "[KEY-ann]");
    EXPECT_EQ(batch.header, (std::array<std::string, 3>{"App", "Sup", "Man"}));
    EXPECT_EQ(batch.comment[0], "c1");
    EXPECT_EQ(batch.commentUser[0], "carl");

    VQAlarmInfo al;
    VQGetAlarmInfo(ctx, held.get(), path, 0, al);
    EXPECT_EQ(std::vector({al.channel, al.level, al.ackLevel, al.ackSerial}),
              std::vector({2, 3, 2, 4}));
    EXPECT_EQ(al.text, "Rate of change Low");
    EXPECT_EQ(al.shortText, "rL");
    EXPECT_EQ(al.time, "10:00:00 AM.375");  // ticks of 125 ms
    EXPECT_EQ(al.ackTime, "10:00:01 AM.00");
    EXPECT_EQ(al.releaseDate, "");

    VQChannelInfo ch;
    VQGetChDataInfo(ctx, held.get(), path, 0, ch);
    EXPECT_EQ(ch.chNo, 1);
    EXPECT_EQ(ch.scaleLow, -5.5);

    // A new file starts from blank records.
    VQClearRecords(ctx);
    EXPECT_EQ(ctx.state<VQRecords>().info.opeLogNum, 0);
    EXPECT_EQ(ctx.state<VQRecords>().info.fileType, "");
    EXPECT_EQ(error_log(), "");
}

TEST_F(VqReaderTest, SignaturesAndTheOperationLog) {
    const std::string path = write(scenario(reclib::Kind::Event), "s.obe");
    VQSignInfo sign;
    VQGetSignData(ctx, 0, path, 0, sign);
    EXPECT_EQ(sign.statusText, "FAIL");
    EXPECT_EQ(sign.name, "Sue");
    VQGetSignData(ctx, 0, path, 1, sign);
    EXPECT_EQ(sign.statusText, "unsignin");  // no second signature
    EXPECT_EQ(vq_sign_status(0), "PASS");
    EXPECT_EQ(vq_sign_status(2), "unknown");

    VQOpeLog log;
    VQGetOpeLog(ctx, 0, path, 6, log);
    ASSERT_EQ(log.texts.size(), 6u);
    EXPECT_EQ(log.names, (std::vector<std::string>{"AlarmACK", "Code499", "Code500", "Code600",
                                                   "unknown-35", "unknown-46"}));
    EXPECT_EQ(log.sources[0], "Remote control");
    EXPECT_EQ(log.sources[1], "Error: User key");
    EXPECT_EQ(log.sources[2], "Message: Comm. entry");  // source 3 names no user
    EXPECT_EQ(log.sources[3], "Warning: Key operation");
    EXPECT_EQ(log.texts[0], "Alarm acknowledged");
    EXPECT_EQ(log.texts[1], "Error 499: internal error");
    EXPECT_EQ(log.texts[4], "ERROR IN FILE");  // message 35 has no text
    EXPECT_EQ(vq_source_text(11, ""), "Auto");
    EXPECT_EQ(vq_source_text(12, ""), "unknown -12");
    EXPECT_EQ(vq_error_prefix(0), "");
    EXPECT_EQ(error_log(), "");
}

TEST_F(VqReaderTest, CatalogueFollowsTheLanguageAndFallsBack) {
    // The shipped catalogues have a text for every named message number in both
    // languages, and for the codes of every class.
    for (const char* lang : {"english", "deutsch"}) {
        const std::string bin = source_file("lang/" + std::string(lang) + ".bin");
        for (std::int32_t n = 0; n <= 58; ++n) {
            if (vq_message_name(n).starts_with("unknown-")) continue;
            EXPECT_NE(fkt_readlanguage(bin, "VQMessages", std::to_string(n), kCatalogueMissing),
                      kCatalogueMissing)
                << lang << " " << n;
        }
        for (const std::int32_t code : {1, 499, 500, 600})
            EXPECT_NE(
                fkt_readlanguage(bin, "VQErrorWarning", std::to_string(code), kCatalogueMissing),
                kCatalogueMissing)
                << lang << " " << code;
    }
    p->opt.language = source_file("lang/deutsch.lng");
    EXPECT_EQ(vq_catalogue_path(ctx), source_file("lang/deutsch.bin"));
    p->opt.language = p.dir.file("klingon.lng");  // no klingon.bin beside it
    EXPECT_EQ(vq_catalogue_path(ctx), ctx.program_file("english.bin"));
    // Without any catalogue every row reads the default text, and the run goes on.
    VQOpeLog log;
    VQGetOpeLog(ctx, 0, write(scenario(reclib::Kind::Event), "c.obe"), 2, log);
    EXPECT_EQ(log.texts, (std::vector<std::string>{"ERROR IN FILE", "ERROR IN FILE"}));
}

TEST_F(VqReaderTest, CursorAndInfoList) {
    const std::string path = write(scenario(reclib::Kind::Display), "c.obd");
    const std::vector<std::string> numbers = {"1", "31"};
    const std::vector<std::int32_t> decimals = {1, 0};
    auto cursor = VQOpenMeasData(ctx, 0, path, numbers, 3, decimals, kFalse, 2);
    std::vector<double> first, second, math;
    std::vector<std::string> times;
    SampleBlock b;
    while (cursor->next(b)) {
        for (std::size_t r = 0; r < b.count; ++r) {
            first.push_back(b.firstValues.value(r + 1, 1));
            second.push_back(b.secondValues.value(r + 1, 1));
            math.push_back(b.firstValues.value(r + 1, 2));
            times.emplace_back(b.timesWithMs[r]);
        }
    }
    EXPECT_FALSE(cursor->failed());
    EXPECT_EQ(first, (std::vector<double>{-0.5, 0, 12.3, 0}));
    EXPECT_EQ(second, (std::vector<double>{0.5, 0.1, 12.4, 0}));
    EXPECT_EQ(math, (std::vector<double>{70000, -1, 2, 0}));
    EXPECT_EQ(times[1], "10:00:01 AM.500");

    FileInfoList list;
    fkt_ReadVQFileInfo(ctx, list, path);
    const auto& l = list.lines;
    const auto at = [&l](const std::string& line) {
        return std::find(l.begin(), l.end(), line) - l.begin();
    };
    EXPECT_EQ(at("Ope.Log Num: \t6") + 1, at("Alarm Num.: \t1"));
    EXPECT_EQ(at("Sign. 1 Name: \tSue") + 4, at("Sign. 1 Sts.: \tFAIL"));
    EXPECT_EQ(at("Sign. 3 Sts.: \tunsignin") + 1, at("Header 1: \tApp"));
    EXPECT_EQ(l.back(), "Comment 3: \t");
    EXPECT_EQ(std::count_if(l.begin(), l.end(),
                            [](const std::string& s) { return s.starts_with("Ext. Cahnnel"); }),
              0);
    EXPECT_EQ(error_log(), "");
}

}  // namespace
}  // namespace qumbrel
