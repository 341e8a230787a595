#pragma once
// The handle rule of the VQ readers: a handle of 0 makes the reader open the file by path
// and close it when done; any other handle belongs to the caller.
#include <cstdint>
#include <string>

#include "frame/context.h"
#include "recorder/library_loader.h"

namespace qumbrel {

class VqFile {
  public:
    // Throws what the loader throws (a missing library) into the reader's trap.
    VqFile(Program& ctx, std::int32_t handle, const std::string& path)
        : lib_(recorder::vq_library(ctx)), handle_(handle) {
        if (handle_ == 0) {
            std::int32_t openStatus = 0;
            lib_.DllVQopenReadFile(path.c_str(), &openStatus, &handle_);
            owned_ = handle_ > 0;
        }
    }
    ~VqFile() {
        if (owned_) lib_.DllVQcloseReadFile(handle_);
    }
    VqFile(const VqFile&) = delete;
    VqFile& operator=(const VqFile&) = delete;

    const recorder::VqLibrary& lib() const { return lib_; }
    std::int32_t get() const { return handle_; }

  private:
    const recorder::VqLibrary& lib_;
    std::int32_t handle_;
    bool owned_ = false;
};

}  // namespace qumbrel
