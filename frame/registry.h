#pragma once
// Registry helpers over the registry store: an INI file (registry.ini in the program
// folder) whose sections are full key paths and whose keys are value names. Each helper
// gives back "" on success or an error text.
#include <cstdint>
#include <string>
#include <string_view>

namespace qumbrel {

class RegistryStore {
  public:
    explicit RegistryStore(std::string path) : path_(std::move(path)) {}

    // "" when `key` starts with one of the root names, else the "Incorrect Format:" text.
    static std::string check_root(std::string_view key);

    std::string CreateRegKey(std::string_view key);
    std::string SetRegDWORD(std::string_view key, std::string_view name, std::uint32_t value);
    std::string SetRegString(std::string_view key, std::string_view name, std::string_view value);
    // `value` is "" when the value is absent (no error: the caller takes its default).
    std::string ReadRegValue(std::string_view key, std::string_view name, std::string& value);
    std::string DeleteRegValue(std::string_view key, std::string_view name);

    const std::string& path() const { return path_; }

  private:
    // The root check, then whether the store can hold the key and value name.
    static std::string check(std::string_view key, std::string_view name);
    std::string write_error() const;
    std::string path_;
};

}  // namespace qumbrel
