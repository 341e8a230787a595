#pragma once
// The LibreOffice binding: what the native workbook engine cannot do (legacy .xls/.xlt
// workbooks, the workbook macro, printing workbooks) is done by tools/office/qumbrel-office,
// a Python-UNO helper, run as a child in a process group of its own with a private
// LibreOffice profile and a time limit; at the limit the whole group (the soffice it
// started included) is killed. Nothing of LibreOffice is linked into qumbrel, so it stays
// optional and a hang or crash of the office suite is contained.
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
    ~OfficeHelper();  // removes the private profile
    OfficeHelper(const OfficeHelper&) = delete;
    OfficeHelper& operator=(const OfficeHelper&) = delete;

    // LibreOffice (soffice), python3-uno and the helper are installed.
    bool available() const;
    // What is missing, for messages: "" when available.
    std::string missing() const;

    // Runs the helper with these arguments behind "--profile DIR"; waits at most the time
    // limit (QUMBREL_OFFICE_TIMEOUT seconds, 300 by default).
    OfficeResult run(const std::vector<std::string>& args) const;

    std::chrono::seconds limit() const { return limit_; }

  private:
    std::string helper_;
    mutable std::string profile_;  // made on the first run
    std::chrono::seconds limit_;
};

// Where the helper is: $QUMBREL_OFFICE_HELPER, beside the running program, or in the
// build tree.
std::string office_helper_path();

}  // namespace qumbrel
