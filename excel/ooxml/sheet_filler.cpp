#include "excel/ooxml/sheet_filler.h"

#include <algorithm>
#include <cerrno>
#include <charconv>
#include <cmath>
#include <cstring>
#include <limits>
#include <set>
#include <sstream>

#include "excel/ooxml/workbook.h"
#include "excel/ooxml/xml_nodes.h"
#include "excel/ooxml/xml_scan.h"
#include "excel/ooxml/xml_text.h"

namespace qumbrel::ooxml {

namespace {

// Excel's limit of a cell's text.
constexpr std::size_t kMaxCellText = 32767;

bool parse_address(std::string_view r, std::uint32_t& row, std::uint32_t& col) {
    std::uint64_t c = 0, w = 0;
    std::size_t i = 0;
    while (i < r.size() && std::isalpha(static_cast<unsigned char>(r[i])))
        c = c * 26 + static_cast<std::uint64_t>(std::toupper(r[i++]) - 'A' + 1);
    while (i < r.size() && std::isdigit(static_cast<unsigned char>(r[i])))
        w = w * 10 + static_cast<std::uint64_t>(r[i++] - '0');
    if (i != r.size() || c == 0 || w == 0 || c > kMaxColumns || w > kMaxRows) return false;
    row = static_cast<std::uint32_t>(w);
    col = static_cast<std::uint32_t>(c);
    return true;
}

// Cuts a text to Excel's limit without splitting a UTF-8 sequence.
std::string_view cell_text(const std::string& s, bool& cut) {
    cut = s.size() > kMaxCellText;
    if (!cut) return s;
    std::size_t n = kMaxCellText;
    while (n > 0 && (static_cast<unsigned char>(s[n]) & 0xC0) == 0x80) --n;
    return std::string_view(s).substr(0, n);
}

struct ColumnStyle {
    std::uint32_t min, max;
    std::string style;
};

struct Bounds {
    std::uint32_t minRow = std::numeric_limits<std::uint32_t>::max(), maxRow = 0;
    std::uint32_t minCol = std::numeric_limits<std::uint32_t>::max(), maxCol = 0;
    void add(std::uint32_t r, std::uint32_t c) {
        minRow = std::min(minRow, r);
        maxRow = std::max(maxRow, r);
        minCol = std::min(minCol, c);
        maxCol = std::max(maxCol, c);
    }
    std::string ref() const {
        if (maxRow == 0) return "A1";
        const std::string a = column_letters(minCol) + std::to_string(minRow);
        const std::string b = column_letters(maxCol) + std::to_string(maxRow);
        return a == b ? a : a + ":" + b;
    }
};

std::string raw(pugi::xml_node n) {
    std::ostringstream out;
    n.print(out, "", pugi::format_raw);
    return out.str();
}

// The text of a part as it is written: in memory up to the spill size, then in an
// anonymous temporary file, in chunks of about that size.
class PartOutput {
  public:
    explicit PartOutput(std::size_t spillAbove) : spillAbove_(spillAbove) {}

    PartOutput& operator+=(std::string_view text) {
        buffer_.append(text);
        if (buffer_.size() >= spillAbove_) spill();
        return *this;
    }
    void append(const char* begin, const char* end) {
        *this += std::string_view(begin, static_cast<std::size_t>(end - begin));
    }
    void reserve(std::size_t bytes) { buffer_.reserve(std::min(bytes, spillAbove_ + 65536)); }

    FilledPart finish() {
        FilledPart part;
        if (!file_) {
            part.bytes = std::move(buffer_);
            return part;
        }
        spill();
        if (std::fflush(file_.get()) != 0 || std::fseek(file_.get(), 0, SEEK_SET) != 0)
            throw PackageError(std::string("cannot write a temporary file: ") +
                               std::strerror(errno));
        part.file = std::move(file_);
        return part;
    }

  private:
    void spill() {
        if (!file_) {
            file_.reset(std::tmpfile());
            if (!file_)
                throw PackageError(std::string("no temporary file for a large sheet: ") +
                                   std::strerror(errno));
        }
        if (std::fwrite(buffer_.data(), 1, buffer_.size(), file_.get()) != buffer_.size())
            throw PackageError(std::string("cannot write a temporary file: ") +
                               std::strerror(errno));
        buffer_.clear();
    }

