#pragma once
// The handle rule of the HN readers: a handle of 0 makes the reader open the file by path
// and close it when done; any other handle belongs to the caller.
#include <cstdint>
#include <string>

#include "frame/context.h"
#include "recorder/library_loader.h"

namespace qumbrel {

class HnFile {
  public:
    // Throws what the loader throws (a missing library) into the reader's trap.
    HnFile(Program& ctx, std::int32_t handle, const std::string& path)
        : lib_(recorder::hn_library(ctx)), handle_(handle) {
        if (handle_ == 0) {
            lib_.DllHNOpenReadFile(path.c_str(), &handle_);
            owned_ = handle_ > 0;
        }
    }
    ~HnFile() {
        if (owned_) lib_.DllHNCloseReadFile(&handle_);
    }
    HnFile(const HnFile&) = delete;
    HnFile& operator=(const HnFile&) = delete;

    const recorder::HnLibrary& lib() const { return lib_; }
    std::int32_t get() const { return handle_; }

  private:
    const recorder::HnLibrary& lib_;
    std::int32_t handle_;
    bool owned_ = false;
};

}  // namespace qumbrel
