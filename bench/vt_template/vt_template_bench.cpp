// Whole-process benchmark of the VT template report: `qumbrel --headless` filling a
// template (made by openpyxl, with measdate, meastime and every channel's ch<N>data) from a
// VT event file made by recsim, beside openpyxl loading the same template, filling the same
// cells with the same number of values and saving, in the same run. Every run is a child
// process; wait4 gives its peak memory, and the filled sheet's XML size is the yardstick.
//
//   ninja -C build bench_vt_template qumbrel recsim reclib_libraries qumbrel_languages
//   build/bin/bench_vt_template [--samples N[,N...]] [--channels 1..30] [--no-peer]
//
// The peer only writes numbers it makes itself: it reads no recorder file, which favours it.
// Not part of ctest: 1,000,000 samples x 30 channels take a minute and a few GB of /tmp.
#include <fcntl.h>
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
#include <vector>

#include "bench/child_process.h"
#include "excel/ooxml/zip_package.h"

namespace {

using qumbrel::bench::Outcome;
using qumbrel::bench::run_child;

namespace fs = std::filesystem;

void quiet() {
    const int devnull = ::open("/dev/null", O_WRONLY);
    if (devnull >= 0) {
        ::dup2(devnull, 1);
        ::dup2(devnull, 2);
    }
}

std::vector<long> parse_list(const char* text) {
    std::vector<long> out;
    for (const char* p = text; *p;) {
        out.push_back(std::atol(p));
        while (*p && *p != ',') ++p;
        if (*p == ',') ++p;
    }
    return out;
}

}  // namespace

