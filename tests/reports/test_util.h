#pragma once
// Helpers of the sheet and sink tests: hex dumps, whole-file reads, a strict BIFF2 record
// walker, and a FileIo that fails on the N-th write.
#include <cerrno>
#include <cstdint>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <span>
#include <string>
#include <vector>

#include "reports/output.h"

namespace qumbrel::test {

template <class Bytes>
std::string hex(const Bytes& b) {
    static const char* digits = "0123456789ABCDEF";
    std::string s;
    for (const auto c : b) {
        const auto u = static_cast<unsigned char>(c);
        if (!s.empty()) s.push_back(' ');
        s.push_back(digits[u >> 4]);
        s.push_back(digits[u & 15]);
    }
    return s;
}

inline std::string read_all(const std::filesystem::path& p) {
    std::ifstream in(p, std::ios::binary);
    return {std::istreambuf_iterator<char>(in), std::istreambuf_iterator<char>()};
}

struct Record {
    std::uint16_t id = 0;
    std::string data;
};

// Walks a BIFF2 stream strictly: the exact BOF first, every length inside the file, the
// counted records (FORMAT, FONT, LABEL, HEADER, FOOTER) consistent with their length byte,
// fixed-size records at their size, EOF last with nothing after it. Returns the records
// between BOF and EOF; `error` says what was wrong.
inline std::vector<Record> walk_biff2(const std::string& file, std::string& error) {
    std::vector<Record> out;
    error.clear();
    const std::string bof("\x09\x00\x04\x00\x02\x00\x0A\x00", 8);
    if (file.compare(0, 8, bof) != 0) {
        error = "no BOF 09 00 04 00 02 00 0A 00 at the start";
        return out;
    }
    std::size_t at = 8;
    auto u16 = [&](std::size_t i) {
        return static_cast<std::uint16_t>(static_cast<unsigned char>(file[i]) |
                                          (static_cast<unsigned char>(file[i + 1]) << 8));
    };
    while (true) {
        if (at + 4 > file.size()) {
            error = "file ends without EOF at offset " + std::to_string(at);
            return out;
        }
        const std::uint16_t id = u16(at), len = u16(at + 2);
        if (at + 4 + len > file.size()) {
            error = "record " + std::to_string(id) + " overruns the file";
            return out;
        }
        Record r{id, file.substr(at + 4, len)};
        at += 4 + len;
        if (id == 10) {
            if (len != 0) error = "EOF with data";
            if (at != file.size()) error = "bytes after EOF";
            return out;
        }
        auto counted_at = [&](std::size_t pos) {
            return r.data.size() > pos &&
                   static_cast<unsigned char>(r.data[pos]) + pos + 1 == r.data.size();
        };
        bool ok = true;
        switch (id) {
            case 2:
                ok = len == 9;
                break;
            case 3:
                ok = len == 15;
                break;
            case 4:
                ok = counted_at(7);
                break;
            case 8:
                ok = len == 16;
                break;
            case 18:
            case 31:
            case 37:
            case 43:
                ok = len == 2;
                break;
            case 20:
            case 21:
            case 30:
                ok = counted_at(0);
                break;
            case 27:
                ok = len >= 2 && len == 2 + 2 * u16(at - len);
                break;
            case 36:
                ok = len == 4;
                break;
            case 38:
            case 39:
            case 40:
            case 41:
                ok = len == 8;
                break;
            case 47:
                break;
            case 49:
                ok = counted_at(4);
                break;
            default:
                ok = false;
        }
        if (!ok) {
            error = "record " + std::to_string(id) + " has a bad length " + std::to_string(len);
            return out;
        }
        out.push_back(std::move(r));
    }
}

// Passes everything to the system, except that the N-th write (1-based) fails with ENOSPC.
class FailingIo : public FileIo {
  public:
    explicit FailingIo(int failAt) : failAt_(failAt) {}
    long write(int fd, const char* data, std::size_t size) override {
        if (++writes_ == failAt_) {
            errno = ENOSPC;
            return -1;
        }
        return FileIo::write(fd, data, size);
    }
    int writes() const { return writes_; }

  private:
    int failAt_;
    int writes_ = 0;
};

// A unique scratch folder per test, removed afterwards.
class TempDir {
  public:
    TempDir() {
        std::string tmpl =
            (std::filesystem::temp_directory_path() / "qumbrel-sheet-XXXXXX").string();
        path_ = ::mkdtemp(tmpl.data()) ? tmpl : std::string();
    }
    ~TempDir() {
        std::error_code ec;
        if (!path_.empty()) std::filesystem::remove_all(path_, ec);
    }
    const std::filesystem::path& path() const { return path_; }
    std::string file(const std::string& name) const { return (path_ / name).string(); }

  private:
    std::filesystem::path path_;
};

}  // namespace qumbrel::test
