#pragma once
// The folder scanner of the automatic mode: every file below sourcepath that matches the
// patterns of the option filetyp, pattern after pattern, deepest folders first.
#include <string>
#include <vector>

#include "frame/context.h"

namespace qumbrel {

// The scanner's own run state: the guard of a running search.
struct ScannerState {
    bool searching = false;
};

// The patterns of `filetyp`, each as the search uses it (upper-cased and trimmed; the
// user pattern of kind 3 only trimmed). Empty for an unknown kind.
std::vector<std::string> scan_patterns(const Options& opt);

// Clears `lst_files`, runs the patterns over sourcepath, true when anything was found.
// The patterns share one walk; the list is ordered pattern by pattern as if each had its
// own. While another search runs it finds nothing.
bool fkt_scansourcefolder(Program& ctx, std::vector<std::string>& lst_files);

// Lets pending events run, then searches sourcepath for one pattern.
std::string fkt_readSubfolder(Program& ctx, const std::string& pattern,
                              std::vector<std::string>& lst_files);

// The search under the guard: returns at once ("") while another search runs, else
// "<lines> item(s) found.".
std::string fkt_searchfiles(Program& ctx, const std::string& pattern, const std::string& folder,
                            std::vector<std::string>& lst_files);

// Appends the matching files below `folder`: within each folder its subfolders first (in
// name order), then its own files. Directories that are symbolic links are not entered;
// hidden directories are. Unreadable folders add nothing. Stops when the guard is cleared.
void fkt_searchfolder(Program& ctx, std::string pattern, std::string folder,
                      std::vector<std::string>& lst_files);

// Clears the guard: a running search stops after the subfolder in hand.
void cancel_search(Program& ctx);

// The folder of a found file relative to sourcepath, with a closing separator; "" for a
// file directly in sourcepath. With a sourcepath that ends in a separator the first
// character of the folder is lost and a file directly in it throws VbError 5.
std::string fkt_getsubfolder(const Program& ctx, const std::string& path);

}  // namespace qumbrel
