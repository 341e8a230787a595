#include "frame/ini.h"

#include <fstream>

#include "frame/profile.h"
#include "frame/text.h"

namespace qumbrel {

std::string clsINI::resolve(std::string_view file) const {
    if (file.empty()) return file_;
    std::string path(file);
    // An optional file that is absent is created empty (an append open and close).
    if (profile::probe(path) == profile::FileState::Missing) {
        std::ofstream touch(path, std::ios::app | std::ios::binary);
    }
    return path;
}

bool clsINI::CreateKeyValue(std::string_view section, std::string_view key, std::string_view value,
                            std::string_view file) {
    return profile::write(resolve(file), section, key, value);
}

bool clsINI::CreateKey(std::string_view section, std::string_view key, std::string_view file) {
    return profile::write(resolve(file), section, key, std::string_view{});
}

std::string clsINI::GetKeyValue(std::string_view section, std::string_view key,
                                std::string_view file, const std::string* def) {
    std::string v = profile::read(resolve(file), section, key, "", kValueBuffer);
    if (v.empty()) return def ? *def : default_;
    return v;
}

std::vector<std::string> clsINI::GetKeysInSection(std::string_view section, std::string_view file) {
    return profile::keys(resolve(file), section, kListBuffer);
}

std::vector<std::string> clsINI::GetSections(std::string_view file) {
    return profile::sections(resolve(file), kListBuffer);
}

bool clsINI::DeleteKeyValue(std::string_view section, std::string_view key, std::string_view file) {
    return profile::write(resolve(file), section, key, std::string_view{});
}

bool clsINI::DeleteKey(std::string_view section, std::string_view key, std::string_view file) {
    return profile::write(resolve(file), section, key, std::nullopt);
}

bool clsINI::DeleteSection(std::string_view section, std::string_view file) {
    return profile::remove_section(resolve(file), section);
}

bool clsINI::RenameKey(std::string_view section, std::string_view oldKey, std::string_view newKey,
                       std::string_view file) {
    const std::string path = resolve(file);
    if (iequals(oldKey, newKey)) return profile::find(path, section, oldKey).has_value();
    const auto value = profile::find(path, section, oldKey);
    if (!value) return false;
    if (!profile::write(path, section, newKey, *value)) return false;
    return profile::write(path, section, oldKey, std::nullopt);
}

bool clsINI::RenameSection(std::string_view oldSection, std::string_view newSection,
                           std::string_view file) {
    const std::string path = resolve(file);
    if (iequals(oldSection, newSection)) return true;
    const auto names = profile::keys(path, oldSection, static_cast<std::size_t>(-1));
    if (names.empty() && !profile::ensure_section(path, newSection)) return false;
    for (const auto& k : names) {
        const auto value = profile::find(path, oldSection, k);
        if (!profile::write(path, newSection, k, value.value_or(""))) return false;
    }
    return profile::remove_section(path, oldSection);
}

}  // namespace qumbrel
