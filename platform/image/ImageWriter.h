// Writes pictures. The same pixels always give the same bytes; files appear under their name only when
// complete.
#pragma once

#include <cstddef>
#include <cstdint>
#include <filesystem>
#include <string>

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

/// Pixels in the order B, G, R, A, as frames and films have them; what their alpha says is left out.
struct FramePixels {
    int width = 0, height = 0;
    const uint8_t* bgra = nullptr;
    ptrdiff_t stride = 0;  ///< bytes from one row to the next; negative: the rows lie bottom first
};

/// The bytes of a JPEG; `quality` 1 to 100. The picture is shrunk until neither side is longer than
/// `maxLongSide`; 0: no limit. Throws Error.
std::string encodeJpeg(const FramePixels& picture, int quality, int maxLongSide = 0);

/// The picture over white; `quality` 1 to 100. Throws Error.
void writeJpeg(const std::filesystem::path& file, const ImageView& image, int quality);

}  // namespace platform
