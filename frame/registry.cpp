#include "frame/registry.h"

#include <array>

#include "frame/profile.h"

namespace qumbrel {

namespace {
constexpr std::array<std::string_view, 7> kRoots = {
    "HKEY_CLASSES_ROOT", "HKEY_CURRENT_USER",     "HKEY_LOCAL_MACHINE", "HKEY_USERS",
    "HKEY_PERFORMANCE_DATA", "HKEY_CURRENT_CONFIG", "HKEY_DYN_DATA"};
constexpr std::string_view kDwordPrefix = "dword:";
}  // namespace

std::string RegistryStore::check_root(std::string_view key) {
    for (auto root : kRoots) {
        if (key.substr(0, root.size()) == root &&
            (key.size() == root.size() || key[root.size()] == '\\'))
            return {};
    }
    return "Incorrect Format: " + std::string(key);
}

std::string RegistryStore::write_error() const {
    return "Error: the registry store cannot be written: " + path_;
}

std::string RegistryStore::CreateRegKey(std::string_view key) {
    if (auto e = check_root(key); !e.empty()) return e;
    return profile::ensure_section(path_, key) ? std::string() : write_error();
}

std::string RegistryStore::SetRegDWORD(std::string_view key, std::string_view name,
                                       std::uint32_t value) {
    if (auto e = check_root(key); !e.empty()) return e;
    const std::string text = std::string(kDwordPrefix) + std::to_string(value);
    return profile::write(path_, key, name, text) ? std::string() : write_error();
}

std::string RegistryStore::SetRegString(std::string_view key, std::string_view name,
                                        std::string_view value) {
    if (auto e = check_root(key); !e.empty()) return e;
    return profile::write(path_, key, name, value) ? std::string() : write_error();
}

std::string RegistryStore::ReadRegValue(std::string_view key, std::string_view name,
                                        std::string& value) {
    value.clear();
    if (auto e = check_root(key); !e.empty()) return e;
    auto found = profile::find(path_, key, name);
    if (!found) return {};
    if (found->substr(0, kDwordPrefix.size()) == kDwordPrefix) found->erase(0, kDwordPrefix.size());
    value = *found;
    return {};
}

std::string RegistryStore::DeleteRegValue(std::string_view key, std::string_view name) {
    if (auto e = check_root(key); !e.empty()) return e;
    return profile::write(path_, key, name, std::nullopt) ? std::string() : write_error();
}

}  // namespace qumbrel
