#pragma once
// Helpers of the sheet, sink and reader tests: hex dumps, a strict BIFF2 record walker, a
// sample sheet and xlrd.
#include <cerrno>
#include <cstdint>
#include <cstdio>
#include <map>
#include <string>
#include <vector>

#include "reports/excelfile.h"
#include "reports/output.h"
#include "tests/support/test_support.h"

namespace qumbrel::test {

template <class Bytes>
std::string hex(const Bytes& b) {
    std::string s;
    for (const auto c : b) {
        const auto u = static_cast<unsigned char>(c);
        if (!s.empty()) s += ' ';
        s += "0123456789ABCDEF"[u >> 4];
        s += "0123456789ABCDEF"[u & 15];
    }
    return s;
}

struct Record {
    std::uint16_t id = 0;
    std::string data;
};

// Walks a BIFF2 stream strictly: the exact BOF, every length inside the file and right for
// its record (counted strings by their length byte), EOF last with nothing after it.
// Returns the records between BOF and EOF; `error` says what was wrong.
inline std::vector<Record> walk_biff2(const std::string& file, std::string& error) {
    std::vector<Record> out;
    const auto fail = [&](std::string why) {
        error = std::move(why);
        return out;
    };
    if (file.compare(0, 8, std::string("\x09\x00\x04\x00\x02\x00\x0A\x00", 8)) != 0)
        return fail("no BOF 09 00 04 00 02 00 0A 00 at the start");
    const auto byte = [](const std::string& s, std::size_t i) { return std::uint8_t(s[i]); };
    // Record id to its size, or to where the length byte of its closing string stands.
    static const std::map<int, std::size_t> fixed{{2, 9},  {3, 15}, {8, 16}, {36, 4},
                                                  {18, 2}, {31, 2}, {37, 2}, {43, 2},
                                                  {38, 8}, {39, 8}, {40, 8}, {41, 8}};
    static const std::map<int, std::size_t> counted{{4, 7}, {49, 4}, {20, 0}, {21, 0}, {30, 0}};
    for (std::size_t at = 8;;) {
        if (at + 4 > file.size())
            return fail("file ends without EOF at offset " + std::to_string(at));
        const std::uint16_t id = byte(file, at) | byte(file, at + 1) << 8;
        const std::size_t len = byte(file, at + 2) | byte(file, at + 3) << 8;
        if (at + 4 + len > file.size())
            return fail("record " + std::to_string(id) + " overruns the file");
        Record r{id, file.substr(at + 4, len)};
        at += 4 + len;
        if (id == 10)
            return fail(at != file.size() ? "bytes after EOF" : len ? "EOF with data" : "");
        const auto f = fixed.find(id);
        const auto c = counted.find(id);
        const bool ok =
            id == 47 || (f != fixed.end() && f->second == len) ||
            (c != counted.end() && len > c->second &&
             byte(r.data, c->second) + c->second + 1 == len) ||
            (id == 27 && len >= 2 && len == 2 + 2u * (byte(r.data, 0) | byte(r.data, 1) << 8));
        if (!ok)
            return fail("record " + std::to_string(id) + " has a bad length " +
                        std::to_string(len));
        out.push_back(std::move(r));
    }
}

// A sheet with every kind of cell the generators write, for the independent readers.
inline std::int16_t write_sample_sheet(ExcelFile& x, const std::string& path) {
    x.CreateFile(path);
    x.SetFont("Arial", 10, 0);
    x.WriteValue(2, 0, 1, 0, 1, 1, std::string("Recorder"), 0);
    x.WriteValue(2, 0, 1, 0, 1, 2, std::string("VT210 \xE2\x82\xAC \xC2\xB0\x43"), 0);  // € °C
    x.WriteValue(2, 0, 1, 0, 2, 1, std::string("100"), 0);  // a label, though numeric
    x.WriteValue(0, 0, 3, 0, 2, 2, std::int32_t{42}, 0);
    x.WriteValue(1, 0, 3, 0, 3, 1, 21.5, 4);
    x.WriteValue(1, 0, 3, 0, 3, 2, 45000.5, 12);
    x.WriteValue(1, 0, 3, 0, 3, 3, 1.0 / 3.0, 4);
    x.WriteValue(1, 0, 3, 0, 3, 4, -1234567.125, 0);
    x.WriteValue(2, 0, 1, 0, 4, 1, std::string(255, 'z'), 0);
    x.WriteValue(2, 0, 1, 0, 4, 2, std::string(256, 'y'), 0);  // left out
    x.WriteValue(2, 0, 1, 0, 4, 3, std::string(), 0);
    for (int row : {50, 10, 30}) x.InsertHorizPageBreak(row);
    return x.CloseFile();
}

// File output whose n-th write fails as a full disk does.
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

  private:
    int failAt_;
    int writes_ = 0;
};

// tests/reports/xlrd_dump.py over a sheet, by Debian's python3 (python3-xlrd, not a pyenv
// python): one line per cell, then the page breaks.
inline std::string xlrd_dump(const std::string& path) {
    const std::string command = std::string("/usr/bin/python3 ") + QUMBREL_SOURCE_DIR +
                                "/tests/reports/xlrd_dump.py '" + path + "' 2>&1";
    std::string out;
    FILE* p = ::popen(command.c_str(), "r");
    char buf[4096];
    while (std::size_t n = p ? std::fread(buf, 1, sizeof buf, p) : 0) out.append(buf, n);
    EXPECT_TRUE(p && ::pclose(p) == 0) << out;
    return out;
}

}  // namespace qumbrel::test
