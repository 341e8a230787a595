#include "recorder/measdata_checks.h"

#include <sys/stat.h>

#include <algorithm>

#include "frame/errors.h"

namespace qumbrel {

namespace {

// More cells than this in one whole-file matrix (2.4 GB at 9 bytes a cell) is no recorder
// file.
constexpr std::size_t kMaxCells = std::size_t{1} << 28;

}  // namespace

void check_sample_count(const std::string& path, std::int32_t count, std::size_t channels) {
    if (count < 0) throw VbError(errnum::kSubscriptOutOfRange, "Subscript out of range");
    struct stat st {};
    const std::uint64_t fileBytes =
        ::stat(path.c_str(), &st) == 0 ? static_cast<std::uint64_t>(st.st_size) : 0;
    const std::uint64_t rows = static_cast<std::uint64_t>(count) + 2;
    if (static_cast<std::uint64_t>(count) > fileBytes || rows * (channels + 1) > kMaxCells) {
        throw VbError(errnum::kOutOfMemory, "Out of memory: " + std::to_string(count) +
                                                " samples of " + std::to_string(channels) +
                                                " channels are more than " + path + " (" +
                                                std::to_string(fileBytes) + " bytes) can hold");
    }
}

std::size_t clamp_received(std::int32_t received, std::size_t count) {
    if (received < 0) return 0;
    return std::min(static_cast<std::size_t>(received), count);
}

}  // namespace qumbrel
