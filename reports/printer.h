#pragma once
// Report printing. The core talks to the platform's print service only through
// PrinterSystem (CUPS on Linux, platform/cups); the program's "current printer" is the
// name held in PrintState, so selecting a printer for a job never touches the system's
// default. cSetDfltPrinter is the one thing that changes that default, and it restores it.
//
//   ctx.state<PrintState>().system = make_cups_printer_system();   // done once by the app
//   PrintFile(ctx, "/reports/a.tmp", 2);                           // on ctx.opt.printer
#include <memory>
#include <string>
#include <string_view>
#include <vector>

#include "frame/context.h"

namespace qumbrel {

// The error number of a failing print service.
inline constexpr std::int32_t kPrinterError = 482;

enum class PageOrientation { Portrait = 1, Landscape = 2 };

// The effective default destination, and whether the user chose it (rather than taking
// the server's): only a chosen default is written back on restore.
struct DefaultPrinter {
    std::string name;
    bool userChosen = false;
};

// One text job: lines go out as they come; end() submits. Throws VbError on failure.
class PrintJob {
  public:
    virtual ~PrintJob() = default;
    virtual void print_line(std::string_view line) = 0;
    virtual void end() = 0;
};

// Throws VbError (kPrinterError) when the service cannot be reached or refuses.
class PrinterSystem {
  public:
    virtual ~PrinterSystem() = default;
    virtual std::vector<std::string> printers() = 0;
    virtual std::unique_ptr<PrintJob> start_job(const std::string& printer,
                                                PageOrientation orientation,
                                                const std::string& title) = 0;
    // A PDF document as one job on `printer`.
    virtual void print_pdf(const std::string& printer, const std::string& pdfPath,
                           const std::string& title);
    virtual DefaultPrinter default_printer() = 0;
    virtual void set_default(const std::string& printer) = 0;
    virtual void clear_chosen_default() = 0;
};

// Per-run printing state: the print service (none until the app installs one: then there
// are no printers) and the program's current printer.
struct PrintState {
    std::shared_ptr<PrinterSystem> system;
    std::string current;
};

// Prints a text file line by line on the printer named by option `printer` (PrintFile) or
// `printer2` (PrintFile2); Orientation 1 portrait, 2 landscape. A printer that is not
// listed prints nothing and says nothing; failures go to the error log as "PrintFile()"
// or "PrintFile2()".
void PrintFile(Program& ctx, const std::string& FileName, std::int16_t Orientation);
void PrintFile2(Program& ctx, const std::string& FileName, std::int16_t Orientation);

// The end of a report: the status lines and the print calls in the order printfile,
// printfile2, as the generators do them. An XLS report gets only its status line.
void print_report(Program& ctx, const std::string& reportBase, const std::string& fileName,
                  bool isXls);

// Makes a printer the system's default and restores the earlier default on destruction.
class cSetDfltPrinter {
  public:
    explicit cSetDfltPrinter(Program& ctx);
    ~cSetDfltPrinter();
    cSetDfltPrinter(const cSetDfltPrinter&) = delete;
    cSetDfltPrinter& operator=(const cSetDfltPrinter&) = delete;

    void SetPrinterAsDefault(const std::string& deviceName);
    std::string GetDefaultPrinter();

  private:
    Program& ctx_;
    DefaultPrinter saved_;
    bool changed_ = false;
};

}  // namespace qumbrel
