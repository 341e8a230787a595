#pragma once
// The one output layer of the report writers: a buffered file that writes in large
// chunks. The bytes go to a temporary name beside the target; close() flushes them to
// disk and renames the file into place, so the target name holds a complete file or
// none (a killed run leaves only the hidden temporary). All calls go through a FileIo,
// which tests replace to fail the N-th call. A failure is sticky: every later write and
// the close report it too, so an incomplete file is never taken for a finished one.
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <memory>
#include <string>
#include <string_view>

#include "frame/fileio.h"

namespace qumbrel {

class OutputFile {
  public:
    static constexpr std::size_t kBufferSize = 256 * 1024;

    explicit OutputFile(std::shared_ptr<FileIo> io = nullptr);
    ~OutputFile();  // abandons an open file: its temporary goes, the target is untouched
    OutputFile(const OutputFile&) = delete;
    OutputFile& operator=(const OutputFile&) = delete;

    void set_io(std::shared_ptr<FileIo> io);

    // Throws VbError: 76 path not found, 70 permission denied, 75 otherwise.
    void open(const std::string& path);
    bool is_open() const { return fd_ >= 0; }
    // A write has failed since open(): the close will report it.
    bool failed() const { return failure_ != 0; }

    // Buffered; throws VbError 52 when no file is open, 61/57 when the disk write fails.
    void write(std::string_view bytes) {
        if (bytes.size() <= kBufferSize - used_ && fd_ >= 0 && failure_ == 0) {
            std::memcpy(buffer_.get() + used_, bytes.data(), bytes.size());
            used_ += bytes.size();
            return;
        }
        write_slow(bytes);
    }
    void write(const void* data, std::size_t size) {
        write(std::string_view(static_cast<const char*>(data), size));
    }

    void flush();
    // Flushes, syncs, closes and renames into place; throws the first failure met since
    // open(), and then the target is left as it was.
    void close();
    // Closes and removes the temporary without touching the target.
    void abandon();

  private:
    void write_slow(std::string_view bytes);
    void write_through(const char* data, std::size_t size);
    [[noreturn]] void fail(int error);

    std::shared_ptr<FileIo> io_;
    std::unique_ptr<char[]> buffer_;
    std::size_t used_ = 0;
    int fd_ = -1;
    std::string target_, temp_;
    std::uint64_t written_ = 0, writebackFrom_ = 0;  // bytes out, and handed to writeback
    int failure_ = 0;  // error number of the first failed write, sticky until open()
};

}  // namespace qumbrel
