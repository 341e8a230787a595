#include "excel/ooxml/comments.h"

#include <algorithm>
#include <set>

#include "excel/ooxml/package_parts.h"
#include "excel/ooxml/sheet_filler.h"
#include "excel/ooxml/xml_nodes.h"
#include "excel/ooxml/xml_scan.h"

namespace qumbrel::ooxml {

namespace {

std::string current(const ZipPackage& package, const std::map<std::string, std::string>& replaced,
                    const std::string& part) {
    const auto it = replaced.find(part);
    return it != replaced.end() ? it->second : package.read(part);
}

// The text of the first element `local` inside [from, to), or "".
std::string inner_text(const std::string& xml, std::string_view local, std::size_t from,
                       std::size_t to) {
    const Tag t = find_start(xml, local, from);
    if (!t.found() || t.start >= to || t.selfClosing) return {};
    const std::size_t end = xml.find('<', t.end);
    return end == std::string::npos ? std::string() : xml.substr(t.end, end - t.end);
}

// Cuts the Note shapes of `cells` out of VML text (Row and Column count from 0). Other
// shapes (form controls) stay. Returns how many Note shapes are left.
std::size_t cut_note_shapes(std::string& vml, const std::set<std::string>& cells) {
    std::size_t left = 0;
    std::size_t from = 0;
    while (true) {
        const Tag t = find_start(vml, "shape", from);
        if (!t.found()) break;
        const std::size_t end = element_end(vml, t, "shape");
        if (end == std::string::npos) break;
        const std::string block = vml.substr(t.start, end - t.start);
        const bool note = block.find("ObjectType=\"Note\"") != std::string::npos;
        if (!note) {
            from = end;
            continue;
        }
        const std::string row = inner_text(vml, "Row", t.start, end);
        const std::string col = inner_text(vml, "Column", t.start, end);
        bool cut = false;
        try {
            const std::uint32_t r = static_cast<std::uint32_t>(std::stoul(row)) + 1;
            const std::uint32_t c = static_cast<std::uint32_t>(std::stoul(col)) + 1;
            cut = cells.count(column_letters(c) + std::to_string(r)) > 0;
        } catch (...) {
            cut = false;  // a shape without a position is no note of a cell
        }
        if (cut) {
            vml.erase(t.start, end - t.start);
            from = t.start;
        } else {
            ++left;
            from = end;
        }
    }
    return left;
}

// Drops a part: the part, its relationship from `source` and its content-type override.
void drop_part(const ZipPackage& package, const std::string& source, const std::string& part,
               std::map<std::string, std::string>& replaced, std::set<std::string>& removed) {
    removed.insert(part);
    const std::string relsPart = package.find(relationships_part(source));
    if (!relsPart.empty()) {
        pugi::xml_document rels;
        load_part(rels, current(package, replaced, relsPart), relsPart);
        for (pugi::xml_node r = rels.document_element().first_child(); r;) {
            pugi::xml_node next = r.next_sibling();
            if (r.type() == pugi::node_element &&
                lower_name(resolve_target(source, r.attribute("Target").as_string())) ==
                    lower_name(part))
                rels.document_element().remove_child(r);
            r = next;
        }
        replaced[relsPart] = save_part(rels);
    }
    const std::string typesPart = package.find("[Content_Types].xml");
    pugi::xml_document types;
    load_part(types, current(package, replaced, typesPart), typesPart);
    for (pugi::xml_node o = types.document_element().first_child(); o;) {
        pugi::xml_node next = o.next_sibling();
        if (o.type() == pugi::node_element && local_name(o.name()) == "Override" &&
            lower_name(resolve_target("", o.attribute("PartName").as_string())) == lower_name(part))
            types.document_element().remove_child(o);
        o = next;
    }
    replaced[typesPart] = save_part(types);
}

}  // namespace

std::size_t delete_comments(const ZipPackage& package, const std::string& sheetPart,
                            const std::vector<CellAddress>& cells,
                            std::map<std::string, std::string>& replaced,
                            std::set<std::string>& removed) {
    std::set<std::string> refs;
    for (const auto& c : cells) refs.insert(column_letters(c.col) + std::to_string(c.row));
    const Relationships rels = read_relationships(package, sheetPart);
    std::size_t deleted = 0;

    // Legacy notes: the comment and its VML shape, always both.
    if (const Relationship* r = rels.by_type_suffix("/comments"); r && package.has(r->target)) {
        const std::string part = package.find(r->target);
        pugi::xml_document doc;
        load_part(doc, current(package, replaced, part), part);
        pugi::xml_node list = child_named(doc.document_element(), "commentList");
        std::size_t left = 0;
        for (pugi::xml_node c = list.first_child(); c;) {
            pugi::xml_node next = c.next_sibling();
            if (c.type() == pugi::node_element && local_name(c.name()) == "comment") {
                if (refs.count(c.attribute("ref").as_string())) {
                    list.remove_child(c);
                    ++deleted;
                } else {
                    ++left;
                }
            }
            c = next;
        }
        if (left == 0)
            drop_part(package, sheetPart, part, replaced, removed);
        else
            replaced[part] = save_part(doc);
    }
    if (const Relationship* r = rels.by_type_suffix("/vmlDrawing"); r && package.has(r->target)) {
        const std::string part = package.find(r->target);
        std::string vml = current(package, replaced, part);
        const std::size_t notesLeft = cut_note_shapes(vml, refs);
        const bool otherShapes = find_start(vml, "shape", 0).found();
        if (notesLeft == 0 && !otherShapes) {
            drop_part(package, sheetPart, part, replaced, removed);
            std::string sheet = current(package, replaced, sheetPart);
            if (const Tag t = find_start(sheet, "legacyDrawing", 0); t.found()) {
                const std::size_t end = element_end(sheet, t, "legacyDrawing");
                sheet.erase(t.start, (end == std::string::npos ? t.end : end) - t.start);
                replaced[sheetPart] = sheet;
            }
        } else {
            replaced[part] = vml;
        }
    }
    // Threaded comments: the thread and its replies; the persons stay.
    if (const Relationship* r = rels.by_type_suffix("/threadedComment");
        r && package.has(r->target)) {
        const std::string part = package.find(r->target);
        pugi::xml_document doc;
        load_part(doc, current(package, replaced, part), part);
        std::size_t left = 0;
        for (pugi::xml_node c = doc.document_element().first_child(); c;) {
            pugi::xml_node next = c.next_sibling();
            if (c.type() == pugi::node_element && local_name(c.name()) == "threadedComment") {
                if (refs.count(c.attribute("ref").as_string()))
                    doc.document_element().remove_child(c);
                else
                    ++left;
            }
            c = next;
        }
        if (left == 0)
            drop_part(package, sheetPart, part, replaced, removed);
        else
            replaced[part] = save_part(doc);
    }
    return deleted;
}

}  // namespace qumbrel::ooxml
