#include "platform/pixels/TilePaint.h"

#include <algorithm>
#include <cmath>
#include <cstring>
#include <utility>

#include "platform/pixels/ClearBlocks.h"
#undef HWY_TARGET_INCLUDE
#define HWY_TARGET_INCLUDE "platform/pixels/TilePaint.cpp"
#include <hwy/foreach_target.h>  // compiles this file once for each instruction set

#include "platform/pixels/Blending-inl.h"
#include "platform/pixels/Treatments-inl.h"

HWY_BEFORE_NAMESPACE();
namespace platform::HWY_NAMESPACE {

namespace hn = hwy::HWY_NAMESPACE;

// A row of a tile, with room for a vector that reaches beyond.
template <class Number>
struct RowBuffer {
    HWY_ALIGN Number at[kTileColumns + HWY_MAX_BYTES / 4];
};

// Multiplies each channel by a level, 0 to 255.
void fade(const std::array<uint8_t, 4>& levels, int count, uint32_t* pixels) {
    const int lanes = static_cast<int>(hn::Lanes(Pixels()));
    const auto both = [](uint8_t even, uint8_t odd) {
        return hn::BitCast(Words(), hn::Set(Pixels(), even | static_cast<uint32_t>(odd) << 16));
    };
    const Halves level{both(levels[0], levels[2]), both(levels[1], levels[3])};
    for (int i = 0; i < count; i += lanes) {
        const Halves colours = halves(hn::LoadU(Pixels(), pixels + i));
        hn::StoreU(whole({scaled(colours.even, level.even), scaled(colours.odd, level.odd)}), Pixels(),
                   pixels + i);
    }
}

// Multiplies each pixel, or its alpha alone, by an opacity of 0 to 255.
void fadeEach(const float* opacities, bool fadesColours, int count, uint32_t* pixels) {
    const int lanes = static_cast<int>(hn::Lanes(Pixels()));
    const PixelVector alphaMask = hn::Set(Pixels(), 0xFF000000);
    for (int i = 0; i < count; i += lanes) {
        const PixelVector given = hn::LoadU(Pixels(), pixels + i);
        const WordVector level = twice(rounded(hn::LoadU(Reals(), opacities + i)));
        PixelVector faded = whole(scaled(halves(given), level));
        if (!fadesColours) faded = hn::Or(hn::And(alphaMask, faded), hn::AndNot(alphaMask, given));
        hn::StoreU(faded, Pixels(), pixels + i);
    }
}

class RowPainter {
  public:
    RowPainter(const PreparedPaint& paint, int origin, const Canvas& canvas)
        : paint_(paint), canvas_(canvas), origin_(origin) {}

    void paint(int row, const Run& within, const Run& hidden) {
        if (hidden.isEmpty()) return paintRun(row, within);
        paintRun(row, {within.from, std::min(within.to, hidden.from)});
        paintRun(row, {std::max(within.from, hidden.to), within.to});
    }

  private:
    void paintRun(int row, const Run& within) {
        if (within.isEmpty()) return;
        const ClearBlocks* clear = paint_.picture.surface.clear;
        if (!clear || !paint_.leavesClear || paint_.perspective) return paintShown(row, within);
        const Run touched = rowBounds(paint_, row, within).touched;
        Run shown{touched.from, touched.from};
        for (int from = touched.from; from < touched.to; from += kPiece) {
            const int to = std::min(from + kPiece, touched.to);
            if (!holdsNothing(*clear, row, {from, to})) {
                shown.to = to;
                continue;
            }
            paintShown(row, shown);
            shown = {to, to};
        }
        paintShown(row, shown);
    }

    static constexpr int kPiece = 32;  // pixels that are left out together

    // None of the texels that filtering reaches.
    bool holdsNothing(const ClearBlocks& clear, int row, const Run& run) const {
        const PlaceMatrix& m = paint_.picture.toTexel;
        const auto texels = [&](int i) {
            const double start = m[i] * run.from + m[i + 1] * row + m[i + 2],
                         end = start + m[i] * (run.to - 1 - run.from);
            constexpr double reach = 1.5;
            const auto texel = [](double place) {
                return static_cast<int>(std::clamp(std::floor(place), -1e6, 1e6));
            };
            return std::pair(texel(std::min(start, end) - reach), texel(std::max(start, end) + reach));
        };
        const auto [left, right] = texels(0);
        const auto [top, bottom] = texels(3);
        return clear.isClear(left, top, right, bottom);
    }

    void paintShown(int row, const Run& within) {
        if (within.isEmpty()) return;
        const RowBounds bounds = rowBounds(paint_, row, within);
        if (bounds.touched.to - bounds.touched.from <= kShortRun) return paintEdge(row, bounds.touched);
        paintEdge(row, {bounds.touched.from, std::min(bounds.inside.from, bounds.touched.to)});
        paintInside(row, bounds.inside);
        paintEdge(row, {std::max(bounds.inside.to, bounds.touched.from), bounds.touched.to});
    }

    static constexpr int kShortRun =
        64;  // pixels; three runs take longer than asking for each one's coverage

    uint32_t* canvasAt(const Lookup& place) const {
        return reinterpret_cast<uint32_t*>(canvas_.pixels + place.row * canvas_.stride) + place.column;
    }

    void paintEdge(int row, const Run& run) {
        if (run.isEmpty()) return;
        const Lookup lookup{origin_, run.from, row, run.to - run.from};
        const uint32_t* front = colours(lookup);
        findCoverage(paint_, lookup, coverage_.at);
        meet(paint_.blend, front, coverage_.at, lookup.count, canvasAt(lookup));
    }

