#include "reports/printer.h"

#include <algorithm>
#include <fstream>

#include "frame/errors.h"
#include "frame/language.h"
#include "frame/log.h"

namespace qumbrel {

namespace {

PageOrientation to_orientation(std::int16_t value) {
    if (value == 1) return PageOrientation::Portrait;
    if (value == 2) return PageOrientation::Landscape;
    throw VbError(380, "Invalid property value");
}

// The steps of PrintFile; the error log names the function and the step that failed.
void print_on(Program& ctx, const std::string& printer, const std::string& fileName,
              std::int16_t orientation, std::string_view where) {
    auto& ps = ctx.state<PrintState>();
    int step = 1;
    const std::string remembered = ps.current;
    try {
        step = 3;
        if (printer.empty() || !ps.system) {
            ps.current = remembered;
            return;
        }
        const auto names = ps.system->printers();
        if (std::find(names.begin(), names.end(), printer) == names.end()) return;
        ps.current = printer;
        step = 4;
        const PageOrientation o = to_orientation(orientation);
        step = 5;
        std::ifstream in(fileName, std::ios::binary);
        if (!in) throw VbError(errnum::kFileNotFound, "File not found: " + fileName);
        step = 6;
        // The job begins with the first line: an empty file prints nothing (a print
        // server refuses an empty document).
        std::unique_ptr<PrintJob> job;
        std::string line;
        while (std::getline(in, line)) {
            if (!line.empty() && line.back() == '\r') line.pop_back();
            if (!job) job = ps.system->start_job(printer, o, fileName);
            job->print_line(line);
            ctx.host.pump_events();
        }
        step = 7;
        if (job) job->end();
        step = 8;
        ps.current = remembered;
    } catch (...) {
        ps.current = remembered;
        report_trapped(ctx, where, step);
    }
}

}  // namespace

void PrintFile(Program& ctx, const std::string& FileName, std::int16_t Orientation) {
    print_on(ctx, ctx.opt.printer, FileName, Orientation, "PrintFile()");
}

void PrintFile2(Program& ctx, const std::string& FileName, std::int16_t Orientation) {
    print_on(ctx, ctx.opt.printer2, FileName, Orientation, "PrintFile2()");
}

void PrinterSystem::print_pdf(const std::string& printer, const std::string&, const std::string&) {
    throw VbError(kPrinterError, "the print service takes no PDF documents: " + printer);
}

void print_report(Program& ctx, const std::string& reportBase, const std::string& fileName,
                  bool isXls) {
    const std::int16_t orientation = ctx.opt.printerorientationland != 0 ? 2 : 1;
    const auto one = [&](Flag wanted, void (*print)(Program&, const std::string&, std::int16_t)) {
        if (!is_set(wanted)) return;
        const std::string head = fkt_translate(ctx, "printfile") + reportBase;
        if (isXls) {
            fkt_lststatus(ctx,
                          head + " not posible, only csv-format or Excel with template posible.");
            return;
        }
        fkt_lststatus(ctx, head + "...");
        print(ctx, fileName, orientation);
        fkt_lststatus(ctx, head + " finished");
    };
    one(ctx.opt.printfile, PrintFile);
    one(ctx.opt.printfile2, PrintFile2);
}

cSetDfltPrinter::cSetDfltPrinter(Program& ctx) : ctx_(ctx) {
    try {
        if (auto& sys = ctx_.state<PrintState>().system) saved_ = sys->default_printer();
    } catch (...) {
        report_trapped(ctx_, "Class_Initialize of Klasse cSetDfltPrinter", 1);
    }
}

cSetDfltPrinter::~cSetDfltPrinter() {
    if (!changed_) return;
    try {
        auto& sys = ctx_.state<PrintState>().system;
        if (!sys) return;
        // A default that came from the server is restored by dropping the user's choice,
        // so the server's later changes still reach this user.
        if (saved_.userChosen && !saved_.name.empty()) {
            sys->set_default(saved_.name);
        } else {
            sys->clear_chosen_default();
        }
    } catch (...) {
        report_trapped(ctx_, "Class_Terminate of Klasse cSetDfltPrinter", 1);
    }
}

void cSetDfltPrinter::SetPrinterAsDefault(const std::string& deviceName) {
    int step = 1;
    try {
        auto& sys = ctx_.state<PrintState>().system;
        if (!sys) return;
        if (sys->default_printer().name == deviceName) return;
        step = 3;
        sys->set_default(deviceName);
        changed_ = true;
    } catch (...) {
        report_trapped(ctx_, "SetPrinterAsDefault of Klasse cSetDfltPrinter", step);
    }
}

std::string cSetDfltPrinter::GetDefaultPrinter() {
    try {
        auto& sys = ctx_.state<PrintState>().system;
        return sys ? sys->default_printer().name : std::string();
    } catch (...) {
        report_trapped(ctx_, "GetDefaultPrinter of Klasse cSetDfltPrinter", 1);
        return {};
    }
}

}  // namespace qumbrel
