#pragma once
// Constants of the reference file layout (docs/recorder-format.md): a 32-byte file header,
// then a body of tagged sections; CRC-32 (zlib's) over the body and the header's fields.
#include <cstddef>
#include <cstdint>

namespace qumbrel::reclib::format {

inline constexpr char kMagic[8] = {'Q', 'R', 'E', 'C', 'F', 'M', 'T', '\x1a'};
inline constexpr std::uint16_t kVersionMajor = 1;  // a reader refuses another major
inline constexpr std::uint16_t kVersionMinor = 0;  // a newer minor only adds sections
inline constexpr std::size_t kHeaderSize = 32;
inline constexpr std::size_t kSectionHeaderSize = 8;  // tag, payload length
// The CRC covers the body, then these header bytes: versions, family, kind, header size
// and body length, so that a flipped kind cannot pass for an intact file.
inline constexpr std::size_t kCrcHeaderFrom = 8;
inline constexpr std::size_t kCrcHeaderLength = 16;

constexpr std::uint32_t tag(const char (&t)[5]) {
    return static_cast<std::uint32_t>(static_cast<unsigned char>(t[0])) |
           static_cast<std::uint32_t>(static_cast<unsigned char>(t[1])) << 8 |
           static_cast<std::uint32_t>(static_cast<unsigned char>(t[2])) << 16 |
           static_cast<std::uint32_t>(static_cast<unsigned char>(t[3])) << 24;
}
inline constexpr std::uint32_t kTagHead = tag("HEAD");
inline constexpr std::uint32_t kTagList = tag("LIST");
inline constexpr std::uint32_t kTagTime = tag("TIME");
inline constexpr std::uint32_t kTagChannel = tag("CHAN");
inline constexpr std::uint32_t kTagBytes = tag("BYTE");

// Field value types.
inline constexpr std::uint8_t kInt32 = 1;
inline constexpr std::uint8_t kFloat64 = 2;
inline constexpr std::uint8_t kText = 3;

// What a BYTE section holds for its channel.
inline constexpr std::uint8_t kBytesAlarms = 1;
inline constexpr std::uint8_t kBytesFlags = 2;

// Channel section flags.
inline constexpr std::uint8_t kChannelMath = 1;

inline constexpr std::size_t kMaxTextLength = 65535;
inline constexpr std::size_t kMaxNameLength = 255;

}  // namespace qumbrel::reclib::format
