#include "core/Material/PictureSequence.h"

#include <algorithm>
#include <cinttypes>
#include <cstdio>
#include <limits>

#include "platform/base/Saturating.h"

namespace multiscene {

static constexpr Key pictureSequenceKeyList[] = {
    {.name = "animationFps",
     .type = KeyType::Number,
     .unit = "frames",
     .fallback = "0",
     .meaning = "frames that each picture is shown for; 0 holds the first",
     .minimum = 0},
    {.name = "animationStart",
     .type = KeyType::Integer,
     .fallback = "0",
     .meaning = "number of the first picture"},
    {.name = "animationEnd",
     .type = KeyType::Integer,
     .fallback = "0",
     .meaning = "number of the last picture; below the first: runs downwards"},
    {.name = "animationName",
     .type = KeyType::Text,
     .meaning = "file name before the number",
     .lookup = KeyLookup::Path,
     .required = true},
    {.name = "animationExtension", .type = KeyType::Text, .meaning = "extension after the dot"},
    {.name = "isFristZero",
     .type = KeyType::Bool,
     .fallback = "0",
     .meaning = "numbers are padded with zeros to the width of the larger end"},
    {.name = "isLastLoop",
     .type = KeyType::Bool,
     .fallback = "0",
     .meaning = "every other pass runs backwards"},
};
const KeyTable pictureSequenceKeys{"PvrTextureSerialInfo", "Numbered pictures.", nullptr,
                                   pictureSequenceKeyList};

PictureSequence::PictureSequence(const platform::Value& info) {
    const KeyReader reader(pictureSequenceKeys, info);
    animationFps_ = reader.number("animationFps");
    animationStart_ = reader.int32("animationStart");
    animationEnd_ = reader.int32("animationEnd");
    animationName_ = reader.text("animationName");
    animationExtension_ = reader.text("animationExtension");
    isZero_ = reader.boolean("isFristZero");
    isLastLoop_ = reader.boolean("isLastLoop");
}

int32_t PictureSequence::stepAt(int64_t framesShown) const {
    if (!(animationFps_ > 0)) return 0;
    constexpr double most = std::numeric_limits<int32_t>::max();
    return static_cast<int32_t>(std::min(static_cast<double>(framesShown) / animationFps_, most));
}

std::optional<int64_t> PictureSequence::numberAt(int64_t frame, int64_t objectSartFps,
                                                 int64_t objectEndFps) const {
    if (frame < objectSartFps || frame > objectEndFps) return std::nullopt;
    const int64_t direction = animationEnd_ >= animationStart_ ? 1 : -1;
    const int64_t length = direction * (animationEnd_ - animationStart_);
    int64_t step = stepAt(platform::saturatingDifference(frame, objectSartFps));
    bool isOddPass = false;
    if (step > length) {
        const int64_t passes = length == 0 ? 0 : step / length;
        step -= passes * length;
        isOddPass = passes % 2 == 1;
    }
    return isLastLoop_ && isOddPass ? animationEnd_ - direction * step : animationStart_ + direction * step;
}

std::string PictureSequence::fileName(int64_t number) const {
    const int64_t largest = std::max(animationStart_, animationEnd_);
    const int width = !isZero_ ? 1 : largest > 999 ? 4 : largest > 99 ? 3 : largest > 9 ? 2 : 1;
    char digits[24];
    std::snprintf(digits, sizeof digits, "%0*" PRId64, width, number);
    return animationName_ + digits + "." + animationExtension_;
}

std::optional<std::string> PictureSequence::animationWithCurrentFps(int64_t frame, int64_t objectSartFps,
                                                                    int64_t objectEndFps) const {
    const auto number = numberAt(frame, objectSartFps, objectEndFps);
    return number ? std::optional(fileName(*number)) : std::nullopt;
}

}  // namespace multiscene
