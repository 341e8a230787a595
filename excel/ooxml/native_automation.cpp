// ExcelAutomation over the native workbook engine. A workbook is kept open as a Workbook
// (the package it was read from plus the writes waiting for the save); a save writes a new
// package and opens it again, so the session goes on from what was saved.
//
// Legacy .xls/.xlt workbooks are converted by the LibreOffice binding into a hidden .xlsm
// beside them (a VBA project survives the way there and back), filled natively and
// converted back on every save. The macro and printing run on a saved state of the
// workbook through the same binding.
#include <unistd.h>

#include <cctype>
#include <filesystem>
#include <optional>
#include <utility>

#include "excel/automation.h"
#include "excel/office/office_helper.h"
#include "excel/ooxml/workbook.h"
#include "frame/errors.h"
#include "reports/printer.h"

namespace qumbrel {

namespace {

using ooxml::PackageError;
using ooxml::Workbook;

[[noreturn]] void fail(const std::string& what) {
    throw VbError(errnum::kApplicationDefined, what);
}

std::string lower_extension(const std::string& file) {
    std::string ext = std::filesystem::path(file).extension().string();
    for (char& c : ext) c = static_cast<char>(std::tolower(static_cast<unsigned char>(c)));
    return ext;
}

bool is_legacy(const std::string& file) {
    const std::string ext = lower_extension(file);
    return ext == ".xls" || ext == ".xlt";
}

// A hidden name beside `file` for its OOXML working copy.
std::string working_name(const std::string& file) {
    const std::filesystem::path p(file);
    return (p.parent_path() / ("." + p.filename().string() + ".qumbrel.xlsm")).string();
}

std::string first_line(const std::string& text) {
    const std::string line = text.substr(0, text.find('\n'));
    return line.empty() ? "no reason given" : line;
}

class NativeAutomation final : public ExcelAutomation {
  public:
    explicit NativeAutomation(std::shared_ptr<PrinterSystem> printers)
        : printers_(std::move(printers)) {}
    ~NativeAutomation() override { close(); }

    std::string version() override { return "16.0"; }

    void open(const std::string& file) override {
        close();
        if (is_legacy(file)) {
            need_office("the workbook " + file);
            const std::string working = working_name(file);
            run_office({"convert", file, working}, "converting " + file);
            working_ = working;
            book_.emplace(load(working_));
        } else {
            book_.emplace(load(file));
        }
        path_ = file;
        active_ = 1;
    }

    void add(const std::optional<std::string>& templateFile) override {
        close();
        if (templateFile && is_legacy(*templateFile)) {
            // A new workbook from a legacy template: its OOXML copy in a scratch file.
            need_office("the template " + *templateFile);
            const std::string scratch = make_scratch(".xlsm");
            run_office({"convert", *templateFile, scratch}, "converting " + *templateFile);
            book_.emplace(load(scratch));
        } else if (templateFile) {
            book_.emplace(load(*templateFile));
        } else {
            // A new workbook lives in a scratch file until it is saved somewhere.
            const std::string scratch = make_scratch(".xlsx");
            try {
                book_.emplace(Workbook::create(scratch, "Sheet1"));
            } catch (const PackageError& e) {
                fail(e.what());
            }
        }
        path_.clear();  // "Book1" until saved
        active_ = 1;
    }

    std::string workbook_name() override {
        need();
        return path_.empty() ? "Book1" : std::filesystem::path(path_).filename().string();
    }

    std::int32_t sheet_count() override {
        need();
        return static_cast<std::int32_t>(book_->sheets().size());
    }

    std::string sheet_name(std::int32_t index) override { return book_->sheets()[tab(index)].name; }

    void activate_sheet(std::int32_t index) override {
        tab(index);
        active_ = index;
    }

    void activate_sheet(const std::string& name) override {
        need();
        const auto t = book_->sheet_by_name(name);
        if (!t) fail("no sheet named " + name);
        active_ = static_cast<std::int32_t>(*t) + 1;
    }

    std::int32_t active_sheet() override { return active_; }

    std::vector<std::string> names() override {
        need();
        std::vector<std::string> out;
        for (const auto& d : book_->names()) {
            if (d.hidden) continue;
            std::string name = d.name;
            if (name.starts_with("_xlnm.")) name.erase(0, 6);
            out.push_back(d.scope ? book_->sheets()[*d.scope].name + "!" + name : name);
        }
        return out;
    }

