// Private to platform/pixels: painting one shape in one tile of a canvas.
#pragma once

#include "platform/pixels/QuadPaint.h"
#include "platform/pixels/RowBounds.h"

namespace platform {

/// Columns and rows of a tile. Long rows are read and written faster than short ones; a tile stays in the
/// second cache.
inline constexpr int kTileColumns = 1024, kTileRows = 16;

/// Part of a canvas, at most kTileColumns wide; right and bottom lie beyond it.
struct TileArea {
    int left, top, right, bottom;
};

/// For each row of a tile, from its top, pixels that need not be painted: others will hide them.
using HiddenRows = std::array<Run, kTileRows>;

/// Paints what of the shape lies in the area. The same bytes on every processor.
void paintTile(const PreparedPaint& paint, const TileArea& area, const HiddenRows& hidden,
               const Canvas& canvas);

/// Looks up what the shape shows of its picture at the pixels of its bounds that lie in the area: `samples`
/// has the size of the bounds. What is painted is made of these.
void sampleTile(const PreparedPaint& paint, const TileArea& area, const Canvas& samples);

/// Whether every pixel of the area lies wholly inside of the shape.
bool covers(const PreparedPaint& paint, const TileArea& area);

}  // namespace platform
