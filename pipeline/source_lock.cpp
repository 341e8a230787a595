#include "pipeline/source_lock.h"

#include <fcntl.h>
#include <sys/file.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>

namespace qumbrel {

SourceLock::SourceLock(const std::string& path) {
    struct stat byName {};
    if (::lstat(path.c_str(), &byName) != 0) {
        error_ = errno;
        state_ = errno == ENOENT || errno == ENOTDIR ? State::Missing : State::Failed;
        return;
    }
    if (!S_ISREG(byName.st_mode)) {
        state_ = State::NotRegular;
        return;
    }
    fd_ = ::open(path.c_str(), O_RDONLY | O_NOFOLLOW | O_NONBLOCK | O_CLOEXEC);
    if (fd_ < 0) {
        error_ = errno;
        state_ = errno == ENOENT ? State::Missing : State::Failed;
        return;
    }
    struct stat opened {};
    if (::fstat(fd_, &opened) != 0 || !S_ISREG(opened.st_mode)) {
        state_ = State::NotRegular;
        return;
    }
    if (::flock(fd_, LOCK_EX | LOCK_NB) != 0) {
        error_ = errno;
        state_ = errno == EWOULDBLOCK ? State::Busy : State::Failed;
        return;
    }
    // Another run may have finished with the file while we waited to open it: moved or
    // deleted, the name now names another file or none, and there is nothing left to do.
    struct stat now {};
    if (::lstat(path.c_str(), &now) != 0 || now.st_ino != opened.st_ino ||
        now.st_dev != opened.st_dev) {
        state_ = State::Missing;
        return;
    }
    state_ = State::Locked;
}

SourceLock::~SourceLock() {
    if (fd_ >= 0) ::close(fd_);
}

}  // namespace qumbrel
