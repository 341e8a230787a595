#pragma once
// The LibreOffice binding: what the native workbook engine cannot do (legacy .xls/.xlt
// workbooks, the workbook macro, printing workbooks) is done by tools/office/qumbrel-office,
// a Python-UNO helper, run as a child in a process group of its own with a private
// LibreOffice profile. It serves every operation of this object's life with one soffice
// (started at the first), each within a time limit; at the limit the whole group (the
// soffice included) is killed and the next operation starts a new one. Nothing of
// LibreOffice is linked into qumbrel, so it stays optional and a hang or crash of the
// office suite is contained.
//
//   OfficeHelper office;                         // a private profile for this session
//   if (!office.available()) ...                 // LibreOffice or python3-uno missing
//   OfficeResult r = office.run({"convert", "/t/a.xls", "/t/.a.xlsm"});
#include <chrono>
#include <string>
#include <vector>

namespace qumbrel {

struct OfficeResult {
    int exitCode = -1;  // the helper's; -1 when it could not be started
    bool timedOut = false;
    std::string out;  // its stdout: "warning: ..." lines
    std::string err;  // its stderr: why it failed
};

// The helper's exit codes.
inline constexpr int kOfficeNoMacro = 3;
inline constexpr int kOfficeMacroFailed = 4;

class OfficeHelper {
  public:
    OfficeHelper();
    ~OfficeHelper();  // ends the helper and its soffice, removes the private profile
    OfficeHelper(const OfficeHelper&) = delete;
    OfficeHelper& operator=(const OfficeHelper&) = delete;

    // LibreOffice (soffice), python3-uno and the helper are installed.
    bool available() const;
    // What is missing, for messages: "" when available.
    std::string missing() const;

    // One operation of the helper ("convert IN OUT", "macro FILE NAME", "pdf FILE OUT
    // [SHEET]"); waits at most the time limit (QUMBREL_OFFICE_TIMEOUT seconds, 300 by
    // default). exitCode is the operation's code as the helper's usage lists them.
    OfficeResult run(const std::vector<std::string>& args);
    // The helper is running (between operations: with its soffice).
    bool running() const { return pid_ > 0; }
    // The private profile (empty before the first operation).
    const std::string& profile() const { return profile_; }

    std::chrono::seconds limit() const { return limit_; }

  private:
    // Starts `helper --profile DIR serve`; an error text, or "".
    std::string start();
    // Kills the helper's whole group and forgets it.
    void stop();

    std::string helper_;
    std::string profile_;  // made on the first run
    std::chrono::seconds limit_;
    int pid_ = -1;
    int in_ = -1;          // requests (a socket: a helper gone is an error, not SIGPIPE)
    int out_ = -1;         // replies
    int err_ = -1;         // its own complaints (a Python error)
    std::string pending_;  // reply bytes after the last full line
};

// Where the helper is: $QUMBREL_OFFICE_HELPER, beside the running program, or in the
// build tree.
std::string office_helper_path();

}  // namespace qumbrel
