#include "excel/session.h"

#include "excel/automation.h"
#include "frame/errors.h"
#include "frame/language.h"
#include "frame/log.h"
#include "frame/vbformat.h"
#include "reports/printer.h"

namespace qumbrel {

namespace {

void status(Program& ctx, const std::string& text) {
    if (ctx.host.status_list_up()) fkt_lststatus(ctx, text);
}

// One printer's pass over the workbook or the listed sheets.
void print_on(Program& ctx, const std::string& printer, const std::string& shown,
              cSetDfltPrinter& defaults) {
    ExcelSession& s = ctx.state<ExcelSession>();
    const std::string word = fkt_translate(ctx, "printfile");
    status(ctx, word + shown + " [" + printer + "]...");
    try {
        defaults.SetPrinterAsDefault(printer);
    } catch (...) {
        status(ctx, word + printer + " has failed to be set as the default printer.");
    }
    const auto printed = [&ctx](const auto& call) {
        try {
            call();
        } catch (const VbError& e) {
            // Without a program that prints, PrintOut fails with 1004: the status list and
            // error.log say why.
            status(ctx, std::to_string(e.number()) + " " + e.description());
            ctx.state<ExcelSession>().printFailed = true;
            report_trapped(ctx, "PrintOut", 0);
        }
    };
    // An unknown printer prints nothing: the job is never sent to another one.
    bool known = false;
    try {
        if (const auto& system = ctx.state<PrintState>().system) {
            for (const std::string& p : system->printers()) known = known || p == printer;
        }
    } catch (...) {
    }
    if (!known) {
        ctx.state<ExcelSession>().printFailed = true;
        status(ctx, word + shown + ": there is no printer \"" + printer + "\"; nothing printed");
        report_plain(ctx, "PrintOut: there is no printer \"" + printer + "\"", shown);
        return;
    }
    const std::string& pages = ctx.opt.printpage;
    if (pages.empty()) {
        printed([&s, &printer] { s.app->print_workbook(printer); });
    } else {
        // The list starts with "|": its first element is empty and not used.
        std::size_t at = pages.find('|');
        while (at != std::string::npos) {
            const std::size_t end = pages.find('|', at + 1);
            const std::string page =
                pages.substr(at + 1, end == std::string::npos ? std::string::npos : end - at - 1);
            at = end;
            try {
                if (vb::IsNumeric(page, ctx.regional.profile()))
                    s.app->activate_sheet(static_cast<std::int32_t>(vb::Val(page)));
                else if (!page.empty())
                    s.app->activate_sheet(page);
            } catch (...) {
                // No such sheet (1004): the sheet active now is printed.
            }
            printed([&s, &printer] { s.app->print_active_sheet(printer); });
        }
    }
    status(ctx, word + shown + " [" + printer + "] finished");
}

}  // namespace

bool excel_session_open(Program& ctx, const std::string& workbook, const std::string& runName,
                        std::string& runningState, int attempts) {
    ExcelSession& s = ctx.state<ExcelSession>();
    for (int attempt = 0; attempt < attempts && !s.app; ++attempt) {
        try {
            s.app = make_native_automation(ctx.state<PrintState>().system);
        } catch (...) {
        }
    }
    if (!s.app) {
        excel_session_fail(ctx, runningState);
        return false;
    }
    s.alive = true;
    try {
        s.app->open(workbook);
    } catch (const VbError&) {
        excel_session_fail(ctx, runningState);
        return false;
    }
    runningState = runName + " - Datei öffnen abgeschlossen/Starte Konvertierung...";
    status(ctx, fkt_translate(ctx, "startconverting"));
    return true;
}

void excel_session_print(Program& ctx, const std::string& reportPath) {
    ExcelSession& s = ctx.state<ExcelSession>();
    if (!is_set(ctx.opt.printfile) || !s.alive || !s.app) return;
    const std::string shown = is_set(ctx.run.bFda) ? "..." : reportPath;
    cSetDfltPrinter defaults(ctx);  // the remembered default comes back at its end
    print_on(ctx, ctx.opt.printer, shown, defaults);
    if (is_set(ctx.opt.printfile2)) print_on(ctx, ctx.opt.printer2, shown, defaults);
}

void excel_session_close(Program& ctx) {
    ExcelSession& s = ctx.state<ExcelSession>();
    if (!s.alive || !s.app) {
        s.app.reset();
        return;
    }
    try {
        // In FDA mode a report is printed only; one that could not be printed is kept.
        if (!is_set(ctx.run.bFda) || s.printFailed) s.app->save();
        for (const std::string& w : s.app->take_warnings()) {
            status(ctx, w);
            fkt_logevent(ctx, w, kFalse, 2);
        }
        s.app->close();
        s.app->quit();
    } catch (const VbError& e) {
        if (e.number() == errnum::kRemoteServerGone || e.number() == errnum::kObjectRequired)
            s.alive = false;
        report_trapped(ctx, "excel_session_close", 0);
    }
    s.app.reset();
    s.alive = false;
}

void excel_session_fail(Program& ctx, const std::string& runningState) {
    ExcelSession& s = ctx.state<ExcelSession>();
    if (s.alive && s.app) {
        try {
            if (!is_set(ctx.run.bFda)) s.app->save();
        } catch (...) {
        }
        try {
            s.app->close();
            s.app->quit();
        } catch (...) {
        }
    }
    s.app.reset();
    s.alive = false;
    s.failed = true;
    report_plain(ctx, runningState);
}

}  // namespace qumbrel
