#pragma once
// The CSV and XLS report of a KL file (event or display file), in the shape of the VT
// report with the value treatment of the VU report, and two further blocks: the
// control-mode events of the loops ("Ctrl.Messages") and the PV and time events
// ("PV.Messages"). A TLOG file gets a report that says it is not converted, and counts as
// failed.
//
//   int errors = fkt_KLconvertCSVXLS(ctx, "/in/a.kle", "/out/a", kFalse);
#include <string>

#include "frame/context.h"
#include "frame/flag.h"

namespace qumbrel {

int fkt_KLconvertCSVXLS(Program& ctx, const std::string& source, const std::string& reportBase,
                        Flag interactive);

}  // namespace qumbrel
