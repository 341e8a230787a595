// Regional profiles: the Windows defaults of the named regions, and how the process picks one.
#include "frame/regional.h"

#include <gtest/gtest.h>
#include <unistd.h>

#include <cstdlib>
#include <filesystem>
#include <map>
#include <optional>
#include <string>

#include "frame/vbformat.h"

// glibc's newlocale() does not free its copy of LOCPATH (only set by the test below).
extern "C" const char* __lsan_default_suppressions() {
    return "leak:__argz_add_sep\n";
}

namespace qumbrel {
namespace {

TEST(RegionalProfiles, WindowsDefaults) {
    const auto us = clsRegionalSettings::named("en-US");
    ASSERT_TRUE(us.has_value());
    const clsRegionalSettings u(*us);
    EXPECT_EQ(u.ShortDate(), "M/d/yyyy");
    EXPECT_EQ(us->timeFormat, "h:mm:ss tt");
    EXPECT_EQ(u.DecimalSymbol(), ".");
    EXPECT_EQ(u.ThousandSeparator(), ",");
    EXPECT_EQ(u.DateSeparator(), "/");
    EXPECT_EQ(u.TimeSeparator(), ":");
    EXPECT_EQ(u.ListSeparator(), ",");
    EXPECT_EQ(u.CurrencyCode(), "USD");
    EXPECT_EQ(us->am, "AM");
    EXPECT_EQ(us->dateOrder, 0);

    const auto de = clsRegionalSettings::named("de-DE");
    ASSERT_TRUE(de.has_value());
    const clsRegionalSettings g(*de);
    EXPECT_EQ(g.ShortDate(), "dd.MM.yyyy");
    EXPECT_EQ(de->timeFormat, "HH:mm:ss");
    EXPECT_EQ(g.DecimalSymbol(), ",");
    EXPECT_EQ(g.ThousandSeparator(), ".");
    EXPECT_EQ(g.DateSeparator(), ".");
    EXPECT_EQ(g.TimeSeparator(), ":");
    EXPECT_EQ(g.ListSeparator(), ";");
    EXPECT_EQ(g.CurrencyCode(), "EUR");
    EXPECT_EQ(de->am, "");
    EXPECT_EQ(de->pm, "");
    EXPECT_EQ(de->dateOrder, 1);
}

TEST(RegionalProfiles, NamesAndListSeparatorRule) {
    for (const char* name : {"en-US", "de-DE", "en-GB", "fr-FR"}) {
        const auto p = clsRegionalSettings::named(name);
        ASSERT_TRUE(p.has_value()) << name;
        EXPECT_EQ(p->name, name);
        EXPECT_EQ(p->listSep, p->decimal == "," ? ";" : ",") << name;
        EXPECT_FALSE(p->shortDate.empty());
        EXPECT_FALSE(p->longDate.empty());
    }
    EXPECT_EQ(clsRegionalSettings::named("DE-de")->name, "de-DE");
    EXPECT_EQ(clsRegionalSettings::named("de_DE")->name, "de-DE");
    EXPECT_FALSE(clsRegionalSettings::named("xx-YY").has_value());
    EXPECT_FALSE(clsRegionalSettings::named("").has_value());
    EXPECT_FALSE(clsRegionalSettings::named("de").has_value());
}

TEST(RegionalProfiles, EnGbAndFrFrFormatTheirWay) {
    const auto gb = *clsRegionalSettings::named("en-GB");
    const auto fr = *clsRegionalSettings::named("fr-FR");
    const DateTime d{2007, 3, 9, 18, 5, 3, 0};
    EXPECT_EQ(vb::FormatDate(d, "Short Date", gb), "09/03/2007");
    EXPECT_EQ(vb::FormatDate(d, "Long Time", gb), "18:05:03");
    EXPECT_EQ(vb::FormatDate(d, "Long Date", fr), "vendredi 9 mars 2007");
    EXPECT_EQ(vb::Format(1234.5, "#,##0.00", fr),
              "1\xC2\xA0"
              "234,50");
    EXPECT_EQ(*vb::CDate("3/9/2007", gb), (DateTime{2007, 9, 3}));
}

// Sets environment variables for one test and puts the old values back.
class EnvGuard {
  public:
    void set(const char* name, const char* value) {
        if (!saved_.contains(name)) {
            const char* old = std::getenv(name);
            saved_[name] = old ? std::optional<std::string>(old) : std::nullopt;
        }
        if (value)
            ::setenv(name, value, 1);
        else
            ::unsetenv(name);
    }
    ~EnvGuard() {
        for (const auto& [name, value] : saved_) {
            if (value)
                ::setenv(name.c_str(), value->c_str(), 1);
            else
                ::unsetenv(name.c_str());
        }
    }

