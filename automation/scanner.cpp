#include "automation/scanner.h"

#include <dirent.h>
#include <sys/stat.h>

#include <algorithm>
#include <memory>

#include "automation/wildcard.h"
#include "frame/errors.h"
#include "frame/text.h"

namespace qumbrel {

namespace {

constexpr char kSep = '/';

std::string trimmed(std::string_view s) {
    while (!s.empty() && (s.front() == ' ' || s.front() == '\t')) s.remove_prefix(1);
    while (!s.empty() && (s.back() == ' ' || s.back() == '\t')) s.remove_suffix(1);
    return std::string(s);
}

// Folder listings in name order, letters without regard to case, as the recorders'
// home platform lists them; equal names differing in case keep a fixed order.
bool name_less(const std::string& a, const std::string& b) {
    const std::size_t n = std::min(a.size(), b.size());
    for (std::size_t i = 0; i < n; ++i) {
        const int x = fold_ascii(a[i]), y = fold_ascii(b[i]);
        if (x != y) return x < y;
    }
    return a.size() != b.size() ? a.size() < b.size() : a < b;
}

// One folder of the walk: its subfolders still to enter and, per pattern, its matching
// files.
struct Folder {
    std::string path;
    std::vector<std::string> subfolders;
    std::vector<std::vector<std::string>> files;
    std::size_t next = 0;
};

struct DirCloser {
    void operator()(DIR* d) const { closedir(d); }
};

// Reads one folder. A folder that cannot be opened reads as empty. Hidden files are no
// normal files and are left out; hidden folders are searched.
Folder read_folder(std::string path, const std::vector<std::string>& patterns) {
    Folder f;
    f.path = std::move(path);
    f.files.resize(patterns.size());
    std::unique_ptr<DIR, DirCloser> dir(opendir(f.path.empty() ? "/" : f.path.c_str()));
    if (!dir) return f;
    while (const dirent* e = readdir(dir.get())) {
        const std::string_view name = e->d_name;
        if (name == "." || name == "..") continue;
        unsigned char type = e->d_type;
        if (type == DT_UNKNOWN || type == DT_LNK) {
            struct stat st {};
            const std::string full = f.path + kSep + std::string(name);
            // A link to a folder is never entered (no loops); a link to a file counts
            // as the file.
            if (type == DT_UNKNOWN && lstat(full.c_str(), &st) == 0 && S_ISDIR(st.st_mode)) {
                type = DT_DIR;
            } else if (stat(full.c_str(), &st) == 0 && S_ISREG(st.st_mode)) {
                type = DT_REG;
            } else {
                continue;
            }
        }
        if (type == DT_DIR) {
            f.subfolders.emplace_back(name);
        } else if (type == DT_REG && name.front() != '.') {
            for (std::size_t i = 0; i < patterns.size(); ++i)
                if (wildcard_match(patterns[i], name)) f.files[i].emplace_back(name);
        }
    }
    std::sort(f.subfolders.begin(), f.subfolders.end(), name_less);
    for (auto& list : f.files) std::sort(list.begin(), list.end(), name_less);
    return f;
}

// A pattern with no "." behind its first character takes any ending.
std::string search_pattern(std::string pattern) {
    if (pattern.find('.', 1) == std::string::npos) pattern += '*';
    return pattern;
}

// The walk below `folder` for several patterns at once: results[i] gets what a search for
// patterns[i] alone would list. Depth first with an explicit stack, so no depth of
// folders can exhaust the call stack; a folder's files come after everything below it.
// False when the guard was cleared on the way.
bool search_tree(Program& ctx, const std::vector<std::string>& patterns, std::string folder,
                 std::vector<std::vector<std::string>>& results) {
    if (folder.empty()) folder = "/";
    while (!folder.empty() && folder.back() == kSep) folder.pop_back();
    results.resize(patterns.size());
    std::vector<Folder> stack;
    stack.push_back(read_folder(folder, patterns));
    while (!stack.empty()) {
        Folder& top = stack.back();
        if (top.next < top.subfolders.size()) {
            std::string child = top.path + kSep + top.subfolders[top.next++];
            stack.push_back(read_folder(std::move(child), patterns));
            continue;
        }
        for (std::size_t i = 0; i < patterns.size(); ++i)
            for (const auto& name : top.files[i]) results[i].push_back(top.path + kSep + name);
        stack.pop_back();
        if (stack.empty()) break;
        ctx.host.pump_events();
        if (!ctx.state<ScannerState>().searching) return false;
    }
    return true;
}

}  // namespace

std::vector<std::string> scan_patterns(const Options& opt) {
    static const std::vector<std::string> kData = {"*.ogd", "*.osd", "*.oad", "*.obd"};
    static const std::vector<std::string> kEvents = {"*.oge", "*.ose", "*.oae",
                                                     "*.obe", "*.hnd", "*.hns"};
    static const std::vector<std::string> kAll = {"*.osd", "*.ose", "*.ogd", "*.oad", "*.obd",
                                                  "*.hnd", "*.oge", "*.oae", "*.obe", "*.hns"};
    const std::vector<std::string>* table = nullptr;
    switch (opt.filetyp) {
        case 0:
            table = &kData;
            break;
        case 1:
            table = &kEvents;
            break;
        case 2:
            table = &kAll;
            break;
        case 3:
            return {trimmed(opt.filetypuserdef)};
        default:
            return {};
    }
    std::vector<std::string> out;
    for (const auto& p : *table) out.push_back(to_upper_ascii(trimmed(p)));
    return out;
}

bool fkt_scansourcefolder(Program& ctx, std::vector<std::string>& lst_files) {
    lst_files.clear();
    std::vector<std::string> patterns;
    for (const auto& p : scan_patterns(ctx.opt)) patterns.push_back(search_pattern(p));
    if (patterns.empty()) return false;
    // One walk serves every pattern: the list is that of one search per pattern in the
    // table's order, with each folder read once instead of once per pattern.
    ctx.host.pump_events();
    ScannerState& state = ctx.state<ScannerState>();
    if (state.searching) return false;
    state.searching = true;
    std::vector<std::vector<std::string>> results;
    try {
        search_tree(ctx, patterns, ctx.opt.sourcepath, results);
    } catch (...) {
        // The search runs with errors ignored.
    }
    ctx.state<ScannerState>().searching = false;
    for (auto& r : results)
        lst_files.insert(lst_files.end(), std::make_move_iterator(r.begin()),
                         std::make_move_iterator(r.end()));
    return !lst_files.empty();
}

std::string fkt_readSubfolder(Program& ctx, const std::string& pattern,
                              std::vector<std::string>& lst_files) {
    ctx.host.pump_events();
    return fkt_searchfiles(ctx, pattern, ctx.opt.sourcepath, lst_files);
}

std::string fkt_searchfiles(Program& ctx, const std::string& pattern, const std::string& folder,
                            std::vector<std::string>& lst_files) {
    ScannerState& state = ctx.state<ScannerState>();
    if (state.searching) return "";
    state.searching = true;
    try {
        fkt_searchfolder(ctx, pattern, folder, lst_files);
    } catch (...) {
        // The search runs with errors ignored.
    }
    state.searching = false;
    return std::to_string(lst_files.size()) + " item(s) found.";
}

void fkt_searchfolder(Program& ctx, std::string pattern, std::string folder,
                      std::vector<std::string>& lst_files) {
    std::vector<std::vector<std::string>> results;
    search_tree(ctx, {search_pattern(std::move(pattern))}, std::move(folder), results);
    for (auto& name : results.front()) lst_files.push_back(std::move(name));
}

void cancel_search(Program& ctx) {
    ctx.state<ScannerState>().searching = false;
}

std::string fkt_getsubfolder(const Program& ctx, const std::string& path) {
    const std::size_t sourceLength = ctx.opt.sourcepath.size();
    if (path.size() < sourceLength)
        throw VbError(errnum::kInvalidArgument, "Invalid procedure call or argument");
    const std::string rest = path.substr(sourceLength);
    // The text from its second character up to and including the last separator.
    const std::size_t last = rest.rfind(kSep);
    const long long length = last == std::string::npos ? -1 : static_cast<long long>(last);
    if (length < 0) throw VbError(errnum::kInvalidArgument, "Invalid procedure call or argument");
    return rest.substr(1, static_cast<std::size_t>(length));
}

}  // namespace qumbrel
