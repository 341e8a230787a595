#include "excel/ooxml/workbook.h"

#include <algorithm>
#include <cctype>

#include "excel/ooxml/comments.h"
#include "excel/ooxml/package_parts.h"
#include "excel/ooxml/sheet_filler.h"
#include "excel/ooxml/xml_nodes.h"

namespace qumbrel::ooxml {

namespace {

bool equal_nocase(std::string_view a, std::string_view b) {
    return a.size() == b.size() &&
           std::equal(a.begin(), a.end(), b.begin(), [](unsigned char x, unsigned char y) {
               return std::tolower(x) == std::tolower(y);
           });
}

// "$AB$12" -> column 28, row 12; false for anything else.
bool parse_cell(std::string_view s, CellAddress& cell) {
    std::size_t i = 0;
    if (i < s.size() && s[i] == '$') ++i;
    std::uint64_t col = 0;
    std::size_t letters = 0;
    while (i < s.size() && std::isalpha(static_cast<unsigned char>(s[i]))) {
        col = col * 26 + static_cast<std::uint64_t>(std::toupper(s[i]) - 'A' + 1);
        if (++letters > 3) return false;
        ++i;
    }
    if (letters == 0) return false;
    if (i < s.size() && s[i] == '$') ++i;
    std::uint64_t row = 0;
    std::size_t digits = 0;
    while (i < s.size() && std::isdigit(static_cast<unsigned char>(s[i]))) {
        row = row * 10 + static_cast<std::uint64_t>(s[i] - '0');
        if (++digits > 7) return false;
        ++i;
    }
    if (digits == 0 || i != s.size()) return false;
    if (row < 1 || row > kMaxRows || col < 1 || col > kMaxColumns) return false;
    cell = {static_cast<std::uint32_t>(row), static_cast<std::uint32_t>(col)};
    return true;
}

}  // namespace

bool parse_reference(std::string_view text, std::string& sheet, CellAddress& cell) {
    std::size_t at = 0;
    sheet.clear();
    if (!text.empty() && text.front() == '\'') {
        // 'O''Brien'!A1: a doubled quote stands for one.
        for (at = 1; at < text.size(); ++at) {
            if (text[at] != '\'') {
                sheet.push_back(text[at]);
            } else if (at + 1 < text.size() && text[at + 1] == '\'') {
                sheet.push_back('\'');
                ++at;
            } else {
                break;
            }
        }
        if (at >= text.size()) return false;
        ++at;  // the closing quote
    } else {
        const auto bang = text.find('!');
        if (bang == std::string_view::npos) return false;
        sheet = std::string(text.substr(0, bang));
        at = bang;
        // Unquoted sheet names hold no reference syntax (3-D "A:B", external "[1]x").
        if (sheet.find_first_of(":[]()\",") != std::string::npos) return false;
    }
    if (sheet.empty() || at >= text.size() || text[at] != '!') return false;
    std::string_view area = text.substr(at + 1);
    const auto colon = area.find(':');
    CellAddress last;
    if (colon != std::string_view::npos) {
        if (!parse_cell(area.substr(colon + 1), last)) return false;
        area = area.substr(0, colon);
    }
    return parse_cell(area, cell);
}

Workbook Workbook::open(const std::string& path) {
    Workbook book(ZipPackage::open(path));
    book.read_structure();
    return book;
}

void Workbook::read_structure() {
    const Relationships root = read_relationships(package_, "");
    const Relationship* office = root.by_type_suffix("/officeDocument");
    if (!office) throw PackageError(package_.path() + ": no workbook part (no officeDocument)");
    workbookPart_ = package_.find(office->target);
    if (workbookPart_.empty())
        throw PackageError(package_.path() + ": the workbook part " + office->target +
                           " is missing");
    const Relationships rels = read_relationships(package_, workbookPart_);

    pugi::xml_document doc;
    load_part(doc, package_.read(workbookPart_), workbookPart_);
    const pugi::xml_node workbook = doc.document_element();
    if (local_name(workbook.name()) != "workbook")
        throw PackageError(package_.path() + ": " + workbookPart_ + " holds no workbook");

    for (pugi::xml_node s = child_named(child_named(workbook, "sheets"), "sheet"); s;
         s = s.next_sibling()) {
        if (s.type() != pugi::node_element || local_name(s.name()) != "sheet") continue;
        Sheet sheet;
        sheet.name = attribute_named(s, "name").as_string();
        const Relationship* r = rels.by_id(attribute_named(s, "id").as_string());
        if (r) {
            sheet.part = package_.find(r->target);
            sheet.worksheet = r->type.ends_with("/worksheet") && !sheet.part.empty();
        } else {
            sheet.worksheet = false;
        }
        sheets_.push_back(std::move(sheet));
    }
    writes_.resize(sheets_.size());
    uncommented_.resize(sheets_.size());

    for (pugi::xml_node n = child_named(child_named(workbook, "definedNames"), "definedName"); n;
         n = n.next_sibling()) {
        if (n.type() != pugi::node_element || local_name(n.name()) != "definedName") continue;
        DefinedName d;
        d.name = attribute_named(n, "name").as_string();
        d.refersTo = n.text().as_string();
        d.hidden = xml_true(attribute_named(n, "hidden").as_string());
        if (const auto scope = attribute_named(n, "localSheetId")) {
            const long long v = scope.as_llong(-1);
            if (v >= 0 && static_cast<std::size_t>(v) < sheets_.size())
                d.scope = static_cast<std::size_t>(v);
            else
                d.skipped = "scoped to a sheet the workbook does not have";
        }
        std::string sheetName;
        if (!d.skipped.empty()) {
        } else if (d.name.starts_with("_xlnm.")) {
            d.skipped = "a built-in name (print area, titles, filter)";
        } else if (xml_true(attribute_named(n, "function").as_string()) ||
                   xml_true(attribute_named(n, "vbProcedure").as_string()) ||
                   xml_true(attribute_named(n, "xlm").as_string())) {
            d.skipped = "a macro or function name";
        } else if (d.hidden) {
            d.skipped = "hidden";
        } else if (!parse_reference(d.refersTo, sheetName, d.cell)) {
            d.skipped = "refers to no single cell or area of one sheet (" + d.refersTo + ")";
        } else if (const auto tab = sheet_by_name(sheetName); !tab) {
            d.skipped = "refers to a sheet the workbook does not have (" + sheetName + ")";
        } else if (!sheets_[*tab].worksheet) {
            d.skipped = "refers to a sheet that is no worksheet (" + sheetName + ")";
        } else {
            d.sheet = tab;
        }
        names_.push_back(std::move(d));
    }
}

std::optional<std::size_t> Workbook::sheet_by_name(std::string_view name) const {
    for (std::size_t i = 0; i < sheets_.size(); ++i)
        if (equal_nocase(sheets_[i].name, name)) return i;
    return std::nullopt;
}

const DefinedName* Workbook::find_name(std::string_view name, std::size_t onSheet) const {
    const DefinedName* global = nullptr;
    for (const DefinedName& d : names_) {
        if (!equal_nocase(d.name, name) || !d.skipped.empty()) continue;
        if (d.scope == onSheet) return &d;
        if (!d.scope && !global) global = &d;
    }
    return global;
}

void Workbook::set(std::size_t sheet, std::uint32_t row, std::uint32_t col, CellInput value) {
    if (sheet >= writes_.size()) throw PackageError("no sheet number " + std::to_string(sheet + 1));
    if (row < 1 || row > kMaxRows || col < 1 || col > kMaxColumns) {
        ++dropped_;
        return;
    }
    SheetFiller::Cell w{row, order_++, static_cast<std::uint16_t>(col), 0, 0.0};
    if (const auto* n = std::get_if<double>(&value)) {
        w.kind = 1;
        w.value = *n;
    } else if (auto* t = std::get_if<std::string>(&value)) {
        w.kind = 2;
        w.value = static_cast<double>(texts_.size());
        texts_.push_back(std::move(*t));
    }
    writes_[sheet].push_back(w);
}

void Workbook::delete_comment(std::size_t sheet, std::uint32_t row, std::uint32_t col) {
    if (sheet >= uncommented_.size())
        throw PackageError("no sheet number " + std::to_string(sheet + 1));
    uncommented_[sheet].push_back({row, col});
}

SaveReport Workbook::save_as(const std::string& out) const {
    SaveReport report;
    report.cellsDropped = dropped_;
    std::map<std::string, std::string> replaced;
    std::set<std::string> removed;
    for (std::size_t s = 0; s < sheets_.size(); ++s) {
        if (writes_[s].empty()) continue;
        if (!sheets_[s].worksheet)
            throw PackageError("sheet " + sheets_[s].name + " is no worksheet and takes no values");
        SheetFiller filler(package_.read(sheets_[s].part), sheets_[s].part);
        replaced[sheets_[s].part] = filler.fill(writes_[s], texts_);
        report.cellsWritten += filler.written();
        if (filler.formulas_overwritten()) report.formulasOverwritten = true;
        for (const auto& w : filler.warnings())
            report.warnings.push_back(sheets_[s].name + ": " + w);
    }
    for (std::size_t s = 0; s < sheets_.size(); ++s) {
        if (uncommented_[s].empty() || !sheets_[s].worksheet) continue;
        report.notesDeleted +=
            delete_comments(package_, sheets_[s].part, uncommented_[s], replaced, removed);
    }
    adjust_package(package_, workbookPart_, out, report.formulasOverwritten, replaced, removed);
    package_.save_as(out, replaced, removed);
    return report;
}

}  // namespace qumbrel::ooxml
