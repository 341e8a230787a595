#include "pipeline/register.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <cstring>
#include <string_view>
#include <vector>

#include "frame/errors.h"
#include "frame/log.h"

namespace qumbrel {

namespace {

constexpr const char* kTrapName = "fkt_CompareStringInFile of Modul mod_comparestring";

[[noreturn]] void fail(int err, const std::string& file) {
    const int number = err == ENOENT                   ? errnum::kPathNotFound
                       : err == EACCES || err == EPERM ? errnum::kPermissionDenied
                                                       : errnum::kPathFileAccessError;
    throw VbError(number, std::string(std::strerror(err)) + ": " + file);
}

struct Fd {
    int fd;
    ~Fd() {
        if (fd >= 0) ::close(fd);
    }
};

// Reads exactly up to `size` bytes at `offset`; a short read leaves the rest zero, as a
// record read past the end of the file does.
void read_record(int fd, off_t offset, std::vector<char>& buf, const std::string& file) {
    std::fill(buf.begin(), buf.end(), '\0');
    std::size_t got = 0;
    while (got < buf.size()) {
        const ssize_t n =
            ::pread(fd, buf.data() + got, buf.size() - got, offset + static_cast<off_t>(got));
        if (n < 0) {
            if (errno == EINTR) continue;
            fail(errno, file);
        }
        if (n == 0) break;
        got += static_cast<std::size_t>(n);
    }
}

}  // namespace

Flag fkt_CompareStringInFile(Program& ctx, const std::string& file, const std::string& text) {
    int step = 1;
    try {
        Fd f{::open(file.c_str(), O_RDWR | O_CREAT | O_CLOEXEC, 0644)};
        if (f.fd < 0) f.fd = ::open(file.c_str(), O_RDONLY | O_CLOEXEC);
        if (f.fd < 0) fail(errno, file);
        struct stat st {};
        if (::fstat(f.fd, &st) != 0) fail(errno, file);
        if (!S_ISREG(st.st_mode)) fail(EISDIR, file);

        step = 2;
        const auto size = static_cast<std::uint64_t>(st.st_size);
        const std::uint64_t fullRecords = size / kRegisterRecordBytes;
        const std::uint64_t rest = size - fullRecords * kRegisterRecordBytes;

        Flag result = kFalse;
        std::vector<char> record(kRegisterRecordBytes);
        auto search = [&](std::uint64_t index) {
            read_record(f.fd, static_cast<off_t>(index * kRegisterRecordBytes), record, file);
            const std::string_view view(record.data(), record.size());
            result = to_flag(view.find(text) != std::string_view::npos);
        };
        step = 3;
        // Each record overwrites the result of the one before: only the last decides.
        // Skipping to it gives the same answer without reading the earlier ones.
        if (rest > 0) {
            step = 4;
            search(fullRecords);
        } else if (fullRecords > 0) {
            search(fullRecords - 1);
        }
        step = 5;
        return result;
    } catch (...) {
        report_trapped(ctx, kTrapName, step);
        return kFalse;
    }
}

Flag fkt_AppendStringToFile(Program& ctx, const std::string& file, const std::string& line) {
    try {
        Fd f{::open(file.c_str(), O_WRONLY | O_CREAT | O_APPEND | O_CLOEXEC, 0644)};
        if (f.fd < 0) fail(errno, file);
        std::size_t off = 0;
        while (off < line.size()) {
            const ssize_t n = ::write(f.fd, line.data() + off, line.size() - off);
            if (n < 0) {
                if (errno == EINTR) continue;
                fail(errno, file);
            }
            off += static_cast<std::size_t>(n);
        }
        if (::close(f.fd) != 0) {
            f.fd = -1;
            fail(errno, file);
        }
        f.fd = -1;
        return kTrue;
    } catch (...) {
        report_trapped(ctx, kTrapName, 0);  // no steps of its own
        return kFalse;
    }
}

}  // namespace qumbrel
