#include "app/Model/MediaFormat.h"

#include <algorithm>
#include <charconv>

#include "platform/base/Limits.h"
#include "platform/base/Trim.h"

namespace multiscene {

namespace {

constexpr int kMaxReadSide = 1'000'000;
constexpr int kMaxFramesPerSecond = platform::limitOf<int>("maxFramesPerSecond");

std::optional<int> side(std::string_view text) {
    text = platform::trimmed(text, " ");
    int number = 0;
    const auto [end, failure] = std::from_chars(text.data(), text.data() + text.size(), number);
    const bool whole = failure == std::errc() && end == text.data() + text.size();
    return whole && number >= 1 && number <= kMaxReadSide ? std::optional(number) : std::nullopt;
}

}  // namespace

std::optional<MediaSize> parseMediaSize(std::string_view text) {
    const size_t comma = text.find(',');
    if (comma == std::string_view::npos) return std::nullopt;
    const auto width = side(text.substr(0, comma)), height = side(text.substr(comma + 1));
    return width && height ? std::optional(MediaSize{*width, *height}) : std::nullopt;
}

bool isTooLarge(const MediaSize& size) {
    return std::max(size.width, size.height) > kLongestSide ||
           int64_t{size.width} * size.height > kMostPixels;
}

MediaFormat mediaFormatOf(const platform::Value& wechartTempletInfo) {
    MediaFormat format;
    if (const auto size = parseMediaSize(wechartTempletInfo.string("mediaSize"))) {
        format.width = size->width;
        format.height = size->height;
    }
    const int rate = wechartTempletInfo.int32("videoFrameRate");
    format.fit = platform::fitNamed(wechartTempletInfo.string("fit")).value_or(format.fit);
    if (rate >= 1 && rate <= kMaxFramesPerSecond) format.framesPerSecond = rate;
    return format;
}

}  // namespace multiscene
