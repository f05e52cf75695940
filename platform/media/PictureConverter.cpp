#include "platform/media/PictureConverter.h"

#include <libyuv.h>

#include <algorithm>

#include "platform/media/Ffmpeg.h"

extern "C" {
#include <libavutil/frame.h>
#include <libavutil/pixdesc.h>
#include <libswscale/swscale.h>
}

// The library exports it, but the header declares its BGRA twin twice instead.
namespace libyuv {
extern "C" {
LIBYUV_API extern const struct YuvConstants kYvuI601Constants;
}
}  // namespace libyuv

namespace platform {

namespace {

enum class Matrix { Bt601, Bt709, Bt2020 };

Matrix matrixOf(const AVFrame& picture) {
    switch (picture.colorspace) {
        case AVCOL_SPC_BT709:
            return Matrix::Bt709;
        case AVCOL_SPC_BT2020_NCL:
        case AVCOL_SPC_BT2020_CL:
            return Matrix::Bt2020;
        case AVCOL_SPC_UNSPECIFIED:
        case AVCOL_SPC_RESERVED:
            return picture.height < 720 ? Matrix::Bt601 : Matrix::Bt709;
        default:
            return Matrix::Bt601;
    }
}

bool isFullRange(const AVFrame& picture) {
    constexpr AVPixelFormat kFullFormats[] = {AV_PIX_FMT_YUVJ420P, AV_PIX_FMT_YUVJ422P, AV_PIX_FMT_YUVJ444P,
                                              AV_PIX_FMT_YUVJ440P, AV_PIX_FMT_YUVJ411P};
    return picture.color_range == AVCOL_RANGE_JPEG ||
           std::find(std::begin(kFullFormats), std::end(kFullFormats), picture.format) !=
               std::end(kFullFormats);
}

// For bytes in the order R, G, B, A libyuv takes the two chroma planes swapped, and constants to match.
const libyuv::YuvConstants& constantsOf(const AVFrame& picture, PixelOrder order) {
    using namespace libyuv;
    static const YuvConstants* const table[3][2][2] = {
        {{&kYuvI601Constants, &kYvuI601Constants}, {&kYuvJPEGConstants, &kYvuJPEGConstants}},
        {{&kYuvH709Constants, &kYvuH709Constants}, {&kYuvF709Constants, &kYvuF709Constants}},
        {{&kYuv2020Constants, &kYvu2020Constants}, {&kYuvV2020Constants, &kYvuV2020Constants}}};
    return *table[static_cast<int>(matrixOf(picture))][isFullRange(picture)][order == PixelOrder::RGBA];
}

int scalerColours(Matrix matrix) {
    switch (matrix) {
        case Matrix::Bt601:
            return SWS_CS_SMPTE170M;
        case Matrix::Bt709:
            return SWS_CS_ITU709;
        case Matrix::Bt2020:
            return SWS_CS_BT2020;
    }
    return SWS_CS_DEFAULT;
}

struct Job {
    const AVFrame& picture;
    PixelBuffer& target;
    const libyuv::YuvConstants* constants;
    bool swapsChroma;

    template <class Sample>
    const Sample* plane(int index) const {
        return reinterpret_cast<const Sample*>(picture.data[index]);
    }
    /// Samples a row.
    template <class Sample>
    int pitch(int index) const {
        return picture.linesize[index] / static_cast<int>(sizeof(Sample));
    }
};

template <class Sample, auto convert, auto... filter>
void threePlanes(const Job& job) {
    const int first = job.swapsChroma ? 2 : 1, second = 3 - first;
    convert(job.plane<Sample>(0), job.pitch<Sample>(0), job.plane<Sample>(first), job.pitch<Sample>(first),
            job.plane<Sample>(second), job.pitch<Sample>(second), job.target.data(), job.target.stride(),
            job.constants, job.picture.width, job.picture.height, filter...);
}

struct FastConversion {
    AVPixelFormat format;
    void (*convert)(const Job&);
};

// Chroma is interpolated: it costs a quarter of a millisecond at 720 x 1280 and spares keyed edges the
// stairs.
constexpr auto kSmooth = libyuv::kFilterBilinear;
constexpr FastConversion kFastConversions[] = {
    {AV_PIX_FMT_YUV420P, threePlanes<uint8_t, libyuv::I420ToARGBMatrixFilter, kSmooth>},
    {AV_PIX_FMT_YUVJ420P, threePlanes<uint8_t, libyuv::I420ToARGBMatrixFilter, kSmooth>},
    {AV_PIX_FMT_YUV422P, threePlanes<uint8_t, libyuv::I422ToARGBMatrixFilter, kSmooth>},
    {AV_PIX_FMT_YUVJ422P, threePlanes<uint8_t, libyuv::I422ToARGBMatrixFilter, kSmooth>},
    {AV_PIX_FMT_YUV444P, threePlanes<uint8_t, libyuv::I444ToARGBMatrix>},
    {AV_PIX_FMT_YUVJ444P, threePlanes<uint8_t, libyuv::I444ToARGBMatrix>},
    {AV_PIX_FMT_YUV420P10LE, threePlanes<uint16_t, libyuv::I010ToARGBMatrixFilter, kSmooth>},
    {AV_PIX_FMT_YUV422P10LE, threePlanes<uint16_t, libyuv::I210ToARGBMatrixFilter, kSmooth>},
};

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
    target.resize(picture.width, picture.height);
    if (!convertFast(picture, target)) convertAny(picture, target);
}

bool PictureConverter::convertFast(const AVFrame& picture, PixelBuffer& target) const {
    const Job job{picture, target, &constantsOf(picture, order_), order_ == PixelOrder::RGBA};
    for (const FastConversion& conversion : kFastConversions) {
        if (conversion.format != picture.format) continue;
        conversion.convert(job);
        return true;
    }
    return false;
}

void PictureConverter::convertAny(const AVFrame& picture, PixelBuffer& target) {
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
