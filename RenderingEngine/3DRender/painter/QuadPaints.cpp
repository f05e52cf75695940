#include "painter/QuadPaints.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <optional>

#include "painter/PlaceOnQuad.h"

namespace multiscene {

using platform::PaintCorner;
using platform::QuadPaint;

namespace {

// --- places --------------------------------------------------------------------------------------------

/// Nothing when it lies behind the eye or beyond the depth that is seen: GL cuts there.
std::optional<PaintCorner> project(const glm::mat4& mvpMatrix, const glm::vec3& corner,
                                   const CanvasSize& canvas) {
    constexpr float nearestW = 1e-4f;
    const glm::vec4 clip = mvpMatrix * glm::vec4(corner, 1);
    if (!(clip.w > nearestW) || !(std::abs(clip.z) <= clip.w)) return std::nullopt;
    if (!std::isfinite(clip.x) || !std::isfinite(clip.y)) return std::nullopt;
    const double w = clip.w;
    return PaintCorner{.x = (clip.x + w) * canvas.width / 2, .y = (w - clip.y) * canvas.height / 2, .w = w};
}

glm::vec3 cornerOf(const QuadDraw& quad, size_t index) {
    return {quad.corners[3 * index], quad.corners[3 * index + 1], quad.corners[3 * index + 2]};
}

glm::vec2 coordinatesOf(const std::array<float, 8>& all, size_t index) {
    return {all[2 * index], all[2 * index + 1]};
}

bool isParallelogram(const glm::vec3& a, const glm::vec3& b, const glm::vec3& c, const glm::vec3& d) {
    constexpr float rounding = 1e-4f;
    return glm::length(a - b + c - d) <= rounding * (glm::length(a - c) + glm::length(b - d));
}

/// Then one mapping leads from the quad to the picture; else each of two triangles has its own.
bool isOneSurface(const QuadDraw& quad) {
    const auto& uv = quad.textureCoordinates;
    const auto flat = [&](size_t i) { return glm::vec3(coordinatesOf(uv, i), 0); };
    return isParallelogram(cornerOf(quad, 0), cornerOf(quad, 1), cornerOf(quad, 2), cornerOf(quad, 3)) &&
           isParallelogram(flat(0), flat(1), flat(2), flat(3));
}

bool placeCorners(const QuadDraw& quad, const CanvasSize& canvas, QuadPaint& paint) {
    for (size_t i = 0; i < 4; ++i) {
        const auto corner = project(quad.mvpMatrix, cornerOf(quad, i), canvas);
        if (!corner) return false;
        const glm::vec4 at(coordinatesOf(quad.textureCoordinates, i), 0, 1);
        const glm::vec2 moved(quad.textureMatrix * at);
        paint.corners[i] = *corner;
        paint.corners[i].u = moved.x;
        paint.corners[i].v = moved.y;
    }
    return true;
}

// --- pictures ------------------------------------------------------------------------------------------

double areaOf(const std::array<PaintCorner, 4>& corners, bool inPicture) {
    const auto at = [&](size_t i) {
        const PaintCorner& corner = corners[i];
        return inPicture ? glm::dvec2(corner.u, corner.v) : glm::dvec2(corner.x, corner.y) / corner.w;
    };
    const glm::dvec2 across = at(2) - at(0), along = at(3) - at(1);
    return std::abs(across.x * along.y - across.y * along.x) / 2;
}

const platform::Surface& levelFor(const Texture& texture, const QuadPaint& paint) {
    const auto levels = texture.levelsOrFilm();
    if (levels.size() == 1) return levels.front();
    const double texels = areaOf(paint.corners, true) * levels[0].width * levels[0].height;
    return multiscene::levelFor(levels, texels, areaOf(paint.corners, false));
}

platform::Wrap wrapOf(bool repeats) { return repeats ? platform::Wrap::Repeat : platform::Wrap::Clamp; }

std::array<float, 4> fourOf(const glm::vec4& color) { return {color.r, color.g, color.b, color.a}; }

// --- looks ---------------------------------------------------------------------------------------------

/// Each says how a quad is painted; false for what only GL can do.
struct Painted {
    const QuadDraw& quad;
    const CanvasSize& canvas;
    QuadPaint& paint;

