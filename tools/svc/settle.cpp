#include "tools/svc/settle.h"

#include <algorithm>

namespace qumbrel {

void SettleTracker::observe(const std::string& path, std::uint64_t size, std::int64_t mtime,
                            Clock::time_point now) {
    auto [it, added] = files_.try_emplace(path);
    File& f = it->second;
    if (added || f.size != size || f.mtime != mtime) {
        f.size = size;
        f.mtime = mtime;
        f.changed = now;
        f.converted = false;  // a file that changed after its conversion is new again
    }
}

void SettleTracker::forget(const std::string& path) {
    files_.erase(path);
}

std::vector<std::string> SettleTracker::ready(
    Clock::time_point now, const std::function<bool(const std::string&)>& complete) {
    std::vector<std::pair<Clock::time_point, std::string>> out;
    for (const auto& [path, f] : files_) {
        if (f.converted) continue;
        const auto quiet = now - f.changed;
        if (quiet < settle_) continue;
        if (quiet >= 5 * settle_ || complete(path)) out.emplace_back(f.changed, path);
    }
    std::sort(out.begin(), out.end());
    std::vector<std::string> paths;
    for (auto& [t, p] : out) paths.push_back(std::move(p));
    return paths;
}

std::vector<std::string> SettleTracker::paths() const {
    std::vector<std::string> out;
    for (const auto& [path, f] : files_) out.push_back(path);
    return out;
}

void SettleTracker::done(const std::string& path) {
    if (const auto it = files_.find(path); it != files_.end()) it->second.converted = true;
}

}  // namespace qumbrel
