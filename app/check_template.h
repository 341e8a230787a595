#pragma once
// --check-template FILE: what a template author needs to know before the first report.
#include <string>

namespace qumbrel {

// Prints every keyword (defined name) of the workbook, where it lies (sheet and cell), the
// names that are skipped and why, and what a list keyword's position rule will make of a
// name; returns 0 when the template can be used, 1 when not (it cannot be read).
int check_template(const std::string& path);

}  // namespace qumbrel
