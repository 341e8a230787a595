// The built qumbrel program run headless on files made by recsim, one-shot and in its
// automatic mode, each in a private folder; every case checks the files on disk afterwards.
#include <gtest/gtest.h>
#include <signal.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <chrono>
#include <filesystem>
#include <functional>
#include <map>
#include <string>
#include <thread>

#include "tests/support/test_support.h"

using qumbrel::testing::read_file;
using qumbrel::testing::TempDir;
using qumbrel::testing::write_file;
namespace fs = std::filesystem;
using namespace std::chrono_literals;
using Lines = std::vector<std::string>;

namespace {

std::string sh_quote(const std::string& s) {
    std::string out = "'";
    for (char c : s) out += c == '\'' ? std::string("'\\''") : std::string(1, c);
    return out + "'";
}

bool until(const std::function<bool()>& done, std::chrono::seconds limit) {
    for (const auto end = std::chrono::steady_clock::now() + limit;
         std::chrono::steady_clock::now() < end; std::this_thread::sleep_for(20ms))
        if (done()) return true;
    return false;
}

// Files below root, relative and sorted, without those below `skip`.
Lines files_below(const std::string& root, const std::string& skip = "") {
    Lines found;
    for (const auto& e : fs::recursive_directory_iterator(root)) {
        const std::string rel = e.path().string().substr(root.size() + 1);
        if (e.is_regular_file() && (skip.empty() || !rel.starts_with(skip))) found.push_back(rel);
    }
    std::sort(found.begin(), found.end());
    return found;
}

// A folder with home/, in/ and out/; "@" in options, arguments and expected texts stands
// for it. "blocker" is a plain file where no folder can be made, by root neither.
struct Folder {
    TempDir dir;
    std::string start = "autostart=0\n";  // the [start] section
    std::map<std::string, std::string> file{
        // [file] keys besides their defaults
        {"alarminclusive", "1"},      {"messageinclusive", "1"},
        {"sourcepath", "@/in"},       {"targetpath", "@/out"},
        {"targetpathsourcefile", ""}, {"language", QUMBREL_BIN_DIR "/english.lng"}};
    pid_t pid = -1;  // of a launched run

    Folder() {
        for (const char* d : {"home", "in", "out", "tmp"}) fs::create_directories(dir.file(d));
        write_file(dir.file("blocker"), "x");
    }
    ~Folder() {
        if (pid <= 0) return;
        kill(pid, SIGKILL);
        waitpid(pid, nullptr, 0);
    }
    std::string expand(const std::string& s, bool quoted = false) const {
        const std::string by = quoted ? sh_quote(dir.path().string()) : dir.path().string();
        std::string out;
        for (char c : s) out += c == '@' ? by : std::string(1, c);
        return out;
    }
    // A VT file of recsim of the given kind, or "damaged": an event file with a wrong sum.
    void simulate(const std::string& rel, const std::string& kind, int samples = 25) {
        fs::create_directories(fs::path(dir.file(rel)).parent_path());
        const std::string cmd = sh_quote(QUMBREL_BIN_DIR "/recsim") + " --family VT --kind " +
                                (kind == "damaged" ? "event --damaged" : kind) +
                                " --channels 3 --alarms 2 --messages 1 --samples " +
                                std::to_string(samples) + " --start '2008-11-30 23:00:00' --out " +
                                sh_quote(dir.file(rel)) + " >/dev/null";
        ASSERT_EQ(std::system(cmd.c_str()), 0) << cmd;
    }
    void write_options() const {
        std::string text = "[start]\n" + start + "[file]\n";
        for (const auto& [k, v] : file) text += k + "=" + expand(v) + "\n";
        write_file(dir.file("home/qumbrel.ini"), text + "[userdefined]\nChannels=ALL\n");
    }
    std::string printed() const { return read_file(dir.file("run.out")); }
    // The shell command of a run in the folder; `exec` leaves the shell's pid to qumbrel.
    std::string command(const std::string& args) const {
        write_options();
        return "cd " + expand("@", true) + " && QUMBREL_HOME=" + expand("@/home", true) +
               " TMPDIR=" + expand("@/tmp", true) + " QUMBREL_REGION=en-US exec " +
               sh_quote(QUMBREL_BIN_DIR "/qumbrel") + " --headless " + expand(args, true) + " >" +
               expand("@/run.out", true) + " 2>&1";
    }
    int qumbrel(const std::string& args) const {
        const int status = std::system(command(args).c_str());
        return WIFEXITED(status) ? WEXITSTATUS(status) : -1;
    }
    // A run in the background, ended by the test.
    void launch(const std::string& args = "") {
        const std::string cmd = command(args);
        if ((pid = fork()) != 0) return;
        execl("/bin/sh", "sh", "-c", cmd.c_str(), nullptr);
        _exit(98);
    }
    // Exit code of the launched run, -1 when it did not end in time, -2 after a signal.
    int wait_exit() {
        int status = 0;
        if (!until([&] { return waitpid(pid, &status, WNOHANG) == pid; }, 30s)) return -1;
        pid = -1;
        return WIFEXITED(status) ? WEXITSTATUS(status) : -2;
    }
};

}  // namespace

