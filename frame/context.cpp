#include "frame/context.h"

namespace qumbrel {

std::string ProgramInfo::version_text() const {
    return "Version: " + std::to_string(major) + "." + std::to_string(minor) + "." +
           std::to_string(revision);
}

std::string ProgramInfo::program_name() const {
    return baseName + " " + std::to_string(major) + "." + std::to_string(minor) + "." +
           std::to_string(revision);
}

Program::Program(ProgramInfo i, Host& h, Clock& c, EventLogBackend& e, clsRegionalSettings r)
    : info(std::move(i)), host(h), clock(c), eventLog(e), regional(std::move(r)) {}

std::string Program::program_file(std::string_view name) const {
    return (info.folder / std::filesystem::path(name)).string();
}

}  // namespace qumbrel
