#include "frame/commandline.h"

#include <array>
#include <filesystem>

#include "frame/text.h"

namespace qumbrel {

namespace {

std::string_view trim_spaces(std::string_view s) {
    while (!s.empty() && s.front() == ' ') s.remove_prefix(1);
    while (!s.empty() && s.back() == ' ') s.remove_suffix(1);
    return s;
}

// The run flags of the command line, in the order they are applied.
struct RunFlagKeyword {
    std::string_view keyword;
    Flag RunFlags::*flag;
};
constexpr std::array<RunFlagKeyword, 5> kRunFlags = {{
    {"STARTSFROMSERVICE", &RunFlags::bStartsFromService},
    {"DEBUG", &RunFlags::bDebug},
    {"FDA", &RunFlags::bFda},
    {"CONFIGURATION", &RunFlags::bConfiguration},
    {"NOSPLASH", &RunFlags::bNoSplash},
}};
constexpr std::array<std::string_view, 3> kValueKeywords = {"SOURCE:", "TARGET:", "SUBFOLDER:"};

bool left_is(std::string_view upper, std::string_view keyword) {
    return upper.substr(0, keyword.size()) == keyword;
}

bool starts_with_run_flag(std::string_view upper) {
    for (const auto& k : kRunFlags)
        if (left_is(upper, k.keyword)) return true;
    return false;
}

bool starts_with_keyword(std::string_view arg) {
    const std::string upper = to_upper_ascii(arg.substr(0, 17));
    if (starts_with_run_flag(upper)) return true;
    for (auto k : kValueKeywords)
        if (left_is(upper, k)) return true;
    return false;
}

bool path_exists(const std::string& p) {
    std::error_code ec;
    return !p.empty() && std::filesystem::exists(p, ec);
}

}  // namespace

std::size_t fkt_getcommandtokens(std::string_view line, std::vector<std::string>& tokens,
                                 std::string_view separator) {
    tokens.clear();
    if (line.empty()) return 0;
    if (line.size() >= 2 && line.front() == '"' && line.back() == '"')
        line = line.substr(1, line.size() - 2);
    for (const auto& piece : split(line, separator)) {
        const std::string_view t = trim_spaces(piece);
        if (!t.empty()) tokens.emplace_back(t);
    }
    return tokens.size();
}

ParsedArguments parse_arguments(const std::vector<std::string>& args) {
    ParsedArguments out;
    struct Gnu {
        std::string_view flag;
        std::string_view token;
        bool takesValue;
    };
    static constexpr std::array<Gnu, 8> kGnu = {{{"--debug", "DEBUG", false},
                                                 {"--fda", "FDA", false},
                                                 {"--configuration", "CONFIGURATION", false},
                                                 {"--no-splash", "NOSPLASH", false},
                                                 {"--from-service", "STARTSFROMSERVICE", false},
                                                 {"--source", "SOURCE:", true},
                                                 {"--target", "TARGET:", true},
                                                 {"--subfolder", "SUBFOLDER:", true}}};
    for (std::size_t i = 0; i < args.size(); ++i) {
        const std::string& a = args[i];
        auto value_of = [&](std::string_view flag) -> std::optional<std::string> {
            if (a.size() > flag.size() && a.compare(0, flag.size(), flag) == 0 &&
                a[flag.size()] == '=')
                return a.substr(flag.size() + 1);
            if (a == flag) {
                if (i + 1 < args.size()) return args[++i];
                out.error = "option " + std::string(flag) + " needs a value";
            }
            return std::nullopt;
        };
        // A path that exists is a path, whatever keyword it begins with (/debug/a.oge).
        if (a.size() > 1 && a[0] == '/' && !path_exists(a) &&
            starts_with_keyword(std::string_view(a).substr(1))) {
            out.tokens.push_back(a.substr(1));
            continue;
        }
        if (a.rfind("--", 0) != 0 || a == "--") {
            if (a != "--") out.tokens.push_back(a);
            continue;
        }
        bool matched = false;
        for (const auto& g : kGnu) {
            if (g.takesValue) {
                if (a == g.flag || a.rfind(std::string(g.flag) + "=", 0) == 0) {
                    if (auto v = value_of(g.flag)) out.tokens.push_back(std::string(g.token) + *v);
                    matched = true;
                    break;
                }
            } else if (a == g.flag) {
                out.tokens.emplace_back(g.token);
                matched = true;
                break;
            }
        }
        if (matched) {
            if (!out.error.empty()) return out;
            continue;
        }
        if (a == "--headless") {
            out.extra.headless = true;
        } else if (a == "--quiet") {
            out.extra.quiet = true;
        } else if (a == "--help" || a == "-h") {
            out.extra.help = true;
        } else if (a == "--version") {
            out.extra.version = true;
        } else if (a == "--auto") {
            out.extra.automatic = true;
        } else if (a == "--once") {
            out.extra.once = true;
        } else if (a == "--home" || a.rfind("--home=", 0) == 0) {
            if (auto v = value_of("--home")) out.extra.home = *v;
        } else if (a == "--info" || a.rfind("--info=", 0) == 0) {
            if (auto v = value_of("--info")) out.extra.info = *v;
        } else if (a == "--check-template" || a.rfind("--check-template=", 0) == 0) {
            if (auto v = value_of("--check-template")) out.extra.checkTemplate = *v;
        } else {
            out.error = "unknown option " + a;
        }
        if (!out.error.empty()) return out;
    }
    return out;
}

bool is_run_flag_token(std::string_view token) {
    return starts_with_run_flag(to_upper_ascii(token.substr(0, 17)));
}

void apply_command_tokens(Program& ctx, const std::vector<std::string>& tokens) {
    RunFlags& r = ctx.run;
    for (const auto& token : tokens) {
        if (path_exists(token)) {
            r.strSourceFile = token;
            continue;
        }
        const std::string upper = to_upper_ascii(token);
        // A bare keyword also takes a path behind one character of any kind.
        auto rest_after = [&](std::size_t keywordLength) {
            if (token.size() > keywordLength) r.strSourceFile = token.substr(keywordLength + 1);
        };
        for (const auto& k : kRunFlags) {
            if (!left_is(upper, k.keyword)) continue;
            r.*k.flag = kTrue;
            rest_after(k.keyword.size());
        }
        if (left_is(upper, "SOURCE:")) r.strSourceFile = token.substr(7);
        if (left_is(upper, "TARGET:")) r.strTargetName = token.substr(7);
        if (left_is(upper, "SUBFOLDER:")) r.strSubfolder = token.substr(10);
    }
}

std::string usage_text(std::string_view program) {
    std::string p(program);
    return "Usage: " + p +
           " [options] [FILE]\n"
           "Converts recorder data files into reports. Without FILE on a desktop (DISPLAY,\n"
           "WAYLAND_DISPLAY or QT_QPA_PLATFORM set) it opens the main window, after its\n"
           "splash; a FILE that does not exist opens it too and says so. With FILE on a\n"
           "desktop a tray icon shows while the file is converted (its menu opens the\n"
           "window); --headless converts without Qt and without the icon.\n"
           "\n"
           "  FILE                  convert this file once and exit (one-shot run)\n"
           "  --source=FILE         the same; also /SOURCE:FILE\n"
           "  --target=NAME         report name of a one-shot run, no folder logic\n"
           "                        (also /TARGET:NAME)\n"
           "  --subfolder=DIR       folder below the target path (also /SUBFOLDER:DIR)\n"
           "  --debug               debug run: use " +
           p +
           "DEBUG.ini if present, write\n"
           "                        status.log, keep every source file (also /DEBUG)\n"
           "  --fda                 FDA mode: template report, printed, then deleted (/FDA)\n"
           "  --configuration       configuration mode (/CONFIGURATION)\n"
           "  --no-splash           no splash window (/NOSPLASH)\n"
           "  --from-service        started by the companion service: errors go to syslog,\n"
           "                        nothing is shown (/STARTSFROMSERVICE)\n"
           "  --headless            no windows, even when a display is available\n"
           "  --quiet               no status lines on standard output\n"
           "  --auto                automatic mode: scan the source folder on the schedule\n"
           "                        (with a tray icon on a desktop)\n"
           "                        until SIGTERM or SIGINT (as autostart=1; also the mode\n"
           "                        of --headless without FILE)\n"
           "  --once                one scan of the source folder and its conversions now,\n"
           "                        then exit (for cron)\n"
           "  --home DIR            program folder (option file, logs, register, languages);\n"
           "                        default: $QUMBREL_HOME, else the program's own folder if\n"
           "                        writable, else $XDG_CONFIG_HOME/qumbrel\n"
           "  --info FILE           print the information list of a recorder file\n"
           "  --check-template FILE list the keywords of a workbook template (.xlsx, .xlsm,\n"
           "                        .xltx, .xltm; .xls, .xlt through LibreOffice), where\n"
           "                        they lie, which names are skipped and why, and which\n"
           "                        engine serves which workbooks; exit 1 when it cannot\n"
           "                        be used\n"
           "  --version             print the version\n"
           "  --help                print this text\n"
           "\n"
           "Exit status: 0 success, 1 a conversion failed, 2 start-up error (missing source,\n"
           "bad arguments, missing target folder, mode not available).\n";
}

}  // namespace qumbrel