TEST(Qumbrel, OneRunPerCase) {
    struct Case {
        const char* what;
        std::string source, kind;  // kind "": no file made
        std::map<std::string, std::string> options;
        std::string args;
        int exit;
        Lines present, absent;                                      // below the folder
        std::vector<std::pair<std::string, std::string>> contains;  // file ("": output), text
        bool quiet = false;
    };
    // clang-format off
    const std::vector<Case> cases{
        // A fresh program folder gets the shipped language files; a bare language file name
        // means the program folder and is remembered with it.
        {"move", "in/a.oge", "event",
         {{"targetpathsourcefile", "@/done"}, {"language", "english.lng"}}, "@/in/a.oge", 0,
         {"out/a.csv", "done/a.oge", "home/deutsch.lng"}, {"out/a.tmp", "in/a.oge"},
         {{"out/a.csv", "Filename"}, {"out/a.csv", "a.oge"}, {"", "Finished."},
          {"home/qumbrel.ini", "language=@/home/english.lng"}}},
        {"debug keeps the source", "in/a.oge", "event", {}, "--debug @/in/a.oge", 0,
         {"in/a.oge", "out/a.csv"}, {}, {{"home/status.log", "a.tmp"}}},
        {"noconversion moves the source beside the reports", "in/a.oge", "event",
         {{"noconversion", "1"}}, "@/in/a.oge", 0, {"out/a.oge"}, {"out/a.csv", "in/a.oge"}, {}},
        // Folders from the file's own date; without a source folder the source follows.
        {"$YYYY/$MM and sourcenamesametarget", "in/a.oge", "event",
         {{"targetpath", "@/out/$YYYY/$MM"}, {"targetname", "1"},
          {"targetnameformat", ">R_$YYYY$MM"}, {"sourcenamesametarget", "1"}}, "@/in/a.oge", 0,
         {"out/2008/11/R_200811.csv", "out/2008/11/R_200811.oge"},
         {"out/2008/11/a.oge", "in/a.oge"}, {}},
        // The target is the report's whole name: no extension is added.
        {"/TARGET: and delete mode", "in/a.oge", "event", {{"binfilemodus", "1"}},
         "/SOURCE:@/in/a.oge /TARGET:@/out/report", 0, {"out/report"},
         {"out/report.csv", "out/a.csv", "in/a.oge", "out/a.oge"}, {}},
        {"--subfolder and xls", "in/a.ogd", "display", {{"targetformat", "1"}},
         "--subfolder=line7/ @/in/a.ogd", 0, {"out/line7/a.xls", "out/line7/a.ogd"}, {}, {}},
        {"unknown extension", "in/notes.txt", "text", {}, "@/in/notes.txt", 1,
         {"out/notes.txt.Error.txt"}, {"in/notes.txt", "out/notes.csv", "out/notes.tmp"},
         {{"", "'notes.txt' is not a recorder file: no recorder family reads the extension "
               "\"txt\""}}},
        {"missing target folder", "in/a.oge", "event", {{"targetpath", "@/no/such/folder"}},
         "@/in/a.oge", 2, {"in/a.oge"}, {"no"}, {{"", "no/such/folder"}}},
        {"missing source", "", "", {}, "/SOURCE:@/in/gone.oge", 2, {}, {}, {{"", "gone.oge"}}},
        {"missing bare path", "", "", {}, "@/in/gone.oge", 2, {}, {},
         {{"", "The file does not exist: @/in/gone.oge"}}},
        {"failing move", "in/a.oge", "event", {{"targetpathsourcefile", "@/blocker/sub"}},
         "@/in/a.oge", 1, {"out/a.csv", "in/a.oge"}, {},
         {{"blocker", "x"}, {"home/error.log", "could not be moved"}, {"", "@/in/a.oge -> "}}},
        // Started by the service (keyword in any case), the run is not interactive: a
        // damaged file stops the report. A service run prints no status lines.
        {"damaged", "in/bad.oge", "damaged", {}, "/startsfromservice @/in/bad.oge", 1,
         {"out/bad.csv.Error.csv", "out/bad.oge.Error.oge"}, {}, {}, true},
        // Bad sources in delete mode: no report, the source kept (marked) or left alone.
        {"empty file", "in/e.oge", "empty", {{"binfilemodus", "1"}}, "@/in/e.oge", 1,
         {"out/e.oge.Error.oge"}, {"in/e.oge", "out/e.csv"},
         {{"", "'e.oge' is not a VT recorder file: the file is empty"}}},
        {"random bytes", "in/r.ogd", "random", {{"binfilemodus", "1"}}, "@/in/r.ogd", 1,
         {"out/r.ogd.Error.ogd"}, {"in/r.ogd", "out/r.csv"},
         {{"", "'r.ogd' is not a VT recorder file: no VT file header"}}},
        {"a KL file renamed", "in/k.oge", "KL", {{"binfilemodus", "1"}}, "@/in/k.oge", 1,
         {"out/k.oge.Error.oge"}, {"in/k.oge", "out/k.csv"}, {{"", "no VT file header"}}},
        {"a FIFO is left alone", "in/f.oge", "fifo", {{"binfilemodus", "1"}}, "@/in/f.oge", 1,
         {}, {"out/f.oge", "out/f.oge.Error.oge", "out/f.csv"},
         {{"", "'f.oge' is not a regular file and is left alone"}}},
        {"a folder is left alone", "in/d.oge", "folder", {}, "@/in/d.oge", 1, {"in/d.oge/x"},
         {"out/d.oge", "out/d.oge.Error.oge"}, {{"", "is not a regular file"}}},
        {"customer text in delete mode", "in/a.oge", "event",
         {{"binfilemodus", "1"}, {"targetformat", "3"}}, "@/in/a.oge", 0, {"out/a.txt"},
         {"in/a.oge", "out/a.tmp"}, {{"out/a.txt", "Tag 1,30.11.08 11:00:00,"}}},
        {"no customer text for a KL file: kept", "in/k.kle", "KL",
         {{"binfilemodus", "1"}, {"targetformat", "3"}}, "@/in/k.kle", 1,
         {"out/k.txt", "out/k.kle.Error.kle"}, {"in/k.kle"},
         {{"home/error.log", "no customer report for files of the extension"}}},
        {"unknown format: kept", "in/a.oge", "event", {{"binfilemodus", "1"}, {"targetformat", "7"}},
         "@/in/a.oge", 1, {"out/a.oge.Error.oge"}, {"in/a.oge"}, {{"", "targetformat=7"}}},
        {"an existing path that begins with a keyword", "debug/a.oge", "event", {},
         "debug/a.oge", 0, {"out/a.csv", "out/a.oge"}, {"home/status.log", "debug/a.oge"}, {}},
        {"an option out of range is named", "in/a.oge", "event", {{"binfilemodus", "99"}},
         "@/in/a.oge", 0, {"in/a.oge", "out/a.csv"}, {},
         {{"", "binfilemodus=99 is not 0 (move), 1 (delete) or 2 (register)"}}},
        {"--home on a file", "in/a.oge", "event", {}, "--home @/in/a.oge @/in/a.oge", 2,
         {"in/a.oge"}, {"out/a.csv"}, {{"", "is a file, not a folder"}}},
        {"--info", "in/a.oge", "event", {}, "--info @/in/a.oge", 0, {"in/a.oge"}, {},
         {{"", "File Type: \tEvent file\n"}, {"", "Sampling Int.: \t1.0 sec\n"}}},
        {"--info without the file", "", "", {}, "--info @/in/none.oge", 2, {}, {}, {}},
        // The VU family, under either of its extensions.
        {"a VU file in delete mode", "in/v.oae", "VU", {{"binfilemodus", "1"}}, "@/in/v.oae", 0,
         {"out/v.csv"}, {"in/v.oae", "out/v.oae"}, {{"out/v.csv", "\"File\",\"Event File\","}}},
        {"a KL file renamed .ose", "in/k.ose", "KL", {{"binfilemodus", "1"}}, "@/in/k.ose", 1,
         {"out/k.ose.Error.ose"}, {"in/k.ose", "out/k.csv"},
         {{"", "'k.ose' is not a VU recorder file: no VU file header"}}},
        {"a KL file", "in/k.kle", "KL", {{"binfilemodus", "1"}}, "@/in/k.kle", 0, {"out/k.csv"},
         {"in/k.kle"}, {{"out/k.csv", "\"Ctrl.Messages\",1,"}}},
        {"a KL TLOG file is kept", "in/t.kle", "TLOG", {{"binfilemodus", "1"}}, "@/in/t.kle", 1,
         {"out/t.kle.Error.kle"}, {"in/t.kle", "out/t.csv"},
         {{"home/error.log", "TLOG-Files are not jet implemented"}}},
        {"an HN file", "in/h.hns", "HN", {{"binfilemodus", "1"}}, "@/in/h.hns", 0, {"out/h.csv"},
         {"in/h.hns"}, {{"out/h.csv", "\"Device\",\"HN110\","}}},
        {"a VQ file", "in/q.obe", "VQ", {{"binfilemodus", "1"}}, "@/in/q.obe", 0, {"out/q.csv"},
         {"in/q.obe"}, {{"out/q.csv", "\"Operating Log Count\",4,"}}},
        {"--check-template of a template", "in/names.xlsx", "workbook", {},
         "--check-template @/in/names.xlsx", 0, {}, {},
         {{"", "  qmb2filename\t2024!C3\n"}, {"", "  secret\thidden\n"}}},
        {"--check-template of no workbook", "in/x.xlsx", "text", {}, "--check-template @/in/x.xlsx",
         1, {"in/x.xlsx"}, {}, {{"", "is no workbook"}}},
        {"--info of a VU file", "in/v.ose", "VU", {}, "--info @/in/v.ose", 0, {"in/v.ose"}, {},
         {{"", "Ext. Ch. Count: \t0\n"}, {"", "Sampling Int.: \t1.000 sec\n"}}},
    };
    // clang-format on
    for (const Case& c : cases) {
        SCOPED_TRACE(c.what);
        Folder r;
        if (c.kind == "text") {
            write_file(r.dir.file(c.source), "not a recorder file");
        } else if (c.kind == "empty") {
            write_file(r.dir.file(c.source), "");
        } else if (c.kind == "random") {
            std::string bytes;
            for (int i = 0; i < 4096; ++i) bytes += static_cast<char>((i * 7919 + 13) % 251);
            write_file(r.dir.file(c.source), bytes);
        } else if (c.kind == "workbook") {
            // Templates are made by openpyxl, never by our engine.
            const std::string folder = fs::path(r.dir.file(c.source)).parent_path().string();
            fs::create_directories(folder);
            const std::string cmd = "/usr/bin/python3 " QUMBREL_SOURCE_DIR
                                    "/tests/excel/make_templates.py " +
                                    sh_quote(folder);
            if (std::system(cmd.c_str()) != 0) GTEST_SKIP() << "python3-openpyxl is needed";
        } else if (c.kind == "fifo") {
            ASSERT_EQ(::mkfifo(r.dir.file(c.source).c_str(), 0600), 0);
        } else if (c.kind == "folder") {
            fs::create_directories(r.dir.file(c.source));
            write_file(r.dir.file(c.source) + "/x", "inside");
        } else if (c.kind == "KL" || c.kind == "VU" || c.kind == "HN" || c.kind == "VQ" ||
                   c.kind == "TLOG") {
            const std::string family = c.kind == "TLOG" ? "KL" : c.kind;
            const std::string kind = c.kind == "TLOG" ? "tlog" : "event";
            const std::string cmd = QUMBREL_BIN_DIR "/recsim --family " + family + " --kind " +
                                    kind + " --out " + sh_quote(r.dir.file(c.source)) +
                                    " >/dev/null";
            ASSERT_EQ(std::system(cmd.c_str()), 0);
        } else if (!c.kind.empty()) {
            r.simulate(c.source, c.kind);
        }
        for (const auto& [k, v] : c.options) r.file[k] = v;
        EXPECT_EQ(r.qumbrel(c.args), c.exit) << r.printed();
        for (const auto& f : c.present) EXPECT_TRUE(fs::exists(r.dir.file(f))) << f << r.printed();
        for (const auto& f : c.absent) EXPECT_FALSE(fs::exists(r.dir.file(f))) << f;
        for (const auto& [f, text] : c.contains) {
            const std::string in = f.empty() ? r.printed() : read_file(r.dir.file(f));
            EXPECT_NE(in.find(r.expand(text)), std::string::npos) << f << ": " << in;
        }
        if (c.quiet) {
            EXPECT_EQ(r.printed(), "");
        }
    }
}

