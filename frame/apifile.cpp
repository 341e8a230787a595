#include "frame/apifile.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <system_error>
#include <vector>

namespace qumbrel {

namespace fs = std::filesystem;

namespace {

int code_of(const std::error_code& ec) {
    return ec ? (ec.value() != 0 ? ec.value() : EIO) : 0;
}

bool exists_nofollow(const std::string& p) {
    std::error_code ec;
    return fs::exists(fs::symlink_status(p, ec));
}

struct Fd {
    int fd = -1;
    explicit Fd(int f) : fd(f) {}
    Fd(const Fd&) = delete;
    Fd& operator=(const Fd&) = delete;
    ~Fd() {
        if (fd >= 0) ::close(fd);
    }
};

// Copies the bytes of `source` to `target` (created or truncated) and syncs them.
int copy_bytes(const std::string& source, const std::string& target, int failNthWrite) {
    Fd in(::open(source.c_str(), O_RDONLY | O_CLOEXEC));
    if (in.fd < 0) return errno;
    struct stat st {};
    if (::fstat(in.fd, &st) != 0) return errno;
    if (!S_ISREG(st.st_mode)) return EINVAL;
    Fd out(::open(target.c_str(), O_WRONLY | O_CREAT | O_TRUNC | O_CLOEXEC, st.st_mode & 07777));
    if (out.fd < 0) return errno;
    std::vector<char> buf(1 << 20);
    int writes = 0;
    while (true) {
        const ssize_t n = ::read(in.fd, buf.data(), buf.size());
        if (n < 0) {
            if (errno == EINTR) continue;
            return errno;
        }
        if (n == 0) break;
        ssize_t off = 0;
        while (off < n) {
            ++writes;
            if (failNthWrite > 0 && writes == failNthWrite) return EIO;
            const ssize_t w = ::write(out.fd, buf.data() + off, static_cast<std::size_t>(n - off));
            if (w < 0) {
                if (errno == EINTR) continue;
                return errno;
            }
            off += w;
        }
    }
    if (::fsync(out.fd) != 0) return errno;
    struct stat ot {};
    if (::fstat(out.fd, &ot) != 0) return errno;
    if (ot.st_size != st.st_size) return EIO;
    const int fd = out.fd;
    out.fd = -1;
    if (::close(fd) != 0) return errno;
    return 0;
}

std::string temp_beside(const std::string& target) {
    return target + ".part~" + std::to_string(::getpid());
}

}  // namespace

std::string Cls_APIFile::collision_free(const std::string& target) const {
    if (!RenameOnCollision || !exists_nofollow(target)) return target;
    const std::string stem = GetFileNoExtension(target);
    const std::string ext = GetFileExtension(target, false);
    for (int n = 2; n < 10000; ++n) {
        std::string candidate = stem + " (" + std::to_string(n) + ")" + ext;
        if (!exists_nofollow(candidate)) return candidate;
    }
    return target;
}

int Cls_APIFile::CopyFile(const std::string& source, const std::string& target) const {
    const std::string dest = collision_free(target);
    const std::string tmp = temp_beside(dest);
    const int rc = copy_bytes(source, tmp, failNthWrite);
    if (rc != 0) {
        std::remove(tmp.c_str());
        return rc;
    }
    std::error_code ec;
    fs::rename(tmp, dest, ec);
    if (ec) std::remove(tmp.c_str());
    return code_of(ec);
}

int Cls_APIFile::MoveFile(const std::string& source, const std::string& target,
                          std::string* movedTo) const {
    if (!exists_nofollow(source)) return ENOENT;
    // The first free name; a name taken between the test and the rename is tried again.
    for (int attempt = 0; attempt < 100; ++attempt) {
        const std::string dest = collision_free(target);
        if (io->rename_noreplace(source, dest) == 0) {
            io->fsync_dir(folder_of(dest));
            if (movedTo) *movedTo = dest;
            return 0;
        }
        const int e = errno;
        if (e == EEXIST && RenameOnCollision) continue;
        if (e != EXDEV) return e != 0 ? e : EIO;
        // Across file systems: a verified copy first, the source goes only after it.
        if (exists_nofollow(dest)) return EEXIST;
        const int rc = CopyFile(source, dest);
        if (rc != 0) return rc;
        if (io->unlink(source) != 0) return errno != 0 ? errno : EIO;
        if (movedTo) *movedTo = dest;
        return 0;
    }
    return EEXIST;
}

int Cls_APIFile::RenameFile(const std::string& source, const std::string& target) const {
    if (!exists_nofollow(source)) return ENOENT;
    if (io->rename(source, target) != 0) return errno != 0 ? errno : EIO;
    io->fsync_dir(folder_of(target));
    return 0;
}

int Cls_APIFile::DeleteFile(const std::string& path) const {
    if (!exists_nofollow(path)) return ENOENT;
    if (io->unlink(path) != 0) return errno != 0 ? errno : EIO;
    return 0;
}

int Cls_APIFile::DeleteComfort(const std::string& path, bool, bool) const {
    return DeleteFile(path);
}

std::string Cls_APIFile::GetFileName(std::string_view path) {
    const auto at = path.find_last_of('/');
    return std::string(at == std::string_view::npos ? path : path.substr(at + 1));
}

std::string Cls_APIFile::GetFileNameNoExtension(std::string_view path) {
    const std::string name = GetFileName(path);
    const auto dot = name.find_last_of('.');
    return dot == std::string::npos ? name : name.substr(0, dot);
}

std::string Cls_APIFile::GetFileExtension(std::string_view path, bool withoutDot) {
    const std::string name = GetFileName(path);
    const auto dot = name.find_last_of('.');
    if (dot == std::string::npos) return {};
    return name.substr(withoutDot ? dot + 1 : dot);
}

std::string Cls_APIFile::GetFileNoExtension(std::string_view path) {
    const auto slash = path.find_last_of('/');
    const auto dot = path.find_last_of('.');
    if (dot == std::string_view::npos || (slash != std::string_view::npos && dot < slash))
        return std::string(path);
    return std::string(path.substr(0, dot));
}

std::string Cls_APIFile::GetFilePath(std::string_view path) {
    const auto at = path.find_last_of('/');
    if (at == std::string_view::npos) return {};
    if (at == 0) return "/";
    return std::string(path.substr(0, at));
}

std::string Cls_APIFile::GetDrive(std::string_view path) {
    if (path.size() >= 2 && path[1] == ':' &&
        ((path[0] >= 'A' && path[0] <= 'Z') || (path[0] >= 'a' && path[0] <= 'z')))
        return std::string(path.substr(0, 2));
    return {};
}

namespace {
std::string env_or(const char* name, const std::string& fallback) {
    const char* v = std::getenv(name);
    return v && *v ? std::string(v) : fallback;
}
std::string home() {
    return env_or("HOME", "/tmp");
}
}  // namespace

std::string Cls_APIFile::GetWindowsSpecialFolder(int kind) {
    switch (kind) {
        case 0:
            return "/";
        case 1:
            return "/usr/lib";
        case 2: {
            std::error_code ec;
            const auto t = fs::temp_directory_path(ec);
            return ec ? std::string("/tmp") : t.string();
        }
        default:
            return {};
    }
}

std::string Cls_APIFile::GetSpecialFolderPath(int csidl) {
    const std::string config = env_or("XDG_CONFIG_HOME", home() + "/.config");
    switch (csidl) {
        case 5:
            return env_or("XDG_DOCUMENTS_DIR", home() + "/Documents");
        case 7:
            return config + "/autostart";
        case 16:
            return env_or("XDG_DESKTOP_DIR", home() + "/Desktop");
        case 26:
            return config;
        case 28:
            return env_or("XDG_DATA_HOME", home() + "/.local/share");
        case 35:
            return "/etc/xdg";
        default:
            return {};
    }
}

bool Cls_APIFile::MakeFolderTree(const std::string& path) {
    if (path.empty()) return false;
    std::error_code ec;
    fs::create_directories(path, ec);
    return fs::is_directory(path, ec);
}

bool PathFileExists(const std::string& path) {
    std::error_code ec;
    return !path.empty() && fs::exists(path, ec);
}

}  // namespace qumbrel
