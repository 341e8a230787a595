#pragma once
// Loading and saving the option file (ctx.run.strOptionFile) into ctx.opt.
#include "frame/context.h"

namespace qumbrel {

// Every key in table order, then: empty printer clears its print flag, Channels split
// into vChannelList, "0" written to savetoggle, FDA overrides; then the protection value
// from the registry store. An error ends the load with what was read so far standing.
void fkt_loadoptionfile(Program& ctx);
// Reads savetoggle from the file; when it is not 0 the options are loaded again (true).
bool fkt_reloadoptions(Program& ctx);
// Tells running forms and the companion service that options were saved.
bool fkt_setsavetoggle(Program& ctx);

// The save functions of the three option pages: each writes its keys from `values` (the
// page's controls) and then "1" to savetoggle and savetogglesvc. A flag writes "1" or "0".
bool fkt_saveoption_run(Program& ctx, const Options& values);
bool fkt_saveoption_settings(Program& ctx, const Options& values);
bool fkt_saveoption_prgsettings(Program& ctx, const Options& values);

// Step 2 of Main: the five regional values that are the separator options' defaults.
void read_regional_values(Program& ctx);

// The protection value: registry key, value name, and its reading into
// strProtectionPassword / bLoggedIn.
inline constexpr const char* kProtectionKey = "HKEY_LOCAL_MACHINE\\SOFTWARE\\Tarnwick Qumbrel";
inline constexpr const char* kProtectionValue = "protection";
void apply_protection_value(Options& opt, const std::string& value);
// The value as the program settings page writes it: the seconds (two digits, no meaning),
// each password character's code in upper-case hexadecimal (one digit below 16, so the
// reader's pairs slip: kept so), then "001" when protection is on, "000" when off.
std::string build_protection_value(int seconds, const std::string& password, bool on);

}  // namespace qumbrel
