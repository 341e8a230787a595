#pragma once
// --info FILE: the file information list of the file's family, printed.
#include <string>

#include "frame/context.h"

namespace qumbrel {

// Prints the list to stdout; returns the exit code (2 when the file is missing or of no
// family, 1 when the file is damaged, 0 otherwise).
int print_file_info(Program& ctx, const std::string& path);

}  // namespace qumbrel
