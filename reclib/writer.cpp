#include "reclib/writer.h"

#include <zlib.h>

#include <array>
#include <bit>
#include <cerrno>
#include <cstdio>
#include <cstring>
#include <memory>
#include <stdexcept>
#include <system_error>

#include "reclib/format.h"

namespace qumbrel::reclib {

namespace {

// Where the encoded bytes go; the body's check sum is kept on the way.
class Sink {
  public:
    virtual ~Sink() = default;
    void body(const std::vector<std::uint8_t>& bytes) {
        crc_ = ::crc32_z(crc_, bytes.data(), bytes.size());
        length_ += bytes.size();
        put(bytes.data(), bytes.size());
    }
    std::uint32_t crc() const { return static_cast<std::uint32_t>(crc_); }
    std::uint64_t length() const { return length_; }
    virtual void put(const std::uint8_t* data, std::size_t size) = 0;

  private:
    uLong crc_ = ::crc32_z(0L, Z_NULL, 0);
    std::uint64_t length_ = 0;
};

class Bytes {
  public:
    std::vector<std::uint8_t> b;
    void u8(std::uint8_t v) { b.push_back(v); }
    void u16(std::uint16_t v) { raw(&v, 2); }
    void u32(std::uint32_t v) { raw(&v, 4); }
    void u64(std::uint64_t v) { raw(&v, 8); }
    void i32(std::int32_t v) { raw(&v, 4); }
    void f64(double v) { raw(&v, 8); }
    void f32(float v) { raw(&v, 4); }
    void text(std::string_view s) { raw(s.data(), s.size()); }
    // Little-endian hosts only (checked below): values are copied as they lie in memory.
    void raw(const void* p, std::size_t n) {
        if (n == 0) return;
        const std::size_t at = b.size();
        b.resize(at + n);
        std::memcpy(b.data() + at, p, n);
    }
};
static_assert(std::endian::native == std::endian::little, "the writer assumes little-endian");

void put_name(Bytes& out, std::string_view name) {
    if (name.empty() || name.size() > format::kMaxNameLength) {
        throw std::invalid_argument("field name must have 1 to 255 bytes: '" + std::string(name) +
                                    "'");
    }
    out.u8(static_cast<std::uint8_t>(name.size()));
    out.text(name);
}

void put_fields(Bytes& out, const Fields& fields) {
    if (fields.items().size() > 0xFFFF) throw std::invalid_argument("more than 65535 fields");
    out.u16(static_cast<std::uint16_t>(fields.items().size()));
    for (const auto& [name, value] : fields.items()) {
        put_name(out, name);
        if (const auto* i = std::get_if<std::int32_t>(&value)) {
            out.u8(format::kInt32);
            out.i32(*i);
        } else if (const auto* d = std::get_if<double>(&value)) {
            out.u8(format::kFloat64);
            out.f64(*d);
        } else {
            const auto& s = std::get<std::string>(value);
            if (s.size() > format::kMaxTextLength) {
                throw std::invalid_argument("text of field '" + name + "' over 65535 bytes");
            }
            out.u8(format::kText);
            out.u16(static_cast<std::uint16_t>(s.size()));
            out.text(s);
        }
    }
}

Bytes section(std::uint32_t tag) {
    Bytes s;
    s.u32(tag);
    s.u32(0);  // length, patched by finish()
    return s;
}

const std::vector<std::uint8_t>& finish(Bytes& s) {
    const std::uint64_t payload = s.b.size() - format::kSectionHeaderSize;
    if (payload > 0xFFFFFFFFu) throw std::invalid_argument("section over 4 GiB");
    const auto len = static_cast<std::uint32_t>(payload);
    std::memcpy(s.b.data() + 4, &len, 4);
    return s.b;
}

std::uint32_t checked_count(std::size_t n) {
    if (n > 0x7FFFFFFFu) throw std::invalid_argument("more than 2^31-1 samples");
    return static_cast<std::uint32_t>(n);
}

void write_channel(Sink& sink, std::uint32_t index, const Channel& ch) {
    const bool isFloat = ch.type == DataType::Float32;
    const std::size_t n = isFloat ? ch.fvalues.size() : ch.values.size();
    const std::size_t n2 = isFloat ? ch.fvalues2.size() : ch.values2.size();
    if (n2 != 0 && n2 != n) {
        throw std::invalid_argument("channel " + std::to_string(index + 1) +
                                    ": minimum and maximum series differ in length");
    }
    const std::uint8_t series = n2 ? 2 : 1;
    Bytes s = section(format::kTagChannel);
    s.u32(index);
    s.u8(ch.math ? format::kChannelMath : 0);
    s.u8(static_cast<std::uint8_t>(ch.type));
    s.u8(series);
    put_fields(s, ch.info);
    s.u32(checked_count(n));
    const std::size_t width = ch.type == DataType::Int16 ? 2 : 4;
    s.b.reserve(s.b.size() + n * width * series);
    auto put_series = [&](const std::vector<std::int32_t>& v, const std::vector<float>& f) {
        if (isFloat) {
            for (float x : f) s.f32(x);
        } else if (ch.type == DataType::Int16) {
            for (std::int32_t x : v) {
                const auto y =
                    static_cast<std::int16_t>(x < -32768 ? -32768 : (x > 32767 ? 32767 : x));
                s.raw(&y, 2);
            }
        } else {
            s.raw(v.data(), v.size() * 4);
        }
    };
    put_series(ch.values, ch.fvalues);
    if (series == 2) put_series(ch.values2, ch.fvalues2);
    sink.body(finish(s));

    auto bytes = [&](std::uint8_t what, const std::vector<std::uint8_t>& v) {
        if (v.empty()) return;
        Bytes b = section(format::kTagBytes);
        b.u32(index);
        b.u8(what);
        b.u32(checked_count(v.size()));
        b.raw(v.data(), v.size());
        sink.body(finish(b));
    };
    bytes(format::kBytesAlarms, ch.alarms);
    bytes(format::kBytesFlags, ch.flags);
}

void write_body(Sink& sink, const RecorderFile& file) {
    Bytes head = section(format::kTagHead);
    put_fields(head, file.header);
    sink.body(finish(head));

    for (const auto& [name, records] : file.lists) {
        Bytes s = section(format::kTagList);
        put_name(s, name);
        s.u32(checked_count(records.size()));
        for (const auto& r : records) put_fields(s, r);
        sink.body(finish(s));
    }

    if (file.ticks.size() != file.seconds.size()) {
        throw std::invalid_argument("sample times: seconds and ticks differ in length");
    }
    Bytes t = section(format::kTagTime);
    t.u32(checked_count(file.seconds.size()));
    t.raw(file.seconds.data(), file.seconds.size() * 4);
    t.raw(file.ticks.data(), file.ticks.size() * 4);
    sink.body(finish(t));

    for (std::size_t i = 0; i < file.channels.size(); ++i) {
        write_channel(sink, static_cast<std::uint32_t>(i), file.channels[i]);
    }
}

std::array<std::uint8_t, format::kHeaderSize> file_header(const RecorderFile& file,
                                                          const Sink& sink, bool damaged) {
    Bytes h;
    h.raw(format::kMagic, sizeof format::kMagic);
    h.u16(format::kVersionMajor);
    h.u16(format::kVersionMinor);
    h.u8(static_cast<std::uint8_t>(file.family));
    h.u8(static_cast<std::uint8_t>(file.kind));
    h.u16(static_cast<std::uint16_t>(format::kHeaderSize));
    h.u64(sink.length());
    // The check sum runs on from the body over the header's fields (bytes 8 to 23).
    const auto crc = static_cast<std::uint32_t>(
        ::crc32_z(sink.crc(), h.b.data() + format::kCrcHeaderFrom, format::kCrcHeaderLength));
    h.u32(damaged ? ~crc : crc);
    h.u32(0);
    std::array<std::uint8_t, format::kHeaderSize> out{};
    std::memcpy(out.data(), h.b.data(), out.size());
    return out;
}

class MemorySink : public Sink {
  public:
    std::vector<std::uint8_t> out = std::vector<std::uint8_t>(format::kHeaderSize);
    void put(const std::uint8_t* data, std::size_t size) override {
        out.insert(out.end(), data, data + size);
    }
};

struct FileCloser {
    void operator()(std::FILE* f) const { std::fclose(f); }
};

class FileSink : public Sink {
  public:
    explicit FileSink(std::FILE* f) : f_(f) {}
    void put(const std::uint8_t* data, std::size_t size) override {
        if (ok && std::fwrite(data, 1, size, f_) != size) ok = false;
    }
    bool ok = true;

