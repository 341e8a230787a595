#pragma once
// recsim's command line: flags and an optional JSON scenario to a recorder file.
#include <iosfwd>
#include <string>
#include <vector>

namespace qumbrel::recsim {

// The text of --help.
const char* help_text();

// Runs recsim with `args` (without the program name); returns the exit status
// (0 written, 1 bad input or write failure, 2 bad command line).
int run(const std::vector<std::string>& args, std::ostream& out, std::ostream& err);

}  // namespace qumbrel::recsim
