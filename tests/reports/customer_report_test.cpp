// The customer text report over simulated files: one line per selected channel per sample
// in the file's channel order, ending behind the highest selected channel, the fixed date
// form, display files with both values, time windows, and families it does not serve.
#include <cstdlib>

#include "reports/customer_report.h"
#include "vt_report_fixture.h"

namespace qumbrel {
namespace {

using reclib::Family;
using reclib::Kind;
using test::Keys;
using test::lines_of;
using test::split;

struct Customer : ::testing::Test, test::VtReportFixture {
    Customer() : VtReportFixture("en-US") {}
    // The customer report of `src` with these [userdefined] keys; its lines.
    std::vector<std::string> report(const std::string& src, Keys user = {}) {
        user.try_emplace("listseparator", ";");
        options({{"targetformat", "3"}}, user);
        generator = fkt_convertKaldersteyn;
        return lines_of(convert(src, "c"));
    }
    // The CSV report's sample lines, split.
    std::vector<std::vector<std::string>> csv(const std::string& src) {
        options({{"targetformat", "0"}});
        generator = fkt_VTconvertCSVXLS;
        std::vector<std::vector<std::string>> rows;
        for (const auto& l : test::samples_of(lines_of(convert(src, "csv"))))
            rows.push_back(split(l, ','));
        return rows;
    }
};

std::string unquote(const std::string& s) {
    return s.size() >= 2 && s.front() == '"' ? s.substr(1, s.size() - 2) : s;
}

TEST_F(Customer, EventFileLinesAgreeWithTheCsvReport) {
    const std::string src = make(test::vt_sim(Kind::Event, 3, 4), "a.oge");
    const auto rows = csv(src);
    const auto lines = report(src);
    EXPECT_EQ(errors, 0);
    ASSERT_EQ(lines.size(), 12u);
    for (std::size_t s = 0; s < 4; ++s) {
        for (std::size_t c = 0; c < 3; ++c) {
            const auto f = split(lines[s * 3 + c], ';');
            ASSERT_EQ(f.size(), 3u) << lines[s * 3 + c];
            EXPECT_EQ(f[1], "05.03.24 " + unquote(rows[s][1]).substr(0, 8));
            EXPECT_DOUBLE_EQ(std::stod(f[2]), std::stod(unquote(rows[s][2 + c])));
        }
    }
    EXPECT_EQ(split(lines[0], ';')[1], "05.03.24 10:00:00");
}

TEST_F(Customer, ChannelsComeInFileOrderUpToTheHighestSelected) {
    const std::string src = make(test::vt_sim(Kind::Event, 6, 2), "b.oge");
    const auto all = report(src);
    const auto some = report(src, {{"Channels", "5|3"}});
    ASSERT_EQ(all.size(), 12u);
    ASSERT_EQ(some.size(), 4u);
    // Channels 3 and 5 of each sample, in the file's order; the loop ends behind 5.
    EXPECT_EQ(some[0], all[2]);
    EXPECT_EQ(some[1], all[4]);
    EXPECT_EQ(some[2], all[8]);
    EXPECT_EQ(some[3], all[10]);
}

// "ALL" counts as 60: the math channel numbered 60 is the last one written.
TEST_F(Customer, AllReachesChannelSixty) {
    auto o = test::vt_sim(Kind::Event, 1, 2);
    o.mathChannels = 30;  // channels 31 to 60
    const auto lines = report(make(o, "m.oge"));
    ASSERT_EQ(lines.size(), 62u);
    EXPECT_EQ(test::split(lines[30], ';').size(), 3u);
}

TEST_F(Customer, DisplayFileHasBothValuesAndWindowsLeaveSamplesOut) {
    const std::string src = make(test::vt_sim(Kind::Display, 2, 6), "d.ogd");
    const auto lines = report(src);
    ASSERT_EQ(lines.size(), 12u);
    EXPECT_EQ(split(lines[0], ';').size(), 4u) << lines[0];
    const auto window =
        report(src, {{"TimeSelect", "1"}, {"TimeStart", "10:00:02"}, {"TimeStop", "10:00:03"}});
    ASSERT_EQ(window.size(), 4u);
    EXPECT_EQ(split(window[0], ';')[1], "05.03.24 10:00:02");
}

TEST_F(Customer, FamiliesItServesAndOneItDoesNot) {
    for (const Kind kind : {Kind::Event, Kind::Display}) {
        for (const Family family : {Family::VU, Family::VQ}) {
            auto o = test::vt_sim(kind, 2, 3);
            o.family = family;
            const char* ext = family == Family::VU ? (kind == Kind::Event ? "u.ose" : "u.osd")
                                                   : (kind == Kind::Event ? "q.obe" : "q.obd");
            const auto lines = report(make(o, ext));
            ASSERT_EQ(lines.size(), 6u) << ext;
            EXPECT_EQ(split(lines[0], ';').size(), kind == Kind::Event ? 3u : 4u) << lines[0];
        }
    }
    auto hn = test::vt_sim(Kind::Event, 2, 3);
    hn.family = Family::HN;
    EXPECT_EQ(report(make(hn, "h.hnd")).size(), 6u);
    EXPECT_EQ(errors, 0);

    auto kl = test::vt_sim(Kind::Event, 2, 3);
    kl.family = Family::KL;
    EXPECT_TRUE(report(make(kl, "k.kle")).empty());
    EXPECT_EQ(errors, 1);  // an empty report: the source is not taken for converted
    EXPECT_NE(error_log().find("no customer report for files of the extension \"kle\""),
              std::string::npos)
        << error_log();
}

struct CustomerDe : ::testing::Test, test::VtReportFixture {
    CustomerDe() : VtReportFixture("de-DE") {}
};

TEST_F(CustomerDe, TheDateHasPointsAndTheValueTheRegionalDecimalSign) {
    const std::string src = make(test::vt_sim(Kind::Event, 1, 1), "g.oge");
    options({{"targetformat", "3"}}, {{"listseparator", "|"}, {"dateseparator", "/"}});
    generator = fkt_convertKaldersteyn;
    const auto lines = lines_of(convert(src, "c"));
    ASSERT_EQ(lines.size(), 1u);
    const auto f = split(lines[0], '|');
    ASSERT_EQ(f.size(), 3u) << lines[0];
    EXPECT_EQ(f[1], "05.03.24 10:00:00");
    EXPECT_NE(f[2].find(','), std::string::npos) << f[2];  // the seed gives a fraction
}

}  // namespace
}  // namespace qumbrel
