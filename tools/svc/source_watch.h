#pragma once
// The source folder tree watched with inotify: every folder below it gets a watch (new
// folders as they appear), and each event names the file it concerns. The kernel's queue
// can overflow; the service's periodic rescan covers that.
#include <map>
#include <string>
#include <vector>

namespace qumbrel {

class SourceWatch {
  public:
    explicit SourceWatch(const std::string& root);
    ~SourceWatch();
    SourceWatch(const SourceWatch&) = delete;
    SourceWatch& operator=(const SourceWatch&) = delete;

    bool valid() const { return fd_ >= 0; }
    int fd() const { return fd_; }
    // The paths events named since the last call (files and folders), without waiting.
    std::vector<std::string> take();
    // Watches `folder` and the folders below it.
    void add_tree(const std::string& folder);

  private:
    int fd_ = -1;
    std::map<int, std::string> folders_;  // watch descriptor -> folder
};

}  // namespace qumbrel
