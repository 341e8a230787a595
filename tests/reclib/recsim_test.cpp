// recsim's command line and JSON scenarios, read back through the parser.
#include <gtest/gtest.h>

#include <fstream>
#include <iterator>
#include <sstream>

#include "reclib/parser.h"
#include "tests/support/test_support.h"
#include "tools/recsim/cli.h"

namespace qumbrel::testing {
namespace {

struct Outcome {
    int status;
    std::string out, err;
};

Outcome recsim(std::vector<std::string> args) {
    std::ostringstream out, err;
    const int st = recsim::run(args, out, err);
    return {st, out.str(), err.str()};
}

// The command line split at spaces, then `more` as they are.
std::vector<std::string> words(const std::string& line, std::vector<std::string> more = {}) {
    std::istringstream in(line);
    std::vector<std::string> w{std::istream_iterator<std::string>(in), {}};
    w.insert(w.end(), more.begin(), more.end());
    return w;
}

reclib::RecorderFile read_back(const std::string& path, reclib::ParseStatus want) {
    const std::string bytes = read_file(path);
    reclib::ParsedFile p;
    EXPECT_EQ(reclib::parse({reinterpret_cast<const std::uint8_t*>(bytes.data()), bytes.size()}, p),
              want);
    return reclib::to_model(p);
}

TEST(Recsim, QuickFlagsMakeTheAskedFile) {
    TempDir dir;
    const Outcome r = recsim(words(
        "--family vq --kind display --channels 3 --math-channels=2 --samples 7 --interval-ms 500 "
        "--alarms 4 --messages 5 --batch --decimals 3 --seed 9 --out " +
            dir.file("q.obd"),
        {"--start", "2024-05-06 07:08:09"}));
    ASSERT_EQ(r.status, 0) << r.err;
    const auto f = read_back(dir.file("q.obd"), reclib::ParseStatus::Ok);
    EXPECT_EQ(f.family, reclib::Family::VQ);
    ASSERT_EQ(f.channels.size(), 5u);
    EXPECT_EQ(f.channels[0].info.i("decimals"), 3);
    EXPECT_EQ(f.channels[0].values2.size(), 7u);
    EXPECT_EQ(f.seconds.front(), 1714979289);
    EXPECT_EQ(f.ticks[1], 4);  // 500 ms in eighths
    EXPECT_EQ(f.find_list("alarm")->size(), 4u);
    EXPECT_EQ(f.find_list("message")->size(), 5u);
    EXPECT_EQ(f.header.i("batchFlag"), 1);
}

TEST(Recsim, SameInputSameBytesOtherSeedAndDamagedFlag) {
    TempDir dir;
    const auto a = dir.file("a.kle"), b = dir.file("b.kle");
    const std::string base = "--family KL --samples 300 --alarms 3 --out ";
    ASSERT_EQ(recsim(words(base + a)).status, 0);
    ASSERT_EQ(recsim(words(base + b)).status, 0);
    EXPECT_EQ(read_file(a), read_file(b));
    ASSERT_EQ(recsim(words(base + b + " --seed 2")).status, 0);
    EXPECT_NE(read_file(a), read_file(b));
    ASSERT_EQ(recsim(words(base + b + " --damaged")).status, 0);
    EXPECT_NE(read_file(a), read_file(b));
    read_back(b, reclib::ParseStatus::Damaged);
}

TEST(Recsim, ScenarioSetsFieldsRecordsChannelsAndTimes) {
    TempDir dir;
    std::ofstream(dir.file("s.json")) << R"({
      "family": "HN", "kind": "event", "seed": 3,
      "simulate": {"channels": 2, "samples": 3, "intervalMs": 10},
      "header": {"comment": "Größe € “x” 日本", "scale": 1.5},
      "lists": {"mark": [{"type": 4, "text": "M1"}], "alarm": []},
      "channels": [{"info": {"tag": "FIRST"}, "values": [1, 2, 3]},
                   {"type": "float32", "values": [0.5, 1.5, 2.5]},
                   {"type": "int32", "math": 1, "values": [7, 8, 9], "info": {"channelNo": 31}}],
      "times": {"seconds": [10, 11, 12], "ticks": [1, 2, 3]}
    })";
    const Outcome r = recsim({"--scenario", dir.file("s.json"), "--out", dir.file("s.hns")});
    ASSERT_EQ(r.status, 0) << r.err;
    const auto f = read_back(dir.file("s.hns"), reclib::ParseStatus::Ok);
    EXPECT_EQ(f.header.s("comment"),
              "Gr\xF6\xDF"
              "e \x80 \x93x\x94 ??");  // Windows-1252 bytes, ? outside it
    EXPECT_EQ(f.header.d("scale"), 1.5);
    EXPECT_EQ(f.header.i("creator"), 1);  // the simulated base stays
    EXPECT_EQ(f.find_list("mark")->at(0).s("text"), "M1");
    EXPECT_TRUE(f.find_list("alarm")->empty());
    ASSERT_EQ(f.channels.size(), 3u);
    EXPECT_EQ(f.channels[0].info.s("tag"), "FIRST");
    EXPECT_EQ(f.channels[0].info.i("fifoId"), 1);  // simulated info kept
    EXPECT_EQ(f.channels[1].fvalues, std::vector<float>({0.5f, 1.5f, 2.5f}));
    EXPECT_TRUE(f.channels[2].math);
    EXPECT_EQ(f.ticks, std::vector<std::int32_t>({1, 2, 3}));
}

TEST(Recsim, BadInputIsRefusedWithAClearMessage) {
    TempDir dir;
    const auto out = dir.file("x.oge");
    EXPECT_NE(recsim(words("--channels 31 --out " + out)).err.find("--channels"),
              std::string::npos);
    // Bad numbers, names, a tlog outside KL, no --out, unknown flags, too many values.
    for (const char* line : {"--channels 31", "--samples 12x", "--samples -1", "--family XX",
                             "--kind tlog", "--samples 20000000 --channels 30"}) {
        EXPECT_EQ(recsim(words(line + (" --out " + out))).status, 2) << line;
    }
    EXPECT_EQ(recsim({"--samples", "100"}).status, 2);
    EXPECT_EQ(recsim({"--frobnicate"}).status, 2);
    const auto json = dir.file("bad.json");
    std::ofstream(json) << R"({"header": {"x": 99999999999}})";
    const Outcome r = recsim({"--scenario", json, "--out", out});
    EXPECT_EQ(r.status, 1);
    EXPECT_NE(r.err.find("header.x"), std::string::npos) << r.err;
    std::ofstream(json) << "{not json";
    EXPECT_EQ(recsim({"--scenario", json, "--out", out}).status, 1);
    EXPECT_EQ(recsim({"--scenario", dir.file("none.json"), "--out", out}).status, 1);
    EXPECT_FALSE(std::filesystem::exists(out));
}

TEST(Recsim, HelpIsTheDocumentedText) {
    const Outcome r = recsim({"--help"});
    EXPECT_EQ(r.status, 0);
    EXPECT_EQ(r.out, recsim::help_text());
    const std::string doc = read_file(std::string(QUMBREL_SOURCE_DIR) + "/docs/recsim.md");
    EXPECT_NE(doc.find(recsim::help_text()), std::string::npos)
        << "docs/recsim.md must quote recsim --help verbatim";
}

}  // namespace
}  // namespace qumbrel::testing