    ExcelRange range(const std::string& name) override {
        need();
        const auto bang = name.rfind('!');
        std::size_t onSheet = static_cast<std::size_t>(active_ - 1);
        std::string bare = name;
        if (bang != std::string::npos) {
            std::string sheet = name.substr(0, bang);
            if (sheet.size() >= 2 && sheet.front() == '\'' && sheet.back() == '\'')
                sheet = sheet.substr(1, sheet.size() - 2);
            const auto t = book_->sheet_by_name(sheet);
            if (!t) fail("no sheet named " + sheet);
            onSheet = *t;
            bare = name.substr(bang + 1);
        }
        const ooxml::DefinedName* d = book_->find_name(bare, onSheet);
        if (!d) fail("no name " + name);
        return {static_cast<std::int32_t>(*d->sheet) + 1, static_cast<std::int32_t>(d->cell.row),
                static_cast<std::int32_t>(d->cell.col)};
    }

    ExcelRange sheet_range(std::int32_t sheet, const std::string& name) override {
        const std::size_t t = tab(sheet);
        const ooxml::DefinedName* d = book_->find_name(name, t);
        // A sheet's Range takes names that point at that sheet only.
        if (!d || *d->sheet != t) fail("no name " + name + " on sheet " + std::to_string(sheet));
        return {sheet, static_cast<std::int32_t>(d->cell.row),
                static_cast<std::int32_t>(d->cell.col)};
    }

    void set_cell(const ExcelRange& cell, const ExcelValue& value) override {
        const std::size_t t = tab(cell.sheet);
        if (cell.row < 1 || cell.row > static_cast<std::int32_t>(ooxml::kMaxRows) ||
            cell.column < 1 || cell.column > static_cast<std::int32_t>(ooxml::kMaxColumns))
            fail("cell (" + std::to_string(cell.row) + ", " + std::to_string(cell.column) +
                 ") lies outside the sheet");
        ooxml::CellInput input;
        if (const auto* n = std::get_if<double>(&value)) input = *n;
        if (const auto* s = std::get_if<std::string>(&value)) input = *s;
        try {
            book_->set(t, static_cast<std::uint32_t>(cell.row),
                       static_cast<std::uint32_t>(cell.column), std::move(input));
        } catch (const PackageError& e) {
            fail(e.what());
        }
    }

    void set_range(const std::string& name, const ExcelValue& value) override {
        set_cell(range(name), value);
    }

    void delete_comment(const ExcelRange& cell) override {
        const std::size_t t = tab(cell.sheet);
        book_->delete_comment(t, static_cast<std::uint32_t>(cell.row),
                              static_cast<std::uint32_t>(cell.column));
    }

    void add_name(const std::string& name, const std::string& refersToR1C1) override {
        need();
        try {
            book_->add_name(name, refersToR1C1);
        } catch (const PackageError& e) {
            fail(e.what());
        }
    }

    void number_format(const ExcelRange& from, const ExcelRange& to,
                       const std::string& format) override {
        const std::size_t t = tab(from.sheet);
        try {
            book_->number_format(
                t, {static_cast<std::uint32_t>(from.row), static_cast<std::uint32_t>(from.column)},
                {static_cast<std::uint32_t>(to.row), static_cast<std::uint32_t>(to.column)},
                format);
        } catch (const PackageError& e) {
            fail(e.what());
        }
    }

    void run_macro(const std::string& macro) override {
        need();
        need_office("the macro " + macro);
        const std::string file = saved_state();
        run_office({"macro", file, macro}, "the macro " + macro);
        book_.emplace(load(file));  // what the macro did
    }

    void print_workbook(const std::string& printer) override { print(printer, ""); }
    void print_active_sheet(const std::string& printer) override {
        print(printer, std::to_string(active_));
    }

    void save() override {
        need();
        if (path_.empty()) fail("a new workbook has no file to be saved in: use SaveAs");
        save_as(path_);
    }

    void save_as(const std::string& file) override {
        need();
        if (is_legacy(file)) {
            need_office("saving " + file);
            const std::string working = working_.empty() ? working_name(file) : working_;
            write(working);
            working_ = working;
            run_office({"convert", working_, file}, "saving " + file);
        } else {
            write(file);
        }
        path_ = file;
    }

