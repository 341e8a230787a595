#pragma once
// The CSV and XLS report of a VU file (event or display file), in the shape of the VT
// report: the header block ends with "File", channels are read before the blocks, the
// alarm list has state and short type, the batch block the eight batch texts, the scale
// rows the channel's scale limits, and a channel on a logarithmic scale shows
// fkt_logvalue of its values. Every value is a text cell.
//
//   int errors = fkt_VUconvertCSVXLS(ctx, "/in/a.ose", "/out/a", kFalse);
#include <string>

#include "frame/context.h"
#include "frame/flag.h"

namespace qumbrel {

int fkt_VUconvertCSVXLS(Program& ctx, const std::string& source, const std::string& reportBase,
                        Flag interactive);

}  // namespace qumbrel
