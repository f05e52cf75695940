// PNG files made in memory, whatever they say of themselves.
#pragma once

#include <zlib.h>

#include <cstdint>
#include <string>

namespace platform::test {

inline std::string bigEndian(uint64_t number) {
    std::string bytes;
    for (int shift = 24; shift >= 0; shift -= 8) bytes += static_cast<char>(number >> shift);
    return bytes;
}

inline std::string pngChunk(const std::string& type, const std::string& content) {
    const std::string summed = type + content;
    const auto sum =
        ::crc32(0, reinterpret_cast<const Bytef*>(summed.data()), static_cast<uInt>(summed.size()));
    return bigEndian(content.size()) + summed + bigEndian(sum);
}

/// One that says it has this size, and holds next to nothing. `kind`: depth, colours, two zeros, interlace.
inline std::string png(uint64_t width, uint64_t height, const std::string& kind,
                       const std::string& more = "") {
    return "\x89PNG\r\n\x1a\n" + pngChunk("IHDR", bigEndian(width) + bigEndian(height) + kind) + more +
           pngChunk("IDAT", std::string("\x78\x9c\x03\x00\x00\x00\x00\x01", 8)) + pngChunk("IEND", "");
}

}  // namespace platform::test