    bool operator()(const PlainLook& look) const {
        paint.opacity = look.opacity;
        return true;
    }
    bool operator()(const MaskLook& look) const {
        if (look.mask->levels().empty()) return false;
        platform::MaskPaint mask{.picture = look.mask->levels().front(),
                                 .premultiplied = look.mask->isPremultiplied(),
                                 .byAlpha = look.countsAlpha,
                                 .wrap = platform::Wrap::Clamp};
        for (size_t i = 0; i < 4; ++i)
            mask.at[i] = {look.maskCoordinates[2 * i], look.maskCoordinates[2 * i + 1]};
        paint.mask = mask;
        paint.opacity = look.opacity;
        return true;
    }
    bool operator()(const GradientLook& look) const {
        paint.gradient = platform::GradientPaint{.startPlace = look.start.x,
                                                 .startOpacity = look.start.y,
                                                 .endPlace = look.end.x,
                                                 .endOpacity = look.end.y,
                                                 .vertical = (look.interpolation & 1) == 1,
                                                 .soft = look.interpolation >= 2};
        return true;
    }
    bool operator()(const FilterLook& look) const {
        const QuadMeasure measure = measured(quad, canvas.width, canvas.height);
        paint.filter = platform::FilterPaint{.type = look.type,
                                             .range = look.range,
                                             .pixelSize = look.pixelSize,
                                             .time = look.time,
                                             .reflection = look.isReflection,
                                             .pictureColor = fourOf(look.pictureColor),
                                             .borderWidth = look.borderWidth,
                                             .borderColor = fourOf(look.borderColor),
                                             .cornerRadius = look.cornerRadius,
                                             .frameWidth = measure.size.x,
                                             .frameHeight = measure.size.y,
                                             .pixelsAUnit = measure.pixelsAUnit,
                                             .pictureWidth = look.pictureSize.x,
                                             .pictureHeight = look.pictureSize.y};
        paint.opacity = look.opacity;
        return true;
    }
    bool operator()(const KeyLook& look) const {
        paint.key = platform::KeyPaint{.color = fourOf(look.color), .softEdge = look.softEdge};
        return true;
    }
    bool operator()(const BlurLook&) const { return false; }
    bool operator()(const ColorLook& look) const {
        paint.tint = fourOf(look.color);
        paint.opacity = look.opacity;
        return true;
    }
    bool operator()(const ShaderLook&) const { return false; }
};

/// The two triangles that GL makes of a quad; their common edge is not smoothed.
void addTriangles(const QuadPaint& quad, std::vector<QuadPaint>& paints) {
    constexpr std::array<std::array<size_t, 3>, 2> corners{{{0, 1, 2}, {0, 2, 3}}};
    constexpr std::array<std::array<bool, 4>, 2> outer{
        {{true, true, false, false}, {false, true, true, false}}};
    for (size_t triangle = 0; triangle < 2; ++triangle) {
        QuadPaint paint = quad;
        paint.cornerCount = 3;
        for (size_t i = 0; i < 3; ++i) {
            paint.corners[i] = quad.corners[corners[triangle][i]];
            paint.smooth[i] = outer[triangle][i];
        }
        paints.push_back(paint);
    }
}

// --- bounds --------------------------------------------------------------------------------------------

class Bounds {
  public:
    Bounds(const glm::mat4& mvpMatrix, const CanvasSize& canvas) : mvpMatrix_(mvpMatrix), canvas_(canvas) {}

    void add(const glm::vec3& corner) {
        const auto at = project(mvpMatrix_, corner, canvas_);
        if (!at) {
            isWhole_ = true;
            return;
        }
        low_ = glm::min(low_, glm::dvec2(at->x, at->y) / at->w);
        high_ = glm::max(high_, glm::dvec2(at->x, at->y) / at->w);
    }
    PixelBounds result() const {
        if (isWhole_) return {0, 0, canvas_.width, canvas_.height};
        constexpr double reach = 1;
        const auto pixel = [](double at, int most) {
            return static_cast<int>(std::clamp(at, 0.0, static_cast<double>(most)));
        };
        return {pixel(std::floor(low_.x - reach), canvas_.width),
                pixel(std::floor(low_.y - reach), canvas_.height),
                pixel(std::ceil(high_.x + reach), canvas_.width),
                pixel(std::ceil(high_.y + reach), canvas_.height)};
    }

