#pragma once
// One conversion per source: a run holds an exclusive advisory lock on the source while it
// converts it, so two processes on one program folder never convert (and dispose of) one
// file twice. The source is opened without following links and without blocking, so a
// FIFO or device is never waited on; only regular files are locked.
#include <string>

namespace qumbrel {

class SourceLock {
  public:
    enum class State {
        Locked,      // ours until destruction
        Missing,     // no such file (any more)
        NotRegular,  // folder, FIFO, device, socket, link
        Busy,        // another process converts it
        Failed,      // could not be opened: errorNumber says why
    };

    explicit SourceLock(const std::string& path);
    ~SourceLock();
    SourceLock(const SourceLock&) = delete;
    SourceLock& operator=(const SourceLock&) = delete;

    State state() const { return state_; }
    int error_number() const { return error_; }

  private:
    int fd_ = -1;
    State state_ = State::Failed;
    int error_ = 0;
};

}  // namespace qumbrel
