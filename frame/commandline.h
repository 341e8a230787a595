#pragma once
// The command line: cutting a raw line at "/" as the Windows program does, the POSIX
// argument form that feeds the same tokens, and the token table of Main.
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "frame/context.h"

namespace qumbrel {

// Cuts `line` at `separator`: an empty line gives no tokens; a line whose first and last
// characters are both double quotes loses them; pieces are trimmed, empty ones dropped.
// Returns the number of tokens.
std::size_t fkt_getcommandtokens(std::string_view line, std::vector<std::string>& tokens,
                                 std::string_view separator);

// Options of the Linux program beyond the Windows tokens.
struct ExtraOptions {
    bool headless = false;
    bool quiet = false;
    bool help = false;
    bool version = false;
    bool automatic = false;  // --auto: the automatic mode whatever autostart says
    bool once = false;       // --once: one scan-and-convert cycle, then exit
    std::optional<std::string> home;
    std::optional<std::string> info;
    std::optional<std::string> checkTemplate;  // --check-template FILE
};

struct ParsedArguments {
    std::vector<std::string> tokens;
    ExtraOptions extra;
    std::string error;  // not empty: the arguments were not understood
};

// One token per argument: "/KEYWORD..." with one of the eight keywords loses its "/",
// GNU forms map to the same tokens (--debug, --source=F, ...), anything else is a token
// as it stands (tested later as a bare path).
ParsedArguments parse_arguments(const std::vector<std::string>& args);

// Whether a token starts with one of the five run-flag keywords (STARTSFROMSERVICE, DEBUG,
// FDA, CONFIGURATION, NOSPLASH), in any case.
bool is_run_flag_token(std::string_view token);

// Step 5 of Main: the token table, filling ctx.run.
void apply_command_tokens(Program& ctx, const std::vector<std::string>& tokens);

// The text of --help.
std::string usage_text(std::string_view program);

}  // namespace qumbrel
