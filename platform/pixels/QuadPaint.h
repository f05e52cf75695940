// One picture drawn as a flat convex shape anywhere in space: what is to be painted, and what follows from it
// for every pixel.
#pragma once

#include <array>
#include <cstdint>
#include <optional>
#include <span>
#include <vector>

#include "platform/pixels/FromYuv.h"
#include "platform/pixels/Surface.h"

namespace platform {

/// What multiplies a colour before what is painted and what is there are added.
enum class BlendFactor : uint8_t {
    Zero,
    One,
    SrcColor,
    OneMinusSrcColor,
    SrcAlpha,
    OneMinusSrcAlpha,
    DstAlpha,
    OneMinusDstAlpha,
    DstColor,
    OneMinusDstColor,
    SrcAlphaSaturate,  ///< the source's alpha, at most what is missing of the canvas's
};

/// How what is painted (source) meets what is there (destination). Alpha is always laid over: 1, and 1 less
/// the source's alpha. The source's colours are
/// - with source factor One multiplied by alpha and opacity,
/// - with Zero, SrcAlpha and SrcAlphaSaturate straight,
/// - with the others multiplied by the opacity alone, so that it fades what the draw adds.
struct BlendFunction {
    BlendFactor source = BlendFactor::SrcAlpha, destination = BlendFactor::OneMinusSrcAlpha;
    bool operator==(const BlendFunction&) const = default;
};

/// What the colours have been multiplied by that the blend function gets: nothing, the opacity, or alpha and
/// opacity.
enum class SentColours : uint8_t { Straight, Faded, Multiplied };
/// With SrcAlpha where `Multiplied` comes to the same: then the factor is One.
SentColours sentColours(const BlendFunction& blend);

/// What lies beside a picture.
enum class Wrap : uint8_t { Clamp, Repeat };

/// A corner on the canvas, seen through a camera: in pixels from the upper left, times w, and w itself (1
/// without perspective, not positive behind the camera); and the place in the picture, 0 to 1, (0, 0) in its
/// upper left.
struct PaintCorner {
    double x = 0, y = 0, w = 1;
    double u = 0, v = 0;
};

/// A second picture whose brightness is an opacity.
struct MaskPaint {
    Surface picture;
    bool premultiplied = true;  ///< its colours are multiplied by its alpha
    bool byAlpha = true;        ///< its transparent parts hide, too; otherwise its colours alone count
    /// Place in the mask (u, v) at each corner of the shape, as those in the picture.
    std::array<std::array<double, 2>, 4> at{};
    Wrap wrap = Wrap::Clamp;
};

/// An opacity that changes from one place on the quad to another, even beyond them. Places are 0 to 1, from
/// corner 3 to corner 2, or down from corner 3 to corner 0.
struct GradientPaint {
    double startPlace = 0, startOpacity = 1, endPlace = 1, endOpacity = 1;
    bool vertical = false;  ///< down, not to the right
    bool soft = false;      ///< starts and ends gently
};

/// Colours are red, green, blue, alpha, 0 to 1, not multiplied by alpha.
struct FilterPaint {
    int type = 0;             ///< 0 none, 1 grey, 2 sepia, 3 negative, 4 mosaic, 5 wave
    float range = 1;          ///< how much of the filter shows, 0 to 1
    float pixelSize = 1;      ///< side of a mosaic's tile in pixels of pictureWidth and pictureHeight
    float time = 0;           ///< 0 to 1: a wave runs through the picture once
    bool reflection = false;  ///< the lower half of the quad mirrors the upper one
    std::array<float, 4> pictureColor{1, 1, 1, 1};  ///< multiplies the picture
    float borderWidth = 0;                          ///< as a part of the quad's shorter side
    std::array<float, 4> borderColor{0, 0, 0, 0};
    float cornerRadius = 0;                      ///< as a part of the quad's shorter side
    float frameWidth = 1, frameHeight = 1;       ///< of the quad, in a unit of its own
    float pixelsAUnit = 1;                       ///< about: what edges are smoothed by
    double pictureWidth = 1, pictureHeight = 1;  ///< of the whole picture, greater than 0
};

/// One colour keyed out of a picture.
struct KeyPaint {
    std::array<float, 4> color{};  ///< red, green, blue, 0 to 1; the fourth says nothing
    /// Width of the edge in shares of the key colour: 0 cuts hard, 0.75 lets opacity follow the mixture.
    float softEdge = 0;
};

/// Three or four corners round a flat convex shape, either way round. Of four, the places in the picture and
/// in space belong together as those of a parallelogram; split anything else into triangles. The place on a
/// quad is (0, 1), (1, 1), (1, 0), (0, 0) at corners 0 to 3: gradients and filters are for quads.
///
/// The picture goes through key, filter, tint; mask, gradient, key and `opacity` make it transparent.
struct QuadPaint {
    Surface picture;            ///< empty: one colour, the tint
    bool premultiplied = true;  ///< the picture's colours are multiplied by its alpha
    std::array<PaintCorner, 4> corners;
    int cornerCount = 4;
    /// Which edges are smoothed, that from corner i to the next one first.
    std::array<bool, 4> smooth{true, true, true, true};
    /// How far, in pixels, the shape is painted beyond each edge; see shareEdges().
    std::array<float, 4> reach{};
    float opacity = 1;  ///< 0 to 1
    BlendFunction blend;
    Wrap wrap = Wrap::Clamp;
    /// Red, green, blue and opacity, 0 to 1, not multiplied: they multiply the picture.
    std::array<float, 4> tint{1, 1, 1, 1};
    /// The picture's alpha is an opacity, not a part of its colour: letters. It makes a difference where the
    /// blend function does not look at the source's alpha. Always so with a tint.
    bool isShape = false;
    std::optional<MaskPaint> mask;
    std::optional<GradientPaint> gradient;
    std::optional<FilterPaint> filter;
    std::optional<KeyPaint> key;
};

/// A line that bounds a shape. The distance of a pixel's middle is x * (column) + y * (row) + away, in
/// pixels, positive inside.
struct PaintEdge {
    float x = 0, y = 0, away = 0;
    bool smooth = true;

