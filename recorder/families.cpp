#include "recorder/families.h"

#include <array>
#include <cstdio>

#include "frame/text.h"

namespace qumbrel {

namespace {

struct ExtensionRow {
    std::string_view token;
    FamilyInfo info;
};

constexpr FamilyInfo kVT{RecorderFamily::VT, "DllVTFileAccess", "fkt_VTconvertCSVXLS",
                         "fkt_ReadVTFileInfo"};
constexpr FamilyInfo kVU{RecorderFamily::VU, "DllVUFileAccess", "fkt_VUconvertCSVXLS",
                         "fkt_ReadVUFileInfo"};
constexpr FamilyInfo kVQ{RecorderFamily::VQ, "DllVQFileAccess", "fkt_VQconvertCSVXLS",
                         "fkt_ReadVQFileInfo"};
constexpr FamilyInfo kHN{RecorderFamily::HN, "DllHNFileAccess", "fkt_HNconvertCSVXLS",
                         "fkt_ReadHNFileInfo"};
constexpr FamilyInfo kKL{RecorderFamily::KL, "DllKLFileAccess", "fkt_KLconvertCSVXLS",
                         "fkt_ReadKLFileInfo"};

constexpr std::array<ExtensionRow, 12> kExtensions = {{
    {"OGD", kVT},
    {"OGE", kVT},  //
    {"OSD", kVU},
    {"OSE", kVU},
    {"OAD", kVU},
    {"OAE", kVU},  //
    {"OBD", kVQ},
    {"OBE", kVQ},  //
    {"HND", kHN},
    {"HNS", kHN},  //
    {"KLE", kKL},
    {"KLD", kKL},  //
}};

constexpr std::array<std::string_view, 13> kModels = {
    "VT110", "VT210", "PB110",  "PB210",  "KL1100", "KL2100", "VQ110",
    "VQ210", "ZR110", "VT1100", "VT2100", "PB1100", "PB2100"};

std::string token_of(std::string_view extension) {
    if (!extension.empty() && extension.front() == '.') extension.remove_prefix(1);
    return to_upper_ascii(extension);
}

int hex_value(char c) {
    if (c >= '0' && c <= '9') return c - '0';
    if (c >= 'A' && c <= 'F') return c - 'A' + 10;
    if (c >= 'a' && c <= 'f') return c - 'a' + 10;
    return -1;
}

}  // namespace

std::optional<FamilyInfo> family_of_extension(std::string_view extension) {
    const std::string token = token_of(extension);
    for (const auto& row : kExtensions)
        if (row.token == token) return row.info;
    return std::nullopt;
}

std::optional<FamilyInfo> family_of_path(std::string_view path) {
    const auto slash = path.find_last_of('/');
    const std::string_view name = slash == std::string_view::npos ? path : path.substr(slash + 1);
    const auto dot = name.find_last_of('.');
    if (dot == std::string_view::npos) return std::nullopt;
    return family_of_extension(name.substr(dot + 1));
}

bool is_display_extension(std::string_view extension) {
    const std::string token = token_of(extension);
    return family_of_extension(token) && token.back() == 'D';
}

bool is_event_extension(std::string_view extension) {
    const std::string token = token_of(extension);
    return family_of_extension(token) && token.back() == 'E';
}

std::string device_model(RecorderFamily family, char hexDigit) {
    const int v = hex_value(hexDigit);
    if (v < 1 || v > 13) return {};
    if (family == RecorderFamily::VU) {
        if (v < 10) return {};
        return std::string(kModels[v - 1]) + " ";
    }
    return std::string(kModels[v - 1]);
}

std::string device_file_kind(RecorderFamily family, char hexDigit) {
    switch (hex_value(hexDigit)) {
        case 1:
            return "Event File";
        case 2:
            return "Display File";
        case 3:
            return family == RecorderFamily::KL ? "TLOG File" : "";
        default:
            return {};
    }
}

DeviceNames device_names(RecorderFamily family, std::int32_t code) {
    char hex[16];
    std::snprintf(hex, sizeof hex, "%X", static_cast<unsigned>(code));
    const std::string_view text(hex);
    return {device_model(family, text.front()), device_file_kind(family, text.back())};
}

}  // namespace qumbrel
