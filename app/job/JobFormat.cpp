#include "app/job/JobFormat.h"

#include <algorithm>
#include <cmath>
#include <cstdio>

#include "platform/base/Error.h"

namespace multiscene {

using platform::Error;
using platform::ErrorKind;

namespace {

std::string sizeText(const MediaFormat& format) {
    return std::to_string(format.width) + "x" + std::to_string(format.height);
}

std::string secondsText(double seconds) {
    char text[32];
    std::snprintf(text, sizeof text, "%.2f s", seconds);
    return text;
}

/// The nearest even size of the shape.
void shrink(MediaFormat& format, int mostWidth) {
    if (format.width <= mostWidth) return;
    const double factor = static_cast<double>(mostWidth) / format.width;
    const auto even = [](double side) { return std::max(2, 2 * static_cast<int>(std::lround(side / 2))); };
    format.height = even(format.height * factor);
    format.width = even(mostWidth);
}

void requireNotTooLarge(const MediaFormat& format, const RenderRequest& request, const Playable& playable) {
    if (!isTooLarge({format.width, format.height})) return;
    const std::string message = sizeText(format) + " is too large; a video may have " +
                                std::to_string(kMostPixels) + " pixels (4096x2304), each side " +
                                std::to_string(kLongestSide);
    if (request.size) throw Error(ErrorKind::Usage, message, "", "--size");
    throw Error(ErrorKind::Template, message, playable.file.string(), "mediaSize");
}

}  // namespace

MediaFormat formatOf(const RenderRequest& request, const Playable& playable) {
    if (!playable.format && (!request.size || !request.framesPerSecond))
        throw Error(ErrorKind::Usage, "a scene-group file says neither size nor rate: give --size and --fps",
                    playable.file.string());
    MediaFormat format = playable.format.value_or(MediaFormat());
    if (request.size) {
        format.width = request.size->width;
        format.height = request.size->height;
    }
    if (request.mostWidth) shrink(format, *request.mostWidth);
    format.framesPerSecond = request.framesPerSecond.value_or(format.framesPerSecond);
    requireNotTooLarge(format, request, playable);
    const bool isEven = format.width % 2 == 0 && format.height % 2 == 0;
    if (!isEven && request.size)
        throw Error(ErrorKind::Usage, sizeText(format) + " is odd; video needs even sizes", "", "--size");
    if (!isEven)
        throw Error(ErrorKind::Template, sizeText(format) + " is odd; video needs even sizes",
                    playable.file.string(), "mediaSize");
    return format;
}

platform::FrameLayout layoutOf(const RenderRequest& request, const Playable& playable,
                               const MediaFormat& format) {
    if (!playable.format) return platform::FrameLayout::whole(format.width, format.height);
    return platform::FrameLayout::fitted(playable.format->width, playable.format->height, format.width,
                                         format.height, request.fit.value_or(playable.format->fit));
}

std::string shapeNote(const RenderRequest& request, const Playable& playable, const MediaFormat& format) {
    if (!playable.format) return request.fit ? "--fit: a scene-group file has no shape of its own" : "";
    // What padding leaves whole has the same shape.
    const bool isSameShape = platform::FrameLayout::fitted(playable.format->width, playable.format->height,
                                                           format.width, format.height, platform::Fit::Pad)
                                 .isWhole();
    if (isSameShape) return {};
    const std::string shapes =
        sizeText(format) + " is another shape than the template's " + sizeText(*playable.format) + ": ";
    switch (request.fit.value_or(playable.format->fit)) {
        case platform::Fit::Blur:
            return shapes + "a blurred copy fills what is left (--fit)";
        case platform::Fit::Pad:
            return shapes + "what is left stays black (--fit)";
        case platform::Fit::Crop:
            return shapes + "its edges are cut (--fit)";
        case platform::Fit::Stretch:
            return shapes + "the scenes are drawn in that shape, which squashes most (--fit)";
    }
    return {};
}

std::string speedNote(const MediaFormat& format, const Playable& playable, int64_t frames) {
    if (!playable.format || playable.format->framesPerSecond == format.framesPerSecond) return {};
    const double wanted = static_cast<double>(frames) / format.framesPerSecond;
    const double own = static_cast<double>(frames) / playable.format->framesPerSecond;
    return "--fps " + std::to_string(format.framesPerSecond) + " instead of the template's " +
           std::to_string(playable.format->framesPerSecond) + " changes its speed: it lasts " +
           secondsText(wanted) + " instead of " + secondsText(own);
}

}  // namespace multiscene
