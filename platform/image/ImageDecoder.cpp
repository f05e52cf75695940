#include "platform/image/ImageDecoder.h"

#include <vips/vips8>

#include <algorithm>
#include <array>
#include <cmath>
#include <cstring>
#include <memory>
#include <numbers>
#include <string_view>
#include <utility>
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
    const VImage opened = picture.open(shrinkOnLoad(header, size));
    auto* options = VImage::option()->set("height", size.height)->set("size", VIPS_SIZE_FORCE);
    // Asked for a profile, the library shifts the colours of a picture that brings none, which is sRGB
    // already.
    if (header.image.get_typeof(VIPS_META_ICC_NAME) != 0) options->set("export_profile", "srgb");
    VImage image = opened.thumbnail_image(size.width, options);
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

/// What is read around a part, so that its edge is drawn from all that it needs.
constexpr int turningMargin = 4;  // pixels

/// The upright rectangle around a turned one, with a margin.
PixelRectangle aroundTurned(const TurnedRectangle& part, double cosine, double sine) {
    const double across = (part.width * std::abs(cosine) + part.height * std::abs(sine)) / 2 + turningMargin;
    const double down = (part.width * std::abs(sine) + part.height * std::abs(cosine)) / 2 + turningMargin;
    const int left = int(std::floor(part.middleX - across)), top = int(std::floor(part.middleY - down));
    return {left, top, int(std::ceil(part.middleX + across)) - left,
            int(std::ceil(part.middleY + down)) - top};
}

/// A rectangle of a picture that is read once from top to bottom. Where it reaches out, the edge goes on.
VImage readAround(const VImage& picture, const PixelRectangle& wanted) {
    const auto within = [](int at, int most) { return std::clamp(at, 0, most); };
    const int left = within(wanted.x, picture.width() - 1), top = within(wanted.y, picture.height() - 1);
    const int right = std::max(left + 1, within(wanted.x + wanted.width, picture.width()));
    const int bottom = std::max(top + 1, within(wanted.y + wanted.height, picture.height()));
    return picture.extract_area(left, top, right - left, bottom - top)
        .copy_memory()
        .embed(left - wanted.x, top - wanted.y, wanted.width, wanted.height,
               VImage::option()->set("extend", VIPS_EXTEND_COPY));
}

/// Sine and cosine that are exact for quarter turns.
std::pair<double, double> turnOf(double degrees) {
    const double quarters = degrees / 90;
    if (quarters != std::round(quarters)) {
        const double radians = degrees * std::numbers::pi / 180;
        return {std::sin(radians), std::cos(radians)};
    }
    constexpr std::array<double, 4> sines{0, 1, 0, -1};
    const auto quarter = size_t(((int64_t(quarters) % 4) + 4) % 4);
    return {sines[quarter], sines[(quarter + 1) % 4]};
}

/// Brings a middle to where a side of so many pixels begins and ends between pixels.
double betweenPixels(double middle, double side) { return std::round(middle - side / 2) + side / 2; }

/// A turned part of a picture that is read no larger than needed: its pixels lie where the part's do, between
/// those of the picture.
VImage turnedPicture(const PictureFile& photo, const Header& header, Aspect aspect, int maxLongSide,
                     const PhotoCrop& crop) {
    TurnedRectangle part = turnedPart(header.upright, aspect, crop);
    const double longSide = std::max({part.width, part.height, 1.0});
    const double pixels = double(header.upright.width) * header.upright.height;
    const double factor = std::min({1.0, maxLongSide > 0 ? maxLongSide / longSide : 1.0,
                                    std::sqrt(double(ImageLimits::resultPixels) / pixels)});
    const ImageSize whole = scaled(header.upright, factor);
    const int width = std::max(1, int(std::lround(part.width * factor)));
    const int height = std::max(1, int(std::lround(part.height * factor)));
    const auto [sine, cosine] = turnOf(crop.angle);
    part = {part.middleX * whole.width / header.upright.width,
            part.middleY * whole.height / header.upright.height, double(width), double(height)};
    if (sine == 0 || cosine == 0)  // then nothing is between pixels
        part = {betweenPixels(part.middleX, sine == 0 ? width : height),
                betweenPixels(part.middleY, sine == 0 ? height : width), part.width, part.height};
    const PixelRectangle read = aroundTurned(part, cosine, sine);
    const VImage source = readAround(loadAtSize(photo, header, whole), read);
    constexpr double middleOfPixel = 0.5;
    return source.affine({cosine, sine, -sine, cosine},
                         VImage::option()
                             ->set("interpolate", vips::VInterpolate::new_from_name("bicubic"))
                             ->set("oarea", std::vector<int>{0, 0, width, height})
                             ->set("idx", read.x + middleOfPixel - part.middleX)
                             ->set("idy", read.y + middleOfPixel - part.middleY)
                             ->set("odx", part.width / 2 - middleOfPixel)
                             ->set("ody", part.height / 2 - middleOfPixel));
}