int main(int argc, char** argv) {
    std::vector<long> sizes{100000};
    int channels = 10;
    bool peer = true;
    for (int i = 1; i < argc; ++i) {
        const std::string key = argv[i];
        const char* value = i + 1 < argc ? argv[i + 1] : "";
        if (key == "--samples") {
            sizes = parse_list(value);
            ++i;
        } else if (key == "--channels") {
            channels = std::atoi(value);
            ++i;
        } else if (key == "--no-peer") {
            peer = false;
        } else {
            sizes.clear();
        }
    }
    bool sizesOk = !sizes.empty();
    for (long n : sizes) sizesOk = sizesOk && n > 0 && n <= 1'000'000;
    if (!sizesOk || channels <= 0 || channels > 30) {
        std::fprintf(stderr,
                     "usage: bench_vt_template [--samples N[,N...]] [--channels 1..30] "
                     "[--no-peer]\n");
        return 2;
    }
    const std::string bin = fs::canonical("/proc/self/exe").parent_path().string();
    const std::string qumbrel = bin + "/qumbrel", recsim = bin + "/recsim";
    for (const auto& tool : {qumbrel, recsim})
        if (!fs::exists(tool)) {
            std::fprintf(stderr, "bench_vt_template: %s is missing\n", tool.c_str());
            return 2;
        }
    ::setenv("QUMBREL_RECLIB_PATH", bin.c_str(), 1);
    ::setenv("QUMBREL_REGION", "en-US", 1);
    char pattern[] = "/tmp/bench-vttemplate-XXXXXX";
    const char* made = ::mkdtemp(pattern);
    if (!made) return 2;
    const std::string dir = made;
    const std::string tpl = dir + "/template.xlsx";
    {
        std::ofstream py(dir + "/make.py");
        py << "import openpyxl,sys\n"
              "from openpyxl.workbook.defined_name import DefinedName\n"
              "wb=openpyxl.Workbook(); s=wb.active; s.title='Data'; s['A1']='Report'\n"
              "def name(n,r): wb.defined_names.append(DefinedName(n, attr_text=r))\n"
              "name('filename','Data!$B$1'); name('measdate','Data!$A$3')\n"
              "name('meastime','Data!$B$3')\n"
              "for c in range(1,int(sys.argv[2])+1):\n"
              "  name('ch%ddata'%c, 'Data!$%s$3'%openpyxl.utils.get_column_letter(c+2))\n"
              "wb.save(sys.argv[1])\n";
        std::ofstream fill(dir + "/fill.py");
        fill << "import openpyxl,sys\n"
                "wb=openpyxl.load_workbook(sys.argv[1]); s=wb['Data']\n"
                "n,c=int(sys.argv[3]),int(sys.argv[4])\n"
                "s['B1']='bench.oge'\n"
                "for r in range(n):\n"
                "  s.cell(row=3+r,column=1,value='11/14/2023')\n"
                "  s.cell(row=3+r,column=2,value='10:13:20 PM.00')\n"
                "  for k in range(c): s.cell(row=3+r, column=3+k, value=r*0.1+k)\n"
                "wb.save(sys.argv[2])\n";
        std::ofstream ini(dir + "/qumbrel.ini");
        ini << "[file]\ntargetpath=" << dir << "/out\nbinfilemodus=2\ntargetformat=2\n"
            << "excelsourcefile=" << tpl << "\nlanguage=" << bin
            << "/english.lng\n[userdefined]\nChannels=ALL\n";
    }
    fs::create_directories(dir + "/out");
    fs::create_directories(dir + "/home");
    fs::rename(dir + "/qumbrel.ini", dir + "/home/qumbrel.ini");
    if (std::system(("/usr/bin/python3 " + dir + "/make.py " + tpl + " " + std::to_string(channels))
                        .c_str()) != 0) {
        std::fprintf(stderr, "bench_vt_template: python3-openpyxl is needed\n");
        return 2;
    }
    std::printf("VT event file, %d channels, into a template with every ch<N>data\n", channels);
    std::printf("%-10s %-10s %9s %12s %12s %9s\n", "samples", "case", "seconds", "peak RSS MB",
                "sheet XML MB", "RSS/XML");
    int rc = 0;
    for (const long n : sizes) {
        const std::string src = dir + "/bench.oge";
        const std::string cmd = recsim + " --family VT --kind event --channels " +
                                std::to_string(channels) + " --samples " + std::to_string(n) +
                                " --seed 1 --out " + src + " >/dev/null";
        if (std::system(cmd.c_str()) != 0) return 2;
        const Outcome ours = run_child([&] {
            quiet();
            ::execl(qumbrel.c_str(), qumbrel.c_str(), "--headless", "--quiet", "--home",
                    (dir + "/home").c_str(), src.c_str(), static_cast<char*>(nullptr));
            return 127;
        });
        const std::string report = dir + "/out/bench.xlsx";
        if (!ours.ok || !fs::exists(report)) {
            std::fprintf(stderr, "bench_vt_template: qumbrel failed (see %s/home/error.log)\n",
                         dir.c_str());
            return 1;
        }
        const double xmlMb = static_cast<double>(qumbrel::ooxml::ZipPackage::stored_size(
                                 report, "xl/worksheets/sheet1.xml")) /
                             1048576.0;
        const double rssMb = static_cast<double>(ours.maxrssKib) / 1024.0;
        std::printf("%-10ld %-10s %9.2f %12.1f %12.1f %9.2f\n", n, "qumbrel", ours.seconds, rssMb,
                    xmlMb, rssMb / xmlMb);
        std::fflush(stdout);
        fs::remove(report);
        if (!peer) continue;
        const Outcome theirs = run_child([&] {
            const std::string rows = std::to_string(n), cols = std::to_string(channels);
            ::execl("/usr/bin/python3", "python3", (dir + "/fill.py").c_str(), tpl.c_str(),
                    (dir + "/peer.xlsx").c_str(), rows.c_str(), cols.c_str(),
                    static_cast<char*>(nullptr));
            return 127;
        });
        if (!theirs.ok) {
            rc = 1;
            continue;
        }
        std::printf("%-10ld %-10s %9.2f %12.1f %12s %9s   openpyxl / qumbrel: x%.1f\n", n,
                    "openpyxl", theirs.seconds, static_cast<double>(theirs.maxrssKib) / 1024.0, "",
                    "", theirs.seconds / ours.seconds);
        std::fflush(stdout);
        fs::remove(dir + "/peer.xlsx");
    }
    fs::remove_all(dir);
    return rc;
}
