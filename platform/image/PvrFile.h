// PVR texture files, version 2, from their bytes.
#pragma once

#include <cstdint>
#include <span>
#include <string>
#include <vector>

#include "platform/base/Limits.h"

namespace platform {

/// The format codes that are taken, with the file's own numbers.
enum class PvrFormat : uint8_t {
    Rgba4444 = 16,
    Rgba5551 = 17,
    Rgba8888 = 18,
    Rgb565 = 19,
    Rgb888 = 21,
    Luminance8 = 22,
    LuminanceAlpha88 = 23,
    Pvrtc2 = 24,
    Pvrtc4 = 25,
    Bgra8888 = 26,
    Alpha8 = 27,
};

struct PvrLevel {
    int width = 0, height = 0;      ///< pixels, at least 1
    std::span<const uint8_t> data;  ///< inside the file's bytes; holds at least what the format needs
};

/// A parsed file. Nothing outside the bytes is ever read, whatever the header says.
class PvrFile {
  public:
    /// Sides and pixels of a level that are taken, and levels beyond the first.
    static constexpr int maxSide = limitOf<int>("maxPvrSide");
    static constexpr int64_t maxPixels = limitOf<int64_t>("maxPvrPixels");
    static constexpr uint32_t maxMipMaps = limitOf<uint32_t>("maxPvrLevels");
    static constexpr uint64_t maxBytes = limitOf("maxPvrBytes");

    /// Takes plain or gzip-compressed bytes. A file that is rejected has no levels and a problem.
    explicit PvrFile(std::vector<uint8_t> bytes);
    PvrFile(PvrFile&&) = default;
    PvrFile& operator=(PvrFile&&) = default;

    /// Empty when the file is good; else why it is rejected.
    const std::string& problem() const { return problem_; }
    /// The header's size in pixels, also of a file that is rejected for its format; 0 without a PVR header.
    uint32_t width() const { return width_; }
    uint32_t height() const { return height_; }
    PvrFormat format() const { return format_; }
    /// The compressed formats have alpha only when the header has an alpha mask.
    bool hasAlphaMask() const { return hasAlphaMask_; }
    /// Level 0 first.
    const std::vector<PvrLevel>& levels() const { return levels_; }

  private:
    std::string read();
    std::string readLevels(uint32_t firstLevel, uint32_t mipMaps, uint32_t bitsPerPixel);

    std::vector<uint8_t> bytes_;
    uint32_t width_ = 0, height_ = 0;
    PvrFormat format_ = PvrFormat::Rgba8888;
    bool hasAlphaMask_ = false;
    std::vector<PvrLevel> levels_;
    std::string problem_;
};

}  // namespace platform