    /// Of two shapes that share a sharp edge one has the pixels whose middle lies on it.
    bool hasLine() const { return x > 0 || (x == 0 && y > 0); }
};

/// From a pixel's column and row to places times q, and q; row-major.
using PlaceMatrix = std::array<double, 9>;

/// A picture and the way to it, in texels: texel i covers i to i + 1.
struct PlacedPicture {
    Surface surface;
    Wrap wrap = Wrap::Clamp;
    PlaceMatrix toTexel{};
};

struct PreparedMask {
    PlacedPicture picture;
    bool timesAlpha = false;
};

/// A shape as it is painted: visible, in front of the camera, its edges and the way from a pixel to the
/// picture known.
struct PreparedPaint {
    PlacedPicture picture;
    /// Of a film that is copied pixel by pixel and hides what is under it: what it is copied from.
    const YuvPicture* planes = nullptr;
    int left = 0, top = 0, right = 0,
        bottom = 0;  ///< pixels that may be touched, right and bottom beyond the last
    /// Convex; opposite edges of a quad are a pair, whose coverages add up, since both may cross one pixel.
    std::vector<std::array<PaintEdge, 2>> edgePairs;
    bool perspective = false;  ///< else q is 1
    PlaceMatrix toPlace{};     ///< on the quad

    bool premultiplied = true;        ///< the picture's colours are multiplied by alpha
    bool paintsPremultiplied = true;  ///< so are those that the blend function gets, before levels
    std::array<uint8_t, 4> levels{};  ///< 0 to 255, what multiplies blue, green, red, alpha
    bool fadesColours = true;         ///< what mask, gradient and key hide multiplies colours, too
    BlendFunction blend;
    std::optional<PreparedMask> mask;
    std::optional<GradientPaint> gradient;
    std::optional<FilterPaint> filter;
    std::optional<KeyPaint> key;
    bool leavesClear = false;  ///< where the picture holds nothing the canvas stays as it is
    bool hides = false;        ///< pixels under it show nothing of what was there

    bool isFaded() const { return levels != std::array<uint8_t, 4>{255, 255, 255, 255}; }
    bool hasPixelOpacity() const { return mask || gradient || key; }
};

/// Prepares a shape for a canvas of this size in pixels; false when nothing of it shows.
bool preparePaint(const QuadPaint& paint, int width, int height, PreparedPaint& prepared);

/// Pixels under the shape, but for its smoothed edges, show nothing of what was there.
bool hides(const QuadPaint& paint);

}  // namespace platform
