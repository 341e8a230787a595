#pragma once
// The handle rule of the KL readers: a handle of 0 makes the reader open the file by path
// and close it when done; any other handle belongs to the caller.
#include <cstdint>
#include <string>

#include "frame/context.h"
#include "recorder/library_loader.h"

namespace qumbrel {

class KlFile {
  public:
    // Throws what the loader throws (a missing library) into the reader's trap.
    KlFile(Program& ctx, std::int32_t handle, const std::string& path)
        : lib_(recorder::kl_library(ctx)), handle_(handle) {
        if (handle_ == 0) {
            lib_.DllKLopenReadFile(path.c_str(), &handle_);
            owned_ = handle_ > 0;
        }
    }
    ~KlFile() {
        if (owned_) lib_.DllKLcloseReadFile(handle_);
    }
    KlFile(const KlFile&) = delete;
    KlFile& operator=(const KlFile&) = delete;

    const recorder::KlLibrary& lib() const { return lib_; }
    std::int32_t get() const { return handle_; }

  private:
    const recorder::KlLibrary& lib_;
    std::int32_t handle_;
    bool owned_ = false;
};

}  // namespace qumbrel
