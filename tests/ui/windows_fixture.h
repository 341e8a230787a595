#pragma once
// The fixture of the window tests: a program folder with its option file, a Qt host, a
// manual clock, and helpers to find controls and make recorder files.
#include <gtest/gtest.h>

#include <QAction>
#include <QWidget>
#include <cstdlib>
#include <filesystem>
#include <memory>

#include "frame/clock.h"
#include "frame/options_io.h"
#include "tests/support/test_support.h"
#include "ui/main_window.h"
#include "ui/qt_host.h"

namespace qumbrel {
namespace {

namespace fs = std::filesystem;

class Windows : public ::testing::Test {
  protected:
    Windows() {
        ::setenv("QUMBREL_RECLIB_PATH", QUMBREL_BIN_DIR, 1);
        // The autostart entry of the run page goes below this test's folder.
        ::setenv("XDG_CONFIG_HOME", dir.file("config").c_str(), 1);
        ProgramInfo info;
        info.folder = dir.path();
        ctx = std::make_unique<Program>(info, host, clock, events,
                                        clsRegionalSettings(*clsRegionalSettings::named("en-US")));
        read_regional_values(*ctx);
        ctx->run.strOptionFile = ctx->program_file("qumbrel.ini");
        ctx->run.bNoSplash = kTrue;  // the splash has a test of its own
        ctx->run.strRegisterFile = ctx->program_file("sourcefiledb.dat");
        fs::create_directories(dir.file("in"));
        fs::create_directories(dir.file("out"));
        options("english.lng");
    }
    void options(const std::string& language, const std::string& extra = "",
                 const std::string& start = "") {
        testing::write_file(ctx->run.strOptionFile,
                            "[start]\n" + start + "[file]\nsourcepath=" + dir.file("in") +
                                "\ntargetpath=" + dir.file("out") +
                                "\nbinfilemodus=2\nlanguage=" QUMBREL_BIN_DIR "/" + language +
                                "\n" + extra + "[userdefined]\nChannels=ALL\n");
        fkt_loadoptionfile(*ctx);
    }
    template <class T>
    T* find(QWidget* in, const char* name) {
        T* w = in->findChild<T*>(name);
        EXPECT_NE(w, nullptr) << name;
        return w;
    }
    void trigger(MainWindow& w, const char* action) {
        QAction* a = w.findChild<QAction*>(action);
        ASSERT_NE(a, nullptr) << action;
        a->trigger();
    }
    std::string make_vt(const std::string& name) {
        const std::string out = dir.file("in/" + name);
        EXPECT_EQ(std::system((QUMBREL_BIN_DIR "/recsim --family VT --kind event --channels 2 "
                                               "--samples 10 --out '" +
                               out + "' >/dev/null")
                                  .c_str()),
                  0);
        return out;
    }

    testing::TempDir dir;
    QtHost host;
    ManualClock clock;
    testing::RecordingEventLog events;
    std::unique_ptr<Program> ctx;
};

}  // namespace
}  // namespace qumbrel
