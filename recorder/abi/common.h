#pragma once
// What the five recorder library interfaces share.
//
// Conventions of every family header in this folder:
// - Functions are plain C symbols with the platform's standard calling convention.
// - Out integers are `int32_t*` unless a table gives 16 bits (`int16_t*`); doubles are
//   `double*`. Every pointer is the caller's variable or array.
// - Text fields are caller-provided `char*` buffers of a fixed width (the named constants
//   next to each function). The library fills exactly that many bytes, Windows-1252,
//   padded with zero bytes, and writes no terminator of its own.
// - Every function returns an `int32_t` status: 0 or more is success, a negative value one
//   of the codes below. Data functions without a `received` argument return the number of
//   samples delivered. The program's readers do not test it (they see zero counts).
// - Times are seconds since 1970-01-01 00:00:00 recorder time (no zone) plus ticks: an
//   eighth of a second in VT, KL and VQ, a millisecond in VU and HN.
#include <cstdint>

#if defined(_WIN32)
#define QUMBREL_RECLIB_API __declspec(dllexport)
#else
#define QUMBREL_RECLIB_API __attribute__((visibility("default")))
#endif

namespace qumbrel::abi {

inline constexpr std::int32_t kOk = 0;
inline constexpr std::int32_t kErrHandle = -1;    // unknown or closed handle
inline constexpr std::int32_t kErrIndex = -2;     // index outside the file's records
inline constexpr std::int32_t kErrOpen = -3;      // file missing or unreadable
inline constexpr std::int32_t kErrFormat = -4;    // not a recorder file of this family
inline constexpr std::int32_t kErrArgument = -5;  // null pointer or negative count
inline constexpr std::int32_t kErrTooMany = -6;   // reserved: the table evicts instead

// Open handles one library keeps at a time. Opening one more closes the handle that was
// used longest ago: a caller that never closes (the VT measured-data reader keeps its
// handle to the end of the process) cannot exhaust the table.
inline constexpr std::int32_t kMaxOpenHandles = 1024;

// The same rule for every family's to-date-time function.
inline constexpr std::int32_t kTicksPerSecondEighths = 8;
inline constexpr std::int32_t kTicksPerSecondMillis = 1000;

}  // namespace qumbrel::abi

// Declares `<symbol>_fn`, the function-pointer type of one library symbol.
#define QUMBREL_ABI_FN_TYPE(name) using name##_fn = decltype(&::name);
