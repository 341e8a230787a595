#pragma once
// The CSV and XLS report of a VQ file (event or display file), in the shape of the VT
// report: the operation log's count and, with signatureinclusive, the three signatures in
// the header block; acknowledgement cells behind each alarm; the VQ batch block with three
// comments and three headers; the scale rows filled with the channels' scale values.
//
//   int errors = fkt_VQconvertCSVXLS(ctx, "/in/a.obe", "/out/a", kFalse);
#include <string>

#include "frame/context.h"
#include "frame/flag.h"

namespace qumbrel {

int fkt_VQconvertCSVXLS(Program& ctx, const std::string& source, const std::string& reportBase,
                        Flag interactive);

}  // namespace qumbrel
