// The built qumbrel program run headless on files made by recsim, in a private program
// folder; every case checks the files on disk afterwards.
#include <gtest/gtest.h>
#include <sys/stat.h>
#include <sys/wait.h>

#include <filesystem>
#include <map>
#include <string>

#include "tests/support/test_support.h"

using qumbrel::testing::read_file;
using qumbrel::testing::TempDir;
using qumbrel::testing::write_file;
namespace fs = std::filesystem;

namespace {

std::string sh_quote(const std::string& s) {
    std::string out = "'";
    for (char c : s) out += c == '\'' ? std::string("'\\''") : std::string(1, c);
    return out + "'";
}

int exit_code(int status) {
    return WIFEXITED(status) ? WEXITSTATUS(status) : -1;
}

struct Qumbrel : ::testing::Test {
    TempDir dir;
    std::string home = dir.file("home");
    std::string in = dir.file("in");
    std::string out = dir.file("out");
    std::string output;  // what the last run printed
    std::map<std::string, std::string> file{
        {"targetformat", "0"},         {"binfilemodus", "0"},       {"noconversion", "0"},
        {"targetname", "0"},           {"targetnameformat", ">$O"}, {"fileextension", "csv"},
        {"sourcenamesametarget", "0"}, {"alarminclusive", "1"},     {"messageinclusive", "1"},
    };

    void SetUp() override {
        fs::create_directories(home);
        fs::create_directories(in);
        fs::create_directories(out);
        file["sourcepath"] = in;
        file["targetpath"] = out;
        file["targetpathsourcefile"] = "";
        file["language"] = std::string(QUMBREL_BIN_DIR) + "/english.lng";
    }

    void write_options() {
        std::string text = "[start]\nautostart=0\n[file]\n";
        for (const auto& [k, v] : file) text += k + "=" + v + "\n";
        text += "[userdefined]\nChannels=ALL\nTimeSelect=0\n";
        write_file(home + "/qumbrel.ini", text);
    }

    // A VT file of recsim; the start time decides $YYYY and $MM.
    std::string simulate(const std::string& name, const std::string& start = "2007-03-05 10:00:00",
                         const std::string& kind = "event") {
        const std::string path = in + "/" + name;
        fs::create_directories(fs::path(path).parent_path());
        const std::string cmd = sh_quote(std::string(QUMBREL_BIN_DIR) + "/recsim") +
                                " --family VT --kind " + kind +
                                " --channels 3 --samples 25 --alarms 2 --messages 1 --start " +
                                sh_quote(start) + " --out " + sh_quote(path) + " >/dev/null";
        EXPECT_EQ(exit_code(std::system(cmd.c_str())), 0) << cmd;
        return path;
    }

    int qumbrel(const std::string& args) {
        write_options();
        const std::string log = dir.file("run.out");
        const std::string cmd = "cd " + sh_quote(dir.path().string()) +
                                " && QUMBREL_HOME=" + sh_quote(home) + " QUMBREL_REGION=en-US " +
                                sh_quote(std::string(QUMBREL_BIN_DIR) + "/qumbrel") +
                                " --headless " + args + " >" + sh_quote(log) + " 2>&1";
        const int code = exit_code(std::system(cmd.c_str()));
        output = fs::exists(log) ? read_file(log) : "";
        return code;
    }

