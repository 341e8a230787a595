#include "app/instance_lock.h"

#include <fcntl.h>
#include <sys/file.h>
#include <unistd.h>

#include <cstdlib>
#include <filesystem>

namespace qumbrel {

InstanceLock::InstanceLock() {
    const char* runtime = std::getenv("XDG_RUNTIME_DIR");
    std::error_code ec;
    const std::string folder = runtime && *runtime && std::filesystem::is_directory(runtime, ec)
                                   ? std::string(runtime)
                                   : std::filesystem::temp_directory_path(ec).string();
    path_ = folder + "/QumbrelMutex";
    fd_ = ::open(path_.c_str(), O_RDWR | O_CREAT | O_CLOEXEC, 0644);
    // A shared lock: several instances may run; outside tools see that one does.
    if (fd_ >= 0 && ::flock(fd_, LOCK_SH | LOCK_NB) != 0) {
        ::close(fd_);
        fd_ = -1;
    }
}

InstanceLock::~InstanceLock() {
    if (fd_ >= 0) ::close(fd_);
}

}  // namespace qumbrel