// Template reports end to end: a VT file into the user's workbook in delete mode, a
// legacy .xls template that this engine cannot open (the source stays, the copy is
// marked), and FDA mode, whose report cannot be printed here and is kept in the
// temporary folder.
TEST(Qumbrel, TemplateReportsDisposeOfTheSourceOnlyAfterAFilledWorkbook) {
    Folder r;
    fs::create_directories(r.dir.file("tpl"));
    if (std::system(("/usr/bin/python3 " QUMBREL_SOURCE_DIR "/tests/excel/make_templates.py " +
                     sh_quote(r.dir.file("tpl")))
                        .c_str()) != 0)
        GTEST_SKIP() << "python3-openpyxl is needed";
    r.simulate("in/a.oge", "event");
    r.file["targetformat"] = "2";
    r.file["excelsourcefile"] = "@/tpl/vt.xlsx";
    r.file["binfilemodus"] = "1";
    EXPECT_EQ(r.qumbrel("@/in/a.oge"), 0) << r.printed();
    EXPECT_FALSE(fs::exists(r.dir.file("in/a.oge")));
    ASSERT_TRUE(fs::exists(r.dir.file("out/a.xlsx"))) << r.printed();
    const std::string back = r.dir.file("back.txt");
    ASSERT_EQ(std::system(("/usr/bin/python3 " QUMBREL_SOURCE_DIR "/tests/excel/read_back.py " +
                           sh_quote(r.dir.file("out/a.xlsx")) + " > " + sh_quote(back))
                              .c_str()),
              0);
    EXPECT_NE(read_file(back).find("Data\tB1\ts\t'a.oge'"), std::string::npos) << read_file(back);
    EXPECT_NE(read_file(back).find("Data\tB4\tn\t25"), std::string::npos) << read_file(back);
    // Filled under a hidden name, then renamed: nothing else is left in the folder.
    EXPECT_EQ(files_below(r.dir.file("out")), Lines{"a.xlsx"});

    write_file(r.dir.file("tpl/old.xls"), std::string("\xD0\xCF\x11\xE0\xA1\xB1\x1A\xE1", 8));
    r.file["excelsourcefile"] = "@/tpl/old.xls";
    r.simulate("in/b.oge", "event");
    EXPECT_EQ(r.qumbrel("@/in/b.oge"), 1) << r.printed();
    EXPECT_TRUE(fs::exists(r.dir.file("in/b.oge"))) << r.printed();
    EXPECT_NE(read_file(r.dir.file("home/error.log")).find("fkt_VTconvertXLSTPL"),
              std::string::npos);

    r.file["excelsourcefile"] = "@/tpl/vt.xlsx";
    r.simulate("in/c.oge", "event");
    EXPECT_EQ(r.qumbrel("--fda @/in/c.oge"), 0) << r.printed();
    EXPECT_TRUE(fs::exists(r.dir.file("tmp/c.xlsx"))) << r.printed();
    EXPECT_NE(r.printed().find("Not printed; the report is kept: " + r.dir.file("tmp/c.xlsx")),
              std::string::npos)
        << r.printed();
    EXPECT_EQ(r.printed().find(r.dir.file("out/c")), std::string::npos);
}

