// The middle of a picture in another shape.
#pragma once

namespace platform {

/// Width to height. Below 1 in either: the picture's own.
struct PictureShape {
    int width = 0, height = 0;
};

/// Pixels.
struct CropSize {
    int width = 0, height = 0;
};

/// The largest part of a picture of this size that has the shape; at least one pixel each way.
CropSize cropSize(int width, int height, const PictureShape& shape);

}  // namespace platform
