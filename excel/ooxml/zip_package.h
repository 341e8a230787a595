#pragma once
// A workbook package (a zip archive of parts) read with libzip: parts by name, compared
// without regard to case, each read with a bound on its size; and a new package written
// from it, with the parts that changed put in, the dropped ones left out and every other
// part copied raw (its compressed bytes, so an untouched part comes out byte for byte).
//
//   ZipPackage in = ZipPackage::open("/t/report.xlsx");   // throws PackageError
//   std::string sheet = in.read("xl/worksheets/sheet1.xml");
//   in.save_as("/out/r.xlsx", {{"xl/worksheets/sheet1.xml", filled}}, {"xl/calcChain.xml"});
#include <cstdio>
#include <map>
#include <memory>
#include <set>
#include <stdexcept>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

namespace qumbrel::ooxml {

// A package that cannot be read or written, with a reason a user can act on.
struct PackageError : std::runtime_error {
    using std::runtime_error::runtime_error;
};

// A part larger than this (as the archive claims or as it inflates) is refused: no
// workbook part of a template comes near it, and a zip bomb does.
inline constexpr std::uint64_t kMaxPartBytes = 512ull << 20;

class ZipPackage {
  public:
    // Opens the archive; refuses what is no zip (an encrypted or legacy workbook is a
    // compound file), part names that climb out of the package, and oversized parts.
    static ZipPackage open(const std::string& path);

    ZipPackage(ZipPackage&&) noexcept;
    ZipPackage& operator=(ZipPackage&&) noexcept;
    ~ZipPackage();

    const std::string& path() const { return path_; }
    // Part names as stored, in archive order.
    const std::vector<std::string>& parts() const { return names_; }
    // The stored name of a part ("" when there is none), compared without regard to case.
    std::string find(std::string_view name) const;
    bool has(std::string_view name) const { return !find(name).empty(); }
    // The part's bytes; PackageError when it is missing, too large or damaged.
    std::string read(std::string_view name) const;

    // Writes the package to `out`: `[Content_Types].xml` first, `replaced` parts (stored
    // name or new name -> bytes) deflated, `removed` parts left out, the rest copied raw.
    // The file appears complete or not at all, and is synced.
    // `spilled` parts are read from their (rewound) files, which the archive closes.
    using SpilledParts = std::map<std::string, std::unique_ptr<std::FILE, int (*)(std::FILE*)>>;
    void save_as(const std::string& out, const std::map<std::string, std::string>& replaced,
                 const std::set<std::string>& removed, SpilledParts spilled = {}) const;

    // The uncompressed size the archive at `path` gives its part `name` (no checks, no
    // reading); 0 when there is no such part.
    static std::uint64_t stored_size(const std::string& path, std::string_view name);

    // A new package at `path` of these parts, in this order, deflated; complete or not at
    // all, and synced.
    static void write_new(const std::string& path,
                          const std::vector<std::pair<std::string, std::string>>& parts);

  private:
    struct Archive;
    ZipPackage(std::string path, std::unique_ptr<Archive> archive);

    std::string path_;
    std::unique_ptr<Archive> archive_;
    std::vector<std::string> names_;
    std::map<std::string, std::size_t> index_;  // lower-case name -> archive index
};

// Lower-case ASCII, for part names.
std::string lower_name(std::string_view name);

}  // namespace qumbrel::ooxml
