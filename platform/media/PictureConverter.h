// Private to platform/media: decoded pictures of any pixel format, upright and in the wanted shape.
#pragma once

#include <memory>

#include "platform/media/Crop.h"
#include "platform/media/Ffmpeg.h"
#include "platform/media/Orientation.h"
#include "platform/media/PixelBuffer.h"
#include "platform/pixels/FilmPicture.h"

struct SwsContext;

namespace platform {

/// Honours the colour matrix and range that the picture names; an unnamed matrix is the usual one of its
/// size. BT.2020 is converted by its matrix alone, without tone mapping.
class PictureConverter {
  public:
    struct Settings {
        Orientation orientation = {};
        PictureShape shape = {};  ///< of the upright picture, as it is seen
        PixelShape pixels = {};   ///< of the stored picture
        bool premultipliesAlpha = false;
    };

    explicit PictureConverter(const Settings& settings);
    ~PictureConverter();

    /// Planes are kept as they are where that is possible; their pixels are made ahead as soon as somebody
    /// has wanted those of an earlier picture. Throws Error when the pixel format cannot be converted.
    std::shared_ptr<const FilmPicture> convert(const AVFrame& picture);

  private:
    void convertUpright(const AVFrame& picture, PixelBuffer& target);
    ffmpeg::Frame cropped(const AVFrame& picture) const;
    static ffmpeg::Frame another(const AVFrame& picture);
    std::shared_ptr<const FilmPicture> inPlanes(const YuvPicture& planes,
                                                std::shared_ptr<const AVFrame> owner);
    void convertStored(const AVFrame& picture, PixelBuffer& target);
    void convertAny(const AVFrame& picture, PixelBuffer& target);

    struct FreeScaler {
        void operator()(SwsContext* scaler) const;
    };
    const Settings settings_;
    PixelBuffer stored_;  ///< only for pictures that have to be turned
    PixelBufferPool pool_;
    std::shared_ptr<FilmWishes> wishes_ = std::make_shared<FilmWishes>();
    std::unique_ptr<SwsContext, FreeScaler> scaler_;  ///< for what is not planar
};

}  // namespace platform
