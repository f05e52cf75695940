// From draws to the triangles that the processor paints.
#pragma once

#include <array>
#include <deque>
#include <vector>

#include "painter/QuadPaints.h"
#include "platform/pixels/MeshPaint.h"

namespace multiscene {

/// Corners of what is no mesh by itself.
using MadeCorners = std::deque<std::vector<MeshVertex>>;

/// Adds what a draw is painted as, what lies farther back first. False, and nothing is added, for what only
/// GL can draw.
bool addMeshes(const MeshDraw& mesh, const CanvasSize& canvas, std::vector<platform::MeshPaint>& paints);
/// Quads and letters as flat triangles: where depths are compared, or corners lie behind the eye.
bool addMeshes(const QuadDraw& quad, const CanvasSize& canvas, std::vector<platform::MeshPaint>& paints,
               MadeCorners& corners);
bool addMeshes(const LettersDraw& letters, const CanvasSize& canvas,
               std::vector<platform::MeshPaint>& paints);

}  // namespace multiscene
