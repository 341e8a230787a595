#pragma once
// fkt_convertmain: one source file from the already-converted test to its disposal.
#include <string>

#include "frame/context.h"

namespace qumbrel {

// What became of one run; the Windows design returns nothing, the process exit code and
// the tests want to know.
struct ConvertOutcome {
    int errorCount = 0;         // the generator's result
    bool runtimeError = false;  // the trap caught an error
    bool pathMissing = false;   // target folder missing: nothing touched
    bool skipped = false;       // registered already, non-interactive run
    bool moveFailed = false;    // the source stays where it was
    bool notRegular = false;    // missing, not a regular file or unreadable: left alone
    bool failed() const {
        return errorCount > 0 || runtimeError || pathMissing || moveFailed || notRegular;
    }
};

ConvertOutcome fkt_convertmain(Program& ctx, const std::string& source,
                               const std::string& subfolder, const std::string& targetName,
                               Flag interactive);

}  // namespace qumbrel