TEST(Qumbrel, IndexModeRegistersAndAServiceRunSkipsARegisteredFile) {
    Folder r;
    r.simulate("in/a.oge", "event");
    r.file["binfilemodus"] = "2";
    const std::string report = r.dir.file("out/a.csv"), db = r.dir.file("home/sourcefiledb.dat");
    ASSERT_EQ(r.qumbrel("@/in/a.oge"), 0) << r.printed();
    EXPECT_TRUE(fs::exists(r.dir.file("in/a.oge")));  // the source stays in index mode
    EXPECT_EQ(read_file(db), "a.oge    a.oge\r\n");
    ASSERT_TRUE(fs::remove(report));
    // Not interactive (started by the service): a registered file is left alone.
    EXPECT_EQ(r.qumbrel("/STARTSFROMSERVICE @/in/a.oge"), 0) << r.printed();
    EXPECT_FALSE(fs::exists(report));
    EXPECT_EQ(read_file(db), "a.oge    a.oge\r\n");
    // A one-shot run from the command line is interactive but shows no alert: the file
    // is converted again and registered once more.
    EXPECT_EQ(r.qumbrel("@/in/a.oge"), 0) << r.printed();
    EXPECT_TRUE(fs::exists(report));
    EXPECT_EQ(read_file(db), "a.oge    a.oge\r\na.oge    a.oge\r\n");
}

