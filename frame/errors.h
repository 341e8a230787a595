#pragma once
// One error vocabulary. Below a function's error trap plain exceptions are fine; the trap
// turns them into the error state that fkt_errorreport reads (number, source,
// description, line mark).
#include <cstdint>
#include <stdexcept>
#include <string>

namespace qumbrel {

namespace errnum {
inline constexpr std::int32_t kInvalidArgument = 5;
inline constexpr std::int32_t kOverflow = 6;
inline constexpr std::int32_t kOutOfMemory = 7;
inline constexpr std::int32_t kSubscriptOutOfRange = 9;
inline constexpr std::int32_t kTypeMismatch = 13;
inline constexpr std::int32_t kBadFileNameOrNumber = 52;
inline constexpr std::int32_t kFileNotFound = 53;
inline constexpr std::int32_t kFileAlreadyOpen = 55;
inline constexpr std::int32_t kDeviceIoError = 57;
inline constexpr std::int32_t kFileAlreadyExists = 58;
inline constexpr std::int32_t kPermissionDenied = 70;
inline constexpr std::int32_t kPathFileAccessError = 75;
inline constexpr std::int32_t kPathNotFound = 76;
inline constexpr std::int32_t kObjectRequired = 424;
inline constexpr std::int32_t kRemoteServerGone = 462;
inline constexpr std::int32_t kApplicationDefined = 1004;
}  // namespace errnum

// The state a trap hands to fkt_errorreport. `line` is the step number that failed
// inside the trapping function, or 0 where it has no steps.
struct ErrState {
    std::int32_t number = 0;
    std::string source;
    std::string description;
    std::int32_t line = 0;

    void clear() { *this = ErrState{}; }
};

// A run-time error with a number of its own meaning (53 file not found, 6 overflow, ...).
class VbError : public std::runtime_error {
  public:
    VbError(std::int32_t number, std::string description, std::string source = {})
        : std::runtime_error(description),
          number_(number),
          source_(std::move(source)),
          description_(std::move(description)) {}
    std::int32_t number() const noexcept { return number_; }
    const std::string& source() const noexcept { return source_; }
    const std::string& description() const noexcept { return description_; }

  private:
    std::int32_t number_;
    std::string source_;
    std::string description_;
};

}  // namespace qumbrel
