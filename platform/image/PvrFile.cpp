#include "platform/image/PvrFile.h"

#include <algorithm>
#include <array>

#include "platform/archive/Gzip.h"
#include "platform/image/PvrtcDecoder.h"

namespace platform {

namespace {

constexpr size_t headerBytes = 52;
constexpr uint32_t tag = 0x21525650;            // "PVR!"
constexpr uint32_t tagOfVersion3 = 0x03525650;  // at the start of the file

uint32_t field(std::span<const uint8_t> bytes, size_t offset) {
    return uint32_t(bytes[offset]) | uint32_t(bytes[offset + 1]) << 8 | uint32_t(bytes[offset + 2]) << 16 |
           uint32_t(bytes[offset + 3]) << 24;
}

struct FormatSize {
    PvrFormat format;
    int bitsPerPixel;
};

constexpr std::array<FormatSize, 11> formats{{{PvrFormat::Rgba4444, 16},
                                              {PvrFormat::Rgba5551, 16},
                                              {PvrFormat::Rgba8888, 32},
                                              {PvrFormat::Rgb565, 16},
                                              {PvrFormat::Rgb888, 24},
                                              {PvrFormat::Luminance8, 8},
                                              {PvrFormat::LuminanceAlpha88, 16},
                                              {PvrFormat::Pvrtc2, 2},
                                              {PvrFormat::Pvrtc4, 4},
                                              {PvrFormat::Bgra8888, 32},
                                              {PvrFormat::Alpha8, 8}}};

const FormatSize* findFormat(uint32_t code) {
    const auto found = std::find_if(formats.begin(), formats.end(), [&](const FormatSize& candidate) {
        return static_cast<uint32_t>(candidate.format) == code;
    });
    return found == formats.end() ? nullptr : &*found;
}

bool isCompressed(PvrFormat format) { return format == PvrFormat::Pvrtc2 || format == PvrFormat::Pvrtc4; }

/// The bytes that drawing a level reads.
uint64_t neededBytes(PvrFormat format, int width, int height) {
    if (format == PvrFormat::Pvrtc2) return pvrtcLevelBytes(width, height, PvrtcBits::Two);
    if (format == PvrFormat::Pvrtc4) return pvrtcLevelBytes(width, height, PvrtcBits::Four);
    const int bits = findFormat(static_cast<uint32_t>(format))->bitsPerPixel;
    return uint64_t(width) * uint64_t(height) * uint64_t(bits) / 8;
}

bool isPowerOfTwo(uint32_t value) { return (value & (value - 1)) == 0; }

}  // namespace

PvrFile::PvrFile(std::vector<uint8_t> bytes) : bytes_(std::move(bytes)) {
    try {
        if (isGzip(bytes_)) bytes_ = inflateGzip(bytes_, {}, maxBytes);
        problem_ = read();
    } catch (const Error& error) {
        problem_ = error.message();
    }
    if (!problem_.empty()) levels_.clear();
}

std::string PvrFile::read() {
    if (bytes_.size() >= 4 && field(bytes_, 0) == tagOfVersion3)
        return "is a PVR file of version 3; only version 2 is taken";
    if (bytes_.size() < headerBytes || field(bytes_, 44) != tag) return "is not a PVR file of version 2";
    height_ = field(bytes_, 4);
    width_ = field(bytes_, 8);
    const uint32_t mipMaps = field(bytes_, 12), code = field(bytes_, 16) & 0xff, surfaces = field(bytes_, 48);
    if (surfaces > 1) return "holds more than one surface";
    const FormatSize* format = findFormat(code);
    if (!format) return "has the pixel format " + std::to_string(code) + ", which is not taken";
    format_ = format->format;
    hasAlphaMask_ = field(bytes_, 40) != 0;
    if (width_ == 0 || height_ == 0 || width_ > maxSide || height_ > maxSide ||
        int64_t(width_) * height_ > maxPixels)
        return "is " + std::to_string(width_) + " x " + std::to_string(height_) + " pixels large; " +
               std::to_string(maxPixels) + ", and " + std::to_string(maxSide) + " a side, are allowed";
    if (isCompressed(format_) && !(isPowerOfTwo(width_) && isPowerOfTwo(height_)))
        return "is compressed, but its sides are no powers of two";
    if (mipMaps > maxMipMaps)
        return "claims " + std::to_string(mipMaps) + " mip maps, more than the " +
               std::to_string(maxMipMaps) + " that are allowed";
    return readLevels(field(bytes_, 0), mipMaps, field(bytes_, 24));
}

std::string PvrFile::readLevels(uint32_t firstLevel, uint32_t mipMaps, uint32_t bitsPerPixel) {
    uint64_t offset = firstLevel;
    for (uint32_t level = 0; level <= mipMaps; ++level) {
        const uint32_t width = std::max(width_ >> level, 1u), height = std::max(height_ >> level, 1u);
        uint64_t size = uint64_t(width) * height * std::min(bitsPerPixel, 64u) / 8;
        if (isCompressed(format_)) size = std::max<uint64_t>(size, 32);
        PvrLevel read{int(width), int(height), {}};
        if (size < neededBytes(format_, read.width, read.height))
            return "gives its format too few bits a pixel: " + std::to_string(bitsPerPixel);
        if (offset > bytes_.size() || size > bytes_.size() - offset) return "is cut off";
        read.data = std::span(bytes_).subspan(size_t(offset), size_t(size));
        levels_.push_back(read);
        offset += size;
    }
    return {};
}

}  // namespace platform