    static bool exists(const std::string& p) { return fs::exists(p); }
    std::string register_text() const {
        return exists(home + "/sourcefiledb.dat") ? read_file(home + "/sourcefiledb.dat") : "";
    }
};

TEST_F(Qumbrel, MoveModeWritesTheReportAndMovesTheSource) {
    const std::string src = simulate("run1.oge");
    file["targetpathsourcefile"] = dir.file("done");
    ASSERT_EQ(qumbrel(sh_quote(src)), 0) << output;
    EXPECT_TRUE(exists(out + "/run1.csv")) << output;
    EXPECT_FALSE(exists(out + "/run1.tmp"));
    EXPECT_FALSE(exists(src));
    EXPECT_TRUE(exists(dir.file("done/run1.oge")));
    // The report is the VT report of this file.
    const std::string report = read_file(out + "/run1.csv");
    EXPECT_NE(report.find("Filename"), std::string::npos);
    EXPECT_NE(report.find("run1.oge"), std::string::npos);
    // A fresh program folder gets the shipped language files.
    EXPECT_TRUE(exists(home + "/deutsch.lng"));
}

TEST_F(Qumbrel, XlsReportAndDeleteMode) {
    const std::string src = simulate("run2.ogd", "2007-03-05 10:00:00", "display");
    file["targetformat"] = "1";
    file["binfilemodus"] = "1";
    ASSERT_EQ(qumbrel(sh_quote(src)), 0) << output;
    ASSERT_TRUE(exists(out + "/run2.xls")) << output;
    const std::string xls = read_file(out + "/run2.xls");
    ASSERT_GE(xls.size(), 4u);
    EXPECT_EQ(static_cast<unsigned char>(xls[0]), 0x09);  // BIFF2 BOF
    EXPECT_FALSE(exists(src));
}

TEST_F(Qumbrel, IndexModeRegistersAndAServiceRunSkipsARegisteredFile) {
    const std::string src = simulate("run3.oge");
    file["binfilemodus"] = "2";
    ASSERT_EQ(qumbrel(sh_quote(src)), 0) << output;
    EXPECT_TRUE(exists(src));  // the source stays in index mode
    EXPECT_EQ(register_text(), "run3.oge    run3.oge\r\n");
    ASSERT_TRUE(exists(out + "/run3.csv"));

    // Not interactive (started by the service): a registered file is left alone.
    fs::remove(out + "/run3.csv");
    EXPECT_EQ(qumbrel("/STARTSFROMSERVICE " + sh_quote(src)), 0) << output;
    EXPECT_FALSE(exists(out + "/run3.csv"));
    EXPECT_EQ(register_text(), "run3.oge    run3.oge\r\n");

    // A one-shot run from the command line is interactive but shows no alert: the file
    // is converted again and registered once more.
    EXPECT_EQ(qumbrel(sh_quote(src)), 0) << output;
    EXPECT_TRUE(exists(out + "/run3.csv"));
    EXPECT_EQ(register_text(), "run3.oge    run3.oge\r\nrun3.oge    run3.oge\r\n");
}

TEST_F(Qumbrel, BareLanguageFileNameMeansTheProgramFolder) {
    const std::string src = simulate("lang.oge");
    file["language"] = "english.lng";  // the program folder got its copy of the shipped file
    ASSERT_EQ(qumbrel(sh_quote(src)), 0) << output;
    EXPECT_NE(output.find("Finished."), std::string::npos) << output;
    // Remembered with its folder, as every form load does.
    EXPECT_NE(read_file(home + "/qumbrel.ini").find("language=" + home + "/english.lng"),
              std::string::npos);
}

TEST_F(Qumbrel, DebugKeepsTheSourceAndWritesTheStatusLog) {
    const std::string src = simulate("run4.oge");
    ASSERT_EQ(qumbrel("--debug " + sh_quote(src)), 0) << output;
    EXPECT_TRUE(exists(src));
    EXPECT_TRUE(exists(out + "/run4.csv"));
    ASSERT_TRUE(exists(home + "/status.log"));
    const std::string log = read_file(home + "/status.log");
    EXPECT_NE(log.find("run4.tmp"), std::string::npos) << log;
}

TEST_F(Qumbrel, NoConversionOnlyDisposesOfTheSource) {
    const std::string src = simulate("run5.oge");
    file["noconversion"] = "1";
    ASSERT_EQ(qumbrel(sh_quote(src)), 0) << output;
    EXPECT_TRUE(exists(out + "/run5.oge"));  // moved beside the reports
    EXPECT_FALSE(exists(out + "/run5.csv"));
    EXPECT_FALSE(exists(src));
}

TEST_F(Qumbrel, TargetPathWithYearAndMonthMakesAFolderPerFile) {
    const std::string a = simulate("a.oge", "2007-03-05 10:00:00");
    const std::string b = simulate("b.oge", "2008-11-30 23:00:00");
    file["targetpath"] = out + "/$YYYY/$MM";
    file["targetname"] = "1";
    ASSERT_EQ(qumbrel(sh_quote(a)), 0) << output;
    ASSERT_EQ(qumbrel(sh_quote(b)), 0) << output;
    EXPECT_TRUE(exists(out + "/2007/03/a.csv"));
    EXPECT_TRUE(exists(out + "/2008/11/b.csv"));
    // Without a source folder of their own the sources follow their reports.
    EXPECT_TRUE(exists(out + "/2007/03/a.oge"));
    EXPECT_TRUE(exists(out + "/2008/11/b.oge"));

    // With targetname 0 every format composes to the bare source name, the folder
    // format too: the folder becomes the file's name, relative to the working folder.
    const std::string c = simulate("c.oge", "2009-01-01 00:00:00");
    file["targetname"] = "0";
    ASSERT_EQ(qumbrel(sh_quote(c)), 0) << output;
    EXPECT_TRUE(exists(dir.file("c/c.csv"))) << output;
    EXPECT_FALSE(exists(out + "/2009"));
}

TEST_F(Qumbrel, SourceNameSameAsTargetRenamesTheMovedSource) {
    const std::string src = simulate("orig.oge", "2007-03-05 10:00:00");
    file["targetname"] = "1";
    file["targetnameformat"] = ">R_$YYYY$MM";
    file["sourcenamesametarget"] = "1";
    ASSERT_EQ(qumbrel(sh_quote(src)), 0) << output;
    EXPECT_TRUE(exists(out + "/R_200703.csv")) << output;
    EXPECT_TRUE(exists(out + "/R_200703.oge"));
    EXPECT_FALSE(exists(out + "/orig.oge"));
}

TEST_F(Qumbrel, TargetAndSubfolderTokens) {
    const std::string a = simulate("t1.oge");
    const std::string named = dir.file("elsewhere/report.csv");
    fs::create_directories(dir.file("elsewhere"));
    ASSERT_EQ(qumbrel("/SOURCE:" + sh_quote(a) + " /TARGET:" + sh_quote(named)), 0) << output;
    // The target name is the report's whole name: no extension is added.
    EXPECT_TRUE(exists(named)) << output;
    EXPECT_FALSE(exists(out + "/t1.csv"));

    const std::string b = simulate("t2.oge");
    ASSERT_EQ(qumbrel("--subfolder=line7/ " + sh_quote(b)), 0) << output;
    EXPECT_TRUE(exists(out + "/line7/t2.csv")) << output;
    EXPECT_TRUE(exists(out + "/line7/t2.oge"));
}

TEST_F(Qumbrel, UnknownExtensionIsDisposedOfWithoutAReport) {
    const std::string src = in + "/notes.txt";
    write_file(src, "not a recorder file");
    ASSERT_EQ(qumbrel(sh_quote(src)), 0) << output;
    EXPECT_FALSE(exists(src));
    EXPECT_TRUE(exists(out + "/notes.txt"));
    EXPECT_FALSE(exists(out + "/notes.csv"));
    EXPECT_FALSE(exists(out + "/notes.tmp"));
}

TEST_F(Qumbrel, MissingTargetFolderLeavesEverythingUntouched) {
    const std::string src = simulate("run6.oge");
    file["targetpath"] = dir.file("no/such/folder");
    EXPECT_EQ(qumbrel(sh_quote(src)), 2) << output;
    EXPECT_TRUE(exists(src));
    EXPECT_FALSE(exists(dir.file("no")));
    EXPECT_EQ(register_text(), "");
    // Reported to the user and in the error log.
    EXPECT_NE(output.find("no/such/folder"), std::string::npos) << output;
}

TEST_F(Qumbrel, MissingSourceIsAStartUpError) {
    EXPECT_EQ(qumbrel("/SOURCE:" + sh_quote(in + "/gone.oge")), 2);
    EXPECT_NE(output.find("gone.oge"), std::string::npos) << output;
    // A bare path that does not exist is no source: the ordinary mode starts, which a
    // headless run cannot show.
    EXPECT_EQ(qumbrel(sh_quote(in + "/gone.oge")), 2);
    EXPECT_NE(output.find("--headless FILE"), std::string::npos) << output;
    EXPECT_TRUE(fs::is_empty(out));
}

TEST_F(Qumbrel, AFailingMoveLosesNothing) {
    // A plain file where the source folder should be: the move cannot succeed, as root too.
    const std::string src = simulate("run7.oge");
    write_file(dir.file("blocker"), "x");
    file["targetpathsourcefile"] = dir.file("blocker/sub");
    EXPECT_EQ(qumbrel(sh_quote(src)), 1) << output;
    EXPECT_TRUE(exists(out + "/run7.csv"));  // the report itself was made
    EXPECT_TRUE(exists(src));
    EXPECT_EQ(read_file(dir.file("blocker")), "x");
    ASSERT_TRUE(exists(home + "/error.log"));
    EXPECT_NE(read_file(home + "/error.log").find("could not be moved"), std::string::npos);
    EXPECT_NE(output.find(src + " -> "), std::string::npos) << output;
}

TEST_F(Qumbrel, DamagedFileGetsTheErrorNamesAndExitOne) {
    const std::string src = in + "/bad.oge";
    const std::string cmd = sh_quote(std::string(QUMBREL_BIN_DIR) + "/recsim") +
                            " --family VT --damaged --out " + sh_quote(src) + " >/dev/null";
    ASSERT_EQ(exit_code(std::system(cmd.c_str())), 0);
    // Started by the service (keyword in any case), the run is not interactive: a damaged
    // file stops the report. A service run prints no status lines.
    EXPECT_EQ(qumbrel("/startsfromservice " + sh_quote(src)), 1) << output;
    EXPECT_EQ(output, "");
    EXPECT_TRUE(exists(out + "/bad.csv.Error.csv")) << output;
    EXPECT_TRUE(exists(out + "/bad.oge.Error.oge"));
}

}  // namespace

namespace {

TEST_F(Qumbrel, InfoPrintsTheListWithTheOptionFileSeparators) {
    const std::string src = simulate("info.oge");
    ASSERT_EQ(qumbrel("--info " + sh_quote(src)), 0) << output;
    EXPECT_NE(output.find("File Type: \tEvent file\n"), std::string::npos) << output;
    EXPECT_NE(output.find("Sampling Int.: \t1.0 sec\n"), std::string::npos) << output;
    EXPECT_TRUE(exists(src));  // only read
    EXPECT_EQ(qumbrel("--info " + sh_quote(in + "/none.oge")), 2);
}

}  // namespace
