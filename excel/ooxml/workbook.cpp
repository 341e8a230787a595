#include "excel/ooxml/workbook.h"

#include <algorithm>
#include <cctype>

#include "excel/ooxml/comments.h"
#include "excel/ooxml/package_parts.h"
#include "excel/ooxml/sheet_filler.h"
#include "excel/ooxml/xml_nodes.h"
#include "excel/ooxml/xml_text.h"

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

namespace {

constexpr std::uint64_t kMaxFormattedCells = 4'194'304;
// A filled sheet larger than this goes to the archive through a temporary file.
constexpr std::size_t kSpillAbove = 8u << 20;

// A sheet name as a reference takes it: quoted, with quotes doubled, unless it is a plain
// word that starts with a letter.
std::string quoted_sheet(const std::string& name) {
    bool plain = !name.empty() && std::isalpha(static_cast<unsigned char>(name[0]));
    for (const char c : name)
        if (!std::isalnum(static_cast<unsigned char>(c)) && c != '_') plain = false;
    if (plain) return name;
    std::string out = "'";
    for (const char c : name) out += c == '\'' ? std::string("''") : std::string(1, c);
    return out + "'";
}

constexpr std::string_view kMain = "http://schemas.openxmlformats.org/spreadsheetml/2006/main";
constexpr std::string_view kRel =
    "http://schemas.openxmlformats.org/officeDocument/2006/relationships";

}  // namespace

Workbook::Workbook(ZipPackage package) : package_(std::move(package)) {}
Workbook::Workbook(Workbook&&) noexcept = default;
Workbook& Workbook::operator=(Workbook&&) noexcept = default;
Workbook::~Workbook() = default;

