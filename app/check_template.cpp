#include "app/check_template.h"

#include <unistd.h>
#include <cctype>
#include <cstdio>
#include <cstdlib>

#include <filesystem>

#include "excel/office/office_helper.h"
#include "excel/ooxml/sheet_filler.h"
#include "excel/ooxml/workbook.h"

namespace qumbrel {

namespace {

// The sheet number n of a name "qmb<n>...", or 0.
std::size_t qmb_sheet(const std::string& name) {
    if (name.size() < 4 || (name.compare(0, 3, "qmb") != 0 && name.compare(0, 3, "QMB") != 0))
        return 0;
    std::size_t n = 0, i = 3;
    while (i < name.size() && std::isdigit(static_cast<unsigned char>(name[i])) && i < 9)
        n = n * 10 + static_cast<std::size_t>(name[i++] - '0');
    return i > 3 && i < name.size() ? n : 0;
}

bool legacy(const std::string& path) {
    std::string ext = std::filesystem::path(path).extension().string();
    for (char& c : ext) c = static_cast<char>(std::tolower(static_cast<unsigned char>(c)));
    return ext == ".xls" || ext == ".xlt";
}

// Which engine serves which workbooks on this machine.
void print_engines(const OfficeHelper& office) {
    std::printf("engines:\n  .xlsx .xlsm .xltx .xltm\tnative\n");
    if (office.available())
        std::printf("  .xls .xlt, macro Qumbrel, printing\tLibreOffice binding\n");
    else
        std::printf("  .xls .xlt, macro Qumbrel, printing\tnot available: %s\n",
                    office.missing().c_str());
}

}  // namespace

int check_template(const std::string& path) {
    OfficeHelper office;
    // A legacy workbook is read as the engine will fill it: converted by LibreOffice.
    std::string readable = path;
    struct Remove {
        std::string file;
        ~Remove() {
            std::error_code ec;
            if (!file.empty())
                std::filesystem::remove(file, ec);  // our scratch in /tmp: no file layer
        }
    } converted;
    if (legacy(path)) {
        if (!office.available()) {
            std::fprintf(stderr,
                         "qumbrel: %s: .xls and .xlt templates need the LibreOffice binding: "
                         "%s\n",
                         path.c_str(), office.missing().c_str());
            print_engines(office);
            return 1;
        }
        char scratch[] = "/tmp/qumbrel-check-XXXXXX";
        if (const int fd = ::mkstemp(scratch); fd >= 0) ::close(fd);
        converted.file = std::string(scratch) + ".xlsm";
        std::filesystem::rename(scratch, converted.file);  // our scratch in /tmp: no file layer
        const OfficeResult r = office.run({"convert", path, converted.file});
        if (r.exitCode != 0) {
            std::fprintf(stderr, "qumbrel: %s: %s\n", path.c_str(),
                         r.timedOut ? r.err.c_str() : r.err.substr(0, r.err.find('\n')).c_str());
            return 1;
        }
        readable = converted.file;
    }
    try {
        const ooxml::Workbook book = ooxml::Workbook::open(readable);
        const auto& sheets = book.sheets();
        std::printf("%s: %zu sheet(s)%s\n", path.c_str(), sheets.size(),
                    readable != path ? " (read through the LibreOffice binding)" : "");
        for (std::size_t i = 0; i < sheets.size(); ++i)
            std::printf("  sheet %zu: %s%s\n", i + 1, sheets[i].name.c_str(),
                        sheets[i].worksheet ? "" : " (no worksheet: takes no values)");
        std::size_t usable = 0;
        std::printf("keywords:\n");
        for (const auto& d : book.names()) {
            if (!d.skipped.empty()) continue;
            ++usable;
            const std::string where = sheets[*d.sheet].name + "!" +
                                      ooxml::column_letters(d.cell.col) +
                                      std::to_string(d.cell.row);
            std::string note;
            if (d.scope) note = " (scoped to " + sheets[*d.scope].name + ")";
            if (const std::size_t n = qmb_sheet(d.name); n > 0 && n != *d.sheet + 1)
                note += " (a list under this name is looked up on sheet " + std::to_string(n) +
                        " only: it will not be found)";
            else if (n == 0 && *d.sheet != 0)
                note +=
                    " (as a list keyword it is looked up on the first sheet only; name it "
                    "qmb" +
                    std::to_string(*d.sheet + 1) + d.name + " instead)";
            std::printf("  %s\t%s%s\n", d.name.c_str(), where.c_str(), note.c_str());
        }
        if (usable == 0) std::printf("  none: a report is a copy of the template\n");
        bool anySkipped = false;
        for (const auto& d : book.names()) {
            if (d.skipped.empty()) continue;
            if (!anySkipped) std::printf("skipped names:\n");
            anySkipped = true;
            std::printf("  %s\t%s\n", d.name.c_str(), d.skipped.c_str());
        }
        print_engines(office);
        return 0;
    } catch (const ooxml::PackageError& e) {
        std::fprintf(stderr, "qumbrel: %s\n", e.what());
        return 1;
    }
}

}  // namespace qumbrel
