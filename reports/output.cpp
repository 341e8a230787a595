#include "reports/output.h"

#include <fcntl.h>
#include <unistd.h>

#include <cerrno>

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

int FileIo::open_replace(const std::string& path) {
    if (::unlink(path.c_str()) != 0 && errno != ENOENT) return -1;
    return ::open(path.c_str(), O_WRONLY | O_CREAT | O_TRUNC | O_CLOEXEC, 0644);
}

long FileIo::write(int fd, const char* data, std::size_t size) {
    return static_cast<long>(::write(fd, data, size));
}

int FileIo::close(int fd) {
    return ::close(fd);
}

std::shared_ptr<FileIo> posix_file_io() {
    static const auto io = std::make_shared<FileIo>();
    return io;
}

OutputFile::OutputFile(std::shared_ptr<FileIo> io)
    : io_(io ? std::move(io) : posix_file_io()), buffer_(new char[kBufferSize]) {}

OutputFile::~OutputFile() {
    if (fd_ >= 0) io_->close(fd_);
}

void OutputFile::set_io(std::shared_ptr<FileIo> io) {
    io_ = io ? std::move(io) : posix_file_io();
}

void OutputFile::open(const std::string& path) {
    if (fd_ >= 0) {
        io_->close(fd_);
        fd_ = -1;
    }
    used_ = 0;
    failure_ = 0;
    errno = 0;
    const int fd = io_->open_replace(path);
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
    if (io_->close(fd) != 0 && error == 0) error = errnum::kDeviceIoError;
    failure_ = 0;
    if (error != 0) throw VbError(error, error == kDiskFull ? "Disk full" : "Device I/O error");
}

}  // namespace qumbrel