void releaseBlob(VipsBlob* blob) { vips_area_unref(VIPS_AREA(blob)); }

constexpr int preparedQuality = 95, keptQuality = 92, proxyQuality = 85;  // of 100

void write(VipsBlob* blob, const std::filesystem::path& out) {
    const std::unique_ptr<VipsBlob, void (*)(VipsBlob*)> owner(blob, releaseBlob);
    size_t size = 0;
    const void* bytes = vips_blob_get(blob, &size);
    writeFileAtomically(out, std::string_view(static_cast<const char*>(bytes), size));
}

void saveJpeg(const VImage& image, int quality, const std::filesystem::path& out) {
    write(image.jpegsave_buffer(VImage::option()
                                    ->set("Q", quality)
                                    ->set("strip", true)
                                    ->set("subsample_mode", VIPS_FOREIGN_SUBSAMPLE_OFF)),
          out);
}

void savePng(const VImage& image, const std::filesystem::path& out) {
    write(image.pngsave_buffer(VImage::option()->set("compression", 1)->set("strip", true)), out);
}

void save(const VImage& image, bool lossy, const std::filesystem::path& out) {
    lossy ? saveJpeg(image, preparedQuality, out) : savePng(image, out);
}

bool isTransparent(const VImage& image) {
    return image.has_alpha() && image.extract_band(image.bands() - 1).min() < 255;
}

VImage overWhite(const VImage& image) {
    if (!image.has_alpha()) return image;
    return image.flatten(VImage::option()->set("background", std::vector<double>{255}));
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
        if (crop.kind == PhotoCrop::Kind::Part && crop.angle != 0) {
            const VImage turned = turnedPicture(photo, header, aspect, maxLongSide, crop);
            save(turned, isLossy(photo.format()) && !turned.has_alpha(), out);
            return ImageSize{turned.width(), turned.height()};
        }
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

KeptPhoto keepPhoto(const FileHandle& file, const std::filesystem::path& folder, int maxLongSide,
                    int maxProxySide, const ImageSource& source) {
    return blaming(file, source, [&](const PictureFile& photo) {
        const Header header = readHeader(photo, source);
        const ImageSize size = scaled(header.upright, shrinkFactor(header.upright, maxLongSide));
        const VImage image = loadAtSize(photo, header, size).copy_memory();
        const bool isPng = isTransparent(image);
        const KeptPhoto kept{folder / (isPng ? "photo.png" : "photo.jpg"), size};
        const VImage opaque = overWhite(image);
        isPng ? savePng(image, kept.file) : saveJpeg(opaque, keptQuality, kept.file);
        const ImageSize small = scaled(size, shrinkFactor(size, maxProxySide));
        const VImage proxy =
            small == size ? opaque
                          : opaque.thumbnail_image(
                                small.width,
                                VImage::option()->set("height", small.height)->set("size", VIPS_SIZE_FORCE));
        saveJpeg(proxy, proxyQuality, folder / "proxy.jpg");
        return kept;
    });
}

}  // namespace platform
