#pragma once
// Checks the measured-value cursors of every family make before they read.
#include <cstddef>
#include <cstdint>
#include <string>

namespace qumbrel {

// dataCount is the caller's; before it drives any reading it must be a count the file can
// hold at all: no recorder file keeps a sample row in less than one byte. Throws VbError
// 9 for a negative count, 7 for one the file cannot hold.
void check_sample_count(const std::string& path, std::int32_t count, std::size_t channels);

// What a library says it delivered, bounded by what was asked for.
std::size_t clamp_received(std::int32_t received, std::size_t count);

}  // namespace qumbrel
