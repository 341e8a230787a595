#pragma once
// The one output layer of the report writers: a buffered file that writes in large
// chunks. All bytes reach the disk through a FileIo, which tests replace to make the
// N-th write fail. A failure is sticky: every later write and the close report it too,
// so an incomplete file is never taken for a finished one.
#include <cstddef>
#include <cstring>
#include <memory>
#include <string>
#include <string_view>

namespace qumbrel {

// System calls behind the output layer; returns follow POSIX (-1 and errno on failure).
class FileIo {
  public:
    virtual ~FileIo() = default;
    virtual int open_replace(const std::string& path);  // deletes an old file, then creates
    virtual long write(int fd, const char* data, std::size_t size);
    virtual int close(int fd);
};

// The shared default (stateless, so one instance serves every writer).
std::shared_ptr<FileIo> posix_file_io();

class OutputFile {
  public:
    static constexpr std::size_t kBufferSize = 256 * 1024;

    explicit OutputFile(std::shared_ptr<FileIo> io = nullptr);
    ~OutputFile();  // closes without reporting; call close() to learn the outcome
    OutputFile(const OutputFile&) = delete;
    OutputFile& operator=(const OutputFile&) = delete;

    void set_io(std::shared_ptr<FileIo> io);

    // Throws VbError: 76 path not found, 70 permission denied, 75 otherwise.
    void open(const std::string& path);
    bool is_open() const { return fd_ >= 0; }

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
    // Flushes and closes; throws the first failure met since open().
    void close();

  private:
    void write_slow(std::string_view bytes);
    void write_through(const char* data, std::size_t size);
    [[noreturn]] void fail(int error);

    std::shared_ptr<FileIo> io_;
    std::unique_ptr<char[]> buffer_;
    std::size_t used_ = 0;
    int fd_ = -1;
    int failure_ = 0;  // error number of the first failed write, sticky until open()
};

}  // namespace qumbrel
