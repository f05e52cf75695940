#include "core/GLESUtils/FrameEdges.h"

#include <algorithm>
#include <array>
#include <cmath>

namespace multiscene {

namespace {

constexpr int tileSize = 32;                // pixels
constexpr float reach = 1;                  // pixels that an edge touches to either side, generously
constexpr float onPixelBorder = 1 / 32.0f;  // an edge this near to it splits no pixel's samples
constexpr float neededMargin = 1.5f;        // pixels of transparency that hide an outline
constexpr float worthwhilePart = 0.5f;      // of the picture: beyond it everything is multisampled
constexpr int worthwhileDraws = 1500;       // quads times regions, likewise

bool liesOnPixelBorder(float from, float to) {
    const float border = std::round(from);
    return std::abs(from - border) <= onPixelBorder && std::abs(to - border) <= onPixelBorder;
}

}  // namespace

/// A quad on the picture, in pixels.
struct FrameEdges::Outline {
    std::array<glm::vec2, 4> corners;
};

FrameEdges& FrameEdges::shared() {
    static FrameEdges edges;
    return edges;
}

void FrameEdges::beginRecording(int width, int height) {
    mode_ = Mode::Recording;
    isWholePictureNeeded_ = false;
    drawnQuads_ = 0;
    width_ = width;
    height_ = height;
    columns_ = (width + tileSize - 1) / tileSize;
    rows_ = (height + tileSize - 1) / tileSize;
    tiles_.assign(static_cast<size_t>(columns_) * static_cast<size_t>(rows_), false);
}

std::optional<std::vector<PixelRect>> FrameEdges::endRecording() {
    mode_ = Mode::Off;
    if (isWholePictureNeeded_) return std::nullopt;
    std::vector<PixelRect> regions = mergedTiles();
    int64_t pixels = 0;
    for (const PixelRect& region : regions) pixels += int64_t{region.width} * region.height;
    if (static_cast<float>(pixels) >
            worthwhilePart * static_cast<float>(width_) * static_cast<float>(height_) ||
        static_cast<int>(regions.size()) * drawnQuads_ > worthwhileDraws)
        return std::nullopt;
    return regions;
}

void FrameEdges::clipTo(const PixelRect& region) {
    mode_ = Mode::Clipping;
    clip_ = region;
}

void FrameEdges::endClipping() { mode_ = Mode::Off; }

void FrameEdges::requireMultisampling() { isWholePictureNeeded_ = true; }

bool FrameEdges::admits(const glm::mat4& mvpMatrix, const float* positions, const ClearMargin& margin) {
    if (mode_ == Mode::Off) return true;
    const auto outline = project(mvpMatrix, positions);
    if (!outline) {  // reaches behind the eye
        requireMultisampling();
        return true;
    }
    if (mode_ == Mode::Recording) {
        record(*outline, margin);
        return true;
    }
    const auto [left, right] = std::minmax(
        {outline->corners[0].x, outline->corners[1].x, outline->corners[2].x, outline->corners[3].x});
    const auto [bottom, top] = std::minmax(
        {outline->corners[0].y, outline->corners[1].y, outline->corners[2].y, outline->corners[3].y});
    return right >= static_cast<float>(clip_.x) - reach &&
           left <= static_cast<float>(clip_.x + clip_.width) + reach &&
           top >= static_cast<float>(clip_.y) - reach &&
           bottom <= static_cast<float>(clip_.y + clip_.height) + reach;
}

std::optional<FrameEdges::Outline> FrameEdges::project(const glm::mat4& mvpMatrix,
                                                       const float* positions) const {
    constexpr float nearestW = 1e-4f;
    const glm::vec2 half(static_cast<float>(width_) / 2, static_cast<float>(height_) / 2);
    Outline outline{};
    for (size_t i = 0; i < outline.corners.size(); ++i) {
        const float* corner = positions + 3 * i;
        const glm::vec4 clip = mvpMatrix * glm::vec4(corner[0], corner[1], corner[2], 1);
        // A corner beyond the near or far plane is cut off, which makes an edge of its own.
        if (!(clip.w > nearestW) || std::abs(clip.z) > clip.w) return std::nullopt;
        outline.corners[i] = (glm::vec2(clip) / clip.w + 1.0f) * half;
        if (!std::isfinite(outline.corners[i].x) || !std::isfinite(outline.corners[i].y)) return std::nullopt;
    }
    return outline;
}

void FrameEdges::record(const Outline& outline, const ClearMargin& margin) {
    ++drawnQuads_;
    const auto& [bottomLeft, bottomRight, topRight, topLeft] = outline.corners;
    const float width = std::min(glm::distance(bottomLeft, bottomRight), glm::distance(topLeft, topRight));
    const float height = std::min(glm::distance(bottomLeft, topLeft), glm::distance(bottomRight, topRight));
    const std::array<float, 4> clearPixels{margin.lower * height, margin.right * width, margin.upper * height,
                                           margin.left * width};
    for (size_t i = 0; i < outline.corners.size(); ++i) {
        if (blendsByAlpha_ && clearPixels[i] >= neededMargin) continue;
        markEdge(outline.corners[i], outline.corners[(i + 1) % outline.corners.size()]);
    }
}

void FrameEdges::markEdge(glm::vec2 from, glm::vec2 to) {
    if (liesOnPixelBorder(from.x, to.x) || liesOnPixelBorder(from.y, to.y)) return;
    if (from.y > to.y) std::swap(from, to);
    const float lowest = std::max(from.y - reach, 0.0f);
    const float highest = std::min(to.y + reach, static_cast<float>(height_) - 1);
    if (lowest > highest) return;
    const float slope = to.y - from.y > 1e-3f ? (to.x - from.x) / (to.y - from.y) : 0;
    for (int row = static_cast<int>(lowest) / tileSize; row <= static_cast<int>(highest) / tileSize; ++row) {
        // The part of the edge that lies in this row of tiles.
        const float bottom = std::clamp(static_cast<float>(row * tileSize) - reach, from.y, to.y);
        const float top = std::clamp(static_cast<float>((row + 1) * tileSize) + reach, from.y, to.y);
        float left = slope == 0 ? std::min(from.x, to.x) : from.x + slope * (bottom - from.y);
        float right = slope == 0 ? std::max(from.x, to.x) : from.x + slope * (top - from.y);
        if (left > right) std::swap(left, right);
        left = std::max(left - reach, 0.0f);
        right = std::min(right + reach, static_cast<float>(width_) - 1);
        if (left > right) continue;
        for (int column = static_cast<int>(left) / tileSize; column <= static_cast<int>(right) / tileSize;
             ++column)
            tiles_[static_cast<size_t>(row * columns_ + column)] = true;
    }
}

/// Runs of tiles in a row, joined with the equal run in the row below them.
std::vector<PixelRect> FrameEdges::mergedTiles() const {
    std::vector<PixelRect> regions;
    for (int row = 0; row < rows_; ++row) {
        for (int column = 0; column < columns_; ++column) {
            if (!tiles_[static_cast<size_t>(row * columns_ + column)]) continue;
            const int first = column;
            while (column + 1 < columns_ && tiles_[static_cast<size_t>(row * columns_ + column + 1)])
                ++column;
            const PixelRect run{first * tileSize, row * tileSize,
                                std::min((column + 1) * tileSize, width_) - first * tileSize,
                                std::min((row + 1) * tileSize, height_) - row * tileSize};
            const auto below = std::find_if(regions.begin(), regions.end(), [&](const PixelRect& region) {
                return region.x == run.x && region.width == run.width && region.y + region.height == run.y;
            });
            if (below == regions.end())
                regions.push_back(run);
            else
                below->height += run.height;
        }
    }
    return regions;
}

}  // namespace multiscene
