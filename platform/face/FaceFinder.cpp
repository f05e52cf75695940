#include "platform/face/FaceFinder.h"

#include <algorithm>
#include <cmath>

#include "platform/base/Paths.h"

namespace platform {

namespace {

constexpr double zoomStep = 1.15;
constexpr double smallestFace = 20;  // pixels
constexpr int fewestHits = 8;        // a face is met at several places and sizes, waves and bark at few

const FaceCascade& frontalFaces() {
    static const FaceCascade cascade = [] {
        const std::filesystem::path installed =
            resourcesFolder() / "faces" / std::filesystem::path(MULTISCENE_FACE_DATA).filename();
        return FaceCascade(std::filesystem::exists(installed) ? installed : MULTISCENE_FACE_DATA);
    }();
    return cascade;
}

/// Each pixel is the average of those that it covers.
GreyPicture shrunk(const RectangleSums& picture, double factor) {
    GreyPicture small{int(picture.width() / factor), int(picture.height() / factor), {}};
    small.pixels.reserve(size_t(small.width) * size_t(small.height));
    for (int y = 0; y < small.height; ++y) {
        const int top = int(y * factor), bottom = std::max(int((y + 1) * factor), top + 1);
        for (int x = 0; x < small.width; ++x) {
            const int left = int(x * factor), right = std::max(int((x + 1) * factor), left + 1);
            const int64_t area = int64_t(right - left) * (bottom - top);
            small.pixels.push_back(
                uint8_t((picture.sum(left, top, right - left, bottom - top) + area / 2) / area));
        }
    }
    return small;
}

struct Cluster {
    Face sum;
    int hits = 0;

    Face mean() const { return {sum.x / hits, sum.y / hits, sum.width / hits, sum.height / hits}; }
    void add(const Face& face) {
        sum.x += face.x, sum.y += face.y, sum.width += face.width, sum.height += face.height;
        ++hits;
    }
};

bool isSameFace(const Face& one, const Face& other) {
    const double near = 0.25 * std::min(one.width, other.width);
    return std::abs(one.x - other.x) <= near && std::abs(one.y - other.y) <= near &&
           std::abs(one.x + one.width - other.x - other.width) <= near &&
           std::abs(one.y + one.height - other.y - other.height) <= near;
}

std::vector<Face> merged(const std::vector<Face>& hits) {
    std::vector<Cluster> clusters;
    for (const Face& hit : hits) {
        const auto same = std::find_if(clusters.begin(), clusters.end(), [&](const Cluster& cluster) {
            return isSameFace(cluster.mean(), hit);
        });
        (same == clusters.end() ? clusters.emplace_back() : *same).add(hit);
    }
    std::vector<Face> faces;
    for (const Cluster& cluster : clusters)
        if (cluster.hits >= fewestHits) faces.push_back(cluster.mean());
    std::stable_sort(faces.begin(), faces.end(),
                     [](const Face& one, const Face& other) { return one.width > other.width; });
    return faces;
}

}  // namespace

std::vector<Face> findFaces(const GreyPicture& picture) {
    const FaceCascade& cascade = frontalFaces();
    const RectangleSums whole(picture);
    std::vector<Face> hits;
    for (double factor = smallestFace / cascade.windowWidth();; factor *= zoomStep) {
        const GreyPicture level = shrunk(whole, factor);
        if (level.width < cascade.windowWidth() || level.height < cascade.windowHeight()) break;
        const RectangleSums sums(level);
        const int step = factor > 2 ? 1 : 2;
        for (int y = 0; y + cascade.windowHeight() <= level.height; y += step)
            for (int x = 0; x + cascade.windowWidth() <= level.width; x += step)
                if (cascade.accepts(sums, x, y))
                    hits.push_back({x * factor, y * factor, cascade.windowWidth() * factor,
                                    cascade.windowHeight() * factor});
    }
    return merged(hits);
}

}  // namespace platform
