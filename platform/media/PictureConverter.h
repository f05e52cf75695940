// Private to platform/media: decoded pictures of any pixel format to upright BGRA or RGBA.
#pragma once

#include <memory>

#include "platform/media/Orientation.h"
#include "platform/media/PixelBuffer.h"
#include "platform/pixels/FromYuv.h"

struct AVFrame;
struct SwsContext;

namespace platform {

/// Honours the colour matrix and range that the picture names; an unnamed matrix is the usual one of its
/// size. BT.2020 is converted by its matrix alone, without tone mapping.
class PictureConverter {
  public:
    PictureConverter(PixelOrder order, Orientation orientation);
    ~PictureConverter();

    /// Sets the size of `target` and fills it. Throws Error when the pixel format cannot be converted.
    void convert(const AVFrame& picture, PixelBuffer& target);

  private:
    void convertStored(const AVFrame& picture, PixelBuffer& target);
    void convertAny(const AVFrame& picture, PixelBuffer& target);

    struct FreeScaler {
        void operator()(SwsContext* scaler) const;
    };
    const PixelOrder order_;
    const Orientation orientation_;
    PixelBuffer stored_;  ///< only for pictures that have to be turned
    YuvConverter yuv_;
    std::unique_ptr<SwsContext, FreeScaler> scaler_;  ///< for what is not planar
};

}  // namespace platform
