#pragma once
// Helpers of the sheet, sink and reader tests: hex dumps, a strict BIFF2 record walker, a
// FileIo that fails on the N-th write, and the outside readers (xlrd, LibreOffice).
#include <cerrno>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <map>
#include <string>
#include <vector>

#include "reports/output.h"
#include "tests/support/test_support.h"

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
    if (file.compare(0, 8, std::string("\x09\x00\x04\x00\x02\x00\x0A\x00", 8)) != 0) {
        error = "no BOF 09 00 04 00 02 00 0A 00 at the start";
        return out;
    }
    const auto byte = [](const std::string& s, std::size_t i) {
        return static_cast<unsigned char>(s[i]);
    };
    for (std::size_t at = 8;;) {
        if (at + 4 > file.size()) {
            error = "file ends without EOF at offset " + std::to_string(at);
            return out;
        }
        const std::uint16_t id = byte(file, at) | byte(file, at + 1) << 8;
        const std::size_t len = byte(file, at + 2) | byte(file, at + 3) << 8;
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
        // A counted string whose length byte stands at `pos` and ends the record.
        const auto counted_at = [&](std::size_t pos) {
            return len > pos && byte(r.data, pos) + pos + 1 == len;
        };
        static const std::map<int, std::size_t> fixed{{2, 9},  {3, 15}, {8, 16}, {36, 4},
                                                      {18, 2}, {31, 2}, {37, 2}, {43, 2},
                                                      {38, 8}, {39, 8}, {40, 8}, {41, 8}};
        static const std::map<int, std::size_t> counted{{4, 7}, {49, 4}, {20, 0}, {21, 0}, {30, 0}};
        const auto f = fixed.find(id);
        const auto c = counted.find(id);
        const bool ok =
            id == 47 || (f != fixed.end() && f->second == len) ||
            (c != counted.end() && counted_at(c->second)) ||
            (id == 27 && len >= 2 && len == 2 + 2u * (byte(r.data, 0) | byte(r.data, 1) << 8));
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

inline std::string run_command(const std::string& command, int& status) {
    std::string out;
    FILE* p = ::popen(command.c_str(), "r");
    if (!p) {
        status = -1;
        return out;
    }
    char buf[4096];
    while (std::size_t n = std::fread(buf, 1, sizeof buf, p)) out.append(buf, n);
    status = ::pclose(p);
    return out;
}

// Debian's python3 with python3-xlrd (not a pyenv python); empty when missing.
inline std::string skip_reason_xlrd() {
    int status = 0;
    run_command("/usr/bin/python3 -c 'import xlrd' 2>/dev/null", status);
    return status == 0 ? "" : "python3-xlrd is not installed";
}

// tests/reports/xlrd_dump.py over a sheet: one line per cell, then the page breaks.
inline std::string xlrd_dump(const std::string& path, int& status) {
    return run_command(std::string("/usr/bin/python3 ") + QUMBREL_SOURCE_DIR +
                           "/tests/reports/xlrd_dump.py '" + path + "' 2>&1",
                       status);
}

inline std::string find_soffice() {
    for (const char* p :
         {"/usr/bin/soffice", "/usr/bin/libreoffice", "/usr/lib/libreoffice/program/soffice"}) {
        if (std::filesystem::exists(p)) return p;
    }
    return {};
}

// LibreOffice (libreoffice-calc-nogui) converts the sheets to CSV into `outdir` in one
// call (it takes seconds to start); `quote_all` quotes text cells. Exit status of soffice.
inline int soffice_to_csv(const std::string& soffice, const std::string& profile,
                          const std::string& outdir, const std::vector<std::string>& sheets,
                          bool quote_all) {
    std::string command = soffice + " -env:UserInstallation=file://" + profile +
                          " --headless --infilter=\"MS Excel 4.0\" --convert-to "
                          "'csv:Text - txt - csv (StarCalc):44,34,76,1,,0," +
                          (quote_all ? "true,false,true'" : "true,false,false'") + " --outdir " +
                          outdir;
    for (const auto& s : sheets) command += " " + s;
    return std::system((command + " >/dev/null 2>&1").c_str());
}

}  // namespace qumbrel::test
