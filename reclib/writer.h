#pragma once
// Writes a RecorderFile in the reference format. Used by recsim and by tests that build
// scenarios in memory. Stable interface: tests of other modules rely on it.
//
//   reclib::RecorderFile f = reclib::simulate(opts);   // simulate.h, or built by hand
//   std::string error;
//   if (!reclib::write_file(f, "/tmp/a.oge", {}, &error)) ...
//   auto bytes = reclib::encode(f, {.damaged = true});  // the same bytes in memory
#include <cstdint>
#include <filesystem>
#include <string>
#include <vector>

#include "reclib/model.h"

namespace qumbrel::reclib {

struct WriteOptions {
    bool damaged = false;  // store a wrong check sum: the libraries report status 1
};

// The file's bytes. Throws std::invalid_argument for a model the format cannot hold (a
// name over 255 bytes, a text over 65535 bytes, series of different lengths).
std::vector<std::uint8_t> encode(const RecorderFile& file, const WriteOptions& options = {});

// Writes to `path` through a temporary name and a rename. False with a message in
// `error` when the model is invalid or the file cannot be written.
bool write_file(const RecorderFile& file, const std::filesystem::path& path,
                const WriteOptions& options = {}, std::string* error = nullptr);

}  // namespace qumbrel::reclib
