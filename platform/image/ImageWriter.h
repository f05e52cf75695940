// Writes pictures. The same pixels always give the same bytes; files appear under their name only when
// complete.
#pragma once

#include <filesystem>

#include "platform/image/Image.h"

namespace platform {

/// Pixels that somebody else owns, laid out as in Bitmap save for the row length.
struct ImageView {
    int width = 0, height = 0;
    const uint8_t* rgba = nullptr;
    int stride = 0;  ///< bytes from one row to the next; negative: the rows lie bottom first

    ImageView(int pixelWidth, int pixelHeight, const uint8_t* pixels, int rowBytes)
        : width(pixelWidth), height(pixelHeight), rgba(pixels), stride(rowBytes) {}
    ImageView(const Bitmap& bitmap)
        : ImageView(bitmap.width, bitmap.height, bitmap.rgba.data(), bitmap.stride()) {}
};

/// RGBA, the four channels exactly as they are (nothing is divided by alpha), packed fast rather than small.
/// Throws Error.
void writePng(const std::filesystem::path& file, const ImageView& image);

/// The picture over white; `quality` 1 to 100. Throws Error.
void writeJpeg(const std::filesystem::path& file, const ImageView& image, int quality);

}  // namespace platform
