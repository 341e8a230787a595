#include "frame/profile.h"

#include <unistd.h>
#include <cstdio>
#include <filesystem>
#include <fstream>
#include <system_error>

#include "frame/codepage.h"
#include "frame/text.h"

namespace qumbrel::profile {

namespace {

struct Document {
    std::vector<std::string> lines;  // without line ends
    std::string eol = "\r\n";
    bool existed = false;
};

enum class LineKind { Other, Section, Entry };

struct Parsed {
    LineKind kind = LineKind::Other;
    std::string_view name;   // section or key name, trimmed
    std::string_view value;  // entry value, trimmed
};

Parsed parse_line(std::string_view line) {
    const std::string_view t = trim_blanks(line);
    if (t.empty() || t.front() == ';') return {};
    if (t.front() == '[') {
        const auto close = t.find(']');
        const std::string_view inner =
            t.substr(1, close == std::string_view::npos ? t.npos : close - 1);
        return {LineKind::Section, trim_blanks(inner), {}};
    }
    const auto eq = t.find('=');
    if (eq == std::string_view::npos) return {};
    return {LineKind::Entry, trim_blanks(t.substr(0, eq)), trim_blanks(t.substr(eq + 1))};
}

std::string_view unquote(std::string_view v) {
    if (v.size() >= 2 && v.front() == '"' && v.back() == '"') return v.substr(1, v.size() - 2);
    return v;
}

FileState load(const std::string& path, Document& doc) {
    std::error_code ec;
    const auto status = std::filesystem::status(path, ec);
    if (ec || !std::filesystem::exists(status)) return FileState::Missing;
    if (!std::filesystem::is_regular_file(status)) return FileState::Unreadable;
    const auto size = std::filesystem::file_size(path, ec);
    if (ec) return FileState::Unreadable;
    if (size > kMaxFileBytes) return FileState::TooLarge;
    std::ifstream in(path, std::ios::binary);
    if (!in) return FileState::Unreadable;
    std::string data(static_cast<std::size_t>(size), '\0');
    in.read(data.data(), static_cast<std::streamsize>(size));
    data.resize(static_cast<std::size_t>(in.gcount()));
    doc.existed = true;
    doc.eol = data.find("\r\n") != std::string::npos || data.find('\n') == std::string::npos
                  ? "\r\n"
                  : "\n";
    std::size_t start = 0;
    while (start < data.size()) {
        auto end = data.find('\n', start);
        if (end == std::string::npos) end = data.size();
        std::string_view line(data.data() + start, end - start);
        if (!line.empty() && line.back() == '\r') line.remove_suffix(1);
        doc.lines.emplace_back(line);
        start = end + 1;
    }
    return FileState::Ok;
}

bool save(const std::string& path, const Document& doc) {
    std::string data;
    for (const auto& l : doc.lines) {
        data += l;
        data += doc.eol;
    }
    if (data.size() > kMaxFileBytes) return false;
    // Write beside the file and rename, so a reader never sees half a file.
    const std::string tmp = path + ".~" + std::to_string(::getpid());
    {
        std::ofstream out(tmp, std::ios::binary | std::ios::trunc);
        if (!out) return false;
        out.write(data.data(), static_cast<std::streamsize>(data.size()));
        out.flush();
        if (!out) {
            out.close();
            std::remove(tmp.c_str());
            return false;
        }
    }
    std::error_code ec;
    if (doc.existed) {
        // Keep the permissions of the file we replace.
        const auto perms = std::filesystem::status(path, ec).permissions();
        if (!ec) std::filesystem::permissions(tmp, perms, ec);
    }
    std::filesystem::rename(tmp, path, ec);
    if (ec) {
        std::remove(tmp.c_str());
        return false;
    }
    return true;
}

// Index of the first section line named `section`, or npos.
std::size_t find_section(const Document& doc, std::string_view section) {
    for (std::size_t i = 0; i < doc.lines.size(); ++i) {
        const Parsed p = parse_line(doc.lines[i]);
        if (p.kind == LineKind::Section && iequals(p.name, section)) return i;
    }
    return std::string::npos;
}

// One past the last line of the section that starts at `head`.
std::size_t section_end(const Document& doc, std::size_t head) {
    std::size_t i = head + 1;
    while (i < doc.lines.size() && parse_line(doc.lines[i]).kind != LineKind::Section) ++i;
    return i;
}

std::size_t find_key(const Document& doc, std::size_t head, std::string_view key) {
    const std::size_t end = section_end(doc, head);
    for (std::size_t i = head + 1; i < end; ++i) {
        const Parsed p = parse_line(doc.lines[i]);
        if (p.kind == LineKind::Entry && iequals(p.name, key)) return i;
    }
    return std::string::npos;
}

std::string cut(std::string_view text, std::size_t bufferSize) {
    if (bufferSize == 0) return {};
    return std::string(utf8_prefix(text, bufferSize - 1));
}

// A list of names as the platform returns it: joined by NULs, cut to bufferSize - 2
// characters when it does not fit, so the last name may be cut short.
std::vector<std::string> cut_list(const std::vector<std::string>& names, std::size_t bufferSize) {
    std::vector<std::string> out;
    if (bufferSize < 2) return out;
    std::size_t room = bufferSize - 2;
    for (const auto& n : names) {
        if (room == 0) break;
        const std::size_t len = utf8_length(n);
        if (len + 1 <= room) {
            out.push_back(n);
            room -= len + 1;
        } else {
            out.emplace_back(utf8_prefix(n, room));
            break;
        }
    }
    return out;
}

}  // namespace

FileState probe(const std::string& path) {
    Document doc;
    return load(path, doc);
}

std::optional<std::string> find(const std::string& path, std::string_view section,
                                std::string_view key) {
    Document doc;
    if (load(path, doc) != FileState::Ok) return std::nullopt;
    const std::size_t head = find_section(doc, section);
    if (head == std::string::npos) return std::nullopt;
    const std::size_t at = find_key(doc, head, key);
    if (at == std::string::npos) return std::nullopt;
    return utf8_or_cp1252(unquote(parse_line(doc.lines[at]).value));
}

std::string read(const std::string& path, std::string_view section, std::string_view key,
                 std::string_view def, std::size_t bufferSize) {
    if (auto v = find(path, section, key)) return cut(*v, bufferSize);
    return cut(trim_right_blanks(def), bufferSize);
}

std::vector<std::string> keys(const std::string& path, std::string_view section,
                              std::size_t bufferSize) {
    Document doc;
    if (load(path, doc) != FileState::Ok) return {};
    const std::size_t head = find_section(doc, section);
    if (head == std::string::npos) return {};
    std::vector<std::string> names;
    const std::size_t end = section_end(doc, head);
    for (std::size_t i = head + 1; i < end; ++i) {
        const Parsed p = parse_line(doc.lines[i]);
        if (p.kind == LineKind::Entry) names.push_back(utf8_or_cp1252(p.name));
    }
    return cut_list(names, bufferSize);
}

std::vector<std::string> sections(const std::string& path, std::size_t bufferSize) {
    Document doc;
    if (load(path, doc) != FileState::Ok) return {};
    std::vector<std::string> names;
    for (const auto& l : doc.lines) {
        const Parsed p = parse_line(l);
        if (p.kind == LineKind::Section) names.push_back(utf8_or_cp1252(p.name));
    }
    return cut_list(names, bufferSize);
}

bool write(const std::string& path, std::string_view section, std::string_view key,
           std::optional<std::string_view> rawValue) {
    // A line break in a value would start a line of its own and could forge keys.
    std::optional<std::string> flat;
    if (rawValue) {
        flat.emplace(*rawValue);
        for (char& c : *flat)
            if (c == '\r' || c == '\n') c = ' ';
    }
    const std::string* value = flat ? &*flat : nullptr;
    Document doc;
    const FileState st = load(path, doc);
    if (st == FileState::TooLarge || st == FileState::Unreadable) return false;
    std::size_t head = find_section(doc, section);
    if (head == std::string::npos) {
        if (!value) return true;  // nothing to remove
        doc.lines.push_back("[" + std::string(section) + "]");
        doc.lines.push_back(std::string(key) + "=" + *value);
        return save(path, doc);
    }
    const std::size_t at = find_key(doc, head, key);
    if (at != std::string::npos) {
        if (value) {
            const std::string name(parse_line(doc.lines[at]).name);
            doc.lines[at] = name + "=" + *value;
        } else {
            doc.lines.erase(doc.lines.begin() + static_cast<std::ptrdiff_t>(at));
        }
        return save(path, doc);
    }
    if (!value) return true;
    // New key behind the last non-empty line of the section.
    std::size_t insert = section_end(doc, head);
    while (insert > head + 1 && trim_blanks(doc.lines[insert - 1]).empty()) --insert;
    doc.lines.insert(doc.lines.begin() + static_cast<std::ptrdiff_t>(insert),
                     std::string(key) + "=" + *value);
    return save(path, doc);
}

bool remove_section(const std::string& path, std::string_view section) {
    Document doc;
    const FileState st = load(path, doc);
    if (st == FileState::Missing) return true;
    if (st != FileState::Ok) return false;
    const std::size_t head = find_section(doc, section);
    if (head == std::string::npos) return true;
    const std::size_t end = section_end(doc, head);
    doc.lines.erase(doc.lines.begin() + static_cast<std::ptrdiff_t>(head),
                    doc.lines.begin() + static_cast<std::ptrdiff_t>(end));
    return save(path, doc);
}

bool ensure_section(const std::string& path, std::string_view section) {
    Document doc;
    const FileState st = load(path, doc);
    if (st == FileState::TooLarge || st == FileState::Unreadable) return false;
    if (find_section(doc, section) != std::string::npos) return true;
    doc.lines.push_back("[" + std::string(section) + "]");
    return save(path, doc);
}

}  // namespace qumbrel::profile
