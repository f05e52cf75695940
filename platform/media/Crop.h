// The middle of a picture in another shape.
#pragma once

namespace platform {

/// Width to height. Below 1 in either: the picture's own.
struct PictureShape {
    int width = 0, height = 0;
};

/// Pixels need not be square: how much wider they are than high.
struct PixelShape {
    int width = 1, height = 1;

    /// The shape, measured in such pixels.
    PictureShape measured(const PictureShape& shape) const;
    /// How many square pixels are as wide as `width` of these.
    int widthOf(int width) const;
    bool isSquare() const { return width == height; }
};

/// Pixels.
struct CropSize {
    int width = 0, height = 0;
};

/// The largest part of a picture of this size that has the shape; at least one pixel each way.
CropSize cropSize(int width, int height, const PictureShape& shape);

}  // namespace platform
