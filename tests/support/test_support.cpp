#include "tests/support/test_support.h"

#include <grp.h>
#include <sys/wait.h>
#include <unistd.h>

#include <atomic>
#include <fstream>
#include <random>
#include <sstream>
#include <stdexcept>

#include "frame/options_io.h"

namespace qumbrel::testing {

TempDir::TempDir() {
    const auto base = std::filesystem::temp_directory_path();
    std::random_device rd;
    for (int attempt = 0; attempt < 100; ++attempt) {
        auto candidate =
            base / ("qumbrel-test-" + std::to_string(::getpid()) + "-" + std::to_string(rd()));
        if (std::filesystem::create_directory(candidate)) {
            path_ = candidate;
            return;
        }
    }
    throw std::runtime_error("cannot create a temporary folder");
}

TempDir::~TempDir() {
    std::error_code ec;
    // Folders made read-only by a test must be writable again before removal.
    for (auto it = std::filesystem::recursive_directory_iterator(path_, ec);
         !ec && it != std::filesystem::recursive_directory_iterator(); it.increment(ec)) {
        if (it->is_directory(ec))
            std::filesystem::permissions(it->path(), std::filesystem::perms::owner_all,
                                         std::filesystem::perm_options::add, ec);
    }
    std::filesystem::permissions(path_, std::filesystem::perms::owner_all,
                                 std::filesystem::perm_options::add, ec);
    std::filesystem::remove_all(path_, ec);
}

std::string read_file(const std::string& path) {
    std::ifstream in(path, std::ios::binary);
    std::ostringstream s;
    s << in.rdbuf();
    return s.str();
}

void write_file(const std::string& path, std::string_view bytes) {
    std::ofstream out(path, std::ios::binary | std::ios::trunc);
    out.write(bytes.data(), static_cast<std::streamsize>(bytes.size()));
}

TestProgram::TestProgram(std::string_view region) {
    auto profile = clsRegionalSettings::named(region);
    if (!profile) throw std::runtime_error("no regional profile " + std::string(region));
    ProgramInfo info;
    info.folder = dir.path();
    ctx = std::make_unique<Program>(info, host, clock, events, clsRegionalSettings(*profile));
    read_regional_values(*ctx);
    ctx->run.strOptionFile = ctx->program_file("qumbrel.ini");
    ctx->run.strRegisterFile = ctx->program_file("sourcefiledb.dat");
}

std::optional<bool> as_ordinary_user(const std::filesystem::path& owned,
                                     const std::function<bool()>& check) {
    if (::geteuid() != 0) return check();
    constexpr uid_t kNobody = 65534;
    constexpr gid_t kNogroup = 65534;
    std::error_code ec;
    if (::lchown(owned.c_str(), kNobody, kNogroup) != 0) return std::nullopt;
    for (auto it = std::filesystem::recursive_directory_iterator(
             owned, std::filesystem::directory_options::none, ec);
         !ec && it != std::filesystem::recursive_directory_iterator(); it.increment(ec)) {
        if (::lchown(it->path().c_str(), kNobody, kNogroup) != 0) return std::nullopt;
    }
    const pid_t child = ::fork();
    if (child < 0) return std::nullopt;
    if (child == 0) {
        if (::setgroups(0, nullptr) != 0 || ::setgid(kNogroup) != 0 || ::setuid(kNobody) != 0)
            ::_exit(2);
        ::_exit(check() ? 0 : 1);
    }
    int status = 0;
    if (::waitpid(child, &status, 0) != child || !WIFEXITED(status)) return std::nullopt;
    if (WEXITSTATUS(status) == 2) return std::nullopt;
    return WEXITSTATUS(status) == 0;
}

}  // namespace qumbrel::testing
