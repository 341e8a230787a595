// Regional profiles: the named regions, and how the process picks one.
#include "frame/regional.h"

#include <gtest/gtest.h>
#include <unistd.h>

#include <cstdlib>
#include <filesystem>
#include <string>

#include "frame/vbformat.h"

// glibc's newlocale() does not free its copy of LOCPATH (only set by the test below).
extern "C" const char* __lsan_default_suppressions() {
    return "leak:__argz_add_sep\n";
}

namespace qumbrel {
namespace {

TEST(RegionalProfiles, NamesAndListSeparatorRule) {
    for (const char* name : {"en-US", "de-DE", "en-GB", "fr-FR"}) {
        const auto p = clsRegionalSettings::named(name);
        ASSERT_TRUE(p.has_value()) << name;
        EXPECT_EQ(p->listSep, p->decimal == "," ? ";" : ",") << name;
    }
    EXPECT_EQ(clsRegionalSettings::named("DE-de")->name, "de-DE");
    EXPECT_FALSE(clsRegionalSettings::named("xx-YY").has_value());
}

// The locale variables are the test process's own: each test starts them afresh.
void clear_locale_env() {
    for (const char* v : {"QUMBREL_REGION", "LC_ALL", "LC_TIME", "LC_NUMERIC", "LANG", "LOCPATH"})
        ::unsetenv(v);
}

std::string picked() {
    return clsRegionalSettings::from_environment().profile().name;
}

TEST(RegionalEnvironment, ForcedRegionThenLocaleVariablesPickTheProfile) {
    clear_locale_env();
    ::setenv("LANG", "en_US.UTF-8", 1);
    ::setenv("QUMBREL_REGION", "de-DE", 1);
    EXPECT_EQ(picked(), "de-DE");
    ::setenv("QUMBREL_REGION", "no-SUCH", 1);  // unknown: the locale decides
    EXPECT_EQ(picked(), "en-US");
    ::unsetenv("QUMBREL_REGION");
    ::setenv("LANG", "de_DE.UTF-8", 1);
    EXPECT_EQ(picked(), "de-DE");
    ::setenv("LC_TIME", "en_GB.UTF-8@euro", 1);
    EXPECT_EQ(picked(), "en-GB");
    ::setenv("LC_ALL", "fr_FR", 1);
    EXPECT_EQ(picked(), "fr-FR");
    ::setenv("LC_ALL", "C.UTF-8", 1);  // LC_ALL overrides LANG even without a region
    ::unsetenv("LC_TIME");
    EXPECT_EQ(picked(), "en-US");
    ::unsetenv("LC_ALL");
    ::setenv("LANG", "zz_QQ.UTF-8", 1);  // no such locale on any system
    EXPECT_EQ(picked(), "en-US");
}

// A region without a built-in profile takes its values from the locale's data. The locale
// is compiled into a private folder, so the test does not depend on installed locales.
TEST(RegionalEnvironment, UnknownRegionReadsTheLocaleData) {
    const std::filesystem::path dir =
        std::filesystem::temp_directory_path() / ("qumbrel-loc-" + std::to_string(::getpid()));
    std::filesystem::create_directories(dir);
    const std::string cmd =
        "localedef -i nl_NL -f UTF-8 '" + (dir / "nl_NL.UTF-8").string() + "' >/dev/null 2>&1";
    if (std::system(cmd.c_str()) != 0) {
        std::filesystem::remove_all(dir);
        GTEST_SKIP() << "localedef or the nl_NL source is not available";
    }
    clear_locale_env();
    ::setenv("LOCPATH", dir.c_str(), 1);
    ::setenv("LANG", "nl_NL.UTF-8", 1);
    const RegionalProfile p = clsRegionalSettings::from_environment().profile();
    std::filesystem::remove_all(dir);
    EXPECT_EQ(p.name, "nl-NL");
    EXPECT_EQ(p.thousand, ".");
    EXPECT_EQ(p.listSep, ";");  // follows the decimal ","
    EXPECT_EQ(p.dateOrder, 1);
    EXPECT_EQ(p.currencySymbol, "\u20AC");
    // Short date "dd-MM-yy" and time "HH:mm:ss" from the locale.
    EXPECT_EQ(vb::FormatDate({2007, 3, 9, 18, 5, 3, 0}, "General Date", p), "09-03-07 18:05:03");
}

}  // namespace
}  // namespace qumbrel
