#pragma once

#include <optional>

#include "platform/base/Limits.h"
#include "platform/base/Value.h"
#include "platform/pixels/FrameLayout.h"

namespace multiscene {

/// The video that a template makes.
struct MediaFormat {
    int width = 720;    ///< pixels
    int height = 1280;  ///< pixels
    int framesPerSecond = 30;
    /// How the template wants to lie in a video of another shape.
    platform::Fit fit = platform::Fit::Blur;

    bool operator==(const MediaFormat&) const = default;
};

/// "mediaSize" ("720,1280"), "videoFrameRate" and "fit" of an input description. What is missing, or is no
/// positive number, keeps its default.
MediaFormat mediaFormatOf(const platform::Value& wechartTempletInfo);

/// Width and height of "720,1280"; nothing unless both are whole positive numbers of at most a million.
struct MediaSize {
    int width, height;
};
std::optional<MediaSize> parseMediaSize(std::string_view text);

/// The largest video: what players of H.264 level 5.2 take. It needs about 1.5 GB of memory.
inline constexpr int64_t kMostPixels = platform::limitOf<int64_t>("maxVideoPixels");
inline constexpr int kLongestSide = platform::limitOf<int>("maxVideoSide");
bool isTooLarge(const MediaSize& size);

}  // namespace multiscene
