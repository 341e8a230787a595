#include "tools/svc/source_watch.h"

#include <sys/inotify.h>
#include <unistd.h>

#include <cerrno>
#include <filesystem>

namespace qumbrel {

namespace fs = std::filesystem;

SourceWatch::SourceWatch(const std::string& root) {
    fd_ = ::inotify_init1(IN_NONBLOCK | IN_CLOEXEC);
    if (fd_ >= 0) add_tree(root);
}

SourceWatch::~SourceWatch() {
    if (fd_ >= 0) ::close(fd_);
}

void SourceWatch::add_tree(const std::string& folder) {
    if (fd_ < 0) return;
    constexpr std::uint32_t kMask = IN_CLOSE_WRITE | IN_MOVED_TO | IN_CREATE | IN_MODIFY |
                                    IN_ATTRIB | IN_DELETE | IN_MOVED_FROM | IN_ONLYDIR;
    const int wd = ::inotify_add_watch(fd_, folder.c_str(), kMask);
    if (wd < 0) return;
    folders_[wd] = folder;
    std::error_code ec;
    for (fs::directory_iterator it(folder, ec), end; !ec && it != end; it.increment(ec)) {
        if (it->is_directory(ec) && !it->is_symlink(ec)) add_tree(it->path().string());
    }
}

std::vector<std::string> SourceWatch::take() {
    std::vector<std::string> paths;
    if (fd_ < 0) return paths;
    alignas(inotify_event) char buffer[16384];
    for (;;) {
        const ssize_t n = ::read(fd_, buffer, sizeof buffer);
        if (n <= 0) break;  // EAGAIN: nothing more for now
        for (ssize_t at = 0; at < n;) {
            const auto* e = reinterpret_cast<const inotify_event*>(buffer + at);
            at += static_cast<ssize_t>(sizeof(inotify_event) + e->len);
            if (e->mask & IN_IGNORED) {
                folders_.erase(e->wd);
                continue;
            }
            const auto it = folders_.find(e->wd);
            if (it == folders_.end() || e->len == 0) continue;
            const std::string path = it->second + "/" + e->name;
            if ((e->mask & IN_ISDIR) && (e->mask & (IN_CREATE | IN_MOVED_TO))) add_tree(path);
            paths.push_back(path);
        }
    }
    return paths;
}

}  // namespace qumbrel
