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

// Planes of brightness and colour that hold nothing else, in the samples that YuvConverter takes.
std::optional<YuvPicture> planesOf(const AVFrame& picture) {
    const AVPixFmtDescriptor* format = av_pix_fmt_desc_get(static_cast<AVPixelFormat>(picture.format));
    constexpr uint64_t kOther = AV_PIX_FMT_FLAG_RGB | AV_PIX_FMT_FLAG_BE | AV_PIX_FMT_FLAG_HWACCEL |
                                AV_PIX_FMT_FLAG_FLOAT | AV_PIX_FMT_FLAG_ALPHA | AV_PIX_FMT_FLAG_BITSTREAM;
    if (!format || format->nb_components != 3 || (format->flags & kOther)) return std::nullopt;
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

PictureConverter::PictureConverter(PixelOrder order, Orientation orientation)
    : order_(order), orientation_(orientation) {}

PictureConverter::~PictureConverter() = default;

void PictureConverter::FreeScaler::operator()(SwsContext* scaler) const { sws_freeContext(scaler); }

void PictureConverter::convert(const AVFrame& picture, PixelBuffer& target) {
    if (orientation_.isUpright()) {
        convertStored(picture, target);
    } else {
        convertStored(picture, stored_);
        turnUpright(stored_, orientation_, target);
    }
}

void PictureConverter::convertStored(const AVFrame& picture, PixelBuffer& target) {
    if (const auto planes = planesOf(picture))
        yuv_.convert(*planes, order_, target);
    else
        convertAny(picture, target);
}

void PictureConverter::convertAny(const AVFrame& picture, PixelBuffer& target) {
    target.resize(picture.width, picture.height);
    const AVPixelFormat format = order_ == PixelOrder::BGRA ? AV_PIX_FMT_BGRA : AV_PIX_FMT_RGBA;
    constexpr int kFlags = SWS_BILINEAR | SWS_ACCURATE_RND | SWS_FULL_CHR_H_INT | SWS_BITEXACT;
    scaler_.reset(sws_getCachedContext(scaler_.release(), picture.width, picture.height,
                                       static_cast<AVPixelFormat>(picture.format), picture.width,
                                       picture.height, format, kFlags, nullptr, nullptr, nullptr));
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
