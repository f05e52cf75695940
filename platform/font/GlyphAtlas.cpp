#include "platform/font/GlyphAtlas.h"

#include <ft2build.h>
#include FT_FREETYPE_H

#include <algorithm>

namespace platform {

namespace {

/// Pixels around each letter: filtering and smaller mip levels of the view must not meet its neighbour.
constexpr int border = 2;

}  // namespace

bool GlyphAtlas::findRoom(Piece& piece) {
    if (nextX_ + piece.width > width) {
        rowY_ += rowHeight_;
        nextX_ = rowHeight_ = 0;
    }
    if (piece.width > width || rowY_ + piece.height > maxHeight) return false;
    piece.x = nextX_;
    piece.y = rowY_;
    nextX_ += piece.width;
    rowHeight_ = std::max(rowHeight_, piece.height);
    atlas_.width = width;
    atlas_.height = std::max(atlas_.height, rowY_ + rowHeight_);
    atlas_.rgba.resize(size_t(atlas_.width) * size_t(atlas_.height) * 4);
    return true;
}

void GlyphAtlas::load(unsigned int glyph, FT_GlyphSlotRec_* outline) {
    if (FT_Render_Glyph(outline, FT_RENDER_MODE_NORMAL) != 0) return;
    const FT_Bitmap& drawn = outline->bitmap;
    if (drawn.width == 0 || drawn.rows == 0 || drawn.pixel_mode != FT_PIXEL_MODE_GRAY) return;
    Piece piece{0,
                0,
                int(drawn.width) + 2 * border,
                int(drawn.rows) + 2 * border,
                outline->bitmap_left - border,
                outline->bitmap_top + border};
    if (!findRoom(piece)) return;
    for (int y = 0; y < int(drawn.rows); ++y)
        for (int x = 0; x < int(drawn.width); ++x) {
            const size_t pixel = size_t(piece.y + border + y) * size_t(width) + size_t(piece.x + border + x);
            std::fill_n(&atlas_.rgba[pixel * 4], 4, drawn.buffer[y * drawn.pitch + x]);
        }
    pieces_.emplace(glyph, piece);
}

void GlyphAtlas::place(unsigned int glyph, double x, double y) {
    const auto found = pieces_.find(glyph);
    if (found == pieces_.end()) return;
    const Piece& piece = found->second;
    const auto corner = [&](int right, int down) {
        return LetterVertex{float(x + piece.left + right), float(y + piece.top - down), 0, 0, 0, 1,
                            float(piece.x + right),        float(piece.y + down)};
    };
    const LetterVertex bottomLeft = corner(0, piece.height), topRight = corner(piece.width, 0);
    triangles_.insert(triangles_.end(), {bottomLeft, corner(piece.width, piece.height), topRight,  //
                                         bottomLeft, topRight, corner(0, 0)});
}

std::vector<LetterVertex> GlyphAtlas::takeTriangles() {
    for (LetterVertex& vertex : triangles_) {
        vertex.u /= float(width);
        vertex.v /= float(std::max(atlas_.height, 1));
    }
    return std::move(triangles_);
}

}  // namespace platform
