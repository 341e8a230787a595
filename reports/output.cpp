#include "reports/output.h"

#include <fcntl.h>
#include <unistd.h>

#include <cerrno>
#include <cstring>

#include "frame/errors.h"

namespace qumbrel {

namespace {

constexpr int kDiskFull = 61;

VbError open_error(int e, const std::string& path) {
    switch (e) {
        case ENOENT:
        case ENOTDIR:
            return VbError(errnum::kPathNotFound, "Path not found: " + path);
        case EACCES:
        case EPERM:
        case EROFS:
            return VbError(errnum::kPermissionDenied, "Permission denied: " + path);
        default:
            return VbError(errnum::kPathFileAccessError, "Path/File access error: " + path);
    }
}

}  // namespace

OutputFile::OutputFile(std::shared_ptr<FileIo> io)
    : io_(io ? std::move(io) : posix_file_io()), buffer_(new char[kBufferSize]) {}

OutputFile::~OutputFile() {
    abandon();
}

void OutputFile::abandon() {
    if (fd_ < 0) return;
    io_->close(fd_);
    fd_ = -1;
    used_ = 0;
    failure_ = 0;
    io_->unlink(temp_);
}

void OutputFile::set_io(std::shared_ptr<FileIo> io) {
    io_ = io ? std::move(io) : posix_file_io();
}

void OutputFile::open(const std::string& path) {
    abandon();
    used_ = 0;
    failure_ = 0;
    errno = 0;
    target_ = path;
    temp_ = unique_temp_beside(path);
    written_ = writebackFrom_ = 0;
    const int fd = io_->create_new(temp_);
    if (fd < 0) throw open_error(errno, path);
    fd_ = fd;
}

void OutputFile::fail(int error) {
    if (failure_ == 0) failure_ = error == ENOSPC ? kDiskFull : errnum::kDeviceIoError;
    used_ = 0;
    throw VbError(failure_, failure_ == kDiskFull ? "Disk full" : "Device I/O error");
}

void OutputFile::write_through(const char* data, std::size_t size) {
    while (size > 0) {
        errno = 0;
        const long n = io_->write(fd_, data, size);
        if (n <= 0) fail(errno);
        data += n;
        size -= static_cast<std::size_t>(n);
        written_ += static_cast<std::uint64_t>(n);
    }
    // Large reports go to disk while they are written, not all at the closing flush.
    constexpr std::uint64_t kWriteback = 8u << 20;
    if (written_ - writebackFrom_ >= kWriteback) {
        io_->start_writeback(fd_, writebackFrom_, written_ - writebackFrom_);
        writebackFrom_ = written_;
    }
}

void OutputFile::write_slow(std::string_view bytes) {
    if (fd_ < 0) throw VbError(errnum::kBadFileNameOrNumber, "Bad file name or number");
    if (failure_ != 0) fail(0);
    if (bytes.size() > kBufferSize - used_) flush();
    if (bytes.size() >= kBufferSize) {
        write_through(bytes.data(), bytes.size());
        return;
    }
    std::memcpy(buffer_.get() + used_, bytes.data(), bytes.size());
    used_ += bytes.size();
}

void OutputFile::flush() {
    if (fd_ < 0) throw VbError(errnum::kBadFileNameOrNumber, "Bad file name or number");
    if (failure_ != 0) fail(0);
    const std::size_t n = used_;
    used_ = 0;
    write_through(buffer_.get(), n);
}

void OutputFile::close() {
    if (fd_ < 0) throw VbError(errnum::kBadFileNameOrNumber, "Bad file name or number");
    int error = failure_;
    if (error == 0) {
        try {
            flush();
        } catch (const VbError&) {
            error = failure_;
        }
    }
    const int fd = fd_;
    fd_ = -1;
    used_ = 0;
    if (error == 0 && io_->fsync(fd) != 0)
        error = errno == ENOSPC ? kDiskFull : errnum::kDeviceIoError;
    if (io_->close(fd) != 0 && error == 0) error = errnum::kDeviceIoError;
    failure_ = 0;
    if (error == 0 && io_->rename(temp_, target_) != 0) {
        const int e = errno;
        io_->unlink(temp_);
        throw VbError(errnum::kPathFileAccessError,
                      "Path/File access error: " + target_ + ": " + std::strerror(e));
    }
    if (error != 0) {
        io_->unlink(temp_);
        throw VbError(error, error == kDiskFull ? "Disk full" : "Device I/O error");
    }
    io_->fsync_dir(folder_of(target_));
}

}  // namespace qumbrel
