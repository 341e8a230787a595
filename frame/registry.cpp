#include "frame/registry.h"

#include <array>

#include "frame/profile.h"
#include "frame/text.h"

namespace qumbrel {

namespace {
constexpr std::array<std::string_view, 7> kRoots = {
    "HKEY_CLASSES_ROOT",     "HKEY_CURRENT_USER",   "HKEY_LOCAL_MACHINE", "HKEY_USERS",
    "HKEY_PERFORMANCE_DATA", "HKEY_CURRENT_CONFIG", "HKEY_DYN_DATA"};
constexpr std::string_view kDwordPrefix = "dword:";
constexpr std::string_view kTextPrefix = "sz:";

// A text value as it is stored, so that it reads back exactly: a text that would read as
// a DWORD (or that starts with the text mark) gets the text mark, and one with outer blanks
// or an outer pair of quotes is enclosed in quotes, which the profile read takes off again.
std::string stored_text(std::string_view value) {
    std::string body;
    if (value.starts_with(kDwordPrefix) || value.starts_with(kTextPrefix)) body = kTextPrefix;
    body += value;
    const bool outerBlanks = trim_blanks(body).size() != body.size();
    const bool outerQuotes = body.size() >= 2 && body.front() == '"' && body.back() == '"';
    return outerBlanks || outerQuotes ? "\"" + body + "\"" : body;
}

// A key or value name that a line of the store cannot hold: it would not be found again,
// or would break the file's other lines.
bool storable(std::string_view key, std::string_view name) {
    constexpr std::string_view kLineBreaks("\r\n\0", 3);
    const auto fits = [&](std::string_view s, std::string_view bad) {
        return s.find_first_of(kLineBreaks) == std::string_view::npos &&
               s.find_first_of(bad) == std::string_view::npos && trim_blanks(s).size() == s.size();
    };
    return fits(key, "]") && fits(name, "=") &&
           (name.empty() || (name.front() != '[' && name.front() != ';'));
}
}  // namespace

std::string RegistryStore::check_root(std::string_view key) {
    for (auto root : kRoots) {
        if (key.substr(0, root.size()) == root &&
            (key.size() == root.size() || key[root.size()] == '\\'))
            return {};
    }
    return "Incorrect Format: " + std::string(key);
}

std::string RegistryStore::check(std::string_view key, std::string_view name) {
    if (auto e = check_root(key); !e.empty()) return e;
    if (!storable(key, name))
        return "Error: the registry store cannot hold " + std::string(key) + " / " +
               std::string(name);
    return {};
}

std::string RegistryStore::write_error() const {
    return "Error: the registry store cannot be written: " + path_;
}

std::string RegistryStore::CreateRegKey(std::string_view key) {
    if (auto e = check(key, {}); !e.empty()) return e;
    return profile::ensure_section(path_, key) ? std::string() : write_error();
}

std::string RegistryStore::SetRegDWORD(std::string_view key, std::string_view name,
                                       std::uint32_t value) {
    if (auto e = check(key, name); !e.empty()) return e;
    const std::string text = std::string(kDwordPrefix) + std::to_string(value);
    return profile::write(path_, key, name, text) ? std::string() : write_error();
}

std::string RegistryStore::SetRegString(std::string_view key, std::string_view name,
                                        std::string_view value) {
    if (auto e = check(key, name); !e.empty()) return e;
    return profile::write(path_, key, name, stored_text(value)) ? std::string() : write_error();
}

std::string RegistryStore::ReadRegValue(std::string_view key, std::string_view name,
                                        std::string& value) {
    value.clear();
    if (auto e = check(key, name); !e.empty()) return e;
    auto found = profile::find(path_, key, name);
    if (!found) return {};
    if (found->starts_with(kDwordPrefix))
        found->erase(0, kDwordPrefix.size());
    else if (found->starts_with(kTextPrefix))
        found->erase(0, kTextPrefix.size());
    value = *found;
    return {};
}

std::string RegistryStore::DeleteRegValue(std::string_view key, std::string_view name) {
    if (auto e = check(key, name); !e.empty()) return e;
    return profile::write(path_, key, name, std::nullopt) ? std::string() : write_error();
}

}  // namespace qumbrel
