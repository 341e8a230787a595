#pragma once
// Where the program keeps its files, and what it is called.
#include <optional>
#include <string>

namespace qumbrel {

struct ProgramLocation {
    std::string folder;     // program folder
    std::string baseName;   // executable name without extension
    std::string exeFolder;  // folder of the running executable
};

// --home, else QUMBREL_HOME, else the executable's folder if writable, else
// $XDG_CONFIG_HOME/qumbrel (created). `argv0` is used when /proc/self/exe is unreadable.
// A folder other than the executable's gets the shipped language files it lacks.
ProgramLocation locate_program(const std::optional<std::string>& home, const char* argv0);

}  // namespace qumbrel
