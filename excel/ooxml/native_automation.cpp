// ExcelAutomation over the native workbook engine. A workbook is kept open as a Workbook
// (the package it was read from plus the writes waiting for the save); a save writes a new
// package and opens it again, so the session goes on from what was saved.
#include <unistd.h>

#include <filesystem>
#include <optional>

#include "excel/automation.h"
#include "excel/ooxml/workbook.h"
#include "frame/errors.h"

namespace qumbrel {

namespace {

using ooxml::PackageError;
using ooxml::Workbook;

[[noreturn]] void fail(const std::string& what) {
    throw VbError(errnum::kApplicationDefined, what);
}

class NativeAutomation final : public ExcelAutomation {
  public:
    ~NativeAutomation() override { close(); }

    std::string version() override { return "16.0"; }

    void open(const std::string& file) override {
        close();
        book_.emplace(load(file));
        path_ = file;
        active_ = 1;
    }

    void add(const std::optional<std::string>& templateFile) override {
        close();
        if (templateFile) {
            book_.emplace(load(*templateFile));
        } else {
            // A new workbook lives in a scratch file until it is saved somewhere.
            char scratch[] = "/tmp/qumbrel-book-XXXXXX";
            const int fd = ::mkstemp(scratch);
            if (fd < 0) fail("no scratch file for a new workbook");
            ::close(fd);
            scratch_ = std::string(scratch) + ".xlsx";
            std::filesystem::rename(scratch, scratch_);
            try {
                book_.emplace(Workbook::create(scratch_, "Sheet1"));
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
        fail("the macro " + macro + " cannot run: macros need LibreOffice, not installed");
    }
    void print_workbook() override { fail("printing a workbook needs LibreOffice, not installed"); }
    void print_active_sheet() override {
        fail("printing a workbook needs LibreOffice, not installed");
    }

    void save() override {
        need();
        if (path_.empty()) fail("a new workbook has no file to be saved in: use SaveAs");
        save_as(path_);
    }

    void save_as(const std::string& file) override {
        need();
        try {
            book_->save_as(file);
            book_.emplace(Workbook::open(file));
        } catch (const PackageError& e) {
            fail(e.what());
        }
        path_ = file;
    }

    void close() override {
        book_.reset();
        if (!scratch_.empty()) {
            std::error_code ec;
            std::filesystem::remove(scratch_, ec);
            scratch_.clear();
        }
    }

    void quit() override { close(); }

  private:
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
    std::int32_t active_ = 1;
};

}  // namespace

std::unique_ptr<ExcelAutomation> make_native_automation() {
    return std::make_unique<NativeAutomation>();
}

}  // namespace qumbrel
