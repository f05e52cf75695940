#include "platform/image/ImageDecoder.h"

#include <vips/vips8>

#include <algorithm>
#include <cmath>
#include <cstring>
#include <memory>
#include <string_view>
#include <vector>

#include "platform/base/Limits.h"
#include "platform/image/KeptImages.h"
#include "platform/image/PictureFile.h"
#include "platform/image/Vips.h"

namespace platform {

using vips::VError;
using vips::VImage;

namespace {

struct Header {
    VImage image;
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
    const int side = std::max(image.width(), image.height());
    const auto [most, what] =
        side > ImageLimits::longSide           ? std::pair(int64_t(ImageLimits::longSide), "pixels a side")
        : pixels > ImageLimits::streamedPixels ? std::pair(ImageLimits::streamedPixels, "pixels")
        : pixels * heldBytesPerPixel(image, format) > ImageLimits::heldBytes
            ? std::pair(ImageLimits::heldBytes, "bytes of a picture of this kind")
            : std::pair(int64_t(0), "");
    if (most == 0) return;
    throw Error(source.kind,
                "the picture is too large: " + std::to_string(image.width()) + " x " +
                    std::to_string(image.height()) + " pixels; " + std::to_string(most) + " " + what +
                    " are allowed",
                source.name);
}

ImageSize uprightSize(const VImage& image) {
    const bool onItsSide = vips_image_get_orientation_swap(image.get_image());
    return onItsSide ? ImageSize{image.height(), image.width()} : ImageSize{image.width(), image.height()};
}

void requireRead(const PictureFile& picture, const ImageSource& source) {
    if (picture.failure() != 0)
        throw errnoError(picture.failure(), "cannot be read", source.name, source.kind);
}

/// Runs `read` on a file, with what goes wrong blamed on the source, unless it is the disk's fault.
template <typename Read>
auto blaming(const FileHandle& file, const ImageSource& source, const Read& read) {
    startVips();
    try {
        const PictureFile picture(file);
        try {
            auto result = read(picture);
            requireRead(picture, source);
            return result;
        } catch (const VError& error) {
            requireRead(picture, source);
            throw pictureError(source, error.what());
        }
    } catch (const Error& error) {
        if (error.kind() == ErrorKind::Transient) throw;
        throw Error(source.kind, error.message(), source.name);
    }
}

Header readHeader(const PictureFile& picture, const ImageSource& source) {
    const uint64_t bytes = picture.file().size();
    if (picture.format() != PictureFormat::Unknown && bytes > limitOf("maxPictureBytes"))
        throw Error(source.kind, beyondLimit(bytes, "bytes", limitOf("maxPictureBytes")));
    const VImage image = picture.open();
    checkLimits(image, picture.format(), source);
    return Header{image, uprightSize(image)};
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
VImage loadAtSize(const PictureFile& picture, const Header& header, ImageSize size) {
    auto* options = VImage::option()->set("height", size.height)->set("size", VIPS_SIZE_FORCE);
    // Asked for a profile, the library shifts the colours of a picture that brings none, which is sRGB
    // already.
    if (header.image.get_typeof(VIPS_META_ICC_NAME) != 0) options->set("export_profile", "srgb");
    VImage image = picture.open(shrinkOnLoad(header, size)).thumbnail_image(size.width, options);
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
                    std::to_string(size.height) + " pixels; " + std::to_string(ImageLimits::resultPixels) +
                    " are allowed",
                options.source.name);
}

constexpr int judgedSide = 400;  // pixels: enough to find what a photo is about

std::vector<Face> facesOf(const VImage& picture) {
    const VImage grey = picture.colourspace(VIPS_INTERPRETATION_B_W).cast(VIPS_FORMAT_UCHAR);
    size_t size = 0;
    auto* bytes = static_cast<uint8_t*>(grey.write_to_memory(&size));
    GreyPicture copy{grey.width(), grey.height(), {bytes, bytes + size}};
    g_free(bytes);
    return findFaces(copy);
}

/// The part of the picture's proportions that catches the eye.
PixelRectangle partOfInterest(const VImage& picture, PixelRectangle part) {
    const VImage cut = picture.smartcrop(part.width, part.height,
                                         VImage::option()->set("interesting", VIPS_INTERESTING_ATTENTION));
    return {-cut.xoffset(), -cut.yoffset(), part.width, part.height};
}

int inProportion(int small, int smallRoom, int room) {
    return smallRoom > 0 ? int(std::lround(double(small) * room / smallRoom)) : room / 2;
}

/// Where the photo is cut when nobody has said it: judged on a small copy.
PixelRectangle automaticPart(const PictureFile& photo, const Header& header, Aspect aspect) {
    const ImageSize whole = header.upright;
    PixelRectangle part = croppedPart(whole, aspect, {});
    const int roomAcross = whole.width - part.width, roomDown = whole.height - part.height;
    // A sliver is not worth a look.
    if (roomAcross * 50 < whole.width && roomDown * 50 < whole.height) return part;
    VImage picture = loadAtSize(photo, header, scaled(whole, shrinkFactor(whole, judgedSide)));
    if (picture.has_alpha())
        picture = picture.flatten(VImage::option()->set("background", std::vector<double>{255}));
    picture = picture.copy_memory();
    const ImageSize size{picture.width(), picture.height()};
    const PixelRectangle middle = croppedPart(size, aspect, {});
    const PixelRectangle small =
        partWithHeads(size, middle, facesOf(picture)).value_or(partOfInterest(picture, middle));
    part.x = inProportion(small.x, size.width - small.width, roomAcross);
    part.y = inProportion(small.y, size.height - small.height, roomDown);
    return part;
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
    return blaming(file, source,
                   [&](const PictureFile& picture) { return readHeader(picture, source).upright; });
}

Bitmap decodeImage(const FileHandle& file, const DecodeOptions& options) {
    return keptImages().get(file, options, [&] {
        return blaming(file, options.source, [&](const PictureFile& picture) {
            const Header header = readHeader(picture, options.source);
            return toBitmap(loadAtSize(picture, header, resultSize(header, options)));
        });
    });
}

ImageSize prepareUserPhoto(const FileHandle& file, const std::filesystem::path& out, Aspect aspect,
                           int maxLongSide, const ImageSource& source, const PhotoCrop& crop) {
    return blaming(file, source, [&](const PictureFile& photo) {
        const Header header = readHeader(photo, source);
        const PixelRectangle part = crop.kind == PhotoCrop::Kind::Automatic
                                        ? automaticPart(photo, header, aspect)
                                        : croppedPart(header.upright, aspect, crop);
        const double pixels = double(header.upright.width) * header.upright.height;
        const double factor = std::min(shrinkFactor(part.size(), maxLongSide),
                                       std::sqrt(double(ImageLimits::resultPixels) / pixels));
        const ImageSize whole = scaled(header.upright, factor), size = scaled(part.size(), factor);
        const int left = std::clamp(int(std::lround(part.x * factor)), 0, whole.width - size.width);
        const int top = std::clamp(int(std::lround(part.y * factor)), 0, whole.height - size.height);
        const VImage image =
            loadAtSize(photo, header, whole).extract_area(left, top, size.width, size.height);
        save(image, isLossy(photo.format()) && !image.has_alpha(), out);
        return size;
    });
}

}  // namespace platform
