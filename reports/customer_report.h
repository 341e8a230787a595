#pragma once
// The customer text report (targetformat 3): one line per selected channel per sample and
// no header, for VT, VU, VQ and HN files; a file of another family gives an empty report.
//
//   fkt_convertKaldersteyn(ctx, "/in/a.oge", "/out/a", kFalse);   // writes /out/a.tmp
//   "Flow;05.03.24 10:00:01;12.5"
#include <string>

#include "frame/context.h"
#include "frame/flag.h"

namespace qumbrel {

// Writes `reportBase`.tmp (complete or not at all) and prints it with printfile. 0, or 1
// when the report could not be written (the failure is reported).
int fkt_convertKaldersteyn(Program& ctx, const std::string& source, const std::string& reportBase,
                           Flag interactive);

}  // namespace qumbrel