Workbook Workbook::create(const std::string& path, const std::string& sheetName) {
    const std::string decl = "<?xml version=\"1.0\" encoding=\"UTF-8\" standalone=\"yes\"?>\n";
    const std::string types =
        decl +
        "<Types xmlns=\"http://schemas.openxmlformats.org/package/2006/content-types\">"
        "<Default Extension=\"rels\" "
        "ContentType=\"application/vnd.openxmlformats-package.relationships+xml\"/>"
        "<Default Extension=\"xml\" ContentType=\"application/xml\"/>"
        "<Override PartName=\"/xl/workbook.xml\" ContentType=\"" +
        workbook_content_type(".xlsx") +
        "\"/><Override PartName=\"/xl/worksheets/sheet1.xml\" "
        "ContentType=\"application/vnd.openxmlformats-officedocument.spreadsheetml.worksheet+xml\"/"
        ">"
        "<Override PartName=\"/xl/styles.xml\" "
        "ContentType=\"application/vnd.openxmlformats-officedocument.spreadsheetml.styles+xml\"/>"
        "</Types>";
    const std::string rels =
        decl +
        "<Relationships xmlns=\"http://schemas.openxmlformats.org/package/2006/relationships\">"
        "<Relationship Id=\"rId1\" Type=\"" +
        std::string(kRel) + "/officeDocument\" Target=\"xl/workbook.xml\"/></Relationships>";
    const std::string book = decl + "<workbook xmlns=\"" + std::string(kMain) + "\" xmlns:r=\"" +
                             std::string(kRel) + "\"><sheets><sheet name=\"" +
                             xml_attribute(sheetName) +
                             "\" sheetId=\"1\" r:id=\"rId1\"/></sheets>"
                             "<calcPr fullCalcOnLoad=\"1\"/></workbook>";
    const std::string bookRels =
        decl +
        "<Relationships xmlns=\"http://schemas.openxmlformats.org/package/2006/relationships\">"
        "<Relationship Id=\"rId1\" Type=\"" +
        std::string(kRel) +
        "/worksheet\" Target=\"worksheets/sheet1.xml\"/><Relationship Id=\"rId2\" Type=\"" +
        std::string(kRel) + "/styles\" Target=\"styles.xml\"/></Relationships>";
    const std::string sheet = decl + "<worksheet xmlns=\"" + std::string(kMain) +
                              "\"><dimension ref=\"A1\"/><sheetData/></worksheet>";
    // Two fills (none and gray125) are what Excel expects; one font, border and style.
    const std::string styles =
        decl + "<styleSheet xmlns=\"" + std::string(kMain) +
        "\"><fonts count=\"1\"><font><sz val=\"10\"/><name val=\"Arial\"/></font></fonts>"
        "<fills count=\"2\"><fill><patternFill patternType=\"none\"/></fill>"
        "<fill><patternFill patternType=\"gray125\"/></fill></fills>"
        "<borders count=\"1\"><border><left/><right/><top/><bottom/><diagonal/></border></borders>"
        "<cellStyleXfs count=\"1\"><xf numFmtId=\"0\" fontId=\"0\" fillId=\"0\" borderId=\"0\"/>"
        "</cellStyleXfs><cellXfs count=\"1\"><xf numFmtId=\"0\" fontId=\"0\" fillId=\"0\" "
        "borderId=\"0\" xfId=\"0\"/></cellXfs><cellStyles count=\"1\"><cellStyle "
        "name=\"Normal\" xfId=\"0\" builtinId=\"0\"/></cellStyles></styleSheet>";
    ZipPackage::write_new(path, {{"[Content_Types].xml", types},
                                 {"_rels/.rels", rels},
                                 {"xl/workbook.xml", book},
                                 {"xl/_rels/workbook.xml.rels", bookRels},
                                 {"xl/worksheets/sheet1.xml", sheet},
                                 {"xl/styles.xml", styles}});
    return open(path);
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

bool valid_defined_name(std::string_view name) {
    if (name.empty() || name.size() > 255) return false;
    const auto first = static_cast<unsigned char>(name[0]);
    if (!(std::isalpha(first) || first >= 0x80 || first == '_' || first == '\\')) return false;
    if (name.find_first_of(" \t\r\n") != std::string_view::npos) return false;
    std::string upper(name);
    for (auto& c : upper) c = static_cast<char>(std::toupper(static_cast<unsigned char>(c)));
    if (upper == "TRUE" || upper == "FALSE" || upper == "R" || upper == "C") return false;
    CellAddress a1;
    if (parse_cell(upper, a1)) return false;
    const auto digit = [&upper](std::size_t i) {
        return i < upper.size() && std::isdigit(static_cast<unsigned char>(upper[i]));
    };
    // R1C1 references: R, C, R2, C3, RC, R2C3 and what begins with them.
    if (upper[0] == 'R' && (digit(1) || (upper.size() > 1 && upper[1] == 'C'))) return false;
    if (upper[0] == 'C' && digit(1)) return false;
    return true;
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
    SheetFiller::Cell w{row, order_++, 0, static_cast<std::uint16_t>(col), 0, 0.0};
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

Styles& Workbook::styles() {
    if (!styles_) {
        const auto rels = read_relationships(package_, workbookPart_);
        const Relationship* r = rels.by_type_suffix("/styles");
        if (!r || !package_.has(r->target))
            throw PackageError(package_.path() + ": the workbook has no styles part");
        stylesPart_ = package_.find(r->target);
        styles_ = std::make_unique<Styles>(package_.read(stylesPart_), stylesPart_);
    }
    return *styles_;
}

void Workbook::number_format(std::size_t sheet, CellAddress from, CellAddress to,
                             std::string_view code) {
    if (sheet >= writes_.size() || !sheets_[sheet].worksheet)
        throw PackageError("no worksheet number " + std::to_string(sheet + 1));
    if (to.row < from.row) std::swap(to.row, from.row);
    if (to.col < from.col) std::swap(to.col, from.col);
    if (from.row < 1 || from.col < 1 || to.row > kMaxRows || to.col > kMaxColumns)
        throw PackageError("a format for cells outside the sheet");
    const std::uint64_t count =
        std::uint64_t{to.row - from.row + 1} * std::uint64_t{to.col - from.col + 1};
    if (count > kMaxFormattedCells)
        throw PackageError("a format for " + std::to_string(count) + " cells at once");
    const std::uint32_t style = styles().format_index(code) + 1;
    for (std::uint32_t r = from.row; r <= to.row; ++r)
        for (std::uint32_t c = from.col; c <= to.col; ++c)
            writes_[sheet].push_back(
                {r, order_++, style, static_cast<std::uint16_t>(c), SheetFiller::kFormatOnly, 0.0});
}

void Workbook::add_name(const std::string& name, std::string_view refersToR1C1) {
    if (!valid_defined_name(name)) throw PackageError("'" + name + "' is no valid name");
    std::string_view ref = refersToR1C1;
    if (!ref.empty() && ref.front() == '=') ref.remove_prefix(1);
    const auto bang = ref.rfind('!');
    if (bang == std::string_view::npos)
        throw PackageError("'" + std::string(refersToR1C1) + "' names no sheet");
    std::string sheetName(ref.substr(0, bang));
    if (sheetName.size() >= 2 && sheetName.front() == '\'' && sheetName.back() == '\'') {
        std::string unquoted;
        for (std::size_t i = 1; i + 1 < sheetName.size(); ++i) {
            unquoted += sheetName[i];
            if (sheetName[i] == '\'' && sheetName[i + 1] == '\'') ++i;
        }
        sheetName = unquoted;
    }
    const std::string_view cell = ref.substr(bang + 1);
    std::uint64_t row = 0, col = 0;
    std::size_t i = 0;
    const auto number = [&cell, &i](std::uint64_t& v) {
        std::size_t digits = 0;
        while (i < cell.size() && std::isdigit(static_cast<unsigned char>(cell[i])) && digits < 8) {
            v = v * 10 + static_cast<std::uint64_t>(cell[i++] - '0');
            ++digits;
        }
        return digits > 0;
    };
    if (i < cell.size() && (cell[i] == 'R' || cell[i] == 'r'))
        ++i;
    else
        throw PackageError("'" + std::string(refersToR1C1) + "' is no R1C1 reference");
    if (!number(row) || i >= cell.size() || (cell[i] != 'C' && cell[i] != 'c'))
        throw PackageError("'" + std::string(refersToR1C1) + "' is no R1C1 reference");
    ++i;
    if (!number(col) || i != cell.size() || row < 1 || row > kMaxRows || col < 1 ||
        col > kMaxColumns)
        throw PackageError("'" + std::string(refersToR1C1) + "' is no R1C1 reference");
    const auto tab = sheet_by_name(sheetName);
    if (!tab || !sheets_[*tab].worksheet)
        throw PackageError("'" + std::string(refersToR1C1) + "' names no worksheet");
    DefinedName d;
    d.name = name;
    d.cell = {static_cast<std::uint32_t>(row), static_cast<std::uint32_t>(col)};
    d.sheet = tab;
    d.refersTo = quoted_sheet(sheets_[*tab].name) + "!$" + column_letters(d.cell.col) + "$" +
                 std::to_string(d.cell.row);
    added_.push_back(d);
    names_.push_back(std::move(d));
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
    if (styles_ && styles_->changed()) replaced[stylesPart_] = styles_->xml();
    if (!added_.empty()) {
        pugi::xml_document book;
        load_part(book, package_.read(workbookPart_), workbookPart_);
        pugi::xml_node root = book.document_element();
        const std::string prefix(root.name(), local_name(root.name()).data() - root.name());
        pugi::xml_node names = child_named(root, "definedNames");
        if (!names)
            names = root.insert_child_after((prefix + "definedNames").c_str(),
                                            child_named(root, "sheets"));
        for (const DefinedName& d : added_) {
            pugi::xml_node n = names.append_child((prefix + "definedName").c_str());
            n.append_attribute("name").set_value(d.name.c_str());
            n.text().set(d.refersTo.c_str());
        }
        replaced[workbookPart_] = save_part(book);
    }
    for (std::size_t s = 0; s < sheets_.size(); ++s) {
        if (uncommented_[s].empty() || !sheets_[s].worksheet) continue;
        report.notesDeleted +=
            delete_comments(package_, sheets_[s].part, uncommented_[s], replaced, removed);
    }
    // The sheets last: a sheet whose notes all went has lost its <legacyDrawing> above,
    // and a large one goes to the archive from a temporary file.
    ZipPackage::SpilledParts spilled;
    for (std::size_t s = 0; s < sheets_.size(); ++s) {
        if (writes_[s].empty()) continue;
        if (!sheets_[s].worksheet)
            throw PackageError("sheet " + sheets_[s].name + " is no worksheet and takes no values");
        const std::string& part = sheets_[s].part;
        const auto edited = replaced.find(part);
        SheetFiller filler(edited != replaced.end() ? edited->second : package_.read(part), part);
        FilledPart filled = filler.fill_part(writes_[s], texts_, kSpillAbove);
        if (filled.file) {
            replaced.erase(part);
            spilled.emplace(part, std::move(filled.file));
        } else {
            replaced[part] = std::move(filled.bytes);
        }
        report.cellsWritten += filler.written();
        if (filler.formulas_overwritten()) report.formulasOverwritten = true;
        for (const auto& w : filler.warnings())
            report.warnings.push_back(sheets_[s].name + ": " + w);
    }
    adjust_package(package_, workbookPart_, out, report.formulasOverwritten, replaced, removed);
    package_.save_as(out, replaced, removed, std::move(spilled));
    return report;
}

}  // namespace qumbrel::ooxml
