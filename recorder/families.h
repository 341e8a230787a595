#pragma once
// The five recorder families: which extension belongs to which family, and the device
// code table the libraries of some families hand out instead of a device name.
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

namespace qumbrel {

enum class RecorderFamily { VT, VU, VQ, HN, KL };

struct FamilyInfo {
    RecorderFamily family;
    std::string_view readerModule;  // "DllVTFileAccess"
    std::string_view generator;     // "fkt_VTconvertCSVXLS"
    std::string_view infoDump;      // "fkt_ReadVTFileInfo"
};

// The family of an extension token ("OGE", "oge"; with or without the dot), compared in
// upper case. This is the only detection the driver and the scanner use.
std::optional<FamilyInfo> family_of_extension(std::string_view extension);
// The same for a path: its extension after the last dot of the file name.
std::optional<FamilyInfo> family_of_path(std::string_view path);

// The token ends in D: a display data file (minimum/maximum per sample).
bool is_display_extension(std::string_view extension);
// The token ends in E: an event data file (one value per sample).
bool is_event_extension(std::string_view extension);

// Device code to text: the code is written in hexadecimal, its first digit names the model
// and its last digit the file kind. Any other digit gives "". VU knows only the models
// A to D, written with a trailing blank; "TLOG File" exists in KL only.
struct DeviceNames {
    std::string model;
    std::string fileKind;
};
DeviceNames device_names(RecorderFamily family, std::int32_t code);
std::string device_model(RecorderFamily family, char hexDigit);
std::string device_file_kind(RecorderFamily family, char hexDigit);

}  // namespace qumbrel
