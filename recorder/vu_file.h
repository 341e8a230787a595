#pragma once
// The handle rule of the VU readers: a handle of 0 makes the reader open the file by path
// and close it when done; any other handle belongs to the caller.
#include <cstdint>
#include <string>

#include "frame/context.h"
#include "recorder/library_loader.h"

namespace qumbrel {

class VuFile {
  public:
    // Throws what the loader throws (a missing library) into the reader's trap.
    VuFile(Program& ctx, std::int32_t handle, const std::string& path)
        : lib_(recorder::vu_library(ctx)), handle_(handle) {
        if (handle_ == 0) {
            lib_.DllVUOpenReadFile(path.c_str(), &handle_);
            owned_ = handle_ > 0;
        }
    }
    ~VuFile() {
        if (owned_) lib_.DllVUCloseFile(&handle_);
    }
    VuFile(const VuFile&) = delete;
    VuFile& operator=(const VuFile&) = delete;

    const recorder::VuLibrary& lib() const { return lib_; }
    std::int32_t get() const { return handle_; }

  private:
    const recorder::VuLibrary& lib_;
    std::int32_t handle_;
    bool owned_ = false;
};

}  // namespace qumbrel
