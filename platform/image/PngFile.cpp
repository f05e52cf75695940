#include "platform/image/PngFile.h"

#include <algorithm>
#include <array>
#include <cerrno>
#include <string_view>

#include "platform/base/Limits.h"

namespace platform {

namespace {

constexpr uint64_t signatureBytes = 8, headerBytes = 8, checksumBytes = 4;
constexpr int mostChunks = limitOf<int>("maxPngParts");  // of 8 kB each they make a file of 2 GB

/// What a picture may hold besides its pixels: the byte limit keeps a profile from inflating to gigabytes.
struct KeptChunk {
    std::string_view name;
    uint64_t mostBytes;
};
constexpr uint64_t anyLength = UINT32_MAX;
constexpr KeptChunk keptChunks[] = {
    {"IHDR", 13},
    {"PLTE", 768},
    {"IDAT", anyLength},
    {"IEND", 0},
    {"tRNS", 256},
    {"gAMA", 4},
    {"cHRM", 32},
    {"sRGB", 1},
    {"sBIT", 4},
    {"pHYs", 9},
    {"eXIf", limitOf("maxPngExifBytes")},
    {"iCCP", limitOf("maxPngProfileBytes")},
};

bool isKept(std::string_view name, uint64_t length) {
    return std::any_of(std::begin(keptChunks), std::end(keptChunks), [&](const KeptChunk& chunk) {
        return chunk.name == name && length <= chunk.mostBytes;
    });
}

void append(std::vector<ByteRange>& ranges, ByteRange range) {
    if (!ranges.empty() && ranges.back().offset + ranges.back().length == range.offset)
        ranges.back().length += range.length;
    else
        ranges.push_back(range);
}

}  // namespace

std::vector<ByteRange> picturePartsOfPng(const FileHandle& file) {
    std::vector<ByteRange> ranges{{0, signatureBytes}};
    const uint64_t size = file.size();
    uint64_t offset = signatureBytes;
    for (int chunk = 0; offset + headerBytes <= size; ++chunk) {
        if (chunk == mostChunks)
            throw Error(ErrorKind::Failed,
                        "it has more than the " + std::to_string(mostChunks) + " parts that are allowed");
        std::array<uint8_t, headerBytes> header{};
        const int64_t count = readAt(file, header.data(), header.size(), offset);
        if (count < 0) throw errnoError(errno, "cannot be read", file.name());
        if (count < static_cast<int64_t>(header.size())) break;
        const uint64_t length = uint64_t(header[0]) << 24 | uint64_t(header[1]) << 16 |
                                uint64_t(header[2]) << 8 | uint64_t(header[3]);
        const std::string_view name(reinterpret_cast<const char*>(header.data()) + 4, 4);
        const uint64_t whole = headerBytes + length + checksumBytes;
        // What is left of a cut picture is kept: how far it can be read is for the decoder to say.
        if (isKept(name, length)) append(ranges, {offset, std::min(whole, size - offset)});
        offset += whole;
        if (name == "IEND") break;
    }
    return ranges;
}

}  // namespace platform
