// How brightness and colour of a video are weighed from red, green and blue.
#pragma once

namespace platform {

/// ITU-R BT.601 for small pictures, BT.709 for HD ones, BT.2020 for what wide-gamut cameras make.
enum class YuvMatrix { BT601, BT709, BT2020 };

/// The matrix that players take for granted at this size in pixels: BT.709 from 720 columns or lines up, else
/// BT.601.
YuvMatrix yuvMatrixFor(int width, int height);

/// How bright red and blue are; green is the rest to 1.
struct Brightness {
    double red, blue;
};

constexpr Brightness brightnessOf(YuvMatrix matrix) {
    switch (matrix) {
        case YuvMatrix::BT601:
            return {0.299, 0.114};
        case YuvMatrix::BT709:
            return {0.2126, 0.0722};
        case YuvMatrix::BT2020:
            return {0.2627, 0.0593};
    }
    return {};
}

}  // namespace platform
