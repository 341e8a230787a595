#pragma once
// The damage rule all families share: the first out-parameter of a ...GetInfo reader is
// the header's status, and above 0 the file failed its check sum. A damaged file is still
// converted as far as the library gives data; these are the marks the dumps and the
// generators put on it.
#include <cstdint>
#include <string_view>

namespace qumbrel {

constexpr bool file_damaged(std::int32_t status) {
    return status > 0;
}

inline constexpr std::string_view kDamagedInfoLine = "File damaged!\t";      // file info dump
inline constexpr std::string_view kDamagedRow = "File damaged [CRC Error]";  // report row
inline constexpr std::string_view kDamagedFileMark = " <File damaged [CRC Error]>";
inline constexpr std::string_view kDamagedLogStep = " - CRC Error: Check file";

}  // namespace qumbrel
