#pragma once
// clsINI: the option file class. Every operation works on INIFile, or on the optional
// file given to the call, which is created empty first when it is absent.
#include <string>
#include <string_view>
#include <vector>

namespace qumbrel {

class clsINI {
  public:
    static constexpr std::size_t kValueBuffer = 700;  // a value holds at most 699 characters
    static constexpr std::size_t kListBuffer = 1024;  // key and section lists

    clsINI() = default;
    explicit clsINI(std::string file) : file_(std::move(file)) {}

    const std::string& INIFile() const { return file_; }
    void INIFile(std::string file) { file_ = std::move(file); }
    const std::string& DefaultReturnValue() const { return default_; }
    void DefaultReturnValue(std::string value) { default_ = std::move(value); }
    void ResetINIFilePath() { file_.clear(); }

    // Writes fail quietly like the profile call; the result says whether it worked.
    bool CreateKeyValue(std::string_view section, std::string_view key, std::string_view value,
                        std::string_view file = {});
    bool CreateKey(std::string_view section, std::string_view key, std::string_view file = {});

    // An empty result gives `def`, or DefaultReturnValue when the call gives none.
    std::string GetKeyValue(std::string_view section, std::string_view key,
                            std::string_view file = {}, const std::string* def = nullptr);
    std::string GetKeyValue(std::string_view section, std::string_view key, std::string_view file,
                            const std::string& def) {
        return GetKeyValue(section, key, file, &def);
    }

    std::vector<std::string> GetKeysInSection(std::string_view section, std::string_view file = {});
    std::vector<std::string> GetSections(std::string_view file = {});

    bool DeleteKeyValue(std::string_view section, std::string_view key,
                        std::string_view file = {});  // keeps the key, empties its value
    bool DeleteKey(std::string_view section, std::string_view key, std::string_view file = {});
    bool DeleteSection(std::string_view section, std::string_view file = {});
    bool RenameKey(std::string_view section, std::string_view oldKey, std::string_view newKey,
                   std::string_view file = {});
    bool RenameSection(std::string_view oldSection, std::string_view newSection,
                       std::string_view file = {});

  private:
    std::string resolve(std::string_view file) const;

    std::string file_;
    std::string default_;
};

}  // namespace qumbrel
