#include "platform/image/PhotoCrop.h"

#include <algorithm>
#include <cmath>

namespace platform {

namespace {

/// What a face takes on one axis: with hair, ears and chin, and bare.
struct Extent {
    double from, to;

    double length() const { return to - from; }
    double middle() const { return (from + to) / 2; }
    Extent with(const Extent& other) const { return {std::min(from, other.from), std::max(to, other.to)}; }
};

Extent headAcross(const Face& face) { return {face.x - 0.3 * face.width, face.x + 1.3 * face.width}; }
Extent headDown(const Face& face) { return {face.y - 0.6 * face.height, face.y + 1.2 * face.height}; }

/// Where a window of `length` starts on an axis of `whole` pixels to keep the heads.
int startWithHeads(const std::vector<Extent>& heads, int whole, int length, double placeInWindow) {
    Extent kept = heads.front();
    for (const Extent& head : heads)
        if (kept.with(head).length() <= length) kept = kept.with(head);
    double start = kept.middle() - placeInWindow * length;
    if (kept.length() <= length) start = std::clamp(start, kept.to - length, kept.from);
    return int(std::lround(std::clamp(start, 0.0, double(whole - length))));
}

PixelRectangle partOf(ImageSize picture, const PhotoCrop& crop) {
    const int x = std::clamp(int(std::lround(crop.x * picture.width)), 0, picture.width - 1);
    const int y = std::clamp(int(std::lround(crop.y * picture.height)), 0, picture.height - 1);
    const int right = int(std::lround((crop.x + crop.width) * picture.width));
    const int bottom = int(std::lround((crop.y + crop.height) * picture.height));
    return {x, y, std::clamp(right - x, 1, picture.width - x), std::clamp(bottom - y, 1, picture.height - y)};
}

ImageSize largestOf(ImageSize room, Aspect aspect) {
    if (aspect.width <= 0 || aspect.height <= 0) return room;
    const int64_t wide = int64_t(room.height) * aspect.width, high = int64_t(room.width) * aspect.height;
    if (wide <= high) return {std::max(1, int((wide + aspect.height / 2) / aspect.height)), room.height};
    return {room.width, std::max(1, int((high + aspect.width / 2) / aspect.width))};
}

}  // namespace

TurnedRectangle turnedPart(ImageSize picture, Aspect aspect, const PhotoCrop& crop) {
    TurnedRectangle part{(crop.x + crop.width / 2) * picture.width,
                         (crop.y + crop.height / 2) * picture.height, crop.width * picture.width,
                         crop.height * picture.height};
    if (aspect.width <= 0 || aspect.height <= 0) return part;
    part.width = std::min(part.width, part.height * aspect.width / aspect.height);
    part.height = std::min(part.height, part.width * aspect.height / aspect.width);
    return part;
}

PixelRectangle croppedPart(ImageSize picture, Aspect aspect, const PhotoCrop& crop) {
    const bool isPart = crop.kind == PhotoCrop::Kind::Part;
    const PixelRectangle room =
        isPart ? partOf(picture, crop) : PixelRectangle{0, 0, picture.width, picture.height};
    const ImageSize size = largestOf(room.size(), aspect);
    if (crop.kind != PhotoCrop::Kind::Focus)
        return {room.x + (room.width - size.width) / 2, room.y + (room.height - size.height) / 2, size.width,
                size.height};
    const auto around = [](double point, int whole, int length) {
        return std::clamp(int(std::lround(point * whole - length / 2.0)), 0, whole - length);
    };
    return {around(crop.x, picture.width, size.width), around(crop.y, picture.height, size.height),
            size.width, size.height};
}

std::optional<PixelRectangle> partWithHeads(ImageSize picture, PixelRectangle part,
                                            const std::vector<Face>& faces) {
    // Small faces beside a large one are passers-by, or none at all.
    constexpr double leastShare = 0.4;
    std::vector<Extent> across, down;
    for (const Face& face : faces) {
        if (face.width < leastShare * faces.front().width) continue;
        across.push_back(headAcross(face));
        down.push_back(headDown(face));
    }
    if (across.empty()) return std::nullopt;
    part.x = startWithHeads(across, picture.width, part.width, 0.5);
    // Heads look right above the middle.
    part.y = startWithHeads(down, picture.height, part.height, 0.42);
    return part;
}

}  // namespace platform