  private:
    std::map<std::string, std::optional<std::string>> saved_;
};

void clear_locale_env(EnvGuard& env) {
    for (const char* v : {"QUMBREL_REGION", "LC_ALL", "LC_TIME", "LC_NUMERIC", "LANG"})
        env.set(v, nullptr);
}

TEST(RegionalEnvironment, ForcedRegionWins) {
    EnvGuard env;
    clear_locale_env(env);
    env.set("LANG", "en_US.UTF-8");
    env.set("QUMBREL_REGION", "de-DE");
    EXPECT_EQ(clsRegionalSettings::from_environment().profile().name, "de-DE");
    env.set("QUMBREL_REGION", "no-SUCH");  // unknown: the locale decides
    EXPECT_EQ(clsRegionalSettings::from_environment().profile().name, "en-US");
}

TEST(RegionalEnvironment, LocaleVariablesPickTheProfile) {
    EnvGuard env;
    clear_locale_env(env);
    EXPECT_EQ(clsRegionalSettings::from_environment().profile().name, "en-US");
    env.set("LANG", "de_DE.UTF-8");
    EXPECT_EQ(clsRegionalSettings::from_environment().profile().name, "de-DE");
    env.set("LC_TIME", "en_GB.UTF-8@euro");
    EXPECT_EQ(clsRegionalSettings::from_environment().profile().name, "en-GB");
    env.set("LC_ALL", "fr_FR");
    EXPECT_EQ(clsRegionalSettings::from_environment().profile().name, "fr-FR");
    env.set("LC_ALL", "C.UTF-8");  // LC_ALL overrides LANG even without a region
    env.set("LC_TIME", nullptr);
    EXPECT_EQ(clsRegionalSettings::from_environment().profile().name, "en-US");
    env.set("LC_ALL", nullptr);
    env.set("LANG", "POSIX");
    EXPECT_EQ(clsRegionalSettings::from_environment().profile().name, "en-US");
    env.set("LANG", "zz_QQ.UTF-8");  // no such locale on any system
    EXPECT_EQ(clsRegionalSettings::from_environment().profile().name, "en-US");
}

// A region without a built-in profile takes its values from the locale's data. The locale
// is compiled into a private folder, so the test does not depend on installed locales.
TEST(RegionalEnvironment, UnknownRegionReadsTheLocaleData) {
    const std::filesystem::path dir =
        std::filesystem::temp_directory_path() / ("qumbrel-loc-" + std::to_string(::getpid()));
    std::filesystem::create_directories(dir);
    const std::string cmd =
        "localedef -i nl_NL -f UTF-8 '" + (dir / "nl_NL.UTF-8").string() + "' >/dev/null 2>&1";
    const bool built = std::system(cmd.c_str()) == 0;
    if (!built) {
        std::filesystem::remove_all(dir);
        GTEST_SKIP() << "localedef or the nl_NL source is not available";
    }
    {
        EnvGuard env;
        clear_locale_env(env);
        env.set("LOCPATH", dir.c_str());
        env.set("LANG", "nl_NL.UTF-8");
        const RegionalProfile p = clsRegionalSettings::from_environment().profile();
        EXPECT_EQ(p.name, "nl-NL");
        EXPECT_EQ(p.shortDate, "dd-MM-yy");
        EXPECT_EQ(p.timeFormat, "HH:mm:ss");
        EXPECT_EQ(p.dateSep, "-");
        EXPECT_EQ(p.timeSep, ":");
        EXPECT_EQ(p.decimal, ",");
        EXPECT_EQ(p.thousand, ".");
        EXPECT_EQ(p.listSep, ";");
        EXPECT_EQ(p.dateOrder, 1);
        EXPECT_EQ(p.currencyCode, "EUR");
        EXPECT_EQ(p.currencySymbol, "\xE2\x82\xAC");
        EXPECT_EQ(vb::FormatDate({2007, 3, 9, 18, 5, 3, 0}, "General Date", p),
                  "09-03-07 18:05:03");
    }
    std::filesystem::remove_all(dir);
}

}  // namespace
}  // namespace qumbrel
