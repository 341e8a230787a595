// Why our own module over libzip: the package must copy untouched parts raw (their
// compressed bytes) and write the changed ones at a chosen level into a fresh archive;
// libzip's zip_file_replace ignores the compression setting and rewrites in place.
#include "excel/ooxml/zip_package.h"

#include <fcntl.h>
#include <unistd.h>
#include <zip.h>

#include <algorithm>
#include <cerrno>
#include <cstring>
#include <filesystem>
#include <fstream>

namespace qumbrel::ooxml {

namespace {

// Deflate level of the parts we write: libzip's default behaves like 9 and takes 4x the
// time for 2 % less.
constexpr int kDeflateLevel = 6;

bool climbs_out(std::string_view name) {
    if (name.empty() || name.front() == '/' || name.front() == '\\') return true;
    std::size_t at = 0;
    while (at <= name.size()) {
        const std::size_t end = std::min(name.find_first_of("/\\", at), name.size());
        if (name.substr(at, end - at) == "..") return true;
        at = end + 1;
    }
    return false;
}

std::string zip_error_text(int code) {
    zip_error_t e;
    zip_error_init_with_code(&e, code);
    std::string text = zip_error_strerror(&e);
    zip_error_fini(&e);
    return text;
}

void sync_file(const std::string& path) {
    const int fd = ::open(path.c_str(), O_RDONLY | O_CLOEXEC);
    if (fd < 0) throw PackageError("cannot reopen " + path + ": " + std::strerror(errno));
    const int rc = ::fsync(fd);
    ::close(fd);
    if (rc != 0) throw PackageError("cannot sync " + path + ": " + std::strerror(errno));
    const std::string folder = std::filesystem::path(path).parent_path().string();
    const int dir = ::open(folder.empty() ? "." : folder.c_str(), O_RDONLY | O_DIRECTORY);
    if (dir >= 0) {
        ::fsync(dir);
        ::close(dir);
    }
}

}  // namespace

struct ZipPackage::Archive {
    zip_t* zip = nullptr;
    ~Archive() {
        if (zip) zip_discard(zip);
    }
};

std::string lower_name(std::string_view name) {
    std::string out(name);
    std::transform(out.begin(), out.end(), out.begin(), [](unsigned char c) {
        return static_cast<char>(c >= 'A' && c <= 'Z' ? c + 32 : c);
    });
    return out;
}

ZipPackage::ZipPackage(std::string path, std::unique_ptr<Archive> archive)
    : path_(std::move(path)), archive_(std::move(archive)) {}
ZipPackage::ZipPackage(ZipPackage&&) noexcept = default;
ZipPackage& ZipPackage::operator=(ZipPackage&&) noexcept = default;
ZipPackage::~ZipPackage() = default;

ZipPackage ZipPackage::open(const std::string& path) {
    {
        std::ifstream in(path, std::ios::binary);
        if (!in) throw PackageError("cannot open " + path + ": " + std::strerror(errno));
        char head[4] = {};
        in.read(head, 4);
        if (std::memcmp(head, "\xD0\xCF\x11\xE0", 4) == 0)
            throw PackageError(path + " is an encrypted or legacy (.xls) workbook, not OOXML");
        if (std::memcmp(head, "PK", 2) != 0) throw PackageError(path + " is no workbook (no zip)");
    }
    int code = 0;
    auto archive = std::make_unique<Archive>();
    archive->zip = zip_open(path.c_str(), ZIP_RDONLY | ZIP_CHECKCONS, &code);
    if (!archive->zip) throw PackageError(path + ": " + zip_error_text(code));
    ZipPackage p(path, std::move(archive));
    const zip_int64_t n = zip_get_num_entries(p.archive_->zip, 0);
    for (zip_int64_t i = 0; i < n; ++i) {
        zip_stat_t st;
        if (zip_stat_index(p.archive_->zip, static_cast<zip_uint64_t>(i), 0, &st) != 0)
            throw PackageError(path + ": entry " + std::to_string(i) + " cannot be read");
        const std::string name = st.name ? st.name : "";
        if (climbs_out(name)) throw PackageError(path + ": part name '" + name + "' is unsafe");
        if ((st.valid & ZIP_STAT_SIZE) && st.size > kMaxPartBytes)
            throw PackageError(path + ": part " + name + " claims " + std::to_string(st.size) +
                               " bytes, more than a workbook part may hold");
        if ((st.valid & ZIP_STAT_ENCRYPTION_METHOD) && st.encryption_method != ZIP_EM_NONE)
            throw PackageError(path + ": part " + name + " is encrypted");
        p.names_.push_back(name);
        p.index_[lower_name(name)] = static_cast<std::size_t>(i);
    }
    return p;
}

std::string ZipPackage::find(std::string_view name) const {
    const auto it = index_.find(lower_name(name));
    return it == index_.end() ? std::string() : names_[it->second];
}

std::string ZipPackage::read(std::string_view name) const {
    const auto it = index_.find(lower_name(name));
    if (it == index_.end())
        throw PackageError(path_ + ": part " + std::string(name) + " is missing");
    zip_stat_t st;
    zip_stat_index(archive_->zip, it->second, 0, &st);
    zip_file_t* f = zip_fopen_index(archive_->zip, it->second, 0);
    if (!f) throw PackageError(path_ + ": part " + std::string(name) + " cannot be opened");
    std::string bytes;
    bytes.resize(static_cast<std::size_t>(std::min<std::uint64_t>(st.size, kMaxPartBytes)));
    std::size_t got = 0;
    while (got < bytes.size()) {
        const zip_int64_t r = zip_fread(f, bytes.data() + got, bytes.size() - got);
        if (r <= 0) break;
        got += static_cast<std::size_t>(r);
    }
    // One byte more than claimed means the entry lies about its size.
    char extra = 0;
    const bool longer = zip_fread(f, &extra, 1) > 0;
    const int closeRc = zip_fclose(f);
    if (got != bytes.size() || longer || closeRc != 0)
        throw PackageError(path_ + ": part " + std::string(name) + " is damaged");
    return bytes;
}

void ZipPackage::save_as(const std::string& out, const std::map<std::string, std::string>& replaced,
                         const std::set<std::string>& removed, SpilledParts spilled) const {
    std::set<std::string> drop;
    for (const auto& r : removed) drop.insert(lower_name(r));
    std::map<std::string, std::unique_ptr<std::FILE, int (*)(std::FILE*)>*> fromFile;
    for (auto& [name, file] : spilled) fromFile[lower_name(name)] = &file;
    std::map<std::string, const std::string*> put;  // lower name -> bytes
    std::map<std::string, std::string> putNames;    // lower name -> name to store
    for (const auto& [name, bytes] : replaced) {
        put[lower_name(name)] = &bytes;
        putNames[lower_name(name)] = name;
    }

    // libzip writes to a temporary file of its own and renames it at zip_close.
    int code = 0;
    zip_t* dst = zip_open(out.c_str(), ZIP_CREATE | ZIP_TRUNCATE, &code);
    if (!dst) throw PackageError("cannot create " + out + ": " + zip_error_text(code));
    auto fail = [&](const std::string& why) {
        zip_discard(dst);
        throw PackageError("cannot write " + out + ": " + why);
    };
    auto add_bytes = [&](const std::string& name, const std::string& bytes) {
        zip_source_t* src = zip_source_buffer(dst, bytes.data(), bytes.size(), 0);
        if (!src) fail(zip_strerror(dst));
        const zip_int64_t at = zip_file_add(dst, name.c_str(), src, ZIP_FL_ENC_UTF_8);
        if (at < 0) {
            zip_source_free(src);
            fail(zip_strerror(dst));
        }
        zip_set_file_compression(dst, static_cast<zip_uint64_t>(at), ZIP_CM_DEFLATE, kDeflateLevel);
    };
    // The file goes to the source, which closes it when it is freed.
    auto add_file = [&](const std::string& name,
                        std::unique_ptr<std::FILE, int (*)(std::FILE*)>& file) {
        zip_source_t* src = zip_source_filep(dst, file.get(), 0, -1);
        if (!src) fail(zip_strerror(dst));
        file.release();
        const zip_int64_t at = zip_file_add(dst, name.c_str(), src, ZIP_FL_ENC_UTF_8);
        if (at < 0) {
            zip_source_free(src);
            fail(zip_strerror(dst));
        }
        zip_set_file_compression(dst, static_cast<zip_uint64_t>(at), ZIP_CM_DEFLATE, kDeflateLevel);
    };
    auto copy_raw = [&](std::size_t index, const std::string& name) {
        zip_source_t* src = zip_source_zip(dst, archive_->zip, index, ZIP_FL_COMPRESSED, 0, -1);
        if (!src) fail(zip_strerror(dst));
        if (zip_file_add(dst, name.c_str(), src, ZIP_FL_ENC_UTF_8) < 0) {
            zip_source_free(src);
            fail(zip_strerror(dst));
        }
    };
    auto emit = [&](const std::string& name, std::size_t index) {
        const std::string key = lower_name(name);
        if (drop.count(key)) return;
        if (const auto f = fromFile.find(key); f != fromFile.end()) {
            add_file(name, *f->second);
            fromFile.erase(f);
        } else if (const auto it = put.find(key); it != put.end()) {
            add_bytes(name, *it->second);
            put.erase(it);
        } else {
            copy_raw(index, name);
        }
    };
    // The content types first, as readers that stream the archive expect.
    const std::string types = "[content_types].xml";
    if (const auto it = index_.find(types); it != index_.end())
        emit(names_[it->second], it->second);
    else if (const auto p = put.find(types); p != put.end()) {
        add_bytes(putNames[types], *p->second);
        put.erase(p);
    }
    for (std::size_t i = 0; i < names_.size(); ++i) {
        if (lower_name(names_[i]) == types) continue;
        emit(names_[i], i);
    }
    for (const auto& [key, bytes] : put) add_bytes(putNames[key], *bytes);
    if (zip_close(dst) != 0) fail(zip_strerror(dst));
    sync_file(out);
}

std::uint64_t ZipPackage::stored_size(const std::string& path, std::string_view name) {
    int code = 0;
    zip_t* z = zip_open(path.c_str(), ZIP_RDONLY, &code);
    if (!z) return 0;
    zip_stat_t st;
    const std::string n(name);
    const bool found = zip_stat(z, n.c_str(), 0, &st) == 0 && (st.valid & ZIP_STAT_SIZE);
    zip_discard(z);
    return found ? st.size : 0;
}

void ZipPackage::write_new(const std::string& path,
                           const std::vector<std::pair<std::string, std::string>>& parts) {
    int code = 0;
    zip_t* dst = zip_open(path.c_str(), ZIP_CREATE | ZIP_TRUNCATE, &code);
    if (!dst) throw PackageError("cannot create " + path + ": " + zip_error_text(code));
    for (const auto& [name, bytes] : parts) {
        zip_source_t* src = zip_source_buffer(dst, bytes.data(), bytes.size(), 0);
        const zip_int64_t at = src ? zip_file_add(dst, name.c_str(), src, ZIP_FL_ENC_UTF_8) : -1;
        if (at < 0) {
            if (src) zip_source_free(src);
            const std::string why = zip_strerror(dst);
            zip_discard(dst);
            throw PackageError("cannot write " + path + ": " + why);
        }
        zip_set_file_compression(dst, static_cast<zip_uint64_t>(at), ZIP_CM_DEFLATE, kDeflateLevel);
    }
    if (zip_close(dst) != 0) {
        const std::string why = zip_strerror(dst);
        zip_discard(dst);
        throw PackageError("cannot write " + path + ": " + why);
    }
    sync_file(path);
}

}  // namespace qumbrel::ooxml
