// Whole-process benchmark of the native workbook engine: a template made by openpyxl is
// filled with ROWS x 5 numbers below a named cell and saved, in a child process, beside
// openpyxl loading the same template, filling the same cells and saving, in the same run.
// wait4 gives each child's peak memory; the filled sheet's XML size is the yardstick.
//
//   ninja -C build bench_workbook_fill
//   build/bin/bench_workbook_fill [--rows N] [--repeat N]
#include <sys/resource.h>
#include <sys/wait.h>
#include <unistd.h>

#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <functional>
#include <string>

#include "bench/child_process.h"
#include "excel/ooxml/workbook.h"

namespace {

using qumbrel::bench::Outcome;
using qumbrel::bench::run_child;

namespace fs = std::filesystem;
using namespace qumbrel::ooxml;

int fill_native(const std::string& in, const std::string& out, long rows) {
    try {
        Workbook book = Workbook::open(in);
        const DefinedName* start = book.find_name("measdata", 0);
        if (!start) return 3;
        for (long r = 0; r < rows; ++r)
            for (std::uint32_t c = 0; c < 5; ++c)
                book.set(0, start->cell.row + static_cast<std::uint32_t>(r), start->cell.col + c,
                         static_cast<double>(r) * 0.5 + c);
        book.save_as(out);
        return 0;
    } catch (const std::exception& e) {
        std::fprintf(stderr, "%s\n", e.what());
        return 4;
    }
}

}  // namespace

int main(int argc, char** argv) {
    long rows = 200000;
    int repeat = 1;
    for (int i = 1; i + 1 < argc; i += 2) {
        const std::string key = argv[i];
        if (key == "--rows") rows = std::atol(argv[i + 1]);
        if (key == "--repeat") repeat = std::atoi(argv[i + 1]);
    }
    if (rows <= 0 || rows > 1'000'000 || repeat <= 0) {
        std::fprintf(stderr, "usage: bench_workbook_fill [--rows 1..1000000] [--repeat N]\n");
        return 2;
    }
    char pattern[] = "/tmp/bench-workbook-XXXXXX";
    const char* made = ::mkdtemp(pattern);
    if (!made) return 2;
    const std::string dir = made;
    const std::string tpl = dir + "/template.xlsx";
    {
        std::ofstream py(dir + "/make.py");
        py << "import openpyxl,sys\n"
              "from openpyxl.workbook.defined_name import DefinedName\n"
              "wb=openpyxl.Workbook(); s=wb.active; s.title='Data'; s['A1']='Report'\n"
              "wb.defined_names.append(DefinedName('measdata', attr_text='Data!$B$3'))\n"
              "wb.save(sys.argv[1])\n";
        std::ofstream fill(dir + "/fill.py");
        fill << "import openpyxl,sys\n"
                "wb=openpyxl.load_workbook(sys.argv[1]); s=wb['Data']; n=int(sys.argv[3])\n"
                "for r in range(n):\n"
                "  for c in range(5): s.cell(row=3+r, column=2+c, value=r*0.5+c)\n"
                "wb.save(sys.argv[2])\n";
    }
    if (std::system(("/usr/bin/python3 " + dir + "/make.py " + tpl).c_str()) != 0) {
        std::fprintf(stderr, "bench_workbook_fill: python3-openpyxl is needed\n");
        return 2;
    }
    Outcome ours, peer;
    for (int k = 0; k < repeat; ++k) {
        const Outcome a = run_child([&] { return fill_native(tpl, dir + "/ours.xlsx", rows); });
        const Outcome b = run_child([&] {
            const std::string n = std::to_string(rows);
            ::execl("/usr/bin/python3", "python3", (dir + "/fill.py").c_str(), tpl.c_str(),
                    (dir + "/peer.xlsx").c_str(), n.c_str(), static_cast<char*>(nullptr));
            return 127;
        });
        if (!a.ok || !b.ok) {
            std::fprintf(stderr, "bench_workbook_fill: a run failed\n");
            return 1;
        }
        if (k == 0 || a.seconds < ours.seconds) ours = a;
        if (k == 0 || b.seconds < peer.seconds) peer = b;
    }
    const double xmlMb =
        static_cast<double>(
            ZipPackage::open(dir + "/ours.xlsx").read("xl/worksheets/sheet1.xml").size()) /
        1e6;
    std::printf("%ld rows x 5 cells filled into a template (sheet XML %.1f MB)\n", rows, xmlMb);
    std::printf("%-22s %9s %12s %10s\n", "case", "seconds", "peak RSS MB", "file MB");
    std::printf("%-22s %9.2f %12.1f %10.1f\n", "native engine", ours.seconds,
                static_cast<double>(ours.maxrssKib) / 1024.0,
                static_cast<double>(fs::file_size(dir + "/ours.xlsx")) / 1e6);
    std::printf("%-22s %9.2f %12.1f %10.1f\n", "openpyxl", peer.seconds,
                static_cast<double>(peer.maxrssKib) / 1024.0,
                static_cast<double>(fs::file_size(dir + "/peer.xlsx")) / 1e6);
    std::printf("openpyxl / native: x%.1f; native peak RSS / sheet XML: %.2f\n",
                peer.seconds / ours.seconds, static_cast<double>(ours.maxrssKib) / 1024.0 / xmlMb);
    fs::remove_all(dir);
    return 0;
}
