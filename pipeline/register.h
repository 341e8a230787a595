#pragma once
// The register of converted files (sourcefiledb.dat): plain text, appended to, never
// rewritten. The search reads it in records of 30000 bytes and only the last record
// decides: a name that stands further back is not found and is converted again.
#include <string>

#include "frame/context.h"

namespace qumbrel {

inline constexpr std::size_t kRegisterRecordBytes = 30000;

// True when `text` stands in the last record of `file`. A missing file is created empty.
// Errors are reported and give False, so the file counts as not converted.
Flag fkt_CompareStringInFile(Program& ctx, const std::string& file, const std::string& text);
// Appends `line` as it is (no line end added).
Flag fkt_AppendStringToFile(Program& ctx, const std::string& file, const std::string& line);

}  // namespace qumbrel