    void paintInside(int row, const Run& run) {
        if (run.isEmpty()) return;
        const Lookup lookup{origin_, run.from, row, run.to - run.from};
        if (paint_.planes) return copyFilm(lookup, canvasAt(lookup));
        const uint32_t* front = colours(lookup);
        if (paint_.hides)
            std::memcpy(canvasAt(lookup), front, static_cast<size_t>(lookup.count) * 4);
        else
            meet(paint_.blend, front, nullptr, lookup.count, canvasAt(lookup));
    }

    // What the blend function gets.
    const uint32_t* colours(const Lookup& lookup) {
        if (paint_.planes) {
            copyFilm(lookup, colours_.at);
            return colours_.at;
        }
        if (isPlain()) {
            const uint32_t* copied = copiedRow(paint_.picture, paint_.perspective, lookup);
            if (copied) return copied;
        }
        lookUp(lookup);
        if (paint_.hasPixelOpacity()) startOpacities(lookup);
        treatColours(paint_, lookup, colours_.at, opacities_.at);
        if (paint_.isFaded()) fade(paint_.levels, lookup.count, colours_.at);
        if (paint_.hasPixelOpacity()) fadeEach(opacities_.at, paint_.fadesColours, lookup.count, colours_.at);
        return colours_.at;
    }

    void copyFilm(const Lookup& lookup, uint32_t* pixels) const {
        const auto& m = paint_.picture.toTexel;
        const int column = lookup.column + static_cast<int>(m[2] - 0.5);
        yuvToPixels(*paint_.planes, lookup.row + static_cast<int>(m[5] - 0.5), column, column + lookup.count,
                    reinterpret_cast<uint8_t*>(pixels));
    }

    // The picture's pixels are what is painted.
    bool isPlain() const {
        return paint_.picture.surface.pixels && !paint_.isFaded() && !paint_.hasPixelOpacity() &&
               !paint_.filter &&
               (paint_.picture.surface.opaque || paint_.premultiplied == paint_.paintsPremultiplied);
    }

    void lookUp(const Lookup& lookup) {
        if (!paint_.picture.surface.pixels)
            std::fill_n(colours_.at, lookup.count, 0xFFFFFFFFu);
        else if (paint_.filter && movesPlaces(*paint_.filter))
            sampleFiltered(paint_, lookup, colours_.at);
        else
            copyOrSample(paint_.picture, paint_.perspective, lookup, colours_.at);
    }

    void startOpacities(const Lookup& lookup) {
        if (paint_.mask)
            takeMask(paint_, lookup, coverage_.at, opacities_.at);
        else
            std::fill_n(opacities_.at, lookup.count, 255.0f);
        if (paint_.gradient) applyGradient(paint_, lookup, opacities_.at);
    }

    const PreparedPaint& paint_;
    const Canvas& canvas_;
    const int origin_;
    RowBuffer<uint32_t> colours_, coverage_;
    RowBuffer<float> opacities_;
};

void paintRows(const PreparedPaint& paint, const TileArea& area, const HiddenRows& hidden,
               const Canvas& canvas) {
    RowPainter painter(paint, area.left, canvas);
    const Run within{std::max(area.left, paint.left), std::min(area.right, paint.right)};
    if (within.isEmpty()) return;
    const int bottom = std::min(area.bottom, paint.bottom);
    for (int row = std::max(area.top, paint.top); row < bottom; ++row)
        painter.paint(row, within, hidden[static_cast<size_t>(row - area.top)]);
}

void sampleRows(const PreparedPaint& paint, const TileArea& area, const Canvas& samples) {
    const Run within{std::max(area.left, paint.left), std::min(area.right, paint.right)};
    if (within.isEmpty()) return;
    const int count = within.to - within.from, bottom = std::min(area.bottom, paint.bottom);
    RowBuffer<uint32_t> row;  // sampling writes whole vectors
    for (int y = std::max(area.top, paint.top); y < bottom; ++y) {
        copyOrSample(paint.picture, paint.perspective, {area.left, within.from, y, count}, row.at);
        std::memcpy(
            samples.pixels + (y - paint.top) * samples.stride + ptrdiff_t{within.from - paint.left} * 4,
            row.at, static_cast<size_t>(count) * 4);
    }
}

}  // namespace platform::HWY_NAMESPACE
HWY_AFTER_NAMESPACE();

#if HWY_ONCE
namespace platform {

HWY_EXPORT(paintRows);
HWY_EXPORT(sampleRows);

void paintTile(const PreparedPaint& paint, const TileArea& area, const HiddenRows& hidden,
               const Canvas& canvas) {
    HWY_DYNAMIC_DISPATCH(paintRows)(paint, area, hidden, canvas);
}

void sampleTile(const PreparedPaint& paint, const TileArea& area, const Canvas& samples) {
    HWY_DYNAMIC_DISPATCH(sampleRows)(paint, area, samples);
}

bool covers(const PreparedPaint& paint, const TileArea& area) {
    // A convex shape that holds the first and the last row holds what lies between.
    for (const int row : {area.top, area.bottom - 1}) {
        const Run inside = rowBounds(paint, row, {area.left, area.right}).inside;
        if (inside.from > area.left || inside.to < area.right) return false;
    }
    return paint.top <= area.top && paint.bottom >= area.bottom;
}

}  // namespace platform
#endif