// The automatic mode on a schedule of kind 6 takes files as they come, into the same
// subfolders below the targets, until SIGTERM ends it after the file in hand.
TEST(Qumbrel, AutomaticModeConvertsIntoTheSameSubfoldersUntilSigterm) {
    Folder r;
    r.start = "sheduler=6\nfiletyp=2\nautostart=1\n";
    r.file["targetpathsourcefile"] = "@/done";
    for (const char* f : {"in/a.oge", "in/line1/deep/c.oge", "in/line2/d.oge"})
        r.simulate(f, "event");
    r.simulate("in/line1/b.ogd", "display");
    const std::string in = r.dir.file("in"), out = r.dir.file("out"), done = r.dir.file("done");
    r.launch();
    // Each source is moved after its report is made.
    ASSERT_TRUE(until([&] { return fs::exists(done) && files_below(done).size() == 4; }, 60s))
        << r.printed();

    // A batch that arrives later is taken by a later cycle; files of some size, so that
    // the batch takes seconds and the stop falls inside it.
    constexpr int kFiles = 12;
    r.simulate("stage/f0.oge", "event", 50000);
    for (int i = 1; i < kFiles; ++i)
        fs::copy_file(r.dir.file("stage/f0.oge"),
                      r.dir.file("stage/f" + std::to_string(i) + ".oge"));
    fs::rename(r.dir.file("stage"), in + "/batch");
    ASSERT_TRUE(until([&] { return fs::exists(out + "/batch/f0.csv"); }, 60s)) << r.printed();
    ASSERT_EQ(kill(r.pid, SIGTERM), 0);
    EXPECT_EQ(r.wait_exit(), 0) << r.printed();

    // Every batch file stands whole on one side: report and moved source, or waiting.
    int converted = 0;
    for (int i = 0; i < kFiles; ++i) {
        const std::string name = "/batch/f" + std::to_string(i);
        const bool moved = fs::exists(done + name + ".oge");
        EXPECT_EQ(fs::exists(out + name + ".csv"), moved) << name;
        EXPECT_NE(fs::exists(in + name + ".oge"), moved) << name;
        converted += moved ? 1 : 0;
    }
    EXPECT_LT(converted, kFiles);
    for (const auto& f : files_below(out)) EXPECT_EQ(fs::path(f).extension(), ".csv") << f;
    EXPECT_EQ(files_below(out, "batch/"),
              (Lines{"a.csv", "line1/b.csv", "line1/deep/c.csv", "line2/d.csv"}));
    EXPECT_EQ(files_below(done, "batch/"),
              (Lines{"a.oge", "line1/b.ogd", "line1/deep/c.oge", "line2/d.oge"}));
    EXPECT_TRUE(files_below(in, "batch/").empty());
    const std::string report = read_file(out + "/line1/deep/c.csv");
    EXPECT_NE(report.find("c.oge"), std::string::npos);
    EXPECT_EQ(report.find(".Error"), std::string::npos);
}

