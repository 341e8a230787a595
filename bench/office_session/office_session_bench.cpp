// N conversions of a workbook between .xlsx and .xls through the LibreOffice binding, as a
// report with a legacy template does them (in, back, and a macro or a print between):
// one OfficeHelper serving all of them with one soffice, beside the helper started for each
// operation with its own soffice (how the binding worked before), in the same run.
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <string>

#include "bench/child_process.h"
#include "excel/office/office_helper.h"

namespace {

namespace fs = std::filesystem;
using qumbrel::OfficeHelper;
using qumbrel::bench::Outcome;
using qumbrel::bench::run_child;

// The file of operation k: .xlsx and .xls by turns.
std::string step_file(const std::string& dir, int k) {
    return dir + "/step" + std::to_string(k) + (k % 2 ? ".xls" : ".xlsx");
}

}  // namespace

int main(int argc, char** argv) {
    int ops = 6;
    int repeat = 1;
    for (int i = 1; i + 1 < argc; i += 2) {
        const std::string key = argv[i];
        if (key == "--ops") ops = std::atoi(argv[i + 1]);
        if (key == "--repeat") repeat = std::atoi(argv[i + 1]);
    }
    if (ops <= 0 || ops > 100 || repeat <= 0) {
        std::fprintf(stderr, "usage: bench_office_session [--ops 1..100] [--repeat N]\n");
        return 2;
    }
    if (const std::string why = OfficeHelper().missing(); !why.empty()) {
        std::fprintf(stderr, "bench_office_session: %s\n", why.c_str());
        return 2;
    }
    char pattern[] = "/tmp/bench-office-XXXXXX";
    const char* made = ::mkdtemp(pattern);
    if (!made) return 2;
    const std::string dir = made;
    const std::string profile = dir + "/profile";
    fs::create_directories(profile);
    const std::string start = dir + "/step0.xlsx";
    if (std::system(("/usr/bin/python3 -c \"import openpyxl,sys; wb=openpyxl.Workbook(); "
                     "s=wb.active; [s.cell(row=r, column=c, value=r*c) for r in range(1,501) "
                     "for c in range(1,11)]; wb.save(sys.argv[1])\" " +
                     start)
                        .c_str()) != 0) {
        std::fprintf(stderr, "bench_office_session: python3-openpyxl is needed\n");
        return 2;
    }
    const std::string helper = qumbrel::office_helper_path();
    Outcome kept, each;
    for (int r = 0; r < repeat; ++r) {
        const Outcome a = run_child([&] {
            OfficeHelper office;
            for (int k = 1; k <= ops; ++k)
                if (office.run({"convert", step_file(dir, k - 1), step_file(dir, k)}).exitCode != 0)
                    return 1;
            return 0;
        });
        const Outcome b = run_child([&] {
            for (int k = 1; k <= ops; ++k) {
                const Outcome one = run_child([&] {
                    const std::string in = step_file(dir, k - 1), out = step_file(dir, k);
                    ::execl("/usr/bin/python3", "python3", helper.c_str(), "--profile",
                            profile.c_str(), "convert", in.c_str(), out.c_str(),
                            static_cast<char*>(nullptr));
                    return 127;
                });
                if (!one.ok) return 1;
            }
            return 0;
        });
        if (!a.ok || !b.ok) {
            std::fprintf(stderr, "bench_office_session: a run failed\n");
            return 1;
        }
        if (r == 0 || a.seconds < kept.seconds) kept = a;
        if (r == 0 || b.seconds < each.seconds) each = b;
    }
    std::printf("%d conversions .xlsx <-> .xls (500 x 10 cells) through the LibreOffice helper\n",
                ops);
    std::printf("%-30s %9s %12s\n", "case", "seconds", "s / op");
    std::printf("%-30s %9.2f %12.2f\n", "one soffice for all (now)", kept.seconds,
                kept.seconds / ops);
    std::printf("%-30s %9.2f %12.2f\n", "one soffice per operation", each.seconds,
                each.seconds / ops);
    std::printf("per operation / kept: x%.1f\n", each.seconds / kept.seconds);
    fs::remove_all(dir);
    return 0;
}