    std::size_t spillAbove_;
    std::string buffer_;
    std::unique_ptr<std::FILE, int (*)(std::FILE*)> file_{nullptr, &std::fclose};
};

}  // namespace

std::string column_letters(std::uint32_t col) {
    std::string s;
    while (col > 0) {
        const std::uint32_t d = (col - 1) % 26;
        s.insert(s.begin(), static_cast<char>('A' + d));
        col = (col - 1) / 26;
    }
    return s;
}

SheetFiller::SheetFiller(std::string xml, std::string part)
    : xml_(std::move(xml)), part_(std::move(part)) {}

FilledPart SheetFiller::fill_part(std::vector<Cell>& cells, const std::vector<std::string>& texts,
                                  std::size_t spillAbove) {
    std::sort(cells.begin(), cells.end(), [](const Cell& a, const Cell& b) {
        return a.row != b.row ? a.row < b.row : a.col != b.col ? a.col < b.col : a.order < b.order;
    });
    // Of several values of one cell the last stands, with the last format set on it;
    // compacted in place.
    std::size_t kept = 0;
    for (std::size_t i = 0; i < cells.size();) {
        std::size_t end = i;
        const Cell* value = nullptr;
        std::uint32_t style = 0;
        while (end < cells.size() && cells[end].row == cells[i].row &&
               cells[end].col == cells[i].col) {
            if (cells[end].kind == kFormatOnly)
                style = cells[end].style;
            else
                value = &cells[end];
            ++end;
        }
        Cell merged = value ? *value : cells[end - 1];
        if (style != 0) merged.style = style;
        cells[kept++] = merged;
        i = end;
    }
    cells.resize(kept);

    const Tag data = find_start(xml_, "sheetData", 0);
    if (!data.found()) throw PackageError(part_ + ": no <sheetData>");
    const std::string& P = data.prefix;
    std::size_t tailStart = data.end;
    std::string inner;
    if (!data.selfClosing) {
        const std::string close = "</" + P + "sheetData>";
        const std::size_t at = xml_.find(close, data.end);
        if (at == std::string::npos) throw PackageError(part_ + ": <sheetData> is not closed");
        inner = xml_.substr(data.end, at - data.end);
        tailStart = at + close.size();
    }
    std::string head = xml_.substr(0, data.start);
    const std::string tail = xml_.substr(tailStart);

    pugi::xml_document rows;
    load_part(rows, "<" + P + "sheetData>" + inner + "</" + P + "sheetData>", part_);

    std::vector<ColumnStyle> columns;
    if (const Tag cols = find_start(head, "cols", 0); cols.found() && !cols.selfClosing) {
        const std::string close = "</" + cols.prefix + "cols>";
        const std::size_t at = head.find(close, cols.end);
        if (at != std::string::npos) {
            pugi::xml_document doc;
            load_part(doc, head.substr(cols.start, at + close.size() - cols.start), part_);
            for (pugi::xml_node c = doc.document_element().first_child(); c; c = c.next_sibling()) {
                if (c.type() != pugi::node_element || !c.attribute("style")) continue;
                columns.push_back({c.attribute("min").as_uint(), c.attribute("max").as_uint(),
                                   c.attribute("style").as_string()});
            }
        }
    }
    const auto column_style = [&columns](std::uint32_t col) -> std::string {
        for (const auto& c : columns)
            if (col >= c.min && col <= c.max) return c.style;
        return {};
    };

    // The template's rows and cells with their addresses (counted where "r" is missing).
    struct OldRow {
        std::uint32_t number;
        pugi::xml_node node;
        std::vector<std::pair<std::uint32_t, pugi::xml_node>> cells;
    };
    std::vector<OldRow> old;
    std::uint32_t lastRow = 0;
    for (pugi::xml_node r = rows.document_element().first_child(); r; r = r.next_sibling()) {
        if (r.type() != pugi::node_element || local_name(r.name()) != "row") continue;
        const std::uint32_t number = r.attribute("r") ? r.attribute("r").as_uint() : lastRow + 1;
        if (number < 1 || number > kMaxRows) throw PackageError(part_ + ": a row out of range");
        lastRow = number;
        OldRow o{number, r, {}};
        std::uint32_t lastCol = 0;
        for (pugi::xml_node c = r.first_child(); c; c = c.next_sibling()) {
            if (c.type() != pugi::node_element || local_name(c.name()) != "c") continue;
            std::uint32_t row = number, col = lastCol + 1;
            if (c.attribute("r") && !parse_address(c.attribute("r").as_string(), row, col))
                throw PackageError(part_ + ": a cell address out of range");
            lastCol = col;
            o.cells.emplace_back(col, c);
        }
        std::stable_sort(o.cells.begin(), o.cells.end(),
                         [](const auto& a, const auto& b) { return a.first < b.first; });
        old.push_back(std::move(o));
    }
    std::stable_sort(old.begin(), old.end(),
                     [](const OldRow& a, const OldRow& b) { return a.number < b.number; });

    const auto written = [&cells](std::uint32_t row, std::uint32_t col) {
        const auto it = std::lower_bound(cells.begin(), cells.end(),
                                         Cell{row, 0, 0, static_cast<std::uint16_t>(col), 0, 0.0},
                                         [](const Cell& a, const Cell& b) {
                                             return a.row != b.row ? a.row < b.row : a.col < b.col;
                                         });
        return it != cells.end() && it->row == row && it->col == col && it->kind != kFormatOnly;
    };
    // Formulas in written cells go; the cells that share a master formula keep values.
    std::set<std::string> masters;
    for (const OldRow& o : old) {
        for (const auto& [col, c] : o.cells) {
            const pugi::xml_node f = child_named(c, "f");
            if (!f || !written(o.number, col)) continue;
            formulasOverwritten_ = true;
            if (std::string_view(f.attribute("t").as_string()) == "shared" && f.attribute("ref"))
                masters.insert(f.attribute("si").as_string());
        }
    }
    if (!masters.empty()) {
        for (const OldRow& o : old) {
            for (const auto& [col, c] : o.cells) {
                const pugi::xml_node f = child_named(c, "f");
                if (!f || f.attribute("ref") || !masters.count(f.attribute("si").as_string()))
                    continue;
                pugi::xml_node cell = c;
                cell.remove_child(f);
                warnings_.push_back("cell " + column_letters(col) + std::to_string(o.number) +
                                    " shared an overwritten formula and keeps its last value");
            }
        }
    }

    // The true dimension first, so the part can be written in one pass.
    Bounds bounds;
    for (const OldRow& o : old)
        for (const auto& [col, c] : o.cells) bounds.add(o.number, col);
    for (const Cell& w : cells) bounds.add(w.row, w.col);
    const std::string dimension = "<" + P + "dimension ref=\"" + bounds.ref() + "\"/>";
    if (const Tag d = find_start(head, "dimension", 0); d.found()) {
        const std::size_t end = element_end(head, d, "dimension");
        head.replace(d.start, (end == std::string::npos ? d.end : end) - d.start, dimension);
    } else if (const Tag pr = find_start(head, "sheetPr", 0); pr.found()) {
        const std::size_t end = element_end(head, pr, "sheetPr");
        head.insert(end == std::string::npos ? pr.end : end, dimension);
    } else if (const Tag ws = find_start(head, "worksheet", 0); ws.found()) {
        head.insert(ws.end, dimension);
    }

    // Capacity is only address space until written: a generous guess costs no memory,
    // a short one a copy of everything written so far.
    PartOutput body(spillAbove);
    body.reserve(head.size() + inner.size() + tail.size() + cells.size() * 48 + 64);
    body += head;
    body += "<" + P + "sheetData>";
    char number[32];
    const auto cell_xml = [&](const Cell& w, const std::string& present) {
        const std::string ref = column_letters(w.col) + std::to_string(w.row);
        const std::string style = w.style != 0 ? std::to_string(w.style - 1) : present;
        body += "<" + P + "c r=\"" + ref + "\"";
        if (!style.empty()) body += " s=\"" + xml_attribute(style) + "\"";
        if (w.kind == 1 && std::isfinite(w.value)) {
            const auto end = std::to_chars(number, number + sizeof number, w.value).ptr;
            body += "><" + P + "v>";
            body.append(number, end);
            body += "</" + P + "v></" + P + "c>";
        } else if (w.kind == 2 && w.value >= 0 && w.value < static_cast<double>(texts.size())) {
            bool cut = false;
            const std::string_view text = cell_text(texts[static_cast<std::size_t>(w.value)], cut);
            if (cut) warnings_.push_back("text of " + ref + " cut to 32,767 characters");
            body += " t=\"inlineStr\"><" + P + "is><" + P + "t";
            if (needs_preserve(text)) body += " xml:space=\"preserve\"";
            body += ">" + xml_text(text) + "</" + P + "t></" + P + "is></" + P + "c>";
        } else {
            body += "/>";  // empty, or a number no reader takes (NaN, infinity)
        }
        ++written_;
    };
    const auto row_start = [&](pugi::xml_node node, std::uint32_t number) {
        body += "<" + P + "row r=\"" + std::to_string(number) + "\"";
        for (pugi::xml_attribute a = node.first_attribute(); a; a = a.next_attribute()) {
            const std::string_view n = a.name();
            if (n == "r" || n == "spans") continue;  // spans is a hint that no longer holds
            body += " " + std::string(n) + "=\"" + xml_attribute(a.value()) + "\"";
        }
        body += ">";
    };

    std::size_t next = 0;  // into cells
    std::size_t oi = 0;    // into old
    while (oi < old.size() || next < cells.size()) {
        const std::uint32_t oldRow = oi < old.size() ? old[oi].number : kMaxRows + 1;
        const std::uint32_t newRow = next < cells.size() ? cells[next].row : kMaxRows + 1;
        if (newRow < oldRow) {  // a row the template does not have
            body += "<" + P + "row r=\"" + std::to_string(newRow) + "\">";
            while (next < cells.size() && cells[next].row == newRow) {
                const Cell& w = cells[next++];
                cell_xml(w, column_style(w.col));
            }
            body += "</" + P + "row>";
            continue;
        }
        const OldRow& o = old[oi++];
        if (newRow != o.number) {  // untouched: as the template has it
            body += raw(o.node);
            continue;
        }
        const std::string rowStyle = o.node.attribute("customFormat") &&
                                             xml_true(o.node.attribute("customFormat").as_string())
                                         ? o.node.attribute("s").as_string()
                                         : "";
        row_start(o.node, o.number);
        std::size_t ci = 0;
        while (ci < o.cells.size() || (next < cells.size() && cells[next].row == o.number)) {
            const std::uint32_t oldCol = ci < o.cells.size() ? o.cells[ci].first : kMaxColumns + 1;
            const bool haveNew = next < cells.size() && cells[next].row == o.number;
            const std::uint32_t newCol = haveNew ? cells[next].col : kMaxColumns + 1;
            if (oldCol < newCol) {
                body += raw(o.cells[ci].second);
                ++ci;
            } else if (oldCol == newCol && cells[next].kind == kFormatOnly) {
                // The content stays; only the style changes.
                pugi::xml_node cell = o.cells[ci++].second;
                const std::string style = std::to_string(cells[next++].style - 1);
                if (cell.attribute("s"))
                    cell.attribute("s").set_value(style.c_str());
                else
                    cell.append_attribute("s").set_value(style.c_str());
                body += raw(cell);
            } else if (oldCol == newCol) {
                cell_xml(cells[next++], o.cells[ci++].second.attribute("s").as_string());
            } else {
                const std::string style = rowStyle.empty() ? column_style(newCol) : rowStyle;
                cell_xml(cells[next++], style);
            }
        }
        body += "</" + P + "row>";
    }

    body += "</" + P + "sheetData>";
    body += tail;
    return body.finish();
}

}  // namespace qumbrel::ooxml
