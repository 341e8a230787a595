#pragma once
// Report names and folders composed from elements of the source file.
#include <string>

#include "frame/context.h"

namespace qumbrel {

// Fills the file elements of `source` through its family's reader, then O and C.
void fkt_convertfilename(Program& ctx, const std::string& source);

// Expands "$" keys of `format` with the file elements ("$YYYY-$MM-$DD_$B"); with
// targetname 0 the result is element O whatever the format.
std::string fkt_FormatName(Program& ctx, const std::string& format, Flag pathMode);

// Replaces characters a file name cannot hold with "_", keeping the length. In path
// mode the platform separator stays and ":" stays at the second position.
std::string fkt_filterillegal(const std::string& text, Flag pathMode);

}  // namespace qumbrel