// Runs of several processes on one program folder: every source is converted exactly
// once, by whichever run locks it first; the others skip it.
TEST(Qumbrel, ConcurrentRunsConvertEachSourceOnce) {
    constexpr int kFiles = 300;
    for (const std::string mode : {"0", "2"}) {
        SCOPED_TRACE("binfilemodus " + mode);
        Folder r;
        r.start = "filetyp=2\nautostart=0\n";
        r.file["binfilemodus"] = mode;
        r.file["targetpathsourcefile"] = "@/done";
        r.simulate("in/s0.oge", "event", 1000);
        for (int i = 1; i < kFiles; ++i)
            fs::copy_file(r.dir.file("in/s0.oge"), r.dir.file("in/s" + std::to_string(i) + ".oge"));
        // Two scans and, in move mode, four one-shots of files the scans also list (a
        // one-shot converts a registered file again, as it should, so not in index mode).
        std::string script = "(";
        for (int i = 0; i < 2; ++i) script += "(" + r.command("--once") + ") & ";
        if (mode == "0")
            for (int i : {5, 117, 233, 299})
                script += "(" + r.command("@/in/s" + std::to_string(i) + ".oge") + ") & ";
        script += "wait)";
        // Each command sends its output to run.out; the last one's is what remains.
        ASSERT_EQ(std::system(script.c_str()) == -1, false);
        const Lines reports = files_below(r.dir.file("out"));
        EXPECT_EQ(reports.size(), static_cast<std::size_t>(kFiles))
            << ::testing::PrintToString(reports);
        const std::string reference = read_file(r.dir.file("out/s0.csv"));
        for (const auto& f : reports) {
            const std::string text = read_file(r.dir.file("out/" + f));
            EXPECT_EQ(std::count(text.begin(), text.end(), '\n'),
                      std::count(reference.begin(), reference.end(), '\n'))
                << f;
        }
        if (mode == "0") {
            // A second conversion would have moved a second copy as "s<n> (2).oge".
            EXPECT_EQ(files_below(r.dir.file("done")).size(), static_cast<std::size_t>(kFiles));
            EXPECT_TRUE(files_below(r.dir.file("in")).empty());
        } else {
            const std::string db = read_file(r.dir.file("home/sourcefiledb.dat"));
            for (int i = 0; i < kFiles; ++i) {
                const std::string line = "s" + std::to_string(i) + ".oge    ";
                std::size_t count = 0;
                for (std::size_t at = db.find(line); at != std::string::npos;
                     at = db.find(line, at + 1))
                    if (at == 0 || db[at - 1] == '\n') ++count;
                EXPECT_EQ(count, 1u) << line;
            }
        }
    }
}

