#pragma once
// The relationships between the parts of a workbook package, and the package-level edits
// of a save: the workbook type by the file's extension, and the calculation chain dropped
// when a formula was overwritten.
#include <map>
#include <set>
#include <string>
#include <string_view>
#include <vector>

#include "excel/ooxml/zip_package.h"

namespace qumbrel::ooxml {

struct Relationship {
    std::string id;
    std::string type;
    std::string target;  // resolved to a part name; "" for an external target
};

struct Relationships {
    std::vector<Relationship> items;
    // The pointers point into `items`: never ask a temporary.
    const Relationship* by_id(std::string_view id) const&;
    const Relationship* by_type_suffix(std::string_view suffix) const&;
    const Relationship* by_id(std::string_view id) const&& = delete;
    const Relationship* by_type_suffix(std::string_view suffix) const&& = delete;
};

// The .rels part of `source` ("" for the package's own), targets resolved against the
// source part's folder. An absent .rels part has no relationships.
Relationships read_relationships(const ZipPackage& package, const std::string& source);
// "xl/_rels/workbook.xml.rels" for "xl/workbook.xml"; "_rels/.rels" for "".
std::string relationships_part(const std::string& source);
// A relationship's target against the folder of `source`; "/x" is from the package root.
std::string resolve_target(const std::string& source, std::string_view target);

// The content type a workbook part has for an output file's extension, "" for others.
std::string workbook_content_type(std::string_view extension);

// Adds to `replaced`/`removed` what the package needs beside the sheets: the workbook
// part's content type for `out`'s extension and, after an overwritten formula, no
// calculation chain and a full calculation on load.
void adjust_package(const ZipPackage& package, const std::string& workbookPart,
                    const std::string& out, bool formulasOverwritten,
                    std::map<std::string, std::string>& replaced, std::set<std::string>& removed);

}  // namespace qumbrel::ooxml