  private:
    std::FILE* f_;
};

}  // namespace

std::vector<std::uint8_t> encode(const RecorderFile& file, const WriteOptions& options) {
    MemorySink sink;
    write_body(sink, file);
    const auto header = file_header(file, sink, options.damaged);
    std::memcpy(sink.out.data(), header.data(), header.size());
    return std::move(sink.out);
}

bool write_file(const RecorderFile& file, const std::filesystem::path& path,
                const WriteOptions& options, std::string* error) {
    auto fail = [&](std::string message) {
        if (error) *error = std::move(message);
        return false;
    };
    std::filesystem::path tmp = path;
    tmp += ".tmp";
    bool written = false;
    try {
        std::vector<char> buffer(1 << 20);  // outlives the stream that uses it
        std::unique_ptr<std::FILE, FileCloser> f(std::fopen(tmp.c_str(), "wb"));
        if (!f) return fail("cannot create " + tmp.string() + ": " + std::strerror(errno));
        std::setvbuf(f.get(), buffer.data(), _IOFBF, buffer.size());
        const std::array<std::uint8_t, format::kHeaderSize> blank{};
        FileSink sink(f.get());
        sink.put(blank.data(), blank.size());
        write_body(sink, file);
        const auto header = file_header(file, sink, options.damaged);
        if (std::fseek(f.get(), 0, SEEK_SET) != 0) sink.ok = false;
        sink.put(header.data(), header.size());
        written = sink.ok && std::fflush(f.get()) == 0;
        if (std::fclose(f.release()) != 0) written = false;
    } catch (const std::exception& e) {
        std::error_code ec;
        std::filesystem::remove(tmp, ec);
        return fail(e.what());
    }
    std::error_code ec;
    if (!written) {
        std::filesystem::remove(tmp, ec);
        return fail("cannot write " + tmp.string());
    }
    std::filesystem::rename(tmp, path, ec);
    if (ec) {
        std::filesystem::remove(tmp, ec);
        return fail("cannot rename to " + path.string());
    }
    return true;
}

}  // namespace qumbrel::reclib
