#pragma once
// The Run key of the Windows design on Linux: an XDG autostart entry
// $XDG_CONFIG_HOME/autostart/<base name>.desktop (~/.config when unset) that starts the
// program without arguments at the user's logon, so that it follows option autostart.
#include <string>

#include "frame/context.h"

namespace qumbrel {

// True writes the entry (Exec: `program`, the running executable by default); false
// removes it. A failure goes to the error reporter as "fkt_reg_autostart()".
void fkt_reg_autostart(Program& ctx, bool enable, const std::string& program = {});

// Where the entry lies.
std::string autostart_entry_path(const Program& ctx);

}  // namespace qumbrel
