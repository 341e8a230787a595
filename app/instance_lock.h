#pragma once
// The "QumbrelMutex": a lock file held while the program runs. It marks the running
// program for outside tools; it does not keep a second instance from starting.
#include <string>

namespace qumbrel {

class InstanceLock {
  public:
    InstanceLock();
    ~InstanceLock();
    InstanceLock(const InstanceLock&) = delete;
    InstanceLock& operator=(const InstanceLock&) = delete;
    const std::string& path() const { return path_; }
    bool held() const { return fd_ >= 0; }

  private:
    std::string path_;
    int fd_ = -1;
};

}  // namespace qumbrel
