// Private to platform/media: decoded pictures of any pixel format to upright BGRA.
#pragma once

#include <memory>

#include "platform/media/Crop.h"
#include "platform/media/Ffmpeg.h"
#include "platform/media/Orientation.h"
#include "platform/media/PixelBuffer.h"
#include "platform/pixels/FromYuv.h"

struct SwsContext;

namespace platform {

/// Honours the colour matrix and range that the picture names; an unnamed matrix is the usual one of its
/// size. BT.2020 is converted by its matrix alone, without tone mapping.
class PictureConverter {
  public:
    struct Settings {
        Orientation orientation = {};
        PictureShape shape = {};  ///< of the upright picture
        bool premultipliesAlpha = false;
    };

    explicit PictureConverter(const Settings& settings);
    ~PictureConverter();

    /// Sets the size of `target` and fills it. Whether alpha is 255 everywhere. Throws Error when the pixel
    /// format cannot be converted.
    bool convert(const AVFrame& picture, PixelBuffer& target);

  private:
    void convertUpright(const AVFrame& picture, PixelBuffer& target);
    ffmpeg::Frame cropped(const AVFrame& picture) const;
    void convertStored(const AVFrame& picture, PixelBuffer& target);
    void convertAny(const AVFrame& picture, PixelBuffer& target);

    struct FreeScaler {
        void operator()(SwsContext* scaler) const;
    };
    const Settings settings_;
    PixelBuffer stored_;  ///< only for pictures that have to be turned
    YuvConverter yuv_;
    std::unique_ptr<SwsContext, FreeScaler> scaler_;  ///< for what is not planar
};

}  // namespace platform
