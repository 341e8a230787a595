#include "frame/fileio.h"

#include <fcntl.h>
#include <stdio.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <cstdio>
#include <random>

namespace qumbrel {

int FileIo::create_new(const std::string& path) {
    return ::open(path.c_str(), O_WRONLY | O_CREAT | O_EXCL | O_CLOEXEC, 0644);
}

long FileIo::write(int fd, const char* data, std::size_t size) {
    return static_cast<long>(::write(fd, data, size));
}

int FileIo::fsync(int fd) {
    return ::fsync(fd);
}

int FileIo::close(int fd) {
    return ::close(fd);
}

int FileIo::rename(const std::string& from, const std::string& to) {
    return ::rename(from.c_str(), to.c_str());
}

int FileIo::rename_noreplace(const std::string& from, const std::string& to) {
    if (::renameat2(AT_FDCWD, from.c_str(), AT_FDCWD, to.c_str(), RENAME_NOREPLACE) == 0) return 0;
    if (errno != EINVAL && errno != ENOSYS) return -1;
    // A file system without the flag: a hard link fails on an existing name, as wanted.
    if (::link(from.c_str(), to.c_str()) != 0) return -1;
    return ::unlink(from.c_str());
}

int FileIo::unlink(const std::string& path) {
    return ::unlink(path.c_str());
}

int FileIo::mkdir(const std::string& path) {
    return ::mkdir(path.c_str(), 0777);
}

int FileIo::fsync_dir(const std::string& dir) {
    const int fd = ::open(dir.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC);
    if (fd < 0) return -1;
    const int rc = ::fsync(fd);
    const int saved = errno;
    ::close(fd);
    errno = saved;
    // Some file systems cannot flush a folder; the rename itself has happened.
    return rc != 0 && (saved == EINVAL || saved == EROFS) ? 0 : rc;
}

void FileIo::start_writeback(int fd, std::uint64_t offset, std::uint64_t length) {
    ::sync_file_range(fd, static_cast<off64_t>(offset), static_cast<off64_t>(length),
                      SYNC_FILE_RANGE_WRITE);
}

std::shared_ptr<FileIo> posix_file_io() {
    static const auto io = std::make_shared<FileIo>();
    return io;
}

bool FaultyFileIo::fail_now() {
    if (++calls_ != failAt_) return false;
    errno = error_;
    return true;
}

int FaultyFileIo::create_new(const std::string& path) {
    return fail_now() ? -1 : FileIo::create_new(path);
}
long FaultyFileIo::write(int fd, const char* data, std::size_t size) {
    return fail_now() ? -1 : FileIo::write(fd, data, size);
}
int FaultyFileIo::fsync(int fd) {
    return fail_now() ? -1 : FileIo::fsync(fd);
}
int FaultyFileIo::close(int fd) {
    // The descriptor goes whatever close reports, as close(2) does on Linux.
    if (fail_now()) {
        FileIo::close(fd);
        errno = error_;
        return -1;
    }
    return FileIo::close(fd);
}
int FaultyFileIo::rename(const std::string& from, const std::string& to) {
    return fail_now() ? -1 : FileIo::rename(from, to);
}
int FaultyFileIo::rename_noreplace(const std::string& from, const std::string& to) {
    return fail_now() ? -1 : FileIo::rename_noreplace(from, to);
}
int FaultyFileIo::unlink(const std::string& path) {
    return fail_now() ? -1 : FileIo::unlink(path);
}
int FaultyFileIo::mkdir(const std::string& path) {
    return fail_now() ? -1 : FileIo::mkdir(path);
}
int FaultyFileIo::fsync_dir(const std::string& dir) {
    return fail_now() ? -1 : FileIo::fsync_dir(dir);
}

std::string folder_of(const std::string& path) {
    const auto slash = path.find_last_of('/');
    if (slash == std::string::npos) return ".";
    if (slash == 0) return "/";
    return path.substr(0, slash);
}

std::string unique_temp_beside(const std::string& path) {
    // The pid keeps processes apart, a random part the calls of one process.
    std::random_device random;
    char tag[17];
    std::snprintf(tag, sizeof tag, "%08x%08x", random(), random());
    const auto slash = path.find_last_of('/');
    const std::string dir = slash == std::string::npos ? std::string() : path.substr(0, slash + 1);
    const std::string name = slash == std::string::npos ? path : path.substr(slash + 1);
    return dir + "." + name + "." + std::to_string(::getpid()) + "." + tag + "~";
}

}  // namespace qumbrel
