#pragma once
// The print service on Linux: CUPS through libcups. Jobs go to the named destination
// without touching the default; the default is the user's lpoptions choice (written with
// cupsSetDests2), never the server's.
#include <memory>

#include "reports/printer.h"

namespace qumbrel {

// Talks to the server libcups finds (CUPS_SERVER, client.conf, else the local socket).
std::shared_ptr<PrinterSystem> make_cups_printer_system();

// Makes CUPS the print service of this run (PrintFile, PrintFile2, cSetDfltPrinter).
inline void use_cups_printers(Program& ctx) {
    ctx.state<PrintState>().system = make_cups_printer_system();
}

}  // namespace qumbrel
