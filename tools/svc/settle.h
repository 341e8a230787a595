#pragma once
// When a file in the source folder may be converted: it has stopped changing for the settle
// time and reads as a whole recorder file, or it has not changed for five settle times
// (a damaged or foreign file is converted then, and the conversion says what is wrong with
// it). A file converted once is not started again unless it changes.
#include <chrono>
#include <cstdint>
#include <functional>
#include <map>
#include <string>
#include <vector>

namespace qumbrel {

class SettleTracker {
  public:
    using Clock = std::chrono::steady_clock;

    explicit SettleTracker(std::chrono::milliseconds settle) : settle_(settle) {}

    // What the folder shows of `path` now: its size and modification time (nanoseconds).
    void observe(const std::string& path, std::uint64_t size, std::int64_t mtime,
                 Clock::time_point now);
    // The file is gone: it is forgotten.
    void forget(const std::string& path);
    // The files ready at `now`, oldest first; `complete(path)` tells whether a file reads
    // as a whole recorder file.
    std::vector<std::string> ready(Clock::time_point now,
                                   const std::function<bool(const std::string&)>& complete);
    // The file has been handed to a conversion in this state.
    void done(const std::string& path);
    std::size_t watched() const { return files_.size(); }
    // The files followed now.
    std::vector<std::string> paths() const;

  private:
    struct File {
        std::uint64_t size = 0;
        std::int64_t mtime = 0;
        Clock::time_point changed;
        bool converted = false;
    };
    std::chrono::milliseconds settle_;
    std::map<std::string, File> files_;
};

}  // namespace qumbrel
