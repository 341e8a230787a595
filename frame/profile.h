#pragma once
// Profile files with the Windows private-profile semantics the option and language files
// rely on: sections and keys match case-insensitively and the first match wins, values
// are trimmed and lose one enclosing pair of double quotes, ';' starts a comment only at
// the start of a line, the caller's buffer size cuts what is read, a missing file reads
// as defaults and is created on write, and a write keeps every other line and its order.
#include <cstddef>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace qumbrel::profile {

// A file larger than this is not read (a hostile or mistaken file must not be loaded
// whole); reads give their defaults and writes fail.
inline constexpr std::size_t kMaxFileBytes = 4 * 1024 * 1024;

enum class FileState { Ok, Missing, TooLarge, Unreadable };

FileState probe(const std::string& path);

// GetPrivateProfileString of one key. `bufferSize` counts characters including the
// terminator, so at most bufferSize - 1 come back. A key that is absent gives `def`
// (trailing blanks removed, cut the same way).
std::string read(const std::string& path, std::string_view section, std::string_view key,
                 std::string_view def, std::size_t bufferSize);

// The value as found, untrimmed by any buffer; nullopt when the key is absent.
std::optional<std::string> find(const std::string& path, std::string_view section,
                                std::string_view key);

// Key names of a section / section names of the file, cut as the platform cuts a list
// that does not fit its buffer of `bufferSize` characters.
std::vector<std::string> keys(const std::string& path, std::string_view section,
                              std::size_t bufferSize);
std::vector<std::string> sections(const std::string& path, std::size_t bufferSize);

// WritePrivateProfileString: sets the value (creating file, section and key as needed);
// a nullopt value removes the key. False when the file could not be written.
bool write(const std::string& path, std::string_view section, std::string_view key,
           std::optional<std::string_view> value);
bool remove_section(const std::string& path, std::string_view section);
// Creates an empty section when it is absent.
bool ensure_section(const std::string& path, std::string_view section);

}  // namespace qumbrel::profile
