#pragma once
// The CSV and XLS report of a VT file (event or display file): head, header block, alarm,
// message and batch blocks, channel header rows, then one row per sample, every cell
// through fkt_convertsetvalue. targetformat 0 writes reportBase.tmp (the driver renames
// it), 1 writes reportBase.xls.
//
//   int errors = fkt_VTconvertCSVXLS(ctx, "/in/a.oge", "/out/a", kFalse);
//   // 0: report made; 1: damaged file (non-interactive) or a run-time failure
#include <string>

#include "frame/context.h"
#include "frame/flag.h"

namespace qumbrel {

int fkt_VTconvertCSVXLS(Program& ctx, const std::string& source, const std::string& reportBase,
                        Flag interactive);

}  // namespace qumbrel