  private:
    const glm::mat4& mvpMatrix_;
    CanvasSize canvas_;
    bool isWhole_ = false;
    glm::dvec2 low_{INFINITY}, high_{-INFINITY};
};

PixelBounds boundsOf(std::span<const MeshVertex> corners, const glm::mat4& mvpMatrix,
                     const CanvasSize& canvas) {
    Bounds bounds(mvpMatrix, canvas);
    for (const MeshVertex& corner : corners) bounds.add(corner.position);
    return bounds.result();
}

}  // namespace

void PixelBounds::include(const PixelBounds& other) {
    if (other.isEmpty()) return;
    if (isEmpty()) {
        *this = other;
        return;
    }
    left = std::min(left, other.left);
    top = std::min(top, other.top);
    right = std::max(right, other.right);
    bottom = std::max(bottom, other.bottom);
}

const platform::Surface& levelFor(std::span<const platform::Surface> levels, double texels, double pixels) {
    if (levels.size() == 1) return levels.front();
    const double level = std::round(std::log2(std::max(texels / std::max(pixels, 1.0), 1.0)) / 2);
    return levels[std::min(static_cast<size_t>(level), levels.size() - 1)];
}

platform::BlendFunction paintedBlend(const BlendFunction& blend) {
    using Factor = platform::BlendFactor;
    constexpr uint32_t firstNumbered = 0x0300;
    constexpr std::array numbered{
        Factor::SrcColor,         Factor::OneMinusSrcColor, Factor::SrcAlpha,
        Factor::OneMinusSrcAlpha, Factor::DstAlpha,         Factor::OneMinusDstAlpha,
        Factor::DstColor,         Factor::OneMinusDstColor, Factor::SrcAlphaSaturate};
    const auto factor = [&](uint32_t number) {
        if (number == 1) return Factor::One;
        const uint32_t place = number - firstNumbered;
        return place < numbered.size() ? numbered[place] : Factor::Zero;
    };
    return {factor(blend.source), factor(blend.destination)};
}

bool addPaints(const QuadDraw& quad, const CanvasSize& canvas, std::vector<QuadPaint>& paints) {
    QuadPaint paint;
    if (quad.state.depthTest || !placeCorners(quad, canvas, paint)) return false;
    if (quad.texture && !std::holds_alternative<ColorLook>(quad.look)) {
        if (quad.texture->levelsOrFilm().empty()) return false;
        paint.picture = levelFor(*quad.texture, paint);
        paint.premultiplied = quad.texture->isPremultiplied();
    }
    paint.wrap = wrapOf(quad.mayRepeat && leavesPicture(quad));
    paint.blend = paintedBlend(quad.state.blend);
    if (!std::visit(Painted{quad, canvas, paint}, quad.look)) return false;
    const bool isByPlace = paint.mask || paint.gradient || paint.filter;
    if (isOneSurface(quad))
        paints.push_back(paint);
    else if (!isByPlace)
        addTriangles(paint, paints);
    else
        return false;
    return true;
}

bool addPaints(const LettersDraw& letters, const CanvasSize& canvas, std::vector<QuadPaint>& paints) {
    if (letters.state.depthTest || letters.atlas->levels().empty()) return false;
    const size_t before = paints.size();
    QuadPaint paint;
    paint.smooth = {false, false, false, false};  // each letter is clear at its edges
    paint.blend = paintedBlend(letters.state.blend);
    paint.tint = fourOf(letters.color);
    paint.isShape = true;
    // Of the two triangles of a letter the first has three corners of the rectangle, the second the fourth.
    for (size_t first = 0; first + 5 < letters.corners.size(); first += 6) {
        const std::array<size_t, 4> corners{first, first + 1, first + 2, first + 5};
        for (size_t i = 0; i < 4; ++i) {
            const MeshVertex& vertex = letters.corners[corners[i]];
            const auto corner = project(letters.mvpMatrix, vertex.position, canvas);
            if (!corner) {
                paints.resize(before);
                return false;
            }
            paint.corners[i] = *corner;
            paint.corners[i].u = vertex.textureCoordinate.x;
            paint.corners[i].v = vertex.textureCoordinate.y;
        }
        paint.picture = levelFor(*letters.atlas, paint);
        paints.push_back(paint);
    }
    return true;
}

PixelBounds boundsOf(const QuadDraw& quad, const CanvasSize& canvas) {
    Bounds bounds(quad.mvpMatrix, canvas);
    for (size_t i = 0; i < 4; ++i) bounds.add(cornerOf(quad, i));
    return bounds.result();
}

PixelBounds boundsOf(const LettersDraw& letters, const CanvasSize& canvas) {
    return boundsOf(letters.corners, letters.mvpMatrix, canvas);
}

PixelBounds boundsOf(const MeshDraw& mesh, const CanvasSize& canvas) {
    return boundsOf(mesh.corners, mesh.mvpMatrix, canvas);
}

}  // namespace multiscene