// kill -9 anywhere in a large report: never a partial file under a report's name, and the
// source whole in exactly one place.
TEST(Qumbrel, KilledRunsLeaveNoPartialReport) {
    for (const std::string format : {"0", "1"}) {
        SCOPED_TRACE("targetformat " + format);
        Folder base;
        base.file["targetformat"] = format;
        base.simulate("in/a.oge", "event", 60000);
        const std::string bytes = read_file(base.dir.file("in/a.oge"));
        const std::string ext = format == "0" ? ".csv" : ".xls";
        ASSERT_EQ(base.qumbrel("@/in/a.oge"), 0);
        const std::string reference = read_file(base.dir.file("out/a" + ext));
        for (int run = 0; run < 25; ++run) {
            SCOPED_TRACE(run);
            Folder r;
            r.file["targetformat"] = format;
            r.file["targetpathsourcefile"] = "@/done";
            write_file(r.dir.file("in/a.oge"), bytes);
            r.launch("@/in/a.oge");
            // From well before the report starts to past its end.
            std::this_thread::sleep_for(std::chrono::milliseconds(5 + run * 17 % 400));
            kill(r.pid, SIGKILL);
            r.wait_exit();
            const std::string report = r.dir.file("out/a" + ext);
            const std::string tmp = r.dir.file("out/a.tmp");
            if (fs::exists(report)) {
                EXPECT_EQ(fs::file_size(report), reference.size());
            }
            if (fs::exists(tmp)) {
                EXPECT_EQ(fs::file_size(tmp), reference.size());
            }
            int places = 0;
            for (const char* f : {"in/a.oge", "done/a.oge"})
                if (fs::exists(r.dir.file(f)) && read_file(r.dir.file(f)) == bytes) ++places;
            EXPECT_EQ(places, 1);
        }
    }
}