    void close() override {
        book_.reset();
        std::error_code ec;
        for (std::string* f : {&scratch_, &working_}) {
            if (f->empty()) continue;
            // The session's scratch and working copies, never the report or the template.
            std::filesystem::remove(*f, ec);  // session copies: no file layer
            f->clear();
        }
    }

    std::vector<std::string> take_warnings() override { return std::exchange(warnings_, {}); }

    void quit() override { close(); }

  private:
    // A scratch file name of this extension, owned by the session until closed.
    const std::string& make_scratch(const std::string& extension) {
        char scratch[] = "/tmp/qumbrel-book-XXXXXX";
        const int fd = ::mkstemp(scratch);
        if (fd < 0) fail("no scratch file for a new workbook");
        ::close(fd);
        scratch_ = std::string(scratch) + extension;
        std::error_code ec;
        std::filesystem::rename(scratch, scratch_, ec);
        if (ec) fail("no scratch file for a new workbook");
        return scratch_;
    }
    // Saves the workbook to `file` and goes on from there.
    void write(const std::string& file) {
        try {
            book_->save_as(file);
            book_.emplace(Workbook::open(file));
        } catch (const PackageError& e) {
            fail(e.what());
        }
    }
    // The workbook as it stands, in an OOXML file of its own or its working copy.
    std::string saved_state() {
        const std::string file = !working_.empty() ? working_ : !path_.empty() ? path_ : scratch_;
        if (file.empty()) fail("the workbook has no file");
        write(file);
        return file;
    }
    void need_office(const std::string& what) const {
        if (!office_.available())
            fail(what + " needs the LibreOffice binding: " + office_.missing());
    }
    // One run of the LibreOffice helper. Past its time limit the office suite is gone for
    // this session (462); other failures are 1004 with the helper's reason.
    void run_office(const std::vector<std::string>& args, const std::string& what) {
        const OfficeResult r = office_.run(args);
        std::size_t at = 0;
        while (at < r.out.size()) {
            const std::size_t end = std::min(r.out.find('\n', at), r.out.size());
            const std::string line = r.out.substr(at, end - at);
            if (line.starts_with("warning: ")) warnings_.push_back(what + ": " + line.substr(9));
            at = end + 1;
        }
        if (r.timedOut) throw VbError(errnum::kRemoteServerGone, what + ": " + r.err);
        if (r.exitCode != 0) fail(what + ": " + first_line(r.err));
    }
    void print(const std::string& printer, const std::string& sheet) {
        need();
        need_office("printing a workbook");
        if (!printers_) fail("printing a workbook: there is no print service");
        const std::string file = saved_state();
        char pdf[] = "/tmp/qumbrel-print-XXXXXX";
        const int fd = ::mkstemp(pdf);
        if (fd < 0) fail("printing a workbook: no temporary file");
        ::close(fd);
        const std::string pdfFile = std::string(pdf) + ".pdf";
        std::error_code ec;
        std::filesystem::rename(pdf, pdfFile, ec);
        std::vector<std::string> args{"pdf", file, pdfFile};
        if (!sheet.empty()) args.push_back(sheet);
        try {
            run_office(args, "printing " + workbook_name());
            printers_->print_pdf(printer, pdfFile, workbook_name());
        } catch (...) {
            std::filesystem::remove(pdfFile, ec);
            throw;
        }
        std::filesystem::remove(pdfFile, ec);
    }

    static Workbook load(const std::string& file) {
        try {
            return Workbook::open(file);
        } catch (const PackageError& e) {
            fail(e.what());
        }
    }
    void need() const {
        if (!book_) fail("no workbook is open");
    }
    // The tab position of a sheet index from 1; 1004 when there is no such sheet.
    std::size_t tab(std::int32_t index) const {
        need();
        if (index < 1 || static_cast<std::size_t>(index) > book_->sheets().size())
            fail("no sheet number " + std::to_string(index));
        return static_cast<std::size_t>(index - 1);
    }

    std::optional<Workbook> book_;
    std::string path_;
    std::string scratch_;
    std::string working_;  // the OOXML copy of a legacy workbook
    std::int32_t active_ = 1;
    std::shared_ptr<PrinterSystem> printers_;
    OfficeHelper office_;
    std::vector<std::string> warnings_;
};

}  // namespace

std::unique_ptr<ExcelAutomation> make_native_automation(std::shared_ptr<PrinterSystem> printers) {
    return std::make_unique<NativeAutomation>(std::move(printers));
}

}  // namespace qumbrel
