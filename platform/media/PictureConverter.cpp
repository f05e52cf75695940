#include "platform/media/PictureConverter.h"

#include <algorithm>
#include <optional>

#include "platform/media/Ffmpeg.h"

extern "C" {
#include <libavutil/frame.h>
#include <libavutil/pixdesc.h>
#include <libswscale/swscale.h>
}

namespace platform {

namespace {

YuvMatrix matrixOf(const AVFrame& picture) {
    switch (picture.colorspace) {
        case AVCOL_SPC_BT709:
            return YuvMatrix::BT709;
        case AVCOL_SPC_BT2020_NCL:
        case AVCOL_SPC_BT2020_CL:
            return YuvMatrix::BT2020;
        case AVCOL_SPC_UNSPECIFIED:
        case AVCOL_SPC_RESERVED:
            return yuvMatrixFor(picture.width, picture.height);
        default:
            return YuvMatrix::BT601;
    }
}

bool isFullRange(const AVFrame& picture) {
    constexpr AVPixelFormat kFullFormats[] = {AV_PIX_FMT_YUVJ420P, AV_PIX_FMT_YUVJ422P, AV_PIX_FMT_YUVJ444P,
                                              AV_PIX_FMT_YUVJ440P, AV_PIX_FMT_YUVJ411P};
    return picture.color_range == AVCOL_RANGE_JPEG ||
           std::find(std::begin(kFullFormats), std::end(kFullFormats), picture.format) !=
               std::end(kFullFormats);
}

int scalerColours(YuvMatrix matrix) {
    switch (matrix) {
        case YuvMatrix::BT601:
            return SWS_CS_SMPTE170M;
        case YuvMatrix::BT709:
            return SWS_CS_ITU709;
        case YuvMatrix::BT2020:
            return SWS_CS_BT2020;
    }
    return SWS_CS_DEFAULT;
}

bool hasAlpha(const AVFrame& picture) {
    const auto* format = av_pix_fmt_desc_get(static_cast<AVPixelFormat>(picture.format));
    return format && (format->flags & AV_PIX_FMT_FLAG_ALPHA);
}

bool isOpaque(const PixelBuffer& picture) {
    const uint8_t* alpha = picture.data() + 3;
    for (int y = 0; y < picture.height(); ++y) {
        uint8_t least = 255;  // of a row, without a branch
        for (int x = 0; x < picture.width(); ++x, alpha += 4) least = std::min(least, *alpha);
        if (least != 255) return false;
    }
    return true;
}

void premultiply(PixelBuffer& picture) {
    uint8_t* pixel = picture.data();
    for (size_t i = 0; i < picture.size(); i += 4, pixel += 4)
        for (int channel = 0; channel < 3; ++channel)
            pixel[channel] = static_cast<uint8_t>((pixel[channel] * pixel[3] * 257 + 32768) >> 16);
}

// From a plane of its own, of the same depth as the colours.
void copyAlpha(const AVFrame& picture, PixelBuffer& target) {
    const int depth = av_pix_fmt_desc_get(static_cast<AVPixelFormat>(picture.format))->comp[3].depth;
    for (int y = 0; y < picture.height; ++y) {
        const uint8_t* from = picture.data[3] + static_cast<ptrdiff_t>(y) * picture.linesize[3];
        uint8_t* to = target.data() + static_cast<size_t>(y) * static_cast<size_t>(target.stride()) + 3;
        for (int x = 0; x < picture.width; ++x) {
            const int level = depth == 8 ? from[x] : from[2 * x] | from[2 * x + 1] << 8;
            to[4 * x] = static_cast<uint8_t>(level >> (depth - 8));
        }
    }
}

// Planes of brightness and colour, with alpha in a fourth one or nothing else, in the samples that
// yuvToPixels() takes.
std::optional<YuvPicture> planesOf(const AVFrame& picture) {
    const AVPixFmtDescriptor* format = av_pix_fmt_desc_get(static_cast<AVPixelFormat>(picture.format));
    constexpr uint64_t kOther = AV_PIX_FMT_FLAG_RGB | AV_PIX_FMT_FLAG_BE | AV_PIX_FMT_FLAG_HWACCEL |
                                AV_PIX_FMT_FLAG_FLOAT | AV_PIX_FMT_FLAG_BITSTREAM;
    if (!format || format->nb_components < 3 || (format->flags & kOther)) return std::nullopt;
    if (format->log2_chroma_w > 1 || format->log2_chroma_h > 1) return std::nullopt;
    YuvPicture planes;
    planes.depth = format->comp[0].depth;
    if (planes.depth < 8 || planes.depth > 12) return std::nullopt;
    for (int i = 0; i < 3; ++i) {
        const AVComponentDescriptor& component = format->comp[i];
        const bool isOwnPlane = component.plane == i && component.offset == 0 && component.shift == 0 &&
                                component.step == (planes.depth > 8 ? 2 : 1);
        if (!isOwnPlane) return std::nullopt;
        planes.planes[static_cast<size_t>(i)] = picture.data[i];
        planes.strides[static_cast<size_t>(i)] = picture.linesize[i];
    }
    planes.width = picture.width;
    planes.height = picture.height;
    planes.halfWidth = format->log2_chroma_w == 1;
    planes.halfHeight = format->log2_chroma_h == 1;
    planes.matrix = matrixOf(picture);
    planes.fullRange = isFullRange(picture);
    return planes;
}

}  // namespace

PictureConverter::PictureConverter(const Settings& settings) : settings_(settings) {}

PictureConverter::~PictureConverter() = default;

void PictureConverter::FreeScaler::operator()(SwsContext* scaler) const { sws_freeContext(scaler); }

std::shared_ptr<const FilmPicture> PictureConverter::convert(const AVFrame& picture) {
    ffmpeg::Frame shown = cropped(picture);
    if (!shown) shown = another(picture);
    if (settings_.orientation.isUpright() && !hasAlpha(*shown))
        if (const auto planes = planesOf(*shown)) return inPlanes(*planes, std::move(shown));
    PixelBufferPool::Pointer pixels = pool_.take(0, 0);
    convertUpright(*shown, *pixels);
    const bool opaque = !hasAlpha(*shown) || isOpaque(*pixels);
    if (!opaque && settings_.premultipliesAlpha) premultiply(*pixels);
    return std::make_shared<FilmPicture>(std::move(pixels), opaque);
}

std::shared_ptr<const FilmPicture> PictureConverter::inPlanes(const YuvPicture& planes,
                                                              std::shared_ptr<const AVFrame> owner) {
    auto film = std::make_shared<FilmPicture>(planes, std::move(owner), pool_, wishes_);
    if (wishes_->wantsPixels()) film->makePixels();
    return film;
}

/// Another view of the picture's memory, which it keeps.
ffmpeg::Frame PictureConverter::another(const AVFrame& picture) {
    ffmpeg::Frame view = ffmpeg::newFrame();
    ffmpeg::check(av_frame_ref(view.get(), &picture), "a picture cannot be kept", {});
    return view;
}

/// None when all of the picture is wanted.
ffmpeg::Frame PictureConverter::cropped(const AVFrame& picture) const {
    PictureShape shape = settings_.shape;
    if (settings_.orientation.swapsSides()) std::swap(shape.width, shape.height);
    const CropSize size = cropSize(picture.width, picture.height, settings_.pixels.measured(shape));
    if (size.width == picture.width && size.height == picture.height) return nullptr;
    ffmpeg::Frame part = another(picture);
    // The size of the whole decides what colours without a name are.
    if (matrixOf(picture) == YuvMatrix::BT709) part->colorspace = AVCOL_SPC_BT709;
    if (matrixOf(picture) == YuvMatrix::BT601) part->colorspace = AVCOL_SPC_SMPTE170M;
    part->crop_left = static_cast<size_t>(picture.width - size.width) / 2;
    part->crop_right = static_cast<size_t>(picture.width - size.width) - part->crop_left;
    part->crop_top = static_cast<size_t>(picture.height - size.height) / 2;
    part->crop_bottom = static_cast<size_t>(picture.height - size.height) - part->crop_top;
    ffmpeg::check(av_frame_apply_cropping(part.get(), AV_FRAME_CROP_UNALIGNED), "a picture cannot be cropped",
                  {});
    return part;
}

void PictureConverter::convertUpright(const AVFrame& picture, PixelBuffer& target) {
    if (settings_.orientation.isUpright()) {
        convertStored(picture, target);
    } else {
        convertStored(picture, stored_);
        turnUpright(stored_, settings_.orientation, target);
    }
}

void PictureConverter::convertStored(const AVFrame& picture, PixelBuffer& target) {
    const auto planes = planesOf(picture);
    if (!planes) return convertAny(picture, target);
    yuvToPixels(*planes, target);
    if (hasAlpha(picture)) copyAlpha(picture, target);
}

void PictureConverter::convertAny(const AVFrame& picture, PixelBuffer& target) {
    target.resize(picture.width, picture.height);
    constexpr int kFlags = SWS_BILINEAR | SWS_ACCURATE_RND | SWS_FULL_CHR_H_INT | SWS_BITEXACT;
    scaler_.reset(sws_getCachedContext(scaler_.release(), picture.width, picture.height,
                                       static_cast<AVPixelFormat>(picture.format), picture.width,
                                       picture.height, AV_PIX_FMT_BGRA, kFlags, nullptr, nullptr, nullptr));
    if (!scaler_) throw Error(ErrorKind::Failed, "pictures of this pixel format cannot be converted");
    const int* coefficients = sws_getCoefficients(scalerColours(matrixOf(picture)));
    sws_setColorspaceDetails(scaler_.get(), coefficients, isFullRange(picture), coefficients, 1, 0, 1 << 16,
                             1 << 16);
    uint8_t* const rows[4] = {target.data()};
    const int strides[4] = {target.stride()};
    ffmpeg::check(sws_scale(scaler_.get(), picture.data, picture.linesize, 0, picture.height, rows, strides),
                  "a picture cannot be converted", {});
}

}  // namespace platform
