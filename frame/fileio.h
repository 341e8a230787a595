#pragma once
// The one seam of file operations that can lose data: creating, writing, flushing,
// renaming and deleting files and creating folders. Every report and every disposal of a
// source goes through a FileIo, so tests can fail its N-th call with a chosen errno and
// prove that no step loses data. Returns follow POSIX: -1 (or a negative count) with errno.
#include <sys/types.h>

#include <cstddef>
#include <cstdint>
#include <memory>
#include <string>

namespace qumbrel {

class FileIo {
  public:
    virtual ~FileIo() = default;
    // Creates a new file; fails with EEXIST when the name is taken.
    virtual int create_new(const std::string& path);
    virtual long write(int fd, const char* data, std::size_t size);
    virtual int fsync(int fd);
    virtual int close(int fd);
    // Replaces `to` when it exists.
    virtual int rename(const std::string& from, const std::string& to);
    // Fails with EEXIST when `to` exists.
    virtual int rename_noreplace(const std::string& from, const std::string& to);
    virtual int unlink(const std::string& path);
    virtual int mkdir(const std::string& path);
    // Flushes the folder entry of `dir` (after a rename or create in it).
    virtual int fsync_dir(const std::string& dir);
    // Asks the system to start writing [offset, offset + length) to disk now, so that the
    // final fsync of a large file has little left to wait for. A hint: no result.
    virtual void start_writeback(int fd, std::uint64_t offset, std::uint64_t length);
};

// The shared default (stateless, so one instance serves every caller).
std::shared_ptr<FileIo> posix_file_io();

// A FileIo whose N-th call fails with `error` (counting every operation); 0 never fails.
class FaultyFileIo : public FileIo {
  public:
    FaultyFileIo(int failAt, int error) : failAt_(failAt), error_(error) {}
    int create_new(const std::string& path) override;
    long write(int fd, const char* data, std::size_t size) override;
    int fsync(int fd) override;
    int close(int fd) override;
    int rename(const std::string& from, const std::string& to) override;
    int rename_noreplace(const std::string& from, const std::string& to) override;
    int unlink(const std::string& path) override;
    int mkdir(const std::string& path) override;
    int fsync_dir(const std::string& dir) override;
    int calls() const { return calls_; }
    bool fired() const { return failAt_ > 0 && calls_ >= failAt_; }

  private:
    bool fail_now();
    int failAt_, error_;
    int calls_ = 0;
};

// The folder part of a path ("." for a bare name).
std::string folder_of(const std::string& path);

// A name beside `path` that no other process or call uses: ".<name>.<pid>.<random>~".
std::string unique_temp_beside(const std::string& path);

}  // namespace qumbrel
