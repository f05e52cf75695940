// From draws to what the processor paints.
#pragma once

#include <glm/glm.hpp>
#include <span>
#include <vector>

#include "painter/Draw.h"
#include "platform/pixels/QuadPaint.h"

namespace multiscene {

/// Where a draw lands: a canvas's size in pixels.
struct CanvasSize {
    int width = 0, height = 0;
};

/// In pixels from the upper left; right and bottom lie beyond it.
struct PixelBounds {
    int left = 0, top = 0, right = 0, bottom = 0;

    bool isEmpty() const { return left >= right || top >= bottom; }
    void include(const PixelBounds& other);
};

/// Adds the shapes of a draw. False, and nothing is added, when only GL can draw it: a program of its own, a
/// depth test, corners behind the eye or beyond the depth that is seen.
bool addPaints(const QuadDraw& quad, const CanvasSize& canvas, std::vector<platform::QuadPaint>& paints);
bool addPaints(const LettersDraw& letters, const CanvasSize& canvas,
               std::vector<platform::QuadPaint>& paints);

/// Of pictures that show the same in falling sizes, the one whose texels come nearest to pixels, when the
/// largest has so many texels on so many pixels.
const platform::Surface& levelFor(std::span<const platform::Surface> levels, double texels, double pixels);

/// What a draw touches at most, smoothed edges among it.
PixelBounds boundsOf(const QuadDraw& quad, const CanvasSize& canvas);
PixelBounds boundsOf(const LettersDraw& letters, const CanvasSize& canvas);
PixelBounds boundsOf(const MeshDraw& mesh, const CanvasSize& canvas);

/// GL's number of a blend factor as the painter knows it; what GL does not know counts as ZERO.
platform::BlendFunction paintedBlend(const BlendFunction& blend);

}  // namespace multiscene
