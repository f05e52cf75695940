#include "platform/image/PvrPictures.h"

#include <array>
#include <utility>

#include "platform/image/PvrtcDecoder.h"

namespace platform {

namespace {

using Texel = std::array<uint8_t, 4>;
using ReadTexel = Texel (*)(const uint8_t* bytes);

unsigned int word(const uint8_t* bytes) { return bytes[0] | unsigned{bytes[1]} << 8; }

/// `bits` of a word from `shift` on, brought to eight bits: 0 stays 0, all ones become 255.
uint8_t part(unsigned int value, int shift, int bits) {
    const unsigned int most = (1u << bits) - 1;
    return static_cast<uint8_t>(((value >> shift & most) * 255 + most / 2) / most);
}

struct PixelFormat {
    int bytes;
    ReadTexel read;
};

PixelFormat pixelFormat(PvrFormat format) {
    switch (format) {
        case PvrFormat::Rgba4444:
            return {2, [](const uint8_t* at) {
                        return Texel{part(word(at), 12, 4), part(word(at), 8, 4), part(word(at), 4, 4),
                                     part(word(at), 0, 4)};
                    }};
        case PvrFormat::Rgba5551:
            return {2, [](const uint8_t* at) {
                        return Texel{part(word(at), 11, 5), part(word(at), 6, 5), part(word(at), 1, 5),
                                     part(word(at), 0, 1)};
                    }};
        case PvrFormat::Rgb565:
            return {2, [](const uint8_t* at) {
                        return Texel{part(word(at), 11, 5), part(word(at), 5, 6), part(word(at), 0, 5), 255};
                    }};
        case PvrFormat::Rgb888:
            return {3, [](const uint8_t* at) { return Texel{at[0], at[1], at[2], 255}; }};
        case PvrFormat::Luminance8:
            return {1, [](const uint8_t* at) { return Texel{at[0], at[0], at[0], 255}; }};
        case PvrFormat::LuminanceAlpha88:
            return {2, [](const uint8_t* at) { return Texel{at[0], at[0], at[0], at[1]}; }};
        case PvrFormat::Bgra8888:
            return {4, [](const uint8_t* at) { return Texel{at[2], at[1], at[0], at[3]}; }};
        case PvrFormat::Alpha8:
            return {1, [](const uint8_t* at) { return Texel{0, 0, 0, at[0]}; }};
        case PvrFormat::Rgba8888:
        case PvrFormat::Pvrtc2:
        case PvrFormat::Pvrtc4:
            break;
    }
    return {4, [](const uint8_t* at) { return Texel{at[0], at[1], at[2], at[3]}; }};
}

std::vector<uint8_t> texels(const PvrFile& file, const PvrLevel& level) {
    if (file.format() == PvrFormat::Pvrtc2 || file.format() == PvrFormat::Pvrtc4) {
        const PvrtcBits bits = file.format() == PvrFormat::Pvrtc2 ? PvrtcBits::Two : PvrtcBits::Four;
        return decodePvrtc(level.data, level.width, level.height, bits, file.hasAlphaMask());
    }
    const auto [bytes, read] = pixelFormat(file.format());
    std::vector<uint8_t> result;
    result.reserve(size_t(level.width) * size_t(level.height) * 4);
    for (size_t at = 0; result.size() < result.capacity(); at += static_cast<size_t>(bytes)) {
        const Texel texel = read(&level.data[at]);
        result.insert(result.end(), texel.begin(), texel.end());
    }
    return result;
}

}  // namespace

std::vector<Bitmap> pvrPictures(const PvrFile& file) {
    std::vector<Bitmap> pictures;
    for (const PvrLevel& level : file.levels()) {
        Bitmap picture;
        picture.width = level.width;
        picture.height = level.height;
        picture.rgba = texels(file, level);
        pictures.push_back(std::move(picture));
    }
    return pictures;
}

}  // namespace platform
