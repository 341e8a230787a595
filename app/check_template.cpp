#include "app/check_template.h"

#include <cctype>
#include <cstdio>

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

}  // namespace

int check_template(const std::string& path) {
    try {
        const ooxml::Workbook book = ooxml::Workbook::open(path);
        const auto& sheets = book.sheets();
        std::printf("%s: %zu sheet(s)\n", path.c_str(), sheets.size());
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
        return 0;
    } catch (const ooxml::PackageError& e) {
        std::fprintf(stderr, "qumbrel: %s\n", e.what());
        return 1;
    }
}

}  // namespace qumbrel
