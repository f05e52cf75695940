#include "platform/image/ImageDecoder.h"

#include <vips/vips8>

#include <algorithm>
#include <cmath>
#include <cstring>
#include <memory>
#include <string_view>

#include "platform/image/PictureFile.h"
#include "platform/image/Vips.h"

namespace platform {

using vips::VError;
using vips::VImage;

namespace {

struct Header {
    VImage image;
    PictureFormat format = PictureFormat::Unknown;
    ImageSize upright;
};

/// Bytes a pixel that a decoder keeps for the whole file before it gives out a row; 0: it streams.
int64_t heldBytesPerPixel(const VImage& image, PictureFormat format) {
    const int64_t sample = int64_t(vips_format_sizeof(image.format()));
    const bool interlaced = image.get_typeof("interlaced") != 0;
    switch (format) {
        case PictureFormat::Jpeg:
            return interlaced ? 2 * image.bands() : 0;
        case PictureFormat::Png:
            return interlaced ? sample * image.bands() : 0;
        case PictureFormat::WebP:
        case PictureFormat::Heif:
            return 8;
        case PictureFormat::Gif:
            return 4;
        default:
            return sample * image.bands();
    }
}

void checkLimits(const VImage& image, PictureFormat format, const ImageSource& source) {
    const int64_t pixels = int64_t(image.width()) * image.height();
    if (pixels <= ImageLimits::streamedPixels &&
        std::max(image.width(), image.height()) <= ImageLimits::longSide &&
        pixels * heldBytesPerPixel(image, format) <= ImageLimits::heldBytes)
        return;
    throw Error(source.kind,
                "the picture is too large: " + std::to_string(image.width()) + " x " +
                    std::to_string(image.height()) + " pixels",
                source.name);
}

ImageSize uprightSize(const VImage& image) {
    const bool onItsSide = vips_image_get_orientation_swap(image.get_image());
    return onItsSide ? ImageSize{image.height(), image.width()} : ImageSize{image.width(), image.height()};
}

/// Runs `read`, with what goes wrong blamed on the source.
template <typename Read>
auto blaming(const ImageSource& source, const Read& read) {
    try {
        return read();
    } catch (const VError& error) {
        throw pictureError(source, error.what());
    } catch (const Error& error) {
        throw Error(source.kind, error.message(), source.name);
    }
}

Header readHeader(const FileHandle& file, const ImageSource& source) {
    startVips();
    return blaming(source, [&] {
        const PictureFormat format = pictureFormatOf(file);
        const VImage image = openPicture(file, format);
        checkLimits(image, format, source);
        return Header{image, format, uprightSize(image)};
    });
}

/// The fraction at which a JPEG is decoded; at least half of the shrinking is left to averaging, which is
/// better at it.
int shrinkOnLoad(const Header& header, ImageSize size) {
    const double shrink =
        std::min(double(header.upright.width) / size.width, double(header.upright.height) / size.height);
    for (const int fraction : {8, 4, 2})
        if (shrink >= 2 * fraction) return fraction;
    return 1;
}

/// The upright picture in sRGB with 8 bits a channel, 3 or 4 channels, stretched to `size`; not yet decoded.
VImage loadAtSize(const FileHandle& file, const Header& header, ImageSize size) {
    auto* options = VImage::option()->set("height", size.height)->set("size", VIPS_SIZE_FORCE);
    // Asked for a profile, the library shifts the colours of a picture that brings none, which is sRGB
    // already.
    if (header.image.get_typeof(VIPS_META_ICC_NAME) != 0) options->set("export_profile", "srgb");
    VImage image =
        openPicture(file, header.format, shrinkOnLoad(header, size)).thumbnail_image(size.width, options);
    if (image.interpretation() != VIPS_INTERPRETATION_sRGB)
        image = image.colourspace(VIPS_INTERPRETATION_sRGB);
    return image.format() == VIPS_FORMAT_UCHAR ? image : image.cast(VIPS_FORMAT_UCHAR);
}

void premultiply(std::vector<uint8_t>& rgba) {
    for (size_t i = 0; i < rgba.size(); i += 4) {
        const int alpha = rgba[i + 3];
        for (size_t channel = i; channel < i + 3; ++channel)
            rgba[channel] = uint8_t((rgba[channel] * alpha + 127) / 255);
    }
}

Bitmap toBitmap(const VImage& image) {
    const bool hasAlpha = image.has_alpha();
    const VImage four = hasAlpha ? image : image.bandjoin(255);
    Bitmap bitmap(four.width(), four.height());
    size_t size = 0;
    void* pixels = four.write_to_memory(&size);
    std::memcpy(bitmap.rgba.data(), pixels, std::min(size, bitmap.rgba.size()));
    g_free(pixels);
    if (hasAlpha) premultiply(bitmap.rgba);
    return bitmap;
}

ImageSize scaled(ImageSize size, double factor) {
    return {std::max(1, int(std::lround(size.width * factor))),
            std::max(1, int(std::lround(size.height * factor)))};
}

/// At most 1: what brings the longer side down to `maxLongSide`, if that is not 0.
double shrinkFactor(ImageSize size, int maxLongSide) {
    if (maxLongSide <= 0) return 1;
    return std::min(1.0, double(maxLongSide) / std::max(size.width, size.height));
}

ImageSize resultSize(const Header& header, const DecodeOptions& options) {
    const ImageSize size = options.canvas.isEmpty()
                               ? scaled(header.upright, shrinkFactor(header.upright, options.maxLongSide))
                               : options.canvas;
    if (int64_t(size.width) * size.height <= ImageLimits::resultPixels) return size;
    throw Error(options.source.kind,
                "the picture is too large to be decoded whole: " + std::to_string(size.width) + " x " +
                    std::to_string(size.height) + " pixels",
                options.source.name);
}

/// The largest middle part of the given proportions.
ImageSize centreCrop(ImageSize size, Aspect aspect) {
    if (aspect.width <= 0 || aspect.height <= 0) return size;
    const int64_t wide = int64_t(size.height) * aspect.width, high = int64_t(size.width) * aspect.height;
    if (wide <= high) return {std::max(1, int((wide + aspect.height / 2) / aspect.height)), size.height};
    return {size.width, std::max(1, int((high + aspect.width / 2) / aspect.width))};
}

void releaseBlob(VipsBlob* blob) { vips_area_unref(VIPS_AREA(blob)); }

void save(const VImage& image, bool lossy, const std::filesystem::path& out) {
    VipsBlob* blob = lossy
                         ? image.jpegsave_buffer(VImage::option()
                                                     ->set("Q", 95)
                                                     ->set("strip", true)
                                                     ->set("subsample_mode", VIPS_FOREIGN_SUBSAMPLE_OFF))
                         : image.pngsave_buffer(VImage::option()->set("compression", 1)->set("strip", true));
    const std::unique_ptr<VipsBlob, void (*)(VipsBlob*)> owner(blob, releaseBlob);
    size_t size = 0;
    const void* bytes = vips_blob_get(blob, &size);
    writeFileAtomically(out, std::string_view(static_cast<const char*>(bytes), size));
}

}  // namespace

ImageSize readImageSize(const FileHandle& file, const ImageSource& source) {
    return readHeader(file, source).upright;
}

Bitmap decodeImage(const FileHandle& file, const DecodeOptions& options) {
    const Header header = readHeader(file, options.source);
    const ImageSize size = resultSize(header, options);
    return blaming(options.source, [&] { return toBitmap(loadAtSize(file, header, size)); });
}

ImageSize prepareUserPhoto(const FileHandle& photo, const std::filesystem::path& out, Aspect aspect,
                           int maxLongSide, const ImageSource& source) {
    const Header header = readHeader(photo, source);
    const ImageSize crop = centreCrop(header.upright, aspect);
    const double pixels = double(header.upright.width) * header.upright.height;
    const double factor =
        std::min(shrinkFactor(crop, maxLongSide), std::sqrt(double(ImageLimits::resultPixels) / pixels));
    const ImageSize size = scaled(crop, factor);
    blaming(source, [&] {
        const ImageSize whole = scaled(header.upright, factor);
        const VImage image = loadAtSize(photo, header, whole)
                                 .extract_area((whole.width - size.width) / 2,
                                               (whole.height - size.height) / 2, size.width, size.height);
        save(image, isLossy(header.format) && !image.has_alpha(), out);
    });
    return size;
}

}  // namespace platform
