#pragma once
// The CSV and XLS report of an HN file, in the shape of the VT report: one kind of file,
// no batch block, the alarm list with short types, the marks as messages with who set them
// and what they are, channel rows with the channel's comment, and one number a channel a
// sample. A file whose header type is not a data file gets the header only.
//
//   int errors = fkt_HNconvertCSVXLS(ctx, "/in/a.hnd", "/out/a", kFalse);
#include <string>

#include "frame/context.h"
#include "frame/flag.h"

namespace qumbrel {

int fkt_HNconvertCSVXLS(Program& ctx, const std::string& source, const std::string& reportBase,
                        Flag interactive);

}  // namespace qumbrel
