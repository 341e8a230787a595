#include "tools/recsim/cli.h"

#include <algorithm>
#include <charconv>
#include <fstream>
#include <optional>
#include <ostream>
#include <sstream>

#include "reclib/writer.h"
#include "tools/recsim/scenario.h"

namespace qumbrel::recsim {

namespace {

constexpr std::size_t kMaxScenarioBytes = 512u << 20;

struct CommandLine {
    reclib::SimOptions sim;
    std::optional<std::string> family, kind, start;
    std::optional<std::int64_t> channels, mathChannels, samples, intervalMs, alarms, messages,
        decimals, seed;
    bool batch = false, damaged = false, help = false;
    std::string scenario, out;
};

bool number(std::string_view text, std::int64_t& v) {
    const auto* end = text.data() + text.size();
    const auto r = std::from_chars(text.data(), end, v);
    return r.ec == std::errc{} && r.ptr == end;
}

// Fills `cl` from the arguments; a message when they are wrong.
std::string parse(const std::vector<std::string>& args, CommandLine& cl) {
    for (std::size_t i = 0; i < args.size(); ++i) {
        std::string a = args[i];
        std::string value;
        bool hasValue = false;
        if (const auto eq = a.find('='); a.rfind("--", 0) == 0 && eq != std::string::npos) {
            value = a.substr(eq + 1);
            a.resize(eq);
            hasValue = true;
        }
        auto need = [&](std::string& v) -> bool {
            if (hasValue) {
                v = value;
                return true;
            }
            if (i + 1 >= args.size()) return false;
            v = args[++i];
            return true;
        };
        auto num = [&](std::optional<std::int64_t>& slot) -> std::string {
            std::string v;
            std::int64_t n = 0;
            if (!need(v) || !number(v, n)) return a + " needs a whole number";
            slot = n;
            return {};
        };
        std::string e;
        if (a == "--help" || a == "-h") {
            cl.help = true;
        } else if (a == "--family") {
            std::string v;
            if (!need(v)) return "--family needs VT, VU, VQ, KL or HN";
            cl.family = v;
        } else if (a == "--kind") {
            std::string v;
            if (!need(v)) return "--kind needs event, display or tlog";
            cl.kind = v;
        } else if (a == "--start") {
            std::string v;
            if (!need(v)) return "--start needs \"YYYY-MM-DD HH:MM:SS\"";
            cl.start = v;
        } else if (a == "--channels") {
            e = num(cl.channels);
        } else if (a == "--math-channels") {
            e = num(cl.mathChannels);
        } else if (a == "--samples") {
            e = num(cl.samples);
        } else if (a == "--interval-ms") {
            e = num(cl.intervalMs);
        } else if (a == "--alarms") {
            e = num(cl.alarms);
        } else if (a == "--messages") {
            e = num(cl.messages);
        } else if (a == "--decimals") {
            e = num(cl.decimals);
        } else if (a == "--seed") {
            e = num(cl.seed);
        } else if (a == "--batch") {
            cl.batch = true;
        } else if (a == "--damaged") {
            cl.damaged = true;
        } else if (a == "--scenario") {
            if (!need(cl.scenario)) return "--scenario needs a JSON file";
        } else if (a == "--out" || a == "-o") {
            if (!need(cl.out)) return "--out needs a file name";
        } else {
            return "unknown argument '" + args[i] + "' (see --help)";
        }
        if (!e.empty()) return e;
    }
    return {};
}

// Flags given on the command line win over the scenario's "simulate" values.
std::string apply_flags(const CommandLine& cl, reclib::SimOptions& o) {
    if (cl.family && !reclib::parse_family(*cl.family, o.family)) {
        return "--family must be VT, VU, VQ, KL or HN";
    }
    if (cl.kind) {
        if (*cl.kind == "event") {
            o.kind = reclib::Kind::Event;
        } else if (*cl.kind == "display") {
            o.kind = reclib::Kind::Display;
        } else if (*cl.kind == "tlog") {
            o.kind = reclib::Kind::Tlog;
        } else {
            return "--kind must be event, display or tlog";
        }
    }
    if (cl.start && !reclib::parse_time(*cl.start, o.startSeconds)) {
        return "--start must be \"YYYY-MM-DD HH:MM:SS\" between 1970 and 2037";
    }
    auto narrow = [](const std::optional<std::int64_t>& v, std::int32_t& slot) {
        if (v) slot = static_cast<std::int32_t>(std::clamp<std::int64_t>(*v, -1, INT32_MAX));
    };
    narrow(cl.channels, o.channels);
    narrow(cl.mathChannels, o.mathChannels);
    narrow(cl.intervalMs, o.intervalMs);
    narrow(cl.alarms, o.alarms);
    narrow(cl.messages, o.messages);
    narrow(cl.decimals, o.decimals);
    if (cl.samples) o.samples = *cl.samples;
    if (cl.seed) o.seed = static_cast<std::uint64_t>(*cl.seed);
    if (cl.batch) o.batch = true;
    return {};
}

bool read_text(const std::string& path, std::string& text, std::string& error) {
    std::ifstream in(path, std::ios::binary);
    if (!in) {
        error = "cannot open scenario " + path;
        return false;
    }
    in.seekg(0, std::ios::end);
    const auto size = in.tellg();
    if (size < 0 || static_cast<std::size_t>(size) > kMaxScenarioBytes) {
        error = "scenario " + path + " is larger than 512 MiB";
        return false;
    }
    in.seekg(0);
    text.resize(static_cast<std::size_t>(size));
    in.read(text.data(), size);
    return static_cast<bool>(in);
}

}  // namespace

const char* help_text() {
    return R"(Usage: recsim [options] --out FILE
Writes a recorder file in the reference format (docs/recorder-format.md).
The same options always give the same bytes.

  --family VT|VU|VQ|KL|HN   recorder family (default VT)
  --kind event|display|tlog file kind (default event; tlog: KL only)
  --channels N              measuring channels, numbered from 1 (default 4;
                            at most 30 in VT, VQ, KL and 256 in VU, HN)
  --math-channels N         math channels, numbered from 31 (default 0, at most 30)
  --samples N               samples per channel (default 100, at most 20000000;
                            channels times samples at most 100000000)
  --interval-ms N           sampling interval in milliseconds (default 1000)
  --start "YYYY-MM-DD HH:MM:SS"  time of the first sample, 1970 to 2037: times are
                            32-bit seconds (default 2023-11-14 22:13:20)
  --alarms N                alarm records (default 0)
  --messages N              message records (marks in HN) (default 0)
  --batch                   write a batch block (names, number, comments)
  --decimals N              decimals of every channel, 0 to 6 (default 1)
  --damaged                 store a wrong check sum: the libraries report damage
  --seed N                  seed of the generator (default 1)
  --scenario FILE           JSON scenario: a "simulate" base, then "header",
                            "lists", "channels" and "times" set over it
                            (docs/recsim.md); flags given here win over its
                            "simulate" values
  --out FILE                the file to write (required)
  --help                    this text

Exit status: 0 written, 1 bad scenario or write failure, 2 bad command line.
)";
}

