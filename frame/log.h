#pragma once
// The four report channels: status list (and status.log in debug mode), error.log, the
// event log, and the alert window. Writers never fail their caller: a log that cannot
// be written loses that line, nothing more.
#include <string_view>

#include "frame/context.h"

namespace qumbrel {

// Adds a line to the status list when it is up; true when the line was listed.
bool fkt_lststatus(Program& ctx, std::string_view text);

// Event log line in a service run; nothing otherwise.
void fkt_logevent(Program& ctx, std::string_view text, Flag allFlag, int type);

// The one error path: error.log, then the event log (service run) or an alert.
// Reads ctx.err as the current error.
void fkt_errorreport(Program& ctx, std::string_view text, std::string_view extra);

// For a function's error trap: call inside a catch block. Turns the exception in flight
// into ctx.err (VbError keeps its number; others map to a fitting one) with the step
// number as line mark, reports it under `where`, and clears the error state.
void report_trapped(Program& ctx, std::string_view where, int step, std::string_view extra = {});

// A report that is no run-time error (number 0, empty source and description).
void report_plain(Program& ctx, std::string_view text, std::string_view extra = {});

// The error.log line as written (without line end); exposed for tests.
std::string error_log_line(const Program& ctx, std::string_view text);

}  // namespace qumbrel
