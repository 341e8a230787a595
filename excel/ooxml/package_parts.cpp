#include "excel/ooxml/package_parts.h"

#include <filesystem>
#include <vector>

#include "excel/ooxml/xml_nodes.h"

namespace qumbrel::ooxml {

namespace {

constexpr std::string_view kCalcChainType =
    "http://schemas.openxmlformats.org/officeDocument/2006/relationships/calcChain";

std::string folder_of(const std::string& part) {
    const auto slash = part.find_last_of('/');
    return slash == std::string::npos ? std::string() : part.substr(0, slash);
}

// The parts a save replaces are read from `replaced` first, so several edits compose.
std::string current(const ZipPackage& package, const std::map<std::string, std::string>& replaced,
                    const std::string& part) {
    const auto it = replaced.find(part);
    return it != replaced.end() ? it->second : package.read(part);
}

}  // namespace

const Relationship* Relationships::by_id(std::string_view id) const& {
    for (const auto& r : items)
        if (r.id == id) return &r;
    return nullptr;
}

const Relationship* Relationships::by_type_suffix(std::string_view suffix) const& {
    for (const auto& r : items)
        if (r.type.ends_with(suffix)) return &r;
    return nullptr;
}

std::string relationships_part(const std::string& source) {
    if (source.empty()) return "_rels/.rels";
    const std::string folder = folder_of(source);
    const std::string file = source.substr(folder.empty() ? 0 : folder.size() + 1);
    return (folder.empty() ? std::string() : folder + "/") + "_rels/" + file + ".rels";
}

std::string resolve_target(const std::string& source, std::string_view target) {
    std::string path =
        !target.empty() && target.front() == '/'
            ? std::string(target.substr(1))
            : (folder_of(source).empty() ? std::string(target)
                                         : folder_of(source) + "/" + std::string(target));
    std::vector<std::string> parts;
    std::size_t at = 0;
    while (at <= path.size()) {
        const std::size_t end = std::min(path.find('/', at), path.size());
        const std::string piece = path.substr(at, end - at);
        if (piece == "..") {
            if (!parts.empty()) parts.pop_back();
        } else if (!piece.empty() && piece != ".") {
            parts.push_back(piece);
        }
        at = end + 1;
    }
    std::string out;
    for (const auto& p : parts) out += (out.empty() ? "" : "/") + p;
    return out;
}

Relationships read_relationships(const ZipPackage& package, const std::string& source) {
    Relationships rels;
    const std::string part = package.find(relationships_part(source));
    if (part.empty()) return rels;
    pugi::xml_document doc;
    load_part(doc, package.read(part), part);
    for (pugi::xml_node r = doc.document_element().first_child(); r; r = r.next_sibling()) {
        if (r.type() != pugi::node_element || local_name(r.name()) != "Relationship") continue;
        Relationship x;
        x.id = r.attribute("Id").as_string();
        x.type = r.attribute("Type").as_string();
        if (std::string_view(r.attribute("TargetMode").as_string()) != "External")
            x.target = resolve_target(source, r.attribute("Target").as_string());
        rels.items.push_back(std::move(x));
    }
    return rels;
}

std::string workbook_content_type(std::string_view extension) {
    std::string e(extension);
    for (auto& c : e) c = static_cast<char>(std::tolower(static_cast<unsigned char>(c)));
    if (e == ".xlsx")
        return "application/vnd.openxmlformats-officedocument.spreadsheetml.sheet.main+xml";
    if (e == ".xltx")
        return "application/vnd.openxmlformats-officedocument.spreadsheetml.template.main+xml";
    if (e == ".xlsm") return "application/vnd.ms-excel.sheet.macroEnabled.main+xml";
    if (e == ".xltm") return "application/vnd.ms-excel.template.macroEnabled.main+xml";
    return {};
}

void adjust_package(const ZipPackage& package, const std::string& workbookPart,
                    const std::string& out, bool formulasOverwritten,
                    std::map<std::string, std::string>& replaced, std::set<std::string>& removed) {
    const std::string typesPart = package.find("[Content_Types].xml");
    if (typesPart.empty()) throw PackageError(package.path() + ": [Content_Types].xml is missing");
    pugi::xml_document types;
    load_part(types, current(package, replaced, typesPart), typesPart);
    bool typesChanged = false;

    const std::string wanted =
        workbook_content_type(std::filesystem::path(out).extension().string());
    std::string calcChain;
    if (formulasOverwritten) {
        const Relationships rels = read_relationships(package, workbookPart);
        for (const auto& r : rels.items)
            if (r.type == kCalcChainType) calcChain = package.find(r.target);
    }
    for (pugi::xml_node o = types.document_element().first_child(); o;) {
        pugi::xml_node next = o.next_sibling();
        if (o.type() == pugi::node_element && local_name(o.name()) == "Override") {
            const std::string name = resolve_target("", o.attribute("PartName").as_string());
            if (!wanted.empty() && lower_name(name) == lower_name(workbookPart) &&
                wanted != o.attribute("ContentType").as_string()) {
                o.attribute("ContentType").set_value(wanted.c_str());
                typesChanged = true;
            }
            if (!calcChain.empty() && lower_name(name) == lower_name(calcChain)) {
                types.document_element().remove_child(o);
                typesChanged = true;
            }
        }
        o = next;
    }
    if (typesChanged) replaced[typesPart] = save_part(types);

    if (calcChain.empty()) return;
    // A stale calculation chain makes Excel repair the file: it goes, with its
    // relationship, and the workbook recalculates when opened.
    removed.insert(calcChain);
    const std::string relsPart = package.find(relationships_part(workbookPart));
    pugi::xml_document rels;
    load_part(rels, current(package, replaced, relsPart), relsPart);
    for (pugi::xml_node r = rels.document_element().first_child(); r;) {
        pugi::xml_node next = r.next_sibling();
        if (r.type() == pugi::node_element && r.attribute("Type").as_string() == kCalcChainType)
            rels.document_element().remove_child(r);
        r = next;
    }
    replaced[relsPart] = save_part(rels);

    pugi::xml_document book;
    load_part(book, current(package, replaced, workbookPart), workbookPart);
    pugi::xml_node root = book.document_element();
    pugi::xml_node calc = child_named(root, "calcPr");
    if (!calc) {
        const std::string prefix(root.name(), local_name(root.name()).data() - root.name());
        calc = root.insert_child_after((prefix + "calcPr").c_str(),
                                       child_named(root, "definedNames")
                                           ? child_named(root, "definedNames")
                                           : child_named(root, "sheets"));
    }
    if (calc.attribute("fullCalcOnLoad"))
        calc.attribute("fullCalcOnLoad").set_value("1");
    else
        calc.append_attribute("fullCalcOnLoad").set_value("1");
    replaced[workbookPart] = save_part(book);
}

}  // namespace qumbrel::ooxml
