#include "app/main_procedure.h"

#ifdef QUMBREL_HAVE_UI
#include "ui/run_gui.h"
#endif

#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <functional>

#include "app/check_template.h"
#include "app/file_info.h"
#include "app/instance_lock.h"
#include "app/program_folder.h"
#include "automation/automatic_run.h"
#include "frame/apifile.h"
#include "frame/commandline.h"
#include "frame/headless_host.h"
#include "frame/language.h"
#include "frame/log.h"
#include "frame/options_io.h"
#include "frame/registry.h"
#include "frame/text.h"
#include "pipeline/convertmain.h"
#include "platform/cups/cups_printers.h"
#include "platform/syslog/syslog_eventlog.h"

namespace qumbrel {

namespace {

// Main's error trap: error 53 gets its own message, any other is reported as "Main()";
// either way start-up resumes behind the failing step.
void guarded(Program& ctx, int step, const std::function<void()>& body) {
    try {
        body();
    } catch (const VbError& e) {
        if (e.number() == errnum::kFileNotFound) {
            const char* text = "Invalid startup file! View the options.";
            ctx.host.message_box(text, MessageIcon::Critical);
            ctx.err = {e.number(), ctx.info.baseName, e.description(), step};
            fkt_errorreport(ctx, text, "");
            ctx.err.clear();
        } else {
            report_trapped(ctx, "Main()", step);
        }
    } catch (...) {
        report_trapped(ctx, "Main()", step);
    }
}

void register_event_source(Program& ctx) {
    RegistryStore reg(ctx.program_file("registry.ini"));
    const std::string key =
        "HKEY_LOCAL_MACHINE\\SYSTEM\\CurrentControlSet\\Services\\Eventlog\\Application\\" +
        ctx.info.baseName;
    // Fails silently without the right to write: the program goes on.
    reg.CreateRegKey(key);
    reg.SetRegDWORD(key, "TypesSupported", 7);
    reg.SetRegString(key, "EventMessageFile", ctx.program_file("msg_dll.dll"));
}

// A token that is no run-flag keyword names a file, even one that does not exist.
bool names_a_file(const std::vector<std::string>& tokens) {
    for (const auto& t : tokens)
        if (!is_run_flag_token(t)) return true;
    return false;
}

}  // namespace

StartMode Main(Program& ctx, const std::vector<std::string>& tokens) {
    StartMode mode = StartMode::Interactive;
    guarded(ctx, 2, [&] { read_regional_values(ctx); });
    guarded(ctx, 3, [&] {
        ctx.run.vCommandTokens = tokens;
        ctx.run.bHasCommandTokens = to_flag(!tokens.empty());
    });
    guarded(ctx, 4, [&] {
        ctx.run.strSourceFile.clear();
        ctx.run.strSubfolder.clear();
        ctx.run.strTargetName.clear();
    });
    guarded(ctx, 5, [&] { apply_command_tokens(ctx, tokens); });
    guarded(ctx, 6, [&] {
        const std::string debugFile = ctx.program_file(ctx.info.baseName + "DEBUG.ini");
        ctx.run.strOptionFile = is_set(ctx.run.bDebug) && PathFileExists(debugFile)
                                    ? debugFile
                                    : ctx.program_file(ctx.info.baseName + ".ini");
    });
    guarded(ctx, 7, [&] { fkt_logevent(ctx, "Qumbrel start mainprocedure...", kFalse, 2); });
    guarded(ctx, 8, [&] { fkt_loadoptionfile(ctx); });
    guarded(ctx, 9, [&] { ctx.run.strRegisterFile = ctx.program_file("sourcefiledb.dat"); });
    // Step 10, the mutex, is held by the caller for the life of the process.
    if (!ctx.run.strSourceFile.empty()) {
        guarded(ctx, 11, [&] {
            register_event_source(ctx);
            fkt_logevent(ctx,
                         std::string("Qumbrel started via commands (Service:") +
                             (is_set(ctx.run.bStartsFromService) ? "True" : "False") + ")",
                         kFalse, 2);
            if (PathFileExists(ctx.run.strSourceFile)) {
                mode = StartMode::OneShot;
            } else {
                report_plain(ctx, fkt_translate(ctx, "filenotexist") + " " + ctx.run.strSourceFile);
                mode = StartMode::Ended;
            }
        });
        return mode;
    }
    if (ctx.opt.autostart == 1) {
        guarded(ctx, 12, [&] {
            if (PathFileExists(ctx.opt.sourcepath)) {
                mode = StartMode::Automatic;
            } else {
                const std::string text = fkt_translate(ctx, "Pathnotexist");
                ctx.host.message_box(text, MessageIcon::Critical);
                report_plain(ctx, text, ctx.opt.sourcepath);
                mode = StartMode::Interactive;
            }
        });
        return mode;
    }
    return StartMode::Interactive;
}

int run_one_shot(Program& ctx) {
    translate_headless_form(ctx, "frm_systrayOnce");
    const Flag interactive = to_flag(!is_set(ctx.run.bStartsFromService));
    const RunFlags& r = ctx.run;
    if (!r.strTargetName.empty())
        return fkt_convertmain(ctx, r.strSourceFile, r.strSubfolder, r.strTargetName, interactive)
                       .failed()
                   ? 1
                   : 0;
    if (ctx.opt.targetpathRaw.find('$') != std::string::npos || PathFileExists(ctx.opt.targetpath))
        return fkt_convertmain(ctx, r.strSourceFile, r.strSubfolder, "", interactive).failed() ? 1
                                                                                               : 0;
    if (ctx.opt.targetpath.empty())
        report_plain(ctx, "targetpath in section [file] is empty", ctx.run.strOptionFile);
    else
        report_plain(ctx, fkt_translate(ctx, "Pathnotexist") + " " + ctx.opt.targetpath);
    return 2;
}

int qumbrel_main(int argc, char** argv) {
    std::vector<std::string> args(argv + (argc > 0 ? 1 : 0), argv + (argc > 0 ? argc : 0));
    const ParsedArguments parsed = parse_arguments(args);
    const std::string program = "qumbrel";
    if (!parsed.error.empty()) {
        std::fprintf(stderr, "qumbrel: %s\nTry 'qumbrel --help'.\n", parsed.error.c_str());
        return 2;
    }
    if (parsed.extra.help) {
        std::fputs(usage_text(program).c_str(), stdout);
        return 0;
    }

    const ProgramLocation loc = locate_program(parsed.extra.home, argc > 0 ? argv[0] : nullptr);
    {
        std::error_code ec;
        if (std::filesystem::exists(loc.folder, ec) &&
            !std::filesystem::is_directory(loc.folder, ec)) {
            std::fprintf(stderr,
                         "qumbrel: the program folder %s is a file, not a folder (see --home "
                         "and QUMBREL_HOME)\n",
                         loc.folder.c_str());
            return 2;
        }
    }
    ProgramInfo info;
    info.folder = loc.folder;
    info.baseName = loc.baseName;
    info.major = QUMBREL_VERSION_MAJOR;
    info.minor = QUMBREL_VERSION_MINOR;
    info.revision = QUMBREL_VERSION_PATCH;
    if (parsed.extra.version) {
        std::printf("%s\n", info.program_name().c_str());
        return 0;
    }

    // The status list is "up" in a headless run unless the service started us (known once
    // Main has read the tokens) or --quiet asks for silence, as in the tray runs.
    HeadlessHost host(!parsed.extra.quiet);
    SystemClock clock;
    SyslogEventLog eventLog;
    Program ctx(info, host, clock, eventLog, clsRegionalSettings::from_environment());
    ctx.run.quiet = parsed.extra.quiet;
    use_cups_printers(ctx);

    if (parsed.extra.checkTemplate) return check_template(*parsed.extra.checkTemplate);
    if (parsed.extra.info) {
        // The list shows numbers and times by the option file's separators.
        read_regional_values(ctx);
        ctx.run.strOptionFile = ctx.program_file(ctx.info.baseName + ".ini");
        fkt_loadoptionfile(ctx);
        return print_file_info(ctx, *parsed.extra.info);
    }

    InstanceLock mutex;  // step 10: held until the process ends
    const StartMode mode = Main(ctx, parsed.tokens);
    if (is_set(ctx.run.bStartsFromService)) host.set_status_list_up(false);
    switch (mode) {
        case StartMode::OneShot:
#ifdef QUMBREL_HAVE_UI
            if (!parsed.extra.headless && display_available())
                return run_one_shot_form(ctx, argc, argv, run_one_shot);
#endif
            return run_one_shot(ctx);
        case StartMode::Ended:
            return 2;
        case StartMode::Automatic:
#ifdef QUMBREL_HAVE_UI
            if (!parsed.extra.headless && !parsed.extra.once && display_available())
                return run_tray(ctx, argc, argv);
#endif
            return run_automatic(ctx, parsed.extra.once);
        case StartMode::Interactive:
            // --auto, --once and --headless without a file ask for the automatic mode;
            // with autostart=1 Main has already found the source folder missing.
            if ((parsed.extra.automatic || parsed.extra.once ||
                 (parsed.extra.headless && !names_a_file(parsed.tokens))) &&
                ctx.opt.autostart != 1) {
#ifdef QUMBREL_HAVE_UI
                if (parsed.extra.automatic && !parsed.extra.headless && !parsed.extra.once &&
                    display_available())
                    return run_tray(ctx, argc, argv);
#endif
                return run_automatic(ctx, parsed.extra.once);
            }
            // A file named on the command line that is not there: the window opens and
            // says so; headless, stderr says so.
            for (const auto& t : parsed.tokens) {
                if (is_run_flag_token(t)) continue;
                const std::string note =
                    translate_or(ctx, "filenotexist", "The file does not exist:") + " " + t;
#ifdef QUMBREL_HAVE_UI
                if (!parsed.extra.headless && display_available())
                    return run_main_window(ctx, argc, argv, note);
#endif
                std::fprintf(stderr, "qumbrel: %s\n", note.c_str());
                return 2;
            }
#ifdef QUMBREL_HAVE_UI
            if (!parsed.extra.headless && display_available())
                return run_main_window(ctx, argc, argv);
#endif
            std::fprintf(stderr,
                         "qumbrel: the main window is not available in this build or without a "
                         "display.\nConvert a file headless with 'qumbrel --headless FILE' "
                         "(see 'qumbrel --help').\n");
            return 2;
    }
    return 2;
}

}  // namespace qumbrel
