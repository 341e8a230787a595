#include "excel/ooxml/styles.h"

#include <array>
#include <utility>

#include "excel/ooxml/xml_nodes.h"
#include "excel/ooxml/zip_package.h"

namespace qumbrel::ooxml {

namespace {

// Custom number formats take ids from here on.
constexpr int kFirstCustomFormat = 164;

pugi::xml_node ensure_child(pugi::xml_node parent, std::string_view local, pugi::xml_node before) {
    if (pugi::xml_node n = child_named(parent, local)) return n;
    const std::string_view qualified = parent.name();
    const std::string prefix(qualified.substr(0, qualified.size() - local_name(qualified).size()));
    const std::string name = prefix + std::string(local);
    return before ? parent.insert_child_before(name.c_str(), before)
                  : parent.append_child(name.c_str());
}

void set_count(pugi::xml_node list, std::string_view item) {
    unsigned n = 0;
    for (pugi::xml_node c = list.first_child(); c; c = c.next_sibling())
        if (c.type() == pugi::node_element && local_name(c.name()) == item) ++n;
    if (!list.attribute("count")) list.append_attribute("count");
    list.attribute("count").set_value(n);
}

}  // namespace

int builtin_format_id(std::string_view code) {
    static constexpr std::array<std::pair<std::string_view, int>, 12> builtins = {{
        {"General", 0},
        {"0", 1},
        {"0.00", 2},
        {"#,##0", 3},
        {"#,##0.00", 4},
        {"0%", 9},
        {"0.00%", 10},
        {"0.00E+00", 11},
        {"mm-dd-yy", 14},
        {"h:mm", 20},
        {"h:mm:ss", 21},
        {"@", 49},
    }};
    for (const auto& [c, id] : builtins)
        if (c == code) return id;
    return -1;
}

Styles::Styles(const std::string& xml, std::string part)
    : doc_(std::make_unique<pugi::xml_document>()), part_(std::move(part)) {
    load_part(*doc_, xml, part_);
    if (local_name(doc_->document_element().name()) != "styleSheet")
        throw PackageError(part_ + " holds no style sheet");
}
Styles::~Styles() = default;
Styles::Styles(Styles&&) noexcept = default;
Styles& Styles::operator=(Styles&&) noexcept = default;

std::uint32_t Styles::format_index(std::string_view code) {
    pugi::xml_node sheet = doc_->document_element();
    int id = builtin_format_id(code);
    if (id < 0) {
        pugi::xml_node formats = ensure_child(sheet, "numFmts", sheet.first_child());
        int highest = kFirstCustomFormat - 1;
        for (pugi::xml_node f = formats.first_child(); f; f = f.next_sibling()) {
            if (f.type() != pugi::node_element) continue;
            if (code == f.attribute("formatCode").as_string())
                id = f.attribute("numFmtId").as_int();
            highest = std::max(highest, f.attribute("numFmtId").as_int());
        }
        if (id < 0) {
            id = highest + 1;
            const std::string prefix(formats.name(),
                                     local_name(formats.name()).data() - formats.name());
            pugi::xml_node f = formats.append_child((prefix + "numFmt").c_str());
            f.append_attribute("numFmtId").set_value(id);
            f.append_attribute("formatCode").set_value(std::string(code).c_str());
            set_count(formats, "numFmt");
            changed_ = true;
        }
    }
    pugi::xml_node xfs = child_named(sheet, "cellXfs");
    if (!xfs) throw PackageError(part_ + " has no cell formats (cellXfs)");
    std::uint32_t index = 0;
    for (pugi::xml_node x = xfs.first_child(); x; x = x.next_sibling()) {
        if (x.type() != pugi::node_element || local_name(x.name()) != "xf") continue;
        if (x.attribute("numFmtId").as_int() == id && x.attribute("fontId").as_int() == 0 &&
            x.attribute("fillId").as_int() == 0 && x.attribute("borderId").as_int() == 0 &&
            x.attribute("xfId").as_int() == 0)
            return index;
        ++index;
    }
    const std::string prefix(xfs.name(), local_name(xfs.name()).data() - xfs.name());
    pugi::xml_node x = xfs.append_child((prefix + "xf").c_str());
    x.append_attribute("numFmtId").set_value(id);
    for (const char* a : {"fontId", "fillId", "borderId", "xfId"})
        x.append_attribute(a).set_value(0);
    x.append_attribute("applyNumberFormat").set_value(1);
    set_count(xfs, "xf");
    changed_ = true;
    return index;
}

std::string Styles::xml() const {
    return save_part(*doc_);
}

}  // namespace qumbrel::ooxml
