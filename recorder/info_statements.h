#pragma once
// The statement walk of the file-information dumps: an error 49 (bad calling convention on
// a library call) resumes at the next statement, any other error is logged under the
// dump's name with the statement's number and ends the dump.
#include <functional>
#include <span>
#include <string_view>

#include "frame/context.h"

namespace qumbrel {

void run_info_statements(Program& ctx, std::string_view name,
                         std::span<const std::function<void()>> statements);

}  // namespace qumbrel
