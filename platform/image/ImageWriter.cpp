#include "platform/image/ImageWriter.h"

#include <vips/vips8>

#include <algorithm>
#include <cstring>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

#include "platform/base/File.h"
#include "platform/image/Vips.h"

namespace platform {

using vips::VError;
using vips::VImage;

namespace {

const uint8_t* row(const ImageView& view, int y) { return view.rgba + ptrdiff_t(y) * view.stride; }

std::vector<uint8_t> tightRows(const ImageView& view) {
    const size_t length = size_t(view.width) * 4;
    std::vector<uint8_t> pixels(length * size_t(view.height));
    for (int y = 0; y < view.height; ++y) std::memcpy(&pixels[size_t(y) * length], row(view, y), length);
    return pixels;
}

std::vector<uint8_t> overWhite(const ImageView& view) {
    std::vector<uint8_t> pixels;
    pixels.reserve(size_t(view.width) * size_t(view.height) * 3);
    for (int y = 0; y < view.height; ++y)
        for (const uint8_t* in = row(view, y), *end = in + ptrdiff_t(view.width) * 4; in < end; in += 4)
            for (int channel = 0; channel < 3; ++channel)
                pixels.push_back(uint8_t(std::min(255, in[channel] + 255 - in[3])));
    return pixels;
}

VImage wrap(const ImageView& view, const void* pixels, int bands) {
    return VImage::new_from_memory(const_cast<void*>(pixels),
                                   size_t(view.width) * size_t(view.height) * size_t(bands), view.width,
                                   view.height, bands, VIPS_FORMAT_UCHAR)
        .copy(VImage::option()->set("interpretation", VIPS_INTERPRETATION_sRGB));
}

void releaseBlob(VipsBlob* blob) { vips_area_unref(VIPS_AREA(blob)); }

/// Takes what `blob` holds to `take`, and gives it up.
template <typename Take>
auto taken(VipsBlob* blob, const Take& take) {
    const std::unique_ptr<VipsBlob, void (*)(VipsBlob*)> owner(blob, releaseBlob);
    size_t size = 0;
    const void* bytes = vips_blob_get(blob, &size);
    return take(std::string_view(static_cast<const char*>(bytes), size));
}

void writeBlob(const std::filesystem::path& file, VipsBlob* blob) {
    taken(blob, [&](std::string_view bytes) { writeFileAtomically(file, bytes); });
}

std::vector<uint8_t> coloursOf(const FramePixels& picture) {
    std::vector<uint8_t> rgb(size_t(picture.width) * size_t(picture.height) * 3);
    uint8_t* out = rgb.data();
    for (int y = 0; y < picture.height; ++y) {
        const uint8_t* in = picture.bgra + ptrdiff_t(y) * picture.stride;
        for (int x = 0; x < picture.width; ++x, in += 4, out += 3) {
            out[0] = in[2];
            out[1] = in[1];
            out[2] = in[0];
        }
    }
    return rgb;
}

}  // namespace

void writePng(const std::filesystem::path& file, const ImageView& image) {
    startVips();
    std::vector<uint8_t> copy;
    if (image.stride != image.width * 4) copy = tightRows(image);
    try {
        const VImage picture = wrap(image, copy.empty() ? image.rgba : copy.data(), 4);
        writeBlob(file, picture.pngsave_buffer(VImage::option()
                                                   ->set("compression", 1)
                                                   ->set("filter", VIPS_FOREIGN_PNG_FILTER_SUB)
                                                   ->set("strip", true)));
    } catch (const VError& error) {
        throw pictureError({file.string(), ErrorKind::Failed}, error.what());
    }
}

std::string encodeJpeg(const FramePixels& picture, int quality, int maxLongSide) {
    startVips();
    const std::vector<uint8_t> pixels = coloursOf(picture);
    try {
        VImage image = wrap({picture.width, picture.height, nullptr, 0}, pixels.data(), 3);
        if (maxLongSide > 0 && std::max(picture.width, picture.height) > maxLongSide)
            image = image.thumbnail_image(maxLongSide, VImage::option()->set("height", maxLongSide));
        VipsBlob* blob = image.jpegsave_buffer(VImage::option()->set("Q", quality)->set("strip", true));
        return taken(blob, [](std::string_view bytes) { return std::string(bytes); });
    } catch (const VError& error) {
        throw pictureError({"", ErrorKind::Failed}, error.what());
    }
}

void writeJpeg(const std::filesystem::path& file, const ImageView& image, int quality) {
    startVips();
    const std::vector<uint8_t> pixels = overWhite(image);
    try {
        writeBlob(file, wrap(image, pixels.data(), 3)
                            .jpegsave_buffer(VImage::option()->set("Q", quality)->set("strip", true)));
    } catch (const VError& error) {
        throw pictureError({file.string(), ErrorKind::Failed}, error.what());
    }
}

}  // namespace platform
