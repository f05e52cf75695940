#include "platform/mesh/MeshText.h"

#include <sys/mman.h>
#include <unistd.h>

#include <array>
#include <cerrno>
#include <cmath>

namespace platform {

namespace {

std::optional<std::vector<uint8_t>> decodedBase64(std::string_view text) {
    while (!text.empty() && text.back() == '=') text.remove_suffix(1);
    std::vector<uint8_t> bytes;
    bytes.reserve(text.size() / 4 * 3 + 3);
    uint32_t gathered = 0;
    int bits = 0;
    static constexpr std::string_view letters =
        "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789+/";
    static constexpr auto values = [] {
        std::array<int8_t, 256> table{};
        table.fill(-1);
        for (size_t i = 0; i < letters.size(); ++i)
            table[static_cast<uint8_t>(letters[i])] = static_cast<int8_t>(i);
        return table;
    }();
    for (const char letter : text) {
        const int value = values[static_cast<uint8_t>(letter)];
        if (value < 0) return std::nullopt;
        gathered = gathered << 6 | static_cast<uint32_t>(value);
        bits += 6;
        if (bits < 8) continue;
        bits -= 8;
        bytes.push_back(static_cast<uint8_t>(gathered >> bits));
    }
    return bytes;
}

int hexadecimal(char letter) {
    if (letter >= '0' && letter <= '9') return letter - '0';
    if (letter >= 'a' && letter <= 'f') return letter - 'a' + 10;
    if (letter >= 'A' && letter <= 'F') return letter - 'A' + 10;
    return -1;
}

}  // namespace

std::optional<std::vector<uint8_t>> bytesOfDataUri(std::string_view uri) {
    const size_t comma = uri.find(',');
    if (!uri.starts_with("data:") || comma == std::string_view::npos) return std::nullopt;
    if (!uri.substr(0, comma).ends_with(";base64")) return std::nullopt;
    return decodedBase64(uri.substr(comma + 1));
}

std::string relativePathOf(std::string_view uri) {
    std::string path;
    for (size_t i = 0; i < uri.size(); ++i) {
        const bool isEscape = uri[i] == '%' && i + 2 < uri.size() && hexadecimal(uri[i + 1]) >= 0 &&
                              hexadecimal(uri[i + 2]) >= 0;
        path += isEscape ? static_cast<char>(hexadecimal(uri[i + 1]) * 16 + hexadecimal(uri[i + 2])) : uri[i];
        if (isEscape) i += 2;
    }
    const bool isRelative = !path.empty() && path.front() != '/' && path.find("://") == std::string::npos &&
                            !path.starts_with("data:") && path.find('\0') == std::string::npos;
    return isRelative ? path : std::string();
}

FileHandle fileInMemory(std::string_view bytes) {
    const std::string name = "a file in memory";
    FileHandle file(::memfd_create("multiscene", MFD_CLOEXEC));
    if (!file) throw errnoError(errno, "cannot make", name);
    writeAll(file, bytes, name);
    if (::lseek(file.descriptor(), 0, SEEK_SET) != 0) throw errnoError(errno, "cannot use", name);
    return file;
}

uint64_t countJsonValues(std::string_view text) {
    uint64_t count = 1;
    bool isText = false;
    for (size_t i = 0; i < text.size(); ++i) {
        const char letter = text[i];
        if (isText && letter == '\\')
            ++i;
        else if (letter == '"')
            isText = !isText;
        else if (!isText && (letter == ',' || letter == '[' || letter == '{' || letter == ':'))
            ++count;
    }
    return count;
}

void setFlatNormals(std::span<MeshCorner> corners) {
    for (size_t i = 0; i + 2 < corners.size(); i += 3) {
        const auto &a = corners[i].place, &b = corners[i + 1].place, &c = corners[i + 2].place;
        std::array<double, 3> u{}, v{};
        for (size_t k = 0; k < 3; ++k) {
            u[k] = double{b[k]} - a[k];
            v[k] = double{c[k]} - a[k];
        }
        const std::array<double, 3> normal{u[1] * v[2] - u[2] * v[1], u[2] * v[0] - u[0] * v[2],
                                           u[0] * v[1] - u[1] * v[0]};
        const double length = std::hypot(normal[0], normal[1], normal[2]);
        for (size_t corner = i; corner < i + 3; ++corner)
            for (size_t k = 0; k < 3; ++k)
                corners[corner].normal[k] =
                    length > 0 && std::isfinite(length) ? static_cast<float>(normal[k] / length) : 0;
    }
}

}  // namespace platform