int run(const std::vector<std::string>& args, std::ostream& out, std::ostream& err) {
    CommandLine cl;
    if (std::string e = parse(args, cl); !e.empty()) {
        err << "recsim: " << e << "\n";
        return 2;
    }
    if (cl.help) {
        out << help_text();
        return 0;
    }
    if (cl.out.empty()) {
        err << "recsim: --out FILE is required (see --help)\n";
        return 2;
    }
    try {
        nlohmann::json scenario = nlohmann::json::object();
        if (!cl.scenario.empty()) {
            std::string text, e;
            if (!read_text(cl.scenario, text, e)) {
                err << "recsim: " << e << "\n";
                return 1;
            }
            scenario = nlohmann::json::parse(text);
            read_sim_options(scenario, cl.sim);
            if (scenario.contains("damaged") && scenario["damaged"].is_boolean()) {
                cl.damaged = cl.damaged || scenario["damaged"].get<bool>();
            }
        }
        if (std::string e = apply_flags(cl, cl.sim); !e.empty()) {
            err << "recsim: " << e << "\n";
            return 2;
        }
        if (std::string e = reclib::check(cl.sim); !e.empty()) {
            err << "recsim: " << e << "\n";
            return 2;
        }
        reclib::RecorderFile file = reclib::simulate(cl.sim);
        apply_scenario(scenario, file);
        std::string error;
        if (!reclib::write_file(file, cl.out, {.damaged = cl.damaged}, &error)) {
            err << "recsim: " << error << "\n";
            return 1;
        }
    } catch (const std::exception& e) {
        err << "recsim: " << e.what() << "\n";
        return 1;
    }
    return 0;
}

}  // namespace qumbrel::recsim
